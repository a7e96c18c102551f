#pragma once
// How the recordset holds its values: one column per field, the values in a
// plain array of the field's memory form (whole numbers, reals, dates, texts)
// and a byte per row that tells a Null, or a value of another form kept aside
// as it came. A hundred thousand rows cost a few large arrays instead of a
// million small allocations, every value reads back exactly as it was stored,
// and a copy of a column shares its arrays until one side writes.
#include <QByteArray>
#include <QDateTime>
#include <QHash>
#include <QList>
#include <QString>
#include <QVariant>
#include <limits>
#include <vector>

#include "RecordsetFilter.h"
#include "Vb.h"

namespace prestkt::detail {

inline bool Intero32(FieldKind k) {
  return k == FieldKind::Int8 || k == FieldKind::UInt8 || k == FieldKind::Int16 || k == FieldKind::Int32;
}

class Colonna {
 public:
  Colonna() = default;
  explicit Colonna(FieldKind kind) : kind_(kind) {}

  qsizetype Size() const { return righe_; }
  QVariant Get(qsizetype i) const;
  bool IsNull(qsizetype i) const { return Stato(i) == kNull; }
  // The text of row i when the column holds it as a text; null otherwise.
  const QString* Testo(qsizetype i) const {
    return kind_ == FieldKind::Text && Stato(i) == kValore ? &testi_[i] : nullptr;
  }
  // The whole number of row i when the column holds it as one (not a
  // Yes/No); null otherwise.
  const qint64* Intero(qsizetype i) const {
    return (Intero32(kind_) || kind_ == FieldKind::Int64) && Stato(i) == kValore ? &interi_[i] : nullptr;
  }
  void Push(const QVariant& v);
  // Each as Push of the value as a QVariant (a whole number as WholeNumber
  // makes it), without making one when the value is in the column's own form.
  void PushNullo() { Push(QVariant()); }
  void PushSi(bool v) {
    if (kind_ == FieldKind::Bool) Proprio(interi_, v);
    else Push(QVariant(v));
  }
  void PushIntero(qint64 v) {
    const bool int32 = v >= std::numeric_limits<int>::min() && v <= std::numeric_limits<int>::max();
    if (int32 ? Intero32(kind_) : kind_ == FieldKind::Int64) Proprio(interi_, v);
    else Push(WholeNumber(v));
  }
  void PushReale(double v) {
    if (kind_ == FieldKind::Real || kind_ == FieldKind::Currency) Proprio(reali_, v);
    else Push(QVariant(v));
  }
  void PushTesto(const QString& v) {
    if (kind_ == FieldKind::Text) Proprio(testi_, v);
    else Push(QVariant(v));
  }
  void PushData(const QDateTime& v) {
    if (kind_ == FieldKind::Date) Proprio(date_, v);
    else Push(QVariant(v));
  }
  void Tronca(qsizetype n);  // keeps the first n rows
  void Set(qsizetype i, const QVariant& v);
  void Reserve(qsizetype n);
  // True when every value is already what field f makes of it, so that a
  // recordset with that field may share the column as it is.
  bool Entra(const FieldDef& f) const;
  // The column as a field of kind k holds it; only for a k that Entra allows.
  Colonna Come(FieldKind k) const {
    Colonna c = *this;
    c.kind_ = k;
    return c;
  }

 private:
  enum : char { kValore = 0, kNull = 1, kAltro = 2 };
  template <class Lista, class T>
  void Proprio(Lista& lista, const T& v) {
    if (conStati_) stato_.append(kValore);
    ++righe_;
    lista.append(v);
  }
  char Stato(qsizetype i) const { return conStati_ ? stato_[i] : kValore; }
  void SegnaNuova(char forma);            // the state of a row appended
  void Segna(qsizetype i, char forma);  // the state of row i
  char Forma(const QVariant& v) const;  // kValore when v is in the column's own form
  void Scrivi(qsizetype i, const QVariant& v, char forma);

  FieldKind kind_ = FieldKind::Variant;
  qsizetype righe_ = 0;
  // By row, once a row holds no value in the column's form: until then,
  // every row holds one and no state is kept.
  bool conStati_ = false;
  QList<char> stato_;
  QList<qint64> interi_;      // whole numbers and Yes/No
  QList<double> reali_;       // reals and currency
  QList<QDateTime> date_;
  QList<QString> testi_;
  QList<QVariant> varianti_;  // a column of any type
  QHash<qsizetype, QVariant> altri_;  // by row: the values of another form
};

}  // namespace prestkt::detail

