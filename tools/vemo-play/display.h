// Where a console picture goes on a screen: its shape on a TV and its place in a window.
//
// Offers: picture_pixel_clocks (how wide a pixel of the displayed picture is, in video clocks),
// picture_aspect (the picture's width over its height on a TV) and fit_picture (the rectangle of
// a window that shows it). Needs: the public records only; shared by the window player and the
// libretro core.
#pragma once

#include "vemocore.h"

// The usual set-up, 320 pixels of 4 video clocks by 240 rows, fills a 4:3 screen: a pixel four
// clocks wide is square, so a pixel of d clocks is d / 4 as wide as it is high.
constexpr int SQUARE_PIXEL_CLOCKS = 4;

// Clocks per pixel of the widest displayed row (the row that sets the picture's width): 1 when
// the program has set no video mode (a cell per clock), SQUARE_PIXEL_CLOCKS when no row is
// displayed.
int picture_pixel_clocks(const vemo_frame_info& info);

// Width over height on a TV of a picture of width x height pixels of the given clocks.
double picture_aspect(int width, int height, int pixel_clocks);

struct screen_rect {
    int x, y, w, h;
    bool operator==(const screen_rect&) const = default;
};

// The rectangle of a window_w x window_h window that shows the picture at its TV aspect,
// centred. With integer scaling the rows are shown an exact number of times (the largest that
// fits); a window too small for even one row each falls back to the largest fit.
screen_rect fit_picture(int window_w, int window_h, int width, int height, int pixel_clocks, bool integer_scaling);
