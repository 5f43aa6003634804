#pragma once

#include "media/PictureFile.h"

#include <string>

namespace media {

// What the file formats hold, where the picture library does not say so itself. Formats are named as it names
// them.

/// Several pictures in one file belong together and are not frames.
bool HasParts(const std::string& format);

/// Whether the colours of a file that was read are straight (true) or multiplied by alpha.
bool HoldsStraightAlpha(const std::string& format, const OIIO::ImageSpec& spec);
/// The same for a file to be written from a source: TIFF holds either, and follows the source.
bool WritesStraightAlpha(const std::string& format, const Picture& like);

/// Bits per sample if the file has fewer than its type; otherwise 0.
int FewerBits(const OIIO::ImageSpec& spec);

/// Throws UsageError if this program cannot write the format or the format does not hold what is asked for.
void CheckOptions(const std::string& format, const WriteOptions& options);

/// Whether the format's encoder is known to spoil such pictures, or to crash.
bool Breaks(const std::string& format, const OIIO::ImageSpec& spec);

/// Sets compression and quality as the format's encoder expects them. Those of the source are the default if
/// its format is the same.
void SetCompression(OIIO::ImageSpec& spec, const std::string& format, const WriteOptions& options,
                    const Picture& like);

/// `8`, `10`, `12`, `16`, `half` or `float`. Throws UsageError.
StoredDepth ParseDepth(const std::string& text);

/// "16-bit", "half float".
std::string Describe(const StoredDepth& depth);

} // namespace media
