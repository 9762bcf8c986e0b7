// The Blitter's benchmark screen, shared by the benchmark programs: both generators set up over a
// 320 x 240 screen in main RAM (A1) and an image of the same size (A2), and whole-screen blits.
#pragma once

#include <cstdint>

#include "blitter/blitter.h"
#include "blitter/blitter_internal.h"
#include "core/video.h"

namespace blitter_screen {

constexpr uint32_t SCREEN = 0x20000, IMAGE = 0x100000;
constexpr uint32_t WIDTH = 320, HEIGHT = 240, PIXELS = WIDTH * HEIGHT;
constexpr uint32_t WIDTH_320 = 33;  // width code
constexpr uint32_t LFU_S = 12u << LFU_SHIFT;

inline uint32_t xy(uint32_t x, uint32_t y) { return (y & 0xFFFF) << 16 | (x & 0xFFFF); }

// Both generators over a 320 x 240 screen of `depth` (A1_FLAGS code), in phrase mode.
inline void screen_blit(uint32_t depth) {
    const uint32_t flags = depth << FLAG_PIXEL_SHIFT | WIDTH_320 << FLAG_WIDTH_SHIFT;
    gpu_write32(A1_BASE, SCREEN), gpu_write32(A1_FLAGS, flags), gpu_write32(A1_STEP, xy(-WIDTH, 1));
    gpu_write32(A2_BASE, IMAGE), gpu_write32(A2_FLAGS, flags), gpu_write32(A2_STEP, xy(-WIDTH, 1));
    gpu_write32(B_PATD, 0x88408840), gpu_write32(B_PATD + 4, 0x88408840);
    gpu_write32(B_COUNT, xy(WIDTH, HEIGHT));
}
inline void full_screen(uint32_t cmd) {
    gpu_write32(A1_PIXEL, 0), gpu_write32(A1_FPIXEL, 0), gpu_write32(A2_PIXEL, 0);
    gpu_write32(B_CMD, cmd);
}

// One frame's redraw: clear the 16-bit screen, then draw all of it again from the image with a
// transparent colour (data compare), as a game redraws its background and sprites. The screen
// must have been set up with screen_blit(4).
inline void clear_and_redraw() {
    gpu_write32(B_PATD, 0);  // transparent colour 0
    full_screen(PATDSEL | UPDA1);
    full_screen(SRCEN | LFU_S | DCOMPEN | UPDA1 | UPDA2);
}

}  // namespace blitter_screen
