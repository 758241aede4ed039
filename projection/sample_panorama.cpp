#include "projection/sample_panorama.h"

#include <cmath>
#include <utility>

#include "image/pixel_rows.h"
#include "platform/numeric.h"
#include "projection/fast_math.h"

namespace skyvault {

namespace {

/// One pixel of the equirectangular source: column 0 to the back, the row wrapping at the nadir.
PixelValue SampleEquirectangular(const Image& source, const Direction& d) {
    const Spherical s = ToSpherical(d);
    const float column = (s.longitude + kPi) * static_cast<float>(source.width) / kTwoPi;
    const float row =
        static_cast<float>((kHalfPiWide - static_cast<double>(s.latitude)) * source.height / kPiWide);
    if (column != column || row != row) return PixelValue(kOpaqueWhite);
    return source.GetPixel(RoundHalfAway(column), RoundHalfAway(row));
}

/// A colour in another channel type, by the read and write rules of pixels.
struct AnyColour {
    std::byte bytes[8] = {};
    PixelFormat format;

    explicit AnyColour(const PixelValue& value) : format(WithAlpha(value.format)) {
        WritePixel(format, bytes, value);
    }
    Color8 As8() const { return ReadColor8(format, bytes); }
    Color16 As16() const { return ReadColor16(format, bytes); }
    ColorHalf AsHalf() const { return ReadColorHalf(format, bytes); }
};

bool IsTransparent(const PixelValue& value) {
    switch (ChannelType(value.format)) {
        case ChannelKind::Int8:
            return value.color8.alpha == 0;
        case ChannelKind::Int16:
            return value.color16.alpha == 0;
        case ChannelKind::Half:
            return HalfToFloat(value.colorHalf.alpha) == 0.0f;
        case ChannelKind::None:
            break;
    }
    return true;
}

/// top · a + bottom · (1 − a), truncated.
template <typename Channel>
Channel Mix(Channel top, Channel bottom, float a) {
    return static_cast<Channel>(static_cast<float>(top) * a + static_cast<float>(bottom) * (1.0f - a));
}

}  // namespace

LogoHit HitLogoDisc(const Direction& d, float logoSize) {
    const float ay = std::fabs(d.y);
    if (logoSize == 0.0f || !(ay >= std::fabs(d.x)) || !(ay >= std::fabs(d.z)) || !(d.y < 0.0f)) return {};
    const float u = d.x / d.y;
    const float w = d.z / d.y;
    return {SquareRoot(u * u + w * w) < logoSize, u, w};
}

PixelValue LogoColour(const Panorama& panorama, const LogoHit& hit, const Color8& emptyColour) {
    const Image& logo = panorama.logoPicture;
    if (!logo.IsValid()) return PixelValue(emptyColour);
    const float size = panorama.modifications.logoSize;
    const float column = (1.0f - hit.u / size) * 0.5f * static_cast<float>(logo.width);
    const float row = (hit.w / size + 1.0f) * 0.5f * static_cast<float>(logo.height);
    return logo.GetPixel(RoundHalfAway(column), RoundHalfAway(row));
}

PixelValue BlendLogo(const PixelValue& logo, const PixelValue& under) {
    if (IsTransparent(logo)) return under;
    const AnyColour over(logo);
    PixelValue result = under;
    switch (ChannelType(under.format)) {
        case ChannelKind::Int8: {
            const Color8 l = over.As8();
            const float a = static_cast<float>(l.alpha) / 255.0f;
            result.color8.red = Mix(l.red, under.color8.red, a);
            result.color8.green = Mix(l.green, under.color8.green, a);
            result.color8.blue = Mix(l.blue, under.color8.blue, a);
            break;
        }
        case ChannelKind::Int16: {
            const Color16 l = over.As16();
            const float a = static_cast<float>(l.alpha) / 65535.0f;
            result.color16.red = Mix(l.red, under.color16.red, a);
            result.color16.green = Mix(l.green, under.color16.green, a);
            result.color16.blue = Mix(l.blue, under.color16.blue, a);
            break;
        }
        case ChannelKind::Half: {
            const ColorHalf l = over.AsHalf();
            const float a = HalfToFloat(l.alpha);
            const auto blend = [a](Half top, Half bottom) {
                return FloatToHalf(HalfToFloat(top) * a + HalfToFloat(bottom) * (1.0f - a));
            };
            result.colorHalf.red = blend(l.red, under.colorHalf.red);
            result.colorHalf.green = blend(l.green, under.colorHalf.green);
            result.colorHalf.blue = blend(l.blue, under.colorHalf.blue);
            break;
        }
        case ChannelKind::None:
            break;
    }
    return result;
}

PixelValue SamplePanorama(const Panorama& panorama, Direction d, const Color8& emptyColour,
                          bool applyOrientation) {
    const Modifications& m = panorama.modifications;
    Normalize(d);
    if (m.flipHorizontal) std::swap(d.x, d.z);
    if (m.mirrorTopToBottom) d.y = std::fabs(d.y);
    if (m.mirrorFrontToBack) d.z = std::fabs(d.z);

    PixelValue logo(Color8(0, 0, 0, 0));
    const LogoHit hit = HitLogoDisc(d, m.logoSize);
    if (hit.onDisc) logo = LogoColour(panorama, hit, emptyColour);
    if (applyOrientation) {
        const float g = m.horizonPower;
        if (g > 0.0f && g != 1.0f) {
            const float base = static_cast<float>(static_cast<double>(d.y + 1.0f) * 0.5);
            d.y = 2.0f * Pow(base, g) - 1.0f;
        }
        d = Transform(d, m.orientation);
    }
    const PixelValue seen = panorama.equirectSource.IsValid()
                                ? SampleEquirectangular(panorama.equirectSource, d)
                                : SampleCubeFaces(panorama.faces, d);
    return BlendLogo(logo, seen);
}

}  // namespace skyvault
