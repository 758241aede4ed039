// Small picture files written byte by byte, for what no encoder of ours writes.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/file_stream.h"

namespace skyvault::test {

using Bytes = std::vector<std::uint8_t>;

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

inline void Add(Bytes& bytes, const Bytes& more) {
    bytes.insert(bytes.end(), more.begin(), more.end());
}
inline void AddLittle(Bytes& bytes, std::uint32_t value, int count) {
    for (int i = 0; i < count; ++i) bytes.push_back(static_cast<std::uint8_t>(value >> 8 * i));
}
inline void AddBig(Bytes& bytes, std::uint32_t value, int count) {
    for (int i = count - 1; i >= 0; --i) bytes.push_back(static_cast<std::uint8_t>(value >> 8 * i));
}

/// A PNG chunk with its checksum.
inline void AddPngChunk(Bytes& png, const char* type, const Bytes& data) {
    AddBig(png, static_cast<std::uint32_t>(data.size()), 4);
    Bytes checked(type, type + 4);
    Add(checked, data);
    std::uint32_t crc = 0xffffffffu;
    for (const std::uint8_t byte : checked) {
        crc ^= byte;
        for (int bit = 0; bit < 8; ++bit) crc = crc >> 1 ^ (crc & 1 ? 0xedb88320u : 0);
    }
    Add(png, checked);
    AddBig(png, ~crc, 4);
}

/// rows: each led by filter byte 0, stored without compression. palette: RGB triples or empty; transparency:
/// a tRNS chunk or empty.
inline Bytes MakePng(std::uint32_t width, std::uint32_t height, int bits, int colourType, const Bytes& rows,
                     const Bytes& palette = {}, const Bytes& transparency = {}) {
    Bytes png = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1a, '\n'};
    Bytes header;
    AddBig(header, width, 4);
    AddBig(header, height, 4);
    Add(header, {static_cast<std::uint8_t>(bits), static_cast<std::uint8_t>(colourType), 0, 0, 0});
    AddPngChunk(png, "IHDR", header);
    if (!palette.empty()) AddPngChunk(png, "PLTE", palette);
    if (!transparency.empty()) AddPngChunk(png, "tRNS", transparency);

    Bytes stream = {0x78, 0x01, 0x01};  // one stored block
    AddLittle(stream, static_cast<std::uint32_t>(rows.size()), 2);
    AddLittle(stream, ~static_cast<std::uint32_t>(rows.size()), 2);
    Add(stream, rows);
    std::uint32_t a = 1, b = 0;
    for (const std::uint8_t byte : rows) {
        a = (a + byte) % 65521;
        b = (b + a) % 65521;
    }
    AddBig(stream, b << 16 | a, 4);
    AddPngChunk(png, "IDAT", stream);
    AddPngChunk(png, "IEND", {});
    return png;
}

/// An uncompressed TIFF of one strip. Tags of width, height, strip and compression are added to `extra`,
/// whose values are 16-bit numbers; little- or big-endian, as the pixel bytes must be too.
struct TiffTag {
    std::uint16_t tag;
    std::vector<std::uint16_t> values;
};
inline Bytes MakeTiff(std::uint16_t width, std::uint16_t height, std::uint16_t photometric,
                      const std::vector<std::uint16_t>& bitsPerSample, const Bytes& pixels,
                      const std::vector<TiffTag>& extra = {}, bool bigEndian = false) {
    const auto add = [&](Bytes& bytes, std::uint32_t value, int count) {
        bigEndian ? AddBig(bytes, value, count) : AddLittle(bytes, value, count);
    };
    std::vector<TiffTag> tags = {
        {256, {width}},
        {257, {height}},
        {258, bitsPerSample},
        {259, {1}},
        {262, {photometric}},
        {273, {8}},
        {277, {static_cast<std::uint16_t>(bitsPerSample.size())}},
        {278, {height}},
        {279, {static_cast<std::uint16_t>(pixels.size())}},
    };
    tags.insert(tags.end(), extra.begin(), extra.end());

    Bytes tiff = bigEndian ? Bytes{'M', 'M', 0, 42} : Bytes{'I', 'I', 42, 0};
    const auto padded = static_cast<std::uint32_t>((pixels.size() + 1) / 2 * 2);
    add(tiff, 8 + padded, 4);
    Add(tiff, pixels);
    tiff.resize(8 + padded);
    add(tiff, static_cast<std::uint32_t>(tags.size()), 2);
    Bytes outside;
    const std::uint32_t outsideAt = 8 + padded + 2 + 12 * static_cast<std::uint32_t>(tags.size()) + 4;
    for (const TiffTag& tag : tags) {
        add(tiff, tag.tag, 2);
        add(tiff, 3, 2);  // 16-bit numbers
        add(tiff, static_cast<std::uint32_t>(tag.values.size()), 4);
        Bytes values;
        for (const std::uint16_t value : tag.values) add(values, value, 2);
        if (values.size() <= 4) {
            values.resize(4);
            Add(tiff, values);
        } else {
            add(tiff, outsideAt + static_cast<std::uint32_t>(outside.size()), 4);
            Add(outside, values);
        }
    }
    add(tiff, 0, 4);
    Add(tiff, outside);
    return tiff;
}

/// height < 0: stored top row first. rows: padded to 4 bytes each. palette: blue, green, red, 0.
inline Bytes MakeBmp(std::int32_t width, std::int32_t height, int bits, const Bytes& rows,
                     const Bytes& palette = {}) {
    Bytes bmp = {'B', 'M'};
    const auto start = static_cast<std::uint32_t>(54 + palette.size());
    AddLittle(bmp, start + static_cast<std::uint32_t>(rows.size()), 4);
    AddLittle(bmp, 0, 4);
    AddLittle(bmp, start, 4);
    AddLittle(bmp, 40, 4);
    AddLittle(bmp, static_cast<std::uint32_t>(width), 4);
    AddLittle(bmp, static_cast<std::uint32_t>(height), 4);
    AddLittle(bmp, 1, 2);
    AddLittle(bmp, static_cast<std::uint32_t>(bits), 2);
    AddLittle(bmp, 0, 4);
    AddLittle(bmp, static_cast<std::uint32_t>(rows.size()), 4);
    AddLittle(bmp, 2835, 4);
    AddLittle(bmp, 2835, 4);
    AddLittle(bmp, static_cast<std::uint32_t>(palette.size() / 4), 4);
    AddLittle(bmp, 0, 4);
    Add(bmp, palette);
    Add(bmp, rows);
    return bmp;
}

/// One frame of MakeGif: a single red pixel on a 4 × 4 canvas.
struct GifFrameBytes {
    std::uint16_t delay;
    std::uint8_t disposal;
    std::uint16_t left, top;
};
inline Bytes MakeGif(const std::vector<GifFrameBytes>& frames) {
    Bytes gif = {'G', 'I', 'F', '8', '9', 'a', 4, 0, 4, 0, 0x80, 0, 0, /* colours: */ 0, 0, 0, 255, 0, 0};
    for (const GifFrameBytes& frame : frames) {
        Add(gif, {0x21, 0xf9, 4, static_cast<std::uint8_t>(frame.disposal << 2)});
        AddLittle(gif, frame.delay, 2);
        Add(gif, {0, 0, 0x2c});
        AddLittle(gif, frame.left, 2);
        AddLittle(gif, frame.top, 2);
        Add(gif, {1, 0, 1, 0, 0});
        // Codes of 3 bits: clear (4), colour 1, end (5).
        Add(gif, {2, 2, 0x4c, 0x01, 0});
    }
    gif.push_back(0x3b);
    return gif;
}

}  // namespace skyvault::test
