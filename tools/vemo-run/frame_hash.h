// The digest that pins a frame in a golden run: SHA-256 (nettle) over what the frame shows and
// sounds, written as 64 lower-case hexadecimal digits.
//
// The bytes digested, in order, each number little-endian:
//   the picture's width and height (32 bits each), then its pixels row by row, three bytes
//   R G B each, exactly as the PNG of the frame holds them (see picture.h);
//   the sample rate (32 bits, signed), the left sample count (32 bits), the left samples (16
//   bits each, signed), the right sample count and the right samples.
//
// Offers: frame_hash. Needs: picture.h, nettle.
#pragma once

#include <string>

#include "picture.h"

std::string frame_hash(const vemo_frame_info& info, const rgb_picture& picture);
