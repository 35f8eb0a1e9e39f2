// Replaces placeholders before a script is read, as the tools that run scripts do.
//
// $(name) is a variable, defined by a line ":setvar name value" further up or by the user, whose word holds. What
// takes its place has no line ends, so that the lines of the file stay what they are.
#include "script/host_script_variables.hpp"

#include <algorithm>

#define KT_HERE "src/host/script/host_script_variables"

namespace {

struct host_variables {
    std::unordered_map<std::string, std::string> values;
    std::unordered_set<std::string> unknown;
    std::string text; // as far as it is done
};

} // namespace

static bool my_is_variable_name(std::string_view name)
{
    return !name.empty() && std::all_of(name.begin(), name.end(), [](char byte) {
        return (byte >= '0' && byte <= '9') || (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') ||
               byte == '_' || byte == '-';
    });
}

static std::string my_one_line(std::string_view value)
{
    std::string line(value);
    std::replace_if(
        line.begin(), line.end(), [](char byte) { return byte == '\n' || byte == '\r'; }, ' ');
    return line;
}

static void my_replace_all(std::string &text, std::string_view name, std::string_view value)
{
    std::string replaced;
    size_t from = 0;
    for (size_t at = text.find(name); at != std::string::npos; at = text.find(name, from)) {
        replaced.append(text, from, at - from).append(value);
        from = at + name.size();
    }
    if (from > 0)
        text = replaced.append(text, from);
}

// :setvar name value, or "value"
static void my_set_variable(const host_script_session &session, std::string_view line, host_variables &variables)
{
    constexpr std::string_view command = ":setvar";
    line = host_trimmed(line);
    if (!host_same_text(line.substr(0, command.size()), command))
        return;
    line = host_trimmed(line.substr(command.size()));
    const size_t end = std::min(line.find_first_of(" \t"), line.size());
    const std::string name = host_folded(line.substr(0, end));
    std::string_view value = host_trimmed(line.substr(end));
    if (value.size() >= 2 && value.front() == '"' && value.back() == '"')
        value = value.substr(1, value.size() - 2);
    const bool is_given =
        std::any_of(session.options.defines.begin(), session.options.defines.end(),
                    [&name](const host_script_define &define) { return host_same_text(define.name, name); });
    if (!is_given)
        variables.values[name] = value;
}

// Replaces the variables of one line.
static void my_replace_line(KT_context *ctx, host_script_session &session, const host_script_source &source,
                            std::string_view line, host_variables &variables)
{
    size_t from = 0;
    for (size_t at = line.find("$("); at != std::string_view::npos; at = line.find("$(", at + 2)) {
        const size_t end = line.find(')', at);
        const std::string_view name = end == std::string_view::npos ? "" : line.substr(at + 2, end - at - 2);
        if (!my_is_variable_name(name))
            continue;
        const auto found = variables.values.find(host_folded(name));
        if (found != variables.values.end()) {
            variables.text.append(line.substr(from, at - from)).append(found->second);
            from = end + 1;
        } else if (variables.unknown.insert(host_folded(name)).second) {
            const std::string place =
                source.name + ':' +
                host_tsql_place(source.text, static_cast<size_t>(line.data() + at - source.text.data()));
            KT_TRY(session.findings.add_at(ctx, "variable-undefined", place.c_str(), std::string(name).c_str(),
                                           "left as it stands: nothing defines the variable"));
        }
    }
    variables.text.append(line.substr(from));
}

void host_replace_variables(KT_context *ctx, host_script_session &session, host_script_source &source)
{
    host_variables variables;
    for (const host_script_define &define : session.options.defines) {
        if (my_is_variable_name(define.name))
            variables.values[host_folded(define.name)] = my_one_line(define.value);
        else if (!define.name.empty())
            my_replace_all(source.text, define.name, my_one_line(define.value));
    }
    if (source.text.find("$(") == std::string::npos)
        return;
    const std::string_view text = source.text;
    for (size_t at = 0; at < text.size();) {
        const size_t end = std::min(text.find('\n', at), text.size() - 1) + 1;
        const std::string_view line = text.substr(at, end - at);
        my_set_variable(session, line, variables);
        KT_TRY(my_replace_line(ctx, session, source, line, variables));
        at = end;
    }
    source.text = std::move(variables.text);
}
