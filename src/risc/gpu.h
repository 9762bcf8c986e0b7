// The GPU: the graphics chip's RISC processor. It runs programs from its 4 KB local RAM
// (0xF03000-0xF03FFF), main RAM or cartridge ROM, on two banks of 32 registers, and is started,
// stopped and interrupted through eight 32-bit control registers at 0xF02100-0xF0211C. It can
// interrupt the 68000 (G_CTRL bit 1) and is interrupted by G_CTRL bit 2 (0), GPU objects of the
// object list (3) and the end of every blit (4).
//
// Offers: the state record, the entry points the frame scheduler, the graphics-chip register
// file, the Object Processor and the Blitter call, and the control block's read and write.
// Needs: the bus, the GPU local RAM buffer, the graphics chip's interrupt register (video.h),
// log_printf.
#pragma once

#include <cstdint>

// Control registers (32-bit accesses only).
constexpr uint32_t G_FLAGS = 0xF02100;
constexpr uint32_t G_MTXC = 0xF02104;
constexpr uint32_t G_MTXA = 0xF02108;
constexpr uint32_t G_END = 0xF0210C;
constexpr uint32_t G_PC = 0xF02110;
constexpr uint32_t G_CTRL = 0xF02114;
constexpr uint32_t G_HIDATA = 0xF02118;
constexpr uint32_t G_REMAIN = 0xF0211C;   // read: the last remainder
constexpr uint32_t G_DIVCTRL = 0xF0211C;  // write: divide control

constexpr uint32_t GPU_RAM_BASE = 0xF03000;
constexpr uint32_t GPU_RAM_END = 0xF04000;

struct gpu_state_t {
    uint32_t regs[32];      // the current bank
    uint32_t alt_regs[32];  // the other bank
    uint8_t flag_z, flag_c, flag_n;
    uint32_t imask;         // an interrupt is being serviced
    uint32_t reg_page;      // the bank last switched to outside interrupt service (G_FLAGS bit 14)
    uint32_t bank;          // the bank regs holds now
    uint32_t int_enable[5];
    uint32_t int_latch[5];
    uint32_t mtxc, mtxa;
    uint32_t pc;            // the next instruction to execute
    uint32_t hidata;
    uint32_t div_remainder;
    uint32_t div_ctrl;
    uint32_t running;
    int32_t acc;
};

extern gpu_state_t gpu_state;

// Zeroes the GPU (stopped, bank 0, pc 0) and builds its condition and immediate tables.
void gpu_init();

// Runs one slice of `budget` cycles (3 per instruction). 0 when pc lies in no code region
// (nothing runs, the reason is logged); 1 otherwise, also while the GPU is stopped.
int gpu_execute(int32_t budget);

// Requests GPU interrupt n (0-4): dropped while one is in service or when n is disabled;
// otherwise bank 0, the return address pushed on R31, pc and R30 at 0xF03000 + 16 * n.
void gpu_interrupt(int n);

// Makes bank b current (exchanging the two register arrays); nothing when it already is.
void gpu_switch_bank(int b);

// Chooses the code region that holds `address` for instruction fetch: 1, or 0 with a message.
int GPU_change_pc(uint32_t address);

// The control block: G_FLAGS, G_MTXC, G_PC, G_CTRL, G_HIDATA and G_REMAIN read; all eight write.
uint32_t gpu_control_read(uint32_t address);
void gpu_control_write(uint32_t address, uint32_t value);
