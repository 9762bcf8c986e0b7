// Cartridge programs run frame by frame through the exported functions: the level-2 interrupt
// of line VI, the controller the front-end sets, EEPROM saves that outlive library and process.
#include <sys/wait.h>

#include "chip_test_support.h"
#include "core/bus.h"

namespace {

// Results the programs leave in RAM: frame_counter.s, then eeprom_counter.s.
constexpr uint32_t FRAMES = 0x1000, LINE_SEEN = 0x1004, PENDING_SEEN = 0x1006, PAD_ROWS = 0x1010;
constexpr uint32_t COUNT_WRITTEN = 0x1000;

class CartridgeFrames : public testing::Test {
protected:
    void SetUp() override {
        save = test_dir() / "save.eep";
        joypad_slots[0] = vemo_joypad{};
        sound = sound_registers{};
        std::memset(core_frame_info.row_timing, 0, sizeof core_frame_info.row_timing);
    }
    void TearDown() override {
        vemo_shutdown();
        sound = sound_registers{};
    }

    // The program as a cartridge, which starts at 0x802000.
    vemo_config config_for(const std::string& program, bool ticks = false) {
        std::vector<uint8_t> image = read_file(std::string(VEMO_PROGRAM_DIR) + "/" + program + ".bin");
        image.insert(image.begin(), 0x2000, 0);
        vemo_config config{};
        const std::string rom = write_file((save.parent_path() / program).string(), image);
        std::snprintf(config.rom_path, sizeof config.rom_path, "%s", rom.c_str());
        std::snprintf(config.eeprom_path, sizeof config.eeprom_path, "%s", save.c_str());
        config.audio_enable = config.timer_ticks = ticks;
        return config;
    }
    void start(const std::string& program, bool ticks = false) {
        const vemo_config config = config_for(program, ticks);
        ASSERT_EQ(vemo_init(&config), 1) << vemo_get_error_string();
    }
    static void run_frames(int n) {
        for (int i = 0; i < n; ++i) ASSERT_EQ(vemo_run_frame(), 1) << vemo_get_error_string();
    }
    // (joystick, buttons) as the program read them for rows E, D, B and 7.
    static std::vector<uint16_t> pad_rows() {
        std::vector<uint16_t> rows;
        for (uint32_t n = 0; n < 8; ++n) rows.push_back(bus_read16(PAD_ROWS + 2 * n));
        return rows;
    }

    std::filesystem::path save;
};

TEST_F(CartridgeFrames, ProgramTakesTheLineInterruptOncePerFrame) {
    start("cart_frame_counter");
    run_frames(1);
    // Requested after line 100's slices, taken at the start of line 101, acknowledged by the handler.
    EXPECT_EQ(bus_read16(LINE_SEEN), 101);
    EXPECT_EQ(bus_read16(PENDING_SEEN), 1u << IRQ_VIDEO_LINE);
    EXPECT_EQ(video.int1_pending, 0);
    run_frames(9);
    EXPECT_EQ(bus_read32(FRAMES), 10u);
    EXPECT_EQ(bus_read16(LINE_SEEN), 101);
}

TEST_F(CartridgeFrames, ProgramSeesTheControllerStateTheFrontEndSet) {
    start("cart_frame_counter");
    vemo_joypad pad{};
    pad.up = pad.a = pad.key_5 = pad.option = 1;
    vemo_set_joypad_state(0, &pad);
    run_frames(1);
    // Bit 0 of the joystick port is the idle EEPROM's 1.
    EXPECT_EQ(pad_rows(), (std::vector<uint16_t>{0xFEFF, 0xFFFD, 0xFFFF, 0xFFFF, 0xFBFF, 0xFFFF, 0xFFFF, 0xFFFD}));

    const vemo_joypad released{};
    vemo_set_joypad_state(0, &released);
    vemo_set_joypad_state(1, &pad);  // the second controller is not wired
    run_frames(1);
    EXPECT_EQ(pad_rows(), std::vector<uint16_t>(8, 0xFFFF));
    vemo_set_joypad_state(1, &released);
}

// Each drawn row records its timing pair. From VDB 41 the drawn lines are 42, 44, ..., 518.
TEST_F(CartridgeFrames, ObjectProcessorDrawsTheEvenLinesOfTheVerticalDisplayRange) {
    start("cart_frame_counter");
    video.hdb1 = 100;
    video.hde = 100 + 777;
    video.vdb = 41;
    video.vde = 520;
    run_frames(1);
    std::vector<int32_t> widths, expected(256, 0);
    std::fill_n(expected.begin(), 239, 777);
    for (int r = 0; r < 256; ++r) widths.push_back(core_frame_info.row_timing[2 * r]);
    EXPECT_EQ(widths, expected);
}

TEST_F(CartridgeFrames, EepromSavesSurviveRestartingTheLibraryAndTheProcess) {
    std::vector<uint8_t> saved(128, 0);
    for (uint16_t count = 1; count <= 2; ++count) {
        start("cart_eeprom_counter");
        run_frames(1);
        EXPECT_EQ(bus_read16(COUNT_WRITTEN), count);
        saved[0] = static_cast<uint8_t>(count);
        EXPECT_EQ(read_file(save), saved);
        vemo_shutdown();
    }
    const vemo_config config = config_for("cart_eeprom_counter");
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) _exit(vemo_init(&config) == 1 && vemo_run_frame() == 1 && bus_read16(COUNT_WRITTEN) == 3 ? 0 : 1);
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    start("cart_eeprom_counter");
    run_frames(1);
    EXPECT_EQ(bus_read16(COUNT_WRITTEN), 4);
}

// A shorter save file fills the words it has; a longer one is no save of this machine and is
// refused, untouched, rather than cut by the next save.
TEST_F(CartridgeFrames, EepromFileLoadsWhatItHasAndALongerOneIsRefusedUntouched) {
    write_file(save.string(), {0x29, 0x00, 0x78, 0x56});
    start("cart_eeprom_counter");
    EXPECT_EQ(eeprom_image[1], 0x5678);
    EXPECT_EQ(eeprom_image[2], 0);
    vemo_shutdown();
    const std::vector<uint8_t> long_file(300, 0x11);
    write_file(save.string(), long_file);
    const vemo_config config = config_for("cart_eeprom_counter");
    EXPECT_EQ(vemo_init(&config), 0);
    EXPECT_TRUE(logged("is 300 bytes, more than the 128 of the EEPROM"));
    EXPECT_EQ(read_file(save), long_file);
}

// A program placed in RAM reads its save too: it counts on from the saved count instead of
// writing 1 over it.
TEST_F(CartridgeFrames, ProgramModeReadsTheSaveBeforeWritingIt) {
    write_file(save.string(), {0x05, 0x00});
    vemo_config config = config_for("cart_eeprom_counter");
    std::snprintf(config.rom_path, sizeof config.rom_path, "%s/cart_eeprom_counter.bin", VEMO_PROGRAM_DIR);
    config.load_program = 1;
    config.load_address = 0x4000;
    for (uint8_t count = 6; count <= 7; ++count) {
        ASSERT_EQ(vemo_init(&config), 1) << vemo_get_error_string();
        run_frames(1);
        EXPECT_EQ(read_file(save)[0], count);
    }
}

// Timer 1 with prescaler 0 is stopped whatever its divider; timer 2 at 1038 Hz ticks 17 times.
TEST_F(CartridgeFrames, AudioAndTimerTicksArePlacedOnlyForRunningSources) {
    start("cart_frame_counter", true);
    dsp_write32(SCLK, 19);
    dsp_write16(JPIT2, 0);
    dsp_write16(JPIT3, 255);
    dsp_write16(JPIT4, 99);
    dsp_write32(LTXD, 1);
    run_frames(1);
    EXPECT_EQ(marked_lines(scheduler_tick_marks, TICK_AUDIO).size(), 346u);
    EXPECT_TRUE(marked_lines(scheduler_tick_marks, TICK_TIMER1).empty());
    const std::vector<int> timer2 = marked_lines(scheduler_tick_marks, TICK_TIMER2);
    ASSERT_EQ(timer2.size(), 17u);
    EXPECT_EQ(timer2.front(), 30);
    EXPECT_EQ(sound.audio_left_count, 0u);  // a frame's sample counts start from zero
}

// A 68000 that jumps where no code can be, or that runs off an empty cartridge (all ones: an
// unimplemented instruction whose vector in RAM is all ones too), stops for good; the first
// frame that finds it so says where, once per start.
TEST_F(CartridgeFrames, A68000StoppedWhereNoCodeCanBeIsReportedOncePerStart) {
    const struct { std::vector<uint8_t> code; const char* message; } cases[] = {
        {{0x4E, 0xF9, 0x00, 0xF0, 0x00, 0x00}, "68000 stopped at 00F00000: no code can be there"},  // jmp $F00000
        {{}, "68000 stopped at 00FFFFFF: no code can be there"},
    };
    for (const auto& c : cases) {
        std::vector<uint8_t> image(0x2000, 0);
        image.insert(image.end(), c.code.begin(), c.code.end());
        vemo_config config = config_for("cart_frame_counter");
        std::snprintf(config.rom_path, sizeof config.rom_path, "%s", write_file((save.parent_path() / "stop.j64").string(), image).c_str());
        for (int start = 0; start < 2; ++start) {
            ASSERT_EQ(vemo_init(&config), 1) << vemo_get_error_string();
            run_frames(1);
            EXPECT_TRUE(logged(c.message));
            clear_message();
            run_frames(1);
            EXPECT_STREQ(vemo_get_error_string(), "");
        }
    }
}

TEST_F(CartridgeFrames, RunFrameBeforeInitOrAfterAFailedStartIsRefused) {
    const char* refused = "vemo_run_frame: the machine is not initialised.\n";
    vemo_shutdown();
    EXPECT_EQ(vemo_run_frame(), 0);
    EXPECT_STREQ(vemo_get_error_string(), refused);
    vemo_config missing{};
    std::snprintf(missing.rom_path, sizeof missing.rom_path, "/nonexistent/cartridge.j64");
    EXPECT_EQ(vemo_init(&missing), 0);
    EXPECT_EQ(vemo_run_frame(), 0);
    EXPECT_STREQ(vemo_get_error_string(), refused);
}

}  // namespace
