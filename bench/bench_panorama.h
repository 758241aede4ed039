// Panoramas in memory for the benchmarks, and nobody to report to.
#pragma once

#include <cstdint>

#include "platform/silent_feedback.h"
#include "projection/panorama.h"

namespace skyvault::bench {

/// A panorama whose pictures hold noise.
struct BenchPanorama {
    SilentFeedback feedback;
    AppState settings;
    Panorama panorama{feedback, settings, nullptr};

    static void Fill(Image& image) {
        std::uint32_t state = 1;
        for (std::size_t i = 0; i < image.ByteCount(); ++i) {
            state = state * 1664525u + 1013904223u;
            image.pixels[i] = static_cast<std::byte>(state >> 24);
        }
    }
    void SetEquirectangular(std::uint32_t width, PixelFormat format) {
        panorama.equirectSource = Image(width, width / 2, format);
        Fill(panorama.equirectSource);
        panorama.faceSize = width / 4;
    }
    void SetFaces(std::uint32_t size, PixelFormat format) {
        for (Image& face : panorama.faces) {
            face = Image(size, size, format);
            Fill(face);
        }
        panorama.faceSize = size;
    }
    void TurnObliquely() { RotatePanorama(panorama.modifications, 0.7f, 0.5f, 0.3f); }
};

}  // namespace skyvault::bench
