// The frame scheduler.
#include "core/scheduler.h"

#include <algorithm>
#include <cstring>

#include "blitter/blitter.h"
#include "core/host.h"
#include "core/memory.h"
#include "core/sound.h"
#include "core/video.h"
#include "m68k/m68k.h"
#include "m68k/m68k_trace.h"
#include "objproc/objproc.h"
#include "risc/dsp.h"
#include "risc/gpu.h"

uint8_t scheduler_tick_marks[LINES_PER_FRAME];

float scheduler_ticks_per_frame(int32_t frequency_hz) {
    return static_cast<float>(static_cast<double>(frequency_hz) * static_cast<double>(FRAME_PERIOD_S));
}

void scheduler_place_ticks(uint8_t* marks, float count, uint8_t bit) {
    if (!(count > 0.0f)) return;
    const double step = static_cast<double>(525.0f) / static_cast<double>(count);
    double position = 0.0;
    // Positions only grow, so the first tick past the last line ends the placement early; the
    // ticks after it would all be dropped.
    for (int32_t k = 0; static_cast<float>(k) < count; ++k) {
        position += step;
        if (position >= LINES_PER_FRAME) break;
        marks[static_cast<int32_t>(position)] |= bit;
    }
}

int scheduler_dsp_interrupt_for(uint8_t mark) {
    if (mark & TICK_TIMER2) return 3;
    if (mark & TICK_TIMER1) return 2;
    if (mark & TICK_AUDIO) return 1;
    return 0;
}

void scheduler_end_line(uint16_t line) {
    if (line == video.vi) video_raise_interrupt(IRQ_VIDEO_LINE);
    video_timer_advance(DSP_LINE_CYCLES);
}

namespace {

// A timer counts as running while its prescaler is non-zero, whatever its frequency.
void place_frame_ticks() {
    std::memset(scheduler_tick_marks, 0, sizeof scheduler_tick_marks);
    scheduler_place_ticks(scheduler_tick_marks, scheduler_ticks_per_frame(sound.audio_rate), TICK_AUDIO);
    if (!core_config.timer_ticks) return;
    if (sound.timer1_prescaler)
        scheduler_place_ticks(scheduler_tick_marks, scheduler_ticks_per_frame(sound.timer1_frequency),
                              TICK_TIMER1);
    if (sound.timer2_prescaler)
        scheduler_place_ticks(scheduler_tick_marks, scheduler_ticks_per_frame(sound.timer2_frequency),
                              TICK_TIMER2);
}

bool line_is_displayed(int line) {
    return (line & 1) == 0 && line >= video.vdb && line < video.vde;
}

// A 68000 whose program counter left every memory that holds code (RAM, cartridge, boot ROM)
// stops there for good, and nothing else would tell: the first slice that finds it so says so,
// once per start of the machine.
bool m68k_stop_reported;

void run_m68k_slice() {
    // m68k_run_slice is m68k_execute, or its traced form while a 68000 trace is on.
    if (m68k_run_slice(M68K_SLICE_CYCLES) != M68K_NO_FETCH_REGION || m68k_stop_reported) return;
    m68k_stop_reported = true;
    log_printf("68000 stopped at %08X: no code can be there (code runs from RAM, the cartridge or the "
               "boot ROM)\n", m68k_get_pc());
}

}  // namespace

void scheduler_reset() { m68k_stop_reported = false; }

void scheduler_begin_frame() {
    if (core_config.audio_enable) place_frame_ticks();
    sound_begin_frame();
    blitter_begin_frame();
    log_begin_frame();
}

bool scheduler_run_lines(int end) {
    end = std::clamp(end, 0, LINES_PER_FRAME);
    for (int line = 0; line < end; ++line) {
        video.vc = static_cast<uint16_t>(line);
        video.hc = 0;
        for (int slice = 0; slice < SLICES_PER_LINE; ++slice) {
            run_m68k_slice();
            if (!gpu_execute(GPU_SLICE_CYCLES)) return false;
            video.hc = static_cast<uint16_t>(HC_SLICE_STEP * slice);
        }
        if (core_config.audio_enable) {
            if (const int n = scheduler_dsp_interrupt_for(scheduler_tick_marks[line])) dsp_interrupt(n);
            if (!dsp_execute(DSP_LINE_CYCLES)) return false;
        } else if (core_config.dsp_always_run) {
            if (!dsp_execute(DSP_LINE_CYCLES)) return false;
        }
        if (line_is_displayed(line) && !op_process_line(line)) return false;
        scheduler_end_line(static_cast<uint16_t>(line));
    }
    return true;
}

extern "C" VEMO_API int32_t vemo_run_frame(void) {
    if (!machine_started) {
        log_printf("vemo_run_frame: the machine is not initialised.\n");
        return 0;
    }
    scheduler_begin_frame();
    return scheduler_run_lines(LINES_PER_FRAME) ? 1 : 0;
}
