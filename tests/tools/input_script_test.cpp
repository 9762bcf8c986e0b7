// vemo-run's input scripts: every mistake named with its line, and the controls each frame holds.
#include <gtest/gtest.h>

#include <cstring>
#include <fstream>
#include <string>

#include "input_script.h"
#include "support/temp_files.h"

namespace {

TEST(InputScript, EachMistakeIsNamedWithItsLine) {
    const struct {
        const char* script;
        const char* error;
    } cases[] = {
        {"1 a\nx12 b", "line 2: 'x12' is not a frame or a frame range (such as 120, 120-180 or 600-)"},
        {"120-180-200 a", "line 1: '120-180-200' is not a frame or a frame range"},
        {"-5 a", "line 1: '-5' is not a frame or a frame range"},
        {"1234567890123 a", "line 1: '1234567890123' is not a frame or a frame range"},
        {"# start\n\n0-10 a", "line 3: frames count from 1; '0-10' names frame 0"},
        {"5-0 a", "line 1: frames count from 1; '5-0' names frame 0"},
        {"180-120 a", "line 1: the range 180-120 ends before it starts"},
        {"1 a\n2 b\n3 jump", "line 3: unknown control 'jump' (the controls: left right up down a b c option pause 0-9 star hash)"},
        {"1 A", "line 1: unknown control 'A'"},
        {"1 # a", "line 1: no controls after the frames 1"},
        {"7-9", "line 1: no controls after the frames 7-9"},
    };
    for (const auto& c : cases) {
        input_script script;
        std::string error;
        EXPECT_FALSE(parse_input_script(c.script, script, error)) << c.script;
        EXPECT_EQ(error.rfind(c.error, 0), 0u) << c.script << "\n" << error;
    }
}

// The controls held in a frame, in vemo_joypad's order.
std::string held(const input_script& script, long frame) {
    const vemo_joypad pad = joypad_for_frame(script, frame);
    int32_t words[CONTROL_COUNT];
    std::memcpy(words, &pad, sizeof words);
    std::string names;
    for (int i = 0; i < CONTROL_COUNT; ++i)
        if (words[i]) names.append(names.empty() ? "" : " ").append(control_names[i]);
    return names;
}

TEST(InputScript, EachFrameHoldsTheControlsOfEveryLineThatCoversIt) {
    input_script script;
    std::string error;
    ASSERT_TRUE(parse_input_script("# a walk to the right, jumping\n"
                                   "  120-180 a right   # the first jump\n"
                                   "150 b\r\n"
                                   "\t600- pause\n"
                                   "10 1 2 3 4 5 6 7 8 9 0 star hash left up down c option\n",
                                   script, error))
        << error;
    const struct {
        long frame;
        const char* controls;
    } frames[] = {
        {1, ""},        {119, ""},          {120, "right a"}, {150, "right a b"}, {180, "right a"},
        {181, ""},      {599, ""},          {600, "pause"},   {1000000, "pause"},
        {10, "left up down c option 1 2 3 4 5 6 7 8 9 0 star hash"},
    };
    for (const auto& f : frames) EXPECT_EQ(held(script, f.frame), f.controls) << f.frame;
    // The words land in vemo_joypad's order: left, right, up, down, a, ... key_hash.
    const vemo_joypad pad = joypad_for_frame(script, 10);
    EXPECT_TRUE(pad.left && pad.key_1 && pad.key_0 && pad.key_hash && !pad.right && !pad.a);
}

TEST(InputScript, AFileNamesItsPathInItsMistakesAndAnEmptyOneHoldsNothing) {
    const auto dir = test_support::scratch_dir();
    const std::string path = (dir / "input.txt").string();
    std::ofstream(path) << "1-5 a\n6 kick\n";
    input_script script;
    std::string error;
    EXPECT_FALSE(read_input_script(path, script, error));
    EXPECT_EQ(error.rfind(path + ":2: unknown control 'kick'", 0), 0u) << error;
    EXPECT_FALSE(read_input_script(path + ".missing", script, error));
    EXPECT_EQ(error, "cannot read input script '" + path + ".missing': No such file or directory");
    std::ofstream(path, std::ios::trunc).close();
    EXPECT_TRUE(read_input_script(path, script, error)) << error;
    EXPECT_EQ(held(script, 1), "");
}

}  // namespace
