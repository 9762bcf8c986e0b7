// Writing instruction traces.
#include "traces.h"

#include <algorithm>
#include <cstdio>

namespace {

// The written registers start in this column, or after a longer disassembly.
constexpr size_t M68K_REGISTERS_COLUMN = 70;
constexpr size_t RISC_REGISTERS_COLUMN = 56;
constexpr int RISC_MAX_INSTRUCTION_WORDS = 3;

const char* const m68k_register_names[M68K_TRACE_REGISTERS] = {
    "d0", "d1", "d2", "d3", "d4", "d5", "d6", "d7", "a0", "a1", "a2", "a3", "a4", "a5", "a6", "a7", "sr"};

// "68k 00004000  203C 0000 0010  move.l #$10,d0": the processor, the address, the instruction's
// words in a field of `slots` words, the disassembly; padded to `column` when registers follow.
std::string instruction_line(const char* processor, uint32_t pc, const uint16_t* words, int length, int slots,
                             const char* text, bool registers_follow, size_t column) {
    char field[24];
    std::snprintf(field, sizeof field, "%s %08X ", processor, pc);
    std::string line = field;
    for (int i = 0; i < slots; ++i) {
        std::snprintf(field, sizeof field, i < length ? " %04X" : "     ", words[i]);
        line += field;
    }
    line += "  ";
    line += text;
    if (registers_follow) line.resize(std::max(line.size(), column), ' ');
    return line;
}

void append_register(std::string& line, const char* name, const char* format, uint32_t value) {
    char field[24];
    std::snprintf(field, sizeof field, format, name, value);
    line += field;
}

void print_68k(const m68k_trace_entry& entry) {
    for (int level = 1; level <= 7; ++level)
        if (entry.interrupt_levels & (1u << level)) std::printf("68k interrupt: level %d taken\n", level);
    std::printf("%s\n", trace_68k_line(entry).c_str());
}

void print_risc(const risc_trace_entry& entry) { std::printf("%s\n", trace_risc_line(entry).c_str()); }

}  // namespace

std::string trace_68k_line(const m68k_trace_entry& entry) {
    char text[96];
    const int length = m68k_disassemble(entry.pc, entry.words, entry.word_count, text, sizeof text);
    std::string line = instruction_line("68k", entry.pc, entry.words, length, M68K_MAX_INSTRUCTION_WORDS, text,
                                        entry.written_mask != 0, M68K_REGISTERS_COLUMN);
    for (int r = 0; r < M68K_TRACE_REGISTERS; ++r)
        if (entry.written_mask & (1u << r))
            append_register(line, m68k_register_names[r], r == M68K_TRACE_SR ? " %s=%04X" : " %s=%08X",
                            entry.written[r]);
    return line;
}

std::string trace_risc_line(const risc_trace_entry& entry) {
    char text[96];
    const int length = risc_disassemble(entry.processor, entry.pc, entry.words, text, sizeof text);
    std::string line = instruction_line(entry.processor == RISC_GPU ? "gpu" : "dsp", entry.pc, entry.words,
                                        std::min(length, entry.word_count), RISC_MAX_INSTRUCTION_WORDS, text,
                                        entry.written_mask != 0, RISC_REGISTERS_COLUMN);
    for (int r = 0; r < 32; ++r) {
        if (!(entry.written_mask & (1u << r))) continue;
        char name[4];
        std::snprintf(name, sizeof name, "r%d", r);
        append_register(line, name, " %s=%08X", entry.written[r]);
    }
    return line;
}

void trace_start(int64_t m68k, int64_t gpu, int64_t dsp) {
    m68k_trace_left = m68k;
    m68k_trace_sink = m68k > 0 ? print_68k : nullptr;
    risc_trace_left[RISC_GPU] = gpu;
    risc_trace_left[RISC_DSP] = dsp;
    risc_trace_sink = gpu > 0 || dsp > 0 ? print_risc : nullptr;
}

void trace_stop() { trace_start(0, 0, 0); }
