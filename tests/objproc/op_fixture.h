// A tiny machine for Object Processor tests: memory allocated, tables built, a 320-pixel display
// whose first line (VDB 40) draws row 0, and helpers that build objects in RAM as a program would.
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

constexpr uint32_t LIST = 0x1000, DATA = 0x10000, UNTOUCHED = 0xDEADBEEF;
constexpr int FIRST_LINE = 40;
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

inline void put_phrase(uint32_t address, uint64_t v) {
    ws_write32(main_ram, address, static_cast<uint32_t>(v >> 32));
    ws_write32(main_ram, address + 4, static_cast<uint32_t>(v));
}
inline uint64_t header_phrase(int type, const bitmap& b) {
    return uint64_t(type) | uint64_t(b.ypos & 0x7FF) << 3 | uint64_t(b.height) << 14 |
           uint64_t(b.link / 8) << 24 | uint64_t(b.data / 8) << 43;
}
inline uint64_t layout_phrase(const bitmap& b) {
    return uint64_t(b.xpos & 0xFFF) | uint64_t(b.depth) << 12 | uint64_t(b.pitch) << 15 |
           uint64_t(b.dwidth) << 18 | uint64_t(b.iwidth) << 28 | uint64_t(b.index) << 38 |
           uint64_t(b.flags) << 45 | uint64_t(b.firstpix) << 49;
}
inline void put_object(uint32_t address, int type, const bitmap& b, int hscale = 0, int vscale = 0) {
    put_phrase(address, header_phrase(type, b));
    put_phrase(address + 8, layout_phrase(b));
    if (type == SCALED) put_phrase(address + 16, uint64_t(hscale) | uint64_t(vscale) << 8);
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
        log_text[0] = 0;
    }
    void TearDown() override {
        op_line_buffer = nullptr;
        memory_release();
    }

    // Draws the line of frame-buffer row `row` with a list of one bitmap object and a stop. YPOS
    // counts from that row's line, so the object's image row 0 falls on it.
    void draw_one(bitmap b, int row = 0) {
        b.ypos += 2 * row;
        b.link = LIST + 0x100;
        put_object(LIST, BITMAP, b);
        put_stop(LIST + 0x100);
        op_process_line(line_of_row(row));
    }
    // Draws `line` with a list of one scaled object and a stop.
    void draw_scaled(bitmap b, int hscale, int vscale, int line = FIRST_LINE) {
        b.link = LIST + 0x100;
        put_object(LIST, SCALED, b, hscale, vscale);
        put_stop(LIST + 0x100);
        op_process_line(line);
    }
    bool logged(const char* text) const { return std::strstr(log_text, text) != nullptr; }
};

}  // namespace optest
