// The register on the component's surface, and the relay between screens and host.
#include <gtest/gtest.h>

#include <QDir>
#include <QHeaderView>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>

#include "OCPrestKT.h"
#include "ProcedureUi.h"
#include "TestSupport.h"

using namespace prestkt;
using namespace prestkt::test;

namespace {

void Registro(TestDb& t) {
  t.Exec("INSERT INTO AnagTipo (TAnag, Descrizione) VALUES (1, 'Clienti')");
  t.Exec("INSERT INTO Anagrafica (TAnag, CAnag, RagSoc1) VALUES (1, 1, 'Officina Rossi'), (1, 2, 'Carrozzeria Bianchi')");
  t.Exec("INSERT INTO ProjectsTipo (CPrjTipo, DPrjTipo, GestForfSempl) VALUES (1, 'Stampo', 0), (2, 'Forfait', -1)");
  t.Exec("INSERT INTO Projects (CProject, DProject, CPrjTipo, TAnag, CAnag, DtIni, Stato) VALUES "
         "(202500001, 'Con disposizione aperta', 1, 1, 1, '2025-01-10 00:00:00', 0), "
         "(202500002, 'Con disposizioni chiuse', 1, 1, 2, '2025-02-10 00:00:00', 0), "
         "(202500003, 'Forfait in corso', 2, 1, 1, '2025-03-10 00:00:00', 0), "
         "(202500004, 'Forfait finito', 2, 1, 2, '2025-04-10 00:00:00', 0)");
  t.Exec("INSERT INTO ProjectsDisp (CProject, CDisp, DDisp, CStato) VALUES (202500001, 1, 'a', 0), "
         "(202500001, 2, 'b', 9), (202500002, 1, 'c', 9), (202500002, 2, 'd', 19)");
  t.Exec("INSERT INTO ActivitiesProd (CAttivita, CProject, CDisp, CUtente, DtIni, DtEnd) VALUES "
         "(202500001, 202500003, 1, 1, '2025-03-11 08:00:00', NULL), "
         "(202500002, 202500004, 1, 1, '2025-04-11 08:00:00', '2025-04-11 10:00:00'), "
         "(202500003, 202500001, 1, 1, '2025-01-11 00:00:00', '2025-01-11 01:00:00')");
}

struct Register {
  explicit Register(TestDb& t) {
    ctl.Initialize();
    ctl.SetDtIni(D(2025, 1, 1));
    ctl.SetDTEnd(D(2025, 12, 31));
    ctl.SetStatus(-1);
    ctl.DBConn(t.db, 1, QIcon(), t.Path() + "/docs", 1);
    list = ctl.findChild<ListView*>("ListView1");
  }
  QMenu* Menu() { return ctl.findChild<QMenu*>("mnuTD"); }
  void Check(const QString& key) { list->SetChecked(list->Row(key), true); }
  int Stato(TestDb& t, int code) {
    return t.Scalar(QString("SELECT Stato FROM Projects WHERE CProject=%1").arg(code)).toInt();
  }
  OCPrestKT ctl;
  ListView* list;
};

}  // namespace

TEST(Register, ContextMenuHasFourEntriesAndASeparator) {
  TestDb t;
  Registro(t);
  Register r(t);
  const auto actions = r.Menu()->actions();
  ASSERT_EQ(actions.size(), 5);
  EXPECT_EQ(actions[0]->text(), "Seleziona tutti");
  EXPECT_EQ(actions[1]->text(), "Deseleziona tutti");
  EXPECT_TRUE(actions[2]->isSeparator());
  EXPECT_EQ(actions[3]->text(), "Chiudi");
  EXPECT_EQ(actions[4]->text(), "Riapri");
}

TEST(Register, CheckAllAndUncheckAll) {
  TestDb t;
  Registro(t);
  Register r(t);
  r.ctl.findChild<QAction*>("mnuSel")->trigger();
  for (int i = 0; i < r.list->Count(); ++i) EXPECT_TRUE(r.list->Checked(i));
  r.ctl.findChild<QAction*>("mnuDeSel")->trigger();
  for (int i = 0; i < r.list->Count(); ++i) EXPECT_FALSE(r.list->Checked(i));
}

TEST(Register, CloseSkipsModelsWithOpenWorkSilently) {
  TestDb t;
  Registro(t);
  Register r(t);
  r.ctl.findChild<QAction*>("mnuSel")->trigger();
  t.messages->answers = {vbYes};
  r.ctl.findChild<QAction*>("mnuClose")->trigger();
  ASSERT_EQ(t.messages->asked.size(), 1u);
  EXPECT_EQ(t.messages->asked[0].prompt, "Vuoi chiudere i modelli selezionati?");
  EXPECT_EQ(t.messages->asked[0].buttons, vbYesNo | vbQuestion | vbDefaultButton2);
  EXPECT_EQ(r.Stato(t, 202500001), 0);  // an open disposition
  EXPECT_EQ(r.Stato(t, 202500002), 9);  // all closed or invoiced
  EXPECT_EQ(r.Stato(t, 202500003), 0);  // a forfait with an activity still running
  EXPECT_EQ(r.Stato(t, 202500004), 9);
  // The register was reloaded: the lines have no ticks now.
  EXPECT_EQ(r.list->Count(), 4);
  EXPECT_FALSE(r.list->Checked(0));
}

TEST(Register, CloseAnsweredNoChangesNothing) {
  TestDb t;
  Registro(t);
  Register r(t);
  r.Check("K202500002");
  r.ctl.findChild<QAction*>("mnuClose")->trigger();  // the default answer is No
  EXPECT_EQ(r.Stato(t, 202500002), 0);
}

TEST(Register, OnlyTickedLinesCountNotTheSelection) {
  TestDb t;
  Registro(t);
  Register r(t);
  r.list->SetSelected(r.list->Row("K202500004"));
  r.Check("K202500002");
  t.messages->answers = {vbYes};
  r.ctl.mnuClose_Click();
  EXPECT_EQ(r.Stato(t, 202500002), 9);
  EXPECT_EQ(r.Stato(t, 202500004), 0);
}

TEST(Register, ReopenRunsTheUpdateWhateverTheState) {
  TestDb t;
  Registro(t);
  t.Exec("UPDATE Projects SET Stato=10 WHERE CProject=202500002");
  Register r(t);
  r.Check("K202500002");
  r.Check("K202500001");
  t.messages->answers = {vbYes};
  const int before = t.db->StatementCount();
  r.ctl.mnuReOpen_Click();
  EXPECT_EQ(t.messages->asked.back().prompt, "Vuoi riaprire i modelli selezionati?");
  EXPECT_EQ(r.Stato(t, 202500002), 0);
  EXPECT_EQ(r.Stato(t, 202500001), 0);
  // Two updates (each BEGIN, UPDATE, COMMIT) and the reload of the register.
  EXPECT_GE(t.db->StatementCount() - before, 7);
}

TEST(Register, ColumnClickSortsAndFlips) {
  TestDb t;
  Registro(t);
  Register r(t);
  auto* header = r.list->header();
  emit header->sectionClicked(4);  // "Modello"
  EXPECT_EQ(r.list->SortKey(), 4);
  EXPECT_EQ(r.list->SortOrder(), 0);
  EXPECT_EQ(r.list->Text(0, 4), "Con disposizione aperta");
  EXPECT_EQ(r.list->SelectedIndex(), 0);
  emit header->sectionClicked(4);
  EXPECT_EQ(r.list->SortOrder(), 1);
  EXPECT_EQ(r.list->Text(0, 4), "Forfait in corso");
  emit header->sectionClicked(1);  // another column starts ascending
  EXPECT_EQ(r.list->SortOrder(), 0);
  EXPECT_EQ(r.list->Key(0), "K202500001");
}

TEST(Register, DeleteRemovesRowsAndTheFolder) {
  TestDb t;
  Registro(t);
  t.Exec("INSERT INTO ProjectsDispDett (CProject, CDisp, CPrestazione) VALUES (202500001, 1, 3)");
  t.Exec("INSERT INTO ProjectsDocDett (TipoDoc, NDoc, Scheda, Riga, RigaD, CProject, CDisp) VALUES (12, 1, 0, 1, 1, 202500001, 1)");
  Register r(t);
  const QString folder = gPathDocs + "/2025/202500001";
  ASSERT_TRUE(QDir().mkpath(folder));
  QFile f(folder + "/offerta.txt");
  ASSERT_TRUE(f.open(QIODevice::WriteOnly));
  f.close();
  r.list->SetSelected(r.list->Row("K202500001"));
  t.messages->answers = {vbYes};
  r.ctl.Elimina();
  EXPECT_EQ(t.messages->asked.back().prompt, "Sei sicuro di voler eliminare il modello codice 2025-00001?");
  for (const char* table : {"ActivitiesProd", "ProjectsDisp", "ProjectsDispDett", "Projects"})
    EXPECT_EQ(t.Scalar(QString("SELECT Count(*) FROM %1 WHERE CProject=202500001").arg(table)).toInt(), 0) << table;
  EXPECT_EQ(t.Scalar("SELECT Count(*) FROM ProjectsDocDett").toInt(), 1);  // document links stay
  EXPECT_FALSE(QFileInfo::exists(folder));
  EXPECT_EQ(r.list->IndexOfKey("K202500001"), -1);
  EXPECT_EQ(r.list->Count(), 3);
  EXPECT_EQ(r.list->SelectedIndex(), 0);
  gRcsProjects->SetFilter("CProject=202500001");
  EXPECT_EQ(gRcsProjects->RecordCount(), 0);
  EXPECT_TRUE(t.LogLines("OCPrestKT", "Elimina").isEmpty());
}

TEST(Register, DeleteKeepsAFolderHoldingFoldersAndWorksWithoutOne) {
  TestDb t;
  Registro(t);
  Register r(t);
  const QString folder = gPathDocs + "/2025/202500002";
  ASSERT_TRUE(QDir().mkpath(folder + "/disegni"));
  r.list->SetSelected(r.list->Row("K202500002"));
  t.messages->answers = {vbYes, vbYes};
  r.ctl.Elimina();
  EXPECT_TRUE(QFileInfo(folder + "/disegni").isDir());
  EXPECT_EQ(t.Scalar("SELECT Count(*) FROM Projects WHERE CProject=202500002").toInt(), 0);
  EXPECT_EQ(t.LogLines("OCPrestKT", "Elimina").size(), 1);  // the folder that could not go
  // A model without a folder: nothing to remove, nothing logged.
  r.list->SetSelected(r.list->Row("K202500003"));
  r.ctl.Elimina();
  EXPECT_EQ(t.Scalar("SELECT Count(*) FROM Projects WHERE CProject=202500003").toInt(), 0);
  EXPECT_EQ(t.LogLines("OCPrestKT", "Elimina").size(), 1);
}

TEST(Register, DeleteAnsweredNoKeepsEverything) {
  TestDb t;
  Registro(t);
  Register r(t);
  r.list->SetSelected(r.list->Row("K202500004"));
  r.ctl.Elimina();
  EXPECT_EQ(t.Scalar("SELECT Count(*) FROM Projects").toInt(), 4);
  EXPECT_EQ(r.list->Count(), 4);
}

TEST(Register, OnlyInputMakesTheRegisterReadOnly) {
  TestDb t;
  Registro(t);
  Register r(t);
  r.ctl.SetOnlyInput(true);
  r.list->SetSelected(0);
  r.ctl.Elimina();
  EXPECT_TRUE(t.messages->asked.empty());
  EXPECT_EQ(t.Scalar("SELECT Count(*) FROM Projects").toInt(), 4);
  gOnlyInput = false;
}

TEST(Register, SavedModelLineIsRefreshedWithAnEmptyType) {
  TestDb t;
  Registro(t);
  Register r(t);
  t.Exec("UPDATE Projects SET DProject='Rinominato' WHERE CProject=202500002");
  int code = 202500002;
  gOcxEventS->ReloadControl(code);
  const int row = r.list->Row("K202500002");
  EXPECT_EQ(r.list->Text(row, 4), "Rinominato");
  EXPECT_EQ(r.list->Text(row, 5), " ");  // the type column stays empty until the next full load
  EXPECT_EQ(r.list->SelectedIndex(), row);
  r.ctl.SetStatus(-1);
  EXPECT_EQ(r.list->Text(r.list->Row("K202500002"), 5), "Stampo");
}

TEST(Register, TimerShowsTheListAfterTheHostsLayout) {
  TestDb t;
  Registro(t);
  QWidget host;
  auto* ctl = new OCPrestKT(&host);
  ctl->Initialize();
  ctl->SetDTEnd(D(2025, 12, 31));
  ctl->DBConn(t.db, 1, QIcon(), t.Path(), 1);
  host.show();
  auto* list = ctl->findChild<ListView*>("ListView1");
  EXPECT_FALSE(list->isVisible());
  QTest::qWait(50);
  EXPECT_TRUE(list->isVisible());
}

TEST(Register, PartyButtonAsksTheHost) {
  TestDb t;
  Registro(t);
  Register r(t);
  QSignalSpy spy(&r.ctl, &OCPrestKT::CallShowAnag);
  r.ctl.findChild<QPushButton*>("Command1")->click();
  EXPECT_EQ(spy.count(), 1);
}

// ---------------------------------------------------------------- relay

TEST(Relay, ScreensRequestsReachTheHostWithArgumentsByReference) {
  TestDb t;
  Registro(t);
  Register r(t);
  int anagMod = 0, closePrg = 0;
  QObject::connect(&r.ctl, &OCPrestKT::CallShowAnagMod, [&] { ++anagMod; });
  QObject::connect(&r.ctl, &OCPrestKT::CallShowTipol, [](QVariant& v) { v = v.toInt() + 40; });
  QObject::connect(&r.ctl, &OCPrestKT::CallShowTipolDisp, [](QVariant& v) { v = QString("tipo %1").arg(v.toInt()); });
  QObject::connect(&r.ctl, &OCPrestKT::CallShowAnagDoc, [](QString& s) { s += " visto"; });
  QObject::connect(&r.ctl, &OCPrestKT::GetDataForFattDiff, [](double& d) { d *= 2; });
  QObject::connect(&r.ctl, &OCPrestKT::GetDataFromProjects,
                   [](RecordsetPtr& fd, RecordsetPtr&, int& riga, int& mode) {
                     riga = fd ? 99 : -1;
                     mode = 7;
                   });
  QObject::connect(&r.ctl, &OCPrestKT::ClosePrg, [&] { ++closePrg; });
  gOcxEventS->ShowAnagMod();
  EXPECT_EQ(anagMod, 1);
  QVariant tipo = 2;
  gOcxEventS->ShowTipologieMod(tipo);
  EXPECT_EQ(tipo.toInt(), 42);
  QVariant tipoDisp = 3;
  gOcxEventS->ShowTipologieDisp(tipoDisp);
  EXPECT_EQ(tipoDisp.toString(), "tipo 3");
  QString doc = "DDT";
  gOcxEventS->ShowAnagDoc(doc);
  EXPECT_EQ(doc, "DDT visto");
  double importo = 6.25;
  gOcxEventS->SendDataFattDiff(importo);
  EXPECT_EQ(importo, 12.5);
  RecordsetPtr fd = Recordset::Create(), fdd;
  int riga = 0, mode = 2;
  gOcxEventS->SendDataDoc(fd, fdd, riga, mode);
  EXPECT_EQ(riga, 99);
  EXPECT_EQ(mode, 7);
  gOcxEventS->CloseAll();
  EXPECT_EQ(closePrg, 1);
}

TEST(Relay, AnswersGoToTheOpenCardOrFailBackToTheHost) {
  TestDb t;
  Registro(t);
  Register r(t);
  gOcxEventCard.reset();
  QVariant ta = 1, ca = 2;
  try {
    r.ctl.ChAnagInModelli(ta, ca);
    FAIL() << "an answer with no card open must fail back to the host";
  } catch (const VbError& e) {
    EXPECT_EQ(e.Number(), err::ObjectNotSet);
  }
  QVariant tipo = 3;
  QString s = "DDT";
  EXPECT_THROW(r.ctl.ChTipoPrjModelli(tipo), VbError);
  EXPECT_THROW(r.ctl.ChTipoPrjDisp(tipo), VbError);
  EXPECT_THROW(r.ctl.ChAnagInDocs(ta, ca, s), VbError);
  // A card opened: its relay receives the answers, and a write comes back.
  gOcxEventCard = OCPrestKTClassPtr(std::make_shared<OCPrestKTClass>());
  QVariant gotT, gotC, gotTipo, gotDisp;
  QObject::connect(gOcxEventCard.get(), &OCPrestKTClass::ChAnagInModelli, [&](QVariant& a, QVariant& b) {
    gotT = a;
    gotC = b;
    b = 0;
  });
  QObject::connect(gOcxEventCard.get(), &OCPrestKTClass::ChProjInModelli, [&](QVariant& v) { gotTipo = v; });
  QObject::connect(gOcxEventCard.get(), &OCPrestKTClass::ChProjInDisposizioni, [&](QVariant& v) { gotDisp = v; });
  r.ctl.ChAnagInModelli(ta, ca);
  EXPECT_EQ(gotT.toInt(), 1);
  EXPECT_EQ(gotC.toInt(), 2);
  EXPECT_EQ(ca.toInt(), 0);
  r.ctl.ChTipoPrjModelli(tipo);
  EXPECT_EQ(gotTipo.toInt(), 3);
  QVariant disp = 4;
  r.ctl.ChTipoPrjDisp(disp);
  EXPECT_EQ(gotDisp.toInt(), 4);
  gOcxEventCard.reset();
}

TEST(Relay, DeclaredEventsNeverFire) {
  TestDb t;
  Registro(t);
  auto* ctl = new OCPrestKT;
  QSignalSpy chrono(ctl, &OCPrestKT::Chrono);
  QSignalSpy end(ctl, &OCPrestKT::EndChrono);
  QSignalSpy pz(ctl, &OCPrestKT::GetPZVend);
  ctl->Initialize();
  ctl->SetDTEnd(D(2025, 12, 31));
  ctl->DBConn(t.db, 1, QIcon(), t.Path(), 1, true);
  ctl->findChild<QLineEdit*>("TBFind")->setText("forfait");
  ctl->SetStatus(0);
  int code = 202500001;
  gOcxEventS->ReloadControl(code);
  delete ctl;
  EXPECT_EQ(chrono.count(), 0);
  EXPECT_EQ(end.count(), 0);
  EXPECT_EQ(pz.count(), 0);
}

TEST(Relay, SecondDBConnMakesANewRelay) {
  TestDb t;
  Registro(t);
  Register r(t);
  const OCPrestKTClassPtr first = gOcxEventS;
  r.ctl.DBConn(t.db, 1, QIcon(), t.Path(), 1);
  EXPECT_FALSE(gOcxEventS == first);
  int n = 0;
  QObject::connect(&r.ctl, &OCPrestKT::CallShowAnagMod, [&] { ++n; });
  first->ShowAnagMod();  // the old relay is no longer heard
  EXPECT_EQ(n, 0);
  gOcxEventS->ShowAnagMod();
  EXPECT_EQ(n, 1);
}
