#include "media/TemporaryFiles.h"

#include <atomic>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>

#include <fcntl.h>
#include <sys/random.h>
#include <unistd.h>

namespace media {
namespace {

/// A noted name, in memory that a signal handler may read.
struct Slot {
    enum State : int { kFree, kTaken, kReady };
    std::atomic<int> state = kFree;
    char name[4096];
};
Slot slots[64];

/// If all slots are taken, or a name is too long for one, a file is not noted.
void Note(const std::string& name) {
    if (name.size() >= sizeof slots[0].name) return;
    for (Slot& slot : slots) {
        int expected = Slot::kFree;
        if (!slot.state.compare_exchange_strong(expected, Slot::kTaken)) continue;
        std::memcpy(slot.name, name.c_str(), name.size() + 1);
        slot.state = Slot::kReady;
        return;
    }
}

std::string HiddenName(const std::string& path) {
    std::uint64_t number = 0;
    if (::getrandom(&number, sizeof number, 0) != sizeof number) return "";
    char random[24];
    std::snprintf(random, sizeof random, "%016llx", static_cast<unsigned long long>(number));
    constexpr std::size_t kMostStem = 200; // file names have at most 255 bytes
    const std::size_t name = path.find_last_of('/') + 1, dot = path.find_last_of('.');
    const std::string ending = dot != std::string::npos && dot > name ? path.substr(dot) : "";
    const std::string stem = path.substr(name, path.size() - name - ending.size()).substr(0, kMostStem);
    return path.substr(0, name) + "." + stem + "." + random + ".part" + ending;
}

} // namespace

std::string MakeTemporaryFile(const std::string& path) {
    constexpr int kTries = 8;
    for (int i = 0; i < kTries; ++i) {
        const std::string name = HiddenName(path);
        if (name.empty()) return "";
        const int file = ::open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
        if (file < 0 && errno == EEXIST) continue;
        if (file < 0) return "";
        ::close(file);
        Note(name);
        return name;
    }
    return "";
}

void ForgetTemporaryFile(const std::string& name) {
    for (Slot& slot : slots) {
        int expected = Slot::kReady;
        if (slot.state == Slot::kReady && name == slot.name)
            slot.state.compare_exchange_strong(expected, Slot::kFree);
    }
}

void RemoveTemporaryFiles() {
    for (Slot& slot : slots)
        if (slot.state == Slot::kReady) ::unlink(slot.name);
}

} // namespace media
