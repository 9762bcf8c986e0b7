// vemo-run: runs a console program headless for a number of frames through the core's public
// interface, optionally saving pictures, and prints a short summary.
#include <CLI/CLI.hpp>

#include <cctype>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <string>

#include "picture.h"
#include "png_file.h"
#include "vemocore.h"

namespace {

// Exit codes.
constexpr int EXIT_OK = 0;
constexpr int EXIT_RUN_FAILED = 1;  // the core did not start, a frame stopped early, a PNG failed
constexpr int EXIT_BAD_INPUT = 2;   // bad command line, missing or unreadable file

// Console programs are conventionally loaded at 0x4000, just above the vector table.
constexpr uint32_t DEFAULT_LOAD_ADDRESS = 0x4000;

struct run_options {
    std::string cartridge;
    std::string program;
    std::string load_address_text;
    std::string boot_rom;
    std::string eeprom;
    long frames = 60;
    bool audio = false;
    bool timer_ticks = false;
    bool dsp_always_run = false;
    std::string png;
    std::string png_dir;
    long every = 1;
};

// The core's message without its trailing line feed, or "(none)".
std::string core_message() {
    std::string text = vemo_get_error_string();
    while (!text.empty() && (text.back() == '\n' || text.back() == '\r')) text.pop_back();
    return text.empty() ? "(none)" : text;
}

// "0x4000", "$4000" (hexadecimal) or "16384" (decimal).
bool parse_address(const std::string& text, uint32_t& address) {
    std::string digits = text;
    int base = 10;
    if (digits.rfind("0x", 0) == 0 || digits.rfind("0X", 0) == 0) {
        digits = digits.substr(2);
        base = 16;
    } else if (digits.rfind('$', 0) == 0) {
        digits = digits.substr(1);
        base = 16;
    }
    if (digits.empty() || digits.size() > 8) return false;
    for (char c : digits)
        if (!(base == 16 ? std::isxdigit(static_cast<unsigned char>(c)) : std::isdigit(static_cast<unsigned char>(c))))
            return false;
    const unsigned long long value = std::stoull(digits, nullptr, base);
    if (value > 0xFFFFFFFFull) return false;
    address = static_cast<uint32_t>(value);
    return true;
}

// A file the core will read must exist and be readable; the core's own message would only say
// that loading failed.
bool check_readable(const std::string& path, const char* what) {
    std::error_code ec;
    if (std::filesystem::is_directory(path, ec)) {
        std::fprintf(stderr, "vemo-run: %s '%s' is a directory, not a file\n", what, path.c_str());
        return false;
    }
    FILE* file = std::fopen(path.c_str(), "rb");
    if (!file) {
        std::fprintf(stderr, "vemo-run: cannot read %s '%s': %s\n", what, path.c_str(), std::strerror(errno));
        return false;
    }
    std::fclose(file);
    return true;
}

// The config's path fields hold 1023 characters and the terminating zero.
bool copy_path(char (&field)[1024], const std::string& path, const char* what) {
    if (path.size() >= sizeof field) {
        std::fprintf(stderr, "vemo-run: the path of the %s is longer than %zu characters\n", what,
                     sizeof field - 1);
        return false;
    }
    std::memcpy(field, path.c_str(), path.size() + 1);
    return true;
}

bool fill_config(const run_options& o, vemo_config& config) {
    config = vemo_config{};
    const bool program_mode = !o.program.empty();
    const std::string& image = program_mode ? o.program : o.cartridge;
    if (!check_readable(image, program_mode ? "program image" : "cartridge image")) return false;
    if (!copy_path(config.rom_path, image, program_mode ? "program image" : "cartridge image")) return false;

    if (program_mode) {
        uint32_t address = DEFAULT_LOAD_ADDRESS;
        if (!o.load_address_text.empty() && !parse_address(o.load_address_text, address)) {
            std::fprintf(stderr, "vemo-run: --load-address '%s' is not an address (use 0x4000 or 16384)\n",
                         o.load_address_text.c_str());
            return false;
        }
        config.load_program = 1;
        config.load_address = static_cast<int32_t>(address);
    }
    if (!o.boot_rom.empty()) {
        if (!check_readable(o.boot_rom, "boot ROM image")) return false;
        if (!copy_path(config.boot_rom_path, o.boot_rom, "boot ROM image")) return false;
        config.use_boot_rom = 1;
    }
    // A missing EEPROM file is normal on a first run (the console starts with a blank EEPROM and
    // the file is created when the program saves); one that exists must be readable.
    if (!o.eeprom.empty()) {
        if (std::filesystem::exists(o.eeprom) && !check_readable(o.eeprom, "EEPROM file")) return false;
        if (!copy_path(config.eeprom_path, o.eeprom, "EEPROM file")) return false;
    }
    config.audio_enable = o.audio ? 1 : 0;
    config.timer_ticks = o.timer_ticks ? 1 : 0;
    config.dsp_always_run = o.dsp_always_run ? 1 : 0;
    return true;
}

bool save_frame(const std::string& path, rgb_picture& picture) {
    vemo_frame_info info{};
    vemo_get_frame_info(&info);
    picture_from_frame(info, picture);
    std::string error;
    if (!write_png(path, picture, error)) {
        std::fprintf(stderr, "vemo-run: cannot write '%s': %s\n", path.c_str(), error.c_str());
        return false;
    }
    return true;
}

std::string series_path(const std::string& dir, long frame) {
    char name[32];
    std::snprintf(name, sizeof name, "frame-%06ld.png", frame);
    return (std::filesystem::path(dir) / name).string();
}

int run(const run_options& o) {
    vemo_config config;
    if (!fill_config(o, config)) return EXIT_BAD_INPUT;
    if (!o.png_dir.empty()) {
        std::error_code ec;
        std::filesystem::create_directories(o.png_dir, ec);
        if (ec) {
            std::fprintf(stderr, "vemo-run: cannot create '%s': %s\n", o.png_dir.c_str(), ec.message().c_str());
            return EXIT_BAD_INPUT;
        }
    }

    if (!vemo_init(&config)) {
        std::fprintf(stderr, "vemo-run: the core did not start: %s\n", core_message().c_str());
        vemo_shutdown();
        return EXIT_RUN_FAILED;
    }

    // No one holds the controller.
    const vemo_joypad released{};
    rgb_picture picture;
    int status = EXIT_OK;
    long frames_run = 0;
    const auto start = std::chrono::steady_clock::now();
    for (long frame = 1; frame <= o.frames; ++frame) {
        vemo_set_joypad_state(0, &released);
        if (!vemo_run_frame()) {
            std::fprintf(stderr, "vemo-run: frame %ld stopped early: %s\n", frame, core_message().c_str());
            status = EXIT_RUN_FAILED;
            break;
        }
        frames_run = frame;
        if (!o.png_dir.empty() && frame % o.every == 0 &&
            !save_frame(series_path(o.png_dir, frame), picture)) {
            status = EXIT_RUN_FAILED;
            break;
        }
    }
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();

    // The last frame, complete or not: a picture of where a program stopped helps find why.
    if (!o.png.empty() && !save_frame(o.png, picture)) status = EXIT_RUN_FAILED;

    std::printf("frames run: %ld of %ld\n", frames_run, o.frames);
    std::printf("wall time: %.3f s\n", seconds);
    std::printf("frames per second: %.1f\n", seconds > 0 ? frames_run / seconds : 0.0);
    std::printf("core's last message: %s\n", core_message().c_str());
    vemo_shutdown();
    return status;
}

}  // namespace

int main(int argc, char** argv) {
    run_options o;
    CLI::App app{
        "Runs a console program headless through vemocore, for a number of frames, and prints\n"
        "frames run, wall time, frames per second and the core's last message."};
    app.footer(
        "Pictures: each row is cropped to its displayed width; the picture has the frame-buffer\n"
        "rows up to the last one the Object Processor drew.\n"
        "Exit status: 0 all frames ran; 1 the core did not start, a frame stopped early or a\n"
        "picture could not be written; 2 bad arguments or a missing or unreadable file.");

    auto* cartridge = app.add_option("GAME", o.cartridge, "Cartridge image (.j64) to run");
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
    app.add_option("--frames", o.frames, "Frames to run (default 60, one second of console time)")
        ->type_name("N")
        ->check(CLI::NonNegativeNumber);
    auto* audio = app.add_flag("--audio", o.audio, "Enable audio: sample ticks, DSP interrupts, a DSP slice per line");
    app.add_flag("--timer-ticks", o.timer_ticks, "Let the sound chip's two timers interrupt the DSP")
        ->needs(audio);
    app.add_flag("--dsp-always-run", o.dsp_always_run, "Run the DSP on every line even without --audio");
    app.add_option("--png", o.png, "Write the last frame's picture to this PNG file")->type_name("FILE");
    auto* png_dir = app.add_option("--png-dir", o.png_dir, "Write a numbered picture series (frame-NNNNNN.png) here")
                        ->type_name("DIR");
    app.add_option("--every", o.every, "With --png-dir: save every K-th frame (default 1)")
        ->type_name("K")
        ->check(CLI::PositiveNumber)
        ->needs(png_dir);

    try {
        app.parse(argc, argv);
    } catch (const CLI::CallForHelp& e) {
        return app.exit(e);
    } catch (const CLI::ParseError& e) {
        app.exit(e);
        return EXIT_BAD_INPUT;
    }
    if (o.cartridge.empty() && o.program.empty()) {
        std::fprintf(stderr, "vemo-run: give a cartridge image or --program FILE (see --help)\n");
        return EXIT_BAD_INPUT;
    }
    return run(o);
}
