#pragma once
// The database the host hands to the component. It wraps the Qt connection,
// knows its engine, the folder that stands for the database's own folder, and
// the keys of the schema; every statement of the component goes through it, so
// that this one place adapts the system's SQL text to the engine.
#include <QHash>
#include <QSqlDatabase>
#include <QString>
#include <QStringList>
#include <QVariantList>
#include <functional>
#include <memory>

#include "Recordset.h"

namespace prestkt {

// Field types of the database, numbered as the old data access objects number them.
enum DaoType {
  dbBoolean = 1,
  dbByte = 2,
  dbInteger = 3,
  dbLong = 4,
  dbCurrency = 5,
  dbSingle = 6,
  dbDouble = 7,
  dbDate = 8,
  dbText = 10,
  dbMemo = 12,
  dbChar = 18,
  dbNumeric = 19,
  dbDecimal = 20,
};

enum RecordsetKind { dbOpenDynaset = 2, dbOpenSnapshot = 4 };
inline constexpr int dbFailOnError = 128;

// SQL text with the values bound to its "?" marks. A text the user typed goes
// in as a bound value (TestoSql), never into the text itself.
class Sql {
 public:
  Sql() = default;
  Sql(const QString& text) : text_(text) {}  // NOLINT: texts join freely with Sql
  Sql(const char* text) : text_(QString::fromUtf8(text)) {}  // NOLINT
  static Sql Param(const QVariant& value);

  const QString& Text() const { return text_; }
  const QVariantList& Params() const { return params_; }
  bool IsEmpty() const { return text_.isEmpty(); }
  QString Literal() const;  // the text with its values written in, for logs and tests

  Sql& operator+=(const Sql& other);

 private:
  QString text_;
  QVariantList params_;
};
Sql operator+(Sql a, const Sql& b);

enum class Engine { SQLite, PostgreSQL };

class Motore;
class RaccoltaRighe;

class Database {
 public:
  // Opens (and creates when missing) a SQLite database file.
  static std::shared_ptr<Database> OpenSQLite(const QString& file);
  // Opens a database on a PostgreSQL server: conninfo is a libpq connection
  // string or a postgresql:// URL. A server database has no folder of its own:
  // cartella stands for it (Vorn.def, ErrLogs/).
  static std::shared_ptr<Database> OpenPostgreSQL(const QString& conninfo, const QString& cartella);
  ~Database();
  Database(const Database&) = delete;
  Database& operator=(const Database&) = delete;

  Engine engine() const { return engine_; }
  QString Name() const { return name_; }      // full name of the database file, or the connection string
  QString PathDB() const { return pathDB_; }  // its folder, ending with a separator
  QSqlDatabase Connection() const;

  // A query's result: the fields with their types and the rows.
  struct Result {
    std::vector<FieldDef> fields;
    std::vector<Row> rows;
  };
  // Both raise VbError with the engine's message on failure.
  Result Select(const Sql& sql);
  // The rows of a query straight into a new recordset, opened on its first
  // row; a recordset that can't take the query's fields raises its own error.
  RecordsetPtr SelectRecordset(const Sql& sql);
  int Execute(const Sql& sql);  // rows changed
  // A statement in the engine's own SQL, which goes to it as it is.
  int ExecuteNativo(const QString& testo);
  // Inserts rows into a table through one prepared statement, in a transaction
  // of its own (nested in the caller's when there is one). next fills the row
  // it is given, one value per column in the order of columns, and returns
  // false when there are no more rows. Returns the rows inserted. The table's
  // and columns' names go to the engine as they are, unadapted.
  qint64 InsertMany(const QString& table, const QStringList& columns, const std::function<bool(Row&)>& next);

  // Transactions nest: only the outermost commit makes the writes last.
  // Rollback undoes the innermost level alone.
  void BeginTrans();
  void CommitTrans();
  void Rollback();
  int TransactionDepth() const { return transDepth_; }
  // How many statements reached the engine since the database was opened,
  // and how many of them failed.
  int StatementCount() const { return statements_; }
  int Failures() const { return failures_; }

  // Closes the connection; every later statement fails. At the end of the
  // program every database still alive is closed this way, before the
  // connections' registry of Qt goes.
  void Close();
  bool IsOpen() const { return motore_ != nullptr; }

  QStringList TableNames() const;  // tables and views
  bool TableExists(const QString& name) const;
  bool IsTable(const QString& name) const;  // a table of the database, not a view
  // Primary key fields: the schema's, or for a table it doesn't know the engine's.
  QStringList KeyOf(const QString& table) const;

  // The system's SQL (bracketed names, "texts", #dates#, DELETE *, Date(), Like
  // with *) turned into the engine's.
  QString Adapt(const QString& sql) const;
  // A date literal of the engine, as DataSql writes it.
  QString DateLiteral(const QDateTime& d) const;

 private:
  Database() = default;
  static std::shared_ptr<Database> Nuovo(Engine engine);
  Motore& M() const;
  void Leggi(const Sql& sql, RaccoltaRighe& righe);
  const QString& Adattato(const QString& sql);
  bool EngineInTransaction() const;

  Engine engine_ = Engine::SQLite;
  QString connectionName_;
  QString name_;
  QString pathDB_;
  std::unique_ptr<Motore> motore_;
  int transDepth_ = 0;
  int statements_ = 0;
  int failures_ = 0;
  QHash<QString, QString> adattati_;
};

using DatabasePtr = Ref<Database>;

}  // namespace prestkt
