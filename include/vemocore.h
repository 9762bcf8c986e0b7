/*
 * vemocore: an emulation core for the Atari Jaguar console.
 *
 * A front-end fills a vemo_config, calls vemo_init once, then for every video frame:
 *
 *     vemo_set_joypad_state(0, &pad);    // what the player holds this frame
 *     vemo_run_frame();                  // 525 lines, 1/60 s of console time
 *     vemo_get_frame_info(&info);        // picture, row timing, audio of that frame
 *
 * and calls vemo_shutdown at the end. Every function runs on the caller's thread and returns
 * when its work is done; the library starts no threads and calls nothing back. Call the
 * functions from one thread at a time.
 *
 * When a function reports failure (0), or whenever the front-end wants to know the core's most
 * recent complaint, vemo_get_error_string() returns the last message the core logged.
 */
#ifndef VEMOCORE_H
#define VEMOCORE_H

#include <stdint.h>

#if defined(_WIN32)
#  if defined(VEMO_BUILDING)
#    define VEMO_API __declspec(dllexport)
#  else
#    define VEMO_API __declspec(dllimport)
#  endif
#else
#  define VEMO_API __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* Start-up configuration, 3104 bytes. Paths are zero-terminated within their 1024 bytes; a path
 * with no terminating zero is refused by vemo_init. The core copies the whole record, so the
 * caller may discard it once vemo_init returns. */
typedef struct vemo_config {
    char rom_path[1024];       /* cartridge image, or program image when load_program != 0 */
    char eeprom_path[1024];    /* 128-byte EEPROM save file, read at start-up (cartridge mode)
                                  and written when the program saves */
    char boot_rom_path[1024];  /* boot ROM image, used only when use_boot_rom != 0 */
    int32_t load_program;      /* 0: cartridge mode; non-zero: program mode */
    int32_t load_address;      /* program mode: RAM address of the image and the start address */
    int32_t audio_enable;      /* non-zero: audio ticks, DSP interrupts and a DSP slice per line */
    int32_t timer_ticks;       /* non-zero (with audio_enable): sound-chip timers interrupt the DSP */
    int32_t reserved0;         /* no effect */
    int32_t reserved1;         /* no effect */
    int32_t use_boot_rom;      /* non-zero: load the boot ROM and start the 68000 in it */
    int32_t dsp_always_run;    /* non-zero: run the DSP every line even with audio_enable == 0 */
} vemo_config;

/* One frame's results, refreshed by vemo_get_frame_info. On a 32-bit host the record is
 * 2100 bytes; on a 64-bit host its three pointer fields are 8 bytes wide and the compiler's
 * natural alignment applies (field order unchanged). Pointers stay valid until vemo_shutdown. */
typedef struct vemo_frame_info {
    /* Per frame-buffer row r: row_timing[2r] = video clocks inside the horizontal display range,
     * row_timing[2r+1] = clocks per pixel (0 before the program sets a video mode). Their
     * quotient is the row's width in pixels. */
    int32_t row_timing[512];
    const uint32_t *frame_buffer; /* 256 rows of frame_pitch cells; a cell holds the colour as
                                     drawn (16-bit value zero-extended, or a 32-bit pixel) */
    int32_t frame_pitch;          /* cells per row: always 1024 */
    int32_t x_offset;             /* horizontal offset of the picture in pixels, >= 0 */
    uint32_t m68k_pc;             /* program counters, for diagnostics */
    uint32_t gpu_pc;
    uint32_t dsp_pc;
    int32_t color_mode;           /* 0 CRY, 1 RGB 24, 2 direct 16, 3 RGB 16 (VMODE bits 2-1) */
    int32_t var_mode;             /* 1: each 16-bit cell's bit 0 selects CRY (0) or RGB 16 (1) */
    const int16_t *audio_left;    /* this frame's samples: 4096-sample buffers */
    const int16_t *audio_right;
    uint32_t audio_left_count;    /* samples written this frame */
    uint32_t audio_right_count;
    int32_t audio_rate;           /* sample rate in Hz; 0 until the program sets it */
} vemo_frame_info;

/* One controller, 21 words; a word is non-zero while its control is held. */
typedef struct vemo_joypad {
    int32_t left, right, up, down;
    int32_t a, b, c, option, pause;
    int32_t key_1, key_2, key_3, key_4, key_5, key_6, key_7, key_8, key_9, key_0;
    int32_t key_star, key_hash;
} vemo_joypad;

/* Allocates the machine, loads the images and starts every processor. Returns 1 on success,
 * 0 on failure (read the reason with vemo_get_error_string, then call vemo_shutdown; frames
 * cannot run after a failed start). It may be called again at any time, with or without
 * vemo_shutdown: every start gives exactly the machine a first start gives, and only the
 * controller slots keep what the front-end stored. */
VEMO_API int32_t vemo_init(const vemo_config *config);

/* Releases everything vemo_init allocated. Safe to call twice; the second call does nothing. */
VEMO_API void vemo_shutdown(void);

/* Emulates one video frame. Returns 1 when all 525 lines ran, 0 when the frame stopped early
 * (the reason is in vemo_get_error_string). Frames run only between a successful vemo_init
 * and vemo_shutdown; any other call returns 0 with a message. */
VEMO_API int32_t vemo_run_frame(void);

/* Stores the state of controller slot 0 or 1 (only slot 0 is wired to the console's ports).
 * Any other slot number is ignored. */
VEMO_API void vemo_set_joypad_state(int32_t slot, const vemo_joypad *state);

/* Copies the current frame information into the caller's record. */
VEMO_API void vemo_get_frame_info(vemo_frame_info *info);

/* The core's last message, zero-terminated; the pointer is valid for the library's lifetime.
 * A failed EEPROM save is the exception that is kept: until a later save succeeds or the
 * machine starts again, the text begins with the line "Couldn't save eeprom file ...", and the
 * last message follows it. */
VEMO_API const char *vemo_get_error_string(void);

#ifdef __cplusplus
}
#endif

/* The records' layout is part of the interface: check it at compile time. */
#if defined(__cplusplus)
#  define VEMO_STATIC_ASSERT static_assert
#else
#  define VEMO_STATIC_ASSERT _Static_assert
#endif
#include <stddef.h>
VEMO_STATIC_ASSERT(sizeof(vemo_config) == 3104, "vemo_config is 3104 bytes");
VEMO_STATIC_ASSERT(offsetof(vemo_config, eeprom_path) == 0x400, "eeprom_path at 0x400");
VEMO_STATIC_ASSERT(offsetof(vemo_config, boot_rom_path) == 0x800, "boot_rom_path at 0x800");
VEMO_STATIC_ASSERT(offsetof(vemo_config, load_program) == 0xC00, "load_program at 0xC00");
VEMO_STATIC_ASSERT(offsetof(vemo_config, audio_enable) == 0xC08, "audio_enable at 0xC08");
VEMO_STATIC_ASSERT(offsetof(vemo_config, use_boot_rom) == 0xC18, "use_boot_rom at 0xC18");
VEMO_STATIC_ASSERT(offsetof(vemo_config, dsp_always_run) == 0xC1C, "dsp_always_run at 0xC1C");
VEMO_STATIC_ASSERT(sizeof(vemo_joypad) == 84, "vemo_joypad is 21 words");
VEMO_STATIC_ASSERT(offsetof(vemo_joypad, key_hash) == 80, "key_hash is word 20");
VEMO_STATIC_ASSERT(offsetof(vemo_frame_info, frame_buffer) == 0x800, "frame_buffer at 0x800");
#if UINTPTR_MAX == 0xFFFFFFFFu
VEMO_STATIC_ASSERT(sizeof(vemo_frame_info) == 2100, "vemo_frame_info is 2100 bytes");
VEMO_STATIC_ASSERT(offsetof(vemo_frame_info, color_mode) == 0x818, "color_mode at 0x818");
VEMO_STATIC_ASSERT(offsetof(vemo_frame_info, audio_left) == 0x820, "audio_left at 0x820");
VEMO_STATIC_ASSERT(offsetof(vemo_frame_info, audio_rate) == 0x830, "audio_rate at 0x830");
#else
VEMO_STATIC_ASSERT(sizeof(vemo_frame_info) == 2120, "vemo_frame_info is 2120 bytes on 64 bits");
VEMO_STATIC_ASSERT(offsetof(vemo_frame_info, frame_pitch) == 0x808, "frame_pitch at 0x808");
VEMO_STATIC_ASSERT(offsetof(vemo_frame_info, color_mode) == 0x81C, "color_mode at 0x81C");
VEMO_STATIC_ASSERT(offsetof(vemo_frame_info, audio_left) == 0x828, "audio_left at 0x828");
VEMO_STATIC_ASSERT(offsetof(vemo_frame_info, audio_rate) == 0x840, "audio_rate at 0x840");
#endif

#endif /* VEMOCORE_H */
