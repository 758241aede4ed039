#include "app/message_box.h"

#include <windows.h>

namespace skyvault {
namespace {

// Only the user-interface thread shows messages and runs batches.
int switchedOff = 0;

}  // namespace

void ShowMessage(const std::wstring& text, bool isError) {
    if (switchedOff > 0) return;
    MessageBoxW(nullptr, text.c_str(), kProgramName,
                MB_OK | MB_TASKMODAL | (isError ? MB_ICONERROR : MB_ICONINFORMATION));
}

MessageBoxesOff::MessageBoxesOff() {
    ++switchedOff;
}

MessageBoxesOff::~MessageBoxesOff() {
    --switchedOff;
}

}  // namespace skyvault
