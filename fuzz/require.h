// What the fuzz targets share.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>

namespace skyvault {

/// Ends the program, which the fuzzer and the replay take for a finding.
inline void Require(bool ok) {
    if (!ok) std::abort();
}

inline std::span<const std::byte> BytesOf(const std::uint8_t* data, std::size_t size) {
    return {reinterpret_cast<const std::byte*>(data), size};
}

/// Every byte can be looked at, and none is uninitialised.
inline void LookAt(std::span<const std::byte> bytes) {
    std::size_t sum = 0;
    for (const std::byte byte : bytes) sum += std::to_integer<std::size_t>(byte);
    volatile std::size_t sink = sum;
    static_cast<void>(sink);
}

}  // namespace skyvault
