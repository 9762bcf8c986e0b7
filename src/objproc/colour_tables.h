// Colour-addition tables: add one 16-bit CRY colour to another, each field saturating on its
// own. Shared by the Object Processor's read-modify-write objects and the Blitter.
#pragma once

#include <cstdint>

#include "core/memory.h"

// Fills cry_add_y and cry_add_cr (allocated by vemo_init).
void build_colour_tables();

// Adds source colour s to destination colour d: s's intensity byte and colour nibbles are
// signed deltas.
inline uint16_t cry_add(uint16_t d, uint16_t s) {
    return cry_add_y[(d & 0x00FF) * 256 + (s & 0x00FF)] | cry_add_cr[(d & 0xFF00) + (s >> 8)];
}
