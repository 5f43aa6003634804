#pragma once

#include <string>
#include <vector>

namespace media {

/// A file in the making: it lies beside its later place under a name of its own, and is gone with this object
/// unless Finish was reached.
class WholeFile {
public:
    explicit WholeFile(std::string path);
    ~WholeFile();
    WholeFile(const WholeFile&) = delete;
    WholeFile& operator=(const WholeFile&) = delete;

    const std::string& TemporaryPath() const { return temporary_; }

    /// Writes `bytes`, if there are any, and moves the file to its name in one step. Throws FrameError.
    void Finish(const std::vector<unsigned char>& bytes);

private:
    void Write(const std::vector<unsigned char>& bytes);
    [[noreturn]] void Fail(int error) const;

    std::string path_;
    std::string temporary_;
};

} // namespace media
