// "Progetti in  esecuzione": the open dispositions invoiced by the piece, by
// customer and by a free text, handed back to the document line.
#include <gtest/gtest.h>

#include <QApplication>
#include <QTest>

#include "TestSupport.h"
#include "frmDispAttive.h"

using namespace prestkt;
using namespace prestkt::test;

namespace {

void Officina(TestDb& t) {
  t.Exec("INSERT INTO Anagrafica (TAnag, CAnag, RagSoc1) VALUES (1, 1, 'Officina Rossi'), (1, 2, 'Carrozzeria Bianchi'), "
         "(2, 1, 'Zincatura Lombarda')");
  t.Exec("INSERT INTO ProjectsDispTipo (CPrjDispTipo, DPrjDispTipo, TipoFatt) VALUES (1, 'Oraria', 1), "
         "(2, 'A pezzo', 2), (3, 'Lotto', 2)");
}

// The rows a line screen hands over: two customers, pieces and hours, and a type that doesn't exist.
RecordsetPtr Righe() {
  auto rs = Recordset::Create();
  for (const char* n : {"ID", "CProject", "CDisp", "TAnag", "CAnag", "CPrjDispTipo"})
    rs->Append(QString::fromLatin1(n), adInteger, 4, adFldIsNullable | adFldMayBeNull);
  for (const char* n : {"RagSoc1", "DProject", "DPrjTipo", "DDisp"})
    rs->Append(QString::fromLatin1(n), adVarChar, 255, adFldIsNullable | adFldMayBeNull);
  rs->Append(QStringLiteral("Qta"), adDouble, 8, adFldIsNullable | adFldMayBeNull);
  rs->Open();
  const auto riga = [&](int id, int p, int d, int ta, int ca, int tipo, const char* rag, const char* prj,
                        const char* tipoPrj, const char* disp, double qta) {
    rs->AddNew();
    rs->SetValue("ID", id);
    rs->SetValue("CProject", p);
    rs->SetValue("CDisp", d);
    rs->SetValue("TAnag", ta);
    rs->SetValue("CAnag", ca);
    rs->SetValue("CPrjDispTipo", tipo);
    rs->SetValue("RagSoc1", QString::fromUtf8(rag));
    rs->SetValue("DProject", QString::fromUtf8(prj));
    rs->SetValue("DPrjTipo", QString::fromUtf8(tipoPrj));
    rs->SetValue("DDisp", QString::fromUtf8(disp));
    rs->SetValue("Qta", qta);
    rs->Update();
  };
  riga(1, 202500001, 1, 1, 1, 2, "Officina Rossi", "Stampo pompa", "Stampo", "Zincatura", 1200);
  riga(2, 202500001, 3, 1, 1, 3, "Officina Rossi", "Stampo pompa", "Stampo", "Tempra", 40);
  riga(3, 202500001, 2, 1, 1, 1, "Officina Rossi", "Stampo pompa", "Stampo", "Ore di attrezzeria", 1);
  riga(4, 202500007, 1, 1, 2, 2, "Carrozzeria Bianchi", "Staffa", "Attrezzatura", "Nichelatura", 300);
  riga(5, 202500009, 1, 1, 2, 9, "Carrozzeria Bianchi", "Coperchio", "Stampo", "Senza tipo", 5);
  return rs;
}

struct Picker {
  explicit Picker(bool forDDT = false, int tAnag = 0, int cAnag = 0) {
    f.recordset = Righe();
    f.ForDDT = forDDT;
    f.vTAnagD = tAnag;
    f.vCAnagD = cAnag;
    f.Form_Load();
    QObject::connect(&f, &frmDispAttive::Reload, [this](int& p, int& d) { scelte << QString("%1/%2").arg(p).arg(d); });
    f.show();
    QApplication::setActiveWindow(&f);
    QApplication::processEvents();
  }
  QStringList Codici() const {
    QStringList c;
    for (int i = 0; i < f.ListView1->Count(); ++i) c << f.ListView1->Text(i, 1);
    return c;
  }
  frmDispAttive f;
  QStringList scelte;
};

}  // namespace

TEST(frmDispAttive, OpenDispositionsByThePieceOfEveryCustomer) {
  TestDb t;
  Officina(t);
  Picker p;
  EXPECT_EQ(p.f.windowTitle(), "Progetti in  esecuzione");
  ASSERT_EQ(p.f.CBAnag->count(), 3);
  EXPECT_EQ(p.f.CBAnag->itemText(0), "{tutte}");
  EXPECT_EQ(p.f.CBAnag->itemText(1), "Carrozzeria Bianchi");  // each party once, by name
  EXPECT_EQ(p.f.CBAnag->itemText(2), "Officina Rossi");
  EXPECT_EQ(p.f.CBAnag->currentIndex(), 0);
  // Hours and a type that doesn't exist are left out; sorted by customer, model, disposition.
  EXPECT_EQ(p.Codici(), QStringList({"202500007-001", "202500001-001", "202500001-003"}));
  EXPECT_EQ(p.f.ListView1->Text(1, 2), "Officina Rossi");
  EXPECT_EQ(p.f.ListView1->Text(1, 3), "Stampo pompa (Stampo)");
  EXPECT_EQ(p.f.ListView1->Text(1, 4), "Zincatura (A pezzo)");
  EXPECT_EQ(p.f.ListView1->Text(1, 5), "1.200");
  EXPECT_EQ(p.f.ListView1->Key(1), "K202500001001");
  // One customer chosen.
  p.f.CBAnag->setCurrentIndex(2);
  emit p.f.CBAnag->activated(2);
  EXPECT_EQ(p.Codici(), QStringList({"202500001-001", "202500001-003"}));
  // A double click hands the disposition back and closes.
  p.f.ListView1->SetSelected(1);
  emit p.f.ListView1->DblClick();
  EXPECT_EQ(p.scelte, QStringList({"202500001/3"}));
  EXPECT_FALSE(p.f.isVisible());
}

// For a delivery note only its party: no "{tutte}", never another customer.
TEST(frmDispAttive, ForADeliveryNoteOnlyItsParty) {
  TestDb t;
  Officina(t);
  Picker p(true, 1, 2);
  ASSERT_EQ(p.f.CBAnag->count(), 1);
  EXPECT_EQ(p.f.CBAnag->itemText(0), "Carrozzeria Bianchi");
  EXPECT_EQ(p.Codici(), QStringList({"202500007-001"}));
  p.f.CBAnag->setCurrentIndex(0);
  emit p.f.CBAnag->activated(0);
  EXPECT_EQ(p.Codici(), QStringList({"202500007-001"}));
}

// The search reads the code part too: "-003" finds disposition 3. It runs as
// the field loses the focus after a change, as "Trova" takes it.
TEST(frmDispAttive, SearchRunsWhenTheChangedFieldLosesTheFocus) {
  TestDb t;
  Officina(t);
  Picker p;
  p.f.TBFind->setFocus();
  QTest::keyClicks(p.f.TBFind, "-003");
  EXPECT_EQ(p.Codici().size(), 3);  // not yet
  QTest::mouseClick(p.f.Command1, Qt::LeftButton);
  QApplication::processEvents();
  EXPECT_EQ(p.Codici(), QStringList({"202500001-003"}));
  // Other fields, without regard to case.
  p.f.TBFind->setFocus();
  p.f.TBFind->clear();
  QTest::keyClicks(p.f.TBFind, "NICHEL");
  p.f.Command1->click();
  QApplication::processEvents();
  EXPECT_EQ(p.Codici(), QStringList({"202500007-001"}));
}

// Leaving the field without a change rebuilds nothing.
TEST(frmDispAttive, LeavingTheSearchWithoutAChangeKeepsTheList) {
  TestDb t;
  Officina(t);
  Picker p;
  p.f.TBFind->setFocus();
  p.f.TBFind->setText("nessuno");  // not typed: no change by the user
  p.f.Command1->click();
  QApplication::processEvents();
  EXPECT_EQ(p.Codici().size(), 3);
}

// An empty list: confirming does nothing and the screen stays.
TEST(frmDispAttive, EmptyListConfirmsNothing) {
  TestDb t;
  Officina(t);
  Picker p(true, 2, 1);  // a party with no rows
  EXPECT_EQ(p.f.ListView1->Count(), 0);
  p.f.mnuFS->trigger();
  emit p.f.ToolbarClick(3);
  EXPECT_TRUE(p.scelte.isEmpty());
  EXPECT_TRUE(p.f.isVisible());
  p.f.mnuFE->trigger();
  EXPECT_FALSE(p.f.isVisible());
  EXPECT_TRUE(p.scelte.isEmpty());
}
