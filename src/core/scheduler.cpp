// The frame scheduler.
#include "core/host.h"

// The frame scheduler is not built yet: a frame cannot run, and the caller is told so.
extern "C" VEMO_API int32_t vemo_run_frame(void) {
    log_printf("vemo_run_frame: this build has no frame scheduler yet.\n");
    return 0;
}
