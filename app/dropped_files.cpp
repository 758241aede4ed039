#include "app/dropped_files.h"

// After windows.h:
#include <shellapi.h>

namespace skyvault {
namespace {

/// Its memory is the system's: given back also when ours runs out.
struct Drop {
    HDROP handle;
    explicit Drop(HDROP h) : handle(h) {}
    ~Drop() { DragFinish(handle); }
    Drop(const Drop&) = delete;
    Drop& operator=(const Drop&) = delete;
};

}  // namespace

std::vector<std::wstring> TakeDroppedFiles(WPARAM dropped) {
    const Drop drop(reinterpret_cast<HDROP>(dropped));
    constexpr UINT kCount = 0xffffffff;
    std::vector<std::wstring> paths(DragQueryFileW(drop.handle, kCount, nullptr, 0));
    for (UINT i = 0; i < paths.size(); ++i) {
        std::wstring& path = paths[i];
        path.resize(std::size_t{DragQueryFileW(drop.handle, i, nullptr, 0)} + 1);
        path.resize(DragQueryFileW(drop.handle, i, path.data(), static_cast<UINT>(path.size())));
    }
    return paths;
}

}  // namespace skyvault
