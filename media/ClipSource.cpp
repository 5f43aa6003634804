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
    explicit FileSource(const std::string& path) : files_(path) {}

    bool IsSequence() const override { return files_.IsSequence(); }
    std::vector<int> Frames() const override { return files_.FramesOnDisk(); }
    bool Has(int frame) const override {
        std::error_code ignored;
        return std::filesystem::exists(files_.At(frame), ignored);
    }
    std::string NameOf(int frame) const override { return files_.At(frame); }
    Picture Read(int frame) const override { return ReadPicture(files_.At(frame)); }

private:
    const FilePattern files_;
};

class SampleSource : public ClipSource {
public:
    bool IsSequence() const override { return true; }
    std::vector<int> Frames() const override {
        std::vector<int> frames(SampleClip::kFrames);
        std::iota(frames.begin(), frames.end(), 0);
        return frames;
    }
    bool Has(int frame) const override { return frame >= 0 && frame < SampleClip::kFrames; }
    std::string NameOf(int frame) const override { return kSampleName + (" frame " + std::to_string(frame)); }
    Picture Read(int frame) const override {
        Picture picture;
        picture.image = Share(host::Image::Make(SampleClip::kWidth, SampleClip::kHeight, host::Depth::Int16));
        if (!picture.image) throw FrameError(NameOf(frame) + ": there is not enough memory for this picture");
        const std::vector<std::uint16_t> words = SampleClip::Frame(frame);
        constexpr std::size_t row = 4 * SampleClip::kWidth;
        for (int y = 0; y < SampleClip::kHeight; ++y)
            std::memcpy(picture.image->PlaneAccess[0].Row(y), &words[static_cast<std::size_t>(y) * row],
                        row * sizeof(std::uint16_t));
        return picture;
    }
};

} // namespace

std::unique_ptr<ClipSource> OpenClip(const std::string& name) {
    if (name == kSampleName) return std::make_unique<SampleSource>();
    return std::make_unique<FileSource>(name);
}

} // namespace media
