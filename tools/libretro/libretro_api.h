// The parts of the libretro interface this core uses, declared from the interface's public
// documentation: the types a front-end passes, the callbacks it installs, the environment
// commands and the ids of devices, buttons, keys and memory areas. Version 1 of the interface.
#pragma once

#include <cstddef>
#include <cstdint>

extern "C" {

constexpr unsigned RETRO_API_VERSION = 1;

// Devices and the joypad's button ids.
constexpr unsigned RETRO_DEVICE_JOYPAD = 1;
constexpr unsigned RETRO_DEVICE_KEYBOARD = 3;
enum retro_joypad_id : unsigned {
    RETRO_DEVICE_ID_JOYPAD_B = 0,
    RETRO_DEVICE_ID_JOYPAD_Y = 1,
    RETRO_DEVICE_ID_JOYPAD_SELECT = 2,
    RETRO_DEVICE_ID_JOYPAD_START = 3,
    RETRO_DEVICE_ID_JOYPAD_UP = 4,
    RETRO_DEVICE_ID_JOYPAD_DOWN = 5,
    RETRO_DEVICE_ID_JOYPAD_LEFT = 6,
    RETRO_DEVICE_ID_JOYPAD_RIGHT = 7,
    RETRO_DEVICE_ID_JOYPAD_A = 8,
    RETRO_DEVICE_ID_JOYPAD_X = 9,
    RETRO_DEVICE_ID_JOYPAD_L = 10,
    RETRO_DEVICE_ID_JOYPAD_R = 11,
};

// Keyboard key codes (the front-end's retro_key values) the keypad listens to.
enum retro_key_code : unsigned {
    RETROK_HASH = 35,
    RETROK_ASTERISK = 42,
    RETROK_MINUS = 45,
    RETROK_0 = 48,  // '0' to '9' are 48 to 57
    RETROK_EQUALS = 61,
    RETROK_KP0 = 256,  // keypad 0 to 9 are 256 to 265
    RETROK_KP_DIVIDE = 267,
    RETROK_KP_MULTIPLY = 268,
};

// Memory areas.
constexpr unsigned RETRO_MEMORY_SAVE_RAM = 0;

constexpr unsigned RETRO_REGION_NTSC = 0;

// Environment commands.
constexpr unsigned RETRO_ENVIRONMENT_SET_MESSAGE = 6;
constexpr unsigned RETRO_ENVIRONMENT_SET_PIXEL_FORMAT = 10;
constexpr unsigned RETRO_ENVIRONMENT_SET_INPUT_DESCRIPTORS = 11;
constexpr unsigned RETRO_ENVIRONMENT_SET_KEYBOARD_CALLBACK = 12;
constexpr unsigned RETRO_ENVIRONMENT_GET_LOG_INTERFACE = 27;
constexpr unsigned RETRO_ENVIRONMENT_SET_SYSTEM_AV_INFO = 32;
constexpr unsigned RETRO_ENVIRONMENT_SET_GEOMETRY = 37;

enum retro_pixel_format { RETRO_PIXEL_FORMAT_0RGB1555 = 0, RETRO_PIXEL_FORMAT_XRGB8888 = 1, RETRO_PIXEL_FORMAT_RGB565 = 2 };

enum retro_log_level { RETRO_LOG_DEBUG = 0, RETRO_LOG_INFO, RETRO_LOG_WARN, RETRO_LOG_ERROR };
typedef void (*retro_log_printf_t)(enum retro_log_level level, const char* format, ...);
struct retro_log_callback {
    retro_log_printf_t log;
};

struct retro_message {
    const char* msg;
    unsigned frames;  // how long to show it
};

struct retro_input_descriptor {
    unsigned port;
    unsigned device;
    unsigned index;
    unsigned id;
    const char* description;  // null ends the list
};

typedef void (*retro_keyboard_event_t)(bool down, unsigned keycode, uint32_t character, uint16_t key_modifiers);
struct retro_keyboard_callback {
    retro_keyboard_event_t callback;
};

struct retro_system_info {
    const char* library_name;
    const char* library_version;
    const char* valid_extensions;  // '|'-separated, without dots
    bool need_fullpath;            // the core reads the file itself
    bool block_extract;
};

struct retro_game_geometry {
    unsigned base_width;
    unsigned base_height;
    unsigned max_width;
    unsigned max_height;
    float aspect_ratio;  // 0 or less: width / height
};

struct retro_system_timing {
    double fps;
    double sample_rate;
};

struct retro_system_av_info {
    retro_game_geometry geometry;
    retro_system_timing timing;
};

struct retro_game_info {
    const char* path;
    const void* data;
    size_t size;
    const char* meta;
};

typedef bool (*retro_environment_t)(unsigned cmd, void* data);
typedef void (*retro_video_refresh_t)(const void* data, unsigned width, unsigned height, size_t pitch);
typedef void (*retro_audio_sample_t)(int16_t left, int16_t right);
typedef size_t (*retro_audio_sample_batch_t)(const int16_t* data, size_t frames);
typedef void (*retro_input_poll_t)(void);
typedef int16_t (*retro_input_state_t)(unsigned port, unsigned device, unsigned index, unsigned id);

}  // extern "C"
