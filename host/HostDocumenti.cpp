#include "HostDocumenti.h"

#include <QCloseEvent>
#include <QComboBox>
#include <QDateEdit>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>
#include <algorithm>
#include <cmath>

#include "Messages.h"
#include "ModADO.h"
#include "ModDoc.h"
#include "NumericSpin.h"
#include "OCPrestKT.h"
#include "ProcedureUi.h"

using namespace prestkt;

namespace vorn {

namespace {

QString Importo(double v) { return Format(v, QStringLiteral("#,##0.00")); }
// A whole quantity without a decimal comma of its own.
QString Quantita(double v) {
  return Format(v, v == std::floor(v) ? QStringLiteral("#,##0") : QStringLiteral("#,##0.00###"));
}

QPushButton* Pulsante(QWidget* parent, const QString& testo, const QString& nome) {
  auto* b = Nome(new QPushButton(testo, parent), nome);
  b->setAutoDefault(false);
  return b;
}

QTreeWidget* Lista(QWidget* parent, const QString& nome, const QStringList& colonne, int allungata) {
  auto* t = Nome(new QTreeWidget(parent), nome);
  t->setRootIsDecorated(false);
  t->setAllColumnsShowFocus(true);
  t->setHeaderLabels(colonne);
  for (int c = 0; c < colonne.size(); ++c)
    t->header()->setSectionResizeMode(c, c == allungata ? QHeaderView::Stretch : QHeaderView::ResizeToContents);
  t->header()->setStretchLastSection(false);
  return t;
}

}  // namespace

const std::vector<TipoDocumento>& TipiDocumento() {
  static const std::vector<TipoDocumento> tipi = {
      {12, QStringLiteral("Ordine a fornitore"), QStringLiteral("DocForn"), QStringLiteral("DocFornDett"), 2, false,
       false},
      {15, QStringLiteral("Consegna da fornitore"), QStringLiteral("DocForn"), QStringLiteral("DocFornDett"), 2, false,
       true},
      {5, QStringLiteral("DDT a cliente"), QStringLiteral("Doc"), QStringLiteral("DocDett"), 1, true, false},
  };
  return tipi;
}

const TipoDocumento* TrovaTipoDocumento(int tipo) {
  for (const TipoDocumento& t : TipiDocumento())
    if (t.tipo == tipo) return &t;
  return nullptr;
}

std::function<std::optional<double>(int)> AliquoteIva(Database& db) {
  QMap<int, double> a;
  for (const Row& r : db.Select(Sql(QStringLiteral("SELECT CTabGen, Num1 FROM TabGen WHERE CTipTabGen=4"))).rows)
    a.insert(r[0].toInt(), r[1].toDouble());
  return [a](int codice) -> std::optional<double> {
    if (!a.contains(codice)) return std::nullopt;
    return a.value(codice);
  };
}

DocumentoDialog::DocumentoDialog(Database& db, OCPrestKT* ctl, int tipo, int nDoc, QWidget* parent)
    : QDialog(parent), db_(db), ctl_(ctl), tipo_(TrovaTipoDocumento(tipo)), nDoc_(nDoc) {
  if (!tipo_) tipo_ = &TipiDocumento().front();
  setObjectName(QStringLiteral("DocumentoDialog"));
  cbAnag = Nome(new QComboBox(this), QStringLiteral("cbAnag"));
  cbAnag->setMinimumWidth(320);
  dtData = Nome(new QDateEdit(QDate::currentDate(), this), QStringLiteral("dtData"));
  dtData->setDisplayFormat(QStringLiteral("dd/MM/yyyy"));
  dtData->setCalendarPopup(true);
  tbRiferimento = Nome(new QLineEdit(this), QStringLiteral("tbRiferimento"));
  tbRiferimento->setMaxLength(100);
  cbIva = Nome(new QComboBox(this), QStringLiteral("cbIva"));
  spSconto = Nome(new NumericSpin(this, QStringLiteral("#,##0.00")), QStringLiteral("spSconto"));
  spSconto->setRange(0, 100);
  spSconto->setMaximumWidth(120);
  lblNumero = Nome(new QLabel(this), QStringLiteral("lblNumero"));
  lblTotali = Nome(new QLabel(this), QStringLiteral("lblTotali"));
  auto* testa = new QFormLayout;
  testa->addRow(QStringLiteral("Numero"), lblNumero);
  testa->addRow(tipo_->tAnag == 1 ? QStringLiteral("Cliente") : QStringLiteral("Fornitore"), cbAnag);
  testa->addRow(QStringLiteral("Data"), dtData);
  testa->addRow(QStringLiteral("Riferimento"), tbRiferimento);
  testa->addRow(QStringLiteral("Codice IVA"), cbIva);
  testa->addRow(QStringLiteral("Sconto %"), spSconto);

  twRighe = Lista(this, QStringLiteral("twRighe"),
                  {QStringLiteral("Riga"), QStringLiteral("Descrizione"), QStringLiteral("Qtà"), QStringLiteral("Prezzo"),
                   QStringLiteral("Importo"),
                   tipo_->consegna ? QStringLiteral("Riga d'ordine") : QStringLiteral("Disposizione"),
                   QStringLiteral("Prestazioni")},
                  1);
  twRighe->setMinimumSize(900, 220);

  btnAggiungi = Pulsante(this,
                         tipo_->consegna ? QStringLiteral("Aggiungi riga da ordine...")
                                         : QStringLiteral("Aggiungi riga da progetto..."),
                         QStringLiteral("btnAggiungi"));
  btnModifica = Pulsante(this, QStringLiteral("Modifica riga..."), QStringLiteral("btnModifica"));
  btnElimina = Pulsante(this, QStringLiteral("Elimina riga"), QStringLiteral("btnElimina"));
  btnSalva = Pulsante(this, QStringLiteral("Salva"), QStringLiteral("btnSalva"));
  btnChiudi = Pulsante(this, QStringLiteral("Chiudi"), QStringLiteral("btnChiudi"));
  btnSalva->setShortcut(QKeySequence::Save);
  btnElimina->setShortcut(QKeySequence::Delete);
  auto* pulsanti = new QHBoxLayout;
  for (QPushButton* b : {btnAggiungi, btnModifica, btnElimina}) pulsanti->addWidget(b);
  pulsanti->addStretch(1);
  pulsanti->addWidget(btnSalva);
  pulsanti->addWidget(btnChiudi);

  auto* v = new QVBoxLayout(this);
  v->addLayout(testa);
  v->addWidget(twRighe, 1);
  v->addWidget(lblTotali, 0, Qt::AlignRight);
  v->addLayout(pulsanti);

  connect(btnAggiungi, &QPushButton::clicked, this, &DocumentoDialog::AggiungiRiga);
  connect(btnModifica, &QPushButton::clicked, this, &DocumentoDialog::ModificaRiga);
  connect(twRighe, &QTreeWidget::itemDoubleClicked, this, &DocumentoDialog::ModificaRiga);
  connect(btnElimina, &QPushButton::clicked, this, &DocumentoDialog::EliminaRiga);
  connect(btnSalva, &QPushButton::clicked, this, [this] { Salva(); });
  connect(btnChiudi, &QPushButton::clicked, this, &QDialog::reject);
  Carica();
  connect(cbAnag, &QComboBox::currentIndexChanged, this, &DocumentoDialog::Cambiato);
  connect(dtData, &QDateEdit::dateChanged, this, &DocumentoDialog::Cambiato);
  connect(tbRiferimento, &QLineEdit::textEdited, this, &DocumentoDialog::Cambiato);
  connect(cbIva, &QComboBox::currentIndexChanged, this, [this] {
    Cambiato();
    MostraTotali();
  });
  connect(spSconto, &QDoubleSpinBox::valueChanged, this, [this] {
    Cambiato();
    MostraTotali();
  });
}

void DocumentoDialog::Carica() {
  setWindowTitle(tipo_->nome + (nDoc_ > 0 ? QStringLiteral(" n. %1").arg(nDoc_) : QStringLiteral(" (nuovo)")));
  lblNumero->setText(nDoc_ > 0 ? N(nDoc_) : QStringLiteral("(al salvataggio)"));
  CaricaCombo(cbAnag,
              Sql(QStringLiteral("SELECT CAnag, RagSoc1 FROM Anagrafica WHERE Eliminato=0 AND TAnag=") +
                  N(tipo_->tAnag) + QStringLiteral(" ORDER BY RagSoc1")),
              0, 1, 0, QStringLiteral("{scegli}"));
  CaricaCombo(cbIva,
              Sql(QStringLiteral("SELECT CTabGen, DTabGen FROM TabGen WHERE CTipTabGen=4 ORDER BY Bool3, Num1")), 0, 1,
              0, QStringLiteral("{dalle righe}"));
  righe_.clear();
  salvate_.clear();
  ordiniSalvati_.clear();
  try {
    aliquote_ = AliquoteIva(db_);
    if (nDoc_ > 0) {
      const QString chiave = QStringLiteral(" WHERE TipoDoc=") + N(tipo_->tipo) + QStringLiteral(" AND NDoc=") + N(nDoc_);
      const auto testa = db_.Select(
          Sql(QStringLiteral("SELECT CAnag, Data, Riferimento, CIva, ValSconto FROM [%1]").arg(tipo_->tabella) + chiave));
      if (!testa.rows.empty()) {
        const Row& t = testa.rows[0];
        SetCBValue(cbAnag, t[0].toInt(), 0);
        dtData->setDate(CDate(t[1]).date());
        tbRiferimento->setText(NullToStr(t[2]));
        SetCBValue(cbIva, t[3].toInt(), 0);
        spSconto->SetValue(t[4].toDouble());
      }
      const auto righe = db_.Select(
          Sql(QStringLiteral("SELECT r.Riga, r.DArt, r.NotaArt, r.Qta, r.PzVend, r.ValRic, r.CCaus, r.CIVA, r.NDocRif, "
                             "r.RigaRif, l.RigaD, l.CProject, l.CDisp FROM [%1] r LEFT JOIN ProjectsDocDett l ON "
                             "l.TipoDoc=r.TipoDoc AND l.NDoc=r.NDoc AND l.Scheda=r.Scheda AND l.Riga=r.Riga WHERE "
                             "r.Scheda=0 AND r.TipoDoc=")
                  .arg(tipo_->righe) +
              N(tipo_->tipo) + QStringLiteral(" AND r.NDoc=") + N(nDoc_) + QStringLiteral(" ORDER BY r.Riga")));
      for (const Row& r : righe.rows) {
        RigaDocumento x;
        x.riga = r[0].toInt();
        x.dArt = NullToStr(r[1]);
        x.notaArt = NullToStr(r[2]);
        x.qta = r[3].toDouble();
        x.prezzo = r[4].toDouble();
        x.valRic = r[5].toDouble();
        x.causale = r[6].toInt();
        x.iva = r[7].toInt();
        x.nDocRif = tipo_->consegna ? r[8].toInt() : 0;
        x.rigaRif = tipo_->consegna ? r[9].toInt() : 0;
        x.rigaD = r[10].toInt();
        x.cProject = r[11].toInt();
        x.cDisp = r[12].toInt();
        x.salvata = true;
        salvate_.insert(x.riga);
        if (x.nDocRif) ordiniSalvati_.insert({x.nDocRif, x.rigaRif});
        righe_.push_back(x);
      }
    }
  } catch (const VbError& e) {
    MessageBoxVorn(QStringLiteral("Impossibile leggere il documento:\n") + e.Description(), vbCritical, windowTitle());
  }
  // A delivery's lines are the host's own: they reach no disposition directly.
  if (!tipo_->consegna) ctl_->IniTabDoc(d_, fd_, fdd_, causale_, tipo_->tipo, nDoc_, nDoc_ == 0);
  MostraRighe();
  modificato_ = false;
}

void DocumentoDialog::Cambiato() {
  modificato_ = true;
}

void DocumentoDialog::MostraRighe() {
  twRighe->clear();
  for (const RigaDocumento& r : righe_) {
    QString legame;
    if (r.cProject)
      legame = Format(r.cProject, QStringLiteral("0000-00000")) + QLatin1Char('/') + Format(r.cDisp, QStringLiteral("000"));
    else if (r.nDocRif)
      legame = Format(r.nDocRif, QStringLiteral("0000-00000")) + QLatin1Char('/') + N(r.rigaRif);
    auto* it = new QTreeWidgetItem(twRighe, {N(r.riga), r.dArt, Quantita(r.qta), Format(r.prezzo, QStringLiteral("#,##0.00###")),
                                             Importo(Round(r.qta * r.prezzo * (1 - r.valRic / 100), 2)), legame,
                                             r.notaArt});
    it->setData(0, Qt::UserRole, r.riga);
    for (int c : {0, 2, 3, 4}) it->setTextAlignment(c, Qt::AlignRight | Qt::AlignVCenter);
  }
  btnModifica->setEnabled(!righe_.empty());
  btnElimina->setEnabled(!righe_.empty());
  // The lines were chosen for this party: it stays while they are there.
  cbAnag->setEnabled(righe_.empty() || !(tipo_->ddt || tipo_->consegna));
  MostraTotali();
}

Totali DocumentoDialog::TotaliDocumento() const {
  std::vector<RigaTotali> righe;
  for (const RigaDocumento& r : righe_) righe.push_back({r.qta, r.prezzo, r.valRic, r.iva});
  return CalcolaTotali(righe, spSconto->Value(), GetCBValue(cbIva),
                       aliquote_ ? aliquote_ : [](int) -> std::optional<double> { return std::nullopt; });
}

void DocumentoDialog::MostraTotali() {
  const Totali t = TotaliDocumento();
  lblTotali->setText(QStringLiteral("Imponibile: %1     IVA: %2     Totale: %3")
                         .arg(Importo(t.imponibile), Importo(t.iva), Importo(Round(t.totale(), 2))));
}

RigaDocumento* DocumentoDialog::RigaSelezionata() {
  QTreeWidgetItem* it = twRighe->currentItem();
  if (!it) return nullptr;
  for (RigaDocumento& r : righe_)
    if (r.riga == it->data(0, Qt::UserRole).toInt()) return &r;
  return nullptr;
}

RigaDocumento& DocumentoDialog::NuovaRiga() {
  RigaDocumento nuova;
  for (const RigaDocumento& x : righe_) nuova.riga = std::max(nuova.riga, x.riga);
  ++nuova.riga;
  righe_.push_back(nuova);
  return righe_.back();
}

void DocumentoDialog::AggiungiRiga() {
  const int cAnag = GetCBValue(cbAnag);
  if (tipo_->ddt || tipo_->consegna) {
    if (cAnag <= 0) {
      MessageBoxVorn(tipo_->ddt ? QStringLiteral("Scegli il cliente del documento.")
                                : QStringLiteral("Scegli il fornitore del documento."),
                     vbExclamation, windowTitle());
      cbAnag->setFocus();
      return;
    }
  }
  if (tipo_->consegna) {
    RigaOrdineDialog dlg(db_, cAnag, nDoc_, righe_, nullptr, this);
    if (dlg.exec() != QDialog::Accepted) return;
    RigaDocumento& r = NuovaRiga();
    const int riga = r.riga;
    r = dlg.risultato;
    r.riga = riga;
    Cambiato();
    MostraRighe();
  } else if (tipo_->ddt) {
    ctl_->AddLineToDDT(this, d_, fd_, fdd_, tipo_->tAnag, cAnag);
  } else {
    ctl_->AddLineToDoc(this, d_, fd_, fdd_, causale_);
  }
}

void DocumentoDialog::ModificaRiga() {
  RigaDocumento* r = RigaSelezionata();
  if (!r) return;
  if (tipo_->consegna) {
    RigaOrdineDialog dlg(db_, GetCBValue(cbAnag), nDoc_, righe_, r, this);
    if (dlg.exec() != QDialog::Accepted) return;
    r->qta = dlg.risultato.qta;
    r->prezzo = dlg.risultato.prezzo;
    r->causale = dlg.risultato.causale;
    Cambiato();
    MostraRighe();
    return;
  }
  if (r->rigaD == 0) return;
  if (tipo_->ddt) ctl_->EditLineToDDT(this, d_, fd_, fdd_, tipo_->tAnag, GetCBValue(cbAnag), r->rigaD);
  else ctl_->EditLineToDoc(this, d_, fd_, fdd_, r->rigaD);
}

void DocumentoDialog::EliminaRiga() {
  const RigaDocumento* r = RigaSelezionata();
  if (!r) return;
  if (MessageBoxVorn(QStringLiteral("Vuoi eliminare la riga %1?").arg(r->riga), vbYesNo + vbQuestion + vbDefaultButton2,
                     windowTitle()) != vbYes)
    return;
  const int rigaD = r->rigaD;
  const int riga = r->riga;
  if (rigaD > 0) {
    try {
      CancellaFiltrati(fd_, QStringLiteral("RigaD=") + N(rigaD));
      CancellaFiltrati(fdd_, QStringLiteral("RigaD=") + N(rigaD));
    } catch (const VbError& e) {
      MessageBoxVorn(QStringLiteral("Riga non eliminata:\n") + e.Description(), vbExclamation, windowTitle());
      return;
    }
  }
  righe_.erase(std::remove_if(righe_.begin(), righe_.end(), [&](const RigaDocumento& x) { return x.riga == riga; }),
               righe_.end());
  Cambiato();
  MostraRighe();
}

// The line the component's screen made or changed becomes a line of this
// document: a new one takes the next number, and the link row learns it.
void DocumentoDialog::RigaDalComponente(RecordsetPtr& rcsFD, RecordsetPtr& rcsFDD, int& vRigaD, int& vMode) {
  Q_UNUSED(rcsFDD);
  try {
    rcsFD->SetFilter(QStringLiteral("RigaD=") + N(vRigaD));
    if (rcsFD->Eof()) return;
    RigaDocumento* r = nullptr;
    for (RigaDocumento& x : righe_)
      if (x.rigaD == vRigaD) r = &x;
    if (!r || vMode == 2) {
      r = &NuovaRiga();
      r->rigaD = vRigaD;
    }
    rcsFD->SetValue(QStringLiteral("Scheda"), 0);
    rcsFD->SetValue(QStringLiteral("Riga"), r->riga);
    rcsFD->Update();
    r->dArt = NullToStr(rcsFD->Value(QStringLiteral("DArt")));
    r->notaArt = NullToStr(rcsFD->Value(QStringLiteral("NotaArt")));
    r->qta = NullToZero(rcsFD->Value(QStringLiteral("Qta"))).toDouble();
    r->prezzo = NullToZero(rcsFD->Value(QStringLiteral("Importo"))).toDouble();
    r->causale = CInt(NullToZero(rcsFD->Value(QStringLiteral("CCaus"))));
    r->iva = CInt(NullToZero(rcsFD->Value(QStringLiteral("CIVA"))));
    r->cProject = CLng(NullToZero(rcsFD->Value(QStringLiteral("CProject"))));
    r->cDisp = CInt(NullToZero(rcsFD->Value(QStringLiteral("CDisp"))));
    rcsFD->SetFilter(QString());
    Cambiato();
  } catch (const VbError& e) {
    MessageBoxVorn(QStringLiteral("Riga non ricevuta:\n") + e.Description(), vbExclamation, windowTitle());
  }
  MostraRighe();
}

// A line written under its number: the fields this editor knows change, the
// others (prices the invoicing wrote, dates, quantities arrived) stay.
void DocumentoDialog::ScriviRiga(const RigaDocumento& r, int nDoc) {
  const QString chiave = QStringLiteral(" WHERE TipoDoc=") + N(tipo_->tipo) + QStringLiteral(" AND NDoc=") + N(nDoc) +
                         QStringLiteral(" AND Scheda=0 AND Riga=") + N(r.riga);
  if (!r.salvata) {
    db_.Execute(Sql(QStringLiteral("DELETE FROM [%1]").arg(tipo_->righe) + chiave));
    db_.Execute(Sql(QStringLiteral("INSERT INTO [%1] (TipoDoc, NDoc, Scheda, Riga, CodTesto) VALUES (")
                        .arg(tipo_->righe) +
                    N(tipo_->tipo) + QStringLiteral(", ") + N(nDoc) + QStringLiteral(", 0, ") + N(r.riga) +
                    QStringLiteral(", '>')")));
  }
  db_.Execute(Sql(QStringLiteral("UPDATE [%1] SET DArt=").arg(tipo_->righe)) + Sql::Param(r.dArt) +
              Sql(QStringLiteral(", NotaArt=")) + Sql::Param(r.notaArt) + Sql(QStringLiteral(", Qta=")) +
              Sql::Param(r.qta) + Sql(QStringLiteral(", CCaus=")) + Sql::Param(r.causale) +
              Sql(QStringLiteral(", PzVend=")) + Sql::Param(r.prezzo) + Sql(QStringLiteral(", CIVA=")) +
              Sql::Param(r.iva) + Sql(QStringLiteral(", TipoDocRif=")) + Sql::Param(r.nDocRif ? 12 : 0) +
              Sql(QStringLiteral(", NDocRif=")) + Sql::Param(r.nDocRif) + Sql(QStringLiteral(", RigaRif=")) +
              Sql::Param(r.rigaRif) + Sql(chiave));
}

// What arrived on each order line is the sum of the deliveries that point to it.
void DocumentoDialog::ContaArrivi(const QSet<QPair<int, int>>& righeOrdine) {
  for (const QPair<int, int>& o : righeOrdine) {
    const QString rif = QStringLiteral(" AND NDocRif=") + N(o.first) + QStringLiteral(" AND RigaRif=") + N(o.second);
    const auto somma = db_.Select(Sql(QStringLiteral("SELECT Sum(Qta) FROM DocFornDett WHERE TipoDoc=15 AND "
                                                     "TipoDocRif=12 AND Scheda=0") +
                                      rif));
    const double arrivata = somma.rows.empty() ? 0 : somma.rows[0][0].toDouble();
    db_.Execute(Sql(QStringLiteral("UPDATE DocFornDett SET QtaArr=")) + Sql::Param(arrivata) +
                Sql(QStringLiteral(" WHERE TipoDoc=12 AND Scheda=0 AND NDoc=") + N(o.first) +
                    QStringLiteral(" AND Riga=") + N(o.second)));
  }
}

bool DocumentoDialog::Salva() {
  const int cAnag = GetCBValue(cbAnag);
  if (cAnag <= 0) {
    MessageBoxVorn(tipo_->tAnag == 1 ? QStringLiteral("Scegli il cliente del documento.")
                                     : QStringLiteral("Scegli il fornitore del documento."),
                   vbExclamation, windowTitle());
    cbAnag->setFocus();
    return false;
  }
  const QString tipo = N(tipo_->tipo);
  const Totali tot = TotaliDocumento();
  QSet<QPair<int, int>> ordini = ordiniSalvati_;
  for (const RigaDocumento& r : righe_)
    if (r.nDocRif) ordini.insert({r.nDocRif, r.rigaRif});
  int nDoc = nDoc_;
  try {
    db_.BeginTrans();
    try {
      if (nDoc == 0) {
        const auto r = db_.Select(Sql(QStringLiteral("SELECT Max(NDoc) FROM [%1] WHERE TipoDoc=").arg(tipo_->tabella) + tipo));
        nDoc = (r.rows.empty() ? 0 : r.rows[0][0].toInt()) + 1;
        db_.Execute(Sql(QStringLiteral("INSERT INTO [%1] (TipoDoc, NDoc) VALUES (").arg(tipo_->tabella) + tipo +
                        QStringLiteral(", ") + N(nDoc) + QStringLiteral(")")));
      }
      const QString chiave = QStringLiteral(" WHERE TipoDoc=") + tipo + QStringLiteral(" AND NDoc=") + N(nDoc);
      db_.Execute(Sql(QStringLiteral("UPDATE [%1] SET Data=").arg(tipo_->tabella)) +
                  Sql::Param(QDateTime(dtData->date(), QTime(0, 0))) + Sql(QStringLiteral(", Riferimento=")) +
                  Sql::Param(tbRiferimento->text()) + Sql(QStringLiteral(", TAnag=")) + Sql::Param(tipo_->tAnag) +
                  Sql(QStringLiteral(", CAnag=")) + Sql::Param(cAnag) + Sql(QStringLiteral(", CIva=")) +
                  Sql::Param(GetCBValue(cbIva)) + Sql(QStringLiteral(", ValSconto=")) + Sql::Param(spSconto->Value()) +
                  Sql(QStringLiteral(", ImpDoc=")) + Sql::Param(tot.imponibile) + Sql(QStringLiteral(", IVADoc=")) +
                  Sql::Param(tot.iva) + Sql(QStringLiteral(", TotDoc=")) + Sql::Param(tot.totale()) + Sql(chiave));
      // Lines gone from the document leave the table; the others are written.
      QSet<int> tenute;
      for (const RigaDocumento& r : righe_)
        if (r.salvata) tenute.insert(r.riga);
      for (int riga : salvate_)
        if (!tenute.contains(riga))
          db_.Execute(Sql(QStringLiteral("DELETE FROM [%1]").arg(tipo_->righe) + chiave +
                          QStringLiteral(" AND Scheda=0 AND Riga=") + N(riga)));
      for (const RigaDocumento& r : righe_) ScriviRiga(r, nDoc);
      if (tipo_->consegna) ContaArrivi(ordini);
      // The links of the lines, in the same transaction as the document.
      else ctl_->SaveDataDoc(tipo_->tipo, nDoc, fd_, fdd_);
      db_.CommitTrans();
    } catch (...) {
      db_.Rollback();
      throw;
    }
  } catch (const VbError& e) {
    MessageBoxVorn(QStringLiteral("Impossibile salvare il documento:\n") + e.Description(), vbCritical, windowTitle());
    return false;
  }
  nDoc_ = nDoc;
  salvate_.clear();
  ordiniSalvati_.clear();
  for (RigaDocumento& r : righe_) {
    r.salvata = true;
    salvate_.insert(r.riga);
    if (r.nDocRif) ordiniSalvati_.insert({r.nDocRif, r.rigaRif});
  }
  modificato_ = false;
  setWindowTitle(tipo_->nome + QStringLiteral(" n. %1").arg(nDoc_));
  lblNumero->setText(N(nDoc_));
  return true;
}

bool DocumentoDialog::PuoChiudere() {
  if (!modificato_) return true;
  const int r = MessageBoxVorn(QStringLiteral("Vuoi salvare prima di uscire?"), vbYesNo + vbQuestion + vbDefaultButton2,
                               windowTitle());
  return r != vbYes || Salva();
}

void DocumentoDialog::reject() {
  if (PuoChiudere()) QDialog::reject();
}

void DocumentoDialog::closeEvent(QCloseEvent* e) {
  if (PuoChiudere()) {
    modificato_ = false;  // asked once: the reject that follows closes
    QDialog::closeEvent(e);
  } else {
    e->ignore();
  }
}

// --- A delivery's line --------------------------------------------------------

RigaOrdineDialog::RigaOrdineDialog(Database& db, int cAnag, int nDoc, const std::vector<RigaDocumento>& righe,
                                   const RigaDocumento* riga, QWidget* parent)
    : QDialog(parent), db_(db) {
  setObjectName(QStringLiteral("RigaOrdineDialog"));
  setWindowTitle(riga ? QStringLiteral("Modifica riga di consegna") : QStringLiteral("Riga da ordine a fornitore"));
  twOrdini = Lista(this, QStringLiteral("twOrdini"),
                   {QStringLiteral("Ordine"), QStringLiteral("Data"), QStringLiteral("Riga"), QStringLiteral("Descrizione"),
                    QStringLiteral("Ordinata"), QStringLiteral("Da evadere"), QStringLiteral("Prezzo")},
                   3);
  twOrdini->setMinimumSize(760, 200);
  spQta = Nome(new NumericSpin(this, QStringLiteral("#,##0.00")), QStringLiteral("spQta"));
  spPrezzo = Nome(new NumericSpin(this, QStringLiteral("#,##0.00###")), QStringLiteral("spPrezzo"));
  cbCausale = Nome(new QComboBox(this), QStringLiteral("cbCausale"));
  CaricaCombo(cbCausale,
              Sql(QStringLiteral("SELECT CTabGen, DTabGen FROM TabGen WHERE CTipTabGen=1 ORDER BY DTabGen")), 0, 1, 0,
              QStringLiteral("{scegli}"));
  btnOK = Nome(new QPushButton(QStringLiteral("OK"), this), QStringLiteral("btnOK"));
  btnAnnulla = Nome(new QPushButton(QStringLiteral("Annulla"), this), QStringLiteral("btnAnnulla"));
  btnOK->setDefault(true);
  auto* campi = new QFormLayout;
  campi->addRow(QStringLiteral("Quantità arrivata"), spQta);
  campi->addRow(QStringLiteral("Prezzo"), spPrezzo);
  campi->addRow(QStringLiteral("Causale"), cbCausale);
  auto* pulsanti = new QHBoxLayout;
  pulsanti->addStretch(1);
  pulsanti->addWidget(btnOK);
  pulsanti->addWidget(btnAnnulla);
  auto* v = new QVBoxLayout(this);
  v->addWidget(twOrdini, 1);
  v->addLayout(campi);
  v->addLayout(pulsanti);
  connect(btnOK, &QPushButton::clicked, this, &RigaOrdineDialog::Conferma);
  connect(btnAnnulla, &QPushButton::clicked, this, &QDialog::reject);
  connect(twOrdini, &QTreeWidget::currentItemChanged, this, &RigaOrdineDialog::Scelta);

  // What is still to deliver on each order line: ordered, less cancelled,
  // less what other deliveries brought, less this document's other lines.
  QMap<QPair<int, int>, double> arrivata;
  try {
    const QString ordiniFornitore =
        QStringLiteral(" IN (SELECT NDoc FROM DocForn WHERE TipoDoc=12 AND TAnag=2 AND CAnag=") + N(cAnag) +
        QStringLiteral(")");
    for (const Row& r : db_.Select(Sql(QStringLiteral("SELECT NDocRif, RigaRif, Sum(Qta) FROM DocFornDett WHERE "
                                                      "TipoDoc=15 AND TipoDocRif=12 AND Scheda=0 AND NDoc<>") +
                                       N(nDoc) + QStringLiteral(" AND NDocRif") + ordiniFornitore +
                                       QStringLiteral(" GROUP BY NDocRif, RigaRif")))
                            .rows)
      arrivata[{r[0].toInt(), r[1].toInt()}] += r[2].toDouble();
    for (const RigaDocumento& x : righe)
      if (x.nDocRif && &x != riga) arrivata[{x.nDocRif, x.rigaRif}] += x.qta;
    const auto ordini = db_.Select(Sql(
        QStringLiteral("SELECT d.NDoc, h.Data, d.Riga, d.DArt, d.Qta, d.Annullato, d.PzVend, d.CCaus, d.CIVA FROM "
                       "DocForn h INNER JOIN DocFornDett d ON d.TipoDoc=h.TipoDoc AND d.NDoc=h.NDoc WHERE "
                       "h.TipoDoc=12 AND d.Scheda=0 AND h.NDoc") +
        ordiniFornitore + QStringLiteral(" ORDER BY d.NDoc, d.Riga")));
    for (const Row& r : ordini.rows) {
      const int n = r[0].toInt(), rr = r[2].toInt();
      const double daEvadere = r[4].toDouble() - r[5].toDouble() - arrivata.value({n, rr});
      if (riga ? (n != riga->nDocRif || rr != riga->rigaRif) : daEvadere <= 0) continue;
      auto* it = new QTreeWidgetItem(twOrdini, {Format(n, QStringLiteral("0000-00000")),
                                                Format(CDate(r[1]), QStringLiteral("dd/mm/yyyy")), N(rr),
                                                NullToStr(r[3]), Quantita(r[4].toDouble() - r[5].toDouble()),
                                                Quantita(daEvadere), Format(r[6].toDouble(), QStringLiteral("#,##0.00###"))});
      for (int c : {2, 4, 5, 6}) it->setTextAlignment(c, Qt::AlignRight | Qt::AlignVCenter);
      it->setData(0, Qt::UserRole, n);
      it->setData(1, Qt::UserRole, rr);
      it->setData(2, Qt::UserRole, std::max(daEvadere, 0.0));
      it->setData(3, Qt::UserRole, r[6].toDouble());
      it->setData(4, Qt::UserRole, r[7].toInt());
      it->setData(5, Qt::UserRole, r[8].toInt());
      it->setData(6, Qt::UserRole, NullToStr(r[3]));
    }
  } catch (const VbError& e) {
    MessageBoxVorn(QStringLiteral("Impossibile leggere gli ordini:\n") + e.Description(), vbCritical, windowTitle());
  }
  if (riga) {
    risultato = *riga;
    twOrdini->setEnabled(false);
    if (twOrdini->topLevelItemCount() > 0) twOrdini->setCurrentItem(twOrdini->topLevelItem(0));
    spQta->SetValue(riga->qta);
    spPrezzo->SetValue(riga->prezzo);
    SetCBValue(cbCausale, riga->causale, 0);
  } else if (twOrdini->topLevelItemCount() > 0) {
    twOrdini->setCurrentItem(twOrdini->topLevelItem(0));
  }
}

// An order line chosen: it proposes what is left to deliver, at the order's price and reason.
void RigaOrdineDialog::Scelta() {
  const QTreeWidgetItem* it = twOrdini->currentItem();
  if (!it || !twOrdini->isEnabled()) return;
  spQta->SetValue(it->data(2, Qt::UserRole).toDouble());
  spPrezzo->SetValue(it->data(3, Qt::UserRole).toDouble());
  SetCBValue(cbCausale, it->data(4, Qt::UserRole).toInt(), 0);
}

bool RigaOrdineDialog::Conferma() {
  spQta->interpretText();
  spPrezzo->interpretText();
  const QTreeWidgetItem* it = twOrdini->currentItem();
  if (!it) {
    MessageBoxVorn(QStringLiteral("Scegli la riga d'ordine da evadere."), vbExclamation, windowTitle());
    twOrdini->setFocus();
    return false;
  }
  if (spQta->Value() <= 0) {
    MessageBoxVorn(QStringLiteral("Digita la quantità arrivata."), vbExclamation, windowTitle());
    spQta->setFocus();
    return false;
  }
  if (GetCBValue(cbCausale) <= 0) {
    MessageBoxVorn(QStringLiteral("Scegli la causale."), vbExclamation, windowTitle());
    cbCausale->setFocus();
    return false;
  }
  risultato.nDocRif = it->data(0, Qt::UserRole).toInt();
  risultato.rigaRif = it->data(1, Qt::UserRole).toInt();
  if (twOrdini->isEnabled()) {
    risultato.iva = it->data(5, Qt::UserRole).toInt();
    risultato.dArt = it->data(6, Qt::UserRole).toString();
  }
  risultato.qta = spQta->Value();
  risultato.prezzo = spPrezzo->Value();
  risultato.causale = GetCBValue(cbCausale);
  accept();
  return true;
}

// --- The documents kept -------------------------------------------------------

DocumentiDialog::DocumentiDialog(Database& db, QWidget* parent) : QDialog(parent), db_(db) {
  setObjectName(QStringLiteral("DocumentiDialog"));
  setWindowTitle(QStringLiteral("Documenti"));
  cbTipo = Nome(new QComboBox(this), QStringLiteral("cbTipo"));
  cbTipo->addItem(QStringLiteral("{tutti}"), 0);
  for (const TipoDocumento& t : TipiDocumento()) cbTipo->addItem(t.nome, t.tipo);
  twDocumenti = Lista(this, QStringLiteral("twDocumenti"),
                      {QStringLiteral("Documento"), QStringLiteral("Numero"), QStringLiteral("Data"),
                       QStringLiteral("Intestatario"), QStringLiteral("Riferimento"), QStringLiteral("Totale")},
                      3);
  twDocumenti->setMinimumSize(820, 360);
  twDocumenti->setSortingEnabled(false);
  btnApri = Nome(new QPushButton(QStringLiteral("Apri"), this), QStringLiteral("btnApri"));
  btnChiudi = Nome(new QPushButton(QStringLiteral("Chiudi"), this), QStringLiteral("btnChiudi"));
  btnApri->setDefault(true);
  auto* filtro = new QFormLayout;
  filtro->addRow(QStringLiteral("Tipo"), cbTipo);
  auto* pulsanti = new QHBoxLayout;
  pulsanti->addStretch(1);
  pulsanti->addWidget(btnApri);
  pulsanti->addWidget(btnChiudi);
  auto* v = new QVBoxLayout(this);
  v->addLayout(filtro);
  v->addWidget(twDocumenti, 1);
  v->addLayout(pulsanti);
  const auto apri = [this] {
    if (NDocScelto() == 0) return;
    emit Apri(TipoScelto(), NDocScelto());
    accept();
  };
  connect(btnApri, &QPushButton::clicked, this, apri);
  connect(twDocumenti, &QTreeWidget::itemActivated, this, apri);
  connect(btnChiudi, &QPushButton::clicked, this, &QDialog::reject);
  connect(cbTipo, &QComboBox::currentIndexChanged, this, &DocumentiDialog::Carica);
  Carica();
}

// The newest first, each kind read from its own table.
void DocumentiDialog::Carica() {
  twDocumenti->clear();
  struct Voce {
    QDateTime data;
    QStringList testi;
    int tipo, nDoc;
  };
  std::vector<Voce> voci;
  try {
    for (const TipoDocumento& t : TipiDocumento()) {
      if (cbTipo->currentData().toInt() != 0 && cbTipo->currentData().toInt() != t.tipo) continue;
      const auto r = db_.Select(Sql(QStringLiteral("SELECT h.NDoc, h.Data, a.RagSoc1, h.Riferimento, h.TotDoc FROM [%1] h "
                                                   "LEFT JOIN Anagrafica a ON a.TAnag=h.TAnag AND a.CAnag=h.CAnag "
                                                   "WHERE h.TipoDoc=")
                                        .arg(t.tabella) +
                                    N(t.tipo)));
      for (const Row& x : r.rows)
        voci.push_back({CDate(x[1]),
                        {t.nome, Format(x[0].toInt(), QStringLiteral("0000-00000")),
                         Format(CDate(x[1]), QStringLiteral("dd/mm/yyyy")), NullToStr(x[2]), NullToStr(x[3]),
                         Importo(x[4].toDouble())},
                        t.tipo, x[0].toInt()});
    }
  } catch (const VbError& e) {
    MessageBoxVorn(QStringLiteral("Impossibile leggere i documenti:\n") + e.Description(), vbCritical, windowTitle());
  }
  std::stable_sort(voci.begin(), voci.end(), [](const Voce& a, const Voce& b) {
    return a.data != b.data ? a.data > b.data : a.nDoc > b.nDoc;
  });
  QList<QTreeWidgetItem*> items;
  for (const Voce& v : voci) {
    auto* it = new QTreeWidgetItem(v.testi);
    it->setData(0, Qt::UserRole, v.tipo);
    it->setData(1, Qt::UserRole, v.nDoc);
    for (int c : {1, 5}) it->setTextAlignment(c, Qt::AlignRight | Qt::AlignVCenter);
    items << it;
  }
  twDocumenti->addTopLevelItems(items);
  if (!items.isEmpty()) twDocumenti->setCurrentItem(items.front());
  btnApri->setEnabled(!items.isEmpty());
}

int DocumentiDialog::TipoScelto() const {
  return twDocumenti->currentItem() ? twDocumenti->currentItem()->data(0, Qt::UserRole).toInt() : 0;
}

int DocumentiDialog::NDocScelto() const {
  return twDocumenti->currentItem() ? twDocumenti->currentItem()->data(1, Qt::UserRole).toInt() : 0;
}

}  // namespace vorn
