// Loading the module of OpenImageIO.

#include <dlfcn.h>

#include <atomic>
#include <string>

#include "codecs/oiio_codec_posix.h"
#include "platform/files.h"
#include "platform/path_text.h"
#include "platform/utf8.h"

namespace skyvault {

namespace {

struct Library {
    const OiioFunctions* functions = nullptr;
    std::wstring trouble;
};

void* FindEntry(void* module) {
    return module ? dlsym(module, kOiioSymbol) : nullptr;
}

Library Load() {
    Library library;
    const std::wstring folder = ProgramFolder();
    if (folder.empty()) {
        // A bare name would be looked for in the system's folders.
        library.trouble = L"The picture library could not be loaded: the program's folder is not known";
        return library;
    }
    const std::wstring path = JoinPath(folder, L"skyvault-oiio.so");
    // Never unloaded: its libraries keep threads and destructors.
    const std::string name = ToSystemBytes(path);
    void* const entry = FindEntry(dlopen(name.c_str(), RTLD_LAZY | RTLD_LOCAL));
    if (!entry) {
        const char* const reason = dlerror();
        library.trouble =
            L"The picture library could not be loaded: " + FromSystemBytes(reason ? reason : "");
        return library;
    }
    library.functions = reinterpret_cast<OiioEntry>(entry)();
    if (library.functions->version != kOiioVersion) {
        library.functions = nullptr;
        library.trouble = L"The picture library \"" + path + L"\" belongs to another version of the program";
    }
    return library;
}

// Null until a picture needed it.
std::atomic<const Library*> loaded{nullptr};

}  // namespace

const OiioFunctions* Oiio() {
    static const Library* const library = new Library(Load());
    loaded = library;
    return library->functions;
}

std::wstring CodecTrouble() {
    const Library* const library = loaded;
    return library ? library->trouble : std::wstring();
}

OiioChannel OiioChannelOf(PixelFormat format) {
    switch (ChannelType(format)) {
        case ChannelKind::Int16:
            return OiioChannel::Word;
        case ChannelKind::Half:
            return OiioChannel::Half;
        default:
            return OiioChannel::Byte;
    }
}

int ChannelCount(PixelFormat format) {
    const std::uint32_t channelBytes = ChannelType(format) == ChannelKind::Int8 ? 1 : 2;
    return static_cast<int>(BytesPerPixel(format) / channelBytes);
}

}  // namespace skyvault
