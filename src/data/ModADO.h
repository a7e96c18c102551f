#pragma once
// Copies of disconnected recordsets: into another one, into a table, into a file.
#include <QString>
#include <QStringList>
#include <QVariant>

#include "Procedure.h"
#include "Recordset.h"

namespace prestkt {

// Copies rsFrom into rsTo. tutti: the filter filtro replaces the source's own
// for the copy, which is restored at the end; otherwise filtro is applied.
// aggiungi appends to rsTo; sostituisci first deletes rsTo's rows under filtro.
void ADO2ADO(const RecordsetPtr& rsFrom, RecordsetPtr& rsTo, bool tutti, bool aggiungi,
             const QVariant& filtro = {}, bool sostituisci = false, const Progress& progress = {});

// Writes rs into a table: creates it when missing (primary key "PRIMARYKEY"
// on chiavi, one index per entry of indici), then, with copiaDati, appends
// every row in a transaction of its own.
bool ADO2DAO(const RecordsetPtr& rs, const QString& nomeTabella, bool copiaDati,
             const QStringList& chiavi = {}, const QStringList& indici = {});

// Deletes every row of rs under the filter, then clears the filter.
void CancellaFiltrati(const RecordsetPtr& rs, const QString& filtro);

// Saves rs to path (XML, or binary when binario). A null rs does nothing.
bool ScriviXML(const RecordsetPtr& rs, const QString& path, bool togliFiltro, bool binario = false);

}  // namespace prestkt
