#pragma once

#include "FieldTable.h"

#include <QHash>
#include <QScopedValueRollback>
#include <QString>
#include <QWidget>

class ConfigHost;

// One page of settings inside a host window. The host calls these operations by name, so
// their names are the contract. The base keeps what every page shares: the host, the dirty
// and loading flags, the hot-help texts and the page's field table. A page that binds its
// fields gets LoadValues, Apply, dirty tracking and hot help from the table and writes only
// its own rules.
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
    // Writes every field to its store, then clears Dirty. A field without a valid value is
    // explained and nothing is written; an engine failure is logged and the page stays dirty.
    Q_INVOKABLE virtual void Apply();
    // Validates the fields; on failure shows the page's message and answers false.
    Q_INVOKABLE virtual bool SafeToApply() { return true; }
    // Reads every field from its store into the controls; loading is not a change.
    Q_INVOKABLE virtual void LoadValues();
    // "ResetHelpText" forgets the last hot-help key; every message is answered "ok".
    Q_INVOKABLE virtual QString SendPropMessage(const QString &name, const QString &value);

Q_SIGNALS:
    void DirtyChanged(bool dirty);

protected:
    [[nodiscard]] ConfigHost *Host() const { return m_host; }
    // Declares the page's fields: each change marks the page dirty and resets hot help, each
    // hot help shows on pointer entry, and a Secret field empties on its first key.
    void Bind(QList<FieldBinding> fields);
    [[nodiscard]] const FieldTable &Fields() const { return m_fields; }
    // After the fields show their stored values: the page's enabling rules.
    virtual void FieldsLoaded() {}
    // Before the fields are taken: the page's corrections. Throws FieldError to stop.
    virtual void BeforeStore() {}

    // A field changed: dirty, and the host hears of it, unless the page is filling its fields.
    void MarkDirty();
    // A bound field changed: MarkDirty, and the hot help shown is no longer about it.
    void FieldChanged();
    void SetDirty(bool dirty);
    [[nodiscard]] bool Loading() const { return m_loading; }
    // While the guard lives, field changes are the page filling its fields, not the user.
    [[nodiscard]] QScopedValueRollback<bool> LoadingGuard()
    {
        return QScopedValueRollback<bool>(m_loading, true);
    }

    // The text shows through the host when the pointer enters the control (once in a row).
    void SetHotHelpText(const QString &controlName, const QString &text);
    // Shows the control's hot help through the host, once per control in a row.
    void ShowHotHelp(const QString &controlName, const QString &warning = QString());
    // Forgets the last key and clears the host's hot help.
    void ResetHotHelp();
    [[nodiscard]] const QString &LastHotHelpKey() const { return m_lastHotHelpKey; }

    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    ConfigHost *m_host = nullptr;
    bool m_dirty = false;
    bool m_loading = false;
    FieldTable m_fields;
    QHash<QString, QString> m_hotHelp;
    QString m_lastHotHelpKey;
};
