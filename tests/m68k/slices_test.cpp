// Cycle-budgeted slices, interrupt requests and their acceptance, STOP, reset and exceptions.
#include "m68k_test_machine.h"

namespace {

using m68k_test::CODE;
using m68k_test::HANDLER;
using m68k_test::STACK;
using m68k_test::USER_STACK;
using Budget = m68k_test::Machine;
using Interrupts = m68k_test::Machine;
using Stop = m68k_test::Machine;
using Exceptions = m68k_test::Machine;

TEST_F(Budget, ZeroRunsOneInstructionAnExactZeroContinuesAndAnOverrunIsDropped) {
    run(0, M68K_OK, CODE + 2, -4);
    run(8, M68K_OK, CODE + 8, -4);  // the second NOP leaves exactly 0 and the third still runs
    EXPECT_EQ(m68k_context.cycles_requested, 8);
    // RESET (132) overruns a slice of 60; the next slice of 4 is not reduced: it runs two NOPs.
    put16(CODE + 8, 0x4E70);
    run(60, M68K_OK, CODE + 10, 60 - 132);
    run(4, M68K_OK, CODE + 14);
}

// Between slices the caller may change the registers the core keeps unpacked or cached while it
// runs: the next slice starts from what the context holds.
TEST_F(Budget, ASliceStartsFromTheSrAndPcTheContextHoldsNow) {
    code({0x4E71, 0x6702, 0x7001, 0x4E71});  // NOP; BEQ.S +2; MOVEQ #1,D0; NOP
    run(0, M68K_OK, CODE + 2);
    m68k_context.sr = 0x2004;  // Z set from outside: the BEQ is taken
    run(0, M68K_OK, CODE + 6);
    m68k_context.sr = 0x2000;
    m68k_context.pc = CODE + 2;  // back to the BEQ with Z clear: it falls through to MOVEQ
    run(0, M68K_OK, CODE + 4);
    run(0, M68K_OK, CODE + 6);
    EXPECT_EQ(d(0), 1u);
}

// BRA.S to itself spins until the slice's count runs out, 10 cycles a round, whatever the budget.
TEST_F(Budget, AnIdleBranchSpinsUntilTheCountRunsOut) {
    code({0x60FE});  // BRA.S *
    for (auto [budget, left] : {std::pair{60, -10}, {55, -5}, {9, -1}, {0, -10}, {-3, -13}, {100000, -10}})
        run(budget, M68K_OK, CODE, left);
}

TEST_F(Interrupts, ALevelTwoRequestIsTakenAtTheStartOfTheNextSlice) {
    start(CODE, 0x8004);  // user mode, trace bit, Z, mask 0
    EXPECT_EQ(m68k_interrupt(2, 256), M68K_OK);
    EXPECT_EQ(m68k_context.irq_vector[1], 26u);
    EXPECT_EQ(m68k_context.irq_count, 1);
    EXPECT_EQ(m68k_interrupt(2, 256), M68K_IRQ_LEVEL_WAITING);
    // 44 cycles for the interrupt leave 16: four of the handler's NOPs reach 0, a fifth overruns.
    run(60, M68K_OK, HANDLER + 2 * 5);
    // Stacked on the supervisor stack: SR with its condition codes, then the interrupted PC.
    EXPECT_EQ(get16(STACK - 6), 0x8004);
    EXPECT_EQ(get32(STACK - 4), CODE);
    EXPECT_EQ(a(7), STACK - 6);
    EXPECT_EQ(m68k_context.other_sp, USER_STACK);
    EXPECT_EQ(sr(), 0x2204u);  // T cleared, S set, mask 2, flags kept
    EXPECT_EQ(m68k_context.irq_count, 0);
    EXPECT_EQ(m68k_context.irq_vector[1], 0u);

    // With a budget below the interrupt's cost the handler's first instruction still runs.
    start(CODE);
    m68k_interrupt(2, 256);
    run(40, M68K_OK, HANDLER + 2, 40 - 44 - 4);
}

TEST_F(Interrupts, MaskedRequestsAndRequestsMadeDuringASliceWaitForTheNextSlice) {
    code({0x33C0, 0x00F0, 0x0000});  // MOVE.W D0,$F00000 (16 cycles) raises it, then NOPs
    m68k_test::io_write_raises_interrupt = true;
    run(40, M68K_OK, CODE + 6 + 7 * 2);  // ran on through seven NOPs
    EXPECT_EQ(m68k_context.irq_count, 1);
    m68k_test::io_write_raises_interrupt = false;
    run(0, M68K_OK, HANDLER + 2);

    start(CODE);
    code({0x4E71, 0x4E71, 0x4E71});
    // The handler's RTE restores the mask-0 SR; the request waiting at the same level is not
    // taken right after the RTE but at the start of the following slice.
    put16(HANDLER, 0x4E73);
    m68k_context.sr = 0x2200;  // mask 2
    m68k_interrupt(2, 256);
    run(8, M68K_OK, CODE + 6);  // nothing taken
    EXPECT_EQ(m68k_context.irq_count, 1);
    m68k_context.sr = 0x2000;
    run(0, M68K_OK, CODE + 6);  // taken: the handler's RTE runs as the slice's only instruction
    EXPECT_EQ(m68k_context.irq_count, 0);
    EXPECT_EQ(sr(), 0x2000u);

}

TEST_F(Interrupts, LevelSevenIgnoresTheMaskHigherLevelsRunFirstBadRequestsAreRefused) {
    // Level 7 is taken even with the mask at 7.
    m68k_context.sr = 0x2700;
    put32(31 * 4 + 0x98, HANDLER + 0x10);
    EXPECT_EQ(m68k_interrupt(7, 256), M68K_OK);
    run(0, M68K_OK, HANDLER + 0x12);
    EXPECT_EQ(sr() & 0x0700, 0x0700u);

    // A higher waiting level stacks on top of a lower one and runs first.
    start(CODE);
    put32(0x198, HANDLER + 0x20);  // level 3 with vector 64: read at 64 * 4 + 0x98
    EXPECT_EQ(m68k_interrupt(3, 64), M68K_OK);
    EXPECT_EQ(m68k_interrupt(2, 256), M68K_OK);
    run(0, M68K_OK, HANDLER + 0x22, -88 - 4);
    EXPECT_EQ(a(7), STACK - 12);
    EXPECT_EQ(get32(STACK - 10), HANDLER);  // level 3 returns into level 2's handler
    EXPECT_EQ(get32(STACK - 4), CODE);

    EXPECT_EQ(m68k_interrupt(0, 256), M68K_IRQ_BAD_LEVEL);
    EXPECT_EQ(m68k_interrupt(8, 256), M68K_IRQ_BAD_LEVEL);
    EXPECT_EQ(m68k_interrupt(2, 1), M68K_IRQ_BAD_VECTOR);
    EXPECT_EQ(m68k_interrupt(2, 257), M68K_IRQ_BAD_VECTOR);
    EXPECT_EQ(m68k_context.irq_count, 0);
}

TEST_F(Stop, StopsUntilAnInterruptAboveTheMaskAndTheWakingSliceRunsTheHandler) {
    code({0x4E72, 0x2100});  // STOP #$2100
    run(1000, M68K_OK, CODE + 4, 996);
    EXPECT_EQ(m68k_context.stopped, 1u);
    for (int i = 0; i < 3; ++i) run(60, M68K_OK, CODE + 4, 0);
    m68k_interrupt(1, 256);  // level 1 is not above the mask of 1
    run(60, M68K_OK, CODE + 4, 0);
    EXPECT_EQ(m68k_context.stopped, 1u);
    m68k_interrupt(2, 256);
    run(60, M68K_OK, HANDLER + 2 * 5);
    EXPECT_EQ(m68k_context.stopped, 0u);
    EXPECT_EQ(get32(STACK - 4), CODE + 4);  // returns after the STOP
}

// The real processor clears T on exception entry; this one keeps it (only interrupts clear it).
TEST_F(Exceptions, AnIllegalWordStacksItsOwnAddressAndKeepsTheTraceBit) {
    start(CODE, 0xA000);
    code({0x42C0});
    EXPECT_EQ(step(), 40);
    EXPECT_EQ(pc(), HANDLER);
    EXPECT_EQ(get32(STACK - 4), CODE);
    EXPECT_EQ(sr(), 0xA000u);
}

TEST_F(Exceptions, ResetLoadsTheVectorsAndClearsTheRequests) {
    put32(0, 0x7FFC);
    put32(4, CODE + 0x40);
    m68k_interrupt(2, 256);
    m68k_context.stopped = 1;
    d(3) = 7;
    EXPECT_EQ(m68k_reset(), M68K_OK);
    EXPECT_EQ(pc(), CODE + 0x40);
    EXPECT_EQ(a(7), 0x7FFCu);
    EXPECT_EQ(m68k_context.other_sp, 0x7FFCu);
    EXPECT_EQ(sr(), 0x2700u);
    EXPECT_EQ(d(3), 0u);
    EXPECT_EQ(m68k_context.irq_count, 0);
    EXPECT_EQ(m68k_context.irq_vector[1], 0u);
    EXPECT_EQ(m68k_context.stopped, 0u);
    put32(4, 0x00F00000);  // a start address outside every fetch region
    EXPECT_EQ(m68k_reset(), M68K_NO_FETCH_REGION);
}

}  // namespace
