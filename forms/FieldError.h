#pragma once

#include <QString>

#include <stdexcept>

// A settings field that does not hold what the apply needs; message() is shown to the user.
class FieldError : public std::runtime_error
{
public:
    explicit FieldError(const QString &message)
        : std::runtime_error(message.toStdString()), m_message(message)
    {
    }
    [[nodiscard]] const QString &message() const { return m_message; }

private:
    QString m_message;
};
