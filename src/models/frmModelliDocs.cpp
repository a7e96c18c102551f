// The document folder of the model card: the list of the files in the model's
// folder, new office documents, imported files, mail messages dropped on the
// list, opening and deleting.
#include "frmModelliDocs.h"

#include <QApplication>
#include <QDir>
#include <QDragEnterEvent>
#include <QDragMoveEvent>
#include <QDropEvent>
#include <QFile>
#include <QFileInfo>
#include <QPointer>
#include <QRegularExpression>
#include <QStringDecoder>
#include <QTimer>
#include <QUrl>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "Guard.h"
#include "Messages.h"
#include "ModExcel.h"
#include "ModIcon.h"
#include "ModListViewKT.h"
#include "ModPrestKT.h"
#include "Procedure.h"
#include "Recordset.h"
#include "Vb.h"
#include "VbError.h"
#include "frmModelli.h"

namespace prestkt {

namespace {

const QString kModulo = QStringLiteral("frmModelli");
constexpr int kColNome = 1;      // "Nome"; column 0 holds only the icon
constexpr int kElementNotFound = 35601;
// The longest name the file systems of this platform take, in bytes.
constexpr int kMaxNomeFile = 255;

// The path of nome in the folder cartella. Raises unless cartella is an
// existing folder and nome a plain file name, so that nothing a user types or
// a message carries can reach outside the model's folder.
QString NelModello(const QString& cartella, const QString& nome) {
  if (cartella.isEmpty() || !QFileInfo(cartella).isDir())
    Raise(err::PathNotFound, QStringLiteral("Path not found: ") + cartella);
  if (nome.isEmpty() || nome == QLatin1String(".") || nome == QLatin1String("..") || nome.contains(QLatin1Char('/')) ||
      nome.contains(QChar(0)))
    Raise(err::PathFileAccess, QStringLiteral("Not a file name: ") + nome);
  const QString file = cartella + QLatin1Char('/') + nome;
  if (QFileInfo(QFileInfo(file).absolutePath()).canonicalFilePath() != QFileInfo(cartella).canonicalFilePath())
    Raise(err::PathFileAccess, QStringLiteral("Not in the model's folder: ") + nome);
  return file;
}

// Selects the line whose "Nome" is nome and brings it into view.
void SelezionaNome(ListView* lista, const QString& nome) {
  for (int r = 0; r < lista->Count(); ++r) {
    if (lista->Text(r, kColNome) == nome) {
      lista->SetSelected(r);
      lista->EnsureVisible(r);
      return;
    }
  }
  Raise(kElementNotFound, QStringLiteral("Element not found"));
}

QString NomeSelezionato(const ListView* lista) { return lista->Text(lista->SelectedIndex(), kColNome); }

void Clessidra() { QApplication::setOverrideCursor(Qt::WaitCursor); }
void CursoreNormale() { QApplication::restoreOverrideCursor(); }

// A new office document of the model: the word processor's or the spreadsheet's.
struct TipoDocumento {
  const char* procedura;
  int (*versione)();
  const char* estensioneVecchia;  // below version 12
  const char* estensione;
  bool (*scrivi)(const QString&);
};

const TipoDocumento kWord{"AggiungiWord", VersioneWord, ".doc", ".docx", ScriviDocxVuoto};
const TipoDocumento kExcel{"AggiungiExcel", VersioneExcel, ".xls", ".xlsx", ScriviXlsxVuoto};

void AggiungiDocumento(frmModelli& f, const TipoDocumento& tipo, const QString& nome) {
  Guard g(kModulo, QString::fromLatin1(tipo.procedura));
  int versione = 0;
  g([&] { versione = tipo.versione(); });
  g([&] { f.PathModello = f.GetPathModello(); });
  // With an old version the old extension; the content is always the current
  // format, which the office programs recognise by its content.
  const QString nomeFile = nome + QString::fromLatin1(versione < 12 ? tipo.estensioneVecchia : tipo.estensione);
  QString file;
  g([&] { file = NelModello(f.PathModello, nomeFile); });
  g([&] { f.SSTab1->setEnabled(false); });
  if (g.If([&] { return QFileInfo::exists(file); })) {
    MsgBox(QStringLiteral("Un file con questo nome esiste già tra i modelli!"), vbExclamation);
  } else if (!file.isEmpty()) {
    g([&] {
      if (!tipo.scrivi(file)) Raise(err::PathFileAccess, QStringLiteral("Path/File access error: ") + file);
    });
    g([&] { f.CaricaListDoc(); });
    g([&] { SelezionaNome(f.lvwDocs, nomeFile); });
    g([&] { GShell(file, 1, QString(), QString(), QStringLiteral("open")); });
  }
  g([&] { f.SSTab1->setEnabled(true); });
  g([&] { f.lvwDocs->setFocus(); });
}

void ChiediEAggiungi(frmModelli& f, const QString& procedura, const TipoDocumento& tipo) {
  Guard g(kModulo, procedura);
  QString nome;
  g([&] { nome = InputBox(QStringLiteral("Digita il nome del file:")).trimmed(); });
  if (nome.isEmpty()) return;
  if (!f.CtrlFileName(nome)) return;
  g([&] { f.SSTab1->setEnabled(false); });
  g([&] { AggiungiDocumento(f, tipo, nome); });
  g([&] { f.SSTab1->setEnabled(true); });
  g([&] { f.lvwDocs->setFocus(); });
}

// ---------------------------------------------------------------- mail messages

// A message as it was dropped: its bytes, its subject, the extension it is kept with.
struct Messaggio {
  QByteArray dati;
  QString oggetto;
  QString estensione;
  bool valido = false;
};

QString DaByte(const QByteArray& b, const QByteArray& charset) {
  QByteArray nome = charset;
  const int lingua = nome.indexOf('*');  // RFC 2231 adds "*language" to the charset
  if (lingua >= 0) nome.truncate(lingua);
  if (!nome.isEmpty()) {
    QStringDecoder dec(nome.constData());
    if (dec.isValid()) {
      const QString s = dec(b);
      if (!dec.hasError()) return s;
    }
  }
  QStringDecoder utf8(QStringDecoder::Utf8);
  const QString s = utf8(b);
  return utf8.hasError() ? QString::fromLatin1(b) : s;
}

QByteArray DecodificaQ(const QByteArray& testo) {
  QByteArray r;
  for (int i = 0; i < testo.size(); ++i) {
    const char c = testo.at(i);
    if (c == '_') {
      r += ' ';
    } else if (c == '=' && i + 2 < testo.size()) {
      bool ok = false;
      const int v = testo.mid(i + 1, 2).toInt(&ok, 16);
      if (ok) {
        r += static_cast<char>(v);
        i += 2;
      } else {
        r += c;
      }
    } else {
      r += c;
    }
  }
  return r;
}

// The text of a header value with its RFC 2047 encoded words (=?charset?Q?...?=
// and =?charset?B?...?=) decoded; blanks between two encoded words go.
QString DecodificaIntestazione(const QByteArray& valore) {
  static const QRegularExpression parola(QStringLiteral(R"(=\?([^?\s]+)\?([QqBb])\?([^?\s]*)\?=)"));
  const QString s = QString::fromLatin1(valore);  // one character per byte: the byte offsets stay
  QString r;
  qsizetype pos = 0;
  bool dopoParola = false;
  auto it = parola.globalMatch(s);
  while (it.hasNext()) {
    const QRegularExpressionMatch m = it.next();
    const QString prima = s.mid(pos, m.capturedStart() - pos);
    if (!(dopoParola && prima.trimmed().isEmpty())) r += DaByte(prima.toLatin1(), {});
    const QByteArray charset = m.captured(1).toLatin1();
    const QByteArray testo = m.captured(3).toLatin1();
    const QByteArray byte =
        m.captured(2).compare(QLatin1String("B"), Qt::CaseInsensitive) == 0 ? QByteArray::fromBase64(testo)
                                                                             : DecodificaQ(testo);
    r += DaByte(byte, charset);
    pos = m.capturedEnd();
    dopoParola = true;
  }
  r += DaByte(s.mid(pos).toLatin1(), {});
  return r;
}

// The subject of a message in the Internet format: its "Subject:" header,
// folded lines joined, encoded words decoded.
QString OggettoEml(const QByteArray& dati) {
  QByteArray valore;
  bool inOggetto = false;
  for (QByteArray riga : dati.split('\n')) {
    if (riga.endsWith('\r')) riga.chop(1);
    if (riga.isEmpty()) break;  // the end of the headers
    if (riga.at(0) == ' ' || riga.at(0) == '\t') {
      if (inOggetto) valore += riga;
      continue;
    }
    if (inOggetto) break;
    if (riga.size() >= 8 && qstrnicmp(riga.constData(), "subject:", 8) == 0) {
      inOggetto = true;
      valore = riga.mid(8);
    }
  }
  return DecodificaIntestazione(valore).simplified();
}

// A header value as the Internet format carries it: plain when it is plain
// ASCII, an encoded word otherwise.
QByteArray CodificaIntestazione(const QString& testo) {
  bool ascii = true;
  for (QChar c : testo)
    if (c.unicode() < 0x20 || c.unicode() > 0x7e) ascii = false;
  if (ascii) return testo.toLatin1();
  return "=?utf-8?B?" + testo.toUtf8().toBase64() + "?=";
}

// The message made of a dropped text: its first line is the subject.
QByteArray EmlDiTesto(const QString& oggetto, const QString& testo) {
  QByteArray r = "MIME-Version: 1.0\r\nSubject: " + CodificaIntestazione(oggetto) +
                 "\r\nContent-Type: text/plain; charset=utf-8\r\nContent-Transfer-Encoding: 8bit\r\n\r\n";
  r += testo.toUtf8();
  return r;
}

bool MessaggioFile(const QUrl& url, QString* suffisso) {
  if (!url.isLocalFile()) return false;
  const QFileInfo fi(url.toLocalFile());
  const QString s = fi.suffix().toLower();
  if (!fi.isFile() || (s != QLatin1String("eml") && s != QLatin1String("msg"))) return false;
  if (suffisso) *suffisso = s;
  return true;
}

const QString kRfc822 = QStringLiteral("message/rfc822");

// Whether the data carry a mail message the list takes. Dropped files that are
// not messages are not taken, whatever else comes with them.
bool MessaggioTrascinabile(const QMimeData* data) {
  if (!data) return false;
  if (data->hasUrls()) {
    for (const QUrl& u : data->urls())
      if (MessaggioFile(u, nullptr)) return true;
    return false;
  }
  if (data->hasFormat(kRfc822)) return !data->data(kRfc822).isEmpty();
  return data->hasText() && !data->text().trimmed().isEmpty();
}

// A message is kept in the form it came in: a .msg file of the mail program
// stays a .msg; a message of the Internet format (an .eml file, message data)
// is kept as .eml, and so is a dropped text, made into such a message.
Messaggio LeggiMessaggio(const QMimeData* data) {
  Messaggio m;
  if (!MessaggioTrascinabile(data)) return m;
  if (data->hasUrls()) {
    for (const QUrl& u : data->urls()) {
      QString suffisso;
      if (!MessaggioFile(u, &suffisso)) continue;
      const QFileInfo fi(u.toLocalFile());
      QFile f(fi.filePath());
      if (!f.open(QIODevice::ReadOnly)) Raise(err::PathFileAccess, QStringLiteral("Path/File access error: ") + fi.filePath());
      m.dati = f.readAll();
      if (suffisso == QLatin1String("msg")) {
        m.oggetto = fi.completeBaseName();
        m.estensione = QStringLiteral(".msg");
      } else {
        m.oggetto = OggettoEml(m.dati);
        m.estensione = QStringLiteral(".eml");
      }
      m.valido = true;
      return m;
    }
    return m;
  }
  if (data->hasFormat(kRfc822)) {
    m.dati = data->data(kRfc822);
    m.oggetto = OggettoEml(m.dati);
  } else {
    const QString testo = data->text();
    m.oggetto = testo.trimmed().section(QLatin1Char('\n'), 0, 0).trimmed();
    m.dati = EmlDiTesto(m.oggetto, testo);
  }
  m.estensione = QStringLiteral(".eml");
  m.valido = true;
  return m;
}

// The name a message is stored under: the first 250 characters of its subject
// and its extension. Separators, control characters and a leading dot become
// "_": the name stays a plain, visible file of the model's folder. A subject
// whose bytes would not fit a file name is cut further.
QString NomeMessaggio(const QString& oggetto, const QString& estensione) {
  QString base = oggetto.left(250);
  if (!base.isEmpty() && base.back().isHighSurrogate()) base.chop(1);
  for (QChar& c : base)
    if (c == QLatin1Char('/') || c == QLatin1Char('\\') || c.category() == QChar::Other_Control) c = QLatin1Char('_');
  if (base.startsWith(QLatin1Char('.'))) base[0] = QLatin1Char('_');
  if (base.isEmpty()) base = QStringLiteral("_");
  while (base.size() > 1 && (base + estensione).toUtf8().size() > kMaxNomeFile) {
    base.chop(1);
    if (base.back().isHighSurrogate()) base.chop(1);
  }
  return base + estensione;
}

// The exchange file of a drop lives in a folder of the user's own, made with
// owner-only rights under the temporary folder. A folder of that name that is
// a link, or belongs to somebody else, is refused: nobody else can place a
// link where the message is written.
QString CartellaScambio() {
  const QString base = gPathTemp.isEmpty() ? QDir::tempPath() : gPathTemp;
  const QString cartella = base + QStringLiteral("/prestkt-posta-") + QString::number(::getuid());
  const QByteArray c = QFile::encodeName(cartella);
  if (::mkdir(c.constData(), 0700) != 0 && errno != EEXIST)
    Raise(err::PathFileAccess, QStringLiteral("Path/File access error: ") + cartella);
  struct stat st;
  if (::lstat(c.constData(), &st) != 0 || !S_ISDIR(st.st_mode) || st.st_uid != ::getuid())
    Raise(err::PermissionDenied, QStringLiteral("Permission denied: ") + cartella);
  if ((st.st_mode & 077) != 0 && ::chmod(c.constData(), 0700) != 0)
    Raise(err::PermissionDenied, QStringLiteral("Permission denied: ") + cartella);
  return cartella;
}

// Writes the exchange file anew: an older one goes first, and the new one is
// made, never opened through a link.
void ScriviScambio(const QString& file, const QByteArray& dati) {
  const QByteArray f = QFile::encodeName(file);
  if (::unlink(f.constData()) != 0 && errno != ENOENT)
    Raise(err::PermissionDenied, QStringLiteral("Permission denied: ") + file);
  const int fd = ::open(f.constData(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
  if (fd < 0) Raise(err::PathFileAccess, QStringLiteral("Path/File access error: ") + file);
  qsizetype scritti = 0;
  while (scritti < dati.size()) {
    const ssize_t n = ::write(fd, dati.constData() + scritti, static_cast<size_t>(dati.size() - scritti));
    if (n <= 0) break;
    scritti += n;
  }
  ::close(fd);
  if (scritti != dati.size()) Raise(err::PathFileAccess, QStringLiteral("Path/File access error: ") + file);
}

// Takes the drags over lvwDocs's viewport. The drop is handed on after the
// event, with a copy of its data: the drop shows a message, and a dialog must
// not hold the drag of the program the message comes from.
class FiltroDropDocumenti : public QObject {
 public:
  explicit FiltroDropDocumenti(frmModelli* card) : QObject(card), card_(card) {
    setObjectName(QStringLiteral("FiltroDropDocumenti"));
  }

  bool eventFilter(QObject* o, QEvent* e) override {
    switch (e->type()) {
      case QEvent::DragEnter:
      case QEvent::DragMove: {
        auto* d = static_cast<QDragMoveEvent*>(e);
        if (MessaggioTrascinabile(d->mimeData())) {
          Copia(d);
          d->accept();
        } else {
          d->ignore();
        }
        return true;
      }
      case QEvent::Drop: {
        auto* d = static_cast<QDropEvent*>(e);
        if (!MessaggioTrascinabile(d->mimeData())) {
          d->ignore();
          return true;
        }
        Copia(d);
        d->accept();
        auto* copia = new QMimeData;
        for (const QString& formato : d->mimeData()->formats()) copia->setData(formato, d->mimeData()->data(formato));
        QPointer<frmModelli> card = card_;
        QTimer::singleShot(0, this, [card, copia] {
          if (card) card->lvwDocs_OLEDragDrop(copia);
          delete copia;
        });
        return true;
      }
      default:
        return QObject::eventFilter(o, e);
    }
  }

 private:
  static void Copia(QDropEvent* d) {
    if (d->possibleActions() & Qt::CopyAction)
      d->setDropAction(Qt::CopyAction);
    else
      d->setDropAction(d->proposedAction());
  }

  QPointer<frmModelli> card_;
};

}  // namespace

void InstallaDropDocumenti(frmModelli* card) {
  if (!card || !card->lvwDocs) return;
  if (card->findChild<QObject*>(QStringLiteral("FiltroDropDocumenti"), Qt::FindDirectChildrenOnly)) return;
  card->lvwDocs->setAcceptDrops(true);
  card->lvwDocs->viewport()->setAcceptDrops(true);
  card->lvwDocs->viewport()->installEventFilter(new FiltroDropDocumenti(card));
}

// ---------------------------------------------------------------- the folder

QString frmModelli::GetPathModello() {
  Guard g(kModulo, QStringLiteral("GetPathModello"), Guard::Silent);
  // Without a root there is no folder: an empty root would name folders at
  // the top of the file system.
  if (gPathDocs.isEmpty()) return {};
  QString anno;
  QString percorso;
  g([&] { anno = QString::number(DTProject->date().year()); });
  g([&] {
    percorso = gPathDocs + QLatin1Char('/') + anno;
    if (!QFileInfo(percorso).isDir() && !QDir().mkdir(percorso))
      Raise(err::PathFileAccess, QStringLiteral("Path/File access error: ") + percorso);
  });
  g([&] {
    percorso = gPathDocs + QLatin1Char('/') + anno + QLatin1Char('/') + Format(CProject, QStringLiteral("000000000"));
    if (!QFileInfo(percorso).isDir() && !QDir().mkdir(percorso))
      Raise(err::PathFileAccess, QStringLiteral("Path/File access error: ") + percorso);
  });
  return percorso;
}

void frmModelli::ColonneDocs() {
  Guard g(kModulo, QStringLiteral("ColonneDocs"));
  g([&] { ListViewReport(lvwDocs, false); });
  g([&] {
    ListViewSetColumns(lvwDocs, {QString(), QStringLiteral("Nome"), QStringLiteral("Ultima modifica")},
                       {270, 4800, 2200}, {lvwColumnLeft, lvwColumnLeft, lvwColumnLeft});
  });
}

void frmModelli::CaricaListDoc() {
  Guard g(kModulo, QStringLiteral("CaricaListDoc"));
  // The extensions met so far, each with the index of its icon.
  RecordsetPtr rsExt = Recordset::Create();
  g([&] {
    rsExt->Append(QStringLiteral("ID"), adInteger);
    rsExt->Append(QStringLiteral("FileExt"), adVarChar, 128);
    rsExt->Open();
  });
  const auto filtro = [&](const QString& est) {
    rsExt->SetFilter(QStringLiteral("FileExt='") + QString(est).replace(QLatin1Char('\''), QStringLiteral("''")) +
                     QLatin1Char('\''));
  };
  // lvwDocs is a page of SSTab1: after the filling it comes back as the tab left it.
  const bool nascosta = lvwDocs->isHidden();
  g([&] { lvwDocs->hide(); });
  g([&] {
    if (lvwDocs->ColumnCount() == 0) ColonneDocs();
  });
  g([&] { lvwDocs->ClearItems(); });
  g([&] {
    BindImageList(lvwDocs, nullptr);
    lvwDocs->SetIcons({});
  });
  g([&] {
    if (!ImageListIcon) {
      ImageListIcon = new ImageList(this, 16);
      ImageListIcon->setObjectName(QStringLiteral("ImageListIcon"));
    }
    ImageListIcon->Clear();
  });
  if (gPathDocs.isEmpty()) {
    g([&] { lvwDocs->setVisible(!nascosta); });
    return;
  }
  g([&] { PathModello = GetPathModello(); });

  // The files of the folder, as the file system gives them; no folders, no hidden files.
  QStringList nomi;
  g([&] {
    if (!PathModello.isEmpty()) nomi = QDir(PathModello).entryList(QDir::Files, QDir::Unsorted);
  });
  const bool grande = gMagnify != 16;
  for (const QString& nome : nomi) {
    const QString est = nome.split(QLatin1Char('.')).last();
    g([&] {
      filtro(est);
      if (rsExt->Eof()) {
        const int id = ImageListIcon->Count();
        rsExt->AddNew();
        rsExt->SetValue(QStringLiteral("ID"), id);
        rsExt->SetValue(QStringLiteral("FileExt"), est);
        rsExt->Update();
        ImageListIcon->Add(GetTypeIcon(PathModello + QLatin1Char('/') + nome, grande));
      }
    });
  }
  g([&] {
    ImageListIcon->SetImageSize(grande ? 32 : 16);
    if (ImageListIcon->Count() > 0) BindImageList(lvwDocs, ImageListIcon);
  });

  int n = 0;
  for (const QString& nome : nomi) {
    const QString est = nome.split(QLatin1Char('.')).last();
    int icona = -1;
    g([&] {
      filtro(est);
      if (!rsExt->Eof()) icona = CLng(rsExt->Value(QStringLiteral("ID")));
    });
    QDateTime scritto;
    g([&] { GetFileTimeInfo(PathModello + QLatin1Char('/') + nome, nullptr, nullptr, &scritto); });
    ++n;
    g([&] {
      ListViewAddLine(lvwDocs,
                      {QString(), nome, scritto.isValid() ? Format(scritto, QStringLiteral("dd/mm/yyyy hh:nn:ss")) : QString()},
                      QStringLiteral("K") + Format(n, QStringLiteral("0000")), icona);
    });
  }
  g([&] { lvwDocs->setVisible(!nascosta); });
  g([&] {
    if (lvwDocs->Count() > 0) {
      SetBottoneAbilitato(8, true);
      SetBottoneAbilitato(9, true);
    }
  });
}

bool frmModelli::CtrlFileName(const QString& nome) {
  Guard g(kModulo, QStringLiteral("CtrlFileName"));
  // Tested in this order: the first of the list found in the name is the one reported.
  static const QString vietati = QString::fromUtf8("|\\!£$%&/()=?^*§°ç.:,;<>") + QLatin1Char('"');
  bool ok = true;
  g([&] {
    for (const QChar c : vietati) {
      if (nome.contains(c)) {
        MsgBox(QStringLiteral("Non puoi utilizzare il carattere '") + c + QStringLiteral("' nel nome file!"), vbCritical);
        ok = false;
        return;
      }
    }
  });
  return ok;
}

void frmModelli::AggiungiWord(const QString& nome) { AggiungiDocumento(*this, kWord, nome); }

void frmModelli::AggiungiExcel(const QString& nome) { AggiungiDocumento(*this, kExcel, nome); }

void frmModelli::mnuAddWord_Click() { ChiediEAggiungi(*this, QStringLiteral("mnuAddWord_Click"), kWord); }

void frmModelli::mnuAddExcel_Click() { ChiediEAggiungi(*this, QStringLiteral("mnuAddExcel_Click"), kExcel); }

void frmModelli::mnuAddImport_Click() {
  Guard g(kModulo, QStringLiteral("mnuAddImport_Click"));
  g([&] { SSTab1->setEnabled(false); });
  QString percorso;
  g([&] {
    percorso = Messages().OpenFileName(QStringLiteral("Importa documento esistente"),
                                       QStringLiteral("Tutti i file (*.*)|*.*"), QString());
  });
  if (!percorso.isEmpty()) {
    // The list may not have been loaded yet.
    if (PathModello.isEmpty()) g([&] { PathModello = GetPathModello(); });
    QString nome;
    QString cartella;
    g([&] {
      nome = percorso.split(QLatin1Char('/')).last();
      cartella = percorso.left(percorso.size() - nome.size() - 1);
    });
    bool stessa = false;
    g([&] {
      const QString da = QFileInfo(cartella).canonicalFilePath();
      stessa = !da.isEmpty() && da == QFileInfo(PathModello).canonicalFilePath();
    });
    if (stessa) {
      MsgBox(QStringLiteral("Non puoi importare un file da questa cartella!"), vbExclamation);
    } else {
      QString destinazione;
      g([&] { destinazione = NelModello(PathModello, nome); });
      if (!destinazione.isEmpty()) {
        if (QFileInfo::exists(destinazione)) {
          MsgBox(QStringLiteral("Esiste già un file con questo nome tra i documenti!"), vbExclamation);
        } else {
          g([&] { Clessidra(); });
          g([&] {
            if (!QFile::copy(percorso, destinazione))
              Raise(err::PathFileAccess, QStringLiteral("Path/File access error: ") + percorso);
          });
          g([&] { CaricaListDoc(); });
          g([&] { SelezionaNome(lvwDocs, nome); });
          g([&] { CursoreNormale(); });
        }
      }
    }
  }
  g([&] { SSTab1->setEnabled(true); });
  g([&] { lvwDocs->setFocus(); });
}

void frmModelli::ApriDoc() {
  Guard g(kModulo, QStringLiteral("ApriDoc"));
  g([&] { SSTab1->setEnabled(false); });
  g([&] { Clessidra(); });
  g([&] { GShell(NelModello(PathModello, NomeSelezionato(lvwDocs)), 1, QString(), QString(), QStringLiteral("open")); });
  g([&] { SSTab1->setEnabled(true); });
  g([&] { CursoreNormale(); });
}

void frmModelli::CancDoc() {
  Guard g(kModulo, QStringLiteral("CancDoc"), Guard::Silent);
  // The folder of the model the component was given (gCProject), not the
  // card's: for a model made on this card the path does not exist and nothing goes.
  const QString codice = QString::number(gCProject);
  QString file;
  g([&] {
    file = gPathDocs + QLatin1Char('/') + codice.left(4) + QLatin1Char('/') + codice + QLatin1Char('/') +
           NomeSelezionato(lvwDocs);
  });
  if (g.If([&] {
        return MsgBox(QStringLiteral("Vuoi cancellare il file '") + NomeSelezionato(lvwDocs) + QStringLiteral("' ?"),
                      vbYesNo | vbQuestion | vbDefaultButton2) == vbYes;
      })) {
    if (EsisteFile(file)) {
      g([&] {
        if (!QFile::remove(file)) Raise(err::PermissionDenied, QStringLiteral("Permission denied: ") + file);
      });
      g([&] { lvwDocs->RemoveItem(lvwDocs->SelectedIndex()); });
      g([&] {
        if (lvwDocs->Count() > 0) {
          lvwDocs->SetSelected(0);
          lvwDocs->EnsureVisible(0);
        }
      });
    }
  }
}

void frmModelli::lvwDocs_OLEDragDrop(const QMimeData* data) {
  Guard g(kModulo, QStringLiteral("lvwDocs_OLEDragDrop"));
  Messaggio m;
  g([&] { m = LeggiMessaggio(data); });
  if (!m.valido) return;
  g([&] { MsgBox(m.oggetto, vbOKOnly); });
  const QString nome = NomeMessaggio(m.oggetto, m.estensione);
  QString scambio;
  g([&] { scambio = CartellaScambio() + QStringLiteral("/temp.msg"); });
  if (scambio.isEmpty()) return;
  g([&] { ScriviScambio(scambio, m.dati); });
  if (PathModello.isEmpty()) g([&] { PathModello = GetPathModello(); });
  QString destinazione;
  g([&] { destinazione = NelModello(PathModello, nome); });
  if (destinazione.isEmpty()) return;
  // A message with the same name is replaced without a question.
  g([&] {
    if (QFileInfo::exists(destinazione) && !QFile::remove(destinazione))
      Raise(err::PermissionDenied, QStringLiteral("Permission denied: ") + destinazione);
  });
  g([&] {
    if (!QFile::copy(scambio, destinazione))
      Raise(err::PathFileAccess, QStringLiteral("Path/File access error: ") + destinazione);
  });
  g([&] { QFile::remove(scambio); });
  g([&] { CaricaListDoc(); });
  g([&] { SelezionaNome(lvwDocs, nome); });
}

}  // namespace prestkt
