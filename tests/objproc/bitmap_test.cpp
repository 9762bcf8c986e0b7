// Unscaled bitmap objects: every depth, placement and clipping, REFLECT, TRANS, FIRSTPIX and
// read-modify-write, as a program sees them in the frame buffer.
#include "op_fixture.h"

TEST_F(ObjectProcessorTest, EveryDepthDecodesItsPixels) {
    number_clut();
    struct {
        int depth, index;
        std::initializer_list<uint8_t> bytes;
        std::initializer_list<uint32_t> cells;  // from x 9, just left of XPOS
    } cases[] = {
        {DEPTH1, 3, {0xA5}, {UNTOUCHED, 0x107, 0x106, 0x107, 0x106, 0x106, 0x107}},
        {DEPTH2, 2, {0x1B}, {UNTOUCHED, 0x104, 0x105, 0x106, 0x107}},
        {DEPTH4, 1, {0x3C, 0xF0}, {UNTOUCHED, 0x105, 0x10E, 0x111, 0x102}},
        {DEPTH8, 5, {0x07, 0xFE}, {UNTOUCHED, 0x107, 0x1FE}},  // INDEX plays no part
        {DEPTH16, 0, {0x12, 0x34, 0xAB, 0xCD}, {UNTOUCHED, 0x1234, 0xABCD}},
        {DEPTH32, 0, {0x11, 0x22, 0x33, 0x44, 0, 0, 0, 1}, {UNTOUCHED, 0x33221144, 0x00000001}},
    };
    for (const auto& c : cases) {
        put_bytes(DATA, c.bytes);
        expect_shown({{{.xpos = 10, .depth = c.depth, .index = c.index}, 0, 9, c.cells}});
    }
}

TEST_F(ObjectProcessorTest, RowsComeFromDwidthAndPhrasesOfARowFromPitch) {
    put_words(DATA, {1, 2, 3, 4});
    put_words(DATA + 16, {5, 6, 7, 8});     // second phrase of row 0, PITCH 2
    put_words(DATA + 24, {9, 10, 11, 12});  // row 1, DWIDTH 3
    draw_one({.height = 2, .pitch = 2, .dwidth = 3, .iwidth = 2});
    op_process_line(line_of_row(1));
    expect_cells(0, 3, {4, 5});
    expect_cells(1, 0, {9});
    expect_shown({{{.iwidth = 0}, 2, 0, {UNTOUCHED}}});
}

// Phrases that follow each other (PITCH 1) are drawn straight from the data, phrases further
// apart through the staging buffers: the same pixels give the same row either way, whatever the
// depth, flags, right-edge clipping and FIRSTPIX.
TEST_F(ObjectProcessorTest, ConsecutivePhrasesDrawLikeTheSamePixelsSpreadByPitch) {
    number_clut();
    constexpr uint32_t SPREAD = DATA + 0x1000;
    constexpr int PHRASES = 6;
    for (int i = 0; i < PHRASES * 8; ++i) {
        const uint8_t v = static_cast<uint8_t>(i % 5 == 0 ? 0 : i * 29);  // some pixels transparent
        ws_write8(main_ram, DATA + i, v);
        ws_write8(main_ram, SPREAD + (i / 8) * 24 + i % 8, v);  // PITCH 3
    }
    for (int depth : {int(DEPTH8), int(DEPTH16), int(DEPTH32)}) {
        for (int flags : {0, int(REFLECT), int(TRANS), REFLECT | TRANS}) {
            for (int xpos : {0, 3, 150, 300}) {  // left clipping skips 8 bytes a phrase whatever PITCH is
                SCOPED_TRACE(testing::Message() << "depth " << depth << " flags " << flags << " xpos " << xpos);
                bitmap b{.xpos = xpos, .depth = depth, .iwidth = PHRASES, .flags = flags, .firstpix = 0x20};
                if ((flags & REFLECT) && xpos < 64) b.xpos += 64;
                draw_one(b, 0);
                b.data = SPREAD;
                b.pitch = 3;
                draw_one(b, 1);
                for (int x = 0; x < 320; ++x) ASSERT_EQ(cell(0, x), cell(1, x)) << "x " << x;
                std::fill(frame_buffer, frame_buffer + 2 * FRAME_PITCH, UNTOUCHED);
            }
        }
    }
}

TEST_F(ObjectProcessorTest, ClippingAtBothEdges) {
    number_clut();
    count_bytes(32);
    put_bytes(DATA + 8, {0x20});
    expect_shown({
        // Left: the pixels cut off count whole phrases plus a remainder.
        {{.xpos = -3, .depth = DEPTH8, .iwidth = 3}, 0, 0, {0x103}},
        {{.xpos = -11, .depth = DEPTH8, .iwidth = 3}, 1, 0, {0x10B}},
        {{.xpos = -6, .iwidth = 2}, 2, 0, {0x0C0D}},                           // words 0x0001, 0x0203, ...
        {{.xpos = -66, .depth = DEPTH1, .iwidth = 2}, 3, 0, {0x101, 0x100}},  // bit 2 of phrase 1
        // Right: an unreflected object never writes the last cell of the width.
        {{.xpos = 316, .iwidth = 2}, 4, 318, {0x0405, UNTOUCHED}},
    });
}

TEST_F(ObjectProcessorTest, ReflectedObjectsRunLeftwardFromXpos) {
    put_words(DATA, {1, 2, 3, 4});
    expect_shown({
        {{.xpos = 100, .flags = REFLECT}, 0, 96, {UNTOUCHED, 4, 3, 2, 1, UNTOUCHED}},
        // Crossing the left edge it is not drawn at all; its first pixel may land on cell w.
        {{.xpos = 3, .flags = REFLECT}, 1, 0, {UNTOUCHED, UNTOUCHED, UNTOUCHED, UNTOUCHED}},
        {{.xpos = 320, .flags = REFLECT}, 2, 320, {1}},
        {{.xpos = 321, .flags = REFLECT}, 3, 320, {UNTOUCHED}},
    });
}

TEST_F(ObjectProcessorTest, TransparentPixelsAreTheRawZeroValue) {
    set_clut(2, 0x5555);  // with INDEX 1, the value 0 is a visible colour
    set_clut(3, 0x7777);
    put_bytes(DATA, {0x80});
    put_words(DATA + 8, {0x0000, 0x0001});
    expect_shown({
        {{.depth = DEPTH1, .index = 1, .flags = TRANS}, 0, 0, {0x7777, UNTOUCHED}},
        {{.depth = DEPTH1, .index = 1}, 1, 0, {0x7777, 0x5555}},
        {{.data = DATA + 8, .xpos = 50, .flags = TRANS | REFLECT}, 2, 49, {1, UNTOUCHED}},
    });
}

TEST_F(ObjectProcessorTest, FirstpixDropsLeadingPixelsOf8And16BitObjectsOnly) {
    number_clut();
    count_bytes(8);
    expect_shown({
        {{.xpos = 20, .depth = DEPTH8, .firstpix = 8}, 0, 20, {0x100}},  // (8 >> 3) & 6 = 0
        {{.xpos = 20, .depth = DEPTH8, .firstpix = 16}, 1, 20, {0x102, 0x103, 0x104, 0x105, 0x106, 0x107, UNTOUCHED}},
        {{.xpos = 20, .firstpix = 32}, 2, 20, {0x0405}},  // (32 >> 4) & 2 = 2
    });
    EXPECT_EQ(log_text[0], 0);

    expect_shown({{{.xpos = 20, .depth = DEPTH2, .firstpix = 1}, 3, 20, {0x100}}});  // still drawn whole
    EXPECT_STREQ(log_text, "Object processor error (2-bit): Firstpix > 0\n");
    draw_one({.xpos = 20, .depth = DEPTH8, .flags = RMW, .firstpix = 16}, 4);
    EXPECT_STREQ(log_text, "Object processor error (8-bit bitmap): Firstpix > 0\n");
}

// Intensity and the two colour nibbles of the object's colour are signed deltas, each
// saturating on its own.
TEST_F(ObjectProcessorTest, ReadModifyWriteAddsTheObjectColourToTheCell) {
    const struct { uint32_t before; uint16_t pixel; uint32_t after; } cases[] = {
        {UNTOUCHED, 0x0000, 0xBEEF},  // adding zero keeps the cell's 16-bit colour
        {0x1280, 0x00FF, 0x127F}, {0x4500, 0x00FF, 0x4500},  // intensity - 1, stopping at 0
        {0x1280, 0x1101, 0x2381}, {0x2310, 0x7105, 0x9415},
        {0x3F10, 0x18F0, 0x4700},  // R 15 - 8, Y 16 - 16
        {0xF005, 0x7080, 0xF000},  // C stays at 15, Y 5 - 128 stops at 0
        {0x00FF, 0x887F, 0x00FF},  // C and R stop at 0, Y at 255
    };
    for (int i = 0; i < 8; ++i) {
        cell(0, i) = cases[i].before;
        ws_write16(main_ram, DATA + 2 * i, cases[i].pixel);
    }
    draw_one({.iwidth = 2, .flags = RMW});
    for (int i = 0; i < 8; ++i) EXPECT_EQ(cell(0, i), cases[i].after) << i;

    set_clut(9, 0x1001);
    set_clut(0, 0x2000);  // would change the cell if pixel 0 were added
    cell(1, 0) = cell(1, 1) = 0x00FF;
    put_bytes(DATA + 16, {9, 0});
    expect_shown({{{.data = DATA + 16, .depth = DEPTH8, .flags = RMW | TRANS}, 1, 0, {0x10FF, 0x00FF}}});
}
