// The sound chip's register file.
#include "core/sound.h"

#include "core/eeprom.h"
#include "core/host.h"
#include "core/memory.h"
#include "core/video.h"
#include "risc/dsp.h"

sound_registers sound;

namespace {

// One control of the controller matrix: the joypad word that holds it and the register bit
// that reads 0 while it is pressed.
struct matrix_control {
    int32_t vemo_joypad::*pressed;
    uint16_t bit;
};

// The four rows, selected by writing 0xE, 0xD, 0xB or 0x7 (active low) to the latch.
constexpr int MATRIX_ROWS = 4;
constexpr uint16_t ROW_SELECT[MATRIX_ROWS] = {0xE, 0xD, 0xB, 0x7};

// Joystick port: bits 8-11 of 0xF14000.
constexpr matrix_control JOYSTICK_MATRIX[MATRIX_ROWS][4] = {
    {{&vemo_joypad::up, 1u << 8}, {&vemo_joypad::down, 1u << 9},
     {&vemo_joypad::left, 1u << 10}, {&vemo_joypad::right, 1u << 11}},
    {{&vemo_joypad::key_star, 1u << 8}, {&vemo_joypad::key_7, 1u << 9},
     {&vemo_joypad::key_4, 1u << 10}, {&vemo_joypad::key_1, 1u << 11}},
    {{&vemo_joypad::key_0, 1u << 8}, {&vemo_joypad::key_8, 1u << 9},
     {&vemo_joypad::key_5, 1u << 10}, {&vemo_joypad::key_2, 1u << 11}},
    {{&vemo_joypad::key_hash, 1u << 8}, {&vemo_joypad::key_9, 1u << 9},
     {&vemo_joypad::key_6, 1u << 10}, {&vemo_joypad::key_3, 1u << 11}},
};

// Button port: bits 0-1 of 0xF14002. Only row 0 has a control on bit 0 (Pause); the null
// entries of the other rows stand for nothing.
constexpr matrix_control BUTTON_MATRIX[MATRIX_ROWS][2] = {
    {{&vemo_joypad::pause, 1u << 0}, {&vemo_joypad::a, 1u << 1}},
    {{nullptr, 0}, {&vemo_joypad::b, 1u << 1}},
    {{nullptr, 0}, {&vemo_joypad::c, 1u << 1}},
    {{nullptr, 0}, {&vemo_joypad::option, 1u << 1}},
};

// Row index selected by the latch's low four bits, or -1 when no single row is selected.
int selected_row(uint16_t latch) {
    for (int row = 0; row < MATRIX_ROWS; ++row)
        if ((latch & 0xF) == ROW_SELECT[row]) return row;
    return -1;
}

template <size_t N>
uint16_t read_row(const matrix_control (&row)[N]) {
    const vemo_joypad& pad = joypad_slots[0];
    uint16_t value = 0xFFFF;
    for (const matrix_control& control : row)
        if (control.pressed && pad.*control.pressed) value &= static_cast<uint16_t>(~control.bit);
    return value;
}

// Timer frequency in Hz: the system clock through the prescaler and the divider.
int32_t timer_frequency(uint32_t prescaler, uint32_t divider) {
    return static_cast<int32_t>(SYSTEM_CLOCK_HZ / (prescaler + 1) / (divider + 1));
}

void set_timer1(uint32_t prescaler, uint32_t divider) {
    sound.timer1_prescaler = prescaler;
    sound.timer1_divider = divider;
    sound.timer1_frequency = timer_frequency(prescaler, divider);
}

void set_timer2(uint32_t prescaler, uint32_t divider) {
    sound.timer2_prescaler = prescaler;
    sound.timer2_divider = divider;
    sound.timer2_frequency = timer_frequency(prescaler, divider);
}

// The serial clock runs at SYSTEM_CLOCK_HZ / (2 * (v + 1)) and one stereo sample takes 32 of
// its cycles. A divider whose 2 * v + 2 wraps to 0 gives rate 0, which turns the audio ticks
// off, rather than a division by zero.
int32_t serial_sample_rate(uint32_t divider) {
    const uint32_t clock_divisor = 2 * divider + 2;
    if (clock_divisor == 0) return 0;
    return static_cast<int32_t>((SYSTEM_CLOCK_HZ / clock_divisor) >> 5);
}

// A frame keeps at most AUDIO_BUFFER_SAMPLES samples per channel; later ones are dropped and
// the first drop of the frame is reported.
bool left_overflow_reported;
bool right_overflow_reported;

void store_sample(int16_t* buffer, uint32_t& count, bool& reported, const char* channel,
                  uint16_t sample) {
    if (!buffer) return;
    if (count < AUDIO_BUFFER_SAMPLES) {
        buffer[count++] = static_cast<int16_t>(sample);
        return;
    }
    if (!reported) {
        log_printf("Audio %s buffer full: samples after the first %u of this frame are dropped.\n",
                   channel, AUDIO_BUFFER_SAMPLES);
        reported = true;
    }
}

void store_left(uint16_t sample) {
    store_sample(audio_left, sound.audio_left_count, left_overflow_reported, "left", sample);
}

void store_right(uint16_t sample) {
    store_sample(audio_right, sound.audio_right_count, right_overflow_reported, "right", sample);
}

}  // namespace

void sound_begin_frame() {
    sound.audio_left_count = 0;
    sound.audio_right_count = 0;
    left_overflow_reported = false;
    right_overflow_reported = false;
}

void sound_reset() {
    sound = sound_registers{};
    sound_begin_frame();
}

uint16_t joypad_read_joystick(uint16_t latch) {
    const int row = selected_row(latch);
    return row < 0 ? 0xFFFF : read_row(JOYSTICK_MATRIX[row]);
}

uint16_t joypad_read_buttons(uint16_t latch) {
    const int row = selected_row(latch);
    return row < 0 ? 0xFFFF : read_row(BUTTON_MATRIX[row]);
}

uint8_t dsp_read8(uint32_t address) {
    switch (address) {
        case JOYSTICK:
            return static_cast<uint8_t>(joypad_read_joystick(sound.joystick_latch) >> 8);
        case JOYBUTS + 1:
            return static_cast<uint8_t>(joypad_read_buttons(sound.joystick_latch));
        default:
            log_printf("DSP Read8 from %08X\n", address);
            return 0;
    }
}

uint16_t dsp_read16(uint32_t address) {
    switch (address) {
        case 0xF10020:
        case 0xF10032:
            return 0;
        case JPIT2_READ:
            return static_cast<uint16_t>(sound.timer1_divider);
        case JOYSTICK:
            // Bit 0 is the EEPROM's data output: reading it clocks the EEPROM once.
            return static_cast<uint16_t>((joypad_read_joystick(sound.joystick_latch) & 0xFFFE) |
                                         eeprom_read_bit());
        case JOYBUTS:
            return joypad_read_buttons(sound.joystick_latch);
        case EEPROM_DATA_IN:
            return 1;
        case EEPROM_RESET:
            return static_cast<uint16_t>(eeprom_reset());
        default:
            log_printf("DSP Read16 from %08X\n", address);
            return 0;
    }
}

uint32_t dsp_read32(uint32_t address) {
    // The high half is the word read of the joystick port (EEPROM bit included), the low half
    // the button port.
    if (address == JOYSTICK)
        return static_cast<uint32_t>(dsp_read16(JOYSTICK)) << 16 | joypad_read_buttons(sound.joystick_latch);
    // The DSP's control block; the other registers of the block are not readable.
    if (address == D_FLAGS || address == D_CTRL || address == D_REMAIN) return dsp_control_read(address);
    log_printf("DSP Read32 from %08X\n", address);
    return 0;
}

void dsp_write16(uint32_t address, uint16_t value) {
    switch (address) {
        case JPIT1:
            set_timer1(value, sound.timer1_divider);
            return;
        case JPIT2:
            set_timer1(sound.timer1_prescaler, value);
            return;
        case JPIT3:
            set_timer2(value, sound.timer2_divider);
            return;
        case JPIT4:
            set_timer2(sound.timer2_prescaler, value);
            return;
        case 0xF10012:
        case 0xF10014:
        case 0xF10020:
        case 0xF10032:
        case 0xF10034:
        case 0xF17C00:
            return;
        case JOYSTICK:
            sound.joystick_latch = value;
            return;
        case EEPROM_DATA_IN:
            eeprom_write_bit(value);
            return;
        case RTXD:
            // The 16-bit port takes the sample one bit up.
            store_right(static_cast<uint16_t>(2 * value));
            return;
        default:
            log_printf("DSP Write %04X to %08X\n", value, address);
            return;
    }
}

void dsp_write32(uint32_t address, uint32_t value) {
    // A 32-bit write to a timer register carries the register in its high half.
    const uint32_t high = value >> 16;
    switch (address) {
        case JPIT1:
            set_timer1(high, sound.timer1_divider);
            return;
        case JPIT2:
            set_timer1(sound.timer1_prescaler, high);
            return;
        case JPIT3:
            set_timer2(high, sound.timer2_divider);
            return;
        case 0xF10020:
            return;
        case JOYSTICK:
            sound.joystick_latch = static_cast<uint16_t>(value);
            return;
        case LTXD:
            store_left(static_cast<uint16_t>(value));
            return;
        case RTXD:
            store_right(static_cast<uint16_t>(value));
            return;
        case SCLK:
            sound.audio_rate = serial_sample_rate(value);
            return;
        case SMODE:
            sound.serial_mode = value;
            return;
        // The DSP's control block.
        case D_FLAGS:
        case D_MTXC:
        case D_MTXA:
        case D_END:
        case D_PC:
        case D_CTRL:
        case D_MOD:
        case D_DIVCTRL:
            dsp_control_write(address, value);
            return;
        default:
            // Includes timer 2's divider, writable only with 16 bits.
            log_printf("DSP Write %08X to %08X\n", value, address);
            return;
    }
}
