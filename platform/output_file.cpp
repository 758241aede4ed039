#include "platform/output_file.h"

#include <atomic>
#include <cstdint>

#include "platform/clock.h"
#include "platform/files.h"
#include "platform/path_text.h"

namespace skyvault {

namespace {

// The clock part keeps two programs apart that write to the same folder.
std::wstring FreeNameBeside(const std::wstring& target) {
    static std::atomic<std::uint32_t> counter{0};
    const std::wstring_view name = FileNamePart(target);
    const std::wstring_view folder = std::wstring_view(target).substr(0, target.size() - name.size());
    const std::size_t dot = name.rfind(L'.');
    const std::wstring_view extension = dot == std::wstring_view::npos ? L"" : name.substr(dot);
    for (;;) {
        std::wstring path(folder);
        path += L"Skyvault-" + std::to_wstring(MillisecondClock()) + L"-" + std::to_wstring(counter++);
        path += extension;
        if (!FileExists(path) && !FolderExists(path)) return path;
    }
}

}  // namespace

OutputFile::OutputFile(std::wstring targetPath)
    : targetPath_(std::move(targetPath)), temporaryPath_(FreeNameBeside(targetPath_)) {}

OutputFile::~OutputFile() {
    if (!committed_) RemoveFile(temporaryPath_);
}

bool OutputFile::Commit() {
    if (committed_) return true;
    committed_ = MoveOver(temporaryPath_, targetPath_);
    if (!committed_) RemoveFile(temporaryPath_);
    return committed_;
}

}  // namespace skyvault
