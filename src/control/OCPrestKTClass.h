#pragma once
// The relay: each method does nothing but raise the event of the same purpose,
// with its arguments by reference, so that a listener's write comes back to the
// caller. One object carries the screens' requests to the host (gOcxEventS),
// another the host's answers to the open card (gOcxEventCard).
#include <QObject>
#include <QString>
#include <QVariant>
#include <memory>

#include "Recordset.h"

namespace prestkt {

class OCPrestKTClass : public QObject {
  Q_OBJECT
 public:
  using QObject::QObject;

  void ShowAnagMod() { emit ShowAnagModEvent(); }
  void ShowTipologieMod(QVariant& vCTipoPrj) { emit ShowTipolModEvent(vCTipoPrj); }
  void ShowTipologieDisp(QVariant& vCTipoDispPrj) { emit ShowTipolDispEvent(vCTipoDispPrj); }
  void ChAnagInMod(QVariant& vTAnag, QVariant& vCAnag) { emit ChAnagInModelli(vTAnag, vCAnag); }
  void ChAnagInDoc(QVariant& vTAnag, QVariant& vCAnag, QString& tipo) { emit ChAnagInDocEvent(vTAnag, vCAnag, tipo); }
  void ChProjInMod(QVariant& vCTipoPrj) { emit ChProjInModelli(vCTipoPrj); }
  void ChProjInDisp(QVariant& vCTipoDispPrj) { emit ChProjInDisposizioni(vCTipoDispPrj); }
  void ReloadControl(int& vCProjectToSel) { emit ReloadDataInCtrl(vCProjectToSel); }
  void ShowAnagDoc(QString& tipo) { emit ShowAnagDocEvent(tipo); }
  void SendDataDoc(RecordsetPtr& rcsFD, RecordsetPtr& rcsFDD, int& vRigaD, int& vMode) {
    emit SendDataDocEvent(rcsFD, rcsFDD, vRigaD, vMode);
  }
  void CloseAll() { emit ClosePrg(); }
  void SendDataFattDiff(double& vImporto) { emit SendDataFattDiffEvent(vImporto); }

 signals:
  void ShowTipolModEvent(QVariant& vCTipoPrj);
  void ShowTipolDispEvent(QVariant& vCTipoDispPrj);
  void ShowAnagModEvent();
  void ShowAnagDocEvent(QString& tipo);
  void ChAnagInModelli(QVariant& vTAnag, QVariant& vCAnag);
  void ChAnagInDocEvent(QVariant& vTAnag, QVariant& vCAnag, QString& tipo);
  void ChProjInModelli(QVariant& vCTipoPrj);
  void ChProjInDisposizioni(QVariant& vCTipoDispPrj);
  void ReloadDataInCtrl(int& vCProjectToSel);
  void SendDataDocEvent(RecordsetPtr& rcsFD, RecordsetPtr& rcsFDD, int& vRigaD, int& vMode);
  void SendDataFattDiffEvent(double& vImporto);
  void ClosePrg();
};

using OCPrestKTClassPtr = Ref<OCPrestKTClass>;

// The relay from the screens to the host (DBConn) and from the host to the open card (the card).
inline OCPrestKTClassPtr gOcxEventS;
inline OCPrestKTClassPtr gOcxEventCard;

}  // namespace prestkt
