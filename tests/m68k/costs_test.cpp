// What each instruction family charges against the slice budget. The conformance vectors check
// results but not cycles, so costs are checked here, outcome-dependent ones included.
#include "m68k_test_machine.h"

namespace {

using m68k_test::CODE;
using m68k_test::HANDLER;
using Costs = m68k_test::Machine;

struct costed {
    const char* what;
    std::vector<uint16_t> words;
    int32_t cycles;
    uint32_t d0 = 0, d1 = 1;
    uint16_t ccr = 0;
};

TEST_F(Costs, FamiliesChargeTheirFixedCostsAndOutcomesTheirOwn) {
    const costed cases[] = {
        // NOT.W charges 8 + EA, NOT.L 12 + EA: the effective-address time of every memory kind.
        {"NOT.W (A1)", {0x4651}, 8 + 4},
        {"NOT.L (A1)", {0x4691}, 12 + 8},
        {"NOT.W (A1)+", {0x4659}, 8 + 4},
        {"NOT.L (A1)+", {0x4699}, 12 + 8},
        {"NOT.W -(A1)", {0x4661}, 8 + 6},
        {"NOT.L -(A1)", {0x46A1}, 12 + 10},
        {"NOT.W d16(A1)", {0x4669, 0x10}, 8 + 8},
        {"NOT.L d16(A1)", {0x46A9, 0x10}, 12 + 12},
        {"NOT.W d8(A1,D0)", {0x4671, 0x10}, 8 + 10},
        {"NOT.L d8(A1,D0)", {0x46B1, 0x10}, 12 + 14},
        {"NOT.W abs.w", {0x4678, 0x400}, 8 + 8},
        {"NOT.L abs.w", {0x46B8, 0x400}, 12 + 12},
        {"NOT.W abs.l", {0x4679, 0, 0x400}, 8 + 12},
        {"NOT.L abs.l", {0x46B9, 0, 0x400}, 12 + 16},
        {"MOVE.L D0,-(A0)", {0x2100}, 14},
        {"MOVE.L d16(A1),(A0)+", {0x20E9, 0x0010}, 24},
        {"MOVEA.L (A1),A2", {0x2451}, 12},
        {"ADD.L d16(A1),D0", {0xD0A9, 0x0010}, 12},
        {"ADD.W A0,D0", {0xD048}, 8},
        {"ADD.L #imm,D0", {0xD0BC, 0, 1}, 14},
        {"CMP.L A0,D0", {0xB088}, 14},
        {"ADD.W D0,(A1)", {0xD151}, 8},
        {"ADDA.L D0,A1", {0xD3C0}, 8},
        {"ADDA.L (A1),A2", {0xD5D1}, 14},
        {"ADDA.L #imm,A1", {0xD3FC, 0, 1}, 16},
        {"CMPA.W (A1),A2", {0xB4D1}, 10},
        {"ADDQ.L #1,D0", {0x5280}, 8},
        {"ADDQ.W #1,A0", {0x5248}, 4},
        {"ANDI.L #imm,D0", {0x0280, 0, 1}, 8},
        {"ORI.L #imm,D0", {0x0080, 0, 1}, 16},
        {"CMPI.W #imm,D0", {0x0C40, 1}, 14},
        {"CLR.L D0", {0x4280}, 6},
        {"TST.W d16(A1)", {0x4A69, 0x0010}, 12},
        {"ST D0", {0x50C0}, 6},
        {"SF D0", {0x51C0}, 4},
        {"TAS (A1)", {0x4AD1}, 18},
        {"MOVE from SR to D0", {0x40C0}, 6},
        {"MOVE #imm to CCR", {0x44FC, 0}, 16},
        {"ORI to CCR", {0x003C, 0}, 20},
        {"EOR.L D0,D1", {0xB181}, 8},
        {"ADDX.L -(A1),-(A2)", {0xD589}, 30},
        {"ABCD D0,D1", {0xC300}, 6},
        {"CMPM.L (A1)+,(A2)+", {0xB589}, 20},
        {"BTST D1,D0", {0x0300}, 6},
        {"BTST #3,D0", {0x0800, 3}, 10},
        {"BCLR D1,D0", {0x0380}, 10},
        {"BTST D1,d16(A1)", {0x0329, 0x0010}, 4},
        {"BTST D1,abs.l", {0x0339, 0, 0x0400}, 16},
        {"BSET #1,abs.l", {0x08F9, 1, 0, 0x0400}, 24},
        {"LSL.W (A1)", {0xE3D1}, 12},
        // Two cycles per count; a count register counts modulo 64, an immediate field of 0 is 8.
        {"LSL.L D1,D0 by 40", {0xE3A8}, 8 + 2 * 40, 0, 40},
        {"ROL.L D1,D0 by 36", {0xE3B8}, 8 + 2 * 36, 0, 36},
        {"ROL.L D1,D0 by 0x13F", {0xE3B8}, 8 + 2 * 63, 0, 0x13F},
        {"LSL.W #8,D0", {0xE148}, 6 + 2 * 8},
        {"MULU D1,D0", {0xC0C1}, 70},
        {"MULS (A1),D0", {0xC1D1}, 74},
        {"DIVU D1,D0 (D1 = 1)", {0x80C1}, 144},
        {"DIVU D1,D0 overflowing", {0x80C1}, 144, 0x80000000},
        {"DIVS D1,D0 (D1 = 1)", {0x81C1}, 158},
        {"DIVS D1,D0 overflowing", {0x81C1}, 158, 0x80000000, 0xFFFF},
        {"CHK D1,D0 within bounds", {0x4181}, 10},
        {"LEA d16(A0),A1", {0x43E8, 0x0010}, 8},
        {"LEA d8(A0,D0),A1", {0x43F0, 0x0000}, 12},
        {"PEA (A1)", {0x4851}, 12},
        {"JMP abs.l", {0x4EF9, 0, HANDLER}, 12},
        {"JSR d8(PC,D0)", {0x4EBB, 0x0000}, 22},
        {"BRA.S", {0x6002}, 10},
        {"BSR.W", {0x6100, 0x0002}, 18},
        {"BEQ.S not taken", {0x6702}, 8},
        {"BEQ.W not taken", {0x6700, 0x0002}, 12},
        {"BNE.W taken", {0x6600, 0x0002}, 10},
        {"DBT D0", {0x50C8, 0xFFFE}, 12},
        {"DBF D0 branching", {0x51C8, 0xFFFE}, 10, 1},
        {"DBF D0 expiring", {0x51C8, 0xFFFE}, 14, 0},
        {"LINK A6,#-8", {0x4E56, 0xFFF8}, 16},
        {"EXG D0,D1", {0xC141}, 6},
        {"MOVEP.L D0,d16(A1)", {0x01C9, 0}, 24},
        {"MOVEM.L D0,(A1)", {0x48D1, 0x0001}, 8 + 16 * 8},
        {"MOVEM.W d16(A1),D0", {0x4CA9, 0x0001, 0}, 16 + 16 * 4},
        {"MOVEM.W (A0)+,D0", {0x4C98, 0x0001}, 12 + 16 * 4},
        {"TRAP #1", {0x4E41}, 34},
        {"TRAPV without V", {0x4E76}, 4},
        {"TRAPV with V", {0x4E76}, 38, 0, 1, 0x02},
        {"ILLEGAL", {0x4AFC}, 40},
        {"line A", {0xA123}, 40},
    };
    for (const costed& c : cases) {
        SCOPED_TRACE(c.what);
        start(CODE);
        for (size_t i = 0; i < c.words.size(); ++i) put16(CODE + 2 * i, c.words[i]);
        d(0) = c.d0, d(1) = c.d1, a(0) = 0x4000, a(1) = 0x4000, a(2) = 0x4100;
        m68k_context.sr |= c.ccr;
        EXPECT_EQ(step(), c.cycles);
    }
}

// The division-by-zero exception: N, Z, V, C cleared and the address after the instruction
// stacked, which only a run into the handler shows.
TEST_F(Costs, DivisionByZeroStacksClearedFlagsAndTheNextAddress) {
    code({0x82FC, 0x0000});  // DIVU #0,D1
    d(1) = 0x12345678;
    m68k_context.sr |= 0x0F;
    EXPECT_EQ(step(), 40 + 4);
    EXPECT_EQ(d(1), 0x12345678u);
    EXPECT_EQ(pc(), HANDLER);
    EXPECT_EQ(get16(m68k_test::STACK - 6) & 0x0F, 0u);
    EXPECT_EQ(get32(m68k_test::STACK - 4), CODE + 4);
}

TEST_F(Costs, MovemChargesAllSixteenRegisterPositionsWhateverTheMask) {
    for (uint32_t mask = 1; mask <= 0x10000; mask <<= 1) {
        const uint16_t m = static_cast<uint16_t>(mask == 0x10000 ? 0xFFFF : mask);
        SCOPED_TRACE(m);
        start(CODE);
        a(0) = 0x4000;
        code({0x4CD8, m});  // MOVEM.L (A0)+,<list>
        EXPECT_EQ(step(), 12 + 16 * 8);
        start(CODE);
        code({0x48E7, m});  // MOVEM.L <list>,-(A7)
        EXPECT_EQ(step(), 8 + 16 * 8);
    }
}

}  // namespace
