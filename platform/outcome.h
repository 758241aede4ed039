// What became of an operation: the one answer of everything that imports, renders, exports, generates, reads
// or writes. session/messages.h words it for the user.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace skyvault {

enum class Reason {
    Done,
    NoMemory,         ///< what there was memory for may be there
    NeedsMemory,      ///< a picture whose decoding takes bytesNeeded, of which bytesAllowed may be used
    CannotOpen,       ///< no such file, or nothing that can be read
    CannotWrite,      ///< an older file of that name stays as it was
    LibraryFailed,    ///< a picture library broke down on the file
    PictureMissing,   ///< a generator did without its palette or texture; the panorama is whole
    TooNarrow,        ///< fewer than four pixels across, so that the faces would be empty
    NotACubicMovie,   ///< its pictures make no cube
    NoFrontFace,      ///< nothing can be written: the front face decides the pixel format
    NothingToShow,    ///< the panorama has no picture of that kind, or the window no room for it
    PageIncomplete,   ///< the web page's picture is there; `file` is one beside it that is not
    NoScratchFolder,  ///< there is no place for temporary files
    // What stands in the way of a batch, or of one of its panoramas.
    SameFolders,
    NoSourceFolder,
    NoDestinationFolder,
    NoSourceFiles,
    ReplacesSource,     ///< the result would replace one of the source files
    SharesResult,       ///< otherFile has the same result
    ReplacesOtherFile,  ///< a file of somebody else's, whose name was not asked for
    CannotCreateFolder,
    // Of the settings file.
    CannotSaveSettings,
};

/// Why a file could not be read or written, as far as it and the system tell.
enum class Cause {
    Unknown,
    NoFolder,
    IsFolder,
    NotAPlainFile,  ///< a pipe, socket or device, or a link that leads nowhere
    ReadOnlyFile,
    NoPermission,  ///< of the folder
    ReadOnlySystem,
    NameTooLong,
    DiskFull,
    FileTooLarge,  ///< for the file system, or the limit set for the process
    // Pictures of a kind that is read, made in a way that is not.
    DeepPixels,     ///< several values for a pixel, at depths of their own
    SeveralParts,   ///< several pictures in one file
    ColoursNotRgb,  ///< luminance and chroma, XYZ, or channels without colours
    UnknownPacking,
    // Of reading.
    NoFile,
    NotReadable,  ///< reading the file is not allowed
    InUse,        ///< another program does not share it
    Empty,
    CutShort,
    NotAPicture,
    KindNotRead,      ///< a picture, but of a kind that is not read here
    MisnamedPicture,  ///< a picture of another kind than its name says
    Damaged,          ///< of a kind that is read, and there to its end as far as that is seen
};

struct [[nodiscard]] Outcome {
    Reason reason = Reason::Done;
    std::wstring file = {};       ///< the one the reason is about; empty when the caller knows it
    std::wstring infoLog = {};    ///< describes what was written, in tab-separated lines; of a picture read,
                                  ///< in a line, what of it could not be kept
    std::wstring otherFile = {};  ///< of reasons that are about two files
    Cause cause = Cause::Unknown;
    std::uint64_t bytesNeeded = 0, bytesAllowed = 0;
    std::vector<std::wstring> lost = {};  ///< what of a photo's metadata was left out, a clause each

    bool IsDone() const { return reason == Reason::Done; }
};

inline Outcome Failure(Reason reason, std::wstring file = {}) {
    return {.reason = reason, .file = std::move(file)};
}

/// The first of two that is no success: what follows a failure mostly follows from it.
inline Outcome FirstFailure(Outcome first, Outcome second) {
    return first.IsDone() ? std::move(second) : std::move(first);
}

}  // namespace skyvault
