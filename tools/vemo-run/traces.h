// Instruction traces of vemo-run: the first N instructions a processor executes, one line
// each on standard output: processor, address, instruction words, disassembly and the
// registers the instruction wrote.
//
//   68k 00004000  203C 0000 0010           move.l #$10,d0                  d0=00000010 sr=2700
//   68k interrupt: level 2 taken
//
// Offers: trace_68k_start, trace_stop. Needs: the core's internals (the 68000's trace hook and
// disassembler).
#pragma once

#include <cstdint>
#include <string>

#include "m68k/m68k_trace.h"

void trace_68k_start(int64_t instructions);
void trace_stop();

// One traced instruction as its trace line (without the line feed); also used by the tests.
std::string trace_68k_line(const m68k_trace_entry& entry);
