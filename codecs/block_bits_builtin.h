// The 128 bits of a block, filled from the lowest upwards.
#pragma once

#include <cassert>
#include <cstdint>

#include "codecs/bytes.h"

namespace skyvault {

class BlockBits {
  public:
    /// value: of `count` bits, at most 63.
    void Put(std::uint64_t value, int count) {
        assert(value >> count == 0 && at_ + count <= 128);
        if (at_ < 64) low_ |= value << at_;
        if (at_ >= 64) high_ |= value << (at_ - 64);
        if (at_ < 64 && at_ + count > 64) high_ |= value >> (64 - at_);
        at_ += count;
    }

    /// block: 16 bytes.
    void Store(std::byte* block) const {
        assert(at_ == 128);
        SetLittle32(block, static_cast<std::uint32_t>(low_));
        SetLittle32(block + 4, static_cast<std::uint32_t>(low_ >> 32));
        SetLittle32(block + 8, static_cast<std::uint32_t>(high_));
        SetLittle32(block + 12, static_cast<std::uint32_t>(high_ >> 32));
    }

  private:
    std::uint64_t low_ = 0, high_ = 0;
    int at_ = 0;
};

}  // namespace skyvault
