// Build-time generator of the 68000 dispatch data.
//
// Decodes every opcode word into the handler that serves it, named as a template instantiation
// of m68k_ops.h. Opcodes whose names are equal share one handler: a handler fixes everything
// except the fields it decodes at run time (normally the register in bits 2-0). Writes:
//   <out>/m68k_handlers_<k>.cpp  the handler array in PARTS equal units, so that the
//                                instantiations compile in parallel
//   <out>/m68k_dispatch.cpp      the packed dispatch table and the list of parts
//   <out>/m68k_dispatch_stats.txt  handler and group counts
//
// Packed format: groups starting with a 16-bit control word; 0xC000|N copies N references,
// 0x8000|N repeats each of N references 8 times, anything else is a run of one reference
// repeated CW times; references are 32-bit handler indices; 0xFFFFFFFF after a group ends it.
//
// (This file is a host tool, not part of the core; its .cc suffix keeps it out of the core's
// source glob.)
#include <cstdint>
#include <cstdio>
#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

namespace {

enum Kind { DN, AN, IND, POSTINC, PREDEC, D16, IDX, ABSW, ABSL, PCD16, PCIDX, IMM, NONE = -1 };

const char* kind_name(int k) {
    static const char* names[] = {"K_DN",  "K_AN",   "K_IND",  "K_POSTINC", "K_PREDEC", "K_D16",
                                  "K_IDX", "K_ABSW", "K_ABSL", "K_PCD16",   "K_PCIDX",  "K_IMM"};
    return names[k];
}

int kind_of(int mode, int reg) {
    if (mode < 7) return mode;
    switch (reg) {
    case 0: return ABSW;
    case 1: return ABSL;
    case 2: return PCD16;
    case 3: return PCIDX;
    case 4: return IMM;
    default: return NONE;
    }
}

bool is_data(int k) { return k != NONE && k != AN; }
bool is_alterable(int k) { return k >= DN && k <= ABSL; }
bool is_data_alterable(int k) { return is_alterable(k) && k != AN; }
bool is_memory_alterable(int k) { return k >= IND && k <= ABSL; }
bool is_control(int k) { return k == IND || (k >= D16 && k <= PCIDX); }

std::string T(const std::string& name, std::initializer_list<std::string> args) {
    std::string s = "m68k_ops::" + name + "<";
    bool first = true;
    for (const auto& a : args) {
        if (!first) s += ",";
        s += a;
        first = false;
    }
    return s + ">";
}
std::string N(int v) { return std::to_string(v); }
std::string K(int k) { return std::string("m68k_ops::") + kind_name(k); }

const std::string ILLEGAL = "m68k_op_illegal";

std::string size_of(int bits) { return bits == 0 ? "1" : bits == 1 ? "2" : "4"; }

std::string decode_line0(int op, int mode, int k) {
    int size_bits = (op >> 6) & 3;
    if (op & 0x100) {
        int dn = (op >> 9) & 7;
        if (mode == 1) {  // MOVEP: opmode 100/101 memory to register, 110/111 register to memory
            int dir = (op >> 7) & 1;
            int size = (op >> 6) & 1 ? 4 : 2;
            return T("op_movep", {N(dir), N(size), N(dn)});
        }
        int bop = size_bits;
        bool ok = bop == 0 ? (is_data(k)) : is_data_alterable(k);
        if (!ok) return ILLEGAL;
        return T("op_bit_dynamic", {N(bop), N(dn), K(k)});
    }
    int which = (op >> 9) & 7;
    if (which == 4) {  // static bit operations
        int bop = size_bits;
        bool ok = bop == 0 ? (is_data(k) && k != IMM) : is_data_alterable(k);
        if (!ok) return ILLEGAL;
        return T("op_bit_static", {N(bop), K(k)});
    }
    if (which == 7) return ILLEGAL;
    // ORI, ANDI, SUBI, ADDI, EORI, CMPI
    static const int ops[] = {/*ORI*/ 3, /*ANDI*/ 2, /*SUBI*/ 1, /*ADDI*/ 0, -1, /*EORI*/ 4, /*CMPI*/ 5};
    static const int logic[] = {0, 1, -1, -1, -1, 2, -1};  // L_OR, L_AND, L_EOR
    if (logic[which] >= 0 && k == IMM) {
        if (size_bits == 0) return T("op_logic_ccr", {N(logic[which])});
        if (size_bits == 1) return T("op_logic_sr", {N(logic[which])});
        return ILLEGAL;
    }
    if (size_bits == 3 || !is_data_alterable(k)) return ILLEGAL;
    return T("op_alu_immediate", {N(ops[which]), size_of(size_bits), K(k)});
}

std::string decode_move(int op, int k) {
    int line = op >> 12;
    std::string size = line == 1 ? "1" : line == 3 ? "2" : "4";
    int dreg = (op >> 9) & 7, dmode = (op >> 6) & 7;
    if (k == NONE) return ILLEGAL;
    if (line == 1 && k == AN) return ILLEGAL;
    if (dmode == 1) {
        if (line == 1) return ILLEGAL;
        return T("op_movea", {size, K(k), N(dreg)});
    }
    int dk = kind_of(dmode, dreg);
    if (!is_data_alterable(dk)) return ILLEGAL;
    return T("op_move", {size, K(k), K(dk), N(dk >= ABSW ? 0 : dreg)});
}

std::string decode_line4(int op, int mode, int reg, int k) {
    int size_bits = (op >> 6) & 3;
    int rx = (op >> 9) & 7;
    if ((op & 0x1C0) == 0x1C0) {  // LEA
        if (!is_control(k)) return ILLEGAL;
        return T("op_lea_to", {K(k), N(rx)});
    }
    if ((op & 0x1C0) == 0x180) {  // CHK.W
        if (!is_data(k)) return ILLEGAL;
        return T("op_chk", {K(k), N(rx)});
    }
    if (op & 0x100) return ILLEGAL;
    switch ((op >> 8) & 0xF) {
    case 0x0:
        if (size_bits == 3) {
            if (!is_data_alterable(k)) return ILLEGAL;
            return T("op_move_from_sr", {K(k), N(k >= ABSW ? 0 : reg)});
        }
        if (!is_data_alterable(k)) return ILLEGAL;
        return T("op_unary", {"m68k_ops::U_NEGX", size_of(size_bits), K(k)});
    case 0x2:
        if (size_bits == 3 || !is_data_alterable(k)) return ILLEGAL;
        return T("op_unary", {"m68k_ops::U_CLR", size_of(size_bits), K(k)});
    case 0x4:
        if (size_bits == 3) return is_data(k) ? T("op_move_to_ccr", {K(k)}) : ILLEGAL;
        if (!is_data_alterable(k)) return ILLEGAL;
        return T("op_unary", {"m68k_ops::U_NEG", size_of(size_bits), K(k)});
    case 0x6:
        if (size_bits == 3) return is_data(k) ? T("op_move_to_sr", {K(k)}) : ILLEGAL;
        if (!is_data_alterable(k)) return ILLEGAL;
        return T("op_unary", {"m68k_ops::U_NOT", size_of(size_bits), K(k)});
    case 0x8:
        if (size_bits == 0) return is_data_alterable(k) ? T("op_nbcd", {K(k)}) : ILLEGAL;
        if (size_bits == 1) {
            if (mode == 0) return "m68k_ops::op_swap";
            return is_control(k) ? T("op_pea", {K(k)}) : ILLEGAL;
        }
        if (mode == 0) return size_bits == 2 ? "m68k_ops::op_ext_w" : "m68k_ops::op_ext_l";
        if (is_control(k) && is_alterable(k)) return T("op_movem", {"0", size_bits == 2 ? "2" : "4", K(k)});
        if (k == PREDEC) return T("op_movem", {"0", size_bits == 2 ? "2" : "4", K(k)});
        return ILLEGAL;
    case 0xA:
        if (op == 0x4AFC) return "m68k_op_illegal_instruction";
        if (size_bits == 3) return is_data_alterable(k) ? T("op_tas", {K(k)}) : ILLEGAL;
        if (!is_data_alterable(k)) return ILLEGAL;
        return T("op_tst", {size_of(size_bits), K(k)});
    case 0xC:
        if (size_bits < 2) return ILLEGAL;
        if (is_control(k) || k == POSTINC) return T("op_movem", {"1", size_bits == 2 ? "2" : "4", K(k)});
        return ILLEGAL;
    case 0xE:
        if (size_bits == 1) {
            switch ((op >> 3) & 7) {
            case 0: case 1: return "m68k_ops::op_trap";
            case 2: return "m68k_ops::op_link";
            case 3: return "m68k_ops::op_unlk";
            case 4: return "m68k_ops::op_move_to_usp";
            case 5: return "m68k_ops::op_move_from_usp";
            case 6:
                switch (op & 7) {
                case 0: return "m68k_ops::op_reset";
                case 1: return "m68k_ops::op_nop";
                case 2: return "m68k_ops::op_stop";
                case 3: return "m68k_ops::op_rte";
                case 5: return "m68k_ops::op_rts";
                case 6: return "m68k_ops::op_trapv";
                case 7: return "m68k_ops::op_rtr";
                default: return ILLEGAL;
                }
            default: return ILLEGAL;
            }
        }
        if (size_bits == 2) return is_control(k) ? T("op_jsr", {K(k)}) : ILLEGAL;
        if (size_bits == 3) return is_control(k) ? T("op_jmp", {K(k)}) : ILLEGAL;
        return ILLEGAL;
    default:
        return ILLEGAL;
    }
}

std::string decode_line5(int op, int mode, int k) {
    int size_bits = (op >> 6) & 3;
    if (size_bits == 3) {
        int cond = (op >> 8) & 0xF;
        if (mode == 1) return T("op_dbcc", {N(cond)});
        if (!is_data_alterable(k)) return ILLEGAL;
        return T("op_scc_ea", {N(cond), K(k)});
    }
    if (!is_alterable(k) || (size_bits == 0 && k == AN)) return ILLEGAL;
    int q = (op >> 9) & 7;
    if (q == 0) q = 8;
    std::string opr = (op & 0x100) ? "m68k_ops::OP_SUB" : "m68k_ops::OP_ADD";
    // ADDQ/SUBQ to An: the size only decides the cost (word or long), never the width.
    return T("op_quick", {opr, size_of(size_bits), K(k), N(q)});
}

// OR/SUB/CMP-EOR/AND/ADD lines: 8, 9, B, C, D.
std::string decode_alu_line(int op, int mode, int k) {
    int line = op >> 12;
    int rx = (op >> 9) & 7;
    int opmode = (op >> 6) & 7;
    std::string opr = line == 0x8 ? "m68k_ops::OP_OR"
                      : line == 0x9 ? "m68k_ops::OP_SUB"
                      : line == 0xB ? "m68k_ops::OP_CMP"
                      : line == 0xC ? "m68k_ops::OP_AND"
                                    : "m68k_ops::OP_ADD";
    bool logical = line == 0x8 || line == 0xC;
    if (opmode == 3 || opmode == 7) {
        if (logical) {  // DIVU/DIVS, MULU/MULS
            if (!is_data(k)) return ILLEGAL;
            std::string name = line == 0x8 ? "op_div" : "op_mul";
            return T(name, {opmode == 7 ? "1" : "0", K(k), N(rx)});
        }
        if (k == NONE) return ILLEGAL;  // ADDA, SUBA, CMPA
        return T("op_alu_an", {opr, opmode == 3 ? "2" : "4", K(k), N(rx)});
    }
    std::string size = size_of(opmode & 3);
    if (opmode < 3) {  // <ea>,Dn
        if (k == NONE) return ILLEGAL;
        if (k == AN && (logical || opmode == 0)) return ILLEGAL;
        return T("op_alu_to_dn", {opr, size, K(k), N(rx)});
    }
    // opmode 4-6: Dn,<ea> or the register/memory-pair forms
    if (line == 0xB) {
        if (mode == 1) return T("op_cmpm", {size, N(rx)});
        if (!is_data_alterable(k)) return ILLEGAL;
        return T("op_alu_to_ea", {"m68k_ops::OP_EOR", size, K(k), N(rx)});
    }
    if (mode <= 1) {
        bool mem = mode == 1;
        if (line == 0x8 || line == 0xC) {
            if (opmode == 4) {
                return T("op_extend", {line == 0x8 ? "m68k_ops::X_SBCD" : "m68k_ops::X_ABCD", "1", N(rx), mem ? "1" : "0"});
            }
            if (line == 0xC) {  // EXG
                if (opmode == 5) return T("op_exg", {mem ? "1" : "0", N(rx)});
                if (opmode == 6 && mem) return T("op_exg", {"2", N(rx)});
            }
            return ILLEGAL;
        }
        return T("op_extend", {line == 0x9 ? "m68k_ops::X_SUBX" : "m68k_ops::X_ADDX", size, N(rx), mem ? "1" : "0"});
    }
    if (!is_memory_alterable(k)) return ILLEGAL;
    return T("op_alu_to_ea", {opr, size, K(k), N(rx)});
}

std::string decode_lineE(int op, int k) {
    int size_bits = (op >> 6) & 3;
    int left = (op >> 8) & 1;
    if (size_bits == 3) {
        if (op & 0x800) return ILLEGAL;  // bit-field space of later processors
        if (!is_memory_alterable(k)) return ILLEGAL;
        return T("op_shift_mem", {N((op >> 9) & 3), N(left), K(k)});
    }
    int type = (op >> 3) & 3;
    int count_reg = (op >> 5) & 1;
    int count = (op >> 9) & 7;
    if (!count_reg && count == 0) count = 8;
    return T("op_shift_reg", {N(type), N(left), size_of(size_bits), N(count_reg), N(count)});
}

std::string decode(int op) {
    int mode = (op >> 3) & 7, reg = op & 7;
    int k = kind_of(mode, reg);
    switch (op >> 12) {
    case 0x0: return k == NONE ? ILLEGAL : decode_line0(op, mode, k);
    case 0x1: case 0x2: case 0x3: return decode_move(op, k);
    case 0x4: return decode_line4(op, mode, reg, k);
    case 0x5: return decode_line5(op, mode, k);
    case 0x6: return T("op_branch", {N((op >> 8) & 0xF), (op & 0xFF) == 0 ? "1" : "0"});
    case 0x7: return (op & 0x100) ? ILLEGAL : T("op_moveq", {N((op >> 9) & 7)});
    case 0xA: return "m68k_op_line_a";
    case 0xE: return decode_lineE(op, k);
    case 0xF: return "m68k_op_line_f";
    default: return decode_alu_line(op, mode, k);
    }
}

struct Packed {
    std::vector<uint16_t> words;
    int runs = 0, repeats = 0, copies = 0;

    void reference(uint32_t index) {
        words.push_back(static_cast<uint16_t>(index & 0xFFFF));
        words.push_back(static_cast<uint16_t>(index >> 16));
    }
};

// Greedy packing: long runs become runs; stretches whose blocks of eight are uniform become
// repeat-by-eight groups; everything else is copied.
Packed pack(const std::vector<uint32_t>& table) {
    Packed p;
    const size_t n = table.size();
    auto run_length = [&](size_t i) {
        size_t j = i;
        while (j < n && table[j] == table[i] && j - i < 0x7FFF) ++j;
        return j - i;
    };
    auto uniform_block = [&](size_t i) {
        if (i % 8 != 0 || i + 8 > n) return false;
        for (size_t j = 1; j < 8; ++j)
            if (table[i + j] != table[i]) return false;
        return true;
    };
    // A uniform block that begins a long run is better left to the run.
    auto starts_long_run = [&](size_t i) { return run_length(i) >= 16; };
    std::vector<uint32_t> pending;
    auto flush_copies = [&] {
        size_t at = 0;
        while (at < pending.size()) {
            size_t count = std::min<size_t>(pending.size() - at, 0x3FF);
            p.words.push_back(static_cast<uint16_t>(0xC000 | count));
            for (size_t j = 0; j < count; ++j) p.reference(pending[at + j]);
            ++p.copies;
            at += count;
        }
        pending.clear();
    };
    size_t i = 0;
    while (i < n) {
        size_t run = run_length(i);
        if (run >= 16 || (run >= 3 && !uniform_block(i))) {
            flush_copies();
            p.words.push_back(static_cast<uint16_t>(run));
            p.reference(table[i]);
            ++p.runs;
            i += run;
            continue;
        }
        if (uniform_block(i) && uniform_block(i + 8) && !starts_long_run(i)) {
            flush_copies();
            std::vector<uint32_t> refs;
            while (i < n && uniform_block(i) && !starts_long_run(i) && refs.size() < 0x7FF) {
                refs.push_back(table[i]);
                i += 8;
            }
            p.words.push_back(static_cast<uint16_t>(0x8000 | refs.size()));
            for (uint32_t r : refs) p.reference(r);
            ++p.repeats;
            continue;
        }
        pending.push_back(table[i]);
        ++i;
    }
    flush_copies();
    p.reference(0xFFFFFFFF);
    return p;
}

void write_file(const std::string& path, const std::string& text) {
    // Only rewrite on change, so a regenerated but identical unit does not recompile.
    std::ifstream in(path, std::ios::binary);
    if (in) {
        std::stringstream old;
        old << in.rdbuf();
        if (old.str() == text) return;
    }
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out << text;
    if (!out) {
        std::fprintf(stderr, "m68k_tablegen: cannot write %s\n", path.c_str());
        std::exit(1);
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: m68k_tablegen OUTPUT_DIR PARTS\n");
        return 1;
    }
    std::string dir = argv[1];
    int parts = std::atoi(argv[2]);

    std::vector<std::string> handlers;
    std::map<std::string, uint32_t> index_of;
    std::vector<uint32_t> table(0x10000);
    for (int op = 0; op < 0x10000; ++op) {
        std::string name = decode(op);
        auto it = index_of.find(name);
        if (it == index_of.end()) it = index_of.emplace(name, static_cast<uint32_t>(handlers.size())).first, handlers.push_back(name);
        table[op] = it->second;
    }
    if (parts < 1 || parts > 64) {
        std::fprintf(stderr, "m68k_tablegen: %d parts asked for, 1 to 64 allowed\n", parts);
        return 1;
    }
    const size_t part_size = (handlers.size() + parts - 1) / parts;

    for (int part = 0; part < parts; ++part) {
        std::string s = "// Generated by m68k_tablegen: handler part " + std::to_string(part) + ".\n";
        s += "#include \"m68k/m68k_ops.h\"\n\n";
        s += "extern const m68k_handler m68k_handlers_" + std::to_string(part) + "[];\n";
        s += "const m68k_handler m68k_handlers_" + std::to_string(part) + "[] = {\n";
        for (size_t h = part * part_size; h < handlers.size() && h < (part + 1) * part_size; ++h)
            s += "    " + handlers[h] + ",\n";
        s += "};\n";
        write_file(dir + "/m68k_handlers_" + std::to_string(part) + ".cpp", s);
    }

    Packed packed = pack(table);
    std::string s = "// Generated by m68k_tablegen: the packed 68000 dispatch table.\n";
    s += "#include \"m68k/m68k_internal.h\"\n\n";
    for (int part = 0; part < parts; ++part) s += "extern const m68k_handler m68k_handlers_" + std::to_string(part) + "[];\n";
    s += "const m68k_handler* const m68k_handler_parts[] = {";
    for (int part = 0; part < parts; ++part) s += (part ? ", " : "") + std::string("m68k_handlers_") + std::to_string(part);
    s += "};\n";
    s += "const uint32_t m68k_handler_part_size = " + std::to_string(part_size) + ";\n";
    s += "const uint32_t m68k_handler_count = " + std::to_string(handlers.size()) + ";\n";
    s += "const uint32_t m68k_packed_dispatch_words = " + std::to_string(packed.words.size()) + ";\n";
    s += "const uint16_t m68k_packed_dispatch[] = {";
    for (size_t i = 0; i < packed.words.size(); ++i) {
        if (i % 12 == 0) s += "\n   ";
        char buf[16];
        std::snprintf(buf, sizeof buf, " 0x%04X,", packed.words[i]);
        s += buf;
    }
    s += "\n};\n";
    write_file(dir + "/m68k_dispatch.cpp", s);

    char stats[256];
    std::snprintf(stats, sizeof stats, "handlers %zu\nruns %d\nrepeat_by_eight %d\ncopies %d\nbytes %zu\n", handlers.size(), packed.runs,
                  packed.repeats, packed.copies, packed.words.size() * 2);
    write_file(dir + "/m68k_dispatch_stats.txt", stats);
    return 0;
}
