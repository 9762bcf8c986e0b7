// Instruction tracing of the GPU and the DSP for diagnostic tools: while a sink is set and a
// processor's count is above 0, each of its slices runs a traced copy of the execution loop that
// reports every instruction after it ran and counts the count down. The untraced loop is a
// separate instantiation and pays nothing for this.
#pragma once

#include <cstdint>

#include "risc/risc_opcodes.h"

struct risc_trace_entry {
    risc_processor processor;
    uint32_t pc;              // the instruction's address
    uint16_t words[3];        // the instruction word and, for movei, its two operand words
    int word_count;
    uint32_t written_mask;    // bit r: register r of the current bank changed
    uint32_t written[32];     // the new value of each changed register
};

using risc_trace_sink_fn = void (*)(const risc_trace_entry&);
extern risc_trace_sink_fn risc_trace_sink;
extern int64_t risc_trace_left[2];  // indexed by risc_processor
