// The server's tables give some characters the weights of others: those that a language does not count as letters of
// their own have the weights of two, a wide letter has those of the narrow one unless width counts. ICU gives them
// weights that differ in a later level, which then would not do for all combinations of options.
#include "collate/ext_fold.hpp"

#include "collate/ext_case.hpp"
#include "collate/ext_utf8.hpp"

#include <unicode/uchar.h>
#include <unicode/unorm2.h>
#include <unicode/utf16.h>

#include <new>

namespace {

struct two_letters {
    char16_t character;
    std::u16string_view letters;
};

} // namespace

static constexpr two_letters expansions[] = {
    {u'Æ', u"AE"}, {u'æ', u"ae"}, {u'Œ', u"OE"}, {u'œ', u"oe"}, {u'ß', u"ss"}, {u'Þ', u"TH"},  {u'þ', u"th"},
    {u'Ĳ', u"IJ"}, {u'ĳ', u"ij"}, {u'ﬀ', u"ff"}, {u'ﬁ', u"fi"}, {u'ﬂ', u"fl"}, {u'ﬃ', u"ffi"}, {u'ﬄ', u"ffl"},
    {u'ﬅ', u"st"}, {u'ﬆ', u"st"}, {u'Ǆ', u"DŽ"}, {u'ǅ', u"Dž"}, {u'ǆ', u"dž"}, {u'Ǉ', u"LJ"},  {u'ǈ', u"Lj"},
    {u'ǉ', u"lj"}, {u'Ǌ', u"NJ"}, {u'ǋ', u"Nj"}, {u'ǌ', u"nj"}, {u'Ǳ', u"DZ"}, {u'ǲ', u"Dz"},  {u'ǳ', u"dz"},
};

static const UNormalizer2 *my_normalizer(const UNormalizer2 *(*get)(UErrorCode *))
{
    UErrorCode code = U_ZERO_ERROR;
    const UNormalizer2 *normalizer = get(&code);
    if (U_FAILURE(code)) // its data are in the library, so it is memory that is lacking
        throw std::bad_alloc();
    return normalizer;
}

static void my_append(std::u16string &text, UChar32 c)
{
    if (U_IS_SUPPLEMENTARY(c)) {
        text += static_cast<char16_t>(U16_LEAD(c));
        text += static_cast<char16_t>(U16_TRAIL(c));
    } else {
        text += static_cast<char16_t>(c);
    }
}

static bool my_is_own_letter(const ext_language &language, char16_t c)
{
    if (c == u'Æ' || c == u'æ')
        return language.own_letters & ext_own_ae;
    return (c == u'Þ' || c == u'þ') && (language.own_letters & ext_own_thorn);
}

static std::u16string_view my_expansion(const ext_language &language, UChar32 c)
{
    for (const two_letters &expansion : expansions) {
        if (expansion.character == c && !my_is_own_letter(language, expansion.character))
            return expansion.letters;
    }
    return {};
}

static bool my_has_width(UChar32 c)
{
    return c == 0x3000 || (c >= 0xFF01 && c <= 0xFFEE); // the blank, and a block of their own
}

// The usual form of a wide or narrow one; each is a single character.
static UChar32 my_without_width(UChar32 c)
{
    UChar decomposed[8];
    UErrorCode code = U_ZERO_ERROR;
    const int32_t length = unorm2_getRawDecomposition(my_normalizer(unorm2_getNFKCInstance), c, decomposed,
                                                      static_cast<int32_t>(std::size(decomposed)), &code);
    return U_SUCCESS(code) && length == 1 ? decomposed[0] : c;
}

static UChar32 my_without_kana(UChar32 c)
{
    static constexpr UChar32 to_katakana = 0x60;
    const bool is_hiragana = (c >= 0x3041 && c <= 0x3096) || c == 0x309D || c == 0x309E;
    return is_hiragana ? c + to_katakana : c;
}

static bool my_is_katakana(UChar32 c)
{
    return (c >= 0x30A1 && c <= 0x30FA) || c == 0x30FD || c == 0x30FE;
}

static bool my_is_variation_selector(UChar32 c)
{
    return (c >= 0xFE00 && c <= 0xFE0F) || (c >= 0xE0100 && c <= 0xE01EF);
}

// Characters that canonically equivalent strings have in different number: marks, and the parts of Hangul syllables.
static bool my_is_part(UChar32 c)
{
    return (U_GET_GC_MASK(c) & (U_GC_M_MASK | U_GC_C_MASK)) || (c >= 0x1160 && c <= 0x11FF);
}

static void my_add_mark(UChar32 c, UChar32 narrow, const ext_rules &rules, std::u32string &marks)
{
    static constexpr char32_t katakana = 1;
    static constexpr char32_t other_width = 2;
    if (my_is_variation_selector(c)) {
        if (rules.variation)
            marks += static_cast<char32_t>(c);
    } else if (rules.version == 90 && U_IS_SUPPLEMENTARY(c)) {
        marks += static_cast<char32_t>(c);
    } else if ((rules.kana || rules.width || rules.variation) && !my_is_part(narrow)) {
        marks += (rules.kana && my_is_katakana(narrow) ? katakana : 0) | (rules.width && c != narrow ? other_width : 0);
    }
}

static void my_fold_character(UChar32 c, const ext_rules &rules, ext_folded &folded)
{
    if (const std::u16string_view letters = my_expansion(*rules.language, c); !letters.empty()) {
        folded.text += letters;
        for (const char16_t letter : letters)
            my_add_mark(letter, letter, rules, folded.marks);
        return;
    }
    const UChar32 narrow = my_has_width(c) ? my_without_width(c) : c;
    my_append(folded.text, my_without_kana(narrow));
    my_add_mark(c, narrow, rules, folded.marks);
}

template <class Text> static void my_trim(Text &text, typename Text::value_type last)
{
    while (!text.empty() && text.back() == last)
        text.pop_back();
}

void ext_fold(std::string_view utf8, const ext_rules &rules, ext_folded &folded)
{
    folded.text.clear();
    folded.marks.clear();
    for (size_t at = 0; at < utf8.size();) {
        const UChar32 c = ext_next_valid_character(utf8, at);
        // The server's first tables know of no character beyond U+FFFF, and pass over what they do not know.
        if (rules.version > 80 || !U_IS_SUPPLEMENTARY(c))
            my_fold_character(c, rules, folded);
    }
    my_trim(folded.text, u' ');
    my_trim(folded.marks, U'\0');
}

// A letter without its accents, where it is one with accents.
static UChar32 my_without_accents(UChar32 c)
{
    UChar decomposed[8];
    UErrorCode code = U_ZERO_ERROR;
    const int32_t length = unorm2_getDecomposition(my_normalizer(unorm2_getNFDInstance), c, decomposed,
                                                   static_cast<int32_t>(std::size(decomposed)), &code);
    return U_SUCCESS(code) && length > 0 && !U16_IS_SURROGATE(decomposed[0]) ? decomposed[0] : c;
}

static UChar32 my_lower(UChar32 c, const ext_language &language)
{
    static constexpr UChar32 dotless_i = 0x0131;
    static constexpr UChar32 dotted_capital_i = 0x0130;
    if (!(language.own_letters & ext_own_i) || (c != 'I' && c != dotted_capital_i))
        return ext_lower(c);
    return c == 'I' ? dotless_i : 'i';
}

void ext_fold_code_page(std::string_view utf8, const ext_rules &rules, std::u16string &folded)
{
    folded.clear();
    for (size_t at = 0; at < utf8.size();) {
        UChar32 c = ext_next_valid_character(utf8, at);
        if (rules.noaccent)
            c = my_without_accents(c);
        my_append(folded, rules.nocase ? my_lower(c, *rules.language) : c);
    }
    my_trim(folded, u' ');
}
