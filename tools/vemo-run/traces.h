// Instruction traces of vemo-run: the first N instructions each processor executes, one line
// each on standard output as they run: processor, address, instruction words, disassembly and
// the registers the instruction wrote (for the GPU and the DSP, of the current bank).
//
//   68k 00004000  203C 0000 0010            move.l #$10,d0                 d0=00000010
//   68k interrupt: level 2 taken
//   gpu 00F03000  9801 1234 0000  movei #0x1234,r1          r1=00001234
//
// Offers: trace_start, trace_stop, and the line of one entry. Needs: the core's internals (the
// trace hooks and disassemblers of the 68000 and of the RISC processors).
#pragma once

#include <cstdint>
#include <string>

#include "m68k/m68k_trace.h"
#include "risc/risc_disasm.h"
#include "risc/risc_trace.h"

// Traces the first instructions of each processor; 0 traces none.
void trace_start(int64_t m68k, int64_t gpu, int64_t dsp);
void trace_stop();

// One traced instruction as its trace line (without the line feed).
std::string trace_68k_line(const m68k_trace_entry& entry);
std::string trace_risc_line(const risc_trace_entry& entry);
