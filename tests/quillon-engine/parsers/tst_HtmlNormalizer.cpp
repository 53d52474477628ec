#include "HtmlNormalizer.h"
#include "TestRows.h"

#include <QTest>

using namespace quillon;

class tst_HtmlNormalizer : public QObject
{
    Q_OBJECT

private slots:
    void normalizesMarkup_data();
    void normalizesMarkup();
    void staysLinearOnUnclosedMarkup();
};

void tst_HtmlNormalizer::normalizesMarkup_data()
{
    QTest::addColumn<QString>("html");
    QTest::addColumn<QString>("expected");

    row("scripts go with their text", "a<script type=x>if (1 < 2) alert(1)</SCRIPT>b", "ab");
    row("unclosed script drops the rest", "a<script>alert(1)", "a");
    row("event handlers and script URLs", R"x(<a href=" javascript:x()" onclick="y()" title=t>t</a>)x",
        R"(<a title="t">t</a>)");
    row("script in styles, base and meta",
        R"x(<base href="http://evil/"><meta http-equiv="refresh"><p style="width:expression(alert(1))">x</p>)x",
        "<p>x</p>");
    row("frames, objects, embeds and forms",
        R"(a<iframe src="http://x/">fallback</iframe><object data="x.swf"><param name=m></object>)"
        R"(<embed src="x.swf"><form action="http://x/"><input name=q><button>Go</button></form>b)",
        "aGob");
    row("data and other schemes, any case",
        R"(<a href="DATA:text/html,<script>x</script>">d</a><img src=" data:image/png;base64,AA">)"
        R"(<a href="vbscript:x">v</a><a href="file:///etc/passwd">f</a><a href="mailto:a@b">m</a>)",
        R"(<a>d</a><img /><a>v</a><a>f</a><a href="mailto:a@b">m</a>)");
    row("styles that could run or fetch",
        R"x(<p style="background:url(javascript:x)">1</p><p style="x:ex\70ression(y)">2</p>)x"
        R"x(<p style="b:url(data:x)">3</p><p style="color:red">4</p><style>p{}</style>)x",
        R"(<p>1</p><p>2</p><p>3</p><p style="color:red">4</p>)");
    row("svg, xlink and unknown attributes",
        R"(<svg><a xlink:href="javascript:x">s</a></svg><a xlink:href="javascript:y" data-x=1 formaction=z>t</a>)",
        "<a>t</a>");
    row("names lowered, attributes sorted and quoted", "<A TITLE='it''s' HREF=page.html>x</A>",
        R"(<a href="http://example.org/dir/page.html" title="it">x</a>)");
    row("void elements closed", "<BR><img src=/a.png><hr/></br>",
        R"(<br /><img src="http://example.org/a.png" /><hr />)");
    row("stray characters escaped", "fish & chips < 3 > 2", "fish &amp; chips &lt; 3 > 2");
    row("references kept", "&nbsp;&#160;&#xA0;&eacute;&amp;", "&nbsp;&#160;&#xA0;&eacute;&amp;");
    row("attribute values re-escaped", R"(<img alt="a<b & &quot;c&quot;">)",
        R"(<img alt="a&lt;b &amp; &quot;c&quot;" />)");
    row("comments and declarations dropped", "a<!-- hidden -->b<!DOCTYPE html><?php x ?>c", "abc");
    row("unclosed tag becomes text", "1 <b class=\"x 2", "1 &lt;b class=\"x 2");
    row("tags kept as written, and near misses", "<h1>a</h1><h7>b</h7><p >c</p ><li1>d</li1><ul></ul-x>",
        "<h1>a</h1>b<p>c</p>d<ul>");
    row("names at the tables' 16-character limit",
        "<blockquote>a</blockquote><figcaptionxxxxxx>b</figcaptionxxxxxxx>", "<blockquote>a</blockquote>b");
    row("absolute links untouched", R"(<a href="HTTP://Example.COM/%7Ebob">x</a>)",
        R"(<a href="HTTP://Example.COM/%7Ebob">x</a>)");
}

void tst_HtmlNormalizer::normalizesMarkup()
{
    QFETCH(QString, html);
    QFETCH(QString, expected);
    QCOMPARE(HtmlNormalizer::normalize(html, QUrl("http://example.org/dir/index.html")), expected);
}

// Inputs that make a naive tokenizer rescan to the end from every '<'.
void tst_HtmlNormalizer::staysLinearOnUnclosedMarkup()
{
    for (const char *unit : {"<a b=\"", "<!--", "</x", "<?", "<p"}) {
        const QString html = QString::fromLatin1(unit).repeated(200000);
        const QString out = HtmlNormalizer::normalize(html);
        QVERIFY(out.size() >= html.size());
        QVERIFY(!out.contains(u'<'));
    }
}

QTEST_GUILESS_MAIN(tst_HtmlNormalizer)
#include "tst_HtmlNormalizer.moc"
