// Every distinct message of the core during a run (vemo-run --log), with how many times it was
// seen and the first frame it appeared in. The core keeps only its last message; this list
// observes each one as the core formats it (the log observer of the core's host interface).
//
// Offers: core_messages_start, core_messages_frame, core_messages_print, core_messages_stop.
// Needs: the core's internals (log_observer in core/host.h).
#pragma once

#include <cstdio>

// From now on every core message is counted; messages before the first frame count as frame 0
// (start-up).
void core_messages_start();
// The frame now running (frames count from 1).
void core_messages_frame(long frame);
// The list, in the order the messages first appeared.
void core_messages_print(FILE* out);
void core_messages_stop();
