// Fuzz target: the Blitter's register block loaded with fuzzed values and a fuzzed command, the
// blit run inside the write of B_CMD as a program's write runs it. The machine starts once; each
// input begins from the machine as a start leaves it (fuzz::reset_machine).
// Each blit may touch BLIT_PIXELS pixels, as if the frame's pixel allowance were nearly used
// up: a blit is then as cheap as its paths are interesting, and the allowance's cut, in the
// middle of a row, is taken often. What the whole allowance costs is measured by the unit tests.
// Input: the 39 longs of the block from A1_BASE on (B_CMD's long is the command, written last),
// big-endian; then bytes placed in RAM at 0x10000 for the blit to read.
#include <algorithm>
#include <cstdint>
#include <cstring>

#include "blitter/blitter.h"
#include "core/bus.h"
#include "core/memory.h"
#include "fuzz_support.h"

namespace {

constexpr size_t BLOCK = BLITTER_LONGS * 4;
constexpr uint32_t DATA = 0x10000;
constexpr size_t MAX_DATA = 64 * 1024;

uint32_t long_at(const uint8_t* p) { return uint32_t(p[0]) << 24 | uint32_t(p[1]) << 16 | uint32_t(p[2]) << 8 | p[3]; }

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) { return fuzz::start_idle_machine(); }

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < BLOCK || size > BLOCK + MAX_DATA) return 0;
    fuzz::reset_machine();
    std::memcpy(main_ram + DATA, data + BLOCK, size - BLOCK);
    swap_bytes(main_ram + DATA, static_cast<int32_t>((size - BLOCK) & ~size_t{1}));
    for (uint32_t a = BLITTER_BASE; a < BLITTER_END; a += 4)
        if (a != B_CMD) bus_write32(a, long_at(data + (a - BLITTER_BASE)));
    fuzz::timed_frame([&] {
        bus_write32(B_CMD, long_at(data + (B_CMD - BLITTER_BASE)));
        return 1;
    });
    return 0;
}
