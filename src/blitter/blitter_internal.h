// The Blitter's working state during one blit, shared by the command decode (blitter.cpp) and
// the pixel paths (the other files of this folder).
//
// Each address generator holds a 16.16 fixed-point position whose integer parts are unsigned
// 16-bit pixel coordinates, per-pixel movement, per-row steps and the memory region its base
// lies in. A pixel's console address comes from the generator's base, width and pitch by a
// formula that depends on the pixel size; the generator then finds that address inside its
// region and touches nothing outside it.
#pragma once

#include <cstdint>

#include "blitter/blitter.h"
#include "core/memory.h"

constexpr uint32_t FIXED_ONE = 0x10000;          // 1.0 in 16.16
constexpr uint32_t RAM_WRAP_MASK = 0x1FFFFF;     // areas in the first 2 MB wrap inside it
constexpr uint32_t NO_WRAP = 0xFFFFFFFF;

// The blits of one frame touch at most this many pixels together, and so does one blit issued
// between frames: a blit that reaches the frame's remainder stops after the pixel that reaches
// it, in the middle of its row, and writes its positions back from there; the frame's later
// blits draw nothing. So no program, however many blits it asks for (a single one may ask for
// 65535 rows of 65535 pixels), holds a frame up for more than about 2^22 pixels of work and
// 65535 rows per blit (about 25 ms on the slowest pixel path). No program needs more: in a
// frame's 443,000 clocks the chip fills at most about 1.8 million 16-bit or 3.5 million 8-bit
// pixels in phrase mode; 2^22 are 55 full 320 x 240 screens.
constexpr uint64_t BLIT_PIXEL_LIMIT = 1ull << 22;

// What this frame's blits may still touch; blitter_begin_frame and blitter_reset refill it.
extern uint64_t blit_frame_pixels_left;

// Said once per frame, when the frame's pixels run out.
void blit_report_frame_limit();

struct blit_generator {
    blit_region region;
    uint32_t base;          // console address, phrase aligned
    uint32_t wrap_mask;     // RAM_WRAP_MASK or NO_WRAP
    uint32_t pitch;         // phrases skipped between two phrases of a row
    uint32_t width;         // pixels per row
    uint32_t x, y;          // 16.16 position
    uint32_t x_add, y_add;  // 16.16 movement after each pixel
    uint32_t step_x, step_y;    // 16.16 step after each row (UPDA1, UPDA2)
    uint32_t fstep_x, fstep_y;  // A1: fractional step after each row (UPDA1F)
    uint32_t clip_w, clip_h;    // A1
    uint32_t mask_x, mask_y;    // A2: all ones unless A2_FLAGS asks for the mask
    uint32_t xadd_mode;

    uint32_t xi() const { return x >> 16; }
    uint32_t yi() const { return y >> 16; }
    uint32_t pixel_index() const { return yi() * width + xi(); }

    // Host byte holding `bytes` bytes at console address `address`, or null when they do not
    // lie wholly inside the region (addresses below its start wrap to huge offsets).
    uint8_t* at(uint32_t address, uint32_t bytes) const {
        const uint32_t offset = address - region.start;
        return offset < region.size && region.size - offset >= bytes ? region.memory + offset : nullptr;
    }
    uint8_t* writable_at(uint32_t address, uint32_t bytes) const {
        return region.writable ? at(address, bytes) : nullptr;
    }
};

struct blit_work {
    blit_generator a1, a2;
    blit_generator* src;      // the generator that is not the destination
    blit_generator* dst;      // results go to its memory
    uint32_t inner, outer;    // pixels per row, rows
    uint32_t src_long;        // bits 31-0 of the data register that stands in for the source
    uint32_t dst_long;        // bits 31-0 of B_DSTD
};
extern blit_work blit;

// The per-pixel loops alone, never the whole-row runs: the tests compare the two.
extern bool blit_use_runs;

// Logic function f of destination operand d and source s (all 32 bits; callers cut the result).
inline uint32_t blit_logic(uint32_t f, uint32_t d, uint32_t s) {
    switch (f & 15) {
        case 0: return 0;
        case 1: return ~d & ~s;
        case 2: return ~s & d;
        case 3: return ~s;
        case 4: return ~d & s;
        case 5: return ~d;
        case 6: return ~(d ^ s);
        case 7: return ~d | ~s;
        case 8: return d & s;
        case 9: return d ^ s;
        case 10: return d;
        case 11: return ~s;
        case 12: return s;
        case 13: return ~d | s;
        case 14: return d | s;
        default: return ~0u;
    }
}
inline uint32_t lfu_code(uint32_t cmd) { return (cmd >> LFU_SHIFT) & 15; }
// Codes whose result does not depend on the destination.
inline bool lfu_ignores_destination(uint32_t f) { return f == 0 || f == 3 || f == 11 || f == 12 || f == 15; }

// Moves both generators past one pixel; the 8-bit, general 16-bit and 32-bit paths then wrap A2
// with its mask.
inline void blit_advance(bool mask_a2) {
    blit.a1.x += blit.a1.x_add;
    blit.a1.y += blit.a1.y_add;
    blit.a2.x += blit.a2.x_add;
    blit.a2.y += blit.a2.y_add;
    if (mask_a2) {
        blit.a2.x &= blit.a2.mask_x;
        blit.a2.y &= blit.a2.mask_y;
    }
}
inline bool blit_clip_passes() { return blit.a1.xi() < blit.a1.clip_w && blit.a1.yi() < blit.a1.clip_h; }

// The row steps after each row of the blit.
void blit_row_steps(uint32_t cmd);

// Runs the blit's rows: draw_row(n) handles the row's first n pixels (its inner count, fewer
// only when the frame's pixels run out, after which it stops without the row steps).
template <class DrawRow>
void blit_rows(uint32_t cmd, DrawRow&& draw_row) {
    uint64_t& budget = blit_frame_pixels_left;
    for (uint32_t row = 0; row < blit.outer; ++row) {
        const uint32_t n = budget < blit.inner ? static_cast<uint32_t>(budget) : blit.inner;
        draw_row(n);
        budget -= n;
        if (n < blit.inner) {
            blit_report_frame_limit();
            return;
        }
        blit_row_steps(cmd);
    }
}

// Phrase-mode step correction of the 8-bit (pixels_per_phrase 8) and 16-bit (4) paths.
void blit_phrase_step_correction(uint32_t pixels_per_phrase);

// The pixel paths, by pixel size.
void blit_1bit(uint32_t cmd);
void blit_2bit(uint32_t cmd);
void blit_4bit(uint32_t cmd);
void blit_8bit(uint32_t cmd);
void blit_16bit(uint32_t cmd);
void blit_16bit_srcshade(uint32_t cmd);
void blit_16bit_gourd(uint32_t cmd);
void blit_16bit_adddsel(uint32_t cmd);
void blit_32bit(uint32_t cmd);
