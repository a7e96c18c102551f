#pragma once
// "Rilevazione start e stop": one span of work on a simplified forfait
// disposition, who, on which day, from what time to what time. Unlike the
// activity card it stores real clock times, and the end may stay open for a
// recording begun now and closed later.
#include <QCheckBox>
#include <QComboBox>
#include <QDateEdit>
#include <QGroupBox>
#include <QTimeEdit>

#include "Recordset.h"
#include "Scheda.h"

namespace prestkt {

class frmGestForfSemplImm : public Scheda {
  Q_OBJECT
 public:
  explicit frmGestForfSemplImm(QWidget* parent = nullptr);

  // Set by the caller before Form_Load.
  RecordsetPtr rcsAct;  // the forfait card's copy of the disposition's recordings
  int CProject = 0;
  int CDisp = 0;
  int Azione = 2;     // 2 new, 1 existing
  int CAttivita = 0;  // the recording in mode 1; a new one gets its code at the save

  // Something to save: enables the save button and the menu entry.
  bool DaSalvare() const { return daSalvare_; }
  void SetDaSalvare(bool v);

  void Form_Load();
  bool Salva();
  void EseguiComando(int bottone);  // the toolbar's index: 1 close, 3 save and close

  // Controls, named as the system names them.
  QGroupBox* OCFrame1;
  QDateEdit* DTPicker1;
  QComboBox* CBOperatore;
  QTimeEdit* DTInizio;
  QCheckBox* chkFine;  // the check box of DtFine: unchecked, the recording has no end yet
  QTimeEdit* DtFine;
  QMenu* mnuF;
  QAction* mnuFS;
  QAction* mnuFE;

 signals:
  void Reload(int& cAttivita);

 protected:
  void closeEvent(QCloseEvent* e) override;
  void reject() override;

 private:
  void BuildUi();

  bool daSalvare_ = false;
  bool chiudendo_ = false;
};

}  // namespace prestkt
