#include "qtvr/qtvr_export.h"

#include <algorithm>
#include <limits>
#include <vector>

#include "image/picture_files.h"
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

/// Saves the faces one after the other, so that only one is in memory. False when one could not be saved.
bool SaveFaces(Panorama& panorama, std::uint32_t faceEdge, PixelFormat format, const FacePaths& paths,
               FaceSizes& sizes) {
    bool all = true;
    for (std::size_t f = 0; f < kFaceCount; ++f) {
        Image face;
        all = BuildFace(panorama, face, static_cast<CubeFace>(f), faceEdge, format) &&
              SavePicture(face, paths[f]) && all;
        sizes[f] = FileSizeOf(paths[f]);
        DebugLine(L"CubeFace " + std::to_wstring(f) + L": " + std::to_wstring(sizes[f]) + L" bytes\n");
    }
    return all;
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

bool WriteQuickTimeVr(Panorama& panorama, const std::wstring& path, std::int32_t faceEdge, PixelFormat format,
                      std::wstring* infoLog, MissingFaces missing) {
    if (path.empty() || faceEdge <= 0 || panorama.IsEmpty()) return false;
    const auto edge = static_cast<std::uint32_t>(faceEdge);

    // Opened before the faces are built: a place that cannot be written to is found out at once.
    OutputFile output(path);
    FileStream movie(output.TemporaryPath(), FileUse::Write);
    if (!movie.IsOpen()) return false;
    {
        const ScratchFolder scratch;
        FacePaths paths;
        for (std::size_t f = 0; f < kFaceCount; ++f) paths[f] = scratch.Path(std::to_wstring(f) + L".jpg");
        FaceSizes sizes{};
        if (!SaveFaces(panorama, edge, format, paths, sizes) && missing == MissingFaces::Refuse) return false;
        if (!WriteMovie(movie, edge, paths, sizes)) return false;
    }
    if (!output.Commit()) return false;

    if (infoLog) {
        const std::wstring edgeText = std::to_wstring(faceEdge);
        *infoLog += L"Path\t\t" + path + L"\n" +                                  //
                    L"Size\t\t" + FileSizeText(FileSizeOf(path)) + L"\n" +        //
                    L"Resolution\t6 x " + edgeText + L" x " + edgeText + L"\n" +  //
                    L"Projection\tCubemap\n" +                                    //
                    L"Format\t\t" + FormatName(format) + L"\n";
    }
    return true;
}

bool ExportQuickTimeVr(Panorama& panorama, const std::wstring& path, std::wstring& infoLog) {
    if (path.empty() || panorama.IsEmpty()) return false;
    const PixelFormat format = ExportPixelFormat(panorama, false);
    if (format == PixelFormat::None) return false;
    constexpr std::uint32_t kLargestSource = std::numeric_limits<std::int32_t>::max();
    const auto sourceSize = static_cast<std::int32_t>(std::min(panorama.faceSize, kLargestSource));
    const std::int32_t faceEdge = ChooseExportSize(panorama, SizeKind::CubeMap, sourceSize, false, true);
    return WriteQuickTimeVr(panorama, path, faceEdge, format, &infoLog, MissingFaces::Refuse);
}

}  // namespace skyvault
