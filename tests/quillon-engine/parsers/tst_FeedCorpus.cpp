#include "CorpusManifest.h"
#include "FeedParser.h"

#include <QRegularExpression>
#include <QTest>

#include <optional>

using namespace quillon;

namespace {

const QString kFolder = "feedparser";

std::optional<QString> text(const ParsedText &value)
{
    return value.value;
}

std::optional<QString> nth(const QStringList &list, int index)
{
    return index < list.size() ? std::optional<QString>(list.at(index)) : std::nullopt;
}

std::optional<QString> feedValue(const ParsedFeed &feed, const QString &field, int index)
{
    if (field == u"title")
        return text(feed.title);
    if (field == u"link")
        return feed.link;
    if (field == u"links")
        return nth(feed.links, index);
    if (field == u"description")
        return text(feed.description);
    if (field == u"id")
        return feed.id;
    return std::nullopt;
}

std::optional<QString> enclosureValue(const ParsedItem &item, int index, const QString &part)
{
    if (index >= item.enclosures.size())
        return std::nullopt;
    const ParsedEnclosure &enclosure = item.enclosures.at(index);
    if (part == u"url")
        return enclosure.url;
    if (part == u"type")
        return enclosure.type;
    if (part == u"length" && enclosure.length >= 0)
        return QString::number(enclosure.length);
    return std::nullopt;
}

std::optional<QString> itemValue(const ParsedItem &item, const QString &field, int index, const QString &part)
{
    if (field == u"title")
        return text(item.title);
    if (field == u"link")
        return item.link;
    if (field == u"links")
        return nth(item.links, index);
    if (field == u"summary")
        return text(item.summary);
    if (field == u"content" && index == 0 && !item.content.value.isNull())
        return text(item.content);
    if (field == u"enclosures")
        return enclosureValue(item, index, part);
    if (field == u"id")
        return item.guid;
    return std::nullopt;
}

// A canonical key of the manifest ("entries[0].content[0].value") read from our model.
std::optional<QString> valueAt(const ParsedFeed &feed, const QString &key)
{
    static const QRegularExpression shape(
        "^(feed|entries\\[(\\d+)\\])\\.(\\w+)(?:\\[(\\d+)\\](?:\\.(\\w+))?)?$");
    const QRegularExpressionMatch m = shape.match(key);
    if (!m.hasMatch())
        return std::nullopt;
    const QString field = m.captured(3);
    const int index = m.captured(4).toInt();
    if (m.captured(1) == u"feed")
        return feedValue(feed, field, index);
    const int entry = m.captured(2).toInt();
    if (entry >= feed.items.size())
        return std::nullopt;
    return itemValue(feed.items.at(entry), field, index, m.captured(5));
}

QString contentTypeOf(const QJsonObject &testCase)
{
    for (const QJsonValue &header : testCase.value("headers").toArray()) {
        const QJsonArray pair = header.toArray();
        if (pair.at(0).toString().compare(u"content-type", Qt::CaseInsensitive) == 0)
            return pair.at(1).toString();
    }
    return {};
}

} // namespace

class tst_FeedCorpus : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void wellformedValuesMatch_data() { addRows("wellformed"); }
    void wellformedValuesMatch();
    void illformedDocumentsParseOrSayWhy_data() { addRows("illformed"); }
    void illformedDocumentsParseOrSayWhy();
    void cleanupTestCase();

private:
    void addRows(const QString &category);

    int m_wellformedChecks = 0;
    int m_informationalChecks = 0;
    int m_informationalPassed = 0;
    int m_faultExpectations = 0;
    int m_faultAgreed = 0;
};

void tst_FeedCorpus::initTestCase()
{
    if (CorpusManifest::cases(kFolder).isEmpty())
        QSKIP(qPrintable("No feed corpus at " + CorpusManifest::corpusDir()));
}

void tst_FeedCorpus::addRows(const QString &category)
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("contentType");
    QTest::addColumn<QJsonArray>("checks");
    QTest::addColumn<QJsonValue>("faultExpected");
    for (const QJsonObject &testCase : CorpusManifest::cases(kFolder, category)) {
        const QString path = testCase.value("path").toString();
        QTest::newRow(qPrintable(path))
            << path << contentTypeOf(testCase) << testCase.value("checks").toArray()
            << testCase.value("expect_bozo");
    }
}

void tst_FeedCorpus::wellformedValuesMatch()
{
    QFETCH(QString, path);
    QFETCH(QString, contentType);
    QFETCH(QJsonArray, checks);

    const ParsedFeed feed = FeedParser::parse(CorpusManifest::sample(kFolder, path), contentType);
    QVERIFY2(feed.ok(), qPrintable(feed.errorText));
    for (const QJsonValue &value : checks) {
        const QJsonObject check = value.toObject();
        const QString key = check.value("canonical").toString();
        const std::optional<QString> actual = valueAt(feed, key);
        QVERIFY2(actual.has_value(), qPrintable(key + " has no value"));
        QCOMPARE(*actual, check.value("value").toString());
        ++m_wellformedChecks;
    }
}

// The hard requirement is only that each document is read to an end without a crash; what
// the upstream expectations say about these files is counted, not enforced.
void tst_FeedCorpus::illformedDocumentsParseOrSayWhy()
{
    QFETCH(QString, path);
    QFETCH(QString, contentType);
    QFETCH(QJsonArray, checks);
    QFETCH(QJsonValue, faultExpected);

    const ParsedFeed feed = FeedParser::parse(CorpusManifest::sample(kFolder, path), contentType);
    // A refusal names its reason; what is read knows its format.
    QVERIFY2(feed.ok() ? !feed.format.isEmpty() : !feed.errorText.isEmpty(), qPrintable(path));
    if (faultExpected.isBool()) {
        ++m_faultExpectations;
        const bool flagged = !feed.ok() || feed.encodingFallback || feed.repairs > 0;
        m_faultAgreed += flagged == faultExpected.toBool() ? 1 : 0;
    }
    for (const QJsonValue &value : checks) {
        const QJsonObject check = value.toObject();
        ++m_informationalChecks;
        const auto actual = valueAt(feed, check.value("canonical").toString());
        m_informationalPassed += actual == check.value("value").toString() ? 1 : 0;
    }
}

void tst_FeedCorpus::cleanupTestCase()
{
    qInfo("well-formed samples: %d value checks held", m_wellformedChecks);
    qInfo("ill-formed samples: fault reported as upstream expects in %d of %d; values matched %d of %d",
          m_faultAgreed, m_faultExpectations, m_informationalPassed, m_informationalChecks);
}

QTEST_GUILESS_MAIN(tst_FeedCorpus)
#include "tst_FeedCorpus.moc"
