// The one picture in memory: a rectangle of pixels in one of nine formats.
//
// Rows are tightly packed, row 0 first. Every access to a pixel wraps both coordinates around the edges,
// for a 360° picture is continuous across its left and right edge.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include "image/pixel.h"
#include "platform/memory.h"

namespace skyvault {

/// In pixels.
struct PictureSize {
    std::uint32_t width = 0, height = 0;
    friend bool operator==(const PictureSize&, const PictureSize&) = default;
};

/// The size, at least 1 × 1, made smaller or larger to fit inside the target, aspect ratio kept and
/// fractions dropped: a very thin picture may come to nothing (0 on one side).
PictureSize FitInto(const PictureSize& size, const PictureSize& target);

/// Inclusive bounds in pixels.
struct PixelRect {
    std::int32_t left = 0, top = 0, right = 0, bottom = 0;
};

struct Image {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    PixelFormat format = PixelFormat::None;
    std::uint32_t stride = 0;         ///< bytes per row: BytesPerPixel(format) × width
    ByteBuffer pixels;                ///< stride × height bytes
    std::int32_t topDown = 1;         ///< 1 when the file stored the top row first; toggled by FlipVertical
    std::uint32_t frameCount = 1;     ///< frames of the file the picture comes from
    std::uint32_t frameDelay = 0;     ///< milliseconds the decoded frame is shown
    std::uint32_t frameDisposal = 0;  ///< GIF disposal method of the decoded frame
    std::uint32_t frameLeft = 0, frameTop = 0;      ///< where the frame sits on the animation's canvas
    std::uint32_t frameWidth = 0, frameHeight = 0;  ///< the frame's size as the file records it

    /// Empty: no size, no format, no pixels.
    Image() = default;
    /// Pixels are allocated, not cleared. Invalid when there is no memory, for an unknown format, and when
    /// a row would not fit 32 bits.
    Image(std::uint32_t width, std::uint32_t height, PixelFormat format);

    /// True with a size, a format and pixels. Formats 4 and 7 are further checked for a stride of at least
    /// 3 and 4 bytes per pixel; the others are not. Every operation below does nothing (or returns false,
    /// null or an empty result) for an invalid picture.
    bool IsValid() const;

    std::size_t ByteCount() const { return std::size_t{stride} * height; }

    /// Address of a pixel, both coordinates wrapped into the picture; null when invalid.
    std::byte* PixelAddress(std::int32_t x, std::int32_t y);
    const std::byte* PixelAddress(std::int32_t x, std::int32_t y) const;

    /// First byte of a row, 0 ≤ y < height, without wrapping: for row loops over valid pictures.
    std::byte* Row(std::uint32_t y) { return pixels.get() + std::size_t{stride} * y; }
    const std::byte* Row(std::uint32_t y) const { return pixels.get() + std::size_t{stride} * y; }

    /// The pixel converted to the asked record; the default record when invalid.
    Color8 GetPixel8(std::int32_t x, std::int32_t y) const;
    Color16 GetPixel16(std::int32_t x, std::int32_t y) const;
    ColorHalf GetPixelHalf(std::int32_t x, std::int32_t y) const;
    PixelValue GetPixel(std::int32_t x, std::int32_t y) const;

    void SetPixel(std::int32_t x, std::int32_t y, const PixelValue& value);
    void SetPixel(std::int32_t x, std::int32_t y, const Color8& colour);

    void Fill(const PixelValue& value);

    /// A copy of the inclusive rectangle, clamped to the picture (whole picture when none is given), in the
    /// same format. topDown is copied, frame information is not. Empty when the rectangle is or memory
    /// lacks.
    Image CopyRect(const std::optional<PixelRect>& rect = std::nullopt) const;

    /// Mirrors top to bottom in place and toggles topDown; false when invalid or without memory for one row.
    bool FlipVertical();

    /// Turns the picture by half a turn in place.
    void Rotate180();

    /// True when the format has alpha and one pixel's 8-bit alpha is below 255.
    bool HasTransparency() const;

    /// Composites every pixel over an opaque background; only when HasTransparency().
    void FlattenAlpha(const Color8& background);

    /// Exchanges the first and third channel of every pixel; formats with three or four channels only.
    void SwapRedAndBlue();

    /// Back to the empty picture; memory is released.
    void Clear() { *this = Image(); }
};

}  // namespace skyvault
