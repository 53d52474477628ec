#include "CBAddSub.h"
#include "CBConnect.h"
#include "CBNamedAnswer.h"
#include "CBPreviewSub.h"
#include "CBRootOPML.h"
#include "CBSubOPML.h"
#include "CBUpdateSub.h"
#include "FirstRunSetup.h"
#include "HandlerNames.h"
#include "OpmlImport.h"
#include "SearchSubscriptionPanel.h"
#include "frmAddSubscription.h"
#include "frmMainWindow.h"
#include "frmPreviewSubscription.h"

#include <QMetaMethod>
#include <QTest>

#include <initializer_list>
#include <memory>

namespace {

using Callbacks = std::initializer_list<std::shared_ptr<CBBase>>;

// The handlers the callbacks send that the target class cannot take, as "Name(types)".
QStringList MissingHandlers(const QMetaObject &target, Callbacks callbacks)
{
    QStringList missing;
    for (const auto &callback : callbacks) {
        for (const CBBase::SentHandler &sent : callback->SentHandlers()) {
            bool offered = false;
            for (int i = 0; i < target.methodCount() && !offered; ++i) {
                const QMetaMethod method = target.method(i);
                if (method.name() != sent.name || method.parameterCount() != sent.arguments.size())
                    continue;
                offered = true;
                for (int a = 0; a < sent.arguments.size(); ++a)
                    offered = offered && method.parameterMetaType(a) == sent.arguments.at(a);
            }
            QStringList types;
            for (const QMetaType &type : sent.arguments)
                types.append(QString::fromLatin1(type.name()));
            if (!offered)
                missing.append(QString::fromLatin1(sent.name) + u'(' + types.join(u',') + u')');
        }
    }
    return missing;
}

} // namespace

class tst_HandlerNames : public QObject
{
    Q_OBJECT
private slots:
    void everyTargetOffersTheHandlersItIsSent();
};

void tst_HandlerNames::everyTargetOffersTheHandlersItIsSent()
{
    // A target without the handlers is told so, with their argument types.
    QCOMPARE(MissingHandlers(QObject::staticMetaObject, {std::make_shared<CBSubOPML>()}),
             QStringList{"EventSubOPMLCallback(int,int)"});
    // One line per window that callbacks answer to.
    QCOMPARE(MissingHandlers(frmMainWindow::staticMetaObject,
                             {std::make_shared<CBConnect>(), std::make_shared<CBAddSub>(),
                              std::make_shared<CBUpdateSub>()}),
             QStringList());
    QCOMPARE(MissingHandlers(SearchSubscriptionPanel::staticMetaObject,
                             {std::make_shared<CBNamedAnswer>(HandlerNames::EventSearchSourcesCallback)}),
             QStringList());
    QCOMPARE(MissingHandlers(frmAddSubscription::staticMetaObject,
                             {std::make_shared<CBRootOPML>(), std::make_shared<CBSubOPML>(),
                              std::make_shared<CBNamedAnswer>(HandlerNames::EventSearchSourcesCallback),
                              std::make_shared<CBNamedAnswer>(HandlerNames::EventImportSourcesCallback)}),
             QStringList());
    QCOMPARE(MissingHandlers(frmPreviewSubscription::staticMetaObject, {std::make_shared<CBPreviewSub>()}),
             QStringList());
    QCOMPARE(MissingHandlers(DefaultFeedsRequest::staticMetaObject, {std::make_shared<CBSubOPML>()}),
             QStringList());
    QCOMPARE(MissingHandlers(FirstRunSetup::staticMetaObject,
                             {std::make_shared<CBNamedAnswer>(HandlerNames::EventImportSourcesCallback)}),
             QStringList());
}

QTEST_MAIN(tst_HandlerNames)
#include "tst_HandlerNames.moc"
