#include "frmGestDispOK.h"

#include <QHBoxLayout>
#include <QVBoxLayout>

#include "Messages.h"
#include "ProcedureUi.h"
#include "Vb.h"

namespace prestkt {

frmGestDispOK::frmGestDispOK(QWidget* parent) : QDialog(parent) {
  setObjectName(QStringLiteral("frmGestDispOK"));
  setModal(true);
  setWindowTitle(QStringLiteral("Chiusura disposizioni"));
  Label1 = Nome(new QLabel(QStringLiteral("Data chiusura"), this), QStringLiteral("Label1"));
  DTPicker1 = Nome(new QDateEdit(this), QStringLiteral("DTPicker1"));
  DTPicker1->setDisplayFormat(QStringLiteral("dd/MM/yyyy"));
  DTPicker1->setCalendarPopup(true);
  Label1->setBuddy(DTPicker1);
  OKButton = Nome(new QPushButton(QStringLiteral("OK"), this), QStringLiteral("OKButton"));
  CancelButton = Nome(new QPushButton(QStringLiteral("Annulla"), this), QStringLiteral("CancelButton"));
  for (QPushButton* b : {OKButton, CancelButton}) b->setAutoDefault(false);

  auto* data = new QHBoxLayout;
  data->addWidget(Label1);
  data->addWidget(DTPicker1, 1);
  auto* bottoni = new QHBoxLayout;
  bottoni->addStretch(1);
  bottoni->addWidget(OKButton);
  bottoni->addWidget(CancelButton);
  auto* v = new QVBoxLayout(this);
  v->addLayout(data);
  v->addLayout(bottoni);

  connect(OKButton, &QPushButton::clicked, this, &frmGestDispOK::OKButton_Click);
  connect(CancelButton, &QPushButton::clicked, this, &QDialog::close);
}

void frmGestDispOK::Form_Load() {
  DTPicker1->setDate(Today().date());
  adjustSize();
  CentraForm(this);
}

void frmGestDispOK::OKButton_Click() {
  if (MsgBox(QStringLiteral("Sei sicuro di voler chiudere le disposizioni selezionate?"),
             vbYesNo + vbQuestion + vbDefaultButton2) != vbYes)
    return;
  emit CloseDisposizioni(QDateTime(DTPicker1->date(), QTime(0, 0)));
  close();
}

}  // namespace prestkt
