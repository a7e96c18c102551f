#include "ListView.h"

#include <QHeaderView>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <algorithm>

#include "VbError.h"

namespace prestkt {

namespace {
constexpr int kTwipsPerPixel = 15;
constexpr int kElementNotFound = 35601;
constexpr int kInvalidPropertyValue = 380;
}  // namespace

// ---------------------------------------------------------------- model

ListViewModel::ListViewModel(ListView* view) : QAbstractTableModel(view), view_(view) {}

int ListViewModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() || view_->pending_ ? 0 : static_cast<int>(items_.size());
}

int ListViewModel::columnCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : std::max<int>(1, static_cast<int>(columns_.size()));
}

QVariant ListViewModel::data(const QModelIndex& index, int role) const {
  if (!index.isValid() || index.row() >= static_cast<int>(items_.size())) return {};
  const Item& it = items_[index.row()];
  const int c = index.column();
  switch (role) {
    case Qt::DisplayRole:
    case Qt::ToolTipRole:
      return view_->Text(index.row(), c);
    case Qt::CheckStateRole:
      if (c == 0 && view_->checkboxes_) return it.checked ? Qt::Checked : Qt::Unchecked;
      return {};
    case Qt::DecorationRole:
      if (c == 0 && it.icon >= 0 && it.icon < view_->icons_.size()) return view_->icons_.at(it.icon);
      return {};
    case Qt::ForegroundRole:
      if (it.hasColor) return QColor::fromRgba(it.color);
      return {};
    case Qt::SizeHintRole:
      if (it.height > 0) return QSize(-1, it.height);
      return {};
    case Qt::FontRole:
      if (it.bold) {
        QFont f = view_->font();
        f.setBold(true);
        return f;
      }
      return {};
    case Qt::TextAlignmentRole:
      if (c < static_cast<int>(columns_.size())) {
        const int a = columns_[c].alignment;
        return static_cast<int>((a == lvwColumnRight ? Qt::AlignRight : a == lvwColumnCenter ? Qt::AlignHCenter
                                                                                             : Qt::AlignLeft) |
                                Qt::AlignVCenter);
      }
      return {};
    default:
      return {};
  }
}

bool ListViewModel::setData(const QModelIndex& index, const QVariant& value, int role) {
  if (role != Qt::CheckStateRole || index.column() != 0 || !view_->checkboxes_) return false;
  items_[index.row()].checked = value.toInt() == Qt::Checked;
  emit dataChanged(index, index, {Qt::CheckStateRole});
  emit view_->ItemCheck(index.row());
  return true;
}

QVariant ListViewModel::headerData(int section, Qt::Orientation o, int role) const {
  if (o != Qt::Horizontal || section >= static_cast<int>(columns_.size())) return {};
  if (role == Qt::DisplayRole) return columns_[section].text;
  if (role == Qt::TextAlignmentRole) {
    const int a = columns_[section].alignment;
    return static_cast<int>((a == lvwColumnRight ? Qt::AlignRight : a == lvwColumnCenter ? Qt::AlignHCenter
                                                                                         : Qt::AlignLeft) |
                            Qt::AlignVCenter);
  }
  return {};
}

Qt::ItemFlags ListViewModel::flags(const QModelIndex& index) const {
  Qt::ItemFlags f = Qt::ItemIsEnabled | Qt::ItemIsSelectable;
  if (index.column() == 0 && view_->checkboxes_) f |= Qt::ItemIsUserCheckable;
  return f;
}

// ---------------------------------------------------------------- view

ListView::ListView(QWidget* parent) : QTreeView(parent), model_(new ListViewModel(this)) {
  setModel(model_);
  setRootIsDecorated(false);
  setUniformRowHeights(true);
  setItemsExpandable(false);
  setAllColumnsShowFocus(true);
  setSelectionMode(SingleSelection);
  setSelectionBehavior(SelectRows);
  setEditTriggers(NoEditTriggers);
  header()->setStretchLastSection(false);
  header()->setSectionsMovable(false);
  header()->setSectionsClickable(true);
  connect(header(), &QHeaderView::sectionClicked, this, [this](int s) { emit ColumnClick(s + 1); });
  connect(this, &QTreeView::clicked, this, [this](const QModelIndex& i) { emit ItemClick(i.row()); });
}

void ListView::CheckRow(int row) const {
  if (row < 0 || row >= static_cast<int>(model_->items_.size())) Raise(kElementNotFound, QStringLiteral("Element not found"));
}

void ListView::Refresh() {
  model_->beginResetModel();
  pending_ = false;
  model_->endResetModel();
  ApplyColumns();
}

// Widths are stated in twips for the narrow font of the old screens; a wider
// font widens the columns in proportion, so that dates and codes still fit.
double ListView::Scala() const {
  return std::max(1.0, fontMetrics().horizontalAdvance(QLatin1Char('0')) / 5.5);
}

int ListView::Pixels(int twips) const { return static_cast<int>(twips / kTwipsPerPixel * Scala()); }

int ListView::WidthTwips() const { return static_cast<int>(width() * kTwipsPerPixel / Scala()); }

void ListView::ApplyColumns() {
  for (size_t i = 0; i < model_->columns_.size(); ++i)
    setColumnWidth(static_cast<int>(i), Pixels(model_->columns_[i].widthTwips));
}

void ListView::ClearColumns() {
  model_->beginResetModel();
  model_->columns_.clear();
  model_->items_.clear();
  keysDirty_ = true;
  model_->endResetModel();
}

void ListView::AddColumn(const QString& key, const QString& text, int widthTwips, int alignment) {
  model_->beginResetModel();
  // The first column is left-aligned by the nature of the widget.
  model_->columns_.push_back({key, text, widthTwips, model_->columns_.empty() ? lvwColumnLeft : alignment});
  model_->endResetModel();
  ApplyColumns();
}

int ListView::ColumnCount() const { return static_cast<int>(model_->columns_.size()); }

QString ListView::ColumnText(int column) const {
  if (column < 0 || column >= ColumnCount()) Raise(kElementNotFound, QStringLiteral("Element not found"));
  return model_->columns_[column].text;
}

int ListView::ColumnWidth(int column) const {
  if (column < 0 || column >= ColumnCount()) Raise(kElementNotFound, QStringLiteral("Element not found"));
  return model_->columns_[column].widthTwips;
}

void ListView::SetColumnWidth(int column, int twips) {
  if (column < 0 || column >= ColumnCount()) Raise(kElementNotFound, QStringLiteral("Element not found"));
  if (twips < 0) Raise(kInvalidPropertyValue, QStringLiteral("Invalid property value"));
  model_->columns_[column].widthTwips = twips;
  setColumnWidth(column, Pixels(twips));
}

int ListView::ColumnAlignment(int column) const {
  if (column < 0 || column >= ColumnCount()) Raise(kElementNotFound, QStringLiteral("Element not found"));
  return model_->columns_[column].alignment;
}

void ListView::ClearItems() {
  model_->beginResetModel();
  model_->items_.clear();
  lineText_ = nullptr;
  lineKey_ = nullptr;
  keys_.clear();
  keysDirty_ = false;
  model_->endResetModel();
}

int ListView::Count() const { return static_cast<int>(model_->items_.size()); }

int ListView::AddItem(const QString& key, const QString& text, int icon) {
  if (!key.isEmpty() && IndexOfKey(key) >= 0) Raise(35602, QStringLiteral("Key is not unique in collection"));
  ListViewModel::Item it;
  it.Own().key = key;
  it.Own().texts << text;
  it.icon = icon;
  const int row = Count();
  // While the list is hidden (as it is while it fills) the view is told once, when shown.
  if (!isVisible() || pending_) {
    pending_ = true;
    model_->items_.push_back(std::move(it));
  } else {
    model_->beginInsertRows({}, row, row);
    model_->items_.push_back(std::move(it));
    model_->endInsertRows();
  }
  if (!keysDirty_ && !key.isEmpty()) keys_.insert(key, row);
  return row;
}

void ListView::SetLines(int count, LineText text, LineKey key, bool checked) {
  model_->beginResetModel();
  model_->items_.clear();
  model_->items_.resize(static_cast<size_t>(std::max(0, count)));
  for (int i = 0; i < count; ++i) {
    model_->items_[i].line = i;
    model_->items_[i].checked = checked;
  }
  lineText_ = std::move(text);
  lineKey_ = std::move(key);
  keys_.clear();
  keysDirty_ = true;
  pending_ = false;
  model_->endResetModel();
}

void ListView::SetSubItem(int row, int column, const QString& text) {
  CheckRow(row);
  ListViewModel::Item& it = model_->items_[row];
  if (it.line >= 0 && !it.own)  // a line made when shown keeps what it showed
    for (int c = 0; c < ColumnCount(); ++c) it.Own().texts << lineText_(it.line, c);
  QStringList& t = it.Own().texts;
  while (t.size() <= column) t << QString();
  t[column] = text;
  if (!pending_) emit model_->dataChanged(model_->index(row, column), model_->index(row, column));
}

QString ListView::Text(int row, int column) const {
  CheckRow(row);
  const ListViewModel::Item& it = model_->items_[row];
  if (it.line >= 0 && !it.own) return lineText_(it.line, column);
  return it.own && column < it.own->texts.size() ? it.own->texts.at(column) : QString();
}

QString ListView::Key(int row) const {
  CheckRow(row);
  const ListViewModel::Item& it = model_->items_[row];
  if (it.line >= 0 && (!it.own || it.own->key.isEmpty())) return lineKey_(it.line);
  return it.own ? it.own->key : QString();
}

void ListView::RebuildKeys() const {
  keys_.clear();
  keys_.reserve(static_cast<int>(model_->items_.size()));
  for (size_t i = 0; i < model_->items_.size(); ++i) {
    const QString k = Key(static_cast<int>(i));
    if (!k.isEmpty()) keys_.insert(k, static_cast<int>(i));
  }
  keysDirty_ = false;
}

int ListView::IndexOfKey(const QString& key) const {
  if (keysDirty_) RebuildKeys();
  return keys_.value(key, -1);
}

int ListView::Row(const QString& key) const {
  const int r = IndexOfKey(key);
  if (r < 0) Raise(kElementNotFound, QStringLiteral("Element not found"));
  return r;
}

bool ListView::Checked(int row) const {
  CheckRow(row);
  return model_->items_[row].checked;
}

void ListView::SetChecked(int row, bool checked) {
  CheckRow(row);
  model_->items_[row].checked = checked;
  if (!pending_) emit model_->dataChanged(model_->index(row, 0), model_->index(row, 0), {Qt::CheckStateRole});
}

int ListView::Icon(int row) const {
  CheckRow(row);
  return model_->items_[row].icon;
}

void ListView::SetIcon(int row, int icon) {
  CheckRow(row);
  model_->items_[row].icon = icon;
  if (!pending_) emit model_->dataChanged(model_->index(row, 0), model_->index(row, 0));
}

void ListView::SetItemColor(int row, const QColor& color) {
  CheckRow(row);
  model_->items_[row].color = color.rgba();
  model_->items_[row].hasColor = color.isValid();
}

QColor ListView::ItemColor(int row) const {
  CheckRow(row);
  const ListViewModel::Item& it = model_->items_[row];
  return it.hasColor ? QColor::fromRgba(it.color) : QColor();
}

void ListView::SetItemBold(int row, bool bold) {
  CheckRow(row);
  model_->items_[row].bold = bold;
}

void ListView::SetItemHeight(int row, int pixels) {
  CheckRow(row);
  model_->items_[row].height = pixels;
  if (pixels > 0) setUniformRowHeights(false);
}

int ListView::ItemHeight(int row) const {
  CheckRow(row);
  return model_->items_[row].height;
}

bool ListView::ItemBold(int row) const {
  CheckRow(row);
  return model_->items_[row].bold;
}

void ListView::RemoveItem(int row) {
  CheckRow(row);
  if (pending_) {
    model_->items_.erase(model_->items_.begin() + row);
  } else {
    model_->beginRemoveRows({}, row, row);
    model_->items_.erase(model_->items_.begin() + row);
    model_->endRemoveRows();
  }
  keysDirty_ = true;
}

int ListView::SelectedIndex() const {
  const QModelIndex i = currentIndex();
  if (!i.isValid() || !selectionModel()->isRowSelected(i.row(), {})) return -1;
  return i.row();
}

void ListView::SetSelected(int row) {
  CheckRow(row);
  if (pending_) Refresh();
  const QModelIndex i = model_->index(row, 0);
  selectionModel()->setCurrentIndex(i, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
}

void ListView::EnsureVisible(int row) {
  CheckRow(row);
  if (pending_) Refresh();
  scrollTo(model_->index(row, 0), QAbstractItemView::EnsureVisible);
}

void ListView::SetCheckboxes(bool on) {
  checkboxes_ = on;
  if (!pending_) {
    model_->beginResetModel();
    model_->endResetModel();
  }
}

void ListView::SetIcons(const QList<QIcon>& icons) {
  icons_ = icons;
  viewport()->update();
}

void ListView::SortItems() {
  const int c = sortKey_;
  const bool desc = sortOrder_ == 1;
  // The texts of the column once, then the lines in their order.
  const int n = Count();
  std::vector<QString> testo(n);
  for (int i = 0; i < n; ++i) testo[i] = Text(i, c);
  std::vector<int> ordine(n);
  for (int i = 0; i < n; ++i) ordine[i] = i;
  std::stable_sort(ordine.begin(), ordine.end(), [&](int a, int b) {
    const int r = QString::compare(testo[a], testo[b], Qt::CaseInsensitive);
    return desc ? r > 0 : r < 0;
  });
  std::vector<ListViewModel::Item> items;
  items.reserve(n);
  for (int i : ordine) items.push_back(std::move(model_->items_[i]));
  model_->items_ = std::move(items);
  keysDirty_ = true;
}

void ListView::SetSorted(bool sorted) {
  sorted_ = sorted;
  if (!sorted) return;
  model_->beginResetModel();
  SortItems();
  model_->endResetModel();
}

void ListView::showEvent(QShowEvent* e) {
  if (pending_) Refresh();
  QTreeView::showEvent(e);
}

// Enter on a selected row opens it, as a double click does.
void ListView::keyPressEvent(QKeyEvent* e) {
  if ((e->key() == Qt::Key_Return || e->key() == Qt::Key_Enter) && SelectedIndex() >= 0) {
    e->accept();
    emit DblClick();
    return;
  }
  QTreeView::keyPressEvent(e);
}

void ListView::mouseDoubleClickEvent(QMouseEvent* e) {
  QTreeView::mouseDoubleClickEvent(e);
  if (e->button() == Qt::LeftButton) emit DblClick();
}

void ListView::mouseReleaseEvent(QMouseEvent* e) {
  QTreeView::mouseReleaseEvent(e);
  if (e->button() == Qt::RightButton) emit RightButtonUp(e->globalPosition().toPoint());
}

void ListView::drawRow(QPainter* p, const QStyleOptionViewItem& o, const QModelIndex& index) const {
  QTreeView::drawRow(p, o, index);
  if (!gridLines_) return;
  p->save();
  p->setPen(QColor(220, 220, 220));
  p->drawLine(o.rect.bottomLeft(), o.rect.bottomRight());
  int x = -header()->offset();
  for (int c = 0; c < header()->count(); ++c) {
    x += header()->sectionSize(c);
    p->drawLine(x - 1, o.rect.top(), x - 1, o.rect.bottom());
  }
  p->restore();
}

}  // namespace prestkt
