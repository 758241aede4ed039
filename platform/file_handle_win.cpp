#include <windows.h>

#include <algorithm>

#include "platform/file_handle.h"

namespace skyvault {

namespace {

// The system counts in 32 bits.
constexpr std::size_t kLargestStep = std::size_t{1} << 30;

}  // namespace

bool FileHandle::Open(const std::wstring& path, bool write, bool shared, bool* inUse) {
    const HANDLE handle =
        CreateFileW(path.c_str(), write ? GENERIC_WRITE : GENERIC_READ, shared ? FILE_SHARE_READ : 0, nullptr,
                    write ? OPEN_ALWAYS : OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (handle == INVALID_HANDLE_VALUE) {
        const DWORD reason = GetLastError();
        if (inUse != nullptr) *inUse = reason == ERROR_SHARING_VIOLATION || reason == ERROR_LOCK_VIOLATION;
        return false;
    }
    // "CON.tga" is the keyboard on some versions of the system; such a device may never end.
    if (!write && GetFileType(handle) != FILE_TYPE_DISK) {
        CloseHandle(handle);
        return false;
    }
    handle_ = handle;
    return true;
}

bool FileHandle::IsOpen() const {
    return handle_ != nullptr;
}

bool FileHandle::Read(void* destination, std::size_t n) {
    auto* bytes = static_cast<std::byte*>(destination);
    while (n > 0) {
        DWORD count = 0;
        const DWORD wanted = static_cast<DWORD>(std::min(n, kLargestStep));
        if (!ReadFile(handle_, bytes, wanted, &count, nullptr) || count == 0) return false;
        bytes += count;
        n -= count;
    }
    return true;
}

bool FileHandle::Write(const void* source, std::size_t n) {
    const auto* bytes = static_cast<const std::byte*>(source);
    while (n > 0) {
        DWORD count = 0;
        const DWORD wanted = static_cast<DWORD>(std::min(n, kLargestStep));
        if (!WriteFile(handle_, bytes, wanted, &count, nullptr) || count == 0) return false;
        bytes += count;
        n -= count;
    }
    return true;
}

bool FileHandle::Seek(std::uint64_t position) {
    LARGE_INTEGER target{};
    target.QuadPart = static_cast<LONGLONG>(position);
    return SetFilePointerEx(handle_, target, nullptr, FILE_BEGIN);
}

std::uint64_t FileHandle::Size() const {
    LARGE_INTEGER size{};
    return GetFileSizeEx(handle_, &size) ? static_cast<std::uint64_t>(size.QuadPart) : 0;
}

bool FileHandle::Truncate(std::uint64_t size) {
    return Seek(size) && SetEndOfFile(handle_);
}

bool FileHandle::Close() {
    if (!handle_) return true;
    const bool closed = CloseHandle(handle_);
    handle_ = nullptr;
    return closed;
}

}  // namespace skyvault
