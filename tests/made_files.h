// Files as their bytes, put together byte by byte or taken from tests/data; and the ways in and out of
// picture files, with something to write and a measure of what is read.
#pragma once

#include <algorithm>
#include <iterator>
#include <span>
#include <sstream>

#include "platform/file_stream.h"
#include "platform/utf8.h"
#include "tests/data_table.h"
#include "tests/picture_io.h"
#include "tests/temporary_folder.h"
#include "tests/test_panorama.h"

namespace skyvault::test {

using Bytes = std::vector<std::uint8_t>;

inline std::span<const std::byte> AsBytes(const Bytes& bytes) {
    return {reinterpret_cast<const std::byte*>(bytes.data()), bytes.size()};
}

inline bool WriteFile(const std::wstring& path, const Bytes& bytes) {
    FileStream file(path, FileUse::Write);
    return file.Write(bytes.data(), bytes.size()) && file.Close();
}

inline Bytes ReadFile(const std::wstring& path) {
    std::vector<std::byte> bytes;
    if (!ReadWholeFile(path, bytes)) return {};
    const auto* data = reinterpret_cast<const std::uint8_t*>(bytes.data());
    return Bytes(data, data + bytes.size());
}

inline Bytes Noise(std::size_t count, std::uint32_t seed = 1) {
    Bytes bytes(count);
    for (std::uint8_t& byte : bytes) {
        seed = seed * 1664525 + 1013904223;
        byte = static_cast<std::uint8_t>(seed >> 24);
    }
    return bytes;
}

inline Bytes Join(std::initializer_list<Bytes> parts) {
    Bytes all;
    for (const Bytes& part : parts) all.insert(all.end(), part.begin(), part.end());
    return all;
}

/// Numbers of `count` bytes each, the lowest byte first.
inline Bytes Little(int count, std::initializer_list<std::uint32_t> values) {
    Bytes bytes;
    for (const std::uint32_t value : values)
        for (int i = 0; i < count; ++i) bytes.push_back(static_cast<std::uint8_t>(value >> 8 * i));
    return bytes;
}

/// "0a1B" and so on, without spaces.
inline Bytes FromHex(const std::string& text) {
    Bytes bytes;
    for (std::size_t i = 0; i < text.size(); i += 2)
        bytes.push_back(static_cast<std::uint8_t>(std::stoi(text.substr(i, 2), nullptr, 16)));
    return bytes;
}

/// The rows of a table that begin with the group's name.
inline std::vector<DataRow> DataGroup(const std::string& table, const std::string& group) {
    std::vector<DataRow> rows = DataTable(table);
    std::erase_if(rows, [&](const DataRow& row) { return row[0] != group; });
    for (DataRow& row : rows) row.where += ": " + row[1];
    EXPECT_FALSE(rows.empty()) << group;
    return rows;
}

/// Numbers with spaces between them.
inline std::vector<std::uint32_t> Numbers(const std::string& text) {
    std::istringstream in(text);
    return {std::istream_iterator<std::uint32_t>(in), {}};
}

/// Writes the file of a row of tests/data/pictures.tsv that tells pixels, and reads it.
inline void ExpectPixels(const std::wstring& path, const DataRow& row) {
    SCOPED_TRACE(row.where);
    ASSERT_TRUE(WriteFile(path, FromHex(row[3])));
    const Image image = Loaded(path);
    const Color8 left = image.GetPixel8(0, 0), right = image.GetPixel8(1, 0);
    EXPECT_EQ(image.width, 2u);
    EXPECT_EQ(
        (std::vector<std::uint32_t>{static_cast<std::uint32_t>(image.format), left.red, left.green, left.blue,
                                    left.alpha, right.red, right.green, right.blue, right.alpha}),
        Numbers(row[2]));
}

/// height < 0: stored top row first. rows: padded to 4 bytes each. palette: blue, green, red, 0.
inline Bytes MakeBmp(std::int32_t width, std::int32_t height, std::uint32_t bits, const Bytes& rows,
                     const Bytes& palette = {}) {
    const auto colours = static_cast<std::uint32_t>(palette.size()), start = 54 + colours;
    const auto size = static_cast<std::uint32_t>(rows.size());
    const auto w = static_cast<std::uint32_t>(width), h = static_cast<std::uint32_t>(height);
    return Join({{'B', 'M'},
                 Little(4, {start + size, 0, start, 40, w, h}),
                 Little(2, {1, bits}),
                 Little(4, {0, size, 2835, 2835, colours / 4, 0}),
                 palette,
                 rows});
}

inline PixelValue Value(const Color16& colour) {
    PixelValue value;
    value.format = PixelFormat::Rgba16;
    value.color16 = colour;
    return value;
}
inline PixelValue Value(float red, float green, float blue, float alpha) {
    PixelValue value;
    value.format = PixelFormat::RgbaHalf;
    value.colorHalf = {FloatToHalf(red), FloatToHalf(green), FloatToHalf(blue), FloatToHalf(alpha)};
    return value;
}

/// colour: a Color8 or a PixelValue.
template <typename Colour>
Image Filled(std::uint32_t width, std::uint32_t height, PixelFormat format, const Colour& colour) {
    Image image(width, height, format);
    image.Fill(PixelValue(colour));
    return image;
}

/// Calls function(x, y) for every pixel of a picture, row by row.
template <typename Function>
void ForPixels(const Image& image, Function function) {
    for (int y = 0; y < static_cast<int>(image.height); ++y)
        for (int x = 0; x < static_cast<int>(image.width); ++x) function(x, y);
}

/// A smooth picture whose channels and rows all differ, alpha going from 0 to full.
inline Image SmoothPicture(PixelFormat format, int width = 37, int height = 23) {
    Image image(static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height), format);
    const auto part = [](int value, int of) { return static_cast<std::uint8_t>(value * 255 / of); };
    ForPixels(image, [&](int x, int y) {
        const std::uint8_t across = part(x, width), both = part(x + y, 2 * (width + height));
        image.SetPixel(x, y, Color8(across, part(y, height), both, part(x, width - 1)));
    });
    return image;
}

/// Mean difference of red, green and blue where the source can be seen, and of alpha everywhere if it counts.
inline double Difference(const Image& source, const Image& read, bool withAlpha = false) {
    EXPECT_TRUE(read.width == source.width && read.height == source.height);
    int sum = 0, count = 0;
    const auto add = [&](int a, int b) { sum += std::abs(a - b), ++count; };
    ForPixels(source, [&](int x, int y) {
        const Color8 a = source.GetPixel8(x, y), b = read.GetPixel8(x, y);
        if (withAlpha) add(a.alpha, b.alpha);
        if (a.alpha >= 128) add(a.red, b.red), add(a.green, b.green), add(a.blue, b.blue);
    });
    return static_cast<double>(sum) / count;
}

}  // namespace skyvault::test
