#pragma once
// "Scheda disposizione": the card of one disposition of a model, with the
// service kinds chosen for it and the four lists of what was done on it.
#include <QCheckBox>
#include <QComboBox>
#include <QDateEdit>
#include <QGroupBox>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTabWidget>

#include "ListView.h"
#include "NumericSpin.h"
#include "OCPrestKTClass.h"
#include "Recordset.h"
#include "Scheda.h"
#include "Stampa.h"

namespace prestkt {

class frmDisp : public Scheda {
  Q_OBJECT
 public:
  explicit frmDisp(QWidget* parent = nullptr);
  ~frmDisp() override;

  // Set by the caller before the card is shown.
  int Azione = 2;  // 1 existing, 2 new; turns to 1 at the first save
  int CDisp = 0;
  int CProject = 0;
  QString RagSoc1;
  QString DProject;
  int TAnag = 0;
  int CAnag = 0;
  // The caller's print object, where the production sheet goes; with none, a preview.
  std::shared_ptr<Stampante> StampaScheda;

  // State of the card.
  RecordsetPtr rcsDett;  // this card's copy of the disposition's service kinds
  int CPrjDispTipo = 0;
  bool PerPezzo = false;
  int NStampa = 0;
  bool Chiusa = false;
  bool Modificato() const { return modificato_; }
  void SetModificato(bool v);

  void Form_Load();
  void EseguiComando(int n);  // 0 close, 1 save, 2 print, 3 add, 4 edit, 5 delete activity, 6 info
  void AggiornaToolbar();
  void AggiornaBlocchi();
  bool CanOpenExec();
  bool Salva();
  void SalvaDisp();
  void CBTipoDisp_Click();
  void chkClosed_Click();
  void mnuSblocca_Click();
  void mnuSposta_Click();
  void SSTab1_Click();

  // The lists.
  void CaricaListPrest();
  void CaricaListEsecInt();
  void CaricaListEsecExt();
  void CaricaListDocs();
  void DelProd();
  void fExec_Reload(int cAttivita);
  void fExecSposta_Sposta(int& cProject, int& cDisp);

  // Controls, named as the system names them.
  NumericSpin* NumericSpin1;
  QDateEdit* DTPicker1;
  QGroupBox* OCFrame2;
  QLineEdit* TBAnag;
  QLineEdit* TBDProject;
  QGroupBox* OCFrame1;
  QComboBox* CBGroupFatt;
  QGroupBox* OCFrame6;
  QComboBox* CBTipoDisp;
  QPushButton* Command3;
  QLineEdit* TBDDisp;
  QGroupBox* OCFrame7;
  NumericSpin* OCUpQta;
  QGroupBox* OCFramePz;
  QCheckBox* chkDefPzVend;
  NumericSpin* OCPzVend;
  QGroupBox* OCFrame3;
  NumericSpin* NumericSpin2;
  QGroupBox* OCFrame5;
  QGroupBox* OCFrame10;
  QCheckBox* chkFatt;
  NumericSpin* OCNFatt;
  QGroupBox* OCFrame9;
  QCheckBox* chkClosed;
  QDateEdit* DTEnd;
  QTabWidget* SSTab1;
  ListView* lvwPrest;
  ListView* lvwEsecInt;
  ListView* lvwEsecExt;
  ListView* lvwDocs;
  QPlainTextEdit* TBAnnot;
  QMenu* mnuF;
  QAction* mnuFS;
  QAction* mnuPrn;
  QAction* mnuspcsblocca;
  QAction* mnuSblocca;
  QAction* mnuFE;
  QMenu* mnuMod;
  QAction* mnuAdd;
  QAction* mnuEdit;
  QAction* mnuDel;
  QAction* mnuSpcChange;
  QAction* mnuSposta;
  QMenu* mnuH;

  // The screen's relay, published as gOcxEventCard while the card is open.
  OCPrestKTClassPtr OcxEventS;

 signals:
  void Reload(int cDisp);

 protected:
  void closeEvent(QCloseEvent* e) override;
  void reject() override;

 private:
  void BuildUi();
  void BuildMenus();
  void ConnectUi();
  void IniVideo();
  void AddProd();
  void EditProd();
  void InfoProd();
  void ApriExec(int modo, int cAttivita);
  int CodiceTipo() const;  // the item data of CBTipoDisp's selection, 0 when none

  bool modificato_ = false;
  bool caricato_ = false;
  bool tabAperta_[5] = {true, false, false, false, false};  // the first opening of each tab
};

}  // namespace prestkt
