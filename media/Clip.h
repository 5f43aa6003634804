#pragma once

#include "media/ClipSource.h"
#include "media/FrameCache.h"
#include "media/FrameRange.h"

#include <future>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace media {

/// What to do about a missing frame of a sequence.
enum class Missing {
    Error, ///< the frame that needs it fails
    Hold,  ///< take the nearest earlier one
    Black, ///< take an empty one of the clip's size
};

/// Width and height of a pixel.
struct Aspect {
    double x = 1, y = 1;
};

/// `X:Y`. Throws UsageError.
Aspect ParseAspect(const std::string& text);

/// The pictures of a clip. The most recent ones are cached, so that each is decoded once.
class Clip {
public:
    /// `aspect`, where given, replaces the files' own.
    Clip(const std::string& name, Missing missing, std::optional<Aspect> aspect,
         const ReadOptions& options = {});

    bool IsSequence() const { return source_->IsSequence(); }
    /// Whether there is a picture for a frame.
    bool Has(int frame) const { return source_->Has(frame); }
    std::string NameOf(int frame) const { return source_->NameOf(frame); }
    std::vector<std::string> Files() const { return source_->Files(); }
    /// First and last frame; none for a single picture and for a sequence without files.
    std::optional<FrameSpan> Span() const;

    /// Throws FrameError. Thread-safe.
    Picture At(int frame);

private:
    Picture Load(int frame) const;
    Picture ReadOrReplace(int frame) const;
    Picture Black() const;

    const std::unique_ptr<ClipSource> source_;
    const Missing missing_;
    const std::optional<Aspect> aspect_;
    const int proxy_;
    std::mutex mutex_; ///< guards all below
    FrameCache cache_;
    std::map<int, std::shared_future<Picture>> loading_; ///< frames that some thread is decoding
};

} // namespace media
