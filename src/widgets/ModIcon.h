#pragma once
// Pictures of the screens: the image lists, the toolbars that show them and the
// controls bound to them; the icon and the times of a file, and the opening of
// a file with its program.
#include <QDateTime>
#include <QIcon>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QUrl>
#include <functional>
#include <vector>

class QToolBar;
class QWidget;

namespace prestkt {

// The image list of a screen: images counted from 1, each with the tooltip
// that travels with it (its Tag). An index out of range raises 35600.
class ImageList : public QObject {
  Q_OBJECT
 public:
  explicit ImageList(QObject* parent = nullptr, int imageSize = 16);

  int ImageSize() const { return size_; }  // 16 normal, 24 or 32 large
  void SetImageSize(int size) { size_ = size; }

  int Add(const QIcon& icon, const QString& tag = {});  // the index of the new image
  int Count() const { return static_cast<int>(items_.size()); }
  QIcon Icon(int index) const;
  QString Tag(int index) const;
  void SetTag(int index, const QString& tag);
  void Remove(int index);
  void Clear();
  QList<QIcon> Icons() const;

 private:
  struct Item {
    QIcon icon;
    QString tag;
  };
  const Item& At(int index) const;
  int size_;
  std::vector<Item> items_;
};

inline constexpr int kIndexOutOfBounds = 35600;

// The binding of a control to an image list, kept in the control's property
// "prestktImageList". Binding sets the icon size of toolbars, tab bars and item
// views and gives a ListView its icons. A null control raises 91; a null list
// unbinds.
void BindImageList(QWidget* control, ImageList* images);
ImageList* BoundImageList(const QObject* control);

// Binds the list to the toolbar and gives action i (separators count) image i,
// and its Tag as tooltip when there is one. An action beyond the list is
// logged and the others still get theirs. A toolbar that grew taller lets its
// window lay itself out again (Magnify with factor 1).
void ToolBarLoadImages(QToolBar* toolbar, ImageList* images);
// Copies the Tag of each image of from onto the image of the same index of to.
void CopyTags(ImageList* from, ImageList* to);
// The list of the current layout: normal when gMagnify is 16, otherwise large,
// which first takes the tags of normal.
ImageList* SceltaImmagini(ImageList* normal, ImageList* large);

// The icon of a file by its extension alone (the file need not exist), at 16
// pixels, or 32 when large. An unknown extension gives the style's file icon.
QIcon GetTypeIcon(const QString& path, bool large);

// Creation (or, where the file system keeps none, the last change of the
// file's attributes), last read and last write, local time, whole seconds.
// False, and a line in the log, when the file does not exist.
bool GetFileTimeInfo(const QString& path, QDateTime* creato, QDateTime* aperto, QDateTime* scritto);

// Opens a file with its program, or starts it when it is a program. mostra: 0
// hidden, 1 normal; a program (".EXE" in the name) always starts hidden, and
// with neither parameters nor folder everything opens normally. Never logs,
// never shows: a failure simply returns false.
bool GShell(const QString& file, int mostra = 1, const QString& parametri = {}, const QString& cartella = {},
            const QString& azione = {});

// What GShell does on the platform: open a document or URL with its associated
// program, start a program. Replaceable so that nothing pops up under test;
// an empty hook restores the default.
using OpenHook = std::function<bool(const QUrl&)>;
using StartHook =
    std::function<bool(const QString& program, const QStringList& args, const QString& dir, bool hidden)>;
void SetOpenHook(OpenHook hook);
void SetStartHook(StartHook hook);

// Hides, empties and unbinds every control of the form bound to the list:
// lists, toolbars, tab bars, trees.
void HideControl(QWidget* form, ImageList* images);
// The emptying of a closing form: each of its image lists is released by its
// controls and emptied from the last image to the first.
void SvuotaImmagini(QWidget* form);

}  // namespace prestkt
