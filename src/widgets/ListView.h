#pragma once
// The report list of every screen: columns with key, width and alignment;
// items with key, text, sub-items, check box, icon, colour and bold. Items are
// held in a plain vector behind a model, so that a list of a hundred thousand
// lines fills and sorts quickly.
#include <QAbstractTableModel>
#include <QColor>
#include <QHash>
#include <QIcon>
#include <QTreeView>
#include <functional>
#include <memory>
#include <vector>

namespace prestkt {

enum ListColumnAlignment { lvwColumnLeft = 0, lvwColumnRight = 1, lvwColumnCenter = 2 };

class ListView;

class ListViewModel : public QAbstractTableModel {
  Q_OBJECT
 public:
  struct Column {
    QString key;
    QString text;
    int widthTwips = 1440;
    int alignment = lvwColumnLeft;
  };
  // A line made when shown holds no texts of its own until one is set, so
  // that a list of a hundred thousand lines costs a few bytes a line.
  struct Item {
    struct Texts {
      QString key;
      QStringList texts;  // index 0 is the item's own text
    };
    std::unique_ptr<Texts> own;
    int icon = -1;
    int height = 0;  // pixels; 0 for the list's own
    int line = -1;   // for lines made when shown: the line of the source
    QRgb color = 0;
    bool hasColor = false;
    bool checked = false;
    bool bold = false;

    Texts& Own() {
      if (!own) own = std::make_unique<Texts>();
      return *own;
    }
  };

  explicit ListViewModel(ListView* view);
  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  bool setData(const QModelIndex& index, const QVariant& value, int role) override;
  QVariant headerData(int section, Qt::Orientation o, int role) const override;
  Qt::ItemFlags flags(const QModelIndex& index) const override;

 private:
  friend class ListView;
  ListView* view_;
  std::vector<Column> columns_;
  std::vector<Item> items_;
};

class ListView : public QTreeView {
  Q_OBJECT
 public:
  explicit ListView(QWidget* parent = nullptr);

  // Columns.
  void ClearColumns();
  void AddColumn(const QString& key, const QString& text, int widthTwips, int alignment);
  int ColumnCount() const;
  QString ColumnText(int column) const;  // 0-based
  int ColumnWidth(int column) const;      // twips
  void SetColumnWidth(int column, int twips);  // a negative width raises 380
  int ColumnAlignment(int column) const;
  int WidthTwips() const;  // the list's width in the unit of its columns
  int Pixels(int twips) const;
  double Scala() const;

  // Items. Rows are 0-based; an unknown key or row raises 35601 ("Element not found").
  void ClearItems();
  int Count() const;
  int AddItem(const QString& key, const QString& text, int icon = -1);
  // count lines whose texts and keys are made when asked for: a list of a
  // hundred thousand lines costs only what is shown.
  using LineText = std::function<QString(int line, int column)>;
  using LineKey = std::function<QString(int line)>;
  void SetLines(int count, LineText text, LineKey key, bool checked = false);
  void SetSubItem(int row, int column, const QString& text);  // column 1.. for sub-items
  QString Text(int row, int column = 0) const;
  QString Key(int row) const;
  int IndexOfKey(const QString& key) const;  // -1 when absent
  int Row(const QString& key) const;         // raises for an unknown key
  bool Checked(int row) const;
  void SetChecked(int row, bool checked);
  int Icon(int row) const;
  void SetIcon(int row, int icon);
  void SetItemColor(int row, const QColor& color);
  QColor ItemColor(int row) const;
  void SetItemBold(int row, bool bold);
  void SetItemHeight(int row, int pixels);
  int ItemHeight(int row) const;
  bool ItemBold(int row) const;
  void RemoveItem(int row);
  int SelectedIndex() const;  // -1 with no selection
  void SetSelected(int row);
  void EnsureVisible(int row);

  // Look and behaviour.
  void SetCheckboxes(bool on);
  bool Checkboxes() const { return checkboxes_; }
  void SetGridLines(bool on) { gridLines_ = on; viewport()->update(); }
  bool GridLines() const { return gridLines_; }
  void SetFullRowSelect(bool on) { setSelectionBehavior(on ? SelectRows : SelectItems); }
  void SetHideSelection(bool on) { hideSelection_ = on; }
  void SetIcons(const QList<QIcon>& icons);
  const QList<QIcon>& Icons() const { return icons_; }

  // Sorting by the text of a column, as the system's list does.
  int SortKey() const { return sortKey_; }
  void SetSortKey(int column) { sortKey_ = column; }
  int SortOrder() const { return sortOrder_; }  // 0 ascending, 1 descending
  void SetSortOrder(int order) { sortOrder_ = order; }
  void SetSorted(bool sorted);
  bool Sorted() const { return sorted_; }

  ListViewModel* Model() const { return model_; }

 signals:
  void ItemCheck(int row);
  void ColumnClick(int column);  // 1-based, as the headers' index
  void DblClick();
  void ItemClick(int row);
  void RightButtonUp(const QPoint& globalPos);

 protected:
  void showEvent(QShowEvent* e) override;
  void mouseDoubleClickEvent(QMouseEvent* e) override;
  void keyPressEvent(QKeyEvent* e) override;
  void mouseReleaseEvent(QMouseEvent* e) override;
  void drawRow(QPainter* p, const QStyleOptionViewItem& o, const QModelIndex& index) const override;

 private:
  friend class ListViewModel;
  void CheckRow(int row) const;
  void Refresh();
  void ApplyColumns();
  void RebuildKeys() const;
  void SortItems();

  ListViewModel* model_;
  QList<QIcon> icons_;
  bool checkboxes_ = false;
  bool gridLines_ = false;
  bool hideSelection_ = true;
  bool sorted_ = false;
  int sortKey_ = 0;
  int sortOrder_ = 0;
  bool pending_ = false;  // items added while hidden, not yet told to the view
  LineText lineText_;
  LineKey lineKey_;
  mutable bool keysDirty_ = true;
  mutable QHash<QString, int> keys_;
};

}  // namespace prestkt
