// Where the frame puts its events: DSP tick marks per line, the video-line interrupt.
#include "chip_test_support.h"
#include "core/scheduler.h"

namespace {

std::vector<int> marked_lines(const uint8_t* marks, uint8_t bit) {
    std::vector<int> lines;
    for (int line = 0; line < LINES_PER_FRAME; ++line)
        if (marks[line] & bit) lines.push_back(line);
    return lines;
}

TEST(TickPlacement, SerialClock19Gives346AudioLinesStartingOnLine1) {
    const float ticks = scheduler_ticks_per_frame(20774);
    EXPECT_FLOAT_EQ(ticks, 346.23334f);
    uint8_t marks[LINES_PER_FRAME] = {};
    scheduler_place_ticks(marks, ticks, TICK_AUDIO);
    const std::vector<int> lines = marked_lines(marks, TICK_AUDIO);
    ASSERT_EQ(lines.size(), 346u);
    EXPECT_EQ(std::vector<int>(lines.begin(), lines.begin() + 6), (std::vector<int>{1, 3, 4, 6, 7, 9}));
    EXPECT_EQ(lines.back(), 524);
    EXPECT_EQ(marks[0], 0);
}

TEST(TickPlacement, RatesAboveOnePerLineMarkEveryLineOnce) {
    const float ticks = scheduler_ticks_per_frame(48000);
    EXPECT_FLOAT_EQ(ticks, 800.00006f);
    uint8_t marks[LINES_PER_FRAME] = {};
    scheduler_place_ticks(marks, ticks, TICK_AUDIO);
    EXPECT_EQ(marked_lines(marks, TICK_AUDIO).size(), 525u);
    for (uint8_t mark : marks) EXPECT_EQ(mark, TICK_AUDIO);

    // The fastest timer (prescaler 1, divider 0) marks no more than every line.
    scheduler_place_ticks(marks, scheduler_ticks_per_frame(26591000 / 2), TICK_TIMER1);
    for (uint8_t mark : marks) EXPECT_EQ(mark, TICK_AUDIO | TICK_TIMER1);
}

TEST(TickPlacement, SixtyHertzOrSlowerMarksNothingInsideTheFrame) {
    uint8_t marks[LINES_PER_FRAME] = {};
    for (int32_t hz : {0, 1, 59, 60, -5}) scheduler_place_ticks(marks, scheduler_ticks_per_frame(hz), TICK_TIMER2);
    EXPECT_TRUE(marked_lines(marks, TICK_TIMER2).empty());

    // Just above 60 Hz the second tick's line 516 is the only one inside the frame.
    scheduler_place_ticks(marks, scheduler_ticks_per_frame(61), TICK_TIMER2);
    EXPECT_EQ(marked_lines(marks, TICK_TIMER2), (std::vector<int>{516}));
}

TEST(TickPlacement, ALineAsksForOneDspInterruptTimer2First) {
    EXPECT_EQ(scheduler_dsp_interrupt_for(TICK_AUDIO | TICK_TIMER1 | TICK_TIMER2), 3);
    EXPECT_EQ(scheduler_dsp_interrupt_for(TICK_AUDIO | TICK_TIMER1), 2);
    EXPECT_EQ(scheduler_dsp_interrupt_for(TICK_AUDIO), 1);
    EXPECT_EQ(scheduler_dsp_interrupt_for(0), 0);
}

class LineEnd : public ChipTest {};

TEST_F(LineEnd, VideoLineInterruptOnTheLineEqualToVi) {
    video.vi = 100;
    std::vector<int> lines;
    for (int line = 0; line < LINES_PER_FRAME; ++line) {
        scheduler_end_line(static_cast<uint16_t>(line));
        EXPECT_FALSE(level2_requested()) << "disabled, line " << line;
    }
    EXPECT_EQ(video.int1_pending, 0);

    gpu_write16(INT1, 1u << IRQ_VIDEO_LINE);
    for (int line = 0; line < LINES_PER_FRAME; ++line) {
        clear_requests();
        scheduler_end_line(static_cast<uint16_t>(line));
        if (level2_requested()) lines.push_back(line);
    }
    EXPECT_EQ(lines, (std::vector<int>{100}));
    EXPECT_EQ(video.int1_pending, 1u << IRQ_VIDEO_LINE);

    video.vi = 600;  // beyond the frame: never
    clear_requests();
    for (int line = 0; line < LINES_PER_FRAME; ++line) scheduler_end_line(static_cast<uint16_t>(line));
    EXPECT_FALSE(level2_requested());
}

}  // namespace
