#pragma once
// The host's own registers: parties, model types, disposition types, service
// kinds and tariffs, and the small dialog of the register's period and state.
// Each register opens
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

namespace prestkt {
class NumericSpin;
}

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
  // A register that is never asked for a choice has nothing to hand back.
  virtual void Scegli() {}
  // Selects the first visible row that quale accepts; false when there is none.
  bool Seleziona(const std::function<bool(const QTreeWidgetItem*)>& quale);
  // Selects the row whose code (first column's data) is codice; false when there is none.
  bool Seleziona(int codice);
  // The code of the selected row; 0 when none is selected.
  int CodiceSelezionato() const;
  // The last step of a choice: the dialog closes, then the answer goes out.
  void Consegna(const std::function<void()>& risposta);
  // Lays the register out: the choice's label, the list, the group of the
  // row's fields, then the row's buttons on the left and "Scegli" and
  // "Chiudi" on the right.
  void Impagina(QWidget* gruppo, const QList<QPushButton*>& pulsanti);

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

// What the tables of types and kinds share: a list of code, description and
// short code, the fields of one row, "Nuova", "Salva" with its checks,
// "Elimina" where the table allows it, and the choice.
class TipologiaDialog : public RegistroDialog {
  Q_OBJECT
 public:
  using Scelta = std::function<void(int codice)>;
  void Apri(int codice, Scelta scelta = {});
  void Ricarica();
  // Checks and writes the row in the fields; false (after telling the user) when it can't.
  bool Salva();
  // Deletes the selected row after asking; false when nothing was deleted.
  bool Elimina();

 signals:
  void Salvata(int codice);
  void Eliminata(int codice);

 protected:
  struct Tabella {
    QString nome{};         // ProjectsTipo
    QString codice{};       // CPrjTipo
    QString descrizione{};  // DPrjTipo
    QString altre{};        // the further columns read, after Sigla; none when empty
    QString filtro{};       // the rows of the table the register holds ("CTipTabGen=12"); all when empty
    QString voce = QStringLiteral("tipologia");   // how the messages name a row (a feminine noun)
    QString voci = QStringLiteral("tipologie");   // and the rows
    bool codiceLibero = false;  // a new row takes the code typed (the next free one proposed)
    bool eliminabile = false;   // the register offers "Elimina"
  };
  TipologiaDialog(prestkt::Database& db, const QString& nome, const QString& titolo, Tabella tabella,
                  const QStringList& colonne, QWidget* parent);
  // Lays out the list, the group with the type's fields (and extras) and the buttons.
  void Componi(QLayout* extra, const QSize& misura);
  void Scegli() override;
  void Nuova();
  void MostraRiga();
  // " AND <filtro>", or nothing when the register holds the whole table.
  QString EFiltro() const;
  // The next code of the register: one more than the highest.
  int ProssimoCodice();

  // What each table adds: its columns in the list, its fields, its writes.
  virtual void RigaExtra(QTreeWidgetItem* it, const prestkt::Row& row) { Q_UNUSED(it); Q_UNUSED(row); }
  virtual void MostraExtra(const QTreeWidgetItem* it) { Q_UNUSED(it); }  // null: a new row
  virtual bool PrimaDiSalvare(int codice) { Q_UNUSED(codice); return true; }
  // Inside the save's transaction: the row itself (INSERT when nuovo) and what hangs on it.
  virtual void Scrivi(int codice, bool nuovo, const QString& descr, const QVariant& sigla) = 0;
  // Why the row can't be deleted, told to the user; empty when it can.
  virtual QString Impedimento(int codice, const QString& descr) {
    Q_UNUSED(codice);
    Q_UNUSED(descr);
    return {};
  }
  // The question before the delete.
  virtual QString DomandaElimina(int codice, const QString& descr);
  // Inside the delete's transaction: the row and what hangs on it.
  virtual void Cancella(int codice);

  Tabella tabella_;
  QFormLayout* campi_;
  QLineEdit* edCodice_;
  QLineEdit* edDescrizione_;
  QLineEdit* edSigla_;
  QPushButton* btnNuova_;
  QPushButton* btnSalva_;
  QPushButton* btnElimina_ = nullptr;
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
  // Reads the service kinds again; the ones checked stay checked.
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

// The service kinds (TabGen, group 12): the disposition types list them
// among their allowed kinds, the activities and dispositions name them.
class PrestazioniDialog : public TipologiaDialog {
  Q_OBJECT
 public:
  PrestazioniDialog(prestkt::Database& db, QWidget* parent = nullptr);

 protected:
  void Scrivi(int codice, bool nuovo, const QString& descr, const QVariant& sigla) override;
  QString Impedimento(int codice, const QString& descr) override;
  QString DomandaElimina(int codice, const QString& descr) override;
  void Cancella(int codice) override;
};

// ------------------------------------------------------------------ tariffs

// The tariffs of a kind of work: per model type and disposition type, the
// general ones (ProjectsDispTar) or those of one customer (ProjectsDispTarDett).
// A list of the tariffs, the fields of one, "Nuova", "Salva", "Elimina".
// Saving a pair that exists changes it, a new pair adds a tariff.
class TariffeDialog : public RegistroDialog {
  Q_OBJECT
 public:
  // tAnagClienti 0: the general tariffs; otherwise those of the customers of that party type.
  TariffeDialog(prestkt::Database& db, int tAnagClienti, QWidget* parent = nullptr);
  bool PerCliente() const { return tAnag_ != 0; }
  // Reads the types, the customers and the tariffs again and shows the register.
  void Apri();
  void Ricarica();
  // Checks and writes the tariff in the fields; false (after telling the user) when it can't.
  bool Salva();
  // Deletes the selected tariff after asking; false when nothing was deleted.
  bool Elimina();

 private:
  // A tariff's key; cliente 0 for a general one.
  struct Chiave {
    int tipo = 0;
    int disp = 0;
    int cliente = 0;
    bool operator==(const Chiave&) const = default;
  };
  void CaricaScelte();
  void Nuova();
  void MostraRiga();
  void AggiornaPulsanti();
  bool SelezionaTariffa(const Chiave& k);
  Chiave ChiaveDi(const QTreeWidgetItem* it) const;
  Chiave ChiaveNeiCampi() const;
  bool Esiste(const Chiave& k);
  // «Stampo» - «Lavorazione oraria», with the customer for a customer's tariff.
  QString Nome(const Chiave& k) const;
  QString NomeTabella() const;
  // " WHERE <the key>" with bound values.
  prestkt::Sql Dove(const Chiave& k) const;

  int tAnag_;
  QComboBox* cbCliente_ = nullptr;
  QComboBox* cbTipoModello_;
  QComboBox* cbTipoDisposizione_;
  prestkt::NumericSpin* spTarMin_;
  prestkt::NumericSpin* spTarMax_;
  prestkt::NumericSpin* spTarH_;
  QPushButton* btnNuova_;
  QPushButton* btnSalva_;
  QPushButton* btnElimina_;
};

}  // namespace vorn
