#include "lens/LensFile.h"

#include "baselib/Buffer.h"
#include "baselib/Directory.h"
#include "baselib/Platform.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <fstream>
#include <limits>

namespace k7 {

namespace {

constexpr std::size_t kPathRoom = 512;   // with the terminating zero
constexpr std::size_t kTextRoom = 65536; // about a hundred times what 151 numbers take

bool IsSpace(char c) {
    return std::string_view(" \t\n\v\f\r").find(c) != std::string_view::npos;
}

/// Takes numbers from the front of a text as scanf does in the "C" locale.
class NumberReader {
public:
    explicit NumberReader(std::string_view text) : at_(text.data()), end_(at_ + text.size()) {}

    /// As "%d", but a number too large for an int becomes the nearest int.
    bool Read(int* value) {
        const bool negative = SkipToDigits();
        const auto [rest, error] = std::from_chars(at_, end_, *value);
        if (error == std::errc::invalid_argument) return false;
        using Limits = std::numeric_limits<int>;
        if (error == std::errc::result_out_of_range) *value = negative ? Limits::min() : Limits::max();
        at_ = rest;
        return true;
    }

    /// As "%f", but without hexadecimal numbers. A number too small for a float becomes 0, one too large
    /// fails.
    bool Read(float* value) {
        SkipToDigits();
        const auto [rest, error] = std::from_chars(at_, end_, *value);
        if (error == std::errc::result_out_of_range) {
            double wide = 0.0;
            if (std::from_chars(at_, end_, wide).ec != std::errc() || std::abs(wide) > 1.0) return false;
            *value = 0.0f;
        }
        at_ = rest;
        return error != std::errc::invalid_argument;
    }

private:
    /// Skips white space and a plus sign, which from_chars does not accept. True before a minus sign.
    bool SkipToDigits() {
        at_ = std::find_if_not(at_, end_, IsSpace);
        if (at_ != end_ && *at_ == '+' && at_ + 1 != end_ && at_[1] != '-') ++at_;
        return at_ != end_ && *at_ == '-';
    }

    const char* at_;
    const char* end_;
};

} // namespace

bool ParseLens(std::string_view text, LensTable* lens) {
    NumberReader reader(text);
    int count = 0;
    if (!reader.Read(&count)) return false;
    lens->Count = std::clamp(count, 1, LensTable::kFileSurfaces);
    for (int i = 0; i < lens->Count; ++i) {
        LensSurface& surface = lens->Surfaces[i];
        if (!reader.Read(&surface.Position) || !reader.Read(&surface.Radius) ||
            !reader.Read(&surface.Diameter))
            return false;
    }
    return NormaliseLens(lens);
}

LensFileResult ReadLensFile(const std::string& path, LensTable* lens) {
    if (path.empty()) return LensFileResult::OpenFailed;
    std::ifstream file(NativePath(path), std::ios::binary);
    if (!file) return LensFileResult::OpenFailed;
    const Buffer<char> text(kTextRoom, "FlareSpot");
    if (!text) return LensFileResult::ReadFailed;
    file.read(text.data(), static_cast<std::streamsize>(text.size()));
    auto length = static_cast<std::size_t>(file.gcount());
    if (length == text.size()) // the last number may be truncated
        while (length > 0 && !IsSpace(text[length - 1])) --length;
    return ParseLens({text.data(), length}, lens) ? LensFileResult::Read : LensFileResult::ReadFailed;
}

std::string LensFilePath(const std::string& directory, std::string_view name) {
    const bool hasDrive = name.size() >= 3 && name[1] == ':';
    const bool hasRoot = kPathSeparator == '/' && name.starts_with('/');
    std::string path(name);
    if (!hasDrive && !hasRoot) path = directory + path + ".txt";
    if (path.size() >= kPathRoom) path.clear();
    return path;
}

} // namespace k7
