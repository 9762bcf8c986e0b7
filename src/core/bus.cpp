// The bus: address decode for every data access of every processor.
//
// Each function tests its ranges from top to bottom and the first match decides; RAM comes
// first because almost every access goes there. The widths differ in details that programs can
// observe (mirrors that only some widths see, ranges that only some widths reach), so each
// width has its own decode.
//
// Unaligned and edge accesses: a 16- or 32-bit access at an odd address uses the even address
// below it within the buffer (the 68000 would fault there; the RISC processors ignore the low
// bit), and a 32-bit access at a buffer's last word takes its low half from the buffer's first
// word, as the 2 MB RAM mirror does. No access leaves its buffer.
#include "core/bus.h"

#include "core/cdrom.h"
#include "core/host.h"
#include "core/memory.h"
#include "core/sound.h"
#include "core/video.h"
#include "objproc/objproc.h"

namespace {

constexpr uint32_t ADDRESS_MASK = 0xFFFFFF;
constexpr uint32_t RAM_MASK = MAIN_RAM_SIZE - 1;       // RAM repeats every 2 MB up to 8 MB
constexpr uint32_t BOOT_ROM_MASK = BOOT_ROM_SIZE - 1;

constexpr uint32_t CART_BASE = BUS_CART_BASE;  // RAM and its mirrors lie below
constexpr uint32_t CART_END = 0xE00000;
constexpr uint32_t CDROM_BASE = BUS_CDROM_BASE;
constexpr uint32_t BOOT_ROM_BASE = 0xE00000;
constexpr uint32_t BOOT_ROM_END = 0xE20000;
constexpr uint32_t GFX_BASE = 0xF00000;
constexpr uint32_t CLUT_BASE = 0xF00400;
constexpr uint32_t CLUT_MIRROR = 0xF00600;
constexpr uint32_t LINE_BUFFER_BASE = 0xF01800;
constexpr uint32_t LINE_BUFFER_END = 0xF01DA0;  // 720 pixels
constexpr uint32_t GPU_RAM_BASE = 0xF03000;
constexpr uint32_t GPU_RAM_END = 0xF04000;
constexpr uint32_t GPU_RAM_MIRROR = 0xF0B000;
constexpr uint32_t GPU_RAM_MIRROR_END = 0xF0C000;
constexpr uint32_t SOUND_BASE = 0xF10000;
constexpr uint32_t DSP_RAM_BASE = 0xF1B000;
constexpr uint32_t DSP_RAM_END = 0xF1D000;
constexpr uint32_t WAVE_TABLE_BASE = 0xF1D000;
constexpr uint32_t WAVE_TABLE_END = 0xF1E000;
constexpr uint32_t SOUND_END = 0xF20000;
constexpr uint32_t HIGH_BOOT_ROM_BASE = 0xF20000;  // 8- and 16-bit reads see the boot ROM here

inline bool in(uint32_t a, uint32_t low, uint32_t end) { return a >= low && a < end; }

uint32_t read_wave_table(uint32_t offset) {
    uint32_t v = 0;
    for (uint32_t i = 0; i < 4; ++i) v = v << 8 | wave_table_rom[(offset + i) % wave_table_rom.size()];
    return v;
}

// Each 16-bit word of the range shows one pixel of the row the Object Processor drew last.
uint32_t read_line_buffer(uint32_t address) {
    if (!op_line_buffer) return 0;  // nothing drawn yet
    uint32_t i = (address - LINE_BUFFER_BASE) / 2;
    return (op_line_buffer[i] & 0xFFFF) << 16 | (op_line_buffer[i + 1] & 0xFFFF);
}

}  // namespace

uint8_t bus_read8(uint32_t address) {
    const uint32_t a = address & ADDRESS_MASK;
    if (a < CART_BASE) return ws_read8(main_ram, a & RAM_MASK);
    if (in(a, GPU_RAM_BASE, GPU_RAM_END)) return ws_read8(gpu_ram, a - GPU_RAM_BASE);
    if (a < CART_END) return ws_read8(cart_rom, a - CART_BASE);
    if (in(a, CLUT_BASE, CLUT_MIRROR)) return ws_read8(clut, a - CLUT_BASE);
    if (in(a, GFX_BASE, SOUND_BASE)) return gpu_read8(a);
    if (in(a, DSP_RAM_BASE, DSP_RAM_END)) return ws_read8(dsp_ram, a - DSP_RAM_BASE);
    if (in(a, SOUND_BASE, SOUND_END)) return dsp_read8(a);
    if (a >= HIGH_BOOT_ROM_BASE) return ws_read8(boot_rom, a & BOOT_ROM_MASK);
    return 0;
}

uint16_t bus_read16(uint32_t address) {
    const uint32_t a = address & ADDRESS_MASK;
    if (a < CART_BASE) return buffer_read16(main_ram, a & RAM_MASK);
    if (in(a, GPU_RAM_BASE, GPU_RAM_END)) return buffer_read16(gpu_ram, a - GPU_RAM_BASE);
    if (in(a, CLUT_BASE, CLUT_MIRROR)) return buffer_read16(clut, a - CLUT_BASE);
    if (in(a, CLUT_MIRROR, CLUT_MIRROR + CLUT_SIZE)) return buffer_read16(clut, a - CLUT_MIRROR);
    if (in(a, GFX_BASE, SOUND_BASE)) return gpu_read16(a);
    if (in(a, DSP_RAM_BASE, DSP_RAM_END)) return buffer_read16(dsp_ram, a - DSP_RAM_BASE);
    if (in(a, SOUND_BASE, SOUND_END)) return dsp_read16(a);
    if (a < CDROM_BASE) return buffer_read16(cart_rom, a - CART_BASE);
    if (a < CART_END) return cdrom_read16(a);
    if (in(a, HIGH_BOOT_ROM_BASE, ADDRESS_MASK)) return buffer_read16(boot_rom, a & BOOT_ROM_MASK);
    return 0;
}

uint32_t bus_read32(uint32_t address) {
    const uint32_t a = address & ADDRESS_MASK;
    if (a < CART_BASE) return buffer_read32(main_ram, a & RAM_MASK, MAIN_RAM_SIZE);
    if (in(a, GPU_RAM_BASE, GPU_RAM_END)) return buffer_read32(gpu_ram, a - GPU_RAM_BASE, GPU_RAM_SIZE);
    if (in(a, GPU_RAM_MIRROR, GPU_RAM_MIRROR_END))
        return buffer_read32(gpu_ram, a - GPU_RAM_MIRROR, GPU_RAM_SIZE);
    if (in(a, CLUT_BASE, CLUT_MIRROR)) return buffer_read32(clut, a - CLUT_BASE, CLUT_SIZE);
    if (in(a, LINE_BUFFER_BASE, LINE_BUFFER_END)) return read_line_buffer(a);
    if (in(a, GFX_BASE, SOUND_BASE)) return gpu_read32(a);
    if (in(a, DSP_RAM_BASE, DSP_RAM_END)) return buffer_read32(dsp_ram, a - DSP_RAM_BASE, DSP_RAM_SIZE);
    if (in(a, WAVE_TABLE_BASE, WAVE_TABLE_END)) return read_wave_table((a - WAVE_TABLE_BASE) & ~1u);
    if (in(a, SOUND_BASE, SOUND_END)) return dsp_read32(a);
    if (a < CDROM_BASE) return buffer_read32(cart_rom, a - CART_BASE, CART_ROM_SIZE);
    if (a < CART_END) return cdrom_read32(a);
    if (a < BOOT_ROM_END) return buffer_read32(boot_rom, a - BOOT_ROM_BASE, BOOT_ROM_SIZE);
    return 0;
}

void bus_write8(uint32_t address, uint8_t value) {
    const uint32_t a = address & ADDRESS_MASK;
    if (a < CART_BASE) {
        ws_write8(main_ram, a & RAM_MASK, value);
        return;
    }
    if (a < GFX_BASE || a >= SOUND_BASE) return;
    if (in(a, GPU_RAM_BASE, GPU_RAM_END))
        ws_write8(gpu_ram, a - GPU_RAM_BASE, value);
    else
        gpu_write8(a, value);  // byte writes to the CLUT included
}

void bus_write16(uint32_t address, uint16_t value) {
    const uint32_t a = address & ADDRESS_MASK;
    if (a < CART_BASE)
        buffer_write16(main_ram, a & RAM_MASK, value);
    else if (in(a, GPU_RAM_BASE, GPU_RAM_END))
        buffer_write16(gpu_ram, a - GPU_RAM_BASE, value);
    else if (in(a, CLUT_BASE, CLUT_MIRROR))
        buffer_write16(clut, a - CLUT_BASE, value);
    else if (in(a, CLUT_MIRROR, CLUT_MIRROR + CLUT_SIZE))
        buffer_write16(clut, a - CLUT_MIRROR, value);
    else if (in(a, GFX_BASE, SOUND_BASE))
        gpu_write16(a, value);
    else if (in(a, DSP_RAM_BASE, DSP_RAM_END))
        buffer_write16(dsp_ram, a - DSP_RAM_BASE, value);
    else if (in(a, SOUND_BASE, SOUND_END))
        dsp_write16(a, value);
    else if (in(a, CDROM_BASE, CART_END))
        cdrom_write16(a, value);
}

void bus_write32(uint32_t address, uint32_t value) {
    const uint32_t a = address & ADDRESS_MASK;
    if (a < CART_BASE)
        buffer_write32(main_ram, a & RAM_MASK, MAIN_RAM_SIZE, value);
    else if (in(a, GPU_RAM_BASE, GPU_RAM_END))
        buffer_write32(gpu_ram, a - GPU_RAM_BASE, GPU_RAM_SIZE, value);
    else if (in(a, GPU_RAM_END, GPU_RAM_MIRROR))
        return;
    else if (in(a, GPU_RAM_MIRROR, GPU_RAM_MIRROR_END))
        buffer_write32(gpu_ram, a - GPU_RAM_MIRROR, GPU_RAM_SIZE, value);
    else if (in(a, CLUT_BASE, CLUT_MIRROR))
        buffer_write32(clut, a - CLUT_BASE, CLUT_SIZE, value);
    else if (in(a, CLUT_MIRROR, CLUT_MIRROR + CLUT_SIZE))
        buffer_write32(clut, a - CLUT_MIRROR, CLUT_SIZE, value);
    else if (in(a, GFX_BASE, SOUND_BASE))
        gpu_write32(a, value);
    else if (in(a, DSP_RAM_BASE, DSP_RAM_END))
        buffer_write32(dsp_ram, a - DSP_RAM_BASE, DSP_RAM_SIZE, value);
    else if (in(a, WAVE_TABLE_BASE, SOUND_END))
        return;  // the wave-table ROM and the space above it take no long writes
    else if (in(a, SOUND_BASE, SOUND_END))
        dsp_write32(a, value);
    else if (in(a, CDROM_BASE, CART_END))
        cdrom_write32(a, value);
}

uint8_t* get_mem_pointer(uint32_t address, uint32_t* available) {
    const uint32_t a = address & ADDRESS_MASK;
    uint8_t* buffer = nullptr;
    uint32_t offset = 0, size = 0;
    if (a < CART_BASE) {
        buffer = main_ram, offset = a & RAM_MASK, size = MAIN_RAM_SIZE;
    } else if (a < CART_END) {
        buffer = cart_rom, offset = a - CART_BASE, size = CART_ROM_SIZE;
    } else if (a < BOOT_ROM_END) {
        buffer = boot_rom, offset = a - BOOT_ROM_BASE, size = BOOT_ROM_SIZE;
    } else if (in(a, GPU_RAM_BASE, GPU_RAM_END)) {
        buffer = gpu_ram, offset = a - GPU_RAM_BASE, size = GPU_RAM_SIZE;
    } else if (in(a, GPU_RAM_MIRROR, GPU_RAM_MIRROR_END)) {
        buffer = gpu_ram, offset = a - GPU_RAM_MIRROR, size = GPU_RAM_SIZE;
    } else if (in(a, CLUT_BASE, CLUT_MIRROR)) {
        buffer = clut, offset = a - CLUT_BASE, size = CLUT_SIZE;
    } else if (in(a, DSP_RAM_BASE, DSP_RAM_END)) {
        buffer = dsp_ram, offset = a - DSP_RAM_BASE, size = DSP_RAM_SIZE;
    } else {
        log_printf("get_mem_pointer: Unhandled address space: %08X\n", a);
        if (available) *available = 0;
        return nullptr;
    }
    if (available) *available = size - offset;
    return buffer + offset;
}
