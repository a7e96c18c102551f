// The model card's link to a line of a customer order.
#include "Guard.h"
#include "ModPrestKT.h"
#include "Procedure.h"
#include "frmModelli.h"
#include "frmOrdini.h"

namespace prestkt {

void frmModelli::CaricaRigaOrdine(int nDoc, int riga) {
  Guard g(QStringLiteral("frmModelli"), QStringLiteral("CaricaRigaOrdine"));
  auto svuota = [&] {
    TBDArt->clear();
    TBCodTesto->clear();
    OCUpQtaOrd->SetValue(0);
  };
  if (static_cast<qint64>(nDoc) * riga == 0) {
    g(svuota);  // the date's frame keeps its state
    return;
  }
  RecordsetPtr rs;
  g([&] {
    ApriRecordset(rs,
                  QStringLiteral("SELECT TipoDoc, NDoc, Data FROM Doc WHERE TipoDoc=2 AND NDoc=") +
                      QString::number(nDoc) + QStringLiteral("; "),
                  nullptr, dbOpenSnapshot);
  });
  g([&] {
    if (rs->Eof()) {
      OCFrame5->setVisible(false);
    } else {
      OCFrame5->setVisible(true);
      DTPicker2->setDate(CDate(rs->Value(QStringLiteral("Data"))).date());
    }
  });
  g([&] {
    ApriRecordset(rs,
                  QStringLiteral("SELECT TipoDoc, NDoc, Scheda, Riga, CodTesto, DArt, Qta-Annullato as DaEvad FROM "
                                 "DocDett WHERE TipoDoc=2 AND NDoc=") +
                      QString::number(nDoc) + QStringLiteral(" AND Scheda=0 AND Riga=") + QString::number(riga) +
                      QStringLiteral(" "),
                  nullptr, dbOpenSnapshot);
  });
  g([&] {
    if (rs->Eof()) {
      svuota();
      return;
    }
    TBDArt->setText(NullToStr(rs->Value(QStringLiteral("DArt"))));
    TBCodTesto->setText(NullToStr(rs->Value(QStringLiteral("CodTesto"))));
    OCUpQtaOrd->SetValue(CDbl(NullToZero(rs->Value(QStringLiteral("DaEvad")))));
    // A new choice, not the load of the card, overwrites the model's name and quantity.
    if (isVisible()) {
      TBDProject->setText(TBDArt->text());
      OCUpQta->SetValue(OCUpQtaOrd->Value());
    }
  });
}

void frmModelli::fOrdini_LoadOrderRow(int& nDoc, int& riga, QString& dArt) {
  TBDProject->setText(dArt);
  CaricaRigaOrdine(nDoc, riga);
  SetModificato(true);
}

void frmModelli::mnuLinkOrd_Click() {
  if (CAnag == 0) {
    MsgBox(QStringLiteral("Devi scegliere un'anagrafica per collegare un ordine!"), vbExclamation);
    return;
  }
  frmOrdini f(this);
  f.TAnag = TAnag;
  f.CAnag = CAnag;
  f.NDoc = static_cast<int>(OCUDOrdine->Value());
  f.Riga = static_cast<int>(OCUDRiga->Value());
  connect(&f, &frmOrdini::LoadOrderRow, this, &frmModelli::fOrdini_LoadOrderRow, Qt::DirectConnection);
  f.Form_Load();
  f.exec();
}

void frmModelli::mnuDelLink_Click() {
  if (MsgBox(QStringLiteral("Sei sicuro di voler eliminare il collegamento alla riga ") +
                 QString::number(static_cast<int>(OCUDRiga->Value())) + QStringLiteral(" dell'ordine ") +
                 Format(OCUDOrdine->Value(), QStringLiteral("0000-00000")) + QStringLiteral("?"),
             vbYesNo | vbQuestion | vbDefaultButton2) != vbYes)
    return;
  OCUDOrdine->SetValue(0);
  OCUDRiga->SetValue(0);
  CaricaRigaOrdine(0, 0);
}

}  // namespace prestkt
