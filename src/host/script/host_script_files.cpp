// Several files as one: their order, and what they are.
//
// They are read by name. A file that makes something that another one before it refers to is read when that one
// needs it, so that project folders, whose files only define, need no order of their own, and migrations keep theirs.
#include "script/host_script_reader.hpp"

#include "script/host_script_encoding.hpp"
#include "script/host_script_variables.hpp"

#include <algorithm>

#define KT_HERE "src/host/script/host_script_files"

static std::string_view my_after(std::string_view text, std::string_view mark)
{
    const size_t at = text.find(mark);
    return at == std::string_view::npos ? std::string_view() : text.substr(at + mark.size());
}

// A project file among the scripts says the database's name and collation.
static bool my_read_project(host_script_session &session, std::string_view text)
{
    if (!host_trimmed(text).starts_with('<') || text.find("<Project") == std::string_view::npos)
        return false;
    if (const std::string_view collation = my_after(text, "<DefaultCollation>"); !collation.empty())
        session.state.collation = session.state.keep(host_trimmed(collation.substr(0, collation.find('<'))));
    if (const std::string_view name = my_after(text, "<Name>"); !name.empty() && session.state.database.empty())
        session.state.database = host_trimmed(name.substr(0, name.find('<')));
    return true;
}

// Notes what the file makes, as far as its statements begin with CREATE.
static void my_note_makers(host_script_session &session, host_script_source &source)
{
    host_tsql_cursor cursor(source.text);
    host_tsql_token last;
    while (cursor.token.kind != host_tsql_kind::end) {
        if (last.is(host_word::create) && (cursor.token.is(host_word::proc) || cursor.token.is(host_word::procedure) ||
                                           cursor.token.is(host_word::function) ||
                                           cursor.token.is(host_word::trigger) || cursor.token.is(host_word::view))) {
            while (!cursor.token.is_end())
                cursor.advance();
        }
        const bool makes =
            last.is(host_word::create) && (cursor.token.is(host_word::table) || cursor.token.is(host_word::type) ||
                                           cursor.token.is(host_word::default_) || cursor.token.is(host_word::rule));
        last = cursor.token;
        cursor.advance();
        if (!makes || !cursor.token.is_name())
            continue;
        std::string buffer, schema = "dbo", name;
        name = host_unquoted(cursor.token, buffer);
        cursor.advance();
        while (cursor.take('.')) {
            schema = std::move(name);
            name = host_unquoted(cursor.token, buffer);
            cursor.advance();
        }
        host_qualified_name made{session.state.keep(schema), session.state.keep(name)};
        session.makers.try_emplace(made, &source);
    }
}

void host_read_script_source(host_script_session &session, host_script_source &source)
{
    if (std::exchange(source.is_begun, true))
        return;
    host_script_reader reader(session, source, source.text, true);
    host_read_statements(reader);
}

bool host_read_maker(host_script_session &session, std::string_view schema, std::string_view name)
{
    if (session.makers.empty())
        return false;
    const auto found = session.makers.find({schema, name});
    constexpr int max_chain = 100; // of files that need each other
    if (found == session.makers.end() || found->second->is_begun || session.chain >= max_chain)
        return false;
    session.chain++;
    host_read_script_source(session, *found->second);
    session.chain--;
    return true;
}

static void my_add_source(KT_context *ctx, host_script_session &session, const host_script_file &file)
{
    auto source = std::make_unique<host_script_source>();
    source->name = file.name;
    KT_TRY(host_decode_script(ctx, file.name, file.bytes, session.options.encoding, source->text));
    if (my_read_project(session, source->text))
        return;
    KT_TRY(host_replace_variables(ctx, session, *source));
    session.sources.push_back(std::move(source));
}

static void my_refuse_repeated_files(KT_context *ctx, const std::vector<std::unique_ptr<host_script_source>> &sources)
{
    for (size_t n = 1; n < sources.size(); n++) {
        if (sources[n]->name == sources[n - 1]->name)
            KT_FAIL(KT_ERR_UNEXPECTED_VALUE, "%s is read twice", sources[n]->name.c_str());
    }
}

// A text without a single statement was hardly meant as a script.
static void my_refuse_nothing(KT_context *ctx, const std::vector<std::unique_ptr<host_script_source>> &sources)
{
    const bool is_something = std::any_of(sources.begin(), sources.end(), [](const auto &source) {
        host_tsql_cursor cursor(source->text);
        while (cursor.token.kind == host_tsql_kind::batch)
            cursor.advance();
        return cursor.token.kind != host_tsql_kind::end;
    });
    if (!is_something)
        KT_FAIL(KT_ERR_UNEXPECTED_VALUE, "there is nothing to import: no package, no JSON document, no SQL statement");
}

static void my_raise_errors(KT_context *ctx, const host_script_session &session)
{
    if (session.error_count == 0)
        return;
    std::string description;
    for (const std::string &error : session.errors)
        description += (description.empty() ? "" : "\n") + error;
    if (session.error_count > session.errors.size())
        description += "\nand " + std::to_string(session.error_count - session.errors.size()) + " more";
    KT_FAIL(KT_ERR_UNEXPECTED_VALUE, "%s", description.c_str());
}

void host_read_scripts(KT_context *ctx, std::span<const host_script_file> files, const host_script_options &options,
                       host_findings &findings, host_catalogue &catalogue)
{
    host_script_session session(ctx, options, findings, catalogue);
    for (const host_script_file &file : files)
        KT_TRY(my_add_source(ctx, session, file));
    auto &sources = session.sources;
    std::sort(sources.begin(), sources.end(), [](const auto &a, const auto &b) { return a->name < b->name; });
    KT_TRY(my_refuse_repeated_files(ctx, sources));
    KT_TRY(my_refuse_nothing(ctx, sources));
    if (sources.size() > 1) {
        for (const auto &source : sources)
            my_note_makers(session, *source);
    }
    for (const auto &source : sources)
        KT_TRY(host_read_script_source(session, *source));
    KT_TRY(host_fill_catalogue(session, catalogue));
    KT_TRY(my_raise_errors(ctx, session));
}
