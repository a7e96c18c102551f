#pragma once
// "Impostazioni": the four price settings of the company, kept in the section
// IMPOSTAZIONI of Vorn.def. Opened by ShowSettings and by the calculator.
#include <QDialog>
#include <QGroupBox>
#include <QPushButton>

#include "NumericSpin.h"

namespace prestkt {

class frmSettings : public QDialog {
  Q_OBJECT
 public:
  explicit frmSettings(QWidget* parent = nullptr);

  // Reads the four keys; on an empty configuration this screen's own fallback.
  void Form_Load();
  bool DaSalvare() const { return daSalvare_; }
  void SetDaSalvare(bool v);
  void OKButton_Click();  // writes the four keys and unloads

  QGroupBox* OCFrame1;
  NumericSpin* OCPercRicLavExt;
  NumericSpin* OCPercRicMin;
  NumericSpin* OCCoeffArrot;
  NumericSpin* OCCoeffArrotRange;
  QPushButton* OKButton;
  QPushButton* CancelButton;

 protected:
  void closeEvent(QCloseEvent* e) override;
  void reject() override;

 private:
  bool daSalvare_ = false;
  bool caricato_ = false;
  bool salvata_ = false;  // the save has unloaded the screen: no question follows
};

}  // namespace prestkt
