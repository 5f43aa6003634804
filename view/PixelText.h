#pragma once

#include "host/Image.h"

#include <QPointF>
#include <QString>

namespace view {

/// Place and value of the pixel at a place in fractions of a picture, y upwards: the value as 15-bit words,
/// in which effects work, and as floats. Empty beside the picture.
QString PixelText(const host::Image& picture, const QPointF& at);

} // namespace view
