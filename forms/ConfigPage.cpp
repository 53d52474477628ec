#include "ConfigPage.h"

#include "ConfigHost.h"
#include "EngineError.h"
#include "FieldCodecs.h"
#include "FieldError.h"
#include "FirstKeyClears.h"
#include "FormControls.h"
#include "StandardDialogs.h"

#include <QEvent>
#include <QLineEdit>
#include <QLoggingCategory>

Q_LOGGING_CATEGORY(lcPage, "corvell.forms.page")

ConfigPage::ConfigPage(QWidget *parent) : QWidget(parent) {}

void ConfigPage::enabled(bool on)
{
    for (QWidget *child : findChildren<QWidget *>(Qt::FindDirectChildrenOnly))
        child->setEnabled(on);
}

QString ConfigPage::SendPropMessage(const QString &name, const QString &value)
{
    Q_UNUSED(value);
    if (name == QLatin1String("ResetHelpText"))
        m_lastHotHelpKey.clear();
    return QStringLiteral("ok");
}

void ConfigPage::Bind(QList<FieldBinding> fields)
{
    m_fields = FieldTable(std::move(fields));
    for (const FieldBinding &field : m_fields.Fields()) {
        for (QWidget *widget : FieldCodecs::Widgets(*this, field)) {
            FormControls::WhenChanged(widget, this, [this] { FieldChanged(); });
            if (!field.hotHelp.isEmpty())
                SetHotHelpText(widget->objectName(), field.hotHelp);
        }
        if (auto *secret = findChild<QLineEdit *>(field.control); secret && field.codec == FieldCodec::Secret)
            FirstKeyClears::Install(secret);
    }
}

void ConfigPage::LoadValues()
{
    {
        const auto loading = LoadingGuard();
        try {
            m_fields.Load(*this);
        } catch (const quillon::EngineError &error) {
            qCWarning(lcPage) << objectName() << "could not read its settings:" << error.message();
        }
        FieldsLoaded();
    }
    m_lastHotHelpKey.clear();
    SetDirty(false);
}

void ConfigPage::Apply()
{
    try {
        BeforeStore();
        m_fields.Store(*this);
    } catch (const FieldError &error) {
        ShowAlert(this, QStringLiteral("The settings were not saved."), error.message());
        return;
    } catch (const quillon::EngineError &error) {
        qCWarning(lcPage) << objectName() << "could not store its settings:" << error.message();
        return;
    }
    SetDirty(false);
}

void ConfigPage::MarkDirty()
{
    if (m_loading)
        return;
    SetDirty(true);
    if (m_host)
        m_host->OnStatusChange();
}

void ConfigPage::FieldChanged()
{
    if (m_loading)
        return;
    MarkDirty();
    ResetHotHelp();
}

void ConfigPage::SetDirty(bool dirty)
{
    if (m_dirty == dirty)
        return;
    m_dirty = dirty;
    Q_EMIT DirtyChanged(dirty);
}

void ConfigPage::SetHotHelpText(const QString &controlName, const QString &text)
{
    m_hotHelp.insert(controlName, text);
    if (QWidget *control = findChild<QWidget *>(controlName))
        control->installEventFilter(this);
}

void ConfigPage::ShowHotHelp(const QString &controlName, const QString &warning)
{
    if (!m_host || controlName == m_lastHotHelpKey)
        return;
    m_lastHotHelpKey = controlName;
    m_host->SetHotHelp(m_hotHelp.value(controlName), warning);
}

void ConfigPage::ResetHotHelp()
{
    m_lastHotHelpKey.clear();
    if (m_host)
        m_host->SetHotHelp(QString(), QString());
}

bool ConfigPage::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::Enter && m_hotHelp.contains(watched->objectName()))
        ShowHotHelp(watched->objectName());
    return QWidget::eventFilter(watched, event);
}
