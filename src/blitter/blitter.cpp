// The Blitter's register block and command decode: the memory each generator's base lies in,
// the generators' working state, the routing of source, destination and write target, the
// dispatch to a pixel path and the write-back of the positions when the blit ends.
#include "blitter/blitter.h"

#include <cstdlib>

#include "blitter/blitter_internal.h"
#include "core/host.h"
#include "risc/gpu.h"

blitter_registers blitter;
blit_work blit;
bool blit_use_runs = true;

namespace {

constexpr uint32_t ADDRESS_MASK = 0xFFFFFF;
constexpr uint32_t PHRASE_ALIGN = ~7u;
constexpr uint32_t PITCH_VALUES[4] = {0, 1, 3, 2};
constexpr int GPU_IRQ_BLITTER = 4;  // the GPU's interrupt for "blit done"

struct region_entry {
    uint32_t low, end;  // console addresses [low, end)
    uint8_t* const* memory;
    uint32_t size;
    bool writable;
};

// Every range starts its memory's image at its own first address; RAM shows up again every 2 MB
// up to 8 MB, GPU RAM again at 0xF0B000.
const region_entry REGIONS[] = {
    {0x000000, 0x200000, &main_ram, MAIN_RAM_SIZE, true},
    {0x200000, 0x400000, &main_ram, MAIN_RAM_SIZE, true},
    {0x400000, 0x600000, &main_ram, MAIN_RAM_SIZE, true},
    {0x600000, 0x800000, &main_ram, MAIN_RAM_SIZE, true},
    {0x800000, 0xE00000, &cart_rom, CART_ROM_SIZE, false},
    {0xE00000, 0xE20000, &boot_rom, BOOT_ROM_SIZE, false},
    {0xF00400, 0xF00600, &clut, CLUT_SIZE, true},
    {0xF03000, 0xF04000, &gpu_ram, GPU_RAM_SIZE, true},
    {0xF0B000, 0xF0C000, &gpu_ram, GPU_RAM_SIZE, true},
    {0xF1B000, 0xF1D000, &dsp_ram, DSP_RAM_SIZE, true},
};

uint32_t width_of_code(uint32_t code) { return ((4 + (code & 3)) << (code >> 2)) >> 2; }

int64_t magnitude(uint32_t step) { return std::abs(static_cast<int64_t>(static_cast<int32_t>(step))); }

// One generator's region, base, pitch and width; false when no memory holds its base.
bool set_region(blit_generator& g, uint32_t base_register) {
    uint32_t& base = blitter_reg(base_register);
    g.region = blitter_get_mem_pointer(base & PHRASE_ALIGN);
    if (!g.region.memory) return false;
    base &= PHRASE_ALIGN;
    g.base = base & ADDRESS_MASK;
    g.wrap_mask = g.base < MAIN_RAM_SIZE ? RAM_WRAP_MASK : NO_WRAP;
    return true;
}

void decode_layout(blit_generator& g, uint32_t flags) {
    g.pitch = PITCH_VALUES[flags & FLAG_PITCH_MASK];
    g.width = width_of_code((flags >> FLAG_WIDTH_SHIFT) & 63);
    g.xadd_mode = (flags >> FLAG_XADD_SHIFT) & 3;
}

// +1.0, -1.0 or 0 per pixel along Y.
uint32_t y_movement(uint32_t flags) {
    if (!(flags & FLAG_YADD)) return 0;
    return flags & FLAG_YSIGN ? 0u - FIXED_ONE : FIXED_ONE;
}
uint32_t x_movement(uint32_t flags) {
    switch ((flags >> FLAG_XADD_SHIFT) & 3) {
        case XADD_PHRASE: return FIXED_ONE;
        case XADD_PIXEL: return flags & FLAG_XSIGN ? 0u - FIXED_ONE : FIXED_ONE;
        default: return 0;
    }
}

void decode_a1() {
    blit_generator& g = blit.a1;
    const uint32_t flags = blitter_reg(A1_FLAGS);
    decode_layout(g, flags);
    const uint32_t clip = blitter_reg(A1_CLIP), pixel = blitter_reg(A1_PIXEL);
    const uint32_t fpixel = blitter_reg(A1_FPIXEL), step = blitter_reg(A1_STEP);
    const uint32_t fstep = blitter_reg(A1_FSTEP);
    g.clip_w = clip & 0x7FFF;
    g.clip_h = (clip >> 16) & 0x7FFF;
    g.x = (pixel << 16) | (fpixel & 0xFFFF);
    g.y = (pixel & 0xFFFF0000) | (fpixel >> 16);
    g.step_x = step << 16;  // a signed 16-bit count of pixels, times 1.0
    g.step_y = step & 0xFFFF0000;
    g.fstep_x = fstep & 0xFFFF;
    g.fstep_y = fstep >> 16;
    g.mask_x = g.mask_y = NO_WRAP;
    if (g.xadd_mode == XADD_INC) {
        const uint32_t inc = blitter_reg(A1_INC), finc = blitter_reg(A1_FINC);
        g.x_add = (inc << 16) + (finc & 0xFFFF);
        g.y_add = (inc & 0xFFFF0000) + (finc >> 16);
    } else {
        g.x_add = x_movement(flags);
        g.y_add = y_movement(flags);
    }
}

// A2 has no fractional position and no increment registers. Choices: its per-pixel Y movement
// comes from its own YADD and YSIGN bits, as A1's does; after the invalid XADD mode 3 it does
// not move along X (it still moves along Y by its YADD bit).
void decode_a2() {
    blit_generator& g = blit.a2;
    const uint32_t flags = blitter_reg(A2_FLAGS);
    decode_layout(g, flags);
    const uint32_t pixel = blitter_reg(A2_PIXEL), step = blitter_reg(A2_STEP);
    const uint32_t mask = blitter_reg(A2_MASK);
    g.x = pixel << 16;
    g.y = pixel & 0xFFFF0000;
    g.step_x = step << 16;
    g.step_y = step & 0xFFFF0000;
    g.fstep_x = g.fstep_y = 0;
    g.clip_w = g.clip_h = 0;
    g.mask_x = flags & FLAG_MASK ? mask << 16 : NO_WRAP;
    g.mask_y = flags & FLAG_MASK ? mask & 0xFFFF0000 : NO_WRAP;
    if (g.xadd_mode == XADD_INC) log_printf("Blitter: Invalid A2 pixel mode 3\n");
    g.x_add = x_movement(flags);
    g.y_add = y_movement(flags);
}

void route(uint32_t cmd) {
    blit.dst = cmd & DSTA2 ? &blit.a2 : &blit.a1;
    blit.src = cmd & DSTA2 ? &blit.a1 : &blit.a2;
    blit.src_long = blitter_reg(cmd & PATDSEL ? B_PATD + 4 : B_SRCD + 4);
    blit.dst_long = blitter_reg(B_DSTD + 4);
    const uint32_t count = blitter_reg(B_COUNT);
    blit.inner = count & 0xFFFF;
    blit.outer = count >> 16;
}

void dispatch(uint32_t cmd) {
    const uint32_t depth = (blitter_reg(A1_FLAGS) >> FLAG_PIXEL_SHIFT) & 7;
    switch (depth) {
        case 0: blit_1bit(cmd); return;
        case 1: blit_2bit(cmd); return;
        case 2: blit_4bit(cmd); return;
        case 3: blit_8bit(cmd); return;
        case 4: blit_16bit(cmd); return;
        case 5: blit_32bit(cmd); return;
        default: log_printf("Blitter: Invalid pixel depth: %d\n", 1 << depth); return;
    }
}

// A following blit that does not reload the positions continues from here.
void write_back_positions() {
    blitter_reg(A1_PIXEL) = (blit.a1.y & 0xFFFF0000) | (blit.a1.x >> 16);
    blitter_reg(A1_FPIXEL) = (blit.a1.y << 16) | (blit.a1.x & 0xFFFF);
    blitter_reg(A2_PIXEL) = (blit.a2.y & 0xFFFF0000) | (blit.a2.x >> 16);
}

}  // namespace

uint64_t blit_frame_pixels_left = BLIT_PIXEL_LIMIT;

namespace {
bool frame_limit_reported;
}  // namespace

void blit_report_frame_limit() {
    if (frame_limit_reported) return;
    frame_limit_reported = true;
    log_printf("Blitter: this frame's blits reached %llu pixels; the rest of them are not drawn\n",
               static_cast<unsigned long long>(BLIT_PIXEL_LIMIT));
}

void blitter_begin_frame() {
    blit_frame_pixels_left = BLIT_PIXEL_LIMIT;
    frame_limit_reported = false;
}

void blitter_reset() {
    blitter = blitter_registers{};
    blitter_begin_frame();
}

blit_region blitter_get_mem_pointer(uint32_t address) {
    const uint32_t a = address & ADDRESS_MASK;
    for (const region_entry& r : REGIONS)
        if (a >= r.low && a < r.end) return {*r.memory, r.low, r.size, r.writable};
    log_printf("blitter_get_mem_pointer: Unhandled address space: %08X\n", a);
    return {nullptr, 0, 0, false};
}

void blit_row_steps(uint32_t cmd) {
    if (cmd & UPDA1) {
        blit.a1.x += blit.a1.step_x;
        blit.a1.y += blit.a1.step_y;
    }
    if (cmd & UPDA1F) {
        blit.a1.x += blit.a1.fstep_x;
        blit.a1.y += blit.a1.fstep_y;
    }
    if (cmd & UPDA2) {
        blit.a2.x += blit.a2.step_x;
        blit.a2.y += blit.a2.step_y;
    }
}

// In phrase mode each row ends on a phrase boundary: the row steps grow by the pixels left to
// the next boundary. Only the working steps change, never the registers.
void blit_phrase_step_correction(uint32_t pixels_per_phrase) {
    const uint32_t n = blit.inner;
    const uint32_t before = blit.a1.step_x;
    const uint32_t r1 = (blit.a1.xi() + n) % pixels_per_phrase;
    if (r1 != 0) blit.a1.step_x += (pixels_per_phrase - r1) * FIXED_ONE;
    const uint32_t r2 = (blit.a2.xi() + n) % pixels_per_phrase;
    if (r2 != 0) blit.a2.step_x += (pixels_per_phrase - r2) * FIXED_ONE;
    const int64_t was = magnitude(before), now = magnitude(blit.a1.step_x);
    if (pixels_per_phrase == 8 && now < was) blit.a2.step_x += 8 * FIXED_ONE;
    if (pixels_per_phrase == 4 && now > was) blit.a2.step_x += 4 * FIXED_ONE;
}

void blitter_command(uint32_t cmd) {
    if (!set_region(blit.a1, A1_BASE)) return;
    decode_a1();
    if (!set_region(blit.a2, A2_BASE)) return;
    decode_a2();
    route(cmd);
    dispatch(cmd);
    write_back_positions();
}

uint32_t blitter_read32(uint32_t address) {
    switch (address) {
        case B_CMD:
            return 1;  // every blit is finished by the time a program can look
        case A1_FLAGS:
        case A2_STEP:
        case B_PATD:
        case B_PATD + 4:
            return 0;
        default:
            log_printf("gpu_read32 %08X\n", address);
            return 0;
    }
}

void blitter_write32(uint32_t address, uint32_t value) {
    if (address < BLITTER_BASE || address >= BLITTER_END || (address & 3)) {
        log_printf("gpu_write32 %08X to %08X\n", value, address);
        return;
    }
    blitter_reg(address) = value;
    if (address != B_CMD) return;
    blitter_command(value);
    gpu_interrupt(GPU_IRQ_BLITTER);  // whether or not the blit could run
}
