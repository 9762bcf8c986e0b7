// The Blitter: the graphics chip's block-transfer engine. A program loads the register block at
// 0xF02200-0xF0229B and writes a command to B_CMD; the Blitter then walks one or two rectangular
// pixel areas with its two address generators, A1 and A2, combines a source pixel with a
// destination pixel and stores the result. Here the whole blit runs inside the register write
// that carries the command, so the Blitter never reads busy.
//
// Offers: the register block and its addresses, blitter_reset, the 32-bit register accesses the
// graphics-chip register file routes here, blitter_command and blitter_get_mem_pointer.
// Needs: the memory buffers, the colour-addition tables, gpu_interrupt (every command ends with
// the GPU's interrupt 4), log_printf.
#pragma once

#include <cstdint>

// Register addresses: every long from 0xF02200 to 0xF02298 is a register.
constexpr uint32_t BLITTER_BASE = 0xF02200;
constexpr uint32_t A1_BASE = 0xF02200;
constexpr uint32_t A1_FLAGS = 0xF02204;
constexpr uint32_t A1_CLIP = 0xF02208;
constexpr uint32_t A1_PIXEL = 0xF0220C;
constexpr uint32_t A1_STEP = 0xF02210;
constexpr uint32_t A1_FSTEP = 0xF02214;
constexpr uint32_t A1_FPIXEL = 0xF02218;
constexpr uint32_t A1_INC = 0xF0221C;
constexpr uint32_t A1_FINC = 0xF02220;
constexpr uint32_t A2_BASE = 0xF02224;
constexpr uint32_t A2_FLAGS = 0xF02228;
constexpr uint32_t A2_MASK = 0xF0222C;
constexpr uint32_t A2_PIXEL = 0xF02230;
constexpr uint32_t A2_STEP = 0xF02234;
constexpr uint32_t B_CMD = 0xF02238;
constexpr uint32_t B_COUNT = 0xF0223C;
constexpr uint32_t B_SRCD = 0xF02240;   // two longs: bits 63-32, then bits 31-0
constexpr uint32_t B_DSTD = 0xF02248;
constexpr uint32_t B_DSTZ = 0xF02250;
constexpr uint32_t B_SRCZ1 = 0xF02258;
constexpr uint32_t B_SRCZ2 = 0xF02260;
constexpr uint32_t B_PATD = 0xF02268;
constexpr uint32_t B_IINC = 0xF02270;
constexpr uint32_t B_ZINC = 0xF02274;
constexpr uint32_t B_STOP = 0xF02278;
constexpr uint32_t B_I3 = 0xF0227C;
constexpr uint32_t B_I2 = 0xF02280;
constexpr uint32_t B_I1 = 0xF02284;
constexpr uint32_t B_I0 = 0xF02288;
constexpr uint32_t B_Z3 = 0xF0228C;
constexpr uint32_t B_Z0 = 0xF02298;
constexpr uint32_t BLITTER_END = 0xF0229C;  // one past the block
constexpr uint32_t BLITTER_LONGS = (BLITTER_END - BLITTER_BASE) / 4;

// Command bits (B_CMD).
constexpr uint32_t SRCEN = 1u << 0;
constexpr uint32_t DSTEN = 1u << 3;
constexpr uint32_t CLIP_A1 = 1u << 6;
constexpr uint32_t UPDA1F = 1u << 8;
constexpr uint32_t UPDA1 = 1u << 9;
constexpr uint32_t UPDA2 = 1u << 10;
constexpr uint32_t DSTA2 = 1u << 11;
constexpr uint32_t GOURD = 1u << 12;
constexpr uint32_t TOPBEN = 1u << 14;
constexpr uint32_t TOPNEN = 1u << 15;
constexpr uint32_t PATDSEL = 1u << 16;
constexpr uint32_t ADDDSEL = 1u << 17;
constexpr uint32_t LFU_SHIFT = 21;          // bits 21-24: logic function code
constexpr uint32_t CMPDST = 1u << 25;
constexpr uint32_t DCOMPEN = 1u << 27;
constexpr uint32_t SRCSHADE = 1u << 30;

// Flags-word fields (A1_FLAGS, A2_FLAGS).
constexpr uint32_t FLAG_PITCH_MASK = 0x3;         // bits 0-1
constexpr uint32_t FLAG_PIXEL_SHIFT = 3;          // bits 3-5: 2^PIXEL bits per pixel
constexpr uint32_t FLAG_WIDTH_SHIFT = 9;          // bits 9-14: width code
constexpr uint32_t FLAG_MASK = 1u << 15;          // A2: wrap the position with A2_MASK
constexpr uint32_t FLAG_XADD_SHIFT = 16;          // bits 16-17: per-pixel X movement
constexpr uint32_t FLAG_YADD = 1u << 18;
constexpr uint32_t FLAG_XSIGN = 1u << 19;
constexpr uint32_t FLAG_YSIGN = 1u << 20;
enum blit_xadd { XADD_PHRASE = 0, XADD_PIXEL = 1, XADD_ZERO = 2, XADD_INC = 3 };

// The register block: one long per register address, as last written (the Blitter itself
// writes back A1_BASE, A2_BASE and the positions at the end of a blit).
struct blitter_registers {
    uint32_t longs[BLITTER_LONGS];
};
extern blitter_registers blitter;

inline uint32_t& blitter_reg(uint32_t address) { return blitter.longs[(address - BLITTER_BASE) / 4]; }

// Clears the register block (the graphics chip's registers start at zero) and refills the
// pixels blits may touch.
void blitter_reset();

// Starts a frame (the frame scheduler): its blits may touch BLIT_PIXEL_LIMIT pixels again.
void blitter_begin_frame();

// 32-bit accesses to 0xF02200-0xF0229B. Reads: B_CMD reads 1 (idle); A1_FLAGS, A2_STEP and both
// halves of B_PATD read 0; the rest are logged as unhandled and read 0. Writes store the long;
// writing B_CMD runs the blit, then requests GPU interrupt 4 whether or not anything was drawn.
// A write between two registers is logged and dropped.
uint32_t blitter_read32(uint32_t address);
void blitter_write32(uint32_t address, uint32_t value);

// Runs one blit from the registers; nothing is left running afterwards.
void blitter_command(uint32_t cmd);

// A memory the address generators can reach: the host image and the console address of its
// first byte. ROM images are read but never written by a blit.
struct blit_region {
    uint8_t* memory;   // null: no memory holds the address
    uint32_t start;
    uint32_t size;
    bool writable;
};
// The memory holding console address `address` (taken modulo 2^24); logs and returns a region
// with no memory when none does.
blit_region blitter_get_mem_pointer(uint32_t address);
