// Delayed jumps, the slice budget, the operand words of movei, and the data accesses: the
// local-RAM rule of byte, word and phrase accesses and the indexed forms.
#include "risc_test_support.h"

namespace {

using namespace risc_test;

class Flow : public BothCores {};

// R5 counts instructions that ran, R6 marks a delay slot or target by 16.
constexpr uint16_t COUNT = ins(ADDQT, 1, 5), MARK = ins(ADDQT, 16, 6);

TEST_P(Flow, DelayedJumps) {
    const uint32_t base = c().ram;
    c().regs[7] = base + 0x41;  // jump takes Rs AND NOT 1
    const struct {
        const char* what;
        program words;
        uint8_t z;
        int32_t instructions;
        uint32_t pc_after, r5, r6;
    } rows[] = {
        // The delay slot runs, then the target (jr +3 skips two counts).
        {"jr taken", {ins(JR, 3, CC_ALWAYS), MARK, COUNT, COUNT, MARK}, 0, 3, base + 10, 0, 32},
        {"jr not taken", {ins(JR, 3, CC_EQ), MARK, COUNT, COUNT, MARK}, 0, 5, base + 10, 2, 32},
        {"jr on Z set", {ins(JR, 3, CC_EQ), MARK, COUNT, COUNT, MARK}, 1, 3, base + 10, 0, 32},
        {"jump", {ins(JUMP, 7, CC_ALWAYS), COUNT}, 0, 2, base + 0x40, 1, 0},
        // A taken jr in a delay slot replaces the target after one more slot.
        {"jump in a delay slot", {ins(JR, 4, CC_ALWAYS), ins(JR, 1, CC_ALWAYS), COUNT, COUNT, MARK, COUNT, MARK}, 0, 4,
         base + 8, 2, 0},
        // The budget runs out on a taken jump: its slot still runs in the same slice.
        {"jump at the slice end", {COUNT, ins(JR, 31, CC_ALWAYS), COUNT}, 0, 2, base + 2, 2, 0},
        // 40 instructions of a 120-cycle slice: a count, then jr-to-itself and its slot.
        {"jr -1 and the budget", {COUNT, ins(JR, 31, CC_ALWAYS), COUNT}, 0, 40, base + 2, 21, 0},
    };
    for (const auto& r : rows) {
        c().regs[5] = c().regs[6] = 0;
        c().set_flags({r.z, 0, 0});
        ASSERT_EQ(c().run(r.words, 3 * r.instructions), 1);
        EXPECT_EQ(*c().pc, r.pc_after) << r.what;
        EXPECT_EQ(c().regs[5], r.r5) << r.what;
        EXPECT_EQ(c().regs[6], r.r6) << r.what;
    }
    *c().running = 0;  // stopped: nothing runs
    ASSERT_EQ(c().execute(120), 1);
    EXPECT_EQ(c().regs[5], 21u);
}

// A condition holds unless it asks for Z, or for C (N with bit 4 of the code), to be set or
// clear and the flag disagrees; a code asking for a flag both set and clear never holds.
TEST_P(Flow, ConditionCodes) {
    const struct {
        unsigned cc;
        flags f;
        bool taken;
    } rows[] = {{0, {1, 1, 1}, true},  {1, {0, 1, 1}, true},  {1, {1, 0, 0}, false}, {2, {1, 0, 0}, true},
                {4, {1, 0, 1}, true},  {4, {0, 1, 0}, false}, {8, {0, 1, 0}, true},  {20, {1, 1, 0}, true},
                {20, {0, 0, 1}, false}, {24, {0, 0, 1}, true}, {5, {0, 0, 1}, true},  {5, {0, 1, 0}, false},
                {3, {0, 0, 0}, false}, {3, {1, 1, 1}, false}, {12, {0, 1, 0}, false}, {28, {0, 0, 1}, false}};
    for (const auto& r : rows) {
        c().set_flags(r.f);
        c().run({ins(JR, 7, r.cc), ins(NOP, 0, 0)}, 6);
        EXPECT_EQ(*c().pc, c().ram + (r.taken ? 16 : 4)) << "cc " << r.cc << " " << r.f;
    }
}

// movei's operand follows low word first and move pc gives the instruction's own address, from
// local RAM, main RAM and the cartridge alike.
TEST_P(Flow, ImmediatesAndPcFromEveryCodeRegion) {
    const program words = {ins(NOP, 0, 0), ins(MOVEI, 0, 3), 0x5678, 0x0034, ins(MOVE_PC, 0, 4)};
    for (size_t i = 0; i < words.size(); ++i) ws_write16(cart_rom, 0x2000 + 2 * i, words[i]);
    for (uint32_t at : {c().ram, 0x4000u, 0x802000u}) {
        ASSERT_EQ(c().run(at == 0x802000 ? program{} : words, 9, at), 1);
        EXPECT_EQ(c().regs[3], 0x00345678u) << std::hex << at;
        EXPECT_EQ(c().regs[4], at + 8) << std::hex << at;
        EXPECT_EQ(*c().pc, at + 10) << std::hex << at;
    }
}

class Memory : public BothCores {};

// Byte and word accesses inside the processor's own local RAM move whole longs at the address
// AND NOT 3 (its first address included); elsewhere, the other processor's RAM included, one
// byte or one word.
TEST_P(Memory, LocalRamRuleOfByteAndWordAccesses) {
    const uint32_t local = c().ram + 0x100, ram = 0x2000, other = c().which == RISC_GPU ? DSP_RAM_BASE : GPU_RAM_BASE;
    for (uint32_t a : {local, ram, other}) bus_write32(a, 0x11223344);
    const uint32_t addresses[] = {local + 1, ram + 1, local + 2, ram + 3, other + 1};
    std::copy(std::begin(addresses), std::end(addresses), c().regs + 1);
    c().run_all({ins(LOADB, 1, 10), ins(LOADB, 2, 11), ins(LOADW, 3, 12), ins(LOADW, 4, 13), ins(LOADB, 5, 14)});
    const uint32_t loaded[] = {0x11223344, 0x22, 0x11223344, 0x3344, 0x22};
    for (int i = 0; i < 5; ++i) EXPECT_EQ(c().regs[10 + i], loaded[i]) << i;

    c().regs[1] = local;
    c().regs[7] = 0xAABBCCDD;
    c().run_all({ins(STOREB, 1, 7), ins(STOREB, 2, 7), ins(STOREW, 4, 7)});
    EXPECT_EQ(bus_read32(local), 0xAABBCCDDu);
    EXPECT_EQ(bus_read32(ram), 0x11DDCCDDu);
}

// Longs lie at the address AND NOT 3; the R14/R15 forms add 4 x q(n) (field 0: 128 bytes) or
// a register.
TEST_P(Memory, IndexedLongAccesses) {
    const uint32_t table = 0x3000;
    for (uint32_t i = 0; i < 40; ++i) bus_write32(table + 4 * i, 0x100 + i);
    c().regs[14] = table;
    c().regs[15] = table + 8;
    c().regs[1] = 6;
    c().regs[2] = table + 7;
    c().run_all({ins(LOAD_R14_Q, 1, 10), ins(LOAD_R14_Q, 0, 11), ins(LOAD_R15_Q, 2, 12), ins(LOAD_R14_RS, 1, 13),
                 ins(LOAD_R15_RS, 1, 14), ins(LOAD, 2, 15)});
    const uint32_t loaded[] = {0x101, 0x120, 0x104, 0x101, 0x103, 0x101};
    for (int i = 0; i < 6; ++i) EXPECT_EQ(c().regs[10 + i], loaded[i]) << i;

    c().regs[14] = c().regs[15] = table;  // the loads above wrote them
    c().regs[3] = 0x41;
    for (uint32_t r = 20; r < 24; ++r) c().regs[r] = 0xE0 + r;
    c().run_all({ins(STORE_R14_Q, 31, 20), ins(STORE_R15_Q, 30, 21), ins(STORE_R14_RS, 3, 22), ins(STORE_R15_RS, 1, 23)});
    const uint32_t offsets[] = {124, 120, 0x40, 4};
    for (uint32_t i = 0; i < 4; ++i) EXPECT_EQ(bus_read32(table + offsets[i]), 0xF4 + i) << i;
}

// The GPU's phrase accesses: outside local RAM the high long travels through hidata
// (G_HIDATA); inside they are plain long accesses at the address AND NOT 3.
TEST_F(RiscTest, GpuPhraseLoadsAndStores) {
    bus_write32(0x5000, 0xAAAA0000);
    bus_write32(0x5004, 0xBBBB1111);
    GPU.regs[1] = 0x5006;
    GPU.run_all({ins(LOADP, 1, 2)});
    EXPECT_EQ(GPU.regs[2], 0xBBBB1111u);
    EXPECT_EQ(bus_read32(G_HIDATA), 0xAAAA0000u);

    bus_write32(G_HIDATA, 0x12345678);
    GPU.regs[1] = 0x6003;
    GPU.regs[3] = 0x9ABCDEF0;
    GPU.run_all({ins(STOREP, 1, 3)});
    EXPECT_EQ(bus_read32(0x6000), 0x12345678u);
    EXPECT_EQ(bus_read32(0x6004), 0x9ABCDEF0u);

    const uint32_t local = GPU_RAM_BASE + 0x200;
    bus_write32(local, 0x0F0F0F0F);
    GPU.regs[1] = local + 5;
    GPU.run_all({ins(STOREP, 1, 3), ins(LOADP, 1, 4)});
    EXPECT_EQ(bus_read32(local + 4), 0x9ABCDEF0u);
    EXPECT_EQ(bus_read32(local), 0x0F0F0F0Fu);
    EXPECT_EQ(GPU.regs[4], 0x9ABCDEF0u);
    EXPECT_EQ(bus_read32(G_HIDATA), 0x12345678u);
}

RISC_ON_BOTH(Flow);
RISC_ON_BOTH(Memory);

}  // namespace
