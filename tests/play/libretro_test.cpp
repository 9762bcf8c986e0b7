// The libretro core driven as a front-end drives it: loaded with dlopen, given callbacks, fed a
// cartridge. Checked: what the program reads from the controller the front-end reports, the
// sound and the announced sample rate, the geometry against the frames delivered, the EEPROM as
// save memory, and a bad image refused.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <set>
#include <string>
#include <vector>

#include "libretro_api.h"
#include "support/temp_files.h"

namespace {

namespace fs = std::filesystem;

// What the fake front-end was told and holds.
struct front_end {
    int pixel_format = -1;
    retro_keyboard_event_t keyboard = nullptr;
    double announced_rate = 0;
    retro_game_geometry geometry{};
    std::vector<uint32_t> frame;
    unsigned width = 0, height = 0;
    std::vector<int16_t> batch;  // the last frame's samples, interleaved
    double batch_rate = 0;       // the rate announced when it came
    std::set<unsigned> held;     // joypad ids
    std::vector<std::string> messages;
} fe;

bool environment(unsigned command, void* data) {
    switch (command) {
        case RETRO_ENVIRONMENT_SET_PIXEL_FORMAT:
            fe.pixel_format = *static_cast<int*>(data);
            return true;
        case RETRO_ENVIRONMENT_SET_KEYBOARD_CALLBACK:
            fe.keyboard = static_cast<retro_keyboard_callback*>(data)->callback;
            return true;
        case RETRO_ENVIRONMENT_SET_INPUT_DESCRIPTORS:
            return true;
        case RETRO_ENVIRONMENT_SET_GEOMETRY:
            fe.geometry = *static_cast<retro_game_geometry*>(data);
            return true;
        case RETRO_ENVIRONMENT_SET_SYSTEM_AV_INFO:
            fe.geometry = static_cast<retro_system_av_info*>(data)->geometry;
            fe.announced_rate = static_cast<retro_system_av_info*>(data)->timing.sample_rate;
            return true;
        case RETRO_ENVIRONMENT_SET_MESSAGE:
            fe.messages.emplace_back(static_cast<retro_message*>(data)->msg);
            return true;
        default:
            return false;
    }
}
void video(const void* data, unsigned width, unsigned height, size_t pitch) {
    fe.width = width;
    fe.height = height;
    fe.frame.assign(static_cast<size_t>(width) * height, 0);
    for (unsigned y = 0; y < height; ++y)
        std::memcpy(&fe.frame[static_cast<size_t>(y) * width], static_cast<const uint8_t*>(data) + y * pitch, width * 4);
}
size_t audio(const int16_t* data, size_t frames) {
    fe.batch.assign(data, data + 2 * frames);
    fe.batch_rate = fe.announced_rate;
    return frames;
}
void poll() {}
int16_t state(unsigned port, unsigned device, unsigned, unsigned id) {
    return port == 0 && device == RETRO_DEVICE_JOYPAD && fe.held.count(id);
}

// The core's exports, looked up by name as a front-end does.
struct core_library {
    void* handle = dlopen((std::string(VEMO_LIB_DIR) + "/vemocore_libretro.so").c_str(), RTLD_NOW | RTLD_LOCAL);
    template <typename F>
    F* get(const char* name) {
        return reinterpret_cast<F*>(handle ? dlsym(handle, name) : nullptr);
    }
};

class LibretroCore : public testing::Test {
protected:
    static core_library& lib() {
        static core_library library;
        return library;
    }
    void SetUp() override {
        ASSERT_NE(lib().handle, nullptr) << dlerror();
        fe = front_end{};
        lib().get<void(retro_environment_t)>("retro_set_environment")(environment);
        lib().get<void(retro_video_refresh_t)>("retro_set_video_refresh")(video);
        lib().get<void(retro_audio_sample_batch_t)>("retro_set_audio_sample_batch")(audio);
        lib().get<void(retro_input_poll_t)>("retro_set_input_poll")(poll);
        lib().get<void(retro_input_state_t)>("retro_set_input_state")(state);
        lib().get<void()>("retro_init")();
    }
    void TearDown() override {
        lib().get<void()>("retro_unload_game")();
        lib().get<void()>("retro_deinit")();
    }
    static bool load_game(const std::string& path) {
        retro_game_info game{path.c_str(), nullptr, 0, nullptr};
        return lib().get<bool(const retro_game_info*)>("retro_load_game")(&game);
    }
    static bool load_program(const std::string& program) {
        std::vector<uint8_t> image = test_support::read_file(std::string(VEMO_PROGRAM_DIR) + "/" + program + ".bin");
        image.insert(image.begin(), 0x2000, 0);
        return load_game(test_support::write_file(program + ".j64", image));
    }
    static void run_frames(int n) {
        for (int i = 0; i < n; ++i) lib().get<void()>("retro_run")();
    }
    static uint8_t* save_memory() {
        EXPECT_EQ(lib().get<size_t(unsigned)>("retro_get_memory_size")(RETRO_MEMORY_SAVE_RAM), 128u);
        return static_cast<uint8_t*>(lib().get<void*(unsigned)>("retro_get_memory_data")(RETRO_MEMORY_SAVE_RAM));
    }
    static retro_system_av_info av_info() {
        retro_system_av_info info{};
        lib().get<void(retro_system_av_info*)>("retro_get_system_av_info")(&info);
        return info;
    }
    // pad_probe.s shows its controller reads as RGB 16 pixels: the 16-bit value back from the
    // 8-bit channels, whose top bits are the fields.
    static std::vector<uint16_t> probe_reads() {
        std::vector<uint16_t> reads;
        for (int i = 0; i < 8 && i < static_cast<int>(fe.frame.size()); ++i) {
            const uint32_t p = fe.frame[i];
            reads.push_back(static_cast<uint16_t>(((p >> 19) & 0x1F) << 11 | ((p >> 3) & 0x1F) << 6 | ((p >> 10) & 0x3F)));
        }
        return reads;
    }
};

TEST_F(LibretroCore, ControllerReachesTheProgramAndItsPictureAndSoundComeBack) {
    ASSERT_EQ(lib().get<unsigned()>("retro_api_version")(), RETRO_API_VERSION);
    ASSERT_TRUE(load_program("pad_probe"));
    EXPECT_EQ(fe.pixel_format, RETRO_PIXEL_FORMAT_XRGB8888);
    ASSERT_NE(fe.keyboard, nullptr);

    run_frames(3);
    const std::vector<uint16_t> released = probe_reads();
    ASSERT_EQ(released.size(), 8u);
    // Picture: 320 x 240 of square pixels, as announced and as asked for.
    EXPECT_EQ(fe.width, 320u);
    EXPECT_EQ(fe.height, 240u);
    const retro_system_av_info av = av_info();
    EXPECT_EQ(av.geometry.base_width, fe.width);
    EXPECT_EQ(av.geometry.base_height, fe.height);
    EXPECT_FLOAT_EQ(av.geometry.aspect_ratio, 4.0f / 3.0f);
    EXPECT_EQ(fe.geometry.base_width, fe.width);
    EXPECT_DOUBLE_EQ(av.timing.fps, 60.0);
    // Sound: the serial clock divider 19 gives 26591000 / 40 / 32 Hz, announced before the
    // batch; 346 samples per frame, left the frame count, right its negation.
    EXPECT_DOUBLE_EQ(av.timing.sample_rate, 20774.0);
    EXPECT_DOUBLE_EQ(fe.batch_rate, 20774.0);
    ASSERT_EQ(fe.batch.size(), 2u * 346);
    for (int i = 0; i < 346; ++i) {
        EXPECT_EQ(fe.batch[2 * i], 3);
        EXPECT_EQ(fe.batch[2 * i + 1], -3);
    }

    // Joypad Up, Y (console A), Start (Pause), R (keypad #); keyboard '5' and keypad '*'.
    fe.held = {RETRO_DEVICE_ID_JOYPAD_UP, RETRO_DEVICE_ID_JOYPAD_Y, RETRO_DEVICE_ID_JOYPAD_START,
               RETRO_DEVICE_ID_JOYPAD_R};
    fe.keyboard(true, RETROK_0 + 5, '5', 0);
    fe.keyboard(true, RETROK_KP_MULTIPLY, '*', 0);
    run_frames(2);
    // Reads in pairs (joystick word, buttons word) for rows E, D, B, 7; a pressed control
    // reads 0: row E up (bit 8), Pause (bit 0) and A (bit 1); row D keypad * (bit 8); row B
    // keypad 5 (bit 10); row 7 keypad # (bit 8).
    std::vector<uint16_t> expected = released;
    expected[0] &= ~(1u << 8);
    expected[1] &= ~3u;
    expected[2] &= ~(1u << 8);
    expected[4] &= ~(1u << 10);
    expected[6] &= ~(1u << 8);
    EXPECT_EQ(probe_reads(), expected);

    // Released again: the keyboard's key-up reaches the keypad too.
    fe.held.clear();
    fe.keyboard(false, RETROK_0 + 5, '5', 0);
    fe.keyboard(false, RETROK_KP_MULTIPLY, '*', 0);
    run_frames(2);
    EXPECT_EQ(probe_reads(), released);
}

// The program counts its starts in EEPROM word 0 (least significant byte first in the file).
TEST_F(LibretroCore, SaveMemoryIsTheEepromTheProgramSaves) {
    ASSERT_TRUE(load_program("cart_eeprom_counter"));
    uint8_t* memory = save_memory();
    ASSERT_NE(memory, nullptr);
    // The front-end fills the save memory after loading, before the first frame.
    memory[0] = 41;
    run_frames(2);
    EXPECT_EQ(memory[0] | memory[1] << 8, 42);
    // A reset starts the cartridge from the EEPROM as saved.
    lib().get<void()>("retro_reset")();
    run_frames(2);
    EXPECT_EQ(memory[0] | memory[1] << 8, 43);

    // A new load with nothing saved starts blank.
    lib().get<void()>("retro_unload_game")();
    ASSERT_TRUE(load_program("cart_eeprom_counter"));
    run_frames(2);
    EXPECT_EQ(save_memory()[0] | save_memory()[1] << 8, 1);
}

TEST_F(LibretroCore, BadImageIsRefusedAndAGoodOneLoadsAfterIt) {
    EXPECT_FALSE(load_game((test_support::scratch_dir() / "no-such.j64").string()));
    const fs::path too_big = test_support::write_file("huge.j64", std::vector<uint8_t>(0x600001, 0));
    EXPECT_FALSE(load_game(too_big.string()));
    ASSERT_EQ(fe.messages.size(), 2u);
    EXPECT_EQ(fe.messages[0].rfind("the core did not start: Couldn't load rom file ", 0), 0u) << fe.messages[0];
    EXPECT_EQ(fe.messages[1].rfind("the core did not start: ", 0), 0u) << fe.messages[1];
    retro_game_info none{nullptr, nullptr, 0, nullptr};
    EXPECT_FALSE(lib().get<bool(const retro_game_info*)>("retro_load_game")(&none));

    ASSERT_TRUE(load_program("test_pattern"));
    run_frames(2);
    EXPECT_EQ(fe.width, 320u);
    EXPECT_EQ(fe.frame[0], 0x3E403Au);  // the pattern's background
}

}  // namespace
