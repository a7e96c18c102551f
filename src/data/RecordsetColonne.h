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
#include <vector>

#include "RecordsetFilter.h"

namespace prestkt::detail {

class Colonna {
 public:
  Colonna() = default;
  explicit Colonna(FieldKind kind) : kind_(kind) {}

  qsizetype Size() const { return stato_.size(); }
  QVariant Get(qsizetype i) const;
  bool IsNull(qsizetype i) const { return stato_[i] == kNull; }
  // The text of row i when the column holds it as a text; null otherwise.
  const QString* Testo(qsizetype i) const {
    return kind_ == FieldKind::Text && stato_[i] == kValore ? &testi_[i] : nullptr;
  }
  void Push(const QVariant& v);
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
  char Forma(const QVariant& v) const;  // kValore when v is in the column's own form
  void Scrivi(qsizetype i, const QVariant& v, char forma);

  FieldKind kind_ = FieldKind::Variant;
  QByteArray stato_;
  QList<qint64> interi_;      // whole numbers and Yes/No
  QList<double> reali_;       // reals and currency
  QList<QDateTime> date_;
  QList<QString> testi_;
  QList<QVariant> varianti_;  // a column of any type
  QHash<qsizetype, QVariant> altri_;  // by row: the values of another form
};

}  // namespace prestkt::detail
