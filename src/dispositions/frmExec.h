#pragma once
// "Scheda esecuzione": the office card of one activity of a disposition. The
// user gives a day, an operator, a service kind and a time in hours and
// minutes; the activity is stored as a span beginning at midnight of that day.
#include <QComboBox>
#include <QDateEdit>
#include <QGroupBox>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVariant>

#include "NumericSpin.h"
#include "Scheda.h"

namespace prestkt {

class frmExec : public Scheda {
  Q_OBJECT
 public:
  explicit frmExec(QWidget* parent = nullptr);

  // Set by the caller before Form_Load.
  int Modo = 2;        // 2 new, 1 existing; turns to 1 at the first save
  int CProject = 0;
  int CDisp = 0;
  int CAttivita = 0;   // the activity shown; a new one gets its code at the first save
  QString RagSoc1;     // shown only
  QString DProject;    // shown only
  QString TipoDisp;    // shown only

  // Something to save: enables the save button and the menu entry.
  bool DaSalvare() const { return daSalvare_; }
  void SetDaSalvare(bool v);

  // Loads the card for Modo and CAttivita; the caller runs it before exec().
  void Form_Load();
  bool Salva();
  bool Controlla();
  void EseguiComando(int n);  // 0 close, 1 save and close

  // The two note fields of the table as one text: the first filled with blanks
  // to its full 255 characters when the second follows.
  static QString MontaAnnot(const QVariant& first, const QVariant& second);

  // Controls, named as the system names them.
  QGroupBox* OCFrame2;
  QLineEdit* TBAnag;
  QLineEdit* TBDProject;
  QGroupBox* OCFrame3;
  QLineEdit* TBTipoDisp;
  NumericSpin* NumericSpin1;
  QGroupBox* OCFrame1;
  QDateEdit* DTPicker1;
  QComboBox* CBOperatore;
  QPushButton* Command1;
  QComboBox* CBPrest;
  QPushButton* Command3;
  NumericSpin* OCOre;
  NumericSpin* OCMinuti;
  QPlainTextEdit* TBAnnot;
  QMenu* mnuF;
  QAction* mnuFS;
  QAction* mnuFE;

 signals:
  void Reload(int& cAttivita);

 protected:
  void closeEvent(QCloseEvent* e) override;
  void reject() override;

 private:
  void BuildUi();
  void CaricaCombos();

  bool daSalvare_ = false;
  bool chiudendo_ = false;
};

}  // namespace prestkt
