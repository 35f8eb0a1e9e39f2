// The keyword lookup and the character tables under their plain names, for code that is linked with the static form of
// the library and declares them itself. Hidden from the dynamic linker, for the reason that tov_defval.h gives, and in
// a source of their own, so that they are linked only where somebody asks for them.

#include "defval/defval_chars.hpp"
#include "defval/defval_tokenizer.hpp"

#define TOV_HIDDEN [[gnu::visibility("hidden")]]

extern "C" {

TOV_HIDDEN extern const unsigned char sqlite3CtypeMap[256];
TOV_HIDDEN extern const unsigned char sqlite3UpperToLower[256];
TOV_HIDDEN int sqlite3KeywordCode(const char *text, int n) noexcept;

const unsigned char sqlite3CtypeMap[256] = {TOV_VALUES_256(tov_char_class_of)};

const unsigned char sqlite3UpperToLower[256] = {TOV_VALUES_256(tov_lower_of)};

int sqlite3KeywordCode(const char *text, int n) noexcept
{
    return keywordCode(text, n);
}

} // extern "C"
