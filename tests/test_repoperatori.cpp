// "Report operatori": the filters by year and month, the grid of a month read
// in one pass over its activities, the last row of means, the page breaks,
// and both prints on paper (a PDF read back as text and as a picture).
#include <gtest/gtest.h>

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QImage>
#include <QProcess>
#include <QProgressBar>
#include <QRadioButton>
#include <QTemporaryDir>
#include <map>

#include "DemoData.h"
#include "TestSupport.h"
#include "frmRepOperatori.h"

using namespace prestkt;
using namespace prestkt::test;

namespace {

// A printer that keeps the documents it was given.
struct StampanteProva : Stampante {
  bool Stampa(const Documento& d) override {
    stampati.push_back(d);
    return true;
  }
  std::vector<Documento> stampati;
};

// The page lying down in a PDF file, and the document kept beside it.
struct PdfProva : StampantePdf {
  using StampantePdf::StampantePdf;
  bool Stampa(const Documento& d) override {
    stampati.push_back(d);
    return StampantePdf::Stampa(d);
  }
  std::vector<Documento> stampati;
};

void Operatore(TestDb& t, int cAnag, const char* nome, bool eliminato = false) {
  t.Exec(QStringLiteral("INSERT INTO Anagrafica (TAnag, CAnag, RagSoc1, Eliminato) VALUES (10, %1, '%2', %3)")
             .arg(cAnag)
             .arg(QString::fromUtf8(nome))
             .arg(eliminato ? -1 : 0));
}

// An activity from ini to fine ("yyyy-mm-dd hh:mm:ss"); no fine: still running.
void Attivita(TestDb& t, int codice, int utente, const char* ini, const char* fine = nullptr) {
  t.Exec(QStringLiteral("INSERT INTO ActivitiesProd (CAttivita, CProject, CDisp, CUtente, CPrestazione, DtIni, DtEnd) "
                        "VALUES (%1, 202500001, 1, %2, 1, '%3', %4)")
             .arg(codice)
             .arg(utente)
             .arg(QString::fromLatin1(ini))
             .arg(fine ? QStringLiteral("'%1'").arg(QString::fromLatin1(fine)) : QStringLiteral("NULL")));
}

// The month worked out by hand, February 2025 (28 days):
//
//   Rossi Mario (1)
//     01/02 00:00-02:00 120 and 00:00-00:30 30   day 1: 150 = 02:30
//     10/02 08:00-09:01                           day 10:  61 = 01:01
//     20/02 00:00-01:15                           day 20:  75 = 01:15
//     28/02 00:00-00:45                           day 28:  45 = 00:45 (midnight of the last day: in)
//     28/02 23:59-01/03 00:29                     after midnight of the last day: out
//     31/01 23:00 and 01/03 00:00                 other months: out
//     GL 4, M = 331 / 4 = 82.75 -> 83 = 01:23
//   Bianchi Luca (2)
//     01/02 00:00-01:30                           day 1:  90 = 01:30
//     10/02 22:00-11/02 02:00                     day 10: 240 = 04:00, all of it on the day it began
//     15/02 09:00, still running                  day 15: a day without minutes, its cell empty
//     GL 3, M = (90 + 240) / 3 = 110 = 01:50
//   Valori medi
//     day 1:  (150 + 90) / 2 = 120     = 02:00
//     day 10: (61 + 240) / 2 = 150.5   -> 150 (half to even) = 02:30
//     day 15: 0 / 1                    = 00:00
//     day 20: 75 / 1                   = 01:15
//     day 28: 45 / 1                   = 00:45
//     C = 2 + 2 + 1 + 1 + 1 = 7 days; GL = 7 / 2 operators = 3,5
//     T = 240 + 301 + 0 + 75 + 45 = 661; M = 661 / 7 = 94.43 -> 94 = 01:34
//   Other days, as the 2nd or the 11th, stay empty in every row.
void MeseAMano(TestDb& t) {
  Operatore(t, 1, "Rossi Mario");
  Operatore(t, 2, "Bianchi Luca");
  Attivita(t, 1, 1, "2025-02-01 00:00:00", "2025-02-01 02:00:00");
  Attivita(t, 2, 1, "2025-02-01 00:00:00", "2025-02-01 00:30:00");
  Attivita(t, 3, 1, "2025-02-10 08:00:00", "2025-02-10 09:01:00");
  Attivita(t, 4, 1, "2025-02-20 00:00:00", "2025-02-20 01:15:00");
  Attivita(t, 5, 1, "2025-02-28 00:00:00", "2025-02-28 00:45:00");
  Attivita(t, 6, 1, "2025-02-28 23:59:00", "2025-03-01 00:29:00");
  Attivita(t, 7, 1, "2025-01-31 23:00:00", "2025-01-31 23:30:00");
  Attivita(t, 8, 1, "2025-03-01 00:00:00", "2025-03-01 01:00:00");
  Attivita(t, 9, 2, "2025-02-01 00:00:00", "2025-02-01 01:30:00");
  Attivita(t, 10, 2, "2025-02-10 22:00:00", "2025-02-11 02:00:00");
  Attivita(t, 11, 2, "2025-02-15 09:00:00");
  Attivita(t, 12, 2, "2024-06-03 00:00:00", "2024-06-03 01:00:00");  // another year
}

// The screen as the control opens it, its prints kept.
struct Schermo {
  Schermo() : stampe(std::make_shared<StampanteProva>()) {
    f.PrnVornX1 = stampe;
    f.Form_Load();
  }
  template <class T>
  T* C(const char* nome) {
    T* c = f.findChild<T*>(QString::fromLatin1(nome));
    EXPECT_TRUE(c) << nome;
    return c;
  }
  void Scegli(const char* combo, const QString& testo) {
    QComboBox* c = C<QComboBox>(combo);
    const int i = c->findText(testo);
    ASSERT_GE(i, 0) << combo << " has no " << testo.toStdString();
    c->setCurrentIndex(i);
  }
  QStringList Voci(const char* combo) {
    QStringList v;
    for (int i = 0; i < C<QComboBox>(combo)->count(); ++i) v << C<QComboBox>(combo)->itemText(i);
    return v;
  }
  void Mese(const QString& anno, const QString& mese) {
    Scegli("CBAnno", anno);
    Scegli("CBMese", mese);
  }
  void Premi(int bottone) { C<QAction>(qPrintable(QStringLiteral("Toolbar1_%1").arg(bottone)))->trigger(); }
  const Documento& Ultimo() { return stampe->stampati.back(); }

  frmRepOperatori f;
  std::shared_ptr<StampanteProva> stampe;
};

// The grid of a document as a reader sees it: rows by the name in the first
// box, columns by the head over them ("1".."N", "GL", "M").
struct GrigliaLetta {
  QStringList righe;                                       // names, page after page
  std::map<QString, std::map<QString, QString>> celle;     // name -> head -> text
  std::vector<QStringList> teste;                          // the heads of the columns, page by page
  std::vector<std::vector<double>> yRighe;                 // the top of each name, page by page
  QString Cella(const QString& riga, const QString& colonna) const {
    if (!righe.contains(riga)) return QStringLiteral("<no row>");
    const auto r = celle.find(riga);
    if (r == celle.end()) return QString();
    const auto c = r->second.find(colonna);
    return c == r->second.end() ? QString() : c->second;
  }
  // The texts of a row, by the heads in their order; empty cells as "".
  QStringList Riga(const QString& riga) const {
    QStringList v;
    for (const QString& h : teste.front()) v << Cella(riga, h);
    return v;
  }
};

GrigliaLetta Leggi(const Documento& d) {
  GrigliaLetta g;
  for (int p = 0; p < d.Pagine(); ++p) {
    const auto testi = d.Testi(p);
    const auto testa = std::find_if(testi.begin(), testi.end(), [](const auto& x) { return x.testo == "OPERATORE"; });
    if (testa == testi.end()) {
      ADD_FAILURE() << "page " << p << " has no head";
      continue;
    }
    std::vector<std::pair<double, QString>> colonne;  // x of the centre, head
    std::vector<std::pair<double, QString>> nomi;     // y, name
    for (const auto& x : testi) {
      if (x.allinea == Allinea::Centro && std::abs(x.y - testa->y) < 0.25) colonne.emplace_back(x.x, x.testo);
      if (x.allinea == Allinea::Sinistra && x.x == testa->x && x.y > testa->y + 0.25) nomi.emplace_back(x.y, x.testo);
    }
    QStringList teste;
    for (const auto& c : colonne) teste << c.second;
    g.teste.push_back(teste);
    g.yRighe.emplace_back();
    for (const auto& n : nomi) {
      g.righe << n.second;
      g.yRighe.back().push_back(n.first);
    }
    for (const auto& x : testi) {
      if (x.allinea != Allinea::Centro || x.y < testa->y + 0.25) continue;
      const auto c = std::find_if(colonne.begin(), colonne.end(), [&](const auto& k) { return std::abs(k.first - x.x) < 1e-6; });
      const auto r = std::find_if(nomi.begin(), nomi.end(), [&](const auto& k) { return std::abs(k.first - x.y) < 0.25; });
      if (c == colonne.end() || r == nomi.end()) {
        ADD_FAILURE() << "a text outside the grid: " << x.testo.toStdString();
        continue;
      }
      EXPECT_TRUE(g.celle[r->second][c->second].isEmpty()) << "two texts in one cell";
      g.celle[r->second][c->second] = x.testo;
    }
  }
  return g;
}

// The texts of a document but the moment of printing, which moves with the clock.
QStringList TestiSenzaMomento(const Documento& d) {
  static const QRegularExpression momento(QStringLiteral("^\\d\\d/\\d\\d/\\d{4} \\d\\d:\\d\\d$"));
  QStringList v;
  for (int p = 0; p < d.Pagine(); ++p)
    for (const auto& x : d.Testi(p))
      if (!momento.match(x.testo).hasMatch()) v << QStringLiteral("%1|%2|%3").arg(p).arg(x.testo).arg(x.y, 0, 'f', 3);
  return v;
}

QString PdfInTesto(const QString& pdf) {
  QProcess p;
  p.start(QStringLiteral("pdftotext"), {"-layout", pdf, "-"});
  if (!p.waitForFinished(60000) || p.exitCode() != 0) return {};
  return QString::fromUtf8(p.readAllStandardOutput());
}

QImage PdfInImmagine(const QString& pdf, int dpi) {
  QTemporaryDir dir;
  QProcess p;
  p.start(QStringLiteral("pdftoppm"), {"-r", QString::number(dpi), "-png", "-f", "1", "-l", "1", "-singlefile", pdf,
                                      dir.path() + QStringLiteral("/pagina")});
  if (!p.waitForFinished(60000) || p.exitCode() != 0) return {};
  return QImage(dir.path() + QStringLiteral("/pagina.png"));
}

// The dark runs met along a line of the picture, across (the vertical lines
// met at height y) or down (the horizontal lines met at x): where each is.
std::vector<double> Linee(const QImage& immagine, int fisso, bool giu) {
  std::vector<double> linee;
  const int fine = giu ? immagine.height() : immagine.width();
  int inizio = -1;
  for (int i = 0; i <= fine; ++i) {
    const bool scuro = i < fine && qGray(giu ? immagine.pixel(fisso, i) : immagine.pixel(i, fisso)) < 128;
    if (scuro && inizio < 0) inizio = i;
    if (!scuro && inizio >= 0) {
      linee.push_back((inizio + i - 1) / 2.0);
      inizio = -1;
    }
  }
  return linee;
}
std::vector<double> LineeVerticali(const QImage& immagine, int y) { return Linee(immagine, y, false); }
std::vector<double> LineeOrizzontali(const QImage& immagine, int x) { return Linee(immagine, x, true); }

QStringList Giorni(int n) {
  QStringList v;
  for (int d = 1; d <= n; ++d) v << QString::number(d);
  return v << "GL" << "M";
}

}  // namespace

// ---------------------------------------------------------------- the filters

TEST(frmRepOperatori, OpensOnTheLatestYearAndMonthWithTheOperatorsInTheCombo) {
  TestDb t;
  MeseAMano(t);
  Operatore(t, 3, "Verdi Anna", true);
  Operatore(t, 4, "Neri Paolo");
  Schermo s;
  EXPECT_EQ(s.f.windowTitle(), "Report operatori");
  EXPECT_EQ(s.Voci("CBAnno"), QStringList({"2024", "2025"}));
  EXPECT_EQ(s.C<QComboBox>("CBAnno")->currentText(), "2025");
  EXPECT_EQ(s.Voci("CBMese"), QStringList({"gennaio", "febbraio", "marzo"}));
  QComboBox* mese = s.C<QComboBox>("CBMese");
  EXPECT_EQ(mese->itemData(0).toInt(), 1);
  EXPECT_EQ(mese->itemData(2).toInt(), 3);
  EXPECT_EQ(mese->currentText(), "marzo");
  EXPECT_EQ(s.f.DataIni, D(2025, 3, 1));
  EXPECT_EQ(s.f.DataFine, D(2025, 3, 31));
  // The operators not deleted, by name, behind the entry for all.
  EXPECT_EQ(s.Voci("CBOperatore"),
            QStringList({"{tutti gli operatori}", "Bianchi Luca", "Neri Paolo", "Rossi Mario"}));
  EXPECT_FALSE(s.C<QComboBox>("CBOperatore")->isEnabled());
  EXPECT_TRUE(s.C<QRadioButton>("Option1_0")->isChecked());
  EXPECT_EQ(s.C<QRadioButton>("Option1_0")->text(), "Sintetico");
  EXPECT_EQ(s.C<QRadioButton>("Option1_1")->text(), "Analitico");
  EXPECT_TRUE(s.C<QProgressBar>("ProgressBar1"));
  // Another year lists its own months.
  s.Scegli("CBAnno", "2024");
  EXPECT_EQ(s.Voci("CBMese"), QStringList({"giugno"}));
  EXPECT_EQ(s.f.DataIni, D(2024, 6, 1));
  EXPECT_EQ(s.f.DataFine, D(2024, 6, 30));
}

TEST(frmRepOperatori, ThePeriodEndsOnTheLastDayOfTheMonthAndDecemberOnThe31st) {
  TestDb t;
  Operatore(t, 1, "Rossi Mario");
  Attivita(t, 1, 1, "2024-02-10 00:00:00", "2024-02-10 01:00:00");
  Attivita(t, 2, 1, "2024-12-05 00:00:00", "2024-12-05 01:00:00");
  Attivita(t, 3, 1, "2024-04-05 00:00:00", "2024-04-05 01:00:00");
  Schermo s;
  EXPECT_EQ(s.f.DataIni, D(2024, 12, 1));
  EXPECT_EQ(s.f.DataFine, D(2024, 12, 31));
  s.Scegli("CBMese", "febbraio");  // a leap year
  EXPECT_EQ(s.f.DataIni, D(2024, 2, 1));
  EXPECT_EQ(s.f.DataFine, D(2024, 2, 29));
  s.Scegli("CBMese", "aprile");
  EXPECT_EQ(s.f.DataFine, D(2024, 4, 30));
}

TEST(frmRepOperatori, TheOperatorComboIsEnabledOnlyForTheAnalyticPrint) {
  TestDb t;
  MeseAMano(t);
  Schermo s;
  QComboBox* operatore = s.C<QComboBox>("CBOperatore");
  s.C<QRadioButton>("Option1_1")->click();
  EXPECT_EQ(s.f.TipoReport, 1);
  EXPECT_TRUE(operatore->isEnabled());
  s.Scegli("CBOperatore", "Rossi Mario");
  EXPECT_EQ(s.f.COperatore, 1);
  s.C<QRadioButton>("Option1_0")->click();
  EXPECT_EQ(s.f.TipoReport, 0);
  EXPECT_FALSE(operatore->isEnabled());
}

// ---------------------------------------------------------------- the grid of a month

TEST(frmRepOperatori, AMonthWorkedOutByHandCellByCell) {
  TestDb t;
  MeseAMano(t);
  Schermo s;
  s.Mese("2025", "febbraio");
  s.f.RepSintetico();
  ASSERT_EQ(s.stampe->stampati.size(), 1u);
  const Documento& d = s.Ultimo();
  EXPECT_EQ(d.Titolo(), "Report operatori");
  EXPECT_EQ(d.Pagine(), 1);
  // Eight activities of February up to midnight of the 28th; none of other months, nor the 23:59.
  EXPECT_EQ(s.f.RigheLette, 8);
  const GrigliaLetta g = Leggi(d);
  EXPECT_EQ(g.teste.front(), Giorni(28));
  EXPECT_EQ(g.righe, QStringList({"Bianchi Luca", "Rossi Mario", "Valori medi"}));

  QStringList bianchi(30), rossi(30), medie(30);  // columns 1..28, GL, M at indexes 0..29
  bianchi[0] = "01:30";
  bianchi[9] = "04:00";
  bianchi[28] = "3";
  bianchi[29] = "01:50";
  rossi[0] = "02:30";
  rossi[9] = "01:01";
  rossi[19] = "01:15";
  rossi[27] = "00:45";
  rossi[28] = "4";
  rossi[29] = "01:23";
  medie[0] = "02:00";
  medie[9] = "02:30";
  medie[14] = "00:00";
  medie[19] = "01:15";
  medie[27] = "00:45";
  medie[28] = "3,5";
  medie[29] = "01:34";
  EXPECT_EQ(g.Riga("Bianchi Luca"), bianchi);
  EXPECT_EQ(g.Riga("Rossi Mario"), rossi);
  EXPECT_EQ(g.Riga("Valori medi"), medie);

  // The running activity's minutes fail, and the failures are in the log.
  const QStringList log = t.LogLines("frmRepOperatori", "RepSintetico");
  ASSERT_FALSE(log.isEmpty());
  for (const QString& l : log) EXPECT_TRUE(l.endsWith("RepSintetico: Invalid use of Null (94)")) << l.toStdString();
  EXPECT_EQ(s.C<QProgressBar>("ProgressBar1")->value(), 100);

  // The working recordsets: one row an operator, one row a day worked.
  ASSERT_TRUE(s.f.rcsOperatori);
  s.f.rcsOperatori->SetFilter("");
  EXPECT_EQ(s.f.rcsOperatori->RecordCount(), 2);
  s.f.rcsGiorni->SetFilter("");
  EXPECT_EQ(s.f.rcsGiorni->RecordCount(), 7);
  s.f.rcsGiorni->SetFilter("CUtente=2 AND Data='2025-02-15'");
  ASSERT_EQ(s.f.rcsGiorni->RecordCount(), 1);
  EXPECT_TRUE(IsNull(s.f.rcsGiorni->Value("Minuti")));
}

TEST(frmRepOperatori, BothPrintsMakeTheSameGrid) {
  TestDb t;
  MeseAMano(t);
  Schermo s;
  s.Mese("2025", "febbraio");
  s.f.RepSintetico();
  s.f.RepAnalitico();
  ASSERT_EQ(s.stampe->stampati.size(), 2u);
  EXPECT_EQ(TestiSenzaMomento(s.stampe->stampati[0]), TestiSenzaMomento(s.stampe->stampati[1]));
  EXPECT_EQ(Leggi(s.stampe->stampati[1]).Cella("Valori medi", "M"), "01:34");
  EXPECT_FALSE(t.LogLines("frmRepOperatori", "RepAnalitico").isEmpty());
}

// The period's end is midnight of the last day: what starts later that day is not counted.
TEST(frmRepOperatori, AnActivityAfterMidnightOfTheLastDayIsNotCounted) {
  TestDb t;
  Operatore(t, 1, "Rossi Mario");
  Attivita(t, 1, 1, "2025-04-30 00:00:00", "2025-04-30 01:00:00");
  Attivita(t, 2, 1, "2025-04-30 00:01:00", "2025-04-30 02:01:00");
  Attivita(t, 3, 1, "2025-04-30 23:59:00", "2025-05-01 03:59:00");
  Attivita(t, 4, 1, "2025-04-01 00:00:00", "2025-04-01 00:20:00");
  Schermo s;
  s.Mese("2025", "aprile");
  s.f.RepSintetico();
  EXPECT_EQ(s.f.RigheLette, 2);
  const GrigliaLetta g = Leggi(s.Ultimo());
  EXPECT_EQ(g.Cella("Rossi Mario", "30"), "01:00");
  EXPECT_EQ(g.Cella("Rossi Mario", "1"), "00:20");
  EXPECT_EQ(g.Cella("Rossi Mario", "GL"), "2");
  EXPECT_EQ(g.Cella("Rossi Mario", "M"), "00:40");
  EXPECT_TRUE(t.LogLines("frmRepOperatori", "RepSintetico").isEmpty());
}

TEST(frmRepOperatori, AMonthOf28DaysHas30ColumnsAndOneOf31Has33) {
  TestDb t;
  Operatore(t, 1, "Rossi Mario");
  Attivita(t, 1, 1, "2025-02-03 00:00:00", "2025-02-03 01:00:00");
  Attivita(t, 2, 1, "2025-03-31 00:00:00", "2025-03-31 01:00:00");
  for (const auto& [mese, giorni] : {std::pair<QString, int>{"febbraio", 28}, {"marzo", 31}}) {
    Schermo s;
    const QString pdf = t.Path() + "/" + mese + ".pdf";
    auto carta = std::make_shared<PdfProva>(pdf);
    s.f.PrnVornX1 = carta;
    s.Mese("2025", mese);
    s.f.RepSintetico();
    ASSERT_EQ(carta->stampati.size(), 1u);
    const GrigliaLetta g = Leggi(carta->stampati[0]);
    EXPECT_EQ(g.teste.front(), Giorni(giorni)) << mese.toStdString();
    // On paper: across the operator's row, the name's box of 5 cm and then boxes of 0.5 cm.
    const int dpi = 300;
    const QImage pagina = PdfInImmagine(pdf, dpi);
    ASSERT_FALSE(pagina.isNull()) << "pdftoppm";
    EXPECT_GT(pagina.width(), pagina.height());  // the page lies down
    const double cm = dpi / 2.54;
    const int y = static_cast<int>((g.yRighe.front().front() - 0.06) * cm);
    const std::vector<double> linee = LineeVerticali(pagina, y);
    ASSERT_EQ(static_cast<int>(linee.size()), giorni + 4) << mese.toStdString();
    EXPECT_NEAR((linee[1] - linee[0]) / cm, 5.0, 0.03);
    for (size_t i = 2; i < linee.size(); ++i) EXPECT_NEAR((linee[i] - linee[i - 1]) / cm, 0.5, 0.03) << i;
    EXPECT_EQ(static_cast<int>(linee.size()) - 2, giorni + 2);  // the boxes of 0.5 after the name
    EXPECT_LT(linee.back() / cm, 29.7);
  }
}

// The grid follows the activities of the month and not the combo.
TEST(frmRepOperatori, EveryOperatorWithAnActivityHasARowWhateverTheCombo) {
  TestDb t;
  Operatore(t, 1, "Rossi Mario");
  Operatore(t, 3, "Verdi Anna", true);  // deleted: not in the combo
  Operatore(t, 4, "Neri Paolo");        // in the combo, nothing done in May
  t.Exec("INSERT INTO Anagrafica (TAnag, CAnag, RagSoc1, Eliminato) VALUES (1, 5, 'Cliente Cinque', 0)");
  Attivita(t, 1, 1, "2025-05-05 00:00:00", "2025-05-05 01:00:00");
  Attivita(t, 2, 3, "2025-05-06 00:00:00", "2025-05-06 02:00:00");
  Attivita(t, 3, 5, "2025-05-07 00:00:00", "2025-05-07 03:00:00");  // no operator 5
  Attivita(t, 4, 4, "2025-04-07 00:00:00", "2025-04-07 03:00:00");
  Schermo s;
  EXPECT_FALSE(s.Voci("CBOperatore").contains("Verdi Anna"));
  s.Mese("2025", "maggio");
  s.f.RepSintetico();
  const GrigliaLetta g = Leggi(s.Ultimo());
  EXPECT_EQ(g.righe, QStringList({"Rossi Mario", "Verdi Anna", "Valori medi"}));
  EXPECT_EQ(g.Cella("Verdi Anna", "6"), "02:00");
  EXPECT_EQ(g.Cella("Valori medi", "GL"), "1,0");
  EXPECT_EQ(s.f.RigheLette, 2);
}

// Choosing an operator in CBOperatore changes nothing in the print.
TEST(frmRepOperatori, ChoosingAnOperatorChangesNothingInEitherPrint) {
  TestDb t;
  MeseAMano(t);
  Schermo s;
  s.Mese("2025", "febbraio");
  s.f.RepAnalitico();
  s.C<QRadioButton>("Option1_1")->click();
  s.Scegli("CBOperatore", "Rossi Mario");
  ASSERT_EQ(s.f.COperatore, 1);
  s.f.RepAnalitico();
  s.f.RepSintetico();
  ASSERT_EQ(s.stampe->stampati.size(), 3u);
  EXPECT_EQ(TestiSenzaMomento(s.stampe->stampati[1]), TestiSenzaMomento(s.stampe->stampati[0]));
  EXPECT_EQ(TestiSenzaMomento(s.stampe->stampati[2]), TestiSenzaMomento(s.stampe->stampati[0]));
  EXPECT_EQ(Leggi(s.stampe->stampati[1]).righe, QStringList({"Bianchi Luca", "Rossi Mario", "Valori medi"}));
}

// A day on which nobody worked stays empty in the last row and enters neither C nor T.
TEST(frmRepOperatori, ADayNobodyWorkedStaysOutOfTheMeans) {
  TestDb t;
  Operatore(t, 1, "Rossi Mario");
  Attivita(t, 1, 1, "2025-06-01 00:00:00", "2025-06-01 01:00:00");
  Attivita(t, 2, 1, "2025-06-03 00:00:00", "2025-06-03 02:00:00");
  Schermo s;
  s.Mese("2025", "giugno");
  s.f.RepSintetico();
  const GrigliaLetta g = Leggi(s.Ultimo());
  EXPECT_EQ(g.Cella("Valori medi", "1"), "01:00");
  EXPECT_EQ(g.Cella("Valori medi", "2"), "");
  EXPECT_EQ(g.Cella("Valori medi", "3"), "02:00");
  EXPECT_EQ(g.Cella("Valori medi", "30"), "");
  // C = 2 days, T = 180: had the 2nd counted, GL would say 3,0 and M 01:00.
  EXPECT_EQ(g.Cella("Valori medi", "GL"), "2,0");
  EXPECT_EQ(g.Cella("Valori medi", "M"), "01:30");
  EXPECT_TRUE(t.LogLines("frmRepOperatori", "RepSintetico").isEmpty());
}

// With no activity in the month the grid is a head and "Valori medi", whose divisions fail into the log.
TEST(frmRepOperatori, AMonthWithoutActivitiesIsAHeadAndTheLastRowWithItsDivisionsLogged) {
  TestDb t;
  Operatore(t, 1, "Rossi Mario");
  Attivita(t, 1, 1, "2025-02-28 10:00:00", "2025-02-28 11:00:00");  // lists February, outside its period
  Schermo s;
  s.Mese("2025", "febbraio");
  for (int k = 0; k < 2; ++k) {
    if (k == 0) s.f.RepSintetico();
    else s.f.RepAnalitico();
    EXPECT_EQ(s.f.RigheLette, 0);
    const Documento& d = s.Ultimo();
    EXPECT_EQ(d.Pagine(), 1);
    const GrigliaLetta g = Leggi(d);
    EXPECT_EQ(g.righe, QStringList({"Valori medi"}));
    EXPECT_EQ(g.Riga("Valori medi"), QStringList(30));
    QStringList testi;
    for (const auto& x : d.Testi(0)) testi << x.testo;
    ASSERT_EQ(testi.size(), 3 + 1 + 30 + 1);  // head lines, OPERATORE, 28 days + GL + M, Valori medi
    EXPECT_EQ(testi[0], "REPORT OPERATORI ANALITICO");
    EXPECT_EQ(testi[1], "febbraio 2025");
    EXPECT_EQ(testi.back(), "Valori medi");
    const QStringList log = t.LogLines("frmRepOperatori", k == 0 ? "RepSintetico" : "RepAnalitico");
    // C / operators and T / C, both 0 / 0.
    ASSERT_EQ(log.size(), 2);
    for (const QString& l : log) EXPECT_TRUE(l.endsWith(": Overflow (6)")) << l.toStdString();
  }
}

// Without any activity no month can be chosen: the period stays at the date
// zero (30/12/1899), the read finds nothing and the grid has the 30 days of that month.
TEST(frmRepOperatori, WithoutAnyActivityThePrintReadsNothing) {
  TestDb t;
  Operatore(t, 1, "Rossi Mario");
  Schermo s;
  EXPECT_TRUE(s.Voci("CBAnno").isEmpty());
  EXPECT_TRUE(s.Voci("CBMese").isEmpty());
  EXPECT_EQ(s.f.DataFine, D(1899, 12, 30));
  s.Premi(3);
  ASSERT_EQ(s.stampe->stampati.size(), 1u);
  EXPECT_EQ(s.f.RigheLette, 0);
  const GrigliaLetta g = Leggi(s.Ultimo());
  EXPECT_EQ(g.teste.front(), Giorni(30));
  EXPECT_EQ(g.righe, QStringList({"Valori medi"}));
  EXPECT_EQ(t.LogLines("frmRepOperatori", "RepSintetico").size(), 2);
}

// "GL" of the last row has one decimal; the operators' rows have whole numbers.
TEST(frmRepOperatori, GLHasOneDecimalInTheLastRowAndWholeNumbersAbove) {
  TestDb t;
  Operatore(t, 1, "Rossi Mario");
  Operatore(t, 2, "Bianchi Luca");
  Operatore(t, 3, "Galli Stefano");
  Attivita(t, 1, 1, "2025-07-01 00:00:00", "2025-07-01 01:00:00");
  Attivita(t, 2, 1, "2025-07-02 00:00:00", "2025-07-02 01:00:00");
  Attivita(t, 3, 2, "2025-07-01 00:00:00", "2025-07-01 01:00:00");
  Attivita(t, 4, 3, "2025-07-31 00:00:00", "2025-07-31 10:05:00");
  Schermo s;
  s.f.RepSintetico();  // July, the latest month
  const GrigliaLetta g = Leggi(s.Ultimo());
  EXPECT_EQ(g.Cella("Rossi Mario", "GL"), "2");
  EXPECT_EQ(g.Cella("Bianchi Luca", "GL"), "1");
  EXPECT_EQ(g.Cella("Galli Stefano", "GL"), "1");
  EXPECT_EQ(g.Cella("Galli Stefano", "31"), "10:05");
  // C = 4 days over 3 operators.
  EXPECT_EQ(g.Cella("Valori medi", "GL"), "1,3");
  // T = 60 + 60 + 60 + 605 = 785, over 4: 196.25 -> 196.
  EXPECT_EQ(g.Cella("Valori medi", "M"), "03:16");
}

// ---------------------------------------------------------------- pages

// An operator's row that would start below 18 cm goes to a new page with the head again;
// the last row is drawn where the operators end.
TEST(frmRepOperatori, RowsBelow18CmGoToANewPageWithItsHead) {
  TestDb t;
  for (int i = 1; i <= 40; ++i) {
    Operatore(t, i, QStringLiteral("Operatore %1").arg(i, 2, 10, QLatin1Char('0')).toUtf8().constData());
    Attivita(t, i, i, QStringLiteral("2025-02-%1 00:00:00").arg(i % 28 + 1, 2, 10, QLatin1Char('0')).toUtf8().constData(),
             QStringLiteral("2025-02-%1 01:00:00").arg(i % 28 + 1, 2, 10, QLatin1Char('0')).toUtf8().constData());
  }
  Schermo s;
  const QString pdf = t.Path() + "/pagine.pdf";
  auto carta = std::make_shared<PdfProva>(pdf);
  s.f.PrnVornX1 = carta;
  s.f.RepSintetico();
  ASSERT_EQ(carta->stampati.size(), 1u);
  const Documento& d = carta->stampati[0];
  ASSERT_EQ(d.Pagine(), 2);
  const GrigliaLetta g = Leggi(d);
  ASSERT_EQ(g.yRighe.size(), 2u);
  const std::vector<double>& prima = g.yRighe[0];
  ASSERT_GE(prima.size(), 2u);
  const double passo = prima[1] - prima[0];
  EXPECT_NEAR(passo, 0.5, 1e-9);
  // On paper, down the grid's left edge: the lines between the rows of the first page.
  const int dpi = 300;
  const double cm = dpi / 2.54;
  const QImage pagina = PdfInImmagine(pdf, dpi);
  ASSERT_FALSE(pagina.isNull()) << "pdftoppm";
  const std::vector<double> colonne = LineeVerticali(pagina, static_cast<int>((prima[0] - 0.06) * cm));
  ASSERT_FALSE(colonne.empty());
  const std::vector<double> righe = LineeOrizzontali(pagina, static_cast<int>(colonne[0] + 0.05 * cm));
  // The head's row and one row a name, each 0.5 cm: one line more than rows.
  ASSERT_EQ(righe.size(), prima.size() + 2);
  for (size_t i = 1; i < righe.size(); ++i) EXPECT_NEAR((righe[i] - righe[i - 1]) / cm, 0.5, 0.03);
  const double ultima = righe.back() / cm - 0.5;  // the top of the last row of the page
  // Every row of the first page starts at 18 cm or above; the next would have started below.
  EXPECT_LE(ultima, 18.0 + 0.02);
  EXPECT_GT(ultima, 18.0 - 0.5 + 0.02);
  const int perPagina = static_cast<int>(prima.size());
  EXPECT_EQ(g.righe.mid(0, 3), QStringList({"Operatore 01", "Operatore 02", "Operatore 03"}));
  EXPECT_EQ(g.righe.at(perPagina), QStringLiteral("Operatore %1").arg(perPagina + 1, 2, 10, QLatin1Char('0')));
  EXPECT_EQ(g.righe.back(), "Valori medi");
  EXPECT_EQ(g.righe.size(), 41);
  // The second page has the head again, and its rows start where those of the first did.
  EXPECT_EQ(g.teste[1], Giorni(28));
  EXPECT_NEAR(g.yRighe[1].front(), prima.front(), 1e-9);
  QStringList seconda;
  for (const auto& x : d.Testi(1)) seconda << x.testo;
  EXPECT_EQ(seconda.mid(0, 2), QStringList({"REPORT OPERATORI ANALITICO", "febbraio 2025"}));

  // As many operators as fill the first page: the last row follows on that page, below 18 cm.
  t.Exec(QStringLiteral("DELETE FROM ActivitiesProd WHERE CUtente>%1").arg(perPagina));
  s.f.PrnVornX1 = s.stampe;
  s.f.RepSintetico();
  const Documento& piena = s.Ultimo();
  EXPECT_EQ(piena.Pagine(), 1);
  const GrigliaLetta p = Leggi(piena);
  EXPECT_EQ(p.righe.back(), "Valori medi");
  EXPECT_GT(p.yRighe[0].back(), 18.0);
  EXPECT_EQ(p.Cella("Valori medi", "GL"), "1,0");
}

// Both prints on paper: the same head on every page, the rows split between the pages.
TEST(frmRepOperatori, OnPaperBothPrintsHeadEveryPageReportOperatoriAnalitico) {
  TestDb t;
  for (int i = 1; i <= 40; ++i) {
    Operatore(t, i, QStringLiteral("Operatore %1").arg(i, 2, 10, QLatin1Char('0')).toUtf8().constData());
    Attivita(t, i, i, "2025-02-03 00:00:00", "2025-02-03 01:30:00");
  }
  Schermo s;
  s.Mese("2025", "febbraio");
  const QDateTime prima = Now();
  for (int k = 0; k < 2; ++k) {
    const QString pdf = t.Path() + (k == 0 ? "/sintetico.pdf" : "/analitico.pdf");
    s.f.PrnVornX1 = std::make_shared<StampantePdf>(pdf);
    if (k == 0) s.f.RepSintetico();
    else s.f.RepAnalitico();
    const QString testo = PdfInTesto(pdf);
    ASSERT_FALSE(testo.isEmpty()) << "pdftotext";
    const QStringList pagine = testo.split('\f', Qt::SkipEmptyParts);
    ASSERT_EQ(pagine.size(), 2) << pdf.toStdString();
    for (const QString& pagina : pagine) {
      EXPECT_EQ(pagina.count("REPORT OPERATORI ANALITICO"), 1);
      EXPECT_TRUE(pagina.contains("febbraio 2025"));
      EXPECT_TRUE(pagina.contains("OPERATORE"));
      EXPECT_TRUE(pagina.contains(QRegularExpression("\\bGL\\b")));
      const auto m = QRegularExpression("(\\d\\d/\\d\\d/\\d{4} \\d\\d:\\d\\d)").match(pagina);
      ASSERT_TRUE(m.hasMatch());
      const QDateTime momento = QDateTime::fromString(m.captured(1), "dd/MM/yyyy HH:mm");
      EXPECT_GE(momento, prima.addSecs(-60));
      EXPECT_LE(momento, Now());
    }
    EXPECT_TRUE(pagine[0].contains("Operatore 01"));
    EXPECT_FALSE(pagine[0].contains("Operatore 40"));
    EXPECT_TRUE(pagine[1].contains("Operatore 40"));
    EXPECT_FALSE(pagine[0].contains("Valori medi"));
    EXPECT_TRUE(pagine[1].contains("Valori medi"));
    EXPECT_TRUE(pagine[1].contains("01:30"));
    EXPECT_TRUE(t.LogLines("frmRepOperatori", k == 0 ? "RepSintetico" : "RepAnalitico").isEmpty());
  }
}

// ---------------------------------------------------------------- the tool bar

TEST(frmRepOperatori, PrintButtonRunsTheSyntheticOrTheAnalyticPrintByTheLastOptionClicked) {
  TestDb t;
  MeseAMano(t);
  Schermo s;
  s.Mese("2025", "febbraio");
  s.Premi(3);
  ASSERT_EQ(s.stampe->stampati.size(), 1u);
  EXPECT_FALSE(t.LogLines("frmRepOperatori", "RepSintetico").isEmpty());  // the running activity
  EXPECT_TRUE(t.LogLines("frmRepOperatori", "RepAnalitico").isEmpty());
  s.C<QRadioButton>("Option1_1")->click();
  const int sintetico = static_cast<int>(t.LogLines("frmRepOperatori", "RepSintetico").size());
  s.Premi(3);
  ASSERT_EQ(s.stampe->stampati.size(), 2u);
  EXPECT_EQ(t.LogLines("frmRepOperatori", "RepSintetico").size(), sintetico);
  EXPECT_FALSE(t.LogLines("frmRepOperatori", "RepAnalitico").isEmpty());
  EXPECT_EQ(Leggi(s.Ultimo()).Cella("Valori medi", "GL"), "3,5");
  s.f.show();
  ASSERT_TRUE(s.f.isVisible());
  s.Premi(1);
  EXPECT_FALSE(s.f.isVisible());
  EXPECT_EQ(s.stampe->stampati.size(), 2u);
}

// ---------------------------------------------------------------- the demo workshop

// The demo's busiest month with every activity ended, checked cell by cell
// against sums made straight from the rows of the table.
TEST(frmRepOperatori, TheDemoMonthAgreesWithTheRowsOfTheTable) {
  TestDb t(false);
  CreaDatiDemo(*t.db, QDate(2025, 3, 14));
  const auto mesi = t.db->Select(Sql(
      "SELECT Year(DtIni) AS Anno, Month(DtIni) AS Mese, Count(*) AS Quante FROM ActivitiesProd GROUP BY Year(DtIni), "
      "Month(DtIni) HAVING Sum(CASE WHEN DtEnd IS NULL THEN 1 ELSE 0 END)=0 ORDER BY Count(*) DESC, Year(DtIni), "
      "Month(DtIni)"));
  ASSERT_FALSE(mesi.rows.empty());
  const int anno = mesi.rows[0][0].toInt(), mese = mesi.rows[0][1].toInt();
  const QDate primo(anno, mese, 1);
  const int n = primo.daysInMonth();

  // Sums by operator and day, from the rows themselves.
  const auto righe = t.db->Select(Sql(QStringLiteral(
      "SELECT d.Nome, a.DtIni, a.DtEnd FROM ActivitiesProd a INNER JOIN [ABC:Dipendenti] d ON a.CUtente=d.CDip "
      "WHERE a.DtIni>=%1 AND a.DtIni<=%2").arg(DataSql(QDateTime(primo, QTime(0, 0))),
                                           DataSql(QDateTime(primo.addDays(n - 1), QTime(0, 0))))));
  std::map<QString, std::map<int, qint64>> minuti;  // name -> day -> minutes
  const auto inMinuti = [](const QVariant& v) { return CDate(v).toSecsSinceEpoch() / 60; };
  for (const Row& r : righe.rows)
    minuti[r[0].toString()][CDate(r[1]).date().day()] += inMinuti(r[2]) - inMinuti(r[1]);
  ASSERT_GE(minuti.size(), 3u);
  std::map<QString, std::map<QString, QString>> attese;
  std::map<int, std::pair<qint64, qint64>> giorno;  // day -> operators, minutes
  for (const auto& [nome, giorni] : minuti) {
    qint64 totale = 0;
    for (const auto& [d, m] : giorni) {
      attese[nome][QString::number(d)] = CTempo(m);
      totale += m;
      giorno[d].first += 1;
      giorno[d].second += m;
    }
    attese[nome]["GL"] = QString::number(giorni.size());
    attese[nome]["M"] = CTempo(static_cast<qint64>(Round(double(totale) / giorni.size())));
  }
  qint64 c = 0, tot = 0;
  for (const auto& [d, v] : giorno) {
    attese["Valori medi"][QString::number(d)] = CTempo(static_cast<qint64>(Round(double(v.second) / v.first)));
    c += v.first;
    tot += v.second;
  }
  attese["Valori medi"]["GL"] = Format(double(c) / minuti.size(), "#,##0.0");
  attese["Valori medi"]["M"] = CTempo(static_cast<qint64>(Round(double(tot) / c)));

  Schermo s;
  s.Mese(QString::number(anno), Format(QDateTime(primo, QTime(0, 0)), "mmmm"));
  s.f.RepAnalitico();
  EXPECT_EQ(s.f.RigheLette, static_cast<int>(righe.rows.size()));
  const GrigliaLetta g = Leggi(s.Ultimo());
  QStringList nomi;
  for (const auto& [nome, giorni] : minuti) nomi << nome;
  std::sort(nomi.begin(), nomi.end());
  EXPECT_EQ(g.righe, nomi + QStringList({"Valori medi"}));
  for (const auto& [riga, celle] : attese)
    for (const QString& colonna : Giorni(n))
      EXPECT_EQ(g.Cella(riga, colonna), celle.count(colonna) ? celle.at(colonna) : QString())
          << riga.toStdString() << " " << colonna.toStdString();
  EXPECT_TRUE(t.LogLines("frmRepOperatori", "RepAnalitico").isEmpty());
}
