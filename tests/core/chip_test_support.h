// Shared helpers for the chip tests: the chips with fresh registers and the machine's buffers
// but no program, the message text, the 68000's level-2 request slot, scratch files.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "core/eeprom.h"
#include "core/host.h"
#include "core/memory.h"
#include "core/sound.h"
#include "core/video.h"
#include "m68k/m68k.h"
#include "support/temp_files.h"

using test_support::read_file;

inline std::string last_message() { return log_text; }
inline void clear_message() { log_text[0] = '\0'; }

inline void write_file(const std::filesystem::path& path, const std::vector<uint8_t>& bytes) {
    std::ofstream(path, std::ios::binary | std::ios::trunc)
        .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

// A scratch directory of the current test's own.
inline std::filesystem::path test_dir() {
    const testing::TestInfo* info = testing::UnitTest::GetInstance()->current_test_info();
    std::filesystem::path dir = test_support::scratch_dir() / (std::string(info->test_suite_name()) + "." + info->name());
    std::filesystem::remove_all(dir);
    std::filesystem::create_directories(dir);
    return dir;
}

// The graphics chip asks for the 68000's level-2 autovector (vector 26).
inline bool level2_requested() { return m68k_context.irq_vector[1] == 26; }
inline void clear_requests() {
    for (uint32_t& v : m68k_context.irq_vector) v = 0;
    m68k_context.irq_count = 0;
}

class ChipTest : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(memory_allocate());
        video_reset();
        sound = sound_registers{};
        sound_begin_frame();
        eeprom_reset();
        joypad_slots[0] = vemo_joypad{};
        clear_requests();
        clear_message();
    }
    void TearDown() override {
        memory_release();
        clear_requests();
    }
};
