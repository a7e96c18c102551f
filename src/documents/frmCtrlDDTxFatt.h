#pragma once
// "Controllo DDT per fatturazione": the delivery notes of a period not yet
// invoiced, summed per disposition; a disposition's price, confirmed on the
// calculator, goes into every note line of it, and each note's totals are
// computed again.
#include <QDateEdit>
#include <QHash>
#include <QPair>

#include "ListView.h"
#include "Recordset.h"
#include "Scheda.h"

namespace prestkt {

class frmCtrlDDTxFatt : public Scheda {
  Q_OBJECT
 public:
  explicit frmCtrlDDTxFatt(QWidget* parent = nullptr);

  void Form_Load();
  void CaricaDati();
  void CaricaList();
  void Calcola();
  void fCalcPzVend_SetPzVend(double PzVend);
  void AssegnaPZ(double PzVend);
  void RicalcTotDoc(int TipoDoc, int NDoc);
  void EseguiComando(int n);  // 0 close, 1 Calcola

  // The disposition under work.
  int CProject = 0;
  int CDisp = 0;

  QDateEdit* DTPicker1;
  QDateEdit* DTPicker2;
  ListView* ListView1;
  QMenu* mnuF;
  QAction* mnuCalc;
  QAction* mnuFE;

  // The three recordsets of the last CaricaDati: the documents, the summary
  // per disposition and the note lines found.
  RecordsetPtr Documenti() const { return documenti_; }
  RecordsetPtr Riepilogo() const { return riepilogo_; }
  RecordsetPtr Righe() const { return righe_; }

 private:
  RecordsetPtr documenti_, riepilogo_, righe_;
  bool caricato_ = false;  // the period's changes reload only once the screen has loaded
};

}  // namespace prestkt
