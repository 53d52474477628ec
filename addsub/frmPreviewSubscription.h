#pragma once

#include "SubscribeClient.h"

#include <QDialog>
#include <QPointer>

#include <memory>

namespace Ui {
class frmPreviewSubscription;
}
class ArticleView;

// A feed fetched once without subscribing: its articles listed, the selected one shown through
// the article template. Closed by cmdAdd (result 2), cmdDone or a feed that cannot be shown.
class frmPreviewSubscription : public QDialog
{
    Q_OBJECT
public:
    static constexpr int kResultAdd = 2;

    explicit frmPreviewSubscription(QWidget *parent = nullptr);
    ~frmPreviewSubscription() override;

    // noAdd: preview without the choice to add.
    void InitWindow(quillon::SubscribeClientPtr client, QObject *host, const QString &title,
                    const QString &url, bool noAdd);
    Q_INVOKABLE void EventPreviewCallback(qint32 answer);
    [[nodiscard]] int GetResults() const { return m_result; }

    void ShowArticle(qint32 index);
    [[nodiscard]] ArticleView &View() const { return *m_view; }
    [[nodiscard]] QString PreviewPagePath() const { return m_pagePath; }
    // How often the preview page was written; a click on the row shown writes nothing.
    [[nodiscard]] int PageWrites() const { return m_pageWrites; }

protected:
    void showEvent(QShowEvent *event) override;

private:
    void RequestPreview();
    void ShowAnswerWhenDrawn();
    void ShowAnswer();
    void ShowError();
    [[nodiscard]] QString ArticlePage(qint32 index) const;
    void WritePage(const QString &text);
    void OnNavigationComplete(const QUrl &location);
    // The reader's choice for this feed's remote content, read when the window is set up.
    void LoadImageChoice();
    void OnShowImages(bool shown);
    void OnAdd();
    void OnPublish();
    void OnDone();
    void ResetWindow();

    std::unique_ptr<Ui::frmPreviewSubscription> ui;
    ArticleView *m_view = nullptr;
    quillon::SubscribeClientPtr m_client;
    QPointer<QObject> m_host;
    QString m_title;
    QString m_url;
    QString m_requestId;
    quillon::Handle m_answer = 0;
    qint32 m_currentArticle = -99;
    bool m_needRequest = true;
    bool m_answerShown = false;
    bool m_filling = false;
    QString m_pagePath;
    int m_pageWrites = 0;
    bool m_showImages = false;
    int m_result = 0;
};
