#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace media {

/// The pieces of a text between separators; an empty text is one empty piece.
std::vector<std::string> Split(std::string_view text, char separator);

/// A number that takes up the whole text, independent of the locale. "nan" and "inf" are numbers too.
std::optional<double> ParseNumber(std::string_view text);
std::optional<int> ParseInteger(std::string_view text);

/// Whether both agree, ignoring case.
bool SameWord(std::string_view a, std::string_view b);

/// ", did you mean WORD?" with the candidate that is closest in spelling, or nothing if none is close.
std::string DidYouMean(std::string_view word, const std::vector<std::string>& candidates);

/// The text without leading and trailing blanks.
std::string Trimmed(const std::string& text);

/// The text on one line, for messages of libraries and file names; control characters become blanks.
std::string OneLine(std::string text);

/// Whether a text is well-formed UTF-8.
bool IsUtf8(std::string_view text);

} // namespace media
