// "Controllo DDT per fatturazione": the period, the summary per disposition of
// the notes not invoiced, the price written into every line of a disposition,
// and the totals of each note computed again.
#include <gtest/gtest.h>

#include <QApplication>
#include <QTimer>
#include <functional>

#include "NumericSpin.h"
#include "Procedure.h"
#include "TestSupport.h"
#include "frmCalcPzVend.h"
#include "frmCtrlDDTxFatt.h"

using namespace prestkt;
using namespace prestkt::test;

namespace {

void AlProssimoModale(std::function<void(QWidget*)> f) {
  QTimer::singleShot(0, [f] {
    QWidget* w = QApplication::activeModalWidget();
    ASSERT_TRUE(w) << "no screen opened";
    f(w);
  });
}

// Two customers, three dispositions by the piece, a billable reason and one
// that isn't, the VAT codes 2 (22%) and 3 (10%).
void Base(TestDb& t) {
  t.Exec("INSERT INTO Anagrafica (TAnag, CAnag, RagSoc1) VALUES (1, 1, 'Officina Rossi'), (1, 2, 'Bianchi Stampi')");
  t.Exec("INSERT INTO ProjectsTipo (CPrjTipo, DPrjTipo) VALUES (1, 'Stampo')");
  t.Exec("INSERT INTO ProjectsDispTipo (CPrjDispTipo, DPrjDispTipo, TipoFatt) VALUES (2, 'A pezzo', 2)");
  t.Exec("INSERT INTO TabGen (CTipTabGen, CTabGen, DTabGen, Sigla, Bool8, Num1) VALUES "
         "(1, 1, 'C/Lavorazione', 'CL', -1, 0), (1, 2, 'Omaggio', 'OM', 0, 0), "
         "(4, 2, 'IVA 22%', '22', 0, 22), (4, 3, 'IVA 10%', '10', 0, 10)");
  t.Exec("INSERT INTO Projects (CProject, DProject, CPrjTipo, TAnag, CAnag, DtIni) VALUES "
         "(202600001, 'Pompa', 1, 1, 1, '2026-01-10 00:00:00'), (202600002, 'Coperchio', 1, 1, 2, '2026-01-10 00:00:00')");
  t.Exec("INSERT INTO ProjectsDisp (CProject, CDisp, CPrjDispTipo, DDisp, Data, Qta, CStato) VALUES "
         "(202600001, 1, 2, 'Serie A', '2026-01-11 00:00:00', 100, 0), "
         "(202600001, 2, 2, 'Serie B', '2026-01-11 00:00:00', 100, 0), "
         "(202600002, 1, 2, 'Unica', '2026-01-11 00:00:00', 100, 0)");
}

// A delivery note of customer cAnag on the day, header's discount and VAT code.
void Nota(TestDb& t, int nDoc, const char* data, int cAnag = 1, double sconto = 0, int cIva = 0) {
  t.Exec(QStringLiteral("INSERT INTO Doc (TipoDoc, NDoc, Data, TAnag, CAnag, ValSconto, CIva) VALUES "
                        "(5, %1, '%2', 1, %3, %4, %5)")
             .arg(nDoc)
             .arg(QString::fromLatin1(data))
             .arg(cAnag)
             .arg(sconto)
             .arg(cIva));
}

// A line of the note tied to a disposition (righeD link rows of it).
void Riga(TestDb& t, int nDoc, int riga, int cProject, int cDisp, double qta, double prezzo, int causale = 1,
          int cIva = 2, double valRic = 0, int righeD = 1) {
  t.Exec(QStringLiteral("INSERT INTO DocDett (TipoDoc, NDoc, Scheda, Riga, Qta, PzVend, CCaus, CIVA, ValRic) VALUES "
                        "(5, %1, 0, %2, %3, %4, %5, %6, %7)")
             .arg(nDoc)
             .arg(riga)
             .arg(qta)
             .arg(prezzo)
             .arg(causale)
             .arg(cIva)
             .arg(valRic));
  for (int d = 0; d < righeD; ++d)
    t.Exec(QStringLiteral("INSERT INTO ProjectsDocDett (TipoDoc, NDoc, Scheda, Riga, RigaD, CProject, CDisp, Qta, "
                          "Importo, CCaus) VALUES (5, %1, 0, %2, %3, %4, %5, %6, %7, %8)")
               .arg(nDoc)
               .arg(riga)
               .arg(riga * 10 + d)
               .arg(cProject)
               .arg(cDisp)
               .arg(qta)
               .arg(prezzo)
               .arg(causale));
}

struct Schermo {
  explicit Schermo(const QDate& dal = QDate(2026, 11, 1), const QDate& al = QDate(2026, 11, 30)) {
    f.Form_Load();
    f.show();
    f.DTPicker1->setDate(dal);
    f.DTPicker2->setDate(al);
    f.CaricaDati();
  }
  QStringList Righe() const {
    QStringList r;
    for (int i = 0; i < f.ListView1->Count(); ++i) {
      QStringList c;
      for (int k = 1; k <= 7; ++k) c << f.ListView1->Text(i, k);
      r << c.join(QLatin1Char('|'));
    }
    return r;
  }
  frmCtrlDDTxFatt f;
};

double Valore(TestDb& t, const QString& sql) { return t.Scalar(sql).toDouble(); }

}  // namespace

TEST(frmCtrlDDTxFatt, TheMonthRunsFromItsFirstDayToItsLast) {
  using P = QPair<QDate, QDate>;
  EXPECT_EQ(PeriodoDelMese(QDate(2026, 12, 15)), P(QDate(2026, 12, 1), QDate(2026, 12, 31)));
  EXPECT_EQ(PeriodoDelMese(QDate(2026, 11, 30)), P(QDate(2026, 11, 1), QDate(2026, 11, 30)));
  EXPECT_EQ(PeriodoDelMese(QDate(2024, 2, 1)), P(QDate(2024, 2, 1), QDate(2024, 2, 29)));
  EXPECT_EQ(PeriodoDelMese(QDate(2026, 1, 31)), P(QDate(2026, 1, 1), QDate(2026, 1, 31)));
}

TEST(frmCtrlDDTxFatt, OpensOnTheCurrentMonthWithItsColumns) {
  TestDb t;
  Base(t);
  frmCtrlDDTxFatt f;
  f.Form_Load();
  const auto periodo = PeriodoDelMese(QDate::currentDate());
  EXPECT_EQ(f.DTPicker1->date(), periodo.first);
  EXPECT_EQ(f.DTPicker2->date(), periodo.second);
  EXPECT_EQ(f.windowTitle(), "Controllo DDT per fatturazione");
  ASSERT_EQ(f.ListView1->ColumnCount(), 8);
  const QStringList attese = {"", "Mod/Disp", "Ragione sociale", "Modello", "Disposizione", "Tipo Disp.", "Q.tà", "Importo"};
  for (int c = 0; c < 8; ++c) EXPECT_EQ(f.ListView1->ColumnText(c), attese[c]);
  EXPECT_EQ(f.ListView1->ColumnWidth(1), 1500);
  EXPECT_EQ(f.ListView1->ColumnWidth(7), 1100);
}

TEST(frmCtrlDDTxFatt, APeriodWithNoNoteGivesAnEmptyListAndCalcolaDoesNothing) {
  TestDb t;
  Base(t);
  Nota(t, 101, "2026-10-15 00:00:00");
  Riga(t, 101, 1, 202600001, 1, 4, 10);
  Schermo s;
  EXPECT_EQ(s.f.ListView1->Count(), 0);
  bool aperto = false;
  QTimer::singleShot(0, [&] {
    if (auto* c = qobject_cast<frmCalcPzVend*>(QApplication::activeModalWidget())) {
      aperto = true;
      c->close();
    }
  });
  s.f.Bottone(3)->trigger();
  QApplication::processEvents();
  EXPECT_FALSE(aperto);
  EXPECT_TRUE(t.LogLines("frmCtrlDDTxFatt", "Calcola").isEmpty());
}

// The first and the last day of the period count, the days around them don't.
TEST(frmCtrlDDTxFatt, TheFirstAndTheLastDayOfThePeriodCount) {
  TestDb t;
  Base(t);
  Nota(t, 101, "2026-10-31 00:00:00");
  Nota(t, 102, "2026-11-01 00:00:00");
  Nota(t, 103, "2026-11-30 00:00:00");
  Nota(t, 104, "2026-12-01 00:00:00");
  Riga(t, 101, 1, 202600001, 1, 1, 0);
  Riga(t, 102, 1, 202600001, 1, 2, 0);
  Riga(t, 103, 1, 202600001, 1, 4, 0);
  Riga(t, 104, 1, 202600001, 1, 8, 0);
  Schermo s;
  ASSERT_EQ(s.f.ListView1->Count(), 1);
  EXPECT_EQ(s.f.ListView1->Text(0, 6), "6");
  EXPECT_EQ(s.f.Documenti()->RecordCount(), 2);
  EXPECT_EQ(s.f.Righe()->RecordCount(), 2);
}

// Priced 10 and 0: the summary shows 10. Priced 10 and 12 in the order of the
// notes' numbers: 12, whichever note came first in time; the quantity is the sum.
TEST(frmCtrlDDTxFatt, TheSummaryShowsTheLastPositivePriceAndTheSummedQuantity) {
  TestDb t;
  Base(t);
  Nota(t, 101, "2026-11-20 00:00:00");
  Nota(t, 102, "2026-11-05 00:00:00");
  Riga(t, 101, 1, 202600001, 1, 3, 10);
  Riga(t, 102, 1, 202600001, 1, 2.5, 0);
  Nota(t, 103, "2026-11-02 00:00:00", 2);
  Nota(t, 104, "2026-11-03 00:00:00", 2);
  Riga(t, 103, 1, 202600002, 1, 1, 10);
  Riga(t, 104, 1, 202600002, 1, 1, 12);
  Schermo s;
  ASSERT_EQ(s.f.ListView1->Count(), 2);
  // Sorted by customer: Bianchi first.
  EXPECT_EQ(s.Righe(), QStringList({"2026-00002/0001|Bianchi Stampi|Stampo Coperchio|Unica|A pezzo|2|12,00",
                                    "2026-00001/0001|Officina Rossi|Stampo Pompa|Serie A|A pezzo|5,5|10,00"}));
  EXPECT_EQ(s.f.ListView1->Key(1), "K2026000010001");
}

TEST(frmCtrlDDTxFatt, AnInvoicedNoteIsNotListedAndKeepsItsPrices) {
  TestDb t;
  Base(t);
  Nota(t, 101, "2026-11-10 00:00:00");
  Nota(t, 102, "2026-11-11 00:00:00");
  Riga(t, 101, 1, 202600001, 1, 3, 10);
  Riga(t, 102, 1, 202600001, 1, 2, 10);
  t.Exec("INSERT INTO DocSchede (TipoDoc, NDoc, TipoDocAss, NDocAss) VALUES (9, 900, 5, 102)");
  Schermo s;
  ASSERT_EQ(s.f.ListView1->Count(), 1);
  EXPECT_EQ(s.f.ListView1->Text(0, 6), "3");
  s.f.CProject = 202600001;
  s.f.CDisp = 1;
  s.f.AssegnaPZ(15);
  EXPECT_EQ(Valore(t, "SELECT PzVend FROM DocDett WHERE NDoc=101"), 15);
  EXPECT_EQ(Valore(t, "SELECT PzVend FROM DocDett WHERE NDoc=102"), 10);
  EXPECT_EQ(Valore(t, "SELECT Importo FROM ProjectsDocDett WHERE NDoc=102"), 10);
}

// A line under a reason that doesn't bill: out of the summary and of the
// price, yet its amount counts when a sibling line changes the note's totals.
TEST(frmCtrlDDTxFatt, ALineThatDoesNotBillIsReadOnlyForTheTotals) {
  TestDb t;
  Base(t);
  Nota(t, 101, "2026-11-10 00:00:00");
  Riga(t, 101, 1, 202600001, 1, 3, 0);
  Riga(t, 101, 2, 202600001, 1, 7, 4, 2);  // "Omaggio"
  Schermo s;
  ASSERT_EQ(s.f.ListView1->Count(), 1);
  EXPECT_EQ(s.f.ListView1->Text(0, 6), "3");
  s.f.CProject = 202600001;
  s.f.CDisp = 1;
  s.f.AssegnaPZ(10);
  EXPECT_EQ(Valore(t, "SELECT PzVend FROM DocDett WHERE NDoc=101 AND Riga=2"), 4);
  EXPECT_EQ(Valore(t, "SELECT Importo FROM ProjectsDocDett WHERE NDoc=101 AND Riga=2"), 4);
  // 3 x 10 + 7 x 4, both at 22%.
  EXPECT_NEAR(Valore(t, "SELECT ImpDoc FROM Doc WHERE NDoc=101"), 58, 1e-9);
  EXPECT_NEAR(Valore(t, "SELECT IVADoc FROM Doc WHERE NDoc=101"), 12.76, 1e-9);
  EXPECT_NEAR(Valore(t, "SELECT TotDoc FROM Doc WHERE NDoc=101"), 70.76, 1e-9);
}

// The price goes into the three price fields of every line of the
// disposition and into every link row of those lines; the list shows it.
TEST(frmCtrlDDTxFatt, AssegnaPZWritesEveryLineOfTheDisposition) {
  TestDb t;
  Base(t);
  Nota(t, 101, "2026-11-10 00:00:00");
  Nota(t, 102, "2026-11-12 00:00:00");
  Riga(t, 101, 1, 202600001, 1, 3, 0, 1, 2, 0, 2);  // two link rows on one line
  Riga(t, 101, 2, 202600001, 2, 1, 9);              // another disposition
  Riga(t, 102, 1, 202600001, 1, 2, 0);
  Schermo s;
  ASSERT_EQ(s.f.ListView1->Count(), 2);
  const int r = s.f.ListView1->Row("K2026000010001");
  s.f.ListView1->SetSelected(r);
  s.f.CProject = 202600001;
  s.f.CDisp = 1;
  s.f.AssegnaPZ(12.345);
  for (const char* campo : {"PzVend", "PzVendP", "Manifattura"}) {
    EXPECT_DOUBLE_EQ(Valore(t, QStringLiteral("SELECT %1 FROM DocDett WHERE NDoc=101 AND Riga=1").arg(campo)), 12.345);
    EXPECT_DOUBLE_EQ(Valore(t, QStringLiteral("SELECT %1 FROM DocDett WHERE NDoc=102 AND Riga=1").arg(campo)), 12.345);
  }
  EXPECT_EQ(t.Scalar("SELECT Count(*) FROM ProjectsDocDett WHERE NDoc=101 AND Riga=1 AND Importo=12.345").toInt(), 2);
  EXPECT_EQ(Valore(t, "SELECT PzVend FROM DocDett WHERE NDoc=101 AND Riga=2"), 9);
  EXPECT_EQ(s.f.ListView1->Text(r, 7), "12,35");
  // The summary keeps its old price until the next reading.
  auto c = s.f.Riepilogo()->Clone();
  c->SetFilter("CProject=202600001 AND CDisp=1");
  EXPECT_EQ(c->Value("Importo").toDouble(), 0);
  s.f.CaricaDati();
  EXPECT_EQ(s.f.ListView1->Text(s.f.ListView1->Row("K2026000010001"), 7), "12,35");
  // Each note's totals anew: 101 = 3 x 12.345 (37.035 -> 37.04) + 9, 102 = 24.69.
  EXPECT_NEAR(Valore(t, "SELECT ImpDoc FROM Doc WHERE NDoc=101"), 46.04, 1e-9);
  EXPECT_NEAR(Valore(t, "SELECT ImpDoc FROM Doc WHERE NDoc=102"), 24.69, 1e-9);
  EXPECT_TRUE(t.LogLines("frmCtrlDDTxFatt", "AssegnaPZ").isEmpty());
}

// Calcola hands the calculator the summed quantity and no starting price; the
// price it confirms reaches the notes.
TEST(frmCtrlDDTxFatt, CalcolaOpensTheCalculatorForTheSummedQuantity) {
  TestDb t;
  Base(t);
  Nota(t, 101, "2026-11-10 00:00:00");
  Nota(t, 102, "2026-11-12 00:00:00");
  Riga(t, 101, 1, 202600001, 1, 3, 7);
  Riga(t, 102, 1, 202600001, 1, 4, 8);
  Schermo s;
  ASSERT_EQ(s.f.ListView1->Count(), 1);
  s.f.ListView1->SetSelected(0);
  double qta = -1, pzIni = -1;
  QString chiamante;
  AlProssimoModale([&](QWidget* w) {
    auto* c = qobject_cast<frmCalcPzVend*>(w);
    ASSERT_TRUE(c);
    qta = c->Qta;
    pzIni = c->PzIni;
    chiamante = c->Chiamante;
    c->OCPzVend->SetValue(9.5);
    c->Bottone(3)->trigger();
  });
  s.f.mnuCalc->trigger();
  EXPECT_EQ(qta, 7);
  EXPECT_EQ(pzIni, 0);
  EXPECT_EQ(chiamante, "frmCtrlDDTxFatt");
  EXPECT_EQ(s.f.CProject, 202600001);
  EXPECT_EQ(s.f.CDisp, 1);
  EXPECT_EQ(Valore(t, "SELECT PzVend FROM DocDett WHERE NDoc=101"), 9.5);
  EXPECT_EQ(Valore(t, "SELECT PzVend FROM DocDett WHERE NDoc=102"), 9.5);
  EXPECT_EQ(s.f.ListView1->Text(0, 7), "9,50");
}

// Totals worked out by hand: discount and surcharge, per line rounding with
// ties to the even cent, the header's VAT code over the lines', and a code
// other than 2 that adds no tax and is logged.
TEST(frmCtrlDDTxFatt, RicalcTotDocRoundsLineByLine) {
  TestDb t;
  Base(t);
  Nota(t, 101, "2026-11-10 00:00:00", 1, 10, 0);
  Riga(t, 101, 1, 202600001, 1, 3, 10.25);           // 27.675 -> 27.68, tax 6.0896 -> 6.09
  Riga(t, 101, 2, 202600001, 1, 1, 0.125);           // 0.1125 -> 0.11, tax 0.0242 -> 0.02
  Riga(t, 101, 3, 202600001, 1, 2, 10.125, 1, 3, 20);  // 14.58, code 3: no tax here
  frmCtrlDDTxFatt f;
  f.RicalcTotDoc(5, 101);
  EXPECT_NEAR(Valore(t, "SELECT ImpDoc FROM Doc WHERE NDoc=101"), 42.37, 1e-9);
  EXPECT_NEAR(Valore(t, "SELECT IVADoc FROM Doc WHERE NDoc=101"), 6.11, 1e-9);
  EXPECT_NEAR(Valore(t, "SELECT TotDoc FROM Doc WHERE NDoc=101"), 48.48, 1e-9);
  EXPECT_EQ(t.LogLines("frmCtrlDDTxFatt", "RicalcTotDoc").size(), 1);

  // The header's code 2 for every line: 14.58 x 22% = 3.2076 -> 3.21.
  t.Exec("UPDATE Doc SET CIva=2 WHERE NDoc=101");
  f.RicalcTotDoc(5, 101);
  EXPECT_NEAR(Valore(t, "SELECT IVADoc FROM Doc WHERE NDoc=101"), 9.32, 1e-9);
  EXPECT_NEAR(Valore(t, "SELECT TotDoc FROM Doc WHERE NDoc=101"), 51.69, 1e-9);
  EXPECT_EQ(t.LogLines("frmCtrlDDTxFatt", "RicalcTotDoc").size(), 1);

  // No discount: the ties 0.125 -> 0.12 and 0.375 -> 0.38, to the even cent.
  t.Exec("DELETE FROM DocDett WHERE NDoc=101");
  t.Exec("UPDATE Doc SET ValSconto=0 WHERE NDoc=101");
  t.Exec("INSERT INTO DocDett (TipoDoc, NDoc, Scheda, Riga, Qta, PzVend, CCaus, CIVA, ValRic) VALUES "
         "(5, 101, 0, 1, 1, 0.125, 1, 2, 0), (5, 101, 0, 2, 1, 0.375, 1, 2, 0)");
  f.RicalcTotDoc(5, 101);
  EXPECT_NEAR(Valore(t, "SELECT ImpDoc FROM Doc WHERE NDoc=101"), 0.50, 1e-9);
  EXPECT_NEAR(Valore(t, "SELECT IVADoc FROM Doc WHERE NDoc=101"), 0.03 + 0.08, 1e-9);

  // A discount of 100 and a surcharge of 100 give 0 and keep the tax as it is.
  t.Exec("UPDATE Doc SET ValSconto=100 WHERE NDoc=101");
  f.RicalcTotDoc(5, 101);
  EXPECT_NEAR(Valore(t, "SELECT ImpDoc FROM Doc WHERE NDoc=101"), 0, 1e-9);
  EXPECT_NEAR(Valore(t, "SELECT IVADoc FROM Doc WHERE NDoc=101"), 0, 1e-9);
  t.Exec("UPDATE Doc SET ValSconto=0 WHERE NDoc=101");
  t.Exec("UPDATE DocDett SET ValRic=100 WHERE NDoc=101");
  f.RicalcTotDoc(5, 101);
  EXPECT_NEAR(Valore(t, "SELECT TotDoc FROM Doc WHERE NDoc=101"), 0, 1e-9);
}

TEST(frmCtrlDDTxFatt, RicalcTotDocOfAMissingDocumentChangesNothing) {
  TestDb t;
  Base(t);
  Nota(t, 101, "2026-11-10 00:00:00");
  frmCtrlDDTxFatt f;
  f.RicalcTotDoc(5, 999);
  EXPECT_EQ(Valore(t, "SELECT TotDoc FROM Doc WHERE NDoc=101"), 0);
  EXPECT_TRUE(t.LogLines("frmCtrlDDTxFatt", "RicalcTotDoc").isEmpty());
}

TEST(frmCtrlDDTxFatt, ChangingThePeriodReadsAgain) {
  TestDb t;
  Base(t);
  Nota(t, 101, "2026-11-10 00:00:00");
  Nota(t, 102, "2026-12-10 00:00:00", 2);
  Riga(t, 101, 1, 202600001, 1, 3, 7);
  Riga(t, 102, 1, 202600002, 1, 4, 8);
  Schermo s;
  ASSERT_EQ(s.f.ListView1->Count(), 1);
  s.f.DTPicker2->setDate(QDate(2026, 12, 31));
  EXPECT_EQ(s.f.ListView1->Count(), 2);
  s.f.DTPicker1->setDate(QDate(2026, 12, 1));
  ASSERT_EQ(s.f.ListView1->Count(), 1);
  EXPECT_EQ(s.f.ListView1->Text(0, 2), "Bianchi Stampi");
}

TEST(frmCtrlDDTxFatt, TheToolbarAndTheMenuClose) {
  TestDb t;
  Base(t);
  for (int via = 0; via < 2; ++via) {
    Schermo s;
    ASSERT_TRUE(s.f.isVisible());
    if (via == 0) s.f.Bottone(1)->trigger();
    else s.f.mnuFE->trigger();
    EXPECT_FALSE(s.f.isVisible());
  }
}
