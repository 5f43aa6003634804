#pragma once

#include "host/Registry.h"

#include <QIcon>

namespace view {

/// The picture that the installation has of a tool; a plain field where it has none.
QIcon PictureOf(const host::Registry& tool);
inline constexpr QSize kToolPicture{128, 72};

/// What a tool does, in a line.
QString DescriptionOf(const host::Registry& tool);

} // namespace view
