// A tiny machine for Object Processor tests: RAM, CLUT and frame buffer allocated, the colour
// tables built, a 320-pixel display starting at line 40, and helpers that build objects in RAM
// the way a console program would.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>

#include "core/host.h"
#include "core/memory.h"
#include "core/video.h"
#include "objproc/colour_tables.h"
#include "objproc/objproc.h"

namespace optest {

constexpr uint32_t LIST = 0x1000;     // where tests put the object list
constexpr uint32_t DATA = 0x10000;    // where tests put bitmap data
constexpr int FIRST_LINE = 40;        // VDB: line 40 draws row 0
constexpr uint32_t UNTOUCHED = 0xDEADBEEF;

enum { DEPTH1 = 0, DEPTH2 = 1, DEPTH4 = 2, DEPTH8 = 3, DEPTH16 = 4, DEPTH32 = 5 };
enum { REFLECT = 1, RMW = 2, TRANS = 4 };

struct bitmap {
    int ypos = FIRST_LINE, height = 1;
    uint32_t link = 0, data = DATA;
    int xpos = 0, depth = DEPTH16, pitch = 1, dwidth = 1, iwidth = 1, index = 0, flags = 0,
        firstpix = 0;
};

inline int line_of_row(int row) { return FIRST_LINE + 2 * row; }

inline void put_phrase(uint32_t address, uint64_t v) {
    ws_write32(main_ram, address, static_cast<uint32_t>(v >> 32));
    ws_write32(main_ram, address + 4, static_cast<uint32_t>(v));
}

inline uint64_t header_phrase(int type, const bitmap& b) {
    return uint64_t(type) | uint64_t(b.ypos & 0x7FF) << 3 | uint64_t(b.height & 0x3FF) << 14 |
           uint64_t(b.link / 8) << 24 | uint64_t(b.data / 8) << 43;
}

inline uint64_t layout_phrase(const bitmap& b) {
    return uint64_t(b.xpos & 0xFFF) | uint64_t(b.depth) << 12 | uint64_t(b.pitch) << 15 |
           uint64_t(b.dwidth) << 18 | uint64_t(b.iwidth) << 28 | uint64_t(b.index) << 38 |
           uint64_t(b.flags) << 45 | uint64_t(b.firstpix) << 49;
}

inline void put_bitmap(uint32_t address, const bitmap& b) {
    put_phrase(address, header_phrase(0, b));
    put_phrase(address + 8, layout_phrase(b));
}

inline void put_scaled(uint32_t address, const bitmap& b, int hscale, int vscale) {
    put_phrase(address, header_phrase(1, b));
    put_phrase(address + 8, layout_phrase(b));
    put_phrase(address + 16, uint64_t(hscale) | uint64_t(vscale) << 8);
}

inline void put_branch(uint32_t address, int ypos, int cc, uint32_t target) {
    put_phrase(address, 3 | uint64_t(ypos) << 3 | uint64_t(cc) << 14 | uint64_t(target / 8) << 24);
}

inline void put_stop(uint32_t address, uint64_t bits = 0) { put_phrase(address, (bits & ~7ull) | 4); }

// Bitmap data as the console holds it: big-endian bytes and words.
inline void put_bytes(uint32_t address, std::initializer_list<uint8_t> bytes) {
    for (uint8_t b : bytes) ws_write8(main_ram, address++, b);
}
inline void put_words(uint32_t address, std::initializer_list<uint16_t> words) {
    for (uint16_t w : words) {
        ws_write16(main_ram, address, w);
        address += 2;
    }
}
inline void set_clut(int entry, uint16_t colour) { ws_write16(clut, entry * 2, colour); }

inline uint32_t& cell(int row, int x) { return frame_buffer[row * FRAME_PITCH + x]; }

class ObjectProcessorTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(memory_allocate());
        build_colour_tables();
        op_init();
        video_reset();
        video.vdb = FIRST_LINE;
        video.vde = 520;
        video.hdb1 = 0;
        video.hde = 320;  // divisor 0 until VMODE is written: counts as 1, so 320 pixels
        video.olp = LIST;
        for (uint32_t i = 0; i < FRAME_ROWS * FRAME_PITCH; ++i) frame_buffer[i] = UNTOUCHED;
        log_text[0] = 0;
    }
    void TearDown() override {
        op_line_buffer = nullptr;
        memory_release();
    }

    // Draws the line of frame-buffer row `row` with a list of one bitmap object followed by a
    // stop. YPOS counts from that row's line, so the object's image row 0 falls on it.
    int draw_one(const bitmap& b, int row = 0) {
        bitmap linked = b;
        linked.ypos += 2 * row;
        linked.link = LIST + 0x100;
        put_bitmap(LIST, linked);
        put_stop(LIST + 0x100);
        return op_process_line(line_of_row(row));
    }
    // Draws line `line` with a list of one scaled object followed by a stop.
    int draw_one_scaled(const bitmap& b, int hscale, int vscale, int line) {
        bitmap linked = b;
        linked.link = LIST + 0x100;
        put_scaled(LIST, linked, hscale, vscale);
        put_stop(LIST + 0x100);
        return op_process_line(line);
    }
    bool logged(const char* text) const { return std::strstr(log_text, text) != nullptr; }
};

}  // namespace optest
