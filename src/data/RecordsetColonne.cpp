#include "RecordsetColonne.h"

#include <cmath>
#include <limits>

#include "Vb.h"

namespace prestkt::detail {

namespace {

// The range of whole numbers a field kind takes.
void Limiti(FieldKind k, qint64* lo, qint64* hi) {
  switch (k) {
    case FieldKind::Int8: *lo = -128, *hi = 127; break;
    case FieldKind::UInt8: *lo = 0, *hi = 255; break;
    case FieldKind::Int16: *lo = -32768, *hi = 32767; break;
    case FieldKind::Int32:
      *lo = std::numeric_limits<qint32>::min(), *hi = std::numeric_limits<qint32>::max();
      break;
    default:
      *lo = std::numeric_limits<qint64>::min(), *hi = std::numeric_limits<qint64>::max();
      break;
  }
}

}  // namespace

char Colonna::Forma(const QVariant& v) const {
  if (!v.isValid()) return kNull;
  const int t = v.typeId();
  switch (kind_) {
    case FieldKind::Int8:
    case FieldKind::UInt8:
    case FieldKind::Int16:
    case FieldKind::Int32: return t == QMetaType::Int ? kValore : kAltro;
    case FieldKind::Int64: return t == QMetaType::LongLong ? kValore : kAltro;
    case FieldKind::Real:
    case FieldKind::Currency: return t == QMetaType::Double ? kValore : kAltro;
    case FieldKind::Date: return t == QMetaType::QDateTime ? kValore : kAltro;
    case FieldKind::Bool: return t == QMetaType::Bool ? kValore : kAltro;
    case FieldKind::Text: return t == QMetaType::QString ? kValore : kAltro;
    case FieldKind::Variant: return kValore;
  }
  return kAltro;
}

void Colonna::Push(const QVariant& v) {
  const char forma = Forma(v);
  const bool valore = forma == kValore;
  SegnaNuova(forma);
  switch (kind_) {
    case FieldKind::Int8:
    case FieldKind::UInt8:
    case FieldKind::Int16:
    case FieldKind::Int32: interi_.append(valore ? *static_cast<const int*>(v.constData()) : 0); break;
    case FieldKind::Int64: interi_.append(valore ? *static_cast<const qlonglong*>(v.constData()) : 0); break;
    case FieldKind::Bool: interi_.append(valore && *static_cast<const bool*>(v.constData())); break;
    case FieldKind::Real:
    case FieldKind::Currency: reali_.append(valore ? *static_cast<const double*>(v.constData()) : 0); break;
    case FieldKind::Date:
      date_.append(valore ? *static_cast<const QDateTime*>(v.constData()) : QDateTime());
      break;
    case FieldKind::Text: testi_.append(valore ? *static_cast<const QString*>(v.constData()) : QString()); break;
    case FieldKind::Variant: varianti_.append(v); break;
  }
  if (forma == kAltro) altri_.insert(righe_ - 1, v);
}

void Colonna::SegnaNuova(char forma) {
  if (!conStati_ && forma != kValore) {
    stato_ = QList<char>(righe_, kValore);
    conStati_ = true;
  }
  if (conStati_) stato_.append(forma);
  ++righe_;
}

void Colonna::Segna(qsizetype i, char forma) {
  if (!conStati_) {
    if (forma == kValore) return;
    stato_ = QList<char>(righe_, kValore);
    conStati_ = true;
  }
  stato_[i] = forma;
}

void Colonna::Tronca(qsizetype n) {
  if (n >= Size()) return;
  for (qsizetype i = n; i < Size(); ++i)
    if (Stato(i) == kAltro) altri_.remove(i);
  righe_ = n;
  if (conStati_) stato_.resize(n);
  if (interi_.size() > n) interi_.resize(n);
  if (reali_.size() > n) reali_.resize(n);
  if (date_.size() > n) date_.resize(n);
  if (testi_.size() > n) testi_.resize(n);
  if (varianti_.size() > n) varianti_.resize(n);
}

void Colonna::Set(qsizetype i, const QVariant& v) {
  if (Stato(i) == kAltro) altri_.remove(i);
  Scrivi(i, v, Forma(v));
}

// Row i takes v; a Null or a value of another form leaves the slot empty, so
// that it holds no text.
void Colonna::Scrivi(qsizetype i, const QVariant& v, char forma) {
  Segna(i, forma);
  const bool valore = forma == kValore;
  switch (kind_) {
    case FieldKind::Int8:
    case FieldKind::UInt8:
    case FieldKind::Int16:
    case FieldKind::Int32: interi_[i] = valore ? *static_cast<const int*>(v.constData()) : 0; break;
    case FieldKind::Int64: interi_[i] = valore ? *static_cast<const qlonglong*>(v.constData()) : 0; break;
    case FieldKind::Bool: interi_[i] = valore && *static_cast<const bool*>(v.constData()); break;
    case FieldKind::Real:
    case FieldKind::Currency: reali_[i] = valore ? *static_cast<const double*>(v.constData()) : 0; break;
    case FieldKind::Date: date_[i] = valore ? *static_cast<const QDateTime*>(v.constData()) : QDateTime(); break;
    case FieldKind::Text: testi_[i] = valore ? *static_cast<const QString*>(v.constData()) : QString(); break;
    case FieldKind::Variant: varianti_[i] = v; break;
  }
  if (forma == kAltro) altri_.insert(i, v);
}

QVariant Colonna::Get(qsizetype i) const {
  switch (Stato(i)) {
    case kNull: return QVariant();
    case kAltro: return altri_.value(i);
    default: break;
  }
  switch (kind_) {
    case FieldKind::Int8:
    case FieldKind::UInt8:
    case FieldKind::Int16:
    case FieldKind::Int32: return QVariant(static_cast<int>(interi_[i]));
    case FieldKind::Int64: return QVariant(static_cast<qlonglong>(interi_[i]));
    case FieldKind::Bool: return QVariant(interi_[i] != 0);
    case FieldKind::Real:
    case FieldKind::Currency: return QVariant(reali_[i]);
    case FieldKind::Date: return QVariant(date_[i]);
    case FieldKind::Text: return QVariant(testi_[i]);
    case FieldKind::Variant: return varianti_[i];
  }
  return QVariant();
}

void Colonna::Reserve(qsizetype n) {
  if (conStati_) stato_.reserve(n);
  switch (kind_) {
    case FieldKind::Int8:
    case FieldKind::UInt8:
    case FieldKind::Int16:
    case FieldKind::Int32:
    case FieldKind::Int64:
    case FieldKind::Bool: interi_.reserve(n); break;
    case FieldKind::Real:
    case FieldKind::Currency: reali_.reserve(n); break;
    case FieldKind::Date: date_.reserve(n); break;
    case FieldKind::Text: testi_.reserve(n); break;
    case FieldKind::Variant: varianti_.reserve(n); break;
  }
}

// Mirrors what the recordset does to a value written into field f: true only
// when each value would come out of it unchanged, in type and in value.
bool Colonna::Entra(const FieldDef& f) const {
  const FieldKind k = KindOf(f.Type);
  const qsizetype n = Size();
  for (qsizetype i = 0; conStati_ && i < n; ++i) {
    if (stato_[i] == kAltro) return false;
    if (stato_[i] == kNull && !f.Nullable()) return false;
  }
  auto ogni = [&](auto ok) {
    for (qsizetype i = 0; i < n; ++i)
      if (Stato(i) == kValore && !ok(i)) return false;
    return true;
  };
  // Whole numbers are held alike whatever their width: only the range matters.
  if (Intero32(k)) {
    if (!Intero32(kind_) && kind_ != FieldKind::Int64) return false;
    qint64 lo, hi;
    Limiti(k, &lo, &hi);
    return ogni([&](qsizetype i) { return interi_[i] >= lo && interi_[i] <= hi; });
  }
  switch (k) {
    case FieldKind::Int64: return kind_ == FieldKind::Int64 || Intero32(kind_);
    case FieldKind::Bool: return kind_ == FieldKind::Bool;
    case FieldKind::Real:
      if (kind_ != FieldKind::Real && kind_ != FieldKind::Currency) return false;
      if (f.Type != adSingle) return true;
      return ogni([&](qsizetype i) { return std::fabs(reali_[i]) <= std::numeric_limits<float>::max(); });
    case FieldKind::Currency:
      if (kind_ != FieldKind::Real && kind_ != FieldKind::Currency) return false;
      return ogni([&](qsizetype i) {
        return std::fabs(reali_[i]) <= 922337203685477.0 && Round(reali_[i], 4) == reali_[i];
      });
    case FieldKind::Date:
      return kind_ == FieldKind::Date && ogni([&](qsizetype i) { return date_[i].isValid(); });
    case FieldKind::Text: {
      if (kind_ != FieldKind::Text) return false;
      const int limite = TextLimit(f);
      return limite <= 0 || ogni([&](qsizetype i) { return testi_[i].size() <= limite; });
    }
    case FieldKind::Variant: return kind_ == FieldKind::Variant;
    default: return false;
  }
}

}  // namespace prestkt::detail
