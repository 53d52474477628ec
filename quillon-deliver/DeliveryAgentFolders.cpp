// The agent's side that follows the mail program: removals asked for by the engine, folders
// replanned and moved, and read marks carried both ways.
#include "DeliveryAgent.h"

#include "DeliveryLogging.h"
#include "HandleGuard.h"
#include "PropertyBag.h"

using quillon::Handle;

void DeliveryAgent::requestRemovals()
{
    askForBatch(QStringLiteral("PENDINGREMOVALS"), m_removals, &DeliveryAgent::onRemovals);
}

void DeliveryAgent::onRemovals(Handle answer)
{
    finishCommit();
    if (!storeReachable()) {
        m_removals.busy = false;
        return;
    }
    QList<qint32> done;
    try {
        HandleGuard result(*m_client, m_client->GetHandleValue(answer, QStringLiteral("Result")));
        HandleGuard items(*m_client, result.get() > 0
                                         ? m_client->GetHandleValue(result.get(), QStringLiteral("ITEMS"))
                                         : 0);
        const qint32 count = items.get() > 0 ? m_client->ListCount(items.get()) : 0;
        const FolderDefaults defaults = m_settings.defaults();
        m_reader.forget();
        for (qint32 i = 0; i < count; ++i) {
            HandleGuard item(*m_client, m_client->ListHandle(items.get(), i));
            const qint32 articleId = m_client->GetLongValue(item.get(), QStringLiteral("ARTICLEID"));
            const qint32 subscriptionId =
                m_client->GetLongValue(item.get(), QStringLiteral("SUBSCRIPTIONID"));
            const auto folder = m_index.folderOf(subscriptionId);
            // A subscription deleted in ConfigConsumer keeps its messages unless told otherwise.
            const bool keep = !m_reader.placeOf(subscriptionId) && defaults.deletedInConfig != 0;
            if (folder && !keep)
                m_store->remove(*folder, MailStore::keyOf(articleId));
            done.append(articleId);
        }
        if (done.isEmpty()) {
            m_removals.busy = false;
            if (m_removals.again)
                requestRemovals();
            return;
        }
        const auto fillIds = [this, done](Handle bag) { putIds(bag, done); };
        submit(QStringLiteral("CONFIRMREMOVALS"), fillIds, [this, n = done.size()](Handle) {
            m_removals.busy = false;
            Q_EMIT removed(int(n));
            requestRemovals(); // until none is left
        });
    } catch (const std::exception &e) {
        m_removals.busy = false;
        engineFailed(e);
    }
}

void DeliveryAgent::moveToStore(Relocation next)
{
    QString error;
    if (!next.store->open(&error)) {
        qCWarning(lcDeliver) << "the new mail store cannot be opened:" << error;
        return;
    }
    (void)m_index.save();
    m_store = std::move(next.store);
    m_index = DeliveryIndex(next.indexPath);
    m_index.load();
    m_readMarks.clear();
    m_readMarksPolled = false;
    qCInfo(lcDeliver) << "delivering into" << m_store->describe();
    m_client->Log(QStringLiteral("Mail delivery now puts messages into %1").arg(m_store->describe()), 1);
}

void DeliveryAgent::replanFolders()
{
    if (m_lost)
        return;
    finishCommit(); // folders change only with no flush under way
    try {
        // Never in the middle of a batch: its messages belong to the store they were written to.
        if (m_options.relocate && !m_articles.busy && !m_removals.busy) {
            if (auto next = m_options.relocate())
                moveToStore(std::move(*next));
        }
        m_reader.forget();
        if (storeReachable())
            carryReadMarks(m_follower.follow(*m_store, [this](qint32 id) { return m_reader.placeOf(id); }));
    } catch (const std::exception &e) {
        engineFailed(e);
    }
}

// A moved message keeps its key, so what was known of it comes along; its mark is read again
// where it is now, which reports one set in the old folder before the last look or while the
// move ran.
void DeliveryAgent::carryReadMarks(const QList<FolderFollower::Move> &moves)
{
    QList<MailStore::Folder> moved;
    for (const auto &[from, to] : moves) {
        const QHash<QString, bool> before = m_readMarks.take(FolderPlan::pathText(from));
        m_readMarks[FolderPlan::pathText(to)].insert(before);
        moved.append(to);
    }
    if (m_readMarksPolled)
        reportReadMarks(moved);
}

void DeliveryAgent::pollReadMarks()
{
    if (m_lost || m_storeAway)
        return;
    m_readMarksPolled = true;
    reportReadMarks(m_store->changedFolders(m_index.folders()));
}

void DeliveryAgent::reportReadMarks(const QList<MailStore::Folder> &changed)
{
    QList<qint32> read, unread;
    for (const MailStore::Folder &folder : changed) {
        QHash<QString, bool> &known = m_readMarks[FolderPlan::pathText(folder)];
        const QHash<QString, bool> now = m_store->readStates(folder);
        for (auto it = now.cbegin(); it != now.cend(); ++it) {
            const auto before = known.constFind(it.key());
            if (before != known.cend() && *before == it.value())
                continue;
            (it.value() ? read : unread).append(MailStore::articleOf(it.key()));
        }
        known = now;
    }
    read.removeAll(0);
    unread.removeAll(0);
    reportRead(read, true);
    reportRead(unread, false);
}

void DeliveryAgent::reportRead(const QList<qint32> &ids, bool read)
{
    if (ids.isEmpty())
        return;
    const auto fill = [this, ids, read](Handle bag) {
        putIds(bag, ids);
        m_client->SetLongValue(bag, QStringLiteral("READ"), read ? 1 : 0);
    };
    try {
        submit(QStringLiteral("SETREADSTATE"), fill, [](Handle) {});
    } catch (const std::exception &e) {
        engineFailed(e);
    }
}

void DeliveryAgent::requestReadMarks()
{
    askForBatch(QStringLiteral("PENDINGREADMARKS"), m_incomingMarks, &DeliveryAgent::onReadMarks);
}

void DeliveryAgent::onReadMarks(Handle answer)
{
    finishCommit();
    if (!storeReachable()) {
        m_incomingMarks.busy = false;
        return;
    }
    try {
        HandleGuard result(*m_client, m_client->GetHandleValue(answer, QStringLiteral("Result")));
        HandleGuard items(*m_client, result.get() > 0
                                         ? m_client->GetHandleValue(result.get(), QStringLiteral("ITEMS"))
                                         : 0);
        const qint32 last = items.get() > 0 ? applyReadMarks(items.get()) : 0;
        if (last == 0) {
            m_incomingMarks.busy = false;
            if (m_incomingMarks.again)
                requestReadMarks();
            return;
        }
        const auto fill = [this, last](Handle bag) {
            m_client->SetLongValue(bag, QStringLiteral("MARKID"), last);
        };
        submit(QStringLiteral("CONFIRMREADMARKS"), fill, [this](Handle) {
            m_incomingMarks.busy = false;
            requestReadMarks(); // until none is left
        });
    } catch (const std::exception &e) {
        m_incomingMarks.busy = false;
        engineFailed(e);
    }
}

// The marks are known here at once, so the next look at the folder does not report them back.
qint32 DeliveryAgent::applyReadMarks(Handle items)
{
    QHash<QString, std::pair<MailStore::Folder, QHash<QString, bool>>> byFolder; // by path text
    qint32 last = 0;
    for (qint32 i = 0, count = m_client->ListCount(items); i < count; ++i) {
        HandleGuard item(*m_client, m_client->ListHandle(items, i));
        last = m_client->GetLongValue(item.get(), QStringLiteral("MARKID"));
        const auto folder =
            m_index.folderOf(m_client->GetLongValue(item.get(), QStringLiteral("SUBSCRIPTIONID")));
        if (!folder)
            continue;
        auto &[where, marks] = byFolder[FolderPlan::pathText(*folder)];
        where = *folder;
        marks.insert(MailStore::keyOf(m_client->GetLongValue(item.get(), QStringLiteral("ARTICLEID"))),
                     m_client->GetLongValue(item.get(), QStringLiteral("READ")) == 1);
    }
    for (auto it = byFolder.cbegin(); it != byFolder.cend(); ++it) {
        m_store->setRead(it->first, it->second);
        m_readMarks[it.key()].insert(it->second);
    }
    return last;
}
