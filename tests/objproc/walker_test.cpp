// Walking the object list: background, row selection, stop, branch, GPU objects and broken lists.
#include "op_fixture.h"

namespace optest {
namespace {

TEST_F(ObjectProcessorTest, BackgroundFillsTheDisplayedWidthOnlyWhenVmodeAsksForIt) {
    video.olp = 0;
    video.bg = 0x1234;
    EXPECT_EQ(op_process_line(line_of_row(3)), 1);
    EXPECT_EQ(cell(3, 0), UNTOUCHED);  // VMODE bit 7 clear: last frame's row stays

    video.vmode = 0x80;
    video.hde = 100 + 4 * 200;
    video.hdb1 = 100;
    video.pixel_divisor = 4;
    EXPECT_EQ(op_process_line(line_of_row(3)), 1);
    EXPECT_EQ(cell(3, 0), 0x1234u);
    EXPECT_EQ(cell(3, 199), 0x1234u);
    EXPECT_EQ(cell(3, 200), UNTOUCHED);
    EXPECT_EQ(op_line_width, 200);
    EXPECT_EQ(core_frame_info.row_timing[6], 800);  // clocks in the display range
    EXPECT_EQ(core_frame_info.row_timing[7], 4);    // clocks per pixel
}

TEST_F(ObjectProcessorTest, LinesPickRowsRelativeToVdbAndStopAtTheLastRow) {
    video.olp = 0;
    video.vmode = 0x80;
    video.bg = 7;
    EXPECT_EQ(op_process_line(FIRST_LINE + 511), 1);
    EXPECT_EQ(cell(255, 0), 7u);
    video.bg = 9;
    EXPECT_EQ(op_process_line(FIRST_LINE + 512), 1);  // no row 256: nothing drawn
    EXPECT_EQ(op_process_line(FIRST_LINE - 2), 1);
    EXPECT_EQ(cell(255, 0), 7u);
    EXPECT_EQ(cell(0, 0), UNTOUCHED);
}

TEST_F(ObjectProcessorTest, BitmapAboveVdbStartsItsRowsOnTheFirstDisplayedLine) {
    put_words(DATA, {0x0A0A, 0, 0, 0, 0x0B0B});
    EXPECT_EQ(draw_one({.ypos = 10, .height = 2}), 1);
    EXPECT_EQ(cell(0, 0), 0x0A0Au);
    draw_one({.ypos = 10, .height = 2}, 1);
    EXPECT_EQ(cell(1, 0), 0x0B0Bu);
    draw_one({.ypos = 10, .height = 2}, 2);
    EXPECT_EQ(cell(2, 0), UNTOUCHED);  // past HEIGHT
}

TEST_F(ObjectProcessorTest, StopObjectWritesObfAndEndsTheList) {
    put_stop(LIST, 0x1234ABC0);
    put_words(DATA, {0x5555});
    put_bitmap(LIST + 8, {});
    EXPECT_EQ(op_process_line(FIRST_LINE), 1);
    EXPECT_EQ(video.obf, 0xABC4);
    EXPECT_EQ(cell(0, 0), UNTOUCHED);
}

TEST_F(ObjectProcessorTest, BranchesFollowTheirConditions) {
    // The branch at LIST jumps to a bitmap drawing 0xAAAA, or falls through to one drawing 0xBBBB.
    put_words(DATA, {0xAAAA});
    put_words(DATA + 8, {0xBBBB});
    const int line = FIRST_LINE + 20;
    put_bitmap(LIST + 0x100, {.ypos = line, .link = LIST + 0x200});
    put_bitmap(LIST + 8, {.ypos = line, .link = LIST + 0x200, .data = DATA + 8});
    put_stop(LIST + 0x200);
    struct { int ypos, cc, obf; uint32_t shown; } cases[] = {
        {0x7FF, 0, 0, 0xAAAA}, {line, 0, 0, 0xAAAA},     {line + 2, 0, 0, 0xBBBB},
        {line + 2, 1, 0, 0xAAAA}, {line, 1, 0, 0xBBBB},  {line - 2, 2, 0, 0xAAAA},
        {line, 2, 0, 0xBBBB},  {0, 3, 1, 0xAAAA},        {0, 3, 2, 0xBBBB},
    };
    for (const auto& c : cases) {
        put_branch(LIST, c.ypos, c.cc, LIST + 0x100);
        video.obf = static_cast<uint16_t>(c.obf);
        EXPECT_EQ(op_process_line(line), 1);
        EXPECT_EQ(cell(10, 0), c.shown) << "ypos " << c.ypos << " cc " << c.cc << " obf " << c.obf;
    }
}

TEST_F(ObjectProcessorTest, GpuObjectFillsTheObjectDataRegistersAndTheWalkGoesOn) {
    put_phrase(LIST, 0x1122334455667702ull);
    put_stop(LIST + 8, 0x50);
    EXPECT_EQ(op_process_line(FIRST_LINE), 1);
    EXPECT_EQ(video.ob_data[0], 0x1122);
    EXPECT_EQ(video.ob_data[1], 0x3344);
    EXPECT_EQ(video.ob_data[2], 0x5566);
    EXPECT_EQ(video.ob_data[3], 0x7702);
    EXPECT_EQ(video.obf, 0x54);  // the stop behind it was reached
}

TEST_F(ObjectProcessorTest, UnknownObjectTypeEndsTheFrameWithAMessage) {
    put_phrase(LIST, 0x0102030405060705ull);
    EXPECT_EQ(op_process_line(FIRST_LINE), 0);
    EXPECT_STREQ(log_text, "Object Processor error: Unhandled object 5 at 00001000, 01020304 05060705\n");
}

TEST_F(ObjectProcessorTest, ALoopingListEndsTheLineWithAMessage) {
    put_words(DATA, {0x0001});
    put_bitmap(LIST, {.link = LIST + 0x10});
    put_branch(LIST + 0x10, 0x7FF, 0, LIST);
    EXPECT_EQ(op_process_line(FIRST_LINE), 1);
    EXPECT_TRUE(logged("did not end")) << log_text;
    EXPECT_EQ(cell(0, 0), 1u);
}

TEST_F(ObjectProcessorTest, ObjectsWithoutARendererAreSkippedAndTheWalkGoesOn) {
    put_words(DATA, {0x0777});
    put_bitmap(LIST, {.link = LIST + 0x20, .depth = DEPTH32, .flags = RMW});
    put_scaled(LIST + 0x20, {.link = LIST + 0x40, .depth = DEPTH32}, 32, 32);
    put_bitmap(LIST + 0x40, {.link = LIST + 0x60, .xpos = 8});
    put_stop(LIST + 0x60);
    EXPECT_EQ(op_process_line(FIRST_LINE), 1);
    EXPECT_STREQ(log_text, "Object Processor: Unhandled bit-depth 5\n");  // scaled: silent
    EXPECT_EQ(cell(0, 0), UNTOUCHED);
    EXPECT_EQ(cell(0, 8), 0x0777u);

    put_bitmap(LIST, {.link = LIST + 0x40, .depth = 6});
    log_text[0] = 0;
    op_process_line(FIRST_LINE);
    EXPECT_STREQ(log_text, "Object Processor: Unhandled bit-depth 6\n");
}

}  // namespace
}  // namespace optest
