#pragma once
// "Info fornitura": one line of external work of a disposition, read only: the
// supplier order line, the service kinds it asks for and the deliveries that
// answered it.
#include <QDateEdit>
#include <QGroupBox>
#include <QLineEdit>
#include <QTabWidget>

#include "ListView.h"
#include "NumericSpin.h"
#include "Scheda.h"

namespace prestkt {

class frmDispInfo : public Scheda {
  Q_OBJECT
 public:
  explicit frmDispInfo(QWidget* parent = nullptr);

  // Set by the disposition card: the supplier order line and its place in the disposition.
  int NDoc = 0;
  int Riga = 0;
  int RigaD = 0;
  int CDisp = 0;

  void Form_Load();
  void CaricaTestata();
  void CaricaPrest();
  void CaricaForn();
  void SSTab1_Click();

  QGroupBox* OCFrame1;
  QLineEdit* TBNOrdF;
  QLineEdit* TBRiga;
  QDateEdit* DTOrd;
  QLineEdit* TBAnag;
  QDateEdit* DTCons;
  QLineEdit* TBQtaOrd;
  NumericSpin* OCCosto;
  QTabWidget* SSTab1;
  ListView* lvwPrest;
  ListView* lvwForn;
  QMenu* mnuF;
  QAction* mnuFE;
};

}  // namespace prestkt
