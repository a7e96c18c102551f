#pragma once
// "Ordini aperti": the lines of the customer's orders not yet taken by another
// model; the chosen one goes back to the model card.
#include "ListView.h"
#include "Scheda.h"

namespace prestkt {

class frmOrdini : public Scheda {
  Q_OBJECT
 public:
  explicit frmOrdini(QWidget* parent = nullptr);

  // Set by the model card: the model's party and its present reference.
  int TAnag = 0;
  int CAnag = 0;
  int NDoc = 0;
  int Riga = 0;

  void Form_Load();
  void CaricaOrdini();
  bool RigaLibera(int nDoc, int riga);
  void EseguiComando(int n);  // 0 close, 1 hand back the selected line

  ListView* ListView1;
  QMenu* mnuF;
  QAction* mnuFS;
  QAction* mnuFE;

 signals:
  void LoadOrderRow(int& nDoc, int& riga, QString& dArt);

 protected:
  void showEvent(QShowEvent* e) override;

 private:
  bool caricato_ = false;  // the list loads the first time the screen shows
};

}  // namespace prestkt
