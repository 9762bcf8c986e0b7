// What each computing instruction leaves in its register and the flags, at the edges a program
// meets: carries out of bit 31, signed overflow, shifts by 0 and by 32, the quick-value
// encodings, saturation bounds. Every shared row runs on both processors.
#include "risc_test_support.h"

namespace {

using namespace risc_test;

// One instruction: R1 holds the source value (n = 1 in register forms), R2 the destination.
struct row {
    const char* what;
    unsigned opcode, n;
    uint32_t rs, rd;
    flags in;
    uint32_t result;
    flags out;
};

constexpr flags F000{0, 0, 0}, Z{1, 0, 0}, C{0, 1, 0}, N{0, 0, 1}, ZC{1, 1, 0}, CN{0, 1, 1}, ALL{1, 1, 1};

// clang-format off
const row shared_rows[] = {
    {"add carries out of bit 31",          ADD, 1, 1, 0xFFFFFFFF, F000, 0, ZC},
    {"add overflows into the sign only",   ADD, 1, 1, 0x7FFFFFFF, C, 0x80000000, N},
    {"addc adds the carry",                ADDC, 1, 1, 1, C, 3, F000},
    {"addc of ~0 with carry adds nothing", ADDC, 1, 0xFFFFFFFF, 5, C, 5, F000},
    {"addq 0 adds 32",                     ADDQ, 0, 0, 1, F000, 33, F000},
    {"addq carries",                       ADDQ, 1, 0, 0xFFFFFFFF, F000, 0, ZC},
    {"addqt keeps the flags",              ADDQT, 0, 0, 0xFFFFFFF0, CN, 0x10, CN},
    {"sub borrows",                        SUB, 1, 1, 0, F000, 0xFFFFFFFF, CN},
    {"sub of equal values",                SUB, 1, 7, 7, CN, 0, Z},
    {"subc subtracts the carry too",       SUBC, 1, 1, 5, C, 3, F000},
    {"subc borrow of the whole subtrahend", SUBC, 1, 5, 5, C, 0xFFFFFFFF, CN},
    {"subq 0 subtracts 32",                SUBQ, 0, 0, 40, F000, 8, F000},
    {"subqt keeps the flags",              SUBQT, 1, 0, 0, Z, 0xFFFFFFFF, Z},
    {"neg of 0 does not borrow",           NEG, 0, 0, 0, CN, 0, Z},
    {"neg of 1",                           NEG, 0, 0, 1, F000, 0xFFFFFFFF, CN},
    {"and keeps C",                        AND, 1, 0xF0, 0x0F, C, 0, ZC},
    {"or",                                 OR, 1, 0x80000000, 1, F000, 0x80000001, N},
    {"xor",                                XOR, 1, 0xFFFFFFFF, 0xFFFFFFFF, N, 0, Z},
    {"not",                                NOT, 0, 0, 0x7FFFFFFF, F000, 0x80000000, N},
    {"btst of a clear bit sets only Z",    BTST, 31, 0, 0x7FFFFFFF, CN, 0x7FFFFFFF, ALL},
    {"btst of a set bit clears only Z",    BTST, 0, 0, 1, ALL, 1, CN},
    {"bset 31",                            BSET, 31, 0, 0, Z, 0x80000000, N},
    {"bclr",                               BCLR, 4, 0, 0x10, F000, 0, Z},
    {"mult is unsigned 16 x 16",           MULT, 1, 0x1FFFF, 0xFFFF, F000, 0xFFFE0001, N},
    {"imult is signed 16 x 16",            IMULT, 1, 0xFFFF, 0x10002, F000, 0xFFFFFFFE, N},
    {"abs of a negative value",            ABS, 0, 0, 0xFFFFFFFB, F000, 5, C},
    {"abs of the most negative value",     ABS, 0, 0, 0x80000000, N, 0x80000000, C},
    {"abs of 0",                           ABS, 0, 0, 0, C, 0, Z},
    {"sh right by 0 still sets C",         SH, 1, 0, 0x80000001, F000, 0x80000001, CN},
    {"sh right by 31",                     SH, 1, 31, 0x80000000, F000, 1, F000},
    {"sh left by 1 (count -1)",            SH, 1, 0xFFFFFFFF, 0xC0000000, F000, 0x80000000, CN},
    {"sh by 32 clears and keeps C",        SH, 1, 32, 0xFFFFFFFF, C, 0, ZC},
    {"sh by -32 clears and keeps C",       SH, 1, 0xFFFFFFE0, 0xFFFFFFFF, N, 0, Z},
    {"sha right fills with the sign",      SHA, 1, 4, 0x80000010, F000, 0xF8000001, N},
    {"sha of a negative value by 40",      SHA, 1, 40, 0x80000000, N, 0, Z},
    {"shlq field 0 does not shift",        SHLQ, 0, 0, 0x80000000, F000, 0x80000000, CN},
    {"shlq field 1 shifts by 31",          SHLQ, 1, 0, 3, F000, 0x80000000, N},
    {"shlq field 28 shifts by 4",          SHLQ, 28, 0, 0x1234, F000, 0x12340, F000},
    {"shrq 0 does not shift",              SHRQ, 0, 0, 0x80000001, F000, 0x80000001, CN},
    {"shrq 1",                             SHRQ, 1, 0, 3, F000, 1, C},
    {"sharq keeps the sign",               SHARQ, 4, 0, 0x80000000, F000, 0xF8000000, N},
    {"sharq 0 does not shift",             SHARQ, 0, 0, 2, C, 2, F000},
    {"ror by 32 does not rotate",          ROR, 1, 32, 0x80000001, F000, 0x80000001, CN},
    {"ror by 8",                           ROR, 1, 8, 0x12345678, F000, 0x78123456, F000},
    {"rorq 0 does not rotate",             RORQ, 0, 0, 0x12345678, C, 0x12345678, F000},
    {"rorq 4",                             RORQ, 4, 0, 0x0000000F, F000, 0xF0000000, N},
    {"cmp borrows, Rd kept",               CMP, 1, 5, 3, F000, 3, CN},
    {"cmp of equal values",                CMP, 1, 9, 9, F000, 9, Z},
    {"cmpq 16 compares with -16",          CMPQ, 16, 0, 0xFFFFFFF0, F000, 0xFFFFFFF0, Z},
    {"cmpq 15 borrows",                    CMPQ, 15, 0, 0, F000, 0, CN},
    {"move",                               MOVE, 1, 0xCAFEF00D, 0, ALL, 0xCAFEF00D, ALL},
    {"moveq 31",                           MOVEQ, 31, 0, 0xFFFFFFFF, F000, 31, F000},
    {"normi of 0",                         NORMI, 1, 0, 7, N, 0, Z},
    {"normi of 1",                         NORMI, 1, 1, 7, F000, 0xFFFFFFEA, F000},
    {"normi of the top bit",               NORMI, 1, 0x80000000, 7, F000, 9, F000},
    {"normi of bit 22",                    NORMI, 1, 0x400000, 7, N, 0, Z},
};

const row gpu_rows[] = {
    {"sat8 of a negative value",           SAT8, 0, 0, 0xFFFFFFFF, N, 0, Z},
    {"sat8 above 255",                     SAT8, 0, 0, 256, F000, 255, F000},
    {"sat16 above 0xFFFF",                 SAT16, 0, 0, 0x12345, N, 0xFFFF, F000},
    {"sat24 above 0xFFFFFF",               SAT24, 0, 0, 0x7FFFFFFF, F000, 0xFFFFFF, F000},
    {"sat24 in range",                     SAT24, 0, 0, 0x123456, F000, 0x123456, F000},
    {"pack",                               PACK, 0, 0, 0x03C1E0AB, F000, 0xFFAB, F000},
    {"unpack",                             PACK, 1, 0, 0xF5AB, F000, 0x03C0A0AB, F000},
};

const row dsp_rows[] = {
    {"sat16s below -32768",                SAT16S, 0, 0, 0xFFFF0000, N, 0xFFFF8000, F000},
    {"sat16s above 32767",                 SAT16S, 0, 0, 0x8000, F000, 0x7FFF, F000},
    {"sat16s in range",                    SAT16S, 0, 0, 0xFFFFFFFF, Z, 0xFFFFFFFF, F000},
    {"addqmod keeps the masked bits",      ADDQMOD, 1, 0, 0x000001FF, F000, 0x00000100, F000},
    {"addqmod flags are the full sum's",   ADDQMOD, 1, 0, 0xFFFFFFFF, F000, 0xFFFFFF00, ZC},
};
// clang-format on

void check(const cpu& c, const row& r) {
    c.regs[1] = r.rs;
    c.regs[2] = r.rd;
    c.set_flags(r.in);
    ASSERT_EQ(c.run_all({ins(r.opcode, r.n, 2)}), 1);
    EXPECT_EQ(c.regs[2], r.result) << std::hex << c.name << ": " << r.what;
    EXPECT_EQ(c.get_flags(), r.out) << c.name << ": " << r.what;
}

class Instruction : public BothCores {};

TEST_P(Instruction, ResultAndFlags) {
    for (const row& r : shared_rows) check(c(), r);
    // mtoi writes its source register, never Rd.
    c().regs[3] = 0x80123456;
    c().regs[4] = 77;
    c().run_all({ins(MTOI, 3, 4)});
    EXPECT_EQ(c().regs[3], 0xFF923456u);
    EXPECT_EQ(c().regs[4], 77u);
    EXPECT_EQ(c().get_flags(), N);
}

TEST_F(RiscTest, ProcessorOwnOpcodesResultAndFlags) {
    for (const row& r : gpu_rows) check(GPU, r);
    bus_write32(D_MOD, 0xFFFFFF00);
    for (const row& r : dsp_rows) check(DSP, r);
}

// The multiply accumulator wraps at 32 bits on the GPU and holds 64 on the DSP; sat32s
// saturates the 40-bit value of the accumulator's low byte above Rd (all ones for a negative
// Rd) to the signed 32-bit range.
TEST_F(RiscTest, AccumulatorsAndSat32s) {
    for (const cpu* c : {&GPU, &DSP}) {
        c->regs[1] = c->regs[2] = 0x8000;  // -32768
        c->run_all({ins(IMULTN, 1, 2), ins(IMACN, 1, 2), ins(IMACN, 1, 2), ins(RESMAC, 0, 3)});
        EXPECT_EQ(c->regs[3], 0xC0000000u) << c->name;  // 3 * 2^30 runs into the sign
    }
    EXPECT_EQ(gpu_state.acc, static_cast<int32_t>(0xC0000000));
    EXPECT_EQ(dsp_state.acc, 3ll << 30);
    const struct {
        int64_t acc;
        uint32_t rd, result;
    } rows[] = {{0, 0x7FFFFFFF, 0x7FFFFFFF}, {1, 5, 0x7FFFFFFF}, {0x100, 5, 5}, {0xFF, 5, 0x80000000}, {0x12, 0xFFFFFFFE, 0xFFFFFFFE}};
    for (const auto& r : rows) {
        dsp_state.acc = r.acc;
        DSP.regs[2] = r.rd;
        DSP.set_flags(N);
        DSP.run_all({ins(SAT32S, 0, 2)});
        EXPECT_EQ(DSP.regs[2], r.result) << r.acc << " " << r.rd;
        EXPECT_EQ(DSP.get_flags(), F000);
    }
}

// Division, unsigned and 16.16 fractional, through the divide-control and remainder
// registers; by zero nothing changes. The flags never do.
TEST_P(Instruction, Division) {
    const struct {
        uint32_t ctrl, rd, rs, quotient, remainder;
    } rows[] = {{0, 100, 7, 14, 2},      {0, 0xFFFFFFFF, 2, 0x7FFFFFFF, 1}, {1, 1, 2, 0x8000, 0},
                {1, 3, 0x20000, 1, 0x10000}, {0, 55, 0, 55, 0x10000},      {1, 55, 0, 55, 0x10000}};
    for (const auto& r : rows) {
        bus_write32(c().block + 0x1C, r.ctrl);
        c().regs[1] = r.rs;
        c().regs[2] = r.rd;
        c().set_flags(ALL);
        c().run_all({ins(DIV, 1, 2)});
        EXPECT_EQ(c().regs[2], r.quotient) << r.rd << "/" << r.rs << " mode " << r.ctrl;
        EXPECT_EQ(bus_read32(c().block + 0x1C), r.remainder) << r.rd << "/" << r.rs << " mode " << r.ctrl;
        EXPECT_EQ(c().get_flags(), ALL);
    }
}

// mmult: w products of the low words of longs from the matrix address (step 4, or 4w for a
// column) with the other bank's registers, two 16-bit elements each, low half first; register
// numbers past R31 wrap to R0.
TEST_P(Instruction, MatrixMultiply) {
    for (uint32_t i = 0; i < 9; ++i) bus_write32(0x1000 + 4 * i, 0xAAAA0000 | (i + 1));
    c().alt_regs[4] = 0x0003'0002;
    c().alt_regs[5] = 0xFFFF'0004;  // elements 4 and -1
    c().alt_regs[31] = 0x0001'0001;
    c().alt_regs[0] = 0x0000'0010;
    bus_write32(c().block + 8, 0x1000);
    const struct {
        uint32_t mtxc, first, result;
        flags out;
    } rows[] = {{3, 4, 2 + 2 * 3 + 3 * 4, F000},        {16 | 3, 4, 2 + 4 * 3 + 7 * 4, F000},
                {4, 4, 2 + 2 * 3 + 3 * 4 - 4, C},        {3, 31, 1 + 2 + 3 * 16, F000}};
    for (const auto& r : rows) {
        bus_write32(c().block + 4, r.mtxc);
        c().set_flags(F000);
        c().run_all({ins(MMULT, r.first, 6)});
        EXPECT_EQ(c().regs[6], r.result) << r.mtxc << " from R" << r.first;
        EXPECT_EQ(c().get_flags(), r.out) << r.mtxc << " from R" << r.first;
    }
}

RISC_ON_BOTH(Instruction);

}  // namespace
