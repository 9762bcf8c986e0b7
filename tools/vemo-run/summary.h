// The run summary's figures, in words a user reads at a glance.
#pragma once

#include <cstdio>
#include <string>

// Frames per second with one decimal; a run so slow that this would read 0.0 shows three
// significant digits and the seconds one frame took instead.
inline std::string frames_per_second_text(long frames, double seconds) {
    char text[64];
    if (frames <= 0 || !(seconds > 0))
        std::snprintf(text, sizeof text, "0.0");
    else if (frames / seconds >= 0.1)
        std::snprintf(text, sizeof text, "%.1f", frames / seconds);
    else
        std::snprintf(text, sizeof text, "%.3g (%.1f s per frame)", frames / seconds, seconds / frames);
    return text;
}
