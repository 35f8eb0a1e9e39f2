// What the statements about objects other than tables share.
#pragma once

#include "script/host_script_reader.hpp"

// Notes something that a schema has no place for: a view, a procedure ...
void host_add_left_object(host_script_reader &reader, const char *kind, const char *kinds,
                          const host_script_name &name);
