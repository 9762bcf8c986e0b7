// The player's controls without a window: what each key and button presses, what a key file
// changes, and how a bad key file is reported.
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "controls.h"
#include "support/temp_files.h"

namespace {

// The joypad words that are non-zero, by control name.
std::set<std::string> pressed(const vemo_joypad& pad) {
    const int32_t* words = &pad.left;
    std::set<std::string> names;
    for (int c = 0; c < JOYPAD_CONTROLS; ++c)
        if (words[c]) names.insert(controls[c].name);
    return names;
}

struct held_state {
    Uint8 keys[SDL_NUM_SCANCODES] = {};
    bool buttons[SDL_CONTROLLER_BUTTON_MAX] = {};
    int x = 0, y = 0;
    vemo_joypad pad(const key_map& map) const { return joypad_from_held(map, {keys, buttons, x, y}); }
};

TEST(PlayerControls, DefaultBindingsGiveEveryControlItsOwnInputs) {
    const key_map map = default_key_map();
    std::vector<input> seen;
    for (int c = 0; c < CONTROL_COUNT; ++c) {
        EXPECT_FALSE(map.bindings[c].empty()) << controls[c].name;
        for (const input& in : map.bindings[c]) {
            for (const input& other : seen) EXPECT_FALSE(in == other) << input_name(in) << " bound twice";
            seen.push_back(in);
            EXPECT_EQ(control_of(map, in), c) << input_name(in);
        }
    }
    // The printed bindings (--help, --print-keys) are a key file giving the same bindings back.
    key_map reread = default_key_map();
    for (auto& inputs : reread.bindings) inputs.clear();
    std::string error;
    ASSERT_TRUE(apply_key_file(describe_key_map(map), "printed", reread, error)) << error;
    for (int c = 0; c < CONTROL_COUNT; ++c) EXPECT_EQ(reread.bindings[c], map.bindings[c]) << controls[c].name;
}

TEST(PlayerControls, HeldKeysButtonsAndStickPressTheirControls) {
    const key_map map = default_key_map();
    const struct {
        std::vector<SDL_Scancode> keys;
        std::vector<SDL_GameControllerButton> buttons;
        int x, y;
        std::set<std::string> expected;
    } cases[] = {
        {{}, {}, 0, 0, {}},
        {{SDL_SCANCODE_UP, SDL_SCANCODE_Z}, {}, 0, 0, {"up", "a"}},
        {{SDL_SCANCODE_X, SDL_SCANCODE_C, SDL_SCANCODE_TAB, SDL_SCANCODE_RETURN}, {}, 0, 0, {"b", "c", "option", "pause"}},
        {{SDL_SCANCODE_1, SDL_SCANCODE_KP_9, SDL_SCANCODE_0}, {}, 0, 0, {"key-1", "key-9", "key-0"}},
        {{SDL_SCANCODE_KP_MULTIPLY, SDL_SCANCODE_EQUALS}, {}, 0, 0, {"key-star", "key-hash"}},
        {{}, {SDL_CONTROLLER_BUTTON_X, SDL_CONTROLLER_BUTTON_A, SDL_CONTROLLER_BUTTON_B}, 0, 0, {"a", "b", "c"}},
        {{}, {SDL_CONTROLLER_BUTTON_DPAD_LEFT, SDL_CONTROLLER_BUTTON_START, SDL_CONTROLLER_BUTTON_BACK}, 0, 0,
         {"left", "pause", "option"}},
        {{}, {SDL_CONTROLLER_BUTTON_LEFTSHOULDER, SDL_CONTROLLER_BUTTON_RIGHTSHOULDER}, 0, 0, {"key-star", "key-hash"}},
        // The stick past a third of its travel; within it nothing.
        {{}, {}, -20000, 20000, {"left", "down"}},
        {{}, {}, 32767, -32768, {"right", "up"}},
        {{}, {}, 10000, -10000, {}},
        // The player's own keys press nothing on the console.
        {{SDL_SCANCODE_P, SDL_SCANCODE_F2, SDL_SCANCODE_ESCAPE}, {}, 0, 0, {}},
    };
    for (const auto& c : cases) {
        held_state held;
        for (SDL_Scancode k : c.keys) held.keys[k] = 1;
        for (SDL_GameControllerButton b : c.buttons) held.buttons[b] = true;
        held.x = c.x;
        held.y = c.y;
        EXPECT_EQ(pressed(held.pad(map)), c.expected) << (c.keys.empty() ? "" : input_name({input::KEY, c.keys[0]}));
    }
}

TEST(PlayerControls, KeyFileReplacesBindingsAndTakesItsInputsFromOthers) {
    key_map map = default_key_map();
    std::string error;
    const std::string file =
        "# arrows for the keypad's corners, WASD for the pad\n"
        "up = W, pad:y   # and the controller's top button\n"
        "\n"
        "  left=A\n"
        "key-1 = Up\n"
        "reset = Backspace\n"
        "quit =\n";
    ASSERT_TRUE(apply_key_file(file, "keys.conf", map, error)) << error;
    EXPECT_EQ(map.bindings[2], (std::vector<input>{{input::KEY, SDL_SCANCODE_W}, {input::BUTTON, SDL_CONTROLLER_BUTTON_Y}}));
    EXPECT_EQ(control_of(map, {input::KEY, SDL_SCANCODE_A}), 0);
    EXPECT_EQ(control_of(map, {input::KEY, SDL_SCANCODE_UP}), 9);  // taken from 'up'
    EXPECT_EQ(control_of(map, {input::KEY, SDL_SCANCODE_1}), -1);  // key-1's old inputs are gone
    EXPECT_EQ(control_of(map, {input::KEY, SDL_SCANCODE_F2}), -1);
    EXPECT_EQ(control_of(map, {input::KEY, SDL_SCANCODE_BACKSPACE}), ACTION_RESET);
    EXPECT_EQ(control_of(map, {input::KEY, SDL_SCANCODE_RIGHT}), 1);  // untouched
    EXPECT_TRUE(map.bindings[ACTION_QUIT].empty());

    held_state held;
    held.keys[SDL_SCANCODE_UP] = held.keys[SDL_SCANCODE_W] = 1;
    EXPECT_EQ(pressed(held.pad(map)), (std::set<std::string>{"up", "key-1"}));
}

TEST(PlayerControls, BadKeyFileNamesItsLineAndChangesNothing) {
    const struct { std::string text, error; } cases[] = {
        {"up = W\njump = Space\n", "keys.conf:2: unknown control 'jump' (see --help)"},
        {"up W\n", "keys.conf:1: expected 'control = input, input, ...'"},
        {"up = Wubble\n", "keys.conf:1: unknown key or button 'Wubble'"},
        {"a = pad:turbo\n", "keys.conf:1: unknown key or button 'pad:turbo'"},
        {"a = Z,\n", "keys.conf:1: unknown key or button ''"},
        {"a = Z, , C\n", "keys.conf:1: unknown key or button ''"},
        {"a = Z\n\nb = Space, Z\n", "keys.conf:3: 'Z' is bound twice in this file"},
    };
    for (const auto& c : cases) {
        key_map map = default_key_map();
        std::string error;
        EXPECT_FALSE(apply_key_file(c.text, "keys.conf", map, error)) << c.text;
        EXPECT_EQ(error, c.error);
        for (int control = 0; control < CONTROL_COUNT; ++control)
            EXPECT_EQ(map.bindings[control], default_key_map().bindings[control]) << c.text;
    }
    key_map map = default_key_map();
    std::string error;
    const std::string missing = (test_support::scratch_dir() / "no-such-keys.conf").string();
    EXPECT_FALSE(load_key_file(missing, map, error));
    EXPECT_EQ(error, "cannot read key file '" + missing + "'");
    const std::string good = test_support::write_file("keys.conf", {'c', '=', 'V', '\n'});
    ASSERT_TRUE(load_key_file(good, map, error)) << error;
    EXPECT_EQ(control_of(map, {input::KEY, SDL_SCANCODE_V}), 6);
}

}  // namespace
