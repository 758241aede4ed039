// decode-picture FILE OUT: the first frame of a picture file as the program holds it, for
// tools/check-foreign-pictures. OUT becomes a PAM file: 8 or 16 bits a channel, red first, and TUPLTYPE ends
// in _HALF where the 16 bits are half floats. Exit status 1, with a line that says why, for what is refused.

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "codecs/picture_files.h"
#include "platform/debug_line.h"
#include "platform/utf8.h"
#include "session/messages.h"

namespace skyvault {
namespace {

/// The channels in the file's order: red first, and of 16 bits the upper byte.
void OrderRow(const Image& image, std::uint32_t y, std::vector<std::byte>& row) {
    const std::uint32_t channels =
        BytesPerPixel(image.format) / (ChannelType(image.format) == ChannelKind::Int8 ? 1 : 2);
    const std::byte* const from = image.Row(y);
    row.assign(from, from + image.stride);
    if (ChannelType(image.format) != ChannelKind::Int8) {
        for (std::size_t i = 0; i + 1 < row.size(); i += 2) std::swap(row[i], row[i + 1]);
    } else if (channels >= 3) {
        for (std::size_t i = 0; i + 2 < row.size(); i += channels) std::swap(row[i], row[i + 2]);
    }
}

bool WritePam(const Image& image, const std::string& path) {
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "wb"), &std::fclose);
    if (!file) return false;
    const ChannelKind kind = ChannelType(image.format);
    const std::uint32_t channels = BytesPerPixel(image.format) / (kind == ChannelKind::Int8 ? 1 : 2);
    std::fprintf(file.get(), "P7\nWIDTH %u\nHEIGHT %u\nDEPTH %u\nMAXVAL %d\nTUPLTYPE %s%s\nENDHDR\n",
                 image.width, image.height, channels, kind == ChannelKind::Int8 ? 255 : 65535,
                 channels == 1   ? "GRAYSCALE"
                 : channels == 3 ? "RGB"
                                 : "RGB_ALPHA",
                 kind == ChannelKind::Half ? "_HALF" : "");
    std::vector<std::byte> row;
    for (std::uint32_t y = 0; y < image.height; ++y) {
        OrderRow(image, y, row);
        if (std::fwrite(row.data(), row.size(), 1, file.get()) != 1) return false;
    }
    return std::fflush(file.get()) == 0;
}

int Decode(const std::string& from, const std::string& to) {
    const DebugLineCapture capture;  // what developers read stays away from the reason
    Image image;
    const Outcome read = LoadPicture(FromSystemBytes(from), image);
    if (!read.IsDone()) {
        std::printf("%s\n", ToSystemBytes(LineOf(read)).c_str());
        return 1;
    }
    if (WritePam(image, to)) return 0;
    std::printf("%s cannot be written\n", to.c_str());
    return 2;
}

}  // namespace
}  // namespace skyvault

int main(int argc, char** argv) {
    return argc == 3 ? skyvault::Decode(argv[1], argv[2]) : 2;
}
