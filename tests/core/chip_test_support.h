// Shared helpers for the chip tests: a machine with its buffers but no loaded program, the
// message text, the 68000's level-2 request slot, and scratch files.
#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "core/eeprom.h"
#include "core/host.h"
#include "core/memory.h"
#include "core/sound.h"
#include "core/video.h"
#include "m68k/m68k.h"

inline std::string last_message() { return log_text; }
inline void clear_message() { log_text[0] = '\0'; }

// The graphics chip asks for the 68000's level-2 autovector (vector 26).
inline bool level2_requested() { return m68k_context.irq_vector[1] == 26; }
inline void clear_requests() {
    for (uint32_t& v : m68k_context.irq_vector) v = 0;
    m68k_context.irq_count = 0;
}

// A directory of its own for each test, removed afterwards.
inline std::filesystem::path scratch_dir() {
    const testing::TestInfo* info = testing::UnitTest::GetInstance()->current_test_info();
    std::filesystem::path dir = std::filesystem::temp_directory_path() /
                                ("vemocore_" + std::to_string(getpid()) + "_" +
                                 info->test_suite_name() + "_" + info->name());
    std::filesystem::remove_all(dir);
    std::filesystem::create_directories(dir);
    return dir;
}

inline std::vector<uint8_t> read_file(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

inline void write_file(const std::filesystem::path& path, const std::vector<uint8_t>& bytes) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

// The chips with fresh registers and the machine's buffers, without a program running.
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
