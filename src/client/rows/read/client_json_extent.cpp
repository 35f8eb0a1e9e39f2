// Where a JSON object ends in a file, without reading its members.
#include "rows/read/client_json_object.hpp"

#include "rows/convert/client_utf8.hpp"

static constexpr size_t server_line = 2033; // the server cuts its JSON into pieces of so many UTF-16 units

namespace {

// Follows the structure of an object byte by byte.
struct json_scan {
    int depth = 0;
    bool in_string = false;
    bool escaped = false;

    void look(char c) noexcept
    {
        if (escaped) {
            escaped = false;
        } else if (in_string) {
            escaped = c == '\\';
            in_string = c != '"';
        } else if (c == '"') {
            in_string = true;
        } else if (c == '{' || c == '[') {
            depth++;
        } else if (c == '}' || c == ']') {
            depth--;
        }
    }
};

} // namespace

// Whether a line is as long as those of the server, `before` characters of it being known to the caller only.
static bool my_is_cut_by_server(std::string_view line, size_t before)
{
    return before + line.size() >= server_line && before + client_count_units(line) == server_line;
}

client_json_extent client_measure_json_object(std::string_view data, size_t before)
{
    client_json_extent extent;
    json_scan scan;
    size_t line_start = 0;
    for (size_t n = 0; n < data.size(); n++) {
        if (data[n] == '\r' && n + 1 < data.size() && data[n + 1] == '\n')
            continue;
        if (data[n] == '\n') {
            const size_t line_end = n > line_start && data[n - 1] == '\r' ? n - 1 : n;
            if (my_is_cut_by_server(data.substr(line_start, line_end - line_start), line_start == 0 ? before : 0)) {
                for (size_t place = line_end; place <= n; place++)
                    extent.line_ends.push_back(place);
            }
            line_start = n + 1;
            continue;
        }
        scan.look(data[n]);
        if (scan.depth == 0 && !scan.in_string) {
            extent.is_whole = true;
            extent.size = n + 1;
            return extent;
        }
    }
    return extent;
}
