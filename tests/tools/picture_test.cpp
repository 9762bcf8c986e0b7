// How frame-buffer cells become the colours of a saved picture.
#include "picture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "png_read.h"

namespace {

uint32_t rgb(int32_t mode, int32_t var, uint32_t cell) {
    const rgb8 c = picture_cell_rgb(cell, mode, var);
    return (uint32_t{c.r} << 16) | (uint32_t{c.g} << 8) | c.b;
}

// A frame with its own frame buffer, all rows undrawn.
struct fake_frame {
    std::vector<uint32_t> cells = std::vector<uint32_t>(FRAME_ROWS * FRAME_CELLS, 0);
    vemo_frame_info info{};
    rgb_picture picture;  // reused, as a front-end reuses its picture frame after frame

    fake_frame() { info.frame_buffer = cells.data(), info.frame_pitch = FRAME_CELLS; }
    void draw_row(int row, int32_t active_width, int32_t divisor, uint32_t cell) {
        info.row_timing[2 * row] = active_width, info.row_timing[2 * row + 1] = divisor;
        std::fill_n(&cells[row * FRAME_CELLS], FRAME_CELLS, cell);
    }
    const rgb_picture& convert() { return picture_from_frame(info, picture), picture; }
};

const int32_t CRY = COLOUR_MODE_CRY, RGB16 = COLOUR_MODE_RGB16, DIRECT = COLOUR_MODE_DIRECT16;
const int32_t RGB24 = COLOUR_MODE_RGB24;

TEST(PictureCells, EachColourModeShowsItsOwnColour) {
    const struct { int32_t mode, var; uint32_t cell, colour; } cases[] = {
        // CRY at full intensity: the published table colour of the chroma byte
        {CRY, 0, 0x00FF, 0x0000FF}, {CRY, 0, 0xF0FF, 0xFF0000}, {CRY, 0, 0xFFFF, 0xFFFF00},
        {CRY, 0, 0x8FFF, 0x11FF00}, {CRY, 0, 0x59FF, 0xAAFFFF}, {CRY, 0, 0x1EFF, 0x13FFF0},
        // intensity scales it, rounded to nearest: (247, 255, 230) * 64 / 255 = 61.99, 64, 57.7
        {CRY, 0, 0xF000, 0x000000}, {CRY, 0, 0xF080, 0x800000}, {CRY, 0, 0x8840, 0x3E403A}, {CRY, 0, 0x0F01, 0x000101},
        // RGB 16: red 15-11, blue 10-6, green 5-0, each field's top bits repeated into its low bits
        {RGB16, 0, 0xF800, 0xFF0000}, {RGB16, 0, 0x07C0, 0x0000FF}, {RGB16, 0, 0x003F, 0x00FF00},
        {RGB16, 0, 0xFFFF, 0xFFFFFF}, {RGB16, 0, 0x0000, 0x000000}, {RGB16, 0, 0x8420, 0x848284},
        {RGB16, 0, 0x0841, 0x080408},
        // direct 16-bit mode shows the raw value as RGB 16
        {DIRECT, 0, 0xF800, 0xFF0000}, {DIRECT, 0, 0x07C0, 0x0000FF}, {DIRECT, 0, 0x8421, 0x848684},
        // variable mode, whatever the mode: cell bit 0 picks CRY (0) or RGB 16 (1), 0xF0FF is r 30, b 3, g 63
        {CRY, 1, 0xF0FE, 0xFE0000}, {CRY, 1, 0xF0FF, 0xF7FF18}, {CRY, 1, 0x0001, 0x000400},
        {DIRECT, 1, 0xF0FE, 0xFE0000}, {DIRECT, 1, 0xF0FF, 0xF7FF18}, {DIRECT, 1, 0x0001, 0x000400},
        {RGB16, 1, 0xF0FE, 0xFE0000}, {RGB16, 1, 0xF0FF, 0xF7FF18}, {RGB16, 1, 0x0001, 0x000400},
        // only the low 16 bits of a cell count
        {CRY, 0, 0xABCD00FF, 0x0000FF}, {RGB16, 0, 0x1234F800, 0xFF0000},
        // RGB 24: the cell is 0, red, green, blue, whatever the variable mode
        {RGB24, 0, 0x00123456, 0x123456}, {RGB24, 0, 0xAB123456, 0x123456}, {RGB24, 1, 0x00FF0001, 0xFF0001},
    };
    for (const auto& c : cases) EXPECT_EQ(rgb(c.mode, c.var, c.cell), c.colour) << c.mode << " " << std::hex << c.cell;
}

TEST(PictureRowWidth, IsClocksOverClocksPerPixelLimitedToTheRow) {
    // A divisor of 0 (no video mode set yet): the Object Processor draws one cell per clock.
    const int32_t widths[][3] = {{1280, 4, 320}, {3, 4, 0}, {640, 0, 640},
                                 {-1280, 4, 0},  {0x7FFFFFFF, 1, FRAME_CELLS}, {5000, -2, FRAME_CELLS}};
    for (const auto& w : widths) EXPECT_EQ(picture_row_width(w[0], w[1]), w[2]) << w[0] << " / " << w[1];
}

TEST(PictureFromFrame, CropsEachRowToItsWidthAndPadsNarrowRowsWithBlack) {
    fake_frame f;
    f.info.color_mode = RGB24;
    f.draw_row(0, 1280, 4, 0x00FF0000);  // 320 pixels
    f.draw_row(1, 640, 4, 0x0000FF00);   // 160 pixels
    f.draw_row(2, 1280, 4, 0x000000FF);
    f.draw_row(3, 2, 4, 0x00FFFFFF);  // narrower than one pixel: not a displayed row
    const rgb_picture& p = f.convert();
    ASSERT_EQ(p.width, 320);
    ASSERT_EQ(p.height, 3);
    ASSERT_EQ(p.pixels.size(), 320u * 3 * 3);
    EXPECT_EQ(pixel(p, 319, 0), 0xFF0000u);
    EXPECT_EQ(pixel(p, 159, 1), 0x00FF00u);
    EXPECT_EQ(pixel(p, 160, 1), 0x000000u);
    EXPECT_EQ(pixel(p, 0, 2), 0x0000FFu);

    // A width wider than the row stops at its last cell: the very last cell of the buffer is
    // read, no further.
    f.draw_row(255, 0x10000, 1, 0x00ABCDEF);
    const rgb_picture& wide = f.convert();
    ASSERT_EQ(wide.width, FRAME_CELLS);
    ASSERT_EQ(wide.height, FRAME_ROWS);
    EXPECT_EQ(pixel(wide, FRAME_CELLS - 1, FRAME_ROWS - 1), 0xABCDEFu);
    EXPECT_EQ(pixel(wide, 320, 0), 0u);
}

TEST(PictureFromFrame, NothingDrawnOrNoUsableBufferGivesAnEmptyPicture) {
    fake_frame f;
    EXPECT_TRUE(f.convert().pixels.empty());
    EXPECT_EQ(f.picture.width * f.picture.height, 0);
    f.draw_row(0, 1280, 4, 0);
    for (int32_t pitch : {0, -1024, FRAME_CELLS + 1}) {
        f.info.frame_pitch = pitch;
        EXPECT_TRUE(f.convert().pixels.empty()) << pitch;
    }
    f.info.frame_pitch = FRAME_CELLS;
    f.info.frame_buffer = nullptr;
    EXPECT_TRUE(f.convert().pixels.empty());

}

}  // namespace
