#include "image/jpeg_end.h"

#include <algorithm>
#include <cstdint>

namespace skyvault {
namespace {

constexpr std::byte kMarker{0xff}, kStartOfImage{0xd8}, kEndOfImage{0xd9}, kStartOfScan{0xda};

/// Restart markers, stuffed zeros and repeated 0xFF belong to the scan they stand in.
bool EndsScan(std::byte code) {
    const bool restart = code >= std::byte{0xd0} && code <= std::byte{0xd7};
    return !restart && code != std::byte{0} && code != kMarker;
}

/// The offset of the next marker's 0xFF behind the scan's data; the file's size when there is none.
std::size_t EndOfScan(std::span<const std::byte> file, std::size_t at) {
    while (at + 1 < file.size()) {
        at = static_cast<std::size_t>(
            std::find(file.begin() + static_cast<std::ptrdiff_t>(at), file.end(), kMarker) - file.begin());
        if (at + 1 < file.size() && EndsScan(file[at + 1])) return at;
        ++at;
    }
    return file.size();
}

}  // namespace

bool JpegReachesItsEnd(std::span<const std::byte> file) {
    if (file.size() < 2 || file[0] != kMarker || file[1] != kStartOfImage) return false;
    std::size_t at = 2;
    while (at + 3 < file.size() || (at + 1 < file.size() && file[at + 1] == kEndOfImage)) {
        if (file[at] != kMarker) return false;
        const std::byte code = file[at + 1];
        if (code == kEndOfImage) return true;
        if (code == kMarker) {  // fill bytes
            ++at;
            continue;
        }
        // The length counts its own two bytes.
        at +=
            2 + std::to_integer<std::size_t>(file[at + 2]) * 256 + std::to_integer<std::size_t>(file[at + 3]);
        if (code == kStartOfScan) at = EndOfScan(file, at);
    }
    return false;
}

}  // namespace skyvault
