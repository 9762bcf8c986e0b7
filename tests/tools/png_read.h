// Reading pictures back in the tests: one pixel of a picture, and a PNG file as a picture.
#pragma once

#include <png.h>

#include <string>
#include <utility>

#include "picture.h"

// Pixel as 0xRRGGBB.
inline uint32_t pixel(const rgb_picture& p, int x, int y) {
    const uint8_t* q = &p.pixels[(static_cast<size_t>(y) * p.width + x) * 3];
    return (uint32_t{q[0]} << 16) | (uint32_t{q[1]} << 8) | q[2];
}

// Empty when the file cannot be read as a PNG.
inline rgb_picture read_png(const std::string& path) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    if (!png_image_begin_read_from_file(&image, path.c_str())) return {};
    image.format = PNG_FORMAT_RGB;
    std::vector<uint8_t> pixels(PNG_IMAGE_SIZE(image));
    if (png_image_finish_read(&image, nullptr, pixels.data(), 0, nullptr))
        return {static_cast<int>(image.width), static_cast<int>(image.height), std::move(pixels)};
    png_image_free(&image);
    return {};
}
