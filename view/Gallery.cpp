#include "view/Gallery.h"

#include "host/Tags.h"
#include "media/PlugIns.h"
#include "media/Words.h"

#include <QCoreApplication>
#include <QPainter>

namespace view {

namespace {

constexpr int kWide = 128, kHigh = 72;

/// The picture that the installation has of a tool; a plain field where it has none.
QIcon PictureOf(const QString& name) {
    const QString file =
        QCoreApplication::applicationDirPath() + "/../share/k7/pictures/" + name + "-after.jpg";
    QPixmap picture(file);
    if (picture.isNull()) {
        picture = QPixmap(kWide, kHigh);
        picture.fill(QColor(90, 90, 90));
    }
    QIcon icon;
    icon.addPixmap(picture, QIcon::Normal);
    icon.addPixmap(picture, QIcon::Selected); // with its own colours
    return icon;
}

} // namespace

Gallery::Gallery(QWidget* parent) : QListWidget(parent) {
    setViewMode(QListView::IconMode);
    setIconSize({kWide, kHigh});
    setGridSize({kWide + 18, kHigh + 30});
    setFixedWidth(kWide + 42);
    setViewportMargins(0, 8, 0, 0);
    setMovement(QListView::Static);
    setResizeMode(QListView::Adjust);
    setFrameShape(QFrame::NoFrame);
    setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    setAccessibleName(tr("Tools"));
    for (const host::Registry* tool : media::Tools()) {
        const QString name = QString::fromStdString(media::PlainName(*tool));
        auto* item = new QListWidgetItem(PictureOf(name), name, this);
        item->setToolTip(QString::fromStdString(media::Trimmed(tool->GetAttrS(host::kTagRegDescription))));
    }
    connect(this, &QListWidget::itemActivated, this,
            [this] { emit Chosen(media::Tools().at(static_cast<std::size_t>(currentRow()))); });
    connect(this, &QListWidget::itemClicked, this,
            [this] { emit Chosen(media::Tools().at(static_cast<std::size_t>(currentRow()))); });
}

void Gallery::Mark(const host::Registry& tool) {
    const std::vector<host::Registry*> tools = media::Tools();
    for (std::size_t i = 0; i < tools.size(); ++i)
        if (tools[i] == &tool) setCurrentRow(static_cast<int>(i));
}

} // namespace view
