// The CD-ROM unit's registers at 0xDFFF00-0xDFFFFF. No drive is modelled: start-up code that
// probes the unit gets fixed or echoed answers, every other access is logged.
#pragma once

#include <cstdint>

uint16_t cdrom_read16(uint32_t address);
uint32_t cdrom_read32(uint32_t address);
void cdrom_write16(uint32_t address, uint16_t value);
void cdrom_write32(uint32_t address, uint32_t value);

// Clears the data word and restarts the status bit's sequence (vemo_init), so that every start
// of the machine sees the same answers.
void cdrom_reset();
