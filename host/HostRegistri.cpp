#include "HostRegistri.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDateEdit>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QLocale>
#include <QPushButton>
#include <QRegularExpression>
#include <QSet>
#include <QTreeWidget>
#include <QVBoxLayout>

#include "Messages.h"
#include "NumericSpin.h"
#include "Vb.h"
#include "VbError.h"

using namespace prestkt;

namespace vorn {

namespace {

// The party type of the operators: the component reads them from it too.
constexpr int kTAnagOperatori = 10;
// The group of TabGen that holds the service kinds.
constexpr int kTabGenPrestazioni = 12;

constexpr int kCodice = Qt::UserRole;      // the row's code, on the first column
constexpr int kOrdine = Qt::UserRole + 1;  // a column's numeric sort key
// A tariff's key, on the first column.
constexpr int kTipo = Qt::UserRole + 2;
constexpr int kDisp = Qt::UserRole + 3;
constexpr int kCliente = Qt::UserRole + 4;
// The highest code an Integer column holds.
constexpr int kCodiceMassimo = 32767;

const QLocale& Italiano() {
  static const QLocale l(QLocale::Italian, QLocale::Italy);
  return l;
}

// A row that sorts numeric columns by their value rather than their text.
class Riga : public QTreeWidgetItem {
 public:
  using QTreeWidgetItem::QTreeWidgetItem;
  bool operator<(const QTreeWidgetItem& o) const override {
    const int c = treeWidget() ? treeWidget()->sortColumn() : 0;
    const QVariant a = data(c, kOrdine);
    const QVariant b = o.data(c, kOrdine);
    if (a.isValid() && b.isValid()) return a.toDouble() < b.toDouble();
    return text(c).localeAwareCompare(o.text(c)) < 0;
  }
};

QString Testo(const QVariant& v) { return IsNull(v) ? QString() : v.toString().trimmed(); }
bool Vero(const QVariant& v) { return !IsNull(v) && v.toDouble() != 0; }
// An empty field is stored as Null.
QVariant TestoONull(const QLineEdit* e) {
  const QString s = e->text().trimmed();
  return s.isEmpty() ? QVariant() : QVariant(s);
}

void Avvisa(const QString& testo) { MessageBoxVorn(testo, vbExclamation); }
void ErroreDb(const QString& cosa, const VbError& e) {
  MessageBoxVorn(cosa + QStringLiteral("\n\n") + e.Description(), vbCritical);
}
bool Conferma(const QString& domanda) {
  return MessageBoxVorn(domanda, vbYesNo | vbQuestion | vbDefaultButton2) == vbYes;
}

// The next code of a table: one more than the highest.
int Prossimo(Database& db, const Sql& sql) {
  const Database::Result r = db.Select(sql);
  return r.rows.empty() || IsNull(r.rows.front().front()) ? 1 : r.rows.front().front().toInt() + 1;
}

template <class F>
void InTransazione(Database& db, F&& f) {
  db.BeginTrans();
  try {
    f();
    db.CommitTrans();
  } catch (...) {
    db.Rollback();
    throw;
  }
}

QPushButton* Pulsante(const QString& testo, const char* nome, QWidget* parent) {
  auto* b = new QPushButton(testo, parent);
  b->setObjectName(QString::fromLatin1(nome));
  // Enter in a field must not press a button of the register by itself.
  b->setAutoDefault(false);
  return b;
}

QLineEdit* Campo(const char* nome, int lunghezza, QWidget* parent) {
  auto* e = new QLineEdit(parent);
  e->setObjectName(QString::fromLatin1(nome));
  if (lunghezza > 0) e->setMaxLength(lunghezza);
  return e;
}

QString NomeTipoFatt(int t) {
  return t >= 0 && t < static_cast<int>(std::size(kTipiFatt)) ? QString::fromUtf8(kTipiFatt[t]) : QString::number(t);
}

}  // namespace

QString NomeStato(int codice) {
  for (const auto& s : kStati)
    if (s.codice == codice) return QString::fromUtf8(s.nome);
  return QString::number(codice);
}

// ================================================================== period

PeriodoDialog::PeriodoDialog(QWidget* parent) : QDialog(parent) {
  setObjectName(QStringLiteral("dlgPeriodo"));
  setWindowTitle(QStringLiteral("Periodo e stato"));
  setWindowModality(Qt::ApplicationModal);

  auto data = [this](const char* nome) {
    auto* d = new QDateEdit(this);
    d->setObjectName(QString::fromLatin1(nome));
    d->setLocale(Italiano());
    d->setCalendarPopup(true);
    d->setDisplayFormat(QStringLiteral("dd/MM/yyyy"));
    d->setMinimumDate(QDate(1980, 1, 1));
    d->setMinimumWidth(130);
    return d;
  };
  dtDal_ = data("dtDal");
  dtAl_ = data("dtAl");
  cbStato_ = new QComboBox(this);
  cbStato_->setObjectName(QStringLiteral("cbStato"));
  for (const auto& s : kStati) cbStato_->addItem(QString::fromUtf8(s.nome), s.codice);

  auto* spiega = new QLabel(QStringLiteral("Modelli iniziati nel periodo, nello stato scelto."), this);
  spiega->setWordWrap(true);
  auto* form = new QFormLayout;
  form->addRow(QStringLiteral("&Dal:"), dtDal_);
  form->addRow(QStringLiteral("&Al:"), dtAl_);
  form->addRow(QStringLiteral("&Stato:"), cbStato_);

  auto* bottoni = new QDialogButtonBox(this);
  auto* ok = bottoni->addButton(QStringLiteral("OK"), QDialogButtonBox::AcceptRole);
  ok->setObjectName(QStringLiteral("btnOK"));
  ok->setDefault(true);
  auto* annulla = bottoni->addButton(QStringLiteral("Annulla"), QDialogButtonBox::RejectRole);
  annulla->setObjectName(QStringLiteral("btnAnnulla"));
  connect(ok, &QPushButton::clicked, this, &PeriodoDialog::Conferma);
  connect(annulla, &QPushButton::clicked, this, &QDialog::reject);

  auto* l = new QVBoxLayout(this);
  l->addWidget(spiega);
  l->addLayout(form);
  l->addSpacing(6);
  l->addWidget(bottoni);
  setMinimumWidth(380);
}

void PeriodoDialog::Apri(const QDate& dal, const QDate& al, int stato,
                         std::function<void(const QDate&, const QDate&, int)> applica) {
  applica_ = std::move(applica);
  const QDate oggi = QDate::currentDate();
  dtDal_->setDate(dal.isValid() ? dal : QDate(oggi.year(), 1, 1));
  dtAl_->setDate(al.isValid() ? al : QDate(oggi.year(), 12, 31));
  const int i = cbStato_->findData(stato);
  cbStato_->setCurrentIndex(i >= 0 ? i : 0);
  show();
  raise();
  activateWindow();
  dtDal_->setFocus();
}

void PeriodoDialog::Conferma() {
  if (dtDal_->date() > dtAl_->date()) {
    Avvisa(QStringLiteral("La data iniziale non può essere successiva a quella finale!"));
    dtDal_->setFocus();
    return;
  }
  const auto applica = std::move(applica_);
  applica_ = {};
  const QDate dal = dtDal_->date();
  const QDate al = dtAl_->date();
  const int stato = cbStato_->currentData().toInt();
  accept();
  if (applica) applica(dal, al, stato);
}

// ================================================================== registers

RegistroDialog::RegistroDialog(Database& db, const QString& nome, const QString& titolo, QWidget* parent)
    : QDialog(parent), db_(db) {
  setObjectName(nome);
  setWindowTitle(titolo);
  setWindowModality(Qt::ApplicationModal);
  lblScelta_ = new QLabel(this);
  lblScelta_->setObjectName(QStringLiteral("lblScelta"));
  lblScelta_->setText(QStringLiteral("Seleziona una riga e premi <b>Scegli</b> (o fai doppio clic sulla riga)."));
  lblScelta_->setVisible(false);
  btnScegli_ = Pulsante(QStringLiteral("&Scegli"), "btnScegli", this);
  btnScegli_->setVisible(false);
  btnChiudi_ = Pulsante(QStringLiteral("&Chiudi"), "btnChiudi", this);
  connect(btnScegli_, &QPushButton::clicked, this, [this] { Scegli(); });
  connect(btnChiudi_, &QPushButton::clicked, this, &QDialog::reject);
}

QTreeWidget* RegistroDialog::NuovaLista(const QStringList& colonne) {
  lista_ = new QTreeWidget(this);
  lista_->setObjectName(QStringLiteral("lista"));
  lista_->setColumnCount(static_cast<int>(colonne.size()));
  lista_->setHeaderLabels(colonne);
  lista_->setRootIsDecorated(false);
  lista_->setUniformRowHeights(true);
  lista_->setAlternatingRowColors(true);
  lista_->setSelectionMode(QAbstractItemView::SingleSelection);
  lista_->setSortingEnabled(true);
  lista_->sortByColumn(1, Qt::AscendingOrder);
  lista_->header()->setSectionsMovable(false);
  lista_->header()->setStretchLastSection(true);
  return lista_;
}

void RegistroDialog::Mostra(bool scelta) {
  inScelta_ = scelta;
  btnScegli_->setVisible(scelta);
  lblScelta_->setVisible(scelta);
  if (!isVisible()) show();
  raise();
  activateWindow();
  lista_->setFocus();
}

bool RegistroDialog::Seleziona(const std::function<bool(const QTreeWidgetItem*)>& quale) {
  for (int i = 0; i < lista_->topLevelItemCount(); ++i) {
    QTreeWidgetItem* it = lista_->topLevelItem(i);
    if (!it->isHidden() && quale(it)) {
      lista_->setCurrentItem(it);
      lista_->scrollToItem(it);
      return true;
    }
  }
  return false;
}

bool RegistroDialog::Seleziona(int codice) {
  return Seleziona([codice](const QTreeWidgetItem* it) { return it->data(0, kCodice).toInt() == codice; });
}

int RegistroDialog::CodiceSelezionato() const {
  const QTreeWidgetItem* it = lista_->currentItem();
  if (!it || it->isHidden() || !it->isSelected()) return 0;
  return it->data(0, kCodice).toInt();
}

void RegistroDialog::Consegna(const std::function<void()>& risposta) {
  inScelta_ = false;
  accept();
  risposta();
}

// ================================================================== parties

AnagraficheDialog::AnagraficheDialog(Database& db, QWidget* parent)
    : RegistroDialog(db, QStringLiteral("dlgAnagrafiche"), QStringLiteral("Anagrafiche"), parent) {
  cbTipo_ = new QComboBox(this);
  cbTipo_->setObjectName(QStringLiteral("cbTipo"));
  cbTipo_->setMinimumWidth(160);
  edCerca_ = Campo("edCerca", 0, this);
  edCerca_->setPlaceholderText(QStringLiteral("ragione sociale, città o partita IVA"));
  edCerca_->setClearButtonEnabled(true);
  chkEliminate_ = new QCheckBox(QStringLiteral("Mostra &eliminate"), this);
  chkEliminate_->setObjectName(QStringLiteral("chkEliminate"));

  NuovaLista({QStringLiteral("Codice"), QStringLiteral("Ragione sociale"), QStringLiteral("Città"),
              QStringLiteral("Prov."), QStringLiteral("Partita IVA"), QStringLiteral("Costo orario")});
  lista_->setObjectName(QStringLiteral("lvAnagrafiche"));
  // The name takes the room left; the hourly cost, shown for the operators only, stays in sight.
  lista_->header()->setStretchLastSection(false);
  lista_->header()->setSectionResizeMode(1, QHeaderView::Stretch);
  lista_->setColumnWidth(0, 70);
  lista_->setColumnWidth(2, 170);
  lista_->setColumnWidth(3, 50);
  lista_->setColumnWidth(4, 130);
  lista_->setColumnWidth(5, 100);

  btnNuova_ = Pulsante(QStringLiteral("&Nuova..."), "btnNuova", this);
  btnModifica_ = Pulsante(QStringLiteral("&Modifica..."), "btnModifica", this);
  btnElimina_ = Pulsante(QStringLiteral("E&limina"), "btnElimina", this);

  auto* lTipo = new QLabel(QStringLiteral("&Tipo:"), this);
  lTipo->setBuddy(cbTipo_);
  auto* lCerca = new QLabel(QStringLiteral("C&erca:"), this);
  lCerca->setBuddy(edCerca_);
  auto* sopra = new QHBoxLayout;
  sopra->addWidget(lTipo);
  sopra->addWidget(cbTipo_);
  sopra->addSpacing(12);
  sopra->addWidget(lCerca);
  sopra->addWidget(edCerca_, 1);
  sopra->addSpacing(12);
  sopra->addWidget(chkEliminate_);
  auto* sotto = new QHBoxLayout;
  sotto->addWidget(btnNuova_);
  sotto->addWidget(btnModifica_);
  sotto->addWidget(btnElimina_);
  sotto->addStretch(1);
  sotto->addWidget(btnScegli_);
  sotto->addWidget(btnChiudi_);
  auto* l = new QVBoxLayout(this);
  l->addLayout(sopra);
  l->addWidget(lblScelta_);
  l->addWidget(lista_, 1);
  l->addLayout(sotto);
  resize(820, 500);

  connect(cbTipo_, &QComboBox::currentIndexChanged, this, [this] { Ricarica(); });
  connect(chkEliminate_, &QCheckBox::toggled, this, [this] { Ricarica(); });
  connect(edCerca_, &QLineEdit::textChanged, this, [this] { Filtra(); });
  connect(lista_, &QTreeWidget::currentItemChanged, this, [this] { AggiornaPulsanti(); });
  connect(lista_, &QTreeWidget::itemActivated, this, [this] {
    if (InScelta()) Scegli();
    else Modifica();
  });
  connect(btnNuova_, &QPushButton::clicked, this, &AnagraficheDialog::Nuova);
  connect(btnModifica_, &QPushButton::clicked, this, &AnagraficheDialog::Modifica);
  connect(btnElimina_, &QPushButton::clicked, this, &AnagraficheDialog::EliminaORipristina);
  CaricaTipi();
}

void AnagraficheDialog::CaricaTipi() {
  const QSignalBlocker blocca(cbTipo_);
  cbTipo_->clear();
  try {
    const auto r = db_.Select(Sql("SELECT TAnag, Descrizione FROM AnagTipo ORDER BY TAnag"));
    for (const Row& row : r.rows) cbTipo_->addItem(Testo(row[1]), row[0].toInt());
  } catch (const VbError& e) {
    ErroreDb(QStringLiteral("Impossibile leggere i tipi di anagrafica."), e);
  }
  cbTipo_->setCurrentIndex(cbTipo_->count() > 0 ? 0 : -1);
}

int AnagraficheDialog::TipoCorrente() const { return cbTipo_->currentIndex() >= 0 ? cbTipo_->currentData().toInt() : 0; }

void AnagraficheDialog::Apri(int tAnag, int cAnag, Scelta scelta) {
  scelta_ = std::move(scelta);
  if (tAnag != 0) {
    const int i = cbTipo_->findData(tAnag);
    if (i >= 0 && i != cbTipo_->currentIndex()) cbTipo_->setCurrentIndex(i);  // reloads
    else Ricarica();
  } else {
    Ricarica();
  }
  if (cAnag != 0 && !Seleziona(cAnag) && !edCerca_->text().isEmpty()) {
    // The party asked for is hidden by the search: the search gives way.
    edCerca_->clear();
    Seleziona(cAnag);
  }
  Mostra(static_cast<bool>(scelta_));
}

void AnagraficheDialog::Ricarica() {
  const int tAnag = TipoCorrente();
  const int prima = tAnag == tipoInLista_ ? CodiceSelezionato() : 0;
  tipoInLista_ = tAnag;
  lista_->setSortingEnabled(false);
  lista_->clear();
  lista_->setColumnHidden(5, tAnag != kTAnagOperatori);
  if (tAnag != 0) {
    try {
      Sql sql = Sql("SELECT CAnag, RagSoc1, Citta, Prov, PIva, CostoH, Eliminato FROM Anagrafica WHERE TAnag=") +
                Sql::Param(tAnag);
      if (!chkEliminate_->isChecked()) sql += Sql(" AND Eliminato=0");
      const auto r = db_.Select(sql + Sql(" ORDER BY RagSoc1"));
      const QBrush grigio = palette().brush(QPalette::Disabled, QPalette::Text);
      for (const Row& row : r.rows) {
        auto* it = new Riga(lista_);
        const int c = row[0].toInt();
        const bool eliminata = Vero(row[6]);
        it->setText(0, QString::number(c));
        it->setData(0, kCodice, c);
        it->setData(0, kOrdine, c);
        it->setTextAlignment(0, Qt::AlignRight | Qt::AlignVCenter);
        it->setText(1, Testo(row[1]) + (eliminata ? QStringLiteral("  (eliminata)") : QString()));
        it->setText(2, Testo(row[2]));
        it->setText(3, Testo(row[3]));
        it->setText(4, Testo(row[4]));
        const double costo = IsNull(row[5]) ? 0.0 : row[5].toDouble();
        it->setText(5, Italiano().toString(costo, 'f', 2));
        it->setData(5, kOrdine, costo);
        it->setTextAlignment(5, Qt::AlignRight | Qt::AlignVCenter);
        it->setData(1, Qt::UserRole, eliminata);
        if (eliminata)
          for (int k = 0; k < lista_->columnCount(); ++k) it->setForeground(k, grigio);
      }
    } catch (const VbError& e) {
      ErroreDb(QStringLiteral("Impossibile leggere le anagrafiche."), e);
    }
  }
  lista_->setSortingEnabled(true);
  Filtra();
  if (prima == 0 || !Seleziona(prima)) {
    lista_->setCurrentItem(nullptr);
    lista_->clearSelection();
  }
  AggiornaPulsanti();
}

void AnagraficheDialog::Filtra() {
  const QString cerca = edCerca_->text().trimmed();
  for (int i = 0; i < lista_->topLevelItemCount(); ++i) {
    QTreeWidgetItem* it = lista_->topLevelItem(i);
    const bool vede = cerca.isEmpty() || it->text(1).contains(cerca, Qt::CaseInsensitive) ||
                      it->text(2).contains(cerca, Qt::CaseInsensitive) ||
                      it->text(4).contains(cerca, Qt::CaseInsensitive);
    it->setHidden(!vede);
  }
  AggiornaPulsanti();
}

void AnagraficheDialog::AggiornaPulsanti() {
  const QTreeWidgetItem* it = lista_->currentItem();
  const bool c = it && !it->isHidden();
  btnModifica_->setEnabled(c);
  btnElimina_->setEnabled(c);
  btnNuova_->setEnabled(TipoCorrente() != 0);
  btnElimina_->setText(c && it->data(1, Qt::UserRole).toBool() ? QStringLiteral("&Ripristina")
                                                               : QStringLiteral("E&limina"));
}

void AnagraficheDialog::Nuova() {
  if (TipoCorrente() == 0) return;
  auto* f = new AnagraficaForm(db_, TipoCorrente(), 0, this);
  f->setAttribute(Qt::WA_DeleteOnClose);
  connect(f, &AnagraficaForm::Salvata, this, [this](int, int c) {
    Ricarica();
    Seleziona(c);
  });
  f->open();
}

void AnagraficheDialog::Modifica() {
  const int c = CodiceSelezionato();
  if (c == 0) {
    Avvisa(QStringLiteral("Seleziona un'anagrafica!"));
    return;
  }
  auto* f = new AnagraficaForm(db_, TipoCorrente(), c, this);
  f->setAttribute(Qt::WA_DeleteOnClose);
  connect(f, &AnagraficaForm::Salvata, this, [this](int, int codice) {
    Ricarica();
    Seleziona(codice);
  });
  f->open();
}

void AnagraficheDialog::EliminaORipristina() {
  const int c = CodiceSelezionato();
  if (c == 0) {
    Avvisa(QStringLiteral("Seleziona un'anagrafica!"));
    return;
  }
  const QTreeWidgetItem* it = lista_->currentItem();
  const bool eliminata = it->data(1, Qt::UserRole).toBool();
  const QString nome = it->text(1).remove(QStringLiteral("  (eliminata)"));
  if (!Conferma(eliminata ? QStringLiteral("Vuoi ripristinare l'anagrafica «%1»?").arg(nome)
                          : QStringLiteral("Vuoi eliminare l'anagrafica «%1»?\n\nI modelli e i documenti che la "
                                           "usano restano come sono; non sarà più proposta nelle scelte.")
                                .arg(nome)))
    return;
  try {
    db_.Execute(Sql("UPDATE Anagrafica SET Eliminato=") + Sql::Param(!eliminata) + Sql(" WHERE TAnag=") +
                Sql::Param(TipoCorrente()) + Sql(" AND CAnag=") + Sql::Param(c));
  } catch (const VbError& e) {
    ErroreDb(QStringLiteral("Impossibile aggiornare l'anagrafica."), e);
  }
  Ricarica();
}

void AnagraficheDialog::Scegli() {
  if (!InScelta()) return;
  const int c = CodiceSelezionato();
  if (c == 0) {
    Avvisa(QStringLiteral("Seleziona un'anagrafica!"));
    return;
  }
  if (lista_->currentItem()->data(1, Qt::UserRole).toBool()) {
    Avvisa(QStringLiteral("L'anagrafica è eliminata: ripristinala prima di sceglierla!"));
    return;
  }
  const int t = TipoCorrente();
  const Scelta s = std::move(scelta_);
  scelta_ = {};
  Consegna([&] { s(t, c); });
}

// ------------------------------------------------------------------ party form

AnagraficaForm::AnagraficaForm(Database& db, int tAnag, int cAnag, QWidget* parent)
    : QDialog(parent), db_(db), tAnag_(tAnag), cAnag_(cAnag) {
  setObjectName(QStringLiteral("dlgAnagrafica"));
  setWindowModality(Qt::ApplicationModal);
  QString tipo;
  try {
    const auto r = db_.Select(Sql("SELECT Descrizione FROM AnagTipo WHERE TAnag=") + Sql::Param(tAnag));
    if (!r.rows.empty()) tipo = Testo(r.rows.front().front());
  } catch (const VbError&) {
    // the title goes without the type
  }
  setWindowTitle((cAnag == 0 ? QStringLiteral("Nuova anagrafica") : QStringLiteral("Anagrafica %1").arg(cAnag)) +
                 (tipo.isEmpty() ? QString() : QStringLiteral(" - ") + tipo));

  edRagSoc1_ = Campo("edRagSoc1", 100, this);
  edRagSoc2_ = Campo("edRagSoc2", 100, this);
  edIndirizzo_ = Campo("edIndirizzo", 100, this);
  edCap_ = Campo("edCap", 10, this);
  edCap_->setMaximumWidth(80);
  edCitta_ = Campo("edCitta", 60, this);
  edProv_ = Campo("edProv", 2, this);
  edProv_->setMaximumWidth(44);
  edPIva_ = Campo("edPIva", 20, this);
  edPIva_->setMaximumWidth(180);
  edTelefono_ = Campo("edTelefono", 30, this);
  edTelefono_->setMaximumWidth(180);
  edEmail_ = Campo("edEmail", 100, this);
  spCostoH_ = new QDoubleSpinBox(this);
  spCostoH_->setObjectName(QStringLiteral("spCostoH"));
  spCostoH_->setLocale(Italiano());
  spCostoH_->setRange(0, 9999.99);
  spCostoH_->setDecimals(2);
  spCostoH_->setSuffix(QStringLiteral(" €/h"));
  spCostoH_->setMaximumWidth(140);

  auto* form = new QFormLayout;
  form->addRow(tAnag == kTAnagOperatori ? QStringLiteral("&Nome e cognome:") : QStringLiteral("&Ragione sociale:"),
               edRagSoc1_);
  form->addRow(QStringLiteral("Ragione sociale (&2):"), edRagSoc2_);
  form->addRow(QStringLiteral("&Indirizzo:"), edIndirizzo_);
  auto* luogo = new QHBoxLayout;
  luogo->addWidget(edCap_);
  luogo->addWidget(edCitta_, 1);
  auto* lProv = new QLabel(QStringLiteral("Pr&ov.:"), this);
  lProv->setBuddy(edProv_);
  luogo->addWidget(lProv);
  luogo->addWidget(edProv_);
  auto* lLuogo = new QLabel(QStringLiteral("C&AP e città:"), this);
  lLuogo->setBuddy(edCap_);
  form->addRow(lLuogo, luogo);
  form->addRow(QStringLiteral("&Partita IVA:"), edPIva_);
  form->addRow(QStringLiteral("&Telefono:"), edTelefono_);
  form->addRow(QStringLiteral("&E-mail:"), edEmail_);
  if (tAnag == kTAnagOperatori) form->addRow(QStringLiteral("&Costo orario:"), spCostoH_);
  else spCostoH_->hide();

  auto* bottoni = new QDialogButtonBox(this);
  auto* ok = bottoni->addButton(QStringLiteral("OK"), QDialogButtonBox::AcceptRole);
  ok->setObjectName(QStringLiteral("btnOK"));
  ok->setDefault(true);
  auto* annulla = bottoni->addButton(QStringLiteral("Annulla"), QDialogButtonBox::RejectRole);
  annulla->setObjectName(QStringLiteral("btnAnnulla"));
  connect(ok, &QPushButton::clicked, this, [this] {
    if (Salva()) accept();
  });
  connect(annulla, &QPushButton::clicked, this, &QDialog::reject);

  auto* l = new QVBoxLayout(this);
  l->addLayout(form);
  l->addSpacing(6);
  l->addWidget(bottoni);
  setMinimumWidth(520);
  if (cAnag_ != 0) Carica();
}

void AnagraficaForm::Carica() {
  try {
    const auto r = db_.Select(
        Sql("SELECT RagSoc1, RagSoc2, Indirizzo, Cap, Citta, Prov, PIva, Telefono, Email, CostoH FROM Anagrafica "
            "WHERE TAnag=") +
        Sql::Param(tAnag_) + Sql(" AND CAnag=") + Sql::Param(cAnag_));
    if (r.rows.empty()) return;
    const Row& row = r.rows.front();
    QLineEdit* campi[] = {edRagSoc1_, edRagSoc2_, edIndirizzo_, edCap_, edCitta_,
                          edProv_,    edPIva_,    edTelefono_,  edEmail_};
    for (int i = 0; i < 9; ++i) campi[i]->setText(Testo(row[i]));
    spCostoH_->setValue(IsNull(row[9]) ? 0.0 : row[9].toDouble());
  } catch (const VbError& e) {
    ErroreDb(QStringLiteral("Impossibile leggere l'anagrafica."), e);
  }
}

bool AnagraficaForm::Salva() {
  const QString ragSoc = edRagSoc1_->text().trimmed();
  if (ragSoc.isEmpty()) {
    Avvisa(tAnag_ == kTAnagOperatori ? QStringLiteral("Inserisci il nome dell'operatore!")
                                     : QStringLiteral("Inserisci la ragione sociale!"));
    edRagSoc1_->setFocus();
    return false;
  }
  const QString prov = edProv_->text().trimmed().toUpper();
  static const QRegularExpression sigla(QStringLiteral("^[A-Z]{2}$"));
  if (!prov.isEmpty() && !sigla.match(prov).hasMatch()) {
    Avvisa(QStringLiteral("Indica la provincia con la sigla di due lettere!"));
    edProv_->setFocus();
    return false;
  }
  edProv_->setText(prov);
  const QString piva = edPIva_->text().trimmed();
  static const QRegularExpression cifre(QStringLiteral("^\\d+$"));
  if (cifre.match(piva).hasMatch() && piva.size() != 11) {
    Avvisa(QStringLiteral("La partita IVA italiana ha 11 cifre!"));
    edPIva_->setFocus();
    return false;
  }
  const QString email = edEmail_->text().trimmed();
  if (!email.isEmpty() && (!email.contains(QLatin1Char('@')) || email.contains(QLatin1Char(' ')))) {
    Avvisa(QStringLiteral("L'indirizzo e-mail non è valido!"));
    edEmail_->setFocus();
    return false;
  }
  try {
    // The same name twice in one type is usually a mistake, but not always.
    const auto doppi = db_.Select(Sql("SELECT CAnag FROM Anagrafica WHERE TAnag=") + Sql::Param(tAnag_) +
                                  Sql(" AND RagSoc1=") + Sql::Param(ragSoc) + Sql(" AND CAnag<>") +
                                  Sql::Param(cAnag_) + Sql(" AND Eliminato=0"));
    if (!doppi.rows.empty() &&
        !Conferma(QStringLiteral("Esiste già un'anagrafica «%1» (codice %2). Vuoi salvare comunque?")
                      .arg(ragSoc)
                      .arg(doppi.rows.front().front().toInt())))
      return false;

    // Hidden for the other types, the field still carries the stored value.
    const double costo = spCostoH_->value();
    const Sql valori = Sql::Param(ragSoc) + Sql(", ") + Sql::Param(TestoONull(edRagSoc2_)) + Sql(", ") +
                       Sql::Param(TestoONull(edIndirizzo_)) + Sql(", ") + Sql::Param(TestoONull(edCap_)) +
                       Sql(", ") + Sql::Param(TestoONull(edCitta_)) + Sql(", ") + Sql::Param(TestoONull(edProv_)) +
                       Sql(", ") + Sql::Param(TestoONull(edPIva_)) + Sql(", ") +
                       Sql::Param(TestoONull(edTelefono_)) + Sql(", ") + Sql::Param(TestoONull(edEmail_)) +
                       Sql(", ") + Sql::Param(costo);
    if (cAnag_ == 0) {
      InTransazione(db_, [&] {
        const int nuovo =
            Prossimo(db_, Sql("SELECT Max(CAnag) FROM Anagrafica WHERE TAnag=") + Sql::Param(tAnag_));
        db_.Execute(Sql("INSERT INTO Anagrafica (TAnag, CAnag, RagSoc1, RagSoc2, Indirizzo, Cap, Citta, Prov, "
                        "PIva, Telefono, Email, CostoH, Eliminato) VALUES (") +
                    Sql::Param(tAnag_) + Sql(", ") + Sql::Param(nuovo) + Sql(", ") + valori + Sql(", 0)"));
        cAnag_ = nuovo;
      });
    } else {
      db_.Execute(Sql("UPDATE Anagrafica SET RagSoc1=") + Sql::Param(ragSoc) + Sql(", RagSoc2=") +
                  Sql::Param(TestoONull(edRagSoc2_)) + Sql(", Indirizzo=") + Sql::Param(TestoONull(edIndirizzo_)) +
                  Sql(", Cap=") + Sql::Param(TestoONull(edCap_)) + Sql(", Citta=") +
                  Sql::Param(TestoONull(edCitta_)) + Sql(", Prov=") + Sql::Param(TestoONull(edProv_)) +
                  Sql(", PIva=") + Sql::Param(TestoONull(edPIva_)) + Sql(", Telefono=") +
                  Sql::Param(TestoONull(edTelefono_)) + Sql(", Email=") + Sql::Param(TestoONull(edEmail_)) +
                  Sql(", CostoH=") + Sql::Param(costo) + Sql(" WHERE TAnag=") + Sql::Param(tAnag_) +
                  Sql(" AND CAnag=") + Sql::Param(cAnag_));
    }
  } catch (const VbError& e) {
    ErroreDb(QStringLiteral("Impossibile salvare l'anagrafica."), e);
    return false;
  }
  emit Salvata(tAnag_, cAnag_);
  return true;
}

// ================================================================== types

TipologiaDialog::TipologiaDialog(Database& db, const QString& nome, const QString& titolo, Tabella tabella,
                                 const QStringList& colonne, QWidget* parent)
    : RegistroDialog(db, nome, titolo, parent), tabella_(std::move(tabella)) {
  NuovaLista(QStringList{QStringLiteral("Codice"), QStringLiteral("Descrizione"), QStringLiteral("Sigla")} + colonne);
  lista_->setColumnWidth(0, 70);
  lista_->setColumnWidth(1, 260);
  lista_->setColumnWidth(2, 80);
  edCodice_ = Campo("edCodice", tabella_.codiceLibero ? 5 : 0, this);
  edCodice_->setReadOnly(true);
  edCodice_->setFocusPolicy(Qt::NoFocus);
  edCodice_->setMaximumWidth(90);
  edDescrizione_ = Campo("edDescrizione", 100, this);
  edSigla_ = Campo("edSigla", 10, this);
  edSigla_->setMaximumWidth(120);
  btnNuova_ = Pulsante(QStringLiteral("&Nuova"), "btnNuova", this);
  btnSalva_ = Pulsante(QStringLiteral("Sal&va"), "btnSalva", this);
  if (tabella_.eliminabile) {
    btnElimina_ = Pulsante(QStringLiteral("E&limina"), "btnElimina", this);
    connect(btnElimina_, &QPushButton::clicked, this, [this] { Elimina(); });
  }
  campi_ = new QFormLayout;
  campi_->addRow(QStringLiteral("Codice:"), edCodice_);
  campi_->addRow(QStringLiteral("&Descrizione:"), edDescrizione_);
  campi_->addRow(QStringLiteral("S&igla:"), edSigla_);
  connect(lista_, &QTreeWidget::currentItemChanged, this, [this] { MostraRiga(); });
  connect(lista_, &QTreeWidget::itemActivated, this, [this] {
    if (InScelta()) Scegli();
    else edDescrizione_->setFocus();
  });
  connect(btnNuova_, &QPushButton::clicked, this, &TipologiaDialog::Nuova);
  connect(btnSalva_, &QPushButton::clicked, this, [this] { Salva(); });
}

void RegistroDialog::Impagina(QWidget* gruppo, const QList<QPushButton*>& pulsanti) {
  auto* sotto = new QHBoxLayout;
  for (QPushButton* b : pulsanti) sotto->addWidget(b);
  sotto->addStretch(1);
  sotto->addWidget(btnScegli_);
  sotto->addWidget(btnChiudi_);
  auto* l = new QVBoxLayout(this);
  l->addWidget(lblScelta_);
  l->addWidget(lista_, 1);
  l->addWidget(gruppo);
  l->addLayout(sotto);
}

void TipologiaDialog::Componi(QLayout* extra, const QSize& misura) {
  auto* gruppo = new QGroupBox(this);
  gruppo->setObjectName(QStringLiteral("grpTipologia"));
  auto* dentro = new QHBoxLayout(gruppo);
  dentro->addLayout(campi_, 3);
  if (extra) {
    dentro->addSpacing(12);
    dentro->addLayout(extra, 2);
  }
  QList<QPushButton*> pulsanti{btnNuova_, btnSalva_};
  if (btnElimina_) pulsanti << btnElimina_;
  Impagina(gruppo, pulsanti);
  resize(misura);
}

void TipologiaDialog::Apri(int codice, Scelta scelta) {
  scelta_ = std::move(scelta);
  Ricarica();
  if (codice != 0) Seleziona(codice);
  Mostra(static_cast<bool>(scelta_));
}

void TipologiaDialog::Ricarica() {
  const int prima = codiceInModifica_;
  lista_->setSortingEnabled(false);
  lista_->clear();
  try {
    QString colonne = QStringLiteral("%1, %2, Sigla").arg(tabella_.codice, tabella_.descrizione);
    if (!tabella_.altre.isEmpty()) colonne += QStringLiteral(", ") + tabella_.altre;
    QString sql = QStringLiteral("SELECT %1 FROM %2").arg(colonne, tabella_.nome);
    if (!tabella_.filtro.isEmpty()) sql += QStringLiteral(" WHERE ") + tabella_.filtro;
    const auto r = db_.Select(Sql(sql));
    for (const Row& row : r.rows) {
      auto* it = new Riga(lista_);
      const int c = row[0].toInt();
      it->setText(0, QString::number(c));
      it->setData(0, kCodice, c);
      it->setData(0, kOrdine, c);
      it->setTextAlignment(0, Qt::AlignRight | Qt::AlignVCenter);
      it->setText(1, Testo(row[1]));
      it->setText(2, Testo(row[2]));
      RigaExtra(it, row);
    }
  } catch (const VbError& e) {
    ErroreDb(QStringLiteral("Impossibile leggere le %1.").arg(tabella_.voci), e);
  }
  lista_->setSortingEnabled(true);
  if (prima == 0 || !Seleziona(prima)) Nuova();
}

QString TipologiaDialog::EFiltro() const {
  return tabella_.filtro.isEmpty() ? QString() : QStringLiteral(" AND ") + tabella_.filtro;
}

int TipologiaDialog::ProssimoCodice() {
  QString sql = QStringLiteral("SELECT Max(%1) FROM %2").arg(tabella_.codice, tabella_.nome);
  if (!tabella_.filtro.isEmpty()) sql += QStringLiteral(" WHERE ") + tabella_.filtro;
  return Prossimo(db_, Sql(sql));
}

void TipologiaDialog::MostraRiga() {
  const QTreeWidgetItem* it = lista_->currentItem();
  auto* gruppo = findChild<QGroupBox*>(QStringLiteral("grpTipologia"));
  codiceInModifica_ = it ? it->data(0, kCodice).toInt() : 0;
  // A new row of a register with free codes proposes the next one, which the user may change.
  const bool codiceDaScrivere = !it && tabella_.codiceLibero;
  edCodice_->setReadOnly(!codiceDaScrivere);
  edCodice_->setFocusPolicy(codiceDaScrivere ? Qt::StrongFocus : Qt::NoFocus);
  QString nuovo = QStringLiteral("(nuova)");
  if (codiceDaScrivere) {
    try {
      nuovo = QString::number(ProssimoCodice());
    } catch (const VbError&) {
      nuovo.clear();  // the user types one
    }
  }
  edCodice_->setText(it ? it->text(0) : nuovo);
  edDescrizione_->setText(it ? it->text(1) : QString());
  edSigla_->setText(it ? it->text(2) : QString());
  const QString voce = tabella_.voce.left(1).toUpper() + tabella_.voce.mid(1);
  gruppo->setTitle(it ? QStringLiteral("%1 %2").arg(voce).arg(codiceInModifica_)
                      : QStringLiteral("Nuova %1").arg(tabella_.voce));
  if (btnElimina_) btnElimina_->setEnabled(it != nullptr);
  MostraExtra(it);
}

void TipologiaDialog::Nuova() {
  lista_->clearSelection();
  lista_->setCurrentItem(nullptr);
  MostraRiga();
  edDescrizione_->setFocus();
}

bool TipologiaDialog::Salva() {
  const QString descr = edDescrizione_->text().trimmed();
  const QString sigla = edSigla_->text().trimmed().toUpper();
  if (descr.isEmpty()) {
    Avvisa(QStringLiteral("Inserisci la descrizione!"));
    edDescrizione_->setFocus();
    return false;
  }
  const int codice = codiceInModifica_;
  // The code a new row takes when the register leaves it to the user.
  int scritto = 0;
  if (codice == 0 && tabella_.codiceLibero) {
    bool numero = false;
    scritto = edCodice_->text().trimmed().toInt(&numero);
    if (!numero || scritto < 1 || scritto > kCodiceMassimo) {
      Avvisa(QStringLiteral("Il codice deve essere un numero da 1 a %1!").arg(kCodiceMassimo));
      edCodice_->setFocus();
      return false;
    }
  }
  const QString altroCodice = EFiltro() + QStringLiteral(" AND %1<>").arg(tabella_.codice);
  try {
    if (scritto != 0) {
      const auto stessoCodice =
          db_.Select(Sql(QStringLiteral("SELECT %1 FROM %2 WHERE %3=").arg(tabella_.descrizione, tabella_.nome, tabella_.codice)) +
                     Sql::Param(scritto) + Sql(EFiltro()));
      if (!stessoCodice.rows.empty()) {
        Avvisa(QStringLiteral("Il codice %1 è già usato dalla %2 «%3»!")
                   .arg(scritto)
                   .arg(tabella_.voce, Testo(stessoCodice.rows.front().front())));
        edCodice_->setFocus();
        return false;
      }
    }
    const auto stessoNome =
        db_.Select(Sql(QStringLiteral("SELECT %1 FROM %2 WHERE %3=").arg(tabella_.codice, tabella_.nome, tabella_.descrizione)) +
                   Sql::Param(descr) + Sql(altroCodice) + Sql::Param(codice));
    if (!stessoNome.rows.empty()) {
      Avvisa(QStringLiteral("Esiste già la %1 «%2» (codice %3)!")
                 .arg(tabella_.voce, descr)
                 .arg(stessoNome.rows.front().front().toInt()));
      edDescrizione_->setFocus();
      return false;
    }
    if (!sigla.isEmpty()) {
      const auto stessaSigla =
          db_.Select(Sql(QStringLiteral("SELECT %1 FROM %2 WHERE Sigla=").arg(tabella_.descrizione, tabella_.nome)) +
                     Sql::Param(sigla) + Sql(altroCodice) + Sql::Param(codice));
      if (!stessaSigla.rows.empty()) {
        Avvisa(QStringLiteral("La sigla «%1» è già usata dalla %2 «%3»!")
                   .arg(sigla, tabella_.voce, Testo(stessaSigla.rows.front().front())));
        edSigla_->setFocus();
        return false;
      }
    }
    if (!PrimaDiSalvare(codice)) return false;
    const QVariant siglaV = sigla.isEmpty() ? QVariant() : QVariant(sigla);
    int salvato = codice;
    InTransazione(db_, [&] {
      if (codice == 0) salvato = scritto != 0 ? scritto : ProssimoCodice();
      Scrivi(salvato, codice == 0, descr, siglaV);
    });
    codiceInModifica_ = salvato;
    Ricarica();
    emit Salvata(salvato);
  } catch (const VbError& e) {
    ErroreDb(QStringLiteral("Impossibile salvare la %1.").arg(tabella_.voce), e);
    return false;
  }
  return true;
}

QString TipologiaDialog::DomandaElimina(int codice, const QString& descr) {
  Q_UNUSED(codice);
  return QStringLiteral("Vuoi eliminare la %1 «%2»?").arg(tabella_.voce, descr);
}

void TipologiaDialog::Cancella(int codice) {
  db_.Execute(Sql(QStringLiteral("DELETE FROM %1 WHERE %2=").arg(tabella_.nome, tabella_.codice)) +
              Sql::Param(codice) + Sql(EFiltro()));
}

bool TipologiaDialog::Elimina() {
  if (!tabella_.eliminabile) return false;
  const int c = CodiceSelezionato();
  if (c == 0) {
    Avvisa(QStringLiteral("Seleziona una %1!").arg(tabella_.voce));
    return false;
  }
  const QString descr = lista_->currentItem()->text(1);
  try {
    const QString motivo = Impedimento(c, descr);
    if (!motivo.isEmpty()) {
      Avvisa(motivo);
      return false;
    }
    if (!Conferma(DomandaElimina(c, descr))) return false;
    InTransazione(db_, [&] { Cancella(c); });
  } catch (const VbError& e) {
    ErroreDb(QStringLiteral("Impossibile eliminare la %1.").arg(tabella_.voce), e);
    return false;
  }
  codiceInModifica_ = 0;
  Ricarica();
  emit Eliminata(c);
  return true;
}

void TipologiaDialog::Scegli() {
  if (!InScelta()) return;
  const int c = CodiceSelezionato();
  if (c == 0) {
    Avvisa(QStringLiteral("Seleziona una %1!").arg(tabella_.voce));
    return;
  }
  const Scelta s = std::move(scelta_);
  scelta_ = {};
  Consegna([&] { s(c); });
}

// ------------------------------------------------------------------ model types

TipiModelloDialog::TipiModelloDialog(Database& db, QWidget* parent)
    : TipologiaDialog(db, QStringLiteral("dlgTipiModello"), QStringLiteral("Tipologie modelli"),
                      {.nome = QStringLiteral("ProjectsTipo"),
                       .codice = QStringLiteral("CPrjTipo"),
                       .descrizione = QStringLiteral("DPrjTipo"),
                       .altre = QStringLiteral("GestForfSempl")},
                      {QStringLiteral("Forfait semplificato")}, parent) {
  lista_->setObjectName(QStringLiteral("lvTipiModello"));
  chkForfSempl_ = new QCheckBox(QStringLiteral("Gestione a &forfait semplificata"), this);
  chkForfSempl_->setObjectName(QStringLiteral("chkForfSempl"));
  chkForfSempl_->setToolTip(QStringLiteral("I modelli di questa tipologia si chiudono quando nessuna attività è in "
                                           "corso, senza guardare le disposizioni."));
  campi_->addRow(QString(), chkForfSempl_);
  Componi(nullptr, QSize(640, 470));
  Ricarica();
}

void TipiModelloDialog::RigaExtra(QTreeWidgetItem* it, const Row& row) {
  const bool forf = Vero(row[3]);
  it->setText(3, forf ? QStringLiteral("Sì") : QString());
  it->setData(3, Qt::UserRole, forf);
}

void TipiModelloDialog::MostraExtra(const QTreeWidgetItem* it) {
  chkForfSempl_->setChecked(it && it->data(3, Qt::UserRole).toBool());
}

// The flag decides how the models of the type close: a change reaches the models already made.
bool TipiModelloDialog::PrimaDiSalvare(int codice) {
  const QTreeWidgetItem* it = lista_->currentItem();
  if (codice == 0 || !it || it->data(3, Qt::UserRole).toBool() == chkForfSempl_->isChecked()) return true;
  const auto usati = db_.Select(Sql("SELECT Count(*) FROM Projects WHERE CPrjTipo=") + Sql::Param(codice));
  const int n = usati.rows.empty() ? 0 : usati.rows.front().front().toInt();
  return n == 0 || Conferma(QStringLiteral("La tipologia è usata da %1 modelli: cambiando la gestione a forfait "
                                           "semplificata cambia il modo in cui si chiudono.\nVuoi continuare?")
                                .arg(n));
}

void TipiModelloDialog::Scrivi(int codice, bool nuovo, const QString& descr, const QVariant& sigla) {
  const bool forf = chkForfSempl_->isChecked();
  if (nuovo)
    db_.Execute(Sql("INSERT INTO ProjectsTipo (CPrjTipo, DPrjTipo, Sigla, GestForfSempl) VALUES (") +
                Sql::Param(codice) + Sql(", ") + Sql::Param(descr) + Sql(", ") + Sql::Param(sigla) + Sql(", ") +
                Sql::Param(forf) + Sql(")"));
  else
    db_.Execute(Sql("UPDATE ProjectsTipo SET DPrjTipo=") + Sql::Param(descr) + Sql(", Sigla=") + Sql::Param(sigla) +
                Sql(", GestForfSempl=") + Sql::Param(forf) + Sql(" WHERE CPrjTipo=") + Sql::Param(codice));
}

// ------------------------------------------------------------------ disposition types

TipiDisposizioneDialog::TipiDisposizioneDialog(Database& db, QWidget* parent)
    : TipologiaDialog(db, QStringLiteral("dlgTipiDisposizione"), QStringLiteral("Tipologie disposizioni"),
                      {.nome = QStringLiteral("ProjectsDispTipo"),
                       .codice = QStringLiteral("CPrjDispTipo"),
                       .descrizione = QStringLiteral("DPrjDispTipo"),
                       .altre = QStringLiteral("Forfait, TipoFatt")},
                      {QStringLiteral("Forfait"), QStringLiteral("Fatturazione")}, parent) {
  lista_->setObjectName(QStringLiteral("lvTipiDisposizione"));
  lista_->setColumnWidth(3, 70);
  chkForfait_ = new QCheckBox(QStringLiteral("&Forfait"), this);
  chkForfait_->setObjectName(QStringLiteral("chkForfait"));
  cbTipoFatt_ = new QComboBox(this);
  cbTipoFatt_->setObjectName(QStringLiteral("cbTipoFatt"));
  for (int i = 0; i < static_cast<int>(std::size(kTipiFatt)); ++i) cbTipoFatt_->addItem(NomeTipoFatt(i), i);
  cbTipoFatt_->setMaximumWidth(160);
  lwPrestazioni_ = new QListWidget(this);
  lwPrestazioni_->setObjectName(QStringLiteral("lwPrestazioni"));
  lwPrestazioni_->setMinimumWidth(220);
  auto* lFatt = new QLabel(QStringLiteral("Fa&tturazione:"), this);
  lFatt->setBuddy(cbTipoFatt_);
  campi_->addRow(lFatt, cbTipoFatt_);
  campi_->addRow(QString(), chkForfait_);
  auto* prest = new QVBoxLayout;
  auto* lPrest = new QLabel(QStringLiteral("&Prestazioni ammesse:"), this);
  lPrest->setBuddy(lwPrestazioni_);
  prest->addWidget(lPrest);
  prest->addWidget(lwPrestazioni_, 1);
  Componi(prest, QSize(760, 540));
  CaricaPrestazioni();
  Ricarica();
}

void TipiDisposizioneDialog::CaricaPrestazioni() {
  QSet<int> spuntate;
  for (int k = 0; k < lwPrestazioni_->count(); ++k)
    if (lwPrestazioni_->item(k)->checkState() == Qt::Checked)
      spuntate.insert(lwPrestazioni_->item(k)->data(Qt::UserRole).toInt());
  lwPrestazioni_->clear();
  try {
    const auto r = db_.Select(Sql("SELECT CTabGen, DTabGen, Sigla FROM TabGen WHERE CTipTabGen=") +
                              Sql::Param(kTabGenPrestazioni) + Sql(" ORDER BY DTabGen"));
    for (const Row& row : r.rows) {
      const QString sigla = Testo(row[2]);
      auto* it = new QListWidgetItem(Testo(row[1]) + (sigla.isEmpty() ? QString() : QStringLiteral(" (%1)").arg(sigla)),
                                     lwPrestazioni_);
      it->setData(Qt::UserRole, row[0].toInt());
      it->setFlags(Qt::ItemIsEnabled | Qt::ItemIsUserCheckable | Qt::ItemIsSelectable);
      it->setCheckState(spuntate.contains(row[0].toInt()) ? Qt::Checked : Qt::Unchecked);
    }
  } catch (const VbError& e) {
    ErroreDb(QStringLiteral("Impossibile leggere le prestazioni."), e);
  }
}

void TipiDisposizioneDialog::RigaExtra(QTreeWidgetItem* it, const Row& row) {
  const bool forf = Vero(row[3]);
  it->setText(3, forf ? QStringLiteral("Sì") : QString());
  it->setData(3, Qt::UserRole, forf);
  const int fatt = IsNull(row[4]) ? 0 : row[4].toInt();
  it->setText(4, NomeTipoFatt(fatt));
  it->setData(4, Qt::UserRole, fatt);
}

void TipiDisposizioneDialog::MostraExtra(const QTreeWidgetItem* it) {
  QSet<int> ammesse;
  chkForfait_->setChecked(it && it->data(3, Qt::UserRole).toBool());
  const int i = it ? cbTipoFatt_->findData(it->data(4, Qt::UserRole).toInt()) : 0;
  cbTipoFatt_->setCurrentIndex(i >= 0 ? i : 0);
  if (it) {
    try {
      const auto r = db_.Select(Sql("SELECT CPrestazione FROM ProjectsDisp2Prest WHERE CPrjDispTipo=") +
                                Sql::Param(codiceInModifica_));
      for (const Row& row : r.rows) ammesse.insert(row[0].toInt());
    } catch (const VbError& e) {
      ErroreDb(QStringLiteral("Impossibile leggere le prestazioni della tipologia."), e);
    }
  }
  for (int k = 0; k < lwPrestazioni_->count(); ++k) {
    QListWidgetItem* p = lwPrestazioni_->item(k);
    p->setCheckState(ammesse.contains(p->data(Qt::UserRole).toInt()) ? Qt::Checked : Qt::Unchecked);
  }
}

void TipiDisposizioneDialog::Scrivi(int codice, bool nuovo, const QString& descr, const QVariant& sigla) {
  const bool forf = chkForfait_->isChecked();
  const int fatt = cbTipoFatt_->currentData().toInt();
  if (nuovo)
    db_.Execute(Sql("INSERT INTO ProjectsDispTipo (CPrjDispTipo, DPrjDispTipo, Sigla, Forfait, TipoFatt) VALUES (") +
                Sql::Param(codice) + Sql(", ") + Sql::Param(descr) + Sql(", ") + Sql::Param(sigla) + Sql(", ") +
                Sql::Param(forf) + Sql(", ") + Sql::Param(fatt) + Sql(")"));
  else
    db_.Execute(Sql("UPDATE ProjectsDispTipo SET DPrjDispTipo=") + Sql::Param(descr) + Sql(", Sigla=") +
                Sql::Param(sigla) + Sql(", Forfait=") + Sql::Param(forf) + Sql(", TipoFatt=") + Sql::Param(fatt) +
                Sql(" WHERE CPrjDispTipo=") + Sql::Param(codice));
  // The allowed service kinds are written again as checked.
  db_.Execute(Sql("DELETE FROM ProjectsDisp2Prest WHERE CPrjDispTipo=") + Sql::Param(codice));
  for (int i = 0; i < lwPrestazioni_->count(); ++i) {
    const QListWidgetItem* p = lwPrestazioni_->item(i);
    if (p->checkState() != Qt::Checked) continue;
    db_.Execute(Sql("INSERT INTO ProjectsDisp2Prest (CPrjDispTipo, CPrestazione) VALUES (") + Sql::Param(codice) +
                Sql(", ") + Sql::Param(p->data(Qt::UserRole).toInt()) + Sql(")"));
  }
}

// ------------------------------------------------------------------ service kinds

PrestazioniDialog::PrestazioniDialog(Database& db, QWidget* parent)
    : TipologiaDialog(db, QStringLiteral("dlgPrestazioni"), QStringLiteral("Prestazioni"),
                      {.nome = QStringLiteral("TabGen"),
                       .codice = QStringLiteral("CTabGen"),
                       .descrizione = QStringLiteral("DTabGen"),
                       .filtro = QStringLiteral("CTipTabGen=%1").arg(kTabGenPrestazioni),
                       .voce = QStringLiteral("prestazione"),
                       .voci = QStringLiteral("prestazioni"),
                       .codiceLibero = true,
                       .eliminabile = true},
                      {}, parent) {
  lista_->setObjectName(QStringLiteral("lvPrestazioni"));
  Componi(nullptr, QSize(600, 460));
  Ricarica();
}

void PrestazioniDialog::Scrivi(int codice, bool nuovo, const QString& descr, const QVariant& sigla) {
  if (nuovo)
    db_.Execute(Sql("INSERT INTO TabGen (CTipTabGen, CTabGen, DTabGen, Sigla) VALUES (") +
                Sql::Param(kTabGenPrestazioni) + Sql(", ") + Sql::Param(codice) + Sql(", ") + Sql::Param(descr) +
                Sql(", ") + Sql::Param(sigla) + Sql(")"));
  else
    db_.Execute(Sql("UPDATE TabGen SET DTabGen=") + Sql::Param(descr) + Sql(", Sigla=") + Sql::Param(sigla) +
                Sql(" WHERE CTipTabGen=") + Sql::Param(kTabGenPrestazioni) + Sql(" AND CTabGen=") +
                Sql::Param(codice));
}

// A kind that the work done names stays: the activities, the dispositions and
// the document lines would lose the name of what was done.
QString PrestazioniDialog::Impedimento(int codice, const QString& descr) {
  auto conta = [&](const char* tabella) {
    const auto r = db_.Select(Sql(QStringLiteral("SELECT Count(*) FROM %1 WHERE CPrestazione=").arg(QLatin1String(tabella))) +
                              Sql::Param(codice));
    return r.rows.empty() ? 0 : r.rows.front().front().toInt();
  };
  const int attivita = conta("ActivitiesProd");
  const int disposizioni = conta("ProjectsDispDett");
  int righe = 0;
  try {
    righe = conta("ProjectsDocDettPrest");
  } catch (const VbError&) {
    // the table of the document lines is made when the first document needs it
  }
  QStringList usi;
  if (attivita > 0) usi << QStringLiteral("da %1 attività").arg(attivita);
  if (disposizioni > 0)
    usi << (disposizioni == 1 ? QStringLiteral("da 1 disposizione") : QStringLiteral("da %1 disposizioni").arg(disposizioni));
  if (righe > 0)
    usi << (righe == 1 ? QStringLiteral("da 1 riga di documento") : QStringLiteral("da %1 righe di documento").arg(righe));
  if (usi.isEmpty()) return {};
  const QString ultimo = usi.takeLast();
  const QString dove = usi.isEmpty() ? ultimo : usi.join(QStringLiteral(", ")) + QStringLiteral(" e ") + ultimo;
  return QStringLiteral("La prestazione «%1» è usata %2: non può essere eliminata!").arg(descr, dove);
}

QString PrestazioniDialog::DomandaElimina(int codice, const QString& descr) {
  const auto r = db_.Select(Sql("SELECT Count(*) FROM ProjectsDisp2Prest WHERE CPrestazione=") + Sql::Param(codice));
  const int tipi = r.rows.empty() ? 0 : r.rows.front().front().toInt();
  QString domanda = TipologiaDialog::DomandaElimina(codice, descr);
  if (tipi == 1) domanda += QStringLiteral("\n\nSarà tolta dalle prestazioni ammesse di 1 tipologia di disposizioni.");
  else if (tipi > 1)
    domanda += QStringLiteral("\n\nSarà tolta dalle prestazioni ammesse di %1 tipologie di disposizioni.").arg(tipi);
  return domanda;
}

void PrestazioniDialog::Cancella(int codice) {
  db_.Execute(Sql("DELETE FROM ProjectsDisp2Prest WHERE CPrestazione=") + Sql::Param(codice));
  TipologiaDialog::Cancella(codice);
}

// ================================================================== tariffs

TariffeDialog::TariffeDialog(Database& db, int tAnagClienti, QWidget* parent)
    : RegistroDialog(db, tAnagClienti != 0 ? QStringLiteral("dlgTariffeClienti") : QStringLiteral("dlgTariffe"),
                     tAnagClienti != 0 ? QStringLiteral("Tariffe per cliente") : QStringLiteral("Tariffe generali"),
                     parent),
      tAnag_(tAnagClienti) {
  QStringList colonne = {QStringLiteral("Tipologia modello"), QStringLiteral("Tipologia disposizione"),
                         QStringLiteral("Minima"), QStringLiteral("Massima"), QStringLiteral("Oraria")};
  if (PerCliente()) colonne.prepend(QStringLiteral("Cliente"));
  NuovaLista(colonne);
  lista_->setObjectName(QStringLiteral("lvTariffe"));
  lista_->sortByColumn(0, Qt::AscendingOrder);
  const int primo = PerCliente() ? 1 : 0;
  if (PerCliente()) lista_->setColumnWidth(0, 220);
  lista_->setColumnWidth(primo, 160);
  lista_->setColumnWidth(primo + 1, 180);
  for (int k = primo + 2; k < primo + 5; ++k) lista_->setColumnWidth(k, 80);

  auto scelta = [this](const char* nome) {
    auto* c = new QComboBox(this);
    c->setObjectName(QString::fromLatin1(nome));
    c->setPlaceholderText(QStringLiteral("(scegli)"));
    c->setMinimumWidth(240);
    return c;
  };
  if (PerCliente()) cbCliente_ = scelta("cbCliente");
  cbTipoModello_ = scelta("cbTipoModello");
  cbTipoDisposizione_ = scelta("cbTipoDisposizione");
  auto importo = [this](const char* nome) {
    auto* n = new NumericSpin(this, QStringLiteral("#,##0.00"));
    n->setObjectName(QString::fromLatin1(nome));
    n->setMinimumWidth(110);
    n->setMaximumWidth(140);
    return n;
  };
  spTarMin_ = importo("spTarMin");
  spTarMax_ = importo("spTarMax");
  spTarH_ = importo("spTarH");
  btnNuova_ = Pulsante(QStringLiteral("&Nuova"), "btnNuova", this);
  btnSalva_ = Pulsante(QStringLiteral("Sal&va"), "btnSalva", this);
  btnElimina_ = Pulsante(QStringLiteral("E&limina"), "btnElimina", this);

  auto* campi = new QFormLayout;
  if (PerCliente()) campi->addRow(QStringLiteral("Cli&ente:"), cbCliente_);
  campi->addRow(QStringLiteral("Tipologia &modello:"), cbTipoModello_);
  campi->addRow(QStringLiteral("Tipologia &disposizione:"), cbTipoDisposizione_);
  auto* oraria = new QHBoxLayout;
  oraria->addWidget(spTarH_);
  oraria->addWidget(new QLabel(QStringLiteral("€/h"), this));
  oraria->addStretch(1);
  auto* lOraria = new QLabel(QStringLiteral("Tariffa &oraria:"), this);
  lOraria->setBuddy(spTarH_);
  campi->addRow(lOraria, oraria);
  auto* fascia = new QHBoxLayout;
  fascia->addWidget(spTarMin_);
  auto* lMax = new QLabel(QStringLiteral("ma&ssima:"), this);
  lMax->setBuddy(spTarMax_);
  fascia->addSpacing(8);
  fascia->addWidget(lMax);
  fascia->addWidget(spTarMax_);
  fascia->addStretch(1);
  auto* lMin = new QLabel(QStringLiteral("Tariffa m&inima:"), this);
  lMin->setBuddy(spTarMin_);
  campi->addRow(lMin, fascia);
  auto* nota = new QLabel(QStringLiteral("La tariffa minima e la massima valgono per le tipologie di disposizione a forfait."), this);
  nota->setWordWrap(true);
  campi->addRow(QString(), nota);

  auto* gruppo = new QGroupBox(this);
  gruppo->setObjectName(QStringLiteral("grpTariffa"));
  gruppo->setLayout(campi);
  Impagina(gruppo, {btnNuova_, btnSalva_, btnElimina_});
  resize(PerCliente() ? 900 : 720, 540);

  connect(lista_, &QTreeWidget::currentItemChanged, this, [this] { MostraRiga(); });
  connect(lista_, &QTreeWidget::itemSelectionChanged, this, [this] { AggiornaPulsanti(); });
  connect(lista_, &QTreeWidget::itemActivated, this, [this] { spTarH_->setFocus(); });
  connect(btnNuova_, &QPushButton::clicked, this, &TariffeDialog::Nuova);
  connect(btnSalva_, &QPushButton::clicked, this, [this] { Salva(); });
  connect(btnElimina_, &QPushButton::clicked, this, [this] { Elimina(); });
  CaricaScelte();
  Ricarica();
}

QString TariffeDialog::NomeTabella() const {
  return PerCliente() ? QStringLiteral("ProjectsDispTarDett") : QStringLiteral("ProjectsDispTar");
}

Sql TariffeDialog::Dove(const Chiave& k) const {
  Sql sql = Sql(" WHERE CPrjTipo=") + Sql::Param(k.tipo) + Sql(" AND CPrjDispTipo=") + Sql::Param(k.disp);
  if (PerCliente()) sql += Sql(" AND TAnag=") + Sql::Param(tAnag_) + Sql(" AND CAnag=") + Sql::Param(k.cliente);
  return sql;
}

void TariffeDialog::Apri() {
  CaricaScelte();
  Ricarica();
  Mostra(false);
}

// The types and the customers the fields offer; what the fields hold stays chosen.
void TariffeDialog::CaricaScelte() {
  auto carica = [this](QComboBox* c, const Sql& sql, const char* cosa) {
    const QVariant prima = c->currentIndex() >= 0 ? c->currentData() : QVariant();
    const QSignalBlocker blocca(c);
    c->clear();
    try {
      for (const Row& row : db_.Select(sql).rows) c->addItem(Testo(row[1]), row[0].toInt());
    } catch (const VbError& e) {
      ErroreDb(QStringLiteral("Impossibile leggere %1.").arg(QString::fromUtf8(cosa)), e);
    }
    c->setCurrentIndex(prima.isValid() ? c->findData(prima) : -1);
  };
  if (PerCliente())
    carica(cbCliente_,
           Sql("SELECT CAnag, RagSoc1 FROM Anagrafica WHERE TAnag=") + Sql::Param(tAnag_) +
               Sql(" AND Eliminato=0 ORDER BY RagSoc1"),
           "i clienti");
  carica(cbTipoModello_, Sql("SELECT CPrjTipo, DPrjTipo FROM ProjectsTipo ORDER BY DPrjTipo"),
         "le tipologie dei modelli");
  carica(cbTipoDisposizione_, Sql("SELECT CPrjDispTipo, DPrjDispTipo FROM ProjectsDispTipo ORDER BY DPrjDispTipo"),
         "le tipologie delle disposizioni");
}

void TariffeDialog::Ricarica() {
  const QTreeWidgetItem* corrente = lista_->currentItem();
  const bool tenere = corrente && corrente->isSelected();
  const Chiave prima = tenere ? ChiaveDi(corrente) : Chiave{};
  lista_->setSortingEnabled(false);
  lista_->clear();
  const int primo = PerCliente() ? 1 : 0;
  try {
    const QString cliente = PerCliente() ? QStringLiteral("t.CAnag, a.RagSoc1") : QStringLiteral("0, NULL");
    QString da = QStringLiteral("(%1 t LEFT JOIN ProjectsTipo p ON t.CPrjTipo=p.CPrjTipo) LEFT JOIN ProjectsDispTipo d "
                                "ON t.CPrjDispTipo=d.CPrjDispTipo")
                     .arg(NomeTabella());
    if (PerCliente())
      da = QStringLiteral("(%1) LEFT JOIN Anagrafica a ON t.TAnag=a.TAnag AND t.CAnag=a.CAnag").arg(da);
    Sql sql(QStringLiteral("SELECT t.CPrjTipo, t.CPrjDispTipo, %1, p.DPrjTipo, d.DPrjDispTipo, t.TarMin, t.TarMax, "
                           "t.TarH FROM %2")
                .arg(cliente, da));
    if (PerCliente()) sql += Sql(" WHERE t.TAnag=") + Sql::Param(tAnag_);
    auto nome = [](const QVariant& v, const QVariant& codice) {
      return IsNull(v) ? QStringLiteral("(codice %1)").arg(codice.toInt()) : Testo(v);
    };
    for (const Row& row : db_.Select(sql).rows) {
      auto* it = new Riga(lista_);
      it->setData(0, kTipo, row[0].toInt());
      it->setData(0, kDisp, row[1].toInt());
      it->setData(0, kCliente, row[2].toInt());
      if (PerCliente()) it->setText(0, nome(row[3], row[2]));
      it->setText(primo, nome(row[4], row[0]));
      it->setText(primo + 1, nome(row[5], row[1]));
      for (int k = 0; k < 3; ++k) {
        const double v = IsNull(row[6 + k]) ? 0.0 : row[6 + k].toDouble();
        it->setText(primo + 2 + k, Format(v, QStringLiteral("#,##0.00")));
        it->setData(primo + 2 + k, kOrdine, v);
        it->setTextAlignment(primo + 2 + k, Qt::AlignRight | Qt::AlignVCenter);
      }
    }
  } catch (const VbError& e) {
    ErroreDb(QStringLiteral("Impossibile leggere le tariffe."), e);
  }
  lista_->setSortingEnabled(true);
  if (!tenere || !SelezionaTariffa(prima)) Nuova();
}

TariffeDialog::Chiave TariffeDialog::ChiaveDi(const QTreeWidgetItem* it) const {
  return {it->data(0, kTipo).toInt(), it->data(0, kDisp).toInt(), it->data(0, kCliente).toInt()};
}

TariffeDialog::Chiave TariffeDialog::ChiaveNeiCampi() const {
  auto codice = [](const QComboBox* c) { return c && c->currentIndex() >= 0 ? c->currentData().toInt() : 0; };
  return {codice(cbTipoModello_), codice(cbTipoDisposizione_), codice(cbCliente_)};
}

bool TariffeDialog::SelezionaTariffa(const Chiave& k) {
  return Seleziona([&](const QTreeWidgetItem* it) { return ChiaveDi(it) == k; });
}

QString TariffeDialog::Nome(const Chiave& k) const {
  auto nome = [](const QComboBox* c, int codice) {
    const int i = c->findData(codice);
    return i >= 0 ? c->itemText(i) : QStringLiteral("codice %1").arg(codice);
  };
  QString s = QStringLiteral("«%1» - «%2»").arg(nome(cbTipoModello_, k.tipo), nome(cbTipoDisposizione_, k.disp));
  if (PerCliente()) s += QStringLiteral(" del cliente «%1»").arg(nome(cbCliente_, k.cliente));
  return s;
}

void TariffeDialog::MostraRiga() {
  const QTreeWidgetItem* it = lista_->currentItem();
  auto* gruppo = findChild<QGroupBox*>(QStringLiteral("grpTariffa"));
  if (it) {
    const Chiave k = ChiaveDi(it);
    if (cbCliente_) cbCliente_->setCurrentIndex(cbCliente_->findData(k.cliente));
    cbTipoModello_->setCurrentIndex(cbTipoModello_->findData(k.tipo));
    cbTipoDisposizione_->setCurrentIndex(cbTipoDisposizione_->findData(k.disp));
  } else {
    for (QComboBox* c : {cbCliente_, cbTipoModello_, cbTipoDisposizione_})
      if (c) c->setCurrentIndex(-1);
  }
  const int primo = PerCliente() ? 1 : 0;
  spTarMin_->SetValue(it ? it->data(primo + 2, kOrdine).toDouble() : 0.0);
  spTarMax_->SetValue(it ? it->data(primo + 3, kOrdine).toDouble() : 0.0);
  spTarH_->SetValue(it ? it->data(primo + 4, kOrdine).toDouble() : 0.0);
  if (gruppo) gruppo->setTitle(it ? QStringLiteral("Tariffa") : QStringLiteral("Nuova tariffa"));
  AggiornaPulsanti();
}

void TariffeDialog::AggiornaPulsanti() {
  const QTreeWidgetItem* it = lista_->currentItem();
  btnElimina_->setEnabled(it && it->isSelected());
}

void TariffeDialog::Nuova() {
  lista_->clearSelection();
  lista_->setCurrentItem(nullptr);
  MostraRiga();
  (cbCliente_ ? cbCliente_ : cbTipoModello_)->setFocus();
}

bool TariffeDialog::Esiste(const Chiave& k) {
  const auto r = db_.Select(Sql(QStringLiteral("SELECT Count(*) FROM %1").arg(NomeTabella())) + Dove(k));
  return !r.rows.empty() && r.rows.front().front().toInt() > 0;
}

bool TariffeDialog::Salva() {
  // A value being typed counts as typed.
  for (NumericSpin* n : {spTarMin_, spTarMax_, spTarH_}) n->interpretText();
  const Chiave k = ChiaveNeiCampi();
  if (PerCliente() && k.cliente == 0) {
    Avvisa(QStringLiteral("Scegli il cliente!"));
    cbCliente_->setFocus();
    return false;
  }
  if (k.tipo == 0) {
    Avvisa(QStringLiteral("Scegli la tipologia del modello!"));
    cbTipoModello_->setFocus();
    return false;
  }
  if (k.disp == 0) {
    Avvisa(QStringLiteral("Scegli la tipologia della disposizione!"));
    cbTipoDisposizione_->setFocus();
    return false;
  }
  const double tarMin = Round(spTarMin_->Value(), 2);
  const double tarMax = Round(spTarMax_->Value(), 2);
  const double tarH = Round(spTarH_->Value(), 2);
  for (NumericSpin* n : {spTarH_, spTarMin_, spTarMax_})
    if (n->Value() < 0) {
      Avvisa(QStringLiteral("Le tariffe non possono essere negative!"));
      n->setFocus();
      return false;
    }
  if (tarMax > 0 && tarMax < tarMin) {
    Avvisa(QStringLiteral("La tariffa massima non può essere inferiore alla minima!"));
    spTarMax_->setFocus();
    return false;
  }
  const QTreeWidgetItem* it = lista_->currentItem();
  const bool inModifica = it && it->isSelected() && ChiaveDi(it) == k;
  try {
    // Another tariff of the same pair is replaced only when the user says so.
    if (!inModifica && Esiste(k) &&
        !Conferma(QStringLiteral("Esiste già la tariffa %1: vuoi sostituirla?").arg(Nome(k))))
      return false;
    InTransazione(db_, [&] {
      db_.Execute(Sql(QStringLiteral("DELETE FROM %1").arg(NomeTabella())) + Dove(k));
      Sql valori = Sql::Param(k.tipo) + Sql(", ") + Sql::Param(k.disp);
      if (PerCliente()) valori += Sql(", ") + Sql::Param(tAnag_) + Sql(", ") + Sql::Param(k.cliente);
      valori += Sql(", ") + Sql::Param(tarMin) + Sql(", ") + Sql::Param(tarMax) + Sql(", ") + Sql::Param(tarH);
      db_.Execute(Sql(QStringLiteral("INSERT INTO %1 (CPrjTipo, CPrjDispTipo%2, TarMin, TarMax, TarH) VALUES (")
                          .arg(NomeTabella(), PerCliente() ? QStringLiteral(", TAnag, CAnag") : QString())) +
                  valori + Sql(")"));
    });
  } catch (const VbError& e) {
    ErroreDb(QStringLiteral("Impossibile salvare la tariffa."), e);
    return false;
  }
  lista_->clearSelection();
  Ricarica();
  SelezionaTariffa(k);
  return true;
}

bool TariffeDialog::Elimina() {
  const QTreeWidgetItem* it = lista_->currentItem();
  if (!it || !it->isSelected()) {
    Avvisa(QStringLiteral("Seleziona una tariffa!"));
    return false;
  }
  const Chiave k = ChiaveDi(it);
  if (!Conferma(QStringLiteral("Vuoi eliminare la tariffa %1?").arg(Nome(k)))) return false;
  try {
    db_.Execute(Sql(QStringLiteral("DELETE FROM %1").arg(NomeTabella())) + Dove(k));
  } catch (const VbError& e) {
    ErroreDb(QStringLiteral("Impossibile eliminare la tariffa."), e);
    return false;
  }
  lista_->clearSelection();
  Ricarica();
  return true;
}

}  // namespace vorn
