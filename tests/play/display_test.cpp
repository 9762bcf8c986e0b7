// Where the player puts a picture in its window, and the picture's shape on a TV.
#include <gtest/gtest.h>

#include "display.h"

namespace {

TEST(PictureOnScreen, FitKeepsTheTvAspectAndWholeMultiplesOfRows) {
    const struct {
        int window_w, window_h, width, height, clocks;
        bool integer;
        screen_rect expected;
    } cases[] = {
        {960, 720, 320, 240, 4, true, {0, 0, 960, 720}},        // an exact multiple fills the window
        {1000, 800, 320, 240, 4, true, {20, 40, 960, 720}},     // three times, centred
        {1000, 800, 320, 240, 4, false, {0, 25, 1000, 750}},    // --fit: as large as fits
        {1280, 720, 320, 240, 4, true, {160, 0, 960, 720}},     // a wide window: bars at the sides
        {960, 720, 640, 240, 2, true, {0, 0, 960, 720}},        // half-width pixels: still 4:3
        {960, 720, 256, 240, 5, true, {0, 0, 960, 720}},        // 5-clock pixels: 1280 clocks wide
        {960, 720, 320, 20, 4, true, {0, 330, 960, 60}},        // a strip of 20 rows: 16:1
        {300, 200, 320, 240, 4, true, {16, 0, 267, 200}},       // smaller than the picture: fit
        {0, 720, 320, 240, 4, true, {0, 0, 0, 0}},
        {960, 720, 0, 0, 4, true, {0, 0, 0, 0}},
    };
    for (const auto& c : cases)
        EXPECT_EQ(fit_picture(c.window_w, c.window_h, c.width, c.height, c.clocks, c.integer), c.expected)
            << c.window_w << "x" << c.window_h << " " << c.width << "x" << c.height << "/" << c.clocks;
}

TEST(PictureOnScreen, PixelWidthComesFromTheWidestRow) {
    vemo_frame_info info{};
    EXPECT_EQ(picture_pixel_clocks(info), SQUARE_PIXEL_CLOCKS);  // nothing displayed
    for (int row = 0; row < 10; ++row) {
        info.row_timing[2 * row] = 1280;
        info.row_timing[2 * row + 1] = 4;
    }
    EXPECT_EQ(picture_pixel_clocks(info), 4);
    info.row_timing[2 * 10] = 1280;  // a row of 640 pixels makes the picture 640 wide
    info.row_timing[2 * 10 + 1] = 2;
    EXPECT_EQ(picture_pixel_clocks(info), 2);
    info.row_timing[2 * 11] = 1280;  // no video mode yet: 1280 cells of one clock
    info.row_timing[2 * 11 + 1] = 0;
    EXPECT_EQ(picture_pixel_clocks(info), 1);
    EXPECT_DOUBLE_EQ(picture_aspect(1280, 240, 1), 4.0 / 3.0);
    EXPECT_DOUBLE_EQ(picture_aspect(320, 240, 4), 4.0 / 3.0);
    EXPECT_DOUBLE_EQ(picture_aspect(320, 20, 4), 16.0);
}

}  // namespace
