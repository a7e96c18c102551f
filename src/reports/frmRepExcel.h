#pragma once
// The flat table of what was spent in a period, for a spreadsheet: an
// operator's activity or a supplier's delivery line per row, written to the
// file the user chooses, which then opens.
#include <QComboBox>
#include <QDateEdit>
#include <QProgressBar>

#include "Procedure.h"
#include "Recordset.h"
#include "Scheda.h"

namespace prestkt {

class frmRepExcel : public Scheda {
  Q_OBJECT
 public:
  explicit frmRepExcel(QWidget* parent = nullptr);

  void Form_Load();
  // Asks for the file, builds the table, writes it and opens it.
  void CaricaDati();
  void EseguiComando(int n);  // 0 close, 1 CaricaDati

  // The table of the period: the activities of the party type's models (of the
  // operator and the party when given) and, with no operator, the delivery
  // lines of the period against supplier orders of the models.
  static RecordsetPtr CreaTabella(const QDate& dal, const QDate& al, int operatore, int tAnag, int cAnag,
                                  const Progress& progress = {});

  QDateEdit* DTDal;
  QDateEdit* DTAl;
  QComboBox* CBCAnag;
  QComboBox* CBOperatore;
  QProgressBar* ProgressBar1;
  QMenu* mnuF;
  QAction* mnuPrn;
  QAction* mnuFE;

  QString NomeFile;  // the file of the last export
  int TAnag = 1;

 private:
  void CaricaOperatori();
  void ImpostaPeriodo();
};

}  // namespace prestkt
