#include "ModExcel.h"

#include <QByteArray>
#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QFontMetricsF>
#include <QGuiApplication>
#include <QHash>
#include <QImage>
#include <QRegularExpression>
#include <QSaveFile>
#include <algorithm>
#include <array>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include <xlsxwriter.h>
#include <zip.h>

namespace prestkt {

namespace {

// The versions of the formats the writers below produce.
constexpr int kVersioneOoxml = 16;
int gVersioneExcel = 0;  // 0: the writers' own
int gVersioneWord = 0;

// The first sheet of a new workbook, as the Italian spreadsheet names it.
constexpr char kFoglio[] = "Foglio1";

const char kContentTypes[] =
    R"(<?xml version="1.0" encoding="UTF-8" standalone="yes"?>
<Types xmlns="http://schemas.openxmlformats.org/package/2006/content-types">)"
    R"(<Default Extension="rels" ContentType="application/vnd.openxmlformats-package.relationships+xml"/>)"
    R"(<Default Extension="xml" ContentType="application/xml"/>)"
    R"(<Override PartName="/word/document.xml" ContentType="application/vnd.openxmlformats-officedocument.wordprocessingml.document.main+xml"/>)"
    R"(<Override PartName="/docProps/core.xml" ContentType="application/vnd.openxmlformats-package.core-properties+xml"/>)"
    R"(<Override PartName="/docProps/app.xml" ContentType="application/vnd.openxmlformats-officedocument.extended-properties+xml"/>)"
    R"(</Types>)";

const char kRels[] =
    R"(<?xml version="1.0" encoding="UTF-8" standalone="yes"?>
<Relationships xmlns="http://schemas.openxmlformats.org/package/2006/relationships">)"
    R"(<Relationship Id="rId1" Type="http://schemas.openxmlformats.org/officeDocument/2006/relationships/officeDocument" Target="word/document.xml"/>)"
    R"(<Relationship Id="rId2" Type="http://schemas.openxmlformats.org/package/2006/relationships/metadata/core-properties" Target="docProps/core.xml"/>)"
    R"(<Relationship Id="rId3" Type="http://schemas.openxmlformats.org/officeDocument/2006/relationships/extended-properties" Target="docProps/app.xml"/>)"
    R"(</Relationships>)";

// One empty paragraph on an A4 page with the usual Italian margins (2.5 cm top, 2 cm around).
const char kDocument[] =
    R"(<?xml version="1.0" encoding="UTF-8" standalone="yes"?>
<w:document xmlns:w="http://schemas.openxmlformats.org/wordprocessingml/2006/main">)"
    R"(<w:body><w:p/><w:sectPr><w:pgSz w:w="11906" w:h="16838"/>)"
    R"(<w:pgMar w:top="1417" w:right="1134" w:bottom="1134" w:left="1134" w:header="708" w:footer="708" w:gutter="0"/>)"
    R"(</w:sectPr></w:body></w:document>)";

const char kApp[] =
    R"(<?xml version="1.0" encoding="UTF-8" standalone="yes"?>
<Properties xmlns="http://schemas.openxmlformats.org/officeDocument/2006/extended-properties">)"
    R"(<Application>OCPrestKT</Application></Properties>)";

QByteArray CoreXml() {
  const QByteArray ora = QDateTime::currentDateTimeUtc().toString(Qt::ISODate).toLatin1();
  return QByteArray(R"(<?xml version="1.0" encoding="UTF-8" standalone="yes"?>
<cp:coreProperties xmlns:cp="http://schemas.openxmlformats.org/package/2006/metadata/core-properties" )"
                           R"(xmlns:dc="http://purl.org/dc/elements/1.1/" xmlns:dcterms="http://purl.org/dc/terms/" )"
                           R"(xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance">)"
                           R"(<dcterms:created xsi:type="dcterms:W3CDTF">)") +
         ora +
         QByteArray(R"(</dcterms:created><dcterms:modified xsi:type="dcterms:W3CDTF">)") + ora +
         QByteArray(R"(</dcterms:modified></cp:coreProperties>)");
}

}  // namespace

int VersioneExcel() { return gVersioneExcel > 0 ? gVersioneExcel : kVersioneOoxml; }

int VersioneWord() { return gVersioneWord > 0 ? gVersioneWord : kVersioneOoxml; }

void ImpostaVersioniOffice(int excel, int word) {
  gVersioneExcel = excel;
  gVersioneWord = word;
}

bool ScriviDocxVuoto(const QString& path) {
  if (path.isEmpty()) return false;
  const QByteArray nome = QFile::encodeName(path);
  int codice = 0;
  zip_t* zip = zip_open(nome.constData(), ZIP_CREATE | ZIP_TRUNCATE, &codice);
  if (!zip) return false;
  // The parts stay alive until zip_close, which reads them.
  const std::vector<std::pair<const char*, QByteArray>> parti = {
      {"[Content_Types].xml", QByteArray(kContentTypes)},
      {"_rels/.rels", QByteArray(kRels)},
      {"word/document.xml", QByteArray(kDocument)},
      {"docProps/core.xml", CoreXml()},
      {"docProps/app.xml", QByteArray(kApp)},
  };
  bool ok = true;
  for (const auto& [parte, testo] : parti) {
    zip_source_t* src = zip_source_buffer(zip, testo.constData(), static_cast<zip_uint64_t>(testo.size()), 0);
    if (!src) {
      ok = false;
      break;
    }
    if (zip_file_add(zip, parte, src, ZIP_FL_ENC_UTF_8 | ZIP_FL_OVERWRITE) < 0) {
      zip_source_free(src);
      ok = false;
      break;
    }
  }
  if (!ok) {
    zip_discard(zip);
    QFile::remove(path);
    return false;
  }
  if (zip_close(zip) != 0) {
    zip_discard(zip);
    QFile::remove(path);
    return false;
  }
  return true;
}

bool ScriviXlsxVuoto(const QString& path) {
  if (path.isEmpty()) return false;
  const QByteArray nome = QFile::encodeName(path);
  lxw_workbook* wb = workbook_new(nome.constData());
  if (!wb) return false;
  if (!workbook_add_worksheet(wb, kFoglio)) {
    workbook_close(wb);
    QFile::remove(path);
    return false;
  }
  if (workbook_close(wb) != LXW_NO_ERROR) {
    QFile::remove(path);
    return false;
  }
  return QFile::exists(path);
}

// ---------------------------------------------------------------- exports

namespace {

const QString kModulo = QStringLiteral("ModExcel");
constexpr int kErroreApplicazione = 1004;  // what the spreadsheet raises on a call it refuses
const QString kFiltroNessuno = QStringLiteral("0");

// The test of the system: on the lower-case path, its last 4 or 5 characters.
bool PercorsoExcel(const QString& path) {
  const QString p = path.toLower();
  return p.right(4) == QLatin1String(".xls") || p.right(5) == QLatin1String(".xlsx");
}

// A value that leaves its cell empty: Null, or an empty text.
bool Vuoto(const QVariant& v) {
  return IsNull(v) || (v.typeId() == QMetaType::QString && v.toString().isEmpty());
}

bool Numero(const QVariant& v) {
  switch (v.typeId()) {
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::Char:
    case QMetaType::SChar:
    case QMetaType::UChar:
    case QMetaType::Double:
    case QMetaType::Float:
      return true;
    default:
      return false;
  }
}

// A file that could not be written: a folder that is not there is "Path not
// found", anything else "Path/File access error", with the reason.
[[noreturn]] void RaiseFile(const QString& path, const QString& motivo) {
  if (!QFileInfo(QFileInfo(path).absolutePath()).isDir())
    Raise(err::PathNotFound, QStringLiteral("Path not found: ") + path);
  Raise(err::PathFileAccess, QStringLiteral("Path/File access error: ") + path + QStringLiteral(": ") + motivo);
}

// The system deletes the file of that name before it writes the new one.
void CancellaEsistente(const QString& path) {
  if (QFileInfo::exists(path) && !QFile::remove(path))
    Raise(err::PermissionDenied, QStringLiteral("Permission denied: ") + path);
}

// A title of the CSV: the field name as TestoSql quotes it ("Null" for an
// empty one), or bare.
QString TitoloCsv(const QString& nome, bool soloTesto) {
  if (soloTesto) return nome;
  const Sql quotato = TestoSql(nome);
  if (quotato.Params().isEmpty()) return quotato.Text();
  return QLatin1Char('"') + quotato.Params().front().toString() + QLatin1Char('"');
}

void ScriviCsv(const QString& path, Recordset& rs, const Progress& progress, bool senzaTitoli, bool soloTesto,
               const QString& intestazione) {
  // Written under a temporary name and put in place whole: a failure leaves no half file.
  QSaveFile file(path);
  if (!file.open(QIODevice::WriteOnly)) RaiseFile(path, file.errorString());
  QByteArray riga;
  const auto scrivi = [&](const QString& testo) {
    riga = InWindows1252(testo);
    riga += "\r\n";
    file.write(riga);
  };
  if (!intestazione.isEmpty()) scrivi(intestazione);
  const int campi = rs.FieldCount();
  if (!senzaTitoli) {
    QStringList titoli;
    for (int i = 0; i < campi; ++i) titoli << TitoloCsv(rs.FieldInfo(i).Name, soloTesto);
    scrivi(titoli.join(QLatin1Char(';')));
  }
  const int totale = rs.RecordCount();
  if (progress) progress(0, totale);
  int fatte = 0;
  QString testo;
  for (rs.MoveFirst(); !rs.Eof(); rs.MoveNext()) {
    testo.clear();
    for (int i = 0; i < campi; ++i) {
      if (i > 0) testo += QLatin1Char(';');
      testo += NullToStr(rs.Value(i));
    }
    scrivi(testo);
    if (progress) progress(++fatte, totale);
  }
  if (!file.commit()) RaiseFile(path, file.errorString());
}

// The sheet's texts measured as the spreadsheet measures them when it fits a
// column: the width of each character in the workbook's font, Calibri 11 at
// 96 dpi, in whole pixels, added up. Where Calibri is not installed the
// font system's stand-in is measured (on Linux usually DejaVu Sans, wider):
// the columns then have room to spare. Without a GUI application there are
// no fonts: each character then counts as wide as a digit of Calibri.
class MetroFoglio {
 public:
  static MetroFoglio& Unico() {
    static MetroFoglio metro;
    return metro;
  }
  int Larghezza(const QString& testo) {
    int px = 0;
    for (const QChar c : testo) px += Carattere(c.unicode());
    return px;
  }

 private:
  static constexpr int kCifra = 7;  // a digit of Calibri 11: the sheet's unit of width
  MetroFoglio() {
    vicini_.fill(-1);
    if (!qobject_cast<QGuiApplication*>(QCoreApplication::instance())) return;
    // A device of 96 dpi, whatever the screen: the sheet counts in those pixels.
    dispositivo_ = QImage(1, 1, QImage::Format_RGB32);
    const int dpm = qRound(96 / 0.0254);
    dispositivo_.setDotsPerMeterX(dpm);
    dispositivo_.setDotsPerMeterY(dpm);
    QFont font(QStringLiteral("Calibri"));
    font.setPointSizeF(11);
    metriche_.emplace(font, &dispositivo_);
  }
  int Carattere(char16_t c) {
    if (c < vicini_.size()) {
      int& w = vicini_[c];
      if (w < 0) w = Misura(c);
      return w;
    }
    auto it = altri_.constFind(c);
    if (it == altri_.constEnd()) it = altri_.insert(c, Misura(c));
    return *it;
  }
  int Misura(char16_t c) const {
    return metriche_ ? qRound(metriche_->horizontalAdvance(QChar(c))) : kCifra;
  }

  QImage dispositivo_;
  std::optional<QFontMetricsF> metriche_;
  std::array<int, 0x250> vicini_{};  // Latin letters and signs, the usual content
  QHash<char16_t, int> altri_;
};

// A column fitted to its widest text: that width and room for the cell's
// margins and the grid line, as the spreadsheet leaves them (5 px), and 2 px
// more so that a pixel of difference in the font never cuts the text. The
// spreadsheet's widest column is 255 characters.
constexpr int kMarginiColonna = 7;
constexpr int kColonnaMassima = 255 * 7 + 5;
int LarghezzaColonna(int testo) { return std::min(testo + kMarginiColonna, kColonnaMassima); }

// What a number shows in the General format: at most 11 characters.
constexpr int kCifreGenerale = 11;

// The workbook under a temporary name in the folder of the file, put in place
// by CloseFileExcel. Dropped unclosed, it leaves nothing behind.
struct Cartella {
  lxw_workbook* wb = nullptr;
  lxw_worksheet* foglio = nullptr;
  QString temporaneo;
  ~Cartella() {
    if (!wb) return;
    workbook_close(wb);
    QFile::remove(temporaneo);
  }
};

// The workbook is kept row by row (constant memory): the rows go out in order
// and the sheet holds its texts inline.
std::unique_ptr<Cartella> ApriFileExcel(const QString& path) {
  static int contatore = 0;
  const QFileInfo info(path);
  auto c = std::make_unique<Cartella>();
  c->temporaneo = info.absolutePath() + QStringLiteral("/.") + info.fileName() + QStringLiteral(".") +
                  QString::number(QCoreApplication::applicationPid()) + QLatin1Char('-') +
                  QString::number(++contatore) + QStringLiteral(".tmp");
  const QByteArray nome = QFile::encodeName(c->temporaneo);
  lxw_workbook_options opzioni{};
  opzioni.constant_memory = LXW_TRUE;
  c->wb = workbook_new_opt(nome.constData(), &opzioni);
  if (!c->wb) Raise(err::OutOfMemory);
  c->foglio = workbook_add_worksheet(c->wb, kFoglio);
  if (!c->foglio) Raise(err::PathFileAccess, QStringLiteral("Path/File access error: the sheet's work files"));
  return c;
}

// Saves the workbook under its name. False when it could not: the failure is
// in the log and no file of that name is left half written.
bool CloseFileExcel(Cartella& c, const QString& path) {
  Guard g(kModulo, QStringLiteral("CloseFileExcel"));
  return g([&] {
    const lxw_error esito = workbook_close(std::exchange(c.wb, nullptr));
    if (esito != LXW_NO_ERROR) {
      QFile::remove(c.temporaneo);
      RaiseFile(path, QString::fromUtf8(lxw_strerror(esito)));
    }
    if (!QFile::rename(c.temporaneo, path)) {
      QFile::remove(c.temporaneo);
      RaiseFile(path, QStringLiteral("rename"));
    }
  });
}

// The formats of the cells: one per alignment and kind of content, made once.
class FormatiCelle {
 public:
  enum Contenuto { Normale, Testo, Data, DataOra, kContenuti };
  explicit FormatiCelle(lxw_workbook* wb) : wb_(wb) {}
  lxw_format* Di(AllineaCella allinea, Contenuto contenuto) {
    lxw_format*& f = formati_[static_cast<int>(allinea)][contenuto];
    if (f) return f;
    f = workbook_add_format(wb_);
    switch (allinea) {
      case AllineaCella::Sinistra: format_set_align(f, LXW_ALIGN_LEFT); break;
      case AllineaCella::Destra: format_set_align(f, LXW_ALIGN_RIGHT); break;
      case AllineaCella::Centro: format_set_align(f, LXW_ALIGN_CENTER); break;
      case AllineaCella::Generale: break;
    }
    format_set_align(f, LXW_ALIGN_VERTICAL_BOTTOM);  // and no wrapping, the sheet's default
    switch (contenuto) {
      case Testo: format_set_num_format_index(f, 49); break;  // "@", the built-in Text format
      case Data: format_set_num_format(f, "dd/mm/yyyy"); break;
      case DataOra: format_set_num_format(f, "dd/mm/yyyy hh:mm:ss"); break;
      default: break;
    }
    return f;
  }

 private:
  lxw_workbook* wb_;
  lxw_format* formati_[4][kContenuti] = {};
};

void Verifica(lxw_error esito) {
  if (esito != LXW_NO_ERROR) Raise(err::InvalidProcedureCall, QString::fromUtf8(lxw_strerror(esito)));
}

// A text into a cell. A text that starts with an apostrophe is a text the
// spreadsheet must not read as anything else: the apostrophe is the mark, not
// part of the value, so the cell holds the rest as a text in the Text format.
// Gives the width the cell's text takes.
int ScriviTesto(lxw_worksheet* foglio, lxw_row_t r, lxw_col_t c, QString testo, FormatiCelle& formati,
                AllineaCella allinea) {
  FormatiCelle::Contenuto contenuto = FormatiCelle::Normale;
  if (testo.startsWith(QLatin1Char('\''))) {
    testo.remove(0, 1);
    contenuto = FormatiCelle::Testo;
  }
  const QByteArray utf8 = testo.toUtf8();
  Verifica(worksheet_write_string(foglio, r, c, utf8.constData(), formati.Di(allinea, contenuto)));
  return MetroFoglio::Unico().Larghezza(testo);
}

// A value into a cell as it is: numbers as numbers, truth values as such,
// dates as dates, the rest as text. Gives the width the cell shows.
int ScriviValore(lxw_worksheet* foglio, lxw_row_t r, lxw_col_t c, const QVariant& v, FormatiCelle& formati,
                 AllineaCella allinea) {
  if (Numero(v)) {
    Verifica(worksheet_write_number(foglio, r, c, v.toDouble(), formati.Di(allinea, FormatiCelle::Normale)));
    return MetroFoglio::Unico().Larghezza(CStr(v).left(kCifreGenerale));
  }
  if (v.typeId() == QMetaType::Bool) {
    Verifica(worksheet_write_boolean(foglio, r, c, v.toBool(), formati.Di(allinea, FormatiCelle::Normale)));
    return MetroFoglio::Unico().Larghezza(CStr(v).toUpper());
  }
  if (v.typeId() == QMetaType::QDateTime || v.typeId() == QMetaType::QDate) {
    const QDateTime d = CDate(v);
    lxw_datetime dt{d.date().year(), d.date().month(), d.date().day(), d.time().hour(), d.time().minute(),
                    static_cast<double>(d.time().second())};
    const bool ora = d.time() != QTime(0, 0);
    Verifica(worksheet_write_datetime(foglio, r, c, &dt,
                                      formati.Di(allinea, ora ? FormatiCelle::DataOra : FormatiCelle::Data)));
    return MetroFoglio::Unico().Larghezza(CStr(d));
  }
  return ScriviTesto(foglio, r, c, v.typeId() == QMetaType::QString ? v.toString() : CStr(v), formati, allinea);
}

// A name the spreadsheet accepts: a letter, "_" or "\" first, then letters,
// digits, "_", "." or "\", at most 255 in all; not a cell's address ("AB12",
// "R1C1", "R", "C"), which the sheet would read as the cell.
bool NomeValido(const QString& nome) {
  static const QRegularExpression forma(QStringLiteral(R"(^[\p{L}_\\][\p{L}\p{N}_.\\]{0,254}$)"));
  static const QRegularExpression r1c1(QStringLiteral("^(R[0-9]*(C[0-9]*)?|C[0-9]*)$"),
                                       QRegularExpression::CaseInsensitiveOption);
  static const QRegularExpression a1(QStringLiteral("^([A-Z]{1,3})([0-9]{1,7})$"),
                                     QRegularExpression::CaseInsensitiveOption);
  if (!forma.match(nome).hasMatch() || r1c1.match(nome).hasMatch()) return false;
  const QRegularExpressionMatch m = a1.match(nome);
  if (!m.hasMatch()) return true;
  int colonna = 0;
  for (const QChar c : m.captured(1).toUpper()) colonna = colonna * 26 + (c.unicode() - 'A' + 1);
  const qint64 riga = m.captured(2).toLongLong();
  return colonna > LXW_COL_MAX || riga < 1 || riga > LXW_ROW_MAX;
}

// The named range, as the sheet's name and R1C1 to the last row and column.
void DefinisciRange(lxw_workbook* wb, const QString& nome, int ultimaRiga, int ultimaColonna) {
  // The spreadsheet's own refusal of a name it can't take.
  if (!NomeValido(nome)) Raise(kErroreApplicazione, QStringLiteral("The name that you entered is not valid: ") + nome);
  if (ultimaColonna < 1) Raise(err::InvalidProcedureCall);
  char colonna[16];
  lxw_col_to_name(colonna, static_cast<lxw_col_t>(ultimaColonna - 1), LXW_TRUE);
  const QByteArray riferimento = QStringLiteral("=%1!$A$1:%2$%3")
                                     .arg(QString::fromLatin1(kFoglio), QString::fromLatin1(colonna))
                                     .arg(ultimaRiga)
                                     .toUtf8();
  Verifica(workbook_define_name(wb, nome.toUtf8().constData(), riferimento.constData()));
}

}  // namespace

AllineaCella AllineamentoCampo(int tipo) {
  switch (tipo) {
    case adChar:
    case adWChar:
    case adVarChar:
    case adLongVarChar:
    case adVarWChar:
    case adLongVarWChar:
      return AllineaCella::Sinistra;
    case adSmallInt:
    case adInteger:
    case adSingle:
    case adDouble:
    case adCurrency:
    case adDecimal:
    case adTinyInt:
    case adUnsignedTinyInt:
    case adBigInt:
    case adNumeric:
      return AllineaCella::Destra;
    case adDate:
    case adBoolean:
      return AllineaCella::Centro;
    default:
      return AllineaCella::Generale;  // a variant: the sheet's own, numbers right and texts left
  }
}

QByteArray InWindows1252(const QString& testo) {
  // 0x80..0x9F of the code page; 0 where it has no character.
  static constexpr char16_t kAlti[32] = {
      0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
      0x2039, 0x0152, 0,      0x017D, 0,      0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
      0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178};
  QByteArray out;
  out.reserve(testo.size());
  for (qsizetype i = 0; i < testo.size(); ++i) {
    const char16_t c = testo.at(i).unicode();
    if (c < 0x80 || (c >= 0xA0 && c <= 0xFF)) {
      out += static_cast<char>(c);
      continue;
    }
    char byte = '?';
    for (int k = 0; k < 32; ++k)
      if (kAlti[k] != 0 && kAlti[k] == c) byte = static_cast<char>(0x80 + k);
    // One character beyond the 16 bits is one mark, not two.
    if (QChar::isHighSurrogate(c) && i + 1 < testo.size() && testo.at(i + 1).isLowSurrogate()) ++i;
    out += byte;
  }
  return out;
}

void ADOtoCSV(const QString& path, const RecordsetPtr& rs, const Progress& progress, bool senzaTitoli,
              bool soloTesto, const QString& intestazione, const QString& nomeRange) {
  if (PercorsoExcel(path)) {
    ADOtoXLS(path, rs, progress, false, intestazione, nomeRange);
    return;
  }
  Guard g(kModulo, QStringLiteral("ADOtoCSV"));
  if (!rs) {
    g([] { Raise(err::ObjectNotSet); });
    return;
  }
  g([&] { CancellaEsistente(path); });
  // Every row goes out: a filter is lifted and put back at the end.
  const QString filtro = g.Value([&] { return rs->Filter(); }, kFiltroNessuno);
  if (filtro != kFiltroNessuno) g([&] { rs->SetFilter(QString()); });
  const bool scritto = g([&] { ScriviCsv(path, *rs, progress, senzaTitoli, soloTesto, intestazione); });
  if (filtro != kFiltroNessuno) g([&] { rs->SetFilter(filtro); });
  if (scritto) MsgBox(QStringLiteral("File creato con successo!"), vbInformation);
}

void ADOtoXLS(const QString& path, const RecordsetPtr& rs, const Progress& progress, bool /*visibile*/,
              const QString& intestazione, const QString& nomeRange) {
  Guard g(kModulo, QStringLiteral("ADOtoXLS"));
  if (!rs) {
    g([] { Raise(err::ObjectNotSet); });
    return;
  }
  // 1. All the rows, and the count of fields.
  const QString filtro = g.Value([&] { return rs->Filter(); }, kFiltroNessuno);
  if (filtro != kFiltroNessuno) g([&] { rs->SetFilter(QString()); });
  const int campi = g.Value([&] { return rs->FieldCount(); }, 0);
  // 2. The workbook; without one the export ends here (and the filter stays lifted, as it stands).
  std::unique_ptr<Cartella> cartella;
  if (!g([&] { cartella = ApriFileExcel(path); })) return;
  lxw_worksheet* foglio = cartella->foglio;
  FormatiCelle formati(cartella->wb);
  // The widest text of each field's column.
  std::vector<int> larghezze(static_cast<size_t>(std::max(campi, 0)), 0);
  const auto misura = [&](int colonna, int px) {
    if (colonna < campi) larghezze[static_cast<size_t>(colonna)] = std::max(larghezze[static_cast<size_t>(colonna)], px);
  };
  // 4. The titles in row 1: the heading's parts, or the field names.
  g([&] {
    const QStringList titoli = !intestazione.isEmpty() ? intestazione.split(QLatin1Char(';')) : [&] {
      QStringList nomi;
      for (int i = 0; i < campi; ++i) nomi << rs->FieldInfo(i).Name;
      return nomi;
    }();
    for (int c = 0; c < titoli.size(); ++c)
      g([&] { misura(c, ScriviTesto(foglio, 0, static_cast<lxw_col_t>(c), titoli[c], formati, AllineaCella::Generale)); });
  });
  // 5. The progress, from 0 to the count of rows.
  const int totale = g.Value([&] { return rs->RecordCount(); }, 0);
  if (progress) progress(0, totale);
  // 6. The rows from row 2: a date as the text "'dd/mm/yyyy", the rest as it is.
  std::vector<AllineaCella> allinea;
  std::vector<bool> date;
  g([&] {
    for (int i = 0; i < campi; ++i) {
      allinea.push_back(AllineamentoCampo(rs->FieldInfo(i).Type));
      date.push_back(rs->FieldInfo(i).Type == adDate);
    }
  });
  lxw_row_t riga = 1;
  g([&] {
    for (rs->MoveFirst(); !rs->Eof(); rs->MoveNext()) {
      if (riga >= LXW_ROW_MAX) Raise(err::SubscriptOutOfRange, QStringLiteral("More rows than a sheet holds"));
      for (int i = 0; i < campi; ++i) {
        g([&] {
          const QVariant v = rs->Value(i);
          if (Vuoto(v)) return;
          const auto c = static_cast<lxw_col_t>(i);
          const int px = date[static_cast<size_t>(i)]
                             ? ScriviTesto(foglio, riga, c, QLatin1Char('\'') + Format(v, QStringLiteral("dd/mm/yyyy")),
                                           formati, allinea[static_cast<size_t>(i)])
                             : ScriviValore(foglio, riga, c, v, formati, allinea[static_cast<size_t>(i)]);
          misura(i, px);
        });
      }
      ++riga;
      if (progress) progress(static_cast<int>(riga) - 1, totale);
    }
  });
  // 7. The filter back, and each field's column fitted to its texts.
  if (filtro != kFiltroNessuno) g([&] { rs->SetFilter(filtro); });
  for (int i = 0; i < campi; ++i) {
    if (larghezze[static_cast<size_t>(i)] == 0) continue;  // nothing to fit: the column stays as it is
    g([&] {
      Verifica(worksheet_set_column_pixels(foglio, static_cast<lxw_col_t>(i), static_cast<lxw_col_t>(i),
                                           static_cast<uint32_t>(LarghezzaColonna(larghezze[static_cast<size_t>(i)])),
                                           nullptr));
    });
  }
  // 8. The named range over the titles and the rows.
  if (!nomeRange.isEmpty()) g([&] { DefinisciRange(cartella->wb, nomeRange, static_cast<int>(riga), campi); });
  // 9. The file in place of an older one of that name.
  g([&] { CancellaEsistente(path); });
  if (CloseFileExcel(*cartella, path)) MsgBox(QStringLiteral("File creato con successo!"), vbInformation);
}

}  // namespace prestkt
