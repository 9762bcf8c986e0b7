// Frames per second of the bare scheduler: a cartridge whose 68000 spins in a tight loop with
// the video-line interrupt enabled and nothing else running, so a frame costs the 525 lines,
// their 3675 68000 slices and one interrupt; and the frames of the worst object lists.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "core/memory.h"
#include "core/video.h"
#include "vemocore.h"

namespace {

// Runs at 0x802000:
//   start:   move.w  #$2700,sr
//            lea     handler(pc),a0
//            move.l  a0,$100.w            ; level-2 autovector
//            move.w  #100,$F0004E         ; VI
//            move.w  #1,$F000E0           ; enable the video-line interrupt
//            move.w  #$2000,sr
//   idle:    bra.s   idle
//   handler: addq.l  #1,$1000.w
//            move.w  #$0101,$F000E0       ; acknowledge
//            rte
const std::vector<uint8_t> TIGHT_LOOP = {
    0x46, 0xFC, 0x27, 0x00, 0x41, 0xFA, 0x00, 0x1C, 0x21, 0xC8, 0x01, 0x00, 0x33, 0xFC, 0x00, 0x64,
    0x00, 0xF0, 0x00, 0x4E, 0x33, 0xFC, 0x00, 0x01, 0x00, 0xF0, 0x00, 0xE0, 0x46, 0xFC, 0x20, 0x00,
    0x60, 0xFE, 0x52, 0xB8, 0x10, 0x00, 0x33, 0xFC, 0x01, 0x01, 0x00, 0xF0, 0x00, 0xE0, 0x4E, 0x73,
};
constexpr size_t CART_PROGRAM_OFFSET = 0x2000;

// Starts the idle cartridge; false (with the benchmark skipped) when it does not start.
bool start_idle_machine(benchmark::State& state, const std::filesystem::path& dir) {
    std::filesystem::create_directories(dir);
    const std::filesystem::path rom = dir / "idle.j64";
    {
        std::vector<uint8_t> image(CART_PROGRAM_OFFSET, 0);
        image.insert(image.end(), TIGHT_LOOP.begin(), TIGHT_LOOP.end());
        std::ofstream(rom, std::ios::binary).write(reinterpret_cast<const char*>(image.data()),
                                                   static_cast<std::streamsize>(image.size()));
    }
    vemo_config config{};
    std::snprintf(config.rom_path, sizeof config.rom_path, "%s", rom.c_str());
    std::snprintf(config.eeprom_path, sizeof config.eeprom_path, "%s", (dir / "none.eep").c_str());
    if (vemo_init(&config) == 1) return true;
    state.SkipWithError(vemo_get_error_string());
    vemo_shutdown();
    std::filesystem::remove_all(dir);
    return false;
}

std::filesystem::path scratch(const char* name) {
    return std::filesystem::temp_directory_path() /
           (std::string(name) + "_" + std::to_string(getpid()));
}

void run_frames(benchmark::State& state) {
    for (auto _ : state) {
        if (vemo_run_frame() != 1) {
            state.SkipWithError(vemo_get_error_string());
            break;
        }
    }
    state.counters["frames_per_second"] = benchmark::Counter(static_cast<double>(state.iterations()),
                                                             benchmark::Counter::kIsRate);
}

void BM_IdleFrame(benchmark::State& state) {
    const std::filesystem::path dir = scratch("vemocore_frame_bench");
    if (!start_idle_machine(state, dir)) return;
    const uint32_t count_before = ws_read32(main_ram, 0x1000);
    run_frames(state);
    // The handler's frame count proves the interrupt ran every frame.
    const uint32_t frames = ws_read32(main_ram, 0x1000) - count_before;
    state.counters["interrupts_per_frame"] =
        static_cast<double>(frames) / static_cast<double>(state.iterations());
    vemo_shutdown();
    std::filesystem::remove_all(dir);
}
BENCHMARK(BM_IdleFrame)->Unit(benchmark::kMicrosecond);

// The worst object lists a program can build, each shown on all 256 rows of a 320-pixel display
// (1280 clocks at 4 per pixel) while the 68000 idles. The per-line bound on the Object
// Processor's work keeps each frame within ten to twenty times the idle frame; unbounded, the
// first one took 20 s a frame.
constexpr uint32_t LIST = 0x10000, DATA = 0x100000;
enum worst_list {
    SCALED_CHAIN,      // 2047 scaled objects 1023 phrases wide, shrunk 32 times, then a stop
    SCALED_SELF_LINK,  // one such object linking to itself
    BITMAP_SELF_LINK,  // full-width 16-bit bitmaps: plain, transparent, read-modify-write, 1-bit
    TRANS_SELF_LINK,
    RMW_SELF_LINK,
    ONE_BIT_SELF_LINK,
    ENLARGED_SELF_LINK,  // a 40-pixel scaled object enlarged 8 times
    BRANCH_RUN,          // branches never taken, on through RAM
    HIDDEN_BITMAPS,      // a cycle of bitmaps whose rows lie below the display
};

void put_phrase(uint32_t address, uint64_t v) {
    ws_write32(main_ram, address, static_cast<uint32_t>(v >> 32));
    ws_write32(main_ram, address + 4, static_cast<uint32_t>(v));
}

struct object {
    int type;  // 0 bitmap, 1 scaled bitmap
    uint32_t iwidth, depth = 4, flags = 0, hscale = 1, ypos = 0;
};

void put_object(uint32_t address, const object& o, uint32_t link) {
    put_phrase(address, uint64_t(o.type) | uint64_t(o.ypos) << 3 | uint64_t(1023) << 14 |
                            uint64_t(link / 8) << 24 | uint64_t(DATA / 8) << 43);
    put_phrase(address + 8, uint64_t(o.depth) << 12 | uint64_t(1) << 15 | uint64_t(o.iwidth) << 18 |
                                uint64_t(o.iwidth) << 28 | uint64_t(o.flags) << 45);
    put_phrase(address + 16, uint64_t(o.hscale) | uint64_t(32) << 8);
}

void build_worst_list(worst_list kind) {
    constexpr uint32_t TRANS = 4, RMW = 2;
    switch (kind) {
        case SCALED_CHAIN:
            for (uint32_t n = 0; n < 2047; ++n) put_object(LIST + 32 * n, {1, 1023}, LIST + 32 * (n + 1));
            put_phrase(LIST + 32 * 2047, 4);
            break;
        case SCALED_SELF_LINK: put_object(LIST, {1, 1023}, LIST); break;
        case BITMAP_SELF_LINK: put_object(LIST, {0, 80}, LIST); break;
        case TRANS_SELF_LINK: put_object(LIST, {0, 80, 4, TRANS}, LIST); break;
        case RMW_SELF_LINK: put_object(LIST, {0, 80, 4, RMW}, LIST); break;
        case ONE_BIT_SELF_LINK: put_object(LIST, {0, 5, 0}, LIST); break;
        case ENLARGED_SELF_LINK: put_object(LIST, {1, 10, 4, 0, 255}, LIST); break;
        case BRANCH_RUN:
            for (uint32_t a = LIST; a < MAIN_RAM_SIZE; a += 8) put_phrase(a, 3 | uint64_t(1) << 14);
            break;
        case HIDDEN_BITMAPS:
            for (uint32_t n = 0; n < 4096; ++n)
                put_object(LIST + 16 * n, {0, 80, 4, 0, 1, 2000}, LIST + 16 * ((n + 1) % 4096));
            break;
    }
    video.olp = LIST;
    video.vdb = 40;
    video.vde = 40 + 512;
    video.hdb1 = 0;
    video.hde = 1280;
    video.vmode = 0x0600 | 0x80;  // 4 clocks per pixel, background fill
    video.pixel_divisor = 4;
}

void BM_WorstListFrame(benchmark::State& state) {
    const std::filesystem::path dir = scratch("vemocore_worst_list_bench");
    if (!start_idle_machine(state, dir)) return;
    build_worst_list(static_cast<worst_list>(state.range(0)));
    run_frames(state);
    vemo_shutdown();
    std::filesystem::remove_all(dir);
}
BENCHMARK(BM_WorstListFrame)
    ->ArgName("list")
    ->DenseRange(SCALED_CHAIN, HIDDEN_BITMAPS)
    ->Unit(benchmark::kMicrosecond);

}  // namespace
