#include "OCPrestKT.h"

#include <array>
#include <QCoreApplication>
#include <QDir>
#include <QEvent>
#include <QHBoxLayout>
#include <QScreen>
#include <QVBoxLayout>

#include "Guard.h"
#include "ModDoc.h"
#include "frmGestOrdFornImm.h"
#include "ModListViewKT.h"
#include "ModPrestKT.h"
#include "Procedure.h"
#include "ProcedureUi.h"
#include "CalcDatiDisp.h"
#include "frmCalcPzVend.h"
#include "frmInputData.h"
#include "frmModelli.h"
#include "frmCtrlDDTxFatt.h"
#include "frmGestDisp.h"
#include "frmRepExcel.h"
#include "frmRepOperatori.h"
#include "AnteprimaStampa.h"
#include "ModReport.h"
#include "frmSettings.h"

namespace prestkt {

namespace {

const QString kModulo = QStringLiteral("OCPrestKT");

QString Codice9(const QVariant& v) { return Format(v, QStringLiteral("000000000")); }

// A host may end without destroying the component: what the component holds
// goes while the application still stands, not after it.
void RilasciaAllaFine() {
  gOcxEventCard.reset();
  gOcxEventS.reset();
  RilasciaRiferimenti();
}

}  // namespace

OCPrestKT::OCPrestKT(QWidget* parent) : QWidget(parent) {
  setObjectName(QStringLiteral("OCPrestKT"));
  static const bool registrata = [] {
    qAddPostRoutine(RilasciaAllaFine);
    return true;
  }();
  Q_UNUSED(registrata);
  BuildSurface();
}

OCPrestKT::~OCPrestKT() {
  if (gOcxEventS == ocxEventS_) gOcxEventS.reset();
  RilasciaRiferimenti();
}

void OCPrestKT::BuildSurface() {
  auto named = [](QWidget* w, const char* name) {
    w->setObjectName(QString::fromLatin1(name));
    return w;
  };
  Frame1 = static_cast<QFrame*>(named(new QFrame(this), "Frame1"));
  Frame2 = static_cast<QFrame*>(named(new QFrame(this), "Frame2"));
  Label4 = static_cast<QLabel*>(named(new QLabel(QStringLiteral("Anagrafica:"), Frame1), "Label4"));
  CBTAnag = static_cast<QComboBox*>(named(new QComboBox(Frame1), "CBTAnag"));
  CBCAnag = static_cast<QComboBox*>(named(new QComboBox(Frame1), "CBCAnag"));
  Command1 = static_cast<QPushButton*>(named(new QPushButton(QStringLiteral("..."), Frame1), "Command1"));
  Label6 = static_cast<QLabel*>(named(new QLabel(QStringLiteral("Tipo:"), Frame2), "Label6"));
  CBTipoPrj = static_cast<QComboBox*>(named(new QComboBox(Frame2), "CBTipoPrj"));
  Label3 = static_cast<QLabel*>(named(new QLabel(QStringLiteral("Cerca:"), Frame2), "Label3"));
  TBFind = static_cast<QLineEdit*>(named(new QLineEdit(Frame2), "TBFind"));
  ListView1 = static_cast<ListView*>(named(new ListView(this), "ListView1"));
  Timer1 = new QTimer(this);
  Timer1->setObjectName(QStringLiteral("Timer1"));
  Timer1->setSingleShot(true);
  Timer1->setInterval(1);

  Command1->setFixedWidth(28);
  CBTAnag->setMinimumWidth(140);
  CBCAnag->setMinimumWidth(240);
  CBTipoPrj->setMinimumWidth(180);
  TBFind->setClearButtonEnabled(true);
  auto* l1 = new QHBoxLayout(Frame1);
  l1->setContentsMargins(0, 0, 0, 0);
  l1->addWidget(Label4);
  l1->addWidget(CBTAnag);
  l1->addWidget(CBCAnag, 1);
  l1->addWidget(Command1);
  auto* l2 = new QHBoxLayout(Frame2);
  l2->setContentsMargins(0, 0, 0, 0);
  l2->addWidget(Label6);
  l2->addWidget(CBTipoPrj, 1);
  l2->addSpacing(12);
  l2->addWidget(Label3);
  l2->addWidget(TBFind, 2);
  auto* top = new QHBoxLayout;
  top->addWidget(Frame1, 1);
  top->addSpacing(12);
  top->addWidget(Frame2, 1);
  auto* main = new QVBoxLayout(this);
  main->setContentsMargins(4, 4, 4, 4);
  main->addLayout(top);
  main->addWidget(ListView1, 1);
  ListView1->setVisible(false);  // shown by Timer1 once the host has laid out its form
  ListView1->installEventFilter(this);

  mnuTD = new QMenu(this);
  mnuTD->setObjectName(QStringLiteral("mnuTD"));
  mnuSel = mnuTD->addAction(QStringLiteral("Seleziona tutti"));
  mnuSel->setObjectName(QStringLiteral("mnuSel"));
  mnuDeSel = mnuTD->addAction(QStringLiteral("Deseleziona tutti"));
  mnuDeSel->setObjectName(QStringLiteral("mnuDeSel"));
  mnuSpc = mnuTD->addSeparator();
  mnuSpc->setObjectName(QStringLiteral("mnuSpc"));
  mnuClose = mnuTD->addAction(QStringLiteral("Chiudi"));
  mnuClose->setObjectName(QStringLiteral("mnuClose"));
  mnuReOpen = mnuTD->addAction(QStringLiteral("Riapri"));
  mnuReOpen->setObjectName(QStringLiteral("mnuReOpen"));

  connect(mnuSel, &QAction::triggered, this, &OCPrestKT::mnuSel_Click);
  connect(mnuDeSel, &QAction::triggered, this, &OCPrestKT::mnuDeSel_Click);
  connect(mnuClose, &QAction::triggered, this, &OCPrestKT::mnuClose_Click);
  connect(mnuReOpen, &QAction::triggered, this, &OCPrestKT::mnuReOpen_Click);
  connect(Timer1, &QTimer::timeout, this, [this] {
    Timer1->stop();
    ListView1->setVisible(true);
  });
  connect(CBTAnag, &QComboBox::currentIndexChanged, this, [this] {
    Guard g(kModulo, QStringLiteral("CBTAnag_Click"), Guard::Silent);
    g([&] { gTAnag = GetCBValue(CBTAnag); });
    g([&] { CaricaComboAnag(CBCAnag, gTAnag); });
  });
  connect(CBCAnag, &QComboBox::currentIndexChanged, this, [this] {
    Guard g(kModulo, QStringLiteral("CBCAnag_Click"), Guard::Silent);
    gCAnag = 0;
    g([&] { gCAnag = GetCBValue(CBCAnag); });
    if (!gLoading_) g([&] { CaricaList(); });
  });
  connect(CBTipoPrj, &QComboBox::currentIndexChanged, this, [this] {
    if (!gLoading_) CaricaList();
  });
  connect(TBFind, &QLineEdit::textChanged, this, [this] {
    if (!gLoading_) CaricaList();
  });
  connect(Command1, &QPushButton::clicked, this, [this] { emit CallShowAnag(); });
  connect(ListView1, &ListView::ColumnClick, this, &OCPrestKT::ColumnClick);
  connect(ListView1, &ListView::DblClick, this, [this] {
    if (!gOnlyInput) Modifica();
  });
  connect(ListView1, &ListView::RightButtonUp, this, [this](const QPoint& p) { mnuTD->popup(p); });
}

// ---------------------------------------------------------------- properties

void OCPrestKT::SetOcxEventS(OCPrestKTClassPtr relay) {
  if (ocxEventS_) ocxEventS_->disconnect(this);
  ocxEventS_ = std::move(relay);
  ConnectRelay();
  emit PropertyChanged(QStringLiteral("OcxEventS"));
}

QDateTime OCPrestKT::DtIni() const { return gDtIni; }
void OCPrestKT::SetDtIni(const QDateTime& v) {
  gDtIni = v;
  CaricaModelli(gDtIni, gDTEnd, gStatus);
  CaricaList();
  emit PropertyChanged(QStringLiteral("DtIni"));
}

QDateTime OCPrestKT::DTEnd() const { return gDTEnd; }
void OCPrestKT::SetDTEnd(const QDateTime& v) {
  gDTEnd = v;
  CaricaModelli(gDtIni, gDTEnd, gStatus);
  CaricaList();
  emit PropertyChanged(QStringLiteral("DtEnd"));  // so spelled, as the host knows it
}

int OCPrestKT::Status() const { return gStatus; }
void OCPrestKT::SetStatus(int v) {
  gStatus = v;
  CaricaModelli(gDtIni, gDTEnd, gStatus);
  CaricaList();
  emit PropertyChanged(QStringLiteral("Status"));
}

void OCPrestKT::SetOnlyInput(bool v) {
  gOnlyInput = v;
  emit PropertyChanged(QStringLiteral("OnlyInput"));
}

void OCPrestKT::SetOnlyPrest(bool v) {
  gOnlyPrest = v;
  emit PropertyChanged(QStringLiteral("OnlyPrest"));
}

int OCPrestKT::TAnag() const { return gTAnag; }
void OCPrestKT::SetTAnag(int v) {
  gTAnag = v;
  SetCBValue(CBTAnag, v, CBTAnag->currentIndex());
  emit PropertyChanged(QStringLiteral("TAnag"));
}

int OCPrestKT::CAnag() const { return gCAnag; }
void OCPrestKT::SetCAnag(int v) {
  gCAnag = v;
  SetCBValue(CBCAnag, v, CBCAnag->currentIndex());
  emit PropertyChanged(QStringLiteral("CAnag"));
}

QIcon OCPrestKT::Icon() const { return parentWidget() ? parentWidget()->windowIcon() : windowIcon(); }

int OCPrestKT::CProject() const { return gCProject; }
void OCPrestKT::SetCProject(int v) {
  gCProject = v;
  emit PropertyChanged(QStringLiteral("CProject"));
}

bool OCPrestKT::MagnifyScreen() const { return gMagnifyScreen; }
void OCPrestKT::SetMagnifyScreen(bool v) { gMagnifyScreen = v; }

// ---------------------------------------------------------------- lifecycle

void OCPrestKT::Initialize() {
  Guard g(kModulo, QStringLiteral("Initialize"));
  g([&] {
    mnuTD->hide();
    gLoading_ = true;
  });
  g([&] {
    gCProject = 0;
    gDtIni = QDateTime();
    gDTEnd = QDateTime();
    gStatus = 0;
    gTAnag = 0;
    gCAnag = 0;
    const QSignalBlocker b(TBFind);
    TBFind->clear();
  });
  // The temporary folder: TEMP, then TMP; the name of the last resort is odd and kept.
  QStringList parti;
  g([&] { parti = Environ(GetEnvironIdx(QStringLiteral("TEMP"))).split(QLatin1Char('=')); });
  if (g.If([&] {
        if (parti.size() < 2) Raise(err::SubscriptOutOfRange);
        return parti.at(1).isEmpty();
      }))
    g([&] { parti = Environ(GetEnvironIdx(QStringLiteral("TMP"))).split(QLatin1Char('=')); });
  g([&] {
    if (parti.size() > 1)
      gPathTemp = parti.at(1);
    else
      gPathTemp = QDir::tempPath() + QStringLiteral("/temp 'ok");
  });
  g([&] { EsisteCartella(gPathTemp, true); });
  g([&] {
    AdattaColonne();
    gLoading_ = false;
  });
}

void OCPrestKT::DBConn(const DatabasePtr& db, int vCurUtente, const QIcon& vIcona, const QString& vPathDocs,
                       int initialTAnag, bool chronoMode) {
  Q_UNUSED(chronoMode);  // accepted for the host and not used
  Guard g(kModulo, QStringLiteral("DBConn"));
  g([&] {
    const QString nome = db->Name();
    gDB = db;
    gCurUtente = vCurUtente;
    gPathDB = db->PathDB();
    gNomeDB = nome;
    gIcona = vIcona;
  });
  g([&] { RiservaSpazioLog(); });
  // The key has no default: a missing one fails the conversion, and gMagnify stays as it is.
  g([&] { gMagnify = CInt(LeggiConfig(true, QStringLiteral("Magnify"))); });
  if (gMagnify > 16) g([&] { ImpostaFontGrandi(); });
  if (gDB) {
    g([&] { gLoading_ = true; });
    g([&] {
      SetOcxEventS(std::make_shared<OCPrestKTClass>());
      gOcxEventS = ocxEventS_;
    });
    g([&] { CaricaModelli(gDtIni, gDTEnd, gStatus); });
    g([&] { CaricaComboTAnag(CBTAnag, initialTAnag); });
    if (initialTAnag != 0) g([&] { gLoading_ = false; });
    g([&] { CaricaComboTipoPrj(CBTipoPrj); });
    g([&] { gLoading_ = false; });
    g([&] { CaricaList(); });
    g([&] {
      gPathDocs = vPathDocs;
      gPathLogo = gPathDB + QStringLiteral("logo.bmp");
    });
    g([&] { Timer1->start(); });
  }
}

void OCPrestKT::ConnectRelay() {
  if (!ocxEventS_) return;
  OCPrestKTClass* r = ocxEventS_.get();
  // Direct connections: the host's handler runs before the screen's call returns.
  connect(r, &OCPrestKTClass::ShowAnagModEvent, this, &OCPrestKT::CallShowAnagMod, Qt::DirectConnection);
  connect(r, &OCPrestKTClass::ShowTipolModEvent, this, &OCPrestKT::CallShowTipol, Qt::DirectConnection);
  connect(r, &OCPrestKTClass::ShowTipolDispEvent, this, &OCPrestKT::CallShowTipolDisp, Qt::DirectConnection);
  connect(r, &OCPrestKTClass::ShowAnagDocEvent, this, &OCPrestKT::CallShowAnagDoc, Qt::DirectConnection);
  connect(r, &OCPrestKTClass::SendDataDocEvent, this, &OCPrestKT::GetDataFromProjects, Qt::DirectConnection);
  connect(r, &OCPrestKTClass::SendDataFattDiffEvent, this, &OCPrestKT::GetDataForFattDiff, Qt::DirectConnection);
  connect(r, &OCPrestKTClass::ClosePrg, this, &OCPrestKT::ClosePrg, Qt::DirectConnection);
  connect(r, &OCPrestKTClass::ReloadDataInCtrl, this, &OCPrestKT::ReloadDataInCtrl, Qt::DirectConnection);
}

void OCPrestKT::ChAnagInModelli(QVariant& vTAnagS, QVariant& vCAnagS) { gOcxEventCard->ChAnagInMod(vTAnagS, vCAnagS); }

void OCPrestKT::ChAnagInDocs(QVariant& vTAnagS, QVariant& vCAnagS, QString& tipo) {
  gOcxEventCard->ChAnagInDoc(vTAnagS, vCAnagS, tipo);
}

void OCPrestKT::ChTipoPrjModelli(QVariant& vCTipoPrj) { gOcxEventCard->ChProjInMod(vCTipoPrj); }

void OCPrestKT::ChTipoPrjDisp(QVariant& vCTipoDispPrj) { gOcxEventCard->ChProjInDisp(vCTipoDispPrj); }

void OCPrestKT::ReloadDataInCtrl(int& cProject) {
  AggiornaModello(cProject, gRcsProjects);
  CaricaList();
  FindInList(ListView1, QStringLiteral("K") + Codice9(cProject));
}

void OCPrestKT::ImpostaFontGrandi() {
  QFont f(QStringLiteral("Verdana"));
  f.setPointSizeF(9.75);
  for (QWidget* w : {static_cast<QWidget*>(Label4), static_cast<QWidget*>(Label6), static_cast<QWidget*>(Label3),
                     static_cast<QWidget*>(CBTAnag), static_cast<QWidget*>(CBCAnag), static_cast<QWidget*>(CBTipoPrj),
                     static_cast<QWidget*>(TBFind), static_cast<QWidget*>(Command1)})
    w->setFont(f);
  f.setPointSizeF(10.5);
  ListView1->setFont(f);
}

void OCPrestKT::resizeEvent(QResizeEvent* e) {
  QWidget::resizeEvent(e);
  AdattaColonne();
}

bool OCPrestKT::eventFilter(QObject* o, QEvent* e) {
  // The list's own size, once the layout has given it, decides the two wide columns.
  if (o == ListView1 && (e->type() == QEvent::Resize || e->type() == QEvent::Show)) AdattaColonne();
  return QWidget::eventFilter(o, e);
}

// ---------------------------------------------------------------- the register

void OCPrestKT::ImpostaColonne() {
  const double scala = gMagnify >= 17 ? 1.5 : 1;
  ListViewReport(ListView1, true, {}, scala);
  auto w = [scala](int twips) { return static_cast<int>(twips * scala); };
  ListViewSetColumns(ListView1,
                     {QString(), QStringLiteral("Codice"), QStringLiteral("Data"), QStringLiteral("Ragione sociale"),
                      QStringLiteral("Modello"), QStringLiteral("Tipologia"), QStringLiteral("Nota")},
                     {270, w(1200), w(1100), w(3000), w(4000), w(2000), w(1100)},
                     {lvwColumnLeft, lvwColumnLeft, lvwColumnLeft, lvwColumnLeft, lvwColumnLeft, lvwColumnLeft,
                      lvwColumnLeft});
  AdattaColonne();
}

void OCPrestKT::AdattaColonne() {
  if (ListView1->ColumnCount() <= 3) return;
  const int larghezza = ListView1->WidthTwips();
  ListView1->SetColumnWidth(3, std::max(static_cast<int>(larghezza * 0.20), 2500));
  if (ListView1->ColumnCount() >= 7) ListView1->SetColumnWidth(6, std::max(static_cast<int>(larghezza * 0.25), 3000));
}

void OCPrestKT::CaricaList() {
  if (!gRcsProjects || !gDB) return;
  Guard g(kModulo, QStringLiteral("CaricaList"));
  g([&] { ImpostaColonne(); });
  bool visibile = false;
  g([&] {
    visibile = ListView1->isVisibleTo(this);
    ListView1->setVisible(false);
    ListView1->ClearItems();
  });
  RecordsetPtr rs;
  g([&] { rs = gRcsProjects->Clone(); });
  QString f;
  g([&] {
    if (gTAnag != 0) {
      f = QStringLiteral("TAnag = ") + QString::number(gTAnag);
      if (gCAnag > 0) f += QStringLiteral(" AND CAnag=") + QString::number(gCAnag);
    }
    const QString testo = TBFind->text().trimmed();
    // The text goes in as typed: an apostrophe makes the filter invalid.
    if (!testo.isEmpty())
      f += (f.isEmpty() ? QStringLiteral("DProject Like '*") : QStringLiteral(" AND DProject Like '*")) + testo +
           QStringLiteral("*'");
    if (CBTipoPrj->currentIndex() >= 1)
      f += (f.isEmpty() ? QStringLiteral("CPrjTipo =") : QStringLiteral(" AND CPrjTipo =")) +
           QString::number(ItemData(CBTipoPrj, CBTipoPrj->currentIndex()));
  });
  g([&] { rs->SetFilter(f); });
  g([&] { rs->SetSort(QStringLiteral("CProject DESC")); });
  g([&] {
    // The lines are the models' bookmarks, in the list's order; their texts
    // are made from the models when shown.
    const std::array<int, 6> campi = {
        rs->FieldIndex(QStringLiteral("CProject")), rs->FieldIndex(QStringLiteral("DtIni")),
        rs->FieldIndex(QStringLiteral("RagSoc1")),  rs->FieldIndex(QStringLiteral("DProject")),
        rs->FieldIndex(QStringLiteral("DPrjTipo")), rs->FieldIndex(QStringLiteral("Annot"))};
    // A line's key stays its model's code even after the model leaves the recordset.
    auto righe = std::make_shared<std::vector<int>>();
    auto codici = std::make_shared<std::vector<qlonglong>>();
    righe->reserve(static_cast<size_t>(rs->RecordCount()));
    codici->reserve(static_cast<size_t>(rs->RecordCount()));
    for (rs->MoveFirst(); !rs->Eof(); rs->MoveNext()) {
      righe->push_back(rs->Bookmark());
      codici->push_back(campi[0] >= 0 ? NullToZero(rs->Value(campi[0])).toLongLong() : 0);
    }
    auto valore = [rs, righe, campi](int line, int campo) {
      return campi[campo] >= 0 ? rs->ValueAt(righe->at(static_cast<size_t>(line)), campi[campo]) : QVariant();
    };
    ListViewAddLines(
        ListView1, static_cast<int>(righe->size()),
        [valore](int line, int column) -> QString {
          switch (column) {
            case 0: return QString();
            case 1: return Format(valore(line, 0), QStringLiteral("0000-00000"));
            case 2: return Format(valore(line, 1), QStringLiteral("dd/mm/yyyy"));
            default: return column <= 6 ? NullToStr(valore(line, column - 1)) : QString();
          }
        },
        [codici](int line) { return QStringLiteral("K") + Codice9(codici->at(static_cast<size_t>(line))); });
  });
  g([&] { ListView1->setVisible(visibile); });
}

void OCPrestKT::ColumnClick(int column) {
  Guard g(kModulo, QStringLiteral("ListView1_ColumnClick"), Guard::Silent);
  g([&] { OrdinaPerColonna(ListView1, column, false); });
}

void OCPrestKT::mnuSel_Click() {
  for (int i = 0; i < ListView1->Count(); ++i) ListView1->SetChecked(i, true);
}

void OCPrestKT::mnuDeSel_Click() {
  for (int i = 0; i < ListView1->Count(); ++i) ListView1->SetChecked(i, false);
}

bool OCPrestKT::CanClose(int& cProject) {
  Guard g(kModulo, QStringLiteral("CanClose"), Guard::Silent);
  bool result = false;
  RecordsetPtr rs;
  g([&] {
    ApriRecordset(rs,
                  QStringLiteral("SELECT Projects.CProject, Projects.CPrjTipo, ProjectsTipo.GestForfSempl "
                                 "FROM Projects INNER JOIN ProjectsTipo ON Projects.CPrjTipo = ProjectsTipo.CPrjTipo "
                                 "GROUP BY Projects.CProject, Projects.CPrjTipo, ProjectsTipo.GestForfSempl "
                                 "HAVING Projects.CProject=") +
                      QString::number(cProject),
                  nullptr, dbOpenSnapshot);
  });
  RecordsetPtr aperti;
  if (g.If([&] { return !CBool(NullToZero(rs->Value(QStringLiteral("GestForfSempl")))); })) {
    // A model with dispositions closes when none of them is open.
    g([&] {
      ApriRecordset(aperti,
                    QStringLiteral("SELECT CProject, CStato FROM ProjectsDisp GROUP BY CProject, CStato HAVING CProject=") +
                        QString::number(cProject) + QStringLiteral(" AND CStato=0"),
                    nullptr, dbOpenSnapshot);
    });
  } else {
    // A simplified forfait model closes when no activity is still running.
    g([&] {
      ApriRecordset(aperti,
                    QStringLiteral("SELECT CProject, DtEnd FROM ActivitiesProd GROUP BY CProject, DtEnd HAVING CProject=") +
                        QString::number(cProject) + QStringLiteral(" AND DtEnd Is Null; "),
                    nullptr, dbOpenSnapshot);
    });
  }
  g([&] { result = aperti->RecordCount() == 0; });
  return result;
}

void OCPrestKT::mnuClose_Click() {
  Guard g(kModulo, QStringLiteral("mnuClose_Click"), Guard::Silent);
  if (MsgBox(QStringLiteral("Vuoi chiudere i modelli selezionati?"), vbYesNo | vbQuestion | vbDefaultButton2) == vbNo)
    return;
  for (int i = 0; i < ListView1->Count(); ++i) {
    if (!ListView1->Checked(i)) continue;
    g([&] {
      int codice = ListView1->Key(i).right(9).toInt();
      if (CanClose(codice))
        QueryExe(QStringLiteral("UPDATE Projects SET Projects.Stato = 9 WHERE (((Projects.CProject)=") +
                 QString::number(codice) + QStringLiteral(")); "));
    });
  }
  g([&] { CaricaModelli(gDtIni, gDTEnd, gStatus); });
  g([&] { CaricaList(); });
}

void OCPrestKT::mnuReOpen_Click() {
  Guard g(kModulo, QStringLiteral("mnuReOpen_Click"), Guard::Silent);
  if (MsgBox(QStringLiteral("Vuoi riaprire i modelli selezionati?"), vbYesNo | vbQuestion | vbDefaultButton2) == vbNo)
    return;
  for (int i = 0; i < ListView1->Count(); ++i) {
    if (!ListView1->Checked(i)) continue;
    g([&] {
      QueryExe(QStringLiteral("UPDATE Projects SET Projects.Stato = 0 WHERE (((Projects.CProject)=") +
               QString::number(ListView1->Key(i).right(9).toInt()) +
               QStringLiteral(")); "));
    });
  }
  g([&] { CaricaModelli(gDtIni, gDTEnd, gStatus); });
  g([&] { CaricaList(); });
}

// The next screen's place: 300 twips right of the host's top window, 300 from the top.
void OCPrestKT::PosizionaScheda() {
  QWidget* padre = this;
  while (padre->parentWidget()) padre = padre->parentWidget();  // TrovaFormPadre
  gLeftForm = padre->x() * 15 + 300;
  gTopForm = 300;
}

void OCPrestKT::ApriModello(int codice, int azione) {
  PosizionaScheda();
  frmModelli f(window());
  f.CProject = codice;
  f.Azione = azione;
  f.Form_Load();
  f.exec();
}

void OCPrestKT::ShowInput() {
  PosizionaScheda();
  frmInputData f(window());
  f.Form_Load();
  if (gOnlyInput) {
    // A station may run on a bare X session with no window manager to honour the
    // full-screen state, so the screen's size is given as well.
    if (QScreen* schermo = f.screen()) f.setGeometry(schermo->geometry());
    f.setWindowState(Qt::WindowFullScreen);
  }
  f.exec();
}

void OCPrestKT::ShowSettings() {
  PosizionaScheda();
  frmSettings f(window());
  f.Form_Load();
  f.exec();
}

void OCPrestKT::ShowReportOperatori() {
  PosizionaScheda();
  frmRepOperatori f(window());
  f.Form_Load();
  f.exec();
}

void OCPrestKT::ShowReportExcel() {
  PosizionaScheda();
  frmRepExcel f(window());
  f.Form_Load();
  f.exec();
}

void OCPrestKT::ShowGestDisp() {
  PosizionaScheda();
  frmGestDisp f(window());
  f.Form_Load();
  f.exec();
}

void OCPrestKT::ShowGestDDTPerFatt() {
  PosizionaScheda();
  frmCtrlDDTxFatt f(window());
  f.Form_Load();
  f.exec();
}

double OCPrestKT::CalcDatiDisp(int vCProject, int vCDisp) { return prestkt::CalcDatiDisp(vCProject, vCDisp); }

QList<int> OCPrestKT::ModelliSpuntati() const {
  QList<int> modelli;
  for (int i = 0; i < ListView1->Count(); ++i)
    if (ListView1->Checked(i)) modelli << ListView1->Key(i).mid(1).toInt();
  return modelli;
}

RecordsetPtr OCPrestKT::PreparaDati() { return prestkt::PreparaDati(ModelliSpuntati()); }

void OCPrestKT::RepPrestazioni() {
  AnteprimaStampa anteprima(window());
  prestkt::RepPrestazioni(ModelliSpuntati(), anteprima, [this](bool abilita) { window()->setEnabled(abilita); });
}

void OCPrestKT::ExpPrestazioni() { prestkt::ExpPrestazioni(ModelliSpuntati()); }

void OCPrestKT::IniTabDoc(RecordsetPtr& rcsD, RecordsetPtr& rcsFD, RecordsetPtr& rcsFDD, int& vCCaus, int TipoDoc,
                          int NDoc, bool vNewDoc) {
  PosizionaScheda();
  IniTab4Doc(rcsD, rcsFD, rcsFDD, vCCaus, TipoDoc, NDoc, vNewDoc);
}

void OCPrestKT::SaveDataDoc(int TipoDoc, int NDoc, RecordsetPtr& rcsFD, RecordsetPtr& rcsFDD) {
  PosizionaScheda();
  prestkt::SaveDataDoc(TipoDoc, NDoc, rcsFD, rcsFDD);
}

void OCPrestKT::ApriRiga(QWidget* owner, RecordsetPtr& rcsD, RecordsetPtr& rcsFD, RecordsetPtr& rcsFDD,
                         const std::function<void(frmGestOrdFornImm&)>& imposta) {
  PosizionaScheda();
  frmGestOrdFornImm f(owner ? owner : window());
  f.rcsD = rcsD;
  f.rcsFD = rcsFD;
  f.rcsFDD = rcsFDD;
  imposta(f);
  f.Form_Load();
  f.exec();
}

void OCPrestKT::AddLineToDoc(QWidget* OwnerForm, RecordsetPtr& rcsD, RecordsetPtr& rcsFD, RecordsetPtr& rcsFDD,
                             int vCCaus) {
  ApriRiga(OwnerForm, rcsD, rcsFD, rcsFDD, [&](frmGestOrdFornImm& f) {
    f.ForDDT = false;
    f.vMode = 2;
    f.vCCaus = vCCaus;
  });
}

void OCPrestKT::AddLineToDDT(QWidget* OwnerForm, RecordsetPtr& rcsD, RecordsetPtr& rcsFD, RecordsetPtr& rcsFDD,
                             int vTAnagD, int vCAnagD) {
  ApriRiga(OwnerForm, rcsD, rcsFD, rcsFDD, [&](frmGestOrdFornImm& f) {
    f.ForDDT = true;
    f.vMode = 2;
    f.vTAnagD = vTAnagD;
    f.vCAnagD = vCAnagD;
  });
}

void OCPrestKT::EditLineToDoc(QWidget* OwnerForm, RecordsetPtr& rcsD, RecordsetPtr& rcsFD, RecordsetPtr& rcsFDD,
                              int vRigaD) {
  ApriRiga(OwnerForm, rcsD, rcsFD, rcsFDD, [&](frmGestOrdFornImm& f) {
    f.ForDDT = false;
    f.vMode = 1;
    f.vRigaD = vRigaD;
  });
}

void OCPrestKT::EditLineToDDT(QWidget* OwnerForm, RecordsetPtr& rcsD, RecordsetPtr& rcsFD, RecordsetPtr& rcsFDD,
                              int vTAnagD, int vCAnagD, int vRigaD) {
  ApriRiga(OwnerForm, rcsD, rcsFD, rcsFDD, [&](frmGestOrdFornImm& f) {
    f.ForDDT = true;
    f.vMode = 1;
    f.vTAnagD = vTAnagD;
    f.vCAnagD = vCAnagD;
    f.vRigaD = vRigaD;
  });
}

void OCPrestKT::EditDisp(int vCProjectS, int vCDisp, double vQta, double vPzIni) {
  PosizionaScheda();
  frmCalcPzVend f(window());
  f.Chiamante = frmCalcPzVend::kOCX;
  f.CProject = vCProjectS;
  f.CDisp = vCDisp;
  f.Qta = vQta;
  f.PzIni = vPzIni;
  f.Mostra();
}

void OCPrestKT::Aggiungi() {
  if (gOnlyInput) return;
  Guard g(kModulo, QStringLiteral("Aggiungi"));
  g([&] { gCProject = 0; });
  g([&] { CaricaDatiModello(0); });
  g([&] { ApriModello(0, 2); });
}

void OCPrestKT::Modifica() {
  if (gOnlyInput || ListView1->Count() == 0) return;
  Guard g(kModulo, QStringLiteral("Modifica"));
  // With no line selected the read fails and the card opens on the model gCProject held.
  g([&] {
    const int row = ListView1->SelectedIndex();
    if (row < 0) Raise(err::ObjectNotSet);
    gCProject = ListView1->Key(row).mid(1).toInt();
  });
  g([&] { CaricaDatiModello(gCProject); });
  g([&] { ApriModello(gCProject, 1); });
}

void OCPrestKT::Elimina() {
  if (gOnlyInput || ListView1->Count() == 0) return;
  Guard g(kModulo, QStringLiteral("Elimina"));
  int codice = 0;
  g([&] {
    const int row = ListView1->SelectedIndex();
    if (row < 0) Raise(err::ObjectNotSet);
    codice = ListView1->Key(row).mid(1).toInt();
  });
  if (MsgBox(QStringLiteral("Sei sicuro di voler eliminare il modello codice ") +
                 Format(codice, QStringLiteral("0000-00000")) + QStringLiteral("?"),
             vbYesNo | vbQuestion | vbDefaultButton2) == vbNo)
    return;
  const QString c = QString::number(codice);
  g([&] { QueryExe(QStringLiteral("DELETE * FROM ActivitiesProd WHERE CProject=") + c); });
  g([&] { QueryExe(QStringLiteral("DELETE * FROM ProjectsDisp WHERE CProject=") + c); });
  g([&] { QueryExe(QStringLiteral("DELETE * FROM ProjectsDispDett WHERE CProject=") + c); });
  g([&] { QueryExe(QStringLiteral("DELETE * FROM Projects WHERE CProject=") + c); });
  // The model's documents go with it; a folder that holds folders stays.
  const QString cartella = gPathDocs + QLatin1Char('/') + c.left(4) + QLatin1Char('/') + c;
  g([&] {
    if (EsisteCartella(cartella)) {
      QDir d(cartella);
      for (const QString& f : d.entryList(QDir::Files | QDir::Hidden | QDir::System)) d.remove(f);
      if (!QDir().rmdir(cartella)) Raise(err::PathFileAccess);
    }
  });
  g([&] {
    gRcsProjects->SetFilter(QStringLiteral("CProject=") + c);
    if (gRcsProjects->RecordCount() == 1) gRcsProjects->Delete();
  });
  g([&] { ListView1->RemoveItem(ListView1->Row(QStringLiteral("K") + Codice9(codice))); });
  g([&] {
    if (ListView1->Count() > 0) {
      ListView1->SetSelected(0);
      ListView1->setFocus();
    }
  });
}

}  // namespace prestkt
