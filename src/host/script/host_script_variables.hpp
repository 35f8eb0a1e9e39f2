// Placeholders in scripts: $(name), which the script or the user defines, and those that other tools replace.
#pragma once

#include "script/host_script_reader.hpp"

// Replaces them in the source's text, and reports variables that nobody defines.
void host_replace_variables(KT_context *ctx, host_script_session &session, host_script_source &source);
