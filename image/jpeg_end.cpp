#include "image/jpeg_end.h"

#include <algorithm>

namespace skyvault {
namespace {

constexpr std::byte kMarker{0xff}, kStartOfImage{0xd8}, kEndOfImage{0xd9}, kTemporary{0x01};

/// Restart markers, stuffed zeros and repeated 0xFF are data of the scan they stand in.
bool IsData(std::byte code) {
    return (code >= std::byte{0xd0} && code <= std::byte{0xd7}) || code == std::byte{0} || code == kMarker;
}

/// The offset of the next marker's 0xFF, past a scan's data and whatever else stands there; the file's size
/// when there is none.
std::size_t NextMarker(std::span<const std::byte> file, std::size_t at) {
    while (at + 1 < file.size()) {
        at = static_cast<std::size_t>(
            std::find(file.begin() + static_cast<std::ptrdiff_t>(at), file.end(), kMarker) - file.begin());
        if (at + 1 < file.size() && !IsData(file[at + 1])) return at;
        ++at;
    }
    return file.size();
}

}  // namespace

bool JpegReachesItsEnd(std::span<const std::byte> file) {
    if (file.size() < 2 || file[0] != kMarker || file[1] != kStartOfImage) return false;
    for (std::size_t at = NextMarker(file, 2); at < file.size(); at = NextMarker(file, at)) {
        const std::byte code = file[at + 1];
        if (code == kEndOfImage) return true;
        at += 2;
        if (code == kTemporary || code == kStartOfImage) continue;  // no segment behind them
        if (at + 1 >= file.size()) return false;
        // The length counts its own two bytes.
        at += std::to_integer<std::size_t>(file[at]) * 256 + std::to_integer<std::size_t>(file[at + 1]);
    }
    return false;
}

}  // namespace skyvault
