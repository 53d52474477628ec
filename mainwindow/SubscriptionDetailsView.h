#pragma once

#include "SubscriptionListLoader.h"

#include <QFrame>

#include <memory>

namespace Ui {
class SubscriptionDetailsView;
}

// The details pane: the selected subscription's address, last status, checks and article
// counts, or the sums of a category.
class SubscriptionDetailsView : public QFrame
{
    Q_OBJECT
public:
    explicit SubscriptionDetailsView(QWidget *parent = nullptr);
    ~SubscriptionDetailsView() override;

    void ShowNothing();
    void ShowSubscription(const QString &title, const SubscriptionFacts &facts,
                          const SubscriptionStatus &status);
    void ShowCategory(const QString &title, const QList<SubscriptionFacts> &subscriptions);

private:
    std::unique_ptr<Ui::SubscriptionDetailsView> ui;
};
