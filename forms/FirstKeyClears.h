#pragma once

#include <QObject>

class QLineEdit;

// A masked field that shows a stored secret: the focus selects all of it, and the first key
// typed after the focus arrived empties the field before it takes effect, so a new secret is
// never appended to the old one. Leaving the field arms it again.
class FirstKeyClears : public QObject
{
    Q_OBJECT
public:
    // Watches the field for as long as it lives.
    static void Install(QLineEdit *field);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    explicit FirstKeyClears(QLineEdit *field);

    QLineEdit *m_field;
    bool m_armed = false;
};
