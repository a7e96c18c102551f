#include "Schema.h"

#include <algorithm>

#include "Database.h"
#include "SqlAdapt.h"

namespace prestkt {

namespace {

ColumnDef C(const char* n, int t, int size = 0, bool nullable = true, const char* def = "") {
  return ColumnDef{QString::fromLatin1(n), t, size, nullable, QString::fromLatin1(def)};
}

std::vector<TableDef> MakeTables() {
  std::vector<TableDef> t;
  // The component's own tables.
  t.push_back({"Projects",
               {C("CProject", dbLong, 0, false), C("DProject", dbText, 255), C("CPrjTipo", dbInteger),
                C("TAnag", dbByte), C("CAnag", dbLong), C("DtIni", dbDate), C("Stato", dbInteger, 0, true, "0"),
                C("CStato", dbInteger, 0, true, "0"), C("Qta", dbDouble, 0, true, "0"), C("Annot", dbMemo),
                C("TipoDocRif", dbByte, 0, true, "0"), C("NDocRif", dbLong, 0, true, "0"),
                C("RigaRif", dbInteger, 0, true, "0")},
               {"CProject"},
               {{"DtIni"}, {"TAnag", "CAnag"}, {"CPrjTipo"}, {"TipoDocRif", "NDocRif", "RigaRif"}}});
  t.push_back({"ProjectsTipo",
               {C("CPrjTipo", dbInteger, 0, false), C("DPrjTipo", dbText, 100), C("Sigla", dbText, 10),
                C("GestForfSempl", dbBoolean, 0, true, "0")},
               {"CPrjTipo"},
               {}});
  t.push_back({"ProjectsDisp",
               {C("CProject", dbLong, 0, false), C("CDisp", dbInteger, 0, false), C("CPrjDispTipo", dbInteger),
                C("DDisp", dbText, 255), C("Data", dbDate), C("Qta", dbDouble, 0, true, "0"),
                C("PzVend", dbDouble, 0, true, "0"), C("DefPzVend", dbBoolean, 0, true, "0"),
                C("CStato", dbInteger, 0, true, "0"), C("DtEnd", dbDate), C("NStampa", dbInteger, 0, true, "0"),
                C("Annot", dbMemo)},
               {"CProject", "CDisp"},
               {{"CStato"}, {"CPrjDispTipo"}}});
  t.push_back({"ProjectsDispDett",
               {C("CProject", dbLong, 0, false), C("CDisp", dbInteger, 0, false),
                C("CPrestazione", dbInteger, 0, false)},
               {"CProject", "CDisp", "CPrestazione"},
               {}});
  t.push_back({"ProjectsDispTipo",
               {C("CPrjDispTipo", dbInteger, 0, false), C("DPrjDispTipo", dbText, 100), C("Sigla", dbText, 10),
                C("Forfait", dbBoolean, 0, true, "0"), C("TipoFatt", dbInteger, 0, true, "0")},
               {"CPrjDispTipo"},
               {}});
  t.push_back({"ProjectsDisp2Prest",
               {C("CPrjDispTipo", dbInteger, 0, false), C("CPrestazione", dbInteger, 0, false)},
               {"CPrjDispTipo", "CPrestazione"},
               {}});
  t.push_back({"ProjectsDispTar",
               {C("CPrjTipo", dbInteger, 0, false), C("CPrjDispTipo", dbInteger, 0, false),
                C("TarMin", dbDouble, 0, true, "0"), C("TarMax", dbDouble, 0, true, "0"),
                C("TarH", dbDouble, 0, true, "0")},
               {"CPrjTipo", "CPrjDispTipo"},
               {}});
  t.push_back({"ProjectsDispTarDett",
               {C("CPrjTipo", dbInteger, 0, false), C("CPrjDispTipo", dbInteger, 0, false),
                C("TAnag", dbByte, 0, false), C("CAnag", dbLong, 0, false), C("TarMin", dbDouble, 0, true, "0"),
                C("TarMax", dbDouble, 0, true, "0"), C("TarH", dbDouble, 0, true, "0")},
               {"CPrjTipo", "CPrjDispTipo", "TAnag", "CAnag"},
               {}});
  t.push_back({"ActivitiesProd",
               {C("CAttivita", dbLong, 0, false), C("CProject", dbLong), C("CDisp", dbInteger),
                C("CUtente", dbLong), C("CPrestazione", dbInteger), C("DtIni", dbDate), C("DtEnd", dbDate),
                C("DtRealIni", dbDate), C("DtRealEnd", dbDate), C("Stato", dbInteger, 0, true, "0"),
                C("TDocRif", dbInteger, 0, true, "0"), C("NDocRif", dbLong, 0, true, "0"),
                C("CostoH", dbDouble, 0, true, "0"), C("Annot1", dbText, 255), C("Annot2", dbMemo)},
               {"CAttivita"},
               {{"CProject", "CDisp"}, {"DtIni"}, {"CUtente"}}});
  TableDef docDett{"ProjectsDocDett",
                   {C("TipoDoc", dbByte, 0, false), C("NDoc", dbLong, 0, false), C("Scheda", dbInteger, 0, false),
                    C("Riga", dbInteger, 0, false), C("RigaD", dbInteger, 0, false), C("CProject", dbLong),
                    C("CDisp", dbLong), C("Ctipo", dbInteger), C("CArt", dbLong), C("CVar", dbLong),
                    C("CodTesto", dbText, 50), C("CodForn", dbText, 50), C("DArt", dbText, 255),
                    C("NotaArt", dbMemo), C("Qta", dbDouble), C("CCaus", dbByte), C("Importo", dbDouble),
                    C("CIva", dbInteger)},
                   {"TipoDoc", "NDoc", "Scheda", "Riga", "RigaD"},
                   {{"CProject"}, {"CDisp"}}};
  docDett.onDemand = true;
  t.push_back(docDett);
  TableDef docDettPrest{"ProjectsDocDettPrest",
                        {C("TipoDoc", dbByte, 0, false), C("NDoc", dbLong, 0, false),
                         C("RigaD", dbInteger, 0, false), C("SubRiga", dbInteger, 0, false),
                         C("CPrestazione", dbInteger)},
                        {"TipoDoc", "NDoc", "RigaD", "SubRiga"},
                        {}};
  docDettPrest.onDemand = true;
  t.push_back(docDettPrest);

  // The host's tables: every field that the component reads or writes, and
  // what the demo host itself shows in its registers and documents.
  std::vector<TableDef> host;
  host.push_back({"AnagTipo", {C("TAnag", dbByte, 0, false), C("Descrizione", dbText, 50)}, {"TAnag"}, {}});
  host.push_back({"Anagrafica",
                  {C("TAnag", dbByte, 0, false), C("CAnag", dbLong, 0, false), C("RagSoc1", dbText, 100),
                   C("RagSoc2", dbText, 100), C("Indirizzo", dbText, 100), C("Cap", dbText, 10),
                   C("Citta", dbText, 60), C("Prov", dbText, 2), C("PIva", dbText, 20),
                   C("Telefono", dbText, 30), C("Email", dbText, 100), C("CostoH", dbDouble, 0, true, "0"),
                   C("Eliminato", dbBoolean, 0, true, "0")},
                  {"TAnag", "CAnag"},
                  {{"RagSoc1"}}});
  host.push_back({"TabGen",
                  {C("CTipTabGen", dbInteger, 0, false), C("CTabGen", dbInteger, 0, false),
                   C("DTabGen", dbText, 100), C("Sigla", dbText, 10), C("Num1", dbDouble, 0, true, "0"),
                   C("Num2", dbDouble, 0, true, "0"), C("Bool3", dbBoolean, 0, true, "0"),
                   C("Bool8", dbBoolean, 0, true, "0")},
                  {"CTipTabGen", "CTabGen"},
                  {}});
  host.push_back({"Doc",
                  {C("TipoDoc", dbByte, 0, false), C("NDoc", dbLong, 0, false), C("Data", dbDate),
                   C("DataCons", dbDate), C("Oggetto", dbText, 255), C("Riferimento", dbText, 100),
                   C("TAnag", dbByte), C("CAnag", dbLong), C("ImpDoc", dbDouble, 0, true, "0"),
                   C("IVADoc", dbDouble, 0, true, "0"), C("TotDoc", dbDouble, 0, true, "0"),
                   C("ValSconto", dbDouble, 0, true, "0"), C("CIva", dbInteger, 0, true, "0")},
                  {"TipoDoc", "NDoc"},
                  {{"TipoDoc", "Data"}, {"TAnag", "CAnag"}}});
  host.push_back({"DocDett",
                  {C("TipoDoc", dbByte, 0, false), C("NDoc", dbLong, 0, false), C("Scheda", dbInteger, 0, false),
                   C("Riga", dbInteger, 0, false), C("Ctipo", dbInteger, 0, true, "0"),
                   C("CArt", dbLong, 0, true, "0"), C("CVar", dbLong, 0, true, "0"), C("CodTesto", dbText, 50),
                   C("CodForn", dbText, 50), C("DArt", dbText, 255), C("NotaArt", dbMemo),
                   C("Qta", dbDouble, 0, true, "0"), C("QtaArr", dbDouble, 0, true, "0"),
                   C("Annullato", dbDouble, 0, true, "0"), C("DataCons", dbDate), C("CCaus", dbByte),
                   C("PzVend", dbDouble, 0, true, "0"), C("PzVendP", dbDouble, 0, true, "0"),
                   C("Manifattura", dbDouble, 0, true, "0"), C("ValRic", dbDouble, 0, true, "0"),
                   C("CIVA", dbInteger, 0, true, "0"), C("TipoDocRif", dbByte, 0, true, "0"),
                   C("NDocRif", dbLong, 0, true, "0"), C("RigaRif", dbInteger, 0, true, "0")},
                  {"TipoDoc", "NDoc", "Scheda", "Riga"},
                  {{"TipoDocRif", "NDocRif", "RigaRif"}}});
  host.push_back({"DocSchede",
                  {C("TipoDoc", dbByte, 0, false), C("NDoc", dbLong, 0, false), C("TipoDocAss", dbByte, 0, false),
                   C("NDocAss", dbLong, 0, false)},
                  {"TipoDoc", "NDoc", "TipoDocAss", "NDocAss"},
                  {{"TipoDocAss", "NDocAss"}}});
  host.push_back({"FattDiff",
                  {C("Progressivo", dbLong, 0, false), C("TipoDocRif", dbByte), C("NDocRif", dbLong),
                   C("Data", dbDate)},
                  {"Progressivo"},
                  {{"TipoDocRif", "NDocRif"}}});
  host.push_back({"FattDiffDett",
                  {C("Progressivo", dbLong, 0, false), C("Riga", dbInteger, 0, false), C("ID", dbText, 20),
                   C("Descrizione", dbText, 255), C("Importo", dbDouble, 0, true, "0")},
                  {"Progressivo", "Riga"},
                  {{"ID"}}});
  // Supplier orders and deliveries live apart from the customer documents, in
  // tables of the same shape: the stored queries of supplies read them.
  for (const char* coppia : {"Doc", "DocDett"}) {
    TableDef forn = *std::find_if(host.begin(), host.end(), [&](const TableDef& t) { return t.name == QLatin1String(coppia); });
    forn.name = forn.name == QLatin1String("Doc") ? QStringLiteral("DocForn") : QStringLiteral("DocFornDett");
    host.push_back(forn);
  }
  for (auto& h : host) {
    h.host = true;
    t.push_back(std::move(h));
  }
  return t;
}

std::vector<ViewDef> MakeViews() {
  return {
      {"ABC:Prestazioni", "SELECT CTabGen, DTabGen, Sigla FROM TabGen WHERE CTipTabGen=12"},
      {"ABC:Causfatt", "SELECT CTabGen, DTabGen, Sigla, Bool8 FROM TabGen WHERE CTipTabGen=1"},
      {"ABC:Dipendenti", "SELECT CAnag AS CDip, RagSoc1 AS Nome, Eliminato FROM Anagrafica WHERE TAnag=10"},
      {"Doc:Forniture",
       "SELECT TipoDoc, NDoc, Data AS DataDoc, Riferimento, TAnag, CAnag, DataCons FROM DocForn "
       "WHERE TipoDoc=12 OR TipoDoc=15"},
      {"Doc:FornitureDett",
       "SELECT TipoDoc, NDoc, Riga, Qta, QtaArr, Annullato, PzVend AS Importo, CCaus, TipoDocRif, NDocRif, "
       "RigaRif, Ctipo, CArt, CVar, CodTesto, CodForn, DArt, NotaArt, CIVA AS CIva FROM DocFornDett "
       "WHERE (TipoDoc=12 OR TipoDoc=15) AND Scheda=0"},
      {"Doc:FattDiff", "SELECT Progressivo, TipoDocRif, NDocRif, Data FROM FattDiff"},
      {"Doc:FattDiffDett", "SELECT Progressivo, Riga, ID, Descrizione, Importo FROM FattDiffDett"},
  };
}

// Names go in brackets, the form the SQL of the system uses.
QString Quote(const QString& name) { return QLatin1Char('[') + name + QLatin1Char(']'); }

QString CreateTableSql(const TableDef& t, Engine engine) {
  QStringList cols;
  for (const auto& c : t.columns) {
    QString s = Quote(c.name) + QLatin1Char(' ') + TipoColonna(c, engine);
    if (!c.nullable) s += QStringLiteral(" NOT NULL");
    if (!c.defaultValue.isEmpty()) s += QStringLiteral(" DEFAULT ") + c.defaultValue;
    cols << s;
  }
  QStringList key;
  for (const auto& k : t.key) key << Quote(k);
  cols << QStringLiteral("PRIMARY KEY (%1)").arg(key.join(QStringLiteral(", ")));
  return QStringLiteral("CREATE TABLE %1 (%2)").arg(Quote(t.name), cols.join(QStringLiteral(", ")));
}

void CreateTable(Database& db, const TableDef& t) {
  if (db.TableExists(t.name)) return;
  db.Execute(Sql(CreateTableSql(t, db.engine())));
  int n = 0;
  for (const auto& idx : t.indexes) {
    QStringList cols;
    for (const auto& c : idx) cols << Quote(c);
    db.Execute(Sql(QStringLiteral("CREATE INDEX %1 ON %2 (%3)")
                       .arg(Quote(QStringLiteral("IX_%1_%2").arg(t.name).arg(++n)), Quote(t.name),
                            cols.join(QStringLiteral(", ")))));
  }
}

}  // namespace

const std::vector<TableDef>& SchemaTables() {
  static const std::vector<TableDef> tables = MakeTables();
  return tables;
}

const std::vector<ViewDef>& SchemaViews() {
  static const std::vector<ViewDef> views = MakeViews();
  return views;
}

const TableDef* FindTable(const QString& name) {
  for (const auto& t : SchemaTables())
    if (t.name.compare(name, Qt::CaseInsensitive) == 0) return &t;
  return nullptr;
}

const ColumnDef* FindColumn(const QString& table, const QString& column) {
  const TableDef* t = FindTable(table);
  if (!t) return nullptr;
  for (const auto& c : t->columns)
    if (c.name.compare(column, Qt::CaseInsensitive) == 0) return &c;
  return nullptr;
}

const ColumnDef* FindAnyColumn(const QString& column) {
  for (const auto& t : SchemaTables())
    for (const auto& c : t.columns)
      if (c.name.compare(column, Qt::CaseInsensitive) == 0) return &c;
  return nullptr;
}

int TestoMassimo(const QString& table, const QString& column) {
  const ColumnDef* c = FindColumn(table, column);
  if (!c) return 0;
  if (c->type == dbMemo) return kMemoInMemoria;
  return c->type == dbText || c->type == dbChar ? (c->size > 0 ? c->size : 255) : 0;
}

void CreaTabella(Database& db, const QString& name) {
  if (const TableDef* t = FindTable(name)) CreateTable(db, *t);
}

void CreaSchema(Database& db, bool withOnDemand) {
  db.BeginTrans();
  for (const auto& t : SchemaTables())
    if (withOnDemand || !t.onDemand) CreateTable(db, t);
  for (const auto& v : SchemaViews())
    if (!db.TableExists(v.name))
      db.Execute(Sql(QStringLiteral("CREATE VIEW %1 AS %2").arg(Quote(v.name), v.select)));
  db.CommitTrans();
}

}  // namespace prestkt
