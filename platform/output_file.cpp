#include "platform/output_file.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <mutex>
#include <vector>

#include "platform/clock.h"
#include "platform/files.h"
#include "platform/path_text.h"

namespace skyvault {

namespace {

constexpr int kMostTries = 100;

std::wstring NewNameBeside(const std::wstring& target) {
    static std::atomic<std::uint32_t> counter{0};
    const std::wstring_view name = FileNamePart(target);
    const std::wstring_view folder = std::wstring_view(target).substr(0, target.size() - name.size());
    const std::size_t dot = name.rfind(L'.');
    const std::wstring_view extension = dot == std::wstring_view::npos ? L"" : name.substr(dot);
    std::wstring path(folder);
    path += L"Skyvault-" + std::to_wstring(MillisecondClock()) + L"-" + std::to_wstring(counter++);
    return path += extension;
}

// The temporary files and folders that may be on disk. Renaming happens under the lock, so that an abandoned
// file can no longer get its name.
struct PendingFiles {
    std::mutex mutex;
    std::vector<std::wstring> paths;
    bool abandoned = false;
};

// Not destroyed at exit: an interruption may come later than the end of main.
PendingFiles& Pending() {
    static PendingFiles& pending = *new PendingFiles;
    return pending;
}

bool RemovePending(const std::wstring& path) {
    if (FolderExists(path)) return RemoveFolderOfFiles(path);
    return !FileExists(path) || RemoveFile(path);
}

}  // namespace

void AddPendingOutput(const std::wstring& path) {
    PendingFiles& pending = Pending();
    const std::lock_guard lock(pending.mutex);
    pending.paths.push_back(path);
}

void ForgetPendingOutput(const std::wstring& path) {
    PendingFiles& pending = Pending();
    const std::lock_guard lock(pending.mutex);
    std::erase(pending.paths, path);
}

OutputFile::OutputFile(std::wstring targetPath) : targetPath_(std::move(targetPath)) {
    // The name is taken by making the file: another program, on this machine or on another one that shares
    // the folder, may come upon the same name at the same moment.
    for (int i = 0; i < kMostTries; ++i) {
        temporaryPath_ = NewNameBeside(targetPath_);
        if (FileExists(temporaryPath_) || FolderExists(temporaryPath_)) continue;
        AddPendingOutput(temporaryPath_);
        // Where no file can be made, the writer will find out.
        if (MakeNewFile(temporaryPath_) || !FileExists(temporaryPath_)) return;
        ForgetPendingOutput(temporaryPath_);
    }
}

OutputFile::~OutputFile() {
    PendingFiles& pending = Pending();
    const std::lock_guard lock(pending.mutex);
    if (!finished_) RemoveFile(temporaryPath_);
    std::erase(pending.paths, temporaryPath_);
}

bool OutputFile::Commit() {
    PendingFiles& pending = Pending();
    const std::lock_guard lock(pending.mutex);
    if (finished_) return true;
    // No file of ours is empty: nothing was written into this one.
    finished_ = !pending.abandoned && FileSizeOf(temporaryPath_) > 0 && MoveOver(temporaryPath_, targetPath_);
    if (!finished_) RemoveFile(temporaryPath_);
    return finished_;
}

bool AbandonPendingOutputs() {
    PendingFiles& pending = Pending();
    const std::lock_guard lock(pending.mutex);
    pending.abandoned = true;
    return std::all_of(pending.paths.begin(), pending.paths.end(), RemovePending);
}

}  // namespace skyvault
