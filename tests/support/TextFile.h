#pragma once

#include <cstdio>
#include <string>

namespace k7::test {

/// A nameless file that is written as a stream and read as a text.
struct TextFile {
    TextFile() = default;
    TextFile(const TextFile&) = delete;
    TextFile& operator=(const TextFile&) = delete;
    ~TextFile() { std::fclose(Stream); }

    /// Everything that has been written.
    std::string Text() const {
        std::fflush(Stream);
        std::string text(static_cast<std::size_t>(std::ftell(Stream)), '\0');
        std::rewind(Stream);
        text.resize(std::fread(text.data(), 1, text.size(), Stream));
        std::fseek(Stream, 0, SEEK_END);
        return text;
    }

    std::FILE* Stream = std::tmpfile();
};

} // namespace k7::test
