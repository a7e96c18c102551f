#include "BenchCommon.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QSqlDriver>
#include <algorithm>
#include <cstdio>
#include <vector>

#include "DemoData.h"

namespace prestkt::bench {

namespace {
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

double Mediana(std::vector<double> v) {
  std::sort(v.begin(), v.end());
  return v[v.size() / 2];
}

}  // namespace

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

// Runs both sides kGiri times, alternating, and prints the medians.
void Caso(const char* nome, const std::function<qint64()>& componente, const std::function<qint64()>& nudo,
          const char* cosa) {
  std::vector<double> ms, bareMs;
  qint64 valore = 0, righeNude = 0;
  for (int i = 0; i < kGiri; ++i) {
    QElapsedTimer t;
    t.start();
    valore = componente();
    ms.push_back(t.nsecsElapsed() / 1e6);
    t.restart();
    righeNude = nudo();
    bareMs.push_back(t.nsecsElapsed() / 1e6);
  }
  const bool righe = qstrcmp(cosa, "rows") == 0;
  if (righe && valore != righeNude)
    std::fprintf(stderr, "%s: the component read %lld rows, the bare query %lld\n", nome,
                 static_cast<long long>(valore), static_cast<long long>(righeNude));
  const double m = Mediana(ms), b = Mediana(bareMs);
  if (righe)
    std::printf("{\"case\":\"%s\",\"rows\":%lld,\"ms\":%.1f,\"bare_ms\":%.1f,\"ratio\":%.2f}\n", nome,
                static_cast<long long>(valore), m, b, b > 0 ? m / b : 0.0);
  else
    std::printf("{\"case\":\"%s\",\"%s\":%lld,\"bare_rows\":%lld,\"ms\":%.1f,\"bare_ms\":%.1f,\"ratio\":%.2f}\n",
                nome, cosa, static_cast<long long>(valore), static_cast<long long>(righeNude), m, b,
                b > 0 ? m / b : 0.0);
  std::fflush(stdout);
}

DatabasePtr ApriDbGrande(int argc, char** argv, QString* cartellaOut) {
  const QString cartella =
      argc > 1 ? QString::fromLocal8Bit(argv[1]) : QStringLiteral("/tmp/prestkt-bench");
  if (!QDir().mkpath(cartella)) {
    std::fprintf(stderr, "cannot create %s\n", qPrintable(cartella));
    return {};
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
    return {};
  }

  const QVariant handle = db->Connection().driver()->handle();
  sqlite3* h = *static_cast<sqlite3* const*>(handle.data());

  *cartellaOut = cartella;
  return db;
}

sqlite3* Handle(Database& db) {
  const QVariant handle = db.Connection().driver()->handle();
  return *static_cast<sqlite3* const*>(handle.data());
}

}  // namespace prestkt::bench
