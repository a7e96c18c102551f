#include "frmSettings.h"

#include <QCloseEvent>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QVBoxLayout>

#include "Guard.h"
#include "Messages.h"
#include "Procedure.h"
#include "ProcedureUi.h"

namespace prestkt {

namespace {

const QString kForm = QStringLiteral("frmSettings");

NumericSpin* Campo(QWidget* parent, const char* nome, const QString& formato) {
  auto* c = new NumericSpin(parent, formato);
  c->setObjectName(QString::fromLatin1(nome));
  c->setRange(-1e6, 1e6);
  c->setMinimumWidth(120);
  return c;
}

}  // namespace

frmSettings::frmSettings(QWidget* parent) : QDialog(parent) {
  setObjectName(kForm);
  setModal(true);
  setWindowTitle(QStringLiteral("Impostazioni"));
  OCFrame1 = new QGroupBox(QStringLiteral("Impostazioni"), this);
  OCFrame1->setObjectName(QStringLiteral("OCFrame1"));
  // Markups are fractions: 0,5 is 50%; the field shows the percent.
  OCPercRicLavExt = Campo(OCFrame1, "OCPercRicLavExt", QStringLiteral("0.00%"));
  OCPercRicMin = Campo(OCFrame1, "OCPercRicMin", QStringLiteral("0.00%"));
  OCCoeffArrot = Campo(OCFrame1, "OCCoeffArrot", QStringLiteral("0.00"));
  OCCoeffArrotRange = Campo(OCFrame1, "OCCoeffArrotRange", QStringLiteral("0.00"));
  auto* f = new QFormLayout(OCFrame1);
  f->addRow(QStringLiteral("% ricarico lav.ext:"), OCPercRicLavExt);
  f->addRow(QStringLiteral("% ricarico min:"), OCPercRicMin);
  f->addRow(QStringLiteral("Coeff.arrot.std:"), OCCoeffArrot);
  f->addRow(QStringLiteral("Coeff.arrot. range:"), OCCoeffArrotRange);
  OKButton = new QPushButton(QStringLiteral("Salva"), this);
  OKButton->setObjectName(QStringLiteral("OKButton"));
  CancelButton = new QPushButton(QStringLiteral("Annulla"), this);
  CancelButton->setObjectName(QStringLiteral("CancelButton"));
  for (QPushButton* b : {OKButton, CancelButton}) b->setAutoDefault(false);
  auto* bottoni = new QHBoxLayout;
  bottoni->addStretch(1);
  bottoni->addWidget(OKButton);
  bottoni->addWidget(CancelButton);
  auto* v = new QVBoxLayout(this);
  v->addWidget(OCFrame1);
  v->addLayout(bottoni);

  for (NumericSpin* c : {OCPercRicLavExt, OCPercRicMin, OCCoeffArrot, OCCoeffArrotRange})
    connect(c, &QDoubleSpinBox::valueChanged, this, [this] { SetDaSalvare(true); });
  connect(OKButton, &QPushButton::clicked, this, &frmSettings::OKButton_Click);
  connect(CancelButton, &QPushButton::clicked, this, &QDialog::close);
}

void frmSettings::SetDaSalvare(bool v) {
  if (!caricato_ && v) return;
  daSalvare_ = v;
  OKButton->setEnabled(v);
}

void frmSettings::Form_Load() {
  Guard g(kForm, QStringLiteral("Form_Load"), Guard::Silent);
  const ImpostazioniPrezzo v = LeggiImpostazioniPrezzo(g, kFallbackImpostazioni);
  OCPercRicLavExt->SetValue(v.PercRicLExt);
  OCPercRicMin->SetValue(v.PercRicMin);
  OCCoeffArrot->SetValue(v.CoeffStd);
  OCCoeffArrotRange->SetValue(v.CoeffRange);
  adjustSize();
  CentraForm(this);
  caricato_ = true;
  SetDaSalvare(false);
}

void frmSettings::OKButton_Click() {
  Guard g(kForm, QStringLiteral("OKButton_Click"));
  const auto scrivi = [&](const char* chiave, NumericSpin* c) {
    g([&] { ScriviConfig(false, QString::fromLatin1(chiave), QString::number(c->Value(), 'g', 15)); });
  };
  scrivi("PrestKT_PercRicLExt", OCPercRicLavExt);
  scrivi("PrestKT_PercRicMin", OCPercRicMin);
  scrivi("PrestKT_CoeffStd", OCCoeffArrot);
  scrivi("PrestKT_CoeffRange", OCCoeffArrotRange);
  SetDaSalvare(false);
  salvata_ = true;
  // Unloads also from inside the closing that asked, where a close would be ignored.
  done(QDialog::Accepted);
}

// Closing in any way with unsaved changes asks; Yes saves, and the save has
// already unloaded the screen.
void frmSettings::closeEvent(QCloseEvent* e) {
  if (daSalvare_ && !salvata_ &&
      MsgBox(QStringLiteral("Vuoi salvare prima di uscire?"), vbYesNo | vbQuestion | vbDefaultButton2) == vbYes) {
    e->ignore();
    OKButton_Click();
    return;
  }
  e->accept();
}

void frmSettings::reject() { close(); }

}  // namespace prestkt
