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
    draw_one_scaled({.ypos = 20, .height = 12, .xpos = 10}, 32, 32, FIRST_LINE);
    EXPECT_EQ(cell(0, 9), UNTOUCHED);
    EXPECT_EQ(cell(0, 10), 16u * 10 + 1);
    EXPECT_EQ(cell(0, 13), 16u * 10 + 4);
    EXPECT_EQ(cell(0, 14), UNTOUCHED);
    draw_one_scaled({.ypos = 20, .height = 12, .xpos = 10}, 32, 32, line_of_row(2));
    EXPECT_EQ(cell(2, 10), UNTOUCHED);  // row 12 is past HEIGHT
}

TEST_F(ObjectProcessorTest, HorizontalScaleRepeatsOrSkipsSourcePixels) {
    put_words(DATA, {1, 2, 3, 4, 5, 6, 7, 8});
    draw_one_scaled({.xpos = 10}, 64, 32, FIRST_LINE);
    const uint32_t doubled[] = {1, 1, 2, 2, 3, 3, 4, 4};
    for (int i = 0; i < 8; ++i) EXPECT_EQ(cell(0, 10 + i), doubled[i]) << i;
    EXPECT_EQ(cell(0, 18), UNTOUCHED);

    draw_one_scaled({.ypos = 42, .xpos = 10, .iwidth = 2}, 16, 32, line_of_row(1));
    const uint32_t halved[] = {1, 3, 5, 7};
    for (int i = 0; i < 4; ++i) EXPECT_EQ(cell(1, 10 + i), halved[i]) << i;
    EXPECT_EQ(cell(1, 14), UNTOUCHED);
}

TEST_F(ObjectProcessorTest, ScaledObjectsClipLeftAndReflect) {
    put_words(DATA, {1, 2, 3, 4});
    // Three cells cut off at double width are one and a half source pixels.
    draw_one_scaled({.xpos = -3}, 64, 32, FIRST_LINE);
    const uint32_t clipped[] = {2, 3, 3, 4, 4};
    for (int i = 0; i < 5; ++i) EXPECT_EQ(cell(0, i), clipped[i]) << i;
    EXPECT_EQ(cell(0, 5), UNTOUCHED);

    draw_one_scaled({.ypos = 42, .xpos = 100, .flags = REFLECT | TRANS}, 64, 32, line_of_row(1));
    EXPECT_EQ(cell(1, 101), UNTOUCHED);
    EXPECT_EQ(cell(1, 100), 1u);
    EXPECT_EQ(cell(1, 93), 4u);
    EXPECT_EQ(cell(1, 92), UNTOUCHED);
}

TEST_F(ObjectProcessorTest, VerticalScaleChoosesRowsByTruncatingTheScaledLine) {
    put_numbered_rows(40);
    // VSCALE 64: the line just above YPOS already shows row 0 (-0.5 truncates to 0).
    const int shown[] = {0, 0, 0, 1, 1, 2};
    for (int k = 0; k < 6; ++k) {
        const int line = 98 + 2 * k;  // YPOS 100
        draw_one_scaled({.ypos = 100, .height = 40}, 32, 64, line);
        EXPECT_EQ(cell((line - FIRST_LINE) / 2, 0), 16u * shown[k] + 1) << "line " << line;
    }
    // (32 / 49) x 49 in double precision falls just below 32: row 31; likewise VSCALE 98 gives 15.
    draw_one_scaled({.ypos = 0, .height = 40}, 32, 49, 98);
    EXPECT_EQ(cell(29, 0), 16u * 31 + 1);
    draw_one_scaled({.ypos = 0, .height = 40}, 32, 98, 98);
    EXPECT_EQ(cell(29, 0), 16u * 15 + 1);
}

TEST_F(ObjectProcessorTest, ZeroScaleDrawsNothingAndSaysNothing) {
    put_words(DATA, {1, 2, 3, 4});
    draw_one_scaled({}, 0, 32, FIRST_LINE);
    draw_one_scaled({}, 32, 0, FIRST_LINE);
    EXPECT_EQ(cell(0, 0), UNTOUCHED);
    EXPECT_EQ(log_text[0], 0);
    draw_one_scaled({.firstpix = 3}, 32, 32, FIRST_LINE);
    EXPECT_STREQ(log_text, "Object processor error (Scaled 16-bit): Firstpix > 0\n");
    EXPECT_EQ(cell(0, 0), 1u);  // FIRSTPIX is not applied
}

TEST_F(ObjectProcessorTest, ScaledClutDepthsUseIndexAndTransparency) {
    for (int k = 0; k < 256; ++k) set_clut(k, static_cast<uint16_t>(0x100 + k));
    put_bytes(DATA, {0x90});  // 4-bit pixels 9, 0
    draw_one_scaled({.depth = DEPTH4, .index = 3, .flags = TRANS}, 64, 32, FIRST_LINE);
    EXPECT_EQ(cell(0, 0), 0x10Fu);
    EXPECT_EQ(cell(0, 1), 0x10Fu);
    EXPECT_EQ(cell(0, 2), UNTOUCHED);
}

}  // namespace
}  // namespace optest
