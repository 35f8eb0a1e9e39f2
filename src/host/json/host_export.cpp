// From the bytes of a catalogue export to its records.
#include "json/host_export.hpp"

#include "json/host_catalogue.hpp"
#include "json/host_file.hpp"

#define KT_HERE "src/host/json/host_export"

static void my_report_unknown_fields(KT_context *ctx, host_findings &findings, const KT_vhash *unknown_fields)
{
    uint32_t count = 0;
    KT_TRY(KT_vhash__count(ctx, unknown_fields, &count));
    for (uint32_t n = 0; n < count; n++) {
        const char *name = nullptr;
        KT_TRY(KT_vhash__get_nth_pair(ctx, unknown_fields, n, &name, nullptr));
        KT_TRY(findings.add(ctx, "unknown-field", nullptr, nullptr, name, "ignored: no field of this name is known"));
    }
}

// Parses the document. One that lacks its end was cut by a tool, and the user can tell the tool not to.
static void my_parse(KT_context *ctx, const std::string &json, kt_owned_vhash &document)
{
    KT_context__push_level(ctx);
    KT_vhash__alloc__from_json__sz(ctx, document.out(), json.c_str());
    const uint64_t code = KT_context__err_code(ctx);
    const std::string message = KT_context__err_description(ctx);
    KT_context__pop_level(ctx);
    if (code == KT_ERR_BAD_JSON && host_is_cut(json))
        KT_FAIL(code, "%s: the document was cut off after %zu bytes; %s", message.c_str(), json.size(), host_cut_hint);
    if (code != 0)
        KT_FAIL(code, "%s", message.c_str());
}

void host_read_export(KT_context *ctx, std::string_view bytes, bool report_unknown_fields, kt_owned_vhash &document,
                      host_findings &findings, host_catalogue &catalogue)
{
    std::string json;
    bool split_texts = false;
    kt_owned_vhash unknown_fields{ctx};
    KT_TRY(host_decode_file(ctx, bytes.data(), bytes.size(), json, split_texts));
    KT_TRY(my_parse(ctx, json, document));
    KT_TRY(KT_vhash__alloc(ctx, unknown_fields.out()));
    host_reader reader{unknown_fields, catalogue.defaults};
    KT_TRY(host_read_catalogue(ctx, reader, document, catalogue));
    if (split_texts)
        KT_TRY(findings.add(ctx, "text-split", nullptr, nullptr, nullptr,
                            "a tool put line ends into texts of the document: they were taken out again, but blanks "
                            "beside them may be lost"));
    if (report_unknown_fields)
        KT_TRY(my_report_unknown_fields(ctx, findings, unknown_fields));
}
