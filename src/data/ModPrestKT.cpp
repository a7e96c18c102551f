#include "ModPrestKT.h"

#include <set>

#include "Messages.h"
#include "ModADO.h"
#include "Procedure.h"

namespace prestkt {

namespace {

const QString kModulo = QStringLiteral("ModPrestKT");

bool IsDateZero(const QDateTime& d) {
  return !d.isValid() || d == QDateTime(QDate(1899, 12, 30), QTime(0, 0));
}


// Reads the first row of a lookup; the default when there is none.
template <class T, class F>
T FirstRow(const QString& procedura, const Sql& sql, int tipo, T fallback, F&& read) {
  Guard g(kModulo, procedura, Guard::Silent);
  T result = fallback;
  RecordsetPtr rs;
  g([&] { ApriRecordset(rs, sql, nullptr, tipo); });
  g([&] {
    if (!rs->Eof()) result = read(*rs);
  });
  return result;
}

}  // namespace

void RilasciaRiferimenti() {
  gIcona = QIcon();
  for (RecordsetPtr* p : {&gRcsProjects, &gRcsDisp, &gRcsDispDett, &gRcsProd, &gRcsAct, &gRcsLavExt, &gRcsForn})
    p->reset();
  gDB.reset();
}

void CaricaModelli(const QDateTime& dtIni, const QDateTime& dtEnd, int stato) {
  if (IsDateZero(gDTEnd)) return;  // no query before the period is set
  if (!gDB) return;
  Guard g(kModulo, QStringLiteral("CaricaModelli"), Guard::Silent);
  gRcsProjects.reset();
  QString sql = QStringLiteral(
                    "SELECT Projects.*, Anagrafica.RagSoc1, ProjectsTipo.DPrjTipo "
                    "FROM (Projects INNER JOIN Anagrafica ON (Projects.CAnag = Anagrafica.CAnag) AND "
                    "(Projects.TAnag = Anagrafica.TAnag)) LEFT JOIN ProjectsTipo ON Projects.CPrjTipo = "
                    "ProjectsTipo.CPrjTipo "
                    "WHERE (((Projects.DtIni) Between ") +
                DataSql(dtIni) + QStringLiteral(" And ") + DataSql(dtEnd) + QStringLiteral(")");
  if (stato == -1) {
    // all states
  } else if (stato == 9) {
    sql += QStringLiteral(" AND ((Projects.Stato) between 9  AND 10)");
  } else {
    sql += QStringLiteral(" AND ((Projects.Stato) = ") + N(stato) + QStringLiteral(")");
  }
  sql += QStringLiteral(") ORDER BY Projects.DtIni; ");
  RecordsetPtr rs;
  g([&] { ApriRecordset(rs, sql, nullptr, dbOpenDynaset); });
  g([&] { DAO2ADO(rs, gRcsProjects); });
}

void AggiornaModello(int cProject, RecordsetPtr& rs) {
  Guard g(kModulo, QStringLiteral("AggiornaModello"), Guard::Silent);
  if (!gDB) return;
  RecordsetPtr dao;
  g([&] {
    ApriRecordset(dao,
                  QStringLiteral("SELECT Projects.*, Anagrafica.RagSoc1 "
                                 "FROM Projects INNER JOIN Anagrafica ON (Projects.TAnag = Anagrafica.TAnag) "
                                 "AND (Projects.CAnag = Anagrafica.CAnag) "
                                 "WHERE CProject =") +
                      N(cProject),
                  nullptr, dbOpenDynaset);
  });
  const QString filtro = QStringLiteral("CProject=") + N(cProject);
  if (rs) {
    g([&] { rs->SetFilter(filtro); });
    g([&] {
      if (rs->RecordCount() == 1) rs->Delete();
    });
    g([&] { DAO2ADO(dao, rs, {}, true); });
    g([&] { rs->SetFilter(filtro); });
  } else {
    g([&] { DAO2ADO(dao, rs); });
  }
}

QString DescrAnag(int tAnag, int cAnag) {
  return FirstRow<QString>(QStringLiteral("DescrAnag"),
                           QStringLiteral("SELECT TAnag, CAnag, RagSoc1 FROM Anagrafica WHERE TAnag=") + N(tAnag) +
                               QStringLiteral(" AND CAnag=") + N(cAnag) + QStringLiteral(" "),
                           dbOpenSnapshot, QString(),
                           [](Recordset& r) { return NullToStr(r.Value(QStringLiteral("RagSoc1"))).trimmed(); });
}

QString DescrTipoPrj(int cPrjTipo) {
  return FirstRow<QString>(QStringLiteral("DescrTipoPrj"),
                           QStringLiteral("SELECT CPrjTipo, DPrjTipo FROM ProjectsTipo WHERE CPrjTipo=") + N(cPrjTipo),
                           dbOpenSnapshot, QString(),
                           [](Recordset& r) { return NullToStr(r.Value(QStringLiteral("DPrjTipo"))).trimmed(); });
}

QString DescrTipoDisp(int cPrjDispTipo) {
  return FirstRow<QString>(
      QStringLiteral("DescrTipoDisp"),
      QStringLiteral("SELECT CPrjDispTipo, DPrjDispTipo FROM ProjectsDispTipo WHERE CPrjDispTipo=") + N(cPrjDispTipo),
      dbOpenSnapshot, QString(),
      [](Recordset& r) { return NullToStr(r.Value(QStringLiteral("DPrjDispTipo"))).trimmed(); });
}

QString DescrPrest(int cPrestazione) {
  return FirstRow<QString>(QStringLiteral("DescrPrest"),
                           QStringLiteral("SELECT CTipTabGen, CTabGen, DTabGen, Num1, Num2 FROM TabGen "
                                          "WHERE CTipTabGen=12 AND CTabGen=") +
                               N(cPrestazione) + QStringLiteral(" ORDER BY CTabGen; "),
                           dbOpenSnapshot, QString(),
                           [](Recordset& r) { return NullToStr(r.Value(QStringLiteral("DTabGen"))).trimmed(); });
}

double CostoOraOperatore(int cAnag) {
  return FirstRow<double>(QStringLiteral("CostoOraOperatore"),
                          QStringLiteral("SELECT TAnag, CAnag, CostoH From Anagrafica WHERE TAnag=10 AND CAnag=") +
                              N(cAnag) + QStringLiteral("; "),
                          dbOpenSnapshot, 0.0,
                          [](Recordset& r) { return Round(CDbl(NullToZero(r.Value(QStringLiteral("CostoH")))), 3); });
}

bool AvvisaDispChiusa(int cProject, int cDisp) {
  const bool chiusa = FirstRow<bool>(
      QStringLiteral("AvvisaDispChiusa"),
      QStringLiteral("SELECT CProject, CDisp, CStato FROM ProjectsDisp WHERE CProject=") + N(cProject) +
          QStringLiteral(" AND CDisp=") + N(cDisp) + QStringLiteral(" "),
      dbOpenDynaset, false, [](Recordset& r) { return CDbl(NullToZero(r.Value(QStringLiteral("CStato")))) != 0; });
  if (chiusa) MsgBox(QStringLiteral("Attenzione: questa disposizione risulta essere chiusa!"), vbExclamation);
  return chiusa;
}

std::optional<QVariant> Ricerca::Valore(const QVariant& codice) {
  const QString chiave = CStr(codice);
  const auto trovato = letti_.constFind(chiave);
  if (trovato != letti_.constEnd()) return *trovato;
  RecordsetPtr rs;
  ApriRecordset(rs, Sql(testo_) + Sql::Param(codice), nullptr, dbOpenSnapshot);
  std::optional<QVariant> valore;
  if (!rs->Eof()) valore = rs->Value(campo_);
  letti_.insert(chiave, valore);
  return valore;
}

QString NomiAttivita::Operatore(const QVariant& cUtente) {
  const auto nome = operatori_.Valore(static_cast<qlonglong>(CDbl(NullToZero(cUtente))));
  return nome ? NullToStr(*nome) : QStringLiteral("{sconosciuto}");
}

QString NomiAttivita::Prestazione(const QVariant& cPrestazione) {
  const auto descrizione = prestazioni_.Valore(static_cast<qlonglong>(CDbl(NullToZero(cPrestazione))));
  return descrizione ? NullToStr(*descrizione) : QStringLiteral("-");
}

tyDatiDisp GetDatiDisp(int tAnag, int cAnag, int cPrjTipo, int cPrjDispTipo) {
  Guard g(kModulo, QStringLiteral("GetDatiDisp"), Guard::Silent);
  tyDatiDisp result;
  bool forfait = false;
  RecordsetPtr rs;
  g([&] {
    ApriRecordset(rs,
                  QStringLiteral("SELECT CPrjDispTipo, DPrjDispTipo, Sigla, Forfait FROM ProjectsDispTipo "
                                 "WHERE CPrjDispTipo=") +
                      N(cPrjDispTipo),
                  nullptr, dbOpenSnapshot);
  });
  g([&] {
    if (!rs->Eof()) forfait = CBool(NullToZero(rs->Value(QStringLiteral("Forfait"))));
  });
  // The customer's own tariff wins whole over the general one.
  RecordsetPtr tar;
  g([&] {
    ApriRecordset(tar,
                  QStringLiteral("SELECT CPrjTipo, CPrjDispTipo, TAnag, CAnag, TarMin, TarMax, TarH "
                                 "FROM ProjectsDispTarDett WHERE CPrjTipo=") +
                      N(cPrjTipo) + QStringLiteral(" AND CPrjDispTipo=") + N(cPrjDispTipo) +
                      QStringLiteral(" AND TAnag=") + N(tAnag) + QStringLiteral(" AND CAnag=") + N(cAnag),
                  nullptr, dbOpenSnapshot);
  });
  bool trovata = false;
  g([&] { trovata = tar && !tar->Eof(); });
  if (!trovata) {
    g([&] {
      ApriRecordset(tar,
                    QStringLiteral("SELECT CPrjTipo, CPrjDispTipo, TarMin, TarMax, TarH FROM ProjectsDispTar "
                                   "WHERE CPrjTipo=") +
                        N(cPrjTipo) + QStringLiteral(" AND CPrjDispTipo=") + N(cPrjDispTipo),
                    nullptr, dbOpenSnapshot);
    });
    g([&] { trovata = tar && !tar->Eof(); });
  }
  if (!trovata) return tyDatiDisp{};
  g([&] {
    if (forfait) {
      result.vMin = CDbl(NullToZero(tar->Value(QStringLiteral("TarMin"))));
      result.vMax = CDbl(NullToZero(tar->Value(QStringLiteral("TarMax"))));
    }
  });
  g([&] { result.vTarH = CDbl(NullToZero(tar->Value(QStringLiteral("TarH")))); });
  result.vForfait = forfait;
  return result;
}

void CaricaDatiModello(int cProject, const DatiModello& dest) {
  Guard g(kModulo, QStringLiteral("CaricaDatiModello"), Guard::Silent);
  for (RecordsetPtr* p : {dest.Disp, dest.DispDett, dest.Prod, dest.Act, dest.LavExt, dest.Forn})
    p->reset();
  // With no model yet the copies hold the structure alone.
  const bool soloStruttura = cProject < 1;
  RecordsetPtr rs;
  g([&] {
    ApriRecordset(rs, QStringLiteral("SELECT * FROM ProjectsDisp  WHERE CProject=") + N(cProject), nullptr,
                  dbOpenDynaset);
  });
  g([&] { DAO2ADO(rs, *dest.Disp, {}, false, soloStruttura); });
  g([&] {
    ApriRecordset(rs, QStringLiteral("SELECT * FROM ProjectsDispDett  WHERE CProject=") + N(cProject), nullptr,
                  dbOpenDynaset);
  });
  g([&] { DAO2ADO(rs, *dest.DispDett, {}, false, soloStruttura); });
  g([&] { CaricaAttivita(*dest.Act, cProject, 0, 0, false); });
  g([&] { CaricaLavEsterne(*dest.LavExt, cProject, 0); });
  g([&] { CaricaForniture(*dest.Forn, *dest.LavExt); });
  if (IsDebugRun()) {
    // Diagnostics of the development environment; never in the delivered component.
  }
}

void CaricaAttivita(RecordsetPtr& rs, int cProject, int cDisp, int cAttivita, bool aggiorna) {
  Guard g(kModulo, QStringLiteral("CaricaAttivita"), Guard::Silent);
  QString sql = QStringLiteral(
      "SELECT CAttivita, CProject, CDisp, CUtente, CPrestazione, "
      "Format([ActivitiesProd]![DtIni],\"dd/mm/yyyy\") AS DataIni, "
      "Format([ActivitiesProd]![DtIni],\"hh:nn\") AS OraIni, DtIni, "
      "Format([ActivitiesProd]![DtEnd],\"dd/mm/yyyy\") AS DataEnd, "
      "Format([ActivitiesProd]![DtEnd],\"hh:nn\") AS OraEnd, DtEnd, "
      "DtRealIni, DtRealEnd, Stato, TDocRif, NDocRif, CostoH, Annot1, Annot2 "
      "FROM ActivitiesProd ");
  QString filtro;
  if (cAttivita != 0) {
    sql += QStringLiteral("WHERE CAttivita=") + N(cAttivita);
    filtro = QStringLiteral("CAttivita=") + N(cAttivita);
  } else {
    sql += QStringLiteral("WHERE CProject=") + N(cProject);
    filtro = QStringLiteral("CProject=") + N(cProject);
    if (cDisp != 0) {
      sql += QStringLiteral(" AND CDisp=") + N(cDisp);
      filtro += QStringLiteral(" AND CDisp=") + N(cDisp);
    }
  }
  RecordsetPtr dao;
  g([&] { ApriRecordset(dao, sql, nullptr, dbOpenSnapshot); });
  if (!aggiorna) {
    g([&] { DAO2ADO(dao, rs); });
  } else {
    g([&] { CancellaFiltrati(rs, filtro); });
    g([&] { DAO2ADO(dao, rs, {}, true); });
  }
  // Activities stored without a cost take the operator's present one, in memory
  // only; each operator's cost is read once.
  g([&] { rs->SetFilter(QStringLiteral("CostoH=0")); });
  g([&] {
    QHash<qlonglong, double> costi;
    for (rs->MoveFirst(); !rs->Eof(); rs->MoveNext()) {
      const QVariant utente = rs->Value(QStringLiteral("CUtente"));
      const qlonglong chiave = static_cast<qlonglong>(CDbl(utente));
      auto trovato = costi.constFind(chiave);
      if (trovato == costi.constEnd()) {
        RecordsetPtr op;
        ApriRecordset(op,
                      Sql(QStringLiteral("SELECT TAnag, CAnag, CostoH FROM Anagrafica WHERE TAnag=10 AND CAnag=")) +
                          Sql::Param(utente),
                      nullptr, dbOpenSnapshot);
        trovato = costi.insert(chiave, op->Eof() ? 0.0 : CDbl(NullToZero(op->Value(QStringLiteral("CostoH")))));
      }
      rs->SetValue(QStringLiteral("CostoH"), *trovato);
      rs->Update();
    }
  });
  g([&] { rs->SetFilter(QString()); });
}

namespace {

// An order line by the number of its order and its own number.
using RigaOrdine = QPair<qlonglong, qlonglong>;

// The order line that a row names in two of its fields; none when either is
// Null, as no query would find a line for it.
std::optional<RigaOrdine> RigaDi(const Recordset& rs, int nDoc, int riga) {
  const QVariant n = rs.Value(nDoc), r = rs.Value(riga);
  if (IsNull(n) || IsNull(r)) return std::nullopt;
  return RigaOrdine(n.toLongLong(), r.toLongLong());
}

// The numbers of the orders that the rows of rs name in NDoc, as the list of
// an In: "(100, 101)"; "" when they name none.
QString ElencoOrdini(Recordset& rs) {
  std::set<qlonglong> numeri;
  const int nDoc = rs.FieldIndex(QStringLiteral("NDoc"));
  for (rs.MoveFirst(); !rs.Eof(); rs.MoveNext()) {
    const QVariant n = rs.Value(nDoc);
    if (!IsNull(n)) numeri.insert(n.toLongLong());
  }
  if (numeri.empty()) return {};
  QStringList testi;
  for (qlonglong n : numeri) testi << N(n);
  return QLatin1Char('(') + testi.join(QStringLiteral(", ")) + QLatin1Char(')');
}

// What each row of guida asks of lette, in guida's order: for every row of
// guida, the rows of lette whose fields nDoc and riga name guida's order line
// (NDoc, Riga), in lette's order, with the fields daGuida taken from that row
// of guida. A line asked for twice comes twice; a line not in lette gives
// nothing. The rows come with lette's fields, as a copy takes them.
RecordsetPtr RighePerGuida(Recordset& guida, Recordset& lette, const QString& nDoc, const QString& riga,
                           const QStringList& daGuida) {
  const int campi = lette.FieldCount();
  const int nDocLette = lette.FieldIndex(nDoc), rigaLette = lette.FieldIndex(riga);
  QHash<RigaOrdine, std::vector<Row>> perRiga;
  for (lette.MoveFirst(); !lette.Eof(); lette.MoveNext()) {
    const auto chiave = RigaDi(lette, nDocLette, rigaLette);
    if (!chiave) continue;
    Row r(campi);
    for (int i = 0; i < campi; ++i) r[i] = lette.Value(i);
    perRiga[*chiave].push_back(std::move(r));
  }
  std::vector<std::pair<int, int>> copiati;  // field of lette, field of guida
  for (const QString& nome : daGuida) copiati.emplace_back(lette.FieldIndex(nome), guida.FieldIndex(nome));
  const int nDocGuida = guida.FieldIndex(QStringLiteral("NDoc"));
  const int rigaGuida = guida.FieldIndex(QStringLiteral("Riga"));
  std::vector<Row> righe;
  for (guida.MoveFirst(); !guida.Eof(); guida.MoveNext()) {
    const auto chiave = RigaDi(guida, nDocGuida, rigaGuida);
    if (!chiave) continue;
    const auto trovate = perRiga.constFind(*chiave);
    if (trovate == perRiga.constEnd()) continue;
    for (Row r : *trovate) {
      for (const auto& [daLette, daGuidaCampo] : copiati) r[daLette] = guida.Value(daGuidaCampo);
      righe.push_back(std::move(r));
    }
  }
  auto out = Recordset::Create();
  for (const FieldDef& f : lette.FieldDefs()) out->Append(f);
  out->Open();
  out->AppendRows(std::move(righe));
  return out;
}

// The effective unit cost of the lines of rs: the mean of what their
// deliveries cost, each delivery rounded to the cent first, read in one query
// for all of them. A line with no quantity delivered keeps what it had.
void CostoEffettivo(Recordset& rs) {
  const QString ordini = ElencoOrdini(rs);
  if (ordini.isEmpty()) return;
  RecordsetPtr cons;
  ApriRecordset(cons,
                QStringLiteral("SELECT TipoDoc, TipoDocRif, NDocRif, RigaRif, Qta, Importo FROM [Doc:FornitureDett] "
                               "WHERE TipoDoc=15 AND TipoDocRif=12 AND NDocRif In ") +
                    ordini + QStringLiteral("; "),
                nullptr, dbOpenSnapshot);
  // Quantity and price of each delivery, by the line it answers, in the order read.
  QHash<RigaOrdine, std::vector<std::pair<double, double>>> perRiga;
  const int nDocRif = cons->FieldIndex(QStringLiteral("NDocRif"));
  const int rigaRif = cons->FieldIndex(QStringLiteral("RigaRif"));
  for (; !cons->Eof(); cons->MoveNext()) {
    const auto chiave = RigaDi(*cons, nDocRif, rigaRif);
    if (!chiave) continue;
    perRiga[*chiave].emplace_back(CDbl(NullToZero(cons->Value(QStringLiteral("Qta")))),
                                  CDbl(NullToZero(cons->Value(QStringLiteral("Importo")))));
  }
  const int nDoc = rs.FieldIndex(QStringLiteral("NDoc")), riga = rs.FieldIndex(QStringLiteral("Riga"));
  for (rs.MoveFirst(); !rs.Eof(); rs.MoveNext()) {
    const auto chiave = RigaDi(rs, nDoc, riga);
    if (!chiave) continue;
    double q = 0, v = 0;
    for (const auto& [qta, importo] : perRiga.value(*chiave)) {
      q += qta;
      v += Round(qta * importo, 2);
    }
    if (q > 0) {
      rs.SetValue(QStringLiteral("ImpEff"), Round(v / q, 2));
      rs.Update();
    }
  }
}

}  // namespace

void CaricaLavEsterne(RecordsetPtr& rs, int cProject, int cDisp) {
  Guard g(kModulo, QStringLiteral("CaricaLavEsterne"), Guard::Silent);
  // CDisp and RigaD lead the fields: each row takes them from its link, the 0s
  // only give them their place and type.
  const QString corpo = QStringLiteral(
      "SELECT 0 AS CDisp, 0 AS RigaD, "
      "[Doc:Forniture].TipoDoc, [Doc:Forniture].NDoc, [Doc:Forniture].DataDoc, Anagrafica.RagSoc1, "
      "[Doc:Forniture].DataCons, [Doc:FornitureDett].Riga, [Doc:FornitureDett].Qta, "
      "[Doc:FornitureDett].QtaArr, [Doc:FornitureDett].Annullato, [Doc:FornitureDett].Importo, "
      "[Doc:FornitureDett].Importo AS ImpEff, [Doc:FornitureDett].CCaus "
      "FROM ([Doc:Forniture] INNER JOIN Anagrafica ON ([Doc:Forniture].CAnag = Anagrafica.CAnag) AND "
      "([Doc:Forniture].TAnag = Anagrafica.TAnag)) INNER JOIN [Doc:FornitureDett] ON ([Doc:Forniture].NDoc = "
      "[Doc:FornitureDett].NDoc) AND ([Doc:Forniture].TipoDoc = [Doc:FornitureDett].TipoDoc) "
      "WHERE ((([Doc:Forniture].TipoDoc)=12) AND ");
  QString sql = QStringLiteral("SELECT TipoDoc, NDoc, Riga, CProject, CDisp, RigaD FROM ProjectsDocDett "
                               "WHERE TipoDoc=12 AND CProject=") +
                N(cProject);
  if (cDisp != 0) sql += QStringLiteral(" AND CDisp=") + N(cDisp);
  RecordsetPtr links;
  g([&] { ApriRecordset(links, sql, nullptr, dbOpenSnapshot); });
  QString ordini;
  g([&] { ordini = ElencoOrdini(*links); });
  if (!ordini.isEmpty()) {
    // Every line of the linked orders in one reading; each link then takes its own.
    RecordsetPtr lette, collegate;
    g([&] {
      ApriRecordset(lette, corpo + QStringLiteral("(([Doc:Forniture].NDoc) In ") + ordini + QStringLiteral(")); "),
                    nullptr, dbOpenSnapshot);
    });
    g([&] {
      collegate = RighePerGuida(*links, *lette, QStringLiteral("NDoc"), QStringLiteral("Riga"),
                                {QStringLiteral("CDisp"), QStringLiteral("RigaD")});
    });
    g([&] { DAO2ADO(collegate, rs); });
  } else {
    RecordsetPtr vuoto;
    g([&] {
      ApriRecordset(vuoto,
                    corpo + QStringLiteral("(([Doc:Forniture].NDoc)=-1000) AND (([Doc:FornitureDett].Riga)=0)); "),
                    nullptr, dbOpenSnapshot);
    });
    g([&] { DAO2ADO(vuoto, rs); });
  }
  g([&] { rs->SetFilter(QString()); });
  g([&] { CostoEffettivo(*rs); });
}

void CaricaForniture(RecordsetPtr& rs, const RecordsetPtr& rsLavExt) {
  Guard g(kModulo, QStringLiteral("CaricaForniture"), Guard::Silent);
  auto testo = [](const QString& cDisp, const QString& condizione) {
    return QStringLiteral("SELECT ") + cDisp +
           QStringLiteral(
               " AS CDisp, [Doc:Forniture].TipoDoc, [Doc:Forniture].NDoc, [Doc:FornitureDett].Riga, "
               "[Doc:Forniture].DataDoc, [Doc:Forniture].Riferimento, Anagrafica.RagSoc1, "
               "[Doc:FornitureDett].TipoDocRif, [Doc:FornitureDett].NDocRif, [Doc:FornitureDett].RigaRif, "
               "[Doc:FornitureDett].Qta, [Doc:FornitureDett].Importo, [ABC:Causfatt].Sigla, [ABC:Causfatt].Bool8 "
               "FROM (([Doc:Forniture] INNER JOIN [Doc:FornitureDett] ON ([Doc:Forniture].TipoDoc = "
               "[Doc:FornitureDett].TipoDoc) AND ([Doc:Forniture].NDoc = [Doc:FornitureDett].NDoc)) INNER JOIN "
               "Anagrafica ON ([Doc:Forniture].TAnag = Anagrafica.TAnag) AND ([Doc:Forniture].CAnag = "
               "Anagrafica.CAnag)) INNER JOIN [ABC:Causfatt] ON [Doc:FornitureDett].CCaus = [ABC:Causfatt].CTabGen "
               "WHERE ((([Doc:Forniture].TipoDoc)=15) AND ") +
           condizione + QStringLiteral("(([ABC:Causfatt].Bool8)=-1)); ");
  };
  RecordsetPtr ordini;
  g([&] {
    ordini = rsLavExt->Clone();
    ordini->SetFilter(QStringLiteral("TipoDoc=12"));
  });
  QString elenco;
  g([&] { elenco = ElencoOrdini(*ordini); });
  bool righe = false;
  if (!elenco.isEmpty()) {
    // The deliveries of every listed order in one reading; each line then takes
    // its own, with its CDisp in place of the 0.
    RecordsetPtr lette, consegne;
    g([&] {
      ApriRecordset(lette,
                    testo(QStringLiteral("0"), QStringLiteral("(([Doc:FornitureDett].TipoDocRif)=12) AND "
                                                              "(([Doc:FornitureDett].NDocRif) In ") +
                                                   elenco + QStringLiteral(") AND ")),
                    nullptr, dbOpenSnapshot);
    });
    g([&] {
      consegne = RighePerGuida(*ordini, *lette, QStringLiteral("NDocRif"), QStringLiteral("RigaRif"),
                               {QStringLiteral("CDisp")});
    });
    g([&] {
      if (consegne->RecordCount() > 0) {
        DAO2ADO(consegne, rs);
        righe = true;
      }
    });
  }
  if (!righe) {
    RecordsetPtr vuoto;
    g([&] {
      ApriRecordset(vuoto,
                    testo(QStringLiteral("1"),
                          QStringLiteral("(([Doc:FornitureDett].TipoDocRif)=0) AND "
                                         "(([Doc:FornitureDett].NDocRif)=-1000) AND "
                                         "(([Doc:FornitureDett].RigaRif)=0) AND ")),
                    nullptr, dbOpenSnapshot);
    });
    g([&] { DAO2ADO(vuoto, rs); });
  }
}

}  // namespace prestkt
