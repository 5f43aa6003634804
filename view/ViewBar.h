#pragma once

#include "view/PicturePainter.h"

#include <QComboBox>
#include <QLabel>
#include <QToolBar>

namespace view {

class NumberField;

/// How the picture is shown: channels, exposure, gamma, and how large.
class ViewBar : public QToolBar {
    Q_OBJECT

public:
    explicit ViewBar(QWidget* parent = nullptr);

    /// With the wipe, which is set elsewhere.
    void Show(const Showing& showing);
    void ShowZoom(double zoom);

signals:
    void ShowingChosen(const view::Showing& showing);

private:
    NumberField* AddNumber(const QString& label, const QString& tip, double step);

    Showing showing_;
    QComboBox* channels_;
    NumberField *exposure_, *gamma_;
    QLabel* zoom_;
};

} // namespace view
