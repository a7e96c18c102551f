// The PostgreSQL engine, through libpq: statements prepared once by their text
// and the types of their values, values exchanged as text, the fields' types
// taken from the schema of the table each column comes from. Writers take one
// advisory lock of the database for the length of their transaction, so that
// a number read as the highest plus one and the row written under it are one
// unit on every workstation.
#include <libpq-fe.h>

#include <QHash>
#include <QRegularExpression>
#include <QString>
#include <climits>
#include <cmath>

#include "FunzioniPostgres.h"
#include "Motore.h"
#include "Schema.h"
#include "SqlAdapt.h"

namespace prestkt {

namespace {

// Type OIDs of the server's built-in types.
enum : Oid {
  kBool = 16,
  kInt8 = 20,
  kInt2 = 21,
  kInt4 = 23,
  kText = 25,
  kFloat4 = 700,
  kFloat8 = 701,
  kBpChar = 1042,
  kVarchar = 1043,
  kDate = 1082,
  kTimestamp = 1114,
  kNumeric = 1700,
};

// The key of the lock that writers of this database share.
constexpr long long kChiaveScrittura = 0x5052455354;

using Risultato = std::unique_ptr<PGresult, decltype(&PQclear)>;

Risultato Tieni(PGresult* r) { return Risultato(r, &PQclear); }

[[noreturn]] void RaiseEngine(PGconn* c, const PGresult* r, const QString& sql) {
  // The engine's words on one line: its primary message, without the pointer to the text.
  const char* primario = r ? PQresultErrorField(r, PG_DIAG_MESSAGE_PRIMARY) : nullptr;
  QString msg = QString::fromUtf8(primario ? primario : PQerrorMessage(c)).trimmed();
  msg = msg.section(QLatin1Char('\n'), 0, 0);
  const QString stato = r ? QString::fromLatin1(PQresultErrorField(r, PG_DIAG_SQLSTATE)) : QString();
  int number = err::SqlError;
  if (stato == QLatin1String("23505")) number = 3022;
  else if (stato == QLatin1String("42P01")) number = 3078;
  else if (stato == QLatin1String("40P01") || stato == QLatin1String("40001") || stato == QLatin1String("55P03"))
    number = 3260;
  Raise(number, msg + QStringLiteral(" [") + sql.left(200) + QLatin1Char(']'));
}

bool Riuscito(const PGresult* r) {
  const ExecStatusType s = r ? PQresultStatus(r) : PGRES_FATAL_ERROR;
  return s == PGRES_TUPLES_OK || s == PGRES_COMMAND_OK;
}

// The type a value is sent with: numbers and dates with their own, texts left
// for the server to read from their place in the statement.
Oid TipoDi(const QVariant& v) {
  if (IsNull(v)) return 0;
  switch (v.typeId()) {
    case QMetaType::Bool:
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::Short:
    case QMetaType::LongLong:
      return kInt8;
    case QMetaType::Double:
    case QMetaType::Float:
      return kFloat8;
    case QMetaType::QDateTime:
    case QMetaType::QDate:
      return kTimestamp;
    default:
      return 0;
  }
}

QByteArray TestoDi(const QVariant& v) {
  switch (v.typeId()) {
    case QMetaType::Bool:
      return v.toBool() ? QByteArrayLiteral("-1") : QByteArrayLiteral("0");
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::Short:
    case QMetaType::LongLong:
      return QByteArray::number(v.toLongLong());
    case QMetaType::Double:
    case QMetaType::Float: {
      const double d = v.toDouble();
      if (std::isnan(d)) return QByteArrayLiteral("NaN");
      if (std::isinf(d)) return d > 0 ? QByteArrayLiteral("Infinity") : QByteArrayLiteral("-Infinity");
      return QByteArray::number(d, 'g', 17);
    }
    case QMetaType::QDateTime:
    case QMetaType::QDate:
      return DateToStorage(v.toDateTime()).toUtf8();
    default:
      return v.toString().toUtf8();
  }
}

// The values of a statement as libpq takes them; the bytes live as long as this.
struct Valori {
  explicit Valori(const QVariantList& valori) {
    for (const QVariant& v : valori) {
      tipi.push_back(TipoDi(v));
      testi.push_back(IsNull(v) ? QByteArray() : TestoDi(v));
    }
    for (int i = 0; i < valori.size(); ++i) puntatori.push_back(IsNull(valori.at(i)) ? nullptr : testi[i].constData());
  }
  int Quanti() const { return static_cast<int>(puntatori.size()); }
  std::vector<Oid> tipi;
  std::vector<QByteArray> testi;
  std::vector<const char*> puntatori;
};

// A value of the text form of the server, handed to righe as the field's type asks.
void LeggiValore(int daoType, Oid tipo, const char* s, int n, int colonna, RicorrentiColonne& ricorrenti,
                 RaccoltaRighe& righe) {
  const QByteArray b = QByteArray::fromRawData(s, n);
  switch (daoType) {
    case dbBoolean:
      if (tipo == kBool) return righe.Si(b == "t");
      return righe.Si(b.toLongLong() != 0);
    case dbByte:
    case dbInteger:
    case dbLong: {
      bool ok = false;
      const qlonglong v = b.toLongLong(&ok);
      if (ok) return righe.Intero(v);
      const double d = b.toDouble();
      if (d >= INT_MIN && d <= INT_MAX) return righe.Intero(static_cast<int>(d));
      return righe.Reale(d);
    }
    case dbCurrency:
    case dbSingle:
    case dbDouble: return righe.Reale(b.toDouble());
    case dbDate: {
      const QDateTime d = ricorrenti.date[colonna].Valore(
          s, n, [&] { return DateFromStorage(QString::fromLatin1(b.left(19))); });
      return d.isValid() ? righe.Data(d) : righe.Nullo();
    }
    default:  // texts, and what has no type of its own
      return righe.Testo(ricorrenti.testi[colonna].Valore(s, n, [&] { return QString::fromUtf8(s, n); }));
  }
}

// The field type of a column that no table of the schema tells, by the
// server's type of the column.
int DaoDelTipo(Oid tipo, int modificatore, Oid citext, int* size) {
  *size = 0;
  switch (tipo) {
    case kBool: return dbBoolean;
    case kInt2: return dbInteger;
    case kInt4:
    case kInt8: return dbLong;
    case kFloat4:
    case kFloat8:
    case kNumeric: return dbDouble;
    case kDate:
    case kTimestamp: return dbDate;
    case kVarchar:
    case kBpChar:
      *size = modificatore > 4 ? modificatore - 4 : 255;
      return dbText;
    default:
      if (tipo == kText || (citext != 0 && tipo == citext)) {
        *size = 255;
        return dbText;
      }
      return 0;
  }
}

struct Preparata {
  QByteArray nome;
  QString testo;
  std::vector<int> daoTypes;
  std::vector<Oid> tipi;
  std::vector<FieldDef> fields;
};

constexpr int kMaxPreparate = 200;

class Postgres final : public Motore {
 public:
  explicit Postgres(const QString& conninfo) {
    c_ = PQconnectdb(conninfo.toUtf8().constData());
    if (PQstatus(c_) != CONNECTION_OK) {
      const QString msg = QString::fromUtf8(PQerrorMessage(c_)).trimmed();
      PQfinish(c_);
      c_ = nullptr;
      Raise(3044, QStringLiteral("Impossibile aprire il database '%1': %2").arg(conninfo, msg));
    }
    Comando(QStringLiteral("SET client_min_messages = warning"));
    Comando(QStringLiteral("SET DateStyle = 'ISO, YMD'"));
    Comando(QStringLiteral("SET extra_float_digits = 3"));
    Installa();
  }

  ~Postgres() override { Chiudi(); }

  void Select(const QString& testo, const QVariantList& valori, const QString& sistema, RaccoltaRighe& righe) override {
    const Valori v(valori);
    Istruzione protetta(*this);
    const std::shared_ptr<Preparata> p = Preparazione(testo, v, sistema);
    // A row at a time, so that the whole result never waits in libpq's
    // memory beside the rows read; the last result, with no row, ends it.
    if (!PQsendQueryPrepared(c_, p->nome.constData(), v.Quanti(), v.puntatori.data(), nullptr, nullptr, 0))
      RaiseEngine(c_, nullptr, testo);
    PQsetSingleRowMode(c_);
    const int n = static_cast<int>(p->daoTypes.size());
    RicorrentiColonne ricorrenti(n);
    Risultato errore(nullptr, &PQclear);
    bool campi = false;
    try {
      while (Risultato r = Tieni(PQgetResult(c_))) {
        const ExecStatusType s = PQresultStatus(r.get());
        if (s != PGRES_SINGLE_TUPLE && s != PGRES_TUPLES_OK) {
          if (!errore) errore = std::move(r);
          continue;
        }
        if (errore) continue;
        if (!campi) {
          righe.Campi(p->fields, s == PGRES_TUPLES_OK ? PQntuples(r.get()) : -1);
          campi = true;
        }
        for (int i = 0; i < PQntuples(r.get()); ++i) {
          for (int j = 0; j < n; ++j) {
            if (PQgetisnull(r.get(), i, j))
              righe.Nullo();
            else
              LeggiValore(p->daoTypes[j], p->tipi[j], PQgetvalue(r.get(), i, j), PQgetlength(r.get(), i, j), j,
                          ricorrenti, righe);
          }
          righe.FineRiga();
        }
      }
    } catch (...) {
      while (Risultato r = Tieni(PQgetResult(c_))) {
      }
      throw;
    }
    if (errore) RaiseEngine(c_, errore.get(), testo);
    protetta.Riuscita();
    if (!campi) righe.Campi(p->fields, 0);
  }

  int Execute(const QString& testo, const QVariantList& valori) override {
    const Valori v(valori);
    const QByteArray utf8 = testo.toUtf8();
    Istruzione protetta(*this, !Controllo(testo));
    Risultato r = Tieni(v.Quanti() == 0 ? PQexec(c_, utf8.constData())
                                        : PQexecParams(c_, utf8.constData(), v.Quanti(), v.tipi.data(),
                                                       v.puntatori.data(), nullptr, nullptr, 0));
    if (!Riuscito(r.get())) RaiseEngine(c_, r.get(), testo);
    protetta.Riuscita();
    return QByteArray(PQcmdTuples(r.get())).toInt();
  }

  qint64 InsertMany(const QString& table, const QStringList& columns,
                    const std::function<bool(Row&)>& next) override {
    QStringList cols, marks;
    for (int i = 0; i < columns.size(); ++i) {
      cols << QLatin1Char('"') + columns.at(i) + QLatin1Char('"');
      marks << QStringLiteral("$%1").arg(i + 1);
    }
    const QString text = QStringLiteral("INSERT INTO \"%1\" (%2) VALUES (%3)")
                             .arg(table, cols.join(QStringLiteral(", ")), marks.join(QStringLiteral(", ")));
    const QByteArray utf8 = text.toUtf8();
    const int n = static_cast<int>(columns.size());
    // Prepared with the server's own types of the columns, so that any value reads as its column.
    const QByteArray nome = QByteArrayLiteral("ins") + QByteArray::number(++contatore_);
    Risultato p = Tieni(PQprepare(c_, nome.constData(), utf8.constData(), n, nullptr));
    if (!Riuscito(p.get())) RaiseEngine(c_, p.get(), text);
    qint64 count = 0;
    Row row;
    try {
      for (;;) {
        row.assign(n, QVariant());
        if (!next(row)) break;
        QVariantList valori;
        for (int i = 0; i < n; ++i) valori << (i < static_cast<int>(row.size()) ? row[i] : QVariant());
        const Valori v(valori);
        Risultato r = Tieni(PQexecPrepared(c_, nome.constData(), n, v.puntatori.data(), nullptr, nullptr, 0));
        if (!Riuscito(r.get())) RaiseEngine(c_, r.get(), text);
        ++count;
      }
    } catch (...) {
      Dealloca(nome);
      throw;
    }
    Dealloca(nome);
    return count;
  }

  QStringList InizioScrittura() const override {
    return {QStringLiteral("BEGIN"), QStringLiteral("SELECT pg_advisory_xact_lock(%1)").arg(kChiaveScrittura)};
  }

  bool InTransazione() const override {
    if (!c_) return false;
    const PGTransactionStatusType s = PQtransactionStatus(c_);
    return s == PQTRANS_INTRANS || s == PQTRANS_INERROR;
  }

  QStringList TableNames() override {
    return Colonna(QStringLiteral("SELECT table_name FROM information_schema.tables WHERE table_schema = "
                                  "current_schema()"),
                   {});
  }

  bool IsTable(const QString& name) override {
    return !Colonna(QStringLiteral("SELECT 1 FROM information_schema.tables WHERE table_schema = current_schema() "
                                   "AND table_type = 'BASE TABLE' AND lower(table_name) = lower($1)"),
                    {name})
                .isEmpty();
  }

  QStringList KeyOf(const QString& table) override {
    return Colonna(QStringLiteral("SELECT a.attname FROM pg_index i JOIN pg_class c ON c.oid = i.indrelid "
                                  "JOIN pg_namespace s ON s.oid = c.relnamespace AND s.nspname = current_schema() "
                                  "JOIN LATERAL unnest(i.indkey) WITH ORDINALITY AS k(n, o) ON true "
                                  "JOIN pg_attribute a ON a.attrelid = c.oid AND a.attnum = k.n "
                                  "WHERE i.indisprimary AND lower(c.relname) = lower($1) ORDER BY k.o"),
                   {table});
  }

  QString DateLiteral(const QDateTime& d) const override {
    return QStringLiteral("TIMESTAMP '") + DateToStorage(d) + QLatin1Char('\'');
  }

  void DimenticaPreparate() override {
    for (const auto& p : std::as_const(preparate_)) Dealloca(p->nome);
    preparate_.clear();
    colonne_.clear();
  }

  void Chiudi() override {
    preparate_.clear();
    if (c_) PQfinish(c_);
    c_ = nullptr;
  }

 private:
  // A statement inside a transaction runs under a savepoint of its own: as on
  // SQLite, a failed statement undoes itself alone, and the transaction goes
  // on with what it had written.
  class Istruzione {
   public:
    Istruzione(Postgres& m, bool proteggi = true)
        : m_(m), attiva_(proteggi && PQtransactionStatus(m.c_) == PQTRANS_INTRANS) {
      if (attiva_) Risultato r = Tieni(PQexec(m_.c_, "SAVEPOINT prestkt_istruzione"));
    }
    void Riuscita() {
      if (attiva_) Risultato r = Tieni(PQexec(m_.c_, "RELEASE SAVEPOINT prestkt_istruzione"));
      attiva_ = false;
    }
    ~Istruzione() {
      if (attiva_) Risultato r = Tieni(PQexec(m_.c_, "ROLLBACK TO SAVEPOINT prestkt_istruzione; "
                                                        "RELEASE SAVEPOINT prestkt_istruzione"));
    }

   private:
    Postgres& m_;
    bool attiva_;
  };

  // The statements that steer transactions, which no savepoint may wrap.
  static bool Controllo(const QString& testo) {
    static const QRegularExpression re(QStringLiteral("^\\s*(BEGIN|COMMIT|ROLLBACK|SAVEPOINT|RELEASE|END)\\b"),
                                       QRegularExpression::CaseInsensitiveOption);
    return re.match(testo).hasMatch();
  }

  void Comando(const QString& sql) { Execute(sql, {}); }

  QStringList Colonna(const QString& sql, const QVariantList& valori) {
    QStringList out;
    const Valori v(valori);
    const QByteArray utf8 = sql.toUtf8();
    Risultato r = Tieni(PQexecParams(c_, utf8.constData(), v.Quanti(), nullptr, v.puntatori.data(), nullptr, nullptr, 0));
    if (!Riuscito(r.get())) return out;
    for (int i = 0; i < PQntuples(r.get()); ++i) out << QString::fromUtf8(PQgetvalue(r.get(), i, 0));
    return out;
  }

  void Dealloca(const QByteArray& nome) {
    if (!c_) return;
    Risultato r = Tieni(PQexec(c_, (QByteArrayLiteral("DEALLOCATE ") + nome).constData()));
  }

  // The system's functions and the case-blind text type, made once per
  // database under a lock, so that two workstations opening at once don't race.
  void Installa() {
    // The last of them made stands for all: a database made by an older program gets the new ones.
    const QString presenti = QStringLiteral(
        "SELECT count(*) FROM pg_proc p JOIN pg_namespace n ON n.oid = p.pronamespace "
        "WHERE n.nspname = ANY (current_schemas(false)) AND p.proname = 'LikeTesto'");
    const auto quante = [&] { return Colonna(presenti, {}).value(0).toInt(); };
    const QStringList funzioni = FunzioniPostgres();
    if (quante() == 0 || Colonna(QStringLiteral("SELECT to_regtype('citext')"), {}).value(0).isEmpty()) {
      Comando(QStringLiteral("BEGIN"));
      try {
        Comando(QStringLiteral("SELECT pg_advisory_xact_lock(%1)").arg(kChiaveScrittura));
        if (Colonna(QStringLiteral("SELECT to_regtype('citext')"), {}).value(0).isEmpty())
          Comando(QStringLiteral("CREATE EXTENSION IF NOT EXISTS citext"));
        if (quante() == 0)
          for (const QString& f : funzioni) Comando(f);
        Comando(QStringLiteral("COMMIT"));
      } catch (...) {
        Risultato r = Tieni(PQexec(c_, "ROLLBACK"));
        throw;
      }
    }
    citext_ = Colonna(QStringLiteral("SELECT coalesce(to_regtype('citext')::oid, 0)"), {}).value(0).toUInt();
  }

  // The schema's type of a column of a table, by the table's OID and the column's number.
  int DaoDellaColonna(Oid tabella, int numero, int* size) {
    const quint64 chiave = (static_cast<quint64>(tabella) << 16) | static_cast<quint64>(numero & 0xffff);
    if (auto it = colonne_.constFind(chiave); it != colonne_.constEnd()) {
      *size = it->second;
      return it->first;
    }
    int dao = 0;
    *size = 0;
    const QStringList nomi = Colonna(QStringLiteral("SELECT c.relname || '|' || a.attname FROM pg_class c JOIN "
                                                    "pg_attribute a ON a.attrelid = c.oid WHERE c.oid = $1::oid "
                                                    "AND a.attnum = $2::int"),
                                     {QString::number(tabella), QString::number(numero)});
    if (!nomi.isEmpty()) {
      const QStringList parti = nomi.front().split(QLatin1Char('|'));
      if (const ColumnDef* def = FindColumn(parti.value(0), parti.value(1))) {
        dao = def->type;
        *size = def->size;
      }
    }
    colonne_.insert(chiave, {dao, *size});
    return dao;
  }

  std::shared_ptr<Preparata> Preparazione(const QString& testo, const Valori& v, const QString& sistema) {
    QString chiave = testo;
    chiave += QLatin1Char('\x1f');
    for (Oid t : v.tipi) chiave += QString::number(t) + QLatin1Char(',');
    if (auto it = preparate_.constFind(chiave); it != preparate_.constEnd()) return *it;
    auto p = std::make_shared<Preparata>();
    p->nome = QByteArrayLiteral("s") + QByteArray::number(++contatore_);
    p->testo = testo;
    const QByteArray utf8 = testo.toUtf8();
    Risultato r = Tieni(PQprepare(c_, p->nome.constData(), utf8.constData(), v.Quanti(), v.tipi.data()));
    if (!Riuscito(r.get())) RaiseEngine(c_, r.get(), testo);
    Risultato d = Tieni(PQdescribePrepared(c_, p->nome.constData()));
    if (!Riuscito(d.get())) RaiseEngine(c_, d.get(), testo);
    const int n = PQnfields(d.get());
    const QStringList exprs = SelectExpressions(sistema);
    for (int i = 0; i < n; ++i) {
      const QString name = QString::fromUtf8(PQfname(d.get(), i));
      const Oid tipo = PQftype(d.get(), i);
      int size = 0;
      int dao = 0;
      if (const Oid tabella = PQftable(d.get(), i); tabella != InvalidOid)
        dao = DaoDellaColonna(tabella, PQftablecol(d.get(), i), &size);
      if (dao == 0 && i < exprs.size()) dao = DaoTypeOfExpression(exprs.at(i), &size);
      if (dao == 0) dao = DaoDelTipo(tipo, PQfmod(d.get(), i), citext_, &size);
      p->daoTypes.push_back(dao);
      p->tipi.push_back(tipo);
      p->fields.push_back(FieldOfDao(name, dao, size));
    }
    if (preparate_.size() >= kMaxPreparate) DimenticaPreparate();
    preparate_.insert(chiave, p);
    return p;
  }

  PGconn* c_ = nullptr;
  Oid citext_ = 0;
  qint64 contatore_ = 0;
  QHash<QString, std::shared_ptr<Preparata>> preparate_;
  QHash<quint64, std::pair<int, int>> colonne_;
};

}  // namespace

std::unique_ptr<Motore> MotorePostgres(const QString& conninfo) { return std::make_unique<Postgres>(conninfo); }

}  // namespace prestkt
