#pragma once
// "Report operatori": for one month, the time each operator spent, as a grid
// of one row per operator and one column per day, then the days worked ("GL")
// and the mean per day ("M"), closed by the row "Valori medi".
#include <QComboBox>
#include <QDateTime>
#include <QProgressBar>
#include <QRadioButton>
#include <memory>

#include "Recordset.h"
#include "Scheda.h"
#include "Stampa.h"

namespace prestkt {

class Guard;

class frmRepOperatori : public Scheda {
  Q_OBJECT
 public:
  explicit frmRepOperatori(QWidget* parent = nullptr);

  void Form_Load();
  void CBAnno_Click();
  void CBMese_Click();
  void CBOperatore_Click();
  void Option1_Click(int index);
  void Toolbar1_ButtonClick(int index);
  // Read the month's activities and print the grid; they differ only in the read.
  void RepSintetico();
  void RepAnalitico();

  // The statements of the screen: the operators of the combo, the years and
  // the months of a year that have activities, and the read of a print.
  static QString SqlOperatori();
  static QString SqlAnni();
  static QString SqlMesi(const QString& anno);
  static QString SqlSintetico(const QDateTime& dataIni, const QDateTime& dataFine);
  static QString SqlAnalitico(const QDateTime& dataIni, const QDateTime& dataFine);

  // The period, both at midnight: the first and the last day of the chosen month.
  QDateTime DataIni;
  QDateTime DataFine;
  // Set by CBOperatore and read by nothing: neither print filters by operator.
  qint16 COperatore = 0;
  // The last clicked index of Option1: 0 "Sintetico", 1 "Analitico".
  qint16 TipoReport = 0;
  // The activities read by the last print.
  int RigheLette = 0;
  // Where the grid goes; with none, a preview of the page lying down.
  std::shared_ptr<Stampante> PrnVornX1;
  // The working recordsets of the last print: operators (CUtente, Operatore)
  // and their days (CUtente, Data, Minuti).
  RecordsetPtr rcsOperatori;
  RecordsetPtr rcsGiorni;

  QComboBox* CBAnno;
  QComboBox* CBMese;
  QComboBox* CBOperatore;
  QRadioButton* Option1[2];
  QProgressBar* ProgressBar1;

 private:
  void Report(const QString& procedura, const QString& sql, bool contaDalFondo);
  void LeggiAttivita(Guard& g, const QString& sql, bool contaDalFondo);
  void StampaGriglia(Guard& g);
};

}  // namespace prestkt
