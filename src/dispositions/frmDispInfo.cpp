#include "frmDispInfo.h"

#include <QGridLayout>
#include <QLabel>
#include <QVBoxLayout>

#include "Guard.h"
#include "ModListViewKT.h"
#include "ModPrestKT.h"
#include "Procedure.h"

namespace prestkt {

namespace {

const QString kForm = QStringLiteral("frmDispInfo");


// The first day a date field can hold stands for "no date" and shows blank.
const QDate kNessunaData(1899, 12, 30);

QDateEdit* CampoData(QWidget* parent, const char* nome) {
  auto* d = new QDateEdit(parent);
  d->setObjectName(QString::fromLatin1(nome));
  d->setDisplayFormat(QStringLiteral("dd/MM/yyyy"));
  d->setMinimumDate(kNessunaData);
  d->setSpecialValueText(QStringLiteral(" "));
  d->setDate(kNessunaData);
  d->setMinimumWidth(110);
  d->setButtonSymbols(QAbstractSpinBox::NoButtons);
  return d;
}

}  // namespace

frmDispInfo::frmDispInfo(QWidget* parent) : Scheda(parent, QStringLiteral("frmDispInfo")) {
  CreaToolbar({{1, QStringLiteral("Esci"), QStringLiteral("application-exit")}});
  auto nome = [](auto* w, const char* n) {
    w->setObjectName(QString::fromLatin1(n));
    return w;
  };
  OCFrame1 = nome(new QGroupBox(this), "OCFrame1");
  TBNOrdF = nome(new QLineEdit(OCFrame1), "TBNOrdF");
  TBRiga = nome(new QLineEdit(OCFrame1), "TBRiga");
  DTOrd = CampoData(OCFrame1, "DTOrd");
  TBAnag = nome(new QLineEdit(OCFrame1), "TBAnag");
  DTCons = CampoData(OCFrame1, "DTCons");
  TBQtaOrd = nome(new QLineEdit(OCFrame1), "TBQtaOrd");
  TBQtaOrd->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
  OCCosto = nome(new NumericSpin(OCFrame1, QStringLiteral("#,##0.00")), "OCCosto");
  OCCosto->SetLocked(true);
  OCCosto->setMinimumWidth(110);
  TBNOrdF->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
  TBRiga->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
  TBNOrdF->setMaximumWidth(120);
  TBRiga->setMaximumWidth(60);
  TBQtaOrd->setMaximumWidth(120);
  auto* g1 = new QGridLayout(OCFrame1);
  g1->addWidget(new QLabel(QStringLiteral("Ordine a fornitore")), 0, 0);
  g1->addWidget(TBNOrdF, 0, 1);
  g1->addWidget(new QLabel(QStringLiteral("Riga")), 0, 2, Qt::AlignRight);
  g1->addWidget(TBRiga, 0, 3);
  g1->addWidget(new QLabel(QStringLiteral("Data ordine")), 0, 4, Qt::AlignRight);
  g1->addWidget(DTOrd, 0, 5);
  g1->addWidget(new QLabel(QStringLiteral("Fornitore")), 1, 0);
  g1->addWidget(TBAnag, 1, 1, 1, 3);
  g1->addWidget(new QLabel(QStringLiteral("Data cons")), 1, 4, Qt::AlignRight);
  g1->addWidget(DTCons, 1, 5);
  g1->addWidget(new QLabel(QStringLiteral("Q.tà ordinata")), 2, 0);
  g1->addWidget(TBQtaOrd, 2, 1);
  g1->addWidget(new QLabel(QStringLiteral("Costo")), 2, 4, Qt::AlignRight);
  g1->addWidget(OCCosto, 2, 5);
  g1->setColumnStretch(3, 1);
  OCFrame1->setEnabled(false);
  corpo->addWidget(OCFrame1);

  SSTab1 = nome(new QTabWidget(this), "SSTab1");
  lvwPrest = nome(new ListView, "lvwPrest");
  lvwForn = nome(new ListView, "lvwForn");
  SSTab1->addTab(Pagina(lvwPrest), QStringLiteral("Lavorazioni"));
  SSTab1->addTab(Pagina(lvwForn), QStringLiteral("Forniture"));
  SSTab1->setMinimumSize(640, 240);
  corpo->addWidget(SSTab1, 1);

  mnuF = Menu(QStringLiteral("mnuF"), QStringLiteral("&File"));
  mnuFE = Voce(mnuF, QStringLiteral("mnuFE"), QStringLiteral("&Esci"));
  connect(this, &Scheda::ToolbarClick, this, [this](int i) {
    if (i == 1) close();
  });
  connect(mnuFE, &QAction::triggered, this, [this] { close(); });
  connect(SSTab1, &QTabWidget::currentChanged, this, [this] { SSTab1_Click(); });
}

void frmDispInfo::Form_Load() {
  Guard g(kForm, QStringLiteral("Form_Load"));
  g([&] {
    ListViewReport(lvwPrest, false);
    ListViewSetColumns(lvwPrest, {QString(), QStringLiteral("Prestazioni")}, {270, 6600},
                       {lvwColumnLeft, lvwColumnLeft});
  });
  g([&] {
    ListViewReport(lvwForn, false);
    ListViewSetColumns(lvwForn,
                       {QString(), QStringLiteral("Prot."), QStringLiteral("Data"), QStringLiteral("Riferimento"),
                        QStringLiteral("Qta"), QStringLiteral("Importo"), QStringLiteral("C")},
                       {270, 1200, 1100, 2300, 800, 1200, 500},
                       {lvwColumnLeft, lvwColumnLeft, lvwColumnLeft, lvwColumnLeft, lvwColumnRight, lvwColumnRight,
                        lvwColumnLeft});
  });
  // Wide enough to show every column of the deliveries.
  g([&] { SSTab1->setMinimumWidth(lvwForn->Pixels(7370 + 500)); });
  // Placed on the screen once its lists have their widths.
  g([&] { Prepara(QStringLiteral("Info fornitura")); });
  g([&] { SSTab1->setCurrentIndex(0); });
  g([&] { CaricaTestata(); });
  g([&] { CaricaPrest(); });
  g([&] { CaricaForn(); });
}

// The head: the order line as the disposition's copy of the external work holds it.
void frmDispInfo::CaricaTestata() {
  Guard g(kForm, QStringLiteral("CaricaTestata"));
  g([&] {
    TBNOrdF->setText(N(NDoc));
    TBRiga->setText(N(Riga));
  });
  RecordsetPtr rs;
  g([&] {
    rs = gRcsLavExt->Clone();
    rs->SetFilter(QStringLiteral("CDisp=") + N(CDisp) + QStringLiteral(" AND RigaD=") + N(RigaD));
  });
  g([&] { DTOrd->setDate(CDate(rs->Value(QStringLiteral("DataDoc"))).date()); });
  g([&] { TBAnag->setText(NullToStr(rs->Value(QStringLiteral("RagSoc1")))); });
  g([&] { DTCons->setDate(CDate(rs->Value(QStringLiteral("DataCons"))).date()); });
  g([&] { TBQtaOrd->setText(CStr(Round(CDbl(rs->Value(QStringLiteral("Qta"))), 3))); });
  g([&] { OCCosto->SetValue(CDbl(rs->Value(QStringLiteral("Importo")))); });
}

void frmDispInfo::CaricaPrest() {
  Guard g(kForm, QStringLiteral("CaricaPrest"));
  g([&] {
    lvwPrest->setVisible(false);
    lvwPrest->ClearItems();
  });
  RecordsetPtr rs;
  g([&] {
    ApriRecordset(rs,
                  QStringLiteral("SELECT ProjectsDocDettPrest.SubRiga, ProjectsDocDettPrest.CPrestazione, "
                                 "[ABC:Prestazioni].DTabGen AS DPrestazione FROM ProjectsDocDettPrest INNER JOIN "
                                 "[ABC:Prestazioni] ON ProjectsDocDettPrest.CPrestazione = [ABC:Prestazioni].CTabGen "
                                 "WHERE ProjectsDocDettPrest.TipoDoc=12 AND ProjectsDocDettPrest.NDoc=") +
                      N(NDoc) + QStringLiteral(" AND ProjectsDocDettPrest.RigaD=") + N(RigaD) +
                      QStringLiteral(" ORDER BY ProjectsDocDettPrest.SubRiga; "),
                  nullptr, dbOpenSnapshot);
  });
  g([&] {
    for (; !rs->Eof(); rs->MoveNext())
      ListViewAddLine(lvwPrest, {QString(), NullToStr(rs->Value(QStringLiteral("DPrestazione")))},
                      QStringLiteral("K") + Format(rs->Value(QStringLiteral("SubRiga")), QStringLiteral("000")));
  });
  g([&] { lvwPrest->setVisible(true); });
}

void frmDispInfo::CaricaForn() {
  Guard g(kForm, QStringLiteral("CaricaForn"));
  g([&] {
    lvwForn->setVisible(false);
    lvwForn->ClearItems();
  });
  RecordsetPtr rs;
  g([&] {
    ApriRecordset(
        rs,
        QStringLiteral(
            "SELECT [Doc:Forniture].DataDoc, [Doc:Forniture].NDoc, [Doc:FornitureDett].Riga, "
            "[Doc:Forniture].Riferimento, [Doc:FornitureDett].Qta, [ABC:Causfatt].Sigla AS DCaus, "
            "[Doc:FornitureDett].Importo, [ABC:Causfatt].Bool8 AS Fatturabile, [Doc:FornitureDett].TipoDocRif, "
            "[Doc:FornitureDett].NDocRif, [Doc:FornitureDett].RigaRif FROM ([Doc:Forniture] INNER JOIN "
            "[Doc:FornitureDett] ON ([Doc:Forniture].NDoc = [Doc:FornitureDett].NDoc) AND ([Doc:Forniture].TipoDoc = "
            "[Doc:FornitureDett].TipoDoc)) INNER JOIN [ABC:Causfatt] ON [Doc:FornitureDett].CCaus = "
            "[ABC:Causfatt].CTabGen WHERE [Doc:Forniture].TipoDoc=15 AND [Doc:FornitureDett].TipoDocRif=12 AND "
            "[Doc:FornitureDett].NDocRif=") +
            N(NDoc) + QStringLiteral(" AND [Doc:FornitureDett].RigaRif=") + N(Riga) +
            QStringLiteral(" ORDER BY [Doc:Forniture].DataDoc, [Doc:Forniture].NDoc; "),
        nullptr, dbOpenSnapshot);
  });
  g([&] {
    for (; !rs->Eof(); rs->MoveNext()) {
      const QVariant nDoc = rs->Value(QStringLiteral("NDoc"));
      // Only a billable delivery counts its amount.
      const QVariant importo = CBool(NullToZero(rs->Value(QStringLiteral("Fatturabile"))))
                                   ? rs->Value(QStringLiteral("Importo"))
                                   : QVariant(0);
      ListViewAddLine(lvwForn,
                      {QString(), Format(nDoc, QStringLiteral("0000-00000")),
                       Format(rs->Value(QStringLiteral("DataDoc")), QStringLiteral("dd/mm/yyyy")),
                       NullToStr(rs->Value(QStringLiteral("Riferimento"))),
                       Format(rs->Value(QStringLiteral("Qta")), QStringLiteral("#,##0")),
                       Format(importo, QStringLiteral("#,##0.00")), NullToStr(rs->Value(QStringLiteral("DCaus")))},
                      QStringLiteral("K") + Format(15, QStringLiteral("000")) +
                          Format(nDoc, QStringLiteral("000000000")) +
                          Format(rs->Value(QStringLiteral("Riga")), QStringLiteral("000")));
    }
  });
  g([&] { lvwForn->setVisible(true); });
}

void frmDispInfo::SSTab1_Click() {
  Guard g(kForm, QStringLiteral("SSTab1_Click"));
  g([&] {
    ListView* lista = SSTab1->currentIndex() == 0 ? lvwPrest : lvwForn;
    if (lista->isEnabled() && lista->isVisible()) lista->setFocus();
  });
}

}  // namespace prestkt
