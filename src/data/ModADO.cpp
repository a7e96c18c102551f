#include "ModADO.h"

#include <QFile>

#include "ModPrestKT.h"
#include "Schema.h"
#include "SqlAdapt.h"

namespace prestkt {

namespace {

const QString kModulo = QStringLiteral("ModADO");

// Names go in brackets, the form the SQL of the system uses.
QString Quote(const QString& n) { return QLatin1Char('[') + n + QLatin1Char(']'); }

// The table column that stores an in-memory field. Texts up to 255 characters
// stay texts; longer ones become memos.
bool ColumnOfField(const FieldDef& f, ColumnDef* c) {
  c->name = f.Name;
  c->nullable = true;
  switch (f.Type) {
    case adBoolean: c->type = dbBoolean; return true;
    case adTinyInt:
    case adUnsignedTinyInt: c->type = dbByte; return true;
    case adSmallInt: c->type = dbInteger; return true;
    case adInteger:
    case adBigInt: c->type = dbLong; return true;
    case adSingle: c->type = dbSingle; return true;
    case adCurrency:
    case adDouble:
    case adNumeric:
    case adDecimal: c->type = dbDouble; return true;
    case adDate: c->type = dbDate; return true;
    case adChar:
    case adWChar:
    case adVarChar:
    case adVarWChar:
    case adLongVarChar:
    case adLongVarWChar:
      if (f.DefinedSize > 0 && f.DefinedSize <= 255) {
        c->type = dbText;
        c->size = f.DefinedSize;
      } else {
        c->type = dbMemo;
      }
      return true;
    default: return false;
  }
}

}  // namespace

void CancellaFiltrati(const RecordsetPtr& rs, const QString& filtro) {
  rs->SetFilter(filtro);
  while (!rs->Eof()) {
    rs->Delete();
    rs->MoveNext();
  }
  rs->SetFilter(QString());
}

void ADO2ADO(const RecordsetPtr& rsFrom, RecordsetPtr& rsTo, bool tutti, bool aggiungi, const QVariant& filtro,
             bool sostituisci, const Progress& progress) {
  Guard g(kModulo, QStringLiteral("ADO2ADO"));
  const QString f = IsNull(filtro) ? QString() : filtro.toString();
  if (progress) progress(0, 100);
  if (!aggiungi) {
    g([&] {
      auto out = Recordset::Create();
      for (const FieldDef& d : rsFrom->FieldDefs()) out->Append(d.Name, d.Type, d.DefinedSize, d.Attributes);
      out->Open();
      rsTo = std::move(out);
    });
  }
  QString filtroOrigine;
  g([&] { filtroOrigine = rsFrom->Filter(); });
  if (tutti) {
    g([&] { rsFrom->SetFilter(f); });
  } else {
    g([&] { rsFrom->SetFilter(f); });
  }
  if (sostituisci) g([&] { CancellaFiltrati(rsTo, f); });
  g([&] {
    const int count = rsFrom->RecordCount();
    const int n = rsFrom->FieldCount();
    std::vector<int> target(n);
    for (int i = 0; i < n; ++i) target[i] = rsTo->FieldIndex(rsFrom->FieldInfo(i).Name);
    for (rsFrom->MoveFirst(); !rsFrom->Eof(); rsFrom->MoveNext()) {
      if (progress && count > 0) progress(rsFrom->AbsolutePosition() * 100 / count, 100);
      rsTo->AddNew();
      for (int i = 0; i < n; ++i)
        if (target[i] >= 0)
          rsTo->SetValue(target[i], ValoreCopiato(g, rsTo->FieldInfo(target[i]), rsFrom->Value(i)));
      rsTo->Update();
    }
  });
  g([&] { rsFrom->SetFilter(filtroOrigine); });
}

bool ADO2DAO(const RecordsetPtr& rs, const QString& nomeTabella, bool copiaDati, const QStringList& chiavi,
             const QStringList& indici) {
  Guard g(kModulo, QStringLiteral("ADO2DAO"));
  // Nothing to write from: a failure like any other, logged.
  if (!g([&] {
        if (!rs) Raise(err::ObjectNotSet);
      }))
    return false;
  Database* db = nullptr;
  g([&] {
    if (!gDB) Raise(err::ObjectNotSet);
    db = gDB.get();
  });
  if (!TabellaEsiste(nomeTabella)) {
    QStringList cols;
    g([&] {
      for (const FieldDef& f : rs->FieldDefs()) {
        ColumnDef c;
        if (!ColumnOfField(f, &c)) {
          MsgBox(QStringLiteral("ADO2DAO: Caso non previsto!"), vbOKOnly);
          continue;
        }
        cols << Quote(c.name) + QLatin1Char(' ') + TipoColonna(c, db->engine());
      }
      if (!chiavi.isEmpty()) {
        QStringList k;
        for (const QString& c : chiavi) k << Quote(c);
        cols << QStringLiteral("PRIMARY KEY (%1)").arg(k.join(QStringLiteral(", ")));
      }
    });
    const bool creata = g([&] {
      db->Execute(Sql(QStringLiteral("CREATE TABLE %1 (%2)").arg(Quote(nomeTabella), cols.join(QStringLiteral(", ")))));
      for (const QString& i : indici)
        db->Execute(Sql(QStringLiteral("CREATE INDEX %1 ON %2 (%3)")
                            .arg(Quote(nomeTabella + QLatin1Char('_') + i), Quote(nomeTabella), Quote(i))));
    });
    if (!creata) MsgBox(QStringLiteral("Impossibile completare il task."), vbOKOnly);
  }
  if (!copiaDati) return true;
  RecordsetPtr dao;
  g([&] { ApriRecordset(dao, QStringLiteral("SELECT * FROM ") + nomeTabella + QStringLiteral(" "), db, dbOpenDynaset); });
  g([&] { rs->SetFilter(QString()); });
  Guard riga(kModulo, QStringLiteral("ADO2DAO"));
  g([&] {
    const int n = rs->FieldCount();
    const int fuori = db->TransactionDepth();
    for (rs->MoveFirst(); !rs->Eof(); rs->MoveNext()) {
      // One transaction per row: a failing row is logged and the walk goes on.
      const bool scritta = riga([&] {
        BeginTrans(db);
        dao->AddNew();
        for (int i = 0; i < n && i < dao->FieldCount(); ++i) dao->SetValue(i, rs->Value(i));
        dao->Update();
        CommitTrans(db);
      });
      if (!scritta) {
        // The row's transaction is committed with what was written, which is nothing.
        Guard pulizia(kModulo, QStringLiteral("ADO2DAO"), Guard::Silent);
        pulizia([&] { dao->CancelUpdate(); });
        if (db->TransactionDepth() > fuori) pulizia([&] { CommitTrans(db); });
      }
    }
  });
  return true;
}

bool ScriviXML(const RecordsetPtr& rs, const QString& path, bool togliFiltro, bool binario) {
  if (!rs) return false;
  QString filtro;
  try {
    if (togliFiltro) {
      filtro = rs->Filter();
      rs->SetFilter(QString());
    }
  } catch (...) {
  }
  try {
    if (QFile::exists(path)) QFile::remove(path);
  } catch (...) {
  }
  try {
    rs->Save(path, binario ? adPersistADTG : adPersistXML);
  } catch (...) {
  }
  try {
    if (togliFiltro) rs->SetFilter(filtro == QLatin1String("0") ? QString() : filtro);
  } catch (...) {
  }
  return true;
}

}  // namespace prestkt
