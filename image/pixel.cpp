#include "image/pixel.h"

#include "image/pixel_rows.h"

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

std::uint8_t LerpChannel(std::uint8_t a, std::uint8_t b, float t) {
    if (a == b) return a;
    return static_cast<std::uint8_t>(
        static_cast<int>(static_cast<float>(b) * t + static_cast<float>(a) * (1.0f - t)));
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

Color8 LerpColor8(const Color8& a, const Color8& b, float t) {
    Color8 mixed;
    mixed.blue = LerpChannel(a.blue, b.blue, t);
    mixed.green = LerpChannel(a.green, b.green, t);
    mixed.red = LerpChannel(a.red, b.red, t);
    mixed.alpha = LerpChannel(a.alpha, b.alpha, t);
    return mixed;
}

}  // namespace skyvault
