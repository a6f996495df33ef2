// The embedded engine: SQLite behind the driver port, with the Oracle
// dialect shim. RegisterSQLiteDriver makes it available to ConnectDb as
// "sqlite"; TDbConnectParams::Server names a database file or ":memory:"
// (a fresh database for each connection), Username the session user
// ("KELMAR" when empty).
#pragma once

void RegisterSQLiteDriver();
