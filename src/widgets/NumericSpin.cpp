#include "NumericSpin.h"

#include <QLineEdit>
#include <limits>

#include "Vb.h"

namespace prestkt {

NumericSpin::NumericSpin(QWidget* parent, const QString& formato) : QDoubleSpinBox(parent) {
  setRange(-1e12, 1e12);
  setAlignment(Qt::AlignRight | Qt::AlignVCenter);
  setKeyboardTracking(false);
  SetFormato(formato);
}

void NumericSpin::SetFormato(const QString& formato) {
  formato_ = formato;
  // As many decimals as the format shows; the digits of a code are no decimals.
  const int punto = formato.indexOf(QLatin1Char('.'));
  setDecimals(punto < 0 ? 0 : static_cast<int>(formato.size()) - punto - 1);
  setSingleStep(1);
  lineEdit()->setText(textFromValue(value()));
}

void NumericSpin::SetLocked(bool locked) {
  setReadOnly(locked);
  setButtonSymbols(locked ? QAbstractSpinBox::NoButtons : QAbstractSpinBox::UpDownArrows);
  setFocusPolicy(locked ? Qt::NoFocus : Qt::StrongFocus);
}

QString NumericSpin::textFromValue(double value) const { return Format(value, formato_); }

double NumericSpin::valueFromText(const QString& text) const {
  QString t = text.trimmed();
  // A code shown as "2025-00012" reads back as its digits.
  if (formato_.contains(QLatin1Char('-')) && !t.startsWith(QLatin1Char('-'))) t.remove(QLatin1Char('-'));
  if (t.isEmpty()) return 0;
  try {
    return CDbl(t);
  } catch (const VbError&) {
    return value();
  }
}

QValidator::State NumericSpin::validate(QString& input, int&) const {
  const QString t = input.trimmed();
  if (t.isEmpty() || t == QLatin1String("-")) return QValidator::Intermediate;
  for (const QChar c : t)
    if (!c.isDigit() && c != QLatin1Char(',') && c != QLatin1Char('.') && c != QLatin1Char('-'))
      return QValidator::Invalid;
  return QValidator::Acceptable;
}

}  // namespace prestkt
