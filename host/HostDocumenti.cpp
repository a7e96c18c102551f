#include "HostDocumenti.h"

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
#include "OCPrestKT.h"
#include "ProcedureUi.h"

using namespace prestkt;

namespace vorn {

namespace {

const std::vector<TipoDocumento>& Tipi() {
  static const std::vector<TipoDocumento> tipi = {
      {12, QStringLiteral("Ordine a fornitore"), QStringLiteral("DocForn"), QStringLiteral("DocFornDett"), 2, false},
      {5, QStringLiteral("DDT a cliente"), QStringLiteral("Doc"), QStringLiteral("DocDett"), 1, true},
  };
  return tipi;
}


}  // namespace

const TipoDocumento* TrovaTipoDocumento(int tipo) {
  for (const TipoDocumento& t : Tipi())
    if (t.tipo == tipo) return &t;
  return nullptr;
}

DocumentoDialog::DocumentoDialog(Database& db, OCPrestKT* ctl, int tipo, int nDoc, QWidget* parent)
    : QDialog(parent), db_(db), ctl_(ctl), tipo_(TrovaTipoDocumento(tipo)), nDoc_(nDoc) {
  if (!tipo_) tipo_ = &Tipi().front();
  setObjectName(QStringLiteral("DocumentoDialog"));
  cbAnag = new QComboBox(this);
  cbAnag->setObjectName(QStringLiteral("cbAnag"));
  cbAnag->setMinimumWidth(320);
  dtData = new QDateEdit(QDate::currentDate(), this);
  dtData->setObjectName(QStringLiteral("dtData"));
  dtData->setDisplayFormat(QStringLiteral("dd/MM/yyyy"));
  dtData->setCalendarPopup(true);
  tbRiferimento = new QLineEdit(this);
  tbRiferimento->setObjectName(QStringLiteral("tbRiferimento"));
  tbRiferimento->setMaxLength(100);
  lblNumero = new QLabel(this);
  lblNumero->setObjectName(QStringLiteral("lblNumero"));
  auto* testa = new QFormLayout;
  testa->addRow(QStringLiteral("Numero"), lblNumero);
  testa->addRow(tipo_->ddt ? QStringLiteral("Cliente") : QStringLiteral("Fornitore"), cbAnag);
  testa->addRow(QStringLiteral("Data"), dtData);
  testa->addRow(QStringLiteral("Riferimento"), tbRiferimento);

  twRighe = new QTreeWidget(this);
  twRighe->setObjectName(QStringLiteral("twRighe"));
  twRighe->setRootIsDecorated(false);
  twRighe->setHeaderLabels({QStringLiteral("Riga"), QStringLiteral("Descrizione"), QStringLiteral("Qtà"),
                            QStringLiteral("Prezzo"), QStringLiteral("Disposizione"), QStringLiteral("Prestazioni")});
  for (int c : {0, 2, 3, 4}) twRighe->header()->setSectionResizeMode(c, QHeaderView::ResizeToContents);
  twRighe->header()->setSectionResizeMode(1, QHeaderView::Stretch);
  twRighe->header()->setStretchLastSection(false);
  twRighe->setMinimumSize(900, 220);

  btnAggiungi = new QPushButton(QStringLiteral("Aggiungi riga da progetto..."), this);
  btnAggiungi->setObjectName(QStringLiteral("btnAggiungi"));
  btnModifica = new QPushButton(QStringLiteral("Modifica riga..."), this);
  btnModifica->setObjectName(QStringLiteral("btnModifica"));
  btnElimina = new QPushButton(QStringLiteral("Elimina riga"), this);
  btnElimina->setObjectName(QStringLiteral("btnElimina"));
  btnSalva = new QPushButton(QStringLiteral("Salva"), this);
  btnSalva->setObjectName(QStringLiteral("btnSalva"));
  btnChiudi = new QPushButton(QStringLiteral("Chiudi"), this);
  btnChiudi->setObjectName(QStringLiteral("btnChiudi"));
  for (QPushButton* b : {btnAggiungi, btnModifica, btnElimina, btnSalva, btnChiudi}) b->setAutoDefault(false);
  auto* pulsanti = new QHBoxLayout;
  for (QPushButton* b : {btnAggiungi, btnModifica, btnElimina}) pulsanti->addWidget(b);
  pulsanti->addStretch(1);
  pulsanti->addWidget(btnSalva);
  pulsanti->addWidget(btnChiudi);

  auto* v = new QVBoxLayout(this);
  v->addLayout(testa);
  v->addWidget(twRighe, 1);
  v->addLayout(pulsanti);

  connect(btnAggiungi, &QPushButton::clicked, this, &DocumentoDialog::AggiungiRiga);
  connect(btnModifica, &QPushButton::clicked, this, &DocumentoDialog::ModificaRiga);
  connect(twRighe, &QTreeWidget::itemDoubleClicked, this, &DocumentoDialog::ModificaRiga);
  connect(btnElimina, &QPushButton::clicked, this, &DocumentoDialog::EliminaRiga);
  connect(btnSalva, &QPushButton::clicked, this, [this] { Salva(); });
  connect(btnChiudi, &QPushButton::clicked, this, &QDialog::reject);
  Carica();
}

void DocumentoDialog::Carica() {
  setWindowTitle(tipo_->nome + (nDoc_ > 0 ? QStringLiteral(" n. %1").arg(nDoc_) : QStringLiteral(" (nuovo)")));
  lblNumero->setText(nDoc_ > 0 ? N(nDoc_) : QStringLiteral("(al salvataggio)"));
  CaricaCombo(cbAnag,
              Sql(QStringLiteral("SELECT CAnag, RagSoc1 FROM Anagrafica WHERE Eliminato=0 AND TAnag=") +
                  N(tipo_->tAnag) + QStringLiteral(" ORDER BY RagSoc1")),
              0, 1, {}, QStringLiteral("{scegli}"));
  righe_.clear();
  if (nDoc_ > 0) {
    try {
      const auto testa = db_.Select(Sql(QStringLiteral("SELECT CAnag, Data, Riferimento FROM [%1] WHERE TipoDoc=")
                                            .arg(tipo_->tabella) +
                                        N(tipo_->tipo) + QStringLiteral(" AND NDoc=") + N(nDoc_)));
      if (!testa.rows.empty()) {
        SetCBValue(cbAnag, testa.rows[0][0].toInt(), 0);
        dtData->setDate(CDate(testa.rows[0][1]).date());
        tbRiferimento->setText(NullToStr(testa.rows[0][2]));
      }
      const auto righe = db_.Select(
          Sql(QStringLiteral("SELECT r.Riga, r.DArt, r.NotaArt, r.Qta, r.PzVend, r.CCaus, r.CIVA, l.RigaD, l.CProject, "
                             "l.CDisp FROM [%1] r LEFT JOIN ProjectsDocDett l ON l.TipoDoc=r.TipoDoc AND "
                             "l.NDoc=r.NDoc AND l.Scheda=r.Scheda AND l.Riga=r.Riga WHERE r.TipoDoc=")
                  .arg(tipo_->righe) +
              N(tipo_->tipo) + QStringLiteral(" AND r.NDoc=") + N(nDoc_) + QStringLiteral(" ORDER BY r.Riga")));
      for (const Row& r : righe.rows) {
        Riga x;
        x.riga = r[0].toInt();
        x.dArt = NullToStr(r[1]);
        x.notaArt = NullToStr(r[2]);
        x.qta = r[3].toDouble();
        x.prezzo = r[4].toDouble();
        x.causale = r[5].toInt();
        x.iva = r[6].toInt();
        x.rigaD = r[7].toInt();
        x.cProject = r[8].toInt();
        x.cDisp = r[9].toInt();
        righe_.push_back(x);
      }
    } catch (const VbError& e) {
      MessageBoxVorn(QStringLiteral("Impossibile leggere il documento:\n") + e.Description(), vbCritical, windowTitle());
    }
  }
  ctl_->IniTabDoc(d_, fd_, fdd_, causale_, tipo_->tipo, nDoc_, nDoc_ == 0);
  MostraRighe();
}

void DocumentoDialog::MostraRighe() {
  twRighe->clear();
  for (const Riga& r : righe_) {
    auto* it = new QTreeWidgetItem(
        twRighe, {N(r.riga), r.dArt,
                  // A whole quantity without a decimal comma of its own.
                  Format(r.qta, r.qta == std::floor(r.qta) ? QStringLiteral("#,##0") : QStringLiteral("#,##0.00###")),
                  Format(r.prezzo, QStringLiteral("#,##0.00###")),
                  r.cProject ? Format(r.cProject, QStringLiteral("0000-00000")) + QLatin1Char('/') +
                                   Format(r.cDisp, QStringLiteral("000"))
                             : QString(),
                  r.notaArt});
    it->setData(0, Qt::UserRole, r.riga);
  }
  btnModifica->setEnabled(!righe_.empty());
  btnElimina->setEnabled(!righe_.empty());
}

DocumentoDialog::Riga* DocumentoDialog::RigaSelezionata() {
  QTreeWidgetItem* it = twRighe->currentItem();
  if (!it) return nullptr;
  for (Riga& r : righe_)
    if (r.riga == it->data(0, Qt::UserRole).toInt()) return &r;
  return nullptr;
}

void DocumentoDialog::AggiungiRiga() {
  if (tipo_->ddt) {
    if (GetCBValue(cbAnag) <= 0) {
      MessageBoxVorn(QStringLiteral("Scegli il cliente del documento."), vbExclamation, windowTitle());
      return;
    }
    ctl_->AddLineToDDT(this, d_, fd_, fdd_, tipo_->tAnag, GetCBValue(cbAnag));
  } else {
    ctl_->AddLineToDoc(this, d_, fd_, fdd_, causale_);
  }
}

void DocumentoDialog::ModificaRiga() {
  const Riga* r = RigaSelezionata();
  if (!r || r->rigaD == 0) return;
  if (tipo_->ddt) ctl_->EditLineToDDT(this, d_, fd_, fdd_, tipo_->tAnag, GetCBValue(cbAnag), r->rigaD);
  else ctl_->EditLineToDoc(this, d_, fd_, fdd_, r->rigaD);
}

void DocumentoDialog::EliminaRiga() {
  const Riga* r = RigaSelezionata();
  if (!r) return;
  const int rigaD = r->rigaD;
  const int riga = r->riga;
  if (rigaD > 0) {
    try {
      CancellaFiltrati(fd_, QStringLiteral("RigaD=") + N(rigaD));
      CancellaFiltrati(fdd_, QStringLiteral("RigaD=") + N(rigaD));
    } catch (const VbError&) {
    }
  }
  righe_.erase(std::remove_if(righe_.begin(), righe_.end(), [&](const Riga& x) { return x.riga == riga; }),
               righe_.end());
  MostraRighe();
}

// The line the component's screen made or changed becomes a line of this
// document: a new one takes the next number, and the link row learns it.
void DocumentoDialog::RigaDalComponente(RecordsetPtr& rcsFD, RecordsetPtr& rcsFDD, int& vRigaD, int& vMode) {
  Q_UNUSED(rcsFDD);
  try {
    rcsFD->SetFilter(QStringLiteral("RigaD=") + N(vRigaD));
    if (rcsFD->Eof()) return;
    Riga* r = nullptr;
    for (Riga& x : righe_)
      if (x.rigaD == vRigaD) r = &x;
    if (!r || vMode == 2) {
      Riga nuova;
      for (const Riga& x : righe_) nuova.riga = std::max(nuova.riga, x.riga);
      ++nuova.riga;
      nuova.rigaD = vRigaD;
      righe_.push_back(nuova);
      r = &righe_.back();
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
  } catch (const VbError& e) {
    MessageBoxVorn(QStringLiteral("Riga non ricevuta:\n") + e.Description(), vbExclamation, windowTitle());
  }
  MostraRighe();
}

bool DocumentoDialog::Salva() {
  const int cAnag = GetCBValue(cbAnag);
  if (cAnag <= 0) {
    MessageBoxVorn(tipo_->ddt ? QStringLiteral("Scegli il cliente del documento.")
                              : QStringLiteral("Scegli il fornitore del documento."),
                   vbExclamation, windowTitle());
    return false;
  }
  const QString tipo = N(tipo_->tipo);
  try {
    db_.BeginTrans();
    try {
      int nDoc = nDoc_;
      if (nDoc == 0) {
        const auto r = db_.Select(Sql(QStringLiteral("SELECT Max(NDoc) FROM [%1] WHERE TipoDoc=").arg(tipo_->tabella) + tipo));
        nDoc = (r.rows.empty() ? 0 : r.rows[0][0].toInt()) + 1;
      }
      const QString chiave = QStringLiteral(" WHERE TipoDoc=") + tipo + QStringLiteral(" AND NDoc=") + N(nDoc);
      db_.Execute(Sql(QStringLiteral("DELETE FROM [%1]").arg(tipo_->righe) + chiave));
      db_.Execute(Sql(QStringLiteral("DELETE FROM [%1]").arg(tipo_->tabella) + chiave));
      db_.Execute(Sql(QStringLiteral("INSERT INTO [%1] (TipoDoc, NDoc, Data, Riferimento, TAnag, CAnag) VALUES (")
                          .arg(tipo_->tabella) +
                      tipo + QStringLiteral(", ") + N(nDoc) + QStringLiteral(", ")) +
                  Sql::Param(QDateTime(dtData->date(), QTime(0, 0))) + Sql(QStringLiteral(", ")) +
                  Sql::Param(tbRiferimento->text()) +
                  Sql(QStringLiteral(", %1, %2)").arg(tipo_->tAnag).arg(cAnag)));
      for (const Riga& r : righe_)
        db_.Execute(Sql(QStringLiteral("INSERT INTO [%1] (TipoDoc, NDoc, Scheda, Riga, CodTesto, DArt, NotaArt, Qta, "
                                       "CCaus, PzVend, CIVA) VALUES (")
                            .arg(tipo_->righe) +
                        tipo + QStringLiteral(", ") + N(nDoc) + QStringLiteral(", 0, ") + N(r.riga) +
                        QStringLiteral(", '>', ")) +
                    Sql::Param(r.dArt) + Sql(QStringLiteral(", ")) + Sql::Param(r.notaArt) + Sql(QStringLiteral(", ")) +
                    Sql::Param(r.qta) + Sql(QStringLiteral(", ")) + Sql::Param(r.causale) + Sql(QStringLiteral(", ")) +
                    Sql::Param(r.prezzo) + Sql(QStringLiteral(", ")) + Sql::Param(r.iva) + Sql(QStringLiteral(")")));
      // The links of the lines, in the same transaction as the document.
      ctl_->SaveDataDoc(tipo_->tipo, nDoc, fd_, fdd_);
      db_.CommitTrans();
      nDoc_ = nDoc;
    } catch (...) {
      db_.Rollback();
      throw;
    }
  } catch (const VbError& e) {
    MessageBoxVorn(QStringLiteral("Impossibile salvare il documento:\n") + e.Description(), vbCritical, windowTitle());
    return false;
  }
  setWindowTitle(tipo_->nome + QStringLiteral(" n. %1").arg(nDoc_));
  lblNumero->setText(N(nDoc_));
  return true;
}

}  // namespace vorn
