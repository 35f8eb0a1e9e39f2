// Packages for tests: a ZIP archive of the files given, and one around a model.
#pragma once

#include <openssl/evp.h>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>
#include <zip.h>

struct package_file {
    std::string name;
    std::string bytes;
};

inline std::string a_zip(const std::vector<package_file> &files, bool is_packed = true)
{
    zip_source_t *target = zip_source_buffer_create(nullptr, 0, 0, nullptr);
    zip_source_keep(target);
    zip_t *archive = zip_open_from_source(target, ZIP_CREATE | ZIP_TRUNCATE, nullptr);
    for (const package_file &file : files) {
        zip_source_t *source = zip_source_buffer(archive, file.bytes.data(), file.bytes.size(), 0);
        const zip_int64_t index = zip_file_add(archive, file.name.c_str(), source, ZIP_FL_ENC_UTF_8);
        if (index < 0)
            throw std::runtime_error(zip_strerror(archive));
        zip_set_file_compression(archive, static_cast<zip_uint64_t>(index), is_packed ? ZIP_CM_DEFLATE : ZIP_CM_STORE,
                                 0);
    }
    if (zip_close(archive) != 0)
        throw std::runtime_error(zip_strerror(archive));
    zip_stat_t stat;
    zip_stat_init(&stat);
    zip_source_stat(target, &stat);
    std::string bytes(stat.size, '\0');
    zip_source_open(target);
    zip_source_read(target, bytes.data(), bytes.size());
    zip_source_close(target);
    zip_source_free(target);
    return bytes;
}

inline std::string sha256_of(std::string_view bytes)
{
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned size = 0;
    EVP_Digest(bytes.data(), bytes.size(), digest, &size, EVP_sha256(), nullptr);
    std::string text;
    for (unsigned n = 0; n < size; n++) {
        text += "0123456789ABCDEF"[digest[n] >> 4];
        text += "0123456789ABCDEF"[digest[n] & 15];
    }
    return text;
}

inline std::string a_model(const std::string &elements)
{
    return R"(<?xml version="1.0" encoding="utf-8"?>)"
           R"(<DataSchemaModel FileFormatVersion="1.2" xmlns="http://schemas.microsoft.com/sqlserver/dac/)"
           R"(Serialization/2012/02"><Header/><Model>)" +
           elements + "</Model></DataSchemaModel>";
}

// What Origin.xml says of a model: a package from a server says which.
inline std::string an_origin(std::string_view model, bool is_from_server, const std::string &more = "")
{
    return std::string("\xEF\xBB\xBF<?xml version=\"1.0\" encoding=\"utf-8\"?><DacOrigin>") +
           (is_from_server ? "<Server><ServerVersion>15.0</ServerVersion></Server>" : "") + more +
           R"(<Checksums><Checksum Uri="/model.xml">)" + sha256_of(model) + "</Checksum></Checksums></DacOrigin>";
}

inline std::string a_package_of(const std::string &model, bool is_from_server = true,
                                std::vector<package_file> more = {})
{
    more.push_back({"model.xml", model});
    more.push_back({"Origin.xml", an_origin(model, is_from_server)});
    return a_zip(more);
}

inline std::string a_package(const std::string &elements, bool is_from_server = true)
{
    return a_package_of(a_model(elements), is_from_server);
}

// The elements of models. Names are bracketed by the caller; content is what stands inside.
inline std::string a_property(const std::string &name, const std::string &value)
{
    return "<Property Name=\"" + name + "\" Value=\"" + value + "\"/>";
}

inline std::string a_script(const std::string &name, const std::string &text)
{
    return "<Property Name=\"" + name + "\">\n<Value><![CDATA[" + text + "]]></Value>\n</Property>";
}

inline std::string an_element(const std::string &type, const std::string &name, const std::string &content)
{
    return "<Element Type=\"" + type + (name.empty() ? "\">" : "\" Name=\"" + name + "\">") + content + "</Element>";
}

inline std::string a_relationship(const std::string &name, const std::string &entries)
{
    return "<Relationship Name=\"" + name + "\">" + entries + "</Relationship>";
}

// References to one name or, separated by blanks, more.
inline std::string references(const std::string &relationship, const std::string &names, const std::string &source = "")
{
    std::string entries;
    for (size_t at = 0; at < names.size();) {
        const size_t end = std::min(names.find(' ', at), names.size());
        entries += "<Entry><References " + (source.empty() ? "" : "ExternalSource=\"" + source + "\" ") + "Name=\"" +
                   names.substr(at, end - at) + "\"/></Entry>";
        at = end + 1;
    }
    return a_relationship(relationship, entries);
}

// A column with a type of the server, or an alias type when that has a schema other than sys.
inline std::string a_model_col(const std::string &name, const std::string &type, const std::string &sizes = "",
                               const std::string &properties = "")
{
    const bool is_built_in = type.find("].[") == std::string::npos || type.starts_with("[sys]");
    return "<Entry>" +
           an_element("SqlSimpleColumn", name,
                      properties + a_relationship(
                                       "TypeSpecifier",
                                       "<Entry>" +
                                           an_element("SqlTypeSpecifier", "",
                                                      sizes + references("Type", type, is_built_in ? "BuiltIns" : "")) +
                                           "</Entry>")) +
           "</Entry>";
}

inline std::string a_model_table(const std::string &name, const std::string &cols, const std::string &properties = "")
{
    return an_element("SqlTable", name, properties + a_relationship("Columns", cols));
}

// A key or index of columns; one that is followed by a minus sign descends.
inline std::string a_model_key(const std::string &type, const std::string &name, const std::string &table,
                               const std::string &cols, const std::string &more = "")
{
    std::string entries;
    for (size_t at = 0; at < cols.size();) {
        const size_t end = std::min(cols.find(' ', at), cols.size());
        const bool descends = cols[end - 1] == '-';
        entries += "<Entry>" +
                   an_element("SqlIndexedColumnSpecification", "",
                              (descends ? a_property("IsAscending", "False") : "") +
                                  references("Column", cols.substr(at, end - at - (descends ? 1 : 0)))) +
                   "</Entry>";
        at = end + 1;
    }
    return an_element(type, name,
                      more + a_relationship("ColumnSpecifications", entries) +
                          references(type == "SqlIndex" ? "IndexedObject" : "DefiningTable", table));
}
