#pragma once

#include <QHash>
#include <QScopedValueRollback>
#include <QString>
#include <QWidget>

class ConfigHost;

// One page of settings inside a host window. The host calls these operations by name, so
// their names are the contract. The base keeps what every page shares: the host, the dirty
// and loading flags and the hot-help texts.
class ConfigPage : public QWidget
{
    Q_OBJECT
public:
    explicit ConfigPage(QWidget *parent = nullptr);

    // True while the page holds changes that were not applied.
    Q_INVOKABLE virtual bool Dirty() const { return m_dirty; }
    // Enables or disables every child control of the page.
    Q_INVOKABLE virtual void enabled(bool on);
    Q_INVOKABLE virtual void SetHost(ConfigHost *host) { m_host = host; }
    // Writes every field to its store, then clears Dirty.
    Q_INVOKABLE virtual void Apply() = 0;
    // Validates the fields; on failure shows the page's message and answers false.
    Q_INVOKABLE virtual bool SafeToApply() { return true; }
    // Reads every field from its store into the controls.
    Q_INVOKABLE virtual void LoadValues() = 0;
    // "ResetHelpText" forgets the last hot-help key; every message is answered "ok".
    Q_INVOKABLE virtual QString SendPropMessage(const QString &name, const QString &value);

Q_SIGNALS:
    void DirtyChanged(bool dirty);

protected:
    [[nodiscard]] ConfigHost *Host() const { return m_host; }
    // A field changed: dirty, and the host hears of it, unless the page is filling its fields.
    void MarkDirty();
    void SetDirty(bool dirty);
    [[nodiscard]] bool Loading() const { return m_loading; }
    // While the guard lives, field changes are the page filling its fields, not the user.
    [[nodiscard]] QScopedValueRollback<bool> LoadingGuard()
    {
        return QScopedValueRollback<bool>(m_loading, true);
    }

    void SetHotHelpText(const QString &controlName, const QString &text)
    {
        m_hotHelp.insert(controlName, text);
    }
    // Shows the control's hot help through the host, once per control in a row.
    void ShowHotHelp(const QString &controlName, const QString &warning = QString());
    [[nodiscard]] const QString &LastHotHelpKey() const { return m_lastHotHelpKey; }

private:
    ConfigHost *m_host = nullptr;
    bool m_dirty = false;
    bool m_loading = false;
    QHash<QString, QString> m_hotHelp;
    QString m_lastHotHelpKey;
};
