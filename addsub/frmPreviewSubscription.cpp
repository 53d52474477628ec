#include "frmPreviewSubscription.h"

#include "ArticlePage.h"
#include "ArticlePublisher.h"
#include "CBPreviewSub.h"
#include "ConsumerSettings.h"
#include "EngineNames.h"
#include "HandleGuard.h"
#include "PreviewAnswer.h"
#include "PropertyBag.h"
#include "RemoteContent.h"
#include "StandardDialogs.h"
#include "WebArticleView.h"
#include "commonUtils.h"
#include "htmlGenerator.h"
#include "localization.h"
#include "ui_frmPreviewSubscription.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLoggingCategory>
#include <QStandardPaths>

Q_LOGGING_CATEGORY(lcPreview, "corvell.addsub.preview")

using quillon::Handle;
using quillon::RemoteContent;

namespace {
const QString kPageName = QStringLiteral("preview.html");
const QString kMissing = quillon::kMissingText;

// The folder that holds QuillonData, as the page builder expects.
QString templatesParent()
{
    return QFileInfo(QuillonDataFolder()).path();
}
} // namespace

frmPreviewSubscription::frmPreviewSubscription(QWidget *parent)
    : QDialog(parent), ui(std::make_unique<Ui::frmPreviewSubscription>())
{
    ui->setupUi(this);
    m_view = new WebArticleView(ui->picArticle);
    ui->picArticle->layout()->addWidget(m_view->Widget());
    ui->splitArticles->setStretchFactor(1, 3);
    ui->splitArticles->setSizes({150, 450});
    connect(m_view, &ArticleView::NavigationComplete, this, &frmPreviewSubscription::OnNavigationComplete);
    connect(ui->grdArticles, &QTreeWidget::currentItemChanged, this, [this]() {
        if (!m_filling)
            ShowArticle(ui->grdArticles->indexOfTopLevelItem(ui->grdArticles->currentItem()));
    });
    connect(ui->grdArticles, &QTreeWidget::itemClicked, this,
            [this](QTreeWidgetItem *item) { ShowArticle(ui->grdArticles->indexOfTopLevelItem(item)); });
    connect(ui->cmdShowArticle, &QPushButton::clicked, this, [this]() {
        m_view->Navigate(QUrl::fromLocalFile(m_pagePath));
        ui->cmdShowArticle->setEnabled(false);
    });
    connect(ui->cmdShowImages, &QPushButton::toggled, this, &frmPreviewSubscription::OnShowImages);
    connect(ui->cmdAdd, &QPushButton::clicked, this, &frmPreviewSubscription::OnAdd);
    connect(ui->cmdPublish, &QPushButton::clicked, this, &frmPreviewSubscription::OnPublish);
    connect(ui->cmdDone, &QPushButton::clicked, this, &frmPreviewSubscription::OnDone);
}

frmPreviewSubscription::~frmPreviewSubscription()
{
    ResetWindow();
}

void frmPreviewSubscription::InitWindow(quillon::SubscribeClientPtr client, QObject *host,
                                        const QString &title, const QString &url, bool noAdd)
{
    m_client = std::move(client);
    m_host = host;
    m_title = title;
    m_url = url;
    ui->cmdAdd->setEnabled(!noAdd);
    LoadImageChoice();
}

void frmPreviewSubscription::LoadImageChoice()
{
    const bool known = m_client && !quillon::presentText(m_url).isEmpty();
    try {
        m_showImages =
            known && TextToBool(GetConsumerSetting(*m_client, m_url, QStringLiteral("0"),
                                                   RemoteContent::kConsumer, RemoteContent::kSection));
    } catch (const std::exception &e) {
        qCWarning(lcPreview) << "cannot read the image choice:" << e.what();
    }
    const QSignalBlocker quiet(ui->cmdShowImages);
    ui->cmdShowImages->setEnabled(known);
    ui->cmdShowImages->setChecked(m_showImages);
    m_view->AllowRemoteContent(m_showImages);
}

void frmPreviewSubscription::OnShowImages(bool shown)
{
    m_showImages = shown;
    m_view->AllowRemoteContent(shown);
    // Remembered for the feed: its delivered articles follow the same choice.
    try {
        if (m_client)
            SetConsumerSetting(*m_client, RemoteContent::kConsumer, RemoteContent::kSection, m_url,
                               shown ? QStringLiteral("1") : QStringLiteral("0"));
    } catch (const std::exception &e) {
        qCWarning(lcPreview) << "cannot keep the image choice:" << e.what();
    }
    const qint32 shownArticle = std::exchange(m_currentArticle, -99);
    ShowArticle(shownArticle);
}

void frmPreviewSubscription::showEvent(QShowEvent *event)
{
    QDialog::showEvent(event);
    if (m_needRequest)
        QMetaObject::invokeMethod(this, &frmPreviewSubscription::RequestPreview, Qt::QueuedConnection);
}

void frmPreviewSubscription::RequestPreview()
{
    if (!m_needRequest || !m_client)
        return;
    m_needRequest = false;
    auto callback = std::make_shared<CBPreviewSub>();
    callback->Setup(this);
    try {
        m_requestId = m_client->RequestPreview(EngineNames::kNewsClass, m_url, callback);
    } catch (const std::exception &e) {
        qCWarning(lcPreview) << "preview request failed:" << e.what();
        ShowError();
    }
}

void frmPreviewSubscription::EventPreviewCallback(qint32 answer)
{
    if (!m_client)
        return;
    // The message dies with the callback; keep its Result in a bag of our own.
    HandleGuard result(*m_client, m_client->GetHandleValue(answer, QStringLiteral("Result")));
    m_answer = m_client->NewBag();
    if (result.isValid())
        m_client->SetHandleValue(m_answer, QStringLiteral("Result"), result.get());
    ui->txtLoading->hide();
    // Shown from the event loop, never inside the engine's delivery of the answer.
    QMetaObject::invokeMethod(this, &frmPreviewSubscription::ShowAnswerWhenDrawn, Qt::QueuedConnection);
}

void frmPreviewSubscription::ShowAnswerWhenDrawn()
{
    if (m_answer < 1 || m_answerShown)
        return;
    m_answerShown = true;
    ShowAnswer();
}

void frmPreviewSubscription::ShowAnswer()
{
    const PreviewAnswer answer(*m_client, m_answer);
    const std::optional<PreviewAnswer::Header> header = answer.ReadHeader();
    if (!header) {
        ShowError();
        return;
    }
    // An empty title from the caller means "not given": the feed names itself then. The
    // missing-value marker keeps the bare caption.
    const QString title = m_title.isEmpty() ? header->title : m_title;
    const bool named = !title.isEmpty() && title != kMissing;
    setWindowTitle(named ? QStringLiteral("Corvell") + QStringLiteral(" - Preview for '") + title +
                               QStringLiteral("'")
                         : QStringLiteral("Corvell"));
    if (named)
        ui->txtTitle->setText(title);
    if (m_url != kMissing)
        ui->txtURL->setText(m_url);
    if (header->description != kMissing)
        ui->lblDescription->setText(header->description);
    ui->txtCount->setText(QString::number(header->itemCount));
    const std::optional<QStringList> subjects = answer.Subjects();
    if (!subjects)
        return;
    ui->grdArticles->clear();
    m_filling = true;
    QList<QTreeWidgetItem *> rows;
    for (const QString &subject : *subjects)
        rows << new QTreeWidgetItem(QStringList{subject});
    ui->grdArticles->addTopLevelItems(rows);
    m_filling = false;
    if (!rows.isEmpty()) {
        const QSignalBlocker quiet(ui->grdArticles);
        ui->grdArticles->setCurrentItem(rows.first());
    }
    ShowArticle(0);
}

void frmPreviewSubscription::ShowError()
{
    ShowAlert(this,
              QStringLiteral("There was an error loading the feed for preview.  Please check that the URL is "
                             "valid."),
              QString());
    ResetWindow();
    reject();
}

void frmPreviewSubscription::ShowArticle(qint32 index)
{
    if (index == m_currentArticle || index < 0)
        return;
    m_currentArticle = index;
    WritePage(ArticlePage(index));
    ui->cmdPublish->setEnabled(m_answer > 0);
}

QString frmPreviewSubscription::ArticlePage(qint32 index) const
{
    if (m_answer < 1 || !m_client)
        return QString();
    const std::optional<PreviewAnswer::Article> article = PreviewAnswer(*m_client, m_answer).ArticleAt(index);
    if (!article)
        return QStringLiteral("<br><br><br><br><br><c><b>Error Loading Article...</b></c>");
    htmlGenerator::ArticleFields fields;
    fields.title = article->subject;
    fields.body = m_showImages ? article->body : RemoteContent::asLinks(article->body);
    fields.url = article->url;
    fields.dateText = quillon::ArticlePage::dateText(article->date);
    fields.author = article->author.toHtmlEscaped();
    fields.enclosureUrl = article->enclosureUrl.toHtmlEscaped();
    fields.enclosureType = article->enclosureType;
    fields.enclosureLength = article->enclosureLength;
    return htmlGenerator::BuildArticlePage(templatesParent(), fields);
}

void frmPreviewSubscription::WritePage(const QString &text)
{
    if (text.isEmpty() && m_answer > 0)
        return; // the build failed; the page shown stays
    // In the user's cache, never among the shipped files: the page names its templates by full path.
    const QString cache = QStandardPaths::writableLocation(QStandardPaths::CacheLocation);
    QDir().mkpath(cache);
    const QString path = QDir(cache).filePath(kPageName);
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Text)) {
        qCWarning(lcPreview) << "cannot write the preview page" << path << file.errorString();
        return;
    }
    file.write(text.toUtf8() + "\n");
    file.close();
    ++m_pageWrites;
    m_pagePath = path;
    m_view->Navigate(QUrl::fromLocalFile(path));
}

void frmPreviewSubscription::OnNavigationComplete(const QUrl &location)
{
    // Enabled once the user follows a link away from the article.
    ui->cmdShowArticle->setEnabled(QFileInfo(location.path()).fileName() != kPageName);
}

void frmPreviewSubscription::OnAdd()
{
    ResetWindow();
    hide();
    m_result = kResultAdd;
    done(kResultAdd);
}

void frmPreviewSubscription::OnPublish()
{
    if (m_answer < 1 || !m_client)
        return;
    const PreviewAnswer answer(*m_client, m_answer);
    const std::optional<PreviewAnswer::Article> article = answer.ArticleAt(m_currentArticle);
    const std::optional<PreviewAnswer::Header> header = answer.ReadHeader();
    if (!article || !header)
        return;
    ArticlePublisher(m_client, this)
        .Publish({article->subject, article->url, article->body, article->author,
                  article->date.toString(QStringLiteral("yyyy-MM-dd")), quillon::presentText(header->title),
                  m_url, header->link});
}

void frmPreviewSubscription::OnDone()
{
    ResetWindow();
    reject();
}

void frmPreviewSubscription::ResetWindow()
{
    if (m_answer > 0 && m_client) {
        try {
            m_client->ReleaseHandle(m_answer);
        } catch (const std::exception &e) {
            qCWarning(lcPreview) << "cannot release the preview answer:" << e.what();
        }
    }
    m_answer = 0;
    m_currentArticle = -99;
    m_host.clear();
    m_client.reset();
    m_needRequest = true;
    m_answerShown = false;
}
