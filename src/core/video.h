// The graphics chip's register file, 0xF00000-0xF0FFFF outside the memories the bus serves
// itself: video timing registers, the Object Processor's registers, the video timer and the
// interrupt register INT1, the only path by which the chip interrupts the 68000.
//
// Offers: the register state (read by the frame scheduler and the Object Processor), the six
// access functions the bus calls, video_reset (vemo_init clears the block) and
// video_raise_interrupt. Its 32-bit accesses to 0xF02200-0xF0229B go to the Blitter.
// Needs: m68k_interrupt; the GPU control block (gpu.h); the Blitter; log_printf.
#pragma once

#include <cstdint>

// Register addresses.
constexpr uint32_t MEMCON1 = 0xF00000;
constexpr uint32_t MEMCON2 = 0xF00002;
constexpr uint32_t HC = 0xF00004;
constexpr uint32_t VC = 0xF00006;
constexpr uint32_t OB_DATA = 0xF00010;  // object data words 0-3 (0xF00010-0xF00016)
constexpr uint32_t OLP = 0xF00020;
constexpr uint32_t OBF = 0xF00026;
constexpr uint32_t VMODE = 0xF00028;
constexpr uint32_t BORD1 = 0xF0002A;
constexpr uint32_t HDB1 = 0xF00038;
constexpr uint32_t HDE = 0xF0003C;
constexpr uint32_t VP = 0xF0003E;
constexpr uint32_t VBB = 0xF00040;
constexpr uint32_t VBE = 0xF00042;
constexpr uint32_t VS = 0xF00044;
constexpr uint32_t VDB = 0xF00046;
constexpr uint32_t VDE = 0xF00048;
constexpr uint32_t VI = 0xF0004E;
constexpr uint32_t PIT0 = 0xF00050;
constexpr uint32_t PIT1 = 0xF00052;
constexpr uint32_t BG = 0xF00058;
constexpr uint32_t INT1 = 0xF000E0;

// INT1 interrupt sources (bit numbers).
enum video_irq_source { IRQ_VIDEO_LINE = 0, IRQ_GPU = 1, IRQ_OBJECT = 2, IRQ_TIMER = 3, IRQ_DSP = 4 };

constexpr uint32_t SYSTEM_CLOCK_HZ = 26591000;

struct video_registers {
    uint16_t hc, vc;
    uint16_t ob_data[4];       // bits 63-48, 47-32, 31-16, 15-0 of the last GPU object
    uint32_t olp;
    uint16_t obf;
    uint16_t vmode;
    uint16_t pixel_divisor;    // ((VMODE >> 9) & 7) + 1, 0 until VMODE is first written
    uint32_t bord1;
    uint16_t hdb1, hde;
    uint16_t vp, vbb, vbe, vs;
    uint16_t vdb, vde, vi;
    uint16_t pit0, pit1;
    int32_t timer_frequency;   // Hz
    int32_t timer_countdown;   // system clocks
    uint16_t bg;
    uint16_t int1_enable;      // 5 bits
    uint16_t int1_pending;     // bits 0-4
};

extern video_registers video;

// Clears every register, the counts, INT1 and the video timer (vemo_init).
void video_reset();

// Raises an INT1 source: when its enable bit is set, marks it pending and requests the
// 68000's level-2 interrupt; otherwise nothing happens and nothing is remembered. A source
// raised again while pending requests the interrupt again.
void video_raise_interrupt(video_irq_source source);

// Runs the video timer for the given number of system clocks (the frame scheduler: 844 per
// line). When the countdown goes negative the timer source is raised and the countdown
// restarts at SYSTEM_CLOCK_HZ / (frequency + 1); exactly 0 does not fire.
void video_timer_advance(int32_t clocks);

uint8_t gpu_read8(uint32_t address);
uint16_t gpu_read16(uint32_t address);
uint32_t gpu_read32(uint32_t address);
void gpu_write8(uint32_t address, uint8_t value);
void gpu_write16(uint32_t address, uint16_t value);
void gpu_write32(uint32_t address, uint32_t value);
