// The GPU and DSP cores around the instructions: interrupt entry and return with the register
// banks, the flags and control registers, single step, interrupts raised by the processor's own
// stores, the code regions and the messages each core reports.
#include "risc_test_support.h"

namespace {

using namespace risc_test;

class Core : public BothCores {};

constexpr uint32_t FLAGS_IMASK = 1u << 3, FLAGS_BANK1 = 1u << 14;
constexpr uint32_t enable(int n) { return 1u << (4 + n); }
constexpr uint32_t clear_latch(int n) { return 1u << (9 + n); }

// The return sequence of an interrupt handler: flags with imask and the latch cleared, the
// return address from the stack plus 2, the flags written in the jump's delay slot.
program handler_return(uint32_t flags_register, int n) {
    return movei(flags_register, 29) +
           program{ins(LOAD, 29, 28),   ins(BCLR, 3, 28),       ins(BSET, 9 + n, 28), ins(LOAD, 31, 27),
                   ins(ADDQ, 2, 27),    ins(ADDQ, 4, 31),       ins(JUMP, 27, CC_ALWAYS), ins(STORE, 29, 28)};
}

// An interrupt taken from bank 1: bank 0 current, imask set, the old pc - 2 pushed on bank 0's
// R31, pc at the vector (and R30 on the GPU); a second request is lost; the handler's return
// restores bank 1 and resumes at the old pc.
TEST_P(Core, InterruptEntryWithBanksAndReturn) {
    const int n = c().which == RISC_GPU ? 3 : 1;
    const uint32_t vector = c().ram_base() + 16 * n, stack = c().ram_base() + 0xF00;
    bus_write32(c().flags_register(), enable(n) | enable(2) | FLAGS_BANK1);
    c().alt_regs()[31] = stack;  // bank 0's stack pointer, seen from bank 1
    c().alt_regs()[30] = 0x1234;  // bank 0's R30
    c().pc() = 0x4000;
    c().interrupt(n);

    EXPECT_EQ(bus_read32(c().flags_register()), enable(n) | enable(2) | FLAGS_BANK1 | FLAGS_IMASK);
    EXPECT_EQ(bus_read32(c().ctrl_register()), 0x2008u | 1u << (6 + n));
    EXPECT_EQ(c().regs()[31], stack - 4);
    EXPECT_EQ(bus_read32(stack - 4), 0x4000u - 2);
    EXPECT_EQ(c().pc(), vector);
    EXPECT_EQ(c().regs()[30], c().which == RISC_GPU ? vector : 0x1234u);

    c().interrupt(2);  // in service: dropped, not latched
    EXPECT_EQ(c().pc(), vector);
    EXPECT_EQ(bus_read32(c().ctrl_register()) & 1u << (6 + 2), 0u);

    const program ret = handler_return(c().flags_register(), n);
    ASSERT_EQ(c().run(ret, 3 * 9, vector), 1);
    EXPECT_EQ(c().pc(), 0x4000u);
    EXPECT_EQ(bus_read32(c().flags_register()), enable(n) | enable(2) | FLAGS_BANK1);
    EXPECT_EQ(bus_read32(c().ctrl_register()), 0x2008u | 1u);
    EXPECT_EQ(c().alt_regs()[31], stack);
}

// Disabled interrupts are dropped; the flags register's write rules.
TEST_P(Core, FlagsRegisterWrites) {
    const uint32_t flags = c().flags_register();
    c().interrupt(3);
    EXPECT_EQ(c().pc(), 0u);
    bus_write32(flags, FLAGS_IMASK | 7);  // software never sets imask
    EXPECT_EQ(bus_read32(flags), 7u);
    EXPECT_EQ(c().get_flags(), (risc_test::flags{1, 1, 1}));

    bus_write32(flags, enable(0) | FLAGS_BANK1);
    c().alt_regs()[31] = 0x8000;
    c().interrupt(0);  // from bank 1: reg_page stays 1 during service
    bus_write32(flags, FLAGS_IMASK | enable(0));  // in service: the bank request is ignored
    EXPECT_EQ(bus_read32(flags), FLAGS_IMASK | enable(0) | FLAGS_BANK1);
    bus_write32(flags, enable(0));  // leaves service; bank 0 is current already: not even reg_page changes
    EXPECT_EQ(bus_read32(flags), enable(0) | FLAGS_BANK1);
    EXPECT_EQ(bus_read32(c().ctrl_register()), 0x2008u | 1u << 6);
    bus_write32(flags, clear_latch(0));  // clears latch 0 and, being 0 elsewhere, everything
    EXPECT_EQ(bus_read32(c().ctrl_register()), 0x2008u);
    EXPECT_EQ(bus_read32(flags), FLAGS_BANK1);  // still the page of the last actual switch
}

// The code regions: an address outside them ends the slice at once with the change-pc message,
// even while stopped; a stopped processor at a valid address runs nothing; running off the end
// of local RAM ends the slice there; a jump into main RAM continues there in the same slice.
TEST_P(Core, CodeRegions) {
    const bool gpu = c().which == RISC_GPU;
    const uint32_t invalid = gpu ? 0xF0B000 : 0xF1D000;
    bus_write32(gpu ? G_PC : D_PC, invalid);
    EXPECT_EQ(c().execute(120), 0);
    EXPECT_STREQ(log_text, gpu ? "GPU_change_pc: Invalid address 00F0B000, 00F0B000\n"
                               : "DSP_change_pc: Invalid address 00F1D000, 00F1D000\n");
    clear_message();
    c().pc() = 0x1000;
    c().regs()[5] = 0;
    put(0x1000, {ins(ADDQT, 1, 5)});
    EXPECT_EQ(c().execute(120), 1);
    EXPECT_EQ(c().regs()[5], 0u);
    EXPECT_STREQ(log_text, "");

    const uint32_t last = (gpu ? GPU_RAM_END : DSP_RAM_END) - 2;
    EXPECT_EQ(c().run({ins(ADDQT, 1, 5)}, 120, last), 0);
    EXPECT_EQ(c().regs()[5], 1u);
    EXPECT_EQ(c().pc(), last + 2);

    put(0x2000, {ins(ADDQT, 2, 5), ins(ADDQT, 2, 5)});
    c().regs()[1] = 0x2000;
    EXPECT_EQ(c().run({ins(JUMP, 1, CC_ALWAYS), ins(NOP, 0, 0)}, 12), 1);
    EXPECT_EQ(c().regs()[5], 5u);
    EXPECT_EQ(c().pc(), 0x2004u);
}

// An interrupt raised by the processor's own store to its control register is entered inside
// the slice: the return address is the store's own address (its successor minus 2) and the
// next instruction to run is the vector's.
TEST_P(Core, InterruptRaisedByTheProcessorsOwnStore) {
    const uint32_t code = c().ram_base() + 0x100, stack = c().ram_base() + 0xF00;
    put(c().ram_base(), {ins(ADDQT, 16, 6)});  // vector 0 marks R6
    bus_write32(c().flags_register(), enable(0));
    c().regs()[31] = stack;
    c().regs()[1] = c().ctrl_register();
    c().regs()[2] = 5;  // run, interrupt 0
    c().regs()[6] = 0;
    c().regs()[5] = 0;
    ASSERT_EQ(c().run({ins(STORE, 1, 2), ins(ADDQT, 1, 5)}, 6, code), 1);
    EXPECT_EQ(bus_read32(stack - 4), code);
    EXPECT_EQ(c().regs()[6], 16u);
    EXPECT_EQ(c().regs()[5], 0u);
    EXPECT_EQ(c().pc(), c().ram_base() + 2);
}

// The same store in a delay slot: the GPU enters with the jump's target as the place to return
// to (target - 2 pushed); the DSP loses the request and takes the jump.
TEST_P(Core, InterruptRaisedInADelaySlot) {
    const uint32_t code = c().ram_base() + 0x100, stack = c().ram_base() + 0xF00;
    bus_write32(c().flags_register(), enable(0));
    c().regs()[31] = stack;
    c().regs()[1] = c().ctrl_register();
    c().regs()[2] = 5;
    ASSERT_EQ(c().run({ins(JR, 7, CC_ALWAYS), ins(STORE, 1, 2)}, 6, code), 1);
    if (c().which == RISC_GPU) {
        EXPECT_EQ(bus_read32(stack - 4), code + 16 - 2);
        EXPECT_EQ(c().pc(), c().ram_base());
    } else {
        EXPECT_EQ(c().regs()[31], stack);
        EXPECT_EQ(c().pc(), code + 16);
        EXPECT_EQ(bus_read32(D_FLAGS) & FLAGS_IMASK, 0u);
    }
}

// The GPU's single step: one instruction (a taken jump with its slot) and stopped afterwards,
// whatever bit 0 says; asked for by the GPU's own store it is refused and the GPU stops.
TEST_F(RiscTest, GpuSingleStep) {
    put(GPU_RAM_BASE, {ins(ADDQT, 1, 5), ins(JR, 2, CC_ALWAYS), ins(ADDQT, 1, 5), ins(NOP, 0, 0), ins(NOP, 0, 0),
                       ins(ADDQT, 1, 5)});
    gpu_state.pc = GPU_RAM_BASE;
    for (uint32_t step : {0x18u, 0x19u}) {
        bus_write32(G_CTRL, step);
        EXPECT_EQ(gpu_state.running, 0u);
    }
    EXPECT_EQ(gpu_state.regs[5], 2u);  // the first count, then jr and its slot
    EXPECT_EQ(gpu_state.pc, GPU_RAM_BASE + 8);
    EXPECT_EQ(bus_read32(G_CTRL), 0x2008u);
    bus_write32(G_CTRL, 1);
    EXPECT_EQ(bus_read32(G_CTRL), 0x2009u);

    GPU.regs()[1] = G_CTRL;
    GPU.regs()[2] = 0x19;
    GPU.regs()[5] = 0;
    ASSERT_EQ(GPU.run({ins(STORE, 1, 2), ins(ADDQT, 1, 5)}, 120, 0x3000), 1);
    EXPECT_EQ(GPU.regs()[5], 0u);
    EXPECT_EQ(gpu_state.running, 0u);
    EXPECT_EQ(gpu_state.pc, 0x3002u);
    EXPECT_STREQ(log_text, "GPU: single step requested by the GPU's own program at 00003000 ignored.\n");
}

// G_CTRL bit 1 interrupts the 68000 when INT1 enables the GPU source, and only then.
TEST_F(RiscTest, GpuInterruptsThe68000ThroughInt1) {
    GPU.regs()[1] = G_CTRL;
    GPU.regs()[2] = 3;
    GPU.run_all({ins(STORE, 1, 2)});
    EXPECT_EQ(m68k_context.irq_vector[1], 0u);
    EXPECT_EQ(video.int1_pending, 0u);
    gpu_write16(INT1, 1u << IRQ_GPU);
    GPU.run_all({ins(STORE, 1, 2)});
    EXPECT_EQ(m68k_context.irq_vector[1], 26u);  // level 2, autovector
    EXPECT_EQ(video.int1_pending, 1u << IRQ_GPU);
}

// The messages of the control blocks and the DSP's invalid opcodes.
TEST_F(RiscTest, ControlBlockAndInvalidOpcodeMessages) {
    struct {
        uint32_t address, value;
        const char* message;
    } writes[] = {
        {G_END, 0, "GPU: Little-endian mode unhandled.\n"},
        {G_END, 4, ""},
        {D_END, 5, ""},
        {D_END, 7, ""},
        {D_END, 1, "DSP: Little-endian mode unhandled.\n"},
        {D_END, 4, "DSP: Little-endian mode unhandled.\n"},
        {D_END, 0, "DSP: Little-endian mode unhandled.\n"},
        {D_CTRL, 2, "DSP CPU Interrupt not implemented.\n"},
        {D_CTRL, 0x19, "DSP Single stepping not implemented.\n"},
        {D_CTRL, 0x18, "DSP Single stepping not implemented.\n"},
    };
    for (const auto& w : writes) {
        clear_message();
        bus_write32(w.address, w.value);
        EXPECT_STREQ(log_text, w.message) << std::hex << w.address << " " << w.value;
        if (w.address == D_CTRL) {
            EXPECT_EQ(dsp_state.running, w.value & 1);
        }
    }
    EXPECT_EQ(m68k_context.irq_vector[1], 0u);  // the DSP never interrupts the 68000

    for (uint32_t address : {D_PC, D_MTXC}) {
        EXPECT_EQ(bus_read32(address), 0u);
        EXPECT_STREQ(log_text, (address == D_PC ? "DSP Read32 from 00F1A110\n" : "DSP Read32 from 00F1A104\n"));
    }
    EXPECT_EQ(bus_read32(G_END), 0u);
    EXPECT_STREQ(log_text, "gpu_read32 00F0210C\n");

    for (unsigned opcode : {32u, 48u, 62u}) {
        DSP.regs()[5] = 0;
        ASSERT_EQ(DSP.run({ins(opcode, 3, 4), ins(ADDQT, 1, 5)}, 6), 1);
        EXPECT_EQ(DSP.regs()[5], 1u);  // 3 cycles like any instruction
        char expected[64];
        std::snprintf(expected, sizeof expected, "DSP: Invalid opcode %04X at 00F1B000\n", ins(opcode, 3, 4));
        EXPECT_STREQ(log_text, expected);
    }
}

// The DSP's jump right after a store that switched banks takes its register from the bank
// that was current before; two instructions later it reads the new bank.
TEST_F(RiscTest, DspJumpAfterBankSwitch) {
    for (const bool right_after : {true, false}) {
        dsp_init();
        bus_write32(D_FLAGS, FLAGS_BANK1);
        DSP.regs()[1] = D_FLAGS;
        DSP.regs()[2] = 0;           // back to bank 0
        DSP.regs()[3] = 0x1000;      // bank 1's target
        DSP.alt_regs()[3] = 0x2000;  // bank 0's target
        const program words = right_after
                                  ? program{ins(STORE, 1, 2), ins(JUMP, 3, CC_ALWAYS), ins(NOP, 0, 0)}
                                  : program{ins(STORE, 1, 2), ins(NOP, 0, 0), ins(JUMP, 3, CC_ALWAYS), ins(NOP, 0, 0)};
        ASSERT_EQ(DSP.run(words, 3 * static_cast<int32_t>(words.size())), 1);
        EXPECT_EQ(dsp_state.pc, right_after ? 0x1000u : 0x2000u);
        EXPECT_EQ(dsp_state.bank, 0u);
    }
}

INSTANTIATE_TEST_SUITE_P(Processors, Core, testing::Values(GPU, DSP),
                         [](const auto& info) { return std::string(info.param.name()); });

}  // namespace
