#pragma once

#include <QString>

namespace view {

/// The sequence that a file is a frame of, with %04d or the like in place of its number; the file itself
/// where none of its neighbours has another number.
QString SequenceOf(const QString& path);

} // namespace view
