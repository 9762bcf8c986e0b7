// GPU programs assembled into 68000 programs and run frame by frame: started through G_PC and
// G_CTRL, delayed jumps as real loops use them, interrupts with their register banks and stack,
// and the GPU's interrupt of the 68000.
#include "risc/risc_program.h"

namespace {

constexpr uint32_t G_CTRL = 0xF02114;
constexpr uint32_t G_RAM = 0xF03000;

class GpuProgram : public RiscProgram {};

TEST_F(GpuProgram, StartedByThe68000RunsDelayedJumpsAndStopsItself) {
    start("gpu_jumps");
    run_frames(1);
    EXPECT_EQ(result(0), 55u) << "jr loop with a nop in its delay slot";
    EXPECT_EQ(result(1), 5u) << "the delay slot of a taken jr runs, the next instruction does not";
    EXPECT_EQ(result(2), 5u) << "a jump in a delay slot: one more instruction, then the second target";
    EXPECT_EQ(result(3), 3u) << "a jr's delay slot runs on every pass";
    EXPECT_EQ(result(4), 0x0BADF00Du) << "load (r15+1) from a table in local RAM";
    EXPECT_EQ(result(5), result(6)) << "move pc gives the instruction's own address";
    EXPECT_GT(result(6), G_RAM);

    // Stopped right after its G_CTRL store, and it stays there.
    EXPECT_EQ(frame().gpu_pc, result(7));
    EXPECT_EQ(bus_read32(G_CTRL), 0x2008u);
    run_frames(1);
    EXPECT_EQ(frame().gpu_pc, result(7));
}

TEST_F(GpuProgram, InterruptsServeInBankZeroAndReturnToTheMainLoopInBankOne) {
    constexpr uint32_t TAKEN = 0, R30 = 1, PUSHED = 2, R31 = 3, FLAGS = 4, MAIN_PASSES = 16, MAIN_LOOP = 17;
    start("gpu_interrupts");
    run_frames(3);
    EXPECT_EQ(result(TAKEN), 3u);
    EXPECT_EQ(result(R30), G_RAM) << "R30 holds the vector of interrupt 0";
    EXPECT_EQ(result(R31), 0xF03FECu) << "one long pushed below the stack top, popped again by each return";
    // The pushed address is the next instruction's minus 2; between slices that is the main
    // loop's first or second instruction (a slice never ends inside a delay slot).
    const uint32_t next = result(PUSHED) + 2;
    EXPECT_TRUE(next == result(MAIN_LOOP) || next == result(MAIN_LOOP) + 2) << std::hex << next;
    // In service: imask (bit 3), interrupt 0 enabled (bit 4), the interrupted bank 1 (bit 14).
    EXPECT_EQ(result(FLAGS) & 0x4018u, 0x4018u) << std::hex << result(FLAGS);

    // Back in bank 1 the main loop goes on counting with its own registers.
    const uint32_t passes = result(MAIN_PASSES);
    EXPECT_GT(passes, 1000u);
    run_frames(1);
    EXPECT_GT(result(MAIN_PASSES), passes);
    EXPECT_EQ(result(TAKEN), 3u);
    EXPECT_EQ(bus_read32(G_CTRL) & 0x41u, 0x01u) << "running; the service cleared latch 0";
}

TEST_F(GpuProgram, GpuInterruptsReachThe68000LevelTwoHandler) {
    start("gpu_to_68000");
    run_frames(2);
    EXPECT_EQ(result(0), 3u);
    EXPECT_EQ(bus_read16(RESULTS + 4), 0x0002u) << "INT1 shows the GPU source pending in the handler";
    EXPECT_EQ(bus_read32(G_CTRL) & 1u, 0u);
}

}  // namespace
