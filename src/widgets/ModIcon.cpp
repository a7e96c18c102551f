#include "ModIcon.h"

#include <QAbstractItemView>
#include <QAction>
#include <QApplication>
#include <QDesktopServices>
#include <QDir>
#include <QFileInfo>
#include <QListWidget>
#include <QMimeDatabase>
#include <QPointer>
#include <QProcess>
#include <QStandardPaths>
#include <QStyle>
#include <QTabBar>
#include <QTabWidget>
#include <QTableWidget>
#include <QToolBar>
#include <QTreeWidget>

#include "Guard.h"
#include "ListView.h"
#include "ModMagnify.h"
#include "ModPrestKT.h"
#include "VbError.h"

namespace prestkt {

namespace {

constexpr char kBinding[] = "prestktImageList";
constexpr int kTwipsPerPixel = 15;
constexpr int kToolBarTwips = 420;  // the height of a toolbar of normal pictures

template <class T>
T* Need(T* p) {
  if (!p) Raise(err::ObjectNotSet);
  return p;
}

}  // namespace

// ---------------------------------------------------------------- image list

ImageList::ImageList(QObject* parent, int imageSize) : QObject(parent), size_(imageSize) {}

const ImageList::Item& ImageList::At(int index) const {
  if (index < 1 || index > Count()) Raise(kIndexOutOfBounds, QStringLiteral("Index out of bounds"));
  return items_[static_cast<size_t>(index - 1)];
}

int ImageList::Add(const QIcon& icon, const QString& tag) {
  items_.push_back({icon, tag});
  return Count();
}

QIcon ImageList::Icon(int index) const { return At(index).icon; }

QString ImageList::Tag(int index) const { return At(index).tag; }

void ImageList::SetTag(int index, const QString& tag) {
  At(index);
  items_[static_cast<size_t>(index - 1)].tag = tag;
}

void ImageList::Remove(int index) {
  At(index);
  items_.erase(items_.begin() + (index - 1));
}

void ImageList::Clear() { items_.clear(); }

QList<QIcon> ImageList::Icons() const {
  QList<QIcon> icons;
  icons.reserve(Count());
  for (const Item& it : items_) icons.append(it.icon);
  return icons;
}

// ---------------------------------------------------------------- binding

void BindImageList(QWidget* control, ImageList* images) {
  Need(control);
  if (!images) {
    control->setProperty(kBinding, QVariant());
    return;
  }
  control->setProperty(kBinding, QVariant::fromValue<quintptr>(reinterpret_cast<quintptr>(images)));
  const QSize size(images->ImageSize(), images->ImageSize());
  if (auto* lista = qobject_cast<ListView*>(control)) lista->SetIcons(images->Icons());
  if (auto* tb = qobject_cast<QToolBar*>(control)) {
    tb->setIconSize(size);
  } else if (auto* tabs = qobject_cast<QTabWidget*>(control)) {
    tabs->setIconSize(size);
  } else if (auto* bar = qobject_cast<QTabBar*>(control)) {
    bar->setIconSize(size);
  } else if (auto* view = qobject_cast<QAbstractItemView*>(control)) {
    view->setIconSize(size);
  }
}

ImageList* BoundImageList(const QObject* control) {
  if (!control) return nullptr;
  const QVariant v = control->property(kBinding);
  return v.isValid() ? reinterpret_cast<ImageList*>(v.value<quintptr>()) : nullptr;
}

// ---------------------------------------------------------------- toolbars

namespace {
// The height the toolbar asks for: it follows a change of its pictures at
// once, while the height it has waits for the next layout pass.
int ToolBarHeight(QToolBar* tb) { return tb->sizeHint().height(); }
}  // namespace

void ToolBarLoadImages(QToolBar* toolbar, ImageList* images) {
  Guard g(QStringLiteral("Procedure"), QStringLiteral("ToolBarLoadImages"));
  int before = 0;
  g([&] { before = ToolBarHeight(Need(toolbar)); });
  g([&] { BindImageList(toolbar, images); });
  QList<QAction*> actions;
  g([&] { actions = Need(toolbar)->actions(); });
  for (int i = 1; i <= actions.size(); ++i) {
    g([&] {
      QAction* a = actions.at(i - 1);
      a->setIcon(Need(images)->Icon(i));
      const QString tag = images->Tag(i);
      if (!tag.isEmpty()) a->setToolTip(tag);
    });
  }
  g([&] {
    // A toolbar not shown yet keeps telling its old size to the layout until asked again.
    Need(toolbar)->updateGeometry();
    const int after = ToolBarHeight(toolbar);
    if (after > before && after > kToolBarTwips / kTwipsPerPixel) Magnify(toolbar->window(), 1.0);
  });
}

void CopyTags(ImageList* from, ImageList* to) {
  Need(from);
  Need(to);
  for (int i = 1; i <= from->Count(); ++i) to->SetTag(i, from->Tag(i));
}

ImageList* SceltaImmagini(ImageList* normal, ImageList* large) {
  if (gMagnify == 16) return normal;
  CopyTags(normal, large);
  return large;
}

// ---------------------------------------------------------------- files

QIcon GetTypeIcon(const QString& path, bool large) {
  Guard g(QStringLiteral("Procedure"), QStringLiteral("GetTypeIcon"));
  QIcon result;
  g([&] {
    const int side = large ? 32 : 16;
    QStyle* style = Need(QApplication::style());
    const QIcon file = style->standardIcon(QStyle::SP_FileIcon);
    QIcon icon = file;
    const QMimeType mime = QMimeDatabase().mimeTypeForFile(path, QMimeDatabase::MatchExtension);
    if (mime.isValid() && !mime.isDefault())
      icon = QIcon::fromTheme(mime.iconName(), QIcon::fromTheme(mime.genericIconName(), file));
    if (icon.isNull()) icon = file;
    result = QIcon(icon.pixmap(QSize(side, side)));
  });
  return result;
}

bool GetFileTimeInfo(const QString& path, QDateTime* creato, QDateTime* aperto, QDateTime* scritto) {
  Guard g(QStringLiteral("Procedure"), QStringLiteral("GetFileTimeInfo"));
  bool ok = false;
  g([&] {
    const QFileInfo fi(path);
    if (path.isEmpty() || !fi.exists()) Raise(err::FileNotFound, QStringLiteral("File not found: ") + path);
    const auto whole = [](const QDateTime& t) {
      const QDateTime local = t.toLocalTime();
      return local.addMSecs(-local.time().msec());
    };
    QDateTime born = fi.birthTime();
    if (!born.isValid()) born = fi.metadataChangeTime();
    if (creato) *creato = whole(born);
    if (aperto) *aperto = whole(fi.lastRead());
    if (scritto) *scritto = whole(fi.lastModified());
    ok = true;
  });
  return ok;
}

// ---------------------------------------------------------------- shell

namespace {

bool DefaultOpen(const QUrl& url) { return QDesktopServices::openUrl(url); }

bool DefaultStart(const QString& program, const QStringList& args, const QString& dir, bool hidden) {
  QProcess p;
  p.setProgram(program);
  p.setArguments(args);
  if (!dir.isEmpty()) p.setWorkingDirectory(dir);
  if (hidden) {
    p.setStandardInputFile(QProcess::nullDevice());
    p.setStandardOutputFile(QProcess::nullDevice());
    p.setStandardErrorFile(QProcess::nullDevice());
  }
  return p.startDetached();
}

OpenHook& OpenFn() {
  static OpenHook hook = DefaultOpen;
  return hook;
}

StartHook& StartFn() {
  static StartHook hook = DefaultStart;
  return hook;
}

// The results of the platform's shell: above 32 done, otherwise the reason.
constexpr int kShellDone = 42;
constexpr int kShellFailed = 0;
constexpr int kShellFileNotFound = 2;
constexpr int kShellPathNotFound = 3;
constexpr int kShellNoAssociation = 31;

QString ShellErrorText(int code) {
  switch (code) {
    case kShellFileNotFound: return QStringLiteral("The system cannot find the file specified.");
    case kShellPathNotFound: return QStringLiteral("The system cannot find the path specified.");
    case kShellNoAssociation: return QStringLiteral("There is no application associated with the given file.");
    default: return QStringLiteral("The file could not be opened.");
  }
}

bool IsProgram(const QFileInfo& fi) {
  if (!fi.isFile()) return false;
  const QString suffix = fi.suffix().toLower();
  if (suffix == QLatin1String("exe") || suffix == QLatin1String("com") || suffix == QLatin1String("bat") ||
      suffix == QLatin1String("cmd"))
    return true;
  if (!fi.isExecutable()) return false;
  // An executable bit alone is not enough: some file systems give it to every file.
  const QMimeType mime = QMimeDatabase().mimeTypeForFile(fi);
  for (const char* kind : {"application/x-executable", "application/x-pie-executable", "application/x-sharedlib",
                           "application/x-shellscript"})
    if (mime.inherits(QLatin1String(kind))) return true;
  return false;
}

// Opens or starts file as the platform's shell does and gives its result.
int ShellRun(const QString& file, const QString& parametri, const QString& cartella, bool hidden) {
  if (!cartella.isEmpty() && !QFileInfo(cartella).isDir()) return kShellPathNotFound;
  // A web address or the like: its program opens it.
  const QUrl url(file);
  if (url.scheme().size() > 1 && url.scheme() != QLatin1String("file") && !QFileInfo::exists(file))
    return OpenFn()(url) ? kShellDone : kShellNoAssociation;

  QFileInfo fi(url.isLocalFile() ? url.toLocalFile() : file);
  if (fi.isRelative() && !cartella.isEmpty() && QFileInfo::exists(QDir(cartella).filePath(fi.filePath())))
    fi = QFileInfo(QDir(cartella).filePath(fi.filePath()));
  if (!fi.exists() && !file.contains(QLatin1Char('/'))) {
    const QString found = QStandardPaths::findExecutable(file);
    if (!found.isEmpty()) fi = QFileInfo(found);
  }
  if (!fi.exists()) return fi.absoluteDir().exists() ? kShellFileNotFound : kShellPathNotFound;

  if (IsProgram(fi)) {
    const QStringList args = QProcess::splitCommand(parametri);
    return StartFn()(fi.absoluteFilePath(), args, cartella, hidden) ? kShellDone : kShellFailed;
  }
  return OpenFn()(QUrl::fromLocalFile(fi.absoluteFilePath())) ? kShellDone : kShellNoAssociation;
}

}  // namespace

void SetOpenHook(OpenHook hook) { OpenFn() = hook ? std::move(hook) : OpenHook(DefaultOpen); }

void SetStartHook(StartHook hook) { StartFn() = hook ? std::move(hook) : StartHook(DefaultStart); }

bool GShell(const QString& file, int mostra, const QString& parametri, const QString& cartella,
            const QString& azione) {
  // The shell's verbs have no counterpart here: every action opens.
  Q_UNUSED(azione);
  Guard g(QStringLiteral("Procedure"), QStringLiteral("GShell"), Guard::Silent);
  bool ok = false;
  g([&] {
    if (file.toUpper().contains(QLatin1String(".EXE"))) mostra = 0;
    int risultato = kShellFailed;
    if (!parametri.isEmpty() || !cartella.isEmpty())
      risultato = ShellRun(file, parametri, cartella, mostra == 0);
    else
      risultato = ShellRun(file, {}, {}, false);
    if (risultato >= 0 && risultato <= 32)
      Raise(risultato + 512 + 1048, ShellErrorText(risultato), QStringLiteral("OCPrestKT.GShell"));
    ok = true;
  });
  return ok;
}

// ---------------------------------------------------------------- closing

void HideControl(QWidget* form, ImageList* images) {
  Guard g(QStringLiteral("ModIcon"), QStringLiteral("HideControl"));
  QList<QPointer<QWidget>> controls;
  const bool ready = g([&] {
    Need(images);
    for (QWidget* w : Need(form)->findChildren<QWidget*>()) controls.append(w);
  });
  if (!ready) return;
  for (const QPointer<QWidget>& c : controls) {
    // Emptying a toolbar deletes its buttons: they are gone by the time the walk reaches them.
    if (c.isNull() || BoundImageList(c) != images) continue;
    g([&] {
      c->hide();
      if (auto* lista = qobject_cast<ListView*>(c)) {
        lista->ClearItems();
        lista->SetIcons({});
      } else if (auto* tb = qobject_cast<QToolBar*>(c)) {
        tb->clear();
      } else if (auto* tabs = qobject_cast<QTabWidget*>(c)) {
        tabs->clear();
      } else if (auto* bar = qobject_cast<QTabBar*>(c)) {
        while (bar->count() > 0) bar->removeTab(bar->count() - 1);
      } else if (auto* tree = qobject_cast<QTreeWidget*>(c)) {
        tree->clear();
      } else if (auto* list = qobject_cast<QListWidget*>(c)) {
        list->clear();
      } else if (auto* table = qobject_cast<QTableWidget*>(c)) {
        table->clearContents();
      }
      BindImageList(c, nullptr);
    });
  }
}

void SvuotaImmagini(QWidget* form) {
  Guard g(QStringLiteral("ModIcon"), QStringLiteral("SvuotaImmagini"));
  QList<QPointer<ImageList>> lists;
  const bool ready = g([&] {
    for (ImageList* il : Need(form)->findChildren<ImageList*>()) lists.append(il);
  });
  if (!ready) return;
  for (const QPointer<ImageList>& il : lists) {
    if (il.isNull()) continue;
    HideControl(form, il);
    for (int i = il->Count(); i >= 1; --i) g([&] { il->Remove(i); });
  }
}

}  // namespace prestkt
