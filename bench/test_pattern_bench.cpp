// Frames per second of the test-pattern program (tests/tools/programs/test_pattern.s): the
// 68000 idling in a loop while the Object Processor draws a CLUT bitmap, a 16-bit bitmap and the
// background on 240 lines. Driven through the public interface, as a front-end drives the core.
#include <benchmark/benchmark.h>

#include <cstdio>

#include "vemocore.h"

namespace {

constexpr int SETUP_FRAMES = 5;  // the program builds its picture during the first frames

void BM_TestPatternFrame(benchmark::State& state) {
    vemo_config config{};
    std::snprintf(config.rom_path, sizeof config.rom_path, "%s/test_pattern.bin", VEMO_PROGRAM_DIR);
    config.load_program = 1;
    config.load_address = 0x4000;
    if (!vemo_init(&config)) {
        state.SkipWithError(vemo_get_error_string());  // e.g. the program was not assembled
        vemo_shutdown();
        return;
    }
    for (int i = 0; i < SETUP_FRAMES; ++i) vemo_run_frame();

    for (auto _ : state) {
        if (!vemo_run_frame()) {
            state.SkipWithError(vemo_get_error_string());
            break;
        }
    }
    state.counters["frames_per_second"] =
        benchmark::Counter(static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
    vemo_shutdown();
}
BENCHMARK(BM_TestPatternFrame)->Unit(benchmark::kMillisecond);

}  // namespace
