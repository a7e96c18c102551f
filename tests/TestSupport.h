#pragma once
// What every test needs: its own database in a temporary folder, the global
// state reset, and a script of answers for the message service that records
// what was asked.
#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTextStream>
#include <deque>
#include <ostream>
#include <memory>
#include <vector>

#include "Database.h"
#include "Messages.h"
#include "ModPrestKT.h"
#include "Procedure.h"
#include "Schema.h"

// Readable failures for texts.
inline void PrintTo(const QString& s, std::ostream* os) { *os << '"' << s.toStdString() << '"'; }

namespace prestkt::test {

struct Asked {
  QString prompt;
  int buttons;
  QString title;
};

class ScriptedMessages : public MessageService {
 public:
  std::deque<int> answers;           // MsgBox answers, in order; the default button when empty
  std::deque<QString> inputs;        // InputBox answers
  std::deque<QString> files;         // file dialog answers
  std::vector<Asked> asked;
  std::vector<QString> filtri;       // the filter of each file dialog, in order

  int MsgBox(const QString& prompt, int buttons, const QString& title) override {
    asked.push_back({prompt, buttons, title});
    if (!answers.empty()) {
      const int a = answers.front();
      answers.pop_front();
      return a;
    }
    const int kind = buttons & 7;
    if (kind == vbYesNo || kind == vbYesNoCancel) return (buttons & vbDefaultButton2) ? vbNo : vbYes;
    return vbOK;
  }
  QString InputBox(const QString& prompt, const QString& title, const QString&) override {
    asked.push_back({prompt, -1, title});
    if (inputs.empty()) return {};
    const QString s = inputs.front();
    inputs.pop_front();
    return s;
  }
  QString OpenFileName(const QString& title, const QString& filter, const QString&) override {
    return NextFile(title, filter);
  }
  QString SaveFileName(const QString& title, const QString& filter, const QString&) override {
    return NextFile(title, filter);
  }

 private:
  QString NextFile(const QString& title, const QString& filter) {
    asked.push_back({title, -2, QString()});
    filtri.push_back(filter);
    if (files.empty()) return {};
    const QString s = files.front();
    files.pop_front();
    return s;
  }
};

inline void ResetGlobals() {
  gDB.reset();
  gCurUtente = 0;
  gPathDB.clear();
  gNomeDB.clear();
  gPathDocs.clear();
  gPathLogo.clear();
  gMagnify = 0;
  gCProject = 0;
  gDtIni = QDateTime();
  gDTEnd = QDateTime();
  gStatus = 0;
  gTAnag = 0;
  gCAnag = 0;
  gOnlyInput = false;
  gOnlyPrest = false;
  gRcsProjects.reset();
  gRcsDisp.reset();
  gRcsDispDett.reset();
  gRcsProd.reset();
  gRcsAct.reset();
  gRcsLavExt.reset();
  gRcsForn.reset();
}

// The engine the tests run on: SQLite files, or with PRESTKT_PG (a libpq
// connection string) a PostgreSQL server, each test database a schema of its own.
inline QString ServerDiProva() { return qEnvironmentVariable("PRESTKT_PG"); }

// The schema on the server that stands for a test's database file.
inline QString SchemaDiProva(const QString& file) {
  return QStringLiteral("t_") +
         QString::fromLatin1(
             QCryptographicHash::hash(QFileInfo(file).absoluteFilePath().toUtf8(), QCryptographicHash::Md5)
                 .toHex()
                 .left(24));
}

// The connection to the schema that stands for a test's database file; with
// nuovo the schema is made empty first.
inline QString ConnessioneDiProva(const QString& file, bool nuovo) {
  const QString server = ServerDiProva();
  const QString schema = SchemaDiProva(file);
  if (nuovo) {
    auto amministra = Database::OpenPostgreSQL(server, QFileInfo(file).absolutePath());
    amministra->Execute(Sql(QStringLiteral("DROP SCHEMA IF EXISTS %1 CASCADE").arg(schema)));
    amministra->Execute(Sql(QStringLiteral("CREATE SCHEMA %1").arg(schema)));
  }
  return server + QStringLiteral(" options='-c search_path=%1,public'").arg(schema);
}

// The database of a test. nuovo: made empty (SQLite makes a missing file by itself).
inline DatabasePtr ApriDatabaseDiProva(const QString& file, bool nuovo = true) {
  if (ServerDiProva().isEmpty()) return Database::OpenSQLite(file);
  return Database::OpenPostgreSQL(ConnessioneDiProva(file, nuovo), QFileInfo(file).absolutePath());
}

// What is left of a test's database on the server goes.
inline void CancellaDatabaseDiProva(const QString& file) {
  if (ServerDiProva().isEmpty()) return;
  try {
    auto amministra = Database::OpenPostgreSQL(ServerDiProva(), QFileInfo(file).absolutePath());
    amministra->Execute(Sql(QStringLiteral("DROP SCHEMA IF EXISTS %1 CASCADE").arg(SchemaDiProva(file))));
  } catch (...) {
  }
}

// A database of the schema in a folder of its own, made the component's database.
class TestDb {
 public:
  explicit TestDb(bool withOnDemand = true) {
    ResetGlobals();
    db = ApriDatabaseDiProva(dir.path() + QStringLiteral("/vorn.db"));
    CreaSchema(*db, withOnDemand);
    gDB = db;
    gPathDB = db->PathDB();
    gNomeDB = db->Name();
    messages = std::make_shared<ScriptedMessages>();
    SetMessageService(messages);
  }
  ~TestDb() {
    SetMessageService(nullptr);
    ResetGlobals();
    if (db && db->engine() == Engine::PostgreSQL && db->IsOpen()) {
      try {
        db->Execute(Sql(QStringLiteral("DROP SCHEMA %1 CASCADE").arg(SchemaDiProva(dir.path() + QStringLiteral("/vorn.db")))));
      } catch (...) {
      }
    }
  }

  void Exec(const QString& sql) { db->Execute(Sql(sql)); }
  QVariant Scalar(const QString& sql) {
    const auto r = db->Select(Sql(sql));
    return r.rows.empty() ? QVariant() : r.rows.front().front();
  }
  // The values of the first column of a query's rows, in its order, joined by commas.
  QString Elenco(const QString& sql) {
    QStringList valori;
    for (const Row& r : db->Select(Sql(sql)).rows) valori << r.front().toString();
    return valori.join(QLatin1Char(','));
  }
  bool SuPostgres() const { return db && db->engine() == Engine::PostgreSQL; }
  // A database that cannot grow: SQLite held at its pages, PostgreSQL's writes
  // into the table refused as its full disk refuses them.
  void DatabasePieno(const QString& tabella) {
    if (SuPostgres()) RifiutaScritture(tabella);
    else Exec(QStringLiteral("PRAGMA max_page_count=%1").arg(Scalar(QStringLiteral("PRAGMA page_count")).toInt()));
  }
  // The rows written into a table refused as on a full disk, and then accepted again.
  void RifiutaScritture(const QString& tabella) {
    if (!SuPostgres()) {
      Exec(QStringLiteral("CREATE TRIGGER pieno BEFORE INSERT ON %1 BEGIN SELECT RAISE(ABORT, "
                          "'database or disk is full'); END")
               .arg(tabella));
      return;
    }
    db->ExecuteNativo(QStringLiteral("CREATE OR REPLACE FUNCTION pieno() RETURNS trigger LANGUAGE plpgsql AS "
                                     "'BEGIN RAISE EXCEPTION ''could not extend file: No space left on device'' "
                                     "USING ERRCODE = ''disk_full''; END'"));
    db->ExecuteNativo(QStringLiteral("CREATE TRIGGER pieno BEFORE INSERT OR UPDATE ON \"%1\" FOR EACH ROW EXECUTE "
                                     "FUNCTION pieno()")
                          .arg(tabella));
  }
  void AccettaScritture(const QString& tabella) {
    if (SuPostgres()) db->ExecuteNativo(QStringLiteral("DROP TRIGGER pieno ON \"%1\"").arg(tabella));
    else Exec(QStringLiteral("DROP TRIGGER pieno"));
  }
  QString MessaggioPieno() const {
    return SuPostgres() ? QStringLiteral("No space left on device") : QStringLiteral("database or disk is full");
  }
  QString Path() const { return dir.path(); }
  // The lines of a log file of the error log for today.
  QStringList LogLines(const QString& modulo, const QString& procedura) const {
    QFile f(ErrLogFile(modulo, procedura, Now()));
    if (!f.open(QIODevice::ReadOnly | QIODevice::Text)) return {};
    return QString::fromUtf8(f.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
  }

  QTemporaryDir dir;
  DatabasePtr db;
  std::shared_ptr<ScriptedMessages> messages;
};

inline QDateTime D(int y, int m, int d, int h = 0, int n = 0, int s = 0) {
  return QDateTime(QDate(y, m, d), QTime(h, n, s));
}

}  // namespace prestkt::test
