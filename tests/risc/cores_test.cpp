// The GPU and DSP cores around the instructions: interrupt entry and return with the register
// banks, the flags and control registers, single step, interrupts raised by the processor's own
// stores, the code regions and the messages each core reports.
#include "risc_test_support.h"

namespace {

using namespace risc_test;

class Core : public BothCores {
protected:
    uint32_t flags_read() const { return bus_read32(c().block); }
    void flags_write(uint32_t v) const { bus_write32(c().block, v); }
    uint32_t ctrl() const { return bus_read32(c().block + 0x14); }
};

constexpr uint32_t IMASK = 1u << 3, BANK1 = 1u << 14;
constexpr uint32_t enable(int n) { return 1u << (4 + n); }
constexpr uint32_t latch(int n) { return 1u << (6 + n); }

// An interrupt taken from bank 1: bank 0 current, imask set, the old pc - 2 pushed on bank 0's
// R31, pc at the vector (and R30 on the GPU only); a second request is lost; the handler's
// return restores bank 1 and resumes at the old pc.
TEST_P(Core, InterruptEntryWithBanksAndReturn) {
    const int n = c().which == RISC_GPU ? 3 : 1;
    const uint32_t vector = c().ram + 16 * n, stack = c().ram + 0xF00;
    flags_write(enable(n) | enable(2) | BANK1);
    c().alt_regs[31] = stack;  // bank 0's, seen from bank 1
    c().alt_regs[30] = 0x1234;
    *c().pc = 0x4000;
    c().interrupt(n);
    c().interrupt(2);  // in service: dropped, not latched
    EXPECT_EQ(flags_read(), enable(n) | enable(2) | BANK1 | IMASK);
    EXPECT_EQ(ctrl(), 0x2008u | latch(n));
    EXPECT_EQ(c().regs[31], stack - 4);
    EXPECT_EQ(bus_read32(stack - 4), 0x4000u - 2);
    EXPECT_EQ(*c().pc, vector);
    EXPECT_EQ(c().regs[30], c().which == RISC_GPU ? vector : 0x1234u);

    ASSERT_EQ(c().run(handler_return(c().block, n), 3 * 9, vector), 1);
    EXPECT_EQ(*c().pc, 0x4000u);
    EXPECT_EQ(flags_read(), enable(n) | enable(2) | BANK1);
    EXPECT_EQ(ctrl(), 0x2009u);
    EXPECT_EQ(c().alt_regs[31], stack);
}

// Disabled interrupts are dropped; software never sets imask; in service bank requests are
// ignored; leaving service to the bank already current changes nothing, not even the page bit;
// a latch is cleared by a 1 in its bit 9 + n.
TEST_P(Core, FlagsRegisterWrites) {
    c().interrupt(3);
    EXPECT_EQ(*c().pc, 0u);
    flags_write(IMASK | 7);
    EXPECT_EQ(flags_read(), 7u);
    EXPECT_EQ(c().get_flags(), (flags{1, 1, 1}));

    flags_write(enable(0) | BANK1);
    c().alt_regs[31] = 0x8000;
    c().interrupt(0);
    flags_write(IMASK | enable(0));
    EXPECT_EQ(flags_read(), IMASK | enable(0) | BANK1);
    flags_write(enable(0));
    EXPECT_EQ(flags_read(), enable(0) | BANK1);
    EXPECT_EQ(ctrl(), 0x2008u | latch(0));
    flags_write(1u << 9);
    EXPECT_EQ(ctrl(), 0x2008u);
    EXPECT_EQ(flags_read(), BANK1);
}

// Code regions: an address in none ends the slice at once with the change-pc message, even
// while stopped; a stopped processor at a valid address runs nothing; running off the end of
// local RAM ends the slice there; a fetch that would straddle the end of RAM (odd pc at its last
// byte) is refused; a jump into main RAM continues there in the same slice.
TEST_P(Core, CodeRegions) {
    const bool gpu = c().which == RISC_GPU;
    const uint32_t end = gpu ? GPU_RAM_END : DSP_RAM_END;
    char message[96];
    std::snprintf(message, sizeof message, "%s_change_pc: Invalid address %08X, %08X\n", c().name, end, end);
    bus_write32(c().block + 0x10, gpu ? 0xF0B000 : 0xF1D000);
    EXPECT_EQ(c().execute(120), 0);
    EXPECT_STREQ(log_text, gpu ? "GPU_change_pc: Invalid address 00F0B000, 00F0B000\n"
                               : "DSP_change_pc: Invalid address 00F1D000, 00F1D000\n");
    clear_message();
    bus_write32(c().block + 0x10, 0x1000);
    EXPECT_EQ(c().execute(120), 1);
    EXPECT_EQ(*c().pc, 0x1000u);
    EXPECT_STREQ(log_text, "");

    EXPECT_EQ(c().run({ins(ADDQT, 1, 5)}, 120, end - 2), 0);
    EXPECT_EQ(c().regs[5], 1u);
    EXPECT_STREQ(log_text, message);
    EXPECT_EQ(c().run({}, 120, MAIN_RAM_SIZE - 1), 0);
    std::snprintf(message, sizeof message, "%s: instruction at 001FFFFF runs past the end of its code region.\n", c().name);
    EXPECT_STREQ(log_text, message);

    put(0x2000, {ins(ADDQT, 2, 5), ins(ADDQT, 2, 5)});
    c().regs[1] = 0x2000;
    EXPECT_EQ(c().run({ins(JUMP, 1, CC_ALWAYS), ins(NOP, 0, 0)}, 12), 1);
    EXPECT_EQ(c().regs[5], 5u);
    EXPECT_EQ(*c().pc, 0x2004u);
}

// An interrupt raised by the processor's own store to its control register is entered inside
// the slice: the return address is the store's own (its successor minus 2) and the next
// instruction is the vector's. In a delay slot the GPU takes the jump's target as the place to
// return to; the DSP loses the request and takes the jump.
TEST_P(Core, InterruptRaisedByTheProcessorsOwnStore) {
    const uint32_t code = c().ram + 0x100, stack = c().ram + 0xF00;
    put(c().ram, {ins(ADDQT, 16, 6)});  // vector 0
    flags_write(enable(0));
    c().regs[1] = c().block + 0x14;
    c().regs[2] = 5;  // run, interrupt 0
    c().regs[31] = stack;
    ASSERT_EQ(c().run({ins(STORE, 1, 2), ins(ADDQT, 1, 5)}, 6, code), 1);
    EXPECT_EQ(bus_read32(stack - 4), code);
    EXPECT_EQ(c().regs[6], 16u);
    EXPECT_EQ(c().regs[5], 0u);
    EXPECT_EQ(*c().pc, c().ram + 2);

    flags_write(enable(0));
    c().regs[31] = stack;
    ASSERT_EQ(c().run({ins(JR, 7, CC_ALWAYS), ins(STORE, 1, 2)}, 6, code), 1);
    const bool gpu = c().which == RISC_GPU;
    EXPECT_EQ(c().regs[31], gpu ? stack - 4 : stack);
    EXPECT_EQ(bus_read32(stack - 4), gpu ? code + 16 - 2 : code);
    EXPECT_EQ(*c().pc, gpu ? c().ram : code + 16);
}

// The GPU's single step: one instruction (a taken jump with its slot), stopped afterwards
// whatever bit 0 says; asked for by the GPU's own store it is refused and the GPU stops.
TEST_F(RiscTest, GpuSingleStep) {
    put(GPU_RAM_BASE, {ins(ADDQT, 1, 5), ins(JR, 2, CC_ALWAYS), ins(ADDQT, 1, 5), ins(NOP, 0, 0), ins(ADDQT, 1, 5)});
    gpu_state.pc = GPU_RAM_BASE;
    for (uint32_t step : {0x18u, 0x19u}) {
        bus_write32(G_CTRL, step);
        EXPECT_EQ(bus_read32(G_CTRL), 0x2008u);
    }
    EXPECT_EQ(GPU.regs[5], 2u);
    EXPECT_EQ(gpu_state.pc, GPU_RAM_BASE + 8);

    GPU.regs[1] = G_CTRL;
    GPU.regs[2] = 0x19;
    ASSERT_EQ(GPU.run({ins(STORE, 1, 2), ins(ADDQT, 1, 5)}, 120, 0x3000), 1);
    EXPECT_EQ(GPU.regs[5], 2u);
    EXPECT_EQ(bus_read32(G_CTRL), 0x2008u);
    EXPECT_EQ(gpu_state.pc, 0x3002u);
    EXPECT_STREQ(log_text, "GPU: single step requested by the GPU's own program at 00003000 ignored.\n");
}

// G_CTRL bit 1 interrupts the 68000 (level 2, autovector) when INT1 enables the GPU source.
TEST_F(RiscTest, GpuInterruptsThe68000ThroughInt1) {
    GPU.regs[1] = G_CTRL;
    GPU.regs[2] = 3;
    for (const bool enabled : {false, true}) {
        gpu_write16(INT1, enabled ? 1u << IRQ_GPU : 0);
        GPU.run_all({ins(STORE, 1, 2)});
        EXPECT_EQ(m68k_context.irq_vector[1], enabled ? 26u : 0u);
        EXPECT_EQ(video.int1_pending, enabled ? 1u << IRQ_GPU : 0u);
    }
}

// The messages of the control blocks and of the DSP's invalid opcodes, which cost 3 cycles.
TEST_F(RiscTest, ControlBlockAndInvalidOpcodeMessages) {
    const struct {
        uint32_t address, value;
        const char* message;
    } accesses[] = {
        {G_END, 0, "GPU: Little-endian mode unhandled.\n"}, {G_END, 4, ""}, {D_END, 5, ""}, {D_END, 7, ""},
        {D_END, 1, "DSP: Little-endian mode unhandled.\n"}, {D_END, 4, "DSP: Little-endian mode unhandled.\n"},
        {D_END, 0, "DSP: Little-endian mode unhandled.\n"}, {D_CTRL, 2, "DSP CPU Interrupt not implemented.\n"},
        {D_CTRL, 0x19, "DSP Single stepping not implemented.\n"}, {D_CTRL, 0x18, "DSP Single stepping not implemented.\n"},
        // Reads of registers that cannot be read (value unused).
        {D_PC, 0, "DSP Read32 from 00F1A110\n"}, {D_MTXA, 0, "DSP Read32 from 00F1A108\n"},
        {G_END, 0, "gpu_read32 00F0210C\n"}, {G_MTXA, 0, "gpu_read32 00F02108\n"},
    };
    for (size_t i = 0; i < std::size(accesses); ++i) {
        const auto& a = accesses[i];
        clear_message();
        if (i < 10) {
            bus_write32(a.address, a.value);
        } else {
            EXPECT_EQ(bus_read32(a.address), 0u);
        }
        EXPECT_STREQ(log_text, a.message) << std::hex << a.address << " " << a.value;
    }
    EXPECT_EQ(dsp_state.running, 0u);  // 0x18: no step, bit 0 as written
    EXPECT_EQ(m68k_context.irq_vector[1], 0u);  // the DSP never interrupts the 68000

    for (unsigned opcode : {32u, 48u, 62u}) {
        DSP.regs[5] = 0;
        ASSERT_EQ(DSP.run({ins(opcode, 3, 4), ins(ADDQT, 1, 5)}, 6), 1);
        EXPECT_EQ(DSP.regs[5], 1u);
        char expected[64];
        std::snprintf(expected, sizeof expected, "DSP: Invalid opcode %04X at 00F1B000\n", ins(opcode, 3, 4));
        EXPECT_STREQ(log_text, expected);
    }
}

// The DSP's jump right after a store that switched banks takes its register from the bank
// current before; two instructions later it reads the new bank. The GPU always reads the
// current bank.
TEST_F(RiscTest, JumpAfterBankSwitch) {
    const struct {
        const cpu& c;
        bool right_after;
        uint32_t target;
    } rows[] = {{DSP, true, 0x1000}, {DSP, false, 0x2000}, {GPU, true, 0x2000}};
    for (const auto& r : rows) {
        bus_write32(r.c.block, BANK1);
        r.c.regs[1] = r.c.block;
        r.c.regs[2] = 0;       // back to bank 0
        r.c.regs[3] = 0x1000;  // bank 1's target
        r.c.alt_regs[3] = 0x2000;
        const program words = r.right_after ? program{ins(STORE, 1, 2), ins(JUMP, 3, CC_ALWAYS), ins(NOP, 0, 0)}
                                            : program{ins(STORE, 1, 2), ins(NOP, 0, 0), ins(JUMP, 3, CC_ALWAYS), ins(NOP, 0, 0)};
        ASSERT_EQ(r.c.run_all(words), 1);
        EXPECT_EQ(*r.c.pc, r.target) << r.c.name << " " << r.right_after;
    }
}

RISC_ON_BOTH(Core);

}  // namespace
