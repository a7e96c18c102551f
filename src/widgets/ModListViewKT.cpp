#include "ModListViewKT.h"

#include <QHeaderView>
#include <QLabel>
#include <QScrollBar>

#include "Guard.h"

namespace prestkt {

void OrdinaPerColonna(ListView* lista, int colonna, bool primaVolta) {
  const int chiave = colonna - 1;
  if ((primaVolta && !lista->Sorted()) || chiave != lista->SortKey()) {
    lista->SetSortKey(chiave);
    lista->SetSortOrder(0);
  } else {
    lista->SetSortOrder(lista->SortOrder() == 0 ? 1 : 0);
  }
  lista->SetSorted(true);
  if (lista->Count() > 0) {
    lista->SetSelected(0);
    lista->EnsureVisible(0);
  }
}

void LarghezzaColonne(ListView* lista) {
  lista->setMinimumWidth(lista->header()->length() + 2 * lista->frameWidth() +
                         lista->verticalScrollBar()->sizeHint().width());
}

namespace {
const QString kModulo = QStringLiteral("ModListViewKT");
}  // namespace

void ListViewReport(ListView* lista, bool spunte, const QList<QIcon>& icone, double scala) {
  Guard g(kModulo, QStringLiteral("ListViewReport"));
  g([&] { lista->ClearItems(); });
  g([&] {
    if (scala != 1) {
      QFont f(QStringLiteral("Verdana"));
      f.setPointSizeF(lista->font().pointSizeF() * scala);
      lista->setFont(f);
    }
  });
  g([&] {
    lista->SetCheckboxes(spunte);
    lista->SetFullRowSelect(true);
    lista->SetGridLines(true);
    lista->SetHideSelection(false);
    lista->SetIcons(icone);
  });
}

void ListViewSetColumns(ListView* lista, const QStringList& titoli, const std::vector<int>& larghezze,
                        const std::vector<int>& allineamenti) {
  lista->ClearColumns();
  for (int i = 0; i < titoli.size(); ++i)
    lista->AddColumn(QStringLiteral("a%1").arg(i, 5, 10, QLatin1Char('0')), titoli.at(i),
                     i < static_cast<int>(larghezze.size()) ? larghezze[i] : 1440,
                     i < static_cast<int>(allineamenti.size()) ? allineamenti[i] : lvwColumnLeft);
}

void ResizeList(ListView* lista, int colonna, int colonnaB, double percA, double percB) {
  Guard g(kModulo, QStringLiteral("ResizeList"));
  g([&] {
    if (!lista || colonna > lista->ColumnCount()) return;
    int somma = 0;
    for (int c = 1; c <= lista->ColumnCount(); ++c)
      if (c != colonna && c != colonnaB) somma += lista->ColumnWidth(c - 1);
    // 360 twips are the room of the scroll bar.
    const int w = lista->WidthTwips() - somma - 360;
    if (colonnaB > 0) {
      const double base = percA + percB;
      lista->SetColumnWidth(colonna - 1, static_cast<int>(w * percA / base));
      lista->SetColumnWidth(colonnaB - 1, static_cast<int>(w * percB / base));
    } else {
      lista->SetColumnWidth(colonna - 1, w);
    }
  });
}

void FindInList(ListView* lista, const QString& chiave) {
  Guard g(kModulo, QStringLiteral("FindInList"));
  g([&] {
    const int row = lista->Row(chiave);
    lista->SetSelected(row);
    // The last line first, then the found one: it stands at the top of the view.
    if (lista->Count() > 0) lista->EnsureVisible(lista->Count() - 1);
    lista->scrollTo(lista->Model()->index(row, 0), QAbstractItemView::PositionAtTop);
    if (lista->isVisible() && lista->isEnabled()) lista->setFocus();
  });
}

void ListViewAddLines(ListView* lista, int count, const ListView::LineText& testo, const ListView::LineKey& chiave,
                      bool spuntate) {
  Guard g(kModulo, QStringLiteral("ListViewAddLines"));
  g([&] {
    lista->SetLines(
        count,
        [testo](int line, int column) {
          const QString t = testo(line, column);
          return column > 0 && t.isEmpty() ? QStringLiteral(" ") : t;
        },
        chiave, spuntate);
  });
}

int ListViewAddLineIcon(ListView* lista, const QStringList& valori, const QString& chiave, int icona, int altezza,
                        bool spuntata) {
  Guard g(kModulo, QStringLiteral("ListViewAddLineIcon"));
  int row = -1;
  g([&] {
    row = lista->AddItem(chiave, valori.value(0), icona);
    for (int i = 1; i < valori.size(); ++i)
      lista->SetSubItem(row, i, valori.at(i).isEmpty() ? QStringLiteral(" ") : valori.at(i));
    if (altezza > 0) lista->SetItemHeight(row, lista->Pixels(altezza));
    if (spuntata) lista->SetChecked(row, true);
  });
  return row;
}

void ResizeStatusBar(ListView* lista, QStatusBar* barra) {
  Guard g(kModulo, QStringLiteral("ResizeStatusBar"));
  g([&] {
    for (QLabel* l : barra->findChildren<QLabel*>(QString(), Qt::FindDirectChildrenOnly))
      if (l->property("prestktPanel").toBool()) {
        barra->removeWidget(l);
        delete l;
      }
    for (int c = 0; c < lista->ColumnCount(); ++c) {
      auto* panel = new QLabel(barra);
      panel->setProperty("prestktPanel", true);
      panel->setObjectName(QStringLiteral("Panel%1").arg(c + 1));
      panel->setFixedWidth(lista->Pixels(lista->ColumnWidth(c)));
      const int a = lista->ColumnAlignment(c);
      panel->setAlignment((a == lvwColumnRight ? Qt::AlignRight : a == lvwColumnCenter ? Qt::AlignHCenter : Qt::AlignLeft) |
                          Qt::AlignVCenter);
      barra->addWidget(panel);
    }
  });
}

int ListViewAddLine(ListView* lista, const QStringList& valori, const QString& chiave, int icona,
                    const QColor& colore, bool grassetto, bool spuntata) {
  Guard g(kModulo, QStringLiteral("ListViewAddLine"));
  int row = -1;
  g([&] {
    row = lista->AddItem(chiave, valori.value(0), icona);
    // One blank keeps a cell from taking the formatting of the line before.
    for (int i = 1; i < valori.size(); ++i)
      lista->SetSubItem(row, i, valori.at(i).isEmpty() ? QStringLiteral(" ") : valori.at(i));
    if (colore.isValid()) lista->SetItemColor(row, colore);
    if (grassetto) lista->SetItemBold(row, true);
    if (spuntata) lista->SetChecked(row, true);
  });
  return row;
}

}  // namespace prestkt
