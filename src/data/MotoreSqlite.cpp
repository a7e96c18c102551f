// The SQLite engine: the library's own interface on the connection that Qt's
// driver opened, the system's functions installed as callbacks, dates stored
// as text "yyyy-mm-dd hh:nn:ss".
#include <sqlite3.h>

#include <QString>
#include <climits>

#include "Motore.h"
#include "Schema.h"
#include "SqlAdapt.h"

namespace prestkt {

namespace {


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


// Hands value i of the current row to righe in the form its field's type asks.
void LeggiValore(int daoType, sqlite3_stmt* st, int i, RicorrentiColonne& ricorrenti, RaccoltaRighe& righe) {
  const int t = sqlite3_column_type(st, i);
  if (t == SQLITE_NULL) return righe.Nullo();
  auto testo = [&] {
    const char* s = reinterpret_cast<const char*>(sqlite3_column_text(st, i));
    const int n = sqlite3_column_bytes(st, i);
    righe.Testo(ricorrenti.testi[i].Valore(s, n, [&] { return QString::fromUtf8(s, n); }));
  };
  switch (daoType) {
    case dbBoolean: return righe.Si(sqlite3_column_int64(st, i) != 0);
    case dbByte:
    case dbInteger:
    case dbLong: {
      // A stored value beyond the 32-bit range comes as it is: the copy that
      // gives it a field of its own refuses it there, as any value that doesn't fit.
      if (t == SQLITE_INTEGER) return righe.Intero(sqlite3_column_int64(st, i));
      const double d = sqlite3_column_double(st, i);
      if (d >= INT_MIN && d <= INT_MAX) return righe.Intero(static_cast<int>(d));
      return righe.Reale(d);
    }
    case dbCurrency:
    case dbSingle:
    case dbDouble: return righe.Reale(sqlite3_column_double(st, i));
    case dbDate: {
      const char* s = reinterpret_cast<const char*>(sqlite3_column_text(st, i));
      const int n = sqlite3_column_bytes(st, i);
      const QDateTime d =
          ricorrenti.date[i].Valore(s, n, [&] { return DateFromStorage(QString::fromUtf8(s, n)); });
      return d.isValid() ? righe.Data(d) : righe.Nullo();
    }
    case dbText:
    case dbMemo: return testo();
    default:
      switch (t) {
        case SQLITE_INTEGER: return righe.Intero(sqlite3_column_int64(st, i));
        case SQLITE_FLOAT: return righe.Reale(sqlite3_column_double(st, i));
        default: return testo();
      }
  }
}

// The rows kept until the end of the result.
class RigheTenute final : public RaccoltaVarianti {
 public:
  void Campi(const std::vector<FieldDef>&, qsizetype) override {}
  std::vector<Row> rows;

 protected:
  void Riga(Row& row) override { rows.push_back(std::move(row)); }
};


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

struct Statement {
  sqlite3_stmt* st = nullptr;
  ~Statement() {
    if (st) sqlite3_finalize(st);
  }
};

// A query already prepared, kept by its text: the lookups that run once a row
// with bound values reuse it. The fields' types that the statement itself
// tells are kept with it.
struct Preparata {
  sqlite3_stmt* st = nullptr;
  QString testo;
  std::vector<int> daoTypes;
  std::vector<FieldDef> fields;
  ~Preparata() {
    if (st) sqlite3_finalize(st);
  }
};

constexpr int kMaxPreparate = 200;

// Leaves a kept statement ready for its next use, however its run ended.
struct Riavvolgi {
  sqlite3_stmt* st;
  ~Riavvolgi() {
    sqlite3_reset(st);
    sqlite3_clear_bindings(st);
  }
};

class Sqlite final : public Motore {
 public:
  explicit Sqlite(sqlite3* h) : h_(h) {
    const int flags = SQLITE_UTF8 | SQLITE_DETERMINISTIC;
    sqlite3_create_function_v2(h, "Format", 2, flags, nullptr, FnFormat, nullptr, nullptr, nullptr);
    sqlite3_create_function_v2(h, "DateDiff", 3, flags, nullptr, FnDateDiff, nullptr, nullptr, nullptr);
    sqlite3_create_function_v2(h, "Year", 1, flags, nullptr, FnDatePart<0>, nullptr, nullptr, nullptr);
    sqlite3_create_function_v2(h, "Month", 1, flags, nullptr, FnDatePart<1>, nullptr, nullptr, nullptr);
    sqlite3_create_function_v2(h, "Day", 1, flags, nullptr, FnDatePart<2>, nullptr, nullptr, nullptr);
    sqlite3_create_function_v2(h, "IIf", 3, flags, nullptr, FnIIf, nullptr, nullptr, nullptr);
  }

  void Select(const QString& testo, const QVariantList& valori, const QString&, RaccoltaRighe& righe) override {
    // Held while it runs, whatever happens to the cache meanwhile.
    const std::shared_ptr<Preparata> tenuta = Preparazione(testo);
    Preparata& p = *tenuta;
    Riavvolgi riavvolgi{p.st};
    Bind(p.st, valori);
    const std::vector<int>& daoTypes = p.daoTypes;
    const int n = static_cast<int>(daoTypes.size());
    RicorrentiColonne ricorrenti(n);
    auto leggi = [&](RaccoltaRighe& verso) {
      int rc;
      while ((rc = sqlite3_step(p.st)) == SQLITE_ROW) {
        for (int i = 0; i < n; ++i) LeggiValore(daoTypes[i], p.st, i, ricorrenti, verso);
        verso.FineRiga();
      }
      if (rc != SQLITE_DONE) RaiseEngine(h_, rc, p.testo);
    };
    // The rows go on as they are read, unless a column's type must wait for its values.
    if (std::find(daoTypes.begin(), daoTypes.end(), 0) == daoTypes.end()) {
      righe.Campi(p.fields, -1);
      leggi(righe);
      return;
    }
    RigheTenute tenute;
    leggi(tenute);
    std::vector<FieldDef> fields = p.fields;
    // Columns whose type neither the table nor the expression tells take it from the values.
    for (int i = 0; i < n; ++i) {
      if (daoTypes[i] != 0) continue;
      for (const Row& row : tenute.rows) {
        const QVariant& v = row[i];
        if (IsNull(v)) continue;
        int dao = dbText, size = 255;
        if (v.typeId() == QMetaType::Int || v.typeId() == QMetaType::LongLong) dao = dbLong, size = 0;
        else if (v.typeId() == QMetaType::Double) dao = dbDouble, size = 0;
        else if (DateFromStorage(v.toString()).isValid()) dao = dbDate, size = 0;
        fields[i] = FieldOfDao(fields[i].Name, dao, size);
        if (dao == dbDate)
          for (Row& rr : tenute.rows)
            if (!IsNull(rr[i])) rr[i] = DateFromStorage(rr[i].toString());
        break;
      }
    }
    righe.Campi(fields, static_cast<qsizetype>(tenute.rows.size()));
    for (const Row& row : tenute.rows) {
      for (const QVariant& v : row) Consegna(v, righe);
      righe.FineRiga();
    }
  }

  int Execute(const QString& testo, const QVariantList& valori) override {
    Statement s;
    const QByteArray utf8 = testo.toUtf8();
    int rc = sqlite3_prepare_v2(h_, utf8.constData(), utf8.size(), &s.st, nullptr);
    if (rc != SQLITE_OK) RaiseEngine(h_, rc, testo);
    Bind(s.st, valori);
    while ((rc = sqlite3_step(s.st)) == SQLITE_ROW) {
    }
    if (rc != SQLITE_DONE) RaiseEngine(h_, rc, testo);
    return sqlite3_changes(h_);
  }

  qint64 InsertMany(const QString& table, const QStringList& columns,
                    const std::function<bool(Row&)>& next) override {
    QStringList cols, marks;
    for (const QString& c : columns) {
      cols << QLatin1Char('"') + c + QLatin1Char('"');
      marks << QStringLiteral("?");
    }
    const QString text = QStringLiteral("INSERT INTO \"%1\" (%2) VALUES (%3)")
                             .arg(table, cols.join(QStringLiteral(", ")), marks.join(QStringLiteral(", ")));
    Statement s;
    const QByteArray utf8 = text.toUtf8();
    int rc = sqlite3_prepare_v2(h_, utf8.constData(), utf8.size(), &s.st, nullptr);
    if (rc != SQLITE_OK) RaiseEngine(h_, rc, text);
    const int n = static_cast<int>(columns.size());
    qint64 count = 0;
    Row row;
    for (;;) {
      row.assign(n, QVariant());
      if (!next(row)) break;
      for (int i = 0; i < n; ++i) BindValue(s.st, i + 1, i < static_cast<int>(row.size()) ? row[i] : QVariant());
      rc = sqlite3_step(s.st);
      if (rc != SQLITE_DONE) RaiseEngine(h_, rc, text);
      sqlite3_reset(s.st);
      ++count;
    }
    return count;
  }

  QStringList InizioScrittura() const override { return {QStringLiteral("BEGIN IMMEDIATE")}; }

  // Some failures (a full disk, a lost lock) make the engine end the
  // transaction by itself.
  bool InTransazione() const override { return sqlite3_get_autocommit(h_) == 0; }

  QStringList TableNames() override {
    QStringList names;
    Statement s;
    if (sqlite3_prepare_v2(h_, "SELECT name FROM sqlite_master WHERE type IN ('table','view')", -1, &s.st,
                           nullptr) != SQLITE_OK)
      return names;
    while (sqlite3_step(s.st) == SQLITE_ROW)
      names << QString::fromUtf8(reinterpret_cast<const char*>(sqlite3_column_text(s.st, 0)));
    return names;
  }

  bool IsTable(const QString& name) override {
    Statement s;
    if (sqlite3_prepare_v2(h_, "SELECT 1 FROM sqlite_master WHERE type='table' AND name=? COLLATE NOCASE", -1,
                           &s.st, nullptr) != SQLITE_OK)
      return false;
    BindValue(s.st, 1, name);
    return sqlite3_step(s.st) == SQLITE_ROW;
  }

  QStringList KeyOf(const QString& table) override {
    QStringList key;
    Statement s;
    if (sqlite3_prepare_v2(h_, "SELECT name FROM pragma_table_info(?) WHERE pk > 0 ORDER BY pk", -1, &s.st,
                           nullptr) != SQLITE_OK)
      return key;
    BindValue(s.st, 1, table);
    while (sqlite3_step(s.st) == SQLITE_ROW)
      key << QString::fromUtf8(reinterpret_cast<const char*>(sqlite3_column_text(s.st, 0)));
    return key;
  }

  QString DateLiteral(const QDateTime& d) const override {
    return QLatin1Char('\'') + DateToStorage(d) + QLatin1Char('\'');
  }

  void DimenticaPreparate() override { preparate_.clear(); }
  void Chiudi() override { preparate_.clear(); }

 private:
  std::shared_ptr<Preparata> Preparazione(const QString& testo) {
    if (auto it = preparate_.constFind(testo); it != preparate_.constEnd()) return *it;
    auto p = std::make_shared<Preparata>();
    p->testo = testo;
    const QByteArray utf8 = testo.toUtf8();
    const int rc = sqlite3_prepare_v2(h_, utf8.constData(), utf8.size(), &p->st, nullptr);
    if (rc != SQLITE_OK) RaiseEngine(h_, rc, testo);
    const int n = sqlite3_column_count(p->st);
    const QStringList exprs = SelectExpressions(testo);
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
    preparate_.insert(testo, p);
    return p;
  }

  sqlite3* h_;
  QHash<QString, std::shared_ptr<Preparata>> preparate_;
};

}  // namespace

std::unique_ptr<Motore> MotoreSqlite(void* handle) {
  return std::make_unique<Sqlite>(static_cast<sqlite3*>(handle));
}

}  // namespace prestkt
