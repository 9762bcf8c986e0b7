// The machine's 68000 memory map: RAM with its mirrors and the cartridge ROM, reached by the core
// without calling the bus, give exactly what the bus gives (odd addresses, the mirrors, the long
// at RAM's last word, the address's top byte, writes to ROM ignored), and the chips' registers
// are still reached through the bus.
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "core/bus.h"
#include "core/memory.h"
#include "core/video.h"
#include "m68k/m68k.h"

namespace {

constexpr uint32_t CODE = 0x4000;

class MachineMap : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(memory_allocate());
        for (uint32_t i = 0; i < MAIN_RAM_SIZE; ++i) main_ram[i] = static_cast<uint8_t>(i * 37 + (i >> 8));
        for (uint32_t i = 0; i < CART_ROM_SIZE; ++i) cart_rom[i] = static_cast<uint8_t>(i * 11 + (i >> 12));
        ws_write32(main_ram, 0, 0x1000);
        ws_write32(main_ram, 4, CODE);
        ASSERT_EQ(m68k_setup(), 1);
    }
    void TearDown() override { memory_release(); }

    // Runs the one instruction `op` at CODE with A0 = address, D0 = 0 and D1 = value.
    void run(uint16_t op, uint32_t address, uint32_t value = 0) {
        ws_write16(main_ram, CODE, op);
        m68k_context.pc = CODE;
        m68k_context.a[0] = address;
        m68k_context.d[0] = 0;
        m68k_context.d[1] = value;
        ASSERT_EQ(m68k_execute(0), M68K_OK);
    }
};

const uint32_t ADDRESSES[] = {0x001000, 0x001001, 0x1FFFFE, 0x1FFFFF, 0x600005, 0x3FFFFE, 0xFF001002,
                              0x800000, 0x812345, 0xDFFEFE, 0xDFFEFF};  // the cartridge up to the CD-ROM

TEST_F(MachineMap, RamReadsGiveWhatTheBusReads) {
    for (uint32_t a : ADDRESSES) {
        SCOPED_TRACE(testing::Message() << std::hex << a);
        run(0x1010, a);  // MOVE.B (A0),D0
        EXPECT_EQ(m68k_context.d[0], bus_read8(a));
        run(0x3010, a);  // MOVE.W (A0),D0
        EXPECT_EQ(m68k_context.d[0], bus_read16(a));
        run(0x2010, a);  // MOVE.L (A0),D0
        EXPECT_EQ(m68k_context.d[0], bus_read32(a));
    }
}

TEST_F(MachineMap, RamWritesChangeWhatTheBusWritesChange) {
    std::vector<uint8_t> before(main_ram, main_ram + MAIN_RAM_SIZE), through_bus;
    const std::vector<uint8_t> cartridge(cart_rom, cart_rom + CART_ROM_SIZE);
    const uint16_t ops[] = {0x1081, 0x3081, 0x2081};  // MOVE.B/W/L D1,(A0)
    for (uint32_t a : ADDRESSES) {
        for (int size = 0; size < 3; ++size) {
            SCOPED_TRACE(testing::Message() << std::hex << a << " size " << (1 << size));
            std::memcpy(main_ram, before.data(), MAIN_RAM_SIZE);
            if (size == 0) bus_write8(a, 0xD4);  // the low byte or word of D1
            else if (size == 1) bus_write16(a, 0xC3D4);
            else bus_write32(a, 0xA1B2C3D4);
            through_bus.assign(main_ram, main_ram + MAIN_RAM_SIZE);
            std::memcpy(main_ram, before.data(), MAIN_RAM_SIZE);
            ws_write16(main_ram, CODE, ops[size]);  // the instruction itself differs from `before`
            through_bus[CODE ^ 0] = main_ram[CODE];
            through_bus[CODE ^ 1] = main_ram[CODE ^ 1];
            run(ops[size], a, 0xA1B2C3D4);
            EXPECT_EQ(std::memcmp(main_ram, through_bus.data(), MAIN_RAM_SIZE), 0);
        }
    }
    EXPECT_EQ(std::memcmp(cart_rom, cartridge.data(), CART_ROM_SIZE), 0);  // writes there are ignored
}

TEST_F(MachineMap, ChipRegistersAreStillReachedThroughTheBus) {
    run(0x3081, 0xF00058, 0x4321);  // MOVE.W D1,(A0): BG
    EXPECT_EQ(video.bg, 0x4321);
    run(0x3010, 0xF00058);  // and read back through the register file
    EXPECT_EQ(m68k_context.d[0], bus_read16(0xF00058));
}

}  // namespace
