// Turning one frame's cells into an RGB picture.
//
// Offers: picture_cell_rgb (one cell in a video mode), picture_row_width and picture_height
// (what part of the frame buffer was displayed, from the row timing), picture_from_frame (the
// whole displayed picture of a vemo_frame_info, 8-bit RGB, row-major).
// Needs: only the records of the public interface (vemocore.h).
#pragma once

#include <cstdint>
#include <vector>

#include "vemocore.h"

constexpr int FRAME_ROWS = 256;
constexpr int FRAME_CELLS = 1024;

// Colour modes reported in vemo_frame_info::color_mode (VMODE bits 2-1).
constexpr int32_t COLOUR_MODE_CRY = 0;
constexpr int32_t COLOUR_MODE_RGB24 = 1;
constexpr int32_t COLOUR_MODE_DIRECT16 = 2;
constexpr int32_t COLOUR_MODE_RGB16 = 3;

struct rgb8 {
    uint8_t r, g, b;
};

// The console's CRY table: full-intensity colour of each chroma cell (bits 15-8 of a CRY value).
extern const rgb8 cry_table[256];

struct rgb_picture {
    int width = 0;
    int height = 0;
    std::vector<uint8_t> pixels;  // width * height * 3 bytes, R G B
};

rgb8 picture_cell_rgb(uint32_t cell, int32_t color_mode, int32_t var_mode);

// Pixels a row shows: active_width video clocks at pixel_divisor clocks per pixel, limited to
// the 1024 cells of a row.
int picture_row_width(int32_t active_width, int32_t pixel_divisor);

// Rows of the picture: frame-buffer rows 0 up to the last one with a non-zero width.
int picture_height(const int32_t* row_timing);

// Converts the displayed part of the frame. The picture is as wide as its widest row; each row
// is cropped to its own width and the rest of it is black.
void picture_from_frame(const vemo_frame_info& info, rgb_picture& out);
