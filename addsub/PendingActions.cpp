#include "PendingActions.h"

#include <algorithm>

void PendingActions::RowToggled(const Add &feed, bool subscribed, qint32 subscriptionId, bool checked)
{
    if (!m_adds)
        m_adds.emplace();
    if (!m_removals)
        m_removals.emplace();
    if (subscribed) {
        auto it = std::find_if(m_removals->begin(), m_removals->end(),
                               [&](const Removal &r) { return r.subscriptionId == subscriptionId; });
        if (it != m_removals->end())
            it->marked = !checked;
        else if (!checked)
            m_removals->append({feed.title, subscriptionId, true});
        return;
    }
    auto it = std::find_if(m_adds->begin(), m_adds->end(), [&](const Add &a) { return a.url == feed.url; });
    if (it != m_adds->end()) {
        it->marked = checked;
    } else if (checked) {
        Add add = feed;
        add.marked = true;
        m_adds->append(add);
    }
}

PendingActions::Counts PendingActions::CountActions() const
{
    if (!Exists())
        return {};
    const auto adds = std::count_if(m_adds->cbegin(), m_adds->cend(), [](const Add &a) { return a.marked; });
    const auto removals =
        std::count_if(m_removals->cbegin(), m_removals->cend(), [](const Removal &r) { return r.marked; });
    return {int(adds), int(removals)};
}

QList<PendingActions::Add> PendingActions::QueuedAdds() const
{
    QList<Add> queued;
    if (m_adds)
        std::copy_if(m_adds->cbegin(), m_adds->cend(), std::back_inserter(queued),
                     [](const Add &a) { return a.marked; });
    return queued;
}

QList<PendingActions::Removal> PendingActions::QueuedRemovals() const
{
    QList<Removal> queued;
    if (m_removals)
        std::copy_if(m_removals->cbegin(), m_removals->cend(), std::back_inserter(queued),
                     [](const Removal &r) { return r.marked; });
    return queued;
}

void PendingActions::Reset()
{
    m_adds.reset();
    m_removals.reset();
}

PendingActions::Question PendingActions::BuildQuestion(const QString &activity, Counts counts)
{
    const auto countText = [](int n) {
        return n == 1 ? QStringLiteral("1 feed ") : QString::number(n) + QStringLiteral("Feeds ");
    };
    QString adds = counts.adds > 0 ? countText(counts.adds) : QString();
    QString removals = counts.removals > 0 ? countText(counts.removals) : QString();
    // One removal is written into the adds text on purpose, leaving the removal text empty.
    if (counts.removals == 1) {
        adds = QStringLiteral("1 feed ");
        removals.clear();
    }
    Question q;
    QString tail;
    if (counts.adds > 0 && counts.removals > 0) {
        tail = adds + QStringLiteral("to add, and ") + removals + QStringLiteral("to remove.");
        q.question = QStringLiteral("Would you like to apply these changes?");
        q.kind = QStringLiteral("adds & removals");
    } else if (counts.adds > 0) {
        tail = adds + QStringLiteral("to be added.");
        q.question = QStringLiteral("Would you like to apply this change?");
        q.kind = QStringLiteral("adds");
    } else {
        tail = removals + QStringLiteral("to be removed.");
        q.question = QStringLiteral("Would you like to apply this change?");
        q.kind = QStringLiteral("removals");
    }
    q.sentence = QStringLiteral("While ") + activity + QStringLiteral(", you have indicated ") + tail;
    return q;
}

QString PendingActions::CategoryFor(const QString &category, const QStringList &folders)
{
    return category == QLatin1String("Automatic") ? folders.join(QStringLiteral("~~~")) : category;
}
