#include "media/ClipSource.h"

#include "media/Errors.h"
#include "media/FilePattern.h"
#include "media/SampleClip.h"

#include <cstring>
#include <filesystem>
#include <new>
#include <numeric>

namespace media {
namespace {

class FileSource : public ClipSource {
public:
    FileSource(const std::string& path, const ReadOptions& options) : files_(path), options_(options) {}

    bool IsSequence() const override { return files_.IsSequence(); }
    std::vector<int> Frames() const override { return files_.FramesOnDisk(); }
    bool Has(int frame) const override {
        std::error_code ignored;
        return std::filesystem::exists(files_.At(frame), ignored);
    }
    std::string NameOf(int frame) const override { return files_.At(frame); }
    std::vector<std::string> Files() const override {
        if (!files_.IsSequence()) return {files_.Path()};
        std::vector<std::string> files;
        for (int frame : Frames()) files.push_back(files_.At(frame));
        return files;
    }
    Picture Read(int frame) const override { return ReadPicture(files_.At(frame), options_); }

private:
    const FilePattern files_;
    const ReadOptions options_;
};

/// A movie or an animation: one file of several pictures, from frame 0 on.
class MovieSource : public ClipSource {
public:
    MovieSource(const std::string& path, int frames, const ReadOptions& options)
        : path_(path)
        , frames_(frames)
        , options_(options) {}

    bool IsSequence() const override { return true; }
    std::vector<int> Frames() const override {
        std::vector<int> frames(static_cast<std::size_t>(frames_));
        std::iota(frames.begin(), frames.end(), 0);
        return frames;
    }
    bool Has(int frame) const override { return frame >= 0 && frame < frames_; }
    std::string NameOf(int frame) const override { return path_ + " frame " + std::to_string(frame); }
    std::vector<std::string> Files() const override { return {path_}; }
    Picture Read(int frame) const override { return ReadPicture(path_, options_, frame); }

private:
    const std::string path_;
    const int frames_;
    const ReadOptions options_;
};

/// The number of frames in a file; 1 if it cannot be read, which its first frame will show.
int FramesIn(const std::string& path, const ReadLimits& limits) {
    try {
        return CountFrames(path, limits);
    } catch (const FrameError&) {
        return 1;
    }
}

class SampleSource : public ClipSource {
public:
    bool IsSequence() const override { return true; }
    std::vector<int> Frames() const override {
        std::vector<int> frames(SampleClip::kFrames);
        std::iota(frames.begin(), frames.end(), 0);
        return frames;
    }
    bool Has(int frame) const override { return frame >= 0 && frame < SampleClip::kFrames; }
    std::vector<std::string> Files() const override { return {}; }
    std::string NameOf(int frame) const override { return kSampleName + (" frame " + std::to_string(frame)); }
    Picture Read(int frame) const override {
        Picture picture;
        picture.matte = true;
        picture.image = Share(host::Image::Make(SampleClip::kWidth, SampleClip::kHeight, host::Depth::Int16));
        if (!picture.image) throw FrameError(NameOf(frame) + ": there is not enough memory for this picture");
        picture.colours = {false, {0, 1, 2, 3}};
        const std::vector<std::uint16_t> words = SampleClip::Frame(frame);
        constexpr std::size_t row = 4 * SampleClip::kWidth;
        for (int y = 0; y < SampleClip::kHeight; ++y)
            std::memcpy(picture.image->PlaneAccess[0].Row(y), &words[static_cast<std::size_t>(y) * row],
                        row * sizeof(std::uint16_t));
        return picture;
    }
};

} // namespace

std::unique_ptr<ClipSource> OpenClip(const std::string& name, const ReadOptions& options) {
    if (name == kSampleName) return std::make_unique<SampleSource>();
    if (!FilePattern(name).IsSequence())
        if (const int frames = FramesIn(name, options.limits); frames > 1)
            return std::make_unique<MovieSource>(name, frames, options);
    return std::make_unique<FileSource>(name, options);
}

} // namespace media
