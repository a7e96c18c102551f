// "Aggiunta riga da progetto" / "Modifica riga da progetto": a line of a host
// document tied to a disposition, written only into the document's recordsets.
#include <gtest/gtest.h>

#include <QApplication>
#include <QTest>
#include <QTimer>

#include "ModDoc.h"
#include "ModListViewKT.h"
#include "OCPrestKT.h"
#include "ProcedureUi.h"
#include "TestSupport.h"
#include "frmDispAttive.h"
#include "frmGestOrdFornImm.h"

using namespace prestkt;
using namespace prestkt::test;

namespace {

void Officina(TestDb& t) {
  t.Exec("INSERT INTO Anagrafica (TAnag, CAnag, RagSoc1) VALUES (1, 1, 'Officina Rossi'), (1, 2, 'Carrozzeria Bianchi')");
  t.Exec("INSERT INTO ProjectsTipo (CPrjTipo, DPrjTipo) VALUES (1, 'Stampo')");
  t.Exec("INSERT INTO ProjectsDispTipo (CPrjDispTipo, DPrjDispTipo, TipoFatt) VALUES (2, 'A pezzo', 2)");
  t.Exec("INSERT INTO TabGen (CTipTabGen, CTabGen, DTabGen, Bool3, Num1) VALUES "
         "(12, 1, 'Tornitura', 0, 0), (12, 2, 'Saldatura', 0, 0), (12, 5, 'Zincatura', 0, 0), "
         "(1, 7, 'C/Lavorazione', 0, 0), (1, 3, 'Vendita', 0, 0), "
         "(4, 22, 'Iva 22%', 0, 22), (4, 10, 'Iva 10%', 0, 10)");
  t.Exec("INSERT INTO ProjectsDisp2Prest (CPrjDispTipo, CPrestazione) VALUES (2, 1), (2, 2), (2, 5)");
  t.Exec("INSERT INTO Projects (CProject, DProject, CPrjTipo, TAnag, CAnag, DtIni, Stato) VALUES "
         "(202500001, 'Stampo pompa', 1, 1, 1, '2025-01-10 00:00:00', 0), "
         "(202500002, 'Coperchio', 1, 1, 2, '2025-02-10 00:00:00', 0)");
  t.Exec("INSERT INTO ProjectsDisp (CProject, CDisp, DDisp, CPrjDispTipo, Data, Qta, CStato) VALUES "
         "(202500001, 1, 'Serie', 2, '2025-01-11 00:00:00', 1200, 0), "
         "(202500002, 1, 'Lotto', 2, '2025-02-11 00:00:00', 300, 0)");
  // Disposition 202500001/1 registered Saldatura; the other registered nothing.
  t.Exec("INSERT INTO ProjectsDispDett (CProject, CDisp, CPrestazione) VALUES (202500001, 1, 2)");
  gOcxEventS = OCPrestKTClassPtr(std::make_shared<OCPrestKTClass>());
}

// The line screen on a document's recordsets, as the control opens it.
struct Riga {
  Riga(TestDb& t, int modo, bool ddt, int tipoDoc = 12, int nDoc = 100, int rigaD = 0) {
    int causale = 0;
    IniTab4Doc(d, fd, fdd, causale, tipoDoc, nDoc, false);
    f.rcsD = d;
    f.rcsFD = fd;
    f.rcsFDD = fdd;
    f.vMode = modo;
    f.ForDDT = ddt;
    if (ddt) {
      f.vTAnagD = 1;
      f.vCAnagD = 1;
    } else if (modo == 2) {
      f.vCCaus = causale;
    }
    f.vRigaD = rigaD;
    QObject::connect(gOcxEventS.get(), &OCPrestKTClass::SendDataDocEvent,
                     [this](RecordsetPtr&, RecordsetPtr&, int& r, int& m) { inviate << QString("%1/%2").arg(r).arg(m); });
    f.Form_Load();
    f.show();
    Q_UNUSED(t);
  }
  void Spunta(const QString& chiave) { f.lvwPrest->SetChecked(f.lvwPrest->IndexOfKey(chiave), true); }
  RecordsetPtr d, fd, fdd;
  frmGestOrdFornImm f;
  QStringList inviate;
};

QStringList Richieste(TestDb& t) {
  QStringList p;
  for (const Asked& a : t.messages->asked) p << a.prompt;
  return p;
}

}  // namespace

TEST(frmGestOrdFornImm, NewLineOfAnOrderWrittenIntoTheDocumentsRecordsets) {
  TestDb t;
  Officina(t);
  Riga r(t, 2, false);
  EXPECT_EQ(r.f.windowTitle(), "Aggiunta riga da progetto");
  EXPECT_FALSE(r.f.OCFrame2->isEnabled());
  EXPECT_FALSE(r.f.OCFrame3->isEnabled());
  EXPECT_TRUE(r.f.OCFrame4->isEnabled());
  EXPECT_EQ(r.f.CBCaus->currentText(), "C/Lavorazione");  // the default reason
  EXPECT_EQ(r.f.CBIva->currentText(), "Iva 10%");        // a new line always has a VAT code
  ASSERT_TRUE(r.f.CaricaDati(202500001, 1));
  EXPECT_EQ(r.f.TBAnag->text(), "Officina Rossi");
  EXPECT_EQ(r.f.TBDProject->text(), "Stampo pompa (Stampo)");
  EXPECT_EQ(r.f.TBDDisp->text(), "A pezzo");
  EXPECT_EQ(r.f.OCQtaOrd->Value(), 1200);
  EXPECT_EQ(r.f.TBDArt->text(), "A pezzo: Stampo pompa (Stampo)");
  ASSERT_EQ(r.f.lvwPrest->Count(), 3);  // the kinds of the type, by name, none checked
  EXPECT_EQ(r.f.lvwPrest->Text(0, 0), "Saldatura");
  EXPECT_EQ(r.f.lvwPrest->Key(0), "K002");
  for (int i = 0; i < 3; ++i) EXPECT_FALSE(r.f.lvwPrest->Checked(i));
  r.Spunta("K002");
  r.Spunta("K005");
  r.f.OCQta->SetValue(500);
  r.f.OCImporto->SetValue(1.25);
  r.f.TBDArt->setText("  Zincatura a caldo  ");
  ASSERT_TRUE(r.f.Salva());
  EXPECT_EQ(r.f.vRigaD, 1);  // the first line of a new document
  EXPECT_EQ(r.inviate, QStringList({"1/2"}));
  r.fd->SetFilter("RigaD=1");
  ASSERT_EQ(r.fd->RecordCount(), 1);
  EXPECT_EQ(r.fd->Value("CProject").toInt(), 202500001);
  EXPECT_EQ(r.fd->Value("CDisp").toInt(), 1);
  EXPECT_EQ(r.fd->Value("CodTesto").toString(), ">");
  EXPECT_EQ(r.fd->Value("CodForn").toString(), ">");
  EXPECT_EQ(r.fd->Value("Ctipo").toInt(), 0);
  EXPECT_EQ(r.fd->Value("DArt").toString(), "  Zincatura a caldo  ");  // as typed
  EXPECT_EQ(r.fd->Value("NotaArt").toString(), "Saldatura + Zincatura");
  EXPECT_EQ(r.fd->Value("Qta").toDouble(), 500);
  EXPECT_EQ(r.fd->Value("Importo").toDouble(), 1.25);
  EXPECT_EQ(r.fd->Value("CCaus").toInt(), 7);
  EXPECT_EQ(r.fd->Value("CIVA").toInt(), 10);
  r.fdd->SetFilter("RigaD=1");
  ASSERT_EQ(r.fdd->RecordCount(), 2);
  EXPECT_EQ(r.fdd->Value("SubRiga").toInt(), 1);
  EXPECT_EQ(r.fdd->Value("CPrestazione").toInt(), 2);
  // Nothing reached the tables.
  EXPECT_EQ(t.Scalar("SELECT Count(*) FROM ProjectsDocDett").toInt(), 0);
  EXPECT_TRUE(t.messages->asked.empty());
}

// With nothing chosen: saving, and the price button, each with its message;
// on a delivery note with no quantity the quantity comes first.
TEST(frmGestOrdFornImm, NothingChosenStopsSavingAndThePrice) {
  TestDb t;
  Officina(t);
  {
    Riga r(t, 2, false);
    EXPECT_FALSE(r.f.Salva());
    r.f.Command1->click();
    EXPECT_EQ(Richieste(t), QStringList({"Scegli un modello/disposizione per proseguire!", "Scegli un progetto prima!"}));
    // No title of their own: the program's.
    EXPECT_EQ(t.messages->asked[0].buttons, vbExclamation);
    EXPECT_EQ(t.messages->asked[0].title, "OCPrestKT");
  }
  t.messages->asked.clear();
  Riga r(t, 2, true);
  r.f.Command1->click();
  EXPECT_EQ(Richieste(t), QStringList({"Digita la quantità da evadere!"}));
  r.f.OCQta->SetValue(3);
  r.f.Command1->click();
  EXPECT_EQ(Richieste(t).last(), "Scegli un progetto prima!");
  EXPECT_TRUE(r.inviate.isEmpty());
}

// The checks in their fixed order: kinds, description, reason, quantity.
TEST(frmGestOrdFornImm, ChecksInTheirOrder) {
  TestDb t;
  Officina(t);
  Riga r(t, 2, false);
  ASSERT_TRUE(r.f.CaricaDati(202500001, 1));
  r.f.TBDArt->setText("   ");
  r.f.vCCaus = 0;
  r.f.OCQta->SetValue(0);
  EXPECT_FALSE(r.f.Salva());
  r.Spunta("K001");
  EXPECT_FALSE(r.f.Salva());
  r.f.TBDArt->setText("Tornitura");
  EXPECT_FALSE(r.f.Salva());
  SetCBValue(r.f.CBCaus, 3, 0);
  EXPECT_EQ(r.f.vCCaus, 3);
  EXPECT_FALSE(r.f.Salva());
  r.f.OCQta->SetValue(1);
  EXPECT_TRUE(r.f.Salva());
  EXPECT_EQ(Richieste(t), QStringList({"Devi selezionare almeno una prestazione!",
                                       "Devi specificare la descrizione in documento!", "Devi specificare la causale!",
                                       "Devi digitare la quantità!"}));
  for (const Asked& a : t.messages->asked) EXPECT_EQ(a.buttons, vbOKOnly);
}

// A disposition the document already uses stands twice in the offered rows:
// the count isn't one, the warning names it, and the screen shows nothing of it.
TEST(frmGestOrdFornImm, DispositionTheDocumentUsesStandsTwiceAndIsNotFound) {
  TestDb t;
  Officina(t);
  t.Exec("INSERT INTO ProjectsDocDett (TipoDoc, NDoc, Scheda, Riga, RigaD, CProject, CDisp, Qta) VALUES "
         "(12, 100, 0, 1, 1, 202500001, 1, 10)");
  Riga r(t, 2, false);
  EXPECT_FALSE(r.f.CaricaDati(202500001, 1));
  EXPECT_EQ(Richieste(t), QStringList({"ATTENZIONE: Non ho trovato la disposizione (Project:202500001 AND CDisp=1)"}));
  EXPECT_EQ(t.messages->asked[0].buttons, vbOKOnly);
  EXPECT_EQ(r.f.CProject, 0);
  EXPECT_EQ(r.f.TBAnag->text(), "");
  EXPECT_EQ(r.f.lvwPrest->Count(), 0);
  // Another one loads, and a failed lookup after it keeps it.
  ASSERT_TRUE(r.f.CaricaDati(202500002, 1));
  EXPECT_FALSE(r.f.CaricaDati(202500001, 1));
  EXPECT_EQ(r.f.CProject, 202500002);
  EXPECT_EQ(r.f.TBAnag->text(), "Carrozzeria Bianchi");
}

// Numbers of new lines: the highest plus one; a gap stays unless it was the highest.
TEST(frmGestOrdFornImm, NewLinesTakeTheHighestNumberPlusOne) {
  TestDb t;
  Officina(t);
  Riga r(t, 2, false);
  const auto nuova = [&] {
    ASSERT_TRUE(r.f.CaricaDati(202500002, 1));
    r.Spunta("K001");
    r.f.OCQta->SetValue(1);
    ASSERT_TRUE(r.f.Salva());
  };
  for (int i = 0; i < 3; ++i) nuova();
  EXPECT_EQ(r.f.vRigaD, 3);
  const auto togli = [&](int riga) {
    r.fd->SetFilter(QString("RigaD=%1").arg(riga));
    r.fd->Delete();
    r.fd->SetFilter(QString());
  };
  togli(2);
  nuova();
  EXPECT_EQ(r.f.vRigaD, 4);  // the gap of 2 stays
  togli(4);
  nuova();
  EXPECT_EQ(r.f.vRigaD, 4);  // the highest is given again
}

// A delivery note: the kinds really registered come checked and can't be
// changed; with none registered nothing can be saved.
TEST(frmGestOrdFornImm, DeliveryNoteTakesTheRegisteredKinds) {
  TestDb t;
  Officina(t);
  {
    Riga r(t, 2, true);
    EXPECT_FALSE(r.f.OCFrame4->isEnabled());
    ASSERT_TRUE(r.f.CaricaDati(202500001, 1));
    ASSERT_EQ(r.f.lvwPrest->Count(), 3);
    EXPECT_TRUE(r.f.lvwPrest->Checked(r.f.lvwPrest->IndexOfKey("K002")));
    EXPECT_FALSE(r.f.lvwPrest->Checked(r.f.lvwPrest->IndexOfKey("K001")));
  }
  Riga r(t, 2, true);
  ASSERT_TRUE(r.f.CaricaDati(202500002, 1));
  for (int i = 0; i < r.f.lvwPrest->Count(); ++i) EXPECT_FALSE(r.f.lvwPrest->Checked(i));
  r.f.OCQta->SetValue(5);
  EXPECT_FALSE(r.f.Salva());
  EXPECT_EQ(Richieste(t), QStringList({"Devi selezionare almeno una prestazione!"}));
}

// Editing a line added earlier in the session: its values come back, and a
// kind its type no longer has fails its lookup, is logged, and is gone once the
// line is saved.
TEST(frmGestOrdFornImm, EditingALineThatLostAKind) {
  TestDb t;
  Officina(t);
  Riga a(t, 2, false, 12, 0);
  a.fd->AddNew();
  for (const auto& [campo, valore] : std::vector<std::pair<QString, QVariant>>{
           {"RigaD", 2}, {"CProject", 202500002}, {"CDisp", 1}, {"DArt", "Lotto zincato"}, {"Qta", 40.0},
           {"CCaus", 3}, {"Importo", 2.5}, {"CIVA", 22}})
    a.fd->SetValue(campo, valore);
  a.fd->Update();
  for (const auto& [sub, prest] : std::vector<std::pair<int, int>>{{1, 5}, {2, 9}}) {
    a.fdd->AddNew();
    a.fdd->SetValue("RigaD", 2);
    a.fdd->SetValue("SubRiga", sub);
    a.fdd->SetValue("CPrestazione", prest);
    a.fdd->Update();
  }
  frmGestOrdFornImm f;
  f.rcsD = a.d;
  f.rcsFD = a.fd;
  f.rcsFDD = a.fdd;
  f.vMode = 1;
  f.vRigaD = 2;
  QStringList inviate;
  QObject::connect(gOcxEventS.get(), &OCPrestKTClass::SendDataDocEvent,
                   [&](RecordsetPtr&, RecordsetPtr&, int& r, int& m) { inviate << QString("%1/%2").arg(r).arg(m); });
  f.Form_Load();
  EXPECT_EQ(f.windowTitle(), "Modifica riga da progetto");
  EXPECT_EQ(f.CProject, 202500002);
  EXPECT_EQ(f.TBDArt->text(), "Lotto zincato");  // over the default description
  EXPECT_EQ(f.OCQta->Value(), 40);
  EXPECT_EQ(f.OCImporto->Value(), 2.5);
  EXPECT_EQ(f.CBCaus->currentText(), "Vendita");
  EXPECT_EQ(f.CBIva->currentText(), "Iva 22%");
  ASSERT_GE(f.lvwPrest->IndexOfKey("K005"), 0);
  EXPECT_TRUE(f.lvwPrest->Checked(f.lvwPrest->IndexOfKey("K005")));
  EXPECT_EQ(t.LogLines("frmGestOrdFornImm", "IniVideo").size(), 1);  // kind 9 is not in the list
  ASSERT_TRUE(f.Salva());
  EXPECT_EQ(inviate, QStringList({"2/1"}));
  a.fdd->SetFilter("RigaD=2");
  ASSERT_EQ(a.fdd->RecordCount(), 1);
  EXPECT_EQ(a.fdd->Value("CPrestazione").toInt(), 5);
  a.fd->SetFilter(QString());
  EXPECT_EQ(a.fd->RecordCount(), 1);  // changed, not added
}

// A line of the document as saved, on an open disposition: the offered rows
// hold that disposition twice, so the edit finds it not and the screen stays empty.
TEST(frmGestOrdFornImm, EditingASavedLineMeetsTheDoubledDisposition) {
  TestDb t;
  Officina(t);
  t.Exec("INSERT INTO ProjectsDocDett (TipoDoc, NDoc, Scheda, Riga, RigaD, CProject, CDisp, DArt, Qta, CCaus) VALUES "
         "(12, 100, 0, 1, 2, 202500002, 1, 'Lotto zincato', 40, 3)");
  Riga r(t, 1, false, 12, 100, 2);
  EXPECT_EQ(Richieste(t), QStringList({"ATTENZIONE: Non ho trovato la disposizione (Project:202500002 AND CDisp=1)"}));
  EXPECT_EQ(r.f.CProject, 0);
  EXPECT_EQ(r.f.TBAnag->text(), "");
  EXPECT_EQ(r.f.TBDArt->text(), "Lotto zincato");  // the line's own values still come
}

// The picker proposes the whole quantity of the disposition, also when cancelled.
TEST(frmGestOrdFornImm, ThePickerChoosesAndProposesTheWholeQuantity) {
  TestDb t;
  Officina(t);
  Riga r(t, 2, false);
  QTimer::singleShot(0, [] {
    auto* p = qobject_cast<frmDispAttive*>(QApplication::activeModalWidget());
    ASSERT_TRUE(p);
    p->ListView1->SetSelected(p->ListView1->IndexOfKey("K202500001001"));
    p->EseguiComando(1);
  });
  r.f.EseguiAzione(2);
  EXPECT_EQ(r.f.CProject, 202500001);
  EXPECT_EQ(r.f.OCQta->Value(), 1200);
  r.f.OCQta->SetValue(7);
  QTimer::singleShot(0, [] {
    if (auto* p = qobject_cast<frmDispAttive*>(QApplication::activeModalWidget())) p->EseguiComando(0);
  });
  r.f.EseguiAzione(2);
  EXPECT_EQ(r.f.CProject, 202500001);
  EXPECT_EQ(r.f.OCQta->Value(), 1200);
}

// The control opens the screen and the host receives the line through GetDataFromProjects.
TEST(frmGestOrdFornImm, TheControlsLineMethodsReachTheHost) {
  TestDb t;
  Officina(t);
  OCPrestKT ctl;
  ctl.Initialize();
  ctl.DBConn(t.db, 1, QIcon(), t.Path(), 1);
  RecordsetPtr d, fd, fdd;
  int causale = 0;
  ctl.IniTabDoc(d, fd, fdd, causale, 5, 0, true);
  QStringList ricevute;
  QObject::connect(&ctl, &OCPrestKT::GetDataFromProjects,
                   [&](RecordsetPtr&, RecordsetPtr&, int& r, int& m) { ricevute << QString("%1/%2").arg(r).arg(m); });
  QString titolo;
  bool ddt = false;
  QTimer::singleShot(0, [&] {
    auto* f = qobject_cast<frmGestOrdFornImm*>(QApplication::activeModalWidget());
    ASSERT_TRUE(f);
    titolo = f->windowTitle();
    ddt = !f->OCFrame4->isEnabled();
    f->CaricaDati(202500001, 1);
    f->OCQta->SetValue(10);
    SetCBValue(f->CBCaus, 7, 0);
    f->EseguiAzione(1);
    if (f->isVisible()) f->close();
  });
  ctl.AddLineToDDT(nullptr, d, fd, fdd, 1, 1);
  EXPECT_EQ(titolo, "Aggiunta riga da progetto");
  EXPECT_TRUE(ddt);
  EXPECT_EQ(ricevute, QStringList({"1/2"}));
  QTimer::singleShot(0, [&] {
    auto* f = qobject_cast<frmGestOrdFornImm*>(QApplication::activeModalWidget());
    ASSERT_TRUE(f);
    titolo = f->windowTitle();
    f->OCQta->SetValue(12);
    f->EseguiAzione(1);
    if (f->isVisible()) f->close();
  });
  ctl.EditLineToDoc(nullptr, d, fd, fdd, 1);
  EXPECT_EQ(titolo, "Modifica riga da progetto");
  EXPECT_EQ(ricevute, QStringList({"1/2", "1/1"}));
  fd->SetFilter(QString());
  ASSERT_EQ(fd->RecordCount(), 1);
  EXPECT_EQ(fd->Value("Qta").toDouble(), 12);
}

// A host that hands over no recordsets gets a screen that logs and goes on.
TEST(frmGestOrdFornImm, NoRecordsetsFromTheHostAreLoggedNotFatal) {
  TestDb t;
  Officina(t);
  for (const int modo : {2, 1}) {
    frmGestOrdFornImm f;
    f.vMode = modo;
    f.vRigaD = 1;
    f.Form_Load();
    EXPECT_FALSE(f.CaricaDati(202500001, 1));
    f.CProject = 202500001;
    f.lvwPrest->ClearItems();
    ListViewAddLine(f.lvwPrest, {"Tornitura"}, "K001");
    f.lvwPrest->SetChecked(0, true);
    f.TBDArt->setText("Riga");
    f.vCCaus = 7;
    f.OCQta->SetValue(1);
    f.Salva();
    QTimer::singleShot(0, [] {
      if (QWidget* w = QApplication::activeModalWidget()) w->close();
    });
    f.ShowDispAttive();
  }
  EXPECT_FALSE(t.LogLines("frmGestOrdFornImm", "CaricaDati").isEmpty());
  EXPECT_FALSE(t.LogLines("frmGestOrdFornImm", "Salva").isEmpty());
}
