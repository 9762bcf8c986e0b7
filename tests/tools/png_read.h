// Reads a PNG file back as 8-bit RGB, for checking what vemo-run wrote.
#pragma once

#include <png.h>

#include <cstdint>
#include <string>
#include <vector>

struct png_rgb {
    int width = 0;
    int height = 0;
    std::vector<uint8_t> pixels;

    // Pixel as 0xRRGGBB.
    uint32_t at(int x, int y) const {
        const uint8_t* p = &pixels[(static_cast<size_t>(y) * width + x) * 3];
        return (uint32_t{p[0]} << 16) | (uint32_t{p[1]} << 8) | p[2];
    }
};

// False when the file cannot be read as a PNG.
inline bool read_png(const std::string& path, png_rgb& out) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    if (!png_image_begin_read_from_file(&image, path.c_str())) return false;
    image.format = PNG_FORMAT_RGB;
    out.width = static_cast<int>(image.width);
    out.height = static_cast<int>(image.height);
    out.pixels.assign(PNG_IMAGE_SIZE(image), 0);
    if (!png_image_finish_read(&image, nullptr, out.pixels.data(), 0, nullptr)) {
        png_image_free(&image);
        return false;
    }
    return true;
}
