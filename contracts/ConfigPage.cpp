#include "ConfigPage.h"

#include "ConfigHost.h"

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

void ConfigPage::MarkDirty()
{
    if (m_loading)
        return;
    SetDirty(true);
    if (m_host)
        m_host->OnStatusChange();
}

void ConfigPage::SetDirty(bool dirty)
{
    if (m_dirty == dirty)
        return;
    m_dirty = dirty;
    Q_EMIT DirtyChanged(dirty);
}

void ConfigPage::ShowHotHelp(const QString &controlName, const QString &warning)
{
    if (!m_host || controlName == m_lastHotHelpKey)
        return;
    m_lastHotHelpKey = controlName;
    m_host->SetHotHelp(m_hotHelp.value(controlName), warning);
}
