// The command line.
#include "options.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <sstream>

namespace {

// --frames and --every: whole numbers within their range, said in plain words otherwise.
bool parse_count(const std::string& text, const char* option, long low, long high, const char* meaning,
                 long& count) {
    unsigned long long value = 0;
    if (text.rfind("0x", 0) == 0 || text.rfind('$', 0) == 0 || !parse_number(text, value) ||
        value < static_cast<unsigned long long>(low) || value > static_cast<unsigned long long>(high)) {
        std::fprintf(stderr, "vemo-run: %s '%s': give a whole number from %ld to %ld (%s)\n", option,
                     text.c_str(), low, high, meaning);
        return false;
    }
    count = static_cast<long>(value);
    return true;
}


// "1,60,600": frames to save, counted from 1, within the run.
bool parse_frame_list(const std::string& text, long frames, std::vector<long>& list) {
    if (text.empty()) {
        std::fprintf(stderr, "vemo-run: --png-at: give frame numbers, such as 1,60,600\n");
        return false;
    }
    if (text.front() == ',' || text.back() == ',' || text.find(",,") != std::string::npos) {
        std::fprintf(stderr, "vemo-run: --png-at: '%s' has an empty item\n", text.c_str());
        return false;
    }
    std::istringstream items(text);
    std::string item;
    while (std::getline(items, item, ',')) {
        size_t used = 0;
        long frame = 0;
        try {
            frame = std::stol(item, &used);
        } catch (const std::exception&) {
            used = 0;
        }
        if (used == 0 || used != item.size() || frame < 1) {
            std::fprintf(stderr, "vemo-run: --png-at: '%s' is not a frame number (frames count from 1)\n", item.c_str());
            return false;
        }
        if (frame > frames) {
            std::fprintf(stderr, "vemo-run: --png-at: frame %ld is past the run's last frame, %ld\n", frame, frames);
            return false;
        }
        list.push_back(frame);
    }
    std::sort(list.begin(), list.end());
    list.erase(std::unique(list.begin(), list.end()), list.end());
    return true;
}

void add_machine_options(CLI::App& app, run_options& o) {
    auto* cartridge = app.add_option("GAME", o.cartridge, "Cartridge image (.j64) to run; without one, the built-in demo runs");
    auto* program = app.add_option("--program", o.program, "Program image to place in RAM and run instead of a cartridge")
                        ->type_name("FILE");
    app.add_option("--load-address", o.load_address_text,
                   "RAM address of the program image and its start address (0x4000, $4000 or 16384; default 0x4000)")
        ->type_name("ADDR")
        ->needs(program);
    cartridge->excludes(program);
    app.add_option("--boot-rom", o.boot_rom, "Boot ROM image: the 68000 starts in it")->type_name("FILE");
    app.add_option("--eeprom", o.eeprom,
                   "128-byte EEPROM save file, read at start and written when the program saves "
                   "(without it, saves go nowhere)")
        ->type_name("FILE");
    app.add_option("--frames", o.frames_text, "Frames to run (default 60, one second of console time; at most 10000000)")
        ->type_name("N");
    auto* audio = app.add_flag("--audio", o.audio, "Enable audio: sample ticks, DSP interrupts, a DSP slice per line");
    app.add_flag("--timer-ticks", o.timer_ticks, "Let the sound chip's two timers interrupt the DSP")->needs(audio);
    app.add_flag("--dsp-always-run", o.dsp_always_run, "Run the DSP on every line even without --audio");
    app.add_option("--input", o.input,
                   "Input script: lines 'FRAMES CONTROLS...' such as '120-180 a right' ('#' comments)")
        ->type_name("SCRIPT");
}

void add_output_options(CLI::App& app, run_options& o, std::string& hash_text, std::string& png_at_text) {
    app.add_option("--png", o.png, "Write the last frame's picture to this PNG file")->type_name("FILE");
    auto* png_dir = app.add_option("--png-dir", o.png_dir,
                                   "Write a numbered picture series (frame-NNNNNN.png) here; with --png-at, "
                                   "the folder of those pictures")
                        ->type_name("DIR");
    auto* every = app.add_option("--every", o.every_text, "With --png-dir: save every K-th frame (default 1)")
                      ->type_name("K")
                      ->needs(png_dir);
    app.add_option("--png-at", png_at_text,
                   "Save these frames (such as 1,60,600) as frame-NNNNNN.png in --png-dir (default: here)")
        ->type_name("LIST")
        ->excludes(every);
    app.add_option("--hash", hash_text,
                   "Print a SHA-256 digest of every frame's picture and samples, or of the last frame only "
                   "with '--hash last'")
        ->expected(0, 1)
        ->default_str("every")
        ->type_name("[last]")
        ->check(CLI::IsMember({"every", "last"}));
    app.add_option("--wav", o.wav, "Write the run's sound to this WAV file (both channels, 16-bit)")->type_name("FILE");
}

void add_diagnostic_options(CLI::App& app, run_options& o) {
    app.add_option("--trace-68k", o.trace_68k,
                   "Print the first N 68000 instructions executed: address, words, disassembly, registers written")
        ->type_name("N")
        ->check(CLI::NonNegativeNumber);
    app.add_option("--trace-gpu", o.trace_gpu,
                   "Print the first N GPU instructions executed: address, words, disassembly, registers written")
        ->type_name("N")
        ->check(CLI::NonNegativeNumber);
    app.add_option("--trace-dsp", o.trace_dsp,
                   "Print the first N DSP instructions executed: address, words, disassembly, registers written")
        ->type_name("N")
        ->check(CLI::NonNegativeNumber);
    app.add_flag("--log", o.log,
                 "List every distinct core message with its count and the frame it first appeared in, "
                 "instead of only the last message");
}

}  // namespace

// "0x4000", "$4000" (hexadecimal) or "16384" (decimal), any number of digits; false when the
// text is no number or the number passes 64 bits.
bool parse_number(const std::string& text, unsigned long long& value) {
    std::string digits = text;
    int base = 10;
    if (digits.rfind("0x", 0) == 0 || digits.rfind("0X", 0) == 0) {
        digits = digits.substr(2);
        base = 16;
    } else if (digits.rfind('$', 0) == 0) {
        digits = digits.substr(1);
        base = 16;
    }
    const char* end = digits.data() + digits.size();
    const auto [stop, error] = std::from_chars(digits.data(), end, value, base);
    return !digits.empty() && error == std::errc() && stop == end;
}

int parse_command_line(int argc, char** argv, run_options& o) {
    CLI::App app{
        "Runs a console program headless through vemocore, for a number of frames, and prints\n"
        "frames run, wall time, frames per second and the core's last message."};
    app.footer(
        "Pictures: each row is cropped to its displayed width; the picture has the frame-buffer\n"
        "rows up to the last one the Object Processor drew.\n"
        "Runs are deterministic: the same image, switches and input script give the same\n"
        "pictures, sound and digests.\n"
        "Exit status: 0 all frames ran; 1 the core did not start, a frame stopped early, the 68000\n"
        "stopped where no code can be, an EEPROM save failed or a file could not be written;\n"
        "2 bad arguments, a missing, unreadable or irregular file or a mistake in the input script.");
    std::string hash_text, png_at_text;
    add_machine_options(app, o);
    add_output_options(app, o, hash_text, png_at_text);
    add_diagnostic_options(app, o);
    try {
        app.parse(argc, argv);
    } catch (const CLI::CallForHelp& e) {
        return app.exit(e);
    } catch (const CLI::ParseError& e) {
        app.exit(e);
        return EXIT_BAD_INPUT;
    }
    // Without an image, vemo-run shows what the machine can do with its own demo cartridge.
    o.demo = o.cartridge.empty() && o.program.empty();
    if (!parse_count(o.frames_text, "--frames", 0, MAX_FRAMES, "frames to run; 10000000 are 46 hours of console time",
                     o.frames) ||
        !parse_count(o.every_text, "--every", 1, MAX_FRAMES, "1 saves every frame, 2 every second one", o.every))
        return EXIT_BAD_INPUT;
    if (app.count("--hash")) o.hash = hash_text == "last" ? hash_mode::last_frame : hash_mode::every_frame;
    if (app.count("--png-at") && !parse_frame_list(png_at_text, o.frames, o.png_at)) return EXIT_BAD_INPUT;
    return -1;
}
