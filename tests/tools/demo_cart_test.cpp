// The demo cartridge (build/bin/demo.j64, from tools/demo-cart) through the exported functions:
// the Blitter's shaded diamonds on its canvas, the DSP's tone in every frame's samples, button A
// changing both, and one more start counted in the EEPROM each time the cartridge starts.
#include <gtest/gtest.h>

#include <set>
#include <string>

#include "core/bus.h"
#include "support/temp_files.h"
#include "vemocore.h"

namespace {

constexpr uint32_t V_MODE = 0x1004, V_BOOTS = 0x1008;  // the demo's shared variables
constexpr int CANVAS_ROW = 24;                         // screen row of the canvas's first row

struct demo_frame {
    int sign_changes = 0;                  // of the left samples: twice the tone's cycles
    std::set<uint16_t> intensities[256];   // canvas cells by their CRY colour byte
    bool box_at[26] = {};                  // start-counter squares, by position
};

demo_frame observe() {
    vemo_frame_info info{};
    vemo_get_frame_info(&info);
    demo_frame seen;
    EXPECT_EQ(info.audio_left_count, 346u);
    for (uint32_t i = 0; i < info.audio_left_count; ++i) {
        EXPECT_TRUE(info.audio_left[i] == 0x2000 || info.audio_left[i] == -0x2000) << info.audio_left[i];
        EXPECT_EQ(info.audio_right[i], info.audio_left[i]);
        if (i > 0 && info.audio_left[i] != info.audio_left[i - 1]) ++seen.sign_changes;
    }
    for (int row = CANVAS_ROW + 16; row < CANVAS_ROW + 200; ++row)
        for (int column = 0; column < 320; ++column) {
            const uint32_t cell = info.frame_buffer[row * info.frame_pitch + column];
            seen.intensities[cell >> 8].insert(static_cast<uint16_t>(cell & 0xFF));
        }
    for (int box = 0; box < 26; ++box)
        seen.box_at[box] = info.frame_buffer[(CANVAS_ROW + 6) * info.frame_pitch + 10 + 12 * box] == 0xF0C8;
    return seen;
}

TEST(DemoCart, DrawsPlaysReactsToButtonAAndCountsItsStarts) {
    const std::string save = (test_support::scratch_dir() / "demo.eep").string();
    for (uint32_t start = 1; start <= 2; ++start) {
        vemo_config config{};
        std::snprintf(config.rom_path, sizeof config.rom_path, "%s/demo.j64", VEMO_BIN_DIR);
        std::snprintf(config.eeprom_path, sizeof config.eeprom_path, "%s", save.c_str());
        config.audio_enable = 1;
        ASSERT_EQ(vemo_init(&config), 1) << vemo_get_error_string();
        for (int frame = 0; frame < 3; ++frame) ASSERT_EQ(vemo_run_frame(), 1) << vemo_get_error_string();
        EXPECT_EQ(bus_read32(V_BOOTS), start);

        demo_frame seen = observe();
        EXPECT_TRUE(seen.box_at[start - 1] && !seen.box_at[start]) << "one square per start";
        EXPECT_GE(seen.sign_changes, 13);  // 440 Hz: 7.3 cycles a frame
        EXPECT_LE(seen.sign_changes, 16);
        EXPECT_GT(seen.intensities[0xF0].size(), 20u) << "the red diamond's Gouraud shades";
        EXPECT_GT(seen.intensities[0x0F].size(), 20u) << "the cyan one's";
        EXPECT_TRUE(seen.intensities[0xA5].empty());

        vemo_joypad pad{};
        pad.a = 1;
        vemo_set_joypad_state(0, &pad);
        for (int frame = 0; frame < 2; ++frame) ASSERT_EQ(vemo_run_frame(), 1) << vemo_get_error_string();
        EXPECT_EQ(bus_read32(V_MODE), 1u);
        seen = observe();
        EXPECT_GE(seen.sign_changes, 21);  // 660 Hz: 11 cycles a frame
        EXPECT_LE(seen.sign_changes, 24);
        EXPECT_GT(seen.intensities[0xA5].size(), 20u) << "held A: the red diamond changes colour";
        EXPECT_TRUE(seen.intensities[0xF0].empty());
        const vemo_joypad released{};
        vemo_set_joypad_state(0, &released);  // the stored state outlives the machine
        vemo_shutdown();
    }
}

}  // namespace
