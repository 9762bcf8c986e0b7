// vemo-run: runs a console program headless for a number of frames through the core's public
// interface, optionally saving pictures, and prints a short summary.
#include <CLI/CLI.hpp>

#include <cerrno>
#include <charconv>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <string>

#include "picture.h"
#include "png_file.h"
#include "summary.h"
#include "vemocore.h"

namespace {

// Exit codes.
constexpr int EXIT_OK = 0;
constexpr int EXIT_RUN_FAILED = 1;  // the core did not start, a frame stopped early, a PNG failed
constexpr int EXIT_BAD_INPUT = 2;   // bad command line, missing or unreadable file

// Console programs are conventionally loaded at 0x4000, just above the vector table.
constexpr uint32_t DEFAULT_LOAD_ADDRESS = 0x4000;
constexpr unsigned long long MAIN_RAM_BYTES = 0x200000;
// A run's frames: ten million are 46 hours of console time.
constexpr long MAX_FRAMES = 10'000'000;

// Where the 68000 can find code: RAM, the cartridge, the boot ROM.
bool holds_code(uint32_t pc) {
    const uint32_t a = pc & 0xFFFFFF;
    return a < 0x200000 || (a >= 0x800000 && a < 0xE20000);
}

// A save failed when the core's message text begins with the failure, which stays there until a
// later save succeeds.
constexpr char SAVE_FAILED[] = "Couldn't save eeprom file";

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
};

// The core's message without its trailing line feed, or "(none)".
std::string core_message() {
    std::string text = vemo_get_error_string();
    while (!text.empty() && (text.back() == '\n' || text.back() == '\r')) text.pop_back();
    return text.empty() ? "(none)" : text;
}

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

// A load address must be a number inside the 2 MB of RAM.
bool parse_load_address(const std::string& text, uint32_t& address) {
    unsigned long long value = 0;
    if (!parse_number(text, value)) {
        std::fprintf(stderr, "vemo-run: --load-address '%s' is not an address (use 0x4000, $4000 or 16384)\n",
                     text.c_str());
        return false;
    }
    if (value >= MAIN_RAM_BYTES) {
        std::fprintf(stderr,
                     "vemo-run: --load-address '%s' lies outside the 2 MB of RAM: give an address from 0 to "
                     "0x1FFFFF (2097151)\n", text.c_str());
        return false;
    }
    address = static_cast<uint32_t>(value);
    return true;
}

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

// A file the core will read must exist, be a regular file (a FIFO would hold the run up) and be
// readable; the core's own message would only say that loading failed.
bool check_readable(const std::string& path, const char* what) {
    std::error_code ec;
    const auto status = std::filesystem::status(path, ec);
    if (!ec && status.type() != std::filesystem::file_type::regular) {
        const auto type = status.type();
        const char* kind = type == std::filesystem::file_type::directory ? "a directory"
                           : type == std::filesystem::file_type::fifo    ? "a FIFO"
                           : type == std::filesystem::file_type::character || type == std::filesystem::file_type::block
                               ? "a device"
                               : "not a file";
        std::fprintf(stderr, "vemo-run: %s '%s' is %s, not a regular file\n", what, path.c_str(), kind);
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
        if (!o.load_address_text.empty() && !parse_load_address(o.load_address_text, address)) return false;
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

// Troubles a run has without any frame stopping early: a 68000 that stopped where no code can
// be (it runs no more), and an EEPROM save that failed. True when there was one.
bool report_troubles(long stopped_in) {
    bool trouble = false;
    if (stopped_in) {
        vemo_frame_info info;
        vemo_get_frame_info(&info);
        std::fprintf(stderr,
                     "vemo-run: the 68000 stopped at %08X in frame %ld, where no code can be (code runs from "
                     "RAM 000000-1FFFFF, the cartridge 800000-DFFFFF or the boot ROM E00000-E1FFFF)\n",
                     info.m68k_pc & 0xFFFFFF, stopped_in);
        trouble = true;
    }
    const std::string message = vemo_get_error_string();
    if (message.rfind(SAVE_FAILED, 0) == 0) {
        std::fprintf(stderr, "vemo-run: the program's EEPROM save failed: %s\n",
                     message.substr(0, message.find('\n')).c_str());
        trouble = true;
    }
    return trouble;
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
    if (vemo_get_error_string()[0] != '\0')
        std::fprintf(stderr, "vemo-run: the core says at start: %s\n", core_message().c_str());

    // No one holds the controller.
    const vemo_joypad released{};
    rgb_picture picture;
    int status = EXIT_OK;
    long frames_run = 0;
    long stopped_in = 0;  // the first frame after which the 68000 was where no code can be
    const auto start = std::chrono::steady_clock::now();
    for (long frame = 1; frame <= o.frames; ++frame) {
        vemo_set_joypad_state(0, &released);
        if (!vemo_run_frame()) {
            std::fprintf(stderr, "vemo-run: frame %ld stopped early: %s\n", frame, core_message().c_str());
            status = EXIT_RUN_FAILED;
            break;
        }
        frames_run = frame;
        vemo_frame_info info;
        vemo_get_frame_info(&info);
        if (!stopped_in && !holds_code(info.m68k_pc)) stopped_in = frame;
        if (!o.png_dir.empty() && frame % o.every == 0 &&
            !save_frame(series_path(o.png_dir, frame), picture)) {
            status = EXIT_RUN_FAILED;
            break;
        }
    }
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();

    // The last frame, complete or not: a picture of where a program stopped helps find why.
    if (!o.png.empty() && !save_frame(o.png, picture)) status = EXIT_RUN_FAILED;

    if (report_troubles(stopped_in)) status = EXIT_RUN_FAILED;
    std::printf("frames run: %ld of %ld\n", frames_run, o.frames);
    std::printf("wall time: %.3f s\n", seconds);
    std::printf("frames per second: %s\n", frames_per_second_text(frames_run, seconds).c_str());
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
        "Exit status: 0 all frames ran; 1 the core did not start, a frame stopped early, the 68000\n"
        "stopped where no code can be, an EEPROM save failed or a picture could not be written;\n"
        "2 bad arguments or a missing, unreadable or irregular file.");

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
    app.add_option("--frames", o.frames_text, "Frames to run (default 60, one second of console time; at most 10000000)")
        ->type_name("N");
    auto* audio = app.add_flag("--audio", o.audio, "Enable audio: sample ticks, DSP interrupts, a DSP slice per line");
    app.add_flag("--timer-ticks", o.timer_ticks, "Let the sound chip's two timers interrupt the DSP")
        ->needs(audio);
    app.add_flag("--dsp-always-run", o.dsp_always_run, "Run the DSP on every line even without --audio");
    app.add_option("--png", o.png, "Write the last frame's picture to this PNG file")->type_name("FILE");
    auto* png_dir = app.add_option("--png-dir", o.png_dir, "Write a numbered picture series (frame-NNNNNN.png) here")
                        ->type_name("DIR");
    app.add_option("--every", o.every_text, "With --png-dir: save every K-th frame (default 1)")
        ->type_name("K")
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
    if (!parse_count(o.frames_text, "--frames", 0, MAX_FRAMES, "frames to run; 10000000 are 46 hours of console time",
                     o.frames) ||
        !parse_count(o.every_text, "--every", 1, MAX_FRAMES, "1 saves every frame, 2 every second one", o.every))
        return EXIT_BAD_INPUT;
    return run(o);
}
