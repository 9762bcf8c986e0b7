// Fuzz target: the GPU's and the DSP's control blocks written and read with fuzzed values, their
// local RAM holding fuzzed programs, then a frame's first lines run with both processors. The
// machine starts once; each input begins from the machine as a start leaves it
// (fuzz::reset_machine), so that it plays the same way whatever ran before it.
// Most inputs run the first eighth of a frame (about 54,000 cycles of each processor), which
// leaves the fuzzer's time to new programs rather than to old ones that loop all frame long;
// an input with bits 5-7 of its switches set runs the whole frame, for the timer and audio
// ticks that come only a few times a frame. A blit the processors start may touch BLIT_PIXELS
// pixels, as in the Blitter target.
// Input: byte 0 holds the switches (bit 0 audio, bit 1 timer ticks, bit 2 DSP always runs, bit 3
// start the GPU at 0xF03000, bit 4 start the DSP at 0xF1B000, bits 5-7 the whole frame); byte
// 1 the number n of control accesses; then n accesses of 6 bytes (kind: bit 0 DSP, bit 1 read;
// the register's offset in its block; four value bytes, big-endian); the rest is split between
// GPU and DSP local RAM.
#include <algorithm>
#include <cstdint>
#include <cstring>

#include "core/bus.h"
#include "core/host.h"
#include "core/memory.h"
#include "core/scheduler.h"
#include "fuzz_support.h"
#include "risc/dsp.h"
#include "risc/gpu.h"

namespace {

constexpr size_t ACCESS = 6;

void control_access(const uint8_t* a) {
    const uint32_t address = ((a[0] & 1) ? D_FLAGS : G_FLAGS) + (a[1] & 0x1C);
    const uint32_t value = uint32_t(a[2]) << 24 | uint32_t(a[3]) << 16 | uint32_t(a[4]) << 8 | a[5];
    if (a[0] & 2)
        bus_read32(address);
    else
        bus_write32(address, value);
}

// Local RAM as the processors read it: big-endian bytes in the word-swapped order.
void load_local(uint8_t* ram, size_t capacity, const uint8_t* code, size_t size) {
    std::memset(ram, 0, capacity);
    size = std::min(size, capacity);
    std::memcpy(ram, code, size);
    swap_bytes(ram, static_cast<int32_t>(size & ~size_t{1}));
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) { return fuzz::start_idle_machine(); }

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 2) return 0;
    const uint8_t switches = data[0];
    const size_t accesses = data[1];
    if (size < 2 + ACCESS * accesses) return 0;
    fuzz::reset_machine();
    core_config.audio_enable = switches & 1;
    core_config.timer_ticks = (switches >> 1) & 1;
    core_config.dsp_always_run = (switches >> 2) & 1;

    const uint8_t* code = data + 2 + ACCESS * accesses;
    const size_t code_size = size - 2 - ACCESS * accesses;
    load_local(gpu_ram, GPU_RAM_SIZE, code, code_size / 2);
    load_local(dsp_ram, DSP_RAM_SIZE, code + code_size / 2, code_size - code_size / 2);
    for (size_t n = 0; n < accesses; ++n) control_access(data + 2 + ACCESS * n);
    if (switches & 8) {
        bus_write32(G_PC, GPU_RAM_BASE);
        bus_write32(G_CTRL, 1);
    }
    if (switches & 16) {
        bus_write32(D_PC, DSP_RAM_BASE);
        bus_write32(D_CTRL, 1);
    }
    const int lines = (switches >> 5) == 7 ? LINES_PER_FRAME : fuzz::SHORT_FRAME;
    fuzz::timed_frame([&] { return fuzz::run_lines(lines); });
    return 0;
}
