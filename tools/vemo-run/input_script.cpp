// Parsing input scripts and turning them into controller states.
#include "input_script.h"

#include <cctype>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <iterator>
#include <sstream>

const char* const control_names[CONTROL_COUNT] = {
    "left", "right", "up", "down", "a", "b", "c", "option", "pause", "1", "2",
    "3",    "4",     "5",  "6",    "7", "8", "9", "0",      "star",  "hash"};

static_assert(sizeof(vemo_joypad) == CONTROL_COUNT * sizeof(int32_t), "vemo_joypad is 21 words");

namespace {

// Frames are written in decimal; more digits than this is no frame number anyone means.
constexpr size_t MAX_FRAME_DIGITS = 12;

bool parse_frame(const std::string& digits, long& frame) {
    if (digits.empty() || digits.size() > MAX_FRAME_DIGITS) return false;
    for (char c : digits)
        if (!std::isdigit(static_cast<unsigned char>(c))) return false;
    frame = std::stol(digits);
    return true;
}

// "120", "120-180" or "120-".
bool parse_range(const std::string& word, input_range& range, std::string& error) {
    const size_t dash = word.find('-');
    const std::string first = word.substr(0, dash);
    const std::string last = dash == std::string::npos ? first : word.substr(dash + 1);
    const bool open_end = dash != std::string::npos && last.empty();
    if (!parse_frame(first, range.first) || (!open_end && !parse_frame(last, range.last))) {
        error = "'" + word + "' is not a frame or a frame range (such as 120, 120-180 or 600-)";
        return false;
    }
    if (open_end) range.last = INPUT_TO_THE_END;
    if (range.first == 0 || range.last == 0) {
        error = "frames count from 1; '" + word + "' names frame 0";
        return false;
    }
    if (range.last != INPUT_TO_THE_END && range.last < range.first) {
        error = "the range " + word + " ends before it starts";
        return false;
    }
    return true;
}

bool parse_control(const std::string& word, uint32_t& controls, std::string& error) {
    for (int i = 0; i < CONTROL_COUNT; ++i) {
        if (word == control_names[i]) {
            controls |= 1u << i;
            return true;
        }
    }
    error = "unknown control '" + word + "' (the controls: left right up down a b c option pause 0-9 star hash)";
    return false;
}

bool parse_line(const std::string& line, input_script& script, std::string& error) {
    std::istringstream words(line.substr(0, line.find('#')));
    std::string word;
    if (!(words >> word)) return true;  // blank or comment only
    input_range range{};
    if (!parse_range(word, range, error)) return false;
    while (words >> word)
        if (!parse_control(word, range.controls, error)) return false;
    if (range.controls == 0) {
        error = "no controls after the frames " + word + " (a line names the frames, then the controls held)";
        return false;
    }
    script.ranges.push_back(range);
    return true;
}

}  // namespace

bool parse_input_script(const std::string& text, input_script& script, std::string& error) {
    script.ranges.clear();
    std::istringstream lines(text);
    std::string line;
    for (int number = 1; std::getline(lines, line); ++number) {
        if (!parse_line(line, script, error)) {
            error = "line " + std::to_string(number) + ": " + error;
            return false;
        }
    }
    return true;
}

bool read_input_script(const std::string& path, input_script& script, std::string& error) {
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        error = "cannot read input script '" + path + "': " + std::strerror(errno);
        return false;
    }
    const std::string text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    if (file.bad()) {
        error = "cannot read input script '" + path + "'";
        return false;
    }
    if (parse_input_script(text, script, error)) return true;
    error = path + ":" + error.substr(std::strlen("line "));
    return false;
}

vemo_joypad joypad_for_frame(const input_script& script, long frame) {
    uint32_t held = 0;
    for (const input_range& r : script.ranges)
        if (frame >= r.first && (r.last == INPUT_TO_THE_END || frame <= r.last)) held |= r.controls;
    int32_t words[CONTROL_COUNT];
    for (int i = 0; i < CONTROL_COUNT; ++i) words[i] = (held >> i) & 1;
    vemo_joypad pad;
    std::memcpy(&pad, words, sizeof pad);
    return pad;
}
