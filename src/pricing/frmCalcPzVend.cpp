#include "frmCalcPzVend.h"

#include <QCloseEvent>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPalette>

#include "Guard.h"
#include "Messages.h"
#include "ModListViewKT.h"
#include "OCPrestKTClass.h"
#include "ProcedureUi.h"
#include "frmSettings.h"

namespace prestkt {

namespace {

const QString kForm = QStringLiteral("frmCalcPzVend");
const QColor kRossoBloccato(255, 128, 128);
const QColor kVerdeAperto(192, 255, 192);
const QString kPercento = QStringLiteral("0.00%");
const QString kImporto = QStringLiteral("#,##0.00");


NumericSpin* Cifra(QWidget* parent, const char* nome, const QString& formato) {
  auto* c = Nome(new NumericSpin(parent, formato), nome);
  c->setMinimumWidth(110);
  return c;
}

// A figure that only shows: no arrows, and dark enough to read in its disabled frame.
NumericSpin* SoloCifra(QWidget* parent, const char* nome, const QString& formato) {
  NumericSpin* c = Cifra(parent, nome, formato);
  c->setButtonSymbols(QAbstractSpinBox::NoButtons);
  QPalette p = c->palette();
  p.setColor(QPalette::Disabled, QPalette::Text, p.color(QPalette::Active, QPalette::Text));
  c->setPalette(p);
  return c;
}

// One field in a grid of label and field: the label in the second column of
// the system's table, its longer form (behind the slash) as the tool tip.
void Riga(QGridLayout* g, int riga, int colonna, const QString& etichetta, QWidget* campo,
          const QString& lunga = {}) {
  auto* l = new QLabel(etichetta);
  l->setBuddy(campo);
  if (!lunga.isEmpty()) {
    l->setToolTip(lunga);
    campo->setToolTip(lunga);
  }
  g->addWidget(l, riga, colonna);
  g->addWidget(campo, riga, colonna + 1);
}

void Colore(QWidget* w, QPalette::ColorRole ruolo, const QColor& c) {
  QPalette p = w->palette();
  p.setColor(ruolo, c);
  w->setPalette(p);
}

// The number that a list's text shows ("1.234,50", "04:25" is read apart).
double Numero(const QString& testo) { return CDbl(testo); }

// The total row of a total list, by its key.
QString Totale(ListView* lista, int colonna) { return lista->Text(lista->Row(QStringLiteral("K")), colonna); }

}  // namespace

frmCalcPzVend::frmCalcPzVend(QWidget* parent) : Scheda(parent, kForm) {
  BuildUi();
  ConnectUi();
}

// ---------------------------------------------------------------- building

void frmCalcPzVend::BuildUi() {
  CreaToolbar({{1, QStringLiteral("Esci"), QStringLiteral("application-exit")},
               {3, QStringLiteral("Salva"), QStringLiteral("document-save")},
               {5, QStringLiteral("Ricalcola il prezzo di vendita"), QStringLiteral("view-refresh")}});

  OCFrame1 = Nome(new QGroupBox(this), "OCFrame1");
  TBProjDisp = Nome(new QLineEdit(OCFrame1), "TBProjDisp");
  TBDPrjTipo = Nome(new QLineEdit(OCFrame1), "TBDPrjTipo");
  TBDisposizione = Nome(new QLineEdit(OCFrame1), "TBDisposizione");
  TBDProject = Nome(new QLineEdit(OCFrame1), "TBDProject");
  TBAnag = Nome(new QLineEdit(OCFrame1), "TBAnag");
  auto* g1 = new QGridLayout(OCFrame1);
  Riga(g1, 0, 0, QStringLiteral("Modello/Disp"), TBProjDisp);
  Riga(g1, 0, 2, QStringLiteral("Tipologia"), TBDPrjTipo);
  Riga(g1, 1, 0, QStringLiteral("Modello"), TBDProject);
  Riga(g1, 1, 2, QStringLiteral("Tipo disposizione"), TBDisposizione);
  Riga(g1, 2, 0, QStringLiteral("Anagrafica"), TBAnag);
  g1->setColumnStretch(1, 1);
  g1->setColumnStretch(3, 1);

  // What the user may change for this calculation alone.
  OCFrame2 = Nome(new QGroupBox(this), "OCFrame2");
  OCCoeffArrot = Cifra(OCFrame2, "OCCoeffArrot", QStringLiteral("0.00"));
  OCPercRicMin = Cifra(OCFrame2, "OCPercRicMin", kPercento);
  OCPercRicLavExt = Cifra(OCFrame2, "OCPercRicLavExt", kPercento);
  OCTarH = Cifra(OCFrame2, "OCTarH", kImporto);
  auto* g2 = new QGridLayout(OCFrame2);
  Riga(g2, 0, 0, QStringLiteral("Coeff.arrot."), OCCoeffArrot, QStringLiteral("Coefficiente di arrotondamento"));
  Riga(g2, 1, 0, QStringLiteral("% ricarico min"), OCPercRicMin, QStringLiteral("% ricarico minima"));
  Riga(g2, 2, 0, QStringLiteral("% ric lav.ext"), OCPercRicLavExt,
       QStringLiteral("% ricarico per lavorazioni esterne"));
  Riga(g2, 3, 0, QStringLiteral("Tariffa hh"), OCTarH, QStringLiteral("Tariffa oraria"));

  OCFrame3 = Nome(new QGroupBox(this), "OCFrame3");
  OCFrame3->setAutoFillBackground(true);
  OCTarMin = SoloCifra(OCFrame3, "OCTarMin", kImporto);
  OCTarMax = SoloCifra(OCFrame3, "OCTarMax", kImporto);
  auto* g3 = new QGridLayout(OCFrame3);
  Riga(g3, 0, 0, QStringLiteral("Tariffa min"), OCTarMin, QStringLiteral("Tariffa minima"));
  Riga(g3, 1, 0, QStringLiteral("max"), OCTarMax, QStringLiteral("Tariffa massima"));

  OCFrame4 = Nome(new QGroupBox(this), "OCFrame4");
  OCCostoTot = SoloCifra(OCFrame4, "OCCostoTot", kImporto);
  OCMargPercTot = SoloCifra(OCFrame4, "OCMargPercTot", kPercento);
  OCMargTot = SoloCifra(OCFrame4, "OCMargTot", kImporto);
  OCValLavInt = SoloCifra(OCFrame4, "OCValLavInt", kImporto);
  OCValLavExt = SoloCifra(OCFrame4, "OCValLavExt", kImporto);
  OCValTot = SoloCifra(OCFrame4, "OCValTot", kImporto);
  auto* g4 = new QGridLayout(OCFrame4);
  Riga(g4, 0, 0, QStringLiteral("Valore lavor. interne"), OCValLavInt);
  Riga(g4, 1, 0, QStringLiteral("Valore lavor. esterne"), OCValLavExt);
  Riga(g4, 2, 0, QStringLiteral("Valore totale"), OCValTot);
  Riga(g4, 0, 2, QStringLiteral("Costo totale"), OCCostoTot);
  Riga(g4, 1, 2, QStringLiteral("Margine teorico totale"), OCMargTot);
  Riga(g4, 2, 2, QStringLiteral("Margine teorico %"), OCMargPercTot);

  OCFrame7 = Nome(new QGroupBox(this), "OCFrame7");
  OCFrame7->setAutoFillBackground(true);
  OCQta = SoloCifra(OCFrame7, "OCQta", kImporto);
  auto* g7 = new QGridLayout(OCFrame7);
  Riga(g7, 0, 0, QStringLiteral("Unità lavorate"), OCQta);

  OCFrame5 = Nome(new QGroupBox(this), "OCFrame5");
  OCValUnit = SoloCifra(OCFrame5, "OCValUnit", kImporto);
  OCCostoUnit = SoloCifra(OCFrame5, "OCCostoUnit", kImporto);
  OCPercReale = SoloCifra(OCFrame5, "OCPercReale", kPercento);
  OCMargUnReal = SoloCifra(OCFrame5, "OCMargUnReal", kImporto);
  auto* g5 = new QGridLayout(OCFrame5);
  Riga(g5, 0, 0, QStringLiteral("Valore per unità prodotta"), OCValUnit);
  Riga(g5, 1, 0, QStringLiteral("Costo per unità prodotta"), OCCostoUnit);
  Riga(g5, 0, 2, QStringLiteral("Margine %"), OCPercReale, QStringLiteral("Margine reale %"));
  Riga(g5, 1, 2, QStringLiteral("Margine unit. reale"), OCMargUnReal);

  OCFrame6 = Nome(new QGroupBox(this), "OCFrame6");
  OCPzVend = Cifra(OCFrame6, "OCPzVend", kImporto);
  OCPzVend->setAutoFillBackground(true);
  OCPzVend->setContextMenuPolicy(Qt::CustomContextMenu);
  if (QLineEdit* e = OCPzVend->findChild<QLineEdit*>()) e->setContextMenuPolicy(Qt::NoContextMenu);
  QFont grande = OCPzVend->font();
  grande.setBold(true);
  OCPzVend->setFont(grande);
  auto* g6 = new QGridLayout(OCFrame6);
  Riga(g6, 0, 0, QStringLiteral("Prezzo al cliente"), OCPzVend);

  auto* sinistra = new QVBoxLayout;
  sinistra->addWidget(OCFrame2);
  sinistra->addWidget(OCFrame3);
  sinistra->addStretch(1);
  auto* destra = new QVBoxLayout;
  destra->addWidget(OCFrame4);
  auto* sotto = new QHBoxLayout;
  sotto->addWidget(OCFrame7);
  sotto->addWidget(OCFrame5, 1);
  destra->addLayout(sotto);
  destra->addWidget(OCFrame6);
  auto* cifre = new QHBoxLayout;
  cifre->addLayout(sinistra);
  cifre->addLayout(destra, 1);
  corpo->addWidget(OCFrame1);
  corpo->addLayout(cifre);

  SSTab1 = Nome(new QTabWidget(this), "SSTab1");
  lvwEsecInt = Nome(new ListView, "lvwEsecInt");
  lvwEsecIntTot = Nome(new ListView, "lvwEsecIntTot");
  lvwEsecExt = Nome(new ListView, "lvwEsecExt");
  lvwEsecExtTot = Nome(new ListView, "lvwEsecExtTot");
  auto pagina = [](ListView* dettaglio, ListView* totale) {
    auto* w = new QWidget;
    auto* v = new QVBoxLayout(w);
    v->setContentsMargins(0, 0, 0, 0);
    v->setSpacing(2);
    v->addWidget(dettaglio, 1);
    totale->setFixedHeight(totale->fontMetrics().height() + 12);
    totale->setHeaderHidden(true);
    v->addWidget(totale);
    return w;
  };
  SSTab1->addTab(pagina(lvwEsecInt, lvwEsecIntTot), QStringLiteral("Esec. interne"));
  SSTab1->addTab(pagina(lvwEsecExt, lvwEsecExtTot), QStringLiteral("Esec. esterne"));
  SSTab1->setMinimumSize(760, 220);
  corpo->addWidget(SSTab1, 1);

  mnuF = Menu(QStringLiteral("mnuF"), QStringLiteral("&File"));
  mnuFS = Voce(mnuF, QStringLiteral("mnuFS"), QStringLiteral("&Salva"));
  mnuSettings = Voce(mnuF, QStringLiteral("mnuSettings"), QStringLiteral("Impostazioni"));
  Separatore(mnuF, QStringLiteral("mnuSpcF"));
  mnuFE = Voce(mnuF, QStringLiteral("mnuFE"), QStringLiteral("&Esci"));
  mnuH = menuBar->addAction(QStringLiteral("&?"));
  mnuH->setObjectName(QStringLiteral("mnuH"));
  mnuH->setToolTip(QStringLiteral("Mostra la tariffa minima e massima"));
  mnuPzVend = Menu(QStringLiteral("mnuPzVend"), QStringLiteral("mnuPzVend"), true);
  mnuSblocca = Voce(mnuPzVend, QStringLiteral("mnuSblocca"), QStringLiteral("&Sblocca prezzo"));
}

void frmCalcPzVend::ConnectUi() {
  connect(this, &Scheda::ToolbarClick, this, [this](int i) {
    if (i == 1) Conferma(0);
    if (i == 3) Conferma(1);
    if (i == 5) Ricalcola();
  });
  connect(mnuSettings, &QAction::triggered, this, &frmCalcPzVend::mnuSettings_Click);
  connect(mnuH, &QAction::triggered, this, &frmCalcPzVend::mnuH_Click);
  connect(mnuSblocca, &QAction::triggered, this, &frmCalcPzVend::mnuSblocca_Click);
  connect(lvwEsecInt, &ListView::ItemCheck, this, [this] { CalcTotInt(); });
  connect(lvwEsecExt, &ListView::ItemCheck, this, [this] { CalcTotExt(); });
  // The fields the user changes start a calculation once the screen shows.
  connect(OCTarH, &QDoubleSpinBox::valueChanged, this, [this] {
    if (isVisible()) CalcValLavInt();
  });
  connect(OCPercRicLavExt, &QDoubleSpinBox::valueChanged, this, [this] {
    if (isVisible()) CalcValLavExt();
  });
  connect(OCQta, &QDoubleSpinBox::valueChanged, this, [this] {
    if (isVisible()) CalcValUnit();
  });
  for (NumericSpin* c : {OCPercRicMin, OCCoeffArrot})
    connect(c, &QDoubleSpinBox::valueChanged, this, [this] {
      if (isVisible()) CalcPzVend();
    });
  connect(OCPzVend, &QDoubleSpinBox::valueChanged, this, &frmCalcPzVend::OCPzVend_Change);
  // A locked price answers the right button with the menu that unlocks it.
  connect(OCPzVend, &QWidget::customContextMenuRequested, this, [this](const QPoint& p) {
    if (OCPzVend->isReadOnly()) mnuPzVend->popup(OCPzVend->mapToGlobal(p));
  });
  // The external work is read the first time its tab shows.
  connect(SSTab1, &QTabWidget::currentChanged, this, [this](int tab) {
    if (tab == 1 && !esternaCaricata_) {
      esternaCaricata_ = true;
      CaricaListEsecExt();
    }
  });
}

// ---------------------------------------------------------------- loading

bool frmCalcPzVend::Form_Load() {
  Guard g(kForm, QStringLiteral("Form_Load"), Guard::Silent);
  g([&] {
    SSTab1->setCurrentIndex(0);
    Prepara(QStringLiteral("Calcolo tariffa"));
  });
  if (!CaricaDati()) return false;
  g([&] { IniListEsecInt(); });
  g([&] { CaricaListEsecInt(); });
  calcolando_ = false;
  g([&] { CalcPzVend(); });
  // A price the caller holds goes before the computed one, and before a locked one.
  if (PzIni != 0) g([&] { OCPzVend->SetValue(PzIni); });
  return true;
}

void frmCalcPzVend::Mostra() {
  if (Form_Load()) exec();
}

bool frmCalcPzVend::CaricaDati() {
  Guard g(kForm, QStringLiteral("CaricaDati"));
  g([&] {
    for (QGroupBox* f : {OCFrame1, OCFrame3, OCFrame4, OCFrame5, OCFrame7}) f->setEnabled(false);
    for (QGroupBox* f : {OCFrame3, OCFrame7}) f->setPalette(palette());
  });
  // A key that doesn't read as a number logs its failure and counts 0.
  Impostazioni = LeggiImpostazioniPrezzo(g, kFallbackCalcolo);
  g([&] { TBProjDisp->setText(Format(CProject, QStringLiteral("0000-00000")) + QLatin1Char('/') +
                              Format(CDisp, QStringLiteral("000"))); });
  g([&] { OCQta->SetValue(Qta); });
  g([&] { OCPercRicLavExt->SetValue(Impostazioni.PercRicLExt); });
  g([&] { OCPercRicMin->SetValue(Impostazioni.PercRicMin); });
  g([&] { OCCoeffArrot->SetValue(Impostazioni.CoeffRange); });
  RecordsetPtr rs;
  g([&] {
    ApriRecordset(rs,
                  QStringLiteral("SELECT Projects.CProject, Projects.DProject, Anagrafica.RagSoc1, Projects.CPrjTipo, "
                                 "ProjectsTipo.DPrjTipo, Projects.TAnag, Projects.CAnag FROM (Projects INNER JOIN "
                                 "Anagrafica ON (Projects.CAnag = Anagrafica.CAnag) AND (Projects.TAnag = "
                                 "Anagrafica.TAnag)) INNER JOIN ProjectsTipo ON Projects.CPrjTipo = "
                                 "ProjectsTipo.CPrjTipo WHERE Projects.CProject=") +
                      N(CProject),
                  nullptr, dbOpenSnapshot);
  });
  const bool trovato = g.Value([&] { return rs && !rs->Eof(); }, false);
  if (!trovato) return false;
  g([&] { TBAnag->setText(NullToStr(rs->Value(QStringLiteral("RagSoc1")))); });
  g([&] { TBDProject->setText(NullToStr(rs->Value(QStringLiteral("DProject")))); });
  g([&] { TBDPrjTipo->setText(NullToStr(rs->Value(QStringLiteral("DPrjTipo")))); });
  g([&] { CPrjTipo = CInt(NullToZero(rs->Value(QStringLiteral("CPrjTipo")))); });
  g([&] { TAnag = CInt(NullToZero(rs->Value(QStringLiteral("TAnag")))); });
  g([&] { CAnag = CLng(NullToZero(rs->Value(QStringLiteral("CAnag")))); });
  g([&] { CaricaDatiModello(CProject); });
  RecordsetPtr disp;
  g([&] { disp = Disposizione(); });
  g([&] { TBDisposizione->setText(NullToStr(disp->Value(QStringLiteral("DDisp")))); });
  g([&] { CPrjDispTipo = CInt(NullToZero(disp->Value(QStringLiteral("CPrjDispTipo")))); });
  g([&] { CaricaTariffa(); });
  // A forfait rounds by the coefficient of the band, hourly work by the standard one.
  if (!Tariffa.vForfait) g([&] { OCCoeffArrot->SetValue(Impostazioni.CoeffStd); });
  return true;
}

void frmCalcPzVend::CaricaTariffa() {
  Tariffa = GetDatiDisp(TAnag, CAnag, CPrjTipo, CPrjDispTipo);
  OCFrame3->setVisible(Tariffa.vForfait);
  OCTarMin->SetValue(Tariffa.vMin);
  OCTarMax->SetValue(Tariffa.vMax);
  OCTarH->SetValue(Tariffa.vTarH);
}

RecordsetPtr frmCalcPzVend::Disposizione() const {
  RecordsetPtr disp = gRcsDisp->Clone();
  disp->SetFilter(QStringLiteral("CDisp=") + N(CDisp));
  return disp;
}

// ---------------------------------------------------------------- lists

void frmCalcPzVend::IniListEsecInt() {
  const QStringList titoli = {QString(), QStringLiteral("Lancio"), QStringLiteral("Data"), QStringLiteral("Operatore"),
                              QStringLiteral("Prestazione"), QStringLiteral("Tempo"), QStringLiteral("Costo/H"),
                              QStringLiteral("Costo")};
  const std::vector<int> larghezze = {400, 1200, 1100, 2400, 2400, 800, 900, 1000};
  const std::vector<int> allineamenti = {lvwColumnLeft, lvwColumnLeft, lvwColumnLeft, lvwColumnLeft,
                                         lvwColumnLeft, lvwColumnRight, lvwColumnRight, lvwColumnRight};
  ListViewReport(lvwEsecInt, true);
  ListViewSetColumns(lvwEsecInt, titoli, larghezze, allineamenti);
  ListViewReport(lvwEsecIntTot, false);
  ListViewSetColumns(lvwEsecIntTot, titoli, larghezze, allineamenti);
}

void frmCalcPzVend::IniListEsecExt() {
  const QStringList titoli = {QString(), QStringLiteral("Fornitura"), QStringLiteral("Data"),
                              QStringLiteral("Fornitore"), QStringLiteral("Riferimento"), QStringLiteral("Caus."),
                              QStringLiteral("Q.ta"), QStringLiteral("Costo.un"), QStringLiteral("Costo")};
  const std::vector<int> larghezze = {400, 1200, 1100, 2400, 1600, 700, 800, 1000, 1000};
  const std::vector<int> allineamenti = {lvwColumnLeft,  lvwColumnLeft,  lvwColumnLeft,  lvwColumnLeft, lvwColumnLeft,
                                         lvwColumnLeft,  lvwColumnRight, lvwColumnRight, lvwColumnRight};
  ListViewReport(lvwEsecExt, true);
  ListViewSetColumns(lvwEsecExt, titoli, larghezze, allineamenti);
  ListViewReport(lvwEsecExtTot, false);
  ListViewSetColumns(lvwEsecExtTot, titoli, larghezze, allineamenti);
}

// The row's texts, as ListViewAddLine would have written them at loading.
QString frmCalcPzVend::TestoAttivita(int riga, int colonna) const {
  const Attivita& a = attivita_[static_cast<size_t>(riga)];
  switch (colonna) {
    case 1: return Format(a.codice, QStringLiteral("0000-00000"));
    case 2: return Format(a.dtIni, QStringLiteral("dd/mm/yyyy"));
    case 3: return a.operatore;
    case 4: return a.prestazione;
    case 5: return CTempo(a.minuti);
    case 6: return Format(a.costoH, kImporto);
    case 7: return Format(Round(a.costoH * (static_cast<double>(a.minuti) / 60), 2), kImporto);
    default: return {};
  }
}

// The activities are many: each row keeps what it read, and its texts are
// made when the list shows them or a total reads them.
void frmCalcPzVend::CaricaListEsecInt() {
  Guard g(kForm, QStringLiteral("CaricaListEsecInt"));
  RecordsetPtr rs;
  g([&] {
    lvwEsecInt->setVisible(false);
    lvwEsecInt->ClearItems();
    attivita_.clear();
    rs = gRcsAct->Clone();
    rs->SetFilter(QStringLiteral("CDisp=") + N(CDisp));
    rs->SetSort(QStringLiteral("DtIni, CAttivita"));
  });
  // An activity still running has no duration: its row takes the minutes of the row before.
  qint64 minuti = 0;
  NomiAttivita nomi;
  g([&] {
    const int cAttivita = rs->FieldIndex(QStringLiteral("CAttivita"));
    const int cUtente = rs->FieldIndex(QStringLiteral("CUtente"));
    const int cPrestazione = rs->FieldIndex(QStringLiteral("CPrestazione"));
    const int dtIni = rs->FieldIndex(QStringLiteral("DtIni"));
    const int dtEnd = rs->FieldIndex(QStringLiteral("DtEnd"));
    const int costo = rs->FieldIndex(QStringLiteral("CostoH"));
    attivita_.reserve(static_cast<size_t>(rs->RecordCount()));
    for (; !rs->Eof(); rs->MoveNext()) {
      Attivita a;
      a.operatore = QStringLiteral("{sconosciuto}");
      a.prestazione = QStringLiteral("-");
      g([&] { a.operatore = nomi.Operatore(rs->Value(cUtente)); });
      g([&] { a.prestazione = nomi.Prestazione(rs->Value(cPrestazione)); });
      g([&] { minuti = DateDiff(QStringLiteral("n"), rs->Value(dtIni), rs->Value(dtEnd)); });
      g([&] { a.costoH = CDbl(NullToZero(rs->Value(costo))); });
      a.minuti = minuti;
      a.codice = rs->Value(cAttivita);
      a.dtIni = rs->Value(dtIni);
      attivita_.push_back(std::move(a));
    }
  });
  g([&] {
    ListViewAddLines(
        lvwEsecInt, static_cast<int>(attivita_.size()),
        [this](int riga, int colonna) { return TestoAttivita(riga, colonna); },
        [this](int riga) {
          return QStringLiteral("K") + Format(attivita_[static_cast<size_t>(riga)].codice, QStringLiteral("000000000"));
        },
        true);
  });
  g([&] { lvwEsecInt->setVisible(true); });
  g([&] { CalcTotInt(); });
}

void frmCalcPzVend::CaricaListEsecExt() {
  Guard g(kForm, QStringLiteral("CaricaListEsecExt"));
  g([&] { IniListEsecExt(); });
  RecordsetPtr rs;
  g([&] {
    lvwEsecExt->setVisible(false);
    rs = gRcsForn->Clone();
    rs->SetFilter(QStringLiteral("CDisp=") + N(CDisp));
    rs->SetSort(QStringLiteral("DataDoc, NDoc"));
  });
  g([&] {
    for (; !rs->Eof(); rs->MoveNext()) {
      const double qta = CDbl(NullToZero(rs->Value(QStringLiteral("Qta"))));
      const double importo = Round(CDbl(NullToZero(rs->Value(QStringLiteral("Importo")))), 2);
      const QVariant nDoc = rs->Value(QStringLiteral("NDoc"));
      ListViewAddLine(lvwEsecExt,
                      {QString(), Format(nDoc, QStringLiteral("0000-00000")),
                       Format(rs->Value(QStringLiteral("DataDoc")), QStringLiteral("dd/mm/yyyy")),
                       NullToStr(rs->Value(QStringLiteral("RagSoc1"))),
                       NullToStr(rs->Value(QStringLiteral("Riferimento"))),
                       NullToStr(rs->Value(QStringLiteral("Sigla"))), Format(qta, QStringLiteral("#,##0")),
                       Format(importo, kImporto), Format(Round(qta * importo, 2), kImporto)},
                      QStringLiteral("K") + Format(nDoc, QStringLiteral("000000000")) +
                          Format(rs->Value(QStringLiteral("Riga")), QStringLiteral("0000")),
                      -1, {}, false, true);
    }
  });
  g([&] { lvwEsecExt->setVisible(true); });
  g([&] { CalcTotExt(); });
}

// The totals come from the texts of the rows, so they sum costs already
// rounded to two decimals, as the user reads them.
void frmCalcPzVend::CalcTotInt() {
  Guard g(kForm, QStringLiteral("CalcTotInt"));
  int minuti = 0;
  double somma = 0;
  g([&] { lvwEsecIntTot->ClearItems(); });
  g([&] {
    for (int i = 0; i < lvwEsecInt->Count(); ++i) {
      if (!lvwEsecInt->Checked(i)) continue;
      const QStringList tempo = lvwEsecInt->Text(i, 5).split(QLatin1Char(':'));
      minuti += CInt(tempo.value(0)) * 60 + CInt(tempo.value(1));
      somma += Numero(lvwEsecInt->Text(i, 7));
    }
  });
  g([&] {
    ListViewAddLine(lvwEsecIntTot, {QStringLiteral(" "), QStringLiteral(" "), QStringLiteral(" "), QStringLiteral(" "),
                                    QStringLiteral(" "), CTempo(minuti), QStringLiteral(" "), Format(somma, kImporto)},
                    QStringLiteral("K"));
  });
  MinutiTot = minuti;
  CalcCostoTot();
  CalcValLavInt();
}

void frmCalcPzVend::CalcTotExt() {
  Guard g(kForm, QStringLiteral("CalcTotExt"));
  double somma = 0;
  g([&] { lvwEsecExtTot->ClearItems(); });
  g([&] {
    for (int i = 0; i < lvwEsecExt->Count(); ++i)
      if (lvwEsecExt->Checked(i)) somma += Numero(lvwEsecExt->Text(i, 8));
  });
  g([&] {
    QStringList riga(9, QStringLiteral(" "));
    riga[8] = Format(somma, kImporto);
    ListViewAddLine(lvwEsecExtTot, riga, QStringLiteral("K"));
  });
  CalcCostoTot();
  CalcValLavExt();
}

// ---------------------------------------------------------------- the chain of figures
// Each step is an assignment that may fail: it is then skipped, the figure
// keeps its last value, and the chain goes on.

void frmCalcPzVend::CalcCostoTot() {
  Guard g(kForm, QStringLiteral("CalcCostoTot"), Guard::Silent);
  g([&] { OCCostoTot->SetValue(Numero(Totale(lvwEsecExtTot, 8)) + Numero(Totale(lvwEsecIntTot, 7))); });
}

void frmCalcPzVend::CalcValLavInt() {
  Guard g(kForm, QStringLiteral("CalcValLavInt"), Guard::Silent);
  g([&] { OCValLavInt->SetValue(Round(OCTarH->Value() * MinutiTot / 60, 2)); });
  CalcValTot();
}

void frmCalcPzVend::CalcValLavExt() {
  Guard g(kForm, QStringLiteral("CalcValLavExt"), Guard::Silent);
  g([&] { OCValLavExt->SetValue(Round((OCPercRicLavExt->Value() + 1) * Numero(Totale(lvwEsecExtTot, 8)), 2)); });
  CalcValTot();
}

void frmCalcPzVend::CalcValTot() {
  Guard g(kForm, QStringLiteral("CalcValTot"), Guard::Silent);
  g([&] { OCValTot->SetValue(OCValLavExt->Value() + OCValLavInt->Value()); });
  CalcCostoTot();
  g([&] {
    OCMargPercTot->SetValue(OCValTot->Value() > 0 ? 1 - Dividi(OCCostoTot->Value(), OCValTot->Value()) : 0);
  });
  g([&] { OCMargTot->SetValue(OCValTot->Value() - OCCostoTot->Value()); });
  CalcValUnit();
}

void frmCalcPzVend::CalcValUnit() {
  Guard g(kForm, QStringLiteral("CalcValUnit"), Guard::Silent);
  if (OCQta->Value() > 0) {
    g([&] { OCValUnit->SetValue(Round(Dividi(OCValTot->Value(), OCQta->Value()), 2)); });
    g([&] { OCCostoUnit->SetValue(Round(Dividi(OCCostoTot->Value(), OCQta->Value()), 2)); });
  } else {
    g([&] { OCValUnit->SetValue(0); });
    g([&] { OCCostoUnit->SetValue(0); });
  }
  CalcPzVend();
}

// The price: locked as the disposition holds it, or worked out from the unit
// value, the minimum margin over the unit cost, the rounding and, for a
// forfait, the band of the tariff.
void frmCalcPzVend::CalcPzVend() {
  if (calcolando_) return;
  Guard g(kForm, QStringLiteral("CalcPzVend"));
  calcolando_ = true;
  RecordsetPtr disp;
  g([&] { disp = Disposizione(); });
  const double costo = OCCostoUnit->Value();
  const double valore = OCValUnit->Value();
  const double minimo = OCPercRicMin->Value();
  const double coeff = OCCoeffArrot->Value();
  const auto pavimento = [&] { return ArrotMultiplo(Round((1 + minimo) * costo, 2), coeff); };
  double prezzo = 0;
  const bool bloccato = g.Value([&] { return CBool(NullToZero(disp->Value(QStringLiteral("DefPzVend")))); }, false);
  if (bloccato) {
    g([&] { prezzo = CDbl(NullToZero(disp->Value(QStringLiteral("PzVend")))); });
    Prezzo(true);
  } else {
    Prezzo(false);
    double m = 0;
    if (!Tariffa.vForfait) {
      g([&] { m = valore != 0 ? 1 - Dividi(costo, valore) : 1; });
      prezzo = minimo > m ? pavimento() : ArrotMultiplo(valore, coeff);
    } else {
      // No guard for a zero value here: the failure is logged and m stays 0.
      g([&] { m = 1 - Dividi(costo, valore); });
      prezzo = minimo > m ? pavimento() : ArrotMultiplo(valore, coeff);
      if (OCTarMin->Value() > prezzo) {
        prezzo = OCTarMin->Value();
      } else if (OCTarMax->Value() < prezzo) {
        // The minimum margin goes before the top of the band.
        prezzo = OCTarMax->Value();
        double m2 = 0;
        g([&] { m2 = 1 - Dividi(costo, prezzo); });
        if (minimo > m2) prezzo = pavimento();
      }
    }
  }
  g([&] { OCPzVend->SetValue(prezzo); });
  MarginiReali();
  calcolando_ = false;
}

void frmCalcPzVend::MarginiReali() {
  Guard g(kForm, QStringLiteral("CalcPzVend"));
  const double prezzo = OCPzVend->Value();
  const double costo = OCCostoUnit->Value();
  g([&] { OCPercReale->SetValue(costo > 0 ? Dividi(prezzo, costo) - 1 : 0); });
  g([&] { OCMargUnReal->SetValue(prezzo - costo); });
}

void frmCalcPzVend::Prezzo(bool bloccato) {
  OCPzVend->setReadOnly(bloccato);
  OCPzVend->setButtonSymbols(bloccato ? QAbstractSpinBox::NoButtons : QAbstractSpinBox::UpDownArrows);
  Colore(OCPzVend, QPalette::Base, bloccato ? kRossoBloccato : kVerdeAperto);
  // The tool tip stays once set, as the system leaves it.
  if (bloccato) OCPzVend->setToolTip(QStringLiteral("Premi tasto dx del mouse per sbloccare!"));
  mnuSblocca->setEnabled(bloccato);
}

void frmCalcPzVend::OCPzVend_Change() {
  if (calcolando_) return;
  calcolando_ = true;
  MarginiReali();
  calcolando_ = false;
}

// ---------------------------------------------------------------- commands

// The lock goes in memory only: the database keeps its value.
void frmCalcPzVend::mnuSblocca_Click() {
  Guard g(kForm, QStringLiteral("mnuSblocca_Click"));
  g([&] {
    RecordsetPtr disp = Disposizione();
    disp->SetValue(QStringLiteral("DefPzVend"), false);
    disp->Update();
  });
  Prezzo(false);
}

void frmCalcPzVend::mnuSettings_Click() {
  frmSettings f(this);
  f.Form_Load();
  f.exec();
}

void frmCalcPzVend::mnuH_Click() {
  OCFrame3->setVisible(true);
  Colore(OCFrame3, QPalette::Window, QColor(Qt::red));
}

void frmCalcPzVend::Ricalcola() {
  if (MsgBox(QStringLiteral("Sei sicuro di voler ricalcolare il prezzo di vendita?"),
             vbYesNo | vbQuestion | vbDefaultButton2) == vbYes)
    CalcPzVend();
}

void frmCalcPzVend::Conferma(int azione) {
  if (azione == 0) {
    close();
    return;
  }
  if (!(OCPzVend->Value() > 0)) {
    MsgBox(QStringLiteral("Devi inserire un prezzo di vendita per confermare!"), vbExclamation);
    return;
  }
  Guard g(kForm, QStringLiteral("Conferma"));
  double prezzo = OCPzVend->Value();
  if (Chiamante == kOCX)
    g([&] { gOcxEventS->SendDataFattDiff(prezzo); });
  else
    emit SetPzVend(prezzo);
  close();
}

void frmCalcPzVend::closeEvent(QCloseEvent* e) {
  calcolando_ = false;
  e->accept();
}

void frmCalcPzVend::reject() { close(); }

}  // namespace prestkt
