// The progress line.
#include "progress.h"

#include <unistd.h>

#include <cstdio>

namespace {
constexpr auto FIRST_UPDATE = std::chrono::milliseconds(500);
constexpr auto UPDATE_INTERVAL = std::chrono::milliseconds(250);
}  // namespace

progress_line::progress_line(long total_frames)
    : total(total_frames), on_terminal(isatty(STDERR_FILENO) == 1), start(clock::now()),
      next_update(start + FIRST_UPDATE) {}

progress_line::~progress_line() {
    if (shown) std::fputs("\r\033[K", stderr);  // the summary follows on a clean line
}

void progress_line::frame_done(long frame) {
    if (!on_terminal) return;
    const clock::time_point now = clock::now();
    if (now < next_update) return;
    next_update = now + UPDATE_INTERVAL;
    const double seconds = std::chrono::duration<double>(now - start).count();
    std::fprintf(stderr, "\r\033[Kframe %ld of %ld (%ld%%), %.0f frames per second", frame, total,
                 total > 0 ? frame * 100 / total : 100L, seconds > 0 ? frame / seconds : 0.0);
    std::fflush(stderr);
    shown = true;
}
