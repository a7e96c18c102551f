#pragma once
// The component the host places on its form: lifecycle, properties, the
// register of models on its own surface, and the relay towards the host.
#include <QComboBox>
#include <QDateTime>
#include <QFrame>
#include <QIcon>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QTimer>
#include <QWidget>

#include "Database.h"
#include "ListView.h"
#include <functional>

#include "OCPrestKTClass.h"

namespace prestkt {

class frmGestOrdFornImm;

class OCPrestKT : public QWidget {
  Q_OBJECT
  Q_PROPERTY(QDateTime DtIni READ DtIni WRITE SetDtIni)
  Q_PROPERTY(QDateTime DTEnd READ DTEnd WRITE SetDTEnd)
  Q_PROPERTY(int Status READ Status WRITE SetStatus)
  Q_PROPERTY(int TAnag READ TAnag WRITE SetTAnag)
  Q_PROPERTY(int CAnag READ CAnag WRITE SetCAnag)
  Q_PROPERTY(int CProject READ CProject WRITE SetCProject)
  Q_PROPERTY(bool MagnifyScreen READ MagnifyScreen WRITE SetMagnifyScreen)

 public:
  explicit OCPrestKT(QWidget* parent = nullptr);
  ~OCPrestKT() override;

  // Properties.
  OCPrestKTClassPtr OcxEventS() const { return ocxEventS_; }
  void SetOcxEventS(OCPrestKTClassPtr relay);
  QDateTime DtIni() const;
  void SetDtIni(const QDateTime& v);
  QDateTime DTEnd() const;
  void SetDTEnd(const QDateTime& v);
  int Status() const;
  void SetStatus(int v);
  void SetOnlyInput(bool v);
  void SetOnlyPrest(bool v);
  int TAnag() const;
  void SetTAnag(int v);
  int CAnag() const;
  void SetCAnag(int v);
  QIcon Icon() const;
  int CProject() const;
  void SetCProject(int v);
  bool MagnifyScreen() const;
  void SetMagnifyScreen(bool v);
  WId hWnd() { return winId(); }

  // Methods.
  void Initialize();
  void DBConn(const DatabasePtr& db, int vCurUtente, const QIcon& vIcona, const QString& vPathDocs,
              int initialTAnag = 0, bool chronoMode = false);
  void Aggiungi();
  void Modifica();
  void Elimina();
  // Opens the price settings.
  void ShowSettings();
  // Opens the shop-floor station; with OnlyInput it fills the screen.
  void ShowInput();
  // The month's time of every operator, day by day.
  void ShowReportOperatori();
  // What was spent in a period, activities and deliveries, to a spreadsheet.
  void ShowReportExcel();
  // The dispositions of open models by billing state, closed and reopened in bulk.
  void ShowGestDisp();
  // The delivery notes of a period not yet invoiced, priced per disposition.
  void ShowGestDDTPerFatt();
  // The proposed unit price of a disposition, with no screen.
  double CalcDatiDisp(int vCProject, int vCDisp);
  // The time of the dispositions of the checked models, one row each.
  RecordsetPtr PreparaDati();
  // The time of the checked models' dispositions: the report "Report prestazioni"
  // in the print preview, or the same data to a sheet or a CSV the user picks.
  void RepPrestazioni();
  void ExpPrestazioni();
  // The recordsets of a host document's line screen (see IniTab4Doc), and the
  // lines it collected written under the document's final numbers.
  void IniTabDoc(RecordsetPtr& rcsD, RecordsetPtr& rcsFD, RecordsetPtr& rcsFDD, int& vCCaus, int TipoDoc, int NDoc,
                 bool vNewDoc);
  void SaveDataDoc(int TipoDoc, int NDoc, RecordsetPtr& rcsFD, RecordsetPtr& rcsFDD);
  // The line screen of a host document, modal over the host's form: a new line
  // or the line vRigaD, of a document (with its default reason) or of a
  // delivery note to the party vTAnagD/vCAnagD. The line comes back through
  // GetDataFromProjects.
  void AddLineToDoc(QWidget* OwnerForm, RecordsetPtr& rcsD, RecordsetPtr& rcsFD, RecordsetPtr& rcsFDD, int vCCaus);
  void AddLineToDDT(QWidget* OwnerForm, RecordsetPtr& rcsD, RecordsetPtr& rcsFD, RecordsetPtr& rcsFDD, int vTAnagD,
                    int vCAnagD);
  void EditLineToDoc(QWidget* OwnerForm, RecordsetPtr& rcsD, RecordsetPtr& rcsFD, RecordsetPtr& rcsFDD, int vRigaD);
  void EditLineToDDT(QWidget* OwnerForm, RecordsetPtr& rcsD, RecordsetPtr& rcsFD, RecordsetPtr& rcsFDD, int vTAnagD,
                     int vCAnagD, int vRigaD);
  // Opens the price calculator for the host; a confirmed price comes back by GetDataForFattDiff.
  void EditDisp(int vCProjectS, int vCDisp, double vQta, double vPzIni);

  // The host's answers, forwarded to the open card. With no card open the
  // call fails back to the host (VbError 91): these have no handler.
  void ChAnagInModelli(QVariant& vTAnagS, QVariant& vCAnagS);
  void ChAnagInDocs(QVariant& vTAnagS, QVariant& vCAnagS, QString& tipo);
  void ChTipoPrjModelli(QVariant& vCTipoPrj);
  void ChTipoPrjDisp(QVariant& vCTipoDispPrj);

  // The register.
  void CaricaList();
  bool CanClose(int& cProject);
  void mnuSel_Click();
  void mnuDeSel_Click();
  void mnuClose_Click();
  void mnuReOpen_Click();
  bool Loading() const { return gLoading_; }

 signals:
  // The container is told of every property set, by the property's name.
  void PropertyChanged(const QString& name);
  // Events towards the host.
  void CallShowAnag();
  void CallShowTipol(QVariant& vCTipoPrj);
  void CallShowAnagMod();
  void CallShowAnagDoc(QString& tipo);
  void CallShowTipolDisp(QVariant& vCTipoDispPrj);
  void GetDataFromProjects(RecordsetPtr& rcsFD, RecordsetPtr& rcsFDD, int& vRigaD, int& vMode);
  void GetDataForFattDiff(double& vImporto);
  void GetPZVend(double& pzVend);  // declared for the host; never raised
  void ClosePrg();
  void Chrono(QString& objName, QString& procName, QString& stepName);  // never raised
  void EndChrono(QString& objName, QString& procName);                  // never raised

 protected:
  void resizeEvent(QResizeEvent* e) override;
  bool eventFilter(QObject* o, QEvent* e) override;

 private:
  QList<int> ModelliSpuntati() const;
  void BuildSurface();
  void ImpostaColonne();
  void AdattaColonne();
  void ImpostaFontGrandi();
  void ConnectRelay();
  void ColumnClick(int column);
  void ReloadDataInCtrl(int& cProject);
  void PosizionaScheda();
  void ApriModello(int codice, int azione);
  // Opens the line screen with what the four line methods set on it.
  void ApriRiga(QWidget* owner, RecordsetPtr& rcsD, RecordsetPtr& rcsFD, RecordsetPtr& rcsFDD,
                const std::function<void(frmGestOrdFornImm&)>& imposta);

  QFrame* Frame1;
  QFrame* Frame2;
  QLabel* Label4;
  QLabel* Label6;
  QLabel* Label3;
  QComboBox* CBTAnag;
  QComboBox* CBCAnag;
  QPushButton* Command1;
  QComboBox* CBTipoPrj;
  QLineEdit* TBFind;
  ListView* ListView1;
  QTimer* Timer1;
  QMenu* mnuTD;
  QAction* mnuSel;
  QAction* mnuDeSel;
  QAction* mnuSpc;
  QAction* mnuClose;
  QAction* mnuReOpen;

  bool gLoading_ = false;
  OCPrestKTClassPtr ocxEventS_;
};

}  // namespace prestkt
