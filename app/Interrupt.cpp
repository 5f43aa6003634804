#include "app/Interrupt.h"

#include "media/TemporaryFiles.h"

#include <csignal>
#include <utility>

#include <unistd.h>

namespace app {
namespace {

std::atomic<const std::vector<std::atomic<bool>*>*> flagsToRaise = nullptr;
std::atomic<int> caught = 0;
static_assert(std::atomic<bool>::is_always_lock_free && std::atomic<int>::is_always_lock_free);

void EndAtOnce(int signal) {
    media::RemoveTemporaryFiles();
    ::_exit(128 + signal);
}

/// The first signal stops the run; the second, whichever it is, ends the program.
void Raise(int signal) {
    if (caught.exchange(signal)) EndAtOnce(signal);
    if (const auto* flags = flagsToRaise.load())
        for (std::atomic<bool>* flag : *flags) *flag = true;
    constexpr char hint[] = "k7: stopping; press again to quit at once\n";
    [[maybe_unused]] const ssize_t ignored = ::write(STDERR_FILENO, hint, sizeof hint - 1);
}

void Catch(void (*handler)(int)) {
    struct sigaction action = {};
    action.sa_handler = handler;
    action.sa_flags = SA_RESTART;
    for (int signal : {SIGINT, SIGTERM}) sigaction(signal, &action, nullptr);
    struct sigaction before = {};
    sigaction(SIGHUP, nullptr, &before);
    if (before.sa_handler != SIG_IGN) sigaction(SIGHUP, &action, nullptr); // nohup stays in effect
}

} // namespace

Interrupt::Interrupt(std::vector<std::atomic<bool>*> flags) : flags_(std::move(flags)) {
    caught = 0;
    flagsToRaise = &flags_;
    Catch(Raise);
    std::signal(SIGPIPE, SIG_IGN); // a closed pipe does not stop a render
}

Interrupt::~Interrupt() {
    Catch(EndAtOnce);
    flagsToRaise = nullptr;
}

void EndBySignals() {
    Catch(EndAtOnce);
    std::signal(SIGXFSZ, SIG_IGN); // a file that becomes too large only fails its frame
}

int Interrupt::ExitCode() const {
    return caught ? 128 + caught : 0;
}

} // namespace app
