#pragma once

#include <string>
#include <vector>

namespace media {

/// A file being written: it lies beside its final place under a hidden name, and is removed with this object
/// unless Finish was called. Symbolic links are followed, and mode and owner of a file that is replaced are
/// kept. Devices and pipes are written to and never replaced.
class WholeFile {
public:
    /// Throws FrameError.
    explicit WholeFile(const std::string& path);
    ~WholeFile();
    WholeFile(const WholeFile&) = delete;
    WholeFile& operator=(const WholeFile&) = delete;

    const std::string& TemporaryPath() const { return temporary_; }

    /// Writes `bytes`, if there are any, and moves the file to its name in one step. Throws FrameError.
    void Finish(const std::vector<unsigned char>& bytes);

private:
    void TakeModeAndOwner() const;

    std::string place_; ///< where the file goes, links followed
    std::string temporary_;
    bool stream_ = false; ///< the place is a device or a pipe
};

} // namespace media
