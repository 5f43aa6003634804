#pragma once

#include <OpenImageIO/filesystem.h>
#include <OpenImageIO/imageio.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace media {

/// A file format's own encoder. It works in memory if it can, so that the file is one plain write whose
/// failure is noticed; other formats write the file at a path themselves. Operations throw FrameError.
class Encoder {
public:
    /// Throws FrameError if the name's extension is not that of a format.
    explicit Encoder(const std::string& name);

    std::string Format() const { return output_->format_name(); }
    /// What was encoded in memory; empty if the file is at the path.
    const std::vector<unsigned char>& Bytes() const { return bytes_; }

    /// Discards an unfinished file.
    void Restart();

    /// One picture, in the type of its spec.
    void Encode(const std::string& path, const OIIO::ImageSpec& spec, const void* pixels);

    // Several pictures: Begin with the specs of all, then Next and one of the writers for each.
    void Begin(const std::string& path, const std::vector<OIIO::ImageSpec>& specs);
    void Next(const OIIO::ImageSpec& spec); ///< not for the first
    void Write(OIIO::TypeDesc type, const void* pixels);
    void WriteDeep(const OIIO::DeepData& pixels);
    void Finish();

    /// Whether the format stores pictures of a spec unchanged, tried with one of a few pixels. It has to be
    /// written to the end: some encoders crash if abandoned half-way. The encoder cannot be used afterwards.
    bool Holds(const std::string& path, OIIO::ImageSpec spec);

private:
    bool Open(const std::string& path, const OIIO::ImageSpec& spec);
    void Prepare();
    [[noreturn]] void Fail() const;

    const std::string name_;
    std::string path_;
    std::vector<unsigned char> bytes_;
    std::optional<OIIO::Filesystem::IOVecOutput> memory_;
    std::unique_ptr<OIIO::ImageOutput> output_; ///< may write to its memory until it is destroyed
};

} // namespace media
