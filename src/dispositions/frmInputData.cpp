#include "frmInputData.h"

#include <QApplication>
#include <QCloseEvent>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QScreen>
#include <QVBoxLayout>

#include "Guard.h"
#include "Messages.h"
#include "OCPrestKTClass.h"
#include "Procedure.h"
#include "ProcedureUi.h"
#include "Scheda.h"

namespace prestkt {

namespace {

const QString kForm = QStringLiteral("frmInputData");
const QColor kRosa(255, 174, 201);
const QString kInvito = QStringLiteral(
    "Spara il codice sulla 'SCHEDA DI PRODUZIONE', il codice 'OPERATORE' e compila gli altri campi");


// The first field of a lookup's first row; empty without a row.
QString Cerca(const QString& sql, const QString& campo) {
  RecordsetPtr rs;
  ApriRecordset(rs, sql, nullptr, dbOpenSnapshot);
  return rs->Eof() ? QString() : NullToStr(rs->Value(campo));
}

}  // namespace

frmInputData::frmInputData(QWidget* parent) : QDialog(parent) {
  setObjectName(kForm);
  setModal(true);
  copie_ = {&rcsDisp_, &rcsDispDett_, &rcsProd_, &rcsAct_, &rcsLavExt_, &rcsForn_};
  BuildUi();
  // The form sees the keys before its controls, as the scanner types them.
  qApp->installEventFilter(this);
}

frmInputData::~frmInputData() { qApp->removeEventFilter(this); }

// ---------------------------------------------------------------- building

// Sized for a finger on a shop-floor screen: everything follows the height of
// the screen the station opens on.
void frmInputData::BuildUi() {
  const QScreen* schermo = screen() ? screen() : QGuiApplication::primaryScreen();
  const int alto = schermo ? schermo->availableGeometry().height() : 768;
  const int testo = std::max(16, alto / 40);   // pixels of the ordinary text
  const int tasto = std::max(36, alto / 15);   // height of a touch button
  QFont base = font();
  base.setPixelSize(testo);
  setFont(base);
  QFont grande = base;
  grande.setPixelSize(testo * 5 / 4);
  grande.setBold(true);

  // The message panel: red text on white in a red box, the lines within nine tenths of it.
  auto* pannello = new QFrame(this);
  pannello->setFrameStyle(QFrame::Box | QFrame::Plain);
  pannello->setLineWidth(2);
  pannello->setAutoFillBackground(true);
  QPalette pp = pannello->palette();
  pp.setColor(QPalette::Window, Qt::white);
  pp.setColor(QPalette::WindowText, Qt::red);
  pannello->setPalette(pp);
  pannello->setMinimumHeight(tasto * 2);
  Picture1 = Nome(new QLabel(pannello), QStringLiteral("Picture1"));
  Picture1->setFocusPolicy(Qt::StrongFocus);
  Picture1->setAlignment(Qt::AlignCenter);
  Picture1->setWordWrap(true);
  Picture1->setPalette(pp);
  auto* righe = new QHBoxLayout(pannello);
  righe->addStretch(1);
  righe->addWidget(Picture1, 18);
  righe->addStretch(1);

  auto* dati = new QGridLayout;
  const auto riga = [&](int r, const QString& etichetta, QLabel*& valore, const char* nome) {
    auto* l = new QLabel(etichetta, this);
    valore = Nome(new QLabel(this), QString::fromLatin1(nome));
    valore->setFont(grande);
    valore->setTextInteractionFlags(Qt::NoTextInteraction);
    dati->addWidget(l, r, 0);
    dati->addWidget(valore, r, 1);
  };
  riga(0, QStringLiteral("Codice scheda:"), Label2, "Label2");
  riga(1, QStringLiteral("Operatore:"), lblOperatore, "lblOperatore");
  riga(2, QStringLiteral("Cliente:"), lblRagSoc, "lblRagSoc");
  riga(3, QStringLiteral("Modello:"), lblModello, "lblModello");
  riga(4, QStringLiteral("Tipologia:"), lblTipoPrj, "lblTipoPrj");
  riga(5, QStringLiteral("Disposizione:"), lblDisp, "lblDisp");
  CBPrest = Nome(new QComboBox(this), QStringLiteral("CBPrest"));
  CBPrest->setMinimumHeight(tasto);
  CBPrest->setFont(grande);
  dati->addWidget(new QLabel(QStringLiteral("Prestazione:"), this), 6, 0);
  dati->addWidget(CBPrest, 6, 1);
  dati->setColumnStretch(1, 1);

  DTPicker1 = Nome(new QDateEdit(this), QStringLiteral("DTPicker1"));
  DTPicker1->setDisplayFormat(QStringLiteral("dd/MM/yyyy"));
  DTPicker1->setCalendarPopup(true);
  DTPicker1->setMinimumHeight(tasto);
  DTPicker1->setFont(grande);
  DTPicker1->setAlignment(Qt::AlignCenter);
  Command1 = Nome(new QPushButton(QStringLiteral("◀"), this), QStringLiteral("Command1"));
  Command2 = Nome(new QPushButton(QStringLiteral("▶"), this), QStringLiteral("Command2"));
  for (QPushButton* b : {Command1, Command2}) b->setMinimumSize(tasto * 3 / 2, tasto);
  Command1->setToolTip(QStringLiteral("Giorno precedente"));
  Command2->setToolTip(QStringLiteral("Giorno seguente"));
  auto* giorno = new QHBoxLayout;
  giorno->addWidget(Command1);
  giorno->addWidget(DTPicker1, 1);
  giorno->addWidget(Command2);

  // Twelve buttons a row, in twelfths of its width.
  const auto fila = [&](QFrame*& cornice, const char* nome, const char* bottone, std::vector<QPushButton*>& bottoni,
                        int passo) {
    cornice = Nome(new QFrame(this), QString::fromLatin1(nome));
    auto* g = new QGridLayout(cornice);
    g->setContentsMargins(0, 0, 0, 0);
    g->setSpacing(4);
    for (int i = 0; i < 12; ++i) {
      auto* b = Nome(new QPushButton(QString::number(i * passo), cornice),
                     QStringLiteral("%1_%2").arg(QString::fromLatin1(bottone)).arg(i));
      b->setCheckable(true);
      b->setMinimumHeight(tasto);
      // The style's wide minimum would push twelve buttons past a 1024-pixel screen.
      b->setMinimumWidth(testo * 3);
      b->setFont(grande);
      b->setAutoFillBackground(true);
      g->addWidget(b, 0, i);
      g->setColumnStretch(i, 1);
      bottoni.push_back(b);
    }
    cornice->setFocusPolicy(Qt::StrongFocus);
  };
  fila(Picture6, "Picture6", "OptOre", OptOre, 1);
  fila(Picture7, "Picture7", "OptMin", OptMin, 5);

  ImageList1 = new ImageList(this, 32);
  ImageList1->setObjectName(QStringLiteral("ImageList1"));
  cmdSave = Nome(new QPushButton(QStringLiteral("Salva"), this), QStringLiteral("cmdSave"));
  cmdDel = Nome(new QPushButton(QStringLiteral("Cancella"), this), QStringLiteral("cmdDel"));
  for (QPushButton* b : {cmdSave, cmdDel}) {
    b->setMinimumHeight(tasto * 3 / 2);
    b->setFont(grande);
    b->setAutoDefault(false);
  }
  for (QPushButton* b : {Command1, Command2}) b->setAutoDefault(false);
  for (QPushButton* b : OptOre) b->setAutoDefault(false);
  for (QPushButton* b : OptMin) b->setAutoDefault(false);
  auto* comandi = new QHBoxLayout;
  comandi->addWidget(cmdDel, 1);
  comandi->addWidget(cmdSave, 2);

  auto* v = new QVBoxLayout(this);
  v->addWidget(pannello);
  v->addLayout(dati);
  v->addLayout(giorno);
  v->addWidget(new QLabel(QStringLiteral("Ore:"), this));
  v->addWidget(Picture6);
  v->addWidget(new QLabel(QStringLiteral("Minuti:"), this));
  v->addWidget(Picture7);
  v->addStretch(1);
  v->addLayout(comandi);

  for (int i = 0; i < 12; ++i) {
    connect(OptOre[i], &QPushButton::clicked, this, [this, i] { OptOre_Click(i); });
    connect(OptMin[i], &QPushButton::clicked, this, [this, i] { OptMin_Click(i); });
  }
  connect(Command1, &QPushButton::clicked, this, [this] { DTPicker1->setDate(DTPicker1->date().addDays(-1)); });
  connect(Command2, &QPushButton::clicked, this, [this] { DTPicker1->setDate(DTPicker1->date().addDays(1)); });
  connect(CBPrest, &QComboBox::currentIndexChanged, this, [this] { CtrlCanSave(); });
  connect(cmdSave, &QPushButton::clicked, this, &frmInputData::cmdSave_Click);
  connect(cmdDel, &QPushButton::clicked, this, &frmInputData::Pulisci);
}

void frmInputData::IniBottone() {
  Guard g(kForm, QStringLiteral("IniBottone"));
  g([&] {
    ImageList1->Clear();
    const int salva = ImageList1->Add(IconaTema(QStringLiteral("document-save")));
    const int cancella = ImageList1->Add(IconaTema(QStringLiteral("edit-clear")));
    cmdSave->setIcon(ImageList1->Icon(salva));
    cmdDel->setIcon(ImageList1->Icon(cancella));
    for (QPushButton* b : {cmdSave, cmdDel}) {
      b->setIconSize(QSize(32, 32));
      QPalette p = b->palette();
      p.setColor(QPalette::Button, kRosa);
      b->setPalette(p);
      b->setAutoFillBackground(true);
    }
  });
}

void frmInputData::IniVideo() {
  Guard g(kForm, QStringLiteral("IniVideo"));
  g([&] {
    CaricaCombo(CBPrest,
                QStringLiteral("SELECT [CTipTabGen], [CTabGen], [DTabGen], [Num1], [Num2] FROM TabGen WHERE "
                               "[CTipTabGen]=12 ORDER BY [DTabGen]; "),
                1, 2, {}, QStringLiteral("{scegli un prestazione}"));
  });
  g([&] { DTPicker1->setDate(Today().date()); });
  g([&] { WriteMsg(kInvito); });
}

void frmInputData::Form_Load() {
  Guard g(kForm, QStringLiteral("Form_Load"));
  g([&] { IniBottone(); });
  g([&] { setWindowTitle(QStringLiteral("Inserimento prestazioni")); });
  g([&] { IniVideo(); });
  g([&] { Pulisci(); });
  g([&] { CentraForm(this); });
}

// ---------------------------------------------------------------- the codes

bool frmInputData::eventFilter(QObject* o, QEvent* e) {
  if (e->type() != QEvent::KeyPress) return false;
  auto* w = qobject_cast<QWidget*>(o);
  if (!w || (w != this && !isAncestorOf(w)) || !isVisible()) return false;
  // The characters are the form's: a code typed while the date has the focus
  // changes no date, and its end presses no button. Keys without a character
  // (arrows, Tab, Esc) go on to the controls.
  auto* k = static_cast<QKeyEvent*>(e);
  if (k->key() == Qt::Key_Return || k->key() == Qt::Key_Enter) {
    Form_KeyPress(QStringLiteral("\r"));
    return true;
  }
  if (k->text().isEmpty() || !k->text().at(0).isPrint()) return false;
  Form_KeyPress(k->text());
  return true;
}

void frmInputData::Form_KeyPress(const QString& testo) {
  Guard g(kForm, QStringLiteral("Form_KeyPress"));
  if (testo != QLatin1String("\r")) {
    buffer_ += testo;
    return;
  }
  const QString codice = buffer_.toLower();
  buffer_.clear();
  g([&] { LeggiCodice(codice); });
}

// Sorted by shape: the sheet ("p" and 13 digits), a badge (6 characters), a
// service kind ("a" and 3 digits); anything else is dropped without a word.
void frmInputData::LeggiCodice(const QString& codice) {
  const QChar primo = codice.isEmpty() ? QChar() : codice.at(0);
  if (codice.size() == 14 && primo == QLatin1Char('p')) {
    IniVideoPrj(codice);
  } else if (codice.size() == 6 && primo != QLatin1Char('p') && primo != QLatin1Char('a')) {
    IniVideoOperatore(CLng(codice));
  } else if (codice.size() == 4 && primo == QLatin1Char('a')) {
    SetCBValue(CBPrest, CInt(codice.mid(1)), CBPrest->currentIndex());
  }
}

void frmInputData::IniVideoOperatore(int numero) {
  Guard g(kForm, QStringLiteral("IniVideoOperatore"));
  g([&] {
    RecordsetPtr rs;
    ApriRecordset(rs,
                  QStringLiteral("SELECT CAnag AS CDip, RagSoc1 AS Nome, Eliminato FROM Anagrafica WHERE Eliminato=0 "
                                 "AND TAnag=10 AND CAnag=") +
                      N(numero) + QStringLiteral(" "),
                  nullptr, dbOpenSnapshot);
    if (rs->Eof()) return;  // an unknown badge leaves the operator as it was
    lblOperatore->setText(NullToStr(rs->Value(QStringLiteral("Nome"))));
    Operatore = numero;
  });
  g([&] { CtrlCanSave(); });
}

void frmInputData::IniVideoPrj(const QString& codice) {
  Guard g(kForm, QStringLiteral("IniVideoPrj"));
  // What an earlier sheet showed goes: a sheet of no model leaves the labels empty.
  for (QLabel* l : {lblRagSoc, lblModello, lblTipoPrj, lblDisp}) l->clear();
  g([&] { CProject = CLng(codice.mid(1, 9)); });
  g([&] { CDisp = CLng(codice.mid(10, 4)); });
  g([&] {
    RecordsetPtr rs;
    ApriRecordset(rs,
                  QStringLiteral("SELECT CProject, CDisp, CStato FROM ProjectsDisp WHERE CProject=") + N(CProject) +
                      QStringLiteral(" AND CDisp=") + N(CDisp) + QStringLiteral(" "),
                  nullptr, dbOpenSnapshot);
    // A warning only: time may be recorded on a closed disposition.
    if (!rs->Eof() && CInt(NullToZero(rs->Value(QStringLiteral("CStato")))) != 0)
      MsgBox(QStringLiteral("Attenzione: questa disposizione risulta essere chiusa!"), vbExclamation);
  });
  g([&] { CaricaDatiModello(CProject, copie_); });
  g([&] {
    Label2->setText(Format(CProject, QStringLiteral("0000-00000")) + QStringLiteral(" \\ ") +
                    Format(CDisp, QStringLiteral("0000")));
  });
  // The sheet's code isn't checked against the models: without one the labels stay empty.
  RecordsetPtr modello;
  g([&] {
    ApriRecordset(modello, QStringLiteral("SELECT CProject, DProject, TAnag, CAnag, CPrjTipo FROM Projects WHERE CProject=") +
                               N(CProject) + QStringLiteral(" "),
                  nullptr, dbOpenSnapshot);
  });
  g([&] {
    lblRagSoc->setText(Cerca(QStringLiteral("SELECT TAnag, CAnag, RagSoc1 FROM Anagrafica WHERE TAnag=") +
                                 CStr(modello->Value(QStringLiteral("TAnag"))) + QStringLiteral(" AND CAnag=") +
                                 CStr(modello->Value(QStringLiteral("CAnag"))) + QStringLiteral(" "),
                             QStringLiteral("RagSoc1"))
                           .toUpper());
  });
  g([&] { lblModello->setText(NullToStr(modello->Value(QStringLiteral("DProject")))); });
  g([&] {
    lblTipoPrj->setText(Cerca(QStringLiteral("SELECT CPrjTipo, DPrjTipo FROM ProjectsTipo WHERE CPrjTipo=") +
                                  CStr(modello->Value(QStringLiteral("CPrjTipo"))) + QStringLiteral(" "),
                              QStringLiteral("DPrjTipo"))
                            .toUpper());
  });
  g([&] {
    RecordsetPtr disp = rcsDisp_->Clone();
    disp->SetFilter(QStringLiteral("CDisp=") + N(CDisp));
    lblDisp->setText(Cerca(QStringLiteral("SELECT CPrjDispTipo, DPrjDispTipo FROM ProjectsDispTipo WHERE CPrjDispTipo=") +
                               CStr(disp->Value(QStringLiteral("CPrjDispTipo"))) + QStringLiteral(" "),
                           QStringLiteral("DPrjDispTipo")));
  });
  g([&] { CtrlCanSave(); });
}

// ---------------------------------------------------------------- time and saving

void frmInputData::Segna(std::vector<QPushButton*>& gruppo, int indice) {
  for (size_t i = 0; i < gruppo.size(); ++i) {
    QPushButton* b = gruppo[i];
    const bool questo = static_cast<int>(i) == indice;
    b->setChecked(questo);
    QPalette p = b->palette();
    p.setColor(QPalette::Button, questo ? QColor(Qt::red) : palette().color(QPalette::Button));
    p.setColor(QPalette::ButtonText, questo ? QColor(Qt::white) : palette().color(QPalette::ButtonText));
    b->setPalette(p);
  }
}

void frmInputData::OptOre_Click(int indice) {
  Guard g(kForm, QStringLiteral("OptOre_Click"));
  g([&] { Segna(OptOre, indice); });
  g([&] {
    if (Picture6->isVisible() && Picture6->isEnabled()) Picture6->setFocus();
  });
  g([&] { Ore = CInt(OptOre.at(static_cast<size_t>(indice))->text()); });
  g([&] { CtrlCanSave(); });
}

void frmInputData::OptMin_Click(int indice) {
  Guard g(kForm, QStringLiteral("OptMin_Click"));
  g([&] { Segna(OptMin, indice); });
  g([&] {
    if (Picture7->isVisible() && Picture7->isEnabled()) Picture7->setFocus();
  });
  g([&] { Minuti = CInt(OptMin.at(static_cast<size_t>(indice))->text()); });
  g([&] { CtrlCanSave(); });
}

void frmInputData::CtrlCanSave() {
  Guard g(kForm, QStringLiteral("CtrlCanSave"));
  g([&] {
    cmdSave->setEnabled(Operatore != 0 && CProject != 0 && CDisp != 0 && GetCBValue(CBPrest) >= 1 &&
                        (Ore > 0 || Minuti >= 1));
  });
  g([&] {
    if (Picture1->isVisible() && Picture1->isEnabled()) Picture1->setFocus();
  });
}

// One activity from midnight of the day, as long as the time chosen, numbered
// by the year of its day.
void frmInputData::cmdSave_Click() {
  Guard g(kForm, QStringLiteral("cmdSave_Click"));
  const QDate giorno = DTPicker1->date();
  const QDateTime inizio(giorno, QTime(0, 0));
  const QDateTime fine = inizio.addSecs(static_cast<qint64>(Ore) * 3600 + static_cast<qint64>(Minuti) * 60);
  g([&] { BeginTrans(); });
  int codice = 0;
  g([&] {
    const int anno = giorno.year();
    RecordsetPtr rs;
    ApriRecordset(rs,
                  QStringLiteral("SELECT Max(CAttivita) AS MaxDiCAttivita FROM ActivitiesProd WHERE (((DtIni)>=") +
                      DataSql(QDateTime(QDate(anno, 1, 1), QTime(0, 0))) + QStringLiteral(" And (DtIni)<") +
                      DataSql(QDateTime(QDate(anno + 1, 1, 1), QTime(0, 0))) + QStringLiteral(")); "),
                  nullptr, dbOpenSnapshot);
    const QVariant massimo = rs->Value(QStringLiteral("MaxDiCAttivita"));
    codice = IsNull(massimo) ? anno * 100000 + 1 : CLng(massimo) + 1;
  });
  RecordsetPtr rs;
  g([&] {
    ApriRecordset(rs,
                  QStringLiteral("SELECT CAttivita, CProject, CDisp, CUtente, CPrestazione, DtIni, DtEnd, DtRealIni, "
                                 "DtRealEnd, Stato, TDocRif, NDocRif FROM ActivitiesProd WHERE CAttivita=") +
                      N(codice) + QStringLiteral(" "),
                  nullptr, dbOpenDynaset);
  });
  g([&] { rs->AddNew(); });
  g([&] { rs->SetValue(QStringLiteral("CAttivita"), codice); });
  g([&] { rs->SetValue(QStringLiteral("CProject"), CProject); });
  g([&] { rs->SetValue(QStringLiteral("CDisp"), CDisp); });
  g([&] { rs->SetValue(QStringLiteral("CPrestazione"), GetCBValue(CBPrest)); });
  g([&] { rs->SetValue(QStringLiteral("CUtente"), Operatore); });
  g([&] {
    rs->SetValue(QStringLiteral("DtIni"), inizio);
    rs->SetValue(QStringLiteral("DtRealIni"), inizio);
  });
  g([&] {
    rs->SetValue(QStringLiteral("DtEnd"), fine);
    rs->SetValue(QStringLiteral("DtRealEnd"), fine);
  });
  g([&] {
    rs->SetValue(QStringLiteral("Stato"), 0);
    rs->SetValue(QStringLiteral("TDocRif"), 0);
    rs->SetValue(QStringLiteral("NDocRif"), 0);
  });
  g([&] { rs->Update(); });
  g([&] { CommitTrans(); });
  g([&] { Pulisci(); });
  g([&] { Picture1->setFocus(); });
}

// The labels and the time go; the three codes stay for the next activity.
void frmInputData::Pulisci() {
  for (QLabel* l : {lblDisp, lblModello, lblOperatore, lblRagSoc, lblTipoPrj, Label2}) l->clear();
  Ore = 0;
  Minuti = 0;
  CBPrest->setCurrentIndex(CBPrest->count() > 0 ? 0 : -1);
  Segna(OptOre, 0);
  Segna(OptMin, 0);
  CtrlCanSave();
}

// ---------------------------------------------------------------- messages

void frmInputData::WriteMsg(const QString& testo) {
  Guard g(kForm, QStringLiteral("WriteMsg"));
  g([&] {
    QFont f(QStringLiteral("Verdana"));
    f.setPointSize(18);
    Picture1->setFont(f);
    Picture1->setText(testo);
  });
}

QString frmInputData::Messaggio() const { return Picture1->text(); }

// ---------------------------------------------------------------- closing

void frmInputData::closeEvent(QCloseEvent* e) {
  if (gOnlyInput) {
    // The station is the whole program: closing it ends the host.
    if (MsgBox(QStringLiteral("Vuoi chiudere il programma?"), vbYesNo | vbQuestion | vbDefaultButton2,
               QStringLiteral("Uscita")) == vbNo) {
      e->ignore();
      return;
    }
    e->accept();
    if (gOcxEventS) gOcxEventS->CloseAll();
    return;
  }
  e->accept();
}

void frmInputData::reject() { close(); }

}  // namespace prestkt
