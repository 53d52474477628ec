#pragma once

#include <QString>

namespace quillon {

// Where the network page keeps its nine values, shared by ConfigConsumer (which writes them to
// its own "NetworkModule" section and mirrors them to the engine) and the engine (which fetches
// by them). Each key is the objectName of the control that edits it. Booleans are "True" or
// "False"; the defaults are what holds when nothing is stored.
namespace NetworkSettingKeys {

inline const QString kConsumer = QStringLiteral("ENGINE");
inline const QString kSection = QStringLiteral("NetworkModule");

inline const QString kUseProxy = QStringLiteral("chkUseProxyServer");
inline const QString kUseSystemProxy = QStringLiteral("optUseIEProxySettings");
inline const QString kSpecificProxy = QStringLiteral("txtSpecificProxyServer");
inline const QString kBypassForLocals = QStringLiteral("chkBypassForLocals");
inline const QString kUseCredentials = QStringLiteral("chkUseNetworkCredentials");
inline const QString kCurrentUserCredentials = QStringLiteral("optCurrentlyUsersCredentials");
inline const QString kUser = QStringLiteral("txtUsernameCredentials");
// A key that names a password: the engine keeps its value in the keyring.
inline const QString kPassword = QStringLiteral("txtPasswordCredentials");
inline const QString kDomain = QStringLiteral("txtDomainCredentials");

inline const QString kTrue = QStringLiteral("True");
inline const QString kFalse = QStringLiteral("False");

struct Default
{
    QString key;
    QString value;
};

// The nine keys in the page's order, each with its value when nothing is stored.
inline const Default kDefaults[9] = {
    {kUseProxy, kTrue},        {kUseSystemProxy, kTrue},  {kSpecificProxy, QString()},
    {kBypassForLocals, kTrue}, {kUseCredentials, kFalse}, {kCurrentUserCredentials, kTrue},
    {kUser, QString()},        {kPassword, QString()},    {kDomain, QString()},
};

} // namespace NetworkSettingKeys

} // namespace quillon
