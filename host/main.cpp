// vorn-host: the demo business application that carries the component.
#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QFileInfo>
#include <QLibraryInfo>
#include <QLocale>
#include <QTimer>
#include <QTranslator>
#include <cstdio>

#include "HostWindow.h"
#include "ProcedureUi.h"

int main(int argc, char** argv) {
  QApplication app(argc, argv);
  QApplication::setApplicationName(QStringLiteral("VORN"));
  QLocale::setDefault(QLocale(QLocale::Italian, QLocale::Italy));
  QTranslator qtItaliano;
  if (qtItaliano.load(QLocale(QLocale::Italian), QStringLiteral("qtbase"), QStringLiteral("_"),
                      QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
    app.installTranslator(&qtItaliano);
  // The component looks for its temporary folder in TEMP, then TMP.
  if (qEnvironmentVariableIsEmpty("TEMP") && qEnvironmentVariableIsEmpty("TMP"))
    qputenv("TEMP", QDir::tempPath().toLocal8Bit());

  QCommandLineParser p;
  p.setApplicationDescription(QStringLiteral("VORN - gestione lavorazioni (host dimostrativo di OCPrestKT)"));
  p.addHelpOption();
  const QString defaultDb = QDir::homePath() + QStringLiteral("/.local/share/vorn-demo/vorn.db");
  QCommandLineOption optDb(QStringLiteral("db"),
                           QStringLiteral("File SQLite del database, o postgresql://... per un database su server "
                                          "(creato con i dati dimostrativi se manca)."),
                           QStringLiteral("PATH|URL"), defaultDb);
  QCommandLineOption optDir(QStringLiteral("dir"),
                            QStringLiteral("Cartella di un database su server: impostazioni (Vorn.def) e registro errori."),
                            QStringLiteral("PATH"), QDir::homePath() + QStringLiteral("/.local/share/vorn-demo/server"));
  QCommandLineOption optDocs(QStringLiteral("docs"), QStringLiteral("Cartella dei documenti dei modelli."), QStringLiteral("PATH"));
  QCommandLineOption optUser(QStringLiteral("user"), QStringLiteral("Numero dell'utente."), QStringLiteral("N"), QStringLiteral("1"));
  QCommandLineOption optTAnag(QStringLiteral("tanag"), QStringLiteral("Tipo anagrafica dei clienti."), QStringLiteral("N"),
                              QStringLiteral("1"));
  QCommandLineOption optOnlyInput(QStringLiteral("only-input"),
                                  QStringLiteral("Avvia il componente in solo inserimento (registro in sola lettura)."));
  QCommandLineOption optShot(QStringLiteral("screenshot"), QStringLiteral("Salva un'immagine della finestra ed esce."),
                             QStringLiteral("FILE"));
  p.addOptions({optDb, optDir, optDocs, optUser, optTAnag, optOnlyInput, optShot});
  p.process(app);

  HostOptions o;
  const QString db = p.value(optDb);
  if (db.startsWith(QLatin1String("postgresql://")) || db.startsWith(QLatin1String("postgres://"))) {
    o.server = db;
    o.cartella = QFileInfo(p.value(optDir)).absoluteFilePath();
    o.docs = p.isSet(optDocs) ? p.value(optDocs) : o.cartella + QStringLiteral("/documenti");
  } else {
    o.dbFile = QFileInfo(db).absoluteFilePath();
    o.docs = p.isSet(optDocs) ? p.value(optDocs) : QFileInfo(o.dbFile).absolutePath() + QStringLiteral("/documenti");
  }
  bool okUser = false;
  bool okTAnag = false;
  o.user = p.value(optUser).toInt(&okUser);
  o.tAnag = p.value(optTAnag).toInt(&okTAnag);
  if (!okUser || !okTAnag) {
    std::fprintf(stderr, "%s: --user e --tanag vogliono un numero intero\n", qPrintable(QApplication::applicationName()));
    return 2;
  }
  o.onlyInput = p.isSet(optOnlyInput);

  // Messages of the component and of the host: Qt dialogs with Italian buttons.
  prestkt::InstallaMessaggiQt();

  HostWindow w(o);
  if (!w.Open()) return 1;
  w.resize(1280, 760);
  w.Avvia();
  if (p.isSet(optShot)) {
    const QString file = p.value(optShot);
    // The component shows its list once the host's layout is done; then the picture is
    // taken, of the window or, in only-input mode, of the station.
    QTimer::singleShot(800, &w, [&w, file] {
      QWidget* mostrato = QApplication::activeModalWidget() ? QApplication::activeModalWidget() : &w;
      const bool ok = mostrato->grab().save(file, "PNG");
      std::fprintf(stderr, ok ? "saved %s\n" : "could not save %s\n", qPrintable(file));
      QApplication::exit(ok ? 0 : 2);
    });
  }
  return app.exec();
}
