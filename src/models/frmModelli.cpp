#include "frmModelli.h"

#include <QCloseEvent>
#include <QFormLayout>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QPainter>

#include "Guard.h"
#include "ModADO.h"
#include "ModListViewKT.h"
#include "ModPrestKT.h"
#include "Procedure.h"
#include "ProcedureUi.h"
#include "Schema.h"
#include "frmDisp.h"
#include "frmGestForfSempl.h"
#include "frmModelliDocs.h"

namespace prestkt {

namespace {

const QString kForm = QStringLiteral("frmModelli");

// A dot of a colour: the pictures of the states of a disposition.
QIcon Pallino(const QColor& c) {
  QPixmap p(16, 16);
  p.fill(Qt::transparent);
  QPainter g(&p);
  g.setRenderHint(QPainter::Antialiasing);
  g.setBrush(c);
  g.setPen(c.darker(140));
  g.drawEllipse(3, 3, 10, 10);
  return QIcon(p);
}

// The small icons of the lists of dispositions, counted from 1: 11 open, 12 closed, 13 invoiced.
QList<QIcon> IconeStati() {
  QList<QIcon> icone;
  for (int i = 1; i <= 10; ++i) icone << QIcon();
  icone << Pallino(QColor(60, 170, 60)) << Pallino(QColor(150, 150, 150)) << Pallino(QColor(50, 100, 200));
  return icone;
}


// The icon of a disposition's state: 11 open, 12 closed, 13 invoiced (counted
// from 1). Any other state keeps the icon of the row before.
int IconaStato(const QVariant& cStato, int precedente) {
  const int stato = CInt(NullToZero(cStato));
  if (stato == 0) return 10;
  if (stato == 9 || stato == 10) return 11;
  if (stato == 19) return 12;
  return precedente;
}

}  // namespace

frmModelli::frmModelli(QWidget* parent) : Scheda(parent, QStringLiteral("frmModelli")) {
  BuildUi();
  BuildMenus();
  ConnectUi();
}

frmModelli::~frmModelli() {
  if (gOcxEventCard == OcxEventS) gOcxEventCard.reset();
}

// ---------------------------------------------------------------- building

void frmModelli::BuildUi() {
  CreaToolbar({{1, QStringLiteral("Esci"), QStringLiteral("application-exit")},
               {3, QStringLiteral("Salva"), QStringLiteral("document-save")},
               {5, QStringLiteral("Stampa"), QStringLiteral("document-print")},
               {7, QStringLiteral("Aggiungi disposizione"), QStringLiteral("list-add")},
               {8, QStringLiteral("Modifica disposizione"), QStringLiteral("document-edit")},
               {9, QStringLiteral("Elimina disposizione"), QStringLiteral("edit-delete")}});

  auto nome = [](auto* w, const char* n) {
    w->setObjectName(QString::fromLatin1(n));
    return w;
  };
  SSTabMod = nome(new QTabWidget(this), "SSTabMod");
  // Tab 0 "Modello".
  auto* modello = new QWidget;
  auto* gm = new QGridLayout(modello);
  OCCProject = nome(new NumericSpin(modello, QStringLiteral("0000-00000")), "OCCProject");
  OCCProject->SetLocked(true);
  OCCProject->setMinimumWidth(110);
  DTProject = nome(new QDateEdit(modello), "DTProject");
  DTProject->setCalendarPopup(true);
  DTProject->setDisplayFormat(QStringLiteral("dd/MM/yyyy"));
  OCFrame6 = nome(new QGroupBox(QStringLiteral("Anagrafica"), modello), "OCFrame6");
  CBTAnag = nome(new QComboBox(OCFrame6), "CBTAnag");
  CBCAnag = nome(new QComboBox(OCFrame6), "CBCAnag");
  cmdAnag = nome(new QPushButton(QStringLiteral("..."), OCFrame6), "cmdAnag");
  cmdAnag->setFixedWidth(28);
  auto* l6 = new QHBoxLayout(OCFrame6);
  l6->addWidget(CBTAnag);
  l6->addWidget(CBCAnag, 1);
  l6->addWidget(cmdAnag);
  CBTAnag->setMinimumWidth(120);
  CBCAnag->setMinimumWidth(260);
  OCFrame7 = nome(new QGroupBox(QStringLiteral("Tipologia"), modello), "OCFrame7");
  CBTipoPrj = nome(new QComboBox(OCFrame7), "CBTipoPrj");
  cmdTipologia = nome(new QPushButton(QStringLiteral("..."), OCFrame7), "cmdTipologia");
  cmdTipologia->setFixedWidth(28);
  auto* l7 = new QHBoxLayout(OCFrame7);
  l7->addWidget(CBTipoPrj, 1);
  l7->addWidget(cmdTipologia);
  TBDProject = nome(new QLineEdit(modello), "TBDProject");
  LimitaTesto(TBDProject, TestoMassimo(QStringLiteral("Projects"), QStringLiteral("DProject")));
  OCUpQta = nome(new NumericSpin(modello, QStringLiteral("0")), "OCUpQta");
  OCUpQta->setRange(0, 1e9);
  gm->addWidget(new QLabel(QStringLiteral("Codice")), 0, 0);
  gm->addWidget(OCCProject, 0, 1);
  gm->addWidget(new QLabel(QStringLiteral("Data")), 0, 2, Qt::AlignRight);
  gm->addWidget(DTProject, 0, 3);
  gm->addWidget(OCFrame6, 1, 0, 1, 4);
  gm->addWidget(OCFrame7, 2, 0, 1, 4);
  gm->addWidget(new QLabel(QStringLiteral("Modello")), 3, 0);
  gm->addWidget(TBDProject, 3, 1, 1, 3);
  gm->addWidget(new QLabel(QStringLiteral("Q.tà")), 4, 0);
  gm->addWidget(OCUpQta, 4, 1);
  gm->setColumnStretch(3, 1);
  SSTabMod->addTab(modello, QStringLiteral("Modello"));
  // Tab 1 "Riferimento ad ordine".
  auto* ordine = new QWidget;
  auto* go = new QGridLayout(ordine);
  OCFrame2 = nome(new QGroupBox(ordine), "OCFrame2");
  Command1 = nome(new QPushButton(QStringLiteral("..."), OCFrame2), "Command1");
  Command1->setFixedWidth(28);
  OCUDOrdine = nome(new NumericSpin(OCFrame2, QStringLiteral("0000-00000")), "OCUDOrdine");
  OCUDRiga = nome(new NumericSpin(OCFrame2, QStringLiteral("000")), "OCUDRiga");
  OCUDOrdine->setRange(0, 999999999);
  OCUDRiga->setRange(0, 32767);
  auto* l2 = new QHBoxLayout(OCFrame2);
  l2->addWidget(new QLabel(QStringLiteral("Ordine/Riga")));
  l2->addWidget(OCUDOrdine);
  l2->addWidget(OCUDRiga);
  l2->addWidget(Command1);
  l2->addStretch(1);
  OCFrame3 = nome(new QGroupBox(ordine), "OCFrame3");
  OCFrame5 = nome(new QGroupBox(OCFrame3), "OCFrame5");
  DTPicker2 = nome(new QDateEdit(OCFrame5), "DTPicker2");
  DTPicker2->setDisplayFormat(QStringLiteral("dd/MM/yyyy"));
  auto* l5 = new QHBoxLayout(OCFrame5);
  l5->addWidget(new QLabel(QStringLiteral("Data ordine")));
  l5->addWidget(DTPicker2);
  l5->addStretch(1);
  TBCodTesto = nome(new QLineEdit(OCFrame3), "TBCodTesto");
  TBDArt = nome(new QLineEdit(OCFrame3), "TBDArt");
  OCUpQtaOrd = nome(new NumericSpin(OCFrame3, QStringLiteral("0")), "OCUpQtaOrd");
  OCUpQtaOrd->setRange(-1e9, 1e9);
  auto* l3 = new QFormLayout(OCFrame3);
  l3->addRow(OCFrame5);
  l3->addRow(QStringLiteral("Codice"), TBCodTesto);
  l3->addRow(QStringLiteral("Descrizione"), TBDArt);
  l3->addRow(QStringLiteral("Q.tà ordine"), OCUpQtaOrd);
  go->addWidget(OCFrame2, 0, 0);
  go->addWidget(OCFrame3, 1, 0);
  go->setRowStretch(2, 1);
  SSTabMod->addTab(ordine, QStringLiteral("Riferimento ad ordine"));
  corpo->addWidget(SSTabMod);

  SSTab1 = nome(new QTabWidget(this), "SSTab1");
  ListView1 = nome(new ListView, "ListView1");
  TBAnnot = nome(new QPlainTextEdit, "TBAnnot");
  LimitaTesto(TBAnnot, TestoMassimo(QStringLiteral("Projects"), QStringLiteral("Annot")));
  lvwDocs = nome(new ListView, "lvwDocs");
  lvwDocs->setAcceptDrops(true);
  lvwRegistrazioni = nome(new ListView, "lvwRegistrazioni");
  SSTab1->addTab(Pagina(ListView1), QStringLiteral("Disposizioni"));
  SSTab1->addTab(Pagina(TBAnnot), QStringLiteral("Annotazioni sul modello"));
  SSTab1->addTab(Pagina(lvwDocs), QStringLiteral("Documenti"));
  SSTab1->addTab(Pagina(lvwRegistrazioni), QStringLiteral("Registrazioni"));
  SSTab1->setMinimumSize(720, 260);
  corpo->addWidget(SSTab1, 1);

  Timer1 = new QTimer(this);
  Timer1->setObjectName(QStringLiteral("Timer1"));
  Timer1->setSingleShot(true);
  Timer1->setInterval(1);
  Timer2 = new QTimer(this);
  Timer2->setObjectName(QStringLiteral("Timer2"));
  Timer2->setSingleShot(true);
  Timer2->setInterval(1);
  ImageListIcon = new ImageList(this, 16);
  ImageListIcon->setObjectName(QStringLiteral("ImageListIcon"));
  InstallaDropDocumenti(this);
}

void frmModelli::BuildMenus() {
  mnuF = Menu(QStringLiteral("mnuF"), QStringLiteral("&File"));
  mnuFS = Voce(mnuF, QStringLiteral("mnuFS"), QStringLiteral("&Salva"));
  mnuPrn = Voce(mnuF, QStringLiteral("mnuPrn"), QStringLiteral("S&tampa"));
  mnuFE = Voce(mnuF, QStringLiteral("mnuFE"), QStringLiteral("&Esci"));
  mnuMod = Menu(QStringLiteral("mnuMod"), QStringLiteral("&Modifica"));
  mnuAdd = Voce(mnuMod, QStringLiteral("mnuAdd"), QStringLiteral("&Aggiungi"));
  mnuEdit = Voce(mnuMod, QStringLiteral("mnuEdit"), QStringLiteral("&Modifica"));
  mnuDel = Voce(mnuMod, QStringLiteral("mnuDel"), QStringLiteral("&Elimina"));
  mnuSpcMod = Separatore(mnuMod, QStringLiteral("mnuSpcMod"));
  mnuModUnlockTipo = Voce(mnuMod, QStringLiteral("mnuModUnlockTipo"), QStringLiteral("Sblocca tipologia"));
  mnuModUnlockTipo->setCheckable(true);
  mnuModDoc = Menu(QStringLiteral("mnuModDoc"), QStringLiteral("&Modifica"), true);
  mnuAddDoc = mnuModDoc->addMenu(QStringLiteral("&Aggiungi"));
  mnuAddDoc->setObjectName(QStringLiteral("mnuAddDoc"));
  mnuAddWord = Voce(mnuAddDoc, QStringLiteral("mnuAddWord"), QStringLiteral("Nuovo documento Word"));
  mnuAddExcel = Voce(mnuAddDoc, QStringLiteral("mnuAddExcel"), QStringLiteral("Nuovo documento Excel"));
  mnuAddImport = Voce(mnuAddDoc, QStringLiteral("mnuAddImport"), QStringLiteral("Importa documento esistente"));
  mnuEditDoc = Voce(mnuModDoc, QStringLiteral("mnuEditDoc"), QStringLiteral("&Modifica"));
  mnuDelDoc = Voce(mnuModDoc, QStringLiteral("mnuDelDoc"), QStringLiteral("&Elimina"));
  mnuRifOrd = Menu(QStringLiteral("mnuRifOrd"), QStringLiteral("riford"), true);
  mnuLinkOrd = Voce(mnuRifOrd, QStringLiteral("mnuLinkOrd"), QStringLiteral("Collega ordine"));
  mnuDelLink = Voce(mnuRifOrd, QStringLiteral("mnuDelLink"), QStringLiteral("Annulla collegamento a ordine"));
  mnuH = Menu(QStringLiteral("mnuH"), QStringLiteral("&?"));
}

void frmModelli::ConnectUi() {
  connect(this, &Scheda::ToolbarClick, this, [this](int i) {
    switch (i) {
      case 1: EseguiComando(0); break;
      case 3: EseguiComando(1); break;
      case 5: EseguiComando(2); break;
      case 7: EseguiComando(3); break;
      case 8: EseguiComando(4); break;
      case 9: EseguiComando(5); break;
      default: break;
    }
  });
  // mnuPrn and mnuFE have no action on this card.
  connect(mnuFS, &QAction::triggered, this, [this] { EseguiComando(1); });
  connect(mnuAdd, &QAction::triggered, this, [this] { EseguiComando(3); });
  connect(mnuEdit, &QAction::triggered, this, [this] { EseguiComando(4); });
  connect(mnuDel, &QAction::triggered, this, [this] { EseguiComando(5); });
  connect(mnuEditDoc, &QAction::triggered, this, [this] { EseguiComando(4); });
  connect(mnuDelDoc, &QAction::triggered, this, [this] { EseguiComando(5); });
  connect(mnuAddWord, &QAction::triggered, this, &frmModelli::mnuAddWord_Click);
  connect(mnuAddExcel, &QAction::triggered, this, &frmModelli::mnuAddExcel_Click);
  connect(mnuAddImport, &QAction::triggered, this, &frmModelli::mnuAddImport_Click);
  connect(mnuLinkOrd, &QAction::triggered, this, &frmModelli::mnuLinkOrd_Click);
  connect(mnuDelLink, &QAction::triggered, this, &frmModelli::mnuDelLink_Click);
  connect(mnuRifOrd, &QMenu::aboutToShow, this, [this] { mnuDelLink->setEnabled(OCUDOrdine->Value() > 0); });
  connect(mnuModUnlockTipo, &QAction::triggered, this, [this] { AggiornaBlocco(); });
  connect(Command1, &QPushButton::clicked, this, [this] { Timer1->start(); });
  connect(Timer1, &QTimer::timeout, this, [this] { mnuRifOrd->popup(Command1->mapToGlobal(Command1->rect().bottomLeft())); });
  connect(Timer2, &QTimer::timeout, this, [this] { mnuModDoc->popup(QCursor::pos()); });
  connect(SSTab1, &QTabWidget::currentChanged, this, [this](int) {
    const int prima = tabPrecedente_;
    tabPrecedente_ = SSTab1->currentIndex();
    SSTab1_Click(prima);
  });
  connect(CBTAnag, &QComboBox::currentIndexChanged, this, [this] {
    TAnag = GetCBValue(CBTAnag);
    CaricaComboAnag(CBCAnag, TAnag);
  });
  connect(CBCAnag, &QComboBox::currentIndexChanged, this, [this] {
    CAnag = GetCBValue(CBCAnag);
    SetModificato(true);
  });
  connect(CBTipoPrj, &QComboBox::currentIndexChanged, this, [this] {
    Guard g(kForm, QStringLiteral("CBTipoPrj_Click"), Guard::Silent);
    RecordsetPtr rs;
    g([&] {
      ApriRecordset(rs, QStringLiteral("SELECT CPrjTipo, GestForfSempl FROM ProjectsTipo WHERE CPrjTipo = ") +
                            N(GetCBValue(CBTipoPrj)),
                    nullptr, dbOpenSnapshot);
    });
    g([&] {
      if (!rs->Eof()) GestForfSempl = CBool(NullToZero(rs->Value(QStringLiteral("GestForfSempl"))));
    });
    GestVideo();
    SetModificato(true);
  });
  connect(TBDProject, &QLineEdit::textChanged, this, [this] { SetModificato(true); });
  connect(TBAnnot, &QPlainTextEdit::textChanged, this, [this] { SetModificato(true); });
  connect(OCUpQta, &QDoubleSpinBox::valueChanged, this, [this] { SetModificato(true); });
  connect(DTProject, &QDateEdit::dateChanged, this, [this] { SetModificato(true); });
  connect(cmdAnag, &QPushButton::clicked, this, [] { gOcxEventS->ShowAnagMod(); });
  connect(cmdTipologia, &QPushButton::clicked, this, [this] {
    QVariant tipo = GetCBValue(CBTipoPrj);
    gOcxEventS->ShowTipologieMod(tipo);
  });
  for (ListView* l : {ListView1, lvwDocs})
    connect(l, &ListView::DblClick, this, [this, l] {
      if (l->Count() > 0) EseguiComando(4);
    });
}

// ---------------------------------------------------------------- load

void frmModelli::Form_Load() {
  Guard g(kForm, QStringLiteral("Form_Load"));
  g([&] {
    SSTab1->setTabVisible(3, false);
    mnuRifOrd->hide();
    mnuModDoc->hide();
    mnuModDoc->setTitle(QStringLiteral("&Modifica"));
  });
  g([&] {
    OcxEventS = OCPrestKTClassPtr(std::make_shared<OCPrestKTClass>());
    gOcxEventCard = OcxEventS;
    connect(OcxEventS.get(), &OCPrestKTClass::ChAnagInModelli, this, &frmModelli::OcxEventS_ChAnagInModelli,
            Qt::DirectConnection);
    connect(OcxEventS.get(), &OCPrestKTClass::ChProjInModelli, this, &frmModelli::OcxEventS_ChProjInModelli,
            Qt::DirectConnection);
  });
  g([&] {
    CaricaComboTAnag(CBTAnag, gTAnag);
    CaricaComboTipoPrj(CBTipoPrj);
  });
  g([&] { IniVideo(); });
  g([&] { Prepara(QStringLiteral("Scheda Modello")); });
  if (Azione == 1) {
    RecordsetPtr rs;
    g([&] {
      rs = gRcsProjects->Clone();
      rs->SetFilter(QStringLiteral("CProject=") + N(CProject));
    });
    g([&] { SetCBValue(CBTAnag, CInt(NullToZero(rs->Value(QStringLiteral("TAnag")))), 0); });
    g([&] { SetCBValue(CBCAnag, CLng(NullToZero(rs->Value(QStringLiteral("CAnag")))), 0); });
    g([&] { SetCBValue(CBTipoPrj, CInt(NullToZero(rs->Value(QStringLiteral("CPrjTipo")))), 0); });
    g([&] {
      const QDate d = CDate(rs->Value(QStringLiteral("DtIni"))).date();
      DTProject->setDateRange(QDate(d.year(), 1, 1), QDate(d.year(), 12, 31));
      DTProject->setDate(d);
    });
    g([&] { TBDProject->setText(NullToStr(rs->Value(QStringLiteral("DProject")))); });
    g([&] { OCUDOrdine->SetValue(CDbl(NullToZero(rs->Value(QStringLiteral("NDocRif"))))); });
    g([&] { OCUDRiga->SetValue(CDbl(NullToZero(rs->Value(QStringLiteral("RigaRif"))))); });
    g([&] { OCUpQta->SetValue(CDbl(NullToZero(rs->Value(QStringLiteral("Qta"))))); });
    g([&] { CaricaRigaOrdine(static_cast<int>(OCUDOrdine->Value()), static_cast<int>(OCUDRiga->Value())); });
    g([&] { TBAnnot->setPlainText(NullToStr(rs->Value(QStringLiteral("Annot")))); });
    g([&] { SSTab1->setTabEnabled(2, true); });
    g([&] { OCCProject->SetValue(CProject); });
  } else {
    g([&] { DTProject->setDate(Today().date()); });
    g([&] {
      TBDProject->clear();
      TBAnnot->clear();
      OCUpQta->SetValue(0);
    });
    g([&] { SetCBValue(CBTAnag, 1, 0); });
    g([&] { SetCBValue(CBCAnag, 0, 0); });
    g([&] { CBTipoPrj->setCurrentIndex(0); });
    g([&] {
      OCUDOrdine->SetValue(0);
      OCUDRiga->SetValue(0);
      OCCProject->SetValue(0);
      TBDArt->clear();
      TBCodTesto->clear();
    });
  }
  if (GestForfSempl)
    g([&] { CaricaListMod(); });
  else
    g([&] { CaricaList(); });
  caricato_ = true;
  SetModificato(false);
}

void frmModelli::IniVideo() {
  SSTab1->setCurrentIndex(0);
  SSTabMod->setCurrentIndex(0);
  tabPrecedente_ = 0;
  OCFrame2->setEnabled(false);
  OCFrame3->setEnabled(false);
  SSTab1->setTabEnabled(2, false);
  SSTabMod->setTabVisible(1, false);  // the order reference is shown only to code
  AbilitaDocumenti();
  ColonneListView1();
  ListView1->SetIcons(IconeStati());
  lvwRegistrazioni->SetIcons(IconeStati());
}

void frmModelli::AbilitaDocumenti() {
  if (Azione != 1) return;
  SSTab1->setTabEnabled(2, true);
  OCFrame6->setEnabled(false);  // the party is chosen before the first save and never changes
}

void frmModelli::ColonneListView1() {
  ListViewReport(ListView1, false, IconeStati());
  ListViewSetColumns(ListView1,
                     {QString(), QStringLiteral("n°"), QStringLiteral("Data"), QStringLiteral("Tipo disposizione"),
                      QStringLiteral("Q.tà")},
                     {400, 700, 1100, 4500, 1000},
                     {lvwColumnLeft, lvwColumnLeft, lvwColumnLeft, lvwColumnLeft, lvwColumnRight});
}

void frmModelli::ColonneRegistrazioni() {
  ListViewReport(lvwRegistrazioni, false, IconeStati());
  ListViewSetColumns(lvwRegistrazioni,
                     {QString(), QStringLiteral("n°"), QStringLiteral("Data ini"), QStringLiteral("Modello"),
                      QStringLiteral("Tempo")},
                     {400, 700, 1100, 4500, 1000},
                     {lvwColumnLeft, lvwColumnLeft, lvwColumnLeft, lvwColumnLeft, lvwColumnRight});
}

void frmModelli::SetModificato(bool v) {
  if (!caricato_ && v) return;
  modificato_ = v;
  SetBottoneAbilitato(3, v);
  mnuFS->setEnabled(v);
}

void frmModelli::GestVideo() {
  Guard g(kForm, QStringLiteral("GestVideo"));
  g([&] {
    for (int t = 0; t <= 2; ++t) SSTab1->setTabVisible(t, !GestForfSempl);
    SSTab1->setTabVisible(3, GestForfSempl);
  });
  g([&] {
    ListView1->setVisible(!GestForfSempl);
    lvwDocs->setVisible(!GestForfSempl);
    TBAnnot->setEnabled(!GestForfSempl);
    lvwRegistrazioni->setVisible(GestForfSempl);
  });
  if (GestForfSempl) {
    g([&] { SSTab1->setCurrentIndex(3); });
    g([&] { ColonneRegistrazioni(); });
    g([&] { CaricaListMod(); });
  } else {
    g([&] { SSTab1->setCurrentIndex(0); });
  }
}

// ---------------------------------------------------------------- commands

void frmModelli::EseguiComando(int n) {
  switch (n) {
    case 0: close(); break;
    case 1:
      if (Salva()) close();  // saving always ends the card
      break;
    case 2: break;  // "Stampa" deliberately does nothing on this card
    case 3: AddData(); break;
    case 4: EditData(); break;
    case 5: DelData(); break;
    default: break;
  }
}

int frmModelli::CDispSelezionata(ListView* lista) const {
  const int r = lista->SelectedIndex();
  if (r < 0) Raise(err::ObjectNotSet);
  return lista->Key(r).right(4).toInt();
}

void frmModelli::AddData() {
  Guard g(kForm, QStringLiteral("AddData"));
  switch (SSTab1->currentIndex()) {
    case 0:
      if (g.If([&] { return CanOpenDisp(); })) g([&] { ApriDisp(2, 0); });
      break;
    case 2: g([&] { Timer2->start(); }); break;
    case 3:
      if (g.If([&] { return CanOpenDisp(); })) g([&] { ApriForfSempl(2, 0); });
      break;
    default: break;
  }
}

void frmModelli::EditData() {
  Guard g(kForm, QStringLiteral("EditData"));
  switch (SSTab1->currentIndex()) {
    case 0:
      if (g.If([&] { return CanOpenDisp() && ListView1->Count() > 0; }))
        g([&] { ApriDisp(1, CDispSelezionata(ListView1)); });
      break;
    case 2:
      if (lvwDocs->Count() > 0) g([&] { ApriDoc(); });
      break;
    case 3:
      if (g.If([&] { return CanOpenDisp() && lvwRegistrazioni->Count() > 0; }))
        g([&] { ApriForfSempl(1, CDispSelezionata(lvwRegistrazioni)); });
      break;
    default: break;
  }
}

void frmModelli::DelData() {
  Guard g(kForm, QStringLiteral("DelData"));
  switch (SSTab1->currentIndex()) {
    case 0:
      if (ListView1->Count() > 0) {
        g([&] { CancDisp(); });
        g([&] { ListView1->setFocus(); });
      }
      break;
    case 2:
      if (lvwDocs->Count() > 0) {
        g([&] { CancDoc(); });
        g([&] { lvwDocs->setFocus(); });
      }
      break;
    case 3:
      if (lvwRegistrazioni->Count() > 0) g([&] { CancRegistrazione(); });
      break;
    default: break;
  }
}

void frmModelli::ApriDisp(int azione, int cDisp) {
  frmDisp f(this);
  f.Azione = azione;
  f.CProject = CProject;
  f.CDisp = cDisp;
  f.DProject = TBDProject->text();
  f.TAnag = TAnag;
  f.CAnag = CAnag;
  f.RagSoc1 = CBCAnag->currentText();
  f.StampaScheda = StampaScheda;
  connect(&f, &frmDisp::Reload, this, &frmModelli::fDisp_Reload, Qt::DirectConnection);
  f.Form_Load();
  f.exec();
}

void frmModelli::ApriForfSempl(int azione, int cDisp) {
  frmGestForfSempl f(this);
  f.Azione = azione;
  f.CProject = CProject;
  f.CDisp = cDisp;
  f.RagSoc1 = CBCAnag->currentText();
  f.DProject = TBDProject->text();
  connect(&f, &frmGestForfSempl::Reload, this, &frmModelli::fGestForfSempl_Reload, Qt::DirectConnection);
  f.Form_Load();
  f.exec();
}

bool frmModelli::CanOpenDisp() {
  if (GetCBValue(CBTAnag) <= 0) {
    MsgBox(QStringLiteral("Scegli un anagrafica!"), vbExclamation);
    CBTAnag->setFocus();
    return false;
  }
  if (GetCBValue(CBCAnag) <= 0) {
    MsgBox(QStringLiteral("Scegli un anagrafica!"), vbExclamation);
    CBCAnag->setFocus();
    return false;
  }
  if (TBDProject->text().trimmed().isEmpty()) {
    MsgBox(QStringLiteral("Inserisci il modello!"), vbExclamation);
    TBDProject->setFocus();
    return false;
  }
  if (Azione == 2) {
    if (MsgBox(QStringLiteral("Per procedere devo salvare il modello, proseguo?"),
               vbYesNo | vbQuestion | vbDefaultButton2) == vbYes)
      return Salva();
    return false;
  }
  return true;
}

bool frmModelli::CtrlProject() {
  if (TAnag == 0) {
    MsgBox(QStringLiteral("Scegli un'anagrafica!"), vbExclamation);
    CBTAnag->setFocus();
    return false;
  }
  if (CAnag == 0) {
    MsgBox(QStringLiteral("Scegli un'anagrafica!"), vbExclamation);
    CBCAnag->setFocus();
    return false;
  }
  if (TBDProject->text().isEmpty()) {
    MsgBox(QStringLiteral("Inserisci il modello!"), vbExclamation);
    TBDProject->setFocus();
    return false;
  }
  if (CBTipoPrj->currentIndex() <= 0) {
    MsgBox(QStringLiteral("Inserisci la tipologia del modello!"), vbExclamation);
    CBTipoPrj->setFocus();
    return false;
  }
  // The same name twice for one party. An existing card excludes gCProject,
  // which stays 0 for a card opened to add: so such a card, once saved,
  // finds itself the second time. That is how the check has always been.
  const QString testo = TBDProject->text();
  Sql sql(QStringLiteral("SELECT CProject, TAnag, CAnag, DProject FROM Projects "));
  if (Azione != 2) sql += Sql(QStringLiteral("WHERE CProject <> ") + N(gCProject) + QStringLiteral(" "));
  sql += Sql(QStringLiteral("GROUP BY CProject, TAnag, CAnag, DProject HAVING TAnag=") + N(TAnag) +
             QStringLiteral(" AND CAnag=") + N(CAnag) + QStringLiteral(" AND DProject=")) +
         TestoSql(testo) + Sql(QStringLiteral("; "));
  RecordsetPtr rs;
  ApriRecordset(rs, sql, nullptr, dbOpenSnapshot);
  if (rs && rs->RecordCount() > 0) {
    MsgBox(Azione == 2 ? QStringLiteral("Il modello '") + testo + QStringLiteral("' esiste già per questa anagrafica!")
                       : QStringLiteral("Il modello '") + testo +
                             QStringLiteral("' esiste già in un'altra scheda di questa anagrafica!"),
           vbExclamation);
    TBDProject->setFocus();
    return false;
  }
  return true;
}

bool frmModelli::Salva() {
  if (!CtrlProject()) return false;
  SalvaProject();
  SetModificato(false);
  return true;
}

void frmModelli::SalvaProject() {
  Guard g(kForm, QStringLiteral("SalvaProject"));
  // The code read and the row written are one unit, which another workstation
  // waits for; a row replaced under a fresh code goes only together with the
  // writing of the new one.
  Transazione t(g);
  if (Azione == 2) {
    // The code: year of the model's date times 100000, plus the next number of that year.
    const int anno = DTProject->date().year();
    g([&] { CProject = anno * 100000 + 1; });
    RecordsetPtr rs;
    g([&] {
      ApriRecordset(rs,
                    QStringLiteral("SELECT CProject FROM Projects WHERE DtIni Between ") +
                        DataSql(QDateTime(QDate(anno, 1, 1), QTime(0, 0))) + QStringLiteral(" And ") +
                        DataSql(QDateTime(QDate(anno, 12, 31), QTime(0, 0))) +
                        QStringLiteral(" GROUP BY CProject ORDER BY CProject DESC"),
                    nullptr, dbOpenSnapshot);
    });
    g([&] {
      if (!rs->Eof()) CProject = CLng(rs->Value(QStringLiteral("CProject"))) + 1;
    });
  }
  RecordsetPtr rs;
  g([&] { ApriRecordset(rs, QStringLiteral("SELECT * FROM Projects WHERE CProject=") + N(CProject), nullptr, dbOpenDynaset); });
  if (Azione != 2) {
    g([&] { rs->Edit(); });
  } else {
    // A row already under the freshly made code is replaced.
    g([&] {
      if (!rs->Eof()) rs->Delete();
    });
    g([&] {
      rs->AddNew();
      rs->SetValue(QStringLiteral("CProject"), CProject);
      rs->SetValue(QStringLiteral("CStato"), 0);
    });
  }
  g([&] { rs->SetValue(QStringLiteral("DProject"), TBDProject->text()); });
  g([&] { rs->SetValue(QStringLiteral("CPrjTipo"), GetCBValue(CBTipoPrj)); });
  g([&] { rs->SetValue(QStringLiteral("TAnag"), TAnag); });
  g([&] { rs->SetValue(QStringLiteral("CAnag"), CAnag); });
  g([&] { rs->SetValue(QStringLiteral("DtIni"), QDateTime(DTProject->date(), QTime(0, 0))); });
  g([&] { rs->SetValue(QStringLiteral("Annot"), TBAnnot->toPlainText()); });
  g([&] { rs->SetValue(QStringLiteral("Qta"), OCUpQta->Value()); });
  g([&] { rs->Update(); });
  t.Fine();
  g([&] {
    int codice = CProject;
    gOcxEventS->ReloadControl(codice);
  });
  g([&] {
    Azione = 1;
    AbilitaDocumenti();
    OCCProject->SetValue(CProject);
  });
}

// ---------------------------------------------------------------- host answers

void frmModelli::OcxEventS_ChAnagInModelli(QVariant& tAnag, QVariant& cAnag) {
  SetCBValue(CBTAnag, CInt(NullToZero(tAnag)), CBTAnag->currentIndex());
  // The click reloads the parties, also when the type was already the one chosen.
  TAnag = GetCBValue(CBTAnag);
  CaricaComboAnag(CBCAnag, TAnag);
  SetCBValue(CBCAnag, CLng(NullToZero(cAnag)), 0);
}

void frmModelli::OcxEventS_ChProjInModelli(QVariant& cPrjTipo) {
  CaricaComboTipoPrj(CBTipoPrj);
  SetCBValue(CBTipoPrj, CInt(NullToZero(cPrjTipo)), 0);
}

// ---------------------------------------------------------------- lists

void frmModelli::AggiornaBlocco() {
  const bool righe = ListView1->Count() > 0;
  OCFrame7->setEnabled(!righe || mnuModUnlockTipo->isChecked());
  const bool tab0 = SSTab1->currentIndex() == 0;
  mnuSpcMod->setVisible(righe && tab0);
  mnuModUnlockTipo->setVisible(righe && tab0);
}

void frmModelli::CaricaList() {
  Guard g(kForm, QStringLiteral("CaricaList"));
  g([&] {
    ListView1->setVisible(false);
    ListView1->ClearItems();
  });
  RecordsetPtr rs;
  g([&] { rs = gRcsDisp->Clone(); });
  // Each type is read once for the list.
  Ricerca tipi(QStringLiteral("SELECT CPrjDispTipo, DPrjDispTipo, Sigla FROM ProjectsDispTipo WHERE CPrjDispTipo="),
               QStringLiteral("DPrjDispTipo"));
  g([&] {
    int icona = -1;
    for (rs->MoveFirst(); !rs->Eof(); rs->MoveNext()) {
      icona = IconaStato(rs->Value(QStringLiteral("CStato")), icona);
      const QString dDisp = NullToStr(rs->Value(QStringLiteral("DDisp")));
      QString tipo = dDisp;
      if (const auto descrizione = tipi.Valore(NullToZero(rs->Value(QStringLiteral("CPrjDispTipo")))))
        tipo = NullToStr(*descrizione) + QStringLiteral(" [") + dDisp + QStringLiteral("]");
      const QVariant cDisp = rs->Value(QStringLiteral("CDisp"));
      ListViewAddLine(ListView1,
                      {QString(), Format(cDisp, QStringLiteral("0000")),
                       Format(rs->Value(QStringLiteral("Data")), QStringLiteral("dd/mm/yyyy")), tipo,
                       Format(rs->Value(QStringLiteral("Qta")), QStringLiteral("#,##0"))},
                      QStringLiteral("K") + Format(cDisp, QStringLiteral("0000")), icona);
    }
  });
  g([&] { ListView1->setVisible(!GestForfSempl); });
  g([&] {
    SetBottoneAbilitato(8, ListView1->Count() > 0);
    SetBottoneAbilitato(9, ListView1->Count() > 0);
  });
  g([&] { AggiornaBlocco(); });
}

void frmModelli::CaricaListMod() {
  Guard g(kForm, QStringLiteral("CaricaListMod"));
  g([&] {
    lvwRegistrazioni->setVisible(false);
    lvwRegistrazioni->ClearItems();
  });
  RecordsetPtr rs;
  g([&] { rs = gRcsDisp->Clone(); });
  g([&] {
    int icona = -1;
    for (rs->MoveFirst(); !rs->Eof(); rs->MoveNext()) {
      icona = IconaStato(rs->Value(QStringLiteral("CStato")), icona);
      const QVariant cDisp = rs->Value(QStringLiteral("CDisp"));
      ListViewAddLine(lvwRegistrazioni,
                      {QString(), Format(cDisp, QStringLiteral("0000")),
                       Format(rs->Value(QStringLiteral("Data")), QStringLiteral("dd/mm/yyyy")),
                       NullToStr(rs->Value(QStringLiteral("DDisp"))), CalcTempo(CInt(cDisp))},
                      QStringLiteral("K") + Format(cDisp, QStringLiteral("0000")), icona);
    }
  });
  g([&] { lvwRegistrazioni->setVisible(GestForfSempl); });
  g([&] {
    SetBottoneAbilitato(8, lvwRegistrazioni->Count() > 0);
    SetBottoneAbilitato(9, lvwRegistrazioni->Count() > 0);
  });
}

// The time of a registration. Minutes are not carried into hours: three
// activities of 40 minutes give 00:120. Running activities don't count.
QString frmModelli::CalcTempo(int cDisp) {
  Guard g(kForm, QStringLiteral("CalcTempo"));
  qint64 ore = 0, minuti = 0;
  g([&] {
    RecordsetPtr rs = gRcsAct->Clone();
    rs->SetFilter(QStringLiteral("CDisp=") + N(cDisp));
    for (; !rs->Eof(); rs->MoveNext()) {
      const QVariant fine = rs->Value(QStringLiteral("DtEnd"));
      if (IsNull(fine)) continue;
      const QVariant inizio = rs->Value(QStringLiteral("DtIni"));
      qint64 h = DateDiff(QStringLiteral("h"), inizio, fine);
      qint64 m = DateDiff(QStringLiteral("n"), inizio, fine) - h * 60;
      if (m < 0 && h >= 1) {
        h -= 1;
        m += 60;
      }
      ore += h;
      minuti += m;
    }
  });
  return Format(QVariant(ore), QStringLiteral("00")) + QLatin1Char(':') + Format(QVariant(minuti), QStringLiteral("00"));
}

void frmModelli::CancDisp() {
  CancellaRiga(ListView1, QStringLiteral("CancDisp"), [](int cDisp) {
    return QStringLiteral("Vuoi cancellare la disposizione n° ") + Format(gCProject, QStringLiteral("0000-00000")) +
           QLatin1Char('/') + Format(cDisp, QStringLiteral("0000")) + QStringLiteral(" ?");
  });
}

void frmModelli::CancRegistrazione() {
  CancellaRiga(lvwRegistrazioni, QStringLiteral("CancRegistrazione"), [](int cDisp) {
    return QStringLiteral("Vuoi cancellare la registrazione n° ") + Format(cDisp, QStringLiteral("0000")) +
           QStringLiteral(" ?");
  });
}

// The selected disposition or registration goes, after the question, with its
// activities and service kinds. The database rows go by gCProject: a card opened
// to add has 0 there, and its rows stay in the database while they leave the
// memory copy and the list.
void frmModelli::CancellaRiga(ListView* lista, const QString& procedura, const std::function<QString(int)>& domanda) {
  Guard g(kForm, procedura);
  int cDisp = 0;
  g([&] { cDisp = CDispSelezionata(lista); });
  if (MsgBox(domanda(cDisp), vbYesNo | vbQuestion | vbDefaultButton2) != vbYes) return;
  const QString where = QStringLiteral(" WHERE CProject=") + N(gCProject) + QStringLiteral(" AND CDisp=") + N(cDisp);
  g([&] { QueryExe(QStringLiteral("DELETE * FROM ActivitiesProd") + where); });
  g([&] { QueryExe(QStringLiteral("DELETE * FROM ProjectsDisp") + where); });
  g([&] { QueryExe(QStringLiteral("DELETE * FROM ProjectsDispDett") + where); });
  for (RecordsetPtr* rs : {&gRcsDisp, &gRcsDispDett}) g([&] { CancellaFiltrati(*rs, QStringLiteral("CDisp=") + N(cDisp)); });
  g([&] { lista->RemoveItem(lista->SelectedIndex()); });
  g([&] {
    if (lista->Count() > 0) {
      lista->SetSelected(0);
      lista->EnsureVisible(0);
    }
  });
}

void frmModelli::fDisp_Reload(int cDisp) {
  CaricaList();
  FindInList(ListView1, QStringLiteral("K") + Format(cDisp, QStringLiteral("0000")));
}

void frmModelli::fGestForfSempl_Reload(int cDisp) {
  CaricaListMod();
  FindInList(lvwRegistrazioni, QStringLiteral("K") + Format(cDisp, QStringLiteral("0000")));
}

void frmModelli::SSTab1_Click(int) {
  Guard g(kForm, QStringLiteral("SSTab1_Click"));
  const int tab = SSTab1->currentIndex();
  g([&] {
    mnuMod->menuAction()->setVisible(tab == 0);
    mnuModDoc->menuAction()->setVisible(tab == 2);
  });
  g([&] {
    for (int b = 6; b <= 9; ++b) SetBottoneVisibile(b, tab != 1);
  });
  if (tab == 0) {
    g([&] {
      const bool righe = ListView1->Count() > 0;
      SetBottoneAbilitato(8, righe);
      SetBottoneAbilitato(9, righe);
      mnuEdit->setEnabled(righe);
      mnuDel->setEnabled(righe);
    });
  } else if (tab == 1 || tab == 3) {
    primaVolta_[tab] = false;  // the layout places the notes and the registrations
    if (tab == 3) {
      // The forfait card is not part of this release: registrations are listed and deleted here.
      g([&] {
        SetBottoneVisibile(7, false);
        SetBottoneVisibile(8, false);
      });
    }
  } else if (tab == 2) {
    g([&] {
      if (primaVolta_[2]) primaVolta_[2] = false;
    });
    g([&] { EsisteCartella(gPathDocs, true); });
    g([&] { ColonneDocs(); });
    g([&] { CaricaListDoc(); });
    g([&] {
      const bool righe = lvwDocs->Count() > 0;
      SetBottoneAbilitato(8, righe);
      SetBottoneAbilitato(9, righe);
      mnuEditDoc->setEnabled(righe);
      mnuDelDoc->setEnabled(righe);
    });
  }
  g([&] {
    const bool righe = ListView1->Count() > 0;
    mnuSpcMod->setVisible(righe && tab == 0);
    mnuModUnlockTipo->setVisible(righe && tab == 0);
  });
}

// ---------------------------------------------------------------- closing

void frmModelli::closeEvent(QCloseEvent* e) {
  if (chiudendo_) {
    e->accept();
    return;
  }
  if (!ChiusuraConsentita(modificato_, [this] { return Salva(); })) {
    e->ignore();
    return;
  }
  chiudendo_ = true;
  gOcxEventCard.reset();  // the slot empties, whichever card held it
  OcxEventS.reset();
  e->accept();
}

void frmModelli::reject() { close(); }

}  // namespace prestkt
