#pragma once
// What the benchmarks share: the large generated database, opened or made
// once in a folder, the bare query through the engine's own interface, and
// the timing of one case beside it.
#include <sqlite3.h>
#include <QString>
#include <functional>

#include "Database.h"

namespace prestkt::bench {

inline constexpr int kModelli = 100000;
inline constexpr int kAttivita = 1000000;

// The database of kModelli models and kAttivita activities in the folder
// (argv[1] or /tmp/prestkt-bench), made when missing or incomplete; null on failure.
DatabasePtr ApriDbGrande(int argc, char** argv, QString* cartella);
sqlite3* Handle(Database& db);
// Steps through the rows of a statement reading every column; returns the rows.
qint64 Nudo(sqlite3* h, const QString& sql);
// Runs both sides five times, alternating, and prints the medians as a JSON line.
// The component's number is the rows it read, compared with the bare read's,
// or with cosa another figure it gave, printed under that name.
void Caso(const char* nome, const std::function<qint64()>& componente, const std::function<qint64()>& nudo,
          const char* cosa = "rows");

}  // namespace prestkt::bench
