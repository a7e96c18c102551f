// Filter and sort of the recordset. A filter text is parsed once into a small
// tree whose leaves already hold their field index and a constant prepared in
// every form a row value may need (number, date key, text), so that a row is
// judged without allocations for the common types.
#include "RecordsetFilter.h"

#include "RecordsetColonne.h"

#include <QDate>
#include <QRegularExpression>
#include <QStringList>
#include <QTime>
#include <algorithm>
#include <cmath>

#include "Vb.h"

namespace prestkt::detail {

// ------------------------------------------------------------------ types

FieldKind KindOf(int type) {
  switch (type) {
    case adTinyInt: return FieldKind::Int8;
    case adUnsignedTinyInt: return FieldKind::UInt8;
    case adSmallInt: return FieldKind::Int16;
    case adInteger: return FieldKind::Int32;
    case adBigInt: return FieldKind::Int64;
    case adSingle:
    case adDouble:
    case adNumeric:
    case adDecimal: return FieldKind::Real;
    case adCurrency: return FieldKind::Currency;
    case adDate:
    case 133:  // adDBDate
    case 134:  // adDBTime
    case 135:  // adDBTimeStamp
      return FieldKind::Date;
    case adBoolean: return FieldKind::Bool;
    case adChar:
    case adWChar:
    case adVarChar:
    case adVarWChar:
    case adLongVarChar:
    case adLongVarWChar: return FieldKind::Text;
    default: return FieldKind::Variant;
  }
}

bool IsLongText(int type) { return type == adLongVarChar || type == adLongVarWChar; }

int TextLimit(const FieldDef& f) {
  if (KindOf(f.Type) != FieldKind::Text) return 0;
  if (f.DefinedSize > 0) return f.DefinedSize;
  return IsLongText(f.Type) ? 0 : 255;
}

qint64 DateKey(const QDate& d) { return d.toJulianDay() * qint64(86400000); }

qint64 DateKey(const QDateTime& d) {
  return DateKey(d.date()) + d.time().msecsSinceStartOfDay();
}

namespace {

bool IsDigit(QChar c) { return c >= QLatin1Char('0') && c <= QLatin1Char('9'); }

// Reads up to maxDigits decimal digits at i; false when there is none.
bool ReadDigits(QStringView s, qsizetype& i, int maxDigits, int* value, int* count) {
  int v = 0, n = 0;
  while (i < s.size() && n < maxDigits && IsDigit(s[i])) {
    v = v * 10 + (s[i].unicode() - '0');
    ++i;
    ++n;
  }
  if (n == 0) return false;
  *value = v;
  if (count) *count = n;
  return true;
}

void SkipSpaces(QStringView s, qsizetype& i) {
  while (i < s.size() && s[i].isSpace()) ++i;
}

}  // namespace

bool ParseDateText(QStringView s, bool monthFirst, QDateTime* out) {
  s = s.trimmed();
  qsizetype i = 0;
  int a, b, c, na, nc;
  if (!ReadDigits(s, i, 4, &a, &na)) return false;
  if (i >= s.size()) return false;
  const QChar sep = s[i];
  if (sep != QLatin1Char('-') && sep != QLatin1Char('/') && sep != QLatin1Char('.')) return false;
  ++i;
  if (!ReadDigits(s, i, 2, &b, nullptr)) return false;
  if (i >= s.size() || s[i] != sep) return false;
  ++i;
  if (!ReadDigits(s, i, 4, &c, &nc)) return false;
  int y, m, d;
  if (na == 4) {
    y = a, m = b, d = c;
    if (nc > 2) return false;
  } else {
    if (na > 2) return false;
    if (monthFirst) m = a, d = b;
    else d = a, m = b;
    if (nc == 4) y = c;
    else if (nc <= 2) y = c < 30 ? 2000 + c : 1900 + c;
    else return false;
  }
  const QDate date(y, m, d);
  if (!date.isValid()) return false;
  QTime time(0, 0);
  if (i < s.size()) {
    if (!s[i].isSpace() && s[i] != QLatin1Char('T')) return false;
    ++i;
    SkipSpaces(s, i);
    int h, n, sec = 0;
    if (!ReadDigits(s, i, 2, &h, nullptr)) return false;
    if (i >= s.size() || s[i] != QLatin1Char(':')) return false;
    ++i;
    if (!ReadDigits(s, i, 2, &n, nullptr)) return false;
    if (i < s.size() && s[i] == QLatin1Char(':')) {
      ++i;
      if (!ReadDigits(s, i, 2, &sec, nullptr)) return false;
    }
    SkipSpaces(s, i);
    if (i < s.size()) {
      const QStringView rest = s.mid(i);
      const bool am = rest.compare(QLatin1String("AM"), Qt::CaseInsensitive) == 0;
      const bool pm = rest.compare(QLatin1String("PM"), Qt::CaseInsensitive) == 0;
      if (!am && !pm) return false;
      if (h < 1 || h > 12) return false;
      if (am && h == 12) h = 0;
      if (pm && h != 12) h += 12;
    }
    time = QTime(h, n, sec);
    if (!time.isValid()) return false;
  }
  *out = QDateTime(date, time);
  return true;
}

bool ParseNumberText(QStringView s, double* out) {
  s = s.trimmed();
  if (s.isEmpty()) return false;
  bool digit = false, comma = false, point = false;
  for (QChar ch : s) {
    if (IsDigit(ch)) digit = true;
    else if (ch == QLatin1Char(',')) comma = true;
    else if (ch == QLatin1Char('.')) point = true;
    else if (ch != QLatin1Char('-') && ch != QLatin1Char('+') && ch != QLatin1Char('e') &&
             ch != QLatin1Char('E'))
      return false;
  }
  if (!digit) return false;
  bool ok = false;
  double d;
  if (comma) {
    if (point) return false;
    QString t = s.toString();
    if (t.count(QLatin1Char(',')) != 1) return false;
    t.replace(QLatin1Char(','), QLatin1Char('.'));
    d = t.toDouble(&ok);
  } else {
    d = s.toDouble(&ok);
  }
  if (!ok || !std::isfinite(d)) return false;
  *out = d;
  return true;
}

// ------------------------------------------------------------------ filter

namespace {

[[noreturn]] void BadFilter(const QString& why, const QString& text) {
  Raise(err::BadArguments, QStringLiteral("Invalid filter (%1): %2").arg(why, text));
}

enum class Op { Eq, Ne, Lt, Gt, Le, Ge };

bool Apply(Op op, int c) {
  switch (op) {
    case Op::Eq: return c == 0;
    case Op::Ne: return c != 0;
    case Op::Lt: return c < 0;
    case Op::Gt: return c > 0;
    case Op::Le: return c <= 0;
    case Op::Ge: return c >= 0;
  }
  return false;
}

template <typename T>
int Cmp(T a, T b) {
  return a < b ? -1 : (b < a ? 1 : 0);
}

// The right-hand side of a comparison, in every form a row value may ask for.
struct Constant {
  enum class Kind { Number, Text, Date, Bool } kind = Kind::Number;
  QString text;
  bool hasNum = false;
  double num = 0;
  bool isInt = false;
  qint64 i64 = 0;
  bool hasDate = false;
  qint64 date = 0;
  bool hasBool = false;
  bool boolean = false;

  void SetNumber(double d) {
    hasNum = true;
    num = d;
    isInt = std::trunc(d) == d && std::fabs(d) < 9.2e18;
    if (isInt) i64 = static_cast<qint64>(d);
    hasBool = true;
    boolean = d != 0;
  }
};

class AndNode : public FilterExpr {
 public:
  std::vector<std::unique_ptr<FilterExpr>> items;
  bool Match(const Colonne& c, qsizetype row) const override {
    for (const auto& e : items)
      if (!e->Match(c, row)) return false;
    return true;
  }
};

class OrNode : public FilterExpr {
 public:
  std::vector<std::unique_ptr<FilterExpr>> items;
  bool Match(const Colonne& c, qsizetype row) const override {
    for (const auto& e : items)
      if (e->Match(c, row)) return true;
    return false;
  }
};

class NullNode : public FilterExpr {
 public:
  NullNode(int field, bool wantNull) : field_(field), wantNull_(wantNull) {}
  bool Match(const Colonne& c, qsizetype row) const override { return c[field_].IsNull(row) == wantNull_; }

 private:
  int field_;
  bool wantNull_;
};

class FalseNode : public FilterExpr {
 public:
  bool Match(const Colonne&, qsizetype) const override { return false; }
};

class CompareNode : public FilterExpr {
 public:
  CompareNode(int field, Op op, Constant k) : field_(field), op_(op), k_(std::move(k)) {}

  bool Match(const Colonne& cols, qsizetype row) const override {
    int c;
    if (const QString* s = cols[field_].Testo(row)) {
      if (!Text(*s, &c)) return false;
      return Apply(op_, c);
    }
    if (const qint64* x = cols[field_].Intero(row)) {
      if (!Integer(*x, &c)) return false;
      return Apply(op_, c);
    }
    const QVariant v = cols[field_].Get(row);
    if (!v.isValid()) return false;
    if (!Order(v, &c)) return false;
    return Apply(op_, c);
  }

 private:
  bool Number(double x, int* c) const {
    if (!k_.hasNum) return false;
    *c = Cmp(x, k_.num);
    return true;
  }
  bool Integer(qint64 x, int* c) const {
    if (!k_.hasNum) return false;
    *c = k_.isInt ? Cmp(x, k_.i64) : Cmp(static_cast<double>(x), k_.num);
    return true;
  }
  bool Date(qint64 key, int* c) const {
    if (!k_.hasDate) return false;
    *c = Cmp(key, k_.date);
    return true;
  }
  bool Text(QStringView s, int* c) const {
    switch (k_.kind) {
      case Constant::Kind::Number: {
        double x;
        if (ParseNumberText(s, &x)) return Number(x, c);
        break;
      }
      case Constant::Kind::Date: {
        QDateTime d;
        if (!ParseDateText(s, false, &d)) return false;
        return Date(DateKey(d), c);
      }
      default: break;
    }
    const int r = s.compare(k_.text, Qt::CaseInsensitive);
    *c = r < 0 ? -1 : (r > 0 ? 1 : 0);
    return true;
  }

  bool Order(const QVariant& v, int* c) const {
    switch (v.typeId()) {
      case QMetaType::Int: return Integer(*static_cast<const int*>(v.constData()), c);
      case QMetaType::LongLong: return Integer(*static_cast<const qlonglong*>(v.constData()), c);
      case QMetaType::Double: return Number(*static_cast<const double*>(v.constData()), c);
      case QMetaType::Short:
      case QMetaType::UShort:
      case QMetaType::UInt:
      case QMetaType::Char:
      case QMetaType::SChar:
      case QMetaType::UChar: return Integer(v.toLongLong(), c);
      case QMetaType::ULongLong:
      case QMetaType::Float: return Number(v.toDouble(), c);
      case QMetaType::Bool: {
        const bool b = *static_cast<const bool*>(v.constData());
        if (op_ == Op::Eq || op_ == Op::Ne) {
          if (!k_.hasBool) return false;
          *c = b == k_.boolean ? 0 : 1;
          return true;
        }
        return Number(b ? -1.0 : 0.0, c);
      }
      case QMetaType::QString: return Text(*static_cast<const QString*>(v.constData()), c);
      case QMetaType::QDateTime:
        return Date(DateKey(*static_cast<const QDateTime*>(v.constData())), c);
      case QMetaType::QDate: return Date(DateKey(*static_cast<const QDate*>(v.constData())), c);
      default: return Text(v.toString(), c);
    }
  }

  int field_;
  Op op_;
  Constant k_;
};

// Like: * and % stand for any sequence, ? and _ for one character; case is ignored.
class LikeNode : public FilterExpr {
 public:
  LikeNode(int field, const QString& pattern) : field_(field) {
    auto isAny = [](QChar ch) { return ch == QLatin1Char('*') || ch == QLatin1Char('%'); };
    auto isOne = [](QChar ch) { return ch == QLatin1Char('?') || ch == QLatin1Char('_'); };
    bool single = false;
    for (QChar ch : pattern) single = single || isOne(ch);
    qsizetype b = 0, e = pattern.size();
    while (b < e && isAny(pattern[b])) ++b;
    while (e > b && isAny(pattern[e - 1])) --e;
    bool inner = false;
    for (qsizetype i = b; i < e; ++i) inner = inner || isAny(pattern[i]);
    if (!single && !inner) {
      literal_ = pattern.mid(b, e - b);
      const bool lead = b > 0, trail = e < pattern.size();
      mode_ = lead && trail ? Mode::Contains
              : lead        ? Mode::Suffix
              : trail       ? Mode::Prefix
                            : Mode::Exact;
    } else {
      mode_ = Mode::General;
      for (QChar ch : pattern) {
        if (isAny(ch)) pattern_.push_back(kAny);
        else if (isOne(ch)) pattern_.push_back(kOne);
        else pattern_.push_back(static_cast<char32_t>(ch.toCaseFolded().unicode()));
      }
    }
  }

  bool Match(const Colonne& cols, qsizetype row) const override {
    if (const QString* s = cols[field_].Testo(row)) return MatchText(*s);
    const QVariant v = cols[field_].Get(row);
    if (!v.isValid()) return false;
    if (v.typeId() == QMetaType::QString) return MatchText(*static_cast<const QString*>(v.constData()));
    return MatchText(CStr(v));
  }

 private:
  enum class Mode { Exact, Prefix, Suffix, Contains, General };
  static constexpr char32_t kAny = 0x110000;
  static constexpr char32_t kOne = 0x110001;

  bool MatchText(QStringView s) const {
    switch (mode_) {
      case Mode::Exact: return s.compare(literal_, Qt::CaseInsensitive) == 0;
      case Mode::Prefix: return s.startsWith(literal_, Qt::CaseInsensitive);
      case Mode::Suffix: return s.endsWith(literal_, Qt::CaseInsensitive);
      case Mode::Contains: return s.contains(literal_, Qt::CaseInsensitive);
      case Mode::General: return Wild(s);
    }
    return false;
  }

  // Greedy match with one step of backtracking to the last '*'.
  bool Wild(QStringView s) const {
    const qsizetype pn = static_cast<qsizetype>(pattern_.size());
    qsizetype si = 0, pi = 0, star = -1, mark = 0;
    while (si < s.size()) {
      if (pi < pn && pattern_[pi] == kAny) {
        star = pi++;
        mark = si;
      } else if (pi < pn && (pattern_[pi] == kOne ||
                             pattern_[pi] == static_cast<char32_t>(s[si].toCaseFolded().unicode()))) {
        ++si;
        ++pi;
      } else if (star >= 0) {
        pi = star + 1;
        si = ++mark;
      } else {
        return false;
      }
    }
    while (pi < pn && pattern_[pi] == kAny) ++pi;
    return pi == pn;
  }

  int field_;
  Mode mode_ = Mode::Exact;
  QString literal_;
  std::vector<char32_t> pattern_;
};

// ------------------------------------------------------------------ tokens

enum class Tok { End, LParen, RParen, Op, Word, Name, Number, Text, Date };

struct Token {
  Tok type = Tok::End;
  QString text;
  qsizetype pos = 0;
};

bool IsWordStart(QChar c) { return c.isLetter() || c == QLatin1Char('_'); }
bool IsWordChar(QChar c) { return c.isLetterOrNumber() || c == QLatin1Char('_'); }

std::vector<Token> Tokenize(const QString& s) {
  std::vector<Token> out;
  qsizetype i = 0;
  const qsizetype n = s.size();
  while (true) {
    while (i < n && s[i].isSpace()) ++i;
    Token t;
    t.pos = i;
    if (i >= n) {
      out.push_back(t);
      break;
    }
    const QChar c = s[i];
    if (c == QLatin1Char('(')) {
      t.type = Tok::LParen;
      ++i;
    } else if (c == QLatin1Char(')')) {
      t.type = Tok::RParen;
      ++i;
    } else if (c == QLatin1Char('=')) {
      t.type = Tok::Op;
      t.text = QStringLiteral("=");
      ++i;
    } else if (c == QLatin1Char('<') || c == QLatin1Char('>')) {
      t.type = Tok::Op;
      t.text = c;
      ++i;
      if (i < n && (s[i] == QLatin1Char('=') || (c == QLatin1Char('<') && s[i] == QLatin1Char('>')))) {
        t.text += s[i];
        ++i;
      }
    } else if (c == QLatin1Char('\'')) {
      t.type = Tok::Text;
      ++i;
      bool closed = false;
      while (i < n) {
        if (s[i] == QLatin1Char('\'')) {
          if (i + 1 < n && s[i + 1] == QLatin1Char('\'')) {
            t.text += QLatin1Char('\'');
            i += 2;
            continue;
          }
          ++i;
          closed = true;
          break;
        }
        t.text += s[i++];
      }
      if (!closed) BadFilter(QStringLiteral("unterminated text"), s);
    } else if (c == QLatin1Char('#')) {
      t.type = Tok::Date;
      const qsizetype end = s.indexOf(QLatin1Char('#'), i + 1);
      if (end < 0) BadFilter(QStringLiteral("unterminated date"), s);
      t.text = s.mid(i + 1, end - i - 1);
      i = end + 1;
    } else if (c == QLatin1Char('[')) {
      t.type = Tok::Name;
      const qsizetype end = s.indexOf(QLatin1Char(']'), i + 1);
      if (end < 0) BadFilter(QStringLiteral("unterminated name"), s);
      t.text = s.mid(i + 1, end - i - 1).trimmed();
      i = end + 1;
    } else if (IsDigit(c) || c == QLatin1Char('.') ||
               ((c == QLatin1Char('-') || c == QLatin1Char('+')) && i + 1 < n &&
                (IsDigit(s[i + 1]) || s[i + 1] == QLatin1Char('.')))) {
      t.type = Tok::Number;
      const qsizetype start = i;
      if (c == QLatin1Char('-') || c == QLatin1Char('+')) ++i;
      bool digits = false;
      while (i < n && IsDigit(s[i])) ++i, digits = true;
      if (i < n && s[i] == QLatin1Char('.')) {
        ++i;
        while (i < n && IsDigit(s[i])) ++i, digits = true;
      }
      if (digits && i < n && (s[i] == QLatin1Char('e') || s[i] == QLatin1Char('E'))) {
        qsizetype j = i + 1;
        if (j < n && (s[j] == QLatin1Char('-') || s[j] == QLatin1Char('+'))) ++j;
        if (j < n && IsDigit(s[j])) {
          i = j;
          while (i < n && IsDigit(s[i])) ++i;
        }
      }
      if (!digits || (i < n && IsWordChar(s[i]))) BadFilter(QStringLiteral("malformed number"), s);
      t.text = s.mid(start, i - start);
    } else if (IsWordStart(c)) {
      t.type = Tok::Word;
      const qsizetype start = i;
      while (i < n && IsWordChar(s[i])) ++i;
      t.text = s.mid(start, i - start);
    } else {
      BadFilter(QStringLiteral("unexpected '%1'").arg(c), s);
    }
    out.push_back(t);
  }
  return out;
}

bool IsKeyword(const Token& t, const char* word) {
  return t.type == Tok::Word && t.text.compare(QLatin1String(word), Qt::CaseInsensitive) == 0;
}

// ------------------------------------------------------------------ parser

class Parser {
 public:
  Parser(const QString& text, const std::vector<FieldDef>& fields)
      : text_(text), fields_(fields), toks_(Tokenize(text)) {}

  std::unique_ptr<FilterExpr> Parse() {
    auto e = ParseOr();
    if (Peek().type != Tok::End) Fail(QStringLiteral("unexpected text"));
    return e;
  }

 private:
  [[noreturn]] void Fail(const QString& why) const {
    BadFilter(QStringLiteral("%1 at %2").arg(why).arg(Peek().pos + 1), text_);
  }
  static constexpr int kMaxNesting = 256;
  const Token& Peek() const { return toks_[idx_]; }
  const Token& Next() { return toks_[idx_ < toks_.size() - 1 ? idx_++ : idx_]; }

  std::unique_ptr<FilterExpr> ParseOr() {
    auto first = ParseAnd();
    if (!IsKeyword(Peek(), "OR")) return first;
    auto node = std::make_unique<OrNode>();
    node->items.push_back(std::move(first));
    while (IsKeyword(Peek(), "OR")) {
      Next();
      node->items.push_back(ParseAnd());
    }
    return node;
  }

  std::unique_ptr<FilterExpr> ParseAnd() {
    auto first = ParsePrimary();
    if (!IsKeyword(Peek(), "AND")) return first;
    auto node = std::make_unique<AndNode>();
    node->items.push_back(std::move(first));
    while (IsKeyword(Peek(), "AND")) {
      Next();
      node->items.push_back(ParsePrimary());
    }
    return node;
  }

  std::unique_ptr<FilterExpr> ParsePrimary() {
    if (Peek().type == Tok::LParen) {
      // A bound on the nesting keeps a pasted heap of brackets off the stack.
      if (++depth_ > kMaxNesting) Fail(QStringLiteral("nested too deep"));
      Next();
      auto e = ParseOr();
      --depth_;
      if (Peek().type != Tok::RParen) Fail(QStringLiteral("')' expected"));
      Next();
      return e;
    }
    return ParseComparison();
  }

  int FieldOf(const Token& t) const {
    for (size_t i = 0; i < fields_.size(); ++i)
      if (fields_[i].Name.compare(t.text, Qt::CaseInsensitive) == 0) return static_cast<int>(i);
    BadFilter(QStringLiteral("unknown field '%1'").arg(t.text), text_);
  }

  std::unique_ptr<FilterExpr> ParseComparison() {
    const Token& ft = Peek();
    if (ft.type != Tok::Name && ft.type != Tok::Word) Fail(QStringLiteral("field name expected"));
    if (ft.type == Tok::Word && (IsKeyword(ft, "AND") || IsKeyword(ft, "OR")))
      Fail(QStringLiteral("field name expected"));
    const int field = FieldOf(ft);
    Next();

    const Token& ot = Peek();
    if (IsKeyword(ot, "IS")) {  // F Is [Not] Null
      Next();
      bool negate = false;
      if (IsKeyword(Peek(), "NOT")) {
        Next();
        negate = true;
      }
      if (!IsKeyword(Peek(), "NULL")) Fail(QStringLiteral("Null expected"));
      Next();
      return std::make_unique<NullNode>(field, !negate);
    }
    if (IsKeyword(ot, "LIKE")) {
      Next();
      const Token& vt = Peek();
      if (vt.type != Tok::Text) Fail(QStringLiteral("pattern expected"));
      QString pattern = vt.text;
      Next();
      return std::make_unique<LikeNode>(field, pattern);
    }
    if (ot.type != Tok::Op) Fail(QStringLiteral("operator expected"));
    Op op;
    if (ot.text == QLatin1String("=")) op = Op::Eq;
    else if (ot.text == QLatin1String("<>")) op = Op::Ne;
    else if (ot.text == QLatin1String("<")) op = Op::Lt;
    else if (ot.text == QLatin1String(">")) op = Op::Gt;
    else if (ot.text == QLatin1String("<=")) op = Op::Le;
    else op = Op::Ge;
    Next();

    const Token vt = Peek();
    if (IsKeyword(vt, "NULL")) {
      Next();
      if (op == Op::Eq) return std::make_unique<NullNode>(field, true);
      if (op == Op::Ne) return std::make_unique<NullNode>(field, false);
      return std::make_unique<FalseNode>();  // an order against Null holds for no row
    }
    Constant k = ConstantOf(vt);
    Next();
    Check(field, k, vt);
    return std::make_unique<CompareNode>(field, op, std::move(k));
  }

  Constant ConstantOf(const Token& t) const {
    Constant k;
    switch (t.type) {
      case Tok::Number: {
        bool ok = false;
        const double d = t.text.toDouble(&ok);
        if (!ok || !std::isfinite(d)) Fail(QStringLiteral("malformed number"));
        k.kind = Constant::Kind::Number;
        k.text = t.text;
        k.SetNumber(d);
        return k;
      }
      case Tok::Text: {
        k.kind = Constant::Kind::Text;
        k.text = t.text;
        double d;
        if (ParseNumberText(t.text, &d)) k.SetNumber(d);
        QDateTime dt;
        if (ParseDateText(t.text, false, &dt)) {
          k.hasDate = true;
          k.date = DateKey(dt);
        }
        const QString low = t.text.trimmed().toLower();
        if (low == QLatin1String("true") || low == QLatin1String("vero")) k.hasBool = true, k.boolean = true;
        if (low == QLatin1String("false") || low == QLatin1String("falso")) k.hasBool = true, k.boolean = false;
        return k;
      }
      case Tok::Date: {
        QDateTime dt;
        if (!ParseDateText(t.text, true, &dt)) Fail(QStringLiteral("malformed date"));
        k.kind = Constant::Kind::Date;
        k.text = t.text;
        k.hasDate = true;
        k.date = DateKey(dt);
        return k;
      }
      case Tok::Word:
        if (IsKeyword(t, "TRUE") || IsKeyword(t, "FALSE")) {
          const bool b = IsKeyword(t, "TRUE");
          k.kind = Constant::Kind::Bool;
          k.text = b ? QStringLiteral("True") : QStringLiteral("False");
          k.SetNumber(b ? -1.0 : 0.0);
          return k;
        }
        break;
      default: break;
    }
    Fail(QStringLiteral("value expected"));
  }

  // A constant that can never compare with the field's values is a mistake of the filter.
  void Check(int field, const Constant& k, const Token& t) const {
    bool ok = true;
    switch (KindOf(fields_[field].Type)) {
      case FieldKind::Int8:
      case FieldKind::UInt8:
      case FieldKind::Int16:
      case FieldKind::Int32:
      case FieldKind::Int64:
      case FieldKind::Real:
      case FieldKind::Currency: ok = k.hasNum; break;
      case FieldKind::Bool: ok = k.hasBool; break;
      case FieldKind::Date: ok = k.hasDate; break;
      case FieldKind::Text:
      case FieldKind::Variant: break;
    }
    if (!ok)
      BadFilter(QStringLiteral("'%1' does not compare with field %2").arg(t.text, fields_[field].Name),
                text_);
  }

  const QString& text_;
  const std::vector<FieldDef>& fields_;
  std::vector<Token> toks_;
  size_t idx_ = 0;
  int depth_ = 0;
};

}  // namespace

FilterPtr ParseFilter(const QString& text, const std::vector<FieldDef>& fields) {
  Parser p(text, fields);
  return FilterPtr(p.Parse().release());
}

// ------------------------------------------------------------------ sort

std::vector<SortKey> ParseSort(const QString& text, const std::vector<FieldDef>& fields) {
  std::vector<SortKey> keys;
  // Split at commas outside brackets.
  QStringList items;
  QString cur;
  bool bracket = false;
  for (QChar c : text) {
    if (c == QLatin1Char('[')) bracket = true;
    else if (c == QLatin1Char(']')) bracket = false;
    if (c == QLatin1Char(',') && !bracket) {
      items << cur;
      cur.clear();
    } else {
      cur += c;
    }
  }
  items << cur;
  if (items.size() == 1 && items[0].trimmed().isEmpty()) return keys;

  for (const QString& raw : items) {
    QString item = raw.trimmed();
    if (item.isEmpty()) Raise(err::BadArguments, QStringLiteral("Invalid sort: %1").arg(text));
    SortKey k;
    QString name;
    if (item.startsWith(QLatin1Char('['))) {
      const qsizetype end = item.indexOf(QLatin1Char(']'));
      if (end < 0) Raise(err::BadArguments, QStringLiteral("Invalid sort: %1").arg(text));
      name = item.mid(1, end - 1).trimmed();
      const QString rest = item.mid(end + 1).trimmed();
      if (rest.compare(QLatin1String("DESC"), Qt::CaseInsensitive) == 0) k.descending = true;
      else if (!rest.isEmpty() && rest.compare(QLatin1String("ASC"), Qt::CaseInsensitive) != 0)
        Raise(err::BadArguments, QStringLiteral("Invalid sort: %1").arg(text));
    } else {
      name = item;
      const qsizetype sp = item.lastIndexOf(QRegularExpression(QStringLiteral("\\s")));
      if (sp > 0) {
        const QString word = item.mid(sp + 1);
        if (word.compare(QLatin1String("DESC"), Qt::CaseInsensitive) == 0) {
          k.descending = true;
          name = item.left(sp).trimmed();
        } else if (word.compare(QLatin1String("ASC"), Qt::CaseInsensitive) == 0) {
          name = item.left(sp).trimmed();
        }
      }
    }
    k.field = -1;
    for (size_t i = 0; i < fields.size(); ++i)
      if (fields[i].Name.compare(name, Qt::CaseInsensitive) == 0) k.field = static_cast<int>(i);
    if (k.field < 0) Raise(err::ItemNotFound, QStringLiteral("Item not found in this collection: %1").arg(name));
    keys.push_back(k);
  }
  return keys;
}

namespace {

// A value reduced to something that compares quickly. Classes order Nulls
// first, then numbers, dates, texts; texts compare folded.
struct Key {
  quint8 cls = 0;  // 0 Null, 1 number, 2 date, 3 text
  bool isInt = false;
  qint64 i = 0;  // a text's key: its place among the column's texts
  double d = 0;
};

// The keys of one sort field, with the folded texts apart so that a key
// of a number or a date carries no string.
struct KeyColumn {
  std::vector<Key> keys;
  std::vector<QString> texts;
};

Key KeyOf(const QVariant& v, std::vector<QString>& texts) {
  Key k;
  if (!v.isValid()) return k;
  switch (v.typeId()) {
    case QMetaType::Int:
    case QMetaType::LongLong:
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::UInt:
    case QMetaType::Char:
    case QMetaType::SChar:
    case QMetaType::UChar:
      k.cls = 1;
      k.isInt = true;
      k.i = v.toLongLong();
      k.d = static_cast<double>(k.i);
      break;
    case QMetaType::Bool:
      k.cls = 1;
      k.isInt = true;
      k.i = v.toBool() ? -1 : 0;
      k.d = static_cast<double>(k.i);
      break;
    case QMetaType::Double:
    case QMetaType::Float:
    case QMetaType::ULongLong:
      k.cls = 1;
      k.d = v.toDouble();
      break;
    case QMetaType::QDateTime:
      k.cls = 2;
      k.i = DateKey(*static_cast<const QDateTime*>(v.constData()));
      break;
    case QMetaType::QDate:
      k.cls = 2;
      k.i = DateKey(*static_cast<const QDate*>(v.constData()));
      break;
    default:
      k.cls = 3;
      k.i = static_cast<qint64>(texts.size());
      texts.push_back(v.toString().toCaseFolded());
      break;
  }
  return k;
}

// The key of a row's value, read from the column without a QVariant when it
// holds a whole number or a text.
Key KeyAt(const Colonna& c, qsizetype row, std::vector<QString>& texts) {
  Key k;
  if (const qint64* x = c.Intero(row)) {
    k.cls = 1;
    k.isInt = true;
    k.i = *x;
    k.d = static_cast<double>(k.i);
  } else if (const QString* s = c.Testo(row)) {
    k.cls = 3;
    k.i = static_cast<qint64>(texts.size());
    texts.push_back(s->toCaseFolded());
  } else {
    k = KeyOf(c.Get(row), texts);
  }
  return k;
}

int Compare(const Key& a, const Key& b, const std::vector<QString>& texts) {
  if (a.cls != b.cls) return a.cls < b.cls ? -1 : 1;
  switch (a.cls) {
    case 1:
      if (a.isInt && b.isInt) return Cmp(a.i, b.i);
      return Cmp(a.d, b.d);
    case 2: return Cmp(a.i, b.i);
    case 3: {
      const int r = QString::compare(texts[a.i], texts[b.i], Qt::CaseSensitive);
      return r < 0 ? -1 : (r > 0 ? 1 : 0);
    }
    default: return 0;
  }
}

}  // namespace

void SortRows(std::vector<int>& ids, const Colonne& rows, const std::vector<SortKey>& keys) {
  if (keys.empty() || ids.size() < 2) return;
  const size_t n = ids.size();
  // The first key travels with its row's place, so that most comparisons
  // read memory in order; the others are looked up on a tie.
  struct Voce {
    Key primo;
    int pos;
  };
  std::vector<KeyColumn> cols(keys.size());
  std::vector<Voce> voci(n);
  for (size_t i = 0; i < n; ++i) voci[i] = {KeyAt(rows[keys[0].field], ids[i], cols[0].texts), static_cast<int>(i)};
  for (size_t k = 1; k < keys.size(); ++k) {
    cols[k].keys.resize(n);
    for (size_t i = 0; i < n; ++i) cols[k].keys[i] = KeyAt(rows[keys[k].field], ids[i], cols[k].texts);
  }
  const auto prima = [&](const Voce& a, const Voce& b) {
    int c = Compare(a.primo, b.primo, cols[0].texts);
    if (c != 0) return keys[0].descending ? c > 0 : c < 0;
    for (size_t k = 1; k < keys.size(); ++k) {
      c = Compare(cols[k].keys[a.pos], cols[k].keys[b.pos], cols[k].texts);
      if (c != 0) return keys[k].descending ? c > 0 : c < 0;
    }
    return false;
  };
  // Rows often come already in the order asked, or in its reverse (read by
  // date, shown by code from the newest): one pass tells, and a reverse
  // without two equal rows is the sorted order itself.
  bool inOrdine = true, alRovescio = true;
  for (size_t i = 1; i < n && (inOrdine || alRovescio); ++i) {
    if (prima(voci[i], voci[i - 1])) inOrdine = false;
    if (!prima(voci[i], voci[i - 1])) alRovescio = false;
  }
  if (inOrdine) return;
  if (alRovescio) std::reverse(voci.begin(), voci.end());
  else std::stable_sort(voci.begin(), voci.end(), prima);
  std::vector<int> sorted(n);
  for (size_t i = 0; i < n; ++i) sorted[i] = ids[voci[i].pos];
  ids.swap(sorted);
}

}  // namespace prestkt::detail
