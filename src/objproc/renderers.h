// The Object Processor's bitmap renderers and what they share with the list walker: the decoded
// object, the staging buffers, the scale table and the limits that keep every write inside the
// frame-buffer row and every read inside the memory that holds an object's data.
//
// Offers: op_object, the eleven unscaled renderers (six plain, five read-modify-write), the five
// scaled renderers, op_scale_table. Needs: get_mem_pointer, the CLUT buffer, the colour-addition
// tables, op_line_buffer / op_line_width, log_printf.
#pragma once

#include <cstdint>

#include "core/memory.h"

// One bitmap or scaled bitmap object, decoded afresh for every line. link and data are byte
// addresses; flags holds REFLECT (bit 0), RMW (bit 1), TRANS (bit 2) and RELEASE (bit 3).
struct op_object {
    int32_t ypos, height, link, data, xpos, depth, pitch, dwidth, iwidth, index, flags, firstpix;
    uint8_t hscale, vscale, remainder;  // scaled objects only
};

constexpr int32_t OP_FLAG_REFLECT = 1;
constexpr int32_t OP_FLAG_RMW = 2;
constexpr int32_t OP_FLAG_TRANS = 4;
constexpr int32_t OP_FLAG_RELEASE = 8;  // read, used by nothing

// Widest drawn run: a row of FRAME_PITCH cells plus the partial phrase a left-clipped object
// starts inside, rounded up to whole phrases of the densest depth (64 one-bit pixels).
constexpr int OP_ROW_STAGE_SIZE = FRAME_PITCH + 2 * 64;
// A scaled object samples up to its whole source row: IWIDTH (at most 1023 phrases) of 64
// one-bit pixels, plus one phrase of slack for a span that starts inside a phrase.
constexpr int OP_SOURCE_STAGE_SIZE = 1024 * 64 + 64;

// Plain and scaled renderers stage here; read-modify-write renderers in the second pair.
extern uint8_t op_stage_keys[OP_SOURCE_STAGE_SIZE];
extern uint32_t op_stage_colours[OP_SOURCE_STAGE_SIZE];
extern uint8_t op_rmw_stage_keys[OP_ROW_STAGE_SIZE];
extern uint32_t op_rmw_stage_colours[OP_ROW_STAGE_SIZE];

// Entry i = i / 32: HSCALE and VSCALE as factors (32 means 1.0).
extern float op_scale_table[256];
// Works out the scaled renderers' per-factor values from op_scale_table (op_init).
void op_prepare_scaling();

// The work done on the current line, counted by the walker (objects read, unscaled pixels
// drawn) and the scaled renderers (pixels drawn); the walker ends a line that exceeds its
// bound.
extern int32_t op_line_work;

// The width the renderers clip against, limited to the row: the registers can give a negative
// width or one wider than the 1024 cells.
int32_t op_clip_width();

void op_draw_bitmap_1bit(const op_object* o, int line);
void op_draw_bitmap_2bit(const op_object* o, int line);
void op_draw_bitmap_4bit(const op_object* o, int line);
void op_draw_bitmap_8bit(const op_object* o, int line);
void op_draw_bitmap_16bit(const op_object* o, int line);
void op_draw_bitmap_32bit(const op_object* o, int line);
void op_draw_bitmap_rmw_1bit(const op_object* o, int line);
void op_draw_bitmap_rmw_2bit(const op_object* o, int line);
void op_draw_bitmap_rmw_4bit(const op_object* o, int line);
void op_draw_bitmap_rmw_8bit(const op_object* o, int line);
void op_draw_bitmap_rmw_16bit(const op_object* o, int line);

void op_draw_scaled_1bit(const op_object* o, int line);
void op_draw_scaled_2bit(const op_object* o, int line);
void op_draw_scaled_4bit(const op_object* o, int line);
void op_draw_scaled_8bit(const op_object* o, int line);
void op_draw_scaled_16bit(const op_object* o, int line);
