#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "codecs/tga_reader.h"
#include "platform/debug_line.h"

using namespace skyvault;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const DebugLineCapture quiet;
    Image image;
    if (ReadTga({reinterpret_cast<const std::byte*>(data), size}, L"fuzz.tga", image)) {
        // What was read is whole: every pixel can be looked at, and none is uninitialised.
        if (!image.IsValid()) std::abort();
        std::size_t sum = 0;
        for (std::size_t i = 0; i < image.ByteCount(); ++i)
            sum += std::to_integer<std::size_t>(image.pixels[i]);
        volatile std::size_t sink = sum;
        static_cast<void>(sink);
    }
    return 0;
}
