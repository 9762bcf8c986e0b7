// vemo-run as a homebrew developer's workbench: scripted input, frame digests, chosen pictures,
// the run's sound, instruction traces, every core message and the progress line, on
// programs/joypad_echo.s, which shows, sounds and reports what the controller holds.
#include <pty.h>
#include <signal.h>
#include <sndfile.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <sstream>
#include <vector>

#include "support/program_config.h"
#include "vemo_run_fixture.h"
#include "vemocore.h"

namespace {

using vemo_run_test::arg;
using vemo_run_test::program_dir;
using vemo_run_test::test_pattern;
namespace fs = std::filesystem;

const std::string echo = "--program " + arg(program_dir + "/joypad_echo.bin");

class Workbench : public vemo_run_test::VemoRun {
protected:
    std::string script(const std::string& name, const std::string& text) {
        std::ofstream(dir / name) << text;
        return arg(dir / name);
    }
    // The lines of the last output that start with text, or hold it anywhere.
    std::vector<std::string> lines(const std::string& text, bool at_start = true) {
        std::vector<std::string> found;
        std::istringstream in(output);
        for (std::string line; std::getline(in, line);)
            if (at_start ? line.rfind(text, 0) == 0 : line.find(text) != std::string::npos) found.push_back(line);
        return found;
    }
    // "frame N hash" lines, each checked to end in 64 hexadecimal digits.
    std::vector<std::string> hashes(const std::string& arguments) {
        EXPECT_EQ(run(arguments + " --hash"), 0) << output;
        const std::vector<std::string> found = lines("frame ");
        for (const std::string& line : found) {
            const size_t at = line.find(" hash ");
            EXPECT_TRUE(at != std::string::npos && line.size() == at + 6 + 64 &&
                        line.find_first_not_of("0123456789abcdef", at + 6) == std::string::npos)
                << line;
        }
        return found;
    }
};

TEST_F(Workbench, TheSameImageSwitchesAndScriptGiveTheSameDigestsAndInputChangesThem) {
    const std::string a_from_3 = script("a.txt", "3-4 a  # A from frame 3\n");
    const std::string run_args = echo + " --frames 6 --input " + a_from_3;
    const std::vector<std::string> first = hashes(run_args);
    ASSERT_EQ(first.size(), 6u);
    EXPECT_EQ(output.find('\r'), std::string::npos);  // no progress line into a pipe
    EXPECT_EQ(hashes(run_args), first);
    // Tracing, listing messages and writing files observe the run without changing it.
    EXPECT_EQ(hashes(run_args + " --trace-68k 3000 --log --wav " + arg(dir / "s.wav") + " --png-at 2 --png-dir " + arg(dir)), first);

    // Another script: the same digests up to the frame where the input differs, then others.
    const std::vector<std::string> other = hashes(echo + " --frames 6 --input " + script("b.txt", "4 up\n"));
    ASSERT_EQ(other.size(), 6u);
    for (int i = 0; i < 4; ++i) EXPECT_EQ(other[i] == first[i], i < 2) << i;
    // Without a script nothing is held: frames 1 and 2 as above.
    const std::vector<std::string> none = hashes(echo + " --frames 6");
    EXPECT_EQ(none[1], first[1]);

    // --hash last: only the last frame's line, the same as in the full list.
    ASSERT_EQ(run(run_args + " --hash last"), 0);
    EXPECT_EQ(lines("frame "), std::vector<std::string>{first.back()});
}

TEST_F(Workbench, ChosenFramesAreSavedAsPicturesOfThoseFrames) {
    const std::string a = script("a.txt", "2 a\n");
    ASSERT_EQ(run(echo + " --frames 3 --input " + a + " --png-at 3,2 --png-dir " + arg(dir / "shots")), 0) << output;
    EXPECT_EQ(std::distance(fs::directory_iterator(dir / "shots"), fs::directory_iterator()), 2);
    for (int frame : {2, 3}) {
        const rgb_picture p = read_png((dir / "shots" / ("frame-00000" + std::to_string(frame) + ".png")).string());
        EXPECT_EQ(p.pixels, picture_of(echo + " --input " + a + " --frames " + std::to_string(frame)).pixels);
    }
    // A held shows in the bitmap's colour (top left) and nowhere else.
    const rgb_picture held = read_png((dir / "shots" / "frame-000002.png").string());
    const rgb_picture released = read_png((dir / "shots" / "frame-000003.png").string());
    EXPECT_NE(pixel(held, 0, 0), pixel(released, 0, 0));
    EXPECT_EQ(pixel(held, 16, 0), pixel(released, 16, 0));

    // Frames outside the run, and lists that are no lists, are refused before it starts.
    const struct { std::string list, message; } refused[] = {
        {"0", "--png-at: '0' is not a frame number"}, {"2,x", "--png-at: 'x' is not a frame number"},
        {"4", "--png-at: frame 4 is past the run's last frame, 3"}, {"2,", "--png-at: '2,' has an empty item"},
        {"''", "--png-at: give frame numbers"},
    };
    for (const auto& r : refused) {
        EXPECT_EQ(run(echo + " --frames 3 --png-at " + r.list), 2) << r.list;
        EXPECT_NE(output.find(r.message), std::string::npos) << output;
    }
}

TEST_F(Workbench, ScriptMistakesAndBadSwitchesStopTheRunBeforeItStarts) {
    const struct { std::string arguments, message; } cases[] = {
        {"--input " + script("s.txt", "1-10 a\n11 jump\n"), "s.txt:2: unknown control 'jump'"},
        {"--input " + arg(dir / "none.txt"), "cannot read input script"},
        {"--hash every3", "--hash: every3 not in {every,last}"},
        {"--trace-68k -1", "--trace-68k: Value -1 not in range"},
        {"--png-at 1 --every 2 --png-dir " + arg(dir), "excludes --png-at"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(run(echo + " " + c.arguments), 2) << c.arguments;
        EXPECT_NE(output.find(c.message), std::string::npos) << c.arguments << "\n" << output;
        EXPECT_EQ(output.find("frames run"), std::string::npos) << c.arguments;
    }
}

// A program's sound as the core reports it frame by frame, from the library itself.
std::vector<short> samples_of_first_frames(const std::string& program, int frames, bool audio = false) {
    vemo_config config = test_support::program_config(program_dir + "/" + program);
    config.audio_enable = audio;
    std::vector<short> pairs;
    EXPECT_EQ(vemo_init(&config), 1);
    for (int f = 0; f < frames && vemo_run_frame(); ++f) {
        vemo_frame_info info;
        vemo_get_frame_info(&info);
        EXPECT_EQ(info.audio_left_count, info.audio_right_count);
        EXPECT_EQ(info.audio_rate, 20774);
        for (uint32_t i = 0; i < info.audio_left_count; ++i)
            pairs.insert(pairs.end(), {info.audio_left[i], info.audio_right[i]});
    }
    vemo_shutdown();
    return pairs;
}

// The left and right samples of a WAV file, in pairs; the file must be 16-bit stereo at 20774 Hz.
std::vector<short> wav_samples(const fs::path& path) {
    SF_INFO format{};
    SNDFILE* file = sf_open(path.c_str(), SFM_READ, &format);
    EXPECT_NE(file, nullptr) << path;
    if (!file) return {};
    EXPECT_EQ(format.channels, 2);
    EXPECT_EQ(format.samplerate, 20774);
    EXPECT_EQ(format.format, SF_FORMAT_WAV | SF_FORMAT_PCM_16);
    std::vector<short> pairs(2 * format.frames);
    EXPECT_EQ(sf_readf_short(file, pairs.data(), format.frames), format.frames);
    sf_close(file);
    return pairs;
}

TEST_F(Workbench, TheWavFileHoldsBothChannelsOfEveryFrameAtTheReportedRate) {
    // Samples the 68000 writes: nothing held, the colour 0x0080 left and its negation right.
    ASSERT_EQ(run(echo + " --frames 3 --wav " + arg(dir / "s.wav")), 0) << output;
    const std::vector<short> echoed = wav_samples(dir / "s.wav");
    EXPECT_GT(echoed.size(), 300u);
    EXPECT_EQ(echoed, samples_of_first_frames("joypad_echo.bin", 3));
    EXPECT_EQ(echoed[0], 0x80);
    EXPECT_EQ(echoed[1], -0x80);

    // Samples the DSP writes with audio on: its count from 0x100 in both channels, every one.
    const std::string dsp = "--program " + arg(program_dir + "/dsp_counter.bin") + " --frames 3";
    ASSERT_EQ(run(dsp + " --audio --wav " + arg(dir / "dsp.wav")), 0) << output;
    const std::vector<short> counted = wav_samples(dir / "dsp.wav");
    EXPECT_GT(counted.size(), 1000u);
    EXPECT_EQ(counted, samples_of_first_frames("dsp_counter.bin", 3, true));
    for (size_t i = 0; i < counted.size(); ++i) ASSERT_EQ(counted[i], static_cast<short>(0x100 + i / 2)) << i;

    // Without audio the DSP does not run: the file is there, with no samples, and a note says so.
    ASSERT_EQ(run(dsp + " --wav " + arg(dir / "quiet.wav")), 0);
    EXPECT_NE(output.find("the run made no samples"), std::string::npos) << output;
    EXPECT_TRUE(wav_samples(dir / "quiet.wav").empty());
}

TEST_F(Workbench, TheLogListsEachMessageWithItsCountAndFirstFrame) {
    ASSERT_EQ(run(echo + " --frames 4 --log --input " + script("a.txt", "3 a\n")), 0) << output;
    // Rows of count, first frame and message, in the order the messages first came.
    const std::vector<std::string> listed = lines("DSP Write", false);
    ASSERT_EQ(listed.size(), 2u) << output;
    long counts[2], first_frames[2];
    char values[2][8];
    for (int i = 0; i < 2; ++i)
        ASSERT_EQ(std::sscanf(listed[i].c_str(), " %ld %ld DSP Write %7s to 00F1A1F0", &counts[i], &first_frames[i],
                              values[i]),
                  3)
            << listed[i];
    EXPECT_EQ(first_frames[0], 1);
    EXPECT_STREQ(values[0], "0001");
    EXPECT_EQ(first_frames[1], 3);
    EXPECT_STREQ(values[1], "00AA");
    // One message per pass of the program's loop, in every frame: counts in proportion.
    const long a = counts[0], b = counts[1];
    EXPECT_GT(a, 2 * b);
    EXPECT_LT(a, 4 * b);
    EXPECT_NE(output.find("core messages: 2 distinct, " + std::to_string(a + b) + " in all"), std::string::npos);
    EXPECT_EQ(output.find("core's last message"), std::string::npos);
}

TEST_F(Workbench, The68000TraceShowsTheFirstInstructionsWithTheirWordsAndWrites) {
    ASSERT_EQ(run(echo + " --frames 2 --trace-68k 4"), 0) << output;
    const std::vector<std::string> expected = {
        "68k 00004000  2E7C 001F F000            movea.l #$1FF000,a7            a7=001FF000",
        "68k 00004006  46FC 2700                 move.w #$2700,sr",
        "68k 0000400A  23FC 0000 0013 00F1 A150  move.l #$13,$F1A150.l",
        "68k 00004014  41F9 0001 0000            lea $10000.l,a0                a0=00010000",
    };
    EXPECT_EQ(lines("68k "), expected);
    // A trace longer than a slice goes on across slices until its count is used up.
    ASSERT_EQ(run(echo + " --frames 1 --trace-68k 2000"), 0);
    EXPECT_EQ(lines("68k 0").size(), 2000u);

    // The core's frame-counter cartridge takes its video-line interrupt in the first frame: a
    // line says so before the handler's first instruction, its MOVEM.
    std::ifstream program(program_dir + "/cart_frame_counter.bin", std::ios::binary);
    std::ofstream(dir / "counter.j64", std::ios::binary) << std::string(0x2000, '\0') << program.rdbuf();
    ASSERT_EQ(run(arg(dir / "counter.j64") + " --frames 1 --trace-68k 100000"), 0);
    const size_t taken = output.find("\n68k interrupt: level 2 taken\n68k 0080");
    ASSERT_NE(taken, std::string::npos) << output.substr(0, 2000);
    EXPECT_EQ(output.substr(taken + 42, 7), "  48E7 ") << output.substr(taken, 100);
}

TEST_F(Workbench, GpuAndDspTracesShowEachInstructionWithTheRegistersItWrote) {
    ASSERT_EQ(run("--program " + arg(program_dir + "/gpu_steps.bin") + " --frames 1 --trace-gpu 6"), 0) << output;
    const std::vector<std::string> gpu = {
        "gpu 00F03000  9801 1234 0000  movei #0x1234,r1           r1=00001234",
        "gpu 00F03006  0841            addq #2,r1                 r1=00001236",
        "gpu 00F03008  8822            move r1,r2                 r2=00001236",
        "gpu 00F0300A  0022            add r1,r2                  r2=0000246C",
        "gpu 00F0300C  D7E0            jr t,0xF0300C",
        "gpu 00F0300E  E400            nop",
    };
    EXPECT_EQ(lines("gpu "), gpu);
    EXPECT_TRUE(lines("68k ").empty());

    const std::string dsp = "--program " + arg(program_dir + "/dsp_counter.bin") + " --audio --frames 3";
    ASSERT_EQ(run(dsp + " --trace-dsp 1000"), 0) << output;
    const std::vector<std::string> traced = lines("dsp ");
    ASSERT_EQ(traced.size(), 1000u);
    const std::vector<std::string> first(traced.begin(), traced.begin() + 5);
    const std::vector<std::string> expected = {
        "dsp 00F1B000  9801 A148 00F1  movei #0xF1A148,r1         r1=00F1A148",
        "dsp 00F1B006  9802 A14C 00F1  movei #0xF1A14C,r2         r2=00F1A14C",
        "dsp 00F1B00C  9803 0100 0000  movei #0x100,r3            r3=00000100",
        "dsp 00F1B012  BC23            store r3,(r1)",
        "dsp 00F1B014  BC43            store r3,(r2)",
    };
    EXPECT_EQ(first, expected);
    // All three traces at once leave the run as it was.
    EXPECT_EQ(hashes(dsp + " --trace-dsp 5000 --trace-68k 500 --trace-gpu 10"), hashes(dsp));
}

// On a terminal a long run shows its progress; the pseudo-terminal stands in for one.
TEST_F(Workbench, ALongRunOnATerminalShowsItsProgress) {
    int terminal = -1;
    const pid_t child = forkpty(&terminal, nullptr, nullptr, nullptr);
    ASSERT_GE(child, 0);
    if (child == 0) {
        const std::string tool = std::string(VEMO_BIN_DIR) + "/vemo-run";
        const std::string image = program_dir + "/test_pattern.bin";
        execl(tool.c_str(), tool.c_str(), "--program", image.c_str(), "--frames", "10000000", nullptr);
        _exit(127);
    }
    std::string seen;
    const auto give_up = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    // A whole line: erased, then rewritten.
    auto shows_progress = [&] {
        const size_t line = seen.find("\r\x1b[Kframe ");
        return line != std::string::npos && seen.find(" of 10000000 (0%), ", line) != std::string::npos &&
               seen.find(" frames per second", line) != std::string::npos;
    };
    char buffer[512];
    while (!shows_progress() && std::chrono::steady_clock::now() < give_up) {
        const ssize_t n = read(terminal, buffer, sizeof buffer);
        if (n <= 0) break;
        seen.append(buffer, static_cast<size_t>(n));
    }
    kill(child, SIGTERM);
    waitpid(child, nullptr, 0);
    close(terminal);
    EXPECT_TRUE(shows_progress()) << seen;
}

}  // namespace

// Without an image, vemo-run runs the demo cartridge it carries: the same frames as the built
// demo image, pictures that move and the DSP's tone, and no scratch copy left behind.
TEST_F(Workbench, WithoutAnImageTheBuiltInDemoRuns) {
    const std::string demo = arg(std::string(VEMO_BIN_DIR) + "/demo.j64");
    const std::vector<std::string> built_in = hashes("--frames 4 --audio");
    ASSERT_EQ(built_in.size(), 4u);
    EXPECT_EQ(hashes(demo + " --frames 4 --audio"), built_in);
    EXPECT_NE(built_in[2].substr(built_in[2].size() - 64), built_in[3].substr(built_in[3].size() - 64));

    ASSERT_EQ(run("--frames 4 --audio --wav " + arg(dir / "demo.wav")), 0) << output;
    EXPECT_GT(fs::file_size(dir / "demo.wav"), 44u + 4 * 2 * 346);  // header and three frames of tone
    for (const auto& entry : fs::directory_iterator(fs::temp_directory_path()))
        EXPECT_EQ(entry.path().filename().string().rfind("vemo-run-demo-", 0), std::string::npos) << entry.path();
}
