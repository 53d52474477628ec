#include "MessageFormat.h"

#include <cstdio>

namespace {
constexpr qsizetype kLineWidth = 78;     // what a header line should stay within
constexpr qsizetype kLongestWord = 900;  // past this a word is encoded, so it can be split
constexpr qsizetype kMaxBodyLine = 998;  // the longest line 7bit allows
constexpr qsizetype kWordPayload = 63;   // an encoded-word is at most 75 characters
constexpr qsizetype kBase64Bytes = 45;   // the bytes of 60 base64 characters
constexpr qsizetype kQuotedColumns = 75; // a quoted-printable line: 76 with its soft break
constexpr char kHex[] = "0123456789ABCDEF";

void appendHex(QByteArray &out, char c)
{
    out += '=';
    out += kHex[uchar(c) >> 4];
    out += kHex[uchar(c) & 15];
}

bool isBlank(char c)
{
    return c == ' ' || c == '\t';
}

bool isPlainAscii(char c)
{
    return c > ' ' && c < 0x7f;
}

// Characters that stand for themselves in a Q encoded-word anywhere, phrases included.
bool isQSafe(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '!' ||
           c == '*' || c == '+' || c == '-' || c == '/';
}

// An atom's characters (RFC 5322 atext).
bool isAtomText(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
           QByteArrayView("!#$%&'*+-/=?^_`{|}~").contains(c);
}

bool allOf(QByteArrayView text, bool (*test)(char))
{
    for (const char c : text) {
        if (!test(c))
            return false;
    }
    return true;
}

qsizetype utf8Length(char lead)
{
    const auto c = uchar(lead);
    return c >= 0xf0 ? 4 : c >= 0xe0 ? 3 : c >= 0xc0 ? 2 : 1;
}

// One header field: words separated by one blank, which becomes a fold where the line would
// grow past its width.
class FieldWriter
{
public:
    FieldWriter(QByteArray &out, QByteArrayView name) : m_out(out), m_column(name.size() + 1)
    {
        m_out += name;
        m_out += ':';
    }
    ~FieldWriter() { m_out += '\n'; }
    FieldWriter(const FieldWriter &) = delete;
    FieldWriter &operator=(const FieldWriter &) = delete;

    void word(QByteArrayView text)
    {
        if (m_words > 0 && m_column + 1 + text.size() > kLineWidth) {
            m_out += "\n ";
            m_column = 1;
        } else {
            m_out += ' ';
            ++m_column;
        }
        m_out += text;
        m_column += text.size();
        ++m_words;
    }

    // The text as utf-8 encoded-words, Q or B whichever is shorter, a character never split.
    void encoded(QByteArrayView utf8)
    {
        qsizetype escaped = 0;
        for (const char c : utf8)
            escaped += (isQSafe(c) || c == ' ') ? 0 : 1;
        const bool base64 = (utf8.size() + 2) / 3 * 4 < utf8.size() + 2 * escaped;
        if (!base64 || !base64Words(utf8))
            qWords(utf8);
    }

private:
    void qWords(QByteArrayView utf8)
    {
        QByteArray payload;
        for (qsizetype i = 0; i < utf8.size();) {
            const QByteArrayView character = utf8.sliced(i, qMin(utf8Length(utf8[i]), utf8.size() - i));
            qsizetype width = 0;
            for (const char c : character)
                width += (isQSafe(c) || c == ' ') ? 1 : 3;
            if (!payload.isEmpty() && payload.size() + width > kWordPayload) {
                word("=?utf-8?Q?" + payload + "?=");
                payload.clear();
            }
            for (const char c : character) {
                if (isQSafe(c))
                    payload += c;
                else if (c == ' ')
                    payload += '_';
                else
                    appendHex(payload, c);
            }
            i += character.size();
        }
        if (!payload.isEmpty())
            word("=?utf-8?Q?" + payload + "?=");
    }

    // Every word but the last holds a multiple of three bytes, as some decoders (GMime) carry
    // base64 over from one word to the next. False when whole characters cannot be cut so.
    bool base64Words(QByteArrayView utf8)
    {
        QList<QByteArrayView> pieces;
        qsizetype start = 0;
        while (utf8.size() - start > kBase64Bytes) {
            qsizetype cut = 0;
            for (qsizetype i = start; i - start <= kBase64Bytes; i += utf8Length(utf8[i])) {
                if (i > start && (i - start) % 3 == 0)
                    cut = i;
            }
            if (cut == 0)
                return false;
            pieces.append(utf8.sliced(start, cut - start));
            start = cut;
        }
        pieces.append(utf8.sliced(start));
        for (const QByteArrayView piece : pieces)
            word("=?utf-8?B?" + piece.toByteArray().toBase64() + "?=");
        return true;
    }

    QByteArray &m_out;
    qsizetype m_column;
    qsizetype m_words = 0;
};

// A word a mail program would take as it is: ASCII that reads as no encoded-word, and short
// enough to fit a line.
bool isPlainWord(QByteArrayView word)
{
    return allOf(word, isPlainAscii) && !word.contains("=?") && word.size() <= kLongestWord;
}

// Unstructured text: plain words as they are, each run of other words as encoded-words (the
// blanks inside a run encoded with it, as blanks between encoded-words do not count).
void appendWords(FieldWriter &field, QByteArrayView utf8)
{
    qsizetype runStart = -1;
    qsizetype runEnd = 0;
    const auto endRun = [&] {
        if (runStart >= 0)
            field.encoded(utf8.sliced(runStart, runEnd - runStart));
        runStart = -1;
    };
    for (qsizetype start = 0; start <= utf8.size();) {
        qsizetype end = utf8.indexOf(' ', start);
        if (end < 0)
            end = utf8.size();
        const QByteArrayView word = utf8.sliced(start, end - start);
        if (!isPlainWord(word)) {
            runStart = runStart < 0 ? start : runStart;
            runEnd = end;
        } else if (!word.isEmpty()) {
            endRun();
            field.word(word);
        }
        start = end + 1;
    }
    endRun();
}

// A display name: atoms as they are, other ASCII as one quoted string, anything else encoded.
void appendPhrase(FieldWriter &field, QByteArrayView utf8)
{
    const bool ascii = allOf(utf8, [](char c) { return isPlainAscii(c) || c == ' '; });
    if (!ascii || utf8.contains("=?") || utf8.size() > kLongestWord) {
        field.encoded(utf8);
        return;
    }
    if (allOf(utf8, [](char c) { return isAtomText(c) || c == ' '; })) {
        appendWords(field, utf8);
        return;
    }
    QByteArray quoted = "\"";
    for (const char c : utf8) {
        if (c == '"' || c == '\\')
            quoted += '\\';
        quoted += c;
    }
    quoted += '"';
    appendWords(field, quoted); // folding at a blank inside quotes keeps the blank
}

enum class Transfer { SevenBit, QuotedPrintable, Base64 };

// One pass over the body: 7bit when its lines allow it, else whichever of quoted-printable and
// base64 comes out shorter.
Transfer transferFor(const QByteArray &body, QByteArrayView forbidden)
{
    qsizetype eightBit = 0;
    qsizetype longest = 0;
    qsizetype lineStart = 0;
    bool control = false;
    for (qsizetype i = 0; i < body.size(); ++i) {
        const auto c = uchar(body[i]);
        if (c == '\n') {
            longest = qMax(longest, i - lineStart);
            lineStart = i + 1;
        } else if (c >= 0x80) {
            ++eightBit;
        } else if (c == '\r' || c == 0) {
            control = true;
        }
    }
    longest = qMax(longest, body.size() - lineStart);
    const bool endsLine = body.isEmpty() || body.endsWith('\n');
    if (eightBit == 0 && !control && longest <= kMaxBodyLine && endsLine &&
        (forbidden.isEmpty() || !body.contains(forbidden)))
        return Transfer::SevenBit;
    return eightBit * 100 > body.size() * 17 ? Transfer::Base64 : Transfer::QuotedPrintable;
}

// A blank before a hard line break is written encoded, as mail programs strip a plain one.
void endQuotedLine(QByteArray &out, qsizetype &column)
{
    if (column > 0 && isBlank(out.back())) {
        const char blank = out.back();
        out.chop(1);
        if (column + 2 > kQuotedColumns)
            out += "=\n";
        appendHex(out, blank);
    }
    out += '\n';
    column = 0;
}

void appendQuotedPrintable(QByteArray &out, const QByteArray &body)
{
    qsizetype column = 0;
    for (const char c : body) {
        if (c == '\n') {
            endQuotedLine(out, column);
            continue;
        }
        const bool plain = (isPlainAscii(c) && c != '=') || isBlank(c);
        const qsizetype width = plain ? 1 : 3;
        if (column + width > kQuotedColumns) {
            out += "=\n";
            column = 0;
        }
        if (plain)
            out += c;
        else
            appendHex(out, c);
        column += width;
    }
    if (column > 0)
        out += "=\n"; // a soft break: the body gains no line break of its own
}

void appendBase64(QByteArray &out, const QByteArray &body)
{
    const QByteArray encoded = body.toBase64();
    for (qsizetype i = 0; i < encoded.size(); i += 76) {
        out += QByteArrayView(encoded).sliced(i, qMin<qsizetype>(76, encoded.size() - i));
        out += '\n';
    }
}
} // namespace

void MessageFormat::appendText(QByteArray &out, QByteArrayView name, QStringView value)
{
    if (value.isEmpty())
        return;
    FieldWriter field(out, name);
    appendWords(field, value.toUtf8());
}

void MessageFormat::appendMailbox(QByteArray &out, QByteArrayView name, QStringView phrase,
                                  QByteArrayView address)
{
    FieldWriter field(out, name);
    if (!phrase.isEmpty())
        appendPhrase(field, phrase.toUtf8());
    field.word('<' + address.toByteArray() + '>');
}

void MessageFormat::appendDate(QByteArray &out, QByteArrayView name, const QDateTime &when)
{
    static constexpr const char *kDays[] = {"Mon", "Tue", "Wed", "Thu", "Fri", "Sat", "Sun"};
    static constexpr const char *kMonths[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                              "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    const QDateTime utc = when.toUTC();
    const QDate day = utc.date();
    const QTime time = utc.time();
    char text[48];
    std::snprintf(text, sizeof text, "%s, %02d %s %04d %02d:%02d:%02d +0000", kDays[day.dayOfWeek() - 1],
                  day.day(), kMonths[day.month() - 1], day.year(), time.hour(), time.minute(), time.second());
    FieldWriter field(out, name);
    field.word(text);
}

void MessageFormat::appendTextPart(QByteArray &out, QByteArrayView subtype, const QByteArray &utf8,
                                   QByteArrayView forbidden)
{
    const Transfer transfer = transferFor(utf8, forbidden);
    out += "Content-Type: text/";
    out += subtype;
    out += "; charset=utf-8\nContent-Transfer-Encoding: ";
    out += transfer == Transfer::SevenBit ? "7bit"
           : transfer == Transfer::Base64 ? "base64"
                                          : "quoted-printable";
    out += "\n\n";
    if (transfer == Transfer::SevenBit)
        out += utf8;
    else if (transfer == Transfer::Base64)
        appendBase64(out, utf8);
    else
        appendQuotedPrintable(out, utf8);
}
