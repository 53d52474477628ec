#include "NewsboatImporter.h"

#include "ReaderFiles.h"

#include <QHash>
#include <QSet>

namespace quillon {

namespace {

struct Feed
{
    QString url;
    QString title;
    QStringList tags;
};

// The address to subscribe to, or nothing for lines that are no feed address: "query:" feeds
// are searches over other feeds and "exec:" runs a command; "filter:script:url" is the feed at
// url, which we read without newsboat's filter.
QString feedAddress(const QString &word)
{
    if (word.startsWith(u"query:") || word.startsWith(u"exec:"))
        return {};
    if (word.startsWith(u"filter:")) {
        const qsizetype urlStart = word.indexOf(u':', 7);
        return urlStart < 0 ? QString() : word.mid(urlStart + 1).trimmed();
    }
    return word;
}

Feed feedOf(const QStringList &words)
{
    Feed feed{feedAddress(words.first()), {}, {}};
    for (qsizetype i = 1; i < words.size(); ++i) {
        const QString &word = words.at(i);
        if (word.startsWith(u'~')) {
            if (feed.title.isEmpty())
                feed.title = word.mid(1).trimmed();
            continue;
        }
        // "!" only hides the feed in newsboat's own list; the tag is the name after it.
        const QString tag = (word.startsWith(u'!') ? word.mid(1) : word).trimmed();
        if (!tag.isEmpty() && !feed.tags.contains(tag))
            feed.tags.append(tag);
    }
    return feed;
}

OpmlOutline outlineOf(const Feed &feed)
{
    OpmlOutline outline;
    outline.title = feed.title;
    // Lists show the text of an untitled feed; the engine swaps an address for the feed's title.
    outline.text = feed.title.isEmpty() ? feed.url : feed.title;
    outline.xmlUrl = feed.url;
    outline.type = QStringLiteral("rss");
    outline.category = feed.tags.mid(1).join(u',');
    return outline;
}

// Reads one quoted word from the quote at i, leaving i after its closing quote.
QString quotedWord(QStringView line, qsizetype &i)
{
    QString word;
    for (++i; i < line.size() && line.at(i) != u'"'; ++i) {
        if (line.at(i) == u'\\' && i + 1 < line.size()) {
            const QChar next = line.at(++i);
            word.append(next == u'n' ? QChar(u'\n') : next == u't' ? QChar(u'\t') : next);
        } else {
            word.append(line.at(i));
        }
    }
    ++i;
    return word;
}

// One line's words as newsboat splits them: blanks between words, double quotes around a word
// with blanks (backslash escapes inside), and an unquoted "#" starting a comment.
QStringList words(QStringView line)
{
    QStringList words;
    qsizetype i = 0;
    while (i < line.size()) {
        if (line.at(i).isSpace()) {
            ++i;
        } else if (line.at(i) == u'#') {
            break;
        } else if (line.at(i) == u'"') {
            words.append(quotedWord(line, i));
        } else {
            const qsizetype start = i;
            while (i < line.size() && !line.at(i).isSpace())
                ++i;
            words.append(line.mid(start, i - start).toString());
        }
    }
    return words;
}

} // namespace

QList<OpmlOutline> NewsboatImporter::read(const QByteArray &urls)
{
    QList<OpmlOutline> top;
    QHash<QString, qsizetype> folderIndex; // tag -> its folder in top
    QSet<QString> seen;                    // newsboat reads a repeated address as one feed
    const QString text = QString::fromUtf8(urls);
    for (const QStringView line : QStringView(text).split(u'\n')) {
        const QStringList lineWords = words(line);
        if (lineWords.isEmpty())
            continue;
        const Feed feed = feedOf(lineWords);
        if (feed.url.isEmpty() || seen.contains(feed.url))
            continue;
        seen.insert(feed.url);
        if (feed.tags.isEmpty()) {
            top.append(outlineOf(feed));
            continue;
        }
        const QString &folder = feed.tags.first();
        auto found = folderIndex.constFind(folder);
        if (found == folderIndex.cend()) {
            OpmlOutline outline;
            outline.title = folder;
            outline.text = folder;
            found = folderIndex.insert(folder, top.size());
            top.append(outline);
        }
        top[*found].children.append(outlineOf(feed));
    }
    return top;
}

// newsboat reads ~/.newsboat when it exists and the XDG folder otherwise; newsbeuter likewise.
QString NewsboatImporter::urlsFile()
{
    QStringList files;
    for (const QString &reader : {QStringLiteral("newsboat"), QStringLiteral("newsbeuter")}) {
        files << ReaderFiles::home() + QStringLiteral("/.") + reader + QStringLiteral("/urls")
              << ReaderFiles::configHome() + u'/' + reader + QStringLiteral("/urls");
    }
    return ReaderFiles::firstExisting(files);
}

bool NewsboatImporter::available() const
{
    return !urlsFile().isEmpty();
}

QList<OpmlOutline> NewsboatImporter::subscriptions() const
{
    const QString path = urlsFile();
    return path.isEmpty() ? QList<OpmlOutline>() : read(ReaderFiles::read(path));
}

} // namespace quillon
