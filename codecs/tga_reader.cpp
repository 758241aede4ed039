#include "codecs/tga_reader.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <string>

#include "codecs/bytes.h"
#include "image/pixel_rows.h"
#include "platform/debug_line.h"

namespace skyvault {
namespace {

constexpr int kColourMapped = 1;
constexpr int kTrueColour = 2;
constexpr int kTopDownBit = 0x20;

struct Header {
    int colourMapType;
    int imageType;
    int colourMapLength;
    int colourMapEntryBits;
    int width, height;
    int bitsPerPixel;
    bool topDown;
};

int Byte(std::span<const std::byte> file, std::size_t at) {
    return std::to_integer<int>(file[at]);
}

/// Sizes are signed, so that the upper half of their range is refused.
int Signed16(std::span<const std::byte> file, std::size_t at) {
    return static_cast<std::int16_t>(Little16(&file[at]));
}

bool ReadHeader(std::span<const std::byte> file, Header& header) {
    if (file.size() < kTgaHeaderSize) return false;
    header.colourMapType = Byte(file, 1);
    header.imageType = Byte(file, 2);
    header.colourMapLength = Little16(&file[5]);
    header.colourMapEntryBits = Byte(file, 7);
    header.width = Signed16(file, 12);
    header.height = Signed16(file, 14);
    header.bitsPerPixel = Byte(file, 16);
    header.topDown = (Byte(file, 17) & kTopDownBit) != 0;
    return header.colourMapType <= 1 &&
           (header.imageType == kColourMapped || header.imageType == kTrueColour) && header.width >= 1 &&
           header.height >= 1 &&
           (header.bitsPerPixel == 8 || header.bitsPerPixel == 24 || header.bitsPerPixel == 32);
}

bool MakePicture(const Header& header, Image& image) {
    const PixelFormat format = header.bitsPerPixel == 32 ? PixelFormat::Rgba8 : PixelFormat::Rgb8;
    image =
        Image(static_cast<std::uint32_t>(header.width), static_cast<std::uint32_t>(header.height), format);
    return image.IsValid();
}

std::uint64_t PictureBytes(const Header& header) {
    const int bytesPerPixel = header.bitsPerPixel == 32 ? 4 : 3;
    return std::uint64_t{1} * bytesPerPixel * header.width * header.height;
}

bool ReadTrueColour(const TgaSource& source, std::size_t dataSize, const Header& header, Image& image) {
    // The file's order, blue first, is the picture's.
    if (dataSize < PictureBytes(header) || !MakePicture(header, image)) return false;
    if (header.topDown) return source(image.pixels.get(), image.ByteCount());
    for (std::uint32_t y = image.height; y-- > 0;) {
        if (!source(image.Row(y), image.stride)) return false;
    }
    image.topDown = 0;
    return true;
}

bool ReadColourMapped(const TgaSource& source, std::size_t dataSize, const Header& header, Image& image) {
    if (PictureBytes(header) > LargestColourMappedPicture(kTgaHeaderSize + dataSize) ||
        !MakePicture(header, image))
        return false;
    std::memset(image.pixels.get(), 0, image.ByteCount());
    const std::size_t pixelCount = std::size_t{image.width} * image.height;
    const std::size_t entryBytes = static_cast<std::size_t>(header.colourMapEntryBits) / 8;
    const std::size_t length = static_cast<std::size_t>(header.colourMapLength);
    const std::size_t used = std::min(dataSize, length * entryBytes + pixelCount);
    const ByteBuffer bytes = AllocateBytes(std::max<std::size_t>(used, 1));
    if (!bytes || !source(bytes.get(), used)) return false;
    const std::span<const std::byte> data(bytes.get(), used);

    // The file's blue goes to red and its red to blue.
    std::array<Color8, 256> palette;  // no index reaches further
    for (std::size_t i = 0; i < std::min(length, palette.size()); ++i) {
        std::uint8_t* const channels[] = {&palette[i].red, &palette[i].green, &palette[i].blue,
                                          &palette[i].alpha};
        for (std::size_t channel = 0; channel < entryBytes; ++channel) {
            const std::size_t at = i * entryBytes + channel;
            if (at < data.size()) *channels[channel] = std::to_integer<std::uint8_t>(data[at]);
        }
    }

    const std::span<const std::byte> indices = data.subspan(std::min(length * entryBytes, data.size()));
    for (std::size_t i = 0; i < indices.size(); ++i) {
        const std::size_t index = std::to_integer<std::size_t>(indices[i]);
        if (index < length) WriteColor8(image.format, image.pixels.get() + 3 * i, palette[index]);
    }
    return header.topDown || image.FlipVertical();
}

}  // namespace

bool ReadTgaSize(std::span<const std::byte> header, PictureSize& size) {
    Header read;
    if (!ReadHeader(header, read)) return false;
    size = {static_cast<std::uint32_t>(read.width), static_cast<std::uint32_t>(read.height)};
    return true;
}

bool ReadTga(const TgaSource& source, std::size_t fileSize, std::wstring_view name, Image& image) {
    std::array<std::byte, kTgaHeaderSize> start;
    Header header{};
    if (fileSize < start.size() || !source(start.data(), start.size()) || !ReadHeader(start, header)) {
        return false;
    }
    const std::size_t dataSize = fileSize - start.size();
    bool ok = false;
    if (header.imageType == kTrueColour && header.colourMapType == 0 && header.bitsPerPixel != 8) {
        ok = ReadTrueColour(source, dataSize, header, image);
    } else if (header.imageType == kColourMapped && header.colourMapType == 1 && header.bitsPerPixel == 8 &&
               header.colourMapLength >= 1 &&
               (header.colourMapEntryBits == 24 || header.colourMapEntryBits == 32)) {
        ok = ReadColourMapped(source, dataSize, header, image);
    }
    DebugLine(L"TGA " + std::wstring(name) + L" is top-down: " + (header.topDown ? L"Y" : L"N") + L"\n");
    return ok;
}

bool ReadTga(std::span<const std::byte> file, std::wstring_view name, Image& image) {
    std::span<const std::byte> rest = file;
    const TgaSource source = [&](void* to, std::size_t n) {
        if (n > rest.size()) return false;
        std::memcpy(to, rest.data(), n);
        rest = rest.subspan(n);
        return true;
    };
    return ReadTga(source, file.size(), name, image);
}

}  // namespace skyvault
