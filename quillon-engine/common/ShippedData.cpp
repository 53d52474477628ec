#include "ShippedData.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

namespace quillon {

QString ShippedDataFolder()
{
    if (!QCoreApplication::instance())
        return QString();
    const QDir program(QCoreApplication::applicationDirPath());
    const QString beside = program.filePath(QStringLiteral("QuillonData"));
    if (QFileInfo(beside).isDir())
        return beside;
    return QDir::cleanPath(program.filePath(QStringLiteral(QUILLON_INSTALLED_DATA)));
}

} // namespace quillon
