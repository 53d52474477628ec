#pragma once

#include <QList>
#include <QString>

// One blogging service a weblog can be added from, as "service.xml" describes it.
struct BlogService
{
    QString name;
    int code = 0;        // the record's "publisher"
    QString api;         // "MetaWeblog" or "Blogger"
    QString postUrl;     // the same for every weblog of the service; else found from the weblog
    bool askUrl = false; // the user gives the posting address

    [[nodiscard]] bool BloggerOnly() const
    {
        return api.compare(QLatin1String("Blogger"), Qt::CaseInsensitive) == 0;
    }

    // The services listed in the file; none when it is missing or unreadable (logged).
    [[nodiscard]] static QList<BlogService> ReadCatalog(const QString &path);
};
