// What each instruction family charges against the slice budget, and the results that go with
// the charges where the two are decided together.
#include "m68k_test_machine.h"

namespace {

using m68k_test::CODE;
using m68k_test::HANDLER;
using m68k_test::Machine;
using Costs = Machine;

struct costed {
    const char* what;
    std::vector<uint16_t> words;
    int32_t cycles;
};

TEST_F(Costs, FamiliesChargeTheirFixedCosts) {
    const costed cases[] = {
        {"NOP", {0x4E71}, 4},
        {"MOVE.L D0,-(A0)", {0x2100}, 14},
        {"MOVE.L d16(A1),(A0)+", {0x20E9, 0x0010}, 24},
        {"MOVE.W #imm,abs.l", {0x33FC, 0x1234, 0x0000, 0x0400}, 4 + 4 + 12},
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
        {"SUBQ.L #1,(A1)", {0x5391}, 20},
        {"ANDI.L #imm,D0", {0x0280, 0, 1}, 8},
        {"ORI.L #imm,D0", {0x0080, 0, 1}, 16},
        {"CMPI.W #imm,D0", {0x0C40, 1}, 14},
        {"CLR.L D0", {0x4280}, 6},
        {"CLR.W (A1)", {0x4251}, 12},
        {"TST.W d16(A1)", {0x4A69, 0x0010}, 12},
        {"ST D0", {0x50C0}, 6},
        {"SF D0", {0x51C0}, 4},
        {"TAS (A1)", {0x4AD1}, 18},
        {"NBCD D0", {0x4800}, 6},
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
        {"MULU D1,D0", {0xC0C1}, 70},
        {"MULS (A1),D0", {0xC1D1}, 74},
        {"DIVU D1,D0 (D1 = 1)", {0x80C1}, 144},
        {"DIVS D1,D0 (D1 = 1)", {0x81C1}, 158},
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
        {"LINK A6,#-8", {0x4E56, 0xFFF8}, 16},
        {"EXG D0,D1", {0xC141}, 6},
        {"SWAP D0", {0x4840}, 4},
        {"MOVEP.L D0,d16(A1)", {0x01C9, 0}, 24},
        {"MOVEM.L D0,(A1)", {0x48D1, 0x0001}, 8 + 16 * 8},
        {"MOVEM.W d16(A1),D0", {0x4CA9, 0x0001, 0}, 16 + 16 * 4},
        {"RESET", {0x4E70}, 132},
        {"TRAP #1", {0x4E41}, 34},
        {"TRAPV without V", {0x4E76}, 4},
        {"ILLEGAL", {0x4AFC}, 40},
        {"line A", {0xA123}, 40},
    };
    for (const costed& c : cases) {
        SCOPED_TRACE(c.what);
        start(CODE);
        for (size_t i = 0; i < c.words.size(); ++i) put16(CODE + 2 * i, c.words[i]);
        d(1) = 1;
        a(1) = 0x4000;
        a(2) = 0x4100;
        EXPECT_EQ(step(), c.cycles);
    }
}

TEST_F(Costs, MemoryOperandCostsFollowTheEffectiveAddressTable) {
    // NOT.L: 12 + EA; NOT.W: 8 + EA, over every memory kind.
    const struct {
        uint16_t opcode;
        std::vector<uint16_t> ext;
        int32_t word, longword;
    } kinds[] = {
        {0x0011, {}, 4, 8},             // (A1)
        {0x0019, {}, 4, 8},             // (A1)+
        {0x0021, {}, 6, 10},            // -(A1)
        {0x0029, {0x10}, 8, 12},        // d16(A1)
        {0x0031, {0x10}, 10, 14},       // d8(A1,D0)
        {0x0038, {0x400}, 8, 12},       // abs.w
        {0x0039, {0, 0x400}, 12, 16},   // abs.l
    };
    for (const auto& k : kinds) {
        for (int longword = 0; longword < 2; ++longword) {
            SCOPED_TRACE(testing::Message() << std::hex << k.opcode << (longword ? " long" : " word"));
            start(CODE);
            a(1) = 0x4000;
            put16(CODE, static_cast<uint16_t>((longword ? 0x4680 : 0x4640) | k.opcode));
            for (size_t i = 0; i < k.ext.size(); ++i) put16(CODE + 2 + 2 * i, k.ext[i]);
            EXPECT_EQ(step(), longword ? 12 + k.longword : 8 + k.word);
        }
    }
}

TEST_F(Costs, ShiftsChargeTwoCyclesPerCountAndTakeTheRegisterCountModulo64) {
    // LSL.L D1,D0 by 40 leaves 0; ROL.L by 36 rotates like ROL.L by 4.
    code({0xE3A8});
    d(0) = 0x12345678;
    d(1) = 40;
    EXPECT_EQ(step(), 8 + 2 * 40);
    EXPECT_EQ(d(0), 0u);

    start(CODE);
    code({0xE3B8});
    d(0) = 0x12345678;
    d(1) = 36;
    EXPECT_EQ(step(), 8 + 2 * 36);
    EXPECT_EQ(d(0), 0x23456781u);

    start(CODE);
    code({0xE3B8});
    d(1) = 0x100 + 63;  // only the low six bits count
    EXPECT_EQ(step(), 8 + 2 * 63);

    start(CODE);
    code({0xE148});  // LSL.W #8,D0: an immediate count field of 0 means 8
    d(0) = 0x00AB;
    EXPECT_EQ(step(), 6 + 16);
    EXPECT_EQ(d(0), 0xAB00u);
}

TEST_F(Costs, ConditionalInstructionsChargeByOutcome) {
    code({0x51C8, 0xFFFE});  // DBF D0,* with D0 = 1: branch taken
    d(0) = 1;
    EXPECT_EQ(step(), 10);
    EXPECT_EQ(pc(), CODE);
    EXPECT_EQ(d(0), 0u);
    EXPECT_EQ(step(), 14);  // counter expires: falls through
    EXPECT_EQ(pc(), CODE + 4);
    EXPECT_EQ(d(0) & 0xFFFF, 0xFFFFu);

    start(CODE);
    code({0x4E76});  // TRAPV with V set
    m68k_context.sr |= 0x02;
    EXPECT_EQ(step(), 38);
    EXPECT_EQ(pc(), HANDLER);
}

TEST_F(Costs, MovemChargesAllSixteenRegisterPositionsWhateverTheMask) {
    for (int i = 0; i < 16; ++i) {
        SCOPED_TRACE(i);
        start(CODE);
        a(0) = 0x4000;
        code({0x4CD8, static_cast<uint16_t>(1u << i)});  // MOVEM.L (A0)+,<one register>
        EXPECT_EQ(step(), 12 + 16 * 8);
        start(CODE);
        code({0x48E7, static_cast<uint16_t>(1u << i)});  // MOVEM.L <one register>,-(A7)
        EXPECT_EQ(step(), 8 + 16 * 8);
    }
    start(CODE);
    code({0x48E7, 0xFFFF});
    EXPECT_EQ(step(), 8 + 16 * 8);
    start(CODE);
    code({0x4C98, 0x0001});  // MOVEM.W (A0)+,D0 sign-extends the loaded word
    a(0) = 0x4000;
    put16(0x4000, 0x8001);
    EXPECT_EQ(step(), 76);
    EXPECT_EQ(d(0), 0xFFFF8001u);
    EXPECT_EQ(a(0), 0x4002u);
}

TEST_F(Costs, DivisionByZeroAndOverflowSettleFlagsAndCosts) {
    code({0x82FC, 0x0000});  // DIVU #0,D1
    d(1) = 0x12345678;
    m68k_context.sr |= 0x0F;
    EXPECT_EQ(step(), 40 + 4);
    EXPECT_EQ(d(1), 0x12345678u);
    EXPECT_EQ(pc(), HANDLER);
    // The stacked SR shows N, Z, V, C cleared; the stacked PC is after the instruction.
    EXPECT_EQ(get16(m68k_test::STACK - 6) & 0x0F, 0u);
    EXPECT_EQ(get32(m68k_test::STACK - 4), CODE + 4);

    start(CODE);
    code({0x80C1});  // DIVU D1,D0: 0x80000000 / 1 overflows
    d(0) = 0x80000000;
    d(1) = 1;
    EXPECT_EQ(step(), 144);
    EXPECT_EQ(d(0), 0x80000000u);
    EXPECT_EQ(sr() & 0x0F, 0x02u);

    start(CODE);
    code({0x81C1});  // DIVS D1,D0: -2^31 / -1 overflows
    d(0) = 0x80000000;
    d(1) = 0xFFFF;
    EXPECT_EQ(step(), 158);
    EXPECT_EQ(d(0), 0x80000000u);
    EXPECT_EQ(sr() & 0x0F, 0x02u);
}

}  // namespace
