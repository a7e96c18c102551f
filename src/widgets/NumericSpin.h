#pragma once
// The numeric field of all screens: a spinner whose display follows a format
// of the system ("0000-00000", "#,##0.00", "0") and whose value is a double.
#include <QDoubleSpinBox>
#include <QString>

namespace prestkt {

class NumericSpin : public QDoubleSpinBox {
  Q_OBJECT
 public:
  explicit NumericSpin(QWidget* parent = nullptr, const QString& formato = QStringLiteral("0"));

  void SetFormato(const QString& formato);
  const QString& Formato() const { return formato_; }
  double Value() const { return value(); }
  void SetValue(double v) { setValue(v); }
  // Locked: shows only, as the codes of the cards.
  void SetLocked(bool locked);

  QString textFromValue(double value) const override;
  double valueFromText(const QString& text) const override;
  QValidator::State validate(QString& input, int& pos) const override;

 private:
  static constexpr int kDecimali = 15;
  QString formato_;
};

}  // namespace prestkt
