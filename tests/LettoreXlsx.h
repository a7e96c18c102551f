#pragma once
// A workbook read back as the spreadsheet reads it: its first sheet's cells,
// the styles they point to, the column widths and the defined names.
#include <QFile>
#include <QString>
#include <QXmlStreamReader>
#include <map>
#include <vector>
#include <zip.h>

namespace prestkt::test {

inline QByteArray Parte(const QString& file, const char* nome) {
  int codice = 0;
  zip_t* z = zip_open(QFile::encodeName(file).constData(), ZIP_RDONLY, &codice);
  if (!z) return {};
  QByteArray out;
  zip_stat_t st;
  if (zip_stat(z, nome, 0, &st) == 0) {
    if (zip_file_t* f = zip_fopen(z, nome, 0)) {
      out.resize(static_cast<qsizetype>(st.size));
      if (zip_fread(f, out.data(), st.size) != static_cast<zip_int64_t>(st.size)) out.clear();
      zip_fclose(f);
    }
  }
  zip_close(z);
  return out;
}

struct Cella {
  QString tipo;    // the t attribute: "inlineStr", "s", "str", "b", or empty for a number
  QString valore;  // the text, the number as written, "1"/"0" for a truth value
  int stile = 0;
};
struct Stile {
  int numFmtId = 0;
  QString orizzontale, verticale, aCapo;
};

// The first sheet of a workbook as the spreadsheet reads it.
struct Foglio {
  bool letto = false;
  QString nomeFoglio;
  std::map<QString, Cella> celle;
  std::map<int, double> larghezze;  // column (1-based) -> width of its <col>
  std::vector<Stile> stili;
  std::map<int, QString> formati;    // custom number formats
  std::map<QString, QString> nomi;   // defined names

  bool Ha(const QString& rif) const { return celle.count(rif) > 0; }
  QString Testo(const QString& rif) const {
    const auto it = celle.find(rif);
    return it == celle.end() ? QStringLiteral("<none>") : it->second.valore;
  }
  const Stile& StileDi(const QString& rif) const {
    static const Stile nessuno;
    const auto it = celle.find(rif);
    if (it == celle.end() || it->second.stile >= static_cast<int>(stili.size())) return nessuno;
    return stili[static_cast<size_t>(it->second.stile)];
  }
  int Righe() const {
    int massimo = 0;
    for (const auto& [rif, c] : celle) {
      int i = 0;
      while (i < rif.size() && rif[i].isLetter()) ++i;
      massimo = std::max(massimo, rif.mid(i).toInt());
    }
    return massimo;
  }
};

inline Foglio LeggiFoglio(const QString& file) {
  Foglio f;
  const QByteArray foglio = Parte(file, "xl/worksheets/sheet1.xml");
  const QByteArray stili = Parte(file, "xl/styles.xml");
  const QByteArray cartella = Parte(file, "xl/workbook.xml");
  if (foglio.isEmpty() || stili.isEmpty() || cartella.isEmpty()) return f;
  std::vector<QString> condivisi;
  {
    QXmlStreamReader x(Parte(file, "xl/sharedStrings.xml"));
    while (!x.atEnd()) {
      x.readNext();
      if (x.isStartElement() && x.name() == u"si") condivisi.emplace_back();
      if (x.isStartElement() && x.name() == u"t" && !condivisi.empty()) condivisi.back() += x.readElementText();
    }
  }
  {
    QXmlStreamReader x(foglio);
    Cella* corrente = nullptr;
    while (!x.atEnd()) {
      x.readNext();
      if (!x.isStartElement()) continue;
      const auto a = x.attributes();
      if (x.name() == u"col") {
        for (int c = a.value("min").toInt(); c <= a.value("max").toInt(); ++c)
          f.larghezze[c] = a.value("width").toDouble();
      } else if (x.name() == u"c") {
        Cella& c = f.celle[a.value("r").toString()];
        c.tipo = a.value("t").toString();
        c.stile = a.value("s").toInt();
        corrente = &c;
      } else if ((x.name() == u"v" || x.name() == u"t") && corrente) {
        corrente->valore = x.readElementText();
        if (corrente->tipo == QLatin1String("s")) corrente->valore = condivisi.at(corrente->valore.toUInt());
      }
    }
  }
  {
    QXmlStreamReader x(stili);
    bool inCellXfs = false;
    while (!x.atEnd()) {
      x.readNext();
      if (x.isEndElement() && x.name() == u"cellXfs") inCellXfs = false;
      if (!x.isStartElement()) continue;
      const auto a = x.attributes();
      if (x.name() == u"numFmt") f.formati[a.value("numFmtId").toInt()] = a.value("formatCode").toString();
      if (x.name() == u"cellXfs") inCellXfs = true;
      if (inCellXfs && x.name() == u"xf") f.stili.push_back({a.value("numFmtId").toInt(), {}, {}, {}});
      if (inCellXfs && x.name() == u"alignment") {
        f.stili.back().orizzontale = a.value("horizontal").toString();
        f.stili.back().verticale = a.value("vertical").toString();
        f.stili.back().aCapo = a.value("wrapText").toString();
      }
    }
  }
  {
    QXmlStreamReader x(cartella);
    while (!x.atEnd()) {
      x.readNext();
      if (!x.isStartElement()) continue;
      if (x.name() == u"sheet" && f.nomeFoglio.isEmpty()) f.nomeFoglio = x.attributes().value("name").toString();
      if (x.name() == u"definedName") {
        const QString nome = x.attributes().value("name").toString();
        f.nomi[nome] = x.readElementText();
      }
    }
  }
  f.letto = true;
  return f;
}

}  // namespace prestkt::test
