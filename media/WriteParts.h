#pragma once

#include "media/Encoder.h"
#include "media/PictureFile.h"

namespace media {

/// Writes a file with all that the source's file has: its parts, channels, windows, tiles and compression. Of
/// the part that was worked on, the colours within the frame are those of `image`; all else is copied as it
/// is stored. Pixels that lie outside the source's data window, and are not black and transparent, enlarge
/// it. Throws FrameError.
void WriteParts(Encoder& encoder, const std::string& path, const host::Image& image, const Picture& like,
                const WriteOptions& options);

} // namespace media
