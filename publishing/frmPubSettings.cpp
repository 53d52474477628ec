#include "frmPubSettings.h"

#include "RsdDiscovery.h"
#include "StandardDialogs.h"
#include "frmChooseBlog.h"
#include "frmGetURL.h"
#include "localization.h"
#include "ui_frmPubSettings.h"

#include <QApplication>
#include <QLoggingCategory>

#include <algorithm>
#include <utility>

Q_LOGGING_CATEGORY(lcPubSettings, "corvell.publishing.add")

using namespace PublishingUtils;

namespace {
// The network waits keep the event loop running; the user sees that something is going on.
class BusyCursor
{
public:
    BusyCursor() { QApplication::setOverrideCursor(Qt::WaitCursor); }
    ~BusyCursor() { QApplication::restoreOverrideCursor(); }
    BusyCursor(const BusyCursor &) = delete;
    BusyCursor &operator=(const BusyCursor &) = delete;
};

QString Normalized(const QString &address)
{
    QString text = address.trimmed().toLower();
    while (text.endsWith(QLatin1Char('/')))
        text.chop(1);
    return text;
}
} // namespace

frmPubSettings::frmPubSettings(quillon::SubscribeClientPtr client, QWidget *owner,
                               const QString &servicesFile)
    : QDialog(owner), ui(std::make_unique<Ui::frmPubSettings>()), m_client(std::move(client)),
      m_services(BlogService::ReadCatalog(
          servicesFile.isEmpty() ? QuillonDataFolder() + QStringLiteral("/service.xml") : servicesFile))
{
    ui->setupUi(this);
    for (const BlogService &service : std::as_const(m_services))
        ui->cboBlogService->addItem(service.name);
    connect(ui->cmdOK, &QPushButton::clicked, this, &frmPubSettings::OnOK);
    connect(ui->cmdCancel, &QPushButton::clicked, this, &QDialog::reject);
}

frmPubSettings::~frmPubSettings() = default;

int frmPubSettings::Run()
{
    if (m_services.isEmpty()) {
        ShowAlert(parentWidget(), QStringLiteral("No valid publishers found."),
                  QStringLiteral("The list of blogging services (service.xml) names none."));
        return kResultCancel;
    }
    return exec() == QDialog::Accepted ? kResultOK : kResultCancel;
}

void frmPubSettings::OnOK()
{
    const int index = ui->cboBlogService->currentIndex();
    if (index < 0 || index >= m_services.size())
        return;
    const BlogService &service = m_services.at(index);
    WeblogConnection connection(m_client);
    const QUrl postUrl = PostingAddress(service, connection);
    if (postUrl.isEmpty())
        return;
    const std::optional<QList<WeblogApi::Weblog>> weblogs = AccountWeblogs(connection, service, postUrl);
    if (!weblogs)
        return;
    const QList<WeblogApi::Weblog> offered = NotConfigured(*weblogs);
    if (offered.isEmpty()) {
        ShowAlert(this,
                  QStringLiteral("You have already configured all available Weblogs for this publisher."),
                  QString());
        return;
    }
    frmChooseBlog chooser(offered, this);
    if (chooser.exec() != QDialog::Accepted)
        return;
    AddRecords(service, postUrl, chooser.GetResults());
}

QUrl frmPubSettings::PostingAddress(const BlogService &service, WeblogConnection &connection)
{
    m_nameFromUser.clear();
    const QString typed = ui->txtRPCURL->text().trimmed();
    if (!typed.isEmpty())
        return QUrl::fromUserInput(typed);
    if (!service.postUrl.isEmpty())
        return QUrl(service.postUrl);
    if (service.askUrl) {
        frmGetURL ask(this);
        if (ask.exec() != QDialog::Accepted)
            return {};
        m_nameFromUser = ask.GetResults().name;
        return QUrl(ask.GetResults().url);
    }
    const QString weblog = ui->txtBlogURL->text().trimmed();
    QString why = QStringLiteral("Please give the weblog's address or its posting address.");
    QUrl found;
    if (!weblog.isEmpty()) {
        const BusyCursor busy;
        found = RsdDiscovery::FindPostingAddress(connection, QUrl::fromUserInput(weblog), service.api, &why);
    }
    if (found.isEmpty())
        ShowNoPostingAddress(why);
    return found;
}

void frmPubSettings::ShowNoPostingAddress(const QString &why)
{
    ShowAlert(this,
              QStringLiteral(
                  "No valid publishing URL's found.  Please check the values you entered and try again."),
              why);
}

std::optional<QList<WeblogApi::Weblog>>
frmPubSettings::AccountWeblogs(WeblogConnection &connection, const BlogService &service, const QUrl &postUrl)
{
    WeblogApi api(connection, postUrl, service.api);
    std::optional<QList<WeblogApi::Weblog>> weblogs;
    {
        const BusyCursor busy;
        weblogs = api.GetUsersBlogs(ui->txtPubUsername->text(), ui->txtPubPassword->text());
    }
    if (!weblogs) {
        const QString where = QStringLiteral("The weblog server at %1 answered so.").arg(postUrl.toString());
        ShowAlert(this, api.LastError(), api.LastFaultCode() != 0 ? where : QString());
        return std::nullopt;
    }
    if (weblogs->isEmpty()) {
        ShowNoPostingAddress(QStringLiteral("The account has no weblog at %1.").arg(postUrl.toString()));
        return std::nullopt;
    }
    for (WeblogApi::Weblog &weblog : *weblogs) {
        if (weblog.name.isEmpty())
            weblog.name = m_nameFromUser.isEmpty() ? weblog.url : m_nameFromUser;
    }
    return weblogs;
}

// A weblog is configured when a record has its address, or its title where either lacks one.
QList<WeblogApi::Weblog> frmPubSettings::NotConfigured(const QList<WeblogApi::Weblog> &weblogs) const
{
    QList<WeblogSettings> records;
    try {
        for (const WeblogRecord &record :
             EnumerateWeblogRecords(*m_client, false, QStringLiteral("blog_name")))
            records.append(ReadWeblog(*m_client, record.number));
    } catch (const std::exception &e) {
        qCWarning(lcPubSettings) << "the configured weblogs were not read:" << e.what();
    }
    QList<WeblogApi::Weblog> offered;
    for (const WeblogApi::Weblog &weblog : weblogs) {
        const bool configured =
            std::any_of(records.cbegin(), records.cend(), [&](const WeblogSettings &record) {
                if (!record.blogUrl.isEmpty() && !weblog.url.isEmpty())
                    return Normalized(record.blogUrl) == Normalized(weblog.url);
                return record.title == weblog.name;
            });
        if (!configured)
            offered.append(weblog);
    }
    return offered;
}

void frmPubSettings::AddRecords(const BlogService &service, const QUrl &postUrl,
                                const QList<WeblogApi::Weblog> &chosen)
{
    const bool savePassword = ui->chkSavePassword->isChecked();
    try {
        for (const WeblogApi::Weblog &weblog : chosen) {
            // The sentinel titles would end the list or hide the record.
            QString title = weblog.name;
            if (title == QLatin1String("-237237") || title == QLatin1String("DELETED"))
                title = weblog.url;
            AddWeblog(*m_client, {title, ui->txtPubUsername->text(),
                                  savePassword ? ui->txtPubPassword->text() : QString(), service.code,
                                  postUrl.toString(), weblog.url, weblog.id, true, service.api});
        }
    } catch (const std::exception &e) {
        ShowAlert(this, QStringLiteral("The weblog could not be saved."), QString::fromUtf8(e.what()));
        return;
    }
    accept();
}
