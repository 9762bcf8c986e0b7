// The traced 68000 slice: m68k_execute(1) runs exactly one instruction, so a slice is a series
// of such calls, each reported to the sink with the registers it changed.
#include "m68k/m68k_trace.h"

#include <cstring>

#include "m68k/m68k_internal.h"

m68k_trace_sink_fn m68k_trace_sink;
int64_t m68k_trace_left;

namespace {

constexpr uint32_t ADDRESS_MASK = 0xFFFFFF;

// The start of a slice without its instructions: the PC is looked up and the waiting interrupts
// that the mask allows are taken, as m68k_execute does before its first instruction. Sets the
// bits of the levels taken. False (the slice's result 1) when the PC, before or after, lies in
// no fetch region; the context then holds what m68k_execute would have left.
bool take_interrupts(uint32_t& levels) {
    uint32_t waiting[7];
    std::memcpy(waiting, m68k_context.irq_vector, sizeof waiting);
    m68k_run.ended = false;
    m68k_run.result = M68K_OK;
    if (!m68k_load_pc(m68k_context.pc)) {
        m68k_context.pc &= ADDRESS_MASK;
        m68k_context.cycles_left = m68k_run.held_cycles;
        return false;
    }
    m68k_load_ccr(m68k_context.sr);
    m68k_check_interrupts();
    m68k_context.sr = m68k_get_sr();
    if (m68k_run.ended) {
        m68k_context.pc = m68k_run.end_pc;
        m68k_context.cycles_left = m68k_run.held_cycles;
        return false;
    }
    m68k_context.pc = m68k_current_pc();
    for (int level = 1; level <= 7; ++level)
        if (waiting[level - 1] && !m68k_context.irq_vector[level - 1]) levels |= 1u << level;
    return true;
}

// m68k_execute with the waiting interrupts hidden: they were taken or refused at the slice's
// start, and requests made meanwhile wait for the next slice. Sets the cycles the call used.
int execute_without_interrupts(int32_t budget, int32_t& used) {
    const int32_t waiting = m68k_context.irq_count;
    m68k_context.irq_count = 0;
    const int result = m68k_execute(budget);
    m68k_context.irq_count += waiting;
    used = budget - m68k_context.cycles_left;
    return result;
}

// The words at pc that lie whole inside a fetch region, at most five.
int read_words(uint32_t pc, uint16_t* words) {
    int count = 0;
    for (; count < M68K_MAX_INSTRUCTION_WORDS; ++count) {
        const uint32_t address = pc + 2 * static_cast<uint32_t>(count);
        const uint8_t* p = m68k_fetch_pointer(address);
        if (!p || m68k_fetch_pointer(address + 1) != p + 1) break;
        std::memcpy(&words[count], p, 2);
    }
    return count;
}

void registers_of(uint32_t* values) {
    std::memcpy(values, m68k_context.d, sizeof m68k_context.d);
    std::memcpy(values + 8, m68k_context.a, sizeof m68k_context.a);
    values[M68K_TRACE_SR] = m68k_context.sr;
}

// Runs one instruction and reports it; returns m68k_execute's result.
int traced_instruction(uint32_t& levels, int32_t& used) {
    m68k_trace_entry entry{};
    entry.pc = m68k_context.pc;
    entry.word_count = read_words(entry.pc, entry.words);
    entry.interrupt_levels = levels;
    levels = 0;
    uint32_t before[M68K_TRACE_REGISTERS];
    registers_of(before);
    const int result = execute_without_interrupts(1, used);
    // An instruction that could not be read was not run: there is nothing to report.
    if (entry.word_count == 0) return result;
    registers_of(entry.written);
    for (int r = 0; r < M68K_TRACE_REGISTERS; ++r)
        if (entry.written[r] != before[r]) entry.written_mask |= 1u << r;
    if (m68k_trace_left > 0) --m68k_trace_left;
    if (m68k_trace_sink) m68k_trace_sink(entry);
    return result;
}

}  // namespace

int m68k_execute_traced(int32_t cycles) {
    m68k_context.cycles_requested = cycles;
    m68k_context.cycles_left = cycles;
    uint32_t levels = 0;
    if (!take_interrupts(levels)) return M68K_NO_FETCH_REGION;
    if (m68k_context.stopped) {
        m68k_context.cycles_left = 0;
        return M68K_OK;
    }
    // As in one m68k_execute call: instructions run until the count is below 0 (a count of
    // exactly 0 runs one more), or until STOP or a PC without a fetch region ends the slice.
    int32_t left = m68k_context.cycles_left;
    int result = M68K_OK;
    do {
        int32_t used = 0;
        if (m68k_trace_sink && m68k_trace_left > 0) result = traced_instruction(levels, used);
        else result = execute_without_interrupts(left, used);  // the trace ran out: the rest at once
        left -= used;
    } while (result == M68K_OK && !m68k_context.stopped && left >= 0);
    m68k_context.cycles_requested = cycles;
    m68k_context.cycles_left = left;
    return result;
}
