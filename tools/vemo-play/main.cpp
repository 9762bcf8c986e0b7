// vemo-play: plays a cartridge in a window through the core's public interface. The picture is
// shown at the console's TV aspect, scaled to the window; the sound goes to SDL's audio device,
// whose steady use of the queued samples sets the pace of 60 frames per second; the keyboard and
// game controllers drive the console's controller.
#include <CLI/CLI.hpp>
#include <SDL.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "controls.h"
#include "display.h"
#include "picture.h"
#include "png_file.h"
#include "vemocore.h"

namespace {

namespace fs = std::filesystem;

constexpr int EXIT_OK = 0;
constexpr int EXIT_RUN_FAILED = 1;  // no window, the core did not start, a frame stopped early (--frames)
constexpr int EXIT_BAD_INPUT = 2;   // bad command line, missing or unreadable file, bad key file

constexpr int FRAMES_PER_SECOND = 60;
constexpr int DEVICE_RATE = 48000;       // asked of the audio device; it may choose another
constexpr int DEVICE_BUFFER = 1024;      // sample frames per device buffer
constexpr int QUEUED_FRAMES = 3;         // frames of sound kept queued: the latency of the sound
constexpr int CHANNELS = 2;
constexpr int BYTES_PER_SAMPLE_FRAME = CHANNELS * 2;  // 16-bit stereo

struct play_options {
    std::string image;
    std::string eeprom;
    std::string key_file;
    int scale = 3;
    bool fit = false;
    bool full_screen = false;
    long frames = -1;  // run until quit
    std::string screenshot;
    bool print_keys = false;
};

struct player {
    play_options options;
    key_map keys;
    vemo_config config{};
    std::string name;  // the image's file name, for the title

    SDL_Window* window = nullptr;
    SDL_Renderer* renderer = nullptr;
    SDL_Texture* texture = nullptr;
    int texture_w = 0, texture_h = 0;
    std::vector<SDL_GameController*> pads;

    SDL_AudioDeviceID audio = 0;
    SDL_AudioSpec device{};
    SDL_AudioStream* stream = nullptr;  // the core's rate to the device's
    int stream_rate = 0;
    double audio_owed = 0;  // device sample frames the frames so far should have queued, beyond those queued
    std::vector<int16_t> samples;
    std::vector<uint8_t> converted;
    Uint64 next_frame_ticks = 0;  // without an audio device: the performance counter's pace

    rgb_picture picture;
    int pixel_clocks = SQUARE_PIXEL_CLOCKS;
    long frames_run = 0;
    bool paused = false, stopped = false, show_message = false, quit = false;
};

std::string core_message() {
    std::string text = vemo_get_error_string();
    while (!text.empty() && (text.back() == '\n' || text.back() == '\r')) text.pop_back();
    return text.empty() ? "(none)" : text;
}

// ---- Start-up -------------------------------------------------------------------------------

bool check_image(const std::string& path) {
    std::error_code ec;
    if (fs::is_directory(path, ec)) {
        std::fprintf(stderr, "vemo-play: '%s' is a directory, not a cartridge image\n", path.c_str());
        return false;
    }
    FILE* file = std::fopen(path.c_str(), "rb");
    if (!file) {
        std::fprintf(stderr, "vemo-play: cannot read cartridge image '%s': %s\n", path.c_str(), std::strerror(errno));
        return false;
    }
    std::fclose(file);
    return true;
}

bool set_path(char (&field)[1024], const std::string& path, const char* what) {
    if (path.size() >= sizeof field) {
        std::fprintf(stderr, "vemo-play: the path of the %s is longer than %zu characters\n", what, sizeof field - 1);
        return false;
    }
    std::memcpy(field, path.c_str(), path.size() + 1);
    return true;
}

// The EEPROM lives beside the image unless told otherwise: GAME.j64 saves to GAME.eeprom.
std::string default_eeprom_path(const std::string& image) {
    fs::path path(image);
    path.replace_extension(".eeprom");
    return path == fs::path(image) ? image + ".eeprom" : path.string();
}

// The key file given, else the user's own one when it exists.
std::string user_key_file() {
    const char* config_home = std::getenv("XDG_CONFIG_HOME");
    const char* home = std::getenv("HOME");
    fs::path dir;
    if (config_home && *config_home) dir = config_home;
    else if (home && *home) dir = fs::path(home) / ".config";
    else return "";
    const fs::path file = dir / "vemo-play" / "keys.conf";
    std::error_code ec;
    return fs::exists(file, ec) ? file.string() : "";
}

bool load_keys(player& p) {
    p.keys = default_key_map();
    const std::string key_file = p.options.key_file.empty() ? user_key_file() : p.options.key_file;
    std::string error;
    if (!key_file.empty() && !load_key_file(key_file, p.keys, error)) {
        std::fprintf(stderr, "vemo-play: %s\n", error.c_str());
        return false;
    }
    return true;
}

bool configure(player& p) {
    const play_options& o = p.options;
    if (o.image.empty()) {
        std::fprintf(stderr, "vemo-play: give a cartridge image (see --help)\n");
        return false;
    }
    if (!check_image(o.image) || !set_path(p.config.rom_path, o.image, "cartridge image")) return false;
    const std::string eeprom = o.eeprom.empty() ? default_eeprom_path(o.image) : o.eeprom;
    if (!set_path(p.config.eeprom_path, eeprom, "EEPROM file")) return false;
    // A player wants the sound: audio ticks, DSP interrupts and the sound chip's timers.
    p.config.audio_enable = 1;
    p.config.timer_ticks = 1;
    p.name = fs::path(o.image).filename().string();
    return true;
}

bool start_machine(player& p) {
    if (vemo_init(&p.config)) return true;
    std::fprintf(stderr, "vemo-play: the core did not start: %s\n", core_message().c_str());
    vemo_shutdown();
    return false;
}

// ---- Sound ----------------------------------------------------------------------------------

void open_audio(player& p) {
    SDL_AudioSpec want{};
    want.freq = DEVICE_RATE;
    want.format = AUDIO_S16SYS;
    want.channels = CHANNELS;
    want.samples = DEVICE_BUFFER;
    p.audio = SDL_OpenAudioDevice(nullptr, 0, &want, &p.device, SDL_AUDIO_ALLOW_FREQUENCY_CHANGE);
    if (!p.audio) {
        // Without a device the frames are paced by the clock instead.
        std::fprintf(stderr, "vemo-play: no sound (%s)\n", SDL_GetError());
        return;
    }
    SDL_PauseAudioDevice(p.audio, 0);
}

void queue_silence(player& p, int sample_frames) {
    if (sample_frames <= 0) return;
    p.converted.assign(static_cast<size_t>(sample_frames) * BYTES_PER_SAMPLE_FRAME, 0);
    SDL_QueueAudio(p.audio, p.converted.data(), static_cast<Uint32>(p.converted.size()));
}

// Converts the frame's samples from the core's rate to the device's and queues them. Each frame
// is owed 1/60 s of sound: the core's samples count for what they become at the device's rate,
// and what a silent program (or one short of samples) leaves owing is filled with silence, so
// the pace stays 60 frames per second whatever it plays.
void queue_frame_audio(player& p, const vemo_frame_info& info) {
    if (!p.audio) return;
    const double frame_share = static_cast<double>(p.device.freq) / FRAMES_PER_SECOND;
    p.audio_owed += frame_share;
    const uint32_t count = std::min<uint32_t>(std::max(info.audio_left_count, info.audio_right_count), 4096);
    if (info.audio_rate > 0 && count > 0) {
        if (!p.stream || p.stream_rate != info.audio_rate) {
            if (p.stream) SDL_FreeAudioStream(p.stream);
            p.stream = SDL_NewAudioStream(AUDIO_S16SYS, CHANNELS, info.audio_rate, AUDIO_S16SYS, CHANNELS, p.device.freq);
            p.stream_rate = p.stream ? info.audio_rate : 0;
        }
        if (p.stream) {
            p.samples.resize(count * CHANNELS);
            for (uint32_t i = 0; i < count; ++i) {
                p.samples[2 * i] = i < info.audio_left_count ? info.audio_left[i] : 0;
                p.samples[2 * i + 1] = i < info.audio_right_count ? info.audio_right[i] : 0;
            }
            SDL_AudioStreamPut(p.stream, p.samples.data(), static_cast<int>(p.samples.size() * sizeof(int16_t)));
            p.audio_owed -= static_cast<double>(count) * p.device.freq / info.audio_rate;
        }
    } else if (p.stream) {
        // The converter holds back samples until it has a block; a silent frame lets them out.
        SDL_AudioStreamFlush(p.stream);
    }
    if (p.stream) {
        const int available = SDL_AudioStreamAvailable(p.stream);
        if (available > 0) {
            p.converted.resize(static_cast<size_t>(available));
            const int got = SDL_AudioStreamGet(p.stream, p.converted.data(), available);
            if (got > 0) SDL_QueueAudio(p.audio, p.converted.data(), static_cast<Uint32>(got));
        }
    }
    if (p.audio_owed >= frame_share / 2) {
        queue_silence(p, static_cast<int>(p.audio_owed));
        p.audio_owed -= static_cast<int>(p.audio_owed);
    }
    p.audio_owed = std::max(p.audio_owed, -QUEUED_FRAMES * frame_share);
}

// The pace: the next frame runs when the device has played the queue down to QUEUED_FRAMES
// frames of sound. Without a device, the performance counter keeps 60 frames per second.
void wait_for_next_frame(player& p) {
    if (p.audio) {
        const Uint32 target = static_cast<Uint32>(p.device.freq / FRAMES_PER_SECOND * QUEUED_FRAMES * BYTES_PER_SAMPLE_FRAME);
        while (SDL_GetQueuedAudioSize(p.audio) > target) SDL_Delay(1);
        return;
    }
    const Uint64 frequency = SDL_GetPerformanceFrequency();
    const Uint64 now = SDL_GetPerformanceCounter();
    if (p.next_frame_ticks == 0 || now > p.next_frame_ticks + frequency / 4) p.next_frame_ticks = now;
    while (SDL_GetPerformanceCounter() < p.next_frame_ticks) SDL_Delay(1);
    p.next_frame_ticks += frequency / FRAMES_PER_SECOND;
}

// ---- Picture --------------------------------------------------------------------------------

void update_title(player& p) {
    std::string title = "vemo-play: " + p.name;
    if (p.stopped) title += " (stopped)";
    else if (p.paused) title += " (paused)";
    if (p.show_message) title += " | core: " + core_message();
    SDL_SetWindowTitle(p.window, title.c_str());
}

void take_frame(player& p) {
    vemo_frame_info info{};
    vemo_get_frame_info(&info);
    picture_from_frame(info, p.picture);
    p.pixel_clocks = picture_pixel_clocks(info);
    queue_frame_audio(p, info);
    if (p.picture.width == 0) return;
    if (!p.texture || p.texture_w != p.picture.width || p.texture_h != p.picture.height) {
        if (p.texture) SDL_DestroyTexture(p.texture);
        p.texture = SDL_CreateTexture(p.renderer, SDL_PIXELFORMAT_RGB24, SDL_TEXTUREACCESS_STREAMING,
                                      p.picture.width, p.picture.height);
        p.texture_w = p.picture.width;
        p.texture_h = p.picture.height;
    }
    if (p.texture) SDL_UpdateTexture(p.texture, nullptr, p.picture.pixels.data(), p.picture.width * 3);
}

void present(player& p) {
    SDL_SetRenderDrawColor(p.renderer, 0, 0, 0, 255);
    SDL_RenderClear(p.renderer);
    if (p.texture && p.picture.width > 0) {
        int w = 0, h = 0;
        SDL_GetRendererOutputSize(p.renderer, &w, &h);
        const screen_rect r = fit_picture(w, h, p.picture.width, p.picture.height, p.pixel_clocks, !p.options.fit);
        const SDL_Rect dest{r.x, r.y, r.w, r.h};
        SDL_RenderCopy(p.renderer, p.texture, nullptr, &dest);
    }
    SDL_RenderPresent(p.renderer);
}

bool save_picture(const player& p, const std::string& path) {
    std::string error;
    if (!write_png(path, p.picture, error)) {
        std::fprintf(stderr, "vemo-play: cannot write '%s': %s\n", path.c_str(), error.c_str());
        return false;
    }
    return true;
}

// Screenshots go to the current folder as GAME-001.png, GAME-002.png, ...
void screenshot(const player& p) {
    const std::string stem = fs::path(p.options.image).stem().string();
    for (int n = 1; n < 1000; ++n) {
        char suffix[16];
        std::snprintf(suffix, sizeof suffix, "-%03d.png", n);
        const std::string path = stem + suffix;
        std::error_code ec;
        if (fs::exists(path, ec)) continue;
        if (save_picture(p, path)) std::printf("vemo-play: picture saved as %s\n", path.c_str());
        return;
    }
    std::fprintf(stderr, "vemo-play: no free screenshot name left for %s\n", stem.c_str());
}

// ---- Input and actions ----------------------------------------------------------------------

void act(player& p, int control) {
    switch (control) {
        case ACTION_PAUSE:
            if (!p.stopped) p.paused = !p.paused;
            break;
        case ACTION_RESET:
            vemo_shutdown();
            if (!start_machine(p)) {
                p.quit = true;
                return;
            }
            p.paused = p.stopped = false;
            break;
        case ACTION_FULL_SCREEN: {
            const bool full = SDL_GetWindowFlags(p.window) & SDL_WINDOW_FULLSCREEN;
            SDL_SetWindowFullscreen(p.window, full ? 0 : SDL_WINDOW_FULLSCREEN_DESKTOP);
            break;
        }
        case ACTION_SCREENSHOT:
            screenshot(p);
            break;
        case ACTION_MESSAGE:
            p.show_message = !p.show_message;
            if (p.show_message) std::printf("core: %s\n", core_message().c_str());
            break;
        case ACTION_QUIT:
            p.quit = true;
            break;
        default:
            return;  // a console control: read from the held state each frame
    }
    update_title(p);
}

void open_pad(player& p, int device_index) {
    if (!SDL_IsGameController(device_index)) return;
    if (SDL_GameController* pad = SDL_GameControllerOpen(device_index)) p.pads.push_back(pad);
}

void close_pad(player& p, SDL_JoystickID id) {
    for (auto it = p.pads.begin(); it != p.pads.end(); ++it)
        if (SDL_JoystickInstanceID(SDL_GameControllerGetJoystick(*it)) == id) {
            SDL_GameControllerClose(*it);
            p.pads.erase(it);
            return;
        }
}

void handle_events(player& p) {
    SDL_Event e;
    while (SDL_PollEvent(&e)) {
        switch (e.type) {
            case SDL_QUIT:
                p.quit = true;
                break;
            case SDL_KEYDOWN:
                if (!e.key.repeat) act(p, control_of(p.keys, {input::KEY, e.key.keysym.scancode}));
                break;
            case SDL_CONTROLLERBUTTONDOWN:
                act(p, control_of(p.keys, {input::BUTTON, e.cbutton.button}));
                break;
            case SDL_CONTROLLERDEVICEADDED:
                open_pad(p, e.cdevice.which);
                break;
            case SDL_CONTROLLERDEVICEREMOVED:
                close_pad(p, e.cdevice.which);
                break;
        }
    }
}

// Every controller adds its buttons; the stick moved furthest counts.
vemo_joypad held_joypad(const player& p) {
    bool buttons[SDL_CONTROLLER_BUTTON_MAX] = {};
    held_inputs held;
    held.keys = SDL_GetKeyboardState(nullptr);
    held.buttons = buttons;
    for (SDL_GameController* pad : p.pads) {
        for (int b = 0; b < SDL_CONTROLLER_BUTTON_MAX; ++b)
            if (SDL_GameControllerGetButton(pad, static_cast<SDL_GameControllerButton>(b))) buttons[b] = true;
        const int x = SDL_GameControllerGetAxis(pad, SDL_CONTROLLER_AXIS_LEFTX);
        const int y = SDL_GameControllerGetAxis(pad, SDL_CONTROLLER_AXIS_LEFTY);
        if (std::abs(x) > std::abs(held.stick_x)) held.stick_x = x;
        if (std::abs(y) > std::abs(held.stick_y)) held.stick_y = y;
    }
    return joypad_from_held(p.keys, held);
}

// ---- The loop -------------------------------------------------------------------------------

bool open_window(player& p) {
    if (SDL_Init(SDL_INIT_VIDEO | SDL_INIT_AUDIO | SDL_INIT_GAMECONTROLLER) != 0) {
        std::fprintf(stderr, "vemo-play: cannot open a window: %s\n", SDL_GetError());
        return false;
    }
    const int scale = std::max(1, p.options.scale);
    p.window = SDL_CreateWindow("vemo-play", SDL_WINDOWPOS_CENTERED, SDL_WINDOWPOS_CENTERED, 320 * scale, 240 * scale,
                                SDL_WINDOW_RESIZABLE | (p.options.full_screen ? SDL_WINDOW_FULLSCREEN_DESKTOP : 0));
    if (p.window) p.renderer = SDL_CreateRenderer(p.window, -1, 0);
    if (!p.renderer) {
        std::fprintf(stderr, "vemo-play: cannot open a window: %s\n", SDL_GetError());
        return false;
    }
    update_title(p);
    open_audio(p);
    return true;
}

void close_window(player& p) {
    for (SDL_GameController* pad : p.pads) SDL_GameControllerClose(pad);
    if (p.stream) SDL_FreeAudioStream(p.stream);
    if (p.audio) SDL_CloseAudioDevice(p.audio);
    if (p.texture) SDL_DestroyTexture(p.texture);
    if (p.renderer) SDL_DestroyRenderer(p.renderer);
    if (p.window) SDL_DestroyWindow(p.window);
    SDL_Quit();
}

// Runs one frame with what the player holds; a frame that stops early stops the machine (the
// picture stays, the message is shown, a reset starts again).
bool run_frame(player& p) {
    const vemo_joypad pad = held_joypad(p);
    vemo_set_joypad_state(0, &pad);
    const bool complete = vemo_run_frame();
    if (complete) ++p.frames_run;
    take_frame(p);
    if (!complete) {
        std::fprintf(stderr, "vemo-play: frame %ld stopped early: %s\n", p.frames_run + 1, core_message().c_str());
        p.stopped = p.show_message = true;
        update_title(p);
    }
    return complete;
}

int play(player& p) {
    if (!open_window(p)) return EXIT_RUN_FAILED;
    int status = EXIT_OK;
    while (!p.quit) {
        handle_events(p);
        if (p.quit) break;
        if (p.paused || p.stopped) {
            present(p);
            SDL_Delay(1000 / FRAMES_PER_SECOND);
            continue;
        }
        wait_for_next_frame(p);
        const bool complete = run_frame(p);
        present(p);
        if (p.options.frames >= 0 && (!complete || p.frames_run >= p.options.frames)) {
            if (!complete) status = EXIT_RUN_FAILED;
            break;
        }
    }
    if (!p.options.screenshot.empty() && !save_picture(p, p.options.screenshot)) status = EXIT_RUN_FAILED;
    close_window(p);
    return status;
}

}  // namespace

int main(int argc, char** argv) {
    player p;
    play_options& o = p.options;
    CLI::App app{"Plays a cartridge in a window with sound, keyboard and game controllers."};
    app.footer("Keys and controller buttons (change them in ~/.config/vemo-play/keys.conf or with\n"
               "--keys FILE; a line 'control = input, input' replaces a control's inputs; the\n"
               "left stick also moves the pad):\n\n" +
               describe_key_map(default_key_map()) +
               "\nExit status: 0 quit or all --frames ran; 1 no window, the core did not start, or a\n"
               "frame stopped early with --frames; 2 bad arguments, a missing or unreadable file or\n"
               "a bad key file.");
    app.add_option("GAME", o.image, "Cartridge image (.j64) to play");
    app.add_option("--eeprom", o.eeprom, "128-byte EEPROM save file (default: beside the image, as GAME.eeprom)")
        ->type_name("FILE");
    app.add_option("--keys", o.key_file, "Key file to use instead of ~/.config/vemo-play/keys.conf")->type_name("FILE");
    app.add_flag("--print-keys", o.print_keys, "Print the keys in use, as a key file, and quit");
    app.add_option("--scale", o.scale, "Window size as a multiple of 320 x 240 (default 3)")
        ->type_name("N")
        ->check(CLI::Range(1, 16));
    app.add_flag("--fit", o.fit, "Fill the window at the picture's aspect instead of whole multiples");
    app.add_flag("--full-screen", o.full_screen, "Start in full screen");
    app.add_option("--frames", o.frames, "Quit after N frames (for scripts and tests)")
        ->type_name("N")
        ->check(CLI::NonNegativeNumber);
    app.add_option("--screenshot", o.screenshot, "At the end, save the last picture to this PNG file")
        ->type_name("FILE");

    try {
        app.parse(argc, argv);
    } catch (const CLI::CallForHelp& e) {
        return app.exit(e);
    } catch (const CLI::ParseError& e) {
        app.exit(e);
        return EXIT_BAD_INPUT;
    }
    if (!load_keys(p)) return EXIT_BAD_INPUT;
    if (o.print_keys) {
        std::fputs(describe_key_map(p.keys).c_str(), stdout);
        return EXIT_OK;
    }
    if (!configure(p)) return EXIT_BAD_INPUT;
    if (!start_machine(p)) return EXIT_RUN_FAILED;
    const int status = play(p);
    vemo_shutdown();
    return status;
}
