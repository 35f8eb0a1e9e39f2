// The keyword tables against a plain list, and the lookup against every spelling that matters.

#include "defval/defval_keywords.hpp"
#include "defval/defval_tokenizer.hpp"
#include "kt_test.hpp"
#include "tov_parse_defin.h"

#include <map>
#include <random>
#include <vector>

// Every keyword with its code, in alphabetical order.
static const std::map<std::string, int> keywords = {
    {"ABORT", 28},        {"ACTION", 29},       {"ADD", 140},
    {"AFTER", 30},        {"ALL", 113},         {"ALTER", 139},
    {"ANALYZE", 31},      {"AND", 69},          {"AS", 24},
    {"ASC", 32},          {"ATTACH", 33},       {"AUTOINCREMENT", 103},
    {"BEFORE", 34},       {"BEGIN", 5},         {"BETWEEN", 71},
    {"BY", 35},           {"CASCADE", 36},      {"CASE", 134},
    {"CAST", 37},         {"CHECK", 101},       {"COLLATE", 92},
    {"COLUMN", 38},       {"COMMIT", 10},       {"CONFLICT", 39},
    {"CONSTRAINT", 96},   {"CREATE", 17},       {"CROSS", 95},
    {"CURRENT_DATE", 66}, {"CURRENT_TIME", 66}, {"CURRENT_TIMESTAMP", 66},
    {"DATABASE", 40},     {"DEFAULT", 97},      {"DEFERRABLE", 109},
    {"DEFERRED", 7},      {"DELETE", 106},      {"DESC", 41},
    {"DETACH", 42},       {"DISTINCT", 117},    {"DROP", 111},
    {"EACH", 43},         {"ELSE", 137},        {"END", 11},
    {"ESCAPE", 81},       {"EXCEPT", 114},      {"EXCLUSIVE", 9},
    {"EXISTS", 20},       {"EXPLAIN", 2},       {"FAIL", 44},
    {"FOR", 45},          {"FOREIGN", 110},     {"FROM", 119},
    {"FULL", 95},         {"GLOB", 49},         {"GROUP", 123},
    {"HAVING", 124},      {"IF", 18},           {"IGNORE", 46},
    {"IMMEDIATE", 8},     {"IN", 72},           {"INDEX", 138},
    {"INDEXED", 27},      {"INITIALLY", 47},    {"INNER", 95},
    {"INSERT", 105},      {"INSTEAD", 48},      {"INTERSECT", 115},
    {"INTO", 127},        {"IS", 70},           {"ISNULL", 73},
    {"JOIN", 120},        {"KEY", 52},          {"LEFT", 95},
    {"LIKE", 49},         {"LIMIT", 125},       {"MATCH", 50},
    {"NATURAL", 95},      {"NO", 51},           {"NOT", 19},
    {"NOTNULL", 74},      {"NULL", 98},         {"OF", 53},
    {"OFFSET", 54},       {"ON", 104},          {"OR", 68},
    {"ORDER", 122},       {"OUTER", 95},        {"PLAN", 4},
    {"PRAGMA", 55},       {"PRIMARY", 99},      {"QUERY", 3},
    {"RAISE", 56},        {"REFERENCES", 102},  {"REGEXP", 49},
    {"REINDEX", 64},      {"RELEASE", 14},      {"RENAME", 65},
    {"REPLACE", 57},      {"RESTRICT", 58},     {"RIGHT", 95},
    {"ROLLBACK", 12},     {"ROW", 59},          {"SAVEPOINT", 13},
    {"SELECT", 116},      {"SET", 108},         {"TABLE", 16},
    {"TEMP", 21},         {"TEMPORARY", 21},    {"THEN", 136},
    {"TO", 15},           {"TRANSACTION", 6},   {"TRIGGER", 60},
    {"UNION", 112},       {"UNIQUE", 100},      {"UPDATE", 107},
    {"USING", 121},       {"VACUUM", 61},       {"VALUES", 128},
    {"VIEW", 62},         {"VIRTUAL", 63},      {"WHEN", 135},
    {"WHERE", 126},
};

// The code of a word by the plain list.
static int listed_code(const std::string &word)
{
    std::string capitals = word;
    for (char &c : capitals)
        c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c;
    const auto found = keywords.find(capitals);
    return found == keywords.end() ? 26 : found->second;
}

static int code_of(const std::string &word)
{
    return _tov_find_keyword(word.c_str(), static_cast<int32_t>(word.size()));
}

static std::string keyword_at(size_t k)
{
    const tov_keyword_tables &tables = tov_keyword_data;
    return {tables.text.data() + tables.offsets[k], tables.lengths[k]};
}

TEST(KeywordTables, HoldExactlyTheKeywords)
{
    std::map<std::string, int> held;
    for (size_t k = 0; k < tov_keyword_data.lengths.size(); k++)
        held[keyword_at(k)] = tov_keyword_data.codes[k];
    EXPECT_EQ(tov_keyword_data.lengths.size(), 121u);
    EXPECT_EQ(held, keywords);
}

TEST(KeywordTables, TextIsRebuiltFromTheList)
{
    std::string text;
    for (const tov_keyword &keyword : tov_keywords) {
        const std::string word{keyword.word};
        if (text.find(word) != std::string::npos)
            continue;
        size_t shared = std::min(text.size(), word.size());
        while (text.substr(text.size() - shared) != word.substr(0, shared))
            shared--;
        text += word.substr(shared);
    }
    EXPECT_EQ(text.size(), 540u);
    EXPECT_EQ(text, std::string(tov_keyword_data.text.data(), tov_keyword_data.text.size()));
    for (size_t k = 0; k < std::size(tov_keywords); k++) {
        EXPECT_EQ(keyword_at(k), tov_keywords[k].word);
        EXPECT_EQ(tov_keyword_data.codes[k], tov_keywords[k].code);
    }
}

TEST(KeywordTables, ChainsAreRebuiltFromTheList)
{
    std::vector<std::vector<size_t>> buckets(127);
    for (size_t k = 0; k < std::size(tov_keywords); k++) {
        const std::string_view word = tov_keywords[k].word;
        const size_t first = static_cast<size_t>(word.front() - 'A' + 'a');
        const size_t last = static_cast<size_t>(word.back() - 'A' + 'a');
        auto &bucket = buckets[((first * 4) ^ (last * 3) ^ word.size()) % 127];
        bucket.insert(bucket.begin(), k + 1);
    }
    EXPECT_EQ(tov_keyword_data.buckets.size(), 127u);
    EXPECT_EQ(tov_keyword_data.chains.size(), 121u);
    for (size_t b = 0; b < buckets.size(); b++) {
        std::vector<size_t> chain;
        for (size_t k = tov_keyword_data.buckets[b]; k != 0 && chain.size() < 121; k = tov_keyword_data.chains[k - 1])
            chain.push_back(k);
        EXPECT_EQ(chain, buckets[b]) << "bucket " << b;
    }
}

TEST(KeywordCode, IsFoundInEveryLetterCase)
{
    std::mt19937 random{1};
    for (const auto &[word, code] : keywords) {
        // All of them for words of up to ten letters, as many drawn at random for longer ones.
        for (uint32_t variant = 0; variant < 1024; variant++) {
            const uint32_t small = word.size() <= 10 ? variant : static_cast<uint32_t>(random());
            std::string spelled = word;
            for (size_t i = 0; i < word.size(); i++)
                if (small >> i & 1 && word[i] != '_')
                    spelled[i] = static_cast<char>(word[i] + 32);
            ASSERT_EQ(code_of(spelled), code) << spelled;
            ASSERT_EQ(sqlite3KeywordCode(spelled.c_str(), static_cast<int>(spelled.size())), code) << spelled;
        }
    }
}

// Walks through all words of a length.
template <class Visit> static void each_word(size_t length, const std::string &alphabet, Visit visit)
{
    std::string word(length, alphabet[0]);
    std::vector<size_t> at(length, 0);
    for (;;) {
        visit(word);
        size_t i = 0;
        while (i < length && ++at[i] == alphabet.size()) {
            at[i] = 0;
            word[i] = alphabet[0];
            i++;
        }
        if (i == length)
            return;
        word[i] = alphabet[at[i]];
    }
}

TEST(KeywordCode, NoOtherWordOfUpToFourLettersIsAKeyword)
{
    for (size_t length = 1; length <= 4; length++)
        each_word(length, "ABCDEFGHIJKLMNOPQRSTUVWXYZ_", [](const std::string &word) {
            if (code_of(word) != listed_code(word))
                ADD_FAILURE() << word;
        });
}

TEST(KeywordCode, NoWordOneByteAwayIsTakenForAKeyword)
{
    const auto check = [](const std::string &word) {
        if (code_of(word) != listed_code(word))
            ADD_FAILURE() << word;
    };
    for (const auto &[word, code] : keywords) {
        for (size_t i = 0; i <= word.size(); i++) {
            for (int byte = 1; byte < 256; byte++) {
                std::string changed = word;
                if (i < word.size()) {
                    changed[i] = static_cast<char>(byte);
                    check(changed);
                }
                check(word.substr(0, i) + static_cast<char>(byte) + word.substr(i));
            }
            check(word.substr(0, i));
            check(word.substr(i));
            if (i < word.size())
                check(word.substr(0, i) + word.substr(i + 1));
            for (size_t j = i + 1; j < word.size(); j++) {
                std::string swapped = word;
                std::swap(swapped[i], swapped[j]);
                check(swapped);
            }
        }
    }
}

TEST(KeywordCode, CountsTheBytesItIsGiven)
{
    EXPECT_EQ(_tov_find_keyword("NOTNULL", 3), 19);
    EXPECT_EQ(_tov_find_keyword("NOTNULL", 2), 51);
    EXPECT_EQ(_tov_find_keyword("NOTNULL", 7), 74);
    EXPECT_EQ(_tov_find_keyword("NOTNULL", 1), 26);
    EXPECT_EQ(_tov_find_keyword("NOTNULL", 0), 26);
    EXPECT_EQ(_tov_find_keyword("NOTNULL", -1), 26);
}

TEST(KeywordCode, LaterKeywordsOfSQLiteAreIdentifiers)
{
    for (const char *word :
         {"WITH", "RECURSIVE", "WITHOUT", "OVER", "WINDOW", "FILTER", "GENERATED", "ALWAYS", "NULLS"})
        EXPECT_EQ(code_of(word), 26) << word;
}
