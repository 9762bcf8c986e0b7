// Start-up, shut-down and the records that cross the library boundary, as a front-end sees
// them: where images and reset vectors land, every refused input with its message, the
// frame-information record and the controller slots.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "core/bus.h"
#include "core/host.h"
#include "core/memory.h"
#include "core/video.h"
#include "support/temp_files.h"
#include "vemocore.h"

namespace {

using test_support::write_file;

vemo_config cartridge_config(const std::string& rom) {
    vemo_config c{};
    std::snprintf(c.rom_path, sizeof c.rom_path, "%s", rom.c_str());
    std::snprintf(c.eeprom_path, sizeof c.eeprom_path, "%s",
                  (test_support::scratch_dir() / "absent.eeprom").c_str());
    return c;
}

vemo_config program_config(const std::string& program, int32_t load_address) {
    vemo_config c = cartridge_config(program);
    c.load_program = 1;
    c.load_address = load_address;
    return c;
}

// An image whose bytes count up from `first`, so placement and byte order are visible.
std::vector<uint8_t> counting_image(size_t size, uint8_t first = 0) {
    std::vector<uint8_t> v(size);
    for (size_t i = 0; i < size; ++i) v[i] = static_cast<uint8_t>(first + i);
    return v;
}

class Host : public ::testing::Test {
protected:
    void TearDown() override { vemo_shutdown(); }
    static uint32_t host32(const uint8_t* buf, uint32_t offset) {
        uint32_t v;
        std::memcpy(&v, buf + offset, 4);
        return v;
    }
};

TEST_F(Host, CartridgeIsPlacedAt8MbWithTheRestOfCartridgeSpaceFilled) {
    auto rom = write_file("small.j64", counting_image(0x1234, 0x40));
    auto config = cartridge_config(rom);
    ASSERT_EQ(vemo_init(&config), 1) << vemo_get_error_string();
    EXPECT_EQ(bus_read8(0x800000), 0x40);
    EXPECT_EQ(bus_read16(0x800002), 0x4243);
    EXPECT_EQ(bus_read8(0x801233), static_cast<uint8_t>(0x40 + 0x1233));
    EXPECT_EQ(bus_read8(0x801234), 0xFF);
    EXPECT_EQ(bus_read16(0xDFFEFE), 0xFFFF);
    // RAM starts as all ones apart from the reset vectors.
    EXPECT_EQ(bus_read32(0x000100), 0xFFFFFFFFu);
}

TEST_F(Host, ResetVectorsForEachStartMode) {
    auto rom = write_file("vectors.j64", counting_image(0x3000));

    auto cartridge = cartridge_config(rom);
    ASSERT_EQ(vemo_init(&cartridge), 1) << vemo_get_error_string();
    EXPECT_EQ(bus_read32(0), 0x001FFFFCu);
    EXPECT_EQ(bus_read32(4), 0x00802000u);
    EXPECT_EQ(host32(main_ram, 0), 0xFFFC001Fu);
    EXPECT_EQ(host32(main_ram, 4), 0x20000080u);
    vemo_shutdown();

    auto boot = write_file("boot.rom", counting_image(0x400, 0x10));
    auto with_boot = cartridge_config(rom);
    with_boot.use_boot_rom = 1;
    std::snprintf(with_boot.boot_rom_path, sizeof with_boot.boot_rom_path, "%s", boot.c_str());
    ASSERT_EQ(vemo_init(&with_boot), 1) << vemo_get_error_string();
    EXPECT_EQ(bus_read32(4), 0x00E00008u);
    EXPECT_EQ(host32(main_ram, 4), 0x000800E0u);
    EXPECT_EQ(bus_read32(0xE00000), 0x10111213u);  // the boot ROM image, in console order
    EXPECT_EQ(bus_read16(0xF20004), 0x1415);
    vemo_shutdown();

    auto program = write_file("program.bin", counting_image(16, 0xA0));
    auto prog = program_config(program, 0x4000);
    ASSERT_EQ(vemo_init(&prog), 1) << vemo_get_error_string();
    EXPECT_EQ(bus_read32(0), 0x001FFFFFu);  // the top of RAM, odd as the machine has it
    EXPECT_EQ(bus_read32(4), 0x00004000u);
    EXPECT_EQ(host32(main_ram, 0), 0xFFFF001Fu);
    EXPECT_EQ(bus_read8(0x4000), 0xA0);
    EXPECT_EQ(bus_read16(0x400E), 0xAEAF);
    EXPECT_EQ(bus_read8(0x4010), 0xFF);
}

TEST_F(Host, ProgramAtAddressZeroHasItsFirstLongsReplacedByTheVectors) {
    auto program = write_file("at-zero.bin", counting_image(12, 0x01));
    auto config = program_config(program, 0);
    ASSERT_EQ(vemo_init(&config), 1);
    EXPECT_EQ(bus_read32(0), 0x001FFFFFu);
    EXPECT_EQ(bus_read32(4), 0u);
    EXPECT_EQ(bus_read32(8), 0x090A0B0Cu);
}

TEST_F(Host, ImagesThatCannotBeReadAreRefusedWithTheirMessages) {
    const std::string missing = (test_support::scratch_dir() / "no-such-file").string();

    auto cartridge = cartridge_config(missing);
    EXPECT_EQ(vemo_init(&cartridge), 0);
    EXPECT_EQ(std::string(vemo_get_error_string()), "Couldn't load rom file " + missing + ".\n");
    vemo_shutdown();

    auto program = program_config(missing, 0x4000);
    EXPECT_EQ(vemo_init(&program), 0);
    EXPECT_EQ(std::string(vemo_get_error_string()), "Couldn't load bin file " + missing + ".\n");
    vemo_shutdown();

    auto rom = write_file("fine.j64", counting_image(64));
    auto boot = cartridge_config(rom);
    boot.use_boot_rom = 1;
    std::snprintf(boot.boot_rom_path, sizeof boot.boot_rom_path, "%s", missing.c_str());
    EXPECT_EQ(vemo_init(&boot), 0);
    EXPECT_EQ(std::string(vemo_get_error_string()), "Couldn't load boot rom file " + missing + "\n");
    vemo_shutdown();

    // A directory opens but cannot be read as an image.
    auto directory = cartridge_config(test_support::scratch_dir().string());
    EXPECT_EQ(vemo_init(&directory), 0);
    EXPECT_NE(std::string(vemo_get_error_string()).find("Couldn't load rom file"), std::string::npos);
}

TEST_F(Host, ImagesLargerThanTheirSpaceAreRefusedNamingBothSizes) {
    auto big_cart = write_file("big.j64", std::vector<uint8_t>(0x600001, 0x11));
    auto cartridge = cartridge_config(big_cart);
    EXPECT_EQ(vemo_init(&cartridge), 0);
    std::string message = vemo_get_error_string();
    EXPECT_NE(message.find(big_cart), std::string::npos) << message;
    EXPECT_NE(message.find("6291457"), std::string::npos) << message;
    EXPECT_NE(message.find("6291456"), std::string::npos) << message;
    vemo_shutdown();

    auto exact_cart = write_file("exact.j64", std::vector<uint8_t>(0x600000, 0x22));
    cartridge = cartridge_config(exact_cart);
    EXPECT_EQ(vemo_init(&cartridge), 1) << vemo_get_error_string();
    EXPECT_EQ(bus_read8(0xDFFFFF), 0x22);
    vemo_shutdown();

    // The program must fit between its load address and the end of the 2 MB RAM.
    auto program = write_file("program-0x101.bin", std::vector<uint8_t>(0x101, 0x33));
    auto fits = program_config(program, 0x1FFEFF);
    EXPECT_EQ(vemo_init(&fits), 1) << vemo_get_error_string();
    EXPECT_EQ(bus_read8(0x1FFFFF), 0x33);
    vemo_shutdown();
    auto too_high = program_config(program, 0x1FFF00);
    EXPECT_EQ(vemo_init(&too_high), 0);
    message = vemo_get_error_string();
    EXPECT_NE(message.find(program), std::string::npos) << message;
    EXPECT_NE(message.find("257"), std::string::npos) << message;
    EXPECT_NE(message.find("256"), std::string::npos) << message;
    vemo_shutdown();

    for (int32_t outside : {0x200000, -4}) {
        auto config = program_config(program, outside);
        EXPECT_EQ(vemo_init(&config), 0);
        EXPECT_NE(std::string(vemo_get_error_string()).find("outside"), std::string::npos);
        vemo_shutdown();
    }

    auto rom = write_file("fine.j64", counting_image(64));
    auto big_boot = write_file("big.rom", std::vector<uint8_t>(0x20002));
    auto boot = cartridge_config(rom);
    boot.use_boot_rom = 1;
    std::snprintf(boot.boot_rom_path, sizeof boot.boot_rom_path, "%s", big_boot.c_str());
    EXPECT_EQ(vemo_init(&boot), 0);
    message = vemo_get_error_string();
    EXPECT_NE(message.find(big_boot), std::string::npos) << message;
    EXPECT_NE(message.find("131074"), std::string::npos) << message;
    EXPECT_NE(message.find("131072"), std::string::npos) << message;
}

TEST_F(Host, PathFieldsWithoutTerminatingZeroAreRefused) {
    auto rom = write_file("fine.j64", counting_image(64));
    auto config = cartridge_config(rom);
    std::memset(config.eeprom_path, 'x', sizeof config.eeprom_path);
    EXPECT_EQ(vemo_init(&config), 0);
    EXPECT_NE(std::string(vemo_get_error_string()).find("eeprom_path"), std::string::npos);
    vemo_shutdown();

    config = cartridge_config(rom);
    std::memset(config.rom_path, 'y', sizeof config.rom_path);
    EXPECT_EQ(vemo_init(&config), 0);
    EXPECT_NE(std::string(vemo_get_error_string()).find("rom_path"), std::string::npos);
    vemo_shutdown();

    // The boot ROM path matters only when the boot ROM is used.
    config = cartridge_config(rom);
    std::memset(config.boot_rom_path, 'z', sizeof config.boot_rom_path);
    EXPECT_EQ(vemo_init(&config), 1) << vemo_get_error_string();
    vemo_shutdown();
    config.use_boot_rom = 1;
    EXPECT_EQ(vemo_init(&config), 0);
    EXPECT_NE(std::string(vemo_get_error_string()).find("boot_rom_path"), std::string::npos);
}

TEST_F(Host, MissingEepromFileLeavesTheImageZero) {
    auto rom = write_file("fine.j64", counting_image(64));
    auto config = cartridge_config(rom);
    ASSERT_EQ(vemo_init(&config), 1);
    for (uint32_t i = 0; i < 64; ++i) EXPECT_EQ(eeprom_image[i], 0) << i;
    EXPECT_STREQ(eeprom_file_path, config.eeprom_path);
}

TEST_F(Host, FrameInformationReportsBuffersAndVideoMode) {
    vemo_frame_info fresh{};
    std::memset(&fresh, 0x5A, sizeof fresh);
    auto rom = write_file("fine.j64", counting_image(64));
    auto config = cartridge_config(rom);
    ASSERT_EQ(vemo_init(&config), 1);
    vemo_get_frame_info(&fresh);
    for (int i = 0; i < 512; ++i) ASSERT_EQ(fresh.row_timing[i], 0) << i;
    EXPECT_EQ(fresh.frame_buffer, frame_buffer);
    EXPECT_EQ(fresh.frame_pitch, 1024);
    EXPECT_EQ(fresh.audio_left, audio_left);
    EXPECT_EQ(fresh.audio_right, audio_right);
    EXPECT_EQ(fresh.audio_left_count, 0u);
    EXPECT_EQ(fresh.audio_right_count, 0u);
    EXPECT_EQ(fresh.audio_rate, 0);
    EXPECT_EQ(fresh.x_offset, 50);  // HDB1 0 after start-up: 200 / 4

    struct {
        uint16_t hdb1, vmode;
        int32_t x_offset, color_mode, var_mode;
    } cases[] = {
        {0xA6, 0x0002, 17, 1, 0},   // RGB 24: half the clocks per pixel
        {0xA6, 0x0000, 8, 0, 0},    // (200 - 166) / 4
        {0xA6, 0x0106, 8, 3, 1},
        {0xD0, 0x0002, 0, 1, 0},    // never negative
        {0xD0, 0x06C1, 0, 0, 0},
        {0xFFFF, 0x0004, 0, 2, 0},  // HDB1 is unsigned
    };
    for (const auto& c : cases) {
        video.hdb1 = c.hdb1;
        video.vmode = c.vmode;
        vemo_frame_info info{};
        vemo_get_frame_info(&info);
        EXPECT_EQ(info.x_offset, c.x_offset) << std::hex << c.hdb1 << " " << c.vmode;
        EXPECT_EQ(info.color_mode, c.color_mode) << std::hex << c.vmode;
        EXPECT_EQ(info.var_mode, c.var_mode) << std::hex << c.vmode;
    }

    set_row_timing(3, 4, 1280);
    set_row_timing(256, 9, 9);  // outside the frame buffer: ignored
    set_row_timing(-1, 9, 9);
    vemo_frame_info info{};
    vemo_get_frame_info(&info);
    EXPECT_EQ(info.row_timing[6], 1280);
    EXPECT_EQ(info.row_timing[7], 4);
    EXPECT_EQ(info.row_timing[511], 0);
}

TEST_F(Host, ControllerSlotsStoreOnlyTheirTwoRecords) {
    vemo_joypad pad{};
    pad.pause = 1;
    pad.key_hash = 7;
    vemo_set_joypad_state(0, &pad);
    EXPECT_EQ(joypad_slots[0].pause, 1);
    EXPECT_EQ(joypad_slots[0].key_hash, 7);

    vemo_joypad other{};
    other.up = 1;
    vemo_set_joypad_state(1, &other);
    vemo_set_joypad_state(2, &pad);
    vemo_set_joypad_state(-1, &pad);
    vemo_set_joypad_state(0, nullptr);
    EXPECT_EQ(joypad_slots[1].up, 1);
    EXPECT_EQ(joypad_slots[1].pause, 0);
    EXPECT_EQ(joypad_slots[0].pause, 1);
    vemo_joypad clear{};
    vemo_set_joypad_state(0, &clear);
    vemo_set_joypad_state(1, &clear);
}

TEST_F(Host, ShutdownReleasesEverythingAndASecondCallDoesNothing) {
    auto rom = write_file("fine.j64", counting_image(64));
    auto config = cartridge_config(rom);
    ASSERT_EQ(vemo_init(&config), 1);
    vemo_shutdown();
    EXPECT_EQ(main_ram, nullptr);
    EXPECT_EQ(frame_buffer, nullptr);
    EXPECT_EQ(cry_add_cr, nullptr);
    vemo_shutdown();
    EXPECT_EQ(main_ram, nullptr);

    // Starting again without a shut-down replaces the machine.
    ASSERT_EQ(vemo_init(&config), 1);
    ASSERT_EQ(vemo_init(&config), 1);
    EXPECT_EQ(bus_read8(0x800001), 0x01);
    vemo_shutdown();

    // A failed start leaves its buffers for vemo_shutdown, and the machine can start again.
    auto missing = cartridge_config((test_support::scratch_dir() / "nothing").string());
    EXPECT_EQ(vemo_init(&missing), 0);
    vemo_shutdown();
    ASSERT_EQ(vemo_init(&config), 1);
    EXPECT_EQ(bus_read8(0x800001), 0x01);
}

TEST(Log, EachMessageReplacesTheLastAndLongOnesAreCut) {
    log_printf("first message %d\n", 1);
    log_printf("second\n");
    EXPECT_STREQ(vemo_get_error_string(), "second\n");
    std::string huge(10000, 'm');
    log_printf("%s", huge.c_str());
    EXPECT_EQ(std::strlen(vemo_get_error_string()), LOG_TEXT_SIZE - 1);
    EXPECT_EQ(vemo_get_error_string(), log_text);
}

}  // namespace
