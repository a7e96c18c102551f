#pragma once
// "Aggiunta riga da progetto" / "Modifica riga da progetto": a line of a host
// document (a supplier order, a delivery note) tied to a disposition. It
// writes only into the document's recordsets and tells the host by
// SendDataDoc; the tables are written when the host saves its document.
#include <QComboBox>
#include <QGroupBox>
#include <QLineEdit>
#include <QPushButton>

#include "ListView.h"
#include "NumericSpin.h"
#include "OCPrestKTClass.h"
#include "Recordset.h"
#include "Scheda.h"

namespace prestkt {

class frmGestOrdFornImm : public Scheda {
  Q_OBJECT
 public:
  explicit frmGestOrdFornImm(QWidget* parent = nullptr);
  ~frmGestOrdFornImm() override;

  // Set by the caller before the screen shows.
  int vMode = 2;    // 2 add a line, 1 edit one
  int vRigaD = 0;   // the line under edit; in add mode it receives the new number
  int vCCaus = 0;   // the line's reason
  RecordsetPtr rcsD, rcsFD, rcsFDD;
  bool ForDDT = false;
  int vTAnagD = 0;
  int vCAnagD = 0;

  // The disposition chosen (0: none) and the VAT code.
  int CProject = 0;
  int CDisp = 0;
  int CIva = 0;

  void Form_Load();
  void IniVideo();
  bool CaricaDati(int vCProject, int vCDisp);
  void CaricaListPrest(int cPrjDispTipo);
  void ShowDispAttive();
  void fDispAttive_Reload(int vCProject, int vCDisp);
  void fCalcPzVend_SetPzVend(double pzVend);
  bool Salva();
  void EseguiAzione(int azione);  // 0 close, 1 save and close on success, 2 choose the disposition
  void Command1_Click();

  QGroupBox* OCFrame2;
  QGroupBox* OCFrame3;
  QGroupBox* OCFrame4;
  QLineEdit* TBAnag;
  QLineEdit* TBDProject;
  QLineEdit* TBDDisp;
  NumericSpin* OCQtaOrd;
  NumericSpin* OCQta;
  NumericSpin* OCImporto;
  QLineEdit* TBDArt;
  QComboBox* CBCaus;
  QComboBox* CBIva;
  ListView* lvwPrest;
  QPushButton* Command1;
  OCPrestKTClassPtr OcxEventS;

 protected:
  void closeEvent(QCloseEvent* e) override;

 private:
  void CaricaCausali();
  void CaricaIva();
};

}  // namespace prestkt
