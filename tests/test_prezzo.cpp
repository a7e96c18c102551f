// The selling price: the calculator screen, the price settings, the proposed
// price for the host, and the ways a confirmed price goes back.
#include <gtest/gtest.h>

#include <QApplication>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

#include "CalcDatiDisp.h"
#include "OCPrestKT.h"
#include "ProcedureUi.h"
#include "TestSupport.h"
#include "frmCalcPzVend.h"
#include "frmSettings.h"

using namespace prestkt;
using namespace prestkt::test;

namespace {

constexpr int kModello = 202500001;

// The workshop of the worked example: a customer's model with one disposition
// (type 1 hourly, type 2 forfait), three activities and one delivery.
void Officina(TestDb& t) {
  t.Exec("INSERT INTO Anagrafica (TAnag, CAnag, RagSoc1, CostoH, Eliminato) VALUES "
         "(1, 1, 'Officina Rossi', 0, 0), (10, 1, 'Mario Verdi', 21.5, 0), (10, 2, 'Luca Neri', 18, 0), "
         "(2, 1, 'Zincatura Lombarda', 0, 0)");
  t.Exec("INSERT INTO ProjectsTipo (CPrjTipo, DPrjTipo) VALUES (1, 'Stampo')");
  t.Exec("INSERT INTO ProjectsDispTipo (CPrjDispTipo, DPrjDispTipo, Forfait, TipoFatt) VALUES "
         "(1, 'Oraria', 0, 2), (2, 'Forfait', -1, 2)");
  t.Exec("INSERT INTO ProjectsDispTar (CPrjTipo, CPrjDispTipo, TarMin, TarMax, TarH) VALUES "
         "(1, 1, 22, 30, 38), (1, 2, 22, 30, 38)");
  t.Exec("INSERT INTO TabGen (CTipTabGen, CTabGen, DTabGen, Sigla, Bool8) VALUES "
         "(12, 1, 'Saldatura', 'SA', 0), (12, 2, 'Tornitura', 'TO', 0), (1, 1, 'C/Lavorazione', 'CL', -1)");
  t.Exec("INSERT INTO Projects (CProject, DProject, CPrjTipo, TAnag, CAnag, DtIni) VALUES "
         "(202500001, 'Stampo pompa', 1, 1, 1, '2025-01-10 00:00:00')");
  t.Exec("INSERT INTO ProjectsDisp (CProject, CDisp, DDisp, CPrjDispTipo, Data, Qta, CStato, DefPzVend, PzVend) "
         "VALUES (202500001, 1, 'Stampaggio', 1, '2025-02-01 00:00:00', 12, 0, 0, 0)");
  // 150 minutes at 21.50, 70 at 18.00, 45 at 21.50.
  t.Exec("INSERT INTO ActivitiesProd (CAttivita, CProject, CDisp, CUtente, CPrestazione, DtIni, DtEnd, CostoH) VALUES "
         "(202500001, 202500001, 1, 1, 1, '2025-02-03 00:00:00', '2025-02-03 02:30:00', 21.5), "
         "(202500002, 202500001, 1, 2, 2, '2025-02-04 00:00:00', '2025-02-04 01:10:00', 18), "
         "(202500003, 202500001, 1, 1, 1, '2025-02-05 00:00:00', '2025-02-05 00:45:00', 21.5)");
  // One delivery of 10 pieces at 3.40 against an order line of the disposition.
  t.Exec("INSERT INTO DocForn (TipoDoc, NDoc, Data, Riferimento, TAnag, CAnag) VALUES "
         "(12, 100, '2025-01-15 00:00:00', 'Ord. 100', 2, 1), (15, 200, '2025-01-20 00:00:00', 'DDT 7', 2, 1)");
  t.Exec("INSERT INTO DocFornDett (TipoDoc, NDoc, Scheda, Riga, Qta, QtaArr, PzVend, CCaus) VALUES "
         "(12, 100, 0, 1, 10, 10, 3.4, 1)");
  t.Exec("INSERT INTO DocFornDett (TipoDoc, NDoc, Scheda, Riga, Qta, PzVend, CCaus, TipoDocRif, NDocRif, RigaRif) "
         "VALUES (15, 200, 0, 1, 10, 3.4, 1, 12, 100, 1)");
  t.Exec("INSERT INTO ProjectsDocDett (TipoDoc, NDoc, Scheda, Riga, RigaD, CProject, CDisp, Qta, Importo) VALUES "
         "(12, 100, 0, 1, 1, 202500001, 1, 10, 3.4)");
  gPathDB = t.db->PathDB();
}

void Impostazioni(double percRicLExt, double percRicMin, double coeffStd, double coeffRange) {
  ScriviConfig(false, "PrestKT_PercRicLExt", QString::number(percRicLExt));
  ScriviConfig(false, "PrestKT_PercRicMin", QString::number(percRicMin));
  ScriviConfig(false, "PrestKT_CoeffStd", QString::number(coeffStd));
  ScriviConfig(false, "PrestKT_CoeffRange", QString::number(coeffRange));
}

// The calculator as a screen of the component opens it.
struct Calcolo {
  explicit Calcolo(int cDisp = 1, double qta = 12, double pzIni = 0, bool esterne = true) {
    f.Chiamante = "frmGestOrdFornImm";
    f.CProject = kModello;
    f.CDisp = cDisp;
    f.Qta = qta;
    f.PzIni = pzIni;
    QObject::connect(&f, &frmCalcPzVend::SetPzVend, [this](double p) { prezzi.push_back(p); });
    caricato = f.Form_Load();
    if (!caricato) return;
    f.show();
    if (esterne) f.SSTab1->setCurrentIndex(1);  // the second tab shown: external work counts
  }
  // Ticks or unticks a row as the user's click does.
  static void Spunta(ListView* l, int riga, bool si) {
    l->Model()->setData(l->Model()->index(riga, 0), si ? Qt::Checked : Qt::Unchecked, Qt::CheckStateRole);
  }
  frmCalcPzVend f;
  std::vector<double> prezzi;
  bool caricato = false;
};

constexpr double kEps = 1e-9;

}  // namespace

// ---------------------------------------------------------------- worked examples

TEST(frmCalcPzVend, WorkedExampleHourlyWork) {
  TestDb t;
  Officina(t);
  Impostazioni(0.5, 0.2, 5, 1);
  Calcolo c;
  ASSERT_TRUE(c.caricato);
  frmCalcPzVend& f = c.f;
  EXPECT_EQ(f.windowTitle(), "Calcolo tariffa");
  EXPECT_EQ(f.TBProjDisp->text(), "2025-00001/001");
  EXPECT_EQ(f.TBDProject->text(), "Stampo pompa");
  EXPECT_EQ(f.TBDPrjTipo->text(), "Stampo");
  EXPECT_EQ(f.TBDisposizione->text(), "Stampaggio");
  EXPECT_EQ(f.TBAnag->text(), "Officina Rossi");
  EXPECT_FALSE(f.OCFrame1->isEnabled());
  EXPECT_TRUE(f.OCFrame2->isEnabled());
  EXPECT_TRUE(f.OCFrame3->isHidden());  // not a forfait
  EXPECT_DOUBLE_EQ(f.OCCoeffArrot->Value(), 5);
  EXPECT_DOUBLE_EQ(f.OCTarH->Value(), 38);

  // The internal list, its texts and its total.
  ASSERT_EQ(f.lvwEsecInt->Count(), 3);
  EXPECT_EQ(f.lvwEsecInt->Key(0), "K202500001");
  EXPECT_EQ(f.lvwEsecInt->Text(0, 1), "2025-00001");
  EXPECT_EQ(f.lvwEsecInt->Text(0, 2), "03/02/2025");
  EXPECT_EQ(f.lvwEsecInt->Text(0, 3), "Mario Verdi");
  EXPECT_EQ(f.lvwEsecInt->Text(0, 4), "Saldatura");
  EXPECT_EQ(f.lvwEsecInt->Text(0, 5), "02:30");
  EXPECT_EQ(f.lvwEsecInt->Text(0, 6), "21,50");
  EXPECT_EQ(f.lvwEsecInt->Text(0, 7), "53,75");
  EXPECT_EQ(f.lvwEsecInt->Text(1, 7), "21,00");
  EXPECT_EQ(f.lvwEsecInt->Text(2, 7), "16,12");  // Round(16.125, 2), halves to even
  EXPECT_TRUE(f.lvwEsecInt->Checked(0));
  ASSERT_EQ(f.lvwEsecIntTot->Count(), 1);
  EXPECT_EQ(f.lvwEsecIntTot->Key(0), "K");
  EXPECT_EQ(f.lvwEsecIntTot->Text(0, 5), "04:25");
  EXPECT_EQ(f.lvwEsecIntTot->Text(0, 7), "90,87");
  EXPECT_EQ(f.MinutiTot, 265);
  // The external list.
  ASSERT_EQ(f.lvwEsecExt->Count(), 1);
  EXPECT_EQ(f.lvwEsecExt->Key(0), "K0000002000001");
  EXPECT_EQ(f.lvwEsecExt->Text(0, 1), "0000-00200");
  EXPECT_EQ(f.lvwEsecExt->Text(0, 3), "Zincatura Lombarda");
  EXPECT_EQ(f.lvwEsecExt->Text(0, 4), "DDT 7");
  EXPECT_EQ(f.lvwEsecExt->Text(0, 5), "CL");
  EXPECT_EQ(f.lvwEsecExt->Text(0, 6), "10");
  EXPECT_EQ(f.lvwEsecExt->Text(0, 7), "3,40");
  EXPECT_EQ(f.lvwEsecExt->Text(0, 8), "34,00");
  EXPECT_EQ(f.lvwEsecExtTot->Text(0, 8), "34,00");

  // The figures of the table, in their order.
  EXPECT_NEAR(f.OCCostoTot->Value(), 124.87, kEps);
  EXPECT_NEAR(f.OCValLavInt->Value(), 167.83, kEps);
  EXPECT_NEAR(f.OCValLavExt->Value(), 51.00, kEps);
  EXPECT_NEAR(f.OCValTot->Value(), 218.83, kEps);
  EXPECT_NEAR(f.OCMargPercTot->Value(), 1 - 124.87 / 218.83, kEps);
  EXPECT_NEAR(f.OCMargPercTot->Value(), 0.42937, 1e-5);
  EXPECT_NEAR(f.OCMargTot->Value(), 93.96, kEps);
  EXPECT_NEAR(f.OCValUnit->Value(), 18.24, kEps);
  EXPECT_NEAR(f.OCCostoUnit->Value(), 10.41, kEps);
  EXPECT_NEAR(f.OCPzVend->Value(), 20.00, kEps);
  EXPECT_NEAR(f.OCPercReale->Value(), 20 / 10.41 - 1, kEps);
  EXPECT_NEAR(f.OCPercReale->Value(), 0.92122, 1e-5);
  EXPECT_NEAR(f.OCMargUnReal->Value(), 9.59, kEps);
  EXPECT_EQ(f.OCCostoTot->text(), "124,87");
  EXPECT_EQ(f.OCMargTot->text(), "93,96");
  EXPECT_EQ(f.OCPzVend->text(), "20,00");
  EXPECT_EQ(f.OCMargPercTot->text(), "42,94%");
  // An open price: editable, green.
  EXPECT_FALSE(f.OCPzVend->isReadOnly());
  EXPECT_EQ(f.OCPzVend->palette().color(QPalette::Base), QColor(192, 255, 192));
  EXPECT_FALSE(f.mnuSblocca->isEnabled());

  f.Bottone(3)->trigger();
  EXPECT_EQ(c.prezzi, std::vector<double>({20.0}));
  EXPECT_FALSE(f.isVisible());
  EXPECT_TRUE(t.LogLines("frmCalcPzVend", "CaricaDati").isEmpty());
}

TEST(frmCalcPzVend, WorkedExampleAsAForfaitTakesTheBandsMinimum) {
  TestDb t;
  Officina(t);
  Impostazioni(0.5, 0.2, 5, 1);
  t.Exec("UPDATE ProjectsDisp SET CPrjDispTipo=2");
  Calcolo c;
  frmCalcPzVend& f = c.f;
  EXPECT_FALSE(f.OCFrame3->isHidden());
  EXPECT_DOUBLE_EQ(f.OCCoeffArrot->Value(), 1);  // the band's coefficient
  EXPECT_DOUBLE_EQ(f.OCTarMin->Value(), 22);
  EXPECT_DOUBLE_EQ(f.OCTarMax->Value(), 30);
  EXPECT_NEAR(f.OCValUnit->Value(), 18.24, kEps);
  EXPECT_NEAR(f.OCCostoUnit->Value(), 10.41, kEps);
  // ArrotMultiplo(18.24, 1) is 19; 22 is above it.
  EXPECT_NEAR(f.OCPzVend->Value(), 22, kEps);
  EXPECT_NEAR(f.OCMargUnReal->Value(), 22 - 10.41, kEps);
}

TEST(frmCalcPzVend, WorkedExampleForfaitWhoseMarginGoesOverTheTopOfTheBand) {
  TestDb t;
  Officina(t);
  Impostazioni(0.5, 0.2, 5, 1);
  // One hour at 26.00, valued at 28.00 an hour, one unit: cost 26, value 28.
  t.Exec("DELETE FROM ActivitiesProd");
  t.Exec("DELETE FROM ProjectsDocDett");
  t.Exec("INSERT INTO ActivitiesProd (CAttivita, CProject, CDisp, CUtente, CPrestazione, DtIni, DtEnd, CostoH) VALUES "
         "(202500001, 202500001, 1, 1, 1, '2025-02-03 00:00:00', '2025-02-03 01:00:00', 26)");
  t.Exec("UPDATE ProjectsDisp SET CPrjDispTipo=2, Qta=1");
  // The customer's own tariff wins whole over the general one.
  t.Exec("INSERT INTO ProjectsDispTarDett (CPrjTipo, CPrjDispTipo, TAnag, CAnag, TarMin, TarMax, TarH) VALUES "
         "(1, 2, 1, 1, 22, 30, 28)");
  Calcolo c(1, 1);
  frmCalcPzVend& f = c.f;
  EXPECT_NEAR(f.OCCostoUnit->Value(), 26, kEps);
  EXPECT_NEAR(f.OCValUnit->Value(), 28, kEps);
  // m 0.0714 is below 0.2: the floor Round(1.2 x 26) = 31.20 rounds up to 32;
  // 30 is below it, m2 = 0.1333 is below 0.2 again: the floor comes back.
  EXPECT_NEAR(f.OCPzVend->Value(), 32, kEps);
  EXPECT_NEAR(f.OCPercReale->Value(), 32.0 / 26 - 1, kEps);
  EXPECT_NEAR(f.OCMargUnReal->Value(), 6, kEps);
}

// Until the second tab is shown the external work is not in the figures: the
// total cost keeps the 0 it had, as the system does it.
TEST(frmCalcPzVend, ExternalCostNotLoadedUntilItsTabShows) {
  TestDb t;
  Officina(t);
  Impostazioni(0.5, 0.2, 5, 1);
  Calcolo c(1, 12, 0, false);
  frmCalcPzVend& f = c.f;
  EXPECT_FALSE(f.EsternaCaricata());
  EXPECT_EQ(f.lvwEsecExtTot->Count(), 0);
  EXPECT_NEAR(f.OCCostoTot->Value(), 0, kEps);
  EXPECT_NEAR(f.OCValLavInt->Value(), 167.83, kEps);
  EXPECT_NEAR(f.OCValLavExt->Value(), 0, kEps);
  EXPECT_NEAR(f.OCValTot->Value(), 167.83, kEps);
  EXPECT_NEAR(f.OCMargPercTot->Value(), 1, kEps);
  EXPECT_NEAR(f.OCMargTot->Value(), 167.83, kEps);
  EXPECT_NEAR(f.OCValUnit->Value(), 13.99, kEps);
  EXPECT_NEAR(f.OCCostoUnit->Value(), 0, kEps);
  EXPECT_NEAR(f.OCPzVend->Value(), 15, kEps);  // ArrotMultiplo(13.99, 5)
  EXPECT_NEAR(f.OCPercReale->Value(), 0, kEps);
  EXPECT_NEAR(f.OCMargUnReal->Value(), 15, kEps);
  f.Bottone(3)->trigger();
  EXPECT_EQ(c.prezzi, std::vector<double>({15.0}));
}

// ---------------------------------------------------------------- edge cases

TEST(frmCalcPzVend, ForfaitWithValueZeroLogsTheDivisionAndTakesTheFloor) {
  TestDb t;
  Officina(t);
  Impostazioni(0.5, 0.2, 5, 1);
  t.Exec("DELETE FROM ActivitiesProd");
  t.Exec("DELETE FROM ProjectsDocDett");
  t.Exec("INSERT INTO ActivitiesProd (CAttivita, CProject, CDisp, CUtente, CPrestazione, DtIni, DtEnd, CostoH) VALUES "
         "(202500001, 202500001, 1, 1, 1, '2025-02-03 00:00:00', '2025-02-03 01:00:00', 10)");
  t.Exec("UPDATE ProjectsDisp SET CPrjDispTipo=2, Qta=1");
  t.Exec("UPDATE ProjectsDispTar SET TarMin=0, TarMax=40, TarH=0 WHERE CPrjDispTipo=2");
  Calcolo c(1, 1);
  EXPECT_NEAR(c.f.OCValUnit->Value(), 0, kEps);
  EXPECT_NEAR(c.f.OCCostoUnit->Value(), 10, kEps);
  EXPECT_NEAR(c.f.OCPzVend->Value(), 12, kEps);  // m stays 0: the floor Round(1.2 x 10) = 12
  // At opening, before the external tab, cost and value are both 0: 0 / 0 fails
  // with an overflow, in the chain of the list and in the calculation that
  // follows it; with the tab shown, 10 / 0 fails with a division by zero.
  const QStringList log = t.LogLines("frmCalcPzVend", "CalcPzVend");
  ASSERT_EQ(log.size(), 3);
  EXPECT_TRUE(log[0].endsWith("CalcPzVend: Overflow (6)")) << log[0].toStdString();
  EXPECT_TRUE(log[1].endsWith("CalcPzVend: Overflow (6)")) << log[1].toStdString();
  EXPECT_TRUE(log[2].endsWith("CalcPzVend: Division by zero (11)")) << log[2].toStdString();
}

TEST(frmCalcPzVend, HourlyWithValueZeroGivesZeroAndConfirmingAsksForAPrice) {
  TestDb t;
  Officina(t);
  Impostazioni(0.5, 0.2, 5, 1);
  t.Exec("DELETE FROM ProjectsDocDett");
  t.Exec("UPDATE ProjectsDispTar SET TarH=0");
  Calcolo c;
  EXPECT_NEAR(c.f.OCValUnit->Value(), 0, kEps);
  EXPECT_NEAR(c.f.OCPzVend->Value(), 0, kEps);  // m is 1, ArrotMultiplo(0, 5) is 0
  EXPECT_TRUE(t.LogLines("frmCalcPzVend", "CalcPzVend").isEmpty());
  c.f.Bottone(3)->trigger();
  ASSERT_EQ(t.messages->asked.size(), 1u);
  EXPECT_EQ(t.messages->asked[0].prompt, "Devi inserire un prezzo di vendita per confermare!");
  EXPECT_EQ(t.messages->asked[0].buttons, vbExclamation);
  EXPECT_TRUE(c.prezzi.empty());
  EXPECT_TRUE(c.f.isVisible());
}

TEST(frmCalcPzVend, UnitsZeroGiveZeroUnitFiguresWithoutADivision) {
  TestDb t;
  Officina(t);
  Impostazioni(0.5, 0.2, 5, 1);
  Calcolo c(1, 0);
  EXPECT_NEAR(c.f.OCValTot->Value(), 218.83, kEps);
  EXPECT_NEAR(c.f.OCValUnit->Value(), 0, kEps);
  EXPECT_NEAR(c.f.OCCostoUnit->Value(), 0, kEps);
  EXPECT_NEAR(c.f.OCPzVend->Value(), 0, kEps);
  EXPECT_TRUE(t.LogLines("frmCalcPzVend", "CalcPzVend").isEmpty());
}

TEST(frmCalcPzVend, CoefficientZeroDoesNotRoundUp) {
  TestDb t;
  Officina(t);
  Impostazioni(0.5, 0.2, 0, 1);
  Calcolo c;
  EXPECT_DOUBLE_EQ(c.f.OCCoeffArrot->Value(), 0);
  EXPECT_NEAR(c.f.OCPzVend->Value(), 18.24, kEps);
}

TEST(frmCalcPzVend, ValueAlreadyAMultipleStaysAsItIs) {
  TestDb t;
  Officina(t);
  Impostazioni(0.5, 0.2, 0.1, 1);
  t.Exec("DELETE FROM ProjectsDocDett");
  t.Exec("DELETE FROM ActivitiesProd WHERE CAttivita<>202500002");  // 70 minutes at 18.00
  t.Exec("UPDATE ProjectsDispTar SET TarH=88.45714285714286 WHERE CPrjDispTipo=1");
  t.Exec("UPDATE ProjectsDisp SET Qta=1");
  Calcolo c(1, 1);
  // Round(88.457... x 70 / 60, 2) = 103.20, a multiple of 0.1 but for binary noise.
  EXPECT_NEAR(c.f.OCValUnit->Value(), 103.2, kEps);
  EXPECT_EQ(c.f.OCPzVend->Value(), c.f.OCValUnit->Value());
  EXPECT_EQ(c.f.OCPzVend->text(), "103,20");
}

TEST(frmCalcPzVend, RunningActivityTakesTheMinutesOfTheRowBefore) {
  TestDb t;
  Officina(t);
  Impostazioni(0.5, 0.2, 5, 1);
  t.Exec("UPDATE ActivitiesProd SET DtEnd=NULL WHERE CAttivita IN (202500001, 202500003)");
  Calcolo c;
  ListView* l = c.f.lvwEsecInt;
  ASSERT_EQ(l->Count(), 3);
  EXPECT_EQ(l->Text(0, 5), "00:00");  // the first row: 0
  EXPECT_EQ(l->Text(0, 7), "0,00");
  EXPECT_EQ(l->Text(1, 5), "01:10");
  EXPECT_EQ(l->Text(2, 5), "01:10");  // the row before's minutes
  EXPECT_EQ(l->Text(2, 7), "25,08");  // Round(21.50 x 70 / 60, 2)
  EXPECT_EQ(c.f.lvwEsecIntTot->Text(0, 5), "02:20");
  EXPECT_EQ(t.LogLines("frmCalcPzVend", "CaricaListEsecInt").size(), 2);
}

TEST(frmCalcPzVend, NoActivitiesShowZeroTotals) {
  TestDb t;
  Officina(t);
  Impostazioni(0.5, 0.2, 5, 1);
  t.Exec("DELETE FROM ActivitiesProd");
  Calcolo c;
  EXPECT_EQ(c.f.lvwEsecInt->Count(), 0);
  ASSERT_EQ(c.f.lvwEsecIntTot->Count(), 1);
  EXPECT_EQ(c.f.lvwEsecIntTot->Text(0, 5), "00:00");
  EXPECT_EQ(c.f.lvwEsecIntTot->Text(0, 7), "0,00");
  EXPECT_EQ(c.f.MinutiTot, 0);
  EXPECT_NEAR(c.f.OCValLavInt->Value(), 0, kEps);
  EXPECT_NEAR(c.f.OCCostoTot->Value(), 34, kEps);
  EXPECT_NEAR(c.f.OCValTot->Value(), 51, kEps);
}

TEST(frmCalcPzVend, AllRowsUncheckedBringCostAndValueToZero) {
  TestDb t;
  Officina(t);
  Impostazioni(0.5, 0.2, 5, 1);
  Calcolo c;
  Calcolo::Spunta(c.f.lvwEsecInt, 0, false);
  EXPECT_EQ(c.f.lvwEsecIntTot->Text(0, 5), "01:55");
  EXPECT_NEAR(c.f.OCCostoTot->Value(), 34 + 21.00 + 16.12, kEps);
  for (int i = 1; i < 3; ++i) Calcolo::Spunta(c.f.lvwEsecInt, i, false);
  Calcolo::Spunta(c.f.lvwEsecExt, 0, false);
  EXPECT_EQ(c.f.lvwEsecIntTot->Text(0, 7), "0,00");
  EXPECT_EQ(c.f.lvwEsecExtTot->Text(0, 8), "0,00");
  EXPECT_NEAR(c.f.OCCostoTot->Value(), 0, kEps);
  EXPECT_NEAR(c.f.OCValTot->Value(), 0, kEps);
  EXPECT_NEAR(c.f.OCMargPercTot->Value(), 0, kEps);
  EXPECT_NEAR(c.f.OCPzVend->Value(), 0, kEps);
  // Ticked again, the figures come back.
  Calcolo::Spunta(c.f.lvwEsecExt, 0, true);
  for (int i = 0; i < 3; ++i) Calcolo::Spunta(c.f.lvwEsecInt, i, true);
  EXPECT_NEAR(c.f.OCPzVend->Value(), 20, kEps);
}

TEST(frmCalcPzVend, LockedPriceOpensWithTheCallersPriceInARedReadOnlyField) {
  TestDb t;
  Officina(t);
  Impostazioni(0.5, 0.2, 5, 1);
  t.Exec("UPDATE ProjectsDisp SET DefPzVend=-1, PzVend=25");
  Calcolo c(1, 12, 27.5, false);
  frmCalcPzVend& f = c.f;
  EXPECT_NEAR(f.OCPzVend->Value(), 27.5, kEps);
  EXPECT_TRUE(f.OCPzVend->isReadOnly());
  EXPECT_EQ(f.OCPzVend->palette().color(QPalette::Base), QColor(255, 128, 128));
  EXPECT_EQ(f.OCPzVend->toolTip(), "Premi tasto dx del mouse per sbloccare!");
  EXPECT_TRUE(f.mnuSblocca->isEnabled());
  EXPECT_NEAR(f.OCMargUnReal->Value(), 27.5, kEps);  // no external cost yet: unit cost 0
  // The next calculation, when the external tab shows, takes the locked price again.
  f.SSTab1->setCurrentIndex(1);
  EXPECT_NEAR(f.OCPzVend->Value(), 25, kEps);
  EXPECT_NEAR(f.OCMargUnReal->Value(), 25 - 10.41, kEps);
}

TEST(frmCalcPzVend, LockedPriceStaysOnRecalculationWhileTheMarginsFollowTheCost) {
  TestDb t;
  Officina(t);
  Impostazioni(0.5, 0.2, 5, 1);
  t.Exec("UPDATE ProjectsDisp SET DefPzVend=-1, PzVend=25");
  Calcolo c;
  frmCalcPzVend& f = c.f;
  EXPECT_NEAR(f.OCPzVend->Value(), 25, kEps);
  EXPECT_NEAR(f.OCPercReale->Value(), 25 / 10.41 - 1, kEps);
  Calcolo::Spunta(f.lvwEsecExt, 0, false);  // the external cost goes: 90.87 / 12 = 7.57
  EXPECT_NEAR(f.OCCostoUnit->Value(), 7.57, kEps);
  EXPECT_NEAR(f.OCPzVend->Value(), 25, kEps);
  EXPECT_NEAR(f.OCPercReale->Value(), 25 / 7.57 - 1, kEps);
  EXPECT_NEAR(f.OCMargUnReal->Value(), 25 - 7.57, kEps);
  // The recalculation button asks first; No changes nothing, Yes recalculates the locked price as 25.
  f.Bottone(5)->trigger();
  ASSERT_EQ(t.messages->asked.size(), 1u);
  EXPECT_EQ(t.messages->asked[0].prompt, "Sei sicuro di voler ricalcolare il prezzo di vendita?");
  EXPECT_EQ(t.messages->asked[0].buttons, vbYesNo | vbQuestion | vbDefaultButton2);
  t.messages->answers = {vbYes};
  f.Bottone(5)->trigger();
  EXPECT_NEAR(f.OCPzVend->Value(), 25, kEps);
}

TEST(frmCalcPzVend, RecalculationOverwritesATypedPriceOnlyAfterYes) {
  TestDb t;
  Officina(t);
  Impostazioni(0.5, 0.2, 5, 1);
  Calcolo c;
  frmCalcPzVend& f = c.f;
  f.OCPzVend->SetValue(23);  // typed by the user
  EXPECT_NEAR(f.OCMargUnReal->Value(), 23 - 10.41, kEps);
  f.Bottone(5)->trigger();  // the default answer is No
  EXPECT_NEAR(f.OCPzVend->Value(), 23, kEps);
  t.messages->answers = {vbYes};
  f.Bottone(5)->trigger();
  EXPECT_NEAR(f.OCPzVend->Value(), 20, kEps);
}

TEST(frmCalcPzVend, UnlockedThenClosedReturnsNothingAndTheDatabaseStaysLocked) {
  TestDb t;
  Officina(t);
  Impostazioni(0.5, 0.2, 5, 1);
  t.Exec("UPDATE ProjectsDisp SET DefPzVend=-1, PzVend=25");
  Calcolo c;
  frmCalcPzVend& f = c.f;
  f.mnuSblocca->trigger();
  EXPECT_FALSE(f.OCPzVend->isReadOnly());
  EXPECT_EQ(f.OCPzVend->palette().color(QPalette::Base), QColor(192, 255, 192));
  EXPECT_NEAR(f.OCPzVend->Value(), 25, kEps);  // the price stays until a calculation runs
  EXPECT_FALSE(f.mnuSblocca->isEnabled());
  EXPECT_EQ(f.OCPzVend->toolTip(), "Premi tasto dx del mouse per sbloccare!");  // not cleared
  t.messages->answers = {vbYes};
  f.Bottone(5)->trigger();
  EXPECT_NEAR(f.OCPzVend->Value(), 20, kEps);  // unlocked: now calculated
  f.Bottone(1)->trigger();
  EXPECT_TRUE(c.prezzi.empty());
  EXPECT_FALSE(f.isVisible());
  EXPECT_TRUE(t.Scalar("SELECT DefPzVend FROM ProjectsDisp").toBool());
  EXPECT_TRUE(gRcsDisp->Clone()->Value("DefPzVend").isValid());
  EXPECT_FALSE(CBool(gRcsDisp->Clone()->Value("DefPzVend")));  // unlocked in memory only
  EXPECT_DOUBLE_EQ(t.Scalar("SELECT PzVend FROM ProjectsDisp").toDouble(), 25);
}

TEST(frmCalcPzVend, RightButtonOnTheLockedPriceOffersTheUnlock) {
  TestDb t;
  Officina(t);
  Impostazioni(0.5, 0.2, 5, 1);
  t.Exec("UPDATE ProjectsDisp SET DefPzVend=-1, PzVend=25");
  Calcolo c;
  bool offerto = false;
  QTimer::singleShot(0, [&] {
    if (c.f.mnuPzVend->isVisible()) {
      offerto = true;
      c.f.mnuPzVend->close();
    }
  });
  emit c.f.OCPzVend->customContextMenuRequested(QPoint(2, 2));
  QApplication::processEvents();
  EXPECT_TRUE(offerto);
}

TEST(frmCalcPzVend, TariffNotFoundGivesHourlyRulesAtZero) {
  TestDb t;
  Officina(t);
  Impostazioni(0.5, 0.2, 5, 1);
  t.Exec("DELETE FROM ProjectsDispTar");
  t.Exec("UPDATE ProjectsDisp SET CPrjDispTipo=2");  // a forfait type without any tariff
  Calcolo c;
  EXPECT_TRUE(c.f.OCFrame3->isHidden());
  EXPECT_DOUBLE_EQ(c.f.OCTarH->Value(), 0);
  EXPECT_DOUBLE_EQ(c.f.OCCoeffArrot->Value(), 5);
  EXPECT_NEAR(c.f.OCValLavInt->Value(), 0, kEps);
  EXPECT_NEAR(c.f.OCValUnit->Value(), 4.25, kEps);  // Round(51.00 / 12, 2)
  // m = 1 - 10.41 / 4.25 is below 0.2: the floor Round(1.2 x 10.41) = 12.49 rounds up to 15.
  EXPECT_NEAR(c.f.OCPzVend->Value(), 15, kEps);
}

TEST(frmCalcPzVend, ChangedFieldsStartTheirCalculation) {
  TestDb t;
  Officina(t);
  Impostazioni(0.5, 0.2, 5, 1);
  Calcolo c;
  frmCalcPzVend& f = c.f;
  f.OCTarH->SetValue(40);  // Round(40 x 265 / 60, 2) = 176.67
  EXPECT_NEAR(f.OCValLavInt->Value(), 176.67, kEps);
  EXPECT_NEAR(f.OCValTot->Value(), 227.67, kEps);
  f.OCPercRicLavExt->SetValue(1);  // external work at twice its cost
  EXPECT_NEAR(f.OCValLavExt->Value(), 68, kEps);
  EXPECT_NEAR(f.OCValUnit->Value(), 20.39, kEps);  // Round(244.67 / 12, 2)
  EXPECT_NEAR(f.OCPzVend->Value(), 25, kEps);
  f.OCCoeffArrot->SetValue(1);
  EXPECT_NEAR(f.OCPzVend->Value(), 21, kEps);
  f.OCPercRicMin->SetValue(1.5);  // a margin of 150% on the cost is needed: the floor
  EXPECT_NEAR(f.OCPzVend->Value(), 27, kEps);  // ArrotMultiplo(Round(2.5 x 10.41, 2) = 26.02, 1)
}

TEST(frmCalcPzVend, UnknownModelDoesNotOpen) {
  TestDb t;
  Officina(t);
  frmCalcPzVend f;
  f.CProject = 202599999;
  f.CDisp = 1;
  EXPECT_FALSE(f.Form_Load());
  f.Mostra();  // nothing shown, no message
  EXPECT_FALSE(f.isVisible());
  EXPECT_TRUE(t.messages->asked.empty());
}

TEST(frmCalcPzVend, BandMenuShowsTheBandOfAnHourlyDispositionInRed) {
  TestDb t;
  Officina(t);
  Impostazioni(0.5, 0.2, 5, 1);
  Calcolo c;
  ASSERT_TRUE(c.f.OCFrame3->isHidden());
  c.f.mnuH->trigger();
  EXPECT_FALSE(c.f.OCFrame3->isHidden());
  EXPECT_EQ(c.f.OCFrame3->palette().color(QPalette::Window), QColor(Qt::red));
}

TEST(frmCalcPzVend, SettingsSavedFromItsMenuCountFromTheNextOpening) {
  TestDb t;
  Officina(t);
  Impostazioni(0.5, 0.2, 5, 1);
  Calcolo c;
  QTimer::singleShot(0, [] {
    auto* s = qobject_cast<frmSettings*>(QApplication::activeModalWidget());
    ASSERT_TRUE(s);
    s->OCCoeffArrot->SetValue(10);
    s->OKButton->click();
  });
  c.f.mnuSettings->trigger();
  EXPECT_DOUBLE_EQ(c.f.OCCoeffArrot->Value(), 5);  // this calculation keeps its own
  EXPECT_EQ(LeggiConfig(false, "PrestKT_CoeffStd"), "10");
  Calcolo d;
  EXPECT_DOUBLE_EQ(d.f.OCCoeffArrot->Value(), 10);
  EXPECT_NEAR(d.f.OCPzVend->Value(), 20, kEps);
}

// ---------------------------------------------------------------- the settings

// Each empty key of a fresh installation logs its failed conversion, and the
// calculator takes its own fallback: 0.5, 0.2, 5, 1.
TEST(LeggiImpostazioni, EmptyConfigurationGivesTheCalculatorsFallback) {
  TestDb t;
  Officina(t);
  Calcolo c;
  EXPECT_DOUBLE_EQ(c.f.Impostazioni.PercRicLExt, 0.5);
  EXPECT_DOUBLE_EQ(c.f.Impostazioni.PercRicMin, 0.2);
  EXPECT_DOUBLE_EQ(c.f.Impostazioni.CoeffStd, 5);
  EXPECT_DOUBLE_EQ(c.f.Impostazioni.CoeffRange, 1);
  EXPECT_EQ(t.LogLines("frmCalcPzVend", "CaricaDati").size(), 4);
}

TEST(LeggiImpostazioni, FourZerosCannotBeHeldAndOneKeySwitchesTheFallbackOff) {
  TestDb t;
  Officina(t);
  Impostazioni(0, 0, 0, 0);
  {
    Calcolo c;
    EXPECT_DOUBLE_EQ(c.f.Impostazioni.CoeffStd, 5);
    EXPECT_DOUBLE_EQ(c.f.Impostazioni.CoeffRange, 1);
  }
  // A negative value that makes the sum exactly 0 triggers it as well.
  Impostazioni(0.5, -0.5, 0, 0);
  {
    Calcolo c;
    EXPECT_DOUBLE_EQ(c.f.Impostazioni.PercRicMin, 0.2);
  }
  // One key alone: the others are missing and stay 0.
  QFile::remove(ConfigFile());
  ScriviConfig(false, "PrestKT_PercRicMin", "0.3");
  Calcolo c;
  EXPECT_DOUBLE_EQ(c.f.Impostazioni.PercRicLExt, 0);
  EXPECT_DOUBLE_EQ(c.f.Impostazioni.PercRicMin, 0.3);
  EXPECT_DOUBLE_EQ(c.f.Impostazioni.CoeffStd, 0);
  EXPECT_DOUBLE_EQ(c.f.Impostazioni.CoeffRange, 0);
  EXPECT_EQ(t.LogLines("frmCalcPzVend", "CaricaDati").size(), 3);
}

TEST(frmSettings, EmptyConfigurationShowsItsOwnFallbackWithTheCoefficientsReversed) {
  TestDb t;
  frmSettings f;
  f.Form_Load();
  EXPECT_EQ(f.windowTitle(), "Impostazioni");
  EXPECT_EQ(f.OCFrame1->title(), "Impostazioni");
  EXPECT_DOUBLE_EQ(f.OCPercRicLavExt->Value(), 0.5);
  EXPECT_DOUBLE_EQ(f.OCPercRicMin->Value(), 0.2);
  EXPECT_DOUBLE_EQ(f.OCCoeffArrot->Value(), 1);
  EXPECT_DOUBLE_EQ(f.OCCoeffArrotRange->Value(), 5);
  EXPECT_EQ(f.OKButton->text(), "Salva");
  EXPECT_EQ(f.CancelButton->text(), "Annulla");
  EXPECT_FALSE(f.DaSalvare());
  EXPECT_FALSE(f.OKButton->isEnabled());
}

TEST(frmSettings, ChangeEnablesSavingAndSaveWritesTheFourKeys) {
  TestDb t;
  frmSettings f;
  f.Form_Load();
  f.show();
  QLineEdit* testo = f.OCPercRicMin->findChild<QLineEdit*>();
  testo->selectAll();
  QTest::keyClicks(testo, "25");
  QTest::keyClick(testo, Qt::Key_Return);
  EXPECT_DOUBLE_EQ(f.OCPercRicMin->Value(), 0.25);
  EXPECT_TRUE(f.DaSalvare());
  EXPECT_TRUE(f.OKButton->isEnabled());
  f.OKButton->click();
  EXPECT_FALSE(f.isVisible());
  EXPECT_TRUE(t.messages->asked.empty());
  EXPECT_EQ(LeggiConfig(false, "PrestKT_PercRicLExt"), "0.5");
  EXPECT_EQ(LeggiConfig(false, "PrestKT_PercRicMin"), "0.25");
  EXPECT_EQ(LeggiConfig(false, "PrestKT_CoeffStd"), "1");
  EXPECT_EQ(LeggiConfig(false, "PrestKT_CoeffRange"), "5");
}

TEST(frmSettings, CancellingWithChangesAnsweredNoLeavesTheFileAsItWas) {
  TestDb t;
  Impostazioni(0.4, 0.1, 2, 3);
  QFile file(ConfigFile());
  ASSERT_TRUE(file.open(QIODevice::ReadOnly));
  const QByteArray prima = file.readAll();
  file.close();
  frmSettings f;
  f.Form_Load();
  f.show();
  EXPECT_DOUBLE_EQ(f.OCCoeffArrot->Value(), 2);
  f.OCCoeffArrot->SetValue(7);
  f.CancelButton->click();  // the default answer is No
  ASSERT_EQ(t.messages->asked.size(), 1u);
  EXPECT_EQ(t.messages->asked[0].prompt, "Vuoi salvare prima di uscire?");
  EXPECT_EQ(t.messages->asked[0].buttons, vbYesNo | vbQuestion | vbDefaultButton2);
  EXPECT_FALSE(f.isVisible());
  ASSERT_TRUE(file.open(QIODevice::ReadOnly));
  EXPECT_EQ(file.readAll(), prima);
}

TEST(frmSettings, ClosingWithChangesAnsweredYesSaves) {
  TestDb t;
  frmSettings f;
  f.Form_Load();
  f.show();
  f.OCCoeffArrotRange->SetValue(2.5);
  t.messages->answers = {vbYes};
  f.close();  // the window's own close asks the same
  ASSERT_EQ(t.messages->asked.size(), 1u);
  EXPECT_FALSE(f.isVisible());
  EXPECT_EQ(LeggiConfig(false, "PrestKT_CoeffRange"), "2.5");
  // Without changes nothing is asked.
  frmSettings g;
  g.Form_Load();
  g.show();
  g.CancelButton->click();
  EXPECT_EQ(t.messages->asked.size(), 1u);
  EXPECT_FALSE(g.isVisible());
}

// ---------------------------------------------------------------- the tariff

TEST(GetDatiDisp, HourlyTypeKeepsItsBandAtZeroAndTheCustomersRowWinsWhole) {
  TestDb t;
  Officina(t);
  tyDatiDisp d = GetDatiDisp(1, 1, 1, 1);  // hourly, band filled in: 22 and 30 stay unread
  EXPECT_FALSE(d.vForfait);
  EXPECT_EQ(d.vMin, 0);
  EXPECT_EQ(d.vMax, 0);
  EXPECT_EQ(d.vTarH, 38);
  t.Exec("INSERT INTO ProjectsDispTarDett (CPrjTipo, CPrjDispTipo, TAnag, CAnag, TarMin, TarMax, TarH) VALUES "
         "(1, 2, 1, 1, 5, 6, 0)");
  d = GetDatiDisp(1, 1, 1, 2);
  EXPECT_TRUE(d.vForfait);
  EXPECT_EQ(d.vTarH, 0);  // the customer's 0 wins over the general 38
  EXPECT_EQ(d.vMin, 5);
  EXPECT_EQ(d.vMax, 6);
  d = GetDatiDisp(1, 2, 1, 2);  // another customer: the general row
  EXPECT_EQ(d.vTarH, 38);
  EXPECT_EQ(d.vMin, 22);
}

// ---------------------------------------------------------------- the proposed price

TEST(CalcDatiDisp, WorkedExampleOnTotalsRoundedByTheBandsCoefficient) {
  TestDb t;
  Officina(t);
  Impostazioni(0.5, 0.2, 5, 1);
  // C = 90.87 + 34.00, R = 167.83 + 51.00; G = 0.429 is above 0.2: ArrotMultiplo(218.83, 1).
  EXPECT_DOUBLE_EQ(CalcDatiDisp(kModello, 1), 219);
  EXPECT_FALSE(gRcsDisp);  // private copies: the globals stay as they were
  EXPECT_TRUE(t.LogLines("OCPrestKT", "CalcDatiDisp").isEmpty());
}

TEST(CalcDatiDisp, NothingDoneGivesZero) {
  TestDb t;
  Officina(t);
  Impostazioni(0.5, 0.2, 5, 1);
  t.Exec("DELETE FROM ActivitiesProd");
  t.Exec("DELETE FROM ProjectsDocDett");
  EXPECT_DOUBLE_EQ(CalcDatiDisp(kModello, 1), 0);
}

TEST(CalcDatiDisp, TheBandsMinimumWinsWhateverTheMargin) {
  TestDb t;
  Officina(t);
  Impostazioni(0.5, 0.2, 5, 1);
  t.Exec("UPDATE ProjectsDisp SET CPrjDispTipo=2");
  t.Exec("UPDATE ProjectsDispTar SET TarMin=500, TarMax=0 WHERE CPrjDispTipo=2");
  EXPECT_DOUBLE_EQ(CalcDatiDisp(kModello, 1), 500);
}

TEST(CalcDatiDisp, OverTheTopWithEnoughMarginGivesExactlyTheTopUnrounded) {
  TestDb t;
  Officina(t);
  Impostazioni(0.5, 0.2, 5, 1);
  t.Exec("UPDATE ProjectsDisp SET CPrjDispTipo=2");
  t.Exec("UPDATE ProjectsDispTar SET TarMin=0, TarMax=200.37 WHERE CPrjDispTipo=2");
  // 219 is over 200.37; 1 - 124.87 / 200.37 = 0.377 stays above 0.2.
  EXPECT_DOUBLE_EQ(CalcDatiDisp(kModello, 1), 200.37);
  // A top the margin can't bear: the floor over the band, ArrotMultiplo(Round(1.2 x 124.87, 2) = 149.84, 1).
  t.Exec("UPDATE ProjectsDispTar SET TarMax=140 WHERE CPrjDispTipo=2");
  EXPECT_DOUBLE_EQ(CalcDatiDisp(kModello, 1), 150);
}

TEST(CalcDatiDisp, StandardCoefficientOnlyCountsInTheFallbackTest) {
  TestDb t;
  Officina(t);
  Impostazioni(0.5, 0.2, 50, 2);
  EXPECT_DOUBLE_EQ(CalcDatiDisp(kModello, 1), 220);  // ArrotMultiplo(218.83, 2)
}

// ---------------------------------------------------------------- the callers

namespace {

// Runs f on the calculator once it shows as the modal screen.
void AlCalcolo(std::function<void(frmCalcPzVend&)> f) {
  QTimer::singleShot(0, [f] {
    auto* c = qobject_cast<frmCalcPzVend*>(QApplication::activeModalWidget());
    ASSERT_TRUE(c);
    f(*c);
  });
}

struct Controllo {
  explicit Controllo(TestDb& t) {
    ctl.Initialize();
    ctl.SetDtIni(D(2025, 1, 1));
    ctl.SetDTEnd(D(2025, 12, 31));
    ctl.SetStatus(-1);
    ctl.DBConn(t.db, 1, QIcon(), t.Path() + "/docs", 1);
    QObject::connect(&ctl, &OCPrestKT::GetDataForFattDiff, [this](double& v) { ricevuti.push_back(v); });
  }
  OCPrestKT ctl;
  std::vector<double> ricevuti;
};

}  // namespace

TEST(EditDisp, TheHostReceivesTheConfirmedPrice) {
  TestDb t;
  Officina(t);
  Impostazioni(0.5, 0.2, 5, 1);
  Controllo c(t);
  AlCalcolo([](frmCalcPzVend& f) {
    EXPECT_EQ(f.Chiamante, "OCX");
    EXPECT_NEAR(f.OCQta->Value(), 12, kEps);
    f.SSTab1->setCurrentIndex(1);
    f.Bottone(3)->trigger();
  });
  c.ctl.EditDisp(kModello, 1, 12, 0);
  EXPECT_EQ(c.ricevuti, std::vector<double>({20.0}));
}

TEST(EditDisp, TheStartingPriceShowsAndCancellingReturnsNothing) {
  TestDb t;
  Officina(t);
  Impostazioni(0.5, 0.2, 5, 1);
  Controllo c(t);
  double mostrato = 0;
  AlCalcolo([&](frmCalcPzVend& f) {
    mostrato = f.OCPzVend->Value();
    f.Bottone(1)->trigger();
  });
  c.ctl.EditDisp(kModello, 1, 12, 19.5);
  EXPECT_DOUBLE_EQ(mostrato, 19.5);
  EXPECT_TRUE(c.ricevuti.empty());
}

TEST(ShowSettings, OpensTheSettings) {
  TestDb t;
  Controllo c(t);
  QString titolo;
  QTimer::singleShot(0, [&] {
    QWidget* w = QApplication::activeModalWidget();
    ASSERT_TRUE(w);
    titolo = w->windowTitle();
    w->close();
  });
  c.ctl.ShowSettings();
  EXPECT_EQ(titolo, "Impostazioni");
}
