// The disposition card and its lists.
#include <gtest/gtest.h>

#include <QApplication>
#include <QTest>
#include <QTimer>

#include "ProcedureUi.h"
#include "TestSupport.h"
#include "frmDisp.h"
#include "frmExec.h"
#include "frmExecSposta.h"

using namespace prestkt;
using namespace prestkt::test;

namespace {

void Base(TestDb& t) {
  t.Exec("INSERT INTO Anagrafica (TAnag, CAnag, RagSoc1, CostoH) VALUES (1, 1, 'Officina Rossi', 0), "
         "(10, 1, 'Mario Verdi', 21.5), (2, 1, 'Zincatura Lombarda', 0)");
  t.Exec("INSERT INTO ProjectsTipo (CPrjTipo, DPrjTipo) VALUES (1, 'Stampo')");
  t.Exec("INSERT INTO ProjectsDispTipo (CPrjDispTipo, DPrjDispTipo, TipoFatt) VALUES (1, 'Oraria', 1), "
         "(2, 'A pezzo', 2), (3, 'Non fatturata', 0)");
  t.Exec("INSERT INTO TabGen (CTipTabGen, CTabGen, DTabGen, Sigla, Bool8) VALUES (12, 1, 'Saldatura', '', 0), "
         "(12, 2, 'Tornitura', '', 0), (12, 3, 'Collaudo', '', 0), (1, 1, 'C/Lavorazione', 'CL', -1), "
         "(1, 2, 'Omaggio', 'OM', 0)");
  t.Exec("INSERT INTO ProjectsDisp2Prest (CPrjDispTipo, CPrestazione) VALUES (1, 1), (1, 2), (2, 1), (2, 3)");
  t.Exec("INSERT INTO Projects (CProject, DProject, CPrjTipo, TAnag, CAnag, DtIni) VALUES "
         "(202500001, 'Stampo pompa', 1, 1, 1, '2025-01-10 00:00:00')");
  gOcxEventS = OCPrestKTClassPtr(std::make_shared<OCPrestKTClass>());
}

struct Card {
  Card(int azione, int cDisp) {
    CaricaDatiModello(202500001);
    gCProject = 202500001;
    f.Azione = azione;
    f.CDisp = cDisp;
    f.CProject = 202500001;
    f.RagSoc1 = "Officina Rossi";
    f.DProject = "Stampo pompa";
    f.TAnag = 1;
    f.CAnag = 1;
    f.Form_Load();
    f.show();
  }
  void Tipo(int codice) { SetCBValue(f.CBTipoDisp, codice, 0); }
  frmDisp f;
};

void AlProssimoModale(std::function<void(QWidget*)> f) {
  QTimer::singleShot(0, [f] {
    if (QWidget* w = QApplication::activeModalWidget()) f(w);
  });
}

}  // namespace

TEST(frmDisp, NewCardFace) {
  TestDb t;
  Base(t);
  Card c(2, 0);
  EXPECT_EQ(c.f.windowTitle(), "Scheda disposizione");
  EXPECT_EQ(c.f.TBAnag->text(), "Officina Rossi");
  EXPECT_FALSE(c.f.OCFrame2->isEnabled());
  EXPECT_FALSE(c.f.OCFrame9->isEnabled());
  EXPECT_TRUE(c.f.OCFrame10->isHidden());
  EXPECT_EQ(c.f.CBGroupFatt->currentText(), "{standard}");
  EXPECT_EQ(c.f.CBTipoDisp->currentText(), "{tutte}");
  EXPECT_EQ(c.f.Bottone(11)->toolTip(), "Informazioni");
  EXPECT_TRUE(c.f.Bottone(10)->isSeparator());
  EXPECT_FALSE(c.f.Bottone(11)->isVisible());
  EXPECT_FALSE(c.f.Bottone(7)->isVisible());  // activity buttons live on tab 1
  EXPECT_EQ(c.f.DTPicker1->date(), QDate::currentDate());
  EXPECT_FALSE(c.f.Modificato());
}

TEST(frmDisp, NumberingInsideTheModel) {
  TestDb t;
  Base(t);
  for (int atteso : {1, 2}) {
    Card c(2, 0);
    c.Tipo(1);
    c.f.TBDDisp->setText(QString("Disposizione %1").arg(atteso));
    c.f.OCUpQta->SetValue(5);
    ASSERT_TRUE(c.f.Salva());
    EXPECT_EQ(c.f.CDisp, atteso);
    EXPECT_EQ(c.f.NumericSpin1->text(), QString("000%1").arg(atteso));
  }
  t.Exec("DELETE FROM ProjectsDisp WHERE CDisp=2");
  Card c(2, 0);
  c.Tipo(1);
  c.f.TBDDisp->setText("Di nuovo la seconda");
  c.f.OCUpQta->SetValue(1);
  ASSERT_TRUE(c.f.Salva());
  EXPECT_EQ(c.f.CDisp, 2);  // a deleted last number is given again
  EXPECT_EQ(t.Scalar("SELECT CStato FROM ProjectsDisp WHERE CDisp=2").toInt(), 0);
  EXPECT_TRUE(IsNull(t.Scalar("SELECT DtEnd FROM ProjectsDisp WHERE CDisp=2")));
}

TEST(frmDisp, TypeNotByThePieceHasNoPriceAndInvoices) {
  TestDb t;
  Base(t);
  Card c(2, 0);
  c.Tipo(1);
  EXPECT_FALSE(c.f.PerPezzo);
  EXPECT_TRUE(c.f.OCFramePz->isHidden());
  EXPECT_EQ(c.f.SSTab1->tabText(3), "Fatture");
  EXPECT_FALSE(c.f.chkDefPzVend->isChecked());
  c.Tipo(2);
  EXPECT_TRUE(c.f.PerPezzo);
  EXPECT_FALSE(c.f.OCFramePz->isHidden());
  EXPECT_EQ(c.f.SSTab1->tabText(3), "DDT");
  EXPECT_TRUE(c.f.chkDefPzVend->isChecked());
  // The service kinds of the type, sorted by name.
  ASSERT_EQ(c.f.lvwPrest->Count(), 2);
  EXPECT_EQ(c.f.lvwPrest->Text(0, 0), "Collaudo");
  EXPECT_EQ(c.f.lvwPrest->Key(0), "K003");
}

TEST(frmDisp, TypeChangeAsksOnlyWithTickedServices) {
  TestDb t;
  Base(t);
  Card c(2, 0);
  c.Tipo(1);
  c.Tipo(2);
  EXPECT_TRUE(t.messages->asked.empty());
  c.f.lvwPrest->SetChecked(0, true);
  c.Tipo(1);  // the default answer is No
  ASSERT_EQ(t.messages->asked.size(), 1u);
  EXPECT_EQ(t.messages->asked[0].prompt,
            "Attenzione se cambio il tipo di disposizione devo annullare le prestazioni legate alla disposizione in "
            "corso!\nProseguo?");
  EXPECT_EQ(c.f.CBTipoDisp->currentText(), "A pezzo");
  EXPECT_TRUE(c.f.lvwPrest->Checked(0));
  t.messages->answers = {vbYes};
  c.Tipo(1);
  EXPECT_EQ(c.f.CBTipoDisp->currentText(), "Oraria");
  EXPECT_FALSE(c.f.lvwPrest->Checked(0));
}

TEST(frmDisp, QuantityAndPriceChecks) {
  TestDb t;
  Base(t);
  Card c(2, 0);
  EXPECT_FALSE(c.f.Salva());
  EXPECT_EQ(t.messages->asked.back().prompt, "Devi inserire una descrizione per la disposizione!");
  c.f.TBDDisp->setText("Prova");
  EXPECT_FALSE(c.f.Salva());
  EXPECT_EQ(t.messages->asked.back().prompt, "Devi inserire una tipologia di disposizione!");
  c.Tipo(2);
  EXPECT_FALSE(c.f.Salva());
  EXPECT_EQ(t.messages->asked.back().prompt, "Devi inserire la quantità!");
  c.f.OCUpQta->SetValue(10);
  EXPECT_FALSE(c.f.Salva());
  EXPECT_EQ(t.messages->asked.back().prompt, "Devi definire il prezzo o disattivarlo!");
  c.f.chkDefPzVend->setChecked(false);
  EXPECT_TRUE(c.f.Salva());
  EXPECT_EQ(t.Scalar("SELECT PzVend FROM ProjectsDisp").toDouble(), 0);
  EXPECT_EQ(t.Scalar("SELECT DefPzVend FROM ProjectsDisp").toInt(), 0);
}

TEST(frmDisp, ServiceKindsAreStoredFromTheTicks) {
  TestDb t;
  Base(t);
  {
    Card c(2, 0);
    c.Tipo(1);
    c.f.TBDDisp->setText("Con prestazioni");
    c.f.OCUpQta->SetValue(2);
    c.f.lvwPrest->SetChecked(c.f.lvwPrest->Row("K002"), true);
    ASSERT_TRUE(c.f.Salva());
  }
  EXPECT_EQ(t.Scalar("SELECT Count(*) FROM ProjectsDispDett").toInt(), 1);
  EXPECT_EQ(t.Scalar("SELECT CPrestazione FROM ProjectsDispDett").toInt(), 2);
  Card e(1, 1);
  EXPECT_TRUE(e.f.lvwPrest->Checked(e.f.lvwPrest->Row("K002")));
  EXPECT_FALSE(e.f.lvwPrest->Checked(e.f.lvwPrest->Row("K001")));
}

TEST(frmDisp, ClosedCardHidesTheActivityButtonsAtOnce) {
  TestDb t;
  Base(t);
  t.Exec("INSERT INTO ProjectsDisp (CProject, CDisp, CPrjDispTipo, DDisp, Data, Qta, CStato) VALUES "
         "(202500001, 1, 1, 'Da chiudere', '2025-01-11 00:00:00', 5, 0)");
  Card c(1, 1);
  c.f.SSTab1->setCurrentIndex(1);
  EXPECT_TRUE(c.f.Bottone(7)->isVisible());
  c.f.chkClosed->setChecked(true);
  EXPECT_FALSE(c.f.Bottone(7)->isVisible());
  EXPECT_FALSE(c.f.Bottone(9)->isVisible());
  EXPECT_TRUE(c.f.DTEnd->isEnabled());
  EXPECT_FALSE(c.f.OCFrame7->isEnabled());
  c.f.DTEnd->setDate(QDate(2025, 3, 31));
  ASSERT_TRUE(c.f.Salva());
  EXPECT_EQ(t.Scalar("SELECT CStato FROM ProjectsDisp").toInt(), 9);
  EXPECT_EQ(t.Scalar("SELECT DtEnd FROM ProjectsDisp").toDateTime(), D(2025, 3, 31));
  if (!t.SuPostgres())
    EXPECT_EQ(t.Scalar("SELECT typeof(DtEnd) || DtEnd FROM ProjectsDisp").toString(), "text2025-03-31 00:00:00");
  // The description stays editable until the card is opened again.
  EXPECT_TRUE(c.f.OCFrame1->isEnabled());
  Card r(1, 1);
  EXPECT_FALSE(r.f.OCFrame1->isEnabled());
  EXPECT_FALSE(r.f.lvwPrest->isEnabled());
  r.f.mnuSblocca->trigger();  // closed: unlocking frees nothing
  EXPECT_FALSE(r.f.OCFrame1->isEnabled());
}

TEST(frmDisp, PrintedSheetLocksUntilUnlocked) {
  TestDb t;
  Base(t);
  t.Exec("INSERT INTO ProjectsDisp (CProject, CDisp, CPrjDispTipo, DDisp, Data, Qta, CStato, NStampa) VALUES "
         "(202500001, 1, 1, 'Stampata', '2025-01-11 00:00:00', 5, 0, 1)");
  Card c(1, 1);
  EXPECT_FALSE(c.f.OCFrame1->isEnabled());
  EXPECT_FALSE(c.f.lvwPrest->isEnabled());
  c.f.mnuSblocca->trigger();
  EXPECT_TRUE(c.f.OCFrame1->isEnabled());
  EXPECT_TRUE(c.f.lvwPrest->isEnabled());
}

TEST(frmDisp, InvoicedDispositionOpensClosedAndReopens) {
  TestDb t;
  Base(t);
  t.Exec("INSERT INTO ProjectsDisp (CProject, CDisp, CPrjDispTipo, DDisp, Data, Qta, CStato, DtEnd) VALUES "
         "(202500001, 1, 1, 'Fatturata', '2025-01-11 00:00:00', 5, 19, '2025-02-01 00:00:00'), "
         "(202500001, 2, 1, 'Del gestionale', '2025-01-11 00:00:00', 5, 19, '2025-02-01 00:00:00')");
  {
    Card c(1, 1);
    EXPECT_TRUE(c.f.chkClosed->isChecked());
    EXPECT_TRUE(c.f.chkFatt->isChecked());
    EXPECT_TRUE(c.f.OCFrame10->isHidden());  // no sign of the invoicing
    EXPECT_EQ(c.f.DTEnd->date(), QDate(2025, 2, 1));
    c.f.chkClosed->setChecked(false);
    ASSERT_TRUE(c.f.Salva());
  }
  EXPECT_EQ(t.Scalar("SELECT CStato FROM ProjectsDisp WHERE CDisp=1").toInt(), 0);
  EXPECT_TRUE(IsNull(t.Scalar("SELECT DtEnd FROM ProjectsDisp WHERE CDisp=1")));
  {
    // Saved ticked, 19 falls back to 9.
    Card c(1, 2);
    c.f.TBAnnot->setPlainText("nota");
    ASSERT_TRUE(c.f.Salva());
  }
  EXPECT_EQ(t.Scalar("SELECT CStato FROM ProjectsDisp WHERE CDisp=2").toInt(), 9);
}

// ---------------------------------------------------------------- lists

namespace {
void Lavori(TestDb& t) {
  t.Exec("INSERT INTO ProjectsDisp (CProject, CDisp, CPrjDispTipo, DDisp, Data, Qta, CStato) VALUES "
         "(202500001, 1, 2, 'Lavori', '2025-01-11 00:00:00', 5, 0), (202500001, 2, 1, 'Vuota', '2025-01-11 00:00:00', 5, 0)");
  t.Exec("INSERT INTO ActivitiesProd (CAttivita, CProject, CDisp, CUtente, CPrestazione, DtIni, DtEnd) VALUES "
         "(202500001, 202500001, 1, 1, 1, '2025-01-12 00:00:00', '2025-01-12 02:30:00'), "
         "(202500002, 202500001, 1, 7, 9, '2025-01-13 00:00:00', NULL), "
         "(202500003, 202500001, 1, 1, 3, '2025-01-14 00:00:00', '2025-01-14 00:45:00')");
  t.Exec("INSERT INTO DocForn (TipoDoc, NDoc, Data, Riferimento, TAnag, CAnag) VALUES "
         "(12, 202500100, '2025-01-15 00:00:00', 'Ord', 2, 1), (15, 202500200, '2025-01-20 00:00:00', 'DDT 7', 2, 1), "
         "(15, 202500201, '2025-01-25 00:00:00', 'DDT 9', 2, 1)");
  t.Exec("INSERT INTO Doc (TipoDoc, NDoc, Data, Riferimento, TAnag, CAnag, Oggetto) VALUES "
         "(5, 202500300, '2025-02-01 00:00:00', '', 1, 1, 'Consegna stampi'), "
         "(5, 202500301, '2025-02-02 00:00:00', '', 1, 1, 'Seconda consegna'), "
         "(9, 202500400, '2025-02-10 00:00:00', '', 1, 1, 'Fattura')");
  t.Exec("INSERT INTO DocFornDett (TipoDoc, NDoc, Scheda, Riga, Qta, QtaArr, Annullato, PzVend, CCaus) VALUES "
         "(12, 202500100, 0, 1, 3, 4, 0, 9.5, 1), (12, 202500100, 0, 2, 10, 0, 0, 3.4, 1)");
  t.Exec("INSERT INTO DocDett (TipoDoc, NDoc, Scheda, Riga, Qta, QtaArr, Annullato, PzVend, CCaus) VALUES "
         "(5, 202500300, 0, 1, 0.5, 0, 0, 10, 1), (5, 202500301, 0, 1, 0.5, 0, 0, 10, 1)");
  t.Exec("INSERT INTO DocFornDett (TipoDoc, NDoc, Scheda, Riga, Qta, PzVend, CCaus, TipoDocRif, NDocRif, RigaRif) VALUES "
         "(15, 202500200, 0, 1, 3, 10, 1, 12, 202500100, 1), (15, 202500201, 0, 1, 1, 14, 2, 12, 202500100, 1)");
  t.Exec("INSERT INTO ProjectsDocDett (TipoDoc, NDoc, Scheda, Riga, RigaD, CProject, CDisp, Qta, Importo) VALUES "
         "(12, 202500100, 0, 1, 1, 202500001, 1, 3, 9.5), (12, 202500100, 0, 2, 2, 202500001, 1, 10, 3.4), "
         "(5, 202500300, 0, 1, 1, 202500001, 1, 0.5, 10), (5, 202500301, 0, 1, 1, 202500001, 1, 0.5, 10)");
  t.Exec("INSERT INTO DocSchede (TipoDoc, NDoc, TipoDocAss, NDocAss) VALUES (9, 202500400, 5, 202500301)");
}
}  // namespace

TEST(frmDisp, InternalWorkList) {
  TestDb t;
  Base(t);
  Lavori(t);
  Card c(1, 1);
  c.f.SSTab1->setCurrentIndex(1);
  ListView* l = c.f.lvwEsecInt;
  ASSERT_EQ(l->Count(), 3);
  EXPECT_EQ(l->ColumnText(1), "Lancio");
  EXPECT_EQ(l->Key(0), "K202500001");
  EXPECT_EQ(l->Text(0, 1), "2025-00001");
  EXPECT_EQ(l->Text(0, 2), "12/01/2025");
  EXPECT_EQ(l->Text(0, 3), "Mario Verdi");
  EXPECT_EQ(l->Text(0, 4), "Saldatura");
  EXPECT_EQ(l->Text(0, 5), "02:30");
  // An operator and a service kind that no longer exist.
  EXPECT_EQ(l->Text(1, 3), "{sconosciuto}");
  EXPECT_EQ(l->Text(1, 4), "-");
  // Still running: "Tempo" keeps the text of the row before.
  EXPECT_EQ(l->Text(1, 5), "02:30");
  EXPECT_EQ(l->Text(2, 5), "00:45");
  EXPECT_EQ(t.LogLines("frmDisp", "CaricaListEsecInt").size(), 1);
  // With activities the type is locked.
  EXPECT_FALSE(c.f.OCFrame6->isEnabled());
}

TEST(frmDisp, NoActivityKeepsTheTypeChangeable) {
  TestDb t;
  Base(t);
  Lavori(t);
  Card c(1, 2);
  c.f.SSTab1->setCurrentIndex(1);
  EXPECT_EQ(c.f.lvwEsecInt->Count(), 0);
  EXPECT_TRUE(c.f.OCFrame6->isEnabled());
}

TEST(frmDisp, ExternalWorkList) {
  TestDb t;
  Base(t);
  Lavori(t);
  Card c(1, 1);
  c.f.SSTab1->setCurrentIndex(2);
  EXPECT_TRUE(c.f.Bottone(11)->isVisible());
  ListView* l = c.f.lvwEsecExt;
  ASSERT_EQ(l->Count(), 2);
  EXPECT_EQ(l->Key(0), "K01220250010000010001");
  EXPECT_EQ(l->Text(0, 1), "2025-00100");
  EXPECT_EQ(l->Text(0, 3), "Zincatura Lombarda");
  EXPECT_EQ(l->Text(0, 4), "3");
  EXPECT_EQ(l->Text(0, 5), "-1");  // more arrived than ordered
  EXPECT_EQ(l->Text(0, 6), "9,50");
  EXPECT_EQ(l->Text(0, 7), "11,00");  // 3 at 10.00 and 1 at 14.00
  EXPECT_EQ(l->Text(0, 8), "CL");
  EXPECT_EQ(l->Text(1, 6), "3,40");
  EXPECT_EQ(l->Text(1, 7), "3,40");  // no delivery: the order's amount
}

namespace {

// Every row of a list: its key, then the text of each column.
QStringList Righe(ListView* l) {
  QStringList righe;
  for (int r = 0; r < l->Count(); ++r) {
    QStringList testi{l->Key(r)};
    for (int c = 1; c < l->ColumnCount(); ++c) testi << l->Text(r, c);
    righe << testi.join('|');
  }
  return righe;
}

// Order lines of disposition 1 under every kind of causal: one with a
// symbol, one billed elsewhere, one without a symbol, one that doesn't exist
// and none at all; some causals on more lines than one.
void LavoriConCausali(TestDb& t) {
  Lavori(t);
  t.Exec("INSERT INTO TabGen (CTipTabGen, CTabGen, DTabGen, Sigla, Bool8) VALUES (1, 3, 'Senza sigla', NULL, -1)");
  t.Exec("INSERT INTO DocForn (TipoDoc, NDoc, Data, Riferimento, TAnag, CAnag) VALUES "
         "(12, 202500101, '2025-01-09 00:00:00', 'Ord 2', 2, 1)");
  t.Exec("INSERT INTO DocFornDett (TipoDoc, NDoc, Scheda, Riga, Qta, QtaArr, Annullato, PzVend, CCaus) VALUES "
         "(12, 202500101, 0, 1, 2, 0, 0, 1.25, 2), (12, 202500101, 0, 2, 6, 1, 2, 7, 3), "
         "(12, 202500101, 0, 3, 1, 0, 0, 4, 7), (12, 202500101, 0, 4, 8, 8, 0, 0.5, NULL), "
         "(12, 202500101, 0, 5, 1.5, 0, 0, 2, 1), (12, 202500101, 0, 6, 4, 0, 0, 3, 2)");
  t.Exec("INSERT INTO ProjectsDocDett (TipoDoc, NDoc, Scheda, Riga, RigaD, CProject, CDisp, Qta, Importo) VALUES "
         "(12, 202500101, 0, 1, 3, 202500001, 1, 2, 1.25), (12, 202500101, 0, 2, 4, 202500001, 1, 6, 7), "
         "(12, 202500101, 0, 3, 5, 202500001, 1, 1, 4), (12, 202500101, 0, 4, 6, 202500001, 1, 8, 0.5), "
         "(12, 202500101, 0, 5, 7, 202500001, 1, 1.5, 2), (12, 202500101, 0, 6, 8, 202500001, 1, 4, 3), "
         "(12, 202500101, 0, 6, 9, 202500001, 2, 4, 3)");
}

}  // namespace

TEST(frmDisp, ExternalWorkListNamesEachLinesCausal) {
  TestDb t;
  Base(t);
  LavoriConCausali(t);
  Card c(1, 1);
  c.f.SSTab1->setCurrentIndex(2);
  // A causal without a symbol, or none to be found, leaves the column blank.
  EXPECT_EQ(Righe(c.f.lvwEsecExt),
            QStringList({"K01220250010100010003|2025-00101|09/01/2025|Zincatura Lombarda|2|2|1,25|1,25|OM",
                         "K01220250010100020004|2025-00101|09/01/2025|Zincatura Lombarda|4|3|7,00|7,00| ",
                         "K01220250010100030005|2025-00101|09/01/2025|Zincatura Lombarda|1|1|4,00|4,00| ",
                         "K01220250010100040006|2025-00101|09/01/2025|Zincatura Lombarda|8|0|0,50|0,50| ",
                         "K01220250010100050007|2025-00101|09/01/2025|Zincatura Lombarda|1,5|1,5|2,00|2,00|CL",
                         "K01220250010100060008|2025-00101|09/01/2025|Zincatura Lombarda|4|4|3,00|3,00|OM",
                         "K01220250010000010001|2025-00100|15/01/2025|Zincatura Lombarda|3|-1|9,50|11,00|CL",
                         "K01220250010000020002|2025-00100|15/01/2025|Zincatura Lombarda|10|10|3,40|3,40|CL"}));
  EXPECT_TRUE(t.LogLines("frmDisp", "CaricaListEsecExt").isEmpty());
  // Eight lines under five causals (no causal reads as 0): each causal is read once.
  const int prima = t.db->StatementCount();
  c.f.CaricaListEsecExt();
  EXPECT_EQ(t.db->StatementCount() - prima, 5);
  EXPECT_EQ(c.f.lvwEsecExt->Count(), 8);
}

TEST(frmDisp, OnlyPrestHidesTheAmounts) {
  TestDb t;
  Base(t);
  Lavori(t);
  gOnlyPrest = true;
  Card c(1, 1);
  c.f.SSTab1->setCurrentIndex(2);
  EXPECT_EQ(c.f.lvwEsecExt->ColumnCount(), 7);
  EXPECT_EQ(c.f.lvwEsecExt->ColumnText(6), "Caus.");
  EXPECT_FALSE(c.f.Bottone(11)->isVisible());
  EXPECT_TRUE(c.f.OCFramePz->isHidden());
  gOnlyPrest = false;
}

TEST(frmDisp, DocumentsAndTheExecutedQuantity) {
  TestDb t;
  Base(t);
  Lavori(t);
  Card c(1, 1);
  c.f.SSTab1->setCurrentIndex(3);
  ListView* l = c.f.lvwDocs;
  ASSERT_EQ(l->Count(), 2);
  EXPECT_EQ(l->Text(0, 1), "D");
  EXPECT_EQ(l->Text(0, 2), "2025-00300");
  EXPECT_EQ(l->Text(0, 4), "Consegna stampi");
  EXPECT_EQ(l->Text(0, 6), "CL");
  EXPECT_FALSE(l->Checked(0));
  EXPECT_TRUE(l->Checked(1));  // its note went into an invoice
  // Two lines of 0.5: each addition turns into a 16-bit integer, halves to even.
  EXPECT_EQ(c.f.NumericSpin2->Value(), 0);
}

TEST(frmDisp, DeferredInvoicesComeFirstForTypesNotByThePiece) {
  TestDb t;
  Base(t);
  Lavori(t);
  t.Exec("INSERT INTO FattDiff (Progressivo, TipoDocRif, NDocRif) VALUES (1, 9, 202500400)");
  t.Exec("INSERT INTO FattDiffDett (Progressivo, Riga, ID) VALUES (1, 1, '202500001002')");
  Card c(1, 2);
  c.f.SSTab1->setCurrentIndex(3);
  ASSERT_EQ(c.f.lvwDocs->Count(), 1);
  EXPECT_EQ(c.f.lvwDocs->Text(0, 1), "F");
  EXPECT_EQ(c.f.lvwDocs->Text(0, 5), "1");
  EXPECT_EQ(c.f.lvwDocs->Text(0, 6), "-");
  EXPECT_TRUE(c.f.lvwDocs->Checked(0));
  EXPECT_EQ(c.f.NumericSpin2->Value(), 1);
}

TEST(frmDisp, DeleteAnActivity) {
  TestDb t;
  Base(t);
  Lavori(t);
  Card c(1, 1);
  c.f.SSTab1->setCurrentIndex(1);
  c.f.lvwEsecInt->SetSelected(0);
  t.messages->answers = {vbYes};
  c.f.Bottone(9)->trigger();
  EXPECT_EQ(t.messages->asked.back().prompt, "Vuoi cancellare la prestazione selezionata?");
  EXPECT_EQ(c.f.lvwEsecInt->Count(), 2);
  EXPECT_EQ(t.Scalar("SELECT Count(*) FROM ActivitiesProd WHERE CAttivita=202500001").toInt(), 0);
  gRcsAct->SetFilter("CAttivita=202500001");
  EXPECT_EQ(gRcsAct->RecordCount(), 0);
}

TEST(frmDisp, MovingActivitiesToAnotherModel) {
  TestDb t;
  Base(t);
  Lavori(t);
  t.Exec("INSERT INTO Projects (CProject, DProject, CPrjTipo, TAnag, CAnag, DtIni, Stato) VALUES "
         "(202500002, 'Altro stampo', 1, 1, 1, '2025-02-10 00:00:00', 0)");
  t.Exec("INSERT INTO ProjectsDisp (CProject, CDisp, CPrjDispTipo, DDisp, Data, Qta, CStato) VALUES "
         "(202500002, 1, 1, 'Destinazione', '2025-02-11 00:00:00', 1, 0)");
  Card c(1, 1);
  c.f.SSTab1->setCurrentIndex(1);
  c.f.mnuSposta->trigger();
  EXPECT_EQ(t.messages->asked.back().prompt, "Devi selezionare almeno una prestazione!");
  c.f.lvwEsecInt->SetChecked(0, true);
  c.f.lvwEsecInt->SetChecked(2, true);
  t.messages->answers = {vbYes};
  QString titolo;
  AlProssimoModale([&](QWidget* w) {
    auto* s = qobject_cast<frmExecSposta*>(w);
    titolo = s->windowTitle();
    ListView* l = s->findChild<ListView*>("ListView1");
    l->SetSelected(l->Row("K202500002001"));
    s->Bottone(3)->trigger();
  });
  c.f.mnuSposta->trigger();
  EXPECT_EQ(titolo, "Sposta prestazioni");
  EXPECT_EQ(c.f.lvwEsecInt->Count(), 1);
  EXPECT_EQ(t.Scalar("SELECT Count(*) FROM ActivitiesProd WHERE CProject=202500002 AND CDisp=1").toInt(), 2);
  // The activity keeps its number, operator and service kind.
  EXPECT_EQ(t.Scalar("SELECT CPrestazione FROM ActivitiesProd WHERE CAttivita=202500003").toInt(), 3);
}

// Each card ticks the service kinds of its own disposition, and a save leaves
// those of the other dispositions of the model alone.
TEST(frmDisp, ServiceKindsOfAnotherDispositionOfTheModelStayOffTheCard) {
  TestDb t;
  Base(t);
  t.Exec("INSERT INTO ProjectsDisp (CProject, CDisp, DDisp, CPrjDispTipo, Data, Qta, CStato) VALUES "
         "(202500001, 1, 'Prima', 1, '2025-02-01 00:00:00', 1, 0), "
         "(202500001, 2, 'Seconda', 1, '2025-02-02 00:00:00', 1, 0)");
  t.Exec("INSERT INTO ProjectsDispDett (CProject, CDisp, CPrestazione) VALUES (202500001, 1, 1), (202500001, 2, 2)");
  const QString prima = "SELECT CDisp & ':' & CPrestazione FROM ProjectsDispDett ORDER BY CDisp, CPrestazione";
  const QString attese = t.Elenco(prima);
  ASSERT_EQ(attese, "1:1,2:2");
  for (int cDisp : {1, 2}) {
    Card c(1, cDisp);
    ASSERT_EQ(c.f.lvwPrest->Count(), 2);
    // Sorted by name: Saldatura (K001), then Tornitura (K002).
    EXPECT_EQ(c.f.lvwPrest->Key(0), "K001");
    EXPECT_EQ(c.f.lvwPrest->Checked(0), cDisp == 1) << "disposition " << cDisp;
    EXPECT_EQ(c.f.lvwPrest->Checked(1), cDisp == 2) << "disposition " << cDisp;
    EXPECT_EQ(c.f.rcsDett->RecordCount(), 1);
    ASSERT_TRUE(c.f.Salva());
    EXPECT_EQ(t.Elenco(prima), attese) << "after saving disposition " << cDisp;
  }
}

// The service kinds are deleted and written anew in one transaction: when the
// writing fails, the old ones stay, and the engine's words reach the log.
TEST(frmDisp, FailedWriteOfTheServiceKindsKeepsTheOldOnes) {
  TestDb t;
  Base(t);
  t.Exec("INSERT INTO ProjectsDisp (CProject, CDisp, DDisp, CPrjDispTipo, Data, Qta, CStato) VALUES "
         "(202500001, 1, 'Prima', 1, '2025-02-01 00:00:00', 1, 0)");
  t.Exec("INSERT INTO ProjectsDispDett (CProject, CDisp, CPrestazione) VALUES (202500001, 1, 1)");
  t.RifiutaScritture("ProjectsDispDett");
  Card c(1, 1);
  ASSERT_EQ(c.f.lvwPrest->Count(), 2);
  c.f.lvwPrest->SetChecked(1, true);  // Tornitura as well
  EXPECT_TRUE(c.f.Salva());           // the user sees nothing of the failure
  EXPECT_EQ(t.Elenco("SELECT CPrestazione FROM ProjectsDispDett WHERE CDisp=1"), "1");
  const QStringList log = t.LogLines("frmDisp", "SalvaDisp");
  ASSERT_FALSE(log.isEmpty());
  EXPECT_TRUE(log[0].contains(t.MessaggioPieno())) << log[0].toStdString();
  EXPECT_EQ(t.db->TransactionDepth(), 0);
  t.AccettaScritture("ProjectsDispDett");
  Card d(1, 1);
  d.f.lvwPrest->SetChecked(1, true);
  EXPECT_TRUE(d.f.Salva());
  EXPECT_EQ(t.Elenco("SELECT CPrestazione FROM ProjectsDispDett WHERE CDisp=1 ORDER BY CPrestazione"), "1,2");
}

// The description takes no more than its column's 255 characters, typed or
// pasted, and the notes no more than the 5000 of the memo in memory; what is
// saved is what the card shows.
TEST(frmDisp, TextsStopAtTheSizeOfTheirColumn) {
  TestDb t;
  Base(t);
  Card c(2, 0);
  c.Tipo(1);
  QTest::keyClicks(c.f.TBDDisp, QString(254, 'd'));
  EXPECT_EQ(c.f.TBDDisp->text().size(), 254);
  QTest::keyClicks(c.f.TBDDisp, "ef");  // the 255th goes in, the 256th doesn't
  EXPECT_EQ(c.f.TBDDisp->text(), QString(254, 'd') + "e");
  c.f.TBDDisp->setText(QString(300, 'x'));  // a paste of 300
  EXPECT_EQ(c.f.TBDDisp->text(), QString(255, 'x'));
  c.f.TBAnnot->setPlainText("inizio fine");
  QTextCursor cur = c.f.TBAnnot->textCursor();
  cur.setPosition(7);
  c.f.TBAnnot->setTextCursor(cur);
  c.f.TBAnnot->insertPlainText(QString(6000, 'n'));  // pasted in the middle
  EXPECT_EQ(c.f.TBAnnot->toPlainText(), "inizio " + QString(4989, 'n') + "fine");
  EXPECT_EQ(c.f.TBAnnot->toPlainText().size(), 5000);
  c.f.OCUpQta->SetValue(1);
  ASSERT_TRUE(c.f.Salva());
  EXPECT_EQ(t.Scalar("SELECT DDisp FROM ProjectsDisp WHERE CDisp=1").toString(), QString(255, 'x'));
  EXPECT_EQ(t.Scalar("SELECT Annot FROM ProjectsDisp WHERE CDisp=1").toString(), c.f.TBAnnot->toPlainText());
  EXPECT_TRUE(t.LogLines("frmDisp", "SalvaDisp").isEmpty());
}

// The quantity is a Double: typed as 2,5 it is saved as 2.5, whatever the
// format "0" shows, also after the field was left and entered again.
TEST(frmDisp, QuantityTypedWithDecimalsKeepsThem) {
  TestDb t;
  Base(t);
  Card c(2, 0);
  c.Tipo(1);
  c.f.TBDDisp->setText("Mezza");
  QLineEdit* testo = c.f.OCUpQta->findChild<QLineEdit*>();
  ASSERT_TRUE(testo);
  testo->selectAll();
  QTest::keyClicks(testo, "2,5");
  QTest::keyClick(testo, Qt::Key_Return);
  EXPECT_DOUBLE_EQ(c.f.OCUpQta->Value(), 2.5);
  // The text shows the format; reading it back keeps the value.
  QTest::keyClick(testo, Qt::Key_Return);
  c.f.OCUpQta->interpretText();
  EXPECT_DOUBLE_EQ(c.f.OCUpQta->Value(), 2.5);
  ASSERT_TRUE(c.f.Salva());
  EXPECT_DOUBLE_EQ(t.Scalar("SELECT Qta FROM ProjectsDisp WHERE CDisp=1").toDouble(), 2.5);
  // A price with three decimals keeps the third.
  Card d(1, 1);
  EXPECT_DOUBLE_EQ(d.f.OCUpQta->Value(), 2.5);
  d.f.OCPzVend->SetValue(12.345);
  EXPECT_DOUBLE_EQ(d.f.OCPzVend->Value(), 12.345);
  EXPECT_EQ(d.f.OCPzVend->text(), "12,35");
}

namespace {

// A printer that keeps the sheets and says they went to paper.
struct Carta : Stampante {
  bool Stampa(const Documento& d) override {
    fogli.push_back(d);
    return true;
  }
  std::vector<Documento> fogli;
};

}  // namespace

// "Stampa" checks the type, saves a new or changed card first, and prints the
// sheet; the sheet once printed locks type, description and service kinds at
// the next opening.
TEST(frmDisp, PrintChecksSavesAndLocksTheNextOpening) {
  TestDb t;
  Base(t);
  gDtIni = D(2025, 1, 1);
  gDTEnd = D(2025, 12, 31);
  CaricaModelli(gDtIni, gDTEnd, -1);
  auto carta = std::make_shared<Carta>();
  {
    Card c(2, 0);
    c.f.StampaScheda = carta;
    ASSERT_TRUE(c.f.Bottone(5)->isVisible());
    EXPECT_EQ(c.f.Bottone(5)->toolTip(), "Stampa");
    EXPECT_TRUE(c.f.mnuPrn->isVisible());
    c.f.Bottone(5)->trigger();  // no type yet
    ASSERT_EQ(t.messages->asked.size(), 1u);
    EXPECT_EQ(t.messages->asked[0].prompt, "Devi inserire una tipologia di disposizione!");
    EXPECT_TRUE(carta->fogli.empty());
    c.Tipo(1);
    c.f.TBDDisp->setText("Ripristino");
    c.f.OCUpQta->SetValue(3);
    c.f.lvwPrest->SetChecked(0, true);
    c.f.Bottone(5)->trigger();  // a new card is saved, then printed
    EXPECT_EQ(c.f.CDisp, 1);
    ASSERT_EQ(carta->fogli.size(), 1u);
    QStringList testi;
    for (const auto& x : carta->fogli[0].Testi(0)) testi << x.testo;
    EXPECT_TRUE(testi.contains("2025-00001 \\ 0001"));
    EXPECT_TRUE(testi.contains("Stampa n° 001"));
    EXPECT_TRUE(testi.contains("Saldatura"));
    EXPECT_EQ(t.Scalar("SELECT NStampa FROM ProjectsDisp WHERE CDisp=1").toInt(), 1);
    // Still open on this card: the lock comes with the next opening.
    EXPECT_TRUE(c.f.OCFrame1->isEnabled());
  }
  {
    Card c(1, 1);
    c.f.StampaScheda = carta;
    EXPECT_FALSE(c.f.OCFrame1->isEnabled());
    EXPECT_FALSE(c.f.lvwPrest->isEnabled());
    c.f.TBAnnot->setPlainText("Da rifare");  // a change is saved before the second sheet
    c.f.Bottone(5)->trigger();
    ASSERT_EQ(carta->fogli.size(), 2u);
    EXPECT_EQ(t.Scalar("SELECT Annot FROM ProjectsDisp WHERE CDisp=1").toString(), "Da rifare");
    EXPECT_EQ(t.Scalar("SELECT NStampa FROM ProjectsDisp WHERE CDisp=1").toInt(), 2);
    c.f.mnuSblocca->trigger();
    EXPECT_TRUE(c.f.OCFrame1->isEnabled());
    EXPECT_TRUE(c.f.lvwPrest->isEnabled());
  }
  EXPECT_TRUE(t.LogLines("ModStampe", "StpSchedaProd").isEmpty());
}
