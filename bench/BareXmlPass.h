#pragma once

// The floor under reading a feed: expat over the document as the engine's reader sets it up
// (UTF-8, namespaces, prefixes kept), with handlers that only count the elements; and the same
// bare pass with QXmlStreamReader, which the engine read with before, for comparison.

#include <QByteArray>
#include <QXmlStreamReader>

#include <expat.h>

inline qint64 bareXmlPass(const QByteArray &document)
{
    qint64 elements = 0;
    XML_Parser parser = XML_ParserCreateNS("UTF-8", '\x01');
    XML_SetReturnNSTriplet(parser, 1);
    XML_SetUserData(parser, &elements);
    XML_SetElementHandler(
        parser, [](void *count, const char *, const char **) { ++*static_cast<qint64 *>(count); },
        [](void *, const char *) {});
    XML_SetCharacterDataHandler(parser, [](void *, const char *, int) {});
    XML_Parse(parser, document.constData(), int(document.size()), XML_TRUE);
    XML_ParserFree(parser);
    return elements;
}

// Tokens of a QXmlStreamReader pass, readNext to the end, nothing kept.
inline qint64 bareQtPass(const QByteArray &document)
{
    qint64 tokens = 0;
    QXmlStreamReader reader(document);
    for (; !reader.atEnd(); ++tokens)
        reader.readNext();
    return tokens;
}
