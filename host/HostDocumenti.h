#pragma once
// The host's documents: supplier orders (12) and delivery notes to customers
// (5), each a header and lines. A line tied to a disposition is made on the
// component's line screen (AddLineToDoc / AddLineToDDT, EditLineTo...), comes
// back through GetDataFromProjects and becomes a line of the document; saving
// numbers the document, writes it, and hands the links to SaveDataDoc.
#include <QDialog>
#include <vector>

#include "Database.h"
#include "Recordset.h"

class QComboBox;
class QDateEdit;
class QLabel;
class QLineEdit;
class QPushButton;
class QTreeWidget;

namespace prestkt {
class OCPrestKT;
}

namespace vorn {

// A kind of document the demo host keeps: its tables and the parties it goes to.
struct TipoDocumento {
  int tipo;
  QString nome;
  QString tabella;
  QString righe;
  int tAnag;
  bool ddt;
};
const TipoDocumento* TrovaTipoDocumento(int tipo);

class DocumentoDialog : public QDialog {
  Q_OBJECT
 public:
  // nDoc 0: a new document of the kind.
  DocumentoDialog(prestkt::Database& db, prestkt::OCPrestKT* ctl, int tipo, int nDoc, QWidget* parent = nullptr);

  int Tipo() const { return tipo_->tipo; }
  int NDoc() const { return nDoc_; }
  int Righe() const { return static_cast<int>(righe_.size()); }

  void AggiungiRiga();
  void ModificaRiga();
  void EliminaRiga();
  // Numbers a new document, writes header and lines, and the links; false
  // (after telling the user) when it lacks its party or its lines can't be written.
  bool Salva();

  // The component's line (GetDataFromProjects) while this document is open.
  void RigaDalComponente(prestkt::RecordsetPtr& rcsFD, prestkt::RecordsetPtr& rcsFDD, int& vRigaD, int& vMode);

  QComboBox* cbAnag;
  QDateEdit* dtData;
  QLineEdit* tbRiferimento;
  QLabel* lblNumero;
  QTreeWidget* twRighe;
  QPushButton* btnAggiungi;
  QPushButton* btnModifica;
  QPushButton* btnElimina;
  QPushButton* btnSalva;
  QPushButton* btnChiudi;

 private:
  struct Riga {
    int riga = 0;
    int rigaD = 0;
    QString dArt, notaArt;
    double qta = 0, prezzo = 0;
    int causale = 0, iva = 0;
    int cProject = 0, cDisp = 0;
  };
  void Carica();
  void MostraRighe();
  Riga* RigaSelezionata();

  prestkt::Database& db_;
  prestkt::OCPrestKT* ctl_;
  const TipoDocumento* tipo_;
  int nDoc_;
  prestkt::RecordsetPtr d_, fd_, fdd_;
  int causale_ = 0;
  std::vector<Riga> righe_;
};

}  // namespace vorn
