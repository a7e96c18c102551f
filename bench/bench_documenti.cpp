// The host documents' helpers on the large database: the recordsets of a
// document's line screen (every open disposition), and the time of the
// dispositions of 1 000 models, each beside the same statements run bare.
//
//   bench_documenti [folder]     (default /tmp/prestkt-bench; PRESTKT_BENCH_PG for a server)
#include <QCoreApplication>
#include <QDir>
#include <cstdio>

#include "BenchCommon.h"
#include "ModDoc.h"
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

  // The statements IniTab4Doc runs, as the engine reads them.
  const QStringList documento = {
      db->Adapt(SqlDisposizioniAperte()),
      db->Adapt(QStringLiteral("SELECT * FROM ProjectsDocDett WHERE TipoDoc=12 AND NDoc=1")),
      db->Adapt(QStringLiteral("SELECT * FROM ProjectsDocDettPrest WHERE TipoDoc=12 AND NDoc=1"))};
  bench::Caso(
      "IniTab4Doc, every open disposition",
      [] {
        RecordsetPtr d, fd, fdd;
        int causale = 0;
        IniTab4Doc(d, fd, fdd, causale, 12, 1, false);
        return d ? static_cast<qint64>(d->RecordCount()) : -1;
      },
      [&] {
        qint64 righe = 0;
        for (int i = 0; i < documento.size(); ++i) righe += i == 0 ? nudo->Leggi(documento[i]) : (nudo->Leggi(documento[i]), 0);
        return righe;
      });

  // 1 000 models with recorded time, and the statements PreparaDati runs for them.
  QList<int> modelli;
  for (const Row& r : db->Select(Sql("SELECT DISTINCT CProject FROM ActivitiesProd ORDER BY CProject LIMIT 1000")).rows)
    modelli << r[0].toInt();
  const auto tempi = [&](int codice) { return db->Adapt(SqlTempiDisposizioni(QString::number(codice))); };
  const auto dati = [&](const QString& coppia) { return db->Adapt(SqlDatiDisposizione(coppia)); };
  // The pairs with time, known before: the bare side runs the same statements without our layer.
  std::vector<std::pair<int, int>> coppie;
  for (int codice : modelli)
    for (const Row& r : db->Select(Sql(QStringLiteral("SELECT DISTINCT CDisp FROM ActivitiesProd WHERE CProject=%1 "
                                                      "ORDER BY CDisp")
                                           .arg(codice)))
                            .rows)
      coppie.emplace_back(codice, r[0].toInt());
  bench::Caso(
      "PreparaDati, 1 000 models",
      [&] {
        RecordsetPtr rs = PreparaDati(modelli);
        return rs ? static_cast<qint64>(rs->RecordCount()) : -1;
      },
      [&] {
        nudo->Leggi(tempi(0));
        for (int codice : modelli) nudo->Leggi(tempi(codice));
        nudo->Leggi(dati(QStringLiteral("Projects.CProject=-1 AND ProjectsDisp.CDisp=1; ")));
        qint64 righe = 0;
        for (const auto& [p, d] : coppie)
          righe += nudo->Leggi(dati(QStringLiteral("Projects.CProject=%1 AND ProjectsDisp.CDisp=%2; ").arg(p).arg(d)));
        return righe;
      });
  RilasciaRiferimenti();
  return 0;
}
