// What the unscaled and scaled renderers share: cutting a phrase into pixels, staging a run of
// phrases without reading past the memory that holds them, and placing a run on the row.
#pragma once

#include <cstdint>

#include "core/memory.h"
#include "objproc/objproc.h"
#include "objproc/renderers.h"

namespace op_pixels {

// The CLUT has 256 entries; an entry number past 255 (INDEX x 2 + value of a 2- or 4-bit
// pixel can reach 269) wraps round to the start, as an 8-bit entry number would.
inline uint32_t clut_entry(uint32_t k) { return ws_read16(clut, (k & 0xFF) * 2); }

// Reads the big-endian phrase at byte offset `offset` of a word-swapped buffer.
inline uint64_t read_phrase(const uint8_t* buffer, uint64_t offset) {
    const uint32_t hi = ws_read32(buffer, static_cast<uint32_t>(offset));
    const uint32_t lo = ws_read32(buffer, static_cast<uint32_t>(offset + 4));
    return (uint64_t{hi} << 32) | lo;
}

// A 32-bit object pixel stored as bytes b0 b1 b2 b3 reaches the cell with bytes 0 and 2
// exchanged: b2 b1 b0 b3.
inline uint32_t arrange_32bit_pixel(uint32_t v) {
    return ((v & 0x0000FF00u) << 16) | (v & 0x00FF00FFu) | ((v >> 16) & 0x0000FF00u);
}

// Colours of the 2, 4 or 16 values of a 1-, 2- or 4-bit pixel: INDEX x 2 is added to the value.
inline void build_palette(uint32_t* palette, int depth, int32_t index) {
    const uint32_t values = 1u << (1u << depth);
    for (uint32_t v = 0; v < values; ++v) palette[v] = clut_entry(static_cast<uint32_t>(index) * 2 + v);
}

// Cuts one phrase into its pixels, first pixel in the most significant bits. The key is the raw
// value for the CLUT depths and "colour is non-zero" for 16- and 32-bit pixels.
template <int Depth>
inline void decode_phrase(uint64_t phrase, uint8_t* keys, uint32_t* colours, const uint32_t* palette) {
    constexpr int bits = 1 << Depth;
    constexpr int ppp = 64 >> Depth;
    constexpr uint64_t mask = (bits == 64) ? ~uint64_t{0} : ((uint64_t{1} << bits) - 1);
    for (int i = 0; i < ppp; ++i) {
        const uint32_t v = static_cast<uint32_t>((phrase >> (64 - bits * (i + 1))) & mask);
        if constexpr (Depth <= 2) {
            keys[i] = static_cast<uint8_t>(v);
            colours[i] = palette[v];
        } else if constexpr (Depth == 3) {
            keys[i] = static_cast<uint8_t>(v);
            colours[i] = clut_entry(v);
        } else if constexpr (Depth == 4) {
            keys[i] = v != 0;
            colours[i] = v;
        } else {
            const uint32_t c = arrange_32bit_pixel(v);
            keys[i] = c != 0;
            colours[i] = c;
        }
    }
}

// Of `phrases` phrases, the first at byte `offset` from src and each next one pitch_bytes further
// on, how many lie wholly inside the `available` bytes from src: the first one that does not
// ends the run, and so do all after it (they lie further on), so a run is cut there rather than
// read past the buffer.
inline int32_t phrases_inside(uint32_t available, uint64_t offset, uint64_t pitch_bytes, int32_t phrases) {
    if (phrases <= 0 || offset + 8 > available) return 0;
    if (pitch_bytes == 0) return phrases;
    const uint64_t more = (available - 8 - offset) / pitch_bytes;
    return more + 1 < static_cast<uint64_t>(phrases) ? static_cast<int32_t>(more + 1) : phrases;
}

// Stages up to `phrases` phrases as phrases_inside counts them. Returns the pixels staged.
template <int Depth>
inline int32_t stage_phrases(const uint8_t* src, uint32_t available, uint64_t offset,
                             uint64_t pitch_bytes, int32_t phrases, uint8_t* keys,
                             uint32_t* colours, const uint32_t* palette) {
    constexpr int ppp = 64 >> Depth;
    const int32_t inside = phrases_inside(available, offset, pitch_bytes, phrases);
    for (int32_t m = 0; m < inside; ++m)
        decode_phrase<Depth>(read_phrase(src, offset + static_cast<uint64_t>(m) * pitch_bytes),
                             keys + m * ppp, colours + m * ppp, palette);
    return inside * ppp;
}

// Where a run of n pixels lands on the row. Cells first, first + step, ... are written; start
// and end bound the run as the clipping rules state them; skip counts image pixels cut off on
// the left.
struct run_placement {
    int32_t start, end, first, step, skip;
};

// Places a run of n pixels whose first pixel is at column xpos, against a row of width w
// (already limited to 0..1024). False when nothing of the run is drawn.
inline bool place_run(int32_t xpos, int32_t n, int32_t w, bool reflect, run_placement& p) {
    if (!reflect) {
        p = {xpos, xpos + n, xpos, +1, 0};
        if (xpos < 0) {
            p.skip = -xpos;
            p.start = 0;
            p.first = 0;
        }
        if (p.start >= w || p.end < 0) return false;
        // An unreflected run stops one cell short of the width: it never writes cell w - 1.
        if (p.end >= w) p.end = w - 1;
        return true;
    }
    p = {xpos - n, xpos, xpos, -1, 0};
    // A reflected run that would cross the left edge is not drawn at all. Its first pixel may
    // land on cell w itself, but never past the row's last cell: with the width limited to the
    // row, xpos = 1024 would be one cell beyond it.
    if (p.start < 0) return false;
    if (xpos > w || xpos >= static_cast<int32_t>(FRAME_PITCH)) return false;
    return true;
}

}  // namespace op_pixels
