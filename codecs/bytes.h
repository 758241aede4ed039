// Numbers as files store them, at any address: Little… lowest byte first, Big… highest byte first.
//
// Whoever calls makes sure that the bytes are there. The loops are of known length and become one load or
// store each.
#pragma once

#include <cstddef>
#include <cstdint>

namespace skyvault {

template <typename Number>
constexpr Number LittleAt(const std::byte* p) {
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < sizeof(Number); ++i) value |= std::to_integer<std::uint64_t>(p[i]) << 8 * i;
    return static_cast<Number>(value);
}
template <typename Number>
constexpr Number BigAt(const std::byte* p) {
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < sizeof(Number); ++i)
        value = value << 8 | std::to_integer<std::uint64_t>(p[i]);
    return static_cast<Number>(value);
}

constexpr std::uint16_t Little16(const std::byte* p) {
    return LittleAt<std::uint16_t>(p);
}
constexpr std::uint32_t Little32(const std::byte* p) {
    return LittleAt<std::uint32_t>(p);
}
constexpr std::uint64_t Little64(const std::byte* p) {
    return LittleAt<std::uint64_t>(p);
}
constexpr std::uint16_t Big16(const std::byte* p) {
    return BigAt<std::uint16_t>(p);
}
constexpr std::uint32_t Big32(const std::byte* p) {
    return BigAt<std::uint32_t>(p);
}

constexpr void SetLittle16(std::byte* p, std::uint32_t value) {
    for (std::size_t i = 0; i < 2; ++i) p[i] = static_cast<std::byte>(value >> 8 * i);
}
constexpr void SetLittle32(std::byte* p, std::uint32_t value) {
    for (std::size_t i = 0; i < 4; ++i) p[i] = static_cast<std::byte>(value >> 8 * i);
}
constexpr void SetBig16(std::byte* p, std::uint32_t value) {
    for (std::size_t i = 0; i < 2; ++i) p[i] = static_cast<std::byte>(value >> (8 - 8 * i));
}
constexpr void SetBig32(std::byte* p, std::uint32_t value) {
    for (std::size_t i = 0; i < 4; ++i) p[i] = static_cast<std::byte>(value >> (24 - 8 * i));
}

}  // namespace skyvault
