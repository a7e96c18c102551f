#include "Scheda.h"

#include <QApplication>
#include <QPushButton>
#include <QStyle>

#include "Messages.h"
#include "ModMagnify.h"
#include "ModPrestKT.h"
#include "ProcedureUi.h"

namespace prestkt {

// Toolbar pictures come from the icon theme, with the style's own as the fallback.
QIcon IconaTema(const QString& nome) {
  QStyle* s = QApplication::style();
  static const std::pair<const char*, QStyle::StandardPixmap> riserva[] = {
      {"application-exit", QStyle::SP_DialogCloseButton},   {"document-save", QStyle::SP_DialogSaveButton},
      {"document-print", QStyle::SP_FileDialogDetailedView}, {"list-add", QStyle::SP_FileDialogNewFolder},
      {"document-edit", QStyle::SP_FileDialogContentsView},  {"edit-delete", QStyle::SP_TrashIcon},
      {"dialog-information", QStyle::SP_MessageBoxInformation}, {"view-refresh", QStyle::SP_BrowserReload},
      {"document-open", QStyle::SP_DialogOpenButton},        {"go-next", QStyle::SP_ArrowRight},
      {"accessories-calculator", QStyle::SP_DialogApplyButton}};
  QIcon fallback = s->standardIcon(QStyle::SP_FileIcon);
  for (const auto& [n, p] : riserva)
    if (nome == QLatin1String(n)) fallback = s->standardIcon(p);
  return QIcon::fromTheme(nome, fallback);
}

QWidget* Pagina(QWidget* contenuto) {
  auto* pagina = new QWidget;
  auto* l = new QVBoxLayout(pagina);
  l->setContentsMargins(0, 0, 0, 0);
  l->addWidget(contenuto);
  return pagina;
}

Scheda::Scheda(QWidget* parent, const QString& nome) : QDialog(parent) {
  setObjectName(nome);
  setModal(true);
  auto* v = new QVBoxLayout(this);
  v->setContentsMargins(6, 0, 6, 6);
  menuBar = new QMenuBar(this);
  menuBar->setObjectName(QStringLiteral("menuBar"));
  v->setMenuBar(menuBar);
  Toolbar1 = new QToolBar(this);
  Toolbar1->setObjectName(QStringLiteral("Toolbar1"));
  Toolbar1->setToolButtonStyle(Qt::ToolButtonIconOnly);
  v->addWidget(Toolbar1);
  corpo = new QVBoxLayout;
  v->addLayout(corpo, 1);
  Text1 = new QLineEdit(this);
  Text1->setObjectName(QStringLiteral("Text1"));
  Text1->setFixedSize(1, 1);
  Text1->move(-100, -100);  // out of sight, yet able to take the focus
  imlNormale = new ImageList(this, 16);
  imlNormale->setObjectName(QStringLiteral("ImageList1"));
  imlGrande = new ImageList(this, 32);
  imlGrande->setObjectName(QStringLiteral("ImageList2"));
  auto* cleaner = new clsFormCleaner(this);
  cleaner->SetForm(this);
}

// The dialog hides its fields while it goes; a field that loses the focus then
// commits its value, and no handler of the screen, already gone, may hear it.
Scheda::~Scheda() {
  for (QObject* c : findChildren<QObject*>()) c->blockSignals(true);
}

void Scheda::CreaToolbar(const std::vector<Pulsante>& pulsanti) {
  int ultimo = 0;
  for (const auto& p : pulsanti) ultimo = std::max(ultimo, p.index);
  for (int i = 1; i <= ultimo; ++i) {
    auto it = std::find_if(pulsanti.begin(), pulsanti.end(), [i](const Pulsante& p) { return p.index == i; });
    QAction* a = nullptr;
    if (it == pulsanti.end()) {
      a = Toolbar1->addSeparator();
      imlNormale->Add(QIcon());
      imlGrande->Add(QIcon());
    } else {
      a = Toolbar1->addAction(it->tooltip);
      imlNormale->Add(IconaTema(it->icon), it->tooltip);
      imlGrande->Add(IconaTema(it->icon));
      connect(a, &QAction::triggered, this, [this, i] {
        FocusText1();
        emit ToolbarClick(i);
      });
    }
    a->setObjectName(QStringLiteral("Toolbar1_%1").arg(i));
  }
}

bool Scheda::ChiusuraConsentita(bool daSalvare, const std::function<bool()>& salva) {
  if (!daSalvare) return true;
  if (MsgBox(QStringLiteral("Vuoi salvare prima di uscire?"), vbYesNo | vbQuestion | vbDefaultButton2) != vbYes)
    return true;
  return salva();
}

void Scheda::Prepara(const QString& titolo) {
  setWindowTitle(titolo);
  // Enter belongs to the fields and the scanner, not to the first button of the card.
  for (QPushButton* b : findChildren<QPushButton*>()) {
    b->setAutoDefault(false);
    b->setDefault(false);
  }
  ToolBarLoadImages(Toolbar1, SceltaImmagini(imlNormale, imlGrande));
  if (gMagnify > 16) ImpostaLayoutGrande(this);
  adjustSize();
  CentraForm(this);
}

void Scheda::FocusText1() { Text1->setFocus(); }

QAction* Scheda::Bottone(int index) const {
  return Toolbar1->findChild<QAction*>(QStringLiteral("Toolbar1_%1").arg(index));
}

void Scheda::SetBottoneVisibile(int index, bool visibile) {
  if (QAction* a = Bottone(index)) a->setVisible(visibile);
}

void Scheda::SetBottoneAbilitato(int index, bool abilitato) {
  if (QAction* a = Bottone(index)) a->setEnabled(abilitato);
}

QMenu* Scheda::Menu(const QString& nome, const QString& caption, bool popup) {
  auto* m = new QMenu(caption, this);
  m->setObjectName(nome);
  if (!popup) menuBar->addMenu(m)->setObjectName(nome + QStringLiteral("_bar"));
  return m;
}

QAction* Scheda::Voce(QMenu* menu, const QString& nome, const QString& caption) {
  QAction* a = menu->addAction(caption);
  a->setObjectName(nome);
  return a;
}

QAction* Scheda::Separatore(QMenu* menu, const QString& nome) {
  QAction* a = menu->addSeparator();
  a->setObjectName(nome);
  return a;
}

}  // namespace prestkt
