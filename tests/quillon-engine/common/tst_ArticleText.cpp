#include "ArticleText.h"

#include <QTest>

using namespace quillon;

class tst_ArticleText : public QObject
{
    Q_OBJECT

private slots:
    void plainTextIsSimplified_data();
    void plainTextIsSimplified();
};

void tst_ArticleText::plainTextIsSimplified_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("already simple") << "A title of words";
    QTest::newRow("empty") << "";
    QTest::newRow("only a space") << " ";
    QTest::newRow("leading and trailing spaces") << " a b ";
    QTest::newRow("two spaces inside") << "a  b";
    QTest::newRow("newline and tab") << "a\nb\tc";
    QTest::newRow("no-break space") << QString("a\u00a0b");
    QTest::newRow("ideographic space") << QString("a\u3000b");
}

// The copy is skipped only when it would change nothing.
void tst_ArticleText::plainTextIsSimplified()
{
    QFETCH(QString, text);
    QCOMPARE(ArticleText::plain({text, false}), text.simplified());
}

QTEST_GUILESS_MAIN(tst_ArticleText)
#include "tst_ArticleText.moc"
