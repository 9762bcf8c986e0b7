// Shared set-up for the chip tests: the chips with fresh registers and the machine's buffers
// but no program, the 68000's level-2 request slot, the last message, scratch directories.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "core/eeprom.h"
#include "core/host.h"
#include "core/memory.h"
#include "core/scheduler.h"
#include "core/sound.h"
#include "core/video.h"
#include "m68k/m68k.h"
#include "support/temp_files.h"

using test_support::read_file;
using test_support::write_file;  // an absolute path is used as it is

inline void clear_message() { log_clear(); }
inline testing::AssertionResult logged(const std::string& part) {
    if (std::string(log_text).find(part) != std::string::npos) return testing::AssertionSuccess();
    return testing::AssertionFailure() << "last message: " << log_text;
}

// A fresh scratch directory of the current test's own.
inline std::filesystem::path test_dir() {
    const auto dir = test_support::scratch_dir() / testing::UnitTest::GetInstance()->current_test_info()->name();
    std::filesystem::remove_all(dir);
    std::filesystem::create_directories(dir);
    return dir;
}

// The lines of a frame whose tick marks carry `bit`.
inline std::vector<int> marked_lines(const uint8_t* marks, uint8_t bit) {
    std::vector<int> marked;
    for (int line = 0; line < LINES_PER_FRAME; ++line)
        if (marks[line] & bit) marked.push_back(line);
    return marked;
}

// The graphics chip asks for the 68000's level-2 autovector (vector 26).
inline bool level2_requested() { return m68k_context.irq_vector[1] == 26; }
inline void clear_requests() {
    std::memset(m68k_context.irq_vector, 0, sizeof m68k_context.irq_vector);
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
    void TearDown() override { memory_release(); }
};
