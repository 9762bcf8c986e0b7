// The configuration that starts a program image in RAM, as the tests that run whole programs
// use it: the image at `path` loaded and started at `address`, no boot ROM, no EEPROM file
// (saves go nowhere). Callers set the switches they need on the copy they get.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>

#include "vemocore.h"

namespace test_support {

inline vemo_config program_config(const std::string& path, int32_t address = 0x4000) {
    vemo_config config{};
    std::snprintf(config.rom_path, sizeof config.rom_path, "%s", path.c_str());
    config.load_program = 1;
    config.load_address = address;
    return config;
}

}  // namespace test_support
