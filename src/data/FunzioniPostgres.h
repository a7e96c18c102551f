#pragma once
// The functions of the old dialect that the system's SQL calls (Format,
// DateDiff, Year, Month, Day), written as PostgreSQL functions that behave as
// the callbacks installed on SQLite. Their names are mixed case: the SQL sent
// to PostgreSQL quotes every identifier, so "Format" is not the server's format().
#include <QStringList>

namespace prestkt {

// The statements that install on a PostgreSQL database the functions its SQL calls.
QStringList FunzioniPostgres();

}  // namespace prestkt
