// The sound chip's register file, 0xF10000-0xF1FFFF outside DSP RAM and the wave-table ROM:
// the two programmable timers, the audio serial interface and its sample buffers, and the
// controller ports (with the EEPROM's serial lines).
//
// Offers: the sound-chip state read by the frame scheduler and vemo_get_frame_info, the five
// access functions the bus calls, the controller decode. Needs: the EEPROM (eeprom.h), the
// controller slots (host.h), the DSP control block (dsp.h), log_printf.
#pragma once

#include <cstdint>

// Register addresses.
constexpr uint32_t JPIT1 = 0xF10000;   // timer 1 prescaler
constexpr uint32_t JPIT2 = 0xF10002;   // timer 1 divider
constexpr uint32_t JPIT3 = 0xF10004;   // timer 2 prescaler
constexpr uint32_t JPIT4 = 0xF10006;   // timer 2 divider
constexpr uint32_t JPIT2_READ = 0xF10038;  // reads back timer 1's divider
constexpr uint32_t JOYSTICK = 0xF14000;
constexpr uint32_t JOYBUTS = 0xF14002;
constexpr uint32_t EEPROM_DATA_IN = 0xF14800;
constexpr uint32_t EEPROM_RESET = 0xF15000;
constexpr uint32_t LTXD = 0xF1A148;    // left sample out
constexpr uint32_t RTXD = 0xF1A14C;    // right sample out
constexpr uint32_t SCLK = 0xF1A150;    // serial clock divider
constexpr uint32_t SMODE = 0xF1A154;   // serial mode

struct sound_registers {
    uint32_t timer1_prescaler, timer1_divider;
    int32_t timer1_frequency;
    uint32_t timer2_prescaler, timer2_divider;
    int32_t timer2_frequency;
    uint16_t joystick_latch = 0xFFFF;  // as never written: every row deselected
    int32_t audio_rate;            // Hz
    uint32_t serial_mode;
    uint32_t audio_left_count, audio_right_count;  // never above AUDIO_BUFFER_SAMPLES
};

extern sound_registers sound;

// Starts a frame's sample collection: both buffers fill again from their first sample.
void sound_begin_frame();

// Puts every register back to its power-on value (vemo_init): a new machine never sees the
// timers, audio rate or controller latch that an earlier one set.
void sound_reset();

uint16_t joypad_read_joystick(uint16_t latch);
uint16_t joypad_read_buttons(uint16_t latch);

uint8_t dsp_read8(uint32_t address);
uint16_t dsp_read16(uint32_t address);
uint32_t dsp_read32(uint32_t address);
void dsp_write16(uint32_t address, uint16_t value);
void dsp_write32(uint32_t address, uint32_t value);
