#include "SubscriptionDetailsView.h"

#include "DetailsPane.h"
#include "ui_SubscriptionDetailsView.h"

SubscriptionDetailsView::SubscriptionDetailsView(QWidget *parent)
    : QFrame(parent), ui(std::make_unique<Ui::SubscriptionDetailsView>())
{
    ui->setupUi(this);
    ui->stkDetails->setCurrentWidget(ui->picNothing);
}

SubscriptionDetailsView::~SubscriptionDetailsView() = default;

void SubscriptionDetailsView::ShowNothing()
{
    ui->lblDetailsHeading->setText(DetailsPane::kNothingSelected);
    ui->stkDetails->setCurrentWidget(ui->picNothing);
}

void SubscriptionDetailsView::ShowSubscription(const QString &title, const SubscriptionFacts &facts,
                                               const SubscriptionStatus &status)
{
    ui->lblDetailsHeading->setText(DetailsPane::Heading(title));
    ui->stkDetails->setCurrentWidget(ui->picDetails);
    ui->lblDetailsUrl->setText(facts.url);
    ui->lblDetailsStatus->setText(DetailsPane::StatusText(facts.lastStatus, status.downloads));
    ui->lblDetailsLastCheck->setText(DetailsPane::DateText(status.lastCheck));
    ui->lblDetailsNextCheck->setText(DetailsPane::DateText(status.nextCheck));
    ui->lblReadArticles->setText(DetailsPane::CountText(facts.readCount));
    ui->lblNewArticles->setText(DetailsPane::CountText(facts.unreadCount));
}

void SubscriptionDetailsView::ShowCategory(const QString &title,
                                           const QList<SubscriptionFacts> &subscriptions)
{
    ui->lblDetailsHeading->setText(DetailsPane::Heading(title));
    ui->stkDetails->setCurrentWidget(ui->picCategoryDetails);
    qint64 read = 0;
    qint64 unread = 0;
    for (const SubscriptionFacts &facts : subscriptions) {
        read += DetailsPane::CountOrZero(facts.readCount);
        unread += DetailsPane::CountOrZero(facts.unreadCount);
    }
    ui->lblSubs->setText(DetailsPane::CountText(subscriptions.size()));
    ui->lblCatReadArticles->setText(DetailsPane::CountText(read));
    ui->lblCatNewArticles->setText(DetailsPane::CountText(unread));
}
