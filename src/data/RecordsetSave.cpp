// Save of the recordset: the rowset XML that the old data components read and
// write, and a compact binary form.
#include <QDataStream>
#include <QDate>
#include <QLocale>
#include <QSaveFile>
#include <cmath>

#include "RecordsetFilter.h"

namespace prestkt::detail {

namespace {

// ------------------------------------------------------------------ XML

QString Escape(const QString& s) {
  QString out;
  out.reserve(s.size() + 8);
  for (qsizetype i = 0; i < s.size(); ++i) {
    const QChar c = s[i];
    const char16_t u = c.unicode();
    switch (u) {
      case '&': out += QLatin1String("&amp;"); break;
      case '<': out += QLatin1String("&lt;"); break;
      case '>': out += QLatin1String("&gt;"); break;
      case '\'': out += QLatin1String("&apos;"); break;
      case '"': out += QLatin1String("&quot;"); break;
      case '\t': out += QLatin1String("&#x9;"); break;
      case '\n': out += QLatin1String("&#xA;"); break;
      case '\r': out += QLatin1String("&#xD;"); break;
      default:
        if (u < 0x20 || u == 0xFFFE || u == 0xFFFF) break;  // not representable in XML
        if (c.isHighSurrogate()) {
          if (i + 1 < s.size() && s[i + 1].isLowSurrogate()) {
            out += c;
            out += s[++i];
          }
          break;
        }
        if (c.isLowSurrogate()) break;  // unpaired
        out += c;
    }
  }
  return out;
}

bool IsXmlName(const QString& s) {
  if (s.isEmpty()) return false;
  if (!(s[0].isLetter() || s[0] == QLatin1Char('_'))) return false;
  for (QChar c : s)
    if (!(c.isLetterOrNumber() || c == QLatin1Char('_') || c == QLatin1Char('-') || c == QLatin1Char('.')))
      return false;
  return !s.startsWith(QLatin1String("xml"), Qt::CaseInsensitive);
}

// The attribute names of the rows: the field name when it is a valid XML
// name, "c<n>" otherwise (the field name then goes in rs:name).
std::vector<QString> AttributeNames(const std::vector<FieldDef>& fields) {
  std::vector<QString> names(fields.size());
  auto taken = [&](const QString& n) {
    for (size_t i = 0; i < fields.size(); ++i)
      if (names[i] == n || (IsXmlName(fields[i].Name) && fields[i].Name == n)) return true;
    return false;
  };
  for (size_t i = 0; i < fields.size(); ++i)
    if (IsXmlName(fields[i].Name)) names[i] = fields[i].Name;
  for (size_t i = 0; i < fields.size(); ++i) {
    if (!names[i].isEmpty()) continue;
    QString n = QStringLiteral("c%1").arg(i);
    for (int k = 0; taken(n); ++k) n = QStringLiteral("c%1_%2").arg(i).arg(k);
    names[i] = n;
  }
  return names;
}

// The s:datatype element of a field.
QString DataType(const FieldDef& f) {
  auto fixed = [](const char* type, int len, int precision) {
    return QStringLiteral("<s:datatype dt:type='%1' dt:maxLength='%2' rs:precision='%3' rs:fixedlength='true'")
        .arg(QLatin1String(type))
        .arg(len)
        .arg(precision);
  };
  QString t;
  switch (f.Type) {
    case adTinyInt: t = fixed("i1", 1, 3); break;
    case adUnsignedTinyInt: t = fixed("ui1", 1, 3); break;
    case adSmallInt: t = fixed("i2", 2, 5); break;
    case adInteger: t = fixed("int", 4, 10); break;
    case adBigInt: t = fixed("i8", 8, 19); break;
    case adSingle: t = fixed("r4", 4, 7); break;
    case adDouble: t = fixed("r8", 8, 15); break;
    case adCurrency:
      t = QStringLiteral("<s:datatype dt:type='i8' rs:dbtype='currency' dt:maxLength='8' "
                         "rs:precision='19' rs:fixedlength='true'");
      break;
    case adNumeric:
    case adDecimal:
      t = QStringLiteral("<s:datatype dt:type='number' rs:dbtype='numeric' dt:maxLength='19' "
                         "rs:precision='28' rs:fixedlength='true'");
      break;
    case adDate:
      t = QStringLiteral("<s:datatype dt:type='dateTime' rs:dbtype='variantdate' dt:maxLength='16' "
                         "rs:fixedlength='true'");
      break;
    case adBoolean: t = QStringLiteral("<s:datatype dt:type='boolean' dt:maxLength='2' rs:fixedlength='true'"); break;
    default:
      if (KindOf(f.Type) == FieldKind::Text) {
        const bool ansi = f.Type == adChar || f.Type == adVarChar || f.Type == adLongVarChar;
        const int limit = TextLimit(f);
        t = QStringLiteral("<s:datatype dt:type='string'");
        if (ansi) t += QStringLiteral(" rs:dbtype='str'");
        t += QStringLiteral(" dt:maxLength='%1'").arg(limit > 0 ? limit : 2147483647);
        if (f.Type == adChar || f.Type == adWChar) t += QStringLiteral(" rs:fixedlength='true'");
        if (IsLongText(f.Type)) t += QStringLiteral(" rs:long='true'");
      } else if (KindOf(f.Type) == FieldKind::Date) {
        t = QStringLiteral("<s:datatype dt:type='dateTime' dt:maxLength='16' rs:fixedlength='true'");
      } else {
        t = QStringLiteral("<s:datatype dt:type='string' rs:dbtype='variant' dt:maxLength='%1'")
                .arg(f.DefinedSize > 0 ? f.DefinedSize : 16);
      }
  }
  if (!f.Nullable()) t += QStringLiteral(" rs:maybenull='false'");
  return t + QStringLiteral("/>");
}

QString XmlValue(const QVariant& v) {
  switch (v.typeId()) {
    case QMetaType::Bool: return v.toBool() ? QStringLiteral("True") : QStringLiteral("False");
    case QMetaType::Double:
    case QMetaType::Float: {
      const double d = v.toDouble();
      if (!std::isfinite(d)) return QString::number(d);
      return QString::number(d, 'g', QLocale::FloatingPointShortest);
    }
    case QMetaType::QDateTime:
      return v.toDateTime().toString(QStringLiteral("yyyy-MM-dd'T'HH:mm:ss"));
    case QMetaType::QDate: return v.toDate().toString(QStringLiteral("yyyy-MM-dd'T'00:00:00"));
    case QMetaType::QByteArray: return QString::fromLatin1(v.toByteArray().toHex());
    default: return Escape(v.toString());
  }
}

QByteArray Xml(const std::vector<FieldDef>& fields, const std::vector<const Row*>& rows) {
  const std::vector<QString> names = AttributeNames(fields);
  QString x;
  x += QStringLiteral(
      "<xml xmlns:s='uuid:BDC6E3F0-6DA3-11d1-A2A3-00AA00C14882'\n"
      "\txmlns:dt='uuid:C2F41010-65B3-11d1-A29F-00AA00C14882'\n"
      "\txmlns:rs='urn:schemas-microsoft-com:rowset'\n"
      "\txmlns:z='#RowsetSchema'>\n"
      "<s:Schema id='RowsetSchema'>\n"
      "\t<s:ElementType name='row' content='eltOnly' rs:updatable='true'>\n");
  for (size_t i = 0; i < fields.size(); ++i) {
    const FieldDef& f = fields[i];
    x += QStringLiteral("\t\t<s:AttributeType name='%1'").arg(Escape(names[i]));
    if (names[i] != f.Name) x += QStringLiteral(" rs:name='%1'").arg(Escape(f.Name));
    x += QStringLiteral(" rs:number='%1' rs:nullable='%2' rs:writeunknown='true'>\n")
             .arg(i + 1)
             .arg(f.Nullable() ? QLatin1String("true") : QLatin1String("false"));
    x += QStringLiteral("\t\t\t") + DataType(f) + QLatin1Char('\n');
    x += QStringLiteral("\t\t</s:AttributeType>\n");
  }
  x += QStringLiteral(
      "\t\t<s:extends type='rs:rowbase'/>\n"
      "\t</s:ElementType>\n"
      "</s:Schema>\n"
      "<rs:data>\n");
  for (const Row* r : rows) {
    x += QStringLiteral("\t<z:row");
    for (size_t i = 0; i < fields.size() && i < r->size(); ++i) {
      const QVariant& v = (*r)[i];
      if (!v.isValid()) continue;
      x += QLatin1Char(' ') + names[i] + QStringLiteral("='") + XmlValue(v) + QLatin1Char('\'');
    }
    x += QStringLiteral("/>\n");
  }
  x += QStringLiteral("</rs:data>\n</xml>\n");
  return x.toUtf8();
}

// ------------------------------------------------------------------ binary

// Tags of the values in the binary form.
enum : quint8 { tNull = 0, tInt = 1, tLong = 2, tDouble = 3, tBool = 4, tText = 5, tDate = 6, tOther = 7 };

QByteArray Binary(const std::vector<FieldDef>& fields, const std::vector<const Row*>& rows) {
  QByteArray out;
  QDataStream ds(&out, QIODevice::WriteOnly);
  ds.setVersion(QDataStream::Qt_6_0);
  ds << quint32(0x504B5452) << quint32(1);  // "PKTR", version 1
  ds << quint32(fields.size());
  for (const FieldDef& f : fields)
    ds << f.Name << qint32(f.Type) << qint32(f.DefinedSize) << qint32(f.Attributes) << qint32(f.DaoType);
  ds << quint32(rows.size());
  for (const Row* r : rows) {
    for (size_t i = 0; i < fields.size(); ++i) {
      const QVariant v = i < r->size() ? (*r)[i] : QVariant();
      switch (v.typeId()) {
        case QMetaType::UnknownType: ds << quint8(tNull); break;
        case QMetaType::Int: ds << quint8(tInt) << qint32(v.toInt()); break;
        case QMetaType::LongLong: ds << quint8(tLong) << qint64(v.toLongLong()); break;
        case QMetaType::Double: ds << quint8(tDouble) << v.toDouble(); break;
        case QMetaType::Bool: ds << quint8(tBool) << v.toBool(); break;
        case QMetaType::QString: ds << quint8(tText) << v.toString(); break;
        case QMetaType::QDateTime: {
          const QDateTime d = v.toDateTime();
          ds << quint8(tDate) << qint64(d.date().toJulianDay()) << qint32(d.time().msecsSinceStartOfDay());
          break;
        }
        default: ds << quint8(tOther) << v; break;
      }
    }
  }
  return out;
}

}  // namespace

void SaveRows(const QString& path, int format, const std::vector<FieldDef>& fields,
              const std::vector<const Row*>& rows) {
  const QByteArray data = format == adPersistXML ? Xml(fields, rows) : Binary(fields, rows);
  QSaveFile file(path);
  if (!file.open(QIODevice::WriteOnly))
    Raise(err::PathFileAccess, QStringLiteral("Cannot write '%1': %2").arg(path, file.errorString()));
  if (file.write(data) != data.size() || !file.commit())
    Raise(err::PathFileAccess, QStringLiteral("Cannot write '%1': %2").arg(path, file.errorString()));
}

}  // namespace prestkt::detail
