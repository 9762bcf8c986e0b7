// Unscaled bitmap objects: plain renderers replace the cells they draw, read-modify-write
// renderers add the object's CRY colour to what the cell holds.
#include <algorithm>
#include <cstring>

#include "core/bus.h"
#include "core/host.h"
#include "objproc/colour_tables.h"
#include "objproc/pixels.h"

uint8_t op_stage_keys[OP_SOURCE_STAGE_SIZE];
uint32_t op_stage_colours[OP_SOURCE_STAGE_SIZE];
uint8_t op_rmw_stage_keys[OP_ROW_STAGE_SIZE];
uint32_t op_rmw_stage_colours[OP_ROW_STAGE_SIZE];

namespace {

using namespace op_pixels;

void store_run(const uint8_t* keys, const uint32_t* colours, int32_t count, uint32_t* cell,
               int32_t step, bool trans) {
    if (!trans && step > 0) {
        std::memcpy(cell, colours, static_cast<size_t>(count) * sizeof(uint32_t));
    } else if (!trans) {
        for (int32_t i = 0; i < count; ++i) cell[-i] = colours[i];
    } else {
        for (int32_t i = 0; i < count; ++i)
            if (keys[i]) cell[i * step] = colours[i];
    }
}

void add_run(const uint8_t* keys, const uint32_t* colours, int32_t count, uint32_t* cell,
             int32_t step, bool trans) {
    for (int32_t i = 0; i < count; ++i) {
        if (trans && !keys[i]) continue;
        uint32_t& c = cell[i * step];
        c = cry_add(static_cast<uint16_t>(c), static_cast<uint16_t>(colours[i]));
    }
}

// 8-, 16- and 32-bit pixels in phrases that follow each other (PITCH 1) form one array in the
// buffer, pixel j of the run at byte j, word j or long j from the run's first phrase: they go
// straight from there into their cells, decoded as decode_phrase does, with no staging.
template <int Depth>
inline uint32_t run_pixel(const uint8_t* run, int32_t j) {
    if constexpr (Depth == 3) return run[j ^ 1];  // the raw byte: the key; its colour is CLUT[byte]
    else if constexpr (Depth == 4) return ws_read16(run, static_cast<uint32_t>(2 * j));
    else return arrange_32bit_pixel(ws_read32(run, static_cast<uint32_t>(4 * j)));
}

template <int Depth>
inline uint32_t run_colour(uint32_t pixel) {
    if constexpr (Depth == 3) return clut_entry(pixel);
    else return pixel;
}

template <int Depth, int Step, bool Trans>
void copy_run(const uint8_t* run, int32_t first, int32_t count, uint32_t* cell) {
    for (int32_t i = 0; i < count; ++i) {
        const uint32_t v = run_pixel<Depth>(run, first + i);
        uint32_t& c = cell[i * Step];
        // Written as a choice rather than a skipped store so that the loop vectorises.
        if constexpr (Trans) c = v ? run_colour<Depth>(v) : c;
        else c = run_colour<Depth>(v);
    }
}

// Pixels first to first + count - 1 of the run that starts at `run`.
template <int Depth>
void copy_contiguous(const uint8_t* run, int32_t first, int32_t count, uint32_t* cell, int32_t step, bool trans) {
    if (step > 0) {
        if (trans) copy_run<Depth, 1, true>(run, first, count, cell);
        else copy_run<Depth, 1, false>(run, first, count, cell);
    } else {
        if (trans) copy_run<Depth, -1, true>(run, first, count, cell);
        else copy_run<Depth, -1, false>(run, first, count, cell);
    }
}

// Draws the current line's row of an unscaled object. `dropped` is the number of leading image
// pixels FIRSTPIX removes; `firstpix_message`, when given, is logged for a non-zero FIRSTPIX.
template <int Depth, bool Rmw>
void draw_unscaled(const op_object* o, int line, int32_t dropped, const char* firstpix_message) {
    constexpr int32_t ppp = 64 >> Depth;
    const int32_t r = line / 2 - o->ypos / 2;
    uint32_t available = 0;
    const uint8_t* src = get_mem_pointer(static_cast<uint32_t>(o->data), &available);
    if (!src || !op_line_buffer) return;  // no memory holds DATA: get_mem_pointer has logged
    if (r < 0 || r > 256 || r >= o->height) return;

    run_placement p;
    if (!place_run(o->xpos, o->iwidth * ppp, op_clip_width(), o->flags & OP_FLAG_REFLECT, p)) return;
    if (firstpix_message && o->firstpix != 0) log_printf("%s", firstpix_message);

    const uint64_t offset = uint64_t(r) * uint32_t(o->dwidth) * 8 + uint64_t(p.skip / ppp) * 8;
    const int32_t k0 = p.skip % ppp;
    const int32_t count = p.end - p.start + (k0 > 0 ? ppp : 0);
    const int32_t phrases = std::min((count + ppp - 1) / ppp, OP_ROW_STAGE_SIZE / ppp);
    const int32_t j0 = k0 + dropped;
    uint32_t* cell = op_line_buffer + p.first;
    const bool trans = o->flags & OP_FLAG_TRANS;
    if constexpr (!Rmw && Depth >= 3) {
        if (o->pitch == 1) {
            const int32_t inside = phrases_inside(available, offset, 8, phrases);
            const int32_t n = std::min(p.end - (p.start + dropped), inside * ppp - j0);
            if (n > 0) copy_contiguous<Depth>(src + offset, j0, n, cell, p.step, trans);
            return;
        }
    }
    uint8_t* keys = Rmw ? op_rmw_stage_keys : op_stage_keys;
    uint32_t* colours = Rmw ? op_rmw_stage_colours : op_stage_colours;
    uint32_t palette[16];
    if constexpr (Depth <= 2) build_palette(palette, Depth, o->index);
    const int32_t staged = stage_phrases<Depth>(src, available, offset, uint64_t(o->pitch) * 8,
                                                phrases, keys, colours, palette);

    // Pixels whose phrases lie past the end of the data's memory were not staged: not drawn.
    const int32_t n = std::min(p.end - (p.start + dropped), staged - j0);
    if (n <= 0) return;
    if constexpr (Rmw)
        add_run(keys + j0, colours + j0, n, cell, p.step, trans);
    else
        store_run(keys + j0, colours + j0, n, cell, p.step, trans);
}

}  // namespace

void op_draw_bitmap_1bit(const op_object* o, int line) { draw_unscaled<0, false>(o, line, 0, nullptr); }
void op_draw_bitmap_2bit(const op_object* o, int line) {
    draw_unscaled<1, false>(o, line, 0, "Object processor error (2-bit): Firstpix > 0\n");
}
void op_draw_bitmap_4bit(const op_object* o, int line) {
    draw_unscaled<2, false>(o, line, 0, "Object processor error (4-bit): Firstpix > 0\n");
}
void op_draw_bitmap_8bit(const op_object* o, int line) {
    draw_unscaled<3, false>(o, line, (o->firstpix >> 3) & 6, nullptr);
}
void op_draw_bitmap_16bit(const op_object* o, int line) {
    draw_unscaled<4, false>(o, line, (o->firstpix >> 4) & 2, nullptr);
}
void op_draw_bitmap_32bit(const op_object* o, int line) {
    draw_unscaled<5, false>(o, line, 0, "Object processor error (32-bit): Firstpix > 0\n");
}
void op_draw_bitmap_rmw_1bit(const op_object* o, int line) { draw_unscaled<0, true>(o, line, 0, nullptr); }
void op_draw_bitmap_rmw_2bit(const op_object* o, int line) {
    draw_unscaled<1, true>(o, line, 0, "Object processor error (2-bit): Firstpix > 0\n");
}
void op_draw_bitmap_rmw_4bit(const op_object* o, int line) {
    draw_unscaled<2, true>(o, line, 0, "Object processor error (4-bit): Firstpix > 0\n");
}
void op_draw_bitmap_rmw_8bit(const op_object* o, int line) {
    draw_unscaled<3, true>(o, line, 0, "Object processor error (8-bit bitmap): Firstpix > 0\n");
}
void op_draw_bitmap_rmw_16bit(const op_object* o, int line) {
    draw_unscaled<4, true>(o, line, 0, "Object processor error (16-bit): Firstpix > 0\n");
}
