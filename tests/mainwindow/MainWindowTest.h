#pragma once

#include "MainWindowFixture.h"

#include <QObject>
#include <QTest>

#include <memory>

// The base of the main window's tests: a fresh fixture for each test function, and no handle
// left behind by the window. A test that needs more calls these from its own slots.
class MainWindowTest : public QObject
{
    Q_OBJECT

protected:
    std::unique_ptr<MainWindowFixture> f;

protected Q_SLOTS:
    void init()
    {
        f = std::make_unique<MainWindowFixture>();
        QVERIFY(f->ready());
    }
    void cleanup()
    {
        if (f->window)
            QCOMPARE(f->client->LiveHandleCount(), 0);
        f.reset();
    }
};
