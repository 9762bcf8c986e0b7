#include "core/memory.h"

#include <cstdlib>
#include <cstring>

uint8_t* main_ram;
uint8_t* gpu_ram;
uint8_t* dsp_ram;
uint8_t* cart_rom;
uint8_t* boot_rom;
uint8_t* clut;
uint16_t* eeprom_image;
uint16_t* cry_add_y;
uint16_t* cry_add_cr;
int16_t* audio_left;
int16_t* audio_right;
uint32_t* frame_buffer;

namespace {

// Buffers without a fill value start zeroed, so nothing the machine reads is indeterminate.
template <typename T>
bool allocate(T*& buffer, size_t bytes) {
    buffer = static_cast<T*>(std::calloc(bytes, 1));
    return buffer != nullptr;
}

template <typename T>
void release(T*& buffer) {
    std::free(buffer);
    buffer = nullptr;
}

}  // namespace

bool memory_allocate() {
    return allocate(main_ram, MAIN_RAM_SIZE) && allocate(gpu_ram, GPU_RAM_SIZE) &&
           allocate(dsp_ram, DSP_RAM_SIZE) && allocate(cart_rom, CART_ROM_SIZE) &&
           allocate(boot_rom, BOOT_ROM_SIZE) && allocate(clut, CLUT_SIZE) &&
           allocate(eeprom_image, EEPROM_SIZE) &&
           allocate(cry_add_y, CRY_TABLE_ENTRIES * sizeof(uint16_t)) &&
           allocate(cry_add_cr, CRY_TABLE_ENTRIES * sizeof(uint16_t)) &&
           allocate(audio_left, AUDIO_BUFFER_SAMPLES * sizeof(int16_t)) &&
           allocate(audio_right, AUDIO_BUFFER_SAMPLES * sizeof(int16_t)) &&
           allocate(frame_buffer, FRAME_ROWS * FRAME_PITCH * sizeof(uint32_t));
}

void memory_release() {
    release(main_ram);
    release(gpu_ram);
    release(dsp_ram);
    release(cart_rom);
    release(boot_rom);
    release(clut);
    release(eeprom_image);
    release(cry_add_y);
    release(cry_add_cr);
    release(audio_left);
    release(audio_right);
    release(frame_buffer);
}

void memory_clear() {
    std::memset(gpu_ram, 0, GPU_RAM_SIZE);
    std::memset(dsp_ram, 0, DSP_RAM_SIZE);
    std::memset(boot_rom, 0, BOOT_ROM_SIZE);
    std::memset(clut, 0, CLUT_SIZE);
    std::memset(eeprom_image, 0, EEPROM_SIZE);
    std::memset(audio_left, 0, AUDIO_BUFFER_SAMPLES * sizeof(int16_t));
    std::memset(audio_right, 0, AUDIO_BUFFER_SAMPLES * sizeof(int16_t));
    std::memset(frame_buffer, 0, FRAME_ROWS * FRAME_PITCH * sizeof(uint32_t));
}

void swap_bytes(uint8_t* buffer, int32_t length) {
    for (int32_t i = 0; i + 1 < length; i += 2) {
        uint16_t w;
        std::memcpy(&w, buffer + i, 2);
        w = static_cast<uint16_t>(w << 8 | w >> 8);
        std::memcpy(buffer + i, &w, 2);
    }
}
