// Scaled bitmap objects: HSCALE and VSCALE stretch or shrink the image. Each drawn pixel samples
// the source row through a 16.16 fixed-point step; only the source pixels the drawn cells show
// are read, so an object costs at most a step per drawn cell however wide its source row is.
#include <algorithm>

#include "core/bus.h"
#include "core/host.h"
#include "objproc/pixels.h"

float op_scale_table[256];

namespace {

using namespace op_pixels;

// Per scale factor, worked out once from op_scale_table: 1 / factor in double precision, the
// 16.16 source step it gives, and 1 / factor rounded to single precision.
double inverse_scale[256];
int64_t scale_step[256];
float inverse_scale_single[256];

// Pixel k (0 = leftmost) of a phrase of Depth, as a key (the raw value for the CLUT depths,
// "non-zero" for 16-bit pixels, which transparency tests) and a colour.
template <int Depth>
inline void sample_pixel(uint64_t phrase, int32_t k, const uint32_t* palette, bool& key, uint32_t& colour) {
    constexpr int bits = 1 << Depth;
    const uint32_t v = static_cast<uint32_t>((phrase >> (64 - bits * (k + 1))) & ((uint64_t{1} << bits) - 1));
    key = v != 0;
    if constexpr (Depth <= 2)
        colour = palette[v];
    else if constexpr (Depth == 3)
        colour = clut_entry(v);
    else
        colour = v;
}

// One line's run of a scaled object: `count` cells from `cell` on, `step` apart, cell i showing
// source pixel (acc + i x advance) >> 16 of the row at row_offset.
struct scaled_run {
    const uint8_t* src;
    uint32_t available;
    uint64_t row_offset, pitch_bytes;
    int64_t acc, advance;
    int32_t n_src, count;
    uint32_t* cell;
    int32_t step;
    bool trans;
    uint32_t palette[16];
};

// An object shown at its size or enlarged samples fewer source pixels than it draws: the
// phrases it spans are staged once and each cell picks its pixel from them. Source pixels past
// the staged ones (past the end of the data's memory) are not drawn.
template <int Depth>
void draw_staged(const scaled_run& r, int64_t j_first, int64_t j_last) {
    constexpr int32_t ppp = 64 >> Depth;
    const int32_t first_phrase = static_cast<int32_t>(j_first / ppp);
    const int32_t phrases = static_cast<int32_t>(j_last / ppp) - first_phrase + 1;
    const int32_t staged = stage_phrases<Depth>(r.src, r.available, r.row_offset + first_phrase * r.pitch_bytes,
                                                r.pitch_bytes, phrases, op_stage_keys, op_stage_colours,
                                                r.palette);
    const int64_t base = int64_t(first_phrase) * ppp;
    int64_t acc = r.acc;
    for (int32_t i = 0; i < r.count; ++i, acc += r.advance) {
        const int64_t k = (acc >> 16) - base;
        if (k >= staged) break;
        if (!r.trans || op_stage_keys[k]) r.cell[i * r.step] = op_stage_colours[k];
    }
}

// A shrunk object skips source pixels: each cell reads its own pixel, so the work follows the
// cells drawn, not the width of the source row. Source pixels only move right, so a phrase past
// the end of the data's memory ends the run.
template <int Depth>
void draw_sampled(const scaled_run& r) {
    constexpr int32_t ppp = 64 >> Depth;
    int64_t acc = r.acc;
    for (int32_t i = 0; i < r.count; ++i, acc += r.advance) {
        const int64_t j = acc >> 16;
        if (j >= r.n_src) break;
        const uint64_t at = r.row_offset + uint64_t(j / ppp) * r.pitch_bytes;
        if (at + 8 > r.available) break;
        bool key;
        uint32_t colour;
        sample_pixel<Depth>(read_phrase(r.src, at), static_cast<int32_t>(j % ppp), r.palette, key, colour);
        if (!r.trans || key) r.cell[i * r.step] = colour;
    }
}

template <int Depth>
void draw_scaled(const op_object* o, int line, const char* firstpix_message) {
    constexpr int32_t ppp = 64 >> Depth;
    const int32_t d = line / 2 - o->ypos / 2;
    uint32_t available = 0;
    const uint8_t* src = get_mem_pointer(static_cast<uint32_t>(o->data), &available);
    if (!src || !op_line_buffer) return;  // no memory holds DATA: get_mem_pointer has logged
    if (o->hscale == 0 || o->vscale == 0) return;

    // The row and the step come from the single-precision factors through double arithmetic,
    // not exact integer arithmetic: VSCALE 49 at d = 49 gives row 31, not 32.
    if (!(inverse_scale[o->hscale] > 0.0 && inverse_scale[o->vscale] > 0.0)) return;  // not set up
    const int64_t row = static_cast<int64_t>(inverse_scale[o->vscale] * d);
    if (row < 0 || row > 256 || row >= o->height) return;

    const int32_t n_src = o->iwidth * ppp;
    const int32_t n_out = (n_src * o->hscale) >> 5;
    run_placement p;
    if (!place_run(o->xpos, n_out, op_clip_width(), o->flags & OP_FLAG_REFLECT, p)) return;
    scaled_run r{src, available, uint64_t(row) * uint32_t(o->dwidth) * 8, uint64_t(o->pitch) * 8, 0,
                 scale_step[o->hscale], n_src, p.end - p.start, op_line_buffer + p.first, p.step,
                 (o->flags & OP_FLAG_TRANS) != 0, {}};
    if (p.skip > 0)
        r.acc = static_cast<int64_t>(p.skip * static_cast<double>(inverse_scale_single[o->hscale]) * 65536.0);
    if (firstpix_message && o->firstpix != 0) log_printf("%s", firstpix_message);
    if (r.count <= 0) return;

    const int64_t j_first = r.acc >> 16;
    const int64_t j_last = std::min<int64_t>((r.acc + (r.count - 1) * r.advance) >> 16, n_src - 1);
    if (j_first > j_last) return;
    if constexpr (Depth <= 2) build_palette(r.palette, Depth, o->index);
    op_line_work += 2 * r.count;  // a source pixel read and a cell written per cell drawn
    if (j_last - j_first < r.count)
        draw_staged<Depth>(r, j_first, j_last);
    else
        draw_sampled<Depth>(r);
}

}  // namespace

void op_prepare_scaling() {
    for (int i = 0; i < 256; ++i) {
        const double inverse = op_scale_table[i] > 0.0f ? 1.0 / static_cast<double>(op_scale_table[i]) : 0.0;
        inverse_scale[i] = inverse;
        scale_step[i] = static_cast<int64_t>(inverse * 65536.0);
        inverse_scale_single[i] = static_cast<float>(inverse);
    }
}

void op_draw_scaled_1bit(const op_object* o, int line) {
    draw_scaled<0>(o, line, "Object processor error (Scaled 1-bit): Firstpix > 0\n");
}
void op_draw_scaled_2bit(const op_object* o, int line) {
    draw_scaled<1>(o, line, "Object processor error (Scaled 2-bit): Firstpix > 0\n");
}
void op_draw_scaled_4bit(const op_object* o, int line) {
    draw_scaled<2>(o, line, "Object processor error (Scaled 4-bit): Firstpix > 0\n");
}
void op_draw_scaled_8bit(const op_object* o, int line) {
    draw_scaled<3>(o, line, "Object processor error (Scaled 8-bit): Firstpix > 0\n");
}
void op_draw_scaled_16bit(const op_object* o, int line) {
    draw_scaled<4>(o, line, "Object processor error (Scaled 16-bit): Firstpix > 0\n");
}
