// The progress line of long runs: frames done, of how many, and frames per second, on standard
// error and rewritten in place. Shown only when standard error is a terminal, first after half
// a second of running and then four times a second; erased when the run ends.
//
// Offers: progress_line. Needs: a POSIX terminal check.
#pragma once

#include <chrono>

class progress_line {
public:
    explicit progress_line(long total_frames);
    ~progress_line();
    void frame_done(long frame);  // cheap when nothing is to be shown

private:
    using clock = std::chrono::steady_clock;
    long total;
    bool on_terminal;
    bool shown = false;
    clock::time_point start;
    clock::time_point next_update;
};
