#include "image/pixel_convert.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <initializer_list>
#include <limits>
#include <string>
#include <vector>

#include "image/random.h"

namespace skyvault {
namespace {

using enum PixelFormat;

constexpr PixelFormat kAll[] = {Grey8, Grey16, GreyHalf, Rgb8, Rgb16, RgbHalf, Rgba8, Rgba16, RgbaHalf};

using Bytes = std::vector<std::byte>;

// A pixel of 16-bit channels in memory order.
Bytes Words(std::initializer_list<int> values) {
    Bytes bytes;
    for (const int value : values) {
        bytes.push_back(static_cast<std::byte>(value & 255));
        bytes.push_back(static_cast<std::byte>(value >> 8));
    }
    return bytes;
}

Bytes Octets(std::initializer_list<int> values) {
    Bytes bytes;
    for (const int value : values) bytes.push_back(static_cast<std::byte>(value));
    return bytes;
}

int HalfBits(float value) {
    return FloatToHalf(value).bits;
}

Bytes Halves(std::initializer_list<float> values) {
    Bytes bytes;
    for (const float value : values) {
        for (const std::byte b : Words({HalfBits(value)})) bytes.push_back(b);
    }
    return bytes;
}

ColorHalf HalfColour(float red, float green, float blue, float alpha) {
    return {FloatToHalf(red), FloatToHalf(green), FloatToHalf(blue), FloatToHalf(alpha)};
}

std::string Show(const Bytes& bytes) {
    std::string text;
    for (const std::byte b : bytes) text += std::to_string(std::to_integer<int>(b)) + " ";
    return text;
}

TEST(PixelFormat, SizesNamesAndKinds) {
    const struct {
        std::uint32_t number, bytes, kind, withAlpha;
        const wchar_t* name;
    } rows[] = {
        {0, 0, 0, 0, L"Unknown format"},       {1, 1, 1, 7, L"LDR 8 bpp R int"},
        {2, 2, 2, 8, L"HDR 16 bpp R int"},     {3, 2, 3, 9, L"HDR 16 bpp R float"},
        {4, 3, 1, 7, L"LDR 24 bpp RGB int"},   {5, 6, 2, 8, L"HDR 48 bpp RGB int"},
        {6, 6, 3, 9, L"HDR 48 bpp RGB float"}, {7, 4, 1, 7, L"LDR 32 bpp RGBA int"},
        {8, 8, 2, 8, L"HDR 64 bpp RGBA int"},  {9, 8, 3, 9, L"HDR 64 bpp RGBA float"},
        {10, 0, 0, 0, L"Unknown format"},      {0xffffffff, 0, 0, 0, L"Unknown format"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.number);
        const auto format = static_cast<PixelFormat>(row.number);
        EXPECT_EQ(BytesPerPixel(format), row.bytes);
        EXPECT_EQ(static_cast<std::uint32_t>(ChannelType(format)), row.kind);
        EXPECT_EQ(static_cast<std::uint32_t>(WithAlpha(format)), row.withAlpha);
        EXPECT_EQ(HasAlpha(format), row.number >= 7 && row.number <= 9);
        EXPECT_STREQ(FormatName(format), row.name);
    }
}

TEST(PixelConvert, ReadsEveryFormatAsEveryRecord) {
    const struct {
        PixelFormat format;
        Bytes pixel;
        Color8 as8;
        Color16 as16;
        ColorHalf asHalf;
    } rows[] = {
        {Grey8,
         Octets({0x12}),
         {0x12, 0x12, 0x12, 255},
         {0x12ff, 0x12ff, 0x12ff, 65535},
         HalfColour(18 / 256.f, 18 / 256.f, 18 / 256.f, 1)},
        {Grey16,
         Words({0xab80}),
         {0xab, 0xab, 0xab, 255},
         {0xab80, 0xab80, 0xab80, 65535},
         HalfColour(171.5f, 171.5f, 171.5f, 1)},
        {GreyHalf,
         Halves({0.5f}),
         {127, 127, 127, 255},
         {32767, 32767, 32767, 65535},
         HalfColour(0.5f, 0.5f, 0.5f, 1)},
        {Rgb8,
         Octets({1, 2, 3}),
         {3, 2, 1, 255},
         {0x3ff, 0x2ff, 0x1ff, 65535},
         HalfColour(3 / 256.f, 2 / 256.f, 1 / 256.f, 1)},
        {Rgb16,
         Words({0x1000, 0x2000, 0xffff}),
         {0x10, 0x20, 255, 255},
         {0x1000, 0x2000, 0xffff, 65535},
         HalfColour(16, 32, 256, 1)},
        {RgbHalf,
         Halves({0.25f, -1.0f, 2.0f}),
         {63, 0, 255, 255},
         {16383, 0, 65535, 65535},
         HalfColour(0.25f, -1.0f, 2.0f, 1)},
        {Rgba8,
         Octets({1, 2, 3, 4}),
         {3, 2, 1, 4},
         {0x3ff, 0x2ff, 0x1ff, 0x4ff},
         HalfColour(3 / 256.f, 2 / 256.f, 1 / 256.f, 4 / 256.f)},
        {Rgba16,
         Words({0x1000, 0x2000, 0x3000, 0x40fe}),
         {0x10, 0x20, 0x30, 0x40},
         {0x1000, 0x2000, 0x3000, 0x40fe},
         HalfColour(16, 32, 48, 64.99609375f)},
        {RgbaHalf,
         Halves({0.25f, 1.0f, 0.75f, 255.0f}),
         {63, 255, 191, 255},
         {16383, 65535, 49151, 65535},
         HalfColour(0.25f, 1.0f, 0.75f, 255.0f)},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << static_cast<int>(row.format));
        EXPECT_EQ(ReadColor8(row.format, row.pixel.data()), row.as8);
        EXPECT_EQ(ReadColor16(row.format, row.pixel.data()), row.as16);
        EXPECT_EQ(ReadColorHalf(row.format, row.pixel.data()), row.asHalf);
        const PixelValue own = ReadPixel(row.format, row.pixel.data());
        EXPECT_EQ(own.format, row.format);
        switch (ChannelType(row.format)) {
            case ChannelKind::Int8:
                EXPECT_EQ(own.color8, row.as8);
                break;
            case ChannelKind::Int16:
                EXPECT_EQ(own.color16, row.as16);
                break;
            default:
                EXPECT_EQ(own.colorHalf, row.asHalf);
                break;
        }
    }
}

TEST(PixelConvert, WritesEveryRecordIntoEveryFormat) {
    const Color8 c8(255, 16, 1, 128);
    const Color16 c16{0xffff, 0x1234, 0x0180, 0x8000};
    const ColorHalf ch = HalfColour(0.5f, 3.0f, -2.0f, 0.25f);
    const float red16 = 65535 / 256.f, green16 = 0x1234 / 256.f, blue16 = 0x180 / 256.f;
    const struct {
        PixelFormat format;
        Bytes from8, from16, fromHalf;
    } rows[] = {
        {Grey8, Octets({255}), Octets({255}), Octets({127})},
        {Grey16, Words({65535}), Words({65535}), Words({32767})},
        {GreyHalf, Halves({0.99609375f}), Halves({red16}), Halves({0.5f})},
        {Rgb8, Octets({1, 16, 255}), Octets({0x01, 0x12, 0xff}), Octets({0, 255, 127})},
        {Rgb16, Words({0xffff, 0x10ff, 0x01ff}), Words({0xffff, 0x1234, 0x0180}), Words({32767, 65535, 0})},
        {RgbHalf, Halves({255 / 256.f, 1 / 16.f, 1 / 256.f}), Halves({red16, green16, blue16}),
         Halves({0.5f, 3.0f, -2.0f})},
        {Rgba8, Octets({1, 16, 255, 128}), Octets({0x01, 0x12, 0xff, 0x80}), Octets({0, 255, 127, 63})},
        {Rgba16, Words({0xffff, 0x10ff, 0x01ff, 0x80ff}), Words({0xffff, 0x1234, 0x0180, 0x8000}),
         Words({32767, 65535, 0, 16383})},
        {RgbaHalf, Halves({255 / 256.f, 1 / 16.f, 1 / 256.f, 0.5f}), Halves({red16, green16, blue16, 128.0f}),
         Halves({0.5f, 3.0f, -2.0f, 0.25f})},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << static_cast<int>(row.format));
        Bytes pixel(BytesPerPixel(row.format));
        WriteColor8(row.format, pixel.data(), c8);
        EXPECT_EQ(pixel, row.from8) << Show(pixel);
        WriteColor16(row.format, pixel.data(), c16);
        EXPECT_EQ(pixel, row.from16) << Show(pixel);
        WriteColorHalf(row.format, pixel.data(), ch);
        EXPECT_EQ(pixel, row.fromHalf) << Show(pixel);

        // The tag alone decides which member is written.
        PixelValue value;
        value.color8 = c8;
        value.color16 = c16;
        value.colorHalf = ch;
        for (const PixelFormat tag : kAll) {
            value.format = tag;
            WritePixel(row.format, pixel.data(), value);
            const ChannelKind kind = ChannelType(tag);
            EXPECT_EQ(pixel, kind == ChannelKind::Int8    ? row.from8
                             : kind == ChannelKind::Int16 ? row.from16
                                                          : row.fromHalf)
                << static_cast<int>(tag);
        }
        value.format = None;
        const Bytes before = pixel;
        WritePixel(row.format, pixel.data(), value);
        EXPECT_EQ(pixel, before);
    }
}

TEST(PixelConvert, HalvesOutsideTheRangeAreClampedAndNanIsBlack) {
    const float infinity = std::numeric_limits<float>::infinity();
    const struct {
        float value;
        int as8, as16;
    } rows[] = {{-infinity, 0, 0},      {-0.25f, 0, 0},       {0.0f, 0, 0},         {0.0039f, 0, 255},
                {0.9995f, 254, 65503},  {1.0f, 255, 65535},   {1.001f, 255, 65535}, {65504.0f, 255, 65535},
                {infinity, 255, 65535}, {std::nanf(""), 0, 0}};
    for (const auto& row : rows) {
        const Bytes pixel = Halves({row.value});
        EXPECT_EQ(ReadColor8(GreyHalf, pixel.data()).red, row.as8) << row.value;
        EXPECT_EQ(ReadColor16(GreyHalf, pixel.data()).red, row.as16) << row.value;
    }
}

TEST(PixelConvert, UnknownFormatsAndNoAddressReadAsZeroAndWriteNothing) {
    Bytes pixel(8, std::byte{0x55});
    const PixelFormat unknown = static_cast<PixelFormat>(10);
    for (const auto& [format, p] :
         {std::pair{None, pixel.data()}, {unknown, pixel.data()}, {Rgba8, nullptr}}) {
        EXPECT_EQ(ReadColor8(format, p), Color8(0, 0, 0, 0));
        EXPECT_EQ(ReadColor16(format, p), (Color16{0, 0, 0, 0}));
        EXPECT_EQ(ReadColorHalf(format, p), HalfColour(0, 0, 0, 0));
        EXPECT_EQ(ReadPixel(format, p).format, None);
        WriteColor8(format, p, kOpaqueWhite);
        WritePixel(format, p, PixelValue(kOpaqueWhite));
    }
    ConvertRow(unknown, pixel.data(), Rgba8, pixel.data() + 4, 1);
    EXPECT_EQ(pixel, Bytes(8, std::byte{0x55}));
}

TEST(PixelConvert, ARowIsConvertedLikeItsPixels) {
    SetRandomState(5);
    const std::size_t count = 259;
    for (const PixelFormat from : kAll) {
        Bytes source(count * BytesPerPixel(from));
        for (std::byte& b : source) b = static_cast<std::byte>(RandomInt(256));
        for (const PixelFormat to : kAll) {
            SCOPED_TRACE(testing::Message() << static_cast<int>(from) << " to " << static_cast<int>(to));
            const std::size_t size = BytesPerPixel(to);
            Bytes row((count + 1) * size, std::byte{0x77}), expected = row;
            ConvertRow(from, source.data(), to, row.data(), count);
            for (std::size_t i = 0; i < count; ++i) {
                WritePixel(to, expected.data() + i * size,
                           ReadPixel(from, source.data() + i * BytesPerPixel(from)));
            }
            EXPECT_EQ(row, expected);
        }
    }
}

}  // namespace
}  // namespace skyvault
