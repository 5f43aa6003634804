#pragma once

#include <string>

namespace media {

/// The quality, 1 to 100, at which a JPEG file was written, estimated from its table for brightness by the
/// scaling of the Independent JPEG Group; 0 if there is no such table.
int JpegQuality(const std::string& path);

} // namespace media
