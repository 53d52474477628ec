#pragma once

#include <QByteArray>
#include <QString>

#include <functional>

namespace quillon {

// A place outside the database that keeps one entry of secret bytes per key: the desktop's
// keyring where one runs. The engine works without one (its database is private to the user).
class SecretKeyring
{
public:
    using Written = std::function<void(bool ok, const QString &error)>;

    virtual ~SecretKeyring() = default;

    // Blocks until the entry is read, without running the caller's event loop. An entry that
    // does not exist is read as empty; false with the reason when the keyring cannot answer.
    virtual bool read(const QString &key, QByteArray *data, QString *error) = 0;
    // Replaces the entry; done is called later, from the caller's event loop.
    virtual void write(const QString &key, const QByteArray &data, Written done) = 0;
};

} // namespace quillon
