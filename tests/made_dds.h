// DDS files put together field by field.
#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include "tests/made_files.h"

namespace skyvault::test {

constexpr std::uint32_t FourCc(const char (&text)[5]) {
    std::uint32_t code = 0;
    for (int i = 3; i >= 0; --i) code = code << 8 | static_cast<unsigned char>(text[i]);
    return code;
}

/// What follows the header when the four-character code is "DX10".
struct Dx10Fields {
    std::uint32_t format = 28, dimension = 3, misc = 0, arraySize = 1;
};

/// The start values describe a 4 × 4 picture of 32-bit pixels, red first.
struct DdsFields {
    std::uint32_t width = 4, height = 4, depth = 0, mipLevels = 0;
    std::uint32_t flags = 0x1007, caps2 = 0;
    std::uint32_t formatFlags = 0x41, fourCc = 0, bits = 32;
    std::array<std::uint32_t, 4> masks = {0xff, 0xff00, 0xff0000, 0xff000000};
    std::optional<Dx10Fields> dx10 = {};
    std::uint32_t magic = FourCc("DDS "), headerSize = 124, formatSize = 32, tool = 0, pitch = 0;
};

inline DdsFields Coded(std::uint32_t fourCc, DdsFields fields = {}) {
    fields.formatFlags = 4;
    fields.fourCc = fourCc;
    fields.bits = 0;
    fields.masks = {};
    return fields;
}

inline DdsFields Dx10(Dx10Fields dx10, DdsFields fields = {}) {
    fields = Coded(FourCc("DX10"), fields);
    fields.dx10 = dx10;
    return fields;
}

inline Bytes MakeDds(const DdsFields& fields, const Bytes& pixels = {}) {
    Bytes dds;
    const auto add = [&](std::uint32_t value) { AddLittle(dds, value, 4); };
    for (const std::uint32_t value : {fields.magic, fields.headerSize, fields.flags, fields.height,
                                      fields.width, fields.pitch, fields.depth, fields.mipLevels})
        add(value);
    for (int i = 0; i < 11; ++i) add(i == 9 ? fields.tool : 0);
    for (const std::uint32_t value : {fields.formatSize, fields.formatFlags, fields.fourCc, fields.bits})
        add(value);
    for (const std::uint32_t mask : fields.masks) add(mask);
    for (const std::uint32_t value : {0x1000u, fields.caps2, 0u, 0u, 0u}) add(value);
    if (fields.dx10) {
        const Dx10Fields& dx10 = *fields.dx10;
        for (const std::uint32_t value : {dx10.format, dx10.dimension, dx10.misc, dx10.arraySize, 0u})
            add(value);
    }
    Add(dds, pixels);
    return dds;
}

}  // namespace skyvault::test
