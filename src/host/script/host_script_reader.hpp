// Reading one text of statements: a file, or a string that a script executes.
//
// A statement is read completely before anything of it takes effect. One that is malformed is an error and skipped;
// one that can be read but not followed is a finding. Branches that are not taken are read too, to find their end.
#pragma once

#include "script/host_script.hpp"
#include "script/host_script_state.hpp"
#include "tsql/host_tsql_cursor.hpp"
#include "tsql/host_tsql_type.hpp"

#include <array>

// A file as it is read: UTF-8, placeholders replaced.
struct host_script_source {
    std::string name;
    std::string text;
    bool is_begun = false;
};

// A column as its declaration makes it, whatever its name.
struct host_script_declaration {
    host_column record; // shared by all columns that are declared so
    const char *collation;
};

struct host_script_session {
    host_script_session(KT_context *context, const host_script_options &given, host_findings &found,
                        host_catalogue &catalogue)
        : ctx(context), options(given), findings(found), left_objects(catalogue.left_objects),
          state(catalogue.texts, catalogue.defaults)
    {
    }
    KT_context *ctx;
    const host_script_options &options;
    host_findings &findings;
    std::vector<host_left_object> &left_objects;
    // Declarations by their text: most columns share it with others, and it is read once. The second ones are of
    // columns that are nullable when they do not say. The columns of the state refer to them.
    std::array<std::unordered_map<std::string_view, host_script_declaration>, 2> declarations;
    host_script_state state;
    std::vector<std::unique_ptr<host_script_source>> sources;
    host_name_map<host_script_source *> makers; // what each file makes, for others that refer to it before its turn
    // Definitions of defaults, by what follows the constraint's name.
    std::unordered_map<std::string_view, const char *> definitions;
    std::unordered_set<std::string> other_databases; // that a finding has named
    std::vector<std::string> errors;                 // the first ones
    size_t error_count = 0;
    int chain = 0; // of files that are read because another needs them
};

enum class host_script_mode {
    execute,
    ignore, // a branch that is not taken
    doubt,  // a branch that may be taken: what would change tables there is a finding
};

// Borrowed from the text that is read, or kept.
struct host_script_name {
    std::string_view database; // empty where it is left out, as is the schema
    std::string_view schema;
    std::string_view name;

    bool is_temporary() const
    {
        return name.starts_with('#') || host_same_text(database, "tempdb");
    }
    std::string text() const
    {
        return std::string(schema) + '.' + std::string(name);
    }
};

// Why a statement in doubt is not followed.
inline constexpr const char *host_script_undecided =
    "whether it runs depends on a condition that the script alone does not decide";

struct host_script_reader {
    host_script_reader(host_script_session &owner, const host_script_source &file, std::string_view text,
                       bool quoted_identifier)
        : session(owner), state(owner.state), source(file), cursor(text, quoted_identifier)
    {
    }

    host_script_session &session;
    host_script_state &state;
    const host_script_source &source;
    host_tsql_cursor cursor;
    host_script_mode mode = host_script_mode::execute;
    size_t batch_start = 0;
    int depth = 0;                            // of blocks
    int level = 0;                            // of strings that execute strings
    int nesting = 0;                          // of parentheses in conditions
    size_t outer_at = std::string_view::npos; // the place in the file of the string that is read
    std::string default_schema = "dbo";
    std::string database_in_use;                         // empty: the one whose tables are read
    std::unordered_map<std::string, std::string> locals; // variables of the batch, folded, that hold a known string
    bool is_parsed_only = false;                         // SET NOEXEC ON
    bool columns_are_nullable = true;                    // when they do not say
    bool is_over = false;                                // RETURN: the rest of the batch does not run

    // The place of a token as findings and errors have it: "file.sql:12:5".
    std::string place_of(size_t at);
    // Reports the statement that begins with this token and ends before the current one.
    void not_read(const host_tsql_token &first, const std::string &reason);
    void add_error(size_t at, const std::string &message);

    host_script_name read_name();
    // A name, without its quotes if it has any; kept where it must outlive the text that is read.
    std::string_view read_plain_name(std::string_view expected = "a name");
    const char *read_kept_name(std::string_view expected = "a name");
    bool is_elsewhere(const host_script_name &name) const;
    // Whether statements run, in the database whose tables are read.
    bool is_idle() const;
    // Finds what a statement works on, reading the file that makes it first if that has not been read.
    host_script_table *use_table(const host_script_name &name);
    host_script_type *use_type(std::string_view schema, std::string_view name);
    host_script_bound *use_bound(std::string_view schema, std::string_view name);

  private:
    size_t counted_to_ = 0; // lines are counted on from the last place
    size_t counted_lines_ = 0;
};

// Where a table was made.
std::string host_place_of(const host_script_table &table);

// host_script_statements.cpp
void host_read_statements(host_script_reader &reader);
void host_read_statement(host_script_reader &reader);
void host_read_string(host_script_reader &outer, const host_tsql_token &at, std::string_view text);

// host_script_flow.cpp, host_script_settings.cpp, host_script_select.cpp
void host_read_begin(host_script_reader &reader);
void host_read_if(host_script_reader &reader);
void host_read_while(host_script_reader &reader);
void host_read_set(host_script_reader &reader);
void host_read_use(host_script_reader &reader);
void host_read_query(host_script_reader &reader);

// host_script_dialects.cpp
// What a message adds about a token that gives a script away as one of another database; empty for any other.
std::string host_dialect_hint(const host_tsql_token &token);
// The database that has a type which T-SQL lacks; null for any other.
const char *host_other_database(std::string_view type);

// host_script_skip.cpp: past the end of a statement that changes no table, from its first token or from a later one.
void host_skip_statement(host_script_reader &reader);
void host_skip_to_batch_end(host_script_reader &reader);
bool host_starts_statement(host_word word);

// host_script_files.cpp
void host_read_script_source(host_script_session &session, host_script_source &source);
bool host_read_maker(host_script_session &session, std::string_view schema, std::string_view name);

// host_script_create.cpp, host_script_modules.cpp, host_script_drop.cpp
void host_read_create(host_script_reader &reader);
void host_read_drop(host_script_reader &reader);
void host_read_module(host_script_reader &reader, bool is_new);

// host_script_tables.cpp, host_script_alter.cpp, host_script_indexes.cpp
void host_read_create_table(host_script_reader &reader, const host_tsql_token &first);
void host_read_alter_table(host_script_reader &reader, const host_tsql_token &first);
void host_read_create_index(host_script_reader &reader, const host_tsql_token &first);
void host_read_alter_index(host_script_reader &reader, const host_tsql_token &first);
void host_read_drop_index(host_script_reader &reader, const host_tsql_token &first);

// host_script_exec.cpp
void host_read_exec(host_script_reader &reader);

// host_script_locals.cpp
// Reads 'text' + @variable + ...; false, in the middle of it, when the script does not say what it is.
bool host_read_constant_string(host_script_reader &reader, std::string &text);
// Notes what the statement that began with this token, and has just been passed, makes of variables.
void host_note_locals(host_script_reader &reader, const host_tsql_token &first);

// host_script_conditions.cpp: nothing when the script does not tell.
std::optional<bool> host_read_test(host_script_reader &reader);

// host_script_catalogue.cpp
void host_fill_catalogue(host_script_session &session, host_catalogue &catalogue);
