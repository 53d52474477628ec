#pragma once

#include "ForwardingSubscribeClient.h"
#include "InProcessLink.h"
#include "PromptSeam.h"
#include "QLUtils.h"
#include "SubscribeClient.h"

#include <QTimer>

// Stand-ins the settings editor's tests put around the real engine.
namespace SettingsEditorDoubles {

using namespace quillon;

// The engine's link, except that it answers the search-sources request itself.
class SearchSourcesLink : public EngineLink
{
public:
    SearchSourcesLink(EngineCore *core, BagPtr answer) : m_inner(core), m_answer(std::move(answer)) {}
    PropertyValue call(const QString &operation, const QList<PropertyValue> &args) override
    {
        const auto *request = args.isEmpty() ? nullptr : std::get_if<BagPtr>(&args.first());
        if (operation != "SubmitRequest" || !request || (*request)->text("REQUEST") != "LIST")
            return m_inner.call(operation, args);
        const qint32 callbackId = valueLong(args.at(1));
        QTimer::singleShot(0, [this, callbackId] { m_sink(callbackId, m_answer->clone()); });
        return 1;
    }
    void setMessageSink(MessageSink sink) override
    {
        m_sink = sink;
        m_inner.setMessageSink(std::move(sink));
    }
    bool isConnected() const override { return m_inner.isConnected(); }

private:
    InProcessLink m_inner;
    BagPtr m_answer;
    MessageSink m_sink;
};

inline BagPtr SourcesAnswer()
{
    auto list = PropertyList::create();
    const auto source = [&](const QString &guid, const QString &title, const QString &def, const QString &min,
                            const QString &max) {
        auto bag = PropertyBag::create();
        bag->setText("guid", guid);
        bag->setText("title", title);
        bag->setText("defaultLimit", def);
        bag->setText("minLimit", min);
        bag->setText("maxLimit", max);
        list->append(bag);
    };
    source("{news}", "News search", "25", "10", "100");
    source("{blogs}", "Blog search", "-237237", "", "0");
    auto result = PropertyBag::create();
    result->set("SEARCHSOURCES", list);
    auto answer = PropertyBag::create();
    answer->setText("MESSAGE", "SearchSourcesResult");
    answer->set("Result", result);
    return answer;
}

struct AnsweredPrompt
{
    PromptKind kind;
    QString mainText;
    QString extendedText;
};

// Refuses updates of one subscription.
class RefusingClient : public ForwardingSubscribeClient
{
public:
    using ForwardingSubscribeClient::ForwardingSubscribeClient;
    void UpdateItem(const QString &itemClass, qint32 id, Handle bag) override
    {
        if (id == refusedId)
            throw EngineError("refused");
        ForwardingSubscribeClient::UpdateItem(itemClass, id, bag);
    }
    qint32 refusedId = 0;
};

// An Outlook whose folder chooser answers with one folder.
class OneFolderOutlook : public IOutlook
{
public:
    QStringList FolderPaths() override { return {"\\Feeds\\News"}; }
    std::optional<OutlookFolder> PickFolder(QWidget *) override
    {
        return OutlookFolder{"\\Feeds\\News", "F42"};
    }
    bool CreatePersonalFolders(const QString &, const QString &) override { return false; }
};
} // namespace SettingsEditorDoubles
