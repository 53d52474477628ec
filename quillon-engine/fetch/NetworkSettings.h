#pragma once

#include <QString>

#include <functional>
#include <optional>

namespace quillon {

// What the network page asks of every web request: which proxy, whether local addresses skip
// it, and how to log on to it. The defaults are those of a page never saved.
struct NetworkSettings
{
    bool useProxy = true;
    bool systemProxy = true; // else specificProxy
    QString specificProxy;   // "host:port" or a URL
    bool bypassForLocals = true;
    bool useCredentials = false;
    bool currentUserCredentials = true; // else user, password and domain
    QString user;
    QString password;
    QString domain;

    // Reads the page's stored texts; lookup answers a key's text, or nothing when unset.
    using Lookup = std::function<std::optional<QString>(const QString &key)>;
    [[nodiscard]] static NetworkSettings read(const Lookup &lookup);
    // The proxy login as curl takes it: "DOMAIN\user" when a domain is given.
    [[nodiscard]] QString proxyUser() const;
};

} // namespace quillon
