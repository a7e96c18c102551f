// The component: order of start, properties, DBConn, and the register on its surface.
#include <gtest/gtest.h>

#include <QFile>

#include <QComboBox>
#include <QLineEdit>
#include <QProcess>
#include <QSignalSpy>

#include "OCPrestKT.h"
#include "ProcedureUi.h"
#include "TestSupport.h"

using namespace prestkt;
using namespace prestkt::test;

namespace {

void Registro(TestDb& t) {
  t.Exec("INSERT INTO AnagTipo (TAnag, Descrizione) VALUES (1, 'Clienti'), (2, 'Fornitori'), (10, 'Dipendenti')");
  t.Exec("INSERT INTO Anagrafica (TAnag, CAnag, RagSoc1, Eliminato) VALUES (1, 1, 'Officina Rossi', 0), "
         "(1, 2, 'Carrozzeria Bianchi', 0), (1, 3, 'Cliente cancellato', -1), (2, 1, 'Zincatura Lombarda', 0)");
  t.Exec("INSERT INTO ProjectsTipo (CPrjTipo, DPrjTipo, GestForfSempl) VALUES (1, 'Stampo', 0), (2, 'Forfait', -1)");
  t.Exec("INSERT INTO Projects (CProject, DProject, CPrjTipo, TAnag, CAnag, DtIni, Stato, Annot) VALUES "
         "(202500001, 'Stampo pompa', 1, 1, 1, '2025-01-10 00:00:00', 0, 'nota'), "
         "(202500002, 'Coperchio', 1, 1, 2, '2025-02-10 00:00:00', 0, NULL), "
         "(202500003, 'Staffa forfait', 2, 1, 1, '2025-03-10 00:00:00', 0, NULL), "
         "(202500004, 'Chiuso', 1, 1, 2, '2025-04-10 00:00:00', 9, NULL)");
}

struct Started {
  explicit Started(TestDb& t, int initialTAnag = 1, int status = -1) {
    ctl.Initialize();
    ctl.SetDtIni(D(2025, 1, 1));
    ctl.SetDTEnd(D(2025, 12, 31));
    ctl.SetStatus(status);
    ctl.DBConn(t.db, 1, QIcon(), t.Path() + "/docs", initialTAnag);
  }
  template <class T>
  T* Find(const char* name) {
    return ctl.findChild<T*>(QString::fromLatin1(name));
  }
  OCPrestKT ctl;
};

}  // namespace

TEST(OCPrestKT, InitializeFindsTheTemporaryFolder) {
  TestDb t;
  qputenv("TEMP", (t.Path() + "/tmp-a").toLocal8Bit());
  OCPrestKT c;
  gCProject = 5;
  c.Initialize();
  EXPECT_EQ(gPathTemp, t.Path() + "/tmp-a");
  EXPECT_TRUE(QFileInfo(gPathTemp).isDir());
  EXPECT_EQ(gCProject, 0);
  EXPECT_TRUE(t.LogLines("OCPrestKT", "Initialize").isEmpty());
  // Neither TEMP nor TMP: the last resort, whose odd name is kept; the failed reads are logged.
  const QByteArray tmp = qgetenv("TMP");
  qunsetenv("TEMP");
  qunsetenv("TMP");
  c.Initialize();
  EXPECT_EQ(gPathTemp, QDir::tempPath() + "/temp 'ok");
  EXPECT_TRUE(QFileInfo(gPathTemp).isDir());
  EXPECT_EQ(t.LogLines("OCPrestKT", "Initialize").size(), 3);
  if (!tmp.isEmpty()) qputenv("TMP", tmp);
}

TEST(OCPrestKT, DBConnWithoutMagnifyLogsOneLine) {
  TestDb t;
  Registro(t);
  Started s(t);
  EXPECT_EQ(gMagnify, 0);
  const QStringList lines = t.LogLines("OCPrestKT", "DBConn");
  ASSERT_EQ(lines.size(), 1);
  EXPECT_TRUE(lines.at(0).contains(" - DBConn: Type mismatch (13)")) << lines.at(0).toStdString();
  EXPECT_EQ(gPathDB, t.db->PathDB());
  EXPECT_EQ(gNomeDB, t.db->Name());
  EXPECT_EQ(gPathDocs, t.Path() + "/docs");
  EXPECT_EQ(gPathLogo, t.db->PathDB() + "logo.bmp");
  EXPECT_TRUE(gOcxEventS);
  EXPECT_EQ(s.ctl.OcxEventS(), gOcxEventS);
  // The log's room for a full disk is set aside at the connection.
  EXPECT_EQ(QFileInfo(t.db->PathDB() + "ErrLogs/.riserva").size(), kRiservaLog);
}

TEST(OCPrestKT, DBConnReadsMagnify) {
  TestDb t;
  Registro(t);
  gPathDB = t.db->PathDB();
  gCurUtente = 1;
  ScriviConfig(true, "Magnify", "18");
  Started s(t);
  EXPECT_EQ(gMagnify, 18);
  EXPECT_TRUE(t.LogLines("OCPrestKT", "DBConn").isEmpty());
  EXPECT_EQ(s.Find<QComboBox>("CBTAnag")->font().family(), "Verdana");
}

TEST(OCPrestKT, InitialTypeZeroLeavesThePartyTypeEmpty) {
  TestDb t;
  Registro(t);
  Started s(t, 0);
  auto* tipo = s.Find<QComboBox>("CBTAnag");
  auto* anag = s.Find<QComboBox>("CBCAnag");
  EXPECT_EQ(tipo->count(), 0);
  EXPECT_EQ(tipo->currentIndex(), -1);
  EXPECT_EQ(GetCBValue(tipo), 0);
  // No type was chosen, so the parties were never asked for.
  EXPECT_EQ(anag->count(), 0);
  EXPECT_EQ(gTAnag, 0);
  // The whole register shows.
  EXPECT_EQ(s.Find<ListView>("ListView1")->Count(), 4);
}

TEST(OCPrestKT, InitialTypeFillsTheParties) {
  TestDb t;
  Registro(t);
  Started s(t, 1);
  auto* tipo = s.Find<QComboBox>("CBTAnag");
  auto* anag = s.Find<QComboBox>("CBCAnag");
  ASSERT_EQ(tipo->count(), 1);
  EXPECT_EQ(tipo->currentText(), "Clienti");
  EXPECT_EQ(gTAnag, 1);
  // Deleted parties are left out; the first entry means none.
  ASSERT_EQ(anag->count(), 3);
  EXPECT_EQ(anag->itemText(0), "{scegli anagrafica}");
  EXPECT_EQ(anag->itemText(1), "Carrozzeria Bianchi");
  EXPECT_TRUE(anag->isEnabled());
  EXPECT_EQ(GetCBValue(anag), 0);
  auto* tipi = s.Find<QComboBox>("CBTipoPrj");
  ASSERT_EQ(tipi->count(), 3);
  EXPECT_EQ(tipi->itemText(0), "{tutte}");
  EXPECT_EQ(GetCBValue(tipi), 0);
}

TEST(OCPrestKT, PropertiesTellTheHostByName) {
  TestDb t;
  Registro(t);
  gDB.reset();  // as before DBConn
  OCPrestKT c;
  QSignalSpy spy(&c, &OCPrestKT::PropertyChanged);
  c.Initialize();
  c.SetDtIni(D(2025, 1, 1));
  c.SetDTEnd(D(2025, 12, 31));
  c.SetStatus(0);
  c.SetCProject(7);
  c.SetMagnifyScreen(true);
  c.SetOnlyPrest(true);
  QStringList names;
  for (const auto& a : spy) names << a.at(0).toString();
  EXPECT_EQ(names, QStringList({"DtIni", "DtEnd", "Status", "CProject", "OnlyPrest"}));
  EXPECT_TRUE(c.MagnifyScreen());
  EXPECT_EQ(c.CProject(), 7);
  // Before DBConn the loaders end at once.
  EXPECT_FALSE(gRcsProjects);
}

TEST(OCPrestKT, RegisterShowsTheModelsOfThePeriod) {
  TestDb t;
  Registro(t);
  Started s(t);
  auto* list = s.Find<ListView>("ListView1");
  ASSERT_EQ(list->ColumnCount(), 7);
  EXPECT_EQ(list->ColumnText(1), "Codice");
  EXPECT_EQ(list->ColumnWidth(0), 270);
  EXPECT_EQ(list->ColumnWidth(1), 1200);
  ASSERT_EQ(list->Count(), 4);
  // Newest code first.
  EXPECT_EQ(list->Key(0), "K202500004");
  EXPECT_EQ(list->Text(3, 1), "2025-00001");
  EXPECT_EQ(list->Text(3, 2), "10/01/2025");
  EXPECT_EQ(list->Text(3, 3), "Officina Rossi");
  EXPECT_EQ(list->Text(3, 4), "Stampo pompa");
  EXPECT_EQ(list->Text(3, 5), "Stampo");
  EXPECT_EQ(list->Text(3, 6), "nota");
  EXPECT_EQ(list->Text(2, 6), " ");  // an empty value shows one blank
  EXPECT_TRUE(list->Checkboxes());
}

TEST(OCPrestKT, EndAtZeroKeepsTheRegisterEmpty) {
  TestDb t;
  Registro(t);
  OCPrestKT c;
  c.Initialize();
  c.SetDtIni(D(2025, 1, 1));
  c.SetStatus(-1);
  const int before = t.db->StatementCount();
  c.DBConn(t.db, 1, QIcon(), t.Path(), 1);
  EXPECT_FALSE(gRcsProjects);
  EXPECT_EQ(c.findChild<ListView*>("ListView1")->Count(), 0);
  // The combos ran their queries; the register none.
  RecordsetPtr none;
  EXPECT_GT(t.db->StatementCount(), before);
}

TEST(OCPrestKT, StatusSelectsTheStates) {
  TestDb t;
  Registro(t);
  t.Exec("UPDATE Projects SET Stato=10 WHERE CProject=202500002");
  Started s(t, 1, 10);
  auto* list = s.Find<ListView>("ListView1");
  ASSERT_EQ(list->Count(), 1);
  EXPECT_EQ(list->Key(0), "K202500002");
  s.ctl.SetStatus(9);
  EXPECT_EQ(list->Count(), 2);
  s.ctl.SetStatus(-1);
  EXPECT_EQ(list->Count(), 4);
  s.ctl.SetStatus(0);
  EXPECT_EQ(list->Count(), 2);
}

TEST(OCPrestKT, FindWithAnApostropheIsLoggedAndShowsAll) {
  TestDb t;
  Registro(t);
  Started s(t);
  auto* list = s.Find<ListView>("ListView1");
  auto* find = s.Find<QLineEdit>("TBFind");
  find->setText("pompa");
  ASSERT_EQ(list->Count(), 1);
  EXPECT_EQ(list->Key(0), "K202500001");
  find->setText("l'anello");
  EXPECT_EQ(list->Count(), 4);
  const QStringList lines = t.LogLines("OCPrestKT", "CaricaList");
  ASSERT_EQ(lines.size(), 1);
  EXPECT_TRUE(lines.at(0).endsWith("(3001)")) << lines.at(0).toStdString();
}

// Brackets pasted by the hundred thousand into the search field: inside the
// text they are text, and after an apostrophe they are a filter nested too
// deep, refused as any invalid filter.
TEST(OCPrestKT, FindWithAHundredThousandBracketsIsAnInvalidFilter) {
  TestDb t;
  Registro(t);
  Started s(t);
  auto* list = s.Find<ListView>("ListView1");
  auto* find = s.Find<QLineEdit>("TBFind");
  find->setText(QString(100000, '('));
  EXPECT_EQ(find->text().size(), 32767);  // what the field takes
  EXPECT_EQ(list->Count(), 0);            // no model's name holds them
  find->setText("x' OR " + QString(32000, '(') + "DProject='");
  EXPECT_EQ(list->Count(), 4);
  const QStringList lines = t.LogLines("OCPrestKT", "CaricaList");
  ASSERT_EQ(lines.size(), 1);
  EXPECT_TRUE(lines.at(0).endsWith("(3001)")) << lines.at(0).left(300).toStdString();
}

TEST(OCPrestKT, PartyAndTypeFilter) {
  TestDb t;
  Registro(t);
  Started s(t);
  auto* list = s.Find<ListView>("ListView1");
  auto* anag = s.Find<QComboBox>("CBCAnag");
  SetCBValue(anag, 2, 0);
  EXPECT_EQ(gCAnag, 2);
  EXPECT_EQ(list->Count(), 2);
  SetCBValue(anag, 0, 0);
  EXPECT_EQ(list->Count(), 4);
  SetCBValue(s.Find<QComboBox>("CBTipoPrj"), 2, 0);
  ASSERT_EQ(list->Count(), 1);
  EXPECT_EQ(list->Key(0), "K202500003");
}

// A host that ends without destroying the component or closing anything ends
// cleanly all the same, also when it keeps the database to the very end.
TEST(OCPrestKT, HostThatForgetsToCloseEndsCleanly) {
  QTemporaryDir dir;
  for (const char* modo : {"", "tiene"}) {
    QProcess p;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert("QT_QPA_PLATFORM", "offscreen");
    p.setProcessEnvironment(env);
    p.start(QStringLiteral(OSPITE_DISTRATTO), {dir.path() + "/vorn.db", QString::fromLatin1(modo)});
    ASSERT_TRUE(p.waitForFinished(60000));
    EXPECT_EQ(p.exitStatus(), QProcess::NormalExit) << modo << p.readAllStandardError().toStdString();
    EXPECT_EQ(p.exitCode(), 0) << modo;
  }
}

// PreparaDati reads the models checked in the register; the document bridge
// hands the host's numbers to the document helpers.
TEST(OCPrestKT, PreparaDatiTakesTheCheckedModelsAndTheBridgeSavesTheLinks) {
  TestDb t;
  Registro(t);
  t.Exec("INSERT INTO ProjectsDispTipo (CPrjDispTipo, DPrjDispTipo) VALUES (1, 'Oraria')");
  t.Exec("INSERT INTO ProjectsDisp (CProject, CDisp, DDisp, CPrjDispTipo, Data, Qta, CStato) VALUES "
         "(202500001, 1, 'Prima', 1, '2025-01-11 00:00:00', 1, 0), (202500002, 1, 'Altra', 1, '2025-02-11 00:00:00', 1, 0)");
  t.Exec("INSERT INTO ActivitiesProd (CAttivita, CProject, CDisp, DtIni, DtEnd) VALUES "
         "(202500001, 202500001, 1, '2025-02-03 08:00:00', '2025-02-03 08:45:00'), "
         "(202500002, 202500002, 1, '2025-02-12 08:00:00', '2025-02-12 09:00:00')");
  Started s(t);
  auto* list = s.Find<ListView>("ListView1");
  ASSERT_TRUE(list);
  EXPECT_EQ(s.ctl.PreparaDati()->RecordCount(), 0);  // nothing checked
  for (int i = 0; i < list->Count(); ++i) list->SetChecked(i, list->Key(i) == "K202500002");
  RecordsetPtr rs = s.ctl.PreparaDati();
  ASSERT_EQ(rs->RecordCount(), 1);
  EXPECT_EQ(rs->Value("CProject").toInt(), 202500002);
  EXPECT_EQ(rs->Value("Tempo").toString(), "01:00:00");

  RecordsetPtr d, fd, fdd;
  int causale = -1;
  s.ctl.IniTabDoc(d, fd, fdd, causale, 5, 0, true);
  ASSERT_TRUE(d && fd && fdd);
  EXPECT_EQ(d->RecordCount(), 2);
  EXPECT_EQ(causale, 0);
  fd->AddNew();
  fd->SetValue("Scheda", 0);
  fd->SetValue("Riga", 1);
  fd->SetValue("RigaD", 1);
  fd->SetValue("CProject", 202500001);
  fd->SetValue("CDisp", 1);
  fd->Update();
  s.ctl.SaveDataDoc(5, 31, fd, fdd);
  EXPECT_EQ(t.Elenco("SELECT TipoDoc & '/' & NDoc & '/' & CProject FROM ProjectsDocDett"), "5/31/202500001");
}

// The report and the export of the checked models' time: with none checked,
// "Nessun record trovato" and nothing more; with one, its file is written.
TEST(OCPrestKT, RepAndExpPrestazioniTakeTheCheckedModels) {
  TestDb t;
  Registro(t);
  t.Exec("INSERT INTO ProjectsDispTipo (CPrjDispTipo, DPrjDispTipo) VALUES (1, 'Oraria')");
  t.Exec("INSERT INTO ProjectsDisp (CProject, CDisp, DDisp, CPrjDispTipo, Data, Qta, CStato) VALUES "
         "(202500002, 1, 'Altra', 1, '2025-02-11 00:00:00', 1, 0)");
  t.Exec("INSERT INTO ActivitiesProd (CAttivita, CProject, CDisp, DtIni, DtEnd) VALUES "
         "(202500002, 202500002, 1, '2025-02-12 08:00:00', '2025-02-12 09:15:00')");
  Started s(t);
  auto* list = s.Find<ListView>("ListView1");
  ASSERT_TRUE(list);
  s.ctl.RepPrestazioni();
  EXPECT_EQ(t.messages->asked.back().prompt, "Nessun record trovato");
  EXPECT_EQ(t.messages->asked.back().buttons, 48);
  s.ctl.ExpPrestazioni();
  EXPECT_EQ(t.messages->asked.back().prompt, "Nessun record trovato");
  EXPECT_TRUE(t.messages->filtri.empty());  // no file was asked for

  list->SetChecked(list->Row("K202500002"), true);
  const QString file = t.Path() + "/prestazioni.csv";
  t.messages->files.push_back(file);
  s.ctl.ExpPrestazioni();
  QFile f(file);
  ASSERT_TRUE(f.open(QIODevice::ReadOnly));
  const QString testo = QString::fromLatin1(f.readAll());
  EXPECT_TRUE(testo.contains("\"Tempo\"")) << testo.toStdString();
  EXPECT_TRUE(testo.contains("01:15:00")) << testo.toStdString();
  EXPECT_TRUE(s.ctl.window()->isEnabled());
}
