#include "frmExecSposta.h"

#include "Guard.h"
#include "ModListViewKT.h"
#include "ModPrestKT.h"
#include "Procedure.h"

namespace prestkt {

namespace {
const QString kForm = QStringLiteral("frmExecSposta");
}

frmExecSposta::frmExecSposta(QWidget* parent) : Scheda(parent, QStringLiteral("frmExecSposta")) {
  CreaToolbar({{1, QStringLiteral("Esci"), QStringLiteral("application-exit")},
               {3, QStringLiteral("Salva"), QStringLiteral("document-save")}});
  ListView1 = new ListView(this);
  ListView1->setObjectName(QStringLiteral("ListView1"));
  ListView1->setMinimumHeight(300);
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
  connect(ListView1, &ListView::DblClick, this, [this] { EseguiComando(1); });
}

void frmExecSposta::Form_Load() {
  Guard g(kForm, QStringLiteral("Form_Load"));
  g([&] {
    ListViewReport(ListView1, false);
    ListViewSetColumns(
        ListView1,
        {QString(), QStringLiteral("Codice"), QStringLiteral("Modello"),
         QStringLiteral("Tipo Mod."), QStringLiteral("Disposizione"),
         QStringLiteral("Descrizione")},
        {270, 1500, 2500, 1400, 1500, 2500},
        {lvwColumnLeft, lvwColumnLeft, lvwColumnLeft, lvwColumnLeft, lvwColumnLeft, lvwColumnLeft});
  });
  // Wide enough to show every column.
  g([&] { ListView1->setMinimumWidth(ListView1->Pixels(9670 + 400)); });
  // Placed on the screen once its lists have their widths.
  g([&] { Prepara(QStringLiteral("Sposta prestazioni")); });
  g([&] { CaricaList(); });
}

void frmExecSposta::CaricaList() {
  Guard g(kForm, QStringLiteral("CaricaList"));
  g([&] {
    ListView1->setVisible(false);
    ListView1->ClearItems();
  });
  RecordsetPtr rs;
  g([&] {
    ApriRecordset(
        rs,
        QStringLiteral(
            "SELECT Projects.CProject, ProjectsDisp.CDisp, Projects.DProject, "
            "ProjectsTipo.DPrjTipo, ProjectsDisp.DDisp, "
            "ProjectsDispTipo.DPrjDispTipo FROM ((Projects INNER JOIN ProjectsDisp ON "
            "Projects.CProject = "
            "ProjectsDisp.CProject) INNER JOIN ProjectsDispTipo ON ProjectsDisp.CPrjDispTipo = "
            "ProjectsDispTipo.CPrjDispTipo) INNER JOIN ProjectsTipo ON Projects.CPrjTipo = "
            "ProjectsTipo.CPrjTipo WHERE "
            "Projects.TAnag=") +
            QString::number(TAnag) + QStringLiteral(" AND Projects.CAnag=") +
            QString::number(CAnag) +
            QStringLiteral(
                " AND Projects.Stato=0 AND ProjectsDisp.CStato=0 ORDER BY Projects.DProject, "
                "ProjectsDisp.DDisp; "),
        nullptr, dbOpenSnapshot);
  });
  g([&] {
    for (; !rs->Eof(); rs->MoveNext()) {
      const QVariant cProject = rs->Value(QStringLiteral("CProject"));
      const QVariant cDisp = rs->Value(QStringLiteral("CDisp"));
      // The disposition the activities come from is no destination.
      if (CLng(cProject) == CProject && CLng(cDisp) == CDisp) continue;
      ListViewAddLine(ListView1,
                      {QString(),
                       Format(cProject, QStringLiteral("0000-00000")) + QLatin1Char('-') +
                           Format(cDisp, QStringLiteral("000")),
                       NullToStr(rs->Value(QStringLiteral("DProject"))),
                       NullToStr(rs->Value(QStringLiteral("DPrjTipo"))),
                       NullToStr(rs->Value(QStringLiteral("DPrjDispTipo"))),
                       NullToStr(rs->Value(QStringLiteral("DDisp")))},
                      QStringLiteral("K") + Format(cProject, QStringLiteral("000000000")) +
                          Format(cDisp, QStringLiteral("000")));
    }
  });
  g([&] {
    if (ListView1->Count() > 0) ListView1->SetSelected(0);
  });
  g([&] { ListView1->setVisible(true); });
}

void frmExecSposta::EseguiComando(int n) {
  if (n == 0) {
    close();
    return;
  }
  if (ListView1->Count() == 0) return;  // nowhere to move to; the screen stays
  try {
    const int r = ListView1->SelectedIndex();
    if (r < 0) return;
    if (MessageBoxVorn(
            QStringLiteral("Vuoi spostare le prestazioni selezionate nella disposizione n° ") +
                ListView1->Text(r, 1) + QStringLiteral("?"),
            vbYesNo | vbQuestion | vbDefaultButton2) != vbYes)
      return;
    const QString chiave = ListView1->Key(r);
    CProject = chiave.mid(1, 9).toInt();
    CDisp = chiave.mid(10, 3).toInt();
    emit Sposta(CProject, CDisp);
    close();
  } catch (...) {
    // A failure leaves the screen as it is.
  }
}

}  // namespace prestkt
