#pragma once

#include <string>

namespace media {

/// This thread decodes a file while this lives. Nothing reaches standard error while any thread does: the PNG
/// library writes there what it also reports.
class Decoding {
public:
    explicit Decoding(const std::string& path);
    ~Decoding();
    Decoding(const Decoding&) = delete;
    Decoding& operator=(const Decoding&) = delete;
};

/// Installs a handler that, where a decoder crashes, says on standard error which file it was decoding before
/// the program ends by the signal.
void NameCrashedDecoders();

} // namespace media
