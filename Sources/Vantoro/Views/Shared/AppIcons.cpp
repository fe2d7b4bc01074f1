#include "Views/Shared/AppIcons.h"

#include <QFile>
#include <QFileIconProvider>
#include <QFileInfo>
#include <QIcon>
#include <QTextStream>

namespace vantoro {

namespace {

/// The name or path behind "Icon=" in the entry's own section.
QString iconOfEntry(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    QTextStream lines(&file);
    bool isEntry = false;
    for (QString line; lines.readLineInto(&line);) {
        line = line.trimmed();
        if (line.startsWith(u'['))
            isEntry = line == QLatin1String("[Desktop Entry]");
        else if (isEntry && line.startsWith(QLatin1String("Icon=")))
            return line.mid(5).trimmed();
    }
    return {};
}

QIcon iconOf(const QString& path) {
    if (path.endsWith(QLatin1String(".desktop"))) {
        const QString icon = iconOfEntry(path);
        return QFileInfo(icon).isAbsolute() ? QIcon(icon) : QIcon::fromTheme(icon);
    }
    return QFileInfo::exists(path) ? QFileIconProvider().icon(QFileInfo(path)) : QIcon();
}

} // namespace

const QPixmap& AppIcons::pixmap(const QString& appPath, int size, double pixelRatio) {
    // A machine has some dozens of applications that ever get busy.
    constexpr qsizetype most = 200;
    if (found_.size() > most)
        found_.clear();
    const QString key = QStringLiteral("%1/%2/%3").arg(appPath).arg(size).arg(pixelRatio);
    auto found = found_.find(key);
    if (found == found_.end()) {
        const QIcon icon = appPath.isEmpty() ? QIcon() : iconOf(appPath);
        found = found_.insert(key, icon.isNull() ? QPixmap() : icon.pixmap(QSize(size, size), pixelRatio));
    }
    return *found;
}

} // namespace vantoro
