// Where ICU has no locale for a language, it is compared in the order that all languages begin with, ICU's root.
#include "collate/ext_language.hpp"

#include "kt_folded.hpp"

#include <algorithm>
#include <span>

static constexpr ext_language languages[] = {
    {"Albanian", "sq"},
    {"Arabic", "ar"},
    {"Assamese", "as"},
    {"Azeri_Cyrillic", "root"},
    {"Azeri_Latin", "az"},
    {"Bashkir", "ba"},
    {"Bengali", "bn"},
    {"Bosnian_Cyrillic", "bs_Cyrl"},
    {"Bosnian_Latin", "bs"},
    {"Breton", "br"},
    {"Chinese_Hong_Kong_Stroke", "zh_Hant@collation=stroke"},
    {"Chinese_PRC", "zh@collation=pinyin"},
    {"Chinese_PRC_Stroke", "zh@collation=stroke"},
    {"Chinese_Simplified_Pinyin", "zh@collation=pinyin"},
    {"Chinese_Simplified_Stroke_Order", "zh@collation=stroke"},
    {"Chinese_Taiwan_Bopomofo", "zh_Hant@collation=zhuyin"},
    {"Chinese_Taiwan_Stroke", "zh_Hant@collation=stroke"},
    {"Chinese_Traditional_Bopomofo", "zh_Hant@collation=zhuyin"},
    {"Chinese_Traditional_Pinyin", "zh_Hant@collation=pinyin"},
    {"Chinese_Traditional_Stroke_Count", "zh_Hant@collation=stroke"},
    {"Chinese_Traditional_Stroke_Order", "zh_Hant@collation=stroke"},
    {"Corsican", "co"},
    {"Croatian", "hr"},
    {"Cyrillic_General", "ru"},
    {"Czech", "cs"},
    {"Danish_Greenlandic", "da", ext_own_ae},
    {"Danish_Norwegian", "da", ext_own_ae},
    {"Dari", "fa_AF"},
    {"Divehi", "dv"},
    {"Estonian", "et"},
    {"Finnish_Swedish", "sv", ext_own_ae},
    {"French", "fr"},
    {"Frisian", "fy"},
    {"Georgian_Modern_Sort", "ka"},
    {"German_PhoneBook", "de@collation=phonebook"},
    {"Greek", "el"},
    {"Hebrew", "he"},
    {"Hungarian", "hu"},
    {"Hungarian_Technical", "hu"},
    {"Icelandic", "is", ext_own_ae | ext_own_thorn},
    {"Indic_General", "hi"},
    {"Japanese", "ja"},
    {"Japanese_Bushu_Kakusu", "ja@collation=unihan"},
    {"Japanese_Unicode", "ja"},
    {"Japanese_XJIS", "ja"},
    {"Kazakh", "kk"},
    {"Khmer", "km"},
    {"Korean", "ko"},
    {"Korean_Wansung", "ko"},
    {"Korean_Wansung_Unicode", "ko"},
    {"Lao", "lo"},
    {"Latin1_General", "root"},
    {"Latvian", "lv"},
    {"Lithuanian", "lt"},
    {"Lithuanian_Classic", "lt"},
    {"Macedonian", "mk"},
    {"Macedonian_FYROM", "mk"},
    {"Maltese", "mt"},
    {"Maori", "root"},
    {"Mapudungan", "root"},
    {"Modern_Spanish", "es"},
    {"Mohawk", "root"},
    {"Nepali", "ne"},
    {"Norwegian", "nb", ext_own_ae},
    {"Pashto", "ps"},
    {"Persian", "fa"},
    {"Polish", "pl"},
    {"Romanian", "ro"},
    {"Romansh", "root"},
    {"Sami_Norway", "se", ext_own_ae},
    {"Sami_Sweden_Finland", "se", ext_own_ae},
    {"Serbian_Cyrillic", "sr"},
    {"Serbian_Latin", "sr_Latn"},
    {"Slovak", "sk"},
    {"Slovenian", "sl"},
    {"Syriac", "root"},
    {"Tamazight", "root"},
    {"Tatar", "root"},
    {"Thai", "th"},
    {"Tibetan", "bo"},
    {"Traditional_Spanish", "es@collation=traditional"},
    {"Turkish", "tr", ext_own_i},
    {"Turkmen", "tk"},
    {"Uighur", "ug"},
    {"Ukrainian", "uk"},
    {"Upper_Sorbian", "hsb"},
    {"Urdu", "ur"},
    {"Uzbek_Latin", "uz"},
    {"Vietnamese", "vi"},
    {"Welsh", "cy"},
    {"Yakut", "root"},
};

// What stands between SQL_ and the code page.
static constexpr ext_language sql_languages[] = {
    {"1xCompat", "root"},
    {"AltDiction", "root"},
    {"AltDiction2", "root"},
    {"AltDiction_Pref", "root"},
    {"Croatian", "hr"},
    {"Czech", "cs"},
    {"Danish_Pref", "da", ext_own_ae},
    {"EBCDIC037", "root"},
    {"EBCDIC1141", "root"},
    {"EBCDIC273", "root"},
    {"EBCDIC277", "da", ext_own_ae},
    {"EBCDIC277_2", "da", ext_own_ae},
    {"EBCDIC278", "sv", ext_own_ae},
    {"EBCDIC280", "it"},
    {"EBCDIC284", "es"},
    {"EBCDIC285", "root"},
    {"EBCDIC297", "fr"},
    {"Estonian", "et"},
    {"Hungarian", "hu"},
    {"Icelandic_Pref", "is", ext_own_ae | ext_own_thorn},
    {"Latin1_General", "root"},
    {"Latin1_General_Pref", "root"},
    {"Latvian", "lv"},
    {"Lithuanian", "lt"},
    {"MixDiction", "root"},
    {"Polish", "pl"},
    {"Romanian", "ro"},
    {"Scandinavian", "da", ext_own_ae},
    {"Scandinavian_Pref", "da", ext_own_ae},
    {"Slovak", "sk"},
    {"Slovenian", "sl"},
    {"SwedishPhone_Pref", "sv", ext_own_ae},
    {"SwedishStd_Pref", "sv", ext_own_ae},
    {"Ukrainian", "uk"},
};

static const ext_language *my_find(std::span<const ext_language> list, std::string_view name) noexcept
{
    const auto found = std::find_if(list.begin(), list.end(), [name](const ext_language &language) {
        return kt_equal_folded(language.name, name);
    });
    return found == list.end() ? nullptr : &*found;
}

const ext_language *ext_find_language(std::string_view name) noexcept
{
    return my_find(languages, name);
}

const ext_language *ext_find_sql_language(std::string_view name) noexcept
{
    return my_find(sql_languages, name);
}
