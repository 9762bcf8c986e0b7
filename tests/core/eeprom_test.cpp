// The EEPROM driven the way a program drives it: bits clocked in through 0xF14800, clocked out
// through bit 0 of 0xF14000, the interface reset by reading 0xF15000; and the file it saves.
#include "chip_test_support.h"

namespace {

constexpr uint32_t WRITE = 0x140, READ = 0x180;  // 1 01 aaaaaa, 1 10 aaaaaa
constexpr uint32_t WRITE_ENABLE = 0x130;         // 1 00 11xxxx
constexpr uint32_t WRITE_DISABLE = 0x100;        // 1 00 00xxxx: saves the file

class Eeprom : public ChipTest {
protected:
    void SetUp() override {
        ChipTest::SetUp();
        save = test_dir() / "game.eep";
        std::snprintf(eeprom_file_path, PATH_SIZE, "%s", save.c_str());
    }
    static void send(uint32_t bits, int count) {
        for (int n = count - 1; n >= 0; --n) dsp_write16(EEPROM_DATA_IN, static_cast<uint16_t>((bits >> n) & 1));
    }
    static void command(uint32_t nine_bits) {
        dsp_read16(EEPROM_RESET);
        send(nine_bits, 9);
    }
    static uint16_t receive_word() {  // most significant bit first
        uint16_t word = 0;
        for (int n = 0; n < 16; ++n) word = static_cast<uint16_t>((word << 1) | (dsp_read16(JOYSTICK) & 1));
        return word;
    }

    std::filesystem::path save;
};

TEST_F(Eeprom, AWrittenWordReadsBackAndWriteDisableSavesAll128BytesLowByteFirst) {
    write_file(save.string(), std::vector<uint8_t>(200, 0x77));
    eeprom_image[5] = 0xFFFF;
    command(WRITE | 5);  // no write-enable needed; the old bits are cleared first
    send(0xBEEF, 16);
    command(READ | 5);
    EXPECT_EQ(receive_word(), 0xBEEF);
    EXPECT_EQ(dsp_read16(JOYSTICK) & 1, 1);  // idle again
    EXPECT_EQ(read_file(save).size(), 200u);  // writing a word saves nothing yet

    command(WRITE_DISABLE);
    std::vector<uint8_t> expected(128, 0);
    expected[10] = 0xEF;
    expected[11] = 0xBE;
    EXPECT_EQ(read_file(save), expected);
    EXPECT_FALSE(std::filesystem::exists(save.string() + ".tmp"));
    EXPECT_STREQ(log_text, "");

    eeprom_image[63] = 0x8001;  // long reads clock it through bit 16, byte reads not at all
    command(READ | 63);
    dsp_read8(JOYSTICK);
    EXPECT_EQ(dsp_read32(JOYSTICK) & 0x10000u, 0x10000u);
    EXPECT_EQ(dsp_read32(JOYSTICK) & 0x10000u, 0u);
}

TEST_F(Eeprom, AFailedSaveLeavesThePreviousFileAsItWasAndSaysWhy) {
    const std::vector<uint8_t> previous(128, 0x5A);
    write_file(save.string(), previous);
    std::filesystem::create_directory(save.string() + ".tmp");  // the new copy cannot be written
    eeprom_image[0] = 0x1234;
    command(WRITE_DISABLE);
    EXPECT_EQ(read_file(save), previous);
    EXPECT_TRUE(logged("Couldn't save eeprom file " + save.string()));

    for (const std::string& unusable : {std::string(), (save.parent_path() / "missing" / "x.eep").string()}) {
        clear_message();
        std::snprintf(eeprom_file_path, PATH_SIZE, "%s", unusable.c_str());
        command(WRITE_DISABLE);
        EXPECT_TRUE(logged("Couldn't save eeprom file")) << unusable;
    }
}

TEST_F(Eeprom, UnsupportedCommandsAreLoggedAndChangeNothing) {
    eeprom_image[5] = 0x4444;
    for (auto [bits, message] : {std::pair<uint32_t, const char*>{0x1C5, "Unknown eeprom command 01C5\n"},  // erase 5
                                 {0x120, "Unknown eeprom command 0120\n"},   // erase all
                                 {0x110, "Unknown eeprom command 0110\n"}}) {  // write all
        command(bits);
        EXPECT_STREQ(log_text, message);
    }
    EXPECT_EQ(eeprom_image[5], 0x4444);
    EXPECT_FALSE(std::filesystem::exists(save));

    clear_message();
    command(WRITE_ENABLE | 0xF);
    EXPECT_STREQ(log_text, "");
    send(READ | 5, 9);  // extended commands clear the register: a read decodes at once
    EXPECT_EQ(receive_word(), 0x4444);
}

TEST_F(Eeprom, TheCommandRegisterKeepsItsBitsUntilAResetAndReadsIgnoreDataIn) {
    eeprom_image[3] = 0xAAAA;
    eeprom_image[7] = 0x7777;
    command(READ | 3);
    EXPECT_EQ(receive_word(), 0xAAAA);
    send(READ | 4, 9);  // ORed with the first command: word 3 | 4 = 7
    EXPECT_EQ(receive_word(), 0x7777);

    command(0x000);  // no start bit
    EXPECT_STREQ(log_text, "Unknown eeprom command 0000\n");
    send(1, 1);  // the tenth bit lands at (8 - 9) mod 32 = bit 31
    EXPECT_STREQ(log_text, "Unknown eeprom command 80000000\n");

    command(READ | 3);  // 1010 ...
    EXPECT_EQ(dsp_read16(JOYSTICK) & 1, 1);
    send(0, 1);  // data clocked in during a read is logged and does not advance it
    EXPECT_STREQ(log_text, "Unknown eeprom mode: 1 !\n");
    EXPECT_EQ(dsp_read16(JOYSTICK) & 1, 0);  // the second bit, not the third
}

}  // namespace
