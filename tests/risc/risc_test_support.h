// Shared set-up for the GPU and DSP tests: a machine with fresh buffers, both RISC processors
// reset and the chips cleared; instruction words built from opcode numbers and fields and
// written straight into memory; one slice run from a given address.
#pragma once

#include <gtest/gtest.h>

#include <cstring>
#include <initializer_list>
#include <string>
#include <vector>

#include "core/bus.h"
#include "core/host.h"
#include "core/memory.h"
#include "core/sound.h"
#include "core/video.h"
#include "m68k/m68k.h"
#include "risc/dsp.h"
#include "risc/gpu.h"
#include "risc/risc_opcodes.h"

namespace risc_test {

// Opcode numbers of the instructions the tests write.
enum : unsigned {
    ADD = 0, ADDC = 1, ADDQ = 2, ADDQT = 3, SUB = 4, SUBC = 5, SUBQ = 6, SUBQT = 7, NEG = 8,
    AND = 9, OR = 10, XOR = 11, NOT = 12, BTST = 13, BSET = 14, BCLR = 15, MULT = 16, IMULT = 17,
    IMULTN = 18, RESMAC = 19, IMACN = 20, DIV = 21, ABS = 22, SH = 23, SHLQ = 24, SHRQ = 25,
    SHA = 26, SHARQ = 27, ROR = 28, RORQ = 29, CMP = 30, CMPQ = 31, SAT8 = 32, SAT16 = 33,
    MOVE = 34, MOVEQ = 35, MOVETA = 36, MOVEFA = 37, MOVEI = 38, LOADB = 39, LOADW = 40, LOAD = 41,
    LOADP = 42, LOAD_R14_Q = 43, LOAD_R15_Q = 44, STOREB = 45, STOREW = 46, STORE = 47, STOREP = 48,
    STORE_R14_Q = 49, STORE_R15_Q = 50, MOVE_PC = 51, JUMP = 52, JR = 53, MMULT = 54, MTOI = 55,
    NORMI = 56, NOP = 57, LOAD_R14_RS = 58, LOAD_R15_RS = 59, STORE_R14_RS = 60,
    STORE_R15_RS = 61, SAT24 = 62, PACK = 63,
    // The DSP's own meanings.
    SAT16S = 33, SAT32S = 42, ADDQMOD = 63,
};

// Conditions of jump and jr.
enum : unsigned { CC_ALWAYS = 0, CC_NE = 1, CC_EQ = 2, CC_CC = 4, CC_CS = 8, CC_PL = 20, CC_MI = 24 };

constexpr uint16_t ins(unsigned opcode, unsigned first, unsigned second) {
    return static_cast<uint16_t>(opcode << 10 | (first & 31) << 5 | (second & 31));
}

// movei #value,Rd as its three words.
inline std::vector<uint16_t> movei(uint32_t value, unsigned rd) {
    return {ins(MOVEI, 0, rd), static_cast<uint16_t>(value), static_cast<uint16_t>(value >> 16)};
}

using program = std::vector<uint16_t>;
inline program operator+(program a, const program& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

// Writes the words at a console address through the bus, as a loader would.
inline void put(uint32_t address, const program& words) {
    for (uint16_t w : words) {
        bus_write16(address, w);
        address += 2;
    }
}

inline void clear_message() { log_text[0] = '\0'; }

struct flags {
    uint8_t z, c, n;
    bool operator==(const flags&) const = default;
};
inline std::ostream& operator<<(std::ostream& out, const flags& f) {
    return out << "Z" << int(f.z) << " C" << int(f.c) << " N" << int(f.n);
}

// The two processors behind one face, so that shared behaviour is tested on both.
struct cpu {
    risc_processor which;
    uint32_t* regs() const { return which == RISC_GPU ? gpu_state.regs : dsp_state.regs; }
    uint32_t* alt_regs() const { return which == RISC_GPU ? gpu_state.alt_regs : dsp_state.alt_regs; }
    uint32_t& pc() const { return which == RISC_GPU ? gpu_state.pc : dsp_state.pc; }
    uint32_t& running() const { return which == RISC_GPU ? gpu_state.running : dsp_state.running; }
    uint32_t& div_ctrl() const { return which == RISC_GPU ? gpu_state.div_ctrl : dsp_state.div_ctrl; }
    uint32_t& div_remainder() const { return which == RISC_GPU ? gpu_state.div_remainder : dsp_state.div_remainder; }
    uint32_t& mtxc() const { return which == RISC_GPU ? gpu_state.mtxc : dsp_state.mtxc; }
    uint32_t& mtxa() const { return which == RISC_GPU ? gpu_state.mtxa : dsp_state.mtxa; }
    uint32_t ram_base() const { return which == RISC_GPU ? GPU_RAM_BASE : DSP_RAM_BASE; }
    uint32_t flags_register() const { return which == RISC_GPU ? G_FLAGS : D_FLAGS; }
    uint32_t ctrl_register() const { return which == RISC_GPU ? G_CTRL : D_CTRL; }
    flags get_flags() const {
        return which == RISC_GPU ? flags{gpu_state.flag_z, gpu_state.flag_c, gpu_state.flag_n}
                                 : flags{dsp_state.flag_z, dsp_state.flag_c, dsp_state.flag_n};
    }
    void set_flags(flags f) const {
        if (which == RISC_GPU) {
            gpu_state.flag_z = f.z, gpu_state.flag_c = f.c, gpu_state.flag_n = f.n;
        } else {
            dsp_state.flag_z = f.z, dsp_state.flag_c = f.c, dsp_state.flag_n = f.n;
        }
    }
    int execute(int32_t budget) const { return which == RISC_GPU ? gpu_execute(budget) : dsp_execute(budget); }
    void interrupt(int n) const { which == RISC_GPU ? gpu_interrupt(n) : dsp_interrupt(n); }
    const char* name() const { return which == RISC_GPU ? "GPU" : "DSP"; }

    // Places the words at `address` (default: the start of local RAM), starts the processor
    // there and runs one slice.
    int run(const program& words, int32_t budget, uint32_t address = 0) const {
        if (!address) address = ram_base();
        put(address, words);
        pc() = address;
        running() = 1;
        return execute(budget);
    }
    // Runs exactly the given words, 3 cycles each (a movei counts once).
    int run_all(const program& words) const {
        int count = 0;
        for (size_t i = 0; i < words.size(); ++i, ++count)
            if (words[i] >> 10 == MOVEI) i += 2;
        return run(words, 3 * count);
    }
};
inline const cpu GPU{RISC_GPU};
inline const cpu DSP{RISC_DSP};
inline std::string PrintToString(const cpu& c) { return c.name(); }

class RiscTest : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(memory_allocate());
        std::memset(main_ram, 0, MAIN_RAM_SIZE);
        video_reset();
        sound = sound_registers{};
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

}  // namespace risc_test
