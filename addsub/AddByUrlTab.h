#pragma once

#include <QWidget>

#include <memory>

namespace Ui {
class AddByUrlTab;
}
class QComboBox;

// Tab 0 of the wizard: a feed's address typed by hand, with title, login and category.
class AddByUrlTab : public QWidget
{
    Q_OBJECT
public:
    explicit AddByUrlTab(QWidget *parent = nullptr);
    ~AddByUrlTab() override;

    [[nodiscard]] QString Url() const;
    [[nodiscard]] QString UserTitle() const;
    [[nodiscard]] QString UserName() const;
    [[nodiscard]] QString Password() const;
    [[nodiscard]] QComboBox &Categories() const;
    void SetUrl(const QString &url);

Q_SIGNALS:
    void CheckNowClicked();

private:
    std::unique_ptr<Ui::AddByUrlTab> ui;
};
