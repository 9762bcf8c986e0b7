// What programs observe through the bus: byte order, mirrors, the widths' own decodes, the
// wave-table ROM, the line-buffer read-back range and the edges of every buffer.
#include <gtest/gtest.h>

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
        std::memset(log_text, 0, sizeof log_text);
    }
    void TearDown() override {
        op_line_buffer = nullptr;
        memory_release();
    }
    static uint32_t host32(const uint8_t* buf, uint32_t offset) {
        uint32_t v;
        std::memcpy(&v, buf + offset, 4);
        return v;
    }
};

TEST_F(Bus, BigEndianValuesRoundTripThroughEveryWidth) {
    bus_write32(0x000100, 0xA1B2C3D4);
    EXPECT_EQ(bus_read16(0x000100), 0xA1B2);
    EXPECT_EQ(bus_read16(0x000102), 0xC3D4);
    EXPECT_EQ(bus_read8(0x000100), 0xA1);
    EXPECT_EQ(bus_read8(0x000101), 0xB2);
    EXPECT_EQ(bus_read8(0x000103), 0xD4);
    EXPECT_EQ(host32(main_ram, 0x100), 0xC3D4A1B2u);  // console's high word first in memory

    bus_write8(0x000200, 0x12);
    bus_write8(0x000201, 0x34);
    bus_write16(0x000202, 0x5678);
    EXPECT_EQ(bus_read32(0x000200), 0x12345678u);

    // The same order holds in every buffer the bus serves.
    for (uint32_t base : {0xF03010u, 0xF1B010u, 0xF00410u}) {
        bus_write32(base, 0x0BADF00D);
        EXPECT_EQ(bus_read16(base), 0x0BAD) << std::hex << base;
        EXPECT_EQ(bus_read16(base + 2), 0xF00D) << std::hex << base;
        EXPECT_EQ(bus_read32(base), 0x0BADF00Du) << std::hex << base;
    }
}

TEST_F(Bus, RamRepeatsEveryTwoMegabytesUpToEight) {
    bus_write16(0x000004, 0xBEEF);
    EXPECT_EQ(bus_read16(0x200004), 0xBEEF);
    EXPECT_EQ(bus_read16(0x600004), 0xBEEF);
    bus_write32(0x7FFFF0, 0x11223344);  // writes through a mirror land in the one RAM
    EXPECT_EQ(bus_read32(0x1FFFF0), 0x11223344u);
    EXPECT_EQ(bus_read8(0xFF000004), 0xBE);  // the top byte of an address is ignored
}

TEST_F(Bus, CartridgeAndBootRomAreReadOnlyAndSeenByTheirWidths) {
    ws_write32(cart_rom, 0, 0xCAFE0001);
    ws_write32(boot_rom, 0, 0xB0070002);
    ws_write32(boot_rom, 0x100, 0x12345678);

    EXPECT_EQ(bus_read32(0x800000), 0xCAFE0001u);
    EXPECT_EQ(bus_read8(0x800001), 0xFE);
    bus_write8(0x800000, 0);
    bus_write16(0x800000, 0);
    bus_write32(0x800000, 0);
    EXPECT_EQ(bus_read32(0x800000), 0xCAFE0001u);

    // 32-bit reads see the boot ROM at 0xE00000, 8- and 16-bit reads only from 0xF20000 up.
    EXPECT_EQ(bus_read32(0xE00000), 0xB0070002u);
    EXPECT_EQ(bus_read16(0xE00000), 0);
    EXPECT_EQ(bus_read8(0xE00000), 0);
    EXPECT_EQ(bus_read16(0xF20000), 0xB007);
    EXPECT_EQ(bus_read8(0xF20001), 0x07);
    EXPECT_EQ(bus_read16(0xFE0100), 0x1234);  // repeats every 128 KB up to the top
    EXPECT_EQ(bus_read32(0xF20000), 0u);
    EXPECT_EQ(bus_read16(0xFFFFFF), 0);
    bus_write16(0xF20000, 0);
    EXPECT_EQ(bus_read16(0xF20000), 0xB007);
}

TEST_F(Bus, CdromRangeAnswersOnlyWordAndLongAccesses) {
    ws_write16(cart_rom, 0x5FFF0A, 0x4142);
    ws_write16(cart_rom, 0x5FFEFE, 0x5152);
    EXPECT_EQ(bus_read8(0xDFFF0A), 0x41);  // bytes still read the cartridge
    EXPECT_EQ(bus_read16(0xDFFEFE), 0x5152);
    EXPECT_NE(bus_read16(0xDFFF0A), 0x4142);
    EXPECT_NE(bus_read32(0xDFFF08), 0x51524142u);
}

TEST_F(Bus, GpuRamSecondMirrorExistsOnlyForLongs) {
    bus_write32(0xF0B010, 0xDEADBEEF);
    EXPECT_EQ(bus_read32(0xF03010), 0xDEADBEEFu);
    EXPECT_EQ(bus_read32(0xF0B010), 0xDEADBEEFu);
    EXPECT_EQ(bus_read16(0xF0B010), 0);  // not GPU RAM for words
    bus_write16(0xF0B020, 0x1234);
    EXPECT_EQ(bus_read16(0xF03020), 0);
    bus_write8(0xF03021, 0x99);
    EXPECT_EQ(bus_read8(0xF03021), 0x99);
    EXPECT_EQ(bus_read16(0xF03020), 0x0099);
    bus_write32(0xF04000, 0x55555555);  // the gap between GPU RAM and its mirror takes nothing
    EXPECT_EQ(bus_read32(0xF03000), 0u);
}

TEST_F(Bus, ClutMirrorForWordsAndLongWritesButNotByteWrites) {
    bus_write16(0xF00600, 0xABCD);
    EXPECT_EQ(bus_read16(0xF00400), 0xABCD);
    EXPECT_EQ(bus_read16(0xF00600), 0xABCD);
    EXPECT_EQ(bus_read8(0xF00400), 0xAB);  // byte reads see the CLUT
    bus_write32(0xF00604, 0x01020304);
    EXPECT_EQ(bus_read32(0xF00404), 0x01020304u);
    EXPECT_EQ(bus_read32(0xF00604), 0u);   // a long read of the mirror is a register access
    bus_write8(0xF00400, 0x77);            // byte writes go to the register file, not the CLUT
    EXPECT_EQ(bus_read16(0xF00400), 0xABCD);
}

TEST_F(Bus, DspRamAndTheSoundChipsIgnoredWrites) {
    bus_write32(0xF1B100, 0x600DCAFE);
    EXPECT_EQ(bus_read32(0xF1B100), 0x600DCAFEu);
    EXPECT_EQ(bus_read16(0xF1B102), 0xCAFE);
    bus_write8(0xF1B100, 0x00);  // no byte writes anywhere in the sound chip
    EXPECT_EQ(bus_read8(0xF1B100), 0x60);
    EXPECT_EQ(std::string(log_text), "");
}

TEST_F(Bus, WaveTableRomHoldsTheConsolesWaveforms) {
    auto entry = [](uint32_t wave, uint32_t i) {
        return static_cast<int32_t>(bus_read32(0xF1D000 + wave * 0x200 + i * 4));
    };
    // triangle
    EXPECT_EQ(entry(0, 0), -15871);
    EXPECT_EQ(entry(0, 31), 0);
    EXPECT_EQ(entry(0, 63), 16383);
    EXPECT_EQ(entry(0, 95), 0);
    EXPECT_EQ(entry(0, 127), -16383);
    // sine
    EXPECT_EQ(entry(1, 0), 1607);
    EXPECT_EQ(entry(1, 1), 3211);
    EXPECT_EQ(entry(1, 2), 4807);
    EXPECT_EQ(entry(1, 63), 0);
    EXPECT_EQ(entry(1, 127), 0);
    // amplitude-modulated sine
    EXPECT_EQ(entry(2, 0), 16);
    EXPECT_EQ(entry(2, 3), 255);
    EXPECT_EQ(entry(2, 99), -32137);
    // sine with its second harmonic
    EXPECT_EQ(entry(3, 0), 2409);
    EXPECT_EQ(entry(3, 2), 7159);
    EXPECT_EQ(entry(3, 18), 28837);
    // chirp, with its one irregular entry
    EXPECT_EQ(entry(4, 0), 1796);
    EXPECT_EQ(entry(4, 2), 6478);
    EXPECT_EQ(entry(4, 68), -19609);
    // delta
    EXPECT_EQ(entry(6, 59), 0);
    EXPECT_EQ(bus_read32(0xF1DCF0), 8191u);
    EXPECT_EQ(entry(6, 63), 32767);
    EXPECT_EQ(entry(6, 67), 0);

    // The irregular waves: known first entries, values within their ranges, ends reached.
    const int32_t noisy_first[] = {-14699, -13531, -13892, -12970, -13010, -12797, -12608, -11860};
    const int32_t noise_first[] = {-4186, 3968, -4092, 3750, -4747, 7812, 1223, 10452};
    for (int i = 0; i < 8; ++i) {
        EXPECT_EQ(entry(5, i), noisy_first[i]);
        EXPECT_EQ(entry(7, i), noise_first[i]);
    }
    int32_t lo5 = 0, hi5 = 0, lo7 = 0, hi7 = 0;
    for (uint32_t i = 0; i < 128; ++i) {
        lo5 = std::min(lo5, entry(5, i)), hi5 = std::max(hi5, entry(5, i));
        lo7 = std::min(lo7, entry(7, i)), hi7 = std::max(hi7, entry(7, i));
        int32_t deviation = entry(5, i) - entry(0, i);
        EXPECT_GE(deviation, -1537) << i;
        EXPECT_LE(deviation, 1892) << i;
    }
    EXPECT_EQ(lo5, -15169);
    EXPECT_EQ(hi5, 15711);
    EXPECT_EQ(lo7, -13481);
    EXPECT_EQ(hi7, 18924);

    bus_write32(0xF1D200, 0);  // ROM
    EXPECT_EQ(entry(1, 0), 1607);
    EXPECT_EQ(bus_read16(0xF1D200), 0);  // only long reads reach it
}

TEST_F(Bus, LineBufferReadBackShowsOnePixelPerWord) {
    EXPECT_EQ(bus_read32(0xF01800), 0u);  // nothing drawn yet: no row to show
    op_line_buffer = frame_buffer + 5 * FRAME_PITCH;
    for (uint32_t i = 0; i < 721; ++i) op_line_buffer[i] = 0xAB0000u | i;
    EXPECT_EQ(bus_read32(0xF01800), 0x00000001u);
    EXPECT_EQ(bus_read32(0xF01802), 0x00010002u);
    EXPECT_EQ(bus_read32(0xF01D9E), (719u << 16) | 720u);
    EXPECT_EQ(bus_read16(0xF01800), 0);  // no other width reaches it
}

TEST_F(Bus, EdgeAccessesStayInsideTheirBuffers) {
    // A long at RAM's last word takes its low half from the first word, like the 2 MB mirror.
    bus_write16(0x000000, 0x2222);
    bus_write16(0x1FFFFE, 0x1111);
    EXPECT_EQ(bus_read32(0x1FFFFE), 0x11112222u);
    bus_write32(0x1FFFFE, 0xAAAABBBB);
    EXPECT_EQ(bus_read16(0x1FFFFE), 0xAAAA);
    EXPECT_EQ(bus_read16(0x000000), 0xBBBB);

    // Word and long accesses at odd addresses use the even address below.
    bus_write32(0x000300, 0x01020304);
    EXPECT_EQ(bus_read16(0x000301), 0x0102);
    EXPECT_EQ(bus_read32(0x000301), 0x01020304u);
    bus_write16(0x000303, 0xFFEE);
    EXPECT_EQ(bus_read32(0x000300), 0x0102FFEEu);

    // The last word of each smaller buffer.
    bus_write32(0xF03FFE, 0x12345678);
    EXPECT_EQ(bus_read16(0xF03FFE), 0x1234);
    EXPECT_EQ(bus_read16(0xF03000), 0x5678);
    bus_write32(0xF1CFFE, 0x9ABCDEF0);
    EXPECT_EQ(bus_read16(0xF1B000), 0xDEF0);
    bus_write32(0xF005FE, 0x0F0F1E1E);
    EXPECT_EQ(bus_read16(0xF00400), 0x1E1E);
    EXPECT_EQ(bus_read32(0xF1DFFE), (bus_read32(0xF1DFFC) << 16) | (bus_read32(0xF1D000) >> 16));
    ws_write16(boot_rom, BOOT_ROM_SIZE - 2, 0x7777);
    EXPECT_EQ(bus_read32(0xE1FFFE) >> 16, 0x7777u);
    EXPECT_EQ(bus_read16(0xFFFFFE), 0x7777);
}

TEST_F(Bus, MemoryPointersForBulkReaders) {
    uint32_t available = 0;
    EXPECT_EQ(get_mem_pointer(0x200010, &available), main_ram + 0x10);
    EXPECT_EQ(available, MAIN_RAM_SIZE - 0x10);
    EXPECT_EQ(get_mem_pointer(0x800000), cart_rom);
    EXPECT_EQ(get_mem_pointer(0xE00004, &available), boot_rom + 4);
    EXPECT_EQ(available, BOOT_ROM_SIZE - 4);
    EXPECT_EQ(get_mem_pointer(0xF0B008), gpu_ram + 8);
    EXPECT_EQ(get_mem_pointer(0xF00402), clut + 2);
    EXPECT_EQ(get_mem_pointer(0xF1CFFE, &available), dsp_ram + 0x1FFE);
    EXPECT_EQ(available, 2u);
    EXPECT_EQ(std::string(log_text), "");

    EXPECT_EQ(get_mem_pointer(0xFFF10000, &available), nullptr);
    EXPECT_EQ(available, 0u);
    EXPECT_STREQ(log_text, "get_mem_pointer: Unhandled address space: 00F10000\n");
    EXPECT_EQ(get_mem_pointer(0xF00600), nullptr);  // the CLUT mirror is not memory here
}

TEST(SwapBytes, ConvertsAnImageBothWays) {
    uint8_t image[] = {0x12, 0x34, 0x56, 0x78, 0x9A};
    swap_bytes(image, 4);
    EXPECT_EQ(image[0], 0x34);
    EXPECT_EQ(image[1], 0x12);
    EXPECT_EQ(image[4], 0x9A);
    swap_bytes(image, 4);
    EXPECT_EQ(image[0], 0x12);
    swap_bytes(image, 0);
    swap_bytes(image, -2);
    EXPECT_EQ(image[0], 0x12);
}

}  // namespace
