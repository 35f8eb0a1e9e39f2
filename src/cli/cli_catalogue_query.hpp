// The query of src/host/catalogue.sql, which the build puts into the program.
#pragma once

extern const char *const cli_catalogue_query;
