// The graphics chip's register file.
#include "core/video.h"

#include "blitter/blitter.h"
#include "core/host.h"
#include "core/memory.h"
#include "m68k/m68k.h"
#include "objproc/objproc.h"
#include "risc/gpu.h"

video_registers video;

namespace {

// Every graphics-chip interrupt reaches the 68000 as the level-2 autovector request.
constexpr uint32_t CPU_IRQ_LEVEL = 2;
constexpr uint32_t CPU_IRQ_AUTOVECTOR = 256;

constexpr uint32_t INT1_SOURCE_MASK = 0x1F;

// Registers outside the video block that this file answers itself.
constexpr uint32_t G_CTRL_BYTE3 = 0xF02117;  // G_CTRL's low byte: byte accesses pass silently
constexpr uint32_t GPU_BLOCK_PROBE = 0xF020FC;  // reads 0

// The countdown restarts at the timer's period in system clocks; frequency + 1 is never 0
// because the frequency lies between 0 and the system clock.
void reload_timer_countdown() {
    video.timer_countdown =
        static_cast<int32_t>(SYSTEM_CLOCK_HZ / static_cast<uint32_t>(video.timer_frequency + 1));
}

// PIT0 = 0 stops the divider chain: the frequency drops to 0 but the countdown runs on, so a
// pending expiry still happens.
void recompute_video_timer() {
    if (video.pit0 == 0) {
        video.timer_frequency = 0;
        return;
    }
    video.timer_frequency =
        static_cast<int32_t>(SYSTEM_CLOCK_HZ / (video.pit0 + 1u) / (video.pit1 + 1u));
    reload_timer_countdown();
}

bool in_blitter_block(uint32_t address) { return address >= BLITTER_BASE && address < BLITTER_END; }

void write_int1(uint16_t enables, uint16_t acknowledges) {
    video.int1_enable = enables & INT1_SOURCE_MASK;
    video.int1_pending &= static_cast<uint16_t>(~(acknowledges & INT1_SOURCE_MASK));
}

}  // namespace

void video_reset() {
    video = video_registers{};
    blitter_reset();
    op_reset_line_width();
}

void video_raise_interrupt(video_irq_source source) {
    const uint16_t bit = static_cast<uint16_t>(1u << source);
    if (!(video.int1_enable & bit)) return;
    video.int1_pending |= bit;
    m68k_interrupt(CPU_IRQ_LEVEL, CPU_IRQ_AUTOVECTOR);
}

void video_timer_advance(int32_t clocks) {
    video.timer_countdown -= clocks;
    if (video.timer_countdown >= 0) return;
    video_raise_interrupt(IRQ_TIMER);
    reload_timer_countdown();
}

uint8_t gpu_read8(uint32_t address) {
    if (address == G_CTRL_BYTE3) return 0;
    log_printf("gpu_read8 %08X\n", address);
    return 0;
}

void gpu_write8(uint32_t address, uint8_t value) {
    if (address == G_CTRL_BYTE3) return;
    log_printf("gpu_write8 %08X to %08X\n", value, address);
}

uint16_t gpu_read16(uint32_t address) {
    switch (address) {
        case MEMCON1:
        case MEMCON2:
            return 0;
        case HC:
            return video.hc++;  // every read moves the horizontal count on
        case VC:
            return video.vc;
        case 0xF00008:
        case 0xF000E2:
            return 0;
        case OBF:
            return video.obf;
        case BG:
            return video.bg;
        case INT1:
            return video.int1_pending;
        default:
            log_printf("gpu_read16 %08X\n", address);
            return 0;
    }
}

uint32_t gpu_read32(uint32_t address) {
    if (in_blitter_block(address)) return blitter_read32(address);
    switch (address) {
        case MEMCON1:
            return 0;
        case HC: {
            const uint32_t value = (static_cast<uint32_t>(video.hc) << 16) | video.vc;
            ++video.hc;
            return value;
        }
        case 0xF00008:
        case GPU_BLOCK_PROBE:
            return 0;
        case OB_DATA + 4:
            return (static_cast<uint32_t>(video.ob_data[0]) << 16) | video.ob_data[1];
        case OLP:
            return video.olp;
        case BORD1:
            return video.bord1;
        case VI:
            return video.vi;
        case PIT0:
            return (static_cast<uint32_t>(video.pit0) << 16) | video.pit1;
        case INT1:
            return video.int1_pending;
        // The GPU's control block; G_MTXA and G_END are not readable.
        case G_FLAGS:
        case G_MTXC:
        case G_PC:
        case G_CTRL:
        case G_HIDATA:
        case G_REMAIN:
            return gpu_control_read(address);
        default:
            log_printf("gpu_read32 %08X\n", address);
            return 0;
    }
}

void gpu_write16(uint32_t address, uint16_t value) {
    switch (address) {
        case MEMCON1:
        case MEMCON2:
        case 0xF00024:
        case BORD1:
        case 0xF0002C:
        case 0xF0002E:
        case 0xF00030:
        case 0xF00032:
        case 0xF00034:
        case 0xF00036:
        case 0xF0003A:
        case 0xF0004A:
        case 0xF0004C:
        case 0xF00054:
        case 0xF00056:
        case 0xF000E2:
            return;
        case OLP:
            video.olp = (video.olp & 0xFFFF0000u) | value;
            return;
        case OLP + 2:
            video.olp = (video.olp & 0x0000FFFFu) | (static_cast<uint32_t>(value) << 16);
            return;
        case OBF:
            video.obf = value;
            if (value & 1) video_raise_interrupt(IRQ_OBJECT);
            return;
        case VMODE:
            video.vmode = value;
            video.pixel_divisor = static_cast<uint16_t>(((value >> 9) & 7) + 1);
            return;
        case HDB1:
            video.hdb1 = value;
            return;
        case HDE:
            video.hde = value;
            return;
        case VP:
            video.vp = value;
            return;
        case VBB:
            video.vbb = value;
            return;
        case VBE:
            video.vbe = value;
            return;
        case VS:
            video.vs = value;
            return;
        case VDB:
            video.vdb = value;
            return;
        case VDE:
            video.vde = value;
            return;
        case VI:
            video.vi = value;
            return;
        case PIT0:
            video.pit0 = value;  // takes effect with the next PIT1 write
            return;
        case PIT1:
            video.pit1 = value;
            recompute_video_timer();
            return;
        case BG:
            video.bg = value;
            return;
        case INT1:
            write_int1(value, value >> 8);
            return;
        default:
            log_printf("gpu_write16 %08X to %08X\n", value, address);
            return;
    }
}

void gpu_write32(uint32_t address, uint32_t value) {
    if (in_blitter_block(address)) return blitter_write32(address, value);
    switch (address) {
        case OLP:
            video.olp = rotate16(value);
            return;
        case BORD1:
            video.bord1 = value;
            return;
        case VI:
            video.vi = static_cast<uint16_t>(value);
            return;
        case PIT0:
            video.pit0 = static_cast<uint16_t>(value >> 16);
            video.pit1 = static_cast<uint16_t>(value);
            recompute_video_timer();
            return;
        case BG:
            video.bg = static_cast<uint16_t>(value);
            return;
        case INT1:
            write_int1(static_cast<uint16_t>(value), static_cast<uint16_t>(value >> 24));
            return;
        // The GPU's control block; G_CTRL bit 1 raises INT1's GPU source from there.
        case G_FLAGS:
        case G_MTXC:
        case G_MTXA:
        case G_END:
        case G_PC:
        case G_CTRL:
        case G_HIDATA:
        case G_DIVCTRL:
            gpu_control_write(address, value);
            return;
        default:
            log_printf("gpu_write32 %08X to %08X\n", value, address);
            return;
    }
}
