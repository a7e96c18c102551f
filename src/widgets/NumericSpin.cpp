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
  // The value is a Double whatever the format shows: the spinner keeps all
  // the decimals a double can tell, and only the text follows the format.
  setDecimals(kDecimali);
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
  // The text shown for the value stands for the value itself, which the
  // format may have rounded on the way to the screen.
  if (text == textFromValue(value())) return value();
  QString t = text.trimmed();
  // A code shown as "2025-00012" reads back as its digits.
  if (formato_.contains(QLatin1Char('-')) && !t.startsWith(QLatin1Char('-'))) t.remove(QLatin1Char('-'));
  // A percent format shows a fraction as its hundredths, and reads them back.
  const bool percento = formato_.contains(QLatin1Char('%'));
  if (percento) t.remove(QLatin1Char('%'));
  if (t.trimmed().isEmpty()) return 0;
  try {
    return percento ? CDbl(t) / 100 : CDbl(t);
  } catch (const VbError&) {
    return value();
  }
}

QValidator::State NumericSpin::validate(QString& input, int&) const {
  const QString t = input.trimmed();
  if (t.isEmpty() || t == QLatin1String("-")) return QValidator::Intermediate;
  for (const QChar c : t)
    if (!c.isDigit() && c != QLatin1Char(',') && c != QLatin1Char('.') && c != QLatin1Char('-') &&
        c != QLatin1Char('%'))
      return QValidator::Invalid;
  return QValidator::Acceptable;
}

}  // namespace prestkt
