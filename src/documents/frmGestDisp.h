#pragma once
// "Gestione disposizioni per fatturazione": the dispositions of open models by
// billing state, party and period, closed in bulk with a date or reopened.
// A model of a simplified forfait type stands as one row, "Model Form".
#include <QComboBox>
#include <QDateTime>
#include <QLabel>

#include "ListView.h"
#include "Recordset.h"
#include "Scheda.h"

namespace prestkt {

class frmGestDisp : public Scheda {
  Q_OBJECT
 public:
  explicit frmGestDisp(QWidget* parent = nullptr);

  void Form_Load();
  void CaricaAnag();
  void CaricaAnni();
  void CaricaMesi();
  void CaricaDati();
  void CaricaList();
  // Whether an open disposition lies in the chosen period: that of its latest activity.
  bool ShowDisp(int vCProject, int vCDisp);
  void ApplicaStato();  // tool bar button 3
  void CloseDisp(const QDateTime& vData);
  void ReOpenDisp();
  void mnuModDisp_Click();
  void mnuSel_Click();
  void mnuDeSel_Click();
  void ListView1_ColumnClick(int column);  // 1-based
  void fGestDispOK_CloseDisposizioni(const QDateTime& vData);

  // The statements of the screen, for the state (0, 1, 2) and the kind of
  // invoicing (-1 for all): the dispositions that are not forfait, the
  // forfait models one row each, the parties and the oldest year of activity.
  static QString SqlDisposizioni(int stato, int tipoFatt);
  static QString SqlForfait(int stato, int tipoFatt);
  static QString SqlAnag();
  static QString SqlAnni();
  static QString SqlUltimaAttivita(int vCProject, int vCDisp);

  QComboBox* CBStato;
  QComboBox* CBTipoFatt;
  QComboBox* CBAnag;
  QComboBox* CBAnno;
  QComboBox* CBMesi;
  QLabel* lblPeriodo;
  ListView* ListView1;
  QMenu* mnuMod;
  QAction* mnuSel;
  QAction* mnuDeSel;
  QAction* mnuSpcM;
  QAction* mnuModDisp;

 protected:
  void showEvent(QShowEvent* e) override;

 private:
  void CBStato_Click();
  void CreaColonne(int stato);
  bool NelPeriodo(const QVariant& data) const;
  // The codes of a list key: "K" + CProject in 9 digits + CDisp.
  static int KeyCProject(const QString& chiave);
  static int KeyCDisp(const QString& chiave);

  bool caricamento_ = false;  // from Form_Load to the first showing
  RecordsetPtr rcsDisp_;      // the rows of the list, before party and period
  RecordsetPtr rcsAnag_;      // the parties behind CBAnag: TAnag, CAnag, RagSoc1, Code
};

}  // namespace prestkt
