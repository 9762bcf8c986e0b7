// The bus: one address decoder through which every processor's data accesses reach memory and
// the two custom chips' register files.
//
// Offers: bus_read8/16/32, bus_write8/16/32, get_mem_pointer. Every function reduces its
// address to 24 bits first. The bus keeps no state, counts no cycles and logs nothing itself;
// unmapped space reads 0 and ignores writes.
// Needs: the buffers of memory.h, the graphics-chip register file (video.h), the sound-chip
// register file (sound.h), the CD-ROM stub (cdrom.h), the Object Processor's row pointer.
#pragma once

#include <array>
#include <cstdint>

// Below this address every access of every width is main RAM, mirrored every MAIN_RAM_SIZE
// bytes, by memory.h's buffer rules (the 68000's direct windows rely on both).
constexpr uint32_t BUS_RAM_END = 0x800000;
// From BUS_CART_BASE up to BUS_CDROM_BASE every read of every width is the cartridge ROM (offset
// address - BUS_CART_BASE, by memory.h's buffer rules) and every write is ignored.
constexpr uint32_t BUS_CART_BASE = BUS_RAM_END;
constexpr uint32_t BUS_CDROM_BASE = 0xDFFF00;

uint8_t bus_read8(uint32_t address);
uint16_t bus_read16(uint32_t address);
uint32_t bus_read32(uint32_t address);
void bus_write8(uint32_t address, uint8_t value);
void bus_write16(uint32_t address, uint16_t value);
void bus_write32(uint32_t address, uint32_t value);

// Host pointer to the buffer byte that holds console address A (the caller applies the
// word-swapped rules), or null with a logged message when no memory holds A. *available, when
// given, receives the number of bytes from that byte to the end of its buffer, so bulk readers
// can stay inside it.
uint8_t* get_mem_pointer(uint32_t address, uint32_t* available = nullptr);

// The wave-table ROM at 0xF1D000: 4096 bytes in the console's big-endian order.
extern const std::array<uint8_t, 4096> wave_table_rom;
