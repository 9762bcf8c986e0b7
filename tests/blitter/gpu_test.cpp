// The Blitter and the GPU: every command ends with the GPU's interrupt 4, and a GPU program that
// loads the registers and counts the interrupts draws through frames of the running machine.
#include <cstdio>

#include "blitter_fixture.h"
#include "risc/gpu.h"
#include "support/program_config.h"

namespace {

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

// programs/blitter_gpu_spans.s, run by frames: its GPU code loads the registers, starts sixteen
// Gouraud spans and counts the interrupts that end them.
TEST(BlitterFromGpu, GpuProgramShadesSpansAndCountsTheirInterrupts) {
    constexpr uint32_t SCREEN = 0x20000, RESULTS = 0x1000;
    const vemo_config config = test_support::program_config(VEMO_PROGRAM_DIR "/blitter_gpu_spans.bin");
    ASSERT_EQ(vemo_init(&config), 1) << vemo_get_error_string();
    ASSERT_EQ(vemo_run_frame(), 1) << vemo_get_error_string();
    EXPECT_EQ(bus_read32(RESULTS), 16u);     // blits ended, as the service counted them
    EXPECT_EQ(bus_read32(RESULTS + 4), 1u);  // B_CMD as the GPU read it after a blit: idle
    for (uint32_t y : {0u, 7u, 15u})
        for (uint32_t x : {0u, 1u, 2u, 3u, 4u, 63u})
            EXPECT_EQ(bus_read16(SCREEN + (y * 64 + x) * 2), 0x8800 + 4 * y + x) << x << ", " << y;
    EXPECT_EQ(bus_read16(SCREEN + 16 * 64 * 2), 0xFFFF);  // row 16: never drawn
    EXPECT_EQ(bus_read32(G_FLAGS) & (IMASK | ENABLE_BLIT_IRQ), ENABLE_BLIT_IRQ);  // out of service again
    vemo_shutdown();
}

}  // namespace
