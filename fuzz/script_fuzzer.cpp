// Any bytes, read as a script: what it makes is imported or refused in order, and of a schema that comes out of it the
// client creates the tables and triggers, and nothing else, or refuses it in order.
//
// A line that holds nothing but "%%" parts the bytes into several files.
#include "watched_import.hpp"

namespace {

std::vector<std::string> split_files(const uint8_t *data, size_t size)
{
    constexpr std::string_view mark = "\n%%\n";
    std::string_view rest(reinterpret_cast<const char *>(data), size);
    std::vector<std::string> files;
    for (size_t at = rest.find(mark); at != std::string_view::npos && files.size() < 8; at = rest.find(mark)) {
        files.emplace_back(rest.substr(0, at));
        rest.remove_prefix(at + mark.size());
    }
    files.emplace_back(rest);
    return files;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    KT_context *ctx = nullptr;
    KT_context__alloc(&ctx);
    const std::vector<std::string> texts = split_files(data, size);
    std::vector<std::string> names;
    for (size_t n = 0; n < texts.size(); n++)
        names.push_back(std::to_string(n) + ".sql");
    std::vector<tov_host_file> files;
    for (size_t n = 0; n < texts.size(); n++)
        files.push_back({names[n].c_str(), texts[n].data(), texts[n].size()});
    const char *const defines[] = {"Name=T", "@schema=dbo"};
    tov_host_options options{};
    options.source = TOV_HOST_SOURCE_SCRIPT;
    options.defines = {defines, 2};
    import_watched(ctx, files, options);
    KT_context__free(ctx);
    return 0;
}
