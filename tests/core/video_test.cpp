// The graphics chip's registers as a program sees them, width by width.
#include "chip_test_support.h"

namespace {

class VideoRegisters : public ChipTest {};

TEST_F(VideoRegisters, HorizontalCountMovesOnWithEveryWordAndLongRead) {
    video.hc = 500;
    video.vc = 77;
    EXPECT_EQ(gpu_read16(HC), 500);
    EXPECT_EQ(gpu_read16(HC), 501);
    EXPECT_EQ(gpu_read32(HC), (502u << 16) | 77u);
    EXPECT_EQ(gpu_read16(HC), 503);
    EXPECT_EQ(gpu_read16(VC), 77);
    video.hc = 0xFFFF;
    gpu_read16(HC);
    EXPECT_EQ(gpu_read16(HC), 0);  // wraps at 16 bits
}

TEST_F(VideoRegisters, ObjectListPointerFromHalvesOrFromOneRotatedLong) {
    gpu_write16(OLP, 0x3456);
    gpu_write16(OLP + 2, 0x0012);
    EXPECT_EQ(gpu_read32(OLP), 0x00123456u);
    video.olp = 0;
    gpu_write32(OLP, 0x34560012);
    EXPECT_EQ(gpu_read32(OLP), 0x00123456u);
}

TEST_F(VideoRegisters, InterruptRegisterEnablesInItsLowHalfAndAcknowledgesInItsHigh) {
    gpu_write16(OBF, 1);  // source disabled: neither recorded nor requested
    EXPECT_EQ(gpu_read16(INT1), 0);
    EXPECT_FALSE(level2_requested());

    gpu_write16(INT1, 0x000D);
    gpu_write16(OBF, 1);
    video_raise_interrupt(IRQ_VIDEO_LINE);
    video_raise_interrupt(IRQ_TIMER);
    EXPECT_EQ(gpu_read16(INT1), 0x000D);
    EXPECT_TRUE(level2_requested());

    gpu_write16(INT1, 0x0401);  // word: acknowledge bit 2, keep only bit 0 enabled
    EXPECT_EQ(gpu_read16(INT1), 0x0009);
    EXPECT_EQ(video.int1_enable, 0x01);
    gpu_write32(INT1, 0x00000109);  // long: bit 8 is no acknowledge
    EXPECT_EQ(gpu_read32(INT1), 0x0009u);
    gpu_write32(INT1, 0x01000009);
    EXPECT_EQ(video.int1_enable, 0x09);
    EXPECT_EQ(gpu_read32(INT1), 0x0008u);

    // The GPU's request to the 68000 rides on bit 1 of its control register.
    gpu_write16(INT1, 1u << IRQ_GPU);
    clear_requests();
    gpu_write32(0xF02114, 0x00000002);
    EXPECT_EQ(gpu_read16(INT1) & (1u << IRQ_GPU), 1u << IRQ_GPU);
    EXPECT_TRUE(level2_requested());
}

TEST_F(VideoRegisters, VideoTimerStartsOnItsPit1WriteAndStopsWithPit0Zero) {
    video.timer_countdown = 1234;
    gpu_write16(PIT1, 99);  // PIT0 still 0: stopped, countdown kept
    EXPECT_EQ(video.timer_frequency, 0);
    EXPECT_EQ(video.timer_countdown, 1234);
    gpu_write16(PIT0, 99);  // stored only
    EXPECT_EQ(video.timer_frequency, 0);
    gpu_write16(PIT1, 99);
    EXPECT_EQ(video.timer_frequency, 2659);
    EXPECT_EQ(video.timer_countdown, 9996);

    gpu_write32(PIT0, 26590u << 16);
    EXPECT_EQ(gpu_read32(PIT0), 26590u << 16);
    EXPECT_EQ(video.timer_frequency, 1000);
    EXPECT_EQ(video.timer_countdown, 26564);
    gpu_write32(PIT0, 5);
    EXPECT_EQ(video.timer_frequency, 0);
    EXPECT_EQ(video.timer_countdown, 26564);
}

TEST_F(VideoRegisters, VideoTimerFiresWhenItsCountdownGoesNegativeThenReloads) {
    gpu_write16(INT1, 1u << IRQ_TIMER);
    gpu_write32(PIT0, 26590u << 16);  // 1000 Hz: 26564 clocks, 31.5 lines
    std::vector<int> firing_lines;
    for (int line = 0; line < 525; ++line) {
        video_timer_advance(844);
        if (video.int1_pending) firing_lines.push_back(line);
        gpu_write16(INT1, 0x0800 | (1u << IRQ_TIMER));
    }
    ASSERT_EQ(firing_lines.size(), 16u);
    for (size_t n = 0; n < firing_lines.size(); ++n) EXPECT_EQ(firing_lines[n], 31 + 32 * static_cast<int>(n));

    video.timer_countdown = 844;  // reaching exactly 0 does not fire
    clear_requests();
    video_timer_advance(844);
    EXPECT_FALSE(level2_requested());
    video_timer_advance(844);
    EXPECT_TRUE(level2_requested());

    gpu_write32(PIT0, 0);  // stopped: an expiry restarts it at a second's worth of clocks
    video.timer_countdown = 0;
    video_timer_advance(844);
    EXPECT_EQ(video.timer_countdown, 26591000);
}

TEST_F(VideoRegisters, EachRegisterAnswersOnlyAtItsOwnWidths) {
    gpu_write16(VMODE, 0x06C1);
    EXPECT_EQ(video.pixel_divisor, 4);
    gpu_write32(VI, 0xABCD0120);
    EXPECT_EQ(gpu_read32(VI), 0x0120u);
    gpu_write32(BG, 0x12345678);
    EXPECT_EQ(gpu_read16(BG), 0x5678);
    gpu_write32(BORD1, 0x11223344);
    gpu_write16(BORD1, 0x5555);  // ignored, silently
    EXPECT_EQ(gpu_read32(BORD1), 0x11223344u);
    EXPECT_EQ(gpu_read32(0xF02238), 1u);  // the Blitter always reads idle
    EXPECT_EQ(gpu_read8(0xF02117), 0);
    EXPECT_EQ(last_message(), "");

    EXPECT_EQ(gpu_read16(VMODE), 0);
    EXPECT_EQ(last_message(), "gpu_read16 00F00028\n");
    gpu_write32(VMODE, 0x1234);
    EXPECT_EQ(last_message(), "gpu_write32 00001234 to 00F00028\n");
    EXPECT_EQ(video.vmode, 0x06C1);
    gpu_write8(0xF00001, 0xAB);
    EXPECT_EQ(last_message(), "gpu_write8 000000AB to 00F00001\n");
    EXPECT_EQ(gpu_read32(0xF02100), 0u);
    EXPECT_EQ(last_message(), "gpu_read32 00F02100\n");
}

}  // namespace
