// The Object Processor's benchmark screen, shared by the benchmark programs: display registers
// for `lines` lines of `width` pixels from line `vdb` over a background fill, the object list at
// `list`, and a CLUT of grey ramps.
#pragma once

#include <cstdint>

#include "core/memory.h"
#include "core/video.h"

namespace op_screen {

inline void display(uint16_t vdb, uint16_t lines, uint16_t width, uint32_t list) {
    video.vdb = vdb;
    video.vde = static_cast<uint16_t>(vdb + lines);
    video.hdb1 = 0;
    video.hde = width;
    video.vmode = 0x80;
    video.bg = 0x1234;
    video.olp = list;
    for (int k = 0; k < 256; ++k) ws_write16(clut, k * 2, static_cast<uint16_t>(k * 0x0101));
}

}  // namespace op_screen
