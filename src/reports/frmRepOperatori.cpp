#include "frmRepOperatori.h"

#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QSignalBlocker>
#include <algorithm>
#include <vector>

#include "AnteprimaStampa.h"
#include "Guard.h"
#include "Procedure.h"
#include "ProcedureUi.h"

namespace prestkt {

namespace {

const QString kForm = QStringLiteral("frmRepOperatori");
const QString kArial = QStringLiteral("Arial");
const QColor kGrigioTesta(200, 200, 200);
const QColor kGrigioMedie(230, 230, 230);

// The page lies down: A4, 29.7 cm wide and 21 high.
constexpr double kLarghezzaPagina = Documento::kAltezza;
constexpr double kNome = 5.0;     // the box of the operator's name
constexpr double kCella = 0.5;    // the box of a day, of "GL" and of "M"
constexpr double kRiga = 0.5;     // the height of a row, and the step to the next
constexpr double kLimite = 18.0;  // an operator's row that would start lower goes to a new page
constexpr double kPuntiCella = 6;      // the largest size of a cell's text
constexpr double kSpazioCella = kCella - 0.05;  // the width a cell's text may take


// The boxes of the grid: the name, then the days 1 to n, "GL" (n + 1) and "M"
// (n + 2). The grid stands in the middle of the page.
struct Griglia {
  explicit Griglia(int giorni) : n(giorni), x0((kLarghezzaPagina - Larghezza()) / 2) {}
  double Larghezza() const { return kNome + (n + 2) * kCella; }
  // The left edge of column c, 1 to n + 2.
  double Colonna(int c) const { return x0 + kNome + (c - 1) * kCella; }

  void Caselle(Documento& doc, double y, const QColor* fondo) const {
    if (fondo) doc.Rettangolo(x0, y, x0 + Larghezza(), y + kRiga, *fondo);
    doc.Cornice(x0, y, x0 + kNome, y + kRiga);
    for (int c = 1; c <= n + 2; ++c) doc.Cornice(Colonna(c), y, Colonna(c) + kCella, y + kRiga);
  }

  // The text of the name box; a name longer than its box is cut there, so that
  // it never runs over the days.
  void Intestazione(Documento& doc, double y, const QString& testo, bool grassetto) const {
    doc.Font(kArial, 7, grassetto);
    QString t = testo;
    while (!t.isEmpty() && doc.LarghezzaTesto(t) > kNome - 0.2) t.chop(1);
    doc.Testo(x0 + 0.1, y + (kRiga - doc.AltezzaRiga()) / 2, t);
  }

  // A text centred in the box of column c; one wider than the box ("100:05")
  // takes a smaller size until it fits.
  void Cella(Documento& doc, int c, double y, const QString& testo, bool grassetto = false) const {
    double punti = grassetto ? kPuntiCella : puntiTempo;
    doc.Font(kArial, punti, grassetto);
    while (punti > 2 && doc.LarghezzaTesto(testo) > kSpazioCella) doc.Font(kArial, punti -= 0.25, grassetto);
    doc.Testo(Colonna(c) + kCella / 2, y + (kRiga - doc.AltezzaRiga()) / 2, testo, Allinea::Centro);
  }

  // The size at which a time of the usual width fits its box: every time of
  // the grid is printed at it, so that the columns read alike.
  static double PuntiTempo() {
    Documento metro;
    double punti = kPuntiCella;
    metro.Font(kArial, punti);
    while (punti > 2 && metro.LarghezzaTesto(QStringLiteral("00:00")) > kSpazioCella) metro.Font(kArial, punti -= 0.25);
    return punti;
  }

  int n;
  double x0;
  double puntiTempo = PuntiTempo();
};

// The head of every page, the same for both prints; gives the top of the first row.
double TestaPagina(Documento& doc, const Griglia& griglia, const QString& mese, const QString& momento) {
  const double centro = kLarghezzaPagina / 2;
  doc.Font(kArial, 14, true);
  doc.Testo(centro, 1.0, QStringLiteral("REPORT OPERATORI ANALITICO"), Allinea::Centro);
  doc.Font(kArial, 11);
  doc.Testo(centro, 1.8, mese, Allinea::Centro);
  doc.Font(kArial, 8);
  doc.Testo(centro, 2.4, momento, Allinea::Centro);
  const double y = 3.0;
  griglia.Caselle(doc, y, &kGrigioTesta);
  griglia.Intestazione(doc, y, QStringLiteral("OPERATORE"), true);
  for (int d = 1; d <= griglia.n; ++d) griglia.Cella(doc, d, y, QString::number(d), true);
  griglia.Cella(doc, griglia.n + 1, y, QStringLiteral("GL"), true);
  griglia.Cella(doc, griglia.n + 2, y, QStringLiteral("M"), true);
  return y + kRiga;
}

// The minutes of a day row; a row whose minutes could not be counted holds
// Null, which no sum takes.
qint64 MinutiDi(const QVariant& v) {
  if (IsNull(v)) Raise(err::InvalidUseOfNull);
  return v.toLongLong();
}

// Minutes added to a day: a Null stays Null, as a sum with Null is Null.
QVariant Aggiungi(const QVariant& minuti, qint64 altri) {
  return IsNull(minuti) ? Null : QVariant(minuti.toLongLong() + altri);
}

qint64 MediaMinuti(qint64 totale, qint64 quanti) {
  return static_cast<qint64>(Round(Dividi(static_cast<double>(totale), static_cast<double>(quanti)), 0));
}

// A period never chosen (no activity at all) stands at the date zero, 30
// December 1899: its print reads nothing and shows the 30 days of that month.
QDateTime DataZero() { return QDateTime(QDate(1899, 12, 30), QTime(0, 0)); }

const QString kLettura = QStringLiteral(
    "SELECT ActivitiesProd.CAttivita, [ABC:Dipendenti].Nome, ActivitiesProd.CProject, ActivitiesProd.CDisp, "
    "ActivitiesProd.CUtente, ActivitiesProd.CPrestazione, ActivitiesProd.DtIni, ActivitiesProd.DtEnd, "
    "ActivitiesProd.DtRealIni, ActivitiesProd.DtRealEnd, ActivitiesProd.Stato, ActivitiesProd.TDocRif, "
    "ActivitiesProd.NDocRif, ActivitiesProd.CostoH FROM ActivitiesProd INNER JOIN [ABC:Dipendenti] ON "
    "ActivitiesProd.CUtente = [ABC:Dipendenti].CDip ");

}  // namespace


// ---------------------------------------------------------------- the screen

frmRepOperatori::frmRepOperatori(QWidget* parent) : Scheda(parent, kForm), DataIni(DataZero()), DataFine(DataZero()) {
  CreaToolbar({{1, QStringLiteral("Esci"), QStringLiteral("application-exit")},
               {3, QStringLiteral("Stampa"), QStringLiteral("document-print")}});
  CBAnno = Nome(new QComboBox(this), QStringLiteral("CBAnno"));
  CBMese = Nome(new QComboBox(this), QStringLiteral("CBMese"));
  CBMese->setMinimumWidth(130);
  CBOperatore = Nome(new QComboBox(this), QStringLiteral("CBOperatore"));
  CBOperatore->setMinimumWidth(220);
  Option1[0] = Nome(new QRadioButton(QStringLiteral("Sintetico"), this), QStringLiteral("Option1_0"));
  Option1[1] = Nome(new QRadioButton(QStringLiteral("Analitico"), this), QStringLiteral("Option1_1"));
  ProgressBar1 = Nome(new QProgressBar(this), QStringLiteral("ProgressBar1"));
  ProgressBar1->setRange(0, 100);
  ProgressBar1->setValue(0);

  auto* periodo = new QGroupBox(QStringLiteral("Periodo"), this);
  auto* p = new QGridLayout(periodo);
  p->addWidget(new QLabel(QStringLiteral("Anno:"), this), 0, 0);
  p->addWidget(CBAnno, 0, 1);
  p->addWidget(new QLabel(QStringLiteral("Mese:"), this), 0, 2);
  p->addWidget(CBMese, 0, 3);
  p->setColumnStretch(4, 1);
  auto* tipo = new QGroupBox(QStringLiteral("Tipo report"), this);
  auto* t = new QGridLayout(tipo);
  t->addWidget(Option1[0], 0, 0);
  t->addWidget(Option1[1], 0, 1);
  t->addWidget(new QLabel(QStringLiteral("Operatore:"), this), 1, 0);
  t->addWidget(CBOperatore, 1, 1, 1, 2);
  t->setColumnStretch(2, 1);
  corpo->addWidget(periodo);
  corpo->addWidget(tipo);
  corpo->addWidget(ProgressBar1);

  // The synthetic print is the one chosen when the screen opens.
  Option1[0]->setChecked(true);
  CBOperatore->setEnabled(false);

  connect(this, &Scheda::ToolbarClick, this, &frmRepOperatori::Toolbar1_ButtonClick);
  // A change of a combo, by the user or by the code, is its click.
  const auto clic = [this](QComboBox* combo, void (frmRepOperatori::*azione)()) {
    connect(combo, &QComboBox::currentIndexChanged, this, [this, azione](int i) {
      if (i >= 0) (this->*azione)();
    });
  };
  clic(CBAnno, &frmRepOperatori::CBAnno_Click);
  clic(CBMese, &frmRepOperatori::CBMese_Click);
  clic(CBOperatore, &frmRepOperatori::CBOperatore_Click);
  for (int i = 0; i < 2; ++i)
    connect(Option1[i], &QRadioButton::toggled, this, [this, i](bool scelto) {
      if (scelto) Option1_Click(i);
    });
}

QString frmRepOperatori::SqlOperatori() {
  return QStringLiteral(
      "SELECT CAnag AS CDip, RagSoc1 AS Nome, Eliminato FROM Anagrafica WHERE TAnag=10 AND Eliminato=0 "
      "ORDER BY RagSoc1; ");
}

// The groups are asked in their order: "the last in the list" is the latest.
QString frmRepOperatori::SqlAnni() {
  return QStringLiteral(
      "SELECT Year([ActivitiesProd]![DtIni]) AS Anni FROM ActivitiesProd GROUP BY Year([ActivitiesProd]![DtIni]) "
      "ORDER BY Year([ActivitiesProd]![DtIni]); ");
}

QString frmRepOperatori::SqlMesi(const QString& anno) {
  return QStringLiteral(
             "SELECT Month([ActivitiesProd]![DtIni]) AS Mese FROM ActivitiesProd WHERE "
             "Year([ActivitiesProd]![DtIni])=") +
         anno +
         QStringLiteral(" GROUP BY Month([ActivitiesProd]![DtIni]) ORDER BY Month([ActivitiesProd]![DtIni]) ");
}

QString frmRepOperatori::SqlSintetico(const QDateTime& dataIni, const QDateTime& dataFine) {
  return kLettura + QStringLiteral("WHERE ActivitiesProd.DtIni Between ") + DataSql(dataIni) +
         QStringLiteral(" And ") + DataSql(dataFine) + QStringLiteral(" ORDER BY ActivitiesProd.CUtente");
}

QString frmRepOperatori::SqlAnalitico(const QDateTime& dataIni, const QDateTime& dataFine) {
  return kLettura + QStringLiteral("WHERE (((ActivitiesProd.DtIni) Between ") + DataSql(dataIni) +
         QStringLiteral(" And ") + DataSql(dataFine) + QStringLiteral(")); ");
}

void frmRepOperatori::Form_Load() {
  Guard g(kForm, QStringLiteral("Form_Load"), Guard::Silent);
  g([&] { CaricaCombo(CBOperatore, SqlOperatori(), 0, 1, {}, QStringLiteral("{tutti gli operatori}")); });
  g([&] { CaricaCombo(CBAnno, SqlAnni(), 0, 0); });
  // Choosing the latest year fills its months, and the latest month sets the period.
  g([&] { CBAnno->setCurrentIndex(CBAnno->count() - 1); });
  g([&] { Prepara(QStringLiteral("Report operatori")); });
}

void frmRepOperatori::CBAnno_Click() {
  Guard g(kForm, QStringLiteral("CBAnno_Click"), Guard::Silent);
  const QString anno = CBAnno->currentText();
  g([&] {
    const QSignalBlocker blocco(CBMese);
    CBMese->clear();
  });
  RecordsetPtr rs;
  g([&] { ApriRecordset(rs, SqlMesi(anno), nullptr, dbOpenSnapshot); });
  g([&] {
    // Filling chooses nothing; the selection below is the one click.
    const QSignalBlocker blocco(CBMese);
    for (rs->MoveFirst(); !rs->Eof(); rs->MoveNext()) {
      const int mese = CInt(rs->Value(QStringLiteral("Mese")));
      const QDateTime primo = CDate(QStringLiteral("01/") + Format(mese, QStringLiteral("00")) +
                                    QStringLiteral("/") + anno);
      CBMese->addItem(Format(primo, QStringLiteral("mmmm")), mese);
    }
    CBMese->setCurrentIndex(-1);
  });
  g([&] { CBMese->setCurrentIndex(CBMese->count() - 1); });
}

// The month from its first day to its last, both at midnight.
void frmRepOperatori::CBMese_Click() {
  Guard g(kForm, QStringLiteral("CBMese_Click"), Guard::Silent);
  g([&] {
    const QDate primo(CInt(CBAnno->currentText()), GetCBValue(CBMese), 1);
    if (!primo.isValid()) Raise(err::TypeMismatch);
    const auto periodo = PeriodoDelMese(primo);
    DataIni = QDateTime(periodo.first, QTime(0, 0));
    DataFine = QDateTime(periodo.second, QTime(0, 0));
  });
}

void frmRepOperatori::CBOperatore_Click() {
  Guard g(kForm, QStringLiteral("CBOperatore_Click"), Guard::Silent);
  g([&] { COperatore = static_cast<qint16>(CInt(GetCBValue(CBOperatore))); });
}

void frmRepOperatori::Option1_Click(int index) {
  Guard g(kForm, QStringLiteral("Option1_Click"), Guard::Silent);
  g([&] { TipoReport = static_cast<qint16>(index); });
  g([&] { CBOperatore->setEnabled(index == 1); });
}

void frmRepOperatori::Toolbar1_ButtonClick(int index) {
  if (index == 1) close();
  if (index == 3) {
    if (TipoReport > 0)
      RepAnalitico();
    else
      RepSintetico();
  }
}

void frmRepOperatori::RepSintetico() {
  Report(QStringLiteral("RepSintetico"), SqlSintetico(DataIni, DataFine), false);
}

// The read leaves the order to the engine, and goes to its end and back to know its count.
void frmRepOperatori::RepAnalitico() {
  Report(QStringLiteral("RepAnalitico"), SqlAnalitico(DataIni, DataFine), true);
}

void frmRepOperatori::Report(const QString& procedura, const QString& sql, bool contaDalFondo) {
  Guard g(kForm, procedura);
  LeggiAttivita(g, sql, contaDalFondo);
  StampaGriglia(g);
}

// One pass over the activities of the month: each finds its operator and its
// day by a filter of the two working recordsets, and adds its minutes there.
// An activity counts whole on the day it started.
void frmRepOperatori::LeggiAttivita(Guard& g, const QString& sql, bool contaDalFondo) {
  RigheLette = 0;
  g([&] {
    rcsOperatori = Recordset::Create();
    rcsOperatori->Append(QStringLiteral("CUtente"), adInteger);
    rcsOperatori->Append(QStringLiteral("Operatore"), adVarChar, 100);
    rcsOperatori->Open();
  });
  g([&] {
    rcsGiorni = Recordset::Create();
    rcsGiorni->Append(QStringLiteral("CUtente"), adInteger);
    rcsGiorni->Append(QStringLiteral("Data"), adDate);
    rcsGiorni->Append(QStringLiteral("Minuti"), adBigInt);
    rcsGiorni->Open();
  });
  RecordsetPtr rs;
  g([&] { ApriRecordset(rs, sql, nullptr, dbOpenSnapshot); });
  if (contaDalFondo) {
    g([&] { rs->MoveLast(); });
    g([&] { rs->MoveFirst(); });
  }
  g([&] { RigheLette = rs->RecordCount(); });
  g([&] { ProgressBar1->setValue(0); });
  const QString utente = QStringLiteral("CUtente=");
  while (g.Value([&] { return !rs->Eof(); }, false)) {
    g([&] { ProgressBar1->setValue(static_cast<int>(rs->AbsolutePosition() * 100.0 / RigheLette)); });
    QString questo;
    g([&] { questo = utente + CStr(rs->Value(QStringLiteral("CUtente"))); });
    g([&] { rcsOperatori->SetFilter(questo); });
    if (g.If([&] { return rcsOperatori->Eof(); })) {
      g([&] { rcsOperatori->AddNew(); });
      g([&] { rcsOperatori->SetValue(QStringLiteral("CUtente"), rs->Value(QStringLiteral("CUtente"))); });
      g([&] { rcsOperatori->SetValue(QStringLiteral("Operatore"), rs->Value(QStringLiteral("Nome"))); });
      g([&] { rcsOperatori->Update(); });
    }
    g([&] {
      rcsGiorni->SetFilter(questo + QStringLiteral(" AND Data=") + DataSqlIso(rs->Value(QStringLiteral("DtIni"))));
    });
    const auto minuti = [&] { return MinutiTra(rs->Value(QStringLiteral("DtIni")), rs->Value(QStringLiteral("DtEnd"))); };
    if (g.If([&] { return !rcsGiorni->Eof(); })) {
      g([&] {
        const qint64 m = minuti();
        rcsGiorni->SetValue(QStringLiteral("Minuti"), Aggiungi(rcsGiorni->Value(QStringLiteral("Minuti")), m));
      });
      g([&] { rcsGiorni->Update(); });
    } else {
      // A running activity has no end: its minutes fail, and its day stays with none.
      g([&] { rcsGiorni->AddNew(); });
      g([&] { rcsGiorni->SetValue(QStringLiteral("CUtente"), rs->Value(QStringLiteral("CUtente"))); });
      g([&] {
        rcsGiorni->SetValue(QStringLiteral("Data"),
                            Format(rs->Value(QStringLiteral("DtIni")), QStringLiteral("dd/mm/yyyy")));
      });
      g([&] { rcsGiorni->SetValue(QStringLiteral("Minuti"), minuti()); });
      g([&] { rcsGiorni->Update(); });
    }
    g([&] { rs->MoveNext(); });
  }
}

// The grid: one pass over the operators by name, each with its days by date;
// the columns of the days gather what the last row shows.
void frmRepOperatori::StampaGriglia(Guard& g) {
  int n = 0;
  g([&] { n = DataFine.date().day(); });
  const Griglia griglia(n);
  std::vector<qint16> conta(static_cast<size_t>(n) + 1, 0);   // operators who worked on the day
  std::vector<qint32> totale(static_cast<size_t>(n) + 1, 0);  // minutes of the day
  const QString mese = CBMese->currentText() + QStringLiteral(" ") + CBAnno->currentText();
  const QString momento = Format(Now(), QStringLiteral("dd/mm/yyyy hh:nn"));

  Documento doc;
  doc.Orizzontale(true);
  double y = 0;
  g([&] { doc.Titolo(QStringLiteral("Report operatori")); });
  g([&] { y = TestaPagina(doc, griglia, mese, momento); });
  g([&] { rcsOperatori->SetFilter(QString()); });
  g([&] { rcsOperatori->SetSort(QStringLiteral("Operatore")); });
  g([&] { rcsOperatori->MoveFirst(); });
  while (g.Value([&] { return !rcsOperatori->Eof(); }, false)) {
    if (g.If([&] { return y > kLimite; })) {
      g([&] { doc.NuovaPagina(); });
      g([&] { y = TestaPagina(doc, griglia, mese, momento); });
    }
    g([&] { griglia.Caselle(doc, y, nullptr); });
    g([&] { griglia.Intestazione(doc, y, NullToStr(rcsOperatori->Value(QStringLiteral("Operatore"))), false); });
    g([&] { rcsGiorni->SetFilter(QStringLiteral("CUtente=") + CStr(rcsOperatori->Value(QStringLiteral("CUtente")))); });
    g([&] { rcsGiorni->SetSort(QStringLiteral("Data")); });
    g([&] { rcsGiorni->MoveFirst(); });
    qint64 giorni = 0, minuti = 0;
    while (g.Value([&] { return !rcsGiorni->Eof(); }, false)) {
      size_t d = 0;
      g([&] { d = static_cast<size_t>(CDate(rcsGiorni->Value(QStringLiteral("Data"))).date().day()); });
      const auto questi = [&] { return MinutiDi(rcsGiorni->Value(QStringLiteral("Minuti"))); };
      ++giorni;
      g([&] { minuti += questi(); });
      g([&] { conta.at(d) += 1; });
      g([&] { totale.at(d) += static_cast<qint32>(questi()); });
      g([&] { griglia.Cella(doc, static_cast<int>(d), y, CTempo(questi())); });
      g([&] { rcsGiorni->MoveNext(); });
    }
    if (giorni > 0) {
      g([&] { griglia.Cella(doc, n + 1, y, QString::number(giorni)); });
      g([&] { griglia.Cella(doc, n + 2, y, CTempo(MediaMinuti(minuti, giorni))); });
    }
    y += kRiga;
    g([&] { rcsOperatori->MoveNext(); });
  }

  // The means over all operators; a day nobody worked stays empty and out of C and T.
  g([&] { griglia.Caselle(doc, y, &kGrigioMedie); });
  g([&] { griglia.Intestazione(doc, y, QStringLiteral("Valori medi"), true); });
  qint64 c = 0, t = 0;
  for (int d = 1; d <= n; ++d) {
    if (conta[static_cast<size_t>(d)] <= 0) continue;
    c += conta[static_cast<size_t>(d)];
    t += totale[static_cast<size_t>(d)];
    g([&] { griglia.Cella(doc, d, y, CTempo(MediaMinuti(totale[static_cast<size_t>(d)], conta[static_cast<size_t>(d)]))); });
  }
  g([&] {
    griglia.Cella(doc, n + 1, y,
                  Format(Dividi(static_cast<double>(c), rcsOperatori->RecordCount()), QStringLiteral("#,##0.0")));
  });
  g([&] { griglia.Cella(doc, n + 2, y, CTempo(MediaMinuti(t, c))); });

  g([&] {
    if (!PrnVornX1) PrnVornX1 = std::make_shared<AnteprimaStampa>(this);
    PrnVornX1->Stampa(doc);
  });
}

}  // namespace prestkt
