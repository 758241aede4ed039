// Functions of system libraries that are not needed before the first paint.
//
// A library named when linking is loaded, with those it needs itself, before the program's first line; these
// come with their first use, and stay.
#pragma once

#include <windows.h>

namespace skyvault {

/// Finds the function unless it is known already; false when the system does not have it.
template <typename Function>
bool FindSystemFunction(Function& function, const wchar_t* library, const char* name) {
    if (function != nullptr) return true;
    const HMODULE module = LoadLibraryExW(library, nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32);
    if (module != nullptr)
        function = reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(module, name)));
    return function != nullptr;
}

}  // namespace skyvault
