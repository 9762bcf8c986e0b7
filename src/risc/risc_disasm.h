// The disassembler of the GPU's and the DSP's instruction words. It writes an instruction as the
// assembler macros in cmake/risc.inc accept it, so a disassembled listing assembles back into
// the same words when placed at the same address: "add r1,r2", "movei #0xF03000,r14",
// "load (r14+2),r3", "jr ne,0xF03004". Words the DSP does not execute come out as "dc.w 0x....".
//
// Offers: risc_disassemble. Needs: the opcode tables of risc/risc_opcodes.h.
#pragma once

#include <cstddef>
#include <cstdint>

#include "risc/risc_opcodes.h"

// Writes the instruction at address `pc` (its word in words[0]; for movei the operand words in
// words[1] and words[2], low word first) into `text`, always zero-terminated and cut to
// `text_size`. Returns the instruction's length in words: 3 for movei, 1 for everything else.
int risc_disassemble(risc_processor processor, uint32_t pc, const uint16_t words[3], char* text, size_t text_size);
