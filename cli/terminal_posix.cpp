#include <fcntl.h>
#include <pthread.h>
#include <signal.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
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

bool WriteToStream(OutputStream stream, std::wstring_view text) {
    const std::string bytes = ToSystemBytes(text);
    std::size_t written = 0;
    while (written < bytes.size()) {
        const ssize_t n = write(Descriptor(stream), bytes.data() + written, bytes.size() - written);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return false;
        written += static_cast<std::size_t>(n);
    }
    return true;
}

bool IsTerminal(OutputStream stream) {
    return isatty(Descriptor(stream)) == 1;
}

void PrepareStreams() {
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(descriptor, F_GETFD) >= 0) continue;
        // The lowest free number is this one. Opened the wrong way round: reading and writing fail as they
        // should.
        const int nowhere = open("/dev/null", descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY);
        if (nowhere != descriptor) close(nowhere);
    }
    for (const int signal : {SIGPIPE, SIGXFSZ}) std::signal(signal, SIG_IGN);
}

void OnAbort(void (*aborted)()) {
    static void (*handler)() = nullptr;
    handler = aborted;
    std::signal(SIGABRT, [](int) {
        // Once: it may abort itself.
        std::signal(SIGABRT, SIG_DFL);
        handler();
    });
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
