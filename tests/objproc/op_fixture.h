// A tiny machine for Object Processor tests: memory allocated, tables built, a 320-pixel display
// whose first line (VDB 40) draws row 0, and helpers that build objects in RAM as a program would.
#pragma once

#include <gtest/gtest.h>

#include <cstring>

#include "core/host.h"
#include "core/memory.h"
#include "core/video.h"
#include "objproc/colour_tables.h"
#include "objproc/objproc.h"

namespace optest {

constexpr uint32_t LIST = 0x1000, DATA = 0x10000, UNTOUCHED = 0xDEADBEEF;
constexpr int FIRST_LINE = 40, UNSCALED = -1;
enum { DEPTH1, DEPTH2, DEPTH4, DEPTH8, DEPTH16, DEPTH32 };
enum { REFLECT = 1, RMW = 2, TRANS = 4 };
enum { BITMAP = 0, SCALED = 1 };

struct bitmap {
    int ypos = FIRST_LINE, height = 1;
    uint32_t link = 0, data = DATA;
    int xpos = 0, depth = DEPTH16, pitch = 1, dwidth = 1, iwidth = 1, index = 0, flags = 0,
        firstpix = 0;
};

inline int line_of_row(int row) { return FIRST_LINE + 2 * row; }
inline uint32_t& cell(int row, int x) { return frame_buffer[row * FRAME_PITCH + x]; }
// Checks the cells of frame-buffer row `row` from column `x` on.
inline void expect_cells(int row, int x, std::initializer_list<uint32_t> cells) {
    for (int i = 0; i < static_cast<int>(cells.size()); ++i)
        EXPECT_EQ(cell(row, x + i), cells.begin()[i]) << "row " << row << ", x " << x + i;
}

// Phrases wrap inside the 2 MB of RAM, as the RAM mirror gives them.
inline void put_phrase(uint32_t address, uint64_t v) {
    ws_write32(main_ram, address % MAIN_RAM_SIZE, static_cast<uint32_t>(v >> 32));
    ws_write32(main_ram, address % MAIN_RAM_SIZE + 4, static_cast<uint32_t>(v));
}
inline void put_object(uint32_t address, int type, const bitmap& b, int hscale = 0, int vscale = 0) {
    put_phrase(address, uint64_t(type) | uint64_t(b.ypos & 0x7FF) << 3 | uint64_t(b.height) << 14 |
                            uint64_t(b.link / 8) << 24 | uint64_t(b.data / 8) << 43);
    put_phrase(address + 8, uint64_t(b.xpos & 0xFFF) | uint64_t(b.depth) << 12 | uint64_t(b.pitch) << 15 |
                                uint64_t(b.dwidth) << 18 | uint64_t(b.iwidth) << 28 | uint64_t(b.index) << 38 |
                                uint64_t(b.flags) << 45 | uint64_t(b.firstpix) << 49);
    if (type == SCALED) put_phrase(address + 16, uint64_t(hscale) | uint64_t(vscale) << 8);
}
inline void put_branch(uint32_t address, int ypos, int cc, uint32_t target) {
    put_phrase(address, 3 | uint64_t(ypos) << 3 | uint64_t(cc) << 14 | uint64_t(target / 8) << 24);
}
inline void put_stop(uint32_t address, uint64_t bits = 0) { put_phrase(address, (bits & ~7ull) | 4); }

// Bitmap data as the console holds it: big-endian bytes and words.
inline void put_bytes(uint32_t a, std::initializer_list<uint8_t> v) {
    for (uint8_t b : v) ws_write8(main_ram, a++, b);
}
inline void put_words(uint32_t a, std::initializer_list<uint16_t> v) {
    for (uint16_t w : v) ws_write16(main_ram, a, w), a += 2;
}
inline void count_bytes(int n) {  // DATA + i holds i
    for (int i = 0; i < n; ++i) ws_write8(main_ram, DATA + i, static_cast<uint8_t>(i));
}
inline void set_clut(int entry, uint16_t colour) { ws_write16(clut, entry * 2, colour); }
inline void number_clut() {  // CLUT[k] = 0x100 + k
    for (int k = 0; k < 256; ++k) set_clut(k, static_cast<uint16_t>(0x100 + k));
}

class ObjectProcessorTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(memory_allocate());
        build_colour_tables();
        op_init();
        video_reset();
        video.vdb = FIRST_LINE;
        video.hde = 320;  // divisor 0 (VMODE never written) counts as 1
        video.olp = LIST;
        std::fill(frame_buffer, frame_buffer + FRAME_ROWS * FRAME_PITCH, UNTOUCHED);
        log_clear();
    }
    void TearDown() override {
        op_line_buffer = nullptr;
        memory_release();
    }

    // Draws `line` with a list of one object and a stop; HSCALE UNSCALED makes a plain bitmap.
    void draw_at(int line, bitmap b, int hscale = UNSCALED, int vscale = 32) {
        b.link = LIST + 0x100;
        put_object(LIST, hscale == UNSCALED ? BITMAP : SCALED, b, hscale, vscale);
        put_stop(LIST + 0x100);
        op_process_line(line);
    }
    // Draws row `row` so, YPOS counting from that row's line: image row 0 falls on it.
    void draw_one(bitmap b, int row = 0, int hscale = UNSCALED) {
        b.ypos += 2 * row;
        draw_at(line_of_row(row), b, hscale);
    }
    // Each case: one object drawn alone on its row, then that row's cells from x on.
    struct shown { bitmap b; int row, x; std::initializer_list<uint32_t> cells; int hscale = UNSCALED; };
    void expect_shown(std::initializer_list<shown> cases) {
        for (const shown& s : cases) {
            draw_one(s.b, s.row, s.hscale);
            expect_cells(s.row, s.x, s.cells);
        }
    }
    bool logged(const char* text) const { return std::strstr(log_text, text) != nullptr; }
};

}  // namespace optest

using namespace optest;
