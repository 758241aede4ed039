// The module behind oiio_interface.h: OpenImageIO and nothing of the program.

#include <OpenImageIO/filesystem.h>
#include <OpenImageIO/imageio.h>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <string>

#include "codecs/oiio/oiio_interface.h"

namespace skyvault {
namespace {

void PrepareOiio() {
    static const bool prepared = [] {
        // The program's row loops are the only thing that runs on more than one thread.
        OIIO::attribute("threads", 1);
        OIIO::attribute("limits:channels", 64);
        OIIO::attribute("limits:imagesize_MB", 16 * 1024);
        return true;
    }();
    static_cast<void>(prepared);
}

/// What function returns, or nothing when it throws.
template <typename Function>
auto Guarded(Function&& function) noexcept -> decltype(function()) {
    try {
        return function();
    } catch (...) {
        return {};
    }
}

OIIO::TypeDesc TypeOf(OiioChannel channel) {
    switch (channel) {
        case OiioChannel::Word:
            return OIIO::TypeDesc::UINT16;
        case OiioChannel::Half:
            return OIIO::TypeDesc::HALF;
        case OiioChannel::Float:
            return OIIO::TypeDesc::FLOAT;
        default:
            return OIIO::TypeDesc::UINT8;
    }
}

OiioChannel ChannelOf(const OIIO::TypeDesc& type) {
    switch (type.basetype) {
        case OIIO::TypeDesc::UINT8:
            return OiioChannel::Byte;
        case OIIO::TypeDesc::UINT16:
            return OiioChannel::Word;
        case OIIO::TypeDesc::HALF:
            return OiioChannel::Half;
        case OIIO::TypeDesc::FLOAT:
        case OIIO::TypeDesc::DOUBLE:
            return OiioChannel::Float;
        default:
            return OiioChannel::Other;
    }
}

struct Input {
    std::unique_ptr<OIIO::ImageInput> file;

    explicit Input(const char* kind) : file(OIIO::ImageInput::create(kind)) {}
    Input(const Input&) = delete;
    Input& operator=(const Input&) = delete;
    // Messages that nobody fetched would be printed.
    ~Input() {
        if (file) static_cast<void>(file->geterror());
        static_cast<void>(OIIO::geterror());
    }
};

void* OpenInput(const char* path, const char* kind) {
    return Guarded([&]() -> void* {
        PrepareOiio();
        auto input = std::make_unique<Input>(kind);
        OIIO::ImageSpec spec, hints;
        hints.attribute("oiio:UnassociatedAlpha", 1);
        if (!input->file || !input->file->open(path, spec, hints)) return nullptr;
        return input.release();
    });
}

bool SelectFrame(void* input, int frame) {
    return Guarded([&] {
        OIIO::ImageInput& file = *static_cast<Input*>(input)->file;
        const bool found = file.seek_subimage(frame, 0);
        if (!found) static_cast<void>(file.geterror());
        return found;
    });
}

bool Describe(void* input, OiioFacts* facts) {
    return Guarded([&] {
        const OIIO::ImageSpec spec = static_cast<Input*>(input)->file->spec();
        *facts = {spec.width,
                  spec.height,
                  spec.depth,
                  spec.nchannels,
                  spec.alpha_channel,
                  ChannelOf(spec.format),
                  spec.get_int_attribute("oiio:UnassociatedAlpha", 0) != 0};
        return true;
    });
}

bool ReadPixels(void* input, int channels, OiioChannel as, void* pixels) {
    return Guarded([&] {
        OIIO::ImageInput& file = *static_cast<Input*>(input)->file;
        return file.read_image(file.current_subimage(), 0, 0, channels, TypeOf(as), pixels);
    });
}

void CloseInput(void* input) {
    delete static_cast<Input*>(input);
}

/// The file that OpenImageIO writes to. Not every writer looks at what writing returns, and some end the
/// process when a disk is full, so errors are kept here and asked for at the end.
class OutputProxy final : public OIIO::Filesystem::IOProxy {
  public:
    explicit OutputProxy(const std::string& path)
        : IOProxy(path, Write), file_(std::fopen(path.c_str(), "wb"), &std::fclose) {
        if (!file_) m_mode = Closed;
    }

    const char* proxytype() const override { return "skyvault"; }

    bool seek(std::int64_t offset) override {
        const bool ok = fseeko(file_.get(), offset, SEEK_SET) == 0;
        if (ok) m_pos = offset;
        failed_ |= !ok;
        return ok;
    }
    size_t write(const void* bytes, size_t count) override {
        const std::size_t written = std::fwrite(bytes, 1, count, file_.get());
        m_pos += static_cast<std::int64_t>(written);
        size_ = std::max(size_, static_cast<std::size_t>(m_pos));
        failed_ |= written != count;
        return written;
    }
    size_t size() const override { return size_; }

    /// Closes the file; false when anything at all has failed.
    bool Finish() {
        failed_ |= !file_ || std::fclose(file_.release()) != 0;
        m_mode = Closed;
        return !failed_;
    }

  private:
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> file_;
    std::size_t size_ = 0;
    bool failed_ = false;
};

struct Output {
    OutputProxy proxy;
    OIIO::TypeDesc type;
    std::unique_ptr<OIIO::ImageOutput> file;  // writes to the proxy until it is gone

    Output(const char* path, const char* kind, const OIIO::TypeDesc& channelType)
        : proxy(path), type(channelType), file(OIIO::ImageOutput::create(kind)) {}
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;
    ~Output() {
        if (file) static_cast<void>(file->geterror());
        static_cast<void>(OIIO::geterror());
    }
};

void* OpenOutput(const char* path, const char* kind, int width, int height, int channels, OiioChannel type) {
    return Guarded([&]() -> void* {
        PrepareOiio();
        auto output = std::make_unique<Output>(path, kind, TypeOf(type));
        if (!output->proxy.opened() || !output->file) return nullptr;
        OIIO::ImageSpec spec(width, height, channels, output->type);
        spec.attribute("oiio:UnassociatedAlpha", 1);
        OIIO::Filesystem::IOProxy* const proxy = &output->proxy;
        spec.attribute("oiio:ioproxy", OIIO::TypeDesc::PTR, &proxy);
        if (output->file->open(path, spec)) return output.release();
        output->file->close();
        return nullptr;
    });
}

bool WriteRows(void* output, int firstRow, int endRow, const void* pixels) {
    return Guarded([&] {
        Output& to = *static_cast<Output*>(output);
        return to.file->write_scanlines(firstRow, endRow, 0, to.type, pixels);
    });
}

bool CloseOutput(void* output) {
    const std::unique_ptr<Output> owned(static_cast<Output*>(output));
    return Guarded([&] {
        const bool closed = owned->file->close();
        return owned->proxy.Finish() && closed;
    });
}

}  // namespace
}  // namespace skyvault

extern "C" __attribute__((visibility("default"))) const skyvault::OiioFunctions* skyvaultOiio();

extern "C" const skyvault::OiioFunctions* skyvaultOiio() {
    using namespace skyvault;
    static constexpr OiioFunctions kFunctions = {
        kOiioVersion, OpenInput,  SelectFrame, Describe,    ReadPixels,
        CloseInput,   OpenOutput, WriteRows,   CloseOutput,
    };
    return &kFunctions;
}
