#pragma once

#include "ConfigPage.h"

// Stands in for a module whose page is not part of this version yet: it says so and holds
// nothing to apply.
class PendingPage : public ConfigPage
{
    Q_OBJECT
public:
    explicit PendingPage(QWidget *parent = nullptr);

    void Apply() override { SetDirty(false); }
    void LoadValues() override {}
};
