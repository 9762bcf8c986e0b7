// A 68000 disassembler for traces and diagnostics: one instruction from its words to text in
// the usual Motorola syntax.
//
// Offers: m68k_disassemble. Lower-case mnemonics with a size suffix where the instruction has a
// size (move.l, addq.w, bra.s); registers d0-d7 and a0-a7; hexadecimal numbers with '$' (values
// below 10 in plain digits); displacements signed ("-2(a1)", "$10(a0,d1.w)"); absolute addresses
// with their size ("$1234.w", "$F00028.l"); branch, DBcc and PC-relative operands shown as the
// address they reach ("bra.s $4010", "lea $4020(pc),a0"); MOVEM lists as ranges ("d0-d3/a6").
// It accepts exactly the words the machine's 68000 executes as instructions; every other word
// (line A, line F and the encodings of later processors included) is "dc.w $XXXX".
// Needs: nothing.
#pragma once

#include <cstddef>
#include <cstdint>

// The longest 68000 instruction: an opcode word and two 32-bit absolute addresses.
constexpr int M68K_MAX_INSTRUCTION_WORDS = 5;

// Disassembles the instruction whose opcode word words[0] lies at address; words holds
// word_count words from there on (big-endian values, as the processor reads them). Writes the
// zero-terminated text (cut to text_size) and returns the instruction's length in words, 1 to
// 5. A word that is no instruction, or an instruction whose extension words are not all among
// the words given, is "dc.w $XXXX" of length 1. word_count below 1 gives "" and 0.
int m68k_disassemble(uint32_t address, const uint16_t* words, int word_count, char* text, size_t text_size);
