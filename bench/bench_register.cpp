// Loading the register and one model's working data from a large database,
// beside a bare query of the same rows through the engine's own interface.
//
//   bench_register [folder]     (default /tmp/prestkt-bench)
//
// The database (100 000 models, 1 000 000 activities) is made in the folder on
// the first run and reused while it is complete. One JSON line per case.
#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QSqlDriver>
#include <algorithm>
#include <cstdio>
#include <functional>
#include <tuple>
#include <vector>

#include "Database.h"
#include "BenchCommon.h"
#include "ModPrestKT.h"
#include "Procedure.h"

using namespace prestkt;

int main(int argc, char** argv) {
  QCoreApplication app(argc, argv);
  QString cartella;
  DatabasePtr db = bench::ApriDbGrande(argc, argv, &cartella);
  if (!db) return 1;
  const auto nudo = bench::Nudo::Di(*db);

  gDB = db;
  gPathDB = QDir::toNativeSeparators(cartella) + QDir::separator();
  gStatus = -1;
  // The period of the data, whatever day it was made.
  std::tie(gDtIni, gDTEnd) = bench::PeriodoModelli(*db);

  // The register: the text the loader runs, over the whole period, all states.
  const QString registro = db->Adapt(bench::TestoRegistro(gDtIni, gDTEnd));
  bench::Caso(
      "CaricaModelli",
      [] {
        CaricaModelli(gDtIni, gDTEnd, gStatus);
        return gRcsProjects ? static_cast<qint64>(gRcsProjects->RecordCount()) : -1;
      },
      [&] { return nudo->Leggi(registro); });
  gRcsProjects.reset();

  // One model's working data: the model with the most activities.
  const auto grande =
      db->Select(Sql("SELECT CProject, Count(*) AS N FROM ActivitiesProd GROUP BY CProject "
                     "ORDER BY N DESC, CProject LIMIT 1"))
          .rows.front();
  gCProject = grande[0].toInt();
  const QString n = QString::number(gCProject);
  const QString attivita = db->Adapt(
      QStringLiteral("SELECT CAttivita, CProject, CDisp, CUtente, CPrestazione, "
                     "Format([ActivitiesProd]![DtIni],\"dd/mm/yyyy\") AS DataIni, "
                     "Format([ActivitiesProd]![DtIni],\"hh:nn\") AS OraIni, DtIni, "
                     "Format([ActivitiesProd]![DtEnd],\"dd/mm/yyyy\") AS DataEnd, "
                     "Format([ActivitiesProd]![DtEnd],\"hh:nn\") AS OraEnd, DtEnd, "
                     "DtRealIni, DtRealEnd, Stato, TDocRif, NDocRif, CostoH, Annot1, Annot2 "
                     "FROM ActivitiesProd WHERE CProject=") +
      n);
  const QString disp = db->Adapt(QStringLiteral("SELECT * FROM ProjectsDisp WHERE CProject=") + n);
  const QString dispDett =
      db->Adapt(QStringLiteral("SELECT * FROM ProjectsDispDett WHERE CProject=") + n);
  bench::Caso(
      "CaricaDatiModello",
      [] {
        CaricaDatiModello(gCProject);
        return gRcsAct ? static_cast<qint64>(gRcsAct->RecordCount()) : -1;
      },
      [&] {
        nudo->Leggi(disp);
        nudo->Leggi(dispDett);
        return nudo->Leggi(attivita);
      });
  gDB.reset();
  return 0;
}
