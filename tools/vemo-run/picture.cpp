// Cells become colours the way the console's video output shows them.
#include "picture.h"

#include <algorithm>

const rgb8 cry_table[256] = {
#include "cry_table.inc"
};

namespace {

// Intensity scales the chroma cell's full-intensity colour; rounded to the nearest level so
// that Y = 255 gives the table value and Y = 128 gives half of it.
uint8_t scale_by_intensity(uint8_t full, uint32_t y) {
    return static_cast<uint8_t>((full * y + 127) / 255);
}

rgb8 cry_to_rgb(uint32_t cry) {
    const rgb8 full = cry_table[(cry >> 8) & 0xFF];
    const uint32_t y = cry & 0xFF;
    return {scale_by_intensity(full.r, y), scale_by_intensity(full.g, y),
            scale_by_intensity(full.b, y)};
}

// Fields are widened by repeating their top bits, so an all-ones field becomes 255.
rgb8 rgb16_to_rgb(uint32_t value) {
    const uint32_t r5 = (value >> 11) & 0x1F;
    const uint32_t b5 = (value >> 6) & 0x1F;
    const uint32_t g6 = value & 0x3F;
    return {static_cast<uint8_t>((r5 << 3) | (r5 >> 2)), static_cast<uint8_t>((g6 << 2) | (g6 >> 4)),
            static_cast<uint8_t>((b5 << 3) | (b5 >> 2))};
}

}  // namespace

rgb8 picture_cell_rgb(uint32_t cell, int32_t color_mode, int32_t var_mode) {
    if (color_mode == COLOUR_MODE_RGB24)
        return {static_cast<uint8_t>(cell >> 16), static_cast<uint8_t>(cell >> 8),
                static_cast<uint8_t>(cell)};
    const uint32_t value = cell & 0xFFFF;
    // Variable mode: in a 16-bit mode each pixel's bit 0 picks its own format.
    if (var_mode) return (value & 1) ? rgb16_to_rgb(value) : cry_to_rgb(value);
    // Direct mode sends the raw 16 bits to the output; they are shown as RGB 16.
    if (color_mode == COLOUR_MODE_CRY) return cry_to_rgb(value);
    return rgb16_to_rgb(value);
}

int picture_row_width(int32_t active_width, int32_t pixel_divisor) {
    if (active_width <= 0) return 0;
    // Before the program sets a video mode the divisor reads 0; the Object Processor then draws
    // one cell per clock, and so does the picture.
    const int32_t divisor = pixel_divisor > 0 ? pixel_divisor : 1;
    return std::min(active_width / divisor, FRAME_CELLS);
}

int picture_height(const int32_t* row_timing) {
    int height = 0;
    for (int row = 0; row < FRAME_ROWS; ++row)
        if (picture_row_width(row_timing[2 * row], row_timing[2 * row + 1]) > 0) height = row + 1;
    return height;
}

void picture_from_frame(const vemo_frame_info& info, rgb_picture& out) {
    out.width = 0;
    out.height = 0;
    out.pixels.clear();
    // The frame buffer holds 256 rows of at most 1024 cells; a pitch outside that is not read.
    if (!info.frame_buffer || info.frame_pitch <= 0 || info.frame_pitch > FRAME_CELLS) return;
    const int pitch = info.frame_pitch;

    int widths[FRAME_ROWS];
    const int height = picture_height(info.row_timing);
    int width = 0;
    for (int row = 0; row < height; ++row) {
        widths[row] = std::min(picture_row_width(info.row_timing[2 * row], info.row_timing[2 * row + 1]), pitch);
        width = std::max(width, widths[row]);
    }
    if (width == 0) return;

    out.width = width;
    out.height = height;
    out.pixels.assign(static_cast<size_t>(width) * height * 3, 0);
    for (int row = 0; row < height; ++row) {
        const uint32_t* cells = info.frame_buffer + static_cast<size_t>(row) * pitch;
        uint8_t* rgb = out.pixels.data() + static_cast<size_t>(row) * width * 3;
        for (int x = 0; x < widths[row]; ++x, rgb += 3) {
            const rgb8 c = picture_cell_rgb(cells[x], info.color_mode, info.var_mode);
            rgb[0] = c.r;
            rgb[1] = c.g;
            rgb[2] = c.b;
        }
    }
}
