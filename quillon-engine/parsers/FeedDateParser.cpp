#include "FeedDateParser.h"

#include <QVarLengthArray>

#include <algorithm>
#include <optional>

namespace quillon {

namespace {

struct NamedZone
{
    QStringView name; // lengths known at compile time: no scan per comparison
    int minutes;
};

constexpr NamedZone kZones[] = {
    {u"UT", 0},         {u"UTC", 0},        {u"GMT", 0},       {u"Z", 0},         {u"EST", -5 * 60},
    {u"EDT", -4 * 60},  {u"CST", -6 * 60},  {u"CDT", -5 * 60}, {u"MST", -7 * 60}, {u"MDT", -6 * 60},
    {u"PST", -8 * 60},  {u"PDT", -7 * 60},  {u"AST", -4 * 60}, {u"ADT", -3 * 60}, {u"HST", -10 * 60},
    {u"AKST", -9 * 60}, {u"AKDT", -8 * 60}, {u"BST", 60},      {u"CET", 60},      {u"CEST", 120},
    {u"MET", 60},       {u"MEST", 120},     {u"EET", 120},     {u"EEST", 180},    {u"JST", 9 * 60},
    {u"IST", 330},      {u"AEST", 600},     {u"AEDT", 660},
};

constexpr QStringView kMonths[] = {u"jan", u"feb", u"mar", u"apr", u"may", u"jun",
                                   u"jul", u"aug", u"sep", u"oct", u"nov", u"dec"};

// Whether token, in any case, is `upper`, which is upper-case ASCII. Every date's weekday is
// tried against the zone names: Qt's comparison without case cost more than the rest of a date.
bool equalsAsciiUpper(QStringView token, QStringView upper)
{
    if (token.size() != upper.size())
        return false;
    for (qsizetype i = 0; i < token.size(); ++i) {
        const char16_t c = token[i].unicode();
        if (c >= 0x80) // folds such as U+017F to 's' are Qt's to know
            return token.compare(upper, Qt::CaseInsensitive) == 0;
        if ((c >= u'a' && c <= u'z' ? c - 0x20 : c) != upper[i].unicode())
            return false;
    }
    return true;
}

int monthFromName(QStringView token)
{
    if (token.size() < 3 || token.size() > 9)
        return 0;
    // ASCII letters compared by hand, without regard to case (| 0x20 lowers them).
    const auto lowered = [&token](int k) { return char16_t(token[k].unicode() | 0x20); };
    for (int m = 0; m < 12; ++m) {
        if (lowered(0) == kMonths[m][0] && lowered(1) == kMonths[m][1] && lowered(2) == kMonths[m][2])
            return m + 1;
    }
    return 0;
}

// "+0530", "-05:00", "+05", a named zone, or a military letter (RFC 822 got their signs
// backwards, so, as RFC 2822 advises, they count as UTC).
std::optional<int> zoneMinutes(QStringView token)
{
    if (token.size() >= 2 && (token[0] == u'+' || token[0] == u'-')) {
        QString digits = token.mid(1).toString().remove(u':');
        bool ok = false;
        const int value = digits.toInt(&ok);
        if (!ok || (digits.size() != 4 && digits.size() != 2))
            return std::nullopt;
        const int minutes = digits.size() == 4 ? (value / 100) * 60 + value % 100 : value * 60;
        return token[0] == u'-' ? -minutes : minutes;
    }
    if (token.size() > 4)
        return std::nullopt;
    for (const NamedZone &zone : kZones) {
        if (equalsAsciiUpper(token, zone.name))
            return zone.minutes;
    }
    if (token.size() == 1 && token[0].isLetter())
        return 0;
    return std::nullopt;
}

QDateTime utcFrom(QDate date, QTime time, int zoneOffsetMinutes)
{
    if (!date.isValid() || !time.isValid())
        return {};
    return QDateTime(date, time, Qt::UTC).addSecs(-qint64(zoneOffsetMinutes) * 60);
}

// The value of a token of at most 9 ASCII digits, else -1.
int digitsValue(QStringView token)
{
    if (token.isEmpty() || token.size() > 9)
        return -1;
    int value = 0;
    for (const QChar c : token) {
        if (c < u'0' || c > u'9')
            return -1;
        value = value * 10 + (c.unicode() - u'0');
    }
    return value;
}

int expandYear(int year, qsizetype digits)
{
    if (digits == 2)
        return year < 50 ? 2000 + year : 1900 + year;
    return year;
}

// "hh:mm", "hh:mm:ss" or "hh:mm:ss.fff", read by hand: this runs for every article.
std::optional<QTime> timeFromToken(QStringView token)
{
    int parts[3] = {0, 0, 0};
    int count = 0;
    qsizetype i = 0;
    for (;;) {
        const qsizetype start = i;
        while (i < token.size() && i - start < 3 && token[i] >= u'0' && token[i] <= u'9')
            parts[count] = parts[count] * 10 + (token[i++].unicode() - u'0');
        if (i == start || i - start > 2)
            return std::nullopt;
        ++count;
        if (i == token.size())
            break;
        if (count == 3 && token[i] == u'.') { // fractions of a second count for nothing
            for (++i; i < token.size() && token[i] >= u'0' && token[i] <= u'9';)
                ++i;
            if (i != token.size())
                return std::nullopt;
            break;
        }
        if (count == 3 || token[i] != u':')
            return std::nullopt;
        ++i;
    }
    if (count < 2)
        return std::nullopt;
    const auto [h, m, s] = parts;
    if (h == 24 && m == 0 && s == 0)
        return QTime(23, 59, 59);
    QTime time(h, m, s);
    return time.isValid() ? std::optional<QTime>(time) : std::nullopt;
}

// Dates have about six tokens: kept off the heap.
QVarLengthArray<QStringView, 8> tokensOf(QStringView text)
{
    QVarLengthArray<QStringView, 8> tokens;
    qsizetype start = -1;
    for (qsizetype i = 0; i <= text.size(); ++i) {
        const bool separator = i == text.size() || text[i].isSpace() || text[i] == u',';
        if (separator && start >= 0) {
            tokens.append(text.mid(start, i - start));
            start = -1;
        } else if (!separator && start < 0) {
            start = i;
        }
    }
    return tokens;
}

// A reading position in an ISO date.
struct Cursor
{
    QStringView s;
    qsizetype i = 0;

    [[nodiscard]] bool atEnd() const { return i >= s.size(); }
    [[nodiscard]] bool peekDigit() const { return !atEnd() && s[i] >= u'0' && s[i] <= u'9'; }
    [[nodiscard]] QStringView rest() const { return s.mid(i); }
    bool accept(char16_t c) { return !atEnd() && s[i] == c ? (++i, true) : false; }
    bool acceptAny(QStringView set) { return !atEnd() && set.contains(s[i]) ? (++i, true) : false; }
    void skipSpaces()
    {
        while (!atEnd() && s[i].isSpace())
            ++i;
    }
    void skipDigits()
    {
        while (peekDigit())
            ++i;
    }
    bool number(int digits, int &out)
    {
        out = 0;
        for (int d = 0; d < digits; ++d) {
            if (!peekDigit())
                return false;
            out = out * 10 + (s[i++].unicode() - u'0');
        }
        return true;
    }
};

// "Tue, 14 Nov 2023 22:13:20 GMT" or "... +0100", the form nearly every feed writes, read at
// fixed places in a tenth of the general reader's time. Empty when the text is in any other
// form, or when the general reader must judge it (a day or time out of range).
std::optional<QDateTime> canonicalRfc822(QStringView s)
{
    static constexpr QStringView kWeekdays[] = {u"mon", u"tue", u"wed", u"thu", u"fri", u"sat", u"sun"};
    static constexpr QStringView kShape = u"___, __ ___ ____ __:__:__ "; // '_' stands for anything
    if (s.size() != 29 && s.size() != 31)
        return std::nullopt;
    for (qsizetype i = 0; i < kShape.size(); ++i) {
        if (kShape[i] != u'_' && s[i] != kShape[i])
            return std::nullopt;
    }
    const auto number = [s](qsizetype at, qsizetype width) { return digitsValue(s.mid(at, width)); };
    const auto lowered = [s](qsizetype k) { return char16_t(s[k].unicode() | 0x20); };
    const bool weekday =
        std::any_of(std::begin(kWeekdays), std::end(kWeekdays), [&lowered](QStringView name) {
            return lowered(0) == name[0] && lowered(1) == name[1] && lowered(2) == name[2];
        });
    const int day = number(5, 2), month = monthFromName(s.mid(8, 3)), year = number(12, 4);
    const int hour = number(17, 2), minute = number(20, 2), second = number(23, 2);
    int zone = 0;
    if (s.size() == 31) {
        const int offset = number(27, 4);
        if ((s[26] != u'+' && s[26] != u'-') || offset < 0)
            return std::nullopt;
        zone = (offset / 100) * 60 + offset % 100;
        zone = s[26] == u'-' ? -zone : zone;
    } else if (s.mid(26) != u"GMT" && s.mid(26) != u"UTC") {
        return std::nullopt;
    }
    if (!weekday || day < 1 || day > 31 || month == 0 || year < 0 || hour < 0 || minute < 0 || second < 0)
        return std::nullopt;
    const QDateTime utc = utcFrom(QDate(year, month, day), QTime(hour, minute, second), zone);
    return utc.isValid() ? std::optional<QDateTime>(utc) : std::nullopt;
}

qsizetype zoneSignIndex(QStringView token)
{
    for (qsizetype i = 1; i < token.size(); ++i) {
        if (token[i] == u'+' || token[i] == u'-')
            return i;
    }
    return -1;
}

} // namespace

QDateTime FeedDateParser::parse(QStringView text)
{
    const QStringView trimmed = text.trimmed();
    if (trimmed.isEmpty())
        return {};
    if (trimmed[0].isDigit()) {
        const QDateTime iso = parseIso8601(trimmed);
        if (iso.isValid())
            return iso;
    }
    return parseRfc822(trimmed);
}

// Tokens may come in any order the common variants use ("Sat, 07 Sep 2002 00:00:01 GMT",
// "Sep 7 2002 00:00 EST", "Sat Sep 07 00:00:01 +0000 2002").
QDateTime FeedDateParser::parseRfc822(QStringView text)
{
    if (const auto canonical = canonicalRfc822(text))
        return *canonical;
    int day = 0, month = 0, year = -1, zone = 0;
    QTime time(0, 0);
    for (QStringView token : tokensOf(text)) {
        if (token.endsWith(u'.'))
            token.chop(1);
        if (token.contains(u':') && token[0].isDigit()) {
            // "00:00:01+02:00" carries its zone with it
            const qsizetype sign = zoneSignIndex(token);
            const auto parsed = timeFromToken(sign > 0 ? token.left(sign) : token);
            if (!parsed)
                return {};
            time = *parsed;
            if (sign > 0) {
                const auto z = zoneMinutes(token.mid(sign));
                zone = z.value_or(0);
            }
        } else if (token[0].isDigit()) {
            const int value = digitsValue(token);
            if (value < 0)
                return {};
            if (day == 0 && token.size() <= 2 && value >= 1 && value <= 31)
                day = value;
            else if (year < 0)
                year = expandYear(value, token.size());
            else
                return {};
        } else if (const int m = monthFromName(token); m != 0 && month == 0) {
            month = m;
        } else if (const auto z = zoneMinutes(token)) {
            zone = *z;
        } else if (token.startsWith(u'(')) {
            break; // a trailing comment such as "(UTC)"
        }
        // anything else (a weekday name) says nothing we need
    }
    if (day == 0 || month == 0 || year < 0)
        return {};
    return utcFrom(QDate(year, month, day), time, zone);
}

// YYYY[-MM[-DD[(T| )hh:mm[:ss[.fff]][zone]]]], dashes and colons optional (basic format).
QDateTime FeedDateParser::parseIso8601(QStringView text)
{
    Cursor c{text.trimmed()};
    int year = 0, month = 1, day = 1, hour = 0, minute = 0, second = 0;
    if (!c.number(4, year))
        return {};
    if (c.accept(u'-') || !c.atEnd()) {
        if (!c.number(2, month))
            return {};
        if (c.accept(u'-') || (!c.atEnd() && c.peekDigit())) {
            if (!c.number(2, day))
                return {};
        }
    }
    int zone = 0;
    if (!c.atEnd()) {
        if (!c.acceptAny(u"Tt "))
            return {};
        c.skipSpaces();
        if (!c.number(2, hour))
            return {};
        c.accept(u':');
        if (!c.number(2, minute))
            return {};
        if (c.accept(u':') || c.peekDigit()) {
            if (!c.number(2, second))
                return {};
            if (c.acceptAny(u".,"))
                c.skipDigits();
        }
        c.skipSpaces();
        if (!c.atEnd()) {
            const auto z = zoneMinutes(c.rest());
            if (!z)
                return {};
            zone = *z;
        }
    }
    QTime time(hour, minute, second);
    if (hour == 24 && minute == 0 && second == 0)
        time = QTime(23, 59, 59);
    return utcFrom(QDate(year, month, day), time, zone);
}

} // namespace quillon
