// Frames per second of the bare scheduler: a cartridge whose 68000 spins in a tight loop with
// the video-line interrupt enabled and nothing else running, so a frame costs the 525 lines,
// their 3675 68000 slices and one interrupt.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "core/memory.h"
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

void BM_IdleFrame(benchmark::State& state) {
    const std::filesystem::path dir =
        std::filesystem::temp_directory_path() / ("vemocore_frame_bench_" + std::to_string(getpid()));
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
    if (vemo_init(&config) != 1) {
        state.SkipWithError(vemo_get_error_string());
        vemo_shutdown();
        std::filesystem::remove_all(dir);
        return;
    }
    const uint32_t count_before = ws_read32(main_ram, 0x1000);
    for (auto _ : state) {
        if (vemo_run_frame() != 1) {
            state.SkipWithError(vemo_get_error_string());
            break;
        }
    }
    // The handler's frame count proves the interrupt ran every frame.
    const uint32_t frames = ws_read32(main_ram, 0x1000) - count_before;
    state.counters["frames_per_second"] = benchmark::Counter(static_cast<double>(state.iterations()),
                                                             benchmark::Counter::kIsRate);
    state.counters["interrupts_per_frame"] =
        static_cast<double>(frames) / static_cast<double>(state.iterations());
    vemo_shutdown();
    std::filesystem::remove_all(dir);
}
BENCHMARK(BM_IdleFrame)->Unit(benchmark::kMicrosecond);

}  // namespace
