#include "cli_harmless.hpp"

#include "cli_files.hpp"
#include "cli_json.hpp"
#include "kt_chars.h"

std::string cli_harmless(const std::string &text)
{
    const cli_context context;
    kt_owned_string line{context.ctx};
    KT_string__alloc(context.ctx, line.out());
    cli_check(context.ctx, "");
    KT_string__append__harmless(context.ctx, line, text.c_str());
    cli_check(context.ctx, "");
    return KT_string__sz(line);
}

void cli_tell_line(const std::string &text)
{
    cli_tell("%s\n", cli_harmless(text).c_str());
}
