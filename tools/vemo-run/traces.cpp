// Writing instruction traces.
#include "traces.h"

#include <algorithm>
#include <cstdio>

namespace {

// The written registers start in this column, or after a longer disassembly.
constexpr size_t DISASSEMBLY_END = 70;

const char* const register_names[M68K_TRACE_REGISTERS] = {"d0", "d1", "d2", "d3", "d4", "d5", "d6", "d7", "a0",
                                                          "a1", "a2", "a3", "a4", "a5", "a6", "a7", "sr"};

void print_68k(const m68k_trace_entry& entry) {
    for (int level = 1; level <= 7; ++level)
        if (entry.interrupt_levels & (1u << level)) std::printf("68k interrupt: level %d taken\n", level);
    std::printf("%s\n", trace_68k_line(entry).c_str());
}

}  // namespace

std::string trace_68k_line(const m68k_trace_entry& entry) {
    char text[96];
    const int length = m68k_disassemble(entry.pc, entry.words, entry.word_count, text, sizeof text);
    char field[40];
    std::snprintf(field, sizeof field, "68k %08X ", entry.pc);
    std::string line = field;
    for (int i = 0; i < M68K_MAX_INSTRUCTION_WORDS; ++i) {
        std::snprintf(field, sizeof field, i < length ? " %04X" : "     ", entry.words[i]);
        line += field;
    }
    line += "  ";
    line += text;
    if (entry.written_mask) line.resize(std::max(line.size(), size_t{DISASSEMBLY_END}), ' ');
    for (int r = 0; r < M68K_TRACE_REGISTERS; ++r) {
        if (!(entry.written_mask & (1u << r))) continue;
        std::snprintf(field, sizeof field, r == M68K_TRACE_SR ? " %s=%04X" : " %s=%08X", register_names[r],
                      entry.written[r]);
        line += field;
    }
    return line;
}

void trace_68k_start(int64_t instructions) {
    m68k_trace_left = instructions;
    m68k_trace_sink = instructions > 0 ? print_68k : nullptr;
}

void trace_stop() {
    m68k_trace_sink = nullptr;
    m68k_trace_left = 0;
}
