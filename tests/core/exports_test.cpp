// The shared library offers exactly the six vemo_ functions, and they work when a front-end
// loads it at run time.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <set>
#include <string>

#include "support/temp_files.h"
#include "vemocore.h"

namespace {

const std::string library = std::string(VEMO_LIB_DIR) + "/libvemocore.so";

TEST(SharedLibrary, DefinesExactlyTheSixExportedFunctions) {
    FILE* nm = popen(("nm -D --defined-only --format=posix " + library + " 2>&1").c_str(), "r");
    ASSERT_NE(nm, nullptr);
    std::set<std::string> defined;
    char line[512];
    while (std::fgets(line, sizeof line, nm)) {
        char name[256], type[8];
        if (std::sscanf(line, "%255s %7s", name, type) == 2) defined.insert(name);
    }
    ASSERT_EQ(pclose(nm), 0) << "nm failed on " << library;
    const std::set<std::string> expected = {"vemo_init",           "vemo_shutdown",
                                            "vemo_run_frame",      "vemo_set_joypad_state",
                                            "vemo_get_frame_info", "vemo_get_error_string"};
    EXPECT_EQ(defined, expected);
}

TEST(SharedLibrary, StartsAMachineWhenLoadedAtRunTime) {
    void* handle = dlopen(library.c_str(), RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(handle, nullptr) << dlerror();
    auto init = reinterpret_cast<decltype(&vemo_init)>(dlsym(handle, "vemo_init"));
    auto shutdown = reinterpret_cast<decltype(&vemo_shutdown)>(dlsym(handle, "vemo_shutdown"));
    auto info = reinterpret_cast<decltype(&vemo_get_frame_info)>(dlsym(handle, "vemo_get_frame_info"));
    auto error = reinterpret_cast<decltype(&vemo_get_error_string)>(dlsym(handle, "vemo_get_error_string"));
    ASSERT_TRUE(init && shutdown && info && error);

    vemo_config config{};
    std::snprintf(config.rom_path, sizeof config.rom_path, "%s",
                  test_support::write_file("loaded.j64", std::vector<uint8_t>(0x2100, 0x4E)).c_str());
    ASSERT_EQ(init(&config), 1) << error();
    vemo_frame_info frame{};
    info(&frame);
    EXPECT_NE(frame.frame_buffer, nullptr);
    EXPECT_EQ(frame.frame_pitch, 1024);
    shutdown();

    std::snprintf(config.rom_path, sizeof config.rom_path, "/nonexistent/cart.j64");
    EXPECT_EQ(init(&config), 0);
    EXPECT_STREQ(error(), "Couldn't load rom file /nonexistent/cart.j64.\n");
    shutdown();
    dlclose(handle);
}

}  // namespace
