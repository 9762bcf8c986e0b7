// Runs the vemo-run executable as a user would, for the tool's tests.
#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdio>
#include <filesystem>
#include <string>

#include "support/temp_files.h"

namespace fs = std::filesystem;

inline const std::string tool = std::string(VEMO_BIN_DIR) + "/vemo-run";
inline const std::string test_pattern = std::string(VEMO_PROGRAM_DIR) + "/test_pattern.bin";
inline const std::string bad_object = std::string(VEMO_PROGRAM_DIR) + "/bad_object.bin";
inline const std::string rgb24_pattern = std::string(VEMO_PROGRAM_DIR) + "/rgb24_pattern.bin";

struct tool_result {
    int status = -1;
    std::string output;  // stdout and stderr together
};

inline tool_result run_tool(const std::string& arguments) {
    tool_result result;
    const std::string command = "'" + tool + "' " + arguments + " 2>&1";
    FILE* pipe = popen(command.c_str(), "r");
    if (!pipe) return result;
    char buffer[4096];
    size_t n;
    while ((n = std::fread(buffer, 1, sizeof buffer, pipe)) > 0) result.output.append(buffer, n);
    const int status = pclose(pipe);
    result.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return result;
}

// Single-quoted for the shell (the test paths hold no quote).
inline std::string shell_arg(const fs::path& path) {
    std::string arg(1, '\'');
    arg += path.string();
    arg += '\'';
    return arg;
}

class VemoRun : public ::testing::Test {
protected:
    // Per process, so that test runs in other build trees never share it.
    fs::path dir = test_support::scratch_dir() / ::testing::UnitTest::GetInstance()->current_test_info()->name();
    void SetUp() override {
        fs::remove_all(dir);
        fs::create_directories(dir);
    }
    void TearDown() override { fs::remove_all(dir); }
};

