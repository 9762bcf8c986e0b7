// Walking the object list: background, row selection, stop, branch, GPU objects, broken lists,
// and the start-up that prepares it all.
#include "objproc/renderers.h"
#include "op_fixture.h"
#include "support/program_config.h"
#include "support/temp_files.h"
#include "vemocore.h"

TEST_F(ObjectProcessorTest, BackgroundFillsTheDisplayedWidthOfTheLinesRow) {
    video.olp = 0;
    video.bg = 0x1234;
    EXPECT_EQ(op_process_line(line_of_row(3)), 1);
    EXPECT_EQ(cell(3, 0), UNTOUCHED);  // VMODE bit 7 clear: last frame's row stays

    video.vmode = 0x80;
    video.hdb1 = 100;
    video.hde = 100 + 4 * 200;
    video.pixel_divisor = 4;
    EXPECT_EQ(op_process_line(line_of_row(3)), 1);
    EXPECT_EQ(op_process_line(line_of_row(255)), 1);  // the last row
    expect_cells(3, 199, {0x1234, UNTOUCHED});
    EXPECT_EQ(cell(255, 0), 0x1234u);
    EXPECT_EQ(core_frame_info.row_timing[6], 800);  // clocks in the display range
    EXPECT_EQ(core_frame_info.row_timing[7], 4);    // clocks per pixel

    video.bg = 9;  // lines past row 255 or above VDB draw nothing
    EXPECT_EQ(op_process_line(line_of_row(256)), 1);
    EXPECT_EQ(op_process_line(FIRST_LINE - 2), 1);
    EXPECT_EQ(cell(255, 0), 0x1234u);
    EXPECT_EQ(cell(0, 0), UNTOUCHED);
}

TEST_F(ObjectProcessorTest, BitmapAboveVdbShowsItsRowsFromTheFirstDisplayedLine) {
    put_words(DATA, {0x0A0A, 0, 0, 0, 0x0B0B});
    put_object(LIST, BITMAP, {.ypos = 10, .height = 2});  // LINK 0 ends the list
    for (int row = 0; row < 3; ++row) op_process_line(line_of_row(row));
    EXPECT_EQ(cell(0, 0), 0x0A0Au);
    EXPECT_EQ(cell(1, 0), 0x0B0Bu);
    EXPECT_EQ(cell(2, 0), UNTOUCHED);  // past HEIGHT
}

TEST_F(ObjectProcessorTest, GpuObjectFillsTheObjectDataAndStopObjectWritesObf) {
    put_phrase(LIST, 0x1122334455667702ull);
    put_stop(LIST + 8, 0x1234ABC0);
    put_object(LIST + 16, BITMAP, {});  // behind the stop: never reached
    video.int1_enable = 1 << IRQ_OBJECT;
    EXPECT_EQ(op_process_line(FIRST_LINE), 1);
    const uint16_t expected[4] = {0x1122, 0x3344, 0x5566, 0x7702};
    EXPECT_EQ(std::memcmp(video.ob_data, expected, sizeof expected), 0);
    EXPECT_EQ(video.obf, 0xABC4);
    EXPECT_EQ(video.int1_pending, 0);  // bit 0 of the stored value is clear: no interrupt
    EXPECT_EQ(cell(0, 0), UNTOUCHED);
}

TEST_F(ObjectProcessorTest, BranchesFollowTheirConditions) {
    // The branch at LIST jumps to a bitmap drawing 0xAAAA, or falls through to one drawing 0xBBBB.
    const int line = FIRST_LINE + 20;
    put_words(DATA, {0xAAAA});
    put_words(DATA + 8, {0xBBBB});
    put_object(LIST + 0x100, BITMAP, {.ypos = line, .link = LIST + 0x200});
    put_object(LIST + 8, BITMAP, {.ypos = line, .link = LIST + 0x200, .data = DATA + 8});
    put_stop(LIST + 0x200);
    struct { int ypos, cc, obf; uint32_t shown; } cases[] = {
        {0x7FF, 0, 0, 0xAAAA}, {line, 0, 0, 0xAAAA}, {line + 2, 0, 0, 0xBBBB},
        {line + 2, 1, 0, 0xAAAA}, {line, 1, 0, 0xBBBB}, {line - 2, 2, 0, 0xAAAA},
        {line, 2, 0, 0xBBBB}, {0, 3, 1, 0xAAAA}, {0, 3, 2, 0xBBBB},
    };
    for (const auto& c : cases) {
        put_branch(LIST, c.ypos, c.cc, LIST + 0x100);
        video.obf = static_cast<uint16_t>(c.obf);
        EXPECT_EQ(op_process_line(line), 1);
        EXPECT_EQ(cell(10, 0), c.shown) << "ypos " << c.ypos << " cc " << c.cc << " obf " << c.obf;
    }
}

TEST_F(ObjectProcessorTest, BrokenListsEndWithAMessageNeverAHang) {
    put_phrase(LIST, 0x0102030405060705ull);
    EXPECT_EQ(op_process_line(FIRST_LINE), 0);  // unknown type: the frame ends
    EXPECT_STREQ(log_text, "Object Processor error: Unhandled object 5 at 00001000, 01020304 05060705\n");

    put_words(DATA, {0x0001});
    put_object(LIST, BITMAP, {.link = LIST + 0x10});
    put_branch(LIST + 0x10, 0x7FF, 0, LIST);  // back to the bitmap, for ever
    EXPECT_EQ(op_process_line(FIRST_LINE), 1);
    EXPECT_TRUE(logged("units of work one line allows on line 40")) << log_text;
    EXPECT_EQ(cell(0, 0), 1u);
}

// A well-formed list can ask for more than a line's time: 2047 scaled objects, object n showing
// the word n + 1 on cell n, then a stop. The line ends where its work passes the bound, before
// the stop; the first cut line of each frame is reported.
TEST_F(ObjectProcessorTest, ALineEndsWhereItsWorkPassesTheBoundReportedOncePerFrame) {
    constexpr int OBJECTS = 2047;
    constexpr uint32_t WORDS = 0x40000;  // past the list's 64 KB
    video.hde = 1024;
    for (int n = 0; n < OBJECTS; ++n) {
        put_object(LIST + 32 * n, SCALED, {.link = LIST + 32 * (n + 1), .data = WORDS + 8 * n, .xpos = n % 1000}, 8, 32);
        put_words(WORDS + 8 * n, {static_cast<uint16_t>(n + 1)});
    }
    put_stop(LIST + 32 * OBJECTS, 0x1230);
    EXPECT_EQ(op_process_line(FIRST_LINE), 1);
    EXPECT_EQ(video.obf, 0);  // the stop was never reached
    int drawn = 0;
    while (drawn < 1000 && cell(0, drawn) == static_cast<uint32_t>(drawn + 1)) ++drawn;
    EXPECT_GE(drawn, 256);  // a few hundred objects always fit
    EXPECT_LT(drawn, 1000);
    for (int x = drawn; x < 1000; ++x) ASSERT_EQ(cell(0, x), UNTOUCHED) << x;
    EXPECT_TRUE(logged("the rest of its objects are not drawn there")) << log_text;

    log_text[0] = 0;
    EXPECT_EQ(op_process_line(FIRST_LINE + 2), 1);  // the same frame: not reported again
    EXPECT_STREQ(log_text, "");
    EXPECT_EQ(op_process_line(FIRST_LINE), 1);  // the next frame
    EXPECT_TRUE(logged("on line 40")) << log_text;

    // Messages cost far more than pixels: 100 objects whose DATA lies where no memory is (each
    // logs) pass the bound before their stop, though they draw nothing.
    for (int n = 0; n < 100; ++n) put_object(LIST + 16 * n, BITMAP, {.link = LIST + 16 * (n + 1), .data = 0xF10000});
    put_stop(LIST + 16 * 100, 0x1230);
    EXPECT_EQ(op_process_line(FIRST_LINE), 1);  // a frame of its own
    EXPECT_EQ(video.obf, 0);
    EXPECT_TRUE(logged("the rest of its objects are not drawn there")) << log_text;
}

// What a busy screen asks of one line is drawn whole: four full-width layers, 64 sprites on the
// line and 100 objects whose rows lie elsewhere.
TEST_F(ObjectProcessorTest, ABusyScreensLineIsNeverCut) {
    uint32_t a = LIST;
    auto add = [&a](bitmap b) {
        b.link = a + 16;
        put_object(a, BITMAP, b);
        a = b.link;
    };
    for (int layer = 0; layer < 4; ++layer) add({.iwidth = 80, .flags = TRANS});
    for (int sprite = 0; sprite < 64; ++sprite) add({.data = DATA + 8, .xpos = 4 * sprite, .iwidth = 4});
    for (int hidden = 0; hidden < 100; ++hidden) add({.ypos = 400});
    add({.data = DATA + 16, .xpos = 300});
    put_stop(a, 0x1230);
    put_words(DATA + 16, {0x0FFF});
    EXPECT_EQ(op_process_line(FIRST_LINE), 1);
    EXPECT_EQ(cell(0, 300), 0x0FFFu);  // the last object
    EXPECT_EQ(video.obf, 0x1234);
    EXPECT_STREQ(log_text, "");
}

TEST_F(ObjectProcessorTest, ObjectsWithoutARendererAreSkippedAndTheWalkGoesOn) {
    put_words(DATA, {0x0777});
    put_object(LIST, BITMAP, {.link = LIST + 0x20, .depth = DEPTH32, .flags = RMW});
    put_object(LIST + 0x20, SCALED, {.link = LIST + 0x40, .depth = DEPTH32}, 32, 32);
    put_object(LIST + 0x40, SCALED, {.link = LIST + 0x60, .flags = RMW}, 32, 32);
    put_object(LIST + 0x60, BITMAP, {.link = LIST + 0x80, .xpos = 8});
    put_stop(LIST + 0x80);
    EXPECT_EQ(op_process_line(FIRST_LINE), 1);
    EXPECT_STREQ(log_text, "Object Processor: Unhandled bit-depth 5\n");  // scaled ones: silent
    EXPECT_EQ(cell(0, 0), UNTOUCHED);
    EXPECT_EQ(cell(0, 8), 0x0777u);

    put_object(LIST, BITMAP, {.link = LIST + 0x60, .depth = 6});
    op_process_line(FIRST_LINE);
    EXPECT_STREQ(log_text, "Object Processor: Unhandled bit-depth 6\n");
}

// Start-up fills the colour-addition and scale tables; shut-down forgets the row it pointed into.
TEST(ObjectProcessorStartup, InitBuildsTheTablesAndShutdownDropsTheRowPointer) {
    const vemo_config config = test_support::program_config(test_support::write_file("op_program.bin", {0x4E, 0x71}));
    std::fill(std::begin(op_scale_table), std::end(op_scale_table), 0.0f);  // as in a fresh process
    ASSERT_EQ(vemo_init(&config), 1) << vemo_get_error_string();
    EXPECT_EQ(cry_add(0x1280, 0x1101), 0x2381);

    put_object(LIST, SCALED, {}, 64, 32);  // HSCALE 64 doubles the pixel
    put_words(DATA, {0x0ABC});
    video.olp = LIST;
    video.vdb = FIRST_LINE;
    video.hde = 320;
    EXPECT_EQ(op_process_line(FIRST_LINE), 1);
    expect_cells(0, 0, {0x0ABC, 0x0ABC});
    EXPECT_NE(op_line_buffer, nullptr);
    vemo_shutdown();
    EXPECT_EQ(op_line_buffer, nullptr);
}
