// The Object Processor: walks the object list in RAM once per displayed line and draws bitmap
// and scaled bitmap objects straight into that line's frame-buffer row.
//
// Offers: op_init, op_process_line, the row pointer and line width. Needs: the video registers
// (video.h), the memory buffers and get_mem_pointer, the colour-addition tables, set_row_timing,
// log_printf; gpu_interrupt when the GPU lands.
#pragma once

#include <cstdint>

extern uint32_t* op_line_buffer;      // row being drawn; null before the first row
extern int32_t op_line_width;         // displayed width in pixels
extern uint16_t op_line_width16;      // 16-bit copy the background fill counts with

// Sets the 16-bit line width to 320 (vemo_init).
void op_reset_line_width();
void op_init();
int op_process_line(int line);
