#include "HostWindow.h"

#include <QAbstractSpinBox>
#include <QApplication>
#include <QCloseEvent>
#include <QDate>
#include <QDir>
#include <QFileInfo>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QRegularExpression>
#include <QStatusBar>
#include <QStyle>
#include <QTextEdit>
#include <QTimer>
#include <QUrl>

#include "DemoData.h"
#include "HostDocumenti.h"
#include "HostFattura.h"
#include "HostPrezzi.h"
#include "HostRegistri.h"
#include "Messages.h"
#include "ListView.h"
#include "Schema.h"
#include "Vb.h"
#include "VbError.h"

using namespace prestkt;

namespace {

const QLocale& Italiano() {
  static const QLocale l(QLocale::Italian, QLocale::Italy);
  return l;
}

// The register's commands have shortcuts that a text field knows for itself
// (Ctrl+Canc deletes a word): while a text field has the focus, such a key
// is the field's, and the command doesn't run.
class TastiDeiTesti : public QObject {
 public:
  TastiDeiTesti(QList<QAction*> comandi, QObject* parent) : QObject(parent), comandi_(std::move(comandi)) {}

  bool eventFilter(QObject* o, QEvent* e) override {
    if (e->type() != QEvent::ShortcutOverride || !CampoDiTesto(o)) return false;
    const QKeySequence tasto(static_cast<QKeyEvent*>(e)->keyCombination());
    for (const QAction* a : comandi_)
      if (a->shortcut() == tasto) {
        e->accept();
        return true;
      }
    return false;
  }

 private:
  static bool CampoDiTesto(const QObject* o) {
    return qobject_cast<const QLineEdit*>(o) || qobject_cast<const QPlainTextEdit*>(o) ||
           qobject_cast<const QTextEdit*>(o) || qobject_cast<const QAbstractSpinBox*>(o);
  }
  QList<QAction*> comandi_;
};

QString Giorno(const QDateTime& d) {
  return d.isValid() ? Italiano().toString(d.date(), QStringLiteral("dd/MM/yyyy")) : QStringLiteral("(nessuna)");
}

int Codice(const QVariant& v) { return v.isValid() && !v.isNull() ? v.toInt() : 0; }

}  // namespace

HostWindow::HostWindow(const HostOptions& o, QWidget* parent) : QMainWindow(parent), o_(o) {
  setObjectName(QStringLiteral("HostWindow"));
  setWindowTitle(QStringLiteral("VORN - Gestione lavorazioni"));
  setWindowIcon(style()->standardIcon(QStyle::SP_ComputerIcon));
  lblPeriodo_ = new QLabel(this);
  lblPeriodo_->setObjectName(QStringLiteral("lblPeriodo"));
  lblPeriodo_->setContentsMargins(8, 0, 8, 0);
  lblSoloInserimento_ = new QLabel(QStringLiteral("Solo inserimento"), this);
  lblSoloInserimento_->setObjectName(QStringLiteral("lblSoloInserimento"));
  lblSoloInserimento_->setContentsMargins(8, 0, 8, 0);
  lblSoloInserimento_->setVisible(false);
  statusBar()->addPermanentWidget(lblSoloInserimento_);
  statusBar()->addPermanentWidget(lblPeriodo_);
}

HostWindow::~HostWindow() {
  // The dialogs and the component go before the database they read.
  delete anagrafiche_;
  delete tipiModello_;
  delete tipiDisposizione_;
  delete prestazioni_;
  delete tariffeGenerali_;
  delete tariffeClienti_;
  delete prezzi_;
  delete periodo_;
  delete ctl_;
}

void HostWindow::Avvia() {
  if (!o_.onlyInput) {
    show();
    return;
  }
  QTimer::singleShot(0, this, [this] { ctl_->ShowInput(); });
}

bool HostWindow::Open() {
  const bool server = !o_.server.isEmpty();
  try {
    bool nuovo = false;
    if (server) {
      QDir().mkpath(o_.cartella);
      db_ = Database::OpenPostgreSQL(o_.server, o_.cartella);
      nuovo = !db_->TableExists(QStringLiteral("Projects"));
    } else {
      nuovo = !QFileInfo::exists(o_.dbFile);
      QDir().mkpath(QFileInfo(o_.dbFile).absolutePath());
      db_ = Database::OpenSQLite(o_.dbFile);
    }
    if (nuovo) CreaDatiDemo(*db_, QDate::currentDate());
    else CreaSchema(*db_);
  } catch (const VbError& e) {
    MessageBoxVorn(QStringLiteral("Impossibile aprire il database %1:\n%2").arg(NomeDatabase(), e.Description()),
                   vbCritical, windowTitle());
    return false;
  }
  QDir().mkpath(o_.docs);

  // The order of start the component asks for: create, Initialize, the period, DBConn.
  ctl_ = new OCPrestKT(this);
  ConnectControl();
  ctl_->Initialize();
  const QDate oggi = QDate::currentDate();
  ctl_->SetDtIni(QDateTime(QDate(oggi.year() - 2, 1, 1), QTime(0, 0)));
  ctl_->SetDTEnd(QDateTime(QDate(oggi.year(), 12, 31), QTime(0, 0)));
  ctl_->SetStatus(-1);
  // With --only-input the program is the shop-floor station (see Avvia).
  if (o_.onlyInput) ctl_->SetOnlyInput(true);
  ctl_->DBConn(db_, o_.user, windowIcon(), o_.docs, o_.tAnag);
  setCentralWidget(ctl_);
  BuildMenus();
  lblSoloInserimento_->setVisible(o_.onlyInput);
  AggiornaPeriodo();
  statusBar()->showMessage(QStringLiteral("Database: %1").arg(NomeDatabase()), 10000);
  return true;
}

// The database as the user names it: the file, or the server without its password.
QString HostWindow::NomeDatabase() const {
  if (o_.server.isEmpty()) return o_.dbFile;
  const QUrl url(o_.server);
  if (url.isValid() && !url.scheme().isEmpty()) return url.toDisplayString(QUrl::RemovePassword);
  QString testo = o_.server;
  return testo.replace(QRegularExpression(QStringLiteral("password\\s*=\\s*\\S+")), QStringLiteral("password=***"));
}

void HostWindow::ConnectControl() {
  // The component waits for each answer before it goes on: direct connections.
  constexpr auto diretta = Qt::DirectConnection;
  connect(ctl_, &OCPrestKT::PropertyChanged, this, [this](const QString& nome) {
    // DTEnd is announced as "DtEnd".
    if (nome == QLatin1String("DtIni") || nome == QLatin1String("DtEnd") || nome == QLatin1String("Status"))
      AggiornaPeriodo();
  }, diretta);

  connect(ctl_, &OCPrestKT::CallShowAnag, this, [this] {
    Anagrafiche()->Apri(ctl_->TAnag(), ctl_->CAnag());
  }, diretta);

  connect(ctl_, &OCPrestKT::CallShowAnagMod, this, [this] {
    Anagrafiche()->Apri(ctl_->TAnag(), 0, [this](int tAnag, int cAnag) {
      Rispondi(QStringLiteral("Anagrafica inviata alla scheda del modello."), [&] {
        QVariant t(tAnag);
        QVariant c(cAnag);
        ctl_->ChAnagInModelli(t, c);
      });
    });
  }, diretta);

  connect(ctl_, &OCPrestKT::CallShowAnagDoc, this, [this](QString& tipo) {
    const QString tipoDoc = tipo;
    Anagrafiche()->Apri(0, 0, [this, tipoDoc](int tAnag, int cAnag) {
      Rispondi(QStringLiteral("Anagrafica inviata alla scheda del documento."), [&] {
        QVariant t(tAnag);
        QVariant c(cAnag);
        QString d = tipoDoc;
        ctl_->ChAnagInDocs(t, c, d);
      });
    });
  }, diretta);

  connect(ctl_, &OCPrestKT::CallShowTipol, this, [this](QVariant& vCTipoPrj) {
    TipiModello()->Apri(Codice(vCTipoPrj), [this](int cPrjTipo) {
      Rispondi(QStringLiteral("Tipologia inviata alla scheda del modello."), [&] {
        QVariant v(cPrjTipo);
        ctl_->ChTipoPrjModelli(v);
      });
    });
  }, diretta);

  connect(ctl_, &OCPrestKT::CallShowTipolDisp, this, [this](QVariant& vCTipoDispPrj) {
    TipiDisposizione()->Apri(Codice(vCTipoDispPrj), [this](int cPrjDispTipo) {
      Rispondi(QStringLiteral("Tipologia inviata alla scheda della disposizione."), [&] {
        QVariant v(cPrjDispTipo);
        ctl_->ChTipoPrjDisp(v);
      });
    });
  }, diretta);

  connect(ctl_, &OCPrestKT::ClosePrg, this, &HostWindow::Termina, diretta);

  // A line made on the component's line screen belongs to the document open;
  // without one, what the component sends is shown in the status bar.
  connect(ctl_, &OCPrestKT::GetDataFromProjects, this,
          [this](RecordsetPtr& rcsFD, RecordsetPtr& rcsFDD, int& vRigaD, int& vMode) {
            if (documento_) {
              documento_->RigaDalComponente(rcsFD, rcsFDD, vRigaD, vMode);
              return;
            }
            auto righe = [](const RecordsetPtr& rs) {
              try {
                return rs && rs->IsOpen() ? rs->RecordCount() : 0;
              } catch (const VbError&) {
                return 0;
              }
            };
            Ricevuto(QStringLiteral("Dati per il documento ricevuti: %1 righe, %2 righe di dettaglio (riga %3, modo %4).")
                         .arg(righe(rcsFD))
                         .arg(righe(rcsFDD))
                         .arg(vRigaD)
                         .arg(vMode));
          }, diretta);
  connect(ctl_, &OCPrestKT::GetDataForFattDiff, this, [this](double& vImporto) {
    // The price of a calculator opened from the host's price dialog goes back to that dialog.
    if (prezzi_ && prezzi_->InAttesa()) {
      prezzi_->Ricevi(vImporto);
      Ricevuto(QStringLiteral("Prezzo confermato per la disposizione %1: %2")
                   .arg(prezzi_->Riferimento(), Format(vImporto, QStringLiteral("#,##0.00"))));
      return;
    }
    Ricevuto(QStringLiteral("Importo per la fattura differita ricevuto: %1").arg(Italiano().toString(vImporto, 'f', 2)));
  }, diretta);
  connect(ctl_, &OCPrestKT::GetPZVend, this, [this](double& pzVend) {
    Ricevuto(QStringLiteral("Prezzo ricevuto: %1").arg(Italiano().toString(pzVend, 'f', 2)));
  }, diretta);
}

void HostWindow::BuildMenus() {
  QMenu* file = menuBar()->addMenu(QStringLiteral("&File"));
  file->setObjectName(QStringLiteral("mnuFile"));
  QAction* esci = file->addAction(QStringLiteral("&Esci"), this, &QWidget::close);
  esci->setObjectName(QStringLiteral("actEsci"));
  esci->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Q));

  QMenu* vista = menuBar()->addMenu(QStringLiteral("&Visualizza"));
  vista->setObjectName(QStringLiteral("mnuVisualizza"));
  QAction* periodo = vista->addAction(QStringLiteral("&Periodo e stato..."), this, &HostWindow::MostraPeriodo);
  periodo->setObjectName(QStringLiteral("actPeriodo"));
  periodo->setShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_P));

  QMenu* modelli = menuBar()->addMenu(QStringLiteral("&Modelli"));
  modelli->setObjectName(QStringLiteral("mnuModelli"));
  QAction* nuovo = modelli->addAction(QStringLiteral("&Nuovo modello..."), ctl_, &OCPrestKT::Aggiungi);
  nuovo->setObjectName(QStringLiteral("actAggiungi"));
  nuovo->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_N));
  nuovo->setEnabled(!o_.onlyInput);
  QAction* apri = modelli->addAction(QStringLiteral("&Apri modello selezionato..."), ctl_, &OCPrestKT::Modifica);
  apri->setObjectName(QStringLiteral("actModifica"));
  apri->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_O));
  apri->setEnabled(!o_.onlyInput);
  modelli->addSeparator();
  actElimina_ = modelli->addAction(QStringLiteral("&Elimina modello"), ctl_, &OCPrestKT::Elimina);
  actElimina_->setObjectName(QStringLiteral("actElimina"));
  actElimina_->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Delete));
  actElimina_->setStatusTip(QStringLiteral("Elimina il modello selezionato con le sue disposizioni e attività"));
  // In only-input mode the component deletes nothing; the entry says so by being off.
  actElimina_->setEnabled(!o_.onlyInput);
  modelli->addSeparator();
  QAction* prezzi = modelli->addAction(QStringLiteral("&Prezzo delle disposizioni..."), this,
                                       &HostWindow::MostraPrezziDisposizioni);
  prezzi->setObjectName(QStringLiteral("actPrezziDisposizioni"));
  prezzi->setStatusTip(QStringLiteral("Prezzo proposto e calcolo della tariffa delle disposizioni del modello selezionato"));
  prezzi->setEnabled(!o_.onlyInput);
  qApp->installEventFilter(new TastiDeiTesti({nuovo, apri, actElimina_}, this));

  QMenu* archivi = menuBar()->addMenu(QStringLiteral("&Archivi"));
  archivi->setObjectName(QStringLiteral("mnuArchivi"));
  QAction* anag = archivi->addAction(QStringLiteral("&Anagrafiche..."), this, [this] { Anagrafiche()->Apri(0, 0); });
  anag->setObjectName(QStringLiteral("actAnagrafiche"));
  anag->setShortcut(QKeySequence(Qt::Key_F2));
  QAction* tipi = archivi->addAction(QStringLiteral("Tipologie &modelli..."), this, [this] { TipiModello()->Apri(0); });
  tipi->setObjectName(QStringLiteral("actTipiModello"));
  tipi->setShortcut(QKeySequence(Qt::Key_F3));
  QAction* disp = archivi->addAction(QStringLiteral("Tipologie &disposizioni..."), this,
                                     [this] { TipiDisposizione()->Apri(0); });
  disp->setObjectName(QStringLiteral("actTipiDisposizione"));
  disp->setShortcut(QKeySequence(Qt::Key_F4));
  QAction* prest = archivi->addAction(QStringLiteral("&Prestazioni..."), this, [this] { Prestazioni()->Apri(0); });
  prest->setObjectName(QStringLiteral("actPrestazioni"));
  archivi->addSeparator();
  QAction* tariffe = archivi->addAction(QStringLiteral("Tariffe &generali..."), this,
                                        [this] { TariffeGenerali()->Apri(); });
  tariffe->setObjectName(QStringLiteral("actTariffe"));
  QAction* tariffeClienti = archivi->addAction(QStringLiteral("Tariffe per &cliente..."), this,
                                               [this] { TariffeClienti()->Apri(); });
  tariffeClienti->setObjectName(QStringLiteral("actTariffeClienti"));

  QMenu* documenti = menuBar()->addMenu(QStringLiteral("&Documenti"));
  documenti->setObjectName(QStringLiteral("mnuDocumenti"));
  QAction* ordine = documenti->addAction(QStringLiteral("Nuovo &ordine a fornitore..."), this,
                                         [this] { ApriDocumento(12); });
  ordine->setObjectName(QStringLiteral("actNuovoOrdine"));
  QAction* consegna = documenti->addAction(QStringLiteral("Nuova &consegna da fornitore..."), this,
                                           [this] { ApriDocumento(15); });
  consegna->setObjectName(QStringLiteral("actNuovaConsegna"));
  QAction* ddt = documenti->addAction(QStringLiteral("Nuovo &DDT a cliente..."), this, [this] { ApriDocumento(5); });
  ddt->setObjectName(QStringLiteral("actNuovoDDT"));
  documenti->addSeparator();
  QAction* apriDoc = documenti->addAction(QStringLiteral("&Apri documento..."), this, &HostWindow::Documenti);
  apriDoc->setObjectName(QStringLiteral("actApriDocumento"));
  apriDoc->setShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_O));
  for (QAction* a : {ordine, consegna, ddt, apriDoc}) a->setEnabled(!o_.onlyInput);

  QMenu* fatturazione = menuBar()->addMenu(QStringLiteral("&Fatturazione"));
  fatturazione->setObjectName(QStringLiteral("mnuFatturazione"));
  QAction* gestDisp = fatturazione->addAction(QStringLiteral("&Gestione disposizioni per fatturazione..."), ctl_,
                                              &OCPrestKT::ShowGestDisp);
  gestDisp->setObjectName(QStringLiteral("actGestioneDisposizioni"));
  QAction* controlloDDT = fatturazione->addAction(QStringLiteral("&Controllo DDT per fatturazione..."), ctl_,
                                                  &OCPrestKT::ShowGestDDTPerFatt);
  controlloDDT->setObjectName(QStringLiteral("actControlloDDT"));
  QAction* fattura = fatturazione->addAction(QStringLiteral("&Fattura da DDT..."), this, [this] {
    vorn::FatturaDialog f(*db_, this);
    f.exec();
  });
  fattura->setObjectName(QStringLiteral("actFatturaDaDDT"));
  for (QAction* a : {gestDisp, controlloDDT, fattura}) a->setEnabled(!o_.onlyInput);

  QMenu* report = menuBar()->addMenu(QStringLiteral("&Report"));
  report->setObjectName(QStringLiteral("mnuReport"));
  QAction* repOperatori = report->addAction(QStringLiteral("Report &operatori..."), ctl_,
                                            &OCPrestKT::ShowReportOperatori);
  repOperatori->setObjectName(QStringLiteral("actReportOperatori"));
  QAction* repExcel = report->addAction(QStringLiteral("Report su &Excel..."), ctl_, &OCPrestKT::ShowReportExcel);
  repExcel->setObjectName(QStringLiteral("actReportExcel"));
  report->addSeparator();
  QAction* repPrest = report->addAction(QStringLiteral("&Prestazioni dei modelli spuntati..."), ctl_,
                                        &OCPrestKT::RepPrestazioni);
  repPrest->setObjectName(QStringLiteral("actRepPrestazioni"));
  QAction* expPrest = report->addAction(QStringLiteral("&Esporta prestazioni dei modelli spuntati..."), ctl_,
                                        &OCPrestKT::ExpPrestazioni);
  expPrest->setObjectName(QStringLiteral("actExpPrestazioni"));
  for (QAction* a : {repOperatori, repExcel, repPrest, expPrest}) a->setEnabled(!o_.onlyInput);

  QMenu* strumenti = menuBar()->addMenu(QStringLiteral("&Strumenti"));
  strumenti->setObjectName(QStringLiteral("mnuStrumenti"));
  QAction* impostazioni = strumenti->addAction(QStringLiteral("&Impostazioni prezzi..."), ctl_, &OCPrestKT::ShowSettings);
  impostazioni->setObjectName(QStringLiteral("actImpostazioniPrezzi"));
  // The station in a window, for the office; a shop-floor workstation runs it with --only-input.
  QAction* stazione = strumenti->addAction(QStringLiteral("Inserimento &prestazioni..."), ctl_, &OCPrestKT::ShowInput);
  stazione->setObjectName(QStringLiteral("actInserimentoPrestazioni"));
}

vorn::DocumentoDialog* HostWindow::ApriDocumento(int tipo, int nDoc) {
  // One document at a time: the component's lines go to it.
  if (documento_ && !documento_->close()) return nullptr;
  documento_ = new vorn::DocumentoDialog(*db_, ctl_, tipo, nDoc, this);
  documento_->setAttribute(Qt::WA_DeleteOnClose);
  documento_->show();
  return documento_;
}

void HostWindow::Documenti() {
  vorn::DocumentiDialog elenco(*db_, this);
  connect(&elenco, &vorn::DocumentiDialog::Apri, this, [this](int tipo, int nDoc) { ApriDocumento(tipo, nDoc); });
  elenco.exec();
}

void HostWindow::closeEvent(QCloseEvent* e) {
  if (documento_ && !documento_->close()) {
    e->ignore();
    return;
  }
  QMainWindow::closeEvent(e);
}

vorn::DocumentoDialog* HostWindow::Documento() const { return documento_; }

vorn::AnagraficheDialog* HostWindow::Anagrafiche() {
  if (!anagrafiche_) anagrafiche_ = new vorn::AnagraficheDialog(*db_, this);
  return anagrafiche_;
}

vorn::TipiModelloDialog* HostWindow::TipiModello() {
  if (!tipiModello_) tipiModello_ = new vorn::TipiModelloDialog(*db_, this);
  return tipiModello_;
}

vorn::TipiDisposizioneDialog* HostWindow::TipiDisposizione() {
  if (!tipiDisposizione_) tipiDisposizione_ = new vorn::TipiDisposizioneDialog(*db_, this);
  return tipiDisposizione_;
}

vorn::PrestazioniDialog* HostWindow::Prestazioni() {
  if (!prestazioni_) {
    prestazioni_ = new vorn::PrestazioniDialog(*db_, this);
    // The disposition types offer the service kinds as they are now.
    auto aggiorna = [this] {
      if (tipiDisposizione_) tipiDisposizione_->CaricaPrestazioni();
    };
    connect(prestazioni_, &vorn::PrestazioniDialog::Salvata, this, aggiorna);
    connect(prestazioni_, &vorn::PrestazioniDialog::Eliminata, this, aggiorna);
  }
  return prestazioni_;
}

vorn::TariffeDialog* HostWindow::TariffeGenerali() {
  if (!tariffeGenerali_) tariffeGenerali_ = new vorn::TariffeDialog(*db_, 0, this);
  return tariffeGenerali_;
}

vorn::TariffeDialog* HostWindow::TariffeClienti() {
  if (!tariffeClienti_) tariffeClienti_ = new vorn::TariffeDialog(*db_, o_.tAnag, this);
  return tariffeClienti_;
}

vorn::PrezziDisposizioniDialog* HostWindow::PrezziDisposizioni() {
  if (!prezzi_) prezzi_ = new vorn::PrezziDisposizioniDialog(*db_, ctl_, this);
  return prezzi_;
}

void HostWindow::MostraPrezziDisposizioni() {
  if (o_.onlyInput) return;
  const ListView* registro = ctl_->findChild<ListView*>(QStringLiteral("ListView1"));
  const int riga = registro ? registro->SelectedIndex() : -1;
  if (riga < 0) {
    MessageBoxVorn(QStringLiteral("Seleziona un modello nell'elenco."), vbExclamation);
    return;
  }
  // The register's keys are "K" and the model's code in nine digits.
  PrezziDisposizioni()->Apri(registro->Key(riga).mid(1).toInt());
}

vorn::PeriodoDialog* HostWindow::Periodo() {
  if (!periodo_) periodo_ = new vorn::PeriodoDialog(this);
  return periodo_;
}

void HostWindow::MostraPeriodo() {
  Periodo()->Apri(ctl_->DtIni().date(), ctl_->DTEnd().date(), ctl_->Status(),
                  [this](const QDate& dal, const QDate& al, int stato) { ApplicaPeriodo(dal, al, stato); });
}

void HostWindow::ApplicaPeriodo(const QDate& dal, const QDate& al, int stato) {
  ctl_->SetDtIni(QDateTime(dal, QTime(0, 0)));
  ctl_->SetDTEnd(QDateTime(al, QTime(0, 0)));
  ctl_->SetStatus(stato);
}

QString HostWindow::TestoPeriodo() const {
  if (!ctl_) return {};
  return QStringLiteral("Periodo: dal %1 al %2 · Stato: %3")
      .arg(Giorno(ctl_->DtIni()), Giorno(ctl_->DTEnd()), vorn::NomeStato(ctl_->Status()));
}

void HostWindow::AggiornaPeriodo() { lblPeriodo_->setText(TestoPeriodo()); }

void HostWindow::Rispondi(const QString& fatto, const std::function<void()>& invio) {
  try {
    invio();
    statusBar()->showMessage(fatto, 5000);
  } catch (const VbError& e) {
    if (e.Number() == err::ObjectNotSet && !gOcxEventCard)
      MessageBoxVorn(QStringLiteral("Nessuna scheda aperta a cui inviare la scelta."), vbExclamation);
    else
      MessageBoxVorn(QStringLiteral("La scheda non ha potuto ricevere la scelta:\n%1 (%2)")
                         .arg(e.Description())
                         .arg(e.Number()),
                     vbExclamation);
  }
}

void HostWindow::Termina() {
  uscitaRichiesta_ = true;
  for (QDialog* d : std::initializer_list<QDialog*>{anagrafiche_, tipiModello_, tipiDisposizione_, prestazioni_,
                                                    tariffeGenerali_, tariffeClienti_, prezzi_, periodo_})
    if (d) d->reject();
  close();
  QCoreApplication::exit(0);
}

void HostWindow::Ricevuto(const QString& testo) { statusBar()->showMessage(testo); }
