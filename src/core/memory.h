// The console's memories as host buffers, and the word-swapped byte order they share.
//
// Offers: the buffer pointers (allocated by vemo_init, released by vemo_shutdown), their sizes,
// swap_bytes, and inline accessors that read and write the console's big-endian values in a
// buffer. Needs: nothing.
//
// Word-swapped order: each big-endian 16-bit word of the console is one host 16-bit value, so
// the byte at console address A lies at buffer offset A ^ 1 and a 32-bit value is the host
// 32-bit word rotated by 16 bits. The accessors do not check bounds: callers mask or clamp the
// offset first (the bus does it with its address decode).
#pragma once

#include <cstdint>
#include <cstring>

constexpr uint32_t MAIN_RAM_SIZE = 0x200000;
constexpr uint32_t GPU_RAM_SIZE = 0x1000;
constexpr uint32_t DSP_RAM_SIZE = 0x2000;
constexpr uint32_t CART_ROM_SIZE = 0x600000;
constexpr uint32_t BOOT_ROM_SIZE = 0x20000;
constexpr uint32_t CLUT_SIZE = 0x200;
constexpr uint32_t EEPROM_SIZE = 0x80;
constexpr uint32_t CRY_TABLE_ENTRIES = 0x10000;
constexpr uint32_t AUDIO_BUFFER_SAMPLES = 4096;
constexpr uint32_t FRAME_ROWS = 256;
constexpr uint32_t FRAME_PITCH = 1024;  // cells per frame-buffer row

extern uint8_t* main_ram;
extern uint8_t* gpu_ram;
extern uint8_t* dsp_ram;
extern uint8_t* cart_rom;
extern uint8_t* boot_rom;
extern uint8_t* clut;
extern uint16_t* eeprom_image;   // 64 words, host order, not word-swapped
extern uint16_t* cry_add_y;      // colour-addition tables, built by build_colour_tables
extern uint16_t* cry_add_cr;
extern int16_t* audio_left;
extern int16_t* audio_right;
extern uint32_t* frame_buffer;   // FRAME_ROWS x FRAME_PITCH cells

// Allocates every buffer zeroed (vemo_init; false when the host is out of memory) and releases
// them, nulling each pointer (vemo_shutdown).
bool memory_allocate();
void memory_release();

// Zeroes the allocated buffers a start does not fill on its own: all but main RAM and the
// cartridge ROM (a start fills those with 0xFF) and the colour-addition tables (which never
// change once built).
void memory_clear();

// Exchanges the two bytes of every 16-bit pair: big-endian image <-> word-swapped order.
void swap_bytes(uint8_t* buffer, int32_t length);

inline uint8_t ws_read8(const uint8_t* buf, uint32_t offset) { return buf[offset ^ 1]; }
inline void ws_write8(uint8_t* buf, uint32_t offset, uint8_t v) { buf[offset ^ 1] = v; }

inline uint16_t ws_read16(const uint8_t* buf, uint32_t offset) {
    uint16_t v;
    std::memcpy(&v, buf + offset, 2);
    return v;
}
inline void ws_write16(uint8_t* buf, uint32_t offset, uint16_t v) { std::memcpy(buf + offset, &v, 2); }

inline uint32_t rotate16(uint32_t v) { return (v << 16) | (v >> 16); }

inline uint32_t ws_read32(const uint8_t* buf, uint32_t offset) {
    uint32_t v;
    std::memcpy(&v, buf + offset, 4);
    return rotate16(v);
}
inline void ws_write32(uint8_t* buf, uint32_t offset, uint32_t v) {
    v = rotate16(v);
    std::memcpy(buf + offset, &v, 4);
}

// The bus's rules for a buffer it serves (bus.cpp, and the 68000's direct RAM window): a 16- or
// 32-bit access at an odd offset uses the even offset below it, and a 32-bit access at the
// buffer's last word takes its low half from the buffer's first word, as the RAM mirror does.
// No access leaves the buffer of `size` bytes.
inline uint16_t buffer_read16(const uint8_t* buf, uint32_t offset) { return ws_read16(buf, offset & ~1u); }
inline void buffer_write16(uint8_t* buf, uint32_t offset, uint16_t v) { ws_write16(buf, offset & ~1u, v); }

inline uint32_t buffer_read32(const uint8_t* buf, uint32_t offset, uint32_t size) {
    offset &= ~1u;
    if (offset + 4 <= size) [[likely]]
        return ws_read32(buf, offset);
    return static_cast<uint32_t>(ws_read16(buf, offset)) << 16 | ws_read16(buf, 0);
}

inline void buffer_write32(uint8_t* buf, uint32_t offset, uint32_t size, uint32_t v) {
    offset &= ~1u;
    if (offset + 4 <= size) [[likely]] {
        ws_write32(buf, offset, v);
        return;
    }
    ws_write16(buf, offset, static_cast<uint16_t>(v >> 16));
    ws_write16(buf, 0, static_cast<uint16_t>(v));
}
