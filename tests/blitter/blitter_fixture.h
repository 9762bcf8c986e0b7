// A tiny machine for Blitter tests: memory allocated, colour tables built, fresh registers, and
// helpers that load the registers through the graphics chip's register file as a program does
// and look at memory as a program would see it.
#pragma once

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "blitter/blitter.h"
#include "blitter/blitter_internal.h"
#include "core/bus.h"
#include "core/host.h"
#include "core/memory.h"
#include "core/video.h"
#include "objproc/colour_tables.h"

namespace blittest {

// Pixel sizes as A1_FLAGS codes, and flag fields.
enum { BITS1 = 0, BITS2 = 1, BITS4 = 2, BITS8 = 3, BITS16 = 4, BITS32 = 5, BITS64 = 6 };
constexpr uint32_t XADDPHR = 0u << 16, XADDPIX = 1u << 16, XADD0 = 2u << 16, XADDINC = 3u << 16;
constexpr uint32_t YADD1 = FLAG_YADD, XSIGNSUB = FLAG_XSIGN, YSIGNSUB = FLAG_YSIGN, MASKED = FLAG_MASK;
constexpr uint32_t LFU_S = 12u << LFU_SHIFT;
inline constexpr uint32_t lfu(uint32_t f) { return f << LFU_SHIFT; }

// Width codes of the widths the tests use.
enum { W4 = 8, W8 = 12, W16 = 16, W32 = 20, W64 = 24, W320 = 33 };
inline constexpr uint32_t flags(uint32_t depth, uint32_t width_code, uint32_t more = XADDPIX) {
    return depth << FLAG_PIXEL_SHIFT | width_code << FLAG_WIDTH_SHIFT | more;
}
inline constexpr uint32_t xy(uint32_t x, uint32_t y) { return (y & 0xFFFF) << 16 | (x & 0xFFFF); }

constexpr uint32_t DST = 0x10000, SRC = 0x20000;

struct area {
    uint32_t base, flags, x = 0, y = 0;
};

class BlitterTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(memory_allocate());
        build_colour_tables();
        video_reset();
        blit_use_runs = true;
        log_clear();
    }
    void TearDown() override {
        blit_use_runs = true;
        memory_release();
    }

    static void set(uint32_t reg, uint32_t value) { gpu_write32(reg, value); }
    static void a1(const area& a) {
        set(A1_BASE, a.base), set(A1_FLAGS, a.flags), set(A1_PIXEL, xy(a.x, a.y)), set(A1_FPIXEL, 0);
    }
    static void a2(const area& a) { set(A2_BASE, a.base), set(A2_FLAGS, a.flags), set(A2_PIXEL, xy(a.x, a.y)); }
    static void count(uint32_t pixels, uint32_t rows) { set(B_COUNT, rows << 16 | pixels); }
    static void run(uint32_t cmd) { set(B_CMD, cmd); }
    // Memory as the console sees it.
    static void put8(uint32_t a, std::vector<uint8_t> v) {
        for (uint8_t b : v) bus_write8(a++, b);
    }
    static void put16(uint32_t a, std::vector<uint16_t> v) {
        for (uint16_t w : v) bus_write16(a, w), a += 2;
    }
    static void put32(uint32_t a, std::vector<uint32_t> v) {
        for (uint32_t l : v) bus_write32(a, l), a += 4;
    }
    static std::vector<uint8_t> get8(uint32_t a, int n) {
        std::vector<uint8_t> v;
        while (n--) v.push_back(bus_read8(a++));
        return v;
    }
    static std::vector<uint16_t> get16(uint32_t a, int n) {
        std::vector<uint16_t> v;
        for (; n--; a += 2) v.push_back(bus_read16(a));
        return v;
    }
    static std::vector<uint32_t> get32(uint32_t a, int n) {
        std::vector<uint32_t> v;
        for (; n--; a += 4) v.push_back(bus_read32(a));
        return v;
    }
    static std::string message() { return log_text; }
    static std::string formatted(const char* format, uint32_t value) {
        char text[128];
        std::snprintf(text, sizeof text, format, value);
        return text;
    }
};

}  // namespace blittest

using namespace blittest;
