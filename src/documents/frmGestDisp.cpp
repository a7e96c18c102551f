#include "frmGestDisp.h"

#include <QGridLayout>
#include <QSignalBlocker>
#include <functional>

#include "Guard.h"
#include "ModListViewKT.h"
#include "Procedure.h"
#include "ProcedureUi.h"
#include "frmGestDispOK.h"

namespace prestkt {

namespace {

const QString kForm = QStringLiteral("frmGestDisp");

enum StatoLista { kAttive = 0, kChiuse = 1, kFatturate = 2 };

// Fills a combo without a click: adding entries chooses nothing, and the
// caller's selection that follows is the one click.
void Riempi(QComboBox* combo, const std::function<void()>& voci) {
  const QSignalBlocker blocco(combo);
  combo->clear();
  voci();
  combo->setCurrentIndex(-1);
}

// The one disposition behind a list row, open for writing.
Sql RigaDisp(int cProject, int cDisp) {
  return Sql(QStringLiteral("SELECT DtEnd, CStato FROM ProjectsDisp WHERE CProject=") + N(cProject) +
             QStringLiteral(" AND CDisp=") + N(cDisp) + QStringLiteral(" "));
}

// A row of ProjectsDisp to a billing state and closing date; each step goes
// through the caller's guard, so a row that can't be written is logged there.
void ScriviStato(Guard& g, const RecordsetPtr& rs, const QVariant& dtEnd, int cStato) {
  g([&] { rs->Edit(); });
  g([&] { rs->SetValue(QStringLiteral("DtEnd"), dtEnd); });
  g([&] { rs->SetValue(QStringLiteral("CStato"), cStato); });
  g([&] { rs->Update(); });
}

}  // namespace

frmGestDisp::frmGestDisp(QWidget* parent) : Scheda(parent, kForm) {
  CreaToolbar({{1, QStringLiteral("Esci"), QStringLiteral("application-exit")},
               {3, QStringLiteral("Applica"), QStringLiteral("go-next")}});
  CBStato = Nome(new QComboBox(this), QStringLiteral("CBStato"));
  CBTipoFatt = Nome(new QComboBox(this), QStringLiteral("CBTipoFatt"));
  CBAnag = Nome(new QComboBox(this), QStringLiteral("CBAnag"));
  CBAnag->setMinimumWidth(260);
  CBAnno = Nome(new QComboBox(this), QStringLiteral("CBAnno"));
  CBMesi = Nome(new QComboBox(this), QStringLiteral("CBMesi"));
  CBMesi->setMinimumWidth(130);
  lblPeriodo = Nome(new QLabel(this), QStringLiteral("lblPeriodo"));
  auto* filtri = new QGridLayout;
  filtri->addWidget(new QLabel(QStringLiteral("Stato"), this), 0, 0);
  filtri->addWidget(CBStato, 0, 1);
  filtri->addWidget(new QLabel(QStringLiteral("Fatturazione"), this), 0, 2);
  filtri->addWidget(CBTipoFatt, 0, 3);
  filtri->addWidget(new QLabel(QStringLiteral("Cliente"), this), 0, 4);
  filtri->addWidget(CBAnag, 0, 5);
  filtri->addWidget(lblPeriodo, 1, 0, 1, 2);
  filtri->addWidget(new QLabel(QStringLiteral("Anno"), this), 1, 2);
  filtri->addWidget(CBAnno, 1, 3);
  filtri->addWidget(new QLabel(QStringLiteral("Mese"), this), 1, 4);
  filtri->addWidget(CBMesi, 1, 5, Qt::AlignLeft);
  filtri->setColumnStretch(6, 1);
  corpo->addLayout(filtri);
  ListView1 = Nome(new ListView(this), QStringLiteral("ListView1"));
  ListView1->setMinimumSize(900, 420);
  corpo->addWidget(ListView1, 1);

  mnuMod = Menu(QStringLiteral("mnuMod"), QStringLiteral("Modifica"), true);
  mnuSel = Voce(mnuMod, QStringLiteral("mnuSel"), QStringLiteral("Seleziona tutti"));
  mnuDeSel = Voce(mnuMod, QStringLiteral("mnuDeSel"), QStringLiteral("Deseleziona tutti"));
  mnuSpcM = Separatore(mnuMod, QStringLiteral("mnuSpcM"));
  mnuModDisp = Voce(mnuMod, QStringLiteral("mnuModDisp"), QStringLiteral("Chiudi disposizioni"));

  connect(this, &Scheda::ToolbarClick, this, [this](int i) {
    if (i == 1) close();
    if (i == 3) ApplicaStato();
  });
  connect(mnuSel, &QAction::triggered, this, &frmGestDisp::mnuSel_Click);
  connect(mnuDeSel, &QAction::triggered, this, &frmGestDisp::mnuDeSel_Click);
  connect(mnuModDisp, &QAction::triggered, this, &frmGestDisp::mnuModDisp_Click);
  connect(ListView1, &ListView::RightButtonUp, this, [this](const QPoint& p) { mnuMod->popup(p); });
  connect(ListView1, &ListView::ColumnClick, this, &frmGestDisp::ListView1_ColumnClick);
  // A change of a filter, by the user or by the code, is the combo's click.
  const auto clic = [this](QComboBox* combo, void (frmGestDisp::*azione)()) {
    connect(combo, &QComboBox::currentIndexChanged, this, [this, azione](int i) {
      if (i >= 0) (this->*azione)();
    });
  };
  clic(CBStato, &frmGestDisp::CBStato_Click);
  clic(CBTipoFatt, &frmGestDisp::CaricaDati);
  clic(CBMesi, &frmGestDisp::CaricaDati);
  clic(CBAnag, &frmGestDisp::CaricaList);
  clic(CBAnno, &frmGestDisp::CaricaMesi);
}

void frmGestDisp::Form_Load() {
  Guard g(kForm, QStringLiteral("Form_Load"));
  // Until the first showing the clicks of the filters being filled load nothing.
  caricamento_ = true;
  g([&] {
    Riempi(CBTipoFatt, [&] {
      CBTipoFatt->addItem(QStringLiteral("Tutte"), -1);
      CBTipoFatt->addItem(QStringLiteral("Non fatt."), 0);
      CBTipoFatt->addItem(QStringLiteral("Oraria"), 1);
      CBTipoFatt->addItem(QStringLiteral("Pezzo"), 2);
    });
  });
  g([&] { CBTipoFatt->setCurrentIndex(0); });
  g([&] {
    Riempi(CBStato, [&] {
      for (const QString& s : {QStringLiteral("Disp.attive"), QStringLiteral("Disp.chiuse"),
                               QStringLiteral("Disp.fatturate")})
        CBStato->addItem(s);
    });
  });
  g([&] { CBStato->setCurrentIndex(kAttive); });
  g([&] { CaricaAnni(); });
  g([&] { CaricaAnag(); });
  g([&] { ListViewReport(ListView1, true); });
  g([&] { Prepara(QStringLiteral("Gestione disposizioni per fatturazione")); });
}

// The first showing ends the loading: the list is read once, with the filters as set.
void frmGestDisp::showEvent(QShowEvent* e) {
  Scheda::showEvent(e);
  if (!caricamento_) return;
  caricamento_ = false;
  CaricaDati();
}

// The parties of all models. A party is two fields and an entry's item data
// one number: the combo carries a running number, written into Code of the
// party recordset, which turns it back into TAnag and CAnag.
void frmGestDisp::CaricaAnag() {
  Guard g(kForm, QStringLiteral("CaricaAnag"));
  RecordsetPtr rs;
  g([&] { ApriRecordset(rs, SqlAnag(), nullptr, dbOpenSnapshot); });
  g([&] { DAO2ADO(rs, rcsAnag_); });
  g([&] {
    Riempi(CBAnag, [&] {
      CBAnag->addItem(QStringLiteral("{tutti}"), 0);
      int n = 0;
      for (rcsAnag_->MoveFirst(); !rcsAnag_->Eof(); rcsAnag_->MoveNext()) {
        rcsAnag_->SetValue(QStringLiteral("Code"), ++n);
        rcsAnag_->Update();
        CBAnag->addItem(NullToStr(rcsAnag_->Value(QStringLiteral("RagSoc1"))), n);
      }
    });
  });
  g([&] { CBAnag->setCurrentIndex(0); });
}

// The years from the current one down to that of the oldest activity.
void frmGestDisp::CaricaAnni() {
  Guard g(kForm, QStringLiteral("CaricaAnni"));
  const int annoCorrente = Today().date().year();
  int annoMin = annoCorrente;
  RecordsetPtr rs;
  g([&] { ApriRecordset(rs, SqlAnni(), nullptr, dbOpenSnapshot); });
  // With no activity at all the minimum is Null: as no row, the current year alone.
  g([&] {
    if (!rs->Eof() && !IsNull(rs->Value(QStringLiteral("AnnoMin")))) annoMin = CInt(rs->Value(QStringLiteral("AnnoMin")));
  });
  g([&] {
    Riempi(CBAnno, [&] {
      CBAnno->addItem(QStringLiteral("{tutti}"), 0);
      for (int anno = annoCorrente; anno >= annoMin; --anno) CBAnno->addItem(QString::number(anno), anno);
    });
  });
  g([&] { CBAnno->setCurrentIndex(0); });
}

// The months by name when a year is chosen; with no year only "{scegli anno}".
void frmGestDisp::CaricaMesi() {
  Guard g(kForm, QStringLiteral("CaricaMesi"));
  g([&] {
    Riempi(CBMesi, [&] {
      if (GetCBValue(CBAnno) != 0) {
        CBMesi->addItem(QStringLiteral("{tutti}"), 0);
        for (int mese = 1; mese <= 12; ++mese)
          CBMesi->addItem(
              Format(CDate(QStringLiteral("01/") + Format(mese, QStringLiteral("00")) + QStringLiteral("/2000")),
                     QStringLiteral("mmmm")),
              mese);
      } else {
        CBMesi->addItem(QStringLiteral("{scegli anno}"), 0);
      }
    });
  });
  g([&] { CBMesi->setCurrentIndex(0); });
}

// What the state and the filters make of the screen; the rest of the click loads the list.
void frmGestDisp::CBStato_Click() {
  Guard g(kForm, QStringLiteral("CBStato_Click"), Guard::Silent);
  const int stato = CBStato->currentIndex();
  g([&] {
    lblPeriodo->setText(stato == kAttive   ? QStringLiteral("Eseguite nel periodo")
                        : stato == kChiuse ? QStringLiteral("Chiuse nel periodo")
                                           : QStringLiteral("Fatturate nel periodo"));
  });
  g([&] {
    mnuModDisp->setText(stato == kAttive ? QStringLiteral("Chiudi disposizioni") : QStringLiteral("Riapri disposizioni"));
  });
  // Invoiced dispositions are the host's: nothing to apply to them.
  g([&] {
    mnuModDisp->setVisible(stato != kFatturate);
    mnuSpcM->setVisible(stato != kFatturate);
  });
  g([&] { SetBottoneAbilitato(3, stato != kFatturate); });
  g([&] { CaricaDati(); });
}

QString frmGestDisp::SqlAnag() {
  return QStringLiteral(
      "SELECT Projects.TAnag, Projects.CAnag, Anagrafica.RagSoc1, Projects.CAnag as Code FROM Projects INNER JOIN "
      "Anagrafica ON (Projects.CAnag = Anagrafica.CAnag) AND (Projects.TAnag = Anagrafica.TAnag) GROUP BY "
      "Projects.TAnag, Projects.CAnag, Anagrafica.RagSoc1, Projects.CAnag ORDER BY Anagrafica.RagSoc1; ");
}

QString frmGestDisp::SqlAnni() {
  return QStringLiteral("SELECT Min(Year([ActivitiesProd]![DtIni])) AS AnnoMin FROM ActivitiesProd; ");
}

// The dispositions of open models that are not forfait.
QString frmGestDisp::SqlDisposizioni(int stato, int tipoFatt) {
  QString sql = QStringLiteral(
      "SELECT ProjectsDisp.Data, Anagrafica.RagSoc1, Projects.CProject, ProjectsDisp.CDisp, Projects.DProject, "
      "ProjectsTipo.DPrjTipo, ProjectsDisp.DDisp, ProjectsDispTipo.DPrjDispTipo, Projects.Stato, "
      "ProjectsDisp.CStato, Projects.TAnag, Projects.CAnag, ProjectsDisp.DtEnd, ProjectsTipo.GestForfSempl "
      "FROM (((Projects INNER JOIN ProjectsDisp ON Projects.CProject = ProjectsDisp.CProject) INNER JOIN "
      "ProjectsDispTipo ON ProjectsDisp.CPrjDispTipo = ProjectsDispTipo.CPrjDispTipo) INNER JOIN ProjectsTipo ON "
      "Projects.CPrjTipo = ProjectsTipo.CPrjTipo) INNER JOIN Anagrafica ON (Projects.CAnag = Anagrafica.CAnag) "
      "AND (Projects.TAnag = Anagrafica.TAnag) WHERE Projects.Stato=0 AND ProjectsTipo.GestForfSempl=0 AND ");
  switch (stato) {
    case kAttive: sql += QStringLiteral("ProjectsDisp.CStato=0"); break;
    case kChiuse: sql += QStringLiteral("(ProjectsDisp.CStato=9 OR ProjectsDisp.CStato=10)"); break;
    case kFatturate: sql += QStringLiteral("ProjectsDisp.CStato=19"); break;
    default: break;
  }
  if (tipoFatt > -1) sql += QStringLiteral(" AND ProjectsDispTipo.TipoFatt=") + N(tipoFatt);
  return sql + QStringLiteral(" ORDER BY Projects.DProject, ProjectsDisp.DDisp; ");
}

// One row per forfait model and state. Grouping on DtEnd and CStato gives a
// model whose dispositions differ in them a row for each. Its closed test
// takes 9 alone.
QString frmGestDisp::SqlForfait(int stato, int tipoFatt) {
  QString sql = QStringLiteral(
      "SELECT Projects.DtIni AS Data, Anagrafica.RagSoc1, Projects.CProject, 0 AS CDisp, Projects.DProject, "
      "ProjectsTipo.DPrjTipo, \"Model Form\" AS DDisp, \"\" AS DPrjDispTipo, Projects.Stato, ProjectsDisp.CStato, "
      "Projects.TAnag, Projects.CAnag, ProjectsDisp.DtEnd, ProjectsTipo.GestForfSempl "
      "FROM (((Projects INNER JOIN ProjectsDisp ON Projects.CProject = ProjectsDisp.CProject) INNER JOIN "
      "ProjectsTipo ON Projects.CPrjTipo = ProjectsTipo.CPrjTipo) INNER JOIN Anagrafica ON (Projects.CAnag = "
      "Anagrafica.CAnag) AND (Projects.TAnag = Anagrafica.TAnag)) INNER JOIN ProjectsDispTipo ON "
      "ProjectsDisp.CPrjDispTipo = ProjectsDispTipo.CPrjDispTipo ");
  if (tipoFatt > -1) sql += QStringLiteral(" WHERE  ProjectsDispTipo.TipoFatt=") + N(tipoFatt) + QStringLiteral(" ");
  sql += QStringLiteral(
      "GROUP BY Projects.DtIni, Anagrafica.RagSoc1, Projects.CProject, 0, Projects.DProject, ProjectsTipo.DPrjTipo, "
      "\"Model Form\", \"\", Projects.Stato, ProjectsDisp.CStato, Projects.TAnag, Projects.CAnag, "
      "ProjectsDisp.DtEnd, ProjectsTipo.GestForfSempl HAVING Projects.Stato=0 AND ProjectsTipo.GestForfSempl=-1");
  switch (stato) {
    case kAttive: sql += QStringLiteral(" AND ProjectsDisp.CStato=0"); break;
    case kChiuse: sql += QStringLiteral(" AND ProjectsDisp.CStato=9"); break;
    case kFatturate: sql += QStringLiteral(" AND ProjectsDisp.CStato=19"); break;
    default: break;
  }
  return sql + QStringLiteral(" ORDER BY Projects.DProject; ");
}

// The working recordset for the state and the kind of invoicing: the
// dispositions, then the forfait models appended.
void frmGestDisp::CaricaDati() {
  if (caricamento_) return;
  Guard g(kForm, QStringLiteral("CaricaDati"));
  const int stato = CBStato->currentIndex();
  const int tipoFatt = GetCBValue(CBTipoFatt);
  RecordsetPtr rs;
  g([&] { ApriRecordset(rs, SqlDisposizioni(stato, tipoFatt), nullptr, dbOpenSnapshot); });
  g([&] { DAO2ADO(rs, rcsDisp_); });
  RecordsetPtr forfait;
  g([&] { ApriRecordset(forfait, SqlForfait(stato, tipoFatt), nullptr, dbOpenSnapshot); });
  g([&] { DAO2ADO(forfait, rcsDisp_, {}, true); });
  g([&] { CaricaList(); });
}

// The columns of the state: the date of closing or of invoicing only where there is one.
void frmGestDisp::CreaColonne(int stato) {
  Guard g(kForm, QStringLiteral("CreaColonne"), Guard::Silent);
  g([&] {
    QStringList titoli;
    std::vector<int> larghezze;
    if (stato != kAttive) {
      titoli << (stato == kChiuse ? QStringLiteral("Chiuso il") : QStringLiteral("Fatt. il"));
      larghezze.push_back(1200);
    }
    titoli << QStringLiteral("Codice") << QStringLiteral("Cliente") << QStringLiteral("Modello")
           << QStringLiteral("Tipo Mod.") << QStringLiteral("Disposizione") << QStringLiteral("Descrizione");
    larghezze.insert(larghezze.end(), {1700, 2800, 2800, 1600, 1600, 3000});
    ListViewSetColumns(ListView1, titoli, larghezze, std::vector<int>(titoli.size(), lvwColumnLeft));
  });
}

void frmGestDisp::CaricaList() {
  if (caricamento_) return;
  Guard g(kForm, QStringLiteral("CaricaList"));
  const int stato = CBStato->currentIndex();
  CreaColonne(stato);
  g([&] { ListView1->setVisible(false); });
  g([&] { ListView1->ClearItems(); });
  RecordsetPtr c;
  g([&] { c = rcsDisp_->Clone(); });
  const int anag = GetCBValue(CBAnag);
  if (g.If([&] { return anag != 0; })) {
    g([&] { rcsAnag_->SetFilter(QStringLiteral("Code=") + N(anag)); });
    g([&] {
      c->SetFilter(QStringLiteral("TAnag=") + CStr(rcsAnag_->Value(QStringLiteral("TAnag"))) +
                   QStringLiteral(" AND CAnag=") + CStr(rcsAnag_->Value(QStringLiteral("CAnag"))));
    });
  } else {
    g([&] { c->SetFilter(QString()); });
  }
  g([&] { c->SetSort(QStringLiteral("Cproject")); });
  const bool tuttiGliAnni = GetCBValue(CBAnno) == 0;
  g([&] {
    for (c->MoveFirst(); !c->Eof(); c->MoveNext()) {
      g([&] {
        const int cProject = CLng(c->Value(QStringLiteral("CProject")));
        const int cDisp = CLng(c->Value(QStringLiteral("CDisp")));
        bool mostra = false;
        if (stato == kAttive) mostra = ShowDisp(cProject, cDisp);
        else if (stato == kChiuse) mostra = tuttiGliAnni || NelPeriodo(c->Value(QStringLiteral("DtEnd")));
        // Invoiced: no test is made and no row is shown, whatever the filters say.
        if (!mostra) return;
        QStringList valori;
        if (stato != kAttive) valori << Format(c->Value(QStringLiteral("DtEnd")), QStringLiteral("dd/mm/yyyy"));
        QString codice = Format(cProject, QStringLiteral("0000-00000"));
        if (!CBool(NullToZero(c->Value(QStringLiteral("GestForfSempl")))))
          codice += QLatin1Char('-') + Format(cDisp, QStringLiteral("000"));
        valori << codice << NullToStr(c->Value(QStringLiteral("RagSoc1")))
               << NullToStr(c->Value(QStringLiteral("DProject"))) << NullToStr(c->Value(QStringLiteral("DPrjTipo")))
               << NullToStr(c->Value(QStringLiteral("DPrjDispTipo"))) << NullToStr(c->Value(QStringLiteral("DDisp")));
        ListViewAddLine(ListView1, valori,
                        QStringLiteral("K") + Format(cProject, QStringLiteral("000000000")) +
                            Format(cDisp, QStringLiteral("000")));
      });
    }
  });
  // A sort the user chose stays in force over the new rows, as the list keeps it.
  g([&] {
    if (ListView1->Sorted()) ListView1->SetSorted(true);
  });
  g([&] { ListView1->setVisible(true); });
}

// A date in the chosen year and, unless the month is on its first entry, in
// the chosen month. A Null date is in no period.
bool frmGestDisp::NelPeriodo(const QVariant& data) const {
  if (IsNull(data)) return false;
  const QDate d = CDate(data).date();
  if (QString::number(d.year()) != CBAnno->currentText()) return false;
  return CBMesi->currentIndex() == 0 || d.month() == GetCBValue(CBMesi);
}

QString frmGestDisp::SqlUltimaAttivita(int vCProject, int vCDisp) {
  return QStringLiteral("SELECT CProject, CDisp, Max(DtIni) AS MaxDiDtIni FROM ActivitiesProd GROUP BY CProject, "
                        "CDisp HAVING CProject=") +
         N(vCProject) + QStringLiteral(" AND CDisp=") + N(vCDisp) + QStringLiteral("; ");
}

bool frmGestDisp::ShowDisp(int vCProject, int vCDisp) {
  Guard g(kForm, QStringLiteral("ShowDisp"));
  if (g.If([&] { return GetCBValue(CBAnno) == 0; })) return true;
  RecordsetPtr rs;
  g([&] { ApriRecordset(rs, SqlUltimaAttivita(vCProject, vCDisp), nullptr, dbOpenSnapshot); });
  if (g.If([&] { return rs->Eof(); })) return false;
  return g.Value([&] { return NelPeriodo(rs->Value(QStringLiteral("MaxDiDtIni"))); }, false);
}

int frmGestDisp::KeyCProject(const QString& chiave) { return CLng(chiave.mid(1, 9)); }
int frmGestDisp::KeyCDisp(const QString& chiave) { return CLng(chiave.mid(10)); }

void frmGestDisp::ApplicaStato() {
  bool spuntata = false;
  for (int i = 0; i < ListView1->Count() && !spuntata; ++i) spuntata = ListView1->Checked(i);
  if (!spuntata) {
    MsgBox(QStringLiteral("Devi selezionare almeno una dispozione!"), vbExclamation);
    return;
  }
  switch (CBStato->currentIndex()) {
    case kAttive: {
      {
        frmGestDispOK f(this);
        connect(&f, &frmGestDispOK::CloseDisposizioni, this,
                [this](const QDateTime& d) { fGestDispOK_CloseDisposizioni(d); }, Qt::DirectConnection);
        f.Form_Load();
        f.exec();
      }
      CaricaDati();
      break;
    }
    case kChiuse:
      if (MsgBox(QStringLiteral("Sei sicuro di voler riaprire le disposizioni selezionate?"),
                 vbYesNo + vbQuestion + vbDefaultButton2) == vbYes) {
        ReOpenDisp();
        CaricaDati();
      }
      break;
    default:
      break;
  }
}

void frmGestDisp::fGestDispOK_CloseDisposizioni(const QDateTime& vData) { CloseDisp(vData); }

// Closes the checked rows with the date. A forfait model closes whole: every
// disposition of it, whatever its state was.
void frmGestDisp::CloseDisp(const QDateTime& vData) {
  Guard g(kForm, QStringLiteral("CloseDisp"));
  const int righe = ListView1->Count();
  for (int i = 0; i < righe; ++i) {
    if (!g.If([&] { return ListView1->Checked(i); })) continue;
    QString chiave;
    int cProject = 0;
    g([&] { chiave = ListView1->Key(i); });
    g([&] { cProject = KeyCProject(chiave); });
    RecordsetPtr c;
    g([&] { c = rcsDisp_->Clone(); });
    g([&] { c->SetFilter(QStringLiteral("CProject=") + N(cProject)); });
    RecordsetPtr rs;
    if (g.If([&] { return !CBool(NullToZero(c->Value(QStringLiteral("GestForfSempl")))); })) {
      int cDisp = 0;
      g([&] { cDisp = KeyCDisp(chiave); });
      g([&] { ApriRecordset(rs, RigaDisp(cProject, cDisp)); });
      if (g.If([&] { return rs->RecordCount() == 1; })) ScriviStato(g, rs, vData, 9);
    } else {
      g([&] { ApriRecordset(rs, QStringLiteral("SELECT DtEnd, CStato FROM ProjectsDisp WHERE CProject=") + N(cProject)); });
      g([&] {
        for (rs->MoveFirst(); !rs->Eof(); rs->MoveNext()) ScriviStato(g, rs, vData, 9);
      });
    }
  }
}

// Reopens the checked rows and clears their closing date. A "Model Form" row
// has disposition 0, finds no row and stays closed.
void frmGestDisp::ReOpenDisp() {
  Guard g(kForm, QStringLiteral("ReOpenDisp"));
  const int righe = ListView1->Count();
  for (int i = 0; i < righe; ++i) {
    if (!g.If([&] { return ListView1->Checked(i); })) continue;
    int cProject = 0, cDisp = 0;
    g([&] {
      const QString chiave = ListView1->Key(i);
      cProject = KeyCProject(chiave);
      cDisp = KeyCDisp(chiave);
    });
    RecordsetPtr rs;
    g([&] { ApriRecordset(rs, RigaDisp(cProject, cDisp)); });
    if (g.If([&] { return rs->RecordCount() == 1; })) ScriviStato(g, rs, Null, 0);
  }
}

// The other way to close or reopen: by statements on the table. A forfait row
// (disposition 0) takes the whole model, and reopening leaves DtEnd as it is.
void frmGestDisp::mnuModDisp_Click() {
  Guard g(kForm, QStringLiteral("mnuModDisp_Click"));
  const int stato = CBStato->currentIndex();
  if (MsgBox(QStringLiteral("Sei sicuro di voler aggiornare lo stato delle disposizioni selezionate?"),
             vbYesNo + vbQuestion + vbDefaultButton2) != vbYes)
    return;
  QVariant data;
  if (stato == kAttive) {
    const QString risposta =
        InputBox(QStringLiteral("Data chiusura:"), QStringLiteral(" "), Format(Today(), QStringLiteral("dd/mm/yyyy")));
    if (risposta.isEmpty() || !IsDate(risposta)) return;
    data = CDate(risposta);
  }
  const int righe = ListView1->Count();
  for (int i = 0; i < righe; ++i) {
    if (!g.If([&] { return ListView1->Checked(i); })) continue;
    int cProject = 0, cDisp = 0;
    g([&] {
      const QString chiave = ListView1->Key(i);
      cProject = KeyCProject(chiave);
      cDisp = KeyCDisp(chiave);
    });
    const QString dove = QStringLiteral(" WHERE ProjectsDisp.CProject=") + N(cProject) +
                         (cDisp != 0 ? QStringLiteral(" AND ProjectsDisp.CDisp=") + N(cDisp) : QString());
    if (stato == kAttive)
      g([&] {
        QueryExe(QStringLiteral("UPDATE ProjectsDisp SET ProjectsDisp.CStato = 9, ProjectsDisp.DtEnd = ") +
                 DataSql(data) + dove);
      });
    else if (stato == kChiuse)
      g([&] { QueryExe(QStringLiteral("UPDATE ProjectsDisp SET ProjectsDisp.CStato = 0") + dove); });
  }
  g([&] { CaricaDati(); });
  g([&] { CaricaList(); });
}

void frmGestDisp::mnuSel_Click() {
  for (int i = 0; i < ListView1->Count(); ++i) ListView1->SetChecked(i, true);
}

void frmGestDisp::mnuDeSel_Click() {
  for (int i = 0; i < ListView1->Count(); ++i) ListView1->SetChecked(i, false);
}

// A click sorts by the column; a second click on it reverses the order. The
// first row is then selected and brought into view.
void frmGestDisp::ListView1_ColumnClick(int column) {
  Guard g(kForm, QStringLiteral("ListView1_ColumnClick"), Guard::Silent);
  // A second click on the same column reverses; the first one always sorts ascending.
  g([&] { OrdinaPerColonna(ListView1, column, true); });
}

}  // namespace prestkt
