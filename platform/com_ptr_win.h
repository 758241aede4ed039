// Owner of one reference to a COM object.
#pragma once

#include <windows.h>

#include <unknwn.h>

#include <cstddef>
#include <utility>

namespace skyvault {

template <typename T>
class ComPtr {
  public:
    ComPtr() = default;
    ComPtr(std::nullptr_t) {}
    ComPtr(const ComPtr& other) : object_(other.object_) {
        if (object_) object_->AddRef();
    }
    ComPtr(ComPtr&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
    ComPtr& operator=(ComPtr other) noexcept {
        std::swap(object_, other.object_);
        return *this;
    }
    ~ComPtr() { Reset(); }

    /// Takes over a reference that the caller holds.
    static ComPtr Attach(T* object) {
        ComPtr owner;
        owner.object_ = object;
        return owner;
    }

    void Reset() {
        if (T* object = std::exchange(object_, nullptr)) object->Release();
    }

    T* Get() const { return object_; }
    T* operator->() const { return object_; }
    explicit operator bool() const { return object_ != nullptr; }

    /// Where a function puts the reference it gives away; what was held is released first.
    T** Put() {
        Reset();
        return &object_;
    }
    void** PutVoid() { return reinterpret_cast<void**>(Put()); }

    /// The object's other interface; null when it has none.
    template <typename U>
    ComPtr<U> As(const IID& iid) const {
        ComPtr<U> other;
        if (object_) object_->QueryInterface(iid, other.PutVoid());
        return other;
    }

  private:
    T* object_ = nullptr;
};

}  // namespace skyvault
