#pragma once

#include "host/Image.h"
#include "media/CheckedInput.h"
#include "media/ColourChannels.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace media {

/// How a file is read.
struct ReadOptions {
    std::string layer; ///< whose colours are read; empty for the plain ones of the first part
    ReadLimits limits;
    std::optional<host::Depth> atLeast; ///< a picture of less depth is converted to this one
    bool premultiply = false;           ///< straight colours are multiplied by their alpha
    int proxy = 1;                      ///< clips provide pictures at 1 / proxy of the width and height
};

/// How a file stores a channel.
struct StoredDepth {
    host::Depth depth = host::Depth::Int16;
    int bits = 0; ///< of an integer, if fewer than the depth has; otherwise 0
    bool operator==(const StoredDepth&) const = default;
};

/// How a file stores a picture; what is not given is as in the source.
struct WriteOptions {
    std::optional<StoredDepth> depth;
    std::string compression; ///< name, or name:level
    std::optional<int> quality;
};

/// A picture with what its file says of it beyond the pixels.
struct Picture {
    std::shared_ptr<host::Image>
        image;               ///< four channels: a file without alpha is opaque, a grey one has equal colours
    int channels = 4;        ///< of the file: 1 grey, 2 grey and alpha, 3 colour, 4 colour and alpha
    StoredDepth depth;       ///< of the file's colours
    std::string format;      ///< of the file, as OpenImageIO names it; empty if there was no file
    bool straight = false;   ///< the file's colours are not multiplied by their alpha
    bool matte = false;      ///< alpha is a matte independent of the colours
    bool multiplied = false; ///< those of the image are, unlike those of its file
    int quality = 0;         ///< of a JPEG file, 1 to 100; 0 if unknown
    OIIO::ImageSpec stored;  ///< the part of the file that the picture is; its metadata are handed on
    std::string path;        ///< of the file: what is not worked on is read from there
    long long maxPixels = ReadLimits().maxPixels; ///< that the file was read under
    int part = 0;                                 ///< of the file
    ColourChannels colours;                       ///< of that part
};

/// Takes over the caller's reference.
std::shared_ptr<host::Image> Share(host::Image* image);

/// Reads a picture of a file with its values as they are stored: no colour conversion. Throws FrameError with
/// the file's name.
Picture ReadPicture(const std::string& path, const ReadOptions& options = {}, int number = 0);

/// The number of pictures of one size that follow each other in a file, as in an animation or a movie; 1 for
/// a single picture and for the parts of an OpenEXR file. Throws FrameError.
int CountFrames(const std::string& path, const ReadLimits& limits);

/// Throws UsageError if the name's extension is not that of a file format, or the format cannot hold what is
/// asked for.
void CheckCanWrite(const std::string& path, const WriteOptions& options = {});

/// Writes `image` with the channels, the depth and the metadata of `like`, or the nearest that the file
/// format holds; `warn` is told what could not be kept. The file appears under its name when it is complete,
/// and replaces an existing one. Throws FrameError with the file's name and leaves nothing behind.
void WritePicture(const std::string& path, const host::Image& image, const Picture& like,
                  const std::function<void(const std::string&)>& warn, const WriteOptions& options = {});

} // namespace media
