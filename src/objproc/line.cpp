// The Object Processor's line state: the row being drawn and the displayed line width.
#include "objproc/objproc.h"

uint32_t* op_line_buffer;
int32_t op_line_width = 320;
uint16_t op_line_width16 = 320;

void op_reset_line_width() { op_line_width16 = 320; }
