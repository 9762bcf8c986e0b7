// The graphics chip's register file.
#include "core/video.h"

#include "objproc/objproc.h"

video_registers video;

void video_reset() {
    video = video_registers{};
    op_reset_line_width();
}
