// Runs an assembled test program (programs/X.s, 68000 code carrying GPU or DSP code) in program
// mode through the exported functions, and reads what it left in main RAM.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "core/bus.h"
#include "support/program_config.h"
#include "support/temp_files.h"
#include "vemocore.h"

class RiscProgram : public testing::Test {
protected:
    static constexpr uint32_t RESULTS = 0x1000;  // where the programs write, as machine.inc says

    void start(const std::string& program, bool audio = false) {
        vemo_config config = test_support::program_config(VEMO_PROGRAM_DIR "/risc_" + program + ".bin");
        std::snprintf(config.eeprom_path, sizeof config.eeprom_path, "%s",
                      (test_support::scratch_dir() / "none.eeprom").c_str());
        config.audio_enable = audio;
        ASSERT_EQ(vemo_init(&config), 1) << vemo_get_error_string();
    }
    void TearDown() override { vemo_shutdown(); }

    static void run_frames(int n) {
        for (int i = 0; i < n; ++i) ASSERT_EQ(vemo_run_frame(), 1) << vemo_get_error_string();
    }
    static uint32_t result(uint32_t index) { return bus_read32(RESULTS + 4 * index); }
    static vemo_frame_info frame() {
        vemo_frame_info info{};
        vemo_get_frame_info(&info);
        return info;
    }
};
