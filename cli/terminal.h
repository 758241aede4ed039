// The console program's two output streams, and the key that interrupts it.
#pragma once

#include <functional>
#include <string_view>

namespace skyvault {

enum class OutputStream {
    Standard,  ///< stdout: what the program was asked for
    Messages,  ///< stderr: what it has to say meanwhile
};

/// Writes the text at once: as it is to a Windows console, as UTF-8 to everything else. Control characters
/// but tabs and ends of line become "\x1B" and so on.
void WriteText(OutputStream stream, std::wstring_view text);

/// False once something could not be written to the stream: it is closed, or its disk full.
bool IsWholeSoFar(OutputStream stream);

/// From now on WriteText writes nothing: the last word was said, and another thread may not know it yet.
void SayNoMore();
bool SaysNoMore();

/// Somebody watches: the stream is a terminal, neither a file nor a pipe.
bool IsTerminal(OutputStream stream);

/// To be called before anything is opened. What can end the program without a word elsewhere becomes an error
/// that it can tell: a pipe nobody reads any more, a limit of file sizes; a standard stream that was closed
/// is not given to the next file opened.
void PrepareStreams();

/// Calls `aborted` when a library ends the program (abort), as the picture libraries do when memory runs out
/// while they are loaded. What it calls may be in any state: it should say so and end the program.
void OnAbort(void (*aborted)());

/// Calls `interrupted` on a thread of its own at Ctrl+C, and when the system asks the program to end.
/// It should end the program. To be called once, before any other thread is started.
void OnInterrupt(std::function<void()> interrupted);

}  // namespace skyvault
