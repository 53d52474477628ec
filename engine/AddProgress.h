#pragma once

#include <QObject>
#include <QString>

// One run of add requests, from the first sent while none was outstanding to its last answer,
// counted alike for every answer (unlike the pending-add counter, which only auto-bound adds
// count down). The main window shows its running count and its summary.
class AddProgress : public QObject
{
    Q_OBJECT
public:
    // From this many adds in one run on, the line shows a running count instead of each name.
    static constexpr int kCountFrom = 10;

    // The one run tracker of the program, made on first use and owned by the application object.
    static AddProgress &Instance();

    // Adds about to be sent (queued ones count from the time they are queued).
    void Expect(int count);
    // A queued add that will not be sent after all.
    void Withdraw();
    // An answer arrived; title is the new subscription's name (empty when unknown or failed).
    void Answered(bool added, const QString &title);

    [[nodiscard]] bool Running() const { return m_expected > 0; }
    // "Importing 37 of 120..." for a large run, else empty (each answer names itself then).
    [[nodiscard]] QString CountText() const;
    // "Added: <title>" for a run of one, "Added 120 subscriptions" for more.
    [[nodiscard]] QString SummaryText() const;

Q_SIGNALS:
    void CountChanged(const QString &text);
    void Finished(const QString &summary);

private:
    using QObject::QObject;
    void Reset();

    int m_expected = 0;
    int m_answered = 0;
    int m_added = 0;
    QString m_lastTitle;
};
