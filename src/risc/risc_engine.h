// The execution engine shared by the GPU and the DSP: one set of instruction handlers and one
// slice loop, instantiated once per processor from a traits record that names the processor's
// state, local RAM and messages. Included only by gpu.cpp and dsp.cpp.
//
// A slice keeps pc, the cycle count, the delayed-jump state and the code region in locals.
// Data accesses go through the bus (only aligned longs in the processor's own local RAM are
// served here, as the bus would); before each bus access the engine stores pc (the executing
// instruction's address) in the state record, and around a store also the delayed-jump state,
// because a store can reach the processor's own control registers: it may switch banks, stop
// the processor, write pc or raise an interrupt under the running loop.
//
// Needs: the bus, the memory buffers, log_printf, and from the traits record P:
//   P::processor, P::state(), P::core(), P::local_ram(), P::RAM_BASE, P::RAM_END,
//   P::CHANGE_PC_MESSAGE, P::FETCH_MESSAGE.
#pragma once

#include <cstdint>
#include <cstring>
#include <string_view>

#include "core/bus.h"
#include "core/host.h"
#include "core/memory.h"
#include "risc/risc_opcodes.h"
#include "risc/risc_trace.h"

#define RISC_INLINE [[gnu::always_inline]] inline

// What each processor keeps beside its state record.
struct risc_core {
    const uint8_t* code_base;   // host location of the code region's first byte
    uint32_t code_low;          // console address of that byte
    uint32_t code_size;         // bytes in the region
    uint32_t jump_state;        // 0 none, 1 the executing instruction took a jump, 2 delay slot
    uint32_t switch_pc;         // pc at the last actual bank switch (the DSP's jump rule)
    uint32_t jump_target;       // not next to jump_state: the compiler would pack the adjacent
                                // pair into one vector register inside the slice loop
    bool in_slice;              // the slice loop is running (stores reach the control block)
    uint8_t cond_table[32][8];  // [condition code][4 N + 2 C + Z]
    uint32_t quick[32];         // q(n): 1..31, 32 for 0
    uint32_t signed_quick[32];  // s(n) as a 32-bit value: -16..15
};

// A condition holds unless it asks for Z set or clear, or for F (C, or N when cc bit 4 is set)
// set or clear, and the flags disagree.
inline void risc_build_tables(risc_core& core) {
    for (unsigned cc = 0; cc < 32; ++cc) {
        for (unsigned f = 0; f < 8; ++f) {
            const unsigned z = f & 1, c = (f >> 1) & 1, n = (f >> 2) & 1;
            const unsigned flag = (cc & 16) ? n : c;
            const bool fails = ((cc & 1) && z) || ((cc & 2) && !z) || ((cc & 4) && flag) || ((cc & 8) && !flag);
            core.cond_table[cc][f] = fails ? 0 : 1;
        }
        core.quick[cc] = risc_quick(cc);
        core.signed_quick[cc] = static_cast<uint32_t>(risc_signed_quick(cc));
    }
}

// ---------------------------------------------------------------------------------------------
// Banks, interrupt entry, the flags and control registers: the same on both processors.

template <class P>
void risc_switch_bank(int b) {
    auto& s = P::state();
    const uint32_t bank = b ? 1u : 0u;
    if (bank == s.bank) return;
    P::core().switch_pc = s.pc;
    for (int r = 0; r < 32; ++r) {
        const uint32_t t = s.regs[r];
        s.regs[r] = s.alt_regs[r];
        s.alt_regs[r] = t;
    }
    s.bank = bank;
    if (!s.imask) s.reg_page = bank;
}

// Interrupt entry. Between slices pc is the next instruction and no jump is pending. Inside a
// slice the request comes from the processor's own store (to its control register, or to the
// Blitter's command register for the GPU): pc then holds the store's address, so the next
// instruction is the store's successor, or the pending jump's target when the store sits in a
// delay slot (the jump is taken into the return address, not lost). The return address pushed
// is that next instruction minus 2, as between slices, and pc is left 2 short of the vector so
// that the loop's advance past the store lands on it.
template <class P>
void risc_interrupt(int n) {
    if (n < 0 || n > 4) return;
    auto& s = P::state();
    risc_core& core = P::core();
    if (s.imask) return;
    if constexpr (P::processor == RISC_DSP) {
        if (core.jump_state) return;  // the DSP drops a request raised inside a delay slot
    }
    if (!s.int_enable[n]) return;
    s.imask = 1;
    s.int_latch[n] = 1;
    risc_switch_bank<P>(0);
    uint32_t next = s.pc;
    if (core.in_slice) {
        next = core.jump_state == 2 ? core.jump_target : s.pc + 2;
        core.jump_state = 0;
    }
    s.regs[31] -= 4;
    bus_write32(s.regs[31], next - 2);
    const uint32_t vector = P::RAM_BASE + 16u * static_cast<uint32_t>(n);
    if constexpr (P::processor == RISC_GPU) s.regs[30] = vector;
    s.pc = core.in_slice ? vector - 2 : vector;
}

// G_FLAGS / D_FLAGS: bit 0 Z, 1 C, 2 N, 3 imask, 4-8 enables, 14 reg_page.
template <class P>
uint32_t risc_flags_read() {
    const auto& s = P::state();
    uint32_t v = s.flag_z | (s.flag_c << 1) | (s.flag_n << 2) | ((s.imask ? 1u : 0u) << 3) | (s.reg_page << 14);
    for (unsigned i = 0; i < 5; ++i)
        if (s.int_enable[i]) v |= 1u << (4 + i);
    return v;
}

// Software can leave interrupt service (bit 3 clear) but never enter it; bits 9-13 clear
// latches; the bank of bit 14 is taken only outside service.
template <class P>
void risc_flags_write(uint32_t v) {
    auto& s = P::state();
    s.flag_z = v & 1;
    s.flag_c = (v >> 1) & 1;
    s.flag_n = (v >> 2) & 1;
    if (!(v & 8)) s.imask = 0;
    for (int i = 0; i < 5; ++i) {
        s.int_enable[i] = (v >> (4 + i)) & 1;
        if (v & (1u << (9 + i))) s.int_latch[i] = 0;
    }
    if (!s.imask) risc_switch_bank<P>((v >> 14) & 1);
}

// G_CTRL / D_CTRL read: bit 0 running, 6-10 latches, 3 and 13 always set.
template <class P>
uint32_t risc_ctrl_read() {
    const auto& s = P::state();
    uint32_t v = 0x2008 | (s.running ? 1u : 0u);
    for (unsigned i = 0; i < 5; ++i)
        if (s.int_latch[i]) v |= 1u << (6 + i);
    return v;
}

// The code regions: main RAM, the cartridge and the processor's local RAM. The RAM mirrors, the
// boot ROM and the GPU RAM's 32-bit alias hold no code.
template <class P>
int risc_change_pc(uint32_t address) {
    risc_core& core = P::core();
    if (address < MAIN_RAM_SIZE) {
        core.code_base = main_ram;
        core.code_low = 0;
        core.code_size = MAIN_RAM_SIZE;
    } else if (address >= 0x800000 && address < 0xE00000) {
        core.code_base = cart_rom;
        core.code_low = 0x800000;
        core.code_size = CART_ROM_SIZE;
    } else if (address >= P::RAM_BASE && address < P::RAM_END) {
        core.code_base = P::local_ram();
        core.code_low = P::RAM_BASE;
        core.code_size = P::RAM_END - P::RAM_BASE;
    } else {
        log_printf(P::CHANGE_PC_MESSAGE, address, P::state().pc);
        return 0;
    }
    return 1;
}

// ---------------------------------------------------------------------------------------------
// The instruction handlers. Each gets the slice's live values, the first field n, the second
// field d and the whole word.

struct risc_slice {
    uint32_t pc;           // the executing instruction's address
    uint32_t jump_state;
    uint32_t jump_target;
    int32_t limit;         // the budget; 0 once a store has stopped the processor
};

namespace risc_ops {

template <class P>
RISC_INLINE void set_zn(uint32_t r) {
    auto& s = P::state();
    s.flag_z = r == 0;
    s.flag_n = r >> 31;
}

template <class P>
RISC_INLINE uint32_t add_flags(uint32_t a, uint32_t b) {
    const uint64_t wide = static_cast<uint64_t>(a) + b;
    const uint32_t r = static_cast<uint32_t>(wide);
    P::state().flag_c = static_cast<uint8_t>(wide >> 32);
    set_zn<P>(r);
    return r;
}

template <class P>
RISC_INLINE uint32_t sub_flags(uint32_t a, uint32_t b) {
    const uint32_t r = a - b;
    P::state().flag_c = b > a;
    set_zn<P>(r);
    return r;
}

template <class P>
RISC_INLINE bool in_local_ram(uint32_t a) {
    return a - P::RAM_BASE < P::RAM_END - P::RAM_BASE;
}

// Data accesses. The state's pc names the executing instruction while the bus works (G_PC
// reads it); a store may change pc, the jump state, the banks or running under the loop.
// An aligned long in the processor's own local RAM is the one access the engine serves itself:
// the bus would read or write the same buffer long and nothing else.
template <class P>
RISC_INLINE bool own_aligned_long(uint32_t a) {
    return (a & 3) == 0 && in_local_ram<P>(a);
}
template <class P>
RISC_INLINE uint32_t load32(risc_slice& x, uint32_t a) {
    if (own_aligned_long<P>(a)) return ws_read32(P::local_ram(), a - P::RAM_BASE);
    P::state().pc = x.pc;
    return bus_read32(a);
}
template <class P>
RISC_INLINE uint32_t load16(risc_slice& x, uint32_t a) {
    P::state().pc = x.pc;
    return bus_read16(a);
}
template <class P>
RISC_INLINE uint32_t load8(risc_slice& x, uint32_t a) {
    P::state().pc = x.pc;
    return bus_read8(a);
}

template <class P, class Write>
RISC_INLINE void store(risc_slice& x, Write write) {
    auto& s = P::state();
    risc_core& core = P::core();
    s.pc = x.pc;
    core.jump_state = x.jump_state;
    core.jump_target = x.jump_target;
    write();
    x.pc = s.pc;
    x.jump_state = core.jump_state;
    x.jump_target = core.jump_target;
    if (!s.running) x.limit = 0;  // the slice ends once this instruction is complete
}
template <class P>
RISC_INLINE void store32(risc_slice& x, uint32_t a, uint32_t v) {
    if (own_aligned_long<P>(a)) {
        ws_write32(P::local_ram(), a - P::RAM_BASE, v);
        return;
    }
    store<P>(x, [=] { bus_write32(a, v); });
}

#define RISC_OP(name) \
    template <class P> \
    RISC_INLINE void op_##name([[maybe_unused]] risc_slice& x, [[maybe_unused]] uint32_t n, \
                               [[maybe_unused]] uint32_t d, [[maybe_unused]] uint16_t w)
#define RS (P::state().regs[n])
#define RD (P::state().regs[d])

RISC_OP(add) { RD = add_flags<P>(RD, RS); }
// Rs + C is formed in 32 bits first: Rs = 0xFFFFFFFF with C = 1 adds 0 and leaves C clear.
RISC_OP(addc) { RD = add_flags<P>(RD, RS + P::state().flag_c); }
RISC_OP(addq) { RD = add_flags<P>(RD, P::core().quick[n]); }
RISC_OP(addqt) { RD += P::core().quick[n]; }
RISC_OP(sub) { RD = sub_flags<P>(RD, RS); }
RISC_OP(subc) { RD = sub_flags<P>(RD, RS + P::state().flag_c); }
RISC_OP(subq) { RD = sub_flags<P>(RD, P::core().quick[n]); }
RISC_OP(subqt) { RD -= P::core().quick[n]; }
RISC_OP(neg) { RD = sub_flags<P>(0, RD); }
RISC_OP(and_) {
    RD &= RS;
    set_zn<P>(RD);
}
RISC_OP(or_) {
    RD |= RS;
    set_zn<P>(RD);
}
RISC_OP(xor_) {
    RD ^= RS;
    set_zn<P>(RD);
}
RISC_OP(not_) {
    RD = ~RD;
    set_zn<P>(RD);
}
RISC_OP(btst) { P::state().flag_z = ((RD >> n) & 1) == 0; }
RISC_OP(bset) {
    RD |= 1u << n;
    set_zn<P>(RD);
}
RISC_OP(bclr) {
    RD &= ~(1u << n);
    set_zn<P>(RD);
}

RISC_INLINE int32_t signed_product(uint32_t a, uint32_t b) {
    return static_cast<int32_t>(static_cast<int16_t>(a)) * static_cast<int16_t>(b);
}

RISC_OP(mult) {
    RD = (RD & 0xFFFF) * (RS & 0xFFFF);
    set_zn<P>(RD);
}
RISC_OP(imult) {
    RD = static_cast<uint32_t>(signed_product(RD, RS));
    set_zn<P>(RD);
}
// The GPU's accumulator is 32 bits and wraps; the DSP's is 64 bits.
RISC_OP(imultn) {
    const int32_t p = signed_product(RD, RS);
    P::state().acc = p;
    set_zn<P>(static_cast<uint32_t>(p));
}
RISC_OP(resmac) { RD = static_cast<uint32_t>(P::state().acc); }
RISC_OP(imacn) {
    auto& s = P::state();
    const int32_t p = signed_product(RD, RS);
    if constexpr (P::processor == RISC_GPU)
        s.acc = static_cast<int32_t>(static_cast<uint32_t>(s.acc) + static_cast<uint32_t>(p));
    else
        s.acc = static_cast<int64_t>(static_cast<uint64_t>(s.acc) + static_cast<uint64_t>(static_cast<int64_t>(p)));
}

// Division by 0 changes nothing. Fractional mode divides Rd << 16 by Rs, both sign-extended to
// 64 bits and then divided as unsigned numbers.
RISC_OP(div) {
    auto& s = P::state();
    const uint32_t divisor = RS;
    if (divisor == 0) return;
    if (s.div_ctrl & 1) {
        const uint64_t dividend = static_cast<uint64_t>(static_cast<int64_t>(static_cast<int32_t>(RD))) << 16;
        const uint64_t by = static_cast<uint64_t>(static_cast<int64_t>(static_cast<int32_t>(divisor)));
        const uint64_t q = dividend / by;
        s.div_remainder = static_cast<uint32_t>(dividend % by);
        RD = static_cast<uint32_t>(q);
    } else {
        s.div_remainder = RD % divisor;
        RD = RD / divisor;
    }
}

RISC_OP(abs) {
    auto& s = P::state();
    const uint32_t v = RD;
    s.flag_c = v >> 31;
    if (v >> 31) RD = 0u - v;
    s.flag_z = RD == 0;
    s.flag_n = 0;
}

// sh and sha: a count of 32 or more either way clears Rd (Z set, N clear, C kept); 0..31
// shifts right (C = old bit 0), -31..-1 shifts left (C = old bit 31).
template <class P, bool arithmetic>
RISC_INLINE void shift_by_register(uint32_t n, uint32_t d) {
    auto& s = P::state();
    const int32_t k = static_cast<int32_t>(s.regs[n]);
    uint32_t v = s.regs[d];
    if (k >= 32 || k <= -32) {
        s.regs[d] = 0;
        s.flag_z = 1;
        s.flag_n = 0;
        return;
    }
    if (k >= 0) {
        s.flag_c = v & 1;
        v = arithmetic ? static_cast<uint32_t>(static_cast<int32_t>(v) >> k) : v >> k;
    } else {
        s.flag_c = v >> 31;
        v <<= -k;
    }
    s.regs[d] = v;
    set_zn<P>(v);
}
RISC_OP(sh) { shift_by_register<P, false>(n, d); }
RISC_OP(sha) { shift_by_register<P, true>(n, d); }
RISC_OP(shlq) {
    P::state().flag_c = RD >> 31;
    RD <<= (32 - n) & 31;
    set_zn<P>(RD);
}
RISC_OP(shrq) {
    P::state().flag_c = RD & 1;
    RD >>= P::core().quick[n] & 31;
    set_zn<P>(RD);
}
RISC_OP(sharq) {
    P::state().flag_c = RD & 1;
    RD = static_cast<uint32_t>(static_cast<int32_t>(RD) >> (P::core().quick[n] & 31));
    set_zn<P>(RD);
}
RISC_INLINE uint32_t rotate_right(uint32_t v, uint32_t k) { return k ? (v >> k) | (v << (32 - k)) : v; }
RISC_OP(ror) {
    P::state().flag_c = RD >> 31;
    RD = rotate_right(RD, RS & 31);
    set_zn<P>(RD);
}
RISC_OP(rorq) {
    P::state().flag_c = RD >> 31;
    RD = rotate_right(RD, P::core().quick[n] & 31);
    set_zn<P>(RD);
}
RISC_OP(cmp) { sub_flags<P>(RD, RS); }
RISC_OP(cmpq) { sub_flags<P>(RD, P::core().signed_quick[n]); }

// Saturation of Rd taken as signed: Z from the result, N cleared.
template <class P>
RISC_INLINE void saturate(uint32_t d, int64_t low, int64_t high) {
    auto& s = P::state();
    int64_t v = static_cast<int32_t>(s.regs[d]);
    if (v < low) v = low;
    if (v > high) v = high;
    s.regs[d] = static_cast<uint32_t>(v);
    s.flag_z = s.regs[d] == 0;
    s.flag_n = 0;
}
RISC_OP(sat8) { saturate<P>(d, 0, 0xFF); }
RISC_OP(sat16) { saturate<P>(d, 0, 0xFFFF); }
RISC_OP(sat24) { saturate<P>(d, 0, 0xFFFFFF); }
RISC_OP(sat16s) { saturate<P>(d, -32768, 32767); }
// sat32s saturates the 40-bit value whose bits 39-32 come from the accumulator's low byte (all
// ones when Rd is negative) and whose low 32 bits are Rd. Chosen bounds: the signed 32-bit
// range; a value above it writes 0x7FFFFFFF, one below it 0x80000000.
RISC_OP(sat32s) {
    auto& s = P::state();
    const uint32_t sign = (RD >> 31) ? 0xFFFFFFFFu : 0u;
    const int64_t high = static_cast<int8_t>(static_cast<uint8_t>(static_cast<uint32_t>(s.acc) | sign));
    const int64_t value = static_cast<int64_t>(static_cast<uint64_t>(high) << 32 | RD);
    int64_t clamped = value;
    if (clamped > INT32_MAX) clamped = INT32_MAX;
    if (clamped < INT32_MIN) clamped = INT32_MIN;
    RD = static_cast<uint32_t>(clamped);
    s.flag_z = RD == 0;
    s.flag_n = 0;
}

RISC_OP(move) { RD = RS; }
RISC_OP(moveq) { RD = n; }
RISC_OP(moveta) { P::state().alt_regs[d] = RS; }
RISC_OP(movefa) { RD = P::state().alt_regs[n]; }

// The operand follows the word, low half first; it is read through the bus like data.
RISC_OP(movei) {
    RD = rotate16(load32<P>(x, x.pc + 2));
    x.pc += 4;
}

// Byte, word and phrase accesses inside the processor's own local RAM move whole longs.
RISC_OP(loadb) {
    const uint32_t a = RS;
    RD = in_local_ram<P>(a) ? load32<P>(x, a & ~3u) : load8<P>(x, a);
}
RISC_OP(loadw) {
    const uint32_t a = RS;
    RD = in_local_ram<P>(a) ? load32<P>(x, a & ~3u) : load16<P>(x, a & ~1u);
}
RISC_OP(load) { RD = load32<P>(x, RS & ~3u); }
RISC_OP(loadp) {
    uint32_t a = RS;
    if (in_local_ram<P>(a)) {
        RD = load32<P>(x, a & ~3u);
        return;
    }
    a &= ~7u;
    RD = load32<P>(x, a + 4);
    P::state().hidata = load32<P>(x, a);
}
RISC_OP(load_r14_q) { RD = load32<P>(x, (P::state().regs[14] + 4 * P::core().quick[n]) & ~3u); }
RISC_OP(load_r15_q) { RD = load32<P>(x, (P::state().regs[15] + 4 * P::core().quick[n]) & ~3u); }
RISC_OP(load_r14_rs) { RD = load32<P>(x, (RS + P::state().regs[14]) & ~3u); }
RISC_OP(load_r15_rs) { RD = load32<P>(x, (RS + P::state().regs[15]) & ~3u); }

RISC_OP(storeb) {
    const uint32_t a = RS, v = RD;
    if (in_local_ram<P>(a))
        store32<P>(x, a & ~3u, v);
    else
        store<P>(x, [=] { bus_write8(a, static_cast<uint8_t>(v)); });
}
RISC_OP(storew) {
    const uint32_t a = RS, v = RD;
    if (in_local_ram<P>(a))
        store32<P>(x, a & ~3u, v);
    else
        store<P>(x, [=] { bus_write16(a & ~1u, static_cast<uint16_t>(v)); });
}
RISC_OP(store) { store32<P>(x, RS & ~3u, RD); }
RISC_OP(storep) {
    const uint32_t a = RS, v = RD;
    if (in_local_ram<P>(a)) {
        store32<P>(x, a & ~3u, v);
        return;
    }
    // hidata is read after the first store, which may have written G_HIDATA.
    store<P>(x, [=] {
        bus_write32((a & ~7u) + 4, v);
        bus_write32(a & ~7u, P::state().hidata);
    });
}
RISC_OP(store_r14_q) { store32<P>(x, (P::state().regs[14] + 4 * P::core().quick[n]) & ~3u, RD); }
RISC_OP(store_r15_q) { store32<P>(x, (P::state().regs[15] + 4 * P::core().quick[n]) & ~3u, RD); }
RISC_OP(store_r14_rs) { store32<P>(x, (RS + P::state().regs[14]) & ~3u, RD); }
RISC_OP(store_r15_rs) { store32<P>(x, (RS + P::state().regs[15]) & ~3u, RD); }

RISC_OP(move_pc) { RD = x.pc; }

template <class P>
RISC_INLINE bool condition_holds(uint32_t cc) {
    const auto& s = P::state();
    return P::core().cond_table[cc][(s.flag_n << 2) | (s.flag_c << 1) | s.flag_z];
}

// The DSP takes the target register from the bank current before a switch when the jump sits
// at most 2 bytes after the switch's pc. The GPU always reads the current bank (chosen: its
// programs switch banks only by writing G_FLAGS, and read their own bank afterwards).
RISC_OP(jump) {
    if (!condition_holds<P>(d)) return;
    uint32_t target = RS;
    if constexpr (P::processor == RISC_DSP) {
        if (x.pc - P::core().switch_pc <= 2) target = P::state().alt_regs[n];
    }
    x.jump_target = target & ~1u;
    x.jump_state = 1;
}
RISC_OP(jr) {
    if (!condition_holds<P>(d)) return;
    const int32_t displacement = n < 16 ? static_cast<int32_t>(n) : static_cast<int32_t>(n) - 32;
    x.jump_target = x.pc + 2 + static_cast<uint32_t>(2 * displacement);
    x.jump_state = 1;
}

// mmult: w products of a matrix row in memory (the low word of each long) with the register
// vector in the other bank, two 16-bit elements per register, starting at the first field's
// register. Chosen: register numbers past R31 wrap to R0, so the vector never leaves the bank.
RISC_OP(mmult) {
    auto& s = P::state();
    const uint32_t width = s.mtxc & 15;
    const uint32_t step = (s.mtxc & 16) ? 4 * width : 4;
    uint32_t a = s.mtxa;
    uint32_t sum = 0;
    for (uint32_t i = 0; i < width; ++i) {
        const uint32_t m = load16<P>(x, a + 2);
        const uint32_t reg = s.alt_regs[(n + i / 2) & 31];
        const uint32_t r = (i & 1) ? reg >> 16 : reg;
        const uint32_t product = static_cast<uint32_t>(signed_product(m, r));
        const uint64_t wide = static_cast<uint64_t>(sum) + product;
        sum = static_cast<uint32_t>(wide);
        s.flag_c = static_cast<uint8_t>(wide >> 32);
        a += step;
    }
    RD = sum;
    set_zn<P>(sum);
}

RISC_OP(mtoi) {
    const uint32_t v = RS;
    RS = (v & 0x7FFFFF) | ((v >> 31) ? 0xFF800000u : 0u);
    set_zn<P>(RS);
}

RISC_OP(normi) {
    uint32_t v = RS;
    int32_t c = 0;
    if (v != 0) {
        while ((v & 0xFFC00000) == 0) {
            v <<= 1;
            --c;
        }
        while (v & 0xFF800000) {
            v >>= 1;
            ++c;
        }
    }
    RD = static_cast<uint32_t>(c);
    P::state().flag_z = c == 0;
    P::state().flag_n = 0;
}

RISC_OP(nop) {}

RISC_OP(pack) {
    const uint32_t v = RD;
    if (n)
        RD = ((v & 0xF000) << 10) | ((v & 0x0F00) << 5) | (v & 0xFF);
    else
        RD = ((v & 0x3C00000) >> 10) | ((v & 0x1E000) >> 5) | (v & 0xFF);
}

// addqmod: the bits set in D_MOD keep their old value; the flags are those of the full sum.
RISC_OP(addqmod) {
    auto& s = P::state();
    const uint32_t old = RD;
    const uint32_t sum = add_flags<P>(old, P::core().quick[n]);
    RD = (sum & ~s.modulo) | (old & s.modulo);
}

RISC_OP(invalid) { log_printf("DSP: Invalid opcode %04X at %08X\n", w, x.pc); }

#undef RS
#undef RD
#undef RISC_OP

}  // namespace risc_ops

// The handler of every opcode, per processor, with the mnemonic it implements. The mnemonics
// are checked against the opcode tables below, so a handler can never sit at the wrong number.
#define RISC_HANDLERS(X)                                         \
    X(0, "add", add, "add", add)                                 \
    X(1, "addc", addc, "addc", addc)                             \
    X(2, "addq", addq, "addq", addq)                             \
    X(3, "addqt", addqt, "addqt", addqt)                         \
    X(4, "sub", sub, "sub", sub)                                 \
    X(5, "subc", subc, "subc", subc)                             \
    X(6, "subq", subq, "subq", subq)                             \
    X(7, "subqt", subqt, "subqt", subqt)                         \
    X(8, "neg", neg, "neg", neg)                                 \
    X(9, "and", and_, "and", and_)                                 \
    X(10, "or", or_, "or", or_)                                    \
    X(11, "xor", xor_, "xor", xor_)                                \
    X(12, "not", not_, "not", not_)                                \
    X(13, "btst", btst, "btst", btst)                            \
    X(14, "bset", bset, "bset", bset)                            \
    X(15, "bclr", bclr, "bclr", bclr)                            \
    X(16, "mult", mult, "mult", mult)                            \
    X(17, "imult", imult, "imult", imult)                        \
    X(18, "imultn", imultn, "imultn", imultn)                    \
    X(19, "resmac", resmac, "resmac", resmac)                    \
    X(20, "imacn", imacn, "imacn", imacn)                        \
    X(21, "div", div, "div", div)                                \
    X(22, "abs", abs, "abs", abs)                                \
    X(23, "sh", sh, "sh", sh)                                    \
    X(24, "shlq", shlq, "shlq", shlq)                            \
    X(25, "shrq", shrq, "shrq", shrq)                            \
    X(26, "sha", sha, "sha", sha)                                \
    X(27, "sharq", sharq, "sharq", sharq)                        \
    X(28, "ror", ror, "ror", ror)                                \
    X(29, "rorq", rorq, "rorq", rorq)                            \
    X(30, "cmp", cmp, "cmp", cmp)                                \
    X(31, "cmpq", cmpq, "cmpq", cmpq)                            \
    X(32, "sat8", sat8, "subqmod", invalid)                      \
    X(33, "sat16", sat16, "sat16s", sat16s)                      \
    X(34, "move", move, "move", move)                            \
    X(35, "moveq", moveq, "moveq", moveq)                        \
    X(36, "moveta", moveta, "moveta", moveta)                    \
    X(37, "movefa", movefa, "movefa", movefa)                    \
    X(38, "movei", movei, "movei", movei)                        \
    X(39, "loadb", loadb, "loadb", loadb)                        \
    X(40, "loadw", loadw, "loadw", loadw)                        \
    X(41, "load", load, "load", load)                            \
    X(42, "loadp", loadp, "sat32s", sat32s)                      \
    X(43, "load", load_r14_q, "load", load_r14_q)                \
    X(44, "load", load_r15_q, "load", load_r15_q)                \
    X(45, "storeb", storeb, "storeb", storeb)                    \
    X(46, "storew", storew, "storew", storew)                    \
    X(47, "store", store, "store", store)                        \
    X(48, "storep", storep, "mirror", invalid)                   \
    X(49, "store", store_r14_q, "store", store_r14_q)            \
    X(50, "store", store_r15_q, "store", store_r15_q)            \
    X(51, "move", move_pc, "move", move_pc)                      \
    X(52, "jump", jump, "jump", jump)                            \
    X(53, "jr", jr, "jr", jr)                                    \
    X(54, "mmult", mmult, "mmult", mmult)                        \
    X(55, "mtoi", mtoi, "mtoi", mtoi)                            \
    X(56, "normi", normi, "normi", normi)                         \
    X(57, "nop", nop, "nop", nop)                                \
    X(58, "load", load_r14_rs, "load", load_r14_rs)              \
    X(59, "load", load_r15_rs, "load", load_r15_rs)              \
    X(60, "store", store_r14_rs, "store", store_r14_rs)          \
    X(61, "store", store_r15_rs, "store", store_r15_rs)          \
    X(62, "sat24", sat24, "(none)", invalid)                     \
    X(63, "pack", pack, "addqmod", addqmod)

struct risc_handler_row {
    unsigned number;
    std::string_view gpu_mnemonic;
    std::string_view dsp_mnemonic;
};
#define RISC_HANDLER_ROW(number, gpu_name, gpu_op, dsp_name, dsp_op) {number, gpu_name, dsp_name},
inline constexpr risc_handler_row risc_handler_rows[] = {RISC_HANDLERS(RISC_HANDLER_ROW)};
#undef RISC_HANDLER_ROW

constexpr bool risc_handlers_match_opcode_tables() {
    if (std::size(risc_handler_rows) != 64) return false;
    for (unsigned i = 0; i < 64; ++i) {
        const risc_handler_row& row = risc_handler_rows[i];
        if (row.number != i || row.gpu_mnemonic != risc_gpu_opcodes[i].mnemonic ||
            row.dsp_mnemonic != risc_dsp_opcodes[i].mnemonic)
            return false;
    }
    return true;
}
static_assert(risc_handlers_match_opcode_tables(), "the handler table and the opcode tables disagree");

// ---------------------------------------------------------------------------------------------
// The slice loop.

// Reports the instruction just executed: its address and words and the registers it changed.
template <class P>
void risc_report(uint32_t pc, uint16_t w, const uint32_t (&before)[32]) {
    const auto& s = P::state();
    risc_trace_entry e{};
    e.processor = P::processor;
    e.pc = pc;
    e.words[0] = w;
    e.word_count = 1;
    if (risc_opcode_of(w) == 38) {  // movei: its operand is what it wrote
        const uint32_t v = s.regs[risc_second_field(w)];
        e.words[1] = static_cast<uint16_t>(v);
        e.words[2] = static_cast<uint16_t>(v >> 16);
        e.word_count = 3;
    }
    for (int r = 0; r < 32; ++r) {
        if (s.regs[r] == before[r]) continue;
        e.written_mask |= 1u << r;
        e.written[r] = s.regs[r];
    }
    risc_trace_sink(e);
}

// Runs the loop from the state's pc until the budget is used with no jump pending or the
// processor stops. The code region was resolved by the caller. When pc leaves the region (a jump
// into another one, running past its end, a write of pc, an interrupt), the region is resolved
// again; pc in no region ends the slice with the change-pc message and result 0, and so does an
// instruction word that would straddle the region's end (an odd pc at its last byte), so the
// fetch never reads outside the region's buffer.
//
// Dispatch is one indexed jump through the 64-entry table of handler labels, repeated at the
// end of every handler so that each handler's successor is predicted on its own.
template <class P, bool traced>
int risc_run(int32_t budget) {
    using namespace risc_ops;
    auto& s = P::state();
    risc_core& core = P::core();
    // Between slices no jump is pending, so a slice with nothing to spend or a stopped
    // processor runs nothing.
    if (budget <= 0 || !s.running) return 1;
    risc_slice x{s.pc, 0, 0, budget};
    const uint8_t* code = core.code_base;
    uint32_t low = core.code_low, size = core.code_size;
    int32_t cycles = 0;
    int result = 1;
    uint16_t w = 0;
    uint32_t n = 0, d = 0, offset = 0;
    [[maybe_unused]] uint32_t traced_pc = 0;
    [[maybe_unused]] uint32_t before[32];

#define RISC_LABEL(number, gpu_name, gpu_op, dsp_name, dsp_op) &&execute_##number,
    static const void* const handlers[64] = {RISC_HANDLERS(RISC_LABEL)};
#undef RISC_LABEL

    // Fetch and decode the word at pc, then jump to its handler.
#define RISC_FETCH                                                 offset = x.pc - low;                                           if (offset > size - 2) [[unlikely]]                                goto leave_region;                                         w = ws_read16(code, offset);                                   if constexpr (traced) {                                            traced_pc = x.pc;                                              std::memcpy(before, s.regs, sizeof before);                }                                                              n = risc_first_field(w);                                       d = risc_second_field(w);                                      goto* handlers[risc_opcode_of(w)];

    // After each instruction: advance pc, count 3 cycles; a pending jump is resolved after its
    // delay slot and holds the budget test off until then (a processor stopped by its own store
    // in a delay slot still completes the jump).
#define RISC_NEXT                                                           if constexpr (traced) {                                                     if (risc_trace_left[P::processor] > 0 && risc_trace_sink) {                 --risc_trace_left[P::processor];                                        risc_report<P>(traced_pc, w, before);                               }                                                                   }                                                                       x.pc += 2;                                                              cycles += 3;                                                            if (x.jump_state) [[unlikely]]                                              goto resolve_jump;                                                  if (cycles >= x.limit) [[unlikely]]                                         goto done;                                                          RISC_FETCH

#define RISC_BODY(number, gpu_name, gpu_op, dsp_name, dsp_op)     execute_##number:                                             if constexpr (P::processor == RISC_GPU)                           op_##gpu_op<P>(x, n, d, w);                               else                                                              op_##dsp_op<P>(x, n, d, w);                               RISC_NEXT

    core.in_slice = true;
    RISC_FETCH
    RISC_HANDLERS(RISC_BODY)

resolve_jump:
    if (x.jump_state == 1) {
        x.jump_state = 2;
        RISC_FETCH
    }
    x.pc = x.jump_target;
    x.jump_state = 0;
    if (cycles >= x.limit) goto done;
    RISC_FETCH

leave_region:
    s.pc = x.pc;
    if (!risc_change_pc<P>(x.pc)) {
        result = 0;
        goto done;
    }
    code = core.code_base;
    low = core.code_low;
    size = core.code_size;
    if (x.pc - low > size - 2) {
        log_printf(P::FETCH_MESSAGE, x.pc);
        result = 0;
        goto done;
    }
    RISC_FETCH

#undef RISC_BODY
#undef RISC_NEXT
#undef RISC_FETCH

done:
    core.in_slice = false;
    if (!result) x.jump_state = 0;  // a slice never ends with a jump pending
    s.pc = x.pc;
    core.jump_state = x.jump_state;
    core.jump_target = x.jump_target;
    return result;
}

// One slice: resolve the code region (0 at once when pc lies in none, also while stopped),
// then the traced loop while tracing is on for this processor, else the plain one.
template <class P>
int risc_execute(int32_t budget) {
    if (!risc_change_pc<P>(P::state().pc)) return 0;
    if (risc_trace_sink && risc_trace_left[P::processor] > 0) [[unlikely]]
        return risc_run<P, true>(budget);
    return risc_run<P, false>(budget);
}
