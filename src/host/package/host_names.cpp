// Dots and brackets occur inside names, so the parts are found by their brackets only.
#include "package/host_names.hpp"

#include <string>

#define KT_HERE "src/host/package/host_names"

// Takes one bracketed part off the front; empty when there is none.
static std::string_view my_take_part(std::string_view &text)
{
    if (!text.starts_with('['))
        return {};
    for (size_t at = text.find(']', 1); at != std::string_view::npos; at = text.find(']', at + 2)) {
        if (text.substr(at + 1).starts_with(']'))
            continue;
        const std::string_view part = text.substr(1, at - 1);
        text.remove_prefix(at + 1);
        return part;
    }
    return {};
}

void host_split_name(KT_context *ctx, std::string_view text, host_name_parts &name)
{
    std::string_view rest = text;
    for (name.count = 0; name.count < host_name_parts::most; rest.remove_prefix(1)) {
        const std::string_view part = my_take_part(rest);
        if (part.empty())
            break;
        name.parts[name.count++] = part;
        if (rest.empty())
            return;
        if (rest.front() != '.')
            break;
    }
    KT_FAIL(KT_ERR_UNEXPECTED_VALUE, "'%.200s' is not a name in brackets", std::string(text).c_str());
}

const char *host_keep_part(host_texts &texts, std::string_view part)
{
    if (part.find(']') == std::string_view::npos)
        return texts.keep(part);
    std::string name;
    for (size_t n = 0; n < part.size(); n++) {
        name += part[n];
        n += part[n] == ']' ? 1U : 0U;
    }
    return texts.keep(name);
}
