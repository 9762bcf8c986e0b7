// Scratch files for tests: a fresh directory per test program run, removed at exit.
#pragma once

#include <unistd.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace test_support {

inline const std::filesystem::path& scratch_dir() {
    static const std::filesystem::path dir = [] {
        auto p = std::filesystem::temp_directory_path() / ("vemo-test-" + std::to_string(getpid()));
        std::filesystem::create_directories(p);
        return p;
    }();
    static const struct cleanup {
        ~cleanup() {
            std::error_code ec;
            std::filesystem::remove_all(dir, ec);
        }
    } on_exit;
    return dir;
}

inline std::string write_file(const std::string& name, const std::vector<uint8_t>& bytes) {
    auto path = scratch_dir() / name;
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    return path.string();
}

inline std::vector<uint8_t> read_file(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

}  // namespace test_support
