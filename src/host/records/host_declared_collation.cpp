// What the name of a collation says about texts.
#include "records/host_declared_type.hpp"

#include <algorithm>
#include <array>

// The languages of collations, without their options and version, and the code pages of their char and varchar texts.
// Those of languages that have none are not in the list.
struct host_language {
    std::string_view name;
    int32_t code_page;
};

static constexpr host_language languages[] = {
    {"Albanian", 1250},
    {"Arabic", 1256},
    {"Azeri_Cyrillic", 1251},
    {"Azeri_Latin", 1254},
    {"Bashkir", 1251},
    {"Bosnian_Cyrillic", 1251},
    {"Bosnian_Latin", 1250},
    {"Breton", 1252},
    {"Chinese_Hong_Kong_Stroke", 950},
    {"Chinese_PRC", 936},
    {"Chinese_PRC_Stroke", 936},
    {"Chinese_Simplified_Pinyin", 936},
    {"Chinese_Simplified_Stroke_Order", 936},
    {"Chinese_Taiwan_Bopomofo", 950},
    {"Chinese_Taiwan_Stroke", 950},
    {"Chinese_Traditional_Bopomofo", 950},
    {"Chinese_Traditional_Pinyin", 950},
    {"Chinese_Traditional_Stroke_Count", 950},
    {"Chinese_Traditional_Stroke_Order", 950},
    {"Corsican", 1252},
    {"Croatian", 1250},
    {"Cyrillic_General", 1251},
    {"Czech", 1250},
    {"Danish_Greenlandic", 1252},
    {"Danish_Norwegian", 1252},
    {"Dari", 1256},
    {"Estonian", 1257},
    {"Finnish_Swedish", 1252},
    {"French", 1252},
    {"Frisian", 1252},
    {"Georgian_Modern_Sort", 1252},
    {"German_PhoneBook", 1252},
    {"Greek", 1253},
    {"Hebrew", 1255},
    {"Hungarian", 1250},
    {"Hungarian_Technical", 1250},
    {"Icelandic", 1252},
    {"Japanese", 932},
    {"Japanese_Bushu_Kakusu", 932},
    {"Japanese_Unicode", 932},
    {"Japanese_XJIS", 932},
    {"Kazakh", 1251},
    {"Korean", 949},
    {"Korean_Wansung", 949},
    {"Korean_Wansung_Unicode", 949},
    {"Latin1_General", 1252},
    {"Latvian", 1257},
    {"Lithuanian", 1257},
    {"Lithuanian_Classic", 1257},
    {"Macedonian", 1251},
    {"Macedonian_FYROM", 1251},
    {"Mapudungan", 1252},
    {"Modern_Spanish", 1252},
    {"Mohawk", 1252},
    {"Norwegian", 1252},
    {"Persian", 1256},
    {"Polish", 1250},
    {"Romanian", 1250},
    {"Romansh", 1252},
    {"Sami_Norway", 1252},
    {"Sami_Sweden_Finland", 1252},
    {"Serbian_Cyrillic", 1251},
    {"Serbian_Latin", 1250},
    {"Slovak", 1250},
    {"Slovenian", 1250},
    {"Tamazight", 1252},
    {"Tatar", 1251},
    {"Thai", 874},
    {"Traditional_Spanish", 1252},
    {"Turkish", 1254},
    {"Turkmen", 1250},
    {"Uighur", 1256},
    {"Ukrainian", 1251},
    {"Upper_Sorbian", 1252},
    {"Urdu", 1256},
    {"Uzbek_Latin", 1254},
    {"Vietnamese", 1258},
    {"Welsh", 1252},
    {"Yakut", 1251},
};

// Takes the last part off a name, such as "_CI"; empty when there is only one.
static std::string_view my_take_last(std::string_view &name)
{
    const size_t at = name.rfind('_');
    if (at == std::string_view::npos)
        return {};
    const std::string_view last = name.substr(at + 1);
    name = name.substr(0, at);
    return last;
}

static bool my_is_option(std::string_view part)
{
    constexpr std::array<std::string_view, 13> options{"CI", "CS",  "AI",   "AS",   "KI",  "KS", "WI",
                                                       "WS", "BIN", "BIN2", "UTF8", "VSS", "SC"};
    return std::find(options.begin(), options.end(), part) != options.end();
}

static bool my_is_number(std::string_view part)
{
    return !part.empty() && part.find_first_not_of("0123456789") == std::string_view::npos;
}

static bool my_has_option(std::string_view collation, std::string_view option)
{
    for (std::string_view part = my_take_last(collation); my_is_option(part); part = my_take_last(collation)) {
        if (part == option)
            return true;
    }
    return false;
}

// The old collations name their code page: SQL_Latin1_General_CP1_CI_AS, where CP1 stands for 1252.
static int32_t my_named_code_page(std::string_view collation)
{
    while (!collation.empty()) {
        const std::string_view part = my_take_last(collation);
        if (part.starts_with("CP") && my_is_number(part.substr(2)) && part.size() <= 7)
            return part == "CP1" ? 1252 : std::stoi(std::string(part.substr(2)));
        if (part.empty())
            return 0;
    }
    return 0;
}

int32_t host_code_page(const char *collation)
{
    std::string_view name = collation ? collation : "";
    if (my_has_option(name, "UTF8"))
        return host_utf_8_page;
    if (name.starts_with("SQL_"))
        return my_named_code_page(name);
    std::string_view rest = name;
    for (std::string_view part = my_take_last(rest); my_is_option(part) || my_is_number(part);
         part = my_take_last(rest))
        name = rest;
    for (const host_language &language : languages) {
        if (language.name == name)
            return language.code_page;
    }
    return 0;
}

int32_t host_comparison_style(const char *collation)
{
    constexpr int32_t ignore_case = 1, ignore_accent = 2, ignore_kana = 65536, ignore_width = 131072;
    if (!collation)
        return -1;
    if (my_has_option(collation, "BIN") || my_has_option(collation, "BIN2"))
        return 0;
    return (my_has_option(collation, "CI") ? ignore_case : 0) | (my_has_option(collation, "AI") ? ignore_accent : 0) |
           (my_has_option(collation, "KS") ? 0 : ignore_kana) | (my_has_option(collation, "WS") ? 0 : ignore_width);
}

void host_set_collation(const char *collation, host_column &col)
{
    constexpr std::array<std::string_view, 6> texts{"char", "varchar", "nchar", "nvarchar", "text", "ntext"};
    if (!collation || !col.system_type || std::find(texts.begin(), texts.end(), col.system_type) == texts.end())
        return;
    col.collation = collation;
    col.code_page = host_code_page(collation);
    col.comparison_style = host_comparison_style(collation);
}
