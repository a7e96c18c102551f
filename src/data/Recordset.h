#pragma once
// The disconnected recordset: an in-memory table with typed fields, Null
// values, a filter, a sort, clones that share the rows, and a cursor.
// A recordset that comes from the database (ApriRecordset) carries a write
// cursor: Edit/AddNew/Update/Delete then reach the table as well.
#include <QDateTime>
#include <QString>
#include <QVariant>
#include <functional>
#include <memory>
#include <vector>

#include "Ref.h"
#include "Vb.h"

namespace prestkt {

// Field types, numbered as the ADO DataTypeEnum.
enum DataType {
  adEmpty = 0,
  adSmallInt = 2,
  adInteger = 3,
  adSingle = 4,
  adDouble = 5,
  adCurrency = 6,
  adDate = 7,
  adBoolean = 11,
  adVariant = 12,
  adDecimal = 14,
  adTinyInt = 16,
  adUnsignedTinyInt = 17,
  adBigInt = 20,
  adChar = 129,
  adWChar = 130,
  adNumeric = 131,
  adVarChar = 200,
  adLongVarChar = 201,
  adVarWChar = 202,
  adLongVarWChar = 203,
};

enum FieldAttribute { adFldUpdatable = 0x4, adFldIsNullable = 0x20, adFldMayBeNull = 0x40 };

enum PersistFormat { adPersistADTG = 0, adPersistXML = 1 };

struct FieldDef {
  QString Name;
  int Type = adVarChar;
  int DefinedSize = 255;
  int Attributes = adFldIsNullable | adFldMayBeNull;
  int DaoType = 0;  // the database's own type code when the field came from a table
  bool Nullable() const { return Attributes & (adFldIsNullable | adFldMayBeNull); }
};

using Row = std::vector<QVariant>;

// What a recordset from the database does to its table on Update and Delete.
class WriteCursor {
 public:
  virtual ~WriteCursor() = default;
  virtual void Insert(const std::vector<FieldDef>& fields, const Row& row) = 0;
  virtual void UpdateRow(const std::vector<FieldDef>& fields, const Row& before, const Row& after) = 0;
  virtual void DeleteRow(const std::vector<FieldDef>& fields, const Row& row) = 0;
};

namespace detail {
class Colonna;
}

class Recordset;
using RecordsetPtr = Ref<Recordset>;

class Recordset {
 public:
  Recordset();
  ~Recordset();
  static RecordsetPtr Create() { return RecordsetPtr(std::make_shared<Recordset>()); }

  // Structure. Fields are appended before Open; Open makes the recordset usable.
  void Append(const QString& name, int type, int definedSize = 0,
              int attributes = adFldIsNullable | adFldMayBeNull);
  void Append(const FieldDef& def);
  void Open();
  bool IsOpen() const;
  void Close();  // drops structure and rows of this recordset (clones keep theirs)

  int FieldCount() const;
  const FieldDef& FieldInfo(int index) const;     // raises 3265 out of range
  int FieldIndex(const QString& name) const;      // -1 when absent, name without regard to case
  const std::vector<FieldDef>& FieldDefs() const;

  // Values of the current record. Unknown names raise 3265, no current record
  // raises 3021, a value that does not fit its field raises -2147217887.
  QVariant Value(const QString& name) const;
  QVariant Value(int index) const;
  void SetValue(const QString& name, const QVariant& v);
  void SetValue(int index, const QVariant& v);

  class FieldRef {
   public:
    FieldRef(Recordset* rs, int index) : rs_(rs), index_(index) {}
    QVariant Value() const { return rs_->Value(index_); }
    operator QVariant() const { return Value(); }
    FieldRef& operator=(const QVariant& v) { rs_->SetValue(index_, v); return *this; }
    const FieldDef& Info() const { return rs_->FieldInfo(index_); }
    QString Name() const { return Info().Name; }

   private:
    Recordset* rs_;
    int index_;
  };
  FieldRef operator[](const QString& name);  // raises 3265 for an unknown name
  FieldRef operator[](int index);

  // Edits. AddNew starts a new record, Edit an edit of the current one (needed
  // only by recordsets of the database); Update keeps it; a move keeps it as
  // well in memory, and drops it on a recordset of the database.
  void AddNew();
  void Edit();
  void Update();
  void CancelUpdate();
  void Delete();  // the current record; the cursor stays on it until it moves
  bool EditMode() const;

  // Cursor.
  bool Eof() const;
  bool Bof() const;
  void MoveFirst();
  void MoveLast();
  void MoveNext();
  void MovePrevious();
  int RecordCount() const;       // rows under the filter
  // The current record's bookmark; a value of the record a bookmark names,
  // read without moving to it (Null once the record is deleted).
  int Bookmark() const;
  QVariant ValueAt(int bookmark, int index) const;
  int AbsolutePosition() const;  // 1-based; -1 when not on a record
  void SetAbsolutePosition(int pos);

  // Filter ("0" when none) and Sort. An invalid filter raises 3001 and leaves
  // the previous one in force.
  QString Filter() const;
  void SetFilter(const QString& filter);
  QString Sort() const;
  void SetSort(const QString& sort);

  // Same rows, own filter, sort and position.
  RecordsetPtr Clone() const;

  // Writes the recordset to a file: XML in the rowset schema, or a binary form.
  void Save(const QString& path, int format = adPersistXML) const;

  // Bulk append of rows already in the field order and types (used by copies).
  void AppendRows(std::vector<Row>&& rows);
  // Appends rows a value at a time, in the fields' order, each stored as
  // AppendRows would store it made a QVariant (a whole number as WholeNumber
  // makes it). A row of too many or too few values raises BadArguments and
  // is dropped whole. Fine brings the recordset up to the rows appended.
  class Aggiunta {
   public:
    explicit Aggiunta(Recordset& rs);
    void Nullo();
    void Si(bool v);
    void Intero(qint64 v);
    void Reale(double v);
    void Testo(const QString& v);
    void Data(const QDateTime& v);
    void FineRiga();
    void Fine();
    void Riserva(qsizetype righe);  // room for that many rows more

   private:
    detail::Colonna& Prossima();
    [[noreturn]] void Scarta(size_t valori);  // drops the row begun
    Recordset& rs_;
    bool wasEmpty_;
    size_t campo_ = 0;
  };
  // Appends the live rows of from in its order: its field j goes to field
  // target[j] (-1: nowhere) as SetValue would store it, and a field that no
  // field of from feeds takes its value in base. A value that does not fit
  // goes to misfit, and its answer is stored instead. A column whose values
  // all fit is shared with from until either side writes.
  void AppendFrom(const Recordset& from, const std::vector<int>& target, const Row& base,
                  const std::function<QVariant(int field, const QVariant& value)>& misfit);
  // The value as field f holds it; raises -2147217887 when it does not fit.
  static QVariant FitValue(const FieldDef& f, const QVariant& v);

  // Database side.
  void SetWriteCursor(std::shared_ptr<WriteCursor> cursor);
  bool HasWriteCursor() const;

 private:
  void Appended(bool wasEmpty);  // brings the view up to rows just stored

  struct Store;
  struct Impl;
  std::shared_ptr<Store> store_;
  std::unique_ptr<Impl> d_;
};

}  // namespace prestkt
