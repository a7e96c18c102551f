#include "SqlAdapt.h"

#include <QDate>
#include <QHash>
#include <QSet>
#include <QRegularExpression>

#include "Database.h"
#include "Schema.h"

namespace prestkt {

namespace {

enum class Tok { Space, Word, Number, String, Ident, Date, Punct, Param };

struct Token {
  Tok kind;
  QString text;  // for String: the value; for Ident: the name; else the source text
};

bool IsWordChar(QChar c) { return c.isLetterOrNumber() || c == QLatin1Char('_') || c == QLatin1Char('$'); }

std::vector<Token> Tokenize(const QString& s) {
  std::vector<Token> out;
  const int n = s.size();
  int i = 0;
  while (i < n) {
    const QChar c = s.at(i);
    if (c.isSpace()) {
      int j = i;
      while (j < n && s.at(j).isSpace()) ++j;
      out.push_back({Tok::Space, s.mid(i, j - i)});
      i = j;
    } else if (c == QLatin1Char('"') || c == QLatin1Char('\'')) {
      // A text; the quote doubled inside stands for one.
      QString v;
      int j = i + 1;
      while (j < n) {
        if (s.at(j) == c) {
          if (j + 1 < n && s.at(j + 1) == c) {
            v += c;
            j += 2;
            continue;
          }
          break;
        }
        v += s.at(j++);
      }
      out.push_back({Tok::String, v});
      i = j + 1;
    } else if (c == QLatin1Char('[')) {
      const int j = s.indexOf(QLatin1Char(']'), i + 1);
      const int end = j < 0 ? n : j;
      out.push_back({Tok::Ident, s.mid(i + 1, end - i - 1)});
      i = end + 1;
    } else if (c == QLatin1Char('#')) {
      const int j = s.indexOf(QLatin1Char('#'), i + 1);
      const int end = j < 0 ? n : j;
      out.push_back({Tok::Date, s.mid(i + 1, end - i - 1)});
      i = end + 1;
    } else if (c.isDigit() || (c == QLatin1Char('.') && i + 1 < n && s.at(i + 1).isDigit())) {
      int j = i;
      while (j < n && (s.at(j).isDigit() || s.at(j) == QLatin1Char('.'))) ++j;
      // An exponent belongs to the number: 1e54, 2.5E-3.
      if (j < n && (s.at(j) == QLatin1Char('e') || s.at(j) == QLatin1Char('E'))) {
        int k = j + 1;
        if (k < n && (s.at(k) == QLatin1Char('+') || s.at(k) == QLatin1Char('-'))) ++k;
        if (k < n && s.at(k).isDigit()) {
          while (k < n && s.at(k).isDigit()) ++k;
          j = k;
        }
      }
      out.push_back({Tok::Number, s.mid(i, j - i)});
      i = j;
    } else if (IsWordChar(c)) {
      int j = i;
      while (j < n && IsWordChar(s.at(j))) ++j;
      out.push_back({Tok::Word, s.mid(i, j - i)});
      i = j;
    } else if (c == QLatin1Char('?')) {
      out.push_back({Tok::Param, QStringLiteral("?")});
      ++i;
    } else {
      // Two-character operators stay together.
      if (i + 1 < n) {
        const QString two = s.mid(i, 2);
        if (two == QLatin1String("<>") || two == QLatin1String("<=") || two == QLatin1String(">=")) {
          out.push_back({Tok::Punct, two});
          i += 2;
          continue;
        }
      }
      out.push_back({Tok::Punct, QString(c)});
      ++i;
    }
  }
  return out;
}

bool Is(const Token& t, const char* word) {
  return t.kind == Tok::Word && t.text.compare(QLatin1String(word), Qt::CaseInsensitive) == 0;
}

QString QuoteString(const QString& v) {
  QString s = v;
  s.replace(QLatin1Char('\''), QStringLiteral("''"));
  return QLatin1Char('\'') + s + QLatin1Char('\'');
}

QString QuoteIdent(const QString& v) {
  QString s = v;
  s.replace(QLatin1Char('"'), QStringLiteral("\"\""));
  return QLatin1Char('"') + s + QLatin1Char('"');
}

// #mm/dd/yyyy[ hh:nn[:ss]]# of the old dialect.
QDateTime JetDate(const QString& text) {
  static const QRegularExpression re(QStringLiteral(
      "^\\s*(\\d{1,2})/(\\d{1,2})/(\\d{2,4})(?:\\s+(\\d{1,2}):(\\d{2})(?::(\\d{2}))?)?\\s*$"));
  const auto m = re.match(text);
  if (m.hasMatch()) {
    int y = m.captured(3).toInt();
    if (y < 100) y += y < 30 ? 2000 : 1900;
    const QDate d(y, m.captured(1).toInt(), m.captured(2).toInt());
    const QTime t(m.captured(4).toInt(), m.captured(5).toInt(), m.captured(6).toInt());
    return QDateTime(d, t.isValid() ? t : QTime(0, 0));
  }
  const QDateTime iso = DateFromStorage(text.trimmed());
  return iso;
}

int NextSolid(const std::vector<Token>& t, int i) {
  for (int j = i; j < static_cast<int>(t.size()); ++j)
    if (t[j].kind != Tok::Space) return j;
  return -1;
}

int PrevSolid(const std::vector<Token>& t, int i) {
  for (int j = i; j >= 0; --j)
    if (t[j].kind != Tok::Space) return j;
  return -1;
}


// Words that PostgreSQL must see bare: the statements' own words and the
// names of types. Every other word is a name, and goes quoted.
bool ParolaChiave(const QString& w) {
  static const QSet<QString> parole = [] {
    QSet<QString> s;
    for (const char* p :
         {"select", "from", "where", "and", "or", "not", "in", "is", "null", "as", "on", "inner", "left", "right",
          "full", "outer", "cross", "join", "group", "by", "order", "asc", "desc", "having", "between", "like",
          "ilike", "escape", "insert", "into", "values", "update", "set", "delete", "distinct", "union", "all",
          "case", "when", "then", "else", "end", "exists", "limit", "offset", "create", "table", "index", "view",
          "drop", "alter", "add", "column", "primary", "key", "default", "constraint", "unique", "references",
          "if", "begin", "commit", "rollback", "savepoint", "release", "to", "transaction", "work", "cast",
          "nulls", "first", "last", "timestamp", "integer", "smallint", "bigint", "real", "double", "precision",
          "numeric", "decimal", "varchar", "char", "character", "varying", "text", "citext", "boolean", "interval",
          "any", "some", "collate", "returning", "with", "recursive", "over", "partition", "except", "intersect",
          "using", "natural", "lateral", "only", "of", "for", "share", "lock", "mode", "exclusive", "temp",
          "temporary", "cascade", "restrict", "schema", "analyze", "vacuum", "current_date", "current_timestamp", "oid", "int"})
      s.insert(QString::fromLatin1(p));
    return s;
  }();
  return parole.contains(w.toLower());
}

// The functions of the system that the engine holds under their own names.
bool FunzioneDelSistema(const QString& w) {
  static const QSet<QString> f = {QStringLiteral("format"), QStringLiteral("datediff"), QStringLiteral("year"),
                                  QStringLiteral("month"), QStringLiteral("day")};
  return f.contains(w.toLower());
}

// A name as the schema spells it: on PostgreSQL quoted names are told apart
// by case, while the system's SQL is written without regard to it.
QString Canonico(const QString& nome) {
  static const QHash<QString, QStringList> nomi = [] {
    QHash<QString, QStringList> h;
    const auto metti = [&](const QString& n) {
      QStringList& l = h[n.toLower()];
      if (!l.contains(n)) l << n;
    };
    for (const TableDef& t : SchemaTables()) {
      metti(t.name);
      for (const ColumnDef& c : t.columns) metti(c.name);
    }
    for (const ViewDef& v : SchemaViews()) metti(v.name);
    for (const char* f : {"Format", "DateDiff", "Year", "Month", "Day"}) metti(QString::fromLatin1(f));
    return h;
  }();
  const auto it = nomi.constFind(nome.toLower());
  if (it == nomi.constEnd() || it->contains(nome)) return nome;
  return it->front();
}

// IIf(c, a, b) as CASE WHEN (c) THEN a ELSE b END, at every depth: the server
// has no function that takes any two types of value.
std::vector<Token> SenzaIIf(const std::vector<Token>& t) {
  std::vector<Token> out;
  const int n = static_cast<int>(t.size());
  for (int i = 0; i < n; ++i) {
    const int open = i + 1 < n ? NextSolid(t, i + 1) : -1;
    if (!(t[i].kind == Tok::Word && Is(t[i], "iif") && open > 0 && t[open].text == QLatin1String("("))) {
      out.push_back(t[i]);
      continue;
    }
    // The three arguments, split at the commas of this level.
    std::vector<std::vector<Token>> arg(1);
    int depth = 0, j = open + 1;
    for (; j < n; ++j) {
      const Token& k = t[j];
      if (k.kind == Tok::Punct && k.text == QLatin1String("(")) ++depth;
      if (k.kind == Tok::Punct && k.text == QLatin1String(")")) {
        if (depth == 0) break;
        --depth;
      }
      if (depth == 0 && k.kind == Tok::Punct && k.text == QLatin1String(",")) {
        arg.emplace_back();
        continue;
      }
      arg.back().push_back(k);
    }
    if (arg.size() != 3 || j >= n) {
      out.push_back(t[i]);
      continue;
    }
    const auto parola = [&](const char* w) {
      out.push_back({Tok::Space, QStringLiteral(" ")});
      out.push_back({Tok::Word, QString::fromLatin1(w)});
      out.push_back({Tok::Space, QStringLiteral(" ")});
    };
    parola("CASE");
    parola("WHEN");
    out.push_back({Tok::Punct, QStringLiteral("(")});
    for (const Token& k : SenzaIIf(arg[0])) out.push_back(k);
    out.push_back({Tok::Punct, QStringLiteral(")")});
    parola("THEN");
    for (const Token& k : SenzaIIf(arg[1])) out.push_back(k);
    parola("ELSE");
    for (const Token& k : SenzaIIf(arg[2])) out.push_back(k);
    parola("END");
    i = j;
  }
  return out;
}

// A constant among the terms of GROUP BY stays a constant: both engines would
// read a whole number there as the place of a column, and PostgreSQL refuses a
// text.
std::vector<Token> CostantiRaggruppate(const std::vector<Token>& t) {
  std::vector<Token> out;
  const int n = static_cast<int>(t.size());
  int raggruppa = -1, profondita = 0;
  for (int i = 0; i < n; ++i) {
    const Token& k = t[i];
    if (k.kind == Tok::Punct && k.text == QLatin1String("(")) ++profondita;
    if (k.kind == Tok::Punct && k.text == QLatin1String(")")) {
      if (profondita == raggruppa) raggruppa = -1;
      --profondita;
    }
    if (profondita == raggruppa && (Is(k, "having") || Is(k, "order") || Is(k, "limit") || Is(k, "union") ||
                                    k.text == QLatin1String(";")))
      raggruppa = -1;
    if (Is(k, "by")) {
      const int p = PrevSolid(t, i - 1);
      if (p >= 0 && Is(t[p], "group")) raggruppa = profondita;
    }
    if (raggruppa == profondita && (k.kind == Tok::Number || k.kind == Tok::String)) {
      const int p = PrevSolid(t, i - 1), q = NextSolid(t, i + 1);
      const bool solo = p >= 0 && (Is(t[p], "by") || t[p].text == QLatin1String(",")) &&
                        (q < 0 || t[q].text == QLatin1String(",") || t[q].text == QLatin1String(")") ||
                         t[q].text == QLatin1String(";") || Is(t[q], "having") || Is(t[q], "order") ||
                         Is(t[q], "limit") || Is(t[q], "union"));
      if (solo) {
        out.push_back({Tok::Word, QStringLiteral("CAST")});
        out.push_back({Tok::Punct, QStringLiteral("(")});
        out.push_back(k);
        out.push_back({Tok::Space, QStringLiteral(" ")});
        out.push_back({Tok::Word, QStringLiteral("AS")});
        out.push_back({Tok::Space, QStringLiteral(" ")});
        out.push_back({Tok::Word, k.kind == Tok::Number ? QStringLiteral("INTEGER") : QStringLiteral("TEXT")});
        out.push_back({Tok::Punct, QStringLiteral(")")});
        continue;
      }
    }
    out.push_back(k);
  }
  return out;
}

}  // namespace

QString TipoColonna(const ColumnDef& c, Engine engine) {
  const bool pg = engine == Engine::PostgreSQL;
  switch (c.type) {
    case dbBoolean: return pg ? QStringLiteral("SMALLINT") : QStringLiteral("YESNO");
    case dbByte: return pg ? QStringLiteral("SMALLINT") : QStringLiteral("TINYINT");
    case dbInteger: return QStringLiteral("SMALLINT");
    case dbLong: return QStringLiteral("INTEGER");
    case dbCurrency: return pg ? QStringLiteral("DOUBLE PRECISION") : QStringLiteral("CURRENCY");
    case dbSingle: return pg ? QStringLiteral("DOUBLE PRECISION") : QStringLiteral("FLOAT");
    case dbDouble: return pg ? QStringLiteral("DOUBLE PRECISION") : QStringLiteral("DOUBLE");
    case dbDate: return pg ? QStringLiteral("TIMESTAMP") : QStringLiteral("DATETIME");
    // Texts compare without regard to case on both engines.
    case dbMemo: return pg ? QStringLiteral("CITEXT") : QStringLiteral("LONGTEXT COLLATE NOCASE");
    default:
      return pg ? QStringLiteral("CITEXT")
                : QStringLiteral("VARCHAR(%1) COLLATE NOCASE").arg(c.size > 0 ? c.size : 255);
  }
}

QString AdattaSql(const QString& sql, const Database& db) {
  const bool pg = db.engine() == Engine::PostgreSQL;
  const std::vector<Token> t = CostantiRaggruppate(pg ? SenzaIIf(Tokenize(sql)) : Tokenize(sql));
  int parametro = 0;
  // ORDER BY on PostgreSQL: Nulls come where SQLite puts them, first going up and last going down.
  int ordine = -1, profondita = 0;
  bool discendente = false;
  std::vector<bool> derivate;  // for every open bracket: a query in FROM
  int nomi = 0;
  const auto chiudiVoce = [&](QString& out) {
    if (ordine < 0) return;
    out += discendente ? QStringLiteral(" NULLS LAST") : QStringLiteral(" NULLS FIRST");
    discendente = false;
  };
  QString out;
  out.reserve(sql.size() + 16);
  const int n = static_cast<int>(t.size());
  const int first = NextSolid(t, 0);
  const bool update = first >= 0 && Is(t[first], "update");
  bool inSet = false;
  for (int i = 0; i < n; ++i) {
    const Token& k = t[i];
    if (update && Is(k, "set")) inSet = true;
    if (update && Is(k, "where")) inSet = false;
    // UPDATE T SET T.F = ...: the engine wants the field alone on the left of "=".
    if (inSet && (k.kind == Tok::Word || k.kind == Tok::Ident) && i + 2 < n && t[i + 1].text == QLatin1String(".") &&
        (t[i + 2].kind == Tok::Word || t[i + 2].kind == Tok::Ident)) {
      const int after = NextSolid(t, i + 3);
      if (after > 0 && t[after].text == QLatin1String("=")) {
        i += 1;  // drop the qualifier and its dot; the field follows
        continue;
      }
    }
    if (pg && ordine >= 0) {
      // The end of an item of ORDER BY: a comma of its level, the bracket that
      // closes it, or the words that follow it.
      const bool fine =
          (k.kind == Tok::Punct && ((k.text == QLatin1String(",") && profondita == ordine) ||
                                    (k.text == QLatin1String(")") && profondita == ordine) || k.text == QLatin1String(";"))) ||
          (profondita == ordine && (Is(k, "limit") || Is(k, "offset") || Is(k, "union")));
      if (fine) {
        chiudiVoce(out);
        if (k.kind == Tok::Word) out += QLatin1Char(' ');
        if (k.text != QLatin1String(",")) ordine = -1;
      } else if (Is(k, "desc")) {
        discendente = true;
      }
    }
    if (k.kind == Tok::Punct && k.text == QLatin1String("(")) {
      ++profondita;
      // A query in FROM or JOIN: PostgreSQL wants a name for it.
      const int p = PrevSolid(t, i - 1), q = NextSolid(t, i + 1);
      derivate.push_back(pg && p >= 0 && (Is(t[p], "from") || Is(t[p], "join")) && q > 0 && Is(t[q], "select"));
    }
    bool senzaNome = false;
    if (k.kind == Tok::Punct && k.text == QLatin1String(")")) {
      --profondita;
      if (!derivate.empty()) {
        const int q = NextSolid(t, i + 1);
        senzaNome = derivate.back() &&
                    !(q > 0 && (Is(t[q], "as") || (t[q].kind == Tok::Word && !ParolaChiave(t[q].text)) ||
                                t[q].kind == Tok::Ident));
        derivate.pop_back();
      }
    }
    if (pg && Is(k, "by")) {
      const int p = PrevSolid(t, i - 1);
      if (p >= 0 && Is(t[p], "order")) {
        ordine = profondita;
        discendente = false;
      }
    }
    switch (k.kind) {
      case Tok::Space:
      case Tok::Number:
        out += k.text;
        break;
      case Tok::Param:
        out += pg ? QStringLiteral("$%1").arg(++parametro) : k.text;
        break;
      case Tok::Ident:
        out += QuoteIdent(pg ? Canonico(k.text) : k.text);
        break;
      case Tok::Date: {
        const QDateTime d = JetDate(k.text);
        out += d.isValid() ? db.DateLiteral(d) : QStringLiteral("NULL");
        break;
      }
      case Tok::String: {
        QString v = k.text;
        const int p = PrevSolid(t, i - 1);
        if (p >= 0 && Is(t[p], "like")) {
          v.replace(QLatin1Char('*'), QLatin1Char('%'));
          v.replace(QLatin1Char('?'), QLatin1Char('_'));
        }
        out += QuoteString(v);
        break;
      }
      case Tok::Punct:
        if (k.text == QLatin1String("!")) out += QLatin1Char('.');
        else if (k.text == QLatin1String("&")) out += QStringLiteral("||");
        else out += k.text;
        if (senzaNome) out += QStringLiteral(" AS \"q%1\"").arg(++nomi);
        break;
      case Tok::Word: {
        if (Is(k, "delete")) {
          // DELETE * FROM t, DELETE t.f FROM t: the engine wants DELETE FROM t.
          int j = NextSolid(t, i + 1);
          if (j > 0 && !Is(t[j], "from")) {
            while (j > 0 && !Is(t[j], "from")) j = NextSolid(t, j + 1);
            if (j > 0) {
              out += k.text + QLatin1Char(' ');
              i = j - 1;
              break;
            }
          }
          out += k.text;
        } else if ((Is(k, "date") || Is(k, "now")) && i + 2 < n && t[i + 1].text == QLatin1String("(") &&
                   t[i + 2].text == QLatin1String(")")) {
          // Date() and Now() are the moment of the statement; "Date() - 1000" is a day count.
          QDateTime d = Is(k, "date") ? Today() : Now();
          int j = NextSolid(t, i + 3);
          if (j > 0 && (t[j].text == QLatin1String("-") || t[j].text == QLatin1String("+"))) {
            const int m = NextSolid(t, j + 1);
            if (m > 0 && t[m].kind == Tok::Number) {
              const double days = t[m].text.toDouble() * (t[j].text == QLatin1String("-") ? -1 : 1);
              d = DateAdd(QStringLiteral("s"), days * 86400, d);
              i = m;
              out += db.DateLiteral(d);
              break;
            }
          }
          out += db.DateLiteral(d);
          i += 2;
        } else if (Is(k, "true")) {
          out += QStringLiteral("-1");
        } else if (Is(k, "false")) {
          out += QStringLiteral("0");
        } else if (!pg) {
          out += k.text;
        } else if (Is(k, "like")) {
          out += QStringLiteral("ILIKE");  // as SQLite's, blind to case
        } else if (Is(k, "is") && NextSolid(t, i + 1) > 0 && t[NextSolid(t, i + 1)].kind == Tok::Param) {
          out += QStringLiteral("IS NOT DISTINCT FROM");  // SQLite's IS between two values
        } else if (ParolaChiave(k.text)) {
          out += k.text;
        } else {
          // A name before a bracket is a call, but for a table's name before its columns.
          const int dopo = NextSolid(t, i + 1);
          const int prima = PrevSolid(t, i - 1);
          const bool chiamata = dopo > 0 && t[dopo].text == QLatin1String("(") && !FindTable(k.text) &&
                                !(prima >= 0 && (Is(t[prima], "into") || Is(t[prima], "table") ||
                                                 Is(t[prima], "on") || Is(t[prima], "references") ||
                                                 Is(t[prima], "view") || Is(t[prima], "exists")));
          if (chiamata && !FunzioneDelSistema(k.text)) out += k.text;  // the engine's own function
          else out += QuoteIdent(Canonico(k.text));
        }
        break;
      }
    }
  }
  if (pg && ordine >= 0) chiudiVoce(out);
  // A closing semicolon is allowed by the old engine and harmless here; nothing to do.
  return out;
}

QStringList SelectExpressions(const QString& sql) {
  const std::vector<Token> t = Tokenize(sql);
  QStringList out;
  int depth = 0;
  bool started = false;
  QString cur;
  for (const Token& k : t) {
    if (!started) {
      if (Is(k, "select")) started = true;
      continue;
    }
    if (depth == 0 && Is(k, "from")) break;
    if (k.kind == Tok::Punct && k.text == QLatin1String("(")) ++depth;
    if (k.kind == Tok::Punct && k.text == QLatin1String(")")) --depth;
    if (depth == 0 && k.kind == Tok::Punct && k.text == QLatin1String(",")) {
      out << cur.trimmed();
      cur.clear();
      continue;
    }
    if (k.kind == Tok::String) cur += QuoteString(k.text);
    else if (k.kind == Tok::Ident) cur += k.text;
    else cur += k.text;
  }
  if (!cur.trimmed().isEmpty()) out << cur.trimmed();
  // DISTINCT / TOP n belong to the statement, not to the first column.
  if (!out.isEmpty()) {
    static const QRegularExpression lead(QStringLiteral("^(?:DISTINCT|DISTINCTROW|TOP\\s+\\d+)\\s+"),
                                         QRegularExpression::CaseInsensitiveOption);
    out[0].remove(lead);
  }
  return out;
}

namespace {
constexpr int kMaxNesting = 256;  // calls inside calls; deeper tells no type
int TypeOfExpression(const QString& expression, int* size, int depth);
}  // namespace

int DaoTypeOfExpression(const QString& expression, int* size) { return TypeOfExpression(expression, size, 0); }

namespace {

int TypeOfExpression(const QString& expression, int* size, int depth) {
  *size = 0;
  if (depth > kMaxNesting) return 0;
  QString e = expression.trimmed();
  static const QRegularExpression alias(QStringLiteral("\\s+AS\\s+\\S+$"),
                                        QRegularExpression::CaseInsensitiveOption);
  e.remove(alias);
  e = e.trimmed();
  if (e.isEmpty()) return 0;
  static const QRegularExpression integer(QStringLiteral("^-?\\d+$"));
  static const QRegularExpression decimal(QStringLiteral("^-?\\d*\\.\\d+$"));
  if (integer.match(e).hasMatch()) return dbLong;
  if (decimal.match(e).hasMatch()) return dbDouble;
  if (e.startsWith(QLatin1Char('\''))) {
    *size = 255;
    return dbText;
  }
  static const QRegularExpression call(QStringLiteral("^(\\w+)\\s*\\((.*)\\)$"),
                                       QRegularExpression::DotMatchesEverythingOption);
  const auto m = call.match(e);
  if (m.hasMatch()) {
    const QString f = m.captured(1).toLower();
    const QString arg = m.captured(2).trimmed();
    if (f == QLatin1String("format")) {
      *size = 255;
      return dbText;
    }
    if (f == QLatin1String("datediff") || f == QLatin1String("year") || f == QLatin1String("month") ||
        f == QLatin1String("day") || f == QLatin1String("count"))
      return dbLong;
    if (f == QLatin1String("max") || f == QLatin1String("min") || f == QLatin1String("first") ||
        f == QLatin1String("last"))
      return TypeOfExpression(arg, size, depth + 1);
    if (f == QLatin1String("sum")) {
      const int inner = TypeOfExpression(arg, size, depth + 1);
      return inner == dbLong || inner == dbInteger || inner == dbByte ? dbLong : dbDouble;
    }
    if (f == QLatin1String("avg")) return dbDouble;
    if (f == QLatin1String("iif")) {
      // The type of the true part.
      const QStringList parts = SelectExpressions(QStringLiteral("SELECT ") + arg);
      return parts.size() == 3 ? TypeOfExpression(parts.at(1), size, depth + 1) : 0;
    }
    return 0;
  }
  // A plain column, maybe qualified.
  static const QRegularExpression column(QStringLiteral("^(?:[\\w:]+[.!])?(\\w+)$"));
  const auto c = column.match(e);
  if (c.hasMatch()) {
    if (const ColumnDef* def = FindAnyColumn(c.captured(1))) {
      *size = def->size;
      return def->type;
    }
    return 0;
  }
  // Texts joined make a text; otherwise signs of arithmetic outside the texts make a number.
  static const QRegularExpression testi(QStringLiteral("'(?:[^']|'')*'|\"(?:[^\"]|\"\")*\""));
  const QString senzaTesti = QString(e).replace(testi, QStringLiteral("''"));
  if (senzaTesti.contains(QLatin1Char('&')) || senzaTesti.contains(QLatin1String("||"))) {
    *size = 255;
    return dbText;
  }
  static const QRegularExpression arithmetic(QStringLiteral("[-+*/]"));
  if (arithmetic.match(senzaTesti).hasMatch()) return dbDouble;
  return 0;
}

}  // namespace

}  // namespace prestkt
