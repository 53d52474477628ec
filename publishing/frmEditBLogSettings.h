#pragma once

#include "SubscribeClient.h"

#include <QDialog>

#include <memory>

namespace Ui {
class frmEditBLogSettings;
}

// Edits one weblog record. OK writes the fields back to the record; Cancel writes nothing.
class frmEditBLogSettings : public QDialog
{
    Q_OBJECT
public:
    frmEditBLogSettings(quillon::SubscribeClientPtr client, qint32 recordNumber, QWidget *owner = nullptr);
    ~frmEditBLogSettings() override;

private:
    void LoadRecord();
    void OnOK();

    std::unique_ptr<Ui::frmEditBLogSettings> ui;
    quillon::SubscribeClientPtr m_client;
    qint32 m_number;
};
