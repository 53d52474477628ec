#include "AddProgress.h"

#include <QCoreApplication>
#include <QPointer>

namespace {
QString Subscriptions(int count)
{
    return count == 1 ? QStringLiteral("1 subscription") : QStringLiteral("%1 subscriptions").arg(count);
}
} // namespace

AddProgress &AddProgress::Instance()
{
    static QPointer<AddProgress> progress;
    if (!progress)
        progress = new AddProgress(QCoreApplication::instance());
    return *progress;
}

void AddProgress::Expect(int count)
{
    m_expected += count;
}

void AddProgress::Withdraw()
{
    if (m_expected > m_answered)
        --m_expected;
    if (Running() && m_answered == m_expected) {
        const QString summary = SummaryText();
        Reset();
        Q_EMIT Finished(summary);
    }
}

void AddProgress::Answered(bool added, const QString &title)
{
    // An answer outside any run (a request made before the count was kept) is not ours to count.
    if (!Running())
        return;
    ++m_answered;
    if (added) {
        ++m_added;
        m_lastTitle = title;
    }
    if (m_answered < m_expected) {
        if (m_expected >= kCountFrom)
            Q_EMIT CountChanged(CountText());
        return;
    }
    const QString summary = SummaryText();
    Reset();
    Q_EMIT Finished(summary);
}

QString AddProgress::CountText() const
{
    if (m_expected < kCountFrom)
        return QString();
    return QStringLiteral("Importing %1 of %2...").arg(m_answered).arg(m_expected);
}

QString AddProgress::SummaryText() const
{
    const int failed = m_answered - m_added;
    if (failed > 0)
        return QStringLiteral("Added %1; %2 could not be added").arg(Subscriptions(m_added)).arg(failed);
    if (m_expected == 1)
        return m_lastTitle.isEmpty() ? QString() : QStringLiteral("Added: ") + m_lastTitle;
    return QStringLiteral("Added ") + Subscriptions(m_added);
}

void AddProgress::Reset()
{
    m_expected = m_answered = m_added = 0;
    m_lastTitle.clear();
}
