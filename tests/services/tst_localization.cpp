#include "PromptSeam.h"
#include "localization.h"

#include <QDirIterator>
#include <QFile>
#include <QRegularExpression>
#include <QSet>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {
void writeFile(const QString &path, const QByteArray &content)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(content);
}

// IDs the code asks for: literal look-ups, and the constants of the *Strings.h headers that
// name IDs for the code.
QSet<qint32> idsUsedInSources(const QString &sourceRoot)
{
    static const QRegularExpression lookup(QStringLiteral(R"(GetLocalizedString\s*\(\s*(\d+)\s*\))"));
    static const QRegularExpression constant(QStringLiteral(R"(constexpr\s+qint32\s+\w+\s*=\s*(\d+)\s*;)"));
    QSet<qint32> ids;
    const QStringList folders = {"app",    "engine",  "services", "dialogs",   "mainwindow",
                                 "addsub", "options", "firstrun", "publishing"};
    for (const QString &folder : folders) {
        QDirIterator it(sourceRoot + QLatin1Char('/') + folder, {"*.cpp", "*.h"}, QDir::Files,
                        QDirIterator::Subdirectories);
        while (it.hasNext()) {
            const QString path = it.next();
            QFile file(path);
            if (!file.open(QIODevice::ReadOnly))
                continue;
            const QString text = QString::fromUtf8(file.readAll());
            const bool idHeader = path.endsWith(QLatin1String("Strings.h"));
            for (const auto &pattern : {&lookup, &constant}) {
                if (pattern == &constant && !idHeader)
                    continue;
                for (const auto &match : pattern->globalMatch(text))
                    ids.insert(match.captured(1).toInt());
            }
        }
    }
    return ids;
}
} // namespace

class tst_localization : public QObject
{
    Q_OBJECT

private slots:
    // Runs first: nothing is loaded yet in this process.
    void lookupsBeforeLoadingWarnOnce();
    void readsEntriesLineByLine();
    void shippedFileHoldsEveryIdTheCodeUses();
};

void tst_localization::lookupsBeforeLoadingWarnOnce()
{
    QStringList boxes;
    PromptSeam::SetHandler([&boxes](Prompt &prompt) {
        boxes << prompt.mainText;
        return 0;
    });
    QCOMPARE(GetLocalizedString(26), u".LOCERR"_s);
    QCOMPARE(GetLocalizedString(27), u".LOCERR"_s);
    QCOMPARE(boxes, QStringList{u"strings file not loaded yet"_s});

    // A missing file still counts as loaded: empty answers, no box.
    QTemporaryDir empty;
    LoadStrings(empty.path());
    QCOMPARE(GetLocalizedString(26), QString());
    ClearStrings();
    QCOMPARE(GetLocalizedString(26), u".LOCERR"_s);
    QCOMPARE(boxes.size(), 1);
    PromptSeam::SetHandler({});
}

void tst_localization::readsEntriesLineByLine()
{
    QTemporaryDir dir;
    // Lines as written: "|" ends one. Windows line ends at first; stray text, an entry that does
    // not start its line and one never closed are skipped.
    const QString lines =
        "<?xml version=\"1.0\"?>\r|<id>1</id><loc>outside</loc>\r|\r|<s>\r|<id>1</id>\r|\r|"
        "<d>translator note</d>\r|<eng>English</eng>\r|<loc>Ein &amp; zwei</loc>\r|</s>|"
        "stray text|<s>|<id> 2 </id>|<loc>  spaced  </loc>|</s>|<s>|<id>1</id>|"
        "<loc>duplicate</loc>|</s>|  <s>|<id>3</id>|<loc>not opened</loc>|</s>|<s>|<id>4</id>|"
        "<loc>never closed</loc>|";
    writeFile(dir.filePath(u"configstrings.xml"_s), QString(lines).replace(u'|', u'\n').toUtf8());
    LoadStrings(dir.path());
    QCOMPARE(GetLocalizedString(1), u"Ein &amp; zwei"_s);
    QCOMPARE(GetLocalizedString(2), u"  spaced  "_s);
    QCOMPARE(GetLocalizedString(3), QString());
    QCOMPARE(GetLocalizedString(4), QString());
    QCOMPARE(GetLocalizedString(99), QString());

    // Loading again starts from an empty table.
    writeFile(dir.filePath(u"configstrings.xml"_s), "<s>\n<id>5</id>\n<loc>five</loc>\n</s>\n");
    LoadStrings(dir.path());
    QCOMPARE(GetLocalizedString(5), u"five"_s);
    QCOMPARE(GetLocalizedString(1), QString());
    ClearStrings();
}

void tst_localization::shippedFileHoldsEveryIdTheCodeUses()
{
    const QString sourceRoot = qEnvironmentVariable("QUILLON_SOURCE_DIR");
    if (sourceRoot.isEmpty())
        QSKIP("run through ctest, which names the source folder");
    QVERIFY(QFile::exists(QuillonDataFolder() + u"/configstrings.xml"_s));
    LoadStrings(QuillonDataFolder());
    const QSet<qint32> ids = idsUsedInSources(sourceRoot);
    QVERIFY(!ids.isEmpty());
    QStringList missing;
    for (qint32 id : ids) {
        if (GetLocalizedString(id).isEmpty())
            missing << QString::number(id);
    }
    ClearStrings();
    QVERIFY2(missing.isEmpty(), qPrintable(u"configstrings.xml lacks IDs "_s + missing.join(", ")));
}

QTEST_GUILESS_MAIN(tst_localization)
#include "tst_localization.moc"
