// What each pixel path stores: fills and copies at every depth, the logic functions, data
// compare, colour addition, source shading and Gouraud shading, and the unsupported depths.
#include "blitter_fixture.h"

namespace {

// Fills five pixels from (2, 1) of a 64-pixel-wide area, then copies them to another area;
// both times the bytes around the row stay untouched.
TEST_F(BlitterTest, EveryDepthFillsAndCopiesARow) {
    struct depth_case {
        uint32_t depth, bits;
        uint32_t patd;                // B_PATD bits 31-0
        std::vector<uint8_t> filled;  // from the byte holding pixel (2, 1), one byte more each side
    };
    const depth_case cases[] = {
        // 2 + 64 = pixel 66: byte 8, bit 5; five pixels set bits 5-1 of B_PATD bits 15-8 = 0xFF
        {BITS1, 1, 0x0000FF00, {0x00, 0x3E, 0x00}},
        // pixel 66: byte 33, high nibble; source pixels 0-4 take B_PATD's nibbles 15-12, 11-8 in turn
        {BITS4, 4, 0x0000AB00, {0x00, 0xAB, 0xAB, 0xA0, 0x00}},
        {BITS8, 8, 0x0000CD00, {0x00, 0xCD, 0xCD, 0xCD, 0xCD, 0xCD, 0x00}},
        {BITS16, 16, 0x00001234, {0x00, 0x00, 0x12, 0x34, 0x12, 0x34, 0x12, 0x34, 0x12, 0x34, 0x12, 0x34, 0x00, 0x00}},
        // a data register's long reaches a 32-bit pixel with its halves exchanged
        {BITS32, 32, 0x11112222,
         {0, 0, 0, 0, 0x22, 0x22, 0x11, 0x11, 0x22, 0x22, 0x11, 0x11, 0x22, 0x22, 0x11, 0x11, 0x22, 0x22, 0x11, 0x11,
          0x22, 0x22, 0x11, 0x11, 0, 0, 0, 0}},
    };
    for (const depth_case& c : cases) {
        SCOPED_TRACE(c.bits);
        const uint32_t bytes = c.bits >= 8 ? c.bits / 8 : 1;
        const uint32_t first = 66 * c.bits / 8 - bytes, n = static_cast<uint32_t>(c.filled.size());
        a1({DST, flags(c.depth, W64), 2, 1});
        a2({SRC, flags(c.depth, W64)});
        set(B_PATD + 4, c.patd);
        count(5, 1);
        run(PATDSEL | LFU_S);  // below 8 bits PATDSEL only picks the register
        EXPECT_EQ(get8(DST + first, n), c.filled);

        // Copy the row from A1 to A2 at (2, 1): DSTA2 swaps the roles.
        a2({SRC, flags(c.depth, W64), 2, 1});
        a1({DST, flags(c.depth, W64), 2, 1});
        run(SRCEN | LFU_S | DSTA2);
        EXPECT_EQ(get8(SRC + first, n), c.filled);
        std::memset(main_ram, 0, 0x30000);
    }
}

// D' is the destination operand: here B_DSTD, which the 8-bit path complements (DSTEN clear)
// and the others do not. S comes from memory.
TEST_F(BlitterTest, LogicFunctionsCombineSourceAndDestination) {
    const uint16_t expected[16] = {0x0000, 0xC0A0, 0x3050, 0xF0F0, 0x0C0A, 0xCCAA, 0xC3A5, 0xFCFA,
                                   0x0305, 0x3C5A, 0x3355, 0xF0F0, 0x0F0F, 0xCFAF, 0x3F5F, 0xFFFF};
    for (uint32_t f = 0; f < 16; ++f) {
        SCOPED_TRACE(f);
        put16(SRC, {0x0F0F, 0x0F0F});
        set(B_DSTD + 4, 0x33553355);
        a2({SRC, flags(BITS16, W64)});
        a1({DST, flags(BITS16, W64)});
        count(1, 1);
        run(SRCEN | lfu(f));
        EXPECT_EQ(bus_read16(DST), expected[f]);

        a2({SRC, flags(BITS32, W64)});
        a1({DST, flags(BITS32, W64)});
        run(SRCEN | lfu(f));
        EXPECT_EQ(bus_read32(DST), expected[f] * 0x10001u);

        set(B_DSTD + 4, 0x0000CC00);  // byte 0xCC, complemented to 0x33
        a2({SRC, flags(BITS8, W64)});
        a1({DST, flags(BITS8, W64)});
        run(SRCEN | lfu(f));
        EXPECT_EQ(bus_read8(DST), expected[f] >> 8);
    }
}

// With DSTEN set the destination comes from memory; the 16-bit path complements it, the 8-bit
// path no longer does. The 1- and 4-bit paths combine single pixels inside their bytes.
TEST_F(BlitterTest, DestinationOperandByPath) {
    struct operand_case { const char* what; uint32_t depth, x, pixels, cmd, dstd; std::vector<uint8_t> src, dst, result; };
    const operand_case cases[] = {
        {"16 bits: NOT D OR S", BITS16, 0, 1, SRCEN | DSTEN | lfu(14), 0, {0x00, 0x34}, {0x12, 0x00}, {0xED, 0xFF}},
        {"8 bits: D OR S", BITS8, 0, 1, SRCEN | DSTEN | lfu(14), 0, {0x34}, {0x12}, {0x36}},
        {"4 bits: NOT D of pixel 1", BITS4, 1, 1, DSTEN | lfu(5), 0, {}, {0x3C}, {0x33}},
        {"4 bits: NOT B_DSTD's pixel 1", BITS4, 1, 1, lfu(5), 0x5A00, {}, {0x3C}, {0x35}},
        // source pixels 0-7 (10110010) OR'ed onto pixels 3-10: D from memory, DSTEN or not
        {"1 bit: D OR S", BITS1, 3, 8, SRCEN | lfu(14), 0, {0xB2}, {0x01, 0x01}, {0x17, 0x41}},
    };
    for (const operand_case& c : cases) {
        SCOPED_TRACE(c.what);
        put8(SRC, c.src), put8(DST, c.dst), set(B_DSTD + 4, c.dstd);
        a1({DST, flags(c.depth, W64), c.x});
        a2({SRC, flags(c.depth, W64)});
        count(c.pixels, 1);
        run(c.cmd);
        EXPECT_EQ(get8(DST, static_cast<int>(c.result.size())), c.result);
    }
}

TEST_F(BlitterTest, DataCompareLeavesMatchingPixelsAlone) {
    struct compare_case {
        const char* what;
        uint32_t depth, cmd;
        uint32_t pattern_long;  // B_PATD bits 63-32
        std::vector<uint16_t> src, dst, result;
    };
    const compare_case cases[] = {
        // 16 bits compare the result: a transparent copy
        {"16-bit result", BITS16, SRCEN | LFU_S | DCOMPEN, 0xBEEF0000,
         {0x1111, 0xBEEF, 0x2222}, {0xAAAA, 0xAAAA, 0xAAAA}, {0x1111, 0xAAAA, 0x2222}},
        // 16 bits with CMPDST compare D' = NOT D (DSTEN): destination 0 stays
        {"16-bit destination", BITS16, SRCEN | DSTEN | LFU_S | DCOMPEN | CMPDST, 0xFFFF0000,
         {0x5555, 0x6666, 0x7777}, {0x0000, 0x1234, 0x0000}, {0x0000, 0x6666, 0x0000}},
        // 8 bits compare the source, not the result (NOT D' stores 0xFF where D' is 0)
        {"8-bit source", BITS8, SRCEN | DSTEN | lfu(5) | DCOMPEN, 0x000000AA,
         {0x11AA, 0x22AA}, {0x0000, 0x0000}, {0xFF00, 0xFF00}},
        // 8 bits with CMPDST compare D' = D (DSTEN set): destination bytes 0x00 stay
        {"8-bit destination", BITS8, SRCEN | DSTEN | LFU_S | DCOMPEN | CMPDST, 0x00000000,
         {0x1122, 0x3344}, {0x0009, 0x0800}, {0x0022, 0x3300}},
    };
    for (const compare_case& c : cases) {
        SCOPED_TRACE(c.what);
        put16(SRC, c.src);
        put16(DST, c.dst);
        set(B_PATD, c.pattern_long);
        a1({DST, flags(c.depth, W64)});
        a2({SRC, flags(c.depth, W64)});
        const uint32_t pixels = static_cast<uint32_t>(c.src.size()) * (c.depth == BITS8 ? 2 : 1);
        count(pixels, 1);
        run(c.cmd);
        EXPECT_EQ(get16(DST, static_cast<int>(c.dst.size())), c.result);
    }
}

// Colour addition, source shading and Gouraud shading replace the logic function at 16 bits.
TEST_F(BlitterTest, ShadingPathsComputeTheirColours) {
    // Colour addition: destination + source per field, saturating.
    put16(DST, {0x3400, 0xF0FE, 0x1280});
    put16(SRC, {0x00FF, 0x1101, 0xF010});
    a1({DST, flags(BITS16, W64)});
    a2({SRC, flags(BITS16, W64)});
    count(3, 1);
    run(SRCEN | DSTEN | ADDDSEL | TOPBEN);
    EXPECT_EQ(get16(DST, 3), (std::vector<uint16_t>{0x3400, 0xF1FF, 0x0290}));
    EXPECT_EQ(message(), "blit_16bit_adddsel: Carry into top byte enabled.\n");
    a1({DST, flags(BITS16, W64)});
    a2({SRC, flags(BITS16, W64)});
    run(SRCEN | ADDDSEL | TOPNEN);  // D from B_DSTD (0) when DSTEN is clear
    EXPECT_EQ(get16(DST, 3), (std::vector<uint16_t>{0x0000, 0x1101, 0x0010}));
    EXPECT_EQ(message(), "blit_16bit_adddsel: Carry into top nibble enabled.\n");

    // Source shading: B_IINC bits 23-16 added to the intensity byte, stopping at 0 and 255.
    put16(SRC, {0x12F8, 0x1208, 0x34FF});
    for (const auto& [iinc, result] : {std::pair{0x00100000u, std::vector<uint16_t>{0x12FF, 0x1218, 0x34FF}},
                                       std::pair{0x00F00000u, std::vector<uint16_t>{0x12E8, 0x1200, 0x34EF}}}) {
        set(B_IINC, iinc);
        a1({DST, flags(BITS16, W64)});
        a2({SRC, flags(BITS16, W64)});
        run(SRCEN | SRCSHADE);
        EXPECT_EQ(get16(DST, 3), result);
    }
}

// A Gouraud span: colours and intensities in turn from B_PATD and B_I3-B_I0, each intensity
// moving by B_IINC after its pixel; in pixel mode only the first pair is used.
TEST_F(BlitterTest, GouraudSpanShadesPixelByPixel) {
    set(B_PATD, 0x11002200);
    set(B_PATD + 4, 0x33004400);
    set(B_I3, 0x100000), set(B_I2, 0x118000), set(B_I1, 0x120000), set(B_I0, 0xFF0000);
    set(B_IINC, 0x040000);
    a1({DST, flags(BITS16, W64, XADDPHR)});
    a2({SRC, flags(BITS16, W64)});
    count(8, 1);
    run(GOURD);
    EXPECT_EQ(get16(DST, 8), (std::vector<uint16_t>{0x1110, 0x2211, 0x3312, 0x44FF, 0x1114, 0x2215, 0x3316, 0x44FF}));

    set(B_I3, 0x100000), set(B_IINC, 0x010000);
    a1({DST, flags(BITS16, W64, XADDPIX)});
    count(4, 1);
    run(GOURD);
    EXPECT_EQ(get16(DST, 4), (std::vector<uint16_t>{0x1110, 0x1111, 0x1112, 0x1113}));

    // A negative increment runs down to 0 and stays there; the count runs on across rows.
    set(B_I3, 0x018000), set(B_IINC, 0xFF8000);
    a1({DST, flags(BITS16, W64, XADDPIX)});
    set(A1_STEP, xy(-2, 1));
    count(2, 2);
    run(GOURD | UPDA1);
    EXPECT_EQ(get16(DST, 2), (std::vector<uint16_t>{0x1101, 0x1101}));
    EXPECT_EQ(get16(DST + 128, 2), (std::vector<uint16_t>{0x1100, 0x1100}));
}

TEST_F(BlitterTest, UnsupportedDepthsDrawNothingAndSaySo) {
    struct depth_case {
        uint32_t depth, a1_pitch, a2_pitch;
        const char* message;
        bool draws;
    };
    const depth_case cases[] = {
        {BITS2, 0, 0, "Blitter: 2-bit blitting unhandled !\n", false},
        {BITS64, 0, 0, "Blitter: Invalid pixel depth: 64\n", false},
        {BITS64 + 1, 0, 0, "Blitter: Invalid pixel depth: 128\n", false},
        // pitch is ignored below a byte, with a message for each generator that has one
        {BITS1, 1, 0, "Blitter: 1-bit, A1 pitch 1\n", true},
        {BITS4, 0, 2, "Blitter: 4-bit, A2 pitch 3\n", true},
    };
    for (const depth_case& c : cases) {
        SCOPED_TRACE(c.message);
        std::memset(main_ram, 0, 0x100);
        a1({DST, flags(c.depth, W64) | c.a1_pitch, 0});
        a2({SRC, flags(c.depth, W64) | c.a2_pitch});
        count(2, 1);
        log_text[0] = 0;
        run(lfu(15));
        EXPECT_EQ(message(), c.message);
        EXPECT_EQ(bus_read8(DST) != 0, c.draws);
    }
}

}  // namespace
