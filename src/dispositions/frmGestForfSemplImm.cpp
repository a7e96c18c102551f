#include "frmGestForfSemplImm.h"

#include <QCloseEvent>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>

#include "Guard.h"
#include "ModADO.h"
#include "ModPrestKT.h"
#include "Numerazione.h"
#include "Procedure.h"
#include "ProcedureUi.h"

namespace prestkt {

namespace {

const QString kForm = QStringLiteral("frmGestForfSemplImm");

void Fuoco(QWidget* w) {
  if (w->isVisible() && w->isEnabled()) w->setFocus();
}

// The clock to the minute: what the time fields show and what they are given.
QTime AlMinuto(const QTime& t) { return QTime(t.hour(), t.minute()); }

// A day and a time of the fields as one moment, whole seconds.
QDateTime Momento(const QDate& giorno, const QTime& ora) {
  return QDateTime(giorno, QTime(ora.hour(), ora.minute(), ora.second()));
}

}  // namespace

frmGestForfSemplImm::frmGestForfSemplImm(QWidget* parent) : Scheda(parent, QStringLiteral("frmGestForfSemplImm")) {
  BuildUi();
}

void frmGestForfSemplImm::BuildUi() {
  CreaToolbar({{1, QStringLiteral("Esci"), QStringLiteral("application-exit")},
               {3, QStringLiteral("Salva"), QStringLiteral("document-save")}});

  OCFrame1 = Nome(new QGroupBox(this), QStringLiteral("OCFrame1"));
  DTPicker1 = Nome(new QDateEdit(OCFrame1), QStringLiteral("DTPicker1"));
  DTPicker1->setCalendarPopup(true);
  DTPicker1->setDisplayFormat(QStringLiteral("dd/MM/yyyy"));
  CBOperatore = Nome(new QComboBox(OCFrame1), QStringLiteral("CBOperatore"));
  CBOperatore->setMinimumWidth(260);
  DTInizio = Nome(new QTimeEdit(OCFrame1), QStringLiteral("DTInizio"));
  DTInizio->setDisplayFormat(QStringLiteral("HH:mm"));
  // The end is a time with its own check box: unchecked, the work is still going on.
  chkFine = Nome(new QCheckBox(OCFrame1), QStringLiteral("chkFine"));
  DtFine = Nome(new QTimeEdit(OCFrame1), QStringLiteral("DtFine"));
  DtFine->setDisplayFormat(QStringLiteral("HH:mm"));
  DtFine->setEnabled(false);

  auto* g1 = new QGridLayout(OCFrame1);
  auto riga = [g1](int r, const QString& etichetta, QWidget* a, QWidget* b = nullptr) {
    g1->addWidget(new QLabel(etichetta), r, 0);
    auto* h = new QHBoxLayout;
    h->addWidget(a);
    if (b) h->addWidget(b);
    h->addStretch(1);
    g1->addLayout(h, r, 1);
  };
  riga(0, QStringLiteral("Data:"), DTPicker1);
  riga(1, QStringLiteral("Operatore:"), CBOperatore);
  riga(2, QStringLiteral("Ora inizio:"), DTInizio);
  // The label of the end repeats the one above, as the system has it.
  riga(3, QStringLiteral("Ora inizio:"), chkFine, DtFine);
  g1->setColumnStretch(1, 1);
  corpo->addWidget(OCFrame1, 1);

  mnuF = Menu(QStringLiteral("mnuF"), QStringLiteral("&File"));
  mnuFS = Voce(mnuF, QStringLiteral("mnuFS"), QStringLiteral("&Salva"));
  mnuFE = Voce(mnuF, QStringLiteral("mnuFE"), QStringLiteral("&Esci"));

  connect(this, &Scheda::ToolbarClick, this, &frmGestForfSemplImm::EseguiComando);
  connect(mnuFS, &QAction::triggered, this, [this] {
    FocusText1();
    EseguiComando(3);
  });
  connect(mnuFE, &QAction::triggered, this, [this] {
    FocusText1();
    EseguiComando(1);
  });
  connect(CBOperatore, &QComboBox::currentIndexChanged, this, [this] { SetDaSalvare(true); });
  connect(DTPicker1, &QDateEdit::dateChanged, this, [this] { SetDaSalvare(true); });
  connect(DTInizio, &QTimeEdit::timeChanged, this, [this] { SetDaSalvare(true); });
  connect(DtFine, &QTimeEdit::timeChanged, this, [this] { SetDaSalvare(true); });
  connect(chkFine, &QCheckBox::toggled, this, [this](bool on) {
    DtFine->setEnabled(on);
    SetDaSalvare(true);
  });
}

void frmGestForfSemplImm::SetDaSalvare(bool v) {
  daSalvare_ = v;
  SetBottoneAbilitato(3, v);
  mnuFS->setEnabled(v);
}

void frmGestForfSemplImm::Form_Load() {
  Guard g(kForm, QStringLiteral("Form_Load"));
  g([&] { Prepara(QStringLiteral("Rilevazione start e stop")); });
  g([&] {
    CaricaCombo(CBOperatore,
                QStringLiteral("SELECT CAnag AS CDip, RagSoc1 AS Nome, Eliminato FROM Anagrafica WHERE TAnag=10 AND "
                               "Eliminato=0 ORDER BY RagSoc1; "),
                0, 1, {}, QStringLiteral("{scegli l'operatore}"));
  });
  // Until the user checks it, the end offers the present time.
  g([&] { DtFine->setTime(AlMinuto(Now().time())); });
  if (Azione != 2) {
    RecordsetPtr rs;
    g([&] {
      rs = rcsAct->Clone();
      rs->SetFilter(QStringLiteral("CAttivita=") + N(CAttivita));
    });
    g([&] { DTPicker1->setDate(CDate(rs->Value(QStringLiteral("DataIni"))).date()); });
    g([&] { SetCBValue(CBOperatore, CLng(NullToZero(rs->Value(QStringLiteral("CUtente")))), 0); });
    g([&] { DTInizio->setTime(AlMinuto(CDate(rs->Value(QStringLiteral("DtIni"))).time())); });
    g([&] {
      const QVariant fine = rs->Value(QStringLiteral("DtEnd"));
      if (!IsNull(fine)) {
        DtFine->setTime(AlMinuto(CDate(fine).time()));
        chkFine->setChecked(true);
      } else {
        chkFine->setChecked(false);
      }
    });
  } else {
    g([&] { DTPicker1->setDate(Today().date()); });
    g([&] { CBOperatore->setCurrentIndex(0); });
    g([&] { DTInizio->setTime(AlMinuto(Now().time())); });
    g([&] { chkFine->setChecked(false); });
  }
  SetDaSalvare(false);
}

bool frmGestForfSemplImm::Salva() {
  Guard g(kForm, QStringLiteral("Salva"));
  if (g.If([&] { return GetCBValue(CBOperatore) == 0; })) {
    MsgBox(QStringLiteral("Devi scegliere un operatore!"), vbExclamation);
    Fuoco(CBOperatore);
    return false;
  }
  // Start and end fall on the one day of DTPicker1: a span over midnight can't be told.
  QDateTime inizio, fine;
  g([&] { inizio = Momento(DTPicker1->date(), DTInizio->time()); });
  const bool conFine = chkFine->isChecked();
  if (conFine) {
    g([&] { fine = Momento(DTPicker1->date(), DtFine->time()); });
    if (g.If([&] { return !(fine > inizio); })) {
      MsgBox(QStringLiteral("L'ora finale deve essere superiore a quella iniziale!"), vbExclamation);
      Fuoco(DtFine);
      return false;
    }
  }
  int codice = CAttivita;
  g([&] { BeginTrans(); });
  if (Azione == 2) {
    codice = NuovoCodiceAttivita(g, DTPicker1->date().year());
    CAttivita = codice;
  }
  RecordsetPtr rs = ApriRigaAttivita(g, codice, Azione == 2, CProject, CDisp);
  // No service kind is asked here: the recording carries none.
  g([&] { rs->SetValue(QStringLiteral("CUtente"), GetCBValue(CBOperatore)); });
  g([&] { rs->SetValue(QStringLiteral("CPrestazione"), 0); });
  g([&] { rs->SetValue(QStringLiteral("DtIni"), inizio); });
  if (conFine) {
    g([&] { rs->SetValue(QStringLiteral("Stato"), 0); });
    g([&] { rs->SetValue(QStringLiteral("DtEnd"), fine); });
  } else {
    g([&] { rs->SetValue(QStringLiteral("DtEnd"), QVariant()); });
  }
  g([&] { rs->Update(); });
  g([&] { CommitTrans(); });
  g([&] { CaricaAttivita(gRcsAct, 0, 0, codice, true); });
  g([&] { ADO2ADO(gRcsAct, rcsAct, true, false, QStringLiteral("CDisp=") + N(CDisp)); });
  g([&] {
    int c = CAttivita;
    emit Reload(c);
  });
  SetDaSalvare(false);
  return true;
}

void frmGestForfSemplImm::EseguiComando(int bottone) {
  if (bottone == 1) {
    close();
  } else if (bottone == 3) {
    if (Salva()) close();
  }
}

void frmGestForfSemplImm::closeEvent(QCloseEvent* e) {
  if (chiudendo_) {
    e->accept();
    return;
  }
  if (!ChiusuraConsentita(daSalvare_, [this] { return Salva(); })) {
    e->ignore();
    return;
  }
  chiudendo_ = true;
  e->accept();
}

void frmGestForfSemplImm::reject() { close(); }

}  // namespace prestkt
