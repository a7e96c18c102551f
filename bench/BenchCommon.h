#pragma once
// What the benchmarks share: the large generated database, opened or made
// once in a folder, the bare query through the engine's own interface, and
// the timing of one case beside it.
#include <QDateTime>
#include <QString>
#include <functional>
#include <memory>
#include <utility>

#include "Database.h"

namespace prestkt::bench {

inline constexpr int kModelli = 100000;
inline constexpr int kAttivita = 1000000;

// The database of kModelli models and kAttivita activities in the folder
// (argv[1] or /tmp/prestkt-bench), made when missing or incomplete; null on
// failure. With PRESTKT_BENCH_PG (a libpq connection string) the database is
// the schema prestkt_bench of that server, and the folder stands for it.
DatabasePtr ApriDbGrande(int argc, char** argv, QString* cartella);
// A database of the engine of the run: a file of the folder, or a schema of
// the server named by PRESTKT_BENCH_PG; made empty when nuovo.
DatabasePtr ApriDb(const QString& cartella, const QString& nome, bool nuovo);

// The bare side of a case: the same statements through the engine's own
// interface (sqlite3, libpq), with nothing of ours between.
class Nudo {
 public:
  static std::unique_ptr<Nudo> Di(Database& db);
  virtual ~Nudo() = default;
  // Steps through the rows of a statement reading every column; returns the rows.
  virtual qint64 Leggi(const QString& sql) = 0;
  virtual qint64 Primo(const QString& sql) = 0;  // the first column of the first row
  // The bytes of the rows' values as the engine hands them over: a text its
  // bytes, a number 8, a Null nothing.
  virtual qint64 Byte(const QString& sql) = 0;
  virtual bool Esegui(const QString& sql) = 0;
};
// The register's query over a period, in the system's SQL as the loader
// writes it (each engine reads it through Database::Adapt).
QString TestoRegistro(const QDateTime& dal, const QDateTime& al);
// The first and the last day of the models' dates, at midnight.
std::pair<QDateTime, QDateTime> PeriodoModelli(Database& db);

// Messages answer at once with their default, so that nothing waits for a user.
void SenzaMessaggi();

// Runs both sides five times, alternating, and prints the medians as a JSON line.
// The component's number is the rows it read, compared with the bare read's,
// or with cosa another figure it gave, printed under that name.
void Caso(const char* nome, const std::function<qint64()>& componente, const std::function<qint64()>& nudo,
          const char* cosa = "rows");

}  // namespace prestkt::bench
