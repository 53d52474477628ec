#pragma once

#include "TestFiles.h"

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
        const QByteArray manifest = TestFiles::read(corpusDir() + u'/' + folder + "/manifest.json");
        return QJsonDocument::fromJson(manifest).object().value("cases").toArray();
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
        return TestFiles::read(corpusDir() + u'/' + folder + u'/' + path);
    }
};
