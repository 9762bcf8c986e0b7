// The sound chip's registers as a program sees them: controller ports, timers, serial clock
// and sample outputs.
#include "chip_test_support.h"

namespace {

class SoundRegisters : public ChipTest {};

// Every control of the controller: its word in vemo_joypad, the row that sees it, and the
// register bit that reads 0 while it is held.
struct control_wiring {
    const char* name;
    int word;
    uint16_t row;
    uint32_t reg;
    int bit;
};

constexpr control_wiring WIRING[] = {
    {"left", 0, 0xE, JOYSTICK, 10},   {"right", 1, 0xE, JOYSTICK, 11},
    {"up", 2, 0xE, JOYSTICK, 8},      {"down", 3, 0xE, JOYSTICK, 9},
    {"a", 4, 0xE, JOYBUTS, 1},        {"b", 5, 0xD, JOYBUTS, 1},
    {"c", 6, 0xB, JOYBUTS, 1},        {"option", 7, 0x7, JOYBUTS, 1},
    {"pause", 8, 0xE, JOYBUTS, 0},    {"1", 9, 0xD, JOYSTICK, 11},
    {"2", 10, 0xB, JOYSTICK, 11},     {"3", 11, 0x7, JOYSTICK, 11},
    {"4", 12, 0xD, JOYSTICK, 10},     {"5", 13, 0xB, JOYSTICK, 10},
    {"6", 14, 0x7, JOYSTICK, 10},     {"7", 15, 0xD, JOYSTICK, 9},
    {"8", 16, 0xB, JOYSTICK, 9},      {"9", 17, 0x7, JOYSTICK, 9},
    {"0", 18, 0xB, JOYSTICK, 8},      {"*", 19, 0xD, JOYSTICK, 8},
    {"#", 20, 0x7, JOYSTICK, 8},
};

void press_only(int word) {
    int32_t words[21] = {};
    words[word] = 1;
    std::memcpy(&joypad_slots[0], words, sizeof words);
}

TEST_F(SoundRegisters, EachControlReadsOnItsOwnRowAndBitOnly) {
    for (const control_wiring& control : WIRING) {
        SCOPED_TRACE(control.name);
        press_only(control.word);
        for (uint16_t row : {0xE, 0xD, 0xB, 0x7}) {
            dsp_write16(JOYSTICK, row);
            const uint16_t joystick = dsp_read16(JOYSTICK);
            const uint16_t buttons = dsp_read16(JOYBUTS);
            const uint16_t held = static_cast<uint16_t>(~(1u << control.bit));
            const bool seen = row == control.row;
            EXPECT_EQ(joystick, seen && control.reg == JOYSTICK ? held : 0xFFFF) << "row " << row;
            EXPECT_EQ(buttons, seen && control.reg == JOYBUTS ? held : 0xFFFF) << "row " << row;
        }
    }
}

TEST_F(SoundRegisters, ControllerByteAndLongReadsShowTheSameBits) {
    dsp_write16(JOYSTICK, 0x000E);
    EXPECT_EQ(dsp_read32(JOYSTICK), 0xFFFFFFFFu);  // nothing held, EEPROM idle

    joypad_slots[0].right = 1;
    EXPECT_EQ(dsp_read8(JOYSTICK), 0xF7);
    joypad_slots[0] = vemo_joypad{};
    joypad_slots[0].a = 1;
    joypad_slots[0].pause = 1;
    EXPECT_EQ(dsp_read16(JOYBUTS), 0xFFFC);
    EXPECT_EQ(dsp_read8(JOYBUTS + 1), 0xFC);
    joypad_slots[0].up = 1;
    EXPECT_EQ(dsp_read32(JOYSTICK), 0xFEFFFFFCu);

    // Slot 1 is stored but no register reads it.
    joypad_slots[0] = vemo_joypad{};
    joypad_slots[1].up = 1;
    EXPECT_EQ(dsp_read16(JOYSTICK), 0xFFFF);
    joypad_slots[1] = vemo_joypad{};
}

TEST_F(SoundRegisters, OnlyTheLatchLowNibbleSelectsARow) {
    joypad_slots[0].up = 1;
    joypad_slots[0].a = 1;
    EXPECT_EQ(dsp_read16(JOYSTICK), 0xFFFF);  // never written: nothing selected
    for (uint16_t select : {0x0, 0xF, 0xC, 0x6}) {
        dsp_write16(JOYSTICK, select);
        EXPECT_EQ(dsp_read16(JOYSTICK), 0xFFFF) << select;
        EXPECT_EQ(dsp_read16(JOYBUTS), 0xFFFF) << select;
    }
    dsp_write16(JOYSTICK, 0x81FE);
    EXPECT_EQ(dsp_read16(JOYSTICK), 0xFEFF);
    dsp_write32(JOYSTICK, 0x000D000E);  // a long write latches its low half
    EXPECT_EQ(dsp_read16(JOYSTICK), 0xFEFF);
    EXPECT_EQ(dsp_read16(JOYBUTS), 0xFFFD);
}

TEST_F(SoundRegisters, TimersDivideTheSystemClockByPrescalerAndDivider) {
    dsp_write16(JPIT1, 255);
    dsp_write16(JPIT2, 99);
    EXPECT_EQ(sound.timer1_frequency, 26591000 / 256 / 100);
    EXPECT_EQ(dsp_read16(JPIT2_READ), 99);

    dsp_write32(JPIT1, 0x00090063);  // high half is the prescaler; the divider stays
    EXPECT_EQ(sound.timer1_prescaler, 9u);
    EXPECT_EQ(sound.timer1_divider, 99u);
    EXPECT_EQ(sound.timer1_frequency, 26591000 / 10 / 100);

    dsp_write16(JPIT3, 1);
    dsp_write16(JPIT4, 0);
    EXPECT_EQ(sound.timer2_frequency, 26591000 / 2);
    dsp_write32(JPIT4, 0x00070000);  // timer 2's divider takes words only
    EXPECT_EQ(last_message(), "DSP Write 00070000 to 00F10006\n");
    EXPECT_EQ(sound.timer2_divider, 0u);
    EXPECT_EQ(sound.timer2_frequency, 26591000 / 2);
}

TEST_F(SoundRegisters, SerialClockGivesTheSampleRateWithoutEverDividingByZero) {
    dsp_write32(SCLK, 19);
    EXPECT_EQ(sound.audio_rate, 20774);
    dsp_write32(SCLK, 8);
    EXPECT_EQ(sound.audio_rate, 46164);
    dsp_write32(SCLK, 0);
    EXPECT_EQ(sound.audio_rate, 415484);
    for (uint32_t wrapping : {0x7FFFFFFFu, 0xFFFFFFFFu}) {
        dsp_write32(SCLK, wrapping);
        EXPECT_EQ(sound.audio_rate, 0) << wrapping;
    }
    dsp_write32(SCLK, 0x80000000u);  // 2v + 2 = 2: the fastest clock again
    EXPECT_EQ(sound.audio_rate, 415484);
}

TEST_F(SoundRegisters, SampleOutputsFillTheFrameBuffersAtTheirOwnWidths) {
    dsp_write32(LTXD, 0x0001FFFE);
    dsp_write32(LTXD, 0x00000002);
    dsp_write32(LTXD, 0x00007FFF);
    EXPECT_EQ(sound.audio_left_count, 3u);
    EXPECT_EQ(audio_left[0], -2);
    EXPECT_EQ(audio_left[2], 0x7FFF);

    dsp_write16(RTXD, 0x1234);  // the word port stores twice the value
    dsp_write32(RTXD, 0x1234);
    EXPECT_EQ(sound.audio_right_count, 2u);
    EXPECT_EQ(audio_right[0], 0x2468);
    EXPECT_EQ(audio_right[1], 0x1234);

    dsp_write16(LTXD, 0x1111);  // the left port takes longs only
    EXPECT_EQ(last_message(), "DSP Write 1111 to 00F1A148\n");
    EXPECT_EQ(sound.audio_left_count, 3u);

    sound_begin_frame();
    EXPECT_EQ(sound.audio_left_count, 0u);
    EXPECT_EQ(sound.audio_right_count, 0u);
}

TEST_F(SoundRegisters, ABufferKeepsItsFirst4096SamplesOfAFrame) {
    for (uint32_t n = 0; n < 5000; ++n) dsp_write32(LTXD, n);
    EXPECT_EQ(sound.audio_left_count, 4096u);
    EXPECT_EQ(audio_left[4095], 4095);
    EXPECT_NE(last_message().find("Audio left buffer full"), std::string::npos);
    EXPECT_EQ(sound.audio_right_count, 0u);
}

TEST_F(SoundRegisters, UnhandledRegistersAreLoggedValueFirst) {
    EXPECT_EQ(dsp_read8(0xF14001), 0);
    EXPECT_EQ(last_message(), "DSP Read8 from 00F14001\n");
    EXPECT_EQ(dsp_read16(0xF1A148), 0);
    EXPECT_EQ(last_message(), "DSP Read16 from 00F1A148\n");
    EXPECT_EQ(dsp_read32(JOYBUTS), 0u);
    EXPECT_EQ(last_message(), "DSP Read32 from 00F14002\n");
    dsp_write16(0xF10040, 0xBEEF);
    EXPECT_EQ(last_message(), "DSP Write BEEF to 00F10040\n");

    clear_message();
    dsp_write16(0xF17C00, 1);
    dsp_write32(0xF10020, 1);
    EXPECT_EQ(dsp_read16(0xF10032), 0);
    EXPECT_EQ(dsp_read16(EEPROM_DATA_IN), 1);
    EXPECT_EQ(last_message(), "");
}

}  // namespace
