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

#include "DemoData.h"
#include "HostRegistri.h"
#include "HostWindow.h"
#include "ListView.h"
#include "TestSupport.h"

using namespace prestkt;
using namespace prestkt::test;
using namespace vorn;

namespace {

// The host on a demo database of its own, with a script of answers for the messages.
struct Host {
  explicit Host(bool onlyInput = false) {
    ResetGlobals();
    gOcxEventCard.reset();
    file = dir.path() + QStringLiteral("/vorn.db");
    {
      auto demo = Database::OpenSQLite(file);
      CreaDatiDemo(*demo, QDate::currentDate());
    }
    messages = std::make_shared<ScriptedMessages>();
    SetMessageService(messages);
    HostOptions o;
    o.dbFile = file;
    o.docs = dir.path() + QStringLiteral("/documenti");
    o.user = 1;
    o.tAnag = 1;
    o.onlyInput = onlyInput;
    w = std::make_unique<HostWindow>(o);
    opened = w->Open();
    if (opened) db = gDB;
  }
  ~Host() {
    w.reset();
    gOcxEventCard.reset();
    SetMessageService(nullptr);
    ResetGlobals();
  }

  template <class T>
  T* Find(QObject* parent, const char* name) {
    return parent->findChild<T*>(QString::fromLatin1(name));
  }
  OCPrestKT* Ctl() { return w->Control(); }
  ListView* Register() { return Ctl()->findChild<ListView*>(QStringLiteral("ListView1")); }
  QVariant Scalar(const Sql& sql) {
    const auto r = db->Select(sql);
    return r.rows.empty() ? QVariant() : r.rows.front().front();
  }
  QStringList Prompts() const {
    QStringList p;
    for (const Asked& a : messages->asked) p << a.prompt;
    return p;
  }
  void Click(QWidget* parent, const char* button) {
    auto* b = Find<QPushButton>(parent, button);
    ASSERT_TRUE(b) << button;
    ASSERT_TRUE(b->isVisible()) << button;
    ASSERT_TRUE(b->isEnabled()) << button;
    QTest::mouseClick(b, Qt::LeftButton);
  }
  // Clicks the row of a register list whose code is codice, as a user would.
  void ClickRow(QTreeWidget* list, int codice) {
    for (int i = 0; i < list->topLevelItemCount(); ++i) {
      QTreeWidgetItem* it = list->topLevelItem(i);
      if (it->data(0, Qt::UserRole).toInt() != codice || it->isHidden()) continue;
      list->scrollToItem(it);
      QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, list->visualItemRect(it).center());
      return;
    }
    FAIL() << "no row " << codice;
  }
  int CurrentCode(QTreeWidget* list) {
    return list->currentItem() ? list->currentItem()->data(0, Qt::UserRole).toInt() : 0;
  }

  QTemporaryDir dir;
  QString file;
  std::shared_ptr<ScriptedMessages> messages;
  std::unique_ptr<HostWindow> w;
  DatabasePtr db;
  bool opened = false;
};

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
                        "actTipiDisposizione"})
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
  ListView* reg = h.Register();
  ASSERT_GT(reg->Count(), 0);
  reg->SetSelected(0);
  const int modelli = h.Scalar(Sql("SELECT Count(*) FROM Projects")).toInt();
  h.Ctl()->Elimina();
  EXPECT_EQ(h.Scalar(Sql("SELECT Count(*) FROM Projects")).toInt(), modelli);
  EXPECT_TRUE(h.messages->asked.empty());
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
