// The graphics chip's registers as a program sees them, width by width.
#include "chip_test_support.h"

namespace {

class VideoRegisters : public ChipTest {};

TEST_F(VideoRegisters, HorizontalCountMovesOnWithEveryWordAndLongRead) {
    video.hc = 500;
    video.vc = 77;
    EXPECT_EQ(gpu_read16(HC), 500);
    EXPECT_EQ(gpu_read16(HC), 501);
    EXPECT_EQ(gpu_read16(HC), 502);
    EXPECT_EQ(gpu_read32(HC), (503u << 16) | 77u);
    EXPECT_EQ(gpu_read16(HC), 504);
    EXPECT_EQ(gpu_read16(VC), 77);  // the vertical count does not move

    video.hc = 0xFFFF;
    EXPECT_EQ(gpu_read16(HC), 0xFFFF);
    EXPECT_EQ(gpu_read16(HC), 0);  // wraps at 16 bits
}

TEST_F(VideoRegisters, ObjectListPointerFromHalvesOrFromOneRotatedLong) {
    gpu_write16(OLP, 0x3456);
    gpu_write16(OLP + 2, 0x0012);
    EXPECT_EQ(video.olp, 0x00123456u);
    EXPECT_EQ(gpu_read32(OLP), 0x00123456u);

    gpu_write16(OLP, 0xFFFF);  // a half leaves the other half alone
    EXPECT_EQ(video.olp, 0x0012FFFFu);

    video.olp = 0;
    gpu_write32(OLP, 0x34560012);
    EXPECT_EQ(video.olp, 0x00123456u);
}

TEST_F(VideoRegisters, VideoModeWriteDerivesThePixelDivisor) {
    EXPECT_EQ(video.pixel_divisor, 0);  // until the program sets a mode
    gpu_write16(VMODE, 0x06C1);
    EXPECT_EQ(video.vmode, 0x06C1);
    EXPECT_EQ(video.pixel_divisor, 4);
    gpu_write16(VMODE, 0x0E00);
    EXPECT_EQ(video.pixel_divisor, 8);
    gpu_write16(VMODE, 0x0000);
    EXPECT_EQ(video.pixel_divisor, 1);
}

TEST_F(VideoRegisters, InterruptEnableAndAcknowledgeHalvesOfTheWordWrite) {
    gpu_write16(INT1, 0x0001);
    EXPECT_EQ(video.int1_enable, 1);
    video_raise_interrupt(IRQ_VIDEO_LINE);
    EXPECT_EQ(gpu_read16(INT1), 0x0001);
    EXPECT_TRUE(level2_requested());

    gpu_write16(INT1, 0x0101);  // acknowledge bit 0, keep it enabled
    EXPECT_EQ(gpu_read16(INT1), 0);
    EXPECT_EQ(video.int1_enable, 1);

    gpu_write16(INT1, 0x00FF);  // only five sources exist
    EXPECT_EQ(video.int1_enable, 0x1F);
}

TEST_F(VideoRegisters, InterruptLongWriteTakesAcknowledgesFromItsHighHalf) {
    gpu_write16(INT1, 0x0009);
    video_raise_interrupt(IRQ_VIDEO_LINE);
    video_raise_interrupt(IRQ_TIMER);
    ASSERT_EQ(gpu_read32(INT1), 0x0009u);

    gpu_write32(INT1, 0x00000109);  // bit 8 of a long is not an acknowledge
    EXPECT_EQ(gpu_read16(INT1), 0x0009);

    gpu_write32(INT1, 0x01000009);
    EXPECT_EQ(video.int1_enable, 0x09);
    EXPECT_EQ(gpu_read16(INT1), 0x0008);
}

TEST_F(VideoRegisters, DisabledSourcesAreNeitherRecordedNorRequested) {
    gpu_write16(OBF, 1);
    EXPECT_EQ(gpu_read16(OBF), 1);
    EXPECT_EQ(gpu_read16(INT1), 0);
    EXPECT_FALSE(level2_requested());

    gpu_write16(INT1, 1u << IRQ_OBJECT);
    gpu_write16(OBF, 0);  // bit 0 clear: the flag is stored, nothing raised
    EXPECT_FALSE(level2_requested());
    gpu_write16(OBF, 1);
    EXPECT_EQ(gpu_read16(INT1), 1u << IRQ_OBJECT);
    EXPECT_TRUE(level2_requested());
}

TEST_F(VideoRegisters, GpuControlCpuInterruptBitRaisesTheGpuSource) {
    gpu_write16(INT1, 1u << IRQ_GPU);
    gpu_write32(0xF02114, 0x00000001);
    EXPECT_EQ(gpu_read16(INT1), 0);
    gpu_write32(0xF02114, 0x00000002);
    EXPECT_EQ(gpu_read16(INT1), 1u << IRQ_GPU);
    EXPECT_TRUE(level2_requested());
}

TEST_F(VideoRegisters, VideoTimerIsSetByItsPit1WriteOrByBothAtOnce) {
    video.timer_countdown = 1234;
    gpu_write16(PIT1, 99);  // PIT0 still 0: stopped, countdown kept
    EXPECT_EQ(video.timer_frequency, 0);
    EXPECT_EQ(video.timer_countdown, 1234);

    gpu_write16(PIT0, 99);  // stored only
    EXPECT_EQ(video.timer_frequency, 0);
    gpu_write16(PIT1, 99);
    EXPECT_EQ(video.timer_frequency, 2659);
    EXPECT_EQ(video.timer_countdown, 9996);
    EXPECT_EQ(gpu_read32(PIT0), (99u << 16) | 99u);

    video_reset();
    gpu_write32(PIT0, (26590u << 16) | 0u);
    EXPECT_EQ(video.timer_frequency, 1000);
    EXPECT_EQ(video.timer_countdown, 26564);
    gpu_write32(PIT0, 5);  // PIT0 = 0 again: stops without touching the countdown
    EXPECT_EQ(video.timer_frequency, 0);
    EXPECT_EQ(video.timer_countdown, 26564);
}

TEST_F(VideoRegisters, VideoTimerFiresWhenTheCountdownGoesNegativeAndReloads) {
    gpu_write16(INT1, 1u << IRQ_TIMER);
    gpu_write32(PIT0, 26590u << 16);  // 1000 Hz: a period of 26564 clocks
    std::vector<int> firing_lines;
    for (int line = 0; line < 525; ++line) {
        video_timer_advance(844);
        if (video.int1_pending & (1u << IRQ_TIMER)) firing_lines.push_back(line);
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

    // Stopped (frequency 0), an expiring countdown restarts at a whole second of clocks.
    gpu_write32(PIT0, 0);
    video.timer_countdown = 0;
    video_timer_advance(844);
    EXPECT_EQ(video.timer_countdown, 26591000);
}

TEST_F(VideoRegisters, RegistersAnswerOnlyAtTheWidthsTheyHave) {
    gpu_write32(VI, 0xABCD0120);
    EXPECT_EQ(video.vi, 0x0120);
    EXPECT_EQ(gpu_read32(VI), 0x0120u);
    gpu_write32(BG, 0x12345678);
    EXPECT_EQ(gpu_read16(BG), 0x5678);
    gpu_write32(BORD1, 0x11223344);
    EXPECT_EQ(gpu_read32(BORD1), 0x11223344u);
    video.ob_data[0] = 0xAAAA;
    video.ob_data[1] = 0xBBBB;
    EXPECT_EQ(gpu_read32(0xF00014), 0xAAAABBBBu);

    clear_message();
    gpu_write16(BORD1, 0x5555);  // BORD1 takes longs only: the word is ignored, silently
    EXPECT_EQ(video.bord1, 0x11223344u);
    EXPECT_EQ(last_message(), "");

    EXPECT_EQ(gpu_read16(VMODE), 0);
    EXPECT_EQ(last_message(), "gpu_read16 00F00028\n");
    EXPECT_EQ(gpu_read32(VMODE), 0u);
    EXPECT_EQ(last_message(), "gpu_read32 00F00028\n");
    gpu_write32(VMODE, 0x1234);
    EXPECT_EQ(last_message(), "gpu_write32 00001234 to 00F00028\n");
    EXPECT_EQ(video.vmode, 0);
    gpu_write16(0xF02200, 0xBEEF);
    EXPECT_EQ(last_message(), "gpu_write16 0000BEEF to 00F02200\n");
}

TEST_F(VideoRegisters, ByteAccessesAreLoggedExceptTheGpuControlProbe) {
    EXPECT_EQ(gpu_read8(0xF02117), 0);
    gpu_write8(0xF02117, 0x55);
    EXPECT_EQ(last_message(), "");

    gpu_write8(0xF00001, 0xAB);
    EXPECT_EQ(last_message(), "gpu_write8 000000AB to 00F00001\n");
    EXPECT_EQ(gpu_read8(0xF00006), 0);
    EXPECT_EQ(last_message(), "gpu_read8 00F00006\n");
}

TEST_F(VideoRegisters, BlitterStatusReadsIdleWhileTheRestOfItsBlockIsUnhandled) {
    EXPECT_EQ(gpu_read32(0xF02238), 1u);
    for (uint32_t zero : {0xF02204u, 0xF02234u, 0xF02268u, 0xF0226Cu, 0xF020FCu}) EXPECT_EQ(gpu_read32(zero), 0u);
    EXPECT_EQ(last_message(), "");

    EXPECT_EQ(gpu_read32(0xF02100), 0u);
    EXPECT_EQ(last_message(), "gpu_read32 00F02100\n");
    gpu_write32(0xF02238, 0x00000001);
    EXPECT_EQ(last_message(), "gpu_write32 00000001 to 00F02238\n");
}

}  // namespace
