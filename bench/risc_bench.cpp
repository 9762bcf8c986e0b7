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
#include "vemocore.h"

namespace {

constexpr uint16_t ins(unsigned opcode, unsigned first, unsigned second) {
    return static_cast<uint16_t>(opcode << 10 | (first & 31) << 5 | (second & 31));
}
constexpr unsigned ADD = 0, ADDQ = 2, ADDQT = 3, SUB = 4, OR = 10, XOR = 11, IMULTN = 18, RESMAC = 19,
                   IMACN = 20, SHRQ = 25, SHARQ = 27, CMPQ = 31, SAT16S = 33, IMULT = 17, LOAD_R14 = 43,
                   STORE = 47, STORE_R15 = 50, JR = 53, ADDQMOD = 63, MOVEI = 38, LOAD = 41, BCLR = 15,
                   BSET = 14, JUMP = 52;

// Each loop is 11 instructions, the last two a jr back to the start and its delay slot; R10
// counts the iterations.
constexpr int LOOP_INSTRUCTIONS = 11;
constexpr unsigned JR_BACK = 32 - 10;  // from the tenth instruction to the first

// load (R14+1),R1  add R1,R2  addq #3,R3  imult R3,R4  xor R2,R4  shrq #2,R4
// store R4,(R15+2)  cmpq #0,R5  addqt #1,R10  jr T,loop  sub R4,R6
const std::vector<uint16_t> GPU_LOOP = {
    ins(LOAD_R14, 1, 1), ins(ADD, 1, 2), ins(ADDQ, 3, 3), ins(IMULT, 3, 4), ins(XOR, 2, 4), ins(SHRQ, 2, 4),
    ins(STORE_R15, 2, 4), ins(CMPQ, 0, 5), ins(ADDQT, 1, 10), ins(JR, JR_BACK, 0), ins(SUB, 4, 6)};

// load (R14+1),R1  imultn R1,R2  imacn R3,R4  resmac R5  sat16s R5  addqmod #4,R6
// sharq #1,R5  store R5,(R15)  addqt #1,R10  jr T,loop  or R5,R7
const std::vector<uint16_t> DSP_LOOP = {
    ins(LOAD_R14, 1, 1), ins(IMULTN, 1, 2), ins(IMACN, 3, 4), ins(RESMAC, 0, 5), ins(SAT16S, 0, 5),
    ins(ADDQMOD, 4, 6), ins(SHARQ, 1, 5), ins(STORE, 15, 5), ins(ADDQT, 1, 10), ins(JR, JR_BACK, 0),
    ins(OR, 5, 7)};

void put(uint32_t address, const std::vector<uint16_t>& words) {
    for (uint16_t w : words) {
        bus_write16(address, w);
        address += 2;
    }
}

void start_gpu_loop() {
    put(GPU_RAM_BASE + 0x100, GPU_LOOP);
    gpu_state.regs[14] = GPU_RAM_BASE + 0x800;  // a table in local RAM
    gpu_state.regs[15] = 0x8000;                 // results in main RAM
    gpu_state.regs[1] = 0x1234;
    gpu_state.pc = GPU_RAM_BASE + 0x100;
    gpu_state.running = 1;
}

void start_dsp_loop() {
    put(DSP_RAM_BASE + 0x100, DSP_LOOP);
    dsp_state.regs[14] = DSP_RAM_BASE + 0x800;
    dsp_state.regs[15] = DSP_RAM_BASE + 0x900;
    dsp_state.regs[3] = 0x7FF;
    dsp_state.regs[4] = 0x123;
    dsp_state.modulo = 0xFFFFFF00;
    dsp_state.pc = DSP_RAM_BASE + 0x100;
    dsp_state.running = 1;
}

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
