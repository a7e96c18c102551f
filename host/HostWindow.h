#pragma once
// The main window of the demo host: it opens the database, places the
// component and answers what the component asks of its host: its registers of
// parties and types, the choices sent back to the open card, the end of the
// program, the data meant for the host's documents, and the prices of the
// dispositions that the host asks of the component.
#include <QMainWindow>
#include <QPointer>
#include <functional>

#include "Database.h"
#include "OCPrestKT.h"

class QLabel;
class QAction;

namespace vorn {
class AnagraficheDialog;
class DocumentoDialog;
class PeriodoDialog;
class PrestazioniDialog;
class PrezziDisposizioniDialog;
class TariffeDialog;
class TipiDisposizioneDialog;
class TipiModelloDialog;
}  // namespace vorn

struct HostOptions {
  QString dbFile;
  // A database on a PostgreSQL server (libpq connection string or URL) instead
  // of the file; cartella stands for its folder (Vorn.def, ErrLogs/).
  QString server;
  QString cartella;
  QString docs;
  int user = 1;
  int tAnag = 1;           // the party type handed to DBConn
  bool onlyInput = false;  // the component's OnlyInput, set before DBConn
};

class HostWindow : public QMainWindow {
  Q_OBJECT
 public:
  explicit HostWindow(const HostOptions& o, QWidget* parent = nullptr);
  ~HostWindow() override;
  bool Open();
  QString NomeDatabase() const;
  // Shows the program: the window with the register, or in only-input mode
  // the station alone, filling the screen; closing the station ends the program.
  void Avvia();
  prestkt::OCPrestKT* Control() const { return ctl_; }

  // The host's registers and the dialog of the period, made on first use and
  // kept for the next; each is a child of the window, found by its objectName too.
  vorn::AnagraficheDialog* Anagrafiche();
  vorn::TipiModelloDialog* TipiModello();
  vorn::TipiDisposizioneDialog* TipiDisposizione();
  vorn::PrestazioniDialog* Prestazioni();
  vorn::TariffeDialog* TariffeGenerali();
  vorn::TariffeDialog* TariffeClienti();
  vorn::PrezziDisposizioniDialog* PrezziDisposizioni();
  // A document of the kind (12 supplier order, 15 supplier delivery, 5
  // delivery note), shown modeless: nDoc 0 a new one. Null when the document open
  // stays open (its user kept unsaved changes).
  vorn::DocumentoDialog* ApriDocumento(int tipo, int nDoc = 0);
  // The list of the documents kept, to open one again.
  void Documenti();
  vorn::DocumentoDialog* Documento() const;  // the document open, if any
  vorn::PeriodoDialog* Periodo();

  // Opens the dialog of the period and state on the component's values.
  void MostraPeriodo();
  // Hands a period and a state to the component, which reloads its register.
  void ApplicaPeriodo(const QDate& dal, const QDate& al, int stato);
  // Opens the prices of the dispositions of the model selected in the component's register.
  void MostraPrezziDisposizioni();
  // The period and state as the status bar shows them.
  QString TestoPeriodo() const;
  // Set once the component has asked the program to end.
  bool UscitaRichiesta() const { return uscitaRichiesta_; }

 protected:
  // An unsaved document is asked about before the program ends.
  void closeEvent(QCloseEvent* e) override;

 private:
  void BuildMenus();
  void ConnectControl();
  void AggiornaPeriodo();
  // Sends a choice to the open card; a failure of the call is told to the user.
  void Rispondi(const QString& fatto, const std::function<void()>& invio);
  void Termina();
  void Ricevuto(const QString& testo);

  HostOptions o_;
  prestkt::DatabasePtr db_;
  prestkt::OCPrestKT* ctl_ = nullptr;
  QLabel* lblPeriodo_;
  QLabel* lblSoloInserimento_;
  QAction* actElimina_ = nullptr;
  QPointer<vorn::AnagraficheDialog> anagrafiche_;
  QPointer<vorn::TipiModelloDialog> tipiModello_;
  QPointer<vorn::TipiDisposizioneDialog> tipiDisposizione_;
  QPointer<vorn::PrestazioniDialog> prestazioni_;
  QPointer<vorn::TariffeDialog> tariffeGenerali_;
  QPointer<vorn::TariffeDialog> tariffeClienti_;
  QPointer<vorn::PrezziDisposizioniDialog> prezzi_;
  QPointer<vorn::DocumentoDialog> documento_;
  QPointer<vorn::PeriodoDialog> periodo_;
  bool uscitaRichiesta_ = false;
};
