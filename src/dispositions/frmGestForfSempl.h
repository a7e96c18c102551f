#pragma once
// "Scheda forfait semplificata": the lean disposition of a model whose type is
// handled as a simplified forfait. It has a description, a date and a list of
// start and stop recordings; no type, quantity or price.
#include <QCheckBox>
#include <QDateEdit>
#include <QGroupBox>
#include <QLineEdit>

#include "ListView.h"
#include "NumericSpin.h"
#include "Recordset.h"
#include "Scheda.h"

namespace prestkt {

class frmGestForfSempl : public Scheda {
  Q_OBJECT
 public:
  explicit frmGestForfSempl(QWidget* parent = nullptr);

  // Set by the caller before Form_Load.
  int Azione = 2;  // 2 new, 1 existing; turns to 1 at the first save
  int CProject = 0;
  int CDisp = 0;
  QString RagSoc1;   // shown only
  QString DProject;  // shown only

  // The card's copy of the recordings of the disposition, from gRcsAct.
  RecordsetPtr rcsAct;

  // Something to save: enables the save button and the menu entry.
  bool DaSalvare() const { return daSalvare_; }
  void SetDaSalvare(bool v);

  void Form_Load();
  bool Salva();
  void SalvaDisp();
  void CaricaListPrest();
  void AddPrest();
  void EditPrest();
  void DelPrest();
  void fGestForfSemplImm_Reload(int cAttivita);
  void EseguiComando(int bottone);  // the toolbar's index: 1 close, 3 save, 5 add, 6 change, 7 delete

  // Controls, named as the system names them.
  QGroupBox* OCFrame2;
  QLineEdit* TBAnag;
  QLineEdit* TBDProject;
  NumericSpin* NumericSpin1;
  QGroupBox* OCFrame1;
  QDateEdit* DTPicker1;
  QLineEdit* TBDDisp;
  QGroupBox* OCFrame9;
  QCheckBox* chkClosed;
  QDateEdit* DTEnd;
  QGroupBox* OCFrame10;  // hidden and disabled: nothing reads it
  QCheckBox* chkFatt;
  NumericSpin* OCNFatt;
  ListView* lvwPrest;
  QMenu* mnuF;
  QAction* mnuFS;
  QAction* mnuFE;
  QMenu* mnuMod;
  QAction* mnuAdd;
  QAction* mnuEdit;
  QAction* mnuDel;

 signals:
  void Reload(int& cDisp);

 protected:
  void closeEvent(QCloseEvent* e) override;
  void reject() override;

 private:
  void BuildUi();
  void CopiaAttivita();  // the private copy made anew from gRcsAct
  void ApriImm(int azione, int cAttivita);
  int AttivitaSelezionata() const;  // Val(Right(key, 9)) of the selected row

  bool daSalvare_ = false;
  bool chiudendo_ = false;
};

}  // namespace prestkt
