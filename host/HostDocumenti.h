#pragma once
// The host's documents: supplier orders (12), supplier deliveries (15) and
// delivery notes to customers (5), each a header and lines. A line tied to a
// disposition is made on the component's line screen (AddLineToDoc /
// AddLineToDDT, EditLineTo...), comes back through GetDataFromProjects and
// becomes a line of the document; saving numbers the document, writes it, and
// hands the links to SaveDataDoc. A delivery's lines are taken from the
// supplier's order lines instead, and saving counts what arrived on them.
#include <QDialog>
#include <functional>
#include <optional>
#include <QMap>
#include <QSet>
#include <vector>

#include "Database.h"
#include "ModDoc.h"
#include "Recordset.h"

class QComboBox;
class QDateEdit;
class QLabel;
class QLineEdit;
class QPushButton;
class QTreeWidget;

namespace prestkt {
class NumericSpin;
class OCPrestKT;
}  // namespace prestkt

namespace vorn {

// A kind of document the demo host keeps: its tables and the parties it goes to.
struct TipoDocumento {
  int tipo;
  QString nome;
  QString tabella;
  QString righe;
  int tAnag;
  bool ddt;       // lines from a project on a delivery note: the party goes to the line screen
  bool consegna;  // lines from the supplier's order lines, not from a project
};
const TipoDocumento* TrovaTipoDocumento(int tipo);
const std::vector<TipoDocumento>& TipiDocumento();

// The rate of each VAT code, read once: nothing for a code the table lacks.
std::function<std::optional<double>(int)> AliquoteIva(prestkt::Database& db);

// A line of a document as the editor holds it.
struct RigaDocumento {
  int riga = 0;
  int rigaD = 0;  // the component's line, 0 for a line of no project
  QString dArt, notaArt;
  double qta = 0, prezzo = 0, valRic = 0;
  int causale = 0, iva = 0;
  int cProject = 0, cDisp = 0;
  int nDocRif = 0, rigaRif = 0;  // a delivery's order line
  bool salvata = false;          // stands in the table under its number
};

class DocumentoDialog : public QDialog {
  Q_OBJECT
 public:
  // nDoc 0: a new document of the kind.
  DocumentoDialog(prestkt::Database& db, prestkt::OCPrestKT* ctl, int tipo, int nDoc, QWidget* parent = nullptr);

  int Tipo() const { return tipo_->tipo; }
  int NDoc() const { return nDoc_; }
  int Righe() const { return static_cast<int>(righe_.size()); }
  bool Modificato() const { return modificato_; }

  void AggiungiRiga();
  void ModificaRiga();
  void EliminaRiga();
  // Numbers a new document, writes header and lines, and the links; false
  // (after telling the user) when it lacks its party or can't be written.
  bool Salva();

  // The component's line (GetDataFromProjects) while this document is open.
  void RigaDalComponente(prestkt::RecordsetPtr& rcsFD, prestkt::RecordsetPtr& rcsFDD, int& vRigaD, int& vMode);

  void reject() override;

  QComboBox* cbAnag;
  QDateEdit* dtData;
  QLineEdit* tbRiferimento;
  QComboBox* cbIva;
  prestkt::NumericSpin* spSconto;
  QLabel* lblNumero;
  QLabel* lblTotali;
  QTreeWidget* twRighe;
  QPushButton* btnAggiungi;
  QPushButton* btnModifica;
  QPushButton* btnElimina;
  QPushButton* btnSalva;
  QPushButton* btnChiudi;

 protected:
  void closeEvent(QCloseEvent* e) override;

 private:
  void Carica();
  void MostraRighe();
  void MostraTotali();
  prestkt::Totali TotaliDocumento() const;
  void Cambiato();
  // True when the document may close: nothing unsaved, or the user's answer.
  bool PuoChiudere();
  RigaDocumento* RigaSelezionata();
  RigaDocumento& NuovaRiga();
  void ScriviRiga(const RigaDocumento& r, int nDoc);
  void ContaArrivi(const QSet<QPair<int, int>>& righeOrdine);

  prestkt::Database& db_;
  prestkt::OCPrestKT* ctl_;
  const TipoDocumento* tipo_;
  int nDoc_;
  prestkt::RecordsetPtr d_, fd_, fdd_;
  int causale_ = 0;
  std::vector<RigaDocumento> righe_;
  QSet<int> salvate_;                   // line numbers in the table
  QSet<QPair<int, int>> ordiniSalvati_;  // order lines the saved delivery points to
  std::function<std::optional<double>(int)> aliquote_;
  bool modificato_ = false;
};

// A delivery's line: one of the supplier's order lines, what arrived and at what price.
class RigaOrdineDialog : public QDialog {
  Q_OBJECT
 public:
  // riga null: a new line, chosen among the order lines still to deliver.
  RigaOrdineDialog(prestkt::Database& db, int cAnag, int nDoc, const std::vector<RigaDocumento>& righe,
                   const RigaDocumento* riga, QWidget* parent);
  bool Conferma();

  QTreeWidget* twOrdini;
  prestkt::NumericSpin* spQta;
  prestkt::NumericSpin* spPrezzo;
  QComboBox* cbCausale;
  QPushButton* btnOK;
  QPushButton* btnAnnulla;

  RigaDocumento risultato;

 private:
  void Scelta();
  prestkt::Database& db_;
};

// The documents kept, to open one again.
class DocumentiDialog : public QDialog {
  Q_OBJECT
 public:
  DocumentiDialog(prestkt::Database& db, QWidget* parent = nullptr);
  void Carica();
  // The chosen document: its kind and number; 0 when none.
  int TipoScelto() const;
  int NDocScelto() const;

  QComboBox* cbTipo;
  QTreeWidget* twDocumenti;
  QPushButton* btnApri;
  QPushButton* btnChiudi;

 signals:
  void Apri(int tipo, int nDoc);

 private:
  prestkt::Database& db_;
};

}  // namespace vorn
