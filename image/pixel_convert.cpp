#include "image/pixel_convert.h"

#include "image/pixel_access.h"

namespace skyvault {

namespace {

template <ChannelKind kind>
typename KindTraits<kind>::Colour ReadAs(PixelFormat format, const std::byte* p) {
    typename KindTraits<kind>::Colour colour;
    colour.alpha = {};
    if (p) {
        WithFormat(format, [&](auto tag) { colour = FormatTraits<tag.value>::template Read<kind>(p); });
    }
    return colour;
}

template <typename Colour>
void WriteAny(PixelFormat format, std::byte* p, const Colour& colour) {
    if (p) WithFormat(format, [&](auto tag) { FormatTraits<tag.value>::Write(p, colour); });
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

Color8 ReadColor8(PixelFormat format, const std::byte* p) {
    return ReadAs<ChannelKind::Int8>(format, p);
}
Color16 ReadColor16(PixelFormat format, const std::byte* p) {
    return ReadAs<ChannelKind::Int16>(format, p);
}
ColorHalf ReadColorHalf(PixelFormat format, const std::byte* p) {
    return ReadAs<ChannelKind::Half>(format, p);
}

PixelValue ReadPixel(PixelFormat format, const std::byte* p) {
    PixelValue value;
    if (p) value.format = format;
    switch (ChannelType(value.format)) {
        case ChannelKind::Int8:
            value.color8 = ReadColor8(format, p);
            break;
        case ChannelKind::Int16:
            value.color16 = ReadColor16(format, p);
            break;
        case ChannelKind::Half:
            value.colorHalf = ReadColorHalf(format, p);
            break;
        case ChannelKind::None:
            value.format = PixelFormat::None;
            value.color8.alpha = 0;
            value.color16.alpha = 0;
            value.colorHalf.alpha = {};
            break;
    }
    return value;
}

void WriteColor8(PixelFormat format, std::byte* p, const Color8& colour) {
    WriteAny(format, p, colour);
}
void WriteColor16(PixelFormat format, std::byte* p, const Color16& colour) {
    WriteAny(format, p, colour);
}
void WriteColorHalf(PixelFormat format, std::byte* p, const ColorHalf& colour) {
    WriteAny(format, p, colour);
}

void WritePixel(PixelFormat format, std::byte* p, const PixelValue& value) {
    switch (ChannelType(value.format)) {
        case ChannelKind::Int8:
            WriteColor8(format, p, value.color8);
            break;
        case ChannelKind::Int16:
            WriteColor16(format, p, value.color16);
            break;
        case ChannelKind::Half:
            WriteColorHalf(format, p, value.colorHalf);
            break;
        case ChannelKind::None:
            break;
    }
}

void ConvertRow(PixelFormat from, const std::byte* source, PixelFormat to, std::byte* destination,
                std::size_t count) {
    if (count == 0) return;
    WithFormat(from, [&](auto fromTag) {
        WithFormat(to, [&](auto toTag) {
            ConvertPixels<FormatTraits<fromTag.value>, FormatTraits<toTag.value>>(source, destination, count);
        });
    });
}

}  // namespace skyvault
