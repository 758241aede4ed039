#include "platform/output_file.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cwchar>
#include <mutex>
#include <vector>

#include "platform/files.h"
#include "platform/path_text.h"
#include "platform/process.h"

namespace skyvault {

namespace {

constexpr int kMostTries = 100;

constexpr std::wstring_view kSuffix = L".part";
constexpr std::size_t kDomainDigits = 6;

/// The process domain as hexadecimal digits (FNV-1a).
std::wstring DomainDigits() {
    std::uint32_t hash = 2166136261u;
    for (const char c : ProcessDomain()) hash = (hash ^ static_cast<unsigned char>(c)) * 16777619u;
    std::wstring digits;
    for (std::size_t i = 0; i < kDomainDigits; ++i, hash >>= 4) digits += L"0123456789abcdef"[hash & 15];
    return digits;
}

/// ".pano.png.1234-5-0a1b2c.part": the target, the process, a number, the process domain.
std::wstring NewNameBeside(const std::wstring& target) {
    // A file's name may have 255 bytes, and a character four.
    constexpr std::size_t kLongestStart = 40;
    static std::atomic<std::uint32_t> counter{0};
    const std::wstring_view name = FileNamePart(target);
    std::wstring path = target.substr(0, target.size() - name.size());
    path.append(L".").append(name.substr(0, kLongestStart));
    path += L"." + std::to_wstring(ProcessId()) + L"-" + std::to_wstring(counter++) + L"-" + DomainDigits();
    return path.append(kSuffix);
}

/// The process that made a file of this name in this domain; 0 for all other names.
std::uint32_t MakerOf(std::wstring_view name) {
    const std::wstring end = L"-" + DomainDigits() + std::wstring(kSuffix);
    if (!name.starts_with(L'.') || !name.ends_with(end)) return 0;
    name.remove_suffix(end.size());
    const std::size_t dot = name.rfind(L'.');
    const std::wstring numbers(name.substr(dot + 1));
    wchar_t* rest = nullptr;
    const unsigned long id = std::wcstoul(numbers.c_str(), &rest, 10);
    return rest != numbers.c_str() && *rest == L'-' ? static_cast<std::uint32_t>(id) : 0;
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

OutputFile::OutputFile(std::wstring targetPath)
    : givenPath_(std::move(targetPath)), targetPath_(WrittenThrough(givenPath_)) {
    // Where nothing may be written, the writer finds no folder.
    if (targetPath_.empty()) return;
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
    if (!finished_ && !temporaryPath_.empty()) RemoveFile(temporaryPath_);
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

Outcome OutputFile::Failed() {
    const Cause cause = WhyNotWritten(givenPath_, temporaryPath_);
    return {
        .reason = Reason::CannotWrite, .file = givenPath_, .infoLog = {}, .otherFile = {}, .cause = cause};
}

void RemoveAbandonedOutputs(const std::wstring& folder) {
    // A bare file name has no folder: it lies in the current one.
    for (const std::wstring& name : FindFiles(folder.empty() ? L"." : folder)) {
        const std::uint32_t maker = MakerOf(name);
        if (maker != 0 && !ProcessRuns(maker)) RemoveFile(JoinPath(folder, name));
    }
}

bool AbandonPendingOutputs() {
    PendingFiles& pending = Pending();
    const std::lock_guard lock(pending.mutex);
    pending.abandoned = true;
    return std::all_of(pending.paths.begin(), pending.paths.end(), RemovePending);
}

}  // namespace skyvault
