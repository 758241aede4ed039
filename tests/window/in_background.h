// For dialogs shown without the program: their thread.
#pragma once

#include <objbase.h>

#include <functional>
#include <thread>
#include <utility>

namespace skyvault::test {

/// Does something that waits for the user, on a user-interface thread of its own.
class InBackground {
  public:
    explicit InBackground(std::function<void()> what)
        : thread_([what = std::move(what)] {
              CoInitialize(nullptr);
              what();
              CoUninitialize();
          }) {}
    ~InBackground() { Join(); }
    InBackground(const InBackground&) = delete;
    InBackground& operator=(const InBackground&) = delete;
    void Join() {
        if (thread_.joinable()) thread_.join();
    }

  private:
    std::thread thread_;
};

}  // namespace skyvault::test
