// A tiny 68000 machine for the core's tests: 64 KB of word-swapped RAM at 0 that serves fetches
// and data directly, and a register block at 0xF00000-0xF0FFFF served by handlers that record
// every access in order.
#pragma once

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <initializer_list>
#include <optional>
#include <source_location>
#include <string>
#include <vector>

#include "core/memory.h"
#include "m68k/m68k.h"
#include "m68k/m68k_internal.h"

namespace m68k_test {

constexpr uint32_t RAM_SIZE = 0x10000;
constexpr uint32_t CODE = 0x1000;     // where the tests put their instructions (NOPs at first)
constexpr uint32_t HANDLER = 0x3000;  // every exception vector points here, to NOPs
constexpr uint32_t STACK = 0x8000;    // supervisor stack
constexpr uint32_t USER_STACK = 0x7000;

// Each register access as "r<size> <address>" or "w<size> <address> <value>", in hex.
inline std::vector<std::string> io_log;
inline uint32_t io_read_value = 0;
// Called from inside a register write, as the graphics chip raises its interrupt.
inline bool io_write_raises_interrupt = false;

inline void log_io(char kind, int size, uint32_t a, uint32_t v) {
    char text[32];
    std::snprintf(text, sizeof text, kind == 'r' ? "r%d %06X" : "w%d %06X %X", size, a, v);
    io_log.push_back(text);
}
template <int SIZE>
uint32_t io_read(uint32_t a) {
    log_io('r', SIZE, a, 0);
    return io_read_value;
}
template <int SIZE>
void io_write(uint32_t a, uint32_t v) {
    log_io('w', SIZE, a, SIZE == 4 ? v : v & ((1u << 8 * SIZE) - 1));
    if (io_write_raises_interrupt) m68k_interrupt(2, 256);
}

class Machine : public ::testing::Test {
protected:
    std::vector<uint8_t> ram = std::vector<uint8_t>(RAM_SIZE);
    m68k_fetch_region fetch[2];
    m68k_data_region data[6][3];  // read 8, 16, 32, write 8, 16, 32

    void SetUp() override {
        static bool expanded = [] { return m68k_init() == 0; }();
        ASSERT_TRUE(expanded);
        io_log.clear();
        io_read_value = 0;
        io_write_raises_interrupt = false;
        const uintptr_t base = reinterpret_cast<uintptr_t>(ram.data());
        m68k_set_fetch_region(&fetch[0], 0, RAM_SIZE - 1, base);
        m68k_set_fetch_region(&fetch[1], 0xFFFFFFFF, 0xFFFFFFFF, 0);
        const m68k_read_handler reads[] = {io_read<1>, io_read<2>, io_read<4>};
        const m68k_write_handler writes[] = {io_write<1>, io_write<2>, io_write<4>};
        for (int t = 0; t < 6; ++t) {
            m68k_set_data_region(&data[t][0], 0, RAM_SIZE - 1, base, nullptr, nullptr);
            m68k_set_data_region(&data[t][1], 0xF00000, 0xF0FFFF, 0, t < 3 ? reads[t] : nullptr,
                                 t < 3 ? nullptr : writes[t - 3]);
            m68k_set_data_region(&data[t][2], 0xFFFFFFFF, 0xFFFFFFFF, 0, nullptr, nullptr);
        }
        m68k_set_fetch_regions(fetch);
        m68k_set_read8_regions(data[0]);
        m68k_set_read16_regions(data[1]);
        m68k_set_read32_regions(data[2]);
        m68k_set_write8_regions(data[3]);
        m68k_set_write16_regions(data[4]);
        m68k_set_write32_regions(data[5]);
        for (uint32_t v = 2; v < 64; ++v) put32(4 * v, HANDLER);
        put32(0x100, HANDLER);  // the machine's level-2 autovector (26 * 4 + 0x98)
        for (uint32_t a = 0; a < 0x40; a += 2) put16(CODE + a, 0x4E71), put16(HANDLER + a, 0x4E71);
        start(CODE);
    }

    // Registers zero, no request waiting, A7 the stack of the mode SR selects.
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
    void code(uint32_t a, std::initializer_list<uint16_t> words) {
        for (uint16_t w : words) put16(a, w), a += 2;
    }
    void code(std::initializer_list<uint16_t> words) { code(CODE, words); }
    // Runs one slice and checks its result, where the PC ends and, when given, the cycles left.
    void run(int32_t budget, int result, uint32_t pc, std::optional<int32_t> left = {},
             std::source_location at = std::source_location::current()) {
        ::testing::ScopedTrace trace(at.file_name(), int(at.line()), "slice");
        EXPECT_EQ(m68k_execute(budget), result);
        EXPECT_EQ(m68k_context.pc, pc);
        if (left) { EXPECT_EQ(m68k_context.cycles_left, *left); }
    }
    // Runs `count` instructions (budget 0 each) and returns the cycles the last one charged.
    int32_t step(int count = 1) {
        for (int i = 0; i < count; ++i) EXPECT_EQ(m68k_execute(0), M68K_OK);
        return -m68k_context.cycles_left;
    }

    uint32_t& d(int r) { return m68k_context.d[r]; }
    uint32_t& a(int r) { return m68k_context.a[r]; }
    uint32_t pc() { return m68k_context.pc; }
    uint32_t sr() { return m68k_context.sr; }
};

}  // namespace m68k_test
