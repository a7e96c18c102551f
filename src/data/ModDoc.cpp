#include "ModDoc.h"

#include <QCursor>
#include <QGuiApplication>

#include "Guard.h"
#include "ModPrestKT.h"
#include "ModADO.h"
#include "Procedure.h"

namespace prestkt {

namespace {

const QString kModulo = QStringLiteral("ModDoc");

// A read of the database; one that fails leaves nothing to copy, and fails here.
RecordsetPtr Leggi(const QString& sql) {
  RecordsetPtr rs;
  ApriRecordset(rs, sql, nullptr, dbOpenSnapshot);
  if (!rs) Raise(err::ObjectNotSet);
  return rs;
}

// The wait pointer while the recordsets are read, where there is a screen.
struct Clessidra {
  Clessidra() : attiva(qobject_cast<QGuiApplication*>(QCoreApplication::instance()) != nullptr) {
    if (attiva) QGuiApplication::setOverrideCursor(QCursor(Qt::WaitCursor));
  }
  ~Clessidra() {
    if (attiva) QGuiApplication::restoreOverrideCursor();
  }
  bool attiva;
};

const QString kCampiDisp = QStringLiteral(
    "SELECT Projects.CProject, ProjectsDisp.CDisp, Projects.DProject, Projects.CPrjTipo, ProjectsTipo.DPrjTipo, "
    "Projects.TAnag, Projects.CAnag, Anagrafica.RagSoc1, Projects.Stato, Projects.DtIni, ProjectsDisp.DDisp, "
    "ProjectsDispTipo.DPrjDispTipo, ProjectsDisp.CStato, ProjectsDisp.Qta, ProjectsDisp.CPrjDispTipo");

}  // namespace

QString SqlDisposizioniAperte() {
  return kCampiDisp +
         QStringLiteral(" FROM (((Projects INNER JOIN Anagrafica ON (Projects.CAnag = Anagrafica.CAnag) AND "
                        "(Projects.TAnag = Anagrafica.TAnag)) INNER JOIN ProjectsTipo ON Projects.CPrjTipo = "
                        "ProjectsTipo.CPrjTipo) INNER JOIN ProjectsDisp ON Projects.CProject = "
                        "ProjectsDisp.CProject) INNER JOIN ProjectsDispTipo ON ProjectsDisp.CPrjDispTipo = "
                        "ProjectsDispTipo.CPrjDispTipo WHERE Projects.Stato=0 AND ProjectsDisp.CStato=0 ORDER BY "
                        "Projects.CProject, ProjectsDisp.CDisp; ");
}

QString SqlTempiDisposizioni(const QString& codice) {
  return QStringLiteral(
             "SELECT ActivitiesProd.CProject, ActivitiesProd.CDisp, "
             "Sum(DateDiff(\"n\",[ActivitiesProd]![DtIni],[ActivitiesProd]![DtEnd])) AS Minuti, "
             "Max(ActivitiesProd.DtEnd) AS MaxDiDtEnd, ProjectsDisp.Qta FROM ActivitiesProd INNER JOIN "
             "ProjectsDisp ON (ActivitiesProd.CDisp = ProjectsDisp.CDisp) AND (ActivitiesProd.CProject = "
             "ProjectsDisp.CProject) GROUP BY ActivitiesProd.CProject, ActivitiesProd.CDisp, ProjectsDisp.Qta "
             "HAVING ActivitiesProd.CProject=") +
         codice + QStringLiteral(" ORDER BY ActivitiesProd.CDisp; ");
}

QString SqlDatiDisposizione(const QString& coppia) {
  return QStringLiteral(
             "SELECT Projects.CProject, ProjectsDisp.CDisp, Anagrafica.RagSoc1 AS RagSoc, Projects.DProject AS "
             "Modello, ProjectsTipo.DPrjTipo AS TipoMod, ProjectsDisp.DDisp AS Disposizione, "
             "ProjectsDispTipo.DPrjDispTipo AS TipoDisp, \"\" AS Tempo, 0 AS Minuti, ProjectsDisp.Data As DataMax, "
             "ProjectsDisp.Qta FROM ((ProjectsTipo INNER JOIN Projects ON ProjectsTipo.CPrjTipo = "
             "Projects.CPrjTipo) INNER JOIN (ProjectsDisp INNER JOIN ProjectsDispTipo ON "
             "ProjectsDisp.CPrjDispTipo = ProjectsDispTipo.CPrjDispTipo) ON (Projects.CProject = "
             "ProjectsDisp.CProject) AND (Projects.CProject = ProjectsDisp.CProject)) INNER JOIN Anagrafica ON "
             "(Projects.CAnag = Anagrafica.CAnag) AND (Projects.TAnag = Anagrafica.TAnag) GROUP BY "
             "Projects.CProject, ProjectsDisp.CDisp, Anagrafica.RagSoc1, Projects.DProject, ProjectsTipo.DPrjTipo, "
             "ProjectsDisp.DDisp, ProjectsDispTipo.DPrjDispTipo, \"\", 0, ProjectsDisp.Data, ProjectsDisp.Qta "
             "HAVING ") +
         coppia;
}

void IniTab4Doc(RecordsetPtr& rcsD, RecordsetPtr& rcsFD, RecordsetPtr& rcsFDD, int& vCCaus, int TipoDoc, int NDoc,
                bool vNewDoc) {
  Guard g(kModulo, QStringLiteral("IniTab4Doc"));
  Clessidra clessidra;
  // The open dispositions.
  g([&] {
    RecordsetPtr rs = Leggi(SqlDisposizioniAperte());
    DAO2ADO(rs, rcsD);
  });
  // Those this document already uses, appended: with the same two state
  // conditions, they are open ones that the first read brought already.
  g([&] {
    RecordsetPtr rs = Leggi(
        kCampiDisp +
            QStringLiteral(
                ", ProjectsDocDett.TipoDoc, ProjectsDocDett.NDoc FROM ProjectsDocDett INNER JOIN ((((Projects "
                "INNER JOIN Anagrafica ON (Projects.TAnag = Anagrafica.TAnag) AND (Projects.CAnag = "
                "Anagrafica.CAnag)) INNER JOIN ProjectsTipo ON Projects.CPrjTipo = ProjectsTipo.CPrjTipo) INNER "
                "JOIN ProjectsDisp ON Projects.CProject = ProjectsDisp.CProject) INNER JOIN ProjectsDispTipo ON "
                "ProjectsDisp.CPrjDispTipo = ProjectsDispTipo.CPrjDispTipo) ON (ProjectsDocDett.CDisp = "
                "ProjectsDisp.CDisp) AND (ProjectsDocDett.CProject = ProjectsDisp.CProject) GROUP BY "
                "Projects.CProject, ProjectsDisp.CDisp, Projects.DProject, Projects.CPrjTipo, "
                "ProjectsTipo.DPrjTipo, Projects.TAnag, Projects.CAnag, Anagrafica.RagSoc1, Projects.Stato, "
                "Projects.DtIni, ProjectsDisp.DDisp, ProjectsDispTipo.DPrjDispTipo, ProjectsDisp.CStato, "
                "ProjectsDisp.Qta, ProjectsDisp.CPrjDispTipo, ProjectsDocDett.TipoDoc, ProjectsDocDett.NDoc, "
                "(([Projects].[Stato])=0) And (([ProjectsDisp].[CStato])=0) HAVING ProjectsDocDett.TipoDoc=") +
            N(TipoDoc) + QStringLiteral(" AND ProjectsDocDett.NDoc=") + N(NDoc) +
            QStringLiteral(" AND [Projects].[Stato]=0 AND [ProjectsDisp].[CStato]=0 ORDER BY Projects.CProject, "
                           "ProjectsDisp.CDisp; "));
    DAO2ADO(rs, rcsD, {}, true);
  });
  g([&] {
    const int causale = CercaCausCLav();
    if (causale < 0 || causale > 255) Raise(err::Overflow);
    vCCaus = causale;
  });
  // The test looks at the first table alone: the second is made only with it.
  if (!TabellaEsiste(QStringLiteral("ProjectsDocDett"))) {
    g([&] {
      RecordsetPtr rs =
          Leggi(QStringLiteral("SELECT TipoDoc , NDoc , Riga as Scheda, Riga , Riga as RigaD, NDoc As CProject, "
                                   "NDoc as CDisp, Ctipo, CArt, CVar, CodTesto, CodForn, DArt, NotaArt, Qta, CCaus, "
                                   "Importo, CIva FROM [Doc:FornitureDett] WHERE NDoc=-100; "));
      DAO2ADO(rs, rcsFD, {}, false, true);
    });
    g([&] {
      ADO2DAO(rcsFD, QStringLiteral("ProjectsDocDett"), false,
              {QStringLiteral("TipoDoc"), QStringLiteral("NDoc"), QStringLiteral("Scheda"), QStringLiteral("Riga"),
               QStringLiteral("RigaD")},
              {QStringLiteral("CProject"), QStringLiteral("CDisp")});
    });
    g([&] {
      auto out = Recordset::Create();
      out->Append(QStringLiteral("TipoDoc"), adTinyInt, 1, adFldIsNullable | adFldMayBeNull | adFldUpdatable);
      out->Append(QStringLiteral("NDoc"), adBigInt, 8, adFldIsNullable | adFldMayBeNull | adFldUpdatable);
      out->Append(QStringLiteral("RigaD"), adInteger, 4, adFldIsNullable | adFldMayBeNull | adFldUpdatable);
      out->Append(QStringLiteral("SubRiga"), adInteger, 4, adFldIsNullable | adFldMayBeNull | adFldUpdatable);
      out->Append(QStringLiteral("CPrestazione"), adInteger, 4, adFldIsNullable | adFldMayBeNull | adFldUpdatable);
      out->Open();
      rcsFDD = std::move(out);
    });
    g([&] {
      ADO2DAO(rcsFDD, QStringLiteral("ProjectsDocDettPrest"), false,
              {QStringLiteral("TipoDoc"), QStringLiteral("NDoc"), QStringLiteral("RigaD"), QStringLiteral("SubRiga")});
    });
  } else {
    const QString documento = QStringLiteral(" WHERE TipoDoc=") + N(TipoDoc) + QStringLiteral(" AND NDoc=") + N(NDoc);
    g([&] {
      DAO2ADO(Leggi(QStringLiteral("SELECT * FROM ProjectsDocDett") + documento), rcsFD, {}, false, vNewDoc);
    });
    g([&] {
      DAO2ADO(Leggi(QStringLiteral("SELECT * FROM ProjectsDocDettPrest") + documento), rcsFDD, {}, false, vNewDoc);
    });
  }
}

int CercaCausCLav() {
  Guard g(kModulo, QStringLiteral("CercaCausCLav"));
  return g.Value(
      [&] {
        RecordsetPtr ado;
        DAO2ADO(Leggi(QStringLiteral("SELECT CTabGen AS CLavorazione, DTabGen AS DLavorazione From TabGen Where "
                                     "CTipTabGen= 1 ORDER BY CTabGen")),
                ado);
        for (const char* filtro :
             {"DLavorazione='C/Lavorazione'", "DLavorazione='C/Lavoro'", "DLavorazione LIKE '*Lavor*'"}) {
          ado->SetFilter(QString::fromLatin1(filtro));
          if (ado->RecordCount() == 1) return CInt(ado->Value(QStringLiteral("CLavorazione")));
        }
        return 0;
      },
      0);
}

void SaveDataDoc(int TipoDoc, int NDoc, const RecordsetPtr& rcsFD, const RecordsetPtr& rcsFDD) {
  Guard g(kModulo, QStringLiteral("SaveDataDoc"));
  const QString documento = QStringLiteral(" WHERE TipoDoc=") + N(TipoDoc) +
                            QStringLiteral(" AND NDoc=") + N(NDoc);
  const auto numera = [&](const RecordsetPtr& rs) {
    if (!rs) Raise(err::ObjectNotSet);
    rs->SetFilter(QString());
    for (rs->MoveFirst(); !rs->Eof(); rs->MoveNext()) {
      rs->SetValue(QStringLiteral("TipoDoc"), TipoDoc);
      rs->SetValue(QStringLiteral("NDoc"), NDoc);
      rs->Update();
    }
  };
  Transazione t(g);
  g([&] { QueryExe(QStringLiteral("DELETE * FROM ProjectsDocDett") + documento); });
  g([&] { numera(rcsFD); });
  g([&] { ADO2DAO(rcsFD, QStringLiteral("ProjectsDocDett"), true); });
  g([&] { numera(rcsFDD); });
  g([&] { QueryExe(QStringLiteral("DELETE * FROM ProjectsDocDettPrest") + documento); });
  g([&] { ADO2DAO(rcsFDD, QStringLiteral("ProjectsDocDettPrest"), true); });
}

RecordsetPtr PreparaDati(const QList<int>& modelli) {
  Guard g(kModulo, QStringLiteral("PreparaDati"));
  // The times of the models, one row per disposition with activities.
  RecordsetPtr t;
  g([&] { DAO2ADO(Leggi(SqlTempiDisposizioni(QStringLiteral("0"))), t); });
  for (const int codice : modelli)
    g([&] { DAO2ADO(Leggi(SqlTempiDisposizioni(N(codice))), t, {}, true); });
  // The rows of the result, field by field, with the time, its minutes and the last day.
  RecordsetPtr s;
  g([&] { DAO2ADO(Leggi(SqlDatiDisposizione(QStringLiteral("Projects.CProject=-1 AND ProjectsDisp.CDisp=1; "))), s); });
  g([&] {
    for (t->MoveFirst(); !t->Eof(); t->MoveNext()) {
      const QVariant cProject = t->Value(QStringLiteral("CProject")), cDisp = t->Value(QStringLiteral("CDisp"));
      RecordsetPtr riga = Leggi(SqlDatiDisposizione(QStringLiteral("Projects.CProject=") + CStr(cProject) +
                                     QStringLiteral(" AND ProjectsDisp.CDisp=") + CStr(cDisp) + QStringLiteral("; ")));
      for (; !riga->Eof(); riga->MoveNext()) {
        s->AddNew();
        for (const FieldDef& f : riga->FieldDefs()) {
          const QString nome = f.Name.toLower();
          if (nome == QLatin1String("tempo")) {
            const QVariant minuti = t->Value(QStringLiteral("Minuti"));
            s->SetValue(f.Name, IsNull(minuti) ? CTempo(0) : CTempo(CLng(minuti)) + QStringLiteral(":00"));
          } else if (nome == QLatin1String("minuti")) {
            s->SetValue(f.Name, t->Value(QStringLiteral("Minuti")));
          } else if (nome == QLatin1String("datamax")) {
            s->SetValue(f.Name, Format(t->Value(QStringLiteral("MaxDiDtEnd")), QStringLiteral("dd/mm/yyyy")));
          } else {
            s->SetValue(f.Name, riga->Value(f.Name));
          }
        }
        s->Update();
      }
    }
  });
  RecordsetPtr risultato;
  g([&] { ADO2ADO(s, risultato, true, false); });
  return risultato;
}

Totali CalcolaTotali(const std::vector<RigaTotali>& righe, double valSconto, int cIvaTesta,
                     const std::function<std::optional<double>(int)>& aliquota) {
  Totali t;
  for (const RigaTotali& r : righe) {
    const double importo = Round(r.qta * r.pzVend * (1 - r.valRic / 100) * (1 - valSconto / 100), 2);
    t.imponibile += importo;
    if (const std::optional<double> a = aliquota(cIvaTesta != 0 ? cIvaTesta : r.cIva))
      t.iva += Round(importo * *a / 100, 2);
  }
  return t;
}

}  // namespace prestkt
