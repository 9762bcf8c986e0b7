// The register block as programs reach it, and where the address generators put pixels: the
// memories they reach, width codes, pitch, the wrap inside RAM and the limits of each memory.
#include "blitter_fixture.h"

namespace {

TEST_F(BlitterTest, RegistersAnswerOnlyLongAccesses) {
    set(A1_FLAGS, 0x1234), set(A2_STEP, 0x5678), set(B_PATD, 1), set(B_PATD + 4, 2), set(A1_BASE, DST);
    for (uint32_t quiet : {A1_FLAGS, A2_STEP, B_PATD, B_PATD + 4}) EXPECT_EQ(gpu_read32(quiet), 0u) << quiet;
    EXPECT_EQ(bus_read32(B_CMD), 1u);  // idle: every blit is over by the time anyone looks
    EXPECT_EQ(message(), "");
    for (uint32_t logged : {A1_BASE, B_COUNT, B_Z0, 0xF0223Au}) {
        EXPECT_EQ(gpu_read32(logged), 0u);
        EXPECT_EQ(message(), formatted("gpu_read32 %08X\n", logged));
    }

    // Words and bytes are the register file's business: logged, and no blit starts.
    a1({DST, flags(BITS16, W64)});
    a2({SRC, flags(BITS16, W64)});
    set(B_PATD + 4, 0x7777);
    count(1, 1);
    bus_write16(B_CMD, 0);
    EXPECT_EQ(message(), "gpu_write16 00000000 to 00F02238\n");
    bus_write16(B_CMD + 2, PATDSEL & 0xFFFF);
    bus_write8(B_CMD, 1);
    EXPECT_EQ(message(), "gpu_write8 00000001 to 00F02238\n");
    EXPECT_EQ(bus_read16(B_CMD), 0);
    EXPECT_EQ(message(), "gpu_read16 00F02238\n");
    EXPECT_EQ(bus_read16(DST), 0);
    // A long between two registers is logged and dropped; a long at B_CMD runs the blit.
    bus_write32(B_CMD + 2, PATDSEL);
    EXPECT_EQ(message(), "gpu_write32 00010000 to 00F0223A\n");
    EXPECT_EQ(bus_read16(DST), 0);
    bus_write32(B_CMD, PATDSEL);
    EXPECT_EQ(bus_read16(DST), 0x7777);
}

TEST_F(BlitterTest, BaseAddressesAreAlignedOrRefused) {
    a1({DST + 5, flags(BITS16, W64), 1});
    a2({SRC + 7, flags(BITS16, W64)});
    set(B_PATD + 4, 0x4444);
    count(1, 1);
    run(PATDSEL);
    EXPECT_EQ(get16(DST, 3), (std::vector<uint16_t>{0, 0x4444, 0}));
    EXPECT_EQ(blitter_reg(A1_BASE), DST);
    EXPECT_EQ(blitter_reg(A2_BASE), SRC);
    EXPECT_EQ(blitter_reg(A1_PIXEL), 2u);

    // A base no memory holds stops the command: nothing drawn, no position written back.
    // A1's base is aligned and stored back only once its memory is found.
    struct refused { uint32_t a1_base, a2_base, a1_base_after; const char* message; };
    for (const refused& r :
         {refused{0xF00005, SRC, 0xF00005, "blitter_get_mem_pointer: Unhandled address space: 00F00000\n"},
          refused{0x12E40000, SRC, 0x12E40000, "blitter_get_mem_pointer: Unhandled address space: 00E40000\n"},
          refused{DST + 3, 0xF10000, DST, "blitter_get_mem_pointer: Unhandled address space: 00F10000\n"}}) {
        SCOPED_TRACE(r.message);
        a1({r.a1_base, flags(BITS16, W64), 2});
        a2({r.a2_base, flags(BITS16, W64)});
        run(PATDSEL);
        EXPECT_EQ(message(), r.message);
        EXPECT_EQ(bus_read16(DST + 4), 0);
        EXPECT_EQ(blitter_reg(A1_PIXEL), 2u);
        EXPECT_EQ(blitter_reg(A1_BASE), r.a1_base_after);
    }
    EXPECT_EQ(bus_read32(B_CMD), 1u);
}

// Each memory the generators reach, as a 16-bit destination and as a source: ROM is read,
// never written.
TEST_F(BlitterTest, GeneratorsReachEveryMemory) {
    std::memset(cart_rom, 0, CART_ROM_SIZE);
    std::memset(boot_rom, 0, BOOT_ROM_SIZE);
    ws_write32(cart_rom, 0x10, 0xCA57CA57);
    ws_write32(boot_rom, 0x10, 0xB007B007);
    struct memory_case { uint32_t base, seen_at; uint16_t drawn, read; };
    const memory_case cases[] = {
        {0x001000, 0x001000, 0x5A5A, 0x5A5A},
        {0x201000, 0x001000, 0x5A5A, 0x5A5A}, {0x401000, 0x001000, 0x5A5A, 0x5A5A},
        {0x601000, 0x001000, 0x5A5A, 0x5A5A},
        {0x800010, 0x800010, 0xCA57, 0xCA57}, {0xE00010, 0xE00010, 0xB007, 0xB007},
        {0xF00400, 0xF00400, 0x5A5A, 0x5A5A}, {0xF03000, 0xF03000, 0x5A5A, 0x5A5A},
        {0xF0B010, 0xF03010, 0x5A5A, 0x5A5A}, {0xF1B000, 0xF1B000, 0x5A5A, 0x5A5A},
    };
    for (const memory_case& c : cases) {
        SCOPED_TRACE(c.base);
        std::memset(main_ram, 0, 0x30000);
        a1({c.base, flags(BITS16, W64)});
        a2({SRC, flags(BITS16, W64)});
        set(B_PATD + 4, 0x5A5A);
        count(2, 1);
        run(PATDSEL);
        EXPECT_EQ(bus_read32(c.seen_at), c.drawn * 0x10001u);
        a1({c.base, flags(BITS16, W64)});
        a2({SRC, flags(BITS16, W64)});
        run(SRCEN | LFU_S | DSTA2);
        EXPECT_EQ(bus_read16(SRC), c.read);
        EXPECT_EQ(message(), "");
    }
}

// Where one pixel lands: width codes, pitch (phrases skipped between the phrases of a row: four
// 16-bit or two 32-bit pixels each) and the packing of pixels below a byte.
TEST_F(BlitterTest, PixelAddressesFollowWidthAndPitch) {
    struct address_case { uint32_t depth, width_code, pitch_code, x, y, offset; };
    const address_case cases[] = {
        {BITS8, 0, 0, 0, 1, 1}, {BITS8, 3, 0, 0, 1, 1}, {BITS8, 4, 0, 0, 1, 2}, {BITS8, 7, 0, 0, 1, 3},
        {BITS8, 13, 0, 0, 1, 10}, {BITS8, 20, 0, 0, 1, 32}, {BITS8, 21, 0, 0, 1, 40}, {BITS8, 33, 0, 0, 1, 320},
        {BITS8, 41, 0, 0, 1, 1280}, {BITS8, 63, 0, 0, 1, 57344}, {BITS8, W64, 1, 5, 1, 69},  // no pitch at 8 bits
        {BITS16, W64, 0, 5, 0, 10}, {BITS16, W64, 1, 5, 0, 18}, {BITS16, W64, 2, 5, 0, 34}, {BITS16, W64, 3, 5, 0, 26},
        {BITS16, W64, 2, 0, 1, 512}, {BITS32, W64, 1, 3, 0, 20}, {BITS32, W64, 2, 0, 1, 1024},
        {BITS4, W64, 0, 3, 1, 33}, {BITS1, W64, 0, 3, 1, 8},
    };
    set(B_PATD + 4, 0xFFFFFFFF);
    count(1, 1);
    for (const address_case& c : cases) {
        SCOPED_TRACE(testing::Message() << c.depth << " " << c.width_code << " " << c.pitch_code);
        std::memset(main_ram, 0, 0x20000);
        a1({0, flags(c.depth, c.width_code) | c.pitch_code, c.x, c.y});
        a2({SRC, flags(c.depth, W64)});
        run(PATDSEL | lfu(15));
        uint32_t landed = 0;
        while (landed < 0x10000 && bus_read8(landed) == 0) ++landed;
        EXPECT_EQ(landed, c.offset);
    }
}

// 8- and 16-bit areas in the first 2 MB wrap to its start; 32-bit areas, and areas at the
// RAM mirrors, end with the memory: the pixels past it are dropped.
TEST_F(BlitterTest, AreasWrapInsideRamOrStopAtTheEndOfTheirMemory) {
    struct wrap_case { uint32_t depth, base, pixels; bool wraps; };
    const wrap_case cases[] = {
        {BITS8, 0x1FFFF0, 32, true}, {BITS16, 0x1FFFF0, 16, true},
        {BITS32, 0x1FFFF0, 8, false}, {BITS16, 0x3FFFF0, 16, false}, {BITS8, 0xF1CFF0, 32, false},
    };
    set(B_PATD + 4, 0xFFFFFFFF);
    for (const wrap_case& c : cases) {
        SCOPED_TRACE(c.base);
        std::memset(main_ram, 0, MAIN_RAM_SIZE);
        std::memset(dsp_ram, 0, DSP_RAM_SIZE);
        a1({c.base, flags(c.depth, W64)});
        a2({SRC, flags(c.depth, W64)});
        count(c.pixels, 1);
        run(PATDSEL);
        EXPECT_EQ(bus_read32(c.base + 8) & bus_read32(c.base + 12), 0xFFFFFFFFu);
        EXPECT_EQ(bus_read32(0) & bus_read32(12), c.wraps ? 0xFFFFFFFFu : 0u);
        EXPECT_EQ(bus_read32(16), 0u);
    }
}

// Pixels that fall outside their memory are never touched, before its start or after its end,
// at any size; their reads see 0.
TEST_F(BlitterTest, PixelsOutsideTheirMemoryAreNeitherReadNorWritten) {
    std::memset(gpu_ram, 0x11, GPU_RAM_SIZE);
    std::memset(clut, 0x22, CLUT_SIZE);
    set(B_PATD + 4, 0x99999999);
    // GPU RAM's last phrase, then 8 pixels more: only the 4 inside are filled.
    a1({0xF03FF8, flags(BITS16, W64)});
    a2({SRC, flags(BITS16, W64)});
    count(12, 1);
    run(PATDSEL);
    EXPECT_EQ(get16(0xF03FF4, 6), (std::vector<uint16_t>{0x1111, 0x1111, 0x9999, 0x9999, 0x9999, 0x9999}));
    // 32-bit pixels whose offsets wrap round to just before the CLUT: (18724 x 57344 + 32766)
    // x 4 = 2^32 - 8. Two are dropped; the third is the CLUT's first long.
    a1({0xF00400, flags(BITS32, 63), 32766, 18724});
    count(3, 1);
    run(PATDSEL);
    EXPECT_EQ(get32(0xF00400, 2), (std::vector<uint32_t>{0x99999999, 0x22222222}));

    // 16-bit pixels whose offsets pass 2^32 in a memory that does not wrap: (37449 x 57344) x 2
    // = 2^32 - 16384, which cut to 32 bits lies below the cartridge. Copied as a row, they read 0.
    put32(DST, {0x01010101});
    a1({0x800000, flags(BITS16, 63), 0, 37449});
    a2({DST, flags(BITS16, W64)});
    count(2, 1);
    run(SRCEN | LFU_S | DSTA2);
    EXPECT_EQ(get16(DST, 2), (std::vector<uint16_t>{0, 0}));

    // Reading beyond the cartridge's 6 MB image gives 0: a copy from its last long onwards.
    ws_write32(cart_rom, CART_ROM_SIZE - 4, 0x12345678);
    put32(DST, {1, 1, 1});
    a1({0xDFFFF8, flags(BITS32, W64), 1});
    a2({DST, flags(BITS32, W64)});
    count(3, 1);
    run(SRCEN | LFU_S | DSTA2);
    EXPECT_EQ(get32(DST, 3), (std::vector<uint32_t>{0x12345678, 0, 0}));
}

}  // namespace
