#pragma once

#include "CBConnect.h"
#include "CategoryTreeModel.h"
#include "ConsumerSettings.h"
#include "EngineCalls.h"
#include "HandleGuard.h"
#include "LocalSettings.h"
#include "PromptRecorder.h"
#include "SubscriptionTreeView.h"
#include "TestEngine.h"
#include "categoriesUtils.h"
#include "frmMainWindow.h"

#include <QAbstractItemModelTester>
#include <QLabel>
#include <QPushButton>

#include <QHash>
#include <QList>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

#include <functional>
#include <memory>

// The tree as indented lines: two blanks a level, "[x]"/"[ ]" for the check.
inline QStringList TreeOutline(const CategoryTree &tree, const CategoryNode *parent = nullptr, int level = 0)
{
    QStringList lines;
    const int count = parent ? parent->childCount() : tree.topLevelCount();
    for (int i = 0; i < count; ++i) {
        const CategoryNode *node = parent ? parent->child(i) : tree.topLevelNode(i);
        const QString check = node->image().startsWith(QLatin1String("unc")) ? "[ ]" : "[x]";
        lines << QString(level * 2, QLatin1Char(' ')) + check + QLatin1Char(' ') + node->text();
        lines << TreeOutline(tree, node, level + 1);
    }
    return lines;
}

// A real engine, the main window connected to it as ConfigConsumer, a second consumer
// ("OLCONSUMER") that changes things behind the window's back, and scripted answers to every
// question the window asks.
class MainWindowFixture
{
public:
    MainWindowFixture()
    {
        QStandardPaths::setTestModeEnabled(true);
        LocalSettings::SetBaseFolder(m_folder.path());
        SaveSetting("Quillon", "Quillon", "LogFilePathName", logPath());
        client = engine.newClient({[this](const QString &operation, const auto &args, const auto &) {
            record(operation, args);
            return std::optional<quillon::PropertyValue>();
        }});
        other = engine.newClient();
        other->Connect("OLCONSUMER", std::make_shared<EngineCalls::IgnoreMessages>());
    }

    ~MainWindowFixture()
    {
        window.reset();
        LocalSettings::SetBaseFolder(QString());
    }

    [[nodiscard]] bool ready() const { return engine.isReady() && m_folder.isValid(); }
    [[nodiscard]] QString logPath() const { return m_folder.filePath("QuillonLog.txt"); }

    // Makes the window, connects it as ConfigConsumer and shows it, which loads it.
    frmMainWindow &open()
    {
        window = std::make_unique<frmMainWindow>();
        window->SetModifierProbe([this] { return modifiers; });
        auto callback = std::make_shared<CBConnect>();
        callback->Setup(window.get());
        client->Connect("CONFIGCONSUMER", std::move(callback));
        window->SetClient(client);
        // Every change the window makes to its tree must keep the view's model consistent.
        new QAbstractItemModelTester(window->findChild<QTreeView *>("subsTree")->model(),
                                     QAbstractItemModelTester::FailureReportingMode::QtTest, window.get());
        window->show();
        return *window;
    }

    // Adds a subscription through the other consumer; 0 when the engine refused.
    qint32 add(const QString &title, const QString &category = QString(), bool delivered = false)
    {
        const qint32 id =
            EngineCalls::AddSubscription(*other, title, "http://127.0.0.1:9/" + title, category);
        if (delivered && id > 0)
            other->BindItem("OLCONSUMER", "NEWS", id, 1);
        return id;
    }

    [[nodiscard]] QList<qint32> delivered() { return EngineCalls::ConsumerItems(*other, "OLCONSUMER"); }

    [[nodiscard]] QString setting(const QString &consumer, const QString &section, const QString &key)
    {
        return GetConsumerSetting(*other, key, "-237237", consumer, section);
    }

    // The window's tree, its nodes by path and its controls by name.
    [[nodiscard]] SubscriptionTreeView *view() const
    {
        return window->findChild<SubscriptionTreeView *>("subsTree");
    }
    [[nodiscard]] CategoryTreeModel *model() const
    {
        return qobject_cast<CategoryTreeModel *>(view()->model());
    }
    [[nodiscard]] CategoryNode *node(const QString &path) const
    {
        return categoriesUtils::FindNodeByPath(window->Tree(), path);
    }
    void select(const QString &path) const
    {
        view()->setCurrentIndex(model()->IndexOf(node(path)));
        QCOMPARE(view()->CurrentNode(), node(path));
    }
    [[nodiscard]] QString label(const char *name) const { return window->findChild<QLabel *>(name)->text(); }
    [[nodiscard]] QPushButton *button(const char *name) const
    {
        return window->findChild<QPushButton *>(name);
    }

    // Delivers a message bag made by hand, as the engine would: MESSAGE and a Result bag.
    void deliver(const QString &message, const QHash<QString, QVariant> &result)
    {
        HandleGuard bag(*client, client->NewBag());
        HandleGuard payload(*client, client->NewBag());
        client->SetStringValue(bag.get(), "MESSAGE", message);
        for (auto it = result.cbegin(); it != result.cend(); ++it) {
            if (it.value().typeId() == QMetaType::Int)
                client->SetLongValue(payload.get(), it.key(), it.value().toInt());
            else
                client->SetStringValue(payload.get(), it.key(), it.value().toString());
        }
        client->SetHandleValue(bag.get(), "Result", payload.get());
        window->EventSubscribeClientMessage(bag.get());
    }

    TestEngine engine;
    quillon::SubscribeClientPtr client;
    QList<std::pair<qint32, qint32>> binds;   // ID and flag of every BindItem the window sent
    QList<QHash<QString, QString>> submitted; // the texts of every request bag it submitted
    quillon::SubscribeClientPtr other;
    std::unique_ptr<frmMainWindow> window;
    PromptRecorder prompts;
    Qt::KeyboardModifiers modifiers = Qt::NoModifier;

private:
    void record(const QString &operation, const QList<quillon::PropertyValue> &args)
    {
        if (operation == QLatin1String("BindItem"))
            binds.append({quillon::valueLong(args.at(2)), quillon::valueLong(args.at(3))});
        if (operation != QLatin1String("SubmitRequest"))
            return;
        QHash<QString, QString> fields;
        const quillon::BagPtr bag = std::get<quillon::BagPtr>(args.at(0));
        for (const char *name : {"REQUEST", "URL", "TITLE", "CATEGORY", "USER", "PASSWORD"})
            fields.insert(name, bag->contains(name) ? bag->text(name) : quillon::kMissingText);
        submitted.append(fields);
    }

    QTemporaryDir m_folder;
};
