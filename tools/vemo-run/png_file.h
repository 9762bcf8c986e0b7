// Writing a picture as a PNG file (8-bit RGB) with libpng.
#pragma once

#include <string>

#include "picture.h"

// Writes the picture to path. An empty picture (no row was displayed) is written as one black
// pixel, so that a requested file always exists. On failure returns false and sets error.
bool write_png(const std::string& path, const rgb_picture& picture, std::string& error);
