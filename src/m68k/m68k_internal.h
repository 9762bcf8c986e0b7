// The 68000 core's inside: the execution state that lives outside m68k_context while a slice
// runs, instruction fetch, the seven data-access routines, SR packing and PC loading. Shared by
// the dispatch loop (m68k.cpp) and the generated handler units.
#pragma once

#include <cstdint>
#include <climits>
#include <cstring>

#include "core/memory.h"

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
// arithmetic outside an object. The dispatch loop checks once per instruction that the longest
// instruction (M68K_MAX_INSTRUCTION_BYTES) fits in the current region from fetch_ptr
// (fetch_ptr <= fetch_limit), so the handlers fetch their words unchecked; sequential execution
// only moves forward, and a relative branch that lands below the region's start sets the limit
// to 0 so that the next check fails. An instruction that starts closer to the region's end runs
// from a copy of its words, each looked up on its own (m68k.cpp), so no word outside a region is
// ever read.
constexpr uint32_t M68K_MAX_INSTRUCTION_BYTES = 10;  // MOVE.L #imm,abs.L and MOVE.L abs.L,abs.L

struct m68k_run_state {
    uintptr_t fetch_ptr;
    uintptr_t fetch_base;
    uintptr_t fetch_low;    // host address of the current fetch region's first byte
    uintptr_t fetch_limit;  // last host address at which a whole instruction fits (0: none)
    int32_t held_cycles;        // the remaining count when the slice was ended early
    int32_t result;             // what m68k_execute returns
    uint32_t end_pc;            // pc to store when the slice ended on a PC without a fetch region
    bool ended;
};
extern m68k_run_state m68k_run;

// Condition codes while a slice runs, kept in the form the handlers produce them cheaply:
// nz holds N in bit 63 and Z as "low 32 bits are zero" (a result sign-extended to 64 bits sets
// both at once, and bit operations can still set Z alone); vc holds V in bit 1 and C in bit 0;
// x is 0 or 1.
struct m68k_flags {
    uint64_t nz;
    uint32_t vc;
    uint32_t x;
};
extern m68k_flags m68k_cc;

inline uint32_t m68k_flag_n() { return static_cast<uint32_t>(m68k_cc.nz >> 63); }
inline uint32_t m68k_flag_z() { return static_cast<uint32_t>(m68k_cc.nz) == 0; }
inline uint32_t m68k_flag_v() { return (m68k_cc.vc >> 1) & 1; }
inline uint32_t m68k_flag_c() { return m68k_cc.vc & 1; }
inline void m68k_set_nz(uint32_t n, uint32_t z) { m68k_cc.nz = (uint64_t{n} << 63) | (z ? 0u : 1u); }

// Ends the slice after the current handler: the remaining count is put aside and the count
// made very negative so that the dispatch loop's single budget test stops it.
inline void m68k_end_slice(int32_t result) {
    if (m68k_run.ended) return;
    m68k_run.ended = true;
    m68k_run.result = result;
    m68k_run.held_cycles = m68k_context.cycles_left;
    m68k_context.cycles_left = INT32_MIN / 2;
}

// Extension words: the dispatch loop has made sure the whole instruction lies in the region.
inline uint32_t m68k_fetch16() {
    uint16_t w;
    std::memcpy(&w, reinterpret_cast<const void*>(m68k_run.fetch_ptr), 2);
    m68k_run.fetch_ptr += 2;
    return w;
}

// A long extension is the high word then the low word: one native 32-bit load rotated by 16.
inline uint32_t m68k_fetch32() {
    uint32_t v;
    std::memcpy(&v, reinterpret_cast<const void*>(m68k_run.fetch_ptr), 4);
    m68k_run.fetch_ptr += 4;
    return (v << 16) | (v >> 16);
}

// A relative branch: the PC moves within the host buffer; a target before the region's start
// makes the next instruction's check fail, and that check looks the PC up again.
inline void m68k_branch_to(uintptr_t target) {
    m68k_run.fetch_ptr = target;
    if (target < m68k_run.fetch_low) [[unlikely]]
        m68k_run.fetch_limit = 0;
}

inline uint32_t m68k_current_pc() { return static_cast<uint32_t>(m68k_run.fetch_ptr - m68k_run.fetch_base); }

// Host pointer of the byte that holds (address AND 0xFFFFFF) in the fetch regions, or null.
const uint8_t* m68k_fetch_pointer(uint32_t address);

// Points the fetch state at pc. Returns false, and ends the slice with result 1 and the pc's
// low 24 bits kept for the context, when no fetch region holds it.
bool m68k_load_pc(uint32_t pc);

// A stretch of the data address space that the machine's region tables send to functions which
// serve it from one host buffer by fixed rules: addresses below `limit`, offset = address AND
// `mask`, bytes at offset XOR 1, words and longs at the even offset below, a long at the
// buffer's last word completed from its first word (bus.h's ram_* helpers). Accesses there go
// straight to the buffer; the machine names the window after installing its tables, and
// installing any table closes it (limit 0).
struct m68k_data_window {
    uint8_t* buffer;
    uint32_t limit;
    uint32_t mask;
};
extern m68k_data_window m68k_ram_window;
void m68k_set_ram_window(uint8_t* buffer, uint32_t limit, uint32_t mask);

// A read-only stretch the same way: addresses low to low + span - 1 read from a buffer of `size`
// bytes at offset address - low by the same rules, and writes there are dropped (the machine's
// bus ignores them). Closed (span 0) like the RAM window.
struct m68k_rom_window_t {
    const uint8_t* buffer;
    uint32_t low;
    uint32_t span;
    uint32_t size;
};
extern m68k_rom_window_t m68k_rom_window;
void m68k_set_rom_window(const uint8_t* buffer, uint32_t low, uint32_t span, uint32_t size);
inline bool in_rom_window(uint32_t a) { return a - m68k_rom_window.low < m68k_rom_window.span; }

// Through the region tables (m68k.cpp).
uint32_t m68k_read8_regions(uint32_t address);
uint32_t m68k_read16_regions(uint32_t address);
uint32_t m68k_read32_regions(uint32_t address);
void m68k_write8_regions(uint32_t address, uint32_t value);
void m68k_write16_regions(uint32_t address, uint32_t value);
void m68k_write32_regions(uint32_t address, uint32_t value);

constexpr uint32_t M68K_ADDRESS_MASK = 0xFFFFFF;

[[gnu::always_inline]] inline uint32_t m68k_read8(uint32_t address) {
    const uint32_t a = address & M68K_ADDRESS_MASK;
    if (a < m68k_ram_window.limit) return ws_read8(m68k_ram_window.buffer, a & m68k_ram_window.mask);
    if (in_rom_window(a)) return ws_read8(m68k_rom_window.buffer, a - m68k_rom_window.low);
    return m68k_read8_regions(a);
}
[[gnu::always_inline]] inline uint32_t m68k_read16(uint32_t address) {
    const uint32_t a = address & M68K_ADDRESS_MASK;
    if (a < m68k_ram_window.limit) return buffer_read16(m68k_ram_window.buffer, a & m68k_ram_window.mask);
    if (in_rom_window(a)) return buffer_read16(m68k_rom_window.buffer, a - m68k_rom_window.low);
    return m68k_read16_regions(a);
}
inline uint32_t m68k_read16_signed(uint32_t address) {
    return static_cast<uint32_t>(static_cast<int32_t>(static_cast<int16_t>(m68k_read16(address))));
}
[[gnu::always_inline]] inline uint32_t m68k_read32(uint32_t address) {
    const uint32_t a = address & M68K_ADDRESS_MASK;
    if (a < m68k_ram_window.limit)
        return buffer_read32(m68k_ram_window.buffer, a & m68k_ram_window.mask, m68k_ram_window.mask + 1);
    if (in_rom_window(a))
        return buffer_read32(m68k_rom_window.buffer, a - m68k_rom_window.low, m68k_rom_window.size);
    return m68k_read32_regions(a);
}
[[gnu::always_inline]] inline void m68k_write8(uint32_t address, uint32_t value) {
    const uint32_t a = address & M68K_ADDRESS_MASK;
    if (a < m68k_ram_window.limit)
        ws_write8(m68k_ram_window.buffer, a & m68k_ram_window.mask, static_cast<uint8_t>(value));
    else if (!in_rom_window(a))
        m68k_write8_regions(a, value);
}
[[gnu::always_inline]] inline void m68k_write16(uint32_t address, uint32_t value) {
    const uint32_t a = address & M68K_ADDRESS_MASK;
    if (a < m68k_ram_window.limit)
        buffer_write16(m68k_ram_window.buffer, a & m68k_ram_window.mask, static_cast<uint16_t>(value));
    else if (!in_rom_window(a))
        m68k_write16_regions(a, value);
}
[[gnu::always_inline]] inline void m68k_write32(uint32_t address, uint32_t value) {
    const uint32_t a = address & M68K_ADDRESS_MASK;
    if (a < m68k_ram_window.limit)
        buffer_write32(m68k_ram_window.buffer, a & m68k_ram_window.mask, m68k_ram_window.mask + 1, value);
    else if (!in_rom_window(a))
        m68k_write32_regions(a, value);
}

inline uint32_t m68k_get_sr() {
    return (m68k_context.sr & 0xFF00) | (m68k_cc.x << 4) | (m68k_flag_n() << 3) | (m68k_flag_z() << 2) |
           m68k_cc.vc;
}

inline void m68k_load_ccr(uint32_t value) {
    m68k_cc.x = (value >> 4) & 1;
    m68k_set_nz((value >> 3) & 1, (value >> 2) & 1);
    m68k_cc.vc = value & 3;
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
