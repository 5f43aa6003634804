#pragma once

#include "media/PictureFile.h"

#include <string>

namespace media {

// What the file formats hold, as far as the picture library does not say it itself. Formats go by the names
// that it has for them.

/// Pictures of one file belong together and are no frames.
bool HasParts(const std::string& format);

/// Whether colours lie in the file as they are (true) or multiplied by alpha, for a file that was read.
bool HoldsStraightAlpha(const std::string& format, const OIIO::ImageSpec& spec);
/// The same for a file to be written after a source: TIFF holds either, and follows the source.
bool WritesStraightAlpha(const std::string& format, const Picture& like);

/// Bits of a sample where the file has fewer than its type; otherwise 0.
int FewerBits(const OIIO::ImageSpec& spec);

/// Throws UsageError where the format cannot be written by this program or does not hold what is asked for.
void CheckOptions(const std::string& format, const WriteOptions& options);

/// Whether the format's encoder is known to break pictures of a kind, or itself.
bool Breaks(const std::string& format, const OIIO::ImageSpec& spec);

/// Puts compression and quality where the format's encoder looks for them. Those of the source count where
/// its format is the same.
void SetCompression(OIIO::ImageSpec& spec, const std::string& format, const WriteOptions& options,
                    const Picture& like);

/// `8`, `10`, `12`, `16`, `half` or `float`. Throws UsageError.
StoredDepth ParseDepth(const std::string& text);

/// "16-bit", "half float".
std::string Describe(const StoredDepth& depth);

} // namespace media
