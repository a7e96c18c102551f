#pragma once
// "Calcolo tariffa": the selling price per piece of one disposition, worked out
// from the operators' time, the external work delivered, the tariff and the
// four price settings, every figure on screen. The screen writes nothing: the
// confirmed price goes back to whoever opened it.
#include <QGroupBox>
#include <QLineEdit>
#include <QMenu>
#include <QTabWidget>

#include "ListView.h"
#include "ModPrestKT.h"
#include "NumericSpin.h"
#include "Procedure.h"
#include "Recordset.h"
#include "Scheda.h"

namespace prestkt {

class frmCalcPzVend : public Scheda {
  Q_OBJECT
 public:
  explicit frmCalcPzVend(QWidget* parent = nullptr);

  // The caller's name that sends the price to the host instead of the opener.
  static inline const QString kOCX = QStringLiteral("OCX");

  // Set by the caller before the screen is shown.
  QString Chiamante;  // "OCX" for the host (EditDisp), otherwise the opening form's name
  int CProject = 0;
  int CDisp = 0;
  double Qta = 0;
  double PzIni = 0;

  // Loads the screen; false when the model doesn't exist, and then the screen
  // isn't shown at all.
  bool Form_Load();
  // Form_Load and, when it loaded, the modal show: what every caller does.
  void Mostra();

  // State kept by the screen.
  int CPrjTipo = 0;
  int CPrjDispTipo = 0;
  int TAnag = 0;
  int CAnag = 0;
  tyDatiDisp Tariffa;
  ImpostazioniPrezzo Impostazioni;
  int MinutiTot = 0;
  bool Calcolando() const { return calcolando_; }
  bool EsternaCaricata() const { return esternaCaricata_; }

  bool CaricaDati();
  void CaricaTariffa();
  void IniListEsecInt();
  void CaricaListEsecInt();
  void IniListEsecExt();
  void CaricaListEsecExt();
  void CalcTotInt();
  void CalcTotExt();
  // The chain of figures, each step calling the next.
  void CalcCostoTot();
  void CalcValLavInt();
  void CalcValLavExt();
  void CalcValTot();
  void CalcValUnit();
  void CalcPzVend();
  void OCPzVend_Change();
  void mnuSblocca_Click();
  void mnuSettings_Click();
  void mnuH_Click();
  void Ricalcola();           // toolbar button 5: asks, then CalcPzVend
  void Conferma(int azione);  // 0 closes, 1 confirms

  // Fields, named as the system names them.
  QGroupBox* OCFrame1;
  QLineEdit* TBProjDisp;
  QLineEdit* TBDPrjTipo;
  QLineEdit* TBDisposizione;
  QLineEdit* TBDProject;
  QLineEdit* TBAnag;
  QGroupBox* OCFrame2;
  NumericSpin* OCCoeffArrot;
  NumericSpin* OCPercRicMin;
  NumericSpin* OCPercRicLavExt;
  NumericSpin* OCTarH;
  QGroupBox* OCFrame3;
  NumericSpin* OCTarMin;
  NumericSpin* OCTarMax;
  QGroupBox* OCFrame4;
  NumericSpin* OCCostoTot;
  NumericSpin* OCMargPercTot;
  NumericSpin* OCMargTot;
  NumericSpin* OCValLavInt;
  NumericSpin* OCValLavExt;
  NumericSpin* OCValTot;
  QGroupBox* OCFrame5;
  NumericSpin* OCValUnit;
  NumericSpin* OCCostoUnit;
  NumericSpin* OCPercReale;
  NumericSpin* OCMargUnReal;
  QGroupBox* OCFrame6;
  NumericSpin* OCPzVend;
  QGroupBox* OCFrame7;
  NumericSpin* OCQta;
  QTabWidget* SSTab1;
  ListView* lvwEsecInt;
  ListView* lvwEsecIntTot;
  ListView* lvwEsecExt;
  ListView* lvwEsecExtTot;
  QMenu* mnuF;
  QAction* mnuFS;
  QAction* mnuSettings;
  QAction* mnuFE;
  QAction* mnuH;
  QMenu* mnuPzVend;
  QAction* mnuSblocca;

 signals:
  // The confirmed price, for an opener that is not the host.
  void SetPzVend(double pzVend);

 protected:
  void closeEvent(QCloseEvent* e) override;
  void reject() override;

 private:
  void BuildUi();
  void ConnectUi();
  // The disposition's row of the working set, in a clone of gRcsDisp.
  RecordsetPtr Disposizione() const;
  void Prezzo(bool bloccato);  // the face of OCPzVend: locked red or open green
  void MarginiReali();         // OCPercReale and OCMargUnReal from OCPzVend and the unit cost

  // What a row of lvwEsecInt shows, read once; its texts are made when asked.
  struct Attivita {
    QVariant codice;
    QVariant dtIni;
    QString operatore;
    QString prestazione;
    qint64 minuti = 0;
    double costoH = 0;
  };
  QString TestoAttivita(int riga, int colonna) const;

  bool calcolando_ = false;
  bool esternaCaricata_ = false;
  std::vector<Attivita> attivita_;
};

}  // namespace prestkt
