#include "media/FilePattern.h"

#include "media/Words.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <filesystem>
#include <optional>
#include <string_view>

namespace media {
namespace {

/// A frame number's place in a name.
struct Place {
    std::size_t length; ///< in characters; 0 if there is none
    int digits;
};

/// The place at the beginning of `text`: %d, %4d or %04d; any number of # or @; $F or $F4.
Place PlaceAt(std::string_view text) {
    const char first = text.empty() ? '\0' : text[0];
    if (first == '#' || first == '@') {
        const std::size_t end = std::min(text.find_first_not_of(first), text.size());
        return {end, static_cast<int>(std::min<std::size_t>(end, 20))};
    }
    const bool percent = first == '%', dollar = text.starts_with("$F");
    if (!percent && !dollar) return {0, 0};
    std::size_t at = dollar ? 2 : 1;
    if (percent && text.substr(at).starts_with('0')) ++at;
    int digits = 1;
    if (at < text.size() && text[at] >= '1' && text[at] <= '9') digits = text[at++] - '0';
    if (dollar) return {at, digits};
    return at < text.size() && text[at] == 'd' ? Place{at + 1, digits} : Place{0, 0};
}

} // namespace

FilePattern::FilePattern(std::string path) : path_(std::move(path)) {
    const std::string_view all = path_;
    std::error_code ignored;
    for (std::size_t at = all.find_last_of('/') + 1; at < all.size(); ++at) {
        const Place place = PlaceAt(all.substr(at));
        if (place.length == 0) continue;
        if (std::filesystem::is_regular_file(path_, ignored)) return; // a file of exactly that name
        sequence_ = true;
        digits_ = place.digits;
        before_ = all.substr(0, at);
        after_ = all.substr(at + place.length);
        return;
    }
}

std::string FilePattern::At(int frame) const {
    if (!sequence_) return path_;
    char number[40];
    std::snprintf(number, sizeof number, "%0*d", digits_, frame);
    return before_ + number + after_;
}

std::vector<int> FilePattern::FramesOnDisk() const {
    std::vector<int> frames;
    if (!sequence_) return frames;
    const std::filesystem::path folder = std::filesystem::path(before_).parent_path();
    const std::size_t folderLength = before_.find_last_of('/') + 1;
    const std::string_view before = std::string_view(before_).substr(folderLength);

    std::error_code error;
    std::filesystem::directory_iterator entry(folder.empty() ? "." : folder, error), end;
    for (; !error && entry != end; entry.increment(error)) {
        const std::string name = entry->path().filename().string();
        if (name.size() <= before.size() + after_.size() || !name.starts_with(before) ||
            !name.ends_with(after_))
            continue;
        // A name counts only if it is the one that the pattern makes of its number.
        const std::string digits = name.substr(before.size(), name.size() - before.size() - after_.size());
        const std::optional<int> frame = ParseInteger(digits);
        if (frame && At(*frame).substr(folderLength) == name) frames.push_back(*frame);
    }
    std::sort(frames.begin(), frames.end());
    return frames;
}

} // namespace media
