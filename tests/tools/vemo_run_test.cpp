// vemo-run run as a user runs it: its command line, messages, exit status, and the pictures it
// writes of console programs' screens.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <cstdio>
#include <filesystem>
#include <iterator>
#include <string>
#include <utility>

#include "summary.h"
#include "support/program_config.h"
#include "support/temp_files.h"
#include "vemo_run_fixture.h"
#include "vemocore.h"

namespace {

using vemo_run_test::arg;
using vemo_run_test::program_dir;
using vemo_run_test::test_pattern;
using vemo_run_test::VemoRun;
namespace fs = std::filesystem;
using test_support::write_file;

// Status 2: the run never started (a file or the command line is wrong); 1: it failed later, or
// ran without doing what a program does (a 68000 stopped where no code can be, a failed save).
TEST_F(VemoRun, EveryFailureEndsTheRunWithItsMessageAndStatus) {
    // A core that does not start is reported in its own words: ask it directly what it says
    // about a save file longer than the EEPROM.
    const fs::path long_save = write_file((dir / "long.eep").string(), std::vector<uint8_t>(300, 1));
    vemo_config config = test_support::program_config(program_dir + "/test_pattern.bin");
    std::snprintf(config.eeprom_path, sizeof config.eeprom_path, "%s", long_save.c_str());
    ASSERT_EQ(vemo_init(&config), 0);
    const std::string core_message = vemo_get_error_string();
    vemo_shutdown();
    ASSERT_FALSE(core_message.empty());
    const fs::path fifo = dir / "pipe.j64", empty = write_file((dir / "empty.j64").string(), {});
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);

    const std::string missing = (dir / "missing.j64").string(), program = "--program " + test_pattern;
    const std::string bad_object = "--program " + arg(program_dir + "/bad_object.bin") + " --frames 10";
    const std::string counter = "--program " + arg(program_dir + "/cart_eeprom_counter.bin");
    const struct { std::string arguments; int status; std::string message; } cases[] = {
        {arg(missing), 2, "cannot read cartridge image '" + missing + "': No such file"},
        {"--program " + arg(missing), 2, "cannot read program image '" + missing + "': No such file"},
        {test_pattern + " --boot-rom " + arg(missing), 2, "cannot read boot ROM image"},
        {arg(dir), 2, "is a directory, not a regular file"},
        {arg(fifo), 2, "cartridge image '" + fifo.string() + "' is a FIFO, not a regular file"},
        {program + " --eeprom " + arg(fifo), 2, "EEPROM file '" + fifo.string() + "' is a FIFO"},
        {program + " --load-address 0xZZ", 2, "--load-address '0xZZ' is not an address"},
        {program + " --load-address 0x123456789", 2, "--load-address '0x123456789' lies outside the 2 MB of RAM"},
        {program + " --load-address 3000000000", 2, "--load-address '3000000000' lies outside the 2 MB of RAM"},
        {program + " --load-address 0x200000", 2, "give an address from 0 to 0x1FFFFF"},
        {test_pattern + " --frames -1", 2, "--frames '-1': give a whole number from 0 to 10000000"},
        {test_pattern + " --frames 10000001", 2, "--frames '10000001': give a whole number from 0 to 10000000"},
        {test_pattern + " --frames 99999999999999999999999", 2, "--frames '99999999999999999999999': give a whole"},
        {program + " --png-dir " + arg(dir) + " --every 0", 2, "--every '0': give a whole number from 1"},
        {program + " --eeprom " + arg(long_save), 1, "the core did not start: " + core_message},
        // bad_object.s's object list holds an object of type 5, which stops the first frame.
        {bad_object, 1, "frame 1 stopped early: Object Processor error: Unhandled object 5"},
        {bad_object, 1, "frames run: 0 of 10"},
        {program + " --frames 1 --png " + arg(dir / "no" / "such" / "p.png"), 1, "cannot write"},
        // An empty cartridge reads all ones: the 68000 leaves every memory that holds code.
        {arg(empty) + " --frames 3", 1, "the 68000 stopped at 00FFFFFF in frame 1, where no code can be"},
        {arg(empty) + " --frames 3", 1, "frames run: 3 of 3"},
        {counter + " --eeprom " + arg(dir / "no" / "such" / "save.eep"), 1,
         "the program's EEPROM save failed: Couldn't save eeprom file " + (dir / "no" / "such" / "save.eep").string()},
        {program + " --load-address 0 --frames 0", 0,
         "the core says at start: Program image " + program_dir + "/test_pattern.bin at load address 00000000 "
         "lies under the 68000's reset vectors"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(run(c.arguments), c.status) << c.arguments;
        EXPECT_NE(output.find(c.message), std::string::npos) << c.arguments << "\n" << output;
        EXPECT_TRUE(c.status != 2 || output.find("frames run") == std::string::npos) << c.arguments;
    }
}

// A run so slow that one decimal would show 0.0 frames per second shows a useful figure.
TEST(VemoRunSummary, FramesPerSecondAlwaysShowsAUsefulFigure) {
    const struct { long frames; double seconds; const char* text; } cases[] = {
        {600, 0.105, "5714.3"}, {1, 10.0, "0.1"}, {1, 20.0, "0.05 (20.0 s per frame)"}, {1, 30.0, "0.0333 (30.0 s per frame)"},
        {3, 1000.0, "0.003 (333.3 s per frame)"}, {0, 1.0, "0.0"}, {5, 0.0, "0.0"},
    };
    for (const auto& c : cases) EXPECT_EQ(frames_per_second_text(c.frames, c.seconds), c.text) << c.frames << " " << c.seconds;
}

// programs/test_pattern.s on screen (CLUT, 16-bit CRY and background colours), the run's summary
// and every 2nd frame in a numbered series.
TEST_F(VemoRun, TestPatternProgramBecomesTheExpectedPictures) {
    const fs::path series = dir / "series" / "deeper";  // created when missing
    // The pattern runs from any address; an EEPROM file that does not exist yet is fine.
    const rgb_picture p = picture_of("--program " + test_pattern + " --load-address 16384 --frames 5 --every 2 " +
                                     "--eeprom " + arg(dir / "new.eeprom") + " --png-dir " + arg(series));
    for (const char* line : {"frames run: 5 of 5\n", "wall time: ", "frames per second: ", "core's last message: "})
        EXPECT_NE(output.find(line), std::string::npos) << line << "\n" << output;
    EXPECT_EQ(std::distance(fs::directory_iterator(series), fs::directory_iterator()), 2);
    EXPECT_TRUE(fs::exists(series / "frame-000002.png"));
    EXPECT_EQ(read_png((series / "frame-000004.png").string()).pixels, p.pixels);

    ASSERT_EQ(p.width, 320);   // 1280 clocks at 4 clocks per pixel
    ASSERT_EQ(p.height, 240);  // lines 40 to 519
    const uint32_t bg = 0x3E403A, marker = 0xF7FFE6;  // CRY 0x8840, 0x88FF
    const struct { int x, y; uint32_t colour; } pixels[] = {
        // background, around and between the objects
        {0, 0, bg}, {319, 239, bg}, {100, 15, bg}, {100, 80, bg}, {31, 20, bg}, {288, 20, bg}, {150, 119, bg},
        {150, 152, bg}, {127, 130, bg}, {192, 130, bg},
        // object 1, top half: pixel 0 is CLUT 17, then bars of CLUT 1 to 8
        {32, 16, marker}, {33, 16, 0xFF0000}, {63, 16, 0xFF0000}, {64, 16, 0xFFFF00}, {100, 30, 0x11FF00},
        {130, 47, 0x00FFFF}, {160, 20, 0x0000FF}, {200, 20, 0xFF00ED}, {230, 20, 0xAAFFFF}, {287, 47, 0x800000},
        // object 1, bottom half: the red ramp CLUT 9 to 16, intensity 32k - 1
        {32, 48, marker}, {40, 48, 0x1F0000}, {100, 60, 0x5F0000}, {287, 79, 0xFF0000},
        // object 2: 16-bit quadrants with the marker in pixel 0
        {128, 120, marker}, {129, 120, 0x0000FF}, {159, 135, 0x0000FF}, {160, 120, 0xFFFF00}, {191, 135, 0xFFFF00},
        {128, 151, marker}, {130, 136, 0x00FFFF}, {180, 151, 0x008080},
    };
    for (const auto& px : pixels) EXPECT_EQ(pixel(p, px.x, px.y), px.colour) << px.x << ", " << px.y;

    // With no frame run no row was displayed: the picture is one black pixel, so that the
    // requested file still exists.
    const rgb_picture none = picture_of("--program " + test_pattern + " --frames 0");
    ASSERT_EQ(none.width * none.height, 1);
    EXPECT_EQ(pixel(none, 0, 0), 0u);
}

// programs/rgb24_pattern.s: a 32-bit object in RGB 24 mode at 2 clocks per pixel. The object
// renderer's cells and the picture's reading of them must agree on where red, green and blue are.
TEST_F(VemoRun, Rgb24ProgramShowsItsPixelsInTheirOwnColours) {
    const rgb_picture p = picture_of("--program " + arg(program_dir + "/rgb24_pattern.bin") + " --frames 3");
    ASSERT_EQ(p.width, 640);
    ASSERT_EQ(p.height, 20);
    const uint32_t expected[] = {0xFF0000, 0x00FF00, 0x0000FF, 0x123456};
    for (int y : {4, 7})
        for (int i = 0; i < 8; ++i) EXPECT_EQ(pixel(p, 600 + i, y), expected[i % 4]) << i << ", " << y;
    for (const auto& [x, y] : {std::pair{599, 4}, {608, 4}, {600, 3}, {600, 8}}) EXPECT_EQ(pixel(p, x, y), 0u) << x;
}

}  // namespace
