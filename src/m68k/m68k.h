// The 68000 main processor: one global context, a 65536-entry dispatch table expanded from its
// packed form, memory reached through region tables, cycle-budgeted slices, exceptions and
// interrupt requests.
//
// Offers: the context, the entry points below, and m68k_setup, which builds this machine's
// region tables (instruction fetch straight from RAM, cartridge and boot ROM; every data access
// through the bus) and resets the processor. Needs: the bus and the memory buffers.
#pragma once

#include <cstdint>

using m68k_read_handler = uint32_t (*)(uint32_t address);
using m68k_write_handler = void (*)(uint32_t address, uint32_t value);

// Instruction-fetch region: console addresses low..high (inclusive) lie in a host buffer;
// the byte of address A is at host address offset + A.
struct m68k_fetch_region {
    uint32_t low;
    uint32_t high;
    uintptr_t offset;
};

// Data region: either direct (memory != 0, addressed like a fetch region) or served by a
// handler (memory == 0). A table ends with an entry whose low is 0xFFFFFFFF.
struct m68k_data_region {
    uint32_t low;
    uint32_t high;
    uintptr_t memory;
    m68k_read_handler read;    // read tables
    m68k_write_handler write;  // write tables
};

constexpr uint16_t SR_MASK = 0xA71F;

struct m68k_context_t {
    const m68k_fetch_region* fetch_regions;
    const m68k_data_region* read8_regions;
    const m68k_data_region* read16_regions;
    const m68k_data_region* read32_regions;
    const m68k_data_region* write8_regions;
    const m68k_data_region* write16_regions;
    const m68k_data_region* write32_regions;
    uint32_t irq_vector[7];   // per level 1-7: vector waiting, 0 = none
    int32_t irq_count;
    int32_t cycles_requested;
    int32_t cycles_left;      // negative after an overrun
    uint32_t d[8];
    uint32_t a[8];            // a[7] is always the active stack pointer
    uint32_t other_sp;        // the inactive stack pointer
    uint32_t sr;              // only bits of SR_MASK exist; low byte valid outside m68k_execute
    uint32_t pc;              // all 32 bits kept; the low 24 address memory
    uint32_t stopped;
};

extern m68k_context_t m68k_context;

// Results of m68k_execute / m68k_reset.
constexpr int M68K_OK = 0;
constexpr int M68K_NO_FETCH_REGION = 1;
// Results of m68k_interrupt.
constexpr int M68K_IRQ_BAD_LEVEL = 3;
constexpr int M68K_IRQ_BAD_VECTOR = 4;
constexpr int M68K_IRQ_LEVEL_WAITING = 5;

int m68k_init();
void m68k_set_fetch_regions(const m68k_fetch_region* regions);
void m68k_set_read8_regions(const m68k_data_region* regions);
void m68k_set_read16_regions(const m68k_data_region* regions);
void m68k_set_read32_regions(const m68k_data_region* regions);
void m68k_set_write8_regions(const m68k_data_region* regions);
void m68k_set_write16_regions(const m68k_data_region* regions);
void m68k_set_write32_regions(const m68k_data_region* regions);
void m68k_set_fetch_region(m68k_fetch_region* entry, uint32_t low, uint32_t high, uintptr_t offset);
void m68k_set_data_region(m68k_data_region* entry, uint32_t low, uint32_t high, uintptr_t memory,
                          m68k_read_handler read, m68k_write_handler write);

int m68k_reset();
int m68k_execute(int32_t cycles);
int m68k_interrupt(uint32_t level, uint32_t vector);
uint32_t m68k_get_pc();

// Builds this machine's region tables, expands the dispatch table, resets the processor.
// 1 on success, 0 when the processor cannot start at its reset vector.
int m68k_setup();
