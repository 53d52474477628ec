#pragma once

#include <QList>
#include <QString>

// What the user chose in the welcome dialog.
struct WelcomeChoices
{
    // The file types the system opens, in the order of the "FileTypeHandling" keys.
    static inline const QStringList kFileTypes = {QStringLiteral("RSS"), QStringLiteral("ATOM"),
                                                  QStringLiteral("FEED"), QStringLiteral("OPML")};

    QList<bool> fileTypes = {true, true, true, true};
    bool newStore = false;
    bool starterFeeds = true;
    // One entry per reader offered, in the order offered.
    QList<bool> imports;
};
