// The console program's two output streams, and the key that interrupts it.
#pragma once

#include <functional>
#include <string_view>

namespace skyvault {

enum class OutputStream {
    Standard,  ///< stdout: what the program was asked for
    Messages,  ///< stderr: what it has to say meanwhile
};

/// Writes the text at once: as it is to a Windows console, as UTF-8 to everything else.
void WriteText(OutputStream stream, std::wstring_view text);

/// From now on WriteText writes nothing: the last word was said, and another thread may not know it yet.
void SayNoMore();
bool SaysNoMore();

/// Somebody watches: the stream is a terminal, neither a file nor a pipe.
bool IsTerminal(OutputStream stream);

/// Calls `interrupted` on a thread of its own at Ctrl+C, and when the system asks the program to end.
/// It should end the program. To be called once, before any other thread is started.
void OnInterrupt(std::function<void()> interrupted);

}  // namespace skyvault
