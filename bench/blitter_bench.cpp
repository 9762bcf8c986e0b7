// Pixels per second of the Blitter's common blits over a 320 x 240 screen (fills and copies at
// 8, 16 and 32 bits, a 16-bit Gouraud span, and the 16-bit fill pixel by pixel for comparison),
// and frames per second of a frame that clears and redraws a full 16-bit screen: directly, and
// as the 68000 program of the Blitter tests runs it through vemo_run_frame.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdio>

#include "blitter/blitter.h"
#include "blitter/blitter_internal.h"
#include "core/memory.h"
#include "core/video.h"
#include "objproc/colour_tables.h"
#include "vemocore.h"

namespace {

constexpr uint32_t SCREEN = 0x20000, IMAGE = 0x100000;
constexpr uint32_t WIDTH = 320, HEIGHT = 240, PIXELS = WIDTH * HEIGHT;
constexpr uint32_t WIDTH_320 = 33;  // width code
constexpr uint32_t LFU_S = 12u << LFU_SHIFT;

uint32_t xy(uint32_t x, uint32_t y) { return (y & 0xFFFF) << 16 | (x & 0xFFFF); }

void start_machine() {
    memory_allocate();
    build_colour_tables();
    video_reset();
    blit_use_runs = true;
}

// Both generators over a 320 x 240 screen of `depth` (A1_FLAGS code), in phrase mode.
void screen_blit(uint32_t depth) {
    const uint32_t flags = depth << FLAG_PIXEL_SHIFT | WIDTH_320 << FLAG_WIDTH_SHIFT;
    gpu_write32(A1_BASE, SCREEN), gpu_write32(A1_FLAGS, flags), gpu_write32(A1_STEP, xy(-WIDTH, 1));
    gpu_write32(A2_BASE, IMAGE), gpu_write32(A2_FLAGS, flags), gpu_write32(A2_STEP, xy(-WIDTH, 1));
    gpu_write32(B_PATD, 0x88408840), gpu_write32(B_PATD + 4, 0x88408840);
    gpu_write32(B_COUNT, xy(WIDTH, HEIGHT));
}
void full_screen(uint32_t cmd) {
    gpu_write32(A1_PIXEL, 0), gpu_write32(A1_FPIXEL, 0), gpu_write32(A2_PIXEL, 0);
    gpu_write32(B_CMD, cmd);
}

void run_blits(benchmark::State& state, uint32_t cmd) {
    for (auto _ : state) {
        full_screen(cmd);
        benchmark::DoNotOptimize(main_ram[SCREEN]);
    }
    state.SetItemsProcessed(state.iterations() * PIXELS);
    state.SetLabel("items = pixels");
    memory_release();
}

// state.range(0): pixel size in bits.
uint32_t depth_code(int64_t bits) { return bits == 8 ? 3 : bits == 16 ? 4 : 5; }

void BM_Fill(benchmark::State& state) {
    start_machine();
    screen_blit(depth_code(state.range(0)));
    run_blits(state, PATDSEL | UPDA1);
}
BENCHMARK(BM_Fill)->Arg(8)->Arg(16)->Arg(32);

void BM_Copy(benchmark::State& state) {
    start_machine();
    screen_blit(depth_code(state.range(0)));
    run_blits(state, SRCEN | LFU_S | UPDA1 | UPDA2);
}
BENCHMARK(BM_Copy)->Arg(8)->Arg(16)->Arg(32);

void BM_Fill16PixelByPixel(benchmark::State& state) {
    start_machine();
    blit_use_runs = false;
    screen_blit(4);
    run_blits(state, PATDSEL | UPDA1);
}
BENCHMARK(BM_Fill16PixelByPixel);

void BM_GouraudSpan16(benchmark::State& state) {
    start_machine();
    screen_blit(4);
    gpu_write32(B_I3, 0), gpu_write32(B_I2, 0x10000), gpu_write32(B_I1, 0x20000), gpu_write32(B_I0, 0x30000);
    gpu_write32(B_IINC, 0x4000);
    run_blits(state, GOURD | UPDA1);
}
BENCHMARK(BM_GouraudSpan16);

// One frame: clear the 16-bit screen, then redraw all of it from an image with a transparent
// colour (data compare), as a game redraws its background and sprites.
void BM_ClearAndRedrawFrame(benchmark::State& state) {
    start_machine();
    for (uint32_t i = 0; i < PIXELS; ++i) ws_write16(main_ram, IMAGE + 2 * i, static_cast<uint16_t>(i % 7 ? i : 0));
    screen_blit(4);
    gpu_write32(B_PATD, 0);  // transparent colour 0
    for (auto _ : state) {
        full_screen(PATDSEL | UPDA1);
        full_screen(SRCEN | LFU_S | DCOMPEN | UPDA1 | UPDA2);
        benchmark::DoNotOptimize(main_ram[SCREEN]);
    }
    state.SetItemsProcessed(state.iterations());
    state.SetLabel("items = frames");
    memory_release();
}
BENCHMARK(BM_ClearAndRedrawFrame);

// The whole machine: 525 lines of 68000, Object Processor and the program's Blitter frame
// (a full-screen clear, a rectangle, 40 Gouraud spans and a copy).
void BM_ProgramFrame(benchmark::State& state) {
    vemo_config config{};
    std::snprintf(config.rom_path, sizeof config.rom_path, "%s/blitter_rectangles.bin", VEMO_PROGRAM_DIR);
    config.load_program = 1;
    config.load_address = 0x4000;
    if (vemo_init(&config) != 1) {
        state.SkipWithError(vemo_get_error_string());
        vemo_shutdown();
        return;
    }
    for (auto _ : state)
        if (vemo_run_frame() != 1) state.SkipWithError(vemo_get_error_string());
    state.SetItemsProcessed(state.iterations());
    state.SetLabel("items = frames");
    vemo_shutdown();
}
BENCHMARK(BM_ProgramFrame);

}  // namespace
