// Tracing the 68000 one instruction at a time, for tools that show a developer what the
// processor executed (vemo-run --trace-68k).
//
// Offers: m68k_trace_sink and m68k_trace_left (tracing is on while the sink is set and the count
// is above 0; each traced instruction counts it down), m68k_run_slice (what the frame scheduler
// calls for each 68000 slice) and m68k_execute_traced.
// Needs: the 68000's entry points (m68k.h) and its slice state (m68k_internal.h).
//
// The dispatch loop itself knows nothing of tracing: while a trace is on, a slice is run as
// single-instruction m68k_execute calls from m68k_execute_traced, with the same outcome as one
// call for the whole slice (interrupts are taken only at the slice's start, the budget is the
// slice's). The only cost when no trace is on is the one test in m68k_run_slice per slice.
#pragma once

#include <cstdint>

#include "m68k/m68k.h"
#include "m68k/m68k_disasm.h"

// Registers a trace entry reports: d0-d7 as 0-7, a0-a7 as 8-15, SR as 16.
constexpr int M68K_TRACE_REGISTERS = 17;
constexpr int M68K_TRACE_SR = 16;

struct m68k_trace_entry {
    uint32_t pc;                                   // where the instruction was read
    uint16_t words[M68K_MAX_INSTRUCTION_WORDS];    // the words there, as the processor reads them
    int word_count;                                // how many of them are readable (1 to 5)
    uint32_t interrupt_levels;  // bit L: an interrupt of level L was taken just before it
    uint32_t written_mask;      // bit r: register r changed
    uint32_t written[M68K_TRACE_REGISTERS];        // the new values of the changed registers
};

using m68k_trace_sink_fn = void (*)(const m68k_trace_entry& entry);
extern m68k_trace_sink_fn m68k_trace_sink;
extern int64_t m68k_trace_left;

// One slice as m68k_execute(cycles) runs it, reporting each instruction while tracing is on.
int m68k_execute_traced(int32_t cycles);

// Keep this the frame scheduler's only way into a 68000 slice: it is the trace's hook.
inline int m68k_run_slice(int32_t cycles) {
    if (m68k_trace_sink && m68k_trace_left > 0) [[unlikely]]
        return m68k_execute_traced(cycles);
    return m68k_execute(cycles);
}
