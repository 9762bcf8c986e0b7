// The TV shape of a picture and its place in a window.
#include "display.h"

#include <algorithm>
#include <cmath>

#include "picture.h"

int picture_pixel_clocks(const vemo_frame_info& info) {
    int widest = 0, clocks = SQUARE_PIXEL_CLOCKS;
    for (int row = 0; row < FRAME_ROWS; ++row) {
        const int32_t active = info.row_timing[2 * row], divisor = info.row_timing[2 * row + 1];
        const int width = picture_row_width(active, divisor);
        if (width > widest) {
            widest = width;
            clocks = divisor > 0 ? divisor : 1;  // no mode set: a cell per clock
        }
    }
    return clocks;
}

double picture_aspect(int width, int height, int pixel_clocks) {
    if (width <= 0 || height <= 0 || pixel_clocks <= 0) return 4.0 / 3.0;
    return static_cast<double>(width) * pixel_clocks / SQUARE_PIXEL_CLOCKS / height;
}

screen_rect fit_picture(int window_w, int window_h, int width, int height, int pixel_clocks, bool integer_scaling) {
    if (window_w <= 0 || window_h <= 0 || width <= 0 || height <= 0) return {0, 0, 0, 0};
    const double aspect = picture_aspect(width, height, pixel_clocks);
    // The largest aspect-true rectangle that fits.
    double h = std::min<double>(window_h, window_w / aspect);
    if (integer_scaling && h >= height) {
        // Each row an exact number of times, the width following the aspect.
        int scale = static_cast<int>(h) / height;
        while (scale > 1 && std::lround(scale * height * aspect) > window_w) --scale;
        h = scale * height;
    }
    const int out_h = static_cast<int>(std::lround(h));
    const int out_w = std::min(window_w, static_cast<int>(std::lround(h * aspect)));
    return {(window_w - out_w) / 2, (window_h - out_h) / 2, out_w, out_h};
}
