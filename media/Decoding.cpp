#include "media/Decoding.h"

#include <algorithm>
#include <csignal>
#include <cstring>
#include <mutex>

#include <fcntl.h>
#include <unistd.h>

namespace media {
namespace {

std::mutex screenMutex; ///< guards the two below
int decoders = 0;
int screen = -1; ///< standard error while decoders run; -1 if it could not be saved

// What a signal handler may read: the name of the file that its thread is decoding, and the saved standard
// error.
constexpr std::size_t kMostName = 1024;
thread_local char decodedFile[kMostName];
thread_local volatile std::sig_atomic_t decoding = 0;
volatile std::sig_atomic_t screenOfHandler = STDERR_FILENO;

void Say(const char* text) {
    [[maybe_unused]] const ssize_t ignored =
        ::write(static_cast<int>(screenOfHandler), text, std::strlen(text));
}

void NameFile(int signal) {
    if (decoding) {
        Say("k7: ");
        Say(decodedFile);
        Say(": the decoder of its format crashed\n");
    }
    ::raise(signal); // the handler is removed: the program ends as it would have without it
}

} // namespace

Decoding::Decoding(const std::string& path) {
    std::transform(
        path.begin(), path.begin() + static_cast<std::ptrdiff_t>(std::min(path.size(), kMostName - 1)),
        decodedFile, [](unsigned char c) { return c < ' ' || c == 127 ? '?' : static_cast<char>(c); });
    decodedFile[std::min(path.size(), kMostName - 1)] = 0;
    decoding = 1;

    const std::lock_guard lock(screenMutex);
    if (decoders++ > 0) return;
    screen = ::fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 3);
    if (screen >= 0) screenOfHandler = screen;
    const int nowhere = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
    if (screen >= 0 && nowhere >= 0) ::dup2(nowhere, STDERR_FILENO);
    if (nowhere >= 0) ::close(nowhere);
}

Decoding::~Decoding() {
    decoding = 0;
    const std::lock_guard lock(screenMutex);
    if (--decoders > 0 || screen < 0) return;
    screenOfHandler = STDERR_FILENO;
    ::dup2(screen, STDERR_FILENO);
    ::close(screen);
}

void NameCrashedDecoders() {
    struct sigaction action = {};
    action.sa_handler = NameFile;
    action.sa_flags = static_cast<int>(SA_RESETHAND) | SA_NODEFER;
    for (int signal : {SIGSEGV, SIGBUS, SIGABRT, SIGFPE, SIGILL}) sigaction(signal, &action, nullptr);
}

} // namespace media
