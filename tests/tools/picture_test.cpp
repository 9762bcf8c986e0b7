// How frame-buffer cells become the colours of a saved picture.
#include "picture.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <vector>

#include "png_file.h"
#include "png_read.h"
#include "support/temp_files.h"

namespace {

uint32_t rgb(int32_t mode, int32_t var, uint32_t cell) {
    const rgb8 c = picture_cell_rgb(cell, mode, var);
    return (uint32_t{c.r} << 16) | (uint32_t{c.g} << 8) | c.b;
}

// A frame with its own frame buffer, all rows undrawn.
struct fake_frame {
    std::vector<uint32_t> cells = std::vector<uint32_t>(FRAME_ROWS * FRAME_CELLS, 0);
    vemo_frame_info info{};

    fake_frame() {
        info.frame_buffer = cells.data();
        info.frame_pitch = FRAME_CELLS;
    }
    void draw_row(int row, int32_t active_width, int32_t divisor, uint32_t cell) {
        info.row_timing[2 * row] = active_width;
        info.row_timing[2 * row + 1] = divisor;
        for (int x = 0; x < FRAME_CELLS; ++x) cells[row * FRAME_CELLS + x] = cell;
    }
};

}  // namespace

TEST(CryCells, FullIntensityShowsThePublishedTableColour) {
    EXPECT_EQ(rgb(COLOUR_MODE_CRY, 0, 0x00FF), 0x0000FFu);  // chroma 0x00: blue
    EXPECT_EQ(rgb(COLOUR_MODE_CRY, 0, 0xF0FF), 0xFF0000u);  // red
    EXPECT_EQ(rgb(COLOUR_MODE_CRY, 0, 0xFFFF), 0xFFFF00u);  // yellow
    EXPECT_EQ(rgb(COLOUR_MODE_CRY, 0, 0x8FFF), 0x11FF00u);  // chroma 0x8F
    EXPECT_EQ(rgb(COLOUR_MODE_CRY, 0, 0x59FF), 0xAAFFFFu);  // chroma 0x59
    EXPECT_EQ(rgb(COLOUR_MODE_CRY, 0, 0x1EFF), 0x13FFF0u);  // chroma 0x1E
}

TEST(CryCells, IntensityScalesTheColourRoundedToNearest) {
    EXPECT_EQ(rgb(COLOUR_MODE_CRY, 0, 0xF000), 0x000000u);
    EXPECT_EQ(rgb(COLOUR_MODE_CRY, 0, 0xF080), 0x800000u);  // 255 * 128 / 255
    EXPECT_EQ(rgb(COLOUR_MODE_CRY, 0, 0x8840), 0x3E403Au);  // (247, 255, 230) * 64 / 255 = 61.99, 64, 57.7
    EXPECT_EQ(rgb(COLOUR_MODE_CRY, 0, 0x0F01), 0x000101u);
}

TEST(CryCells, OnlyTheLow16BitsOfACellCount) {
    EXPECT_EQ(rgb(COLOUR_MODE_CRY, 0, 0xABCD00FF), 0x0000FFu);
    EXPECT_EQ(rgb(COLOUR_MODE_RGB16, 0, 0x1234F800), 0xFF0000u);
}

TEST(Rgb16Cells, FieldsAreRedBlueGreenWidenedTo8Bits) {
    EXPECT_EQ(rgb(COLOUR_MODE_RGB16, 0, 0xF800), 0xFF0000u);  // bits 15-11 red
    EXPECT_EQ(rgb(COLOUR_MODE_RGB16, 0, 0x07C0), 0x0000FFu);  // bits 10-6 blue
    EXPECT_EQ(rgb(COLOUR_MODE_RGB16, 0, 0x003F), 0x00FF00u);  // bits 5-0 green
    EXPECT_EQ(rgb(COLOUR_MODE_RGB16, 0, 0xFFFF), 0xFFFFFFu);
    EXPECT_EQ(rgb(COLOUR_MODE_RGB16, 0, 0x0000), 0x000000u);
    // Top bits repeat into the low bits: red 10000b -> 10000100b, green 100000b -> 10000010b.
    EXPECT_EQ(rgb(COLOUR_MODE_RGB16, 0, 0x8420), 0x848284u);
    EXPECT_EQ(rgb(COLOUR_MODE_RGB16, 0, 0x0841), 0x080408u);
}

TEST(Rgb16Cells, DirectModeShowsTheRawValueAsRgb16) {
    for (uint32_t v : {0x0000u, 0xF800u, 0x07C0u, 0x8421u, 0xFFFFu})
        EXPECT_EQ(rgb(COLOUR_MODE_DIRECT16, 0, v), rgb(COLOUR_MODE_RGB16, 0, v)) << std::hex << v;
}

TEST(VariableMode, BitZeroOfEachCellChoosesCryOrRgb16) {
    for (int32_t mode : {COLOUR_MODE_CRY, COLOUR_MODE_DIRECT16, COLOUR_MODE_RGB16}) {
        EXPECT_EQ(rgb(mode, 1, 0xF0FE), 0xFE0000u) << mode;  // CRY red at Y 254
        EXPECT_EQ(rgb(mode, 1, 0xF0FF), 0xF7FF18u) << mode;              // RGB 16: r 30, b 3, g 63
        EXPECT_EQ(rgb(mode, 1, 0x0001), 0x000400u) << mode;              // RGB 16 green 1
    }
}

TEST(Rgb24Cells, CellIsZeroRedGreenBlueAndIgnoresVariableMode) {
    EXPECT_EQ(rgb(COLOUR_MODE_RGB24, 0, 0x00123456), 0x123456u);
    EXPECT_EQ(rgb(COLOUR_MODE_RGB24, 0, 0xAB123456), 0x123456u);
    EXPECT_EQ(rgb(COLOUR_MODE_RGB24, 1, 0x00FF0001), 0xFF0001u);
}

TEST(RowWidth, IsClocksDividedByClocksPerPixelWithinTheRow) {
    EXPECT_EQ(picture_row_width(1280, 4), 320);
    EXPECT_EQ(picture_row_width(3, 4), 0);
    // Before a video mode is set the divisor is 0 and the Object Processor draws one cell per clock.
    EXPECT_EQ(picture_row_width(640, 0), 640);
    // Widths outside the row are limited, never negative.
    EXPECT_EQ(picture_row_width(-1280, 4), 0);
    EXPECT_EQ(picture_row_width(0x7FFFFFFF, 1), FRAME_CELLS);
    EXPECT_EQ(picture_row_width(5000, -2), FRAME_CELLS);
}

TEST(PictureHeight, RunsToTheLastRowWithAWidth) {
    int32_t timing[2 * FRAME_ROWS] = {};
    EXPECT_EQ(picture_height(timing), 0);
    timing[2 * 0] = 1280;
    timing[2 * 0 + 1] = 4;
    timing[2 * 99] = 1280;
    timing[2 * 99 + 1] = 4;
    EXPECT_EQ(picture_height(timing), 100);
    timing[2 * 255] = 1280;
    timing[2 * 255 + 1] = 4;
    EXPECT_EQ(picture_height(timing), 256);
    timing[2 * 255] = 2;  // narrower than one pixel: not a displayed row
    EXPECT_EQ(picture_height(timing), 100);
}

TEST(PictureFromFrame, CropsEachRowToItsWidthAndPadsNarrowRowsWithBlack) {
    fake_frame f;
    f.info.color_mode = COLOUR_MODE_RGB24;
    f.draw_row(0, 1280, 4, 0x00FF0000);  // 320 pixels
    f.draw_row(1, 640, 4, 0x0000FF00);   // 160 pixels
    f.draw_row(2, 1280, 4, 0x000000FF);
    rgb_picture p;
    picture_from_frame(f.info, p);
    ASSERT_EQ(p.width, 320);
    ASSERT_EQ(p.height, 3);
    ASSERT_EQ(p.pixels.size(), 320u * 3 * 3);
    auto at = [&](int x, int y) {
        const uint8_t* q = &p.pixels[(y * 320 + x) * 3];
        return (uint32_t{q[0]} << 16) | (uint32_t{q[1]} << 8) | q[2];
    };
    EXPECT_EQ(at(319, 0), 0xFF0000u);
    EXPECT_EQ(at(159, 1), 0x00FF00u);
    EXPECT_EQ(at(160, 1), 0x000000u);  // beyond the row's width: not shown
    EXPECT_EQ(at(0, 2), 0x0000FFu);
}

TEST(PictureFromFrame, NothingDrawnOrNoUsableBufferGivesAnEmptyPicture) {
    fake_frame f;
    rgb_picture p;
    picture_from_frame(f.info, p);
    EXPECT_EQ(p.width * p.height, 0);
    EXPECT_TRUE(p.pixels.empty());

    f.draw_row(0, 1280, 4, 0);
    for (int32_t pitch : {0, -1024, FRAME_CELLS + 1}) {
        f.info.frame_pitch = pitch;
        picture_from_frame(f.info, p);
        EXPECT_TRUE(p.pixels.empty()) << pitch;
    }
    f.info.frame_pitch = FRAME_CELLS;
    f.info.frame_buffer = nullptr;
    picture_from_frame(f.info, p);
    EXPECT_TRUE(p.pixels.empty());
}

TEST(PictureFromFrame, AWidthWiderThanTheRowStopsAtItsLastCell) {
    fake_frame f;
    f.info.color_mode = COLOUR_MODE_RGB24;
    f.draw_row(255, 0x10000, 1, 0x00ABCDEF);  // the very last cell of the buffer is read, no further
    rgb_picture p;
    picture_from_frame(f.info, p);
    ASSERT_EQ(p.width, FRAME_CELLS);
    ASSERT_EQ(p.height, FRAME_ROWS);
    EXPECT_EQ(p.pixels[p.pixels.size() - 3], 0xAB);
    EXPECT_EQ(p.pixels[0], 0x00);  // row 0 was not drawn
}

class PngFiles : public ::testing::Test {
protected:
    std::filesystem::path dir =
        test_support::scratch_dir() / ::testing::UnitTest::GetInstance()->current_test_info()->name();
    void SetUp() override { std::filesystem::create_directories(dir); }
    void TearDown() override { std::filesystem::remove_all(dir); }
};

TEST_F(PngFiles, PictureReadsBackPixelForPixel) {
    rgb_picture p;
    p.width = 3;
    p.height = 2;
    p.pixels = {255, 0, 0, 0, 255, 0, 0, 0, 255, 1, 2, 3, 4, 5, 6, 7, 8, 9};
    std::string error;
    const std::string path = (dir / "p.png").string();
    ASSERT_TRUE(write_png(path, p, error)) << error;
    png_rgb back;
    ASSERT_TRUE(read_png(path, back));
    EXPECT_EQ(back.width, 3);
    EXPECT_EQ(back.height, 2);
    EXPECT_EQ(back.pixels, p.pixels);
}

TEST_F(PngFiles, AnEmptyPictureIsOneBlackPixel) {
    std::string error;
    const std::string path = (dir / "empty.png").string();
    ASSERT_TRUE(write_png(path, rgb_picture{}, error)) << error;
    png_rgb back;
    ASSERT_TRUE(read_png(path, back));
    EXPECT_EQ(back.width, 1);
    EXPECT_EQ(back.height, 1);
    EXPECT_EQ(back.at(0, 0), 0u);
}
