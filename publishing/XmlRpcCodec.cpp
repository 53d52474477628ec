#include "XmlRpcCodec.h"

#include <QDateTime>

#include <xmlrpc-c/base.hpp>
#include <xmlrpc-c/xml.hpp>

#include <map>
#include <string>
#include <vector>

namespace XmlRpcCodec {

namespace {
std::string Utf8(const QString &text)
{
    return text.toStdString();
}

xmlrpc_c::value ToRpc(const QVariant &value)
{
    switch (value.typeId()) {
    case QMetaType::Bool:
        return xmlrpc_c::value_boolean(value.toBool());
    case QMetaType::Int:
    case QMetaType::UInt:
        return xmlrpc_c::value_int(value.toInt());
    case QMetaType::Double:
        return xmlrpc_c::value_double(value.toDouble());
    case QMetaType::QDateTime:
        return xmlrpc_c::value_datetime(time_t(value.toDateTime().toSecsSinceEpoch()));
    case QMetaType::QByteArray: {
        const QByteArray bytes = value.toByteArray();
        return xmlrpc_c::value_bytestring(std::vector<unsigned char>(bytes.cbegin(), bytes.cend()));
    }
    case QMetaType::QVariantList: {
        std::vector<xmlrpc_c::value> items;
        for (const QVariant &item : value.toList())
            items.push_back(ToRpc(item));
        return xmlrpc_c::value_array(items);
    }
    case QMetaType::QVariantMap: {
        std::map<std::string, xmlrpc_c::value> members;
        const QVariantMap map = value.toMap();
        for (auto it = map.cbegin(); it != map.cend(); ++it)
            members.emplace(Utf8(it.key()), ToRpc(it.value()));
        return xmlrpc_c::value_struct(members);
    }
    default:
        return xmlrpc_c::value_string(Utf8(value.toString()));
    }
}

QVariant FromRpc(const xmlrpc_c::value &value)
{
    switch (value.type()) {
    case xmlrpc_c::value::TYPE_INT:
        return int(xmlrpc_c::value_int(value));
    case xmlrpc_c::value::TYPE_I8:
        return qint64(xmlrpc_c::value_i8(value));
    case xmlrpc_c::value::TYPE_BOOLEAN:
        return bool(xmlrpc_c::value_boolean(value));
    case xmlrpc_c::value::TYPE_DOUBLE:
        return double(xmlrpc_c::value_double(value));
    case xmlrpc_c::value::TYPE_STRING:
        return QString::fromStdString(xmlrpc_c::value_string(value).cvalue());
    case xmlrpc_c::value::TYPE_DATETIME:
        return QDateTime::fromSecsSinceEpoch(xmlrpc_c::value_datetime(value).cvalue(), Qt::UTC);
    case xmlrpc_c::value::TYPE_BYTESTRING: {
        const std::vector<unsigned char> bytes = xmlrpc_c::value_bytestring(value).vectorUcharValue();
        return QByteArray(reinterpret_cast<const char *>(bytes.data()), qsizetype(bytes.size()));
    }
    case xmlrpc_c::value::TYPE_ARRAY: {
        QVariantList items;
        for (const xmlrpc_c::value &item : xmlrpc_c::value_array(value).vectorValueValue())
            items.append(FromRpc(item));
        return items;
    }
    case xmlrpc_c::value::TYPE_STRUCT: {
        QVariantMap members;
        for (const auto &[key, member] : xmlrpc_c::value_struct(value).cvalue())
            members.insert(QString::fromStdString(key), FromRpc(member));
        return members;
    }
    default:
        return {};
    }
}
} // namespace

QByteArray EncodeCall(const QString &method, const QVariantList &params)
{
    xmlrpc_c::paramList list;
    for (const QVariant &param : params)
        list.add(ToRpc(param));
    std::string xml;
    xmlrpc_c::xml::generateCall(Utf8(method), list, &xml);
    return QByteArray::fromStdString(xml);
}

Answer DecodeAnswer(const QByteArray &xml)
{
    Answer answer;
    try {
        xmlrpc_c::rpcOutcome outcome;
        // Some servers send blanks before the XML declaration, which the parser refuses.
        xmlrpc_c::xml::parseResponse(xml.trimmed().toStdString(), &outcome);
        if (outcome.succeeded()) {
            answer.ok = true;
            answer.value = FromRpc(outcome.getResult());
        } else {
            answer.faultCode = outcome.getFault().getCode();
            answer.error = QString::fromStdString(outcome.getFault().getDescription());
        }
    } catch (const std::exception &e) {
        answer.error = QStringLiteral("The answer is not XML-RPC: %1").arg(QString::fromStdString(e.what()));
    }
    return answer;
}

} // namespace XmlRpcCodec
