// Where the frame puts its events: DSP tick marks per line, the video-line interrupt, and the
// lines a part of a frame runs.
#include "chip_test_support.h"
#include "support/program_config.h"

namespace {

std::vector<int> placed(int32_t hz) {
    uint8_t marks[LINES_PER_FRAME] = {};
    scheduler_place_ticks(marks, scheduler_ticks_per_frame(hz), TICK_TIMER2);
    return marked_lines(marks, TICK_TIMER2);
}

TEST(TickPlacement, EachRateMarksItsLinesAtMostOncePerLine) {
    const std::vector<int> lines = placed(20774);  // serial clock 19: 346.2 a frame
    ASSERT_EQ(lines.size(), 346u);
    EXPECT_EQ(std::vector<int>(lines.begin(), lines.begin() + 6), (std::vector<int>{1, 3, 4, 6, 7, 9}));
    EXPECT_EQ(lines.back(), 524);

    EXPECT_EQ(placed(48000).size(), 525u);  // 800 a frame

    for (int32_t hz : {0, 1, 59, 60, -5}) EXPECT_TRUE(placed(hz).empty()) << hz;
    // Just above 60 Hz the second tick's line 516 is the only one inside the frame.
    EXPECT_EQ(placed(61), (std::vector<int>{516}));
}

class LineEnd : public ChipTest {};

// Each line's end raises the video-line interrupt on line VI and runs the video timer 844
// clocks: at 1000 Hz (26564 clocks, 31.5 lines) it fires on lines 31, 63, ...
TEST_F(LineEnd, VideoLineInterruptOnLineViAndVideoTimerFiringLines) {
    gpu_write16(INT1, (1u << IRQ_VIDEO_LINE) | (1u << IRQ_TIMER));
    gpu_write32(PIT0, 26590u << 16);
    video.vi = 100;
    std::vector<int> line_irq, timer_irq;
    for (int line = 0; line < LINES_PER_FRAME; ++line) {
        scheduler_end_line(static_cast<uint16_t>(line));
        if (video.int1_pending & (1u << IRQ_VIDEO_LINE)) line_irq.push_back(line);
        if (video.int1_pending & (1u << IRQ_TIMER)) timer_irq.push_back(line);
        gpu_write16(INT1, 0x0900 | (1u << IRQ_VIDEO_LINE) | (1u << IRQ_TIMER));  // acknowledge both
    }
    EXPECT_EQ(line_irq, std::vector<int>{100});
    ASSERT_EQ(timer_irq.size(), 16u);
    for (int n = 0; n < 16; ++n) EXPECT_EQ(timer_irq[n], 31 + 32 * n);
}

// A harness may run only a frame's first lines: they run from line 0 up to the end asked for,
// which is held inside the frame (more than 525 runs the whole frame, less than 0 none).
TEST(PartOfAFrame, RunsItsLinesFromZeroUpToTheEndHeldInsideTheFrame) {
    const auto dir = test_dir();
    const std::string program = write_file(dir / "idle.bin", std::vector<uint8_t>{0x60, 0xFE});  // bra.s *
    const vemo_config config = test_support::program_config(program);
    ASSERT_EQ(vemo_init(&config), 1) << vemo_get_error_string();
    gpu_write16(INT1, 1u << IRQ_VIDEO_LINE);
    video.vi = 100;
    const auto run = [](int end) {
        gpu_write16(INT1, 0x0100 | (1u << IRQ_VIDEO_LINE));  // acknowledge, keep enabled
        scheduler_begin_frame();
        EXPECT_TRUE(scheduler_run_lines(end)) << end;
        return (video.int1_pending & (1u << IRQ_VIDEO_LINE)) != 0;
    };
    EXPECT_FALSE(run(100));
    EXPECT_EQ(video.vc, 99);
    EXPECT_TRUE(run(101));
    EXPECT_TRUE(run(100000));
    EXPECT_EQ(video.vc, LINES_PER_FRAME - 1);
    video.vc = 7;
    EXPECT_FALSE(run(-3));
    EXPECT_EQ(video.vc, 7);
    vemo_shutdown();
}

}  // namespace
