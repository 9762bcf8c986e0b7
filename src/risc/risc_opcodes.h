// The RISC instruction set of the GPU and the DSP, as the processor manual lists it: one line per
// opcode with its number, mnemonic and operand form. The two processors share 58 opcodes; the DSP
// gives six numbers (32, 33, 42, 48, 62, 63) a meaning of its own or none.
//
// An instruction word is 16 bits: opcode in bits 15-10, the first field (a source register, a
// 5-bit immediate or a jr displacement) in bits 9-5, the second field (the destination register,
// or a jump condition) in bits 4-0. movei is followed by its 32-bit operand, low word first.
//
// Offers: the processor enum, the operand forms and both opcode tables, read by the execution
// engine and the disassembler. Needs: nothing.
#pragma once

#include <array>
#include <cstdint>

enum risc_processor { RISC_GPU = 0, RISC_DSP = 1 };

// Operand forms, written as the manual writes them; n is the first field, Rs the register it
// names, Rd the register the second field names.
enum risc_form : uint8_t {
    FORM_RS_RD,         // op Rs,Rd
    FORM_Q_RD,          // op #q,Rd         q = n, or 32 for n = 0
    FORM_S_RD,          // cmpq #s,Rd       s = n as signed 5 bits (-16..15)
    FORM_N_RD,          // op #n,Rd         n = 0..31
    FORM_SHLQ_RD,       // shlq #k,Rd       the field holds 32 - k
    FORM_RD,            // op Rd
    FORM_IMM32_RD,      // movei #imm32,Rd  two operand words follow, low word first
    FORM_LOAD_RS,       // op (Rs),Rd
    FORM_LOAD_R14_Q,    // load (R14+q),Rd  q counts longs: 4 to 128 bytes past R14
    FORM_LOAD_R15_Q,    // load (R15+q),Rd
    FORM_LOAD_R14_RS,   // load (R14+Rs),Rd
    FORM_LOAD_R15_RS,   // load (R15+Rs),Rd
    FORM_STORE_RS,      // op Rd,(Rs)
    FORM_STORE_R14_Q,   // store Rd,(R14+q)
    FORM_STORE_R15_Q,   // store Rd,(R15+q)
    FORM_STORE_R14_RS,  // store Rd,(R14+Rs)
    FORM_STORE_R15_RS,  // store Rd,(R15+Rs)
    FORM_PC_RD,         // move PC,Rd
    FORM_JUMP,          // jump cc,(Rs)
    FORM_JR,            // jr cc,target     target = address + 2 + 2 * (n as signed 5 bits)
    FORM_PACK,          // pack Rd (n = 0) or unpack Rd (n != 0)
    FORM_NONE,          // nop
    FORM_INVALID,       // DSP only: the word does nothing but report itself
};

struct risc_opcode {
    uint8_t number;
    const char* mnemonic;
    risc_form form;
};

inline constexpr std::array<risc_opcode, 64> risc_gpu_opcodes = {{
    {0, "add", FORM_RS_RD},
    {1, "addc", FORM_RS_RD},
    {2, "addq", FORM_Q_RD},
    {3, "addqt", FORM_Q_RD},
    {4, "sub", FORM_RS_RD},
    {5, "subc", FORM_RS_RD},
    {6, "subq", FORM_Q_RD},
    {7, "subqt", FORM_Q_RD},
    {8, "neg", FORM_RD},
    {9, "and", FORM_RS_RD},
    {10, "or", FORM_RS_RD},
    {11, "xor", FORM_RS_RD},
    {12, "not", FORM_RD},
    {13, "btst", FORM_N_RD},
    {14, "bset", FORM_N_RD},
    {15, "bclr", FORM_N_RD},
    {16, "mult", FORM_RS_RD},
    {17, "imult", FORM_RS_RD},
    {18, "imultn", FORM_RS_RD},
    {19, "resmac", FORM_RD},
    {20, "imacn", FORM_RS_RD},
    {21, "div", FORM_RS_RD},
    {22, "abs", FORM_RD},
    {23, "sh", FORM_RS_RD},
    {24, "shlq", FORM_SHLQ_RD},
    {25, "shrq", FORM_Q_RD},
    {26, "sha", FORM_RS_RD},
    {27, "sharq", FORM_Q_RD},
    {28, "ror", FORM_RS_RD},
    {29, "rorq", FORM_Q_RD},
    {30, "cmp", FORM_RS_RD},
    {31, "cmpq", FORM_S_RD},
    {32, "sat8", FORM_RD},
    {33, "sat16", FORM_RD},
    {34, "move", FORM_RS_RD},
    {35, "moveq", FORM_N_RD},
    {36, "moveta", FORM_RS_RD},
    {37, "movefa", FORM_RS_RD},
    {38, "movei", FORM_IMM32_RD},
    {39, "loadb", FORM_LOAD_RS},
    {40, "loadw", FORM_LOAD_RS},
    {41, "load", FORM_LOAD_RS},
    {42, "loadp", FORM_LOAD_RS},
    {43, "load", FORM_LOAD_R14_Q},
    {44, "load", FORM_LOAD_R15_Q},
    {45, "storeb", FORM_STORE_RS},
    {46, "storew", FORM_STORE_RS},
    {47, "store", FORM_STORE_RS},
    {48, "storep", FORM_STORE_RS},
    {49, "store", FORM_STORE_R14_Q},
    {50, "store", FORM_STORE_R15_Q},
    {51, "move", FORM_PC_RD},
    {52, "jump", FORM_JUMP},
    {53, "jr", FORM_JR},
    {54, "mmult", FORM_RS_RD},
    {55, "mtoi", FORM_RS_RD},
    {56, "normi", FORM_RS_RD},
    {57, "nop", FORM_NONE},
    {58, "load", FORM_LOAD_R14_RS},
    {59, "load", FORM_LOAD_R15_RS},
    {60, "store", FORM_STORE_R14_RS},
    {61, "store", FORM_STORE_R15_RS},
    {62, "sat24", FORM_RD},
    {63, "pack", FORM_PACK},
}};

// The DSP's six differences from the GPU's table.
inline constexpr std::array<risc_opcode, 6> risc_dsp_differences = {{
    {32, "subqmod", FORM_INVALID},
    {33, "sat16s", FORM_RD},
    {42, "sat32s", FORM_RD},
    {48, "mirror", FORM_INVALID},
    {62, "(none)", FORM_INVALID},
    {63, "addqmod", FORM_Q_RD},
}};

constexpr std::array<risc_opcode, 64> risc_make_dsp_opcodes() {
    std::array<risc_opcode, 64> table = risc_gpu_opcodes;
    for (const risc_opcode& difference : risc_dsp_differences) table[difference.number] = difference;
    return table;
}

inline constexpr std::array<risc_opcode, 64> risc_dsp_opcodes = risc_make_dsp_opcodes();

constexpr const std::array<risc_opcode, 64>& risc_opcodes(risc_processor processor) {
    return processor == RISC_GPU ? risc_gpu_opcodes : risc_dsp_opcodes;
}

// Fields of an instruction word.
constexpr unsigned risc_opcode_of(uint16_t word) { return word >> 10; }
constexpr unsigned risc_first_field(uint16_t word) { return (word >> 5) & 31; }
constexpr unsigned risc_second_field(uint16_t word) { return word & 31; }

// The quick value q(n) (1..32) and the signed quick value s(n) (-16..15).
constexpr uint32_t risc_quick(unsigned n) { return n == 0 ? 32u : n; }
constexpr int32_t risc_signed_quick(unsigned n) { return n < 16 ? static_cast<int32_t>(n) : static_cast<int32_t>(n) - 32; }

// Each table's row i describes opcode i.
constexpr bool risc_table_in_order(const std::array<risc_opcode, 64>& table) {
    for (unsigned i = 0; i < table.size(); ++i)
        if (table[i].number != i) return false;
    return true;
}
static_assert(risc_table_in_order(risc_gpu_opcodes) && risc_table_in_order(risc_dsp_opcodes));
