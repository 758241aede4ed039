#include "codecs/gif_writer.h"

#include <algorithm>
#include <array>
#include <bit>
#include <string_view>

#include "platform/file_stream.h"

namespace skyvault {
namespace {

/// Collects bytes and writes them in large pieces.
class Output {
  public:
    explicit Output(const std::wstring& path) : file_(path, FileUse::Write), ok_(file_.IsOpen()) {}

    void Byte(std::uint32_t value) {
        buffer_[used_++] = static_cast<std::uint8_t>(value);
        if (used_ == buffer_.size()) Flush();
    }
    void Word(std::uint32_t value) {
        Byte(value);
        Byte(value >> 8);
    }
    bool Ok() const { return ok_; }
    bool Finish() {
        Flush();
        return file_.Close() && ok_;
    }

  private:
    void Flush() {
        ok_ = ok_ && file_.Write(buffer_.data(), used_);
        used_ = 0;
    }

    FileStream file_;
    bool ok_;
    std::array<std::uint8_t, 1 << 16> buffer_;
    std::size_t used_ = 0;
};

/// Codes of varying length, lowest bit first, in blocks of up to 255 bytes that are led by their size.
class CodeBlocks {
  public:
    explicit CodeBlocks(Output& output) : output_(output) {}

    void Put(std::uint32_t code, int bits) {
        pending_ |= code << pendingBits_;
        for (pendingBits_ += bits; pendingBits_ >= 8; pendingBits_ -= 8, pending_ >>= 8)
            PutByte(pending_ & 0xff);
    }
    void Finish() {
        if (pendingBits_ > 0) PutByte(pending_);
        if (used_ > 0) WriteBlock();
        output_.Byte(0);
    }

  private:
    void PutByte(std::uint32_t value) {
        block_[used_++] = static_cast<std::uint8_t>(value);
        if (used_ == block_.size()) WriteBlock();
    }
    void WriteBlock() {
        output_.Byte(static_cast<std::uint32_t>(used_));
        for (std::size_t i = 0; i < used_; ++i) output_.Byte(block_[i]);
        used_ = 0;
    }

    Output& output_;
    std::uint32_t pending_ = 0;
    int pendingBits_ = 0;
    std::array<std::uint8_t, 255> block_;
    std::size_t used_ = 0;
};

/// The strings met so far: each is a shorter one and one more index.
class StringTable {
  public:
    void Clear() { slots_.fill(Slot{}); }

    /// The code of prefix and index; 0 when they have none yet, and then they get newCode.
    std::uint32_t FindOrAdd(std::uint32_t prefix, std::uint32_t index, std::uint32_t newCode) {
        const std::uint32_t key = prefix << 8 | index;
        for (std::uint32_t at = (key * 2654435761u) >> (32 - kBits);; at = (at + 1) % kSlots) {
            Slot& slot = slots_[at];
            if (slot.code == 0) {
                slot = {key, newCode};
                return 0;
            }
            if (slot.key == key) return slot.code;
        }
    }

  private:
    static constexpr int kBits = 14;  // four times the number of codes
    static constexpr std::uint32_t kSlots = 1u << kBits;
    struct Slot {
        std::uint32_t key = 0, code = 0;
    };
    std::array<Slot, kSlots> slots_;
};

void WritePixels(Output& output, const std::byte* indices, std::size_t count, int indexBits) {
    constexpr std::uint32_t kMostCodes = 4096;
    const std::uint32_t clear = 1u << indexBits, end = clear + 1;
    output.Byte(static_cast<std::uint32_t>(indexBits));
    CodeBlocks blocks(output);
    StringTable strings;
    int bits = 0;
    std::uint32_t next = 0;
    const auto startOver = [&] {
        strings.Clear();
        bits = indexBits + 1;
        next = end + 1;
    };
    startOver();
    blocks.Put(clear, bits);
    std::uint32_t prefix = std::to_integer<std::uint32_t>(indices[0]);
    for (std::size_t i = 1; i < count && output.Ok(); ++i) {
        const std::uint32_t index = std::to_integer<std::uint32_t>(indices[i]);
        if (const std::uint32_t code = strings.FindOrAdd(prefix, index, next)) {
            prefix = code;
            continue;
        }
        blocks.Put(prefix, bits);
        prefix = index;
        if (next == kMostCodes - 1) {
            blocks.Put(clear, bits);
            startOver();
        } else if (++next > 1u << bits) {
            ++bits;
        }
    }
    blocks.Put(prefix, bits);
    // A reader makes one more string of the last code.
    if (next == 1u << bits && bits < 12) ++bits;
    blocks.Put(end, bits);
    blocks.Finish();
}

}  // namespace

bool WriteGif(const std::wstring& path, const IndexedPicture& picture, std::uint32_t width,
              std::uint32_t height) {
    Output output(path);
    // The table has 2, 4, 8 … 256 entries.
    const int tableBits = std::max(1, static_cast<int>(std::bit_width(picture.colours.size() - 1)));
    for (const char c : std::string_view("GIF89a")) output.Byte(static_cast<std::uint8_t>(c));
    output.Word(width);
    output.Word(height);
    output.Byte(0x80u | 7u << 4 | static_cast<std::uint32_t>(tableBits - 1));
    output.Byte(0);  // background
    output.Byte(0);  // square pixels
    for (std::size_t i = 0; i < std::size_t{1} << tableBits; ++i) {
        const Color8 colour = i < picture.colours.size() ? picture.colours[i] : Color8();
        output.Byte(colour.red);
        output.Byte(colour.green);
        output.Byte(colour.blue);
    }
    if (picture.transparent >= 0) {
        for (const std::uint32_t byte : {0x21u, 0xf9u, 4u, 1u, 0u, 0u}) output.Byte(byte);
        output.Byte(static_cast<std::uint32_t>(picture.transparent));
        output.Byte(0);
    }
    output.Byte(0x2c);
    output.Word(0);
    output.Word(0);
    output.Word(width);
    output.Word(height);
    output.Byte(0);
    WritePixels(output, picture.indices.get(), std::size_t{width} * height, std::max(2, tableBits));
    output.Byte(0x3b);
    return output.Finish();
}

}  // namespace skyvault
