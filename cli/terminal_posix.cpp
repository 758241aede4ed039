#include <pthread.h>
#include <signal.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <thread>
#include <utility>

#include "cli/terminal_stream.h"
#include "platform/utf8.h"

namespace skyvault {

namespace {

int Descriptor(OutputStream stream) {
    return stream == OutputStream::Standard ? STDOUT_FILENO : STDERR_FILENO;
}

}  // namespace

void WriteToStream(OutputStream stream, std::wstring_view text) {
    const std::string bytes = ToUtf8(text);
    std::size_t written = 0;
    while (written < bytes.size()) {
        const ssize_t n = write(Descriptor(stream), bytes.data() + written, bytes.size() - written);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return;
        written += static_cast<std::size_t>(n);
    }
}

bool IsTerminal(OutputStream stream) {
    return isatty(Descriptor(stream)) == 1;
}

void OnInterrupt(std::function<void()> interrupted) {
    // Every thread made from here on inherits the blocked signals; the one below waits for them, so that
    // they are answered by ordinary code.
    sigset_t signals;
    sigemptyset(&signals);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction action {};
        sigaction(signal, nullptr, &action);
        // Whoever started the program may have asked it to ignore one (nohup, background jobs).
        if (action.sa_handler != SIG_IGN) sigaddset(&signals, signal);
    }
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    std::thread([signals, interrupted = std::move(interrupted)] {
        int signal = 0;
        while (sigwait(&signals, &signal) == 0) interrupted();
    }).detach();
}

}  // namespace skyvault
