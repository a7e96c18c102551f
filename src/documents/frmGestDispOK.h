#pragma once
// "Chiusura disposizioni": asks for the date that closes the checked
// dispositions of the invoicing list and hands it back by CloseDisposizioni.
#include <QDateEdit>
#include <QDateTime>
#include <QDialog>
#include <QLabel>
#include <QPushButton>

namespace prestkt {

class frmGestDispOK : public QDialog {
  Q_OBJECT
 public:
  explicit frmGestDispOK(QWidget* parent = nullptr);

  void Form_Load();     // today's date in the picker
  void OKButton_Click();  // asks, then hands the date back and unloads

  QLabel* Label1;
  QDateEdit* DTPicker1;
  QPushButton* OKButton;
  QPushButton* CancelButton;

 signals:
  void CloseDisposizioni(const QDateTime& vData);
};

}  // namespace prestkt
