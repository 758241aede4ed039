#include "codecs/tiff_file_posix.h"

#include <utility>
#include <vector>

#include "codecs/picture_header.h"
#include "codecs/tiff_directories.h"
#include "codecs/tiff_page_posix.h"
#include "codecs/tiff_pixels_posix.h"
#include "codecs/tiff_source_posix.h"

namespace skyvault {

struct TiffFile::State {
    template <typename From>
    explicit State(const From& from) : source(from) {
        std::byte start[kPictureHeaderSize];
        const std::size_t count = source.ReadSome(0, start, sizeof start);
        isTiff = ReadPictureHeader({start, count}).kind == PictureKind::Tiff;
        if (isTiff) directories = FindTiffDirectories(readAt);
    }

    bool Select(std::uint32_t number);

    TiffSource source;
    const ReadFileAt readAt = [this](std::uint64_t at, void* to, std::size_t n) {
        return source.ReadSome(at, to, n) == n;
    };
    bool isTiff = false;
    std::vector<std::uint64_t> directories;
    TiffHandle handle{nullptr, TIFFClose};
    TiffPage page;
    PictureFacts facts;
};

bool TiffFile::State::Select(std::uint32_t number) {
    constexpr std::uint32_t kExtraSamples = 338;
    handle.reset();
    page = TiffPage();
    source.position = 0;
    source.errors = 0;
    if (number >= directories.size()) return false;
    handle = OpenTiff(source);
    TIFF* const tiff = handle.get();
    const std::uint64_t directory = directories[number];
    std::uint64_t largestChunk = 0;
    if (!tiff || !TIFFSetSubDirectory(tiff, directory) ||
        !ReadTiffPage(tiff, !TiffDirectoryHas(readAt, directory, kExtraSamples), page) ||
        !CheckTiffChunks(source, tiff, page, largestChunk) || source.errors != 0) {
        return false;
    }
    facts = FactsOf(page, largestChunk);
    facts.frameCount = static_cast<std::uint32_t>(directories.size());
    return true;
}

TiffFile::TiffFile(const std::wstring& path) : state_(std::make_unique<State>(path)) {}
TiffFile::TiffFile(std::span<const std::byte> file) : state_(std::make_unique<State>(file)) {}
TiffFile::~TiffFile() = default;

bool TiffFile::IsTiff() const {
    return state_->isTiff;
}

bool TiffFile::Select(std::uint32_t page) {
    const bool sound = state_->Select(page);
    if (!sound) state_->handle.reset();
    return sound;
}

const PictureFacts& TiffFile::Facts() const {
    return state_->facts;
}

bool TiffFile::Read(Image& image) {
    State& state = *state_;
    if (!state.handle) return false;
    const PictureFacts& facts = state.facts;
    Image decoded(facts.size.width, facts.size.height, facts.format);
    if (!decoded.IsValid() || !ReadTiffPixels(state.source, state.handle.get(), state.page, decoded))
        return false;
    decoded.frameCount = facts.frameCount;
    if (facts.frameCount > 1) decoded.frameDelay = 100;  // as of animations that tell none
    image = std::move(decoded);
    return true;
}

}  // namespace skyvault
