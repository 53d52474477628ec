#pragma once

#include "StandardDialog.h"
#include "SubscribeClient.h"

#include <memory>

namespace Ui {
class frmUserNameAndPassword;
}

// Asks for a subscription's login: OK (1) or Cancel (0). OK needs a user name.
class frmUserNameAndPassword : public StandardDialog
{
    Q_OBJECT
public:
    static constexpr int ResultOK = 1;
    static constexpr int ResultCancel = 0;

    explicit frmUserNameAndPassword(QWidget *owner = nullptr);
    ~frmUserNameAndPassword() override;

    void SetUserName(const QString &userName);
    [[nodiscard]] QString UserName() const;
    [[nodiscard]] QString Password() const;
    [[nodiscard]] int GetResult() const { return result(); }

    // Asks for the subscription's login and hands it to the engine on OK. True when sent.
    static bool Run(quillon::SubscribeClient &client, qint32 subscriptionId, QWidget *owner = nullptr);
    // The prompt for a subscription: the designed one, or the "invalid" one once a user is known.
    [[nodiscard]] static QString PromptFor(const QString &name, bool userKnown);

private:
    void UpdateOK();

    std::unique_ptr<Ui::frmUserNameAndPassword> ui;
};
