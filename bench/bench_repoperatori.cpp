// The operators report on the large database: the screen opened (the years
// and the months that have activities), and the print of the busiest month,
// synthetic and analytic, read and grid to a PDF; each beside a bare read of
// the same statements through the engine's own interface.
//
//   bench_repoperatori [folder]     (default /tmp/prestkt-bench; PRESTKT_BENCH_PG for a server)
#include <QApplication>
#include <QComboBox>
#include <cstdio>

#include "BenchCommon.h"
#include "ModPrestKT.h"
#include "Procedure.h"
#include "frmRepOperatori.h"

using namespace prestkt;

int main(int argc, char** argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  QApplication app(argc, argv);
  QString cartella;
  DatabasePtr db = bench::ApriDbGrande(argc, argv, &cartella);
  if (!db) return 1;
  const auto nudo = bench::Nudo::Di(*db);
  gDB = db;
  gPathDB = cartella + QLatin1Char('/');

  // The busiest month of the activities.
  const auto mesi = db->Select(Sql("SELECT Year(DtIni) AS Anno, Month(DtIni) AS Mese, Count(*) AS Quante "
                                   "FROM ActivitiesProd GROUP BY Year(DtIni), Month(DtIni) ORDER BY Count(*) DESC"));
  if (mesi.rows.empty()) return 1;
  const int anno = mesi.rows[0][0].toInt(), mese = mesi.rows[0][1].toInt();
  std::fprintf(stderr, "busiest month %02d/%d: %lld activities\n", mese, anno, mesi.rows[0][2].toLongLong());

  const QString operatori = db->Adapt(frmRepOperatori::SqlOperatori());
  const QString anni = db->Adapt(frmRepOperatori::SqlAnni());
  bench::Caso(
      "frmRepOperatori Form_Load (operators, years, months of the latest)",
      [] {
        frmRepOperatori f;
        f.Form_Load();
        return static_cast<qint64>(f.CBMese->count());
      },
      [&] {
        nudo->Leggi(operatori);
        qint64 ultimo = 0;
        for (const Row& r : db->Select(Sql(anni)).rows) ultimo = r[0].toLongLong();
        return nudo->Leggi(db->Adapt(frmRepOperatori::SqlMesi(QString::number(ultimo))));
      },
      "months");

  frmRepOperatori f;
  f.Form_Load();
  f.CBAnno->setCurrentIndex(f.CBAnno->findText(QString::number(anno)));
  f.CBMese->setCurrentIndex(f.CBMese->findData(mese));
  f.PrnVornX1 = std::make_shared<StampantePdf>(cartella + QStringLiteral("/repoperatori.pdf"));
  const QString sintetico = db->Adapt(frmRepOperatori::SqlSintetico(f.DataIni, f.DataFine));
  const QString analitico = db->Adapt(frmRepOperatori::SqlAnalitico(f.DataIni, f.DataFine));
  bench::Caso(
      "RepSintetico, busiest month (read + grid to PDF)",
      [&] {
        f.RepSintetico();
        return static_cast<qint64>(f.RigheLette);
      },
      [&] { return nudo->Leggi(sintetico); });
  bench::Caso(
      "RepAnalitico, busiest month (read + grid to PDF)",
      [&] {
        f.RepAnalitico();
        return static_cast<qint64>(f.RigheLette);
      },
      [&] { return nudo->Leggi(analitico); });
  gDB.reset();
  return 0;
}
