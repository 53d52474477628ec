#include "XmlPullReader.h"

#include <QTest>

using namespace quillon;

namespace {

// Every token as "<{ns}name a=v>", "</name>" or the text, then "!" for a fault.
QString trace(const QByteArray &document)
{
    XmlPullReader xml(document);
    QString out;
    while (!xml.atEnd()) {
        switch (xml.readNext()) {
        case XmlPullReader::StartElement:
            out += u'<';
            if (!xml.namespaceUri().isEmpty())
                out += u'{' + xml.namespaceUri().toString() + u'}';
            out += xml.name();
            for (const XmlAttribute &attribute : xml.attributes())
                out += u' ' + attribute.qualifiedName + u'=' + attribute.value;
            out += u'>';
            break;
        case XmlPullReader::EndElement:
            out += "</" + xml.name().toString() + u'>';
            break;
        case XmlPullReader::Characters:
            out += xml.text();
            break;
        default:
            break;
        }
        if (xml.hasError() != (xml.tokenType() == XmlPullReader::Invalid))
            return QStringLiteral("fault shown early");
    }
    return xml.hasError() ? out + u'!' : out;
}

QByteArray manyElements(int count, const QByteArray &last)
{
    return "<r>" + QByteArray("<e/>").repeated(count) + last;
}

} // namespace

class tst_XmlPullReader : public QObject
{
    Q_OBJECT

private slots:
    void readsTokens_data();
    void readsTokens();
    void walksElements();
    void keepsNamesAcrossDocuments();
};

void tst_XmlPullReader::readsTokens_data()
{
    QTest::addColumn<QByteArray>("document");
    QTest::addColumn<QString>("expected");
    QTest::newRow("namespaces and prefixes")
        << QByteArray("<a:f xmlns:a='urn:a' xmlns='urn:d'><x b:y='1' xmlns:b='urn:b' z='2'/></a:f>")
        << "<{urn:a}f><{urn:d}x b:y=1 z=2></x></f>";
    QTest::newRow("text joined across CDATA, references, comments")
        << QByteArray("<r>a&amp;<![CDATA[<b>]]><!-- c --><?pi x?>&#x41;\n</r>") << "<r>a&<b>A\n</r>";
    QTest::newRow("declared encoding ignored")
        << QByteArray("<?xml version='1.0' encoding='ISO-8859-1'?><r>\xc3\xa9</r>") << "<r>\u00e9</r>";
    QTest::newRow("fault after many tokens keeps what came before")
        << manyElements(3000, "</x>") << "<r>" + QString("<e></e>").repeated(3000) + "!";
    QTest::newRow("document cut short") << manyElements(2, "<e>text") << "<r><e></e><e></e><e>!";
    QTest::newRow("undeclared entity") << QByteArray("<r>a&nbsp;b</r>") << "<r>!";
    QTest::newRow("external entity not loaded")
        << QByteArray("<!DOCTYPE r [<!ENTITY e SYSTEM 'file:///etc/hostname'>]><r>[&e;]</r>") << "<r>[]</r>";
    QTest::newRow("internal entity expanded")
        << QByteArray("<!DOCTYPE r [<!ENTITY e 'inner'>]><r>[&e;]</r>") << "<r>[inner]</r>";
    QTest::newRow("not XML") << QByteArray("plain words") << "!";
}

void tst_XmlPullReader::readsTokens()
{
    QFETCH(QByteArray, document);
    QTEST(trace(document), "expected");
}

void tst_XmlPullReader::walksElements()
{
    XmlPullReader xml("<r v='1'><a>x<b>skipped</b>y</a><c><d/></c><e xml:base='b'>z</e></r>");
    QVERIFY(xml.readNextStartElement());
    QCOMPARE(xml.attributes().value(u"v"), u"1");
    QVERIFY(xml.readNextStartElement());
    QCOMPARE(xml.readElementText(), "xy");
    QCOMPARE(xml.tokenType(), XmlPullReader::EndElement);
    QVERIFY(xml.readNextStartElement());
    xml.skipCurrentElement();
    QCOMPARE(xml.name(), u"c");
    QVERIFY(xml.readNextStartElement());
    QCOMPARE(xml.attributes().value(u"http://www.w3.org/XML/1998/namespace", u"base"), u"b");
    QCOMPARE(xml.readElementText(), "z");
    QVERIFY(!xml.readNextStartElement());
    QCOMPARE(xml.name(), u"r");
    xml.readNext();
    QVERIFY(xml.atEnd() && !xml.hasError());
}

// Names outlive a document on its thread; one read inside another, and a crowd of names that
// empties the table, must not change what either reader says.
void tst_XmlPullReader::keepsNamesAcrossDocuments()
{
    QByteArray crowd = "<r>";
    for (int i = 0; i < 5000; ++i)
        crowd += "<n" + QByteArray::number(i) + "/>";
    crowd += "</r>";
    {
        XmlPullReader outer("<o:r xmlns:o='urn:o'><o:a/><b/></o:r>");
        QVERIFY(outer.readNextStartElement());
        QCOMPARE(outer.name(), u"r");
        QVERIFY(trace(crowd).endsWith("<n4999></n4999></r>")); // read inside the outer
        QVERIFY(outer.readNextStartElement());
        QCOMPARE(outer.namespaceUri(), u"urn:o");
        QCOMPARE(outer.name(), u"a");
        QVERIFY(trace(crowd).startsWith("<r><n0></n0><n1>")); // names kept: the outer is alive
        outer.skipCurrentElement();
        QVERIFY(outer.readNextStartElement());
        QCOMPARE(outer.name(), u"b");
    }
    // No reader alive: the crowd is dropped before this one starts.
    QCOMPARE(trace("<a:x xmlns:a='urn:a'><y a:z='1'/></a:x>"), "<{urn:a}x><y a:z=1></y></x>");
}

QTEST_GUILESS_MAIN(tst_XmlPullReader)
#include "tst_XmlPullReader.moc"
