// The shop-floor station: codes typed as a scanner types them, the time in
// two touches, the save, and the sheet read back off the paper.
#include <gtest/gtest.h>

#include <QApplication>
#include <QDir>
#include <QTest>
#include <QTimer>

#include "CodiciLetti.h"
#include "ModStampe.h"
#include "OCPrestKT.h"
#include "ProcedureUi.h"
#include "TestSupport.h"
#include "frmInputData.h"

using namespace prestkt;
using namespace prestkt::test;

namespace {

void Officina(TestDb& t) {
  t.Exec("INSERT INTO Anagrafica (TAnag, CAnag, RagSoc1, Eliminato) VALUES (1, 1, 'Officina Rossi', 0), "
         "(10, 17, 'Mario Verdi', 0), (10, 23, 'Luca Neri', 0), (10, 31, 'Carlo Andato', -1)");
  t.Exec("INSERT INTO ProjectsTipo (CPrjTipo, DPrjTipo) VALUES (1, 'Stampo a iniezione')");
  t.Exec("INSERT INTO ProjectsDispTipo (CPrjDispTipo, DPrjDispTipo, TipoFatt) VALUES (1, 'Manutenzione', 1)");
  t.Exec("INSERT INTO TabGen (CTipTabGen, CTabGen, DTabGen, Sigla) VALUES (12, 1, 'Tornitura', 'TO'), "
         "(12, 2, 'Saldatura', 'SA'), (12, 5, 'Collaudo', 'CO')");
  t.Exec("INSERT INTO Projects (CProject, DProject, CPrjTipo, TAnag, CAnag, DtIni) VALUES "
         "(202500001, 'Stampo pompa', 1, 1, 1, '2025-01-10 00:00:00')");
  t.Exec("INSERT INTO ProjectsDisp (CProject, CDisp, DDisp, CPrjDispTipo, Data, Qta, CStato) VALUES "
         "(202500001, 3, 'Ripristino matrice', 1, '2025-02-01 00:00:00', 10, 0), "
         "(202500001, 4, 'Chiusa', 1, '2025-02-01 00:00:00', 10, 9)");
  t.Exec("INSERT INTO ProjectsDispDett (CProject, CDisp, CPrestazione) VALUES (202500001, 3, 1), (202500001, 3, 2)");
}

// The station, loaded and shown, on a given day.
struct Stazione {
  explicit Stazione(const QDate& giorno = QDate(2026, 3, 12)) {
    f.Form_Load();
    f.DTPicker1->setDate(giorno);
    f.show();
  }
  // A code as the scanner sends it: its characters, then Enter.
  void Spara(const QString& codice) {
    QTest::keyClicks(f.Picture1, codice);
    QTest::keyClick(f.Picture1, Qt::Key_Return);
  }
  frmInputData f;
};

int Righe(TestDb& t) { return t.Scalar("SELECT Count(*) FROM ActivitiesProd").toInt(); }

}  // namespace

TEST(frmInputData, FaceOfTheStation) {
  TestDb t;
  Officina(t);
  Stazione s(QDate::currentDate());
  frmInputData& f = s.f;
  EXPECT_EQ(f.windowTitle(), "Inserimento prestazioni");
  EXPECT_EQ(f.Messaggio(),
            "Spara il codice sulla 'SCHEDA DI PRODUZIONE', il codice 'OPERATORE' e compila gli altri campi");
  EXPECT_EQ(f.Picture1->font().family(), "Verdana");
  EXPECT_EQ(f.Picture1->palette().color(QPalette::WindowText), QColor(Qt::red));
  ASSERT_EQ(f.CBPrest->count(), 4);
  EXPECT_EQ(f.CBPrest->itemText(0), "{scegli un prestazione}");
  EXPECT_EQ(f.CBPrest->itemText(1), "Collaudo");  // by name
  EXPECT_EQ(f.DTPicker1->date(), QDate::currentDate());
  ASSERT_EQ(f.OptOre.size(), 12u);
  ASSERT_EQ(f.OptMin.size(), 12u);
  for (int i = 0; i < 12; ++i) {
    EXPECT_EQ(f.OptOre[i]->text(), QString::number(i));
    EXPECT_EQ(f.OptMin[i]->text(), QString::number(i * 5));
  }
  // Spread in twelfths of their row.
  const int larghezza = f.OptOre[0]->width();
  for (QPushButton* b : f.OptOre) EXPECT_NEAR(b->width(), larghezza, 2);
  EXPECT_LT(f.OptOre[0]->x(), f.OptOre[11]->x());
  EXPECT_EQ(f.cmdSave->palette().color(QPalette::Button), QColor(255, 174, 201));
  EXPECT_EQ(f.cmdDel->palette().color(QPalette::Button), QColor(255, 174, 201));
  EXPECT_FALSE(f.cmdSave->isEnabled());
  EXPECT_EQ(f.Operatore, 0);
  EXPECT_TRUE(t.LogLines("frmInputData", "Form_Load").isEmpty());
}

// A small screen of a station still shows every button: the form asks for no
// more than the screen it opens on (800 pixels wide here).
TEST(frmInputData, FitsTheScreenItOpensOn) {
  TestDb t;
  Officina(t);
  Stazione s;
  const QSize schermo = s.f.screen()->availableGeometry().size();
  ASSERT_LE(schermo.width(), 1024);
  EXPECT_LE(s.f.minimumSizeHint().width(), schermo.width());
  EXPECT_LE(s.f.minimumSizeHint().height(), schermo.height());
}

// The codes of a printed sheet, read off the paper, typed into the station as
// the scanner types them, in any order and case, then two touches and a save.
TEST(frmInputData, CodesReadOffThePrintedSheetRecordTheActivity) {
  TestDb t;
  Officina(t);
  QDir().mkpath(t.Path() + "/temp");
  const QByteArray vecchioTemp = qgetenv("TEMP");
  qputenv("TEMP", (t.Path() + "/temp").toLocal8Bit());
  gDtIni = D(2025, 1, 1);
  gDTEnd = D(2025, 12, 31);
  CaricaModelli(gDtIni, gDTEnd, -1);
  CaricaDatiModello(202500001);
  StampantePdf pdf(t.Path() + "/scheda.pdf");
  StpSchedaProd(pdf, 202500001, 3);
  qputenv("TEMP", vecchioTemp);
  const QStringList letti = Testi(LeggiCodici(PdfInImmagine(pdf.File())));
  ASSERT_EQ(letti, QStringList({"P2025000010003", "A002", "A001"}));
  const QString scheda = letti[0], saldatura = letti[1], tornitura = letti[2];

  struct Giro {
    QStringList codici;  // in the order of the scan
    int ore, minuti;
    int prestazione;
    QString codiceAtteso;
  };
  const std::vector<Giro> giri = {
      {{scheda, "000017", saldatura}, 2, 6, 2, "202600001"},
      {{tornitura, scheda.toLower(), "000023"}, 0, 11, 1, "202600002"},
      {{"000017", saldatura.toLower(), scheda}, 11, 0, 2, "202600003"},
  };
  for (const Giro& giro : giri) {
    Stazione s;
    for (const QString& c : giro.codici) s.Spara(c);
    EXPECT_FALSE(s.f.cmdSave->isEnabled());  // no time yet
    QTest::mouseClick(s.f.OptOre[giro.ore], Qt::LeftButton);
    QTest::mouseClick(s.f.OptMin[giro.minuti], Qt::LeftButton);
    ASSERT_TRUE(s.f.cmdSave->isEnabled()) << giro.codiceAtteso.toStdString();
    QTest::mouseClick(s.f.cmdSave, Qt::LeftButton);
    const QString riga = QString("SELECT CProject || '|' || CDisp || '|' || CUtente || '|' || CPrestazione || '|' || "
                                 "DtIni || '|' || DtEnd || '|' || DtRealIni || '|' || DtRealEnd || '|' || Stato "
                                 "FROM ActivitiesProd WHERE CAttivita=%1")
                             .arg(giro.codiceAtteso);
    const QTime fine = QTime(0, 0).addSecs(giro.ore * 3600 + giro.minuti * 5 * 60);
    const QString attesa = QString("202500001|3|%1|%2|2026-03-12 00:00:00|2026-03-12 %3|2026-03-12 00:00:00|"
                                   "2026-03-12 %3|0")
                               .arg(giro.codici.contains("000023") ? 23 : 17)
                               .arg(giro.prestazione)
                               .arg(fine.toString("HH:mm:ss"));
    EXPECT_EQ(t.Scalar(riga).toString(), attesa);
    EXPECT_TRUE(IsNull(t.Scalar("SELECT CostoH FROM ActivitiesProd WHERE CAttivita=" + giro.codiceAtteso)) ||
                t.Scalar("SELECT CostoH FROM ActivitiesProd WHERE CAttivita=" + giro.codiceAtteso).toDouble() == 0);
  }
  EXPECT_EQ(Righe(t), 3);
}

TEST(frmInputData, SheetShowsTheModelAndTheDisposition) {
  TestDb t;
  Officina(t);
  Stazione s;
  s.Spara("P2025000010003");
  EXPECT_EQ(s.f.CProject, 202500001);
  EXPECT_EQ(s.f.CDisp, 3);
  EXPECT_EQ(s.f.Label2->text(), "2025-00001 \\ 0003");
  EXPECT_EQ(s.f.lblRagSoc->text(), "OFFICINA ROSSI");
  EXPECT_EQ(s.f.lblModello->text(), "Stampo pompa");
  EXPECT_EQ(s.f.lblTipoPrj->text(), "STAMPO A INIEZIONE");
  EXPECT_EQ(s.f.lblDisp->text(), "Manutenzione");
  EXPECT_TRUE(t.messages->asked.empty());
  // A sheet that names no model: the numbers stay, the labels are empty.
  s.Spara("P2025999990001");
  EXPECT_EQ(s.f.CProject, 202599999);
  EXPECT_EQ(s.f.CDisp, 1);
  EXPECT_EQ(s.f.Label2->text(), "2025-99999 \\ 0001");
  EXPECT_EQ(s.f.lblModello->text(), "");
  EXPECT_EQ(s.f.lblRagSoc->text(), "");
  EXPECT_EQ(s.f.lblDisp->text(), "");
}

TEST(frmInputData, TwoEnterKeysInARowDoNothing) {
  TestDb t;
  Officina(t);
  Stazione s;
  s.Spara("000017");
  QTest::keyClick(s.f.Picture1, Qt::Key_Return);
  QTest::keyClick(s.f.Picture1, Qt::Key_Return);
  EXPECT_EQ(s.f.Operatore, 17);
  EXPECT_EQ(s.f.lblOperatore->text(), "Mario Verdi");
  EXPECT_EQ(s.f.Buffer(), "");
  EXPECT_TRUE(t.messages->asked.empty());
}

TEST(frmInputData, UnknownOrDeletedBadgeLeavesThePreviousOperator) {
  TestDb t;
  Officina(t);
  Stazione s;
  s.Spara("000017");
  s.Spara("000099");  // nobody
  EXPECT_EQ(s.f.Operatore, 17);
  EXPECT_EQ(s.f.lblOperatore->text(), "Mario Verdi");
  s.Spara("000031");  // a deleted operator
  EXPECT_EQ(s.f.Operatore, 17);
  EXPECT_EQ(s.f.lblOperatore->text(), "Mario Verdi");
  s.Spara("000023");
  EXPECT_EQ(s.f.Operatore, 23);
  EXPECT_EQ(s.f.lblOperatore->text(), "Luca Neri");
}

TEST(frmInputData, CodesTypedByHandInUpperCaseAndOtherShapes) {
  TestDb t;
  Officina(t);
  Stazione s;
  s.Spara("A005");
  EXPECT_EQ(s.f.CBPrest->currentText(), "Collaudo");
  s.Spara("a002");
  EXPECT_EQ(s.f.CBPrest->currentText(), "Saldatura");
  s.Spara("A009");  // no such entry: the combo stays
  EXPECT_EQ(s.f.CBPrest->currentText(), "Saldatura");
  // Other shapes go without a word.
  for (const QString& c : {"P20250000100", "12345", "X00017", "A0021", "ciao"}) s.Spara(c);
  EXPECT_EQ(s.f.CBPrest->currentText(), "Saldatura");
  EXPECT_EQ(s.f.CProject, 0);
  EXPECT_EQ(s.f.Operatore, 0);
  EXPECT_TRUE(t.messages->asked.empty());
}

TEST(frmInputData, HoursAndMinutesZeroKeepTheSaveAway) {
  TestDb t;
  Officina(t);
  Stazione s;
  s.Spara("P2025000010003");
  s.Spara("000017");
  s.Spara("A001");
  QTest::mouseClick(s.f.OptOre[0], Qt::LeftButton);
  QTest::mouseClick(s.f.OptMin[0], Qt::LeftButton);
  EXPECT_FALSE(s.f.cmdSave->isEnabled());
  QTest::mouseClick(s.f.OptMin[1], Qt::LeftButton);  // 5 minutes
  EXPECT_TRUE(s.f.cmdSave->isEnabled());
  EXPECT_EQ(s.f.OptMin[1]->palette().color(QPalette::Button), QColor(Qt::red));
  EXPECT_NE(s.f.OptMin[0]->palette().color(QPalette::Button), QColor(Qt::red));
  QTest::mouseClick(s.f.OptMin[0], Qt::LeftButton);
  QTest::mouseClick(s.f.OptOre[1], Qt::LeftButton);  // 1 hour
  EXPECT_TRUE(s.f.cmdSave->isEnabled());
  s.f.CBPrest->setCurrentIndex(0);  // no service kind
  EXPECT_FALSE(s.f.cmdSave->isEnabled());
}

TEST(frmInputData, ClosedDispositionWarnsAndWorkGoesOn) {
  TestDb t;
  Officina(t);
  Stazione s;
  s.Spara("P2025000010004");
  ASSERT_EQ(t.messages->asked.size(), 1u);
  EXPECT_EQ(t.messages->asked[0].prompt, "Attenzione: questa disposizione risulta essere chiusa!");
  EXPECT_EQ(t.messages->asked[0].buttons, vbExclamation);
  s.Spara("000017");
  s.Spara("A001");
  QTest::mouseClick(s.f.OptOre[3], Qt::LeftButton);
  QTest::mouseClick(s.f.cmdSave, Qt::LeftButton);
  EXPECT_EQ(t.Scalar("SELECT CDisp FROM ActivitiesProd").toInt(), 4);
}

// The numbers run by the year of the day: the day moved back into last year
// numbers the activity there, after the largest code of an activity of that
// year, whatever the codes of other years.
TEST(frmInputData, NumberingFollowsTheYearOfTheDayAcrossTheYearChange) {
  TestDb t;
  Officina(t);
  t.Exec("INSERT INTO ActivitiesProd (CAttivita, CProject, CDisp, CUtente, CPrestazione, DtIni, DtEnd) VALUES "
         "(202500007, 202500001, 3, 17, 1, '2025-06-01 00:00:00', '2025-06-01 01:00:00'), "
         "(202600005, 202500001, 3, 17, 1, '2025-12-31 00:00:00', '2025-12-31 01:00:00')");
  const auto salva = [&](Stazione& s) {
    s.Spara("P2025000010003");
    s.Spara("000017");
    s.Spara("A001");
    QTest::mouseClick(s.f.OptOre[1], Qt::LeftButton);
    QTest::mouseClick(s.f.cmdSave, Qt::LeftButton);
  };
  {
    Stazione s(QDate(2026, 1, 1));
    QTest::mouseClick(s.f.Command1, Qt::LeftButton);  // back to 31 December 2025
    EXPECT_EQ(s.f.DTPicker1->date(), QDate(2025, 12, 31));
    salva(s);
    // The largest code among the activities dated 2025 is 202600005.
    EXPECT_EQ(t.Scalar("SELECT Max(CAttivita) FROM ActivitiesProd").toInt(), 202600006);
    EXPECT_EQ(t.Scalar("SELECT DtIni FROM ActivitiesProd WHERE CAttivita=202600006").toDateTime(), D(2025, 12, 31));
  }
  {
    Stazione s(QDate(2025, 12, 31));
    QTest::mouseClick(s.f.Command2, Qt::LeftButton);  // forward to 1 January 2026
    salva(s);
    EXPECT_EQ(t.Scalar("SELECT DtIni FROM ActivitiesProd WHERE CAttivita=202600001").toDateTime(), D(2026, 1, 1));
  }
}

TEST(frmInputData, AfterASaveTheScreenIsEmptyButTheCodesStay) {
  TestDb t;
  Officina(t);
  Stazione s;
  s.Spara("P2025000010003");
  s.Spara("000017");
  s.Spara("A001");
  QTest::mouseClick(s.f.OptOre[2], Qt::LeftButton);
  QTest::mouseClick(s.f.cmdSave, Qt::LeftButton);
  for (QLabel* l : {s.f.Label2, s.f.lblOperatore, s.f.lblRagSoc, s.f.lblModello, s.f.lblTipoPrj, s.f.lblDisp})
    EXPECT_EQ(l->text(), "");
  EXPECT_EQ(s.f.CBPrest->currentIndex(), 0);
  EXPECT_EQ(s.f.Ore, 0);
  EXPECT_FALSE(s.f.cmdSave->isEnabled());
  EXPECT_EQ(s.f.Operatore, 17);
  EXPECT_EQ(s.f.CProject, 202500001);
  EXPECT_TRUE(s.f.Picture1->hasFocus() || !QApplication::focusWidget());
  // A service kind and a time alone make the save available again.
  s.Spara("A002");
  QTest::mouseClick(s.f.OptMin[6], Qt::LeftButton);
  ASSERT_TRUE(s.f.cmdSave->isEnabled());
  QTest::mouseClick(s.f.cmdSave, Qt::LeftButton);
  EXPECT_EQ(Righe(t), 2);
  EXPECT_EQ(t.Scalar("SELECT CUtente || '|' || CPrestazione FROM ActivitiesProd WHERE CAttivita=202600002").toString(),
            "17|2");
  // Clearing by hand does the same.
  s.Spara("000023");
  QTest::mouseClick(s.f.cmdDel, Qt::LeftButton);
  EXPECT_EQ(s.f.lblOperatore->text(), "");
  EXPECT_EQ(s.f.Operatore, 23);
}

TEST(frmInputData, ClosingAsksOnlyWhenTheStationIsTheWholeProgram) {
  TestDb t;
  Officina(t);
  gOcxEventS = OCPrestKTClassPtr(std::make_shared<OCPrestKTClass>());
  int fine = 0;
  QObject::connect(gOcxEventS.get(), &OCPrestKTClass::ClosePrg, [&] { ++fine; });
  {
    Stazione s;
    s.f.close();
    EXPECT_FALSE(s.f.isVisible());
    EXPECT_TRUE(t.messages->asked.empty());
  }
  gOnlyInput = true;
  {
    Stazione s;
    s.f.close();  // the default answer is No
    ASSERT_EQ(t.messages->asked.size(), 1u);
    EXPECT_EQ(t.messages->asked[0].prompt, "Vuoi chiudere il programma?");
    EXPECT_EQ(t.messages->asked[0].title, "Uscita");
    EXPECT_EQ(t.messages->asked[0].buttons, vbYesNo | vbQuestion | vbDefaultButton2);
    EXPECT_TRUE(s.f.isVisible());
    EXPECT_EQ(fine, 0);
    t.messages->answers = {vbYes};
    QTest::keyClick(&s.f, Qt::Key_Escape);
    EXPECT_FALSE(s.f.isVisible());
    EXPECT_EQ(fine, 1);
  }
  gOnlyInput = false;
  gOcxEventS.reset();
}

TEST(frmInputData, ShowInputOpensTheStation) {
  TestDb t;
  Officina(t);
  OCPrestKT ctl;
  ctl.Initialize();
  ctl.DBConn(t.db, 1, QIcon(), t.Path(), 1);
  QString titolo;
  QTimer::singleShot(0, [&] {
    QWidget* w = QApplication::activeModalWidget();
    ASSERT_TRUE(w);
    titolo = w->windowTitle();
    w->close();
  });
  ctl.ShowInput();
  EXPECT_EQ(titolo, "Inserimento prestazioni");
}
