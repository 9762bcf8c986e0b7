// Fuzz target: an object list and the display registers, drawn for one frame. The machine starts
// once; each input writes the registers as a program would, puts its list in RAM and has the
// Object Processor draw every displayed line of a frame, then RAM is restored.
// Input: VMODE, HDB1, HDE, VDB, VDE, BG, OBF (16 bits each, big-endian), OLP (32 bits), then
// the bytes placed in RAM at 0x1000. An OLP with bit 31 clear points into those bytes.
#include <algorithm>
#include <cstdint>
#include <cstring>

#include "core/bus.h"
#include "core/memory.h"
#include "core/scheduler.h"
#include "core/video.h"
#include "fuzz_support.h"
#include "objproc/objproc.h"

namespace {

constexpr size_t HEADER = 18;
constexpr uint32_t LIST_BASE = 0x1000;
constexpr size_t MAX_LIST = 256 * 1024;

uint16_t word_at(const uint8_t* p) { return static_cast<uint16_t>(p[0] << 8 | p[1]); }

// The Object Processor's share of a frame: every even line inside the display range.
int draw_frame() {
    for (int line = 0; line < LINES_PER_FRAME; ++line)
        if ((line & 1) == 0 && line >= video.vdb && line < video.vde && !op_process_line(line)) return 0;
    return 1;
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    fuzz::start_idle_machine();
    for (int k = 0; k < 256; ++k) bus_write16(0xF00400 + 2 * k, static_cast<uint16_t>(k * 0x0101));
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < HEADER || size > HEADER + MAX_LIST) return 0;
    video_reset();
    const uint32_t registers[] = {VMODE, HDB1, HDE, VDB, VDE, BG, OBF};
    for (size_t i = 0; i < std::size(registers); ++i) bus_write16(registers[i], word_at(data + 2 * i));
    const uint32_t olp = static_cast<uint32_t>(word_at(data + 14)) << 16 | word_at(data + 16);
    const size_t list_size = size - HEADER;
    // OLP's halves as a program writes them: the low word at 0xF00020, the high at 0xF00022.
    const uint32_t list = (olp & 0x80000000u) || list_size < 8 ? olp : LIST_BASE + static_cast<uint32_t>(olp % list_size);
    bus_write16(OLP, static_cast<uint16_t>(list));
    bus_write16(OLP + 2, static_cast<uint16_t>(list >> 16));
    std::memcpy(main_ram + LIST_BASE, data + HEADER, list_size);
    swap_bytes(main_ram + LIST_BASE, static_cast<int32_t>(list_size & ~size_t{1}));
    fuzz::timed_frame(draw_frame);
    std::memset(main_ram + LIST_BASE, 0xFF, list_size);
    return 0;
}
