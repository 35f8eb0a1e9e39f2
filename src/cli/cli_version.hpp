// What the command is made of.
#pragma once

#include <string>

// A line; if it is to be verbose, with the versions of the libraries, as they are now and not when the command was
// built, and SQLite's build options.
std::string cli_version(bool is_verbose);
