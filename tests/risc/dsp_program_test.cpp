// A DSP program driven by the audio ticks: with audio enabled and the serial clock at 20774 Hz,
// its interrupt 1 comes on the 346 marked lines of every frame and each one writes one sample
// pair, which the frame information reports.
#include "risc/risc_program.h"

namespace {

class DspProgram : public RiscProgram {};

TEST_F(DspProgram, AudioTicksFillTheSampleBuffersForAWholeFrame) {
    start("dsp_audio", true);
    // The 68000 sets the rate during the first frame, whose tick marks were placed at its start
    // with no rate yet: no interrupt, no sample.
    run_frames(1);
    vemo_frame_info info = frame();
    EXPECT_EQ(info.audio_rate, 20774);
    EXPECT_EQ(info.audio_left_count, 0u);

    run_frames(1);
    info = frame();
    ASSERT_EQ(info.audio_left_count, 346u);
    ASSERT_EQ(info.audio_right_count, 346u);
    for (uint32_t i = 0; i < 346; ++i) {
        EXPECT_EQ(info.audio_left[i], static_cast<int16_t>(i)) << i;
        EXPECT_EQ(info.audio_right[i], static_cast<int16_t>(~i)) << i;
    }

    // The next frame carries on from the last sample.
    const int16_t last = info.audio_left[345];
    run_frames(1);
    info = frame();
    EXPECT_EQ(info.audio_left_count, 346u);
    EXPECT_EQ(info.audio_left[0], last + 1);
    EXPECT_GE(info.dsp_pc, 0xF1B000u);
    EXPECT_LT(info.dsp_pc, 0xF1D000u);
}

}  // namespace
