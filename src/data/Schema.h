#pragma once
// The tables, keys, indexes and host views of the database, stated once and
// turned into DDL for the engine.
#include <QString>
#include <QStringList>
#include <vector>

namespace prestkt {

class Database;

struct ColumnDef {
  QString name;
  int type;         // DaoType
  int size = 0;     // texts
  bool nullable = true;
  QString defaultValue;  // SQL literal, empty for none
};

struct TableDef {
  QString name;
  std::vector<ColumnDef> columns;
  QStringList key;
  std::vector<QStringList> indexes;
  bool host = false;      // a table of the host application
  bool onDemand = false;  // created by the component when it first needs it
};

struct ViewDef {
  QString name;  // stored query of the host, e.g. "Doc:Forniture"
  QString select;
};

const std::vector<TableDef>& SchemaTables();
const std::vector<ViewDef>& SchemaViews();
const TableDef* FindTable(const QString& name);     // without regard to case
const ColumnDef* FindColumn(const QString& table, const QString& column);
// The type of a column by its name alone, looked up over all tables; 0 when unknown.
const ColumnDef* FindAnyColumn(const QString& column);

// A memo held in a disconnected recordset takes at most this many characters.
inline constexpr int kMemoInMemoria = 5000;
// The most characters a text of the column holds as the screens work with it:
// a text column's size, a memo's size in memory; 0 for any other column.
int TestoMassimo(const QString& table, const QString& column);

// Creates every table (but the on-demand ones unless asked), index and view that is missing.
void CreaSchema(Database& db, bool withOnDemand = false);
// Creates one table of the schema with its key and indexes, when missing.
void CreaTabella(Database& db, const QString& name);

}  // namespace prestkt
