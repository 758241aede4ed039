#include "codecs/hdr_file.h"
#include "fuzz/half_picture.h"

using namespace skyvault;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    ReadHalfPicture(BytesOf(data, size), kHdrHeaderLimit, InspectHdr, ReadHdr);
    return 0;
}
