// tov-schema: from a SQL Server catalogue export to a working SQLite database.

#include "cli_run.hpp"

int main(int argc, char **argv)
{
    return cli_run(argc, argv);
}
