// Strings that the server takes for equal, and strings that it does not.
//
// Where the vectors come from:
// - [options] SQL Server documentation, "Collation and Unicode support", the table of the options: what case, accent,
//   kana, width and variation selector sensitivity mean, with its examples; BIN and BIN2; supplementary characters by
//   version ("can be used in ordering and comparison operations in collation versions 90 or greater").
// - [padding] SQL Server documentation, "= (String comparison or assignment)", on ANSI/ISO SQL-92 section 8.2, general
//   rules 3: strings are padded with blanks before they are compared.
// - [languages] SQL Server documentation, "Windows collation name", and the alphabets of the languages.
// - [practice] widely reported behaviour of the server that its documentation does not spell out.
// - [unicode] The Unicode Standard, chapter 3: canonically equivalent strings.
#include "collate/ext_collation.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace {

struct comparison_case {
    const char *name;
    const char *collation;
    const char *left;
    const char *right;
    bool equal;
};

int compare(const char *collation, std::string_view left, std::string_view right)
{
    const auto opened = ext_open_collation(collation);
    if (!opened) {
        ADD_FAILURE() << collation << " is not known";
        return 0;
    }
    const int result = ext_compare(*opened, left, right);
    EXPECT_EQ(ext_compare(*opened, right, left) < 0, result > 0) << "not the same from the other side";
    EXPECT_EQ(ext_compare(*opened, right, left) > 0, result < 0) << "not the same from the other side";
    return result;
}

void check(const comparison_case &c)
{
    SCOPED_TRACE(std::string(c.name) + ": " + c.left + " and " + c.right + " in " + c.collation);
    EXPECT_EQ(compare(c.collation, c.left, c.right) == 0, c.equal);
}

} // namespace

// [options]
const comparison_case option_cases[] = {
    {"case is ignored", "Latin1_General_CI_AS", "a", "A", true},
    {"case is ignored beyond ASCII", "Latin1_General_CI_AS", "ÄÖÜÉ", "äöüé", true},
    {"case is ignored in Greek", "Latin1_General_CI_AS", "ΑΘΗΝΑ", "αθηνα", true},
    {"case is ignored in Cyrillic", "Cyrillic_General_CI_AS", "МОСКВА", "москва", true},
    {"case counts", "Latin1_General_CS_AS", "a", "A", false},
    {"case counts beyond ASCII", "Latin1_General_CS_AS", "Ä", "ä", false},
    {"case counts without accents", "Latin1_General_CS_AI", "a", "A", false},
    {"case counts on another letter than the accent", "Latin1_General_CS_AI", "éA", "ea", false},
    {"accents count", "Latin1_General_CI_AS", "a", "á", false},
    {"accents count in capitals", "Latin1_General_CI_AS", "É", "e", false},
    {"accents are ignored", "Latin1_General_CI_AI", "a", "á", true},
    {"accents are ignored where case counts", "Latin1_General_CS_AI", "resume", "résumé", true},
    {"kana are ignored", "Japanese_CI_AS", "ひらがな", "ヒラガナ", true},
    {"kana are ignored where case counts", "Japanese_CS_AS", "ひらがな", "ヒラガナ", true},
    {"kana count", "Japanese_CI_AS_KS", "ひらがな", "ヒラガナ", false},
    {"kana count, and case does not", "Japanese_CI_AS_KS", "あA", "あa", true},
    {"kana count in another place", "Japanese_CI_AS_KS", "あア", "アあ", false},
    {"kana of narrow form count", "Japanese_CI_AS_KS", "あ", "ｱ", false},
    {"width is ignored", "Latin1_General_CI_AS", "ＡＢＣ１", "abc1", true},
    {"width is ignored where case counts", "Latin1_General_CS_AS", "Ａ", "A", true},
    {"case of wide letters counts", "Latin1_General_CS_AS", "Ａ", "a", false},
    {"width counts", "Latin1_General_CI_AS_WS", "Ａ", "A", false},
    {"width counts, and case does not", "Latin1_General_CI_AS_WS", "Ａb", "ａB", true},
    {"width counts in another place", "Latin1_General_CI_AS_WS", "Ａa", "aＡ", false},
    {"narrow katakana are katakana", "Japanese_CI_AS", "ｶﾞｷﾞ", "ガギ", true},
    {"narrow katakana are katakana where kana count", "Japanese_CI_AS_KS", "ｶﾞｷﾞ", "ガギ", true},
    {"narrow katakana differ where width counts", "Japanese_CI_AS_KS_WS", "ｶ", "カ", false},
    {"all counts, and all is the same", "Japanese_CS_AS_KS_WS", "ガA", "ガA", true},
    {"accents of letters count where width does", "Latin1_General_CI_AS_WS", "é", "e", false},
    {"variation selectors are ignored", "Japanese_XJIS_140_CI_AS", "葛", "葛󠄀", true},
    {"variation selectors count", "Japanese_XJIS_140_CI_AS_VSS", "葛", "葛󠄀", false},
    {"variation selectors are told apart", "Japanese_XJIS_140_CI_AS_VSS", "葛󠄁", "葛󠄀", false},
    {"UTF-8 changes nothing", "Latin1_General_100_CI_AS_SC_UTF8", "Straße", "STRASSE", true},
};

// [options], [practice]: the first tables have no weights for these characters
const comparison_case supplementary_cases[] = {
    {"the first tables pass over them", "Latin1_General_CI_AS", "😀", "😁", true},
    {"so they equal nothing at all", "Latin1_General_CI_AS", "a😀", "a", true},
    {"blanks before them are at the end", "Latin1_General_CI_AS", "a 😀", "a", true},
    {"SQL collations have the first tables", "SQL_Latin1_General_CP1_CI_AS", "😀", "", true},
    {"later tables know them", "Latin1_General_100_CI_AS", "😀", "😁", false},
    {"with SC too", "Latin1_General_100_CI_AS_SC", "😀", "😁", false},
    {"in version 90 by their numbers", "Latin1_General_90_CI_AS", "𝐀", "𝐁", false},
    {"and none is another's variant there", "Latin1_General_90_CI_AS", "𝐀", "𝐚", false},
    {"binary order tells them apart", "Latin1_General_BIN2", "😀", "😁", false},
    {"the old one too", "Latin1_General_BIN", "😀", "😁", false},
};

// [padding]
const comparison_case padding_cases[] = {
    {"ignoring case", "Latin1_General_CI_AS", "abc", "abc   ", true},
    {"observing case", "Latin1_General_CS_AS", "abc ", "abc", true},
    {"BIN", "Latin1_General_BIN", "abc", "abc  ", true},
    {"BIN2", "Latin1_General_BIN2", "abc  ", "abc", true},
    {"BIN2 of UTF-8", "Latin1_General_100_BIN2_UTF8", "é ", "é", true},
    {"SQL", "SQL_Latin1_General_CP1_CI_AS", "C5", "c5 ", true},
    {"SQL, of a code page", "SQL_Latin1_General_CP1_CI_AS.varchar", "C5", "c5 ", true},
    {"after a letter that is not ASCII", "Latin1_General_CI_AS", "é", "é  ", true},
    {"where width counts", "Latin1_General_CI_AS_WS", "é", "é  ", true},
    {"blanks alone are nothing", "Latin1_General_CI_AS", "", "  ", true},
    {"blanks alone are nothing in BIN2", "Latin1_General_BIN2", "", "  ", true},
    {"blanks before count", "Latin1_General_CI_AS", " abc", "abc", false},
    {"blanks inside count", "Latin1_General_CI_AS", "a bc", "abc", false},
    {"a line end is no blank", "Latin1_General_CI_AS", "abc\n", "abc", false},
    {"a line end is no blank in BIN", "Latin1_General_BIN", "abc\n", "abc", false},
    {"a no-break space is no blank in BIN2", "Latin1_General_BIN2", "abc\u00A0", "abc", false},
};

// [practice]: letters that have the weights of two
const comparison_case letter_cases[] = {
    {"sharp s", "Latin1_General_CI_AS", "Straße", "STRASSE", true},
    {"sharp s where case counts", "Latin1_General_CS_AS", "Straße", "Strasse", true},
    {"sharp s is not one s", "Latin1_General_CI_AI", "ß", "s", false},
    {"sharp s in German", "German_PhoneBook_CI_AS", "ß", "ss", true},
    {"ae", "Latin1_General_CI_AS", "Æ", "AE", true},
    {"ae in small letters", "Latin1_General_CS_AS", "æ", "ae", true},
    {"ae is small where case counts", "Latin1_General_CS_AS", "Æ", "ae", false},
    {"oe", "French_CI_AS", "œuvre", "OEUVRE", true},
    {"thorn", "Latin1_General_CI_AS", "Þór", "THór", true},
    {"thorn is a letter in Icelandic", "Icelandic_CI_AS", "Þór", "Thór", false},
    {"ae is a letter in Danish", "Danish_Norwegian_CI_AS", "Æ", "AE", false},
    {"ae is a letter in Swedish", "Finnish_Swedish_CI_AS", "æ", "ae", false},
    {"an accented ae keeps its accent", "Latin1_General_CI_AS", "Ǽ", "AE", false},
    {"a ligature", "Latin1_General_CI_AS", "ﬁn", "fin", true},
    {"one character in Unicode", "SQL_Latin1_General_CP1_CI_AS", "ß", "ss", true},
    {"and another in a code page", "SQL_Latin1_General_CP1_CI_AS.varchar", "ß", "ss", false},
    {"ae in a code page", "SQL_Latin1_General_CP1_CI_AS.varchar", "Æ", "AE", false},
    {"ae in a code page has case", "SQL_Latin1_General_CP1_CI_AS.varchar", "Æ", "æ", true},
    {"case in a code page", "SQL_Latin1_General_CP1_CI_AS.varchar", "ÉŠŸ", "éšÿ", true},
    {"case that counts in a code page", "SQL_Latin1_General_CP1_CS_AS.varchar", "É", "é", false},
    {"accents in a code page", "SQL_Latin1_General_CP1_CI_AS.varchar", "É", "E", false},
    {"accents that do not count in a code page", "SQL_Latin1_General_CP1_CI_AI.varchar", "É", "e", true},
    {"a superscript in a code page", "SQL_Latin1_General_CP1_CI_AS.varchar", "²", "2", false},
    {"a superscript in Unicode", "Latin1_General_CI_AS", "m²", "m2", true},
};

// [unicode]
const comparison_case equivalence_cases[] = {
    {"a composed letter", "Latin1_General_CI_AS", "e\u0301", "é", true},
    {"a composed letter where case counts", "Latin1_General_CS_AS", "E\u0301", "É", true},
    {"a composed letter where width counts", "Latin1_General_CS_AS_KS_WS", "e\u0301", "é", true},
    {"two marks in either order", "Vietnamese_CI_AS", "e\u0323\u0302", "e\u0302\u0323", true},
    {"the mark counts", "Latin1_General_CI_AS", "e\u0301", "e", false},
    {"the mark does not count", "Latin1_General_CI_AI", "e\u0301", "e", true},
    {"a syllable of letters", "Korean_Wansung_CI_AS", "\u1100\u1161", "가", true},
    {"a syllable of letters where kana count", "Korean_Wansung_CS_AS_KS_WS", "\u1100\u1161", "가", true},
    {"a voiced kana", "Japanese_CI_AS_KS", "か\u3099", "が", true},
    {"binary order compares what is there", "Latin1_General_BIN2", "e\u0301", "é", false},
    {"the old one too", "Latin1_General_BIN", "e\u0301", "é", false},
};

// [languages]
const comparison_case language_cases[] = {
    {"i with and without dot in Turkish", "Turkish_CI_AS", "i", "I", false},
    {"both with a dot", "Turkish_CI_AS", "i", "İ", true},
    {"both without", "Turkish_CI_AS", "ı", "I", true},
    {"the code page of Turkish", "SQL_Latin1_General_CP1254_CI_AS", "i", "I", false},
    {"the code page of Turkish, character by character", "SQL_Latin1_General_CP1254_CI_AS.varchar", "i", "I", false},
    {"both with a dot there", "SQL_Latin1_General_CP1254_CI_AS.varchar", "i", "İ", true},
    {"both without there", "SQL_Latin1_General_CP1254_CI_AS.varchar", "ı", "I", true},
    {"other letters there", "SQL_Latin1_General_CP1254_CI_AS.varchar", "ğa", "ĞA", true},
    {"case counts there", "SQL_Latin1_General_CP1254_CS_AS.varchar", "ı", "I", false},
    {"i in another code page", "SQL_Latin1_General_CP1_CI_AS.varchar", "i", "I", true},
    {"and in Azeri", "Azeri_Latin_100_CI_AS", "i", "I", false},
    {"elsewhere the dot is not a letter's", "Latin1_General_CI_AS", "i", "I", true},
    {"elsewhere it is an accent", "Latin1_General_CI_AS", "i", "İ", false},
    {"n with a tilde is a letter in Spanish", "Modern_Spanish_CI_AI", "ñ", "n", false},
    {"and an accent elsewhere", "Latin1_General_CI_AI", "ñ", "n", true},
    {"a with rings is a letter in Swedish", "Finnish_Swedish_CI_AI", "å", "a", false},
    {"and an accent elsewhere", "Latin1_General_CI_AI", "å", "a", true},
    {"soft letters are letters in Czech", "Czech_CI_AI", "č", "c", false},
    {"punctuation counts in Thai", "Thai_CI_AS", "a-b", "ab", false},
    {"punctuation counts", "Latin1_General_CI_AS", "co-op", "coop", false},
};

TEST(CollationTest, Options)
{
    std::for_each(std::begin(option_cases), std::end(option_cases), check);
}

TEST(CollationTest, SupplementaryCharacters)
{
    std::for_each(std::begin(supplementary_cases), std::end(supplementary_cases), check);
}

TEST(CollationTest, BlanksAtTheEnd)
{
    std::for_each(std::begin(padding_cases), std::end(padding_cases), check);
}

TEST(CollationTest, LettersOfTwo)
{
    std::for_each(std::begin(letter_cases), std::end(letter_cases), check);
}

TEST(CollationTest, EquivalentStrings)
{
    std::for_each(std::begin(equivalence_cases), std::end(equivalence_cases), check);
}

TEST(CollationTest, Languages)
{
    std::for_each(std::begin(language_cases), std::end(language_cases), check);
}

TEST(CollationTest, Order)
{
    struct order_case {
        const char *name;
        const char *collation;
        std::vector<const char *> words;
    };
    // [options], [padding], [languages]
    const order_case cases[] = {
        {"words of a dictionary", "Latin1_General_CI_AS", {"a", "á", "ab", "b"}},
        {"small letters first", "Latin1_General_CS_AS", {"a", "A", "b", "B"}},
        {"letters after z in Swedish", "Finnish_Swedish_CI_AS", {"z", "å", "ä", "ö"}},
        {"letters after z in Danish", "Danish_Norwegian_CI_AS", {"z", "æ", "ø", "å"}},
        {"ch after c in the old Spanish way", "Traditional_Spanish_CI_AS", {"cz", "ch", "d"}},
        {"ch before ci in the new", "Modern_Spanish_CI_AS", {"ch", "ci", "cz"}},
        {"characters by their numbers", "Latin1_General_BIN2", {"A", "Z", "a", "z", "é", "￮", "😀"}},
        {"a blank after the end", "Latin1_General_BIN2", {"a\n", "a", "a!"}},
        {"a blank after the end, the old way", "Latin1_General_BIN", {"a\n", "a", "a!"}},
        {"the first character by its number", "Latin1_General_BIN", {"A", "a", "é", "Ā"}},
        {"the others by their bytes", "Latin1_General_BIN", {"aĀ", "aA", "aé"}},
    };
    for (const order_case &c : cases) {
        SCOPED_TRACE(c.name);
        for (size_t n = 1; n < c.words.size(); n++)
            EXPECT_LT(compare(c.collation, c.words[n - 1], c.words[n]), 0) << c.words[n - 1] << " " << c.words[n];
    }
}

TEST(CollationTest, StringsThatAreNotUtf8HaveAPlaceToo)
{
    for (const char *collation : {"Latin1_General_CI_AS", "Latin1_General_BIN", "Latin1_General_BIN2",
                                  "SQL_Latin1_General_CP1_CI_AS.varchar", "Japanese_CS_AS_KS_WS"}) {
        SCOPED_TRACE(collation);
        EXPECT_EQ(compare(collation, "a\xFF", "a\xFF "), 0);
        EXPECT_NE(compare(collation, "a\xFF", "a"), 0);
        EXPECT_NE(compare(collation, "\xE2\x82", ""), 0);
    }
}

TEST(CollationTest, NulIsACharacterLikeOthers)
{
    using namespace std::string_view_literals;
    EXPECT_NE(compare("Latin1_General_CI_AS", "a\0b"sv, "a\0c"sv), 0);
    EXPECT_NE(compare("Latin1_General_BIN2", "a\0"sv, "a"sv), 0);
}
