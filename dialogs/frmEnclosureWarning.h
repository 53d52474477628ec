#pragma once

#include "StandardDialog.h"
#include "SubscribeClient.h"

#include <memory>

namespace Ui {
class frmEnclosureWarning;
}

// Asks whether a subscription's enclosures are downloaded automatically: Yes (1) or No (0).
class frmEnclosureWarning : public StandardDialog
{
    Q_OBJECT
public:
    static constexpr int ResultYes = 1;
    static constexpr int ResultNo = 0;

    explicit frmEnclosureWarning(QWidget *owner = nullptr);
    ~frmEnclosureWarning() override;

    [[nodiscard]] int GetResult() const { return result(); }
    [[nodiscard]] bool ApplyToAllSubscriptions() const;

    // Asks about the subscription and stores the answer in its own settings, and for every
    // subscription when the user says so. Returns the answer; 0 when it cannot ask.
    static int Run(quillon::SubscribeClient &client, qint32 subscriptionId, QWidget *owner = nullptr);
    // The designed prompt with "^1" replaced by the title.
    [[nodiscard]] static QString PromptFor(const QString &title);

private:
    std::unique_ptr<Ui::frmEnclosureWarning> ui;
};
