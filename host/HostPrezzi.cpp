#include "HostPrezzi.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>
#include <cmath>

#include "Messages.h"
#include "OCPrestKT.h"
#include "Vb.h"
#include "VbError.h"

using namespace prestkt;

namespace vorn {

namespace {

constexpr int kValore = Qt::UserRole;  // CDisp on the first column, the figure on the others

const QString kImporto = QStringLiteral("#,##0.00");

QString Modello(int cProject) { return Format(cProject, QStringLiteral("0000-00000")); }

QString Quantita(double q) {
  return Format(q, q == std::floor(q) ? QStringLiteral("#,##0") : QStringLiteral("#,##0.00"));
}

QPushButton* Pulsante(const QString& testo, const char* nome, QWidget* parent) {
  auto* b = new QPushButton(testo, parent);
  b->setObjectName(QString::fromLatin1(nome));
  b->setAutoDefault(false);
  return b;
}

}  // namespace

PrezziDisposizioniDialog::PrezziDisposizioniDialog(Database& db, OCPrestKT* ctl, QWidget* parent)
    : QDialog(parent), db_(db), ctl_(ctl) {
  setObjectName(QStringLiteral("dlgPrezziDisposizioni"));
  setWindowTitle(QStringLiteral("Prezzo delle disposizioni"));
  setWindowModality(Qt::ApplicationModal);

  lblModello_ = new QLabel(this);
  lblModello_->setObjectName(QStringLiteral("lblModello"));
  lblModello_->setWordWrap(true);
  lista_ = new QTreeWidget(this);
  lista_->setObjectName(QStringLiteral("lvDisposizioni"));
  lista_->setHeaderLabels({QStringLiteral("Disp."), QStringLiteral("Descrizione"), QStringLiteral("Tipologia"),
                           QStringLiteral("Quantità"), QStringLiteral("Prezzo vendita")});
  lista_->setRootIsDecorated(false);
  lista_->setUniformRowHeights(true);
  lista_->setAlternatingRowColors(true);
  lista_->setSelectionMode(QAbstractItemView::SingleSelection);
  lista_->header()->setSectionsMovable(false);
  lista_->header()->setStretchLastSection(false);
  lista_->header()->setSectionResizeMode(1, QHeaderView::Stretch);
  lista_->setColumnWidth(0, 60);
  lista_->setColumnWidth(2, 180);
  lista_->setColumnWidth(3, 90);
  lista_->setColumnWidth(4, 110);

  lblPrezzoProposto_ = new QLabel(this);
  lblPrezzoProposto_->setObjectName(QStringLiteral("lblPrezzoProposto"));
  lblPrezzoConfermato_ = new QLabel(this);
  lblPrezzoConfermato_->setObjectName(QStringLiteral("lblPrezzoConfermato"));
  for (QLabel* l : {lblPrezzoProposto_, lblPrezzoConfermato_}) {
    l->setTextInteractionFlags(Qt::TextSelectableByMouse);
    QFont f = l->font();
    f.setBold(true);
    l->setFont(f);
  }
  btnPrezzoProposto_ = Pulsante(QStringLiteral("&Prezzo proposto"), "btnPrezzoProposto", this);
  btnPrezzoProposto_->setToolTip(QStringLiteral("Il prezzo che il lavoro svolto sulla disposizione propone, senza aprire il calcolo"));
  btnCalcoloTariffa_ = Pulsante(QStringLiteral("&Calcolo tariffa..."), "btnCalcoloTariffa", this);
  btnCalcoloTariffa_->setToolTip(QStringLiteral("Apre il calcolo del prezzo di vendita della disposizione"));
  btnChiudi_ = Pulsante(QStringLiteral("C&hiudi"), "btnChiudi", this);

  auto* prezzi = new QVBoxLayout;
  prezzi->addWidget(lblPrezzoProposto_);
  prezzi->addWidget(lblPrezzoConfermato_);
  auto* sotto = new QHBoxLayout;
  sotto->addWidget(btnPrezzoProposto_);
  sotto->addWidget(btnCalcoloTariffa_);
  sotto->addStretch(1);
  sotto->addWidget(btnChiudi_);
  auto* l = new QVBoxLayout(this);
  l->addWidget(lblModello_);
  l->addWidget(lista_, 1);
  l->addLayout(prezzi);
  l->addLayout(sotto);
  resize(760, 420);

  // The figures shown belong to one disposition: another one starts clean.
  connect(lista_, &QTreeWidget::currentItemChanged, this, [this] {
    lblPrezzoProposto_->clear();
    lblPrezzoConfermato_->clear();
    AggiornaPulsanti();
  });
  connect(lista_, &QTreeWidget::itemSelectionChanged, this, [this] { AggiornaPulsanti(); });
  connect(lista_, &QTreeWidget::itemActivated, this, [this] { CalcoloTariffa(); });
  connect(btnPrezzoProposto_, &QPushButton::clicked, this, &PrezziDisposizioniDialog::PrezzoProposto);
  connect(btnCalcoloTariffa_, &QPushButton::clicked, this, &PrezziDisposizioniDialog::CalcoloTariffa);
  connect(btnChiudi_, &QPushButton::clicked, this, &QDialog::reject);
  AggiornaPulsanti();
}

bool PrezziDisposizioniDialog::Apri(int cProject) {
  try {
    const auto r = db_.Select(Sql("SELECT p.DProject, a.RagSoc1 FROM Projects p LEFT JOIN Anagrafica a ON "
                                  "p.TAnag=a.TAnag AND p.CAnag=a.CAnag WHERE p.CProject=") +
                              Sql::Param(cProject));
    if (r.rows.empty()) {
      MessageBoxVorn(QStringLiteral("Il modello %1 non esiste più.").arg(Modello(cProject)), vbExclamation);
      return false;
    }
    const QString descr = NullToStr(r.rows.front()[0]);
    const QString cliente = NullToStr(r.rows.front()[1]);
    lblModello_->setText(QStringLiteral("Modello %1 - %2%3")
                             .arg(Modello(cProject), descr,
                                  cliente.isEmpty() ? QString() : QStringLiteral(" (%1)").arg(cliente)));
  } catch (const VbError& e) {
    MessageBoxVorn(QStringLiteral("Impossibile leggere il modello.\n\n") + e.Description(), vbCritical);
    return false;
  }
  cProject_ = cProject;
  Carica();
  if (!isVisible()) show();
  raise();
  activateWindow();
  lista_->setFocus();
  return true;
}

void PrezziDisposizioniDialog::Carica() {
  lista_->clear();
  lblPrezzoProposto_->clear();
  lblPrezzoConfermato_->clear();
  try {
    const auto r = db_.Select(Sql("SELECT d.CDisp, d.DDisp, t.DPrjDispTipo, d.Qta, d.PzVend FROM ProjectsDisp d "
                                  "LEFT JOIN ProjectsDispTipo t ON d.CPrjDispTipo=t.CPrjDispTipo WHERE d.CProject=") +
                              Sql::Param(cProject_) + Sql(" ORDER BY d.CDisp"));
    for (const Row& row : r.rows) {
      auto* it = new QTreeWidgetItem(lista_);
      const int cDisp = row[0].toInt();
      const double qta = IsNull(row[3]) ? 0.0 : row[3].toDouble();
      const double pzVend = IsNull(row[4]) ? 0.0 : row[4].toDouble();
      it->setText(0, Format(cDisp, QStringLiteral("000")));
      it->setData(0, kValore, cDisp);
      it->setText(1, NullToStr(row[1]));
      it->setText(2, NullToStr(row[2]));
      it->setText(3, Quantita(qta));
      it->setData(3, kValore, qta);
      it->setText(4, Format(pzVend, kImporto));
      it->setData(4, kValore, pzVend);
      for (int k : {3, 4}) it->setTextAlignment(k, Qt::AlignRight | Qt::AlignVCenter);
    }
  } catch (const VbError& e) {
    MessageBoxVorn(QStringLiteral("Impossibile leggere le disposizioni del modello.\n\n") + e.Description(),
                   vbCritical);
  }
  if (lista_->topLevelItemCount() > 0) lista_->setCurrentItem(lista_->topLevelItem(0));
  else lblPrezzoProposto_->setText(QStringLiteral("Il modello non ha disposizioni."));
  AggiornaPulsanti();
}

int PrezziDisposizioniDialog::CDispSelezionata() const {
  const QTreeWidgetItem* it = lista_->currentItem();
  return it && it->isSelected() ? it->data(0, kValore).toInt() : 0;
}

void PrezziDisposizioniDialog::AggiornaPulsanti() {
  const bool scelta = CDispSelezionata() != 0;
  btnPrezzoProposto_->setEnabled(scelta);
  btnCalcoloTariffa_->setEnabled(scelta);
}

void PrezziDisposizioniDialog::PrezzoProposto() {
  const int cDisp = CDispSelezionata();
  if (cDisp == 0) {
    MessageBoxVorn(QStringLiteral("Seleziona una disposizione!"), vbExclamation);
    return;
  }
  double prezzo = 0;
  try {
    prezzo = ctl_->CalcDatiDisp(cProject_, cDisp);
  } catch (const VbError& e) {
    MessageBoxVorn(QStringLiteral("Impossibile calcolare il prezzo proposto.\n\n") + e.Description(), vbCritical);
    return;
  }
  // Nothing to value (no time and no external work at a price) proposes nothing.
  lblPrezzoProposto_->setText(QStringLiteral("Prezzo proposto: %1%2")
                                  .arg(Format(prezzo, kImporto),
                                       prezzo == 0 ? QStringLiteral(" (nessuna lavorazione da valorizzare)")
                                                   : QString()));
}

void PrezziDisposizioniDialog::CalcoloTariffa() {
  const QTreeWidgetItem* it = lista_->currentItem();
  const int cDisp = CDispSelezionata();
  if (cDisp == 0 || InAttesa()) {
    if (cDisp == 0) MessageBoxVorn(QStringLiteral("Seleziona una disposizione!"), vbExclamation);
    return;
  }
  const double qta = it->data(3, kValore).toDouble();
  const double pzVend = it->data(4, kValore).toDouble();
  // The component answers, if the user confirms, before EditDisp returns.
  cDispInCalcolo_ = cDisp;
  struct Fine {
    int& v;
    ~Fine() { v = 0; }
  } fine{cDispInCalcolo_};
  try {
    ctl_->EditDisp(cProject_, cDisp, qta, pzVend);
  } catch (const VbError& e) {
    MessageBoxVorn(QStringLiteral("Impossibile aprire il calcolo della tariffa.\n\n") + e.Description(), vbCritical);
  }
}

QString PrezziDisposizioniDialog::Riferimento() const {
  return Modello(cProject_) + QLatin1Char('/') + Format(cDispInCalcolo_, QStringLiteral("000"));
}

void PrezziDisposizioniDialog::Ricevi(double prezzo) {
  lblPrezzoConfermato_->setText(QStringLiteral("Prezzo confermato: %1").arg(Format(prezzo, kImporto)));
}

}  // namespace vorn
