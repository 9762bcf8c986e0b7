// The 68000 disassembler. The decoding follows the opcode map line by line (the top four bits
// of the opcode word), with the same rules for which addressing modes each instruction accepts
// as the machine's dispatch table, so that a word is shown as an instruction exactly when the
// processor would execute it as one.
#include "m68k/m68k_disasm.h"

#include <cstdarg>
#include <cstdio>

namespace {

// Addressing-mode kinds, in encoding order: modes 0-6, then mode 7 by register 0-4.
enum kind { DN, AN, IND, POSTINC, PREDEC, D16, IDX, ABSW, ABSL, PCD16, PCIDX, IMM, NO_KIND = -1 };

constexpr unsigned bit(int k) { return 1u << k; }
constexpr unsigned ALL = 0xFFF;
constexpr unsigned DATA = ALL & ~bit(AN);
constexpr unsigned ALTERABLE = bit(ABSL + 1) - 1;  // Dn to absolute long
constexpr unsigned DATA_ALTERABLE = DATA & ALTERABLE;
constexpr unsigned MEMORY_ALTERABLE = DATA_ALTERABLE & ~bit(DN);
constexpr unsigned CONTROL = bit(IND) | bit(D16) | bit(IDX) | bit(ABSW) | bit(ABSL) | bit(PCD16) | bit(PCIDX);

int kind_of(int mode, int reg) {
    if (mode < 7) return mode;
    return reg <= 4 ? ABSW + reg : NO_KIND;
}

bool allowed(unsigned modes, int k) { return k != NO_KIND && (modes & bit(k)); }

const char* const conditions[16] = {"t",  "f",  "hi", "ls", "cc", "cs", "ne", "eq",
                                    "vc", "vs", "pl", "mi", "ge", "lt", "gt", "le"};
const char* const size_suffix[3] = {".b", ".w", ".l"};
const int size_bytes[3] = {1, 2, 4};

// The words of one instruction, read in order; reading past the words given marks it short.
struct word_reader {
    uint32_t address;
    const uint16_t* words;
    int count;
    int used = 1;
    bool short_of_words = false;

    uint32_t next() {
        if (used >= count) {
            short_of_words = true;
            return 0;
        }
        return words[used++];
    }
    uint32_t next32() {
        uint32_t high = next();
        return (high << 16) | next();
    }
    // The address of the next extension word: the base of PC-relative operands.
    uint32_t next_address() const { return address + 2 * static_cast<uint32_t>(used); }
};

struct text_builder {
    char text[128];
    size_t length = 0;

    void add(const char* format, ...) __attribute__((format(printf, 2, 3))) {
        if (length >= sizeof text - 1) return;
        va_list args;
        va_start(args, format);
        int n = std::vsnprintf(text + length, sizeof text - length, format, args);
        va_end(args);
        if (n > 0) length += static_cast<size_t>(n);
        if (length > sizeof text - 1) length = sizeof text - 1;
    }
    // Unsigned numbers: below 10 in digits, otherwise hexadecimal with '$'.
    void number(uint32_t value) {
        if (value < 10) add("%u", value);
        else add("$%X", value);
    }
    void signed_number(int32_t value) {
        if (value < 0) add("-");
        number(value < 0 ? 0u - static_cast<uint32_t>(value) : static_cast<uint32_t>(value));
    }
};

struct decoder {
    word_reader in;
    text_builder out;
    uint32_t op;

    int mode() const { return (op >> 3) & 7; }
    int reg() const { return op & 7; }
    int rx() const { return (op >> 9) & 7; }
    int size_bits() const { return (op >> 6) & 3; }
    int ea_kind() const { return kind_of(mode(), reg()); }

    void index_operand(const char* base) {
        uint32_t ext = in.next();
        out.signed_number(static_cast<int8_t>(ext & 0xFF));
        out.add("(%s,%c%u.%c)", base, (ext & 0x8000) ? 'a' : 'd', (ext >> 12) & 7, (ext & 0x800) ? 'l' : 'w');
    }

    // Writes the operand of the effective address (mode, reg); size in bytes for an immediate.
    void ea(int mode, int reg, int size) {
        switch (kind_of(mode, reg)) {
            case DN: out.add("d%d", reg); break;
            case AN: out.add("a%d", reg); break;
            case IND: out.add("(a%d)", reg); break;
            case POSTINC: out.add("(a%d)+", reg); break;
            case PREDEC: out.add("-(a%d)", reg); break;
            case D16:
                out.signed_number(static_cast<int16_t>(in.next()));
                out.add("(a%d)", reg);
                break;
            case IDX: {
                char base[4];
                std::snprintf(base, sizeof base, "a%d", reg);
                index_operand(base);
                break;
            }
            case ABSW: out.add("$%X.w", in.next()); break;
            case ABSL: out.add("$%X.l", in.next32()); break;
            case PCD16: {
                uint32_t base = in.next_address();
                out.add("$%X(pc)", base + static_cast<uint32_t>(static_cast<int16_t>(in.next())));
                break;
            }
            case PCIDX: {
                uint32_t base = in.next_address();
                uint32_t ext = in.next();
                out.add("$%X(pc,%c%u.%c)", base + static_cast<uint32_t>(static_cast<int8_t>(ext & 0xFF)),
                        (ext & 0x8000) ? 'a' : 'd', (ext >> 12) & 7, (ext & 0x800) ? 'l' : 'w');
                break;
            }
            case IMM: immediate(size); break;
            default: break;
        }
    }
    void ea(int size) { ea(mode(), reg(), size); }

    void immediate(int size) {
        out.add("#");
        if (size == 4) out.number(in.next32());
        else out.number(in.next() & (size == 1 ? 0xFF : 0xFFFF));
    }

    void branch_target(int32_t displacement) {
        out.add("$%X", in.address + 2 + static_cast<uint32_t>(displacement));
    }

    // MOVEM's list: bit i is register i (d0-d7, a0-a7), reversed for -(An). Consecutive
    // registers of one bank become a range.
    void register_list(uint32_t mask, bool reversed) {
        if (mask == 0) {
            out.add("#0");
            return;
        }
        bool first = true;
        for (int r = 0; r < 16;) {
            auto in_list = [&](int n) { return (mask >> (reversed ? 15 - n : n)) & 1; };
            if (!in_list(r)) {
                ++r;
                continue;
            }
            int last = r;
            while (last + 1 < 16 && (last + 1) / 8 == r / 8 && in_list(last + 1)) ++last;
            out.add("%s%c%d", first ? "" : "/", r < 8 ? 'd' : 'a', r & 7);
            if (last > r) out.add("-%c%d", last < 8 ? 'd' : 'a', last & 7);
            first = false;
            r = last + 1;
        }
    }

    bool line0();
    bool move();
    bool line4();
    bool line4_misc();
    bool line5();
    bool line6();
    bool line7();
    bool alu_line();
    bool alu_pair_forms();
    bool lineE();
    bool decode();
};

bool decoder::line0() {
    const int k = ea_kind();
    if (k == NO_KIND) return false;
    const char* const bit_ops[4] = {"btst", "bchg", "bclr", "bset"};
    if (op & 0x100) {
        if (mode() == 1) {  // MOVEP: bit 7 register to memory, bit 6 long
            const char* size = (op & 0x40) ? ".l" : ".w";
            int16_t displacement = static_cast<int16_t>(in.next());
            out.add("movep%s ", size);
            if (op & 0x80) out.add("d%d,", rx());
            out.signed_number(displacement);
            out.add("(a%d)", reg());
            if (!(op & 0x80)) out.add(",d%d", rx());
            return true;
        }
        if (!allowed(size_bits() == 0 ? DATA : DATA_ALTERABLE, k)) return false;
        out.add("%s d%d,", bit_ops[size_bits()], rx());
        ea(1);
        return true;
    }
    const int which = rx();
    if (which == 4) {  // bit number in the extension word
        if (!allowed(size_bits() == 0 ? DATA & ~bit(IMM) : DATA_ALTERABLE, k)) return false;
        out.add("%s #", bit_ops[size_bits()]);
        out.number(in.next() & 0xFF);
        out.add(",");
        ea(1);
        return true;
    }
    const char* const names[8] = {"ori", "andi", "subi", "addi", nullptr, "eori", "cmpi", nullptr};
    if (!names[which]) return false;
    const bool logical = which == 0 || which == 1 || which == 5;
    if (logical && k == IMM) {  // to CCR (byte) or SR (word)
        if (size_bits() > 1) return false;
        out.add("%s ", names[which]);
        immediate(size_bits() == 0 ? 1 : 2);
        out.add(size_bits() == 0 ? ",ccr" : ",sr");
        return true;
    }
    if (size_bits() == 3 || !allowed(DATA_ALTERABLE, k)) return false;
    out.add("%s%s ", names[which], size_suffix[size_bits()]);
    immediate(size_bytes[size_bits()]);
    out.add(",");
    ea(1);
    return true;
}

bool decoder::move() {
    const int line = op >> 12;
    const int size = line == 1 ? 1 : line == 3 ? 2 : 4;
    const char* suffix = line == 1 ? ".b" : line == 3 ? ".w" : ".l";
    const int k = ea_kind(), dmode = (op >> 6) & 7, dreg = rx();
    if (k == NO_KIND || (size == 1 && k == AN)) return false;
    if (dmode == 1) {
        if (size == 1) return false;
        out.add("movea%s ", suffix);
        ea(size);
        out.add(",a%d", dreg);
        return true;
    }
    if (!allowed(DATA_ALTERABLE, kind_of(dmode, dreg))) return false;
    out.add("move%s ", suffix);
    ea(size);
    out.add(",");
    ea(dmode, dreg, size);
    return true;
}

bool decoder::line4() {
    const int k = ea_kind();
    if ((op & 0x1C0) == 0x1C0) {
        if (!allowed(CONTROL, k)) return false;
        out.add("lea ");
        ea(4);
        out.add(",a%d", rx());
        return true;
    }
    if ((op & 0x1C0) == 0x180) {
        if (!allowed(DATA, k)) return false;
        out.add("chk.w ");
        ea(2);
        out.add(",d%d", rx());
        return true;
    }
    if (op & 0x100) return false;
    const int s = size_bits();
    switch ((op >> 8) & 0xF) {
        case 0x0:
        case 0x2:
        case 0x4:
        case 0x6: {
            const int which = (op >> 9) & 3;
            if (s == 3) {  // move from SR, (68010 move from CCR), move to CCR, move to SR
                if (which == 1) return false;
                if (!allowed(which == 0 ? DATA_ALTERABLE : DATA, k)) return false;
                out.add("move.w ");
                if (which == 0) out.add("sr,");
                ea(2);
                if (which != 0) out.add(which == 2 ? ",ccr" : ",sr");
                return true;
            }
            if (!allowed(DATA_ALTERABLE, k)) return false;
            const char* const names[4] = {"negx", "clr", "neg", "not"};
            out.add("%s%s ", names[which], size_suffix[s]);
            ea(1);
            return true;
        }
        case 0x8:
            if (s == 0) {
                if (!allowed(DATA_ALTERABLE, k)) return false;
                out.add("nbcd ");
                ea(1);
                return true;
            }
            if (s == 1) {
                if (mode() == 0) {
                    out.add("swap d%d", reg());
                    return true;
                }
                if (!allowed(CONTROL, k)) return false;
                out.add("pea ");
                ea(4);
                return true;
            }
            if (mode() == 0) {
                out.add("ext%s d%d", s == 2 ? ".w" : ".l", reg());
                return true;
            }
            if (!allowed((CONTROL & ALTERABLE) | bit(PREDEC), k)) return false;
            {
                uint32_t mask = in.next();
                out.add("movem%s ", s == 2 ? ".w" : ".l");
                register_list(mask, k == PREDEC);
                out.add(",");
                ea(2);
            }
            return true;
        case 0xA:
            if (op == 0x4AFC) {
                out.add("illegal");
                return true;
            }
            if (!allowed(DATA_ALTERABLE, k)) return false;
            if (s == 3) out.add("tas ");
            else out.add("tst%s ", size_suffix[s]);
            ea(1);
            return true;
        case 0xC: {
            if (s < 2 || !allowed(CONTROL | bit(POSTINC), k)) return false;
            uint32_t mask = in.next();
            out.add("movem%s ", s == 2 ? ".w" : ".l");
            ea(2);
            out.add(",");
            register_list(mask, false);
            return true;
        }
        case 0xE:
            return line4_misc();
        default:
            return false;
    }
}

// 0x4E40-0x4EFF: TRAP, LINK, UNLK, MOVE USP, the one-word instructions, JSR and JMP.
bool decoder::line4_misc() {
    const int s = size_bits();
    if (s >= 2) {
        if (!allowed(CONTROL, ea_kind())) return false;
        out.add(s == 2 ? "jsr " : "jmp ");
        ea(4);
        return true;
    }
    if (s == 0) return false;
    switch (mode()) {
        case 0:
        case 1:
            out.add("trap #");
            out.number(op & 0xF);
            return true;
        case 2:
            out.add("link a%d,#", reg());
            out.signed_number(static_cast<int16_t>(in.next()));
            return true;
        case 3: out.add("unlk a%d", reg()); return true;
        case 4: out.add("move.l a%d,usp", reg()); return true;
        case 5: out.add("move.l usp,a%d", reg()); return true;
        case 6: {
            const char* const names[8] = {"reset", "nop", "stop", "rte", nullptr, "rts", "trapv", "rtr"};
            if (!names[reg()]) return false;
            out.add("%s", names[reg()]);
            if (reg() == 2) {
                out.add(" ");
                immediate(2);
            }
            return true;
        }
        default:
            return false;
    }
}

bool decoder::line5() {
    const int k = ea_kind();
    if (size_bits() == 3) {
        const int condition = (op >> 8) & 0xF;
        if (mode() == 1) {
            out.add("db%s d%d,", condition == 1 ? "ra" : conditions[condition], reg());
            branch_target(static_cast<int16_t>(in.next()));
            return true;
        }
        if (!allowed(DATA_ALTERABLE, k)) return false;
        out.add("s%s ", conditions[condition]);
        ea(1);
        return true;
    }
    if (!allowed(ALTERABLE, k) || (size_bits() == 0 && k == AN)) return false;
    const int quick = rx() == 0 ? 8 : rx();
    out.add("%s%s #%d,", (op & 0x100) ? "subq" : "addq", size_suffix[size_bits()], quick);
    ea(1);
    return true;
}

bool decoder::line6() {
    const int condition = (op >> 8) & 0xF;
    const char* name = condition == 0 ? "bra" : condition == 1 ? "bsr" : nullptr;
    if (name) out.add("%s", name);
    else out.add("b%s", conditions[condition]);
    // An 8-bit displacement of 0 announces a 16-bit one; every other value (0xFF included) is
    // the displacement itself.
    if ((op & 0xFF) == 0) {
        out.add(".w ");
        branch_target(static_cast<int16_t>(in.next()));
    } else {
        out.add(".s ");
        branch_target(static_cast<int8_t>(op & 0xFF));
    }
    return true;
}

bool decoder::line7() {
    if (op & 0x100) return false;
    out.add("moveq #");
    out.signed_number(static_cast<int8_t>(op & 0xFF));
    out.add(",d%d", rx());
    return true;
}

// Lines 8 (OR), 9 (SUB), B (CMP, EOR), C (AND), D (ADD).
bool decoder::alu_line() {
    const int line = op >> 12, k = ea_kind(), opmode = (op >> 6) & 7;
    const bool logical = line == 0x8 || line == 0xC;
    const char* name = line == 0x8 ? "or" : line == 0x9 ? "sub" : line == 0xB ? "cmp" : line == 0xC ? "and" : "add";
    if (opmode == 3 || opmode == 7) {
        if (logical) {  // DIVU, DIVS; MULU, MULS
            if (!allowed(DATA, k)) return false;
            out.add("%s%s.w ", line == 0x8 ? "div" : "mul", opmode == 7 ? "s" : "u");
            ea(2);
            out.add(",d%d", rx());
            return true;
        }
        if (k == NO_KIND) return false;  // ADDA, SUBA, CMPA
        out.add("%sa%s ", name, opmode == 3 ? ".w" : ".l");
        ea(opmode == 3 ? 2 : 4);
        out.add(",a%d", rx());
        return true;
    }
    const int s = opmode & 3;
    if (opmode < 3) {  // <ea>,Dn
        if (k == NO_KIND || (k == AN && (logical || s == 0))) return false;
        out.add("%s%s ", name, size_suffix[s]);
        ea(size_bytes[s]);
        out.add(",d%d", rx());
        return true;
    }
    if (line == 0xB) {
        if (mode() == 1) {
            out.add("cmpm%s (a%d)+,(a%d)+", size_suffix[s], reg(), rx());
            return true;
        }
        if (!allowed(DATA_ALTERABLE, k)) return false;
        out.add("eor%s d%d,", size_suffix[s], rx());
        ea(1);
        return true;
    }
    if (mode() <= 1) return alu_pair_forms();
    if (!allowed(MEMORY_ALTERABLE, k)) return false;
    out.add("%s%s d%d,", name, size_suffix[s], rx());
    ea(1);
    return true;
}

// Register-pair forms in the Dn,<ea> space: ABCD, SBCD, EXG, ADDX, SUBX.
bool decoder::alu_pair_forms() {
    const int line = op >> 12, opmode = (op >> 6) & 7;
    const bool memory = mode() == 1;
    const char* name = nullptr;
    const char* suffix = "";
    if (line == 0x8 || line == 0xC) {
        if (opmode == 5 || opmode == 6) {
            if (line == 0x8) return false;
            if (opmode == 5) out.add("exg %c%d,%c%d", memory ? 'a' : 'd', rx(), memory ? 'a' : 'd', reg());
            else if (memory) out.add("exg d%d,a%d", rx(), reg());
            else return false;
            return true;
        }
        name = line == 0x8 ? "sbcd" : "abcd";
    } else {
        name = line == 0x9 ? "subx" : "addx";
        suffix = size_suffix[opmode & 3];
    }
    if (memory) out.add("%s%s -(a%d),-(a%d)", name, suffix, reg(), rx());
    else out.add("%s%s d%d,d%d", name, suffix, reg(), rx());
    return true;
}

bool decoder::lineE() {
    const char* const types[4] = {"as", "ls", "rox", "ro"};
    const char direction = (op & 0x100) ? 'l' : 'r';
    if (size_bits() == 3) {  // memory, one bit; bit 11 belongs to later processors
        if ((op & 0x800) || !allowed(MEMORY_ALTERABLE, ea_kind())) return false;
        out.add("%s%c.w ", types[(op >> 9) & 3], direction);
        ea(2);
        return true;
    }
    out.add("%s%c%s ", types[(op >> 3) & 3], direction, size_suffix[size_bits()]);
    if (op & 0x20) out.add("d%d,d%d", rx(), reg());
    else out.add("#%d,d%d", rx() == 0 ? 8 : rx(), reg());
    return true;
}

bool decoder::decode() {
    switch (op >> 12) {
        case 0x0: return line0();
        case 0x1:
        case 0x2:
        case 0x3: return move();
        case 0x4: return line4();
        case 0x5: return line5();
        case 0x6: return line6();
        case 0x7: return line7();
        case 0xA:
        case 0xF: return false;  // line A and line F
        case 0xE: return lineE();
        default: return alu_line();
    }
}

}  // namespace

int m68k_disassemble(uint32_t address, const uint16_t* words, int word_count, char* text, size_t text_size) {
    if (text_size > 0) text[0] = 0;
    if (word_count < 1 || !words) return 0;
    decoder d{{address, words, word_count}, {}, words[0]};
    int length = 1;
    if (d.decode() && !d.in.short_of_words) {
        length = d.in.used;
    } else {
        d.out.length = 0;
        d.out.add("dc.w $%04X", words[0]);
    }
    if (text_size > 0) std::snprintf(text, text_size, "%s", d.out.text);
    return length;
}
