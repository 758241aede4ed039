#include "codecs/tiff_samples.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "codecs/bytes.h"

namespace skyvault {
namespace {

constexpr std::size_t kAlpha = 4;  // its place among the unpacked values
constexpr std::uint32_t kHalfBits = 16;

/// Whether a format of ours stores the samples as they are.
bool KeepsSamples(const TiffSamples& samples) {
    const bool shown = samples.colours == TiffColours::Grey || samples.colours == TiffColours::Rgb;
    const bool stored =
        (samples.numbers == TiffNumbers::Unsigned && (samples.bits == 8 || samples.bits == 16)) ||
        (samples.numbers == TiffNumbers::Float && samples.bits == kHalfBits);
    return shown && stored && !samples.multiplied;
}

/// 16 bits of wider samples are enough for 8.
std::uint32_t UnpackedBits(const TiffSamples& samples) {
    const std::uint32_t bits = samples.numbers == TiffNumbers::Signed ? samples.bits - 1 : samples.bits;
    return std::min(bits, 16u);
}

/// A sample of bits that do not fill bytes; the first bit is a byte's highest.
std::uint32_t PackedBits(const std::byte* row, std::size_t at, std::uint32_t bits) {
    std::uint32_t value = 0;
    for (std::uint32_t i = 0; i < bits; ++i, ++at) {
        value = value << 1 | (std::to_integer<std::uint32_t>(row[at / 8]) >> (7 - at % 8) & 1);
    }
    return value;
}

/// Linear light, full at 1, as sRGB; NaN is dark.
std::uint8_t DisplayByte(float linear) {
    if (!(linear > 0.0f)) return 0;
    const float encoded =
        linear <= 0.0031308f ? linear * 12.92f : 1.055f * std::pow(linear, 1.0f / 2.4f) - 0.055f;
    return static_cast<std::uint8_t>(std::min(encoded, 1.0f) * 255.0f + 0.5f);
}

/// Full at 1; NaN is nothing.
std::uint8_t PlainByte(float value) {
    return value == value ? static_cast<std::uint8_t>(std::clamp(value, 0.0f, 1.0f) * 255.0f + 0.5f) : 0;
}

/// Samples of whole bytes, in the machine's order, every step-th.
template <typename Stored, typename To, typename Meaning>
void UnpackWhole(const std::byte* from, std::size_t step, std::uint32_t count, To* to, Meaning meaning) {
    for (std::uint32_t i = 0; i < count; ++i, from += step * sizeof(Stored)) {
        Stored stored;
        std::memcpy(&stored, from, sizeof stored);
        to[i] = meaning(stored);
    }
}

}  // namespace

std::uint32_t ColourSamples(TiffColours colours) {
    return colours == TiffColours::Rgb ? 3 : colours == TiffColours::Cmyk ? 4 : 1;
}

bool CanConvert(const TiffSamples& samples) {
    const std::uint32_t bits = samples.bits;
    if (samples.samples < ColourSamples(samples.colours) || samples.alpha >= samples.samples) return false;
    if (samples.colours == TiffColours::Palette &&
        (bits > 16 || samples.numbers != TiffNumbers::Unsigned || samples.palette.size() != 1u << bits)) {
        return false;
    }
    switch (samples.numbers) {
        case TiffNumbers::Unsigned:
            return (bits >= 1 && bits <= 16) || bits == 24 || bits == 32;
        case TiffNumbers::Signed:
            return bits == 8 || bits == 16 || bits == 32;
        case TiffNumbers::Float:
            return bits == kHalfBits || bits == 32 || bits == 64;
    }
    return false;
}

PixelFormat PictureFormat(const TiffSamples& samples) {
    using enum PixelFormat;
    if (!KeepsSamples(samples)) return Rgba8;
    const bool grey = samples.colours == TiffColours::Grey, alpha = samples.alpha != 0;
    if (samples.bits == 8) return alpha ? Rgba8 : grey ? Grey8 : Rgb8;
    if (samples.numbers == TiffNumbers::Float) return alpha ? RgbaHalf : grey ? GreyHalf : RgbHalf;
    return alpha ? Rgba16 : grey ? Grey16 : Rgb16;
}

bool IsPictureRow(const TiffSamples& samples) {
    const std::uint32_t colours = ColourSamples(samples.colours);
    const std::uint32_t channels = colours + (samples.alpha != 0 ? 1 : 0);
    return KeepsSamples(samples) && samples.samples == channels && channels != 2 &&
           (!samples.separate || channels == 1) && (samples.alpha == 0 || samples.alpha == colours);
}

TiffRowConverter::TiffRowConverter(const TiffSamples& samples, std::uint32_t count)
    : samples_(samples),
      copies_(KeepsSamples(samples)),
      colourSamples_(ColourSamples(samples.colours)),
      top_((1u << UnpackedBits(samples)) - 1) {
    if (copies_) return;
    for (std::uint32_t i = 0; i <= kAlpha; ++i) {
        if (i >= colourSamples_ && (i != kAlpha || samples_.alpha == 0)) continue;
        if (samples_.numbers == TiffNumbers::Float) {
            floats_[i].resize(count);
        } else {
            values_[i].resize(count);
        }
    }
}

template <typename Channel>
void TiffRowConverter::Copy(std::span<const std::byte* const> rows, std::uint32_t count,
                            std::byte* to) const {
    const std::uint32_t channels = samples_.alpha != 0 ? 4 : colourSamples_;
    for (std::uint32_t channel = 0; channel < channels; ++channel) {
        const std::uint32_t colour = colourSamples_ == 1 ? 0 : channel;
        const std::uint32_t sample = channel == 3 ? samples_.alpha : colour;
        // Of 8 bits blue is first.
        const std::uint32_t place =
            sizeof(Channel) == 1 && channels > 1 && channel < 3 ? 2 - channel : channel;
        const std::byte* from = samples_.separate ? rows[sample] : rows[0] + sample * sizeof(Channel);
        const std::size_t step = (samples_.separate ? 1 : samples_.samples) * sizeof(Channel);
        std::byte* pixel = to + place * sizeof(Channel);
        for (std::uint32_t i = 0; i < count; ++i, from += step, pixel += channels * sizeof(Channel)) {
            std::memcpy(pixel, from, sizeof(Channel));
        }
    }
}

void TiffRowConverter::Unpack(std::span<const std::byte* const> rows, std::uint32_t sample,
                              std::uint32_t count, std::uint32_t* to) const {
    const std::size_t step = samples_.separate ? 1 : samples_.samples;
    const std::size_t first = samples_.separate ? 0 : sample;
    const std::byte* const row = rows[samples_.separate ? sample : 0];
    const std::byte* const from = row + first * samples_.bits / 8;
    const bool isSigned = samples_.numbers == TiffNumbers::Signed;
    const auto positive = [](auto value) {
        return static_cast<std::uint32_t>(std::max<decltype(value)>(value, 0));
    };
    const auto same = [](auto value) { return std::uint32_t{value}; };
    if (samples_.bits == 8) {
        if (isSigned) {
            UnpackWhole<std::int8_t>(from, step, count, to, positive);
        } else {
            UnpackWhole<std::uint8_t>(from, step, count, to, same);
        }
    } else if (samples_.bits == 16) {
        if (isSigned) {
            UnpackWhole<std::int16_t>(from, step, count, to, positive);
        } else {
            UnpackWhole<std::uint16_t>(from, step, count, to, same);
        }
    } else if (samples_.bits == 24) {
        using Three = std::array<std::byte, 3>;
        UnpackWhole<Three>(from, step, count, to, [](const Three& stored) {
            return std::uint32_t{Little16(&stored[1])};  // its upper 16 bits
        });
    } else if (samples_.bits == 32) {
        if (isSigned) {
            UnpackWhole<std::int32_t>(from, step, count, to,
                                      [&](auto value) { return positive(value) >> 15; });
        } else {
            UnpackWhole<std::uint32_t>(from, step, count, to, [](auto value) { return value >> 16; });
        }
    } else {
        for (std::uint32_t i = 0; i < count; ++i) {
            to[i] = PackedBits(row, (std::size_t{i} * step + first) * samples_.bits, samples_.bits);
        }
    }
}

void TiffRowConverter::UnpackFloats(std::span<const std::byte* const> rows, std::uint32_t sample,
                                    std::uint32_t count, float* to) const {
    const std::size_t step = samples_.separate ? 1 : samples_.samples;
    const std::byte* const from =
        rows[samples_.separate ? sample : 0] + (samples_.separate ? 0 : sample * (samples_.bits / 8));
    if (samples_.bits == kHalfBits) {
        UnpackWhole<Half>(from, step, count, to, [](Half value) { return HalfToFloat(value); });
    } else if (samples_.bits == 32) {
        UnpackWhole<float>(from, step, count, to, [](float value) { return value; });
    } else {
        UnpackWhole<double>(from, step, count, to, [](double value) {
            return static_cast<float>(std::clamp(value, -3e38, 3e38));  // NaN stays what it is
        });
    }
}

void TiffRowConverter::ConvertIntegers(std::uint32_t count, std::byte* to) const {
    const std::uint64_t top = top_ > 0 ? top_ : 1;  // a sample has a bit at least
    for (std::uint32_t i = 0; i < count; ++i, to += 4) {
        const std::uint64_t alpha = samples_.alpha != 0 ? values_[kAlpha][i] : top;
        std::array<std::uint8_t, 3> colour;
        if (samples_.colours == TiffColours::Palette) {
            colour = samples_.palette[values_[0][i]];
        } else {
            const std::uint64_t whole = samples_.multiplied && alpha > 0 ? alpha : top;
            for (std::size_t c = 0; c < 3; ++c) {
                std::uint64_t value = values_[colourSamples_ == 1 ? 0 : c][i];
                if (samples_.colours == TiffColours::GreyInverted) value = top - value;
                if (samples_.colours == TiffColours::Cmyk) {
                    value = ((top - value) * (top - values_[3][i]) + top / 2) / top;
                }
                colour[c] = static_cast<std::uint8_t>(
                    std::min<std::uint64_t>((value * 255 + whole / 2) / whole, 255));
            }
        }
        for (std::size_t c = 0; c < 3; ++c) to[c] = std::byte{colour[2 - c]};
        to[3] = static_cast<std::byte>((alpha * 255 + top / 2) / top);
    }
}

void TiffRowConverter::ConvertFloats(std::uint32_t count, std::byte* to) const {
    const auto encode = samples_.bits == kHalfBits ? PlainByte : DisplayByte;
    for (std::uint32_t i = 0; i < count; ++i, to += 4) {
        const float alpha = samples_.alpha != 0 ? floats_[kAlpha][i] : 1.0f;
        const float divisor = samples_.multiplied && alpha > 0.0f ? alpha : 1.0f;
        for (std::size_t c = 0; c < 3; ++c) {
            float value = floats_[colourSamples_ == 1 ? 0 : c][i];
            if (samples_.colours == TiffColours::GreyInverted) value = 1.0f - value;
            if (samples_.colours == TiffColours::Cmyk) value = (1.0f - value) * (1.0f - floats_[3][i]);
            to[2 - c] = std::byte{encode(value / divisor)};
        }
        to[3] = std::byte{PlainByte(alpha)};
    }
}

void TiffRowConverter::Convert(std::span<const std::byte* const> rows, std::uint32_t count, std::byte* to) {
    if (copies_) {
        return samples_.bits == 8 ? Copy<std::uint8_t>(rows, count, to)
                                  : Copy<std::uint16_t>(rows, count, to);
    }
    const bool floats = samples_.numbers == TiffNumbers::Float;
    for (std::uint32_t i = 0; i <= kAlpha; ++i) {
        if (i >= colourSamples_ && (i != kAlpha || samples_.alpha == 0)) continue;
        const std::uint32_t sample = i == kAlpha ? samples_.alpha : i;
        if (floats) {
            UnpackFloats(rows, sample, count, floats_[i].data());
        } else {
            Unpack(rows, sample, count, values_[i].data());
        }
    }
    floats ? ConvertFloats(count, to) : ConvertIntegers(count, to);
}

}  // namespace skyvault
