// What the fuzz targets share: a scratch directory of the process's own (in memory when the
// host has one), the idle cartridge the chip targets' machine starts with and the reset that
// puts it back between inputs, a frame cut to its first lines with a small blit allowance, and
// the frame-time limit.
//
// A frame, however hostile its input, must take less than FRAME_CPU_LIMIT_MS of CPU time in this
// instrumented build, which runs the core ten to twenty times slower than a Release build; a
// slower one stops the fuzzer with a message, as a crash does, and its input is kept. The
// slowest bounded frames here: a frame of 2^22 pixels blitted on the slowest pixel path takes
// about 450 ms (24 ms in Release), the worst object lists about 20 ms; unbounded, a frame took
// minutes.
#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <string>

#include "blitter/blitter.h"
#include "blitter/blitter_internal.h"
#include "core/cdrom.h"
#include "core/eeprom.h"
#include "core/memory.h"
#include "core/scheduler.h"
#include "core/sound.h"
#include "core/video.h"
#include "m68k/m68k.h"
#include "objproc/objproc.h"
#include "risc/dsp.h"
#include "risc/gpu.h"
#include "vemocore.h"

namespace fuzz {

constexpr double FRAME_CPU_LIMIT_MS = 1000.0;
constexpr size_t CARTRIDGE_HEADER = 0x2000;  // code starts at 0x802000

inline const std::filesystem::path& scratch_dir() {
    static const std::filesystem::path dir = [] {
        const std::filesystem::path base =
            std::filesystem::is_directory("/dev/shm") ? "/dev/shm" : std::filesystem::temp_directory_path();
        auto p = base / ("vemo-fuzz-" + std::to_string(getpid()));
        std::filesystem::create_directories(p);
        std::atexit([] {
            std::error_code ec;
            std::filesystem::remove_all(scratch_dir(), ec);
        });
        return p;
    }();
    return dir;
}

// Writes `zeros` zero bytes (at most CARTRIDGE_HEADER) and then `data` to the file at `path`,
// without a buffer of its own: the cartridge target writes a file for every input.
inline void write_file(const std::string& path, size_t zeros, const uint8_t* data, size_t size) {
    static const uint8_t zero[CARTRIDGE_HEADER] = {};
    const int descriptor = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (descriptor < 0 || zeros > sizeof zero || write(descriptor, zero, zeros) != static_cast<ssize_t>(zeros) ||
        write(descriptor, data, size) != static_cast<ssize_t>(size))
        std::abort();
    close(descriptor);
}

inline std::string scratch_path(const char* name) { return (scratch_dir() / name).string(); }

// A cartridge whose 68000 code is `code` at 0x802000.
inline std::string write_cartridge(const char* name, const uint8_t* code, size_t size) {
    const std::string path = scratch_path(name);
    write_file(path, CARTRIDGE_HEADER, code, size);
    return path;
}

// The machine the register and chip targets start once: a 68000 that sleeps in STOP with its
// interrupts masked, so an idle frame costs next to nothing and those targets stay on their
// chips (the cartridge target covers the 68000), and an EEPROM file in the scratch directory.
inline vemo_config idle_cartridge_config() {
    static const uint8_t idle[] = {0x4E, 0x72, 0x27, 0x00, 0x60, 0xFA};  // stop #$2700; bra.s back
    vemo_config config{};
    std::snprintf(config.rom_path, sizeof config.rom_path, "%s",
                  write_cartridge("idle.j64", idle, sizeof idle).c_str());
    std::snprintf(config.eeprom_path, sizeof config.eeprom_path, "%s", (scratch_dir() / "save.eep").c_str());
    return config;
}

// RAM as a start leaves it: 0xFF but for the reset vectors in its first 8 bytes. save_start_ram
// keeps the vectors (and stops when the rest is not the fill); restore_start_ram puts it back,
// about twice as fast as copying a saved image of 2 MB.
inline uint8_t start_vectors[8];

inline void save_start_ram() {
    for (uint32_t i = sizeof start_vectors; i < MAIN_RAM_SIZE; ++i)
        if (main_ram[i] != 0xFF) std::abort();
    std::memcpy(start_vectors, main_ram, sizeof start_vectors);
}

inline void restore_start_ram() {
    std::memset(main_ram, 0xFF, MAIN_RAM_SIZE);
    std::memcpy(main_ram, start_vectors, sizeof start_vectors);
}

// The pixels a fuzzed blit may touch, as if the frame's allowance were nearly used up.
constexpr uint64_t BLIT_PIXELS = 1 << 12;

// The lines the register and RISC targets run for most inputs: the first eighth of a frame.
constexpr int SHORT_FRAME = LINES_PER_FRAME / 8;

// The first `lines` lines of a frame, as vemo_run_frame runs them, but with BLIT_PIXELS for the
// blits the processors start: 1 when they ran, 0 when a processor or the Object Processor
// stopped them.
inline int run_lines(int lines) {
    scheduler_begin_frame();
    blit_frame_pixels_left = BLIT_PIXELS;
    return scheduler_run_lines(lines) ? 1 : 0;
}

// Starts the idle machine once per process and keeps the RAM its start leaves; 0, as
// LLVMFuzzerInitialize returns.
inline int start_idle_machine() {
    const vemo_config config = idle_cartridge_config();
    if (!vemo_init(&config)) std::abort();
    save_start_ram();
    return 0;
}

// The chip targets' machine put back as a start leaves it, but for the images it loaded: the
// chips' registers, the GPU, the DSP and the Blitter reset, local RAM and the CLUT cleared, RAM
// refilled and the 68000 reset, so that an input plays the same way whatever ran before it
// (a GPU an earlier input started would otherwise still run, with that input's registers).
// Blits the input starts before its frame may touch BLIT_PIXELS pixels.
inline void reset_machine() {
    video_reset();
    sound_reset();
    eeprom_reset();
    cdrom_reset();
    op_reset_line_width();
    blitter_reset();
    gpu_init();
    dsp_init();
    std::memset(gpu_ram, 0, GPU_RAM_SIZE);
    std::memset(dsp_ram, 0, DSP_RAM_SIZE);
    std::memset(clut, 0, CLUT_SIZE);
    restore_start_ram();
    m68k_reset();
    blit_frame_pixels_left = BLIT_PIXELS;
}

inline double cpu_ms() {
    timespec t;
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
    return t.tv_sec * 1e3 + t.tv_nsec / 1e6;
}

// Runs `frame` (one frame's work) and stops the fuzzer when it took longer than the limit.
template <typename F>
int timed_frame(F frame) {
    const double start = cpu_ms();
    const int result = frame();
    const double spent = cpu_ms() - start;
    if (spent > FRAME_CPU_LIMIT_MS) {
        std::fprintf(stderr, "vemo fuzz: a frame took %.1f ms of CPU time, more than the %.0f ms limit\n",
                     spent, FRAME_CPU_LIMIT_MS);
        std::abort();
    }
    return result;
}

}  // namespace fuzz
