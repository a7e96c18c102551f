#include "Database.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QSqlDriver>
#include <QSqlError>
#include <QUuid>
#include <sqlite3.h>
#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <vector>

#include "Schema.h"
#include "SqlAdapt.h"

namespace prestkt {

// ---------------------------------------------------------------- Sql

Sql Sql::Param(const QVariant& value) {
  Sql s(QStringLiteral("?"));
  s.params_ << value;
  return s;
}

Sql& Sql::operator+=(const Sql& other) {
  text_ += other.text_;
  params_ += other.params_;
  return *this;
}

Sql operator+(Sql a, const Sql& b) {
  a += b;
  return a;
}

QString Sql::Literal() const {
  QString out;
  int p = 0;
  bool inString = false;
  for (const QChar c : text_) {
    if (c == QLatin1Char('\'')) inString = !inString;
    if (c == QLatin1Char('?') && !inString && p < params_.size()) {
      const QVariant& v = params_.at(p++);
      if (IsNull(v))
        out += QStringLiteral("Null");
      else
        out += QLatin1Char('\'') + CStr(v).replace(QLatin1Char('\''), QStringLiteral("''")) +
               QLatin1Char('\'');
    } else {
      out += c;
    }
  }
  return out;
}

// ---------------------------------------------------------------- functions of the engine

namespace {

sqlite3* H(void* h) { return static_cast<sqlite3*>(h); }

QVariant ArgValue(sqlite3_value* v) {
  switch (sqlite3_value_type(v)) {
    case SQLITE_INTEGER: return QVariant(static_cast<qlonglong>(sqlite3_value_int64(v)));
    case SQLITE_FLOAT: return QVariant(sqlite3_value_double(v));
    case SQLITE_NULL: return QVariant();
    default: {
      const QString s = QString::fromUtf8(reinterpret_cast<const char*>(sqlite3_value_text(v)),
                                          sqlite3_value_bytes(v));
      const QDateTime d = DateFromStorage(s);
      return d.isValid() ? QVariant(d) : QVariant(s);
    }
  }
}

void ResultValue(sqlite3_context* ctx, const QVariant& v) {
  if (IsNull(v)) {
    sqlite3_result_null(ctx);
  } else if (v.typeId() == QMetaType::Double) {
    sqlite3_result_double(ctx, v.toDouble());
  } else if (v.typeId() == QMetaType::Int || v.typeId() == QMetaType::LongLong) {
    sqlite3_result_int64(ctx, v.toLongLong());
  } else if (v.typeId() == QMetaType::Bool) {
    sqlite3_result_int(ctx, v.toBool() ? -1 : 0);
  } else if (v.typeId() == QMetaType::QDateTime) {
    const QByteArray b = DateToStorage(v.toDateTime()).toUtf8();
    sqlite3_result_text(ctx, b.constData(), b.size(), SQLITE_TRANSIENT);
  } else {
    const QByteArray b = v.toString().toUtf8();
    sqlite3_result_text(ctx, b.constData(), b.size(), SQLITE_TRANSIENT);
  }
}

// Runs one of the system's functions inside a statement; a failure becomes the
// statement's failure, with the runtime error's text.
template <class F>
void Call(sqlite3_context* ctx, F&& f) {
  try {
    ResultValue(ctx, f());
  } catch (const VbError& e) {
    const QByteArray b = (e.Description() + QStringLiteral(" (") + QString::number(e.Number()) +
                          QStringLiteral(")"))
                             .toUtf8();
    sqlite3_result_error(ctx, b.constData(), b.size());
  }
}

void FnFormat(sqlite3_context* ctx, int, sqlite3_value** a) {
  Call(ctx, [&] { return QVariant(Format(ArgValue(a[0]), ArgValue(a[1]).toString())); });
}
void FnDateDiff(sqlite3_context* ctx, int, sqlite3_value** a) {
  Call(ctx, [&]() -> QVariant {
    const QVariant x = ArgValue(a[1]), y = ArgValue(a[2]);
    if (IsNull(x) || IsNull(y)) return QVariant();  // Null propagates in SQL
    return QVariant(static_cast<qlonglong>(DateDiff(ArgValue(a[0]).toString(), x, y)));
  });
}
template <int Part>
void FnDatePart(sqlite3_context* ctx, int, sqlite3_value** a) {
  Call(ctx, [&]() -> QVariant {
    const QVariant x = ArgValue(a[0]);
    if (IsNull(x)) return QVariant();
    const QDate d = CDate(x).date();
    return QVariant(Part == 0 ? d.year() : Part == 1 ? d.month() : d.day());
  });
}
void FnIIf(sqlite3_context* ctx, int, sqlite3_value** a) {
  const bool c = sqlite3_value_type(a[0]) != SQLITE_NULL && sqlite3_value_double(a[0]) != 0.0;
  sqlite3_result_value(ctx, c ? a[1] : a[2]);
}

struct Column {
  QString name;
  QString declType;
  QString expr;
};

int DaoTypeOfDecl(const QString& decl, int* size) {
  const QString d = decl.toUpper();
  *size = 0;
  if (d.startsWith(QLatin1String("YESNO")) || d.startsWith(QLatin1String("BOOL"))) return dbBoolean;
  if (d.startsWith(QLatin1String("TINYINT"))) return dbByte;
  if (d.startsWith(QLatin1String("SMALLINT"))) return dbInteger;
  if (d.startsWith(QLatin1String("INTEGER")) || d.startsWith(QLatin1String("INT"))) return dbLong;
  if (d.startsWith(QLatin1String("CURRENCY"))) return dbCurrency;
  if (d.startsWith(QLatin1String("FLOAT"))) return dbSingle;
  if (d.startsWith(QLatin1String("DOUBLE")) || d.startsWith(QLatin1String("REAL"))) return dbDouble;
  if (d.startsWith(QLatin1String("DATETIME"))) return dbDate;
  if (d.startsWith(QLatin1String("LONGTEXT")) || d.startsWith(QLatin1String("TEXT"))) return dbMemo;
  if (d.startsWith(QLatin1String("VARCHAR"))) {
    const int open = d.indexOf(QLatin1Char('(')), close = d.indexOf(QLatin1Char(')'));
    *size = open > 0 && close > open ? d.mid(open + 1, close - open - 1).toInt() : 255;
    return dbText;
  }
  return 0;
}

}  // namespace

// The ADO field that mirrors a database field, for recordsets read from the database.
FieldDef FieldOfDao(const QString& name, int daoType, int size) {
  FieldDef f;
  f.Name = name;
  f.DaoType = daoType;
  switch (daoType) {
    case dbBoolean: f.Type = adBoolean; f.DefinedSize = 2; break;
    case dbByte: f.Type = adUnsignedTinyInt; f.DefinedSize = 1; break;
    case dbInteger: f.Type = adSmallInt; f.DefinedSize = 2; break;
    case dbLong: f.Type = adInteger; f.DefinedSize = 4; break;
    case dbCurrency: f.Type = adCurrency; f.DefinedSize = 8; break;
    case dbSingle: f.Type = adSingle; f.DefinedSize = 4; break;
    case dbDouble: f.Type = adDouble; f.DefinedSize = 8; break;
    case dbDate: f.Type = adDate; f.DefinedSize = 8; break;
    case dbMemo: f.Type = adLongVarWChar; f.DefinedSize = 1073741823; break;
    case dbText: f.Type = adVarWChar; f.DefinedSize = size > 0 ? size : 255; break;
    default: f.Type = adVariant; f.DefinedSize = 16; break;
  }
  return f;
}

QVariant ValueOfDao(int daoType, sqlite3_stmt* st, int i) {
  const int t = sqlite3_column_type(st, i);
  if (t == SQLITE_NULL) return QVariant();
  switch (daoType) {
    case dbBoolean: return QVariant(sqlite3_column_int64(st, i) != 0);
    case dbByte:
    case dbInteger:
    case dbLong: {
      // A stored value beyond the 32-bit range comes as it is: the copy that
      // gives it a field of its own refuses it there, as any value that doesn't fit.
      if (t == SQLITE_INTEGER) {
        const qint64 v = sqlite3_column_int64(st, i);
        if (v >= INT_MIN && v <= INT_MAX) return QVariant(static_cast<int>(v));
        return QVariant(static_cast<qlonglong>(v));
      }
      const double d = sqlite3_column_double(st, i);
      if (d >= INT_MIN && d <= INT_MAX) return QVariant(static_cast<int>(d));
      return QVariant(d);
    }
    case dbCurrency:
    case dbSingle:
    case dbDouble:
      return QVariant(sqlite3_column_double(st, i));
    case dbDate: {
      const QString s = QString::fromUtf8(reinterpret_cast<const char*>(sqlite3_column_text(st, i)),
                                          sqlite3_column_bytes(st, i));
      const QDateTime d = DateFromStorage(s);
      return d.isValid() ? QVariant(d) : QVariant();
    }
    case dbText:
    case dbMemo:
      return QVariant(QString::fromUtf8(reinterpret_cast<const char*>(sqlite3_column_text(st, i)),
                                        sqlite3_column_bytes(st, i)));
    default:
      switch (t) {
        case SQLITE_INTEGER: {
          const qlonglong v = sqlite3_column_int64(st, i);
          if (v >= INT_MIN && v <= INT_MAX) return QVariant(static_cast<int>(v));
          return QVariant(v);
        }
        case SQLITE_FLOAT: return QVariant(sqlite3_column_double(st, i));
        default:
          return QVariant(QString::fromUtf8(reinterpret_cast<const char*>(sqlite3_column_text(st, i)),
                                            sqlite3_column_bytes(st, i)));
      }
  }
}

// ---------------------------------------------------------------- Database

namespace {

// The databases alive. What is still open when the program ends is closed
// while Qt's SQL driver and registry of connections stand: a host may keep a
// database (or the component's reference to it) until the very end.
std::vector<Database*>& Aperti() {
  // Never destroyed: a database kept in a global may go after every static of this file.
  static auto* aperti = new std::vector<Database*>;
  return *aperti;
}

void ChiudiAllaFine() {
  const std::vector<Database*> aperti = Aperti();
  for (Database* d : aperti) d->Close();
}

}  // namespace

namespace {
constexpr int kAttesaOccupato = 60000;  // ms
}  // namespace

std::shared_ptr<Database> Database::OpenSQLite(const QString& file) {
  // Without TZ the C library looks at /etc/localtime again at every local
  // time conversion, and every date read is one: read the zone once instead.
  if (qEnvironmentVariableIsEmpty("TZ")) {
    qputenv("TZ", ":/etc/localtime");
    tzset();
  }
  std::shared_ptr<Database> db(new Database());
  Aperti().push_back(db.get());
  db->engine_ = Engine::SQLite;
  db->connectionName_ = QStringLiteral("prestkt-") + QUuid::createUuid().toString(QUuid::Id128);
  const QFileInfo fi(file);
  db->name_ = fi.absoluteFilePath();
  db->pathDB_ = QDir::toNativeSeparators(fi.absolutePath());
  if (!db->pathDB_.endsWith(QDir::separator())) db->pathDB_ += QDir::separator();
  QSqlDatabase q = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), db->connectionName_);
  // At the end of the application, while the driver is still loaded; without
  // one, at the exit, registered after Qt's registry of connections exists and
  // so run before it goes.
  static const bool allaFine = [] {
    qAddPostRoutine(ChiudiAllaFine);
    return std::atexit(ChiudiAllaFine) == 0;
  }();
  Q_UNUSED(allaFine);
  q.setDatabaseName(db->name_);
  if (!q.open()) Raise(3044, QStringLiteral("Impossibile aprire il database '%1': %2").arg(file, q.lastError().text()));
  const QVariant h = q.driver()->handle();
  if (!h.isValid() || qstrcmp(h.typeName(), "sqlite3*") != 0) Raise(3044);
  db->handle_ = *static_cast<sqlite3* const*>(h.data());
  // Another workstation writing makes this one wait, not fail.
  sqlite3_busy_timeout(H(db->handle_), kAttesaOccupato);
  db->Execute(Sql("PRAGMA journal_mode=WAL"));
  db->Execute(Sql("PRAGMA synchronous=NORMAL"));
  db->InstallFunctions();
  return db;
}

void Database::Close() {
  preparate_.clear();  // finalized before the connection goes
  handle_ = nullptr;
  if (connectionName_.isEmpty()) return;
  {
    QSqlDatabase q = QSqlDatabase::database(connectionName_, false);
    if (q.isOpen()) q.close();
  }
  QSqlDatabase::removeDatabase(connectionName_);
  connectionName_.clear();
  transDepth_ = 0;
}

Database::~Database() {
  Close();
  auto& aperti = Aperti();
  aperti.erase(std::remove(aperti.begin(), aperti.end(), this), aperti.end());
}

QSqlDatabase Database::Connection() const { return QSqlDatabase::database(connectionName_, false); }

void Database::InstallFunctions() {
  sqlite3* h = H(handle_);
  const int flags = SQLITE_UTF8 | SQLITE_DETERMINISTIC;
  sqlite3_create_function_v2(h, "Format", 2, flags, nullptr, FnFormat, nullptr, nullptr, nullptr);
  sqlite3_create_function_v2(h, "DateDiff", 3, flags, nullptr, FnDateDiff, nullptr, nullptr, nullptr);
  sqlite3_create_function_v2(h, "Year", 1, flags, nullptr, FnDatePart<0>, nullptr, nullptr, nullptr);
  sqlite3_create_function_v2(h, "Month", 1, flags, nullptr, FnDatePart<1>, nullptr, nullptr, nullptr);
  sqlite3_create_function_v2(h, "Day", 1, flags, nullptr, FnDatePart<2>, nullptr, nullptr, nullptr);
  sqlite3_create_function_v2(h, "IIf", 3, flags, nullptr, FnIIf, nullptr, nullptr, nullptr);
}

namespace {



[[noreturn]] void RaiseEngine(sqlite3* h, int rc, const QString& sql) {
  const QString msg = QString::fromUtf8(sqlite3_errmsg(h));
  const int ext = sqlite3_extended_errcode(h);
  int number = err::SqlError;
  if (ext == SQLITE_CONSTRAINT_PRIMARYKEY || ext == SQLITE_CONSTRAINT_UNIQUE) number = 3022;
  else if (msg.startsWith(QLatin1String("no such table"))) number = 3078;
  else if (rc == SQLITE_BUSY || rc == SQLITE_LOCKED) number = 3260;
  Raise(number, msg + QStringLiteral(" [") + sql.left(200) + QLatin1Char(']'));
}

void BindValue(sqlite3_stmt* st, int n, const QVariant& v) {
  if (IsNull(v)) {
    sqlite3_bind_null(st, n);
  } else if (v.typeId() == QMetaType::Bool) {
    sqlite3_bind_int(st, n, v.toBool() ? -1 : 0);
  } else if (v.typeId() == QMetaType::Int || v.typeId() == QMetaType::LongLong ||
             v.typeId() == QMetaType::UInt || v.typeId() == QMetaType::Short) {
    sqlite3_bind_int64(st, n, v.toLongLong());
  } else if (v.typeId() == QMetaType::Double || v.typeId() == QMetaType::Float) {
    sqlite3_bind_double(st, n, v.toDouble());
  } else if (v.typeId() == QMetaType::QDateTime || v.typeId() == QMetaType::QDate) {
    const QByteArray b = DateToStorage(v.toDateTime()).toUtf8();
    sqlite3_bind_text(st, n, b.constData(), b.size(), SQLITE_TRANSIENT);
  } else {
    const QByteArray b = v.toString().toUtf8();
    sqlite3_bind_text(st, n, b.constData(), b.size(), SQLITE_TRANSIENT);
  }
}

void Bind(sqlite3_stmt* st, const QVariantList& params) {
  for (int i = 0; i < params.size(); ++i) BindValue(st, i + 1, params.at(i));
}

}  // namespace

struct Database::Statement {
  sqlite3_stmt* st = nullptr;
  ~Statement() {
    if (st) sqlite3_finalize(st);
  }
};

struct Database::Preparata {
  sqlite3_stmt* st = nullptr;
  QString testo;  // as the engine reads it
  std::vector<int> daoTypes;
  std::vector<FieldDef> fields;
  ~Preparata() {
    if (st) sqlite3_finalize(st);
  }
};

namespace {

constexpr int kMaxPreparate = 200;

// Leaves a kept statement ready for its next use, however its run ended.
struct Riavvolgi {
  sqlite3_stmt* st;
  ~Riavvolgi() {
    sqlite3_reset(st);
    sqlite3_clear_bindings(st);
  }
};

}  // namespace

std::shared_ptr<Database::Preparata> Database::Preparazione(const Sql& sql) {
  if (!handle_) Raise(3420, QStringLiteral("Object invalid or no longer set."));
  if (auto it = preparate_.constFind(sql.Text()); it != preparate_.constEnd()) return *it;
  auto p = std::make_shared<Preparata>();
  p->testo = Adapt(sql.Text());
  sqlite3* h = H(handle_);
  const QByteArray utf8 = p->testo.toUtf8();
  const int rc = sqlite3_prepare_v2(h, utf8.constData(), utf8.size(), &p->st, nullptr);
  if (rc != SQLITE_OK) Failed(rc, p->testo);
  const int n = sqlite3_column_count(p->st);
  const QStringList exprs = SelectExpressions(p->testo);
  p->daoTypes.resize(n);
  for (int i = 0; i < n; ++i) {
    const QString name = QString::fromUtf8(sqlite3_column_name(p->st, i));
    const char* decl = sqlite3_column_decltype(p->st, i);
    int size = 0;
    int dao = decl ? DaoTypeOfDecl(QString::fromUtf8(decl), &size) : 0;
    if (!decl && i < exprs.size()) dao = DaoTypeOfExpression(exprs.at(i), &size);
    p->daoTypes[i] = dao;
    p->fields.push_back(FieldOfDao(name, dao, size));
  }
  if (preparate_.size() >= kMaxPreparate) preparate_.clear();
  preparate_.insert(sql.Text(), p);
  return p;
}

void Database::DimenticaPreparate() { preparate_.clear(); }

void Database::Failed(int rc, const QString& sql) {
  ++failures_;
  RaiseEngine(H(handle_), rc, sql);
}

// Adapts, prepares and binds one statement of the system.
void Database::Prepare(const Sql& sql, Statement& s, QString& text) {
  if (!handle_) Raise(3420, QStringLiteral("Object invalid or no longer set."));
  ++statements_;
  text = Adapt(sql.Text());
  sqlite3* h = H(handle_);
  const QByteArray utf8 = text.toUtf8();
  const int rc = sqlite3_prepare_v2(h, utf8.constData(), utf8.size(), &s.st, nullptr);
  if (rc != SQLITE_OK) Failed(rc, text);
  Bind(s.st, sql.Params());
}

Database::Result Database::Select(const Sql& sql) {
  ++statements_;
  // Held while it runs, whatever happens to the cache meanwhile.
  const std::shared_ptr<Preparata> tenuta = Preparazione(sql);
  Preparata& p = *tenuta;
  Riavvolgi riavvolgi{p.st};
  Bind(p.st, sql.Params());
  int rc;
  Result r;
  r.fields = p.fields;
  const std::vector<int>& daoTypes = p.daoTypes;
  const int n = static_cast<int>(daoTypes.size());
  while ((rc = sqlite3_step(p.st)) == SQLITE_ROW) {
    Row row(n);
    for (int i = 0; i < n; ++i) row[i] = ValueOfDao(daoTypes[i], p.st, i);
    r.rows.push_back(std::move(row));
  }
  if (rc != SQLITE_DONE) Failed(rc, p.testo);
  // Columns whose type neither the table nor the expression tells take it from the values.
  for (int i = 0; i < n; ++i) {
    if (daoTypes[i] != 0) continue;
    for (const Row& row : r.rows) {
      const QVariant& v = row[i];
      if (IsNull(v)) continue;
      int dao = dbText, size = 255;
      if (v.typeId() == QMetaType::Int || v.typeId() == QMetaType::LongLong) dao = dbLong, size = 0;
      else if (v.typeId() == QMetaType::Double) dao = dbDouble, size = 0;
      else if (DateFromStorage(v.toString()).isValid()) dao = dbDate, size = 0;
      r.fields[i] = FieldOfDao(r.fields[i].Name, dao, size);
      if (dao == dbDate)
        for (Row& rr : r.rows)
          if (!IsNull(rr[i])) rr[i] = DateFromStorage(rr[i].toString());
      break;
    }
  }
  return r;
}

int Database::Execute(const Sql& sql) {
  sqlite3* h = H(handle_);
  Statement s;
  QString text;
  Prepare(sql, s, text);
  // A change of the tables' shape can change what a kept query tells of its fields.
  if (text.startsWith(QLatin1String("CREATE"), Qt::CaseInsensitive) ||
      text.startsWith(QLatin1String("DROP"), Qt::CaseInsensitive) ||
      text.startsWith(QLatin1String("ALTER"), Qt::CaseInsensitive))
    DimenticaPreparate();
  int rc;
  while ((rc = sqlite3_step(s.st)) == SQLITE_ROW) {
  }
  if (rc != SQLITE_DONE) Failed(rc, text);
  return sqlite3_changes(h);
}

qint64 Database::InsertMany(const QString& table, const QStringList& columns,
                            const std::function<bool(Row&)>& next) {
  QStringList cols, marks;
  for (const QString& c : columns) {
    cols << QLatin1Char('"') + c + QLatin1Char('"');
    marks << QStringLiteral("?");
  }
  const QString text = QStringLiteral("INSERT INTO \"%1\" (%2) VALUES (%3)")
                           .arg(table, cols.join(QStringLiteral(", ")), marks.join(QStringLiteral(", ")));
  sqlite3* h = H(handle_);
  const int outer = transDepth_;
  BeginTrans();
  qint64 count = 0;
  try {
    Statement s;
    const QByteArray utf8 = text.toUtf8();
    int rc = sqlite3_prepare_v2(h, utf8.constData(), utf8.size(), &s.st, nullptr);
    if (rc != SQLITE_OK) Failed(rc, text);
    const int n = static_cast<int>(columns.size());
    Row row;
    for (;;) {
      row.assign(n, QVariant());
      if (!next(row)) break;
      for (int i = 0; i < n; ++i) BindValue(s.st, i + 1, i < static_cast<int>(row.size()) ? row[i] : QVariant());
      rc = sqlite3_step(s.st);
      if (rc != SQLITE_DONE) Failed(rc, text);
      sqlite3_reset(s.st);
      ++count;
    }
  } catch (...) {
    // What this call inserted goes back; an outer transaction stays with its owner.
    if (transDepth_ > outer) Rollback();
    throw;
  }
  CommitTrans();
  return count;
}

// The outermost level is the engine's transaction; the levels inside it are
// savepoints, so that an inner level can go back alone. A transaction here is
// always a writer's, and takes the database for writing at once: a number read
// as the highest plus one and the row written under it are one unit that a
// second workstation waits for, instead of interleaving or failing.
void Database::BeginTrans() {
  Execute(Sql(transDepth_ == 0 ? QStringLiteral("BEGIN IMMEDIATE") : QStringLiteral("SAVEPOINT L%1").arg(transDepth_)));
  ++transDepth_;
}

// Some failures (a full disk, a lost lock) make the engine end the transaction
// by itself: what it held is gone already, and there is nothing left to end.
bool Database::EngineInTransaction() const { return handle_ && sqlite3_get_autocommit(H(handle_)) == 0; }

void Database::CommitTrans() {
  if (transDepth_ == 0) Raise(3034, QStringLiteral("You tried to commit or rollback without first beginning a transaction."));
  --transDepth_;
  if (!EngineInTransaction()) return;
  Execute(Sql(transDepth_ == 0 ? QStringLiteral("COMMIT") : QStringLiteral("RELEASE L%1").arg(transDepth_)));
}

void Database::Rollback() {
  if (transDepth_ == 0) return;
  --transDepth_;
  if (!EngineInTransaction()) return;
  if (transDepth_ == 0) {
    Execute(Sql("ROLLBACK"));
  } else {
    Execute(Sql(QStringLiteral("ROLLBACK TO L%1").arg(transDepth_)));
    Execute(Sql(QStringLiteral("RELEASE L%1").arg(transDepth_)));
  }
}

QStringList Database::TableNames() const {
  QStringList names;
  sqlite3* h = H(handle_);
  Statement s;
  if (!h) return names;
  if (sqlite3_prepare_v2(h, "SELECT name FROM sqlite_master WHERE type IN ('table','view')", -1,
                         &s.st, nullptr) != SQLITE_OK)
    return names;
  while (sqlite3_step(s.st) == SQLITE_ROW)
    names << QString::fromUtf8(reinterpret_cast<const char*>(sqlite3_column_text(s.st, 0)));
  return names;
}

bool Database::TableExists(const QString& name) const {
  const QString upper = name.toUpper();
  for (const QString& n : TableNames())
    if (n.toUpper() == upper) return true;
  return false;
}

bool Database::IsTable(const QString& name) const {
  Statement s;
  if (!handle_) return false;
  if (sqlite3_prepare_v2(H(handle_), "SELECT 1 FROM sqlite_master WHERE type='table' AND name=? COLLATE NOCASE", -1,
                         &s.st, nullptr) != SQLITE_OK)
    return false;
  BindValue(s.st, 1, name);
  return sqlite3_step(s.st) == SQLITE_ROW;
}

QStringList Database::KeyOf(const QString& table) const {
  if (const TableDef* t = FindTable(table)) return t->key;
  QStringList key;
  Statement s;
  if (!handle_) return key;
  if (sqlite3_prepare_v2(H(handle_), "SELECT name FROM pragma_table_info(?) WHERE pk > 0 ORDER BY pk", -1, &s.st,
                         nullptr) != SQLITE_OK)
    return key;
  BindValue(s.st, 1, table);
  while (sqlite3_step(s.st) == SQLITE_ROW)
    key << QString::fromUtf8(reinterpret_cast<const char*>(sqlite3_column_text(s.st, 0)));
  return key;
}

QString Database::Adapt(const QString& sql) const { return AdattaSql(sql, *this); }

QString Database::DateLiteral(const QDateTime& d) const {
  return QLatin1Char('\'') + DateToStorage(d) + QLatin1Char('\'');
}

}  // namespace prestkt
