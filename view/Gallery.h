#pragma once

#include "host/Registry.h"

#include <QListWidget>

namespace view {

/// The tools to choose from, each with a picture of what it does.
class Gallery : public QListWidget {
    Q_OBJECT

public:
    explicit Gallery(int columns, QWidget* parent = nullptr);

    void Mark(const host::Registry& tool);

signals:
    void Chosen(host::Registry* tool);

protected:
    void keyPressEvent(QKeyEvent* event) override;
};

} // namespace view
