// Origin.xml and DacMetadata.xml: a few elements with text in them. Both may be missing.
#include "package/host_origin.hpp"

#include "package/host_xml.hpp"

#include <charconv>

#define KT_HERE "src/host/package/host_origin"

// Collects the texts of the elements that are asked for.
class host_text_reader : public host_xml_reader {
  public:
    explicit host_text_reader(host_origin &origin) : origin_(origin)
    {
    }
    void start(KT_context *, std::string_view name, const char *const *attributes) override
    {
        const char *uri = host_attribute(attributes, "Uri");
        path_.emplace_back(name);
        text_.clear();
        is_of_model_ = uri && std::string_view(uri) == "/model.xml";
        wants_text = name == "Checksum" || name == "TableRowCountTotalTag" || name == "Name";
        origin_.is_from_server |= name == "ServerVersion";
    }
    void end(KT_context *) override
    {
        const std::string name = std::move(path_.back());
        path_.pop_back();
        if (wants_text)
            take(name);
        wants_text = false;
    }
    void text(std::string_view piece) override
    {
        text_ += piece;
    }

  private:
    void take(std::string_view name)
    {
        if (name == "Checksum" && is_of_model_)
            origin_.model_checksum = text_;
        else if (name == "Name" && path_.size() == 1)
            origin_.database = text_;
        else if (name == "TableRowCountTotalTag")
            std::from_chars(text_.data(), text_.data() + text_.size(), origin_.row_count);
    }

    host_origin &origin_;
    std::vector<std::string> path_;
    std::string text_;
    bool is_of_model_ = false;
};

static void my_read(KT_context *ctx, host_zip &package, const char *name, const host_package_limits &limits,
                    host_origin &origin)
{
    const host_zip_entry *entry = package.find(name);
    if (!entry)
        return;
    KT_TRY(host_check_xml_entry(ctx, *entry, limits));
    host_text_reader reader{origin};
    host_xml xml{entry->name, limits, reader};
    KT_TRY(package.read(ctx, *entry, [&xml](KT_context *inner, std::string_view piece) { xml.parse(inner, piece); }));
    KT_TRY(xml.finish(ctx));
}

void host_read_origin(KT_context *ctx, host_zip &package, const host_package_limits &limits, host_origin &origin)
{
    KT_TRY(my_read(ctx, package, "Origin.xml", limits, origin));
    KT_TRY(my_read(ctx, package, "DacMetadata.xml", limits, origin));
}
