#include "Database.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QSqlDriver>
#include <QSqlError>
#include <QUuid>
#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <exception>
#include <optional>
#include <vector>

#include "Motore.h"
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

constexpr int kAttesaOccupato = 60000;  // ms

// Without TZ the C library looks at /etc/localtime again at every local time
// conversion, and every date read is one: read the zone once instead.
void FusoUnaVolta() {
  if (qEnvironmentVariableIsEmpty("TZ")) {
    qputenv("TZ", ":/etc/localtime");
    tzset();
  }
}

}  // namespace

std::shared_ptr<Database> Database::Nuovo(Engine engine) {
  FusoUnaVolta();
  std::shared_ptr<Database> db(new Database());
  Aperti().push_back(db.get());
  db->engine_ = engine;
  // At the end of the application, while the driver is still loaded; without
  // one, at the exit, registered after Qt's registry of connections exists and
  // so run before it goes.
  static const bool allaFine = [] {
    qAddPostRoutine(ChiudiAllaFine);
    return std::atexit(ChiudiAllaFine) == 0;
  }();
  Q_UNUSED(allaFine);
  return db;
}

std::shared_ptr<Database> Database::OpenSQLite(const QString& file) {
  std::shared_ptr<Database> db = Nuovo(Engine::SQLite);
  db->connectionName_ = QStringLiteral("prestkt-") + QUuid::createUuid().toString(QUuid::Id128);
  const QFileInfo fi(file);
  db->name_ = fi.absoluteFilePath();
  db->pathDB_ = QDir::toNativeSeparators(fi.absolutePath());
  if (!db->pathDB_.endsWith(QDir::separator())) db->pathDB_ += QDir::separator();
  QSqlDatabase q = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), db->connectionName_);
  q.setDatabaseName(db->name_);
  // Another workstation writing makes this one wait, not fail.
  q.setConnectOptions(QStringLiteral("QSQLITE_BUSY_TIMEOUT=%1").arg(kAttesaOccupato));
  if (!q.open()) Raise(3044, QStringLiteral("Impossibile aprire il database '%1': %2").arg(file, q.lastError().text()));
  const QVariant h = q.driver()->handle();
  if (!h.isValid() || qstrcmp(h.typeName(), "sqlite3*") != 0) Raise(3044);
  db->motore_ = MotoreSqlite(*static_cast<void* const*>(h.data()));
  db->Execute(Sql("PRAGMA journal_mode=WAL"));
  db->Execute(Sql("PRAGMA synchronous=NORMAL"));
  return db;
}

std::shared_ptr<Database> Database::OpenPostgreSQL(const QString& conninfo, const QString& cartella) {
  std::shared_ptr<Database> db = Nuovo(Engine::PostgreSQL);
  db->name_ = conninfo;
  db->pathDB_ = QDir::toNativeSeparators(QDir(cartella).absolutePath());
  if (!db->pathDB_.endsWith(QDir::separator())) db->pathDB_ += QDir::separator();
  db->motore_ = MotorePostgres(conninfo);
  return db;
}

void Database::Close() {
  adattati_.clear();
  if (motore_) motore_->Chiudi();
  motore_.reset();
  transDepth_ = 0;
  if (connectionName_.isEmpty()) return;
  {
    QSqlDatabase q = QSqlDatabase::database(connectionName_, false);
    if (q.isOpen()) q.close();
  }
  QSqlDatabase::removeDatabase(connectionName_);
  connectionName_.clear();
}

Database::~Database() {
  Close();
  auto& aperti = Aperti();
  aperti.erase(std::remove(aperti.begin(), aperti.end(), this), aperti.end());
}

QSqlDatabase Database::Connection() const { return QSqlDatabase::database(connectionName_, false); }

Motore& Database::M() const {
  if (!motore_) Raise(3420, QStringLiteral("Object invalid or no longer set."));
  return *motore_;
}

// The engine's text of a statement of the system, kept by the system's text:
// the lookups that run once a row adapt their text once.
const QString& Database::Adattato(const QString& sql) {
  if (auto it = adattati_.constFind(sql); it != adattati_.constEnd()) return *it;
  if (adattati_.size() >= 1000) adattati_.clear();
  return *adattati_.insert(sql, Adapt(sql));
}

namespace {

// The rows kept as they come.
class RigheRisultato final : public RaccoltaVarianti {
 public:
  explicit RigheRisultato(Database::Result& r) : r_(r) {}
  void Campi(const std::vector<FieldDef>& fields, qsizetype righe) override {
    r_.fields = fields;
    if (righe > 0) r_.rows.reserve(static_cast<size_t>(righe));
  }

 protected:
  void Riga(Row& row) override { r_.rows.push_back(std::move(row)); }

 private:
  Database::Result& r_;
};

// The rows into a recordset. A failure of the recordset
// is kept for afterwards: it is not the engine's.
class RigheRecordset final : public RaccoltaRighe {
 public:
  void Campi(const std::vector<FieldDef>& fields, qsizetype righe) override {
    try {
      auto rs = Recordset::Create();
      for (const FieldDef& f : fields) rs->Append(f);
      rs->Open();
      aggiunta_.emplace(*rs);
      if (righe > 0) aggiunta_->Riserva(righe);
      rs_ = std::move(rs);
    } catch (...) {
      errore_ = std::current_exception();
    }
  }
  void Nullo() override {
    if (aggiunta_) aggiunta_->Nullo();
  }
  void Si(bool v) override {
    if (aggiunta_) aggiunta_->Si(v);
  }
  void Intero(qint64 v) override {
    if (aggiunta_) aggiunta_->Intero(v);
  }
  void Reale(double v) override {
    if (aggiunta_) aggiunta_->Reale(v);
  }
  void Testo(const QString& v) override {
    if (aggiunta_) aggiunta_->Testo(v);
  }
  void Data(const QDateTime& v) override {
    if (aggiunta_) aggiunta_->Data(v);
  }
  void FineRiga() override {
    if (aggiunta_) aggiunta_->FineRiga();
  }
  RecordsetPtr Fine() {
    if (errore_) std::rethrow_exception(errore_);
    if (!rs_) return rs_;
    aggiunta_->Fine();
    rs_->MoveFirst();
    return rs_;
  }

 private:
  RecordsetPtr rs_;
  std::optional<Recordset::Aggiunta> aggiunta_;
  std::exception_ptr errore_;
};

}  // namespace

Database::Result Database::Select(const Sql& sql) {
  Result r;
  RigheRisultato righe(r);
  Leggi(sql, righe);
  return r;
}

RecordsetPtr Database::SelectRecordset(const Sql& sql) {
  RigheRecordset righe;
  Leggi(sql, righe);
  return righe.Fine();
}

void Database::Leggi(const Sql& sql, RaccoltaRighe& righe) {
  Motore& m = M();
  ++statements_;
  try {
    m.Select(Adattato(sql.Text()), sql.Params(), sql.Text(), righe);
  } catch (const VbError&) {
    ++failures_;
    throw;
  }
}

int Database::Execute(const Sql& sql) {
  Motore& m = M();
  ++statements_;
  const QString text = Adapt(sql.Text());
  // A change of the tables' shape can change what a kept query tells of its fields.
  if (text.startsWith(QLatin1String("CREATE"), Qt::CaseInsensitive) ||
      text.startsWith(QLatin1String("DROP"), Qt::CaseInsensitive) ||
      text.startsWith(QLatin1String("ALTER"), Qt::CaseInsensitive))
    m.DimenticaPreparate();
  try {
    return m.Execute(text, sql.Params());
  } catch (const VbError&) {
    ++failures_;
    throw;
  }
}

int Database::ExecuteNativo(const QString& testo) {
  Motore& m = M();
  ++statements_;
  m.DimenticaPreparate();
  try {
    return m.Execute(testo, {});
  } catch (const VbError&) {
    ++failures_;
    throw;
  }
}

qint64 Database::InsertMany(const QString& table, const QStringList& columns,
                            const std::function<bool(Row&)>& next) {
  Motore& m = M();
  const int outer = transDepth_;
  BeginTrans();
  qint64 count = 0;
  try {
    count = m.InsertMany(table, columns, next);
  } catch (...) {
    ++failures_;
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
  if (transDepth_ == 0) {
    const QStringList inizio = M().InizioScrittura();
    for (int i = 0; i < inizio.size(); ++i) {
      try {
        Execute(Sql(inizio.at(i)));
      } catch (...) {
        if (i > 0 && EngineInTransaction()) Execute(Sql("ROLLBACK"));
        throw;
      }
    }
  } else {
    Execute(Sql(QStringLiteral("SAVEPOINT L%1").arg(transDepth_)));
  }
  ++transDepth_;
}

// Some failures (a full disk, a lost lock) make the engine end the transaction
// by itself: what it held is gone already, and there is nothing left to end.
bool Database::EngineInTransaction() const { return motore_ && motore_->InTransazione(); }

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

QStringList Database::TableNames() const { return motore_ ? motore_->TableNames() : QStringList(); }

bool Database::TableExists(const QString& name) const {
  const QString upper = name.toUpper();
  for (const QString& n : TableNames())
    if (n.toUpper() == upper) return true;
  return false;
}

bool Database::IsTable(const QString& name) const { return motore_ && motore_->IsTable(name); }

QStringList Database::KeyOf(const QString& table) const {
  if (const TableDef* t = FindTable(table)) return t->key;
  return motore_ ? motore_->KeyOf(table) : QStringList();
}

QString Database::Adapt(const QString& sql) const { return AdattaSql(sql, *this); }

QString Database::DateLiteral(const QDateTime& d) const {
  if (motore_) return motore_->DateLiteral(d);
  return QLatin1Char('\'') + DateToStorage(d) + QLatin1Char('\'');
}

}  // namespace prestkt
