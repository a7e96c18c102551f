#pragma once
// "Inserimento prestazioni": the shop-floor station. The operator scans the
// production sheet, the badge and a service kind (a scanner is a keyboard
// that ends each code with Enter), touches the hours and the minutes, and
// saves one activity.
#include <QButtonGroup>
#include <QComboBox>
#include <QDateEdit>
#include <QDialog>
#include <QFrame>
#include <QLabel>
#include <QPushButton>
#include <vector>

#include "ModIcon.h"
#include "ModPrestKT.h"

namespace prestkt {

class frmInputData : public QDialog {
  Q_OBJECT
 public:
  explicit frmInputData(QWidget* parent = nullptr);
  ~frmInputData() override;

  void Form_Load();

  // State of the screen.
  QString Buffer() const { return buffer_; }
  int Operatore = 0;
  int CProject = 0;
  int CDisp = 0;
  int Ore = 0;
  int Minuti = 0;

  // A code as the scanner ends it: sheet, badge or service kind by its shape.
  void Form_KeyPress(const QString& testo);
  void LeggiCodice(const QString& codice);
  void IniVideoOperatore(int numero);
  void IniVideoPrj(const QString& codice);
  void OptOre_Click(int indice);
  void OptMin_Click(int indice);
  void CtrlCanSave();
  void cmdSave_Click();
  void Pulisci();  // cmdDel, and after a save
  void WriteMsg(const QString& testo);
  QString Messaggio() const;

  // Controls, named as the system names them.
  QLabel* Picture1;
  QLabel* Label2;
  QLabel* lblOperatore;
  QLabel* lblRagSoc;
  QLabel* lblModello;
  QLabel* lblTipoPrj;
  QLabel* lblDisp;
  QComboBox* CBPrest;
  QDateEdit* DTPicker1;
  QPushButton* Command1;
  QPushButton* Command2;
  QFrame* Picture6;
  QFrame* Picture7;
  std::vector<QPushButton*> OptOre;
  std::vector<QPushButton*> OptMin;
  QPushButton* cmdSave;
  QPushButton* cmdDel;
  ImageList* ImageList1;

 protected:
  bool eventFilter(QObject* o, QEvent* e) override;
  void closeEvent(QCloseEvent* e) override;
  void reject() override;

 private:
  void BuildUi();
  void IniBottone();
  void IniVideo();
  void Segna(std::vector<QPushButton*>& gruppo, int indice);  // the touched button in red

  QString buffer_;
  DatiModello copie_;  // the sheet's model, read into copies of this screen's own
  RecordsetPtr rcsDisp_, rcsDispDett_, rcsProd_, rcsAct_, rcsLavExt_, rcsForn_;
};

}  // namespace prestkt
