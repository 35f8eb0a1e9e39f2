// The XML files among a package's entries.
#include "package/host_zip.hpp"

#define KT_HERE "src/host/package/host_entries"

void host_check_xml_entry(KT_context *ctx, const host_zip_entry &entry, const host_package_limits &limits)
{
    if (entry.size > limits.xml_bytes)
        KT_FAIL(KT_ERR_UNEXPECTED_VALUE, "%s has %llu bytes; no more than %llu are read", entry.name,
                static_cast<unsigned long long>(entry.size), static_cast<unsigned long long>(limits.xml_bytes));
    if (entry.size > limits.free_bytes && entry.size / limits.xml_ratio > entry.packed_size)
        KT_FAIL(KT_ERR_UNEXPECTED_VALUE,
                "%s is more than %llu times as large as its packed form, which no model is: it was made to fill memory",
                entry.name, static_cast<unsigned long long>(limits.xml_ratio));
}

void host_find_model(KT_context *ctx, const host_zip &package, const host_package_limits &limits,
                     const host_zip_entry **entry)
{
    const host_zip_entry *found = package.find("model.xml");
    if (!found && package.find("LogicalObjectStream.xml"))
        KT_FAIL(KT_ERR_UNEXPECTED_VALUE, "the package has the form of 2009, which has no model.xml and is not read: "
                                         "extract it again with a tool of today");
    if (!found)
        KT_FAIL(KT_ERR_UNEXPECTED_VALUE, "the file is a ZIP archive but not a package: it has no model.xml");
    KT_TRY(host_check_xml_entry(ctx, *found, limits));
    *entry = found;
}
