// The run's sound as a WAV file (vemo-run --wav): both channels, 16-bit, at the sample rate the
// program set, written with libsndfile.
//
// The file is opened at the first frame that has samples, at that frame's rate. A frame whose
// left and right counts differ is padded with silence on the shorter side; samples made before
// the program set any rate, and rate changes after the file was opened, cannot be represented
// and are reported when the file is closed. A run without samples still gives a file, with no
// samples, at the last rate reported (48000 Hz when the program never set one).
//
// Offers: wav_output. Needs: libsndfile, the frame-information record.
#pragma once

#include <sndfile.h>

#include <string>

#include "vemocore.h"

class wav_output {
public:
    explicit wav_output(std::string path) : path(std::move(path)) {}
    ~wav_output();
    // Appends a frame's samples. False (with error set) when the file cannot be written.
    bool add_frame(const vemo_frame_info& info, long frame, std::string& error);
    // Closes the file; notes holds what the file could not represent, or is empty.
    bool close(std::string& notes, std::string& error);

private:
    bool open(int rate, std::string& error);

    std::string path;
    SNDFILE* file = nullptr;
    int rate = 0;
    int last_rate_seen = 0;
    long samples_written = 0;
    long padded_frames = 0;
    long samples_without_rate = 0;
    long rate_change_frame = 0;
    int changed_rate = 0;
};
