// tov-schema: SQLite databases of SQL Server packages, scripts and catalogue exports.

#include "cli_run.hpp"

int main(int argc, char **argv)
{
    return cli_run(argc, argv);
}
