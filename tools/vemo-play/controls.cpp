// Bindings of keys and controller buttons to the console's controller and the player's actions.
#include "controls.h"

#include <cstring>
#include <fstream>
#include <sstream>

const control_info controls[CONTROL_COUNT] = {
    {"left", "pad left"},         {"right", "pad right"},     {"up", "pad up"},
    {"down", "pad down"},         {"a", "button A"},          {"b", "button B"},
    {"c", "button C"},            {"option", "Option"},       {"pause", "Pause (the console's button)"},
    {"key-1", "keypad 1"},        {"key-2", "keypad 2"},      {"key-3", "keypad 3"},
    {"key-4", "keypad 4"},        {"key-5", "keypad 5"},      {"key-6", "keypad 6"},
    {"key-7", "keypad 7"},        {"key-8", "keypad 8"},      {"key-9", "keypad 9"},
    {"key-0", "keypad 0"},        {"key-star", "keypad *"},   {"key-hash", "keypad #"},
    {"pause-player", "stop or resume the machine"},
    {"reset", "start the cartridge again"},
    {"full-screen", "full screen on or off"},
    {"screenshot", "save the picture as a PNG file"},
    {"message", "show or hide the core's last message"},
    {"quit", "quit"},
};

namespace {

constexpr const char* PAD_PREFIX = "pad:";

// The left stick presses a direction past a third of its travel.
constexpr int STICK_DEAD_ZONE = 32768 / 3;

input key(SDL_Scancode code) { return {input::KEY, code}; }
input button(SDL_GameControllerButton code) { return {input::BUTTON, code}; }

std::string trim(const std::string& text) {
    const size_t first = text.find_first_not_of(" \t\r");
    if (first == std::string::npos) return "";
    return text.substr(first, text.find_last_not_of(" \t\r") - first + 1);
}

int control_by_name(const std::string& name) {
    for (int c = 0; c < CONTROL_COUNT; ++c)
        if (name == controls[c].name) return c;
    return -1;
}

bool parse_input(const std::string& name, input& out) {
    if (name.rfind(PAD_PREFIX, 0) == 0) {
        const SDL_GameControllerButton b =
            SDL_GameControllerGetButtonFromString(name.substr(std::strlen(PAD_PREFIX)).c_str());
        if (b == SDL_CONTROLLER_BUTTON_INVALID) return false;
        out = button(b);
        return true;
    }
    const SDL_Scancode code = SDL_GetScancodeFromName(name.c_str());
    if (code == SDL_SCANCODE_UNKNOWN) return false;
    out = key(code);
    return true;
}

void unbind(key_map& map, const input& in) {
    for (auto& inputs : map.bindings) std::erase(inputs, in);
}

bool held(const input& in, const held_inputs& h) {
    if (in.kind == input::KEY) return h.keys && in.code >= 0 && in.code < SDL_NUM_SCANCODES && h.keys[in.code];
    return h.buttons && in.code >= 0 && in.code < SDL_CONTROLLER_BUTTON_MAX && h.buttons[in.code];
}

}  // namespace

key_map default_key_map() {
    key_map m;
    auto bind = [&m](int control, std::initializer_list<input> inputs) { m.bindings[control] = inputs; };
    bind(0, {key(SDL_SCANCODE_LEFT), button(SDL_CONTROLLER_BUTTON_DPAD_LEFT)});
    bind(1, {key(SDL_SCANCODE_RIGHT), button(SDL_CONTROLLER_BUTTON_DPAD_RIGHT)});
    bind(2, {key(SDL_SCANCODE_UP), button(SDL_CONTROLLER_BUTTON_DPAD_UP)});
    bind(3, {key(SDL_SCANCODE_DOWN), button(SDL_CONTROLLER_BUTTON_DPAD_DOWN)});
    // A, B and C lie in a row on the console's controller, as X, A and B do on most others.
    bind(4, {key(SDL_SCANCODE_Z), button(SDL_CONTROLLER_BUTTON_X)});
    bind(5, {key(SDL_SCANCODE_X), button(SDL_CONTROLLER_BUTTON_A)});
    bind(6, {key(SDL_SCANCODE_C), button(SDL_CONTROLLER_BUTTON_B)});
    bind(7, {key(SDL_SCANCODE_TAB), button(SDL_CONTROLLER_BUTTON_BACK)});
    bind(8, {key(SDL_SCANCODE_RETURN), button(SDL_CONTROLLER_BUTTON_START)});
    // The keypad: the digit keys and the numeric keypad; * and # also on the shoulders.
    for (int digit = 1; digit <= 9; ++digit)
        bind(8 + digit, {key(static_cast<SDL_Scancode>(SDL_SCANCODE_1 + digit - 1)),
                         key(static_cast<SDL_Scancode>(SDL_SCANCODE_KP_1 + digit - 1))});
    bind(18, {key(SDL_SCANCODE_0), key(SDL_SCANCODE_KP_0)});
    bind(19, {key(SDL_SCANCODE_MINUS), key(SDL_SCANCODE_KP_MULTIPLY), button(SDL_CONTROLLER_BUTTON_LEFTSHOULDER)});
    bind(20, {key(SDL_SCANCODE_EQUALS), key(SDL_SCANCODE_KP_DIVIDE), button(SDL_CONTROLLER_BUTTON_RIGHTSHOULDER)});
    bind(ACTION_PAUSE, {key(SDL_SCANCODE_P)});
    bind(ACTION_RESET, {key(SDL_SCANCODE_F2)});
    bind(ACTION_FULL_SCREEN, {key(SDL_SCANCODE_F11)});
    bind(ACTION_SCREENSHOT, {key(SDL_SCANCODE_F12)});
    bind(ACTION_MESSAGE, {key(SDL_SCANCODE_F1)});
    bind(ACTION_QUIT, {key(SDL_SCANCODE_ESCAPE)});
    return m;
}

bool apply_key_file(const std::string& text, const std::string& source, key_map& map, std::string& error) {
    key_map result = map;
    std::vector<input> named;  // inputs the file has bound so far
    std::istringstream lines(text);
    std::string line;
    for (int number = 1; std::getline(lines, line); ++number) {
        const std::string where = source + ":" + std::to_string(number) + ": ";
        line = trim(line.substr(0, line.find('#')));
        if (line.empty()) continue;
        const size_t equals = line.find('=');
        if (equals == std::string::npos) {
            error = where + "expected 'control = input, input, ...'";
            return false;
        }
        const std::string name = trim(line.substr(0, equals));
        const int control = control_by_name(name);
        if (control < 0) {
            error = where + "unknown control '" + name + "' (see --help)";
            return false;
        }
        // An empty list leaves the control without inputs; an empty item is a mistake.
        std::vector<input> inputs;
        const std::string list = trim(line.substr(equals + 1));
        for (size_t start = 0; !list.empty() && start <= list.size();) {
            const size_t comma = std::min(list.find(',', start), list.size());
            const std::string item = trim(list.substr(start, comma - start));
            start = comma + 1;
            input in;
            if (item.empty() || !parse_input(item, in)) {
                error = where + "unknown key or button '" + item + "'";
                return false;
            }
            for (const input& earlier : named)
                if (earlier == in) {
                    error = where + "'" + item + "' is bound twice in this file";
                    return false;
                }
            named.push_back(in);
            inputs.push_back(in);
        }
        for (const input& in : inputs) unbind(result, in);
        result.bindings[control] = inputs;
    }
    map = result;
    return true;
}

bool load_key_file(const std::string& path, key_map& map, std::string& error) {
    std::ifstream in(path);
    if (!in) {
        error = "cannot read key file '" + path + "'";
        return false;
    }
    std::stringstream text;
    text << in.rdbuf();
    return apply_key_file(text.str(), path, map, error);
}

std::string input_name(const input& in) {
    if (in.kind == input::BUTTON) {
        const char* name = SDL_GameControllerGetStringForButton(static_cast<SDL_GameControllerButton>(in.code));
        return std::string(PAD_PREFIX) + (name ? name : "?");
    }
    return SDL_GetScancodeName(static_cast<SDL_Scancode>(in.code));
}

std::string describe_key_map(const key_map& map) {
    std::string text;
    for (int c = 0; c < CONTROL_COUNT; ++c) {
        std::string line = std::string(controls[c].name) + " = ";
        for (size_t i = 0; i < map.bindings[c].size(); ++i)
            line += (i ? ", " : "") + input_name(map.bindings[c][i]);
        if (line.size() < 40) line.resize(40, ' ');
        text += line + "  # " + controls[c].what + "\n";
    }
    return text;
}

int control_of(const key_map& map, const input& in) {
    for (int c = 0; c < CONTROL_COUNT; ++c)
        for (const input& bound : map.bindings[c])
            if (bound == in) return c;
    return -1;
}

vemo_joypad joypad_from_held(const key_map& map, const held_inputs& h) {
    int32_t words[JOYPAD_CONTROLS] = {};
    for (int c = 0; c < JOYPAD_CONTROLS; ++c)
        for (const input& in : map.bindings[c])
            if (held(in, h)) words[c] = 1;
    // Words 0 to 3: left, right, up, down.
    if (h.stick_x < -STICK_DEAD_ZONE) words[0] = 1;
    if (h.stick_x > STICK_DEAD_ZONE) words[1] = 1;
    if (h.stick_y < -STICK_DEAD_ZONE) words[2] = 1;
    if (h.stick_y > STICK_DEAD_ZONE) words[3] = 1;
    static_assert(sizeof words == sizeof(vemo_joypad));
    vemo_joypad pad;
    std::memcpy(&pad, words, sizeof pad);
    return pad;
}
