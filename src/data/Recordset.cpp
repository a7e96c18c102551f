// The disconnected recordset.
//
// The rows live in a Store shared by the recordset and its clones, one column
// per field. A row is never moved inside the store: it is appended at the end
// and, when deleted, only marked (and emptied). Each recordset keeps its own view: the store
// indices of the rows that passed its filter, in its sort order, and a
// position in that view. A view catches up with rows added or deleted through
// other recordsets lazily (Sync), from the count of rows it has seen and the
// store's log of deletions. Deleted rows stay in a view as dead entries, so
// that a cursor on a deleted row still knows which row followed it; they are
// swept out once they become a large part of the view.
#include "Recordset.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "RecordsetColonne.h"
#include "RecordsetFilter.h"

namespace prestkt {

using detail::FieldKind;

namespace {

constexpr int kBof = -1;
constexpr int kEof = -2;

[[noreturn]] void DoesNotFit(const FieldDef& f) {
  Raise(err::MultipleStep,
        QStringLiteral("Multiple-step operation generated errors. Check each status value. (%1)")
            .arg(f.Name));
}

qint64 ToInteger(const QVariant& v, qint64 lo, qint64 hi) {
  switch (v.typeId()) {
    case QMetaType::Int:
    case QMetaType::LongLong:
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::UInt:
    case QMetaType::Char:
    case QMetaType::SChar:
    case QMetaType::UChar: {
      const qint64 n = v.toLongLong();
      if (n < lo || n > hi) Raise(err::Overflow);
      return n;
    }
    default: break;
  }
  // Halves go to the even neighbour, as the conversions of the platform do.
  const double d = std::nearbyint(CDbl(v));
  if (!std::isfinite(d) || d < static_cast<double>(lo) || d > static_cast<double>(hi))
    Raise(err::Overflow);
  if (d >= 9223372036854775807.0) return std::numeric_limits<qint64>::max();
  return static_cast<qint64>(d);
}

// The value v as the field holds it; raises -2147217887 when it does not fit.
QVariant ToField(const FieldDef& f, const QVariant& v) {
  if (IsNull(v)) {
    if (!f.Nullable()) DoesNotFit(f);
    return QVariant();
  }
  try {
    switch (detail::KindOf(f.Type)) {
      case FieldKind::Int8: return static_cast<int>(ToInteger(v, -128, 127));
      case FieldKind::UInt8: return static_cast<int>(ToInteger(v, 0, 255));
      case FieldKind::Int16: return static_cast<int>(ToInteger(v, -32768, 32767));
      case FieldKind::Int32:
        return static_cast<int>(ToInteger(v, std::numeric_limits<qint32>::min(),
                                          std::numeric_limits<qint32>::max()));
      case FieldKind::Int64:
        return static_cast<qlonglong>(ToInteger(v, std::numeric_limits<qint64>::min(),
                                                std::numeric_limits<qint64>::max()));
      case FieldKind::Real: {
        const double d = CDbl(v);
        if (f.Type == adSingle && std::fabs(d) > std::numeric_limits<float>::max()) DoesNotFit(f);
        return d;
      }
      case FieldKind::Currency: {
        const double d = CDbl(v);
        if (std::fabs(d) > 922337203685477.0) DoesNotFit(f);
        return Round(d, 4);
      }
      case FieldKind::Date: {
        const QDateTime d = CDate(v);
        if (!d.isValid()) DoesNotFit(f);
        return d;
      }
      case FieldKind::Bool: return CBool(v);
      case FieldKind::Text: {
        QString s = v.typeId() == QMetaType::QString ? v.toString() : CStr(v);
        const int limit = detail::TextLimit(f);
        if (limit > 0 && s.size() > limit) DoesNotFit(f);
        return s;
      }
      case FieldKind::Variant: return v;
    }
  } catch (const VbError& e) {
    if (e.Number() == err::MultipleStep) throw;
    DoesNotFit(f);
  }
  return v;
}

bool SameValue(const QVariant& a, const QVariant& b) {
  if (a.isValid() != b.isValid()) return false;
  if (!a.isValid()) return true;
  return a.typeId() == b.typeId() && a == b;
}

bool SameRow(const Row& a, const Row& b) {
  if (a.size() != b.size()) return false;
  for (size_t i = 0; i < a.size(); ++i)
    if (!SameValue(a[i], b[i])) return false;
  return true;
}

}  // namespace

struct Recordset::Store {
  std::vector<FieldDef> fields;
  detail::Colonne cols;
  std::vector<char> deleted;   // by row; its size is the count of rows
  std::vector<int> deleteLog;  // store indices in the order they were deleted
  std::shared_ptr<WriteCursor> cursor;

  size_t Count() const { return deleted.size(); }
  Row RowAt(size_t r) const {
    Row row(cols.size());
    for (size_t f = 0; f < cols.size(); ++f) row[f] = cols[f].Get(static_cast<qsizetype>(r));
    return row;
  }
  void Push(const Row& row) {
    for (size_t f = 0; f < cols.size(); ++f) cols[f].Push(row[f]);
    deleted.push_back(0);
  }
  void SetRow(size_t r, const Row& row) {
    for (size_t f = 0; f < cols.size(); ++f) cols[f].Set(static_cast<qsizetype>(r), row[f]);
  }
};

struct Recordset::Impl {
  enum class Mode { None, Edit, Add };

  bool open = false;
  QString filterText;  // as set; empty when there is no filter
  detail::FilterPtr filter;
  QString sortText;
  std::vector<detail::SortKey> sortKeys;

  std::vector<int> view;     // store indices
  std::vector<char> inView;  // by store index: a live row of this view
  int dead = 0;              // deleted rows still in view
  size_t seenRows = 0;
  size_t seenDeletes = 0;
  int pos = kEof;  // index into view, or kBof / kEof

  Mode mode = Mode::None;
  Row buffer;
  int savedPos = kEof;  // where AddNew was called

  int LiveCount() const { return static_cast<int>(view.size()) - dead; }

  bool Passes(const Store& s, size_t id) const {
    return !s.deleted[id] && (!filter || filter->Match(s.cols, static_cast<qsizetype>(id)));
  }

  void Rebuild(const Store& s) {
    view.clear();
    inView.assign(s.Count(), 0);
    for (size_t i = 0; i < s.Count(); ++i) {
      if (Passes(s, i)) {
        view.push_back(static_cast<int>(i));
        inView[i] = 1;
      }
    }
    detail::SortRows(view, s.cols, sortKeys);
    dead = 0;
    seenRows = s.Count();
    seenDeletes = s.deleteLog.size();
    pos = view.empty() ? kEof : 0;
  }

  void Sync(const Store& s) {
    if (seenRows < s.Count()) {
      inView.resize(s.Count(), 0);
      for (size_t i = seenRows; i < s.Count(); ++i) {
        if (Passes(s, i)) {
          view.push_back(static_cast<int>(i));
          inView[i] = 1;
        }
      }
      seenRows = s.Count();
    }
    while (seenDeletes < s.deleteLog.size()) {
      const int id = s.deleteLog[seenDeletes++];
      if (static_cast<size_t>(id) < inView.size() && inView[id]) {
        inView[id] = 0;
        ++dead;
      }
    }
    if (dead > 64 && static_cast<size_t>(dead) * 2 > view.size() && mode != Mode::Add) Compact(s);
  }

  // Drops the dead entries, keeping the one under the cursor.
  void Compact(const Store& s) {
    std::vector<int> kept;
    kept.reserve(view.size() - dead);
    int newPos = pos;
    int stillDead = 0;
    for (size_t k = 0; k < view.size(); ++k) {
      const bool here = static_cast<int>(k) == pos;
      if (here) newPos = static_cast<int>(kept.size());
      if (!s.deleted[view[k]]) {
        kept.push_back(view[k]);
      } else if (here) {
        kept.push_back(view[k]);
        ++stillDead;
      }
    }
    view.swap(kept);
    pos = newPos;
    dead = stillDead;
  }

  int NextLive(const Store& s, int from) const {
    for (int k = std::max(from, 0); k < static_cast<int>(view.size()); ++k)
      if (!s.deleted[view[k]]) return k;
    return kEof;
  }
  int PrevLive(const Store& s, int from) const {
    for (int k = std::min(from, static_cast<int>(view.size()) - 1); k >= 0; --k)
      if (!s.deleted[view[k]]) return k;
    return kBof;
  }

  bool OnLiveRow(const Store& s) const { return pos >= 0 && !s.deleted[view[pos]]; }

  bool AtEof() const { return mode != Mode::Add && (pos == kEof || (pos == kBof && LiveCount() == 0)); }
  bool AtBof() const { return mode != Mode::Add && (pos == kBof || (pos == kEof && LiveCount() == 0)); }

  void Update(Store& s) {
    if (mode == Mode::Add) {
      if (s.cursor) s.cursor->Insert(s.fields, buffer);
      Sync(s);
      const int id = static_cast<int>(s.Count());
      s.Push(buffer);
      view.push_back(id);
      inView.resize(s.Count(), 0);
      inView[id] = 1;
      seenRows = s.Count();
      pos = static_cast<int>(view.size()) - 1;
      mode = Mode::None;
      buffer.clear();
    } else if (mode == Mode::Edit) {
      if (!OnLiveRow(s)) {
        mode = Mode::None;
        buffer.clear();
        Raise(err::NoCurrentRecord);
      }
      const Row row = s.RowAt(view[pos]);
      if (!SameRow(row, buffer)) {
        if (s.cursor) s.cursor->UpdateRow(s.fields, row, buffer);
        s.SetRow(view[pos], buffer);
      }
      mode = Mode::None;
      buffer.clear();
    }
  }

  void Cancel() {
    if (mode == Mode::Add) pos = savedPos;
    mode = Mode::None;
    buffer.clear();
  }

  // Before the cursor moves: a pending edit is kept in memory, dropped on a
  // recordset of the database.
  void LeaveEdit(Store& s) {
    if (mode == Mode::None) return;
    if (s.cursor) Cancel();
    else Update(s);
  }
};

QVariant Recordset::FitValue(const FieldDef& f, const QVariant& v) { return ToField(f, v); }

Recordset::Recordset() : store_(std::make_shared<Store>()), d_(std::make_unique<Impl>()) {}
Recordset::~Recordset() = default;

#define PRESTKT_REQUIRE_OPEN() \
  do {                         \
    if (!d_->open) Raise(err::OperationNotAllowed); \
  } while (0)

// ------------------------------------------------------------------ structure

void Recordset::Append(const QString& name, int type, int definedSize, int attributes) {
  FieldDef f;
  f.Name = name;
  f.Type = type;
  f.DefinedSize = definedSize;
  f.Attributes = attributes;
  Append(f);
}

void Recordset::Append(const FieldDef& def) {
  if (d_->open) Raise(err::OperationNotAllowed);
  if (def.Name.trimmed().isEmpty()) Raise(err::BadArguments);
  if (FieldIndex(def.Name) >= 0)
    Raise(err::BadArguments, QStringLiteral("Field '%1' already appended").arg(def.Name));
  FieldDef f = def;
  if (detail::KindOf(f.Type) == FieldKind::Text && f.DefinedSize <= 0 && !detail::IsLongText(f.Type))
    f.DefinedSize = 255;
  store_->fields.push_back(std::move(f));
}

void Recordset::Open() {
  if (d_->open) Raise(err::OperationNotAllowed);
  Store& s = *store_;
  s.cols.clear();
  for (const FieldDef& f : s.fields) s.cols.emplace_back(detail::KindOf(f.Type));
  d_->open = true;
  d_->Rebuild(s);
}

bool Recordset::IsOpen() const { return d_->open; }

void Recordset::Close() {
  if (!d_->open) return;
  store_ = std::make_shared<Store>();
  d_ = std::make_unique<Impl>();
}

int Recordset::FieldCount() const { return static_cast<int>(store_->fields.size()); }

const FieldDef& Recordset::FieldInfo(int index) const {
  if (index < 0 || index >= FieldCount()) Raise(err::ItemNotFound);
  return store_->fields[index];
}

int Recordset::FieldIndex(const QString& name) const {
  const auto& fields = store_->fields;
  for (size_t i = 0; i < fields.size(); ++i)
    if (fields[i].Name.compare(name, Qt::CaseInsensitive) == 0) return static_cast<int>(i);
  return -1;
}

const std::vector<FieldDef>& Recordset::FieldDefs() const { return store_->fields; }

// ------------------------------------------------------------------ values

QVariant Recordset::Value(const QString& name) const {
  PRESTKT_REQUIRE_OPEN();
  const int i = FieldIndex(name);
  if (i < 0) Raise(err::ItemNotFound, QStringLiteral("Item not found in this collection: %1").arg(name));
  return Value(i);
}

QVariant Recordset::Value(int index) const {
  PRESTKT_REQUIRE_OPEN();
  if (index < 0 || index >= FieldCount()) Raise(err::ItemNotFound);
  if (d_->mode != Impl::Mode::None) return d_->buffer[index];
  if (!d_->OnLiveRow(*store_)) Raise(err::NoCurrentRecord);
  return store_->cols[index].Get(d_->view[d_->pos]);
}

void Recordset::SetValue(const QString& name, const QVariant& v) {
  PRESTKT_REQUIRE_OPEN();
  const int i = FieldIndex(name);
  if (i < 0) Raise(err::ItemNotFound, QStringLiteral("Item not found in this collection: %1").arg(name));
  SetValue(i, v);
}

void Recordset::SetValue(int index, const QVariant& v) {
  PRESTKT_REQUIRE_OPEN();
  if (index < 0 || index >= FieldCount()) Raise(err::ItemNotFound);
  Store& s = *store_;
  if (d_->mode == Impl::Mode::None && !d_->OnLiveRow(s)) Raise(err::NoCurrentRecord);
  QVariant value = ToField(s.fields[index], v);
  if (d_->mode == Impl::Mode::None) {  // the first write starts the edit
    d_->buffer = s.RowAt(d_->view[d_->pos]);
    d_->mode = Impl::Mode::Edit;
  }
  d_->buffer[index] = std::move(value);
}

Recordset::FieldRef Recordset::operator[](const QString& name) {
  PRESTKT_REQUIRE_OPEN();
  const int i = FieldIndex(name);
  if (i < 0) Raise(err::ItemNotFound, QStringLiteral("Item not found in this collection: %1").arg(name));
  return FieldRef(this, i);
}

Recordset::FieldRef Recordset::operator[](int index) {
  if (index < 0 || index >= FieldCount()) Raise(err::ItemNotFound);
  return FieldRef(this, index);
}

// ------------------------------------------------------------------ edits

void Recordset::AddNew() {
  PRESTKT_REQUIRE_OPEN();
  Store& s = *store_;
  d_->LeaveEdit(s);
  d_->Sync(s);
  d_->savedPos = d_->pos;
  d_->buffer.assign(s.fields.size(), QVariant());
  d_->mode = Impl::Mode::Add;
}

void Recordset::Edit() {
  PRESTKT_REQUIRE_OPEN();
  if (d_->mode != Impl::Mode::None) return;
  if (!d_->OnLiveRow(*store_)) Raise(err::NoCurrentRecord);
  d_->buffer = store_->RowAt(d_->view[d_->pos]);
  d_->mode = Impl::Mode::Edit;
}

void Recordset::Update() {
  PRESTKT_REQUIRE_OPEN();
  d_->Update(*store_);
}

void Recordset::CancelUpdate() {
  PRESTKT_REQUIRE_OPEN();
  d_->Cancel();
}

void Recordset::Delete() {
  PRESTKT_REQUIRE_OPEN();
  Store& s = *store_;
  if (d_->mode == Impl::Mode::Add) {  // the record being added is simply given up
    d_->Cancel();
    return;
  }
  if (!d_->OnLiveRow(s)) Raise(err::NoCurrentRecord);
  const int id = d_->view[d_->pos];
  if (s.cursor) s.cursor->DeleteRow(s.fields, s.RowAt(id));
  d_->mode = Impl::Mode::None;
  d_->buffer.clear();
  s.deleted[id] = 1;
  s.deleteLog.push_back(id);
  s.SetRow(id, Row(s.fields.size()));
  d_->Sync(s);
}

bool Recordset::EditMode() const { return d_->open && d_->mode != Impl::Mode::None; }

// ------------------------------------------------------------------ cursor

bool Recordset::Eof() const {
  PRESTKT_REQUIRE_OPEN();
  d_->Sync(*store_);
  return d_->AtEof();
}

bool Recordset::Bof() const {
  PRESTKT_REQUIRE_OPEN();
  d_->Sync(*store_);
  return d_->AtBof();
}

void Recordset::MoveFirst() {
  PRESTKT_REQUIRE_OPEN();
  Store& s = *store_;
  d_->LeaveEdit(s);
  d_->Sync(s);
  d_->pos = d_->NextLive(s, 0);
}

void Recordset::MoveLast() {
  PRESTKT_REQUIRE_OPEN();
  Store& s = *store_;
  d_->LeaveEdit(s);
  d_->Sync(s);
  d_->pos = d_->PrevLive(s, static_cast<int>(d_->view.size()) - 1);
}

void Recordset::MoveNext() {
  PRESTKT_REQUIRE_OPEN();
  Store& s = *store_;
  d_->LeaveEdit(s);
  d_->Sync(s);
  if (d_->AtEof()) Raise(err::NoCurrentRecord);
  d_->pos = d_->NextLive(s, d_->pos == kBof ? 0 : d_->pos + 1);
}

void Recordset::MovePrevious() {
  PRESTKT_REQUIRE_OPEN();
  Store& s = *store_;
  d_->LeaveEdit(s);
  d_->Sync(s);
  if (d_->AtBof()) Raise(err::NoCurrentRecord);
  d_->pos = d_->PrevLive(s, d_->pos == kEof ? static_cast<int>(d_->view.size()) - 1 : d_->pos - 1);
}

int Recordset::RecordCount() const {
  PRESTKT_REQUIRE_OPEN();
  d_->Sync(*store_);
  return d_->LiveCount();
}

int Recordset::Bookmark() const {
  PRESTKT_REQUIRE_OPEN();
  const Store& s = *store_;
  d_->Sync(s);
  if (d_->mode == Impl::Mode::Add || !d_->OnLiveRow(s)) Raise(err::NoCurrentRecord);
  return d_->view[d_->pos];
}

QVariant Recordset::ValueAt(int bookmark, int index) const {
  PRESTKT_REQUIRE_OPEN();
  const Store& s = *store_;
  if (bookmark < 0 || static_cast<size_t>(bookmark) >= s.Count() || index < 0 || index >= FieldCount())
    Raise(err::BadArguments);
  return s.cols[index].Get(bookmark);
}

int Recordset::AbsolutePosition() const {
  PRESTKT_REQUIRE_OPEN();
  const Store& s = *store_;
  d_->Sync(s);
  if (d_->mode == Impl::Mode::Add || !d_->OnLiveRow(s)) return -1;
  if (d_->dead == 0) return d_->pos + 1;
  int n = 0;
  for (int k = 0; k <= d_->pos; ++k)
    if (!s.deleted[d_->view[k]]) ++n;
  return n;
}

void Recordset::SetAbsolutePosition(int position) {
  PRESTKT_REQUIRE_OPEN();
  Store& s = *store_;
  d_->Sync(s);
  if (position < 1 || position > d_->LiveCount()) Raise(err::BadArguments);
  d_->LeaveEdit(s);
  d_->Sync(s);
  if (d_->dead == 0) {
    d_->pos = position - 1;
    return;
  }
  int n = 0;
  for (int k = 0; k < static_cast<int>(d_->view.size()); ++k) {
    if (!s.deleted[d_->view[k]] && ++n == position) {
      d_->pos = k;
      return;
    }
  }
}

// ------------------------------------------------------------------ filter and sort

QString Recordset::Filter() const {
  return d_->filterText.isEmpty() ? QStringLiteral("0") : d_->filterText;
}

void Recordset::SetFilter(const QString& filter) {
  PRESTKT_REQUIRE_OPEN();
  Store& s = *store_;
  const QString t = filter.trimmed();
  detail::FilterPtr compiled;
  if (!t.isEmpty() && t != QLatin1String("0")) compiled = detail::ParseFilter(t, s.fields);
  d_->LeaveEdit(s);
  d_->filter = std::move(compiled);
  d_->filterText = d_->filter ? t : QString();
  d_->Rebuild(s);
}

QString Recordset::Sort() const { return d_->sortText; }

void Recordset::SetSort(const QString& sort) {
  PRESTKT_REQUIRE_OPEN();
  Store& s = *store_;
  std::vector<detail::SortKey> keys = detail::ParseSort(sort, s.fields);
  d_->LeaveEdit(s);
  d_->sortKeys = std::move(keys);
  d_->sortText = d_->sortKeys.empty() ? QString() : sort.trimmed();
  d_->Rebuild(s);
}

RecordsetPtr Recordset::Clone() const {
  PRESTKT_REQUIRE_OPEN();
  auto rs = Create();
  rs->store_ = store_;
  rs->d_->open = true;
  rs->d_->Rebuild(*store_);
  return rs;
}

// ------------------------------------------------------------------ save and bulk

void Recordset::Save(const QString& path, int format) const {
  PRESTKT_REQUIRE_OPEN();
  if (format != adPersistXML && format != adPersistADTG) Raise(err::BadArguments);
  const Store& s = *store_;
  d_->Sync(s);
  std::vector<Row> rows;
  rows.reserve(d_->view.size());
  for (int id : d_->view)
    if (!s.deleted[id]) rows.push_back(s.RowAt(id));
  std::vector<const Row*> righe;
  for (const Row& r : rows) righe.push_back(&r);
  detail::SaveRows(path, format, s.fields, righe);
}

void Recordset::AppendRows(std::vector<Row>&& rows) {
  PRESTKT_REQUIRE_OPEN();
  Store& s = *store_;
  for (const Row& r : rows)
    if (r.size() != s.fields.size())
      Raise(err::BadArguments, QStringLiteral("Row of %1 values for %2 fields").arg(r.size()).arg(s.fields.size()));
  if (rows.empty()) return;
  d_->Sync(s);
  const bool wasEmpty = d_->LiveCount() == 0;
  for (const Row& r : rows) s.Push(r);
  rows.clear();
  Appended(wasEmpty);
}

Recordset::Aggiunta::Aggiunta(Recordset& rs) : rs_(rs) {
  if (!rs.d_->open) Raise(err::OperationNotAllowed);
  rs.d_->Sync(*rs.store_);
  wasEmpty_ = rs.d_->LiveCount() == 0;
}

void Recordset::Aggiunta::Scarta(size_t valori) {
  Store& s = *rs_.store_;
  for (detail::Colonna& c : s.cols) c.Tronca(static_cast<qsizetype>(s.Count()));
  campo_ = 0;
  Raise(err::BadArguments, QStringLiteral("Row of %1 values for %2 fields").arg(valori).arg(s.cols.size()));
}

detail::Colonna& Recordset::Aggiunta::Prossima() {
  Store& s = *rs_.store_;
  if (campo_ >= s.cols.size()) Scarta(campo_ + 1);
  return s.cols[campo_++];
}

void Recordset::Aggiunta::Nullo() { Prossima().PushNullo(); }
void Recordset::Aggiunta::Si(bool v) { Prossima().PushSi(v); }
void Recordset::Aggiunta::Intero(qint64 v) { Prossima().PushIntero(v); }
void Recordset::Aggiunta::Reale(double v) { Prossima().PushReale(v); }
void Recordset::Aggiunta::Testo(const QString& v) { Prossima().PushTesto(v); }
void Recordset::Aggiunta::Data(const QDateTime& v) { Prossima().PushData(v); }

void Recordset::Aggiunta::FineRiga() {
  Store& s = *rs_.store_;
  if (campo_ != s.cols.size()) Scarta(campo_);
  campo_ = 0;
  s.deleted.push_back(0);
}

void Recordset::Aggiunta::Riserva(qsizetype righe) {
  Store& s = *rs_.store_;
  const qsizetype tutte = static_cast<qsizetype>(s.Count()) + righe;
  for (detail::Colonna& c : s.cols) c.Reserve(tutte);
  s.deleted.reserve(static_cast<size_t>(tutte));
}

void Recordset::Aggiunta::Fine() { rs_.Appended(wasEmpty_); }

void Recordset::Appended(bool wasEmpty) {
  Store& s = *store_;
  if (!d_->sortKeys.empty() && d_->mode == Impl::Mode::None) {
    d_->Rebuild(s);
    return;
  }
  d_->Sync(s);
  if (wasEmpty && d_->mode == Impl::Mode::None && d_->pos < 0) d_->pos = d_->NextLive(s, 0);
}

void Recordset::AppendFrom(const Recordset& from, const std::vector<int>& target, const Row& base,
                           const std::function<QVariant(int, const QVariant&)>& misfit) {
  PRESTKT_REQUIRE_OPEN();
  if (!from.d_->open) Raise(err::OperationNotAllowed);
  Store& s = *store_;
  const Store& f = *from.store_;
  if (base.size() != s.fields.size() || target.size() != f.fields.size()) Raise(err::BadArguments);
  from.d_->Sync(f);
  std::vector<int> ids;
  ids.reserve(from.d_->view.size());
  for (int id : from.d_->view)
    if (!f.deleted[id]) ids.push_back(id);
  if (ids.empty()) return;
  d_->Sync(s);
  const bool wasEmpty = d_->LiveCount() == 0;
  // Into an empty store from every row of another, in the order they are
  // kept, a column whose values all fit is shared instead of copied.
  std::vector<char> shared(s.fields.size(), 0);
  bool whole = &s != &f && s.Count() == 0 && ids.size() == f.Count();
  for (size_t k = 0; whole && k < ids.size(); ++k) whole = ids[k] == static_cast<int>(k);
  if (whole) {
    std::vector<int> source(s.fields.size(), -1);
    for (size_t j = 0; j < target.size(); ++j)
      if (target[j] >= 0) source[target[j]] = static_cast<int>(j);
    for (size_t i = 0; i < s.fields.size(); ++i) {
      if (source[i] < 0 || !f.cols[source[i]].Entra(s.fields[i])) continue;
      s.cols[i] = f.cols[source[i]].Come(detail::KindOf(s.fields[i].Type));
      shared[i] = 1;
    }
  }
  const bool all = std::find(shared.begin(), shared.end(), 0) == shared.end();
  Row r;
  for (int id : ids) {
    if (!all) {
      r = base;
      for (size_t j = 0; j < target.size(); ++j) {
        const int i = target[j];
        if (i < 0 || shared[i]) continue;
        const QVariant v = f.cols[j].Get(id);
        try {
          r[i] = ToField(s.fields[i], v);
        } catch (const VbError&) {
          r[i] = misfit(i, v);
        }
      }
      for (size_t i = 0; i < s.cols.size(); ++i)
        if (!shared[i]) s.cols[i].Push(r[i]);
    }
    s.deleted.push_back(0);
  }
  Appended(wasEmpty);
}

void Recordset::SetWriteCursor(std::shared_ptr<WriteCursor> cursor) { store_->cursor = std::move(cursor); }

bool Recordset::HasWriteCursor() const { return store_->cursor != nullptr; }

}  // namespace prestkt
