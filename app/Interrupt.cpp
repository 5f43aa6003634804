#include "app/Interrupt.h"

#include <csignal>

namespace app {
namespace {

std::atomic<std::atomic<bool>*> flagToRaise = nullptr;
std::atomic<int> caught = 0;
static_assert(std::atomic<bool>::is_always_lock_free && std::atomic<int>::is_always_lock_free);

void Raise(int signal) {
    caught = signal;
    if (std::atomic<bool>* flag = flagToRaise) *flag = true;
}

void Catch(void (*handler)(int)) {
    struct sigaction action = {};
    action.sa_handler = handler;
    action.sa_flags = static_cast<int>(SA_RESETHAND) | SA_RESTART;
    for (int signal : {SIGINT, SIGTERM}) sigaction(signal, &action, nullptr);
}

} // namespace

Interrupt::Interrupt(std::atomic<bool>& flag) {
    caught = 0;
    flagToRaise = &flag;
    Catch(Raise);
}

Interrupt::~Interrupt() {
    Catch(SIG_DFL);
    flagToRaise = nullptr;
}

int Interrupt::ExitCode() const {
    return caught ? 128 + caught : 0;
}

} // namespace app
