#include "view/Sequence.h"

#include "media/FilePattern.h"

#include <QFileInfo>
#include <QRegularExpression>

namespace view {

QString SequenceOf(const QString& path) {
    const QFileInfo file(path);
    const QString name = file.fileName();
    static const QRegularExpression number("^(.*?)(\\d+)([^\\d]*)$"); // the last one in the name
    const QRegularExpressionMatch parts = number.match(file.completeBaseName());
    if (!parts.hasMatch()) return path;
    const QString digits = parts.captured(2);
    const QString width = digits.size() > 1 ? "%0" + QString::number(digits.size()) + "d" : "%d";
    const QString pattern = path.left(path.size() - name.size()) + parts.captured(1) + width +
                            parts.captured(3) + "." + file.suffix();
    const media::FilePattern sequence(pattern.toStdString());
    return sequence.IsSequence() && sequence.FramesOnDisk().size() > 1 ? pattern : path;
}

} // namespace view
