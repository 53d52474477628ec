#pragma once

#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

// The adds and removals queued by checking rows of a list tab. Both collections are absent, not
// merely empty, until the first check in the current list.
class PendingActions
{
public:
    struct Add
    {
        QString url;
        QString title;
        QStringList folders; // titles of the folders above the row, for "Automatic"
        bool marked = true;
    };
    struct Removal
    {
        QString title;
        qint32 subscriptionId = 0;
        bool marked = true;
    };
    struct Counts
    {
        int adds = 0;
        int removals = 0;
        [[nodiscard]] bool any() const { return adds > 0 || removals > 0; }
    };
    // The question asked before leaving a list tab with actions pending.
    struct Question
    {
        QString sentence;
        QString question;
        QString kind;
    };

    // A row checked (true) or unchecked: an unsubscribed feed is queued for adding, a
    // subscribed one unchecked for removal; toggling back takes it out of the queue.
    void RowToggled(const Add &feed, bool subscribed, qint32 subscriptionId, bool checked);

    [[nodiscard]] bool Exists() const { return m_adds.has_value() && m_removals.has_value(); }
    [[nodiscard]] Counts CountActions() const;
    [[nodiscard]] QList<Add> QueuedAdds() const;
    [[nodiscard]] QList<Removal> QueuedRemovals() const;
    void Reset();

    // activity is "Browsing" or "Importing".
    [[nodiscard]] static Question BuildQuestion(const QString &activity, Counts counts);
    // The caption of the wizard's cmdOK for the tab shown and what is queued.
    [[nodiscard]] static QString OkCaption(bool searchTab, bool listTab, Counts counts, bool rowSelected);
    // The category of an add: the folders joined by "~~~" for "Automatic", else as given.
    [[nodiscard]] static QString CategoryFor(const QString &category, const QStringList &folders);

private:
    std::optional<QList<Add>> m_adds;
    std::optional<QList<Removal>> m_removals;
    // Where each address and subscription sits in the queues, and how many are marked: a list
    // of thousands is checked all at once.
    QHash<QString, qsizetype> m_addIndex;
    QHash<qint32, qsizetype> m_removalIndex;
    Counts m_marked;
};
