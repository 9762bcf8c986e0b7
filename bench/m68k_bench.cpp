// 68000 throughput on this machine's memory map: emulated instructions and cycles per second of
// a mixed loop (register arithmetic, memory operands through the bus, taken and untaken
// branches), run in the frame scheduler's slices of 60 cycles.
#include <benchmark/benchmark.h>

#include <initializer_list>

#include "core/memory.h"
#include "m68k/m68k.h"

namespace {

constexpr uint32_t CODE = 0x4000;
constexpr uint32_t TABLE = 0x8000;  // 16 longs walked by (A0)+
constexpr uint32_t OUTPUT = 0x9000;

// loop: MOVE.L (A0)+,D1     ADD.L D1,D0      EOR.W D0,D2      LSL.L #2,D3
//       ADDQ.L #1,D3        MOVE.W D0,(A1)   CMPA.L A2,A0     BNE.S skip
//       LEA -64(A0),A0      (once every 16 iterations)
// skip: ADDQ.L #1,D7        BRA.S loop
constexpr uint16_t LOOP[] = {0x2218, 0xD081, 0xB142, 0xE58B, 0x5283, 0x3280, 0xB1CA,
                             0x6604, 0x41E8, 0xFFC0, 0x5287, 0x60E8};

bool prepare() {
    if (!main_ram && !memory_allocate()) return false;
    ws_write32(main_ram, 0, 0x001FFFFC);
    ws_write32(main_ram, 4, CODE);
    uint32_t at = CODE;
    for (uint16_t w : LOOP) {
        ws_write16(main_ram, at, w);
        at += 2;
    }
    for (uint32_t i = 0; i < 16; ++i) ws_write32(main_ram, TABLE + 4 * i, 0x01010101u * i);
    if (!m68k_setup()) return false;
    m68k_context.a[0] = TABLE;
    m68k_context.a[1] = OUTPUT;
    m68k_context.a[2] = TABLE + 64;
    return true;
}

void BM_MixedLoopInFrameSlices(benchmark::State& state) {
    if (!prepare()) {
        state.SkipWithError("cannot set up the 68000");
        return;
    }
    int64_t cycles = 0;
    for (auto _ : state) {
        for (int slice = 0; slice < 525 * 7; ++slice) {
            m68k_execute(60);
            cycles += m68k_context.cycles_requested - m68k_context.cycles_left;
        }
    }
    // D7 counts loop iterations: ten instructions each, plus the LEA every 16th.
    const double iterations = m68k_context.d[7];
    const double instructions = iterations * 10 + iterations / 16;
    state.counters["instructions_per_s"] = benchmark::Counter(instructions, benchmark::Counter::kIsRate);
    state.counters["cycles_per_s"] = benchmark::Counter(static_cast<double>(cycles), benchmark::Counter::kIsRate);
    state.counters["frames"] = static_cast<double>(state.iterations());
}
BENCHMARK(BM_MixedLoopInFrameSlices)->Unit(benchmark::kMillisecond);

}  // namespace
