// The trace hook's state: no sink and no instructions to report until a tool sets them.
#include "risc/risc_trace.h"

risc_trace_sink_fn risc_trace_sink = nullptr;
int64_t risc_trace_left[2] = {0, 0};
