// vemo-run running console programs: the summary, stopping on a broken frame, and the pictures
// it writes of the screen.
#include <algorithm>
#include <string>
#include <vector>

#include "png_read.h"
#include "tool_runner.h"

TEST_F(VemoRun, SummaryTellsFramesTimeRateAndTheLastMessage) {
    const tool_result r = run_tool("--program " + shell_arg(test_pattern) + " --frames 3");
    EXPECT_EQ(r.status, 0) << r.output;
    EXPECT_NE(r.output.find("frames run: 3 of 3\n"), std::string::npos) << r.output;
    EXPECT_NE(r.output.find("wall time: "), std::string::npos);
    EXPECT_NE(r.output.find("frames per second: "), std::string::npos);
    EXPECT_NE(r.output.find("core's last message: "), std::string::npos);
}

TEST_F(VemoRun, AFrameThatStopsEarlyEndsTheRunWithTheCoresMessage) {
    // The program's object list holds an object of type 5, which stops the first frame.
    const tool_result r = run_tool("--program " + shell_arg(bad_object) + " --frames 10");
    EXPECT_EQ(r.status, 1);
    EXPECT_NE(r.output.find("frame 1 stopped early: Object Processor error: Unhandled object 5"), std::string::npos)
        << r.output;
    EXPECT_NE(r.output.find("frames run: 0 of 10"), std::string::npos) << r.output;
}

// The test pattern (programs/test_pattern.s) on screen: CRY colours through the CLUT of an 8-bit
// bitmap, 16-bit CRY pixels, and the background fill, on 320 x 240 pixels.
TEST_F(VemoRun, TestPatternProgramBecomesTheExpectedPicture) {
    const fs::path png = dir / "pattern.png";
    const tool_result r = run_tool("--program " + shell_arg(test_pattern) + " --load-address 0x4000 --frames 5 --png " +
                                   shell_arg(png));
    ASSERT_EQ(r.status, 0) << r.output;
    png_rgb p;
    ASSERT_TRUE(read_png(png.string(), p));
    ASSERT_EQ(p.width, 320);   // 1280 clocks at 4 clocks per pixel
    ASSERT_EQ(p.height, 240);  // lines 40 to 519

    const uint32_t bg = 0x3E403A;      // CRY 0x8840
    const uint32_t marker = 0xF7FFE6;  // CRY 0x88FF
    struct {
        int x, y;
        uint32_t colour;
    } pixels[] = {
        // background, around and between the objects
        {0, 0, bg}, {319, 239, bg}, {100, 15, bg}, {100, 80, bg}, {31, 20, bg}, {288, 20, bg},
        // object 1, top half: pixel 0 is CLUT 17, then bars of CLUT 1 to 8
        {32, 16, marker}, {33, 16, 0xFF0000}, {63, 16, 0xFF0000}, {64, 16, 0xFFFF00}, {100, 30, 0x11FF00},
        {130, 47, 0x00FFFF}, {160, 20, 0x0000FF}, {200, 20, 0xFF00ED}, {230, 20, 0xAAFFFF}, {287, 47, 0x800000},
        // object 1, bottom half: the red ramp CLUT 9 to 16, intensity 32k - 1
        {32, 48, marker}, {40, 48, 0x1F0000}, {100, 60, 0x5F0000}, {287, 79, 0xFF0000},
        // object 2: 16-bit quadrants with the marker in pixel 0
        {127, 130, bg}, {128, 120, marker}, {129, 120, 0x0000FF}, {159, 135, 0x0000FF}, {160, 120, 0xFFFF00},
        {191, 135, 0xFFFF00}, {192, 130, bg}, {128, 151, marker}, {130, 136, 0x00FFFF}, {180, 151, 0x008080},
        {150, 119, bg}, {150, 152, bg},
    };
    for (const auto& px : pixels)
        EXPECT_EQ(p.at(px.x, px.y), px.colour) << "pixel (" << px.x << ", " << px.y << ")";
}

TEST_F(VemoRun, PngDirWritesEveryKthFrameAsANumberedSeries) {
    const fs::path series = dir / "series" / "deeper";  // created when missing
    // The pattern runs from any address; an EEPROM file that does not exist yet is fine.
    const tool_result r = run_tool("--program " + shell_arg(test_pattern) + " --load-address 16384 --frames 5 --every 2 " +
                                   "--eeprom " + shell_arg(dir / "new.eeprom") + " --png-dir " + shell_arg(series));
    ASSERT_EQ(r.status, 0) << r.output;
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(series)) names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    EXPECT_EQ(names, (std::vector<std::string>{"frame-000002.png", "frame-000004.png"}));
    png_rgb p;
    ASSERT_TRUE(read_png((series / "frame-000004.png").string(), p));
    EXPECT_EQ(p.width, 320);
    EXPECT_EQ(p.at(129, 120), 0x0000FFu);
}

// programs/rgb24_pattern.s: a 32-bit object in RGB 24 mode at 2 clocks per pixel. The object
// renderer's cells and the picture's reading of them must agree on where red, green and blue are.
TEST_F(VemoRun, Rgb24ProgramShowsItsPixelsInTheirOwnColours) {
    const fs::path png = dir / "rgb24.png";
    const tool_result r = run_tool("--program " + shell_arg(rgb24_pattern) + " --frames 3 --png " + shell_arg(png));
    ASSERT_EQ(r.status, 0) << r.output;
    png_rgb p;
    ASSERT_TRUE(read_png(png.string(), p));
    ASSERT_EQ(p.width, 640);
    ASSERT_EQ(p.height, 20);
    const uint32_t expected[] = {0xFF0000, 0x00FF00, 0x0000FF, 0x123456};
    for (int y : {4, 7})
        for (int i = 0; i < 8; ++i) EXPECT_EQ(p.at(600 + i, y), expected[i % 4]) << "pixel " << i << " of row " << y;
    EXPECT_EQ(p.at(599, 4), 0u);
    EXPECT_EQ(p.at(608, 4), 0u);
    EXPECT_EQ(p.at(600, 3), 0u);
    EXPECT_EQ(p.at(600, 8), 0u);
}
