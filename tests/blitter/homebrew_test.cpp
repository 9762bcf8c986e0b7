// The homebrew cartridge yarc after 600 frames: its GPU draws the whole picture with the Blitter,
// a vertical Gouraud ramp over the screen (one 64000-pixel span) and the edges of a turning cube
// (lines in increment mode, clipped to A1's window).
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "vemocore.h"

namespace {

struct box {
    int left = 1 << 30, right = -1, top = 1 << 30, bottom = -1, cells = 0;
};

TEST(Homebrew, YarcShowsTheBlittersRampAndCube) {
    const std::string image = std::string(VEMO_SHARED_DIR) + "/homebrew/yarc.j64";
    if (!std::filesystem::exists(image)) GTEST_SKIP() << image << " is not there";
    vemo_config config{};
    std::snprintf(config.rom_path, sizeof config.rom_path, "%s", image.c_str());
    ASSERT_EQ(vemo_init(&config), 1) << vemo_get_error_string();
    for (int frame = 0; frame < 600; ++frame) ASSERT_EQ(vemo_run_frame(), 1) << vemo_get_error_string();
    vemo_frame_info info{};
    vemo_get_frame_info(&info);
    auto cell = [&](int x, int y) { return info.frame_buffer[y * info.frame_pitch + x]; };

    // The ramp: pixel i of the span is blue (C and R 0) with intensity i / 1024; the screen's
    // bitmap shows at cell 11 of row 35. Only the cube's red edges (CRY C 15, R 0) cover it, and
    // the program's logo, an object of its own, in the bottom left corner.
    constexpr int LEFT = 11, TOP = 35, WIDTH = 320, PIXELS = 64000;
    box red;
    int wrong = 0, red_anywhere = 0;
    for (int i = 0; i < PIXELS; ++i) {
        const int x = LEFT + i % WIDTH, y = TOP + i / WIDTH;
        const uint32_t c = cell(x, y);
        if (x < 44 && y >= 225) continue;  // the logo
        if ((c & 0xFF00) == 0xF000) {
            red.left = std::min(red.left, x), red.right = std::max(red.right, x);
            red.top = std::min(red.top, y), red.bottom = std::max(red.bottom, y), ++red.cells;
        } else if (c != static_cast<uint32_t>(i / 1024)) {
            if (++wrong <= 5) ADD_FAILURE() << "ramp pixel " << i << " at " << x << ", " << y << ": " << std::hex << c;
        }
    }
    EXPECT_EQ(wrong, 0);
    for (int y = 0; y < 256; ++y)
        for (int x = 0; x < 1024; ++x) red_anywhere += (cell(x, y) & 0xFF00) == 0xF000;
    EXPECT_EQ(red_anywhere, red.cells);  // no edge outside the ramp
    // The cube of frame 600: 441 red cells, exactly where its edges are.
    EXPECT_EQ(red.cells, 441);
    EXPECT_EQ(std::vector<int>({red.left, red.right, red.top, red.bottom}), std::vector<int>({121, 235, 74, 210}));
    vemo_shutdown();
}

}  // namespace
