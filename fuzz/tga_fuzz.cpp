#include "codecs/tga_reader.h"
#include "fuzz/require.h"
#include "platform/debug_line.h"

using namespace skyvault;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const DebugLineCapture quiet;
    Image image;
    if (ReadTga(BytesOf(data, size), L"fuzz.tga", image)) {
        Require(image.IsValid());
        LookAt({image.pixels.get(), image.ByteCount()});
    }
    return 0;
}
