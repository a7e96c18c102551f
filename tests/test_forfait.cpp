// The simplified forfait card and its start and stop recordings.
#include <gtest/gtest.h>

#include <QApplication>
#include <QLabel>
#include <QTest>
#include <QTimer>
#include <functional>

#include "ModADO.h"
#include "ProcedureUi.h"
#include "TestSupport.h"
#include "frmGestForfSempl.h"
#include "frmGestForfSemplImm.h"

using namespace prestkt;
using namespace prestkt::test;

namespace {

constexpr int kModello = 202500001;

// A customer's model of a type handled as a simplified forfait, the operators
// (one of them deleted) and a service kind.
void Base(TestDb& t) {
  t.Exec("INSERT INTO AnagTipo (TAnag, Descrizione) VALUES (1, 'Clienti'), (10, 'Dipendenti')");
  t.Exec("INSERT INTO Anagrafica (TAnag, CAnag, RagSoc1, CostoH, Eliminato) VALUES "
         "(1, 1, 'Officina Rossi', 0, 0), (10, 1, 'Bruno Verdi', 30, 0), (10, 2, 'Anna Neri', 25, 0), "
         "(10, 3, 'Carlo Andato', 20, -1)");
  t.Exec("INSERT INTO TabGen (CTipTabGen, CTabGen, DTabGen, Sigla, Bool8) VALUES (12, 1, 'Tornitura', 'TO', 0)");
  t.Exec("INSERT INTO ProjectsTipo (CPrjTipo, DPrjTipo, GestForfSempl) VALUES (1, 'Assistenza', -1)");
  t.Exec("INSERT INTO Projects (CProject, DProject, CPrjTipo, TAnag, CAnag, DtIni, Stato) VALUES "
         "(202500001, 'Manutenzione presse', 1, 1, 1, '2025-01-10 00:00:00', 0), "
         "(202500002, 'Altro modello', 1, 1, 1, '2025-01-12 00:00:00', 0)");
}

// The card as the model card opens it: members set, Form_Load, Reload connected.
struct Card {
  Card(int azione, int cDisp) {
    CaricaDatiModello(kModello);
    f.Azione = azione;
    f.CProject = kModello;
    f.CDisp = cDisp;
    f.RagSoc1 = "Officina Rossi";
    f.DProject = "Manutenzione presse";
    QObject::connect(&f, &frmGestForfSempl::Reload, [this](int& c) {
      ricaricate.push_back(c);
      numeroMostrato.push_back(static_cast<int>(f.NumericSpin1->Value()));
      // What the model card reloads from: the working copy already holds the row.
      RecordsetPtr rs = gRcsDisp->Clone();
      rs->SetFilter("CDisp=" + QString::number(c));
      righeInMemoria.push_back(rs->RecordCount());
    });
    f.Form_Load();
    f.show();
  }
  frmGestForfSempl f;
  std::vector<int> ricaricate;
  std::vector<int> numeroMostrato;
  std::vector<int> righeInMemoria;
};

// The recording screen as the forfait card opens it, with the card's copy.
struct Rilevazione {
  Rilevazione(int azione, int cDisp, int cAttivita = 0) {
    CaricaDatiModello(kModello);
    ADO2ADO(gRcsAct, f.rcsAct, true, false, "CDisp=" + QString::number(cDisp));
    f.CProject = kModello;
    f.CDisp = cDisp;
    f.Azione = azione;
    f.CAttivita = cAttivita;
    QObject::connect(&f, &frmGestForfSemplImm::Reload, [this](int& c) { ricaricate.push_back(c); });
    f.Form_Load();
    f.show();
  }
  // A recording of Bruno Verdi on the day, from start to end (no end: open).
  void Compila(const QDate& giorno, const QTime& inizio, const QTime& fine = {}) {
    f.DTPicker1->setDate(giorno);
    SetCBValue(f.CBOperatore, 1, 0);
    f.DTInizio->setTime(inizio);
    f.chkFine->setChecked(fine.isValid());
    if (fine.isValid()) f.DtFine->setTime(fine);
  }
  frmGestForfSemplImm f;
  std::vector<int> ricaricate;
};

// Runs f on the recording screen when a card opens it, and counts the openings.
// Nothing runs when no such screen comes; Scarica lets a pending look end.
struct AllaRilevazione {
  explicit AllaRilevazione(std::function<void(frmGestForfSemplImm&)> f) {
    QTimer::singleShot(0, [this, f] {
      if (auto* w = qobject_cast<frmGestForfSemplImm*>(QApplication::activeModalWidget())) {
        ++aperture;
        f(*w);
        if (w->isVisible()) w->done(0);  // a screen left open would hold the test
      }
    });
  }
  ~AllaRilevazione() { Scarica(); }
  static void Scarica() { QCoreApplication::processEvents(); }
  int aperture = 0;
};

int Disposizioni(TestDb& t) { return t.Scalar("SELECT Count(*) FROM ProjectsDisp").toInt(); }
int Attivita(TestDb& t) { return t.Scalar("SELECT Count(*) FROM ActivitiesProd").toInt(); }

QVariant Disp(TestDb& t, const QString& campo, int cDisp, int cProject = kModello) {
  return t.Scalar(QString("SELECT %1 FROM ProjectsDisp WHERE CProject=%2 AND CDisp=%3").arg(campo).arg(cProject).arg(cDisp));
}
bool DispNull(TestDb& t, const QString& campo, int cDisp) {
  return t.Scalar(QString("SELECT Count(*) FROM ProjectsDisp WHERE CProject=%1 AND CDisp=%2 AND %3 IS NULL")
                      .arg(kModello)
                      .arg(cDisp)
                      .arg(campo))
             .toInt() == 1;
}
QVariant Att(TestDb& t, const QString& campo, int codice) {
  return t.Scalar(QString("SELECT %1 FROM ActivitiesProd WHERE CAttivita=%2").arg(campo).arg(codice));
}
bool AttNull(TestDb& t, const QString& campo, int codice) {
  return t.Scalar(QString("SELECT Count(*) FROM ActivitiesProd WHERE CAttivita=%1 AND %2 IS NULL").arg(codice).arg(campo))
             .toInt() == 1;
}

// The screen becomes the active window, as the user's screen is, and the
// focus stands elsewhere: a message then has a field to move it to.
void Attiva(Scheda& w, QWidget* altrove) {
  w.activateWindow();
  QApplication::setActiveWindow(&w);
  altrove->setFocus();
}

QStringList Etichette(QWidget* w) {
  QStringList v;
  for (QLabel* l : w->findChildren<QLabel*>()) v << l->text();
  return v;
}

QStringList Voci(QComboBox* c) {
  QStringList v;
  for (int i = 0; i < c->count(); ++i) v << c->itemText(i);
  return v;
}

QStringList Prompts(TestDb& t) {
  QStringList v;
  for (const Asked& a : t.messages->asked) v << a.prompt;
  return v;
}

// Disposition 1 of the model with three recordings: a closed one, one still
// open and one of an operator no longer in the register; disposition 2 with one.
void Registrazioni(TestDb& t) {
  t.Exec("INSERT INTO ProjectsDisp (CProject, CDisp, CPrjDispTipo, DDisp, Data, CStato) VALUES "
         "(202500001, 1, 0, 'Revisione stampo', '2025-02-03 00:00:00', 0), "
         "(202500001, 2, 0, 'Taratura', '2025-02-10 00:00:00', 0)");
  t.Exec("INSERT INTO ActivitiesProd (CAttivita, CProject, CDisp, CUtente, CPrestazione, DtIni, DtEnd, Stato) VALUES "
         "(202500004, 202500001, 1, 2, 0, '2025-02-04 08:15:00', '2025-02-04 10:30:00', 0), "
         "(202500005, 202500001, 1, 1, 0, '2025-02-05 14:05:00', NULL, 0), "
         "(202500006, 202500001, 1, 77, 0, '2025-02-06 07:00:00', '2025-02-06 07:45:00', 0), "
         "(202500007, 202500001, 2, 1, 0, '2025-02-11 09:00:00', '2025-02-11 09:30:00', 0)");
}

}  // namespace

// ---------------------------------------------------------------- the card

TEST(frmGestForfSempl, NewCardFace) {
  TestDb t;
  Base(t);
  Card c(2, 0);
  EXPECT_EQ(c.f.objectName(), "frmGestForfSempl");
  EXPECT_EQ(c.f.windowTitle(), "Scheda forfait semplificata");
  EXPECT_EQ(c.f.Bottone(1)->toolTip(), "Esci");
  EXPECT_TRUE(c.f.Bottone(2)->isSeparator());
  EXPECT_EQ(c.f.Bottone(3)->toolTip(), "Salva");
  EXPECT_TRUE(c.f.Bottone(4)->isSeparator());
  for (int b : {5, 6, 7}) EXPECT_FALSE(c.f.Bottone(b)->isSeparator()) << b;
  EXPECT_EQ(c.f.mnuFE->text(), "&Esci");
  EXPECT_EQ(c.f.mnuFS->text(), "&Salva");
  EXPECT_EQ(c.f.mnuAdd->text(), "&Aggiungi");
  EXPECT_EQ(c.f.mnuEdit->text(), "&Modifica");
  EXPECT_EQ(c.f.mnuDel->text(), "&Elimina");
  const QStringList etichette = Etichette(&c.f);
  for (const char* e : {"Anagrafica:", "Modello:", "Disp n°:", "Data:", "Descrizione:", "n° fattura:"})
    EXPECT_TRUE(etichette.contains(e)) << e;
  EXPECT_EQ(c.f.chkClosed->text(), "Chiudi disposizione:");
  EXPECT_EQ(c.f.chkFatt->text(), "Fatturato:");
  EXPECT_EQ(c.f.TBAnag->text(), "Officina Rossi");
  EXPECT_EQ(c.f.TBDProject->text(), "Manutenzione presse");
  EXPECT_EQ(c.f.NumericSpin1->Value(), 0);
  EXPECT_EQ(c.f.DTPicker1->date(), QDate::currentDate());
  EXPECT_EQ(c.f.DTEnd->date(), QDate::currentDate());
  EXPECT_TRUE(c.f.TBDDisp->text().isEmpty());
  EXPECT_FALSE(c.f.chkClosed->isChecked());
  // The number and the shown texts can't be edited; closing waits for a saved disposition.
  EXPECT_FALSE(c.f.OCFrame2->isEnabled());
  EXPECT_TRUE(c.f.NumericSpin1->parentWidget() == c.f.OCFrame2);
  EXPECT_FALSE(c.f.OCFrame9->isEnabled());
  EXPECT_TRUE(c.f.chkClosed->parentWidget() == c.f.OCFrame9);
  EXPECT_TRUE(c.f.DTEnd->parentWidget() == c.f.OCFrame9);
  // The invoice frame stays hidden and disabled.
  EXPECT_TRUE(c.f.OCFrame10->isHidden());
  EXPECT_FALSE(c.f.OCFrame10->isEnabled());
  EXPECT_TRUE(c.f.chkFatt->parentWidget() == c.f.OCFrame10);
  EXPECT_TRUE(c.f.OCNFatt->parentWidget() == c.f.OCFrame10);
  ListView* l = c.f.lvwPrest;
  ASSERT_EQ(l->ColumnCount(), 5);
  EXPECT_EQ(l->ColumnText(0), "");
  EXPECT_EQ(l->ColumnText(1), "Data");
  EXPECT_EQ(l->ColumnText(2), "Utente");
  EXPECT_EQ(l->ColumnText(3), "Inizio");
  EXPECT_EQ(l->ColumnText(4), "Fine");
  EXPECT_EQ(l->Count(), 0);
  ASSERT_TRUE(c.f.rcsAct);
  EXPECT_EQ(c.f.rcsAct->RecordCount(), 0);
  EXPECT_FALSE(c.f.DaSalvare());
  EXPECT_FALSE(c.f.Bottone(3)->isEnabled());
  EXPECT_FALSE(c.f.mnuFS->isEnabled());
  EXPECT_TRUE(t.LogLines("frmGestForfSempl", "Form_Load").isEmpty());
  EXPECT_TRUE(t.LogLines("frmGestForfSempl", "CaricaListPrest").isEmpty());
}

TEST(frmGestForfSempl, ExistingCardShowsTheDispositionAndItsRecordings) {
  TestDb t;
  Base(t);
  Registrazioni(t);
  Card c(1, 1);
  EXPECT_EQ(c.f.NumericSpin1->Value(), 1);
  EXPECT_EQ(c.f.DTPicker1->date(), QDate(2025, 2, 3));
  EXPECT_EQ(c.f.TBDDisp->text(), "Revisione stampo");
  EXPECT_FALSE(c.f.chkClosed->isChecked());
  EXPECT_EQ(c.f.DTEnd->date(), QDate::currentDate());  // no end yet: today
  EXPECT_FALSE(c.f.chkFatt->isChecked());
  EXPECT_TRUE(c.f.OCFrame9->isEnabled());
  // The card's own copy holds this disposition's recordings only.
  EXPECT_EQ(c.f.rcsAct->RecordCount(), 3);
  ListView* l = c.f.lvwPrest;
  ASSERT_EQ(l->Count(), 3);
  const int a = l->IndexOfKey("K202500004");
  const int b = l->IndexOfKey("K202500005");
  const int u = l->IndexOfKey("K202500006");
  ASSERT_GE(a, 0);
  ASSERT_GE(b, 0);
  ASSERT_GE(u, 0);
  EXPECT_EQ(l->IndexOfKey("K202500007"), -1);
  EXPECT_EQ(l->Text(a, 1), "04/02/2025");
  EXPECT_EQ(l->Text(a, 2), "Anna Neri");
  EXPECT_EQ(l->Text(a, 3), "08:15");
  EXPECT_EQ(l->Text(a, 4), "10:30");
  // A recording still open shows no end.
  EXPECT_EQ(l->Text(b, 1), "05/02/2025");
  EXPECT_EQ(l->Text(b, 2), "Bruno Verdi");
  EXPECT_EQ(l->Text(b, 3), "14:05");
  EXPECT_TRUE(l->Text(b, 4).trimmed().isEmpty());
  EXPECT_EQ(l->Text(u, 2), "Utente sconosciuto");
  EXPECT_EQ(l->Text(u, 4), "07:45");
  EXPECT_TRUE(l->isVisible());
  EXPECT_FALSE(c.f.DaSalvare());
  EXPECT_FALSE(c.f.Bottone(3)->isEnabled());
}

TEST(frmGestForfSempl, InvoicedDispositionShowsClosedAndInvoiced) {
  TestDb t;
  Base(t);
  t.Exec("INSERT INTO ProjectsDisp (CProject, CDisp, DDisp, Data, CStato, DtEnd) VALUES "
         "(202500001, 1, 'Fatturata', '2025-02-03 00:00:00', 19, '2025-03-01 00:00:00'), "
         "(202500001, 2, 'Chiusa', '2025-02-03 00:00:00', 9, '2025-03-02 00:00:00')");
  {
    Card c(1, 1);
    EXPECT_TRUE(c.f.chkClosed->isChecked());
    EXPECT_TRUE(c.f.chkFatt->isChecked());
    EXPECT_EQ(c.f.DTEnd->date(), QDate(2025, 3, 1));
    EXPECT_FALSE(c.f.DaSalvare());
  }
  Card c(1, 2);
  EXPECT_TRUE(c.f.chkClosed->isChecked());
  EXPECT_FALSE(c.f.chkFatt->isChecked());
  EXPECT_EQ(c.f.DTEnd->date(), QDate(2025, 3, 2));
}

TEST(frmGestForfSempl, FirstDispositionOfAModelIsNumberOne) {
  TestDb t;
  Base(t);
  t.Exec("INSERT INTO ProjectsDisp (CProject, CDisp, DDisp) VALUES (202500002, 5, 'Di un altro modello')");
  Card c(2, 0);
  c.f.TBDDisp->setText("Prima");
  ASSERT_TRUE(c.f.Salva());
  EXPECT_EQ(c.f.CDisp, 1);
  EXPECT_EQ(Disp(t, "DDisp", 1).toString(), "Prima");
}

TEST(frmGestForfSempl, NewDispositionTakesTheNextNumberAndEveryOwnedField) {
  TestDb t;
  Base(t);
  t.Exec("INSERT INTO ProjectsDisp (CProject, CDisp, DDisp) VALUES (202500001, 1, 'Uno'), (202500001, 3, 'Tre')");
  Card c(2, 0);
  c.f.TBDDisp->setText("  Controllo annuale  ");
  c.f.DTPicker1->setDate(QDate(2025, 6, 12));
  EXPECT_TRUE(c.f.DaSalvare());
  EXPECT_TRUE(c.f.Bottone(3)->isEnabled());
  EXPECT_TRUE(c.f.mnuFS->isEnabled());
  ASSERT_TRUE(c.f.Salva());
  EXPECT_EQ(c.f.CDisp, 4);
  EXPECT_EQ(c.f.Azione, 1);
  EXPECT_FALSE(c.f.DaSalvare());
  EXPECT_FALSE(c.f.Bottone(3)->isEnabled());
  EXPECT_EQ(Disposizioni(t), 3);
  EXPECT_EQ(Disp(t, "DDisp", 4).toString(), "Controllo annuale");
  EXPECT_EQ(Disp(t, "Data", 4).toDateTime(), D(2025, 6, 12));
  EXPECT_EQ(Disp(t, "CStato", 4).toInt(), 0);
  EXPECT_TRUE(DispNull(t, "DtEnd", 4));
  EXPECT_EQ(Disp(t, "CPrjDispTipo", 4).toInt(), 0);
  EXPECT_EQ(Disp(t, "Coalesce(Annot, '')", 4).toString(), "");
  EXPECT_EQ(Disp(t, "Qta", 4).toDouble(), 0);
  EXPECT_EQ(Disp(t, "DefPzVend", 4).toInt(), 0);
  EXPECT_EQ(Disp(t, "PzVend", 4).toDouble(), 0);
  // Two events, the number shown between them; the working copy was reloaded before the first.
  EXPECT_EQ(c.ricaricate, std::vector<int>({4, 4}));
  EXPECT_EQ(c.numeroMostrato, std::vector<int>({0, 4}));
  EXPECT_EQ(c.righeInMemoria, std::vector<int>({1, 1}));
  EXPECT_EQ(c.f.NumericSpin1->Value(), 4);
  EXPECT_TRUE(t.messages->asked.empty());
  EXPECT_TRUE(t.LogLines("frmGestForfSempl", "Salva").isEmpty());
  EXPECT_TRUE(t.LogLines("frmGestForfSempl", "SalvaDisp").isEmpty());
  // A second save changes the same row and tells the model card twice again.
  c.f.TBDDisp->setText("Controllo semestrale");
  ASSERT_TRUE(c.f.Salva());
  EXPECT_EQ(Disposizioni(t), 3);
  EXPECT_EQ(Disp(t, "DDisp", 4).toString(), "Controllo semestrale");
  EXPECT_EQ(c.ricaricate, std::vector<int>({4, 4, 4, 4}));
}

TEST(frmGestForfSempl, SaveOwnsTheRowAndDeletesItsServiceKinds) {
  TestDb t;
  Base(t);
  t.Exec("INSERT INTO ProjectsDisp (CProject, CDisp, CPrjDispTipo, DDisp, Data, Qta, PzVend, DefPzVend, CStato, Annot) "
         "VALUES (202500001, 1, 3, 'Ripresa', '2025-02-03 00:00:00', 5, 12.5, -1, 0, 'vecchia nota'), "
         "(202500001, 2, 3, 'Altra', '2025-02-03 00:00:00', 2, 1, -1, 0, 'resta')");
  t.Exec("INSERT INTO ProjectsDispDett (CProject, CDisp, CPrestazione) VALUES (202500001, 1, 1), (202500001, 1, 2), "
         "(202500001, 2, 1)");
  Card c(1, 1);
  c.f.DTPicker1->setDate(QDate(2025, 2, 4));
  ASSERT_TRUE(c.f.Salva());
  EXPECT_EQ(Disp(t, "DDisp", 1).toString(), "Ripresa");
  EXPECT_EQ(Disp(t, "Data", 1).toDateTime(), D(2025, 2, 4));
  EXPECT_EQ(Disp(t, "CPrjDispTipo", 1).toInt(), 0);
  EXPECT_EQ(Disp(t, "Qta", 1).toDouble(), 0);
  EXPECT_EQ(Disp(t, "PzVend", 1).toDouble(), 0);
  EXPECT_EQ(Disp(t, "DefPzVend", 1).toInt(), 0);
  EXPECT_EQ(Disp(t, "Coalesce(Annot, '')", 1).toString(), "");
  EXPECT_EQ(t.Scalar("SELECT Count(*) FROM ProjectsDispDett WHERE CDisp=1").toInt(), 0);
  // The other disposition keeps all of its own.
  EXPECT_EQ(t.Scalar("SELECT Count(*) FROM ProjectsDispDett WHERE CDisp=2").toInt(), 1);
  EXPECT_EQ(Disp(t, "Qta", 2).toDouble(), 2);
  EXPECT_EQ(Disp(t, "Annot", 2).toString(), "resta");
  EXPECT_EQ(c.ricaricate, std::vector<int>({1, 1}));
  EXPECT_EQ(Disposizioni(t), 2);
}

TEST(frmGestForfSempl, InvoicedDispositionSavedHereFallsBackToClosed) {
  TestDb t;
  Base(t);
  t.Exec("INSERT INTO ProjectsDisp (CProject, CDisp, DDisp, Data, CStato, DtEnd) VALUES "
         "(202500001, 1, 'Fatturata', '2025-02-03 00:00:00', 19, '2025-03-01 00:00:00')");
  Card c(1, 1);
  c.f.TBDDisp->setText("Fatturata e corretta");
  ASSERT_TRUE(c.f.Salva());
  EXPECT_EQ(Disp(t, "CStato", 1).toInt(), 9);
  EXPECT_EQ(Disp(t, "DtEnd", 1).toDateTime(), D(2025, 3, 1));
}

TEST(frmGestForfSempl, ClosingAndReopening) {
  TestDb t;
  Base(t);
  t.Exec("INSERT INTO ProjectsDisp (CProject, CDisp, DDisp, Data, CStato) VALUES "
         "(202500001, 1, 'Aperta', '2025-02-03 00:00:00', 0)");
  {
    Card c(1, 1);
    c.f.chkClosed->setChecked(true);
    EXPECT_TRUE(c.f.DaSalvare());
    c.f.SetDaSalvare(false);
    c.f.DTEnd->setDate(QDate(2025, 4, 30));
    EXPECT_TRUE(c.f.DaSalvare());
    ASSERT_TRUE(c.f.Salva());
    EXPECT_EQ(Disp(t, "CStato", 1).toInt(), 9);
    EXPECT_EQ(Disp(t, "DtEnd", 1).toDateTime(), D(2025, 4, 30));
  }
  // Reopening: unchecked, the state is 0 again and the end date is emptied.
  Card c(1, 1);
  EXPECT_TRUE(c.f.chkClosed->isChecked());
  EXPECT_EQ(c.f.DTEnd->date(), QDate(2025, 4, 30));
  c.f.chkClosed->setChecked(false);
  EXPECT_TRUE(c.f.DaSalvare());
  ASSERT_TRUE(c.f.Salva());
  EXPECT_EQ(Disp(t, "CStato", 1).toInt(), 0);
  EXPECT_TRUE(DispNull(t, "DtEnd", 1));
}

TEST(frmGestForfSempl, DescriptionRequired) {
  TestDb t;
  Base(t);
  Card c(2, 0);
  for (const char* testo : {"", "    "}) {
    t.messages->asked.clear();
    c.f.TBDDisp->setText(testo);
    Attiva(c.f, c.f.DTPicker1);
    ASSERT_FALSE(c.f.TBDDisp->hasFocus());
    EXPECT_FALSE(c.f.Salva());
    ASSERT_EQ(t.messages->asked.size(), 1u);
    EXPECT_EQ(t.messages->asked[0].prompt, "Devi inserire una descrizione!");
    EXPECT_EQ(t.messages->asked[0].buttons, vbExclamation);
    EXPECT_TRUE(c.f.TBDDisp->hasFocus());
  }
  EXPECT_EQ(Disposizioni(t), 0);
  EXPECT_EQ(c.f.Azione, 2);
  EXPECT_TRUE(c.ricaricate.empty());
}

TEST(frmGestForfSempl, SameDescriptionAsAnotherDispositionOfTheModel) {
  TestDb t;
  Base(t);
  t.Exec("INSERT INTO ProjectsDisp (CProject, CDisp, DDisp, Data) VALUES "
         "(202500001, 1, 'Revisione stampo', '2025-02-03 00:00:00'), "
         "(202500001, 2, 'Taratura', '2025-02-03 00:00:00'), "
         "(202500002, 1, 'Lavaggio', '2025-02-03 00:00:00')");
  {
    // A new one, the text in other case: the database compares without regard to it.
    Card c(2, 0);
    c.f.TBDDisp->setText("REVISIONE STAMPO");
    Attiva(c.f, c.f.DTPicker1);
    ASSERT_FALSE(c.f.TBDDisp->hasFocus());
    EXPECT_FALSE(c.f.Salva());
    ASSERT_EQ(t.messages->asked.size(), 1u);
    EXPECT_EQ(t.messages->asked[0].prompt, "Esiste già un modello chiamato 'REVISIONE STAMPO'!");
    EXPECT_EQ(t.messages->asked[0].buttons, vbExclamation);
    EXPECT_TRUE(c.f.TBDDisp->hasFocus());
    EXPECT_EQ(c.f.Azione, 2);
    EXPECT_EQ(Disposizioni(t), 3);
    // A text of another model's disposition is free here.
    c.f.TBDDisp->setText("Lavaggio");
    EXPECT_TRUE(c.f.Salva());
    EXPECT_EQ(c.f.CDisp, 3);
  }
  {
    // The disposition itself doesn't count.
    t.messages->asked.clear();
    Card c(1, 1);
    c.f.TBDDisp->setText("  Revisione stampo ");
    EXPECT_TRUE(c.f.Salva());
    EXPECT_TRUE(t.messages->asked.empty());
  }
  // Another one of the model with the same text, trimmed, does.
  Card c(1, 2);
  c.f.TBDDisp->setText(" revisione stampo  ");
  EXPECT_FALSE(c.f.Salva());
  ASSERT_EQ(t.messages->asked.size(), 1u);
  EXPECT_EQ(t.messages->asked[0].prompt, "Esiste già un modello chiamato 'revisione stampo'!");
  EXPECT_EQ(Disp(t, "DDisp", 2).toString(), "Taratura");
  EXPECT_TRUE(c.ricaricate.empty());
}

// A new card looks for the text as typed; the row keeps it trimmed.
TEST(frmGestForfSempl, NewCardLooksForTheTextAsTyped) {
  TestDb t;
  Base(t);
  t.Exec("INSERT INTO ProjectsDisp (CProject, CDisp, DDisp) VALUES (202500001, 1, 'Taratura')");
  Card c(2, 0);
  c.f.TBDDisp->setText("Taratura ");
  EXPECT_TRUE(c.f.Salva());
  EXPECT_TRUE(t.messages->asked.empty());
  EXPECT_EQ(Disp(t, "DDisp", 2).toString(), "Taratura");
}

TEST(frmGestForfSempl, ApostropheQuotesAndBracketsInTheDescription) {
  TestDb t;
  Base(t);
  t.Exec("INSERT INTO ProjectsDisp (CProject, CDisp, DDisp) VALUES (202500001, 1, 'Revisione dell''asse')");
  const QString ostile = "Perno \"A\" [rev. (2)]; l'asse % _ * ? # -- ')";
  {
    Card c(2, 0);
    c.f.TBDDisp->setText("Revisione dell'asse");
    EXPECT_FALSE(c.f.Salva());
    ASSERT_EQ(t.messages->asked.size(), 1u);
    EXPECT_EQ(t.messages->asked[0].prompt, "Esiste già un modello chiamato 'Revisione dell'asse'!");
    c.f.TBDDisp->setText(ostile);
    ASSERT_TRUE(c.f.Salva());
    EXPECT_EQ(c.f.CDisp, 2);
  }
  EXPECT_EQ(Disp(t, "DDisp", 2).toString(), ostile);
  // Read back on the card as it was typed.
  Card c(1, 2);
  EXPECT_EQ(c.f.TBDDisp->text(), ostile);
  c.f.TBDDisp->setText(ostile + " bis");
  ASSERT_TRUE(c.f.Salva());
  EXPECT_EQ(Disp(t, "DDisp", 2).toString(), ostile + " bis");
  EXPECT_TRUE(t.LogLines("frmGestForfSempl", "Salva").isEmpty());
  EXPECT_TRUE(t.LogLines("frmGestForfSempl", "SalvaDisp").isEmpty());
  EXPECT_TRUE(t.LogLines("Procedure", "QueryExe").isEmpty());
}

// The shared quoting turns a double quote into two single quotes, so a text
// with a double quote is looked for in that form and not found as stored.
TEST(frmGestForfSempl, DoubleQuoteIsLookedForAsTwoSingleQuotes) {
  TestDb t;
  Base(t);
  t.Exec("INSERT INTO ProjectsDisp (CProject, CDisp, DDisp) VALUES (202500001, 1, 'Perno ''''A'''''), "
         "(202500001, 2, 'Perno \"B\"')");
  Card c(2, 0);
  c.f.TBDDisp->setText("Perno \"A\"");
  EXPECT_FALSE(c.f.Salva());
  ASSERT_EQ(t.messages->asked.size(), 1u);
  EXPECT_EQ(t.messages->asked[0].prompt, "Esiste già un modello chiamato 'Perno \"A\"'!");
  c.f.TBDDisp->setText("Perno \"B\"");
  EXPECT_TRUE(c.f.Salva());
  EXPECT_EQ(t.Scalar("SELECT Count(*) FROM ProjectsDisp WHERE DDisp='Perno \"B\"'").toInt(), 2);
}

// The column holds 255 characters: the field takes no more.
TEST(frmGestForfSempl, DescriptionOf255And256Characters) {
  TestDb t;
  Base(t);
  ASSERT_EQ(TestoMassimo("ProjectsDisp", "DDisp"), 255);
  const QString a255 = QString(254, 'a') + 'z';
  {
    Card c(2, 0);
    c.f.TBDDisp->setText(a255);
    ASSERT_TRUE(c.f.Salva());
    EXPECT_EQ(Disp(t, "DDisp", 1).toString(), a255);
  }
  Card c(2, 0);
  Attiva(c.f, c.f.TBDDisp);
  c.f.TBDDisp->setText(QString(255, 'b'));
  c.f.TBDDisp->end(false);
  QTest::keyClicks(c.f.TBDDisp, "X");
  EXPECT_EQ(c.f.TBDDisp->text(), QString(255, 'b'));
  c.f.TBDDisp->setText(QString(255, 'c') + "Y");  // a paste keeps its first part
  EXPECT_EQ(c.f.TBDDisp->text(), QString(255, 'c'));
  ASSERT_TRUE(c.f.Salva());
  EXPECT_EQ(Disp(t, "DDisp", 2).toString(), QString(255, 'c'));
  EXPECT_EQ(Disp(t, "Length(DDisp)", 2).toInt(), 255);
}

TEST(frmGestForfSempl, EachFieldMarksTheCardToSave) {
  TestDb t;
  Base(t);
  t.Exec("INSERT INTO ProjectsDisp (CProject, CDisp, DDisp, Data) VALUES (202500001, 1, 'Uno', '2025-02-03 00:00:00')");
  Card c(1, 1);
  EXPECT_FALSE(c.f.DaSalvare());
  Attiva(c.f, c.f.TBDDisp);
  QTest::keyClicks(c.f.TBDDisp, "x");
  EXPECT_TRUE(c.f.DaSalvare());
  EXPECT_TRUE(c.f.Bottone(3)->isEnabled());
  EXPECT_TRUE(c.f.mnuFS->isEnabled());
  c.f.SetDaSalvare(false);
  EXPECT_FALSE(c.f.Bottone(3)->isEnabled());
  EXPECT_FALSE(c.f.mnuFS->isEnabled());
  c.f.DTPicker1->setDate(QDate(2025, 2, 9));
  EXPECT_TRUE(c.f.DaSalvare());
  c.f.SetDaSalvare(false);
  c.f.chkClosed->click();
  EXPECT_TRUE(c.f.DaSalvare());
  c.f.SetDaSalvare(false);
  c.f.DTEnd->setDate(QDate(2025, 2, 10));
  EXPECT_TRUE(c.f.DaSalvare());
}

TEST(frmGestForfSempl, SaveButtonDisabledWithNothingToSave) {
  TestDb t;
  Base(t);
  Card c(2, 0);
  c.f.Bottone(3)->trigger();
  c.f.mnuFS->trigger();
  EXPECT_TRUE(c.f.isVisible());
  EXPECT_TRUE(t.messages->asked.empty());
  EXPECT_EQ(Disposizioni(t), 0);
}

TEST(frmGestForfSempl, SaveFromTheToolbarAndTheMenuEndsTheCard) {
  TestDb t;
  Base(t);
  {
    Card c(2, 0);
    c.f.TBDDisp->setText("Dal pulsante");
    c.f.Bottone(3)->trigger();
    EXPECT_FALSE(c.f.isVisible());
    EXPECT_EQ(Disp(t, "DDisp", 1).toString(), "Dal pulsante");
    EXPECT_EQ(c.ricaricate, std::vector<int>({1, 1}));
    EXPECT_FALSE(c.f.rcsAct);  // closing drops the card's copy
  }
  Card c(2, 0);
  c.f.TBDDisp->setText("Dal menu");
  c.f.mnuFS->trigger();
  EXPECT_FALSE(c.f.isVisible());
  EXPECT_EQ(Disp(t, "DDisp", 2).toString(), "Dal menu");
  EXPECT_TRUE(t.messages->asked.empty());
}

TEST(frmGestForfSempl, ClosingWithoutChangesAsksNothing) {
  TestDb t;
  Base(t);
  Card c(2, 0);
  c.f.Bottone(1)->trigger();
  EXPECT_FALSE(c.f.isVisible());
  EXPECT_TRUE(t.messages->asked.empty());
}

TEST(frmGestForfSempl, ClosingQuestionAnsweredNo) {
  TestDb t;
  Base(t);
  Card c(2, 0);
  c.f.TBDDisp->setText("Da non salvare");
  t.messages->answers = {vbNo};
  c.f.mnuFE->trigger();
  ASSERT_EQ(t.messages->asked.size(), 1u);
  EXPECT_EQ(t.messages->asked[0].prompt, "Vuoi salvare prima di uscire?");
  EXPECT_EQ(t.messages->asked[0].buttons, vbYesNo | vbQuestion | vbDefaultButton2);
  EXPECT_FALSE(c.f.isVisible());
  EXPECT_EQ(Disposizioni(t), 0);
  EXPECT_TRUE(c.ricaricate.empty());
}

TEST(frmGestForfSempl, ClosingQuestionAnsweredYesSaves) {
  TestDb t;
  Base(t);
  Card c(2, 0);
  c.f.TBDDisp->setText("Da salvare");
  t.messages->answers = {vbYes};
  QTest::keyClick(&c.f, Qt::Key_Escape);
  ASSERT_EQ(t.messages->asked.size(), 1u);
  EXPECT_EQ(t.messages->asked[0].prompt, "Vuoi salvare prima di uscire?");
  EXPECT_FALSE(c.f.isVisible());
  EXPECT_EQ(Disp(t, "DDisp", 1).toString(), "Da salvare");
  EXPECT_EQ(c.ricaricate, std::vector<int>({1, 1}));
}

TEST(frmGestForfSempl, ClosingQuestionYesWithAFailingSaveKeepsTheCard) {
  TestDb t;
  Base(t);
  Card c(2, 0);
  c.f.DTPicker1->setDate(QDate(2025, 5, 5));  // a change, with no description
  t.messages->answers = {vbYes};
  c.f.Bottone(1)->trigger();
  EXPECT_EQ(Prompts(t), QStringList({"Vuoi salvare prima di uscire?", "Devi inserire una descrizione!"}));
  EXPECT_TRUE(c.f.isVisible());
  EXPECT_TRUE(c.f.DaSalvare());
  EXPECT_TRUE(c.f.rcsAct);
  EXPECT_EQ(Disposizioni(t), 0);
  t.messages->answers = {vbNo};
  c.f.close();
  EXPECT_FALSE(c.f.isVisible());
}

TEST(frmGestForfSempl, RunningModalAsTheModelCardDoes) {
  TestDb t;
  Base(t);
  CaricaDatiModello(kModello);
  frmGestForfSempl f;
  f.Azione = 2;
  f.CProject = kModello;
  f.RagSoc1 = "Officina Rossi";
  f.DProject = "Manutenzione presse";
  std::vector<int> ricaricate;
  QObject::connect(&f, &frmGestForfSempl::Reload, [&](int& c) { ricaricate.push_back(c); });
  f.Form_Load();
  QTimer::singleShot(0, &f, [&f] {
    f.TBDDisp->setText("Modale");
    f.Bottone(3)->trigger();
  });
  QTimer::singleShot(3000, &f, [&f] { f.done(99); });  // a safety net: the card should be gone long before
  EXPECT_NE(f.exec(), 99);
  EXPECT_EQ(ricaricate, std::vector<int>({1, 1}));
  EXPECT_EQ(Disp(t, "DDisp", 1).toString(), "Modale");
}

// ---------------------------------------------------------------- recordings from the card

TEST(frmGestForfSempl, AddingOnANewCardWithoutDescriptionOpensNothing) {
  TestDb t;
  Base(t);
  Card c(2, 0);
  for (QAction* a : {c.f.Bottone(5), c.f.mnuAdd}) {
    t.messages->asked.clear();
    AllaRilevazione r([](frmGestForfSemplImm&) {});
    a->trigger();
    AllaRilevazione::Scarica();
    EXPECT_EQ(r.aperture, 0);
    EXPECT_EQ(Prompts(t), QStringList({"Devi inserire una descrizione!"}));
  }
  EXPECT_EQ(Disposizioni(t), 0);
  EXPECT_EQ(Attivita(t), 0);
  EXPECT_EQ(c.f.Azione, 2);
}

TEST(frmGestForfSempl, AddingOnANewCardSavesItFirstThenRecords) {
  TestDb t;
  Base(t);
  t.Exec("INSERT INTO ProjectsDisp (CProject, CDisp, DDisp) VALUES (202500001, 1, 'Uno')");
  Card c(2, 0);
  c.f.TBDDisp->setText("Intervento in sede");
  int modo = 0, disp = 0, progetto = 0;
  AllaRilevazione r([&](frmGestForfSemplImm& w) {
    modo = w.Azione;
    disp = w.CDisp;
    progetto = w.CProject;
    EXPECT_EQ(w.windowTitle(), "Rilevazione start e stop");
    EXPECT_TRUE(w.rcsAct == c.f.rcsAct);
    w.DTPicker1->setDate(QDate(2025, 7, 1));
    SetCBValue(w.CBOperatore, 2, 0);
    w.DTInizio->setTime(QTime(8, 0));
    w.chkFine->setChecked(true);
    w.DtFine->setTime(QTime(12, 30));
    w.Bottone(3)->trigger();
    EXPECT_FALSE(w.isVisible());
  });
  c.f.Bottone(5)->trigger();
  AllaRilevazione::Scarica();
  ASSERT_EQ(r.aperture, 1);
  EXPECT_EQ(modo, 2);
  EXPECT_EQ(disp, 2);
  EXPECT_EQ(progetto, kModello);
  // The disposition was saved first, and the card is in mode 1.
  EXPECT_EQ(c.f.CDisp, 2);
  EXPECT_EQ(c.f.Azione, 1);
  EXPECT_EQ(Disp(t, "DDisp", 2).toString(), "Intervento in sede");
  EXPECT_EQ(c.ricaricate, std::vector<int>({2, 2}));
  ASSERT_EQ(Attivita(t), 1);
  EXPECT_EQ(Att(t, "CAttivita", 202500001).toInt(), 202500001);
  EXPECT_EQ(Att(t, "CDisp", 202500001).toInt(), 2);
  // The card's list shows it, selected.
  ListView* l = c.f.lvwPrest;
  ASSERT_EQ(l->Count(), 1);
  EXPECT_EQ(l->Key(0), "K202500001");
  EXPECT_EQ(l->SelectedIndex(), 0);
  EXPECT_EQ(l->Text(0, 1), "01/07/2025");
  EXPECT_EQ(l->Text(0, 2), "Anna Neri");
  EXPECT_EQ(l->Text(0, 3), "08:00");
  EXPECT_EQ(l->Text(0, 4), "12:30");
  EXPECT_EQ(c.f.rcsAct->RecordCount(), 1);
}

TEST(frmGestForfSempl, AddingOnAnExistingCardDoesNotSaveIt) {
  TestDb t;
  Base(t);
  Registrazioni(t);
  Card c(1, 2);
  c.f.TBDDisp->setText("Cambiata ma non salvata");
  AllaRilevazione r([](frmGestForfSemplImm& w) {
    EXPECT_EQ(w.Azione, 2);
    EXPECT_EQ(w.CDisp, 2);
    w.Bottone(1)->trigger();
  });
  c.f.mnuAdd->trigger();
  AllaRilevazione::Scarica();
  EXPECT_EQ(r.aperture, 1);
  EXPECT_EQ(Disp(t, "DDisp", 2).toString(), "Taratura");
  EXPECT_TRUE(c.f.DaSalvare());
  EXPECT_TRUE(c.ricaricate.empty());
}

TEST(frmGestForfSempl, ChangingTheSelectedRecording) {
  TestDb t;
  Base(t);
  Registrazioni(t);
  Card c(1, 1);
  ListView* l = c.f.lvwPrest;
  l->SetSelected(l->IndexOfKey("K202500005"));
  AllaRilevazione r([](frmGestForfSemplImm& w) {
    EXPECT_EQ(w.Azione, 1);
    EXPECT_EQ(w.CAttivita, 202500005);
    EXPECT_EQ(w.DTPicker1->date(), QDate(2025, 2, 5));
    EXPECT_EQ(w.CBOperatore->currentText(), "Bruno Verdi");
    EXPECT_EQ(w.DTInizio->time(), QTime(14, 5));
    EXPECT_FALSE(w.chkFine->isChecked());
    w.chkFine->setChecked(true);
    w.DtFine->setTime(QTime(17, 20));
    w.Bottone(3)->trigger();
  });
  emit l->DblClick();
  AllaRilevazione::Scarica();
  ASSERT_EQ(r.aperture, 1);
  EXPECT_EQ(Att(t, "DtEnd", 202500005).toDateTime(), D(2025, 2, 5, 17, 20));
  EXPECT_EQ(Attivita(t), 4);
  const int riga = l->IndexOfKey("K202500005");
  ASSERT_GE(riga, 0);
  EXPECT_EQ(l->SelectedIndex(), riga);
  EXPECT_EQ(l->Text(riga, 4), "17:20");
  // The toolbar and the menu open the same screen.
  for (QAction* a : {c.f.Bottone(6), c.f.mnuEdit}) {
    l->SetSelected(l->IndexOfKey("K202500004"));
    int codice = 0;
    AllaRilevazione s([&](frmGestForfSemplImm& w) {
      codice = w.CAttivita;
      w.Bottone(1)->trigger();
    });
    a->trigger();
    AllaRilevazione::Scarica();
    EXPECT_EQ(s.aperture, 1);
    EXPECT_EQ(codice, 202500004);
  }
}

TEST(frmGestForfSempl, DoubleClickOnAnEmptyListOpensNothing) {
  TestDb t;
  Base(t);
  t.Exec("INSERT INTO ProjectsDisp (CProject, CDisp, DDisp) VALUES (202500001, 1, 'Vuota')");
  Card c(1, 1);
  AllaRilevazione r([](frmGestForfSemplImm&) {});
  emit c.f.lvwPrest->DblClick();
  c.f.Bottone(6)->trigger();
  AllaRilevazione::Scarica();
  EXPECT_EQ(r.aperture, 0);
  EXPECT_TRUE(t.messages->asked.empty());
}

TEST(frmGestForfSempl, DeleteAsksNothingOnAnEmptyList) {
  TestDb t;
  Base(t);
  t.Exec("INSERT INTO ProjectsDisp (CProject, CDisp, DDisp) VALUES (202500001, 1, 'Vuota')");
  Card c(1, 1);
  c.f.Bottone(7)->trigger();
  c.f.mnuDel->trigger();
  c.f.DelPrest();
  EXPECT_TRUE(t.messages->asked.empty());
  EXPECT_TRUE(c.ricaricate.empty());
}

TEST(frmGestForfSempl, DeleteQuestionAnsweredNoKeepsTheRecording) {
  TestDb t;
  Base(t);
  Registrazioni(t);
  Card c(1, 1);
  c.f.lvwPrest->SetSelected(c.f.lvwPrest->IndexOfKey("K202500004"));
  c.f.Bottone(7)->trigger();  // the default answer is No
  ASSERT_EQ(t.messages->asked.size(), 1u);
  EXPECT_EQ(t.messages->asked[0].prompt, "Vuoi cancellare la registrazione selezionata?");
  EXPECT_EQ(t.messages->asked[0].buttons, vbYesNo | vbQuestion | vbDefaultButton2);
  EXPECT_EQ(Attivita(t), 4);
  EXPECT_EQ(c.f.lvwPrest->Count(), 3);
  EXPECT_TRUE(c.ricaricate.empty());
}

TEST(frmGestForfSempl, DeleteQuestionAnsweredYesDeletesEverywhere) {
  TestDb t;
  Base(t);
  Registrazioni(t);
  Card c(1, 1);
  c.f.lvwPrest->SetSelected(c.f.lvwPrest->IndexOfKey("K202500004"));
  t.messages->answers = {vbYes};
  c.f.mnuDel->trigger();
  EXPECT_EQ(Prompts(t), QStringList({"Vuoi cancellare la registrazione selezionata?"}));
  EXPECT_EQ(Attivita(t), 3);
  EXPECT_EQ(t.Scalar("SELECT Count(*) FROM ActivitiesProd WHERE CAttivita=202500004").toInt(), 0);
  EXPECT_EQ(c.f.lvwPrest->Count(), 2);
  EXPECT_EQ(c.f.lvwPrest->IndexOfKey("K202500004"), -1);
  EXPECT_EQ(c.f.rcsAct->RecordCount(), 2);
  RecordsetPtr rs = gRcsAct->Clone();
  rs->SetFilter("CAttivita=202500004");
  EXPECT_EQ(rs->RecordCount(), 0);
  rs->SetFilter("");
  EXPECT_EQ(rs->RecordCount(), 3);
  EXPECT_EQ(c.ricaricate, std::vector<int>({1}));
  EXPECT_TRUE(t.LogLines("frmGestForfSempl", "DelPrest").isEmpty());
  EXPECT_TRUE(t.LogLines("Procedure", "QueryExe").isEmpty());
}

// ---------------------------------------------------------------- the recording screen

TEST(frmGestForfSemplImm, NewRecordingFace) {
  TestDb t;
  Base(t);
  t.Exec("INSERT INTO ProjectsDisp (CProject, CDisp, DDisp) VALUES (202500001, 1, 'Uno')");
  const QTime prima = QTime::currentTime();
  Rilevazione s(2, 1);
  const QTime dopo = QTime::currentTime();
  EXPECT_EQ(s.f.objectName(), "frmGestForfSemplImm");
  EXPECT_EQ(s.f.windowTitle(), "Rilevazione start e stop");
  EXPECT_EQ(s.f.Bottone(1)->toolTip(), "Esci");
  EXPECT_TRUE(s.f.Bottone(2)->isSeparator());
  EXPECT_EQ(s.f.Bottone(3)->toolTip(), "Salva");
  EXPECT_EQ(s.f.mnuFS->text(), "&Salva");
  const QStringList etichette = Etichette(&s.f);
  EXPECT_TRUE(etichette.contains("Data:"));
  EXPECT_TRUE(etichette.contains("Operatore:"));
  EXPECT_EQ(etichette.count("Ora inizio:"), 2);  // the end repeats the start's label
  EXPECT_EQ(Voci(s.f.CBOperatore), QStringList({"{scegli l'operatore}", "Anna Neri", "Bruno Verdi"}));
  EXPECT_EQ(s.f.CBOperatore->currentIndex(), 0);
  EXPECT_EQ(s.f.DTPicker1->date(), QDate::currentDate());
  EXPECT_EQ(s.f.DTPicker1->displayFormat(), "dd/MM/yyyy");
  EXPECT_EQ(s.f.DTInizio->displayFormat(), "HH:mm");
  // The present time, to the minute.
  const QTime inizio = s.f.DTInizio->time();
  EXPECT_EQ(inizio.second(), 0);
  EXPECT_GE(inizio, QTime(prima.hour(), prima.minute()));
  EXPECT_LE(inizio, dopo);
  EXPECT_FALSE(s.f.chkFine->isChecked());
  EXPECT_FALSE(s.f.DtFine->isEnabled());
  EXPECT_FALSE(s.f.DaSalvare());
  EXPECT_FALSE(s.f.Bottone(3)->isEnabled());
  EXPECT_FALSE(s.f.mnuFS->isEnabled());
  EXPECT_TRUE(t.LogLines("frmGestForfSemplImm", "Form_Load").isEmpty());
}

TEST(frmGestForfSemplImm, OperatorRequired) {
  TestDb t;
  Base(t);
  Rilevazione s(2, 1);
  s.f.DTInizio->setTime(QTime(9, 0));
  Attiva(s.f, s.f.DTInizio);
  ASSERT_FALSE(s.f.CBOperatore->hasFocus());
  EXPECT_FALSE(s.f.Salva());
  ASSERT_EQ(t.messages->asked.size(), 1u);
  EXPECT_EQ(t.messages->asked[0].prompt, "Devi scegliere un operatore!");
  EXPECT_EQ(t.messages->asked[0].buttons, vbExclamation);
  EXPECT_TRUE(s.f.CBOperatore->hasFocus());
  EXPECT_EQ(Attivita(t), 0);
  EXPECT_TRUE(s.ricaricate.empty());
}

TEST(frmGestForfSemplImm, FirstRecordingOfAYearAndEveryField) {
  TestDb t;
  Base(t);
  t.Exec("INSERT INTO ActivitiesProd (CAttivita, CProject, CDisp, CUtente, DtIni) VALUES "
         "(202500009, 202500001, 1, 1, '2025-12-30 08:00:00')");
  Rilevazione s(2, 1);
  s.Compila(QDate(2026, 1, 8), QTime(8, 15), QTime(11, 40));
  EXPECT_TRUE(s.f.DaSalvare());
  ASSERT_TRUE(s.f.Salva());
  const int c = 202600001;
  EXPECT_EQ(s.f.CAttivita, c);
  EXPECT_EQ(Att(t, "CProject", c).toInt(), kModello);
  EXPECT_EQ(Att(t, "CDisp", c).toInt(), 1);
  EXPECT_EQ(Att(t, "CUtente", c).toInt(), 1);
  EXPECT_EQ(Att(t, "CPrestazione", c).toInt(), 0);
  EXPECT_EQ(Att(t, "DtIni", c).toDateTime(), D(2026, 1, 8, 8, 15));
  EXPECT_EQ(Att(t, "DtEnd", c).toDateTime(), D(2026, 1, 8, 11, 40));
  EXPECT_EQ(Att(t, "Stato", c).toInt(), 0);
  EXPECT_EQ(Att(t, "TDocRif", c).toInt(), 0);
  EXPECT_EQ(Att(t, "NDocRif", c).toInt(), 0);
  // The real span and the cost are not this screen's.
  EXPECT_TRUE(AttNull(t, "DtRealIni", c));
  EXPECT_TRUE(AttNull(t, "DtRealEnd", c));
  EXPECT_EQ(Att(t, "CostoH", c).toDouble(), 0);
  EXPECT_EQ(s.ricaricate, std::vector<int>({c}));
  EXPECT_FALSE(s.f.DaSalvare());
  // The row is in the working copy and in the card's copy, made anew.
  RecordsetPtr rs = gRcsAct->Clone();
  rs->SetFilter("CAttivita=202600001");
  ASSERT_EQ(rs->RecordCount(), 1);
  EXPECT_EQ(rs->Value("OraIni").toString(), "08:15");
  EXPECT_EQ(rs->Value("OraEnd").toString(), "11:40");
  ASSERT_TRUE(s.f.rcsAct);
  EXPECT_EQ(s.f.rcsAct->RecordCount(), 2);
  EXPECT_TRUE(t.messages->asked.empty());
  EXPECT_TRUE(t.LogLines("frmGestForfSemplImm", "Salva").isEmpty());
}

TEST(frmGestForfSemplImm, NextCodeAfterTheHighestOfTheChosenDaysYear) {
  TestDb t;
  Base(t);
  t.Exec("INSERT INTO ActivitiesProd (CAttivita, CProject, CDisp, CUtente, DtIni) VALUES "
         "(202400002, 202500001, 1, 1, '2024-03-01 08:00:00'), "
         "(202400007, 202500001, 1, 1, '2024-05-01 08:00:00'), "
         "(202500003, 202500001, 1, 1, '2025-01-01 08:00:00')");
  {
    Rilevazione s(2, 1);
    s.Compila(QDate(2024, 11, 5), QTime(7, 0), QTime(7, 30));
    ASSERT_TRUE(s.f.Salva());
    EXPECT_EQ(s.f.CAttivita, 202400008);
  }
  Rilevazione s(2, 1);
  s.Compila(QDate(2025, 2, 1), QTime(7, 0));
  ASSERT_TRUE(s.f.Salva());
  EXPECT_EQ(s.f.CAttivita, 202500004);
  EXPECT_EQ(Attivita(t), 5);
}

TEST(frmGestForfSemplImm, OpenEndIsNullAndShowsAnEmptyFine) {
  TestDb t;
  Base(t);
  t.Exec("INSERT INTO ProjectsDisp (CProject, CDisp, DDisp) VALUES (202500001, 1, 'Uno')");
  {
    Rilevazione s(2, 1);
    s.Compila(QDate(2025, 9, 3), QTime(13, 10));
    ASSERT_TRUE(s.f.Salva());
    EXPECT_EQ(Att(t, "DtIni", 202500001).toDateTime(), D(2025, 9, 3, 13, 10));
    EXPECT_TRUE(AttNull(t, "DtEnd", 202500001));
    EXPECT_EQ(Att(t, "Stato", 202500001).toInt(), 0);
  }
  Card c(1, 1);
  ASSERT_EQ(c.f.lvwPrest->Count(), 1);
  EXPECT_EQ(c.f.lvwPrest->Text(0, 3), "13:10");
  EXPECT_TRUE(c.f.lvwPrest->Text(0, 4).trimmed().isEmpty());
}

TEST(frmGestForfSemplImm, ClosingARecordingLater) {
  TestDb t;
  Base(t);
  Registrazioni(t);
  t.Exec("UPDATE ActivitiesProd SET Stato=3 WHERE CAttivita=202500005");
  Rilevazione s(1, 1, 202500005);
  EXPECT_EQ(s.f.DTPicker1->date(), QDate(2025, 2, 5));
  EXPECT_EQ(s.f.CBOperatore->currentText(), "Bruno Verdi");
  EXPECT_EQ(s.f.DTInizio->time(), QTime(14, 5));
  EXPECT_FALSE(s.f.chkFine->isChecked());
  EXPECT_FALSE(s.f.DaSalvare());
  s.f.chkFine->setChecked(true);
  EXPECT_TRUE(s.f.DaSalvare());
  s.f.DtFine->setTime(QTime(18, 0));
  s.f.Bottone(3)->trigger();
  EXPECT_FALSE(s.f.isVisible());
  EXPECT_EQ(Attivita(t), 4);
  EXPECT_EQ(Att(t, "DtIni", 202500005).toDateTime(), D(2025, 2, 5, 14, 5));
  EXPECT_EQ(Att(t, "DtEnd", 202500005).toDateTime(), D(2025, 2, 5, 18, 0));
  EXPECT_EQ(Att(t, "Stato", 202500005).toInt(), 0);  // an end written sets the state 0
  EXPECT_EQ(s.ricaricate, std::vector<int>({202500005}));
}

TEST(frmGestForfSemplImm, ExistingRecordingWithItsEndAndAnotherYear) {
  TestDb t;
  Base(t);
  Registrazioni(t);
  t.Exec("UPDATE ActivitiesProd SET Stato=3 WHERE CAttivita=202500004");
  Rilevazione s(1, 1, 202500004);
  EXPECT_EQ(s.f.CBOperatore->currentText(), "Anna Neri");
  EXPECT_EQ(s.f.DTInizio->time(), QTime(8, 15));
  EXPECT_TRUE(s.f.chkFine->isChecked());
  EXPECT_TRUE(s.f.DtFine->isEnabled());
  EXPECT_EQ(s.f.DtFine->time(), QTime(10, 30));
  EXPECT_FALSE(s.f.DaSalvare());
  // Moved to a day of another year and opened again: the code stays, the end goes, the state stays.
  s.f.DTPicker1->setDate(QDate(2026, 1, 2));
  s.f.chkFine->setChecked(false);
  ASSERT_TRUE(s.f.Salva());
  EXPECT_EQ(s.f.CAttivita, 202500004);
  EXPECT_EQ(Attivita(t), 4);
  EXPECT_EQ(Att(t, "DtIni", 202500004).toDateTime(), D(2026, 1, 2, 8, 15));
  EXPECT_TRUE(AttNull(t, "DtEnd", 202500004));
  EXPECT_EQ(Att(t, "Stato", 202500004).toInt(), 3);
  EXPECT_EQ(Att(t, "CPrestazione", 202500004).toInt(), 0);
}

TEST(frmGestForfSemplImm, EndMustFollowTheStartOnTheSameDay) {
  TestDb t;
  Base(t);
  struct Caso {
    QTime inizio, fine;
  };
  // Equal, earlier, and a span over midnight (the end falls on the same day, before the start).
  for (const Caso& k : {Caso{QTime(9, 30), QTime(9, 30)}, Caso{QTime(9, 30), QTime(9, 29)},
                        Caso{QTime(23, 0), QTime(1, 0)}}) {
    t.messages->asked.clear();
    Rilevazione s(2, 1);
    s.Compila(QDate(2025, 3, 3), k.inizio, k.fine);
    Attiva(s.f, s.f.DTInizio);
    ASSERT_FALSE(s.f.DtFine->hasFocus());
    EXPECT_FALSE(s.f.Salva());
    ASSERT_EQ(t.messages->asked.size(), 1u);
    EXPECT_EQ(t.messages->asked[0].prompt, "L'ora finale deve essere superiore a quella iniziale!");
    EXPECT_EQ(t.messages->asked[0].buttons, vbExclamation);
    EXPECT_TRUE(s.f.DtFine->hasFocus());
    EXPECT_TRUE(s.ricaricate.empty());
    EXPECT_TRUE(s.f.DaSalvare());
  }
  EXPECT_EQ(Attivita(t), 0);
  // One minute after the start passes.
  Rilevazione s(2, 1);
  s.Compila(QDate(2025, 3, 3), QTime(9, 30), QTime(9, 31));
  EXPECT_TRUE(s.f.Salva());
  EXPECT_EQ(Att(t, "DtEnd", 202500001).toDateTime(), D(2025, 3, 3, 9, 31));
}

TEST(frmGestForfSemplImm, NoServiceKindIsFoundForARecording) {
  TestDb t;
  Base(t);
  t.Exec("INSERT INTO ProjectsDisp (CProject, CDisp, DDisp) VALUES (202500001, 1, 'Uno')");
  Rilevazione s(2, 1);
  s.Compila(QDate(2025, 3, 3), QTime(9, 0), QTime(10, 0));
  ASSERT_TRUE(s.f.Salva());
  EXPECT_EQ(Att(t, "CPrestazione", 202500001).toInt(), 0);
  NomiAttivita nomi;
  EXPECT_EQ(nomi.Prestazione(Att(t, "CPrestazione", 202500001)), "-");
  EXPECT_EQ(nomi.Prestazione(1), "Tornitura");
}

TEST(frmGestForfSemplImm, EachFieldMarksTheScreenToSave) {
  TestDb t;
  Base(t);
  Rilevazione s(2, 1);
  s.f.CBOperatore->setCurrentIndex(1);
  EXPECT_TRUE(s.f.DaSalvare());
  EXPECT_TRUE(s.f.Bottone(3)->isEnabled());
  EXPECT_TRUE(s.f.mnuFS->isEnabled());
  s.f.SetDaSalvare(false);
  EXPECT_FALSE(s.f.Bottone(3)->isEnabled());
  s.f.DTPicker1->setDate(QDate(2025, 1, 1));
  EXPECT_TRUE(s.f.DaSalvare());
  s.f.SetDaSalvare(false);
  s.f.DTInizio->setTime(QTime(6, 6));
  EXPECT_TRUE(s.f.DaSalvare());
  s.f.SetDaSalvare(false);
  s.f.chkFine->click();
  EXPECT_TRUE(s.f.DaSalvare());
  EXPECT_TRUE(s.f.DtFine->isEnabled());
  s.f.SetDaSalvare(false);
  s.f.DtFine->setTime(QTime(7, 7));
  EXPECT_TRUE(s.f.DaSalvare());
}

TEST(frmGestForfSemplImm, SaveButtonDisabledWithNothingToSave) {
  TestDb t;
  Base(t);
  Rilevazione s(2, 1);
  s.f.Bottone(3)->trigger();
  s.f.mnuFS->trigger();
  EXPECT_TRUE(s.f.isVisible());
  EXPECT_TRUE(t.messages->asked.empty());
  EXPECT_EQ(Attivita(t), 0);
}

TEST(frmGestForfSemplImm, SaveFromTheMenuEndsTheScreen) {
  TestDb t;
  Base(t);
  Rilevazione s(2, 1);
  s.Compila(QDate(2025, 8, 8), QTime(7, 0), QTime(7, 59));
  s.f.mnuFS->trigger();
  EXPECT_FALSE(s.f.isVisible());
  EXPECT_EQ(Att(t, "DtEnd", 202500001).toDateTime(), D(2025, 8, 8, 7, 59));
}

TEST(frmGestForfSemplImm, ClosingWithoutChangesAsksNothing) {
  TestDb t;
  Base(t);
  Rilevazione s(2, 1);
  s.f.Bottone(1)->trigger();
  EXPECT_FALSE(s.f.isVisible());
  EXPECT_TRUE(t.messages->asked.empty());
}

TEST(frmGestForfSemplImm, ClosingQuestionAnsweredNo) {
  TestDb t;
  Base(t);
  Rilevazione s(2, 1);
  s.Compila(QDate(2025, 4, 1), QTime(8, 0), QTime(9, 0));
  t.messages->answers = {vbNo};
  s.f.Bottone(1)->trigger();
  ASSERT_EQ(t.messages->asked.size(), 1u);
  EXPECT_EQ(t.messages->asked[0].prompt, "Vuoi salvare prima di uscire?");
  EXPECT_EQ(t.messages->asked[0].buttons, vbYesNo | vbQuestion | vbDefaultButton2);
  EXPECT_FALSE(s.f.isVisible());
  EXPECT_EQ(Attivita(t), 0);
  EXPECT_TRUE(s.ricaricate.empty());
}

TEST(frmGestForfSemplImm, ClosingQuestionAnsweredYesSaves) {
  TestDb t;
  Base(t);
  Rilevazione s(2, 1);
  s.Compila(QDate(2025, 4, 1), QTime(8, 0), QTime(9, 0));
  t.messages->answers = {vbYes};
  QTest::keyClick(&s.f, Qt::Key_Escape);
  ASSERT_EQ(t.messages->asked.size(), 1u);
  EXPECT_EQ(t.messages->asked[0].prompt, "Vuoi salvare prima di uscire?");
  EXPECT_FALSE(s.f.isVisible());
  EXPECT_EQ(Att(t, "DtEnd", 202500001).toDateTime(), D(2025, 4, 1, 9, 0));
  EXPECT_EQ(s.ricaricate, std::vector<int>({202500001}));
}

TEST(frmGestForfSemplImm, ClosingQuestionYesWithAFailingSaveKeepsTheScreen) {
  TestDb t;
  Base(t);
  Rilevazione s(2, 1);
  s.f.DTInizio->setTime(QTime(10, 0));  // a change, with no operator
  t.messages->answers = {vbYes};
  s.f.close();
  EXPECT_EQ(Prompts(t), QStringList({"Vuoi salvare prima di uscire?", "Devi scegliere un operatore!"}));
  EXPECT_TRUE(s.f.isVisible());
  EXPECT_TRUE(s.f.DaSalvare());
  EXPECT_EQ(Attivita(t), 0);
  t.messages->answers = {vbNo};
  s.f.mnuFE->trigger();
  EXPECT_EQ(t.messages->asked.size(), 3u);
  EXPECT_FALSE(s.f.isVisible());
}
