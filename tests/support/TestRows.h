#pragma once

#include <QTest>

// One row of a data table on one line: row("tag", a, b, c) for QTest::newRow("tag") << a << b << c.
template <typename... Values> void row(const char *tag, const Values &...values)
{
    (QTest::newRow(tag) << ... << values);
}
