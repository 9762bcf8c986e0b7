// The Blitter and the GPU: every command ends with the GPU's interrupt 4, and a GPU program that
// loads the registers and counts the interrupts draws through frames of the running machine.
#include <cstdio>

#include "blitter_fixture.h"
#include "risc/risc_test_support.h"
#include "support/temp_files.h"

namespace {

using risc_test::ins;
using risc_test::movei;
using risc_test::program;
using risc_test::put;
using risc_test::operator+;
using risc_test::ADDQ, risc_test::ADDQT, risc_test::BCLR, risc_test::BSET, risc_test::CC_ALWAYS, risc_test::JR,
    risc_test::JUMP, risc_test::LOAD, risc_test::MOVEQ, risc_test::NOP, risc_test::STORE;

constexpr uint32_t BLIT_VECTOR = GPU_RAM_BASE + 16 * 4;
constexpr uint32_t ENABLE_BLIT_IRQ = 1u << 8, IMASK = 1u << 3, CLEAR_BLIT_LATCH = 1u << 13;

// Whatever the command does, drawing, refused or empty, the GPU is interrupted once it is over.
TEST_F(BlitterTest, EveryCommandInterruptsTheGpu) {
    gpu_init();
    struct command_case { const char* what; uint32_t a1_base, depth, rows; };
    const command_case cases[] = {
        {"a fill", DST, BITS16, 1}, {"no memory at A1_BASE", 0xF10000, BITS16, 1},
        {"no rows", DST, BITS16, 0}, {"2 bits", DST, BITS2, 1}, {"64 bits", DST, BITS64, 1},
    };
    for (const command_case& c : cases) {
        SCOPED_TRACE(c.what);
        gpu_write32(G_FLAGS, ENABLE_BLIT_IRQ | CLEAR_BLIT_LATCH);  // not in service, latch clear
        gpu_state.regs[31] = GPU_RAM_BASE + 0xF00;
        gpu_state.pc = 0x4000;
        a1({c.a1_base, flags(c.depth, W64)});
        a2({SRC, flags(c.depth, W64)});
        count(1, c.rows);
        run(PATDSEL);
        EXPECT_EQ(gpu_state.pc, BLIT_VECTOR);
        EXPECT_EQ(gpu_read32(G_CTRL) & 1u << 10, 1u << 10);  // latch 4
    }
    // Disabled, the interrupt is not taken.
    gpu_write32(G_FLAGS, CLEAR_BLIT_LATCH);
    gpu_state.pc = 0x4000;
    run(PATDSEL);
    EXPECT_EQ(gpu_state.pc, 0x4000u);
}

// The GPU's code: store `value` at `address`.
program store(uint32_t address, uint32_t value) { return movei(value, 2) + movei(address, 1) + program{ins(STORE, 1, 2)}; }

// A GPU program run by the frame scheduler: it enables its Blitter interrupt, fills four 16-bit
// pixels, then four more in another colour from where the first blit stopped, and marks DONE;
// its interrupt-4 handler counts in R20.
TEST(BlitterFromGpu, GpuProgramDrawsAndCountsBlitInterrupts) {
    constexpr uint32_t CODE = GPU_RAM_BASE + 0x100, DONE = 0x3000;
    const std::string idle = test_support::write_file("idle68k.bin", {0x60, 0xFE});  // bra.s *
    vemo_config config{};
    std::snprintf(config.rom_path, sizeof config.rom_path, "%s", idle.c_str());
    config.load_program = 1;
    config.load_address = 0x4000;
    ASSERT_EQ(vemo_init(&config), 1) << vemo_get_error_string();
    std::memset(main_ram, 0, 0x30000);

    put(BLIT_VECTOR, program{ins(ADDQT, 1, 20)} + movei(G_FLAGS, 29) +
                         program{ins(LOAD, 29, 28), ins(BCLR, 3, 28), ins(BSET, 13, 28), ins(LOAD, 31, 27),
                                 ins(ADDQ, 2, 27), ins(ADDQ, 4, 31), ins(JUMP, 27, CC_ALWAYS), ins(STORE, 29, 28)});
    const program code =
        movei(GPU_RAM_BASE + 0xF00, 31) + program{ins(MOVEQ, 0, 20)} + store(G_FLAGS, ENABLE_BLIT_IRQ) +
        store(A1_BASE, DST) + store(A1_FLAGS, flags(BITS16, W64)) + store(A1_PIXEL, xy(2, 1)) +
        store(A1_FPIXEL, 0) + store(A2_BASE, SRC) + store(A2_FLAGS, flags(BITS16, W64)) +
        store(B_COUNT, xy(4, 1)) + store(B_PATD + 4, 0x1111) + store(B_CMD, PATDSEL) +
        store(B_PATD + 4, 0x2222) + store(B_CMD, PATDSEL) + store(DONE, 0xD0E) +
        program{ins(JR, 31, CC_ALWAYS), ins(NOP, 0, 0)};
    put(CODE, code);
    bus_write32(G_PC, CODE);
    bus_write32(G_CTRL, 1);

    ASSERT_EQ(vemo_run_frame(), 1) << vemo_get_error_string();
    EXPECT_EQ(bus_read32(DONE), 0xD0Eu);
    EXPECT_EQ(gpu_state.regs[20], 2u);
    std::vector<uint16_t> row1;  // pixels 1 to 10 of row 1
    for (uint32_t x = 1; x <= 10; ++x) row1.push_back(bus_read16(DST + (64 + x) * 2));
    EXPECT_EQ(row1, (std::vector<uint16_t>{0, 0x1111, 0x1111, 0x1111, 0x1111, 0x2222, 0x2222, 0x2222, 0x2222, 0}));
    EXPECT_EQ(bus_read32(G_FLAGS) & (IMASK | ENABLE_BLIT_IRQ), ENABLE_BLIT_IRQ);  // out of service again
    vemo_shutdown();
}

}  // namespace
