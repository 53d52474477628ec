#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

// A neomutt (and mutt) configuration kept in the Maildir tree's root, naming the tree and
// every folder in it, so "neomutt -F <root>/neomuttrc" opens the delivered feeds with all
// their folders listed: a mail program's folder browser hides Maildir++'s dot-folders.
class MailReaderConfig
{
public:
    static inline const QString kFileName = QStringLiteral("neomuttrc");

    // dirNames: the folders' directory names (".Feeds.News"), in the order to list them.
    [[nodiscard]] static QByteArray text(const QString &root, const QStringList &dirNames);
    // Writes the file whole, or leaves the last one.
    static bool write(const QString &root, const QStringList &dirNames);
};
