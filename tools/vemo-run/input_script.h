// The input script of vemo-run: which controls of controller 1 are held in which frames.
//
// The format is text, one line per frame range: the frames ("120", "120-180", or "600-" for
// frame 600 to the end; frames count from 1), then the controls held, separated by spaces:
// left right up down a b c option pause 0 1 2 3 4 5 6 7 8 9 star hash. '#' starts a comment;
// blank lines are allowed. Lines may overlap: a control is held in a frame when any line says so.
//
// Offers: input_script, parse_input_script and read_input_script (each mistake is reported with
// its line number), joypad_for_frame. Needs: the vemo_joypad record of the public interface.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "vemocore.h"

constexpr int CONTROL_COUNT = 21;  // the words of vemo_joypad, in order
extern const char* const control_names[CONTROL_COUNT];

struct input_range {
    long first;
    long last;          // INPUT_TO_THE_END: no last frame
    uint32_t controls;  // bit i: word i of vemo_joypad held
};
constexpr long INPUT_TO_THE_END = -1;

struct input_script {
    std::vector<input_range> ranges;
};

// Parses a whole script. On a mistake returns false and sets error to "line N: what is wrong".
bool parse_input_script(const std::string& text, input_script& script, std::string& error);

// Reads and parses a script file; error is "PATH:N: what is wrong" or why the file is unreadable.
bool read_input_script(const std::string& path, input_script& script, std::string& error);

// The controller state of a frame (frames count from 1).
vemo_joypad joypad_for_frame(const input_script& script, long frame);
