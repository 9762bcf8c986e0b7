// Scaled bitmap objects: HSCALE and VSCALE stretch or shrink the image; the source row is
// staged once and sampled with a 16.16 fixed-point step per drawn pixel.
#include <algorithm>

#include "core/bus.h"
#include "core/host.h"
#include "objproc/pixels.h"

float op_scale_table[256];

namespace {

using namespace op_pixels;

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
    const float s_h = op_scale_table[o->hscale];
    const float s_v = op_scale_table[o->vscale];
    if (!(s_h > 0.0f && s_v > 0.0f)) return;  // table not filled yet: no division by zero
    const int64_t row = static_cast<int64_t>((1.0 / static_cast<double>(s_v)) * d);
    const int64_t step = static_cast<int64_t>((1.0 / static_cast<double>(s_h)) * 65536.0);
    const float inv_h = static_cast<float>(1.0 / static_cast<double>(s_h));
    if (row < 0 || row > 256 || row >= o->height) return;

    const int32_t n_src = o->iwidth * ppp;
    const int32_t n_out = (n_src * o->hscale) >> 5;
    run_placement p;
    if (!place_run(o->xpos, n_out, op_clip_width(), o->flags & OP_FLAG_REFLECT, p)) return;
    int64_t acc = 0;
    if (p.skip > 0) acc = static_cast<int64_t>(p.skip * static_cast<double>(inv_h) * 65536.0);
    if (firstpix_message && o->firstpix != 0) log_printf("%s", firstpix_message);
    if (p.start >= p.end) return;

    // Stage only the source pixels this line samples: at most the whole source row.
    const int32_t count = p.end - p.start;
    const int64_t j_first = acc >> 16;
    const int64_t j_last = std::min<int64_t>((acc + (count - 1) * step) >> 16, n_src - 1);
    if (j_first > j_last) return;
    const int32_t first_phrase = static_cast<int32_t>(j_first / ppp);
    const int32_t phrases = std::min(static_cast<int32_t>(j_last / ppp) - first_phrase + 1,
                                     OP_SOURCE_STAGE_SIZE / ppp);
    const uint64_t pitch_bytes = uint64_t(o->pitch) * 8;
    const uint64_t offset = uint64_t(row) * uint32_t(o->dwidth) * 8 + first_phrase * pitch_bytes;
    uint32_t palette[16];
    if constexpr (Depth <= 2) build_palette(palette, Depth, o->index);
    const int32_t staged = stage_phrases<Depth>(src, available, offset, pitch_bytes, phrases,
                                                op_stage_keys, op_stage_colours, palette);

    // Source pixels past the staged ones (past the end of the data's memory) are not drawn.
    const int64_t base = int64_t(first_phrase) * ppp;
    const int64_t limit = base + staged;
    const bool trans = o->flags & OP_FLAG_TRANS;
    uint32_t* row_cells = op_line_buffer;
    for (int32_t i = 0; i < count; ++i, acc += step) {
        const int64_t j = acc >> 16;
        if (j >= limit) break;
        const int64_t k = j - base;
        if (!trans || op_stage_keys[k]) row_cells[p.first + i * p.step] = op_stage_colours[k];
    }
}

}  // namespace

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
