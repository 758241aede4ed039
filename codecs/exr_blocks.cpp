#include "codecs/exr_blocks.h"

#include <zlib.h>

#include <algorithm>
#include <cstring>

#include "codecs/bytes.h"

namespace skyvault {
namespace {

constexpr int kZipLevel = 4;

/// Runs of bytes: a count below 0 is so many bytes as they are, others one byte repeated once more than it
/// says.
bool UnpackRuns(std::span<const std::byte> packed, std::span<std::byte> to) {
    while (!to.empty()) {
        if (packed.size() < 2) return false;
        const int byte = std::to_integer<int>(packed[0]), code = byte < 128 ? byte : byte - 256;
        packed = packed.subspan(1);
        const std::size_t count = static_cast<std::size_t>(code < 0 ? -code : code + 1);
        const std::size_t taken = code < 0 ? count : 1;
        if (count > to.size() || taken > packed.size()) return false;
        if (code < 0) {
            std::memcpy(to.data(), packed.data(), count);
        } else {
            std::memset(to.data(), std::to_integer<int>(packed[0]), count);
        }
        to = to.subspan(count);
        packed = packed.subspan(taken);
    }
    return packed.empty();
}

// Before they are packed, bytes at even places are put in front of those at odd ones, and each is replaced by
// its difference to the one before, plus 128.

void FromDifferences(std::span<std::byte> parts, std::byte* to) {
    unsigned value = 128;
    for (std::byte& part : parts) {
        value += std::to_integer<unsigned>(part) - 128;
        part = static_cast<std::byte>(value);
    }
    const std::size_t odd = parts.size() / 2, even = parts.size() - odd;
    const std::byte* const first = parts.data();
    const std::byte* const second = first + even;
    for (std::size_t i = 0; i < odd; ++i) {
        to[2 * i] = first[i];
        to[2 * i + 1] = second[i];
    }
    if (even > odd) to[2 * odd] = first[odd];
}

void ToDifferences(std::span<const std::byte> pixels, std::byte* parts) {
    const std::size_t even = pixels.size() - pixels.size() / 2;
    for (std::size_t i = 0; i < pixels.size(); ++i) parts[i % 2 * even + i / 2] = pixels[i];
    unsigned before = 128;
    for (std::size_t i = 0; i < pixels.size(); ++i) {
        const unsigned value = std::to_integer<unsigned>(parts[i]);
        parts[i] = static_cast<std::byte>(value - before + 128);
        before = value;
    }
}

std::uint32_t PlanesOf(ExrType type) {
    return type == ExrType::Half ? 2 : type == ExrType::Float ? 3 : 4;
}

/// Lines of channels, each its values' highest bytes, then the next lower ones and so on; values are
/// differences to the one before. Floats have lost their lowest byte.
void FromPlanes(const ExrHeader& header, std::uint32_t width, std::uint32_t height, const std::byte* planes,
                std::byte* to) {
    for (std::uint32_t y = 0; y < height; ++y) {
        for (const ExrChannel& channel : header.channels) {
            const std::uint32_t count = PlanesOf(channel.type);
            const int lowest = channel.type == ExrType::Float ? 8 : 0;
            std::uint32_t value = 0;
            for (std::uint32_t x = 0; x < width; ++x) {
                std::uint32_t difference = 0;
                for (std::uint32_t plane = 0; plane < count; ++plane) {
                    difference = difference << 8 |
                                 std::to_integer<std::uint32_t>(planes[std::size_t{plane} * width + x]);
                }
                value += difference << lowest;
                if (channel.type == ExrType::Half) {
                    SetLittle16(to, value & 0xffff);
                } else {
                    SetLittle32(to, value);
                }
                to += BytesOf(channel.type);
            }
            planes += std::size_t{count} * width;
        }
    }
}

/// From channels one after the other to lines of channels.
void FromChannels(const ExrHeader& header, std::uint32_t width, std::uint32_t height,
                  const std::uint16_t* words, std::byte* to) {
    std::size_t before = 0;
    for (const ExrChannel& channel : header.channels) {
        const std::size_t bytes = std::size_t{BytesOf(channel.type)} * width;
        const std::byte* const lines = reinterpret_cast<const std::byte*>(words) + before * height;
        const std::size_t lineBytes = std::size_t{header.pixelBytes} * width;
        for (std::uint32_t y = 0; y < height; ++y) {
            std::memcpy(to + y * lineBytes + before, lines + y * bytes, bytes);
        }
        before += bytes;
    }
}

}  // namespace

ExrUnpacker::ExrUnpacker(const ExrHeader& header) : header_(header) {
    const std::size_t bytes = static_cast<std::size_t>(header.ChunkBytes());
    pixels_ = AllocateBytes(bytes);
    packedParts_ = AllocateBytes(bytes);
    if (header.compression == ExrCompression::Piz) tables_ = AllocateBytes(kPizTables);
}

std::uint64_t ExrUnpacker::Memory(const ExrHeader& header) {
    return 2 * header.ChunkBytes() + (header.compression == ExrCompression::Piz ? kPizTables : 0);
}

bool ExrUnpacker::Inflate(std::span<const std::byte> packed, std::span<std::byte> to) {
    uLongf length = static_cast<uLongf>(to.size());
    const int result =
        uncompress(reinterpret_cast<Bytef*>(to.data()), &length,
                   reinterpret_cast<const Bytef*>(packed.data()), static_cast<uLong>(packed.size()));
    return result == Z_OK && length == to.size();
}

std::span<const std::byte> ExrUnpacker::Unpack(std::span<const std::byte> packed, std::uint32_t width,
                                               std::uint32_t height) {
    const std::size_t count = std::size_t{header_.pixelBytes} * width * height;
    const bool tablesThere = tables_ || header_.compression != ExrCompression::Piz;
    if (!pixels_ || !packedParts_ || !tablesThere || packed.size() > count) return {};
    // What packing would not make smaller is stored as it is.
    if (packed.size() == count) return packed;
    const std::span<std::byte> parts(packedParts_.get(), count), pixels(pixels_.get(), count);
    switch (header_.compression) {
        case ExrCompression::None:
            return {};
        case ExrCompression::Rle:
            if (!UnpackRuns(packed, parts)) return {};
            FromDifferences(parts, pixels.data());
            return pixels;
        case ExrCompression::ZipLine:
        case ExrCompression::Zip:
            if (!Inflate(packed, parts)) return {};
            FromDifferences(parts, pixels.data());
            return pixels;
        case ExrCompression::Pxr24: {
            std::size_t planeBytes = 0;
            for (const ExrChannel& channel : header_.channels)
                planeBytes += std::size_t{PlanesOf(channel.type)} * width * height;
            if (!Inflate(packed, parts.first(planeBytes))) return {};
            FromPlanes(header_, width, height, parts.data(), pixels.data());
            return pixels;
        }
        case ExrCompression::Piz: {
            const std::span<std::uint16_t> words(reinterpret_cast<std::uint16_t*>(parts.data()), count / 2);
            if (!UnpackPiz(header_, packed, width, height, words, tables_.get())) return {};
            FromChannels(header_, width, height, words.data(), pixels.data());
            return pixels;
        }
    }
    return {};
}

std::size_t PackedExrRoom(std::size_t count) {
    return compressBound(static_cast<uLong>(count));
}

std::size_t PackExr(std::span<const std::byte> pixels, std::byte* scratch, std::byte* to) {
    ToDifferences(pixels, scratch);
    uLongf length = static_cast<uLongf>(PackedExrRoom(pixels.size()));
    const int result =
        compress2(reinterpret_cast<Bytef*>(to), &length, reinterpret_cast<const Bytef*>(scratch),
                  static_cast<uLong>(pixels.size()), kZipLevel);
    return result == Z_OK && length < pixels.size() ? length : 0;
}

}  // namespace skyvault
