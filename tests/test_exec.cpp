// The activity card, the move of activities to another disposition and the
// information screen of a line of external work.
#include <gtest/gtest.h>

#include <QTest>
#include <QTimer>

#include "ProcedureUi.h"
#include "TestSupport.h"
#include "frmDispInfo.h"
#include "frmExec.h"
#include "frmExecSposta.h"

using namespace prestkt;
using namespace prestkt::test;

namespace {

constexpr int kModello = 202500001;

// A customer's model with one open disposition of the kind "Oraria", the
// operators and the service kinds.
void Base(TestDb& t) {
  t.Exec("INSERT INTO AnagTipo (TAnag, Descrizione) VALUES (1, 'Clienti'), (2, 'Fornitori'), (10, 'Dipendenti')");
  t.Exec("INSERT INTO Anagrafica (TAnag, CAnag, RagSoc1, CostoH, Eliminato) VALUES "
         "(1, 1, 'Officina Rossi', 0, 0), (1, 2, 'Carrozzeria Bianchi', 0, 0), (2, 5, 'Zincatura Sud', 0, 0), "
         "(10, 1, 'Bruno Verdi', 30, 0), (10, 2, 'Anna Neri', 25, 0), (10, 3, 'Carlo Andato', 20, -1)");
  t.Exec("INSERT INTO TabGen (CTipTabGen, CTabGen, DTabGen, Sigla, Bool8) VALUES "
         "(12, 1, 'Tornitura', 'TO', 0), (12, 2, 'Fresatura', 'FR', 0), (12, 3, 'Rettifica', 'RE', 0), "
         "(1, 1, 'Fattura', 'F', -1), (1, 2, 'Reso', 'R', 0)");
  t.Exec("INSERT INTO ProjectsTipo (CPrjTipo, DPrjTipo) VALUES (1, 'Stampo'), (2, 'Attrezzatura')");
  t.Exec("INSERT INTO ProjectsDispTipo (CPrjDispTipo, DPrjDispTipo) VALUES (1, 'Oraria'), (2, 'A pezzo')");
  t.Exec("INSERT INTO ProjectsDisp2Prest (CPrjDispTipo, CPrestazione) VALUES (1, 1), (1, 2), (2, 3)");
  t.Exec("INSERT INTO Projects (CProject, DProject, CPrjTipo, TAnag, CAnag, DtIni, Stato) VALUES "
         "(202500001, 'Stampo pompa', 1, 1, 1, '2025-01-10 00:00:00', 0)");
  t.Exec("INSERT INTO ProjectsDisp (CProject, CDisp, CPrjDispTipo, DDisp, Data, CStato) VALUES "
         "(202500001, 1, 1, 'Attrezzaggio', '2025-01-11 00:00:00', 0)");
}

// The activity card as the disposition card opens it.
struct Carta {
  explicit Carta(int modo, int cAttivita = 0) {
    CaricaDatiModello(kModello);
    f.Modo = modo;
    f.CProject = kModello;
    f.CDisp = 1;
    f.CAttivita = cAttivita;
    f.RagSoc1 = "Officina Rossi";
    f.DProject = "Stampo pompa";
    f.TipoDisp = "Oraria";
    QObject::connect(&f, &frmExec::Reload, [this](int& c) { ricaricate.push_back(c); });
    f.Form_Load();
    f.show();
  }
  // A valid new activity: operator Bruno Verdi, service Tornitura.
  void Compila(const QDate& data, int ore, int minuti) {
    f.DTPicker1->setDate(data);
    SetCBValue(f.CBOperatore, 1, 0);
    SetCBValue(f.CBPrest, 1, 0);
    f.OCOre->SetValue(ore);
    f.OCMinuti->SetValue(minuti);
  }
  frmExec f;
  std::vector<int> ricaricate;
};

int Righe(TestDb& t) { return t.Scalar("SELECT Count(*) FROM ActivitiesProd").toInt(); }

QString Testo(TestDb& t, const QString& campo, int codice) {
  return t.Scalar(QString("SELECT %1 FROM ActivitiesProd WHERE CAttivita=%2").arg(campo).arg(codice)).toString();
}

QDateTime Data(TestDb& t, const QString& campo, int codice) {
  return t.Scalar(QString("SELECT %1 FROM ActivitiesProd WHERE CAttivita=%2").arg(campo).arg(codice)).toDateTime();
}

bool ENull(TestDb& t, const QString& campo, int codice) {
  return t.Scalar(QString("SELECT %1 IS NULL FROM ActivitiesProd WHERE CAttivita=%2").arg(campo).arg(codice)).toInt() ==
         1;
}

QStringList Voci(QComboBox* c) {
  QStringList v;
  for (int i = 0; i < c->count(); ++i) v << c->itemText(i);
  return v;
}

}  // namespace

// ---------------------------------------------------------------- frmExec

TEST(frmExec, NewCardFace) {
  TestDb t;
  Base(t);
  Carta s(2);
  EXPECT_EQ(s.f.objectName(), "frmExec");
  EXPECT_EQ(s.f.windowTitle(), "Scheda esecuzione");
  EXPECT_EQ(s.f.Bottone(1)->toolTip(), "Esci");
  EXPECT_TRUE(s.f.Bottone(2)->isSeparator());
  EXPECT_EQ(s.f.Bottone(3)->toolTip(), "Salva");
  EXPECT_EQ(s.f.mnuF->title(), "&File");
  EXPECT_EQ(s.f.mnuFS->text(), "&Salva");
  EXPECT_EQ(s.f.mnuFE->text(), "&Esci");
  EXPECT_EQ(s.f.TBAnag->text(), "Officina Rossi");
  EXPECT_EQ(s.f.TBDProject->text(), "Stampo pompa");
  EXPECT_EQ(s.f.TBTipoDisp->text(), "Oraria");
  EXPECT_FALSE(s.f.OCFrame2->isEnabled());
  EXPECT_FALSE(s.f.OCFrame3->isEnabled());
  EXPECT_EQ(s.f.NumericSpin1->text(), "0000-00000");
  EXPECT_EQ(s.f.DTPicker1->date(), QDate::currentDate());
  EXPECT_EQ(s.f.DTPicker1->displayFormat(), "dd/MM/yyyy");
  // Operators that are not deleted, by name; the service kinds of the disposition's type.
  EXPECT_EQ(Voci(s.f.CBOperatore), QStringList({"{scegli l'operatore}", "Anna Neri", "Bruno Verdi"}));
  EXPECT_EQ(Voci(s.f.CBPrest), QStringList({"{scegli la prestazione}", "Fresatura", "Tornitura"}));
  EXPECT_EQ(s.f.CBOperatore->currentIndex(), 0);
  EXPECT_EQ(s.f.CBPrest->currentIndex(), 0);
  EXPECT_EQ(s.f.OCOre->Value(), 0);
  EXPECT_EQ(s.f.OCMinuti->Value(), 0);
  EXPECT_EQ(s.f.OCMinuti->minimum(), -60);
  EXPECT_TRUE(s.f.TBAnnot->toPlainText().isEmpty());
  EXPECT_EQ(s.f.Command1->text(), "...");
  EXPECT_EQ(s.f.Command3->text(), "...");
  EXPECT_FALSE(s.f.DaSalvare());
  EXPECT_FALSE(s.f.Bottone(3)->isEnabled());
  EXPECT_FALSE(s.f.mnuFS->isEnabled());
  EXPECT_TRUE(t.LogLines("frmExec", "Form_Load").isEmpty());
}

TEST(frmExec, FirstActivityOfAYearStoredAsASpanFromMidnight) {
  TestDb t;
  Base(t);
  Carta s(2);
  s.Compila(QDate(2026, 3, 2), 2, 30);
  s.f.TBAnnot->setPlainText("Sgrossatura");
  EXPECT_TRUE(s.f.DaSalvare());
  ASSERT_TRUE(s.f.Bottone(3)->isEnabled());
  s.f.Bottone(3)->trigger();
  EXPECT_EQ(s.f.CAttivita, 202600001);
  EXPECT_EQ(Format(s.f.CAttivita, "0000-00000"), "2026-00001");
  EXPECT_EQ(s.f.NumericSpin1->text(), "2026-00001");
  EXPECT_FALSE(s.f.isVisible());  // saving from the toolbar ends the card
  ASSERT_EQ(Righe(t), 1);
  const int c = 202600001;
  EXPECT_EQ(Testo(t, "CProject", c), "202500001");
  EXPECT_EQ(Testo(t, "CDisp", c), "1");
  EXPECT_EQ(Testo(t, "CUtente", c), "1");
  EXPECT_EQ(Testo(t, "CPrestazione", c), "1");
  EXPECT_EQ(Data(t, "DtIni", c), D(2026, 3, 2, 0, 0));
  EXPECT_EQ(Data(t, "DtEnd", c), D(2026, 3, 2, 2, 30));
  EXPECT_EQ(Data(t, "DtRealIni", c), D(2026, 3, 2, 0, 0));
  EXPECT_EQ(Data(t, "DtRealEnd", c), D(2026, 3, 2, 2, 30));
  EXPECT_EQ(Testo(t, "Stato", c), "0");
  EXPECT_EQ(Testo(t, "TDocRif", c), "0");
  EXPECT_EQ(Testo(t, "NDocRif", c), "0");
  EXPECT_EQ(Testo(t, "Annot1", c), "Sgrossatura");
  EXPECT_TRUE(ENull(t, "Annot2", c));
  // The cost is the operator's only in memory: the table keeps its default.
  EXPECT_EQ(Testo(t, "CostoH", c), "0");
  // The card told the disposition, and the activity is in the working copy.
  EXPECT_EQ(s.ricaricate, std::vector<int>({202600001}));
  RecordsetPtr rs = gRcsAct->Clone();
  rs->SetFilter("CAttivita=202600001");
  ASSERT_EQ(rs->RecordCount(), 1);
  EXPECT_EQ(rs->Value("OraIni").toString(), "00:00");
  EXPECT_EQ(rs->Value("OraEnd").toString(), "02:30");
  EXPECT_EQ(rs->Value("DataIni").toString(), "02/03/2026");
  EXPECT_EQ(s.f.Modo, 1);
  EXPECT_FALSE(s.f.DaSalvare());
  EXPECT_TRUE(t.messages->asked.empty());
  EXPECT_TRUE(t.LogLines("frmExec", "Salva").isEmpty());
}

TEST(frmExec, NewActivityOfAnEarlierYearTakesTheNextCodeOfThatYear) {
  TestDb t;
  Base(t);
  t.Exec("INSERT INTO ActivitiesProd (CAttivita, CProject, CDisp, CUtente, CPrestazione, DtIni, DtEnd) VALUES "
         "(202400001, 202500001, 1, 1, 1, '2024-02-01 00:00:00', '2024-02-01 01:00:00'), "
         "(202400002, 202500001, 1, 1, 1, '2024-03-01 00:00:00', '2024-03-01 01:00:00'), "
         "(202400003, 202500001, 1, 1, 1, '2024-04-01 00:00:00', '2024-04-01 01:00:00'), "
         "(202600007, 202500001, 1, 1, 1, '2026-01-01 00:00:00', '2026-01-01 01:00:00')");
  Carta s(2);
  s.Compila(QDate(2024, 11, 5), 1, 0);
  ASSERT_TRUE(s.f.Salva());
  EXPECT_EQ(s.f.CAttivita, 202400004);
  EXPECT_EQ(Data(t, "DtIni", 202400004), D(2024, 11, 5, 0, 0));
  EXPECT_EQ(Data(t, "DtEnd", 202400004), D(2024, 11, 5, 1, 0));
  EXPECT_EQ(Righe(t), 5);
}

TEST(frmExec, ExistingActivityMovedToAnotherYearKeepsItsCode) {
  TestDb t;
  Base(t);
  t.Exec("INSERT INTO ActivitiesProd (CAttivita, CProject, CDisp, CUtente, CPrestazione, DtIni, DtEnd, DtRealIni, "
         "DtRealEnd, CostoH, Stato) VALUES (202400002, 202500001, 1, 2, 2, '2024-03-01 00:00:00', "
         "'2024-03-01 03:15:00', '2024-03-01 00:00:00', '2024-03-01 03:15:00', 0, 0)");
  Carta s(1, 202400002);
  EXPECT_EQ(s.f.NumericSpin1->text(), "2024-00002");
  EXPECT_EQ(s.f.DTPicker1->date(), QDate(2024, 3, 1));
  EXPECT_EQ(s.f.CBOperatore->currentText(), "Anna Neri");
  EXPECT_EQ(s.f.CBPrest->currentText(), "Fresatura");
  EXPECT_EQ(s.f.OCOre->Value(), 3);
  EXPECT_EQ(s.f.OCMinuti->Value(), 15);
  EXPECT_FALSE(s.f.DaSalvare());
  s.f.DTPicker1->setDate(QDate(2026, 1, 15));
  EXPECT_TRUE(s.f.DaSalvare());
  ASSERT_TRUE(s.f.Salva());
  EXPECT_EQ(s.f.CAttivita, 202400002);
  EXPECT_EQ(Righe(t), 1);
  EXPECT_EQ(Data(t, "DtIni", 202400002), D(2026, 1, 15, 0, 0));
  EXPECT_EQ(Data(t, "DtEnd", 202400002), D(2026, 1, 15, 3, 15));
  EXPECT_EQ(Testo(t, "CUtente", 202400002), "2");
  EXPECT_EQ(s.ricaricate, std::vector<int>({202400002}));
  RecordsetPtr rs = gRcsAct->Clone();
  rs->SetFilter("CAttivita=202400002");
  ASSERT_EQ(rs->RecordCount(), 1);
  EXPECT_EQ(rs->Value("DataIni").toString(), "15/01/2026");
}

TEST(frmExec, TimeChecks) {
  TestDb t;
  Base(t);
  {
    Carta s(2);
    s.Compila(QDate(2026, 5, 4), 0, 30);
    EXPECT_TRUE(s.f.Salva());
    EXPECT_EQ(Data(t, "DtEnd", 202600001), D(2026, 5, 4, 0, 30));
  }
  {
    Carta s(2);
    s.Compila(QDate(2026, 5, 4), 1, 0);
    EXPECT_TRUE(s.f.Salva());
    EXPECT_EQ(Data(t, "DtEnd", 202600002), D(2026, 5, 4, 1, 0));
  }
  EXPECT_TRUE(t.messages->asked.empty());
  for (auto [ore, minuti] : {std::pair{1, -60}, std::pair{0, 0}}) {
    Carta s(2);
    s.Compila(QDate(2026, 5, 4), ore, minuti);
    t.messages->asked.clear();
    EXPECT_FALSE(s.f.Salva());
    ASSERT_EQ(t.messages->asked.size(), 1u);
    EXPECT_EQ(t.messages->asked[0].prompt, "Inserisci una tempistica corretta!");
    EXPECT_EQ(t.messages->asked[0].buttons, vbExclamation);
    EXPECT_EQ(s.f.CAttivita, 0);
    EXPECT_EQ(s.f.Modo, 2);
  }
  EXPECT_EQ(Righe(t), 2);
}

TEST(frmExec, OperatorAndServiceChecks) {
  TestDb t;
  Base(t);
  Carta s(2);
  s.f.activateWindow();
  s.f.OCOre->SetValue(1);
  EXPECT_FALSE(s.f.Salva());
  ASSERT_EQ(t.messages->asked.size(), 1u);
  EXPECT_EQ(t.messages->asked[0].prompt, "Scegli l'operatore!");
  EXPECT_EQ(t.messages->asked[0].buttons, vbExclamation);
  SetCBValue(s.f.CBOperatore, 2, 0);
  EXPECT_FALSE(s.f.Salva());
  ASSERT_EQ(t.messages->asked.size(), 2u);
  EXPECT_EQ(t.messages->asked[1].prompt, "Scegli la prestazione!");
  EXPECT_EQ(t.messages->asked[1].buttons, vbExclamation);
  EXPECT_EQ(Righe(t), 0);
  SetCBValue(s.f.CBPrest, 2, 0);
  EXPECT_TRUE(s.f.Salva());
  EXPECT_EQ(Testo(t, "CUtente", 202600001), "2");
  EXPECT_EQ(Testo(t, "CPrestazione", 202600001), "2");
}

TEST(frmExec, NotesSplitOver255Characters) {
  TestDb t;
  Base(t);
  const QString a255 = QString(254, 'a') + 'z';
  {
    Carta s(2);
    s.Compila(QDate(2026, 1, 7), 1, 0);
    s.f.TBAnnot->setPlainText(a255);
    ASSERT_TRUE(s.f.Salva());
    EXPECT_EQ(Testo(t, "Annot1", 202600001), a255);
    EXPECT_TRUE(ENull(t, "Annot2", 202600001));
  }
  {
    Carta s(2);
    s.Compila(QDate(2026, 1, 7), 1, 0);
    s.f.TBAnnot->setPlainText(a255 + "Q");
    ASSERT_TRUE(s.f.Salva());
    EXPECT_EQ(Testo(t, "Annot1", 202600002), a255);
    EXPECT_EQ(Testo(t, "Annot2", 202600002), "Q");
  }
  {
    Carta s(2);
    s.Compila(QDate(2026, 1, 7), 1, 0);
    s.f.TBAnnot->setPlainText("     ");
    ASSERT_TRUE(s.f.Salva());
    EXPECT_TRUE(ENull(t, "Annot1", 202600003));
    EXPECT_TRUE(ENull(t, "Annot2", 202600003));
  }
  // The long note comes back whole on the card.
  Carta s(1, 202600002);
  EXPECT_EQ(s.f.TBAnnot->toPlainText(), a255 + "Q");
}

// The notes take 255 characters in the first field and at most 5000 more in
// the second, whose memory copy holds 5000.
TEST(frmExec, NotesStopAtWhatTheirTwoFieldsHold) {
  TestDb t;
  Base(t);
  Carta s(2);
  s.Compila(QDate(2026, 1, 7), 1, 0);
  const QString testo = QString(255, 'a') + QString(5001, 'b');
  s.f.TBAnnot->setPlainText(testo);
  EXPECT_EQ(s.f.TBAnnot->toPlainText(), testo.left(5255));
  ASSERT_TRUE(s.f.Salva());
  EXPECT_EQ(Testo(t, "Annot1", 202600001), QString(255, 'a'));
  EXPECT_EQ(Testo(t, "Annot2", 202600001), QString(5000, 'b'));
  Carta r(1, 202600001);
  EXPECT_EQ(r.f.TBAnnot->toPlainText(), testo.left(5255));
}

TEST(frmExec, ExistingActivityReadByTheClock) {
  TestDb t;
  Base(t);
  t.Exec("INSERT INTO ActivitiesProd (CAttivita, CProject, CDisp, CUtente, CPrestazione, DtIni, DtEnd, Annot1, Annot2) "
         "VALUES (202500010, 202500001, 1, 1, 1, '2025-06-09 09:50:00', '2025-06-09 10:10:00', 'Prima parte  ', "
         "' seconda')");
  Carta s(1, 202500010);
  EXPECT_EQ(s.f.OCOre->Value(), 1);
  EXPECT_EQ(s.f.OCMinuti->Value(), -40);
  EXPECT_EQ(s.f.OCMinuti->text(), "-40");
  EXPECT_EQ(s.f.DTPicker1->date(), QDate(2025, 6, 9));
  EXPECT_EQ(s.f.TBAnnot->toPlainText(), "Prima parte" + QString(244, ' ') + "seconda");
  EXPECT_FALSE(s.f.DaSalvare());
  EXPECT_FALSE(s.f.Bottone(3)->isEnabled());
}

TEST(frmExec, MontaAnnot) {
  EXPECT_EQ(frmExec::MontaAnnot(Null, Null), "");
  EXPECT_EQ(frmExec::MontaAnnot(Null, "dopo"), "");
  EXPECT_EQ(frmExec::MontaAnnot(" solo ", Null), " solo ");
  const QString s = frmExec::MontaAnnot("  uno ", " due  ");
  EXPECT_EQ(s.size(), 258);
  EXPECT_EQ(s, "uno" + QString(252, ' ') + "due");
  EXPECT_EQ(frmExec::MontaAnnot("", "x"), QString(255, ' ') + "x");
}

TEST(frmExec, NotesAloneDoNotEnableSaving) {
  TestDb t;
  Base(t);
  Carta s(2);
  s.f.TBAnnot->setPlainText("solo una nota");
  EXPECT_FALSE(s.f.DaSalvare());
  EXPECT_FALSE(s.f.Bottone(3)->isEnabled());
  EXPECT_FALSE(s.f.mnuFS->isEnabled());
  s.f.Bottone(3)->trigger();
  s.f.mnuFS->trigger();
  EXPECT_TRUE(s.f.isVisible());
  EXPECT_TRUE(t.messages->asked.empty());
  EXPECT_EQ(Righe(t), 0);
  // Each of the other fields does.
  s.f.OCMinuti->SetValue(5);
  EXPECT_TRUE(s.f.DaSalvare());
  EXPECT_TRUE(s.f.Bottone(3)->isEnabled());
  EXPECT_TRUE(s.f.mnuFS->isEnabled());
  s.f.SetDaSalvare(false);
  s.f.CBPrest->setCurrentIndex(1);
  EXPECT_TRUE(s.f.DaSalvare());
  s.f.SetDaSalvare(false);
  s.f.CBOperatore->setCurrentIndex(2);
  EXPECT_TRUE(s.f.DaSalvare());
  s.f.SetDaSalvare(false);
  s.f.OCOre->SetValue(3);
  EXPECT_TRUE(s.f.DaSalvare());
  s.f.SetDaSalvare(false);
  s.f.DTPicker1->setDate(QDate(2026, 2, 2));
  EXPECT_TRUE(s.f.DaSalvare());
}

TEST(frmExec, TypingHoursCountsAsAChange) {
  TestDb t;
  Base(t);
  Carta s(2);
  s.f.activateWindow();
  s.f.OCOre->setFocus();
  QTest::keyClick(s.f.OCOre, Qt::Key_Backspace);
  QTest::keyClicks(s.f.OCOre, "4");
  EXPECT_TRUE(s.f.DaSalvare());
  EXPECT_TRUE(s.f.Bottone(3)->isEnabled());
}

TEST(frmExec, CloseWithoutChangesAsksNothing) {
  TestDb t;
  Base(t);
  Carta s(2);
  s.f.Bottone(1)->trigger();
  EXPECT_FALSE(s.f.isVisible());
  EXPECT_TRUE(t.messages->asked.empty());
}

TEST(frmExec, CloseQuestionAnsweredNo) {
  TestDb t;
  Base(t);
  Carta s(2);
  s.Compila(QDate(2026, 4, 1), 1, 0);
  t.messages->answers = {vbNo};
  s.f.Bottone(1)->trigger();
  ASSERT_EQ(t.messages->asked.size(), 1u);
  EXPECT_EQ(t.messages->asked[0].prompt, "Vuoi salvare prima di uscire?");
  EXPECT_EQ(t.messages->asked[0].buttons, vbYesNo | vbQuestion | vbDefaultButton2);
  EXPECT_FALSE(s.f.isVisible());
  EXPECT_EQ(Righe(t), 0);
  EXPECT_TRUE(s.ricaricate.empty());
}

TEST(frmExec, CloseQuestionAnsweredYesSaves) {
  TestDb t;
  Base(t);
  Carta s(2);
  s.Compila(QDate(2026, 4, 1), 0, 45);
  t.messages->answers = {vbYes};
  QTest::keyClick(&s.f, Qt::Key_Escape);
  ASSERT_EQ(t.messages->asked.size(), 1u);
  EXPECT_EQ(t.messages->asked[0].prompt, "Vuoi salvare prima di uscire?");
  EXPECT_FALSE(s.f.isVisible());
  EXPECT_EQ(Data(t, "DtEnd", 202600001), D(2026, 4, 1, 0, 45));
  EXPECT_EQ(s.ricaricate, std::vector<int>({202600001}));
}

TEST(frmExec, CloseQuestionYesWithAFailingCheckKeepsTheCard) {
  TestDb t;
  Base(t);
  Carta s(2);
  s.f.OCOre->SetValue(2);  // no operator chosen
  t.messages->answers = {vbYes};
  s.f.close();
  ASSERT_EQ(t.messages->asked.size(), 2u);
  EXPECT_EQ(t.messages->asked[0].prompt, "Vuoi salvare prima di uscire?");
  EXPECT_EQ(t.messages->asked[1].prompt, "Scegli l'operatore!");
  EXPECT_TRUE(s.f.isVisible());
  EXPECT_TRUE(s.f.DaSalvare());
  EXPECT_EQ(Righe(t), 0);
  // The menu's "Esci" asks again; No lets the card go.
  t.messages->answers = {vbNo};
  s.f.mnuFE->trigger();
  EXPECT_EQ(t.messages->asked.size(), 3u);
  EXPECT_FALSE(s.f.isVisible());
}

TEST(frmExec, RunningModalSavingEndsIt) {
  TestDb t;
  Base(t);
  CaricaDatiModello(kModello);
  frmExec f;
  f.Modo = 2;
  f.CProject = kModello;
  f.CDisp = 1;
  f.Form_Load();
  QTimer::singleShot(0, &f, [&f] {
    f.DTPicker1->setDate(QDate(2026, 9, 1));
    SetCBValue(f.CBOperatore, 2, 0);
    SetCBValue(f.CBPrest, 2, 0);
    f.OCOre->SetValue(3);
    f.Bottone(3)->trigger();
  });
  QTimer::singleShot(3000, &f, [&f] { f.done(99); });  // a safety net: the card should be gone long before
  EXPECT_NE(f.exec(), 99);
  EXPECT_EQ(Data(t, "DtEnd", 202600001), D(2026, 9, 1, 3, 0));
}

TEST(frmExec, SaveFromTheMenu) {
  TestDb t;
  Base(t);
  Carta s(2);
  s.Compila(QDate(2025, 8, 8), 7, 59);
  s.f.mnuFS->trigger();
  EXPECT_FALSE(s.f.isVisible());
  EXPECT_EQ(Data(t, "DtEnd", 202500001), D(2025, 8, 8, 7, 59));
}

// ---------------------------------------------------------------- frmExecSposta

namespace {

// Customer 1: the present disposition 202500001/1, another open one of the same
// model, a closed one, an open model with an open disposition, a closed model.
// Customer 2: an open model of its own.
void Modelli(TestDb& t) {
  t.Exec("INSERT INTO Projects (CProject, DProject, CPrjTipo, TAnag, CAnag, DtIni, Stato) VALUES "
         "(202500002, 'Attrezzo di piega', 2, 1, 1, '2025-02-10 00:00:00', 0), "
         "(202500003, 'Chiuso', 1, 1, 1, '2025-03-10 00:00:00', 9), "
         "(202500004, 'Altro cliente', 1, 1, 2, '2025-04-10 00:00:00', 0)");
  t.Exec("INSERT INTO ProjectsDisp (CProject, CDisp, CPrjDispTipo, DDisp, CStato) VALUES "
         "(202500001, 2, 2, 'Ritocchi', 0), (202500001, 3, 1, 'Collaudo', 9), "
         "(202500002, 1, 1, 'Montaggio', 0), (202500003, 1, 1, 'Di un modello chiuso', 0), "
         "(202500004, 1, 1, 'Di un altro cliente', 0)");
}

struct Spostamento {
  Spostamento(int cProject, int cDisp, int cAnag) {
    f.CProject = cProject;
    f.CDisp = cDisp;
    f.TAnag = 1;
    f.CAnag = cAnag;
    QObject::connect(&f, &frmExecSposta::Sposta, [this](int& p, int& d) { mosse.push_back({p, d}); });
    f.Form_Load();
    f.show();
  }
  frmExecSposta f;
  std::vector<std::pair<int, int>> mosse;
};

}  // namespace

TEST(frmExecSposta, ListsOtherOpenDispositionsOfTheCustomer) {
  TestDb t;
  Base(t);
  Modelli(t);
  Spostamento s(202500001, 1, 1);
  EXPECT_EQ(s.f.objectName(), "frmExecSposta");
  EXPECT_EQ(s.f.windowTitle(), "Sposta prestazioni");
  EXPECT_EQ(s.f.Bottone(1)->toolTip(), "Esci");
  EXPECT_TRUE(s.f.Bottone(2)->isSeparator());
  EXPECT_EQ(s.f.Bottone(3)->toolTip(), "Salva");
  EXPECT_EQ(s.f.mnuFS->text(), "&Salva");
  EXPECT_EQ(s.f.mnuFE->text(), "&Esci");
  ListView* l = s.f.ListView1;
  ASSERT_EQ(l->ColumnCount(), 6);
  EXPECT_EQ(l->ColumnText(1), "Codice");
  EXPECT_EQ(l->ColumnText(2), "Modello");
  EXPECT_EQ(l->ColumnText(3), "Tipo Mod.");
  EXPECT_EQ(l->ColumnText(4), "Disposizione");
  EXPECT_EQ(l->ColumnText(5), "Descrizione");
  EXPECT_LT(l->ColumnWidth(0), l->ColumnWidth(1));
  ASSERT_EQ(l->Count(), 2);
  // By model name: the other model first, then the other disposition of this one.
  EXPECT_EQ(l->Key(0), "K202500002001");
  EXPECT_EQ(l->Text(0, 1), "2025-00002-001");
  EXPECT_EQ(l->Text(0, 2), "Attrezzo di piega");
  EXPECT_EQ(l->Text(0, 3), "Attrezzatura");
  EXPECT_EQ(l->Text(0, 4), "Oraria");
  EXPECT_EQ(l->Text(0, 5), "Montaggio");
  EXPECT_EQ(l->Key(1), "K202500001002");
  EXPECT_EQ(l->Text(1, 1), "2025-00001-002");
  EXPECT_EQ(l->Text(1, 2), "Stampo pompa");
  EXPECT_EQ(l->Text(1, 3), "Stampo");
  EXPECT_EQ(l->Text(1, 4), "A pezzo");
  EXPECT_EQ(l->Text(1, 5), "Ritocchi");
  EXPECT_TRUE(l->isVisible());
  EXPECT_TRUE(t.LogLines("frmExecSposta", "CaricaList").isEmpty());
}

TEST(frmExecSposta, NoRowsSaveDoesNothing) {
  TestDb t;
  Base(t);
  Spostamento s(202500001, 1, 1);  // the only open disposition is the present one
  EXPECT_EQ(s.f.ListView1->Count(), 0);
  s.f.Bottone(3)->trigger();
  s.f.mnuFS->trigger();
  emit s.f.ListView1->DblClick();
  EXPECT_TRUE(t.messages->asked.empty());
  EXPECT_TRUE(s.mosse.empty());
  EXPECT_TRUE(s.f.isVisible());
}

TEST(frmExecSposta, QuestionNamesTheSelectedRowAndNoKeepsTheScreen) {
  TestDb t;
  Base(t);
  Modelli(t);
  Spostamento s(202500001, 1, 1);
  s.f.ListView1->SetSelected(1);
  s.f.Bottone(3)->trigger();  // the default answer is No
  ASSERT_EQ(t.messages->asked.size(), 1u);
  EXPECT_EQ(t.messages->asked[0].prompt,
            "Vuoi spostare le prestazioni selezionate nella disposizione n° 2025-00001-002?");
  EXPECT_EQ(t.messages->asked[0].buttons, vbYesNo | vbQuestion | vbDefaultButton2);
  EXPECT_EQ(t.messages->asked[0].title, "VORN");  // through the message box of the data layer
  EXPECT_TRUE(s.mosse.empty());
  EXPECT_TRUE(s.f.isVisible());
}

TEST(frmExecSposta, YesHandsBackTheSelectedDisposition) {
  TestDb t;
  Base(t);
  Modelli(t);
  {
    Spostamento s(202500001, 1, 1);
    s.f.ListView1->SetSelected(1);
    t.messages->answers = {vbYes};
    s.f.mnuFS->trigger();
    EXPECT_EQ(s.mosse, (std::vector<std::pair<int, int>>{{202500001, 2}}));
    EXPECT_FALSE(s.f.isVisible());
  }
  {
    // A disposition of another model, chosen with a double click.
    Spostamento s(202500001, 1, 1);
    s.f.ListView1->SetSelected(0);
    t.messages->answers = {vbYes};
    emit s.f.ListView1->DblClick();
    EXPECT_EQ(t.messages->asked.back().prompt,
              "Vuoi spostare le prestazioni selezionate nella disposizione n° 2025-00002-001?");
    EXPECT_EQ(s.mosse, (std::vector<std::pair<int, int>>{{202500002, 1}}));
    EXPECT_EQ(s.f.CProject, 202500002);
    EXPECT_EQ(s.f.CDisp, 1);
    EXPECT_FALSE(s.f.isVisible());
  }
}

TEST(frmExecSposta, ExitCloses) {
  TestDb t;
  Base(t);
  Modelli(t);
  Spostamento s(202500001, 1, 1);
  s.f.Bottone(1)->trigger();
  EXPECT_FALSE(s.f.isVisible());
  EXPECT_TRUE(s.mosse.empty());
  EXPECT_TRUE(t.messages->asked.empty());
}

// ---------------------------------------------------------------- frmDispInfo

namespace {

// Supplier order 40 with two lines for disposition 1: line 1 (RigaD 1) with two
// service kinds and two deliveries, one billable and one not; line 2 (RigaD 2)
// with neither.
void Forniture(TestDb& t) {
  t.Exec("INSERT INTO DocForn (TipoDoc, NDoc, Data, DataCons, TAnag, CAnag, Riferimento) VALUES "
         "(12, 40, '2025-02-03 00:00:00', '2025-02-20 00:00:00', 2, 5, 'Ordine zincatura'), "
         "(15, 202500070, '2025-02-15 00:00:00', NULL, 2, 5, 'DDT 118'), "
         "(15, 202500071, '2025-02-18 00:00:00', NULL, 2, 5, 'DDT 131')");
  t.Exec("INSERT INTO DocFornDett (TipoDoc, NDoc, Scheda, Riga, DArt, Qta, PzVend, CCaus, TipoDocRif, NDocRif, RigaRif) "
         "VALUES (12, 40, 0, 1, 'Zincatura', 10.12345, 1234.5, 1, 0, 0, 0), "
         "(12, 40, 0, 2, 'Sabbiatura', 4, 80, 1, 0, 0, 0), "
         "(15, 202500070, 0, 1, 'Zincatura', 2.5, 3.2, 1, 12, 40, 1), "
         "(15, 202500071, 0, 1, 'Zincatura', 1, 7, 2, 12, 40, 1)");
  t.Exec("INSERT INTO ProjectsDocDett (TipoDoc, NDoc, Scheda, Riga, RigaD, CProject, CDisp) VALUES "
         "(12, 40, 0, 1, 1, 202500001, 1), (12, 40, 0, 2, 2, 202500001, 1)");
  t.Exec("INSERT INTO ProjectsDocDettPrest (TipoDoc, NDoc, RigaD, SubRiga, CPrestazione) VALUES "
         "(12, 40, 1, 2, 1), (12, 40, 1, 1, 2)");
}

struct Info {
  Info(int nDoc, int riga, int rigaD, int cDisp) {
    CaricaDatiModello(kModello);
    f.NDoc = nDoc;
    f.Riga = riga;
    f.RigaD = rigaD;
    f.CDisp = cDisp;
    f.Form_Load();
    f.show();
  }
  frmDispInfo f;
};

}  // namespace

TEST(frmDispInfo, HeadAndLists) {
  TestDb t;
  Base(t);
  Forniture(t);
  Info i(40, 1, 1, 1);
  EXPECT_EQ(i.f.objectName(), "frmDispInfo");
  EXPECT_EQ(i.f.windowTitle(), "Info fornitura");
  EXPECT_EQ(i.f.Bottone(1)->toolTip(), "Esci");
  EXPECT_EQ(i.f.mnuFE->text(), "&Esci");
  EXPECT_FALSE(i.f.OCFrame1->isEnabled());
  EXPECT_EQ(i.f.TBNOrdF->text(), "40");
  EXPECT_EQ(i.f.TBRiga->text(), "1");
  EXPECT_EQ(i.f.DTOrd->date(), QDate(2025, 2, 3));
  EXPECT_EQ(i.f.DTOrd->text(), "03/02/2025");
  EXPECT_EQ(i.f.TBAnag->text(), "Zincatura Sud");
  EXPECT_EQ(i.f.DTCons->date(), QDate(2025, 2, 20));
  EXPECT_EQ(i.f.TBQtaOrd->text(), "10,123");
  EXPECT_EQ(i.f.OCCosto->Value(), 1234.5);
  EXPECT_EQ(i.f.OCCosto->text(), "1.234,50");
  EXPECT_EQ(i.f.SSTab1->tabText(0), "Lavorazioni");
  EXPECT_EQ(i.f.SSTab1->tabText(1), "Forniture");
  ListView* p = i.f.lvwPrest;
  ASSERT_EQ(p->ColumnCount(), 2);
  EXPECT_EQ(p->ColumnText(1), "Prestazioni");
  ASSERT_EQ(p->Count(), 2);
  EXPECT_EQ(p->Key(0), "K001");
  EXPECT_EQ(p->Text(0, 1), "Fresatura");
  EXPECT_EQ(p->Key(1), "K002");
  EXPECT_EQ(p->Text(1, 1), "Tornitura");
  ListView* f = i.f.lvwForn;
  ASSERT_EQ(f->ColumnCount(), 7);
  EXPECT_EQ(f->ColumnText(1), "Prot.");
  EXPECT_EQ(f->ColumnText(2), "Data");
  EXPECT_EQ(f->ColumnText(3), "Riferimento");
  EXPECT_EQ(f->ColumnText(4), "Qta");
  EXPECT_EQ(f->ColumnText(5), "Importo");
  EXPECT_EQ(f->ColumnText(6), "C");
  ASSERT_EQ(f->Count(), 2);
  EXPECT_EQ(f->Key(0), "K015202500070001");
  EXPECT_EQ(f->Text(0, 1), "2025-00070");
  EXPECT_EQ(f->Text(0, 2), "15/02/2025");
  EXPECT_EQ(f->Text(0, 3), "DDT 118");
  EXPECT_EQ(f->Text(0, 4), "3");  // 2,5 pieces show rounded
  EXPECT_EQ(f->Text(0, 5), "3,20");
  EXPECT_EQ(f->Text(0, 6), "F");
  EXPECT_EQ(f->Key(1), "K015202500071001");
  EXPECT_EQ(f->Text(1, 1), "2025-00071");
  EXPECT_EQ(f->Text(1, 4), "1");
  EXPECT_EQ(f->Text(1, 5), "0,00");  // not billable
  EXPECT_EQ(f->Text(1, 6), "R");
  for (const char* proc : {"Form_Load", "CaricaTestata", "CaricaPrest", "CaricaForn"})
    EXPECT_TRUE(t.LogLines("frmDispInfo", proc).isEmpty()) << proc;
}

TEST(frmDispInfo, LineWithoutDeliveriesOrServiceKinds) {
  TestDb t;
  Base(t);
  Forniture(t);
  Info i(40, 2, 2, 1);
  EXPECT_EQ(i.f.TBNOrdF->text(), "40");
  EXPECT_EQ(i.f.TBRiga->text(), "2");
  EXPECT_EQ(i.f.TBAnag->text(), "Zincatura Sud");
  EXPECT_EQ(i.f.DTOrd->date(), QDate(2025, 2, 3));
  EXPECT_EQ(i.f.TBQtaOrd->text(), "4");
  EXPECT_EQ(i.f.OCCosto->text(), "80,00");
  EXPECT_EQ(i.f.lvwPrest->Count(), 0);
  EXPECT_EQ(i.f.lvwForn->Count(), 0);
  EXPECT_EQ(i.f.lvwForn->ColumnCount(), 7);
  EXPECT_TRUE(i.f.lvwPrest->isVisible());
}

TEST(frmDispInfo, NoLineInTheWorkingCopyLeavesTheHeadEmpty) {
  TestDb t;
  Base(t);
  Forniture(t);
  Info i(40, 1, 1, 9);  // no external work of disposition 9
  EXPECT_EQ(i.f.TBNOrdF->text(), "40");
  EXPECT_TRUE(i.f.TBAnag->text().isEmpty());
  EXPECT_TRUE(i.f.TBQtaOrd->text().isEmpty());
  EXPECT_EQ(i.f.DTOrd->text(), " ");
  EXPECT_EQ(i.f.DTCons->text(), " ");
  EXPECT_EQ(i.f.OCCosto->Value(), 0);
  // The lists go by the order line, not by the working copy.
  EXPECT_EQ(i.f.lvwPrest->Count(), 2);
  EXPECT_EQ(i.f.lvwForn->Count(), 2);
}

TEST(frmDispInfo, TabClickFocusesItsList) {
  TestDb t;
  Base(t);
  Forniture(t);
  Info i(40, 1, 1, 1);
  i.f.activateWindow();
  QApplication::setActiveWindow(&i.f);
  i.f.SSTab1->setCurrentIndex(1);
  EXPECT_TRUE(i.f.lvwForn->hasFocus());
  i.f.SSTab1->setCurrentIndex(0);
  EXPECT_TRUE(i.f.lvwPrest->hasFocus());
  i.f.Bottone(1)->trigger();
  EXPECT_FALSE(i.f.isVisible());
}
