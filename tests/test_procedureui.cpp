// Combos filled from queries, and the message boxes of the component.
#include <gtest/gtest.h>

#include <QComboBox>
#include <QSignalSpy>
#include <QWidget>

#include "ProcedureUi.h"
#include "TestSupport.h"

using namespace prestkt;
using namespace prestkt::test;

namespace {
void Tipi(TestDb& t) {
  t.Exec("INSERT INTO ProjectsTipo (CPrjTipo, DPrjTipo, Sigla) VALUES (1, ' Stampo ', 'ST'), (2, 'Attrezzatura', 'AT'), "
         "(3, 'Prototipo', 'PR')");
}
}  // namespace

TEST(CaricaCombo, FillsTextsAndItemData) {
  TestDb t;
  Tipi(t);
  QComboBox c;
  QSignalSpy click(&c, &QComboBox::currentIndexChanged);
  CaricaCombo(&c, "SELECT CPrjTipo, DPrjTipo FROM ProjectsTipo ORDER BY CPrjTipo", 0, 1);
  ASSERT_EQ(c.count(), 3);
  EXPECT_EQ(c.itemText(0), "Stampo");  // trimmed
  EXPECT_EQ(ItemData(&c, 2), 3);
  // Filling selects nothing and raises no click.
  EXPECT_EQ(c.currentIndex(), -1);
  EXPECT_EQ(click.count(), 0);
  EXPECT_EQ(GetCBValue(&c), 0);
}

TEST(CaricaCombo, ValueThatNoEntryHasLeavesNoSelection) {
  TestDb t;
  Tipi(t);
  QComboBox c;
  CaricaCombo(&c, "SELECT CPrjTipo, DPrjTipo FROM ProjectsTipo ORDER BY CPrjTipo", 0, 1, 99);
  EXPECT_EQ(c.currentIndex(), -1);
  CaricaCombo(&c, "SELECT CPrjTipo, DPrjTipo FROM ProjectsTipo ORDER BY CPrjTipo", 0, 1, 2);
  EXPECT_EQ(c.currentText(), "Attrezzatura");
  EXPECT_EQ(GetCBValue(&c), 2);
}

TEST(CaricaCombo, FirstEntryCaseAndKeepingEntries) {
  TestDb t;
  Tipi(t);
  QComboBox c;
  CaricaCombo(&c, "SELECT CPrjTipo, DPrjTipo FROM ProjectsTipo ORDER BY DPrjTipo", 0, 1, 0, QStringLiteral("{tutte}"), false, 1);
  ASSERT_EQ(c.count(), 4);
  EXPECT_EQ(c.itemText(0), "{tutte}");
  EXPECT_EQ(c.itemText(1), "STAMPO");  // stored " Stampo " sorts first; shown trimmed
  EXPECT_EQ(c.itemText(2), "ATTREZZATURA");
  // The first entry stands for none: its item data is 0.
  EXPECT_EQ(c.currentIndex(), 0);
  EXPECT_EQ(GetCBValue(&c), 0);
  CaricaCombo(&c, "SELECT Sigla, DPrjTipo FROM ProjectsTipo WHERE CPrjTipo=3", -1, 1, {}, {}, true, 2);
  ASSERT_EQ(c.count(), 5);
  EXPECT_EQ(c.itemText(4), "prototipo");
  // A failing query is logged and leaves the combo as it was cleared.
  CaricaCombo(&c, "SELECT * FROM Nessuna", 0, 1);
  EXPECT_EQ(c.count(), 0);
  EXPECT_EQ(t.LogLines("Procedure", "CaricaCombo").size(), 1);
}

TEST(SetCBValue, SelectsByItemDataOrTheDefault) {
  TestDb t;
  Tipi(t);
  QComboBox c;
  CaricaComboTipoPrj(&c);
  QSignalSpy click(&c, &QComboBox::currentIndexChanged);
  SetCBValue(&c, 3, 0);
  EXPECT_EQ(c.currentText(), "Prototipo");
  EXPECT_EQ(click.count(), 1);
  SetCBValue(&c, 3, 0);  // already there: nothing happens
  EXPECT_EQ(click.count(), 1);
  SetCBValue(&c, 42, 1);
  EXPECT_EQ(c.currentIndex(), 1);
}

TEST(CaricaComboAnag, TypeZeroAsksToChooseTheType) {
  TestDb t;
  t.Exec("INSERT INTO Anagrafica (TAnag, CAnag, RagSoc1, Eliminato) VALUES (1, 1, 'Zeta', 0), (1, 2, 'Alfa', 0), "
         "(1, 3, 'Tolto', -1)");
  QComboBox c;
  gCAnag = 5;
  CaricaComboAnag(&c, 0);
  EXPECT_EQ(gCAnag, 0);
  ASSERT_EQ(c.count(), 1);
  EXPECT_EQ(c.currentText(), "<- scegli tipologia anagrafica");
  EXPECT_FALSE(c.isEnabled());
  CaricaComboAnag(&c, 1);
  EXPECT_TRUE(c.isEnabled());
  ASSERT_EQ(c.count(), 3);
  EXPECT_EQ(c.itemText(1), "Alfa");
  EXPECT_EQ(c.currentText(), "{scegli anagrafica}");
}

TEST(MessageBoxVorn, TitleIsVornUnlessOneIsGiven) {
  TestDb t;
  t.messages->answers = {vbNo};
  EXPECT_EQ(MessageBoxVorn("Domanda?", vbYesNo | vbQuestion | vbDefaultButton2), vbNo);
  MessageBoxVorn("Avviso", vbExclamation, "   ");
  MessageBoxVorn("Avviso", vbInformation, "Uscita");
  MsgBox("Testo");
  ASSERT_EQ(t.messages->asked.size(), 4u);
  EXPECT_EQ(t.messages->asked[0].title, "VORN");
  EXPECT_EQ(t.messages->asked[0].buttons, 292);
  EXPECT_EQ(t.messages->asked[1].title, "VORN");
  EXPECT_EQ(t.messages->asked[2].title, "Uscita");
  EXPECT_EQ(t.messages->asked[3].title, AppTitle());
  // The logger's second mode shows the failure instead of writing it.
  bool mostra = true;
  ScriviErrLog("ModTest", "Prova", "Overflow (6)", mostra);
  ASSERT_EQ(t.messages->asked.size(), 5u);
  EXPECT_EQ(t.messages->asked[4].prompt, "Modulo: ModTest\r\nProcedura: Prova\r\n\r\nErrore: \r\n'Overflow (6)'");
  EXPECT_TRUE(t.LogLines("ModTest", "Prova").isEmpty());
}

TEST(CentraForm, PlacesTheFormInTheMiddle) {
  TestDb t;
  QWidget w;
  w.resize(400, 300);
  gIcona = QIcon(QPixmap(16, 16));
  CentraForm(&w);
  EXPECT_FALSE(w.windowIcon().isNull());
  gIcona = QIcon();
  EXPECT_GE(MargineLargo(&w), 0);
  EXPECT_GE(MargineAlto(&w), 0);
}
