// The whole machine at a glance: how many frames per second the core runs with a 68000 that
// sleeps until its line interrupt, spins in a branch loop, or works every slice together with
// the GPU and the DSP while the Blitter clears and redraws the screen that the Object Processor
// shows on 240 full-width lines; the 68000's, the GPU's and the DSP's own instruction rates in
// their frame slices (the 68000's also in long slices); the Object Processor's cost per line; the
// Blitter's full-screen fill and redraw. After the usual benchmark output it prints one table of
// these figures, each with its unit.
//
// `machine_bench --fixed-loop=CYCLES,SLICES` runs the 68000's mixed loop in SLICES slices of
// CYCLES cycles, prints the emulated instruction count and exits; `--fixed-gpu-loop=` and
// `--fixed-dsp-loop=` do the same with the GPU's and the DSP's loops. scripts/callgrind-68k.sh
// runs them under callgrind to count host instructions per emulated instruction.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <vector>

#include "core/memory.h"
#include "core/video.h"
#include "m68k/m68k.h"
#include "objproc/colour_tables.h"
#include "blitter_screen.h"
#include "objproc/objproc.h"
#include "op_screen.h"
#include "risc_loops.h"
#include "vemocore.h"

namespace {

// ---------------------------------------------------------------------------------------------
// The 68000's mixed loop: register arithmetic, memory operands, taken and untaken branches.

constexpr uint32_t MIX_CODE = 0x4000;
constexpr uint32_t MIX_TABLE = 0x8000;  // 16 longs walked by (A0)+
constexpr uint32_t MIX_OUTPUT = 0x9000;

// loop: MOVE.L (A0)+,D1     ADD.L D1,D0      EOR.W D0,D2      LSL.L #2,D3
//       ADDQ.L #1,D3        MOVE.W D0,(A1)   CMPA.L A2,A0     BNE.S skip
//       LEA -64(A0),A0      (once every 16 iterations)
// skip: ADDQ.L #1,D7        BRA.S loop
constexpr uint16_t MIX_LOOP[] = {0x2218, 0xD081, 0xB142, 0xE58B, 0x5283, 0x3280,
                                 0xB1CA, 0x6604, 0x41E8, 0xFFC0, 0x5287, 0x60E8};

void write_mix_loop() {
    uint32_t at = MIX_CODE;
    for (uint16_t w : MIX_LOOP) ws_write16(main_ram, at, w), at += 2;
    for (uint32_t i = 0; i < 16; ++i) ws_write32(main_ram, MIX_TABLE + 4 * i, 0x01010101u * i);
}

void point_mix_registers() {
    m68k_context.a[0] = MIX_TABLE;
    m68k_context.a[1] = MIX_OUTPUT;
    m68k_context.a[2] = MIX_TABLE + 64;
}

// D7 counts iterations: ten instructions each, plus the LEA once every sixteen.
double mix_instructions(uint32_t iterations) { return iterations * 10.0 + iterations / 16; }

// The bare 68000 on this machine's memory map, reset to the mixed loop.
bool prepare_mix() {
    if (!main_ram && !memory_allocate()) return false;
    ws_write32(main_ram, 0, 0x001FFFFC);
    ws_write32(main_ram, 4, MIX_CODE);
    write_mix_loop();
    if (!m68k_setup()) return false;
    point_mix_registers();
    return true;
}

void run_mix(benchmark::State& state, int32_t slice_cycles, int slices) {
    if (!prepare_mix()) {
        state.SkipWithError("cannot set up the 68000");
        return;
    }
    for (auto _ : state)
        for (int s = 0; s < slices; ++s) m68k_execute(slice_cycles);
    state.counters["instructions_per_s"] =
        benchmark::Counter(mix_instructions(m68k_context.d[7]), benchmark::Counter::kIsRate);
}

// A frame's worth of 68000 time: 3675 slices of 60 cycles.
void BM_M68kMixFrameSlices(benchmark::State& state) { run_mix(state, 60, 525 * 7); }
BENCHMARK(BM_M68kMixFrameSlices)->Unit(benchmark::kMicrosecond);

// The same 220500 cycles in 21 slices, as a debugger or a fast-forward might run them.
void BM_M68kMixLongSlices(benchmark::State& state) { run_mix(state, 10500, 21); }
BENCHMARK(BM_M68kMixLongSlices)->Unit(benchmark::kMicrosecond);

// ---------------------------------------------------------------------------------------------
// Whole frames through the public interface.

// Sleeps in STOP; the video-line interrupt on line 100 counts frames at $1000 and wakes it.
//   start:   move.w  #$2700,sr
//            lea     handler(pc),a0
//            move.l  a0,$100.w            ; level-2 autovector
//            move.w  #100,$F0004E         ; VI
//            move.w  #1,$F000E0           ; enable the video-line interrupt
//   idle:    stop    #$2000
//            bra.s   idle
//   handler: addq.l  #1,$1000.w
//            move.w  #$0101,$F000E0       ; acknowledge
//            rte
const std::vector<uint8_t> SLEEPING = {
    0x46, 0xFC, 0x27, 0x00, 0x41, 0xFA, 0x00, 0x1C, 0x21, 0xC8, 0x01, 0x00, 0x33, 0xFC, 0x00, 0x64,
    0x00, 0xF0, 0x00, 0x4E, 0x33, 0xFC, 0x00, 0x01, 0x00, 0xF0, 0x00, 0xE0, 0x4E, 0x72, 0x20, 0x00,
    0x60, 0xFA, 0x52, 0xB8, 0x10, 0x00, 0x33, 0xFC, 0x01, 0x01, 0x00, 0xF0, 0x00, 0xE0, 0x4E, 0x73,
};
// The same with `move.w #$2000,sr` and a `bra.s idle` that spins instead of STOP.
const std::vector<uint8_t> SPINNING = {
    0x46, 0xFC, 0x27, 0x00, 0x41, 0xFA, 0x00, 0x1C, 0x21, 0xC8, 0x01, 0x00, 0x33, 0xFC, 0x00, 0x64,
    0x00, 0xF0, 0x00, 0x4E, 0x33, 0xFC, 0x00, 0x01, 0x00, 0xF0, 0x00, 0xE0, 0x46, 0xFC, 0x20, 0x00,
    0x60, 0xFE, 0x52, 0xB8, 0x10, 0x00, 0x33, 0xFC, 0x01, 0x01, 0x00, 0xF0, 0x00, 0xE0, 0x4E, 0x73,
};
constexpr uint32_t FRAME_COUNT = 0x1000;

// Starts the machine in program mode on `image` at `address`, the DSP running every line when
// `dsp_every_line`; false (and the benchmark skipped) when it cannot start.
// A program image in a temporary file and the configuration that loads it at `address`; the
// file goes when this does.
struct program_start {
    std::filesystem::path file;
    vemo_config config{};

    program_start(const std::vector<uint8_t>& image, uint32_t address, bool dsp_every_line = false)
        : file(std::filesystem::temp_directory_path() /
               ("vemocore_machine_bench_" + std::to_string(getpid()) + ".bin")) {
        std::ofstream(file, std::ios::binary)
            .write(reinterpret_cast<const char*>(image.data()), static_cast<std::streamsize>(image.size()));
        std::snprintf(config.rom_path, sizeof config.rom_path, "%s", file.c_str());
        config.load_program = 1;
        config.load_address = static_cast<int32_t>(address);
        config.dsp_always_run = dsp_every_line ? 1 : 0;
    }
    ~program_start() {
        std::error_code ignored;
        std::filesystem::remove(file, ignored);
    }
    program_start(const program_start&) = delete;
    program_start& operator=(const program_start&) = delete;
};

bool start_machine(benchmark::State& state, const std::vector<uint8_t>& image, uint32_t address,
                   bool dsp_every_line = false) {
    const program_start program(image, address, dsp_every_line);
    const bool started = vemo_init(&program.config) == 1;
    if (!started) {
        state.SkipWithError(vemo_get_error_string());
        vemo_shutdown();
    }
    return started;
}

void run_frames(benchmark::State& state) {
    for (auto _ : state) {
        if (vemo_run_frame() != 1) {
            state.SkipWithError(vemo_get_error_string());
            break;
        }
    }
    state.counters["frames_per_s"] = benchmark::Counter(static_cast<double>(state.iterations()),
                                                        benchmark::Counter::kIsRate);
}

void run_interrupt_frames(benchmark::State& state, const std::vector<uint8_t>& program) {
    if (!start_machine(state, program, 0x4000)) return;
    const uint32_t before = ws_read32(main_ram, FRAME_COUNT);
    run_frames(state);
    // The handler's count proves the interrupt ran once per frame.
    if (ws_read32(main_ram, FRAME_COUNT) - before != state.iterations())
        state.SkipWithError("the line interrupt did not run once per frame");
    vemo_shutdown();
}

void BM_IdleFrame(benchmark::State& state) { run_interrupt_frames(state, SLEEPING); }
BENCHMARK(BM_IdleFrame)->Unit(benchmark::kMicrosecond);

void BM_SpinningFrame(benchmark::State& state) { run_interrupt_frames(state, SPINNING); }
BENCHMARK(BM_SpinningFrame)->Unit(benchmark::kMicrosecond);

// ---------------------------------------------------------------------------------------------
// The Object Processor: one full-width object on every displayed line.

constexpr uint32_t LIST = 0x10000;
constexpr uint32_t BITMAP = blitter_screen::SCREEN;  // the Blitter's screen is the one shown
constexpr int VDB_LINE = 40;
constexpr int DISPLAYED_LINES = 480;  // 240 rows, every second line
constexpr int WIDTH = 320;

void put_phrase(uint32_t address, uint64_t v) {
    ws_write32(main_ram, address, static_cast<uint32_t>(v >> 32));
    ws_write32(main_ram, address + 4, static_cast<uint32_t>(v));
}

// Video registers for 240 rows of 320 pixels over a background, and a list of one bitmap
// object (DEPTH `depth`, TRANS as given) of 240 rows followed by a stop object.
void build_screen(int depth, bool trans) {
    op_screen::display(VDB_LINE, DISPLAYED_LINES, WIDTH, LIST);
    const uint32_t height = 240, iwidth = static_cast<uint32_t>(WIDTH >> (6 - depth));
    for (uint32_t i = 0; i < height * iwidth * 8; ++i)
        ws_write8(main_ram, BITMAP + i, static_cast<uint8_t>(i * 7 + (i >> 9)));
    const uint32_t stop = LIST + 0x100;
    put_phrase(LIST, uint64_t(VDB_LINE) << 3 | uint64_t(height) << 14 | uint64_t(stop / 8) << 24 |
                         uint64_t(BITMAP / 8) << 43);
    put_phrase(LIST + 8, uint64_t(depth) << 12 | uint64_t(1) << 15 | uint64_t(iwidth) << 18 |
                             uint64_t(iwidth) << 28 | uint64_t(trans ? 4 : 0) << 45);
    put_phrase(stop, 4);
}

void run_op_lines(benchmark::State& state, int depth, bool trans) {
    memory_allocate();
    build_colour_tables();
    op_init();
    video_reset();
    build_screen(depth, trans);
    int line = VDB_LINE;
    for (auto _ : state) {
        benchmark::DoNotOptimize(op_process_line(line));
        line += 2;
        if (line >= VDB_LINE + DISPLAYED_LINES) line = VDB_LINE;
    }
    state.SetItemsProcessed(state.iterations());
    memory_release();
}

void BM_OpLine16Bit(benchmark::State& state) { run_op_lines(state, 4, false); }
BENCHMARK(BM_OpLine16Bit);
void BM_OpLine16BitTransparent(benchmark::State& state) { run_op_lines(state, 4, true); }
BENCHMARK(BM_OpLine16BitTransparent);
void BM_OpLine8BitClut(benchmark::State& state) { run_op_lines(state, 3, false); }
BENCHMARK(BM_OpLine8BitClut);
void BM_OpLine4BitClut(benchmark::State& state) { run_op_lines(state, 2, false); }
BENCHMARK(BM_OpLine4BitClut);

// ---------------------------------------------------------------------------------------------
// The RISC processors' mixed loops in their frame slices.

// One frame's GPU slices: 3675 of 120 cycles.
void BM_GpuLoopFrameSlices(benchmark::State& state) {
    if (!gpu_ram && !memory_allocate()) return state.SkipWithError("no memory");
    gpu_init();
    risc_loops::start_gpu_loop();
    for (auto _ : state)
        for (int slice = 0; slice < 525 * 7; ++slice) gpu_execute(120);
    state.counters["instructions_per_s"] = benchmark::Counter(
        static_cast<double>(gpu_state.regs[10]) * risc_loops::LOOP_INSTRUCTIONS, benchmark::Counter::kIsRate);
}
BENCHMARK(BM_GpuLoopFrameSlices)->Unit(benchmark::kMicrosecond);

// One frame's DSP slices: 525 of 844 cycles.
void BM_DspLoopLineSlices(benchmark::State& state) {
    if (!dsp_ram && !memory_allocate()) return state.SkipWithError("no memory");
    dsp_init();
    risc_loops::start_dsp_loop();
    for (auto _ : state)
        for (int line = 0; line < 525; ++line) dsp_execute(844);
    state.counters["instructions_per_s"] = benchmark::Counter(
        static_cast<double>(dsp_state.regs[10]) * risc_loops::LOOP_INSTRUCTIONS, benchmark::Counter::kIsRate);
}
BENCHMARK(BM_DspLoopLineSlices)->Unit(benchmark::kMicrosecond);

// ---------------------------------------------------------------------------------------------
// The Blitter over a 320 x 240 16-bit screen.

void run_blitter(benchmark::State& state, bool redraw) {
    memory_allocate();
    build_colour_tables();
    video_reset();
    blitter_screen::screen_blit(4);
    for (auto _ : state) {
        if (redraw) blitter_screen::clear_and_redraw();
        else blitter_screen::full_screen(PATDSEL | UPDA1);
        benchmark::DoNotOptimize(main_ram[blitter_screen::SCREEN]);
    }
    state.counters["pixels_per_s"] = benchmark::Counter(
        static_cast<double>(state.iterations()) * blitter_screen::PIXELS * (redraw ? 2 : 1), benchmark::Counter::kIsRate);
    memory_release();
}

void BM_BlitterFill16(benchmark::State& state) { run_blitter(state, false); }
BENCHMARK(BM_BlitterFill16);
void BM_BlitterClearAndRedraw16(benchmark::State& state) { run_blitter(state, true); }
BENCHMARK(BM_BlitterClearAndRedraw16);

// A busy frame: the 68000 runs the mixed loop in every slice, the GPU its loop in every slice,
// the DSP its loop on every line, the Object Processor draws 240 full-width 16-bit lines, and
// once a frame the Blitter clears the screen it shows and redraws it from an image.
void BM_BusyFrame(benchmark::State& state) {
    std::vector<uint8_t> image;
    for (uint16_t w : MIX_LOOP) image.push_back(static_cast<uint8_t>(w >> 8)), image.push_back(static_cast<uint8_t>(w));
    if (!start_machine(state, image, MIX_CODE, true)) return;
    for (uint32_t i = 0; i < 16; ++i) ws_write32(main_ram, MIX_TABLE + 4 * i, 0x01010101u * i);
    point_mix_registers();
    build_screen(4, false);
    risc_loops::start_gpu_loop();
    risc_loops::start_dsp_loop();
    blitter_screen::screen_blit(4);
    const uint32_t m68k_before = m68k_context.d[7];
    const uint32_t risc_before = gpu_state.regs[10] + dsp_state.regs[10];
    for (auto _ : state) {
        blitter_screen::clear_and_redraw();
        if (vemo_run_frame() != 1) {
            state.SkipWithError(vemo_get_error_string());
            break;
        }
    }
    state.counters["frames_per_s"] = benchmark::Counter(static_cast<double>(state.iterations()),
                                                        benchmark::Counter::kIsRate);
    const double frames = static_cast<double>(state.iterations());
    state.counters["m68k_instructions_per_frame"] = mix_instructions(m68k_context.d[7] - m68k_before) / frames;
    state.counters["risc_instructions_per_frame"] =
        (gpu_state.regs[10] + dsp_state.regs[10] - risc_before) * double{risc_loops::LOOP_INSTRUCTIONS} / frames;
    vemo_shutdown();
}
BENCHMARK(BM_BusyFrame)->Unit(benchmark::kMicrosecond);

// ---------------------------------------------------------------------------------------------
// Starts: a front-end's reset starts a machine over the running one; a start after
// vemo_shutdown allocates and fills its memories afresh.

void run_starts(benchmark::State& state, bool shut_down_first) {
    const program_start program(SLEEPING, 0x4000);
    for (auto _ : state) {
        if (shut_down_first) vemo_shutdown();
        if (vemo_init(&program.config) != 1) {
            state.SkipWithError(vemo_get_error_string());
            break;
        }
    }
    state.counters["starts_per_s"] = benchmark::Counter(static_cast<double>(state.iterations()),
                                                        benchmark::Counter::kIsRate);
    vemo_shutdown();
}

void BM_RestartRunningMachine(benchmark::State& state) { run_starts(state, false); }
BENCHMARK(BM_RestartRunningMachine)->Unit(benchmark::kMicrosecond);

void BM_StartAfterShutdown(benchmark::State& state) { run_starts(state, true); }
BENCHMARK(BM_StartAfterShutdown)->Unit(benchmark::kMicrosecond);

// ---------------------------------------------------------------------------------------------
// The summary table.

struct row {
    const char* benchmark;
    const char* what;
    const char* counter;  // a rate counter, or null for the CPU time per iteration in ns
    double scale;
    const char* unit;
};

const row ROWS[] = {
    {"BM_IdleFrame", "idle frame (68000 in STOP, line interrupt)", "frames_per_s", 1, "frames/s"},
    {"BM_SpinningFrame", "spinning frame (68000 in a BRA loop)", "frames_per_s", 1, "frames/s"},
    {"BM_BusyFrame", "busy frame (68000, GPU, DSP, Blitter, 240 OP lines)", "frames_per_s", 1, "frames/s"},
    {"BM_M68kMixFrameSlices", "68000 mix, 60-cycle slices", "instructions_per_s", 1e-6, "M instructions/s"},
    {"BM_M68kMixLongSlices", "68000 mix, 10500-cycle slices", "instructions_per_s", 1e-6, "M instructions/s"},
    {"BM_GpuLoopFrameSlices", "GPU loop, 120-cycle slices", "instructions_per_s", 1e-6, "M instructions/s"},
    {"BM_DspLoopLineSlices", "DSP loop, 844-cycle slices", "instructions_per_s", 1e-6, "M instructions/s"},
    {"BM_BlitterFill16", "Blitter fill, 16-bit 320 x 240", "pixels_per_s", 1e-6, "M pixels/s"},
    {"BM_BlitterClearAndRedraw16", "Blitter clear and redraw, 16-bit 320 x 240", "pixels_per_s", 1e-6, "M pixels/s"},
    {"BM_OpLine16Bit", "OP line, 16-bit, 320 pixels", nullptr, 1, "ns/line"},
    {"BM_OpLine16BitTransparent", "OP line, 16-bit TRANS, 320 pixels", nullptr, 1, "ns/line"},
    {"BM_OpLine8BitClut", "OP line, 8-bit CLUT, 320 pixels", nullptr, 1, "ns/line"},
    {"BM_OpLine4BitClut", "OP line, 4-bit CLUT, 320 pixels", nullptr, 1, "ns/line"},
    {"BM_RestartRunningMachine", "start over a running machine (a reset)", "starts_per_s", 1, "starts/s"},
    {"BM_StartAfterShutdown", "start after vemo_shutdown", "starts_per_s", 1, "starts/s"},
};

// Shows the usual console output and keeps each benchmark's figure for the table.
class table_reporter : public benchmark::ConsoleReporter {
public:
    void ReportRuns(const std::vector<Run>& runs) override {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& run : runs) {
            if (run.error_occurred) continue;
            // With repetitions, the mean stands for the benchmark; single runs stand for themselves.
            if (run.run_type == Run::RT_Aggregate && run.aggregate_name != "mean") continue;
            for (const row& r : ROWS) {
                if (run.run_name.function_name != r.benchmark) continue;
                double value;
                if (r.counter) {
                    auto it = run.counters.find(r.counter);
                    if (it == run.counters.end()) continue;
                    value = it->second.value * r.scale;
                } else {
                    value = run.GetAdjustedCPUTime() * 1e9 / benchmark::GetTimeUnitMultiplier(run.time_unit);
                }
                figures_[r.benchmark] = value;
            }
        }
    }

    void print_table() const {
        std::printf("\n%-48s %14s  %s\n", "whole machine", "figure", "unit");
        for (const row& r : ROWS) {
            auto it = figures_.find(r.benchmark);
            if (it == figures_.end()) continue;
            std::printf("%-48s %14.1f  %s\n", r.what, it->second, r.unit);
        }
    }

private:
    std::map<std::string, double> figures_;
};

// The callgrind script's fixed loops: a known number of slices of a processor's mixed loop.
enum processor { M68K, GPU, DSP };

int run_fixed_loop(processor which, const char* slice_shape) {
    int cycles = 0, slices = 0;
    if (std::sscanf(slice_shape, "%d,%d", &cycles, &slices) != 2 || cycles < 0 || slices <= 0) {
        std::fprintf(stderr, "machine_bench: --fixed-loop=CYCLES,SLICES\n");
        return 2;
    }
    if (!prepare_mix()) {
        std::fprintf(stderr, "machine_bench: cannot set up the 68000\n");
        return 1;
    }
    double instructions = 0;
    if (which == M68K) {
        for (int s = 0; s < slices; ++s) m68k_execute(cycles);
        instructions = mix_instructions(m68k_context.d[7]);
    } else if (which == GPU) {
        gpu_init();
        risc_loops::start_gpu_loop();
        for (int s = 0; s < slices; ++s) gpu_execute(cycles);
        instructions = static_cast<double>(gpu_state.regs[10]) * risc_loops::LOOP_INSTRUCTIONS;
    } else {
        dsp_init();
        risc_loops::start_dsp_loop();
        for (int s = 0; s < slices; ++s) dsp_execute(cycles);
        instructions = static_cast<double>(dsp_state.regs[10]) * risc_loops::LOOP_INSTRUCTIONS;
    }
    std::printf("emulated_instructions %.0f\n", instructions);
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    const struct {
        const char* option;
        processor which;
    } fixed[] = {{"--fixed-loop=", M68K}, {"--fixed-gpu-loop=", GPU}, {"--fixed-dsp-loop=", DSP}};
    for (const auto& f : fixed)
        if (argc == 2 && std::strncmp(argv[1], f.option, std::strlen(f.option)) == 0)
            return run_fixed_loop(f.which, argv[1] + std::strlen(f.option));
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    table_reporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    reporter.print_table();
    benchmark::Shutdown();
    return 0;
}
