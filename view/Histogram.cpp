#include "view/Histogram.h"

#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <cmath>
#include <vector>

namespace view {

namespace {

constexpr int kRows = 135; ///< of a picture that are counted

} // namespace

Histogram::Histogram(QWidget* parent) : QWidget(parent) {
    setFixedHeight(84);
    setAccessibleName(tr("Histogram"));
    setToolTip(tr("How often each brightness of red, green and blue occurs, from black to white"));
}

Histogram::Counts Histogram::Count(const host::Image& picture) {
    Counts counts{};
    std::vector<float> row(4 * static_cast<std::size_t>(picture.Width));
    const int step = std::max(1, picture.Height / kRows);
    for (int y = step / 2; y < picture.Height; y += step) {
        picture.ReadRow(y, row.data());
        for (const float* pixel = row.data(); pixel != row.data() + row.size(); pixel += 4)
            for (std::size_t c = 0; c < 3; ++c) {
                const float place = pixel[c] > 0.0f ? std::min(pixel[c], 1.0f) * (kBins - 1) + 0.5f : 0.0f;
                ++counts[c][static_cast<std::size_t>(place)];
            }
    }
    return counts;
}

void Histogram::Show(const std::shared_ptr<const host::Image>& picture) {
    if (!isVisible()) return;
    counts_ = Count(*picture);
    update();
}

void Histogram::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF frame = QRectF(rect()).adjusted(12, 6, -12, -2);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(24, 24, 24));
    painter.drawRoundedRect(frame, 4, 4);
    int most = 1;
    for (const auto& channel : counts_) // the ends may be far above all else
        most = std::max(most, *std::max_element(channel.begin() + 1, channel.end() - 1));
    painter.setCompositionMode(QPainter::CompositionMode_Plus);
    const QColor colours[] = {{190, 50, 50}, {40, 160, 60}, {50, 90, 210}};
    const QRectF inner = frame.adjusted(4, 6, -4, -4);
    for (std::size_t c = 0; c < 3; ++c) {
        QPainterPath path(inner.bottomLeft());
        for (std::size_t i = 0; i < kBins; ++i) {
            const double high = std::min(1.0, std::sqrt(double(counts_[c][i]) / most));
            path.lineTo(inner.left() + inner.width() * static_cast<double>(i) / (kBins - 1),
                        inner.bottom() - high * inner.height());
        }
        path.lineTo(inner.bottomRight());
        painter.setBrush(colours[c]);
        painter.drawPath(path);
    }
}

} // namespace view
