// The disassembler: one case per operand form of the opcode tables. Immediates are printed as
// the instruction means them (a quick value of 32 for a field of 0, shlq's count 32 - n), jump
// targets as the absolute address jr reaches from `pc`.
#include "risc/risc_disasm.h"

#include <cstdio>

namespace {

// Condition names of jump and jr; other codes are printed as their number.
const char* risc_condition_name(unsigned code) {
    switch (code) {
        case 0: return "t";
        case 1: return "ne";
        case 2: return "eq";
        case 4: return "cc";
        case 5: return "hi";
        case 8: return "cs";
        case 20: return "pl";
        case 24: return "mi";
        default: return nullptr;
    }
}

struct risc_condition_text {
    char text[4];
};

risc_condition_text risc_condition(unsigned code) {
    risc_condition_text result{};
    if (const char* name = risc_condition_name(code))
        std::snprintf(result.text, sizeof result.text, "%s", name);
    else
        std::snprintf(result.text, sizeof result.text, "%u", code);
    return result;
}

}  // namespace

int risc_disassemble(risc_processor processor, uint32_t pc, const uint16_t words[3], char* text, size_t text_size) {
    const uint16_t word = words[0];
    const risc_opcode& op = risc_opcodes(processor)[risc_opcode_of(word)];
    const char* name = op.mnemonic;
    const unsigned n = risc_first_field(word);
    const unsigned d = risc_second_field(word);
    if (text_size == 0) return op.form == FORM_IMM32_RD ? 3 : 1;

    switch (op.form) {
        case FORM_RS_RD: std::snprintf(text, text_size, "%s r%u,r%u", name, n, d); break;
        case FORM_Q_RD: std::snprintf(text, text_size, "%s #%u,r%u", name, risc_quick(n), d); break;
        case FORM_S_RD: std::snprintf(text, text_size, "%s #%d,r%u", name, risc_signed_quick(n), d); break;
        case FORM_N_RD: std::snprintf(text, text_size, "%s #%u,r%u", name, n, d); break;
        case FORM_SHLQ_RD: std::snprintf(text, text_size, "%s #%u,r%u", name, 32 - n, d); break;
        case FORM_RD: std::snprintf(text, text_size, "%s r%u", name, d); break;
        case FORM_IMM32_RD: {
            const uint32_t value = words[1] | static_cast<uint32_t>(words[2]) << 16;
            std::snprintf(text, text_size, "%s #0x%X,r%u", name, value, d);
            return 3;
        }
        case FORM_LOAD_RS: std::snprintf(text, text_size, "%s (r%u),r%u", name, n, d); break;
        case FORM_LOAD_R14_Q: std::snprintf(text, text_size, "%s (r14+%u),r%u", name, risc_quick(n), d); break;
        case FORM_LOAD_R15_Q: std::snprintf(text, text_size, "%s (r15+%u),r%u", name, risc_quick(n), d); break;
        case FORM_LOAD_R14_RS: std::snprintf(text, text_size, "%s (r14+r%u),r%u", name, n, d); break;
        case FORM_LOAD_R15_RS: std::snprintf(text, text_size, "%s (r15+r%u),r%u", name, n, d); break;
        case FORM_STORE_RS: std::snprintf(text, text_size, "%s r%u,(r%u)", name, d, n); break;
        case FORM_STORE_R14_Q: std::snprintf(text, text_size, "%s r%u,(r14+%u)", name, d, risc_quick(n)); break;
        case FORM_STORE_R15_Q: std::snprintf(text, text_size, "%s r%u,(r15+%u)", name, d, risc_quick(n)); break;
        case FORM_STORE_R14_RS: std::snprintf(text, text_size, "%s r%u,(r14+r%u)", name, d, n); break;
        case FORM_STORE_R15_RS: std::snprintf(text, text_size, "%s r%u,(r15+r%u)", name, d, n); break;
        case FORM_PC_RD: std::snprintf(text, text_size, "%s pc,r%u", name, d); break;
        case FORM_JUMP: std::snprintf(text, text_size, "%s %s,(r%u)", name, risc_condition(d).text, n); break;
        case FORM_JR: {
            const uint32_t target = pc + 2 + 2 * static_cast<uint32_t>(risc_signed_quick(n));
            std::snprintf(text, text_size, "%s %s,0x%X", name, risc_condition(d).text, target);
            break;
        }
        case FORM_PACK: std::snprintf(text, text_size, "%s r%u", n == 0 ? "pack" : "unpack", d); break;
        case FORM_NONE: std::snprintf(text, text_size, "%s", name); break;
        case FORM_INVALID: std::snprintf(text, text_size, "dc.w 0x%04X", word); break;
    }
    return 1;
}
