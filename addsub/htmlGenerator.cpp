#include "htmlGenerator.h"

#include "ArticlePage.h"
#include "CLog.h"
#include "commonUtils.h"

#include <QDir>
#include <QFile>

#include <exception>
#include <utility>

namespace htmlGenerator {

namespace {

const QString kMissing = QStringLiteral("-237237");

// Templates are small; a file beyond this is not one, and reading it would only cost memory.
constexpr qint64 kMaxTemplateBytes = 1024 * 1024;

const QString kPageFallback = QStringLiteral(
    "<html><body><table width='100%' border='0' cellspacing='0' cellpadding='3'><tr><td><h2>"
    "<a href='~DATA_ARTICLEURL~'>~DATA_ARTICLETITLE~</a></h2></td></tr><tr><td>~DATA_ARTICLEBODY~"
    "</td></tr>~DATA_SOURCE~~DATA_COMMENTS~~DATA_ENCLOSURE~<tr><td><font size='-2'>"
    "<a href='~DATA_HOSTURL~'>~DATA_HOSTTITLE~</a>~DATA_ARTICLEDATE~ ~DATA_ARTICLETIME~   "
    "(warning: template file missing, backup template in use)</font></td></tr></table></body></html>");

const QString kSourceFallback =
    QStringLiteral("<tr><td>&nbsp;</td><td><div align='right'><a href='~DATA_SOURCEURL~'>"
                   "<img src='~DATA_LOCALPATH~images/source.gif' border='0'></a></div></td><td>"
                   "<a href='~DATA_SOURCEURL~'>~DATA_SOURCETITLE~</a></td><td>&nbsp;</td></tr>");

const QString kCommentsFallback =
    QStringLiteral("<tr><td>&nbsp;</td><td><div align='right'><a href='~DATA_COMMENTSURL~'>"
                   "<img src='~DATA_LOCALPATH~images/comments.gif' border='0'></a></div></td><td>"
                   "<a href='~DATA_COMMENTSURL~'>~DATA_COMMENTSTITLE~</a></td><td>&nbsp;</td></tr>");

const QString kEnclosureFallback = QStringLiteral(
    "<tr><td>&nbsp;</td><td><div align='right'><a href='~DATA_ENCLOSUREURL~'>"
    "<img src='~DATA_LOCALPATH~images/~DATA_ENCLOSUREFILETYPE~.gif' border='0'></a></div></td><td>"
    "<a href='~DATA_ENCLOSUREURL~'>~DATA_ENCLOSURETITLE~</a></td><td>&nbsp;</td></tr>");

const QString kOpenEnclosureLink = QStringLiteral(
    "quillon://127.0.0.1:45888/qli_msg.gif?Source=HTML&Destination=OLCONSUMER&cmd=openenclosure&aid=");

QString &hostTitle()
{
    static QString value = QStringLiteral("Corvell");
    return value;
}

QString &hostUrl()
{
    static QString value;
    return value;
}

using Replacements = std::initializer_list<std::pair<QString, QString>>;

// In the order given, so a value put in earlier is itself searched by the later placeholders.
void fill(QString &text, Replacements replacements)
{
    for (const auto &[placeholder, value] : replacements)
        text.replace(placeholder, value, Qt::CaseInsensitive);
}

// A missing, unreadable or oversized file reads as empty, so the built-in text is used.
QString readTemplate(const QString &path, const QString &fallback)
{
    QFile file(path);
    QString text;
    if (file.size() > kMaxTemplateBytes)
        CLog::SaveMessage(QStringLiteral("htmlGenerator"), QStringLiteral("template too large"), path);
    else if (file.open(QIODevice::ReadOnly))
        text = QString::fromUtf8(file.readAll());
    return text.isEmpty() ? fallback : text;
}

QString blockTemplate(const QString &localPath, bool safe, const QString &stem, const QString &fallback)
{
    const QString name =
        stem + (safe ? QStringLiteral("TemplateSafe.html") : QStringLiteral("Template.html"));
    QString text = readTemplate(localPath + name, fallback);
    fill(text, {{QStringLiteral("~DATA_LOCALPATH~"), localPath}});
    return text;
}

QString effectiveHostUrl(const QString &fallback)
{
    const QString &url = hostUrl();
    return (url == QLatin1String(" ") || url.isEmpty() || url == kMissing) ? fallback : url;
}

QString buildPage(const QString &programFolder, const ArticleFields &f)
{
    const QString localPath = LocalPath(programFolder);
    QString name = f.templateName;
    if (name.isEmpty())
        name = f.safe ? QStringLiteral("templateSafe.html") : QStringLiteral("template.html");
    const QString source = SourceBlock(localPath, f.safe, f.sourceUrl, f.sourceTitle);
    const QString comments = CommentsBlock(localPath, f.safe, f.commentsUrl);
    QString enclosure =
        EnclosureBlock(localPath, f.safe, f.enclosureUrl, f.enclosureType, f.articleId,
                       quillon::ArticlePage::enclosureDetail(f.enclosureType, f.enclosureLength));
    if (!f.diskEnclosure.isEmpty() && f.diskEnclosure != kMissing)
        enclosure += EnclosureBlock(localPath, f.safe, f.diskEnclosure, QStringLiteral("DISK"), f.articleId);
    quillon::ArticlePageValues values;
    values.idText = f.idText;
    values.localPath = localPath;
    values.title = f.title;
    values.body = f.body;
    values.url = f.url;
    values.hostTitle = hostTitle();
    values.hostUrl = effectiveHostUrl(f.hostUrlFallback);
    values.source = source;
    values.comments = comments;
    values.enclosure = enclosure;
    values.date = f.dateText;
    values.hidden = f.hiddenText;
    values.author = f.author;
    const QString page = quillon::ArticlePage::fill(readTemplate(localPath + name, kPageFallback), values,
                                                    quillon::ArticlePage::Pass::InOrder);

    QString trailer = QStringLiteral("<!-- qliArticleID=~DATA_BACKUPID~ -->");
    fill(trailer, {{QStringLiteral("~DATA_BACKUPID~"), QString::number(f.articleId)}});
    return page + trailer;
}

} // namespace

QString LocalPath(const QString &programFolder)
{
    return QDir::cleanPath(programFolder + QStringLiteral("/QuillonData/css/current")) + QLatin1Char('/');
}

QString BuildArticlePage(const QString &programFolder, const ArticleFields &fields)
{
    try {
        return buildPage(programFolder, fields);
    } catch (const std::exception &e) {
        CLog::SaveMessage(QStringLiteral("htmlGenerator"), QStringLiteral("article page not built"),
                          QString::fromUtf8(e.what()));
    } catch (...) {
        CLog::SaveMessage(QStringLiteral("htmlGenerator"), QStringLiteral("article page not built"));
    }
    return QString();
}

QString SourceBlock(const QString &localPath, bool safe, const QString &url, const QString &title)
{
    if (url.isEmpty())
        return QString();
    QString text = blockTemplate(localPath, safe, QStringLiteral("source"), kSourceFallback);
    fill(text, {{QStringLiteral("~DATA_SOURCETITLE~"), title.isEmpty() ? url : title},
                {QStringLiteral("~DATA_SOURCEURL~"), url}});
    return text;
}

QString CommentsBlock(const QString &localPath, bool safe, const QString &url)
{
    if (url.isEmpty())
        return QString();
    QString text = blockTemplate(localPath, safe, QStringLiteral("comments"), kCommentsFallback);
    fill(text, {{QStringLiteral("~DATA_COMMENTSURL~"), url},
                {QStringLiteral("~DATA_COMMENTSTITLE~"), QStringLiteral("Link to Comments")}});
    return text;
}

QString EnclosureBlock(const QString &localPath, bool safe, const QString &url, const QString &type,
                       qint32 articleId, const QString &detail)
{
    if (url.isEmpty())
        return QString();
    if (type == QLatin1String("DISK")) {
        // The icon placeholder is left in on purpose: the stored copy's type is not known here.
        QString text = blockTemplate(localPath, safe, QStringLiteral("enclosureDisk"), kEnclosureFallback);
        fill(text, {{QStringLiteral("~DATA_ENCLOSUREURL~"), kOpenEnclosureLink + QString::number(articleId)},
                    {QStringLiteral("~DATA_ENCLOSURETITLE~"), url}});
        return text;
    }
    QString text = blockTemplate(localPath, safe, QStringLiteral("enclosure"), kEnclosureFallback);
    fill(text, {{QStringLiteral("~DATA_ENCLOSUREFILETYPE~"), EnclosureFileType(url, type)},
                {QStringLiteral("~DATA_ENCLOSUREURL~"), url},
                {QStringLiteral("~DATA_ENCLOSURETITLE~"), url},
                {QStringLiteral("~DATA_ENCLOSUREDETAIL~"), detail.toHtmlEscaped()}});
    return text;
}

void SetHostTitle(const QString &title)
{
    hostTitle() = title;
}

void SetHostUrl(const QString &url)
{
    hostUrl() = url;
}

QString HostTitle()
{
    return hostTitle();
}

QString HostUrl()
{
    return hostUrl();
}

} // namespace htmlGenerator
