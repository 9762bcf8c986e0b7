// The colour-addition tables: each field of a CRY colour saturates on its own.
#include "objproc/colour_tables.h"

#include <algorithm>

namespace {

int clamp_to(int v, int high) { return std::clamp(v, 0, high); }

// A 4-bit field read as a signed number, -8 to 7.
int signed_nibble(int v) { return (v & 8) ? (v & 15) - 16 : (v & 15); }

}  // namespace

void build_colour_tables() {
    if (!cry_add_y || !cry_add_cr) return;
    for (int i = 0; i < static_cast<int>(CRY_TABLE_ENTRIES); ++i) {
        // Intensity: the destination's Y (high byte of the index) plus the source's Y as a
        // signed delta (low byte).
        const int y = clamp_to((i >> 8) + static_cast<int8_t>(i & 0xFF), 255);
        cry_add_y[i] = static_cast<uint16_t>(y);

        // Colour nibbles: the destination's C and R (high byte) plus the source's C and R as
        // signed deltas (low byte); the result sits in the high byte.
        const int c = clamp_to(((i >> 12) & 15) + signed_nibble(i >> 4), 15);
        const int r = clamp_to(((i >> 8) & 15) + signed_nibble(i), 15);
        cry_add_cr[i] = static_cast<uint16_t>(c * 4096 + r * 256);
    }
}
