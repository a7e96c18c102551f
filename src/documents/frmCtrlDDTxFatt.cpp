#include "frmCtrlDDTxFatt.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QScrollBar>
#include <QLabel>
#include <optional>

#include "Guard.h"
#include "ModDoc.h"
#include "ModListViewKT.h"
#include "Procedure.h"
#include "ProcedureUi.h"
#include "frmCalcPzVend.h"

namespace prestkt {

namespace {

const QString kForm = QStringLiteral("frmCtrlDDTxFatt");

RecordsetPtr Vuoto(const std::vector<std::pair<QString, int>>& campi) {
  RecordsetPtr rs = Recordset::Create();
  for (const auto& [nome, tipo] : campi)
    rs->Append(nome, tipo, tipo == adVarChar ? (nome == QLatin1String("RagSoc1") ? 100 : 255) : 0);
  rs->Open();
  return rs;
}

}  // namespace

frmCtrlDDTxFatt::frmCtrlDDTxFatt(QWidget* parent) : Scheda(parent, kForm) {
  CreaToolbar({{1, QStringLiteral("Esci"), QStringLiteral("application-exit")},
               {3, QStringLiteral("Calcola"), QStringLiteral("accessories-calculator")}});
  DTPicker1 = Nome(new QDateEdit(this), QStringLiteral("DTPicker1"));
  DTPicker2 = Nome(new QDateEdit(this), QStringLiteral("DTPicker2"));
  for (QDateEdit* d : {DTPicker1, DTPicker2}) {
    d->setDisplayFormat(QStringLiteral("dd/MM/yyyy"));
    d->setCalendarPopup(true);
  }
  auto* periodo = new QHBoxLayout;
  periodo->addWidget(new QLabel(QStringLiteral("Dal:"), this));
  periodo->addWidget(DTPicker1);
  periodo->addWidget(new QLabel(QStringLiteral("Al:"), this));
  periodo->addWidget(DTPicker2);
  periodo->addStretch(1);
  corpo->addLayout(periodo);
  ListView1 = Nome(new ListView(this), QStringLiteral("ListView1"));
  ListView1->setMinimumHeight(320);
  corpo->addWidget(ListView1, 1);
  mnuF = Menu(QStringLiteral("mnuF"), QStringLiteral("&File"));
  mnuCalc = Voce(mnuF, QStringLiteral("mnuCalc"), QStringLiteral("Calcola"));
  mnuFE = Voce(mnuF, QStringLiteral("mnuFE"), QStringLiteral("&Esci"));
  connect(this, &Scheda::ToolbarClick, this, [this](int i) {
    if (i == 1) EseguiComando(0);
    if (i == 3) EseguiComando(1);
  });
  connect(mnuCalc, &QAction::triggered, this, [this] { EseguiComando(1); });
  connect(mnuFE, &QAction::triggered, this, [this] { EseguiComando(0); });
  for (QDateEdit* d : {DTPicker1, DTPicker2})
    connect(d, &QDateEdit::dateChanged, this, [this] {
      if (caricato_) CaricaDati();
    });
}

void frmCtrlDDTxFatt::Form_Load() {
  Guard g(kForm, QStringLiteral("Form_Load"));
  Guard silenzioso(kForm, QStringLiteral("Form_Load"), Guard::Silent);
  silenzioso([&] {
    const auto periodo = PeriodoDelMese(Today().date());
    DTPicker1->setDate(periodo.first);
    DTPicker2->setDate(periodo.second);
  });
  Guard colonne(kForm, QStringLiteral("Form_Load"), Guard::Silent);
  colonne([&] {
    ListViewReport(ListView1, false);
    ListViewSetColumns(ListView1,
                       {QString(), QStringLiteral("Mod/Disp"), QStringLiteral("Ragione sociale"),
                        QStringLiteral("Modello"), QStringLiteral("Disposizione"), QStringLiteral("Tipo Disp."),
                        QStringLiteral("Q.tà"), QStringLiteral("Importo")},
                       {270, 1500, 2000, 2000, 1300, 2000, 900, 1100},
                       {lvwColumnLeft, lvwColumnLeft, lvwColumnLeft, lvwColumnLeft, lvwColumnLeft, lvwColumnLeft,
                        lvwColumnRight, lvwColumnRight});
  });
  // Wide enough to show every column.
  colonne([&] { LarghezzaColonne(ListView1); });
  g([&] { Prepara(QStringLiteral("Controllo DDT per fatturazione")); });
  g([&] { CaricaDati(); });
  caricato_ = true;
}

void frmCtrlDDTxFatt::CaricaDati() {
  Guard g(kForm, QStringLiteral("CaricaDati"));
  g([&] {
    riepilogo_ = Vuoto({{QStringLiteral("CProject"), adDouble},
                        {QStringLiteral("CDisp"), adDouble},
                        {QStringLiteral("RagSoc1"), adVarChar},
                        {QStringLiteral("DProject"), adVarChar},
                        {QStringLiteral("DPrjTipo"), adVarChar},
                        {QStringLiteral("DDisp"), adVarChar},
                        {QStringLiteral("DPrjDispTipo"), adVarChar},
                        {QStringLiteral("Qta"), adDouble},
                        {QStringLiteral("Importo"), adDouble}});
  });
  g([&] {
    righe_ = Vuoto({{QStringLiteral("CProject"), adDouble},
                    {QStringLiteral("CDisp"), adDouble},
                    {QStringLiteral("TipoDoc"), adInteger},
                    {QStringLiteral("NDoc"), adBigInt},
                    {QStringLiteral("Scheda"), adInteger},
                    {QStringLiteral("Riga"), adInteger}});
  });
  // The delivery notes of the period that no invoice took yet.
  g([&] {
    RecordsetPtr rs;
    ApriRecordset(rs,
                  QStringLiteral("SELECT Doc.TipoDoc, Doc.NDoc, Doc.Data, Doc.Riferimento, Anagrafica.RagSoc1 FROM (Doc "
                                 "INNER JOIN Anagrafica ON (Doc.TAnag = Anagrafica.TAnag) AND (Doc.CAnag = "
                                 "Anagrafica.CAnag)) LEFT JOIN DocSchede ON (Doc.TipoDoc = DocSchede.TipoDocAss) AND "
                                 "(Doc.NDoc = DocSchede.NDocAss) WHERE (((DocSchede.TipoDoc) Is Null)) GROUP BY "
                                 "Doc.TipoDoc, Doc.NDoc, Doc.Data, Doc.Riferimento, Anagrafica.RagSoc1 HAVING "
                                 "Doc.TipoDoc=5 AND (Doc.Data Between ") +
                      DataSql(QDateTime(DTPicker1->date(), QTime(0, 0))) + QStringLiteral(" And ") +
                      DataSql(QDateTime(DTPicker2->date(), QTime(0, 0))) + QStringLiteral(") "),
                  nullptr, dbOpenSnapshot);
    documenti_.reset();
    DAO2ADO(rs, documenti_);
  });
  g([&] { documenti_->SetSort(QStringLiteral("NDoc")); });
  if (!documenti_ || !riepilogo_ || !righe_) return;
  // Where each disposition stands in the summary: its position, found without a filter per line.
  QHash<QPair<qint64, qint64>, int> posizione;
  const auto campo = [](const RecordsetPtr& rs, const char* nome) { return rs->Value(QString::fromLatin1(nome)); };
  g([&] {
    for (documenti_->MoveFirst(); !documenti_->Eof(); documenti_->MoveNext()) {
      RecordsetPtr righe;
      g([&] {
        ApriRecordset(
            righe,
            QStringLiteral(
                "SELECT Anagrafica.RagSoc1, ProjectsDocDett.CProject, Projects.DProject, ProjectsTipo.DPrjTipo, "
                "ProjectsDocDett.CDisp, ProjectsDisp.DDisp, ProjectsDispTipo.DPrjDispTipo, ProjectsDocDett.Qta, "
                "ProjectsDocDett.Importo, ProjectsDocDett.TipoDoc, ProjectsDocDett.NDoc, ProjectsDocDett.Scheda, "
                "ProjectsDocDett.Riga FROM (((((ProjectsDocDett INNER JOIN [ABC:Causfatt] ON ProjectsDocDett.CCaus = "
                "[ABC:Causfatt].CTabGen) INNER JOIN ProjectsDisp ON (ProjectsDocDett.CDisp = ProjectsDisp.CDisp) AND "
                "(ProjectsDocDett.CProject = ProjectsDisp.CProject)) INNER JOIN Projects ON ProjectsDocDett.CProject "
                "= Projects.CProject) INNER JOIN ProjectsTipo ON Projects.CPrjTipo = ProjectsTipo.CPrjTipo) INNER "
                "JOIN ProjectsDispTipo ON ProjectsDisp.CPrjDispTipo = ProjectsDispTipo.CPrjDispTipo) INNER JOIN "
                "Anagrafica ON (Projects.CAnag = Anagrafica.CAnag) AND (Projects.TAnag = Anagrafica.TAnag) WHERE "
                "ProjectsDocDett.TipoDoc=5 AND ProjectsDocDett.NDoc=") +
                CStr(campo(documenti_, "NDoc")) + QStringLiteral(" AND [ABC:Causfatt].Bool8=-1; "),
            nullptr, dbOpenSnapshot);
        if (!righe) Raise(err::ObjectNotSet);
      });
      if (!righe) continue;
      for (; !righe->Eof(); righe->MoveNext()) {
        g([&] {
          const QPair<qint64, qint64> chiave(CLng(campo(righe, "CProject")), CLng(campo(righe, "CDisp")));
          const double qta = CDbl(NullToZero(campo(righe, "Qta")));
          const double importo = CDbl(NullToZero(campo(righe, "Importo")));
          const auto trovata = posizione.constFind(chiave);
          if (trovata != posizione.constEnd()) {
            // The quantities add up; the price shown is the last positive one met.
            riepilogo_->SetAbsolutePosition(*trovata);
            riepilogo_->SetValue(QStringLiteral("Qta"), CDbl(riepilogo_->Value(QStringLiteral("Qta"))) + qta);
            if (importo > 0) riepilogo_->SetValue(QStringLiteral("Importo"), importo);
          } else {
            riepilogo_->AddNew();
            for (const char* nome : {"CProject", "CDisp", "RagSoc1", "DProject", "DPrjTipo", "DDisp", "DPrjDispTipo"})
              riepilogo_->SetValue(QString::fromLatin1(nome), campo(righe, nome));
            riepilogo_->SetValue(QStringLiteral("Qta"), qta);
            riepilogo_->SetValue(QStringLiteral("Importo"), importo);
          }
          riepilogo_->Update();
          if (trovata == posizione.constEnd()) posizione.insert(chiave, riepilogo_->RecordCount());
        });
        g([&] {
          righe_->AddNew();
          for (const char* nome : {"CProject", "CDisp", "TipoDoc", "NDoc", "Scheda", "Riga"})
            righe_->SetValue(QString::fromLatin1(nome), campo(righe, nome));
          righe_->Update();
        });
      }
    }
  });
  g([&] { CaricaList(); });
}

void frmCtrlDDTxFatt::CaricaList() {
  Guard g(kForm, QStringLiteral("CaricaList"));
  g([&] { ListView1->setVisible(false); });
  g([&] { ListView1->ClearItems(); });
  g([&] {
    RecordsetPtr c = riepilogo_->Clone();
    c->SetSort(QStringLiteral("RagSoc1, DPrjTipo, DProject, DDisp"));
    for (c->MoveFirst(); !c->Eof(); c->MoveNext()) {
      g([&] {
        const QVariant cProject = c->Value(QStringLiteral("CProject")), cDisp = c->Value(QStringLiteral("CDisp"));
        ListViewAddLine(ListView1,
                        {QString(),
                         Format(cProject, QStringLiteral("0000-00000")) + QLatin1Char('/') +
                             Format(cDisp, QStringLiteral("0000")),
                         NullToStr(c->Value(QStringLiteral("RagSoc1"))),
                         NullToStr(c->Value(QStringLiteral("DPrjTipo"))) + QLatin1Char(' ') +
                             NullToStr(c->Value(QStringLiteral("DProject"))),
                         NullToStr(c->Value(QStringLiteral("DDisp"))),
                         NullToStr(c->Value(QStringLiteral("DPrjDispTipo"))), CStr(c->Value(QStringLiteral("Qta"))),
                         Format(c->Value(QStringLiteral("Importo")), QStringLiteral("#,##0.00"))},
                        QLatin1Char('K') + Format(cProject, QStringLiteral("000000000")) +
                            Format(cDisp, QStringLiteral("0000")));
      });
    }
  });
  g([&] { ListView1->setVisible(true); });
  // The first row stands selected, ready for Calcola.
  g([&] {
    if (ListView1->Count() > 0) ListView1->SetSelected(0);
  });
}

// The calculator on the selected disposition, for the quantity of all its notes of the period.
void frmCtrlDDTxFatt::Calcola() {
  Guard g(kForm, QStringLiteral("Calcola"));
  if (ListView1->Count() == 0) return;
  double qta = 0;
  if (!g([&] {
        const int r = ListView1->SelectedIndex();
        if (r < 0) Raise(err::ObjectNotSet);
        const QString chiave = ListView1->Key(r);
        CProject = chiave.mid(1, 9).toInt();
        CDisp = chiave.mid(10, 4).toInt();
        RecordsetPtr c = riepilogo_->Clone();
        c->SetFilter(QStringLiteral("CProject=") + QString::number(CProject) + QStringLiteral(" AND CDisp=") +
                     QString::number(CDisp));
        qta = CDbl(c->Value(QStringLiteral("Qta")));
      }))
    return;
  g([&] {
    frmCalcPzVend f(this);
    connect(&f, &frmCalcPzVend::SetPzVend, this, [this](double p) { fCalcPzVend_SetPzVend(p); },
            Qt::DirectConnection);
    f.Chiamante = objectName();
    f.CProject = CProject;
    f.CDisp = CDisp;
    f.Qta = qta;
    f.Mostra();
  });
}

void frmCtrlDDTxFatt::fCalcPzVend_SetPzVend(double PzVend) { AssegnaPZ(PzVend); }

// The price per piece into every note line of the disposition, and each note's totals anew.
void frmCtrlDDTxFatt::AssegnaPZ(double PzVend) {
  Guard g(kForm, QStringLiteral("AssegnaPZ"));
  RecordsetPtr c;
  g([&] {
    c = righe_->Clone();
    c->SetFilter(QStringLiteral("CProject=") + QString::number(CProject) + QStringLiteral(" AND CDisp=") +
                 QString::number(CDisp));
  });
  if (!c) return;
  const QString p = Str(PzVend);
  for (c->MoveFirst(); !c->Eof(); c->MoveNext()) {
    QString tipo, nDoc, scheda, riga;
    if (!g([&] {
          tipo = CStr(c->Value(QStringLiteral("TipoDoc")));
          nDoc = CStr(c->Value(QStringLiteral("NDoc")));
          scheda = CStr(c->Value(QStringLiteral("Scheda")));
          riga = CStr(c->Value(QStringLiteral("Riga")));
        }))
      continue;
    g([&] {
      gDB->Execute(QStringLiteral("UPDATE DocDett SET DocDett.PzVend = ") + p + QStringLiteral(", DocDett.PzVendP = ") +
                   p + QStringLiteral(", DocDett.Manifattura = ") + p + QStringLiteral(" WHERE DocDett.TipoDoc=") +
                   tipo + QStringLiteral(" AND DocDett.NDoc=") + nDoc + QStringLiteral(" AND DocDett.Scheda=") +
                   scheda + QStringLiteral(" AND DocDett.Riga=") + riga + QStringLiteral("; "));
    });
    g([&] {
      gDB->Execute(QStringLiteral("UPDATE ProjectsDocDett SET ProjectsDocDett.Importo = ") + p +
                   QStringLiteral(" WHERE ProjectsDocDett.TipoDoc=") + tipo +
                   QStringLiteral(" AND ProjectsDocDett.NDoc=") + nDoc +
                   QStringLiteral(" AND ProjectsDocDett.Scheda=") + scheda +
                   QStringLiteral(" AND ProjectsDocDett.Riga=") + riga + QStringLiteral("; "));
    });
    g([&] { RicalcTotDoc(tipo.toInt(), nDoc.toInt()); });
  }
  g([&] {
    const int r = ListView1->SelectedIndex();
    if (r < 0) Raise(err::ObjectNotSet);
    ListView1->SetSubItem(r, 7, Format(PzVend, QStringLiteral("#,##0.00")));
  });
  g([&] { ListView1->setFocus(); });
}

// The totals of a document from all its lines. Only the VAT code 2 is known
// here: a line of another code adds its amount and no tax, and the miss is logged.
void frmCtrlDDTxFatt::RicalcTotDoc(int TipoDoc, int NDoc) {
  Guard g(kForm, QStringLiteral("RicalcTotDoc"));
  RecordsetPtr iva, testa, righe;
  g([&] {
    RecordsetPtr rs;
    ApriRecordset(rs, QStringLiteral("SELECT CTabGen AS CIVA, Num1 AS IVA FROM TabGen WHERE CTipTabGen=4 AND CTabGen=2; "),
                  nullptr, dbOpenSnapshot);
    DAO2ADO(rs, iva);
  });
  const QString chiave = QStringLiteral(" WHERE TipoDoc=") + QString::number(TipoDoc) + QStringLiteral(" AND NDoc=") +
                         QString::number(NDoc) + QStringLiteral("; ");
  g([&] {
    ApriRecordset(testa, QStringLiteral("SELECT TipoDoc, NDoc, ImpDoc, IVADoc, TotDoc, ValSconto, CIva FROM Doc") + chiave);
  });
  if (g.If([&] { return testa->Eof(); })) return;
  double valSconto = 0;
  int h = 0;
  g([&] {
    valSconto = CDbl(NullToZero(testa->Value(QStringLiteral("ValSconto"))));
    h = CLng(NullToZero(testa->Value(QStringLiteral("CIva"))));
  });
  std::vector<RigaTotali> linee;
  g([&] {
    ApriRecordset(righe, QStringLiteral("SELECT TipoDoc, NDoc, PzVend, Qta, ValRic, CIVA FROM DocDett") + chiave,
                  nullptr, dbOpenSnapshot);
    for (; !righe->Eof(); righe->MoveNext())
      linee.push_back({CDbl(NullToZero(righe->Value(QStringLiteral("Qta")))),
                       CDbl(NullToZero(righe->Value(QStringLiteral("PzVend")))),
                       CDbl(NullToZero(righe->Value(QStringLiteral("ValRic")))),
                       CLng(NullToZero(righe->Value(QStringLiteral("CIVA"))))});
  });
  const Totali t = CalcolaTotali(linee, valSconto, h, [&](int codice) -> std::optional<double> {
    std::optional<double> aliquota;
    g([&] {
      iva->SetFilter(QStringLiteral("CIVA=") + QString::number(codice));
      aliquota = CDbl(iva->Value(QStringLiteral("IVA")));
    });
    return aliquota;
  });
  g([&] {
    testa->Edit();
    testa->SetValue(QStringLiteral("ImpDoc"), t.imponibile);
    testa->SetValue(QStringLiteral("IVADoc"), t.iva);
    testa->SetValue(QStringLiteral("TotDoc"), t.totale());
    testa->Update();
  });
}

void frmCtrlDDTxFatt::EseguiComando(int n) {
  if (n == 0) close();
  else if (n == 1) Calcola();
}

}  // namespace prestkt
