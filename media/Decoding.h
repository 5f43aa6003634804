#pragma once

#include <string>

namespace media {

/// Marks this thread as decoding a file. Standard error is silenced while any thread does: the PNG library
/// prints there what it also reports.
class Decoding {
public:
    explicit Decoding(const std::string& path);
    ~Decoding();
    Decoding(const Decoding&) = delete;
    Decoding& operator=(const Decoding&) = delete;
};

/// Installs a handler that, if a decoder crashes, prints which file it was decoding before the program ends
/// by the signal.
void NameCrashedDecoders();

} // namespace media
