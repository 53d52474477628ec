#include "PendingPage.h"

#include <QLabel>
#include <QVBoxLayout>

PendingPage::PendingPage(QWidget *parent) : ConfigPage(parent)
{
    auto *layout = new QVBoxLayout(this);
    auto *note = new QLabel(QStringLiteral("These options come with a later version."), this);
    note->setObjectName(QStringLiteral("lblPending"));
    note->setAlignment(Qt::AlignCenter);
    layout->addWidget(note);
}
