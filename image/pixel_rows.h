// Rows of pixels: conversion between the nine formats, and the formats as types for loops that are compiled
// once for each.
#pragma once

#include <cstddef>
#include <cstring>
#include <type_traits>

#include "image/pixel.h"

namespace skyvault {

/// count pixels from one format to another: the same bytes as ReadPixel and WritePixel for each.
/// The two rows must not overlap.
void ConvertRow(PixelFormat from, const std::byte* source, PixelFormat to, std::byte* destination,
                std::size_t count);

/// Exchanges the first and third channel of every pixel; formats with three or four channels only.
void SwapRedAndBlueRow(PixelFormat format, std::byte* row, std::size_t count);

/// Composites every pixel over an opaque background and makes it opaque; formats with alpha only.
void FlattenRow(PixelFormat format, std::byte* row, std::size_t count, const Color8& background);

/// Gives every pixel full alpha and leaves its colour; formats with alpha only.
void MakeRowOpaque(PixelFormat format, std::byte* row, std::size_t count);

/// A channel from one type to another. 16 bits to 8 is the high byte; 8 to 16 is v × 256 + 255; integers
/// to halves are divided by 256, whatever their width; halves to integers are multiplied by the largest
/// integer and truncated, with NaN and everything below 0 giving 0.
template <typename To, typename From>
inline To ConvertChannel(From value) {
    if constexpr (std::is_same_v<To, From>) {
        return value;
    } else if constexpr (std::is_same_v<To, Half>) {
        return FloatToHalf(static_cast<float>(static_cast<int>(value)) * 0.00390625f);
    } else if constexpr (std::is_same_v<From, Half>) {
        constexpr float kTop = sizeof(To) == 1 ? 255.0f : 65535.0f;
        const float scaled = HalfToFloat(value) * kTop;
        const float atLeast0 = scaled > 0.0f ? scaled : 0.0f;
        return static_cast<To>(static_cast<int>(atLeast0 < kTop ? atLeast0 : kTop));
    } else if constexpr (sizeof(To) == 1) {
        return static_cast<To>(value >> 8);
    } else {
        return static_cast<To>(value * 256 + 255);
    }
}

/// Record and channel type of a kind, and the alpha of formats that store none.
template <ChannelKind kind>
struct KindTraits;

template <>
struct KindTraits<ChannelKind::Int8> {
    using Channel = std::uint8_t;
    using Colour = Color8;
    static constexpr Channel kOpaque = 255;
    static constexpr int kRed = 2, kBlue = 0;
};

template <>
struct KindTraits<ChannelKind::Int16> {
    using Channel = std::uint16_t;
    using Colour = Color16;
    static constexpr Channel kOpaque = 65535;
    static constexpr int kRed = 0, kBlue = 2;
};

template <>
struct KindTraits<ChannelKind::Half> {
    using Channel = Half;
    using Colour = ColorHalf;
    static constexpr Channel kOpaque = kHalfOne;
    static constexpr int kRed = 0, kBlue = 2;
};

template <PixelFormat f>
struct FormatTraits {
    static constexpr int kNumber = static_cast<int>(f);
    static constexpr ChannelKind kKind = static_cast<ChannelKind>((kNumber - 1) % 3 + 1);
    static constexpr int kChannels = kNumber <= 3 ? 1 : kNumber <= 6 ? 3 : 4;
    using Kind = KindTraits<kKind>;
    using Channel = typename Kind::Channel;
    using Colour = typename Kind::Colour;
    static constexpr std::size_t kBytes = kChannels * sizeof(Channel);

    /// A channel of the pixel at p; grey pixels have one.
    static Channel Get(const std::byte* p, int channel) {
        Channel value;
        std::memcpy(&value, p + static_cast<std::size_t>(channel) * sizeof(Channel), sizeof(Channel));
        return value;
    }
    static void Set(std::byte* p, int channel, Channel value) {
        std::memcpy(p + static_cast<std::size_t>(channel) * sizeof(Channel), &value, sizeof(Channel));
    }

    static constexpr int kRed = kChannels == 1 ? 0 : Kind::kRed;
    static constexpr int kGreen = kChannels == 1 ? 0 : 1;
    static constexpr int kBlue = kChannels == 1 ? 0 : Kind::kBlue;

    /// The pixel at p as a colour record of another (or the same) kind.
    template <ChannelKind to>
    static typename KindTraits<to>::Colour Read(const std::byte* p) {
        using Result = typename KindTraits<to>::Channel;
        typename KindTraits<to>::Colour colour;
        colour.red = ConvertChannel<Result>(Get(p, kRed));
        colour.green = ConvertChannel<Result>(Get(p, kGreen));
        colour.blue = ConvertChannel<Result>(Get(p, kBlue));
        colour.alpha = KindTraits<to>::kOpaque;
        if constexpr (kChannels == 4) colour.alpha = ConvertChannel<Result>(Get(p, 3));
        return colour;
    }

    /// Writes a colour record of any kind; a grey pixel takes the red channel.
    template <typename Colour>
    static void Write(std::byte* p, const Colour& colour) {
        Set(p, kRed, ConvertChannel<Channel>(colour.red));
        if constexpr (kChannels >= 3) {
            Set(p, kGreen, ConvertChannel<Channel>(colour.green));
            Set(p, kBlue, ConvertChannel<Channel>(colour.blue));
        }
        if constexpr (kChannels == 4) Set(p, 3, ConvertChannel<Channel>(colour.alpha));
    }
};

template <PixelFormat f>
using FormatTag = std::integral_constant<PixelFormat, f>;

/// Calls function(FormatTag<format>{}); false, without a call, for anything that is not a format.
template <typename Function>
bool WithFormat(PixelFormat format, Function&& function) {
    switch (format) {
        case PixelFormat::Grey8:
            function(FormatTag<PixelFormat::Grey8>{});
            return true;
        case PixelFormat::Grey16:
            function(FormatTag<PixelFormat::Grey16>{});
            return true;
        case PixelFormat::GreyHalf:
            function(FormatTag<PixelFormat::GreyHalf>{});
            return true;
        case PixelFormat::Rgb8:
            function(FormatTag<PixelFormat::Rgb8>{});
            return true;
        case PixelFormat::Rgb16:
            function(FormatTag<PixelFormat::Rgb16>{});
            return true;
        case PixelFormat::RgbHalf:
            function(FormatTag<PixelFormat::RgbHalf>{});
            return true;
        case PixelFormat::Rgba8:
            function(FormatTag<PixelFormat::Rgba8>{});
            return true;
        case PixelFormat::Rgba16:
            function(FormatTag<PixelFormat::Rgba16>{});
            return true;
        case PixelFormat::RgbaHalf:
            function(FormatTag<PixelFormat::RgbaHalf>{});
            return true;
        case PixelFormat::None:
            break;
    }
    return false;
}

}  // namespace skyvault
