/*
 * A Windows front-end in miniature: it loads vemocore.dll at run time with LoadLibrary and
 * GetProcAddress, as a front-end that ships the DLL beside itself does, runs the test-pattern
 * program (tests/tools/programs/test_pattern.s, position independent) for a few frames, once
 * placed in RAM and once as a cartridge, and checks what a front-end reads back. The frame
 * information is read as the 525 32-bit words a 32-bit front-end written in any language sees,
 * and compared with the header's field names.
 *
 *     vemo_frontend PROGRAM.bin [DLL]      (DLL: vemocore.dll by default)
 *
 * Writes the cartridge image into the current folder (and removes it). Prints one line per
 * failed check and a summary; exit status 0 when every check held.
 */
#include <windows.h>

#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "vemocore.h"

typedef int32_t (*init_fn)(const vemo_config *);
typedef void (*shutdown_fn)(void);
typedef int32_t (*run_frame_fn)(void);
typedef void (*set_joypad_fn)(int32_t, const vemo_joypad *);
typedef void (*frame_info_fn)(vemo_frame_info *);
typedef const char *(*error_fn)(void);

static int checks, failures;

static void check(int ok, const char *what, long got, long expected) {
    ++checks;
    if (!ok) {
        ++failures;
        printf("FAILED: %s: got %ld (0x%lx), expected %ld (0x%lx)\n", what, got, (unsigned long)got,
               expected, (unsigned long)expected);
    }
}
#define CHECK_EQ(what, got, expected) check((long)(got) == (long)(expected), what, (long)(got), (long)(expected))

/* What test_pattern.s shows: a CRY picture of 1280 video clocks at 4 clocks per pixel from
 * clock 166, on lines 40 to 519 (frame-buffer rows 0 to 239), background 0x8840; an 8-bit CLUT
 * object at x 32 on rows 16 to 79 and a 16-bit object at x 128 on rows 120 to 151, each with
 * the marker colour 0x88FF in its first pixel. */
enum { LOAD_ADDRESS = 0x4000, CARTRIDGE_START = 0x802000, CARTRIDGE_HEADER = 0x2000, FRAMES = 3,
       DRAWN_ROWS = 240, BACKGROUND = 0x8840, MARKER = 0x88FF };
static const struct { int row, column; uint32_t cell; } cells[] = {
    {0, 0, BACKGROUND},    {239, 319, BACKGROUND}, {16, 32, MARKER},   {16, 33, 0xF0FF},
    {48, 40, 0xF01F},      {120, 128, MARKER},     {120, 129, 0x00FF}, {151, 180, 0x0F80},
};

/* Words of the frame information on a 32-bit host. */
enum { W_FRAME_BUFFER = 512, W_PITCH, W_X_OFFSET, W_M68K_PC, W_GPU_PC, W_DSP_PC, W_COLOR_MODE,
       W_VAR_MODE, W_AUDIO_LEFT, W_AUDIO_RIGHT, W_LEFT_COUNT, W_RIGHT_COUNT, W_AUDIO_RATE, WORDS };

static struct {
    init_fn init;
    shutdown_fn shutdown;
    run_frame_fn run_frame;
    set_joypad_fn set_joypad;
    frame_info_fn frame_info;
    error_fn error;
} core;

/* Reads a whole file; 0 when it cannot. The caller frees the bytes. */
static unsigned char *read_file(const char *path, long *size) {
    FILE *file = fopen(path, "rb");
    unsigned char *bytes = NULL;
    *size = -1;
    if (file && fseek(file, 0, SEEK_END) == 0) *size = ftell(file);
    if (*size > 0 && fseek(file, 0, SEEK_SET) == 0) {
        bytes = malloc((size_t)*size);
        if (bytes && fread(bytes, 1, (size_t)*size, file) != (size_t)*size) {
            free(bytes);
            bytes = NULL;
        }
    }
    if (file) fclose(file);
    return bytes;
}

/* Starts the machine with `config`, runs FRAMES frames and checks the test pattern in the
 * frame information; the program's code lies at `code` to `code` + `size`. */
static void run_and_check(const vemo_config *config, const char *mode, uint32_t code, uint32_t size) {
    printf("%s:\n", mode);
    if (!core.init(config)) {
        printf("FAILED: vemo_init: %s", core.error());
        ++failures;
        core.shutdown();
        return;
    }
    vemo_joypad pad;
    memset(&pad, 0, sizeof pad);
    int frames = 0;
    while (frames < FRAMES) {
        core.set_joypad(0, &pad);
        if (!core.run_frame()) break;
        ++frames;
    }
    CHECK_EQ("frames run", frames, FRAMES);

    /* The record in a buffer with guard words behind it: the DLL writes exactly 2100 bytes. */
    uint32_t words[WORDS + 4];
    memset(words, 0xA5, sizeof words);
    core.frame_info((vemo_frame_info *)words);
    const vemo_frame_info *info = (const vemo_frame_info *)words;
    CHECK_EQ("record size", sizeof(vemo_frame_info), 4 * WORDS);
    for (int i = WORDS; i < WORDS + 4; ++i) CHECK_EQ("guard word behind the record", words[i], 0xA5A5A5A5u);

    CHECK_EQ("frame_pitch (word 513)", words[W_PITCH], 1024);
    CHECK_EQ("x_offset (word 514): (200 - 166) / 4", words[W_X_OFFSET], 8);
    CHECK_EQ("color_mode (word 518): CRY", words[W_COLOR_MODE], 0);
    CHECK_EQ("var_mode (word 519)", words[W_VAR_MODE], 0);
    CHECK_EQ("audio_left_count (word 522), audio off", words[W_LEFT_COUNT], 0);
    CHECK_EQ("audio_right_count (word 523)", words[W_RIGHT_COUNT], 0);
    CHECK_EQ("audio_rate (word 524)", words[W_AUDIO_RATE], 0);
    const uint32_t pc = words[W_M68K_PC];
    check(pc >= code && pc < code + size, "m68k_pc (word 515) inside the program", (long)pc, (long)code);
    check(words[W_AUDIO_LEFT] != 0 && words[W_AUDIO_RIGHT] != 0 && words[W_AUDIO_LEFT] != words[W_AUDIO_RIGHT],
          "two sample buffers (words 520, 521)", (long)words[W_AUDIO_LEFT], (long)words[W_AUDIO_RIGHT]);

    /* The header's names read the same words. */
    CHECK_EQ("frame_buffer field is word 512", (uintptr_t)info->frame_buffer, words[W_FRAME_BUFFER]);
    CHECK_EQ("frame_pitch field is word 513", info->frame_pitch, words[W_PITCH]);
    CHECK_EQ("m68k_pc field is word 515", info->m68k_pc, words[W_M68K_PC]);
    CHECK_EQ("color_mode field is word 518", info->color_mode, words[W_COLOR_MODE]);
    CHECK_EQ("audio_right field is word 521", (uintptr_t)info->audio_right, words[W_AUDIO_RIGHT]);
    CHECK_EQ("audio_rate field is word 524", info->audio_rate, words[W_AUDIO_RATE]);

    int first_wrong_row = -1;
    for (int row = 0; row < 256 && first_wrong_row < 0; ++row) {
        const int drawn = row < DRAWN_ROWS;
        if (words[2 * row] != (drawn ? 1280u : 0u) || words[2 * row + 1] != (drawn ? 4u : 0u)) first_wrong_row = row;
    }
    CHECK_EQ("first row whose timing is not 1280 clocks at 4 per pixel (0-239) or none (240-255)",
             first_wrong_row, -1);

    const uint32_t *frame_buffer = (const uint32_t *)(uintptr_t)words[W_FRAME_BUFFER];
    for (size_t i = 0; i < sizeof cells / sizeof cells[0]; ++i) {
        char what[64];
        snprintf(what, sizeof what, "cell at row %d, column %d", cells[i].row, cells[i].column);
        CHECK_EQ(what, frame_buffer[cells[i].row * 1024 + cells[i].column], cells[i].cell);
    }

    /* The program idles in a loop once the picture is up: the next frame leaves the 68000 there. */
    CHECK_EQ("one more frame", core.run_frame(), 1);
    core.frame_info((vemo_frame_info *)words);
    CHECK_EQ("m68k_pc after one more frame", words[W_M68K_PC], pc);
    printf("  %d frames; row 0: %u clocks at %u per pixel; cell (16, 32) = %04X; m68k_pc %08X\n", frames + 1,
           (unsigned)words[0], (unsigned)words[1], (unsigned)frame_buffer[16 * 1024 + 32], (unsigned)pc);

    core.shutdown();
    core.shutdown(); /* does nothing */
}

int main(int argc, char **argv) {
    if (argc < 2) {
        fprintf(stderr, "usage: vemo_frontend PROGRAM.bin [DLL]\n");
        return 2;
    }
    const char *program = argv[1], *dll = argc > 2 ? argv[2] : "vemocore.dll";
    long program_size;
    unsigned char *image = read_file(program, &program_size);
    if (!image) {
        fprintf(stderr, "cannot read %s\n", program);
        return 2;
    }

    HMODULE library = LoadLibraryA(dll);
    if (!library) {
        printf("FAILED: LoadLibrary(%s): error %lu\n", dll, (unsigned long)GetLastError());
        return 1;
    }
    core.init = (init_fn)(void (*)(void))GetProcAddress(library, "vemo_init");
    core.shutdown = (shutdown_fn)(void (*)(void))GetProcAddress(library, "vemo_shutdown");
    core.run_frame = (run_frame_fn)(void (*)(void))GetProcAddress(library, "vemo_run_frame");
    core.set_joypad = (set_joypad_fn)(void (*)(void))GetProcAddress(library, "vemo_set_joypad_state");
    core.frame_info = (frame_info_fn)(void (*)(void))GetProcAddress(library, "vemo_get_frame_info");
    core.error = (error_fn)(void (*)(void))GetProcAddress(library, "vemo_get_error_string");
    if (!core.init || !core.shutdown || !core.run_frame || !core.set_joypad || !core.frame_info || !core.error) {
        printf("FAILED: the DLL lacks one of the six vemo_ functions\n");
        return 1;
    }
    /* The core's own functions stay inside the DLL. */
    check(GetProcAddress(library, "log_printf") == NULL && GetProcAddress(library, "bus_read16") == NULL,
          "internal functions are not exported", 1, 0);

    vemo_config config;
    memset(&config, 0, sizeof config);
    config.load_program = 1;
    config.load_address = LOAD_ADDRESS;
    snprintf(config.rom_path, sizeof config.rom_path, "%s", "no-such-program.bin");
    CHECK_EQ("vemo_init with a missing program", core.init(&config), 0);
    check(strcmp(core.error(), "Couldn't load bin file no-such-program.bin.\n") == 0,
          "message for a missing program", 0, 0);
    core.shutdown();

    snprintf(config.rom_path, sizeof config.rom_path, "%s", program);
    run_and_check(&config, "program mode, at 0x4000", LOAD_ADDRESS, (uint32_t)program_size);

    /* The same code as a cartridge: a 0x2000-byte header, then the code the 68000 starts at. */
    const char *cartridge = "vemo_frontend_test.j64";
    FILE *file = fopen(cartridge, "wb");
    static const unsigned char header[CARTRIDGE_HEADER];
    const int written = file && fwrite(header, 1, sizeof header, file) == sizeof header &&
                        fwrite(image, 1, (size_t)program_size, file) == (size_t)program_size;
    if (file) fclose(file);
    CHECK_EQ("cartridge image written", written, 1);
    memset(&config, 0, sizeof config);
    snprintf(config.rom_path, sizeof config.rom_path, "%s", cartridge);
    snprintf(config.eeprom_path, sizeof config.eeprom_path, "%s", "no-such-save.eeprom");
    if (written) run_and_check(&config, "cartridge mode", CARTRIDGE_START, (uint32_t)program_size);
    remove(cartridge);

    FreeLibrary(library);
    free(image);
    printf("vemo_frontend: %s through %s: %d checks, %d failed\n", program, dll, checks, failures);
    return failures ? 1 : 0;
}
