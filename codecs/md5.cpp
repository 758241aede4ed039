#include "codecs/md5.h"

#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>

#include "codecs/bytes.h"
#include "codecs/metadata_bytes.h"

namespace skyvault {
namespace {

using State = std::array<std::uint32_t, 4>;

/// The integer parts of 2^32 · |sin(i + 1)|.
const std::array<std::uint32_t, 64>& Sines() {
    static const std::array<std::uint32_t, 64> sines = [] {
        std::array<std::uint32_t, 64> made{};
        for (std::size_t i = 0; i < made.size(); ++i) {
            made[i] =
                static_cast<std::uint32_t>(std::abs(std::sin(static_cast<double>(i + 1))) * 4294967296.0);
        }
        return made;
    }();
    return sines;
}

void AddBlock(const std::byte* block, State& state) {
    constexpr int kTurns[4][4] = {{7, 12, 17, 22}, {5, 9, 14, 20}, {4, 11, 16, 23}, {6, 10, 15, 21}};
    auto [a, b, c, d] = state;
    for (std::size_t i = 0; i < 64; ++i) {
        const std::size_t round = i / 16;
        const std::uint32_t mixed[] = {(b & c) | (~b & d), (d & b) | (~d & c), b ^ c ^ d, c ^ (b | ~d)};
        const std::size_t words[] = {i, 5 * i + 1, 3 * i + 5, 7 * i};
        const std::uint32_t sum = a + mixed[round] + Sines()[i] + Little32(block + 4 * (words[round] % 16));
        a = d;
        d = c;
        c = b;
        b += std::rotl(sum, kTurns[round][i % 4]);
    }
    state = {state[0] + a, state[1] + b, state[2] + c, state[3] + d};
}

}  // namespace

std::string Md5Text(std::string_view data) {
    State state{0x67452301, 0xefcdab89, 0x98badcfe, 0x10325476};
    const std::size_t whole = data.size() / 64 * 64;
    const std::span<const std::byte> bytes = BytesOfText(data);
    for (std::size_t i = 0; i < whole; i += 64) AddBlock(bytes.data() + i, state);
    // The rest, one bit, zeros, and the length in bits.
    std::vector<std::byte> rest(bytes.begin() + static_cast<std::ptrdiff_t>(whole), bytes.end());
    rest.push_back(std::byte{0x80});
    while (rest.size() % 64 != 56) rest.push_back(std::byte{0});
    const std::uint64_t bits = std::uint64_t{data.size()} * 8;
    for (int i = 0; i < 8; ++i) rest.push_back(static_cast<std::byte>(bits >> 8 * i));
    for (std::size_t i = 0; i < rest.size(); i += 64) AddBlock(&rest[i], state);
    std::string text;
    for (const std::uint32_t word : state) {
        for (int i = 0; i < 4; ++i) {
            const std::uint32_t byte = word >> 8 * i & 0xff;
            text += "0123456789ABCDEF"[byte >> 4];
            text += "0123456789ABCDEF"[byte & 15];
        }
    }
    return text;
}

}  // namespace skyvault
