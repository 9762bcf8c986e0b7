// The frame scheduler: one call of vemo_run_frame is 525 lines of fixed per-line budgets, the
// only place where time advances.
//
// Offers: vemo_run_frame (vemocore.h) and its two steps, the tick placement that turns the
// sound chip's audio rate and timers into per-line DSP interrupt marks, and the end-of-line
// interrupt step.
// Needs: the 68000 (m68k_execute, m68k_interrupt), the Object Processor (op_process_line), the
// graphics-chip and sound-chip register files, the configuration (host.h), the GPU and the DSP
// (their slices and the DSP's tick interrupts).
#pragma once

#include <cstdint>

constexpr int LINES_PER_FRAME = 525;
constexpr int SLICES_PER_LINE = 7;
constexpr int32_t M68K_SLICE_CYCLES = 60;
constexpr int32_t GPU_SLICE_CYCLES = 120;
constexpr int32_t DSP_LINE_CYCLES = 844;  // also the system clocks one line lasts
constexpr uint16_t HC_SLICE_STEP = 241;
// 1/60 s exactly as the machine holds it: a single-precision constant (0x3C888889).
constexpr float FRAME_PERIOD_S = 0.016666668f;

// Tick-mark bits, one mark byte per line.
constexpr uint8_t TICK_AUDIO = 1;
constexpr uint8_t TICK_TIMER1 = 2;
constexpr uint8_t TICK_TIMER2 = 4;

// The current frame's marks, rebuilt at the start of every frame while audio is enabled.
extern uint8_t scheduler_tick_marks[LINES_PER_FRAME];

// Ticks of a source running at frequency_hz within one frame: the product is formed in double
// precision from the single-precision frame period and rounded to single precision.
float scheduler_ticks_per_frame(int32_t frequency_hz);

// Marks `bit` on the lines where `count` evenly spaced ticks fall: tick k lands on line
// floor(k * 525 / count) as reached by repeated double-precision addition, k = 1..ceil(count);
// ticks on line 525 or beyond are dropped, ticks sharing a line make one mark.
void scheduler_place_ticks(uint8_t* marks, float count, uint8_t bit);

// The DSP interrupt a line's mark asks for: 3 (timer 2) before 2 (timer 1) before 1 (audio),
// 0 for none. At most one per line.
int scheduler_dsp_interrupt_for(uint8_t mark);

// The end of a line: the video-line interrupt when `line` equals VI, then one line of the
// video timer.
void scheduler_end_line(uint16_t line);

// A frame in two steps, as vemo_run_frame runs it: what happens once at its start (the DSP's
// tick marks, the sound chip's and the Blitter's frame state, the log's frame count), then its
// lines from 0 up to `end` (at most LINES_PER_FRAME). A harness may stop a frame early; the
// next frame starts over at line 0. False when a processor or the Object Processor stopped the
// frame (the failure is logged).
void scheduler_begin_frame();
bool scheduler_run_lines(int end);

// Forgets what an earlier machine's frames reported (vemo_init).
void scheduler_reset();
