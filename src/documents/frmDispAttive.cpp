#include "frmDispAttive.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QScrollBar>

#include "Guard.h"
#include "ModListViewKT.h"
#include "Procedure.h"

namespace prestkt {

namespace {
const QString kForm = QStringLiteral("frmDispAttive");
}

frmDispAttive::frmDispAttive(QWidget* parent) : Scheda(parent, QStringLiteral("frmDispAttive")) {
  CreaToolbar({{1, QStringLiteral("Esci"), QStringLiteral("application-exit")},
               {3, QStringLiteral("Seleziona"), QStringLiteral("go-next")}});
  CBAnag = new QComboBox(this);
  CBAnag->setObjectName(QStringLiteral("CBAnag"));
  CBAnag->setMinimumWidth(300);
  TBFind = new QLineEdit(this);
  TBFind->setObjectName(QStringLiteral("TBFind"));
  Command1 = new QPushButton(QStringLiteral("Trova"), this);
  Command1->setObjectName(QStringLiteral("Command1"));
  auto* filtri = new QHBoxLayout;
  filtri->addWidget(new QLabel(QStringLiteral("Anagrafica"), this));
  filtri->addWidget(CBAnag, 2);
  filtri->addWidget(new QLabel(QStringLiteral("Cerca"), this));
  filtri->addWidget(TBFind, 1);
  filtri->addWidget(Command1);
  corpo->addLayout(filtri);
  ListView1 = new ListView(this);
  ListView1->setObjectName(QStringLiteral("ListView1"));
  ListView1->setMinimumHeight(300);
  corpo->addWidget(ListView1);
  mnuF = Menu(QStringLiteral("mnuF"), QStringLiteral("&File"));
  mnuFS = Voce(mnuF, QStringLiteral("mnuFS"), QStringLiteral("&Seleziona"));
  mnuFE = Voce(mnuF, QStringLiteral("mnuFE"), QStringLiteral("&Esci"));
  connect(this, &Scheda::ToolbarClick, this, [this](int i) {
    if (i == 1) EseguiComando(0);
    if (i == 3) EseguiComando(1);
  });
  connect(mnuFS, &QAction::triggered, this, [this] { EseguiComando(1); });
  connect(mnuFE, &QAction::triggered, this, [this] { EseguiComando(0); });
  connect(ListView1, &ListView::DblClick, this, [this] { EseguiComando(1); });
  // The choice of a party rebuilds the list, also when it is the one chosen.
  connect(CBAnag, QOverload<int>::of(&QComboBox::activated), this, [this] { CaricaList(); });
  connect(TBFind, &QLineEdit::textEdited, this, [this] { cambiato_ = true; });
  // "Trova" only takes the focus: the search field, losing it, rebuilds the list.
  connect(Command1, &QPushButton::clicked, this, [this] { Command1->setFocus(); });
  TBFind->installEventFilter(this);
}

void frmDispAttive::Form_Load() {
  Guard g(kForm, QStringLiteral("Form_Load"));
  g([&] {
    ListViewReport(ListView1, false);
    ListViewSetColumns(ListView1,
                       {QString(), QStringLiteral("C.Prog."), QStringLiteral("Anagrafica"),
                        QStringLiteral("Progetto"), QStringLiteral("Disposizione"), QStringLiteral("Qta")},
                       {270, 1500, 2500, 3000, 3000, 900},
                       {lvwColumnLeft, lvwColumnLeft, lvwColumnLeft, lvwColumnLeft, lvwColumnLeft, lvwColumnRight});
  });
  // Wide enough to show every column.
  g([&] { LarghezzaColonne(ListView1); });
  g([&] { TBFind->clear(); });
  g([&] {
    RecordsetPtr rs;
    ApriRecordset(rs, QStringLiteral("SELECT * FROM ProjectsDispTipo"), nullptr, dbOpenSnapshot);
    if (!rs) Raise(err::ObjectNotSet);
    DAO2ADO(rs, tipi_);
  });
  g([&] { CaricaAnagrafiche(); });
  g([&] { Prepara(QStringLiteral("Progetti in  esecuzione")); });
}

// The parties of the rows, each once, sorted by name; for a delivery note the one party given.
void frmDispAttive::CaricaAnagrafiche() {
  anag_ = Recordset::Create();
  anag_->Append(QStringLiteral("ID"), adInteger, 4, adFldIsNullable | adFldMayBeNull);
  anag_->Append(QStringLiteral("TAnag"), adInteger, 4, adFldIsNullable | adFldMayBeNull);
  anag_->Append(QStringLiteral("CAnag"), adInteger, 4, adFldIsNullable | adFldMayBeNull);
  anag_->Append(QStringLiteral("RagSoc"), adVarChar, 200, adFldIsNullable | adFldMayBeNull);
  anag_->Open();
  const auto aggiungi = [&](const QVariant& tAnag, const QVariant& cAnag) {
    RecordsetPtr rs;
    ApriRecordset(rs,
                  QStringLiteral("SELECT TAnag, CAnag, RagSoc1 FROM Anagrafica WHERE TAnag=") + CStr(tAnag) +
                      QStringLiteral(" AND CAnag=") + CStr(cAnag),
                  nullptr, dbOpenSnapshot);
    anag_->AddNew();
    anag_->SetValue(QStringLiteral("ID"), anag_->RecordCount());
    anag_->SetValue(QStringLiteral("TAnag"), tAnag);
    anag_->SetValue(QStringLiteral("CAnag"), cAnag);
    anag_->SetValue(QStringLiteral("RagSoc"), rs && !rs->Eof() ? rs->Value(QStringLiteral("RagSoc1")) : QVariant());
    anag_->Update();
  };
  if (ForDDT) {
    aggiungi(vTAnagD, vCAnagD);
  } else if (recordset) {
    RecordsetPtr c = recordset->Clone();
    c->SetSort(QStringLiteral("TAnag, CAnag"));
    QVariant tPrima, cPrima;
    for (c->MoveFirst(); !c->Eof(); c->MoveNext()) {
      const QVariant t = c->Value(QStringLiteral("TAnag")), a = c->Value(QStringLiteral("CAnag"));
      if (!anag_->RecordCount() || CLng(t) != CLng(tPrima) || CLng(a) != CLng(cPrima)) aggiungi(t, a);
      tPrima = t;
      cPrima = a;
    }
  }
  anag_->SetSort(QStringLiteral("RagSoc"));
  CBAnag->clear();
  if (!ForDDT) CBAnag->addItem(QStringLiteral("{tutte}"), -1);
  for (anag_->MoveFirst(); !anag_->Eof(); anag_->MoveNext())
    CBAnag->addItem(NullToStr(anag_->Value(QStringLiteral("RagSoc"))), anag_->Value(QStringLiteral("ID")));
  CBAnag->setCurrentIndex(CBAnag->count() > 0 ? 0 : -1);
}

void frmDispAttive::showEvent(QShowEvent* e) {
  Scheda::showEvent(e);
  if (caricata_) return;
  caricata_ = true;
  CaricaList();
}

bool frmDispAttive::eventFilter(QObject* o, QEvent* e) {
  if (o == TBFind && e->type() == QEvent::FocusOut && cambiato_) {
    cambiato_ = false;
    CaricaList();
  }
  return Scheda::eventFilter(o, e);
}

void frmDispAttive::CaricaList() {
  Guard g(kForm, QStringLiteral("CaricaList"));
  g([&] { ListView1->ClearItems(); });
  RecordsetPtr c;
  g([&] {
    if (!recordset) Raise(err::ObjectNotSet);
    c = recordset->Clone();
    const int id = CBAnag->currentData().toInt();
    if (CBAnag->currentIndex() >= 0 && id >= 0) {
      anag_->SetFilter(QStringLiteral("ID=") + QString::number(id));
      if (!anag_->Eof())
        c->SetFilter(QStringLiteral("TAnag=") + CStr(anag_->Value(QStringLiteral("TAnag"))) +
                     QStringLiteral(" AND CAnag=") + CStr(anag_->Value(QStringLiteral("CAnag"))));
      anag_->SetFilter(QString());
    }
    c->SetSort(QStringLiteral("RagSoc1,DProject,CDisp"));
  });
  const QString cerca = TBFind->text().trimmed().toLower();
  g([&] {
    for (c->MoveFirst(); !c->Eof(); c->MoveNext()) {
      // Only dispositions invoiced by the piece can be picked.
      tipi_->SetFilter(QStringLiteral("CPrjDispTipo=") + CStr(NullToZero(c->Value(QStringLiteral("CPrjDispTipo")))));
      if (tipi_->Eof() || CInt(NullToZero(tipi_->Value(QStringLiteral("TipoFatt")))) != 2) continue;
      const QString tipoDisp = NullToStr(tipi_->Value(QStringLiteral("DPrjDispTipo")));
      const QVariant cProject = c->Value(QStringLiteral("CProject"));
      const QVariant cDisp = c->Value(QStringLiteral("CDisp"));
      const QString codice =
          Format(cProject, QStringLiteral("000000000")) + QLatin1Char('-') + Format(cDisp, QStringLiteral("000"));
      const QString dProject = NullToStr(c->Value(QStringLiteral("DProject")));
      const QString dDisp = NullToStr(c->Value(QStringLiteral("DDisp")));
      const QString tipoPrj = NullToStr(c->Value(QStringLiteral("DPrjTipo")));
      if (!cerca.isEmpty()) {
        bool trovato = false;
        for (const QString& testo : {dProject, dDisp, tipoPrj, tipoDisp, codice})
          trovato = trovato || testo.toLower().contains(cerca);
        if (!trovato) continue;
      }
      ListViewAddLine(ListView1,
                      {QString(), codice, NullToStr(c->Value(QStringLiteral("RagSoc1"))),
                       dProject + QStringLiteral(" (") + tipoPrj + QLatin1Char(')'),
                       dDisp + QStringLiteral(" (") + tipoDisp + QLatin1Char(')'),
                       Format(c->Value(QStringLiteral("Qta")), QStringLiteral("#,##0"))},
                      QStringLiteral("K") + Format(cProject, QStringLiteral("000000000")) +
                          Format(cDisp, QStringLiteral("000")));
    }
    tipi_->SetFilter(QString());
  });
  g([&] {
    if (ListView1->Count() > 0) ListView1->SetSelected(0);
  });
}

void frmDispAttive::EseguiComando(int n) {
  if (n == 0) {
    close();
    return;
  }
  if (ListView1->Count() == 0) return;  // nothing to pick; the screen stays
  const int r = ListView1->SelectedIndex();
  if (r < 0) return;
  const QString chiave = ListView1->Key(r);
  int cProject = chiave.mid(1, 9).toInt();
  int cDisp = chiave.mid(10).toInt();
  emit Reload(cProject, cDisp);
  close();
}

}  // namespace prestkt
