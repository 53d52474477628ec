#pragma once

#include "FieldBinding.h"

#include <QList>

class QWidget;

// A page's fields, declared once: loading reads each store once and shows every field;
// storing takes every field first, so a field that does not hold a valid value stops the
// apply before anything is written, then writes each store once.
class FieldTable
{
public:
    FieldTable() = default;
    explicit FieldTable(QList<FieldBinding> fields) : m_fields(std::move(fields)) {}

    [[nodiscard]] const QList<FieldBinding> &Fields() const { return m_fields; }
    [[nodiscard]] const FieldBinding *Find(const QString &control) const;

    // May throw quillon::EngineError; fields shown before it keep their values.
    void Load(QWidget &page) const;
    // Throws FieldError (nothing written) or quillon::EngineError.
    void Store(const QWidget &page) const;

private:
    QList<FieldBinding> m_fields;
};
