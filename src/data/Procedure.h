#pragma once
// Data access and runtime services of the module "Procedure": opening
// recordsets, action queries, copies into memory, quoting, the error log, the
// configuration file, folders and the environment.
#include <QDate>
#include <QDateTime>
#include <QPair>
#include <QString>
#include <functional>

#include "Database.h"
#include "Guard.h"
#include "Messages.h"
#include "Recordset.h"
#include "Vb.h"

namespace prestkt {

// A progress bar as the copies see it: value and maximum.
using Progress = std::function<void(int value, int maximum)>;

// Opens a recordset; db null means gDB. Up to three attempts; after three
// failures rs stays null and the caller's next use of it fails in the caller.
// A dynaset on one table writes its Edit/AddNew/Update/Delete to the table.
void ApriRecordset(RecordsetPtr& rs, const Sql& sql, Database* db = nullptr,
                   int tipo = dbOpenDynaset);
// An action query in a transaction of its own. A failure is logged and the
// transaction committed all the same. Always returns "".
QString QueryExe(const Sql& sql, int opzioni = 0, Database* db = nullptr);
// Copies a recordset of the database into a disconnected one (see the source
// for the type mapping). aggiungi appends to rsADO, mostra copies the
// structure alone, recStat adds the field "RecStat".
void DAO2ADO(const RecordsetPtr& rsDAO, RecordsetPtr& rsADO, const Progress& progress = {},
             bool aggiungi = false, bool mostra = false, bool recStat = false);
// The in-memory field that DAO2ADO makes of a database field.
FieldDef AdoFieldOfDao(const FieldDef& daoField);
// A value on its way into field f of a copy. One that doesn't fit fails
// through g, and the row keeps what fits: a text cut to the field's size,
// anything else Null. Copies never drop a row for a value.
QVariant ValoreCopiato(Guard& g, const FieldDef& f, const QVariant& v);

// Quoting of values into SQL. TestoSql binds the text (with each double quote
// turned into two single quotes) and gives the word Null for an empty text.
Sql TestoSql(const QString& testo);
// A number the program holds, written into SQL text.
inline QString N(qlonglong v) { return QString::number(v); }
QString DataSql(const QVariant& data);     // the engine's literal of the day at midnight; "" for no date
QString DataSqlIso(const QVariant& data);  // 'yyyy-mm-dd'
// The month of oggi, from its first day to its last: the period screens open on.
QPair<QDate, QDate> PeriodoDelMese(const QDate& oggi);

bool BeginTrans(Database* db = nullptr);
bool CommitTrans(Database* db = nullptr);

// Writes that must land together, such as a delete and the writing anew of
// the same rows. The statements in between run through the caller's guard as
// usual; Fine commits when none of them failed, and otherwise rolls back, so
// that the tables hold the old rows or the new ones, never neither. Each
// failure is in the log all the same.
class Transazione {
 public:
  explicit Transazione(Guard& g, Database* db = nullptr);
  ~Transazione();
  Transazione(const Transazione&) = delete;
  Transazione& operator=(const Transazione&) = delete;
  bool Fine();  // true when committed

 private:
  Guard& g_;
  Database* db_ = nullptr;
  int guasti_ = 0;
  int guastiDb_ = 0;
  bool aperta_ = false;
};

// The error log: gPathDB + "/ErrLogs/YYYY/MM/<Modulo>_<Procedura>.log", one
// line "dd hh:nn:ss - Procedura: Testo". Never fails.
void ScriviErrLog(const QString& modulo, const QString& procedura, const QString& testo, bool& mostra);
QString ErrLogFile(const QString& modulo, const QString& procedura, const QDateTime& when);
// Room for the log on a full disk: a file of reserved bytes in the log's
// folder, made when the component connects and given back by the logger when
// a line can't be written otherwise.
inline constexpr qint64 kRiservaLog = 64 * 1024;
QString FileRiservaLog();
void RiservaSpazioLog();

// Configuration file Vorn.def in the database's folder. utente: the section of
// the current user (gCurUtente), otherwise "IMPOSTAZIONI".
QString LeggiConfig(bool utente, const QString& chiave);
void ScriviConfig(bool utente, const QString& chiave, const QString& valore);
QString ConfigFile();

// The four settings of the selling price. Whoever reads them adds them up and,
// when the sum is exactly 0, takes its own fallback for all four.
struct ImpostazioniPrezzo {
  double PercRicLExt = 0;
  double PercRicMin = 0;
  double CoeffStd = 0;
  double CoeffRange = 0;
};
inline constexpr ImpostazioniPrezzo kFallbackCalcolo{0.5, 0.2, 5, 1};
inline constexpr ImpostazioniPrezzo kFallbackImpostazioni{0.5, 0.2, 1, 5};
// Each key that does not read as a number fails through g and counts 0.
ImpostazioniPrezzo LeggiImpostazioniPrezzo(Guard& g, const ImpostazioniPrezzo& fallback);

bool EsisteCartella(const QString& path, bool crea = false);
bool EsisteFile(const QString& path);
bool TabellaEsiste(const QString& nome);

// The environment, counted from 1 as the platform does; Environ(0) raises 5.
int GetEnvironIdx(const QString& nome);
QString Environ(int index);

bool IsDebugRun();

}  // namespace prestkt
