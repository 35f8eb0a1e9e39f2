// Looks words up in a table that is made when this is compiled.
#include "tsql/host_tsql_words.hpp"

#include <array>

static constexpr std::string_view word_texts[] = {"",
#define HOST_TSQL_WORD(name, text) text,
                                                  HOST_TSQL_WORDS(HOST_TSQL_WORD)
#undef HOST_TSQL_WORD
};
static_assert(std::size(word_texts) <= 256, "host_word fits a byte");

static constexpr size_t slot_count = 1024;
static constexpr size_t max_length = 17;

// Without the bit that tells the case of letters, of which the words consist.
static constexpr size_t my_slot(std::string_view text)
{
    const auto at = [text](size_t n) { return static_cast<uint32_t>(static_cast<unsigned char>(text[n])) & 0xDFU; };
    const uint32_t mixed = at(0) * 271 + at(text.size() - 1) * 31 + at(text.size() / 2) * 137 + at(1) * 7 +
                           static_cast<uint32_t>(text.size()) * 977;
    return (mixed ^ mixed >> 9) % slot_count;
}

static constexpr std::array<uint8_t, slot_count> my_fill_slots()
{
    std::array<uint8_t, slot_count> slots{};
    for (size_t word = 1; word < std::size(word_texts); word++) {
        size_t slot = my_slot(word_texts[word]);
        while (slots[slot] != 0)
            slot = (slot + 1) % slot_count;
        slots[slot] = static_cast<uint8_t>(word);
    }
    return slots;
}
static constexpr std::array<uint8_t, slot_count> slots = my_fill_slots();

host_word host_find_word(std::string_view text)
{
    if (text.size() < 2 || text.size() > max_length)
        return host_word::none;
    for (size_t slot = my_slot(text); slots[slot] != 0; slot = (slot + 1) % slot_count) {
        if (host_same_text(word_texts[slots[slot]], text))
            return static_cast<host_word>(slots[slot]);
    }
    return host_word::none;
}

// Words with a meaning in some places, and names everywhere else.
static constexpr host_word free_words[] = {
    host_word::none,         host_word::action,    host_word::always,       host_word::at,
    host_word::cast,         host_word::catch_,    host_word::column_set,   host_word::columnstore,
    host_word::conversation, host_word::dialog,    host_word::disable,      host_word::edge,
    host_word::enable,       host_word::encrypted, host_word::filestream,   host_word::filestream_on,
    host_word::filetable,    host_word::generated, host_word::get,          host_word::go,
    host_word::hash,         host_word::hidden,    host_word::iif,          host_word::include,
    host_word::increment,    host_word::masked,    host_word::max,          host_word::move,
    host_word::next,         host_word::no,        host_word::node,         host_word::out,
    host_word::output,       host_word::parse,     host_word::period,       host_word::persisted,
    host_word::rebuild,      host_word::receive,   host_word::row,          host_word::rows,
    host_word::send,         host_word::sequence,  host_word::sparse,       host_word::spatial,
    host_word::start,        host_word::synonym,   host_word::textimage_on, host_word::throw_,
    host_word::transfer,     host_word::try_,      host_word::try_cast,     host_word::type,
    host_word::value,        host_word::xml,       host_word::zone,
};

static constexpr std::array<bool, std::size(word_texts)> my_mark_reserved()
{
    std::array<bool, std::size(word_texts)> reserved{};
    reserved.fill(true);
    for (const host_word word : free_words)
        reserved[static_cast<size_t>(word)] = false;
    return reserved;
}
static constexpr std::array<bool, std::size(word_texts)> reserved_words = my_mark_reserved();

bool host_is_reserved(host_word word)
{
    return reserved_words[static_cast<size_t>(word)];
}

std::string_view host_trimmed(std::string_view text)
{
    constexpr std::string_view blanks = " \t\r\n\f\v";
    const size_t first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}
