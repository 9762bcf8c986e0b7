// The player's controls: which keyboard keys and game-controller buttons press which control of
// the console's controller (its joypad and keypad) and which drive the player itself.
//
// Offers: the control table, the default bindings, reading a key file over them, the bindings
// as key-file text (for --help and --print-keys), and the joypad record for what is held.
// Needs: SDL2's key and controller-button names only; nothing here opens a window or a device,
// so all of it works without a display.
#pragma once

#include <SDL.h>

#include <string>
#include <vector>

#include "vemocore.h"

// Controls 0 to 20 are the 21 words of vemo_joypad in their order; the player's own follow.
constexpr int JOYPAD_CONTROLS = 21;
enum player_action {
    ACTION_PAUSE = JOYPAD_CONTROLS,  // stop and resume the machine
    ACTION_RESET,                    // start the cartridge again
    ACTION_FULL_SCREEN,
    ACTION_SCREENSHOT,               // the current picture as a PNG file
    ACTION_MESSAGE,                  // show or hide the core's last message
    ACTION_QUIT,
    CONTROL_COUNT
};

struct control_info {
    const char* name;  // as written in a key file
    const char* what;  // for the help text
};
extern const control_info controls[CONTROL_COUNT];

// One physical input: a keyboard key by its position (an SDL scancode, so that the layout of the
// keyboard does not move the controls) or a game-controller button.
struct input {
    enum kind_t { KEY, BUTTON } kind;
    int code;  // SDL_Scancode or SDL_GameControllerButton
    bool operator==(const input&) const = default;
};

struct key_map {
    std::vector<input> bindings[CONTROL_COUNT];
};

key_map default_key_map();

// Applies the lines of a key file to the map. A line is "control = input, input, ..." and
// replaces that control's inputs ("control =" leaves it without any); the inputs it names are
// taken away from every other control, so a key file can reuse a key that a default binding
// holds. '#' starts a comment. Keys are
// SDL's key names ("Z", "Up", "Keypad 5", "Right Shift"), controller buttons "pad:" and SDL's
// button name ("pad:a", "pad:dpup", "pad:start"). On the first bad line returns false and sets
// error to "SOURCE:LINE: what is wrong"; the map is then unchanged.
bool apply_key_file(const std::string& text, const std::string& source, key_map& map, std::string& error);

// Reads and applies a key file; a file that cannot be read is an error.
bool load_key_file(const std::string& path, key_map& map, std::string& error);

// The name of an input as a key file writes it ("Keypad 5", "pad:x").
std::string input_name(const input& in);

// Every control with its inputs, one "name = inputs   # what" line each: a valid key file.
std::string describe_key_map(const key_map& map);

// The control an input is bound to, or -1.
int control_of(const key_map& map, const input& in);

// What the player holds: keys by scancode (SDL's keyboard state array, SDL_NUM_SCANCODES
// entries), controller buttons (SDL_CONTROLLER_BUTTON_MAX entries), and the left stick's
// position (-32768 to 32767 per axis) which also moves the pad beyond a dead zone.
struct held_inputs {
    const Uint8* keys = nullptr;
    const bool* buttons = nullptr;
    int stick_x = 0;
    int stick_y = 0;
};

vemo_joypad joypad_from_held(const key_map& map, const held_inputs& held);
