#pragma once

#include "PromptSeam.h"
#include "QLUtils.h"
#include "TestEngine.h"

// Stand-ins the settings editor's tests put around the real engine.
namespace SettingsEditorDoubles {

using namespace quillon;

// Answers the search-sources request with the given message instead of the engine.
inline CallHook AnswerSearchSources(BagPtr message)
{
    return {[message](const QString &operation, const QList<PropertyValue> &args,
                      const CallHook::Answer &answer) -> std::optional<PropertyValue> {
        const auto *request = args.isEmpty() ? nullptr : std::get_if<BagPtr>(&args.first());
        if (operation != "SubmitRequest" || !request || (*request)->text("REQUEST") != "LIST")
            return std::nullopt;
        answer(valueLong(args.at(1)), message->clone());
        return qint32(1);
    }};
}

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

// Refuses updates of the subscription whose ID refused holds at the time.
inline CallHook RefuseUpdatesOf(const qint32 *refused)
{
    return {[refused](const QString &operation, const QList<PropertyValue> &args,
                      const CallHook::Answer &) -> std::optional<PropertyValue> {
        if (operation == "UpdateItem" && valueLong(args.at(1)) == *refused)
            throw EngineError("refused");
        return std::nullopt;
    }};
}

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
