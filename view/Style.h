#pragma once

namespace view {

/// Colours of the program's windows: light or dark, neutral, so that they do not tint what one judges.
void UseTheme(bool dark);

} // namespace view
