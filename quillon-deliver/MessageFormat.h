#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QDateTime>
#include <QStringView>

// The pieces of an RFC 5322 message written straight as text: header fields folded at blanks
// (RFC 5322), RFC 2047 encoded-words only for the words that need them, and text bodies in
// 7bit, quoted-printable or base64, whichever is valid and short for the text. Lines end in
// "\n"; every piece ends with a line break.
class MessageFormat
{
public:
    // "Name: text", the value unstructured text; nothing when the value is empty.
    static void appendText(QByteArray &out, QByteArrayView name, QStringView value);
    // "Name: phrase <address>", the phrase as a mail program shows it.
    static void appendMailbox(QByteArray &out, QByteArrayView name, QStringView phrase,
                              QByteArrayView address);
    // "Name: Wed, 01 May 2024 10:00:00 +0000", in UTC.
    static void appendDate(QByteArray &out, QByteArrayView name, const QDateTime &when);
    // A text part's fields, a blank line and its body, which decodes to utf8 exactly.
    // forbidden: text the written body must not contain (a boundary's delimiter line).
    static void appendTextPart(QByteArray &out, QByteArrayView subtype, const QByteArray &utf8,
                               QByteArrayView forbidden = {});
};
