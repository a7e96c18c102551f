#include "frmExec.h"

#include <QCloseEvent>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>

#include "Guard.h"
#include "Numerazione.h"
#include "ModPrestKT.h"
#include "Procedure.h"
#include "ProcedureUi.h"
#include "Schema.h"

namespace prestkt {

namespace {

const QString kForm = QStringLiteral("frmExec");


// Blanks off both ends; other white space (line breaks of the notes) stays.
QString Trim(const QString& s) {
  int a = 0;
  int b = static_cast<int>(s.size());
  while (a < b && s.at(a) == QLatin1Char(' ')) ++a;
  while (b > a && s.at(b - 1) == QLatin1Char(' ')) --b;
  return s.mid(a, b - a);
}

void Fuoco(QWidget* w) {
  if (w->isVisible() && w->isEnabled()) w->setFocus();
}

}  // namespace

frmExec::frmExec(QWidget* parent) : Scheda(parent, QStringLiteral("frmExec")) { BuildUi(); }

void frmExec::BuildUi() {
  CreaToolbar({{1, QStringLiteral("Esci"), QStringLiteral("application-exit")},
               {3, QStringLiteral("Salva"), QStringLiteral("document-save")}});
  auto nome = [](auto* w, const char* n) {
    w->setObjectName(QString::fromLatin1(n));
    return w;
  };

  // What the card shows of the disposition: never edited here.
  OCFrame2 = nome(new QGroupBox(this), "OCFrame2");
  TBAnag = nome(new QLineEdit(OCFrame2), "TBAnag");
  TBDProject = nome(new QLineEdit(OCFrame2), "TBDProject");
  auto* g2 = new QGridLayout(OCFrame2);
  g2->addWidget(new QLabel(QStringLiteral("Anagrafica")), 0, 0);
  g2->addWidget(TBAnag, 0, 1);
  g2->addWidget(new QLabel(QStringLiteral("Modello")), 1, 0);
  g2->addWidget(TBDProject, 1, 1);
  g2->setColumnStretch(1, 1);
  OCFrame2->setEnabled(false);

  OCFrame3 = nome(new QGroupBox(this), "OCFrame3");
  TBTipoDisp = nome(new QLineEdit(OCFrame3), "TBTipoDisp");
  NumericSpin1 = nome(new NumericSpin(OCFrame3, QStringLiteral("0000-00000")), "NumericSpin1");
  NumericSpin1->setRange(0, 999999999);
  NumericSpin1->SetLocked(true);
  NumericSpin1->setMinimumWidth(110);
  auto* g3 = new QGridLayout(OCFrame3);
  g3->addWidget(new QLabel(QStringLiteral("Tipo disposizione")), 0, 0);
  g3->addWidget(TBTipoDisp, 0, 1);
  g3->addWidget(new QLabel(QStringLiteral("Esecuzione n°")), 0, 2, Qt::AlignRight);
  g3->addWidget(NumericSpin1, 0, 3);
  g3->setColumnStretch(1, 1);
  OCFrame3->setEnabled(false);

  // What the user gives.
  OCFrame1 = nome(new QGroupBox(this), "OCFrame1");
  DTPicker1 = nome(new QDateEdit(OCFrame1), "DTPicker1");
  DTPicker1->setCalendarPopup(true);
  DTPicker1->setDisplayFormat(QStringLiteral("dd/MM/yyyy"));
  CBOperatore = nome(new QComboBox(OCFrame1), "CBOperatore");
  CBOperatore->setMinimumWidth(260);
  Command1 = nome(new QPushButton(QStringLiteral("..."), OCFrame1), "Command1");
  Command1->setFixedWidth(28);
  CBPrest = nome(new QComboBox(OCFrame1), "CBPrest");
  CBPrest->setMinimumWidth(260);
  Command3 = nome(new QPushButton(QStringLiteral("..."), OCFrame1), "Command3");
  Command3->setFixedWidth(28);
  // Enter in a field does not press them.
  Command1->setAutoDefault(false);
  Command3->setAutoDefault(false);
  // Minutes may be negative: an activity of 09:50 to 10:10 reads as 1 hour and -40 minutes.
  OCOre = nome(new NumericSpin(OCFrame1, QStringLiteral("0")), "OCOre");
  OCOre->setRange(0, 999);
  OCOre->setMinimumWidth(70);
  OCMinuti = nome(new NumericSpin(OCFrame1, QStringLiteral("0")), "OCMinuti");
  OCMinuti->setRange(-60, 60);
  OCMinuti->setMinimumWidth(70);
  TBAnnot = nome(new QPlainTextEdit(OCFrame1), "TBAnnot");
  // The notes are kept in two fields: the first 255 characters, and the rest.
  LimitaTesto(TBAnnot, TestoMassimo(QStringLiteral("ActivitiesProd"), QStringLiteral("Annot1")) +
                           TestoMassimo(QStringLiteral("ActivitiesProd"), QStringLiteral("Annot2")));
  TBAnnot->setMinimumHeight(90);
  auto* g1 = new QGridLayout(OCFrame1);
  g1->addWidget(new QLabel(QStringLiteral("Data")), 0, 0);
  auto* riga0 = new QHBoxLayout;
  riga0->addWidget(DTPicker1);
  riga0->addStretch(1);
  g1->addLayout(riga0, 0, 1, 1, 2);
  g1->addWidget(new QLabel(QStringLiteral("Operatore")), 1, 0);
  g1->addWidget(CBOperatore, 1, 1);
  g1->addWidget(Command1, 1, 2);
  g1->addWidget(new QLabel(QStringLiteral("Prestazione")), 2, 0);
  g1->addWidget(CBPrest, 2, 1);
  g1->addWidget(Command3, 2, 2);
  g1->addWidget(new QLabel(QStringLiteral("Ore/Minuti")), 3, 0);
  auto* riga3 = new QHBoxLayout;
  riga3->addWidget(OCOre);
  riga3->addWidget(OCMinuti);
  riga3->addStretch(1);
  g1->addLayout(riga3, 3, 1, 1, 2);
  g1->addWidget(TBAnnot, 4, 0, 1, 3);
  g1->setColumnStretch(1, 1);

  corpo->addWidget(OCFrame2);
  corpo->addWidget(OCFrame3);
  corpo->addWidget(OCFrame1, 1);

  mnuF = Menu(QStringLiteral("mnuF"), QStringLiteral("&File"));
  mnuFS = Voce(mnuF, QStringLiteral("mnuFS"), QStringLiteral("&Salva"));
  mnuFE = Voce(mnuF, QStringLiteral("mnuFE"), QStringLiteral("&Esci"));

  connect(this, &Scheda::ToolbarClick, this, [this](int i) {
    if (i == 1) EseguiComando(0);
    if (i == 3) EseguiComando(1);
  });
  connect(mnuFS, &QAction::triggered, this, [this] {
    FocusText1();
    EseguiComando(1);
  });
  connect(mnuFE, &QAction::triggered, this, [this] { EseguiComando(0); });
  // The notes alone do not make the card to be saved.
  connect(CBOperatore, &QComboBox::currentIndexChanged, this, [this] { SetDaSalvare(true); });
  connect(CBPrest, &QComboBox::currentIndexChanged, this, [this] { SetDaSalvare(true); });
  connect(DTPicker1, &QDateEdit::dateChanged, this, [this] { SetDaSalvare(true); });
  connect(OCOre, &QDoubleSpinBox::valueChanged, this, [this] { SetDaSalvare(true); });
  connect(OCMinuti, &QDoubleSpinBox::valueChanged, this, [this] { SetDaSalvare(true); });
  // A number being typed counts at once, before the field gives it as its value.
  for (NumericSpin* spin : {OCOre, OCMinuti})
    if (auto* editor = spin->findChild<QLineEdit*>())
      connect(editor, &QLineEdit::textEdited, this, [this] { SetDaSalvare(true); });
}

void frmExec::SetDaSalvare(bool v) {
  daSalvare_ = v;
  SetBottoneAbilitato(3, v);
  mnuFS->setEnabled(v);
}

QString frmExec::MontaAnnot(const QVariant& first, const QVariant& second) {
  if (IsNull(first)) return QString();
  if (IsNull(second)) return CStr(first);
  const QString a = Trim(CStr(first));
  return a + QString(std::max<qsizetype>(0, 255 - a.size()), QLatin1Char(' ')) + Trim(CStr(second));
}

void frmExec::CaricaCombos() {
  Guard g(kForm, QStringLiteral("CaricaCombos"));
  g([&] {
    CaricaCombo(CBOperatore,
                QStringLiteral("SELECT CAnag AS CDip, RagSoc1 AS Nome, Eliminato FROM Anagrafica WHERE TAnag=10 AND "
                               "Eliminato=0 ORDER BY RagSoc1; "),
                0, 1, {}, QStringLiteral("{scegli l'operatore}"));
  });
  // The service kinds allowed for the disposition's type.
  QString tipo = QStringLiteral("0");
  g([&] {
    RecordsetPtr rs = gRcsDisp->Clone();
    rs->SetFilter(QStringLiteral("CDisp=") + N(CDisp));
    tipo = CStr(NullToZero(rs->Value(QStringLiteral("CPrjDispTipo"))));
  });
  g([&] {
    CaricaCombo(CBPrest,
                QStringLiteral("SELECT ProjectsDisp2Prest.CPrestazione, [ABC:Prestazioni].DTabGen AS DPrestazione FROM "
                               "ProjectsDisp2Prest INNER JOIN [ABC:Prestazioni] ON ProjectsDisp2Prest.CPrestazione = "
                               "[ABC:Prestazioni].CTabGen WHERE ProjectsDisp2Prest.CPrjDispTipo=") +
                    tipo + QStringLiteral(" ORDER BY [ABC:Prestazioni].DTabGen; "),
                0, 1, {}, QStringLiteral("{scegli la prestazione}"));
  });
}

void frmExec::Form_Load() {
  Guard g(kForm, QStringLiteral("Form_Load"));
  g([&] { Prepara(QStringLiteral("Scheda esecuzione")); });
  g([&] {
    TBAnag->setText(RagSoc1);
    TBDProject->setText(DProject);
    TBTipoDisp->setText(TipoDisp);
  });
  g([&] { CaricaCombos(); });
  if (Modo != 2) {
    RecordsetPtr rs;
    g([&] {
      rs = gRcsAct->Clone();
      rs->SetFilter(QStringLiteral("CAttivita=") + N(CAttivita));
    });
    g([&] { DTPicker1->setDate(CDate(rs->Value(QStringLiteral("DataIni"))).date()); });
    g([&] { NumericSpin1->SetValue(CAttivita); });
    g([&] { SetCBValue(CBOperatore, CLng(NullToZero(rs->Value(QStringLiteral("CUtente")))), 0); });
    g([&] { SetCBValue(CBPrest, CLng(NullToZero(rs->Value(QStringLiteral("CPrestazione")))), 0); });
    // Read by the clock of one day: the minutes may come out negative.
    g([&] {
      OCOre->SetValue(static_cast<double>(
          DateDiff(QStringLiteral("h"), rs->Value(QStringLiteral("OraIni")), rs->Value(QStringLiteral("OraEnd")))));
    });
    g([&] {
      OCMinuti->SetValue(static_cast<double>(
          DateDiff(QStringLiteral("n"), rs->Value(QStringLiteral("OraIni")), rs->Value(QStringLiteral("OraEnd"))) -
          60 * static_cast<qint64>(OCOre->Value())));
    });
    g([&] {
      TBAnnot->setPlainText(MontaAnnot(rs->Value(QStringLiteral("Annot1")), rs->Value(QStringLiteral("Annot2"))));
    });
  } else {
    g([&] { DTPicker1->setDate(Today().date()); });
    g([&] {
      NumericSpin1->SetValue(0);
      OCOre->SetValue(0);
      OCMinuti->SetValue(0);
    });
    g([&] {
      CBOperatore->setCurrentIndex(0);
      CBPrest->setCurrentIndex(0);
    });
    g([&] { TBAnnot->clear(); });
  }
  SetDaSalvare(false);
}

bool frmExec::Controlla() {
  if (CBOperatore->currentIndex() <= 0) {
    MsgBox(QStringLiteral("Scegli l'operatore!"), vbExclamation);
    Fuoco(CBOperatore);
    return false;
  }
  if (CBPrest->currentIndex() <= 0) {
    MsgBox(QStringLiteral("Scegli la prestazione!"), vbExclamation);
    Fuoco(CBPrest);
    return false;
  }
  // A time that adds up to nothing, in whatever mix of hours and minutes.
  if (static_cast<qint64>(OCOre->Value()) * 60 + static_cast<qint64>(OCMinuti->Value()) == 0) {
    MsgBox(QStringLiteral("Inserisci una tempistica corretta!"), vbExclamation);
    Fuoco(OCOre);
    return false;
  }
  return true;
}

bool frmExec::Salva() {
  if (!Controlla()) return false;
  Guard g(kForm, QStringLiteral("Salva"));
  int codice = CAttivita;
  QDateTime inizio, fine;
  g([&] { inizio = QDateTime(DTPicker1->date(), QTime(0, 0)); });
  g([&] { fine = DateAdd(QStringLiteral("n"), OCMinuti->Value(), DateAdd(QStringLiteral("h"), OCOre->Value(), inizio)); });
  g([&] { BeginTrans(); });
  if (Modo == 2) {
    // The code: the year of the day times 100000, plus the next number of that year.
    codice = NuovoCodiceAttivita(g, DTPicker1->date().year());
  }
  RecordsetPtr rs = ApriRigaAttivita(g, codice, Modo == 2, CProject, CDisp);
  g([&] { rs->SetValue(QStringLiteral("CUtente"), GetCBValue(CBOperatore)); });
  g([&] { rs->SetValue(QStringLiteral("CPrestazione"), GetCBValue(CBPrest)); });
  g([&] {
    rs->SetValue(QStringLiteral("DtIni"), inizio);
    rs->SetValue(QStringLiteral("DtEnd"), fine);
    rs->SetValue(QStringLiteral("DtRealIni"), inizio);
    rs->SetValue(QStringLiteral("DtRealEnd"), fine);
  });
  // The notes: 255 characters in the first field, the rest in the second.
  g([&] {
    const QString testo = Trim(TBAnnot->toPlainText());
    if (testo.isEmpty()) {
      rs->SetValue(QStringLiteral("Annot1"), Null);
      rs->SetValue(QStringLiteral("Annot2"), Null);
    } else if (testo.size() >= 256) {
      rs->SetValue(QStringLiteral("Annot1"), Trim(testo.left(255)));
      rs->SetValue(QStringLiteral("Annot2"), testo.right(testo.size() - 255));
    } else {
      rs->SetValue(QStringLiteral("Annot1"), testo);
      rs->SetValue(QStringLiteral("Annot2"), Null);
    }
  });
  g([&] { rs->Update(); });
  g([&] { CommitTrans(); });
  g([&] { CaricaAttivita(gRcsAct, 0, 0, codice, true); });
  g([&] {
    CAttivita = codice;
    NumericSpin1->SetValue(codice);
  });
  g([&] {
    int c = codice;
    emit Reload(c);
  });
  SetDaSalvare(false);
  Modo = 1;
  return true;
}

void frmExec::EseguiComando(int n) {
  if (n == 0) {
    close();
    return;
  }
  if (Salva()) close();
}

void frmExec::closeEvent(QCloseEvent* e) {
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

void frmExec::reject() { close(); }

}  // namespace prestkt
