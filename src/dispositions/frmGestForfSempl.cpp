#include "frmGestForfSempl.h"

#include <QCloseEvent>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QHash>
#include <QLabel>

#include "Guard.h"
#include "ModADO.h"
#include "ModListViewKT.h"
#include "ModPrestKT.h"
#include "Numerazione.h"
#include "Procedure.h"
#include "ProcedureUi.h"
#include "Schema.h"
#include "frmGestForfSemplImm.h"

namespace prestkt {

namespace {

const QString kForm = QStringLiteral("frmGestForfSempl");

void Fuoco(QWidget* w) {
  if (w->isVisible() && w->isEnabled()) w->setFocus();
}

QString ChiaveAttivita(const QVariant& cAttivita) {
  return QStringLiteral("K") + Format(cAttivita, QStringLiteral("000000000"));
}

}  // namespace

frmGestForfSempl::frmGestForfSempl(QWidget* parent) : Scheda(parent, QStringLiteral("frmGestForfSempl")) {
  BuildUi();
}

void frmGestForfSempl::BuildUi() {
  CreaToolbar({{1, QStringLiteral("Esci"), QStringLiteral("application-exit")},
               {3, QStringLiteral("Salva"), QStringLiteral("document-save")},
               {5, QStringLiteral("Aggiungi registrazione"), QStringLiteral("list-add")},
               {6, QStringLiteral("Modifica registrazione"), QStringLiteral("document-edit")},
               {7, QStringLiteral("Elimina registrazione"), QStringLiteral("edit-delete")}});

  // What the card shows and never edits: customer, model and the number.
  OCFrame2 = Nome(new QGroupBox(this), QStringLiteral("OCFrame2"));
  TBAnag = Nome(new QLineEdit(OCFrame2), QStringLiteral("TBAnag"));
  TBDProject = Nome(new QLineEdit(OCFrame2), QStringLiteral("TBDProject"));
  NumericSpin1 = Nome(new NumericSpin(OCFrame2, QStringLiteral("0")), QStringLiteral("NumericSpin1"));
  NumericSpin1->setRange(0, 32767);
  NumericSpin1->SetLocked(true);
  auto* g2 = new QGridLayout(OCFrame2);
  g2->addWidget(new QLabel(QStringLiteral("Anagrafica:")), 0, 0);
  g2->addWidget(TBAnag, 0, 1, 1, 3);
  g2->addWidget(new QLabel(QStringLiteral("Modello:")), 1, 0);
  g2->addWidget(TBDProject, 1, 1, 1, 3);
  g2->addWidget(new QLabel(QStringLiteral("Disp n°:")), 2, 0);
  g2->addWidget(NumericSpin1, 2, 1);
  g2->setColumnStretch(3, 1);
  OCFrame2->setEnabled(false);

  OCFrame1 = Nome(new QGroupBox(this), QStringLiteral("OCFrame1"));
  DTPicker1 = Nome(new QDateEdit(OCFrame1), QStringLiteral("DTPicker1"));
  DTPicker1->setCalendarPopup(true);
  DTPicker1->setDisplayFormat(QStringLiteral("dd/MM/yyyy"));
  TBDDisp = Nome(new QLineEdit(OCFrame1), QStringLiteral("TBDDisp"));
  LimitaTesto(TBDDisp, TestoMassimo(QStringLiteral("ProjectsDisp"), QStringLiteral("DDisp")));
  TBDDisp->setMinimumWidth(360);
  auto* g1 = new QGridLayout(OCFrame1);
  g1->addWidget(new QLabel(QStringLiteral("Data:")), 0, 0);
  auto* data = new QHBoxLayout;
  data->addWidget(DTPicker1);
  data->addStretch(1);
  g1->addLayout(data, 0, 1);
  g1->addWidget(new QLabel(QStringLiteral("Descrizione:")), 1, 0);
  g1->addWidget(TBDDisp, 1, 1);
  g1->setColumnStretch(1, 1);

  OCFrame9 = Nome(new QGroupBox(this), QStringLiteral("OCFrame9"));
  chkClosed = Nome(new QCheckBox(QStringLiteral("Chiudi disposizione:"), OCFrame9), QStringLiteral("chkClosed"));
  chkClosed->setLayoutDirection(Qt::RightToLeft);  // the label stands before its box
  DTEnd = Nome(new QDateEdit(OCFrame9), QStringLiteral("DTEnd"));
  DTEnd->setCalendarPopup(true);
  DTEnd->setDisplayFormat(QStringLiteral("dd/MM/yyyy"));
  auto* f9 = new QHBoxLayout(OCFrame9);
  f9->addWidget(chkClosed);
  f9->addWidget(DTEnd);
  f9->addStretch(1);

  // The invoice: its use is not settled, so it stays out of sight.
  OCFrame10 = Nome(new QGroupBox(this), QStringLiteral("OCFrame10"));
  chkFatt = Nome(new QCheckBox(QStringLiteral("Fatturato:"), OCFrame10), QStringLiteral("chkFatt"));
  chkFatt->setLayoutDirection(Qt::RightToLeft);
  OCNFatt = Nome(new NumericSpin(OCFrame10, QStringLiteral("0000-00000")), QStringLiteral("OCNFatt"));
  OCNFatt->setRange(0, 999999999);
  auto* f10 = new QHBoxLayout(OCFrame10);
  f10->addWidget(chkFatt);
  f10->addWidget(new QLabel(QStringLiteral("n° fattura:")));
  f10->addWidget(OCNFatt);
  OCFrame10->setEnabled(false);
  OCFrame10->setVisible(false);

  lvwPrest = Nome(new ListView(this), QStringLiteral("lvwPrest"));
  lvwPrest->setMinimumSize(520, 200);

  corpo->addWidget(OCFrame2);
  corpo->addWidget(OCFrame1);
  auto* chiusura = new QHBoxLayout;
  chiusura->addWidget(OCFrame9);
  chiusura->addWidget(OCFrame10);
  corpo->addLayout(chiusura);
  corpo->addWidget(lvwPrest, 1);

  mnuF = Menu(QStringLiteral("mnuF"), QStringLiteral("&File"));
  mnuFS = Voce(mnuF, QStringLiteral("mnuFS"), QStringLiteral("&Salva"));
  mnuFE = Voce(mnuF, QStringLiteral("mnuFE"), QStringLiteral("&Esci"));
  mnuMod = Menu(QStringLiteral("mnuMod"), QStringLiteral("&Modifica"));
  mnuAdd = Voce(mnuMod, QStringLiteral("mnuAdd"), QStringLiteral("&Aggiungi"));
  mnuEdit = Voce(mnuMod, QStringLiteral("mnuEdit"), QStringLiteral("&Modifica"));
  mnuDel = Voce(mnuMod, QStringLiteral("mnuDel"), QStringLiteral("&Elimina"));

  connect(this, &Scheda::ToolbarClick, this, &frmGestForfSempl::EseguiComando);
  const std::pair<QAction*, int> voci[] = {{mnuFE, 1}, {mnuFS, 3}, {mnuAdd, 5}, {mnuEdit, 6}, {mnuDel, 7}};
  for (auto [voce, bottone] : voci)
    connect(voce, &QAction::triggered, this, [this, b = bottone] {
      FocusText1();
      EseguiComando(b);
    });
  connect(lvwPrest, &ListView::DblClick, this, [this] {
    if (lvwPrest->Count() > 0) EseguiComando(6);
  });
  connect(TBDDisp, &QLineEdit::textChanged, this, [this] { SetDaSalvare(true); });
  connect(DTPicker1, &QDateEdit::dateChanged, this, [this] { SetDaSalvare(true); });
  connect(chkClosed, &QCheckBox::toggled, this, [this] { SetDaSalvare(true); });
  connect(DTEnd, &QDateEdit::dateChanged, this, [this] { SetDaSalvare(true); });
}

void frmGestForfSempl::SetDaSalvare(bool v) {
  daSalvare_ = v;
  SetBottoneAbilitato(3, v);
  mnuFS->setEnabled(v);
}

// ---------------------------------------------------------------- load

void frmGestForfSempl::Form_Load() {
  Guard g(kForm, QStringLiteral("Form_Load"));
  g([&] { Prepara(QStringLiteral("Scheda forfait semplificata")); });
  g([&] {
    TBAnag->setText(RagSoc1);
    TBDProject->setText(DProject);
  });
  g([&] {
    ListViewReport(lvwPrest, false);
    ListViewSetColumns(lvwPrest,
                       {QString(), QStringLiteral("Data"), QStringLiteral("Utente"), QStringLiteral("Inizio"),
                        QStringLiteral("Fine")},
                       {270, 1200, 2800, 900, 900},
                       {lvwColumnLeft, lvwColumnLeft, lvwColumnLeft, lvwColumnRight, lvwColumnRight});
    LarghezzaColonne(lvwPrest);
  });
  if (Azione == 2) {
    g([&] {
      CDisp = 0;
      NumericSpin1->SetValue(0);
      DTPicker1->setDate(Today().date());
      TBDDisp->clear();
      chkClosed->setChecked(false);
      DTEnd->setDate(Today().date());
      chkFatt->setChecked(false);
    });
    // A new disposition has no recordings yet.
    g([&] { ADO2ADO(gRcsAct, rcsAct, true, false, QStringLiteral("CDisp=-1")); });
    g([&] { OCFrame9->setEnabled(false); });
  } else {
    RecordsetPtr disp;
    g([&] {
      disp = gRcsDisp->Clone();
      disp->SetFilter(QStringLiteral("CDisp=") + N(CDisp));
    });
    g([&] { NumericSpin1->SetValue(CDisp); });
    g([&] { DTPicker1->setDate(CDate(disp->Value(QStringLiteral("Data"))).date()); });
    g([&] { TBDDisp->setText(NullToStr(disp->Value(QStringLiteral("DDisp")))); });
    const int stato = g.Value([&] { return CInt(NullToZero(disp->Value(QStringLiteral("CStato")))); }, 0);
    g([&] { chkClosed->setChecked(stato != 0); });
    g([&] {
      const QVariant fine = disp->Value(QStringLiteral("DtEnd"));
      DTEnd->setDate(IsNull(fine) ? Today().date() : CDate(fine).date());
    });
    g([&] { chkFatt->setChecked(stato == 19); });
    g([&] { CopiaAttivita(); });
  }
  g([&] { CaricaListPrest(); });
  SetDaSalvare(false);
}

void frmGestForfSempl::CopiaAttivita() {
  ADO2ADO(gRcsAct, rcsAct, true, false, QStringLiteral("CDisp=") + N(CDisp));
}

void frmGestForfSempl::CaricaListPrest() {
  Guard g(kForm, QStringLiteral("CaricaListPrest"));
  RecordsetPtr rs;
  g([&] {
    lvwPrest->setVisible(false);
    lvwPrest->ClearItems();
    rs = rcsAct->Clone();
  });
  // Each operator's name is read once for the list.
  QHash<int, QString> nomi;
  auto utente = [&](const QVariant& cUtente) {
    const int codice = CLng(NullToZero(cUtente));
    auto trovato = nomi.constFind(codice);
    if (trovato != nomi.constEnd()) return *trovato;
    RecordsetPtr op;
    ApriRecordset(op,
                  QStringLiteral("SELECT CAnag AS CDip, RagSoc1 AS Nome, Eliminato FROM Anagrafica WHERE TAnag=10 AND "
                                 "CAnag=") + N(codice),
                  nullptr, dbOpenSnapshot);
    const QString nome = op->Eof() ? QStringLiteral("Utente sconosciuto") : NullToStr(op->Value(QStringLiteral("Nome")));
    nomi.insert(codice, nome);
    return nome;
  };
  g([&] {
    for (rs->MoveFirst(); !rs->Eof(); rs->MoveNext()) {
      const QVariant inizio = rs->Value(QStringLiteral("DtIni"));
      const QVariant fine = rs->Value(QStringLiteral("DtEnd"));
      QString nome;
      g([&] { nome = utente(rs->Value(QStringLiteral("CUtente"))); });
      // A recording still running has no end to show.
      ListViewAddLine(lvwPrest,
                      {QString(), Format(inizio, QStringLiteral("dd/mm/yyyy")), nome,
                       Format(inizio, QStringLiteral("hh:nn")),
                       IsNull(fine) ? QString() : Format(fine, QStringLiteral("hh:nn"))},
                      ChiaveAttivita(rs->Value(QStringLiteral("CAttivita"))));
    }
  });
  g([&] { lvwPrest->setVisible(true); });
}

// ---------------------------------------------------------------- save

bool frmGestForfSempl::Salva() {
  Guard g(kForm, QStringLiteral("Salva"));
  const QString testo = TBDDisp->text().trimmed();
  if (testo.isEmpty()) {
    MsgBox(QStringLiteral("Devi inserire una descrizione!"), vbExclamation);
    Fuoco(TBDDisp);
    return false;
  }
  // Another disposition of the model with the same text, compared as the
  // database compares texts. A new card looks for the text as it was typed.
  QString cercato = testo;
  Sql sql;
  if (Azione == 1) {
    sql = Sql(QStringLiteral("SELECT CProject, DDisp, CDisp FROM ProjectsDisp WHERE (((CProject)=") + N(CProject) +
              QStringLiteral(") AND ((DDisp)=")) +
          TestoSql(testo) + Sql(QStringLiteral(") AND ((CDisp)<>") + N(CDisp) + QStringLiteral(")); "));
  } else {
    cercato = TBDDisp->text();
    sql = Sql(QStringLiteral("SELECT CProject, DDisp FROM ProjectsDisp WHERE (((CProject)=") + N(CProject) +
              QStringLiteral(") AND ((DDisp)=")) +
          TestoSql(cercato) + Sql(QStringLiteral(")); "));
  }
  RecordsetPtr rs;
  g([&] { ApriRecordset(rs, sql, nullptr, dbOpenSnapshot); });
  if (g.If([&] { return !rs->Eof(); })) {
    MsgBox(QStringLiteral("Esiste già un modello chiamato '") + cercato + QStringLiteral("'!"), vbExclamation);
    Fuoco(TBDDisp);
    return false;
  }
  g([&] { SalvaDisp(); });
  Azione = 1;
  SetDaSalvare(false);
  return true;
}

void frmGestForfSempl::SalvaDisp() {
  Guard g(kForm, QStringLiteral("SalvaDisp"));
  // The number read and the row written are one unit, which another workstation waits for.
  g([&] { BeginTrans(); });
  if (Azione == 2) CDisp = NuovoNumeroDisposizione(g, CProject);
  RecordsetPtr rs;
  g([&] {
    ApriRecordset(rs,
                  QStringLiteral("SELECT * FROM ProjectsDisp WHERE CProject=") + N(CProject) +
                      QStringLiteral(" AND CDisp=") + N(CDisp),
                  nullptr, dbOpenDynaset);
  });
  if (Azione == 2) {
    g([&] {
      rs->AddNew();
      rs->SetValue(QStringLiteral("CProject"), CProject);
      rs->SetValue(QStringLiteral("CDisp"), CDisp);
    });
  } else {
    g([&] { rs->Edit(); });
  }
  // Closed here is always 9: a disposition the host marked invoiced (19) falls back.
  g([&] {
    if (chkClosed->isChecked()) {
      rs->SetValue(QStringLiteral("CStato"), 9);
      rs->SetValue(QStringLiteral("DtEnd"), QDateTime(DTEnd->date(), QTime(0, 0)));
    } else {
      rs->SetValue(QStringLiteral("CStato"), 0);
      rs->SetValue(QStringLiteral("DtEnd"), QVariant());
    }
  });
  // The card owns the row: what it doesn't show is written blank on every save.
  g([&] { rs->SetValue(QStringLiteral("DDisp"), TBDDisp->text().trimmed()); });
  g([&] { rs->SetValue(QStringLiteral("CPrjDispTipo"), 0); });
  g([&] { rs->SetValue(QStringLiteral("Data"), QDateTime(DTPicker1->date(), QTime(0, 0))); });
  g([&] { rs->SetValue(QStringLiteral("Annot"), QString()); });
  g([&] { rs->SetValue(QStringLiteral("Qta"), 0); });
  g([&] { rs->SetValue(QStringLiteral("DefPzVend"), 0); });
  g([&] { rs->SetValue(QStringLiteral("PzVend"), 0); });
  g([&] { rs->Update(); });
  g([&] { CommitTrans(); });
  // Such a disposition has no service kinds.
  g([&] {
    QueryExe(QStringLiteral("DELETE * FROM ProjectsDispDett WHERE CProject=") + N(CProject) +
             QStringLiteral(" AND CDisp=") + N(CDisp));
  });
  SetDaSalvare(false);
  g([&] { CaricaDatiModello(CProject); });
  // The model card is told twice, before and after the number is shown: it relies on both.
  g([&] {
    int c = CDisp;
    emit Reload(c);
  });
  g([&] { NumericSpin1->SetValue(CDisp); });
  g([&] {
    int c = CDisp;
    emit Reload(c);
  });
}

// ---------------------------------------------------------------- recordings

void frmGestForfSempl::ApriImm(int azione, int cAttivita) {
  frmGestForfSemplImm f(this);
  f.rcsAct = rcsAct;
  f.CProject = CProject;
  f.CDisp = CDisp;
  f.Azione = azione;
  f.CAttivita = cAttivita;
  connect(&f, &frmGestForfSemplImm::Reload, this, [this](int& c) { fGestForfSemplImm_Reload(c); },
          Qt::DirectConnection);
  f.Form_Load();
  f.exec();
}

int frmGestForfSempl::AttivitaSelezionata() const {
  const int r = lvwPrest->SelectedIndex();
  if (r < 0) Raise(err::ObjectNotSet);
  return static_cast<int>(Val(lvwPrest->Key(r).right(9)));
}

// A recording hangs on a saved disposition: a new card is saved first.
void frmGestForfSempl::AddPrest() {
  Guard g(kForm, QStringLiteral("AddPrest"));
  if (Azione == 2 && !Salva()) return;
  g([&] { ApriImm(2, 0); });
}

void frmGestForfSempl::EditPrest() {
  Guard g(kForm, QStringLiteral("EditPrest"));
  if (lvwPrest->Count() == 0) return;
  int codice = 0;
  if (!g([&] { codice = AttivitaSelezionata(); })) return;
  g([&] { ApriImm(1, codice); });
}

void frmGestForfSempl::fGestForfSemplImm_Reload(int cAttivita) {
  Guard g(kForm, QStringLiteral("fGestForfSemplImm_Reload"));
  g([&] { CopiaAttivita(); });
  g([&] { CaricaListPrest(); });
  g([&] { FindInList(lvwPrest, ChiaveAttivita(cAttivita)); });
}

void frmGestForfSempl::DelPrest() {
  Guard g(kForm, QStringLiteral("DelPrest"));
  if (lvwPrest->Count() == 0) return;
  if (MsgBox(QStringLiteral("Vuoi cancellare la registrazione selezionata?"), vbYesNo | vbQuestion | vbDefaultButton2) !=
      vbYes)
    return;
  int riga = -1;
  int codice = 0;
  g([&] {
    riga = lvwPrest->SelectedIndex();
    codice = AttivitaSelezionata();
  });
  g([&] {
    RecordsetPtr rs = gRcsAct->Clone();
    rs->SetFilter(QStringLiteral("CAttivita=") + N(codice));
    if (!rs->Eof()) rs->Delete();
  });
  g([&] { CopiaAttivita(); });
  g([&] {
    QueryExe(QStringLiteral("DELETE ActivitiesProd.CAttivita FROM ActivitiesProd WHERE "
                            "(((ActivitiesProd.CAttivita)=") +
             N(codice) + QStringLiteral(")); "));
  });
  g([&] { lvwPrest->RemoveItem(riga); });
  g([&] {
    int c = CDisp;
    emit Reload(c);
  });
}

// ---------------------------------------------------------------- commands

void frmGestForfSempl::EseguiComando(int bottone) {
  switch (bottone) {
    case 1: close(); break;
    case 3:
      if (Salva()) close();
      break;
    case 5: AddPrest(); break;
    case 6: EditPrest(); break;
    case 7: DelPrest(); break;
    default: break;
  }
}

void frmGestForfSempl::closeEvent(QCloseEvent* e) {
  if (chiudendo_) {
    e->accept();
    return;
  }
  if (!ChiusuraConsentita(daSalvare_, [this] { return Salva(); })) {
    e->ignore();
    return;
  }
  chiudendo_ = true;
  rcsAct.reset();
  e->accept();
}

void frmGestForfSempl::reject() { close(); }

}  // namespace prestkt
