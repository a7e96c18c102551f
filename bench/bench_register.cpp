// Loading the register and one model's working data from a large database,
// beside a bare query of the same rows through the engine's own interface.
//
//   bench_register [folder]     (default /tmp/prestkt-bench)
//
// The database (100 000 models, 1 000 000 activities) is made in the folder on
// the first run and reused while it is complete. One JSON line per case.
#include <sqlite3.h>
#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QSqlDriver>
#include <algorithm>
#include <cstdio>
#include <functional>
#include <vector>

#include "Database.h"
#include "DemoData.h"
#include "ModPrestKT.h"
#include "Procedure.h"

using namespace prestkt;

namespace {

constexpr int kModelli = 100000;
constexpr int kAttivita = 1000000;
constexpr int kGiri = 5;

int Conta(Database& db, const QString& sql) {
  try {
    const auto r = db.Select(Sql(sql));
    return r.rows.empty() ? 0 : r.rows.front().front().toInt();
  } catch (const VbError&) {
    return -1;
  }
}

bool Completo(Database& db) {
  return Conta(db, QStringLiteral("SELECT Count(*) FROM Projects")) == kModelli &&
         Conta(db, QStringLiteral("SELECT Count(*) FROM ActivitiesProd")) == kAttivita;
}

// Steps through the rows of a statement on the connection's own handle,
// reading every column as its stored type; returns the rows.
qint64 Nudo(sqlite3* h, const QString& sql) {
  const QByteArray testo = sql.toUtf8();
  sqlite3_stmt* st = nullptr;
  if (sqlite3_prepare_v2(h, testo.constData(), testo.size(), &st, nullptr) != SQLITE_OK) {
    std::fprintf(stderr, "bare query failed: %s\n", sqlite3_errmsg(h));
    return -1;
  }
  const int n = sqlite3_column_count(st);
  qint64 righe = 0;
  volatile double somma = 0;  // keeps the reads
  while (sqlite3_step(st) == SQLITE_ROW) {
    for (int i = 0; i < n; ++i) {
      switch (sqlite3_column_type(st, i)) {
        case SQLITE_INTEGER:
          somma = somma + static_cast<double>(sqlite3_column_int64(st, i));
          break;
        case SQLITE_FLOAT:
          somma = somma + sqlite3_column_double(st, i);
          break;
        case SQLITE_TEXT:
          somma = somma + sqlite3_column_bytes(st, i) + (sqlite3_column_text(st, i) ? 0 : 1);
          break;
        default:
          break;
      }
    }
    ++righe;
  }
  sqlite3_finalize(st);
  return righe;
}

double Mediana(std::vector<double> v) {
  std::sort(v.begin(), v.end());
  return v[v.size() / 2];
}

// Runs both sides kGiri times, alternating, and prints the medians.
void Caso(const char* nome, const std::function<qint64()>& componente,
          const std::function<qint64()>& nudo) {
  std::vector<double> ms, bareMs;
  qint64 righe = 0, righeNude = 0;
  for (int i = 0; i < kGiri; ++i) {
    QElapsedTimer t;
    t.start();
    righe = componente();
    ms.push_back(t.nsecsElapsed() / 1e6);
    t.restart();
    righeNude = nudo();
    bareMs.push_back(t.nsecsElapsed() / 1e6);
  }
  if (righe != righeNude)
    std::fprintf(stderr, "%s: the component read %lld rows, the bare query %lld\n", nome,
                 static_cast<long long>(righe), static_cast<long long>(righeNude));
  const double m = Mediana(ms), b = Mediana(bareMs);
  std::printf("{\"case\":\"%s\",\"rows\":%lld,\"ms\":%.1f,\"bare_ms\":%.1f,\"ratio\":%.2f}\n", nome,
              static_cast<long long>(righe), m, b, b > 0 ? m / b : 0.0);
  std::fflush(stdout);
}

}  // namespace

int main(int argc, char** argv) {
  QCoreApplication app(argc, argv);
  const QString cartella =
      argc > 1 ? QString::fromLocal8Bit(argv[1]) : QStringLiteral("/tmp/prestkt-bench");
  if (!QDir().mkpath(cartella)) {
    std::fprintf(stderr, "cannot create %s\n", qPrintable(cartella));
    return 1;
  }
  const QString file = QDir(cartella).filePath(QStringLiteral("prestkt-bench.db"));

  DatabasePtr db;
  try {
    db = Database::OpenSQLite(file);
    if (!Completo(*db)) {
      db.reset();
      for (const char* ext : {"", "-wal", "-shm"}) QFile::remove(file + QString::fromLatin1(ext));
      db = Database::OpenSQLite(file);
      QElapsedTimer t;
      t.start();
      CreaDatiGrandi(*db, kModelli, kAttivita, QDate::currentDate());
      std::fprintf(stderr, "created %s: %d models, %d activities in %.1f s\n", qPrintable(file),
                   kModelli, kAttivita, t.elapsed() / 1000.0);
      db->Execute(Sql("ANALYZE"));
    } else {
      std::fprintf(stderr, "reusing %s\n", qPrintable(file));
    }
  } catch (const VbError& e) {
    std::fprintf(stderr, "database: %s\n", qPrintable(e.Description()));
    return 1;
  }

  const QVariant handle = db->Connection().driver()->handle();
  sqlite3* h = *static_cast<sqlite3* const*>(handle.data());

  gDB = db;
  gPathDB = QDir::toNativeSeparators(cartella) + QDir::separator();
  gStatus = -1;
  // The period of the data, whatever day it was made.
  const auto periodo = db->Select(Sql("SELECT Min(DtIni), Max(DtIni) FROM Projects")).rows.front();
  gDtIni = QDateTime(CDate(periodo[0]).date(), QTime(0, 0));
  gDTEnd = QDateTime(CDate(periodo[1]).date(), QTime(0, 0));

  // The register: the text the loader runs, over the whole period, all states.
  const QString registro = db->Adapt(
      QStringLiteral(
          "SELECT Projects.*, Anagrafica.RagSoc1, ProjectsTipo.DPrjTipo "
          "FROM (Projects INNER JOIN Anagrafica ON (Projects.CAnag = Anagrafica.CAnag) AND "
          "(Projects.TAnag = Anagrafica.TAnag)) LEFT JOIN ProjectsTipo ON Projects.CPrjTipo = "
          "ProjectsTipo.CPrjTipo WHERE (((Projects.DtIni) Between ") +
      DataSql(gDtIni) + QStringLiteral(" And ") + DataSql(gDTEnd) +
      QStringLiteral(")) ORDER BY Projects.DtIni; "));
  Caso(
      "CaricaModelli",
      [] {
        CaricaModelli(gDtIni, gDTEnd, gStatus);
        return gRcsProjects ? static_cast<qint64>(gRcsProjects->RecordCount()) : -1;
      },
      [&] { return Nudo(h, registro); });
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
  Caso(
      "CaricaDatiModello",
      [] {
        CaricaDatiModello(gCProject);
        return gRcsAct ? static_cast<qint64>(gRcsAct->RecordCount()) : -1;
      },
      [&] {
        Nudo(h, disp);
        Nudo(h, dispDett);
        return Nudo(h, attivita);
      });
  gDB.reset();
  return 0;
}
