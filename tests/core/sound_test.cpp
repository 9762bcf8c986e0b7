// The sound chip's registers as a program sees them: controller ports, timers, serial clock
// and sample outputs.
#include "chip_test_support.h"

namespace {

class SoundRegisters : public ChipTest {};

// Every control in vemo_joypad's order: the row that sees it and the register bit that reads 0
// while it is held.
struct control_wiring { const char* name; uint16_t row; uint32_t reg; int bit; };
constexpr control_wiring WIRING[21] = {
    {"left", 0xE, JOYSTICK, 10}, {"right", 0xE, JOYSTICK, 11}, {"up", 0xE, JOYSTICK, 8},
    {"down", 0xE, JOYSTICK, 9},  {"a", 0xE, JOYBUTS, 1},        {"b", 0xD, JOYBUTS, 1},
    {"c", 0xB, JOYBUTS, 1},      {"option", 0x7, JOYBUTS, 1},   {"pause", 0xE, JOYBUTS, 0},
    {"1", 0xD, JOYSTICK, 11},    {"2", 0xB, JOYSTICK, 11},      {"3", 0x7, JOYSTICK, 11},
    {"4", 0xD, JOYSTICK, 10},    {"5", 0xB, JOYSTICK, 10},      {"6", 0x7, JOYSTICK, 10},
    {"7", 0xD, JOYSTICK, 9},     {"8", 0xB, JOYSTICK, 9},       {"9", 0x7, JOYSTICK, 9},
    {"0", 0xB, JOYSTICK, 8},     {"*", 0xD, JOYSTICK, 8},       {"#", 0x7, JOYSTICK, 8},
};

TEST_F(SoundRegisters, EachControlReadsOnItsOwnRowAndBitOnly) {
    for (int word = 0; word < 21; ++word) {
        const control_wiring& control = WIRING[word];
        int32_t words[21] = {};
        words[word] = 1;
        std::memcpy(&joypad_slots[0], words, sizeof words);
        for (uint16_t row : {0xE, 0xD, 0xB, 0x7}) {
            dsp_write16(JOYSTICK, row);
            const uint16_t held = row == control.row ? static_cast<uint16_t>(~(1u << control.bit)) : 0xFFFF;
            EXPECT_EQ(dsp_read16(JOYSTICK), control.reg == JOYSTICK ? held : 0xFFFF) << control.name << row;
            EXPECT_EQ(dsp_read16(JOYBUTS), control.reg == JOYBUTS ? held : 0xFFFF) << control.name << row;
        }
    }
}

TEST_F(SoundRegisters, ControllerReadsAtEveryWidthAndOnlyTheLatchLowNibbleSelects) {
    joypad_slots[0].up = joypad_slots[0].a = joypad_slots[0].pause = 1;
    EXPECT_EQ(dsp_read16(JOYSTICK), 0xFFFF);  // latch never written: no row selected
    for (uint16_t select : {0x0, 0xF, 0xC}) {
        dsp_write16(JOYSTICK, select);
        EXPECT_EQ(dsp_read32(JOYSTICK), 0xFFFFFFFFu) << select;
    }
    dsp_write16(JOYSTICK, 0x81FE);
    EXPECT_EQ(dsp_read8(JOYSTICK), 0xFE);
    EXPECT_EQ(dsp_read8(JOYBUTS + 1), 0xFC);
    EXPECT_EQ(dsp_read32(JOYSTICK), 0xFEFFFFFCu);  // bit 16: the idle EEPROM's 1
    dsp_write32(JOYSTICK, 0x000E000D);  // a long write latches its low half
    EXPECT_EQ(dsp_read16(JOYSTICK), 0xFFFF);
}

TEST_F(SoundRegisters, TimersAndSerialClockGiveTheirFrequencies) {
    dsp_write16(JPIT1, 255);
    dsp_write16(JPIT2, 99);
    EXPECT_EQ(sound.timer1_frequency, 1038);
    EXPECT_EQ(dsp_read16(JPIT2_READ), 99);
    dsp_write32(JPIT1, 0x00090063);  // the high half is the prescaler; the divider stays
    EXPECT_EQ(sound.timer1_frequency, 26591);
    dsp_write32(JPIT4, 0x00070000);  // timer 2's divider takes words only
    EXPECT_STREQ(log_text, "DSP Write 00070000 to 00F10006\n");
    EXPECT_EQ(sound.timer2_divider, 0u);
    // 2v + 2 wraps to 0 for the last two
    for (auto [sclk, rate] : {std::pair<uint32_t, int32_t>{19, 20774}, {8, 46164}, {0x7FFFFFFF, 0}, {0xFFFFFFFF, 0}}) {
        dsp_write32(SCLK, sclk);
        EXPECT_EQ(sound.audio_rate, rate) << sclk;
    }
}

TEST_F(SoundRegisters, SampleOutputsFillTheFramesBuffersButNeverPastThem) {
    dsp_write32(LTXD, 0x0001FFFE);
    dsp_write32(LTXD, 0x00007FFF);
    dsp_write16(LTXD, 0x1111);  // the left port takes longs only
    EXPECT_STREQ(log_text, "DSP Write 1111 to 00F1A148\n");
    EXPECT_EQ(sound.audio_left_count, 2u);
    EXPECT_EQ(audio_left[0], -2);
    EXPECT_EQ(audio_left[1], 0x7FFF);
    dsp_write16(RTXD, 0x1234);  // the word port stores twice the value
    EXPECT_EQ(audio_right[0], 0x2468);

    for (uint32_t n = 0; n < 5000; ++n) dsp_write32(RTXD, n);
    EXPECT_EQ(sound.audio_right_count, 4096u);
    EXPECT_EQ(audio_right[4095], 4094);
    EXPECT_TRUE(logged("Audio right buffer full"));
    sound_begin_frame();
    EXPECT_EQ(sound.audio_left_count + sound.audio_right_count, 0u);
}

}  // namespace
