// Cubic movies put together for tests: marks, pictures and tables, nothing a player would want.
#pragma once

#include <bit>
#include <cstdint>
#include <string>
#include <vector>

#include "image/picture_files.h"
#include "tests/temporary_folder.h"

namespace skyvault::test {

inline void AddBig32(std::string& bytes, std::uint32_t value) {
    for (int shift = 24; shift >= 0; shift -= 8) bytes += static_cast<char>(value >> shift & 0xff);
}
inline void AddBigFloat(std::string& bytes, float value) {
    AddBig32(bytes, std::bit_cast<std::uint32_t>(value));
}
inline std::uint32_t Big32At(const std::string& bytes, std::size_t offset) {
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < 4; ++i) value = value << 8 | static_cast<std::uint8_t>(bytes.at(offset + i));
    return value;
}

/// A face table entry: which face (by the quaternions of real movies) and where on it.
struct MadeEntry {
    int face;
    float centerX, centerY;
};

inline std::string MakeCufa(const std::vector<MadeEntry>& entries) {
    constexpr float kTurns[6][3] = {{1, 0, 0},       {0.5f, 0, -0.5f}, {0, 0, -1},
                                    {0.5f, 0, 0.5f}, {0.5f, 0.5f, 0},  {0.5f, -0.5f, 0}};
    std::string atom;
    AddBig32(atom, static_cast<std::uint32_t>(20 + 32 * entries.size()));
    atom += "cufa";
    AddBig32(atom, 1);
    AddBig32(atom, 0);
    AddBig32(atom, 0);
    for (const MadeEntry& entry : entries) {
        for (const float part : kTurns[entry.face]) AddBigFloat(atom, part);
        for (const float value : {0.0f, entry.centerX, entry.centerY, 1.0f, 0.0f}) AddBigFloat(atom, value);
    }
    return atom;
}

inline std::string MakeStco(const std::vector<std::uint32_t>& offsets) {
    std::string atom;
    AddBig32(atom, static_cast<std::uint32_t>(16 + 4 * offsets.size()));
    atom += "stco";
    AddBig32(atom, 0);
    AddBig32(atom, static_cast<std::uint32_t>(offsets.size()));
    for (const std::uint32_t offset : offsets) AddBig32(atom, offset);
    return atom;
}

/// The bytes a picture has as a JPEG file.
inline std::string JpegBytes(Image picture) {
    const TemporaryFolder folder;
    return SavePicture(picture, folder / L"picture.jpg") ? folder.Read(L"picture.jpg") : std::string();
}

}  // namespace skyvault::test
