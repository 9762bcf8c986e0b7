// A 68000 program assembled from source and started by vemo_init in program mode: the core
// runs it through this machine's memory map (instructions from RAM, data through the bus).
#include <gtest/gtest.h>

#include "core/bus.h"
#include "core/memory.h"
#include "m68k/m68k.h"
#include "support/program_config.h"
#include "support/temp_files.h"
#include "vemocore.h"

namespace {

constexpr uint32_t LOAD = 0x4000;
constexpr uint32_t RESULTS = LOAD + 0x200;
constexpr uint32_t DONE = LOAD + 0x1F0;

class Program : public ::testing::Test {
protected:
    void SetUp() override {
        vemo_config c = test_support::program_config(VEMO_PROGRAM_DIR "/m68k_workout.bin", LOAD);
        std::snprintf(c.eeprom_path, sizeof c.eeprom_path, "%s",
                      (test_support::scratch_dir() / "none.eeprom").c_str());
        ASSERT_EQ(vemo_init(&c), 1) << vemo_get_error_string();
    }
    void TearDown() override { vemo_shutdown(); }
};

TEST_F(Program, StartsAtTheLoadAddressRunsToItsWaitAndTheInterruptFinishesIt) {
    EXPECT_EQ(m68k_get_pc(), LOAD);
    EXPECT_EQ(m68k_context.a[7], 0x1FFFFFu);
    EXPECT_EQ(m68k_context.sr, 0x2700u);
    for (int i = 0; i < 100 && !m68k_context.stopped; ++i) ASSERT_EQ(m68k_execute(60), M68K_OK);
    ASSERT_TRUE(m68k_context.stopped);
    const uint32_t results[] = {55, 3025, 0x1234ABCD, 0xAAAAAAAA};
    for (int i = 0; i < 4; ++i) EXPECT_EQ(bus_read32(RESULTS + 4 * i), results[i]) << i;
    EXPECT_EQ(bus_read16(RESULTS + 16), 0);

    // Stopped slices change nothing until the interrupt.
    m68k_execute(60);
    EXPECT_EQ(bus_read32(RESULTS + 20), 0u);
    EXPECT_EQ(m68k_interrupt(2, 256), M68K_OK);
    m68k_execute(200);
    EXPECT_EQ(bus_read32(RESULTS + 20), 1u);
    EXPECT_EQ(bus_read16(RESULTS + 16), 0x600D);
    EXPECT_TRUE(m68k_context.stopped);
    vemo_frame_info info{};
    vemo_get_frame_info(&info);
    EXPECT_EQ(info.m68k_pc, DONE + 4);
}

TEST_F(Program, SetupFailsWhenTheStartAddressHasNoInstructionMemory) {
    ws_write32(main_ram, 4, 0x00F00000);
    EXPECT_EQ(m68k_setup(), 0);
    ws_write32(main_ram, 4, 0x00E00000);  // the boot ROM holds instructions
    EXPECT_EQ(m68k_setup(), 1);
    EXPECT_EQ(m68k_get_pc(), 0xE00000u);
}

}  // namespace
