// Composes the atoms of a movie file: each is its size (32 bits, big-endian, everything included), its type
// (four characters), and a body that may hold further atoms.
//
// Whoever writes an atom states where it begins and how long it is; both are checked, so that the source
// reads as a table of the file. The composition is constexpr: composed once in a static_assert, a byte too
// many is an error of the compiler's.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "codecs/bytes.h"

namespace skyvault {

/// Where an atom begins in the file, and its size.
struct AtomPlace {
    std::size_t offset, size;
};

template <std::size_t fileSize>
class AtomWriter {
  public:
    constexpr void U8(std::uint32_t value) {
        Check(position_ < fileSize && value <= 0xff);
        bytes_[position_++] = static_cast<std::byte>(value);
    }
    constexpr void U16(std::uint32_t value) {
        Check(position_ + 2 <= fileSize && value <= 0xffff);
        SetBig16(&bytes_[position_], value);
        position_ += 2;
    }
    constexpr void U32(std::uint32_t value) {
        Check(position_ + 4 <= fileSize);
        SetBig32(&bytes_[position_], value);
        position_ += 4;
    }
    constexpr void Float(float value) { U32(std::bit_cast<std::uint32_t>(value)); }
    constexpr void Zeros(std::size_t count) {
        for (std::size_t i = 0; i < count; ++i) U8(0);
    }
    constexpr void Text(std::string_view text) {
        for (const char c : text) U8(static_cast<std::uint8_t>(c));
    }
    /// A length byte, then the characters.
    constexpr void PascalText(std::string_view text) {
        U8(static_cast<std::uint32_t>(text.size()));
        Text(text);
    }
    /// The same in a field of a fixed size, zeros behind.
    constexpr void PascalText(std::string_view text, std::size_t fieldSize) {
        PascalText(text);
        Zeros(fieldSize - 1 - text.size());
    }

    /// An atom; body() writes what follows size and type.
    template <typename Body>
    constexpr void Atom(AtomPlace place, std::string_view type, Body&& body) {
        Check(position_ == place.offset && type.size() == 4);
        U32(static_cast<std::uint32_t>(place.size));
        Text(type);
        body();
        Check(position_ == place.offset + place.size);
    }
    constexpr void Atom(AtomPlace place, std::string_view type) {
        Atom(place, type, [] {});
    }

    /// The kind of atom that makes up "QT atom containers": ID and number of children follow size and type.
    template <typename Body>
    constexpr void QtAtom(AtomPlace place, std::string_view type, std::uint32_t id, std::uint32_t childCount,
                          Body&& body) {
        Atom(place, type, [&] {
            U32(id);
            U16(0);
            U16(childCount);
            U32(0);
            body();
        });
    }
    /// What a QT atom container begins with: reserved, lock count 0.
    constexpr void QtContainerHeader() { Zeros(12); }

    /// The file; everything must have been written.
    constexpr const std::array<std::byte, fileSize>& Bytes() const {
        Check(position_ == fileSize);
        return bytes_;
    }

  private:
    /// Not an assert, which release builds leave out of constant expressions too.
    static constexpr void Check(bool ok) {
        if (!ok) std::abort();
    }

    std::array<std::byte, fileSize> bytes_{};
    std::size_t position_ = 0;
};

}  // namespace skyvault
