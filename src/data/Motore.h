#pragma once
// What a Database asks of the engine under it. The SQL handed over is already
// the engine's own (see AdattaSql); values go as QVariants and come to a
// RaccoltaRighe, dates as QDateTime, a YesNo as -1/0 in the tables. Every
// failure raises VbError with the engine's message and the statement.
#include <QByteArray>
#include <QByteArrayView>
#include <QDateTime>
#include <QHash>
#include <functional>
#include <memory>
#include <vector>

#include "Database.h"

namespace prestkt {

// Where a query's rows go while they are read: the fields first, then the
// values of each row in the fields' order, each in the form the engine read
// it, then the end of the row. A whole number is the int of a value when it
// fits 32 bits, a qlonglong beyond (WholeNumber).
class RaccoltaRighe {
 public:
  virtual ~RaccoltaRighe() = default;
  // righe: how many rows follow, when the engine knows it beforehand; -1 otherwise.
  virtual void Campi(const std::vector<FieldDef>& fields, qsizetype righe) = 0;
  virtual void Nullo() = 0;
  virtual void Si(bool v) = 0;  // a Yes/No
  virtual void Intero(qint64 v) = 0;
  virtual void Reale(double v) = 0;
  virtual void Testo(const QString& v) = 0;
  virtual void Data(const QDateTime& v) = 0;
  virtual void FineRiga() = 0;
};

// The rows as QVariants, a row at a time.
class RaccoltaVarianti : public RaccoltaRighe {
 public:
  void Nullo() override { row_.emplace_back(); }
  void Si(bool v) override { row_.emplace_back(v); }
  void Intero(qint64 v) override { row_.push_back(WholeNumber(v)); }
  void Reale(double v) override { row_.emplace_back(v); }
  void Testo(const QString& v) override { row_.emplace_back(v); }
  void Data(const QDateTime& v) override { row_.emplace_back(v); }
  void FineRiga() override {
    Riga(row_);
    row_.clear();
  }

 protected:
  // May take the row's values.
  virtual void Riga(Row& row) = 0;

 private:
  Row row_;
};

// Hands a value read before to righe, in the form it holds.
inline void Consegna(const QVariant& v, RaccoltaRighe& righe) {
  switch (v.typeId()) {
    case QMetaType::UnknownType: return righe.Nullo();
    case QMetaType::Bool: return righe.Si(v.toBool());
    case QMetaType::Int:
    case QMetaType::LongLong: return righe.Intero(v.toLongLong());
    case QMetaType::Double: return righe.Reale(v.toDouble());
    case QMetaType::QDateTime: return righe.Data(v.toDateTime());
    default: return righe.Testo(v.toString());
  }
}

class Motore {
 public:
  virtual ~Motore() = default;
  // sistema: the statement as the system wrote it, which tells the types of
  // computed columns.
  virtual void Select(const QString& testo, const QVariantList& valori, const QString& sistema, RaccoltaRighe& righe) = 0;
  virtual int Execute(const QString& testo, const QVariantList& valori) = 0;  // rows changed
  // One INSERT prepared once and run for every row next gives.
  virtual qint64 InsertMany(const QString& table, const QStringList& columns,
                            const std::function<bool(Row&)>& next) = 0;
  // The statements that open a writer's transaction: the database is taken
  // for writing at once, and a second writer waits for it.
  virtual QStringList InizioScrittura() const = 0;
  virtual bool InTransazione() const = 0;
  virtual QStringList TableNames() = 0;  // tables and views
  virtual bool IsTable(const QString& name) = 0;
  virtual QStringList KeyOf(const QString& table) = 0;  // primary key, for tables outside the schema
  virtual QString DateLiteral(const QDateTime& d) const = 0;
  virtual void DimenticaPreparate() = 0;  // after a change of the tables' shape
  virtual void Chiudi() = 0;
};

// The same bytes read again and again (a customer's name on each of its
// models, the day of a run of rows) give one value, made once and shared: a
// small cache for one column of one query, keyed by the bytes the engine hands.
template <class T>
class Ricorrenti {
 public:
  template <class Fai>
  const T& Valore(const char* s, int n, Fai fai) {
    if (n > kLungo) return lungo_ = fai();
    if (posti_.empty()) posti_.resize(kPosti);
    const QByteArrayView byte(s, n);
    Posto& p = posti_[qHash(byte) & (kPosti - 1)];
    if (!p.usato || p.byte != byte) {
      p.byte = byte.toByteArray();
      p.valore = fai();
      p.usato = true;
    }
    return p.valore;
  }

 private:
  static constexpr size_t kPosti = 512;  // a power of two
  static constexpr int kLungo = 80;       // longer texts are rarely the same
  struct Posto {
    bool usato = false;
    QByteArray byte;
    T valore;
  };
  std::vector<Posto> posti_;
  T lungo_;
};

// The caches of one query's columns.
struct RicorrentiColonne {
  explicit RicorrentiColonne(int n) : testi(n), date(n) {}
  std::vector<Ricorrenti<QString>> testi;
  std::vector<Ricorrenti<QDateTime>> date;
};

// The field of a recordset that mirrors a database field of that type.
FieldDef FieldOfDao(const QString& name, int daoType, int size);

std::unique_ptr<Motore> MotoreSqlite(void* handle);
// conninfo: a libpq connection string or URL.
std::unique_ptr<Motore> MotorePostgres(const QString& conninfo);

}  // namespace prestkt
