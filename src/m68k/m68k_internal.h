// The 68000 core's inside: the execution state that lives outside m68k_context while a slice
// runs, instruction fetch, the seven data-access routines, SR packing and PC loading. Shared by
// the dispatch loop (m68k.cpp) and the generated handler units.
#pragma once

#include <cstdint>
#include <cstring>

#include "m68k/m68k.h"

using m68k_handler = void (*)(uint32_t opcode);

constexpr uint32_t M68K_TABLE_SIZE = 0x10000;
extern m68k_handler m68k_dispatch_table[M68K_TABLE_SIZE];

// Produced by the build's table generator: the packed dispatch table (16-bit control words and
// 32-bit handler references stored as two 16-bit halves, low half first) and the handler array
// it refers to, split into parts of m68k_handler_part_size entries.
extern const uint16_t m68k_packed_dispatch[];
extern const uint32_t m68k_packed_dispatch_words;
extern const m68k_handler* const m68k_handler_parts[];
extern const uint32_t m68k_handler_part_size;
extern const uint32_t m68k_handler_count;

// Handlers the tests and the table expansion refer to by name.
void m68k_op_illegal(uint32_t opcode);          // every word that is no 68000 instruction
void m68k_op_illegal_instruction(uint32_t opcode);  // ILLEGAL, 0x4AFC
void m68k_op_line_a(uint32_t opcode);
void m68k_op_line_f(uint32_t opcode);

// State of the running slice. The PC is a host address: pc == fetch_ptr - fetch_base at every
// moment. Addresses are kept as integers so that a branch out of the buffer is never pointer
// arithmetic outside an object; every fetch checks the pointer against the current region
// first (fetch_ptr - fetch_low <= fetch_span), so no word outside the region is ever read.
struct m68k_run_state {
    uintptr_t fetch_ptr;
    uintptr_t fetch_base;
    uintptr_t fetch_low;   // host address of the current fetch region's first byte
    uintptr_t fetch_span;  // region bytes - 2: the last offset at which a whole word fits
    int32_t held_cycles;   // the remaining count when the slice was ended early
    int32_t result;        // what m68k_execute returns
    uint32_t end_pc;       // pc to store when the slice ended on a PC without a fetch region
    bool ended;
};
extern m68k_run_state m68k_run;

// Condition codes, unpacked while a slice runs; each holds 0 or 1.
struct m68k_flags {
    uint32_t x, n, z, v, c;
};
extern m68k_flags m68k_cc;

// Ends the slice after the current handler: the remaining count is put aside and the count
// made very negative so that the dispatch loop's single budget test stops it.
inline void m68k_end_slice(int32_t result) {
    if (m68k_run.ended) return;
    m68k_run.ended = true;
    m68k_run.result = result;
    m68k_run.held_cycles = m68k_context.cycles_left;
    m68k_context.cycles_left = INT32_MIN / 2;
}

uint32_t m68k_fetch_slow();

inline uint32_t m68k_fetch16() {
    uintptr_t p = m68k_run.fetch_ptr;
    if (p - m68k_run.fetch_low > m68k_run.fetch_span) [[unlikely]]
        return m68k_fetch_slow();
    uint16_t w;
    std::memcpy(&w, reinterpret_cast<const void*>(p), 2);
    m68k_run.fetch_ptr = p + 2;
    return w;
}

// A long extension is the high word then the low word: the same as one native 32-bit load
// rotated by 16 bits, but each half is checked against the region.
inline uint32_t m68k_fetch32() {
    uint32_t high = m68k_fetch16();
    return (high << 16) | m68k_fetch16();
}

inline uint32_t m68k_current_pc() { return static_cast<uint32_t>(m68k_run.fetch_ptr - m68k_run.fetch_base); }

// Host pointer of the byte that holds (address AND 0xFFFFFF) in the fetch regions, or null.
const uint8_t* m68k_fetch_pointer(uint32_t address);

// Points the fetch state at pc. Returns false, and ends the slice with result 1 and the pc's
// low 24 bits kept for the context, when no fetch region holds it.
bool m68k_load_pc(uint32_t pc);

uint32_t m68k_read8(uint32_t address);
uint32_t m68k_read16(uint32_t address);
uint32_t m68k_read16_signed(uint32_t address);
uint32_t m68k_read32(uint32_t address);
void m68k_write8(uint32_t address, uint32_t value);
void m68k_write16(uint32_t address, uint32_t value);
void m68k_write32(uint32_t address, uint32_t value);

inline uint32_t m68k_get_sr() {
    return (m68k_context.sr & 0xFF00) | (m68k_cc.x << 4) | (m68k_cc.n << 3) | (m68k_cc.z << 2) |
           (m68k_cc.v << 1) | m68k_cc.c;
}

inline void m68k_load_ccr(uint32_t value) {
    m68k_cc.x = (value >> 4) & 1;
    m68k_cc.n = (value >> 3) & 1;
    m68k_cc.z = (value >> 2) & 1;
    m68k_cc.v = (value >> 1) & 1;
    m68k_cc.c = value & 1;
}

// Stores a whole SR value; A7 stays the active stack pointer when S changes.
void m68k_set_sr(uint32_t value);

// Exception entry: stacks stacked_pc and SR on the supervisor stack, sets S, reads the new PC
// at vector_address and charges cost.
void m68k_exception(uint32_t vector_address, uint32_t stacked_pc, int32_t cost);

// Privilege violation for the privileged instruction whose opcode word was just consumed.
void m68k_privilege_violation();

// Takes the waiting interrupt requests that the mask allows (start of a slice only).
void m68k_check_interrupts();
