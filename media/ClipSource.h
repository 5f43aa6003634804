#pragma once

#include "media/PictureFile.h"

#include <memory>
#include <string>
#include <vector>

namespace media {

/// Where the frames of a clip come from.
class ClipSource {
public:
    virtual ~ClipSource() = default;

    /// False for a single picture, which is the same at every frame.
    virtual bool IsSequence() const = 0;
    /// The frames that exist, in ascending order. Empty for a single picture.
    virtual std::vector<int> Frames() const = 0;
    virtual bool Has(int frame) const = 0;
    /// A frame's name for the user.
    virtual std::string NameOf(int frame) const = 0;
    /// The files that are read.
    virtual std::vector<std::string> Files() const = 0;
    /// Throws FrameError.
    virtual Picture Read(int frame) const = 0;
};

/// The name that stands for the built-in clip.
inline constexpr const char* kSampleName = "sample:";

/// `sample:`, a file, a file of several frames, or a sequence of files.
std::unique_ptr<ClipSource> OpenClip(const std::string& name, const ReadOptions& options = {});

} // namespace media
