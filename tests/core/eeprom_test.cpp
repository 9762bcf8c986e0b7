// The EEPROM driven the way a program drives it: bits clocked in through 0xF14800, clocked out
// through bit 0 of 0xF14000, the interface reset by reading 0xF15000; and the file it saves.
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>

#include <csignal>

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

// Writes of more than `bytes` to a file fail while it lives, for root too.
struct file_size_limit {
    rlimit saved{};
    explicit file_size_limit(rlim_t bytes) {
        std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &saved);
        rlimit limited = saved;
        limited.rlim_cur = bytes;
        setrlimit(RLIMIT_FSIZE, &limited);
    }
    ~file_size_limit() { setrlimit(RLIMIT_FSIZE, &saved); }
};

std::vector<std::string> folder_entries(const std::filesystem::path& dir) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(dir)) names.push_back(entry.path().filename());
    std::sort(names.begin(), names.end());
    return names;
}

// A failed save leaves the previous file and says why; the message stays at the front of the
// text, whatever is logged after it, until a save succeeds.
TEST_F(Eeprom, AFailedSaveLeavesThePreviousFileAndStaysInTheMessageUntilASaveSucceeds) {
    const std::vector<uint8_t> previous(128, 0x5A);
    write_file(save.string(), previous);
    eeprom_image[0] = 0x1234;
    {
        file_size_limit limit(64);
        command(WRITE_DISABLE);
    }
    EXPECT_EQ(read_file(save), previous);
    EXPECT_EQ(folder_entries(save.parent_path()), std::vector<std::string>{"game.eep"});  // nothing left behind
    const std::string failure = log_text;
    EXPECT_EQ(failure.rfind("Couldn't save eeprom file " + save.string() + ": writing ", 0), 0u) << failure;
    dsp_read16(0xF10010);  // an unhandled register: its message follows the failure
    EXPECT_EQ(std::string(log_text), failure + "DSP Read16 from 00F10010\n");
    dsp_read16(0xF10012);
    EXPECT_EQ(std::string(log_text), failure + "DSP Read16 from 00F10012\n");

    command(WRITE_DISABLE);  // this one succeeds: the failure is over
    EXPECT_EQ(read_file(save)[0], 0x34);
    EXPECT_STREQ(log_text, "DSP Read16 from 00F10012\n");

    for (const std::string& unusable : {std::string(), (save.parent_path() / "missing" / "x.eep").string()}) {
        clear_message();
        std::snprintf(eeprom_file_path, PATH_SIZE, "%s", unusable.c_str());
        command(WRITE_DISABLE);
        EXPECT_TRUE(logged("Couldn't save eeprom file")) << unusable;
    }
    clear_message();
}

// A save updates the file a symbolic link leads to and keeps its permissions; what is not a
// regular file is never replaced.
TEST_F(Eeprom, SavesFollowLinksKeepPermissionsAndLeaveDevicesAlone) {
    const auto dir = save.parent_path();
    const auto real = dir / "saves" / "real.eep";
    std::filesystem::create_directories(real.parent_path());
    write_file(real.string(), std::vector<uint8_t>(128, 0));
    std::filesystem::permissions(real, std::filesystem::perms(0640));
    std::filesystem::create_symlink("saves/real.eep", save);  // relative to the link's folder
    eeprom_image[1] = 0xBEEF;
    command(WRITE_DISABLE);
    EXPECT_TRUE(std::filesystem::is_symlink(save));
    EXPECT_EQ(read_file(real.string())[2], 0xEF);
    EXPECT_EQ(std::filesystem::status(real).permissions(), std::filesystem::perms(0640));
    EXPECT_EQ(folder_entries(real.parent_path()), std::vector<std::string>{"real.eep"});
    EXPECT_STREQ(log_text, "");

    const auto dangling = dir / "dangling.eep";  // a link to a save not written yet
    std::filesystem::create_symlink(dir / "first.eep", dangling);
    std::snprintf(eeprom_file_path, PATH_SIZE, "%s", dangling.c_str());
    command(WRITE_DISABLE);
    EXPECT_TRUE(std::filesystem::is_symlink(dangling));
    EXPECT_EQ(read_file((dir / "first.eep").string()).size(), 128u);

    // A device node of the scratch folder's own (a second /dev/null), a FIFO and a folder.
    const auto device = dir / "null.eep", fifo = dir / "pipe.eep";
    ASSERT_EQ(mknod(device.c_str(), S_IFCHR | 0666, makedev(1, 3)), 0);
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    for (const std::string& path : {device.string(), fifo.string(), dir.string()}) {
        clear_message();
        std::snprintf(eeprom_file_path, PATH_SIZE, "%s", path.c_str());
        command(WRITE_DISABLE);
        EXPECT_TRUE(logged("not a regular file, and is left as it is")) << path;
    }
    EXPECT_TRUE(std::filesystem::is_character_file(device));
    EXPECT_TRUE(std::filesystem::is_fifo(fifo));
    clear_message();
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
