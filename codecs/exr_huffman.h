// The entropy code of OpenEXR's wavelet compression: words of 16 bits by codes of up to 57 bits, and one code
// for a repetition.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace skyvault {

/// What decoding needs to remember; its contents do not matter before and after.
struct ExrHuffmanTables {
    static constexpr std::size_t kSymbols = 65537;  // the words, and the repetition
    static constexpr int kFastBits = 12;

    std::array<std::uint8_t, kSymbols> lengths;  ///< of the codes in bits; 0: none
    std::array<std::uint32_t, kSymbols> sorted;  ///< symbols by the length of their codes
    /// By the next bits: symbol and, in the lowest six bits, length of a code that is short enough, else 0.
    std::array<std::uint32_t, std::size_t{1} << kFastBits> fast;
};

/// Decodes exactly as many words as there is room for. False when the data is broken or of another length.
bool DecodeExrHuffman(std::span<const std::byte> data, std::span<std::uint16_t> words,
                      ExrHuffmanTables& tables);

}  // namespace skyvault
