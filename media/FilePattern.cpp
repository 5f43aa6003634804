#include "media/FilePattern.h"

#include "media/Words.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <optional>
#include <regex>
#include <string_view>

namespace media {

FilePattern::FilePattern(std::string path) : path_(std::move(path)) {
    const std::size_t name = path_.find_last_of('/') + 1;
    static const std::regex number("%(0([1-9]))?d|#+");
    std::smatch match;
    if (!std::regex_search(path_.cbegin() + static_cast<std::ptrdiff_t>(name), path_.cend(), match, number))
        return;
    sequence_ = true;
    digits_ = *match[0].first == '#' ? static_cast<int>(match.length())
              : match[2].matched     ? *match[2].first - '0'
                                     : 1;
    before_.assign(path_.cbegin(), match[0].first);
    after_.assign(match[0].second, path_.cend());
}

std::string FilePattern::At(int frame) const {
    if (!sequence_) return path_;
    char number[40];
    std::snprintf(number, sizeof number, "%0*d", std::min(digits_, 20), frame);
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
        // A name counts only if it is the one that the pattern gives for its number.
        const std::string digits = name.substr(before.size(), name.size() - before.size() - after_.size());
        const std::optional<int> frame = ParseInteger(digits);
        if (frame && At(*frame).substr(folderLength) == name) frames.push_back(*frame);
    }
    std::sort(frames.begin(), frames.end());
    return frames;
}

} // namespace media
