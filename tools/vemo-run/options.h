// vemo-run's command line: every switch, its checks and its help text.
//
// Offers: run_options, parse_command_line. Needs: CLI11.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

// Exit codes.
constexpr int EXIT_OK = 0;
constexpr int EXIT_RUN_FAILED = 1;  // the core did not start, a frame stopped early, a file failed
constexpr int EXIT_BAD_INPUT = 2;   // bad command line, missing or unreadable file, bad input script

enum class hash_mode { none, every_frame, last_frame };

// A run's frames: ten million are 46 hours of console time.
constexpr long MAX_FRAMES = 10'000'000;

struct run_options {
    std::string cartridge;
    std::string program;
    std::string load_address_text;
    std::string boot_rom;
    std::string eeprom;
    std::string frames_text = "60";
    long frames = 60;
    bool audio = false;
    bool timer_ticks = false;
    bool dsp_always_run = false;
    std::string png;
    std::string png_dir;
    std::string every_text = "1";
    long every = 1;
    std::vector<long> png_at;  // frames to save, ascending, no repeats
    std::string input;
    hash_mode hash = hash_mode::none;
    int64_t trace_68k = 0;
    int64_t trace_gpu = 0;
    int64_t trace_dsp = 0;
    bool log = false;
    std::string wav;
    bool demo = false;  // no image named: run the built-in demo cartridge
};

// Parses the command line into o. Returns -1 to go on and run, otherwise the exit status (help
// was shown, or a mistake was reported on standard error).
int parse_command_line(int argc, char** argv, run_options& o);

// "0x4000", "$4000" (hexadecimal) or "16384" (decimal), any number of digits; false when the
// text is no number or the number passes 64 bits.
bool parse_number(const std::string& text, unsigned long long& value);
