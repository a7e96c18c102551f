// The model card: codes, checks, saving, its lists and the order link.
#include <gtest/gtest.h>

#include <QApplication>
#include <QTest>
#include <QTimer>

#include "OCPrestKT.h"
#include "ProcedureUi.h"
#include "TestSupport.h"
#include "frmDisp.h"
#include "frmGestForfSempl.h"
#include "frmModelli.h"
#include "frmOrdini.h"

using namespace prestkt;
using namespace prestkt::test;

namespace {

void Base(TestDb& t) {
  t.Exec("INSERT INTO AnagTipo (TAnag, Descrizione) VALUES (1, 'Clienti')");
  t.Exec("INSERT INTO Anagrafica (TAnag, CAnag, RagSoc1) VALUES (1, 1, 'Officina Rossi'), (1, 2, 'Carrozzeria Bianchi')");
  t.Exec("INSERT INTO ProjectsTipo (CPrjTipo, DPrjTipo, GestForfSempl) VALUES (1, 'Stampo', 0), (2, 'Forfait', -1)");
  t.Exec("INSERT INTO ProjectsDispTipo (CPrjDispTipo, DPrjDispTipo, TipoFatt) VALUES (1, 'Oraria', 1), (2, 'A pezzo', 2)");
  t.Exec("INSERT INTO Projects (CProject, DProject, CPrjTipo, TAnag, CAnag, DtIni, Stato, Qta) VALUES "
         "(202400003, 'Vecchio', 1, 1, 1, '2024-05-10 00:00:00', 0, 1), "
         "(202500001, 'Stampo pompa', 1, 1, 1, '2025-01-10 00:00:00', 0, 10)");
  gTAnag = 1;
  gDtIni = D(2024, 1, 1);
  gDTEnd = D(2026, 12, 31);
  gStatus = -1;
  CaricaModelli(gDtIni, gDTEnd, gStatus);
  gOcxEventS = OCPrestKTClassPtr(std::make_shared<OCPrestKTClass>());
}

// A new card, loaded and shown, as Aggiungi opens it.
struct Nuova {
  Nuova() {
    gCProject = 0;
    CaricaDatiModello(0);
    f.Azione = 2;
    f.CProject = 0;
    f.Form_Load();
    f.show();
  }
  void Compila(const QString& nome, int cAnag, int tipo, const QDate& data) {
    f.DTProject->setDate(data);
    SetCBValue(f.CBCAnag, cAnag, 0);
    SetCBValue(f.CBTipoPrj, tipo, 0);
    f.TBDProject->setText(nome);
  }
  frmModelli f;
};

// An existing card, as Modifica opens it.
struct Esistente {
  explicit Esistente(int codice) {
    gCProject = codice;
    CaricaDatiModello(codice);
    f.Azione = 1;
    f.CProject = codice;
    f.Form_Load();
    f.show();
  }
  frmModelli f;
};

// Runs f on the next modal screen that opens, once it is shown.
void AlProssimoModale(std::function<void(QWidget*)> f) {
  QTimer::singleShot(0, [f] {
    QWidget* w = QApplication::activeModalWidget();
    if (w) f(w);
  });
}

}  // namespace

TEST(frmModelli, NewCardFaceAndToolbar) {
  TestDb t;
  Base(t);
  Nuova n;
  EXPECT_EQ(n.f.windowTitle(), "Scheda Modello");
  EXPECT_EQ(n.f.Bottone(1)->toolTip(), "Esci");
  EXPECT_EQ(n.f.Bottone(3)->toolTip(), "Salva");
  EXPECT_EQ(n.f.Bottone(5)->toolTip(), "Stampa");
  EXPECT_TRUE(n.f.Bottone(2)->isSeparator());
  EXPECT_EQ(n.f.Bottone(7)->toolTip(), "Aggiungi disposizione");
  EXPECT_EQ(n.f.SSTab1->tabText(1), "Annotazioni sul modello");
  EXPECT_FALSE(n.f.SSTabMod->isTabVisible(1));  // the order reference is shown only to code
  EXPECT_FALSE(n.f.SSTab1->isTabEnabled(2));    // documents need the code
  EXPECT_FALSE(n.f.SSTab1->isTabVisible(3));
  EXPECT_EQ(n.f.OCCProject->text(), "0000-00000");
  EXPECT_EQ(n.f.DTProject->date(), QDate::currentDate());
  EXPECT_FALSE(n.f.Modificato());
  EXPECT_FALSE(n.f.Bottone(3)->isEnabled());
  EXPECT_EQ(n.f.CBTAnag->currentText(), "Clienti");
  EXPECT_EQ(n.f.CBCAnag->currentText(), "{scegli anagrafica}");
  EXPECT_EQ(gOcxEventCard, n.f.OcxEventS);
}

TEST(frmModelli, FirstModelOfAYearAndOfAnEarlierYear) {
  TestDb t;
  Base(t);
  QList<int> ricarica;  // what the register is told to refresh
  QObject::connect(gOcxEventS.get(), &OCPrestKTClass::ReloadDataInCtrl, [&](int& c) { ricarica << c; });
  {
    Nuova n;
    n.Compila("Primo del 2026", 2, 1, QDate(2026, 3, 1));
    EXPECT_TRUE(n.f.Modificato());
    n.f.Bottone(3)->trigger();
    EXPECT_EQ(n.f.CProject, 202600001);
    EXPECT_EQ(n.f.OCCProject->text(), "2026-00001");
    EXPECT_FALSE(n.f.isVisible());  // saving ends the card
  }
  {
    Nuova n;
    n.Compila("Recupero 2024", 2, 1, QDate(2024, 6, 1));
    n.f.Bottone(3)->trigger();
    EXPECT_EQ(n.f.CProject, 202400004);
  }
  EXPECT_EQ(t.Scalar("SELECT Stato FROM Projects WHERE CProject=202400004").toInt(), 0);
  EXPECT_EQ(t.Scalar("SELECT CStato FROM Projects WHERE CProject=202400004").toInt(), 0);
  EXPECT_EQ(ricarica, QList<int>({202600001, 202400004}));
}

TEST(frmModelli, ChecksInTheirOrder) {
  TestDb t;
  Base(t);
  Nuova n;
  SetCBValue(n.f.CBTAnag, 0, -1);
  n.f.TAnag = 0;
  EXPECT_FALSE(n.f.CtrlProject());
  EXPECT_EQ(t.messages->asked.back().prompt, "Scegli un'anagrafica!");
  EXPECT_EQ(t.messages->asked.back().buttons, vbExclamation);
  n.f.TAnag = 1;
  n.f.CAnag = 0;
  EXPECT_FALSE(n.f.CtrlProject());
  EXPECT_EQ(t.messages->asked.back().prompt, "Scegli un'anagrafica!");
  n.f.CAnag = 1;
  EXPECT_FALSE(n.f.CtrlProject());
  EXPECT_EQ(t.messages->asked.back().prompt, "Inserisci il modello!");
  n.f.TBDProject->setText("Nuovo");
  EXPECT_FALSE(n.f.CtrlProject());
  EXPECT_EQ(t.messages->asked.back().prompt, "Inserisci la tipologia del modello!");
  SetCBValue(n.f.CBTipoPrj, 1, 0);
  EXPECT_TRUE(n.f.CtrlProject());
}

TEST(frmModelli, DuplicateNamesWithinTheParty) {
  TestDb t;
  Base(t);
  Nuova n;
  n.Compila("STAMPO POMPA", 1, 1, QDate(2025, 5, 5));
  // The database compares without regard to case.
  EXPECT_FALSE(n.f.Salva());
  EXPECT_EQ(t.messages->asked.back().prompt, "Il modello 'STAMPO POMPA' esiste già per questa anagrafica!");
  // Another party may have a model of that name.
  SetCBValue(n.f.CBCAnag, 2, 0);
  EXPECT_TRUE(n.f.Salva());
  EXPECT_EQ(t.Scalar("SELECT CAnag FROM Projects WHERE CProject=202500002").toInt(), 2);
}

TEST(frmModelli, ExistingModelWithItsOwnNamePasses) {
  TestDb t;
  Base(t);
  Esistente e(202500001);
  EXPECT_EQ(e.f.TBDProject->text(), "Stampo pompa");
  EXPECT_EQ(e.f.OCCProject->text(), "2025-00001");
  EXPECT_EQ(e.f.DTProject->minimumDate(), QDate(2025, 1, 1));
  EXPECT_EQ(e.f.DTProject->maximumDate(), QDate(2025, 12, 31));
  EXPECT_FALSE(e.f.OCFrame6->isEnabled());  // the party never changes after the first save
  EXPECT_TRUE(e.f.SSTab1->isTabEnabled(2));
  e.f.OCUpQta->SetValue(12);
  EXPECT_TRUE(e.f.Salva());
  EXPECT_EQ(t.Scalar("SELECT Qta FROM Projects WHERE CProject=202500001").toDouble(), 12);
  // Another card of the same party with that name is refused with the other text.
  t.Exec("INSERT INTO Projects (CProject, DProject, CPrjTipo, TAnag, CAnag, DtIni) VALUES "
         "(202500002, 'Doppione', 1, 1, 1, '2025-02-01 00:00:00')");
  e.f.TBDProject->setText("Doppione");
  EXPECT_FALSE(e.f.Salva());
  EXPECT_EQ(t.messages->asked.back().prompt,
            "Il modello 'Doppione' esiste già in un'altra scheda di questa anagrafica!");
}

TEST(frmModelli, SavedThroughTheDispositionButtonStaysOpen) {
  TestDb t;
  Base(t);
  Nuova n;
  n.Compila("Nuovo con disposizione", 2, 1, QDate(2025, 7, 1));
  t.messages->answers = {vbYes};
  bool schedaAperta = false;
  AlProssimoModale([&](QWidget* w) {
    schedaAperta = w->objectName() == "frmDisp";
    w->close();
  });
  n.f.Bottone(7)->trigger();
  EXPECT_EQ(t.messages->asked.front().prompt, "Per procedere devo salvare il modello, proseguo?");
  EXPECT_TRUE(schedaAperta);
  EXPECT_TRUE(n.f.isVisible());
  EXPECT_EQ(n.f.Azione, 1);
  EXPECT_EQ(n.f.OCCProject->text(), "2025-00002");
  EXPECT_TRUE(n.f.SSTab1->isTabEnabled(2));
  EXPECT_FALSE(n.f.OCFrame6->isEnabled());
  // The same card saved a second time finds itself: gCProject is still 0 for a card
  // opened to add, and the check refuses it. So it has always been.
  n.f.OCUpQta->SetValue(3);
  EXPECT_FALSE(n.f.Salva());
  EXPECT_EQ(t.messages->asked.back().prompt,
            "Il modello 'Nuovo con disposizione' esiste già in un'altra scheda di questa anagrafica!");
}

TEST(frmModelli, AfterTheInnerCardClosesTheHostsAnswerFindsNoReceiver) {
  TestDb t;
  Base(t);
  t.Exec("INSERT INTO ProjectsDisp (CProject, CDisp, CPrjDispTipo, DDisp, Data, Qta) VALUES "
         "(202500001, 1, 1, 'Prima', '2025-01-11 00:00:00', 1)");
  Esistente e(202500001);
  OCPrestKT ctl;  // the component that forwards the host's answers
  QVariant ta = 1, ca = 2;
  ctl.ChAnagInModelli(ta, ca);  // the model card receives it
  EXPECT_EQ(e.f.CBCAnag->currentText(), "Carrozzeria Bianchi");
  e.f.ListView1->SetSelected(0);
  AlProssimoModale([](QWidget* w) { w->close(); });
  e.f.Bottone(8)->trigger();  // the disposition card opens and closes inside the model card
  EXPECT_TRUE(e.f.isVisible());
  try {
    ctl.ChAnagInModelli(ta, ca);
    FAIL() << "the answer reached a card";
  } catch (const VbError& err) {
    EXPECT_EQ(err.Number(), 91);
  }
}

TEST(frmModelli, DispositionButtonAnsweredNoSavesNothing) {
  TestDb t;
  Base(t);
  Nuova n;
  n.Compila("Non salvato", 2, 1, QDate(2025, 7, 1));
  n.f.Bottone(7)->trigger();  // the default answer is No
  EXPECT_EQ(n.f.Azione, 2);
  EXPECT_EQ(t.Scalar("SELECT Count(*) FROM Projects").toInt(), 2);
  // Without a party the button tells so.
  Nuova m;
  SetCBValue(m.f.CBCAnag, 0, 0);
  m.f.Bottone(7)->trigger();
  EXPECT_EQ(t.messages->asked.back().prompt, "Scegli un anagrafica!");
}

TEST(frmModelli, ForfaitTypeShowsOnlyTheRegistrations) {
  TestDb t;
  Base(t);
  Nuova n;
  SetCBValue(n.f.CBTipoPrj, 2, 0);
  EXPECT_TRUE(n.f.GestForfSempl);
  EXPECT_FALSE(n.f.SSTab1->isTabVisible(0));
  EXPECT_FALSE(n.f.SSTab1->isTabVisible(1));
  EXPECT_FALSE(n.f.SSTab1->isTabVisible(2));
  EXPECT_TRUE(n.f.SSTab1->isTabVisible(3));
  EXPECT_EQ(n.f.SSTab1->currentIndex(), 3);
  EXPECT_EQ(n.f.SSTab1->tabText(3), "Registrazioni");
  EXPECT_FALSE(n.f.TBAnnot->isEnabled());
  EXPECT_EQ(n.f.lvwRegistrazioni->ColumnText(4), "Tempo");
  SetCBValue(n.f.CBTipoPrj, 1, 0);
  EXPECT_TRUE(n.f.SSTab1->isTabVisible(0));
  EXPECT_EQ(n.f.SSTab1->currentIndex(), 0);
}

TEST(frmModelli, TypeLockedWhileThereAreDispositions) {
  TestDb t;
  Base(t);
  t.Exec("INSERT INTO ProjectsDisp (CProject, CDisp, CPrjDispTipo, DDisp, Data, Qta, CStato) VALUES "
         "(202500001, 1, 1, 'Prima', '2025-01-11 00:00:00', 5, 0)");
  Esistente e(202500001);
  EXPECT_FALSE(e.f.OCFrame7->isEnabled());
  EXPECT_TRUE(e.f.mnuModUnlockTipo->isVisible());
  e.f.mnuModUnlockTipo->trigger();
  EXPECT_TRUE(e.f.OCFrame7->isEnabled());
  e.f.mnuModUnlockTipo->trigger();
  EXPECT_FALSE(e.f.OCFrame7->isEnabled());
}

TEST(frmModelli, ExitWithoutChangesAsksNothing) {
  TestDb t;
  Base(t);
  Esistente e(202500001);
  e.f.Bottone(1)->trigger();
  EXPECT_FALSE(e.f.isVisible());
  EXPECT_TRUE(t.messages->asked.empty());
  EXPECT_FALSE(gOcxEventCard);  // the card's relay is gone
}

TEST(frmModelli, ClosingWithChangesAsks) {
  TestDb t;
  Base(t);
  Esistente e(202500001);
  e.f.TBDProject->setText("");
  t.messages->answers = {vbYes};
  e.f.close();
  // The save failed its check, so the card stays.
  EXPECT_TRUE(e.f.isVisible());
  EXPECT_EQ(t.messages->asked[0].prompt, "Vuoi salvare prima di uscire?");
  EXPECT_EQ(t.messages->asked[1].prompt, "Inserisci il modello!");
  t.messages->answers = {vbNo};
  e.f.close();
  EXPECT_FALSE(e.f.isVisible());
  EXPECT_EQ(t.Scalar("SELECT DProject FROM Projects WHERE CProject=202500001").toString(), "Stampo pompa");
}

TEST(frmModelli, HostAnswersArriveThroughTheRelay) {
  TestDb t;
  Base(t);
  Nuova n;
  int chiesto = 0;
  QObject::connect(gOcxEventS.get(), &OCPrestKTClass::ShowAnagModEvent, [&] { ++chiesto; });
  n.f.cmdAnag->click();
  EXPECT_EQ(chiesto, 1);
  QVariant ta = 1, ca = 2;
  gOcxEventCard->ChAnagInMod(ta, ca);
  EXPECT_EQ(n.f.CBCAnag->currentText(), "Carrozzeria Bianchi");
  EXPECT_EQ(n.f.CAnag, 2);
  t.Exec("INSERT INTO ProjectsTipo (CPrjTipo, DPrjTipo) VALUES (3, 'Nuovo tipo')");
  QVariant tipo = 3;
  gOcxEventCard->ChProjInMod(tipo);
  EXPECT_EQ(n.f.CBTipoPrj->currentText(), "Nuovo tipo");
}

// ---------------------------------------------------------------- lists

TEST(frmModelli, DispositionListShowsTypeStateAndQuantity) {
  TestDb t;
  Base(t);
  t.Exec("INSERT INTO ProjectsDisp (CProject, CDisp, CPrjDispTipo, DDisp, Data, Qta, CStato) VALUES "
         "(202500001, 1, 1, 'Prima', '2025-01-11 00:00:00', 1234, 0), "
         "(202500001, 2, 9, 'Tipo ignoto', '2025-01-12 00:00:00', 1, 9), "
         "(202500001, 3, 1, 'Host', '2025-01-13 00:00:00', 1, 10), "
         "(202500001, 4, 2, 'Fatturata', '2025-01-14 00:00:00', 1, 19), "
         "(202500001, 5, 2, 'Strana', '2025-01-15 00:00:00', 1, 7)");
  Esistente e(202500001);
  ListView* l = e.f.ListView1;
  ASSERT_EQ(l->Count(), 5);
  EXPECT_EQ(l->Key(0), "K0001");
  EXPECT_EQ(l->Text(0, 1), "0001");
  EXPECT_EQ(l->Text(0, 2), "11/01/2025");
  EXPECT_EQ(l->Text(0, 3), "Oraria [Prima]");
  EXPECT_EQ(l->Text(0, 4), "1.234");
  EXPECT_EQ(l->Text(1, 3), "Tipo ignoto");  // no such type: the description alone
  EXPECT_EQ(l->Icon(0), 10);  // open (11)
  EXPECT_EQ(l->Icon(1), 11);  // closed (12)
  EXPECT_EQ(l->Icon(2), 11);
  EXPECT_EQ(l->Icon(3), 12);  // invoiced (13)
  EXPECT_EQ(l->Icon(4), 12);  // any other state keeps the icon of the row before
  EXPECT_TRUE(e.f.Bottone(8)->isEnabled());
}

namespace {

// Every row of a list: its key, its icon, then the text of each column.
QStringList Righe(ListView* l) {
  QStringList righe;
  for (int r = 0; r < l->Count(); ++r) {
    QStringList testi{l->Key(r), QString::number(l->Icon(r))};
    for (int c = 1; c < l->ColumnCount(); ++c) testi << l->Text(r, c);
    righe << testi.join('|');
  }
  return righe;
}

}  // namespace

// Types shared by several dispositions, a type without a description, one
// with an empty one, one that doesn't exist, and a disposition with no type,
// which reads as type 0.
TEST(frmModelli, DispositionListNamesEachDispositionsType) {
  TestDb t;
  Base(t);
  t.Exec("INSERT INTO ProjectsDispTipo (CPrjDispTipo, DPrjDispTipo, TipoFatt) VALUES (0, 'Generica', 1), "
         "(3, NULL, 1), (4, '', 1)");
  t.Exec("INSERT INTO ProjectsDisp (CProject, CDisp, CPrjDispTipo, DDisp, Data, Qta, CStato) VALUES "
         "(202500001, 1, 2, 'Stampi', '2025-01-11 00:00:00', 3, 0), "
         "(202500001, 2, 1, 'Ore', '2025-01-12 00:00:00', 1, 9), "
         "(202500001, 3, 2, 'Altri stampi', '2025-01-13 00:00:00', 2, 0), "
         "(202500001, 4, 3, 'Senza nome', '2025-01-14 00:00:00', 1, 19), "
         "(202500001, 5, 4, 'Nome vuoto', '2025-01-15 00:00:00', 1, 0), "
         "(202500001, 6, 8, 'Ignota', '2025-01-16 00:00:00', 1, 0), "
         "(202500001, 7, NULL, 'Nessuno', '2025-01-17 00:00:00', 1, 0), "
         "(202500001, 8, 1, 'Ancora ore', '2025-01-18 00:00:00', 1234, 10)");
  Esistente e(202500001);
  EXPECT_EQ(Righe(e.f.ListView1), QStringList({"K0001|10|0001|11/01/2025|A pezzo [Stampi]|3",
                                               "K0002|11|0002|12/01/2025|Oraria [Ore]|1",
                                               "K0003|10|0003|13/01/2025|A pezzo [Altri stampi]|2",
                                               "K0004|12|0004|14/01/2025| [Senza nome]|1",
                                               "K0005|10|0005|15/01/2025| [Nome vuoto]|1",
                                               "K0006|10|0006|16/01/2025|Ignota|1",
                                               "K0007|10|0007|17/01/2025|Generica [Nessuno]|1",
                                               "K0008|11|0008|18/01/2025|Oraria [Ancora ore]|1.234"}));
  EXPECT_TRUE(t.LogLines("frmModelli", "CaricaList").isEmpty());
  // Eight dispositions of six types (no type reads as 0): each type is read once.
  const int prima = t.db->StatementCount();
  e.f.CaricaList();
  EXPECT_EQ(t.db->StatementCount() - prima, 6);
  EXPECT_EQ(e.f.ListView1->Count(), 8);
}

TEST(frmModelli, RegistrationTimesAreNotCarriedIntoHours) {
  TestDb t;
  Base(t);
  t.Exec("INSERT INTO Projects (CProject, DProject, CPrjTipo, TAnag, CAnag, DtIni) VALUES "
         "(202500005, 'Assistenza', 2, 1, 1, '2025-02-01 00:00:00')");
  t.Exec("INSERT INTO ProjectsDisp (CProject, CDisp, DDisp, Data, CStato) VALUES "
         "(202500005, 1, 'Tre da quaranta', '2025-02-02 00:00:00', 0), (202500005, 2, 'In corso', '2025-02-03 00:00:00', 0), "
         "(202500005, 3, 'A cavallo', '2025-02-04 00:00:00', 0)");
  t.Exec("INSERT INTO ActivitiesProd (CAttivita, CProject, CDisp, CUtente, DtIni, DtEnd) VALUES "
         "(202500001, 202500005, 1, 1, '2025-02-02 08:00:00', '2025-02-02 08:40:00'), "
         "(202500002, 202500005, 1, 1, '2025-02-02 09:00:00', '2025-02-02 09:40:00'), "
         "(202500003, 202500005, 1, 1, '2025-02-02 10:00:00', '2025-02-02 10:40:00'), "
         "(202500004, 202500005, 2, 1, '2025-02-03 08:00:00', NULL), "
         "(202500005, 202500005, 3, 1, '2025-02-04 10:50:00', '2025-02-04 11:10:00')");
  CaricaModelli(gDtIni, gDTEnd, gStatus);
  Esistente e(202500005);
  EXPECT_EQ(e.f.CalcTempo(1), "00:120");
  EXPECT_EQ(e.f.CalcTempo(2), "00:00");  // a registration with no closed activity
  EXPECT_EQ(e.f.CalcTempo(3), "00:20");  // 10:50 to 11:10 crosses an hour: 1 and -40 become 0 and 20
  ASSERT_EQ(e.f.lvwRegistrazioni->Count(), 3);
  EXPECT_EQ(e.f.lvwRegistrazioni->Text(0, 4), "00:120");
  EXPECT_EQ(e.f.lvwRegistrazioni->Text(0, 3), "Tre da quaranta");
}

TEST(frmModelli, DeletingTheLastDispositionEmptiesTheListAndFreesTheType) {
  TestDb t;
  Base(t);
  t.Exec("INSERT INTO ProjectsDisp (CProject, CDisp, CPrjDispTipo, DDisp, Data, Qta, CStato) VALUES "
         "(202500001, 1, 1, 'Sola', '2025-01-11 00:00:00', 5, 0)");
  t.Exec("INSERT INTO ActivitiesProd (CAttivita, CProject, CDisp, CUtente, DtIni, DtEnd) VALUES "
         "(202500001, 202500001, 1, 1, '2025-01-11 00:00:00', '2025-01-11 01:00:00')");
  Esistente e(202500001);
  e.f.ListView1->SetSelected(0);
  t.messages->answers = {vbYes};
  e.f.Bottone(9)->trigger();
  EXPECT_EQ(t.messages->asked.back().prompt, "Vuoi cancellare la disposizione n° 2025-00001/0001 ?");
  EXPECT_EQ(e.f.ListView1->Count(), 0);
  EXPECT_EQ(t.Scalar("SELECT Count(*) FROM ProjectsDisp").toInt(), 0);
  EXPECT_EQ(t.Scalar("SELECT Count(*) FROM ActivitiesProd").toInt(), 0);
  // The buttons and the type frame follow on the next load of the list.
  EXPECT_FALSE(e.f.OCFrame7->isEnabled());
  e.f.CaricaList();
  EXPECT_FALSE(e.f.Bottone(8)->isEnabled());
  EXPECT_FALSE(e.f.Bottone(9)->isEnabled());
  EXPECT_TRUE(e.f.OCFrame7->isEnabled());
}

TEST(frmModelli, DeletingOnACardOpenedToAddLeavesTheDatabaseRows) {
  TestDb t;
  Base(t);
  Nuova n;
  n.Compila("Aggiunto", 2, 1, QDate(2025, 8, 1));
  ASSERT_TRUE(n.f.Salva());
  t.Exec("INSERT INTO ProjectsDisp (CProject, CDisp, CPrjDispTipo, DDisp, Data, Qta) VALUES "
         "(202500002, 1, 1, 'Resta', '2025-08-02 00:00:00', 1)");
  CaricaDatiModello(202500002);
  n.f.CaricaList();
  n.f.ListView1->SetSelected(0);
  t.messages->answers = {vbYes};
  n.f.CancDisp();
  // gCProject is 0: the memory copy and the list lose the row, the table keeps it.
  EXPECT_EQ(n.f.ListView1->Count(), 0);
  EXPECT_EQ(gRcsDisp->RecordCount(), 0);
  EXPECT_EQ(t.Scalar("SELECT Count(*) FROM ProjectsDisp WHERE CProject=202500002").toInt(), 1);
}

// ---------------------------------------------------------------- order link

namespace {
void Ordini(TestDb& t) {
  const QString recente = DateToStorage(QDateTime(QDate::currentDate().addDays(-30), QTime(0, 0)));
  const QString vecchio = DateToStorage(QDateTime(QDate::currentDate().addDays(-1200), QTime(0, 0)));
  t.Exec(QString("INSERT INTO Doc (TipoDoc, NDoc, Data, TAnag, CAnag) VALUES (2, 202500010, '%1', 1, 1), "
                 "(2, 202500011, '%2', 1, 1), (2, 202500012, '%1', 1, 2)")
             .arg(recente, vecchio));
  t.Exec("INSERT INTO DocDett (TipoDoc, NDoc, Scheda, Riga, CodTesto, DArt, Qta, Annullato) VALUES "
         "(2, 202500010, 0, 1, 'ST-01', 'Stampo coperchio', 10, 2), (2, 202500010, 0, 2, 'ST-02', 'Stampo base', 4, 0), "
         "(2, 202500010, 0, 3, 'ST-03', 'Preso', 1, 0), (2, 202500011, 0, 1, 'OLD', 'Vecchio', 1, 0), "
         "(2, 202500012, 0, 1, 'X', 'Altro cliente', 1, 0)");
  t.Exec("UPDATE Projects SET TipoDocRif=2, NDocRif=202500010, RigaRif=1 WHERE CProject=202500001");
  t.Exec("INSERT INTO Projects (CProject, DProject, CPrjTipo, TAnag, CAnag, DtIni, TipoDocRif, NDocRif, RigaRif) VALUES "
         "(202500007, 'Altro modello', 1, 1, 1, '2025-03-01 00:00:00', 2, 202500010, 3)");
}
}  // namespace

TEST(frmModelli, OrderReferenceLoadsWithTheCard) {
  TestDb t;
  Base(t);
  Ordini(t);
  CaricaModelli(gDtIni, gDTEnd, gStatus);
  Esistente e(202500001);
  EXPECT_EQ(e.f.OCUDOrdine->text(), "2025-00010");
  EXPECT_EQ(e.f.OCUDRiga->text(), "001");
  EXPECT_EQ(e.f.TBDArt->text(), "Stampo coperchio");
  EXPECT_EQ(e.f.TBCodTesto->text(), "ST-01");
  EXPECT_EQ(e.f.OCUpQtaOrd->Value(), 8);
  EXPECT_FALSE(e.f.OCFrame5->isHidden());
  // Loading the card does not overwrite the model's name.
  EXPECT_EQ(e.f.TBDProject->text(), "Stampo pompa");
  EXPECT_FALSE(e.f.OCFrame2->isEnabled());
  EXPECT_FALSE(e.f.OCFrame3->isEnabled());
}

TEST(frmModelli, OrderGoneHidesTheDateAndLineGoneClearsTheTexts) {
  TestDb t;
  Base(t);
  Ordini(t);
  CaricaModelli(gDtIni, gDTEnd, gStatus);
  Esistente e(202500001);
  e.f.CaricaRigaOrdine(0, 0);
  EXPECT_EQ(e.f.TBDArt->text(), "");
  EXPECT_EQ(e.f.OCUpQtaOrd->Value(), 0);
  t.Exec("DELETE FROM DocDett WHERE NDoc=202500010 AND Riga=2");
  e.f.TBDArt->setText("resto");
  e.f.CaricaRigaOrdine(202500010, 2);
  EXPECT_EQ(e.f.TBDArt->text(), "");
  EXPECT_FALSE(e.f.OCFrame5->isHidden());
  t.Exec("DELETE FROM Doc WHERE NDoc=202500010");
  e.f.CaricaRigaOrdine(202500010, 1);
  EXPECT_TRUE(e.f.OCFrame5->isHidden());
}

TEST(frmModelli, ChosenOrderLineOverwritesNameAndQuantity) {
  TestDb t;
  Base(t);
  Ordini(t);
  CaricaModelli(gDtIni, gDTEnd, gStatus);
  Esistente e(202500001);
  int nDoc = 202500010, riga = 2;
  QString dArt = "Stampo base";
  e.f.fOrdini_LoadOrderRow(nDoc, riga, dArt);
  EXPECT_EQ(e.f.TBDProject->text(), "Stampo base");
  EXPECT_EQ(e.f.OCUpQta->Value(), 4);
  EXPECT_TRUE(e.f.Modificato());
  // The reference fields themselves are not changed, and the save writes no reference.
  EXPECT_EQ(e.f.OCUDRiga->Value(), 1);
}

TEST(frmModelli, UnlinkIsOfferedOnlyWithAnOrder) {
  TestDb t;
  Base(t);
  Ordini(t);
  CaricaModelli(gDtIni, gDTEnd, gStatus);
  Esistente e(202500001);
  emit e.f.mnuRifOrd->aboutToShow();
  EXPECT_TRUE(e.f.mnuDelLink->isEnabled());
  t.messages->answers = {vbYes};
  e.f.mnuDelLink->trigger();
  EXPECT_EQ(t.messages->asked.back().prompt, "Sei sicuro di voler eliminare il collegamento alla riga 1 dell'ordine 2025-00010?");
  EXPECT_EQ(e.f.OCUDOrdine->Value(), 0);
  EXPECT_EQ(e.f.TBDArt->text(), "");
  emit e.f.mnuRifOrd->aboutToShow();
  EXPECT_FALSE(e.f.mnuDelLink->isEnabled());
}

TEST(frmOrdini, OffersFreeLinesAndTheModelsOwn) {
  TestDb t;
  Base(t);
  Ordini(t);
  frmOrdini f;
  f.TAnag = 1;
  f.CAnag = 1;
  f.NDoc = 202500010;
  f.Riga = 1;
  f.Form_Load();
  EXPECT_EQ(f.windowTitle(), "Ordini aperti");
  f.show();
  ListView* l = f.ListView1;
  // Line 3 is taken by another model; the order of 1200 days ago is out of reach.
  ASSERT_EQ(l->Count(), 2);
  EXPECT_EQ(l->Key(0), "K2025000100001");
  EXPECT_EQ(l->Text(0, 1), "2025-00010");
  EXPECT_EQ(l->Text(0, 2), "001");
  EXPECT_EQ(l->Text(0, 6), "10");
  EXPECT_EQ(l->SelectedIndex(), 0);
  int nDoc = 0, riga = 0;
  QString dArt;
  QObject::connect(&f, &frmOrdini::LoadOrderRow, [&](int& n, int& r, QString& d) {
    nDoc = n;
    riga = r;
    dArt = d;
  });
  l->SetSelected(1);
  f.Bottone(3)->trigger();
  EXPECT_EQ(nDoc, 202500010);
  EXPECT_EQ(riga, 2);
  EXPECT_EQ(dArt, "Stampo base");
  EXPECT_FALSE(f.isVisible());
}

TEST(frmOrdini, CustomerWithoutOpenLinesGivesAnEmptyListThatStays) {
  TestDb t;
  Base(t);
  Ordini(t);
  frmOrdini f;
  f.TAnag = 1;
  f.CAnag = 9;
  f.Form_Load();
  f.show();
  EXPECT_EQ(f.ListView1->Count(), 0);
  f.Bottone(3)->trigger();
  EXPECT_TRUE(f.isVisible());
}

TEST(frmModelli, LinkAnOrderNeedsAParty) {
  TestDb t;
  Base(t);
  Nuova n;
  n.f.CAnag = 0;
  n.f.mnuLinkOrd->trigger();
  EXPECT_EQ(t.messages->asked.back().prompt, "Devi scegliere un'anagrafica per collegare un ordine!");
}

TEST(OCPrestKT, AddAndEditOpenTheModelCard) {
  TestDb t;
  Base(t);
  t.Exec("INSERT INTO AnagTipo (TAnag, Descrizione) VALUES (10, 'Dipendenti')");
  OCPrestKT ctl;
  ctl.Initialize();
  ctl.SetDTEnd(D(2026, 12, 31));
  ctl.SetDtIni(D(2024, 1, 1));
  ctl.SetStatus(-1);
  ctl.DBConn(t.db, 1, QIcon(), t.Path() + "/docs", 1);
  auto* list = ctl.findChild<ListView*>("ListView1");
  int azione = 0, codice = -1;
  AlProssimoModale([&](QWidget* w) {
    auto* f = qobject_cast<frmModelli*>(w);
    azione = f->Azione;
    codice = f->CProject;
    f->close();
  });
  ctl.Aggiungi();
  EXPECT_EQ(azione, 2);
  EXPECT_EQ(codice, 0);
  EXPECT_EQ(gCProject, 0);
  list->SetSelected(list->Row("K202400003"));
  AlProssimoModale([&](QWidget* w) {
    auto* f = qobject_cast<frmModelli*>(w);
    azione = f->Azione;
    codice = f->CProject;
    f->close();
  });
  ctl.Modifica();
  EXPECT_EQ(azione, 1);
  EXPECT_EQ(codice, 202400003);
  EXPECT_EQ(gCProject, 202400003);
}

// A model replaced under a freshly made code keeps its row when the new one
// can't be written, and the engine's words reach the log.
TEST(frmModelli, FailedSaveOfAReplacedRowKeepsTheOldRow) {
  TestDb t;
  Base(t);
  // Dated 2024 but numbered as the next code of 2025: the new model of 2025 takes its code.
  t.Exec("INSERT INTO Projects (CProject, DProject, CPrjTipo, TAnag, CAnag, DtIni, Stato, Qta) VALUES "
         "(202500002, 'Fuori posto', 1, 1, 2, '2024-12-31 00:00:00', 0, 3)");
  t.RifiutaScritture("Projects");
  Nuova n;
  n.Compila("Nuovo 2025", 1, 1, QDate(2025, 6, 1));
  EXPECT_TRUE(n.f.Salva());  // the user sees nothing of the failure
  EXPECT_EQ(n.f.CProject, 202500002);
  EXPECT_EQ(t.Scalar("SELECT DProject FROM Projects WHERE CProject=202500002").toString(), "Fuori posto");
  const QStringList log = t.LogLines("frmModelli", "SalvaProject");
  ASSERT_FALSE(log.isEmpty());
  EXPECT_TRUE(log[0].contains(t.MessaggioPieno())) << log[0].toStdString();
  EXPECT_EQ(t.db->TransactionDepth(), 0);
  // Without the failure the same save replaces the row.
  t.AccettaScritture("Projects");
  Nuova m;
  m.Compila("Nuovo 2025", 1, 1, QDate(2025, 6, 1));
  EXPECT_TRUE(m.f.Salva());
  EXPECT_EQ(t.Scalar("SELECT DProject FROM Projects WHERE CProject=202500002").toString(), "Nuovo 2025");
  EXPECT_EQ(t.Scalar("SELECT Count(*) FROM Projects WHERE CProject=202500002").toInt(), 1);
}

// The model's name takes no more than its column's 255 characters, and the
// notes no more than the 5000 of the memo in memory.
TEST(frmModelli, TextsStopAtTheSizeOfTheirColumn) {
  TestDb t;
  Base(t);
  Nuova n;
  n.Compila(QString(), 1, 1, QDate(2025, 6, 1));
  QTest::keyClicks(n.f.TBDProject, QString(256, 'm'));
  EXPECT_EQ(n.f.TBDProject->text(), QString(255, 'm'));
  n.f.TBAnnot->setPlainText(QString(5001, 'a'));
  EXPECT_EQ(n.f.TBAnnot->toPlainText(), QString(5000, 'a'));
  ASSERT_TRUE(n.f.Salva());
  EXPECT_EQ(t.Scalar("SELECT DProject FROM Projects WHERE CProject=202500002").toString(), QString(255, 'm'));
  EXPECT_EQ(t.Scalar("SELECT Annot FROM Projects WHERE CProject=202500002").toString(), QString(5000, 'a'));
  EXPECT_TRUE(t.LogLines("frmModelli", "SalvaProject").isEmpty());
}

// On a forfait model the registrations tab opens the forfait card: for a new
// registration, and for the selected one with its number; what the card saves
// comes back into the list, selected.
TEST(frmModelli, RegistrationsOpenTheForfaitCard) {
  TestDb t;
  Base(t);
  t.Exec("INSERT INTO Projects (CProject, DProject, CPrjTipo, TAnag, CAnag, DtIni) VALUES "
         "(202500005, 'Assistenza', 2, 1, 1, '2025-02-01 00:00:00')");
  t.Exec("INSERT INTO ProjectsDisp (CProject, CDisp, DDisp, Data, CStato) VALUES "
         "(202500005, 1, 'Prima', '2025-02-02 00:00:00', 0), (202500005, 2, 'Seconda', '2025-02-03 00:00:00', 0)");
  CaricaModelli(gDtIni, gDTEnd, gStatus);
  Esistente e(202500005);
  e.f.SSTab1->setCurrentIndex(3);
  ASSERT_EQ(e.f.lvwRegistrazioni->Count(), 2);

  // The selected one, changed.
  e.f.lvwRegistrazioni->SetSelected(e.f.lvwRegistrazioni->Row("K0002"));
  int azione = 0, cDisp = -1;
  QString anagrafica, modello;
  AlProssimoModale([&](QWidget* w) {
    auto* c = qobject_cast<frmGestForfSempl*>(w);
    ASSERT_TRUE(c);
    azione = c->Azione;
    cDisp = c->CDisp;
    anagrafica = c->TBAnag->text();
    modello = c->TBDProject->text();
    EXPECT_EQ(c->TBDDisp->text(), "Seconda");
    c->TBDDisp->setText("Seconda rivista");
    c->Bottone(3)->trigger();
  });
  e.f.Bottone(8)->trigger();
  EXPECT_EQ(azione, 1);
  EXPECT_EQ(cDisp, 2);
  EXPECT_EQ(anagrafica, "Officina Rossi");
  EXPECT_EQ(modello, "Assistenza");
  EXPECT_EQ(t.Scalar("SELECT DDisp FROM ProjectsDisp WHERE CProject=202500005 AND CDisp=2").toString(),
            "Seconda rivista");
  const int seconda = e.f.lvwRegistrazioni->Row("K0002");
  EXPECT_EQ(e.f.lvwRegistrazioni->Text(seconda, 3), "Seconda rivista");
  EXPECT_EQ(e.f.lvwRegistrazioni->SelectedIndex(), seconda);

  // A new one: the card opens empty and saves the next number.
  AlProssimoModale([&](QWidget* w) {
    auto* c = qobject_cast<frmGestForfSempl*>(w);
    ASSERT_TRUE(c);
    azione = c->Azione;
    cDisp = c->CDisp;
    EXPECT_EQ(c->TBDDisp->text(), "");
    c->TBDDisp->setText("Terza");
    c->Bottone(3)->trigger();
  });
  e.f.Bottone(7)->trigger();
  EXPECT_EQ(azione, 2);
  EXPECT_EQ(cDisp, 0);
  ASSERT_EQ(e.f.lvwRegistrazioni->Count(), 3);
  EXPECT_EQ(e.f.lvwRegistrazioni->SelectedIndex(), e.f.lvwRegistrazioni->Row("K0003"));
  EXPECT_EQ(t.Scalar("SELECT DDisp FROM ProjectsDisp WHERE CProject=202500005 AND CDisp=3").toString(), "Terza");
}

// A new forfait model must be saved before its first registration: No opens nothing.
TEST(frmModelli, ANewForfaitModelAsksToBeSavedFirst) {
  TestDb t;
  Base(t);
  Nuova n;
  n.Compila("Assistenza annuale", 1, 2, QDate(2025, 6, 1));
  n.f.SSTab1->setCurrentIndex(3);
  bool aperta = false;
  AlProssimoModale([&](QWidget* w) {
    if (qobject_cast<frmGestForfSempl*>(w)) {
      aperta = true;
      w->close();
    }
  });
  t.messages->answers = {vbNo};
  n.f.Bottone(7)->trigger();
  QApplication::processEvents();
  EXPECT_EQ(t.messages->asked.back().prompt, "Per procedere devo salvare il modello, proseguo?");
  EXPECT_FALSE(aperta);
  EXPECT_EQ(t.Scalar("SELECT Count(*) FROM Projects WHERE DProject='Assistenza annuale'").toInt(), 0);
}
