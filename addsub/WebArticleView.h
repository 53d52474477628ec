#pragma once

#include "ArticleView.h"

class QWebEngineView;

// The article view on the embedded web engine. Feed HTML is untrusted: scripts never run,
// plugins are off, a page from the web cannot load local files, and a click follows only
// http(s) links.
class WebArticleView final : public ArticleView
{
    Q_OBJECT
public:
    explicit WebArticleView(QWidget *parent);
    ~WebArticleView() override;

    QWidget *Widget() override;
    void Navigate(const QUrl &url) override;
    QUrl Location() const override;
    QString Title() const override;
    void AllowRemoteContent(bool allow) override;

    // A link the reader clicks in a shown page is followed only to the web.
    [[nodiscard]] static bool MayFollow(const QUrl &url);

    // Settles what the engine needs before the application object exists (call from main).
    static void PrepareProcess();

private:
    QWebEngineView *m_view;
};
