#pragma once

#include <QString>
#include <QStringList>

#include <memory>

// Whether the desktop hands a kind of document or link to this system's opener (quillon-open),
// one switch per "FileTypeHandling" key: "RSS", "ATOM", "FEED" (feed: links), "OPML".
class FileTypeAssociations
{
public:
    static inline const QString kHandlerId = QStringLiteral("quillon-open.desktop");

    virtual ~FileTypeAssociations() = default;

    // Makes the opener the user's handler of the key's types, or stops it being one; false when
    // the desktop's settings could not be written. An unknown key changes nothing.
    virtual bool SetHandled(const QString &key, bool handled) = 0;

    // The types behind a key, as the desktop names them.
    [[nodiscard]] static QStringList MimeTypes(const QString &key);
    // The desktop this program runs on.
    [[nodiscard]] static std::unique_ptr<FileTypeAssociations> ForThisDesktop();
};
