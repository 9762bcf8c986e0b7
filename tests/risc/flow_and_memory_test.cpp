// Delayed jumps, the slice budget, immediates that follow the instruction word, and the data
// accesses: the local-RAM rule of byte, word and phrase accesses and the indexed forms.
#include "risc_test_support.h"

namespace {

using namespace risc_test;

class Flow : public BothCores {};

// R5 counts the instructions that ran (addqt #1 each), so a program shows which ones did.
constexpr uint16_t COUNT = ins(ADDQT, 1, 5);
constexpr uint16_t MARK = ins(ADDQT, 16, 6);  // R6 += 16: the delay slot or target ran

TEST_P(Flow, DelayedJumps) {
    const uint32_t base = c().ram_base();
    struct {
        const char* what;
        program words;
        uint8_t z;
        int instructions;
        uint32_t pc_after, r5, r6;
    } rows[] = {
        // jr +3 skips two counts: the delay slot runs, then the target.
        {"taken jr", {ins(JR, 3, CC_ALWAYS), MARK, COUNT, COUNT, MARK}, 0, 3, base + 10, 0, 32},
        {"jr not taken", {ins(JR, 3, CC_EQ), MARK, COUNT, COUNT, MARK}, 0, 5, base + 10, 2, 32},
        {"jr on Z set", {ins(JR, 3, CC_EQ), MARK, COUNT, COUNT, MARK}, 1, 3, base + 10, 0, 32},
        // A taken jr in the delay slot of another replaces its target after one more slot.
        {"jump in a delay slot",
         {ins(JR, 4, CC_ALWAYS), ins(JR, 1, CC_ALWAYS), COUNT, COUNT, MARK, COUNT, MARK}, 0, 4, base + 8, 2, 0},
    };
    for (const auto& r : rows) {
        c().regs()[5] = c().regs()[6] = 0;
        c().set_flags({r.z, 0, 0});
        ASSERT_EQ(c().run(r.words, 3 * r.instructions), 1);
        EXPECT_EQ(c().pc(), r.pc_after) << r.what;
        EXPECT_EQ(c().regs()[5], r.r5) << r.what;
        EXPECT_EQ(c().regs()[6], r.r6) << r.what;
    }
}

// jump takes Rs AND NOT 1; jr's field 31 (-1) targets itself; a taken jump as the last
// instruction before the budget runs out still runs its delay slot in the same slice.
TEST_P(Flow, JumpTargetsAndTheSliceEnd) {
    const uint32_t base = c().ram_base();
    c().regs()[7] = base + 0x41;
    ASSERT_EQ(c().run({ins(JUMP, 7, CC_ALWAYS), COUNT}, 3), 1);
    EXPECT_EQ(c().pc(), base + 0x40);
    EXPECT_EQ(c().regs()[5], 1u);

    c().regs()[5] = 0;
    ASSERT_EQ(c().run({COUNT, ins(JR, 31, CC_ALWAYS), COUNT}, 120), 1);
    // 40 instructions: count, then jr + slot pairs of which the slot counts: 1 + 19.5 pairs.
    EXPECT_EQ(c().regs()[5], 21u);
    EXPECT_EQ(c().pc(), base + 2);  // the 40th was a taken jr: its slot ran, pc at the jr again
}

// A slice of 120 cycles runs 40 instructions; a stopped processor runs none.
TEST_P(Flow, BudgetAndStop) {
    const program nops(100, COUNT);
    c().regs()[5] = 0;
    ASSERT_EQ(c().run(nops, 120), 1);
    EXPECT_EQ(c().regs()[5], 40u);
    c().running() = 0;
    ASSERT_EQ(c().execute(120), 1);
    EXPECT_EQ(c().regs()[5], 40u);
    EXPECT_EQ(c().pc(), c().ram_base() + 80);
}

// movei's operand follows low word first; move pc gives the instruction's own address; both
// also run from main RAM and the cartridge.
TEST_P(Flow, ImmediatesAndPcFromEveryCodeRegion) {
    for (uint32_t at : {c().ram_base(), 0x4000u, 0x802000u}) {
        const program words = {ins(NOP, 0, 0), ins(MOVEI, 0, 3), 0x5678, 0x0034, ins(MOVE_PC, 0, 4)};
        if (at == 0x802000) {  // the cartridge is read-only to the bus
            for (size_t i = 0; i < words.size(); ++i) ws_write16(cart_rom, at - 0x800000 + 2 * i, words[i]);
            c().pc() = at;
            c().running() = 1;
            ASSERT_EQ(c().execute(9), 1);
        } else {
            ASSERT_EQ(c().run(words, 9, at), 1);
        }
        EXPECT_EQ(c().regs()[3], 0x00345678u) << std::hex << at;
        EXPECT_EQ(c().regs()[4], at + 8) << std::hex << at;
        EXPECT_EQ(c().pc(), at + 10) << std::hex << at;
    }
}

class Memory : public BothCores {};

// Byte and word loads and stores inside the processor's own local RAM move whole longs at the
// address AND NOT 3; elsewhere they move one byte or one word.
TEST_P(Memory, LocalRamRuleOfByteAndWordAccesses) {
    const uint32_t local = c().ram_base() + 0x100, ram = 0x2000;
    for (uint32_t a : {local, ram}) bus_write32(a, 0x11223344);
    c().regs()[1] = local + 1;
    c().regs()[2] = ram + 1;
    c().regs()[3] = local + 2;
    c().regs()[4] = ram + 3;
    c().run_all({ins(LOADB, 1, 10), ins(LOADB, 2, 11), ins(LOADW, 3, 12), ins(LOADW, 4, 13)});
    EXPECT_EQ(c().regs()[10], 0x11223344u);
    EXPECT_EQ(c().regs()[11], 0x22u);
    EXPECT_EQ(c().regs()[12], 0x11223344u);
    EXPECT_EQ(c().regs()[13], 0x3344u);

    c().regs()[1] = local;  // the range's own first address
    c().regs()[7] = 0xAABBCCDD;
    c().run_all({ins(STOREB, 1, 7), ins(STOREB, 2, 7), ins(STOREW, 4, 7)});
    EXPECT_EQ(bus_read32(local), 0xAABBCCDDu);
    EXPECT_EQ(bus_read32(ram), 0x11DDCCDDu);

    // The other processor's local RAM is not local: one byte.
    const uint32_t other = c().which == RISC_GPU ? DSP_RAM_BASE : GPU_RAM_BASE;
    bus_write32(other, 0x11223344);
    c().regs()[1] = other + 1;
    c().run_all({ins(LOADB, 1, 10)});
    EXPECT_EQ(c().regs()[10], 0x22u);
}

// Longs are at the address AND NOT 3; the R14/R15 forms add 4 x q(n) (field 0: 128 bytes) or
// a register.
TEST_P(Memory, IndexedLongAccesses) {
    const uint32_t table = 0x3000;
    for (uint32_t i = 0; i < 40; ++i) bus_write32(table + 4 * i, 0x100 + i);
    c().regs()[14] = table;
    c().regs()[15] = table + 8;
    c().regs()[1] = 6;  // + 6 AND NOT 3 = + 4
    c().regs()[2] = table + 7;
    c().run_all({ins(LOAD_R14_Q, 1, 10), ins(LOAD_R14_Q, 0, 11), ins(LOAD_R15_Q, 2, 12), ins(LOAD_R14_RS, 1, 13),
                 ins(LOAD_R15_RS, 1, 14), ins(LOAD, 2, 15)});
    EXPECT_EQ(c().regs()[10], 0x101u);
    EXPECT_EQ(c().regs()[11], 0x100u + 32);
    EXPECT_EQ(c().regs()[12], 0x104u);
    EXPECT_EQ(c().regs()[13], 0x101u);
    EXPECT_EQ(c().regs()[14], 0x103u);
    EXPECT_EQ(c().regs()[15], 0x101u);

    c().regs()[14] = table;
    c().regs()[15] = table;
    c().regs()[20] = 0xE0;
    c().regs()[21] = 0xE1;
    c().regs()[22] = 0xE2;
    c().regs()[23] = 0xE3;
    c().regs()[3] = 0x41;  // + 0x40
    c().run_all({ins(STORE_R14_Q, 31, 20), ins(STORE_R15_Q, 30, 21), ins(STORE_R14_RS, 3, 22), ins(STORE_R15_RS, 1, 23)});
    EXPECT_EQ(bus_read32(table + 124), 0xE0u);
    EXPECT_EQ(bus_read32(table + 120), 0xE1u);
    EXPECT_EQ(bus_read32(table + 0x40), 0xE2u);
    EXPECT_EQ(bus_read32(table + 4), 0xE3u);
}

// The GPU's phrase accesses: outside local RAM the high long goes through hidata (G_HIDATA);
// inside they are plain long accesses.
TEST_F(RiscTest, GpuPhraseLoadsAndStores) {
    bus_write32(0x5000, 0xAAAA0000);
    bus_write32(0x5004, 0xBBBB1111);
    GPU.regs()[1] = 0x5006;
    GPU.run_all({ins(LOADP, 1, 2)});
    EXPECT_EQ(GPU.regs()[2], 0xBBBB1111u);
    EXPECT_EQ(gpu_read32(G_HIDATA), 0xAAAA0000u);

    gpu_write32(G_HIDATA, 0x12345678);
    GPU.regs()[1] = 0x6003;
    GPU.regs()[3] = 0x9ABCDEF0;
    GPU.run_all({ins(STOREP, 1, 3)});
    EXPECT_EQ(bus_read32(0x6000), 0x12345678u);
    EXPECT_EQ(bus_read32(0x6004), 0x9ABCDEF0u);

    const uint32_t local = GPU_RAM_BASE + 0x200;
    bus_write32(local, 0x0F0F0F0F);
    GPU.regs()[1] = local + 5;  // AND NOT 3, not AND NOT 7
    gpu_state.hidata = 0;
    GPU.run_all({ins(STOREP, 1, 3), ins(LOADP, 1, 4)});
    EXPECT_EQ(bus_read32(local + 4), 0x9ABCDEF0u);
    EXPECT_EQ(bus_read32(local), 0x0F0F0F0Fu);
    EXPECT_EQ(GPU.regs()[4], 0x9ABCDEF0u);
    EXPECT_EQ(gpu_state.hidata, 0u);
}

INSTANTIATE_TEST_SUITE_P(Processors, Flow, testing::Values(GPU, DSP),
                         [](const auto& info) { return std::string(info.param.name()); });
INSTANTIATE_TEST_SUITE_P(Processors, Memory, testing::Values(GPU, DSP),
                         [](const auto& info) { return std::string(info.param.name()); });

}  // namespace
