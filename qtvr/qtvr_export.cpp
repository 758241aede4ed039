#include "qtvr/qtvr_export.h"

#include <limits>
#include <vector>

#include "codecs/dds_cube_map.h"
#include "codecs/picture_files.h"
#include "platform/debug_line.h"
#include "platform/file_stream.h"
#include "platform/files.h"
#include "platform/output_file.h"
#include "platform/scratch_folder.h"
#include "projection/build_faces.h"
#include "projection/export_size.h"
#include "qtvr/movie_template.h"

namespace skyvault {

namespace {

/// A movie's offsets and sizes have 32 bits.
constexpr std::uint64_t kMostPictureBytes = std::numeric_limits<std::uint32_t>::max() - kMovieHeaderSize;

using FacePaths = std::array<std::wstring, kFaceCount>;
using FaceSizes = std::array<std::uint64_t, kFaceCount>;

/// Saves the faces one after the other, so that only one is in memory.
Outcome SaveFaces(const Panorama& panorama, const ExportRequest& request, std::uint32_t faceEdge,
                  PixelFormat format, const FacePaths& paths, FaceSizes& sizes) {
    Outcome outcome;
    for (std::size_t f = 0; f < kFaceCount; ++f) {
        Image face;
        Outcome saved = BuildFace(panorama, face, static_cast<CubeFace>(f), faceEdge, format,
                                  EmptyColour(request.settings));
        if (saved.IsDone()) saved = SavePicture(face, paths[f], {.quality = request.settings.jpegQuality});
        // The temporary picture's name would tell the user nothing.
        saved.file.clear();
        outcome = FirstFailure(std::move(outcome), std::move(saved));
        sizes[f] = FileSizeOf(paths[f]);
        DebugLine(L"CubeFace " + std::to_wstring(f) + L": " + std::to_wstring(sizes[f]) + L" bytes\n");
    }
    return outcome;
}

bool AppendFile(FileStream& movie, const std::wstring& path, std::uint64_t size) {
    std::vector<std::byte> bytes;
    return ReadWholeFile(path, bytes, size) && bytes.size() == size &&
           movie.Write(bytes.data(), bytes.size());
}

bool WriteMovie(FileStream& movie, std::uint32_t faceEdge, const FacePaths& paths, const FaceSizes& sizes) {
    std::uint64_t sum = 0;
    std::array<std::uint32_t, kFaceCount> jpegSizes{};
    for (std::size_t f = 0; f < kFaceCount; ++f) {
        sum += sizes[f];
        if (sum > kMostPictureBytes) return false;
        jpegSizes[f] = static_cast<std::uint32_t>(sizes[f]);
    }
    const MovieHeader header = MakeMovieHeader(faceEdge, jpegSizes);
    if (!movie.Write(header.data(), header.size())) return false;
    for (std::size_t f = 0; f < kFaceCount; ++f) {
        if (sizes[f] > 0 && !AppendFile(movie, paths[f], sizes[f])) return false;
    }
    return movie.Close();
}

}  // namespace

Outcome WriteQuickTimeVr(const Panorama& panorama, const ExportRequest& request, std::uint32_t faceEdge) {
    PixelFormat format = PixelFormat::None;
    Outcome asked = FormatOfExport(panorama, request, format);
    if (!asked.IsDone()) return asked;
    const std::wstring& path = request.path;
    if (path.empty()) return Failure(Reason::CannotWrite);

    // Opened before the faces are built: a place that cannot be written to is found out at once.
    OutputFile output(path);
    FileStream movie(output.TemporaryPath(), FileUse::Write);
    if (!movie.IsOpen()) return output.Failed();
    {
        const ScratchFolder scratch;
        if (!scratch.Exists()) return Failure(Reason::NoScratchFolder);
        FacePaths paths;
        for (std::size_t f = 0; f < kFaceCount; ++f) paths[f] = scratch.Path(std::to_wstring(f) + L".jpg");
        FaceSizes sizes{};
        Outcome saved = SaveFaces(panorama, request, faceEdge, format, paths, sizes);
        if (!saved.IsDone()) return saved;
        if (!WriteMovie(movie, faceEdge, paths, sizes)) return output.Failed();
    }
    if (!output.Commit()) return output.Failed();
    return {.infoLog = CubeMapInfo(path, faceEdge, format)};
}

Outcome ExportQuickTimeVr(const Panorama& panorama, const ExportRequest& request, Feedback& feedback,
                          Image&) {
    if (panorama.IsEmpty()) return Failure(Reason::NothingToShow);
    const std::int32_t faceEdge =
        ChooseExportSize(request, SizeKind::CubeMap, SourceFaceSize(panorama), feedback);
    return WriteQuickTimeVr(panorama, request, static_cast<std::uint32_t>(faceEdge));
}

}  // namespace skyvault
