#include "session/messages.h"

#include <algorithm>
#include <cstdint>

#include "platform/path_text.h"

namespace skyvault {
namespace {

const wchar_t* TextOf(Cause cause) {
    switch (cause) {
        case Cause::Unknown:
            return L"";
        case Cause::NoFolder:
            return L": there is no such folder";
        case Cause::IsFolder:
            return L": it is a folder";
        case Cause::NotAPlainFile:
            return L": it is a pipe, a device or a link that leads nowhere";
        case Cause::ReadOnlyFile:
            return L": the file is write-protected";
        case Cause::NoPermission:
            return L": writing into the folder is not allowed";
        case Cause::ReadOnlySystem:
            return L": the disk is write-protected";
        case Cause::NameTooLong:
            return L": the name is too long";
        case Cause::DiskFull:
            return L": the disk is full";
        case Cause::FileTooLarge:
            return L": the file is larger than is allowed";
        case Cause::DeepPixels:
            return L": deep pictures are not read";
        case Cause::SeveralParts:
            return L": files of several parts are not read";
        case Cause::ColoursNotRgb:
            return L": its colours are not red, green and blue";
        case Cause::UnknownPacking:
            return L": its compression is not read";
        case Cause::NoFile:
            return L": there is no such file";
        case Cause::NotReadable:
            return L": reading it is not allowed";
        case Cause::InUse:
            return L": another program has it open";
        case Cause::Empty:
            return L": it is empty";
        case Cause::CutShort:
            return L": it is cut short";
        case Cause::NotAPicture:
            return L": it is not a picture";
        case Cause::KindNotRead:
            return L": pictures of its kind are not read";
        case Cause::MisnamedPicture:
            return L": it is a picture of another kind than its name says";
        case Cause::Damaged:
            return L": it is damaged, or stored in a way that is not read";
    }
    return L"";
}

/// Tenths of a gigabyte, or whole megabytes; what is needed is never told as less, what is allowed never as
/// more than it is.
std::wstring MemoryText(std::uint64_t bytes, bool roundUp) {
    constexpr std::uint64_t kMega = std::uint64_t{1} << 20, kGiga = std::uint64_t{1} << 30;
    const bool giga = bytes >= kGiga;
    const std::uint64_t whole = giga ? kGiga : kMega, parts = giga ? 10 : 1;
    const std::uint64_t rest = bytes % whole * parts;
    const std::uint64_t count = bytes / whole * parts + rest / whole + (roundUp && rest % whole != 0 ? 1 : 0);
    if (!giga) return std::to_wstring(count) + L" MB";
    return std::to_wstring(count / 10) + L"." + std::to_wstring(count % 10) + L" GB";
}

}  // namespace

std::wstring MessageOf(const Outcome& outcome) {
    const std::wstring file = Quoted(outcome.file);
    switch (outcome.reason) {
        case Reason::Done:
        case Reason::PictureMissing:
            return {};
        case Reason::NoMemory:
            return L"Out of memory";
        case Reason::NeedsMemory:
            return file + L" needs " + MemoryText(outcome.bytesNeeded, true) + L" of memory, of which " +
                   MemoryText(outcome.bytesAllowed, false) + L" may be used";
        case Reason::CannotOpen:
            return L"Could not open " + file + TextOf(outcome.cause);
        case Reason::LibraryFailed:
            return L"Could not open " + file + L": a picture library broke down on it";
        case Reason::CannotWrite:
        case Reason::PageIncomplete:
        case Reason::NothingToShow:
            return L"Could not write " + file + TextOf(outcome.cause);
        case Reason::NoScratchFolder:
            return L"Could not make a folder for temporary files";
        case Reason::TooNarrow:
            return file + L" is too narrow for a panorama: its faces would be empty";
        case Reason::NotACubicMovie:
            return L"This is not a cubic VR movie";
        case Reason::NoFrontFace:
            return L"Could not write " + file + L": there is no front face, which decides the pixel format";
        case Reason::ReplacesSource:
            return L"Could not write " + file + L": it is one of the source files";
        case Reason::ReplacesOtherFile:
            return L"Could not write " + file + L": it is there already, and not one of this program's pages";
        case Reason::SharesResult:
            return file + L" has the same result as " + Quoted(outcome.otherFile);
        case Reason::CannotCreateFolder:
            return L"Could not create the folder " + file;
        case Reason::SameFolders:
            return L"Destination folder must be different from the source folder";
        case Reason::NoSourceFolder:
            return L"Source folder does not exist";
        case Reason::NoDestinationFolder:
            return L"Destination folder does not exist";
        case Reason::NoSourceFiles:
            return L"No files found in source folder";
        case Reason::CannotSaveSettings:
            return L"Could not open:\n\n" + file;
    }
    return {};
}

std::vector<std::wstring> FaceTroubles(const Panorama& panorama, const std::vector<std::wstring>& paths) {
    constexpr const wchar_t* kNames[kFaceCount] = {L"front", L"right", L"back", L"left", L"top", L"bottom"};
    const auto sizeText = [](std::uint32_t width, std::uint32_t height) {
        return std::to_wstring(width) + L" x " + std::to_wstring(height);
    };
    std::vector<std::wstring> lines;
    for (std::size_t f = 0; f < panorama.faces.size() && f < paths.size(); ++f) {
        const Image& face = panorama.faces[f];
        const std::uint32_t size = panorama.faceSize;
        if (paths[f].empty()) continue;
        if (!face.IsValid()) {
            const auto& failures = panorama.faceFailures;
            const auto why = std::find_if(failures.begin(), failures.end(),
                                          [&](const Outcome& failure) { return failure.file == paths[f]; });
            lines.push_back(LineOf(why != failures.end() ? *why : Failure(Reason::CannotOpen, paths[f])) +
                            L"; there is no " + kNames[f] + L" face");
        } else if (face.width != size || face.height != size) {
            lines.push_back(L"The " + std::wstring(kNames[f]) + L" face " + Quoted(paths[f]) + L" is " +
                            sizeText(face.width, face.height) + L", not " + sizeText(size, size));
        }
    }
    return lines;
}

std::vector<std::wstring> MetadataTroubles(const std::wstring& photo, const std::vector<std::wstring>& lost) {
    std::vector<std::wstring> lines;
    lines.reserve(lost.size());
    for (const std::wstring& clause : lost) lines.push_back(Quoted(photo) + L": " + clause);
    return lines;
}

std::wstring LineOf(const Outcome& outcome) {
    if (outcome.IsDone()) return {};
    if (outcome.reason == Reason::PictureMissing) {
        return L"Could not open " + Quoted(outcome.file) + TextOf(outcome.cause);
    }
    const std::wstring message = MessageOf(outcome);
    const bool named = outcome.file.empty() || message.find(Printable(outcome.file)) != std::wstring::npos;
    return named ? message : message + L": " + Quoted(outcome.file);
}

}  // namespace skyvault
