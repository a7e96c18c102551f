#pragma once
// The host's own registers: parties, model types and disposition types, and
// the small dialog of the register's period and state. Each register opens
// for consultation or for a choice; when opened for a choice it shows the
// "Scegli" button and hands the chosen code to the function it was given.
// The dialogs show themselves and return at once (the program's event loop
// runs them), so the same instance serves the menu and the component's
// requests, and remembers the type and row the user last looked at.
#include <QDate>
#include <QDialog>
#include <QFormLayout>
#include <functional>
#include <iterator>

#include "Database.h"

class QCheckBox;
class QComboBox;
class QDateEdit;
class QDoubleSpinBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QPushButton;
class QTreeWidget;
class QTreeWidgetItem;

namespace vorn {

// The states of the component's register, as the host offers them: the code
// handed to the component's Status and its name.
struct StatoRegistro {
  int codice;
  const char* nome;
};
inline constexpr StatoRegistro kStati[] = {
    {-1, "Tutti"}, {0, "Aperti"}, {9, "Chiusi"}, {10, "Chiusi dall'amministrazione"}};
QString NomeStato(int codice);

// The kinds of invoicing of a disposition type (ProjectsDispTipo.TipoFatt).
inline constexpr const char* kTipiFatt[] = {"Non fatt.", "Oraria", "Pezzo"};

// ------------------------------------------------------------------ period

class PeriodoDialog : public QDialog {
  Q_OBJECT
 public:
  explicit PeriodoDialog(QWidget* parent = nullptr);
  // Shows the dialog on the given values; on OK, applica receives the new ones.
  void Apri(const QDate& dal, const QDate& al, int stato,
            std::function<void(const QDate& dal, const QDate& al, int stato)> applica);

 private:
  void Conferma();

  QDateEdit* dtDal_;
  QDateEdit* dtAl_;
  QComboBox* cbStato_;
  std::function<void(const QDate&, const QDate&, int)> applica_;
};

// ------------------------------------------------------------------ registers

// What the registers share: the database, the list, "Scegli" and "Chiudi".
class RegistroDialog : public QDialog {
  Q_OBJECT
 public:
  bool InScelta() const { return inScelta_; }

 protected:
  RegistroDialog(prestkt::Database& db, const QString& nome, const QString& titolo, QWidget* parent);
  QTreeWidget* NuovaLista(const QStringList& colonne);
  // Shows the register, with "Scegli" when a choice is asked for.
  void Mostra(bool scelta);
  virtual void Scegli() = 0;
  // Selects the row whose code (first column's data) is codice; false when there is none.
  bool Seleziona(int codice);
  // The code of the selected row; 0 when none is selected.
  int CodiceSelezionato() const;
  // The last step of a choice: the dialog closes, then the answer goes out.
  void Consegna(const std::function<void()>& risposta);

  prestkt::Database& db_;
  QTreeWidget* lista_ = nullptr;
  QLabel* lblScelta_;
  QPushButton* btnScegli_;
  QPushButton* btnChiudi_;

 private:
  bool inScelta_ = false;
};

// The parties (Anagrafica) of one type (AnagTipo).
class AnagraficheDialog : public RegistroDialog {
  Q_OBJECT
 public:
  using Scelta = std::function<void(int tAnag, int cAnag)>;
  AnagraficheDialog(prestkt::Database& db, QWidget* parent = nullptr);
  // tAnag 0 keeps the type shown last; cAnag positions the list. scelta
  // empty: consultation only.
  void Apri(int tAnag, int cAnag, Scelta scelta = {});
  int TipoCorrente() const;
  void Ricarica();

 protected:
  void Scegli() override;

 private:
  void CaricaTipi();
  void AggiornaPulsanti();
  void Nuova();
  void Modifica();
  void EliminaORipristina();
  void Filtra();

  QComboBox* cbTipo_;
  QLineEdit* edCerca_;
  QCheckBox* chkEliminate_;
  QPushButton* btnNuova_;
  QPushButton* btnModifica_;
  QPushButton* btnElimina_;
  int tipoInLista_ = 0;  // the type the list holds
  Scelta scelta_;
};

// The form of one party: a new one when cAnag is 0.
class AnagraficaForm : public QDialog {
  Q_OBJECT
 public:
  AnagraficaForm(prestkt::Database& db, int tAnag, int cAnag, QWidget* parent = nullptr);
  int CAnag() const { return cAnag_; }
  // Checks and writes the party; false (after telling the user) when it can't.
  bool Salva();

 signals:
  void Salvata(int tAnag, int cAnag);

 private:
  void Carica();

  prestkt::Database& db_;
  int tAnag_;
  int cAnag_;
  QLineEdit* edRagSoc1_;
  QLineEdit* edRagSoc2_;
  QLineEdit* edIndirizzo_;
  QLineEdit* edCap_;
  QLineEdit* edCitta_;
  QLineEdit* edProv_;
  QLineEdit* edPIva_;
  QLineEdit* edTelefono_;
  QLineEdit* edEmail_;
  QDoubleSpinBox* spCostoH_;
};

// What the two tables of types share: a list of code, description and short
// code, the fields of one type, "Nuova", "Salva" with its checks, and the choice.
class TipologiaDialog : public RegistroDialog {
  Q_OBJECT
 public:
  using Scelta = std::function<void(int codice)>;
  void Apri(int codice, Scelta scelta = {});
  void Ricarica();
  // Checks and writes the type in the fields; false (after telling the user) when it can't.
  bool Salva();

 signals:
  void Salvata(int codice);

 protected:
  struct Tabella {
    QString nome;         // ProjectsTipo
    QString codice;       // CPrjTipo
    QString descrizione;  // DPrjTipo
    QString altre;        // the further columns read, after Sigla
  };
  TipologiaDialog(prestkt::Database& db, const QString& nome, const QString& titolo, Tabella tabella,
                  const QStringList& colonne, QWidget* parent);
  // Lays out the list, the group with the type's fields (and extras) and the buttons.
  void Componi(QLayout* extra, const QSize& misura);
  void Scegli() override;
  void Nuova();
  void MostraRiga();

  // What each table adds: its columns in the list, its fields, its writes.
  virtual void RigaExtra(QTreeWidgetItem* it, const prestkt::Row& row) = 0;
  virtual void MostraExtra(const QTreeWidgetItem* it) = 0;  // null: a new type
  virtual bool PrimaDiSalvare(int codice) { Q_UNUSED(codice); return true; }
  // Inside the save's transaction: the row itself (INSERT when nuovo) and what hangs on it.
  virtual void Scrivi(int codice, bool nuovo, const QString& descr, const QVariant& sigla) = 0;

  Tabella tabella_;
  QFormLayout* campi_;
  QLineEdit* edCodice_;
  QLineEdit* edDescrizione_;
  QLineEdit* edSigla_;
  QPushButton* btnNuova_;
  QPushButton* btnSalva_;
  int codiceInModifica_ = 0;  // 0: the fields hold a new type
  Scelta scelta_;
};

// The model types (ProjectsTipo).
class TipiModelloDialog : public TipologiaDialog {
  Q_OBJECT
 public:
  TipiModelloDialog(prestkt::Database& db, QWidget* parent = nullptr);

 protected:
  void RigaExtra(QTreeWidgetItem* it, const prestkt::Row& row) override;
  void MostraExtra(const QTreeWidgetItem* it) override;
  bool PrimaDiSalvare(int codice) override;
  void Scrivi(int codice, bool nuovo, const QString& descr, const QVariant& sigla) override;

 private:
  QCheckBox* chkForfSempl_;
};

// The disposition types (ProjectsDispTipo) and the service kinds each allows
// (ProjectsDisp2Prest over TabGen 12).
class TipiDisposizioneDialog : public TipologiaDialog {
  Q_OBJECT
 public:
  TipiDisposizioneDialog(prestkt::Database& db, QWidget* parent = nullptr);
  void CaricaPrestazioni();

 protected:
  void RigaExtra(QTreeWidgetItem* it, const prestkt::Row& row) override;
  void MostraExtra(const QTreeWidgetItem* it) override;
  void Scrivi(int codice, bool nuovo, const QString& descr, const QVariant& sigla) override;

 private:
  QCheckBox* chkForfait_;
  QComboBox* cbTipoFatt_;
  QListWidget* lwPrestazioni_;
};

}  // namespace vorn
