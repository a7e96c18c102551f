// The disconnected recordset (Recordset.h): structure, typed writes, filter,
// sort, clones, edits, the write cursor of database recordsets, and Save.
#include <QDataStream>
#include <QFile>
#include <QTemporaryDir>
#include <QXmlStreamReader>
#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <map>
#include <optional>

#include "Recordset.h"

using namespace prestkt;

void PrintTo(const QString& s, std::ostream* os) { *os << '"' << s.toStdString() << '"'; }
void PrintTo(const QVariant& v, std::ostream* os) {
  *os << (v.isValid() ? v.typeName() : "Null") << ' ' << '"' << v.toString().toStdString() << '"';
}

namespace {

template <typename F>
std::optional<int> ErrorOf(F&& f) {
  try {
    f();
  } catch (const VbError& e) {
    return e.Number();
  }
  return std::nullopt;
}

#define EXPECT_RAISES(statement, number) \
  EXPECT_EQ(ErrorOf([&] { (void)(statement); }), std::optional<int>(number)) << #statement

QDateTime D(int y, int m, int d, int h = 0, int n = 0, int s = 0) {
  return QDateTime(QDate(y, m, d), QTime(h, n, s));
}

// Six people; a few Nulls, mixed case, an apostrophe, two equal ages.
RecordsetPtr People() {
  auto rs = Recordset::Create();
  rs->Append("ID", adInteger, 4, 0);
  rs->Append("Nome", adVarWChar, 50);
  rs->Append("Citta", adVarWChar, 30);
  rs->Append("Eta", adSmallInt);
  rs->Append("Prezzo", adDouble);
  rs->Append("Data", adDate);
  rs->Append("Attivo", adBoolean);
  rs->Append("Codice Fiscale", adVarWChar, 16);
  rs->Open();
  std::vector<Row> rows;
  rows.push_back({1, "Mario", "Roma", 30, 10.5, D(2024, 1, 15), true, "AAA"});
  rows.push_back({2, "luigi", "Milano", 25, 20.0, D(2024, 3, 4), false, "BBB"});
  rows.push_back({3, "Anna", QVariant(), 40, 5.25, D(2023, 12, 31), true, QVariant()});
  rows.push_back({4, "BRUNO", "roma", 35, QVariant(), QVariant(), false, "DDD"});
  rows.push_back({5, "Carla", "Napoli", 25, 20.0, D(2024, 3, 4, 10, 30), true, "EEE"});
  rows.push_back({6, "O'Neil", "Torino", 50, 99.9, D(2024, 7, 1), false, "FFF"});
  rs->AppendRows(std::move(rows));
  return rs;
}

// The IDs of the rows under the cursor's view, in order; leaves the cursor at EOF.
std::vector<int> Ids(Recordset& rs) {
  std::vector<int> ids;
  if (rs.RecordCount() == 0) return ids;
  rs.MoveFirst();
  while (!rs.Eof()) {
    ids.push_back(rs.Value("ID").toInt());
    rs.MoveNext();
  }
  return ids;
}

std::vector<int> Filtered(const RecordsetPtr& rs, const QString& filter) {
  rs->SetFilter(filter);
  return Ids(*rs);
}

using V = std::vector<int>;

}  // namespace

// ------------------------------------------------------------------ structure and values

TEST(RecordsetStructure, FieldsAreFoundWithoutRegardToCase) {
  auto rs = People();
  EXPECT_EQ(rs->FieldCount(), 8);
  EXPECT_EQ(rs->FieldIndex("nome"), 1);
  EXPECT_EQ(rs->FieldIndex("CODICE FISCALE"), 7);
  EXPECT_EQ(rs->FieldIndex("Missing"), -1);
  EXPECT_EQ(rs->FieldInfo(3).Name, QString("Eta"));
  EXPECT_RAISES(rs->FieldInfo(8), err::ItemNotFound);
  EXPECT_RAISES(rs->Value("Missing"), err::ItemNotFound);
  EXPECT_RAISES(rs->SetValue("Missing", 1), err::ItemNotFound);
  EXPECT_RAISES((*rs)["Missing"], err::ItemNotFound);
  EXPECT_EQ((*rs)["nOmE"].Value().toString(), QString("Mario"));
}

TEST(RecordsetStructure, AppendAfterOpenIsRefusedAndTextSizeDefaults) {
  auto rs = Recordset::Create();
  rs->Append("T", adVarWChar);  // no size
  rs->Append("M", adLongVarWChar);
  EXPECT_RAISES(rs->Append("t", adInteger), err::BadArguments);  // same name, other case
  rs->Open();
  EXPECT_EQ(rs->FieldInfo(0).DefinedSize, 255);
  EXPECT_RAISES(rs->Append("X", adInteger), err::OperationNotAllowed);
  EXPECT_RAISES(rs->Open(), err::OperationNotAllowed);
  rs->AddNew();
  EXPECT_RAISES(rs->SetValue("T", QString(256, 'x')), err::MultipleStep);
  rs->SetValue("T", QString(255, 'x'));
  rs->SetValue("M", QString(100000, 'y'));  // a long text with no size has no bound
  rs->Update();
  EXPECT_EQ(rs->Value("T").toString().size(), 255);
  EXPECT_EQ(rs->Value("M").toString().size(), 100000);
}

TEST(RecordsetValues, WritesAreStoredInTheTypeOfTheField) {
  auto rs = Recordset::Create();
  rs->Append("Ti", adTinyInt);
  rs->Append("Ub", adUnsignedTinyInt);
  rs->Append("Si", adSmallInt);
  rs->Append("In", adInteger);
  rs->Append("Bi", adBigInt);
  rs->Append("Sg", adSingle);
  rs->Append("Db", adDouble);
  rs->Append("Cy", adCurrency);
  rs->Append("Nu", adNumeric);
  rs->Append("Dt", adDate);
  rs->Append("Bo", adBoolean);
  rs->Append("Tx", adVarWChar, 20);
  rs->Append("Ch", adChar, 10);
  rs->Append("Va", adVariant);
  rs->Open();
  rs->AddNew();
  rs->SetValue("Ti", "-5");
  rs->SetValue("Ub", 200.0);
  rs->SetValue("Si", QString("1234"));
  rs->SetValue("In", 2.5);  // halves go to even
  rs->SetValue("Bi", QVariant(qlonglong(5000000000LL)));
  rs->SetValue("Sg", 1.5f);
  rs->SetValue("Db", "2,25");
  rs->SetValue("Cy", 1.234567);
  rs->SetValue("Nu", "3.5");
  rs->SetValue("Dt", "15/01/2024");
  rs->SetValue("Bo", 2);
  rs->SetValue("Tx", 42);
  rs->SetValue("Ch", 3.5);
  rs->SetValue("Va", QByteArray("raw"));
  rs->Update();

  EXPECT_EQ(rs->Value("Ti").typeId(), QMetaType::Int);
  EXPECT_EQ(rs->Value("Ti").toInt(), -5);
  EXPECT_EQ(rs->Value("Ub").typeId(), QMetaType::Int);
  EXPECT_EQ(rs->Value("Ub").toInt(), 200);
  EXPECT_EQ(rs->Value("Si").toInt(), 1234);
  EXPECT_EQ(rs->Value("In").toInt(), 2);
  EXPECT_EQ(rs->Value("Bi").typeId(), QMetaType::LongLong);
  EXPECT_EQ(rs->Value("Bi").toLongLong(), 5000000000LL);
  EXPECT_EQ(rs->Value("Sg").typeId(), QMetaType::Double);
  EXPECT_DOUBLE_EQ(rs->Value("Sg").toDouble(), 1.5);
  EXPECT_EQ(rs->Value("Db").typeId(), QMetaType::Double);
  EXPECT_DOUBLE_EQ(rs->Value("Db").toDouble(), 2.25);
  EXPECT_DOUBLE_EQ(rs->Value("Cy").toDouble(), 1.2346);
  EXPECT_DOUBLE_EQ(rs->Value("Nu").toDouble(), 3.5);
  EXPECT_EQ(rs->Value("Dt").typeId(), QMetaType::QDateTime);
  EXPECT_EQ(rs->Value("Dt").toDateTime(), D(2024, 1, 15));
  EXPECT_EQ(rs->Value("Bo").typeId(), QMetaType::Bool);
  EXPECT_TRUE(rs->Value("Bo").toBool());
  EXPECT_EQ(rs->Value("Tx").typeId(), QMetaType::QString);
  EXPECT_EQ(rs->Value("Tx").toString(), QString("42"));
  EXPECT_EQ(rs->Value("Ch").toString(), CStr(3.5));
  EXPECT_EQ(rs->Value("Va").typeId(), QMetaType::QByteArray);
  EXPECT_EQ(rs->Value("Va").toByteArray(), QByteArray("raw"));

  rs->SetValue("Bo", 0);
  rs->SetValue("In", 3.5);
  EXPECT_FALSE(rs->Value("Bo").toBool());
  EXPECT_EQ(rs->Value("In").toInt(), 4);
  rs->SetValue("Tx", Null);
  EXPECT_TRUE(IsNull(rs->Value("Tx")));
}

TEST(RecordsetValues, ValuesThatDoNotFitRaiseMultipleStep) {
  auto rs = Recordset::Create();
  rs->Append("Note", adVarWChar, 5000);
  rs->Append("Short", adVarWChar, 3);
  rs->Append("Ti", adTinyInt);
  rs->Append("Ub", adUnsignedTinyInt);
  rs->Append("Si", adSmallInt);
  rs->Append("In", adInteger);
  rs->Append("Dt", adDate);
  rs->Append("Bo", adBoolean);
  rs->Append("Req", adInteger, 4, adFldUpdatable);  // not nullable
  rs->Open();
  rs->AddNew();
  rs->SetValue("Req", 1);
  rs->SetValue("In", 7);
  rs->Update();

  EXPECT_RAISES(rs->SetValue("Note", QString(6000, 'x')), err::MultipleStep);
  EXPECT_FALSE(rs->EditMode());  // a refused first write starts no edit
  EXPECT_RAISES(rs->SetValue("Short", "abcd"), err::MultipleStep);
  EXPECT_RAISES(rs->SetValue("In", "abc"), err::MultipleStep);
  EXPECT_RAISES(rs->SetValue("In", ""), err::MultipleStep);
  EXPECT_RAISES(rs->SetValue("In", 3000000000.0), err::MultipleStep);
  EXPECT_RAISES(rs->SetValue("In", QVariant(qlonglong(-3000000000LL))), err::MultipleStep);
  EXPECT_RAISES(rs->SetValue("Ti", 128), err::MultipleStep);
  EXPECT_RAISES(rs->SetValue("Ub", -1), err::MultipleStep);
  EXPECT_RAISES(rs->SetValue("Si", 40000), err::MultipleStep);
  EXPECT_RAISES(rs->SetValue("Dt", "not a date"), err::MultipleStep);
  EXPECT_RAISES(rs->SetValue("Bo", "maybe"), err::MultipleStep);
  EXPECT_RAISES(rs->SetValue("Req", Null), err::MultipleStep);
  EXPECT_EQ(rs->Value("In").toInt(), 7);  // the refused writes left the value alone
  EXPECT_EQ(rs->Value("Req").toInt(), 1);

  rs->SetValue("Note", QString(5000, 'x'));
  rs->SetValue("Short", "abc");
  rs->SetValue("Ti", -128);
  rs->SetValue("Ub", 255);
  rs->SetValue("Si", -32768);
  rs->SetValue("In", "-12");
  rs->SetValue("In", Null);  // nullable
  rs->Update();
  EXPECT_EQ(rs->Value("Note").toString().size(), 5000);
  EXPECT_EQ(rs->Value("Short").toString(), QString("abc"));
  EXPECT_EQ(rs->Value("Ti").toInt(), -128);
  EXPECT_EQ(rs->Value("Si").toInt(), -32768);
  EXPECT_TRUE(IsNull(rs->Value("In")));
}

TEST(RecordsetValues, NoCurrentRecordRaises3021) {
  auto rs = Recordset::Create();
  rs->Append("A", adInteger);
  rs->Open();
  EXPECT_TRUE(rs->Eof());
  EXPECT_RAISES(rs->Value("A"), err::NoCurrentRecord);
  EXPECT_RAISES(rs->SetValue("A", 1), err::NoCurrentRecord);
  EXPECT_RAISES(rs->Edit(), err::NoCurrentRecord);
  EXPECT_RAISES(rs->Delete(), err::NoCurrentRecord);
  EXPECT_RAISES(rs->Value("B"), err::ItemNotFound);  // the name is checked first
}

// ------------------------------------------------------------------ cursor

TEST(RecordsetCursor, EmptyRecordsetIsAtBothEnds) {
  auto rs = Recordset::Create();
  rs->Append("A", adInteger);
  rs->Open();
  EXPECT_TRUE(rs->Eof());
  EXPECT_TRUE(rs->Bof());
  EXPECT_EQ(rs->RecordCount(), 0);
  EXPECT_EQ(rs->AbsolutePosition(), -1);
  EXPECT_RAISES(rs->MoveNext(), err::NoCurrentRecord);
  EXPECT_RAISES(rs->MovePrevious(), err::NoCurrentRecord);
  rs->MoveFirst();
  rs->MoveLast();
  EXPECT_TRUE(rs->Eof() && rs->Bof());
}

TEST(RecordsetCursor, MovesEofBofAndErrors) {
  auto rs = People();
  EXPECT_FALSE(rs->Eof());
  EXPECT_FALSE(rs->Bof());
  EXPECT_EQ(rs->Value("ID").toInt(), 1);
  rs->MovePrevious();
  EXPECT_TRUE(rs->Bof());
  EXPECT_FALSE(rs->Eof());
  EXPECT_RAISES(rs->Value("ID"), err::NoCurrentRecord);
  EXPECT_RAISES(rs->MovePrevious(), err::NoCurrentRecord);
  rs->MoveNext();  // from BOF to the first row
  EXPECT_EQ(rs->Value("ID").toInt(), 1);
  rs->MoveLast();
  EXPECT_EQ(rs->Value("ID").toInt(), 6);
  rs->MoveNext();
  EXPECT_TRUE(rs->Eof());
  EXPECT_FALSE(rs->Bof());
  EXPECT_RAISES(rs->MoveNext(), err::NoCurrentRecord);
  rs->MovePrevious();  // from EOF to the last row
  EXPECT_EQ(rs->Value("ID").toInt(), 6);
  rs->MovePrevious();
  EXPECT_EQ(rs->Value("ID").toInt(), 5);
  rs->MoveFirst();
  EXPECT_EQ(rs->Value("ID").toInt(), 1);
}

TEST(RecordsetCursor, AbsolutePosition) {
  auto rs = People();
  EXPECT_EQ(rs->AbsolutePosition(), 1);
  rs->MoveNext();
  rs->MoveNext();
  EXPECT_EQ(rs->AbsolutePosition(), 3);
  rs->SetAbsolutePosition(5);
  EXPECT_EQ(rs->Value("ID").toInt(), 5);
  EXPECT_EQ(rs->AbsolutePosition(), 5);
  EXPECT_RAISES(rs->SetAbsolutePosition(0), err::BadArguments);
  EXPECT_RAISES(rs->SetAbsolutePosition(7), err::BadArguments);
  EXPECT_EQ(rs->Value("ID").toInt(), 5);
  rs->MoveLast();
  rs->MoveNext();
  EXPECT_EQ(rs->AbsolutePosition(), -1);

  // With a row deleted, positions count the rows that are left.
  rs->SetAbsolutePosition(2);
  rs->Delete();
  EXPECT_EQ(rs->AbsolutePosition(), -1);
  rs->SetAbsolutePosition(2);
  EXPECT_EQ(rs->Value("ID").toInt(), 3);
  EXPECT_EQ(rs->AbsolutePosition(), 2);
  rs->MoveLast();
  EXPECT_EQ(rs->AbsolutePosition(), 5);
}

// ------------------------------------------------------------------ filter

TEST(RecordsetFilter, NoFilterReadsAsZero) {
  auto rs = People();
  EXPECT_EQ(rs->Filter(), QString("0"));
  rs->SetFilter("ID > 2");
  EXPECT_EQ(rs->Filter(), QString("ID > 2"));
  EXPECT_EQ(rs->RecordCount(), 4);
  rs->SetFilter("0");
  EXPECT_EQ(rs->Filter(), QString("0"));
  EXPECT_EQ(rs->RecordCount(), 6);
  rs->SetFilter("ID > 2");
  rs->SetFilter("");
  EXPECT_EQ(rs->Filter(), QString("0"));
  EXPECT_EQ(rs->RecordCount(), 6);
}

TEST(RecordsetFilter, ComparisonOperatorsOnNumbers) {
  auto rs = People();
  EXPECT_EQ(Filtered(rs, "ID = 3"), V({3}));
  EXPECT_EQ(Filtered(rs, "ID <> 3"), V({1, 2, 4, 5, 6}));
  EXPECT_EQ(Filtered(rs, "ID < 3"), V({1, 2}));
  EXPECT_EQ(Filtered(rs, "ID > 4"), V({5, 6}));
  EXPECT_EQ(Filtered(rs, "ID <= 2"), V({1, 2}));
  EXPECT_EQ(Filtered(rs, "ID >= 5"), V({5, 6}));
  EXPECT_EQ(Filtered(rs, "ID=3"), V({3}));
  EXPECT_EQ(Filtered(rs, "Eta > -4"), V({1, 2, 3, 4, 5, 6}));
  EXPECT_EQ(Filtered(rs, "Prezzo = 5.25"), V({3}));
  EXPECT_EQ(Filtered(rs, "Prezzo > 10"), V({1, 2, 5, 6}));  // Null Prezzo of 4 never passes
  EXPECT_EQ(Filtered(rs, "Prezzo <= 10.5"), V({1, 3}));
  EXPECT_EQ(Filtered(rs, "Prezzo = '20'"), V({2, 5}));  // a numeric text compares as a number
  EXPECT_EQ(Filtered(rs, "Eta = '25'"), V({2, 5}));
}

TEST(RecordsetFilter, TextsAndNamesWithoutRegardToCase) {
  auto rs = People();
  EXPECT_EQ(Filtered(rs, "Nome = 'MARIO'"), V({1}));
  EXPECT_EQ(Filtered(rs, "nome = 'bruno'"), V({4}));
  EXPECT_EQ(Filtered(rs, "CITTA = 'Roma'"), V({1, 4}));
  EXPECT_EQ(Filtered(rs, "Citta <> 'roma'"), V({2, 5, 6}));  // Null Citta of 3 is excluded
  EXPECT_EQ(Filtered(rs, "Nome < 'c'"), V({3, 4}));
  EXPECT_EQ(Filtered(rs, "Nome >= 'M'"), V({1, 6}));
  EXPECT_EQ(Filtered(rs, "Nome = 'O''Neil'"), V({6}));
  EXPECT_EQ(Filtered(rs, "[Codice Fiscale] = 'aaa'"), V({1}));
  EXPECT_EQ(Filtered(rs, "[codice fiscale] > 'D'"), V({4, 5, 6}));
  EXPECT_EQ(Filtered(rs, "[Nome] = 'anna'"), V({3}));
}

TEST(RecordsetFilter, LikeWithWildcards) {
  auto rs = People();
  EXPECT_EQ(Filtered(rs, "Nome Like 'm*'"), V({1}));
  EXPECT_EQ(Filtered(rs, "Nome LIKE '*A'"), V({3, 5}));
  EXPECT_EQ(Filtered(rs, "Nome like '%ar%'"), V({1, 5}));
  EXPECT_EQ(Filtered(rs, "Nome Like 'mario'"), V({1}));
  EXPECT_EQ(Filtered(rs, "Nome Like 'an*a'"), V({3}));
  EXPECT_EQ(Filtered(rs, "Nome Like 'c_rla'"), V({5}));
  EXPECT_EQ(Filtered(rs, "Nome Like 'B?UNO'"), V({4}));
  EXPECT_EQ(Filtered(rs, "Nome Like '*''*'"), V({6}));
  EXPECT_EQ(Filtered(rs, "Nome Like '*'"), V({1, 2, 3, 4, 5, 6}));
  EXPECT_EQ(Filtered(rs, "Citta Like '*'"), V({1, 2, 4, 5, 6}));  // Null is no text
  EXPECT_EQ(Filtered(rs, "Nome Like '*x*'"), V({}));
  EXPECT_EQ(Filtered(rs, "Nome Like 'M*o*'"), V({1}));
}

TEST(RecordsetFilter, AndBindsTighterThanOrAndParenthesesGroup) {
  auto rs = People();
  EXPECT_EQ(Filtered(rs, "Citta = 'Roma' OR ID = 2 AND Eta = 99"), V({1, 4}));
  EXPECT_EQ(Filtered(rs, "Citta = 'Roma' OR ID = 2 AND Eta = 25"), V({1, 2, 4}));
  EXPECT_EQ(Filtered(rs, "(Citta = 'Roma' OR ID = 2) AND Eta = 30"), V({1}));
  EXPECT_EQ(Filtered(rs, "(Citta = 'Roma' or ID = 2) and Eta = 25"), V({2}));
  EXPECT_EQ(Filtered(rs, "Eta = 25 AND ID = 5 OR Eta = 50"), V({5, 6}));
  EXPECT_EQ(Filtered(rs, "((ID = 1) Or (ID = 6)) AND (Attivo = True)"), V({1}));
  EXPECT_EQ(Filtered(rs, "ID > 1 AND ID < 6 AND Nome Like '*n*'"), V({3, 4}));
}

TEST(RecordsetFilter, DatesAndDateTexts) {
  auto rs = People();
  EXPECT_EQ(Filtered(rs, "Data = #03/04/2024#"), V({2}));  // month first: 4 March
  EXPECT_EQ(Filtered(rs, "Data >= #03/04/2024#"), V({2, 5, 6}));
  EXPECT_EQ(Filtered(rs, "Data > #03/04/2024 10:00:00#"), V({5, 6}));
  EXPECT_EQ(Filtered(rs, "Data = #03/04/2024 10:30:00#"), V({5}));
  EXPECT_EQ(Filtered(rs, "Data <> #03/04/2024#"), V({1, 3, 5, 6}));  // Null Data of 4 excluded
  EXPECT_EQ(Filtered(rs, "Data < '2024-01-01'"), V({3}));
  EXPECT_EQ(Filtered(rs, "Data = '04/03/2024'"), V({2}));  // a text reads day first
  EXPECT_EQ(Filtered(rs, "Data >= '15/01/2024' AND Data < '2024-03-04 10:30:00'"), V({1, 2}));
}

TEST(RecordsetFilter, NullAndBooleans) {
  auto rs = People();
  EXPECT_EQ(Filtered(rs, "Citta = Null"), V({3}));
  EXPECT_EQ(Filtered(rs, "Citta <> NULL"), V({1, 2, 4, 5, 6}));
  EXPECT_EQ(Filtered(rs, "Prezzo = null OR Data = Null"), V({4}));
  EXPECT_EQ(Filtered(rs, "Citta > Null"), V({}));
  EXPECT_EQ(Filtered(rs, "Attivo = True"), V({1, 3, 5}));
  EXPECT_EQ(Filtered(rs, "Attivo = 0"), V({2, 4, 6}));
  EXPECT_EQ(Filtered(rs, "Attivo <> false"), V({1, 3, 5}));
}

TEST(RecordsetFilter, NumbersAgainstNumericTexts) {
  auto rs = Recordset::Create();
  rs->Append("ID", adInteger);
  rs->Append("Cod", adVarWChar, 10);
  rs->Open();
  rs->AppendRows({{1, QString("10")}, {2, QString("9")}, {3, QString("100")}, {4, QString("abc")}});
  EXPECT_EQ(Filtered(rs, "Cod > 9"), V({1, 3, 4}));  // read as numbers; "abc" as a text
  EXPECT_EQ(Filtered(rs, "Cod > '9'"), V({4}));     // compared as texts
  EXPECT_EQ(Filtered(rs, "Cod = 10.0"), V({1}));
}

// Nesting up to 256 levels of brackets is a filter; deeper is an invalid one.
TEST(RecordsetFilter, NestingDeeperThanTheBoundIsAnInvalidFilter) {
  auto rs = People();
  const auto annidato = [](int livelli) {
    return QString(livelli, '(') + "ID = 3" + QString(livelli, ')');
  };
  EXPECT_EQ(Filtered(rs, annidato(256)), V({3}));
  rs->SetFilter("ID = 1");
  for (int livelli : {257, 100000}) {
    try {
      rs->SetFilter(annidato(livelli));
      ADD_FAILURE() << livelli << " levels were taken";
    } catch (const VbError& e) {
      EXPECT_EQ(e.Number(), 3001);
    }
    EXPECT_EQ(rs->Filter(), "ID = 1");
  }
  // An open bracket without end, a hundred thousand times.
  EXPECT_THROW(rs->SetFilter(QString(100000, '(')), VbError);
}

TEST(RecordsetFilter, InvalidFilterRaises3001AndKeepsThePreviousOne) {
  auto rs = People();
  rs->SetFilter("Citta = 'Roma'");
  rs->MoveNext();
  ASSERT_EQ(rs->Value("ID").toInt(), 4);
  const char* bad[] = {
      "Nome Like '*l'apostrophe*'",
      "Nome = 'abc",
      "ID = ",
      "ID == 3",
      "ID 3",
      "Foo = 1",
      "(ID = 1",
      "ID = 1)",
      "ID = 1 AND",
      "AND ID = 1",
      "ID = 1 2",
      "ID = 'abc'",
      "Data = #13/45/2024#",
      "Data = #03/04/2024",
      "Data = 'yesterday'",
      "Data = 5",
      "Nome Like 5",
      "ID = 12abc",
      "[Nome = 'x'",
      "ID = 1 OR OR ID = 2",
      "ID ! 3",
  };
  for (const char* f : bad) {
    EXPECT_RAISES(rs->SetFilter(f), err::BadArguments) << f;
    EXPECT_EQ(rs->Filter(), QString("Citta = 'Roma'")) << f;
    EXPECT_EQ(rs->RecordCount(), 2) << f;
    EXPECT_EQ(rs->Value("ID").toInt(), 4) << f;
  }
}

// ------------------------------------------------------------------ sort

TEST(RecordsetSort, DescendingMultiKeyStableAndCaseInsensitive) {
  auto rs = People();
  rs->SetSort("Eta DESC");
  EXPECT_EQ(rs->Sort(), QString("Eta DESC"));
  EXPECT_EQ(rs->Value("ID").toInt(), 6);  // the cursor goes to the first row
  EXPECT_EQ(Ids(*rs), V({6, 3, 4, 1, 2, 5}));  // 2 and 5 are equal: they keep their order
  rs->SetSort("Eta");
  EXPECT_EQ(Ids(*rs), V({2, 5, 1, 4, 3, 6}));
  rs->SetSort("eta asc, ID DESC");
  EXPECT_EQ(Ids(*rs), V({5, 2, 1, 4, 3, 6}));
  rs->SetSort("nome");
  EXPECT_EQ(Ids(*rs), V({3, 4, 5, 2, 1, 6}));  // Anna BRUNO Carla luigi Mario O'Neil
  rs->SetSort("Citta, Nome DESC");
  EXPECT_EQ(Ids(*rs), V({3, 2, 5, 1, 4, 6}));  // Null first; Roma/roma by Nome descending
  rs->SetSort("[Codice Fiscale] DESC");
  EXPECT_EQ(Ids(*rs), V({6, 5, 4, 2, 1, 3}));
}

TEST(RecordsetSort, StableOnManyEqualKeys) {
  auto rs = Recordset::Create();
  rs->Append("ID", adInteger);
  rs->Append("K", adVarWChar, 5);
  rs->Open();
  std::vector<Row> rows;
  const char* keys[] = {"b", "A", "c", "a", "B"};  // equal without regard to case in pairs
  for (int i = 0; i < 3000; ++i) rows.push_back({(i * 7919) % 3000, QString(keys[i % 5])});
  rs->AppendRows(std::move(rows));
  // The rows in store order by ID, to know each row's place.
  std::map<int, int> place;
  for (int i = 0; i < 3000; ++i) place[(i * 7919) % 3000] = i;
  ASSERT_EQ(place.size(), 3000u);
  rs->SetSort("K DESC");
  QString prevKey;
  int prevPlace = -1, count = 0;
  while (!rs->Eof()) {
    const QString k = rs->Value("K").toString().toLower();
    const int p = place.at(rs->Value("ID").toInt());
    if (k == prevKey) ASSERT_GT(p, prevPlace) << "row " << count;
    else if (!prevKey.isEmpty()) ASSERT_LT(k, prevKey);
    prevKey = k;
    prevPlace = p;
    ++count;
    rs->MoveNext();
  }
  EXPECT_EQ(count, 3000);
}

// Rows already in the order asked stay as they are; rows in its exact
// reverse come out reversed; a reverse with two equal rows still keeps
// equal rows in store order.
TEST(RecordsetSort, RowsInTheOrderOrItsReverseSortAsAnyOthers) {
  auto rs = Recordset::Create();
  rs->Append("ID", adInteger);
  rs->Append("N", adInteger);
  rs->Append("T", adVarWChar, 5);
  rs->Open();
  rs->AppendRows({{1, 30, "c"}, {2, 30, "C"}, {3, 20, "b"}, {4, 20, "b"}, {5, 10, "a"}, {6, 5, QVariant()}});
  rs->SetSort("N DESC");
  EXPECT_EQ(Ids(*rs), V({1, 2, 3, 4, 5, 6}));
  rs->SetSort("N");  // a reverse with equal rows: these keep their order
  EXPECT_EQ(Ids(*rs), V({6, 5, 3, 4, 1, 2}));
  rs->SetSort("T");  // texts equal without regard to case, and a Null first
  EXPECT_EQ(Ids(*rs), V({6, 5, 3, 4, 1, 2}));
  rs->SetSort("ID DESC");  // the exact reverse
  EXPECT_EQ(Ids(*rs), V({6, 5, 4, 3, 2, 1}));
  rs->SetSort("N, ID DESC");  // a second key breaks the ties: the exact reverse
  EXPECT_EQ(Ids(*rs), V({6, 5, 4, 3, 2, 1}));
  rs->SetSort("N DESC, ID");
  EXPECT_EQ(Ids(*rs), V({1, 2, 3, 4, 5, 6}));
  rs->SetFilter("ID > 4");  // two rows in reverse, then one
  EXPECT_EQ(Ids(*rs), V({5, 6}));
  rs->SetSort("N");
  EXPECT_EQ(Ids(*rs), V({6, 5}));
  rs->SetFilter("ID = 2");
  EXPECT_EQ(Ids(*rs), V({2}));
}

TEST(RecordsetSort, NullsFirstAscendingLastDescending) {
  auto rs = People();
  rs->SetSort("Data");
  EXPECT_EQ(Ids(*rs), V({4, 3, 1, 2, 5, 6}));
  rs->SetSort("Data DESC");
  EXPECT_EQ(Ids(*rs), V({6, 5, 2, 1, 3, 4}));
  rs->SetSort("Citta");
  EXPECT_EQ(Ids(*rs), V({3, 2, 5, 1, 4, 6}));  // Roma and roma tie: store order
  rs->SetSort("Citta DESC");
  EXPECT_EQ(Ids(*rs), V({6, 1, 4, 5, 2, 3}));
}

TEST(RecordsetSort, UnknownFieldRaisesAndEmptyClears) {
  auto rs = People();
  rs->SetSort("ID DESC");
  EXPECT_RAISES(rs->SetSort("Foo"), err::ItemNotFound);
  EXPECT_RAISES(rs->SetSort("ID DESC, Bar ASC"), err::ItemNotFound);
  EXPECT_EQ(rs->Sort(), QString("ID DESC"));
  EXPECT_EQ(Ids(*rs), V({6, 5, 4, 3, 2, 1}));
  rs->SetSort("");
  EXPECT_EQ(rs->Sort(), QString());
  EXPECT_EQ(Ids(*rs), V({1, 2, 3, 4, 5, 6}));
}

TEST(RecordsetSort, SortAndFilterTogether) {
  auto rs = People();
  rs->SetSort("Prezzo DESC");
  rs->SetFilter("Eta <= 35");
  EXPECT_EQ(Ids(*rs), V({2, 5, 1, 4}));
  rs->SetFilter("");
  EXPECT_EQ(Ids(*rs), V({6, 2, 5, 1, 3, 4}));
}

// ------------------------------------------------------------------ clones

TEST(RecordsetClone, FilterSortAndPositionAreTheirOwn) {
  auto rs = People();
  rs->SetFilter("Citta = 'Roma'");
  auto c = rs->Clone();
  EXPECT_EQ(c->Filter(), QString("0"));
  EXPECT_EQ(c->Sort(), QString());
  EXPECT_EQ(c->RecordCount(), 6);
  EXPECT_EQ(c->Value("ID").toInt(), 1);

  rs->MoveNext();  // ID 4
  c->SetSort("ID DESC");
  c->SetFilter("Eta > 30");
  EXPECT_EQ(c->Value("ID").toInt(), 6);
  EXPECT_EQ(rs->Value("ID").toInt(), 4);
  EXPECT_EQ(rs->Filter(), QString("Citta = 'Roma'"));
  EXPECT_EQ(rs->Sort(), QString());
  EXPECT_EQ(rs->RecordCount(), 2);

  c->MoveLast();
  EXPECT_EQ(rs->Value("ID").toInt(), 4);
  rs->SetFilter("");
  EXPECT_EQ(c->Filter(), QString("Eta > 30"));
  EXPECT_EQ(c->RecordCount(), 3);
  EXPECT_EQ(Ids(*c), V({6, 4, 3}));
}

TEST(RecordsetClone, AdditionsAndDeletionsAreShared) {
  auto rs = People();
  auto c = rs->Clone();
  rs->SetFilter("Citta = 'Roma'");

  c->AddNew();
  c->SetValue("ID", 7);
  c->SetValue("Citta", "ROMA");
  c->Update();
  c->AddNew();
  c->SetValue("ID", 8);
  c->SetValue("Citta", "Bari");
  c->Update();
  EXPECT_EQ(c->RecordCount(), 8);
  EXPECT_EQ(rs->RecordCount(), 3);  // only the new row that passes its filter
  EXPECT_EQ(Ids(*rs), V({1, 4, 7}));

  // The row deleted through the original disappears from the clone.
  rs->MoveFirst();
  rs->Delete();
  EXPECT_EQ(c->RecordCount(), 7);
  EXPECT_EQ(Ids(*c), V({2, 3, 4, 5, 6, 7, 8}));

  // The clone's cursor on a row the original deletes: no current record,
  // and the next move goes on from where the row was.
  c->MoveFirst();
  c->MoveNext();
  c->MoveNext();  // ID 4
  ASSERT_EQ(c->Value("ID").toInt(), 4);
  rs->MoveFirst();
  ASSERT_EQ(rs->Value("ID").toInt(), 4);
  rs->Delete();
  EXPECT_RAISES(c->Value("ID"), err::NoCurrentRecord);
  c->MoveNext();
  EXPECT_EQ(c->Value("ID").toInt(), 5);

  // Edits through one are read by the other.
  rs->SetFilter("");
  rs->MoveFirst();
  rs->SetValue("Nome", "Changed");
  rs->Update();
  c->MoveFirst();
  EXPECT_EQ(c->Value("Nome").toString(), QString("Changed"));
}

TEST(RecordsetClone, CloseKeepsTheRowsOfTheClones) {
  auto rs = People();
  auto c = rs->Clone();
  rs->Close();
  EXPECT_FALSE(rs->IsOpen());
  EXPECT_TRUE(c->IsOpen());
  EXPECT_EQ(c->RecordCount(), 6);
  EXPECT_EQ(rs->FieldCount(), 0);
  EXPECT_RAISES(rs->RecordCount(), err::OperationNotAllowed);
  EXPECT_RAISES(rs->Eof(), err::OperationNotAllowed);
  EXPECT_RAISES(rs->MoveNext(), err::OperationNotAllowed);
  EXPECT_RAISES(rs->SetFilter("ID = 1"), err::OperationNotAllowed);
  EXPECT_RAISES(rs->AddNew(), err::OperationNotAllowed);
  EXPECT_RAISES(rs->Clone(), err::OperationNotAllowed);
  EXPECT_RAISES(rs->Value("ID"), err::OperationNotAllowed);
  EXPECT_RAISES(rs->SetValue("ID", 1), err::OperationNotAllowed);
  EXPECT_RAISES(rs->Save("unused.xml"), err::OperationNotAllowed);

  // A closed recordset can take a new structure.
  rs->Append("X", adInteger);
  rs->Open();
  EXPECT_EQ(rs->RecordCount(), 0);
  EXPECT_EQ(c->FieldCount(), 8);
}

// ------------------------------------------------------------------ edits and deletes

TEST(RecordsetEdit, AddNewUpdateAndCancel) {
  auto rs = People();
  rs->MoveNext();  // ID 2
  rs->AddNew();
  EXPECT_TRUE(rs->EditMode());
  EXPECT_FALSE(rs->Eof());
  EXPECT_TRUE(IsNull(rs->Value("ID")));
  rs->SetValue("ID", 9);
  EXPECT_EQ(rs->Value("ID").toInt(), 9);
  rs->CancelUpdate();
  EXPECT_FALSE(rs->EditMode());
  EXPECT_EQ(rs->RecordCount(), 6);
  EXPECT_EQ(rs->Value("ID").toInt(), 2);  // back where AddNew was called

  rs->AddNew();
  (*rs)["ID"] = 7;
  (*rs)["Nome"] = QString("Zeta");
  rs->Update();
  EXPECT_FALSE(rs->EditMode());
  EXPECT_EQ(rs->RecordCount(), 7);
  EXPECT_EQ(rs->Value("ID").toInt(), 7);  // the cursor is on the new record
  EXPECT_EQ(rs->AbsolutePosition(), 7);
  EXPECT_TRUE(IsNull(rs->Value("Citta")));
  rs->MoveNext();
  EXPECT_TRUE(rs->Eof());
}

TEST(RecordsetEdit, NewRowThatFailsTheFilterStaysUntilTheFilterChanges) {
  auto rs = People();
  rs->SetFilter("Citta = 'Roma'");
  rs->AddNew();
  rs->SetValue("ID", 7);
  rs->SetValue("Citta", "Milano");
  rs->Update();
  EXPECT_EQ(rs->Value("ID").toInt(), 7);
  EXPECT_EQ(rs->RecordCount(), 3);
  rs->SetFilter("Citta = 'Roma'");
  EXPECT_EQ(rs->RecordCount(), 2);
}

TEST(RecordsetEdit, ImplicitEditIsKeptOnMoveAndExplicitEditCanBeCancelled) {
  auto rs = People();
  rs->SetValue("Nome", "Marione");  // starts the edit by itself
  EXPECT_TRUE(rs->EditMode());
  EXPECT_EQ(rs->Value("Nome").toString(), QString("Marione"));
  rs->MoveNext();  // no write cursor: the edit is kept
  EXPECT_FALSE(rs->EditMode());
  rs->MovePrevious();
  EXPECT_EQ(rs->Value("Nome").toString(), QString("Marione"));

  rs->Edit();
  rs->SetValue("Nome", "Other");
  rs->CancelUpdate();
  EXPECT_EQ(rs->Value("Nome").toString(), QString("Marione"));

  rs->AddNew();
  rs->SetValue("ID", 10);
  rs->MoveFirst();  // the pending new record is kept as well
  EXPECT_EQ(rs->RecordCount(), 7);
  rs->MoveLast();
  EXPECT_EQ(rs->Value("ID").toInt(), 10);
}

TEST(RecordsetDelete, CursorStaysOnTheDeletedRowUntilItMoves) {
  auto rs = People();
  rs->MoveNext();  // ID 2
  rs->Delete();
  EXPECT_FALSE(rs->Eof());
  EXPECT_FALSE(rs->Bof());
  EXPECT_RAISES(rs->Value("ID"), err::NoCurrentRecord);
  EXPECT_RAISES(rs->Delete(), err::NoCurrentRecord);
  EXPECT_EQ(rs->RecordCount(), 5);
  rs->MoveNext();
  EXPECT_EQ(rs->Value("ID").toInt(), 3);
  rs->MovePrevious();
  EXPECT_EQ(rs->Value("ID").toInt(), 1);

  rs->MoveLast();
  rs->Delete();
  rs->MoveNext();
  EXPECT_TRUE(rs->Eof());
  EXPECT_EQ(Ids(*rs), V({1, 3, 4, 5}));
}

TEST(RecordsetDelete, DeleteWhileIteratingUnderAFilter) {
  auto rs = People();
  rs->SetFilter("Citta = 'Roma' OR Attivo = True");
  ASSERT_EQ(rs->RecordCount(), 4);
  int deleted = 0;
  while (!rs->Eof()) {
    rs->Delete();
    ++deleted;
    rs->MoveNext();
  }
  EXPECT_EQ(deleted, 4);
  EXPECT_EQ(rs->RecordCount(), 0);
  rs->SetFilter("");
  EXPECT_EQ(Ids(*rs), V({2, 6}));
}

TEST(RecordsetDelete, ManyDeletionsSeenByAClone) {
  auto rs = Recordset::Create();
  rs->Append("ID", adInteger);
  rs->Append("Pari", adBoolean);
  rs->Open();
  std::vector<Row> rows;
  for (int i = 0; i < 1000; ++i) rows.push_back({i, i % 2 == 0});
  rs->AppendRows(std::move(rows));
  auto c = rs->Clone();
  c->SetSort("ID DESC");
  c->MoveFirst();  // ID 999, odd: it stays

  rs->SetFilter("Pari = True");
  while (!rs->Eof()) {
    rs->Delete();
    rs->MoveNext();
  }
  EXPECT_EQ(c->RecordCount(), 500);
  EXPECT_EQ(c->Value("ID").toInt(), 999);
  std::vector<int> ids = Ids(*c);
  ASSERT_EQ(ids.size(), 500u);
  for (size_t k = 0; k < ids.size(); ++k) EXPECT_EQ(ids[k], 999 - 2 * static_cast<int>(k));
  c->SetAbsolutePosition(250);
  EXPECT_EQ(c->Value("ID").toInt(), 999 - 2 * 249);
  EXPECT_EQ(c->AbsolutePosition(), 250);
}

// ------------------------------------------------------------------ write cursor

namespace {

class FakeCursor : public WriteCursor {
 public:
  std::vector<QString> calls;
  std::vector<Row> rows;   // the row of Insert and DeleteRow, the "after" of UpdateRow
  std::vector<Row> befores;
  bool fail = false;

  void Insert(const std::vector<FieldDef>& fields, const Row& row) override {
    Record("Insert", fields, row);
  }
  void UpdateRow(const std::vector<FieldDef>& fields, const Row& before, const Row& after) override {
    befores.push_back(before);
    Record("UpdateRow", fields, after);
  }
  void DeleteRow(const std::vector<FieldDef>& fields, const Row& row) override {
    Record("DeleteRow", fields, row);
  }

 private:
  void Record(const char* what, const std::vector<FieldDef>& fields, const Row& row) {
    EXPECT_EQ(fields.size(), row.size());
    calls.push_back(what);
    rows.push_back(row);
    if (fail) Raise(err::SqlError, "refused");
  }
};

}  // namespace

TEST(RecordsetWriteCursor, UpdateAndDeleteReachTheCursor) {
  auto rs = People();
  auto cur = std::make_shared<FakeCursor>();
  rs->SetWriteCursor(cur);
  EXPECT_TRUE(rs->HasWriteCursor());
  EXPECT_TRUE(rs->Clone()->HasWriteCursor());

  rs->AddNew();
  rs->SetValue("ID", 7);
  rs->SetValue("Nome", "Nuovo");
  rs->Update();
  ASSERT_EQ(cur->calls, std::vector<QString>({"Insert"}));
  EXPECT_EQ(cur->rows[0][0].toInt(), 7);
  EXPECT_EQ(cur->rows[0][1].toString(), QString("Nuovo"));
  EXPECT_TRUE(IsNull(cur->rows[0][2]));
  EXPECT_EQ(rs->RecordCount(), 7);

  rs->MoveFirst();
  rs->Edit();
  rs->SetValue("Eta", 31);
  rs->Update();
  ASSERT_EQ(cur->calls.size(), 2u);
  EXPECT_EQ(cur->calls[1], QString("UpdateRow"));
  EXPECT_EQ(cur->befores[0][3].toInt(), 30);
  EXPECT_EQ(cur->rows[1][3].toInt(), 31);
  EXPECT_EQ(cur->rows[1][1].toString(), QString("Mario"));
  EXPECT_EQ(rs->Value("Eta").toInt(), 31);

  rs->MoveNext();
  rs->Delete();
  ASSERT_EQ(cur->calls.size(), 3u);
  EXPECT_EQ(cur->calls[2], QString("DeleteRow"));
  EXPECT_EQ(cur->rows[2][0].toInt(), 2);
  EXPECT_EQ(rs->RecordCount(), 6);
}

TEST(RecordsetWriteCursor, AFailingCursorLeavesMemoryUnchanged) {
  auto rs = People();
  auto cur = std::make_shared<FakeCursor>();
  rs->SetWriteCursor(cur);
  cur->fail = true;

  rs->AddNew();
  rs->SetValue("ID", 7);
  EXPECT_RAISES(rs->Update(), err::SqlError);
  EXPECT_TRUE(rs->EditMode());
  rs->CancelUpdate();
  EXPECT_EQ(rs->RecordCount(), 6);
  EXPECT_EQ(rs->Value("ID").toInt(), 1);

  rs->SetValue("Nome", "Nope");
  EXPECT_RAISES(rs->Update(), err::SqlError);
  rs->CancelUpdate();
  EXPECT_EQ(rs->Value("Nome").toString(), QString("Mario"));

  EXPECT_RAISES(rs->Delete(), err::SqlError);
  EXPECT_EQ(rs->RecordCount(), 6);
  EXPECT_EQ(rs->Value("ID").toInt(), 1);
  EXPECT_EQ(cur->calls, std::vector<QString>({"Insert", "UpdateRow", "DeleteRow"}));
}

TEST(RecordsetWriteCursor, MovingDropsThePendingEdit) {
  auto rs = People();
  auto cur = std::make_shared<FakeCursor>();
  rs->SetWriteCursor(cur);
  rs->SetValue("Nome", "Dropped");
  rs->MoveNext();
  rs->MovePrevious();
  EXPECT_EQ(rs->Value("Nome").toString(), QString("Mario"));
  rs->AddNew();
  rs->SetValue("ID", 7);
  rs->MoveLast();
  EXPECT_EQ(rs->RecordCount(), 6);
  EXPECT_EQ(rs->Value("ID").toInt(), 6);
  EXPECT_TRUE(cur->calls.empty());
}

TEST(RecordsetWriteCursor, UnchangedEditWritesNothing) {
  auto rs = People();
  auto cur = std::make_shared<FakeCursor>();
  rs->SetWriteCursor(cur);
  rs->Edit();
  rs->Update();
  rs->Edit();
  rs->SetValue("ID", 1);
  rs->Update();
  EXPECT_TRUE(cur->calls.empty());
}

// ------------------------------------------------------------------ bulk

TEST(RecordsetBulk, AppendRowsChecksTheWidth) {
  auto rs = People();
  EXPECT_RAISES(rs->AppendRows({{1, 2}}), err::BadArguments);
  EXPECT_EQ(rs->RecordCount(), 6);
  rs->AppendRows({{7, QString("X"), QVariant(), 1, 1.0, QVariant(), false, QVariant()}});
  EXPECT_EQ(rs->RecordCount(), 7);
  rs->MoveLast();
  EXPECT_EQ(rs->Value("Nome").toString(), QString("X"));
}

TEST(RecordsetBulk, LargeFilterAndSortAgreeWithABruteForceCount) {
  auto rs = Recordset::Create();
  rs->Append("ID", adInteger);
  rs->Append("TAnag", adInteger);
  rs->Append("CAnag", adInteger);
  rs->Append("DProject", adVarWChar, 100);
  for (int f = 0; f < 11; ++f) rs->Append(QString("F%1").arg(f), adDouble);
  rs->Open();
  const int n = 100000;
  std::vector<Row> rows;
  rows.reserve(n);
  int expected = 0;
  for (int i = 0; i < n; ++i) {
    Row r(15);
    const int t = i % 3, c = (i * 7) % 11;
    QString d = QString("project %1 ").arg(i);
    if (i % 13 == 0) d += "xAbCy";
    else if (i % 17 == 0) d += "ab c";
    r[0] = i;
    r[1] = t;
    r[2] = c;
    r[3] = d;
    for (int f = 0; f < 11; ++f) r[4 + f] = (i % 101) * 0.5 + f;
    if (t == 1 && c == 5 && i % 13 == 0) ++expected;
    rows.push_back(std::move(r));
  }
  rs->AppendRows(std::move(rows));
  rs->SetFilter("TAnag = 1 AND CAnag=5 AND DProject Like '*abc*'");
  ASSERT_GT(expected, 0);
  EXPECT_EQ(rs->RecordCount(), expected);
  rs->SetFilter("");
  rs->SetSort("CAnag DESC, ID");
  int prevC = 1 << 30, prevId = -1, count = 0;
  while (!rs->Eof()) {
    const int c = rs->Value(2).toInt(), id = rs->Value(0).toInt();
    if (c == prevC) ASSERT_GT(id, prevId);
    else ASSERT_LT(c, prevC);
    prevC = c;
    prevId = id;
    ++count;
    rs->MoveNext();
  }
  EXPECT_EQ(count, n);
}

// ------------------------------------------------------------------ save

namespace {

struct SavedXml {
  QString rootName;
  std::map<QString, QString> namespaces;
  struct Attr {
    QString name, rsName, number, nullable, type, maxLength;
  };
  std::vector<Attr> attrs;
  std::vector<std::map<QString, QString>> rows;
  bool schemaId = false;
  QString error;
};

SavedXml ReadXml(const QString& path) {
  SavedXml out;
  QFile f(path);
  if (!f.open(QIODevice::ReadOnly)) {
    out.error = "cannot open";
    return out;
  }
  QXmlStreamReader x(&f);
  bool inData = false;
  while (!x.atEnd()) {
    x.readNext();
    if (x.isStartElement()) {
      const QString q = x.qualifiedName().toString();
      if (out.rootName.isEmpty()) {
        out.rootName = q;
        for (const auto& ns : x.namespaceDeclarations())
          out.namespaces[ns.prefix().toString()] = ns.namespaceUri().toString();
      }
      if (q == "s:Schema") out.schemaId = x.attributes().value("id") == QLatin1String("RowsetSchema");
      if (q == "s:AttributeType") {
        SavedXml::Attr a;
        a.name = x.attributes().value("name").toString();
        a.rsName = x.attributes().value("rs:name").toString();
        a.number = x.attributes().value("rs:number").toString();
        a.nullable = x.attributes().value("rs:nullable").toString();
        out.attrs.push_back(a);
      }
      if (q == "s:datatype" && !out.attrs.empty()) {
        out.attrs.back().type = x.attributes().value("dt:type").toString();
        out.attrs.back().maxLength = x.attributes().value("dt:maxLength").toString();
      }
      if (q == "rs:data") inData = true;
      if (q == "z:row" && inData) {
        std::map<QString, QString> row;
        for (const auto& a : x.attributes()) row[a.qualifiedName().toString()] = a.value().toString();
        out.rows.push_back(row);
      }
    }
  }
  if (x.hasError()) out.error = x.errorString();
  return out;
}

}  // namespace

TEST(RecordsetSave, XmlRowsetReadsBackFieldByField) {
  QTemporaryDir dir;
  ASSERT_TRUE(dir.isValid());
  auto rs = People();
  rs->SetFilter("ID <= 2 OR ID = 4");
  rs->MoveFirst();
  rs->SetValue("Nome", QString("a & b < c > \"d\" 'e'\nnext"));
  rs->Update();
  const QString path = dir.filePath("people.xml");
  rs->Save(path, adPersistXML);

  const SavedXml x = ReadXml(path);
  ASSERT_TRUE(x.error.isEmpty()) << x.error.toStdString();
  EXPECT_EQ(x.rootName, QString("xml"));
  EXPECT_EQ(x.namespaces.at("s"), QString("uuid:BDC6E3F0-6DA3-11d1-A2A3-00AA00C14882"));
  EXPECT_EQ(x.namespaces.at("dt"), QString("uuid:C2F41010-65B3-11d1-A29F-00AA00C14882"));
  EXPECT_EQ(x.namespaces.at("rs"), QString("urn:schemas-microsoft-com:rowset"));
  EXPECT_EQ(x.namespaces.at("z"), QString("#RowsetSchema"));
  EXPECT_TRUE(x.schemaId);

  ASSERT_EQ(x.attrs.size(), 8u);
  const char* types[] = {"int", "string", "string", "i2", "r8", "dateTime", "boolean", "string"};
  for (size_t i = 0; i < 8; ++i) {
    EXPECT_EQ(x.attrs[i].number, QString::number(i + 1)) << i;
    EXPECT_EQ(x.attrs[i].type, QString(types[i])) << i;
  }
  EXPECT_EQ(x.attrs[0].name, QString("ID"));
  EXPECT_EQ(x.attrs[0].nullable, QString("false"));
  EXPECT_EQ(x.attrs[1].nullable, QString("true"));
  EXPECT_EQ(x.attrs[1].maxLength, QString("50"));
  EXPECT_EQ(x.attrs[2].maxLength, QString("30"));
  EXPECT_EQ(x.attrs[0].maxLength, QString("4"));
  // A name that is no XML name is written under a made-up one, with rs:name.
  EXPECT_NE(x.attrs[7].name, QString("Codice Fiscale"));
  EXPECT_EQ(x.attrs[7].rsName, QString("Codice Fiscale"));
  const QString cf = x.attrs[7].name;

  ASSERT_EQ(x.rows.size(), 3u);
  const auto& r1 = x.rows[0];
  EXPECT_EQ(r1.at("ID"), QString("1"));
  EXPECT_EQ(r1.at("Nome"), QString("a & b < c > \"d\" 'e'\nnext"));
  EXPECT_EQ(r1.at("Citta"), QString("Roma"));
  EXPECT_EQ(r1.at("Eta"), QString("30"));
  EXPECT_EQ(r1.at("Prezzo"), QString("10.5"));
  EXPECT_EQ(r1.at("Data"), QString("2024-01-15T00:00:00"));
  EXPECT_EQ(r1.at("Attivo"), QString("True"));
  EXPECT_EQ(r1.at(cf), QString("AAA"));
  EXPECT_EQ(x.rows[1].at("ID"), QString("2"));
  EXPECT_EQ(x.rows[1].at("Attivo"), QString("False"));
  EXPECT_EQ(x.rows[1].at("Prezzo"), QString("20"));
  const auto& r4 = x.rows[2];
  EXPECT_EQ(r4.at("ID"), QString("4"));
  EXPECT_EQ(r4.count("Prezzo"), 0u);  // Nulls are left out
  EXPECT_EQ(r4.count("Data"), 0u);
  EXPECT_EQ(r4.size(), 6u);

  // With the filter cleared, every row is written.
  rs->SetFilter("");
  rs->Save(path, adPersistXML);
  const SavedXml all = ReadXml(path);
  ASSERT_TRUE(all.error.isEmpty());
  ASSERT_EQ(all.rows.size(), 6u);
  EXPECT_EQ(all.rows[5].at("Nome"), QString("O'Neil"));
  EXPECT_EQ(all.rows[5].at("Data"), QString("2024-07-01T00:00:00"));
  EXPECT_EQ(all.rows[2].count("Citta"), 0u);
}

TEST(RecordsetSave, BinaryFormAndFailures) {
  QTemporaryDir dir;
  ASSERT_TRUE(dir.isValid());
  auto rs = People();
  rs->SetFilter("ID >= 5");
  const QString path = dir.filePath("people.bin");
  rs->Save(path, adPersistADTG);
  QFile f(path);
  ASSERT_TRUE(f.open(QIODevice::ReadOnly));
  QDataStream ds(&f);
  ds.setVersion(QDataStream::Qt_6_0);
  quint32 magic, version, nfields;
  ds >> magic >> version >> nfields;
  EXPECT_EQ(magic, 0x504B5452u);
  EXPECT_EQ(version, 1u);
  ASSERT_EQ(nfields, 8u);
  QStringList names;
  for (quint32 i = 0; i < nfields; ++i) {
    QString name;
    qint32 type, size, attrs, dao;
    ds >> name >> type >> size >> attrs >> dao;
    names << name;
    if (i == 1) {
      EXPECT_EQ(type, adVarWChar);
      EXPECT_EQ(size, 50);
    }
  }
  EXPECT_EQ(names.join(","), QString("ID,Nome,Citta,Eta,Prezzo,Data,Attivo,Codice Fiscale"));
  quint32 nrows;
  ds >> nrows;
  EXPECT_EQ(nrows, 2u);
  quint8 tag;
  qint32 id;
  ds >> tag >> id;
  EXPECT_EQ(tag, 1);
  EXPECT_EQ(id, 5);
  QString nome;
  ds >> tag >> nome;
  EXPECT_EQ(tag, 5);
  EXPECT_EQ(nome, QString("Carla"));
  EXPECT_EQ(ds.status(), QDataStream::Ok);

  EXPECT_RAISES(rs->Save(dir.filePath("missing/dir/x.xml"), adPersistXML), err::PathFileAccess);
  EXPECT_RAISES(rs->Save(dir.filePath("x.xml"), 7), err::BadArguments);
}

// ------------------------------------------------------------------ columns

// Every value comes back as it went in, in type and in value, whatever the
// field: a value of the field's own form, Null, and a value of another form
// stored as it is by a bulk append.
TEST(RecordsetColumns, ValuesReadBackExactlyInTypeAndValue) {
  auto rs = Recordset::Create();
  rs->Append("I", adInteger);
  rs->Append("B", adBigInt);
  rs->Append("T", adVarChar, 10);
  rs->Append("D", adDate);
  rs->Append("R", adDouble);
  rs->Append("Y", adBoolean);
  rs->Append("V", adVariant);
  rs->Open();
  const std::vector<Row> righe = {
      {QVariant(7), QVariant(qlonglong(1) << 40), QVariant(QString("abc")), QVariant(D(2024, 2, 29, 23, 59)),
       QVariant(0.125), QVariant(true), QVariant(QString("v"))},
      {QVariant(), QVariant(), QVariant(), QVariant(), QVariant(), QVariant(), QVariant()},
      // another form in each field: kept aside and given back as it came
      {QVariant(qlonglong(5)), QVariant(3), QVariant(12), QVariant(QDate(2024, 1, 1)), QVariant(2),
       QVariant(0), QVariant(1.5)},
      {QVariant(-2147483647 - 1), QVariant(qlonglong(-1)), QVariant(QString()), QVariant(QDateTime()),
       QVariant(-0.0), QVariant(false), QVariant()},
  };
  rs->AppendRows(std::vector<Row>(righe));
  int r = 0;
  for (rs->MoveFirst(); !rs->Eof(); rs->MoveNext(), ++r)
    for (int f = 0; f < rs->FieldCount(); ++f) {
      const QVariant v = rs->Value(f);
      EXPECT_EQ(v.isValid(), righe[r][f].isValid()) << r << ' ' << f;
      EXPECT_EQ(v.typeId(), righe[r][f].typeId()) << r << ' ' << f;
      EXPECT_EQ(v, righe[r][f]) << r << ' ' << f;
    }
  EXPECT_EQ(r, 4);
  // An edit over a value of another form takes the field's own form.
  rs->MoveFirst();
  rs->MoveNext();
  rs->MoveNext();
  rs->SetValue("T", "x");
  rs->SetValue("I", 9);
  rs->Update();
  EXPECT_EQ(rs->Value("T").typeId(), QMetaType::QString);
  EXPECT_EQ(rs->Value("T").toString(), "x");
  EXPECT_EQ(rs->Value("I").typeId(), QMetaType::Int);
  EXPECT_EQ(rs->Value("B"), QVariant(3));  // the other fields keep theirs
}

namespace {

// A value as an engine hands it to an append, and the QVariant it stands for.
struct Dato {
  enum Forma { Nullo, Si, Intero, Reale, Testo, Data } forma;
  QVariant v;
  QVariant Variante() const { return forma == Intero ? WholeNumber(v.toLongLong()) : v; }
  void A(Recordset::Aggiunta& a) const {
    switch (forma) {
      case Nullo: return a.Nullo();
      case Si: return a.Si(v.toBool());
      case Intero: return a.Intero(v.toLongLong());
      case Reale: return a.Reale(v.toDouble());
      case Testo: return a.Testo(v.toString());
      case Data: return a.Data(v.toDateTime());
    }
  }
};

RecordsetPtr OgniCampo() {
  auto rs = Recordset::Create();
  rs->Append("I", adInteger);
  rs->Append("S", adSmallInt);
  rs->Append("B", adBigInt);
  rs->Append("T", adVarChar, 10);
  rs->Append("D", adDate);
  rs->Append("R", adDouble);
  rs->Append("C", adCurrency);
  rs->Append("Y", adBoolean);
  rs->Append("V", adVariant);
  rs->Open();
  return rs;
}

void ComeRighe(Recordset& rs, const std::vector<Row>& righe) {
  int r = 0;
  for (rs.MoveFirst(); !rs.Eof(); rs.MoveNext(), ++r) {
    ASSERT_LT(r, static_cast<int>(righe.size()));
    for (int f = 0; f < rs.FieldCount(); ++f) {
      const QVariant v = rs.Value(f);
      EXPECT_EQ(v.typeId(), righe[r][f].typeId()) << r << ' ' << f;
      EXPECT_EQ(v, righe[r][f]) << r << ' ' << f;
    }
  }
  EXPECT_EQ(r, static_cast<int>(righe.size()));
}

}  // namespace

// Values handed one by one, in the form an engine reads them, are stored as
// AppendRows stores the same values as QVariants: in each field's own form,
// Null, or another form kept as it came; a Null after a run of values, and
// a whole number just beyond 32 bits, among them.
TEST(RecordsetColumns, ValuesAppendedOneByOneAreStoredAsAppendRowsStoresThem) {
  const qint64 oltre = qint64(std::numeric_limits<int>::max()) + 1;
  const qint64 sotto = qint64(std::numeric_limits<int>::min()) - 1;
  std::vector<std::vector<Dato>> dati;
  for (int i = 0; i < 6; ++i)
    dati.push_back({{Dato::Intero, i}, {Dato::Intero, -i}, {Dato::Intero, qlonglong(i) << 33},
                    {Dato::Testo, QString("t%1").arg(i)}, {Dato::Data, D(2024, 2, 28 + i % 2)},
                    {Dato::Reale, i / 4.0}, {Dato::Reale, 1.25}, {Dato::Si, i % 2 == 1}, {Dato::Testo, "v"}});
  dati.push_back({{Dato::Nullo, {}}, {Dato::Nullo, {}}, {Dato::Nullo, {}}, {Dato::Nullo, {}}, {Dato::Nullo, {}},
                  {Dato::Nullo, {}}, {Dato::Nullo, {}}, {Dato::Nullo, {}}, {Dato::Nullo, {}}});
  // other forms: beyond 32 bits in a 32-bit field, a 32-bit one in a 64-bit
  // field, a number in a text, a text in a date, a Yes/No in a whole number
  dati.push_back({{Dato::Intero, oltre}, {Dato::Intero, sotto}, {Dato::Intero, 7}, {Dato::Intero, 12},
                  {Dato::Testo, "2024-01-01"}, {Dato::Intero, 2}, {Dato::Testo, "x"}, {Dato::Reale, 0.5},
                  {Dato::Intero, oltre}});
  dati.push_back({{Dato::Si, true}, {Dato::Reale, 1.5}, {Dato::Data, D(2024, 1, 1)}, {Dato::Data, D(2024, 1, 2)},
                  {Dato::Data, QDateTime()}, {Dato::Testo, "1"}, {Dato::Si, false}, {Dato::Intero, 1},
                  {Dato::Data, D(2024, 12, 31, 23, 59, 59)}});
  dati.push_back({{Dato::Intero, std::numeric_limits<int>::max()}, {Dato::Intero, std::numeric_limits<int>::min()},
                  {Dato::Intero, oltre}, {Dato::Testo, QString()}, {Dato::Data, D(2025, 1, 1)}, {Dato::Reale, -0.0},
                  {Dato::Reale, 0.0}, {Dato::Si, false}, {Dato::Nullo, {}}});
  std::vector<Row> attese;
  for (const auto& riga : dati) {
    Row r;
    for (const Dato& d : riga) r.push_back(d.Variante());
    attese.push_back(r);
  }
  RecordsetPtr atteso = OgniCampo();
  atteso->AppendRows(std::vector<Row>(attese));
  for (bool riserva : {false, true}) {
    RecordsetPtr rs = OgniCampo();
    Recordset::Aggiunta a(*rs);
    if (riserva) a.Riserva(static_cast<qsizetype>(dati.size()));
    for (const auto& riga : dati) {
      for (const Dato& d : riga) d.A(a);
      a.FineRiga();
    }
    a.Fine();
    SCOPED_TRACE(riserva ? "with room reserved" : "without");
    ComeRighe(*rs, attese);
    ComeRighe(*atteso, attese);
    // Edits: a value made Null and back, in columns that held no Null.
    rs->MoveFirst();
    rs->SetValue("I", QVariant());
    rs->SetValue("T", 5);
    rs->Update();
    EXPECT_TRUE(IsNull(rs->Value("I")));
    EXPECT_EQ(rs->Value("T"), QVariant(QString("5")));
    rs->SetValue("I", 3);
    rs->SetValue("T", "a");
    rs->Update();
    EXPECT_EQ(rs->Value("I"), QVariant(3));
    EXPECT_EQ(rs->Value("T"), QVariant(QString("a")));
    rs->MoveNext();
    EXPECT_EQ(rs->Value("I"), QVariant(1));
    EXPECT_EQ(rs->Value("T"), QVariant(QString("t1")));
  }
}

// A row of too few or too many values raises and leaves nothing of itself:
// the next row takes its place whole, even where the dropped row had begun
// a Null or a value of another form.
TEST(RecordsetColumns, ARowOfTheWrongWidthIsDroppedWhole) {
  auto rs = Recordset::Create();
  rs->Append("N", adInteger);
  rs->Append("T", adVarChar, 5);
  rs->Append("R", adDouble);
  rs->Open();
  Recordset::Aggiunta a(*rs);
  a.Intero(1);
  a.Testo("uno");
  a.Reale(1.5);
  a.FineRiga();
  a.Intero(qint64(1) << 40);  // another form
  a.Nullo();
  EXPECT_RAISES(a.FineRiga(), err::BadArguments);
  a.Intero(2);
  a.Testo("due");
  a.Reale(2.5);
  EXPECT_RAISES(a.Nullo(), err::BadArguments);
  a.Nullo();
  a.Testo("tre");
  a.Reale(3.5);
  a.FineRiga();
  a.Fine();
  ComeRighe(*rs, {{QVariant(1), QVariant(QString("uno")), QVariant(1.5)},
                  {QVariant(), QVariant(QString("tre")), QVariant(3.5)}});
  EXPECT_EQ(rs->RecordCount(), 2);
}

namespace {

RecordsetPtr Sorgente(int righe) {
  auto rs = Recordset::Create();
  rs->Append("N", adInteger);
  rs->Append("T", adVarChar, 5);
  rs->Append("D", adDate);
  rs->Open();
  std::vector<Row> v;
  for (int i = 0; i < righe; ++i)
    v.push_back({QVariant(i), i % 3 ? QVariant(QString("t%1").arg(i)) : QVariant(), QVariant(D(2024, 1, 1 + i % 28))});
  rs->AppendRows(std::move(v));
  return rs;
}

}  // namespace

// A copy into fields that take every value as it is shares the columns, and
// a write on either side leaves the other as it was.
TEST(RecordsetColumns, ACopyThatSharesItsColumnsIsStillACopy) {
  RecordsetPtr da = Sorgente(10);
  auto a = Recordset::Create();
  a->Append("N", adBigInt);  // a whole number widens: each value becomes a 64-bit one
  a->Append("T", adVarChar, 5);
  a->Append("D", adDate);
  a->Append("X", adInteger);  // fed by no field: takes the base value
  a->Open();
  int misfits = 0;
  a->AppendFrom(*da, {0, 1, 2}, {QVariant(), QVariant(), QVariant(), QVariant(4)},
                [&](int, const QVariant&) { ++misfits; return QVariant(); });
  EXPECT_EQ(misfits, 0);
  ASSERT_EQ(a->RecordCount(), 10);
  a->MoveFirst();
  EXPECT_EQ(a->Value("N").typeId(), QMetaType::LongLong);
  EXPECT_EQ(a->Value("N"), QVariant(qlonglong(0)));
  EXPECT_FALSE(a->Value("T").isValid());
  EXPECT_EQ(a->Value("X"), QVariant(4));
  a->MoveNext();
  EXPECT_EQ(a->Value("T"), QVariant(QString("t1")));
  a->SetValue("T", "nuovo");
  a->Update();
  da->MoveFirst();
  da->MoveNext();
  EXPECT_EQ(da->Value("T"), QVariant(QString("t1")));
  da->SetValue("N", 100);
  da->Update();
  EXPECT_EQ(a->Value("N"), QVariant(qlonglong(1)));
  EXPECT_EQ(a->Value("T"), QVariant(QString("nuovo")));
  // Rows added to the source later are not the copy's.
  da->AddNew();
  da->SetValue("N", 11);
  da->Update();
  EXPECT_EQ(da->RecordCount(), 11);
  EXPECT_EQ(a->RecordCount(), 10);
}

// A value the field can't take goes to the caller, in the order of rows and,
// within a row, of the source's fields; the values that fit are kept.
TEST(RecordsetColumns, AValueThatDoesNotFitGoesToTheCallerInRowOrder) {
  auto da = Recordset::Create();
  da->Append("B", adBigInt);
  da->Append("T", adVarChar, 0);
  da->Open();
  const QString lungo255(255, QLatin1Char('x')), lungo256(256, QLatin1Char('y'));
  da->AppendRows({{QVariant(qlonglong(2147483647)), QVariant(lungo255)},
                  {QVariant(qlonglong(2147483648LL)), QVariant(lungo256)},
                  {QVariant(qlonglong(-2147483648LL)), QVariant(QString("ok"))},
                  {QVariant(qlonglong(-2147483649LL)), QVariant()}});
  auto a = Recordset::Create();
  a->Append("B", adInteger);
  a->Append("T", adVarChar, 255);
  a->Open();
  std::vector<std::pair<int, QVariant>> misfits;
  a->AppendFrom(*da, {0, 1}, {QVariant(), QVariant()}, [&](int campo, const QVariant& v) {
    misfits.emplace_back(campo, v);
    return QVariant(QStringLiteral("sostituto"));
  });
  ASSERT_EQ(misfits.size(), 3u);
  EXPECT_EQ(misfits[0], std::make_pair(0, QVariant(qlonglong(2147483648LL))));
  EXPECT_EQ(misfits[1], std::make_pair(1, QVariant(lungo256)));
  EXPECT_EQ(misfits[2], std::make_pair(0, QVariant(qlonglong(-2147483649LL))));
  a->MoveFirst();
  EXPECT_EQ(a->Value("B"), QVariant(2147483647));
  EXPECT_EQ(a->Value("B").typeId(), QMetaType::Int);
  EXPECT_EQ(a->Value("T"), QVariant(lungo255));
  a->MoveNext();
  EXPECT_EQ(a->Value("B"), QVariant(QStringLiteral("sostituto")));
  EXPECT_EQ(a->Value("T"), QVariant(QStringLiteral("sostituto")));
  a->MoveNext();
  EXPECT_EQ(a->Value("B"), QVariant(-2147483647 - 1));
}

// Only the live rows under the source's filter and sort are copied, in that order.
TEST(RecordsetColumns, ACopyTakesTheSourcesRowsUnderItsFilterInItsOrder) {
  RecordsetPtr da = Sorgente(10);
  da->SetFilter("N > 2 AND N < 8");
  da->SetSort("N DESC");
  da->MoveFirst();
  da->Delete();  // 7
  auto a = Recordset::Create();
  a->Append("N", adInteger);
  a->Append("T", adVarChar, 5);
  a->Append("D", adDate);
  a->Open();
  a->AppendFrom(*da, {0, 1, 2}, {QVariant(), QVariant(), QVariant()}, [](int, const QVariant&) { return QVariant(); });
  std::vector<int> n;
  for (a->MoveFirst(); !a->Eof(); a->MoveNext()) n.push_back(a->Value("N").toInt());
  EXPECT_EQ(n, (std::vector<int>{6, 5, 4, 3}));
}

TEST(RecordsetColumns, ABookmarkReadsItsRowWithoutMovingAndNullOnceDeleted) {
  RecordsetPtr rs = Sorgente(5);
  rs->SetSort("N DESC");
  rs->MoveFirst();
  const int primo = rs->Bookmark();
  rs->MoveNext();
  const int secondo = rs->Bookmark();
  EXPECT_EQ(rs->ValueAt(primo, 0), QVariant(4));
  EXPECT_EQ(rs->ValueAt(primo, 1), QVariant(QString("t4")));
  EXPECT_EQ(rs->ValueAt(secondo, 0), QVariant(3));
  EXPECT_EQ(rs->Value("N"), QVariant(3));  // the cursor stayed
  rs->Delete();
  EXPECT_FALSE(rs->ValueAt(secondo, 0).isValid());
  EXPECT_RAISES(rs->ValueAt(5, 0), err::BadArguments);
  EXPECT_RAISES(rs->ValueAt(-1, 0), err::BadArguments);
  EXPECT_RAISES(rs->ValueAt(0, 3), err::BadArguments);
  rs->MoveLast();
  rs->MoveNext();
  EXPECT_RAISES(rs->Bookmark(), err::NoCurrentRecord);
}
