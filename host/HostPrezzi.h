#pragma once
// The prices of a model's dispositions, as the host asks them of the
// component: the proposed unit price (CalcDatiDisp, no screen) and the price
// calculator (EditDisp), whose confirmed price comes back through the
// component's GetDataForFattDiff and is shown here. Like the registers, the
// dialog shows itself and returns at once.
#include <QDialog>

#include "Database.h"

class QLabel;
class QPushButton;
class QTreeWidget;

namespace prestkt {
class OCPrestKT;
}

namespace vorn {

class PrezziDisposizioniDialog : public QDialog {
  Q_OBJECT
 public:
  PrezziDisposizioniDialog(prestkt::Database& db, prestkt::OCPrestKT* ctl, QWidget* parent = nullptr);

  // Shows the dispositions of the model; false (after telling the user) when it can't be read.
  bool Apri(int cProject);
  int CProject() const { return cProject_; }
  // The disposition of the selected row; 0 with none.
  int CDispSelezionata() const;

  // The proposed price of the selected disposition, shown in the dialog.
  void PrezzoProposto();
  // Opens the price calculator on the selected disposition.
  void CalcoloTariffa();

  // Set while the calculator opened from here is on screen: the price the
  // component sends back in that time is this dialog's.
  bool InAttesa() const { return cDispInCalcolo_ != 0; }
  // The disposition in the calculator, as "2024-00012/001".
  QString Riferimento() const;
  // The price confirmed in the calculator.
  void Ricevi(double prezzo);

 private:
  void Carica();
  void AggiornaPulsanti();

  prestkt::Database& db_;
  prestkt::OCPrestKT* ctl_;
  int cProject_ = 0;
  int cDispInCalcolo_ = 0;
  QLabel* lblModello_;
  QTreeWidget* lista_;
  QLabel* lblPrezzoProposto_;
  QLabel* lblPrezzoConfermato_;
  QPushButton* btnPrezzoProposto_;
  QPushButton* btnCalcoloTariffa_;
  QPushButton* btnChiudi_;
};

}  // namespace vorn
