#pragma once
// The host's invoice from delivery notes: the notes of a customer not yet
// invoiced, checked, become one invoice (TipoDoc 9) whose lines are theirs;
// DocSchede ties each note to it, and the dispositions of their lines are
// marked invoiced (CStato 19) on the invoice's date.
#include <QDialog>

#include "Database.h"

class QComboBox;
class QDateEdit;
class QLabel;
class QPushButton;
class QTreeWidget;

namespace vorn {

class FatturaDialog : public QDialog {
  Q_OBJECT
 public:
  explicit FatturaDialog(prestkt::Database& db, QWidget* parent = nullptr);

  // The customer's notes not yet invoiced, all checked.
  void CaricaNote();
  // Writes the invoice of the checked notes in one transaction; its number,
  // or 0 when nothing was written (the user was told why).
  int CreaFattura();

  QComboBox* cbCliente;
  QDateEdit* dtData;
  QTreeWidget* twNote;
  QLabel* lblTotali;
  QPushButton* btnCrea;
  QPushButton* btnChiudi;

 private:
  void MostraTotali();
  prestkt::Database& db_;
};

}  // namespace vorn
