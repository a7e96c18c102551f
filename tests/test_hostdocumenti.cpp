// The host's documents: supplier orders, supplier deliveries and delivery
// notes, their lines from a project through the component, the links they
// leave, the quantities arrived, the totals and the list to open them again.
#include <gtest/gtest.h>

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QDateEdit>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <QTreeWidget>
#include <functional>

#include "HostDiProva.h"
#include "HostDocumenti.h"
#include "HostFattura.h"
#include "NumericSpin.h"
#include "frmCalcPzVend.h"
#include "frmCtrlDDTxFatt.h"
#include "ModDoc.h"
#include "ProcedureUi.h"
#include "frmDisp.h"
#include "frmDispAttive.h"
#include "frmGestDisp.h"
#include "frmGestDispOK.h"
#include "frmGestOrdFornImm.h"
#include "frmModelli.h"

using namespace prestkt;
using namespace prestkt::test;
using namespace vorn;

namespace {

// Runs f on the modal screen that the next action opens.
void Quando(std::function<void(QWidget*)> f) {
  QTimer::singleShot(0, [f] {
    QWidget* w = QApplication::activeModalWidget();
    ASSERT_TRUE(w) << "no screen opened";
    f(w);
  });
}

int Conta(Host& h, const QString& sql) { return h.Scalar(Sql(sql)).toInt(); }

// An open disposition by the piece of a customer, with registered kinds and
// kinds on its type, shown in the component's register; senzaDDT: one that no
// delivery note delivered yet.
struct Scelta {
  int cProject = 0, cDisp = 0, cliente = 0;
};
Scelta ScegliDisposizione(Host& h, bool senzaDDT = false) {
  const auto righe =
      h.db->Select(Sql("SELECT d.CProject, d.CDisp, p.CAnag FROM ((ProjectsDisp d INNER JOIN Projects p ON "
                       "p.CProject=d.CProject) INNER JOIN ProjectsDispTipo t ON t.CPrjDispTipo=d.CPrjDispTipo) "
                       "WHERE p.Stato=0 AND d.CStato=0 AND t.TipoFatt=2 AND p.TAnag=1 AND (SELECT Count(*) FROM "
                       "ProjectsDispDett x WHERE x.CProject=d.CProject AND x.CDisp=d.CDisp) > 0 AND (SELECT "
                       "Count(*) FROM ProjectsDisp2Prest k WHERE k.CPrjDispTipo=d.CPrjDispTipo) > 0 " +
                   QString(senzaDDT ? "AND NOT EXISTS (SELECT * FROM ProjectsDocDett l WHERE l.TipoDoc=5 AND "
                                      "l.CProject=d.CProject AND l.CDisp=d.CDisp) "
                                    : "") +
                   "ORDER BY d.CProject, d.CDisp"))
          .rows;
  for (const Row& r : righe)
    if (h.Register()->IndexOfKey(QStringLiteral("K%1").arg(r[0].toInt(), 9, 10, QLatin1Char('0'))) >= 0 ||
        h.Register()->IndexOfKey(QStringLiteral("K%1").arg(r[0].toInt())) >= 0)
      return {r[0].toInt(), r[1].toInt(), r[2].toInt()};
  ADD_FAILURE() << "no disposition by the piece in the register";
  return {};
}

// The supplier of the combo's first entry after "{scegli}".
int PrimoFornitore(DocumentoDialog* doc) {
  doc->cbAnag->setCurrentIndex(1);
  return GetCBValue(doc->cbAnag);
}

// A line on the component's screen: the disposition chosen in the picker, the
// first kind checked, the quantity and price typed, saved.
void RigaDaProgetto(const Scelta& s, double qta, double prezzo) {
  Quando([=](QWidget* w) {
    auto* f = qobject_cast<frmGestOrdFornImm*>(w);
    ASSERT_TRUE(f);
    EXPECT_EQ(f->windowTitle(), "Aggiunta riga da progetto");
    Quando([=](QWidget* w2) {
      auto* p = qobject_cast<frmDispAttive*>(w2);
      ASSERT_TRUE(p);
      const int r = p->ListView1->IndexOfKey(QStringLiteral("K%1%2")
                                                 .arg(s.cProject, 9, 10, QLatin1Char('0'))
                                                 .arg(s.cDisp, 3, 10, QLatin1Char('0')));
      ASSERT_GE(r, 0);
      p->ListView1->SetSelected(r);
      p->EseguiComando(1);
    });
    f->EseguiAzione(2);
    f->lvwPrest->SetChecked(0, true);
    f->OCQta->SetValue(qta);
    f->OCImporto->SetValue(prezzo);
    f->EseguiAzione(1);
    if (f->isVisible()) f->close();
  });
}

// A delivery's line from the order line nDoc/riga, with what arrived.
void RigaDaOrdine(int nOrdine, int riga, double qta, double prezzo, double proposta = -1) {
  Quando([=](QWidget* w) {
    auto* r = qobject_cast<RigaOrdineDialog*>(w);
    ASSERT_TRUE(r);
    QTreeWidgetItem* scelta = nullptr;
    for (int i = 0; i < r->twOrdini->topLevelItemCount(); ++i) {
      QTreeWidgetItem* it = r->twOrdini->topLevelItem(i);
      if (it->data(0, Qt::UserRole).toInt() == nOrdine && it->data(1, Qt::UserRole).toInt() == riga) scelta = it;
    }
    ASSERT_TRUE(scelta);
    r->twOrdini->setCurrentItem(scelta);
    if (proposta >= 0) EXPECT_DOUBLE_EQ(r->spQta->Value(), proposta);  // what is left to deliver
    r->spQta->SetValue(qta);
    r->spPrezzo->SetValue(prezzo);
    r->btnOK->click();
    if (r->isVisible()) r->reject();
  });
}

// The disposition card of the model, opened from the register as a user does;
// f reads it before it closes.
void SchedaDisposizione(Host& h, const Scelta& s, const std::function<void(frmDisp*)>& f) {
  int r = h.Register()->IndexOfKey(QStringLiteral("K%1").arg(s.cProject, 9, 10, QLatin1Char('0')));
  if (r < 0) r = h.Register()->IndexOfKey(QStringLiteral("K%1").arg(s.cProject));
  ASSERT_GE(r, 0);
  h.Register()->SetSelected(r);
  bool vista = false;
  Quando([&](QWidget* w) {
    auto* m = qobject_cast<frmModelli*>(w);
    ASSERT_TRUE(m);
    m->ListView1->SetSelected(m->ListView1->Row(QStringLiteral("K%1").arg(s.cDisp, 4, 10, QLatin1Char('0'))));
    Quando([&](QWidget* w2) {
      auto* d = qobject_cast<frmDisp*>(w2);
      ASSERT_TRUE(d);
      f(d);
      vista = true;
      d->Bottone(1)->trigger();
    });
    m->Bottone(8)->trigger();
    m->Bottone(1)->trigger();
  });
  h.Ctl()->Modifica();
  EXPECT_TRUE(vista);
}

QString Legami(Host& h, int tipo, int nDoc) {
  QStringList l;
  for (const Row& r : h.db->Select(Sql(QStringLiteral("SELECT Riga, RigaD, CProject, CDisp, Qta FROM ProjectsDocDett "
                                                      "WHERE TipoDoc=%1 AND NDoc=%2 ORDER BY RigaD")
                                           .arg(tipo)
                                           .arg(nDoc)))
                          .rows)
    l << QStringLiteral("%1/%2 %3-%4 q%5").arg(r[0].toInt()).arg(r[1].toInt()).arg(r[2].toInt()).arg(r[3].toInt()).arg(r[4].toDouble());
  return l.join(QLatin1Char('|'));
}

}  // namespace

// The road of external work and of a delivery note through the host's
// documents: a supplier order line tied to a disposition, saved and changed;
// a delivery of part of it; the disposition card showing its effective cost;
// a delivery note line with the registered kinds; the link tables after each save.
TEST(HostDocumenti, TheRoadFromASupplierOrderToADeliveryNote) {
  Host h;
  ASSERT_TRUE(h.opened);
  const Scelta s = ScegliDisposizione(h);
  ASSERT_GT(s.cProject, 0);
  const int ordiniPrima = Conta(h, "SELECT Count(*) FROM ProjectsDocDett WHERE TipoDoc=12");

  // A supplier order: one line from the project, saved.
  h.w->findChild<QAction*>("actNuovoOrdine")->trigger();
  DocumentoDialog* doc = h.w->Documento();
  ASSERT_TRUE(doc);
  EXPECT_EQ(doc->windowTitle(), "Ordine a fornitore (nuovo)");
  const int fornitore = PrimoFornitore(doc);
  RigaDaProgetto(s, 100, 2.5);
  h.Click(doc, "btnAggiungi");
  ASSERT_EQ(doc->Righe(), 1);
  EXPECT_TRUE(doc->Modificato());
  h.Click(doc, "btnSalva");
  const int nOrdine = doc->NDoc();
  ASSERT_GT(nOrdine, 0);
  EXPECT_FALSE(doc->Modificato());
  EXPECT_EQ(doc->windowTitle(), QStringLiteral("Ordine a fornitore n. %1").arg(nOrdine));
  EXPECT_EQ(h.Scalar(Sql(QString("SELECT Qta FROM DocFornDett WHERE TipoDoc=12 AND NDoc=%1 AND Riga=1").arg(nOrdine)))
                .toDouble(),
            100);
  EXPECT_EQ(Legami(h, 12, nOrdine), QStringLiteral("1/1 %1-%2 q100").arg(s.cProject).arg(s.cDisp));
  EXPECT_EQ(Conta(h, QString("SELECT Count(*) FROM ProjectsDocDettPrest WHERE TipoDoc=12 AND NDoc=%1 AND RigaD=1 AND "
                             "SubRiga=1")
                         .arg(nOrdine)),
            1);

  // The line changed and saved again: the same one row, with the new quantity.
  doc->twRighe->setCurrentItem(doc->twRighe->topLevelItem(0));
  Quando([&](QWidget* w) {
    auto* f = qobject_cast<frmGestOrdFornImm*>(w);
    ASSERT_TRUE(f);
    EXPECT_EQ(f->windowTitle(), "Modifica riga da progetto");
    EXPECT_EQ(f->OCQta->Value(), 100);
    f->OCQta->SetValue(60);
    f->EseguiAzione(1);
    if (f->isVisible()) f->close();
  });
  h.Click(doc, "btnModifica");
  h.Click(doc, "btnSalva");
  EXPECT_EQ(doc->NDoc(), nOrdine);
  EXPECT_EQ(Conta(h, "SELECT Count(*) FROM ProjectsDocDett WHERE TipoDoc=12"), ordiniPrima + 1);
  EXPECT_EQ(Legami(h, 12, nOrdine), QStringLiteral("1/1 %1-%2 q60").arg(s.cProject).arg(s.cDisp));
  EXPECT_EQ(Conta(h, QString("SELECT Count(*) FROM ProjectsDocDettPrest WHERE TipoDoc=12 AND NDoc=%1").arg(nOrdine)), 1);
  h.Click(doc, "btnChiudi");
  EXPECT_TRUE(h.messages->asked.empty()) << h.Prompts().join('|').toStdString();

  // A delivery of part of it: 25 of the 60, at a price of its own.
  h.w->findChild<QAction*>("actNuovaConsegna")->trigger();
  doc = h.w->Documento();
  ASSERT_TRUE(doc);
  EXPECT_EQ(doc->windowTitle(), "Consegna da fornitore (nuovo)");
  SetCBValue(doc->cbAnag, fornitore, 0);
  RigaDaOrdine(nOrdine, 1, 25, 2.7, 60);
  h.Click(doc, "btnAggiungi");
  ASSERT_EQ(doc->Righe(), 1);
  EXPECT_FALSE(doc->cbAnag->isEnabled());  // its lines are this supplier's
  h.Click(doc, "btnSalva");
  const int nConsegna = doc->NDoc();
  ASSERT_GT(nConsegna, 0);
  EXPECT_EQ(Conta(h, QString("SELECT Count(*) FROM DocFornDett WHERE TipoDoc=15 AND NDoc=%1 AND TipoDocRif=12 AND "
                             "NDocRif=%2 AND RigaRif=1 AND Qta=25 AND PzVend=2.7")
                         .arg(nConsegna)
                         .arg(nOrdine)),
            1);
  EXPECT_EQ(h.Scalar(Sql(QString("SELECT QtaArr FROM DocFornDett WHERE TipoDoc=12 AND NDoc=%1 AND Riga=1").arg(nOrdine)))
                .toDouble(),
            25);
  // A delivery ties nothing to a disposition by itself.
  EXPECT_EQ(Conta(h, QString("SELECT Count(*) FROM ProjectsDocDett WHERE TipoDoc=15 AND NDoc=%1").arg(nConsegna)), 0);
  h.Click(doc, "btnChiudi");

  // The disposition card lists the order line with what is left and its effective cost.
  const QString chiave = QStringLiteral("K012%1%2%3")
                             .arg(nOrdine, 9, 10, QLatin1Char('0'))
                             .arg(1, 4, 10, QLatin1Char('0'))
                             .arg(1, 4, 10, QLatin1Char('0'));
  QStringList riga;
  SchedaDisposizione(h, s, [&](frmDisp* d) {
    d->SSTab1->setCurrentIndex(2);
    const int r = d->lvwEsecExt->IndexOfKey(chiave);
    ASSERT_GE(r, 0);
    for (int c = 1; c <= 7; ++c) riga << d->lvwEsecExt->Text(r, c);
  });
  ASSERT_EQ(riga.size(), 7);
  EXPECT_EQ(riga[0], Format(nOrdine, "0000-00000"));
  EXPECT_EQ(riga[3], "60");
  EXPECT_EQ(riga[4], "35");
  EXPECT_EQ(riga[5], "2,50");
  EXPECT_EQ(riga[6], "2,70");

  // A delivery note to the customer: the registered kinds come checked.
  h.w->findChild<QAction*>("actNuovoDDT")->trigger();
  doc = h.w->Documento();
  ASSERT_TRUE(doc);
  SetCBValue(doc->cbAnag, s.cliente, 0);
  int spuntate = 0, registrate = 0;
  Quando([&](QWidget* w) {
    auto* f = qobject_cast<frmGestOrdFornImm*>(w);
    ASSERT_TRUE(f);
    EXPECT_FALSE(f->OCFrame4->isEnabled());
    Quando([&](QWidget* w2) {
      auto* p = qobject_cast<frmDispAttive*>(w2);
      ASSERT_TRUE(p);
      ASSERT_GE(p->ListView1->Count(), 1);
      for (int i = 0; i < p->ListView1->Count(); ++i) EXPECT_EQ(p->ListView1->Text(i, 2), p->ListView1->Text(0, 2));
      p->ListView1->SetSelected(p->ListView1->Row(QStringLiteral("K%1%2")
                                                      .arg(s.cProject, 9, 10, QLatin1Char('0'))
                                                      .arg(s.cDisp, 3, 10, QLatin1Char('0'))));
      p->EseguiComando(1);
    });
    f->EseguiAzione(2);
    for (int i = 0; i < f->lvwPrest->Count(); ++i) {
      spuntate += f->lvwPrest->Checked(i) ? 1 : 0;
      registrate += Conta(h, QString("SELECT Count(*) FROM ProjectsDispDett WHERE CProject=%1 AND CDisp=%2 AND "
                                     "CPrestazione=%3")
                                 .arg(s.cProject)
                                 .arg(s.cDisp)
                                 .arg(f->lvwPrest->Key(i).mid(1).toInt())) > 0;
    }
    f->OCQta->SetValue(40);
    SetCBValue(f->CBCaus, 2, 0);  // a delivery note's reason is the user's to choose
    f->EseguiAzione(1);
    if (f->isVisible()) f->close();
  });
  h.Click(doc, "btnAggiungi");
  EXPECT_GT(spuntate, 0);
  EXPECT_EQ(spuntate, registrate);
  ASSERT_EQ(doc->Righe(), 1);
  h.Click(doc, "btnSalva");
  const int nDDT = doc->NDoc();
  EXPECT_EQ(Legami(h, 5, nDDT), QStringLiteral("1/1 %1-%2 q40").arg(s.cProject).arg(s.cDisp));
  EXPECT_EQ(Conta(h, QString("SELECT Count(*) FROM ProjectsDocDettPrest WHERE TipoDoc=5 AND NDoc=%1").arg(nDDT)),
            spuntate);
  EXPECT_EQ(Conta(h, QString("SELECT CAnag FROM Doc WHERE TipoDoc=5 AND NDoc=%1").arg(nDDT)), s.cliente);
  // The order's links did not move.
  EXPECT_EQ(Legami(h, 12, nOrdine), QStringLiteral("1/1 %1-%2 q60").arg(s.cProject).arg(s.cDisp));
  h.Click(doc, "btnChiudi");
}

// A second line, the first deleted: the link tables follow the document, and
// a new line takes the next number, not the one freed.
TEST(HostDocumenti, DeletedLinesLeaveTheLinksAndTheirNumbers) {
  Host h;
  ASSERT_TRUE(h.opened);
  const Scelta s = ScegliDisposizione(h);
  h.w->findChild<QAction*>("actNuovoOrdine")->trigger();
  DocumentoDialog* doc = h.w->Documento();
  PrimoFornitore(doc);
  RigaDaProgetto(s, 10, 1);
  h.Click(doc, "btnAggiungi");
  RigaDaProgetto(s, 20, 2);
  h.Click(doc, "btnAggiungi");
  ASSERT_EQ(doc->Righe(), 2);
  h.Click(doc, "btnSalva");
  const int n = doc->NDoc();
  EXPECT_EQ(Legami(h, 12, n),
            QStringLiteral("1/1 %1-%2 q10|2/2 %1-%2 q20").arg(s.cProject).arg(s.cDisp));

  // Deleting asks; No keeps the line.
  doc->twRighe->setCurrentItem(doc->twRighe->topLevelItem(0));
  h.messages->answers.push_back(vbNo);
  h.Click(doc, "btnElimina");
  EXPECT_EQ(h.messages->asked.back().prompt, "Vuoi eliminare la riga 1?");
  EXPECT_EQ(h.messages->asked.back().buttons, 292);
  EXPECT_EQ(doc->Righe(), 2);
  EXPECT_FALSE(doc->Modificato());
  h.messages->answers.push_back(vbYes);
  h.Click(doc, "btnElimina");
  EXPECT_EQ(doc->Righe(), 1);
  h.Click(doc, "btnSalva");
  EXPECT_EQ(Legami(h, 12, n), QStringLiteral("2/2 %1-%2 q20").arg(s.cProject).arg(s.cDisp));
  EXPECT_EQ(Conta(h, QString("SELECT Count(*) FROM DocFornDett WHERE TipoDoc=12 AND NDoc=%1").arg(n)), 1);
  EXPECT_EQ(Conta(h, QString("SELECT Count(*) FROM ProjectsDocDettPrest WHERE TipoDoc=12 AND NDoc=%1 AND RigaD=1").arg(n)),
            0);

  RigaDaProgetto(s, 30, 3);
  h.Click(doc, "btnAggiungi");
  h.Click(doc, "btnSalva");
  EXPECT_EQ(Legami(h, 12, n), QStringLiteral("2/2 %1-%2 q20|3/3 %1-%2 q30").arg(s.cProject).arg(s.cDisp));
  h.Click(doc, "btnChiudi");
}

// Reopened from the list of documents, a note keeps what it doesn't show:
// the prices the invoicing wrote on its lines and the header's other fields.
TEST(HostDocumenti, AReopenedDocumentKeepsTheFieldsItDoesNotShow) {
  Host h;
  ASSERT_TRUE(h.opened);
  const Scelta s = ScegliDisposizione(h);
  h.w->findChild<QAction*>("actNuovoDDT")->trigger();
  DocumentoDialog* doc = h.w->Documento();
  SetCBValue(doc->cbAnag, s.cliente, 0);
  Quando([&](QWidget* w) {
    auto* f = qobject_cast<frmGestOrdFornImm*>(w);
    ASSERT_TRUE(f);
    f->CaricaDati(s.cProject, s.cDisp);
    f->OCQta->SetValue(5);
    SetCBValue(f->CBCaus, 2, 0);
    f->EseguiAzione(1);
    if (f->isVisible()) f->close();
  });
  h.Click(doc, "btnAggiungi");
  doc->tbRiferimento->setText("Vs. ordine 12");
  h.Click(doc, "btnSalva");
  const int n = doc->NDoc();
  h.Click(doc, "btnChiudi");
  h.db->Execute(Sql(QString("UPDATE DocDett SET PzVendP=7.5, Manifattura=7.5 WHERE TipoDoc=5 AND NDoc=%1").arg(n)));
  h.db->Execute(Sql(QString("UPDATE Doc SET Oggetto='Consegna stampi' WHERE TipoDoc=5 AND NDoc=%1").arg(n)));

  // The list shows it first, the newest; the filter of its kind keeps it.
  Quando([&](QWidget* w) {
    auto* l = qobject_cast<DocumentiDialog*>(w);
    ASSERT_TRUE(l);
    EXPECT_EQ(l->windowTitle(), "Documenti");
    SetCBValue(l->cbTipo, 5, 0);
    ASSERT_GT(l->twDocumenti->topLevelItemCount(), 0);
    for (int i = 0; i < l->twDocumenti->topLevelItemCount(); ++i)
      EXPECT_EQ(l->twDocumenti->topLevelItem(i)->text(0), "DDT a cliente");
    QTreeWidgetItem* it = nullptr;
    for (int i = 0; i < l->twDocumenti->topLevelItemCount(); ++i)
      if (l->twDocumenti->topLevelItem(i)->data(1, Qt::UserRole).toInt() == n) it = l->twDocumenti->topLevelItem(i);
    ASSERT_TRUE(it);
    EXPECT_EQ(it->text(4), "Vs. ordine 12");
    l->twDocumenti->setCurrentItem(it);
    l->btnApri->click();
  });
  h.w->findChild<QAction*>("actApriDocumento")->trigger();
  doc = h.w->Documento();
  ASSERT_TRUE(doc);
  EXPECT_EQ(doc->NDoc(), n);
  EXPECT_EQ(doc->windowTitle(), QStringLiteral("DDT a cliente n. %1").arg(n));
  EXPECT_EQ(GetCBValue(doc->cbAnag), s.cliente);
  EXPECT_EQ(doc->tbRiferimento->text(), "Vs. ordine 12");
  ASSERT_EQ(doc->Righe(), 1);
  EXPECT_FALSE(doc->Modificato());
  doc->tbRiferimento->setFocus();
  QTest::keyClicks(doc->tbRiferimento, "/b");
  EXPECT_TRUE(doc->Modificato());
  h.Click(doc, "btnSalva");
  EXPECT_EQ(h.Scalar(Sql(QString("SELECT PzVendP FROM DocDett WHERE TipoDoc=5 AND NDoc=%1").arg(n))).toDouble(), 7.5);
  EXPECT_EQ(h.Scalar(Sql(QString("SELECT Oggetto FROM Doc WHERE TipoDoc=5 AND NDoc=%1").arg(n))).toString(),
            "Consegna stampi");
  EXPECT_EQ(h.Scalar(Sql(QString("SELECT Riferimento FROM Doc WHERE TipoDoc=5 AND NDoc=%1").arg(n))).toString(),
            "Vs. ordine 12/b");
  EXPECT_EQ(Legami(h, 5, n), QStringLiteral("1/1 %1-%2 q5").arg(s.cProject).arg(s.cDisp));
  h.Click(doc, "btnChiudi");
}

// The header's discount and VAT code: the totals shown and written follow the
// lines, each rounded to the cent, the header's code over the lines'.
TEST(HostDocumenti, TotalsFollowTheHeadersDiscountAndVat) {
  Host h;
  ASSERT_TRUE(h.opened);
  const Scelta s = ScegliDisposizione(h);
  h.w->findChild<QAction*>("actNuovoOrdine")->trigger();
  DocumentoDialog* doc = h.w->Documento();
  PrimoFornitore(doc);
  RigaDaProgetto(s, 3, 10.25);   // 30.75
  h.Click(doc, "btnAggiungi");
  RigaDaProgetto(s, 1, 0.125);   // 0.125: to the even cent, 0.12
  h.Click(doc, "btnAggiungi");
  // Each line took the first VAT code of the line screen's list: the exempt one.
  SetCBValue(doc->cbIva, 0, 0);
  EXPECT_EQ(doc->lblTotali->text(), "Imponibile: 30,87     IVA: 0,00     Totale: 30,87");
  SetCBValue(doc->cbIva, 2, 0);  // 22%: 6.765 on the first line rounds to 6.76, 0.0264 to 0.03
  EXPECT_EQ(doc->lblTotali->text(), "Imponibile: 30,87     IVA: 6,79     Totale: 37,66");
  doc->spSconto->SetValue(100);
  EXPECT_EQ(doc->lblTotali->text(), "Imponibile: 0,00     IVA: 0,00     Totale: 0,00");
  doc->spSconto->SetValue(10);  // 27.675 to 27.68, 0.1125 to 0.11
  EXPECT_EQ(doc->lblTotali->text(), "Imponibile: 27,79     IVA: 6,11     Totale: 33,90");
  h.Click(doc, "btnSalva");
  const auto t = h.db->Select(Sql(QString("SELECT ImpDoc, IVADoc, TotDoc, ValSconto, CIva FROM DocForn WHERE "
                                          "TipoDoc=12 AND NDoc=%1")
                                      .arg(doc->NDoc())))
                     .rows;
  ASSERT_EQ(t.size(), 1u);
  EXPECT_NEAR(t[0][0].toDouble(), 27.79, 1e-9);
  EXPECT_NEAR(t[0][1].toDouble(), 6.11, 1e-9);
  EXPECT_NEAR(t[0][2].toDouble(), 33.90, 1e-9);
  EXPECT_EQ(t[0][3].toDouble(), 10);
  EXPECT_EQ(t[0][4].toInt(), 2);
  h.Click(doc, "btnChiudi");
}

// A delivery's line: its checks in order, what is left to deliver, and the
// quantity arrived on the order line following edits and deletes.
TEST(HostDocumenti, ADeliveryCountsWhatArrivedOnTheOrderLine) {
  Host h;
  ASSERT_TRUE(h.opened);
  const Scelta s = ScegliDisposizione(h);
  h.w->findChild<QAction*>("actNuovoOrdine")->trigger();
  DocumentoDialog* doc = h.w->Documento();
  const int fornitore = PrimoFornitore(doc);
  RigaDaProgetto(s, 50, 4);
  h.Click(doc, "btnAggiungi");
  h.Click(doc, "btnSalva");
  const int nOrdine = doc->NDoc();
  h.Click(doc, "btnChiudi");
  const auto arrivata = [&] {
    return h.Scalar(Sql(QString("SELECT QtaArr FROM DocFornDett WHERE TipoDoc=12 AND NDoc=%1 AND Riga=1").arg(nOrdine)))
        .toDouble();
  };

  h.w->findChild<QAction*>("actNuovaConsegna")->trigger();
  doc = h.w->Documento();
  // No supplier yet: the line can't be chosen.
  h.Click(doc, "btnAggiungi");
  EXPECT_EQ(h.messages->asked.back().prompt, "Scegli il fornitore del documento.");
  EXPECT_EQ(h.messages->asked.back().buttons, 48);
  SetCBValue(doc->cbAnag, fornitore, 0);

  // The checks of the line, each in its turn.
  Quando([&](QWidget* w) {
    auto* r = qobject_cast<RigaOrdineDialog*>(w);
    ASSERT_TRUE(r);
    QTreeWidgetItem* it = nullptr;
    for (int i = 0; i < r->twOrdini->topLevelItemCount(); ++i)
      if (r->twOrdini->topLevelItem(i)->data(0, Qt::UserRole).toInt() == nOrdine) it = r->twOrdini->topLevelItem(i);
    ASSERT_TRUE(it);
    EXPECT_EQ(it->text(5), "50");
    r->twOrdini->setCurrentItem(nullptr);
    r->btnOK->click();
    EXPECT_EQ(h.messages->asked.back().prompt, "Scegli la riga d'ordine da evadere.");
    r->twOrdini->setCurrentItem(it);
    EXPECT_EQ(r->spQta->Value(), 50);
    EXPECT_EQ(r->spPrezzo->Value(), 4);
    r->spQta->SetValue(0);
    r->btnOK->click();
    EXPECT_EQ(h.messages->asked.back().prompt, "Digita la quantità arrivata.");
    r->spQta->SetValue(-3);
    r->btnOK->click();
    EXPECT_EQ(h.messages->asked.back().prompt, "Digita la quantità arrivata.");
    r->spQta->SetValue(30);
    SetCBValue(r->cbCausale, 0, 0);
    r->btnOK->click();
    EXPECT_EQ(h.messages->asked.back().prompt, "Scegli la causale.");
    EXPECT_TRUE(r->isVisible());
    r->reject();
  });
  h.Click(doc, "btnAggiungi");
  EXPECT_EQ(doc->Righe(), 0);

  // 30 arrive, then 15 more on a second line of the same delivery: it proposes the 20 left.
  RigaDaOrdine(nOrdine, 1, 30, 4, 50);
  h.Click(doc, "btnAggiungi");
  RigaDaOrdine(nOrdine, 1, 15, 4.5, 20);
  h.Click(doc, "btnAggiungi");
  h.Click(doc, "btnSalva");
  const int nConsegna = doc->NDoc();
  EXPECT_EQ(arrivata(), 45);

  // The first line changed to 10: 25 arrived.
  doc->twRighe->setCurrentItem(doc->twRighe->topLevelItem(0));
  Quando([&](QWidget* w) {
    auto* r = qobject_cast<RigaOrdineDialog*>(w);
    ASSERT_TRUE(r);
    EXPECT_EQ(r->windowTitle(), "Modifica riga di consegna");
    EXPECT_FALSE(r->twOrdini->isEnabled());
    EXPECT_EQ(r->spQta->Value(), 30);
    r->spQta->SetValue(10);
    r->btnOK->click();
  });
  h.Click(doc, "btnModifica");
  h.Click(doc, "btnSalva");
  EXPECT_EQ(arrivata(), 25);

  // Both lines deleted: nothing arrived any more.
  for (int i = 0; i < 2; ++i) {
    doc->twRighe->setCurrentItem(doc->twRighe->topLevelItem(0));
    h.messages->answers.push_back(vbYes);
    h.Click(doc, "btnElimina");
  }
  h.Click(doc, "btnSalva");
  EXPECT_EQ(arrivata(), 0);
  EXPECT_EQ(Conta(h, QString("SELECT Count(*) FROM DocFornDett WHERE TipoDoc=15 AND NDoc=%1").arg(nConsegna)), 0);
  h.Click(doc, "btnChiudi");
}

// Closing with unsaved changes asks, through the message box; No closes and
// writes nothing, Yes saves first.
TEST(HostDocumenti, ClosingAnUnsavedDocumentAsks) {
  Host h;
  ASSERT_TRUE(h.opened);
  const Scelta s = ScegliDisposizione(h);
  const int documenti = Conta(h, "SELECT Count(*) FROM DocForn WHERE TipoDoc=12");
  for (int risposta : {vbNo, vbYes}) {
    h.w->findChild<QAction*>("actNuovoOrdine")->trigger();
    DocumentoDialog* doc = h.w->Documento();
    PrimoFornitore(doc);
    RigaDaProgetto(s, 1, 1);
    h.Click(doc, "btnAggiungi");
    const int chieste = static_cast<int>(h.messages->asked.size());
    h.messages->answers.push_back(risposta);
    h.Click(doc, "btnChiudi");
    ASSERT_EQ(static_cast<int>(h.messages->asked.size()), chieste + 1);  // once
    EXPECT_EQ(h.messages->asked.back().prompt, "Vuoi salvare prima di uscire?");
    EXPECT_EQ(h.messages->asked.back().buttons, 292);
    QApplication::processEvents();
    EXPECT_FALSE(h.w->Documento());
  }
  EXPECT_EQ(Conta(h, "SELECT Count(*) FROM DocForn WHERE TipoDoc=12"), documenti + 1);

  // The program's window asks too before it ends.
  h.w->findChild<QAction*>("actNuovoOrdine")->trigger();
  DocumentoDialog* doc = h.w->Documento();
  PrimoFornitore(doc);
  EXPECT_TRUE(doc->Modificato());
  h.messages->answers.push_back(vbNo);
  EXPECT_TRUE(h.w->close());
  EXPECT_EQ(h.messages->asked.back().prompt, "Vuoi salvare prima di uscire?");
}

// A document without its party is not saved, and says so.
TEST(HostDocumenti, ADocumentWithoutItsPartyIsNotSaved) {
  Host h;
  ASSERT_TRUE(h.opened);
  for (int tipo : {12, 15, 5}) {
    DocumentoDialog* doc = h.w->ApriDocumento(tipo);
    ASSERT_TRUE(doc);
    EXPECT_FALSE(doc->Salva());
    EXPECT_EQ(h.messages->asked.back().prompt, tipo == 5 ? QStringLiteral("Scegli il cliente del documento.")
                                                         : QStringLiteral("Scegli il fornitore del documento."));
    EXPECT_EQ(doc->NDoc(), 0);
    doc->close();
  }
}

// The road's end: two delivery notes of the month on one disposition, the DDT
// check summing them, the calculator's price written into every line with the
// notes' totals, and the host's invoice marking the disposition invoiced.
TEST(HostDocumenti, FromTheDeliveryNotesToTheInvoice) {
  Host h;
  ASSERT_TRUE(h.opened);
  // A disposition no note delivered yet.
  const Scelta s = ScegliDisposizione(h, true);
  ASSERT_GT(s.cProject, 0);

  int nDDT[2] = {0, 0};
  const double quantita[2] = {40, 25};
  for (int i = 0; i < 2; ++i) {
    h.w->findChild<QAction*>("actNuovoDDT")->trigger();
    DocumentoDialog* doc = h.w->Documento();
    SetCBValue(doc->cbAnag, s.cliente, 0);
    Quando([&, i](QWidget* w) {
      auto* f = qobject_cast<frmGestOrdFornImm*>(w);
      ASSERT_TRUE(f);
      f->CaricaDati(s.cProject, s.cDisp);
      f->OCQta->SetValue(quantita[i]);
      SetCBValue(f->CBCaus, 1, 0);  // C/Lavorazione: billable
      SetCBValue(f->CBIva, 2, 0);   // 22%
      f->EseguiAzione(1);
      if (f->isVisible()) f->close();
    });
    h.Click(doc, "btnAggiungi");
    h.Click(doc, "btnSalva");
    nDDT[i] = doc->NDoc();
    h.Click(doc, "btnChiudi");
  }
  ASSERT_GT(nDDT[0], 0);
  ASSERT_GT(nDDT[1], nDDT[0]);

  // The DDT check of the month: 65 pieces; the calculator confirms 3.25 each.
  const QString chiave = QStringLiteral("K%1%2").arg(s.cProject, 9, 10, QLatin1Char('0')).arg(s.cDisp, 4, 10, QLatin1Char('0'));
  QString sommata, mostrato;
  double qtaCalcolatore = 0;
  Quando([&](QWidget* w) {
    auto* c = qobject_cast<frmCtrlDDTxFatt*>(w);
    ASSERT_TRUE(c);
    const int r = c->ListView1->IndexOfKey(chiave);
    ASSERT_GE(r, 0);
    sommata = c->ListView1->Text(r, 6);
    c->ListView1->SetSelected(r);
    Quando([&](QWidget* w2) {
      auto* p = qobject_cast<frmCalcPzVend*>(w2);
      ASSERT_TRUE(p);
      qtaCalcolatore = p->Qta;
      p->OCPzVend->SetValue(3.25);
      p->Bottone(3)->trigger();
    });
    c->Bottone(3)->trigger();
    mostrato = c->ListView1->Text(r, 7);
    c->Bottone(1)->trigger();
  });
  h.w->findChild<QAction*>("actControlloDDT")->trigger();
  EXPECT_EQ(sommata, "65");
  EXPECT_EQ(qtaCalcolatore, 65);
  EXPECT_EQ(mostrato, "3,25");
  for (int n : nDDT) {
    for (const char* campo : {"PzVend", "PzVendP", "Manifattura"})
      EXPECT_EQ(h.Scalar(Sql(QStringLiteral("SELECT %1 FROM DocDett WHERE TipoDoc=5 AND NDoc=%2").arg(campo).arg(n)))
                    .toDouble(),
                3.25);
    EXPECT_EQ(h.Scalar(Sql(QStringLiteral("SELECT Importo FROM ProjectsDocDett WHERE TipoDoc=5 AND NDoc=%1").arg(n)))
                  .toDouble(),
              3.25);
  }
  const auto totali = [&](int tipo, int n) {
    const Row r = h.db->Select(Sql(QStringLiteral("SELECT ImpDoc, IVADoc, TotDoc FROM Doc WHERE TipoDoc=%1 AND NDoc=%2")
                                       .arg(tipo)
                                       .arg(n)))
                      .rows.at(0);
    return QStringLiteral("%1|%2|%3").arg(r[0].toDouble(), 0, 'f', 2).arg(r[1].toDouble(), 0, 'f', 2).arg(r[2].toDouble(), 0, 'f', 2);
  };
  EXPECT_EQ(totali(5, nDDT[0]), "130.00|28.60|158.60");
  EXPECT_EQ(totali(5, nDDT[1]), "81.25|17.88|99.13");  // 17.875: a tie, to the even cent

  // The invoicing list closes the disposition with a date, and reopens it.
  const QString riga = QStringLiteral("K%1%2").arg(s.cProject, 9, 10, QLatin1Char('0')).arg(s.cDisp, 3, 10, QLatin1Char('0'));
  const QString dove = QStringLiteral("SELECT %3 FROM ProjectsDisp WHERE CProject=%1 AND CDisp=%2").arg(s.cProject).arg(s.cDisp);
  int statoChiuso = -1;
  QVariant chiusoIl, riapertoIl = 1;
  Quando([&](QWidget* w) {
    auto* g = qobject_cast<frmGestDisp*>(w);
    ASSERT_TRUE(g);
    EXPECT_EQ(g->windowTitle(), "Gestione disposizioni per fatturazione");
    const int r = g->ListView1->IndexOfKey(riga);
    ASSERT_GE(r, 0);
    g->ListView1->SetChecked(r, true);
    h.messages->answers.push_back(vbYes);  // "Sei sicuro di voler chiudere le disposizioni selezionate?"
    Quando([&](QWidget* w2) {
      auto* ok = qobject_cast<frmGestDispOK*>(w2);
      ASSERT_TRUE(ok);
      ok->DTPicker1->setDate(QDate::currentDate().addDays(-1));
      ok->OKButton->click();
    });
    g->Bottone(3)->trigger();
    statoChiuso = h.Scalar(Sql(dove.arg("CStato"))).toInt();
    chiusoIl = h.Scalar(Sql(dove.arg("DtEnd")));
    g->CBStato->setCurrentIndex(1);  // "Disp.chiuse"
    const int c = g->ListView1->IndexOfKey(riga);
    ASSERT_GE(c, 0);
    g->ListView1->SetChecked(c, true);
    h.messages->answers.push_back(vbYes);  // "Sei sicuro di voler riaprire le disposizioni selezionate?"
    g->Bottone(3)->trigger();
    riapertoIl = h.Scalar(Sql(dove.arg("DtEnd")));
    g->Bottone(1)->trigger();
  });
  h.w->findChild<QAction*>("actGestioneDisposizioni")->trigger();
  EXPECT_EQ(statoChiuso, 9);
  EXPECT_EQ(CDate(chiusoIl).date(), QDate::currentDate().addDays(-1));
  EXPECT_EQ(h.Scalar(Sql(dove.arg("CStato"))).toInt(), 0);
  EXPECT_TRUE(IsNull(riapertoIl));

  // The host's invoice of the two notes.
  int nFattura = 0;
  Quando([&](QWidget* w) {
    auto* f = qobject_cast<FatturaDialog*>(w);
    ASSERT_TRUE(f);
    SetCBValue(f->cbCliente, s.cliente, 0);
    for (int i = 0; i < f->twNote->topLevelItemCount(); ++i) {
      QTreeWidgetItem* it = f->twNote->topLevelItem(i);
      const int n = it->data(0, Qt::UserRole).toInt();
      it->setCheckState(0, n == nDDT[0] || n == nDDT[1] ? Qt::Checked : Qt::Unchecked);
    }
    nFattura = f->CreaFattura();
    f->reject();
  });
  h.w->findChild<QAction*>("actFatturaDaDDT")->trigger();
  ASSERT_GT(nFattura, 0);
  EXPECT_EQ(h.messages->asked.back().prompt, QStringLiteral("Creata la fattura n. %1.").arg(nFattura));
  EXPECT_EQ(totali(9, nFattura), "211.25|46.48|257.73");
  EXPECT_EQ(Conta(h, QString("SELECT Count(*) FROM DocSchede WHERE TipoDoc=9 AND NDoc=%1 AND TipoDocAss=5").arg(nFattura)), 2);
  EXPECT_EQ(Conta(h, QString("SELECT Count(*) FROM DocDett WHERE TipoDoc=9 AND NDoc=%1").arg(nFattura)), 2);
  EXPECT_EQ(Conta(h, QString("SELECT CStato FROM ProjectsDisp WHERE CProject=%1 AND CDisp=%2").arg(s.cProject).arg(s.cDisp)),
            19);
  EXPECT_EQ(CDate(h.Scalar(Sql(QString("SELECT DtEnd FROM ProjectsDisp WHERE CProject=%1 AND CDisp=%2")
                                   .arg(s.cProject)
                                   .arg(s.cDisp))))
                .date(),
            QDate::currentDate());

  // Invoiced, the notes leave the DDT check.
  bool elencata = true;
  Quando([&](QWidget* w) {
    auto* c = qobject_cast<frmCtrlDDTxFatt*>(w);
    ASSERT_TRUE(c);
    elencata = c->ListView1->IndexOfKey(chiave) >= 0;
    c->Bottone(1)->trigger();
  });
  h.w->findChild<QAction*>("actControlloDDT")->trigger();
  EXPECT_FALSE(elencata);
}

// An invoice of many notes: every note tied to it, and its subject cut to what
// the column holds.
TEST(HostDocumenti, AnInvoiceOfManyNotesKeepsThemAllAndItsSubjectFits) {
  Host h;
  ASSERT_TRUE(h.opened);
  const int cliente = h.Scalar(Sql("SELECT Min(CAnag) FROM Anagrafica WHERE TAnag=1 AND Eliminato=0")).toInt();
  const int primo = h.Scalar(Sql("SELECT Max(NDoc) FROM Doc WHERE TipoDoc=5")).toInt() + 1000;
  for (int i = 0; i < 60; ++i)
    h.db->Execute(Sql(QString("INSERT INTO Doc (TipoDoc, NDoc, Data, TAnag, CAnag) VALUES (5, %1, '2026-01-15 00:00:00', "
                              "1, %2)")
                          .arg(primo + i)
                          .arg(cliente)));
  int nFattura = 0;
  Quando([&](QWidget* w) {
    auto* f = qobject_cast<FatturaDialog*>(w);
    ASSERT_TRUE(f);
    SetCBValue(f->cbCliente, cliente, 0);
    for (int i = 0; i < f->twNote->topLevelItemCount(); ++i) {
      QTreeWidgetItem* it = f->twNote->topLevelItem(i);
      const int n = it->data(0, Qt::UserRole).toInt();
      it->setCheckState(0, n >= primo ? Qt::Checked : Qt::Unchecked);
    }
    nFattura = f->CreaFattura();
    f->reject();
  });
  h.w->findChild<QAction*>("actFatturaDaDDT")->trigger();
  ASSERT_GT(nFattura, 0);
  EXPECT_EQ(Conta(h, QString("SELECT Count(*) FROM DocSchede WHERE TipoDoc=9 AND NDoc=%1").arg(nFattura)), 60);
  const QString oggetto = h.Scalar(Sql(QString("SELECT Oggetto FROM Doc WHERE TipoDoc=9 AND NDoc=%1").arg(nFattura))).toString();
  EXPECT_EQ(oggetto.size(), 255);
  EXPECT_TRUE(oggetto.startsWith("Fattura dei DDT n. "));
}
