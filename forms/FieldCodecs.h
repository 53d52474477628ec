#pragma once

#include "FieldBinding.h"

class QWidget;

// Moving one field's value between its stored text and the page's controls.
namespace FieldCodecs {

// Shows the stored text; a text the codec cannot show shows the binding's default.
void Show(QWidget &page, const FieldBinding &field, const QString &stored);
// The text to store; throws FieldError when the control does not hold a valid value.
[[nodiscard]] QString Take(const QWidget &page, const FieldBinding &field);
// Every widget whose change is a change of the field.
[[nodiscard]] QList<QWidget *> Widgets(QWidget &page, const FieldBinding &field);

} // namespace FieldCodecs
