#include "HostFattura.h"

#include <QComboBox>
#include <QDateEdit>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QSet>
#include <QTreeWidget>
#include <QVBoxLayout>

#include "HostDocumenti.h"
#include "Messages.h"
#include "ModDoc.h"
#include "Procedure.h"
#include "ProcedureUi.h"
#include "Schema.h"

using namespace prestkt;

namespace vorn {

namespace {
QString Importo(double v) { return Format(v, QStringLiteral("#,##0.00")); }
}  // namespace

FatturaDialog::FatturaDialog(Database& db, QWidget* parent) : QDialog(parent), db_(db) {
  setObjectName(QStringLiteral("FatturaDialog"));
  setWindowTitle(QStringLiteral("Fattura da DDT"));
  cbCliente = Nome(new QComboBox(this), QStringLiteral("cbCliente"));
  cbCliente->setMinimumWidth(320);
  dtData = Nome(new QDateEdit(QDate::currentDate(), this), QStringLiteral("dtData"));
  dtData->setDisplayFormat(QStringLiteral("dd/MM/yyyy"));
  dtData->setCalendarPopup(true);
  twNote = Nome(new QTreeWidget(this), QStringLiteral("twNote"));
  twNote->setRootIsDecorated(false);
  twNote->setHeaderLabels({QStringLiteral("DDT"), QStringLiteral("Data"), QStringLiteral("Riferimento"),
                           QStringLiteral("Imponibile"), QStringLiteral("Totale")});
  for (int c = 0; c < 5; ++c)
    twNote->header()->setSectionResizeMode(c, c == 2 ? QHeaderView::Stretch : QHeaderView::ResizeToContents);
  twNote->header()->setStretchLastSection(false);
  twNote->setMinimumSize(640, 260);
  lblTotali = Nome(new QLabel(this), QStringLiteral("lblTotali"));
  btnCrea = Nome(new QPushButton(QStringLiteral("Crea fattura"), this), QStringLiteral("btnCrea"));
  btnChiudi = Nome(new QPushButton(QStringLiteral("Chiudi"), this), QStringLiteral("btnChiudi"));
  btnCrea->setAutoDefault(false);
  btnChiudi->setAutoDefault(false);
  auto* testa = new QFormLayout;
  testa->addRow(QStringLiteral("Cliente"), cbCliente);
  testa->addRow(QStringLiteral("Data fattura"), dtData);
  auto* pulsanti = new QHBoxLayout;
  pulsanti->addStretch(1);
  pulsanti->addWidget(btnCrea);
  pulsanti->addWidget(btnChiudi);
  auto* v = new QVBoxLayout(this);
  v->addLayout(testa);
  v->addWidget(new QLabel(QStringLiteral("DDT non ancora fatturati:"), this));
  v->addWidget(twNote, 1);
  v->addWidget(lblTotali, 0, Qt::AlignRight);
  v->addLayout(pulsanti);
  CaricaCombo(cbCliente,
              Sql(QStringLiteral("SELECT CAnag, RagSoc1 FROM Anagrafica WHERE Eliminato=0 AND TAnag=1 ORDER BY RagSoc1")),
              0, 1, 0, QStringLiteral("{scegli}"));
  connect(cbCliente, &QComboBox::currentIndexChanged, this, &FatturaDialog::CaricaNote);
  connect(twNote, &QTreeWidget::itemChanged, this, &FatturaDialog::MostraTotali);
  connect(btnCrea, &QPushButton::clicked, this, [this] {
    if (CreaFattura() > 0) CaricaNote();
  });
  connect(btnChiudi, &QPushButton::clicked, this, &QDialog::reject);
  CaricaNote();
}

void FatturaDialog::CaricaNote() {
  const QSignalBlocker blocca(twNote);
  twNote->clear();
  const int cliente = GetCBValue(cbCliente);
  if (cliente > 0) {
    try {
      const auto note = db_.Select(Sql(
          QStringLiteral("SELECT Doc.NDoc, Doc.Data, Doc.Riferimento, Doc.ImpDoc, Doc.TotDoc FROM Doc LEFT JOIN "
                         "DocSchede ON DocSchede.TipoDocAss=Doc.TipoDoc AND DocSchede.NDocAss=Doc.NDoc WHERE "
                         "DocSchede.TipoDoc Is Null AND Doc.TipoDoc=5 AND Doc.TAnag=1 AND Doc.CAnag=") +
          N(cliente) + QStringLiteral(" ORDER BY Doc.Data, Doc.NDoc")));
      for (const Row& r : note.rows) {
        auto* it = new QTreeWidgetItem(twNote, {Format(r[0].toInt(), QStringLiteral("0000-00000")),
                                                Format(CDate(r[1]), QStringLiteral("dd/mm/yyyy")), NullToStr(r[2]),
                                                Importo(r[3].toDouble()), Importo(r[4].toDouble())});
        it->setData(0, Qt::UserRole, r[0].toInt());
        it->setFlags(it->flags() | Qt::ItemIsUserCheckable);
        it->setCheckState(0, Qt::Checked);
        for (int c : {3, 4}) it->setTextAlignment(c, Qt::AlignRight | Qt::AlignVCenter);
      }
    } catch (const VbError& e) {
      MessageBoxVorn(QStringLiteral("Impossibile leggere i DDT:\n") + e.Description(), vbCritical, windowTitle());
    }
  }
  MostraTotali();
}

namespace {

// The notes checked, in the list's order.
QList<int> Spuntate(QTreeWidget* tw) {
  QList<int> n;
  for (int i = 0; i < tw->topLevelItemCount(); ++i)
    if (tw->topLevelItem(i)->checkState(0) == Qt::Checked) n << tw->topLevelItem(i)->data(0, Qt::UserRole).toInt();
  return n;
}

QString Elenco(const QList<int>& numeri) {
  QStringList t;
  for (int n : numeri) t << N(n);
  return t.join(QStringLiteral(", "));
}

}  // namespace

void FatturaDialog::MostraTotali() {
  double imponibile = 0, totale = 0;
  for (int i = 0; i < twNote->topLevelItemCount(); ++i) {
    const QTreeWidgetItem* it = twNote->topLevelItem(i);
    if (it->checkState(0) != Qt::Checked) continue;
    imponibile += CDbl(it->text(3));
    totale += CDbl(it->text(4));
  }
  lblTotali->setText(QStringLiteral("DDT scelti: %1     Imponibile: %2     Totale: %3")
                         .arg(Spuntate(twNote).size())
                         .arg(Importo(imponibile), Importo(totale)));
  btnCrea->setEnabled(!Spuntate(twNote).isEmpty());
}

int FatturaDialog::CreaFattura() {
  const int cliente = GetCBValue(cbCliente);
  if (cliente <= 0) {
    MessageBoxVorn(QStringLiteral("Scegli il cliente della fattura."), vbExclamation, windowTitle());
    cbCliente->setFocus();
    return 0;
  }
  const QList<int> note = Spuntate(twNote);
  if (note.isEmpty()) {
    MessageBoxVorn(QStringLiteral("Seleziona almeno un DDT da fatturare."), vbExclamation, windowTitle());
    return 0;
  }
  const QDateTime data(dtData->date(), QTime(0, 0));
  int nFattura = 0;
  try {
    db_.BeginTrans();
    try {
      const auto ultimo = db_.Select(Sql(QStringLiteral("SELECT Max(NDoc) FROM Doc WHERE TipoDoc=9")));
      nFattura = (ultimo.rows.empty() ? 0 : ultimo.rows[0][0].toInt()) + 1;
      db_.Execute(Sql(QStringLiteral("INSERT INTO Doc (TipoDoc, NDoc, Data, TAnag, CAnag, Oggetto) VALUES (9, ") +
                      N(nFattura) + QStringLiteral(", ")) +
                  Sql::Param(data) + Sql(QStringLiteral(", 1, ") + N(cliente) + QStringLiteral(", ")) +
                  Sql::Param((QStringLiteral("Fattura dei DDT n. ") + Elenco(note))
                                 .left(TestoMassimo(QStringLiteral("Doc"), QStringLiteral("Oggetto")))) + Sql(QStringLiteral(")")));
      // The notes' lines become the invoice's, each pointing to the line it came from.
      const auto righe = db_.Select(
          Sql(QStringLiteral("SELECT NDoc, Riga, CodTesto, DArt, NotaArt, Qta, CCaus, PzVend, PzVendP, Manifattura, "
                             "ValRic, CIVA FROM DocDett WHERE TipoDoc=5 AND Scheda=0 AND NDoc IN (") +
              Elenco(note) + QStringLiteral(")")));
      std::vector<Row> ordinate = righe.rows;
      std::stable_sort(ordinate.begin(), ordinate.end(), [&](const Row& a, const Row& b) {
        const int ia = note.indexOf(a[0].toInt()), ib = note.indexOf(b[0].toInt());
        return ia != ib ? ia < ib : a[1].toInt() < b[1].toInt();
      });
      std::vector<RigaTotali> perTotali;
      int riga = 0;
      for (const Row& r : ordinate) {
        db_.Execute(Sql(QStringLiteral("INSERT INTO DocDett (TipoDoc, NDoc, Scheda, Riga, CodTesto, DArt, NotaArt, Qta, "
                                       "CCaus, PzVend, PzVendP, Manifattura, ValRic, CIVA, TipoDocRif, NDocRif, "
                                       "RigaRif) VALUES (9, ") +
                        N(nFattura) + QStringLiteral(", 0, ") + N(++riga) + QStringLiteral(", ")) +
                    Sql::Param(r[2]) + Sql(QStringLiteral(", ")) + Sql::Param(r[3]) + Sql(QStringLiteral(", ")) +
                    Sql::Param(r[4]) + Sql(QStringLiteral(", ")) + Sql::Param(r[5]) + Sql(QStringLiteral(", ")) +
                    Sql::Param(r[6]) + Sql(QStringLiteral(", ")) + Sql::Param(r[7]) + Sql(QStringLiteral(", ")) +
                    Sql::Param(r[8]) + Sql(QStringLiteral(", ")) + Sql::Param(r[9]) + Sql(QStringLiteral(", ")) +
                    Sql::Param(r[10]) + Sql(QStringLiteral(", ")) + Sql::Param(r[11]) +
                    Sql(QStringLiteral(", 5, ") + N(r[0].toInt()) + QStringLiteral(", ") + N(r[1].toInt()) +
                        QStringLiteral(")")));
        perTotali.push_back({r[5].toDouble(), r[7].toDouble(), r[10].toDouble(), r[11].toInt()});
      }
      const Totali t = CalcolaTotali(perTotali, 0, 0, AliquoteIva(db_));
      db_.Execute(Sql(QStringLiteral("UPDATE Doc SET ImpDoc=")) + Sql::Param(t.imponibile) +
                  Sql(QStringLiteral(", IVADoc=")) + Sql::Param(t.iva) + Sql(QStringLiteral(", TotDoc=")) +
                  Sql::Param(t.totale()) + Sql(QStringLiteral(" WHERE TipoDoc=9 AND NDoc=") + N(nFattura)));
      for (int n : note)
        db_.Execute(Sql(QStringLiteral("INSERT INTO DocSchede (TipoDoc, NDoc, TipoDocAss, NDocAss) VALUES (9, ") +
                        N(nFattura) + QStringLiteral(", 5, ") + N(n) + QStringLiteral(")")));
      // The dispositions the notes delivered are invoiced, on the invoice's day.
      const auto disposizioni = db_.Select(Sql(
          QStringLiteral("SELECT CProject, CDisp FROM ProjectsDocDett WHERE TipoDoc=5 AND NDoc IN (") + Elenco(note) +
          QStringLiteral(") GROUP BY CProject, CDisp")));
      for (const Row& d : disposizioni.rows)
        db_.Execute(Sql(QStringLiteral("UPDATE ProjectsDisp SET CStato=19, DtEnd=")) + Sql::Param(data) +
                    Sql(QStringLiteral(" WHERE CProject=") + N(d[0].toInt()) + QStringLiteral(" AND CDisp=") +
                        N(d[1].toInt())));
      db_.CommitTrans();
    } catch (...) {
      db_.Rollback();
      throw;
    }
  } catch (const VbError& e) {
    MessageBoxVorn(QStringLiteral("Impossibile creare la fattura:\n") + e.Description(), vbCritical, windowTitle());
    return 0;
  }
  MessageBoxVorn(QStringLiteral("Creata la fattura n. %1.").arg(nFattura), vbInformation, windowTitle());
  return nFattura;
}

}  // namespace vorn
