#include "image/pixel_rows.h"

#include <gtest/gtest.h>

#include <vector>

#include "tests/made_files.h"

namespace skyvault::test {
namespace {

using enum PixelFormat;
using Bytes = std::vector<std::byte>;

TEST(PixelFormat, SizesNamesAndKinds) {
    for (const DataRow& row : DataTable("pixel_formats")) {
        const std::vector<std::uint32_t> told = Numbers(row[0]);
        const auto format = static_cast<PixelFormat>(told[0]);
        EXPECT_EQ((std::vector<std::uint32_t>{
                      told[0], BytesPerPixel(format), static_cast<std::uint32_t>(ChannelType(format)),
                      static_cast<std::uint32_t>(WithAlpha(format)), HasAlpha(format)}),
                  told);
        EXPECT_EQ(FormatName(format), FromUtf8(row[1]));
    }
}

std::uint16_t Half16(float value) {
    return FloatToHalf(value).bits;
}

/// Red, green, blue and alpha, halves by their bits.
using Channels = std::array<std::uint16_t, 4>;

/// By channel kind of a pixel and of the record it is read as, or the other way round: what channels become.
const Channels kConverted[3][3] = {
    {{18, 0, 255, 128},
     {0x12ff, 0x00ff, 0xffff, 0x80ff},
     {Half16(18 / 256.f), 0, Half16(255 / 256.f), Half16(0.5f)}},
    {{0xab, 1, 255, 0x40},
     {0xab80, 0x0180, 0xffff, 0x40fe},
     {Half16(171.5f), Half16(1.5f), Half16(65535 / 256.f), Half16(64.99609375f)}},
    {{127, 255, 0, 63}, {32767, 65535, 0, 16383}, {Half16(0.5f), Half16(3.0f), Half16(-2.0f), Half16(0.25f)}},
};

/// The channels as a pixel of the format lies in memory.
Bytes Stored(PixelFormat format, const Channels& channels) {
    const bool narrow = ChannelType(format) == ChannelKind::Int8;
    const std::size_t bytes = narrow ? 1 : 2, count = BytesPerPixel(format) / bytes;
    Bytes pixel;
    for (std::size_t i = 0; i < count; ++i) {
        const bool blueFirst = narrow && count > 1 && i < 3;
        const std::uint16_t value = channels[blueFirst ? 2 - i : i];
        for (std::size_t b = 0; b < bytes; ++b) pixel.push_back(static_cast<std::byte>(value >> 8 * b));
    }
    return pixel;
}

Color8 As8(const Channels& c) {
    return {static_cast<std::uint8_t>(c[0]), static_cast<std::uint8_t>(c[1]), static_cast<std::uint8_t>(c[2]),
            static_cast<std::uint8_t>(c[3])};
}
Color16 As16(const Channels& c) {
    return {c[0], c[1], c[2], c[3]};
}
ColorHalf AsHalf(const Channels& c) {
    return {Half{c[0]}, Half{c[1]}, Half{c[2]}, Half{c[3]}};
}

TEST(PixelConvert, EveryFormatIsReadAsAndWrittenFromEveryRecord) {
    constexpr Channels kOpaque = {255, 65535, kHalfOne.bits};
    for (const PixelFormat format : AllFormats()) {
        SCOPED_TRACE(static_cast<int>(format));
        const std::size_t own = static_cast<std::size_t>(ChannelType(format)) - 1;
        const Bytes pixel = Stored(format, kConverted[own][own]);
        const auto read = [&](std::size_t kind) {
            Channels c = kConverted[own][kind];
            if (BytesPerPixel(format) < 3) c[1] = c[2] = c[0];
            if (!HasAlpha(format)) c[3] = kOpaque[kind];
            return c;
        };
        EXPECT_EQ(ReadColor8(format, pixel.data()), As8(read(0)));
        EXPECT_EQ(ReadColor16(format, pixel.data()), As16(read(1)));
        EXPECT_EQ(ReadColorHalf(format, pixel.data()), AsHalf(read(2)));
        const PixelValue value = ReadPixel(format, pixel.data());
        EXPECT_EQ(value.format, format);
        EXPECT_EQ(value.color8, own == 0 ? As8(read(0)) : Color8());
        EXPECT_EQ(value.color16, own == 1 ? As16(read(1)) : Color16());
        EXPECT_EQ(value.colorHalf, own == 2 ? AsHalf(read(2)) : ColorHalf());

        // The tag alone decides which member is written.
        PixelValue all;
        all.color8 = As8(kConverted[0][0]);
        all.color16 = As16(kConverted[1][1]);
        all.colorHalf = AsHalf(kConverted[2][2]);
        Bytes written(BytesPerPixel(format));
        for (const PixelFormat tag : AllFormats()) {
            all.format = tag;
            WritePixel(format, written.data(), all);
            const std::size_t from = static_cast<std::size_t>(ChannelType(tag)) - 1;
            EXPECT_EQ(written, Stored(format, kConverted[from][own])) << "from " << static_cast<int>(tag);
        }
        const Bytes before = written;
        all.format = None;
        WritePixel(format, written.data(), all);
        EXPECT_EQ(written, before);
    }
}

TEST(PixelConvert, HalvesOutsideTheRangeAreClampedAndNanIsBlack) {
    for (const auto& [where, value, as8, as16] : TableOf<float, int, int>("clamped_halves")) {
        const Bytes pixel = Stored(GreyHalf, {Half16(value)});
        EXPECT_EQ(ReadColor8(GreyHalf, pixel.data()).red, as8) << where;
        EXPECT_EQ(ReadColor16(GreyHalf, pixel.data()).red, as16) << where;
    }
}

TEST(PixelConvert, UnknownFormatsAndNoAddressReadAsZeroAndWriteNothing) {
    Bytes pixel(8, std::byte{0x55});
    const PixelFormat unknown = static_cast<PixelFormat>(10);
    for (const auto& [format, p] :
         {std::pair{None, pixel.data()}, {unknown, pixel.data()}, {Rgba8, nullptr}}) {
        EXPECT_EQ(ReadColor8(format, p), As8({}));
        EXPECT_EQ(ReadColor16(format, p), As16({}));
        EXPECT_EQ(ReadColorHalf(format, p), AsHalf({}));
        EXPECT_EQ(ReadPixel(format, p).format, None);
        WritePixel(format, p, PixelValue(kOpaqueWhite));
    }
    ConvertRow(unknown, pixel.data(), Rgba8, pixel.data() + 4, 1);
    EXPECT_EQ(pixel, Bytes(8, std::byte{0x55}));
}

TEST(PixelConvert, ARowIsConvertedLikeItsPixels) {
    constexpr std::uint32_t kCount = 259;
    for (const PixelFormat from : AllFormats()) {
        Image source(kCount, 1, from);
        const test::Bytes noise = test::Noise(source.ByteCount());  // halves that are not finite, too
        std::memcpy(source.pixels.get(), noise.data(), noise.size());
        for (const PixelFormat to : AllFormats()) {
            const std::size_t size = BytesPerPixel(to);
            Bytes row((kCount + 1) * size, std::byte{0x77}), expected = row;
            ConvertRow(from, source.Row(0), to, row.data(), kCount);
            for (std::uint32_t i = 0; i < kCount; ++i) {
                WritePixel(to, expected.data() + i * size, source.GetPixel(static_cast<std::int32_t>(i), 0));
            }
            EXPECT_EQ(row, expected) << static_cast<int>(from) << " to " << static_cast<int>(to);
        }
    }
}

}  // namespace
}  // namespace skyvault::test
