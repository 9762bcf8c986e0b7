// Cartridge programs driven frame by frame through the exported functions: the level-2
// interrupt of line VI, the controller the front-end sets, EEPROM saves that outlive the
// library and the process.
#include <sys/wait.h>

#include "chip_test_support.h"
#include "core/bus.h"
#include "core/scheduler.h"

namespace {

constexpr uint32_t CART_PROGRAM_OFFSET = 0x2000;  // a cartridge starts at 0x802000

// frame_counter.s
constexpr uint32_t FRAMES = 0x1000;
constexpr uint32_t LINE_SEEN = 0x1004;
constexpr uint32_t PENDING_SEEN = 0x1006;
constexpr uint32_t PAD_ROWS = 0x1010;
// eeprom_counter.s
constexpr uint32_t COUNT_WRITTEN = 0x1000;
constexpr uint32_t DONE = 0x1002;

class CartridgeFrames : public testing::Test {
protected:
    void SetUp() override {
        dir = test_dir();
        eeprom_path = dir / "save.eep";
        joypad_slots[0] = vemo_joypad{};
    }
    void TearDown() override {
        vemo_shutdown();
        std::filesystem::remove_all(dir);
    }

    // A cartridge image: the program placed at its start address 0x802000.
    std::string cartridge(const std::string& program) {
        std::vector<uint8_t> image(CART_PROGRAM_OFFSET, 0);
        const std::vector<uint8_t> code = read_file(std::string(VEMO_PROGRAM_DIR) + "/" + program + ".bin");
        EXPECT_FALSE(code.empty()) << program;
        image.insert(image.end(), code.begin(), code.end());
        const std::filesystem::path path = dir / (program + ".j64");
        write_file(path, image);
        return path.string();
    }

    vemo_config config_for(const std::string& program) {
        vemo_config config{};
        std::snprintf(config.rom_path, sizeof config.rom_path, "%s", cartridge(program).c_str());
        std::snprintf(config.eeprom_path, sizeof config.eeprom_path, "%s", eeprom_path.c_str());
        return config;
    }

    void start(const std::string& program) {
        const vemo_config config = config_for(program);
        ASSERT_EQ(vemo_init(&config), 1) << vemo_get_error_string();
    }

    static void run_frames(int n) {
        for (int i = 0; i < n; ++i) ASSERT_EQ(vemo_run_frame(), 1) << vemo_get_error_string();
    }

    std::filesystem::path dir;
    std::filesystem::path eeprom_path;
};

TEST_F(CartridgeFrames, ProgramTakesTheLineInterruptOncePerFrame) {
    start("cart_frame_counter");
    run_frames(1);
    EXPECT_EQ(bus_read32(FRAMES), 1u);
    // Requested after line 100's slices, taken at the start of line 101.
    EXPECT_EQ(bus_read16(LINE_SEEN), 101);
    EXPECT_EQ(bus_read16(PENDING_SEEN), 1u << IRQ_VIDEO_LINE);
    EXPECT_EQ(video.int1_pending, 0);  // the handler acknowledged it

    run_frames(9);
    EXPECT_EQ(bus_read32(FRAMES), 10u);
    EXPECT_EQ(bus_read16(LINE_SEEN), 101);
    // A frame leaves the counts at the last line and the last slice's step.
    EXPECT_EQ(video.vc, 524);
    EXPECT_EQ(video.hc, 6 * 241);
}

TEST_F(CartridgeFrames, ProgramSeesTheControllerStateTheFrontEndSet) {
    start("cart_frame_counter");
    vemo_joypad pad{};
    pad.up = 1;
    pad.a = 1;
    pad.key_5 = 1;
    pad.option = 1;
    vemo_set_joypad_state(0, &pad);
    run_frames(1);
    // Rows E, D, B, 7: (joystick port, button port); bit 0 of the joystick port is the idle
    // EEPROM's 1.
    const uint16_t held[8] = {0xFEFF, 0xFFFD, 0xFFFF, 0xFFFF, 0xFBFF, 0xFFFF, 0xFFFF, 0xFFFD};
    for (uint32_t n = 0; n < 8; ++n) EXPECT_EQ(bus_read16(PAD_ROWS + 2 * n), held[n]) << n;

    const vemo_joypad released{};
    vemo_set_joypad_state(0, &released);
    vemo_set_joypad_state(1, &pad);  // the second controller is not wired
    run_frames(1);
    for (uint32_t n = 0; n < 8; ++n) EXPECT_EQ(bus_read16(PAD_ROWS + 2 * n), 0xFFFF) << n;
    vemo_set_joypad_state(1, &released);
}

// Each drawn row records its timing pair; which rows carry it shows which lines were drawn.
TEST_F(CartridgeFrames, ObjectProcessorDrawsTheEvenLinesOfTheVerticalDisplayRange) {
    start("cart_frame_counter");
    std::memset(core_frame_info.row_timing, 0, sizeof core_frame_info.row_timing);
    auto rows_with_width = [](int32_t width) {
        vemo_frame_info info{};
        vemo_get_frame_info(&info);
        std::vector<int> rows;
        for (int r = 0; r < 256; ++r)
            if (info.row_timing[2 * r] == width) rows.push_back(r);
        return rows;
    };
    video.hdb1 = 100;
    video.vdb = 40;
    video.vde = 520;
    video.hde = 100 + 777;
    run_frames(1);
    const std::vector<int> first = rows_with_width(777);
    ASSERT_EQ(first.size(), 240u);  // lines 40, 42, ..., 518
    EXPECT_EQ(first.back(), 239);

    // From an odd VDB the first drawn line is 42 and the last 518: rows 0 to 238.
    video.vdb = 41;
    video.hde = 100 + 778;
    run_frames(1);
    const std::vector<int> second = rows_with_width(778);
    ASSERT_EQ(second.size(), 239u);
    EXPECT_EQ(second.back(), 238);
    EXPECT_EQ(rows_with_width(777), std::vector<int>{239});
}

TEST_F(CartridgeFrames, EepromSavesSurviveRestartingTheLibrary) {
    start("cart_eeprom_counter");
    run_frames(1);
    ASSERT_EQ(bus_read16(DONE), 0x600D);
    EXPECT_EQ(bus_read16(COUNT_WRITTEN), 1);
    std::vector<uint8_t> file = read_file(eeprom_path);
    ASSERT_EQ(file.size(), 128u);
    EXPECT_EQ(file[0], 1);
    EXPECT_EQ(file[1], 0);

    vemo_shutdown();
    start("cart_eeprom_counter");
    run_frames(1);
    EXPECT_EQ(bus_read16(COUNT_WRITTEN), 2);
    file = read_file(eeprom_path);
    EXPECT_EQ(file[0], 2);
}

TEST_F(CartridgeFrames, EepromSavesSurviveRestartingTheProcess) {
    const vemo_config config = config_for("cart_eeprom_counter");
    for (int run = 1; run <= 2; ++run) {
        const pid_t child = fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            const int ok = vemo_init(&config) == 1 && vemo_run_frame() == 1 && bus_read16(DONE) == 0x600D;
            vemo_shutdown();
            _exit(ok ? 0 : 1);
        }
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        ASSERT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "run " << run;
    }
    start("cart_eeprom_counter");
    run_frames(1);
    EXPECT_EQ(bus_read16(COUNT_WRITTEN), 3);
}

TEST_F(CartridgeFrames, EepromFileLoadsWhatItHasAndAtMost128Bytes) {
    write_file(eeprom_path, {0x29, 0x00, 0x78, 0x56});
    start("cart_eeprom_counter");
    EXPECT_EQ(eeprom_image[1], 0x5678);
    EXPECT_EQ(eeprom_image[2], 0);
    run_frames(1);
    EXPECT_EQ(bus_read16(COUNT_WRITTEN), 42);
    vemo_shutdown();

    std::vector<uint8_t> long_file(300, 0x11);
    long_file[126] = 0x22;
    long_file[128] = 0x33;
    write_file(eeprom_path, long_file);
    clear_message();
    start("cart_eeprom_counter");
    EXPECT_EQ(eeprom_image[63], 0x1122);
    EXPECT_NE(last_message().find("only its first 128"), std::string::npos) << last_message();
}

TEST_F(CartridgeFrames, AudioAndTimerTicksArePlacedOnlyForRunningSources) {
    vemo_config config = config_for("cart_frame_counter");
    config.audio_enable = 1;
    config.timer_ticks = 1;
    ASSERT_EQ(vemo_init(&config), 1) << vemo_get_error_string();
    sound = sound_registers{};
    dsp_write32(SCLK, 19);
    dsp_write16(JPIT2, 0);  // timer 1: prescaler 0, so not running despite its frequency
    dsp_write16(JPIT3, 255);
    dsp_write16(JPIT4, 99);  // timer 2: 1038 Hz, about 17 ticks a frame
    dsp_write32(LTXD, 1);
    run_frames(1);
    std::vector<int> timer2;
    int audio = 0;
    for (int line = 0; line < LINES_PER_FRAME; ++line) {
        EXPECT_EQ(scheduler_tick_marks[line] & TICK_TIMER1, 0) << line;
        if (scheduler_tick_marks[line] & TICK_TIMER2) timer2.push_back(line);
        if (scheduler_tick_marks[line] & TICK_AUDIO) ++audio;
    }
    EXPECT_EQ(audio, 346);
    EXPECT_EQ(timer2.size(), 17u);
    EXPECT_EQ(timer2.front(), 30);

    // A frame's sample counts start from zero.
    vemo_frame_info info{};
    vemo_get_frame_info(&info);
    EXPECT_EQ(info.audio_left_count, 0u);
    EXPECT_EQ(info.audio_rate, 20774);
    sound = sound_registers{};
}

TEST(FrameWithoutMachine, RunFrameBeforeInitOrAfterAFailedStartIsRefused) {
    vemo_shutdown();
    EXPECT_EQ(vemo_run_frame(), 0);
    EXPECT_EQ(std::string(vemo_get_error_string()), "vemo_run_frame: the machine is not initialised.\n");

    vemo_config missing{};
    std::snprintf(missing.rom_path, sizeof missing.rom_path, "/nonexistent/cartridge.j64");
    EXPECT_EQ(vemo_init(&missing), 0);
    EXPECT_EQ(vemo_run_frame(), 0);
    EXPECT_EQ(std::string(vemo_get_error_string()), "vemo_run_frame: the machine is not initialised.\n");
    vemo_shutdown();
}

}  // namespace
