// The page for a browser. The data goes in as JSON inside a script element that is never run. Inside of strings, where
// alone JSON may hold it, "<" is written as an escape, so that no name can end the element or begin a comment in it;
// all else is the page's own text, whose scripts show data as text only. Besides, the page's policy allows no script
// and no style but these, by their hashes, and nothing from elsewhere.
#include "report/client_report.hpp"
#include "report/client_report_page.hpp"

#define KT_HERE "src/client/report/client_report_html"

static std::string my_escaped(const char *json)
{
    std::string text;
    for (; *json; json++) {
        if (*json == '<')
            text += "\\u003c";
        else
            text.push_back(*json);
    }
    return text;
}

static void my_write(KT_context *ctx, const KT_vhash *data, KT_string *html)
{
    kt_owned_string json{ctx};
    KT_TRY(KT_string__alloc(ctx, json.out()));
    KT_TRY(KT_vhash__to_json(ctx, data, json));
    KT_TRY(KT_string__append__sz(ctx, html, client_report_page[0]));
    KT_TRY(KT_string__append__sz(ctx, html, my_escaped(KT_string__sz(json)).c_str()));
    for (size_t n = 1; n < client_report_page_count; n++)
        KT_TRY(KT_string__append__sz(ctx, html, client_report_page[n]));
}

void tov_client__write_html_report(KT_context *ctx, tov_schema *schema, const tov_client_report_options *options,
                                   KT_string **html) noexcept
{
    kt_contain(ctx, [&] {
        kt_owned_vhash data{ctx};
        kt_owned_string text{ctx};
        KT_TRY(client_report_gather(ctx, schema, options, data.out()));
        KT_TRY(KT_string__alloc(ctx, text.out()));
        KT_TRY(my_write(ctx, data, text));
        text.move_to(html);
    });
}
