// How the address generators move: per-pixel movement modes, clipping, the A2 mask, phrase-mode
// row steps, positions written back for the next blit, blits of no size and of a huge size, and
// the whole-row runs checked against the pixel-by-pixel loop.
#include <random>

#include "blitter_fixture.h"

namespace {

// A 16-pixel-wide 16-bit area at DST, shown as rows of '#' (drawn) and '.' (still 0).
std::vector<std::string> shown(int rows) {
    std::vector<std::string> image;
    for (int y = 0; y < rows; ++y) {
        std::string row;
        for (int x = 0; x < 16; ++x) row += bus_read16(DST + (y * 16 + x) * 2) ? '#' : '.';
        image.push_back(row);
    }
    return image;
}

// A rectangle of w x h 16-bit pixels from (x, y) of the area, in pixel mode.
void rectangle(int x, int y, int w, int h, uint32_t cmd_more = 0) {
    gpu_write32(A1_BASE, DST), gpu_write32(A1_FLAGS, flags(BITS16, W16));
    gpu_write32(A1_PIXEL, xy(x, y)), gpu_write32(A1_FPIXEL, 0), gpu_write32(A1_STEP, xy(-w, 1));
    gpu_write32(A2_BASE, SRC), gpu_write32(A2_FLAGS, flags(BITS16, W16));
    gpu_write32(B_PATD + 4, 0xFFFF);
    gpu_write32(B_COUNT, xy(w, h));
    gpu_write32(B_CMD, PATDSEL | UPDA1 | cmd_more);
}

TEST_F(BlitterTest, ClipKeepsPixelsInsideA1sWindow) {
    set(A1_CLIP, xy(8, 4));
    rectangle(-2, -1, 5, 3, CLIP_A1);  // past the left and top edges (coordinates are unsigned)
    rectangle(6, 2, 4, 4, CLIP_A1);    // past the right and bottom edges
    EXPECT_EQ(shown(6), (std::vector<std::string>{"###.............", "###.............", "......##........",
                                                  "......##........", "................", "................"}));
    // Clipped pixels still move the generators: the second rectangle ended at (6, 6).
    EXPECT_EQ(blitter_reg(A1_PIXEL), xy(6, 6));

    // The window is A1's even when A2 is the destination: a copy from A1 at x 6 stores two pixels.
    std::memset(main_ram, 0, 0x30000);
    a1({SRC, flags(BITS16, W16), 6});
    a2({DST, flags(BITS16, W16)});
    put16(SRC + 12, {1, 2, 3, 4});
    count(4, 1);
    run(SRCEN | LFU_S | DSTA2 | CLIP_A1);
    EXPECT_EQ(get16(DST, 4), (std::vector<uint16_t>{1, 2, 0, 0}));
}

TEST_F(BlitterTest, MovementModesPlacePixels) {
    struct movement { const char* what; uint32_t a1_flags, inc, finc, pixels; std::vector<std::string> image; };
    const movement cases[] = {
        {"right", XADDPIX, 0, 0, 3, {"....###.", "........"}},
        {"left", XADDPIX | XSIGNSUB, 0, 0, 3, {"..###...", "........"}},
        {"down", XADD0 | YADD1, 0, 0, 2, {"....#...", "....#..."}},
        {"up and right", XADDPIX | YADD1 | YSIGNSUB, 0, 0, 2, {".....#..", "....#..."}},
        {"increments", XADDINC, xy(-1, 1), 0, 2, {"....#...", "...#...."}},
        {"quarter pixels", XADDINC, 0, xy(0x4000, 0), 5, {"....##..", "........"}},
        {"half rows", XADDINC, xy(1, 0), xy(0, 0x8000), 4, {"....##..", "......##"}},
    };
    for (const movement& c : cases) {
        SCOPED_TRACE(c.what);
        std::memset(main_ram, 0, 0x30000);
        a1({DST, flags(BITS16, W16, c.a1_flags), 4, 0});
        a2({SRC, flags(BITS16, W16)});
        set(A1_INC, c.inc), set(A1_FINC, c.finc), set(B_PATD + 4, 0xFFFF);
        set(A1_PIXEL, xy(4, c.a1_flags & YSIGNSUB ? 1 : 0));
        count(c.pixels, 1);
        run(PATDSEL);
        std::vector<std::string> image = shown(2);
        for (std::string& row : image) row.resize(8);
        EXPECT_EQ(image, c.image);
    }
}

// A2 moves by its own flags: along Y by its own YADD (A1's does not move it), and not along X
// after the invalid mode 3.
TEST_F(BlitterTest, A2MovesByItsOwnFlags) {
    put16(SRC, {1, 2, 3, 4});
    put16(SRC + 32, {5, 6, 7, 8});
    // The second pixel lands at pixel `second` of A1's 16-pixel rows (17: A1 itself moved down).
    struct a2_case { const char* what; uint32_t a1_flags, a2_flags, second; uint16_t copied[2]; const char* message; };
    const a2_case cases[] = {
        {"own YADD", XADDPIX, XADDPIX | YADD1, 1, {1, 6}, ""},
        {"A1's YADD", XADDPIX | YADD1, XADDPIX, 17, {1, 2}, ""},
        {"mode 3", XADDPIX, XADDINC, 1, {1, 1}, "Blitter: Invalid A2 pixel mode 3\n"},
        {"mode 3 with YADD", XADDPIX, XADDINC | YADD1, 1, {1, 5}, "Blitter: Invalid A2 pixel mode 3\n"},
    };
    for (const a2_case& c : cases) {
        SCOPED_TRACE(c.what);
        log_text[0] = 0;
        std::memset(main_ram + DST, 0, 0x100);
        a1({DST, flags(BITS16, W16, c.a1_flags)});
        a2({SRC, flags(BITS16, W16, c.a2_flags)});
        count(2, 1);
        run(SRCEN | LFU_S);
        EXPECT_EQ(bus_read16(DST), c.copied[0]);
        EXPECT_EQ(bus_read16(DST + 2 * c.second), c.copied[1]);
        EXPECT_EQ(message(), c.message);
    }
}

// A slanted edge: each row starts half a pixel further right, the fraction carried by A1_FSTEP.
TEST_F(BlitterTest, RowStepsAddWholeAndFractionalSteps) {
    set(A1_FSTEP, xy(0x8000, 0));
    rectangle(0, 0, 2, 4, UPDA1F);
    EXPECT_EQ(shown(4), (std::vector<std::string>{"##..............", "##..............", ".##.............",
                                                  ".##............."}));
    EXPECT_EQ(blitter_reg(A1_FPIXEL), xy(0, 0));  // four half steps: x is whole again
    EXPECT_EQ(blitter_reg(A1_PIXEL), xy(2, 4));
}

// With the mask A2 repeats a 4 x 2 tile: each coordinate is cut by its mask after each pixel's
// move, so a row step that leaves the tile shows for one pixel (9, from the tile's row 2).
TEST_F(BlitterTest, A2MaskRepeatsATile) {
    put16(SRC, {1, 2, 3, 4}), put16(SRC + 8, {5, 6, 7, 8}), put16(SRC + 16, {9});
    a1({DST, flags(BITS16, W16)});
    a2({SRC, flags(BITS16, W4, XADDPIX | MASKED)});
    set(A2_MASK, xy(3, 1)), set(A1_STEP, xy(-10, 1)), set(A2_STEP, xy(-2, 1));
    count(10, 3);
    run(SRCEN | LFU_S | UPDA1 | UPDA2);
    EXPECT_EQ(get16(DST, 10), (std::vector<uint16_t>{1, 2, 3, 4, 1, 2, 3, 4, 1, 2}));
    EXPECT_EQ(get16(DST + 32, 10), (std::vector<uint16_t>{5, 6, 7, 8, 5, 6, 7, 8, 5, 6}));
    EXPECT_EQ(get16(DST + 64, 10), (std::vector<uint16_t>{9, 2, 3, 4, 1, 2, 3, 4, 1, 2}));
}

// In phrase mode a row ends on a phrase boundary, so programs step back by whole phrases. A1 at
// 16 bits: 6 pixels round up to 8. At 8 bits A2's step also gains a phrase whenever A1's shrank.
TEST_F(BlitterTest, PhraseModeRowsEndOnPhraseBoundaries) {
    struct phrase_case { const char* what; uint32_t depth; int a1_step, a2_step; uint32_t cmd; int second_row_at; };
    const phrase_case cases[] = {
        {"16-bit fill", BITS16, -8, 0, PATDSEL | UPDA1, 0},
        {"16-bit fill, step of the row", BITS16, -6, 0, PATDSEL | UPDA1, 2},
        {"16-bit copy", BITS16, -8, -8, SRCEN | LFU_S | UPDA1 | UPDA2, 0},
        {"8-bit copy", BITS8, -8, -16, SRCEN | LFU_S | UPDA1 | UPDA2, 0},
    };
    for (const phrase_case& c : cases) {
        SCOPED_TRACE(c.what);
        std::memset(main_ram, 0, 0x30000);
        const uint32_t bytes = c.depth == BITS16 ? 2 : 1;
        for (uint32_t i = 0; i < 32; ++i) bus_write8(SRC + i, static_cast<uint8_t>(0x80 + i));  // rows 16 bytes long
        a1({DST, flags(c.depth, W16, XADDPHR)});
        a2({SRC, flags(c.depth, 16 - 4 * (c.depth - BITS8), XADDPHR)});  // 16 bytes a row either way
        set(A1_STEP, xy(c.a1_step, 1)), set(A2_STEP, xy(c.a2_step, 1)), set(B_PATD + 4, 0xFFFF);
        count(6, 2);
        run(c.cmd);
        const uint32_t row1 = DST + 16 * bytes;
        std::vector<uint8_t> expected(6 * bytes, 0xFF);
        if (c.cmd & SRCEN)
            for (uint32_t i = 0; i < expected.size(); ++i) expected[i] = static_cast<uint8_t>(0x80 + 16 + i);
        EXPECT_EQ(get8(row1 + c.second_row_at * bytes, 6 * bytes), expected);
        EXPECT_EQ(bus_read8(row1 + c.second_row_at * bytes - 1) | bus_read8(row1 + (c.second_row_at + 6) * bytes), 0);
    }
}

TEST_F(BlitterTest, SecondBlitContinuesWhereTheFirstStopped) {
    rectangle(0, 0, 4, 2);
    set(B_PATD + 4, 0x0001);
    run(PATDSEL | UPDA1);
    EXPECT_EQ(get16(DST + 2 * 32, 4), std::vector<uint16_t>(4, 1));  // row 2
    EXPECT_EQ(get16(DST + 3 * 32, 5), (std::vector<uint16_t>{1, 1, 1, 1, 0}));

    // A copy: A2 carries on through its source row.
    std::memset(main_ram, 0, 0x30000);
    put16(SRC, {1, 2, 3, 4, 5, 6, 7, 8});
    a1({DST, flags(BITS16, W16)});
    a2({SRC, flags(BITS16, W16)});
    count(3, 1);
    run(SRCEN | LFU_S);
    run(SRCEN | LFU_S);
    EXPECT_EQ(get16(DST, 7), (std::vector<uint16_t>{1, 2, 3, 4, 5, 6, 0}));

    // A line of slope 1/2 in two blits: the fraction of y is written back too.
    std::memset(main_ram, 0, 0x30000);
    a1({DST, flags(BITS16, W16, XADDINC)});
    set(A1_INC, xy(1, 0)), set(A1_FINC, xy(0, 0x8000)), set(B_PATD + 4, 0xFFFF);
    count(3, 1);
    run(PATDSEL);
    EXPECT_EQ(blitter_reg(A1_PIXEL), xy(3, 1));
    EXPECT_EQ(blitter_reg(A1_FPIXEL), xy(0, 0x8000));
    count(2, 1);
    run(PATDSEL);
    EXPECT_EQ(shown(3), (std::vector<std::string>{"##..............", "..##............", "....#..........."}));
}

// No rows: nothing happens. Rows of no pixels still step. A huge blit stops after 2^22 pixels,
// and the frame's later blits draw nothing until the next frame.
TEST_F(BlitterTest, EmptyAndHugeBlitsEndWithDefinedPositions) {
    set(A1_FPIXEL, 0);
    a1({DST, flags(BITS8, W64, XADD0)});
    a2({SRC, flags(BITS8, W64)});
    set(A1_FPIXEL, xy(0x1234, 0x5678)), set(A1_STEP, xy(0, 1)), set(B_PATD + 4, 0xFF00);
    count(0, 0);
    run(PATDSEL | UPDA1);
    EXPECT_EQ(blitter_reg(A1_PIXEL), 0u);
    EXPECT_EQ(blitter_reg(A1_FPIXEL), xy(0x1234, 0x5678));
    count(0, 3);
    run(PATDSEL | UPDA1);
    EXPECT_EQ(blitter_reg(A1_PIXEL), xy(0, 3));
    EXPECT_EQ(get8(DST, 4 * 64), std::vector<uint8_t>(4 * 64, 0));

    // 65535 rows of 65535 pixels, each row on one pixel of column 0: 64 rows and 64 pixels of
    // row 64 make 2^22, and there the blit ends.
    a1({DST, flags(BITS8, W64, XADD0)});
    count(0xFFFF, 0xFFFF);
    log_text[0] = '\0';
    run(PATDSEL | UPDA1);
    EXPECT_EQ(blitter_reg(A1_PIXEL), xy(0, 64));
    EXPECT_EQ(bus_read8(DST + 64 * 64), 0xFF);
    EXPECT_EQ(bus_read8(DST + 65 * 64), 0);
    EXPECT_EQ(bus_read32(B_CMD), 1u);
    EXPECT_NE(std::strstr(log_text, "this frame's blits reached 4194304 pixels"), nullptr) << log_text;

    a1({DST + 0x8000, flags(BITS8, W64)});  // the frame has no pixels left
    count(1, 8);
    run(PATDSEL | UPDA1);
    EXPECT_EQ(bus_read8(DST + 0x8000), 0);
    blitter_begin_frame();  // the next frame's do
    run(PATDSEL | UPDA1);
    EXPECT_EQ(bus_read8(DST + 0x8000), 0xFF);
}

// Random blits near the edges of RAM and GPU RAM, each run twice from the same state: with
// whole-row runs and pixel by pixel. Memory and the written-back registers must agree.
TEST_F(BlitterTest, RowRunsDrawExactlyWhatPixelByPixelDraws) {
    std::mt19937 rng(1234);
    auto pick = [&](uint32_t n) { return static_cast<uint32_t>(rng() % n); };
    auto chance = [&](uint32_t percent) { return pick(100) < percent; };
    auto random_flags = [&](uint32_t depth) {
        const uint32_t xadd = chance(80) ? pick(2) : 2 + pick(2);
        return flags(depth, chance(80) ? 8 + pick(20) : pick(64), xadd << 16) | (chance(75) ? 0 : pick(4)) |
               (chance(10) ? YADD1 : 0) | (chance(10) ? XSIGNSUB : 0) | (chance(10) ? YSIGNSUB : 0) |
               (chance(15) ? MASKED : 0);
    };
    const uint32_t bases[] = {0x000000, 0x001000, 0x1FF000, 0x3FF800, 0xF03E00, 0x800000};
    const uint32_t cmd_bits[] = {SRCEN, DSTEN, CLIP_A1, UPDA1F, UPDA1, UPDA2, DSTA2, PATDSEL, DCOMPEN, CMPDST};
    const uint32_t special[] = {0, 0, 0, 0, 0, GOURD, ADDDSEL, SRCSHADE};
    std::vector<uint8_t> ram_before(MAIN_RAM_SIZE), gpu_before(GPU_RAM_SIZE), ram_runs, gpu_runs;

    for (int trial = 0; trial < 1000; ++trial) {
        SCOPED_TRACE(trial);
        for (uint32_t i = 0; i < 0x3000; ++i) {  // something to copy, compare and combine
            main_ram[i] = main_ram[0x1FD000 + i] = static_cast<uint8_t>(pick(4) == 0 ? 0 : rng());
            gpu_ram[i % GPU_RAM_SIZE] = static_cast<uint8_t>(rng());
        }
        const uint32_t depth = BITS8 + pick(3);
        for (uint32_t address = BLITTER_BASE; address < BLITTER_END; address += 4) blitter_reg(address) = rng();
        blitter_reg(A1_BASE) = bases[pick(6)] + pick(0x100) * 8;
        blitter_reg(A2_BASE) = bases[pick(6)] + pick(0x100) * 8;
        blitter_reg(A1_FLAGS) = random_flags(depth);
        blitter_reg(A2_FLAGS) = random_flags(BITS8);
        blitter_reg(A1_PIXEL) = xy(chance(25) ? 0xFFC0 + pick(64) : pick(80), pick(6));
        blitter_reg(A2_PIXEL) = xy(chance(25) ? 0xFFC0 + pick(64) : pick(80), pick(6));
        blitter_reg(A1_STEP) = xy(-static_cast<int>(pick(80)), pick(2));
        blitter_reg(A2_STEP) = xy(-static_cast<int>(pick(80)), pick(2));
        blitter_reg(A1_INC) = xy(pick(3) - 1, pick(3) - 1);
        blitter_reg(A1_CLIP) = xy(pick(100), pick(8));
        blitter_reg(A2_MASK) = xy(pick(64), pick(8));
        blitter_reg(B_COUNT) = xy(pick(90), 1 + pick(4));
        uint32_t cmd = lfu(pick(16)) | special[pick(8)];
        for (uint32_t bit : cmd_bits) cmd |= chance(40) ? bit : 0;

        std::memcpy(ram_before.data(), main_ram, MAIN_RAM_SIZE);
        std::memcpy(gpu_before.data(), gpu_ram, GPU_RAM_SIZE);
        const blitter_registers registers_before = blitter;
        blit_use_runs = true;
        blitter_command(cmd);
        ram_runs.assign(main_ram, main_ram + MAIN_RAM_SIZE);
        gpu_runs.assign(gpu_ram, gpu_ram + GPU_RAM_SIZE);
        const blitter_registers registers_runs = blitter;

        std::memcpy(main_ram, ram_before.data(), MAIN_RAM_SIZE);
        std::memcpy(gpu_ram, gpu_before.data(), GPU_RAM_SIZE);
        blitter = registers_before;
        blit_use_runs = false;
        blitter_command(cmd);
        ASSERT_TRUE(std::memcmp(main_ram, ram_runs.data(), MAIN_RAM_SIZE) == 0) << std::hex << cmd;
        ASSERT_TRUE(std::memcmp(gpu_ram, gpu_runs.data(), GPU_RAM_SIZE) == 0) << std::hex << cmd;
        ASSERT_TRUE(std::memcmp(&blitter, &registers_runs, sizeof blitter) == 0) << std::hex << cmd;
    }
}

}  // namespace
