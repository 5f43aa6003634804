#include "view/PixelText.h"

#include <cmath>
#include <vector>

namespace view {

QString PixelText(const host::Image& picture, const QPointF& at) {
    if (!(at.x() >= 0.0 && at.x() < 1.0 && at.y() >= 0.0 && at.y() < 1.0)) return {};
    const int x = static_cast<int>(at.x() * picture.Width);
    const int y = static_cast<int>(at.y() * picture.Height);
    std::vector<float> row(4 * static_cast<std::size_t>(picture.Width));
    picture.ReadRow(y, row.data());
    QString words, floats;
    for (int c = 0; c < 4; ++c) {
        const float value = row[static_cast<std::size_t>(4 * x + c)];
        words += QString("%1").arg(std::round(value * 32767.0), 6, 'f', 0);
        floats += QString("%1").arg(value, 9, 'f', 5);
    }
    return QString("x %1  y %2   words%3   floats%4").arg(x, 4).arg(y, 4).arg(words, floats);
}

} // namespace view
