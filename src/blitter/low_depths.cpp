// The Blitter's 1-, 2- and 4-bit pixel paths. Pixels below a byte are numbered along the area,
// i = y * width + x, eight or two to a byte with pixel 0 in the byte's top bits; these paths
// know no pitch, no wrap, no clip, no data compare and no A2 mask. 2-bit blits are not drawn.
#include "blitter/blitter_internal.h"
#include "core/host.h"

namespace {

template <uint32_t Bits>
struct packed {
    static constexpr uint32_t per_byte = 8 / Bits;
    static constexpr uint32_t mask = (1u << Bits) - 1;
    static uint32_t shift(uint32_t i) { return (per_byte - 1 - i % per_byte) * Bits; }
    static uint32_t address(const blit_generator& g, uint32_t i) { return g.base + i / per_byte; }
};

uint32_t read_byte(const blit_generator& g, uint32_t address) {
    const uint8_t* p = g.at(address, 1);
    return p ? ws_read8(g.region.memory, static_cast<uint32_t>(p - g.region.memory)) : 0;
}

void log_ignored_pitch(int bits) {
    if (blit.a1.pitch) log_printf("Blitter: %d-bit, A1 pitch %d\n", bits, static_cast<int>(blit.a1.pitch));
    if (blit.a2.pitch) log_printf("Blitter: %d-bit, A2 pitch %d\n", bits, static_cast<int>(blit.a2.pitch));
}

// The source pixel comes from memory or from bits 15-8 of its data register, picked out by the
// source index either way; the destination pixel from memory or, when allowed, from B_DSTD.
// PATDSEL only picks B_PATD as that register: the logic function still decides the result.
template <uint32_t Bits>
void blit_packed(uint32_t cmd, bool dst_from_memory) {
    using P = packed<Bits>;
    log_ignored_pitch(Bits);
    const bool src_from_memory = cmd & SRCEN;
    const uint32_t lfu = lfu_code(cmd);
    const uint32_t src_byte = (blit.src_long >> 8) & 0xFF, dst_byte = (blit.dst_long >> 8) & 0xFF;
    blit_rows(cmd, [&](uint32_t n) {
        const blit_generator& src = *blit.src;
        const blit_generator& dst = *blit.dst;
        for (uint32_t k = 0; k < n; ++k) {
            const uint32_t si = src.pixel_index(), di = dst.pixel_index();
            const uint32_t at = P::address(dst, di), shift = P::shift(di);
            const uint32_t s = (src_from_memory ? read_byte(src, P::address(src, si)) : src_byte) >> P::shift(si);
            const uint32_t d = (dst_from_memory ? read_byte(dst, at) : dst_byte) >> shift;
            const uint32_t result = blit_logic(lfu, d & P::mask, s & P::mask) & P::mask;
            if (uint8_t* p = dst.writable_at(at, 1)) {
                const uint32_t offset = static_cast<uint32_t>(p - dst.region.memory);
                const uint32_t kept = ws_read8(dst.region.memory, offset) & ~(P::mask << shift);
                ws_write8(dst.region.memory, offset, static_cast<uint8_t>(kept | result << shift));
            }
            blit_advance(false);
        }
    });
}

}  // namespace

// The destination bit always comes from memory, whatever DSTEN says.
void blit_1bit(uint32_t cmd) { blit_packed<1>(cmd, true); }

void blit_2bit(uint32_t) { log_printf("Blitter: 2-bit blitting unhandled !\n"); }

void blit_4bit(uint32_t cmd) { blit_packed<4>(cmd, (cmd & DSTEN) != 0); }
