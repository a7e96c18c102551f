#include "frmGestOrdFornImm.h"

#include <QCloseEvent>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>

#include "Guard.h"
#include "ModListViewKT.h"
#include "ModPrestKT.h"
#include "Procedure.h"
#include "ProcedureUi.h"
#include "Schema.h"
#include "frmCalcPzVend.h"
#include "frmDispAttive.h"

namespace prestkt {

namespace {

const QString kForm = QStringLiteral("frmGestOrdFornImm");

// A recordset the host handed over; one it didn't hand fails as an object not set.
Recordset* Di(const RecordsetPtr& rs) {
  if (!rs) Raise(err::ObjectNotSet);
  return rs.get();
}

void Riga(QGridLayout* g, int riga, const QString& etichetta, QWidget* campo, int colonne = 1) {
  g->addWidget(new QLabel(etichetta), riga, 0);
  g->addWidget(campo, riga, 1, 1, colonne);
}

}  // namespace

frmGestOrdFornImm::frmGestOrdFornImm(QWidget* parent) : Scheda(parent, QStringLiteral("frmGestOrdFornImm")) {
  CreaToolbar({{1, QStringLiteral("Esci"), QStringLiteral("application-exit")},
               {3, QStringLiteral("Salva"), QStringLiteral("document-save")},
               {5, QStringLiteral("Scegli la disposizione"), QStringLiteral("document-open")}});

  OCFrame3 = Nome(new QGroupBox(this), "OCFrame3");
  TBAnag = Nome(new QLineEdit, "TBAnag");
  TBDProject = Nome(new QLineEdit, "TBDProject");
  TBDDisp = Nome(new QLineEdit, "TBDDisp");
  auto* g3 = new QGridLayout(OCFrame3);
  Riga(g3, 0, QStringLiteral("Anagrafica"), TBAnag);
  Riga(g3, 1, QStringLiteral("Modello"), TBDProject);
  Riga(g3, 2, QStringLiteral("Disposizione"), TBDDisp);
  corpo->addWidget(OCFrame3);

  OCFrame2 = Nome(new QGroupBox(this), "OCFrame2");
  OCQtaOrd = Nome(new NumericSpin(OCFrame2, QStringLiteral("#,##0")), "OCQtaOrd");
  auto* g2 = new QGridLayout(OCFrame2);
  Riga(g2, 0, QStringLiteral("Qta in ordine"), OCQtaOrd);
  corpo->addWidget(OCFrame2);

  auto* riga = new QGroupBox(this);
  OCQta = Nome(new NumericSpin(riga, QStringLiteral("#,##0")), "OCQta");
  OCImporto = Nome(new NumericSpin(riga, QStringLiteral("#,##0.00###")), "OCImporto");
  Command1 = Nome(new QPushButton(QStringLiteral("..."), riga), "Command1");
  Command1->setToolTip(QStringLiteral("Calcolo tariffa"));
  Command1->setFixedWidth(Command1->fontMetrics().horizontalAdvance(QStringLiteral("......")) + 16);
  TBDArt = Nome(new QLineEdit(riga), "TBDArt");
  // Room for a description as long as a model's name and its disposition's.
  TBDArt->setMinimumWidth(TBDArt->fontMetrics().averageCharWidth() * 60);
  LimitaTesto(TBDArt, TestoMassimo(QStringLiteral("ProjectsDocDett"), QStringLiteral("DArt")));
  CBCaus = Nome(new QComboBox(riga), "CBCaus");
  CBIva = Nome(new QComboBox(riga), "CBIva");
  auto* gr = new QGridLayout(riga);
  Riga(gr, 0, QStringLiteral("Qtà"), OCQta);
  auto* prezzo = new QHBoxLayout;
  prezzo->addWidget(OCImporto, 1);
  prezzo->addWidget(Command1);
  gr->addWidget(new QLabel(QStringLiteral("Prezzo")), 1, 0);
  gr->addLayout(prezzo, 1, 1);
  Riga(gr, 2, QStringLiteral("Descrizione"), TBDArt);
  Riga(gr, 3, QStringLiteral("Causale"), CBCaus);
  Riga(gr, 4, QStringLiteral("Codice IVA"), CBIva);
  corpo->addWidget(riga);

  OCFrame4 = Nome(new QGroupBox(this), "OCFrame4");
  lvwPrest = Nome(new ListView(OCFrame4), "lvwPrest");
  lvwPrest->setMinimumHeight(160);
  auto* g4 = new QVBoxLayout(OCFrame4);
  g4->addWidget(lvwPrest);
  corpo->addWidget(OCFrame4, 1);

  connect(this, &Scheda::ToolbarClick, this, [this](int i) {
    if (i == 1) EseguiAzione(0);
    if (i == 3) EseguiAzione(1);
    if (i == 5) EseguiAzione(2);
  });
  connect(Command1, &QPushButton::clicked, this, [this] { Command1_Click(); });
  // The reason follows the combo.
  connect(CBCaus, QOverload<int>::of(&QComboBox::currentIndexChanged), this, [this] { vCCaus = GetCBValue(CBCaus); });
}

frmGestOrdFornImm::~frmGestOrdFornImm() {
  if (gOcxEventCard == OcxEventS) gOcxEventCard.reset();
}

void frmGestOrdFornImm::Form_Load() {
  Guard g(kForm, QStringLiteral("Form_Load"));
  g([&] {
    // A relay of its own, which this screen listens to for nothing.
    OcxEventS = OCPrestKTClassPtr(std::make_shared<OCPrestKTClass>());
    gOcxEventCard = OcxEventS;
  });
  g([&] { OCFrame4->setEnabled(!ForDDT); });
  g([&] { IniVideo(); });
  g([&] {
    Prepara(vMode == 2 ? QStringLiteral("Aggiunta riga da progetto") : QStringLiteral("Modifica riga da progetto"));
  });
}

void frmGestOrdFornImm::CaricaCausali() {
  CBCaus->clear();
  CaricaCombo(CBCaus,
              QStringLiteral("SELECT TabGen.CTipTabGen, TabGen.CTabGen, TabGen.DTabGen From TabGen Where "
                             "(((TabGen.CTipTabGen) = 1)) ORDER BY TabGen.DTabGen;"),
              1, 2, vCCaus);
}

// A new line always gets a VAT code: with none yet, the first of the combo.
void frmGestOrdFornImm::CaricaIva() {
  CaricaCombo(CBIva,
              QStringLiteral("SELECT TabGen.CTabGen, TabGen.DTabGen, TabGen.Bool3, TabGen.Num1 From TabGen Where "
                             "(((TabGen.CTipTabGen) = 4)) ORDER BY TabGen.Bool3, TabGen.Num1;"),
              0, 1, CIva);
  if (CIva == 0 && CBIva->count() > 0) CBIva->setCurrentIndex(0);
}

void frmGestOrdFornImm::IniVideo() {
  Guard g(kForm, QStringLiteral("IniVideo"));
  g([&] {
    OCFrame2->setEnabled(false);
    OCFrame3->setEnabled(false);
    OCQtaOrd->SetFormato(QStringLiteral("#,##0"));
    OCQta->SetFormato(QStringLiteral("#,##0"));
    ListViewReport(lvwPrest, true);
    ListViewSetColumns(lvwPrest, {QStringLiteral("Prestazioni")}, {5000}, {lvwColumnLeft});
  });
  if (vMode == 2) {
    g([&] {
      CProject = 0;
      CDisp = 0;
      CIva = 0;
    });
    g([&] { CaricaCausali(); });
    g([&] { CaricaIva(); });
    g([&] {
      for (QLineEdit* t : {TBAnag, TBDDisp, TBDProject, TBDArt}) t->clear();
      for (NumericSpin* n : {OCQtaOrd, OCQta, OCImporto}) n->SetValue(0);
    });
    return;
  }
  g([&] { Di(rcsFD)->SetFilter(QStringLiteral("RigaD=") + QString::number(vRigaD)); });
  if (!g.Value([&] { return Di(rcsFD)->RecordCount() == 1; }, false)) return;  // the screen stays empty
  g([&] {
    CaricaDati(CLng(Di(rcsFD)->Value(QStringLiteral("CProject"))), CInt(Di(rcsFD)->Value(QStringLiteral("CDisp"))));
  });
  g([&] {
    vCCaus = CInt(NullToZero(Di(rcsFD)->Value(QStringLiteral("CCaus"))));
    CaricaCausali();
  });
  g([&] {
    CIva = CInt(NullToZero(Di(rcsFD)->Value(QStringLiteral("CIVA"))));
    CaricaIva();
  });
  g([&] {
    OCQta->SetValue(NullToZero(Di(rcsFD)->Value(QStringLiteral("Qta"))).toDouble());
    OCImporto->SetValue(NullToZero(Di(rcsFD)->Value(QStringLiteral("Importo"))).toDouble());
    TBDArt->setText(NullToStr(Di(rcsFD)->Value(QStringLiteral("DArt"))));
    TBDArt->setCursorPosition(0);  // a long description shows its beginning
  });
  g([&] { Di(rcsFDD)->SetFilter(QStringLiteral("RigaD=") + QString::number(vRigaD)); });
  // A kind that no longer stands in the list fails its lookup, which is logged.
  for (g([&] { Di(rcsFDD)->MoveFirst(); }); g.Value([&] { return !Di(rcsFDD)->Eof(); }, false); Di(rcsFDD)->MoveNext())
    g([&] {
      const int r = lvwPrest->IndexOfKey(QStringLiteral("K") +
                                         Format(Di(rcsFDD)->Value(QStringLiteral("CPrestazione")), QStringLiteral("000")));
      if (r < 0) Raise(35601, QStringLiteral("Element not found"));
      lvwPrest->SetChecked(r, true);
    });
}

bool frmGestOrdFornImm::CaricaDati(int vCProject, int vCDisp) {
  Guard g(kForm, QStringLiteral("CaricaDati"));
  bool trovata = false;
  g([&] {
    Di(rcsD)->SetFilter(QStringLiteral("CProject=") + QString::number(vCProject) + QStringLiteral(" AND CDisp=") +
                    QString::number(vCDisp));
    if (Di(rcsD)->RecordCount() != 1) {
      MsgBox(QStringLiteral("ATTENZIONE: Non ho trovato la disposizione (Project:") + QString::number(vCProject) +
                 QStringLiteral(" AND CDisp=") + QString::number(vCDisp) + QStringLiteral(")"),
             vbOKOnly);
      return;
    }
    CProject = vCProject;
    CDisp = vCDisp;
    TBAnag->setText(NullToStr(Di(rcsD)->Value(QStringLiteral("RagSoc1"))));
    TBDProject->setText(NullToStr(Di(rcsD)->Value(QStringLiteral("DProject"))) + QStringLiteral(" (") +
                        NullToStr(Di(rcsD)->Value(QStringLiteral("DPrjTipo"))) + QLatin1Char(')'));
    TBDDisp->setText(NullToStr(Di(rcsD)->Value(QStringLiteral("DPrjDispTipo"))));
    OCQtaOrd->SetValue(NullToZero(Di(rcsD)->Value(QStringLiteral("Qta"))).toDouble());
    CaricaListPrest(CInt(NullToZero(Di(rcsD)->Value(QStringLiteral("CPrjDispTipo")))));
    // The line's default description.
    TBDArt->setText(TBDDisp->text() + QStringLiteral(": ") + TBDProject->text());
    TBDArt->setCursorPosition(0);
    trovata = true;
  });
  return trovata;
}

void frmGestOrdFornImm::CaricaListPrest(int cPrjDispTipo) {
  Guard g(kForm, QStringLiteral("CaricaListPrest"));
  g([&] {
    lvwPrest->setVisible(false);
    lvwPrest->ClearItems();
  });
  // On a delivery note, the kinds really registered on the disposition.
  RecordsetPtr registrate;
  if (ForDDT)
    g([&] {
      RecordsetPtr rs;
      ApriRecordset(rs,
                    QStringLiteral("SELECT CProject, CDisp, CPrestazione FROM ProjectsDispDett GROUP BY CProject, "
                                   "CDisp, CPrestazione HAVING CProject=") +
                        QString::number(CProject) + QStringLiteral(" AND CDisp=") + QString::number(CDisp),
                    nullptr, dbOpenSnapshot);
      if (!rs) Raise(err::ObjectNotSet);
      DAO2ADO(rs, registrate);
    });
  g([&] {
    RecordsetPtr rs;
    ApriRecordset(rs,
                  QStringLiteral("SELECT ProjectsDisp2Prest.CPrestazione, [ABC:Prestazioni].DTabGen AS DPrestazione "
                                 "FROM ProjectsDisp2Prest INNER JOIN [ABC:Prestazioni] ON "
                                 "ProjectsDisp2Prest.CPrestazione = [ABC:Prestazioni].CTabGen WHERE "
                                 "(((ProjectsDisp2Prest.CPrjDispTipo)=") +
                      QString::number(cPrjDispTipo) + QStringLiteral(")) ORDER BY [ABC:Prestazioni].DTabGen; "),
                  nullptr, dbOpenSnapshot);
    if (!rs) Raise(err::ObjectNotSet);
    for (; !rs->Eof(); rs->MoveNext()) {
      const QVariant codice = rs->Value(QStringLiteral("CPrestazione"));
      const int r = ListViewAddLine(lvwPrest, {NullToStr(rs->Value(QStringLiteral("DPrestazione")))},
                                    QStringLiteral("K") + Format(codice, QStringLiteral("000")));
      bool spuntata = false;
      if (ForDDT && registrate) {
        registrate->SetFilter(QStringLiteral("CPrestazione=") + CStr(codice));
        spuntata = registrate->RecordCount() == 1;
      }
      lvwPrest->SetChecked(r, spuntata);
    }
  });
  g([&] { lvwPrest->setVisible(true); });
}

void frmGestOrdFornImm::ShowDispAttive() {
  Guard g(kForm, QStringLiteral("ShowDispAttive"));
  g([&] {
    frmDispAttive f(this);
    connect(&f, &frmDispAttive::Reload, this, [this](int& p, int& d) { fDispAttive_Reload(p, d); },
            Qt::DirectConnection);
    f.recordset = Di(rcsD)->Clone();
    f.ForDDT = ForDDT;
    f.vTAnagD = vTAnagD;
    f.vCAnagD = vCAnagD;
    f.Form_Load();
    f.exec();
  });
  // The whole quantity of the disposition is proposed, also when nothing was chosen.
  g([&] { OCQta->SetValue(OCQtaOrd->Value()); });
}

void frmGestOrdFornImm::fDispAttive_Reload(int vCProject, int vCDisp) { CaricaDati(vCProject, vCDisp); }

void frmGestOrdFornImm::fCalcPzVend_SetPzVend(double pzVend) { OCImporto->SetValue(pzVend); }

void frmGestOrdFornImm::Command1_Click() {
  try {
    if (ForDDT && OCQta->Value() == 0) {
      MsgBox(QStringLiteral("Digita la quantità da evadere!"), vbExclamation);
      OCQta->setFocus();
      return;
    }
    if (CProject < 1) {
      MsgBox(QStringLiteral("Scegli un progetto prima!"), vbExclamation);
      return;
    }
    frmCalcPzVend f(this);
    connect(&f, &frmCalcPzVend::SetPzVend, this, [this](double p) { fCalcPzVend_SetPzVend(p); },
            Qt::DirectConnection);
    f.Chiamante = objectName();
    f.CProject = CProject;
    f.CDisp = CDisp;
    f.Qta = OCQta->Value();
    f.PzIni = OCImporto->Value();
    f.Mostra();
  } catch (...) {
  }
}

bool frmGestOrdFornImm::Salva() {
  Guard g(kForm, QStringLiteral("Salva"));
  if (CProject == 0) {
    MsgBox(QStringLiteral("Scegli un modello/disposizione per proseguire!"), vbExclamation);
    return false;
  }
  QStringList spuntate;
  for (int i = 0; i < lvwPrest->Count(); ++i)
    if (lvwPrest->Checked(i)) spuntate << lvwPrest->Text(i, 0);
  const QString nota = spuntate.join(QStringLiteral(" + "));
  const auto ferma = [&](const QString& testo, QWidget* campo) {
    MsgBox(testo, vbOKOnly);
    if (campo->isVisible() && campo->isEnabled()) campo->setFocus();
    return false;
  };
  if (nota.isEmpty()) return ferma(QStringLiteral("Devi selezionare almeno una prestazione!"), lvwPrest);
  if (TBDArt->text().trimmed().isEmpty())
    return ferma(QStringLiteral("Devi specificare la descrizione in documento!"), TBDArt);
  if (vCCaus == 0) return ferma(QStringLiteral("Devi specificare la causale!"), CBCaus);
  if (OCQta->Value() == 0) return ferma(QStringLiteral("Devi digitare la quantità!"), OCQta);
  if (vMode == 2) {
    g([&] {
      Di(rcsFD)->SetFilter(QString());
      if (Di(rcsFD)->RecordCount() > 0) {
        Di(rcsFD)->SetSort(QStringLiteral("RigaD DESC"));
        Di(rcsFD)->MoveFirst();
        vRigaD = CInt(Di(rcsFD)->Value(QStringLiteral("RigaD"))) + 1;
      } else {
        vRigaD = 1;
      }
      Di(rcsFD)->AddNew();
      Di(rcsFD)->SetValue(QStringLiteral("RigaD"), vRigaD);
    });
  } else {
    g([&] { Di(rcsFD)->SetFilter(QStringLiteral("RigaD=") + QString::number(vRigaD)); });
  }
  g([&] {
    Di(rcsFD)->SetValue(QStringLiteral("CProject"), CProject);
    Di(rcsFD)->SetValue(QStringLiteral("CDisp"), CDisp);
    Di(rcsFD)->SetValue(QStringLiteral("Ctipo"), 0);
    Di(rcsFD)->SetValue(QStringLiteral("CArt"), 0);
    Di(rcsFD)->SetValue(QStringLiteral("CVar"), 0);
    Di(rcsFD)->SetValue(QStringLiteral("CodTesto"), QStringLiteral(">"));
    Di(rcsFD)->SetValue(QStringLiteral("CodForn"), QStringLiteral(">"));
    Di(rcsFD)->SetValue(QStringLiteral("DArt"), TBDArt->text());
    Di(rcsFD)->SetValue(QStringLiteral("NotaArt"), nota);
    Di(rcsFD)->SetValue(QStringLiteral("Qta"), OCQta->Value());
    Di(rcsFD)->SetValue(QStringLiteral("CCaus"), vCCaus);
    Di(rcsFD)->SetValue(QStringLiteral("Importo"), OCImporto->Value());
    Di(rcsFD)->SetValue(QStringLiteral("CIVA"), GetCBValue(CBIva));
    Di(rcsFD)->Update();
  });
  // The line's service kinds, written anew.
  g([&] {
    Di(rcsFDD)->SetFilter(QStringLiteral("RigaD=") + QString::number(vRigaD));
    while (!Di(rcsFDD)->Eof()) {
      Di(rcsFDD)->Delete();
      Di(rcsFDD)->MoveNext();
    }
  });
  g([&] {
    int subRiga = 0;
    for (int i = 0; i < lvwPrest->Count(); ++i) {
      if (!lvwPrest->Checked(i)) continue;
      Di(rcsFDD)->AddNew();
      Di(rcsFDD)->SetValue(QStringLiteral("RigaD"), vRigaD);
      Di(rcsFDD)->SetValue(QStringLiteral("SubRiga"), ++subRiga);
      Di(rcsFDD)->SetValue(QStringLiteral("CPrestazione"), lvwPrest->Key(i).right(3).toInt());
      Di(rcsFDD)->Update();
    }
  });
  g([&] { gOcxEventS->SendDataDoc(rcsFD, rcsFDD, vRigaD, vMode); });
  return true;
}

void frmGestOrdFornImm::EseguiAzione(int azione) {
  try {
    if (azione == 0) close();
    else if (azione == 1) {
      if (Salva()) close();
    } else if (azione == 2) {
      ShowDispAttive();
    }
  } catch (...) {
  }
}

void frmGestOrdFornImm::closeEvent(QCloseEvent* e) {
  ForDDT = false;
  Scheda::closeEvent(e);
}

}  // namespace prestkt
