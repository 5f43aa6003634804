#include "media/Decoding.h"

#include <algorithm>
#include <csignal>
#include <cstring>

#include <fcntl.h>
#include <unistd.h>

namespace media {
namespace {

std::mutex oneDecoder;

// What a signal handler may read: the name, and standard error as it was.
constexpr std::size_t kMostName = 1024;
char decodedFile[kMostName];
volatile std::sig_atomic_t decoding = 0;
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
    ::raise(signal); // the handler is gone: the program ends as it would have
}

} // namespace

Decoding::Decoding(const std::string& path)
    : lock_(oneDecoder)
    , screen_(::fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 3)) {
    std::transform(
        path.begin(), path.begin() + static_cast<std::ptrdiff_t>(std::min(path.size(), kMostName - 1)),
        decodedFile, [](unsigned char c) { return c < ' ' || c == 127 ? '?' : static_cast<char>(c); });
    decodedFile[std::min(path.size(), kMostName - 1)] = 0;
    if (screen_ >= 0) screenOfHandler = screen_;
    decoding = 1;
    const int nowhere = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
    if (screen_ >= 0 && nowhere >= 0) ::dup2(nowhere, STDERR_FILENO);
    if (nowhere >= 0) ::close(nowhere);
}

Decoding::~Decoding() {
    decoding = 0;
    screenOfHandler = STDERR_FILENO;
    if (screen_ < 0) return;
    ::dup2(screen_, STDERR_FILENO);
    ::close(screen_);
}

void NameCrashedDecoders() {
    struct sigaction action = {};
    action.sa_handler = NameFile;
    action.sa_flags = static_cast<int>(SA_RESETHAND) | SA_NODEFER;
    for (int signal : {SIGSEGV, SIGBUS, SIGABRT, SIGFPE, SIGILL}) sigaction(signal, &action, nullptr);
}

} // namespace media
