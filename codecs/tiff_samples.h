// What the samples of a TIFF file mean, and rows of them as rows of a picture.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "image/image.h"

namespace skyvault {

enum class TiffColours { Grey, GreyInverted, Rgb, Palette, Cmyk };
enum class TiffNumbers { Unsigned, Signed, Float };

struct TiffSamples {
    TiffColours colours = TiffColours::Grey;
    TiffNumbers numbers = TiffNumbers::Unsigned;
    std::uint32_t bits = 8;     ///< of a sample
    std::uint32_t samples = 1;  ///< of a pixel; those of the colour come first
    std::uint32_t alpha = 0;    ///< which of them is alpha; 0: none
    bool multiplied = false;    ///< colours have been multiplied by alpha
    bool separate = false;      ///< the samples are not side by side, but each in rows of its own
    std::vector<std::array<std::uint8_t, 3>> palette;  ///< red first, 2^bits of them
};

/// 1, 3 or 4.
std::uint32_t ColourSamples(TiffColours colours);

/// Whether pixels of the kind can be read at all.
bool CanConvert(const TiffSamples& samples);

/// What the pixels become: what a format of ours stores unchanged keeps its samples, all else is Rgba8.
PixelFormat PictureFormat(const TiffSamples& samples);

/// Whether a row of the file is, byte for byte, one of the picture (colours of 8 bits in the file's order).
bool IsPictureRow(const TiffSamples& samples);

/// Rows of samples to rows of pixels, for samples that can be converted.
class TiffRowConverter {
  public:
    /// count: the longest row.
    TiffRowConverter(const TiffSamples& samples, std::uint32_t count);

    /// rows: one, or one for each sample where they are separate.
    void Convert(std::span<const std::byte* const> rows, std::uint32_t count, std::byte* to);

  private:
    template <typename Channel>
    void Copy(std::span<const std::byte* const> rows, std::uint32_t count, std::byte* to) const;
    void Unpack(std::span<const std::byte* const> rows, std::uint32_t sample, std::uint32_t count,
                std::uint32_t* to) const;
    void UnpackFloats(std::span<const std::byte* const> rows, std::uint32_t sample, std::uint32_t count,
                      float* to) const;
    void ConvertIntegers(std::uint32_t count, std::byte* to) const;
    void ConvertFloats(std::uint32_t count, std::byte* to) const;

    TiffSamples samples_;
    bool copies_;
    std::uint32_t colourSamples_;
    std::uint32_t top_;                                 // the largest number of an integer sample
    std::array<std::vector<std::uint32_t>, 5> values_;  // of each colour, then of alpha
    std::array<std::vector<float>, 5> floats_;
};

}  // namespace skyvault
