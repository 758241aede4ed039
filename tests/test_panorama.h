// Panoramas made in memory for the projection tests.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstring>
#include <string>
#include <vector>

#include "generators/random.h"
#include "image/pixel_rows.h"
#include "projection/direction.h"
#include "projection/layout_requests.h"
#include "projection/sample_panorama.h"
#include "tests/recording_host.h"

namespace skyvault::test {

inline const std::vector<PixelFormat>& AllFormats() {
    static const std::vector<PixelFormat> formats = {
        PixelFormat::Grey8, PixelFormat::Grey16, PixelFormat::GreyHalf,
        PixelFormat::Rgb8,  PixelFormat::Rgb16,  PixelFormat::RgbHalf,
        PixelFormat::Rgba8, PixelFormat::Rgba16, PixelFormat::RgbaHalf};
    return formats;
}

/// Every byte drawn at random, halves kept finite: no two pixels are likely to be alike.
inline void FillAtRandom(Image& image, std::uint32_t seed) {
    std::uint32_t state = seed * 2654435761u + 1;
    const auto next = [&state] {
        state = state * 1664525u + 1013904223u;
        return state >> 16;
    };
    const bool half = ChannelType(image.format) == ChannelKind::Half;
    std::byte* p = image.pixels.get();
    for (std::size_t i = 0; i < image.ByteCount(); ++i) p[i] = static_cast<std::byte>(next());
    if (!half) return;
    for (std::size_t i = 0; i + 1 < image.ByteCount(); i += 2) {
        const Half value = FloatToHalf(static_cast<float>(next() % 5000) / 4000.0f);
        std::memcpy(p + i, &value.bits, 2);
    }
}

inline Image RandomImage(std::uint32_t width, std::uint32_t height, PixelFormat format,
                         std::uint32_t seed = 1) {
    Image image(width, height, format);
    FillAtRandom(image, seed);
    return image;
}

/// A picture whose pixels are Color8 or Color16 by their column and row.
template <typename ColourAt>
Image Drawn(int width, int height, PixelFormat format, const ColourAt& colourAt) {
    Image picture(static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height), format);
    for (int i = 0; i < width * height; ++i) {
        const auto colour = colourAt(i % width, i / width);
        PixelValue value;
        if constexpr (std::is_same_v<decltype(colour), const Color8>) {
            value = PixelValue(colour);
        } else {
            value.format = PixelFormat::Rgba16;
            value.color16 = colour;
        }
        picture.SetPixel(i % width, i / width, value);
    }
    return picture;
}

/// A panorama with settings and feedback of its own, and the requests that go with them.
struct TestPanorama {
    RecordingFeedback feedback;
    AppState settings;
    Panorama panorama;

    void SetEquirectangular(Image source) {
        panorama.equirectSource = std::move(source);
        panorama.faceSize = panorama.equirectSource.width / 4;
    }
    void SetFaces(std::uint32_t size, PixelFormat format) {
        for (std::size_t f = 0; f < panorama.faces.size(); ++f) {
            panorama.faces[f] = RandomImage(size, size, format, static_cast<std::uint32_t>(f + 7));
        }
        panorama.faceSize = size;
    }

    ImportRequest From(std::wstring path, PanoramaFormat format = PanoramaFormat::Equirectangular) const {
        return {.format = format, .paths = {std::move(path)}, .settings = settings, .generator = settings};
    }
    ExportRequest ForFile(PanoramaFormat format, std::wstring path = L"unused.png") const {
        return {.format = format, .settings = settings, .camera = {}, .path = std::move(path), .client = {}};
    }
    ExportRequest ForView(PanoramaFormat format, ClientSize client = {1000, 700}) const {
        return {.format = format, .settings = settings, .camera = {}, .path = {}, .client = client};
    }
    PixelValue Sample(const Direction& d, bool applyOrientation = true) const {
        return SamplePanorama(panorama, d, EmptyColour(settings), applyOrientation);
    }
};

inline bool SameBytes(const Image& a, const Image& b) {
    return a.IsValid() && b.IsValid() && a.width == b.width && a.height == b.height && a.format == b.format &&
           std::memcmp(a.pixels.get(), b.pixels.get(), a.ByteCount()) == 0;
}

/// Equirectangular; its colour tells the direction: red, green and blue are the direction's x, y and z, from
/// −1..1 to 0..65535.
inline Image DirectionPicture(std::int32_t width) {
    const auto channel = [](double v) { return static_cast<std::uint16_t>((v + 1) * 32767.5); };
    return Drawn(width, width / 2, PixelFormat::Rgb16, [&](int column, int row) {
        const double longitude = 2 * kPiWide * column / width - kPiWide;
        const double latitude = kHalfPiWide - kPiWide * row / (width / 2);
        return Color16{channel(std::cos(latitude) * std::sin(longitude)), channel(std::sin(latitude)),
                       channel(std::cos(latitude) * std::cos(longitude)), 65535};
    });
}

/// How far a pixel of it is from a direction, in degrees.
inline double DegreesFrom(Direction d, const PixelValue& seen) {
    Image one(1, 1, PixelFormat::Rgb16);
    one.SetPixel(0, 0, seen);
    const Color16 c = one.GetPixel16(0, 0);
    Direction s{c.red / 32767.5f - 1, c.green / 32767.5f - 1, c.blue / 32767.5f - 1};
    Normalize(d);
    Normalize(s);
    return std::acos(std::min(1.0f, s.x * d.x + s.y * d.y + s.z * d.z)) * 57.29578;
}

}  // namespace skyvault::test
