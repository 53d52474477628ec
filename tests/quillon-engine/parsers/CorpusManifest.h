#pragma once

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

// The conformance samples live outside the tree, each folder indexed by a manifest.json that
// restates every sample's embedded expectation.
class CorpusManifest
{
public:
    static QString corpusDir()
    {
        return QDir::cleanPath(qEnvironmentVariable("QUILLON_SOURCE_DIR") + "/../shared/corpus");
    }

    // Cases of one folder ("feedparser", "listparser"); empty when the corpus is absent.
    static QJsonArray cases(const QString &folder)
    {
        QFile file(corpusDir() + u'/' + folder + "/manifest.json");
        if (!file.open(QIODevice::ReadOnly))
            return {};
        return QJsonDocument::fromJson(file.readAll()).object().value("cases").toArray();
    }

    // The cases of one category ("wellformed", "opml", ...) in that folder.
    static QList<QJsonObject> cases(const QString &folder, const QString &category)
    {
        QList<QJsonObject> found;
        for (const QJsonValue &value : cases(folder)) {
            if (value.toObject().value("category").toString() == category)
                found.append(value.toObject());
        }
        return found;
    }

    static QByteArray sample(const QString &folder, const QString &path)
    {
        QFile file(corpusDir() + u'/' + folder + u'/' + path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
};
