#pragma once

#include <OpenImageIO/imageio.h>

#include <memory>
#include <string>
#include <vector>

namespace media {

/// How files are opened.
struct ReadLimits {
    long long maxPixels = 150'000'000; ///< of a picture; more is refused before any memory is allocated
    std::vector<std::string> formats;  ///< as OpenImageIO names them; empty: all that it reads
};

/// An open picture file. Nothing that the picture library reports is trusted: names, indices, sizes and
/// windows are checked here once, for all users. All operations throw FrameError, with the file's name.
class CheckedInput {
public:
    /// The format is that of the file's extension or, failing that, of how its content begins.
    CheckedInput(const std::string& path, const ReadLimits& limits);

    std::string Format() const { return input_->format_name(); }
    /// The pictures in the file; 1 for most.
    int Pictures() const { return pictures_; }
    /// What the file says of a picture, checked.
    OIIO::ImageSpec Spec(int picture) const;

    /// Reads channels `first` to `end` - 1 of all pixels; type UNKNOWN leaves each in its own type.
    void Read(int picture, int first, int end, OIIO::TypeDesc type, void* pixels) const;
    void ReadDeep(int picture, OIIO::DeepData& pixels) const;

private:
    void Open(const std::string& format);
    void CountPictures();
    OIIO::ImageSpec Check(OIIO::ImageSpec spec) const;
    [[noreturn]] void Fail(const std::string& why) const;

    const std::string path_;
    const long long maxPixels_;
    std::unique_ptr<OIIO::ImageInput> input_;
    int pictures_ = 1;
};

} // namespace media
