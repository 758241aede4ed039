// DDS files put together field by field, and cube maps written and read.
#pragma once

#include <array>
#include <cctype>

#include "codecs/dds_cube_map.h"
#include "tests/made_files.h"

namespace skyvault::test {

/// A number, or the four characters of a code.
inline std::uint32_t FieldValue(const std::string& text) {
    if (!std::isalpha(static_cast<unsigned char>(text[0])))
        return static_cast<std::uint32_t>(std::stoul(text, nullptr, 0));
    std::uint32_t code = 0;
    for (std::size_t i = 4; i-- > 0;) code = code << 8 | static_cast<unsigned char>(text[i]);
    return code;
}

/// fields: what differs from a 4 × 4 picture of 32-bit pixels, red first, as in "width=5 levels=3 code=DXT1".
/// A code leaves no bits and masks, which are written in hexadecimal: "masks=ff/ff00/ff0000/0". dx10 is the
/// format after the code "DX10", where dimension, misc and items (the array's) belong too.
inline Bytes MakeDds(const std::string& fields, const Bytes& pixels = {}) {
    enum Place { kFormatFlags = 20, kCode = 21, kBits = 22, kMasks = 23 };
    std::istringstream order(
        "magic headerSize flags height width pitch depth levels - - - - - - - - - tool - "
        "formatSize formatFlags code bits - - - - caps caps2 - - - dx10 dimension misc items");
    const std::vector<std::string> names{std::istream_iterator<std::string>(order), {}};
    std::vector<std::uint32_t> words = {FieldValue("DDS "), 124, 0x1007, 4, 4, 0, 0, 0};
    words.resize(kFormatFlags);
    words[19] = 32;
    words.insert(words.end(), {0x41, 0, 32, 0xff, 0xff00, 0xff0000, 0xff000000, 0x1000, 0, 0, 0, 0});
    std::istringstream text(fields);
    for (std::string field; text >> field;) {
        const std::string name = field.substr(0, field.find('=')), value = field.substr(name.size() + 1);
        if (name == "masks") {
            std::istringstream masks(value);
            for (std::size_t i = 0; i < 4; ++i, masks.get()) masks >> std::hex >> words[kMasks + i];
            continue;
        }
        if (name == "code" || name == "dx10") {
            words[kFormatFlags] = 4;
            words[kCode] = FieldValue("DX10");
            std::fill_n(words.begin() + kBits, 5, 0);
            if (name == "dx10") words.insert(words.end(), {0, 3, 0, 1, 0});
        }
        const auto place = std::find(names.begin(), names.end(), name) - names.begin();
        words.at(static_cast<std::size_t>(place)) = FieldValue(value);
    }
    Bytes dds;
    for (const std::uint32_t word : words) dds = Join({dds, Little(4, {word})});
    return Join({dds, pixels});
}

inline bool WriteDds(const std::wstring& path, const std::string& fields, const Bytes& pixels = {}) {
    return WriteFile(path, MakeDds(fields, pixels));
}

using Faces = std::array<Image, 6>;

inline bool SavedCube(const std::wstring& path, const Faces& faces, bool keepAlpha, bool compress,
                      std::wstring* infoLog = nullptr) {
    // Copies, as what is given may be emptied.
    const auto source = [&faces](std::uint32_t, std::size_t face, Image& picture) {
        picture = faces[face].CopyRect();
        return Outcome{};
    };
    const Outcome outcome = SaveDdsCubeMap(path, source, {.keepAlpha = keepAlpha, .compress = compress});
    if (infoLog != nullptr) *infoLog = outcome.infoLog;
    return outcome.IsDone();
}

inline bool LoadedCube(const std::wstring& path, Faces& faces, bool keepAlpha) {
    return LoadDdsCubeMap(path, faces, keepAlpha).IsDone();
}

}  // namespace skyvault::test
