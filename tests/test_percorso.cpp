// A user's whole road through the screens: the register, a new model, a new
// disposition with its service kinds, two activities recorded by hand, the
// lists showing them, one moved away, the disposition closed and reopened.
#include <gtest/gtest.h>

#include <QApplication>
#include <QDirIterator>
#include <QTimer>

#include "OCPrestKT.h"
#include "ProcedureUi.h"
#include "TestSupport.h"
#include "frmDisp.h"
#include "frmExec.h"
#include "frmExecSposta.h"
#include "frmGestForfSempl.h"
#include "frmGestForfSemplImm.h"
#include "CalcDatiDisp.h"
#include "frmCalcPzVend.h"
#include "frmModelli.h"

using namespace prestkt;
using namespace prestkt::test;

namespace {

// Runs f on the next screen that opens modally.
void Quando(std::function<void(QWidget*)> f) {
  QTimer::singleShot(0, [f] {
    QWidget* w = QApplication::activeModalWidget();
    ASSERT_TRUE(w) << "no screen opened";
    f(w);
  });
}

template <class T>
T* Trova(QWidget* w, const char* nome) {
  T* c = w->findChild<T*>(QString::fromLatin1(nome));
  EXPECT_TRUE(c) << nome;
  return c;
}

// Records one activity on the "Scheda esecuzione" that is opening.
void Attivita(int operatore, int prestazione, int ore, int minuti) {
  Quando([=](QWidget* w) {
    auto* e = qobject_cast<frmExec*>(w);
    ASSERT_TRUE(e);
    SetCBValue(Trova<QComboBox>(e, "CBOperatore"), operatore, 0);
    SetCBValue(Trova<QComboBox>(e, "CBPrest"), prestazione, 0);
    Trova<NumericSpin>(e, "OCOre")->SetValue(ore);
    Trova<NumericSpin>(e, "OCMinuti")->SetValue(minuti);
    e->Bottone(3)->trigger();  // saves and closes
  });
}

}  // namespace

TEST(Percorso, FromTheRegisterToAClosedAndReopenedDisposition) {
  TestDb t;
  t.Exec("INSERT INTO AnagTipo (TAnag, Descrizione) VALUES (1, 'Clienti')");
  t.Exec("INSERT INTO Anagrafica (TAnag, CAnag, RagSoc1, CostoH) VALUES (1, 1, 'Officina Rossi', 0), "
         "(10, 1, 'Mario Verdi', 21.5), (10, 2, 'Luca Neri', 18)");
  t.Exec("INSERT INTO ProjectsTipo (CPrjTipo, DPrjTipo) VALUES (1, 'Stampo')");
  t.Exec("INSERT INTO ProjectsDispTipo (CPrjDispTipo, DPrjDispTipo, TipoFatt) VALUES (1, 'Lavorazione oraria', 1)");
  t.Exec("INSERT INTO TabGen (CTipTabGen, CTabGen, DTabGen) VALUES (12, 1, 'Saldatura'), (12, 2, 'Tornitura')");
  t.Exec("INSERT INTO ProjectsDisp2Prest (CPrjDispTipo, CPrestazione) VALUES (1, 1), (1, 2)");
  // Another open model of the customer, where one activity will go.
  t.Exec("INSERT INTO Projects (CProject, DProject, CPrjTipo, TAnag, CAnag, DtIni, Stato) VALUES "
         "(202600001, 'Stampo esistente', 1, 1, 1, '2026-01-05 00:00:00', 0)");
  t.Exec("INSERT INTO ProjectsDisp (CProject, CDisp, CPrjDispTipo, DDisp, Data, Qta, CStato) VALUES "
         "(202600001, 1, 1, 'Destinazione', '2026-01-06 00:00:00', 1, 0)");

  // A workstation set up as usual: its scale saved, its temporary folder known.
  gCurUtente = 1;
  ScriviConfig(true, "Magnify", "16");
  qputenv("TEMP", t.Path().toLocal8Bit());
  OCPrestKT ctl;
  ctl.Initialize();
  ctl.SetDtIni(D(2026, 1, 1));
  ctl.SetDTEnd(D(2026, 12, 31));
  ctl.SetStatus(-1);
  ctl.DBConn(t.db, 1, QIcon(), t.Path() + "/documenti", 1);
  auto* registro = ctl.findChild<ListView*>("ListView1");
  ASSERT_EQ(registro->Count(), 1);

  int righeInterne = -1, righeDopoSposta = -1, statoChiuso = -1;
  QString tempoPrima;
  // The model card opens from the register.
  Quando([&](QWidget* w) {
    auto* m = qobject_cast<frmModelli*>(w);
    ASSERT_TRUE(m);
    m->DTProject->setDate(QDate(2026, 3, 2));
    SetCBValue(m->CBCAnag, 1, 0);
    SetCBValue(m->CBTipoPrj, 1, 0);
    m->TBDProject->setText("Stampo coperchio");
    m->OCUpQta->SetValue(100);
    t.messages->answers.push_back(vbYes);  // "Per procedere devo salvare il modello, proseguo?"
    // The disposition card opens for a new disposition.
    Quando([&](QWidget* w2) {
      auto* d = qobject_cast<frmDisp*>(w2);
      ASSERT_TRUE(d);
      SetCBValue(d->CBTipoDisp, 1, 0);
      d->TBDDisp->setText("Prima serie");
      d->OCUpQta->SetValue(100);
      d->lvwPrest->SetChecked(d->lvwPrest->Row("K001"), true);
      d->lvwPrest->SetChecked(d->lvwPrest->Row("K002"), true);
      d->SSTab1->setCurrentIndex(1);
      // Two activities by hand: the first saves the disposition before it opens.
      Attivita(1, 1, 2, 30);
      d->Bottone(7)->trigger();
      Attivita(2, 2, 0, 45);
      d->Bottone(7)->trigger();
      righeInterne = d->lvwEsecInt->Count();
      tempoPrima = d->lvwEsecInt->Text(0, 5);
      // One activity goes to the other model's disposition.
      d->lvwEsecInt->SetChecked(1, true);
      t.messages->answers.push_back(vbYes);  // "Vuoi spostare le prestazioni selezionate ..."
      Quando([&](QWidget* w3) {
        auto* s = qobject_cast<frmExecSposta*>(w3);
        ASSERT_TRUE(s);
        ListView* l = Trova<ListView>(s, "ListView1");
        l->SetSelected(l->Row("K202600001001"));
        s->Bottone(3)->trigger();
      });
      d->mnuSposta->trigger();
      righeDopoSposta = d->lvwEsecInt->Count();
      // Closed and saved: the card ends.
      d->chkClosed->setChecked(true);
      d->Bottone(3)->trigger();
    });
    m->Bottone(7)->trigger();
    statoChiuso = t.Scalar("SELECT CStato FROM ProjectsDisp WHERE CProject=202600002 AND CDisp=1").toInt();
    // Reopened from the model's list.
    m->ListView1->SetSelected(m->ListView1->Row("K0001"));
    Quando([&](QWidget* w4) {
      auto* d = qobject_cast<frmDisp*>(w4);
      ASSERT_TRUE(d);
      EXPECT_TRUE(d->chkClosed->isChecked());
      d->chkClosed->setChecked(false);
      d->Bottone(3)->trigger();
    });
    m->Bottone(8)->trigger();
    m->Bottone(1)->trigger();
  });
  ctl.Aggiungi();

  // The model got the first code of its year after the existing one, and the register shows it.
  EXPECT_EQ(t.Scalar("SELECT DProject FROM Projects WHERE CProject=202600002").toString(), "Stampo coperchio");
  EXPECT_EQ(registro->Count(), 2);
  EXPECT_EQ(registro->Key(0), "K202600002");
  // The disposition with its two service kinds.
  EXPECT_EQ(t.Scalar("SELECT Count(*) FROM ProjectsDispDett WHERE CProject=202600002 AND CDisp=1").toInt(), 2);
  // Two activities listed, "Tempo" of the first 02:30.
  EXPECT_EQ(righeInterne, 2);
  EXPECT_EQ(tempoPrima, "02:30");
  EXPECT_EQ(t.Scalar("SELECT Count(*) FROM ActivitiesProd").toInt(), 2);
  // One moved to the other model.
  EXPECT_EQ(righeDopoSposta, 1);
  EXPECT_EQ(t.Scalar("SELECT Count(*) FROM ActivitiesProd WHERE CProject=202600001 AND CDisp=1").toInt(), 1);
  EXPECT_EQ(t.Scalar("SELECT CPrestazione FROM ActivitiesProd WHERE CProject=202600001").toInt(), 2);
  // Closed, then reopened.
  EXPECT_EQ(statoChiuso, 9);
  EXPECT_EQ(t.Scalar("SELECT CStato FROM ProjectsDisp WHERE CProject=202600002 AND CDisp=1").toInt(), 0);
  EXPECT_TRUE(IsNull(t.Scalar("SELECT DtEnd FROM ProjectsDisp WHERE CProject=202600002 AND CDisp=1")));
  // Nothing failed on the way.
  QStringList logs;
  QDirIterator it(t.db->PathDB() + "ErrLogs", {"*.log"}, QDir::Files, QDirIterator::Subdirectories);
  while (it.hasNext()) {
    QFile f(it.next());
    f.open(QIODevice::ReadOnly);
    logs << it.fileName() + ": " + QString::fromUtf8(f.readAll()).trimmed();
  }
  EXPECT_TRUE(logs.isEmpty()) << logs.join("\n").toStdString();
}

// A recording on the "Rilevazione start e stop" that is opening: the day, the
// operator, the start, and the end when given (fine invalid: left open).
void Registrazione(const QDate& giorno, int operatore, const QTime& inizio, const QTime& fine) {
  Quando([=](QWidget* w) {
    auto* r = qobject_cast<frmGestForfSemplImm*>(w);
    ASSERT_TRUE(r);
    r->DTPicker1->setDate(giorno);
    SetCBValue(r->CBOperatore, operatore, 0);
    r->DTInizio->setTime(inizio);
    r->chkFine->setChecked(fine.isValid());
    if (fine.isValid()) r->DtFine->setTime(fine);
    r->Bottone(3)->trigger();  // saves and closes
  });
}

// The road of a simplified forfait model: a new model of a forfait type, a
// new card with its description, a recording started and left open, closed
// later; the lists, the register and the price meeting the open recording.
TEST(Percorso, ASimplifiedForfaitModelWithStartAndStopRecordings) {
  TestDb t;
  t.Exec("INSERT INTO AnagTipo (TAnag, Descrizione) VALUES (1, 'Clienti')");
  t.Exec("INSERT INTO Anagrafica (TAnag, CAnag, RagSoc1, CostoH) VALUES (1, 1, 'Officina Rossi', 0), "
         "(10, 1, 'Mario Verdi', 0), (10, 2, 'Luca Neri', 0)");
  t.Exec("INSERT INTO ProjectsTipo (CPrjTipo, DPrjTipo, GestForfSempl) VALUES (1, 'Assistenza', -1)");
  // An hourly tariff of 60 for the forfait's dispositions, which have no type: one euro a minute.
  t.Exec("INSERT INTO ProjectsDispTar (CPrjTipo, CPrjDispTipo, TarMin, TarMax, TarH) VALUES (1, 0, 0, 0, 60)");
  gCurUtente = 1;
  qputenv("TEMP", t.Path().toLocal8Bit());
  OCPrestKT ctl;
  ctl.Initialize();
  ctl.SetDtIni(D(2026, 1, 1));
  ctl.SetDTEnd(D(2026, 12, 31));
  ctl.SetStatus(-1);
  ctl.DBConn(t.db, 1, QIcon(), t.Path() + "/documenti", 1);
  auto* registro = ctl.findChild<ListView*>("ListView1");
  ASSERT_EQ(registro->Count(), 0);

  QString fineAperta = "-", fineChiusa, tempo;
  int righeCard = -1, registrazioni = -1;
  Quando([&](QWidget* w) {
    auto* m = qobject_cast<frmModelli*>(w);
    ASSERT_TRUE(m);
    m->DTProject->setDate(QDate(2026, 3, 2));
    SetCBValue(m->CBCAnag, 1, 0);
    SetCBValue(m->CBTipoPrj, 1, 0);
    m->TBDProject->setText("Assistenza presse");
    EXPECT_TRUE(m->SSTab1->isTabVisible(3));
    m->SSTab1->setCurrentIndex(3);
    t.messages->answers.push_back(vbYes);  // "Per procedere devo salvare il modello, proseguo?"
    Quando([&](QWidget* w2) {
      auto* c = qobject_cast<frmGestForfSempl*>(w2);
      ASSERT_TRUE(c);
      c->TBDDisp->setText("Manutenzione marzo");
      // Started and left open: adding saves the new card first.
      Registrazione(QDate(2026, 3, 10), 1, QTime(9, 0), QTime());
      c->Bottone(5)->trigger();
      ASSERT_EQ(c->lvwPrest->Count(), 1);
      fineAperta = c->lvwPrest->Text(0, 4);
      // Closed later, in mode 1.
      c->lvwPrest->SetSelected(0);
      Quando([&](QWidget* w3) {
        auto* r = qobject_cast<frmGestForfSemplImm*>(w3);
        ASSERT_TRUE(r);
        EXPECT_EQ(r->Azione, 1);
        EXPECT_FALSE(r->chkFine->isChecked());
        r->chkFine->setChecked(true);
        r->DtFine->setTime(QTime(11, 15));
        r->Bottone(3)->trigger();
      });
      c->Bottone(6)->trigger();
      fineChiusa = c->lvwPrest->Text(0, 4);
      // Another one, left open.
      Registrazione(QDate(2026, 3, 11), 2, QTime(14, 0), QTime());
      c->Bottone(5)->trigger();
      righeCard = c->lvwPrest->Count();
      c->Bottone(1)->trigger();
    });
    m->Bottone(7)->trigger();
    registrazioni = m->lvwRegistrazioni->Count();
    m->Bottone(1)->trigger();
  });
  ctl.Aggiungi();
  // The model opened again from the register: its registration with the time of the closed recording.
  registro->SetSelected(0);
  Quando([&](QWidget* w) {
    auto* m = qobject_cast<frmModelli*>(w);
    ASSERT_TRUE(m);
    m->SSTab1->setCurrentIndex(3);
    if (m->lvwRegistrazioni->Count() > 0) tempo = m->lvwRegistrazioni->Text(0, 4);
    m->Bottone(1)->trigger();
  });
  ctl.Modifica();

  const int cProject = 202600001;
  EXPECT_EQ(t.Scalar("SELECT DProject FROM Projects WHERE CProject=202600001").toString(), "Assistenza presse");
  EXPECT_EQ(registro->Count(), 1);
  EXPECT_EQ(registro->Key(0), "K202600001");
  EXPECT_EQ(fineAperta, " ");  // an empty value shows as one blank in the lists
  EXPECT_EQ(fineChiusa, "11:15");
  EXPECT_EQ(righeCard, 2);
  EXPECT_EQ(registrazioni, 1);
  EXPECT_EQ(tempo, "02:15");  // the open recording doesn't count
  EXPECT_EQ(t.Scalar("SELECT DDisp FROM ProjectsDisp WHERE CProject=202600001 AND CDisp=1").toString(),
            "Manutenzione marzo");
  EXPECT_EQ(t.Scalar("SELECT Count(*) FROM ActivitiesProd WHERE CProject=202600001 AND CDisp=1").toInt(), 2);
  EXPECT_EQ(t.Scalar("SELECT Count(*) FROM ActivitiesProd WHERE DtEnd IS NULL").toInt(), 1);
  EXPECT_EQ(t.Scalar("SELECT CAttivita FROM ActivitiesProd WHERE DtEnd IS NOT NULL").toInt(), 202600001);
  EXPECT_EQ(CDate(t.Scalar("SELECT DtEnd FROM ActivitiesProd WHERE CAttivita=202600001")),
            QDateTime(QDate(2026, 3, 10), QTime(11, 15)));

  // The price meets the open recording as a failed duration: it keeps the
  // minutes of the row before, so 135 + 135 at one euro a minute.
  EXPECT_DOUBLE_EQ(ctl.CalcDatiDisp(cProject, 1), 270);
  // The calculator lists the open recording with the minutes of the row before.
  QStringList tempi;
  Quando([&](QWidget* w) {
    auto* c = qobject_cast<frmCalcPzVend*>(w);
    ASSERT_TRUE(c);
    for (int i = 0; i < c->lvwEsecInt->Count(); ++i) tempi << c->lvwEsecInt->Text(i, 5);
    tempi << c->lvwEsecIntTot->Text(0, 5);
    c->Bottone(1)->trigger();
  });
  ctl.EditDisp(cProject, 1, 1, 0);
  EXPECT_EQ(tempi, QStringList({"02:15", "02:15", "04:30"}));
  EXPECT_EQ(t.LogLines("frmCalcPzVend", "CaricaListEsecInt").size(), 1);
  // The four settings missing from a fresh folder fail as well, each on its own line.
  EXPECT_EQ(t.LogLines("OCPrestKT", "CalcDatiDisp").filter("Invalid use of Null (94)").size(), 1);
}
