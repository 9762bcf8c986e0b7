// The DSP core: its state, code regions, control block and interrupts; instructions run in the
// shared engine (risc_engine.h) with the DSP column of the opcode table.
#include "risc/dsp.h"

#include "risc/risc_engine.h"

dsp_state_t dsp_state;

namespace {

// switch_pc lives in dsp_core and survives dsp_init: it is 0 only when the library loads.
risc_core dsp_core;

constexpr uint32_t CTRL_RUN = 0x01;
constexpr uint32_t CTRL_CPU_INTERRUPT = 0x02;
constexpr uint32_t CTRL_FORCE_INT0 = 0x04;
constexpr uint32_t CTRL_SINGLE_STEP = 0x18;

struct dsp_traits {
    static constexpr risc_processor processor = RISC_DSP;
    static constexpr uint32_t RAM_BASE = DSP_RAM_BASE;
    static constexpr uint32_t RAM_END = DSP_RAM_END;
    static constexpr const char* CHANGE_PC_MESSAGE = "DSP_change_pc: Invalid address %08X, %08X\n";
    static constexpr const char* FETCH_MESSAGE = "DSP: instruction at %08X runs past the end of its code region.\n";
    static dsp_state_t& state() { return dsp_state; }
    static risc_core& core() { return dsp_core; }
    static uint8_t* local_ram() { return dsp_ram; }
};

void write_ctrl(uint32_t value) {
    dsp_state.running = value & CTRL_RUN;
    if (value & CTRL_CPU_INTERRUPT) log_printf("DSP CPU Interrupt not implemented.\n");
    if (value & CTRL_FORCE_INT0) dsp_interrupt(0);
    if ((value & CTRL_SINGLE_STEP) == CTRL_SINGLE_STEP) log_printf("DSP Single stepping not implemented.\n");
}

}  // namespace

void dsp_init() {
    dsp_state = dsp_state_t{};
    const uint32_t switch_pc = dsp_core.switch_pc;
    dsp_core = risc_core{};
    dsp_core.switch_pc = switch_pc;
    dsp_switch_bank(0);
    risc_build_tables(dsp_core);
}

int dsp_execute(int32_t budget) { return risc_execute<dsp_traits>(budget); }

void dsp_interrupt(int n) { risc_interrupt<dsp_traits>(n); }

void dsp_switch_bank(int b) { risc_switch_bank<dsp_traits>(b); }

int DSP_change_pc(uint32_t address) { return risc_change_pc<dsp_traits>(address); }

uint32_t dsp_control_read(uint32_t address) {
    switch (address) {
        case D_FLAGS:
            return risc_flags_read<dsp_traits>();
        case D_CTRL:
            return risc_ctrl_read<dsp_traits>();
        case D_REMAIN:
            return dsp_state.div_remainder;
        default:
            return 0;  // the register file answers the rest of the block itself
    }
}

void dsp_control_write(uint32_t address, uint32_t value) {
    switch (address) {
        case D_FLAGS:
            risc_flags_write<dsp_traits>(value);
            return;
        case D_MTXC:
            dsp_state.mtxc = value;
            return;
        case D_MTXA:
            dsp_state.mtxa = value;
            return;
        case D_END:
            if ((value & 5) != 5) log_printf("DSP: Little-endian mode unhandled.\n");
            return;
        case D_PC:
            dsp_state.pc = value;
            return;
        case D_CTRL:
            write_ctrl(value);
            return;
        case D_MOD:
            dsp_state.modulo = value;
            return;
        case D_DIVCTRL:
            dsp_state.div_ctrl = value;
            return;
        default:
            return;
    }
}
