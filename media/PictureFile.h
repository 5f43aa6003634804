#pragma once

#include "host/Image.h"

#include <OpenImageIO/paramlist.h>

#include <functional>
#include <memory>
#include <string>

namespace media {

/// A picture with what its file says of it beyond the pixels.
struct Picture {
    std::shared_ptr<host::Image>
        image;          ///< four channels: a file without alpha is opaque, a grey one has equal colours
    int channels = 4;   ///< of the file: 1 grey, 2 grey and alpha, 3 colour, 4 colour and alpha
    std::string format; ///< of the file, as OpenImageIO names it; empty where there was no file
    OIIO::ParamValueList metadata; ///< to be handed on to the rendered file
};

/// Takes over the caller's reference.
std::shared_ptr<host::Image> Share(host::Image* image);

/// Reads a file with its values as they are stored: no colour conversion, alpha neither multiplied in nor
/// taken out. Throws FrameError with the file's name.
Picture ReadPicture(const std::string& path);

/// Throws UsageError where no file format goes by the ending of the name.
void CheckCanWrite(const std::string& path);

/// Writes `image` with the channels, the depth and the metadata of `like`, or the nearest that the file
/// format holds; `warn` is told what could not be kept. The file appears under its name when it is whole, and
/// replaces what was there. Throws FrameError with the file's name and leaves nothing behind.
void WritePicture(const std::string& path, const host::Image& image, const Picture& like,
                  const std::function<void(const std::string&)>& warn);

} // namespace media
