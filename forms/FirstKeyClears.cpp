#include "FirstKeyClears.h"

#include <QKeyEvent>
#include <QLineEdit>
#include <QTimer>

FirstKeyClears::FirstKeyClears(QLineEdit *field) : QObject(field), m_field(field) {}

void FirstKeyClears::Install(QLineEdit *field)
{
    field->installEventFilter(new FirstKeyClears(field));
}

bool FirstKeyClears::eventFilter(QObject *watched, QEvent *event)
{
    switch (event->type()) {
    case QEvent::FocusIn:
        m_armed = true;
        // A click places the cursor after the focus arrives; select once it has.
        QTimer::singleShot(0, m_field, &QLineEdit::selectAll);
        break;
    case QEvent::FocusOut:
        m_armed = false;
        break;
    case QEvent::KeyPress: {
        const auto *key = static_cast<QKeyEvent *>(event);
        // Keys that only move or modify do not count as the first key.
        const bool edits = (!key->text().isEmpty() && key->text().at(0).isPrint()) ||
                           key->key() == Qt::Key_Backspace || key->key() == Qt::Key_Delete;
        if (m_armed && edits) {
            m_armed = false;
            m_field->clear();
        }
        break;
    }
    default:
        break;
    }
    return QObject::eventFilter(watched, event);
}
