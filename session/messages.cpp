#include "session/messages.h"

#include "platform/path_text.h"

namespace skyvault {

std::wstring MessageOf(const Outcome& outcome) {
    const std::wstring file = Quoted(outcome.file);
    switch (outcome.reason) {
        case Reason::Done:
        case Reason::PictureMissing:
            return {};
        case Reason::NoMemory:
            return L"Out of memory";
        case Reason::CannotOpen:
            return L"Could not open " + file;
        case Reason::CannotWrite:
        case Reason::NothingToShow:
            return L"Could not write " + file;
        case Reason::NotACubicMovie:
            return L"This is not a cubic VR movie";
        case Reason::NoFrontFace:
            return L"Could not write " + file + L": there is no front face, which decides the pixel format";
        case Reason::ReplacesSource:
            return L"Could not write " + file + L": it is one of the source files";
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

std::wstring LineOf(const Outcome& outcome) {
    if (outcome.IsDone()) return {};
    if (outcome.reason == Reason::PictureMissing) return L"Could not open " + Quoted(outcome.file);
    const std::wstring message = MessageOf(outcome);
    const bool named = outcome.file.empty() || message.find(outcome.file) != std::wstring::npos;
    return named ? message : message + L": " + Quoted(outcome.file);
}

}  // namespace skyvault
