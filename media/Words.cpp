#include "media/Words.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <numeric>

namespace media {
namespace {

char Lower(char c) {
    return static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
}

/// The number of letters to insert, drop, replace or swap with their neighbour until both words agree,
/// ignoring case.
std::size_t Distance(std::string_view a, std::string_view b) {
    std::vector<std::size_t> before, above(b.size() + 1), row(b.size() + 1);
    std::iota(above.begin(), above.end(), std::size_t{0});
    for (std::size_t i = 1; i <= a.size(); ++i) {
        row[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const bool same = Lower(a[i - 1]) == Lower(b[j - 1]);
            row[j] = std::min({above[j] + 1, row[j - 1] + 1, above[j - 1] + (same ? 0 : 1)});
            if (i > 1 && j > 1 && Lower(a[i - 1]) == Lower(b[j - 2]) && Lower(a[i - 2]) == Lower(b[j - 1]))
                row[j] = std::min(row[j], before[j - 2] + 1);
        }
        before = above;
        above.swap(row);
    }
    return above[b.size()];
}

template <class Number>
std::optional<Number> Parse(std::string_view text) {
    if (text.starts_with('+') && !text.starts_with("+-")) text.remove_prefix(1);
    Number value{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return value;
}

} // namespace

std::vector<std::string> Split(std::string_view text, char separator) {
    std::vector<std::string> pieces;
    for (std::size_t from = 0;;) {
        const std::size_t to = text.find(separator, from);
        pieces.emplace_back(text.substr(from, to - from));
        if (to == std::string_view::npos) return pieces;
        from = to + 1;
    }
}

std::optional<double> ParseNumber(std::string_view text) {
    return Parse<double>(text);
}

std::optional<int> ParseInteger(std::string_view text) {
    return Parse<int>(text);
}

bool SameWord(std::string_view a, std::string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](char x, char y) { return Lower(x) == Lower(y); });
}

std::string DidYouMean(std::string_view word, const std::vector<std::string>& candidates) {
    const std::string* best = nullptr;
    std::size_t least = std::min(word.size() / 2, std::max<std::size_t>(2, word.size() / 3)) + 1;
    for (const std::string& candidate : candidates)
        if (const std::size_t distance = Distance(word, candidate); distance < least) {
            least = distance;
            best = &candidate;
        }
    return best ? ", did you mean '" + *best + "'?" : "";
}

std::string Trimmed(const std::string& text) {
    const std::size_t first = text.find_first_not_of(" \t\r\n"), last = text.find_last_not_of(" \t\r\n");
    return first == std::string::npos ? "" : text.substr(first, last - first + 1);
}

std::string OneLine(std::string text) {
    text = Trimmed(text);
    std::replace_if(
        text.begin(), text.end(), [](unsigned char c) { return std::iscntrl(c); }, ' ');
    return text;
}

bool IsUtf8(std::string_view text) {
    for (std::size_t i = 0; i < text.size();) {
        const auto lead = static_cast<unsigned char>(text[i++]);
        const int more = lead < 0x80                   ? 0
                         : lead >= 0xc2 && lead < 0xe0 ? 1
                         : lead >= 0xe0 && lead < 0xf0 ? 2
                         : lead >= 0xf0 && lead < 0xf5 ? 3
                                                       : -1;
        if (more < 0) return false;
        for (int k = 0; k < more; ++k, ++i)
            if (i >= text.size() || (static_cast<unsigned char>(text[i]) & 0xc0) != 0x80) return false;
    }
    return true;
}

} // namespace media
