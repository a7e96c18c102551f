#pragma once
// "Progetti in  esecuzione": the open dispositions invoiced by the piece that a
// document line may be tied to, by customer and by a free text; the chosen one
// goes back through Reload.
#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>

#include "ListView.h"
#include "Recordset.h"
#include "Scheda.h"

namespace prestkt {

class frmDispAttive : public Scheda {
  Q_OBJECT
 public:
  explicit frmDispAttive(QWidget* parent = nullptr);

  // Set by the caller before the screen shows: the rows to choose from (ID,
  // CProject, CDisp, TAnag, CAnag, RagSoc1, DProject, DPrjTipo, DDisp,
  // CPrjDispTipo, Qta), and for a delivery note the one party that counts.
  RecordsetPtr recordset;
  bool ForDDT = false;
  int vTAnagD = 0;
  int vCAnagD = 0;

  void Form_Load();
  void CaricaList();
  void EseguiComando(int n);  // 0 close, 1 hand back the selected disposition

  QComboBox* CBAnag;
  QLineEdit* TBFind;
  QPushButton* Command1;
  ListView* ListView1;
  QMenu* mnuF;
  QAction* mnuFS;
  QAction* mnuFE;

 signals:
  void Reload(int& cProject, int& cDisp);

 protected:
  void showEvent(QShowEvent* e) override;
  bool eventFilter(QObject* o, QEvent* e) override;

 private:
  void CaricaAnagrafiche();
  RecordsetPtr anag_;   // ID, TAnag, CAnag, RagSoc
  RecordsetPtr tipi_;   // ProjectsDispTipo, read once
  bool caricata_ = false;
  bool cambiato_ = false;
};

}  // namespace prestkt
