// The host interface's internal side: the message sink, the core's copy of the configuration,
// the controller slots and the row-timing record.
//
// Offers: log_printf/log_text (every message of the core goes through log_printf; each message
// replaces the previous one), log_observer, core_config, joypad_slots, eeprom_file_path, set_row_timing,
// load_file. The six exported functions are declared in vemocore.h.
// Needs: memory.h for the buffers vemo_init allocates.
#pragma once

#include <cstdint>

#include "vemocore.h"

constexpr uint32_t LOG_TEXT_SIZE = 4096;
constexpr uint32_t PATH_SIZE = 1024;

extern char log_text[LOG_TEXT_SIZE];
extern vemo_config core_config;
extern vemo_joypad joypad_slots[2];
extern char eeprom_file_path[PATH_SIZE];

void log_printf(const char* format, ...) __attribute__((format(printf, 1, 2)));
// Messages logged so far (wrapping): lets a bounded loop count what its messages cost.
extern uint32_t log_count;
// At most LOG_FRAME_LIMIT messages of a frame are formatted; the rest are counted, and the text
// then says that more were dropped. log_begin_frame starts the count of a frame.
constexpr uint32_t LOG_FRAME_LIMIT = 1000;
void log_begin_frame();

// A failed EEPROM save must not vanish behind later messages: log_save_failure puts its message
// at the front of log_text, where it stays, later messages following it, until a save succeeds
// (log_save_succeeded) or the machine starts again (log_clear empties the text).
void log_save_failure(const char* format, ...) __attribute__((format(printf, 1, 2)));
void log_save_succeeded();
void log_clear();

// How a path that exists is not a regular file ("a FIFO", "a directory", ...), or null when it
// is one or does not exist. Never opens the path.
const char* file_kind(const char* path);

// Tools that list every message (vemo-run --log) set an observer: log_printf hands it each
// message once formatted. Unset (the library's own state), it costs log_printf one test.
using log_observer_fn = void (*)(const char* message);
extern log_observer_fn log_observer;

// Stores a frame-buffer row's timing pair into the frame-information record (row 0 to 255).
void set_row_timing(int row, int32_t pixel_divisor, int32_t active_width);

// Reads a whole file into destination, which holds capacity bytes. Logs nothing: callers
// report failures in their own words.
enum load_result { LOAD_FAILED = 0, LOAD_OK = 1, LOAD_TOO_LARGE = 2, LOAD_NOT_A_FILE = 3 };
// LOAD_TOO_LARGE: the file is longer than capacity; its first capacity bytes were read and
// *file_size (when given) holds its full length. LOAD_NOT_A_FILE: the path is a FIFO, a device,
// a directory or the like; it is refused without waiting on it.
load_result load_file(const char* path, uint8_t* destination, uint32_t capacity, long* file_size = nullptr);

// True from a successful vemo_init until vemo_shutdown: only then may frames run.
extern bool machine_started;

// The core's frame-information record (row_timing is written by set_row_timing).
extern vemo_frame_info core_frame_info;
