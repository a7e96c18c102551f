#pragma once
// Internals of the recordset shared by its sources: how a field type is held
// in memory, the compiled filter, the sort keys and the writers of Save.
// Nothing here is meant for the rest of the component.
#include <QDateTime>
#include <QString>
#include <QStringView>
#include <memory>
#include <vector>

#include "Recordset.h"

namespace prestkt::detail {

// The memory form of a field type.
enum class FieldKind { Int8, UInt8, Int16, Int32, Int64, Real, Currency, Date, Bool, Text, Variant };
FieldKind KindOf(int type);
bool IsLongText(int type);
// The largest text a field takes; 0 when it has no bound.
int TextLimit(const FieldDef& f);

// A date reduced to a number that orders as the wall-clock date and time:
// milliseconds from the start of the Julian day count.
qint64 DateKey(const QDateTime& d);
qint64 DateKey(const QDate& d);
// Reads "yyyy-mm-dd[( |T)hh:nn[:ss]]" or "dd/mm/yyyy [hh:nn[:ss]]"; with
// monthFirst the second form is read as "mm/dd/yyyy" (the # literals of a filter).
bool ParseDateText(QStringView s, bool monthFirst, QDateTime* out);
// Reads a number with a decimal point, or with a decimal comma when the text
// has no point.
bool ParseNumberText(QStringView s, double* out);

class Colonna;  // the values of one field (RecordsetColonne.h)
using Colonne = std::vector<Colonna>;

// A compiled filter: evaluated once per row.
class FilterExpr {
 public:
  virtual ~FilterExpr() = default;
  virtual bool Match(const Colonne& cols, qsizetype row) const = 0;
};
using FilterPtr = std::shared_ptr<const FilterExpr>;

// Raises VbError(err::BadArguments) for a text that is not a valid filter.
FilterPtr ParseFilter(const QString& text, const std::vector<FieldDef>& fields);

struct SortKey {
  int field = 0;
  bool descending = false;
};
// "F1 DESC, F2 [ASC]"; an unknown field raises 3265, a malformed text 3001.
std::vector<SortKey> ParseSort(const QString& text, const std::vector<FieldDef>& fields);
// Orders ids (indices of rows) by the keys; equal rows keep their order.
void SortRows(std::vector<int>& ids, const Colonne& cols, const std::vector<SortKey>& keys);

// Writes fields and rows to path in the given persist format; raises
// err::PathFileAccess when the file cannot be written.
void SaveRows(const QString& path, int format, const std::vector<FieldDef>& fields,
              const std::vector<const Row*>& rows);

}  // namespace prestkt::detail
