#include "WebArticleView.h"

#include <QCoreApplication>
#include <QPointer>
#include <QWebEnginePage>
#include <QWebEngineProfile>
#include <QWebEngineSettings>
#include <QWebEngineUrlRequestInterceptor>
#include <QWebEngineView>

#ifdef Q_OS_UNIX
#include <unistd.h>
#endif

namespace {

// Local files are for local pages only: a page from the web asking for file: URLs gets nothing.
class LocalFileGuard final : public QWebEngineUrlRequestInterceptor
{
public:
    using QWebEngineUrlRequestInterceptor::QWebEngineUrlRequestInterceptor;
    void interceptRequest(QWebEngineUrlRequestInfo &info) override
    {
        const QUrl first = info.firstPartyUrl();
        if (info.requestUrl().isLocalFile() && first.isValid() && !first.isLocalFile())
            info.block(true);
    }
};

// The program opens its own pages; what a click in them follows is the feed's choice, so
// only a web link is followed there.
class ArticlePage final : public QWebEnginePage
{
public:
    using QWebEnginePage::QWebEnginePage;

protected:
    bool acceptNavigationRequest(const QUrl &url, NavigationType type, bool isMainFrame) override
    {
        if (type == NavigationTypeTyped || type == NavigationTypeReload)
            return true;
        if (url.adjusted(QUrl::RemoveFragment) == this->url().adjusted(QUrl::RemoveFragment))
            return true; // a place in the same page
        Q_UNUSED(isMainFrame);
        return WebArticleView::MayFollow(url);
    }
};

// One off-the-record profile for every view of the process: nothing a feed's page sets is
// kept, and later previews reuse what the first one started.
QWebEngineProfile *articleProfile()
{
    static QPointer<QWebEngineProfile> profile;
    if (!profile) {
        profile = new QWebEngineProfile(QCoreApplication::instance());
        profile->setUrlRequestInterceptor(new LocalFileGuard(profile));
        QWebEngineSettings *settings = profile->settings();
        settings->setAttribute(QWebEngineSettings::JavascriptEnabled, false);
        settings->setAttribute(QWebEngineSettings::PluginsEnabled, false);
        settings->setAttribute(QWebEngineSettings::LocalContentCanAccessRemoteUrls, false);
        settings->setAttribute(QWebEngineSettings::JavascriptCanOpenWindows, false);
        settings->setAttribute(QWebEngineSettings::AutoLoadIconsForPage, false);
    }
    return profile;
}

} // namespace

WebArticleView::WebArticleView(QWidget *parent) : ArticleView(parent)
{
    m_view = new QWebEngineView(parent);
    m_view->setObjectName(QStringLiteral("webArticle"));
    m_view->setPage(new ArticlePage(articleProfile(), m_view));
    connect(m_view, &QWebEngineView::loadFinished, this,
            [this](bool ok) { Q_EMIT NavigationComplete(m_view->url(), ok); });
}

WebArticleView::~WebArticleView()
{
    // The page must go before its profile.
    delete m_view->page();
}

QWidget *WebArticleView::Widget()
{
    return m_view;
}

void WebArticleView::Navigate(const QUrl &url)
{
    m_view->setUrl(url);
}

QUrl WebArticleView::Location() const
{
    return m_view->url();
}

QString WebArticleView::Title() const
{
    return m_view->title();
}

void WebArticleView::AllowRemoteContent(bool allow)
{
    // The article is a local page, and a local page reaches the web only when this allows it.
    m_view->page()->settings()->setAttribute(QWebEngineSettings::LocalContentCanAccessRemoteUrls, allow);
}

bool WebArticleView::MayFollow(const QUrl &url)
{
    const QString scheme = url.scheme().toLower();
    return scheme == QLatin1String("http") || scheme == QLatin1String("https");
}

void WebArticleView::PrepareProcess()
{
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts);
#ifdef Q_OS_UNIX
    // The engine's sandbox refuses to run as root; a root session runs the view without it.
    if (geteuid() == 0 && qEnvironmentVariableIsEmpty("QTWEBENGINE_DISABLE_SANDBOX"))
        qputenv("QTWEBENGINE_DISABLE_SANDBOX", "1");
#endif
}
