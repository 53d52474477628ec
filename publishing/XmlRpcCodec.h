#pragma once

#include <QByteArray>
#include <QString>
#include <QVariant>

// The XML of XML-RPC calls and answers, through xmlrpc-c's codec; the transport is ours. Values
// are Qt's: QString, int, bool, double, QDateTime, QByteArray, QVariantList and QVariantMap.
namespace XmlRpcCodec {

struct Answer
{
    bool ok = false;
    QVariant value;
    // A fault's code and text as the server gave them, or why the answer could not be read.
    int faultCode = 0;
    QString error;
};

[[nodiscard]] QByteArray EncodeCall(const QString &method, const QVariantList &params);
[[nodiscard]] Answer DecodeAnswer(const QByteArray &xml);

} // namespace XmlRpcCodec
