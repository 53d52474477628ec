#include "NetworkUI.h"

#include "EngineClientBag.h"
#include "EngineError.h"
#include "FormControls.h"
#include "HandleGuard.h"
#include "NetworkSettingKeys.h"
#include "RegistrySettings.h"
#include "ui_NetworkUI.h"

namespace Keys = quillon::NetworkSettingKeys;

namespace {
FieldBinding Switch(const QString &key, const QString &offOption, SettingStore *store, const QString &hotHelp)
{
    return {.control = key,
            .store = store,
            .key = key,
            .defaultValue = Keys::kFalse,
            .codec = FieldCodec::Word,
            .hotHelp = hotHelp,
            .offOption = offOption};
}

FieldBinding Text(const QString &key, SettingStore *store, const QString &hotHelp,
                  FieldCodec codec = FieldCodec::Text)
{
    return {.control = key, .store = store, .key = key, .codec = codec, .hotHelp = hotHelp};
}

// The engine's answer to ProxyForUrl in plain words.
QString DescribeRoute(const QString &proxy, const QString &reason, const QString &login)
{
    if (proxy.isEmpty())
        return QStringLiteral("Direct connection (%1).").arg(reason);
    QString text = QStringLiteral("Through proxy %1 (%2)").arg(proxy, reason);
    if (login == QLatin1String("(current user)"))
        text += QStringLiteral(", signing in as the current user");
    else if (!login.isEmpty())
        text += QStringLiteral(", signing in as %1").arg(login);
    return text + QLatin1Char('.');
}
} // namespace

NetworkUI::NetworkUI(QWidget *parent)
    : ConfigPage(parent), ui(std::make_unique<Ui::NetworkUI>()), m_local(Keys::kSection),
      m_engine(Keys::kConsumer, Keys::kSection), m_network(m_local, m_engine)
{
    ui->setupUi(this);
    QList<FieldBinding> fields = {
        Switch(Keys::kUseProxy, {}, &m_network, "Send every request through a proxy server."),
        Switch(Keys::kUseSystemProxy, "optUseSpecificProxyServer", &m_network,
               "Follow the proxy settings of your desktop or the environment."),
        Text(Keys::kSpecificProxy, &m_network, "The proxy as host:port, e.g. proxy.example.org:3128."),
        Switch(Keys::kBypassForLocals, {}, &m_network, "Reach this computer and local addresses directly."),
        Switch(Keys::kUseCredentials, {}, &m_network, "Sign in to the proxy."),
        Switch(Keys::kCurrentUserCredentials, "optUseSpecificCredentials", &m_network,
               "Sign in as the user logged in to this computer."),
        Text(Keys::kUser, &m_network, "The user name at the proxy."),
        Text(Keys::kPassword, &m_engine, "The password at the proxy.", FieldCodec::Secret),
        Text(Keys::kDomain, &m_network, "The Windows domain of the user name, if the proxy wants one."),
    };
    for (FieldBinding &field : fields) {
        for (const auto &[key, value] : Keys::kDefaults) {
            if (key == field.key)
                field.defaultValue = value;
        }
    }
    Bind(fields);
    for (QAbstractButton *button : std::initializer_list<QAbstractButton *>{
             ui->chkUseProxyServer, ui->optUseSpecificProxyServer, ui->chkUseNetworkCredentials,
             ui->optUseSpecificCredentials})
        connect(button, &QAbstractButton::toggled, this, &NetworkUI::EnableNetwork);
    connect(ui->cmdTestProxy, &QPushButton::clicked, this, &NetworkUI::TestProxy);
    connect(ui->txtTestProxyUrl, &QLineEdit::returnPressed, this, &NetworkUI::TestProxy);
    SetHotHelpText(
        QStringLiteral("cmdTestProxy"),
        QStringLiteral("Shows whether a request to this address goes directly or through a proxy."));
    LoadValues();
}

NetworkUI::~NetworkUI() = default;

void NetworkUI::FieldsLoaded()
{
    EnableNetwork();
    const QString product = QStringLiteral("Quill On");
    const QString section = QStringLiteral("CONFIGCONSUMER");
    if (GetRegistrySetting(product, section, QStringLiteral("PrefsVersion"), QStringLiteral("None")) ==
        QLatin1String("None"))
        PutRegistrySetting(product, section, QStringLiteral("PrefsVersion"), QStringLiteral("0.8.0"));
}

void NetworkUI::EnableNetwork()
{
    const bool proxy = ui->chkUseProxyServer->isChecked();
    ui->optUseIEProxySettings->setEnabled(proxy);
    ui->optUseSpecificProxyServer->setEnabled(proxy);
    ui->txtSpecificProxyServer->setEnabled(proxy && ui->optUseSpecificProxyServer->isChecked());
    ui->chkBypassForLocals->setEnabled(proxy);
    const bool credentials = ui->chkUseNetworkCredentials->isChecked();
    ui->optCurrentlyUsersCredentials->setEnabled(credentials);
    ui->optUseSpecificCredentials->setEnabled(credentials);
    const bool specific = credentials && ui->optUseSpecificCredentials->isChecked();
    FormControls::SetEnabled({ui->lblUsernameCredentials, ui->txtUsernameCredentials,
                              ui->lblPasswordCredentials, ui->txtPasswordCredentials,
                              ui->lblDomainCredentials, ui->txtDomainCredentials},
                             specific);
}

void NetworkUI::TestProxy()
{
    const QString url = ui->txtTestProxyUrl->text().trimmed();
    if (url.isEmpty()) {
        ui->lblTestProxyAnswer->setText(QStringLiteral("Enter a web address to test."));
        return;
    }
    QString answer;
    try {
        const quillon::SubscribeClientPtr client = EngineClientBag::Client();
        HandleGuard route(*client, client->ProxyForUrl(url));
        answer = DescribeRoute(client->GetStringValue(route.get(), QStringLiteral("PROXY")),
                               client->GetStringValue(route.get(), QStringLiteral("REASON")),
                               client->GetStringValue(route.get(), QStringLiteral("LOGIN")));
    } catch (const quillon::EngineError &error) {
        answer = QStringLiteral("The engine could not be asked: %1").arg(error.message());
    }
    // The engine answers for the settings its requests follow, which are the applied ones.
    if (Dirty())
        answer += QStringLiteral(" This is with the settings last applied; apply to test your changes.");
    ui->lblTestProxyAnswer->setText(answer);
}
