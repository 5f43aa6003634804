#include "view/ToolPicture.h"

#include "host/Tags.h"
#include "media/PlugIns.h"
#include "media/Words.h"

#include <QCoreApplication>

#include <map>

namespace view {

namespace {

QIcon ReadPicture(const QString& name) {
    const QString file =
        QCoreApplication::applicationDirPath() + "/../share/k7/pictures/" + name + "-after.jpg";
    QPixmap picture(file);
    if (picture.isNull()) {
        picture = QPixmap(kToolPicture);
        picture.fill(QColor(90, 90, 90));
    }
    QIcon icon;
    icon.addPixmap(picture, QIcon::Normal);
    icon.addPixmap(picture, QIcon::Selected); // with its own colours
    return icon;
}

} // namespace

QIcon PictureOf(const host::Registry& tool) {
    static std::map<std::string, QIcon> pictures;
    const auto [found, fresh] = pictures.try_emplace(media::PlainName(tool));
    if (fresh) found->second = ReadPicture(QString::fromStdString(found->first));
    return found->second;
}

QString DescriptionOf(const host::Registry& tool) {
    return QString::fromStdString(media::Trimmed(tool.GetAttrS(host::kTagRegDescription)));
}

} // namespace view
