#include "codecs/exr_huffman.h"

#include <algorithm>

#include "codecs/bytes.h"

namespace skyvault {
namespace {

/// The format knows 58, which takes more words to come about than a chunk can have.
constexpr int kLongestCode = 57;

/// Bits from the highest of a byte to the lowest. Behind the last one there are zeros.
class Bits {
  public:
    explicit Bits(std::span<const std::byte> bytes) : bytes_(bytes), left_(std::uint64_t{8} * bytes.size()) {}

    std::uint64_t Left() const { return left_; }

    /// The next bits, at most 57, without taking them.
    std::uint64_t Peek(int count) {
        while (held_ < count) {
            const std::uint64_t next = at_ < bytes_.size() ? std::to_integer<std::uint64_t>(bytes_[at_]) : 0;
            ++at_;
            window_ = window_ << 8 | next;
            held_ += 8;
        }
        return window_ >> (held_ - count) & ((std::uint64_t{1} << count) - 1);
    }

    /// Takes bits that were looked at. False when there are fewer.
    bool Skip(int count) {
        if (left_ < static_cast<std::uint64_t>(count)) return false;
        left_ -= static_cast<std::uint64_t>(count);
        held_ -= count;
        return true;
    }

    bool Take(int count, std::uint32_t& value) {
        value = static_cast<std::uint32_t>(Peek(count));
        return Skip(count);
    }

  private:
    std::span<const std::byte> bytes_;
    std::uint64_t left_;
    std::size_t at_ = 0;
    std::uint64_t window_ = 0;  // the lowest held_ bits are next
    int held_ = 0;
};

/// Lengths in 6 bits each; the highest of their values stand for several symbols without a code.
bool ReadLengths(Bits& bits, std::uint32_t first, std::uint32_t last, ExrHuffmanTables& tables) {
    constexpr std::uint32_t kShortRun = 59, kLongRun = 63, kLeastShort = 2, kLeastLong = 6;
    tables.lengths.fill(0);
    for (std::uint32_t symbol = first; symbol <= last;) {
        std::uint32_t length = 0, run = 1;
        if (!bits.Take(6, length)) return false;
        if (length == kLongRun) {
            if (!bits.Take(8, run)) return false;
            run += kLeastLong;
        } else if (length >= kShortRun) {
            run = length - kShortRun + kLeastShort;
        }
        const bool isLength = length < kShortRun;
        if (run > last + 1 - symbol || (isLength && length > kLongestCode)) return false;
        if (isLength) tables.lengths[symbol] = static_cast<std::uint8_t>(length);
        symbol += run;
    }
    return true;
}

/// The codes of each length are numbers in a row, given to the symbols in their order; the longest codes have
/// the smallest numbers.
struct CodeRanges {
    std::array<std::uint64_t, kLongestCode + 1> first{}, count{};
    std::array<std::uint32_t, kLongestCode + 1> place{};  ///< of the first one's symbol in `sorted`
};

/// False for more codes than there can be.
bool AssignCodes(ExrHuffmanTables& tables, CodeRanges& codes) {
    for (const std::uint8_t length : tables.lengths) ++codes.count[length];
    codes.count[0] = 0;
    std::uint64_t next = 0;
    for (std::size_t length = kLongestCode; length > 0; --length) {
        codes.first[length] = next;
        if (next + codes.count[length] > std::uint64_t{1} << length) return false;
        next = (next + codes.count[length]) >> 1;
    }
    for (std::size_t length = 1; length < kLongestCode; ++length) {
        codes.place[length + 1] = codes.place[length] + static_cast<std::uint32_t>(codes.count[length]);
    }
    tables.fast.fill(0);
    std::array<std::uint32_t, kLongestCode + 1> given{};
    for (std::uint32_t symbol = 0; symbol < tables.lengths.size(); ++symbol) {
        const int length = tables.lengths[symbol];
        if (length == 0) continue;
        const std::uint32_t number = given[static_cast<std::size_t>(length)]++;
        tables.sorted[codes.place[static_cast<std::size_t>(length)] + number] = symbol;
        if (length > ExrHuffmanTables::kFastBits) continue;
        const int rest = ExrHuffmanTables::kFastBits - length;
        const std::size_t start =
            static_cast<std::size_t>(codes.first[static_cast<std::size_t>(length)] + number) << rest;
        std::fill_n(tables.fast.begin() + static_cast<std::ptrdiff_t>(start), std::size_t{1} << rest,
                    symbol << 6 | static_cast<std::uint32_t>(length));
    }
    return true;
}

bool NextSymbol(Bits& bits, const ExrHuffmanTables& tables, const CodeRanges& codes, std::uint32_t& symbol) {
    const std::uint32_t fast = tables.fast[static_cast<std::size_t>(bits.Peek(ExrHuffmanTables::kFastBits))];
    if (fast != 0) {
        symbol = fast >> 6;
        return bits.Skip(static_cast<int>(fast & 63));
    }
    for (int length = ExrHuffmanTables::kFastBits + 1; length <= kLongestCode; ++length) {
        const std::size_t l = static_cast<std::size_t>(length);
        const std::uint64_t number = bits.Peek(length) - codes.first[l];
        if (number >= codes.count[l]) continue;
        symbol = tables.sorted[codes.place[l] + static_cast<std::size_t>(number)];
        return bits.Skip(length);
    }
    return false;
}

}  // namespace

bool DecodeExrHuffman(std::span<const std::byte> data, std::span<std::uint16_t> words,
                      ExrHuffmanTables& tables) {
    // First and last symbol with a code, the length of the code table, the bits that follow it, and nothing.
    constexpr std::size_t kHeaderSize = 20, kBitsAt = 12;
    if (data.size() < kHeaderSize) return false;
    const std::uint32_t first = Little32(&data[0]), repetition = Little32(&data[4]);
    const std::uint64_t bitCount = Little32(&data[kBitsAt]);
    if (first > repetition || repetition >= ExrHuffmanTables::kSymbols) return false;
    data = data.subspan(kHeaderSize);

    Bits lengthBits(data);
    CodeRanges codes;
    if (!ReadLengths(lengthBits, first, repetition, tables) || !AssignCodes(tables, codes)) return false;
    data = data.last(static_cast<std::size_t>(lengthBits.Left() / 8));
    if (bitCount > std::uint64_t{8} * data.size()) return false;

    Bits bits(data);
    const std::uint64_t unused = bits.Left() - bitCount;
    for (std::size_t at = 0; at < words.size();) {
        std::uint32_t symbol = 0, count = 1;
        if (!NextSymbol(bits, tables, codes, symbol)) return false;
        if (symbol == repetition) {
            if (at == 0 || !bits.Take(8, count) || count > words.size() - at) return false;
            symbol = words[at - 1];
        }
        std::fill_n(words.begin() + static_cast<std::ptrdiff_t>(at), count,
                    static_cast<std::uint16_t>(symbol));
        at += count;
    }
    return bits.Left() == unused;
}

}  // namespace skyvault
