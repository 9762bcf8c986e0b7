// The 68000 instruction handlers: one template per operation, specialised by size, addressing
// kind and the opcode fields that the handler fixes. The table generator instantiates them, one
// instantiation per handler; at run time a handler decodes only the register in bits 2-0 (and
// the short-branch displacement, MOVEQ's data byte and TRAP's vector number).
//
// Every handler follows the same pattern: operands in instruction order (source extension
// words before the destination's), condition codes from the result, destination written last,
// then its fixed cost subtracted from the budget.
#pragma once

#include "m68k/m68k_internal.h"

namespace m68k_ops {

// Effective-address kinds. Modes 0-6 carry a register; mode 7's sub-modes are kinds of their own.
enum : int { K_DN, K_AN, K_IND, K_POSTINC, K_PREDEC, K_D16, K_IDX, K_ABSW, K_ABSL, K_PCD16, K_PCIDX, K_IMM };

inline uint32_t& D(uint32_t r) { return m68k_context.d[r]; }
inline uint32_t& A(uint32_t r) { return m68k_context.a[r]; }
inline void charge(int32_t cycles) { m68k_context.cycles_left -= cycles; }
inline bool supervisor() { return (m68k_context.sr & 0x2000) != 0; }

template <int SZ> constexpr uint32_t MASK = SZ == 1 ? 0xFFu : SZ == 2 ? 0xFFFFu : 0xFFFFFFFFu;
template <int SZ> constexpr int BITS = SZ * 8;

template <int SZ> inline uint32_t msb(uint32_t v) { return (v >> (BITS<SZ> - 1)) & 1; }
inline uint32_t sext8(uint32_t v) { return static_cast<uint32_t>(static_cast<int32_t>(static_cast<int8_t>(v))); }
inline uint32_t sext16(uint32_t v) { return static_cast<uint32_t>(static_cast<int32_t>(static_cast<int16_t>(v))); }

template <int SZ> [[gnu::always_inline]] inline uint32_t mem_read(uint32_t address) {
    if constexpr (SZ == 1) return m68k_read8(address);
    else if constexpr (SZ == 2) return m68k_read16(address);
    else return m68k_read32(address);
}
template <int SZ> [[gnu::always_inline]] inline void mem_write(uint32_t address, uint32_t v) {
    if constexpr (SZ == 1) m68k_write8(address, v);
    else if constexpr (SZ == 2) m68k_write16(address, v);
    else m68k_write32(address, v);
}

// Byte and word results change only the low 8 or 16 bits of a data register.
template <int SZ> inline void set_d(uint32_t r, uint32_t v) { D(r) = (D(r) & ~MASK<SZ>) | (v & MASK<SZ>); }

inline void push32(uint32_t v) {
    A(7) -= 4;
    m68k_write32(A(7), v);
}

// Effective-address time added by the families that add one.
template <int K, int SZ> constexpr int ea_time() {
    constexpr bool L = SZ == 4;
    switch (K) {
    case K_IND: case K_POSTINC: return L ? 8 : 4;
    case K_PREDEC: return L ? 10 : 6;
    case K_D16: case K_ABSW: case K_PCD16: return L ? 12 : 8;
    case K_IDX: case K_PCIDX: return L ? 14 : 10;
    case K_ABSL: return L ? 16 : 12;
    case K_IMM: return L ? 8 : 4;
    default: return 0;
    }
}

// Brief extension word: index register in bits 15-12 (D0-D7, A0-A7), bit 11 long index,
// bits 7-0 signed displacement.
inline uint32_t indexed(uint32_t base, uint32_t ext) {
    uint32_t r = ext >> 12;
    uint32_t index = r < 8 ? D(r) : A(r - 8);
    if (!(ext & 0x800)) index = sext16(index);
    return base + index + sext8(ext);
}

// Address of a memory operand; consumes its extension words and steps (An)+ / -(An). A byte
// access through A7 steps by 2 to keep the stack even.
template <int K, int SZ> inline uint32_t ea_addr(uint32_t r) {
    constexpr uint32_t step = SZ;
    if constexpr (K == K_IND) {
        return A(r);
    } else if constexpr (K == K_POSTINC) {
        uint32_t a = A(r);
        A(r) = a + ((SZ == 1 && r == 7) ? 2 : step);
        return a;
    } else if constexpr (K == K_PREDEC) {
        A(r) -= (SZ == 1 && r == 7) ? 2 : step;
        return A(r);
    } else if constexpr (K == K_D16) {
        return A(r) + sext16(m68k_fetch16());
    } else if constexpr (K == K_IDX) {
        uint32_t base = A(r);
        return indexed(base, m68k_fetch16());
    } else if constexpr (K == K_ABSW) {
        return sext16(m68k_fetch16());
    } else if constexpr (K == K_ABSL) {
        return m68k_fetch32();
    } else if constexpr (K == K_PCD16) {
        // The base is the address of the extension word itself.
        uint32_t base = m68k_current_pc();
        return base + sext16(m68k_fetch16());
    } else if constexpr (K == K_PCIDX) {
        uint32_t base = m68k_current_pc();
        return indexed(base, m68k_fetch16());
    } else {
        static_assert(K >= K_IND && K <= K_PCIDX, "not a memory kind");
        return 0;
    }
}

template <int SZ> inline uint32_t fetch_immediate() {
    if constexpr (SZ == 4) return m68k_fetch32();
    else return m68k_fetch16() & MASK<SZ>;
}

// Source operand value, masked to its size (An as a word source gives its low word).
template <int K, int SZ> inline uint32_t ea_read(uint32_t r) {
    if constexpr (K == K_DN) return D(r) & MASK<SZ>;
    else if constexpr (K == K_AN) return A(r) & MASK<SZ>;
    else if constexpr (K == K_IMM) return fetch_immediate<SZ>();
    else return mem_read<SZ>(ea_addr<K, SZ>(r));
}

// Read-modify-write destinations: the location is a register number for Dn, else an address.
template <int K, int SZ> inline uint32_t rmw_locate(uint32_t r) {
    if constexpr (K == K_DN) return r;
    else return ea_addr<K, SZ>(r);
}
template <int K, int SZ> inline uint32_t rmw_read(uint32_t loc) {
    if constexpr (K == K_DN) return D(loc) & MASK<SZ>;
    else return mem_read<SZ>(loc);
}
template <int K, int SZ> inline void rmw_write(uint32_t loc, uint32_t v) {
    if constexpr (K == K_DN) set_d<SZ>(loc, v);
    else mem_write<SZ>(loc, v);
}

// ---------------------------------------------------------------------------------------------
// Condition codes.

inline constexpr m68k_flags& cc = m68k_cc;

// N and Z of a result of the size: its sign-extended value carries both.
template <int SZ> inline void set_nz(uint32_t r) {
    cc.nz = static_cast<uint64_t>(static_cast<int64_t>(static_cast<int32_t>(r << (32 - BITS<SZ>))));
}
// ADDX, SUBX, NEGX and the decimal operations: N from the result, Z only cleared, so a
// multi-word result tests zero as a whole.
template <int SZ> inline void set_nz_extend(uint32_t r) {
    if (r & MASK<SZ>) set_nz<SZ>(r);
    else cc.nz = static_cast<uint32_t>(cc.nz) != 0;
}
// Bit operations change Z alone.
inline void set_z_only(bool z) { cc.nz = (cc.nz & (uint64_t{1} << 63)) | (z ? 0u : 1u); }
inline void set_vc(uint32_t v, uint32_t c) { cc.vc = (v << 1) | c; }

template <int SZ> inline void logic_flags(uint32_t r) {
    set_nz<SZ>(r);
    cc.vc = 0;
}

// d + s (+ X); operands already masked to the size. Without X the operands are moved to the top
// of a 32-bit word, so the host's carry and overflow are the size's own.
template <int SZ, bool EXTEND = false> inline uint32_t add_flags(uint32_t d, uint32_t s) {
    if constexpr (!EXTEND) {
        constexpr int SH = 32 - BITS<SZ>;
        uint32_t r;
        int32_t signed_r;
        const uint32_t c = __builtin_add_overflow(d << SH, s << SH, &r);
        const uint32_t v = __builtin_add_overflow(static_cast<int32_t>(d << SH), static_cast<int32_t>(s << SH), &signed_r);
        set_vc(v, c);
        cc.x = c;
        cc.nz = static_cast<uint64_t>(static_cast<int64_t>(static_cast<int32_t>(r)));
        return r >> SH;
    } else {
        uint64_t full = uint64_t(d) + s + cc.x;
        uint32_t r = static_cast<uint32_t>(full) & MASK<SZ>;
        const uint32_t c = static_cast<uint32_t>(full >> BITS<SZ>) & 1;
        set_vc(msb<SZ>((s ^ r) & (d ^ r)), c);
        cc.x = c;
        set_nz_extend<SZ>(r);
        return r;
    }
}

// d - s (- X); COMPARE leaves X alone.
template <int SZ, bool EXTEND = false, bool COMPARE = false> inline uint32_t sub_flags(uint32_t d, uint32_t s) {
    if constexpr (!EXTEND) {
        constexpr int SH = 32 - BITS<SZ>;
        uint32_t r;
        int32_t signed_r;
        const uint32_t c = __builtin_sub_overflow(d << SH, s << SH, &r);
        const uint32_t v = __builtin_sub_overflow(static_cast<int32_t>(d << SH), static_cast<int32_t>(s << SH), &signed_r);
        set_vc(v, c);
        if (!COMPARE) cc.x = c;
        cc.nz = static_cast<uint64_t>(static_cast<int64_t>(static_cast<int32_t>(r)));
        return r >> SH;
    } else {
        uint64_t full = uint64_t(d) - s - cc.x;
        uint32_t r = static_cast<uint32_t>(full) & MASK<SZ>;
        const uint32_t c = static_cast<uint32_t>(full >> BITS<SZ>) & 1;
        set_vc(msb<SZ>((s ^ d) & (r ^ d)), c);
        if (!COMPARE) cc.x = c;
        set_nz_extend<SZ>(r);
        return r;
    }
}

enum : int { OP_ADD, OP_SUB, OP_AND, OP_OR, OP_EOR, OP_CMP };

template <int OPR, int SZ> inline uint32_t alu(uint32_t d, uint32_t s) {
    if constexpr (OPR == OP_ADD) return add_flags<SZ>(d, s);
    else if constexpr (OPR == OP_SUB) return sub_flags<SZ>(d, s);
    else if constexpr (OPR == OP_CMP) return sub_flags<SZ, false, true>(d, s);
    else {
        uint32_t r = OPR == OP_AND ? d & s : OPR == OP_OR ? d | s : d ^ s;
        logic_flags<SZ>(r);
        return r;
    }
}

inline bool condition(int cond) {
    const uint32_t n = m68k_flag_n(), z = m68k_flag_z(), v = m68k_flag_v(), c = m68k_flag_c();
    switch (cond) {
    case 0: return true;
    case 1: return false;
    case 2: return !c && !z;
    case 3: return c || z;
    case 4: return !c;
    case 5: return c;
    case 6: return !z;
    case 7: return z;
    case 8: return !v;
    case 9: return v;
    case 10: return !n;
    case 11: return n;
    case 12: return n == v;
    case 13: return n != v;
    case 14: return !z && n == v;
    default: return z || n != v;
    }
}

// Decimal arithmetic on bytes: the binary sum or difference including X, then the decimal
// adjustment; C = X = decimal carry/borrow, V = the adjustment flipped bit 7 (0->1 for add,
// 1->0 for subtract), Z only cleared.
inline uint32_t bcd_add(uint32_t d, uint32_t s) {
    uint32_t sum = d + s + cc.x;
    uint32_t carries = ((d & s) | (~sum & (d | s))) & 0x88;
    uint32_t decimal = (((sum + 0x66) ^ sum) & 0x110) >> 1;
    uint32_t fix = carries | decimal;
    uint32_t r = sum + (fix - (fix >> 2));
    cc.x = ((carries | (sum & ~r)) >> 7) & 1;
    set_vc(((~sum & r) >> 7) & 1, cc.x);
    r &= 0xFF;
    set_nz_extend<1>(r);
    return r;
}

inline uint32_t bcd_sub(uint32_t d, uint32_t s) {
    uint32_t diff = d - s - cc.x;
    uint32_t borrows = ((~d & s) | (diff & ~(d ^ s))) & 0x88;
    uint32_t r = diff - (borrows - (borrows >> 2));
    cc.x = ((borrows | (~diff & r)) >> 7) & 1;
    set_vc(((diff & ~r) >> 7) & 1, cc.x);
    r &= 0xFF;
    set_nz_extend<1>(r);
    return r;
}

// ---------------------------------------------------------------------------------------------
// Data movement.

template <int SZ, int SK, int DK, int DR> void op_move(uint32_t op) {
    uint32_t v = ea_read<SK, SZ>(op & 7);
    logic_flags<SZ>(v);
    if constexpr (DK == K_DN) set_d<SZ>(DR, v);
    else mem_write<SZ>(ea_addr<DK, SZ>(DR), v);
    charge(4 + ea_time<SK, SZ>() + ea_time<DK, SZ>());
}

template <int SZ, int SK, int AR> void op_movea(uint32_t op) {
    uint32_t v = ea_read<SK, SZ>(op & 7);
    A(AR) = SZ == 2 ? sext16(v) : v;
    charge(4 + ea_time<SK, SZ>());
}

template <int DR> void op_moveq(uint32_t op) {
    uint32_t v = sext8(op);
    D(DR) = v;
    logic_flags<4>(v);
    charge(4);
}

template <int K, int AR> void op_lea_to(uint32_t op) {
    A(AR) = ea_addr<K, 4>(op & 7);
    charge(K == K_IND ? 4 : (K == K_IDX || K == K_ABSL || K == K_PCIDX) ? 12 : 8);
}

template <int K> void op_pea(uint32_t op) {
    uint32_t a = ea_addr<K, 4>(op & 7);
    push32(a);
    charge(K == K_IND ? 12 : (K == K_IDX || K == K_ABSL || K == K_PCIDX) ? 20 : 16);
}

template <int DIR, int SZ, int DR> void op_movep(uint32_t op) {
    uint32_t a = A(op & 7) + sext16(m68k_fetch16());
    if constexpr (DIR == 0) {  // memory to register
        uint32_t v = 0;
        for (int i = 0; i < SZ; ++i) v = (v << 8) | (m68k_read8(a + 2 * i) & 0xFF);
        set_d<SZ>(DR, v);
    } else {
        uint32_t v = D(DR);
        for (int i = SZ - 1; i >= 0; --i) m68k_write8(a + 2 * (SZ - 1 - i), v >> (8 * i));
    }
    charge(SZ == 2 ? 16 : 24);
}

// MOVEM charges all 16 register positions whatever the mask holds.
template <int DIR, int SZ, int K> void op_movem(uint32_t op) {
    uint32_t r = op & 7;
    uint32_t mask = m68k_fetch16();
    constexpr int per_register = 16 * (SZ == 4 ? 8 : 4);
    if constexpr (DIR == 0) {  // registers to memory
        if constexpr (K == K_PREDEC) {
            // Bit 0 is A7 down to bit 15 = D0, stored downwards; An is stored with its value
            // before the instruction and receives the final address once at the end.
            uint32_t a = A(r);
            for (int i = 0; i < 16; ++i) {
                if (!(mask & (1u << i))) continue;
                int reg = 15 - i;
                uint32_t v = reg < 8 ? D(reg) : A(reg - 8);
                a -= SZ;
                mem_write<SZ>(a, v);
            }
            A(r) = a;
        } else {
            uint32_t a = ea_addr<K, SZ>(r);
            for (int i = 0; i < 16; ++i) {
                if (!(mask & (1u << i))) continue;
                mem_write<SZ>(a, i < 8 ? D(i) : A(i - 8));
                a += SZ;
            }
        }
        constexpr int base = (K == K_IND || K == K_PREDEC) ? 8 : (K == K_D16 || K == K_ABSW) ? 12 : K == K_IDX ? 14 : 16;
        charge(base + per_register);
    } else {  // memory to registers, ascending; words are sign-extended to 32 bits
        uint32_t a = K == K_POSTINC ? A(r) : ea_addr<K, SZ>(r);
        for (int i = 0; i < 16; ++i) {
            if (!(mask & (1u << i))) continue;
            uint32_t v = SZ == 2 ? m68k_read16_signed(a) : m68k_read32(a);
            a += SZ;
            // (An)+ follows the running address, so a loaded An stands only when it is the
            // last register transferred.
            if constexpr (K == K_POSTINC) A(r) = a;
            if (i < 8) D(i) = v;
            else A(i - 8) = v;
        }
        constexpr int base = (K == K_IND || K == K_POSTINC) ? 12
                             : (K == K_D16 || K == K_ABSW || K == K_PCD16) ? 16
                             : (K == K_IDX || K == K_PCIDX) ? 18 : 20;
        charge(base + per_register);
    }
}

template <int KIND, int RX> void op_exg(uint32_t op) {
    uint32_t ry = op & 7;
    uint32_t& x = KIND == 1 ? A(RX) : D(RX);
    uint32_t& y = KIND == 0 ? D(ry) : A(ry);
    uint32_t t = x;
    x = y;
    y = t;
    charge(6);
}

inline void op_swap(uint32_t op) {
    uint32_t r = op & 7;
    uint32_t v = (D(r) << 16) | (D(r) >> 16);
    D(r) = v;
    logic_flags<4>(v);
    charge(4);
}

inline void op_ext_w(uint32_t op) {
    uint32_t r = op & 7;
    uint32_t v = sext8(D(r)) & 0xFFFF;
    set_d<2>(r, v);
    logic_flags<2>(v);
    charge(4);
}

inline void op_ext_l(uint32_t op) {
    uint32_t r = op & 7;
    uint32_t v = sext16(D(r));
    D(r) = v;
    logic_flags<4>(v);
    charge(4);
}

inline void op_link(uint32_t op) {
    uint32_t r = op & 7;
    uint32_t disp = sext16(m68k_fetch16());
    uint32_t v = A(r);  // LINK A7 pushes the stack pointer as it was before the push
    A(7) -= 4;
    m68k_write32(A(7), v);
    A(r) = A(7);
    A(7) += disp;
    charge(16);
}

inline void op_unlk(uint32_t op) {
    uint32_t r = op & 7;
    A(7) = A(r);
    uint32_t v = m68k_read32(A(7));
    A(7) += 4;
    A(r) = v;
    charge(12);
}

inline void op_move_to_usp(uint32_t op) {
    if (!supervisor()) return m68k_privilege_violation();
    m68k_context.other_sp = A(op & 7);
    charge(4);
}

inline void op_move_from_usp(uint32_t op) {
    if (!supervisor()) return m68k_privilege_violation();
    A(op & 7) = m68k_context.other_sp;
    charge(4);
}

// ---------------------------------------------------------------------------------------------
// Arithmetic and logic.

// ADD, SUB, AND, OR, CMP <ea>,Dn.
template <int OPR, int SZ, int SK, int DR> void op_alu_to_dn(uint32_t op) {
    uint32_t s = ea_read<SK, SZ>(op & 7);
    uint32_t r = alu<OPR, SZ>(D(DR) & MASK<SZ>, s);
    if constexpr (OPR != OP_CMP) set_d<SZ>(DR, r);
    if constexpr (SZ != 4) {
        charge(SK == K_DN ? 4 : 8);
    } else {
        constexpr bool reg = SK == K_DN || SK == K_AN;
        charge(reg ? ((OPR == OP_CMP && SK == K_AN) ? 14 : 8) : SK == K_IMM ? 14 : 12);
    }
}

// ADD, SUB, AND, OR Dn,<ea> with a memory destination; EOR Dn,<ea> (Dn destination too).
template <int OPR, int SZ, int DK, int SR> void op_alu_to_ea(uint32_t op) {
    uint32_t loc = rmw_locate<DK, SZ>(op & 7);
    uint32_t d = rmw_read<DK, SZ>(loc);
    uint32_t r = alu<OPR, SZ>(d, D(SR) & MASK<SZ>);
    rmw_write<DK, SZ>(loc, r);
    if constexpr (DK == K_DN) charge(SZ == 4 ? 8 : 4);
    else charge(SZ == 4 ? 12 : 8);
}

// ADDA, SUBA, CMPA: word sources are sign-extended, the whole address register takes part.
template <int OPR, int SZ, int SK, int AR> void op_alu_an(uint32_t op) {
    uint32_t s = ea_read<SK, SZ>(op & 7);
    if constexpr (SZ == 2) s = sext16(s);
    if constexpr (OPR == OP_ADD) A(AR) += s;
    else if constexpr (OPR == OP_SUB) A(AR) -= s;
    else sub_flags<4, false, true>(A(AR), s);
    if constexpr (OPR == OP_CMP) charge(6 + ea_time<SK, SZ>());
    else if constexpr (SZ == 2) charge(8 + ea_time<SK, SZ>());
    else charge((SK == K_DN || SK == K_AN) ? 8 : SK == K_IMM ? 16 : 6 + ea_time<SK, SZ>());
}

// ORI, ANDI, SUBI, ADDI, EORI, CMPI #,<ea>.
template <int OPR, int SZ, int DK> void op_alu_immediate(uint32_t op) {
    uint32_t s = fetch_immediate<SZ>();
    uint32_t loc = rmw_locate<DK, SZ>(op & 7);
    uint32_t d = rmw_read<DK, SZ>(loc);
    uint32_t r = alu<OPR, SZ>(d, s);
    if constexpr (OPR != OP_CMP) rmw_write<DK, SZ>(loc, r);
    constexpr int ea = DK == K_DN ? 0 : ea_time<DK, SZ>();
    if constexpr (OPR == OP_CMP) charge(14 + ea);
    else if constexpr (SZ != 4 || OPR == OP_AND) charge(8 + ea);
    else charge(16 + ea);
}

// ADDQ, SUBQ #Q,<ea>; on An the whole register changes and no flag does.
template <int OPR, int SZ, int DK, int Q> void op_quick(uint32_t op) {
    uint32_t r = op & 7;
    if constexpr (DK == K_AN) {
        if constexpr (OPR == OP_ADD) A(r) += Q;
        else A(r) -= Q;
        charge(SZ == 4 ? 8 : 4);
    } else {
        uint32_t loc = rmw_locate<DK, SZ>(r);
        uint32_t d = rmw_read<DK, SZ>(loc);
        rmw_write<DK, SZ>(loc, alu<OPR, SZ>(d, Q));
        if constexpr (DK == K_DN) charge(SZ == 4 ? 8 : 4);
        else charge((SZ == 4 ? 12 : 8) + ea_time<DK, SZ>());
    }
}

// ADDX, SUBX, ABCD, SBCD: Dy,Dx or -(Ay),-(Ax) (source first).
enum : int { X_ADDX, X_SUBX, X_ABCD, X_SBCD };

template <int XOP, int SZ> inline uint32_t extend_op(uint32_t d, uint32_t s) {
    if constexpr (XOP == X_ADDX) return add_flags<SZ, true>(d, s);
    else if constexpr (XOP == X_SUBX) return sub_flags<SZ, true>(d, s);
    else if constexpr (XOP == X_ABCD) return bcd_add(d, s);
    else return bcd_sub(d, s);
}

template <int XOP, int SZ, int RX, int MEM> void op_extend(uint32_t op) {
    uint32_t ry = op & 7;
    if constexpr (!MEM) {
        set_d<SZ>(RX, extend_op<XOP, SZ>(D(RX) & MASK<SZ>, D(ry) & MASK<SZ>));
        if constexpr (XOP == X_ABCD || XOP == X_SBCD) charge(6);
        else charge(SZ == 4 ? 8 : 4);
    } else {
        uint32_t s = mem_read<SZ>(ea_addr<K_PREDEC, SZ>(ry));
        uint32_t a = ea_addr<K_PREDEC, SZ>(RX);
        uint32_t d = mem_read<SZ>(a);
        mem_write<SZ>(a, extend_op<XOP, SZ>(d, s));
        charge(SZ == 4 ? 30 : 18);
    }
}

template <int SZ, int AX> void op_cmpm(uint32_t op) {
    uint32_t s = mem_read<SZ>(ea_addr<K_POSTINC, SZ>(op & 7));
    uint32_t d = mem_read<SZ>(ea_addr<K_POSTINC, SZ>(AX));
    sub_flags<SZ, false, true>(d, s);
    charge(SZ == 4 ? 20 : 12);
}

enum : int { U_CLR, U_NEG, U_NEGX, U_NOT };

// CLR reads its memory operand before writing it, as the processor does.
template <int UOP, int SZ, int K> void op_unary(uint32_t op) {
    uint32_t loc = rmw_locate<K, SZ>(op & 7);
    uint32_t v = rmw_read<K, SZ>(loc);
    uint32_t r;
    if constexpr (UOP == U_CLR) {
        r = 0;
        logic_flags<SZ>(0);
    } else if constexpr (UOP == U_NEG) {
        r = sub_flags<SZ>(0, v);
    } else if constexpr (UOP == U_NEGX) {
        r = sub_flags<SZ, true>(0, v);
    } else {
        r = ~v & MASK<SZ>;
        logic_flags<SZ>(r);
    }
    rmw_write<K, SZ>(loc, r);
    if constexpr (K == K_DN) charge(SZ == 4 ? 6 : 4);
    else charge((SZ == 4 ? 12 : 8) + ea_time<K, SZ>());
}

template <int SZ, int K> void op_tst(uint32_t op) {
    logic_flags<SZ>(ea_read<K, SZ>(op & 7));
    charge(4 + ea_time<K, SZ>());
}

template <int K> void op_nbcd(uint32_t op) {
    uint32_t loc = rmw_locate<K, 1>(op & 7);
    uint32_t v = rmw_read<K, 1>(loc);
    rmw_write<K, 1>(loc, bcd_sub(0, v));
    charge(K == K_DN ? 6 : 8 + ea_time<K, 1>());
}

// TAS: an ordinary byte read and byte write; no locked bus cycle.
template <int K> void op_tas(uint32_t op) {
    uint32_t loc = rmw_locate<K, 1>(op & 7);
    uint32_t v = rmw_read<K, 1>(loc);
    logic_flags<1>(v);
    rmw_write<K, 1>(loc, v | 0x80);
    charge(K == K_DN ? 4 : 14 + ea_time<K, 1>());
}

template <int SK, int DR> void op_chk(uint32_t op) {
    int32_t bound = static_cast<int16_t>(ea_read<SK, 2>(op & 7));
    int32_t value = static_cast<int16_t>(D(DR));
    cc.vc = 0;
    cc.nz = static_cast<uint64_t>(int64_t{value});  // N: negative, Z: zero
    if (value < 0 || value > bound) {
        charge(ea_time<SK, 2>());
        m68k_exception(0x18, m68k_current_pc(), 40);
        return;
    }
    charge(10 + ea_time<SK, 2>());
}

template <int SIGNED, int SK, int DR> void op_mul(uint32_t op) {
    uint32_t s = ea_read<SK, 2>(op & 7);
    uint32_t r;
    if constexpr (SIGNED) r = static_cast<uint32_t>(int32_t(int16_t(s)) * int32_t(int16_t(D(DR))));
    else r = s * (D(DR) & 0xFFFF);
    D(DR) = r;
    logic_flags<4>(r);
    charge(70 + ea_time<SK, 2>());
}

template <int SIGNED, int SK, int DR> void op_div(uint32_t op) {
    uint32_t s = ea_read<SK, 2>(op & 7);
    constexpr int cost = SIGNED ? 158 : 144;
    if (s == 0) {
        logic_flags<4>(1);  // N, Z, V and C clear
        charge(ea_time<SK, 2>());
        m68k_exception(0x14, m68k_current_pc(), 40);
        return;
    }
    uint32_t dividend = D(DR);
    uint32_t quotient, remainder;
    bool overflow;
    if constexpr (SIGNED) {
        int64_t n = static_cast<int32_t>(dividend);
        int64_t d = static_cast<int16_t>(s);
        int64_t q = n / d;  // 64-bit: -2^31 / -1 cannot trap the host
        overflow = q < -32768 || q > 32767;
        quotient = static_cast<uint32_t>(q);
        remainder = static_cast<uint32_t>(n % d);
    } else {
        uint32_t q = dividend / s;
        overflow = q > 0xFFFF;
        quotient = q;
        remainder = dividend % s;
    }
    if (overflow) {
        set_nz<4>(1);
        set_vc(1, 0);
    } else {
        D(DR) = (remainder << 16) | (quotient & 0xFFFF);
        logic_flags<2>(quotient);
    }
    charge(cost + ea_time<SK, 2>());
}

// ---------------------------------------------------------------------------------------------
// Bit operations: on Dn the bit number is taken modulo 32 and all 32 bits take part, on memory
// modulo 8 on one byte.

enum : int { B_TST, B_CHG, B_CLR, B_SET };

template <int BOP, int K, bool STATIC> inline void bit_op(uint32_t r, uint32_t bit) {
    if constexpr (K == K_DN) {
        uint32_t m = 1u << (bit & 31);
        uint32_t v = D(r);
        set_z_only((v & m) == 0);
        if constexpr (BOP == B_CHG) D(r) = v ^ m;
        else if constexpr (BOP == B_CLR) D(r) = v & ~m;
        else if constexpr (BOP == B_SET) D(r) = v | m;
        constexpr int base = BOP == B_TST ? 6 : BOP == B_CLR ? 10 : 8;
        charge(base + (STATIC ? 4 : 0));
    } else {
        uint32_t m = 1u << (bit & 7);
        if constexpr (K == K_IMM) {
            set_z_only((fetch_immediate<1>() & m) == 0);
            charge(8);
        } else {
            uint32_t a = ea_addr<K, 1>(r);
            uint32_t v = m68k_read8(a);
            set_z_only((v & m) == 0);
            if constexpr (BOP == B_CHG) m68k_write8(a, v ^ m);
            else if constexpr (BOP == B_CLR) m68k_write8(a, v & ~m);
            else if constexpr (BOP == B_SET) m68k_write8(a, v | m);
            if constexpr (BOP == B_TST) {
                constexpr int c = K == K_ABSL ? 16 : K == K_PCD16 ? 12 : K == K_PCIDX ? 14 : 4;
                charge(c + (STATIC ? 4 : 0));
            } else {
                charge((K == K_ABSL ? 20 : 8) + (STATIC ? 4 : 0));
            }
        }
    }
}

template <int BOP, int BR, int K> void op_bit_dynamic(uint32_t op) { bit_op<BOP, K, false>(op & 7, D(BR)); }

template <int BOP, int K> void op_bit_static(uint32_t op) {
    uint32_t bit = m68k_fetch16() & 0xFF;
    bit_op<BOP, K, true>(op & 7, bit);
}

// ---------------------------------------------------------------------------------------------
// Shifts and rotates. Counts 0-63; by the operand width or more a shift leaves 0 (all sign bits
// for ASR); ROd rotates by the count modulo the width, ROXd modulo the width + 1.

enum : int { S_AS, S_LS, S_ROX, S_RO };

template <int SOP, int LEFT, int SZ> inline uint32_t shift(uint32_t v, uint32_t n) {
    constexpr uint32_t W = BITS<SZ>;
    constexpr uint32_t M = MASK<SZ>;
    uint32_t r = v;
    uint32_t over = 0, carry = 0;
    if (n == 0) {
        carry = SOP == S_ROX ? cc.x : 0;
    } else if constexpr (SOP == S_AS || SOP == S_LS) {
        if constexpr (LEFT) {
            r = n >= W ? 0 : static_cast<uint32_t>(uint64_t(v) << n) & M;
            carry = n <= W ? (v >> (W - n)) & 1 : 0;
            if constexpr (SOP == S_AS) {
                // V: the sign bit changed at some point during the shift.
                if (n >= W) {
                    over = v != 0;
                } else {
                    uint32_t top = M & ~static_cast<uint32_t>((uint64_t(1) << (W - 1 - n)) - 1);
                    over = (v & top) != 0 && (v & top) != top;
                }
            }
        } else if constexpr (SOP == S_AS) {
            uint32_t sign = msb<SZ>(v);
            if (n >= W) {
                r = sign ? M : 0;
                carry = sign;
            } else {
                r = static_cast<uint32_t>((int64_t(int32_t(v << (32 - W))) >> (32 - W)) >> n) & M;
                carry = (v >> (n - 1)) & 1;
            }
        } else {
            r = n >= W ? 0 : v >> n;
            carry = n <= W ? (v >> (n - 1)) & 1 : 0;
        }
        cc.x = carry;
    } else if constexpr (SOP == S_RO) {
        uint32_t k = n % W;
        if (k) r = LEFT ? ((v << k) | (v >> (W - k))) & M : ((v >> k) | (v << (W - k))) & M;
        carry = LEFT ? r & 1 : msb<SZ>(r);
    } else {
        uint32_t k = n % (W + 1);
        uint64_t full = (uint64_t(cc.x) << W) | v;
        constexpr uint64_t FM = (uint64_t(1) << (W + 1)) - 1;
        if (k) full = LEFT ? ((full << k) | (full >> (W + 1 - k))) & FM : ((full >> k) | (full << (W + 1 - k))) & FM;
        r = static_cast<uint32_t>(full) & M;
        carry = cc.x = static_cast<uint32_t>(full >> W) & 1;
    }
    set_vc(over, carry);
    set_nz<SZ>(r);
    return r;
}

// On a data register: COUNT_REG 0 with COUNT 1-8 as the immediate count, 1 with the count
// register number.
template <int SOP, int LEFT, int SZ, int COUNT_REG, int COUNT> void op_shift_reg(uint32_t op) {
    uint32_t r = op & 7;
    uint32_t n = COUNT_REG ? D(COUNT) & 63 : COUNT;
    set_d<SZ>(r, shift<SOP, LEFT, SZ>(D(r) & MASK<SZ>, n));
    charge((SZ == 4 ? 8 : 6) + 2 * static_cast<int32_t>(n));
}

template <int SOP, int LEFT, int K> void op_shift_mem(uint32_t op) {
    uint32_t a = ea_addr<K, 2>(op & 7);
    uint32_t v = m68k_read16(a);
    m68k_write16(a, shift<SOP, LEFT, 2>(v, 1));
    charge(8 + ea_time<K, 2>());
}

// ---------------------------------------------------------------------------------------------
// Program flow. Relative branches only move the fetch pointer; the next instruction checks it.

template <int COND, int K> void op_scc_ea(uint32_t op) {
    bool t = condition(COND);
    uint32_t v = t ? 0xFF : 0;
    if constexpr (K == K_DN) {
        set_d<1>(op & 7, v);
        charge(t ? 6 : 4);
    } else {
        uint32_t a = ea_addr<K, 1>(op & 7);
        m68k_read8(a);  // a memory-mapped register sees the read before the write
        m68k_write8(a, v);
        charge(8 + ea_time<K, 1>());
    }
}

// Bcc, BRA (condition 0) and BSR (condition 1); WIDE: 16-bit displacement (byte 0).
template <int COND, int WIDE> void op_branch(uint32_t op) {
    uintptr_t base = m68k_run.fetch_ptr;  // address of the opcode + 2
    int32_t disp = WIDE ? static_cast<int16_t>(m68k_fetch16()) : static_cast<int8_t>(op & 0xFF);
    if constexpr (COND == 1) {
        push32(m68k_current_pc());
        m68k_branch_to(base + disp);
        charge(18);
    } else if (COND == 0 || condition(COND)) {
        m68k_branch_to(base + disp);
        if constexpr (COND == 0 && !WIDE) {
            // BRA.S to itself, a program's idle loop: until the slice ends nothing but the count
            // changes (interrupts wait for the next slice), so the rounds that leave a count of
            // 0 or more are charged at once and this one ends the slice as the last would.
            const int32_t left = m68k_context.cycles_left;
            if (disp == -2 && left >= 10) m68k_context.cycles_left = left % 10;
        }
        charge(10);
    } else {
        charge(WIDE ? 12 : 8);
    }
}

template <int COND> void op_dbcc(uint32_t op) {
    uintptr_t base = m68k_run.fetch_ptr;
    int32_t disp = static_cast<int16_t>(m68k_fetch16());
    if (condition(COND)) return charge(12);
    uint32_t r = op & 7;
    uint32_t count = (D(r) - 1) & 0xFFFF;
    set_d<2>(r, count);
    if (count == 0xFFFF) return charge(14);
    m68k_branch_to(base + disp);
    charge(10);
}

template <int K> void op_jmp(uint32_t op) {
    uint32_t target = ea_addr<K, 4>(op & 7);
    if (!m68k_load_pc(target)) return;
    charge(K == K_IND ? 8 : K == K_ABSL ? 12 : (K == K_IDX || K == K_PCIDX) ? 14 : 10);
}

template <int K> void op_jsr(uint32_t op) {
    uint32_t target = ea_addr<K, 4>(op & 7);
    push32(m68k_current_pc());
    if (!m68k_load_pc(target)) return;
    charge(K == K_IND ? 16 : K == K_ABSL ? 20 : (K == K_IDX || K == K_PCIDX) ? 22 : 18);
}

inline void op_rts(uint32_t) {
    uint32_t pc = m68k_read32(A(7));
    A(7) += 4;
    if (!m68k_load_pc(pc)) return;
    charge(16);
}

inline void op_rtr(uint32_t) {
    uint32_t ccr = m68k_read16(A(7));
    uint32_t pc = m68k_read32(A(7) + 2);
    A(7) += 6;
    m68k_load_ccr(ccr & 0x1F);
    if (!m68k_load_pc(pc)) return;
    charge(20);
}

inline void op_rte(uint32_t) {
    if (!supervisor()) return m68k_privilege_violation();
    uint32_t sr = m68k_read16(A(7));
    uint32_t pc = m68k_read32(A(7) + 2);
    A(7) += 6;
    m68k_set_sr(sr);
    if (!m68k_load_pc(pc)) return;
    charge(20);
}

inline void op_nop(uint32_t) { charge(4); }

inline void op_trap(uint32_t op) { m68k_exception(0x80 + 4 * (op & 15), m68k_current_pc(), 34); }

inline void op_trapv(uint32_t) {
    if (m68k_flag_v()) m68k_exception(0x1C, m68k_current_pc(), 38);
    else charge(4);
}

inline void op_stop(uint32_t) {
    if (!supervisor()) return m68k_privilege_violation();
    m68k_set_sr(m68k_fetch16());
    m68k_context.stopped = 1;
    charge(4);
    m68k_end_slice(M68K_OK);
}

// RESET would reset the external devices; this machine has nothing listening to it.
inline void op_reset(uint32_t) {
    if (!supervisor()) return m68k_privilege_violation();
    charge(132);
}

// ---------------------------------------------------------------------------------------------
// Status register.

enum : int { L_OR, L_AND, L_EOR };

template <int LOP> inline uint32_t combine(uint32_t a, uint32_t b) {
    return LOP == L_OR ? a | b : LOP == L_AND ? a & b : a ^ b;
}

template <int LOP> void op_logic_ccr(uint32_t) {
    uint32_t imm = m68k_fetch16() & 0x1F;
    uint32_t ccr = combine<LOP>(m68k_get_sr() & 0x1F, imm);
    m68k_load_ccr(ccr);
    charge(20);
}

template <int LOP> void op_logic_sr(uint32_t) {
    if (!supervisor()) return m68k_privilege_violation();
    uint32_t imm = m68k_fetch16() & SR_MASK;
    m68k_set_sr(combine<LOP>(m68k_get_sr(), imm));
    charge(20);
}

template <int SK> void op_move_to_sr(uint32_t op) {
    if (!supervisor()) return m68k_privilege_violation();
    m68k_set_sr(ea_read<SK, 2>(op & 7));
    charge(12 + ea_time<SK, 2>());
}

template <int SK> void op_move_to_ccr(uint32_t op) {
    m68k_load_ccr(ea_read<SK, 2>(op & 7) & 0x1F);
    charge(12 + ea_time<SK, 2>());
}

// MOVE from SR is not privileged on the 68000. Its memory destination is read first.
template <int DK, int DR> void op_move_from_sr(uint32_t) {
    uint32_t sr = m68k_get_sr();
    if constexpr (DK == K_DN) {
        set_d<2>(DR, sr);
        charge(6);
    } else {
        uint32_t a = ea_addr<DK, 2>(DR);
        m68k_read16(a);
        m68k_write16(a, sr);
        charge(8 + ea_time<DK, 2>());
    }
}

}  // namespace m68k_ops
