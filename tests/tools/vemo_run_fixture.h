// Running vemo-run as a user runs it, from the tools' tests: a scratch folder per test, the
// tool's output and exit status, and the picture it wrote.
#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdio>
#include <filesystem>
#include <string>

#include "png_read.h"
#include "support/temp_files.h"

namespace vemo_run_test {

namespace fs = std::filesystem;

inline const std::string program_dir = VEMO_PROGRAM_DIR;

// Single-quoted for the shell (the test paths hold no quote).
inline std::string arg(const fs::path& path) { return std::string(1, '\'').append(path.string()).append(1, '\''); }

inline const std::string test_pattern = arg(program_dir + "/test_pattern.bin");

class VemoRun : public ::testing::Test {
protected:
    fs::path dir = test_support::scratch_dir() / ::testing::UnitTest::GetInstance()->current_test_info()->name();
    std::string output;  // stdout and stderr of the last run, together

    void SetUp() override { fs::create_directories(dir); }
    void TearDown() override { fs::remove_all(dir); }

    // Runs vemo-run as a user would; returns its exit status.
    int run(const std::string& arguments) {
        output.clear();
        // A run that waits for ever (on a FIFO, say) is ended after two minutes.
        FILE* pipe = popen(("timeout 120 " + arg(std::string(VEMO_BIN_DIR) + "/vemo-run") + " " + arguments +
                            " 2>&1").c_str(), "r");
        if (!pipe) return -1;
        char buffer[4096];
        for (size_t n; (n = std::fread(buffer, 1, sizeof buffer, pipe)) > 0;) output.append(buffer, n);
        const int status = pclose(pipe);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
    // Runs the program and reads back the picture of its last frame.
    rgb_picture picture_of(const std::string& arguments) {
        EXPECT_EQ(run(arguments + " --png " + arg(dir / "p.png")), 0) << output;
        return read_png((dir / "p.png").string());
    }
};

}  // namespace vemo_run_test
