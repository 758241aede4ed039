// The packed pixels of OpenEXR: what a chunk holds, unpacked and packed.
//
// Unpacked, a chunk is its lines from top to bottom, each line its channels one after the other.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "codecs/exr_header.h"
#include "platform/memory.h"

namespace skyvault {

/// Unpacks the chunks of a file, in memory that is asked for once. Each thread has one of its own.
class ExrUnpacker {
  public:
    explicit ExrUnpacker(const ExrHeader& header);

    /// Bytes it takes.
    static std::uint64_t Memory(const ExrHeader& header);

    /// The pixels of a chunk of that size, which are valid until the next one; empty when it is broken, and
    /// without memory.
    std::span<const std::byte> Unpack(std::span<const std::byte> packed, std::uint32_t width,
                                      std::uint32_t height);

  private:
    bool Inflate(std::span<const std::byte> packed, std::span<std::byte> to);

    const ExrHeader& header_;
    ByteBuffer pixels_, packedParts_, tables_;
};

/// What the wavelet compression needs beside the pixels, in bytes.
extern const std::size_t kPizTables;

/// Unpacks a chunk of the wavelet compression into words of 16 bits, a channel after the other. tables:
/// kPizTables bytes. False when it is broken.
bool UnpackPiz(const ExrHeader& header, std::span<const std::byte> packed, std::uint32_t width,
               std::uint32_t height, std::span<std::uint16_t> words, std::byte* tables);

/// Packs pixels as zip does. scratch: as many bytes. to: PackedExrRoom of them. The count of bytes written; 0
/// when they would not be fewer than unpacked.
std::size_t PackExr(std::span<const std::byte> pixels, std::byte* scratch, std::byte* to);
std::size_t PackedExrRoom(std::size_t count);

}  // namespace skyvault
