#pragma once
// The demo host on a demo database of its own, driven as a user would, for
// the tests of the host's screens.
#include <QApplication>
#include <QComboBox>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QTreeWidget>
#include <memory>

#include "DemoData.h"
#include "HostWindow.h"
#include "ListView.h"
#include "NumericSpin.h"
#include "OCPrestKT.h"
#include "TestSupport.h"

namespace prestkt::test {

// The host on a demo database of its own, with a script of answers for the messages.
struct Host {
  explicit Host(bool onlyInput = false) {
    ResetGlobals();
    gOcxEventCard.reset();
    file = dir.path() + QStringLiteral("/vorn.db");
    {
      auto demo = ApriDatabaseDiProva(file);
      CreaDatiDemo(*demo, QDate::currentDate());
    }
    messages = std::make_shared<ScriptedMessages>();
    SetMessageService(messages);
    HostOptions o;
    o.dbFile = file;
    if (!ServerDiProva().isEmpty()) {
      o.server = ConnessioneDiProva(file, false);
      o.cartella = dir.path();
    }
    o.docs = dir.path() + QStringLiteral("/documenti");
    o.user = 1;
    o.tAnag = 1;
    o.onlyInput = onlyInput;
    w = std::make_unique<HostWindow>(o);
    opened = w->Open();
    if (opened) db = gDB;
    if (opened) EXPECT_EQ(db->engine() == Engine::PostgreSQL, !ServerDiProva().isEmpty());
  }
  ~Host() {
    w.reset();
    gOcxEventCard.reset();
    SetMessageService(nullptr);
    ResetGlobals();
    db.reset();
    CancellaDatabaseDiProva(file);
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
  // The visible row whose first texts are these; null when there is none.
  QTreeWidgetItem* RowWithTexts(QTreeWidget* list, const QStringList& testi) {
    for (int i = 0; i < list->topLevelItemCount(); ++i) {
      QTreeWidgetItem* it = list->topLevelItem(i);
      bool uguale = !it->isHidden();
      for (int c = 0; uguale && c < testi.size(); ++c) uguale = it->text(c) == testi[c];
      if (uguale) return it;
    }
    return nullptr;
  }
  void ClickItem(QTreeWidget* list, QTreeWidgetItem* it) {
    ASSERT_TRUE(it);
    list->scrollToItem(it);
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, list->visualItemRect(it).center());
  }
  // Chooses an entry of a combo by its text, as a user picks it from the list.
  void Choose(QWidget* parent, const char* combo, const QString& testo) {
    auto* c = Find<QComboBox>(parent, combo);
    ASSERT_TRUE(c) << combo;
    const int i = c->findText(testo);
    ASSERT_GE(i, 0) << combo << " " << testo.toStdString();
    c->setCurrentIndex(i);
  }
  // Types into a numeric field over what it holds.
  void TypeNumber(QWidget* parent, const char* field, const QString& testo) {
    auto* n = Find<NumericSpin>(parent, field);
    ASSERT_TRUE(n) << field;
    n->setFocus();
    n->selectAll();
    QTest::keyClicks(n, testo);
  }
  QStringList Texts(const QTreeWidgetItem* it) {
    QStringList t;
    for (int c = 0; c < it->columnCount(); ++c) t << it->text(c);
    return t;
  }

  QTemporaryDir dir;
  QString file;
  std::shared_ptr<ScriptedMessages> messages;
  std::unique_ptr<HostWindow> w;
  DatabasePtr db;
  bool opened = false;
};

}  // namespace prestkt::test
