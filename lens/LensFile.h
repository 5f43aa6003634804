#pragma once

#include "lens/LensStore.h"

#include <string>
#include <string_view>

namespace k7 {

// A lens file is plain text: the number of surfaces, then position, radius and diameter of each from the
// front to the back, all separated by white space. What follows is ignored.

enum class LensFileResult { Read, OpenFailed, ReadFailed };

/// Reads and normalises a lens. Unless the result is Read the table must not be used.
[[nodiscard]] LensFileResult ReadLensFile(const std::string& path, LensTable* lens);

/// The same from a text. The decimal separator is a point in every locale.
[[nodiscard]] bool ParseLens(std::string_view text, LensTable* lens);

/// The path for what the user typed: a full path is unchanged, a plain name means that name with ".txt" in
/// `directory`, which ends in a separator. Empty if the path would be longer than 511 characters.
std::string LensFilePath(const std::string& directory, std::string_view name);

} // namespace k7
