// vorn-host: the host's window on the demo database, its registers, and its
// answers to the component's requests.
#include <gtest/gtest.h>

#include <algorithm>

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDateEdit>
#include <QDoubleSpinBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QStatusBar>
#include <QTest>
#include <QTimer>
#include <QTreeWidget>

#include "CalcDatiDisp.h"
#include "DemoData.h"
#include "ProcedureUi.h"
#include "HostPrezzi.h"
#include "HostRegistri.h"
#include "HostWindow.h"
#include "ListView.h"
#include "NumericSpin.h"
#include "TestSupport.h"
#include "HostDiProva.h"
#include "frmCalcPzVend.h"
#include "frmSettings.h"

using namespace prestkt;
using namespace prestkt::test;
using namespace vorn;

namespace {

// A stand-in for the model card: it listens on the card's relay and records what reaches it.
struct Card {
  Card() {
    relay = std::make_shared<OCPrestKTClass>();
    QObject::connect(relay.get(), &OCPrestKTClass::ChAnagInModelli, [this](QVariant& t, QVariant& c) {
      tAnag = t;
      cAnag = c;
      ++anagMod;
    });
    QObject::connect(relay.get(), &OCPrestKTClass::ChAnagInDocEvent, [this](QVariant& t, QVariant& c, QString& d) {
      tAnag = t;
      cAnag = c;
      tipoDoc = d;
      ++anagDoc;
    });
    QObject::connect(relay.get(), &OCPrestKTClass::ChProjInModelli, [this](QVariant& v) {
      tipo = v;
      ++tipoMod;
    });
    QObject::connect(relay.get(), &OCPrestKTClass::ChProjInDisposizioni, [this](QVariant& v) {
      tipo = v;
      ++tipoDisp;
    });
    gOcxEventCard = relay;
  }
  ~Card() { gOcxEventCard.reset(); }

  OCPrestKTClassPtr relay;
  QVariant tAnag, cAnag, tipo;
  QString tipoDoc;
  int anagMod = 0, anagDoc = 0, tipoMod = 0, tipoDisp = 0;
};

// The end asked of the application would end at once the next event loop
// that starts (a later test's modal card): a loop of this test takes it.
void AssorbiUscita() {
  QTimer::singleShot(0, qApp, [] { QCoreApplication::exit(0); });
  EXPECT_EQ(QCoreApplication::exec(), 0);
}

}  // namespace

TEST(Host, OpensTheComponentOnTheDemoDatabase) {
  Host h;
  ASSERT_TRUE(h.opened);
  EXPECT_EQ(h.w->windowTitle(), "VORN - Gestione lavorazioni");
  EXPECT_EQ(h.w->centralWidget(), h.Ctl());
  EXPECT_TRUE(gOcxEventS);
  const QDate oggi = QDate::currentDate();
  EXPECT_EQ(gDtIni, QDateTime(QDate(oggi.year() - 2, 1, 1), QTime(0, 0)));
  EXPECT_EQ(gDTEnd, QDateTime(QDate(oggi.year(), 12, 31), QTime(0, 0)));
  EXPECT_EQ(gStatus, -1);
  EXPECT_EQ(gTAnag, 1);
  EXPECT_FALSE(gOnlyInput);
  // The register holds the customers' models of the period.
  const int attesi = h.Scalar(Sql("SELECT Count(*) FROM Projects WHERE TAnag=1 AND DtIni BETWEEN ") +
                              Sql::Param(gDtIni) + Sql(" AND ") + Sql::Param(gDTEnd))
                         .toInt();
  EXPECT_GT(attesi, 0);
  EXPECT_EQ(h.Register()->Count(), attesi);
  auto* periodo = h.Find<QLabel>(h.w.get(), "lblPeriodo");
  ASSERT_TRUE(periodo);
  EXPECT_EQ(periodo->text(), QStringLiteral("Periodo: dal 01/01/%1 al 31/12/%2 · Stato: Tutti")
                                 .arg(oggi.year() - 2)
                                 .arg(oggi.year()));
  // The menus and their entries.
  for (const char* a : {"actEsci", "actPeriodo", "actElimina", "actAnagrafiche", "actTipiModello",
                        "actTipiDisposizione", "actPrestazioni", "actTariffe", "actTariffeClienti",
                        "actImpostazioniPrezzi", "actPrezziDisposizioni"})
    EXPECT_TRUE(h.Find<QAction>(h.w.get(), a)) << a;
  EXPECT_FALSE(h.Find<QLabel>(h.w.get(), "lblSoloInserimento")->isVisibleTo(h.w.get()));
  EXPECT_TRUE(h.messages->asked.empty()) << h.Prompts().join('|').toStdString();
}

TEST(Host, PartyChosenInTheRegisterReachesTheOpenCard) {
  Host h;
  ASSERT_TRUE(h.opened);
  Card card;
  const auto atteso = h.db->Select(Sql("SELECT CAnag FROM Anagrafica WHERE TAnag=1 AND RagSoc1 LIKE ") +
                                   Sql::Param(QStringLiteral("%Bianchi%")));
  ASSERT_EQ(atteso.rows.size(), 1u);
  const int cAnag = atteso.rows.front().front().toInt();

  // A screen of the component asks the host for a party of the model.
  gOcxEventS->ShowAnagMod();
  auto* dlg = h.Find<AnagraficheDialog>(h.w.get(), "dlgAnagrafiche");
  ASSERT_TRUE(dlg);
  EXPECT_TRUE(dlg->isVisible());
  EXPECT_EQ(dlg->windowTitle(), "Anagrafiche");
  EXPECT_TRUE(dlg->InScelta());
  EXPECT_EQ(h.Find<QComboBox>(dlg, "cbTipo")->currentText(), "Clienti");
  EXPECT_EQ(card.anagMod, 0);  // nothing goes out before the choice

  QTest::keyClicks(h.Find<QLineEdit>(dlg, "edCerca"), "bianchi");
  auto* list = h.Find<QTreeWidget>(dlg, "lvAnagrafiche");
  h.ClickRow(list, cAnag);
  h.Click(dlg, "btnScegli");

  EXPECT_EQ(card.anagMod, 1);
  EXPECT_EQ(card.tAnag.toInt(), 1);
  EXPECT_EQ(card.cAnag.toInt(), cAnag);
  EXPECT_FALSE(dlg->isVisible());
  EXPECT_TRUE(h.messages->asked.empty()) << h.Prompts().join('|').toStdString();
  EXPECT_EQ(h.w->statusBar()->currentMessage(), "Anagrafica inviata alla scheda del modello.");
}

TEST(Host, ChoiceWithNoCardOpenIsToldToTheUser) {
  Host h;
  ASSERT_TRUE(h.opened);
  ASSERT_FALSE(gOcxEventCard);
  gOcxEventS->ShowAnagMod();
  auto* dlg = h.Find<AnagraficheDialog>(h.w.get(), "dlgAnagrafiche");
  ASSERT_TRUE(dlg);
  auto* list = h.Find<QTreeWidget>(dlg, "lvAnagrafiche");
  ASSERT_GT(list->topLevelItemCount(), 0);
  h.ClickRow(list, list->topLevelItem(0)->data(0, Qt::UserRole).toInt());
  h.Click(dlg, "btnScegli");
  ASSERT_EQ(h.messages->asked.size(), 1u);
  EXPECT_EQ(h.messages->asked[0].prompt, "Nessuna scheda aperta a cui inviare la scelta.");
  EXPECT_EQ(h.messages->asked[0].buttons, vbExclamation);
  EXPECT_EQ(h.messages->asked[0].title, "VORN");
}

TEST(Host, ScegliWithoutASelectionAsksForOne) {
  Host h;
  ASSERT_TRUE(h.opened);
  Card card;
  gOcxEventS->ShowAnagMod();
  auto* dlg = h.Find<AnagraficheDialog>(h.w.get(), "dlgAnagrafiche");
  ASSERT_TRUE(dlg);
  h.Click(dlg, "btnScegli");
  EXPECT_EQ(h.Prompts(), QStringList{"Seleziona un'anagrafica!"});
  EXPECT_TRUE(dlg->isVisible());
  EXPECT_EQ(card.anagMod, 0);
}

TEST(Host, PartyForADocumentGoesBackWithItsKind) {
  Host h;
  ASSERT_TRUE(h.opened);
  Card card;
  QString tipo = QStringLiteral("DDT");
  gOcxEventS->ShowAnagDoc(tipo);
  auto* dlg = h.Find<AnagraficheDialog>(h.w.get(), "dlgAnagrafiche");
  ASSERT_TRUE(dlg);
  ASSERT_TRUE(dlg->isVisible());
  auto* tipi = h.Find<QComboBox>(dlg, "cbTipo");
  tipi->setCurrentIndex(tipi->findText("Fornitori"));
  auto* list = h.Find<QTreeWidget>(dlg, "lvAnagrafiche");
  const int fornitori = h.Scalar(Sql("SELECT Count(*) FROM Anagrafica WHERE TAnag=2 AND Eliminato=0")).toInt();
  EXPECT_EQ(list->topLevelItemCount(), fornitori);
  const int cAnag = list->topLevelItem(1)->data(0, Qt::UserRole).toInt();
  h.ClickRow(list, cAnag);
  h.Click(dlg, "btnScegli");
  EXPECT_EQ(card.anagDoc, 1);
  EXPECT_EQ(card.tAnag.toInt(), 2);
  EXPECT_EQ(card.cAnag.toInt(), cAnag);
  EXPECT_EQ(card.tipoDoc, "DDT");
}

TEST(Host, ModelTypeRequestOpensOnTheCodeAndAnswers) {
  Host h;
  ASSERT_TRUE(h.opened);
  Card card;
  const int prototipo = h.Scalar(Sql("SELECT CPrjTipo FROM ProjectsTipo WHERE Sigla='PR'")).toInt();
  const int stampo = h.Scalar(Sql("SELECT CPrjTipo FROM ProjectsTipo WHERE Sigla='ST'")).toInt();
  ASSERT_NE(prototipo, 0);
  QVariant richiesto(prototipo);
  gOcxEventS->ShowTipologieMod(richiesto);
  auto* dlg = h.Find<TipiModelloDialog>(h.w.get(), "dlgTipiModello");
  ASSERT_TRUE(dlg);
  EXPECT_TRUE(dlg->isVisible());
  EXPECT_EQ(dlg->windowTitle(), "Tipologie modelli");
  auto* list = h.Find<QTreeWidget>(dlg, "lvTipiModello");
  EXPECT_EQ(h.CurrentCode(list), prototipo);
  EXPECT_EQ(h.Find<QLineEdit>(dlg, "edDescrizione")->text(), "Prototipo");
  h.ClickRow(list, stampo);
  EXPECT_EQ(h.Find<QLineEdit>(dlg, "edSigla")->text(), "ST");
  h.Click(dlg, "btnScegli");
  EXPECT_EQ(card.tipoMod, 1);
  EXPECT_EQ(card.tipo.toInt(), stampo);
  EXPECT_FALSE(dlg->isVisible());
}

TEST(Host, DispositionTypeRequestOpensOnTheCodeAndAnswers) {
  Host h;
  ASSERT_TRUE(h.opened);
  Card card;
  const int pezzo = h.Scalar(Sql("SELECT CPrjDispTipo FROM ProjectsDispTipo WHERE Sigla='PZ'")).toInt();
  ASSERT_NE(pezzo, 0);
  QVariant richiesto(pezzo);
  gOcxEventS->ShowTipologieDisp(richiesto);
  auto* dlg = h.Find<TipiDisposizioneDialog>(h.w.get(), "dlgTipiDisposizione");
  ASSERT_TRUE(dlg);
  EXPECT_TRUE(dlg->isVisible());
  auto* list = h.Find<QTreeWidget>(dlg, "lvTipiDisposizione");
  EXPECT_EQ(h.CurrentCode(list), pezzo);
  EXPECT_EQ(h.Find<QComboBox>(dlg, "cbTipoFatt")->currentText(), "Pezzo");
  // The allowed service kinds of the type are the checked ones.
  auto* prest = h.Find<QListWidget>(dlg, "lwPrestazioni");
  const int tutte = h.Scalar(Sql("SELECT Count(*) FROM TabGen WHERE CTipTabGen=12")).toInt();
  ASSERT_EQ(prest->count(), tutte);
  int spuntate = 0;
  for (int i = 0; i < prest->count(); ++i) spuntate += prest->item(i)->checkState() == Qt::Checked;
  EXPECT_EQ(spuntate, h.Scalar(Sql("SELECT Count(*) FROM ProjectsDisp2Prest WHERE CPrjDispTipo=") +
                               Sql::Param(pezzo))
                          .toInt());
  h.Click(dlg, "btnScegli");
  EXPECT_EQ(card.tipoDisp, 1);
  EXPECT_EQ(card.tipo.toInt(), pezzo);
}

TEST(Host, ClosePrgEndsTheProgram) {
  Host h;
  ASSERT_TRUE(h.opened);
  h.w->show();
  h.w->findChild<QAction*>("actAnagrafiche")->trigger();
  auto* dlg = h.Find<AnagraficheDialog>(h.w.get(), "dlgAnagrafiche");
  ASSERT_TRUE(dlg && dlg->isVisible());
  EXPECT_FALSE(h.w->UscitaRichiesta());
  gOcxEventS->CloseAll();
  EXPECT_TRUE(h.w->UscitaRichiesta());
  EXPECT_FALSE(h.w->isVisible());
  EXPECT_FALSE(dlg->isVisible());
  AssorbiUscita();
}

TEST(Host, PeriodAndStateReachTheComponent) {
  Host h;
  ASSERT_TRUE(h.opened);
  const int prima = h.Register()->Count();
  h.w->findChild<QAction*>("actPeriodo")->trigger();
  auto* dlg = h.Find<PeriodoDialog>(h.w.get(), "dlgPeriodo");
  ASSERT_TRUE(dlg);
  ASSERT_TRUE(dlg->isVisible());
  auto* dal = h.Find<QDateEdit>(dlg, "dtDal");
  auto* al = h.Find<QDateEdit>(dlg, "dtAl");
  auto* stato = h.Find<QComboBox>(dlg, "cbStato");
  // The dialog opens on the component's values.
  EXPECT_EQ(dal->date(), gDtIni.date());
  EXPECT_EQ(al->date(), gDTEnd.date());
  EXPECT_EQ(stato->currentText(), "Tutti");
  EXPECT_TRUE(dal->calendarPopup());
  QStringList stati;
  for (int i = 0; i < stato->count(); ++i) stati << stato->itemText(i);
  EXPECT_EQ(stati, QStringList({"Tutti", "Aperti", "Chiusi", "Chiusi dall'amministrazione"}));

  // A period that ends before it starts is refused and changes nothing.
  const QDate oggi = QDate::currentDate();
  dal->setDate(oggi);
  al->setDate(oggi.addDays(-1));
  h.Click(dlg, "btnOK");
  EXPECT_EQ(h.Prompts(), QStringList{"La data iniziale non può essere successiva a quella finale!"});
  EXPECT_TRUE(dlg->isVisible());
  EXPECT_EQ(h.Register()->Count(), prima);

  // The last twelve months, open models only.
  const QDate da = oggi.addYears(-1);
  dal->setDate(da);
  al->setDate(oggi);
  stato->setCurrentIndex(stato->findText("Aperti"));
  h.Click(dlg, "btnOK");
  EXPECT_FALSE(dlg->isVisible());
  EXPECT_EQ(gDtIni, QDateTime(da, QTime(0, 0)));
  EXPECT_EQ(gDTEnd, QDateTime(oggi, QTime(0, 0)));
  EXPECT_EQ(gStatus, 0);
  EXPECT_EQ(h.Ctl()->Status(), 0);
  const int attesi = h.Scalar(Sql("SELECT Count(*) FROM Projects WHERE TAnag=1 AND Stato=0 AND DtIni BETWEEN ") +
                              Sql::Param(gDtIni) + Sql(" AND ") + Sql::Param(gDTEnd))
                         .toInt();
  EXPECT_GT(attesi, 0);
  EXPECT_LT(attesi, prima);
  EXPECT_EQ(h.Register()->Count(), attesi);
  const QLocale it(QLocale::Italian, QLocale::Italy);
  EXPECT_EQ(h.Find<QLabel>(h.w.get(), "lblPeriodo")->text(),
            QStringLiteral("Periodo: dal %1 al %2 · Stato: Aperti")
                .arg(it.toString(da, "dd/MM/yyyy"), it.toString(oggi, "dd/MM/yyyy")));
}

TEST(Host, StatusBarFollowsTheComponentsProperties) {
  Host h;
  ASSERT_TRUE(h.opened);
  auto* periodo = h.Find<QLabel>(h.w.get(), "lblPeriodo");
  h.Ctl()->SetStatus(10);
  EXPECT_TRUE(periodo->text().endsWith("Stato: Chiusi dall'amministrazione")) << periodo->text().toStdString();
  h.Ctl()->SetDTEnd(QDateTime(QDate(2030, 5, 4), QTime(0, 0)));
  EXPECT_TRUE(periodo->text().contains("al 04/05/2030")) << periodo->text().toStdString();
}

TEST(Host, DataForTheDocumentsShowInTheStatusBar) {
  Host h;
  ASSERT_TRUE(h.opened);
  double importo = 1234.5;
  gOcxEventS->SendDataFattDiff(importo);
  EXPECT_EQ(h.w->statusBar()->currentMessage(), "Importo per la fattura differita ricevuto: 1.234,50");

  RecordsetPtr testa = Recordset::Create();
  testa->Append("NDoc", adInteger);
  testa->Open();
  for (int i = 0; i < 2; ++i) {
    testa->AddNew();
    testa->SetValue("NDoc", i + 1);
    testa->Update();
  }
  RecordsetPtr righe;  // none sent
  int riga = 3;
  int modo = 1;
  gOcxEventS->SendDataDoc(testa, righe, riga, modo);
  EXPECT_EQ(h.w->statusBar()->currentMessage(),
            "Dati per il documento ricevuti: 2 righe, 0 righe di dettaglio (riga 3, modo 1).");
}

TEST(Host, DeleteModelFromTheMenu) {
  Host h;
  ASSERT_TRUE(h.opened);
  ListView* reg = h.Register();
  ASSERT_GT(reg->Count(), 0);
  const int prima = reg->Count();
  reg->SetSelected(0);
  const int codice = reg->Key(0).mid(1).toInt();
  h.messages->answers.push_back(vbYes);
  h.w->findChild<QAction*>("actElimina")->trigger();
  ASSERT_EQ(h.messages->asked.size(), 1u);
  EXPECT_TRUE(h.messages->asked[0].prompt.startsWith("Sei sicuro di voler eliminare il modello"));
  EXPECT_EQ(reg->Count(), prima - 1);
  EXPECT_EQ(h.Scalar(Sql("SELECT Count(*) FROM Projects WHERE CProject=") + Sql::Param(codice)).toInt(), 0);
}

// Ctrl+Canc in the search field deletes a word there, and no model; on the
// register itself the same keys ask to delete the selected model.
TEST(Host, RegisterShortcutsLeaveTextFieldsAlone) {
  Host h;
  ASSERT_TRUE(h.opened);
  h.w->show();
  h.w->activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(h.w.get()));
  ListView* reg = h.Register();
  ASSERT_GT(reg->Count(), 0);
  const int prima = reg->Count();
  reg->SetSelected(0);
  auto* cerca = h.Find<QLineEdit>(h.Ctl(), "TBFind");
  cerca->setFocus();
  QTest::keyClicks(cerca, "staffa ");
  cerca->setCursorPosition(0);
  QTest::keyClick(cerca, Qt::Key_Delete, Qt::ControlModifier);
  EXPECT_EQ(cerca->text(), "");  // the word went, and with it the filter
  // A card that opened all the same is closed again, and counted.
  int schede = 0;
  QTimer chiudi;
  QObject::connect(&chiudi, &QTimer::timeout, [&] {
    if (QWidget* m = QApplication::activeModalWidget()) {
      ++schede;
      m->close();
    }
  });
  chiudi.start(50);
  QTest::keyClick(cerca, Qt::Key_N, Qt::ControlModifier);
  QTest::keyClick(cerca, Qt::Key_O, Qt::ControlModifier);
  chiudi.stop();
  EXPECT_EQ(schede, 0);
  EXPECT_TRUE(h.messages->asked.empty()) << h.Prompts().join('|').toStdString();
  EXPECT_EQ(reg->Count(), prima);

  reg->setFocus();
  reg->SetSelected(0);
  QTest::keyClick(reg, Qt::Key_Delete, Qt::ControlModifier);  // the default answer is No
  ASSERT_EQ(h.messages->asked.size(), 1u);
  EXPECT_TRUE(h.messages->asked[0].prompt.startsWith("Sei sicuro di voler eliminare il modello"));
  EXPECT_EQ(reg->Count(), prima);
}

// Enter on the selected model of the register opens its card, as a double click does.
TEST(Host, EnterOnTheRegisterOpensTheSelectedModel) {
  Host h;
  ASSERT_TRUE(h.opened);
  h.w->show();
  ListView* reg = h.Register();
  ASSERT_GT(reg->Count(), 1);
  reg->setFocus();
  reg->SetSelected(1);
  const int codice = reg->Key(1).mid(1).toInt();
  QString titolo;
  int aperta = 0;
  QTimer::singleShot(0, [&] {
    if (QWidget* m = QApplication::activeModalWidget()) {
      titolo = m->windowTitle();
      aperta = gCProject;
      m->close();
    }
  });
  QTest::keyClick(reg, Qt::Key_Return);
  EXPECT_EQ(titolo, "Scheda Modello");
  EXPECT_EQ(aperta, codice);
}

TEST(Host, OnlyInputKeepsTheRegisterReadOnly) {
  Host h(true);
  ASSERT_TRUE(h.opened);
  EXPECT_TRUE(gOnlyInput);
  EXPECT_TRUE(h.Find<QLabel>(h.w.get(), "lblSoloInserimento")->isVisibleTo(h.w.get()));
  auto* elimina = h.w->findChild<QAction*>("actElimina");
  EXPECT_FALSE(elimina->isEnabled());
  EXPECT_FALSE(h.w->findChild<QAction*>("actPrezziDisposizioni")->isEnabled());
  ListView* reg = h.Register();
  ASSERT_GT(reg->Count(), 0);
  reg->SetSelected(0);
  const int modelli = h.Scalar(Sql("SELECT Count(*) FROM Projects")).toInt();
  h.Ctl()->Elimina();
  EXPECT_EQ(h.Scalar(Sql("SELECT Count(*) FROM Projects")).toInt(), modelli);
  EXPECT_TRUE(h.messages->asked.empty());
}

// With --only-input the station is the whole program: it opens filling the
// screen, the register's window stays hidden, and closing the station with
// Yes ends the program.
TEST(Host, OnlyInputRunsTheStationAsTheWholeProgram) {
  Host h(true);
  ASSERT_TRUE(h.opened);
  bool pieno = false;
  QString titolo;
  QTimer::singleShot(50, [&] {
    QWidget* stazione = QApplication::activeModalWidget();
    ASSERT_TRUE(stazione);
    titolo = stazione->windowTitle();
    pieno = stazione->windowState().testFlag(Qt::WindowFullScreen);
    h.messages->answers = {vbYes};
    stazione->close();
  });
  h.w->Avvia();
  QTest::qWait(200);
  EXPECT_EQ(titolo, "Inserimento prestazioni");
  EXPECT_TRUE(pieno);
  EXPECT_FALSE(h.w->isVisible());
  ASSERT_EQ(h.messages->asked.size(), 1u);
  EXPECT_EQ(h.messages->asked[0].prompt, "Vuoi chiudere il programma?");
  EXPECT_TRUE(h.w->UscitaRichiesta());
  AssorbiUscita();
}

TEST(Host, PartyRegisterAddsChangesAndDeletes) {
  Host h;
  ASSERT_TRUE(h.opened);
  h.w->findChild<QAction*>("actAnagrafiche")->trigger();
  auto* dlg = h.Find<AnagraficheDialog>(h.w.get(), "dlgAnagrafiche");
  ASSERT_TRUE(dlg && dlg->isVisible());
  EXPECT_FALSE(dlg->InScelta());
  EXPECT_FALSE(h.Find<QPushButton>(dlg, "btnScegli")->isVisible());
  auto* tipi = h.Find<QComboBox>(dlg, "cbTipo");
  auto* list = h.Find<QTreeWidget>(dlg, "lvAnagrafiche");
  tipi->setCurrentIndex(tipi->findData(10));
  EXPECT_FALSE(list->isColumnHidden(5));  // the hourly cost of the operators
  const int operatori = h.Scalar(Sql("SELECT Count(*) FROM Anagrafica WHERE TAnag=10 AND Eliminato=0")).toInt();
  EXPECT_EQ(list->topLevelItemCount(), operatori);
  const int atteso = h.Scalar(Sql("SELECT Max(CAnag) FROM Anagrafica WHERE TAnag=10")).toInt() + 1;

  h.Click(dlg, "btnNuova");
  AnagraficaForm* form = nullptr;
  for (auto* f : dlg->findChildren<AnagraficaForm*>())
    if (f->isVisible()) form = f;
  ASSERT_TRUE(form);
  // No name: the form says so and stays open.
  h.Click(form, "btnOK");
  EXPECT_EQ(h.Prompts(), QStringList{"Inserisci il nome dell'operatore!"});
  EXPECT_TRUE(form->isVisible());
  QTest::keyClicks(h.Find<QLineEdit>(form, "edRagSoc1"), "Ferri Giulio");
  h.Find<QLineEdit>(form, "edPIva")->setText("12345");
  h.Click(form, "btnOK");
  EXPECT_EQ(h.messages->asked.back().prompt, "La partita IVA italiana ha 11 cifre!");
  h.Find<QLineEdit>(form, "edPIva")->clear();
  h.Find<QDoubleSpinBox>(form, "spCostoH")->setValue(28.5);
  h.Click(form, "btnOK");
  EXPECT_FALSE(form->isVisible());
  const auto r = h.db->Select(Sql("SELECT RagSoc1, CostoH, Eliminato, PIva FROM Anagrafica WHERE TAnag=10 AND CAnag=") +
                              Sql::Param(atteso));
  ASSERT_EQ(r.rows.size(), 1u);
  EXPECT_EQ(r.rows[0][0].toString(), "Ferri Giulio");
  EXPECT_DOUBLE_EQ(r.rows[0][1].toDouble(), 28.5);
  EXPECT_FALSE(r.rows[0][2].toBool());
  EXPECT_TRUE(r.rows[0][3].isNull());
  EXPECT_EQ(list->topLevelItemCount(), operatori + 1);
  EXPECT_EQ(h.CurrentCode(list), atteso);
  EXPECT_EQ(list->currentItem()->text(5), "28,50");

  // Change it.
  h.Click(dlg, "btnModifica");
  form = nullptr;
  for (auto* f : dlg->findChildren<AnagraficaForm*>())
    if (f->isVisible()) form = f;
  ASSERT_TRUE(form);
  EXPECT_EQ(h.Find<QLineEdit>(form, "edRagSoc1")->text(), "Ferri Giulio");
  h.Find<QLineEdit>(form, "edCitta")->setText("Brescia");
  h.Find<QLineEdit>(form, "edProv")->setText("bs");
  h.Click(form, "btnOK");
  const auto luogo =
      h.db->Select(Sql("SELECT Citta, Prov FROM Anagrafica WHERE TAnag=10 AND CAnag=") + Sql::Param(atteso));
  ASSERT_EQ(luogo.rows.size(), 1u);
  EXPECT_EQ(luogo.rows[0][0].toString(), "Brescia");
  EXPECT_EQ(luogo.rows[0][1].toString(), "BS");

  // Delete it: a flag, the row stays for the models that use it.
  h.messages->answers.push_back(vbYes);
  h.Click(dlg, "btnElimina");
  EXPECT_TRUE(h.messages->asked.back().prompt.startsWith("Vuoi eliminare l'anagrafica «Ferri Giulio»?"));
  EXPECT_TRUE(h.Scalar(Sql("SELECT Eliminato FROM Anagrafica WHERE TAnag=10 AND CAnag=") + Sql::Param(atteso))
                  .toBool());
  EXPECT_EQ(list->topLevelItemCount(), operatori);
  h.Find<QCheckBox>(dlg, "chkEliminate")->setChecked(true);
  h.ClickRow(list, atteso);
  EXPECT_EQ(h.Find<QPushButton>(dlg, "btnElimina")->text(), "&Ripristina");
}

TEST(Host, NewCustomerIsCheckedBeforeItIsWritten) {
  Host h;
  ASSERT_TRUE(h.opened);
  auto* dlg = h.w->Anagrafiche();
  dlg->Apri(1, 0);
  const int clienti = h.Scalar(Sql("SELECT Count(*) FROM Anagrafica WHERE TAnag=1")).toInt();
  h.Click(dlg, "btnNuova");
  AnagraficaForm* form = nullptr;
  for (auto* f : dlg->findChildren<AnagraficaForm*>())
    if (f->isVisible()) form = f;
  ASSERT_TRUE(form);
  EXPECT_FALSE(h.Find<QDoubleSpinBox>(form, "spCostoH")->isVisible());  // not an operator
  h.Click(form, "btnOK");
  EXPECT_EQ(h.Prompts(), QStringList{"Inserisci la ragione sociale!"});
  // A name already in the register (in other letter case): the user is asked, and says no.
  const QString esistente = h.Scalar(Sql("SELECT RagSoc1 FROM Anagrafica WHERE TAnag=1 AND CAnag=1")).toString();
  h.Find<QLineEdit>(form, "edRagSoc1")->setText(esistente.toUpper());
  h.Find<QLineEdit>(form, "edProv")->setText("2B");
  h.Click(form, "btnOK");
  EXPECT_EQ(h.messages->asked.back().prompt, "Indica la provincia con la sigla di due lettere!");
  h.Find<QLineEdit>(form, "edProv")->setText("bs");
  h.messages->answers.push_back(vbNo);
  h.Click(form, "btnOK");
  EXPECT_TRUE(h.messages->asked.back().prompt.startsWith(QStringLiteral("Esiste già un'anagrafica «%1» (codice 1)")
                                                             .arg(esistente.toUpper())));
  EXPECT_TRUE(form->isVisible());
  EXPECT_EQ(h.Scalar(Sql("SELECT Count(*) FROM Anagrafica WHERE TAnag=1")).toInt(), clienti);
  // A new name goes in with the next code of the type.
  h.Find<QLineEdit>(form, "edRagSoc1")->setText("Torneria Valtrompia S.r.l.");
  h.Find<QLineEdit>(form, "edPIva")->setText("01234567890");
  h.Click(form, "btnOK");
  EXPECT_FALSE(form->isVisible());
  const auto r = h.db->Select(Sql("SELECT CAnag, Prov, PIva, RagSoc2 FROM Anagrafica WHERE TAnag=1 AND RagSoc1=") +
                              Sql::Param(QStringLiteral("Torneria Valtrompia S.r.l.")));
  ASSERT_EQ(r.rows.size(), 1u);
  EXPECT_EQ(r.rows[0][0].toInt(), clienti + 1);
  EXPECT_EQ(r.rows[0][1].toString(), "BS");
  EXPECT_EQ(r.rows[0][2].toString(), "01234567890");
  EXPECT_TRUE(r.rows[0][3].isNull());
}

TEST(Host, DeletedPartyCannotBeChosen) {
  Host h;
  ASSERT_TRUE(h.opened);
  Card card;
  h.db->Execute(Sql("UPDATE Anagrafica SET Eliminato=-1 WHERE TAnag=1 AND CAnag=1"));
  gOcxEventS->ShowAnagMod();
  auto* dlg = h.Find<AnagraficheDialog>(h.w.get(), "dlgAnagrafiche");
  ASSERT_TRUE(dlg);
  h.Find<QCheckBox>(dlg, "chkEliminate")->setChecked(true);
  h.ClickRow(h.Find<QTreeWidget>(dlg, "lvAnagrafiche"), 1);
  h.Click(dlg, "btnScegli");
  EXPECT_EQ(h.Prompts(), QStringList{"L'anagrafica è eliminata: ripristinala prima di sceglierla!"});
  EXPECT_EQ(card.anagMod, 0);
  EXPECT_TRUE(dlg->isVisible());
}

TEST(Host, ModelTypeRegisterWritesANewType) {
  Host h;
  ASSERT_TRUE(h.opened);
  h.w->findChild<QAction*>("actTipiModello")->trigger();
  auto* dlg = h.Find<TipiModelloDialog>(h.w.get(), "dlgTipiModello");
  ASSERT_TRUE(dlg && dlg->isVisible());
  EXPECT_FALSE(h.Find<QPushButton>(dlg, "btnScegli")->isVisible());
  auto* list = h.Find<QTreeWidget>(dlg, "lvTipiModello");
  const int tipi = h.Scalar(Sql("SELECT Count(*) FROM ProjectsTipo")).toInt();
  EXPECT_EQ(list->topLevelItemCount(), tipi);
  const int atteso = h.Scalar(Sql("SELECT Max(CPrjTipo) FROM ProjectsTipo")).toInt() + 1;

  h.Click(dlg, "btnNuova");
  EXPECT_EQ(h.Find<QLineEdit>(dlg, "edCodice")->text(), "(nuova)");
  h.Click(dlg, "btnSalva");
  EXPECT_EQ(h.Prompts(), QStringList{"Inserisci la descrizione!"});
  QTest::keyClicks(h.Find<QLineEdit>(dlg, "edDescrizione"), "Dima di controllo");
  QTest::keyClicks(h.Find<QLineEdit>(dlg, "edSigla"), "st");
  h.Click(dlg, "btnSalva");
  EXPECT_EQ(h.messages->asked.back().prompt, "La sigla «ST» è già usata dalla tipologia «Stampo»!");
  EXPECT_EQ(h.Scalar(Sql("SELECT Count(*) FROM ProjectsTipo")).toInt(), tipi);
  auto* sigla = h.Find<QLineEdit>(dlg, "edSigla");
  sigla->clear();
  QTest::keyClicks(sigla, "dc");
  h.Find<QCheckBox>(dlg, "chkForfSempl")->setChecked(true);
  h.Click(dlg, "btnSalva");
  const auto r = h.db->Select(Sql("SELECT DPrjTipo, Sigla, GestForfSempl FROM ProjectsTipo WHERE CPrjTipo=") +
                              Sql::Param(atteso));
  ASSERT_EQ(r.rows.size(), 1u);
  EXPECT_EQ(r.rows[0][0].toString(), "Dima di controllo");
  EXPECT_EQ(r.rows[0][1].toString(), "DC");
  EXPECT_TRUE(r.rows[0][2].toBool());
  EXPECT_EQ(list->topLevelItemCount(), tipi + 1);
  EXPECT_EQ(h.CurrentCode(list), atteso);
  EXPECT_EQ(h.Find<QLineEdit>(dlg, "edCodice")->text(), QString::number(atteso));

  // Changed: the same row, no new one.
  auto* descr = h.Find<QLineEdit>(dlg, "edDescrizione");
  descr->setText("Dima di collaudo");
  h.Click(dlg, "btnSalva");
  EXPECT_EQ(h.Scalar(Sql("SELECT DPrjTipo FROM ProjectsTipo WHERE CPrjTipo=") + Sql::Param(atteso)).toString(),
            "Dima di collaudo");
  EXPECT_EQ(h.Scalar(Sql("SELECT Count(*) FROM ProjectsTipo")).toInt(), tipi + 1);
}

TEST(Host, DispositionTypeRegisterWritesTheAllowedServices) {
  Host h;
  ASSERT_TRUE(h.opened);
  h.w->findChild<QAction*>("actTipiDisposizione")->trigger();
  auto* dlg = h.Find<TipiDisposizioneDialog>(h.w.get(), "dlgTipiDisposizione");
  ASSERT_TRUE(dlg && dlg->isVisible());
  const int atteso = h.Scalar(Sql("SELECT Max(CPrjDispTipo) FROM ProjectsDispTipo")).toInt() + 1;
  h.Click(dlg, "btnNuova");
  QTest::keyClicks(h.Find<QLineEdit>(dlg, "edDescrizione"), "Trattamento termico");
  QTest::keyClicks(h.Find<QLineEdit>(dlg, "edSigla"), "TT");
  auto* fatt = h.Find<QComboBox>(dlg, "cbTipoFatt");
  QStringList voci;
  for (int i = 0; i < fatt->count(); ++i) voci << fatt->itemText(i);
  EXPECT_EQ(voci, QStringList({"Non fatt.", "Oraria", "Pezzo"}));
  fatt->setCurrentIndex(2);
  h.Find<QCheckBox>(dlg, "chkForfait")->setChecked(true);
  auto* prest = h.Find<QListWidget>(dlg, "lwPrestazioni");
  QList<int> scelte;
  for (int i = 0; i < prest->count(); ++i) {
    EXPECT_EQ(prest->item(i)->checkState(), Qt::Unchecked);
    if (prest->item(i)->text().startsWith("Saldatura") || prest->item(i)->text().startsWith("Collaudo")) {
      prest->item(i)->setCheckState(Qt::Checked);
      scelte << prest->item(i)->data(Qt::UserRole).toInt();
    }
  }
  ASSERT_EQ(scelte.size(), 2);
  h.Click(dlg, "btnSalva");
  EXPECT_TRUE(h.messages->asked.empty()) << h.Prompts().join('|').toStdString();
  const auto r = h.db->Select(
      Sql("SELECT DPrjDispTipo, Sigla, Forfait, TipoFatt FROM ProjectsDispTipo WHERE CPrjDispTipo=") +
      Sql::Param(atteso));
  ASSERT_EQ(r.rows.size(), 1u);
  EXPECT_EQ(r.rows[0][0].toString(), "Trattamento termico");
  EXPECT_EQ(r.rows[0][1].toString(), "TT");
  EXPECT_TRUE(r.rows[0][2].toBool());
  EXPECT_EQ(r.rows[0][3].toInt(), 2);
  auto ammesse = [&](int tipo) {
    QList<int> v;
    for (const Row& row : h.db->Select(Sql("SELECT CPrestazione FROM ProjectsDisp2Prest WHERE CPrjDispTipo=") +
                                       Sql::Param(tipo) + Sql(" ORDER BY CPrestazione"))
                              .rows)
      v << row[0].toInt();
    return v;
  };
  std::sort(scelte.begin(), scelte.end());
  EXPECT_EQ(ammesse(atteso), scelte);

  // One service less: the rows are written again as checked.
  for (int i = 0; i < prest->count(); ++i)
    if (prest->item(i)->text().startsWith("Collaudo")) prest->item(i)->setCheckState(Qt::Unchecked);
  h.Click(dlg, "btnSalva");
  EXPECT_EQ(ammesse(atteso).size(), 1);
  // The other types keep theirs.
  const int oraria = h.Scalar(Sql("SELECT CPrjDispTipo FROM ProjectsDispTipo WHERE Sigla='LO'")).toInt();
  EXPECT_EQ(ammesse(oraria).size(), 5);
}

namespace {

QString Euro(double v) { return QLocale(QLocale::Italian, QLocale::Italy).toString(v, 'f', 2); }

QString Chiave(int cProject) { return QStringLiteral("K%1").arg(cProject, 9, 10, QLatin1Char('0')); }

// Waits for the price calculator; once it shows, records what it was opened
// on and what its price field holds, shows the tab of the external work and
// triggers the toolbar button asked for.
class Calcolatrice : public QObject {
 public:
  void Premi(const char* azione) {
    azione_ = azione;
    QTimer::singleShot(0, this, [this] { Prova(); });
  }

  bool vista = false;
  bool premuta = false;
  QString chiamante;
  int cProject = 0;
  int cDisp = 0;
  double qta = 0;
  double pzIni = 0;
  double prezzo = 0;
  int scheda = -1;

 private:
  void Prova() {
    auto* f = qobject_cast<frmCalcPzVend*>(QApplication::activeModalWidget());
    if (!f) {
      if (++tentativi_ < 200) QTimer::singleShot(10, this, [this] { Prova(); });
      return;
    }
    vista = true;
    chiamante = f->Chiamante;
    cProject = f->CProject;
    cDisp = f->CDisp;
    qta = f->Qta;
    pzIni = f->PzIni;
    prezzo = f->OCPzVend->Value();
    f->SSTab1->setCurrentIndex(1);
    scheda = f->SSTab1->currentIndex();
    // A screen that stays open after the button would hold the test: it is closed.
    QTimer::singleShot(0, f, [f] { f->close(); });
    if (auto* a = f->findChild<QAction*>(QString::fromLatin1(azione_))) {
      premuta = true;
      a->trigger();
    }
  }

  const char* azione_ = "";
  int tentativi_ = 0;
};

}  // namespace

TEST(Host, DemoDatabaseHasTariffsForEveryPairInUse) {
  Host h;
  ASSERT_TRUE(h.opened);
  EXPECT_GT(h.Scalar(Sql("SELECT Count(*) FROM ProjectsDisp")).toInt(), 0);
  EXPECT_EQ(h.Scalar(Sql("SELECT Count(*) FROM ProjectsDisp d INNER JOIN Projects p ON d.CProject=p.CProject "
                         "LEFT JOIN ProjectsDispTar t ON t.CPrjTipo=p.CPrjTipo AND t.CPrjDispTipo=d.CPrjDispTipo "
                         "WHERE t.CPrjTipo IS NULL"))
                .toInt(),
            0);
  // The internal work counts at the workshop's own rate.
  EXPECT_EQ(h.Scalar(Sql("SELECT Count(*) FROM ProjectsDispTar t INNER JOIN ProjectsDispTipo d ON "
                         "t.CPrjDispTipo=d.CPrjDispTipo WHERE d.Sigla='INT' AND t.TarH<>30"))
                .toInt(),
            0);
  EXPECT_GE(h.Scalar(Sql("SELECT Count(*) FROM ProjectsDispTar t INNER JOIN ProjectsDispTipo d ON "
                         "t.CPrjDispTipo=d.CPrjDispTipo WHERE d.Sigla='INT'"))
                .toInt(),
            1);
  EXPECT_GE(h.Scalar(Sql("SELECT Count(*) FROM ProjectsDispTarDett WHERE TAnag=1")).toInt(), 3);
  const int prestazioni = h.Scalar(Sql("SELECT Count(*) FROM TabGen WHERE CTipTabGen=12")).toInt();
  EXPECT_GE(prestazioni, 5);
  EXPECT_EQ(h.Scalar(Sql("SELECT Count(DISTINCT Sigla) FROM TabGen WHERE CTipTabGen=12 AND Sigla<>''")).toInt(),
            prestazioni);
}

TEST(Host, ServiceKindRegisterAddsChangesAndDeletes) {
  Host h;
  ASSERT_TRUE(h.opened);
  // A code of another group of TabGen neither blocks nor moves the codes of the service kinds.
  h.db->Execute(Sql("INSERT INTO TabGen (CTipTabGen, CTabGen, DTabGen, Sigla) VALUES (1, 50, 'Conto visione', 'CV')"));
  // The disposition types, opened before, will show the new kind too.
  h.w->findChild<QAction*>("actTipiDisposizione")->trigger();
  auto* tipi = h.Find<TipiDisposizioneDialog>(h.w.get(), "dlgTipiDisposizione");
  ASSERT_TRUE(tipi && tipi->isVisible());
  auto* ammesse = h.Find<QListWidget>(tipi, "lwPrestazioni");
  const int oraria = h.Scalar(Sql("SELECT CPrjDispTipo FROM ProjectsDispTipo WHERE Sigla='LO'")).toInt();
  h.ClickRow(h.Find<QTreeWidget>(tipi, "lvTipiDisposizione"), oraria);
  int spuntate = 0;
  for (int i = 0; i < ammesse->count(); ++i) spuntate += ammesse->item(i)->checkState() == Qt::Checked;
  EXPECT_EQ(spuntate, 5);
  auto prestazioneTra = [&](const QString& testo) {
    for (int i = 0; i < ammesse->count(); ++i)
      if (ammesse->item(i)->text() == testo) return true;
    return false;
  };
  EXPECT_FALSE(prestazioneTra("Rettifica (RET)"));
  h.Click(tipi, "btnChiudi");

  h.w->findChild<QAction*>("actPrestazioni")->trigger();
  auto* dlg = h.Find<PrestazioniDialog>(h.w.get(), "dlgPrestazioni");
  ASSERT_TRUE(dlg && dlg->isVisible());
  EXPECT_EQ(dlg->windowTitle(), "Prestazioni");
  EXPECT_FALSE(h.Find<QPushButton>(dlg, "btnScegli")->isVisible());
  auto* list = h.Find<QTreeWidget>(dlg, "lvPrestazioni");
  const int prima = h.Scalar(Sql("SELECT Count(*) FROM TabGen WHERE CTipTabGen=12")).toInt();
  EXPECT_EQ(list->topLevelItemCount(), prima);
  auto* codice = h.Find<QLineEdit>(dlg, "edCodice");
  auto* descr = h.Find<QLineEdit>(dlg, "edDescrizione");
  auto* sigla = h.Find<QLineEdit>(dlg, "edSigla");

  h.Click(dlg, "btnNuova");
  EXPECT_EQ(codice->text(), QString::number(prima + 1));  // the next code of the service kinds
  EXPECT_FALSE(codice->isReadOnly());
  EXPECT_FALSE(h.Find<QPushButton>(dlg, "btnElimina")->isEnabled());
  h.Click(dlg, "btnSalva");
  EXPECT_EQ(h.Prompts(), QStringList{"Inserisci la descrizione!"});
  // The fields hold what the columns hold.
  QTest::keyClicks(descr, QString(120, QLatin1Char('x')));
  EXPECT_EQ(descr->text().size(), 100);
  QTest::keyClicks(sigla, "ABCDEFGHIJKLMN");
  EXPECT_EQ(sigla->text(), "ABCDEFGHIJ");
  descr->setText("Saldatura");
  sigla->clear();
  h.Click(dlg, "btnSalva");
  EXPECT_EQ(h.messages->asked.back().prompt, "Esiste già la prestazione «Saldatura» (codice 1)!");
  descr->setText("Rettifica");
  QTest::keyClicks(sigla, "sal");
  h.Click(dlg, "btnSalva");
  EXPECT_EQ(h.messages->asked.back().prompt, "La sigla «SAL» è già usata dalla prestazione «Saldatura»!");
  sigla->setText("ret");
  codice->setText("3");
  h.Click(dlg, "btnSalva");
  EXPECT_EQ(h.messages->asked.back().prompt, "Il codice 3 è già usato dalla prestazione «Fresatura»!");
  for (const char* sbagliato : {"tre", "0", "40000", ""}) {
    codice->setText(QString::fromLatin1(sbagliato));
    h.Click(dlg, "btnSalva");
    EXPECT_EQ(h.messages->asked.back().prompt, "Il codice deve essere un numero da 1 a 32767!") << sbagliato;
  }
  EXPECT_EQ(h.messages->asked.size(), 8u);
  EXPECT_EQ(h.Scalar(Sql("SELECT Count(*) FROM TabGen WHERE CTipTabGen=12")).toInt(), prima);

  // Code 50 is free among the service kinds.
  codice->setText("50");
  h.Click(dlg, "btnSalva");
  EXPECT_EQ(h.messages->asked.size(), 8u) << h.Prompts().join('|').toStdString();
  const auto r = h.db->Select(Sql("SELECT DTabGen, Sigla FROM TabGen WHERE CTipTabGen=12 AND CTabGen=50"));
  ASSERT_EQ(r.rows.size(), 1u);
  EXPECT_EQ(r.rows[0][0].toString(), "Rettifica");
  EXPECT_EQ(r.rows[0][1].toString(), "RET");
  EXPECT_EQ(h.Scalar(Sql("SELECT DTabGen FROM TabGen WHERE CTipTabGen=1 AND CTabGen=50")).toString(), "Conto visione");
  EXPECT_EQ(list->topLevelItemCount(), prima + 1);
  EXPECT_EQ(h.CurrentCode(list), 50);
  EXPECT_TRUE(codice->isReadOnly());  // a saved code stays as it is

  // Changed: the same row.
  descr->setText("Rettifica in piano");
  h.Click(dlg, "btnSalva");
  EXPECT_EQ(h.Scalar(Sql("SELECT DTabGen FROM TabGen WHERE CTipTabGen=12 AND CTabGen=50")).toString(),
            "Rettifica in piano");
  EXPECT_EQ(h.Scalar(Sql("SELECT Count(*) FROM TabGen WHERE CTipTabGen=12")).toInt(), prima + 1);
  EXPECT_EQ(list->currentItem()->text(1), "Rettifica in piano");

  // The disposition types list it among the kinds they may allow.
  h.w->findChild<QAction*>("actTipiDisposizione")->trigger();
  ASSERT_TRUE(tipi->isVisible());
  EXPECT_EQ(ammesse->count(), prima + 1);
  EXPECT_TRUE(prestazioneTra("Rettifica in piano (RET)"));
  h.ClickRow(h.Find<QTreeWidget>(tipi, "lvTipiDisposizione"), oraria);
  for (int i = 0; i < ammesse->count(); ++i)
    if (ammesse->item(i)->text() == "Rettifica in piano (RET)") ammesse->item(i)->setCheckState(Qt::Checked);
  const size_t domande = h.messages->asked.size();
  h.Click(tipi, "btnSalva");
  EXPECT_EQ(h.messages->asked.size(), domande);
  EXPECT_EQ(h.Scalar(Sql("SELECT Count(*) FROM ProjectsDisp2Prest WHERE CPrestazione=50 AND CPrjDispTipo=") +
                     Sql::Param(oraria))
                .toInt(),
            1);
  h.Click(tipi, "btnChiudi");

  // A kind that the work done names stays.
  h.w->findChild<QAction*>("actPrestazioni")->trigger();
  h.ClickRow(list, 1);
  const int attivita = h.Scalar(Sql("SELECT Count(*) FROM ActivitiesProd WHERE CPrestazione=1")).toInt();
  const int disposizioni = h.Scalar(Sql("SELECT Count(*) FROM ProjectsDispDett WHERE CPrestazione=1")).toInt();
  const int righe = h.Scalar(Sql("SELECT Count(*) FROM ProjectsDocDettPrest WHERE CPrestazione=1")).toInt();
  ASSERT_GT(attivita, 1);
  ASSERT_GT(disposizioni, 1);
  ASSERT_GT(righe, 1);
  h.Click(dlg, "btnElimina");
  EXPECT_EQ(h.messages->asked.back().prompt,
            QStringLiteral("La prestazione «Saldatura» è usata da %1 attività, da %2 disposizioni e da %3 righe di "
                           "documento: non può essere eliminata!")
                .arg(attivita)
                .arg(disposizioni)
                .arg(righe));
  EXPECT_EQ(h.messages->asked.back().buttons, vbExclamation);
  EXPECT_EQ(h.Scalar(Sql("SELECT Count(*) FROM TabGen WHERE CTipTabGen=12 AND CTabGen=1")).toInt(), 1);

  // The new one: No keeps it, Yes deletes it with its place among the allowed kinds.
  h.ClickRow(list, 50);
  const QString domanda = "Vuoi eliminare la prestazione «Rettifica in piano»?\n\nSarà tolta dalle prestazioni "
                          "ammesse di 1 tipologia di disposizioni.";
  h.messages->answers.push_back(vbNo);
  h.Click(dlg, "btnElimina");
  EXPECT_EQ(h.messages->asked.back().prompt, domanda);
  EXPECT_EQ(h.messages->asked.back().buttons, vbYesNo | vbQuestion | vbDefaultButton2);
  EXPECT_EQ(h.Scalar(Sql("SELECT Count(*) FROM TabGen WHERE CTipTabGen=12 AND CTabGen=50")).toInt(), 1);
  EXPECT_EQ(list->topLevelItemCount(), prima + 1);
  h.messages->answers.push_back(vbYes);
  h.Click(dlg, "btnElimina");
  EXPECT_EQ(h.messages->asked.back().prompt, domanda);
  EXPECT_EQ(h.Scalar(Sql("SELECT Count(*) FROM TabGen WHERE CTipTabGen=12 AND CTabGen=50")).toInt(), 0);
  EXPECT_EQ(h.Scalar(Sql("SELECT Count(*) FROM ProjectsDisp2Prest WHERE CPrestazione=50")).toInt(), 0);
  EXPECT_EQ(h.Scalar(Sql("SELECT Count(*) FROM TabGen WHERE CTipTabGen=1 AND CTabGen=50")).toInt(), 1);
  EXPECT_EQ(list->topLevelItemCount(), prima);
  EXPECT_EQ(ammesse->count(), prima);
  EXPECT_FALSE(prestazioneTra("Rettifica in piano (RET)"));
}

TEST(Host, GeneralTariffRegisterWritesWhatTheTariffLookupFinds) {
  Host h;
  ASSERT_TRUE(h.opened);
  h.w->findChild<QAction*>("actTariffe")->trigger();
  auto* dlg = h.Find<TariffeDialog>(h.w.get(), "dlgTariffe");
  ASSERT_TRUE(dlg && dlg->isVisible());
  EXPECT_EQ(dlg->windowTitle(), "Tariffe generali");
  EXPECT_FALSE(h.Find<QComboBox>(dlg, "cbCliente"));
  auto* list = h.Find<QTreeWidget>(dlg, "lvTariffe");
  QStringList intestazioni;
  for (int c = 0; c < list->columnCount(); ++c) intestazioni << list->headerItem()->text(c);
  EXPECT_EQ(intestazioni, QStringList({"Tipologia modello", "Tipologia disposizione", "Minima", "Massima", "Oraria"}));
  const int tariffe = h.Scalar(Sql("SELECT Count(*) FROM ProjectsDispTar")).toInt();
  EXPECT_EQ(list->topLevelItemCount(), tariffe);
  auto* forfait = h.RowWithTexts(list, {"Assistenza a forfait", "Forfait a pezzo"});
  ASSERT_TRUE(forfait);
  EXPECT_EQ(h.Texts(forfait), QStringList({"Assistenza a forfait", "Forfait a pezzo", "22,00", "30,00", "32,00"}));
  // The combos offer every type.
  EXPECT_EQ(h.Find<QComboBox>(dlg, "cbTipoModello")->count(), h.Scalar(Sql("SELECT Count(*) FROM ProjectsTipo")).toInt());
  EXPECT_EQ(h.Find<QComboBox>(dlg, "cbTipoDisposizione")->count(),
            h.Scalar(Sql("SELECT Count(*) FROM ProjectsDispTipo")).toInt());

  const int manutenzione = h.Scalar(Sql("SELECT CPrjTipo FROM ProjectsTipo WHERE Sigla='MA'")).toInt();
  const int pezzo = h.Scalar(Sql("SELECT CPrjDispTipo FROM ProjectsDispTipo WHERE Sigla='PZ'")).toInt();
  ASSERT_EQ(h.Scalar(Sql("SELECT Count(*) FROM ProjectsDispTar WHERE CPrjTipo=") + Sql::Param(manutenzione) +
                     Sql(" AND CPrjDispTipo=") + Sql::Param(pezzo))
                .toInt(),
            0);
  ASSERT_DOUBLE_EQ(GetDatiDisp(1, 2, manutenzione, pezzo).vTarH, 0.0);

  // A new pair, checked field by field.
  h.Click(dlg, "btnNuova");
  EXPECT_EQ(h.Find<QComboBox>(dlg, "cbTipoModello")->currentIndex(), -1);
  EXPECT_FALSE(h.Find<QPushButton>(dlg, "btnElimina")->isEnabled());
  h.Click(dlg, "btnSalva");
  EXPECT_EQ(h.Prompts(), QStringList{"Scegli la tipologia del modello!"});
  h.Choose(dlg, "cbTipoModello", "Manutenzione");
  h.Click(dlg, "btnSalva");
  EXPECT_EQ(h.messages->asked.back().prompt, "Scegli la tipologia della disposizione!");
  h.Choose(dlg, "cbTipoDisposizione", "Produzione a pezzo");
  h.TypeNumber(dlg, "spTarH", "-5");
  h.Click(dlg, "btnSalva");
  EXPECT_EQ(h.messages->asked.back().prompt, "Le tariffe non possono essere negative!");
  h.TypeNumber(dlg, "spTarH", "1234,5");
  h.TypeNumber(dlg, "spTarMin", "30");
  h.TypeNumber(dlg, "spTarMax", "20");
  h.Click(dlg, "btnSalva");
  EXPECT_EQ(h.messages->asked.back().prompt, "La tariffa massima non può essere inferiore alla minima!");
  EXPECT_EQ(h.messages->asked.size(), 4u);
  EXPECT_EQ(h.Scalar(Sql("SELECT Count(*) FROM ProjectsDispTar")).toInt(), tariffe);
  // No top to the band: a maximum of 0.
  h.TypeNumber(dlg, "spTarMax", "0");
  h.Click(dlg, "btnSalva");
  EXPECT_EQ(h.messages->asked.size(), 4u) << h.Prompts().join('|').toStdString();
  auto riga = [&](int tipo, int disp) {
    return h.db->Select(Sql("SELECT TarMin, TarMax, TarH FROM ProjectsDispTar WHERE CPrjTipo=") + Sql::Param(tipo) +
                        Sql(" AND CPrjDispTipo=") + Sql::Param(disp))
        .rows;
  };
  auto r = riga(manutenzione, pezzo);
  ASSERT_EQ(r.size(), 1u);
  EXPECT_DOUBLE_EQ(r[0][0].toDouble(), 30.0);
  EXPECT_DOUBLE_EQ(r[0][1].toDouble(), 0.0);
  EXPECT_DOUBLE_EQ(r[0][2].toDouble(), 1234.5);
  EXPECT_EQ(list->topLevelItemCount(), tariffe + 1);
  ASSERT_TRUE(list->currentItem());
  EXPECT_EQ(h.Texts(list->currentItem()), QStringList({"Manutenzione", "Produzione a pezzo", "30,00", "0,00", "1.234,50"}));
  // A customer without a tariff of its own gets the general one.
  EXPECT_DOUBLE_EQ(GetDatiDisp(1, 2, manutenzione, pezzo).vTarH, 1234.5);

  // Changed: the same pair is written again, no row is added.
  h.TypeNumber(dlg, "spTarH", "47,25");
  h.Click(dlg, "btnSalva");
  EXPECT_EQ(h.messages->asked.size(), 4u) << h.Prompts().join('|').toStdString();
  r = riga(manutenzione, pezzo);
  ASSERT_EQ(r.size(), 1u);
  EXPECT_DOUBLE_EQ(r[0][2].toDouble(), 47.25);
  EXPECT_EQ(h.Scalar(Sql("SELECT Count(*) FROM ProjectsDispTar")).toInt(), tariffe + 1);
  EXPECT_DOUBLE_EQ(GetDatiDisp(1, 2, manutenzione, pezzo).vTarH, 47.25);

  // A forfait type: the band reaches the lookup too.
  const int prototipo = h.Scalar(Sql("SELECT CPrjTipo FROM ProjectsTipo WHERE Sigla='PR'")).toInt();
  const int ff = h.Scalar(Sql("SELECT CPrjDispTipo FROM ProjectsDispTipo WHERE Sigla='FF'")).toInt();
  h.Click(dlg, "btnNuova");
  h.Choose(dlg, "cbTipoModello", "Prototipo");
  h.Choose(dlg, "cbTipoDisposizione", "Forfait a pezzo");
  h.TypeNumber(dlg, "spTarMin", "20");
  h.TypeNumber(dlg, "spTarMax", "28,5");
  h.TypeNumber(dlg, "spTarH", "33");
  h.Click(dlg, "btnSalva");
  EXPECT_EQ(h.messages->asked.size(), 4u) << h.Prompts().join('|').toStdString();
  const tyDatiDisp banda = GetDatiDisp(1, 2, prototipo, ff);
  EXPECT_TRUE(banda.vForfait);
  EXPECT_DOUBLE_EQ(banda.vMin, 20.0);
  EXPECT_DOUBLE_EQ(banda.vMax, 28.5);
  EXPECT_DOUBLE_EQ(banda.vTarH, 33.0);

  // A pair that exists, taken as new: the user is asked before it is replaced.
  const int stampo = h.Scalar(Sql("SELECT CPrjTipo FROM ProjectsTipo WHERE Sigla='ST'")).toInt();
  const int ore = h.Scalar(Sql("SELECT CPrjDispTipo FROM ProjectsDispTipo WHERE Sigla='LO'")).toInt();
  const double primaH = riga(stampo, ore).at(0)[2].toDouble();
  ASSERT_NE(primaH, 50.0);
  h.Click(dlg, "btnNuova");
  h.Choose(dlg, "cbTipoModello", "Stampo");
  h.Choose(dlg, "cbTipoDisposizione", "Lavorazione oraria");
  h.TypeNumber(dlg, "spTarH", "50");
  const QString sostituire = "Esiste già la tariffa «Stampo» - «Lavorazione oraria»: vuoi sostituirla?";
  h.messages->answers.push_back(vbNo);
  h.Click(dlg, "btnSalva");
  EXPECT_EQ(h.messages->asked.back().prompt, sostituire);
  EXPECT_DOUBLE_EQ(riga(stampo, ore).at(0)[2].toDouble(), primaH);
  h.messages->answers.push_back(vbYes);
  h.Click(dlg, "btnSalva");
  EXPECT_EQ(h.messages->asked.back().prompt, sostituire);
  EXPECT_EQ(riga(stampo, ore).size(), 1u);
  EXPECT_DOUBLE_EQ(riga(stampo, ore).at(0)[2].toDouble(), 50.0);
  EXPECT_EQ(list->topLevelItemCount(), tariffe + 2);

  // Deleted after the question: No keeps it, Yes takes it away.
  h.ClickItem(list, h.RowWithTexts(list, {"Manutenzione", "Produzione a pezzo"}));
  ASSERT_TRUE(h.Find<QPushButton>(dlg, "btnElimina")->isEnabled());
  EXPECT_EQ(h.Find<QComboBox>(dlg, "cbTipoModello")->currentText(), "Manutenzione");
  EXPECT_EQ(h.Find<NumericSpin>(dlg, "spTarH")->Value(), 47.25);
  const QString eliminare = "Vuoi eliminare la tariffa «Manutenzione» - «Produzione a pezzo»?";
  h.messages->answers.push_back(vbNo);
  h.Click(dlg, "btnElimina");
  EXPECT_EQ(h.messages->asked.back().prompt, eliminare);
  EXPECT_EQ(riga(manutenzione, pezzo).size(), 1u);
  h.messages->answers.push_back(vbYes);
  h.Click(dlg, "btnElimina");
  EXPECT_EQ(h.messages->asked.back().prompt, eliminare);
  EXPECT_EQ(riga(manutenzione, pezzo).size(), 0u);
  EXPECT_EQ(list->topLevelItemCount(), tariffe + 1);
  EXPECT_FALSE(h.RowWithTexts(list, {"Manutenzione", "Produzione a pezzo"}));
  EXPECT_DOUBLE_EQ(GetDatiDisp(1, 2, manutenzione, pezzo).vTarH, 0.0);
}

TEST(Host, CustomerTariffRegisterWritesWhatTheTariffLookupFinds) {
  Host h;
  ASSERT_TRUE(h.opened);
  // A customer deleted is not offered; the tariffs of another party type are not shown.
  h.db->Execute(Sql("UPDATE Anagrafica SET Eliminato=-1 WHERE TAnag=1 AND CAnag=12"));
  h.db->Execute(Sql("INSERT INTO ProjectsDispTarDett (CPrjTipo, CPrjDispTipo, TAnag, CAnag, TarMin, TarMax, TarH) "
                    "VALUES (1, 1, 2, 2, 0, 0, 99)"));
  h.w->findChild<QAction*>("actTariffeClienti")->trigger();
  auto* dlg = h.Find<TariffeDialog>(h.w.get(), "dlgTariffeClienti");
  ASSERT_TRUE(dlg && dlg->isVisible());
  EXPECT_EQ(dlg->windowTitle(), "Tariffe per cliente");
  auto* list = h.Find<QTreeWidget>(dlg, "lvTariffe");
  EXPECT_EQ(list->headerItem()->text(0), "Cliente");
  const int tariffe = h.Scalar(Sql("SELECT Count(*) FROM ProjectsDispTarDett WHERE TAnag=1")).toInt();
  EXPECT_EQ(list->topLevelItemCount(), tariffe);
  auto* propria = h.RowWithTexts(list, {"Plastiche Brianza S.p.A.", "Prototipo", "Progettazione"});
  ASSERT_TRUE(propria);
  EXPECT_EQ(h.Texts(propria).mid(3), QStringList({"0,00", "0,00", "48,00"}));
  auto* clienti = h.Find<QComboBox>(dlg, "cbCliente");
  ASSERT_TRUE(clienti);
  EXPECT_EQ(clienti->count(), h.Scalar(Sql("SELECT Count(*) FROM Anagrafica WHERE TAnag=1 AND Eliminato=0")).toInt());
  EXPECT_EQ(clienti->findText("Lavorazioni Lamiera Conti S.a.s."), -1);

  const int stampo = h.Scalar(Sql("SELECT CPrjTipo FROM ProjectsTipo WHERE Sigla='ST'")).toInt();
  const int ore = h.Scalar(Sql("SELECT CPrjDispTipo FROM ProjectsDispTipo WHERE Sigla='LO'")).toInt();
  const int bianchi = h.Scalar(Sql("SELECT CAnag FROM Anagrafica WHERE TAnag=1 AND RagSoc1='Carrozzeria Bianchi & Figli'")).toInt();
  ASSERT_NE(bianchi, 0);
  const double generale = GetDatiDisp(1, bianchi, stampo, ore).vTarH;
  ASSERT_GT(generale, 0.0);
  ASSERT_DOUBLE_EQ(generale, h.Scalar(Sql("SELECT TarH FROM ProjectsDispTar WHERE CPrjTipo=") + Sql::Param(stampo) +
                                      Sql(" AND CPrjDispTipo=") + Sql::Param(ore))
                                 .toDouble());

  h.Click(dlg, "btnNuova");
  h.Click(dlg, "btnSalva");
  EXPECT_EQ(h.Prompts(), QStringList{"Scegli il cliente!"});
  h.Choose(dlg, "cbCliente", "Carrozzeria Bianchi & Figli");
  h.Click(dlg, "btnSalva");
  EXPECT_EQ(h.messages->asked.back().prompt, "Scegli la tipologia del modello!");
  h.Choose(dlg, "cbTipoModello", "Stampo");
  h.Click(dlg, "btnSalva");
  EXPECT_EQ(h.messages->asked.back().prompt, "Scegli la tipologia della disposizione!");
  h.Choose(dlg, "cbTipoDisposizione", "Lavorazione oraria");
  h.TypeNumber(dlg, "spTarMin", "-1");
  h.TypeNumber(dlg, "spTarH", "39,9");
  h.Click(dlg, "btnSalva");
  EXPECT_EQ(h.messages->asked.back().prompt, "Le tariffe non possono essere negative!");
  h.TypeNumber(dlg, "spTarMin", "25");
  h.TypeNumber(dlg, "spTarMax", "24,99");
  h.Click(dlg, "btnSalva");
  EXPECT_EQ(h.messages->asked.back().prompt, "La tariffa massima non può essere inferiore alla minima!");
  EXPECT_EQ(h.messages->asked.size(), 5u);
  EXPECT_EQ(h.Scalar(Sql("SELECT Count(*) FROM ProjectsDispTarDett")).toInt(), tariffe + 1);
  h.TypeNumber(dlg, "spTarMin", "0");
  h.TypeNumber(dlg, "spTarMax", "0");
  h.Click(dlg, "btnSalva");
  EXPECT_EQ(h.messages->asked.size(), 5u) << h.Prompts().join('|').toStdString();
  auto riga = [&] {
    return h.db->Select(Sql("SELECT TarMin, TarMax, TarH FROM ProjectsDispTarDett WHERE TAnag=1 AND CAnag=") +
                        Sql::Param(bianchi) + Sql(" AND CPrjTipo=") + Sql::Param(stampo) + Sql(" AND CPrjDispTipo=") +
                        Sql::Param(ore))
        .rows;
  };
  auto r = riga();
  ASSERT_EQ(r.size(), 1u);
  EXPECT_DOUBLE_EQ(r[0][2].toDouble(), 39.9);
  EXPECT_EQ(list->topLevelItemCount(), tariffe + 1);
  ASSERT_TRUE(list->currentItem());
  EXPECT_EQ(h.Texts(list->currentItem()),
            QStringList({"Carrozzeria Bianchi & Figli", "Stampo", "Lavorazione oraria", "0,00", "0,00", "39,90"}));
  // The customer's own tariff wins; the others keep the general one.
  EXPECT_DOUBLE_EQ(GetDatiDisp(1, bianchi, stampo, ore).vTarH, 39.9);
  EXPECT_DOUBLE_EQ(GetDatiDisp(1, 4, stampo, ore).vTarH, generale);

  // Changed in place.
  h.TypeNumber(dlg, "spTarH", "41");
  h.Click(dlg, "btnSalva");
  r = riga();
  ASSERT_EQ(r.size(), 1u);
  EXPECT_DOUBLE_EQ(r[0][2].toDouble(), 41.0);
  EXPECT_EQ(h.Scalar(Sql("SELECT Count(*) FROM ProjectsDispTarDett WHERE TAnag=1")).toInt(), tariffe + 1);
  EXPECT_DOUBLE_EQ(GetDatiDisp(1, bianchi, stampo, ore).vTarH, 41.0);

  // The same pair for another customer is another tariff.
  h.Click(dlg, "btnNuova");
  h.Choose(dlg, "cbCliente", "Meccanica Ferraresi S.n.c.");
  h.Choose(dlg, "cbTipoModello", "Stampo");
  h.Choose(dlg, "cbTipoDisposizione", "Lavorazione oraria");
  h.TypeNumber(dlg, "spTarH", "35");
  h.Click(dlg, "btnSalva");
  EXPECT_EQ(h.messages->asked.size(), 5u) << h.Prompts().join('|').toStdString();
  EXPECT_DOUBLE_EQ(GetDatiDisp(1, 4, stampo, ore).vTarH, 35.0);
  EXPECT_DOUBLE_EQ(GetDatiDisp(1, bianchi, stampo, ore).vTarH, 41.0);
  EXPECT_EQ(list->topLevelItemCount(), tariffe + 2);

  // Deleted after the question.
  h.ClickItem(list, h.RowWithTexts(list, {"Carrozzeria Bianchi & Figli", "Stampo", "Lavorazione oraria"}));
  EXPECT_EQ(clienti->currentText(), "Carrozzeria Bianchi & Figli");
  const QString eliminare =
      "Vuoi eliminare la tariffa «Stampo» - «Lavorazione oraria» del cliente «Carrozzeria Bianchi & Figli»?";
  h.messages->answers.push_back(vbNo);
  h.Click(dlg, "btnElimina");
  EXPECT_EQ(h.messages->asked.back().prompt, eliminare);
  EXPECT_EQ(riga().size(), 1u);
  h.messages->answers.push_back(vbYes);
  h.Click(dlg, "btnElimina");
  EXPECT_EQ(h.messages->asked.back().prompt, eliminare);
  EXPECT_EQ(riga().size(), 0u);
  EXPECT_EQ(list->topLevelItemCount(), tariffe + 1);
  EXPECT_DOUBLE_EQ(GetDatiDisp(1, bianchi, stampo, ore).vTarH, generale);
  EXPECT_DOUBLE_EQ(GetDatiDisp(1, 4, stampo, ore).vTarH, 35.0);
  // The other party type's row is untouched.
  EXPECT_EQ(h.Scalar(Sql("SELECT TarH FROM ProjectsDispTarDett WHERE TAnag=2 AND CAnag=2")).toDouble(), 99.0);
}

TEST(Host, PriceSettingsOpenFromTheMenu) {
  Host h;
  ASSERT_TRUE(h.opened);
  auto* voce = h.w->findChild<QAction*>("actImpostazioniPrezzi");
  ASSERT_TRUE(voce);
  EXPECT_EQ(voce->text(), "&Impostazioni prezzi...");
  QString titolo;
  bool impostazioni = false;
  QObject contesto;
  QTimer::singleShot(0, &contesto, [&] {
    QWidget* m = QApplication::activeModalWidget();
    if (!m) return;
    impostazioni = qobject_cast<frmSettings*>(m) != nullptr;
    titolo = m->windowTitle();
    if (auto* annulla = m->findChild<QPushButton*>(QStringLiteral("CancelButton"))) annulla->click();
    if (m->isVisible()) m->close();
  });
  voce->trigger();
  EXPECT_TRUE(impostazioni);
  EXPECT_EQ(titolo, "Impostazioni");
  EXPECT_FALSE(QApplication::activeModalWidget());
}

TEST(Host, TheStationOpensInAWindowFromTheMenu) {
  Host h;
  ASSERT_TRUE(h.opened);
  auto* voce = h.w->findChild<QAction*>("actInserimentoPrestazioni");
  ASSERT_TRUE(voce);
  EXPECT_EQ(voce->text(), "Inserimento &prestazioni...");
  QString titolo;
  bool intero = true;
  QObject contesto;
  QTimer::singleShot(0, &contesto, [&] {
    QWidget* m = QApplication::activeModalWidget();
    if (!m) return;
    titolo = m->windowTitle();
    intero = m->isFullScreen();
    m->close();
  });
  voce->trigger();
  EXPECT_EQ(titolo, "Inserimento prestazioni");
  EXPECT_FALSE(intero);
  // Closing it in the office asks nothing and leaves the host running.
  EXPECT_TRUE(h.messages->asked.empty());
  EXPECT_FALSE(QApplication::activeModalWidget());
  EXPECT_FALSE(h.w->UscitaRichiesta());
}

TEST(Host, DispositionPricesAskForAModel) {
  Host h;
  ASSERT_TRUE(h.opened);
  auto* voce = h.w->findChild<QAction*>("actPrezziDisposizioni");
  ASSERT_TRUE(voce);
  EXPECT_EQ(voce->text(), "&Prezzo delle disposizioni...");
  EXPECT_TRUE(voce->isEnabled());
  ListView* reg = h.Register();
  ASSERT_GT(reg->Count(), 0);
  reg->clearSelection();
  ASSERT_EQ(reg->SelectedIndex(), -1);
  voce->trigger();
  ASSERT_EQ(h.messages->asked.size(), 1u);
  EXPECT_EQ(h.messages->asked[0].prompt, "Seleziona un modello nell'elenco.");
  EXPECT_EQ(h.messages->asked[0].buttons, vbExclamation);
  auto* dlg = h.Find<PrezziDisposizioniDialog>(h.w.get(), "dlgPrezziDisposizioni");
  EXPECT_FALSE(dlg && dlg->isVisible());
}

TEST(Host, DispositionPricesShowTheProposedPrice) {
  Host h;
  ASSERT_TRUE(h.opened);
  // A disposition of a customer's model with time spent on it.
  const auto scelta = h.db->Select(Sql("SELECT a.CProject, a.CDisp FROM ActivitiesProd a INNER JOIN Projects p ON "
                                       "a.CProject=p.CProject WHERE p.TAnag=1 GROUP BY a.CProject, a.CDisp "
                                       "ORDER BY a.CProject DESC, a.CDisp"));
  ASSERT_FALSE(scelta.rows.empty());
  const int cProject = scelta.rows[0][0].toInt();
  const int cDisp = scelta.rows[0][1].toInt();
  const double atteso = CalcDatiDisp(cProject, cDisp);
  ASSERT_GT(atteso, 0.0);

  ListView* reg = h.Register();
  const int riga = reg->IndexOfKey(Chiave(cProject));
  ASSERT_GE(riga, 0);
  reg->SetSelected(riga);
  h.w->findChild<QAction*>("actPrezziDisposizioni")->trigger();
  EXPECT_TRUE(h.messages->asked.empty()) << h.Prompts().join('|').toStdString();
  auto* dlg = h.Find<PrezziDisposizioniDialog>(h.w.get(), "dlgPrezziDisposizioni");
  ASSERT_TRUE(dlg && dlg->isVisible());
  EXPECT_EQ(dlg->windowTitle(), "Prezzo delle disposizioni");
  EXPECT_EQ(dlg->CProject(), cProject);
  const auto modello = h.db->Select(Sql("SELECT p.DProject, a.RagSoc1 FROM Projects p INNER JOIN Anagrafica a ON "
                                        "p.TAnag=a.TAnag AND p.CAnag=a.CAnag WHERE p.CProject=") +
                                    Sql::Param(cProject));
  ASSERT_EQ(modello.rows.size(), 1u);
  EXPECT_EQ(h.Find<QLabel>(dlg, "lblModello")->text(),
            QStringLiteral("Modello %1-%2 - %3 (%4)")
                .arg(cProject / 100000)
                .arg(cProject % 100000, 5, 10, QLatin1Char('0'))
                .arg(modello.rows[0][0].toString(), modello.rows[0][1].toString()));

  // The dispositions of the model, as the list shows them.
  auto* list = h.Find<QTreeWidget>(dlg, "lvDisposizioni");
  const auto disp = h.db->Select(Sql("SELECT d.CDisp, d.DDisp, t.DPrjDispTipo, d.Qta, d.PzVend FROM ProjectsDisp d "
                                     "INNER JOIN ProjectsDispTipo t ON d.CPrjDispTipo=t.CPrjDispTipo WHERE "
                                     "d.CProject=") +
                                 Sql::Param(cProject) + Sql(" ORDER BY d.CDisp"));
  ASSERT_EQ(list->topLevelItemCount(), static_cast<int>(disp.rows.size()));
  const QLocale it(QLocale::Italian, QLocale::Italy);
  QTreeWidgetItem* mia = nullptr;
  for (int i = 0; i < list->topLevelItemCount(); ++i) {
    const Row& d = disp.rows[static_cast<size_t>(i)];
    const double qta = d[3].toDouble();
    const QString quantita = qta == std::floor(qta) ? it.toString(qta, 'f', 0) : Euro(qta);
    EXPECT_EQ(h.Texts(list->topLevelItem(i)),
              QStringList({QStringLiteral("%1").arg(d[0].toInt(), 3, 10, QLatin1Char('0')), d[1].toString(),
                           d[2].toString(), quantita, Euro(d[4].toDouble())}));
    if (d[0].toInt() == cDisp) mia = list->topLevelItem(i);
  }
  ASSERT_TRUE(mia);
  auto* proposto = h.Find<QLabel>(dlg, "lblPrezzoProposto");
  h.ClickItem(list, mia);
  EXPECT_EQ(proposto->text(), "");
  h.Click(dlg, "btnPrezzoProposto");
  EXPECT_EQ(proposto->text(), "Prezzo proposto: " + Euro(atteso));
  EXPECT_TRUE(h.messages->asked.empty()) << h.Prompts().join('|').toStdString();

  // A customer's tariff of its own changes what is proposed.
  const auto m = h.db->Select(Sql("SELECT p.CPrjTipo, d.CPrjDispTipo, p.CAnag FROM Projects p INNER JOIN ProjectsDisp "
                                  "d ON p.CProject=d.CProject WHERE d.CProject=") +
                              Sql::Param(cProject) + Sql(" AND d.CDisp=") + Sql::Param(cDisp));
  ASSERT_EQ(m.rows.size(), 1u);
  const int tipo = m.rows[0][0].toInt();
  const int tipoDisp = m.rows[0][1].toInt();
  const int cliente = m.rows[0][2].toInt();
  const tyDatiDisp prima = GetDatiDisp(1, cliente, tipo, tipoDisp);
  h.db->Execute(Sql("DELETE FROM ProjectsDispTarDett WHERE TAnag=1 AND CAnag=") + Sql::Param(cliente) +
                Sql(" AND CPrjTipo=") + Sql::Param(tipo) + Sql(" AND CPrjDispTipo=") + Sql::Param(tipoDisp));
  h.db->Execute(Sql("INSERT INTO ProjectsDispTarDett (CPrjTipo, CPrjDispTipo, TAnag, CAnag, TarMin, TarMax, TarH) "
                    "VALUES (") +
                Sql::Param(tipo) + Sql(", ") + Sql::Param(tipoDisp) + Sql(", 1, ") + Sql::Param(cliente) +
                Sql(", 0, 0, ") + Sql::Param(prima.vTarH * 3 + 100) + Sql(")"));
  const double dopo = CalcDatiDisp(cProject, cDisp);
  EXPECT_GT(dopo, atteso);
  h.Click(dlg, "btnPrezzoProposto");
  EXPECT_EQ(proposto->text(), "Prezzo proposto: " + Euro(dopo));
}

TEST(Host, CalculatorPriceComesBackToTheDialog) {
  Host h;
  ASSERT_TRUE(h.opened);
  // A disposition of a customer's model with a price of its own.
  const auto scelta =
      h.db->Select(Sql("SELECT d.CProject, d.CDisp, d.Qta, d.PzVend FROM ProjectsDisp d INNER JOIN Projects p ON "
                       "d.CProject=p.CProject WHERE p.TAnag=1 AND d.PzVend>0 AND d.Qta>1 ORDER BY d.CProject, d.CDisp"));
  ASSERT_FALSE(scelta.rows.empty());
  const int cProject = scelta.rows[0][0].toInt();
  const int cDisp = scelta.rows[0][1].toInt();
  const double qta = scelta.rows[0][2].toDouble();
  const double pzVend = scelta.rows[0][3].toDouble();
  ListView* reg = h.Register();
  const int riga = reg->IndexOfKey(Chiave(cProject));
  ASSERT_GE(riga, 0);
  reg->SetSelected(riga);
  h.w->findChild<QAction*>("actPrezziDisposizioni")->trigger();
  auto* dlg = h.Find<PrezziDisposizioniDialog>(h.w.get(), "dlgPrezziDisposizioni");
  ASSERT_TRUE(dlg && dlg->isVisible());
  auto* list = h.Find<QTreeWidget>(dlg, "lvDisposizioni");
  h.ClickItem(list, h.RowWithTexts(list, {QStringLiteral("%1").arg(cDisp, 3, 10, QLatin1Char('0'))}));
  ASSERT_EQ(dlg->CDispSelezionata(), cDisp);
  auto* confermato = h.Find<QLabel>(dlg, "lblPrezzoConfermato");
  const QString stato = h.w->statusBar()->currentMessage();

  // Cancelled: nothing comes back.
  {
    Calcolatrice calc;
    calc.Premi("Toolbar1_1");
    h.Click(dlg, "btnCalcoloTariffa");
    EXPECT_TRUE(calc.vista);
    EXPECT_TRUE(calc.premuta);
    EXPECT_EQ(calc.chiamante, "OCX");
    EXPECT_EQ(calc.cProject, cProject);
    EXPECT_EQ(calc.cDisp, cDisp);
    EXPECT_DOUBLE_EQ(calc.qta, qta);
    EXPECT_DOUBLE_EQ(calc.pzIni, pzVend);
    EXPECT_EQ(calc.scheda, 1);
  }
  EXPECT_FALSE(QApplication::activeModalWidget() && qobject_cast<frmCalcPzVend*>(QApplication::activeModalWidget()));
  EXPECT_EQ(confermato->text(), "");
  EXPECT_EQ(h.w->statusBar()->currentMessage(), stato);
  EXPECT_FALSE(dlg->InAttesa());
  EXPECT_TRUE(h.messages->asked.empty()) << h.Prompts().join('|').toStdString();

  // Confirmed: the price the calculator held comes back to the dialog and the status bar.
  Calcolatrice calc;
  calc.Premi("Toolbar1_3");
  h.Click(dlg, "btnCalcoloTariffa");
  ASSERT_TRUE(calc.vista);
  EXPECT_TRUE(calc.premuta);
  EXPECT_DOUBLE_EQ(calc.prezzo, pzVend);  // the price handed to the calculator goes first
  EXPECT_TRUE(h.messages->asked.empty()) << h.Prompts().join('|').toStdString();
  EXPECT_EQ(confermato->text(), "Prezzo confermato: " + Euro(calc.prezzo));
  EXPECT_EQ(h.w->statusBar()->currentMessage(),
            QStringLiteral("Prezzo confermato per la disposizione %1-%2/%3: %4")
                .arg(cProject / 100000)
                .arg(cProject % 100000, 5, 10, QLatin1Char('0'))
                .arg(cDisp, 3, 10, QLatin1Char('0'))
                .arg(Euro(calc.prezzo)));
  EXPECT_FALSE(dlg->InAttesa());

  // An amount the component sends at another time is the deferred invoice's, as before.
  double importo = 1234.5;
  gOcxEventS->SendDataFattDiff(importo);
  EXPECT_EQ(h.w->statusBar()->currentMessage(), "Importo per la fattura differita ricevuto: 1.234,50");
  EXPECT_EQ(confermato->text(), "Prezzo confermato: " + Euro(calc.prezzo));

  // Another disposition starts clean.
  if (list->topLevelItemCount() > 1) {
    QTreeWidgetItem* altra = list->topLevelItem(list->indexOfTopLevelItem(list->currentItem()) == 0 ? 1 : 0);
    h.ClickItem(list, altra);
    EXPECT_EQ(confermato->text(), "");
  }
}

