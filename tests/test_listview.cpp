// The list helpers through which every screen fills its lists.
#include <gtest/gtest.h>

#include <QLabel>
#include <QStatusBar>
#include <QTest>

#include "ModListViewKT.h"
#include "TestSupport.h"

using namespace prestkt;
using namespace prestkt::test;

namespace {

void Colonne(ListView* l) {
  ListViewReport(l, true);
  ListViewSetColumns(l, {"", "Codice", "Importo", "Nota"}, {270, 1200, 1100, 2000},
                     {lvwColumnRight, lvwColumnLeft, lvwColumnRight, lvwColumnCenter});
}

}  // namespace

TEST(ListViewHelpers, ColumnsKeyedWithWidthsAndAlignment) {
  TestDb t;
  ListView l;
  Colonne(&l);
  ASSERT_EQ(l.ColumnCount(), 4);
  EXPECT_EQ(l.Model()->headerData(1, Qt::Horizontal, Qt::DisplayRole).toString(), "Codice");
  EXPECT_EQ(l.ColumnWidth(2), 1100);
  // The first column is left-aligned whatever was asked.
  EXPECT_EQ(l.ColumnAlignment(0), lvwColumnLeft);
  EXPECT_EQ(l.ColumnAlignment(2), lvwColumnRight);
  EXPECT_EQ(l.ColumnAlignment(3), lvwColumnCenter);
  EXPECT_TRUE(l.Checkboxes());
  EXPECT_TRUE(l.GridLines());
}

TEST(ListViewHelpers, EmptyValueShowsOneBlank) {
  TestDb t;
  ListView l;
  Colonne(&l);
  const int r = ListViewAddLine(&l, {"", "2025-00001", "", "nota"}, "K202500001", -1, QColor(Qt::red), true, true);
  EXPECT_EQ(l.Text(r, 0), "");
  EXPECT_EQ(l.Text(r, 1), "2025-00001");
  EXPECT_EQ(l.Text(r, 2), " ");
  EXPECT_EQ(l.Key(r), "K202500001");
  EXPECT_EQ(l.ItemColor(r), QColor(Qt::red));
  EXPECT_TRUE(l.ItemBold(r));
  EXPECT_TRUE(l.Checked(r));
  const int r2 = ListViewAddLine(&l, {"", "2025-00002"}, "K202500002");
  EXPECT_FALSE(l.Checked(r2));
  EXPECT_FALSE(l.ItemBold(r2));
  // A key that is already there fails into the log; the list keeps its lines.
  ListViewAddLine(&l, {"", "doppio"}, "K202500002");
  EXPECT_EQ(l.Count(), 2);
  EXPECT_EQ(t.LogLines("ModListViewKT", "ListViewAddLine").size(), 1);
}

TEST(ListViewHelpers, AddLineIconWithHeightAndCheck) {
  TestDb t;
  ListView l;
  Colonne(&l);
  const int r = ListViewAddLineIcon(&l, {"", "a", ""}, "K1", 2, 450, true);
  EXPECT_EQ(l.Icon(r), 2);
  EXPECT_TRUE(l.Checked(r));
  EXPECT_EQ(l.Text(r, 2), " ");
  EXPECT_EQ(l.ItemHeight(r), l.Pixels(450));
  l.show();  // once shown, the view asks the line for its height
  EXPECT_EQ(l.Model()->data(l.Model()->index(r, 0), Qt::SizeHintRole).toSize().height(), l.Pixels(450));
}

TEST(ListViewHelpers, ResizeListGivesTheRestToOneColumn) {
  TestDb t;
  ListView l;
  Colonne(&l);
  l.resize(600, 300);
  ResizeList(&l, 4);
  const int fixed = 270 + 1200 + 1100;
  EXPECT_EQ(l.ColumnWidth(3), l.WidthTwips() - fixed - 360);
  // Two columns share it by percentages taken on their sum.
  ResizeList(&l, 2, 4, 30, 10);
  const int w = l.WidthTwips() - 270 - 1100 - 360;
  EXPECT_EQ(l.ColumnWidth(1), static_cast<int>(w * 30 / 40.0));
  EXPECT_EQ(l.ColumnWidth(3), static_cast<int>(w * 10 / 40.0));
  EXPECT_TRUE(t.LogLines("ModListViewKT", "ResizeList").isEmpty());
}

TEST(ListViewHelpers, ResizeListOnANarrowListIsRefusedAndLogged) {
  TestDb t;
  ListView l;
  Colonne(&l);
  l.resize(60, 100);
  const int before = l.ColumnWidth(3);
  ResizeList(&l, 4);
  EXPECT_EQ(l.ColumnWidth(3), before);
  const QStringList lines = t.LogLines("ModListViewKT", "ResizeList");
  ASSERT_EQ(lines.size(), 1);
  EXPECT_TRUE(lines.at(0).endsWith("Invalid property value (380)")) << lines.at(0).toStdString();
  // A column beyond the list, or no list, ends at once.
  ResizeList(&l, 9);
  ResizeList(nullptr, 1);
  EXPECT_EQ(t.LogLines("ModListViewKT", "ResizeList").size(), 1);
}

TEST(ListViewHelpers, FindInListSelectsOrLeavesTheSelection) {
  TestDb t;
  ListView l;
  Colonne(&l);
  for (int i = 1; i <= 50; ++i) ListViewAddLine(&l, {"", QString::number(i)}, QString("K%1").arg(i, 4, 10, QChar('0')));
  l.resize(400, 200);
  l.show();
  FindInList(&l, "K0030");
  EXPECT_EQ(l.SelectedIndex(), 29);
  FindInList(&l, "K9999");
  EXPECT_EQ(l.SelectedIndex(), 29);
  EXPECT_EQ(t.LogLines("ModListViewKT", "FindInList").size(), 1);
}

TEST(ListViewHelpers, StatusBarPanelsFollowTheColumns) {
  TestDb t;
  ListView l;
  Colonne(&l);
  QStatusBar bar;
  ResizeStatusBar(&l, &bar);
  ResizeStatusBar(&l, &bar);  // again: the panels are replaced, not added
  const auto panels = bar.findChildren<QLabel*>(QString(), Qt::FindDirectChildrenOnly);
  int count = 0;
  for (QLabel* p : panels)
    if (p->property("prestktPanel").toBool()) ++count;
  EXPECT_EQ(count, 4);
  QLabel* p3 = bar.findChild<QLabel*>("Panel3");
  ASSERT_TRUE(p3);
  EXPECT_EQ(p3->width(), l.Pixels(1100));
  EXPECT_TRUE(p3->alignment() & Qt::AlignRight);
}

TEST(ListViewHelpers, SortByTextOfAColumn) {
  TestDb t;
  ListView l;
  Colonne(&l);
  ListViewAddLine(&l, {"", "b"}, "K2");
  ListViewAddLine(&l, {"", "C"}, "K3");
  ListViewAddLine(&l, {"", "a"}, "K1");
  l.SetSortKey(1);
  l.SetSortOrder(0);
  l.SetSorted(true);
  EXPECT_EQ(l.Key(0), "K1");
  EXPECT_EQ(l.Key(2), "K3");
  l.SetSortOrder(1);
  l.SetSorted(true);
  EXPECT_EQ(l.Key(0), "K3");
  EXPECT_EQ(l.IndexOfKey("K1"), 2);
}

// Enter on a selected row opens it, as a double click does; with no row
// selected it does nothing.
TEST(ListViewHelpers, EnterOnASelectedRowIsADoubleClick) {
  TestDb t;
  ListView l;
  Colonne(&l);
  ListViewAddLine(&l, {"", "2025-00001"}, "K202500001");
  ListViewAddLine(&l, {"", "2025-00002"}, "K202500002");
  l.show();
  int aperture = 0;
  QObject::connect(&l, &ListView::DblClick, [&] { ++aperture; });
  l.setFocus();
  l.clearSelection();
  QTest::keyClick(&l, Qt::Key_Return);
  EXPECT_EQ(aperture, 0);
  l.SetSelected(1);
  QTest::keyClick(&l, Qt::Key_Return);
  QTest::keyClick(&l, Qt::Key_Enter, Qt::KeypadModifier);
  EXPECT_EQ(aperture, 2);
}
