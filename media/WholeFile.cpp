#include "media/WholeFile.h"

#include "media/Errors.h"

#include <cerrno>
#include <cstdio>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <unistd.h>

namespace media {

WholeFile::WholeFile(std::string path) : path_(std::move(path)) {
    const std::size_t name = path_.find_last_of('/') + 1;
    temporary_ =
        path_.substr(0, name) + "." + path_.substr(name) + "." + std::to_string(::getpid()) + ".part";
}

WholeFile::~WholeFile() {
    ::unlink(temporary_.c_str()); // nothing is there any more after Finish
}

void WholeFile::Fail(int error) const {
    throw FrameError("cannot be written: " + std::generic_category().message(error));
}

void WholeFile::Write(const std::vector<unsigned char>& bytes) {
    const int file = ::open(temporary_.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (file < 0) Fail(errno);
    int error = 0;
    for (std::size_t done = 0; done < bytes.size() && !error;) {
        const ssize_t written = ::write(file, bytes.data() + done, bytes.size() - done);
        if (written >= 0)
            done += static_cast<std::size_t>(written);
        else if (errno != EINTR)
            error = errno;
    }
    if (::close(file) != 0 && !error) error = errno; // a network drive may say so only now that it is full
    if (error) Fail(error);
}

void WholeFile::Finish(const std::vector<unsigned char>& bytes) {
    if (!bytes.empty()) Write(bytes);
    if (std::rename(temporary_.c_str(), path_.c_str()) != 0) Fail(errno);
}

} // namespace media
