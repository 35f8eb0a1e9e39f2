// What tools do to a catalogue document on its way into a file, and how it is undone.
//
// Windows tools write UTF-16 or put a byte-order mark before UTF-8; sqlcmd and its kin write the column's name, a
// line of dashes and the row count around the document; and whatever cuts long lines puts line ends into the middle
// of it. The document itself never holds a raw line end: the server writes them as \n and \r.
#include "json/host_file.hpp"

#include "json/host_utf16.hpp"

#include <cstring>
#include <optional>
#include <string_view>

#define KT_HERE "src/host/json/host_file"

static constexpr std::string_view blanks = " \t\r\n";

static std::string_view my_trimmed(std::string_view text)
{
    const size_t first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

// The name of the result column, or the line of dashes under it.
static bool my_is_header_line(std::string_view line)
{
    constexpr std::string_view column = "document";
    if (line.find_first_not_of('-') == std::string_view::npos)
        return true;
    return line.size() == column.size() && KT_strnicmp(line.data(), column.data(), column.size()) == 0;
}

// A line that a tool writes after the result: "(1 rows affected)" in some language, or when the batch ended.
static bool my_is_trailing_line(std::string_view line)
{
    const bool is_count =
        line.size() > 2 && line.front() == '(' && line.back() == ')' && line[1] >= '0' && line[1] <= '9';
    return line.empty() || is_count || line.starts_with("Completion time:");
}

// Where the document begins: at the first brace or bracket that only header lines precede.
static void my_find_start(KT_context *ctx, std::string_view text, size_t *start)
{
    size_t at = text.find_first_not_of(blanks);
    if (at == std::string_view::npos)
        KT_FAIL(KT_ERR_BAD_JSON, "the file is empty");
    while (at != std::string_view::npos && text[at] != '{' && text[at] != '[') {
        const std::string_view line = my_trimmed(text.substr(at, text.find_first_of("\r\n", at) - at));
        if (!my_is_header_line(line))
            KT_FAIL(KT_ERR_BAD_JSON, "the file is not a catalogue export: expected '{' or '[' where it says '%.40s'",
                    std::string(line).c_str());
        at = text.find_first_not_of(blanks, at + line.size());
    }
    if (at == std::string_view::npos)
        KT_FAIL(KT_ERR_BAD_JSON, "the file holds a header and no document");
    *start = at;
}

// The text without the lines that follow the document's last brace or bracket, as far as a tool wrote them.
static std::string_view my_without_trailing_lines(std::string_view text)
{
    const size_t last = text.find_last_of("}]");
    if (last == std::string_view::npos)
        return text;
    std::string_view rest = text.substr(last + 1);
    while (!rest.empty()) {
        const size_t end = rest.find_first_of("\r\n");
        if (!my_is_trailing_line(my_trimmed(rest.substr(0, end))))
            return text;
        rest = end == std::string_view::npos ? std::string_view{} : rest.substr(end + 1);
    }
    return text.substr(0, last + 1);
}

static bool my_is_word_byte(char byte)
{
    return (byte >= '0' && byte <= '9') || (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') ||
           byte == '.' || byte == '+' || byte == '-';
}

// Copies the document without the line ends that split a text, a word or a number.
static void my_append_joined(std::string_view document, std::string &json, bool &split_texts)
{
    if (document.find('\n') == std::string_view::npos && document.find('\r') == std::string_view::npos) {
        json += document;
        return;
    }
    bool in_text = false;
    bool escaped = false;
    for (size_t n = 0; n < document.size(); n++) {
        const char byte = document[n];
        if (byte == '\r' || byte == '\n') {
            const size_t next = document.find_first_not_of("\r\n", n);
            if (next == std::string_view::npos)
                return;
            split_texts |= in_text;
            if (!in_text && !(my_is_word_byte(document[n - 1]) && my_is_word_byte(document[next])))
                json += document.substr(n, next - n);
            n = next - 1;
            continue;
        }
        if (in_text && escaped)
            escaped = false;
        else if (in_text && byte == '\\')
            escaped = true;
        else if (byte == '"')
            in_text = !in_text;
        json += byte;
    }
}

// The order of the bytes of a file in UTF-16. Without a mark a zero byte in the first character tells it: a document
// begins with an ASCII character.
static std::optional<host_byte_order> my_byte_order(std::string_view file)
{
    if (file.starts_with("\xFF\xFE"))
        return host_byte_order::little;
    if (file.starts_with("\xFE\xFF"))
        return host_byte_order::big;
    if (file.size() < 2 || (file[0] == '\0') == (file[1] == '\0'))
        return std::nullopt;
    return file[0] == '\0' ? host_byte_order::big : host_byte_order::little;
}

// The file as UTF-8 without a byte-order mark; utf8 points into the file, or into buffer where it had to be converted.
static void my_to_utf8(KT_context *ctx, std::string_view file, std::string &buffer, std::string_view *utf8)
{
    if (const auto order = my_byte_order(file)) {
        KT_TRY(host_utf16_to_utf8(ctx, file, *order, buffer));
        file = buffer;
    }
    if (file.starts_with("\xEF\xBB\xBF"))
        file.remove_prefix(3);
    if (const size_t nul = file.find('\0'); nul != std::string_view::npos)
        KT_FAIL(KT_ERR_BAD_JSON, "the file holds a NUL byte (the %zu. byte of its text): it is damaged", nul + 1);
    *utf8 = file;
}

void host_decode_file(KT_context *ctx, const char *bytes, size_t size, std::string &json, bool &split_texts)
{
    std::string buffer;
    std::string_view text;
    KT_TRY(my_to_utf8(ctx, {bytes, size}, buffer, &text));
    size_t start = 0;
    KT_TRY(my_find_start(ctx, text, &start));
    const std::string_view document = my_without_trailing_lines(text.substr(start));
    json.reserve(document.size() + 16);
    for (const char byte : text.substr(0, start)) {
        if (byte == '\n')
            json += byte;
    }
    const bool is_list = document.front() == '[';
    json += is_list ? "{\"tables\":" : "";
    my_append_joined(document, json, split_texts);
    json += is_list ? "}" : "";
}

bool host_is_cut(std::string_view json)
{
    size_t depth = 0;
    bool in_text = false;
    for (size_t n = 0; n < json.size(); n++) {
        const char byte = json[n];
        if (in_text && byte == '\\')
            n++;
        else if (byte == '"')
            in_text = !in_text;
        else if (!in_text && (byte == '{' || byte == '['))
            depth++;
        else if (!in_text && (byte == '}' || byte == ']') && --depth == 0)
            return false;
    }
    return true;
}
