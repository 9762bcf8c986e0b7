// Scaled bitmap objects: horizontal and vertical scale, placement, and the rounding of the row.
#include "op_fixture.h"

// Sixteen-bit rows of four pixels, row r holding the words 16r + 1 ... 16r + 4.
static void put_numbered_rows(int rows) {
    for (int r = 0; r < rows; ++r)
        for (int i = 0; i < 4; ++i) ws_write16(main_ram, DATA + r * 8 + i * 2, static_cast<uint16_t>(16 * r + i + 1));
}

TEST_F(ObjectProcessorTest, UnitScaleDrawsLikeAnUnscaledObjectButKeepsItsOwnYpos) {
    put_numbered_rows(12);
    // YPOS 20 lies above VDB 40: the first displayed line shows row (40 - 20) / 2 = 10.
    draw_at(FIRST_LINE, {.ypos = 20, .height = 12, .xpos = 10}, 32);
    expect_cells(0, 9, {UNTOUCHED, 16 * 10 + 1, 16 * 10 + 2, 16 * 10 + 3, 16 * 10 + 4, UNTOUCHED});
    draw_at(line_of_row(2), {.ypos = 20, .height = 12, .xpos = 10}, 32);
    EXPECT_EQ(cell(2, 10), UNTOUCHED);  // row 12 is past HEIGHT
}

TEST_F(ObjectProcessorTest, HorizontalScaleRepeatsOrSkipsSourcePixelsAndClips) {
    number_clut();
    put_words(DATA, {1, 2, 3, 4, 5, 6, 7, 8});
    put_bytes(DATA + 16, {0x90});  // 4-bit pixels 9, 0
    expect_shown({
        {{.xpos = 10}, 0, 9, {UNTOUCHED, 1, 1, 2, 2, 3, 3, 4, 4, UNTOUCHED}, 64},
        {{.xpos = 10, .iwidth = 2}, 1, 9, {UNTOUCHED, 1, 3, 5, 7, UNTOUCHED}, 16},
        // Three cells cut off at double width are one and a half source pixels.
        {{.xpos = -3}, 2, 0, {2, 3, 3, 4, 4, UNTOUCHED}, 64},
        {{.xpos = 100, .flags = REFLECT}, 3, 92, {UNTOUCHED, 4, 4, 3, 3, 2, 2, 1, 1, UNTOUCHED}, 64},
        // CLUT depths add INDEX and leave TRANS pixels out.
        {{.data = DATA + 16, .depth = DEPTH4, .index = 3, .flags = TRANS}, 4, 0, {0x10F, 0x10F, UNTOUCHED}, 64},
    });
}

TEST_F(ObjectProcessorTest, VerticalScaleChoosesRowsByTruncatingTheScaledLine) {
    put_numbered_rows(40);
    // VSCALE 64: the line just above YPOS already shows row 0 (-0.5 truncates to 0).
    const int shown[] = {0, 0, 0, 1, 1, 2};
    for (int k = 0; k < 6; ++k) {
        draw_at(98 + 2 * k, {.ypos = 100, .height = 40}, 32, 64);
        EXPECT_EQ(cell(29 + k, 0), 16u * shown[k] + 1) << "line " << 98 + 2 * k;
    }
    // (32 / 49) x 49 in double precision falls just below 32: row 31; likewise VSCALE 98 gives 15.
    draw_at(98, {.ypos = 0, .height = 40}, 32, 49);
    EXPECT_EQ(cell(29, 0), 16u * 31 + 1);
    draw_at(98, {.ypos = 0, .height = 40}, 32, 98);
    EXPECT_EQ(cell(29, 0), 16u * 15 + 1);
}

TEST_F(ObjectProcessorTest, ZeroScaleDrawsNothingAndFirstpixIsOnlyReported) {
    put_words(DATA, {1, 2, 3, 4});
    draw_at(FIRST_LINE, {}, 0, 32);
    draw_at(FIRST_LINE, {}, 32, 0);
    EXPECT_EQ(cell(0, 0), UNTOUCHED);
    EXPECT_EQ(log_text[0], 0);
    expect_shown({{{.firstpix = 3}, 0, 0, {1}, 32}});
    EXPECT_STREQ(log_text, "Object processor error (Scaled 16-bit): Firstpix > 0\n");
}
