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

std::string host_changed_text(const host_check_changes &changes, std::string_view place)
{
    std::string text;
    const char *at = place.data();
    for (const host_check_change &one : changes) {
        if (one.place.data() < at || my_end(one.place) > my_end(place))
            continue;
        text.append(at, one.place.data());
        text += one.text;
        at = my_end(one.place);
    }
    return text.append(at, my_end(place));
}
