#pragma once

#include <QString>

// What the desktop asked the opener to open, read from one command-line argument: a feed
// link ("feed:https://host/x", "feed://host/x", "feeds://host/x"), a web address, or a local
// feed or OPML file (a path or a file: URL).
class OpenTarget
{
public:
    enum class Kind { Feed, Opml, Invalid };

    [[nodiscard]] static OpenTarget fromArgument(const QString &argument);

    [[nodiscard]] Kind kind() const { return m_kind; }
    // The feed's address, or the OPML file's absolute path.
    [[nodiscard]] QString address() const { return m_address; }
    [[nodiscard]] QString error() const { return m_error; }

private:
    OpenTarget(Kind kind, QString address, QString error = QString())
        : m_kind(kind), m_address(std::move(address)), m_error(std::move(error))
    {
    }
    [[nodiscard]] static OpenTarget fromFeedLink(const QString &link);
    [[nodiscard]] static OpenTarget fromFile(const QString &path);

    Kind m_kind;
    QString m_address;
    QString m_error;
};
