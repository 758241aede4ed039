#include "codecs/tiff_source_posix.h"

#include <algorithm>
#include <cstdarg>

#include "platform/memory_budget.h"

namespace skyvault {

namespace {

TiffSource& SourceOf(thandle_t handle) {
    return *static_cast<TiffSource*>(handle);
}

tmsize_t ReadSource(thandle_t handle, void* to, tmsize_t n) {
    TiffSource& source = SourceOf(handle);
    const std::size_t count = n > 0 ? source.ReadSome(source.position, to, static_cast<std::size_t>(n)) : 0;
    source.position += count;
    return static_cast<tmsize_t>(count);
}

tmsize_t WriteNothing(thandle_t, void*, tmsize_t) {
    return -1;
}

toff_t SeekSource(thandle_t handle, toff_t offset, int whence) {
    TiffSource& source = SourceOf(handle);
    const std::uint64_t from = whence == SEEK_CUR ? source.position : whence == SEEK_END ? source.Size() : 0;
    return source.position = from + offset;
}

int KeepSource(thandle_t) {
    return 0;
}

toff_t SizeOfSource(thandle_t handle) {
    return SourceOf(handle).Size();
}

// Nothing is printed: messages are only counted.
int CountError(TIFF*, void* source, const char*, const char*, va_list) {
    ++static_cast<TiffSource*>(source)->errors;
    return 1;
}

int CountWarning(TIFF*, void* source, const char*, const char*, va_list) {
    ++static_cast<TiffSource*>(source)->warnings;
    return 1;
}

}  // namespace

TiffHandle OpenTiff(TiffSource& source) {
    const std::unique_ptr<TIFFOpenOptions, void (*)(TIFFOpenOptions*)> options(TIFFOpenOptionsAlloc(),
                                                                               TIFFOpenOptionsFree);
    if (!options) return {nullptr, TIFFClose};
    TIFFOpenOptionsSetErrorHandlerExtR(options.get(), CountError, &source);
    TIFFOpenOptionsSetWarningHandlerExtR(options.get(), CountWarning, &source);
    // Whether the picture itself is too large is found out before it is decoded.
    constexpr std::uint64_t kAlways = std::uint64_t{64} << 20;
    const std::uint64_t most = std::clamp<std::uint64_t>(MemoryBudget(), kAlways, PTRDIFF_MAX);
    TIFFOpenOptionsSetMaxSingleMemAlloc(options.get(), static_cast<tmsize_t>(most));
    return {TIFFClientOpenExt("", "rhm", &source, ReadSource, WriteNothing, SeekSource, KeepSource,
                              SizeOfSource, nullptr, nullptr, options.get()),
            TIFFClose};
}

}  // namespace skyvault
