#pragma once
// "Sposta prestazioni": the other open dispositions of the customer's open
// models; the chosen one receives the activities the disposition card moves.
#include "ListView.h"
#include "Scheda.h"

namespace prestkt {

class frmExecSposta : public Scheda {
  Q_OBJECT
 public:
  explicit frmExecSposta(QWidget* parent = nullptr);

  // Set by the disposition card: where the activities are now, and the customer.
  int CDisp = 0;
  int CProject = 0;
  int TAnag = 0;
  int CAnag = 0;

  void Form_Load();
  void CaricaList();
  void EseguiComando(int n);  // 0 close, 1 hand back the selected disposition

  ListView* ListView1;
  QMenu* mnuF;
  QAction* mnuFS;
  QAction* mnuFE;

 signals:
  void Sposta(int& cProject, int& cDisp);
};

}  // namespace prestkt
