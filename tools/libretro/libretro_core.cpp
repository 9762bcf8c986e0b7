// vemocore as a libretro core: a front-end that speaks the libretro interface loads this
// library, hands it a cartridge image and calls retro_run once per frame. Each frame it stores
// the controller the front-end reports, runs one console frame through the core's public
// interface and hands back the displayed picture (XRGB8888, at its displayed size) and the
// frame's samples (one batch, at the core's rate).
//
// The controller: the joypad comes from the front-end's joypad (port 0), the keypad from its
// keyboard callback. The console's A, B and C lie in a row as the joypad's Y, B and A do;
// Start is Pause, Select is Option, L and R are the keypad's * and #. The keypad also listens to
// the digit keys and the numeric keypad's digits, with * on '*', '-' and keypad '*', # on '#',
// '=' and keypad '/'.
//
// Save memory: the core reads and writes its EEPROM only as a file, while a front-end keeps save
// memory in a buffer it fills after loading the game and reads whenever it saves. So the 128
// bytes of the EEPROM file are offered as the save memory, and the core's EEPROM file is a
// private scratch file: before the first frame the buffer (as the front-end filled it) is
// written to the scratch file and the machine started from it, and after every frame the
// scratch file (rewritten by the core whenever the program saves) is read back into the buffer.
//
// The core keeps one machine per process, so this core serves one game at a time.
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "display.h"
#include "libretro_api.h"
#include "picture.h"
#include "vemocore.h"

namespace {

constexpr double FRAMES_PER_SECOND = 60.0;
// Before the program sets its sample rate there is no sound; silence goes out at this rate.
constexpr int SILENT_RATE = 48000;
constexpr unsigned DEFAULT_WIDTH = 320, DEFAULT_HEIGHT = 240;
constexpr unsigned EEPROM_BYTES = 128;
constexpr unsigned MESSAGE_FRAMES = 600;

retro_environment_t environment;
retro_video_refresh_t video_out;
retro_audio_sample_batch_t audio_out;
retro_input_poll_t input_poll;
retro_input_state_t input_state;
retro_log_printf_t front_end_log;

vemo_config config;
bool game_loaded, machine_running, save_memory_applied;
uint8_t save_memory[EEPROM_BYTES];   // what the front-end sees
uint8_t started_eeprom[EEPROM_BYTES];  // the scratch file's contents when the machine started
std::string scratch_eeprom;

int32_t keypad[12];  // vemo_joypad words 9 to 20: key_1 ... key_9, key_0, key_star, key_hash

// What was last reported to the front-end.
unsigned shown_width = DEFAULT_WIDTH, shown_height = DEFAULT_HEIGHT;
float shown_aspect = 4.0f / 3.0f;
int shown_rate = SILENT_RATE;
double silence_owed;

rgb_picture picture;
std::vector<uint32_t> xrgb;
std::vector<int16_t> samples;

void log_line(retro_log_level level, const std::string& text) {
    if (front_end_log) front_end_log(level, "[vemocore] %s\n", text.c_str());
    else std::fprintf(stderr, "[vemocore] %s\n", text.c_str());
}

std::string core_message() {
    std::string text = vemo_get_error_string();
    while (!text.empty() && (text.back() == '\n' || text.back() == '\r')) text.pop_back();
    return text;
}

void show_message(const std::string& text) {
    log_line(RETRO_LOG_ERROR, text);
    retro_message message{text.c_str(), MESSAGE_FRAMES};
    if (environment) environment(RETRO_ENVIRONMENT_SET_MESSAGE, &message);
}

// ---- The EEPROM as save memory ----------------------------------------------------------------

bool write_scratch(const uint8_t* bytes) {
    FILE* file = std::fopen(scratch_eeprom.c_str(), "wb");
    if (!file) return false;
    const bool ok = std::fwrite(bytes, 1, EEPROM_BYTES, file) == EEPROM_BYTES;
    return std::fclose(file) == 0 && ok;
}

// The scratch file as the core last wrote it; false while it is not a whole EEPROM.
bool read_scratch(uint8_t* bytes) {
    FILE* file = std::fopen(scratch_eeprom.c_str(), "rb");
    if (!file) return false;
    uint8_t buffer[EEPROM_BYTES + 1];
    const size_t n = std::fread(buffer, 1, sizeof buffer, file);
    std::fclose(file);
    if (n != EEPROM_BYTES) return false;
    std::memcpy(bytes, buffer, EEPROM_BYTES);
    return true;
}

bool make_scratch() {
    std::string pattern = (std::filesystem::temp_directory_path() / "vemocore-eeprom-XXXXXX").string();
    const int fd = mkstemp(pattern.data());
    if (fd < 0) return false;
    close(fd);
    scratch_eeprom = pattern;
    return scratch_eeprom.size() < sizeof config.eeprom_path;
}

// ---- The machine ------------------------------------------------------------------------------

bool start_machine() {
    if (!read_scratch(started_eeprom)) std::memset(started_eeprom, 0, sizeof started_eeprom);
    machine_running = vemo_init(&config) != 0;
    if (!machine_running) {
        show_message("the core did not start: " + core_message());
        vemo_shutdown();
    }
    return machine_running;
}

void restart_machine() {
    vemo_shutdown();
    start_machine();
}

// The front-end fills the save memory after loading the game: start from it if it differs from
// the EEPROM the machine started with.
void apply_save_memory() {
    save_memory_applied = true;
    if (std::memcmp(save_memory, started_eeprom, EEPROM_BYTES) == 0) return;
    if (!write_scratch(save_memory)) {
        show_message("cannot write the EEPROM scratch file " + scratch_eeprom);
        return;
    }
    restart_machine();
}

vemo_joypad read_controller() {
    input_poll();
    auto held = [](unsigned id) { return input_state(0, RETRO_DEVICE_JOYPAD, 0, id) != 0 ? 1 : 0; };
    vemo_joypad pad{};
    pad.left = held(RETRO_DEVICE_ID_JOYPAD_LEFT);
    pad.right = held(RETRO_DEVICE_ID_JOYPAD_RIGHT);
    pad.up = held(RETRO_DEVICE_ID_JOYPAD_UP);
    pad.down = held(RETRO_DEVICE_ID_JOYPAD_DOWN);
    pad.a = held(RETRO_DEVICE_ID_JOYPAD_Y);
    pad.b = held(RETRO_DEVICE_ID_JOYPAD_B);
    pad.c = held(RETRO_DEVICE_ID_JOYPAD_A);
    pad.option = held(RETRO_DEVICE_ID_JOYPAD_SELECT);
    pad.pause = held(RETRO_DEVICE_ID_JOYPAD_START);
    int32_t* keys = &pad.key_1;
    for (int k = 0; k < 12; ++k) keys[k] = keypad[k];
    pad.key_star |= held(RETRO_DEVICE_ID_JOYPAD_L);
    pad.key_hash |= held(RETRO_DEVICE_ID_JOYPAD_R);
    return pad;
}

// Index into keypad[] of a key code, or -1.
int keypad_index(unsigned keycode) {
    if (keycode >= RETROK_0 + 1 && keycode <= RETROK_0 + 9) return static_cast<int>(keycode - RETROK_0 - 1);
    if (keycode >= RETROK_KP0 + 1 && keycode <= RETROK_KP0 + 9) return static_cast<int>(keycode - RETROK_KP0 - 1);
    switch (keycode) {
        case RETROK_0:
        case RETROK_KP0: return 9;
        case RETROK_ASTERISK:
        case RETROK_MINUS:
        case RETROK_KP_MULTIPLY: return 10;
        case RETROK_HASH:
        case RETROK_EQUALS:
        case RETROK_KP_DIVIDE: return 11;
        default: return -1;
    }
}

void on_key(bool down, unsigned keycode, uint32_t, uint16_t) {
    const int index = keypad_index(keycode);
    if (index >= 0) keypad[index] = down ? 1 : 0;
}

// ---- Picture and sound ------------------------------------------------------------------------

retro_game_geometry geometry() {
    return {shown_width, shown_height, FRAME_CELLS, FRAME_ROWS, shown_aspect};
}

void send_picture(const vemo_frame_info& info) {
    picture_from_frame(info, picture);
    if (picture.width > 0) {
        const float aspect = static_cast<float>(picture_aspect(picture.width, picture.height, picture_pixel_clocks(info)));
        if (static_cast<unsigned>(picture.width) != shown_width ||
            static_cast<unsigned>(picture.height) != shown_height || aspect != shown_aspect) {
            shown_width = static_cast<unsigned>(picture.width);
            shown_height = static_cast<unsigned>(picture.height);
            shown_aspect = aspect;
            retro_game_geometry g = geometry();
            environment(RETRO_ENVIRONMENT_SET_GEOMETRY, &g);
        }
    }
    // Nothing displayed yet: a black picture of the size last shown.
    xrgb.assign(static_cast<size_t>(shown_width) * shown_height, 0);
    if (picture.width > 0) {
        const uint8_t* rgb = picture.pixels.data();
        for (uint32_t& pixel : xrgb) {
            pixel = uint32_t{rgb[0]} << 16 | uint32_t{rgb[1]} << 8 | rgb[2];
            rgb += 3;
        }
    }
    video_out(xrgb.data(), shown_width, shown_height, shown_width * sizeof(uint32_t));
}

// One batch per frame at the core's rate. A new rate is announced first; a frame without
// samples sends 1/60 s of silence, so that a front-end pacing itself by the sound keeps time.
void send_sound(const vemo_frame_info& info) {
    const uint32_t count = std::min<uint32_t>(std::max(info.audio_left_count, info.audio_right_count), 4096);
    if (info.audio_rate > 0 && count > 0 && info.audio_rate != shown_rate) {
        shown_rate = info.audio_rate;
        retro_system_av_info av{geometry(), {FRAMES_PER_SECOND, static_cast<double>(shown_rate)}};
        environment(RETRO_ENVIRONMENT_SET_SYSTEM_AV_INFO, &av);
    }
    if (count > 0 && info.audio_rate > 0) {
        samples.resize(2 * count);
        for (uint32_t i = 0; i < count; ++i) {
            samples[2 * i] = i < info.audio_left_count ? info.audio_left[i] : 0;
            samples[2 * i + 1] = i < info.audio_right_count ? info.audio_right[i] : 0;
        }
        audio_out(samples.data(), count);
        return;
    }
    silence_owed += shown_rate / FRAMES_PER_SECOND;
    const size_t frames = static_cast<size_t>(silence_owed);
    silence_owed -= static_cast<double>(frames);
    samples.assign(2 * frames, 0);
    if (frames > 0) audio_out(samples.data(), frames);
}

// A stopped machine shows the picture it stopped on, in silence.
void send_stopped_frame() {
    xrgb.resize(static_cast<size_t>(shown_width) * shown_height);
    video_out(xrgb.data(), shown_width, shown_height, shown_width * sizeof(uint32_t));
    send_sound(vemo_frame_info{});
}

}  // namespace

#define RETRO_EXPORT extern "C" __attribute__((visibility("default")))

RETRO_EXPORT unsigned retro_api_version(void) { return RETRO_API_VERSION; }

RETRO_EXPORT void retro_set_environment(retro_environment_t cb) { environment = cb; }
RETRO_EXPORT void retro_set_video_refresh(retro_video_refresh_t cb) { video_out = cb; }
RETRO_EXPORT void retro_set_audio_sample(retro_audio_sample_t) {}
RETRO_EXPORT void retro_set_audio_sample_batch(retro_audio_sample_batch_t cb) { audio_out = cb; }
RETRO_EXPORT void retro_set_input_poll(retro_input_poll_t cb) { input_poll = cb; }
RETRO_EXPORT void retro_set_input_state(retro_input_state_t cb) { input_state = cb; }

RETRO_EXPORT void retro_init(void) {
    retro_log_callback log{};
    front_end_log = environment && environment(RETRO_ENVIRONMENT_GET_LOG_INTERFACE, &log) ? log.log : nullptr;
}

RETRO_EXPORT void retro_deinit(void) {}

RETRO_EXPORT void retro_get_system_info(retro_system_info* info) {
    *info = {"vemocore", "1", "j64|rom", true, false};
}

RETRO_EXPORT void retro_get_system_av_info(retro_system_av_info* info) {
    *info = {geometry(), {FRAMES_PER_SECOND, static_cast<double>(shown_rate)}};
}

RETRO_EXPORT void retro_set_controller_port_device(unsigned, unsigned) {}

RETRO_EXPORT bool retro_load_game(const retro_game_info* game) {
    if (!game || !game->path) {
        log_line(RETRO_LOG_ERROR, "a cartridge image is needed");
        return false;
    }
    retro_pixel_format format = RETRO_PIXEL_FORMAT_XRGB8888;
    if (!environment(RETRO_ENVIRONMENT_SET_PIXEL_FORMAT, &format)) {
        log_line(RETRO_LOG_ERROR, "the front-end does not take XRGB8888 pictures");
        return false;
    }
    config = vemo_config{};
    const size_t length = std::strlen(game->path);
    if (length >= sizeof config.rom_path || !make_scratch()) {
        log_line(RETRO_LOG_ERROR, std::string("cannot use the cartridge image ") + game->path);
        return false;
    }
    std::memcpy(config.rom_path, game->path, length + 1);
    std::memcpy(config.eeprom_path, scratch_eeprom.c_str(), scratch_eeprom.size() + 1);
    config.audio_enable = 1;
    config.timer_ticks = 1;

    static const retro_input_descriptor descriptors[] = {
        {0, RETRO_DEVICE_JOYPAD, 0, RETRO_DEVICE_ID_JOYPAD_LEFT, "Left"},
        {0, RETRO_DEVICE_JOYPAD, 0, RETRO_DEVICE_ID_JOYPAD_RIGHT, "Right"},
        {0, RETRO_DEVICE_JOYPAD, 0, RETRO_DEVICE_ID_JOYPAD_UP, "Up"},
        {0, RETRO_DEVICE_JOYPAD, 0, RETRO_DEVICE_ID_JOYPAD_DOWN, "Down"},
        {0, RETRO_DEVICE_JOYPAD, 0, RETRO_DEVICE_ID_JOYPAD_Y, "A"},
        {0, RETRO_DEVICE_JOYPAD, 0, RETRO_DEVICE_ID_JOYPAD_B, "B"},
        {0, RETRO_DEVICE_JOYPAD, 0, RETRO_DEVICE_ID_JOYPAD_A, "C"},
        {0, RETRO_DEVICE_JOYPAD, 0, RETRO_DEVICE_ID_JOYPAD_SELECT, "Option"},
        {0, RETRO_DEVICE_JOYPAD, 0, RETRO_DEVICE_ID_JOYPAD_START, "Pause"},
        {0, RETRO_DEVICE_JOYPAD, 0, RETRO_DEVICE_ID_JOYPAD_L, "Keypad *"},
        {0, RETRO_DEVICE_JOYPAD, 0, RETRO_DEVICE_ID_JOYPAD_R, "Keypad #"},
        {0, 0, 0, 0, nullptr},
    };
    environment(RETRO_ENVIRONMENT_SET_INPUT_DESCRIPTORS, const_cast<retro_input_descriptor*>(descriptors));
    retro_keyboard_callback keyboard{on_key};
    environment(RETRO_ENVIRONMENT_SET_KEYBOARD_CALLBACK, &keyboard);

    std::memset(save_memory, 0, sizeof save_memory);
    std::memset(keypad, 0, sizeof keypad);
    shown_width = DEFAULT_WIDTH;
    shown_height = DEFAULT_HEIGHT;
    shown_aspect = 4.0f / 3.0f;
    shown_rate = SILENT_RATE;
    silence_owed = 0;
    save_memory_applied = false;
    // A bad image is refused here, with the core's own message.
    if (!start_machine()) {
        std::remove(scratch_eeprom.c_str());
        return false;
    }
    game_loaded = true;
    return true;
}

RETRO_EXPORT bool retro_load_game_special(unsigned, const retro_game_info*, size_t) { return false; }

RETRO_EXPORT void retro_unload_game(void) {
    if (!game_loaded) return;
    vemo_shutdown();
    machine_running = game_loaded = false;
    std::remove(scratch_eeprom.c_str());
}

RETRO_EXPORT void retro_reset(void) {
    if (game_loaded) restart_machine();
}

RETRO_EXPORT void retro_run(void) {
    if (!game_loaded) return;
    if (!save_memory_applied) apply_save_memory();
    if (!machine_running) {
        input_poll();
        send_stopped_frame();
        return;
    }
    const vemo_joypad pad = read_controller();
    vemo_set_joypad_state(0, &pad);
    if (!vemo_run_frame()) {
        // The picture stays as it stopped; a reset starts the cartridge again.
        show_message("the frame stopped early: " + core_message());
        machine_running = false;
    }
    vemo_frame_info info{};
    vemo_get_frame_info(&info);
    send_picture(info);
    send_sound(info);
    read_scratch(save_memory);
}

RETRO_EXPORT size_t retro_serialize_size(void) { return 0; }
RETRO_EXPORT bool retro_serialize(void*, size_t) { return false; }
RETRO_EXPORT bool retro_unserialize(const void*, size_t) { return false; }
RETRO_EXPORT void retro_cheat_reset(void) {}
RETRO_EXPORT void retro_cheat_set(unsigned, bool, const char*) {}
RETRO_EXPORT unsigned retro_get_region(void) { return RETRO_REGION_NTSC; }

RETRO_EXPORT void* retro_get_memory_data(unsigned id) { return id == RETRO_MEMORY_SAVE_RAM ? save_memory : nullptr; }
RETRO_EXPORT size_t retro_get_memory_size(unsigned id) { return id == RETRO_MEMORY_SAVE_RAM ? EEPROM_BYTES : 0; }
