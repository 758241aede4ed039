#include "image/pixel_rows.h"

namespace skyvault {

namespace {

using Rgba8 = FormatTraits<PixelFormat::Rgba8>;
using Rgba16 = FormatTraits<PixelFormat::Rgba16>;
using RgbaHalf = FormatTraits<PixelFormat::RgbaHalf>;

void FlattenRow8(std::byte* row, std::size_t count, const float* background) {
    for (std::size_t x = 0; x < count; ++x) {
        std::byte* const p = row + x * Rgba8::kBytes;
        const std::uint8_t alpha = Rgba8::Get(p, 3);
        if (alpha == 255) continue;
        const float t = static_cast<float>(alpha / 255.0);
        for (int channel = 0; channel < 3; ++channel) {
            const float mixed =
                background[channel] * (1.0f - t) + static_cast<float>(Rgba8::Get(p, channel)) * t;
            Rgba8::Set(p, channel, static_cast<std::uint8_t>(static_cast<int>(mixed)));
        }
        Rgba8::Set(p, 3, 255);
    }
}

void FlattenRow16(std::byte* row, std::size_t count, const float* background) {
    for (std::size_t x = 0; x < count; ++x) {
        std::byte* const p = row + x * Rgba16::kBytes;
        const std::uint16_t alpha = Rgba16::Get(p, 3);
        if (alpha == 65535) continue;
        const float t = static_cast<float>(alpha / 65535.0);
        for (int channel = 0; channel < 3; ++channel) {
            const float mixed =
                background[channel] * (1.0f - t) * 256.0f + static_cast<float>(Rgba16::Get(p, channel)) * t;
            Rgba16::Set(p, channel, static_cast<std::uint16_t>(static_cast<int>(mixed)));
        }
        Rgba16::Set(p, 3, 65535);
    }
}

void FlattenRowHalf(std::byte* row, std::size_t count, const float* background) {
    for (std::size_t x = 0; x < count; ++x) {
        std::byte* const p = row + x * RgbaHalf::kBytes;
        const float a = HalfToFloat(RgbaHalf::Get(p, 3));
        if (a == 1.0f) continue;
        for (int channel = 0; channel < 3; ++channel) {
            const float mixed =
                HalfToFloat(RgbaHalf::Get(p, channel)) * a + background[channel] * (1.0f - a) / 255.0f;
            RgbaHalf::Set(p, channel, FloatToHalf(mixed));
        }
        RgbaHalf::Set(p, 3, kHalfOne);
    }
}

// Formats with the same channels in the same order: the pixels do not matter, only the channels.
template <typename From, typename To>
constexpr bool kSameLayout = From::kChannels == To::kChannels&& From::kRed == To::kRed;

template <typename From, typename To>
void ConvertPixels(const std::byte* source, std::byte* destination, std::size_t count) {
    if constexpr (std::is_same_v<From, To>) {
        std::memcpy(destination, source, count * From::kBytes);
    } else if constexpr (kSameLayout<From, To>) {
        using FromChannel = typename From::Channel;
        using ToChannel = typename To::Channel;
        const std::size_t channels = count * From::kChannels;
        for (std::size_t i = 0; i < channels; ++i) {
            FromChannel value;
            std::memcpy(&value, source + i * sizeof value, sizeof value);
            const ToChannel converted = ConvertChannel<ToChannel>(value);
            std::memcpy(destination + i * sizeof converted, &converted, sizeof converted);
        }
    } else {
        for (std::size_t i = 0; i < count; ++i) {
            To::Write(destination + i * To::kBytes,
                      From::template Read<From::kKind>(source + i * From::kBytes));
        }
    }
}

}  // namespace

void ConvertRow(PixelFormat from, const std::byte* source, PixelFormat to, std::byte* destination,
                std::size_t count) {
    if (count == 0) return;
    WithFormat(from, [&](auto fromTag) {
        WithFormat(to, [&](auto toTag) {
            ConvertPixels<FormatTraits<fromTag.value>, FormatTraits<toTag.value>>(source, destination, count);
        });
    });
}

void SwapRedAndBlueRow(PixelFormat format, std::byte* row, std::size_t count) {
    WithFormat(format, [&](auto tag) {
        using Format = FormatTraits<tag.value>;
        if constexpr (Format::kChannels >= 3) {
            for (std::size_t x = 0; x < count; ++x) {
                std::byte* const p = row + x * Format::kBytes;
                const auto first = Format::Get(p, 0);
                Format::Set(p, 0, Format::Get(p, 2));
                Format::Set(p, 2, first);
            }
        }
    });
}

void FlattenRow(PixelFormat format, std::byte* row, std::size_t count, const Color8& background) {
    const float red = background.red, green = background.green, blue = background.blue;
    const float blueFirst[] = {blue, green, red}, redFirst[] = {red, green, blue};
    if (format == PixelFormat::Rgba8) FlattenRow8(row, count, blueFirst);
    if (format == PixelFormat::Rgba16) FlattenRow16(row, count, redFirst);
    if (format == PixelFormat::RgbaHalf) FlattenRowHalf(row, count, redFirst);
}

void MakeRowOpaque(PixelFormat format, std::byte* row, std::size_t count) {
    WithFormat(format, [&](auto tag) {
        using Format = FormatTraits<tag.value>;
        if constexpr (Format::kChannels == 4) {
            for (std::size_t x = 0; x < count; ++x) {
                Format::Set(row + x * Format::kBytes, 3, Format::Kind::kOpaque);
            }
        }
    });
}

}  // namespace skyvault
