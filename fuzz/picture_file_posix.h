// Bytes as a picture file, read the way the program reads it.
#pragma once

#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <span>
#include <string>

#include "codecs/picture_files.h"
#include "fuzz/require.h"
#include "platform/memory_budget.h"
#include "platform/utf8.h"

namespace skyvault {

/// Writes the bytes to a file of this process and reads it. What is read must be what the header told, and
/// take no more than it told.
inline void ReadAsPictureFile(std::span<const std::byte> bytes) {
    static const std::filesystem::path path =
        std::filesystem::temp_directory_path() / ("skyvault-fuzz-" + std::to_string(getpid()));
    const std::wstring name = FromSystemBytes(path.string());
    std::FILE* const file = std::fopen(path.c_str(), "wb");
    // Of no bytes there is no address.
    const std::size_t written = file && !bytes.empty() ? std::fwrite(bytes.data(), 1, bytes.size(), file) : 0;
    Require(file && written == bytes.size() && std::fclose(file) == 0);
    SetMemoryBudget(std::uint64_t{64} << 20);
    PictureFacts facts;
    Image image;
    const bool told = ReadPictureFacts(name, facts).IsDone();
    const bool read = LoadPicture(name, image).IsDone();
    std::filesystem::remove(path);
    Require(!read || (told && image.IsValid() && image.width == facts.size.width &&
                      image.height == facts.size.height && image.format == facts.format &&
                      image.ByteCount() <= facts.memory));
}

}  // namespace skyvault
