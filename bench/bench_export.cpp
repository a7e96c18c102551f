// The exports of 100 000 activities of the large database: ADOtoXLS and
// ADOtoCSV from the recordset in memory, and with the read that fills it,
// each beside the bare work: the same rows read through the engine's own
// interface, and written with libxlsxwriter directly or with a plain FILE*.
//
//   bench_export [folder]     (default /tmp/prestkt-bench; PRESTKT_BENCH_PG for a server)
#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QTemporaryDir>
#include <cstdio>
#include <string>
#include <vector>

#include <xlsxwriter.h>

#include "BenchCommon.h"
#include "ModExcel.h"
#include "ModPrestKT.h"
#include "Procedure.h"

using namespace prestkt;

namespace {

constexpr int kRighe = 100000;

// The rows as a bare program holds them: numbers, and texts in UTF-8 (a date
// as its day, already written out).
struct Valore {
  bool nullo = true;
  bool numero = false;
  double n = 0;
  std::string s;
};
struct Tabella {
  std::vector<std::string> titoli;
  std::vector<std::vector<Valore>> righe;
};

Tabella InChiaro(const RecordsetPtr& rs) {
  Tabella t;
  for (const FieldDef& f : rs->FieldDefs()) t.titoli.push_back(f.Name.toStdString());
  for (rs->MoveFirst(); !rs->Eof(); rs->MoveNext()) {
    std::vector<Valore> riga;
    for (int i = 0; i < rs->FieldCount(); ++i) {
      const QVariant v = rs->Value(i);
      Valore x;
      x.nullo = IsNull(v);
      if (!x.nullo && rs->FieldInfo(i).Type == adDate) {
        x.s = Format(v, QStringLiteral("dd/mm/yyyy")).toStdString();
      } else if (!x.nullo && v.typeId() != QMetaType::QString) {
        x.numero = true;
        x.n = v.toDouble();
      } else if (!x.nullo) {
        x.s = v.toString().toStdString();
      }
      riga.push_back(std::move(x));
    }
    t.righe.push_back(std::move(riga));
  }
  return t;
}

qint64 XlsxNudo(const Tabella& t, const QString& file) {
  const QByteArray nome = QFile::encodeName(file);
  lxw_workbook_options opzioni{};
  opzioni.constant_memory = LXW_TRUE;
  lxw_workbook* wb = workbook_new_opt(nome.constData(), &opzioni);
  lxw_worksheet* ws = workbook_add_worksheet(wb, "Foglio1");
  for (size_t c = 0; c < t.titoli.size(); ++c)
    worksheet_write_string(ws, 0, static_cast<lxw_col_t>(c), t.titoli[c].c_str(), nullptr);
  lxw_row_t r = 1;
  for (const auto& riga : t.righe) {
    for (size_t c = 0; c < riga.size(); ++c) {
      const Valore& v = riga[c];
      if (v.nullo) continue;
      if (v.numero)
        worksheet_write_number(ws, r, static_cast<lxw_col_t>(c), v.n, nullptr);
      else
        worksheet_write_string(ws, r, static_cast<lxw_col_t>(c), v.s.c_str(), nullptr);
    }
    ++r;
  }
  return workbook_close(wb) == LXW_NO_ERROR ? static_cast<qint64>(t.righe.size()) : -1;
}

qint64 CsvNudo(const Tabella& t, const QString& file) {
  FILE* f = std::fopen(QFile::encodeName(file).constData(), "wb");
  if (!f) return -1;
  for (size_t c = 0; c < t.titoli.size(); ++c) std::fprintf(f, c ? ";\"%s\"" : "\"%s\"", t.titoli[c].c_str());
  std::fputs("\r\n", f);
  for (const auto& riga : t.righe) {
    for (size_t c = 0; c < riga.size(); ++c) {
      if (c) std::fputc(';', f);
      const Valore& v = riga[c];
      if (v.nullo) continue;
      if (v.numero)
        std::fprintf(f, "%.15g", v.n);
      else
        std::fputs(v.s.c_str(), f);
    }
    std::fputs("\r\n", f);
  }
  return std::fclose(f) == 0 ? static_cast<qint64>(t.righe.size()) : -1;
}

}  // namespace

int main(int argc, char** argv) {
  // Columns are fitted with the fonts' metrics: a GUI application, with no screen.
  if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
  QGuiApplication app(argc, argv);
  QString cartella;
  DatabasePtr db = bench::ApriDbGrande(argc, argv, &cartella);
  if (!db) return 1;
  const auto nudo = bench::Nudo::Di(*db);
  gDB = db;
  gPathDB = QDir::toNativeSeparators(cartella) + QDir::separator();
  bench::SenzaMessaggi();  // "File creato con successo!": here nobody reads it
  QTemporaryDir uscita;
  if (!uscita.isValid()) return 1;
  const QString xlsx = uscita.filePath(QStringLiteral("attivita.xlsx"));
  const QString csv = uscita.filePath(QStringLiteral("attivita.csv"));

  // The first 100 000 activities, whole rows.
  const qint64 ultima = nudo->Primo(db->Adapt(QStringLiteral("SELECT CAttivita FROM ActivitiesProd ORDER BY "
                                                             "CAttivita LIMIT 1 OFFSET %1")
                                                  .arg(kRighe - 1)));
  const QString sql = QStringLiteral("SELECT * FROM ActivitiesProd WHERE CAttivita<=%1 ORDER BY CAttivita").arg(ultima);
  const QString sqlNuda = db->Adapt(sql);
  const auto leggi = [&] {
    RecordsetPtr dao, rs;
    ApriRecordset(dao, sql, nullptr, dbOpenSnapshot);
    DAO2ADO(dao, rs);
    return rs;
  };
  RecordsetPtr rs = leggi();
  if (!rs || rs->RecordCount() != kRighe) {
    std::fprintf(stderr, "the read gave %d rows\n", rs ? rs->RecordCount() : -1);
    return 1;
  }
  const Tabella tabella = InChiaro(rs);
  const auto righeScritte = [](const QString& file, qint64 attese) {
    return QFileInfo(file).size() > 0 ? attese : -1;
  };

  bench::Caso(
      "ADOtoXLS, 100 000 activities in memory",
      [&] {
        QFile::remove(xlsx);
        ADOtoXLS(xlsx, rs);
        return righeScritte(xlsx, rs->RecordCount());
      },
      [&] { return XlsxNudo(tabella, xlsx); });
  bench::Caso(
      "ADOtoCSV, 100 000 activities in memory",
      [&] {
        ADOtoCSV(csv, rs);
        return righeScritte(csv, rs->RecordCount());
      },
      [&] { return CsvNudo(tabella, csv); });
  bench::Caso(
      "ADOtoXLS with the read, 100 000 activities",
      [&] {
        RecordsetPtr letti = leggi();
        ADOtoXLS(xlsx, letti);
        return righeScritte(xlsx, letti->RecordCount());
      },
      [&] {
        const qint64 righe = nudo->Leggi(sqlNuda);
        return XlsxNudo(tabella, xlsx) == righe ? righe : -1;
      });
  bench::Caso(
      "ADOtoCSV with the read, 100 000 activities",
      [&] {
        RecordsetPtr letti = leggi();
        ADOtoCSV(csv, letti);
        return righeScritte(csv, letti->RecordCount());
      },
      [&] {
        const qint64 righe = nudo->Leggi(sqlNuda);
        return CsvNudo(tabella, csv) == righe ? righe : -1;
      });
  RilasciaRiferimenti();
  return 0;
}
