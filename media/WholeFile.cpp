#include "media/WholeFile.h"

#include "media/Errors.h"
#include "media/TemporaryFiles.h"

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace media {
namespace {

[[noreturn]] void Fail(int error) {
    throw FrameError("cannot be written: " + std::generic_category().message(error));
}

void WriteTo(const std::string& path, const std::vector<unsigned char>& bytes) {
    const int file = ::open(path.c_str(), O_WRONLY | O_TRUNC | O_CLOEXEC);
    if (file < 0) Fail(errno);
    int error = 0;
    for (std::size_t done = 0; done < bytes.size() && !error;) {
        const ssize_t written = ::write(file, bytes.data() + done, bytes.size() - done);
        if (written >= 0)
            done += static_cast<std::size_t>(written);
        else if (errno != EINTR)
            error = errno;
    }
    if (::close(file) != 0 && !error) error = errno; // a network drive may report only now that it is full
    if (error) Fail(error);
}

/// Where a path leads when all links are followed, even if the target does not exist yet.
std::string FollowLinks(const std::string& path) {
    std::error_code error;
    std::filesystem::path place = path;
    constexpr int kMostLinks = 40;
    for (int i = 0; i < kMostLinks && std::filesystem::is_symlink(place, error); ++i) {
        const std::filesystem::path target = std::filesystem::read_symlink(place, error);
        if (error) break;
        place = target.is_absolute() ? target : place.parent_path() / target;
    }
    return place.string();
}

} // namespace

WholeFile::WholeFile(const std::string& path) : place_(FollowLinks(path)) {
    struct stat status = {};
    if (::stat(place_.c_str(), &status) == 0) {
        if (S_ISDIR(status.st_mode)) Fail(EISDIR);
        stream_ = !S_ISREG(status.st_mode);
    }
    std::error_code ignored;
    const std::filesystem::path name = std::filesystem::path(place_).filename();
    temporary_ =
        MakeTemporaryFile(stream_ ? (std::filesystem::temp_directory_path(ignored) / name).string() : place_);
    if (temporary_.empty()) Fail(errno);
}

WholeFile::~WholeFile() {
    ::unlink(temporary_.c_str()); // after Finish there is nothing left to remove
    ForgetTemporaryFile(temporary_);
}

/// Mode and owner of the file that is replaced; for a new one what the umask leaves.
void WholeFile::TakeModeAndOwner() const {
    struct stat old = {};
    if (::stat(place_.c_str(), &old) == 0) {
        // Only root may change a file's owner: otherwise the new file is the user's.
        [[maybe_unused]] const int ignored = ::chown(temporary_.c_str(), old.st_uid, old.st_gid);
        ::chmod(temporary_.c_str(), old.st_mode & 07777);
        return;
    }
    const mode_t mask = ::umask(0);
    ::umask(mask);
    ::chmod(temporary_.c_str(), 0666 & ~mask);
}

void WholeFile::Finish(const std::vector<unsigned char>& bytes) {
    if (stream_) {
        if (!bytes.empty()) return WriteTo(place_, bytes);
        std::ifstream file(temporary_, std::ios::binary);
        return WriteTo(place_, {std::istreambuf_iterator<char>(file), {}});
    }
    if (!bytes.empty()) WriteTo(temporary_, bytes);
    TakeModeAndOwner();
    if (std::rename(temporary_.c_str(), place_.c_str()) != 0) Fail(errno);
    ForgetTemporaryFile(temporary_);
}

} // namespace media
