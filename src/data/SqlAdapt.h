#pragma once
// The system writes its SQL in the dialect of its first database: [bracketed]
// names, "double-quoted" texts, #mm/dd/yyyy# dates, Table!Field, DELETE *,
// Date(), Like with * and ?. These routines turn such a text into the
// engine's and tell the types of computed columns.
#include <QString>
#include <QStringList>

namespace prestkt {

class Database;
struct ColumnDef;
enum class Engine;

QString AdattaSql(const QString& sql, const Database& db);
// The engine's type of a column of the schema.
QString TipoColonna(const ColumnDef& c, Engine engine);

// The expressions of the select list of a SELECT, split at its top-level commas.
QStringList SelectExpressions(const QString& sql);
// The database type of a computed column (0 when it can't be told from the text).
int DaoTypeOfExpression(const QString& expression, int* size);

}  // namespace prestkt
