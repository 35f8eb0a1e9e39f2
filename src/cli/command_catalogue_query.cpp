// tov-schema catalogue-query: the query that prints a server's catalogue as the document that import reads.

#include "cli.hpp"
#include "cli_catalogue_query.hpp"
#include "cli_files.hpp"
#include "commands.hpp"

#include <memory>

void cli_add_catalogue_query(cli_arguments &arguments)
{
    auto output = std::make_shared<std::string>("-");
    const cli_command command = arguments.add("catalogue-query", "Print the query that exports a server's catalogue");
    command.details(
        "Run the query on the server, in the database itself, and import the document that it prints. It reads the\n"
        "system's views only; its first lines say which rights it needs and how tools must be told not to cut the\n"
        "document.\n\n"
        "Examples: tov-schema catalogue-query -o catalogue.sql\n"
        "          sqlcmd -S SERVER -d DATABASE -E -y 0 -f 65001 -b -i catalogue.sql -o catalogue.json\n"
        "          tov-schema import catalogue.json -o schema.json");
    command.option("-o,--output", *output, "where the query goes (default: standard output)");
    command.runs([output] {
        cli_write_file(*output, cli_catalogue_query);
        return cli_done;
    });
}
