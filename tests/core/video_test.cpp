// The graphics chip's registers as a program sees them, width by width.
#include "chip_test_support.h"

namespace {

class VideoRegisters : public ChipTest {};

TEST_F(VideoRegisters, HorizontalCountMovesOnWithEveryWordAndLongRead) {
    video.hc = 500;
    video.vc = 77;
    EXPECT_EQ(gpu_read16(HC), 500);
    EXPECT_EQ(gpu_read32(HC), (501u << 16) | 77u);
    EXPECT_EQ(gpu_read16(HC), 502);
    EXPECT_EQ(gpu_read16(VC), 77);
    video.hc = 0xFFFF;
    gpu_read16(HC);
    EXPECT_EQ(gpu_read16(HC), 0);  // wraps at 16 bits
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

// The timer runs from a PIT1 write while PIT0 is not 0 and fires when its countdown goes
// negative (the frame's lines: scheduler_test.cpp). Stopped, it keeps its countdown.
TEST_F(VideoRegisters, VideoTimerStartsOnItsPit1WriteAndFiresBelowZero) {
    video.timer_countdown = 1234;
    gpu_write16(PIT1, 99);  // PIT0 still 0
    gpu_write16(PIT0, 99);  // stored only
    EXPECT_EQ(video.timer_frequency, 0);
    EXPECT_EQ(video.timer_countdown, 1234);
    gpu_write16(PIT1, 99);
    EXPECT_EQ(video.timer_frequency, 2659);
    gpu_write32(PIT0, 26590u << 16);  // 1000 Hz
    EXPECT_EQ(gpu_read32(PIT0), 26590u << 16);

    gpu_write16(INT1, 1u << IRQ_TIMER);
    video.timer_countdown = 844;  // reaching exactly 0 does not fire
    video_timer_advance(844);
    EXPECT_FALSE(level2_requested());
    video_timer_advance(844);
    EXPECT_TRUE(level2_requested());

    gpu_write32(PIT0, 5);  // PIT0 0 stops it; the countdown reloaded at 1000 Hz stays
    EXPECT_EQ(video.timer_frequency, 0);
    EXPECT_EQ(video.timer_countdown, 26564);
    video.timer_countdown = 0;  // an expiry restarts it at a second's worth of clocks
    video_timer_advance(844);
    EXPECT_EQ(video.timer_countdown, 26591000);
}

TEST_F(VideoRegisters, EachRegisterAnswersOnlyAtItsOwnWidths) {
    gpu_write32(OLP, 0x56780034);  // a long's halves land rotated
    EXPECT_EQ(gpu_read32(OLP), 0x00345678u);
    gpu_write16(VMODE, 0x06C1);
    gpu_write32(VI, 0xABCD0120);
    EXPECT_EQ(gpu_read32(VI), 0x0120u);
    gpu_write32(BG, 0x12345678);
    EXPECT_EQ(gpu_read16(BG), 0x5678);
    gpu_write32(BORD1, 0x11223344);
    gpu_write16(BORD1, 0x5555);  // ignored, silently
    EXPECT_EQ(gpu_read32(BORD1), 0x11223344u);
    EXPECT_EQ(gpu_read32(0xF02238), 1u);  // the Blitter always reads idle
    EXPECT_EQ(gpu_read8(0xF02117), 0);
    EXPECT_STREQ(log_text, "");

    EXPECT_EQ(gpu_read16(VMODE), 0);
    EXPECT_STREQ(log_text, "gpu_read16 00F00028\n");
    gpu_write32(VMODE, 0x1234);
    EXPECT_STREQ(log_text, "gpu_write32 00001234 to 00F00028\n");
    EXPECT_EQ(video.vmode, 0x06C1);
    gpu_write8(0xF00001, 0xAB);
    EXPECT_STREQ(log_text, "gpu_write8 000000AB to 00F00001\n");
    EXPECT_EQ(gpu_read32(0xF02108), 0u);  // G_MTXA is not readable
    EXPECT_STREQ(log_text, "gpu_read32 00F02108\n");
}

}  // namespace
