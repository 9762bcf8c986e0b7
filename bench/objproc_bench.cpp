// Displayed lines per second of the Object Processor: one full-width object per line, drawn
// over a background fill, as a typical 320 x 240 game screen would.
#include <benchmark/benchmark.h>

#include <cstdint>

#include "core/memory.h"
#include "core/video.h"
#include "objproc/colour_tables.h"
#include "objproc/objproc.h"
#include "op_screen.h"

namespace {

constexpr uint32_t LIST = 0x1000;
constexpr uint32_t DATA = 0x10000;
constexpr int VDB_LINE = 40;
constexpr int LINES = 480;  // 240 displayed rows, every second line
constexpr int WIDTH = 320;

void put_phrase(uint32_t address, uint64_t v) {
    ws_write32(main_ram, address, static_cast<uint32_t>(v >> 32));
    ws_write32(main_ram, address + 4, static_cast<uint32_t>(v));
}

// A list of one object (type 0 or 1) of `depth`, IWIDTH phrases wide and 240 rows high,
// followed by a stop object; the bitmap holds a varied pattern.
void build_machine(int type, int depth, int iwidth, int hscale, int vscale, bool looping = false) {
    memory_allocate();
    build_colour_tables();
    op_init();
    video_reset();
    op_screen::display(VDB_LINE, LINES, WIDTH, LIST);
    const uint32_t height = 240, dwidth = iwidth;
    for (uint32_t i = 0; i < height * dwidth * 8; ++i)
        ws_write8(main_ram, DATA + i, static_cast<uint8_t>(i * 7 + (i >> 9)));
    const uint32_t link = looping ? LIST : LIST + 0x100;
    put_phrase(LIST, uint64_t(type) | uint64_t(VDB_LINE) << 3 | uint64_t(height) << 14 |
                         uint64_t(link / 8) << 24 | uint64_t(DATA / 8) << 43);
    put_phrase(LIST + 8, uint64_t(depth) << 12 | uint64_t(1) << 15 | uint64_t(dwidth) << 18 |
                             uint64_t(iwidth) << 28 | uint64_t(4) << 45 /* TRANS */);
    put_phrase(LIST + 16, uint64_t(hscale) | uint64_t(vscale) << 8);
    if (!looping) put_phrase(link, 4);
}

void run_lines(benchmark::State& state) {
    int line = VDB_LINE;
    for (auto _ : state) {
        benchmark::DoNotOptimize(op_process_line(line));
        line += 2;
        if (line >= VDB_LINE + LINES) line = VDB_LINE;
    }
    state.SetItemsProcessed(state.iterations());
    state.SetLabel("items = displayed lines");
    memory_release();
}

void BM_Bitmap16BitFullWidth(benchmark::State& state) {
    build_machine(0, 4, WIDTH / 4, 0, 0);
    run_lines(state);
}
BENCHMARK(BM_Bitmap16BitFullWidth);

void BM_Bitmap8BitClutFullWidth(benchmark::State& state) {
    build_machine(0, 3, WIDTH / 8, 0, 0);
    run_lines(state);
}
BENCHMARK(BM_Bitmap8BitClutFullWidth);

// A 160-pixel 16-bit source doubled to the full width, rows shown at 1.5 times their height.
void BM_Scaled16BitDoubledFullWidth(benchmark::State& state) {
    build_machine(1, 4, WIDTH / 8, 64, 48);
    run_lines(state);
}
BENCHMARK(BM_Scaled16BitDoubledFullWidth);

// The worst list a program can build: an object that links to itself, drawn until the walker's
// per-line bound ends the line.
void BM_LoopingListWorstCase(benchmark::State& state) {
    build_machine(0, 4, WIDTH / 4, 0, 0, true);
    run_lines(state);
}
BENCHMARK(BM_LoopingListWorstCase);

}  // namespace
