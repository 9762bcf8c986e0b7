// Shared set-up for the GPU and DSP tests: a machine with fresh buffers and both processors
// reset; instruction words built from opcode numbers and fields, written into memory through
// the bus; one face for both processors, so that shared behaviour is tested on each.
#pragma once

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "core/bus.h"
#include "core/host.h"
#include "core/memory.h"
#include "core/video.h"
#include "m68k/m68k.h"
#include "risc/dsp.h"
#include "risc/gpu.h"
#include "risc/risc_opcodes.h"

namespace risc_test {

enum : unsigned {
    ADD, ADDC, ADDQ, ADDQT, SUB, SUBC, SUBQ, SUBQT, NEG, AND, OR, XOR, NOT, BTST, BSET, BCLR, MULT, IMULT,
    IMULTN, RESMAC, IMACN, DIV, ABS, SH, SHLQ, SHRQ, SHA, SHARQ, ROR, RORQ, CMP, CMPQ, SAT8, SAT16, MOVE,
    MOVEQ, MOVETA, MOVEFA, MOVEI, LOADB, LOADW, LOAD, LOADP, LOAD_R14_Q, LOAD_R15_Q, STOREB, STOREW, STORE,
    STOREP, STORE_R14_Q, STORE_R15_Q, MOVE_PC, JUMP, JR, MMULT, MTOI, NORMI, NOP, LOAD_R14_RS, LOAD_R15_RS,
    STORE_R14_RS, STORE_R15_RS, SAT24, PACK,
    SAT16S = 33, SAT32S = 42, ADDQMOD = 63,  // the DSP's own
};
enum : unsigned { CC_ALWAYS = 0, CC_EQ = 2 };

constexpr uint16_t ins(unsigned opcode, unsigned first, unsigned second) {
    return static_cast<uint16_t>(opcode << 10 | (first & 31) << 5 | (second & 31));
}

using program = std::vector<uint16_t>;
inline program operator+(program a, const program& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}
// movei #value,Rd: the word, then the operand's low and high halves.
inline program movei(uint32_t value, unsigned rd) {
    return {ins(MOVEI, 0, rd), static_cast<uint16_t>(value), static_cast<uint16_t>(value >> 16)};
}
// An interrupt handler's return: imask and latch n cleared in the flags register, back to the
// stacked address + 2 with the flags written in the jump's delay slot.
inline program handler_return(uint32_t flags_register, unsigned n) {
    return movei(flags_register, 29) + program{ins(LOAD, 29, 28), ins(BCLR, 3, 28), ins(BSET, 9 + n, 28),
                                               ins(LOAD, 31, 27), ins(ADDQ, 2, 27), ins(ADDQ, 4, 31),
                                               ins(JUMP, 27, CC_ALWAYS), ins(STORE, 29, 28)};
}

inline void put(uint32_t address, const program& words) {
    for (uint16_t w : words) bus_write16(address, w), address += 2;
}
inline void clear_message() { log_clear(); }

struct flags {
    uint8_t z, c, n;
    bool operator==(const flags&) const = default;
};
inline std::ostream& operator<<(std::ostream& out, const flags& f) {
    return out << "Z" << int(f.z) << " C" << int(f.c) << " N" << int(f.n);
}

// A processor: its state fields, its control block (the same layout on both: flags +0, mtxc +4,
// mtxa +8, end +0xC, pc +0x10, ctrl +0x14, remainder/divide control +0x1C) and entry points.
struct cpu {
    risc_processor which;
    const char* name;
    uint32_t ram, block;
    uint32_t *regs, *alt_regs, *pc, *running;
    uint8_t *z, *c, *n;
    int (*execute)(int32_t);
    void (*interrupt)(int);

    flags get_flags() const { return {*z, *c, *n}; }
    void set_flags(flags f) const { *z = f.z, *c = f.c, *n = f.n; }
    // Places the words at `address` (default: the start of local RAM) and runs one slice there.
    int run(const program& words, int32_t budget, uint32_t address = 0) const {
        put(address ? address : ram, words);
        *pc = address ? address : ram;
        *running = 1;
        return execute(budget);
    }
    // Runs exactly the given instructions, 3 cycles each.
    int run_all(const program& words) const {
        int32_t count = 0;
        for (size_t i = 0; i < words.size(); i += words[i] >> 10 == MOVEI ? 3 : 1) ++count;
        return run(words, 3 * count);
    }
};
inline const cpu GPU{RISC_GPU, "GPU", GPU_RAM_BASE, G_FLAGS, gpu_state.regs, gpu_state.alt_regs,
                     &gpu_state.pc, &gpu_state.running, &gpu_state.flag_z, &gpu_state.flag_c,
                     &gpu_state.flag_n, gpu_execute, gpu_interrupt};
inline const cpu DSP{RISC_DSP, "DSP", DSP_RAM_BASE, D_FLAGS, dsp_state.regs, dsp_state.alt_regs,
                     &dsp_state.pc, &dsp_state.running, &dsp_state.flag_z, &dsp_state.flag_c,
                     &dsp_state.flag_n, dsp_execute, dsp_interrupt};

inline void PrintTo(const cpu& c, std::ostream* out) { *out << c.name; }

class RiscTest : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(memory_allocate());
        std::memset(main_ram, 0, MAIN_RAM_SIZE);
        video_reset();
        gpu_init();
        dsp_init();
        std::memset(m68k_context.irq_vector, 0, sizeof m68k_context.irq_vector);
        m68k_context.irq_count = 0;
        clear_message();
    }
    void TearDown() override { memory_release(); }
};

// The same test on both processors.
class BothCores : public RiscTest, public testing::WithParamInterface<cpu> {
protected:
    const cpu& c() const { return GetParam(); }
};
#define RISC_ON_BOTH(suite) \
    INSTANTIATE_TEST_SUITE_P(Processors, suite, testing::Values(GPU, DSP), [](const auto& i) { return std::string(i.param.name); })

}  // namespace risc_test
