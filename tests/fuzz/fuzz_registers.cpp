// Fuzz target: every register window written and read with fuzzed values, then a frame run. The
// machine starts once; each input begins from the machine as a start leaves it
// (fuzz::reset_machine), so that it plays the same way whatever ran before it.
// Most inputs run the first eighth of a frame: what a register write does mostly shows at once,
// and a frame's fixed cost would otherwise take most of the fuzzer's time. An input with bits
// 2-4 of its switches set runs the whole frame, for the Object Processor's lines further down.
// A blit, whether the accesses or a processor start it, may touch BLIT_PIXELS pixels.
// Input: byte 0 holds the switches (bit 0 audio, bit 1 timer ticks, bits 2-4 the whole frame);
// then accesses of 8 bytes: a kind byte (bits 0-1 width 8/16/32, bit 2 read, bits 3-4 window:
// graphics chip, sound chip, CD-ROM unit, anywhere), three address bytes and four value bytes,
// big-endian.
#include <cstdint>

#include "core/bus.h"
#include "core/host.h"
#include "core/scheduler.h"
#include "fuzz_support.h"

namespace {

constexpr size_t ACCESS = 8;
constexpr size_t MAX_ACCESSES = 4096;

uint32_t address_in_window(uint8_t kind, uint32_t offset) {
    switch ((kind >> 3) & 3) {
        case 0: return 0xF00000 | (offset & 0xFFFF);
        case 1: return 0xF10000 | (offset & 0xFFFF);
        case 2: return 0xDFFF00 | (offset & 0xFF);
        default: return offset;
    }
}

void access(const uint8_t* a) {
    const uint8_t kind = a[0];
    const uint32_t address = address_in_window(kind, uint32_t(a[1]) << 16 | uint32_t(a[2]) << 8 | a[3]);
    const uint32_t value = uint32_t(a[4]) << 24 | uint32_t(a[5]) << 16 | uint32_t(a[6]) << 8 | a[7];
    const bool read = kind & 4;
    switch (kind & 3) {
        case 0:
            if (read) bus_read8(address);
            else bus_write8(address, static_cast<uint8_t>(value));
            break;
        case 1:
            if (read) bus_read16(address & ~1u);
            else bus_write16(address & ~1u, static_cast<uint16_t>(value));
            break;
        default:
            if (read) bus_read32(address & ~1u);
            else bus_write32(address & ~1u, value);
            break;
    }
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) { return fuzz::start_idle_machine(); }

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 1 || size > 1 + ACCESS * MAX_ACCESSES) return 0;
    fuzz::reset_machine();
    core_config.audio_enable = data[0] & 1;
    core_config.timer_ticks = (data[0] >> 1) & 1;
    for (size_t at = 1; at + ACCESS <= size; at += ACCESS) access(data + at);
    const int lines = ((data[0] >> 2) & 7) == 7 ? LINES_PER_FRAME : fuzz::SHORT_FRAME;
    fuzz::timed_frame([&] { return fuzz::run_lines(lines); });
    return 0;
}
