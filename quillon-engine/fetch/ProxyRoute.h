#pragma once

#include <QString>

namespace quillon {

// How one request reaches its server: directly, or through a proxy with a login, and why.
struct ProxyRoute
{
    enum class Login {
        None,
        Password,  // user (DOMAIN\user) and password, in whatever scheme the proxy offers
        Negotiate, // the logged-in user's own credentials (Kerberos / SPNEGO)
    };

    QString proxy; // "scheme://host:port"; empty: directly
    QString reason;
    Login login = Login::None;
    QString user;
    QString password;

    [[nodiscard]] bool direct() const { return proxy.isEmpty(); }
};

} // namespace quillon
