#include "drivers/sqlite/sqlitedriver.h"

#include "drivers/sqlite/sqliteconnection.h"

void RegisterSQLiteDriver() { RegisterDbDriver(u"sqlite", &TSQLiteConnection::Open); }
