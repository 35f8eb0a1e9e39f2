// The XML files of packages are read by expat: a streaming parser is all they need, as they can be hundreds of
// megabytes, and none is smaller or has been looked at harder. It knows line and column of every mistake. A file with
// a DOCTYPE is refused, so there are no entities beyond the five that XML has.
#include "package/host_xml.hpp"

#include <cstring>
#include <expat.h>

#define KT_HERE "src/host/package/host_xml"

struct host_free_parser {
    void operator()(XML_Parser parser) const
    {
        XML_ParserFree(parser);
    }
};

struct host_xml::state {
    host_xml_reader &reader;
    uint32_t max_depth;
    std::unique_ptr<std::remove_pointer_t<XML_Parser>, host_free_parser> parser;
    KT_context *ctx = nullptr;
    uint32_t depth = 0;
    bool has_text_handler = false;
};

static std::string_view my_local_name(const char *name)
{
    const std::string_view full = name;
    return full.substr(full.find(':') + 1);
}

const char *host_attribute(const char *const *attributes, const char *name)
{
    for (const char *const *at = attributes; *at; at += 2) {
        if (strcmp(*at, name) == 0)
            return at[1];
    }
    for (const char *const *at = attributes; *at; at += 2) { // no writer is known that has prefixes
        const char *colon = strchr(*at, ':');
        if (colon && strcmp(colon + 1, name) == 0)
            return at[1];
    }
    return nullptr;
}

static void my_fail(KT_context *ctx, const char *message)
{
    KT_FAIL(KT_ERR_UNEXPECTED_VALUE, "%s", message);
}

static void my_text(void *data, const XML_Char *text, int size)
{
    auto &state = *static_cast<host_xml::state *>(data);
    KT_context *ctx = state.ctx;
    kt_contain(ctx, [&] { state.reader.text({text, static_cast<size_t>(size)}); });
    if (kt_has_err(ctx))
        XML_StopParser(state.parser.get(), XML_FALSE);
}

// After each event: stops at a failure, and lets the parser look for text only where it is wanted, which is faster.
static void my_go_on(host_xml::state &state)
{
    if (kt_has_err(state.ctx))
        XML_StopParser(state.parser.get(), XML_FALSE);
    if (state.reader.wants_text == state.has_text_handler)
        return;
    state.has_text_handler = state.reader.wants_text;
    XML_SetCharacterDataHandler(state.parser.get(), state.has_text_handler ? my_text : nullptr);
}

static void my_start(void *data, const XML_Char *name, const XML_Char **attributes)
{
    auto &state = *static_cast<host_xml::state *>(data);
    KT_context *ctx = state.ctx;
    if (kt_has_err(ctx)) // the parser may hand out what it has already seen
        return;
    if (++state.depth > state.max_depth)
        my_fail(ctx, "elements are nested too deeply");
    else
        kt_contain(ctx, [&] { state.reader.start(ctx, my_local_name(name), attributes); });
    my_go_on(state);
}

static void my_end(void *data, const XML_Char *)
{
    auto &state = *static_cast<host_xml::state *>(data);
    KT_context *ctx = state.ctx;
    if (kt_has_err(ctx))
        return;
    state.depth--;
    kt_contain(ctx, [&] { state.reader.end(ctx); });
    my_go_on(state);
}

static void my_doctype(void *data, const XML_Char *, const XML_Char *, const XML_Char *, int)
{
    auto &state = *static_cast<host_xml::state *>(data);
    my_fail(state.ctx, "a DOCTYPE, which no package has, is not read");
    my_go_on(state);
}

host_xml::host_xml(const char *file_name, const host_package_limits &limits, host_xml_reader &reader)
    : file_name_(file_name), state_(new state{reader, limits.xml_depth, {}})
{
    state_->parser.reset(XML_ParserCreate(nullptr));
    XML_Parser parser = state_->parser.get();
    if (!parser)
        throw std::bad_alloc();
    XML_SetUserData(parser, state_.get());
    XML_SetElementHandler(parser, my_start, my_end);
    XML_SetStartDoctypeDeclHandler(parser, my_doctype);
}

host_xml::~host_xml() = default;

void host_xml::go_on(KT_context *ctx, std::string_view piece, bool is_last)
{
    XML_Parser parser = state_->parser.get();
    state_->ctx = ctx;
    const XML_Status status = XML_Parse(parser, piece.data(), static_cast<int>(piece.size()), is_last);
    const XML_Error error = status == XML_STATUS_ERROR ? XML_GetErrorCode(parser) : XML_ERROR_NONE;
    if (error == XML_ERROR_NONE || (kt_has_err(ctx) && KT_context__err_code(ctx) == KT_ERR_OUT_OF_MEMORY))
        return;
    if (error == XML_ERROR_NO_MEMORY)
        KT_FAIL_GENERIC(KT_ERR_OUT_OF_MEMORY);
    const bool is_ours = kt_has_err(ctx); // found by the reader, whose message lacks the place
    const std::string message = is_ours ? KT_context__err_description(ctx) : XML_ErrorString(error);
    if (!is_ours)
        KT_context__err__generic(ctx, KT_ERR_UNEXPECTED_VALUE, KT_HERE, __LINE__);
    KT_context__err_set_description(
        ctx, "%s:%llu:%llu: %s", file_name_, static_cast<unsigned long long>(XML_GetCurrentLineNumber(parser)),
        static_cast<unsigned long long>(XML_GetCurrentColumnNumber(parser)) + 1, message.c_str());
}

void host_xml::parse(KT_context *ctx, std::string_view piece)
{
    KT_TRY(go_on(ctx, piece, false));
}

void host_xml::finish(KT_context *ctx)
{
    KT_TRY(go_on(ctx, {}, true));
}
