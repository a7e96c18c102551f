#include "ModDoc.h"

#include <QCursor>
#include <QGuiApplication>

#include "Guard.h"
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

void IniTab4Doc(RecordsetPtr& rcsD, RecordsetPtr& rcsFD, RecordsetPtr& rcsFDD, int& vCCaus, int TipoDoc, int NDoc,
                bool vNewDoc) {
  Guard g(kModulo, QStringLiteral("IniTab4Doc"));
  Clessidra clessidra;
  // The open dispositions.
  g([&] {
    RecordsetPtr rs = Leggi(
                  kCampiDisp +
                      QStringLiteral(
                          " FROM (((Projects INNER JOIN Anagrafica ON (Projects.CAnag = Anagrafica.CAnag) AND "
                          "(Projects.TAnag = Anagrafica.TAnag)) INNER JOIN ProjectsTipo ON Projects.CPrjTipo = "
                          "ProjectsTipo.CPrjTipo) INNER JOIN ProjectsDisp ON Projects.CProject = "
                          "ProjectsDisp.CProject) INNER JOIN ProjectsDispTipo ON ProjectsDisp.CPrjDispTipo = "
                          "ProjectsDispTipo.CPrjDispTipo WHERE Projects.Stato=0 AND ProjectsDisp.CStato=0 ORDER BY "
                          "Projects.CProject, ProjectsDisp.CDisp; "));
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
            QString::number(TipoDoc) + QStringLiteral(" AND ProjectsDocDett.NDoc=") + QString::number(NDoc) +
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
    const QString documento = QStringLiteral(" WHERE TipoDoc=") + QString::number(TipoDoc) + QStringLiteral(" AND NDoc=") + QString::number(NDoc);
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

}  // namespace prestkt
