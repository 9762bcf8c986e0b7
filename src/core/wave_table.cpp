// The sound chip's wave-table ROM: eight waveforms of 128 signed 32-bit entries, held in the
// console's big-endian byte order. Six follow formulas, evaluated in double precision and
// truncated toward zero; the noisy triangle and the noise are irregular data with known first
// entries and ranges, reproduced here by a fixed pseudo-random sequence that keeps those.
#include <array>
#include <cmath>
#include <cstdint>

#include "core/bus.h"

namespace {

constexpr int ENTRIES = 128;
constexpr double PI = 3.14159265358979323846;
using wave = std::array<int32_t, ENTRIES>;

constexpr int32_t triangle(int i) {
    if (i <= 30) return -(512 * (31 - i) - 1);
    if (i == 31) return 0;
    if (i <= 63) return 512 * (i - 31) - 1;
    if (i <= 94) return 512 * (95 - i) - 1;
    if (i == 95) return 0;
    return -(512 * (i - 95) - 1);
}

// A small linear congruential sequence: the same irregular values on every build.
struct sequence {
    uint32_t state;
    constexpr int32_t next(int32_t low, int32_t high) {
        state = state * 1664525u + 1013904223u;
        return low + static_cast<int32_t>((state >> 8) % static_cast<uint32_t>(high - low + 1));
    }
};

constexpr int32_t clamp(int32_t v, int32_t low, int32_t high) { return v < low ? low : v > high ? high : v; }

constexpr wave noisy_triangle() {
    wave w{};
    sequence s{0x5EED1};
    for (int i = 0; i < ENTRIES; ++i) w[i] = clamp(triangle(i) + s.next(-1537, 1892), -15169, 15711);
    constexpr int32_t first[] = {-14699, -13531, -13892, -12970, -13010, -12797, -12608, -11860};
    for (int i = 0; i < 8; ++i) w[i] = first[i];
    w[63] = 15711;   // the peak and the trough reach the range's ends
    w[127] = -15169;
    return w;
}

constexpr wave noise() {
    wave w{};
    sequence s{0xC0FFEE};
    for (int i = 0; i < ENTRIES; ++i) w[i] = s.next(-13481, 18924);
    constexpr int32_t first[] = {-4186, 3968, -4092, 3750, -4747, 7812, 1223, 10452};
    for (int i = 0; i < 8; ++i) w[i] = first[i];
    w[40] = 18924;
    w[90] = -13481;
    return w;
}

constexpr wave formula(double (*f)(int n)) {
    wave w{};
    for (int i = 0; i < ENTRIES; ++i) w[i] = static_cast<int32_t>(f(i + 1));  // truncates toward 0
    return w;
}

constexpr double sine(int n) { return 32767.0 * std::sin(2.0 * PI * n / 128.0); }
constexpr double am_sine(int n) { return 32767.0 * (n / 100.0) * std::sin(2.0 * PI * n / 128.0); }
constexpr double harmonic_sine(int n) {
    return 16383.5 * (std::sin(2.0 * PI * n / 128.0) + std::sin(4.0 * PI * n / 128.0));
}
constexpr double chirp(int n) {
    return 32767.0 * std::sin(2.0 * PI * (n / 128.0 + 15.0 * n * n / 16384.0));
}

constexpr std::array<uint8_t, 4096> build() {
    wave waves[8];
    for (int i = 0; i < ENTRIES; ++i) waves[0][i] = triangle(i);
    waves[1] = formula(sine);
    waves[2] = formula(am_sine);
    waves[3] = formula(harmonic_sine);
    waves[4] = formula(chirp);
    waves[4][68] = -19609;  // the console's chirp departs from its formula at this one entry
    waves[5] = noisy_triangle();
    waves[6] = wave{};
    constexpr int32_t delta[] = {8191, 16383, 24575, 32767, 24575, 16383, 8191};
    for (int i = 0; i < 7; ++i) waves[6][60 + i] = delta[i];
    waves[7] = noise();

    std::array<uint8_t, 4096> rom{};
    for (int w = 0; w < 8; ++w)
        for (int i = 0; i < ENTRIES; ++i) {
            uint32_t v = static_cast<uint32_t>(waves[w][i]);
            uint8_t* p = &rom[(w * ENTRIES + i) * 4];
            p[0] = static_cast<uint8_t>(v >> 24), p[1] = static_cast<uint8_t>(v >> 16);
            p[2] = static_cast<uint8_t>(v >> 8), p[3] = static_cast<uint8_t>(v);
        }
    return rom;
}

}  // namespace

// GCC evaluates std::sin at compile time, so the table is constant data of the library. Clang,
// which builds only the fuzz targets, cannot: there the table is built as the program starts.
#if defined(__clang__)
const std::array<uint8_t, 4096> wave_table_rom = build();
#else
constinit const std::array<uint8_t, 4096> wave_table_rom = build();
#endif
