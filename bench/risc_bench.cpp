// GPU and DSP throughput: emulated RISC instructions per second of a mixed GPU loop in the
// frame scheduler's GPU slices (120 cycles) and of a mixed DSP loop in its line slices (844
// cycles), and frames per second of the whole machine with the 68000, the GPU and the DSP (on
// its audio interrupts) busy in every slice.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <string>
#include <vector>

#include "core/bus.h"
#include "core/memory.h"
#include "risc/dsp.h"
#include "risc/gpu.h"
#include "risc_loops.h"
#include "vemocore.h"

namespace {

using namespace risc_loops;

void report(benchmark::State& state, uint32_t iterations) {
    state.counters["instructions_per_s"] =
        benchmark::Counter(static_cast<double>(iterations) * LOOP_INSTRUCTIONS, benchmark::Counter::kIsRate);
}

// One frame's GPU slices: 3675 of 120 cycles.
void BM_GpuLoopInFrameSlices(benchmark::State& state) {
    if (!gpu_ram && !memory_allocate()) return state.SkipWithError("no memory");
    gpu_init();
    start_gpu_loop();
    for (auto _ : state)
        for (int slice = 0; slice < 525 * 7; ++slice) gpu_execute(120);
    report(state, gpu_state.regs[10]);
}
BENCHMARK(BM_GpuLoopInFrameSlices)->Unit(benchmark::kMillisecond);

// One frame's DSP slices: 525 of 844 cycles.
void BM_DspLoopInLineSlices(benchmark::State& state) {
    if (!dsp_ram && !memory_allocate()) return state.SkipWithError("no memory");
    dsp_init();
    start_dsp_loop();
    for (auto _ : state)
        for (int line = 0; line < 525; ++line) dsp_execute(844);
    report(state, dsp_state.regs[10]);
}
BENCHMARK(BM_DspLoopInLineSlices)->Unit(benchmark::kMillisecond);

// The 68000 runs a mixed loop in RAM (the 68000 benchmark's), the GPU and the DSP their loops,
// and audio at 20774 Hz interrupts the DSP on 346 lines a frame (its handler only returns).
// 68000 loop at 0x4000: MOVE.L (A0)+,D1  ADD.L D1,D0  EOR.W D0,D2  LSL.L #2,D3  ADDQ.L #1,D3
// MOVE.W D0,(A1)  CMPA.L A2,A0  BNE.S skip  LEA -64(A0),A0  skip: ADDQ.L #1,D7  BRA.S loop,
// after LEA $8000,A0  LEA $9000,A1  LEA $8040,A2.
const std::vector<uint8_t> HOST_PROGRAM = {
    0x41, 0xF9, 0x00, 0x00, 0x80, 0x00, 0x43, 0xF9, 0x00, 0x00, 0x90, 0x00, 0x45, 0xF9, 0x00, 0x00,
    0x80, 0x40, 0x22, 0x18, 0xD0, 0x81, 0xB1, 0x42, 0xE5, 0x8B, 0x52, 0x83, 0x32, 0x80, 0xB1, 0xCA,
    0x66, 0x04, 0x41, 0xE8, 0xFF, 0xC0, 0x52, 0x87, 0x60, 0xE8};

void BM_FrameWithAllProcessorsBusy(benchmark::State& state) {
    const std::filesystem::path path =
        std::filesystem::temp_directory_path() / ("vemocore_risc_bench_" + std::to_string(getpid()) + ".bin");
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(HOST_PROGRAM.data()), static_cast<std::streamsize>(HOST_PROGRAM.size()));
    vemo_config config{};
    std::snprintf(config.rom_path, sizeof config.rom_path, "%s", path.c_str());
    config.load_program = 1;
    config.load_address = 0x4000;
    config.audio_enable = 1;
    const bool started = vemo_init(&config) == 1;
    std::filesystem::remove(path);
    if (!started) return state.SkipWithError(vemo_get_error_string());
    start_gpu_loop();
    start_dsp_loop();
    // Vector 1 returns at once: flags with imask and latch 1 cleared, back to the saved pc + 2.
    put(DSP_RAM_BASE + 16, {ins(MOVEI, 0, 29), static_cast<uint16_t>(D_FLAGS), static_cast<uint16_t>(D_FLAGS >> 16),
                            ins(LOAD, 29, 28), ins(BCLR, 3, 28), ins(BSET, 10, 28), ins(LOAD, 31, 27),
                            ins(ADDQ, 2, 27), ins(ADDQ, 4, 31), ins(JUMP, 27, 0), ins(STORE, 29, 28)});
    bus_write32(0xF1A150, 19);                                                     // SCLK: 20774 Hz
    bus_write32(D_FLAGS, 1u << 5);
    dsp_state.regs[31] = DSP_RAM_BASE + 0x1F00;
    for (auto _ : state)
        if (vemo_run_frame() != 1) return state.SkipWithError(vemo_get_error_string());
    state.counters["frames_per_s"] = benchmark::Counter(static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
    state.counters["risc_instructions_per_s"] = benchmark::Counter(
        static_cast<double>(gpu_state.regs[10] + dsp_state.regs[10]) * LOOP_INSTRUCTIONS, benchmark::Counter::kIsRate);
    vemo_shutdown();
}
BENCHMARK(BM_FrameWithAllProcessorsBusy)->Unit(benchmark::kMillisecond);

}  // namespace
