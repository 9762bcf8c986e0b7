// Fuzz target: a cartridge (or program image) started and run for a frame through the public
// interface. A frame gives the 68000 about 60,000 instructions, time for a program to set up and
// use every chip, and ends as every frame does. Each input starts a machine over the one before
// without shutting it down, as a front-end's reset does; the restart tests check that this gives
// exactly a first start's machine.
// Input: byte 0 holds the switches (bit 0 audio, bit 1 timer ticks, bit 2 DSP always runs, bit 3
// program mode, bits 4-7 pick the program's load address); the rest is the 68000 code, placed
// at 0x802000 after a zero cartridge header, or in RAM at the load address.
#include <cstdint>
#include <cstdio>
#include <string>

#include "fuzz_support.h"

namespace {

constexpr size_t MAX_CODE = 64 * 1024;
constexpr int FRAMES = 1;
// Load addresses a program mode input can pick: the vector area, the usual 0x4000, odd ones,
// and ones at the end of RAM.
constexpr int32_t LOAD_ADDRESSES[16] = {0x4000, 0, 2, 7, 0x100, 0x1000, 0x4001, 0x10000,
                                        0x1FF000, 0x1FFFF0, 0x80000, 0x4000, 0x5000, 0x6000, 0x20, 0x800};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 1 || size > MAX_CODE + 1) return 0;
    const uint8_t switches = data[0];
    static const vemo_config idle = fuzz::idle_cartridge_config();
    static const std::string program_path = fuzz::scratch_path("program.bin");
    static const std::string cartridge_path = fuzz::scratch_path("cartridge.j64");
    vemo_config config = idle;
    const std::string& path = switches & 8 ? program_path : cartridge_path;
    fuzz::write_file(path, switches & 8 ? 0 : fuzz::CARTRIDGE_HEADER, data + 1, size - 1);
    std::snprintf(config.rom_path, sizeof config.rom_path, "%s", path.c_str());
    if (switches & 8) {
        config.load_program = 1;
        config.load_address = LOAD_ADDRESSES[switches >> 4];
    }
    config.audio_enable = switches & 1;
    config.timer_ticks = (switches >> 1) & 1;
    config.dsp_always_run = (switches >> 2) & 1;
    if (vemo_init(&config)) {
        vemo_joypad pad{};
        pad.a = 1;
        vemo_set_joypad_state(0, &pad);
        for (int frame = 0; frame < FRAMES; ++frame)
            if (!fuzz::timed_frame(vemo_run_frame)) break;
        vemo_frame_info info;
        vemo_get_frame_info(&info);
    }
    return 0;
}
