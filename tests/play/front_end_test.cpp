// The two front-ends run as a player runs them: vemo-play in a window under Xvfb with SDL's
// dummy sound, the libretro core loaded by Debian's RetroArch under Xvfb; both must show the
// picture vemo-run makes of the same frame. The libretro core is also driven directly, as a
// front-end would (libretro_test.cpp).
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <vector>

#include "support/temp_files.h"
#include "tools/png_read.h"

namespace {

namespace fs = std::filesystem;

const std::string bin_dir = VEMO_BIN_DIR;
const std::string program_dir = VEMO_PROGRAM_DIR;

// Single-quoted for the shell (the test paths hold no quote).
std::string arg(const fs::path& path) { return std::string(1, '\'').append(path.string()).append(1, '\''); }

struct command_result {
    int status;
    std::string output;
};

// Runs a shell command, stdout and stderr together.
command_result run(const std::string& command) {
    command_result result{-1, ""};
    FILE* pipe = popen((command + " 2>&1").c_str(), "r");
    if (!pipe) return result;
    char buffer[4096];
    for (size_t n; (n = std::fread(buffer, 1, sizeof buffer, pipe)) > 0;) result.output.append(buffer, n);
    const int status = pclose(pipe);
    result.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return result;
}

void write(const fs::path& path, const std::vector<uint8_t>& bytes) {
    fs::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary).write(reinterpret_cast<const char*>(bytes.data()),
                                                static_cast<std::streamsize>(bytes.size()));
}

// A program as a cartridge: the 0x2000-byte header, then the code that starts at 0x802000.
fs::path cartridge(const std::string& program, const fs::path& path) {
    std::vector<uint8_t> image = test_support::read_file(program_dir + "/" + program + ".bin");
    image.insert(image.begin(), 0x2000, 0);
    write(path, image);
    return path;
}

// An X server of its own for each run; the numbers tried start apart for concurrent tests.
std::string under_xvfb(const std::string& command) {
    return "xvfb-run -a -n " + std::to_string(100 + getpid() % 5000) + " " + command;
}

// What the sanitized programs need when another program loads them, and without leak checks
// of the X and sound libraries the programs use.
std::string sanitizer_env(bool preload) {
#ifdef VEMO_SANITIZER_PRELOAD
    return std::string("ASAN_OPTIONS=detect_leaks=0 ") + (preload ? "LD_PRELOAD=" VEMO_SANITIZER_PRELOAD " " : "");
#else
    (void)preload;
    return "";
#endif
}

class FrontEnds : public testing::Test {
protected:
    fs::path dir = test_support::scratch_dir() / testing::UnitTest::GetInstance()->current_test_info()->name();
    void SetUp() override { fs::create_directories(dir); }
    void TearDown() override { fs::remove_all(dir); }

    // vemo-run's picture of the last of `frames` frames of a cartridge.
    rgb_picture vemo_run_picture(const fs::path& image, int frames) {
        const fs::path png = dir / "vemo-run.png";
        const command_result r = run(arg(bin_dir + "/vemo-run") + " " + arg(image) + " --frames " +
                                     std::to_string(frames) + " --png " + arg(png));
        EXPECT_EQ(r.status, 0) << r.output;
        return read_png(png.string());
    }
    command_result play(const std::string& arguments) {
        return run(sanitizer_env(false) + "SDL_AUDIODRIVER=dummy " +
                   under_xvfb(arg(bin_dir + "/vemo-play") + " " + arguments));
    }
};

// The test pattern's background and one pixel of each object.
void expect_test_pattern(const rgb_picture& p) {
    ASSERT_EQ(p.width, 320);
    ASSERT_EQ(p.height, 240);
    EXPECT_EQ(pixel(p, 0, 0), 0x3E403Au);
    EXPECT_EQ(pixel(p, 33, 16), 0xFF0000u);
    EXPECT_EQ(pixel(p, 129, 120), 0x0000FFu);
}

TEST_F(FrontEnds, PlayerShowsTheFrameVemoRunShows) {
    const fs::path game = cartridge("test_pattern", dir / "pattern.j64");
    const command_result r = play(arg(game) + " --frames 20 --screenshot " + arg(dir / "shot.png"));
    ASSERT_EQ(r.status, 0) << r.output;
    const rgb_picture shot = read_png((dir / "shot.png").string());
    expect_test_pattern(shot);
    EXPECT_EQ(shot.pixels, vemo_run_picture(game, 20).pixels);
}

// pad_probe.s plays frame n as 346 samples of n (left) and -n (right) at 20774 Hz. SDL's disk
// driver keeps what the device played: each frame's value for 1/60 s of the device's 48000 Hz.
TEST_F(FrontEnds, PlayerPlaysTheProgramsSoundAtTheDevicesRate) {
    const fs::path game = cartridge("pad_probe", dir / "probe.j64"), played = dir / "played.raw";
    const command_result r = run(sanitizer_env(false) + "SDL_AUDIODRIVER=disk SDL_DISKAUDIOFILE=" + arg(played) + " " +
                                 under_xvfb(arg(bin_dir + "/vemo-play") + " " + arg(game) + " --frames 30"));
    ASSERT_EQ(r.status, 0) << r.output;
    const std::vector<uint8_t> bytes = test_support::read_file(played.string());
    std::map<int, int> played_for;  // value: sample frames
    for (size_t i = 0; i + 4 <= bytes.size(); i += 4) {
        const int16_t left = static_cast<int16_t>(bytes[i] | bytes[i + 1] << 8);
        const int16_t right = static_cast<int16_t>(bytes[i + 2] | bytes[i + 3] << 8);
        ASSERT_EQ(left, -right) << "sample frame " << i / 4;
        ASSERT_TRUE(left >= 0 && left <= 30) << left;
        ++played_for[left];
    }
    // The device plays behind the machine by the few frames the queue holds.
    ASSERT_GE(played_for.rbegin()->first, 20);
    for (int frame = 2; frame < played_for.rbegin()->first; ++frame)
        EXPECT_NEAR(played_for[frame], 800, 5) << "frame " << frame;
}

// pad_probe.s shows its controller reads as RGB 16 pixels on row 0: the 16-bit values back
// from the 8-bit channels, whose top bits are the fields.
std::vector<uint16_t> probe_reads(const rgb_picture& p) {
    std::vector<uint16_t> reads;
    for (int x = 0; x < 8 && x < p.width; ++x) {
        const uint32_t c = pixel(p, x, 0);
        reads.push_back(static_cast<uint16_t>(((c >> 19) & 0x1F) << 11 | ((c >> 3) & 0x1F) << 6 | ((c >> 10) & 0x3F)));
    }
    return reads;
}

// Keys held in the window reach the program: Up and Z (pad up, A) and 5 (keypad 5), pressed
// once the window is there and held until the last frame.
TEST_F(FrontEnds, PlayerPassesHeldKeysToTheProgram) {
    const fs::path game = cartridge("pad_probe", dir / "probe.j64"), script = dir / "hold.sh";
    std::ofstream(script) << arg(bin_dir + "/vemo-play") << " " << arg(game) << " --frames 120 --screenshot "
                          << arg(dir / "held.png") << " &\n"
                          << "window=$(xdotool search --sync --name 'vemo-play: probe.j64' | head -1)\n"
                          << "xdotool keydown --window \"$window\" Up z 5\n"
                          << "wait $!\n";
    const command_result r = run(sanitizer_env(false) + "SDL_AUDIODRIVER=dummy " + under_xvfb("sh " + arg(script)));
    ASSERT_EQ(r.status, 0) << r.output;
    const std::vector<uint16_t> released = probe_reads(vemo_run_picture(game, 3));
    ASSERT_EQ(released.size(), 8u);
    // Reads in pairs (joystick word, buttons word) for rows E, D, B, 7; a pressed control reads
    // 0: row E up (bit 8) and A (buttons bit 1), row B keypad 5 (bit 10).
    std::vector<uint16_t> expected = released;
    expected[0] &= ~(1u << 8);
    expected[1] &= ~(1u << 1);
    expected[4] &= ~(1u << 10);
    EXPECT_EQ(probe_reads(read_png((dir / "held.png").string())), expected);
}

// The EEPROM lives beside the image unless --eeprom names another file; every start of the
// counter program adds one to its first word and saves.
TEST_F(FrontEnds, PlayerKeepsTheEepromBesideTheImage) {
    const fs::path game = cartridge("cart_eeprom_counter", dir / "games" / "counter.j64");
    for (int run = 1; run <= 2; ++run) ASSERT_EQ(play(arg(game) + " --frames 2").status, 0);
    std::vector<uint8_t> saved = test_support::read_file((dir / "games" / "counter.eeprom").string());
    ASSERT_EQ(saved.size(), 128u);
    EXPECT_EQ(saved[0] | saved[1] << 8, 2);
    ASSERT_EQ(play(arg(game) + " --frames 2 --eeprom " + arg(dir / "other.eep")).status, 0);
    saved = test_support::read_file((dir / "other.eep").string());
    ASSERT_EQ(saved.size(), 128u);
    EXPECT_EQ(saved[0] | saved[1] << 8, 1);
}

TEST_F(FrontEnds, PlayerRefusesBadInputWithAMessageAndPrintsItsKeys) {
    const fs::path game = cartridge("test_pattern", dir / "pattern.j64");
    const std::string missing = (dir / "missing.j64").string();
    const fs::path keys = dir / "bad-keys.conf", good_keys = dir / "keys.conf", too_big = dir / "huge.j64";
    write(keys, {'u', 'p', ' ', '=', ' ', 'Q', 'Q', '\n'});
    write(good_keys, {'u', 'p', '=', 'W', '\n'});
    // A cartridge image above the 6 MB of cartridge space: the core refuses it.
    write(too_big, std::vector<uint8_t>(0x600001, 0));
    const struct { std::string arguments; int status; std::string message; } cases[] = {
        {arg(missing), 2, "cannot read cartridge image '" + missing + "': No such file"},
        {arg(dir), 2, "is a directory, not a cartridge image"},
        {"", 2, "give a cartridge image"},
        {arg(game) + " --keys " + arg(keys), 2, keys.string() + ":1: unknown key or button 'QQ'"},
        {arg(game) + " --frames -3", 2, "--frames"},
        {arg(too_big), 1, "the core did not start: "},
        // Not failures: the bindings printed, the defaults and those of a key file.
        {"--help", 0, "quit = Escape"},
        {"--keys " + arg(good_keys) + " --print-keys", 0, "up = W  "},
    };
    for (const auto& c : cases) {
        const command_result r = play(c.arguments + " --frames 1");
        EXPECT_EQ(r.status, c.status) << c.arguments << "\n" << r.output;
        EXPECT_NE(r.output.find(c.message), std::string::npos) << c.arguments << "\n" << r.output;
    }
}

TEST_F(FrontEnds, RetroArchShowsTheFrameVemoRunShows) {
    const fs::path game = cartridge("test_pattern", dir / "pattern.j64");
    const fs::path home = dir / "home", config = dir / "retroarch.cfg", shot = dir / "retroarch.png";
    fs::create_directories(home);
    // A real video driver in a window, no sound; the screenshot is the core's own frame,
    // unscaled and without notifications.
    std::ofstream(config) << "video_driver = \"gl\"\naudio_driver = \"null\"\ninput_driver = \"x\"\n"
                             "menu_driver = \"null\"\nvideo_gpu_screenshot = \"false\"\nvideo_scale = \"1\"\n"
                             "config_save_on_exit = \"false\"\nhistory_list_enable = \"false\"\n";
    const command_result r = run("HOME=" + arg(home) + " XDG_CONFIG_HOME=" + arg(home / ".config") +
                                 " DBUS_FATAL_WARNINGS=0 " + sanitizer_env(true) +
                                 under_xvfb("retroarch --config=" + arg(config) + " -L " +
                                            arg(std::string(VEMO_LIB_DIR) + "/vemocore_libretro.so") + " " +
                                            arg(game) + " --max-frames=30 --max-frames-ss --max-frames-ss-path=" +
                                            arg(shot)));
    ASSERT_EQ(r.status, 0) << r.output;
    // RetroArch exits 0 even when it wrote no screenshot.
    ASSERT_TRUE(fs::exists(shot)) << r.output;
    const rgb_picture picture = read_png(shot.string());
    expect_test_pattern(picture);
    EXPECT_EQ(picture.pixels, vemo_run_picture(game, 30).pixels);
}

}  // namespace
