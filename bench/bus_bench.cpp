// The bus under load: reads and writes of each width to RAM, the cartridge and the GPU's local
// RAM, walking a 4 KB window so the decode, not the host cache, is what is measured.
#include <benchmark/benchmark.h>

#include "core/bus.h"
#include "core/memory.h"

namespace {

struct machine_memory {
    machine_memory() { memory_allocate(); }
    ~machine_memory() { memory_release(); }
};

constexpr uint32_t WINDOW = 0x1000;

template <typename Read>
void read_loop(benchmark::State& state, uint32_t base, uint32_t step, Read read) {
    machine_memory memory;
    uint32_t sum = 0;
    for (auto _ : state) {
        for (uint32_t offset = 0; offset < WINDOW; offset += step) sum += read(base + offset);
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(state.iterations() * (WINDOW / step));
}

template <typename Write>
void write_loop(benchmark::State& state, uint32_t base, uint32_t step, Write write) {
    machine_memory memory;
    uint32_t value = 0;
    for (auto _ : state) {
        for (uint32_t offset = 0; offset < WINDOW; offset += step) write(base + offset, value++);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * (WINDOW / step));
}

const uint32_t RAM = 0x004000, CARTRIDGE = 0x802000, GPU_RAM = 0xF03000;

void read8(benchmark::State& s, uint32_t base) { read_loop(s, base, 1, bus_read8); }
void read16(benchmark::State& s, uint32_t base) { read_loop(s, base, 2, bus_read16); }
void read32(benchmark::State& s, uint32_t base) { read_loop(s, base, 4, bus_read32); }
void write8(benchmark::State& s, uint32_t base) {
    write_loop(s, base, 1, [](uint32_t a, uint32_t v) { bus_write8(a, static_cast<uint8_t>(v)); });
}
void write16(benchmark::State& s, uint32_t base) {
    write_loop(s, base, 2, [](uint32_t a, uint32_t v) { bus_write16(a, static_cast<uint16_t>(v)); });
}
void write32(benchmark::State& s, uint32_t base) { write_loop(s, base, 4, bus_write32); }

}  // namespace

BENCHMARK_CAPTURE(read8, ram, RAM);
BENCHMARK_CAPTURE(read16, ram, RAM);
BENCHMARK_CAPTURE(read32, ram, RAM);
BENCHMARK_CAPTURE(write8, ram, RAM);
BENCHMARK_CAPTURE(write16, ram, RAM);
BENCHMARK_CAPTURE(write32, ram, RAM);
BENCHMARK_CAPTURE(read8, cartridge, CARTRIDGE);
BENCHMARK_CAPTURE(read16, cartridge, CARTRIDGE);
BENCHMARK_CAPTURE(read32, cartridge, CARTRIDGE);
BENCHMARK_CAPTURE(write16, cartridge_ignored, CARTRIDGE);
BENCHMARK_CAPTURE(read8, gpu_ram, GPU_RAM);
BENCHMARK_CAPTURE(read16, gpu_ram, GPU_RAM);
BENCHMARK_CAPTURE(read32, gpu_ram, GPU_RAM);
BENCHMARK_CAPTURE(write8, gpu_ram, GPU_RAM);
BENCHMARK_CAPTURE(write16, gpu_ram, GPU_RAM);
BENCHMARK_CAPTURE(write32, gpu_ram, GPU_RAM);
