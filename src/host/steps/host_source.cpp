// Which reader a source is for. Its bytes say it, never its name: people rename files, and a folder has none.
#include "steps/host_source.hpp"

#include "package/host_package.hpp"
#include "script/host_script.hpp"
#include "json/host_export.hpp"

#include <algorithm>
#include <array>
#include <string_view>

#define KT_HERE "src/host/steps/host_source"

static constexpr size_t looked_at = 4096; // bytes that are enough for the first word of any document

using host_beginning = std::array<char, looked_at>;

// The beginning of a text without what its encoding adds: marks, and the zero bytes of UTF-16. Good enough to look at,
// not to read. It needs no memory, since whoever asks has no context for the lack of it.
static std::string_view my_beginning(std::string_view bytes, host_beginning &buffer)
{
    bytes = bytes.substr(0, looked_at);
    for (const std::string_view mark : {"\xEF\xBB\xBF", "\xFF\xFE", "\xFE\xFF"}) {
        if (bytes.starts_with(mark))
            bytes.remove_prefix(mark.size());
    }
    const auto *end = std::remove_copy(bytes.begin(), bytes.end(), buffer.begin(), '\0');
    return {buffer.data(), static_cast<size_t>(end - buffer.data())};
}

static bool my_is_column_name(std::string_view word)
{
    constexpr std::string_view name = "document";
    return word.size() == name.size() && KT_strnicmp(word.data(), name.data(), name.size()) == 0;
}

static std::string_view my_skip_blanks(std::string_view text)
{
    return text.substr(std::min(text.find_first_not_of(" \t\r\n"), text.size()));
}

// Without the lines that a tool writes over a result: the column's name, and dashes under it.
static std::string_view my_skip_header(std::string_view text)
{
    text = my_skip_blanks(text);
    while (!text.empty()) {
        const std::string_view line = text.substr(0, text.find_first_of("\r\n"));
        const std::string_view word = line.substr(0, line.find_last_not_of(" \t") + 1);
        if (word.find_first_not_of('-') != std::string_view::npos && !my_is_column_name(word))
            break;
        text = my_skip_blanks(text.substr(line.size()));
    }
    return text;
}

// A script may begin with a name in brackets, a list of tables does not.
static bool my_is_json(std::string_view text)
{
    text = my_skip_header(text);
    if (!text.starts_with('['))
        return text.starts_with('{');
    text = my_skip_blanks(text.substr(1));
    return text.empty() || text.front() == '{' || text.front() == '[' || text.front() == ']' || text.front() == '"';
}

int32_t tov_host__recognise(const char *bytes, size_t size) noexcept
{
    const std::string_view all(bytes, size);
    if (host_is_package(all))
        return TOV_HOST_SOURCE_PACKAGE;
    host_beginning buffer;
    return my_is_json(my_beginning(all, buffer)) ? TOV_HOST_SOURCE_JSON : TOV_HOST_SOURCE_SCRIPT;
}

static std::string_view my_bytes(const tov_host_file &file)
{
    return {file.bytes, file.size};
}

// Several files are scripts unless one of them is something else, which then must be the only one.
static void my_recognise(KT_context *ctx, std::span<const tov_host_file> files, int32_t *source)
{
    *source = TOV_HOST_SOURCE_SCRIPT;
    for (const tov_host_file &file : files) {
        const int32_t kind = tov_host__recognise(file.bytes, file.size);
        if (kind == TOV_HOST_SOURCE_SCRIPT)
            continue;
        if (files.size() > 1)
            KT_FAIL(KT_ERR_UNEXPECTED_VALUE, "%s is %s: only scripts can be read together", file.name ? file.name : "?",
                    kind == TOV_HOST_SOURCE_JSON ? "a JSON document" : "a package");
        *source = kind;
    }
}

// A definition is NAME=VALUE; one without a value replaces its name with nothing.
static std::vector<host_script_define> my_defines(const tov_host_list &list)
{
    std::vector<host_script_define> defines;
    for (size_t n = 0; n < list.count; n++) {
        const std::string_view item = list.items[n];
        const size_t end = std::min(item.find('='), item.size());
        defines.push_back({item.substr(0, end), item.substr(std::min(end + 1, item.size()))});
    }
    return defines;
}

static void my_read_scripts(KT_context *ctx, std::span<const tov_host_file> files, const tov_host_options &options,
                            host_findings &findings, host_catalogue &catalogue)
{
    const std::vector<host_script_define> defines = my_defines(options.defines);
    std::vector<host_script_file> scripts;
    for (const tov_host_file &file : files)
        scripts.push_back({file.name ? file.name : "script", my_bytes(file)});
    const host_script_options script_options{options.encoding, defines};
    KT_TRY(host_read_scripts(ctx, scripts, script_options, findings, catalogue));
}

void host_read_source(KT_context *ctx, std::span<const tov_host_file> files, const tov_host_options &options,
                      host_findings &findings, host_source &source)
{
    int32_t kind = options.source;
    if (files.empty())
        KT_FAIL(KT_ERR_UNEXPECTED_VALUE, "there is no file to import");
    if (kind == TOV_HOST_SOURCE_AUTO)
        KT_TRY(my_recognise(ctx, files, &kind));
    if (kind != TOV_HOST_SOURCE_SCRIPT && files.size() > 1)
        KT_FAIL(KT_ERR_UNEXPECTED_VALUE, "%zu files: only scripts can be read together", files.size());
    switch (kind) {
    case TOV_HOST_SOURCE_JSON:
        KT_TRY(host_read_export(ctx, my_bytes(files.front()), options.verbose, source.document, findings,
                                source.catalogue));
        return;
    case TOV_HOST_SOURCE_PACKAGE:
        KT_TRY(host_read_package(ctx, my_bytes(files.front()), findings, source.catalogue));
        return;
    case TOV_HOST_SOURCE_SCRIPT:
        KT_TRY(my_read_scripts(ctx, files, options, findings, source.catalogue));
        return;
    default:
        KT_FAIL(KT_ERR_UNEXPECTED_VALUE, "there is no reader for sources of kind %d", static_cast<int>(kind));
    }
}
