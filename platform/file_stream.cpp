#include "platform/file_stream.h"

#include <algorithm>
#include <atomic>

#include "platform/clock.h"
#include "platform/file_handle.h"

namespace skyvault {

namespace {

constexpr int kAttempts = 10;
constexpr std::uint32_t kMillisecondsBetween = 100;

std::atomic<bool> shareAndFailAtOnce{false};

bool OpenPatiently(FileHandle& handle, const std::wstring& path, FileUse use) {
    const bool write = use == FileUse::Write;
    if (path.empty()) return false;
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        const bool atOnce = shareAndFailAtOnce;
        bool inUse = false;
        if (handle.Open(path, write, use == FileUse::ReadShared || (atOnce && !write), &inUse)) return true;
        if (atOnce || !inUse) return false;
        SleepMilliseconds(kMillisecondsBetween);
    }
    return false;
}

}  // namespace

struct FileStream::State {
    FileHandle handle;
    bool writing = false;
    std::uint64_t position = 0;    // of the next byte to write
    std::uint64_t writtenEnd = 0;  // one past the last byte ever written
};

void SetShareAndFailAtOnce(bool on) {
    shareAndFailAtOnce = on;
}

FileStream::FileStream(const std::wstring& path, FileUse use) {
    auto state = std::make_unique<State>();
    state->writing = use == FileUse::Write;
    if (!OpenPatiently(state->handle, path, use)) return;
    state_ = std::move(state);
}

FileStream::~FileStream() {
    Close();
}

FileStream::FileStream(FileStream&&) noexcept = default;

FileStream& FileStream::operator=(FileStream&& other) noexcept {
    if (this != &other) {
        Close();
        state_ = std::move(other.state_);
    }
    return *this;
}

bool FileStream::IsOpen() const {
    return state_ != nullptr;
}

bool FileStream::Read(void* destination, std::size_t n) {
    return state_ && !state_->writing && state_->handle.Read(destination, n);
}

bool FileStream::Write(const void* source, std::size_t n) {
    if (!state_ || !state_->writing || !state_->handle.Write(source, n)) return false;
    state_->position += n;
    if (n > 0) state_->writtenEnd = std::max(state_->writtenEnd, state_->position);
    return true;
}

bool FileStream::Seek(std::uint64_t position) {
    if (!state_ || !state_->handle.Seek(position)) return false;
    state_->position = position;
    return true;
}

std::uint64_t FileStream::Size() const {
    return state_ ? state_->handle.Size() : 0;
}

bool FileStream::Close() {
    if (!state_) return true;
    bool ok = true;
    if (state_->writing) ok = state_->handle.Truncate(state_->writtenEnd);
    if (!state_->handle.Close()) ok = false;
    state_.reset();
    return ok;
}

bool ReadWholeFile(const std::wstring& path, std::vector<std::byte>& bytes, std::uint64_t limit,
                   FileUse use) {
    bytes.clear();
    FileStream file(path, use);
    if (!file.IsOpen()) return false;
    const std::uint64_t size = file.Size();
    if (size > limit) return false;
    try {
        bytes.resize(static_cast<std::size_t>(size));
    } catch (const std::exception&) {
        return false;
    }
    if (file.Read(bytes.data(), bytes.size())) return true;
    bytes.clear();
    return false;
}

}  // namespace skyvault
