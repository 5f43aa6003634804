#pragma once

#include <string>
#include <vector>

namespace media {

/// The name of a picture file, or of a sequence of them: `%04d`, `%4d`, `%d`, `####`, `@@@@` or `$F4` in the
/// file's name stands for the frame number, with at least that many digits. A name that exists as a file is
/// not a pattern.
class FilePattern {
public:
    explicit FilePattern(std::string path);

    const std::string& Path() const { return path_; }
    bool IsSequence() const { return sequence_; }
    std::string At(int frame) const;

    /// The frames whose files exist now, in ascending order. Empty for a single file.
    std::vector<int> FramesOnDisk() const;

private:
    std::string path_;
    bool sequence_ = false;
    int digits_ = 0;
    std::string before_, after_; ///< the text before and after the number
};

} // namespace media
