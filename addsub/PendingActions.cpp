#include "PendingActions.h"

#include <algorithm>

void PendingActions::RowToggled(const Add &feed, bool subscribed, qint32 subscriptionId, bool checked)
{
    if (!m_adds)
        m_adds.emplace();
    if (!m_removals)
        m_removals.emplace();
    const auto mark = [](bool &marked, int &count, bool on) {
        if (marked != on)
            count += on ? 1 : -1;
        marked = on;
    };
    if (subscribed) {
        const auto it = m_removalIndex.constFind(subscriptionId);
        if (it != m_removalIndex.cend()) {
            mark((*m_removals)[*it].marked, m_marked.removals, !checked);
        } else if (!checked) {
            m_removalIndex.insert(subscriptionId, m_removals->size());
            m_removals->append({feed.title, subscriptionId, true});
            ++m_marked.removals;
        }
        return;
    }
    const auto it = m_addIndex.constFind(feed.url);
    if (it != m_addIndex.cend()) {
        mark((*m_adds)[*it].marked, m_marked.adds, checked);
    } else if (checked) {
        Add add = feed;
        add.marked = true;
        m_addIndex.insert(feed.url, m_adds->size());
        m_adds->append(add);
        ++m_marked.adds;
    }
}

PendingActions::Counts PendingActions::CountActions() const
{
    return Exists() ? m_marked : Counts{};
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
    m_addIndex.clear();
    m_removalIndex.clear();
    m_marked = {};
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

QString PendingActions::OkCaption(bool searchTab, bool listTab, Counts counts, bool rowSelected)
{
    if (searchTab)
        return QStringLiteral("&Add Search");
    if (!listTab)
        return QStringLiteral("&Add");
    if (counts.adds > 0)
        return counts.removals > 0 ? QStringLiteral("&Add+Remove") : QStringLiteral("&Add Checked");
    if (counts.removals > 0)
        return QStringLiteral("&Remove");
    return rowSelected ? QStringLiteral("&Add Selection") : QStringLiteral("&Add");
}
