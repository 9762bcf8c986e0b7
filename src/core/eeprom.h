// The cartridge's serial EEPROM: 64 words of 16 bits driven bit by bit through the sound
// chip's controller-port registers, kept in a 128-byte file.
//
// Offers: the serial state machine and eeprom_save. Needs: eeprom_image (memory.h),
// eeprom_file_path (host.h), log_printf.
#pragma once

#include <cstdint>

void eeprom_write_bit(uint16_t value);
int eeprom_read_bit();
int eeprom_reset();
void eeprom_save();
