// How instructions reach memory: 24-bit data addresses, single long accesses, CLR's read, the
// PC's kept top byte, fetch-region misses, and safety at the edges of every buffer.
#include <random>

#include "m68k_test_machine.h"

namespace {

using m68k_test::CODE;
using m68k_test::io_log;
using m68k_test::RAM_SIZE;
using m68k_test::STACK;
using DataAccess = m68k_test::Machine;
using FetchRegions = m68k_test::Machine;
using Safety = m68k_test::Machine;

TEST_F(DataAccess, AddressesAre24BitsAndEachOperandIsOneAccessOfItsWidth) {
    code({0x3039, 0xFFF0, 0x0010,     // MOVE.W $FFF00010,D0
          0x3010,                     // MOVE.W (A0),D0 with A0 = $ABF00020
          0x23C0, 0x00F0, 0x0000,     // MOVE.L D0,$F00000
          0x2039, 0x00F0, 0x0004,     // MOVE.L $F00004,D0
          0x33C0, 0x00F0, 0x0008});   // MOVE.W D0,$F00008
    a(0) = 0xABF00020;
    m68k_test::io_read_value = 0x1234;
    step(2);
    EXPECT_EQ(d(0), 0x1234u);
    d(0) = 0xA1B2C3D4;
    m68k_test::io_read_value = 0x11223344;
    step(3);
    EXPECT_EQ(io_log, (std::vector<std::string>{"r2 F00010", "r2 F00020", "w4 F00000 A1B2C3D4", "r4 F00004",
                                                "w2 F00008 3344"}));
    EXPECT_EQ(a(0), 0xABF00020u);
    EXPECT_EQ(d(0), 0x11223344u);
}

TEST_F(DataAccess, ClrSccAndMoveFromSrReadTheirDestinationBeforeWritingIt) {
    code({0x4279, 0x00F0, 0x0000,    // CLR.W $F00000
          0x50F9, 0x00F0, 0x0002,    // ST $F00002
          0x40F9, 0x00F0, 0x0004});  // MOVE SR,$F00004
    m68k_test::io_read_value = 0xFFFF;
    step(3);
    EXPECT_EQ(io_log, (std::vector<std::string>{"r2 F00000", "w2 F00000 0", "r1 F00002", "w1 F00002 FF",
                                                "r2 F00004", "w2 F00004 2004"}));
}

TEST_F(DataAccess, DirectLongAccessesAtTheEndOfARegionStayInside) {
    // MOVE.L $FFFE,D0 reads the last word and all ones beyond; MOVE.L D1,$FFFE writes one word.
    put16(RAM_SIZE - 2, 0xBEEF);
    code({0x2039, 0x0000, 0xFFFE, 0x23C1, 0x0000, 0xFFFE});
    d(1) = 0x12345678;
    step();
    EXPECT_EQ(d(0), 0xBEEFFFFFu);
    step();
    EXPECT_EQ(get16(RAM_SIZE - 2), 0x1234);
}

TEST_F(FetchRegions, ThePcKeepsItsTopByteAndExecutesFromItsLow24Bits) {
    code({0x4EF9, 0xFF00, CODE + 0x20});                       // JMP $FF001020
    code(CODE + 0x20, {0x4EB9, 0x0000, CODE + 0x40, 0x4E71});  // JSR $1040; NOP
    code(CODE + 0x40, {0x4E75});                               // RTS
    step(2);
    EXPECT_EQ(get32(STACK - 4), 0xFF000000u | (CODE + 0x26));  // return address with its top byte
    step(2);  // RTS, NOP
    EXPECT_EQ(pc(), 0xFF000000u | (CODE + 0x28));
}

// A PC in no fetch region ends the slice with result 1 and keeps doing so; a jump or a vector
// into data-only space is not charged, but an exception's frame is stacked first.
TEST_F(FetchRegions, APcOutsideEveryRegionReturnsOneAndKeepsReturningIt) {
    const int MISS = M68K_NO_FETCH_REGION;
    start(0xAB020000);
    run(60, MISS, 0x020000);
    run(60, MISS, 0x020000);

    start(CODE);
    code({0x4E71, 0x4EF9, 0xABF0, 0x0000});  // NOP; JMP $ABF00000
    run(100, MISS, 0xF00000, 96);
    run(100, MISS, 0xF00000);

    start(CODE);
    put32(0x80, 0x00F00000);  // TRAP #0
    code({0x4E40});
    run(60, MISS, 0xF00000);
    EXPECT_EQ(get32(STACK - 4), CODE + 2);
    EXPECT_EQ(a(7), STACK - 6);

    start(CODE);
    put32(0x100, 0x00F00000);
    m68k_interrupt(2, 256);
    run(60, MISS, 0xF00000);

    start(RAM_SIZE - 1);  // the last byte: no whole word fits
    run(60, MISS, RAM_SIZE - 1);
    start(CODE);
    code({0x6000, 0xC000});  // BRA.W backwards past address 0
    run(60, MISS, (CODE + 2 - 0x4000) & 0xFFFFFF);
}

// Sequential execution that leaves its region looks the PC up again: into an adjacent region
// it goes on, into no region it ends the slice with result 1 at that address.
TEST_F(FetchRegions, RunningOffTheEndOfARegionLooksThePcUpAgain) {
    code(RAM_SIZE - 4, {0x4E71, 0x4E71});
    start(RAM_SIZE - 4);
    run(100, M68K_NO_FETCH_REGION, RAM_SIZE, 92);
    // An extension word beyond the region reads as all ones; the slice ends there.
    code(RAM_SIZE - 2, {0x303C});  // MOVE.W #<beyond>,D0
    start(RAM_SIZE - 2);
    run(100, M68K_NO_FETCH_REGION, RAM_SIZE);
    EXPECT_EQ(d(0), 0xFFFFu);

    std::vector<uint8_t> second(0x100);
    m68k_fetch_region two[3] = {fetch[0], {}, fetch[1]};
    m68k_set_fetch_region(&two[1], RAM_SIZE, RAM_SIZE + 0xFF, reinterpret_cast<uintptr_t>(second.data()) - RAM_SIZE);
    m68k_set_fetch_regions(two);
    const uint16_t words[] = {0x4E71, 0x4E72, 0x2000};  // NOP; STOP #$2000
    for (int i = 0; i < 3; ++i) ws_write16(second.data(), 2 * i, words[i]);
    code(RAM_SIZE - 4, {0x4E71, 0x303C});  // NOP; MOVE.W #<first word of the next region>,D0
    start(RAM_SIZE - 4);
    run(100, M68K_OK, RAM_SIZE + 6);
    EXPECT_EQ(d(0), 0x4E71u);
    EXPECT_EQ(m68k_context.stopped, 1u);
}

// Instructions near a region's end run from a copy of their words: relative branches from there
// land where they point, and the region's whole-instruction check comes back afterwards.
TEST_F(FetchRegions, BranchesFromARegionsLastWordsLandWhereTheyPoint) {
    code(RAM_SIZE - 10, {0x7005,          // MOVEQ #5,D0
                         0x51C8, 0xFFFE,  // DBF D0,* (back to itself until D0 runs out)
                         0x6000, 0xFF02});  // BRA.W to 0x100 bytes before the region's end
    code(RAM_SIZE - 0x100, {0x4E71, 0x4E71, 0x4E71});
    start(RAM_SIZE - 10);
    step(7);
    EXPECT_EQ(pc(), RAM_SIZE - 4u);
    EXPECT_EQ(d(0) & 0xFFFF, 0xFFFFu);
    step();
    EXPECT_EQ(pc(), RAM_SIZE - 0x100u);
    run(8, M68K_OK, RAM_SIZE - 0x100 + 6);  // NOPs well inside the region run as usual
}

// Random words everywhere, vectors included, from random PCs (odd ones too) and budgets: every
// slice ends with a defined result and (under the sanitizers) without an access outside a buffer.
TEST_F(Safety, RandomOpcodeStreamsAndVectorsRunSafely) {
    std::mt19937 rng(1234);
    for (int round = 0; round < 40; ++round) {
        for (uint32_t at = 0; at < RAM_SIZE; at += 2) put16(at, static_cast<uint16_t>(rng()));
        for (int slice = 0; slice < 200; ++slice) {
            if (slice % 50 == 0) {
                start(rng() & (slice % 100 ? 0xFFFF : 0xFFFFFFFF));
                m68k_context.sr = rng() & 0xFFFF & SR_MASK;
                for (int r = 0; r < 8; ++r) d(r) = rng(), a(r) = rng();
            }
            if (slice % 7 == 0) m68k_interrupt(1 + rng() % 7, 2 + rng() % 255);
            int result = m68k_execute(static_cast<int32_t>(rng() % 300));
            ASSERT_TRUE(result == M68K_OK || result == M68K_NO_FETCH_REGION);
            ASSERT_EQ(m68k_context.sr & ~uint32_t(SR_MASK), 0u);
        }
    }
}

}  // namespace
