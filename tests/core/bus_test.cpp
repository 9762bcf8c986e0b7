// What programs observe through the bus: byte order, mirrors, the widths' own decodes, the
// wave-table ROM, the line-buffer read-back range and the edges of every buffer.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>

#include "core/bus.h"
#include "core/host.h"
#include "core/memory.h"
#include "objproc/objproc.h"

namespace {

class Bus : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(memory_allocate());
        log_clear();
    }
    void TearDown() override {
        op_line_buffer = nullptr;
        memory_release();
    }
};

TEST_F(Bus, BigEndianValuesRoundTripThroughEveryWidthAndBuffer) {
    bus_write32(0x000100, 0xA1B2C3D4);
    EXPECT_EQ(bus_read16(0x000102), 0xC3D4);
    EXPECT_EQ(bus_read8(0x000101), 0xB2);
    uint32_t host;
    std::memcpy(&host, main_ram + 0x100, 4);
    EXPECT_EQ(host, 0xC3D4A1B2u);  // the console's high word first in memory

    for (uint32_t base : {0x000200u, 0xF03010u, 0xF1B010u, 0xF00410u}) {
        bus_write16(base, 0x0BAD);
        bus_write16(base + 2, 0xF00D);
        EXPECT_EQ(bus_read32(base), 0x0BADF00Du) << std::hex << base;
        bus_write32(base, 0x600DCAFE);
        EXPECT_EQ(bus_read16(base + 2), 0xCAFE) << std::hex << base;
    }
    bus_write8(0xF03021, 0x99);  // bytes can be written to RAM and GPU RAM only
    bus_write8(0x000201, 0x99);
    EXPECT_EQ(bus_read16(0xF03020), 0x0099);
    EXPECT_EQ(bus_read8(0x000201), 0x99);
}

TEST_F(Bus, RamRepeatsEveryTwoMegabytesUpToEight) {
    bus_write16(0x000004, 0xBEEF);
    EXPECT_EQ(bus_read16(0x200004), 0xBEEF);
    EXPECT_EQ(bus_read16(0x600004), 0xBEEF);
    bus_write32(0x7FFFF0, 0x11223344);
    EXPECT_EQ(bus_read32(0x1FFFF0), 0x11223344u);
    EXPECT_EQ(bus_read8(0xFF000004), 0xBE);  // the top byte of an address is ignored
}

TEST_F(Bus, RomsAreReadOnlyAndEachWidthSeesThemWhereItShould) {
    ws_write32(cart_rom, 0, 0xCAFE0001);
    ws_write32(boot_rom, 0, 0xB0070002);
    ws_write16(cart_rom, 0x5FFF0A, 0x4142);
    bus_write8(0x800000, 0);
    bus_write16(0x800000, 0);
    bus_write32(0x800000, 0);
    bus_write16(0xF20000, 0);
    EXPECT_EQ(bus_read32(0x800000), 0xCAFE0001u);
    // 32-bit reads see the boot ROM at 0xE00000, 8- and 16-bit reads from 0xF20000 to the top.
    EXPECT_EQ(bus_read32(0xE00000), 0xB0070002u);
    EXPECT_EQ(bus_read16(0xE00000), 0);
    EXPECT_EQ(bus_read16(0xF20000), 0xB007);
    EXPECT_EQ(bus_read8(0xFE0001), 0x07);
    EXPECT_EQ(bus_read32(0xF20000), 0u);
    // Bytes in the CD-ROM range still read the cartridge; words reach the CD-ROM unit.
    EXPECT_EQ(bus_read8(0xDFFF0A), 0x41);
    EXPECT_NE(bus_read16(0xDFFF0A), 0x4142);
}

TEST_F(Bus, MirrorsThatOnlySomeWidthsSee) {
    // GPU RAM's second mirror answers longs only; words there are register accesses.
    bus_write32(0xF0B010, 0xDEADBEEF);
    EXPECT_EQ(bus_read32(0xF03010), 0xDEADBEEFu);
    EXPECT_EQ(bus_read16(0xF0B010), 0);
    EXPECT_STREQ(log_text, "gpu_read16 00F0B010\n");

    // The CLUT's mirror takes words and long writes; a long read there is a register access,
    // and byte writes anywhere in the CLUT go to the register file.
    bus_write16(0xF00600, 0xABCD);
    bus_write32(0xF00604, 0x01020304);
    bus_write8(0xF00400, 0x77);
    EXPECT_EQ(bus_read16(0xF00400), 0xABCD);
    EXPECT_EQ(bus_read8(0xF00401), 0xCD);
    EXPECT_EQ(bus_read32(0xF00404), 0x01020304u);
    EXPECT_STREQ(log_text, "gpu_write8 00000077 to 00F00400\n");
    EXPECT_EQ(bus_read32(0xF00604), 0u);
    EXPECT_STREQ(log_text, "gpu_read32 00F00604\n");

    // No byte writes in the sound chip, no long writes to the wave-table ROM.
    bus_write32(0xF1B100, 0x600DCAFE);
    bus_write8(0xF1B100, 0x00);
    bus_write32(0xF1D200, 0);
    EXPECT_EQ(bus_read8(0xF1B100), 0x60);
    EXPECT_EQ(bus_read32(0xF1D200), 1607u);
}

TEST_F(Bus, WaveTableRomHoldsTheConsolesWaveforms) {
    auto entry = [](uint32_t wave, uint32_t i) {
        return static_cast<int32_t>(bus_read32(0xF1D000 + wave * 0x200 + i * 4));
    };
    struct { uint32_t wave, index; int32_t value; } known[] = {
        {0, 0, -15871}, {0, 31, 0}, {0, 63, 16383}, {0, 95, 0}, {0, 127, -16383},  // triangle
        {1, 0, 1607}, {1, 2, 4807}, {1, 63, 0}, {1, 127, 0},                        // sine
        {2, 0, 16}, {2, 3, 255}, {2, 99, -32137},                                   // AM sine
        {3, 0, 2409}, {3, 2, 7159}, {3, 18, 28837},                                 // harmonic
        {4, 0, 1796}, {4, 2, 6478}, {4, 68, -19609},                                // chirp
        {6, 59, 0}, {6, 60, 8191}, {6, 63, 32767}, {6, 67, 0},                      // delta
        {5, 0, -14699}, {5, 7, -11860}, {7, 0, -4186}, {7, 7, 10452},               // irregular
    };
    for (const auto& k : known) EXPECT_EQ(entry(k.wave, k.index), k.value) << k.wave << ":" << k.index;
    EXPECT_EQ(bus_read16(0xF1D200), 0);  // only long reads reach it

    // The irregular waves stay within their ranges and reach both ends.
    int32_t lo5 = 0, hi5 = 0, lo7 = 0, hi7 = 0;
    for (uint32_t i = 0; i < 128; ++i) {
        lo5 = std::min(lo5, entry(5, i)), hi5 = std::max(hi5, entry(5, i));
        lo7 = std::min(lo7, entry(7, i)), hi7 = std::max(hi7, entry(7, i));
    }
    EXPECT_EQ(std::make_pair(lo5, hi5), std::make_pair(-15169, 15711));
    EXPECT_EQ(std::make_pair(lo7, hi7), std::make_pair(-13481, 18924));
}

TEST_F(Bus, LineBufferReadBackShowsOnePixelPerWord) {
    EXPECT_EQ(bus_read32(0xF01800), 0u);  // nothing drawn yet: no row to show
    op_line_buffer = frame_buffer + 5 * FRAME_PITCH;
    for (uint32_t i = 0; i < 721; ++i) op_line_buffer[i] = 0xAB0000u | i;
    EXPECT_EQ(bus_read32(0xF01802), 0x00010002u);
    EXPECT_EQ(bus_read32(0xF01D9E), (719u << 16) | 720u);
}

TEST_F(Bus, EdgeAccessesStayInsideTheirBuffers) {
    // A long at a buffer's last word takes its low half from the first word, like the mirror.
    bus_write16(0x000000, 0x2222);
    bus_write16(0x1FFFFE, 0x1111);
    EXPECT_EQ(bus_read32(0x1FFFFE), 0x11112222u);
    bus_write32(0xF03FFE, 0x12345678);
    EXPECT_EQ(bus_read16(0xF03000), 0x5678);
    bus_write32(0xF1CFFE, 0x9ABCDEF0);
    EXPECT_EQ(bus_read16(0xF1B000), 0xDEF0);
    bus_write32(0xF005FE, 0x0F0F1E1E);
    EXPECT_EQ(bus_read16(0xF00400), 0x1E1E);
    EXPECT_EQ(bus_read32(0xF1DFFE), (bus_read32(0xF1DFFC) << 16) | (bus_read32(0xF1D000) >> 16));
    ws_write16(boot_rom, BOOT_ROM_SIZE - 2, 0x7777);
    EXPECT_EQ(bus_read32(0xE1FFFE) >> 16, 0x7777u);

    // Word and long accesses at odd addresses use the even address below.
    bus_write32(0x000300, 0x01020304);
    EXPECT_EQ(bus_read32(0x000301), 0x01020304u);
    bus_write16(0x000303, 0xFFEE);
    EXPECT_EQ(bus_read16(0x000302), 0xFFEE);
}

TEST_F(Bus, MemoryPointersForBulkReaders) {
    uint32_t available = 0;
    EXPECT_EQ(get_mem_pointer(0x200010, &available), main_ram + 0x10);
    EXPECT_EQ(available, MAIN_RAM_SIZE - 0x10);
    EXPECT_EQ(get_mem_pointer(0xE00004), boot_rom + 4);
    EXPECT_EQ(get_mem_pointer(0xF0B008), gpu_ram + 8);
    EXPECT_EQ(get_mem_pointer(0xF1CFFE, &available), dsp_ram + 0x1FFE);
    EXPECT_EQ(available, 2u);
    EXPECT_STREQ(log_text, "");

    EXPECT_EQ(get_mem_pointer(0xFFF10000, &available), nullptr);
    EXPECT_EQ(available, 0u);
    EXPECT_STREQ(log_text, "get_mem_pointer: Unhandled address space: 00F10000\n");
}

TEST(SwapBytes, ConvertsAnImageBothWays) {
    uint8_t image[] = {0x12, 0x34, 0x56, 0x78, 0x9A};
    swap_bytes(image, 4);
    EXPECT_EQ(image[0] << 8 | image[1], 0x3412);
    EXPECT_EQ(image[4], 0x9A);
    swap_bytes(image, 4);
    swap_bytes(image, -2);
    EXPECT_EQ(image[0], 0x12);
}

}  // namespace
