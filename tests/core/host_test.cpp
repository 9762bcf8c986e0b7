// Start-up, shut-down and the records that cross the library boundary, as a front-end sees
// them: where images and reset vectors land, every refused input with its message, the
// frame-information record and the controller slots.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <cstring>
#include <optional>
#include <string>
#include <vector>

#include "core/bus.h"
#include "core/cdrom.h"
#include "core/host.h"
#include "core/memory.h"
#include "core/sound.h"
#include "core/video.h"
#include "objproc/objproc.h"
#include "support/temp_files.h"
#include "vemocore.h"

namespace {

using test_support::write_file;

vemo_config make_config(const std::string& rom, std::optional<int32_t> program_address = {},
                        const std::string& boot = "") {
    vemo_config c{};
    std::snprintf(c.rom_path, sizeof c.rom_path, "%s", rom.c_str());
    std::snprintf(c.eeprom_path, sizeof c.eeprom_path, "%s",
                  (test_support::scratch_dir() / "absent.eeprom").c_str());
    if (program_address) {
        c.load_program = 1;
        c.load_address = *program_address;
    }
    if (!boot.empty()) {
        c.use_boot_rom = 1;
        std::snprintf(c.boot_rom_path, sizeof c.boot_rom_path, "%s", boot.c_str());
    }
    return c;
}

// An image whose bytes count up from `first`, so placement and byte order are visible.
std::string counting_image(const std::string& name, size_t size, uint8_t first = 0) {
    std::vector<uint8_t> v(size);
    for (size_t i = 0; i < size; ++i) v[i] = static_cast<uint8_t>(first + i);
    return write_file(name, v);
}

const std::string missing = (test_support::scratch_dir() / "no-such-file").string();

class Host : public ::testing::Test {
protected:
    void TearDown() override { vemo_shutdown(); }
    // Starts a machine that must be refused and returns its message.
    static std::string refusal(const vemo_config& config) {
        EXPECT_EQ(vemo_init(&config), 0);
        std::string message = vemo_get_error_string();
        vemo_shutdown();
        return message;
    }
    static uint32_t host32(uint32_t offset) {
        uint32_t v;
        std::memcpy(&v, main_ram + offset, 4);
        return v;
    }
};

TEST_F(Host, ImagesAndResetVectorsLandWhereEachStartModePutsThem) {
    auto rom = counting_image("small.j64", 0x1234, 0x40);
    auto cartridge = make_config(rom);
    ASSERT_EQ(vemo_init(&cartridge), 1) << vemo_get_error_string();
    EXPECT_EQ(bus_read16(0x800002), 0x4243);
    EXPECT_EQ(bus_read8(0x801233), static_cast<uint8_t>(0x40 + 0x1233));
    EXPECT_EQ(bus_read8(0x801234), 0xFF);  // the rest of cartridge space, and RAM, read all ones
    EXPECT_EQ(bus_read32(0x000100), 0xFFFFFFFFu);
    EXPECT_EQ(host32(0), 0xFFFC001Fu);     // stack 0x001FFFFC, start in the cartridge
    EXPECT_EQ(host32(4), 0x20000080u);
    for (uint32_t i = 0; i < 64; ++i) ASSERT_EQ(eeprom_image[i], 0) << i;  // no EEPROM file
    EXPECT_STREQ(eeprom_file_path, cartridge.eeprom_path);
    vemo_shutdown();

    auto with_boot = make_config(rom, {}, counting_image("boot.rom", 0x400, 0x10));
    ASSERT_EQ(vemo_init(&with_boot), 1) << vemo_get_error_string();
    EXPECT_EQ(bus_read32(4), 0x00E00008u);
    EXPECT_EQ(bus_read32(0xE00000), 0x10111213u);
    EXPECT_EQ(bus_read16(0xF20004), 0x1415);
    vemo_shutdown();

    auto program = make_config(counting_image("program.bin", 16, 0xA0), 0x4000);
    ASSERT_EQ(vemo_init(&program), 1) << vemo_get_error_string();
    EXPECT_EQ(host32(0), 0xFFFF001Fu);  // the top of RAM, odd as the machine has it
    EXPECT_EQ(bus_read32(4), 0x00004000u);
    EXPECT_EQ(bus_read16(0x400E), 0xAEAF);
    EXPECT_EQ(bus_read8(0x4010), 0xFF);
    EXPECT_STREQ(vemo_get_error_string(), "");
    vemo_shutdown();

    // At address 0 the vectors replace the program's first two longs, and the start says so.
    auto at_zero = make_config(counting_image("at-zero.bin", 12, 0x01), 0);
    ASSERT_EQ(vemo_init(&at_zero), 1);
    EXPECT_EQ(bus_read32(4), 0u);
    EXPECT_EQ(bus_read32(8), 0x090A0B0Cu);
    EXPECT_EQ(std::string(vemo_get_error_string()),
              "Program image " + std::string(at_zero.rom_path) +
                  " at load address 00000000 lies under the 68000's reset vectors (addresses 0 to 7): "
                  "its bytes there are replaced by them.\n");
}

TEST_F(Host, ImagesThatCannotBeReadAreRefusedWithTheirMessages) {
    auto rom = counting_image("fine.j64", 64);
    EXPECT_EQ(refusal(make_config(missing)), "Couldn't load rom file " + missing + ".\n");
    EXPECT_EQ(refusal(make_config(missing, 0x4000)), "Couldn't load bin file " + missing + ".\n");
    EXPECT_EQ(refusal(make_config(rom, {}, missing)), "Couldn't load boot rom file " + missing + "\n");
}

// A FIFO, a device or a directory given for any file is refused at once, and left as it is.
TEST_F(Host, FilesThatAreNotRegularAreRefusedWithoutWaitingOnThem) {
    const auto fifo = (test_support::scratch_dir() / "pipe").string();
    const auto device = (test_support::scratch_dir() / "null").string();  // a second /dev/null
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    ASSERT_EQ(mknod(device.c_str(), S_IFCHR | 0666, makedev(1, 3)), 0);
    const std::string directory = test_support::scratch_dir().string(), rom = counting_image("fine.j64", 64);
    auto with_eeprom = [&](const std::string& path) {
        auto c = make_config(rom);
        std::snprintf(c.eeprom_path, sizeof c.eeprom_path, "%s", path.c_str());
        return c;
    };
    const struct { vemo_config config; std::string message; } cases[] = {
        {make_config(fifo), "Cartridge image " + fifo + " is a FIFO, not a regular file.\n"},
        {make_config(fifo, 0x4000), "Program image " + fifo + " is a FIFO, not a regular file.\n"},
        {make_config(rom, {}, fifo), "Boot ROM image " + fifo + " is a FIFO, not a regular file.\n"},
        {make_config(rom, {}, device), "Boot ROM image " + device + " is a character device, not a regular file.\n"},
        {make_config(directory), "Cartridge image " + directory + " is a directory, not a regular file.\n"},
        {with_eeprom(fifo), "EEPROM file " + fifo + " is a FIFO, not a regular file.\n"},
        {with_eeprom(device), "EEPROM file " + device + " is a character device, not a regular file.\n"},
        {with_eeprom(directory), "EEPROM file " + directory + " is a directory, not a regular file.\n"},
    };
    alarm(20);  // a start that waits on the FIFO ends the test program
    for (const auto& c : cases) EXPECT_EQ(refusal(c.config), c.message);
    alarm(0);
    EXPECT_TRUE(std::filesystem::is_fifo(fifo));
    EXPECT_TRUE(std::filesystem::is_character_file(device));
}

TEST_F(Host, ImagesLargerThanTheirSpaceAreRefusedNamingTheFileAndBothSizes) {
    auto expect_sizes = [](const std::string& message, const std::string& file, const char* size,
                           const char* room) {
        for (const std::string& part : {file, std::string(size), std::string(room)})
            EXPECT_NE(message.find(part), std::string::npos) << message;
    };
    auto big_cart = write_file("big.j64", std::vector<uint8_t>(0x600001, 0x11));
    expect_sizes(refusal(make_config(big_cart)), big_cart, "6291457", "6291456");
    auto program = write_file("program.bin", std::vector<uint8_t>(0x101, 0x33));
    expect_sizes(refusal(make_config(program, 0x1FFF00)), program, "257", "256");
    auto big_boot = write_file("big.rom", std::vector<uint8_t>(0x20002));
    auto rom = counting_image("fine.j64", 64);
    expect_sizes(refusal(make_config(rom, {}, big_boot)), big_boot, "131074", "131072");
    for (int32_t outside : {0x200000, -4})
        EXPECT_NE(refusal(make_config(program, outside)).find("outside"), std::string::npos);

    // Images that exactly fill their space are taken.
    auto exact = make_config(write_file("exact.j64", std::vector<uint8_t>(0x600000, 0x22)));
    ASSERT_EQ(vemo_init(&exact), 1) << vemo_get_error_string();
    EXPECT_EQ(bus_read8(0xDFFFFF), 0x22);
    vemo_shutdown();
    auto fits = make_config(program, 0x1FFEFF);
    ASSERT_EQ(vemo_init(&fits), 1) << vemo_get_error_string();
    EXPECT_EQ(bus_read8(0x1FFFFF), 0x33);
}

TEST_F(Host, PathFieldsWithoutTerminatingZeroAreRefused) {
    auto rom = counting_image("fine.j64", 64);
    auto config = make_config(rom);
    std::memset(config.eeprom_path, 'x', sizeof config.eeprom_path);
    EXPECT_NE(refusal(config).find("eeprom_path"), std::string::npos);
    config = make_config(rom);
    std::memset(config.rom_path, 'y', sizeof config.rom_path);
    EXPECT_NE(refusal(config).find("rom_path"), std::string::npos);

    // The boot ROM path matters only when the boot ROM is used.
    config = make_config(rom);
    std::memset(config.boot_rom_path, 'z', sizeof config.boot_rom_path);
    EXPECT_EQ(vemo_init(&config), 1) << vemo_get_error_string();
    vemo_shutdown();
    config.use_boot_rom = 1;
    EXPECT_NE(refusal(config).find("boot_rom_path"), std::string::npos);
}

TEST_F(Host, FrameInformationReportsBuffersRowTimingAndVideoMode) {
    auto config = make_config(counting_image("fine.j64", 64));
    ASSERT_EQ(vemo_init(&config), 1);
    vemo_frame_info info;
    std::memset(&info, 0x5A, sizeof info);
    vemo_get_frame_info(&info);
    for (int i = 0; i < 512; ++i) ASSERT_EQ(info.row_timing[i], 0) << i;
    EXPECT_EQ(info.frame_buffer, frame_buffer);
    EXPECT_EQ(info.frame_pitch, 1024);
    EXPECT_EQ(info.audio_left, audio_left);
    EXPECT_EQ(info.audio_right, audio_right);
    EXPECT_EQ(info.m68k_pc, 0x802000u);

    struct { uint16_t hdb1, vmode; int32_t x_offset, color_mode, var_mode; } cases[] = {
        {0x00, 0x0000, 50, 0, 0},   // after start-up: 200 / 4
        {0xA6, 0x0002, 17, 1, 0},   // RGB 24 counts half the clocks per pixel
        {0xA6, 0x0106, 8, 3, 1},
        {0xD0, 0x0002, 0, 1, 0},    // never negative
        {0xFFFF, 0x0004, 0, 2, 0},  // HDB1 is unsigned
    };
    for (const auto& c : cases) {
        video.hdb1 = c.hdb1;
        video.vmode = c.vmode;
        vemo_get_frame_info(&info);
        EXPECT_EQ(info.x_offset, c.x_offset) << std::hex << c.hdb1 << " " << c.vmode;
        EXPECT_EQ(info.color_mode, c.color_mode) << std::hex << c.vmode;
        EXPECT_EQ(info.var_mode, c.var_mode) << std::hex << c.vmode;
    }

    set_row_timing(3, 4, 1280);
    set_row_timing(256, 9, 9);  // outside the frame buffer: ignored
    set_row_timing(-1, 9, 9);
    vemo_get_frame_info(&info);
    EXPECT_EQ(info.row_timing[6], 1280);
    EXPECT_EQ(info.row_timing[7], 4);
    EXPECT_EQ(info.row_timing[511], 0);
}

// A front-end in another language sees the records as bytes and words: the fields must sit at
// the interface's offsets, on 32-bit hosts (the Windows DLL) and, widened, on 64-bit hosts.
TEST_F(Host, RecordsAreReadAndWrittenAtTheirInterfaceOffsets) {
    const std::string program = counting_image("layout.bin", 16, 0x40);
    struct { uint32_t offset; int32_t value; } words[] = {{0xC00, 1}, {0xC04, 0x4000}};  // program mode
    std::vector<uint8_t> raw(3104);
    std::memcpy(raw.data(), program.c_str(), program.size() + 1);
    for (const auto& w : words) std::memcpy(&raw[w.offset], &w.value, 4);
    ASSERT_EQ(vemo_init(reinterpret_cast<const vemo_config*>(raw.data())), 1) << vemo_get_error_string();
    EXPECT_EQ(bus_read8(0x4000), 0x40);
    EXPECT_EQ(host32(4), 0x40000000u);  // start address 0x4000, word-swapped
    vemo_shutdown();
    // The boot ROM switch at 0xC18 and its path at 0x800 (a missing file, so refused).
    const int32_t on = 1;
    std::memcpy(&raw[0xC18], &on, 4);
    std::memcpy(&raw[0x800], missing.c_str(), missing.size() + 1);
    EXPECT_EQ(refusal(*reinterpret_cast<const vemo_config*>(raw.data())),
              "Couldn't load boot rom file " + missing + "\n");

    // vemo_joypad: word w is the w-th control of the controller's list.
    int32_t vemo_joypad::*const controls[21] = {
        &vemo_joypad::left,  &vemo_joypad::right, &vemo_joypad::up,    &vemo_joypad::down,
        &vemo_joypad::a,     &vemo_joypad::b,     &vemo_joypad::c,     &vemo_joypad::option,
        &vemo_joypad::pause, &vemo_joypad::key_1, &vemo_joypad::key_2, &vemo_joypad::key_3,
        &vemo_joypad::key_4, &vemo_joypad::key_5, &vemo_joypad::key_6, &vemo_joypad::key_7,
        &vemo_joypad::key_8, &vemo_joypad::key_9, &vemo_joypad::key_0, &vemo_joypad::key_star,
        &vemo_joypad::key_hash};
    for (int w = 0; w < 21; ++w) {
        int32_t pad_words[21] = {};
        pad_words[w] = 1;
        vemo_set_joypad_state(1, reinterpret_cast<const vemo_joypad*>(pad_words));
        for (int other = 0; other < 21; ++other)
            EXPECT_EQ(joypad_slots[1].*controls[other], other == w) << "word " << w << ", control " << other;
    }
    const vemo_joypad released{};
    vemo_set_joypad_state(1, &released);

    // vemo_frame_info: words 512 to 524 on a 32-bit host; the same order with 8-byte pointers
    // and natural alignment on a 64-bit one.
    auto config = make_config(counting_image("fine.j64", 64));
    ASSERT_EQ(vemo_init(&config), 1);
    video.hdb1 = 0xA6;
    video.vmode = 0x0106;
    const sound_registers saved = sound;
    sound.audio_left_count = 3;
    sound.audio_right_count = 5;
    sound.audio_rate = 32000;
    std::vector<uint8_t> info(sizeof(vemo_frame_info) + 8, 0xA5);
    vemo_get_frame_info(reinterpret_cast<vemo_frame_info*>(info.data()));
    sound = saved;
    constexpr bool wide = sizeof(void*) == 8;
    constexpr uint32_t ptr = sizeof(void*);
    struct { uint32_t offset, size; uint64_t value; const char* field; } fields[] = {
        {0x800, ptr, reinterpret_cast<uintptr_t>(frame_buffer), "frame_buffer"},
        {wide ? 0x808u : 0x804u, 4, 1024, "frame_pitch"},
        {wide ? 0x80Cu : 0x808u, 4, 8, "x_offset"},
        {wide ? 0x810u : 0x80Cu, 4, 0x802000, "m68k_pc"},
        {wide ? 0x81Cu : 0x818u, 4, 3, "color_mode"},
        {wide ? 0x820u : 0x81Cu, 4, 1, "var_mode"},
        {wide ? 0x828u : 0x820u, ptr, reinterpret_cast<uintptr_t>(audio_left), "audio_left"},
        {wide ? 0x830u : 0x824u, ptr, reinterpret_cast<uintptr_t>(audio_right), "audio_right"},
        {wide ? 0x838u : 0x828u, 4, 3, "audio_left_count"},
        {wide ? 0x83Cu : 0x82Cu, 4, 5, "audio_right_count"},
        {wide ? 0x840u : 0x830u, 4, 32000, "audio_rate"},
    };
    for (const auto& f : fields) {
        uint64_t value = 0;
        std::memcpy(&value, &info[f.offset], f.size);
        EXPECT_EQ(value, f.value) << f.field;
    }
    EXPECT_EQ(sizeof(vemo_frame_info), wide ? 2120u : 2100u);
    for (size_t i = sizeof(vemo_frame_info); i < info.size(); ++i) EXPECT_EQ(info[i], 0xA5) << "byte " << i;
}

TEST_F(Host, ControllerSlotsStoreOnlyTheirTwoRecords) {
    vemo_joypad pad{}, other{}, clear{};
    pad.pause = 1;
    other.up = 1;
    vemo_set_joypad_state(0, &pad);
    vemo_set_joypad_state(1, &other);
    vemo_set_joypad_state(2, &other);
    vemo_set_joypad_state(-1, &other);
    vemo_set_joypad_state(0, nullptr);
    EXPECT_EQ(joypad_slots[0].pause, 1);
    EXPECT_EQ(joypad_slots[0].up, 0);
    EXPECT_EQ(joypad_slots[1].up, 1);
    vemo_set_joypad_state(0, &clear);
    vemo_set_joypad_state(1, &clear);
}

TEST_F(Host, ShutdownReleasesEverythingAndTheMachineCanStartAgain) {
    auto config = make_config(counting_image("fine.j64", 64));
    ASSERT_EQ(vemo_init(&config), 1);
    ASSERT_EQ(vemo_init(&config), 1);  // a second start replaces the machine
    vemo_shutdown();
    EXPECT_EQ(main_ram, nullptr);
    EXPECT_EQ(frame_buffer, nullptr);
    vemo_shutdown();  // does nothing

    // A failed start leaves its buffers for vemo_shutdown, and the machine can start again.
    EXPECT_EQ(vemo_init(&config), 1);
    refusal(make_config(missing));
    ASSERT_EQ(vemo_init(&config), 1);
    EXPECT_EQ(bus_read8(0x800001), 0x01);
}

// What a program and a front-end see of a machine just started and after its first frame: the
// values of a first start in a fresh process.
void expect_first_start_machine(const char* how) {
    SCOPED_TRACE(how);
    EXPECT_STREQ(vemo_get_error_string(), "");
    EXPECT_EQ(op_line_buffer, nullptr);
    EXPECT_EQ(bus_read32(0xF01800), 0u);  // no row drawn yet
    EXPECT_EQ(bus_read16(JPIT2_READ), 0);  // timer 1's divider
    EXPECT_EQ(bus_read16(JOYBUTS), 0xFFFF);  // no controller row selected
    EXPECT_EQ(bus_read16(JOYSTICK) & 1, 1);  // the EEPROM idle
    EXPECT_EQ(bus_read16(0xDFFF0A), 0);      // the CD-ROM data word
    // Memories hold their fills: RAM 0xFF past the reset vectors, the cartridge 0xFF past the
    // image, local RAM and the CLUT zero.
    EXPECT_EQ(bus_read32(0x100), 0xFFFFFFFFu);
    EXPECT_EQ(bus_read32(0x1FFFF0), 0xFFFFFFFFu);
    EXPECT_EQ(bus_read32(0x802002), 0xFFFFFFFFu);
    EXPECT_EQ(bus_read32(0x803000), 0xFFFFFFFFu);
    EXPECT_EQ(bus_read32(0xF03000), 0u);
    EXPECT_EQ(bus_read32(0xF1B000), 0u);
    EXPECT_EQ(bus_read16(0xF00400), 0);
    EXPECT_EQ(vemo_run_frame(), 1) << vemo_get_error_string();
    vemo_frame_info info;
    vemo_get_frame_info(&info);
    for (int i = 0; i < 512; ++i) ASSERT_EQ(info.row_timing[i], 0) << i;  // the display is off
    for (uint32_t cell = 0; cell < FRAME_ROWS * FRAME_PITCH; ++cell)
        ASSERT_EQ(info.frame_buffer[cell], 0u) << cell;  // no row drawn
    EXPECT_EQ(info.audio_rate, 0);
    EXPECT_EQ(info.audio_left_count, 0u);
    EXPECT_EQ(info.color_mode, 0);
    EXPECT_EQ(info.x_offset, 50);
    EXPECT_EQ(info.m68k_pc, 0x802000u);
    EXPECT_STREQ(vemo_get_error_string(), "");
}

// A machine that changed everything it could: a larger cartridge, audio rate, timers,
// controller latch, a pending EEPROM read, the CD-ROM data word, every memory, a display that
// drew rows, and a message.
void dirty_the_machine(const vemo_config& config) {
    ASSERT_EQ(vemo_init(&config), 1) << vemo_get_error_string();
    bus_write32(0x100, 0);
    bus_write32(0x1FFFF0, 0);
    bus_write32(0xF03000, 0x12345678);
    bus_write32(0xF1B000, 0x12345678);
    bus_write16(0xF00400, 0x1234);
    bus_write16(BG, 0x8888);
    bus_write32(SCLK, 19);
    bus_write16(JPIT1, 5);
    bus_write16(JPIT2, 7);
    bus_write16(JOYSTICK, 0xE);
    bus_read16(0xF15000);
    for (int bit : {1, 1, 0, 0, 0, 0, 0, 0, 0}) bus_write16(0xF14800, static_cast<uint16_t>(bit));
    bus_write16(0xDFFF0A, 0x1234);
    bus_write16(VMODE, 0x0E86);
    bus_write16(VDB, 40);
    bus_write16(VDE, 100);
    bus_write16(HDE, 640);
    ASSERT_EQ(vemo_run_frame(), 1);
    bus_read8(0xF00000);  // logs
}

// Starting a machine again, after a shut-down or without one, after a refused start or none at
// all, gives the machine a first start gives; the controller slots keep the front-end's input.
TEST_F(Host, ARestartGivesExactlyTheMachineAFirstStartGives) {
    std::vector<uint8_t> idle(0x2002, 0);
    idle[0x2000] = 0x60;  // bra.s itself at 0x802000
    idle[0x2001] = 0xFE;
    const auto config = make_config(write_file("idle.j64", idle));
    std::vector<uint8_t> larger = idle;  // the same code, and more of the cartridge filled
    larger.resize(0x4000, 0x11);
    const auto dirty_config = make_config(write_file("larger.j64", larger));
    vemo_joypad pad{};
    pad.a = 1;  // row E would show it on JOYBUTS bit 1
    vemo_set_joypad_state(0, &pad);
    const struct { const char* how; void (*between)(); } cases[] = {
        {"shut down first", [] { vemo_shutdown(); }},
        {"started again without a shut-down", [] {}},
        {"after a start without configuration", [] { EXPECT_EQ(vemo_init(nullptr), 0); }},
        {"after a refused start", [] {
             auto bad = make_config(missing);
             EXPECT_EQ(vemo_init(&bad), 0);
         }},
    };
    for (const auto& c : cases) {
        dirty_the_machine(dirty_config);
        c.between();
        ASSERT_EQ(vemo_init(&config), 1) << vemo_get_error_string();
        expect_first_start_machine(c.how);
        EXPECT_EQ(joypad_slots[0].a, 1);
    }
    const vemo_joypad released{};
    vemo_set_joypad_state(0, &released);

    // A start without a configuration, or a refused one, leaves no machine to run.
    dirty_the_machine(config);
    EXPECT_EQ(vemo_init(nullptr), 0);
    EXPECT_EQ(vemo_run_frame(), 0);
}

TEST(Log, EachMessageReplacesTheLastAndLongOnesAreCut) {
    log_clear();
    log_printf("first message %d\n", 1);
    log_printf("second\n");
    EXPECT_STREQ(vemo_get_error_string(), "second\n");
    log_printf("%s", std::string(10000, 'm').c_str());
    EXPECT_EQ(std::strlen(vemo_get_error_string()), LOG_TEXT_SIZE - 1);
}

// A frame formats at most LOG_FRAME_LIMIT messages (a program that writes an unhandled register
// in a loop would spend its frames formatting them); the text then says more were dropped, and
// the next frame's messages show again. Messages dropped still count.
TEST(Log, AFramesMessagesPastTheLimitAreCountedNotShown) {
    log_clear();
    const uint32_t count_before = log_count;
    for (uint32_t n = 0; n < LOG_FRAME_LIMIT; ++n) log_printf("message %u\n", n);
    EXPECT_EQ(std::string(vemo_get_error_string()), "message " + std::to_string(LOG_FRAME_LIMIT - 1) + "\n");
    for (int n = 0; n < 5000; ++n) log_printf("later %d\n", n);
    EXPECT_EQ(std::string(vemo_get_error_string()),
              "More than " + std::to_string(LOG_FRAME_LIMIT) + " messages in one frame: the rest of this frame's are not shown.\n");
    EXPECT_EQ(log_count - count_before, LOG_FRAME_LIMIT + 5000);
    log_begin_frame();
    log_printf("next frame\n");
    EXPECT_STREQ(vemo_get_error_string(), "next frame\n");
    log_clear();
}

}  // namespace
