#include "ArticlePublisher.h"

#include "PromptSeam.h"
#include "StandardDialogs.h"
#include "WeblogConnection.h"
#include "frmEditPost.h"
#include "frmPublishRequestOpt.h"
#include "localization.h"

#include <QApplication>
#include <QLoggingCategory>

Q_LOGGING_CATEGORY(lcArticlePublisher, "corvell.publishing.post")

using namespace PublishingUtils;

namespace {
// The "publisher" code of services that speak only the Blogger interface.
constexpr qint32 kBloggerCode = 2;
constexpr qint32 kLiveJournalCode = 3;
} // namespace

ArticlePublisher::ArticlePublisher(quillon::SubscribeClientPtr client, QWidget *owner, QString templateFolder)
    : m_client(std::move(client)), m_owner(owner),
      m_templateFolder(templateFolder.isEmpty() ? QuillonDataFolder() : std::move(templateFolder))
{
}

bool ArticlePublisher::Publish(const PostComposer::Article &article)
{
    try {
        const QList<qint32> targets = ChooseWeblogs(article.title, PrePublishChoices::Load(*m_client));
        if (targets.isEmpty())
            return false;
        const PrePublishChoices choices = PrePublishChoices::Load(*m_client);
        QList<WeblogSettings> weblogs;
        for (qint32 number : targets)
            weblogs.append(ReadWeblog(*m_client, number));
        WeblogApi::Post post = PostComposer(m_templateFolder).Compose(article, choices, weblogs.first().user);
        if (choices.editFirst) {
            frmEditPost editor(post, m_owner);
            if (editor.exec() != QDialog::Accepted)
                return false;
            post = editor.GetResults();
        }
        bool posted = false;
        for (WeblogSettings &weblog : weblogs) {
            if (weblog.password.isEmpty() && !AskPassword(weblog))
                continue;
            posted = PostTo(weblog, post) || posted;
        }
        if (posted && choices.showSuccessDialog)
            ShowAlert(m_owner, QStringLiteral("The item was published."),
                      QStringLiteral("\"%1\" is on your weblog now.").arg(post.title));
        return posted;
    } catch (const std::exception &e) {
        ShowAlert(m_owner, QStringLiteral("The item could not be published."), QString::fromUtf8(e.what()));
        return false;
    }
}

// Without asking only when the defaults say so: then to every weblog taking part in quick publishing.
QList<qint32> ArticlePublisher::ChooseWeblogs(const QString &itemTitle, const PrePublishChoices &stored)
{
    const QList<WeblogRecord> weblogs =
        EnumerateWeblogRecords(*m_client, stored.alwaysDoCurrentSettings, QStringLiteral("blog_name"));
    if (weblogs.isEmpty()) {
        ShowAlert(m_owner, QStringLiteral("No weblog is set up for publishing."),
                  stored.alwaysDoCurrentSettings
                      ? QStringLiteral("Tick \"Quick Publish\" for a weblog on the Publishing Settings page.")
                      : QStringLiteral("Add one on the Publishing Settings page of the options."));
        return {};
    }
    QList<qint32> numbers;
    if (stored.alwaysDoCurrentSettings) {
        for (const WeblogRecord &weblog : weblogs)
            numbers.append(weblog.number);
        return numbers;
    }
    const qint32 chosen = frmPublishRequestOpt(m_client, weblogs, itemTitle, m_owner).Run();
    if (chosen > 0)
        numbers.append(chosen);
    return numbers;
}

// A password that is not kept is asked for each time.
bool ArticlePublisher::AskPassword(WeblogSettings &weblog)
{
    Prompt prompt;
    prompt.kind = PromptKind::UserNameAndPassword;
    prompt.owner = m_owner;
    prompt.mainText = QStringLiteral("Please enter the password for the weblog '%1'.").arg(weblog.title);
    prompt.userName = weblog.user;
    if (PromptSeam::Ask(prompt) != 1)
        return false;
    weblog.user = prompt.userName.trimmed();
    weblog.password = prompt.password;
    return true;
}

bool ArticlePublisher::PostTo(const WeblogSettings &weblog, const WeblogApi::Post &post)
{
    WeblogConnection connection(m_client);
    WeblogApi api(connection, QUrl(weblog.postUrl), weblog.api);
    QApplication::setOverrideCursor(Qt::WaitCursor);
    const std::optional<QString> id =
        api.NewPost(weblog.blogId, weblog.user, weblog.password, post,
                    weblog.publisher == kBloggerCode || weblog.publisher == kLiveJournalCode);
    QApplication::restoreOverrideCursor();
    if (id) {
        qCInfo(lcArticlePublisher) << "posted to" << weblog.title << "as" << *id;
        return true;
    }
    ShowAlert(m_owner, QStringLiteral("The item could not be published to %1.").arg(weblog.title),
              api.LastError());
    return false;
}
