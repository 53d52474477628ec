#include "CorpusManifest.h"
#include "OpmlCatalog.h"
#include "OpmlParser.h"

#include <QRegularExpression>
#include <QTest>

#include <optional>

using namespace quillon;

namespace {

const QString kFolder = "listparser";

QVariantList pathsToVariant(const QList<QStringList> &paths)
{
    QVariantList list;
    for (const QStringList &path : paths)
        list.append(path);
    return list;
}

QVariantList linksToVariant(const QList<OpmlCatalog::Link> &links)
{
    QVariantList list;
    for (const OpmlCatalog::Link &link : links)
        list.append(QVariantMap{{"url", link.url}, {"title", link.title}});
    return list;
}

// Our model in the shape the expectations address ("result['feeds'][0]['tags']").
QVariantMap resultTree(const OpmlDocument &document)
{
    const OpmlCatalog catalog = OpmlCatalog::fromDocument(document);
    QVariantList feeds;
    for (const OpmlCatalog::Feed &feed : catalog.feeds) {
        feeds.append(QVariantMap{{"url", feed.url},
                                 {"title", feed.title},
                                 {"categories", pathsToVariant(feed.categories)},
                                 {"tags", feed.tags()}});
    }
    return {{"feeds", feeds},
            {"lists", linksToVariant(catalog.lists)},
            {"opportunities", linksToVariant(catalog.opportunities)},
            {"meta", QVariantMap{{"title", document.title}}}};
}

std::optional<QVariant> valueAt(const QVariantMap &tree, const QString &key)
{
    static const QRegularExpression step("\\.(\\w+)|\\[(\\d+)\\]");
    QVariant node = tree;
    for (auto it = step.globalMatch(key.mid(key.indexOf(u'.'))); it.hasNext();) {
        const QRegularExpressionMatch m = it.next();
        if (m.hasCaptured(1)) {
            const QVariantMap map = node.toMap();
            if (!map.contains(m.captured(1)))
                return std::nullopt;
            node = map.value(m.captured(1));
        } else {
            const QVariantList list = node.toList();
            const int index = m.captured(2).toInt();
            if (index >= list.size())
                return std::nullopt;
            node = list.at(index);
        }
    }
    return node;
}

QStringList stringList(const QJsonValue &value)
{
    QStringList list;
    for (const QJsonValue &item : value.toArray())
        list.append(item.toString());
    return list;
}

bool holds(const QJsonObject &check, const QVariant &actual)
{
    const QString form = check.value("form").toString();
    const QJsonValue expected = check.value("value");
    if (form == u"eq")
        return actual.toString() == expected.toString();
    if (form == u"eq-list")
        return actual.toStringList() == stringList(expected);
    if (form == u"len")
        return actual.toList().size() == expected.toInt();
    if (form == u"contains")
        return actual.toStringList().contains(expected.toString());
    if (form == u"contains-list") {
        const QVariantList paths = actual.toList();
        return std::any_of(paths.begin(), paths.end(),
                           [&](const QVariant &path) { return path.toStringList() == stringList(expected); });
    }
    return false;
}

} // namespace

class tst_OpmlCorpus : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void outlineListsMatch_data() { addRows("opml"); }
    void outlineListsMatch();
    void malformedListsParseOrSayWhy_data() { addRows("malformed"); }
    void malformedListsParseOrSayWhy();
    void cleanupTestCase();

private:
    void addRows(const QString &category);
    void verifyChecks(const OpmlDocument &document, const QJsonArray &checks);

    int m_checks = 0;
    int m_informationalChecks = 0;
    int m_informationalPassed = 0;
};

void tst_OpmlCorpus::initTestCase()
{
    if (CorpusManifest::cases(kFolder).isEmpty())
        QSKIP(qPrintable("No OPML corpus at " + CorpusManifest::corpusDir()));
}

void tst_OpmlCorpus::addRows(const QString &category)
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QJsonArray>("checks");
    for (const QJsonObject &testCase : CorpusManifest::cases(kFolder, category)) {
        const QString path = testCase.value("path").toString();
        QTest::newRow(qPrintable(path)) << path << testCase.value("checks").toArray();
    }
}

void tst_OpmlCorpus::outlineListsMatch()
{
    QFETCH(QString, path);
    QFETCH(QJsonArray, checks);

    const OpmlDocument document = OpmlParser::parse(CorpusManifest::sample(kFolder, path));
    QVERIFY2(document.ok(), qPrintable(document.errorText));
    verifyChecks(document, checks);
}

void tst_OpmlCorpus::verifyChecks(const OpmlDocument &document, const QJsonArray &checks)
{
    const QVariantMap tree = resultTree(document);
    for (const QJsonValue &value : checks) {
        const QJsonObject check = value.toObject();
        const QString expr = check.value("expr").toString();
        const std::optional<QVariant> actual = valueAt(tree, check.value("key").toString());
        QVERIFY2(actual.has_value(), qPrintable(expr + ": no such value"));
        QVERIFY2(holds(check, *actual), qPrintable(expr));
        ++m_checks;
    }
}

// Upstream reads these with a lenient HTML parser; a strict reader reads them or says why not.
void tst_OpmlCorpus::malformedListsParseOrSayWhy()
{
    QFETCH(QString, path);
    QFETCH(QJsonArray, checks);

    const OpmlDocument document = OpmlParser::parse(CorpusManifest::sample(kFolder, path));
    QCOMPARE(document.errorText.isEmpty(), document.ok());
    const QVariantMap tree = resultTree(document);
    for (const QJsonValue &value : checks) {
        const QJsonObject check = value.toObject();
        ++m_informationalChecks;
        const auto actual = valueAt(tree, check.value("key").toString());
        m_informationalPassed += actual && holds(check, *actual) ? 1 : 0;
    }
}

void tst_OpmlCorpus::cleanupTestCase()
{
    qInfo("outline lists: %d checks held; malformed lists: %d of %d informational checks held", m_checks,
          m_informationalPassed, m_informationalChecks);
}

QTEST_GUILESS_MAIN(tst_OpmlCorpus)
#include "tst_OpmlCorpus.moc"
