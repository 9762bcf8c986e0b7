#include "png_file.h"

#include <png.h>

bool write_png(const std::string& path, const rgb_picture& picture, std::string& error) {
    static const uint8_t black[3] = {0, 0, 0};
    const bool empty = picture.width <= 0 || picture.height <= 0;

    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = empty ? 1 : static_cast<png_uint_32>(picture.width);
    image.height = empty ? 1 : static_cast<png_uint_32>(picture.height);
    image.format = PNG_FORMAT_RGB;
    const void* pixels = empty ? black : static_cast<const void*>(picture.pixels.data());

    if (!png_image_write_to_file(&image, path.c_str(), 0, pixels, 0, nullptr)) {
        error = image.message;
        png_image_free(&image);
        return false;
    }
    return true;
}
