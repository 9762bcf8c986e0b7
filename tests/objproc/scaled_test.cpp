// Scaled bitmap objects: horizontal and vertical scale, placement, and the rounding of the row.
#include "op_fixture.h"

namespace optest {
namespace {

// Sixteen-bit rows of four pixels, row r holding the words 16r + 1 ... 16r + 4.
void put_numbered_rows(int rows) {
    for (int r = 0; r < rows; ++r)
        for (int i = 0; i < 4; ++i) ws_write16(main_ram, DATA + r * 8 + i * 2, static_cast<uint16_t>(16 * r + i + 1));
}

TEST_F(ObjectProcessorTest, UnitScaleDrawsLikeAnUnscaledObjectButKeepsItsOwnYpos) {
    put_numbered_rows(12);
    // YPOS 20 lies above VDB 40: the first displayed line shows row (40 - 20) / 2 = 10.
    draw_scaled({.ypos = 20, .height = 12, .xpos = 10}, 32, 32);
    EXPECT_EQ(cell(0, 9), UNTOUCHED);
    EXPECT_EQ(cell(0, 10), 16u * 10 + 1);
    EXPECT_EQ(cell(0, 13), 16u * 10 + 4);
    EXPECT_EQ(cell(0, 14), UNTOUCHED);
    draw_scaled({.ypos = 20, .height = 12, .xpos = 10}, 32, 32, line_of_row(2));
    EXPECT_EQ(cell(2, 10), UNTOUCHED);  // row 12 is past HEIGHT
}

TEST_F(ObjectProcessorTest, HorizontalScaleRepeatsOrSkipsSourcePixelsAndClips) {
    put_words(DATA, {1, 2, 3, 4, 5, 6, 7, 8});
    // Each case lists the cells from `from` on.
    const struct { int row, xpos, iwidth, hscale, flags, from; std::initializer_list<uint32_t> cells; } cases[] = {
        {0, 10, 1, 64, 0, 9, {UNTOUCHED, 1, 1, 2, 2, 3, 3, 4, 4, UNTOUCHED}},
        {1, 10, 2, 16, 0, 9, {UNTOUCHED, 1, 3, 5, 7, UNTOUCHED}},
        // Three cells cut off at double width are one and a half source pixels.
        {2, -3, 1, 64, 0, 0, {2, 3, 3, 4, 4, UNTOUCHED}},
        {3, 100, 1, 64, REFLECT, 92, {UNTOUCHED, 4, 4, 3, 3, 2, 2, 1, 1, UNTOUCHED}},
    };
    for (const auto& c : cases) {
        const int line = line_of_row(c.row);
        draw_scaled({.ypos = line, .xpos = c.xpos, .iwidth = c.iwidth, .flags = c.flags}, c.hscale, 32, line);
        int x = c.from;
        for (uint32_t expected : c.cells) EXPECT_EQ(cell(c.row, x++), expected) << "row " << c.row;
    }
}

TEST_F(ObjectProcessorTest, VerticalScaleChoosesRowsByTruncatingTheScaledLine) {
    put_numbered_rows(40);
    // VSCALE 64: the line just above YPOS already shows row 0 (-0.5 truncates to 0).
    const int shown[] = {0, 0, 0, 1, 1, 2};
    for (int k = 0; k < 6; ++k) {
        const int line = 98 + 2 * k;
        draw_scaled({.ypos = 100, .height = 40}, 32, 64, line);
        EXPECT_EQ(cell((line - FIRST_LINE) / 2, 0), 16u * shown[k] + 1) << "line " << line;
    }
    // (32 / 49) x 49 in double precision falls just below 32: row 31; likewise VSCALE 98 gives 15.
    draw_scaled({.ypos = 0, .height = 40}, 32, 49, 98);
    EXPECT_EQ(cell(29, 0), 16u * 31 + 1);
    draw_scaled({.ypos = 0, .height = 40}, 32, 98, 98);
    EXPECT_EQ(cell(29, 0), 16u * 15 + 1);
}

TEST_F(ObjectProcessorTest, ZeroScaleDrawsNothingAndFirstpixIsOnlyReported) {
    put_words(DATA, {1, 2, 3, 4});
    draw_scaled({}, 0, 32);
    draw_scaled({}, 32, 0);
    EXPECT_EQ(cell(0, 0), UNTOUCHED);
    EXPECT_EQ(log_text[0], 0);
    draw_scaled({.firstpix = 3}, 32, 32);
    EXPECT_STREQ(log_text, "Object processor error (Scaled 16-bit): Firstpix > 0\n");
    EXPECT_EQ(cell(0, 0), 1u);
}

TEST_F(ObjectProcessorTest, ScaledClutDepthsUseIndexAndTransparency) {
    number_clut();
    put_bytes(DATA, {0x90});  // 4-bit pixels 9, 0
    draw_scaled({.depth = DEPTH4, .index = 3, .flags = TRANS}, 64, 32);
    EXPECT_EQ(cell(0, 0), 0x10Fu);
    EXPECT_EQ(cell(0, 1), 0x10Fu);
    EXPECT_EQ(cell(0, 2), UNTOUCHED);
}

}  // namespace
}  // namespace optest
