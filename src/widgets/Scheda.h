#pragma once
// What every screen of the component shares: the toolbar with the system's
// button indexes (separators counted, actions named Toolbar1_<index>), its two
// image lists, the menu bar, the hidden field Text1 that takes the focus before
// a toolbar action, the placing on the screen and the release at closing.
#include <QAction>
#include <QDialog>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QToolBar>
#include <QVBoxLayout>
#include <functional>
#include <vector>

#include "ModIcon.h"

namespace prestkt {

class Scheda : public QDialog {
  Q_OBJECT
 public:
  struct Pulsante {
    int index;
    QString tooltip;
    QString icon;  // a name of the icon theme
  };

  Scheda(QWidget* parent, const QString& nome);
  ~Scheda() override;

  QToolBar* Toolbar1 = nullptr;
  QMenuBar* menuBar = nullptr;
  QLineEdit* Text1 = nullptr;
  ImageList* imlNormale = nullptr;
  ImageList* imlGrande = nullptr;
  QVBoxLayout* corpo = nullptr;  // where the screen puts its controls

  // The toolbar's button of that index (separators count).
  QAction* Bottone(int index) const;
  void SetBottoneVisibile(int index, bool visibile);
  void SetBottoneAbilitato(int index, bool abilitato);

  // A menu of the menu bar, or a popup (not on the bar), named as the system names it.
  QMenu* Menu(const QString& nome, const QString& caption, bool popup = false);
  QAction* Voce(QMenu* menu, const QString& nome, const QString& caption);
  QAction* Separatore(QMenu* menu, const QString& nome);

 signals:
  // A toolbar button was pressed (its index), after the focus moved to Text1.
  void ToolbarClick(int index);

 protected:
  // Builds the toolbar: the buttons by index, the missing indexes up to the last are separators.
  void CreaToolbar(const std::vector<Pulsante>& pulsanti);
  // Loads the toolbar pictures for gMagnify, lays out large when asked, centres the form.
  void Prepara(const QString& titolo);
  // Moves the focus to the hidden field, so that a field in edit finishes its change.
  void FocusText1();
  // The closing question of a card: with something unsaved it asks "Vuoi
  // salvare prima di uscire?"; true when the card may close (nothing to save,
  // No, or Yes and salva succeeded).
  static bool ChiusuraConsentita(bool daSalvare, const std::function<bool()>& salva);
};

QIcon IconaTema(const QString& nome);
// A tab page that holds one control: the control may be hidden while it fills
// without touching the page, which belongs to its tab widget.
QWidget* Pagina(QWidget* contenuto);

}  // namespace prestkt
