#include "ModPrestKT.h"

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

namespace {

// The first field of a lookup's first row, or the fallback; a failing query fails to the caller.
QString Ricerca(QHash<qlonglong, QString>& memo, const QString& testo, const QVariant& codice,
                const QString& campo, const QString& mancante) {
  const qlonglong chiave = static_cast<qlonglong>(CDbl(NullToZero(codice)));
  const auto trovato = memo.constFind(chiave);
  if (trovato != memo.constEnd()) return *trovato;
  RecordsetPtr rs;
  ApriRecordset(rs, Sql(testo) + Sql::Param(chiave), nullptr, dbOpenSnapshot);
  const QString nome = rs->Eof() ? mancante : NullToStr(rs->Value(campo));
  memo.insert(chiave, nome);
  return nome;
}

}  // namespace

QString NomiAttivita::Operatore(const QVariant& cUtente) {
  return Ricerca(operatori_,
                 QStringLiteral("SELECT CAnag AS CDip, RagSoc1 AS Nome, Eliminato FROM Anagrafica WHERE TAnag=10 AND "
                                "CAnag="),
                 cUtente, QStringLiteral("Nome"), QStringLiteral("{sconosciuto}"));
}

QString NomiAttivita::Prestazione(const QVariant& cPrestazione) {
  return Ricerca(prestazioni_,
                 QStringLiteral("SELECT CTabGen AS CPrestazione, DTabGen AS DPrestazione FROM TabGen WHERE "
                                "CTipTabGen=12 AND CTabGen="),
                 cPrestazione, QStringLiteral("DPrestazione"), QStringLiteral("-"));
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

void CaricaLavEsterne(RecordsetPtr& rs, int cProject, int cDisp) {
  Guard g(kModulo, QStringLiteral("CaricaLavEsterne"), Guard::Silent);
  const QString corpo = QStringLiteral(
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
  bool righe = false;
  g([&] {
    // The link's values go into the statement so that they come back as fields.
    for (links->MoveFirst(); !links->Eof(); links->MoveNext()) {
      RecordsetPtr riga;
      ApriRecordset(riga,
                    Sql(QStringLiteral("SELECT ")) + Sql::Param(links->Value(QStringLiteral("CDisp"))) +
                        Sql(QStringLiteral(" AS CDisp, ")) + Sql::Param(links->Value(QStringLiteral("RigaD"))) +
                        Sql(QStringLiteral(" AS RigaD, ") + corpo + QStringLiteral("(([Doc:Forniture].NDoc)=")) +
                        Sql::Param(links->Value(QStringLiteral("NDoc"))) +
                        Sql(QStringLiteral(") AND (([Doc:FornitureDett].Riga)=")) +
                        Sql::Param(links->Value(QStringLiteral("Riga"))) + Sql(QStringLiteral(")); ")),
                    nullptr, dbOpenSnapshot);
      DAO2ADO(riga, rs, {}, righe);
      righe = true;
    }
  });
  if (!righe) {
    RecordsetPtr vuoto;
    g([&] {
      ApriRecordset(vuoto,
                    QStringLiteral("SELECT 0 AS CDisp, 0 AS RigaD, ") + corpo +
                        QStringLiteral("(([Doc:Forniture].NDoc)=-1000) AND (([Doc:FornitureDett].Riga)=0)); "),
                    nullptr, dbOpenSnapshot);
    });
    g([&] { DAO2ADO(vuoto, rs); });
  }
  g([&] { rs->SetFilter(QString()); });
  // The effective unit cost: the mean of what the deliveries of the line cost.
  g([&] {
    RecordsetPtr cons;
    for (rs->MoveFirst(); !rs->Eof(); rs->MoveNext()) {
      ApriRecordset(cons,
                    Sql(QStringLiteral("SELECT TipoDoc, TipoDocRif, NDocRif, RigaRif, Qta, Importo FROM "
                                       "[Doc:FornitureDett] WHERE TipoDoc=15 AND TipoDocRif=")) +
                        Sql::Param(rs->Value(QStringLiteral("TipoDoc"))) + Sql(QStringLiteral(" AND NDocRif=")) +
                        Sql::Param(rs->Value(QStringLiteral("NDoc"))) + Sql(QStringLiteral(" AND RigaRif=")) +
                        Sql::Param(rs->Value(QStringLiteral("Riga"))) + Sql(QStringLiteral("; ")),
                    nullptr, dbOpenSnapshot);
      double q = 0, v = 0;
      for (; !cons->Eof(); cons->MoveNext()) {
        const double qta = CDbl(NullToZero(cons->Value(QStringLiteral("Qta"))));
        q += qta;
        v += Round(qta * CDbl(NullToZero(cons->Value(QStringLiteral("Importo")))), 2);
      }
      if (q > 0) {
        rs->SetValue(QStringLiteral("ImpEff"), Round(v / q, 2));
        rs->Update();
      }
    }
  });
}

void CaricaForniture(RecordsetPtr& rs, const RecordsetPtr& rsLavExt) {
  Guard g(kModulo, QStringLiteral("CaricaForniture"), Guard::Silent);
  auto testo = [](const Sql& cDisp, const Sql& condizione) {
    return Sql(QStringLiteral("SELECT ")) + cDisp +
           Sql(QStringLiteral(
               " AS CDisp, [Doc:Forniture].TipoDoc, [Doc:Forniture].NDoc, [Doc:FornitureDett].Riga, "
               "[Doc:Forniture].DataDoc, [Doc:Forniture].Riferimento, Anagrafica.RagSoc1, "
               "[Doc:FornitureDett].TipoDocRif, [Doc:FornitureDett].NDocRif, [Doc:FornitureDett].RigaRif, "
               "[Doc:FornitureDett].Qta, [Doc:FornitureDett].Importo, [ABC:Causfatt].Sigla, [ABC:Causfatt].Bool8 "
               "FROM (([Doc:Forniture] INNER JOIN [Doc:FornitureDett] ON ([Doc:Forniture].TipoDoc = "
               "[Doc:FornitureDett].TipoDoc) AND ([Doc:Forniture].NDoc = [Doc:FornitureDett].NDoc)) INNER JOIN "
               "Anagrafica ON ([Doc:Forniture].TAnag = Anagrafica.TAnag) AND ([Doc:Forniture].CAnag = "
               "Anagrafica.CAnag)) INNER JOIN [ABC:Causfatt] ON [Doc:FornitureDett].CCaus = [ABC:Causfatt].CTabGen "
               "WHERE ((([Doc:Forniture].TipoDoc)=15) AND ")) +
           condizione + Sql(QStringLiteral("(([ABC:Causfatt].Bool8)=-1)); "));
  };
  RecordsetPtr ordini;
  g([&] {
    ordini = rsLavExt->Clone();
    ordini->SetFilter(QStringLiteral("TipoDoc=12"));
  });
  bool righe = false;
  g([&] {
    for (; !ordini->Eof(); ordini->MoveNext()) {
      RecordsetPtr dao;
      ApriRecordset(dao,
                    testo(Sql::Param(ordini->Value(QStringLiteral("CDisp"))),
                          Sql(QStringLiteral("(([Doc:FornitureDett].TipoDocRif)=12) AND (([Doc:FornitureDett].NDocRif)=")) +
                              Sql::Param(ordini->Value(QStringLiteral("NDoc"))) +
                              Sql(QStringLiteral(") AND (([Doc:FornitureDett].RigaRif)=")) +
                              Sql::Param(ordini->Value(QStringLiteral("Riga"))) + Sql(QStringLiteral(") AND "))),
                    nullptr, dbOpenSnapshot);
      if (dao->RecordCount() > 0) {
        DAO2ADO(dao, rs, {}, righe);
        righe = true;
      }
    }
  });
  if (!righe) {
    RecordsetPtr vuoto;
    g([&] {
      ApriRecordset(vuoto,
                    testo(Sql(QStringLiteral("1")),
                          Sql(QStringLiteral("(([Doc:FornitureDett].TipoDocRif)=0) AND (([Doc:FornitureDett].NDocRif)=-1000) "
                                             "AND (([Doc:FornitureDett].RigaRif)=0) AND "))),
                    nullptr, dbOpenSnapshot);
    });
    g([&] { DAO2ADO(vuoto, rs); });
  }
}

}  // namespace prestkt
