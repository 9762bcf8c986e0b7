// Writing the run's sound.
#include "wav_file.h"

#include <algorithm>
#include <cstdint>
#include <vector>

namespace {
constexpr uint32_t MAX_SAMPLES = 4096;  // the core's buffers per channel and frame
constexpr int RATE_WITHOUT_SAMPLES = 48000;
}  // namespace

wav_output::~wav_output() {
    if (file) sf_close(file);
}

bool wav_output::open(int open_rate, std::string& error) {
    SF_INFO format{};
    format.samplerate = open_rate;
    format.channels = 2;
    format.format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
    file = sf_open(path.c_str(), SFM_WRITE, &format);
    if (!file) {
        error = "cannot write '" + path + "': " + sf_strerror(nullptr);
        return false;
    }
    rate = open_rate;
    return true;
}

bool wav_output::add_frame(const vemo_frame_info& info, long frame, std::string& error) {
    const uint32_t left = info.audio_left ? std::min(info.audio_left_count, MAX_SAMPLES) : 0;
    const uint32_t right = info.audio_right ? std::min(info.audio_right_count, MAX_SAMPLES) : 0;
    if (info.audio_rate > 0) last_rate_seen = info.audio_rate;
    const uint32_t count = std::max(left, right);
    if (count == 0) return true;
    if (!file) {
        if (info.audio_rate <= 0) {
            samples_without_rate += count;
            return true;
        }
        if (!open(info.audio_rate, error)) return false;
    } else if (info.audio_rate != rate && rate_change_frame == 0) {
        rate_change_frame = frame;
        changed_rate = info.audio_rate;
    }
    if (left != right) ++padded_frames;
    std::vector<short> pairs(2 * count, 0);
    for (uint32_t i = 0; i < left; ++i) pairs[2 * i] = info.audio_left[i];
    for (uint32_t i = 0; i < right; ++i) pairs[2 * i + 1] = info.audio_right[i];
    if (sf_writef_short(file, pairs.data(), count) != count) {
        error = "cannot write '" + path + "': " + sf_strerror(file);
        return false;
    }
    samples_written += count;
    return true;
}

bool wav_output::close(std::string& notes, std::string& error) {
    notes.clear();
    if (!file && !open(last_rate_seen > 0 ? last_rate_seen : RATE_WITHOUT_SAMPLES, error)) return false;
    sf_close(file);
    file = nullptr;
    auto note = [&](const std::string& text) { notes += (notes.empty() ? "" : "; ") + text; };
    if (samples_written == 0) note("the run made no samples; '" + path + "' holds none");
    if (padded_frames)
        note("left and right sample counts differed in " + std::to_string(padded_frames) +
             " frames; the shorter channel was padded with silence");
    if (samples_without_rate)
        note(std::to_string(samples_without_rate) + " samples came before the program set a sample rate and are left out");
    if (rate_change_frame)
        note("the sample rate changed from " + std::to_string(rate) + " Hz to " + std::to_string(changed_rate) +
             " Hz in frame " + std::to_string(rate_change_frame) + "; the file keeps " + std::to_string(rate) + " Hz");
    return true;
}
