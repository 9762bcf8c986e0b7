// The sound chip's register file, 0xF10000-0xF1FFFF outside DSP RAM and the wave-table ROM:
// the two programmable timers, the audio serial interface and its sample buffers, and the
// controller ports (with the EEPROM's serial lines).
//
// Offers: the sound-chip state read by the frame scheduler and vemo_get_frame_info, the five
// access functions the bus calls, the controller decode. Needs: the EEPROM (eeprom.h), the
// controller slots (host.h), the DSP control block when the DSP lands, log_printf.
// The state here is not reset by vemo_init: it keeps its load-time values for the process.
#pragma once

#include <cstdint>

struct sound_registers {
    uint32_t timer1_prescaler, timer1_divider;
    int32_t timer1_frequency;
    uint32_t timer2_prescaler, timer2_divider;
    int32_t timer2_frequency;
    uint16_t joystick_latch = 0xFFFF;  // as never written: every row deselected
    int32_t audio_rate;            // Hz
    uint32_t serial_mode;
    uint32_t audio_left_count, audio_right_count;
};

extern sound_registers sound;

uint16_t joypad_read_joystick(uint16_t latch);
uint16_t joypad_read_buttons(uint16_t latch);

uint8_t dsp_read8(uint32_t address);
uint16_t dsp_read16(uint32_t address);
uint32_t dsp_read32(uint32_t address);
void dsp_write16(uint32_t address, uint16_t value);
void dsp_write32(uint32_t address, uint32_t value);
