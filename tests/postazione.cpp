// Helper of the workstation tests: one workstation saving at the same time as
// another on the same database. It saves, through the screens, either
// activities at the station or new models on the model card, and exits with
// the number of saves that went wrong (0 when all went).
//
//   postazione DB attivita|modelli COUNT TAG
#include <QApplication>
#include <algorithm>

#include "ModPrestKT.h"
#include "OCPrestKTClass.h"
#include "ProcedureUi.h"
#include "TestSupport.h"
#include "frmInputData.h"
#include "frmModelli.h"

using namespace prestkt;

int main(int argc, char** argv) {
  QApplication app(argc, argv);
  if (argc < 5) return 100;
  const QString modo = QString::fromLatin1(argv[2]);
  const int quanti = QString::fromLatin1(argv[3]).toInt();
  const QString tag = QString::fromLocal8Bit(argv[4]);
  auto db = test::ApriDatabaseDiProva(QString::fromLocal8Bit(argv[1]), false);
  gDB = db;
  gPathDB = db->PathDB();
  // Nobody is at this workstation to answer: any question or warning counts as a failure.
  auto messaggi = std::make_shared<test::ScriptedMessages>();
  SetMessageService(messaggi);
  gOcxEventS = OCPrestKTClassPtr(std::make_shared<OCPrestKTClass>());
  int falliti = 0;
  if (modo == QLatin1String("attivita")) {
    frmInputData f;
    f.Form_Load();
    f.DTPicker1->setDate(QDate(2026, 3, 12));
    f.LeggiCodice(QStringLiteral("p2025000010003"));
    f.LeggiCodice(QStringLiteral("000017"));
    for (int i = 0; i < quanti; ++i) {
      f.LeggiCodice(QStringLiteral("a001"));
      f.OptOre_Click(1);
      const int prima = db->Failures();
      f.cmdSave_Click();
      if (db->Failures() != prima) ++falliti;
    }
  } else if (modo == QLatin1String("modelli")) {
    gTAnag = 1;
    for (int i = 0; i < quanti; ++i) {
      gCProject = 0;
      CaricaDatiModello(0);
      frmModelli f;
      f.Azione = 2;
      f.CProject = 0;
      f.Form_Load();
      f.DTProject->setDate(QDate(2025, 6, 1));
      SetCBValue(f.CBCAnag, 1, 0);
      SetCBValue(f.CBTipoPrj, 1, 0);
      f.TBDProject->setText(QStringLiteral("Modello %1 %2").arg(tag).arg(i));
      const int prima = db->Failures();
      if (!f.Salva() || db->Failures() != prima) ++falliti;
    }
  } else {
    return 101;
  }
  if (!messaggi->asked.empty()) falliti += 1000;
  SetMessageService(nullptr);
  RilasciaRiferimenti();
  gOcxEventS.reset();
  return std::min(falliti, 99);
}
