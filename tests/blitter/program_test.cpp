// A 68000 program that draws its frames with the Blitter, run through the library's exports:
// the screen in RAM and the picture the Object Processor shows of it.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "core/bus.h"
#include "core/host.h"
#include "core/memory.h"
#include "support/program_config.h"
#include "vemocore.h"

namespace {

constexpr uint32_t SCREEN = 0x20000, FRAMES = 0x1000;

class BlitterProgram : public ::testing::Test {
protected:
    void SetUp() override {
        const vemo_config config = test_support::program_config(VEMO_PROGRAM_DIR "/blitter_rectangles.bin");
        ASSERT_EQ(vemo_init(&config), 1) << vemo_get_error_string();
        log_text[0] = 0;  // what earlier machines said
    }
    void TearDown() override { vemo_shutdown(); }
};

TEST_F(BlitterProgram, FramesShowWhatTheBlitterDrew) {
    for (int frame = 0; frame < 4; ++frame) ASSERT_EQ(vemo_run_frame(), 1) << vemo_get_error_string();
    EXPECT_GE(bus_read32(FRAMES), 4u);  // the first drawing, then one per frame
    vemo_frame_info info{};
    vemo_get_frame_info(&info);

    const struct { int x, y; uint16_t colour; } pixels[] = {
        {0, 0, 0x8840}, {319, 239, 0x8840}, {15, 16, 0x8840}, {80, 30, 0x8840}, {40, 15, 0x8840}, {40, 48, 0x8840},
        {16, 16, 0xF0FF}, {79, 47, 0xF0FF}, {50, 30, 0xF0FF},                                  // rectangle
        {0, 99, 0x8840}, {0, 100, 0x4400}, {1, 100, 0x4401}, {2, 120, 0x4402}, {3, 139, 0x4403},  // band
        {200, 110, 0x44C8}, {255, 100, 0x44FF}, {319, 139, 0x44FF}, {5, 140, 0x8840},
        {239, 180, 0x8840}, {240, 180, 0xF0FF}, {303, 211, 0xF0FF}, {304, 211, 0x8840}, {240, 212, 0x8840},  // copy
    };
    for (const auto& p : pixels) {
        EXPECT_EQ(bus_read16(SCREEN + (p.y * 320 + p.x) * 2), p.colour) << p.x << ", " << p.y;
        const uint32_t shown = info.frame_buffer[p.y * info.frame_pitch + p.x];
        if (p.x < 319) {  // the Object Processor never draws a row's last cell
            EXPECT_EQ(shown, p.colour) << "shown at " << p.x << ", " << p.y;
        }
    }
    EXPECT_STREQ(vemo_get_error_string(), "");
}

}  // namespace
