#include "BenchCommon.h"

#include "Messages.h"

#include <libpq-fe.h>
#include <sqlite3.h>

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

namespace {

class NudoSqlite final : public Nudo {
 public:
  explicit NudoSqlite(sqlite3* h) : h_(h) {}
  qint64 Leggi(const QString& sql) override {
    const QByteArray testo = sql.toUtf8();
    sqlite3_stmt* st = nullptr;
    if (sqlite3_prepare_v2(h_, testo.constData(), testo.size(), &st, nullptr) != SQLITE_OK) {
      std::fprintf(stderr, "bare query failed: %s\n", sqlite3_errmsg(h_));
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
  qint64 Byte(const QString& sql) override {
    const QByteArray testo = sql.toUtf8();
    sqlite3_stmt* st = nullptr;
    if (sqlite3_prepare_v2(h_, testo.constData(), testo.size(), &st, nullptr) != SQLITE_OK) return -1;
    const int n = sqlite3_column_count(st);
    qint64 byte = 0;
    while (sqlite3_step(st) == SQLITE_ROW)
      for (int i = 0; i < n; ++i) {
        const int tipo = sqlite3_column_type(st, i);
        if (tipo == SQLITE_INTEGER || tipo == SQLITE_FLOAT) byte += 8;
        else if (tipo != SQLITE_NULL) byte += sqlite3_column_bytes(st, i);
      }
    sqlite3_finalize(st);
    return byte;
  }
  qint64 Primo(const QString& sql) override {
    sqlite3_stmt* st = nullptr;
    qint64 valore = 0;
    if (sqlite3_prepare_v2(h_, sql.toUtf8().constData(), -1, &st, nullptr) == SQLITE_OK &&
        sqlite3_step(st) == SQLITE_ROW)
      valore = sqlite3_column_int64(st, 0);
    sqlite3_finalize(st);
    return valore;
  }
  bool Esegui(const QString& sql) override {
    char* errore = nullptr;
    if (sqlite3_exec(h_, sql.toUtf8().constData(), nullptr, nullptr, &errore) == SQLITE_OK) return true;
    std::fprintf(stderr, "%s\n", errore);
    sqlite3_free(errore);
    return false;
  }

 private:
  sqlite3* h_;
};

// Its own connection to the server, as any program of the server's would have.
class NudoPostgres final : public Nudo {
 public:
  explicit NudoPostgres(const QString& conninfo) : c_(PQconnectdb(conninfo.toUtf8().constData())) {
    if (PQstatus(c_) != CONNECTION_OK) std::fprintf(stderr, "bare connection: %s\n", PQerrorMessage(c_));
  }
  ~NudoPostgres() override { PQfinish(c_); }
  qint64 Leggi(const QString& sql) override {
    PGresult* r = PQexec(c_, sql.toUtf8().constData());
    if (PQresultStatus(r) != PGRES_TUPLES_OK) {
      std::fprintf(stderr, "bare query failed: %s\n", PQresultErrorMessage(r));
      PQclear(r);
      return -1;
    }
    const int righe = PQntuples(r), n = PQnfields(r);
    volatile double somma = 0;  // keeps the reads
    for (int i = 0; i < righe; ++i)
      for (int j = 0; j < n; ++j)
        if (!PQgetisnull(r, i, j)) somma = somma + PQgetlength(r, i, j) + (PQgetvalue(r, i, j)[0] == '1' ? 1 : 0);
    PQclear(r);
    return righe;
  }
  qint64 Byte(const QString& sql) override {
    PGresult* r = PQexec(c_, sql.toUtf8().constData());
    qint64 byte = 0;
    if (PQresultStatus(r) == PGRES_TUPLES_OK)
      for (int i = 0; i < PQntuples(r); ++i)
        for (int j = 0; j < PQnfields(r); ++j) {
          if (PQgetisnull(r, i, j)) continue;
          // bool, int8, int2, int4, float4, float8, numeric: numbers
          switch (PQftype(r, j)) {
            case 16: case 20: case 21: case 23: case 700: case 701: case 1700: byte += 8; break;
            default: byte += PQgetlength(r, i, j);
          }
        }
    PQclear(r);
    return byte;
  }
  qint64 Primo(const QString& sql) override {
    PGresult* r = PQexec(c_, sql.toUtf8().constData());
    const qint64 v = PQresultStatus(r) == PGRES_TUPLES_OK && PQntuples(r) > 0 ? QByteArray(PQgetvalue(r, 0, 0)).toLongLong() : 0;
    PQclear(r);
    return v;
  }
  bool Esegui(const QString& sql) override {
    PGresult* r = PQexec(c_, sql.toUtf8().constData());
    const bool ok = PQresultStatus(r) == PGRES_COMMAND_OK || PQresultStatus(r) == PGRES_TUPLES_OK;
    if (!ok) std::fprintf(stderr, "%s\n", PQresultErrorMessage(r));
    PQclear(r);
    return ok;
  }

 private:
  PGconn* c_;
};

}  // namespace

std::unique_ptr<Nudo> Nudo::Di(Database& db) {
  if (db.engine() == Engine::PostgreSQL) return std::make_unique<NudoPostgres>(db.Name());
  const QVariant handle = db.Connection().driver()->handle();
  return std::make_unique<NudoSqlite>(*static_cast<sqlite3* const*>(handle.data()));
}

std::pair<QDateTime, QDateTime> PeriodoModelli(Database& db) {
  const auto periodo = db.Select(Sql("SELECT Min(DtIni), Max(DtIni) FROM Projects")).rows.front();
  return {QDateTime(CDate(periodo[0]).date(), QTime(0, 0)), QDateTime(CDate(periodo[1]).date(), QTime(0, 0))};
}

// Runs both sides kGiri times, alternating, and prints the medians.
QString TestoRegistro(const QDateTime& dal, const QDateTime& al) {
  return QStringLiteral(
             "SELECT Projects.*, Anagrafica.RagSoc1, ProjectsTipo.DPrjTipo "
             "FROM (Projects INNER JOIN Anagrafica ON (Projects.CAnag = Anagrafica.CAnag) AND "
             "(Projects.TAnag = Anagrafica.TAnag)) LEFT JOIN ProjectsTipo ON Projects.CPrjTipo = "
             "ProjectsTipo.CPrjTipo WHERE (((Projects.DtIni) Between #") +
         dal.toString(QStringLiteral("MM/dd/yyyy")) + QStringLiteral("# And #") +
         al.toString(QStringLiteral("MM/dd/yyyy")) + QStringLiteral("#)) ORDER BY Projects.DtIni; ");
}

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

DatabasePtr ApriDb(const QString& cartella, const QString& nome, bool nuovo) {
  const QString server = qEnvironmentVariable("PRESTKT_BENCH_PG");
  if (server.isEmpty()) {
    const QString file = QDir(cartella).filePath(nome + QStringLiteral(".db"));
    if (nuovo)
      for (const char* ext : {"", "-wal", "-shm"}) QFile::remove(file + QString::fromLatin1(ext));
    return Database::OpenSQLite(file);
  }
  const QString schema = QStringLiteral("bench_") + nome;
  {
    auto amministra = Database::OpenPostgreSQL(server, cartella);
    if (nuovo) amministra->Execute(Sql(QStringLiteral("DROP SCHEMA IF EXISTS %1 CASCADE").arg(schema)));
    amministra->Execute(Sql(QStringLiteral("CREATE SCHEMA IF NOT EXISTS %1").arg(schema)));
  }
  return Database::OpenPostgreSQL(server + QStringLiteral(" options='-c search_path=%1,public'").arg(schema), cartella);
}

DatabasePtr ApriDbGrande(int argc, char** argv, QString* cartellaOut) {
  const QString cartella =
      argc > 1 ? QString::fromLocal8Bit(argv[1]) : QStringLiteral("/tmp/prestkt-bench");
  if (!QDir().mkpath(cartella)) {
    std::fprintf(stderr, "cannot create %s\n", qPrintable(cartella));
    return {};
  }
  const QString nome = QStringLiteral("prestkt_bench");
  DatabasePtr db;
  try {
    db = ApriDb(cartella, nome, false);
    if (!Completo(*db)) {
      db.reset();
      db = ApriDb(cartella, nome, true);
      QElapsedTimer t;
      t.start();
      CreaDatiGrandi(*db, kModelli, kAttivita, QDate::currentDate());
      std::fprintf(stderr, "created %s: %d models, %d activities in %.1f s\n", qPrintable(db->Name()), kModelli,
                   kAttivita, t.elapsed() / 1000.0);
      db->Execute(Sql("ANALYZE"));
    } else {
      std::fprintf(stderr, "reusing %s\n", qPrintable(db->Name()));
    }
  } catch (const VbError& e) {
    std::fprintf(stderr, "database: %s\n", qPrintable(e.Description()));
    return {};
  }
  *cartellaOut = cartella;
  return db;
}

namespace {
class Muto : public MessageService {
 public:
  int MsgBox(const QString&, int, const QString&) override { return vbOK; }
  QString InputBox(const QString&, const QString&, const QString&) override { return {}; }
  QString OpenFileName(const QString&, const QString&, const QString&) override { return {}; }
  QString SaveFileName(const QString&, const QString&, const QString&) override { return {}; }
};
}  // namespace

void SenzaMessaggi() { SetMessageService(std::make_shared<Muto>()); }

}  // namespace prestkt::bench
