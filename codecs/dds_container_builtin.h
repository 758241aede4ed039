// The inside of the built-in DDS container, for its fuzz target and tests.
#pragma once

#include <cstddef>
#include <span>

#include "codecs/dds_container.h"
#include "platform/memory.h"

namespace skyvault {

/// Only what the program asks for is kept: of each array item the largest mip level, its first slice. They
/// are of one size and lie behind each other.
struct DdsTexture::Contents {
    DdsMetadata metadata;
    ByteBuffer pixels;
    std::size_t rowPitch = 0, slicePitch = 0;
};

/// LoadDds of a file held in memory.
bool ParseDds(std::span<const std::byte> file, DdsTexture& texture);

}  // namespace skyvault
