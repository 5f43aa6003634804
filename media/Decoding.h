#pragma once

#include <mutex>
#include <string>

namespace media {

/// A file is being decoded while this lives, one at a time. Nothing reaches standard error meanwhile: the PNG
/// library writes there what it also reports.
class Decoding {
public:
    explicit Decoding(const std::string& path);
    ~Decoding();
    Decoding(const Decoding&) = delete;
    Decoding& operator=(const Decoding&) = delete;

private:
    const std::lock_guard<std::mutex> lock_;
    const int screen_; ///< standard error; -1 where it could not be kept
};

/// Installs a handler that, where a decoder crashes, says on standard error which file it was decoding before
/// the program ends by the signal.
void NameCrashedDecoders();

} // namespace media
