#pragma once
// "Scheda Modello": the card of one model. It gives the model its code, keeps
// its notes and documents, lists its dispositions or registrations, and shows
// the customer order line it refers to. Its code lives in three files:
// frmModelli.cpp (the card and its lists), frmModelliDocs.cpp (the document
// folder) and frmModelliOrdine.cpp (the order link).
#include <QCheckBox>
#include <QComboBox>
#include <QDateEdit>
#include <QMimeData>
#include <QGroupBox>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPointer>
#include <QPushButton>
#include <QTabWidget>
#include <QTimer>
#include <functional>

#include "ListView.h"
#include "NumericSpin.h"
#include "OCPrestKTClass.h"
#include "Scheda.h"
#include "Stampa.h"

namespace prestkt {

class frmModelli : public Scheda {
  Q_OBJECT
 public:
  explicit frmModelli(QWidget* parent = nullptr);
  ~frmModelli() override;

  // Set by the caller before the card is shown.
  int Azione = 2;  // 1 existing, 2 new; turns to 1 at the first save
  int CProject = 0;
  // The print object the disposition cards receive for their production sheet; with none, a preview.
  std::shared_ptr<Stampante> StampaScheda;

  // State of the card.
  int TAnag = 0;
  int CAnag = 0;
  bool GestForfSempl = false;
  QString PathModello;
  bool Modificato() const { return modificato_; }
  void SetModificato(bool v);

  // Loads the card for Azione and CProject; the caller runs it before exec().
  void Form_Load();

  // Commands of the toolbar and the menus (0 close, 1 save, 2 print, 3 add, 4 edit, 5 delete).
  void EseguiComando(int n);
  bool CanOpenDisp();
  bool CtrlProject();
  bool Salva();
  void SalvaProject();
  void GestVideo();
  void AbilitaDocumenti();

  // Lists of the card.
  void CaricaList();
  void CaricaListMod();
  QString CalcTempo(int cDisp);
  void CancDisp();
  void CancRegistrazione();
  void fDisp_Reload(int cDisp);
  void fGestForfSempl_Reload(int cDisp);
  void SSTab1_Click(int previousTab);

  // The document folder.
  QString GetPathModello();
  void CaricaListDoc();
  bool CtrlFileName(const QString& nome);
  void AggiungiWord(const QString& nome);
  void AggiungiExcel(const QString& nome);
  void mnuAddWord_Click();
  void mnuAddExcel_Click();
  void mnuAddImport_Click();
  void ApriDoc();
  void CancDoc();
  // A dropped mail message: a file (.eml, .msg) or the message's text with a subject.
  void lvwDocs_OLEDragDrop(const QMimeData* data);

  // The order link.
  void CaricaRigaOrdine(int nDoc, int riga);
  void fOrdini_LoadOrderRow(int& nDoc, int& riga, QString& dArt);
  void mnuLinkOrd_Click();
  void mnuDelLink_Click();

  // Controls, named as the system names them.
  QTabWidget* SSTabMod;
  QTabWidget* SSTab1;
  NumericSpin* OCCProject;
  QDateEdit* DTProject;
  QGroupBox* OCFrame6;
  QComboBox* CBTAnag;
  QComboBox* CBCAnag;
  QPushButton* cmdAnag;
  QGroupBox* OCFrame7;
  QComboBox* CBTipoPrj;
  QPushButton* cmdTipologia;
  QLineEdit* TBDProject;
  NumericSpin* OCUpQta;
  QPlainTextEdit* TBAnnot;
  ListView* ListView1;
  ListView* lvwDocs;
  ListView* lvwRegistrazioni;
  // Order link (tab "Riferimento ad ordine").
  QGroupBox* OCFrame2;
  QGroupBox* OCFrame3;
  QGroupBox* OCFrame5;
  QPushButton* Command1;
  NumericSpin* OCUDOrdine;
  NumericSpin* OCUDRiga;
  QDateEdit* DTPicker2;
  QLineEdit* TBCodTesto;
  QLineEdit* TBDArt;
  NumericSpin* OCUpQtaOrd;
  // Menus.
  QMenu* mnuF;
  QAction* mnuFS;
  QAction* mnuPrn;
  QAction* mnuFE;
  QMenu* mnuMod;
  QAction* mnuAdd;
  QAction* mnuEdit;
  QAction* mnuDel;
  QAction* mnuSpcMod;
  QAction* mnuModUnlockTipo;
  QMenu* mnuModDoc;
  QMenu* mnuAddDoc;
  QAction* mnuAddWord;
  QAction* mnuAddExcel;
  QAction* mnuAddImport;
  QAction* mnuEditDoc;
  QAction* mnuDelDoc;
  QMenu* mnuRifOrd;
  QAction* mnuLinkOrd;
  QAction* mnuDelLink;
  QMenu* mnuH;
  QTimer* Timer1;  // shows mnuRifOrd after the click
  QTimer* Timer2;  // shows mnuModDoc after the click
  ImageList* ImageListIcon;  // the file type icons of lvwDocs

  // The screen's relay, published as gOcxEventCard while the card is open.
  OCPrestKTClassPtr OcxEventS;

 protected:
  void closeEvent(QCloseEvent* e) override;
  void reject() override;

 private:
  void BuildUi();
  void BuildMenus();
  void ConnectUi();
  void IniVideo();
  void ColonneListView1();
  void ColonneRegistrazioni();
  void ColonneDocs();
  void AddData();
  void EditData();
  void DelData();
  void ApriDisp(int azione, int cDisp);
  void ApriForfSempl(int azione, int cDisp);
  void AggiornaBlocco();
  void OcxEventS_ChAnagInModelli(QVariant& tAnag, QVariant& cAnag);
  void OcxEventS_ChProjInModelli(QVariant& cPrjTipo);
  int CDispSelezionata(ListView* lista) const;
  void CancellaRiga(ListView* lista, const QString& procedura, const std::function<QString(int)>& domanda);

  bool modificato_ = false;
  bool caricato_ = false;          // Form_Load has run: changes now count
  bool primaVolta_[4] = {true, true, true, true};  // the first opening of each tab of SSTab1
  int tabPrecedente_ = 0;
  bool chiudendo_ = false;
};

}  // namespace prestkt
