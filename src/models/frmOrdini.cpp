#include "frmOrdini.h"

#include "Guard.h"
#include "ModListViewKT.h"
#include "ModPrestKT.h"
#include "Procedure.h"

namespace prestkt {

namespace {
const QString kForm = QStringLiteral("frmOrdini");
}

frmOrdini::frmOrdini(QWidget* parent) : Scheda(parent, QStringLiteral("frmOrdini")) {
  CreaToolbar({{1, QStringLiteral("Esci"), QStringLiteral("application-exit")},
               {3, QStringLiteral("Salva"), QStringLiteral("document-save")}});
  ListView1 = new ListView(this);
  ListView1->setObjectName(QStringLiteral("ListView1"));
  ListView1->setMinimumSize(720, 300);
  corpo->addWidget(ListView1);
  mnuF = Menu(QStringLiteral("mnuF"), QStringLiteral("&File"));
  mnuFS = Voce(mnuF, QStringLiteral("mnuFS"), QStringLiteral("&Salva"));
  mnuFE = Voce(mnuF, QStringLiteral("mnuFE"), QStringLiteral("&Esci"));
  connect(this, &Scheda::ToolbarClick, this, [this](int i) {
    if (i == 1) EseguiComando(0);
    if (i == 3) EseguiComando(1);
  });
  connect(mnuFS, &QAction::triggered, this, [this] { EseguiComando(1); });
  connect(mnuFE, &QAction::triggered, this, [this] { EseguiComando(0); });
  connect(ListView1, &ListView::DblClick, this, [this] {
    if (ListView1->Count() > 0) EseguiComando(1);
  });
}

void frmOrdini::Form_Load() {
  Prepara(QStringLiteral("Ordini aperti"));
  ListViewReport(ListView1, false);
  ListViewSetColumns(ListView1,
                     {QString(), QStringLiteral("Ordine n°"), QStringLiteral("R"), QStringLiteral("Data"),
                      QStringLiteral("Codice"), QStringLiteral("Descrizione"), QStringLiteral("Qta"),
                      QStringLiteral("Cons.")},
                     {270, 1300, 500, 1100, 1400, 4000, 800, 1100},
                     {lvwColumnLeft, lvwColumnLeft, lvwColumnRight, lvwColumnLeft, lvwColumnLeft, lvwColumnLeft,
                      lvwColumnRight, lvwColumnLeft});
}

void frmOrdini::showEvent(QShowEvent* e) {
  Scheda::showEvent(e);
  if (caricato_) return;
  caricato_ = true;
  CaricaOrdini();
  ListView1->setFocus();
}

// The model's own line is always offered; any other line already taken by a model is not.
bool frmOrdini::RigaLibera(int nDoc, int riga) {
  bool libera = true;
  try {
    if (NDoc * Riga != 0 && NDoc == nDoc && Riga == riga) return true;
    RecordsetPtr rs;
    ApriRecordset(rs,
                  QStringLiteral("SELECT TipoDocRif, NDocRif, RigaRif FROM Projects GROUP BY TipoDocRif, NDocRif, "
                                 "RigaRif HAVING TipoDocRif=2 AND NDocRif=") +
                      QString::number(nDoc) + QStringLiteral(" AND RigaRif=") + QString::number(riga) +
                      QStringLiteral(" "),
                  nullptr, dbOpenSnapshot);
    if (rs->RecordCount() > 0) libera = false;
  } catch (...) {
    // A failing query offers the line.
  }
  return libera;
}

void frmOrdini::CaricaOrdini() {
  Guard g(kForm, QStringLiteral("CaricaOrdini"));
  g([&] {
    ListView1->setVisible(false);
    ListView1->ClearItems();
  });
  RecordsetPtr rs;
  g([&] {
    ApriRecordset(rs,
                  QStringLiteral("SELECT Doc.TipoDoc, Doc.NDoc, DocDett.Riga, Doc.TAnag, Doc.CAnag, DocDett.CodTesto, "
                                 "DocDett.DArt, DocDett.Qta, DocDett.DataCons, Doc.Data FROM Doc INNER JOIN DocDett ON "
                                 "(Doc.TipoDoc = DocDett.TipoDoc) AND (Doc.NDoc = DocDett.NDoc) WHERE "
                                 "(((Doc.TipoDoc)=2) AND ((Doc.TAnag)=") +
                      QString::number(TAnag) + QStringLiteral(") AND ((Doc.CAnag)=") + QString::number(CAnag) +
                      QStringLiteral(") AND ((Doc.Data)>Date()-1000)); "),
                  nullptr, dbOpenSnapshot);
  });
  g([&] {
    for (; !rs->Eof(); rs->MoveNext()) {
      const QVariant nDoc = rs->Value(QStringLiteral("NDoc"));
      const QVariant riga = rs->Value(QStringLiteral("Riga"));
      if (!RigaLibera(CLng(nDoc), CInt(riga))) continue;
      ListViewAddLine(ListView1,
                      {QString(), Format(nDoc, QStringLiteral("0000-00000")), Format(riga, QStringLiteral("000")),
                       Format(rs->Value(QStringLiteral("Data")), QStringLiteral("dd/mm/yyyy")),
                       NullToStr(rs->Value(QStringLiteral("CodTesto"))), NullToStr(rs->Value(QStringLiteral("DArt"))),
                       Format(rs->Value(QStringLiteral("Qta")), QStringLiteral("#,##0")),
                       Format(rs->Value(QStringLiteral("DataCons")), QStringLiteral("dd/mm/yyyy"))},
                      QStringLiteral("K") + Format(nDoc, QStringLiteral("000000000")) +
                          Format(riga, QStringLiteral("0000")));
    }
  });
  g([&] {
    if (ListView1->Count() > 0) {
      if (NDoc * Riga == 0)
        ListView1->SetSelected(0);
      else
        FindInList(ListView1, QStringLiteral("K") + Format(NDoc, QStringLiteral("000000000")) +
                                  Format(Riga, QStringLiteral("0000")));
    }
  });
  g([&] { ListView1->setVisible(true); });
}

void frmOrdini::EseguiComando(int n) {
  if (n == 0) {
    close();
    return;
  }
  if (ListView1->Count() == 0) return;  // nothing to hand back; the screen stays
  try {
    const int r = ListView1->SelectedIndex();
    if (r < 0) return;
    const QString chiave = ListView1->Key(r);
    int nDoc = chiave.mid(1, 9).toInt();
    int riga = chiave.mid(10, 4).toInt();
    QString dArt = ListView1->Text(r, 5);
    emit LoadOrderRow(nDoc, riga, dArt);
    close();
  } catch (...) {
  }
}

}  // namespace prestkt
