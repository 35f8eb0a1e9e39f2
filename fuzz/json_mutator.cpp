// Changes JSON text by whole values, so that a document stays one most of the time: one value takes the place of
// another, wherever in the document the two stand. Without it a fuzzer breaks the syntax nearly always, and sees little
// of what comes after the reader.
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <random>
#include <string>
#include <string_view>
#include <vector>

// The fuzzer library's own way to change bytes.
extern "C" size_t LLVMFuzzerMutate(uint8_t *data, size_t size, size_t max_size);

static size_t text_end(std::string_view json, size_t at)
{
    for (at++; at < json.size() && json[at] != '"'; at++)
        at += json[at] == '\\';
    return std::min(at + 1, json.size());
}

// Where the value that begins at a place ends, brackets and quotes counted.
static size_t value_end(std::string_view json, size_t at)
{
    size_t depth = 0;
    while (at < json.size()) {
        const char c = json[at];
        if (c == '"')
            at = text_end(json, at);
        else if (depth == 0 && std::strchr(",]}", c))
            return at;
        else
            at++;
        depth += c == '{' || c == '[';
        depth -= c == '}' || c == ']';
        if (depth == 0 && std::strchr("\"]}", c))
            return at;
    }
    return at;
}

// Keys count too: they are places where a value may begin.
static std::vector<std::string_view> values_of(std::string_view json)
{
    std::vector<std::string_view> values;
    for (size_t at = 0; at < json.size(); at++) {
        if (json[at] == '"')
            at = text_end(json, at) - 1;
        if (at + 1 < json.size() && std::strchr(":,[{", json[at]) && !std::strchr("]}", json[at + 1]))
            values.push_back(json.substr(at + 1, value_end(json, at + 1) - at - 1));
    }
    return values;
}

extern "C" size_t LLVMFuzzerCustomMutator(uint8_t *data, size_t size, size_t max_size, unsigned seed)
{
    static constexpr std::string_view others[] = {"null", "{}", "[]", "0", "-1", "1.5", "true", "\"\"", "\"tbls\""};
    std::minstd_rand random(seed);
    const std::string json(reinterpret_cast<const char *>(data), size);
    const std::vector<std::string_view> values = values_of(json);
    if (values.empty() || random() % 4 == 0)
        return LLVMFuzzerMutate(data, size, max_size);
    const std::string_view old = values[random() % values.size()];
    const bool from_within = random() % 4 != 0;
    const std::string_view other =
        from_within ? values[random() % values.size()] : others[random() % std::size(others)];
    const auto at = static_cast<size_t>(old.data() - json.data());
    const bool is_added = random() % 3 == 0; // beside the old one, as a member or an element more
    std::string changed = json.substr(0, at).append(other);
    if (is_added)
        changed.append(",").append(old);
    changed.append(json, at + old.size());
    if (changed.size() > max_size)
        return LLVMFuzzerMutate(data, size, max_size);
    std::memcpy(data, changed.data(), changed.size());
    return changed.size();
}
