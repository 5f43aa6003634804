#pragma once

#include "host/Image.h"

#include <QWidget>

#include <array>
#include <memory>

namespace view {

/// How often each brightness of red, green and blue occurs in a picture, from black to white.
class Histogram : public QWidget {
    Q_OBJECT

public:
    explicit Histogram(QWidget* parent = nullptr);

    void Show(const std::shared_ptr<const host::Image>& picture);

    static constexpr int kBins = 128;
    /// Counts of red, green and blue; of a large picture those of every n-th row. Values outside of 0 to 1
    /// count at the ends.
    using Counts = std::array<std::array<int, kBins>, 3>;
    static Counts Count(const host::Image& picture);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    Counts counts_{};
};

} // namespace view
