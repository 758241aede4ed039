// The growable array whose failure to grow is a result, not an exception.
#pragma once

#include <cstdint>
#include <cstring>
#include <type_traits>
#include <utility>

#include "platform/memory.h"

namespace skyvault {

/// T must be trivially copyable; new elements are uninitialised.
template <typename T>
class MVector {
    static_assert(std::is_trivially_copyable_v<T>);

  public:
    std::int32_t Count() const { return count_; }
    T* Data() { return data_.get(); }
    const T* Data() const { return data_.get(); }
    T& operator[](std::int32_t i) { return data_.get()[i]; }
    const T& operator[](std::int32_t i) const { return data_.get()[i]; }

    /// True when the array now has the count. keepContents: the old elements stay (as many as fit);
    /// otherwise the old buffer is released before the new one is asked for. Without memory the line
    /// "MVector: out of memory exception\n" goes to the debugger channel and the result is false; the
    /// array is then unchanged with keepContents and empty without.
    bool Resize(std::int32_t count, bool keepContents) {
        if (count == count_) return true;
        if (count < 0) return false;
        if (!(keepContents && count_ > 0)) Release();
        std::unique_ptr<T[], FreeDeleter> fresh;
        if (count > 0) {
            fresh.reset(static_cast<T*>(AllocateForMVector(sizeof(T) * static_cast<std::size_t>(count))));
            if (!fresh) return false;
            const std::int32_t kept = count < count_ ? count : count_;
            if (kept > 0) std::memcpy(fresh.get(), data_.get(), sizeof(T) * static_cast<std::size_t>(kept));
        }
        data_ = std::move(fresh);
        count_ = count;
        return true;
    }

    void Release() {
        data_.reset();
        count_ = 0;
    }

  private:
    std::int32_t count_ = 0;
    std::unique_ptr<T[], FreeDeleter> data_;
};

}  // namespace skyvault
