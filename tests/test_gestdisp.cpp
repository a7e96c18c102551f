// "Gestione disposizioni per fatturazione": the dispositions of open models by
// billing state, party and period, closed with a date and reopened, by the
// tool bar and by the menu; "Chiusura disposizioni", the date of closing.
#include <gtest/gtest.h>

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QHeaderView>
#include <QLabel>
#include <QTest>
#include <QTimer>
#include <functional>

#include "TestSupport.h"
#include "frmGestDisp.h"
#include "frmGestDispOK.h"

using namespace prestkt;
using namespace prestkt::test;

namespace {

const int Y = QDate::currentDate().year();  // the years of the list run from the current one
const int PY = Y - 1;

// A date of year Y (or PY) as the tables store it.
QString Il(int anno, int mese, int giorno, const char* ora = "00:00:00") {
  return QStringLiteral("'%1-%2-%3 %4'")
      .arg(anno)
      .arg(mese, 2, 10, QLatin1Char('0'))
      .arg(giorno, 2, 10, QLatin1Char('0'))
      .arg(QString::fromLatin1(ora));
}

// Two customers with models, one party without; an ordinary type and a simplified forfait one.
//   202500001 Stampo pompa (Officina Rossi): 1 open, 2 open without activities, 3 closed on 1 March 00:00
//   202500002 Staffa (Carrozzeria Bianchi): 1 in state 10 on 31 March 23:59, 2 closed on 1 April,
//             3 closed with no date, 4 invoiced
//   202500003 Coperchio: a closed model; its open disposition is never listed
//   202500004 Ganci forfait: two open dispositions, activities under disposition 0 in May
//   202500005 Telaio forfait: one open disposition, activities under disposition 1 only
//   202500006 Pannello forfait: two dispositions closed on the same day
//   202500007 Cornice forfait: one disposition in state 10, which the forfait rows don't count as closed
void Officina(TestDb& t) {
  t.Exec("INSERT INTO Anagrafica (TAnag, CAnag, RagSoc1) VALUES (1, 1, 'Officina Rossi'), "
         "(1, 2, 'Carrozzeria Bianchi'), (2, 1, 'Zincatura Lombarda')");
  t.Exec("INSERT INTO ProjectsTipo (CPrjTipo, DPrjTipo, GestForfSempl) VALUES (1, 'Stampo', 0), (2, 'Forfait', -1)");
  t.Exec("INSERT INTO ProjectsDispTipo (CPrjDispTipo, DPrjDispTipo, TipoFatt) VALUES (1, 'Oraria', 1), "
         "(2, 'A pezzo', 2), (3, 'Non fatturata', 0)");
  t.Exec("INSERT INTO Projects (CProject, DProject, CPrjTipo, TAnag, CAnag, DtIni, Stato) VALUES "
         "(202500001, 'Stampo pompa', 1, 1, 1, '2025-01-10 00:00:00', 0), "
         "(202500002, 'Staffa', 1, 1, 2, '2025-01-11 00:00:00', 0), "
         "(202500003, 'Coperchio', 1, 1, 1, '2025-01-12 00:00:00', 9), "
         "(202500004, 'Ganci forfait', 2, 1, 2, '2025-01-13 00:00:00', 0), "
         "(202500005, 'Telaio forfait', 2, 1, 1, '2025-01-14 00:00:00', 0), "
         "(202500006, 'Pannello forfait', 2, 1, 1, '2025-01-15 00:00:00', 0), "
         "(202500007, 'Cornice forfait', 2, 1, 1, '2025-01-16 00:00:00', 0)");
  t.Exec(QStringLiteral("INSERT INTO ProjectsDisp (CProject, CDisp, CPrjDispTipo, DDisp, CStato, DtEnd) VALUES "
                        "(202500001, 1, 1, 'Tornitura', 0, NULL), "
                        "(202500001, 2, 2, 'Zincatura', 0, NULL), "
                        "(202500001, 3, 2, 'Tempra', 9, %1), "
                        "(202500002, 1, 1, 'Saldatura', 10, %2), "
                        "(202500002, 2, 3, 'Collaudo', 9, %3), "
                        "(202500002, 3, 1, 'Verniciatura', 9, NULL), "
                        "(202500002, 4, 1, 'Fatturata', 19, %4), "
                        "(202500003, 1, 1, 'Chiusa col modello', 0, NULL), "
                        "(202500004, 1, 2, 'Ganci A', 0, NULL), "
                        "(202500004, 2, 2, 'Ganci B', 0, NULL), "
                        "(202500005, 1, 1, 'Telaio', 0, NULL), "
                        "(202500006, 1, 2, 'Pannello A', 9, %5), "
                        "(202500006, 2, 2, 'Pannello B', 9, %5), "
                        "(202500007, 1, 2, 'Cornice', 10, %5)")
             .arg(Il(Y, 3, 1), Il(Y, 3, 31, "23:59:00"), Il(Y, 4, 1), Il(Y, 2, 15), Il(Y, 2, 20)));
  t.Exec(QStringLiteral("INSERT INTO ActivitiesProd (CAttivita, CProject, CDisp, DtIni) VALUES "
                        "(1, 202500001, 1, %1), (2, 202500001, 1, %2), (3, 202500001, 1, %3), "
                        "(4, 202500004, 0, %4), (5, 202500005, 1, %5)")
             .arg(Il(PY, 6, 1), Il(Y, 2, 10), Il(Y, 3, 1), Il(Y, 5, 20), Il(Y, 5, 21)));
}

// The screen opened as the control opens it, driven by the names of its controls.
struct Schermo {
  Schermo() {
    f.Form_Load();
    f.show();
    QApplication::setActiveWindow(&f);
    QApplication::processEvents();
  }
  template <class T>
  T* C(const char* nome) {
    T* c = f.findChild<T*>(QString::fromLatin1(nome));
    EXPECT_TRUE(c) << nome;
    return c;
  }
  ListView* Lista() { return C<ListView>("ListView1"); }
  // Chooses the entry with that text, as a click on the combo does.
  void Scegli(const char* combo, const QString& testo) {
    QComboBox* c = C<QComboBox>(combo);
    const int i = c->findText(testo);
    ASSERT_GE(i, 0) << combo << " has no " << testo.toStdString();
    c->setCurrentIndex(i);
  }
  QStringList Voci(const char* combo) {
    QStringList v;
    QComboBox* c = C<QComboBox>(combo);
    for (int i = 0; i < c->count(); ++i) v << c->itemText(i);
    return v;
  }
  QStringList Dati(const char* combo) {
    QStringList v;
    QComboBox* c = C<QComboBox>(combo);
    for (int i = 0; i < c->count(); ++i) v << c->itemData(i).toString();
    return v;
  }
  QStringList Chiavi() {
    QStringList k;
    for (int i = 0; i < Lista()->Count(); ++i) k << Lista()->Key(i);
    return k;
  }
  QStringList Colonna(int c) {
    QStringList k;
    for (int i = 0; i < Lista()->Count(); ++i) k << Lista()->Text(i, c);
    return k;
  }
  QStringList Intestazioni() {
    QStringList h;
    for (int i = 0; i < Lista()->ColumnCount(); ++i) h << Lista()->ColumnText(i);
    return h;
  }
  // Ticks the check box of a row, as a click on it does.
  void Spunta(const QString& chiave) {
    ListView* l = Lista();
    const int r = l->IndexOfKey(chiave);
    ASSERT_GE(r, 0) << chiave.toStdString();
    l->model()->setData(l->model()->index(r, 0), Qt::Checked, Qt::CheckStateRole);
  }
  int Spuntate() {
    int n = 0;
    for (int i = 0; i < Lista()->Count(); ++i) n += Lista()->Checked(i) ? 1 : 0;
    return n;
  }
  void Bottone(int i) { C<QAction>(QStringLiteral("Toolbar1_%1").arg(i).toLatin1().constData())->trigger(); }
  void Menu(const char* voce) { C<QAction>(voce)->trigger(); }
  void ClicColonna(int colonna) {
    QHeaderView* h = Lista()->header();
    QTest::mouseClick(h->viewport(), Qt::LeftButton, {}, QPoint(h->sectionViewportPosition(colonna) + 4, h->height() / 2));
  }
  frmGestDisp f;
};

// Runs f on the modal dialog that the next action opens.
void AlDialogo(std::function<void(frmGestDispOK*)> f) {
  QTimer::singleShot(0, [f] {
    auto* d = qobject_cast<frmGestDispOK*>(QApplication::activeModalWidget());
    ASSERT_TRUE(d);
    f(d);
  });
}

struct Disp {
  int cStato;
  QVariant dtEnd;
};
Disp Leggi(TestDb& t, int cProject, int cDisp) {
  const auto r = t.db->Select(Sql(QStringLiteral("SELECT CStato, DtEnd FROM ProjectsDisp WHERE CProject=%1 AND CDisp=%2")
                                      .arg(cProject)
                                      .arg(cDisp)));
  EXPECT_EQ(r.rows.size(), 1u);
  if (r.rows.empty()) return {-1, {}};
  const Row& v = r.rows.front();
  return {v[0].toInt(), IsNull(v[1]) ? QVariant() : QVariant(CDate(v[1]))};
}

const QStringList kAttive = {"K202500001001", "K202500001002", "K202500004000", "K202500005000"};
// By code, and inside a model by description (Collaudo, Saldatura, Verniciatura).
const QStringList kChiuse = {"K202500001003", "K202500002002", "K202500002001", "K202500002003", "K202500006000"};

}  // namespace

// ---------------------------------------------------------------- opening

TEST(frmGestDisp, OpensOnOpenDispositionsWithTheFiltersOnTheirFirstEntries) {
  TestDb t;
  Officina(t);
  Schermo s;
  EXPECT_EQ(s.f.windowTitle(), "Gestione disposizioni per fatturazione");
  EXPECT_EQ(s.Voci("CBStato"), QStringList({"Disp.attive", "Disp.chiuse", "Disp.fatturate"}));
  EXPECT_EQ(s.C<QComboBox>("CBStato")->currentIndex(), 0);
  EXPECT_EQ(s.Voci("CBTipoFatt"), QStringList({"Tutte", "Non fatt.", "Oraria", "Pezzo"}));
  EXPECT_EQ(s.Dati("CBTipoFatt"), QStringList({"-1", "0", "1", "2"}));
  EXPECT_EQ(s.C<QComboBox>("CBTipoFatt")->currentText(), "Tutte");
  // The parties of the models, by name, behind a running number; a party with no model is not there.
  EXPECT_EQ(s.Voci("CBAnag"), QStringList({"{tutti}", "Carrozzeria Bianchi", "Officina Rossi"}));
  EXPECT_EQ(s.Dati("CBAnag"), QStringList({"0", "1", "2"}));
  EXPECT_EQ(s.C<QComboBox>("CBAnag")->currentIndex(), 0);
  // The years from the current one down to that of the oldest activity.
  EXPECT_EQ(s.Voci("CBAnno"), QStringList({"{tutti}", QString::number(Y), QString::number(PY)}));
  EXPECT_EQ(s.Dati("CBAnno"), QStringList({"0", QString::number(Y), QString::number(PY)}));
  EXPECT_EQ(s.C<QComboBox>("CBAnno")->currentIndex(), 0);
  EXPECT_EQ(s.Voci("CBMesi"), QStringList({"{scegli anno}"}));
  EXPECT_EQ(s.C<QLabel>("lblPeriodo")->text(), "Eseguite nel periodo");
  EXPECT_EQ(s.C<QAction>("mnuModDisp")->text(), "Chiudi disposizioni");
  EXPECT_TRUE(s.C<QAction>("Toolbar1_3")->isEnabled());
  EXPECT_TRUE(s.Lista()->Checkboxes());
  EXPECT_EQ(s.Intestazioni(),
            QStringList({"Codice", "Cliente", "Modello", "Tipo Mod.", "Disposizione", "Descrizione"}));
  // Every open disposition of an open model, a forfait model as one row; by code.
  EXPECT_EQ(s.Chiavi(), kAttive);
  EXPECT_EQ(s.Lista()->Text(0, 0), "2025-00001-001");
  EXPECT_EQ(s.Lista()->Text(0, 1), "Officina Rossi");
  EXPECT_EQ(s.Lista()->Text(0, 2), "Stampo pompa");
  EXPECT_EQ(s.Lista()->Text(0, 3), "Stampo");
  EXPECT_EQ(s.Lista()->Text(0, 4), "Oraria");
  EXPECT_EQ(s.Lista()->Text(0, 5), "Tornitura");
  EXPECT_EQ(s.Lista()->Text(2, 0), "2025-00004");
  EXPECT_EQ(s.Lista()->Text(2, 1), "Carrozzeria Bianchi");
  EXPECT_EQ(s.Lista()->Text(2, 2), "Ganci forfait");
  EXPECT_EQ(s.Lista()->Text(2, 3), "Forfait");
  EXPECT_EQ(s.Lista()->Text(2, 4), " ");
  EXPECT_EQ(s.Lista()->Text(2, 5), "Model Form");
  EXPECT_EQ(s.Spuntate(), 0);
}

// With all filters on their first entries no activity is read per row: with
// the activities gone every open disposition is still listed, and nothing is logged.
TEST(frmGestDisp, FirstEntriesListEveryOpenDispositionWithoutAQueryPerRow) {
  TestDb t;
  Officina(t);
  frmGestDisp f;
  f.Form_Load();
  t.Exec("DROP TABLE ActivitiesProd");
  f.show();
  QApplication::processEvents();
  QStringList chiavi;
  for (int i = 0; i < f.ListView1->Count(); ++i) chiavi << f.ListView1->Key(i);
  EXPECT_EQ(chiavi, kAttive);
  EXPECT_TRUE(t.LogLines("frmGestDisp", "ShowDisp").isEmpty());
}

// Nothing loads before the screen shows; it loads once, at the first showing.
TEST(frmGestDisp, TheListLoadsAtTheFirstShowingOnly) {
  TestDb t;
  Officina(t);
  frmGestDisp f;
  f.Form_Load();
  EXPECT_EQ(f.ListView1->ColumnCount(), 0);
  EXPECT_EQ(f.ListView1->Count(), 0);
  f.show();
  QApplication::processEvents();
  EXPECT_EQ(f.ListView1->Count(), 4);
  t.Exec("INSERT INTO ProjectsDisp (CProject, CDisp, CPrjDispTipo, DDisp, CStato) VALUES (202500001, 9, 1, 'Nuova', 0)");
  f.hide();
  f.show();
  QApplication::processEvents();
  EXPECT_EQ(f.ListView1->Count(), 4);
  EXPECT_EQ(f.ListView1->IndexOfKey("K202500001009"), -1);
}

// With no activity at all the years are the current one alone.
TEST(frmGestDisp, NoActivitiesGiveTheCurrentYearAlone) {
  TestDb t;
  Officina(t);
  t.Exec("DELETE FROM ActivitiesProd");
  Schermo s;
  EXPECT_EQ(s.Voci("CBAnno"), QStringList({"{tutti}", QString::number(Y)}));
}

// ---------------------------------------------------------------- filters

TEST(frmGestDisp, KindOfInvoicingFiltersBothQueries) {
  TestDb t;
  Officina(t);
  Schermo s;
  s.Scegli("CBTipoFatt", "Pezzo");
  EXPECT_EQ(s.Chiavi(), QStringList({"K202500001002", "K202500004000"}));
  s.Scegli("CBTipoFatt", "Oraria");
  EXPECT_EQ(s.Chiavi(), QStringList({"K202500001001", "K202500005000"}));
  s.Scegli("CBTipoFatt", "Non fatt.");
  EXPECT_TRUE(s.Chiavi().isEmpty());
  s.Scegli("CBStato", "Disp.chiuse");
  EXPECT_EQ(s.Chiavi(), QStringList({"K202500002002"}));
  s.Scegli("CBTipoFatt", "Tutte");
  EXPECT_EQ(s.Chiavi(), kChiuse);
}

// The party filters the rows already read: the change of party reads nothing anew.
TEST(frmGestDisp, ThePartyFiltersTheRowsRead) {
  TestDb t;
  Officina(t);
  Schermo s;
  t.Exec("INSERT INTO ProjectsDisp (CProject, CDisp, CPrjDispTipo, DDisp, CStato) VALUES (202500001, 9, 1, 'Nuova', 0)");
  s.Scegli("CBAnag", "Officina Rossi");
  EXPECT_EQ(s.Chiavi(), QStringList({"K202500001001", "K202500001002", "K202500005000"}));
  s.Scegli("CBAnag", "Carrozzeria Bianchi");
  EXPECT_EQ(s.Chiavi(), QStringList({"K202500004000"}));
  s.Scegli("CBAnag", "{tutti}");
  EXPECT_EQ(s.Chiavi(), kAttive);
  // A filter that reads: now the new disposition comes.
  s.Scegli("CBTipoFatt", "Oraria");
  EXPECT_EQ(s.Chiavi(), QStringList({"K202500001009", "K202500001001", "K202500005000"}));  // "Nuova" first
}

// State 0 with a year: the period of the latest activity. No activity, no row;
// a "Model Form" row only with activities under disposition 0.
TEST(frmGestDisp, AYearInState0TakesThePeriodOfTheLatestActivity) {
  TestDb t;
  Officina(t);
  Schermo s;
  s.Scegli("CBAnno", QString::number(Y));
  EXPECT_EQ(s.Voci("CBMesi"), QStringList({"{tutti}", "gennaio", "febbraio", "marzo", "aprile", "maggio", "giugno",
                                           "luglio", "agosto", "settembre", "ottobre", "novembre", "dicembre"}));
  EXPECT_EQ(s.Dati("CBMesi"),
            QStringList({"0", "1", "2", "3", "4", "5", "6", "7", "8", "9", "10", "11", "12"}));
  EXPECT_EQ(s.C<QComboBox>("CBMesi")->currentIndex(), 0);
  EXPECT_EQ(s.Chiavi(), QStringList({"K202500001001", "K202500004000"}));
  s.Scegli("CBMesi", "marzo");
  EXPECT_EQ(s.Chiavi(), QStringList({"K202500001001"}));
  s.Scegli("CBMesi", "febbraio");  // an activity in February, but the latest is in March
  EXPECT_TRUE(s.Chiavi().isEmpty());
  s.Scegli("CBMesi", "maggio");
  EXPECT_EQ(s.Chiavi(), QStringList({"K202500004000"}));
  s.Scegli("CBAnno", QString::number(PY));
  EXPECT_TRUE(s.Chiavi().isEmpty());
  // Back to every year: the months ask for a year again, and every row is back.
  s.Scegli("CBAnno", "{tutti}");
  EXPECT_EQ(s.Voci("CBMesi"), QStringList({"{scegli anno}"}));
  EXPECT_EQ(s.Chiavi(), kAttive);
  EXPECT_TRUE(t.LogLines("frmGestDisp", "ShowDisp").isEmpty());
}

// "{scegli anno}" is the only month while the year is "{tutti}", and choosing it filters nothing.
TEST(frmGestDisp, ChooseAYearFiltersNothing) {
  TestDb t;
  Officina(t);
  Schermo s;
  for (const char* stato : {"Disp.attive", "Disp.chiuse"}) {
    s.Scegli("CBStato", stato);
    const QStringList prima = s.Chiavi();
    ASSERT_FALSE(prima.isEmpty());
    EXPECT_EQ(s.Voci("CBMesi"), QStringList({"{scegli anno}"}));
    QComboBox* mesi = s.C<QComboBox>("CBMesi");
    emit mesi->activated(0);
    s.Scegli("CBMesi", "{scegli anno}");
    EXPECT_EQ(s.Chiavi(), prima);
  }
}

// State 1: closed (9) and treated as closed (10), with the date of closing.
// With a year chosen a row with no date of closing is not listed.
TEST(frmGestDisp, State1ListsClosedRowsAndAYearWantsADate) {
  TestDb t;
  Officina(t);
  Schermo s;
  s.Scegli("CBStato", "Disp.chiuse");
  EXPECT_EQ(s.C<QLabel>("lblPeriodo")->text(), "Chiuse nel periodo");
  EXPECT_EQ(s.C<QAction>("mnuModDisp")->text(), "Riapri disposizioni");
  EXPECT_TRUE(s.C<QAction>("mnuModDisp")->isVisible());
  EXPECT_TRUE(s.C<QAction>("Toolbar1_3")->isEnabled());
  EXPECT_EQ(s.Intestazioni(), QStringList({"Chiuso il", "Codice", "Cliente", "Modello", "Tipo Mod.",
                                           "Disposizione", "Descrizione"}));
  EXPECT_EQ(s.Chiavi(), kChiuse);  // a disposition in 10 is closed, a forfait model in 10 is not
  EXPECT_EQ(s.Lista()->IndexOfKey("K202500007000"), -1);
  const int senzaData = s.Lista()->IndexOfKey("K202500002003");
  EXPECT_EQ(s.Lista()->Text(senzaData, 0), "");
  EXPECT_EQ(s.Lista()->Text(senzaData, 1), "2025-00002-003");
  const int forfait = s.Lista()->IndexOfKey("K202500006000");
  EXPECT_EQ(s.Lista()->Text(forfait, 0), QString("20/02/%1").arg(Y));
  EXPECT_EQ(s.Lista()->Text(forfait, 1), "2025-00006");
  EXPECT_EQ(s.Lista()->Text(forfait, 6), "Model Form");
  s.Scegli("CBAnno", QString::number(Y));
  EXPECT_EQ(s.Chiavi(), QStringList({"K202500001003", "K202500002002", "K202500002001", "K202500006000"}));
  s.Scegli("CBAnno", QString::number(PY));
  EXPECT_TRUE(s.Chiavi().isEmpty());
}

// The month holds its first and its last minute, and not the next month's first.
TEST(frmGestDisp, TheMonthHoldsItsFirstAndLastDay) {
  TestDb t;
  Officina(t);
  Schermo s;
  s.Scegli("CBStato", "Disp.chiuse");
  s.Scegli("CBAnno", QString::number(Y));
  s.Scegli("CBMesi", "marzo");
  EXPECT_EQ(s.Chiavi(), QStringList({"K202500001003", "K202500002001"}));
  EXPECT_EQ(s.Colonna(0), QStringList({QString("01/03/%1").arg(Y), QString("31/03/%1").arg(Y)}));
  s.Scegli("CBMesi", "aprile");
  EXPECT_EQ(s.Chiavi(), QStringList({"K202500002002"}));
  s.Scegli("CBMesi", "febbraio");
  EXPECT_EQ(s.Chiavi(), QStringList({"K202500006000"}));
}

// State 2 reads the invoiced rows but lists none, and offers no action.
TEST(frmGestDisp, InvoicedStateListsNothingAndOffersNoAction) {
  TestDb t;
  Officina(t);
  Schermo s;
  s.Scegli("CBStato", "Disp.fatturate");
  EXPECT_EQ(s.C<QLabel>("lblPeriodo")->text(), "Fatturate nel periodo");
  EXPECT_EQ(s.Intestazioni(), QStringList({"Fatt. il", "Codice", "Cliente", "Modello", "Tipo Mod.",
                                           "Disposizione", "Descrizione"}));
  EXPECT_EQ(s.Lista()->Count(), 0);
  s.Scegli("CBAnno", QString::number(Y));
  EXPECT_EQ(s.Lista()->Count(), 0);
  s.Scegli("CBMesi", "febbraio");
  EXPECT_EQ(s.Lista()->Count(), 0);
  EXPECT_FALSE(s.C<QAction>("Toolbar1_3")->isEnabled());
  EXPECT_FALSE(s.C<QAction>("mnuModDisp")->isVisible());
  EXPECT_FALSE(s.C<QAction>("mnuSpcM")->isVisible());
  EXPECT_TRUE(s.C<QAction>("mnuSel")->isVisible());
  EXPECT_TRUE(s.C<QAction>("mnuDeSel")->isVisible());
  // Back to the open ones: the action is there again.
  s.Scegli("CBAnno", "{tutti}");
  s.Scegli("CBStato", "Disp.attive");
  EXPECT_TRUE(s.C<QAction>("Toolbar1_3")->isEnabled());
  EXPECT_TRUE(s.C<QAction>("mnuModDisp")->isVisible());
  EXPECT_TRUE(s.C<QAction>("mnuSpcM")->isVisible());
  EXPECT_EQ(s.C<QAction>("mnuModDisp")->text(), "Chiudi disposizioni");
  EXPECT_EQ(s.C<QLabel>("lblPeriodo")->text(), "Eseguite nel periodo");
  EXPECT_EQ(s.Chiavi(), kAttive);
}

// ---------------------------------------------------------------- list

TEST(frmGestDisp, ColumnClickSortsAndASecondClickReverses) {
  TestDb t;
  Officina(t);
  Schermo s;
  s.Lista()->SetSelected(3);
  s.ClicColonna(1);  // "Cliente"
  EXPECT_EQ(s.Colonna(1), QStringList({"Carrozzeria Bianchi", "Officina Rossi", "Officina Rossi", "Officina Rossi"}));
  EXPECT_EQ(s.Chiavi(), QStringList({"K202500004000", "K202500001001", "K202500001002", "K202500005000"}));
  EXPECT_EQ(s.Lista()->SelectedIndex(), 0);
  s.Lista()->SetSelected(2);
  s.ClicColonna(1);
  EXPECT_EQ(s.Colonna(1), QStringList({"Officina Rossi", "Officina Rossi", "Officina Rossi", "Carrozzeria Bianchi"}));
  EXPECT_EQ(s.Lista()->SelectedIndex(), 0);
  s.ClicColonna(5);  // "Descrizione", ascending again
  EXPECT_EQ(s.Colonna(5), QStringList({"Model Form", "Model Form", "Tornitura", "Zincatura"}));
  s.ClicColonna(5);
  EXPECT_EQ(s.Colonna(5), QStringList({"Zincatura", "Tornitura", "Model Form", "Model Form"}));
  // The list read anew keeps the order chosen.
  s.Scegli("CBTipoFatt", "Oraria");
  EXPECT_EQ(s.Colonna(5), QStringList({"Tornitura", "Model Form"}));
}

TEST(frmGestDisp, SelectAndDeselectAllFromTheRightClickMenu) {
  TestDb t;
  Officina(t);
  Schermo s;
  ListView* l = s.Lista();
  QTest::mouseClick(l->viewport(), Qt::RightButton, {}, l->visualRect(l->model()->index(0, 1)).center());
  QMenu* menu = s.C<QMenu>("mnuMod");
  EXPECT_TRUE(menu->isVisible());
  QStringList voci;
  for (QAction* a : menu->actions()) voci << (a->isSeparator() ? QStringLiteral("-") : a->text());
  EXPECT_EQ(voci, QStringList({"Seleziona tutti", "Deseleziona tutti", "-", "Chiudi disposizioni"}));
  menu->hide();
  s.Menu("mnuSel");
  EXPECT_EQ(s.Spuntate(), 4);
  s.Menu("mnuDeSel");
  EXPECT_EQ(s.Spuntate(), 0);
}

// ---------------------------------------------------------------- tool bar

// Nothing checked, in either state: the message and no dialog.
TEST(frmGestDisp, ToolbarWithNothingCheckedAsksForARow) {
  TestDb t;
  Officina(t);
  Schermo s;
  for (const char* stato : {"Disp.attive", "Disp.chiuse"}) {
    s.Scegli("CBStato", stato);
    t.messages->asked.clear();
    bool dialogo = false;
    QTimer::singleShot(0, [&] {
      if (auto* d = qobject_cast<frmGestDispOK*>(QApplication::activeModalWidget())) {
        dialogo = true;
        d->close();
      }
    });
    s.Bottone(3);
    QApplication::processEvents();
    EXPECT_FALSE(dialogo) << stato;
    ASSERT_EQ(t.messages->asked.size(), 1u) << stato;
    EXPECT_EQ(t.messages->asked[0].prompt, "Devi selezionare almeno una dispozione!");
    EXPECT_EQ(t.messages->asked[0].buttons, 48);
  }
  EXPECT_EQ(Leggi(t, 202500001, 1).cStato, 0);
  EXPECT_EQ(Leggi(t, 202500001, 3).cStato, 9);
}

// The dialog cancelled: nothing closes, and the list is read anew all the same.
TEST(frmGestDisp, TheDialogCancelledStillReloads) {
  TestDb t;
  Officina(t);
  Schermo s;
  s.Spunta("K202500001001");
  t.Exec("INSERT INTO ProjectsDisp (CProject, CDisp, CPrjDispTipo, DDisp, CStato) VALUES (202500001, 9, 1, 'Nuova', 0)");
  QString titolo, etichetta;
  QDate data;
  AlDialogo([&](frmGestDispOK* d) {
    titolo = d->windowTitle();
    data = d->findChild<QDateEdit*>("DTPicker1")->date();
    etichetta = d->findChild<QLabel*>("Label1")->text();
    QTest::mouseClick(d->findChild<QPushButton*>("CancelButton"), Qt::LeftButton);
  });
  s.Bottone(3);
  EXPECT_EQ(titolo, "Chiusura disposizioni");
  EXPECT_EQ(etichetta, "Data chiusura");
  EXPECT_EQ(data, QDate::currentDate());
  EXPECT_TRUE(t.messages->asked.empty());
  EXPECT_EQ(Leggi(t, 202500001, 1).cStato, 0);
  EXPECT_TRUE(IsNull(Leggi(t, 202500001, 1).dtEnd));
  EXPECT_GE(s.Lista()->IndexOfKey("K202500001009"), 0);
}

// OK asks; No leaves the dialog open with nothing done, Yes closes the checked
// rows with the picker's date and the list is read anew.
TEST(frmGestDisp, TheDialogAsksAndClosesWithThePickersDate) {
  TestDb t;
  Officina(t);
  Schermo s;
  s.Spunta("K202500001001");
  s.Spunta("K202500005000");
  const QDate chiusura(Y, 6, 15);
  bool apertoDopoNo = false;
  int chiamate = 0;
  AlDialogo([&](frmGestDispOK* d) {
    QObject::connect(d, &frmGestDispOK::CloseDisposizioni, [&] { ++chiamate; });
    d->findChild<QDateEdit*>("DTPicker1")->setDate(chiusura);
    t.messages->answers = {vbNo, vbYes};
    QTest::mouseClick(d->findChild<QPushButton*>("OKButton"), Qt::LeftButton);
    apertoDopoNo = d->isVisible() && chiamate == 0;
    QTest::mouseClick(d->findChild<QPushButton*>("OKButton"), Qt::LeftButton);
  });
  s.Bottone(3);
  EXPECT_TRUE(apertoDopoNo);
  EXPECT_EQ(chiamate, 1);
  ASSERT_EQ(t.messages->asked.size(), 2u);
  for (const Asked& a : t.messages->asked) {
    EXPECT_EQ(a.prompt, "Sei sicuro di voler chiudere le disposizioni selezionate?");
    EXPECT_EQ(a.buttons, 292);
  }
  EXPECT_EQ(Leggi(t, 202500001, 1).cStato, 9);
  EXPECT_EQ(Leggi(t, 202500001, 1).dtEnd, QVariant(QDateTime(chiusura, QTime(0, 0))));
  EXPECT_EQ(Leggi(t, 202500005, 1).cStato, 9);
  EXPECT_EQ(Leggi(t, 202500005, 1).dtEnd, QVariant(QDateTime(chiusura, QTime(0, 0))));
  EXPECT_EQ(Leggi(t, 202500001, 2).cStato, 0);  // not checked
  EXPECT_EQ(s.Chiavi(), QStringList({"K202500001002", "K202500004000"}));
}

// A forfait model closes whole, overwriting the date of dispositions already closed.
TEST(frmGestDisp, ClosingAForfaitModelOverwritesDatesAlreadySet) {
  TestDb t;
  Officina(t);
  t.Exec(QStringLiteral("INSERT INTO ProjectsDisp (CProject, CDisp, CPrjDispTipo, DDisp, CStato, DtEnd) VALUES "
                        "(202500004, 3, 2, 'Ganci C', 9, %1)")
             .arg(Il(PY, 1, 1)));
  Schermo s;
  s.Spunta("K202500004000");
  const QDate chiusura(Y, 7, 1);
  AlDialogo([&](frmGestDispOK* d) {
    d->findChild<QDateEdit*>("DTPicker1")->setDate(chiusura);
    t.messages->answers = {vbYes};
    d->OKButton->click();
  });
  s.Bottone(3);
  for (int cDisp : {1, 2, 3}) {
    EXPECT_EQ(Leggi(t, 202500004, cDisp).cStato, 9) << cDisp;
    EXPECT_EQ(Leggi(t, 202500004, cDisp).dtEnd, QVariant(QDateTime(chiusura, QTime(0, 0)))) << cDisp;
  }
  EXPECT_EQ(s.Lista()->IndexOfKey("K202500004000"), -1);
}

// Reopening by the tool bar: asked first; No changes nothing. Yes reopens and
// clears the date, a row in 10 as any other; a "Model Form" row finds no
// disposition 0 and its model stays closed.
TEST(frmGestDisp, ToolbarReopenClearsTheDateAndLeavesAForfaitModelClosed) {
  TestDb t;
  Officina(t);
  Schermo s;
  s.Scegli("CBStato", "Disp.chiuse");
  s.Spunta("K202500001003");
  s.Spunta("K202500002001");
  s.Spunta("K202500006000");
  s.Bottone(3);  // No, the default answer
  ASSERT_EQ(t.messages->asked.size(), 1u);
  EXPECT_EQ(t.messages->asked[0].prompt, "Sei sicuro di voler riaprire le disposizioni selezionate?");
  EXPECT_EQ(t.messages->asked[0].buttons, 292);
  EXPECT_EQ(Leggi(t, 202500001, 3).cStato, 9);
  EXPECT_EQ(s.Spuntate(), 3);
  t.messages->answers = {vbYes};
  s.Bottone(3);
  EXPECT_EQ(Leggi(t, 202500001, 3).cStato, 0);
  EXPECT_TRUE(IsNull(Leggi(t, 202500001, 3).dtEnd));
  EXPECT_EQ(Leggi(t, 202500002, 1).cStato, 0);
  EXPECT_TRUE(IsNull(Leggi(t, 202500002, 1).dtEnd));
  for (int cDisp : {1, 2}) {
    EXPECT_EQ(Leggi(t, 202500006, cDisp).cStato, 9);
    EXPECT_EQ(Leggi(t, 202500006, cDisp).dtEnd, QVariant(QDateTime(QDate(Y, 2, 20), QTime(0, 0))));
  }
  EXPECT_EQ(s.Chiavi(), QStringList({"K202500002002", "K202500002003", "K202500006000"}));
  EXPECT_EQ(s.Spuntate(), 0);
}

// A row that can't be written is logged and the others are closed all the same.
TEST(frmGestDisp, ARowThatCannotBeWrittenDoesNotStopTheOthers) {
  TestDb t;
  Officina(t);
  if (t.SuPostgres()) {
    t.db->ExecuteNativo(QStringLiteral(
        "CREATE FUNCTION bloccata() RETURNS trigger LANGUAGE plpgsql AS 'BEGIN IF OLD.\"CDisp\" = 1 AND "
        "OLD.\"CProject\" = 202500001 THEN RAISE EXCEPTION ''riga bloccata''; END IF; RETURN NEW; END'"));
    t.db->ExecuteNativo(QStringLiteral(
        "CREATE TRIGGER bloccata BEFORE UPDATE ON \"ProjectsDisp\" FOR EACH ROW EXECUTE FUNCTION bloccata()"));
  } else {
    t.Exec("CREATE TRIGGER bloccata BEFORE UPDATE ON ProjectsDisp WHEN OLD.CProject=202500001 AND OLD.CDisp=1 "
           "BEGIN SELECT RAISE(ABORT, 'riga bloccata'); END");
  }
  Schermo s;
  s.Menu("mnuSel");
  AlDialogo([&](frmGestDispOK* d) {
    t.messages->answers = {vbYes};
    d->OKButton->click();
  });
  s.Bottone(3);
  EXPECT_EQ(Leggi(t, 202500001, 1).cStato, 0);
  EXPECT_EQ(Leggi(t, 202500001, 2).cStato, 9);
  EXPECT_EQ(Leggi(t, 202500004, 1).cStato, 9);
  EXPECT_EQ(Leggi(t, 202500005, 1).cStato, 9);
  const QStringList log = t.LogLines("frmGestDisp", "CloseDisp");
  ASSERT_EQ(log.size(), 1);
  EXPECT_TRUE(log[0].contains(" - CloseDisp: ")) << log[0].toStdString();
  EXPECT_TRUE(log[0].contains("riga bloccata")) << log[0].toStdString();
  EXPECT_EQ(s.Chiavi(), QStringList({"K202500001001"}));
}

// ---------------------------------------------------------------- menu

// Closing by the menu: asked, then the date typed; No, an empty answer or
// no date change nothing. A forfait row closes the whole model.
TEST(frmGestDisp, MenuCloseAsksForTheDateAndTakesTheWholeForfaitModel) {
  TestDb t;
  Officina(t);
  Schermo s;
  s.Spunta("K202500001001");
  s.Spunta("K202500004000");
  s.Menu("mnuModDisp");  // No
  ASSERT_EQ(t.messages->asked.size(), 1u);
  EXPECT_EQ(t.messages->asked[0].prompt, "Sei sicuro di voler aggiornare lo stato delle disposizioni selezionate?");
  EXPECT_EQ(t.messages->asked[0].buttons, 292);
  for (const char* risposta : {"", "il quindici"}) {
    t.messages->asked.clear();
    t.messages->answers = {vbYes};
    t.messages->inputs = {QString::fromLatin1(risposta)};
    s.Menu("mnuModDisp");
    ASSERT_EQ(t.messages->asked.size(), 2u);
    EXPECT_EQ(t.messages->asked[1].prompt, "Data chiusura:");
    EXPECT_EQ(t.messages->asked[1].buttons, -1);  // an input box
    EXPECT_EQ(t.messages->asked[1].title, " ");
  }
  EXPECT_EQ(Leggi(t, 202500001, 1).cStato, 0);
  EXPECT_EQ(Leggi(t, 202500004, 1).cStato, 0);
  EXPECT_EQ(s.Spuntate(), 2);
  t.messages->answers = {vbYes};
  t.messages->inputs = {QString("15/06/%1").arg(Y)};
  s.Menu("mnuModDisp");
  const QVariant chiusura(QDateTime(QDate(Y, 6, 15), QTime(0, 0)));
  EXPECT_EQ(Leggi(t, 202500001, 1).cStato, 9);
  EXPECT_EQ(Leggi(t, 202500001, 1).dtEnd, chiusura);
  EXPECT_EQ(Leggi(t, 202500001, 2).cStato, 0);
  for (int cDisp : {1, 2}) {
    EXPECT_EQ(Leggi(t, 202500004, cDisp).cStato, 9);
    EXPECT_EQ(Leggi(t, 202500004, cDisp).dtEnd, chiusura);
  }
  EXPECT_EQ(s.Chiavi(), QStringList({"K202500001002", "K202500005000"}));
}

// Reopening by the menu: no date asked; the date of closing stays, and a
// forfait row reopens the whole model.
TEST(frmGestDisp, MenuReopenKeepsTheDateAndOpensTheWholeForfaitModel) {
  TestDb t;
  Officina(t);
  Schermo s;
  s.Scegli("CBStato", "Disp.chiuse");
  s.Spunta("K202500001003");
  s.Spunta("K202500006000");
  t.messages->answers = {vbYes};
  s.Menu("mnuModDisp");
  ASSERT_EQ(t.messages->asked.size(), 1u);  // the question alone
  EXPECT_EQ(Leggi(t, 202500001, 3).cStato, 0);
  EXPECT_EQ(Leggi(t, 202500001, 3).dtEnd, QVariant(QDateTime(QDate(Y, 3, 1), QTime(0, 0))));
  for (int cDisp : {1, 2}) {
    EXPECT_EQ(Leggi(t, 202500006, cDisp).cStato, 0);
    EXPECT_EQ(Leggi(t, 202500006, cDisp).dtEnd, QVariant(QDateTime(QDate(Y, 2, 20), QTime(0, 0))));
  }
  EXPECT_EQ(Leggi(t, 202500002, 1).cStato, 10);  // not checked
  EXPECT_EQ(s.Chiavi(), QStringList({"K202500002002", "K202500002001", "K202500002003"}));
}

namespace {
// Counts the times a widget is shown: the list is hidden while it fills and shown after.
struct ContaMostra : QObject {
  int volte = 0;
  bool eventFilter(QObject*, QEvent* e) override {
    if (e->type() == QEvent::Show) ++volte;
    return false;
  }
};
}  // namespace

// The menu builds the list twice, the tool bar once.
TEST(frmGestDisp, TheMenuBuildsTheListTwice) {
  TestDb t;
  Officina(t);
  Schermo s;
  s.Scegli("CBStato", "Disp.chiuse");
  ContaMostra conta;
  s.Lista()->installEventFilter(&conta);
  s.Spunta("K202500002002");
  t.messages->answers = {vbYes};
  s.Menu("mnuModDisp");
  EXPECT_EQ(conta.volte, 2);
  EXPECT_EQ(Leggi(t, 202500002, 2).cStato, 0);
  conta.volte = 0;
  s.Spunta("K202500002003");
  t.messages->answers = {vbYes};
  s.Bottone(3);
  EXPECT_EQ(conta.volte, 1);
  EXPECT_EQ(Leggi(t, 202500002, 3).cStato, 0);
}

// A forfait model whose dispositions were closed on two days gives a row for
// each; both bear the model's key, so the second can't be added and is logged.
TEST(frmGestDisp, AForfaitModelClosedOnTwoDaysGivesTwoRowsOfOneKey) {
  TestDb t;
  Officina(t);
  t.Exec(QStringLiteral("UPDATE ProjectsDisp SET DtEnd=%1 WHERE CProject=202500006 AND CDisp=2").arg(Il(Y, 2, 21)));
  Schermo s;
  s.Scegli("CBStato", "Disp.chiuse");
  EXPECT_EQ(s.Chiavi(), kChiuse);
  EXPECT_EQ(s.Lista()->Text(s.Lista()->IndexOfKey("K202500006000"), 0), QString("20/02/%1").arg(Y));
  const QStringList log = t.LogLines("ModListViewKT", "ListViewAddLine");
  ASSERT_EQ(log.size(), 1);
  EXPECT_TRUE(log[0].contains("(35602)")) << log[0].toStdString();
}
