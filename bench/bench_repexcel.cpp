// The report to a spreadsheet on the large database: a year of activities and
// deliveries made into the table and written to an .xlsx, beside a bare read
// of the same rows.
//
//   bench_repexcel [folder]     (default /tmp/prestkt-bench; PRESTKT_BENCH_PG for a server)
#include <QApplication>
#include <QDir>
#include <cstdio>

#include "BenchCommon.h"
#include "ModExcel.h"
#include "ModPrestKT.h"
#include "Procedure.h"
#include "frmRepExcel.h"

using namespace prestkt;

int main(int argc, char** argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  QApplication app(argc, argv);
  QString cartella;
  DatabasePtr db = bench::ApriDbGrande(argc, argv, &cartella);
  if (!db) return 1;
  const auto nudo = bench::Nudo::Di(*db);
  gDB = db;
  gPathDB = QDir::toNativeSeparators(cartella) + QDir::separator();
  bench::SenzaMessaggi();  // the export's closing message would wait for a user

  // The busiest full year of the activities.
  const int anno = db->Select(Sql("SELECT Year(DtIni), Count(*) FROM ActivitiesProd GROUP BY Year(DtIni) ORDER BY 2 DESC"))
                       .rows.at(0)
                       .at(0)
                       .toInt();
  const QDate dal(anno, 1, 1), al(anno, 12, 31);
  const QString file = QDir(cartella).filePath(QStringLiteral("report.xlsx"));
  const QString attivita = db->Adapt(
      QStringLiteral("SELECT ActivitiesProd.CAttivita, ActivitiesProd.CProject, Projects.DProject, ActivitiesProd.CDisp, "
                     "ActivitiesProd.DtIni, ActivitiesProd.DtEnd, ActivitiesProd.CUtente, ActivitiesProd.CPrestazione, "
                     "ActivitiesProd.DtRealIni, ActivitiesProd.DtRealEnd, ActivitiesProd.Stato, ActivitiesProd.TDocRif, "
                     "ActivitiesProd.NDocRif, ActivitiesProd.CostoH, Projects.TAnag, Projects.CAnag, Projects.CPrjTipo, "
                     "ProjectsDisp.CPrjDispTipo FROM (ActivitiesProd INNER JOIN Projects ON ActivitiesProd.CProject = "
                     "Projects.CProject) INNER JOIN ProjectsDisp ON (ActivitiesProd.CDisp = ProjectsDisp.CDisp) AND "
                     "(ActivitiesProd.CProject = ProjectsDisp.CProject) WHERE ActivitiesProd.DtIni Between ") +
      DataSql(QDateTime(dal, QTime(0, 0))) + QStringLiteral(" AND ") + DataSql(QDateTime(al, QTime(0, 0))) +
      QStringLiteral(" AND Projects.TAnag=1 ORDER BY CAttivita "));
  qint64 righe = 0;
  // The table alone, then the whole export with the sheet.
  bench::Caso(
      "frmRepExcel, a year's table", [&] { return static_cast<qint64>(frmRepExcel::CreaTabella(dal, al, 0, 1, 0)->RecordCount()); },
      [&] { return nudo->Leggi(attivita); });
  bench::Caso(
      "frmRepExcel, a year to .xlsx",
      [&] {
        RecordsetPtr t = frmRepExcel::CreaTabella(dal, al, 0, 1, 0);
        ADOtoXLS(file, t);
        righe = t->RecordCount();
        return righe;
      },
      [&] { return nudo->Leggi(attivita); });
  RilasciaRiferimenti();
  return 0;
}
