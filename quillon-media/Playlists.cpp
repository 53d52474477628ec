#include "Playlists.h"

#include "MediaLogging.h"
#include "MediaPlacement.h"

#include <QDir>
#include <QFile>
#include <QSaveFile>
#include <QUrl>
#include <QXmlStreamReader>
#include <QXmlStreamWriter>

#include <utility>

namespace {
QByteArray m3u(const QList<Playlists::Track> &tracks)
{
    QByteArray out = "#EXTM3U\n";
    for (const Playlists::Track &t : tracks) {
        QString title = t.title;
        title.replace(QLatin1Char('\n'), QLatin1Char(' '));
        out += "#EXTINF:-1," + title.toUtf8() + '\n' + t.file.toUtf8() + '\n';
    }
    return out;
}

QByteArray xspf(const QList<Playlists::Track> &tracks)
{
    QByteArray out;
    QXmlStreamWriter xml(&out);
    xml.setAutoFormatting(true);
    xml.writeStartDocument();
    xml.writeStartElement(QStringLiteral("playlist"));
    xml.writeAttribute(QStringLiteral("version"), QStringLiteral("1"));
    xml.writeDefaultNamespace(QStringLiteral("http://xspf.org/ns/0/"));
    xml.writeStartElement(QStringLiteral("trackList"));
    for (const Playlists::Track &t : tracks) {
        xml.writeStartElement(QStringLiteral("track"));
        xml.writeTextElement(QStringLiteral("location"),
                             QUrl::fromLocalFile(t.file).toString(QUrl::FullyEncoded));
        xml.writeTextElement(QStringLiteral("title"), t.title);
        xml.writeEndElement();
    }
    xml.writeEndDocument();
    return out;
}

bool replace(const QString &path, const QByteArray &bytes)
{
    QSaveFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && file.commit();
}
} // namespace

QList<Playlists::Track> Playlists::readXspf(const QString &path)
{
    QList<Track> tracks;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return tracks;
    QXmlStreamReader xml(&file);
    while (!xml.atEnd() && xml.readNext() != QXmlStreamReader::Invalid) {
        if (!xml.isStartElement())
            continue;
        if (xml.name() == QLatin1String("track"))
            tracks.append(Track{});
        else if (xml.name() == QLatin1String("location") && !tracks.isEmpty())
            tracks.last().file = QUrl(xml.readElementText()).toLocalFile();
        else if (xml.name() == QLatin1String("title") && !tracks.isEmpty())
            tracks.last().title = xml.readElementText();
    }
    if (xml.hasError())
        qCWarning(lcMedia) << "playlist" << path << "unreadable:" << xml.errorString();
    return tracks;
}

QList<Playlists::Track> Playlists::readM3u(const QString &path)
{
    QList<Track> tracks;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return tracks;
    QString title;
    for (const QByteArray &raw : file.readAll().split('\n')) {
        const QString line = QString::fromUtf8(raw).trimmed();
        if (line.startsWith(QLatin1String("#EXTINF:")))
            title = line.section(QLatin1Char(','), 1);
        else if (!line.isEmpty() && !line.startsWith(QLatin1Char('#')))
            tracks.append({line, std::exchange(title, QString())});
    }
    return tracks;
}

bool Playlists::append(const QString &name, const Track &track)
{
    const QString base = QDir(m_folder).filePath(MediaPlacement::safeName(name));
    QList<Track> tracks = readXspf(base + QStringLiteral(".xspf"));
    for (const Track &t : tracks) {
        if (t.file == track.file)
            return true;
    }
    tracks.append(track);
    return write(name, tracks);
}

void Playlists::remove(const QString &file)
{
    const QDir dir(m_folder);
    for (const QString &name : dir.entryList({QStringLiteral("*.xspf")}, QDir::Files)) {
        QList<Track> tracks = readXspf(dir.filePath(name));
        if (tracks.removeIf([&](const Track &t) { return t.file == file; }) > 0)
            write(name.chopped(5), tracks);
    }
}

bool Playlists::write(const QString &name, const QList<Track> &tracks) const
{
    QDir().mkpath(m_folder);
    const QString base = QDir(m_folder).filePath(MediaPlacement::safeName(name));
    if (replace(base + QStringLiteral(".m3u"), m3u(tracks)) &&
        replace(base + QStringLiteral(".xspf"), xspf(tracks)))
        return true;
    qCWarning(lcMedia) << "cannot write the playlist" << base;
    return false;
}
