// A tiny 68000 machine for the core's tests: 64 KB of word-swapped RAM at 0 that serves fetches
// and data directly, and a register block at 0xF00000-0xF0FFFF served by handlers that record
// every access in order.
#pragma once

#include <gtest/gtest.h>

#include <cstring>
#include <initializer_list>
#include <vector>

#include "core/memory.h"
#include "m68k/m68k.h"
#include "m68k/m68k_internal.h"

namespace m68k_test {

constexpr uint32_t RAM_SIZE = 0x10000;
constexpr uint32_t IO_LOW = 0xF00000;
constexpr uint32_t IO_HIGH = 0xF0FFFF;
constexpr uint32_t CODE = 0x1000;        // where the tests put their instructions
constexpr uint32_t HANDLER = 0x3000;     // every exception vector points here
constexpr uint32_t STACK = 0x8000;       // supervisor stack
constexpr uint32_t USER_STACK = 0x7000;

struct io_access {
    char kind;  // 'r' or 'w'
    int size;
    uint32_t address;
    uint32_t value;
    bool operator==(const io_access&) const = default;
};

inline std::vector<io_access> io_log;
inline uint32_t io_read_value = 0;
// Called from inside a register write, as the graphics chip raises its interrupt.
inline bool io_write_raises_interrupt = false;

inline uint32_t io_read8(uint32_t a) { io_log.push_back({'r', 1, a, 0}); return io_read_value; }
inline uint32_t io_read16(uint32_t a) { io_log.push_back({'r', 2, a, 0}); return io_read_value; }
inline uint32_t io_read32(uint32_t a) { io_log.push_back({'r', 4, a, 0}); return io_read_value; }
inline void io_write(int size, uint32_t a, uint32_t v) {
    io_log.push_back({'w', size, a, v});
    if (io_write_raises_interrupt) m68k_interrupt(2, 256);
}
inline void io_write8(uint32_t a, uint32_t v) { io_write(1, a, v & 0xFF); }
inline void io_write16(uint32_t a, uint32_t v) { io_write(2, a, v & 0xFFFF); }
inline void io_write32(uint32_t a, uint32_t v) { io_write(4, a, v); }

class Machine : public ::testing::Test {
protected:
    std::vector<uint8_t> ram = std::vector<uint8_t>(RAM_SIZE);
    m68k_fetch_region fetch[2];
    m68k_data_region read8[3], read16[3], read32[3], write8[3], write16[3], write32[3];

    void SetUp() override {
        static bool expanded = [] { return m68k_init() == 0; }();
        ASSERT_TRUE(expanded);
        io_log.clear();
        io_read_value = 0;
        io_write_raises_interrupt = false;
        const uintptr_t base = reinterpret_cast<uintptr_t>(ram.data());
        m68k_set_fetch_region(&fetch[0], 0, RAM_SIZE - 1, base);
        m68k_set_fetch_region(&fetch[1], 0xFFFFFFFF, 0xFFFFFFFF, 0);
        data_table(read8, io_read8, nullptr);
        data_table(read16, io_read16, nullptr);
        data_table(read32, io_read32, nullptr);
        data_table(write8, nullptr, io_write8);
        data_table(write16, nullptr, io_write16);
        data_table(write32, nullptr, io_write32);
        install();
        for (uint32_t v = 2; v < 64; ++v) put32(4 * v, HANDLER);
        put32(0x100, HANDLER);  // the machine's level-2 autovector (26 * 4 + 0x98)
        for (uint32_t a = HANDLER; a < HANDLER + 0x40; a += 2) put16(a, 0x4E71);  // NOPs
        start(CODE);
    }

    void data_table(m68k_data_region* t, m68k_read_handler r, m68k_write_handler w) {
        m68k_set_data_region(&t[0], 0, RAM_SIZE - 1, reinterpret_cast<uintptr_t>(ram.data()), nullptr, nullptr);
        m68k_set_data_region(&t[1], IO_LOW, IO_HIGH, 0, r, w);
        m68k_set_data_region(&t[2], 0xFFFFFFFF, 0xFFFFFFFF, 0, nullptr, nullptr);
    }

    void install() {
        m68k_set_fetch_regions(fetch);
        m68k_set_read8_regions(read8);
        m68k_set_read16_regions(read16);
        m68k_set_read32_regions(read32);
        m68k_set_write8_regions(write8);
        m68k_set_write16_regions(write16);
        m68k_set_write32_regions(write32);
    }

    // Supervisor mode, interrupt mask 0, flags clear, registers zero.
    void start(uint32_t pc, uint32_t sr = 0x2000) {
        m68k_context_t& c = m68k_context;
        std::memset(c.d, 0, sizeof c.d);
        std::memset(c.a, 0, sizeof c.a);
        std::memset(c.irq_vector, 0, sizeof c.irq_vector);
        c.irq_count = 0;
        c.a[7] = (sr & 0x2000) ? STACK : USER_STACK;
        c.other_sp = (sr & 0x2000) ? USER_STACK : STACK;
        c.sr = sr;
        c.pc = pc;
        c.stopped = 0;
    }

    void put16(uint32_t a, uint16_t v) { ws_write16(ram.data(), a, v); }
    void put32(uint32_t a, uint32_t v) { ws_write32(ram.data(), a, v); }
    uint16_t get16(uint32_t a) { return ws_read16(ram.data(), a); }
    uint32_t get32(uint32_t a) { return ws_read32(ram.data(), a); }
    uint8_t get8(uint32_t a) { return ws_read8(ram.data(), a); }
    void code(uint32_t a, std::initializer_list<uint16_t> words) {
        for (uint16_t w : words) {
            put16(a, w);
            a += 2;
        }
    }
    void code(std::initializer_list<uint16_t> words) { code(CODE, words); }

    // Runs one instruction (budget 0) and returns the cycles it charged.
    int32_t step() {
        EXPECT_EQ(m68k_execute(0), M68K_OK);
        return -m68k_context.cycles_left;
    }

    uint32_t& d(int r) { return m68k_context.d[r]; }
    uint32_t& a(int r) { return m68k_context.a[r]; }
    uint32_t pc() { return m68k_context.pc; }
    uint32_t sr() { return m68k_context.sr; }
};

}  // namespace m68k_test
