#include "platform/scratch_folder.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <string_view>

#include "platform/clock.h"
#include "platform/files.h"
#include "platform/output_file.h"
#include "platform/path_text.h"

namespace skyvault {

namespace {

constexpr std::int64_t kSecondsOfADay = 24 * 60 * 60;
constexpr int kMostTries = 100;

std::int64_t SecondsNow() {
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::seconds>(now).count();
}

/// Of folders among those of other programs.
constexpr std::wstring_view kSharedPrefix = L"Skyvault-";

// A folder is named by the second it was made in, then by what tells it from others: "1700000000-81235-0".
std::wstring NewName() {
    static std::atomic<std::uint32_t> counter{0};
    return std::to_wstring(SecondsNow()) + L"-" + std::to_wstring(MillisecondClock()) + L"-" +
           std::to_wstring(counter++);
}

/// When a folder of this name was made; 0 for a name that is none of ours.
std::int64_t MadeAt(std::wstring_view name, std::wstring_view prefix) {
    constexpr std::size_t kMostDigits = 12;
    if (!name.starts_with(prefix)) return 0;
    name.remove_prefix(prefix.size());
    const std::size_t digits = name.find_first_not_of(L"0123456789");
    if (digits == 0 || digits > kMostDigits || name[digits] != L'-') return 0;
    std::int64_t seconds = 0;
    for (std::size_t i = 0; i < digits; ++i) seconds = seconds * 10 + (name[i] - L'0');
    return seconds;
}

void RemoveAbandoned(const std::wstring& parent, std::wstring_view prefix) {
    const std::int64_t now = SecondsNow();
    for (const std::wstring& name : FindFiles(parent)) {
        const std::int64_t made = MadeAt(name, prefix);
        if (made > 0 && now - made > kSecondsOfADay) RemoveFolderOfFiles(JoinPath(parent, name));
    }
}

/// A new folder in the parent; empty when none can be made.
std::wstring MakeFolderIn(const std::wstring& parent, std::wstring_view prefix) {
    if (parent.empty()) return {};
    RemoveAbandoned(parent, prefix);
    for (int i = 0; i < kMostTries; ++i) {
        std::wstring path = JoinPath(parent, std::wstring(prefix) + NewName());
        AddPendingOutput(path);
        if (MakeOneFolder(path)) return path;
        ForgetPendingOutput(path);
    }
    return {};
}

}  // namespace

ScratchFolder::ScratchFolder() : path_(MakeFolderIn(TemporaryFilesFolder(), L"")) {
    if (path_.empty()) path_ = MakeFolderIn(SystemTemporaryFolder(), kSharedPrefix);
}

ScratchFolder::~ScratchFolder() {
    if (path_.empty()) return;
    RemoveFolderOfFiles(path_);
    ForgetPendingOutput(path_);
}

std::wstring ScratchFolder::Path(const std::wstring& name) const {
    return path_.empty() ? path_ : JoinPath(path_, name);
}

}  // namespace skyvault
