#pragma once

#include "host/Image.h"
#include "host/Input.h"
#include "ofx/Abi.h"
#include "ofx/Exchange.h"

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace ofx {

Box Common(const Box& a, const Box& b); ///< the intersection; may be empty

/// A picture of the host's, released with this object.
class HostPicture {
public:
    /// Throws Failure if there is no picture, or it cannot be read.
    HostPicture(Clip clip, double time);
    HostPicture(const HostPicture&) = delete;
    HostPicture& operator=(const HostPicture&) = delete;
    ~HostPicture();

    std::byte* At(int x, int y) const;

    Box bounds; ///< of the pixels that exist
    Box region; ///< of the whole picture
    host::Depth depth = host::Depth::Float;
    int channels = 4;            ///< 3 or 4
    std::size_t sampleBytes = 4; ///< of one channel
    std::ptrdiff_t rowBytes = 0; ///< may be negative
    double aspect = 1.0;

private:
    void Read();

    PropertySet set_ = nullptr;
    std::byte* data_ = nullptr;
};

/// The pictures of a clip during one render, as an input of a tool reads them. Each has the frame's size:
/// what lies outside is cut off, what is missing is empty.
class ClipFrames : public host::ImageProvider {
public:
    ClipFrames(Clip clip, Refusals& refusals) : clip_(clip), refusals_(refusals) {}

    /// Null if the clip has no picture, or it cannot be read; the latter is noted.
    host::Image* ImageAt(double time) override;

    /// From now on pictures are of this frame.
    void Begin(const Box& frame) { frame_ = frame; }
    /// Releases all pictures. None of the images may be used any more.
    void End() { pictures_.clear(); }
    /// The picture at a time, valid until End. Throws Failure.
    const HostPicture& At(double time);

private:
    const Clip clip_;
    Refusals& refusals_;
    Box frame_;
    std::map<double, std::unique_ptr<HostPicture>> pictures_;
};

/// Copies the pixels of a box from the tool's picture, whose corner is that of `frame`, to the host's; pixels
/// outside the picture become empty.
void WriteResult(const host::Image& result, const Box& frame, const HostPicture& to, const Box& window);
/// Fills a box with transparent black.
void Clear(const HostPicture& picture, const Box& window);

} // namespace ofx
