#include "checks/host_check_changes.hpp"

#include <algorithm>

static const char *my_end(std::string_view place)
{
    return place.data() + place.size();
}

void host_change(host_check_changes &changes, std::string_view place, std::string text)
{
    std::erase_if(changes, [place](const host_check_change &one) {
        return one.place.data() >= place.data() && my_end(one.place) <= my_end(place);
    });
    const auto next = std::find_if(changes.begin(), changes.end(),
                                   [place](const host_check_change &one) { return one.place.data() > place.data(); });
    changes.insert(next, {place, std::move(text)});
}

static bool my_is_word_byte(char byte)
{
    return (byte >= '0' && byte <= '9') || (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') || byte == '_';
}

// A name in brackets may stand beside a word, which a word that is written for it may not.
static void my_append(std::string &text, std::string_view more)
{
    if (!text.empty() && !more.empty() && my_is_word_byte(text.back()) && my_is_word_byte(more.front()))
        text += ' ';
    text += more;
}

std::string host_changed_text(const host_check_changes &changes, std::string_view place)
{
    std::string text;
    const char *at = place.data();
    for (const host_check_change &one : changes) {
        if (one.place.data() < at || my_end(one.place) > my_end(place))
            continue;
        my_append(text, {at, one.place.data()});
        my_append(text, one.text);
        at = my_end(one.place);
    }
    my_append(text, {at, my_end(place)});
    return text;
}
