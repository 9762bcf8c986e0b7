// Unscaled bitmap objects: every depth, placement and clipping, REFLECT, TRANS, FIRSTPIX and
// read-modify-write, as a program sees them in the frame buffer.
#include "op_fixture.h"

namespace optest {
namespace {

TEST_F(ObjectProcessorTest, EveryDepthDecodesItsPixels) {
    number_clut();
    struct {
        int depth, index;
        std::initializer_list<uint8_t> bytes;
        std::initializer_list<uint32_t> cells;
    } cases[] = {
        {DEPTH1, 3, {0xA5}, {0x107, 0x106, 0x107, 0x106, 0x106, 0x107}},
        {DEPTH2, 2, {0x1B}, {0x104, 0x105, 0x106, 0x107}},
        {DEPTH4, 1, {0x3C, 0xF0}, {0x105, 0x10E, 0x111, 0x102}},
        {DEPTH8, 5, {0x07, 0xFE}, {0x107, 0x1FE}},  // INDEX plays no part
        {DEPTH16, 0, {0x12, 0x34, 0xAB, 0xCD}, {0x1234, 0xABCD}},
        {DEPTH32, 0, {0x11, 0x22, 0x33, 0x44, 0, 0, 0, 1}, {0x33221144, 0x00000001}},
    };
    for (const auto& c : cases) {
        put_bytes(DATA, c.bytes);
        draw_one({.xpos = 10, .depth = c.depth, .index = c.index});
        int x = 10;
        for (uint32_t expected : c.cells) EXPECT_EQ(cell(0, x++), expected) << "depth " << c.depth;
        EXPECT_EQ(cell(0, 9), UNTOUCHED);
    }
}

TEST_F(ObjectProcessorTest, RowsComeFromDwidthAndPhrasesOfARowFromPitch) {
    put_words(DATA, {1, 2, 3, 4});
    put_words(DATA + 16, {5, 6, 7, 8});     // second phrase of row 0, PITCH 2
    put_words(DATA + 24, {9, 10, 11, 12});  // row 1, DWIDTH 3
    draw_one({.height = 2, .pitch = 2, .dwidth = 3, .iwidth = 2});
    op_process_line(line_of_row(1));
    EXPECT_EQ(cell(0, 3), 4u);
    EXPECT_EQ(cell(0, 4), 5u);
    EXPECT_EQ(cell(1, 0), 9u);
    draw_one({.iwidth = 0}, 2);
    EXPECT_EQ(cell(2, 0), UNTOUCHED);
}

TEST_F(ObjectProcessorTest, ClippingAtBothEdges) {
    number_clut();
    for (uint8_t i = 0; i < 32; ++i) ws_write8(main_ram, DATA + i, i);
    // Left: the pixels cut off count whole phrases plus a remainder.
    for (int xpos : {-3, -11}) {
        draw_one({.xpos = xpos, .depth = DEPTH8, .iwidth = 3});
        EXPECT_EQ(cell(0, 0), 0x100u - xpos) << xpos;
    }
    draw_one({.xpos = -6, .depth = DEPTH16, .iwidth = 2});  // words 0x0001, 0x0203, ...
    EXPECT_EQ(cell(0, 0), 0x0C0Du);
    put_bytes(DATA + 8, {0x20});
    draw_one({.xpos = -66, .depth = DEPTH1, .iwidth = 2});  // the third bit of the second phrase
    EXPECT_EQ(cell(0, 0), 0x101u);
    EXPECT_EQ(cell(0, 1), 0x100u);

    // Right: an unreflected object never writes the last cell of the width.
    put_words(DATA, {1, 2, 3, 4, 5, 6, 7, 8});
    draw_one({.xpos = 316, .iwidth = 2}, 1);
    EXPECT_EQ(cell(1, 318), 3u);
    EXPECT_EQ(cell(1, 319), UNTOUCHED);
}

TEST_F(ObjectProcessorTest, ReflectedObjectsRunLeftwardFromXpos) {
    put_words(DATA, {1, 2, 3, 4});
    draw_one({.xpos = 100, .flags = REFLECT});
    EXPECT_EQ(cell(0, 101), UNTOUCHED);
    EXPECT_EQ(cell(0, 100), 1u);
    EXPECT_EQ(cell(0, 97), 4u);
    EXPECT_EQ(cell(0, 96), UNTOUCHED);

    draw_one({.xpos = 3, .flags = REFLECT}, 1);  // would cross the left edge: not drawn at all
    EXPECT_EQ(cell(1, 3), UNTOUCHED);
    draw_one({.xpos = 320, .flags = REFLECT}, 2);  // the first pixel may land on cell w
    EXPECT_EQ(cell(2, 320), 1u);
    draw_one({.xpos = 321, .flags = REFLECT}, 3);
    EXPECT_EQ(cell(3, 320), UNTOUCHED);
}

TEST_F(ObjectProcessorTest, TransparentPixelsAreTheRawZeroValue) {
    set_clut(2, 0x5555);  // with INDEX 1, the value 0 is a visible colour
    set_clut(3, 0x7777);
    put_bytes(DATA, {0x80});
    draw_one({.depth = DEPTH1, .index = 1, .flags = TRANS});
    EXPECT_EQ(cell(0, 0), 0x7777u);
    EXPECT_EQ(cell(0, 1), UNTOUCHED);
    draw_one({.depth = DEPTH1, .index = 1}, 1);
    EXPECT_EQ(cell(1, 1), 0x5555u);

    put_words(DATA, {0x0000, 0x0001});
    draw_one({.xpos = 50, .flags = TRANS | REFLECT}, 2);
    EXPECT_EQ(cell(2, 50), UNTOUCHED);
    EXPECT_EQ(cell(2, 49), 1u);
}

TEST_F(ObjectProcessorTest, FirstpixDropsLeadingPixelsOf8And16BitObjectsOnly) {
    number_clut();
    for (uint8_t i = 0; i < 8; ++i) ws_write8(main_ram, DATA + i, i);
    draw_one({.xpos = 20, .depth = DEPTH8, .firstpix = 8});  // (8 >> 3) & 6 = 0
    EXPECT_EQ(cell(0, 20), 0x100u);
    draw_one({.xpos = 20, .depth = DEPTH8, .firstpix = 16}, 1);
    EXPECT_EQ(cell(1, 20), 0x102u);
    EXPECT_EQ(cell(1, 25), 0x107u);
    EXPECT_EQ(cell(1, 26), UNTOUCHED);
    draw_one({.xpos = 20, .depth = DEPTH16, .firstpix = 32}, 2);  // (32 >> 4) & 2 = 2
    EXPECT_EQ(cell(2, 20), 0x0405u);
    EXPECT_EQ(log_text[0], 0);

    draw_one({.xpos = 20, .depth = DEPTH2, .firstpix = 1}, 3);  // logged, still drawn whole
    EXPECT_STREQ(log_text, "Object processor error (2-bit): Firstpix > 0\n");
    EXPECT_EQ(cell(3, 20), 0x100u);
    draw_one({.xpos = 20, .depth = DEPTH8, .flags = RMW, .firstpix = 16}, 4);
    EXPECT_STREQ(log_text, "Object processor error (8-bit bitmap): Firstpix > 0\n");
}

TEST_F(ObjectProcessorTest, ReadModifyWriteAddsTheObjectColourToTheCell) {
    cell(0, 1) = cell(0, 2) = 0x1280;
    cell(0, 3) = 0x4500;
    put_words(DATA, {0x0000, 0x00FF, 0x1101, 0x00FF});
    draw_one({.flags = RMW});
    EXPECT_EQ(cell(0, 0), 0xBEEFu);  // adding zero keeps the cell's 16-bit colour
    EXPECT_EQ(cell(0, 1), 0x127Fu);  // intensity - 1
    EXPECT_EQ(cell(0, 2), 0x2381u);
    EXPECT_EQ(cell(0, 3), 0x4500u);  // intensity stays at 0

    set_clut(9, 0x1001);
    set_clut(0, 0x2000);  // would change the cell if pixel 0 were added
    cell(1, 0) = cell(1, 1) = 0x00FF;
    put_bytes(DATA + 8, {9, 0});
    draw_one({.data = DATA + 8, .depth = DEPTH8, .flags = RMW | TRANS}, 1);
    EXPECT_EQ(cell(1, 0), 0x10FFu);
    EXPECT_EQ(cell(1, 1), 0x00FFu);  // pixel 0 is transparent
}

}  // namespace
}  // namespace optest
