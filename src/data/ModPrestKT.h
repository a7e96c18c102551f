#pragma once
// The component's global state and the module ModPrestKT: the loaders of the
// register and of the working recordsets of a model, and the lookups by key.
// Each global has one writer, named beside it; everyone else only reads.
#include <QDateTime>
#include <QHash>
#include <QIcon>
#include <QString>
#include <optional>

#include "Database.h"
#include "Recordset.h"

namespace prestkt {

inline DatabasePtr gDB;           // DBConn
inline int gCurUtente = 0;        // DBConn
inline QString gPathDB;           // DBConn: folder of the database, with its closing separator
inline QString gNomeDB;           // DBConn: full name of the database file
inline QIcon gIcona;              // DBConn; released when the control ends
inline QString gPathDocs;         // DBConn: root of the models' documents
inline QString gPathLogo;         // DBConn
inline QString gPathTemp;         // Initialize
inline int gMagnify = 0;          // DBConn: 16 normal, above 16 the large layout
inline bool gMagnifyScreen = false;  // property MagnifyScreen
inline int gCProject = 0;         // property CProject, Elimina, Aggiungi, Modifica
inline QDateTime gDtIni;          // property DtIni (invalid = 0)
inline QDateTime gDTEnd;          // property DTEnd (invalid = 0)
inline int gStatus = 0;           // property Status
inline int gTAnag = 0;            // property TAnag, combo CBTAnag
inline int gCAnag = 0;            // property CAnag, combo CBCAnag
inline bool gOnlyInput = false;   // property OnlyInput
inline bool gOnlyPrest = false;   // property OnlyPrest
inline RecordsetPtr gRcsProjects;  // CaricaModelli, AggiornaModello
// CaricaDatiModello
inline RecordsetPtr gRcsDisp, gRcsDispDett, gRcsProd, gRcsAct, gRcsLavExt, gRcsForn;
inline int gLeftForm = 0, gTopForm = 0;  // every public method that opens a screen (twips)

// Drops the component's references to the database, to what it read and to
// its icon. The database stays open: it is the host's.
void RilasciaRiferimenti();

// Loads gRcsProjects for gDtIni..gDTEnd and gStatus. Nothing happens while
// gDTEnd is 0 or gDB is missing.
void CaricaModelli(const QDateTime& dtIni, const QDateTime& dtEnd, int stato);
// Refreshes one model in gRcsProjects after its card saved it.
void AggiornaModello(int cProject, RecordsetPtr& rs);

// Lookups by key; the not-found default when there is no row or the query fails.
QString DescrAnag(int tAnag, int cAnag);
QString DescrTipoPrj(int cPrjTipo);
QString DescrTipoDisp(int cPrjDispTipo);
QString DescrPrest(int cPrestazione);
double CostoOraOperatore(int cAnag);
bool AvvisaDispChiusa(int cProject, int cDisp);

// A lookup of one field by one code that reads each code once for the life
// of the object, so that a list of thousands of rows reads each code it shows
// once. The statement is the text given with the code bound at its end.
class Ricerca {
 public:
  Ricerca(QString testo, QString campo) : testo_(std::move(testo)), campo_(std::move(campo)) {}
  // The field of the first row for the code; nothing when there is no row. A
  // failing query fails to the caller and is read again at the next asking.
  std::optional<QVariant> Valore(const QVariant& codice);

 private:
  QString testo_;
  QString campo_;
  QHash<QString, std::optional<QVariant>> letti_;  // by the code's text
};

// The operator's name and the service kind's description as the lists of
// activities show them: "{sconosciuto}" and "-" when there is no row.
class NomiAttivita {
 public:
  QString Operatore(const QVariant& cUtente);
  QString Prestazione(const QVariant& cPrestazione);

 private:
  Ricerca operatori_{QStringLiteral("SELECT CAnag AS CDip, RagSoc1 AS Nome, Eliminato FROM Anagrafica WHERE "
                                    "TAnag=10 AND CAnag="),
                     QStringLiteral("Nome")};
  Ricerca prestazioni_{QStringLiteral("SELECT CTabGen AS CPrestazione, DTabGen AS DPrestazione FROM TabGen WHERE "
                                      "CTipTabGen=12 AND CTabGen="),
                       QStringLiteral("DPrestazione")};
};

// The tariff of a kind of work for a customer.
struct tyDatiDisp {
  double vMin = 0;
  double vMax = 0;
  double vTarH = 0;
  bool vForfait = false;
};
tyDatiDisp GetDatiDisp(int tAnag, int cAnag, int cPrjTipo, int cPrjDispTipo);

// The working recordsets of a model, into the given dest (the globals by default).
struct DatiModello {
  RecordsetPtr* Disp = &gRcsDisp;
  RecordsetPtr* DispDett = &gRcsDispDett;
  RecordsetPtr* Prod = &gRcsProd;
  RecordsetPtr* Act = &gRcsAct;
  RecordsetPtr* LavExt = &gRcsLavExt;
  RecordsetPtr* Forn = &gRcsForn;
};
void CaricaDatiModello(int cProject, const DatiModello& dest = {});
void CaricaAttivita(RecordsetPtr& rs, int cProject, int cDisp, int cAttivita, bool aggiorna);
// The supplier order lines linked to a model (cDisp 0) or to one of its
// dispositions: one row for each link, in the links' order, with the link's
// CDisp and RigaD first and the effective unit cost in ImpEff.
void CaricaLavEsterne(RecordsetPtr& rs, int cProject, int cDisp);
// The billable deliveries of the order lines of rsLavExt: for each of its
// lines, in its order, the line's deliveries with the line's CDisp first.
void CaricaForniture(RecordsetPtr& rs, const RecordsetPtr& rsLavExt);

}  // namespace prestkt
