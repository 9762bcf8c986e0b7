// The DSP: the sound chip's RISC processor. It runs the GPU's instruction set with six opcodes of
// its own (sat16s, sat32s, addqmod; three invalid words) and a 64-bit multiply accumulator, from
// its 8 KB local RAM (0xF1B000-0xF1CFFF), main RAM or cartridge ROM. The frame scheduler gives it
// one slice a line and raises its audio-clock and timer interrupts; D_CTRL bit 2 raises
// interrupt 0. It never interrupts the 68000 and cannot single-step.
//
// Offers: the state record, the entry points the frame scheduler and the sound-chip register
// file call, and the control block's read and write. Needs: the bus, the DSP local RAM buffer,
// log_printf.
#pragma once

#include <cstdint>

// Control registers (32-bit accesses only).
constexpr uint32_t D_FLAGS = 0xF1A100;
constexpr uint32_t D_MTXC = 0xF1A104;
constexpr uint32_t D_MTXA = 0xF1A108;
constexpr uint32_t D_END = 0xF1A10C;
constexpr uint32_t D_PC = 0xF1A110;
constexpr uint32_t D_CTRL = 0xF1A114;
constexpr uint32_t D_MOD = 0xF1A118;
constexpr uint32_t D_REMAIN = 0xF1A11C;   // read: the last remainder
constexpr uint32_t D_DIVCTRL = 0xF1A11C;  // write: divide control

constexpr uint32_t DSP_RAM_BASE = 0xF1B000;
constexpr uint32_t DSP_RAM_END = 0xF1D000;

struct dsp_state_t {
    uint32_t regs[32];
    uint32_t alt_regs[32];
    uint8_t flag_z, flag_c, flag_n;
    uint32_t imask;
    uint32_t reg_page;
    uint32_t bank;
    uint32_t int_enable[5];
    uint32_t int_latch[5];
    uint32_t mtxc, mtxa;
    uint32_t pc;
    uint32_t running;
    uint32_t modulo;        // D_MOD: bits addqmod keeps
    uint32_t div_remainder;
    uint32_t div_ctrl;
    int64_t acc;
};

extern dsp_state_t dsp_state;

void dsp_init();
int dsp_execute(int32_t budget);
// Dropped while one is in service, while a delayed jump is pending, or when n is disabled;
// otherwise bank 0, the return address pushed on R31, pc at 0xF1B000 + 16 * n (R30 untouched).
void dsp_interrupt(int n);
void dsp_switch_bank(int b);
int DSP_change_pc(uint32_t address);

// The control block: D_FLAGS, D_CTRL and D_REMAIN read; all eight write.
uint32_t dsp_control_read(uint32_t address);
void dsp_control_write(uint32_t address, uint32_t value);
