#include "cli_json_lines.hpp"

static constexpr size_t indentation = 2;

// Where a string ends that begins here.
static size_t my_string_end(std::string_view json, size_t at)
{
    for (at++; at < json.size() && json[at] != '"'; at++) {
        if (json[at] == '\\')
            at++;
    }
    return at + 1;
}

// Where a list of plain values ends that begins here, or an empty map; npos for others.
static size_t my_flat_end(std::string_view json, size_t at)
{
    const char close = json[at] == '{' ? '}' : ']';
    for (at++; at < json.size() && json[at] != '[' && json[at] != '{'; at++) {
        if (json[at] == close)
            return at + 1;
        if (close == '}')
            break;
        if (json[at] == '"')
            at = my_string_end(json, at) - 1;
    }
    return std::string_view::npos;
}

// What is copied as it stands: a string, a flat list; npos for anything else.
static size_t my_whole_end(std::string_view json, size_t at)
{
    if (json[at] == '"')
        return my_string_end(json, at);
    return json[at] == '{' || json[at] == '[' ? my_flat_end(json, at) : std::string_view::npos;
}

std::string cli_json_lines(std::string_view json)
{
    std::string text;
    size_t depth = 0;
    const auto new_line = [&] { text.append(1, '\n').append(depth * indentation, ' '); };
    for (size_t at = 0; at < json.size();) {
        const size_t end = my_whole_end(json, at);
        if (end != std::string_view::npos) {
            text += json.substr(at, end - at);
            at = end;
            continue;
        }
        const char c = json[at++];
        if (c == '}' || c == ']') {
            depth--;
            new_line();
        }
        text += c;
        if (c == '{' || c == '[') {
            depth++;
            new_line();
        } else if (c == ',') {
            new_line();
        } else if (c == ':') {
            text += ' ';
        }
    }
    return text;
}
