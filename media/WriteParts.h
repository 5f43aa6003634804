#pragma once

#include "media/Encoder.h"
#include "media/PictureFile.h"

namespace media {

/// Writes a file with everything that the source's file has: its parts, channels, windows, tiles and
/// compression. In the part that was worked on, the colours within the frame are those of `image`; everything
/// else is copied as stored. Pixels outside the source's data window enlarge it unless they are black and
/// transparent. Throws FrameError.
void WriteParts(Encoder& encoder, const std::string& path, const host::Image& image, const Picture& like,
                const WriteOptions& options);

} // namespace media
