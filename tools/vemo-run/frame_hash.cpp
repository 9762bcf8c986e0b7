// Frame digests.
#include "frame_hash.h"

#include <nettle/sha2.h>

#include <cstdint>
#include <cstdio>

namespace {

// No frame holds more samples per channel than the core's buffers.
constexpr uint32_t MAX_SAMPLES = 4096;

void digest_u32(sha256_ctx& ctx, uint32_t value) {
    const uint8_t bytes[4] = {static_cast<uint8_t>(value), static_cast<uint8_t>(value >> 8),
                              static_cast<uint8_t>(value >> 16), static_cast<uint8_t>(value >> 24)};
    sha256_update(&ctx, sizeof bytes, bytes);
}

void digest_samples(sha256_ctx& ctx, const int16_t* samples, uint32_t count) {
    if (!samples) count = 0;
    if (count > MAX_SAMPLES) count = MAX_SAMPLES;
    digest_u32(ctx, count);
    for (uint32_t i = 0; i < count; ++i) {
        const uint16_t s = static_cast<uint16_t>(samples[i]);
        const uint8_t bytes[2] = {static_cast<uint8_t>(s), static_cast<uint8_t>(s >> 8)};
        sha256_update(&ctx, sizeof bytes, bytes);
    }
}

}  // namespace

std::string frame_hash(const vemo_frame_info& info, const rgb_picture& picture) {
    sha256_ctx ctx;
    sha256_init(&ctx);
    digest_u32(ctx, static_cast<uint32_t>(picture.width));
    digest_u32(ctx, static_cast<uint32_t>(picture.height));
    sha256_update(&ctx, picture.pixels.size(), picture.pixels.data());
    digest_u32(ctx, static_cast<uint32_t>(info.audio_rate));
    digest_samples(ctx, info.audio_left, info.audio_left_count);
    digest_samples(ctx, info.audio_right, info.audio_right_count);
    uint8_t digest[SHA256_DIGEST_SIZE];
    sha256_digest(&ctx, sizeof digest, digest);
    char text[2 * SHA256_DIGEST_SIZE + 1];
    for (int i = 0; i < SHA256_DIGEST_SIZE; ++i) std::snprintf(text + 2 * i, 3, "%02x", digest[i]);
    return text;
}
