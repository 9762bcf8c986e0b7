// The Blitter's 8-, 16- and 32-bit pixel paths: the general paths with their logic functions and
// data compare, and the 16-bit colour-addition, source-shading and Gouraud paths.
//
// Every path is one pixel operation run by the same row loop. A row is done pixel by pixel (each
// pixel forms both addresses from the integer positions, reads, combines, clips and stores), or,
// when its pixels lie side by side in memory, as one run over host memory with the same
// per-pixel order of reads and writes, so overlapping copies come out identical.
#include <algorithm>

#include "blitter/blitter_internal.h"
#include "core/host.h"
#include "objproc/colour_tables.h"

namespace {

// Pixel sizes: the console address of a generator's current pixel, and pixel access in a
// word-swapped memory image. A data register stands in for memory as its bits 31-0 would if
// stored at offset 0: bits 15-8 as a byte, bits 15-0 as a word, the long with halves exchanged.
struct depth8 {
    static constexpr uint32_t bytes = 1;
    static constexpr bool wraps = true;
    static uint32_t address(const blit_generator& g) { return (g.base + g.pixel_index()) & g.wrap_mask; }
    static bool side_by_side(const blit_generator&) { return true; }
    static uint32_t load(const uint8_t* m, uint32_t offset) { return ws_read8(m, offset); }
    static void store(uint8_t* m, uint32_t offset, uint32_t v) { ws_write8(m, offset, static_cast<uint8_t>(v)); }
    static uint32_t from_register(uint32_t v) { return (v >> 8) & 0xFF; }
};

// Four-pixel phrases with `pitch` phrases skipped between two phrases of a row.
struct depth16 {
    static constexpr uint32_t bytes = 2;
    static constexpr bool wraps = true;
    static uint32_t address(const blit_generator& g) {
        const uint32_t x = g.xi();
        const uint32_t offset = (g.yi() * g.width + (x & ~3u)) * (2 * g.pitch + 2) + (x & 3) * 2;
        return (g.base + offset) & g.wrap_mask;
    }
    static bool side_by_side(const blit_generator& g) { return g.pitch == 0; }
    static uint32_t load(const uint8_t* m, uint32_t offset) { return ws_read16(m, offset); }
    static void store(uint8_t* m, uint32_t offset, uint32_t v) { ws_write16(m, offset, static_cast<uint16_t>(v)); }
    static uint32_t from_register(uint32_t v) { return v & 0xFFFF; }
};

// Two-pixel phrases; 32-bit areas never wrap inside RAM.
struct depth32 {
    static constexpr uint32_t bytes = 4;
    static constexpr bool wraps = false;
    static uint32_t address(const blit_generator& g) {
        const uint32_t x = g.xi();
        return g.base + (g.yi() * g.width + (x & ~1u)) * (4 * g.pitch + 4) + (x & 1) * 4;
    }
    static bool side_by_side(const blit_generator& g) { return g.pitch == 0; }
    static uint32_t load(const uint8_t* m, uint32_t offset) { return ws_read32(m, offset); }
    static void store(uint8_t* m, uint32_t offset, uint32_t v) { ws_write32(m, offset, v); }
    static uint32_t from_register(uint32_t v) { return rotate16(v); }
};

// Outside its region a pixel reads 0 and takes no writes.
template <class Depth>
uint32_t read_pixel(const blit_generator& g, uint32_t address) {
    const uint8_t* p = g.at(address, Depth::bytes);
    return p ? Depth::load(g.region.memory, static_cast<uint32_t>(p - g.region.memory)) : 0;
}
template <class Depth>
void write_pixel(const blit_generator& g, uint32_t address, uint32_t v) {
    uint8_t* p = g.writable_at(address, Depth::bytes);
    if (p) Depth::store(g.region.memory, static_cast<uint32_t>(p - g.region.memory), v);
}

// The operands a path reads and how its command routes them.
struct routing {
    bool src_memory, dst_memory, clip, mask_a2;
    uint32_t src_value, dst_value;  // the data registers' pixels when not from memory
};
template <class Depth>
routing route_for(uint32_t cmd, bool reads_source, bool reads_destination, bool mask_a2) {
    return {reads_source && (cmd & SRCEN) != 0, reads_destination && (cmd & DSTEN) != 0, (cmd & CLIP_A1) != 0,
            mask_a2, Depth::from_register(blit.src_long), Depth::from_register(blit.dst_long)};
}

template <class Depth, class Op>
void pixels_one_by_one(const routing& r, uint32_t n, Op& op) {
    const blit_generator& src = *blit.src;
    const blit_generator& dst = *blit.dst;
    for (uint32_t i = 0; i < n; ++i) {
        const uint32_t s = r.src_memory ? read_pixel<Depth>(src, Depth::address(src)) : r.src_value;
        const uint32_t at = Depth::address(dst);
        const uint32_t d = r.dst_memory ? read_pixel<Depth>(dst, at) : r.dst_value;
        uint32_t result;
        if (op(s, d, result) && (!r.clip || blit_clip_passes())) write_pixel<Depth>(dst, at, result);
        blit_advance(r.mask_a2);
    }
}

// True when the generator moves one pixel right per pixel and its next n pixels neither pass
// pixel 65535 nor leave their region (an area that wraps does so in the 2 MB of its region, so
// a run never wraps); `offset` receives the first pixel's offset in the region's image.
template <class Depth>
bool run_fits(const blit_generator& g, uint32_t n, uint32_t& offset) {
    if (g.x_add != FIXED_ONE || g.y_add != 0 || g.xi() + n > 0x10000 || !Depth::side_by_side(g)) return false;
    uint64_t first = g.base + (static_cast<uint64_t>(g.yi()) * g.width + g.xi()) * Depth::bytes;
    // Only an area in RAM's first 2 MB wraps. (NO_WRAP as a mask would cut a 16-bit area's
    // offset, which can pass 2^32, to 32 bits, and so below the region's start.)
    if (Depth::wraps && g.wrap_mask != NO_WRAP) first &= g.wrap_mask;
    const uint64_t end = first + static_cast<uint64_t>(n) * Depth::bytes;
    if (first < g.region.start || end > static_cast<uint64_t>(g.region.start) + g.region.size) return false;
    offset = static_cast<uint32_t>(first - g.region.start);
    return true;
}

// How many of the run's first pixels pass the clip (A1 moves right one pixel at a time).
uint32_t clip_passing(const routing& r, uint32_t n) {
    if (!r.clip) return n;
    const blit_generator& a1 = blit.a1;
    if (a1.yi() >= a1.clip_h || a1.xi() >= a1.clip_w) return 0;
    return std::min(n, a1.clip_w - a1.xi());
}

template <class Depth>
void fill(uint8_t* m, uint32_t offset, uint32_t n, uint32_t v) {
    for (uint32_t i = 0; i < n; ++i) Depth::store(m, offset + i * Depth::bytes, v);
}

// A whole row as one run over host memory; false (nothing done) when the row does not qualify.
template <class Depth, class Op>
bool pixels_as_run(const routing& r, uint32_t n, Op& op) {
    if (!blit_use_runs || n == 0) return false;
    if (r.mask_a2 && (blit.a2.mask_x != NO_WRAP || blit.a2.mask_y != NO_WRAP)) return false;
    const blit_generator& src = *blit.src;
    const blit_generator& dst = *blit.dst;
    uint32_t d0, s0 = 0;
    if (!dst.region.writable || !run_fits<Depth>(dst, n, d0)) return false;
    if (r.src_memory && !run_fits<Depth>(src, n, s0)) return false;
    if (r.clip && (blit.a1.x_add != FIXED_ONE || blit.a1.y_add != 0 || blit.a1.xi() + n > 0x10000)) return false;

    const uint32_t stored = clip_passing(r, n);
    uint8_t* dm = dst.region.memory;
    const uint8_t* sm = src.region.memory;
    uint32_t result;
    if (!r.src_memory && op.ignores_destination()) {
        if (op(r.src_value, 0, result)) fill<Depth>(dm, d0, stored, result);
    } else if (r.src_memory && op.copies_source()) {
        for (uint32_t i = 0; i < stored; ++i) Depth::store(dm, d0 + i * Depth::bytes, Depth::load(sm, s0 + i * Depth::bytes));
    } else {
        for (uint32_t i = 0; i < n; ++i) {
            const uint32_t s = r.src_memory ? Depth::load(sm, s0 + i * Depth::bytes) : r.src_value;
            const uint32_t d = r.dst_memory ? Depth::load(dm, d0 + i * Depth::bytes) : r.dst_value;
            if (op(s, d, result) && i < stored) Depth::store(dm, d0 + i * Depth::bytes, result);
        }
    }
    for (blit_generator* g : {&blit.a1, &blit.a2}) {
        g->x += n * g->x_add;
        g->y += n * g->y_add;
    }
    return true;
}

template <class Depth, class Op>
void run_path(uint32_t cmd, Op& op, bool mask_a2) {
    const routing r = route_for<Depth>(cmd, Op::reads_source, Op::reads_destination, mask_a2);
    blit_rows(cmd, [&](uint32_t n) {
        if (!pixels_as_run<Depth>(r, n, op)) pixels_one_by_one<Depth>(r, n, op);
    });
}

// The pixel operations: op(s, d, result) forms the result from the source and destination
// pixels and says whether it is stored (data compare can refuse). ignores_destination: the
// result and the decision depend on the source alone; copies_source: the result is the source
// pixel, always stored.

// General paths. The 8-bit path complements the destination when DSTEN is clear and compares
// the source; the 16-bit path complements it when DSTEN is set and compares the result.
template <uint32_t Mask>
struct general_op {
    static constexpr bool reads_source = true, reads_destination = true;
    uint32_t lfu;
    bool patdsel, invert_d, dcompen, cmpdst, compare_result;
    uint32_t pattern;

    bool operator()(uint32_t s, uint32_t d, uint32_t& result) const {
        const uint32_t dd = (invert_d ? ~d : d) & Mask;
        result = (patdsel ? s : blit_logic(lfu, dd, s)) & Mask;
        if (!dcompen) return true;
        const uint32_t compared = cmpdst ? dd : compare_result ? result : s;
        return compared != pattern;
    }
    bool ignores_destination() const { return (patdsel || lfu_ignores_destination(lfu)) && !(dcompen && cmpdst); }
    bool copies_source() const { return (patdsel || lfu == 12) && !dcompen; }
};

template <uint32_t Mask>
general_op<Mask> general(uint32_t cmd, bool invert_d, bool compares, bool compare_result, uint32_t pattern) {
    return {lfu_code(cmd),           (cmd & PATDSEL) != 0, invert_d, compares && (cmd & DCOMPEN) != 0,
            (cmd & CMPDST) != 0,     compare_result,       pattern};
}

struct colour_add_op {
    static constexpr bool reads_source = true, reads_destination = true;
    bool operator()(uint32_t s, uint32_t d, uint32_t& result) const {
        result = cry_add(static_cast<uint16_t>(d), static_cast<uint16_t>(s));
        return true;
    }
    bool ignores_destination() const { return false; }
    bool copies_source() const { return false; }
};

struct source_shade_op {
    static constexpr bool reads_source = true, reads_destination = false;
    int32_t delta;
    bool operator()(uint32_t s, uint32_t, uint32_t& result) const {
        const int32_t y = std::clamp(static_cast<int32_t>(s & 0xFF) + delta, 0, 255);
        result = static_cast<uint32_t>(y) | (s & 0xFF00);
        return true;
    }
    bool ignores_destination() const { return true; }
    bool copies_source() const { return false; }
};

// Four colours and four 8.16 intensities, used in turn pixel by pixel in phrase mode (pixel
// count mod 4, running on across rows), the first pair alone otherwise.
struct gouraud_op {
    static constexpr bool reads_source = false, reads_destination = false;
    static constexpr int32_t LEVEL_MAX = 0xFFFFFF;
    uint32_t colour[4];
    int32_t level[4];
    int32_t inc;
    uint32_t count;
    bool phrase;

    bool operator()(uint32_t, uint32_t, uint32_t& result) {
        const uint32_t k = count & 3;
        result = colour[k] | ((static_cast<uint32_t>(level[k]) >> 16) & 0xFF);
        level[k] = std::clamp(level[k] + inc, 0, LEVEL_MAX);
        if (phrase) ++count;
        return true;
    }
    bool ignores_destination() const { return false; }
    bool copies_source() const { return false; }
};

int32_t sign_extend(uint32_t v, int bits) {
    const uint32_t sign = 1u << (bits - 1);
    v &= (sign << 1) - 1;
    return static_cast<int32_t>(v ^ sign) - static_cast<int32_t>(sign);
}

bool a1_in_phrase_mode() { return blit.a1.xadd_mode == XADD_PHRASE; }

}  // namespace

void blit_8bit(uint32_t cmd) {
    if (a1_in_phrase_mode()) blit_phrase_step_correction(8);
    const uint32_t pattern = blitter_reg(B_PATD) & 0xFF;  // bits 39-32
    auto op = general<0xFF>(cmd, (cmd & DSTEN) == 0, true, false, pattern);
    run_path<depth8>(cmd, op, true);
}

void blit_16bit(uint32_t cmd) {
    if (a1_in_phrase_mode()) blit_phrase_step_correction(4);
    if (cmd & SRCSHADE) return blit_16bit_srcshade(cmd);
    if (cmd & GOURD) return blit_16bit_gourd(cmd);
    if (cmd & ADDDSEL) return blit_16bit_adddsel(cmd);
    const uint32_t pattern = blitter_reg(B_PATD) >> 16;  // bits 63-48
    auto op = general<0xFFFF>(cmd, (cmd & DSTEN) != 0, true, true, pattern);
    run_path<depth16>(cmd, op, true);
}

void blit_32bit(uint32_t cmd) {
    auto op = general<0xFFFFFFFF>(cmd, false, false, false, 0);
    run_path<depth32>(cmd, op, true);
}

void blit_16bit_adddsel(uint32_t cmd) {
    if (cmd & TOPBEN) log_printf("blit_16bit_adddsel: Carry into top byte enabled.\n");
    if (cmd & TOPNEN) log_printf("blit_16bit_adddsel: Carry into top nibble enabled.\n");
    colour_add_op op;
    run_path<depth16>(cmd, op, false);
}

void blit_16bit_srcshade(uint32_t cmd) {
    source_shade_op op{sign_extend(blitter_reg(B_IINC) >> 16, 8)};
    run_path<depth16>(cmd, op, false);
}

void blit_16bit_gourd(uint32_t cmd) {
    const uint32_t high = blitter_reg(B_PATD), low = blitter_reg(B_PATD + 4);
    gouraud_op op{};
    op.colour[0] = high >> 24 << 8;
    op.colour[1] = (high >> 8 & 0xFF) << 8;
    op.colour[2] = low >> 24 << 8;
    op.colour[3] = (low >> 8 & 0xFF) << 8;
    const uint32_t levels[4] = {B_I3, B_I2, B_I1, B_I0};
    for (int k = 0; k < 4; ++k) op.level[k] = static_cast<int32_t>(blitter_reg(levels[k]) & 0xFFFFFF);
    op.inc = sign_extend(blitter_reg(B_IINC), 24);
    op.phrase = a1_in_phrase_mode();
    run_path<depth16>(cmd, op, false);
}
