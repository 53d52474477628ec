#pragma once

#include <QString>

#include <stdexcept>

namespace quillon {

// Raised by a failing engine call in its caller, on either side of the link.
class EngineError : public std::runtime_error
{
public:
    explicit EngineError(const QString &message)
        : std::runtime_error(message.toStdString()), m_message(message)
    {
    }
    [[nodiscard]] const QString &message() const { return m_message; }

private:
    QString m_message;
};

} // namespace quillon
