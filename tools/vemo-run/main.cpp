// vemo-run: runs a console program headless for a number of frames, with scripted input,
// pictures, sound, frame digests, instruction traces and the core's messages, and prints a
// short summary.
//
// It drives the machine through the six public functions; the traces and the message list
// reach into the core's internals, so it links the static library built from the same sources.
#include <cctype>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string>

#include "core_messages.h"
#include "demo_image.h"
#include "frame_hash.h"
#include "input_script.h"
#include "options.h"
#include "picture.h"
#include "png_file.h"
#include "progress.h"
#include "traces.h"
#include "summary.h"
#include "vemocore.h"
#include "wav_file.h"

namespace {

// Console programs are conventionally loaded at 0x4000, just above the vector table.
constexpr uint32_t DEFAULT_LOAD_ADDRESS = 0x4000;
constexpr unsigned long long MAIN_RAM_BYTES = 0x200000;

// Where the 68000 can find code: RAM, the cartridge, the boot ROM.
bool holds_code(uint32_t pc) {
    const uint32_t a = pc & 0xFFFFFF;
    return a < 0x200000 || (a >= 0x800000 && a < 0xE20000);
}

// A save failed when the core's message text begins with the failure, which stays there until a
// later save succeeds.
constexpr char SAVE_FAILED[] = "Couldn't save eeprom file";

// The core's message without its trailing line feed, or "(none)".
std::string core_message() {
    std::string text = vemo_get_error_string();
    while (!text.empty() && (text.back() == '\n' || text.back() == '\r')) text.pop_back();
    return text.empty() ? "(none)" : text;
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

std::string series_path(const std::string& dir, long frame) {
    char name[32];
    std::snprintf(name, sizeof name, "frame-%06ld.png", frame);
    return (std::filesystem::path(dir) / name).string();
}

// What a run writes besides its summary, frame by frame.
struct frame_outputs {
    const run_options& o;
    std::string picture_dir;  // of --png-dir and --png-at
    std::unique_ptr<wav_output> wav;
    size_t next_png_at = 0;
    vemo_frame_info info{};
    rgb_picture picture;
    bool picture_ready = false;

    explicit frame_outputs(const run_options& options) : o(options) {
        picture_dir = !o.png_dir.empty() ? o.png_dir : !o.png_at.empty() ? "." : "";
        if (!o.wav.empty()) wav = std::make_unique<wav_output>(o.wav);
    }

    // The frame just run: its record, and its picture when something needs it.
    const rgb_picture& current_picture() {
        if (!picture_ready) picture_from_frame(info, picture);
        picture_ready = true;
        return picture;
    }
    void refresh() {
        vemo_get_frame_info(&info);
        picture_ready = false;
    }

    bool wants_series_picture(long frame) {
        if (!o.png_at.empty()) {
            if (next_png_at >= o.png_at.size() || o.png_at[next_png_at] != frame) return false;
            ++next_png_at;
            return true;
        }
        return !o.png_dir.empty() && frame % o.every == 0;
    }

    bool save_picture(const std::string& path) {
        std::string error;
        if (write_png(path, current_picture(), error)) return true;
        std::fprintf(stderr, "vemo-run: cannot write '%s': %s\n", path.c_str(), error.c_str());
        return false;
    }

    void print_hash(long frame) { std::printf("frame %ld hash %s\n", frame, frame_hash(info, current_picture()).c_str()); }

    // Everything a finished frame asks for; false when a file could not be written.
    bool frame_done(long frame) {
        refresh();
        if (o.hash == hash_mode::every_frame || (o.hash == hash_mode::last_frame && frame == o.frames))
            print_hash(frame);
        if (wants_series_picture(frame) && !save_picture(series_path(picture_dir, frame))) return false;
        std::string error;
        if (wav && !wav->add_frame(info, frame, error)) {
            std::fprintf(stderr, "vemo-run: %s\n", error.c_str());
            return false;
        }
        return true;
    }

    // After the last frame (complete or not: a picture of where a program stopped helps find why).
    bool run_done() {
        refresh();
        bool ok = true;
        if (!o.png.empty()) ok = save_picture(o.png) && ok;
        std::string notes, error;
        if (wav && !wav->close(notes, error)) {
            std::fprintf(stderr, "vemo-run: %s\n", error.c_str());
            ok = false;
        }
        if (!notes.empty()) std::fprintf(stderr, "vemo-run: --wav: %s\n", notes.c_str());
        return ok;
    }
};

bool prepare_picture_dir(const std::string& dir) {
    if (dir.empty()) return true;
    std::error_code ec;
    std::filesystem::create_directories(dir, ec);
    if (!ec) return true;
    std::fprintf(stderr, "vemo-run: cannot create '%s': %s\n", dir.c_str(), ec.message().c_str());
    return false;
}

// Troubles a run has without any frame stopping early: a 68000 that stopped where no code can
// be (it runs no more), and an EEPROM save that failed. True when there was one.
bool report_troubles(long stopped_in, bool has_save_file) {
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
    // Without --eeprom a program's saves go nowhere, as the help says: that is no failure of the run.
    const std::string message = vemo_get_error_string();
    if (has_save_file && message.rfind(SAVE_FAILED, 0) == 0) {
        std::fprintf(stderr, "vemo-run: the program's EEPROM save failed: %s\n",
                     message.substr(0, message.find('\n')).c_str());
        trouble = true;
    }
    return trouble;
}

void print_summary(const run_options& o, long frames_run, double seconds) {
    std::printf("frames run: %ld of %ld\n", frames_run, o.frames);
    std::printf("wall time: %.3f s\n", seconds);
    std::printf("frames per second: %s\n", frames_per_second_text(frames_run, seconds).c_str());
    if (o.log) core_messages_print(stdout);
    else std::printf("core's last message: %s\n", core_message().c_str());
}

// Runs the frames; returns the exit status.
int run_frames(const run_options& o, const input_script& script, frame_outputs& out) {
    int status = EXIT_OK;
    long frames_run = 0;
    long stopped_in = 0;  // the first frame after which the 68000 was where no code can be
    const auto start = std::chrono::steady_clock::now();
    {
        progress_line progress(o.frames);
        for (long frame = 1; frame <= o.frames; ++frame) {
            core_messages_frame(frame);
            const vemo_joypad pad = joypad_for_frame(script, frame);
            vemo_set_joypad_state(0, &pad);
            if (!vemo_run_frame()) {
                std::fprintf(stderr, "vemo-run: frame %ld stopped early: %s\n", frame, core_message().c_str());
                status = EXIT_RUN_FAILED;
                break;
            }
            frames_run = frame;
            if (!out.frame_done(frame)) {
                status = EXIT_RUN_FAILED;
                break;
            }
            if (!stopped_in && !holds_code(out.info.m68k_pc)) stopped_in = frame;
            progress.frame_done(frame);
        }
    }
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    if (!out.run_done()) status = EXIT_RUN_FAILED;
    if (report_troubles(stopped_in, !o.eeprom.empty())) status = EXIT_RUN_FAILED;
    print_summary(o, frames_run, seconds);
    return status;
}

int run(const run_options& o) {
    vemo_config config;
    if (!fill_config(o, config)) return EXIT_BAD_INPUT;
    input_script script;
    std::string error;
    if (!o.input.empty() && !read_input_script(o.input, script, error)) {
        std::fprintf(stderr, "vemo-run: %s\n", error.c_str());
        return EXIT_BAD_INPUT;
    }
    frame_outputs out(o);
    if (!prepare_picture_dir(out.picture_dir)) return EXIT_BAD_INPUT;

    if (o.log) core_messages_start();
    int status = EXIT_RUN_FAILED;
    if (vemo_init(&config)) {
        if (vemo_get_error_string()[0] != '\0')
            std::fprintf(stderr, "vemo-run: the core says at start: %s\n", core_message().c_str());
        trace_start(o.trace_68k, o.trace_gpu, o.trace_dsp);
        status = run_frames(o, script, out);
        trace_stop();
    } else {
        std::fprintf(stderr, "vemo-run: the core did not start: %s\n", core_message().c_str());
    }
    core_messages_stop();
    vemo_shutdown();
    return status;
}

}  // namespace

int main(int argc, char** argv) {
    run_options o;
    const int status = parse_command_line(argc, argv, o);
    if (status >= 0) return status;
    if (o.demo && (o.cartridge = demo_image_file()).empty()) return EXIT_RUN_FAILED;
    return run(o);
}
