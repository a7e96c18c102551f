#include "frmDisp.h"

#include <QCloseEvent>
#include <QFormLayout>
#include <QGridLayout>
#include <QHBoxLayout>

#include "Guard.h"
#include "Numerazione.h"
#include "ModADO.h"
#include "ModListViewKT.h"
#include "ModPrestKT.h"
#include "Procedure.h"
#include "AnteprimaStampa.h"
#include "ModStampe.h"
#include "ProcedureUi.h"
#include "Schema.h"
#include "frmDispInfo.h"
#include "frmExec.h"
#include "frmExecSposta.h"

namespace prestkt {

namespace {

const QString kForm = QStringLiteral("frmDisp");


}  // namespace

frmDisp::frmDisp(QWidget* parent) : Scheda(parent, QStringLiteral("frmDisp")) {
  BuildUi();
  BuildMenus();
  ConnectUi();
}

frmDisp::~frmDisp() {
  if (gOcxEventCard == OcxEventS) gOcxEventCard.reset();
}

// ---------------------------------------------------------------- building

void frmDisp::BuildUi() {
  CreaToolbar({{1, QStringLiteral("Esci"), QStringLiteral("application-exit")},
               {3, QStringLiteral("Salva"), QStringLiteral("document-save")},
               {5, QStringLiteral("Stampa"), QStringLiteral("document-print")},
               {7, QStringLiteral("Aggiungi disposizione"), QStringLiteral("list-add")},
               {8, QStringLiteral("Modifica disposizione"), QStringLiteral("document-edit")},
               {9, QStringLiteral("Elimina disposizione"), QStringLiteral("edit-delete")},
               {11, QStringLiteral("Informazioni"), QStringLiteral("dialog-information")}});

  auto* testa = new QGridLayout;
  OCFrame2 = Nome(new QGroupBox(this), "OCFrame2");
  TBAnag = Nome(new QLineEdit(OCFrame2), "TBAnag");
  TBDProject = Nome(new QLineEdit(OCFrame2), "TBDProject");
  auto* f2 = new QFormLayout(OCFrame2);
  f2->addRow(QStringLiteral("Anagrafica"), TBAnag);
  f2->addRow(QStringLiteral("Modello"), TBDProject);
  OCFrame3 = Nome(new QGroupBox(this), "OCFrame3");
  NumericSpin1 = Nome(new NumericSpin(OCFrame3, QStringLiteral("0000")), "NumericSpin1");
  NumericSpin1->SetLocked(true);
  DTPicker1 = Nome(new QDateEdit(this), "DTPicker1");
  DTPicker1->setCalendarPopup(true);
  DTPicker1->setDisplayFormat(QStringLiteral("dd/MM/yyyy"));
  auto* f3 = new QHBoxLayout(OCFrame3);
  f3->addWidget(new QLabel(QStringLiteral("Disp n°")));
  f3->addWidget(NumericSpin1);
  OCFrame1 = Nome(new QGroupBox(this), "OCFrame1");
  CBGroupFatt = Nome(new QComboBox(OCFrame1), "CBGroupFatt");
  OCFrame6 = Nome(new QGroupBox(OCFrame1), "OCFrame6");
  CBTipoDisp = Nome(new QComboBox(OCFrame6), "CBTipoDisp");
  CBTipoDisp->setMinimumWidth(240);
  Command3 = Nome(new QPushButton(QStringLiteral("..."), OCFrame6), "Command3");
  Command3->setFixedWidth(28);
  auto* f6 = new QHBoxLayout(OCFrame6);
  f6->setContentsMargins(0, 0, 0, 0);
  f6->addWidget(CBTipoDisp, 1);
  f6->addWidget(Command3);
  TBDDisp = Nome(new QLineEdit(OCFrame1), "TBDDisp");
  LimitaTesto(TBDDisp, TestoMassimo(QStringLiteral("ProjectsDisp"), QStringLiteral("DDisp")));
  auto* f1 = new QFormLayout(OCFrame1);
  f1->addRow(QStringLiteral("Gruppo fatturazione"), CBGroupFatt);
  f1->addRow(QStringLiteral("Tipo disposizione"), OCFrame6);
  f1->addRow(QStringLiteral("Descrizione"), TBDDisp);
  OCFrame7 = Nome(new QGroupBox(this), "OCFrame7");
  OCUpQta = Nome(new NumericSpin(OCFrame7, QStringLiteral("0")), "OCUpQta");
  OCUpQta->setRange(0, 1e9);
  auto* f7 = new QFormLayout(OCFrame7);
  f7->addRow(QStringLiteral("Q.ta da eseguire"), OCUpQta);
  OCFrame5 = Nome(new QGroupBox(this), "OCFrame5");
  NumericSpin2 = Nome(new NumericSpin(OCFrame5, QStringLiteral("0")), "NumericSpin2");
  NumericSpin2->SetLocked(true);
  NumericSpin2->setRange(-32768, 32767);
  auto* f5 = new QFormLayout(OCFrame5);
  f5->addRow(QStringLiteral("Q.ta eseguita"), NumericSpin2);
  OCFramePz = Nome(new QGroupBox(this), "OCFramePz");
  chkDefPzVend = Nome(new QCheckBox(QStringLiteral("Prezzo"), OCFramePz), "chkDefPzVend");
  OCPzVend = Nome(new NumericSpin(OCFramePz, QStringLiteral("#,##0.00")), "OCPzVend");
  OCPzVend->setRange(0, 1e9);
  auto* fp = new QHBoxLayout(OCFramePz);
  fp->addWidget(chkDefPzVend);
  fp->addWidget(OCPzVend, 1);
  OCFrame10 = Nome(new QGroupBox(this), "OCFrame10");
  chkFatt = Nome(new QCheckBox(QStringLiteral("Fatturato"), OCFrame10), "chkFatt");
  OCNFatt = Nome(new NumericSpin(OCFrame10, QStringLiteral("0000-00000")), "OCNFatt");
  auto* f10 = new QHBoxLayout(OCFrame10);
  f10->addWidget(chkFatt);
  f10->addWidget(new QLabel(QStringLiteral("n° fattura")));
  f10->addWidget(OCNFatt);
  OCFrame9 = Nome(new QGroupBox(this), "OCFrame9");
  chkClosed = Nome(new QCheckBox(QStringLiteral("Chiudi disposizione"), OCFrame9), "chkClosed");
  DTEnd = Nome(new QDateEdit(OCFrame9), "DTEnd");
  DTEnd->setCalendarPopup(true);
  DTEnd->setDisplayFormat(QStringLiteral("dd/MM/yyyy"));
  auto* f9 = new QHBoxLayout(OCFrame9);
  f9->addWidget(chkClosed);
  f9->addWidget(DTEnd);
  testa->addWidget(OCFrame2, 0, 0, 1, 2);
  auto* numero = new QHBoxLayout;
  numero->addWidget(OCFrame3);
  numero->addWidget(new QLabel(QStringLiteral("Data")));
  numero->addWidget(DTPicker1);
  numero->addStretch(1);
  testa->addLayout(numero, 1, 0, 1, 2);
  testa->addWidget(OCFrame1, 2, 0, 3, 1);
  testa->addWidget(OCFrame7, 2, 1);
  testa->addWidget(OCFrame5, 3, 1);
  testa->addWidget(OCFramePz, 4, 1);
  testa->addWidget(OCFrame10, 5, 0);
  testa->addWidget(OCFrame9, 5, 1);
  testa->setColumnStretch(0, 2);
  testa->setColumnStretch(1, 1);
  corpo->addLayout(testa);

  SSTab1 = Nome(new QTabWidget(this), "SSTab1");
  lvwPrest = Nome(new ListView, "lvwPrest");
  lvwEsecInt = Nome(new ListView, "lvwEsecInt");
  lvwEsecExt = Nome(new ListView, "lvwEsecExt");
  lvwDocs = Nome(new ListView, "lvwDocs");
  TBAnnot = Nome(new QPlainTextEdit, "TBAnnot");
  LimitaTesto(TBAnnot, TestoMassimo(QStringLiteral("ProjectsDisp"), QStringLiteral("Annot")));
  SSTab1->addTab(Pagina(lvwPrest), QStringLiteral("Prestazioni"));
  SSTab1->addTab(Pagina(lvwEsecInt), QStringLiteral("Esec. interne"));
  SSTab1->addTab(Pagina(lvwEsecExt), QStringLiteral("Esec. esterne"));
  SSTab1->addTab(Pagina(lvwDocs), QStringLiteral("DDT"));
  SSTab1->addTab(Pagina(TBAnnot), QStringLiteral("Annotazioni"));
  SSTab1->setMinimumSize(820, 240);
  corpo->addWidget(SSTab1, 1);
}

void frmDisp::BuildMenus() {
  mnuF = Menu(QStringLiteral("mnuF"), QStringLiteral("&File"));
  mnuFS = Voce(mnuF, QStringLiteral("mnuFS"), QStringLiteral("&Salva"));
  mnuPrn = Voce(mnuF, QStringLiteral("mnuPrn"), QStringLiteral("S&tampa"));
  mnuspcsblocca = Separatore(mnuF, QStringLiteral("mnuspcsblocca"));
  mnuSblocca = Voce(mnuF, QStringLiteral("mnuSblocca"), QStringLiteral("Sblocca dati"));
  mnuFE = Voce(mnuF, QStringLiteral("mnuFE"), QStringLiteral("&Esci"));
  mnuMod = Menu(QStringLiteral("mnuMod"), QStringLiteral("&Modifica"));
  mnuAdd = Voce(mnuMod, QStringLiteral("mnuAdd"), QStringLiteral("&Aggiungi"));
  mnuEdit = Voce(mnuMod, QStringLiteral("mnuEdit"), QStringLiteral("&Modifica"));
  mnuDel = Voce(mnuMod, QStringLiteral("mnuDel"), QStringLiteral("&Elimina"));
  mnuSpcChange = Separatore(mnuMod, QStringLiteral("mnuSpcChange"));
  mnuSposta = Voce(mnuMod, QStringLiteral("mnuSposta"), QStringLiteral("Sposta"));
  mnuH = Menu(QStringLiteral("mnuH"), QStringLiteral("&?"));
}

void frmDisp::ConnectUi() {
  connect(this, &Scheda::ToolbarClick, this, [this](int i) {
    switch (i) {
      case 1: EseguiComando(0); break;
      case 3: EseguiComando(1); break;
      case 5: EseguiComando(2); break;
      case 7: EseguiComando(3); break;
      case 8: EseguiComando(4); break;
      case 9: EseguiComando(5); break;
      case 11: EseguiComando(6); break;
      default: break;
    }
  });
  // Of the menus only "Sblocca dati" and "Sposta" act; the toolbar carries the rest.
  connect(mnuSblocca, &QAction::triggered, this, &frmDisp::mnuSblocca_Click);
  connect(mnuSposta, &QAction::triggered, this, &frmDisp::mnuSposta_Click);
  connect(CBTipoDisp, &QComboBox::currentIndexChanged, this, &frmDisp::CBTipoDisp_Click);
  connect(chkClosed, &QCheckBox::toggled, this, &frmDisp::chkClosed_Click);
  connect(SSTab1, &QTabWidget::currentChanged, this, [this] { SSTab1_Click(); });
  connect(Command3, &QPushButton::clicked, this, [this] {
    QVariant tipo = CodiceTipo();
    gOcxEventS->ShowTipologieDisp(tipo);
  });
  connect(DTEnd, &QDateEdit::dateChanged, this, [this] { SetModificato(true); });
  connect(chkDefPzVend, &QCheckBox::toggled, this, [this] { SetModificato(true); });
  connect(OCPzVend, &QDoubleSpinBox::valueChanged, this, [this] { SetModificato(true); });
  connect(OCUpQta, &QDoubleSpinBox::valueChanged, this, [this] { SetModificato(true); });
  connect(TBAnnot, &QPlainTextEdit::textChanged, this, [this] { SetModificato(true); });
  connect(TBDDisp, &QLineEdit::textChanged, this, [this] { SetModificato(true); });
  connect(lvwPrest, &ListView::ItemCheck, this, [this] { SetModificato(true); });
  connect(lvwEsecInt, &ListView::DblClick, this, [this] {
    if (lvwEsecInt->Count() > 0) EseguiComando(4);
  });
  connect(lvwEsecExt, &ListView::DblClick, this, [this] {
    if (lvwEsecExt->Count() > 0) EseguiComando(6);
  });
  connect(lvwEsecInt, &ListView::RightButtonUp, this, [this](const QPoint& p) {
    if (!Chiusa) mnuMod->popup(p);
  });
}

// ---------------------------------------------------------------- load

int frmDisp::CodiceTipo() const { return GetCBValue(CBTipoDisp); }

void frmDisp::Form_Load() {
  Guard g(kForm, QStringLiteral("Form_Load"));
  g([&] {
    OcxEventS = OCPrestKTClassPtr(std::make_shared<OCPrestKTClass>());
    gOcxEventCard = OcxEventS;
    connect(OcxEventS.get(), &OCPrestKTClass::ChProjInDisposizioni, this,
            [this](QVariant& tipo) { SetCBValue(CBTipoDisp, CInt(NullToZero(tipo)), CBTipoDisp->currentIndex()); },
            Qt::DirectConnection);
  });
  g([&] {
    SSTab1->setCurrentIndex(0);
    SetBottoneVisibile(10, false);
    SetBottoneVisibile(11, false);
  });
  g([&] { Prepara(QStringLiteral("Scheda disposizione")); });
  g([&] { IniVideo(); });
  g([&] { AggiornaToolbar(); });
  // Filling selects "{tutte}", and its click sets the face of a card with no type.
  g([&] { CaricaComboTipoDisp(CBTipoDisp); });
  g([&] {
    CBGroupFatt->clear();
    CBGroupFatt->addItem(QStringLiteral("{standard}"), 0);
    CBGroupFatt->setCurrentIndex(Azione == 2 ? 0 : -1);
  });
  Chiusa = false;
  if (Azione == 2) {
    g([&] {
      RecordsetPtr vuoto;
      ADO2ADO(gRcsDispDett, vuoto, true, false, QStringLiteral("CDisp=-1"));
      rcsDett = vuoto;
    });
    g([&] {
      DTPicker1->setDate(Today().date());
      DTEnd->setDate(Today().date());
      NumericSpin1->SetValue(0);
      OCUpQta->SetValue(0);
      OCPzVend->SetValue(0);
      CDisp = 0;
      TBDDisp->clear();
      TBAnnot->clear();
      chkDefPzVend->setChecked(false);
      chkClosed->setChecked(false);
      NStampa = 0;
      OCFrame9->setEnabled(false);
    });
    g([&] { CaricaListPrest(); });
  } else {
    g([&] {
      // The copy holds the rows of this disposition only: its clones, which
      // don't keep a filter, then see nothing of the model's other ones.
      RecordsetPtr copia;
      ADO2ADO(gRcsDispDett, copia, true, false, QStringLiteral("CDisp=") + N(CDisp));
      rcsDett = copia;
    });
    g([&] {
      // Read from the table: the working copy may be older than the last print.
      RecordsetPtr rs;
      ApriRecordset(rs,
                    QStringLiteral("SELECT CProject, CDisp, NStampa FROM ProjectsDisp WHERE CProject=") + N(CProject) +
                        QStringLiteral(" AND CDisp=") + N(CDisp) + QStringLiteral(" "),
                    nullptr, dbOpenSnapshot);
      NStampa = CInt(NullToZero(rs->Value(QStringLiteral("NStampa"))));
    });
    RecordsetPtr disp;
    g([&] {
      disp = gRcsDisp;
      disp->SetFilter(QStringLiteral("CDisp=") + N(CDisp));
    });
    g([&] { SetCBValue(CBTipoDisp, CInt(NullToZero(disp->Value(QStringLiteral("CPrjDispTipo")))), 0); });
    g([&] { DTPicker1->setDate(CDate(disp->Value(QStringLiteral("Data"))).date()); });
    g([&] { NumericSpin1->SetValue(CDbl(disp->Value(QStringLiteral("CDisp")))); });
    g([&] { TBAnnot->setPlainText(NullToStr(disp->Value(QStringLiteral("Annot")))); });
    g([&] { TBDDisp->setText(NullToStr(disp->Value(QStringLiteral("DDisp")))); });
    g([&] { OCUpQta->SetValue(CDbl(NullToZero(disp->Value(QStringLiteral("Qta"))))); });
    g([&] { OCPzVend->SetValue(CDbl(NullToZero(disp->Value(QStringLiteral("PzVend"))))); });
    g([&] { chkDefPzVend->setChecked(std::abs(CDbl(NullToZero(disp->Value(QStringLiteral("DefPzVend"))))) != 0); });
    const int stato = g.Value([&] { return CInt(NullToZero(disp->Value(QStringLiteral("CStato")))); }, 0);
    g([&] { chkClosed->setChecked(stato != 0); });
    g([&] {
      const QVariant fine = disp->Value(QStringLiteral("DtEnd"));
      DTEnd->setDate(IsNull(fine) ? Today().date() : CDate(fine).date());
    });
    g([&] { chkFatt->setChecked(stato == 19); });
    Chiusa = stato != 0;
    g([&] { DTEnd->setEnabled(Chiusa); });
    g([&] { AggiornaToolbar(); });
    g([&] { AggiornaBlocchi(); });
  }
  caricato_ = true;
  SetModificato(false);
  g([&] {
    // A printed sheet freezes type, description and service kinds until "Sblocca dati".
    OCFrame1->setEnabled(NStampa == 0 && !Chiusa);
    lvwPrest->setEnabled(NStampa == 0 && !Chiusa);
  });
}

void frmDisp::IniVideo() {
  OCFrame2->setEnabled(false);
  OCFrame3->setEnabled(false);
  OCFrame5->setEnabled(false);
  OCFrame10->setEnabled(false);
  OCFrame10->setVisible(false);
  OCNFatt->setEnabled(false);
  DTEnd->setEnabled(false);
  TBAnag->setText(RagSoc1);
  TBDProject->setText(DProject);
  ListViewReport(lvwPrest, true);
  ListViewSetColumns(lvwPrest, {QStringLiteral("Prestazioni")}, {5000}, {lvwColumnLeft});
}

void frmDisp::SetModificato(bool v) {
  if (!caricato_ && v) return;
  modificato_ = v;
  SetBottoneAbilitato(3, v);
  mnuFS->setEnabled(v);
}

void frmDisp::AggiornaToolbar() {
  const int tab = SSTab1->currentIndex();
  const bool attivita = tab == 1 && !Chiusa;
  for (int b = 6; b <= 9; ++b) SetBottoneVisibile(b, attivita);
  mnuMod->menuAction()->setVisible(attivita);
  mnuSposta->setEnabled(Azione == 1 && !Chiusa);
  SetBottoneVisibile(10, tab == 2 && !gOnlyPrest);
  SetBottoneVisibile(11, tab == 2 && !gOnlyPrest);
}

// The type can change while no list that was loaded so far has a row: the
// lists load only when their tab first opens, and the lock follows that.
void frmDisp::AggiornaBlocchi() {
  OCFrame6->setEnabled(lvwEsecInt->Count() == 0 && lvwEsecExt->Count() == 0 && lvwDocs->Count() == 0);
  OCFrame7->setEnabled(!Chiusa);
}

void frmDisp::SSTab1_Click() {
  AggiornaToolbar();
  const int tab = SSTab1->currentIndex();
  if (tab < 0 || tab > 4 || tabAperta_[tab]) return;
  tabAperta_[tab] = true;
  if (tab == 1) CaricaListEsecInt();
  if (tab == 2) CaricaListEsecExt();
  if (tab == 3) CaricaListDocs();
}

void frmDisp::CBTipoDisp_Click() {
  Guard g(kForm, QStringLiteral("CBTipoDisp_Click"));
  const int codice = CodiceTipo();
  if (isVisible() && codice == CPrjDispTipo) return;
  if (isVisible()) {
    bool spuntate = false;
    for (int i = 0; i < lvwPrest->Count(); ++i) spuntate = spuntate || lvwPrest->Checked(i);
    if (spuntate) {
      if (MsgBox(QStringLiteral("Attenzione se cambio il tipo di disposizione devo annullare le prestazioni legate alla "
                                "disposizione in corso!\nProseguo?"),
                 vbYesNo | vbQuestion | vbDefaultButton2) == vbNo) {
        SetCBValue(CBTipoDisp, CPrjDispTipo, CBTipoDisp->currentIndex());
        return;
      }
      // Only the card's copy: the table changes at the save.
      g([&] { CancellaFiltrati(rcsDett, QString()); });
    }
  }
  g([&] {
    CPrjDispTipo = codice;
    PerPezzo = false;
    RecordsetPtr rs;
    ApriRecordset(rs,
                  QStringLiteral("SELECT CPrjDispTipo, TipoFatt FROM ProjectsDispTipo WHERE CPrjDispTipo=") +
                      N(codice) + QStringLiteral(" "),
                  nullptr, dbOpenSnapshot);
    if (!rs->Eof()) PerPezzo = CInt(NullToZero(rs->Value(QStringLiteral("TipoFatt")))) == 2;
  });
  g([&] {
    OCFramePz->setVisible(PerPezzo && !gOnlyPrest);
    SSTab1->setTabText(3, PerPezzo ? QStringLiteral("DDT") : QStringLiteral("Fatture"));
  });
  if (Azione == 2) g([&] { chkDefPzVend->setChecked(PerPezzo); });
  SetModificato(true);
  g([&] { CaricaListPrest(); });
}

void frmDisp::chkClosed_Click() {
  DTEnd->setEnabled(chkClosed->isChecked());
  Chiusa = chkClosed->isChecked();
  AggiornaToolbar();
  AggiornaBlocchi();
  SetModificato(true);
}

void frmDisp::mnuSblocca_Click() {
  OCFrame1->setEnabled(!Chiusa);
  lvwPrest->setEnabled(!Chiusa);
}

// ---------------------------------------------------------------- commands

void frmDisp::EseguiComando(int n) {
  switch (n) {
    case 0: close(); break;
    case 1:
      if (Salva()) close();
      break;
    case 2:
      // The sheet of a disposition that is saved and typed; unsaved changes are saved first.
      if (!CanOpenExec()) break;
      if (modificato_ && !Salva()) break;
      if (!StampaScheda) StampaScheda = std::make_shared<AnteprimaStampa>(this);
      StpSchedaProd(*StampaScheda, CProject, CDisp);
      break;
    case 3: AddProd(); break;
    case 4: EditProd(); break;
    case 5: DelProd(); break;
    case 6: InfoProd(); break;
    default: break;
  }
}

bool frmDisp::CanOpenExec() {
  Guard g(kForm, QStringLiteral("CanOpenExec"));
  if (CodiceTipo() <= 0) {
    MsgBox(QStringLiteral("Devi inserire una tipologia di disposizione!"), vbExclamation);
    if (CBTipoDisp->isVisible() && CBTipoDisp->isEnabled()) CBTipoDisp->setFocus();
    return false;
  }
  if (Azione == 2) return g.Value([&] { return Salva(); }, true);
  return true;
}

bool frmDisp::Salva() {
  Guard g(kForm, QStringLiteral("Salva"));
  auto focus = [](QWidget* w) {
    if (w->isVisible() && w->isEnabled()) w->setFocus();
  };
  if (TBDDisp->text().trimmed().isEmpty()) {
    MsgBox(QStringLiteral("Devi inserire una descrizione per la disposizione!"), vbExclamation);
    focus(TBDDisp);
    return false;
  }
  if (CodiceTipo() <= 0) {
    MsgBox(QStringLiteral("Devi inserire una tipologia di disposizione!"), vbExclamation);
    focus(CBTipoDisp);
    return false;
  }
  if (OCUpQta->Value() == 0) {
    MsgBox(QStringLiteral("Devi inserire la quantità!"), vbExclamation);
    focus(OCUpQta);
    return false;
  }
  if (chkDefPzVend->isVisibleTo(this)) {
    if (chkDefPzVend->isChecked() && OCPzVend->Value() == 0) {
      MsgBox(QStringLiteral("Devi definire il prezzo o disattivarlo!"), vbExclamation);
      focus(OCPzVend);
      return false;
    }
  } else {
    chkDefPzVend->setChecked(false);
  }
  g([&] { SalvaDisp(); });
  return true;
}

void frmDisp::SalvaDisp() {
  Guard g(kForm, QStringLiteral("SalvaDisp"));
  // The number read and the row written are one unit, which another workstation waits for.
  Transazione numerata(g);
  if (Azione == 2) {
    // The numbers run inside the model; a deleted last number is given again.
    CDisp = NuovoNumeroDisposizione(g, CProject);
  }
  RecordsetPtr rs;
  if (Azione == 2) {
    g([&] {
      ApriRecordset(rs, QStringLiteral("SELECT * FROM ProjectsDisp WHERE CProject=") + N(CProject) + QStringLiteral("; "),
                    nullptr, dbOpenDynaset);
    });
    g([&] {
      rs->AddNew();
      rs->SetValue(QStringLiteral("CProject"), CProject);
      rs->SetValue(QStringLiteral("CDisp"), CDisp);
    });
  } else {
    g([&] {
      ApriRecordset(rs,
                    QStringLiteral("SELECT * FROM ProjectsDisp WHERE CProject=") + N(CProject) +
                        QStringLiteral(" AND CDisp=") + N(CDisp) + QStringLiteral("; "),
                    nullptr, dbOpenDynaset);
    });
    g([&] { rs->Edit(); });
  }
  // A save from this card drops the marks 10 and 19: deliberately no guard.
  g([&] {
    if (chkClosed->isChecked()) {
      rs->SetValue(QStringLiteral("CStato"), 9);
      rs->SetValue(QStringLiteral("DtEnd"), QDateTime(DTEnd->date(), QTime(0, 0)));
    } else {
      rs->SetValue(QStringLiteral("CStato"), 0);
      rs->SetValue(QStringLiteral("DtEnd"), QVariant());
    }
  });
  g([&] { rs->SetValue(QStringLiteral("DDisp"), TBDDisp->text().trimmed()); });
  g([&] { rs->SetValue(QStringLiteral("CPrjDispTipo"), CPrjDispTipo); });
  g([&] { rs->SetValue(QStringLiteral("Data"), QDateTime(DTPicker1->date(), QTime(0, 0))); });
  g([&] { rs->SetValue(QStringLiteral("Annot"), TBAnnot->toPlainText()); });
  g([&] { rs->SetValue(QStringLiteral("Qta"), OCUpQta->Value()); });
  g([&] { rs->SetValue(QStringLiteral("DefPzVend"), chkDefPzVend->isChecked()); });
  g([&] { rs->SetValue(QStringLiteral("PzVend"), OCPzVend->Value()); });
  g([&] { rs->Update(); });
  numerata.Fine();
  const QString chiave = QStringLiteral(" WHERE CProject=") + N(CProject) + QStringLiteral(" AND CDisp=") + N(CDisp);
  // The service kinds are deleted and written anew together, or not at all.
  Transazione t(g);
  if (Azione != 2) g([&] { QueryExe(QStringLiteral("DELETE * FROM ProjectsDispDett") + chiave); });
  g([&] {
    RecordsetPtr dett;
    ApriRecordset(dett, QStringLiteral("SELECT CProject, CDisp, CPrestazione FROM ProjectsDispDett") + chiave +
                            QStringLiteral(" "),
                  nullptr, dbOpenDynaset);
    for (int i = 0; i < lvwPrest->Count(); ++i) {
      if (!lvwPrest->Checked(i)) continue;
      dett->AddNew();
      dett->SetValue(QStringLiteral("CProject"), CProject);
      dett->SetValue(QStringLiteral("CDisp"), CDisp);
      dett->SetValue(QStringLiteral("CPrestazione"), lvwPrest->Key(i).mid(1).toInt());
      dett->Update();
    }
  });
  t.Fine();
  g([&] {
    SetModificato(false);
    Azione = 1;
  });
  g([&] { CaricaDatiModello(CProject); });
  g([&] { emit Reload(CDisp); });
  g([&] { NumericSpin1->SetValue(CDisp); });
  g([&] { AggiornaToolbar(); });
}

// ---------------------------------------------------------------- activities

void frmDisp::ApriExec(int modo, int cAttivita) {
  frmExec f(this);
  f.Modo = modo;
  f.CProject = CProject;
  f.CDisp = CDisp;
  f.TipoDisp = CBTipoDisp->currentText();
  f.RagSoc1 = RagSoc1;
  f.DProject = DProject;
  f.CAttivita = cAttivita;
  connect(&f, &frmExec::Reload, this, [this](int& codice) { fExec_Reload(codice); }, Qt::DirectConnection);
  f.Form_Load();
  f.exec();
}

void frmDisp::AddProd() {
  if (!CanOpenExec()) return;
  ApriExec(2, 0);
  AggiornaBlocchi();
}

void frmDisp::EditProd() {
  Guard g(kForm, QStringLiteral("EditProd"));
  if (!CanOpenExec() || lvwEsecInt->Count() == 0) return;
  int codice = 0;
  g([&] {
    const int r = lvwEsecInt->SelectedIndex();
    if (r < 0) Raise(err::ObjectNotSet);
    codice = lvwEsecInt->Key(r).right(9).toInt();
  });
  if (codice > 0) g([&] { ApriExec(1, codice); });
  g([&] { AggiornaBlocchi(); });
}

void frmDisp::InfoProd() {
  if (lvwEsecExt->Count() == 0) return;
  const int r = lvwEsecExt->SelectedIndex();
  if (r < 0) return;
  const QString chiave = lvwEsecExt->Key(r);
  frmDispInfo f(this);
  f.NDoc = chiave.mid(4, 9).toInt();
  f.Riga = chiave.mid(13, 4).toInt();
  f.RigaD = chiave.mid(17, 4).toInt();
  f.CDisp = CDisp;
  f.Form_Load();
  f.exec();
}

void frmDisp::DelProd() {
  Guard g(kForm, QStringLiteral("DelProd"));
  if (lvwEsecInt->Count() == 0) return;
  if (MsgBox(QStringLiteral("Vuoi cancellare la prestazione selezionata?"), vbYesNo | vbQuestion | vbDefaultButton2) !=
      vbYes)
    return;
  int riga = -1;
  QString codice;
  g([&] {
    riga = lvwEsecInt->SelectedIndex();
    if (riga < 0) Raise(err::ObjectNotSet);
    codice = QString::number(lvwEsecInt->Key(riga).right(9).toInt());
  });
  g([&] {
    gRcsAct->SetFilter(QStringLiteral("CAttivita=") + codice);
    if (!gRcsAct->Eof()) gRcsAct->Delete();
    gRcsAct->SetFilter(QString());
  });
  g([&] { QueryExe(QStringLiteral("DELETE * FROM ActivitiesProd WHERE CAttivita=") + codice); });
  g([&] { lvwEsecInt->RemoveItem(riga); });
  g([&] { AggiornaBlocchi(); });
}

void frmDisp::fExec_Reload(int cAttivita) {
  CaricaListEsecInt();
  FindInList(lvwEsecInt, QStringLiteral("K") + Format(cAttivita, QStringLiteral("000000000")));
}

void frmDisp::mnuSposta_Click() {
  if (Azione == 2) return;
  bool spuntata = false;
  for (int i = 0; i < lvwEsecInt->Count(); ++i) spuntata = spuntata || lvwEsecInt->Checked(i);
  if (!spuntata) {
    MsgBox(QStringLiteral("Devi selezionare almeno una prestazione!"), vbExclamation);
    return;
  }
  frmExecSposta f(this);
  f.TAnag = TAnag;
  f.CAnag = CAnag;
  f.CProject = CProject;
  f.CDisp = CDisp;
  connect(&f, &frmExecSposta::Sposta, this, &frmDisp::fExecSposta_Sposta, Qt::DirectConnection);
  f.Form_Load();
  f.exec();
  lvwEsecInt->setFocus();
}

// The ticked activities go to another disposition, from the last row up, as
// rows leave the list; each update stands alone.
void frmDisp::fExecSposta_Sposta(int& cProject, int& cDisp) {
  Guard g(kForm, QStringLiteral("fExecSposta_Sposta"));
  for (int i = lvwEsecInt->Count() - 1; i >= 0; --i) {
    if (!g.If([&] { return lvwEsecInt->Checked(i); })) continue;
    QString codice;
    g([&] { codice = QString::number(lvwEsecInt->Key(i).mid(1).toInt()); });
    g([&] {
      QueryExe(QStringLiteral("UPDATE ActivitiesProd SET CProject = ") + N(cProject) + QStringLiteral(", CDisp = ") +
               N(cDisp) + QStringLiteral(" WHERE CAttivita=") + codice);
    });
    g([&] {
      gRcsAct->SetFilter(QStringLiteral("CAttivita=") + codice);
      if (!gRcsAct->Eof()) {
        gRcsAct->SetValue(QStringLiteral("CProject"), cProject);
        gRcsAct->SetValue(QStringLiteral("CDisp"), cDisp);
        gRcsAct->Update();
      }
      gRcsAct->SetFilter(QString());
    });
    g([&] { lvwEsecInt->RemoveItem(i); });
  }
}

// ---------------------------------------------------------------- lists

void frmDisp::CaricaListPrest() {
  Guard g(kForm, QStringLiteral("CaricaListPrest"));
  if (!rcsDett) return;
  RecordsetPtr scelte;
  g([&] {
    scelte = rcsDett->Clone();
    lvwPrest->setVisible(false);
    lvwPrest->ClearItems();
  });
  const int tipo = CodiceTipo();
  if (tipo > 0) {
    RecordsetPtr rs;
    g([&] {
      ApriRecordset(rs,
                    QStringLiteral("SELECT ProjectsDisp2Prest.CPrestazione, [ABC:Prestazioni].DTabGen AS DPrestazione "
                                   "FROM ProjectsDisp2Prest INNER JOIN [ABC:Prestazioni] ON "
                                   "ProjectsDisp2Prest.CPrestazione = [ABC:Prestazioni].CTabGen WHERE "
                                   "ProjectsDisp2Prest.CPrjDispTipo=") +
                        N(tipo) + QStringLiteral(" ORDER BY [ABC:Prestazioni].DTabGen; "),
                    nullptr, dbOpenSnapshot);
    });
    g([&] {
      for (; !rs->Eof(); rs->MoveNext()) {
        const QVariant codice = rs->Value(QStringLiteral("CPrestazione"));
        scelte->SetFilter(QStringLiteral("CPrestazione=") + CStr(codice));
        ListViewAddLine(lvwPrest, {NullToStr(rs->Value(QStringLiteral("DPrestazione")))},
                        QStringLiteral("K") + Format(codice, QStringLiteral("000")), -1, {}, false,
                        scelte->RecordCount() > 0);
      }
    });
  }
  g([&] { lvwPrest->setVisible(true); });
}

void frmDisp::CaricaListEsecInt() {
  Guard g(kForm, QStringLiteral("CaricaListEsecInt"));
  g([&] {
    lvwEsecInt->setVisible(false);
    ListViewReport(lvwEsecInt, true);
    ListViewSetColumns(lvwEsecInt,
                       {QString(), QStringLiteral("Lancio"), QStringLiteral("Data"), QStringLiteral("Operatore"),
                        QStringLiteral("Prestazione"), QStringLiteral("Tempo")},
                       {270, 1200, 1100, 2200, 2200, 900},
                       {lvwColumnLeft, lvwColumnLeft, lvwColumnLeft, lvwColumnLeft, lvwColumnLeft, lvwColumnRight});
  });
  RecordsetPtr rs;
  g([&] {
    rs = gRcsAct->Clone();
    rs->SetFilter(QStringLiteral("CDisp=") + N(CDisp));
    rs->SetSort(QStringLiteral("DtIni, CAttivita"));
  });
  // "Tempo" of an activity still running can't be formed: it keeps the text of the row before.
  QString tempo;
  NomiAttivita nomi;
  g([&] {
    for (; !rs->Eof(); rs->MoveNext()) {
      QString operatore = QStringLiteral("{sconosciuto}");
      QString prestazione = QStringLiteral("-");
      g([&] { operatore = nomi.Operatore(rs->Value(QStringLiteral("CUtente"))); });
      g([&] { prestazione = nomi.Prestazione(rs->Value(QStringLiteral("CPrestazione"))); });
      g([&] {
        tempo = CTempo(DateDiff(QStringLiteral("n"), rs->Value(QStringLiteral("DtIni")), rs->Value(QStringLiteral("DtEnd"))));
      });
      const QVariant codice = rs->Value(QStringLiteral("CAttivita"));
      ListViewAddLine(lvwEsecInt,
                      {QString(), Format(codice, QStringLiteral("0000-00000")),
                       Format(rs->Value(QStringLiteral("DtIni")), QStringLiteral("dd/mm/yyyy")), operatore, prestazione,
                       tempo},
                      QStringLiteral("K") + Format(codice, QStringLiteral("000000000")));
    }
  });
  g([&] { lvwEsecInt->setVisible(true); });
  g([&] { AggiornaBlocchi(); });
}

void frmDisp::CaricaListEsecExt() {
  Guard g(kForm, QStringLiteral("CaricaListEsecExt"));
  g([&] {
    lvwEsecExt->setVisible(false);
    ListViewReport(lvwEsecExt, false);
    if (gOnlyPrest)
      ListViewSetColumns(lvwEsecExt,
                         {QString(), QStringLiteral("Ordine"), QStringLiteral("Data"), QStringLiteral("Fornitore"),
                          QStringLiteral("Q.tà"), QStringLiteral("Da Ev"), QStringLiteral("Caus.")},
                         {270, 1200, 1100, 3000, 800, 800, 700},
                         {lvwColumnLeft, lvwColumnLeft, lvwColumnLeft, lvwColumnLeft, lvwColumnRight, lvwColumnRight,
                          lvwColumnLeft});
    else
      ListViewSetColumns(lvwEsecExt,
                         {QString(), QStringLiteral("Ordine"), QStringLiteral("Data"), QStringLiteral("Fornitore"),
                          QStringLiteral("Q.tà"), QStringLiteral("Da Ev"), QStringLiteral("Imp.Ord"),
                          QStringLiteral("Imp.Eff"), QStringLiteral("Caus.")},
                         {270, 1200, 1100, 2000, 800, 800, 1000, 1000, 700},
                         {lvwColumnLeft, lvwColumnLeft, lvwColumnLeft, lvwColumnLeft, lvwColumnRight, lvwColumnRight,
                          lvwColumnRight, lvwColumnRight, lvwColumnLeft});
  });
  RecordsetPtr rs;
  g([&] { rs = gRcsLavExt->Clone(); });
  // Each causal is read once for the list.
  Ricerca causali(QStringLiteral("SELECT CTabGen, Sigla FROM TabGen WHERE CTipTabGen=1 AND CTabGen="),
                  QStringLiteral("Sigla"));
  g([&] {
    if (!rs) return;
    rs->SetFilter(QStringLiteral("CDisp=") + N(CDisp));
    rs->SetSort(QStringLiteral("DataDoc, NDoc"));
    for (; !rs->Eof(); rs->MoveNext()) {
      const double qta = CDbl(NullToZero(rs->Value(QStringLiteral("Qta"))));
      const double annullato = CDbl(NullToZero(rs->Value(QStringLiteral("Annullato"))));
      const double arrivato = CDbl(NullToZero(rs->Value(QStringLiteral("QtaArr"))));
      QString causale;
      if (const auto sigla = causali.Valore(NullToZero(rs->Value(QStringLiteral("CCaus")))))
        causale = NullToStr(*sigla);
      QStringList riga{QString(), Format(rs->Value(QStringLiteral("NDoc")), QStringLiteral("0000-00000")),
                       Format(rs->Value(QStringLiteral("DataDoc")), QStringLiteral("dd/mm/yyyy")),
                       NullToStr(rs->Value(QStringLiteral("RagSoc1"))), CStr(Round(qta - annullato, 5)),
                       CStr(Round(qta - annullato - arrivato, 5))};
      if (!gOnlyPrest)
        riga << Format(Round(CDbl(NullToZero(rs->Value(QStringLiteral("Importo")))), 2), QStringLiteral("#,##0.00"))
             << Format(Round(CDbl(NullToZero(rs->Value(QStringLiteral("ImpEff")))), 2), QStringLiteral("#,##0.00"));
      riga << causale;
      ListViewAddLine(lvwEsecExt, riga,
                      QStringLiteral("K") + Format(rs->Value(QStringLiteral("TipoDoc")), QStringLiteral("000")) +
                          Format(rs->Value(QStringLiteral("NDoc")), QStringLiteral("000000000")) +
                          Format(rs->Value(QStringLiteral("Riga")), QStringLiteral("0000")) +
                          Format(rs->Value(QStringLiteral("RigaD")), QStringLiteral("0000")));
    }
  });
  g([&] { lvwEsecExt->setVisible(true); });
  g([&] { AggiornaBlocchi(); });
}

// What went to the customer; the executed quantity is the one total of the card.
void frmDisp::CaricaListDocs() {
  Guard g(kForm, QStringLiteral("CaricaListDocs"));
  if (Azione != 1) return;
  g([&] {
    lvwDocs->setVisible(false);
    ListViewReport(lvwDocs, true);
    ListViewSetColumns(lvwDocs,
                       {QString(), QStringLiteral("T"), QStringLiteral("N°Doc"), QStringLiteral("Data"),
                        QStringLiteral("Oggetto"), QStringLiteral("Q.tà"), QStringLiteral("Caus.")},
                       {270, 400, 1200, 1100, 3500, 800, 700},
                       {lvwColumnLeft, lvwColumnLeft, lvwColumnLeft, lvwColumnLeft, lvwColumnLeft, lvwColumnRight,
                        lvwColumnLeft});
  });
  int conteggio = 0;  // a 16-bit count, halves to even after each addition
  if (!PerPezzo) {
    // Deferred invoices first: each counts as one.
    const QString id = Format(CProject, QStringLiteral("000000000")) + Format(CDisp, QStringLiteral("000"));
    RecordsetPtr rs;
    g([&] {
      ApriRecordset(rs,
                    Sql(QStringLiteral("SELECT [Doc:FattDiffDett].ID, Doc.TipoDoc, Doc.NDoc, Doc.Data, Doc.Oggetto FROM "
                                       "([Doc:FattDiff] INNER JOIN [Doc:FattDiffDett] ON [Doc:FattDiff].Progressivo = "
                                       "[Doc:FattDiffDett].Progressivo) INNER JOIN Doc ON ([Doc:FattDiff].NDocRif = "
                                       "Doc.NDoc) AND ([Doc:FattDiff].TipoDocRif = Doc.TipoDoc) WHERE "
                                       "[Doc:FattDiffDett].ID=")) +
                        TestoSql(id) + Sql(QStringLiteral("; ")),
                    nullptr, dbOpenSnapshot);
    });
    g([&] {
      for (; !rs->Eof(); rs->MoveNext()) {
        const QVariant nDoc = rs->Value(QStringLiteral("NDoc"));
        ListViewAddLine(lvwDocs,
                        {QString(), QStringLiteral("F"), Format(nDoc, QStringLiteral("0000-00000")),
                         Format(rs->Value(QStringLiteral("Data")), QStringLiteral("dd/mm/yyyy")),
                         NullToStr(rs->Value(QStringLiteral("Oggetto"))), Format(1, QStringLiteral("#,##0")),
                         QStringLiteral("-")},
                        QStringLiteral("K") + Format(rs->Value(QStringLiteral("TipoDoc")), QStringLiteral("000")) +
                            Format(nDoc, QStringLiteral("000000000")),
                        -1, {}, false, true);
        conteggio = CInt(conteggio + 1);
      }
    });
  }
  RecordsetPtr docs;
  g([&] {
    ApriRecordset(docs,
                  QStringLiteral("SELECT ProjectsDocDett.CProject, ProjectsDocDett.CDisp, IIf([Doc]![TipoDoc]=5,\"D\",\"F\") "
                                 "AS TD, Doc.TipoDoc, Doc.NDoc, ProjectsDocDett.Scheda, ProjectsDocDett.Riga, Doc.Data, "
                                 "Doc.Oggetto FROM ProjectsDocDett INNER JOIN Doc ON (ProjectsDocDett.NDoc = Doc.NDoc) "
                                 "AND (ProjectsDocDett.TipoDoc = Doc.TipoDoc) WHERE ProjectsDocDett.CProject=") +
                      N(CProject) + QStringLiteral(" AND ProjectsDocDett.CDisp=") + N(CDisp) +
                      QStringLiteral(" ORDER BY IIf([Doc]![TipoDoc]=5,\"D\",\"F\"), Doc.Data; "),
                  nullptr, dbOpenSnapshot);
  });
  g([&] {
    for (; !docs->Eof(); docs->MoveNext()) {
      const QString t = CStr(docs->Value(QStringLiteral("TipoDoc")));
      const QVariant nDoc = docs->Value(QStringLiteral("NDoc"));
      RecordsetPtr riga;
      ApriRecordset(riga,
                    QStringLiteral("SELECT DocDett.TipoDoc, DocDett.NDoc, DocDett.Scheda, DocDett.Riga, DocDett.Qta, "
                                   "[ABC:Causfatt].DTabGen, [ABC:Causfatt].Sigla FROM DocDett INNER JOIN [ABC:Causfatt] "
                                   "ON DocDett.CCaus = [ABC:Causfatt].CTabGen WHERE DocDett.TipoDoc=") +
                        t + QStringLiteral(" AND DocDett.NDoc=") + CStr(nDoc) +
                        QStringLiteral(" AND DocDett.Scheda=0 AND DocDett.Riga=") +
                        CStr(docs->Value(QStringLiteral("Riga"))),
                    nullptr, dbOpenSnapshot);
      if (riga->Eof()) continue;
      bool fatturato = t == QLatin1String("9");
      if (!fatturato) {
        RecordsetPtr schede;
        ApriRecordset(schede,
                      QStringLiteral("SELECT TipoDocAss, NDocAss, TipoDoc FROM DocSchede GROUP BY TipoDocAss, NDocAss, "
                                     "TipoDoc HAVING TipoDocAss=") +
                          t + QStringLiteral(" AND NDocAss=") + CStr(nDoc) + QStringLiteral(" AND TipoDoc=9; "),
                      nullptr, dbOpenSnapshot);
        fatturato = schede->RecordCount() > 0;
      }
      const QVariant qta = riga->Value(QStringLiteral("Qta"));
      ListViewAddLine(lvwDocs,
                      {QString(), NullToStr(docs->Value(QStringLiteral("TD"))), Format(nDoc, QStringLiteral("0000-00000")),
                       Format(docs->Value(QStringLiteral("Data")), QStringLiteral("dd/mm/yyyy")),
                       NullToStr(docs->Value(QStringLiteral("Oggetto"))), Format(qta, QStringLiteral("#,##0")),
                       NullToStr(riga->Value(QStringLiteral("Sigla")))},
                      QStringLiteral("K") + Format(docs->Value(QStringLiteral("TipoDoc")), QStringLiteral("000")) +
                          Format(nDoc, QStringLiteral("000000000")) +
                          Format(docs->Value(QStringLiteral("Scheda")), QStringLiteral("000")) +
                          Format(docs->Value(QStringLiteral("Riga")), QStringLiteral("0000")),
                      -1, {}, false, fatturato);
      conteggio = CInt(conteggio + CDbl(NullToZero(qta)));
    }
  });
  g([&] { lvwDocs->setVisible(true); });
  g([&] { NumericSpin2->SetValue(conteggio); });
  g([&] { AggiornaBlocchi(); });
}

// ---------------------------------------------------------------- closing

void frmDisp::closeEvent(QCloseEvent* e) {
  if (!ChiusuraConsentita(modificato_, [this] { return Salva(); })) {
    e->ignore();
    return;
  }
  modificato_ = false;
  rcsDett.reset();
  if (gOcxEventCard == OcxEventS) gOcxEventCard.reset();
  gOcxEventCard.reset();  // the unload empties the slot also when an outer card stays open
  OcxEventS.reset();
  e->accept();
}

void frmDisp::reject() { close(); }

}  // namespace prestkt
