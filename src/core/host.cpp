// The six exported functions, start-up and shut-down, image loading and the message sink.
#include "core/host.h"

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "core/cdrom.h"
#include "core/eeprom.h"
#include "core/memory.h"
#include "core/scheduler.h"
#include "core/sound.h"
#include "core/video.h"
#include "m68k/m68k.h"
#include "objproc/colour_tables.h"
#include "objproc/objproc.h"
#include "risc/dsp.h"
#include "risc/gpu.h"

char log_text[LOG_TEXT_SIZE];
vemo_config core_config;
vemo_joypad joypad_slots[2];
char eeprom_file_path[PATH_SIZE];
vemo_frame_info core_frame_info;
bool machine_started;
log_observer_fn log_observer;

namespace {

// Length of the failed-save message held at the front of log_text; 0 when there is none.
size_t sticky_length;
// The failed-save message never takes more than this, so later messages keep room after it.
constexpr size_t STICKY_ROOM = LOG_TEXT_SIZE * 3 / 4;

}  // namespace

uint32_t log_count;

namespace {
// Messages formatted in the current frame. Formatting costs far more than the emulation that
// asks for it: a program whose GPU and DSP write an unhandled register in a loop would log
// 300,000 messages a frame and run a hundred times slower. Past the limit a frame's messages are
// counted but not formatted, and the text says so.
uint32_t frame_messages;
}  // namespace

void log_begin_frame() { frame_messages = 0; }

void log_printf(const char* format, ...) {
    ++log_count;
    if (++frame_messages > LOG_FRAME_LIMIT) {
        if (frame_messages == LOG_FRAME_LIMIT + 1)
            std::snprintf(log_text + sticky_length, sizeof log_text - sticky_length,
                          "More than %u messages in one frame: the rest of this frame's are not shown.\n",
                          LOG_FRAME_LIMIT);
        return;
    }
    va_list args;
    va_start(args, format);
    std::vsnprintf(log_text + sticky_length, sizeof log_text - sticky_length, format, args);
    va_end(args);
    if (log_observer) log_observer(log_text);
}

void log_save_failure(const char* format, ...) {
    va_list args;
    va_start(args, format);
    std::vsnprintf(log_text, STICKY_ROOM, format, args);
    va_end(args);
    sticky_length = std::strlen(log_text);
}

void log_save_succeeded() {
    if (sticky_length == 0) return;
    std::memmove(log_text, log_text + sticky_length, std::strlen(log_text + sticky_length) + 1);
    sticky_length = 0;
}

void log_clear() {
    std::memset(log_text, 0, sizeof log_text);
    sticky_length = 0;
    frame_messages = 0;
}

const char* file_kind(const char* path) {
    struct stat info;
    if (stat(path, &info) != 0) return nullptr;
    if (S_ISREG(info.st_mode)) return nullptr;
    if (S_ISDIR(info.st_mode)) return "a directory";
    if (S_ISFIFO(info.st_mode)) return "a FIFO";
    if (S_ISCHR(info.st_mode)) return "a character device";
    if (S_ISBLK(info.st_mode)) return "a block device";
#ifdef S_ISSOCK
    if (S_ISSOCK(info.st_mode)) return "a socket";
#endif
    return "not a file";
}

void set_row_timing(int row, int32_t pixel_divisor, int32_t active_width) {
    if (row < 0 || row >= static_cast<int>(FRAME_ROWS)) return;
    core_frame_info.row_timing[2 * row] = active_width;
    core_frame_info.row_timing[2 * row + 1] = pixel_divisor;
}

load_result load_file(const char* path, uint8_t* destination, uint32_t capacity, long* file_size) {
    // Only a regular file has a length to read. Its kind is checked before it is opened, and it
    // is opened without waiting, so that a FIFO or a device never holds start-up up; the check
    // is made again on what was opened, in case the path changed in between.
    if (file_kind(path)) return LOAD_NOT_A_FILE;
#ifdef _WIN32
    // Windows has no FIFOs or terminals to wait on; the file is opened in binary mode.
    const int descriptor = open(path, O_RDONLY | O_BINARY);
#else
    const int descriptor = open(path, O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
#endif
    if (descriptor < 0) return LOAD_FAILED;
    struct stat info;
    if (fstat(descriptor, &info) != 0 || !S_ISREG(info.st_mode)) {
        close(descriptor);
        return LOAD_NOT_A_FILE;
    }
    FILE* file = fdopen(descriptor, "rb");
    if (!file) {
        close(descriptor);
        return LOAD_FAILED;
    }
    long length = -1;
    if (std::fseek(file, 0, SEEK_END) == 0) length = std::ftell(file);
    if (length < 0 || std::fseek(file, 0, SEEK_SET) != 0) {
        std::fclose(file);
        return LOAD_FAILED;
    }
    if (file_size) *file_size = length;
    size_t wanted = static_cast<unsigned long>(length) > capacity ? capacity : static_cast<size_t>(length);
    size_t got = std::fread(destination, 1, wanted, file);
    bool failed = std::ferror(file) || got != wanted;
    std::fclose(file);
    if (failed) return LOAD_FAILED;
    return static_cast<unsigned long>(length) > capacity ? LOAD_TOO_LARGE : LOAD_OK;
}

namespace {

// A path field must end within its 1024 bytes; copying an unterminated one would read past it.
bool path_is_terminated(const char* field, const char* name) {
    if (std::memchr(field, 0, PATH_SIZE)) return true;
    log_printf("The %s in the configuration has no terminating zero within its %u bytes.\n", name,
               PATH_SIZE);
    return false;
}

void write_reset_vectors(uint32_t stack, uint32_t start) {
    ws_write32(main_ram, 0, stack);
    ws_write32(main_ram, 4, start);
}

// Loads an image at `offset` of `buffer`, which has `capacity` bytes from there, converted to
// the word-swapped order. An image that cannot be read is reported with the machine's own
// message; one larger than its space is refused with a message naming the file and both sizes.
// Only the words the image touched are swapped: the rest of the buffer holds its fill, which
// reads the same in either order.
// `touched` receives how many bytes from `offset` on the load may have changed.
bool load_image(const char* path, uint8_t* buffer, uint32_t offset, uint32_t capacity,
                const char* unreadable_message, const char* image_name, const char* space_name,
                uint32_t* touched = nullptr) {
    long size = 0;
    const load_result result = load_file(path, buffer + offset, capacity, &size);
    if (touched)  // the bytes read, and the one the last word's swap may move
        *touched = size < 0 || static_cast<unsigned long>(size) >= capacity ? capacity
                                                                            : static_cast<uint32_t>(size) + 1;
    switch (result) {
        case LOAD_FAILED:
            log_printf(unreadable_message, path);
            return false;
        case LOAD_TOO_LARGE:
            log_printf("%s %s is %ld bytes, more than the %u bytes of %s.\n", image_name, path, size,
                       capacity, space_name);
            return false;
        case LOAD_NOT_A_FILE:
            log_printf("%s %s is %s, not a regular file.\n", image_name, path,
                       file_kind(path) ? file_kind(path) : "not a regular file any more");
            return false;
        case LOAD_OK:
            break;
    }
    const uint32_t first = offset & ~1u;
    const uint32_t end = (offset + static_cast<uint32_t>(size) + 1) & ~1u;
    swap_bytes(buffer + first, static_cast<int32_t>(end - first));
    return true;
}

// The bytes at the start of the cartridge ROM that may differ from its 0xFF fill: all of a newly
// allocated (zeroed) buffer, then what the last image loaded into it. Nothing else writes there.
uint32_t cart_rom_touched = CART_ROM_SIZE;

bool load_cartridge(const char* path) {
    cart_rom_touched = CART_ROM_SIZE;
    return load_image(path, cart_rom, 0, CART_ROM_SIZE, "Couldn't load rom file %s.\n", "Cartridge image",
                      "cartridge space", &cart_rom_touched);
}

bool load_program_image(const char* path, uint32_t load_address) {
    if (load_address >= MAIN_RAM_SIZE) {
        log_printf("Load address %08X of %s lies outside the %u bytes of RAM.\n", load_address, path,
                   MAIN_RAM_SIZE);
        return false;
    }
    char space[64];
    std::snprintf(space, sizeof space, "RAM from its load address %08X", load_address);
    return load_image(path, main_ram, load_address, MAIN_RAM_SIZE - load_address,
                      "Couldn't load bin file %s.\n", "Program image", space);
}

bool load_boot_rom(const char* path) {
    return load_image(path, boot_rom, 0, BOOT_ROM_SIZE, "Couldn't load boot rom file %s\n",
                      "Boot ROM image", "boot ROM space");
}

// The save file is read in both modes, so that a save is never written over one that was not
// read. A missing file (or no path) is a blank EEPROM, and a shorter file fills the words it
// has. Anything that could not be saved over without losing data is refused: a file that
// exists but cannot be read, one longer than the EEPROM, or no regular file at all.
bool load_eeprom(const char* path) {
    if (path[0] == '\0') return true;
    long size = 0;
    struct stat info;
    if (stat(path, &info) != 0 && errno == ENOENT) return true;
    switch (load_file(path, reinterpret_cast<uint8_t*>(eeprom_image), EEPROM_SIZE, &size)) {
        case LOAD_OK:
            return true;
        case LOAD_TOO_LARGE:
            log_printf("EEPROM file %s is %ld bytes, more than the %u of the EEPROM: it is no save of "
                       "this machine, and a save would cut it.\n", path, size, EEPROM_SIZE);
            break;
        case LOAD_NOT_A_FILE:
            log_printf("EEPROM file %s is %s, not a regular file.\n", path,
                       file_kind(path) ? file_kind(path) : "not a regular file any more");
            break;
        case LOAD_FAILED:
            log_printf("EEPROM file %s cannot be read (%s), and a save would replace it.\n", path,
                       std::strerror(errno));
            break;
    }
    std::memset(eeprom_image, 0, EEPROM_SIZE);
    return false;
}

// Releases the machine's buffers and everything that points into them.
void machine_release() {
    machine_started = false;
    memory_release();
    op_line_buffer = nullptr;  // it pointed into the frame buffer
}

// The buffers of a start as a fresh process has them: zeroed, with RAM and the cartridge ROM
// filled with 0xFF and the colour-addition tables built. A start after another without a
// shut-down keeps the earlier machine's buffers and clears them: returning 9 MB and having it
// mapped and faulted in again costs a restart far more than clearing what was used.
bool prepare_memory() {
    if (main_ram) {
        memory_clear();
    } else {
        if (!memory_allocate()) return false;
        build_colour_tables();
        cart_rom_touched = CART_ROM_SIZE;
    }
    std::memset(main_ram, 0xFF, MAIN_RAM_SIZE);
    std::memset(cart_rom, 0xFF, cart_rom_touched);
    cart_rom_touched = 0;
    return true;
}

// A start gives exactly the machine a first start in a fresh process gives, whatever ran
// before it (shut down or not, started or refused): nothing of an earlier machine survives:
// its chips' registers, the EEPROM's serial state, the row timing, the last message. The
// controller slots are kept: they hold the front-end's input, which it may store before
// vemo_init, not the machine's state.
void machine_forget() {
    machine_started = false;
    op_line_buffer = nullptr;
    log_clear();
    core_frame_info = vemo_frame_info{};
    sound_reset();
    eeprom_reset();
    cdrom_reset();
    video_reset();
    scheduler_reset();
}

}  // namespace

extern "C" VEMO_API int32_t vemo_init(const vemo_config* config) {
    machine_forget();
    if (!config) {
        machine_release();  // a fresh process has no buffers before its first start either
        log_printf("vemo_init was given no configuration.\n");
        return 0;
    }
    std::memcpy(&core_config, config, sizeof core_config);

    if (!prepare_memory()) {
        machine_release();
        log_printf("Couldn't allocate the machine's memory.\n");
        return 0;
    }

    if (!path_is_terminated(core_config.rom_path, "rom_path") ||
        !path_is_terminated(core_config.eeprom_path, "eeprom_path") ||
        (core_config.use_boot_rom && !path_is_terminated(core_config.boot_rom_path, "boot_rom_path")))
        return 0;

    char working_path[PATH_SIZE];
    std::memcpy(working_path, core_config.rom_path, PATH_SIZE);

    const bool program_mode = core_config.load_program != 0;
    const uint32_t load_address = static_cast<uint32_t>(core_config.load_address);
    if (program_mode) {
        if (!load_program_image(working_path, load_address)) return 0;
    } else {
        if (!load_cartridge(working_path)) return 0;
    }
    if (!load_eeprom(core_config.eeprom_path)) return 0;
    std::memcpy(eeprom_file_path, core_config.eeprom_path, PATH_SIZE);

    if (core_config.use_boot_rom) {
        std::memcpy(working_path, core_config.boot_rom_path, PATH_SIZE);
        if (!load_boot_rom(working_path)) return 0;
    }

    // The 68000 takes its stack pointer and start address from RAM offsets 0 and 4. In program
    // mode the stack starts at the very top of RAM (an odd value, kept as the machine has it).
    if (program_mode) {
        write_reset_vectors(0x001FFFFF, load_address);
        if (load_address < 8)
            log_printf("Program image %s at load address %08X lies under the 68000's reset vectors "
                       "(addresses 0 to 7): its bytes there are replaced by them.\n",
                       core_config.rom_path, load_address);
    } else if (core_config.use_boot_rom) {
        write_reset_vectors(0x001FFFFC, 0x00E00008);
    } else {
        write_reset_vectors(0x001FFFFC, 0x00802000);
    }

    video_reset();
    if (!m68k_setup()) {
        log_printf("M68K Init failed.\n");
        return 0;
    }
    gpu_init();
    dsp_init();
    op_init();
    machine_started = true;
    return 1;
}

extern "C" VEMO_API void vemo_shutdown(void) { machine_release(); }

extern "C" VEMO_API void vemo_set_joypad_state(int32_t slot, const vemo_joypad* state) {
    // Only two controller slots exist; anything else is ignored.
    if (slot < 0 || slot > 1 || !state) return;
    joypad_slots[slot] = *state;
}

extern "C" VEMO_API void vemo_get_frame_info(vemo_frame_info* info) {
    vemo_frame_info& f = core_frame_info;
    int32_t d = 200 - static_cast<int32_t>(video.hdb1);
    f.x_offset = (video.vmode & 6) == 2 ? d / 2 : d / 4;
    if (f.x_offset < 0) f.x_offset = 0;
    f.frame_buffer = frame_buffer;
    f.frame_pitch = FRAME_PITCH;
    f.m68k_pc = m68k_get_pc();
    f.gpu_pc = gpu_state.pc;
    f.dsp_pc = dsp_state.pc;
    f.color_mode = (video.vmode >> 1) & 3;
    f.var_mode = (video.vmode >> 8) & 1;
    f.audio_left = audio_left;
    f.audio_right = audio_right;
    f.audio_left_count = sound.audio_left_count;
    f.audio_right_count = sound.audio_right_count;
    f.audio_rate = sound.audio_rate;
    if (info) *info = f;
}

extern "C" VEMO_API const char* vemo_get_error_string(void) { return log_text; }
