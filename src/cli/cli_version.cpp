#include "cli_version.hpp"

#include "tov_version.h"

#include <expat.h>
#include <openssl/crypto.h>
#include <sqlite3.h>
#include <unicode/uversion.h>
#include <zip.h>

static std::string my_icu()
{
    UVersionInfo version;
    char text[U_MAX_VERSION_STRING_LENGTH];
    u_getVersion(version);
    u_versionToString(version, text);
    return std::string("ICU ") + text;
}

static std::string my_expat()
{
    const std::string version = XML_ExpatVersion(); // expat_2.5.0
    return "Expat " + version.substr(version.find('_') + 1);
}

static std::string my_sqlite_options()
{
    std::string text;
    for (int n = 0; const char *option = sqlite3_compileoption_get(n); n++)
        text += std::string("  ") + option + "\n";
    return text;
}

std::string cli_version(bool is_verbose)
{
    const std::string line = "tov-schema " TOV_SCHEMA_VERSION "\n";
    if (!is_verbose)
        return line;
    return line + "compiler " __VERSION__ "\n" + my_expat() + "\n" + my_icu() + "\nlibzip " + zip_libzip_version() +
           "\n" + OpenSSL_version(OPENSSL_VERSION) + "\nSQLite " + sqlite3_libversion() + "\n" + my_sqlite_options();
}
