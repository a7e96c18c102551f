#include "Procedure.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QTextStream>

#include "ModPrestKT.h"
#include "RecordsetFilter.h"
#include "Schema.h"

extern char** environ;

namespace prestkt {

namespace {

const QString kModulo = QStringLiteral("Procedure");

// What a recordset opened on one table writes back to it. The row is found by
// the table's key when the recordset holds it, otherwise by the recordset's own
// condition together with the values the row had.
class TableCursor : public WriteCursor {
 public:
  TableCursor(Database* db, QString table, QString where)
      : db_(db), table_(std::move(table)), where_(std::move(where)), key_(db->KeyOf(table_)) {}

  void Insert(const std::vector<FieldDef>& fields, const Row& row) override {
    QStringList cols, marks;
    Sql values;
    QVariantList params;
    for (size_t i = 0; i < fields.size(); ++i) {
      if (IsNull(row[i])) continue;  // the table's default stands for a field never written
      cols << Quote(fields[i].Name);
      marks << QStringLiteral("?");
    }
    Sql sql(QStringLiteral("INSERT INTO %1 (%2) VALUES (").arg(Quote(table_), cols.join(QStringLiteral(", "))));
    bool first = true;
    for (size_t i = 0; i < fields.size(); ++i) {
      if (IsNull(row[i])) continue;
      if (!first) sql += Sql(QStringLiteral(", "));
      sql += Sql::Param(row[i]);
      first = false;
    }
    sql += Sql(QStringLiteral(")"));
    if (cols.isEmpty()) sql = Sql(QStringLiteral("INSERT INTO %1 DEFAULT VALUES").arg(Quote(table_)));
    db_->Execute(sql);
  }

  void UpdateRow(const std::vector<FieldDef>& fields, const Row& before, const Row& after) override {
    Sql set;
    for (size_t i = 0; i < fields.size(); ++i) {
      if (Same(before[i], after[i])) continue;
      if (!set.IsEmpty()) set += Sql(QStringLiteral(", "));
      set += Sql(Quote(fields[i].Name) + QStringLiteral("=")) + Sql::Param(after[i]);
    }
    if (set.IsEmpty()) return;
    db_->Execute(Sql(QStringLiteral("UPDATE %1 SET ").arg(Quote(table_))) + set + Where(fields, before));
  }

  void DeleteRow(const std::vector<FieldDef>& fields, const Row& row) override {
    db_->Execute(Sql(QStringLiteral("DELETE FROM %1").arg(Quote(table_))) + Where(fields, row));
  }

 private:
  static QString Quote(const QString& n) { return QLatin1Char('[') + n + QLatin1Char(']'); }

  static bool Same(const QVariant& a, const QVariant& b) {
    if (IsNull(a) || IsNull(b)) return IsNull(a) && IsNull(b);
    return a == b && a.typeId() == b.typeId();
  }

  Sql Where(const std::vector<FieldDef>& fields, const Row& row) const {
    auto indexOf = [&](const QString& name) {
      for (size_t i = 0; i < fields.size(); ++i)
        if (fields[i].Name.compare(name, Qt::CaseInsensitive) == 0) return static_cast<int>(i);
      return -1;
    };
    bool haveKey = !key_.isEmpty();
    for (const QString& k : key_)
      if (indexOf(k) < 0) haveKey = false;
    Sql w(QStringLiteral(" WHERE "));
    bool first = true;
    auto add = [&](const QString& name, const QVariant& v) {
      if (!first) w += Sql(QStringLiteral(" AND "));
      w += Sql(Quote(name) + QStringLiteral(" IS ")) + Sql::Param(v);
      first = false;
    };
    if (haveKey) {
      for (const QString& k : key_) add(k, row[indexOf(k)]);
    } else {
      if (!where_.isEmpty()) {
        w += Sql(QStringLiteral("(") + where_ + QStringLiteral(")"));
        first = false;
      }
      for (size_t i = 0; i < fields.size(); ++i) add(fields[i].Name, row[i]);
    }
    return w;
  }

  Database* db_;
  QString table_;
  QString where_;
  QStringList key_;
};

// The one table of a simple SELECT, and its condition; false when the
// statement reads more than one table, groups its rows, or reads a view.
bool SingleTable(const Database& db, const QString& sql, QString* table, QString* where) {
  static const QRegularExpression re(
      QStringLiteral("^\\s*SELECT\\s+.+?\\s+FROM\\s+(\\[[^\\]]+\\]|\\w+)\\s*(?:WHERE\\s+(.*?))?\\s*"
                     "(?:ORDER\\s+BY\\s+.*?)?\\s*;?\\s*$"),
      QRegularExpression::CaseInsensitiveOption | QRegularExpression::DotMatchesEverythingOption);
  static const QRegularExpression multi(QStringLiteral("\\b(JOIN|GROUP\\s+BY|UNION|HAVING)\\b"),
                                        QRegularExpression::CaseInsensitiveOption);
  if (multi.match(sql).hasMatch()) return false;
  const auto m = re.match(sql);
  if (!m.hasMatch()) return false;
  *table = m.captured(1);
  if (table->startsWith(QLatin1Char('['))) *table = table->mid(1, table->size() - 2);
  *where = m.captured(2).trimmed();
  return FindTable(*table) != nullptr || db.IsTable(*table);
}

// Appends one line to a log file, its folders made first; false when any
// of it failed, a full disk included.
bool AggiungiRiga(const QString& file, const QByteArray& riga) {
  if (!EsisteCartella(QFileInfo(file).path(), true)) return false;
  QFile f(file);
  if (!f.open(QIODevice::Append)) return false;
  return f.write(riga) == riga.size() && f.flush();
}

Database* DbOr(Database* db) {
  if (db) return db;
  if (!gDB) Raise(err::ObjectNotSet);
  return gDB.get();
}

}  // namespace

void ApriRecordset(RecordsetPtr& rs, const Sql& sql, Database* db, int tipo) {
  if (sql.IsEmpty()) return;
  rs.reset();
  for (int tentativi = 0; !rs && tentativi < 3; ++tentativi) {
    try {
      Database* d = DbOr(db);
      RecordsetPtr out = d->SelectRecordset(sql);
      QString table, where;
      if (tipo == dbOpenDynaset && SingleTable(*d, sql.Text(), &table, &where)) {
        if (sql.Params().isEmpty())  // a condition with bound values can't be replayed as text
          out->SetWriteCursor(std::make_shared<TableCursor>(d, table, where));
        else
          out->SetWriteCursor(std::make_shared<TableCursor>(d, table, QString()));
      }
      rs = std::move(out);
    } catch (...) {
      // The next attempt sees the engine afresh; nothing is logged here.
    }
  }
}

QString QueryExe(const Sql& sql, int opzioni, Database* db) {
  Q_UNUSED(opzioni);  // every statement fails on error
  Guard g(kModulo, QStringLiteral("QueryExe"));
  Database* d = nullptr;
  g([&] { d = DbOr(db); });
  g([&] { d->BeginTrans(); });
  g([&] { d->Execute(sql); });
  g([&] { d->CommitTrans(); });
  return {};
}

FieldDef AdoFieldOfDao(const FieldDef& dao) {
  FieldDef f;
  f.Name = dao.Name;
  f.Attributes = adFldIsNullable | adFldMayBeNull | adFldUpdatable;
  switch (dao.DaoType) {
    case dbBoolean: f.Type = adBoolean; f.DefinedSize = 2; break;
    case dbByte:
    case dbInteger: f.Type = adInteger; f.DefinedSize = 4; break;
    case dbLong: f.Type = adBigInt; f.DefinedSize = 8; break;
    case dbCurrency: f.Type = adCurrency; f.DefinedSize = 8; break;
    case dbSingle: f.Type = adSingle; f.DefinedSize = 4; break;
    case dbDouble: f.Type = adDouble; f.DefinedSize = 8; break;
    case dbDate: f.Type = adDate; f.DefinedSize = 8; break;
    case dbText: f.Type = adVarChar; f.DefinedSize = dao.DefinedSize > 0 ? dao.DefinedSize : 255; break;
    case dbMemo: f.Type = adVarChar; f.DefinedSize = kMemoInMemoria; break;
    case dbChar: f.Type = adVarChar; f.DefinedSize = dao.DefinedSize > 0 ? dao.DefinedSize : 10; break;
    case dbNumeric: f.Type = adNumeric; f.DefinedSize = 19; break;
    case dbDecimal: f.Type = adDecimal; f.DefinedSize = 19; break;
    default:
      f.Type = adVarChar;
      f.DefinedSize = 255;
      f.Name = dao.Name + QStringLiteral("_NONPREVISTO");
      break;
  }
  return f;
}

QVariant ValoreCopiato(Guard& g, const FieldDef& f, const QVariant& v) {
  QVariant out;
  if (g([&] { out = Recordset::FitValue(f, v); })) return out;
  const int limite = detail::TextLimit(f);
  if (limite > 0 && v.typeId() == QMetaType::QString) {
    try {
      return Recordset::FitValue(f, v.toString().left(limite));
    } catch (...) {
    }
  }
  return QVariant();
}

void DAO2ADO(const RecordsetPtr& rsDAO, RecordsetPtr& rsADO, const Progress& progress, bool aggiungi,
             bool mostra, bool recStat) {
  Guard g(kModulo, QStringLiteral("DAO2ADO"));
  // Nothing to copy from: a failure like any other, logged.
  if (!g([&] {
        if (!rsDAO) Raise(err::ObjectNotSet);
      }))
    return;
  if (!aggiungi) {
    g([&] {
      rsADO.reset();
      auto out = Recordset::Create();
      for (const FieldDef& f : rsDAO->FieldDefs()) out->Append(AdoFieldOfDao(f));
      if (recStat) out->Append(QStringLiteral("RecStat"), adInteger, 4, adFldIsNullable | adFldMayBeNull);
      out->Open();
      rsADO = std::move(out);
    });
  }
  int count = 0;
  g([&] {
    if (rsDAO->RecordCount() > 0) {
      rsDAO->MoveLast();
      rsDAO->MoveFirst();
    }
    count = rsDAO->RecordCount();
  });
  if (!mostra) {
    g([&] {
      // Fields are copied by name, the mapping resolved once. A value that
      // does not fit is logged and the row stays.
      const auto& from = rsDAO->FieldDefs();
      const auto& to = rsADO->FieldDefs();
      std::vector<int> target(from.size());
      for (size_t i = 0; i < from.size(); ++i) {
        target[i] = rsADO->FieldIndex(from[i].Name);
        if (target[i] < 0) target[i] = rsADO->FieldIndex(from[i].Name + QStringLiteral("_NONPREVISTO"));
      }
      Row base(to.size());
      const int recStatIndex = recStat ? rsADO->FieldIndex(QStringLiteral("RecStat")) : -1;
      if (recStatIndex >= 0) base[recStatIndex] = 0;
      if (progress) progress(0, count);
      rsADO->AppendFrom(*rsDAO, target, base,
                        [&](int campo, const QVariant& v) { return ValoreCopiato(g, to[campo], v); });
      if (progress) progress(count, count);
    });
  }
  g([&] {
    rsADO->SetFilter(QString());
    if (rsDAO->RecordCount() > 0) rsDAO->MoveFirst();
  });
}

Sql TestoSql(const QString& testo) {
  if (testo.isEmpty()) return Sql(QStringLiteral("Null"));
  QString v = testo;
  v.replace(QLatin1Char('"'), QStringLiteral("''"));
  return Sql::Param(v);
}

QString DataSql(const QVariant& data) {
  if (!IsDate(data)) return {};
  const QDateTime d(CDate(data).date(), QTime(0, 0));
  if (gDB) return gDB->DateLiteral(d);
  return QLatin1Char('\'') + DateToStorage(d) + QLatin1Char('\'');
}

QPair<QDate, QDate> PeriodoDelMese(const QDate& oggi) {
  const QDate primo(oggi.year(), oggi.month(), 1);
  // The day before the first of the next month; December ends on the 31st of its own year.
  return {primo, oggi.month() < 12 ? QDate(oggi.year(), oggi.month() + 1, 1).addDays(-1) : QDate(oggi.year(), 12, 31)};
}

QString DataSqlIso(const QVariant& data) {
  return QLatin1Char('\'') + Format(data, QStringLiteral("yyyy-mm-dd")) + QLatin1Char('\'');
}

bool BeginTrans(Database* db) {
  DbOr(db)->BeginTrans();
  return true;
}

bool CommitTrans(Database* db) {
  DbOr(db)->CommitTrans();
  return true;
}

Transazione::Transazione(Guard& g, Database* db) : g_(g) {
  g_([&] {
    db_ = DbOr(db);
    db_->BeginTrans();
    aperta_ = true;
  });
  guasti_ = g_.Failures();
  guastiDb_ = db_ ? db_->Failures() : 0;
}

Transazione::~Transazione() { Fine(); }

bool Transazione::Fine() {
  if (!aperta_) return false;
  aperta_ = false;
  const bool riuscita = g_.Failures() == guasti_ && db_->Failures() == guastiDb_;
  g_([&] {
    if (riuscita)
      db_->CommitTrans();
    else
      db_->Rollback();
  });
  return riuscita;
}

QString ErrLogFile(const QString& modulo, const QString& procedura, const QDateTime& when) {
  // gPathDB ends with its separator, so the path holds two in a row: harmless.
  return gPathDB + QStringLiteral("/ErrLogs/") + Format(when, QStringLiteral("YYYY")) + QLatin1Char('/') +
         Format(when, QStringLiteral("MM")) + QLatin1Char('/') + modulo + QLatin1Char('_') + procedura +
         QStringLiteral(".log");
}

void ScriviErrLog(const QString& modulo, const QString& procedura, const QString& testo, bool& mostra) {
  try {
    if (IsDebugRun()) {
      const QString t = QStringLiteral(
                            "---------------------------\r\nRunTime instant Log\r\n"
                            "---------------------------\r\nModulo: ") +
                        modulo + QStringLiteral("\r\nProcedura: ") + procedura +
                        QStringLiteral("\r\n\r\nProblema: \r\n'") + testo + QLatin1Char('\'');
      MessageBoxVorn(t, vbExclamation);
      return;
    }
    if (mostra) {
      const QString t = QStringLiteral("Modulo: ") + modulo + QStringLiteral("\r\nProcedura: ") + procedura +
                        QStringLiteral("\r\n\r\nErrore: \r\n'") + testo + QLatin1Char('\'');
      MessageBoxVorn(t, vbOKOnly, AppTitle());
      return;
    }
    const QDateTime now = Now();
    const QString file = ErrLogFile(modulo, procedura, now);
    const QByteArray line = (Format(now, QStringLiteral("dd hh:nn:ss")) + QStringLiteral(" - ") + procedura +
                             QStringLiteral(": ") + testo + QLatin1Char('\n'))
                                .toUtf8();
    // On a full disk the reserved room is given back, so that the line lands.
    if (!AggiungiRiga(file, line) && QFile::remove(FileRiservaLog())) AggiungiRiga(file, line);
  } catch (...) {
    // The logger never fails its caller.
  }
}

QString FileRiservaLog() { return gPathDB + QStringLiteral("ErrLogs/.riserva"); }

void RiservaSpazioLog() {
  try {
    if (gPathDB.isEmpty()) return;
    QFile f(FileRiservaLog());
    if (f.size() >= kRiservaLog) return;
    EsisteCartella(QFileInfo(f).path(), true);
    if (!f.open(QIODevice::WriteOnly | QIODevice::Truncate)) return;
    // Real bytes: a file only stretched to its size would hold no room at all.
    const QByteArray zeri(kRiservaLog, '\0');
    if (f.write(zeri) != zeri.size() || !f.flush()) {
      f.close();
      f.remove();
    }
  } catch (...) {
  }
}

QString ConfigFile() { return gPathDB + QStringLiteral("Vorn.def"); }

QString LeggiConfig(bool utente, const QString& chiave) {
  const QString section = utente ? QString::number(gCurUtente) : QStringLiteral("IMPOSTAZIONI");
  return GetPrivateProfileString(section, chiave, QString(), ConfigFile()).left(255);
}

void ScriviConfig(bool utente, const QString& chiave, const QString& valore) {
  const QString section = utente ? QString::number(gCurUtente) : QStringLiteral("IMPOSTAZIONI");
  // The writer names the file with a leading separator; both reach the same file.
  WritePrivateProfileString(section, chiave, valore, gPathDB + QStringLiteral("/Vorn.def"));
}

ImpostazioniPrezzo LeggiImpostazioniPrezzo(Guard& g, const ImpostazioniPrezzo& fallback) {
  ImpostazioniPrezzo v;
  // No test for an empty text stands before the conversion: a missing key fails and counts 0.
  g([&] { v.PercRicLExt = CDbl(LeggiConfig(false, QStringLiteral("PrestKT_PercRicLExt"))); });
  g([&] { v.PercRicMin = CDbl(LeggiConfig(false, QStringLiteral("PrestKT_PercRicMin"))); });
  g([&] { v.CoeffStd = CDbl(LeggiConfig(false, QStringLiteral("PrestKT_CoeffStd"))); });
  g([&] { v.CoeffRange = CDbl(LeggiConfig(false, QStringLiteral("PrestKT_CoeffRange"))); });
  if (v.PercRicLExt + v.PercRicMin + v.CoeffStd + v.CoeffRange == 0) v = fallback;
  return v;
}

bool EsisteCartella(const QString& path, bool crea) {
  bool result = false;
  try {
    result = !path.isEmpty() && QFileInfo(path).isDir();
    if (!crea || result) return result;
    const QStringList parts = path.split(QLatin1Char('/'));
    QString level = parts.value(0);
    for (int i = 1; i < parts.size(); ++i) {
      level += QLatin1Char('/') + parts.at(i);
      if (parts.at(i).isEmpty()) continue;
      if (!QFileInfo(level).isDir()) QDir().mkdir(level);  // a failure here is skipped
    }
    result = true;
  } catch (...) {
  }
  return result;
}

bool EsisteFile(const QString& path) {
  try {
    const QFileInfo fi(path);
    return !path.isEmpty() && fi.exists() && fi.isFile();
  } catch (...) {
    return false;
  }
}

bool TabellaEsiste(const QString& nome) {
  if (!gDB) return false;
  return gDB->TableExists(nome);
}

int GetEnvironIdx(const QString& nome) {
  const QString wanted = nome.toLower();
  for (int i = 0; environ[i] && *environ[i]; ++i) {
    const QString entry = QString::fromLocal8Bit(environ[i]);
    if (entry.section(QLatin1Char('='), 0, 0).toLower() == wanted) return i + 1;
  }
  return 0;
}

QString Environ(int index) {
  if (index <= 0) Raise(err::InvalidProcedureCall);
  for (int i = 0; environ[i]; ++i)
    if (i + 1 == index) return QString::fromLocal8Bit(environ[i]);
  return {};
}

bool IsDebugRun() {
  // The delivered component never runs inside the development environment.
  static bool controllato = false;
  static bool debugRun = false;
  if (!controllato) {
    controllato = true;
    debugRun = false;
  }
  return debugRun;
}

}  // namespace prestkt
