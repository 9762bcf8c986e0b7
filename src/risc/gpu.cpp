// The GPU core: its state, code regions, control block and interrupts; instructions run in the
// shared engine (risc_engine.h) with the GPU column of the opcode table.
#include "risc/gpu.h"

#include "core/video.h"
#include "risc/risc_engine.h"

gpu_state_t gpu_state;

namespace {

risc_core gpu_core;

constexpr uint32_t CTRL_RUN = 0x01;
constexpr uint32_t CTRL_CPU_INTERRUPT = 0x02;  // interrupts the 68000 through INT1
constexpr uint32_t CTRL_FORCE_INT0 = 0x04;
constexpr uint32_t CTRL_SINGLE_STEP = 0x18;    // both bits: run one instruction

struct gpu_traits {
    static constexpr risc_processor processor = RISC_GPU;
    static constexpr uint32_t RAM_BASE = GPU_RAM_BASE;
    static constexpr uint32_t RAM_END = GPU_RAM_END;
    static constexpr const char* CHANGE_PC_MESSAGE = "GPU_change_pc: Invalid address %08X, %08X\n";
    static constexpr const char* FETCH_MESSAGE = "GPU: instruction at %08X runs past the end of its code region.\n";
    static gpu_state_t& state() { return gpu_state; }
    static risc_core& core() { return gpu_core; }
    static uint8_t* local_ram() { return gpu_ram; }
};

// A single step asked for by the GPU's own store would run the loop inside itself, starting at
// that very store. Chosen: refused with a message; the GPU is left stopped as after a step.
void single_step() {
    if (gpu_core.in_slice) {
        log_printf("GPU: single step requested by the GPU's own program at %08X ignored.\n", gpu_state.pc);
    } else {
        gpu_state.running = 1;
        gpu_execute(1);
    }
    gpu_state.running = 0;
}

void write_ctrl(uint32_t value) {
    gpu_state.running = value & CTRL_RUN;
    if (value & CTRL_CPU_INTERRUPT) video_raise_interrupt(IRQ_GPU);
    if (value & CTRL_FORCE_INT0) gpu_interrupt(0);
    if ((value & CTRL_SINGLE_STEP) == CTRL_SINGLE_STEP) single_step();
}

}  // namespace

void gpu_init() {
    gpu_state = gpu_state_t{};
    gpu_core = risc_core{};
    gpu_switch_bank(0);
    risc_build_tables(gpu_core);
}

int gpu_execute(int32_t budget) { return risc_execute<gpu_traits>(budget); }

void gpu_interrupt(int n) { risc_interrupt<gpu_traits>(n); }

void gpu_switch_bank(int b) { risc_switch_bank<gpu_traits>(b); }

int GPU_change_pc(uint32_t address) { return risc_change_pc<gpu_traits>(address); }

uint32_t gpu_control_read(uint32_t address) {
    switch (address) {
        case G_FLAGS:
            return risc_flags_read<gpu_traits>();
        case G_MTXC:
            return gpu_state.mtxc;
        case G_PC:
            return gpu_state.pc;
        case G_CTRL:
            return risc_ctrl_read<gpu_traits>();
        case G_HIDATA:
            return gpu_state.hidata;
        case G_REMAIN:
            return gpu_state.div_remainder;
        default:
            return 0;  // the register file answers the rest of the block itself
    }
}

void gpu_control_write(uint32_t address, uint32_t value) {
    switch (address) {
        case G_FLAGS:
            risc_flags_write<gpu_traits>(value);
            return;
        case G_MTXC:
            gpu_state.mtxc = value;
            return;
        case G_MTXA:
            gpu_state.mtxa = value;
            return;
        case G_END:
            // The GPU always works big-endian.
            if ((value & 7) == 0) log_printf("GPU: Little-endian mode unhandled.\n");
            return;
        case G_PC:
            gpu_state.pc = value;  // the region is resolved when the next instruction is fetched
            return;
        case G_CTRL:
            write_ctrl(value);
            return;
        case G_HIDATA:
            gpu_state.hidata = value;
            return;
        case G_DIVCTRL:
            gpu_state.div_ctrl = value;
            return;
        default:
            return;
    }
}
