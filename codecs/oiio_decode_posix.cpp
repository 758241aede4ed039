// Decoding through OpenImageIO, with the results the platform codecs of the desktop give: what the file
// stores and no more. Nothing is turned by orientation tags, converted by colour profiles or multiplied by
// alpha; palettes, CMYK and everything else that none of our formats can hold becomes 32-bit colour.

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "codecs/oiio_codec_posix.h"
#include "codecs/picture_header.h"
#include "image/area_scale.h"
#include "platform/file_stream.h"
#include "platform/files.h"
#include "platform/memory_budget.h"
#include "platform/utf8.h"

namespace skyvault {
namespace {

constexpr int kMostFrames = 65536;

const char* OiioName(PictureKind kind) {
    switch (kind) {
        case PictureKind::Heif:
            return "heif";
        case PictureKind::Webp:
            return "webp";
        default:
            return nullptr;  // not through this library
    }
}

bool ReadHeader(const std::wstring& path, PictureHeader& header) {
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(ToSystemBytes(path).c_str(), "rb"),
                                                               &std::fclose);
    if (!file) return false;
    std::byte start[kPictureHeaderSize];
    const std::size_t count = std::fread(start, 1, sizeof start, file.get());
    header = ReadPictureHeader({start, count});
    return header.sound;
}

/// An open file, set to one of its frames.
struct OpenPicture {
    PictureHeader header;
    std::uint64_t fileSize = 0;
    const OiioFunctions* oiio = nullptr;
    std::unique_ptr<void, void (*)(void*)> input{nullptr, [](void*) {}};
    OiioFacts facts{};
    std::uint32_t frameCount = 1;

    /// Looks at the file without a codec: whether its header can be believed, and the size it tells.
    bool Inspect(const std::wstring& path);
    Outcome Open(const std::wstring& path, std::uint32_t frame);
    bool CountFrames(std::uint32_t frame);
};

std::uint64_t MemoryOf(const OpenPicture& picture, PixelFormat format);

bool OpenPicture::CountFrames(std::uint32_t frame) {
    int count = 1;
    while (count < kMostFrames && oiio->selectFrame(input.get(), count)) ++count;
    frameCount = static_cast<std::uint32_t>(count);
    return frame < frameCount;
}

/// What decoding takes at most when the picture gets the format.
std::uint64_t MemoryOf(const OpenPicture& picture, PixelFormat format) {
    const PictureHeader& header = picture.header;
    std::uint64_t width = header.width, height = header.height;
    if (picture.facts.width > 0) {
        width = static_cast<std::uint64_t>(picture.facts.width);
        height = static_cast<std::uint64_t>(picture.facts.height);
    }
    // Beside the picture: a GIF's canvas and what was on it before; colours with subsampling, and what
    // becomes of them.
    return width * height * (BytesPerPixel(format) + 8);
}

bool OpenPicture::Inspect(const std::wstring& path) {
    // Opening a pipe would wait for its other end.
    if (!std::filesystem::is_regular_file(ToSystemBytes(path)) || !ReadHeader(path, header)) return false;
    fileSize = FileSizeOf(path);
    return PlausibleSize(header.width, header.height, fileSize);
}

Outcome OpenPicture::Open(const std::wstring& path, std::uint32_t frame) {
    if (!Inspect(path) || !OiioName(header.kind)) return Failure(Reason::CannotOpen, path);
    // Some codecs do their work, or ask for their memory, as soon as they have the file.
    Outcome within = WithinMemoryBudget(path, MemoryOf(*this, PixelFormat::Grey8));
    if (!within.IsDone()) return within;
    oiio = Oiio();
    if (!oiio) return Failure(Reason::CannotOpen, path);
    const std::string name = ToSystemBytes(path);
    input = {oiio->openInput(name.c_str(), OiioName(header.kind)), oiio->closeInput};
    const bool open = input && CountFrames(frame) &&
                      oiio->selectFrame(input.get(), static_cast<int>(frame)) &&
                      oiio->describe(input.get(), &facts) && facts.width >= 1 && facts.height >= 1 &&
                      facts.depth <= 1 && facts.channels >= 1;
    const auto width = static_cast<std::uint32_t>(facts.width),
               height = static_cast<std::uint32_t>(facts.height);
    // Sizes that the header tells were looked at.
    const bool believed = header.width == width && header.height == height;
    if (!open || (!believed && !PlausibleSize(width, height, fileSize)))
        return Failure(Reason::CannotOpen, path);
    return {};
}

/// How the channels of a file become those of a picture.
struct Plan {
    PixelFormat format;
    OiioChannel readAs;       ///< channel type to ask for
    int channels;             ///< how many of the file's channels are read: 1 to 4
    bool alpha;               ///< the last of them is alpha
    bool multiplied = false;  ///< colours have been multiplied by alpha
};

std::size_t BytesOf(OiioChannel channel) {
    return channel == OiioChannel::Byte ? 1 : 2;
}

Plan MakePlan(const OpenPicture& picture) {
    using enum PixelFormat;
    const OiioFacts& facts = picture.facts;
    Plan plan{};
    plan.channels = std::min(facts.channels, 4);
    plan.alpha = facts.alphaChannel == plan.channels - 1 && plan.channels % 2 == 0;
    if (!plan.alpha) plan.channels = plan.channels >= 3 ? 3 : 1;
    plan.multiplied = plan.alpha && !facts.alphaUnassociated;

    const bool grey = plan.channels == 1;
    if (!plan.multiplied) {
        switch (facts.stored) {
            case OiioChannel::Byte:
                plan.format = plan.alpha ? Rgba8 : grey ? Grey8 : Rgb8;
                break;
            case OiioChannel::Word:
                plan.format = plan.alpha ? Rgba16 : grey ? Grey16 : Rgb16;
                break;
            case OiioChannel::Half:
                plan.format = plan.alpha ? RgbaHalf : grey ? GreyHalf : RgbHalf;
                break;
            default:
                plan.format = Rgba8;
        }
    } else {
        plan.format = Rgba8;
    }
    plan.readAs = OiioChannelOf(plan.format);
    return plan;
}

/// Channels as read, red first, to those of the picture: grey is repeated, alpha that is not there is full.
template <typename Channel>
void SpreadChannels(const Channel* from, const Plan& plan, Channel opaque, Channel* to, int toChannels,
                    std::size_t count) {
    const bool grey = plan.channels <= 2;
    for (std::size_t i = 0; i < count; ++i, from += plan.channels, to += toChannels) {
        for (int channel = 0; channel < 3; ++channel) to[channel] = from[grey ? 0 : channel];
        if (toChannels == 4) to[3] = plan.alpha ? from[plan.channels - 1] : opaque;
    }
}

void DivideByAlpha(Image& image) {
    for (std::uint32_t y = 0; y < image.height; ++y) {
        std::uint8_t* pixel = reinterpret_cast<std::uint8_t*>(image.Row(y));
        for (std::uint32_t x = 0; x < image.width; ++x, pixel += 4) {
            const int alpha = pixel[3];
            if (alpha == 0 || alpha == 255) continue;
            for (int channel = 0; channel < 3; ++channel) {
                pixel[channel] =
                    static_cast<std::uint8_t>(std::min(255, (pixel[channel] * 255 + alpha / 2) / alpha));
            }
        }
    }
}

/// Whether pixels are read as they are stored in the picture.
bool ReadsInPlace(const Plan& plan) {
    return plan.channels == ChannelCount(plan.format);
}

/// What is known of an open picture.
PictureFacts FactsOf(const OpenPicture& picture, const Plan& plan) {
    PictureFacts facts;
    facts.size = {static_cast<std::uint32_t>(picture.facts.width),
                  static_cast<std::uint32_t>(picture.facts.height)};
    facts.format = plan.format;
    facts.frameCount = picture.frameCount;
    facts.memory = MemoryOf(picture, plan.format);
    if (!ReadsInPlace(plan)) {
        facts.memory += std::uint64_t{facts.size.width} * facts.size.height *
                        static_cast<std::uint64_t>(plan.channels) * BytesOf(plan.readAs);
    }
    return facts;
}

bool ReadPixels(OpenPicture& picture, const Plan& plan, Image& image) {
    const auto read = [&](void* memory) {
        return picture.oiio->readPixels(picture.input.get(), plan.channels, plan.readAs, memory);
    };
    const int toChannels = ChannelCount(image.format);
    if (ReadsInPlace(plan)) {
        if (!read(image.pixels.get())) return false;
    } else {
        const std::size_t rowBytes = std::size_t{image.width} * plan.channels * BytesOf(plan.readAs);
        const ByteBuffer memory = AllocateBytes(rowBytes * image.height);
        if (!memory || !read(memory.get())) return false;
        for (std::uint32_t y = 0; y < image.height; ++y) {
            const std::byte* const from = memory.get() + rowBytes * y;
            std::byte* const to = image.Row(y);
            if (BytesOf(plan.readAs) == 1) {
                SpreadChannels(reinterpret_cast<const std::uint8_t*>(from), plan, std::uint8_t{255},
                               reinterpret_cast<std::uint8_t*>(to), toChannels, image.width);
            } else {
                const std::uint16_t opaque = ChannelType(image.format) == ChannelKind::Half ? 0x3c00 : 0xffff;
                SpreadChannels(reinterpret_cast<const std::uint16_t*>(from), plan, opaque,
                               reinterpret_cast<std::uint16_t*>(to), toChannels, image.width);
            }
        }
    }
    if (plan.multiplied) DivideByAlpha(image);
    if (ChannelType(image.format) == ChannelKind::Int8) image.SwapRedAndBlue();
    return true;
}

}  // namespace

Outcome DecodeWithOiio(const std::wstring& path, std::uint32_t frame, const PictureSize& target,
                       Image& image) {
    OpenPicture picture;
    Outcome done = picture.Open(path, frame);
    if (!done.IsDone()) return done;
    const Plan plan = MakePlan(picture);
    const PictureFacts facts = FactsOf(picture, plan);
    done = WithinMemoryBudget(path, facts.memory);
    if (!done.IsDone()) return done;
    Image decoded(facts.size.width, facts.size.height, plan.format);
    if (!decoded.IsValid() || !ReadPixels(picture, plan, decoded) || !ScaleInto(target, decoded)) {
        return Failure(Reason::CannotOpen, path);
    }
    decoded.frameCount = picture.frameCount;
    if (picture.frameCount > 1) decoded.frameDelay = 100;  // as of animations that tell none
    image = std::move(decoded);
    return {};
}

Outcome InspectWithOiio(const std::wstring& path, PictureFacts& facts) {
    OpenPicture picture;
    Outcome done = picture.Open(path, 0);
    if (done.IsDone()) facts = FactsOf(picture, MakePlan(picture));
    return done;
}

}  // namespace skyvault
