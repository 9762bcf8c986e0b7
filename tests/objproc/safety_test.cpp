// Broken registers and data: every write stays inside the row, every read inside the memory
// that holds the data, and the picture is what a user would expect.
#include "op_fixture.h"

constexpr int LAST_ROW = FRAME_ROWS - 1;  // a write past this row's end leaves the frame buffer

TEST_F(ObjectProcessorTest, WidthsBeyondTheRowAreLimitedToIt) {
    video.vmode = 0x80;
    video.bg = 0x0042;
    video.hde = 3000;  // the fill and the clipping stop at the 1024 cells
    put_words(DATA, {1, 2, 3, 4, 5, 6, 7, 8});
    expect_shown({
        {{.xpos = 1020, .iwidth = 2}, LAST_ROW, 1021, {2, 3, 0x42}},
        {{.xpos = 1024, .flags = REFLECT}, LAST_ROW, 1023, {0x42}},  // its first cell would be past the row
    });
    EXPECT_EQ(cell(LAST_ROW, 0), 0x42u);

    // HDE below HDB1: a negative width draws no object; the fill count, read unsigned, is huge.
    video.hdb1 = 400;
    video.hde = 100;
    video.bg = 0x0043;
    expect_shown({{{.xpos = 5}, LAST_ROW, 5, {0x43}}});
    EXPECT_EQ(cell(LAST_ROW, 1023), 0x43u);
}

TEST_F(ObjectProcessorTest, RunsWiderThanSevenHundredTwentyPixelsAreDrawnWhole) {
    video.hde = 1024;
    set_clut(0, 0x0100);
    set_clut(1, 0x0101);
    put_bytes(DATA, {0x04});         // image pixel 5
    put_bytes(DATA + 128, {0x10});   // image pixel 1027
    put_bytes(DATA + 4000, {0x80});  // image pixel 32000
    draw_one({.xpos = -5, .depth = DEPTH1, .iwidth = 20});  // 1280 pixels
    EXPECT_EQ(cell(0, 0), 0x101u);
    expect_cells(0, 1021, {0x100, 0x101, UNTOUCHED});

    // 1023 one-bit phrases shrunk 32 times: cell i shows source pixel 32 i.
    draw_one({.depth = DEPTH1, .iwidth = 1023}, 1, 1);
    expect_cells(1, 999, {0x100, 0x101});
    expect_cells(1, 1022, {0x100, UNTOUCHED});
}

TEST_F(ObjectProcessorTest, DataIsReadOnlyFromTheMemoryThatHoldsItAndCutAtItsEnd) {
    const uint32_t last_phrase = MAIN_RAM_SIZE - 8;
    put_words(last_phrase, {1, 2, 3, 4});
    draw_one({.height = 2, .data = last_phrase, .xpos = 10, .iwidth = 3});
    expect_cells(0, 13, {4, UNTOUCHED});  // the second phrase would lie past RAM
    op_process_line(line_of_row(1));      // image row 1 lies past RAM
    EXPECT_EQ(cell(1, 10), UNTOUCHED);

    ws_write16(gpu_ram, 0xFF8, 0x0777);  // GPU RAM ends 4 KB after 0xF03000
    expect_shown({
        {{.data = last_phrase, .xpos = 10, .iwidth = 2}, 2, 17, {4, UNTOUCHED}, 64},
        {{.data = last_phrase, .xpos = 10, .iwidth = 2}, 5, 10, {1, 3, UNTOUCHED}, 16},  // shrunk
        {{.data = 0xF03FF8, .xpos = 10, .iwidth = 2}, 3, 10, {0x0777}},
    });
    EXPECT_EQ(cell(3, 14), UNTOUCHED);

    draw_one({.data = 0xF10000}, 4);  // no memory lies there: nothing drawn, and a message
    EXPECT_TRUE(logged("get_mem_pointer")) << log_text;
    expect_shown({{{.data = 0xF10000}, 4, 0, {UNTOUCHED}, 32}});
}

TEST_F(ObjectProcessorTest, ClutEntriesPast255WrapToTheStart) {
    set_clut(13, 0x0D0D);
    set_clut(1, 0x0101);
    put_bytes(DATA, {0xF0, 0, 0, 0, 0, 0, 0, 0, 0xC0});
    expect_shown({
        {{.depth = DEPTH4, .index = 127}, 0, 0, {0x0D0D}},                    // 254 + 15 = 269
        {{.data = DATA + 8, .depth = DEPTH2, .index = 127}, 1, 0, {0x0101}},  // 254 + 3 = 257
    });
}

TEST_F(ObjectProcessorTest, AnObjectInTheLastPhraseOfRamReadsItsNextPhraseFromTheStart) {
    put_object(MAIN_RAM_SIZE - 8, BITMAP, {.xpos = 6});  // LINK 0 ends the list after it
    put_words(DATA, {0x0999});
    video.olp = MAIN_RAM_SIZE - 8;
    EXPECT_EQ(op_process_line(FIRST_LINE), 1);
    EXPECT_EQ(cell(0, 6), 0x0999u);
}

// Random lists, data and display registers: every line ends with 0 or 1, and the sanitizer
// build sees no access outside a buffer.
TEST_F(ObjectProcessorTest, RandomListsAndRegistersNeverReachOutsideTheirBuffers) {
    uint64_t state = 0x9E3779B97F4A7C15ull;
    auto next = [&state] { state ^= state << 13; state ^= state >> 7; state ^= state << 17; return state; };
    // Ends of the memories DATA can lie in: RAM (and its mirror), cartridge, boot ROM, GPU RAM
    // (and its mirror), CLUT, DSP RAM.
    const uint32_t ends[] = {0x200000, 0x800000, 0xE00000, 0xE20000, 0xF04000, 0xF0C000, 0xF00600, 0xF1D000};
    // Mostly known object types; links kept inside the random area so that walks run long; half
    // of the objects near the lines drawn; DATA anywhere, or close to the end of a memory.
    auto random_phrase = [&] {
        uint64_t p = next() & ~(0xFFull << 35);
        if (p >> 63) p &= ~(0xFull << 10);
        if (p & (1ull << 62)) {
            const uint32_t data = ends[(p >> 20) & 7] - 8 * ((p >> 24) & 0x3F) - 8;
            p = (p & ((1ull << 43) - 1)) | uint64_t(data / 8) << 43;
        }
        return (p & ~7ull) | (p % 64 == 0 ? 5 : p % 5);
    };
    for (int round = 0; round < 1000; ++round) {
        // The last 4 KB of RAM and, wrapping round, its first 16 KB.
        for (uint32_t a = MAIN_RAM_SIZE - 0x1000; a < MAIN_RAM_SIZE + 0x4000; a += 8) put_phrase(a, random_phrase());
        const uint64_t r = next();
        // OLP in the first 16 KB or in the last phrases of RAM.
        video.olp = (r & (1ull << 14)) ? MAIN_RAM_SIZE - 8 * ((r & 3) + 1) : static_cast<uint32_t>(r) & 0x3FF8;
        video.vdb = static_cast<uint16_t>((r >> 16) & 0x3F);
        video.hdb1 = static_cast<uint16_t>((r >> 24) & 0xFF);  // widths mostly positive, some
        video.hde = static_cast<uint16_t>((r >> 40) & 0xFFF);  // past the row
        video.pixel_divisor = static_cast<uint16_t>((r >> 56) & 7);
        video.vmode = static_cast<uint16_t>(r >> 48);
        for (int line = video.vdb; line < video.vdb + 32; line += 2)
            ASSERT_LE(static_cast<unsigned>(op_process_line(line)), 1u) << "round " << round;
    }
}
