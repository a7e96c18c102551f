#include "ModExcel.h"

#include <QByteArray>
#include <QDateTime>
#include <QFile>
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
  if (!workbook_add_worksheet(wb, "Foglio1")) {
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

}  // namespace prestkt
