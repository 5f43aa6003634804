#include "view/Gallery.h"

#include "media/PlugIns.h"
#include "view/ToolPicture.h"

#include <QKeyEvent>

namespace view {

namespace {

constexpr int kWide = kToolPicture.width(), kHigh = kToolPicture.height();

} // namespace

Gallery::Gallery(int columns, QWidget* parent) : QListWidget(parent) {
    setViewMode(QListView::IconMode);
    setIconSize({kWide, kHigh});
    setGridSize({kWide + 18, kHigh + 30});
    setFixedWidth(columns * gridSize().width() + 24);
    setViewportMargins(0, 8, 0, 0);
    setMovement(QListView::Static);
    setResizeMode(QListView::Adjust);
    setFrameShape(QFrame::NoFrame);
    setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    setAccessibleName(tr("Tools"));
    for (const host::Registry* tool : media::Tools()) {
        const QString name = QString::fromStdString(media::PlainName(*tool));
        auto* item = new QListWidgetItem(PictureOf(*tool), name, this);
        item->setToolTip(DescriptionOf(*tool));
    }
    connect(this, &QListWidget::itemClicked, this,
            [this] { emit Chosen(media::Tools().at(static_cast<std::size_t>(currentRow()))); });
}

void Gallery::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        emit itemClicked(currentItem());
    else
        QListWidget::keyPressEvent(event);
}

void Gallery::Mark(const host::Registry& tool) {
    const std::vector<host::Registry*> tools = media::Tools();
    for (std::size_t i = 0; i < tools.size(); ++i)
        if (tools[i] == &tool) setCurrentRow(static_cast<int>(i));
}

} // namespace view
